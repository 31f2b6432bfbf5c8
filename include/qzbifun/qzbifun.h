/*
 * The whole public interface of the library: records, codes, forms and every exported function.
 *
 * This header is C11 and C++20.
 */
#ifndef QZBIFUN_QZBIFUN_H
#define QZBIFUN_QZBIFUN_H

#include "qzbifun/codes.h"
#include "qzbifun/conditional.h"
#include "qzbifun/date.h"
#include "qzbifun/forms.h"
#include "qzbifun/math.h"
#include "qzbifun/records.h"
#include "qzbifun/string.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Sets the three switches of the process. Called once when the library is loaded, before any other function; until then all
 * three are 0. The switches are read without synchronisation.
 *
 * compat_mode     compatibility mode of the database; 1, 2, 3, 4, 5 and 7 change single functions, all others are the default
 * charset_code    character set of the database: 0 GB18030, 1 UTF-8, 2 EUC-KR
 * case_sensitive  0: string search folds case before comparing
 */
void bifun_dll_var_init(uint32_t compat_mode, uint32_t charset_code, uint32_t case_sensitive);

#ifdef __cplusplus
}
#endif

#endif
