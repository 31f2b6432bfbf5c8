// Writing a decimal by a parsed number format.
//
// The digits are taken out of the decimal's pairs once, rounded in place, and written from left to right: every part's length
// is known before the first byte. Records of any bytes are harmless here, since a value can come from anywhere: counts are
// limited to the record, and a pair out of range reads as 99.
#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "host/src/decimal_digits.h"
#include "host/src/number_format_record.h"
#include "host/src/roman_numerals.h"
#include "host/src/wide_integer.h"

namespace qzhost {
namespace {

constexpr int kMaxDigits = 2 * XDEC_MAX_PAIRS;
constexpr int kPointLeadByte = 192;  // xdec.lead of a number whose pairs all stand behind the point
constexpr int kShortestTextWidth = 64;

// A number as 0.d1 d2 d3... times 10 to the power point, with d1 and the last digit not 0. No digits: zero.
class Digits {
  public:
    explicit Digits(const xdec& number);

    bool is_zero() const { return count_ == 0; }
    bool negative() const { return negative_; }
    int count() const { return count_; }
    int point() const { return point_; }  // -384 to 129
    int integer_count() const { return std::max(is_zero() ? 0 : point_, 0); }

    // Behind the point; negative when the number's own trailing zeros are in front of it.
    int fraction_count() const { return is_zero() ? 0 : count_ - point_; }

    // The digit with the given number of significant digits in front of it.
    char at(int place) const { return place >= 0 && place < count_ ? digits_[place] : '0'; }

    // Copies count digits, beginning at the one with place digits in front of it, zeros on both sides of the significant ones.
    char* copy(char* out, int place, int count) const;

    void multiply_by_power_of_ten(int power) { point_ += power; }

    // To the nearest number of the given count of significant digits, ties away from zero. A count below 0 leaves zero.
    void round_to_significant(int keep);
    void round_to_places(int places) { round_to_significant(point_ + places); }

  private:
    void strip_trailing_zeros() {
        while (count_ > 0 && digits_[count_ - 1] == '0') {
            --count_;
        }
    }

    std::array<char, kMaxDigits> storage_;
    char* digits_ = storage_.data();
    int count_ = 0;
    int point_ = 0;
    bool negative_;
};

Digits::Digits(const xdec& number) : negative_(number.sign == XDEC_SIGN_NEGATIVE) {
    if (!negative_ && number.sign != XDEC_SIGN_POSITIVE) {
        return;
    }
    const int pairs = std::clamp(number.length - 1, 0, int{XDEC_MAX_PAIRS});
    for (int i = 0; i < pairs; ++i) {
        const auto pair = static_cast<uint8_t>(number.pairs[i] - 1);
        write_pair(digits_ + 2 * i, std::min<uint32_t>(pair, 99));
    }
    count_ = 2 * pairs;
    point_ = 2 * (number.lead - kPointLeadByte);
    strip_trailing_zeros();
    while (count_ > 0 && *digits_ == '0') {
        ++digits_;
        --count_;
        --point_;
    }
}

char* Digits::copy(char* out, int place, int count) const {
    char* const end = out + count;
    const int in_front = std::clamp(-place, 0, count);
    std::memset(out, '0', static_cast<size_t>(in_front));
    out += in_front;
    const int first = std::max(place, 0);
    const int taken = std::clamp(count_ - first, 0, count - in_front);
    std::memcpy(out, digits_ + (taken > 0 ? first : 0), static_cast<size_t>(taken));
    out += taken;
    std::memset(out, '0', static_cast<size_t>(end - out));
    return end;
}

void Digits::round_to_significant(int keep) {
    if (keep >= count_) {
        return;
    }
    if (keep < 0) {
        count_ = 0;
        return;
    }
    const bool up = digits_[keep] >= '5';
    count_ = keep;
    if (!up) {
        strip_trailing_zeros();
        return;
    }
    while (count_ > 0 && digits_[count_ - 1] == '9') {
        --count_;
    }
    if (count_ == 0) {
        digits_[0] = '1';
        count_ = 1;
        ++point_;
    } else {
        ++digits_[count_ - 1];
    }
}

char* fill(const xdec_number_format& format, char* out, char c) {
    std::memset(out, c, format.width);
    return out + format.width;
}

char* copy_text(char* out, std::string_view text) { return out + text.copy(out, text.size()); }

// What stands around the digits of a picture, as far as it is written for this number.
struct Frame {
    std::string_view sign_in_front;
    std::string_view sign_behind;
    std::string_view currency_in_front;
    std::string_view currency_behind;

    size_t size() const {
        return sign_in_front.size() + sign_behind.size() + currency_in_front.size() + currency_behind.size();
    }
};

Frame frame_of(const xdec_number_format& format, bool negative) {
    const bool keeps_blank = !negative && !has_flag(format, kFillMode);
    const std::string_view minus_or_plus = negative ? "-" : "+";
    Frame frame;
    switch (format.sign) {
        case kSignInFront:
            frame.sign_in_front = minus_or_plus;
            break;
        case kSignBehind:
            frame.sign_behind = minus_or_plus;
            break;
        case kMinusBehind:
            frame.sign_behind = negative ? "-" : keeps_blank ? " " : "";
            break;
        case kAngleBrackets:
            frame.sign_in_front = negative ? "<" : "";
            frame.sign_behind = negative ? ">" : keeps_blank ? " " : "";
            break;
        default:
            frame.sign_in_front = negative ? "-" : "";
    }
    const std::string_view symbol(format.currency_symbol, format.currency_length);
    if (format.currency == kCurrencyInFront) {
        frame.currency_in_front = symbol;
    } else if (format.currency == kCurrencyBehind) {
        frame.currency_behind = symbol;
    }
    return frame;
}

// Writes blanks up to the field's width and then all that stands in front of the digits.
char* begin_field(const xdec_number_format& format, const Frame& frame, int body, char* out) {
    if (!has_flag(format, kFillMode)) {
        const size_t size = frame.size() + static_cast<size_t>(body);
        const size_t blanks = format.width - std::min<size_t>(format.width, size);
        std::memset(out, ' ', blanks);
        out += blanks;
    }
    return copy_text(copy_text(out, frame.sign_in_front), frame.currency_in_front);
}

char* end_field(const Frame& frame, char* out) { return copy_text(copy_text(out, frame.currency_behind), frame.sign_behind); }

// ---- Pictures of digits -----------------------------------------------------------------------------------------------------

// Which positions of a picture are written for one number.
struct Extent {
    int integer;   // the last ones in front of the point
    int fraction;  // the first ones behind it
    int separators;
};

int count_groups_behind(const xdec_number_format& format, int position) {
    int count = 0;
    for (int i = position + 1; i < format.integer_digits; ++i) {
        count += has_group_before(format, i) ? 1 : 0;
    }
    return count;
}

bool has_groups(const xdec_number_format& format) { return (format.groups[0] | format.groups[1]) != 0; }

Extent extent_of(const xdec_number_format& format, const Digits& digits) {
    Extent extent{digits.integer_count(), format.fraction_digits, 0};
    if (has_flag(format, kFillMode)) {
        extent.fraction = std::max<int>(format.fraction_shown, digits.fraction_count());
    }
    // B hides an integer part of zero, and the zeros that the format would write for it.
    if (extent.integer > 0 || !has_flag(format, kBlankWhenZero)) {
        extent.integer = std::max<int>(extent.integer, format.integer_shown);
    }
    if (extent.integer + extent.fraction == 0) {  // some digit is written of a zero: the last in front of the point if possible
        (format.integer_digits > 0 ? extent.integer : extent.fraction) = 1;
    }
    if (has_groups(format)) {
        extent.separators = count_groups_behind(format, format.integer_digits - extent.integer);
    }
    return extent;
}

char* write_integer(const xdec_number_format& format, const Digits& digits, const Extent& extent, char* out) {
    const int first_place = digits.integer_count() - extent.integer;
    if (extent.separators == 0) {
        return digits.copy(out, first_place, extent.integer);
    }
    const int first_position = format.integer_digits - extent.integer;
    for (int i = 0; i < extent.integer; ++i) {
        if (i > 0 && has_group_before(format, first_position + i)) {
            *out++ = format.group_separator;
        }
        *out++ = digits.at(first_place + i);
    }
    return out;
}

char* write_picture(const xdec_number_format& format, Digits& digits, char* out) {
    digits.multiply_by_power_of_ten(format.shift);
    digits.round_to_places(format.fraction_digits);
    if (digits.integer_count() > format.integer_digits) {
        return fill(format, out, '#');
    }
    if (digits.is_zero() && has_flag(format, kBlankWhenZero)) {
        return has_flag(format, kFillMode) ? out : fill(format, out, ' ');
    }
    const Extent extent = extent_of(format, digits);
    const Frame frame = frame_of(format, digits.negative());
    const bool point = has_flag(format, kHasPoint);
    out = begin_field(format, frame, extent.integer + extent.separators + extent.fraction + (point ? 1 : 0), out);
    out = write_integer(format, digits, extent, out);
    if (point) {
        *out++ = format.decimal_point;
        out = digits.copy(out, digits.is_zero() ? 0 : digits.point(), extent.fraction);
    }
    return end_field(frame, out);
}

// ---- Exponents --------------------------------------------------------------------------------------------------------------

constexpr int kMaxExponentText = 5;

int exponent_size(int exponent) { return exponent > -100 && exponent < 100 ? kMaxExponentText - 1 : kMaxExponentText; }

char* write_exponent(char* out, int exponent) {
    *out++ = 'E';
    *out++ = exponent < 0 ? '-' : '+';
    const int digits = exponent_size(exponent) - 2;
    write_digits(out, static_cast<uint64_t>(exponent < 0 ? -exponent : exponent), digits);
    return out + digits;
}

int exponent_of(const Digits& digits) { return digits.is_zero() ? 0 : digits.point() - 1; }

char* write_scientific(const xdec_number_format& format, Digits& digits, char* out) {
    digits.round_to_significant(1 + format.fraction_digits);
    const int exponent = exponent_of(digits);
    const Frame frame = frame_of(format, digits.negative());
    const bool point = has_flag(format, kHasPoint);
    out = begin_field(format, frame, 1 + (point ? 1 : 0) + format.fraction_digits + exponent_size(exponent), out);
    *out++ = digits.at(0);
    if (point) {
        *out++ = format.decimal_point;
        out = digits.copy(out, 1, format.fraction_digits);
    }
    return end_field(frame, write_exponent(out, exponent));
}

char* write_shortest(const xdec_number_format& format, const Digits& digits, char* out) {
    if (digits.negative()) {
        *out++ = '-';
    }
    const int integer = std::max(digits.integer_count(), 0), fraction = std::max(digits.fraction_count(), 0);
    const int size = (digits.negative() ? 1 : 0) + integer + (fraction > 0 ? 1 + fraction : 0);
    if (has_flag(format, kAlwaysExponent) || size > kShortestTextWidth) {
        *out++ = digits.at(0);
        if (digits.count() > 1) {
            *out++ = format.decimal_point;
            out = digits.copy(out, 1, digits.count() - 1);
        }
        return write_exponent(out, exponent_of(digits));
    }
    if (digits.is_zero()) {
        *out++ = '0';
        return out;
    }
    out = digits.copy(out, 0, integer);
    if (fraction > 0) {
        *out++ = format.decimal_point;
        out = digits.copy(out, digits.point(), fraction);
    }
    return out;
}

// ---- Roman and hexadecimal numerals: the number rounded to an integer -------------------------------------------------------

char* end_numeral(const xdec_number_format& format, std::string_view numeral, char* out) {
    if (!has_flag(format, kFillMode)) {
        const size_t blanks = format.width - numeral.size();
        std::memset(out, ' ', blanks);
        out += blanks;
    }
    return copy_text(out, numeral);
}

size_t digit_value(char c) { return static_cast<size_t>(c - '0'); }

char* write_roman(const xdec_number_format& format, Digits& digits, char* out) {
    digits.round_to_places(0);
    const int count = digits.integer_count();
    if (digits.negative() || count == 0 || count > kRomanPowers || (count == kRomanPowers && digits.at(0) > '3')) {
        return fill(format, out, '#');
    }
    char numeral[16];
    char* end = numeral;
    for (int i = 0; i < count; ++i) {
        end = copy_text(end, kRomanDigits[static_cast<size_t>(count - 1 - i)][digit_value(digits.at(i))]);
    }
    if (has_flag(format, kLowerCase)) {
        std::transform(numeral, end, numeral, [](char c) { return static_cast<char>(c - 'A' + 'a'); });
    }
    return end_numeral(format, {numeral, static_cast<size_t>(end - numeral)}, out);
}

// 75 hexadecimal digits have 300 bits, and the 91 decimal digits that may have to be looked at before that is known, 303.
constexpr int kWords = 5;
constexpr int kMaxHexDecimalDigits = 91;
constexpr int kHexDigitsPerWord = 16;
using Words = std::array<uint64_t, kWords>;

Words to_words(const Digits& digits) {
    Words words{};
    for (int i = 0; i < digits.integer_count(); ++i) {
        uint64_t carry = digit_value(digits.at(i));
        for (uint64_t& word : words) {
            const Uint128 product = Uint128{word} * 10 + carry;  // below 10 * 2^64
            word = static_cast<uint64_t>(product);
            carry = static_cast<uint64_t>(product >> 64);
        }
    }
    return words;
}

char* write_hexadecimal(const xdec_number_format& format, Digits& digits, char* out) {
    digits.round_to_places(0);
    const bool below_zero = digits.negative() && !digits.is_zero();
    if (below_zero || digits.integer_count() > kMaxHexDecimalDigits) {
        return fill(format, out, '#');
    }
    const Words words = to_words(digits);
    const char* const alphabet = has_flag(format, kLowerCase) ? "0123456789abcdef" : "0123456789ABCDEF";
    char numeral[kWords * kHexDigitsPerWord];
    for (int i = 0; i < kWords * kHexDigitsPerWord; ++i) {
        const int power = kWords * kHexDigitsPerWord - 1 - i;
        const uint64_t word = words[static_cast<size_t>(power / kHexDigitsPerWord)];
        numeral[i] = alphabet[word >> 4 * (power % kHexDigitsPerWord) & 0xF];
    }
    int count = kWords * kHexDigitsPerWord;
    while (count > format.integer_shown && numeral[kWords * kHexDigitsPerWord - count] == '0') {
        --count;
    }
    if (count > format.integer_digits) {
        return fill(format, out, '#');
    }
    return end_numeral(format, {numeral + kWords * kHexDigitsPerWord - count, static_cast<size_t>(count)}, out);
}

char* write_number(const xdec_number_format& format, const xdec& number, char* out) {
    Digits digits(number);
    switch (format.kind) {
        case kScientific:
            return write_scientific(format, digits, out);
        case kShortestText:
            return write_shortest(format, digits, out);
        case kRoman:
            return write_roman(format, digits, out);
        case kHexadecimal:
            return write_hexadecimal(format, digits, out);
        default:
            return write_picture(format, digits, out);
    }
}

}  // namespace
}  // namespace qzhost

int32_t xdec_to_char_with_fmt_low(qz_env*, const xdec* number, char* buffer, const xdec_number_format* parsed) {
    *qzhost::write_number(*parsed, *number, buffer) = '\0';
    return 0;
}

int32_t xdec_to_char_with_fmt(qz_env* env, const xdec* number, char* buffer, const char* format, uint32_t format_length) {
    xdec_number_format parsed;
    const int32_t code = xdec_to_char_fmt_parse(env, format, format_length, &parsed);
    if (code != 0) {
        *buffer = '\0';
        return code;
    }
    return xdec_to_char_with_fmt_low(env, number, buffer, &parsed);
}

int32_t xdec_to_char_with_nls(qz_env* env, const xdec* number, char* buffer, const char* format, uint32_t format_length,
                              const char* nls, uint32_t nls_length) {
    xdec_number_format parsed;
    const int32_t code = xdec_to_char_fmt_parse_with_nls(env, format, format_length, nls, nls_length, &parsed);
    if (code != 0) {
        *buffer = '\0';
        return code;
    }
    return xdec_to_char_with_fmt_low(env, number, buffer, &parsed);
}
