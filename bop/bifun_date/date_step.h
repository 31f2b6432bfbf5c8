// What truncation and rounding of dates share: a step from one value to another.
#pragma once

#include <cstdint>

#include "bop/frame/call.h"
#include "qzhost/calendar.h"

namespace bifun {

// Computes out from value, which may be the same record. Code is that of the calendar for a result outside it, and out is as it
// was then.
using DateStep = Code(const qztime& value, qztime& out);

// A step as a value, so that a choice among steps stands outside a loop and each is still inlined into it.
template <DateStep* kStep>
struct Step {
    static constexpr DateStep* step = kStep;
};

inline void clear_second(qztime& value) {
    qztime_set_sec(&value, 0);
    qztime_set_msec(&value, 0);
}

inline void clear_minute(qztime& value) {
    qztime_set_min(&value, 0);
    clear_second(value);
}

inline void clear_time(qztime& value) {
    qztime_set_hour(&value, 0);
    clear_minute(value);
}

inline bool in_gap(const qztime& value) { return qztime_cmp_with_glgl(value.year, value.month, value.day) == 0; }

}  // namespace bifun
