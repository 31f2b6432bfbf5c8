// trunc of a date to each unit.
//
// The units from a month on set the zone to 0, the smaller ones keep it. The weeks of 1582 count from 1582-10-15 on, from that
// day to the end of the year, those of a month too: 1582-11-20 to the week of the month gives a Friday.
#pragma once

#include "bop/bifun_date/date_step.h"
#include "bop/bifun_date/date_words.h"
#include "bop/bifun_date/week_start.h"

namespace bifun {

// The value so many days earlier, at midnight. The calendar is asked where the day leaves its month, and in the year that lost
// ten days.
inline Code midnight_before(const qztime& value, int32_t days, qztime& out) {
    const int32_t year = value.year, day = value.day - days;
    if (day >= 1 && year != 1582 && year >= HOST_YEAR_MIN && year <= HOST_YEAR_MAX) {
        out = value;
        qztime_set_day(&out, day);
        clear_time(out);
        return kOk;
    }
    const Code code{qztime_add_by_fmt(&value, HOST_PART_DAY, -days, &out)};
    if (!code.failed()) clear_time(out);
    return code;
}

// Midnight, and a date in the gap stays there.
inline Code trunc_time(const qztime& value, qztime& out) {
    out = value;
    clear_time(out);
    return kOk;
}

inline Code trunc_to_day(const qztime& value, qztime& out) {
    const int32_t day = in_gap(value) ? 15 : value.day;
    out = value;
    qztime_set_day(&out, day);
    clear_time(out);
    return kOk;
}

inline Code trunc_to_first(int32_t year, int32_t month, qztime& out) {
    return Code{qztime_encode(&out, year, month, 1, 0, 0, 0, 0, 0)};
}

// A century begins with year 1 of a hundred, but below year 1 with year 0 of it.
inline Code trunc_to_century(const qztime& value, qztime& out) {
    constexpr int32_t kOutsideCalendar = -4800;  // the first of its last centuries begins before the calendar does
    const int32_t year = value.year;
    const int32_t first = year > 0 ? (year - 1) / 100 * 100 + 1 : (year - 99) / 100 * 100;
    if (first != kOutsideCalendar) return trunc_to_first(first, 1, out);
    qztime_encode_without_check(&out, first, 1, 1, 0, 0, 0, 0, 0);
    return kOk;
}

inline Code trunc_to_year(const qztime& value, qztime& out) { return trunc_to_first(value.year, 1, out); }

inline Code trunc_to_quarter(const qztime& value, qztime& out) {
    const int32_t month = value.month;
    return trunc_to_first(value.year, month >= 1 && month <= 9 ? (month - 1) / 3 * 3 + 1 : 10, out);
}

inline Code trunc_to_month(const qztime& value, qztime& out) { return trunc_to_first(value.year, value.month, out); }

// Weeks of 1582 that begin on the weekday of the first of a month.
inline Code trunc_to_week_of_1582(int32_t month, const qztime& value, qztime& out) {
    int32_t start = kFriday;
    if (!in_gap(value) && qztime_glgl_need_adjust_for_w(&value) == 0) {
        if (const Code code = weekday_of_first(value.year, month, start); code.failed()) return code;
    }
    return midnight_before(value, days_past(start, value), out);
}

inline Code trunc_to_week_of_year(const qztime& value, qztime& out) {
    if (value.year == 1582) return trunc_to_week_of_1582(1, value, out);
    const Code code{qztime_date_validate(value.year, 1, 1)};
    return code.failed() ? code : midnight_before(value, days_past_of_year(value), out);
}

inline Code trunc_to_week_of_month(const qztime& value, qztime& out) {
    if (value.year == 1582) return trunc_to_week_of_1582(value.month, value, out);
    const Code code{qztime_date_validate(value.year, value.month, 1)};
    return code.failed() ? code : midnight_before(value, days_past_of_month(value), out);
}

inline Code trunc_to_sunday(const qztime& value, qztime& out) { return midnight_before(value, weekday_of(value), out); }

inline Code trunc_to_monday(const qztime& value, qztime& out) {
    return midnight_before(value, weekday_of(value, FirstDay::kMonday), out);
}

inline Code trunc_to_hour(const qztime& value, qztime& out) {
    out = value;
    clear_minute(out);
    return kOk;
}

inline Code trunc_to_minute(const qztime& value, qztime& out) {
    out = value;
    clear_second(out);
    return kOk;
}

// Calls f with the step of a part, or none().
template <class F, class None>
auto with_truncation(RoundPart part, const F& f, const None& none) {
    switch (part) {
        case RoundPart::kDay:
            return f(Step<trunc_to_day>());
        case RoundPart::kCentury:
            return f(Step<trunc_to_century>());
        case RoundPart::kYear:
            return f(Step<trunc_to_year>());
        case RoundPart::kQuarter:
            return f(Step<trunc_to_quarter>());
        case RoundPart::kMonth:
            return f(Step<trunc_to_month>());
        case RoundPart::kWeekOfYear:
            return f(Step<trunc_to_week_of_year>());
        case RoundPart::kWeekOfMonth:
            return f(Step<trunc_to_week_of_month>());
        case RoundPart::kWeekStart:
            return f(Step<trunc_to_sunday>());
        case RoundPart::kHour:
            return f(Step<trunc_to_hour>());
        case RoundPart::kMinute:
            return f(Step<trunc_to_minute>());
        case RoundPart::kIsoWeek:
            return f(Step<trunc_to_monday>());
        default:
            return none();
    }
}

}  // namespace bifun
