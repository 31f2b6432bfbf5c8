/*
 * Date-time functions.
 *
 * NULL rule unless a function says otherwise: a NULL argument gives a NULL row, and the row's element is left as it was.
 *
 * This header is C11 and C++20.
 */
#ifndef QZBIFUN_DATE_H
#define QZBIFUN_DATE_H

#include "qzbifun/date_arithmetic.h"
#include "qzbifun/date_composition.h"
#include "qzbifun/date_difference.h"
#include "qzbifun/date_extract.h"
#include "qzbifun/date_parts.h"
#include "qzbifun/date_rounding.h"
#include "qzbifun/overlaps.h"

#endif
