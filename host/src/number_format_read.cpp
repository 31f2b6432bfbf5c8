// Reading a decimal by a parsed number format.
//
// The text is checked against the format and brought into the plain form that xdec_from_char reads. Whatever the writer writes
// is read; beside that a text may leave out what does not change its value: blanks around it, leading digits, trailing digits
// behind the point, the currency, the sign of a positive number, and its group separators, of which it has all or none.
#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "host/src/number_format_record.h"
#include "host/src/roman_numerals.h"
#include "host/src/wide_integer.h"
#include "qzbifun/codes.h"
#include "qzhost/decimal.h"

namespace qzhost {
namespace {

constexpr int kMaxExponentDigits = 3;

std::string_view without_blanks(std::string_view text) {
    while (!text.empty() && text.front() == ' ') {
        text.remove_prefix(1);
    }
    while (!text.empty() && text.back() == ' ') {
        text.remove_suffix(1);
    }
    return text;
}

bool take_front(std::string_view& text, char c) {
    const bool found = !text.empty() && text.front() == c;
    text.remove_prefix(found ? 1 : 0);
    return found;
}

bool take_back(std::string_view& text, char c) {
    const bool found = !text.empty() && text.back() == c;
    text.remove_suffix(found ? 1 : 0);
    return found;
}

// The plain form of a number: a sign, digits, a point, digits, an exponent. A format has at most 75 digit positions.
class PlainNumber {
  public:
    void append(char c) { text_[length_++] = c; }
    void append_exponent(int exponent) {
        append('E');
        append(exponent < 0 ? '-' : '+');
        const int magnitude = exponent < 0 ? -exponent : exponent;  // at most 999
        append(static_cast<char>('0' + magnitude / 100));
        append(static_cast<char>('0' + magnitude / 10 % 10));
        append(static_cast<char>('0' + magnitude % 10));
    }
    int32_t to_decimal(xdec* number) const { return xdec_from_char(number, text_.data(), length_); }

  private:
    static constexpr size_t kMaxBytes = 1 + XDEC_FORMAT_MAX_BYTES + 1 + 5;
    std::array<char, kMaxBytes> text_;
    uint32_t length_ = 0;
};

// Takes the sign off the text; *negative tells it. False: half a pair of brackets.
bool take_sign(const xdec_number_format& format, std::string_view& text, bool& negative) {
    switch (format.sign) {
        case kSignBehind:
            negative = take_back(text, '-');
            if (!negative) {
                take_back(text, '+');
            }
            return true;
        case kMinusBehind:
            negative = take_back(text, '-');
            return true;
        case kAngleBrackets:
            negative = take_front(text, '<');
            return take_back(text, '>') == negative;
        default:
            negative = take_front(text, '-');
            if (!negative) {
                take_front(text, '+');
            }
            return true;
    }
}

// Takes the currency symbol off the text if it is there, and blanks between it and the digits.
void take_currency(const xdec_number_format& format, std::string_view& text) {
    const std::string_view symbol = without_blanks({format.currency_symbol, format.currency_length});
    if (format.currency == kCurrencyInFront && text.starts_with(symbol)) {
        text.remove_prefix(symbol.size());
        text = without_blanks(text);
    } else if (format.currency == kCurrencyBehind && text.ends_with(symbol)) {
        text.remove_suffix(symbol.size());
        text = without_blanks(text);
    }
}

// The group separators of a text, one bit for each digit that has one in front of it.
using GroupBits = std::array<uint64_t, 2>;

GroupBits shifted_down(const uint64_t (&bits)[2], int count) {
    const Uint128 shifted = (Uint128{bits[1]} << 64 | bits[0]) >> count;  // count is at most XDEC_FORMAT_MAX_BYTES
    return {static_cast<uint64_t>(shifted), static_cast<uint64_t>(shifted >> 64)};
}

// Reads the digits in front of the point; the count of them, or -1.
int read_integer(const xdec_number_format& format, std::string_view& text, PlainNumber& plain) {
    GroupBits groups{};
    int count = 0;
    size_t i = 0;
    for (; i < text.size(); ++i) {
        const char c = text[i];
        if (is_digit(c)) {
            if (count == format.integer_digits) {
                return -1;
            }
            plain.append(c);
            ++count;
        } else if (c == format.group_separator) {
            uint64_t& word = groups[static_cast<size_t>(count / 64)];
            const uint64_t bit = uint64_t{1} << count % 64;
            if ((word & bit) != 0) {
                return -1;
            }
            word |= bit;
        } else {
            break;
        }
    }
    text.remove_prefix(i);
    if ((groups[0] | groups[1]) != 0) {
        GroupBits wanted = shifted_down(format.groups, format.integer_digits - count);
        wanted[0] &= ~uint64_t{1};  // a separator in front of the first digit is not written
        if (groups != wanted) {
            return -1;
        }
    }
    return count;
}

// Reads a point and the digits behind it, if they are there; the count of digits, or -1.
int read_fraction(const xdec_number_format& format, std::string_view& text, PlainNumber& plain) {
    if (!has_flag(format, kHasPoint) || !take_front(text, format.decimal_point)) {
        return 0;
    }
    plain.append('.');
    int count = 0;
    while (!text.empty() && is_digit(text.front())) {
        if (count == format.fraction_digits) {
            return -1;
        }
        plain.append(text.front());
        text.remove_prefix(1);
        ++count;
    }
    return count;
}

// Reads E, a sign and one to three digits.
bool read_exponent(std::string_view& text, PlainNumber& plain) {
    if (!take_front(text, 'E') && !take_front(text, 'e')) {
        return false;
    }
    const bool negative = take_front(text, '-');
    if (!negative) {
        take_front(text, '+');
    }
    int exponent = 0, digits = 0;
    for (; !text.empty() && is_digit(text.front()) && digits < kMaxExponentDigits; ++digits) {
        exponent = exponent * 10 + (text.front() - '0');
        text.remove_prefix(1);
    }
    plain.append_exponent(negative ? -exponent : exponent);
    return digits > 0;
}

int32_t read_picture(const xdec_number_format& format, std::string_view text, xdec* number) {
    if (text.empty()) {
        return has_flag(format, kBlankWhenZero) ? 0 : EC_NUMBER_TEXT_INVALID;
    }
    bool negative = false;
    if (!take_sign(format, text, negative)) {
        return EC_NUMBER_TEXT_INVALID;
    }
    take_currency(format, text);
    PlainNumber plain;
    if (negative) {
        plain.append('-');
    }
    const int integer = read_integer(format, text, plain);
    const int fraction = integer < 0 ? -1 : read_fraction(format, text, plain);
    if (fraction < 0 || integer + fraction == 0) {
        return EC_NUMBER_TEXT_INVALID;
    }
    if (format.kind == kScientific && !read_exponent(text, plain)) {
        return EC_NUMBER_TEXT_INVALID;
    }
    if (!text.empty()) {
        return EC_NUMBER_TEXT_INVALID;
    }
    if (format.shift > 0) {
        plain.append_exponent(-int{format.shift});
    }
    return plain.to_decimal(number);
}

// TM: any decimal number, with the format's decimal character.
constexpr size_t kMaxShortestText = 272;  // every decimal's digits and zeros, and then some

int32_t read_shortest(const xdec_number_format& format, std::string_view text, xdec* number) {
    if (text.empty() || text.size() > kMaxShortestText) {
        return EC_NUMBER_TEXT_INVALID;
    }
    std::array<char, kMaxShortestText> plain;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '.' && format.decimal_point != '.') {
            return EC_NUMBER_TEXT_INVALID;
        }
        plain[i] = c == format.decimal_point ? '.' : c;
    }
    return xdec_from_char(number, plain.data(), static_cast<uint32_t>(text.size()));
}

// ---- Numerals ---------------------------------------------------------------------------------------------------------------

bool starts_with_ignoring_case(std::string_view text, std::string_view upper_case) {
    return text.size() >= upper_case.size() &&
           std::equal(upper_case.begin(), upper_case.end(), text.begin(), [](char a, char b) { return a == to_upper(b); });
}

// Takes the longest numeral of one power of ten off the text and answers its digit.
int take_roman_digit(std::string_view& text, const std::array<std::string_view, 10>& numerals) {
    int digit = 0;
    size_t length = 0;
    for (size_t i = 1; i < numerals.size(); ++i) {
        if (numerals[i].size() > length && starts_with_ignoring_case(text, numerals[i])) {
            digit = static_cast<int>(i);
            length = numerals[i].size();
        }
    }
    text.remove_prefix(length);
    return digit;
}

int32_t read_roman(std::string_view text, xdec* number) {
    int value = 0;
    for (size_t power = kRomanPowers; power-- > 0;) {
        value = value * 10 + take_roman_digit(text, kRomanDigits[power]);
    }
    if (value == 0 || !text.empty()) {
        return EC_NUMBER_TEXT_INVALID;
    }
    return xdec_from_int64(number, value, XDEC_SCALE_NONE);
}

int hex_value(char c) {
    if (is_digit(c)) {
        return c - '0';
    }
    const char upper = to_upper(c);
    return upper >= 'A' && upper <= 'F' ? upper - 'A' + 10 : -1;
}

// Hexadecimal digits to decimal ones, in base 10^18. 75 of the former are at most 91 of the latter.
constexpr int kLimbDigits = 18;
constexpr uint64_t kLimbBase = 1'000'000'000'000'000'000;
constexpr size_t kLimbs = 6;
using Limbs = std::array<uint64_t, kLimbs>;  // least significant first

void multiply_and_add(Limbs& limbs, uint64_t factor, uint64_t addend) {
    for (uint64_t& limb : limbs) {
        const Uint128 product = Uint128{limb} * factor + addend;  // below 16 * 10^18 + 16, which even 64 bits hold
        limb = static_cast<uint64_t>(product % kLimbBase);
        addend = static_cast<uint64_t>(product / kLimbBase);
    }
}

// A decimal keeps 22 pairs of digits, counted from the point. A numeral of more would lose its last digits.
bool fits_a_decimal(std::string_view digits) {
    const size_t first = digits.find_first_not_of('0'), last = digits.find_last_not_of('0');
    if (first == std::string_view::npos) {
        return true;
    }
    const size_t first_pair = (digits.size() - 1 - first) / 2, last_pair = (digits.size() - 1 - last) / 2;
    return first_pair - last_pair < XDEC_MAX_PAIRS;
}

int32_t read_hexadecimal(const xdec_number_format& format, std::string_view text, xdec* number) {
    if (text.empty() || text.size() > format.integer_digits) {
        return EC_NUMBER_TEXT_INVALID;
    }
    Limbs limbs{};
    for (const char c : text) {
        const int digit = hex_value(c);
        if (digit < 0) {
            return EC_NUMBER_TEXT_INVALID;
        }
        multiply_and_add(limbs, 16, static_cast<uint64_t>(digit));
    }
    std::array<char, kLimbs * kLimbDigits> digits;
    for (size_t i = 0; i < digits.size(); ++i) {
        uint64_t& limb = limbs[i / kLimbDigits];
        digits[digits.size() - 1 - i] = static_cast<char>('0' + limb % 10);
        limb /= 10;
    }
    if (!fits_a_decimal({digits.data(), digits.size()})) {
        return EC_DATA_OVERFLOW;
    }
    return xdec_from_char(number, digits.data(), static_cast<uint32_t>(digits.size()));
}

int32_t read_number(const xdec_number_format& format, std::string_view text, xdec* number) {
    switch (format.kind) {
        case kShortestText:
            return read_shortest(format, text, number);
        case kRoman:
            return read_roman(text, number);
        case kHexadecimal:
            return read_hexadecimal(format, text, number);
        default:
            return read_picture(format, text, number);
    }
}

}  // namespace
}  // namespace qzhost

int32_t char_to_dec_with_fmt_low(qz_env*, const char* text, uint32_t text_length, const xdec_number_format* parsed,
                                 xdec* number) {
    xdec_fill_zero(number);
    const void* const nul = text_length > 0 ? std::memchr(text, '\0', text_length) : nullptr;
    const size_t length = nul != nullptr ? static_cast<size_t>(static_cast<const char*>(nul) - text) : text_length;
    return qzhost::read_number(*parsed, qzhost::without_blanks({text, length}), number);
}

int32_t char_to_dec_with_fmt(qz_env* env, const char* text, uint16_t text_length, const char* format, uint16_t format_length,
                             xdec* number) {
    xdec_number_format parsed;
    const int32_t code = xdec_to_char_fmt_parse(env, format, format_length, &parsed);
    if (code != 0) {
        xdec_fill_zero(number);
        return code;
    }
    return char_to_dec_with_fmt_low(env, text, text_length, &parsed, number);
}
