// The shortest decimal number that reads back as a double.
//
// A double is m * 2^q. Every number between the two midpoints to its neighbours reads back as it (the midpoints themselves when
// m is even). One multiplication by a 128-bit power of ten scales the double to where the interval is as long as one to ten
// units of a digit; half the interval is the power itself, shifted. If a multiple of ten units lies inside there is only one,
// and it is the answer; otherwise it is the whole number of units nearest to the double. Products are cut off: where that could
// turn a comparison, exact_shortest_decimal decides. There is no other branch, since neither the count of digits nor the
// direction of rounding can be foreseen.
#ifndef QZHOST_SRC_SHORTEST_DECIMAL_H
#define QZHOST_SRC_SHORTEST_DECIMAL_H

#include <cstdint>

#include "host/src/powers_of_ten.h"
#include "host/src/wide_integer.h"

namespace qzhost {

struct ShortestDecimal {
    uint64_t digits;  // below 10^17
    int exponent;     // power of ten of the last digit
};

inline constexpr int kDoubleMantissaBits = 52;
inline constexpr int kDoubleExponentBias = 1023 + kDoubleMantissaBits;  // of m, a whole number

constexpr int floor_log2_of_power_of_ten(int e) { return (e * 1741647) >> 19; }  // exact for |e| <= 1233

// mantissa and exponent are the fields of a finite double that is not zero. The digits may end in zeros.
ShortestDecimal exact_shortest_decimal(uint64_t mantissa, int exponent);

// The same of a normal double, in 16 or 17 digits.
inline ShortestDecimal shortest_decimal(uint64_t mantissa, int exponent) {
    constexpr uint64_t kHalf = uint64_t{1} << 63;
    const uint64_t narrow_below = (mantissa - 1) >> 63;  // a power of two: the lower neighbour is half as far as the upper
    const uint64_t m = mantissa | uint64_t{1} << kDoubleMantissaBits;
    const int q = exponent - kDoubleExponentBias;
    const int tens = ((q * 1262611) >> 22) + 1;  // of ten units: 10^tens is above 2^q, and at most ten times as much
    const int h = q + floor_log2_of_power_of_ten(-tens) + 1;  // -3 to 0
    const Significand& g = significand_of_power_of_ten(-tens);

    // m * 2^q / 10^tens is product / 2^75, cut off below; half of 2^q / 10^tens is half_gap / 2^64, cut off as well.
    const uint64_t x = m << (h + 11);
    const Uint128 product = Uint128{g.high} * x + static_cast<uint64_t>(Uint128{g.low} * x >> 64);
    const auto whole = static_cast<uint64_t>(product >> 75);
    const auto fraction = static_cast<uint64_t>(product >> 11);  // of ten units; one too small, or exact
    const uint64_t half_gap = g.high >> (1 - h);

    const uint64_t below_gap = half_gap >> narrow_below;
    const uint64_t above = fraction + half_gap;
    const uint64_t below_inside = fraction <= below_gap, above_inside = above < half_gap;
    const uint64_t inside = below_inside | above_inside;
    const Uint128 units = Uint128{fraction} * 10;
    const auto behind_unit = static_cast<uint64_t>(units);
    const bool unsure =
        (fraction - below_gap + 2 <= 4) | (above + 4 <= 8) | (behind_unit - kHalf + 16 <= 32) | (narrow_below > inside);
    if (unsure) [[unlikely]] {
        const ShortestDecimal exact = exact_shortest_decimal(mantissa, exponent);
        return exact.exponent == tens ? ShortestDecimal{exact.digits * 10, tens - 1} : exact;
    }
    const uint64_t unit = static_cast<uint64_t>(units >> 64) + (behind_unit >> 63);
    return {(whole + above_inside) * 10 + (unit & (inside - 1)), tens - 1};
}

}  // namespace qzhost

#endif
