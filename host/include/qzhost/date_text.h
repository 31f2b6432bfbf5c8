/*
 * Text of date-times in the reference host's general syntax, which needs no format.
 *
 * What is read. Blanks around the text do not count. Letters are read in any case.
 *
 *   date       2024-02-29, 2024/2/29, 2024.2.29: year, month and day with the same separator twice, one of - / . @ # $ % * &. A
 *              year of one to four digits stands for itself: 24-1-2 is in the year 24. It may have a sign. Compact: 20240229.
 *   time       10:30, 10:30:15, 10:30:15.123456789; fraction digits behind the ninth are dropped. A comma serves as the point.
 *              Compact: 1030, 103015, 103015.5, behind a date or a T. Behind a time may stand AM or PM.
 *   both       a date, then blanks or a T, then a time; two compact ones need nothing between. A time alone is on 1900-01-01, a
 *              date alone at 00:00:00.
 *   zone       behind a time, after any blanks: Z, UTC, +08:00, +0800, +8; from -14:00 to +14:00.
 *
 * A date in the gap of October 1582 becomes 1582-10-15. Lengths are byte counts; nothing behind them is read, and no NUL is
 * needed.
 *
 * Failures. EC_DATE_TEXT_INVALID: the text is no date-time. EC_INVALID_ARGUMENT: an unknown kind. The record is as it was then.
 * No service allocates.
 *
 * This header is C11 and C++20.
 */
#ifndef QZHOST_DATE_TEXT_H
#define QZHOST_DATE_TEXT_H

#include "qzbifun/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Kinds of value. */
enum { HOST_KIND_DATE = 14, HOST_KIND_DATETIME = 16, HOST_KIND_DATETIME_TZ = 23 };

/* What a text held, as bits. */
enum { HOST_TEXT_HAS_DATE = 1, HOST_TEXT_HAS_TIME = 2, HOST_TEXT_HAS_FRACTION = 4, HOST_TEXT_HAS_ZONE = 8 };

enum { HOST_DATE_TEXT_BYTES = 48 }; /* room for the text of any value and its NUL */

/* Reads a value with all that the text holds; tz is TZ_NONE when it names no zone. 0, a code, or RC_VALUE_IS_NULL for a text
 * that is empty or blank, where nothing is written. */
int32_t qztime_from_char_ex(const char* text, uint32_t length, qztime* out);

/* The same for a wanted kind: 14 needs a date and drops time and zone, 16 drops the zone, 23 keeps all. info receives the
 * HOST_TEXT_HAS_ bits and may be absent. */
int32_t qztime_from_char_ex2(const char* text, uint32_t length, int32_t kind, qztime* out, uint32_t* info);

/* Reads a date-time with zone; a text that names none gets default_zone, minutes east of UTC as the parameter DEFAULT_TIME_ZONE
 * holds them (a negative zone as its 32-bit complement). 1 for success, 0 for a text that does not parse, is blank, or would
 * get a default that is neither a zone nor TZ_NONE. */
int32_t qztime_from_char_with_tz(const char* text, uint32_t length, uint32_t default_zone, qztime* out);

/* Writes a value's default text, NUL-terminated, at most HOST_DATE_TEXT_BYTES bytes: "2024-02-29" (14), "2024-02-29 10:30:15.5"
 * (16), "2024-02-29 10:30:15.5 +08:00" (23; nothing for TZ_NONE). Years have at least four digits, a minus in front when
 * negative. With fraction_digits -1 the fraction is as short as it can be without loss; with 0 to 9 it is cut to so many
 * digits. 0; EC_DATE_VALUE_INVALID when a field is out of its limits (any year can be written); EC_INVALID_ARGUMENT. */
int32_t qztime_to_char(const qztime* value, int32_t kind, int32_t fraction_digits, char* buffer);

/* Reads a decimal integer with optional sign and blanks around. 0; EC_NUMBER_TEXT_INVALID when the text is none, blank text
 * included; EC_DATA_OVERFLOW when it leaves 64 bits. */
int32_t str2int64(const char* text, uint32_t length, int64_t* out);

#ifdef __cplusplus
}
#endif

#endif
