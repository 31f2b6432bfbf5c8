// bitand against binary numbers made digit by digit, and its exported pieces on any bytes.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "qzbifun/codes.h"
#include "qzbifun/qzbifun.h"
#include "qzhost/decimal.h"
#include "tests/support/differential.h"
#include "tests/support/guarded.h"
#include "tests/support/host.h"
#include "tests/support/log_lines.h"
#include "tests/support/test_seed.h"
#include "tests/support/vector.h"

namespace {

using support::Answer;
using support::Differential;
using support::Random;
using support::Rules;

// 192 bits, two's complement, the least significant first.
using Binary = std::array<bool, 192>;

Binary negated(Binary x) {
    bool carry = true;
    for (bool& bit : x) {
        const bool flipped = !bit;
        bit = flipped != carry;
        carry = flipped && carry;
    }
    return x;
}

xdec decimal(const std::string& text) {
    xdec value;
    EXPECT_EQ(xdec_from_char(&value, text.data(), static_cast<uint32_t>(text.size())), 0) << text;
    return value;
}

std::string text_of(const xdec& value) {
    char text[XDEC_TEXT_SIZE];
    uint32_t length = 0;
    EXPECT_EQ(xdec_to_char_with_zero(&value, text, sizeof text, 0, 0, &length), 0);
    return {text, length};
}

// The integer part of a decimal's text: each digit is ten times what is there, and itself.
Binary binary(const std::string& text) {
    Binary bits{};
    for (const char c : text.substr(0, text.find('.'))) {
        if (c == '-') continue;
        int carry = c - '0';
        for (bool& bit : bits) {
            carry += 10 * bit;
            bit = carry % 2 != 0;
            carry /= 2;
        }
    }
    return text[0] == '-' ? negated(bits) : bits;
}

// The way back: each bit is twice the digits that are there, and itself.
std::string text_of(Binary bits) {
    const bool negative = bits.back();
    if (negative) bits = negated(bits);
    std::string digits = "0";  // the last in front
    for (size_t i = bits.size(); i-- > 0;) {
        int carry = bits[i];
        for (char& digit : digits) {
            carry += 2 * (digit - '0');
            digit = static_cast<char>('0' + carry % 10);
            carry /= 10;
        }
        if (carry != 0) digits += static_cast<char>('0' + carry);
    }
    std::reverse(digits.begin(), digits.end());
    return (negative ? "-" : "") + digits;
}

xdec both(const xdec& x, const xdec& y) {
    Binary bits = binary(text_of(x));
    const Binary other = binary(text_of(y));
    for (size_t i = 0; i < bits.size(); ++i) bits[i] = bits[i] && other[i];
    return decimal(text_of(bits));
}

bool is_too_long(const xdec& x) { return x.digits < x.scale || x.digits - x.scale > 40; }
bool is_word(const xdec& x) { return xdec_in_ulint64(&x) != 0; }

Answer<xdec> bit_and(const xdec& row, const xdec& constant) {
    xdec whole = constant;
    xdec_trunc_scale(&whole);
    if (whole.sign == XDEC_SIGN_ZERO) return whole;
    if (!is_word(whole) && xdec_cmp(&row, &whole) == 0) return row;
    if (is_too_long(row)) return Answer<xdec>::error(EC_DATA_OVERFLOW, {});
    return both(row, whole);
}

// Whole numbers of 1 to 40 digits, of both signs, some with a fraction; powers of two and their neighbours.
xdec draw_decimal(Random& random) {
    std::string text = random.chance(50) ? "-" : "";
    if (random.chance(25)) {
        Binary bits{};
        bits[random.below(132)] = true;
        text += text_of(bits);
        const xdec power = decimal(text);
        xdec one;
        xdec_fill_one(&one);
        xdec result;
        const uint32_t way = random.below(3);
        if (way == 0) return power;
        (way == 1 ? xdec_add : xdec_sub)(&power, &one, &result);
        return result;
    }
    static constexpr uint32_t kDigits[] = {1, 3, 18, 19, 20, 21, 39, 40};
    for (uint32_t i = kDigits[random.below(8)]; i > 0; --i) text += static_cast<char>('0' + random.below(10));
    if (random.chance(20)) text += random.chance(50) ? ".5" : ".00";
    return decimal(text);
}

// A row may also be longer than what is taken.
xdec draw_row(Random& random) { return random.chance(2) ? decimal("1" + std::string(40, '7')) : draw_decimal(random); }

TEST(BitAnd, IsThatOfBinaryNumbersInBothForms) {
    Differential<xdec, xdec, xdec> av;
    av.batches = 40;
    av.rules.flag_reads_constants = false;
    av.rules.valid = Rules::Valid::taken;
    av.add("av", "bbit_and_for_dec_av", bbit_and_for_dec_av);
    av.draw<0>(draw_row);
    av.draw<1>(draw_decimal);
    EXPECT_EQ(av.run(bit_and), "");
    Differential<xdec, xdec, xdec> va;
    va.batches = av.batches;
    va.rules = av.rules;
    va.add("va", "bbit_and_for_dec_va", bbit_and_for_dec_va);
    va.draw<0>(draw_decimal);
    va.draw<1>(draw_row);
    EXPECT_EQ(va.run([](const xdec& constant, const xdec& row) { return bit_and(row, constant); }), "");
}

TEST(BitAnd, AnyThirtyBytesAreReadInside) {
    const uint32_t seed = support::test_seed();
    Random random(seed);
    support::Host host;
    const auto any_bytes = [&] {
        xdec value;
        auto* const bytes = reinterpret_cast<uint8_t*>(&value);
        for (size_t k = 0; k < sizeof value; ++k) bytes[k] = static_cast<uint8_t>(random.next());
        if (random.chance(70)) bytes[0] = random.chance(50) ? XDEC_SIGN_POSITIVE : XDEC_SIGN_NEGATIVE;
        if (random.chance(70)) bytes[2] = 0;
        return value;
    };
    for (int i = 0; i < 3000; ++i) {
        support::Vector x = support::Vector::of<xdec>(host, {random.chance(50) ? any_bytes() : draw_decimal(random)});
        support::Constant y = support::Constant::of(random.chance(50) ? any_bytes() : draw_decimal(random));
        support::Vector result = support::Vector::result<xdec>(host, 1);
        const int32_t code = bbit_and_for_dec_av(host.env(), host.mem(), x.col(), y.scalar(), result.col(), 1);
        ASSERT_TRUE(code == 0 || code == EC_DATA_OVERFLOW) << code << " seed " << seed;
        ASSERT_EQ(result.overrun(), "") << seed;
    }
}

TEST(BitAnd, ARowThatIsTooLongIsLoggedAndPushedNowhere) {
    support::Host host;
    const support::Vector x = support::Vector::of<xdec>(host, {decimal("1e40")});
    for (const char* const other : {"5", "-5", "18446744073709551616"}) {
        support::Constant y = support::Constant::of(decimal(other));
        const support::Vector result = support::Vector::result<xdec>(host, 1);
        const support::LogLines log;
        const int32_t code = bbit_and_for_dec_av(host.env(), host.mem(), x.col(), y.scalar(), result.col(), 1);
        EXPECT_EQ(code, EC_DATA_OVERFLOW);
        EXPECT_EQ(print(host.errors()), "empty");
        EXPECT_EQ(log.lines(), (std::vector<support::LogLine>{{EC_DATA_OVERFLOW, "bit_and.cpp"}})) << other;
        EXPECT_EQ(result.valid(0), 1);
        EXPECT_TRUE(result.value_untouched(0));
    }
}

// With a flag of 1 neither the valid bytes nor the selection of the vector are looked at.
TEST(BitAnd, AConstantZeroTrustsTheFlag) {
    support::Host host;
    const support::Vector x = support::Vector::of<xdec>(host, {std::nullopt, std::nullopt});
    uint16_t astray[] = {65535, 65535};
    x.col()->all_valid = 1;
    x.col()->sel = astray;
    support::Constant zero = support::Constant::of(decimal("0"));
    const support::Vector result = support::Vector::result<xdec>(host, 2);
    ASSERT_EQ(bbit_and_for_dec_av(host.env(), host.mem(), x.col(), zero.scalar(), result.col(), 2), 0);
    EXPECT_EQ(result.col()->all_valid, 1u);
    for (uint32_t row = 0; row < 2; ++row) {
        EXPECT_EQ(result.valid(row), 1);
        EXPECT_EQ(text_of(result.get<xdec>(row)), "0");
    }
}

TEST(BitAndPieces, CountsFromOutsideReachNoFurtherThan40Digits) {
    for (const int32_t count : {INT32_MIN, -1, 0, 1, 40, 41, 1000, INT32_MAX}) {
        support::Guarded x(BIFUN_HEX_DIGITS, 15);
        support::Guarded y(BIFUN_HEX_DIGITS, 15);
        xdec result;
        for (const uint8_t x_sign : std::initializer_list<uint8_t>{XDEC_SIGN_POSITIVE, XDEC_SIGN_NEGATIVE, XDEC_SIGN_ZERO, 7}) {
            for (const uint8_t y_sign : std::initializer_list<uint8_t>{XDEC_SIGN_POSITIVE, XDEC_SIGN_NEGATIVE}) {
                EXPECT_EQ(bbitanddec_process_low(x.data(), y.data(), count, 1, x_sign, y_sign, &result), 0) << count;
            }
        }
        // Digits of a positive operand at its count and above count as 0: fifteen in the one that the other has.
        EXPECT_EQ(bbitanddec_process_low(x.data(), y.data(), count, 1, XDEC_SIGN_POSITIVE, XDEC_SIGN_POSITIVE, &result), 0);
        EXPECT_EQ(text_of(result), count <= 0 ? "0" : "15") << count;
        bbitand_byte_complement(x.data(), count);
        // Of 40 fifteens the complement is 1; of none it is 0 and of one fifteen -15.
        std::string expected(BIFUN_HEX_DIGITS, count <= 0 || count >= 40 ? '\0' : '\x0F');
        if (count > 0) expected[0] = 1;
        EXPECT_EQ(x.bytes(), expected) << count;
        EXPECT_TRUE(x.intact());
        EXPECT_TRUE(y.intact());
    }
}

TEST(BitAndPieces, TwoNegativesWithoutACommonBitAreZero) {
    const uint8_t zeros[BIFUN_HEX_DIGITS] = {};
    xdec result;
    EXPECT_EQ(bbitanddec_process_low(zeros, zeros, 40, 40, XDEC_SIGN_NEGATIVE, XDEC_SIGN_NEGATIVE, &result), 0);
    EXPECT_EQ(result.sign, XDEC_SIGN_ZERO);
}

TEST(BitAndPieces, MoreThan160BitsAreRefusedWithNothingWritten) {
    support::Guarded digits(BIFUN_HEX_DIGITS, 77);
    int32_t count = 5;
    const xdec most =
        decimal("1461501637330902918203684832716283019655932542975");  // 2^160 - 1, to the digits that a decimal holds
    const xdec more = decimal("1e60");
    EXPECT_EQ(bbitand_dec_get_hex(digits.data(), &more, &count), EC_DATA_OVERFLOW);
    EXPECT_EQ(count, 5);
    EXPECT_EQ(digits.bytes(), std::string(BIFUN_HEX_DIGITS, 77));
    (void)bbitand_dec_get_hex(digits.data(), &most, &count);
    EXPECT_TRUE(digits.intact());
}

}  // namespace
