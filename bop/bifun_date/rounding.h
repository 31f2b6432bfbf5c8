// round of a date to each unit.
//
//   day          from noon on up
//   century      from year 50 of a hundred on up, to its year 1: 2049 gives 2001, 2050 gives 2101. Below year 0 from year 51 on
//   year         from July on up
//   quarter      from the 16th of its second month on up
//   month        from the 16th on up
//   week         of the year, of the month: from the fifth day on up; of 1582, where truncation counts from 1582-10-15, from
//                Fridays
//   week start   to a Sunday; the half is Wednesday noon, which goes up
//   ISO week     to a Monday, from Friday on up; a Sunday belongs to the Monday behind it
//   hour         from 30 minutes and 30 seconds on up: 10:30:29 gives 10:00
//   minute       from 30 seconds on up
//
// The time of day plays no part but where it is named. The units from a month on set the zone to TZ_NONE, the smaller ones
// keep it.
#pragma once

#include "bop/bifun_date/date_step.h"
#include "bop/bifun_date/date_words.h"
#include "bop/bifun_date/week_start.h"

namespace bifun {

inline constexpr int32_t kNoon = 12;
inline constexpr int32_t kMiddleDay = 16;  // of a month: the first day that goes up

// By the ends of the months alone: 1582-10-04 goes to 1582-10-05. Whether a value goes up is no branch, here and below, since
// it could not be foreseen.
inline Code round_to_day(const qztime& value, qztime& out) {
    const int32_t up = value.hour >= kNoon;
    int32_t year = value.year, month = value.month, day = value.day + up;
    if (const int32_t end = qztime_month_end_day(year, month); (up != 0) & (day > end)) {
        day -= end;
        ++month;
    }
    if (month > 12 && up != 0) {
        month -= 12;
        ++year;
    }
    return Code{qztime_encode(&out, year, month, day, 0, 0, 0, 0, value.tz)};
}

// The first of a month of the year, or with month 13 of the next.
inline Code round_to_first(int32_t year, int32_t month, qztime& out) {
    const int32_t next_year = month == 13;
    return Code{qztime_encode(&out, year + next_year, month - 12 * next_year, 1, 0, 0, 0, 0, TZ_NONE)};
}

inline Code round_to_century(const qztime& value, qztime& out) {
    const int32_t year = value.year;
    const int32_t hundreds = year / 100 * 100;  // towards 0
    const int32_t rest = year - hundreds;
    if (year >= 0) return round_to_first(hundreds + (rest < 50 ? 1 : 101), 1, out);
    const int32_t nearest = rest < -50 ? hundreds - 100 : hundreds;
    return round_to_first(nearest == 0 ? 1 : nearest, 1, out);
}

inline Code round_to_year(const qztime& value, qztime& out) { return round_to_first(value.year + (value.month >= 7), 1, out); }

inline Code round_to_quarter(const qztime& value, qztime& out) {
    const int32_t month = value.month;
    const int32_t months_in = (month + 2) % 3;  // of the quarter: 0 to 2
    const bool up = (months_in == 2) | ((months_in == 1) & (value.day >= kMiddleDay));
    return round_to_first(value.year, month - months_in + 3 * up, out);
}

inline Code round_to_month(const qztime& value, qztime& out) {
    return round_to_first(value.year, value.month + (value.day >= kMiddleDay), out);
}

// The value up to 7 days later or earlier, at midnight. By the ends of months, without a branch on whether the day leaves its
// month, which could not be foreseen; the calendar is asked at its two ends and in the year that lost ten days.
inline Code midnight_near(const qztime& value, int32_t days, qztime& out) {
    int32_t year = value.year, month = value.month;
    if (year == 1582 || year <= HOST_YEAR_MIN || year >= HOST_YEAR_MAX) {
        const Code code{qztime_add_by_fmt(&value, HOST_PART_DAY, days, &out)};
        if (!code.failed()) clear_time(out);
        return code;
    }
    const int32_t day = value.day + days;
    const int32_t end = qztime_month_end_day(year, month);
    const int32_t end_before = month == 1 ? 31 : qztime_month_end_day(year, month - 1);
    const int32_t before = day<1, behind = day> end;
    month += behind - before;
    if (month < 1 || month > 12) {
        year += behind - before;
        month = behind != 0 ? 1 : 12;
    }
    qztime_encode_without_check(&out, year, month, day + (end_before & -before) - (end & -behind), 0, 0, 0, 0, value.tz);
    return kOk;
}

// To the nearest beginning of a week, past days after one: up to 3 days back, or up to 3 days forward.
inline Code round_to_week(const qztime& value, int32_t past, qztime& out) {
    return midnight_near(value, past > 3 ? 7 - past : -past, out);
}

inline Code round_to_week_of_year(const qztime& value, qztime& out) {
    if (value.year == 1582) {
        int32_t start = 0;
        const Code code = week_start_of_year(value, start);
        return code.failed() ? code : round_to_week(value, days_past(start, value), out);
    }
    const Code code{qztime_date_validate(value.year, 1, 1)};
    return code.failed() ? code : round_to_week(value, days_past_of_year(value), out);
}

// A value in the gap goes by the first of its month, and counts as 1582-10-15.
inline Code round_to_week_of_month(const qztime& value, qztime& out) {
    if (value.year == 1582) {
        int32_t start = kFriday;
        if (qztime_glgl_need_adjust_for_w(&value) == 0) {
            if (const Code code = weekday_of_first(value.year, value.month, start); code.failed()) return code;
        }
        return round_to_week(value, days_past(start, value), out);
    }
    const Code code{qztime_date_validate(value.year, value.month, 1)};
    return code.failed() ? code : round_to_week(value, days_past_of_month(value), out);
}

// The same of a value whose day number is known.
inline Code midnight_of_day(const qztime& value, int32_t number, int32_t days, qztime& out) {
    if (value.year == 1582 || value.year <= HOST_YEAR_MIN || value.year >= HOST_YEAR_MAX)
        return midnight_near(value, days, out);
    const int16_t tz = value.tz;
    host_set_day_number(&out, number + days);
    clear_time(out);
    out.tz = tz;
    return kOk;
}

inline Code round_to_sunday(const qztime& value, qztime& out) {
    constexpr int32_t kWednesday = 3;
    const int32_t number = host_day_number_adjusted(&value);
    const int32_t weekday = weekday_of_number(number);
    const int32_t half_days = 2 * weekday + (value.hour >= kNoon);  // since Sunday
    return midnight_of_day(value, number, 7 * (half_days > 2 * kWednesday) - weekday, out);
}

inline Code round_to_monday(const qztime& value, qztime& out) {
    constexpr int32_t kThursday = 4;
    const int32_t number = host_day_number_adjusted(&value);
    const int32_t weekday = weekday_of_number(number);
    return midnight_of_day(value, number, 1 + 7 * (weekday > kThursday) - weekday, out);
}

// The calendar is asked only where the day changes, or where adding moves a date out of the gap.
inline Code round_to_hour(const qztime& value, qztime& out) {
    const int32_t up = (value.minute > 30) | ((value.minute == 30) & (value.second >= 30));
    const int32_t hour = value.hour + up;
    if ((up != 0) & ((hour > 23) | in_gap(value))) {
        const Code code{qztime_add_by_fmt(&value, HOST_PART_HOUR, 1, &out)};
        if (!code.failed()) clear_minute(out);
        return code;
    }
    out = value;
    qztime_set_hour(&out, hour);
    clear_minute(out);
    return kOk;
}

inline Code round_to_minute(const qztime& value, qztime& out) {
    const int32_t up = value.second >= 30;
    const int32_t minute = value.minute + up;
    if ((up != 0) & ((minute > 59) | in_gap(value))) {
        const Code code{qztime_add_by_fmt(&value, HOST_PART_MINUTE, 1, &out)};
        if (!code.failed()) clear_second(out);
        return code;
    }
    out = value;
    qztime_set_min(&out, minute);
    clear_second(out);
    return kOk;
}

// Calls f with the step of a part, or none().
template <class F, class None>
auto with_rounding_step(RoundPart part, const F& f, const None& none) {
    switch (part) {
        case RoundPart::kDay:
            return f(Step<round_to_day>());
        case RoundPart::kCentury:
            return f(Step<round_to_century>());
        case RoundPart::kYear:
            return f(Step<round_to_year>());
        case RoundPart::kQuarter:
            return f(Step<round_to_quarter>());
        case RoundPart::kMonth:
            return f(Step<round_to_month>());
        case RoundPart::kWeekOfYear:
            return f(Step<round_to_week_of_year>());
        case RoundPart::kWeekOfMonth:
            return f(Step<round_to_week_of_month>());
        case RoundPart::kWeekStart:
            return f(Step<round_to_sunday>());
        case RoundPart::kHour:
            return f(Step<round_to_hour>());
        case RoundPart::kMinute:
            return f(Step<round_to_minute>());
        case RoundPart::kIsoWeek:
            return f(Step<round_to_monday>());
        default:
            return none();
    }
}

}  // namespace bifun
