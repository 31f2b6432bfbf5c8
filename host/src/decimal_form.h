/*
 * The way between a decimal record and the numbers that the arithmetic works on.
 *
 * A record's pairs stand in base 100 around the decimal point: pair i has the weight 100^(int_pairs - 1 - i), where int_pairs
 * is lead - 192. int_pairs of a canonical value lies in -64..63: the first pair of 1E-130 has the weight 100^-65, that of
 * 9.99E125 the weight 100^62.
 *
 * Reading accepts any 30 bytes. Writing is done in one place, store_pairs, which holds all rules of the form: rounding to 22
 * pairs, range, scale, count of digits.
 */
#ifndef QZHOST_SRC_DECIMAL_FORM_H
#define QZHOST_SRC_DECIMAL_FORM_H

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "qzhost/decimal.h"

namespace qzhost {

inline constexpr uint32_t kMaxPairs = XDEC_MAX_PAIRS;
inline constexpr int32_t kLeadBias = 192;
inline constexpr int32_t kMaxIntPairs = 63;
inline constexpr int32_t kMinIntPairs = -64;
inline constexpr int32_t kExponentBias = 193;  // exponent is that of the first pair itself: lead - 193

// Reads a sign byte: -1, 0 or 1. What is no sign reads as zero.
inline int32_t sign_of(const xdec& x) { return (x.sign == XDEC_SIGN_POSITIVE) - (x.sign == XDEC_SIGN_NEGATIVE); }

// The pairs of a record, 0 to 99 each, without leading and trailing zero pairs. No pairs: the value is zero.
struct Pairs {
    bool negative;
    uint32_t scale;
    int32_t int_pairs;  // -213..63 for hostile bytes, else -64..63
    uint32_t count;     // 0..22
    uint8_t pair[kMaxPairs];
};

inline Pairs load_pairs(const xdec& x) {
    Pairs p{};
    const int32_t sign = sign_of(x);
    if (sign == 0) return p;
    uint32_t first = 0;
    while (first < kMaxPairs && x.pairs[first] <= 1) ++first;
    uint32_t end = kMaxPairs;
    while (end > first && x.pairs[end - 1] <= 1) --end;
    p.negative = sign < 0;
    p.scale = x.scale;
    p.int_pairs = int32_t{x.lead} - kLeadBias - static_cast<int32_t>(first);
    p.count = end - first;
    for (uint32_t i = 0; i < p.count; ++i) {
        const uint32_t byte = x.pairs[first + i];
        p.pair[i] = static_cast<uint8_t>(std::min<uint32_t>(byte - (byte != 0), 99));
    }
    return p;
}

// Writes 0.pair[0] pair[1] ... times 100^int_pairs in canonical form; zero pairs may lead and trail. Pairs behind the 22nd
// significant one round it, ties away from zero. pair may lie in the destination. 0 or EC_DATA_OVERFLOW.
int32_t store_pairs(xdec* destination, bool negative, uint32_t scale, int32_t int_pairs, const uint8_t* pair, uint32_t count);

// ---- Limbs: four pairs each, 0 to 99999999 ---------------------------------------------------------------------------------

inline constexpr uint32_t kLimbPairs = 4;
inline constexpr uint64_t kLimbBase = 100000000;
inline constexpr uint32_t kMaxLimbs = 6;  // of a record's pairs: 24, the last two of which are 0

inline uint32_t limb_of(const uint8_t* pair) { return ((uint32_t{pair[0]} * 100 + pair[1]) * 100 + pair[2]) * 100 + pair[3]; }

inline void limb_to_pairs(uint32_t limb, uint8_t* pair) {
    for (uint32_t i = kLimbPairs; i-- > 0; limb /= 100) pair[i] = static_cast<uint8_t>(limb % 100);
}

}  // namespace qzhost

#endif
