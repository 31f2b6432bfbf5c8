// Moves, order, sums and rounding of decimals.

#include "host/src/decimal_form.h"
#include "host/src/decimal_lanes.h"

namespace qzhost {
namespace {

// From the highest weight of one number to the lowest of another: 64 + 213 pairs of fraction, 63 of integer, 1 for a carry.
constexpr uint32_t kSumPairs = 341;

int32_t compare_magnitudes(const Pairs& x, const Pairs& y) {
    if (x.int_pairs != y.int_pairs) return x.int_pairs < y.int_pairs ? -1 : 1;
    return std::memcmp(x.pair, y.pair, kMaxPairs);  // pairs behind the count are 0
}

// x + y for y of the same sign, x - y otherwise; |x| is not less than |y|, and neither is 0.
int32_t add_signed(const Pairs& x, const Pairs& y, xdec* destination) {
    const int32_t low = std::min(x.int_pairs - static_cast<int32_t>(x.count), y.int_pairs - static_cast<int32_t>(y.count));
    const uint32_t count = static_cast<uint32_t>(x.int_pairs - low) + 1;
    const uint32_t y_at = 1 + static_cast<uint32_t>(x.int_pairs - y.int_pairs);
    uint8_t sum[kSumPairs] = {0};
    std::memcpy(sum + 1, x.pair, x.count);
    int32_t carry = 0;
    const int32_t direction = x.negative == y.negative ? 1 : -1;
    for (uint32_t i = count - 1; i < count; --i) {
        const uint32_t in_y = i - y_at;
        const int32_t added = in_y < y.count ? y.pair[in_y] : 0;
        int32_t digit = sum[i] + direction * added + carry;  // -100..199
        carry = (digit > 99) - (digit < 0);
        digit -= 100 * carry;
        sum[i] = static_cast<uint8_t>(digit);
    }
    return store_pairs(destination, x.negative, std::max(x.scale, y.scale), x.int_pairs + 1, sum, count);
}

// The general path of sums; out of line, so that the common one needs no stack.
[[gnu::noinline]] int32_t add_pairs(const xdec* x_record, const xdec* y_record, bool negate_y, xdec* destination) {
    const Pairs x = load_pairs(*x_record);
    Pairs y = load_pairs(*y_record);
    y.negative = y.negative != negate_y;
    if (x.count == 0) return store_pairs(destination, y.negative, y.scale, y.int_pairs, y.pair, y.count);
    if (y.count == 0) return store_pairs(destination, x.negative, x.scale, x.int_pairs, x.pair, x.count);
    return compare_magnitudes(x, y) < 0 ? add_signed(y, x, destination) : add_signed(x, y, destination);
}

// The value cut behind n places, n below the scale; away: and one unit of the last place added when the first digit cut is 5
// or more.
[[gnu::noinline]] int32_t cut(const xdec* source, int32_t n, bool round, xdec* destination) {
    const Pairs x = load_pairs(*source);
    const uint32_t scale = std::min<uint32_t>(x.scale, n > 0 ? static_cast<uint32_t>(n) : 0);
    const int64_t digits = 2 * int64_t{x.int_pairs} + n;  // that are kept, counted from the first pair's tens
    if (digits >= 2 * int64_t{x.count}) return store_pairs(destination, x.negative, scale, x.int_pairs, x.pair, x.count);
    uint8_t kept[kMaxPairs + 1] = {0};  // kept[0] takes the carry
    if (digits < 0) {
        xdec_fill_zero(destination);
        return 0;
    }
    const auto whole = static_cast<uint32_t>(digits / 2);
    const bool half = digits % 2 != 0;
    std::memcpy(kept + 1, x.pair, whole);
    uint32_t unit = 1;
    bool up = x.pair[whole] >= 50;
    uint32_t last = whole;
    if (half) {
        unit = 10;
        up = x.pair[whole] % 10 >= 5;
        last = whole + 1;
        kept[last] = static_cast<uint8_t>(x.pair[whole] - x.pair[whole] % 10);
    }
    for (uint32_t i = last; round && up; --i) {
        const uint32_t digit = kept[i] + unit;
        up = digit > 99;
        kept[i] = static_cast<uint8_t>(up ? digit - 100 : digit);
        unit = 1;
    }
    return store_pairs(destination, x.negative, scale, x.int_pairs + 1, kept, last + 1);
}

#if QZHOST_DECIMAL_LANES

// The services for numbers that fit one register, that is nearly all. False, and nothing is stored: they do not.
namespace in_lanes {

using namespace lanes;

uint64_t big_endian(const uint8_t* bytes) {
    uint64_t number;
    std::memcpy(&number, bytes, sizeof number);
    return __builtin_bswap64(number);
}

// |x| < |y|: lead and pairs as one big number.
bool is_smaller(const xdec* x, const xdec* y) {
    const uint64_t x_first = big_endian(&x->lead), y_first = big_endian(&y->lead);
    if (x_first != y_first) [[likely]] {
        return x_first < y_first;
    }
    return std::memcmp(x->pairs, y->pairs, sizeof x->pairs) < 0;
}

Lanes all_lanes(bool set) { return _mm_set1_epi64x(-int64_t{set}); }

// What is not added in one register: a zero, a sum in two registers, and all the rest.
[[gnu::noinline]] int32_t add_other(const xdec* x, const xdec* y, bool negate_y, xdec* destination) {
    const bool swap = is_smaller(x, y);
    const xdec* larger = swap ? y : x;
    const xdec* smaller = swap ? x : y;
    const Record a = load_record(larger);
    const Record b = load_record(smaller);
    const bool a_negative = a.is_negative() != (swap && negate_y);
    const bool b_negative = b.is_negative() != (!swap && negate_y);
    const int32_t distance = a.int_pairs() - b.int_pairs();
    const uint32_t scale = std::max(a.scale(), b.scale());
    bool done = false;
    if (a.is_zero() || scale > XDEC_MAX_KEPT_SCALE) {
        done = false;
    } else if (b.is_zero()) {
        done = a.count() <= kLanes && store_lanes(destination, a_negative, a.scale(), a.int_pairs(), to_lanes(a.pairs));
    } else if (distance + std::max(b.count(), 1) < 2 * kLanes && a.count() < 2 * kLanes) {  // one lane in front takes the carry
        const Lanes a_more = load_more_pairs(larger), b_more = load_more_pairs(smaller);
        const Lanes a_index = counting_from(-1), b_index = counting_from(-1 - distance);
        const Lanes next = spread(kLanes);
        const WideLanes p = {to_lanes(pick(a.pairs, a_more, a_index)),
                             to_lanes(pick(a.pairs, a_more, _mm_add_epi8(a_index, next)))};
        const WideLanes q = {to_lanes(pick(b.pairs, b_more, b_index)),
                             to_lanes(pick(b.pairs, b_more, _mm_add_epi8(b_index, next)))};
        const WideLanes sum = add_wide_lanes(p, q, all_lanes(a_negative != b_negative));
        done = store_wide_lanes(destination, a_negative, scale, a.int_pairs() + 1, sum);
    }
    return done ? 0 : add_pairs(x, y, negate_y, destination);
}

[[gnu::always_inline]] inline int32_t add(const xdec* x, const xdec* y, bool negate_y, xdec* destination) {
    const Record a = load_record(x);
    const Record b = load_record(y);
    const int32_t difference = a.int_pairs() - b.int_pairs();
    const int32_t shorter = difference >> 31;  // all ones when a has fewer integer pairs; too irregular for a branch
    const int32_t a_distance = 1 - (difference & shorter), b_distance = 1 + (difference & ~shorter);  // lane 0 takes the carry
    const int32_t top = a.int_pairs() + a_distance - 1;
    const uint32_t scale = std::max(a.scale(), b.scale());
    if (a_distance + a.count() > kLanes || b_distance + b.count() > kLanes || scale > XDEC_MAX_KEPT_SCALE || a.is_zero() ||
        b.is_zero()) {
        return add_other(x, y, negate_y, destination);
    }
    const bool a_negative = a.nonzero_is_negative(), b_negative = b.nonzero_is_negative() != negate_y;
    const bool swap = is_smaller(x, y);
    const Lanes p = moved(to_lanes(a.pairs), a_distance), q = moved(to_lanes(b.pairs), b_distance);
    const Lanes swapped = _mm_and_si128(_mm_xor_si128(p, q), all_lanes(swap));
    const Lanes sum = add_lanes(_mm_xor_si128(p, swapped), _mm_xor_si128(q, swapped), all_lanes(a_negative != b_negative));
    if (store_lanes(destination, choose(swap, b_negative, a_negative) != 0, scale, top + 1, sum)) return 0;
    return add_pairs(x, y, negate_y, destination);
}

// The ones of each lane's two digits.
Lanes ones_of(Lanes lanes) {
    // A tenth is a product by 205 / 2^11, exact below 1029; even and odd lanes apart, as products are of 16 bits.
    const Lanes tenth = _mm_set1_epi16(205);
    const Lanes even = _mm_srli_epi16(_mm_mullo_epi16(_mm_and_si128(lanes, _mm_set1_epi16(0xFF)), tenth), 11);
    const Lanes odd = _mm_srli_epi16(_mm_mullo_epi16(_mm_srli_epi16(lanes, 8), tenth), 11);
    const Lanes tens = _mm_or_si128(even, _mm_slli_epi16(odd, 8));  // 0..9, so that no bit leaves its lane below
    return _mm_sub_epi8(lanes, _mm_add_epi8(_mm_slli_epi16(tens, 1), _mm_slli_epi16(tens, 3)));
}

[[gnu::always_inline]] inline bool cut(const xdec* source, int32_t n, bool round, xdec* destination) {
    const Record x = load_record(source);
    if (x.is_zero()) {
        store_zero(destination);
        return true;
    }
    if (x.count() >= kLanes || x.scale() > XDEC_MAX_KEPT_SCALE) return false;  // lane 0 takes the carry
    constexpr int32_t kFar = 1000;                                             // places from the point where no digit stands
    const int32_t places = std::clamp(n, -kFar, kFar);
    const uint32_t scale = std::min(x.scale(), static_cast<uint32_t>(std::max(places, 0)));
    const int32_t int_pairs = x.int_pairs() + 1;
    const int32_t digits_kept = std::clamp(2 * int_pairs + places, 0, 2 * kLanes);  // counted from the tens of lane 0
    const int32_t lanes_kept = digits_kept / 2;
    const bool odd = digits_kept % 2 != 0;

    const Lanes numbers = lane_numbers();
    const Lanes cut_lane = _mm_cmpeq_epi8(numbers, spread(lanes_kept));  // the first that goes, but for its tens when odd
    Lanes digits = moved(to_lanes(x.pairs), 1);
    if (round) digits = add_lanes(digits, _mm_and_si128(cut_lane, spread(odd ? 5 : 50)), _mm_setzero_si128());
    const Lanes tens = _mm_and_si128(_mm_and_si128(cut_lane, all_lanes(odd)), _mm_sub_epi8(digits, ones_of(digits)));
    const Lanes kept = _mm_or_si128(_mm_and_si128(digits, lanes_below(lanes_kept)), tens);
    return store_lanes(destination, x.is_negative(), scale, int_pairs, kept);
}

// Needs no lanes in order: pairs behind the point go, and zero pairs that are the last then.
void trunc_scale(xdec* value) {
    const Record x = load_record(value);
    const int32_t int_pairs = std::min(x.int_pairs(), static_cast<int32_t>(kMaxPairs));
    const Lanes one = spread(1), most = spread(100);
    const Lanes pairs = _mm_min_epu8(_mm_max_epu8(x.pairs, one), most);
    const Lanes more = _mm_min_epu8(_mm_max_epu8(load_more_pairs(value), one), most);
    const uint32_t nonzero = mask_of(_mm_cmpgt_epi8(pairs, one)) | mask_of(_mm_cmpgt_epi8(more, one)) << kLanes;
    const uint32_t used = int_pairs > 0 ? nonzero & ((1U << int_pairs) - 1) : 0;
    const bool zero = used == 0 || x.is_zero();
    const int32_t count = zero ? 0 : 32 - std::countl_zero(used);
    const uint64_t head = make_head(x.is_negative(), 0, std::max(x.int_pairs(), 0), count, pairs);
    store_record(value, choose(zero, kZeroHead, head), _mm_and_si128(pairs, lanes_below(count)),
                 _mm_and_si128(more, lanes_below(count - kLanes)));
}

// The integer part and one more away from zero if the sign is the given one.
[[gnu::always_inline]] inline bool step_outwards(const xdec* source, uint8_t stepping_sign, xdec* destination) {
    const Record x = load_record(source);
    const int32_t units = std::max(x.int_pairs(), 0);  // their lane; lane 0 takes the carry
    const int32_t distance = units - x.int_pairs() + 1;
    if (units >= kLanes || x.is_zero() || x.scale() == 0 || distance > kLanes) return false;
    const Lanes whole = lanes_below(units + 1);
    const Lanes unit = _mm_andnot_si128(lanes_below(units), _mm_and_si128(whole, spread(x.sign() == stepping_sign)));
    const Lanes kept = _mm_and_si128(moved(to_lanes(x.pairs), distance), whole);
    return store_lanes(destination, x.is_negative(), 0, units + 1, add_lanes(kept, unit, _mm_setzero_si128()));
}

}  // namespace in_lanes

#else

namespace in_lanes {

int32_t add(const xdec* x, const xdec* y, bool negate_y, xdec* destination) { return add_pairs(x, y, negate_y, destination); }
bool cut(const xdec*, int32_t, bool, xdec*) { return false; }
void trunc_scale(xdec* value) { (void)qzhost::cut(value, 0, false, value); }
bool step_outwards(const xdec*, uint8_t, xdec*) { return false; }

}  // namespace in_lanes

#endif

// What is not done in one register.
[[gnu::noinline]] void step_outwards_any(const xdec* source, uint8_t stepping_sign, xdec* destination) {
    const bool step = source->sign == stepping_sign && source->scale != 0;
    xdec result = *source;
    if (source->scale != 0) in_lanes::trunc_scale(&result);
    if (step) {
        xdec one;
        xdec_fill_one(&one);
        one.sign = stepping_sign;
        (void)in_lanes::add(&result, &one, false, &result);  // a number with a fraction is far from the end of the range
    }
    *destination = result;
}

}  // namespace
}  // namespace qzhost

using namespace qzhost;

extern "C" {

int32_t xdec_is_canonical(const xdec* x) {
    const Pairs p = load_pairs(*x);
    xdec canonical;
    if (store_pairs(&canonical, p.negative, p.scale, p.int_pairs, p.pair, p.count) < 0) return 0;
    return std::memcmp(&canonical, x, sizeof canonical) == 0;
}

int32_t xdec_add(const xdec* x, const xdec* y, xdec* destination) { return in_lanes::add(x, y, false, destination); }

int32_t xdec_sub(const xdec* x, const xdec* y, xdec* destination) { return in_lanes::add(x, y, true, destination); }

int32_t xdec_round(const xdec* source, int32_t zero, int32_t n, xdec* destination) {
    (void)zero;
    if (in_lanes::cut(source, n, true, destination)) return 0;
    return cut(source, n, true, destination);
}

void xdec_trunc_scale_with_pos(const xdec* source, int32_t n, xdec* destination) {
    if (in_lanes::cut(source, n, false, destination)) return;
    (void)cut(source, n, false, destination);  // cannot fail: the magnitude does not grow
}

void xdec_ceil_by_scale(const xdec* source, xdec* destination) {
    if (in_lanes::step_outwards(source, XDEC_SIGN_POSITIVE, destination)) return;
    step_outwards_any(source, XDEC_SIGN_POSITIVE, destination);
}

void xdec_floor_by_scale(const xdec* source, xdec* destination) {
    if (in_lanes::step_outwards(source, XDEC_SIGN_NEGATIVE, destination)) return;
    step_outwards_any(source, XDEC_SIGN_NEGATIVE, destination);
}

void xdec_trunc_scale(xdec* value) { in_lanes::trunc_scale(value); }

}  // extern "C"
