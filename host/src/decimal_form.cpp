#include "host/src/decimal_form.h"

namespace qzhost {

namespace {

// Digits behind the point that the pairs need.
uint32_t needed_scale(int32_t int_pairs, uint32_t count, uint8_t last_pair) {
    const int32_t fraction_pairs = static_cast<int32_t>(count) - int_pairs;  // at most 22 + 64
    if (fraction_pairs <= 0) return 0;
    return 2 * static_cast<uint32_t>(fraction_pairs) - (last_pair % 10 == 0);
}

}  // namespace

int32_t store_pairs(xdec* destination, bool negative, uint32_t scale, int32_t int_pairs, const uint8_t* pair, uint32_t count) {
    uint32_t first = 0;
    while (first < count && pair[first] == 0) ++first;
    pair += first;
    count -= first;
    int_pairs -= static_cast<int32_t>(first);

    uint8_t kept[kMaxPairs + 1] = {0};  // kept[0] takes the carry out of the first pair
    const uint32_t kept_count = std::min(count, kMaxPairs);
    if (kept_count > 0) std::memcpy(kept + 1, pair, kept_count);
    bool carry = count > kMaxPairs && pair[kMaxPairs] >= 50;
    for (uint32_t i = kept_count; carry; --i) {
        carry = kept[i] == 99;
        kept[i] = carry ? 0 : static_cast<uint8_t>(kept[i] + 1);
    }
    const uint8_t* digit = kept + 1;
    uint32_t n = kept_count;
    if (kept[0] != 0) {
        digit = kept;
        n = 1;  // the carry ran through pairs of 99, which are 0 now
        ++int_pairs;
    }
    while (n > 0 && digit[n - 1] == 0) --n;

    const uint8_t smallest = 1;
    if (n > 0 && int_pairs < kMinIntPairs) {
        const bool at_least_half = int_pairs == kMinIntPairs - 1 && digit[0] >= 50;  // of 1E-130
        digit = &smallest;
        n = at_least_half;
        int_pairs = kMinIntPairs;
    }
    if (n == 0) {
        xdec_fill_zero(destination);
        return 0;
    }
    if (int_pairs > kMaxIntPairs) {
        xdec_fill_zero(destination);
        return EC_DATA_OVERFLOW;
    }

    const uint32_t shown = std::max(needed_scale(int_pairs, n, digit[n - 1]), std::min<uint32_t>(scale, XDEC_MAX_KEPT_SCALE));
    const uint32_t int_digits = int_pairs > 0 ? 2 * static_cast<uint32_t>(int_pairs) - (digit[0] < 10) : 0;  // at most 126
    xdec out{};
    out.sign = negative ? XDEC_SIGN_NEGATIVE : XDEC_SIGN_POSITIVE;
    out.digits = static_cast<uint8_t>(int_digits + shown);
    out.scale = static_cast<uint8_t>(shown);
    out.exponent = static_cast<int16_t>(int_pairs - 1);
    out.length = static_cast<uint8_t>(n + 1);
    out.lead = static_cast<uint8_t>(int_pairs + kLeadBias);
    for (uint32_t i = 0; i < n; ++i) out.pairs[i] = static_cast<uint8_t>(digit[i] + 1);
    *destination = out;
    return 0;
}

}  // namespace qzhost
