// Decimals from and to text.

#include "host/src/decimal_form.h"
#include "host/src/decimal_lanes.h"

namespace qzhost {
namespace {

constexpr int64_t kExponentLimit = 1000000;  // a larger one of a text is as good as this one

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// The digits that a text can contribute: 44, and one that rounds, and one more that an odd place of the point shifts in.
constexpr uint32_t kKeptDigits = 2 * kMaxPairs + 2;

struct Parsed {
    bool negative = false;
    uint32_t count = 0;      // of significant digits kept
    int64_t int_digits = 0;  // significant digits in front of the point, below 0 for zeros behind it
    int64_t scale = 0;       // digits behind the point
    uint8_t digit[kKeptDigits] = {0};
};

// Reads the digits around the point. False: there is none.
bool parse_mantissa(const char*& at, const char* end, Parsed* p) {
    bool any = false;
    bool point = false;
    for (; at != end; ++at) {
        if (*at == '.' && !point) {
            point = true;
            continue;
        }
        if (!is_digit(*at)) break;
        any = true;
        p->scale += point;
        const auto digit = static_cast<uint8_t>(*at - '0');
        if (p->count == 0 && digit == 0) {
            p->int_digits -= point;
            continue;
        }
        p->int_digits += !point;
        if (p->count < kKeptDigits) p->digit[p->count++] = digit;
    }
    return any;
}

// Reads an exponent if there is one. False: it is broken.
bool parse_exponent(const char*& at, const char* end, int64_t* exponent) {
    *exponent = 0;
    if (at == end || (*at != 'e' && *at != 'E')) return true;
    ++at;
    const bool negative = at != end && *at == '-';
    if (at != end && (*at == '-' || *at == '+')) ++at;
    if (at == end || !is_digit(*at)) return false;
    for (; at != end && is_digit(*at); ++at) *exponent = std::min(*exponent * 10 + (*at - '0'), kExponentLimit);
    if (negative) *exponent = -*exponent;
    return true;
}

int32_t store_parsed(xdec* destination, const Parsed& p) {
    const int64_t scale = std::clamp<int64_t>(p.scale, 0, XDEC_MAX_KEPT_SCALE);
    const auto int_digits = static_cast<int32_t>(std::clamp<int64_t>(p.int_digits, -kExponentLimit, kExponentLimit));
    const uint32_t shift = int_digits % 2 != 0;  // an odd place of the point puts a 0 in front
    uint8_t pair[kKeptDigits / 2 + 1] = {0};
    for (uint32_t i = 0; i < p.count; ++i) {
        const uint32_t place = i + shift;
        pair[place / 2] = static_cast<uint8_t>(pair[place / 2] + (place % 2 == 0 ? 10 : 1) * p.digit[i]);
    }
    const int32_t int_pairs = (int_digits + static_cast<int32_t>(shift)) / 2;
    return store_pairs(destination, p.negative, static_cast<uint32_t>(scale), int_pairs, pair, sizeof pair);
}

int32_t refuse(xdec* destination, int32_t code) {
    xdec_fill_zero(destination);
    return code;
}

// The text with all its forms, blanks taken off.
[[gnu::noinline]] int32_t read_any(xdec* destination, const char* at, const char* end) {
    Parsed p;
    p.negative = *at == '-';
    if (*at == '-' || *at == '+') ++at;
    if (!parse_mantissa(at, end, &p)) return refuse(destination, EC_NUMBER_TEXT_INVALID);
    int64_t exponent = 0;
    if (!parse_exponent(at, end, &exponent) || at != end) return refuse(destination, EC_NUMBER_TEXT_INVALID);
    p.scale -= exponent;
    p.int_digits += exponent;
    return store_parsed(destination, p);
}

// Digits of a number by their place; place 0 is the tens of the first pair.
struct Digits {
    int32_t count;
    char digit[2 * kMaxPairs];

    explicit Digits(const Pairs& p) : count(2 * static_cast<int32_t>(p.count)) {
        for (uint32_t i = 0; i < p.count; ++i) {
            digit[2 * i] = static_cast<char>('0' + p.pair[i] / 10);
            digit[2 * i + 1] = static_cast<char>('0' + p.pair[i] % 10);
        }
    }

    // Writes the places from first up to end, those outside the number as 0.
    char* write(char* out, int32_t first, int32_t end) const {
        const int32_t from = std::clamp(0, first, end), to = std::clamp(count, from, end);
        std::memset(out, '0', static_cast<size_t>(end - first));
        if (from < to) std::memcpy(out + (from - first), digit + from, static_cast<size_t>(to - from));
        return out + (end - first);
    }
};

// Every number, in any width.
[[gnu::noinline]] int32_t write_any(const xdec* x, char* buffer, uint32_t size, uint32_t digits, uint32_t* length) {
    const Pairs p = load_pairs(*x);
    // Where the first pair stands: places before the point, at least one, and behind it. Every count is below 1000.
    const int32_t int_pairs = p.count > 0 ? p.int_pairs : 0;
    const uint32_t int_digits = int_pairs > 0 ? 2 * static_cast<uint32_t>(int_pairs) - (p.pair[0] < 10) : 0;
    const uint32_t wanted = std::max<uint32_t>(1, digits > XDEC_MAX_INT_DIGITS ? 0 : digits);
    const uint32_t shown = std::max(wanted, int_digits);
    const uint32_t total = p.negative + shown + (p.scale > 0) + p.scale;
    *length = 0;
    if (size <= total) {
        if (size > 0) buffer[0] = '\0';
        return EC_CHAR_RESULT_OVERFLOW;
    }
    const Digits all(p);
    const int32_t point = 2 * int_pairs;
    char* at = buffer;
    if (p.negative) *at++ = '-';
    at = all.write(at, point - static_cast<int32_t>(shown), point);
    if (p.scale > 0) *at++ = '.';
    at = all.write(at, point, point + static_cast<int32_t>(p.scale));
    *at = '\0';
    *length = total;
    return 0;
}

#if QZHOST_DECIMAL_LANES

// Texts of up to 32 bytes in two registers, where digits are lanes.
namespace in_lanes {

using namespace lanes;

constexpr uint32_t kTextBytes = 2 * kLanes;

template <class Word>
uint64_t word_at(const char* at) {
    Word word;
    std::memcpy(&word, at, sizeof word);
    return word;
}

// 1 to 8 bytes of text, and zeros. Two words overlap; where they do they are equal.
uint64_t load_word(const char* text, uint32_t length) {
    if (length >= 4) return word_at<uint32_t>(text) | word_at<uint32_t>(text + length - 4) << 8 * (length - 4);
    return word_at<uint8_t>(text) | word_at<uint8_t>(text + length / 2) << 8 * (length / 2) |
           word_at<uint8_t>(text + length - 1) << 8 * (length - 1);
}

// 1 to 32 bytes of text, and zeros.
WideLanes load_text(const char* text, uint32_t length) {
    if (length > kLanes) {
        const Lanes last = load(text + length - kLanes);
        return {load(text), pick(last, _mm_setzero_si128(), counting_from(static_cast<int32_t>(kTextBytes - length)))};
    }
    const uint32_t front = std::min<uint32_t>(length, 8);
    const uint64_t low = length >= 8 ? word_at<uint64_t>(text) : load_word(text, front);
    // Two shifts, since one of 64 is none.
    const uint64_t high =
        length >= 8 ? word_at<uint64_t>(text + length - 8) >> 4 * (kLanes - length) >> 4 * (kLanes - length) : 0;
    return {_mm_set_epi64x(static_cast<int64_t>(high), static_cast<int64_t>(low)), _mm_setzero_si128()};
}

// Pairs of digit lanes.
Lanes pair_up(Lanes front, Lanes back) {
    const Lanes weights = _mm_set1_epi16(1 << 8 | 10);
    return _mm_packus_epi16(_mm_maddubs_epi16(front, weights), _mm_maddubs_epi16(back, weights));
}

// A sign, digits, a point among them. False: the text has another form, or none.
bool read(xdec* destination, const char* text, uint32_t length) {
    const WideLanes bytes = load_text(text, length);
    const Lanes nine = spread(9), zero = spread('0'), point = spread('.');
    const Lanes front = _mm_sub_epi8(bytes.front, zero), back = _mm_sub_epi8(bytes.back, zero);
    const Lanes front_is = _mm_cmpeq_epi8(_mm_min_epu8(front, nine), front);
    const Lanes back_is = _mm_cmpeq_epi8(_mm_min_epu8(back, nine), back);
    const uint64_t digits = mask_of(front_is) | uint64_t{mask_of(back_is)} << kLanes;
    const uint64_t points = mask_of(_mm_cmpeq_epi8(bytes.front, point)) | uint64_t{mask_of(_mm_cmpeq_epi8(bytes.back, point))}
                                                                              << kLanes;
    const bool negative = text[0] == '-';
    const uint64_t sign = negative || text[0] == '+';
    const uint64_t end = uint64_t{1} << length;
    if ((digits | points | sign) != end - 1 || (points & (points - 1)) != 0 || digits == 0) return false;

    // Each digit goes to the lane that pairs it around the point: one lane down when there is an odd count in front, and one
    // lane up over the point.
    const auto point_at = std::countr_zero(points | end);
    const auto int_digits = point_at - static_cast<int32_t>(sign);
    const int32_t pad = int_digits % 2;
    const int32_t behind = int_digits + pad;
    const int32_t scale = std::max(0, static_cast<int32_t>(length) - 1 - point_at);
    if (behind + scale > static_cast<int32_t>(kTextBytes)) return false;
    const Lanes front_digits = _mm_and_si128(front, front_is), back_digits = _mm_and_si128(back, back_is);
    const int32_t first = static_cast<int32_t>(sign) - pad;
    const Lanes one = spread(1);
    const Lanes front_index = _mm_add_epi8(counting_from(first), _mm_andnot_si128(lanes_below(behind), one));
    const Lanes back_index = _mm_add_epi8(counting_from(first + kLanes), _mm_andnot_si128(lanes_below(behind - kLanes), one));
    const Lanes pairs = pair_up(pick(front_digits, back_digits, front_index), pick(front_digits, back_digits, back_index));
    return store_lanes(destination, negative, static_cast<uint32_t>(scale), behind / 2, pairs);
}

// Two characters for each of eight pairs in 16-bit lanes.
Lanes digits_of(Lanes pairs) {
    const Lanes tens = _mm_srli_epi16(_mm_mullo_epi16(pairs, _mm_set1_epi16(103)), 10);  // exact below 179
    const Lanes both = _mm_sub_epi16(_mm_slli_epi16(pairs, 8), _mm_mullo_epi16(tens, _mm_set1_epi16((10 << 8) - 1)));
    return _mm_add_epi8(both, spread('0'));
}

// Numbers of up to 32 digits and a point that stand in sixteen pairs around it. False: another one, or too small a buffer for
// stores of whole registers.
bool write(const xdec* x, char* buffer, uint32_t size, uint32_t* length) {
    const Record r = load_record(x);
    const int32_t zeros = std::max(0, 1 - r.int_pairs());  // pairs in front, so that there is one before the point
    const int32_t int_pairs = r.int_pairs() + zeros;
    const auto scale = static_cast<int32_t>(r.scale());
    if (r.is_zero() || zeros > kLanes || int_pairs > kLanes || 2 * int_pairs + 1 + scale > static_cast<int32_t>(kTextBytes) ||
        r.count() + zeros > kLanes || size < kTextBytes + 2) {
        return false;
    }
    const Lanes pairs = moved(to_lanes(r.pairs), zeros);
    const Lanes none = _mm_setzero_si128();
    const Lanes front = digits_of(_mm_unpacklo_epi8(pairs, none)), back = digits_of(_mm_unpackhi_epi8(pairs, none));
    const int32_t skipped = static_cast<uint8_t>(_mm_cvtsi128_si32(pairs)) < 10;  // the tens of the first pair
    const int32_t int_digits = 2 * int_pairs - skipped;
    const int32_t total = int_digits + (scale > 0) + scale;

    // Up to the point each character comes from its own place, then from one lane before.
    const Lanes front_upto = lanes_below(int_digits + 1), back_upto = lanes_below(int_digits + 1 - kLanes);
    const Lanes all = _mm_set1_epi8(-1);
    const Lanes front_index = _mm_add_epi8(counting_from(skipped), _mm_andnot_si128(front_upto, all));
    const Lanes back_index = _mm_add_epi8(counting_from(skipped + kLanes), _mm_andnot_si128(back_upto, all));
    const Lanes point = spread('.');
    const Lanes front_point = _mm_xor_si128(front_upto, lanes_below(int_digits));
    const Lanes back_point = _mm_xor_si128(back_upto, lanes_below(int_digits - kLanes));
    const bool negative = r.is_negative();
    buffer[0] = '-';
    store(buffer + negative, _mm_blendv_epi8(pick(front, back, front_index), point, front_point));
    store(buffer + negative + kLanes, _mm_blendv_epi8(pick(front, back, back_index), point, back_point));
    buffer[negative + total] = '\0';
    *length = static_cast<uint32_t>(negative + total);
    return true;
}

}  // namespace in_lanes

#else

namespace in_lanes {

constexpr uint32_t kTextBytes = 0;

bool read(xdec*, const char*, uint32_t) { return false; }
bool write(const xdec*, char*, uint32_t, uint32_t*) { return false; }

}  // namespace in_lanes

#endif

}  // namespace
}  // namespace qzhost

using namespace qzhost;

extern "C" {

int32_t xdec_from_char(xdec* destination, const char* text, uint32_t length) {
    while (length > 0 && text[length - 1] == ' ') --length;
    while (length > 0 && text[0] == ' ') {
        ++text;
        --length;
    }
    if (length == 0) return refuse(destination, RC_VALUE_IS_NULL);
    if (length <= in_lanes::kTextBytes && in_lanes::read(destination, text, length)) return 0;
    return read_any(destination, text, text + length);
}

int32_t xdec_to_char2(const xdec* x, char* buffer, uint32_t size, uint32_t* length) {
    return in_lanes::write(x, buffer, size, length) ? 0 : write_any(x, buffer, size, 0, length);
}

int32_t xdec_to_char_with_zero(const xdec* x, char* buffer, uint32_t size, uint32_t digits, int32_t zero, uint32_t* length) {
    (void)zero;
    if (digits <= 1 && in_lanes::write(x, buffer, size, length)) return 0;
    return write_any(x, buffer, size, digits, length);
}

}  // extern "C"
