/*
 * Parts of date-time values and intervals: EXTRACT, the functions of one part, and the names of days and months.
 *
 * A NULL vector argument makes the row NULL; all_valid is that of the vector. A text is read as qztime_from_char_ex does,
 * without its implied blanks: NULL where it holds no value, the codes of that service where it cannot be read.
 *
 * This header is C11 and C++20.
 */
#ifndef QZBIFUN_DATE_EXTRACT_H
#define QZBIFUN_DATE_EXTRACT_H

#include "qzbifun/forms.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- One part of a date-time, int ---------------------------------------------------------------------------------------- */

bop_fn_a byear_a_date;
bop_fn_a bmonth_a_date;
bop_fn_a bday_a_date;
bop_fn_a bdayofmonth_a_date; /* the same */
bop_fn_a bhour_a_date;
bop_fn_a bmin_a_date;
bop_fn_a bsec_a_date; /* without the fraction */
bop_fn_a bdayofyear_a_date;
bop_fn_a bquarter_qztime_a_date;
bop_fn_a bdayofweek_a_date; /* 1 Sunday to 7 Saturday; a row that holds a date in the gap of October 1582 becomes 1582-10-15 */

/* weekday(text): 0 for Sunday to 6; in compatibility mode 4 0 for Monday to 6. */
bop_fn_a bweekday_str_a_date;

/* The English name of the day or month, a string. EC_OUT_OF_MEMORY. */
bop_fn_a bdayname_a_date;
bop_fn_a bmonthname_a_date;

/* ---- EXTRACT(part, value) --------------------------------------------------------------------------------------------------
 *
 * part is an int constant, of which only the value is read: 1 year, 2 month, 3 day, 4 hour, 5 minute, 6 second, 7 fraction of
 * an interval in microseconds, 12 and 13 hour and minute of the zone. EC_INVALID_ARGUMENT, at the first row that is not NULL:
 * the value has no such part. */
bop_fn_va bextract_date_va_date;        /* date: 1 to 3, int */
bop_fn_va bextract_time_va_date;        /* time: 4, 5, int */
bop_fn_va bextract_time_tz_va_date;     /* time with zone: 4, 5, 12, 13, int */
bop_fn_va bextract_datetime_va_date;    /* date-time: 1 to 5, int */
bop_fn_va bextract_datetime_tz_va_date; /* date-time with zone: 1 to 5, 12, 13, int */
bop_fn_va bextract_str_va_date;         /* string: 1 to 5, int */
bop_fn_va bextract_iv_ym_va_date;       /* interval year-month: 1, 2, int */
bop_fn_va bextract_iv_dt_va_date;       /* interval day-time: 3 to 7, int */
bop_fn_va bextract_time_ex_va_date;     /* time or date-time: 6 with its fraction, double */
bop_fn_va bextract_str_ex_va_date;      /* string: likewise */
bop_fn_va bextract_iv_dt_ex_va_date;    /* interval day-time: likewise */

/* ---- The same of one value -------------------------------------------------------------------------------------------------
 *
 * 0, or EC_INVALID_ARGUMENT for a part that is not served; *result is not written then. */
int32_t ifun_parse_extract_date(int32_t part, const qztime* value, int32_t* result);
int32_t ifun_parse_extract_time(int32_t part, const qztime* value, int32_t* result);
int32_t ifun_parse_extract_time_tz(int32_t part, const qztime* value, int32_t* result);
int32_t ifun_parse_extract_datetime(int32_t part, const qztime* value, int32_t* result);
int32_t ifun_parse_extract_datetime_tz(int32_t part, const qztime* value, int32_t* result);
int32_t ifun_parse_extract_iv_ym(int32_t part, const qz_interval_ym* value, int32_t* result);
int32_t ifun_parse_extract_iv_dt(int32_t part, const qz_interval_dt* value, int32_t* result);
int32_t ifun_parse_extract_msec(int32_t part, const qztime* value, double* result);
int32_t ifun_parse_extract_ivdt_msec(int32_t part, const qz_interval_dt* value, double* result);

/* Reads the text before it looks at the part: its code comes first, and RC_VALUE_IS_NULL where the text holds no value. */
int32_t ifun_parse_extract_str(int32_t part, const char* text, uint32_t length, int32_t* result);

enum { BIFUN_DAY_NAME_BYTES = 10 }; /* room for any name and its NUL */

/* Writes a name, NUL-terminated, and its length without the NUL; a month outside 1 to 12 writes nothing. Answers 0. */
int32_t ifun_parse_dayname(const qztime* value, char* buffer, uint32_t* length);
int32_t ifun_parse_monthname(const qztime* value, char* buffer, uint32_t* length);

#ifdef __cplusplus
}
#endif

#endif
