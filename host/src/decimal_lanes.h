// Sixteen pairs at once: the lanes of one vector register.
//
// Lane 0 is the most significant, as in a record. The weight of a number in lanes is told by int_pairs: lane j has the weight
// 100^(int_pairs - 1 - j). Two numbers are brought to one weight by a byte shuffle, which shifts the one with fewer integer
// pairs, and results to their canonical place by another. What needs more lanes than there are takes the general path of
// decimal_form.h, which is also the only one on machines without these instructions.
//
// Records are moved in parts, bytes 0..7, 8..23, 24..27 and 28..29, by xdec_copy as well: a load of a part that was stored as
// one does not wait until the store reaches the cache.
#ifndef QZHOST_SRC_DECIMAL_LANES_H
#define QZHOST_SRC_DECIMAL_LANES_H

#if defined(__SSE4_1__)
#define QZHOST_DECIMAL_LANES 1

#include <smmintrin.h>

#include <bit>
#include <cstdint>

#include "host/src/decimal_digits.h"
#include "host/src/decimal_form.h"

namespace qzhost::lanes {

static_assert(XDEC_SIGN_NEGATIVE == 255 - XDEC_SIGN_POSITIVE && XDEC_SIGN_POSITIVE >= 128);

using Lanes = __m128i;

inline constexpr int32_t kLanes = 16;

inline Lanes spread(int32_t value) { return _mm_set1_epi8(static_cast<char>(value)); }
inline Lanes lane_numbers() { return _mm_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15); }
inline uint32_t mask_of(Lanes lanes) { return static_cast<uint32_t>(_mm_movemask_epi8(lanes)); }
inline Lanes load(const void* at) { return _mm_loadu_si128(static_cast<const __m128i*>(at)); }
inline void store(void* at, Lanes lanes) { _mm_storeu_si128(static_cast<__m128i*>(at), lanes); }

// Lane j becomes lane index[j] of 32 lanes in two registers; an index below 0 or above 31 gives 0.
inline Lanes pick(Lanes low, Lanes high, Lanes index) {
    const Lanes from_low = _mm_shuffle_epi8(low, _mm_adds_epu8(index, spread(0x70)));  // 16 and more set the top bit: 0
    const Lanes above = _mm_sub_epi8(index, spread(kLanes));
    return _mm_or_si128(from_low, _mm_shuffle_epi8(high, _mm_adds_epu8(above, spread(0x70))));
}

// Without a branch, where the choice follows no pattern; compilers make one of ?: at times.
inline uint64_t choose(bool first, uint64_t a, uint64_t b) { return b ^ ((a ^ b) & (0 - uint64_t{first})); }

// ---- Records ----------------------------------------------------------------------------------------------------------------

struct Record {
    uint64_t head;  // sign to lead
    Lanes pairs;    // the first sixteen pair bytes

    uint32_t sign() const { return static_cast<uint8_t>(head); }
    uint32_t scale() const { return static_cast<uint8_t>(head >> 16); }
    int32_t count() const { return static_cast<uint8_t>(head >> 48) - 1; }
    int32_t int_pairs() const { return static_cast<int32_t>(head >> 56) - kLeadBias; }
    bool is_negative() const { return sign() == XDEC_SIGN_NEGATIVE; }
    // The same of a number that is not zero, by its sign's top bit. Here and below, where one number follows another, there is
    // no comparison that becomes the lowest byte of a register: it would wait for what the register held for the number before.
    bool nonzero_is_negative() const { return ((~head >> 7) & 1) != 0; }
    // Signs come too irregularly to branch on; one is the other's complement.
    bool is_zero() const {
        const int32_t byte = static_cast<int8_t>(head);  // NOLINT(bugprone-signed-char-misuse): its sign is copied upwards
        return (byte ^ byte >> 7) != XDEC_SIGN_NEGATIVE;
    }
};

inline Record load_record(const xdec* x) {
    uint64_t head;
    std::memcpy(&head, x, sizeof head);
    return {head, load(x->pairs)};
}

// The last six pair bytes, and zeros.
inline Lanes load_more_pairs(const xdec* x) {
    uint32_t front;
    uint16_t back;
    std::memcpy(&front, x->pairs + kLanes, sizeof front);
    std::memcpy(&back, x->pairs + kLanes + sizeof front, sizeof back);
    return _mm_cvtsi64_si128(static_cast<int64_t>(front | uint64_t{back} << 32));
}

inline constexpr uint64_t kZeroHead = XDEC_SIGN_ZERO | 1 << 8 | uint64_t{1} << 48 | uint64_t{128} << 56;

// What the head takes from int_pairs and from whether the first pair has one digit: exponent, lead, and the integer digits.
struct HeadTable {
    uint64_t head[2 * (kMaxIntPairs - kMinIntPairs + 1)];
};

[[gnu::visibility("hidden")]] inline constexpr HeadTable kHeads = [] {
    HeadTable table{};
    for (int32_t int_pairs = kMinIntPairs; int_pairs <= kMaxIntPairs; ++int_pairs) {
        for (int32_t one_digit = 0; one_digit < 2; ++one_digit) {
            const auto int_digits = static_cast<uint64_t>(std::max(0, 2 * int_pairs - one_digit));
            table.head[2 * (int_pairs - kMinIntPairs) + one_digit] = int_digits << 8 |
                                                                     uint64_t{static_cast<uint16_t>(int_pairs - 1)} << 32 |
                                                                     static_cast<uint64_t>(int_pairs + kLeadBias) << 56;
        }
    }
    return table;
}();

// pairs: the pair bytes, of which the first counts.
inline uint64_t make_head(bool negative, uint32_t scale, int32_t int_pairs, int32_t count, Lanes pairs) {
    const uint32_t one_digit = (static_cast<uint32_t>(static_cast<uint8_t>(_mm_cvtsi128_si32(pairs))) - 11) >> 31;
    const uint64_t sign = negative ? XDEC_SIGN_NEGATIVE : XDEC_SIGN_POSITIVE;
    return kHeads.head[static_cast<uint32_t>(2 * (int_pairs - kMinIntPairs)) + one_digit] + sign +
           uint64_t{scale} * (1 << 8 | 1 << 16) + (static_cast<uint64_t>(count + 1) << 48);
}

// pairs: the pair bytes 0 to 15, more: 16 to 21 in its lowest lanes.
inline void store_record(xdec* destination, uint64_t head, Lanes pairs, Lanes more) {
    const auto back = static_cast<uint64_t>(_mm_cvtsi128_si64(more));
    const auto back_front = static_cast<uint32_t>(back);
    const auto back_back = static_cast<uint16_t>(back >> 32);
    std::memcpy(destination, &head, sizeof head);
    store(destination->pairs, pairs);
    std::memcpy(destination->pairs + kLanes, &back_front, sizeof back_front);
    std::memcpy(destination->pairs + kLanes + sizeof back_front, &back_back, sizeof back_back);
}

inline void store_zero(xdec* destination) { store_record(destination, kZeroHead, _mm_setzero_si128(), _mm_setzero_si128()); }

// ---- Tables to load from at an offset: a register of successive numbers or of a mask in one instruction ---------------------

struct SlidingTables {
    uint8_t up[96];    // -32, -31 ... 63
    uint8_t mask[64];  // 32 times 0xFF, then 0
};

inline constexpr int32_t kSlide = 32;

alignas(64) [[gnu::visibility("hidden")]] inline constexpr SlidingTables kSliding = [] {
    SlidingTables tables{};
    for (int32_t i = 0; i < 96; ++i) tables.up[i] = static_cast<uint8_t>(i - kSlide);
    for (int32_t i = 0; i < kSlide; ++i) tables.mask[i] = 0xFF;
    return tables;
}();

// first + j in lane j; first is -32..48.
inline Lanes counting_from(int32_t first) { return load(kSliding.up + kSlide + first); }
// 0xFF in the lanes below count, which is -16..32.
inline Lanes lanes_below(int32_t count) { return load(kSliding.mask + kSlide - count); }

// Lanes moved down by count, 0..32, or up when it is negative, -15..-1: zeros come in behind, and what comes in front is no
// value.
inline Lanes moved(Lanes lanes, int32_t count) { return _mm_shuffle_epi8(lanes, counting_from(-count)); }

// ---- Numbers in lanes -------------------------------------------------------------------------------------------------------

// Pair bytes to pairs.
inline Lanes to_lanes(Lanes pairs) {
    return _mm_min_epu8(_mm_subs_epu8(pairs, spread(1)), spread(99));  // a record that no service made may hold more
}

struct WideLanes {
    Lanes front;
    Lanes back;
};

// x + y, or x - y where subtract is all ones and x is not less than y. Lane 0 takes the carry. Carries go one lane at a time;
// that a lane passes one on is rare, since it must be 99 or, in a difference, 0.
[[gnu::always_inline]] inline Lanes add_lanes(Lanes x, Lanes y, Lanes subtract) {
    const Lanes hundred = spread(100);
    const Lanes unit = _mm_or_si128(subtract, spread(1));  // 1 or -1
    // In a difference each lane borrows 100 beforehand, and gives it back if it was not needed.
    const Lanes added = _mm_add_epi8(_mm_sub_epi8(_mm_xor_si128(y, subtract), subtract), _mm_and_si128(subtract, hundred));
    const Lanes sum = _mm_add_epi8(x, added);  // 0..199
    const Lanes less = _mm_sub_epi8(sum, hundred);
    const Lanes digits = _mm_min_epu8(sum, less);
    const Lanes carry = _mm_xor_si128(_mm_cmpeq_epi8(digits, less), subtract);
    Lanes result = _mm_add_epi8(digits, _mm_and_si128(_mm_srli_si128(carry, 1), unit));
    while (mask_of(_mm_adds_epu8(result, spread(28))) != 0) [[unlikely]] {  // a lane of 100 or -1
            const Lanes again = _mm_cmpeq_epi8(_mm_max_epu8(result, hundred), result);
            const Lanes base = _mm_sub_epi8(_mm_xor_si128(hundred, subtract), subtract);  // 100 or -100
            result = _mm_sub_epi8(result, _mm_and_si128(again, base));
            result = _mm_add_epi8(result, _mm_and_si128(_mm_srli_si128(again, 1), unit));
        }
    return result;
}

inline WideLanes add_wide_lanes(WideLanes x, WideLanes y, Lanes subtract) {
    const Lanes hundred = spread(100);
    const Lanes unit = _mm_or_si128(subtract, spread(1));
    const Lanes front = _mm_sub_epi8(_mm_xor_si128(y.front, subtract), subtract);
    const Lanes back = _mm_sub_epi8(_mm_xor_si128(y.back, subtract), subtract);
    const Lanes lent = _mm_and_si128(subtract, hundred);
    WideLanes result = {_mm_add_epi8(_mm_add_epi8(x.front, front), lent), _mm_add_epi8(_mm_add_epi8(x.back, back), lent)};
    // First as the sums stand, 0..199; then until no lane is 100 or -1.
    Lanes front_carry = _mm_cmpeq_epi8(_mm_max_epu8(result.front, hundred), result.front);
    Lanes back_carry = _mm_cmpeq_epi8(_mm_max_epu8(result.back, hundred), result.back);
    result.front = _mm_sub_epi8(result.front, _mm_and_si128(front_carry, hundred));
    result.back = _mm_sub_epi8(result.back, _mm_and_si128(back_carry, hundred));
    front_carry = _mm_xor_si128(front_carry, subtract);
    back_carry = _mm_xor_si128(back_carry, subtract);
    const Lanes base = _mm_sub_epi8(_mm_xor_si128(hundred, subtract), subtract);  // 100 or -100
    while (true) {
        const Lanes into_front = _mm_alignr_epi8(back_carry, front_carry, 1);
        const Lanes into_back = _mm_srli_si128(back_carry, 1);
        result.front = _mm_add_epi8(result.front, _mm_and_si128(into_front, unit));
        result.back = _mm_add_epi8(result.back, _mm_and_si128(into_back, unit));
        front_carry = _mm_cmpeq_epi8(_mm_max_epu8(result.front, hundred), result.front);
        back_carry = _mm_cmpeq_epi8(_mm_max_epu8(result.back, hundred), result.back);
        if (mask_of(_mm_or_si128(front_carry, back_carry)) == 0) return result;
        result.front = _mm_sub_epi8(result.front, _mm_and_si128(front_carry, base));
        result.back = _mm_sub_epi8(result.back, _mm_and_si128(back_carry, base));
    }
}

inline uint32_t nonzero_lanes(Lanes lanes) { return mask_of(_mm_add_epi8(lanes, spread(127))); }

// A number in lanes as a record has it: from its first pair that is not 0 to its last.
struct Trimmed {
    Lanes pairs;
    int32_t int_pairs;
    int32_t count;
    uint64_t all_if_zero;  // all ones then, else 0
    int32_t last;          // lane that it came from
};

[[gnu::always_inline]] inline Trimmed trim(int32_t int_pairs, Lanes lanes) {
    // Zeros come too irregularly to branch on them: without a lane that is not 0, first is 16 and count -15.
    const uint32_t used = nonzero_lanes(lanes);
    const int32_t first = std::countr_zero(used | 1U << kLanes);
    const int32_t last = highest_bit(used | 1);
    const int32_t count = last + 1 - first;
    // What comes round from in front of the first is 0 too. The mask's lanes are -1.
    const Lanes pairs = _mm_sub_epi8(moved(lanes, -first), lanes_below(count));
    return {pairs, int_pairs - first, count, 0 - ((uint64_t{used} - 1) >> 63), last};
}

[[gnu::always_inline]] inline bool store_trimmed(xdec* destination, bool negative, uint32_t scale, const Trimmed& number) {
    if (number.int_pairs < kMinIntPairs || number.int_pairs > kMaxIntPairs) [[unlikely]] {
        return false;
    }
    const uint64_t head = make_head(negative, scale, number.int_pairs, number.count, number.pairs);
    store_record(destination, head ^ ((head ^ kZeroHead) & number.all_if_zero), number.pairs, _mm_setzero_si128());
    return true;
}

// Stores a number in lanes in canonical form. scale is at least what its digits need, and at most XDEC_MAX_KEPT_SCALE. False,
// and nothing is stored: it is out of range.
[[gnu::always_inline]] inline bool store_lanes(xdec* destination, bool negative, uint32_t scale, int32_t int_pairs,
                                               Lanes lanes) {
    return store_trimmed(destination, negative, scale, trim(int_pairs, lanes));
}

// The same for 32 lanes, of which at most 22 from the first to the last are not 0; if they are more, false as well.
inline bool store_wide_lanes(xdec* destination, bool negative, uint32_t scale, int32_t int_pairs, WideLanes lanes) {
    const uint32_t used = nonzero_lanes(lanes.front) | nonzero_lanes(lanes.back) << kLanes;
    if (used == 0) [[unlikely]] {
        store_zero(destination);
        return true;
    }
    const int32_t first = std::countr_zero(used);
    const int32_t count = highest_bit(used) + 1 - first;
    int_pairs -= first;
    if (int_pairs < kMinIntPairs || int_pairs > kMaxIntPairs || count > static_cast<int32_t>(kMaxPairs)) [[unlikely]] {
        return false;
    }
    const Lanes one = spread(1);
    const Lanes front = _mm_add_epi8(lanes.front, one), back = _mm_add_epi8(lanes.back, one);
    const Lanes pairs = _mm_and_si128(pick(front, back, counting_from(first)), lanes_below(count));
    const Lanes more = _mm_and_si128(pick(front, back, counting_from(first + kLanes)), lanes_below(count - kLanes));
    store_record(destination, make_head(negative, scale, int_pairs, count, pairs), pairs, more);
    return true;
}

// ---- Lanes and binary numbers -----------------------------------------------------------------------------------------------

// Four limbs of four lanes each, the most significant first.
inline Lanes limbs_of_lanes(Lanes lanes) {
    const Lanes quads = _mm_maddubs_epi16(lanes, _mm_set1_epi16(1 << 8 | 100));  // eight numbers below 10^4
    return _mm_madd_epi16(quads, _mm_set1_epi32(1 << 16 | 10000));
}

// Division by 10^4 as a product by 2^45 / 10^4, exact below 2^32; by 100 as one by 2^19 / 100, exact below 43699.
inline Lanes ten_thousands(Lanes limbs) {
    const Lanes reciprocal = _mm_set1_epi64x(3518437209);
    return _mm_srli_epi64(_mm_mul_epu32(limbs, reciprocal), 45);
}
inline Lanes hundreds(Lanes quads) { return _mm_srli_epi16(_mm_mulhi_epu16(quads, _mm_set1_epi16(5243)), 3); }

inline Lanes lanes_of_limbs(Lanes limbs) {
    const Lanes upper = _mm_or_si128(ten_thousands(limbs), _mm_slli_epi64(ten_thousands(_mm_srli_epi64(limbs, 32)), 32));
    const Lanes lower = _mm_sub_epi32(limbs, _mm_madd_epi16(upper, _mm_set1_epi32(10000)));
    const Lanes quads = _mm_or_si128(upper, _mm_slli_epi32(lower, 16));
    // quads / 100 in the lower byte, and quads - quads / 100 * 100 in the upper.
    return _mm_add_epi16(_mm_slli_epi16(quads, 8), _mm_mullo_epi16(hundreds(quads), _mm_set1_epi16(1 - (100 << 8))));
}

inline constexpr uint64_t kTenTo16 = 10000000000000000;

// A number below 10^16 as two limbs.
inline uint64_t two_limbs(uint64_t value) {
    const uint64_t upper = value / kLimbBase;
    return upper | (value - upper * kLimbBase) << 32;
}

inline Lanes four_limbs(uint64_t first_two, uint64_t last_two) {
    return _mm_unpacklo_epi64(_mm_cvtsi64_si128(static_cast<int64_t>(first_two)),
                              _mm_cvtsi64_si128(static_cast<int64_t>(last_two)));
}

// A number as sixteen lanes, the last of which are the units.
inline Lanes lanes_of_uint64(uint64_t value) {
    const uint64_t upper = value / kLimbBase;
    const uint64_t highest = upper / kLimbBase;  // at most 1844
    return lanes_of_limbs(four_limbs(highest << 32, (upper - highest * kLimbBase) | (value - upper * kLimbBase) << 32));
}

inline constexpr uint64_t kMaxShifted = ~uint64_t{0} / 10;  // by one digit

// Stores value times 10^exponent; exponent is -200..200, and scale at least what the digits need. False, and nothing is stored:
// out of range, or too many digits to shift by one.
[[gnu::always_inline]] inline bool store_uint64(xdec* destination, bool negative, uint64_t value, int32_t exponent,
                                                uint32_t scale) {
    const int32_t odd = exponent & 1;  // too irregular to branch on
    if (((odd != 0) & (value > kMaxShifted)) | (scale > XDEC_MAX_KEPT_SCALE)) [[unlikely]] {
        return false;
    }
    const int32_t int_pairs = kLanes + (exponent - odd) / 2;
    return store_lanes(destination, negative, scale, int_pairs, lanes_of_uint64(value * static_cast<uint64_t>(1 + 9 * odd)));
}

// A number below 10^18 as sixteen lanes, with less to divide.
inline Lanes lanes_of_18_digits(uint64_t value) {
    const uint64_t upper = value / kLimbBase;
    const uint64_t highest = upper / kLimbBase;  // below 100
    const Lanes limbs =
        _mm_set_epi64x(static_cast<int64_t>(value - upper * kLimbBase), static_cast<int64_t>(upper - highest * kLimbBase));
    const Lanes thousands = ten_thousands(limbs);
    const Lanes rest = _mm_sub_epi64(limbs, _mm_mul_epu32(thousands, _mm_set1_epi64x(10000)));
    const Lanes quads = _mm_or_si128(thousands, _mm_slli_epi64(rest, 32));  // four of 32 bits
    const Lanes first = hundreds(quads);
    const Lanes second = _mm_sub_epi16(quads, _mm_mullo_epi16(first, _mm_set1_epi32(100)));
    const Lanes pairs = _mm_or_si128(first, _mm_slli_epi32(second, 16));  // eight of 16 bits
    return _mm_packus_epi16(_mm_slli_si128(_mm_cvtsi64_si128(static_cast<int64_t>(highest)), 14), pairs);
}

// Stores digits times 10^exponent, digits below 10^17, exponent -400..400, with the scale that it needs. False, and nothing is
// stored: out of range, or a scale above XDEC_MAX_KEPT_SCALE.
[[gnu::always_inline]] inline bool store_digits(xdec* destination, bool negative, uint64_t digits, int32_t exponent) {
    const int32_t odd = exponent & 1;
    const Lanes lanes = lanes_of_18_digits(digits * static_cast<uint64_t>(1 + 9 * odd));
    const Trimmed number = trim(kLanes + (exponent - odd) / 2, lanes);
    const Lanes last = _mm_shuffle_epi8(lanes, _mm_cvtsi32_si128(number.last));
    const int32_t ends_in_zero = static_cast<uint8_t>(_mm_cvtsi128_si32(last)) % 10 == 0;
    const int32_t scale = std::max(0, 2 * (number.count - number.int_pairs) - ends_in_zero);
    if (scale > static_cast<int32_t>(XDEC_MAX_KEPT_SCALE)) [[unlikely]] {
        return false;
    }
    return store_trimmed(destination, negative, static_cast<uint32_t>(scale), number);
}

// The pairs of a record as one integer. False: there are none, or it may need more than 64 bits.
[[gnu::always_inline]] inline bool coefficient(const Record& x, uint64_t* value) {
    constexpr int32_t kMaxCount = 10;     // pairs of an integer below 10^20
    constexpr uint64_t kMaxUpper = 1843;  // times 10^16, and 10^16 - 1: still below 2^64
    const int32_t count = x.count();
    if (count < 1 || count > kMaxCount || x.is_zero()) return false;
    const Lanes limbs = limbs_of_lanes(moved(to_lanes(x.pairs), kLanes - count));
    const auto upper = static_cast<uint64_t>(_mm_cvtsi128_si64(limbs)) >> 32;  // limb 1; limb 0 is 0
    const auto lower = static_cast<uint64_t>(_mm_extract_epi64(limbs, 1));
    *value = upper * kTenTo16 + static_cast<uint32_t>(lower) * kLimbBase + (lower >> 32);
    return upper <= kMaxUpper;
}

}  // namespace qzhost::lanes

#endif

#endif
