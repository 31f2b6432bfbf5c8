// The shortest decimal of any double, without a doubt left.
//
// Three multiplications by one 128-bit power of ten scale the lower midpoint, the number and the upper midpoint to where a step
// of one is a decimal digit, in quarters, with the lowest bit telling that something was cut off ("round to odd"). That keeps
// every comparison exact. The method is Schubfach, by Raffaello Giulietti.
#include "host/src/shortest_decimal.h"

#include <algorithm>

namespace qzhost {
namespace {

// The upper 64 bits of g * x, whose lowest bit is also set when anything but zero stood behind them.
uint64_t multiply_to_odd(const Significand& g, uint64_t x) {
    const Uint128 lower = Uint128{g.low} * x;
    const Uint128 upper = Uint128{g.high} * x + static_cast<uint64_t>(lower >> 64);  // below 2^128: g.high * x <= (2^64 - 1)^2
    return static_cast<uint64_t>(upper >> 64) | (static_cast<uint64_t>(upper) > 1 ? 1 : 0);
}

}  // namespace

ShortestDecimal exact_shortest_decimal(uint64_t mantissa, int exponent) {
    const bool narrow_below = mantissa == 0 && exponent > 1;  // a power of two: the lower neighbour is half as far as the upper
    const uint64_t m = exponent == 0 ? mantissa : mantissa | uint64_t{1} << kDoubleMantissaBits;
    const int q = std::max(exponent, 1) - kDoubleExponentBias;
    const uint64_t outside = m & 1;  // an odd number does not own its midpoints
    // floor(log10(2^q)), or of three quarters of that; exact over the range of q
    const int k = (q * 1262611 - (narrow_below ? 524031 : 0)) >> 22;
    const int h = q + floor_log2_of_power_of_ten(-k) + 1;  // 1 to 4
    const Significand& g = significand_of_power_of_ten(-k);
    const uint64_t lower = multiply_to_odd(g, (4 * m - (narrow_below ? 1 : 2)) << h) + outside;  // all three below 2^60
    const uint64_t scaled = multiply_to_odd(g, (4 * m) << h);
    const uint64_t upper = multiply_to_odd(g, (4 * m + 2) << h) - outside;

    const uint64_t s = scaled / 4;
    if (s >= 10) {  // one digit less is shorter, and all such texts are equally long: at most one of two can lie inside
        const uint64_t tens = s / 10;
        const bool below_inside = lower <= 40 * tens, above_inside = 40 * tens + 40 <= upper;
        if (below_inside != above_inside) {
            return {tens + (above_inside ? 1 : 0), k + 1};
        }
    }
    const bool below_inside = lower <= 4 * s, above_inside = 4 * s + 4 <= upper;
    if (below_inside != above_inside) {
        return {s + (above_inside ? 1 : 0), k};
    }
    const uint64_t middle = 4 * s + 2;
    const bool up = scaled > middle || (scaled == middle && (s & 1) != 0);
    return {s + (up ? 1 : 0), k};
}

}  // namespace qzhost
