/*
 * Calendar services of the reference host: the fields of a date-time record, comparison, days and weeks, arithmetic.
 *
 * The calendar. Dates run from -4712-01-01 to 9999-12-31: Julian up to 1582-10-04, Gregorian from 1582-10-15. The ten days
 * between do not exist; a record may nevertheless hold one of them (a date in the gap), and every service says what it makes of
 * it. Years are counted astronomically: year 0 exists, is a leap year and comes before year 1; -4712 is the year 4713 BC, whose
 * first day is day 0 of the Julian day count. One parser or constructor or another may refuse year 0; the calendar does not.
 *
 * Day numbers. Day 0 is 0000-01-01, the first day of year 0 in the Julian calendar, so a day number is the Julian day minus
 * 1721058: 1582-10-04 is 578102, 1582-10-15 is 578103, 2000-10-01 is 730761, and the range is -1721058 to 3652426.
 *
 * Zones. tz is minutes east of UTC, -840 to 840, or TZ_NONE. Only qztime_cmp looks at it; arithmetic carries it along.
 *
 * Failures. EC_DATE_VALUE_INVALID: fields that make no date. EC_DATE_OUT_OF_RANGE: a result outside the calendar.
 * EC_INVALID_ARGUMENT: a part code that does not serve. The result record is as it was then. No service allocates or reads any
 * state. Services without a code are defined for every bit pattern of a record, so that the slot of a NULL row may be read.
 *
 * What row loops call for each row stands here inline; libqzhost holds the same functions as symbols.
 *
 * This header is C11 and C++20.
 */
#ifndef QZHOST_CALENDAR_H
#define QZHOST_CALENDAR_H

#include <string.h>

#include "qzbifun/codes.h"
#include "qzbifun/records.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
    HOST_YEAR_MIN = -4712,
    HOST_YEAR_MAX = 9999,
    HOST_DAY_MIN = -1721058,   /* day number of -4712-01-01 */
    HOST_DAY_MAX = 3652426,    /* day number of 9999-12-31 */
    HOST_DAY_CUTOVER = 578103, /* day number of 1582-10-15, and of a date in the gap once it is adjusted */
    HOST_ZONE_MAX = 840        /* minutes; the westernmost zone is its negative */
};

/* Part codes of the services that take one. */
enum {
    HOST_PART_YEAR = 1,
    HOST_PART_MONTH = 2,
    HOST_PART_DAY = 3,
    HOST_PART_HOUR = 4,
    HOST_PART_MINUTE = 5,
    HOST_PART_SECOND = 6,
    HOST_PART_MILLISECOND = 7,
    HOST_PART_QUARTER = 8,
    HOST_PART_DAY_OF_YEAR = 9,
    HOST_PART_WEEK = 10,
    HOST_PART_WEEKDAY = 11,
    HOST_PART_ZONE_HOUR = 12,
    HOST_PART_ZONE_MINUTE = 13,
    HOST_PART_MICROSECOND = 14
};

/* ---- Days: the arithmetic below all others ------------------------------------------------------------------------------- */

/* Days from 0000-01-01 to a date, each fourth year having its leap day: the Julian calendar without an end. Year -32768 to
 * 32767, month 0 to 255, day within 1000 million; what is no date has a number all the same. */
inline int32_t host_julian_number(int32_t year, int32_t month, int32_t day) {
    /* The year begins in March, so that the leap day ends it. January and February have the last numbers. */
    static const uint16_t kDaysBefore[16] = {0, 306, 337, 0, 31, 61, 92, 122, 153, 184, 214, 245, 275, 0, 0, 0};
    /* Years from March of year -32800, a multiple of 400; 31 to 65567. */
    const uint32_t y = (uint32_t)(year + 32800) - ((uint32_t)month < 3);
    return (int32_t)(1461 * y >> 2) + kDaysBefore[month & 15] + day - 11980141; /* within 12 million, and the day */
}

/* Leap days that the Gregorian calendar left out up to a date with that Julian number: 10 in 1582. 0 before the cut-over. */
inline int32_t host_dropped_days(int32_t year, int32_t month, int32_t julian_number) {
    const uint32_t century = ((uint32_t)(year + 32800) - ((uint32_t)month < 3)) / 100; /* 0 to 655 */
    const int32_t dropped = (int32_t)(century - (century >> 2)) - 248;
    /* Without a branch, which would be taken at random in a vector of dates from both sides of the cut-over. */
    return dropped & -(julian_number >= HOST_DAY_CUTOVER + 10);
}

/* Day number of a date; ranges as above. A date in the gap counts on in the Julian calendar: 1582-10-05 has the number of
 * 1582-10-15. */
inline int32_t host_day_number_of(int32_t year, int32_t month, int32_t day) {
    const int32_t julian = host_julian_number(year, month, day);
    return julian - host_dropped_days(year, month, julian);
}

inline int32_t host_day_number(const qztime* value) { return host_day_number_of(value->year, value->month, value->day); }

/* The same, and a date in the gap counts as 1582-10-15, which is what qztime_glgl_adjust makes of it. */
inline int32_t host_day_number_adjusted(const qztime* value) {
    const int32_t julian = host_julian_number(value->year, value->month, value->day);
    const int32_t number = julian - host_dropped_days(value->year, value->month, julian);
    const int32_t most = HOST_DAY_CUTOVER | (0x7fffffff & -(julian >= HOST_DAY_CUTOVER + 10));
    return number < most ? number : most;
}

/* Month and, times 256, day of each day of a year that begins on March 1. */
typedef struct host_march_year {
    uint16_t month_and_day[366];
} host_march_year;
extern const host_march_year host_days_from_march;

/* Sets year, month and day of a record from the days since March 1 of year -32800, each fourth year having its leap day; the
 * other fields stay. 10 to 17 million. */
inline void host_set_julian_count(qztime* value, uint32_t julian) {
    const uint32_t year = (4 * julian + 3) / 1461;            /* from March; 28088 to 42799 */
    const uint32_t day_of_year = julian - (1461 * year >> 2); /* 0 to 365; January and February from 306 on */
    const uint16_t month_and_day = host_days_from_march.month_and_day[day_of_year];
    value->year = (int16_t)((int32_t)(year + (day_of_year >= 306)) - 32800);
    value->month = (uint8_t)month_and_day;
    value->day = (uint8_t)(month_and_day >> 8);
}

/* Sets year, month and day of a record from a day number between HOST_DAY_MIN and HOST_DAY_MAX; its other fields stay. */
inline void host_set_day_number(qztime* value, int32_t number) {
    const uint32_t gregorian = (uint32_t)(number + 11980140 - 248); /* days since March 1 of year -32800 in that calendar */
    const uint32_t century = (4 * gregorian + 3) / 146097;          /* 280 to 428 */
    /* A branch, since a vector's dates mostly lie on one side: adding days then takes 5 ns in place of 6. */
    host_set_julian_count(value, gregorian + (number >= HOST_DAY_CUTOVER ? century - (century >> 2) : 248));
}

/* host_day_number_adjusted of n records, several times as fast as one after the other. */
void host_day_numbers(int32_t* numbers, uint32_t n, const qztime* dates);

/* Copies n records, with the dates of day numbers between HOST_DAY_MIN and HOST_DAY_MAX. A number outside gives no date,
 * harmlessly. out may be source. */
void host_set_day_numbers(qztime* out, uint32_t n, const qztime* source, const int32_t* numbers);

/* ---- Record access ------------------------------------------------------------------------------------------------------- */

inline int32_t qztime_get_year(const qztime* value) { return value->year; }
inline int32_t qztime_get_month(const qztime* value) { return value->month; }
inline int32_t qztime_get_day(const qztime* value) { return value->day; }
inline int32_t qztime_get_hour(const qztime* value) { return value->hour; }
inline int32_t qztime_get_min(const qztime* value) { return value->minute; }
inline int32_t qztime_get_sec(const qztime* value) { return value->second; }
inline int32_t qztime_get_msec(const qztime* value) { return (int32_t)value->fraction; } /* nanoseconds */
inline int16_t qztime_get_tz(const qztime* value) { return value->tz; }

/* The zone's hours and minutes, both with the zone's sign: -330 minutes are -5 and -30. TZ_NONE is not treated apart. */
inline int32_t qztime_get_zone_hour(const qztime* value) { return value->tz / 60; }
inline int32_t qztime_get_zone_min(const qztime* value) { return value->tz % 60; }

/* Replace one field; nothing is checked, and the low bits are kept that the field holds. */
inline void qztime_set_day(qztime* value, int32_t day) { value->day = (uint8_t)day; }
inline void qztime_set_hour(qztime* value, int32_t hour) { value->hour = (uint8_t)hour; }
inline void qztime_set_min(qztime* value, int32_t minute) { value->minute = (uint8_t)minute; }
inline void qztime_set_sec(qztime* value, int32_t second) { value->second = (uint8_t)second; }
inline void qztime_set_msec(qztime* value, int32_t fraction) { value->fraction = (uint32_t)fraction; } /* nanoseconds */
inline void qztime_set_tz(qztime* value, int16_t tz) { value->tz = tz; }

inline void qztime_assign(qztime* destination, const qztime* source) { *destination = *source; }

inline void qztime_decode(const qztime* value, int32_t* year, int32_t* month, int32_t* day, int32_t* hour, int32_t* minute,
                          int32_t* second, int32_t* fraction, int16_t* tz) {
    *year = value->year, *month = value->month, *day = value->day;
    *hour = value->hour, *minute = value->minute, *second = value->second;
    *fraction = (int32_t)value->fraction, *tz = value->tz;
}

/* Writes the fields with no check; of each the low bits are kept that the field holds. */
inline void qztime_encode_without_check(qztime* value, int32_t year, int32_t month, int32_t day, int32_t hour, int32_t minute,
                                        int32_t second, int32_t fraction, int16_t tz) {
    value->year = (int16_t)year, value->month = (uint8_t)month, value->day = (uint8_t)day;
    value->hour = (uint8_t)hour, value->minute = (uint8_t)minute, value->second = (uint8_t)second;
    value->fraction = (uint32_t)fraction, value->tz = tz;
}

/* 1 for a leap year of the calendar that holds for the year. */
inline int32_t host_is_leap_year(int32_t year) {
    return ((year & 3) == 0) & ((year % 100 != 0) | ((year & 15) == 0) | (year <= 1582));
}

/* The last day of a month; 31 for October 1582. A month outside 1 to 12 gets 30 or 31. */
inline int32_t qztime_month_end_day(int32_t year, int32_t month) {
    return month == 2 ? 28 + host_is_leap_year(year) : 30 | ((month ^ (month >> 3)) & 1);
}

/* 0 when the date exists, EC_DATE_VALUE_INVALID otherwise. A date in the gap passes. */
inline int32_t qztime_date_validate(int32_t year, int32_t month, int32_t day) {
    if (year < HOST_YEAR_MIN || year > HOST_YEAR_MAX || month < 1 || month > 12 || day < 1) return EC_DATE_VALUE_INVALID;
    return day <= 28 || day <= qztime_month_end_day(year, month) ? 0 : EC_DATE_VALUE_INVALID;
}

/* Writes the fields when they make a value: a date as qztime_date_validate wants it, hour below 24, minute and second below 60,
 * fraction below 1000000000, tz a zone or TZ_NONE. 0 or EC_DATE_VALUE_INVALID. A date in the gap is written as it stands. */
inline int32_t qztime_encode(qztime* value, int32_t year, int32_t month, int32_t day, int32_t hour, int32_t minute,
                             int32_t second, int32_t fraction, int16_t tz) {
    const int32_t code = qztime_date_validate(year, month, day);
    if (code < 0) return code;
    if ((uint32_t)hour > 23 || (uint32_t)minute > 59 || (uint32_t)second > 59 || (uint32_t)fraction > 999999999 ||
        ((tz < -HOST_ZONE_MAX || tz > HOST_ZONE_MAX) && tz != TZ_NONE)) {
        return EC_DATE_VALUE_INVALID;
    }
    qztime_encode_without_check(value, year, month, day, hour, minute, second, fraction, tz);
    return 0;
}

/* ---- The gap ------------------------------------------------------------------------------------------------------------- */

/* 0 when the date lies in the gap, 1 otherwise. */
inline int32_t qztime_cmp_with_glgl(int32_t year, int32_t month, int32_t day) {
    return !(year == 1582 && month == 10 && day >= 5 && day <= 14);
}

/* Moves a date of the gap to 1582-10-15 and keeps its time of day. Any other record is not written to. */
inline void qztime_glgl_adjust(qztime* value) {
    if (!qztime_cmp_with_glgl(value->year, value->month, value->day)) value->day = 15;
}

/* 1 for a date of 1582 behind the gap, else 0. */
inline int32_t qztime_glgl_need_adjust_for_w(const qztime* value) {
    return value->year == 1582 && (value->month > 10 || (value->month == 10 && value->day >= 15));
}

/* ---- Comparison ---------------------------------------------------------------------------------------------------------- */

/* Year to second as one number in order of time, any bits. */
inline uint64_t host_second_key(const qztime* value) {
    uint64_t bytes;
    memcpy(&bytes, value, sizeof bytes); /* year, month ... second, and the fraction's lowest byte */
    const uint64_t year = (uint16_t)(value->year ^ -32768);
    return year << 40 | __builtin_bswap64(bytes) << 16 >> 24;
}

/* qztime_cmp of two records whose zones differ. */
int32_t host_cmp_across_zones(const qztime* a, const qztime* b);

/* -1 when a comes before b, 1 when it comes after, 0 when neither, to the nanosecond. Two values with different zones are
 * compared as instants; a value without a zone counts as UTC then, so that the same fields with tz 0 and with TZ_NONE are
 * equal. */
inline int32_t qztime_cmp(const qztime* a, const qztime* b) {
    const uint64_t key_a = host_second_key(a), key_b = host_second_key(b);
    const uint32_t fraction_a = a->fraction, fraction_b = b->fraction;
    if (a->tz != b->tz) return host_cmp_across_zones(a, b);
    /* Without a branch: which of two dates is later is rarely foreseen. */
    const int64_t seconds = (int64_t)(key_a - key_b); /* within 2^56 */
    const int64_t apart = seconds != 0 ? seconds : (int64_t)fraction_a - (int64_t)fraction_b;
    return (apart > 0) - (apart < 0);
}

/* Compares the fields from part code field down to the fraction (1 year, 2 month ... 6 second, 7 fraction). The sign is that
 * of "time left": -1 when a's fields lie later than b's, 1 when they lie earlier, 0 when they are equal. So a count of years
 * from a to b that is positive is one too many when the months and what follows compare -1. Any other field: 0. Zones play
 * no part. */
inline int32_t qztime_compare(const qztime* a, const qztime* b, int32_t field) {
    if (field < HOST_PART_YEAR || field > HOST_PART_MILLISECOND) return 0;
    const uint32_t unused_bits =
        field == HOST_PART_YEAR ? 0u : 8u + 8u * (uint32_t)field; /* of the key, above the field; 0, 24 to 64 */
    const uint64_t kept = unused_bits < 64 ? UINT64_MAX >> unused_bits : 0;
    const uint64_t key_a = host_second_key(a) & kept, key_b = host_second_key(b) & kept;
    const int32_t order = 2 * ((key_a < key_b) - (key_a > key_b)) + ((a->fraction < b->fraction) - (a->fraction > b->fraction));
    return (order > 0) - (order < 0);
}

/* ---- Days and weeks ------------------------------------------------------------------------------------------------------ */

/* a minus b in days of the calendar; the time of day plays no part. A date in the gap counts as 1582-10-15. */
inline int32_t qztime_diff_day(const qztime* a, const qztime* b) {
    return host_day_number_adjusted(a) - host_day_number_adjusted(b);
}

/* The same, but a date in the gap counts as the Julian calendar would have it: 1582-10-05 is one day behind 1582-10-04, and
 * 1582-10-14 is ten. */
inline int32_t qztime_diff_day_without_glgl_adjust(const qztime* a, const qztime* b) {
    return host_day_number(a) - host_day_number(b);
}

/* 0 for Sunday to 6 for Saturday. A date in the gap has the weekday of 1582-10-15. */
inline int32_t qztime_day_of_week(const qztime* value) {
    const uint32_t from_sunday =
        (uint32_t)(host_day_number_adjusted(value) + 11980147); /* day -11980147 was a Sunday; below 24 million */
    return (int32_t)(from_sunday % 7);
}

/* Days from January 1 of the same year, which is 1. 1582 is ten days short: its October 15 is day 278, its last day 355. A date
 * in the gap counts as October 15. */
inline int32_t qztime_day_of_year(const qztime* value) {
    static const uint16_t kDaysBefore[16] = {0, 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 0, 0, 0};
    const int32_t day = kDaysBefore[value->month & 15] + value->day + ((value->month > 2) & host_is_leap_year(value->year));
    if (value->year != 1582 || day < 278) return day;
    return day < 288 ? 278 : day - 10;
}

/* Week of the year: week 1 holds January 1, a week begins on Sunday, so the first and the last week of a year may be short. 1
 * to 54. In 1582 the weeks follow the weekdays across the cut-over. */
inline int32_t qztime_week_for_datepart(const qztime* value) {
    /* The Sunday on or before the date lies so many days behind January 1; -6 to 365, or up to 586. */
    const int32_t sunday = qztime_day_of_year(value) - 1 - qztime_day_of_week(value);
    return (int32_t)((uint32_t)(sunday + 13) / 7);
}

/* Weekday of a NUL-terminated name: 0 for Sunday to 6 for Saturday, 8 for an unknown one. English names and their first three
 * letters are known in every character set, any case; beside them the Chinese names in GB18030 (0) and in UTF-8 (1), the Korean
 * ones in EUC-KR (2) and in UTF-8. Blanks around the name do not count. */
int32_t qztime_convert_weekday(uint32_t charset_code, const char* name);

/* Brings a month outside 1 to 12 into the range, carrying into the year. zero is always 0. A year that would leave 32 bits
 * stays at the end of them, where no calendar reaches. */
inline void qztime_format_date(int32_t* year, int32_t* month, int32_t zero) {
    const int64_t years = 1 << 28;                               /* make the months positive */
    const uint64_t months = (uint64_t)(12 * years + *month - 1); /* 1.07e9 to 5.37e9 */
    const int64_t carried = *year + (int64_t)(months / 12) - years;
    (void)zero;
    *month = (int32_t)(months % 12) + 1;
    *year = carried < INT32_MIN ? INT32_MIN : carried > INT32_MAX ? INT32_MAX : (int32_t)carried;
}

/* qztime_calc_n_days_from_zero of any fields. */
int64_t host_count_days_from_zero(int32_t year, int32_t month, int32_t day);

/* Number of a date for composition, where a day beyond the month's end carries, and a month too: the day numbers above up to
 * 1582-10-04, but the gap counts, 1582-10-05 being 578103 and 1582-10-15 578113, so that the days of October 1582 lie one
 * number apart. Any fields. */
inline int64_t qztime_calc_n_days_from_zero(int32_t year, int32_t month, int32_t day) {
    if (year < HOST_YEAR_MIN || year > HOST_YEAR_MAX || month < 1 || month > 12 || day < 1 || day > 31) {
        return host_count_days_from_zero(year, month, day);
    }
    return host_day_number_of(year, month, day) + (host_julian_number(year, month, day) >= HOST_DAY_CUTOVER + 10 ? 10 : 0);
}

/* The inverse; the date may lie in the gap. EC_DATE_OUT_OF_RANGE outside -4712-01-01 to 9999-12-31, and nothing is written
 * then. */
inline int32_t qztime_get_date_by_ndays_from_zero(int64_t number, int32_t* year, int32_t* month, int32_t* day) {
    if (number < HOST_DAY_MIN || number > HOST_DAY_MAX + 10) return EC_DATE_OUT_OF_RANGE;
    qztime date;
    if (number < HOST_DAY_CUTOVER + 10) {
        host_set_julian_count(&date, (uint32_t)((int32_t)number + 11980140));
    } else {
        host_set_day_number(&date, (int32_t)number - 10);
    }
    *year = date.year, *month = date.month, *day = date.day;
    return 0;
}

/* ---- Arithmetic ---------------------------------------------------------------------------------------------------------- */

/* Below, out may be the record itself. A date in the gap counts as 1582-10-15, and a result that falls into the gap becomes
 * 1582-10-15. 0, EC_DATE_OUT_OF_RANGE, EC_INVALID_ARGUMENT. */

/* Adds whole days. */
inline int32_t host_add_days(const qztime* value, int64_t days, qztime* out) {
    if (days < HOST_DAY_MIN - HOST_DAY_MAX || days > HOST_DAY_MAX - HOST_DAY_MIN) return EC_DATE_OUT_OF_RANGE;
    const int32_t number = host_day_number_adjusted(value) + (int32_t)days; /* -17.4 to 17.4 million */
    if (number < HOST_DAY_MIN || number > HOST_DAY_MAX) return EC_DATE_OUT_OF_RANGE;
    *out = *value;
    host_set_day_number(out, number);
    return 0;
}

/* qztime_add_by_fmt for any part code. */
int32_t host_add_part(const qztime* value, int32_t part, int64_t count, qztime* out);

/* Adds count units of a part: 1 year, 2 month, 3, 9, 11 day, 4 hour, 5 minute, 6 second, 7 millisecond, 8 quarter, 10 week,
 * 14 microsecond. Years, quarters and months keep the day, or take the last of a shorter month. Other codes:
 * EC_INVALID_ARGUMENT. */
inline int32_t qztime_add_by_fmt(const qztime* value, int32_t part, int64_t count, qztime* out) {
    return part == HOST_PART_DAY ? host_add_days(value, count, out) : host_add_part(value, part, count, out);
}

/* qztime_date_add_number of a number with a fraction, within the length of the calendar. */
int32_t host_add_part_of_days(const qztime* value, double days, qztime* out);

/* Adds days; a fraction of a day counts to the nearest second, half a second away from zero, and the value keeps its own
 * fraction of a second. Infinities and NaN: EC_DATE_OUT_OF_RANGE. */
inline int32_t qztime_date_add_number(const qztime* value, double days, qztime* out) {
    const double most = HOST_DAY_MAX - HOST_DAY_MIN + 1;
    if (!(days > -most && days < most)) return EC_DATE_OUT_OF_RANGE; /* NaN too */
    const int32_t whole = (int32_t)days;
    return days == whole ? host_add_days(value, whole, out) : host_add_part_of_days(value, days, out);
}

/* add_months: from the last day of a month to the last of another, 2024-02-29 plus one month being 2024-03-31; any other day
 * stays, or becomes the last of a shorter month. The time of day is kept. The interval's years and months are added up. */
int32_t qztime_date_add_iv_ym(const qztime* value, const qz_interval_ym* interval, qztime* out);

/* Adds or subtracts a year-month interval: the day stays, or becomes the last of a shorter month; 2024-02-29 plus one month is
 * 2024-03-29. */
int32_t datetime_add_interval_ym(const qztime* value, const qz_interval_ym* interval, qztime* out);
int32_t datetime_sub_interval_ym(const qztime* value, const qz_interval_ym* interval, qztime* out);

/* Adds or subtracts a day-time interval, whose fields may have any size and sign. */
int32_t datetime_add_interval_dt(const qztime* value, const qz_interval_dt* interval, qztime* out);
int32_t datetime_sub_interval_dt(const qztime* value, const qz_interval_dt* interval, qztime* out);

/* Counts the completed units of a part from first to second, positive when second is later: 1 year, 2 month, 3, 9, 11 day, 4
 * hour, 5 minute, 6 second, 7 millisecond, 8 quarter, 10 week, 14 microsecond. Fields count as they stand, zones play no part;
 * weeks are counted by their Sundays. Other codes: EC_INVALID_ARGUMENT. A count that 32 bits do not hold: EC_DATA_OVERFLOW. */
int32_t qztime_parse_datediff(int32_t part, const qztime* first, const qztime* second, int32_t* result);

#ifdef __cplusplus
}
#endif

#endif
