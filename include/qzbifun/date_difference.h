/*
 * Functions that measure the distance between two dates. Each counts in its own way, and they do not agree at the edges.
 *
 * first and second are date-time values. A NULL vector argument makes the row NULL. Whether a constant is NULL is not looked
 * at: it counts with the value that stands in it. all_valid is that of the vector, or the AND of both. Time zones play no part.
 *
 * This header is C11 and C++20.
 */
#ifndef QZBIFUN_DATE_DIFFERENCE_H
#define QZBIFUN_DATE_DIFFERENCE_H

#include "qzbifun/forms.h"

#ifdef __cplusplus
extern "C" {
#endif

/* days_between(first, second), int: first minus second in days of the calendar. The time of day plays no part. Cannot fail. */
bop_fn_aa bdays_between_aa_date;
bop_fn_av bdays_between_av_date;
bop_fn_va bdays_between_va_date;

/* weeks_between(first, second), int: the Sundays between the dates, positive when first is later. Where the dates differ, a row
 * or a constant that holds a date in the gap of October 1582 is changed to 1582-10-15. */
bop_fn_aa bweeks_between_aa_date;
bop_fn_av bweeks_between_av_date;
bop_fn_va bweeks_between_va_date;

/* months_between(first, second), decimal: whole months, and the days that remain by 31sts; none remain between two last days of
 * months. */
bop_fn_aa bmonths_between_aa_date;
bop_fn_av bmonths_between_av_date;
bop_fn_va bmonths_between_va_date;

/* years_between(first, second), int: the difference of the two year fields. Cannot fail. */
bop_fn_aa byears_between_aa_date;
bop_fn_av byears_between_av_date;
bop_fn_va byears_between_va_date;

/* datediff(part, first, second), int: completed units of a part code from first to second, positive when second is later.
 * EC_INVALID_ARGUMENT, at the first row that is not NULL: no unit to count. EC_DATA_OVERFLOW: the count leaves 32 bits. */
bop_fn_vaa bdatediff_vaa_date;
bop_fn_vav bdatediff_vav_date;
bop_fn_vva bdatediff_vva_date;

/* bigdatediff(part, first, second): the same, bigint. */
bop_fn_vaa bbigdatediff_vaa_date;
bop_fn_vav bbigdatediff_vav_date;
bop_fn_vva bbigdatediff_vva_date;

/* The same of one pair. 0 or a code; *result is not written then. */
int32_t ifun_parse_weeks_between(qztime* first, qztime* second, int32_t* result);
int32_t ifun_parse_months_between(const qztime* first, const qztime* second, xdec* result);
int32_t ifun_parse_bigdatediff(int32_t part, const qztime* first, const qztime* second, int64_t* result);

#ifdef __cplusplus
}
#endif

#endif
