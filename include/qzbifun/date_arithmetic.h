/*
 * Functions that move a date by an amount, and those that move it to a named day.
 *
 * Dates are date-time values; the time of day and the zone come along unless told otherwise. A NULL vector argument makes the
 * row NULL. Whether a constant is NULL is not looked at: it counts with the value that stands in it. all_valid is that of the
 * vector, or the AND of both.
 *
 * Errors are those of the calendar: EC_DATE_OUT_OF_RANGE where a result leaves it.
 *
 * This header is C11 and C++20.
 */
#ifndef QZBIFUN_DATE_ARITHMETIC_H
#define QZBIFUN_DATE_ARITHMETIC_H

#include "qzbifun/forms.h"

#ifdef __cplusplus
extern "C" {
#endif

/* add_days(date, days): days is a double, whose fraction moves the time of day. */
bop_fn_aa badd_days_aa_date;
bop_fn_av badd_days_av_date;
bop_fn_va badd_days_va_date;

/* add_weeks(date, weeks): weeks is an int, and so is the count of days, which wraps around at 32 bits. */
bop_fn_aa badd_weeks_aa_date;
bop_fn_av badd_weeks_av_date;
bop_fn_va badd_weeks_va_date;

/* add_months(date, months): months is an int. The last day of a month stays one. */
bop_fn_aa badd_months_aa_date;
bop_fn_av badd_months_av_date;
bop_fn_va badd_months_va_date;

/* date + interval, date - interval: of years and months (ym), of days and times (dt). A day that the month lacks becomes its
 * last. */
bop_fn_aa bdate_add_ym_aa;
bop_fn_av bdate_add_ym_av;
bop_fn_aa bdate_sub_ym_aa;
bop_fn_av bdate_sub_ym_av;
bop_fn_aa bdate_add_dt_aa;
bop_fn_av bdate_add_dt_av;

/* dateadd(part, count, date): part is an int, a part code; count is a bigint. EC_INVALID_ARGUMENT: no unit to add. */
bop_fn_vaa bdateadd_vaa_date;
bop_fn_vav bdateadd_vav_date;
bop_fn_vva bdateadd_vva_date;

/* next_day(date, weekday): the first such weekday behind the date. weekday is a string, read through nstr_ext whatever its
 * length. EC_WEEKDAY_NAME_TOO_LONG: 20 bytes or more; EC_WEEKDAY_NAME_INVALID: unknown. Both come before the rows, also when
 * there are none. A row that holds a date in the gap of October 1582 is changed to 1582-10-15. */
bop_fn_av bnext_day_av_date;

/* last_day(date): the last day of the date's month, 31 in October 1582. Of a string: NULL where the text holds no value; the
 * codes of qztime_from_char_ex. */
bop_fn_a blast_day_a_date;
bop_fn_a blast_day_str_a_date;

/* last_day of one value; out may be the value. Answers 0. */
int32_t ifun_parse_last_day(const qztime* value, qztime* out);

#ifdef __cplusplus
}
#endif

#endif
