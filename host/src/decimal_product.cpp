// Products, quotients and binary forms of decimals, in limbs of base 10^8.

#include "host/src/decimal_form.h"
#include "host/src/decimal_lanes.h"

namespace qzhost {
namespace {

using Limbs = uint32_t[kMaxLimbs];  // most significant first

// The pairs left-aligned: limb 0 begins with the first pair, so it is at least 10^6. Answers the count without zeros behind.
uint32_t left_limbs(const Pairs& p, Limbs limb) {
    uint8_t pair[kMaxLimbs * kLimbPairs] = {0};
    std::memcpy(pair, p.pair, kMaxPairs);
    for (uint32_t i = 0; i < kMaxLimbs; ++i) limb[i] = limb_of(pair + i * kLimbPairs);
    return (p.count + kLimbPairs - 1) / kLimbPairs;
}

template <uint32_t N>
int32_t store_limbs(xdec* destination, bool negative, uint32_t scale, int32_t int_pairs, const uint32_t (&limb)[N]) {
    uint8_t pair[N * kLimbPairs];
    for (uint32_t i = 0; i < N; ++i) limb_to_pairs(limb[i], pair + i * kLimbPairs);
    return store_pairs(destination, negative, scale, int_pairs, pair, N * kLimbPairs);
}

// ---- Products ---------------------------------------------------------------------------------------------------------------

// The general path; out of line, so that the common one needs no stack.
[[gnu::noinline]] int32_t multiply_limbs(const xdec* x, const xdec* y, xdec* destination) {
    const Pairs a = load_pairs(*x);
    const Pairs b = load_pairs(*y);
    Limbs a_limb;
    Limbs b_limb;
    const uint32_t a_count = left_limbs(a, a_limb);
    const uint32_t b_count = left_limbs(b, b_limb);
    uint64_t column[2 * kMaxLimbs] = {0};  // each below 6 * 10^16 and a carry
    for (uint32_t i = 0; i < a_count; ++i) {
        for (uint32_t k = 0; k < b_count; ++k) column[i + k + 1] += uint64_t{a_limb[i]} * b_limb[k];
    }
    uint32_t product[2 * kMaxLimbs];
    uint64_t carry = 0;
    for (uint32_t i = 2 * kMaxLimbs; i-- > 0;) {
        const uint64_t sum = column[i] + carry;
        product[i] = static_cast<uint32_t>(sum % kLimbBase);
        carry = sum / kLimbBase;
    }
    return store_limbs(destination, a.negative != b.negative, a.scale + b.scale, a.int_pairs + b.int_pairs, product);
}

// ---- Quotients --------------------------------------------------------------------------------------------------------------

constexpr uint32_t kQuotientLimbs = kMaxLimbs + 1;
constexpr uint32_t kDividendLimbs = 2 * kMaxLimbs + 1;

// Both divisions: dividend holds 7 + n limbs, the first of which is 0, divisor n limbs; quotient receives 7.

void divide_by_limb(const uint32_t* dividend, uint32_t divisor, uint32_t* quotient) {
    uint64_t rest = 0;
    for (uint32_t i = 0; i < kQuotientLimbs; ++i) {
        const uint64_t part = rest * kLimbBase + dividend[i + 1];  // below divisor * 10^8
        quotient[i] = static_cast<uint32_t>(part / divisor);
        rest = part % divisor;
    }
}

// Multiplies by a factor below the base, in place.
void scale_limbs(uint32_t* limb, uint32_t count, uint64_t factor) {
    uint64_t carry = 0;  // 0 at the end: the first limb has room
    for (uint32_t i = count; i-- > 0;) {
        const uint64_t part = limb[i] * factor + carry;
        limb[i] = static_cast<uint32_t>(part % kLimbBase);
        carry = part / kLimbBase;
    }
}

// Takes factor times the divisor off rest[0..n], which is less than factor + 1 times it. False: it was less than factor times.
bool subtract_multiple(uint32_t* rest, const uint32_t* divisor, uint32_t n, uint64_t factor) {
    uint64_t carry = 0;
    for (uint32_t k = n; k-- > 0;) {
        const uint64_t product = factor * divisor[k] + carry;  // below 10^16
        const auto digit = static_cast<uint32_t>(product % kLimbBase);
        const bool borrow = rest[k + 1] < digit;
        rest[k + 1] = static_cast<uint32_t>(rest[k + 1] + borrow * kLimbBase - digit);
        carry = product / kLimbBase + borrow;
    }
    const bool enough = rest[0] >= carry;
    rest[0] = 0;
    return enough;
}

void add_back(uint32_t* rest, const uint32_t* divisor, uint32_t n) {
    uint32_t carry = 0;
    for (uint32_t k = n; k-- > 0;) {
        const uint32_t sum = rest[k + 1] + divisor[k] + carry;
        carry = sum >= kLimbBase;
        rest[k + 1] = sum - carry * static_cast<uint32_t>(kLimbBase);
    }
}

// Long division. Both sides are scaled so that the divisor's first limb is at least half the base: a quotient limb estimated
// from two limbs is then at most 2 too large, and the look at a third one leaves it at most 1 too large.
void divide_by_limbs(uint32_t* dividend, uint32_t* divisor, uint32_t n, uint32_t* quotient) {
    const uint64_t factor = kLimbBase / (divisor[0] + 1);
    scale_limbs(divisor, n, factor);
    scale_limbs(dividend, kQuotientLimbs + n, factor);
    for (uint32_t i = 0; i < kQuotientLimbs; ++i) {
        uint32_t* rest = dividend + i;
        const uint64_t head = rest[0] * kLimbBase + rest[1];
        uint64_t estimate = std::min(head / divisor[0], kLimbBase - 1);
        uint64_t left = head - estimate * divisor[0];
        while (left < kLimbBase && estimate * divisor[1] > left * kLimbBase + rest[2]) {
            --estimate;
            left += divisor[0];
        }
        if (!subtract_multiple(rest, divisor, n, estimate)) {
            --estimate;
            add_back(rest, divisor, n);
        }
        quotient[i] = static_cast<uint32_t>(estimate);
    }
}

// ---- Binary words -----------------------------------------------------------------------------------------------------------

constexpr int32_t kBinaryPairs = 25;  // 100^24 < 2^160 < 100^25

// The integer pairs, right-aligned, as limbs; int_pairs lies in 1..25.
void integer_limbs(const Pairs& p, uint32_t (&limb)[kQuotientLimbs]) {
    uint8_t pair[kQuotientLimbs * kLimbPairs] = {0};
    const auto int_pairs = static_cast<uint32_t>(p.int_pairs);
    std::memcpy(pair + sizeof pair - int_pairs, p.pair, std::min(p.count, int_pairs));
    for (uint32_t i = 0; i < kQuotientLimbs; ++i) limb[i] = limb_of(pair + i * kLimbPairs);
}

// ---- In one register --------------------------------------------------------------------------------------------------------

namespace in_lanes {

#if QZHOST_DECIMAL_LANES

using namespace lanes;
using Wide = unsigned __int128;

// Quotient and remainder by 10^16 of a number below 10^16 * 2^64. With the divisor shifted to the top of 64 bits, a product
// with its reciprocal estimates the quotient to within 1 (Moeller and Granlund).
uint64_t divide_by_ten_to_16(Wide number, uint64_t* remainder) {
    constexpr int kShift = std::countl_zero(kTenTo16);
    constexpr uint64_t kDivisor = kTenTo16 << kShift;
    constexpr auto kReciprocal = static_cast<uint64_t>(~Wide{0} / kDivisor);  // without its top bit, 2^64
    const Wide shifted = number << kShift;
    const Wide estimate = Wide{kReciprocal} * static_cast<uint64_t>(shifted >> 64) + shifted;
    uint64_t quotient = static_cast<uint64_t>(estimate >> 64) + 1;
    uint64_t rest = static_cast<uint64_t>(shifted) - quotient * kDivisor;
    if (rest > static_cast<uint64_t>(estimate)) {
        --quotient;
        rest += kDivisor;
    }
    if (rest >= kDivisor) [[unlikely]] {
        ++quotient;
        rest -= kDivisor;
    }
    *remainder = rest >> kShift;
    return quotient;
}

bool multiply(const xdec* x, const xdec* y, xdec* destination) {
    const Record a = load_record(x);
    const Record b = load_record(y);
    const uint32_t scale = a.scale() + b.scale();
    uint64_t a_value, b_value;
    if (!coefficient(a, &a_value) || !coefficient(b, &b_value) || scale > XDEC_MAX_KEPT_SCALE) {
        return false;
    }
    const Wide product = Wide{a_value} * b_value;
    if (product >> 64 >= kTenTo16) return false;
    uint64_t lowest;
    const uint64_t upper = divide_by_ten_to_16(product, &lowest);
    const uint64_t highest = upper / kTenTo16;  // at most 1844
    const Lanes lanes = lanes_of_limbs(four_limbs(two_limbs(upper - highest * kTenTo16), two_limbs(lowest)));
    const int32_t int_pairs = a.int_pairs() - a.count() + b.int_pairs() - b.count() + kLanes;
    const bool negative = a.is_negative() != b.is_negative();
    if (highest == 0) return store_lanes(destination, negative, scale, int_pairs, lanes);
    const WideLanes wide = {lanes_of_limbs(four_limbs(0, two_limbs(highest))), lanes};
    return store_wide_lanes(destination, negative, scale, int_pairs + kLanes, wide);
}

#else

bool multiply(const xdec*, const xdec*, xdec*) { return false; }

#endif

}  // namespace in_lanes

}  // namespace
}  // namespace qzhost

using namespace qzhost;

extern "C" {

int32_t xdec_mul(const xdec* x, const xdec* y, xdec* destination) {
    return in_lanes::multiply(x, y, destination) ? 0 : multiply_limbs(x, y, destination);
}

int32_t xdec_div(const xdec* x, const xdec* y, xdec* destination) {
    const Pairs a = load_pairs(*x);
    const Pairs b = load_pairs(*y);
    if (b.count == 0) {
        xdec_fill_zero(destination);
        return EC_INVALID_ARGUMENT;
    }
    // Both as integers of six limbs, A and D, between 100^23 and 100^24, and D without the zero limbs at its end. The quotient
    // of A times base^6 and D lies between 100^23 and 100^25: at least 24 pairs, of which 22 are kept.
    Limbs dividend_head;
    Limbs divisor;
    left_limbs(a, dividend_head);
    const uint32_t n = left_limbs(b, divisor);
    uint32_t dividend[kDividendLimbs] = {0};
    std::memcpy(dividend + 1, dividend_head, sizeof dividend_head);
    uint32_t quotient[kQuotientLimbs];
    if (n == 1) {
        divide_by_limb(dividend, divisor[0], quotient);
    } else {
        divide_by_limbs(dividend, divisor, n, quotient);
    }
    return store_limbs(destination, a.negative != b.negative, 0, a.int_pairs - b.int_pairs + 4, quotient);
}

void xdec_div_get_quotient_int_by_16(const xdec* x, xdec* quotient, uint32_t* remainder) {
    const Pairs p = load_pairs(*x);
    // The integer pairs, up to 63, of which those behind the 22nd are 0.
    uint8_t pair[kMaxIntPairs] = {0};
    uint32_t rest = 0;
    const uint32_t count = p.count == 0 || p.int_pairs < 0 ? 0 : static_cast<uint32_t>(p.int_pairs);
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t part = rest * 100 + (i < p.count ? p.pair[i] : 0);
        pair[i] = static_cast<uint8_t>(part / 16);
        rest = part % 16;
    }
    // Cut, not rounded: the pairs behind the 22nd significant one are not shown to the store.
    const uint32_t kept = std::min(count, kMaxPairs + (pair[0] == 0));
    (void)store_pairs(quotient, p.negative, 0, p.int_pairs, pair, kept);
    *remainder = rest;
}

int32_t xdec_get_binary(const xdec* x, uint32_t words[XDEC_BINARY_WORDS]) {
    const Pairs p = load_pairs(*x);
    uint64_t word[XDEC_BINARY_WORDS] = {0};  // 32 bits each
    uint64_t over = p.count > 0 && p.int_pairs > kBinaryPairs;
    if (p.count > 0 && p.int_pairs > 0 && over == 0) {
        uint32_t limb[kQuotientLimbs];
        integer_limbs(p, limb);
        for (const uint32_t part : limb) {
            uint64_t carry = part;
            for (uint64_t& w : word) {
                carry += w * kLimbBase;
                w = static_cast<uint32_t>(carry);
                carry >>= 32;
            }
            over |= carry;
        }
    }
    for (uint32_t i = 0; i < XDEC_BINARY_WORDS; ++i) words[i] = over != 0 ? 0 : static_cast<uint32_t>(word[i]);
    return over != 0 ? EC_DATA_OVERFLOW : 0;
}

int32_t xdec_from_binary(xdec* destination, int32_t negative, const uint32_t words[XDEC_BINARY_WORDS]) {
    uint32_t word[XDEC_BINARY_WORDS];
    std::memcpy(word, words, sizeof word);
    uint32_t limb[kQuotientLimbs];  // 10^56 > 2^160
    for (uint32_t i = kQuotientLimbs; i-- > 0;) {
        uint64_t rest = 0;
        for (uint32_t k = XDEC_BINARY_WORDS; k-- > 0;) {
            rest = rest << 32 | word[k];
            word[k] = static_cast<uint32_t>(rest / kLimbBase);
            rest %= kLimbBase;
        }
        limb[i] = static_cast<uint32_t>(rest);
    }
    return store_limbs(destination, negative != 0, 0, static_cast<int32_t>(kQuotientLimbs * kLimbPairs), limb);
}

}  // extern "C"
