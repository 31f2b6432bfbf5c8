// Powers of ten as 128-bit significands, for the shortest text of a double.
//
// significand(e) is the smallest 128-bit integer g with g * 2^s >= 10^e, where s is the power of two that brings the top bit of
// g to bit 127. It is exact for 0 <= e <= 55 and rounded up elsewhere. The table is built by the compiler out of plain long
// multiplications and divisions by ten, so that there is no constant in it that somebody could have mistyped.
#ifndef QZHOST_SRC_POWERS_OF_TEN_H
#define QZHOST_SRC_POWERS_OF_TEN_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "host/src/wide_integer.h"

namespace qzhost {

struct Significand {
    uint64_t high;
    uint64_t low;
};

inline constexpr int kLowestPowerOfTen = -293;
inline constexpr int kHighestPowerOfTen = 324;

namespace powers_of_ten_detail {

// 10^324 has 1077 bits. 2^1151 / 10^293 has 178 bits and so still more than the 128 that are kept.
inline constexpr size_t kLimbs = 18;
using Wide = std::array<uint64_t, kLimbs>;  // least significant limb first

constexpr void multiply_by_ten(Wide& x) {
    uint64_t carry = 0;
    for (uint64_t& limb : x) {
        const Uint128 product = Uint128{limb} * 10 + carry;  // below 10 * 2^64
        limb = static_cast<uint64_t>(product);
        carry = static_cast<uint64_t>(product >> 64);
    }
}

// floor(floor(a / 10) / 10) is floor(a / 100), so that one division after the other loses nothing.
constexpr void divide_by_ten(Wide& x) {
    uint64_t remainder = 0;
    for (size_t i = kLimbs; i-- > 0;) {
        const Uint128 dividend = Uint128{remainder} << 64 | x[i];  // below 10 * 2^64
        x[i] = static_cast<uint64_t>(dividend / 10);
        remainder = static_cast<uint64_t>(dividend % 10);
    }
}

// The 128 bits from the top bit down, and one more when something that is not zero stands below them.
constexpr Significand rounded_up(const Wide& x, bool inexact) {
    size_t top = kLimbs - 1;
    while (x[top] == 0) {
        --top;
    }
    const int shift = std::countl_zero(x[top]);
    const auto limb = [&x, top](size_t below) { return below <= top ? x[top - below] : uint64_t{0}; };
    const auto joined = [shift](uint64_t upper, uint64_t lower) {
        return shift == 0 ? upper : upper << shift | lower >> (64 - shift);
    };
    Significand result{joined(limb(0), limb(1)), joined(limb(1), limb(2))};
    inexact = inexact || limb(2) << shift != 0;
    for (size_t below = 3; below <= top; ++below) {
        inexact = inexact || limb(below) != 0;
    }
    if (inexact && ++result.low == 0) {
        ++result.high;  // never to 2^64: no power of ten is that close to a power of two
    }
    return result;
}

constexpr auto build() {
    std::array<Significand, kHighestPowerOfTen - kLowestPowerOfTen + 1> table{};
    Wide x{1};
    for (int e = 0; e <= kHighestPowerOfTen; ++e) {
        table[static_cast<size_t>(e - kLowestPowerOfTen)] = rounded_up(x, false);
        multiply_by_ten(x);  // after 10^324 to 1081 bits, which still fit
    }
    x = Wide{};
    x[kLimbs - 1] = uint64_t{1} << 63;
    for (int e = -1; e >= kLowestPowerOfTen; --e) {
        divide_by_ten(x);
        table[static_cast<size_t>(e - kLowestPowerOfTen)] = rounded_up(x, true);
    }
    return table;
}

[[gnu::visibility("hidden")]] inline constexpr auto kTable = build();

}  // namespace powers_of_ten_detail

constexpr const Significand& significand_of_power_of_ten(int exponent) {
    return powers_of_ten_detail::kTable[static_cast<size_t>(exponent - kLowestPowerOfTen)];
}

}  // namespace qzhost

#endif
