/*
 * Interval services of the reference host: comparison, text, and decimal counts of a unit.
 *
 * iv_qualifier holds kind * 256 + leading precision * 16 + fraction digits: 656 (0x290) is MONTH(9), 406 (0x196) YEAR(9) TO
 * MONTH, 1686 (0x696) DAY(9) TO SECOND(6). The leading precision is the most decimal digits of the first field, 1 to 9; the
 * fraction digits, 0 to 6, count for kinds that end in seconds. All fields of an interval carry its sign.
 *
 * Failures. EC_INTERVAL_TEXT_INVALID: the text is no interval of the kind. EC_INTERVAL_OUT_OF_RANGE: the first field needs more
 * digits than the precision has. EC_INVALID_ARGUMENT: an unknown unit, or a qualifier of another family. The result is as it
 * was then. No service allocates.
 *
 * This header is C11 and C++20.
 */
#ifndef QZHOST_INTERVAL_H
#define QZHOST_INTERVAL_H

#include "qzbifun/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Kinds, in iv_qualifier from bit 8 on. */
enum {
    HOST_IV_YEAR = 0,
    HOST_IV_YEAR_TO_MONTH = 1,
    HOST_IV_MONTH = 2,
    HOST_IV_DAY = 3,
    HOST_IV_DAY_TO_HOUR = 4,
    HOST_IV_DAY_TO_MINUTE = 5,
    HOST_IV_DAY_TO_SECOND = 6,
    HOST_IV_HOUR = 7,
    HOST_IV_HOUR_TO_MINUTE = 8,
    HOST_IV_HOUR_TO_SECOND = 9,
    HOST_IV_MINUTE = 10,
    HOST_IV_MINUTE_TO_SECOND = 11,
    HOST_IV_SECOND = 12
};

enum {
    HOST_IV_QUALIFIER_YM = 406,  /* YEAR(9) TO MONTH */
    HOST_IV_QUALIFIER_DT = 1686, /* DAY(9) TO SECOND(6) */
    HOST_IV_TEXT_BYTES = 48      /* room for the text of any interval and its NUL */
};

/* -1, 0 or 1 by length of time: 1 year equals 12 months, 1 day 24 hours. Any bits; the qualifiers play no part. */
int32_t interval_ym_cmp(const qz_interval_ym* a, const qz_interval_ym* b, int32_t zero1, int32_t zero2);
int32_t interval_dt_cmp(const qz_interval_dt* a, const qz_interval_dt* b, int32_t zero1, int32_t zero2);

/* Reads an interval of the qualifier's kind: the fields of the kind, such as "1-2" (YEAR TO MONTH), "3 04:05:06.789" (DAY TO
 * SECOND), "04:05" (HOUR TO MINUTE), with an optional sign in front and blanks around; or the ISO 8601 form "P1Y2M",
 * "P3DT4H5M6.7S", whose fields may be any of the family in descending order. Fields behind the first have their natural limits.
 * Fraction digits beyond the qualifier's are dropped. The result has the qualifier. An empty or blank text is
 * EC_INTERVAL_TEXT_INVALID. */
int32_t qz_interval_ym_from_char(qz_env* env, const char* text, qz_interval_ym* out, int32_t qualifier);
int32_t qz_interval_dt_from_char(qz_env* env, const char* text, qz_interval_dt* out, int32_t qualifier);

/* Writes sign, days, time and fraction, such as "+000000003 04:05:06.789000", NUL-terminated, at most HOST_IV_TEXT_BYTES bytes.
 * The days are filled with zeros up to the qualifier's precision when its kind begins with days, and up to two digits
 * otherwise; the fraction has the qualifier's digits and is left out when they are 0. Fields beyond their limits are carried.
 * zero is always 0. */
void qz_interval_dt_to_char_oracle(const qz_interval_dt* interval, char* buffer, int32_t zero);

/* So many of a unit, as an interval with qualifier HOST_IV_QUALIFIER_DT or HOST_IV_QUALIFIER_YM. Units: DAY, HOUR, MINUTE,
 * SECOND; YEAR, MONTH; any case, blanks around do not count. Rounded to the microsecond and to the month, half away from
 * zero. */
int32_t xdec_to_ivdt(const xdec* number, const char* unit, uint32_t unit_length, qz_interval_dt* out);
int32_t xdec_to_ivym(const xdec* number, const char* unit, uint32_t unit_length, qz_interval_ym* out);

#ifdef __cplusplus
}
#endif

#endif
