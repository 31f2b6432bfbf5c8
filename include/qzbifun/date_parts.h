/*
 * Weekdays, date literals, the words that name the parts of a date, and single parts.
 *
 * Two vocabularies name parts and are not to be mixed up: part codes (year 1 to microsecond 14, of datepart and its kin) and
 * round codes (1 to 11, of round and trunc). Y is the day of the year in the first and the year in the second.
 *
 * This header is C11 and C++20.
 */
#ifndef QZBIFUN_DATE_PARTS_H
#define QZBIFUN_DATE_PARTS_H

#include "qzbifun/forms.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Weekdays ------------------------------------------------------------------------------------------------------------ */

/* The weekday of a value by the low byte of mode: 0 for Sunday to 6 for Saturday; mode 1: 1 to 7; mode 2: 0 for Monday to 6 for
 * Sunday. A value in the gap of October 1582 is moved to 1582-10-15 where it stands. Answers 0. */
int32_t ifun_weekday_in(qztime* value, int32_t mode, int32_t* result);

/* The same of mode 0. */
int32_t ifun_weekday_in_for_glgl_special(qztime* value, int32_t* result);

/* The weekday, 0 for Sunday, on which the weeks of the value's year begin: that of January 1, and 5 from 1582-10-02 to the end
 * of that year. The code of the calendar for a year outside its range. */
int32_t ifun_week_start_day_for_ww(const qztime* value, int32_t* result);

/* ---- Literals ------------------------------------------------------------------------------------------------------------ */

/* Reads a date, or a date and a time: 2024-02-29, 2024/2/29, 20240229, 2024-02-29 10:30, 2024-02-29 10:30:15.123456789. The
 * fifth byte tells the separator, one of - / . @ # $ % * &, or is a digit where there is none. Years 1 to 9999; a date in the
 * gap of October 1582 becomes 1582-10-15; fraction digits behind the ninth are dropped. EC_DATE_TEXT_INVALID: not of this form,
 * or a field above its limit; EC_DATE_VALUE_INVALID: month or day 0. The record is as it was then. */
int32_t ifun_parse_date(const char* text, int32_t length, qztime* out);

/* Reads one field: blanks, then up to max_digits digits, which go to buffer with a NUL behind them (max_digits + 1 bytes).
 * Behind fewer digits stands the end, the stop character, or blanks and then any of these or a digit. Answers the position of
 * the first byte behind the field, blanks included where the digits ended at one that does not stop; -1 for anything else. */
int32_t ifun_parse_date_field(const char* text, int32_t length, int32_t position, char* buffer, char stop, int32_t max_digits);

/* Reads hours and minutes, and seconds and a fraction where there are any; the fraction in nanoseconds. 1 for success, 0 for
 * failure, when nothing is written. */
int32_t ifun_parse_time_part(const char* text, int32_t length, int32_t position, int32_t* hour, int32_t* minute,
                             int32_t* second, int32_t* fraction);

/* ---- Parts --------------------------------------------------------------------------------------------------------------- */

/* The part code of a keyword in any case (a string constant, its blanks not looked at); 0 for none. */
int16_t ifun_parse_datepart(const bdta3_scalar* keyword);

/* The round code of an element of round and trunc in any case; 0 for none. */
int16_t ifun_parse_roundpart(const char* text, uint32_t length);

/* One part of a value: codes 1 to 11 and 14. -1 for any other, and for the year -1. */
int32_t fun_datepart1(int32_t code, const qztime* value);

/* datepart(date, keyword) and the same by part code, int. EC_INVALID_ARGUMENT, at the first row that is not NULL: no such part;
 * by code also where the part is -1. Of the constant only the value is read. */
bop_fn_av bdatepart_av_date;
bop_fn_va bdatepart1_va_date;

#ifdef __cplusplus
}
#endif

#endif
