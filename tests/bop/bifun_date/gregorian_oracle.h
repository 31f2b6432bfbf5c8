// Dates behind the cut-over as the standard library counts them: an oracle that shares nothing with the host's calendar.
#pragma once

#include <chrono>
#include <cstdint>

#include "qzbifun/records.h"
#include "tests/support/random_value.h"

namespace gregorian {

inline std::chrono::year_month_day date_of(const qztime& value) {
    return {std::chrono::year{value.year}, std::chrono::month{value.month}, std::chrono::day{value.day}};
}

inline std::chrono::sys_days days_of(const qztime& value) { return std::chrono::sys_days{date_of(value)}; }

// The value with another date.
inline qztime on(qztime value, std::chrono::year_month_day date) {
    value.year = static_cast<int16_t>(static_cast<int>(date.year()));
    value.month = static_cast<uint8_t>(static_cast<unsigned>(date.month()));
    value.day = static_cast<uint8_t>(static_cast<unsigned>(date.day()));
    return value;
}

// Nanoseconds of the day.
inline std::chrono::nanoseconds time_of(const qztime& value) {
    return std::chrono::hours{value.hour} + std::chrono::minutes{value.minute} + std::chrono::seconds{value.second} +
           std::chrono::nanoseconds{int64_t{value.fraction}};
}

// The value with another time of day.
inline qztime at(qztime value, std::chrono::nanoseconds time) {
    const std::chrono::hh_mm_ss parts{time};
    value.hour = static_cast<uint8_t>(parts.hours().count());
    value.minute = static_cast<uint8_t>(parts.minutes().count());
    value.second = static_cast<uint8_t>(parts.seconds().count());
    value.fraction = static_cast<uint32_t>(parts.subseconds().count());
    return value;
}

// A value of the years 1600 to 9000.
inline qztime random_value(support::Random& random) {
    for (;;) {
        const qztime value = support::random_value<qztime>(random);
        if (value.year >= 1600 && value.year <= 9000) return value;
    }
}

}  // namespace gregorian
