/*
 * String functions.
 *
 * NULL rule unless a function says otherwise: a NULL argument gives a NULL row, and the row's element is left as it was.
 *
 * This header is C11 and C++20.
 */
#ifndef QZBIFUN_STRING_H
#define QZBIFUN_STRING_H

#include "qzbifun/lob_text.h"
#include "qzbifun/string_basics.h"
#include "qzbifun/string_search.h"

#endif
