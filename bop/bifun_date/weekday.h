// Weekdays, counted from a Sunday.
#pragma once

#include <cstdint>

#include "qzhost/calendar.h"

namespace bifun {

// What a week begins with.
enum class FirstDay : uint8_t { kSunday, kMonday };

// 0 for the first day of a week to 6, of any record's day number.
inline int32_t weekday_of_number(int32_t number, FirstDay first = FirstDay::kSunday) {
    constexpr int32_t kSunday = 730761;        // 2000-10-01
    constexpr int32_t kWeeks = 7 * 2'000'000;  // makes the distance positive: day numbers lie within 13 million
    const int32_t start = first == FirstDay::kSunday ? kSunday : kSunday + 1;
    return static_cast<int32_t>(static_cast<uint32_t>(number - start + kWeeks) % 7);
}

// The same of a record. A date in the gap of October 1582 counts as 1582-10-15. Any bits.
inline int32_t weekday_of(const qztime& value, FirstDay first = FirstDay::kSunday) {
    return weekday_of_number(host_day_number_adjusted(&value), first);
}

// Moves a date in the gap to 1582-10-15 where it stands, in a row of the caller's vector or in a constant: who asks for the
// weekday of such a date finds it adjusted afterwards.
inline const qztime& adjusted_in_place(const qztime& value) {
    qztime_glgl_adjust(&const_cast<qztime&>(value));
    return value;
}

}  // namespace bifun
