// The weekday on which weeks begin, around the calendar change of October 1582.
//
// The weeks of a year begin on the weekday of its January 1. Those of 1582 from October 2 on begin on Fridays, as 1582-10-15
// was one. That test starts thirteen days before the new calendar does, and is meant to.
#pragma once

#include <cstdint>

#include "bop/bifun_date/weekday.h"
#include "bop/frame/call.h"
#include "qzhost/calendar.h"

namespace bifun {

inline constexpr int32_t kFriday = 5;

// The weekday of a month's first day.
inline Code weekday_of_first(int32_t year, int32_t month, int32_t& weekday) {
    qztime first;
    const Code code{qztime_encode(&first, year, month, 1, 0, 0, 0, 0, TZ_NONE)};
    if (!code.failed()) weekday = weekday_of(first);
    return code;
}

// The weekday on which the weeks of the value's year begin.
inline Code week_start_of_year(const qztime& value, int32_t& weekday) {
    if (value.year == 1582 && ((value.month == 10 && value.day >= 2) || value.month > 10)) {
        weekday = kFriday;
        return kOk;
    }
    return weekday_of_first(value.year, 1, weekday);
}

// Days since the last week began, 0 to 6, by the weekday on which weeks begin.
inline int32_t days_past(int32_t start, const qztime& value) {
    const int32_t past = weekday_of(value) - start;
    return past < 0 ? past + 7 : past;
}

// The same where weeks begin with the year or the month, without a look at weekdays. Not in 1582.
inline int32_t days_past_of_year(const qztime& value) { return (qztime_day_of_year(&value) - 1) % 7; }
inline int32_t days_past_of_month(const qztime& value) { return (value.day - 1) % 7; }

}  // namespace bifun
