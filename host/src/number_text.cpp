// Text of double-precision numbers.
#include "qzhost/number_text.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <limits>
#include <system_error>

#include "host/src/decimal_digits.h"
#include "host/src/powers_of_ten.h"
#include "host/src/shortest_decimal.h"
#include "qzbifun/codes.h"

namespace qzhost {
namespace {

// ---- Double to text ---------------------------------------------------------------------------------------------------------

constexpr int kMantissaBits = 52;
constexpr int kMaxBinaryExponent = 1023;
constexpr uint64_t kMantissaMask = (uint64_t{1} << kMantissaBits) - 1;
constexpr uint64_t kExponentMask = 0x7FF;

constexpr int kLowestFixedExponent = -4;  // of the first significant digit; the texts of most languages change over here
constexpr int kHighestFixedExponent = 15;

char* write_exponent(char* out, int exponent) {
    *out++ = 'E';
    *out++ = exponent < 0 ? '-' : '+';
    const int magnitude = exponent < 0 ? -exponent : exponent;  // at most 324
    const int digits = magnitude >= 100 ? 3 : 2;
    write_digits(out, static_cast<uint64_t>(magnitude), digits);
    return out + digits;
}

// The digits of a number as 17 bytes from 0 to 9, from its first one on, with zeros behind its last: one, and 16 in two words.
struct DigitBytes {
    uint8_t first;
    uint64_t upper;
    uint64_t lower;
    int count;  // up to the last that is not 0

    explicit DigitBytes(uint64_t digits, int digit_count);

    Uint128 rest() const { return Uint128{lower} << 64 | upper; }
};

constexpr int kMaxDigits = 17;
constexpr uint64_t kTenToThe8 = 100'000'000;
constexpr uint64_t kTenToThe16 = kTenToThe8 * kTenToThe8;

DigitBytes::DigitBytes(uint64_t digits, int digit_count) {
    const uint64_t aligned = digits * kPowersOfTen[static_cast<size_t>(kMaxDigits - digit_count)];  // below 10^17
    const uint64_t behind_first = aligned % kTenToThe16;
    first = static_cast<uint8_t>(aligned / kTenToThe16);
    upper = eight_digits(static_cast<uint32_t>(behind_first / kTenToThe8));
    lower = eight_digits(static_cast<uint32_t>(behind_first % kTenToThe8));
    const int zeros = lower != 0 ? std::countl_zero(lower) / 8 : upper != 0 ? 8 + std::countl_zero(upper) / 8 : 16;
    count = kMaxDigits - zeros;
}

// Writes 16 digits; the caller counts the ones that are wanted.
void write_16_digits(char* out, Uint128 digits) {
    const uint64_t text[2] = {static_cast<uint64_t>(digits) | kEightZeros, static_cast<uint64_t>(digits >> 64) | kEightZeros};
    std::memcpy(out, text, sizeof text);
}

// Writes digits * 10^exponent and answers the end. Every part is written in full width and cut by what is written behind it, so
// that nothing depends on how many digits there are.
char* write_decimal(char* out, ShortestDecimal decimal) {
    const int digit_count = count_digits(decimal.digits);  // at most 17
    const int exponent = decimal.exponent + digit_count - 1;
    const DigitBytes digits(decimal.digits, digit_count);
    const char first = static_cast<char>('0' + digits.first);

    if (exponent < kLowestFixedExponent || exponent > kHighestFixedExponent) {
        out[0] = first;
        out[1] = '.';
        write_16_digits(out + 2, digits.rest());
        return write_exponent(out + (digits.count > 1 ? digits.count + 1 : 1), exponent);
    }
    if (exponent < 0) {
        std::memcpy(out, "0.000", 5);
        out += 1 - exponent;
        out[0] = first;
        write_16_digits(out + 1, digits.rest());
        return out + digits.count;
    }
    out[0] = first;
    write_16_digits(out + 1, digits.rest());
    const int integer_digits = exponent + 1;  // 1 to 16
    if (digits.count <= integer_digits) {
        return out + integer_digits;
    }
    out[integer_digits] = '.';
    write_16_digits(out + integer_digits + 1, digits.rest() >> 8 * exponent);
    return out + digits.count + 1;
}

#if defined(__SSE4_1__)

// Where the characters of a text without an exponent come from: for each of its first 32 bytes the place of a digit, or none
// and a character that stands there whatever the number. Text and place of the point are as long as they are: a digit beyond
// the last is written too, and cut off by the length.
struct FixedLayout {
    uint8_t front_digit[16];  // of digits 0 to 15
    uint8_t front_other[16];
    uint8_t back_digit[16];  // of digits 1 to 16
    uint8_t back_other[16];
};

constexpr int kLayouts = kHighestFixedExponent - kLowestFixedExponent + 1;

alignas(64) constexpr std::array<std::array<FixedLayout, 2>, kLayouts> kFixedLayouts = [] {
    std::array<std::array<FixedLayout, 2>, kLayouts> layouts{};
    constexpr uint8_t kNone = 0x80;
    for (int i = 0; i < kLayouts; ++i) {
        const int exponent = i + kLowestFixedExponent;
        const int zeros = exponent < 0 ? -exponent : 0;  // in front of the first digit
        for (int negative = 0; negative < 2; ++negative) {
            FixedLayout& layout = layouts[static_cast<size_t>(i)][static_cast<size_t>(negative)];
            for (int at = 0; at < 32; ++at) {
                const int place = at - negative;  // behind the sign
                const int point = exponent < 0 ? 1 : exponent + 1;
                const int digit = place - zeros - (place > point ? 1 : 0);
                const bool other = place < 0 || place == point || digit < 0 || digit >= kMaxDigits;
                const int character = place < 0 ? '-' : place == point ? '.' : digit < 0 ? '0' : 0;
                const size_t lane = static_cast<size_t>(at) % 16;
                (at < 16 ? layout.front_digit : layout.back_digit)[lane] =
                    other ? kNone : static_cast<uint8_t>(at < 16 ? digit : digit - 1);
                (at < 16 ? layout.front_other : layout.back_other)[lane] = static_cast<uint8_t>(other ? character : 0);
            }
        }
    }
    return layouts;
}();

__m128i load_lanes(const uint8_t* at) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at)); }

// Writes a number of 17 digits; exponent is that of the first one. Neither the sign, nor the place of the point, nor the count of
// digits is branched on. 32 bytes are written.
char* write_fixed(char* out, bool negative, uint64_t aligned, int exponent) {
    const uint64_t upper = aligned / kTenToThe8;
    const uint64_t first = upper / kTenToThe8;
    const __m128i rest = sixteen_digits(upper - first * kTenToThe8, aligned - upper * kTenToThe8);
    const __m128i front = _mm_or_si128(_mm_slli_si128(rest, 1), _mm_cvtsi64_si128(static_cast<int64_t>(first)));
    const auto zero = static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(rest, _mm_setzero_si128())));
    const int count = highest_bit((~zero & 0xFFFF) << 1 | 1) + 1;  // up to the last that is not 0

    const FixedLayout& layout = kFixedLayouts[static_cast<size_t>(exponent - kLowestFixedExponent)][negative];
    const __m128i ascii = _mm_set1_epi8('0');
    const __m128i head = _mm_or_si128(_mm_shuffle_epi8(_mm_or_si128(front, ascii), load_lanes(layout.front_digit)),
                                      load_lanes(layout.front_other));
    const __m128i tail =
        _mm_or_si128(_mm_shuffle_epi8(_mm_or_si128(rest, ascii), load_lanes(layout.back_digit)), load_lanes(layout.back_other));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), head);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 16), tail);
    const int integer_digits = exponent + 1;
    const int zeros = std::max(0, -exponent);
    return out + negative + (count > integer_digits ? count + zeros + 1 : integer_digits);
}

#endif

char* write_word(char* out, const char* word) { return std::copy(word, word + std::strlen(word), out); }

// A double that is no usual one.
[[gnu::noinline]] char* write_any(char* out, bool negative, uint64_t mantissa, uint64_t exponent) {
    if (exponent == kExponentMask && mantissa != 0) {
        return write_word(out, "NaN");
    }
    if (negative) {
        *out++ = '-';
    }
    if (exponent == kExponentMask) {
        return write_word(out, "Infinity");
    }
    if ((exponent | mantissa) == 0) {
        *out = '0';
        return out + 1;
    }
    return write_decimal(out, exact_shortest_decimal(mantissa, static_cast<int>(exponent)));
}

char* write_double(char* out, double value) {
    const auto bits = std::bit_cast<uint64_t>(value);
    const bool negative = bits >> 63 != 0;
    const uint64_t mantissa = bits & kMantissaMask;
    const uint64_t exponent = bits >> kMantissaBits & kExponentMask;
    if (exponent - 1 >= kExponentMask - 1) [[unlikely]] {
        return write_any(out, negative, mantissa, exponent);
    }
    const ShortestDecimal decimal = shortest_decimal(mantissa, static_cast<int>(exponent));
#if defined(__SSE4_1__)
    const uint64_t is_short = (decimal.digits - kTenToThe16) >> 63;  // of 16 digits: as often as not
    const int first_exponent = decimal.exponent + kMaxDigits - 1 - static_cast<int>(is_short);
    if (first_exponent >= kLowestFixedExponent && first_exponent <= kHighestFixedExponent) [[likely]] {
        return write_fixed(out, negative, decimal.digits * (1 + 9 * is_short), first_exponent);
    }
#endif
    *out = '-';
    return write_decimal(out + negative, decimal);
}

// ---- Text to double ---------------------------------------------------------------------------------------------------------

constexpr int kMaxExactDigits = 19;                // digits that surely fit 64 bits
constexpr uint64_t kMaxExactInteger = 1ull << 53;  // every integer up to here is a double
constexpr double kExactPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                   1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int64_t kMaxExactPower = 22;
constexpr int64_t kExponentCeiling = 1'000'000'000'000;  // an exponent beyond stays here: it outweighs any count of digits

bool is_digit(char c) { return static_cast<unsigned char>(c - '0') < 10; }

// A number's text, taken apart. digits holds the first kMaxExactDigits significant digits.
struct NumberText {
    const char* begin;  // the first byte behind the sign
    const char* end;
    uint64_t digits = 0;
    int64_t digit_count = 0;  // significant digits in all
    int64_t exponent = 0;     // power of ten of the last of all digits
    bool negative = false;
};

// Takes up the digits from p on and answers where they end.
const char* scan_digits(const char* p, const char* end, NumberText& number) {
    if (number.digit_count == 0) {
        while (p != end && *p == '0') {
            ++p;
        }
    }
    for (uint64_t text = 0; end - p >= 8 && number.digit_count + 8 <= kMaxExactDigits; p += 8) {
        std::memcpy(&text, p, sizeof text);
        if (!are_8_digits(text)) {
            break;
        }
        number.digits = number.digits * kTenToThe8 + read_8_digits(text);
        number.digit_count += 8;
    }
    for (; p != end && is_digit(*p); ++p) {
        if (number.digit_count < kMaxExactDigits) {
            number.digits = number.digits * 10 + static_cast<uint64_t>(*p - '0');  // below 10^19
        }
        ++number.digit_count;
    }
    return p;
}

// Reads the exponent behind an E; false when there is none.
bool scan_exponent(const char* p, const char* end, NumberText& number) {
    bool negative = false;
    if (p != end && (*p == '+' || *p == '-')) {
        negative = *p++ == '-';
    }
    if (p == end || !is_digit(*p)) {
        return false;
    }
    int64_t exponent = 0;
    for (; p != end && is_digit(*p); ++p) {
        exponent = std::min(exponent * 10 + (*p - '0'), kExponentCeiling);
    }
    number.exponent += negative ? -exponent : exponent;
    number.end = p;
    return true;
}

bool scan_number(const char* p, const char* end, NumberText& number) {
    if (p != end && (*p == '+' || *p == '-')) {
        number.negative = *p++ == '-';
    }
    number.begin = p;
    p = scan_digits(p, end, number);
    std::ptrdiff_t written = p - number.begin;
    if (p != end && *p == '.') {
        const char* const fraction = p + 1;
        p = scan_digits(fraction, end, number);
        number.exponent = fraction - p;
        written += p - fraction;
    }
    number.end = p;
    if (written == 0) {
        return false;
    }
    if (p != end && (*p == 'E' || *p == 'e')) {
        return scan_exponent(p + 1, end, number);
    }
    return true;
}

// The double nearest to digits * 10^exponent by one or two multiplications with a 128-bit power of ten. The method is that of
// Michael Eisel and Daniel Lemire; within these exponents its product is always exact enough, the result is never subnormal nor
// too large, and a tie is only possible where the power itself is exact.
constexpr int64_t kLowestProductExponent = -27;
constexpr int64_t kHighestProductExponent = 55;
constexpr uint64_t kRoundingBits = 0x1FF;  // of the product's upper word: what is cut off behind a mantissa and a rounding bit

double nearest_by_product(uint64_t digits, int exponent) {
    const int zeros = std::countl_zero(digits);
    digits <<= zeros;
    const Significand& power = significand_of_power_of_ten(exponent);
    Uint128 product = Uint128{digits} * power.high;
    if ((static_cast<uint64_t>(product >> 64) & kRoundingBits) == kRoundingBits) {
        product += static_cast<uint64_t>(Uint128{digits} * power.low >> 64);  // below 2^128: the factors' upper words are
    }
    const auto upper = static_cast<uint64_t>(product >> 64), lower = static_cast<uint64_t>(product);
    const int top_bit = static_cast<int>(upper >> 63);
    const int shift = top_bit + 64 - kMantissaBits - 3;
    uint64_t mantissa = upper >> shift;  // 54 bits: one more than a double has
    const bool tie = lower <= 1 && exponent >= -4 && exponent <= 23 && (mantissa & 3) == 1 && mantissa << shift == upper;
    if (tie) {
        mantissa &= ~uint64_t{1};  // to the even one
    }
    mantissa = (mantissa + (mantissa & 1)) >> 1;  // at most 2^53, which the addition below carries into the exponent
    // Of the leading bit: 10^exponent has floor_log2_of_power_of_ten(exponent), the digits 63 - zeros.
    const int binary_exponent = floor_log2_of_power_of_ten(exponent) + 63 - zeros + top_bit;
    const uint64_t bits = (static_cast<uint64_t>(binary_exponent + kMaxBinaryExponent - 1) << kMantissaBits) + mantissa;
    return std::bit_cast<double>(bits);
}

// The magnitude of a scanned number; an infinity when it is too large for a double.
double magnitude_of(const NumberText& number) {
    if (number.digit_count == 0) {
        return 0.0;
    }
    if (number.digit_count <= kMaxExactDigits) {
        // Both operands are exact, so that the one rounding of the operation is the right one.
        if (number.digits <= kMaxExactInteger && number.exponent <= 0 && number.exponent >= -kMaxExactPower) {
            return static_cast<double>(number.digits) / kExactPowers[-number.exponent];
        }
        if (number.exponent >= kLowestProductExponent && number.exponent <= kHighestProductExponent) {
            return nearest_by_product(number.digits, static_cast<int>(number.exponent));
        }
    }
    double value = 0.0;
    const std::from_chars_result result = std::from_chars(number.begin, number.end, value);
    if (result.ec == std::errc::result_out_of_range) {
        return number.digit_count + number.exponent > 0 ? std::numeric_limits<double>::infinity() : 0.0;
    }
    return value;
}

}  // namespace
}  // namespace qzhost

int32_t qz_dou2char(double value, int32_t, char* buffer) {
    char* const end = qzhost::write_double(buffer, value);
    *end = '\0';
    return static_cast<int32_t>(end - buffer);
}

int32_t utl_digit_from_char(const char* text, uint32_t length, double* value, int32_t) {
    using namespace qzhost;
    const char* p = text;
    const char* end = text + length;
    while (p != end && *p == ' ') {
        ++p;
    }
    NumberText number{};
    if (!scan_number(p, end, number)) {
        return EC_INVALID_ARGUMENT;
    }
    for (p = number.end; p != end && *p != '\0'; ++p) {
        if (*p != ' ') {
            return EC_INVALID_ARGUMENT;
        }
    }
    const double magnitude = magnitude_of(number);
    if (magnitude > std::numeric_limits<double>::max()) {
        return EC_DATA_OVERFLOW;
    }
    *value = number.negative ? -magnitude : magnitude;
    return 0;
}
