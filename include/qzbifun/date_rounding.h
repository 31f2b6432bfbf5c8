/*
 * round and trunc of dates, times, datetimes, and of text that holds one or a number.
 *
 * The unit is told by an element in any case (ifun_parse_roundpart has its round code): DD 1, CC 2, YYYY 3, Q 4, MM 5, WW 6, W
 * 7, DAY 8, HH 9, MI 10, IW 11. Of the constant that holds it only the text is read. EC_DATE_FORMAT_INVALID, at the first row
 * that is not NULL: no such element, or one that the function does not take.
 *
 * trunc leaves a value's zone where it keeps to days and smaller units, and sets it to 0 from months to centuries; round sets
 * it to TZ_NONE there. A result outside the calendar fails with the calendar's code.
 *
 * This header is C11 and C++20.
 */
#ifndef QZBIFUN_DATE_ROUNDING_H
#define QZBIFUN_DATE_ROUNDING_H

#include "qzbifun/forms.h"

#ifdef __cplusplus
extern "C" {
#endif

bop_fn_av btrunc_date_av_date;     /* every element, HH and MI too */
bop_fn_av btrunc_datetime_av_date; /* every element */
bop_fn_av btrunc_time_av_date;     /* HH and MI */
bop_fn_av bround_date_av_date;     /* not HH, MI and IW */
bop_fn_av bround_datetime_av_date; /* every element */
bop_fn_av bround_time_av_date;     /* HH and MI */

/* To the day. trunc leaves a date in the gap of October 1582 there. */
bop_fn_a btrunc_day_a_date;
bop_fn_a bround_day_a_date;     /* from noon on to the next day */
bop_fn_a btrunc_day_str_a_date; /* text to datetime; NULL for a text without value */

/* Text to text, of a datetime where the constant holds an element, otherwise of a number to the decimal places that the
 * constant tells. A text without value gives NULL, a constant without text gives NULL rows. The codes of str2int64, before the
 * first row: the constant is neither element nor integer; of the reading services: the text is no datetime, or no number. */
bop_fn_av btrunc_dt_str_av_date;
bop_fn_av bround_dt_str_av_date;

/* Text to text: a number to an integer, otherwise a datetime to the day. */
bop_fn_a bround_a_str;

/* ---- One value ----------------------------------------------------------------------------------------------------------- */

/* A datetime to the unit of a round code. value is work space: it holds the result afterwards, but after rounding to the day.
 * On failure both records are as they were. EC_DATE_FORMAT_INVALID: no such code. */
int32_t ifun_trunc_dt_low(qztime* value, int32_t code, qztime* result);
int32_t ifun_round_dt_low(qztime* value, int32_t code, qztime* result);

/* To the day as bround_day_a_date. */
int32_t ifun_round_day_low(const qztime* value, qztime* result);

/* To the day as btrunc_day_a_date; answers result. */
qztime* fun_trunc_day(qztime* result, const qztime* value);

enum { DATE_ROUNDING_TEXT_BYTES = 512 }; /* room for the text of any result and its NUL */

/* Text to text, NUL-terminated, in a buffer of DATE_ROUNDING_TEXT_BYTES bytes. RC_VALUE_IS_NULL: the text holds no value. Of a
 * scale of 2147483647 or more the text is 0; of one of -2147483648 or less the number is not rounded. */
int32_t btrunc_dt_str_low(const char* text, uint32_t length, int32_t code, char* buffer, uint32_t* result_length);
int32_t btrunc_dec_str_low(const char* text, uint32_t length, int64_t scale, char* buffer, uint32_t* result_length);
int32_t ifun_round_dt_str_low(const char* text, uint32_t length, int32_t code, char* buffer, uint32_t* result_length);
int32_t ifun_round_dec_str_low(const char* text, uint32_t length, int64_t scale, char* buffer, uint32_t* result_length);

/* The same of a number, to an integer, or else of a datetime, to the day. */
int32_t ifun_round_str_low(const char* text, uint32_t length, char* buffer, uint32_t* result_length);

#ifdef __cplusplus
}
#endif

#endif
