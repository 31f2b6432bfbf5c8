// Date-time records for tests, told and shown field by field.
#pragma once

#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>

#include "qzbifun/records.h"

inline bool operator==(const qztime& a, const qztime& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

inline std::string show(const qztime& v) {
    const auto field = [](int64_t number) { return std::to_string(number); };
    return field(v.year) + "-" + field(v.month) + "-" + field(v.day) + " " + field(v.hour) + ":" + field(v.minute) + ":" +
           field(v.second) + "." + field(v.fraction) + " tz " + field(v.tz);
}

inline std::ostream& operator<<(std::ostream& out, const qztime& value) { return out << show(value); }

namespace dates {

inline qztime moment(int32_t year, int32_t month, int32_t day, int32_t hour, int32_t minute, int32_t second,
                     uint32_t fraction = 0, int16_t tz = TZ_NONE) {
    return {static_cast<int16_t>(year),
            static_cast<uint8_t>(month),
            static_cast<uint8_t>(day),
            static_cast<uint8_t>(hour),
            static_cast<uint8_t>(minute),
            static_cast<uint8_t>(second),
            fraction,
            tz};
}

inline qztime date(int32_t year, int32_t month, int32_t day) { return moment(year, month, day, 0, 0, 0); }

}  // namespace dates
