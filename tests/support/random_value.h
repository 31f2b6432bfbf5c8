// Random values of every type, with their edges: what a differential test draws its rows from.
#pragma once

#include <cstdint>

#include "tests/support/batch.h"
#include "tests/support/value.h"

namespace support {

// Any bit pattern may come; extremes, zeros of both signs, NaN, infinities and subnormals come often, and so do small numbers.
template <class T>
T random_value(Random& random);

template <>
int32_t random_value(Random& random);
template <>
int64_t random_value(Random& random);
template <>
double random_value(Random& random);
template <>
float random_value(Random& random);
template <>
xdec random_value(Random& random);  // a decimal's one form, of 1 to 44 digits; the extremes of the range too
template <>
qztime random_value(Random& random);  // a date that exists, of the years 1 to 9999, at times with a zone
template <>
qz_interval_ym random_value(Random& random);  // within 178 years, its fields of one sign and in their limits; at times 0
template <>
qz_interval_dt random_value(Random& random);  // within 100000 days, likewise; to the microsecond
template <>
Text random_value(Random& random);  // up to some 80 bytes of few letters, blanks and multibyte characters; at times empty

}  // namespace support
