// The number that rand draws.
//
// rand seeds its generator anew on every row, so it is a function of its argument alone: there is no state to keep.
#pragma once

#include <cstdint>

namespace bifun {

// The seed of x: the lower half of its integer part in 64 bits; 0 for NaN and for what does not fit.
inline uint32_t random_seed(double x) {
    constexpr double kLimit = 9223372036854775808.0;  // 2^63, which does not fit; -2^63 does
    if (!(x >= -kLimit && x < kLimit)) return 0;
    return static_cast<uint32_t>(static_cast<int64_t>(x));
}

// The first number of a linear congruential generator with that seed: one of 32768 steps from 0.0 to 1.0, both included.
inline double random_number(double x) {
    const uint32_t state = random_seed(x) * 214013u + 2531011u;
    return static_cast<double>(state / 65536 % 32768) / 32767.0;
}

}  // namespace bifun
