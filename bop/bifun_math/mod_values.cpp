#include "bop/bifun_math/mod_values.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#if defined(__x86_64__)
#define BIFUN_FMA [[gnu::target("avx2,fma")]]
#define BIFUN_FMA_INLINE [[gnu::target("avx2,fma"), gnu::always_inline]] static inline
#endif

namespace bifun {
namespace {

double mod_of(double x, double y) { return y == 0.0 ? x : std::fmod(x, y); }

int64_t mod_of(int64_t x, int64_t y) {
    if (y == 0) return x;
    if (y == -1) return 0;  // and no division of the lowest bigint by it, which would trap
    return x % y;
}

#if defined(__x86_64__)

bool has_fma() { return __builtin_cpu_supports("avx2") != 0 && __builtin_cpu_supports("fma") != 0; }

constexpr double kRounding = 0x1.8p52;  // x + kRounding - kRounding is x rounded to a whole number, which lies in the low bits

// x mod y, neither below 0, where the quotient is below 2^53: the quotient cut to a whole number is right or one too much, and
// the remainder of either is exact. By 0 it is x. Anything else - NaN, infinities, wider quotients - is not covered.
BIFUN_FMA_INLINE double narrow_mod(double x, double y) {
    const double quotient = std::trunc(x / y);
    const double rest = __builtin_fma(-quotient, y, x);
    const double remainder = rest < 0.0 ? rest + y : rest;
    const bool covered = (quotient < 0x1p53) & (remainder >= 0.0) & (remainder < y);  // no branch
    const double computed = covered ? remainder : std::numeric_limits<double>::quiet_NaN();
    return y == 0.0 ? x : computed;
}

// Leaves NaN where it does not cover. Answers whether it did so anywhere.
BIFUN_FMA bool narrow_mod_values(double* out, uint32_t n, const double* x, const double* y) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    uint64_t left = 0;  // its highest bit is set by the bits of a NaN, the only ones above those of an infinity
    for (uint32_t i = 0; i < n; ++i) {
        const double value = narrow_mod(std::fabs(x[i]), std::fabs(y[i]));
        left |= __builtin_bit_cast(uint64_t, kInfinity) - __builtin_bit_cast(uint64_t, value);
        out[i] = std::copysign(value, x[i]);
    }
    return left >> 63 != 0;
}

constexpr uint64_t kNarrow = uint64_t{1} << 51;  // numbers that the rounding constant takes up and gives back

BIFUN_FMA_INLINE double narrow_to_double(int64_t x) {
    return __builtin_bit_cast(double, x + __builtin_bit_cast(int64_t, kRounding)) - kRounding;
}

// x mod y for numbers from -2^51 to 2^51 - 1: through doubles, in which the quotient is right or one too much. By 0 it is x.
BIFUN_FMA_INLINE int64_t narrow_mod(int64_t x, int64_t y) {
    const double dividend = std::fabs(narrow_to_double(x));
    const double divisor = std::fabs(narrow_to_double(y));
    const double rest = __builtin_fma(-std::trunc(dividend / divisor), divisor, dividend);
    const double positive = rest < 0.0 ? rest + divisor : rest;
    const double remainder = divisor == 0.0 ? dividend : positive;
    const int64_t magnitude = __builtin_bit_cast(int64_t, remainder + kRounding) - __builtin_bit_cast(int64_t, kRounding);
    const int64_t sign = x < 0 ? -1 : 0;
    return (magnitude ^ sign) - sign;
}

// Whether all pairs are narrow. Wide ones are rarely alone, so the first few rows tell most often.
BIFUN_FMA bool all_narrow(uint32_t n, const int64_t* x, const int64_t* y) {
    constexpr uint32_t kRows = 64;
    for (uint32_t begin = 0; begin < n; begin += kRows) {
        const uint32_t end = std::min(n, begin + kRows);
        uint64_t wide = 0;
        for (uint32_t i = begin; i < end; ++i) {
            wide |= (static_cast<uint64_t>(x[i]) + kNarrow) | (static_cast<uint64_t>(y[i]) + kNarrow);
        }
        if (wide >= 2 * kNarrow) return false;
    }
    return true;
}

BIFUN_FMA void narrow_mod_values(int64_t* out, uint32_t n, const int64_t* x, const int64_t* y) {
    for (uint32_t i = 0; i < n; ++i) out[i] = narrow_mod(x[i], y[i]);
}

#endif

}  // namespace

void mod_values(double* out, uint32_t n, const double* x, const double* y) {
#if defined(__x86_64__)
    if (has_fma()) {
        if (!narrow_mod_values(out, n, x, y)) return;
        for (uint32_t i = 0; i < n; ++i) {
            if (std::isnan(out[i])) out[i] = mod_of(x[i], y[i]);
        }
        return;
    }
#endif
    for (uint32_t i = 0; i < n; ++i) out[i] = mod_of(x[i], y[i]);
}

void mod_values(int64_t* out, uint32_t n, const int64_t* x, const int64_t* y) {
#if defined(__x86_64__)
    if (has_fma() && all_narrow(n, x, y)) return narrow_mod_values(out, n, x, y);
#endif
    for (uint32_t i = 0; i < n; ++i) out[i] = mod_of(x[i], y[i]);
}

}  // namespace bifun
