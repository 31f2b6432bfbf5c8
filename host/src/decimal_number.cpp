// Decimals from and to binary integers and doubles.

#include <bit>
#include <charconv>
#include <cmath>
#include <limits>

#include "host/src/decimal_form.h"
#include "host/src/decimal_lanes.h"
#include "host/src/shortest_decimal.h"

namespace qzhost {
namespace {

constexpr int32_t kMaxUint64Pairs = 10;  // 100^9 < 2^64 < 100^10

// Of a double's bits.
constexpr uint64_t kMantissaMask = (uint64_t{1} << kDoubleMantissaBits) - 1;
constexpr int32_t kExponentMask = 0x7FF;
constexpr int32_t kSmallestExponent = 1023 - 440;  // 2^-440 is about 3.5E-133

using Wide = unsigned __int128;

ShortestDecimal without_trailing_zeros(ShortestDecimal decimal) {
    constexpr uint64_t kPowers[] = {100000000, 10000, 100, 10};
    int zeros = 8;
    for (const uint64_t power : kPowers) {
        const uint64_t quotient = decimal.digits / power;
        if (quotient * power == decimal.digits) decimal = {quotient, decimal.exponent + zeros};
        zeros /= 2;
    }
    return decimal;
}

// magnitude times 10 to the power of exponent, which lies in -400..400, in any machine and any range.
[[gnu::noinline]] int32_t store_any(xdec* destination, bool negative, uint64_t magnitude, int32_t exponent, uint32_t scale) {
    const bool odd = exponent % 2 != 0;
    Wide coefficient = magnitude;
    if (odd) {
        coefficient *= 10;
        --exponent;
    }
    uint8_t pair[kMaxUint64Pairs + 1];  // 10 * 2^64 < 100^11
    for (uint32_t i = sizeof pair; i-- > 0; coefficient /= 100) pair[i] = static_cast<uint8_t>(coefficient % 100);
    return store_pairs(destination, negative, scale, exponent / 2 + static_cast<int32_t>(sizeof pair), pair, sizeof pair);
}

int32_t store_coefficient(xdec* destination, bool negative, uint64_t magnitude, int32_t exponent, uint32_t scale) {
#if QZHOST_DECIMAL_LANES
    if (lanes::store_uint64(destination, negative, magnitude, exponent, scale)) [[likely]]
        return 0;
#endif
    return store_any(destination, negative, magnitude, exponent, scale);
}

uint64_t magnitude_of(int64_t value) { return value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value); }

int32_t store_int64(xdec* destination, int64_t value, int32_t exponent, uint32_t scale) {
    return store_coefficient(destination, value < 0, magnitude_of(value), exponent, scale);
}

#if QZHOST_DECIMAL_LANES

// The magnitude of the integer part. False: it needs more than 64 bits.
bool integer_part(const xdec* x, uint64_t* magnitude) {
    constexpr uint64_t kMaxUpper = 1844;  // times 10^16 is below 2^64
    const lanes::Record r = lanes::load_record(x);
    *magnitude = 0;
    if (r.is_zero() || r.int_pairs() <= 0) return true;
    if (r.int_pairs() > kMaxUint64Pairs) return false;
    // With the units in the last lane, the fraction falls out.
    const __m128i limbs = lanes::limbs_of_lanes(lanes::moved(lanes::to_lanes(r.pairs), lanes::kLanes - r.int_pairs()));
    const auto upper = static_cast<uint64_t>(_mm_cvtsi128_si64(limbs)) >> 32;  // limb 1; limb 0 is 0
    const auto lower = static_cast<uint64_t>(_mm_extract_epi64(limbs, 1));
    return upper <= kMaxUpper && !__builtin_add_overflow(upper * lanes::kTenTo16,
                                                         static_cast<uint32_t>(lower) * kLimbBase + (lower >> 32), magnitude);
}

#else

bool integer_part(const xdec* x, uint64_t* magnitude) {
    const Pairs p = load_pairs(*x);
    *magnitude = 0;
    if (p.count == 0 || p.int_pairs <= 0) return true;
    if (p.int_pairs > kMaxUint64Pairs) return false;
    Wide whole = 0;  // below 100^10
    for (uint32_t i = 0; i < static_cast<uint32_t>(p.int_pairs); ++i) whole = whole * 100 + (i < p.count ? p.pair[i] : 0);
    if (whole > std::numeric_limits<uint64_t>::max()) return false;
    *magnitude = static_cast<uint64_t>(whole);
    return true;
}

#endif

#if QZHOST_DECIMAL_LANES
constexpr int32_t kMaxExactPower = 22;
constexpr double kExactPowers[kMaxExactPower + 1] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                                     1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
#endif

double rounded_double(const Pairs& p) {
    if (p.count == 0) return 0.0;
    char text[1 + XDEC_MAX_DIGITS + 8];
    char* end = text;
    if (p.negative) *end++ = '-';
    for (uint32_t i = 0; i < p.count; ++i) {
        *end++ = static_cast<char>('0' + p.pair[i] / 10);
        *end++ = static_cast<char>('0' + p.pair[i] % 10);
    }
    *end++ = 'e';
    end = std::to_chars(end, text + sizeof text, 2 * (p.int_pairs - static_cast<int32_t>(p.count))).ptr;
    double value = 0.0;
    std::from_chars(text, end, value);  // stays 0 where hostile bytes name an exponent below the double's
    return value;
}

}  // namespace
}  // namespace qzhost

using namespace qzhost;

extern "C" {

int32_t xdec_from_int64(xdec* destination, int64_t value, uint32_t scale) {
    if (scale == XDEC_SCALE_NONE) scale = 0;
    if (scale > XDEC_MAX_KEPT_SCALE) {
        xdec_fill_zero(destination);
        return EC_INVALID_ARGUMENT;
    }
    return store_int64(destination, value, 0, scale);
}

int32_t xdec_from_ulint64(xdec* destination, uint64_t value) { return store_coefficient(destination, false, value, 0, 0); }

int32_t xdec_from_unscaled(xdec* destination, int64_t value, uint32_t scale) {
    if (scale > XDEC_MAX_KEPT_SCALE) {
        xdec_fill_zero(destination);
        return EC_INVALID_ARGUMENT;
    }
    return store_int64(destination, value, -static_cast<int32_t>(scale), scale);
}

// In two passes over a few rows: digits and what is made of them would wait for each other.
void host_decimals_of_unscaled(xdec* out, uint32_t n, const int64_t* values, const uint32_t* scales) {
    uint32_t done = 0;
#if QZHOST_DECIMAL_LANES
    constexpr uint32_t kBlock = 64;
    lanes::Lanes digits[kBlock];
    for (; done < n; done += std::min(kBlock, n - done)) {
        const uint32_t rows = std::min(kBlock, n - done);
        const int64_t* const value = values + done;
        const uint32_t* const scale = scales + done;
        uint64_t others = 0;
        for (uint32_t i = 0; i < rows; ++i) {
            const uint64_t magnitude = magnitude_of(value[i]);
            const uint64_t odd = scale[i] & 1;
            digits[i] = lanes::lanes_of_uint64(magnitude * (1 + 9 * odd));
            others |= (magnitude > lanes::kMaxShifted ? odd : 0) | (scale[i] > XDEC_MAX_KEPT_SCALE ? 1 : 0);
        }
        if (others != 0) break;
        for (uint32_t i = 0; i < rows; ++i) {
            const int32_t int_pairs = lanes::kLanes - static_cast<int32_t>(scale[i] + 1) / 2;
            (void)lanes::store_lanes(out + done + i, value[i] < 0, scale[i], int_pairs, digits[i]);  // always in range
        }
    }
#endif
    for (; done < n; ++done) (void)xdec_from_unscaled(out + done, values[done], scales[done]);
}

int32_t xdec_from_double(double value, xdec* destination) {
    const uint64_t bits = std::bit_cast<uint64_t>(value);
    const uint64_t mantissa = bits & kMantissaMask;
    const auto exponent = static_cast<int32_t>(bits >> kDoubleMantissaBits & kExponentMask);
    if (exponent == kExponentMask) [[unlikely]] {
        xdec_fill_zero(destination);
        return EC_DATA_OVERFLOW;
    }
    if (exponent < kSmallestExponent) [[unlikely]] {  // 0, or far below half of the smallest decimal
        xdec_fill_zero(destination);
        return 0;
    }
    ShortestDecimal shortest = shortest_decimal(mantissa, exponent);
#if QZHOST_DECIMAL_LANES
    if (lanes::store_digits(destination, std::signbit(value), shortest.digits, shortest.exponent)) [[likely]]
        return 0;
#endif
    shortest = without_trailing_zeros(shortest);
    return store_any(destination, std::signbit(value), shortest.digits, shortest.exponent,
                     static_cast<uint32_t>(std::max(0, -shortest.exponent)));
}

double xdec_get_double(const xdec* x, int32_t* code, int32_t flag) {
    (void)flag;
    if (code != nullptr) *code = 0;
#if QZHOST_DECIMAL_LANES
    // An integer below 2^53 and a power of ten up to 10^22 are doubles, and one operation on them rounds correctly.
    const lanes::Record r = lanes::load_record(x);
    const int32_t exponent = 2 * (r.int_pairs() - r.count());
    uint64_t digits;
    if (exponent >= -kMaxExactPower && exponent <= kMaxExactPower && lanes::coefficient(r, &digits) &&
        digits <= kMantissaMask) {
        const auto whole = static_cast<double>(static_cast<int64_t>(digits));
        const double magnitude = exponent < 0 ? whole / kExactPowers[-exponent] : whole * kExactPowers[exponent];
        return r.is_negative() ? -magnitude : magnitude;
    }
#endif
    return rounded_double(load_pairs(*x));
}

int32_t xdec_get_int64(const xdec* x, int64_t* value) {
    constexpr uint64_t kMax = std::numeric_limits<int64_t>::max();
    const bool negative = x->sign == XDEC_SIGN_NEGATIVE;
    uint64_t magnitude = 0;
    *value = 0;
    if (!integer_part(x, &magnitude) || magnitude > kMax + negative) return EC_DATA_OVERFLOW;
    *value = static_cast<int64_t>(negative ? 0 - magnitude : magnitude);
    return 0;
}

int32_t xdec_get_ulint64(const xdec* x, uint64_t* value) {
    if (integer_part(x, value) && (x->sign != XDEC_SIGN_NEGATIVE || *value == 0)) return 0;
    *value = 0;
    return EC_DATA_OVERFLOW;
}

int32_t xdec_in_ulint64(const xdec* x) {
    uint64_t value;
    return xdec_get_ulint64(x, &value) == 0;
}

}  // extern "C"
