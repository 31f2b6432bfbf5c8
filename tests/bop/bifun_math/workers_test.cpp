// The numeric workers that are exported beside the batch functions.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

#include "qzbifun/codes.h"
#include "qzbifun/qzbifun.h"
#include "qzhost/decimal.h"
#include "tests/support/host.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(GetRemainder, TakesTheEvenQuotientOfAHalf) {
    EXPECT_EQ(get_remainder(7.0, 2.0), -1.0);
    EXPECT_EQ(get_remainder(5.0, 2.0), 1.0);
    EXPECT_EQ(get_remainder(-7.0, 2.0), 1.0);
    EXPECT_EQ(get_remainder(7.5, 3.0), 1.5);
    EXPECT_EQ(get_remainder(8.0, 3.0), -1.0);
    EXPECT_TRUE(std::signbit(get_remainder(-4.0, 2.0)));
    EXPECT_FALSE(std::signbit(get_remainder(4.0, 2.0)));
}

TEST(GetRemainder, DoesNotTestTheDivisor) {
    EXPECT_TRUE(std::isnan(get_remainder(1.0, 0.0)));
    EXPECT_TRUE(std::isnan(get_remainder(0.0, 0.0)));
    EXPECT_TRUE(std::isnan(get_remainder(kInfinity, 2.0)));
}

TEST(DoubleRound, RoundsAndTruncates) {
    double result = 0;
    EXPECT_EQ(double_round_with_trunc_flag(2.75, 1, 0, &result), 0);
    EXPECT_EQ(result, 2.8);
    EXPECT_EQ(double_round_with_trunc_flag(2.75, 1, 1, &result), 0);
    EXPECT_EQ(result, 2.7);
    EXPECT_EQ(double_round_with_trunc_flag(2.75, 1, -3, &result), 0);
    EXPECT_EQ(result, 2.7);
    EXPECT_EQ(double_round_with_trunc_flag(-2.5, 0, 0, &result), 0);
    EXPECT_EQ(result, -3.0);
    EXPECT_EQ(double_round_with_trunc_flag(kInfinity, 2, 0, &result), 0);  // the scaled value overflows: as it is
    EXPECT_EQ(result, kInfinity);
    EXPECT_EQ(double_round_with_trunc_flag(kInfinity, 0, 0, &result), EC_DATA_OVERFLOW);
    EXPECT_EQ(double_round_with_trunc_flag(1.7e308, -308, 0, &result), EC_DATA_OVERFLOW);
    EXPECT_EQ(double_round_with_trunc_flag(1.7e308, -308, 1, &result), 0);
    EXPECT_EQ(result, 1e308);
    EXPECT_EQ(double_round_with_trunc_flag(5.0, std::numeric_limits<int32_t>::min(), 0, &result), 0);
    EXPECT_EQ(result, 0.0);
}

class TruncText : public ::testing::Test {
  protected:
    int32_t head(const std::string& text) {
        host_.clear_errors();
        return ifun_trunc_head_check(host_.env(), text.data(), static_cast<uint32_t>(text.size()), &has_sign_, &position_);
    }
    int32_t scan(const std::string& text, uint32_t start = 0) {
        host_.clear_errors();
        sign_ = 7;
        exponent_ = 7;
        point_ = e_ = 77;
        return ifun_trunc_escan(host_.env(), text.data(), static_cast<uint32_t>(text.size()), start, &sign_, &exponent_,
                                &point_, &e_);
    }
    std::string stack() { return print(host_.errors()); }

    support::Host host_;
    int32_t has_sign_ = 0, sign_ = 0, exponent_ = 0;
    uint32_t position_ = 0, point_ = 0, e_ = 0;
};

TEST_F(TruncText, HeadKnowsTheSign) {
    EXPECT_EQ(head("+1"), 0);
    EXPECT_EQ(has_sign_, 1);
    EXPECT_EQ(position_, 1u);
    EXPECT_EQ(head("12"), 0);
    EXPECT_EQ(has_sign_, 0);
    EXPECT_EQ(position_, 0u);
    EXPECT_EQ(head("-.5"), 0);
    EXPECT_EQ(head(".5"), 0);
    for (const char* text : {"+", "-", ".", "-.", ".x", "+.e1"}) {
        EXPECT_EQ(head(text), EC_INVALID_ARGUMENT) << text;
        EXPECT_EQ(stack(), "-6803 ifun_trunc_head_check") << text;
    }
}

TEST_F(TruncText, ScanFindsPointAndExponent) {
    EXPECT_EQ(scan("1.25e-17"), 0);
    EXPECT_EQ(point_, 1u);
    EXPECT_EQ(e_, 4u);
    EXPECT_EQ(exponent_, 17);
    EXPECT_EQ(sign_, -1);
    EXPECT_EQ(scan("-12E+999", 1), 0);
    EXPECT_EQ(e_, 3u);
    EXPECT_EQ(exponent_, 999);
    EXPECT_EQ(sign_, 1);
    EXPECT_EQ(scan("12", 2), 0);  // nothing to look at
    EXPECT_EQ(exponent_, 0);
    for (const char* text : {"1.2.3", "1e2.5", "e5", "1e", "1e2e3", "1+2", "1e2+3", "1e+", "1x"}) {
        EXPECT_EQ(scan(text), EC_INVALID_ARGUMENT) << text;
        EXPECT_EQ(stack(), "-6803 ifun_trunc_escan") << text;
    }
    EXPECT_EQ(scan("1e1000"), EC_DATA_OVERFLOW);
    EXPECT_EQ(stack(), "-6102 ifun_trunc_escan");
    EXPECT_EQ(scan("1e99999999999999999999"), EC_DATA_OVERFLOW);
}

// ---- Pieces of bitand -------------------------------------------------------------------------------------------------------

xdec decimal(const std::string& text) {
    xdec value;
    EXPECT_EQ(xdec_from_char(&value, text.data(), static_cast<uint32_t>(text.size())), 0);
    return value;
}

// The digits, the most significant first, as many as counted.
std::string hex_of(const std::string& number, int32_t* count = nullptr) {
    uint8_t digits[BIFUN_HEX_DIGITS] = {};
    const xdec value = decimal(number);
    int32_t counted = -1;
    EXPECT_EQ(bbitand_dec_get_hex(digits, &value, &counted), 0);
    if (count != nullptr) *count = counted;
    std::string text;
    for (int32_t k = counted; k > 0; --k) text += "0123456789ABCDEF"[digits[k - 1]];
    return text;
}

TEST(BitandPieces, WritesDigitsOfTheMagnitude) {
    EXPECT_EQ(hex_of("0"), "0");
    EXPECT_EQ(hex_of("15"), "F");
    EXPECT_EQ(hex_of("16"), "10");
    EXPECT_EQ(hex_of("-255"), "FF");
    EXPECT_EQ(hex_of("18446744073709551615"), "FFFFFFFFFFFFFFFF");
    EXPECT_EQ(hex_of("18446744073709551616"), "10000000000000000");
    EXPECT_EQ(hex_of("9999999999999999999999999999999999999999"), "1D6329F1C35CA4BFABB9F560FFFFFFFFFF");
}

TEST(BitandPieces, ComplementsAllDigits) {
    const auto complement_of = [](std::initializer_list<uint8_t> low, int32_t count) {
        uint8_t digits[BIFUN_HEX_DIGITS];
        std::memset(digits, 9, sizeof digits);  // what stands above the count does not matter
        std::copy(low.begin(), low.end(), digits);
        bbitand_byte_complement(digits, count);
        std::string text;
        for (const uint8_t digit : digits) text += "0123456789ABCDEF"[digit];
        return text;
    };
    EXPECT_EQ(complement_of({1}, 1), std::string(40, 'F'));
    EXPECT_EQ(complement_of({0}, 1), std::string(40, '0'));
    EXPECT_EQ(complement_of({0, 0, 1}, 3), "00F" + std::string(37, 'F'));
    EXPECT_EQ(complement_of({5, 2}, 2), "BD" + std::string(38, 'F'));
}

TEST(BitandPieces, AndsByTheSigns) {
    struct Operand {
        uint8_t digits[BIFUN_HEX_DIGITS] = {};
        int32_t count = 0;
        uint8_t sign = XDEC_SIGN_POSITIVE;

        explicit Operand(const std::string& number) {
            const xdec value = decimal(number);
            EXPECT_EQ(bbitand_dec_get_hex(digits, &value, &count), 0);
            sign = value.sign;
            if (sign == XDEC_SIGN_NEGATIVE) bbitand_byte_complement(digits, count);
        }
    };
    const auto conjunction = [](const std::string& x_text, const std::string& y_text) {
        const Operand x(x_text);
        const Operand y(y_text);
        xdec result;
        EXPECT_EQ(bbitanddec_process_low(x.digits, y.digits, x.count, y.count, x.sign, y.sign, &result), 0);
        char text[XDEC_TEXT_SIZE];
        uint32_t length = 0;
        EXPECT_EQ(xdec_to_char2(&result, text, sizeof text, &length), 0);
        return std::string(text, length);
    };
    EXPECT_EQ(conjunction("12", "10"), "8");
    EXPECT_EQ(conjunction("12", "3"), "0");
    EXPECT_EQ(conjunction("-1", "5"), "5");
    EXPECT_EQ(conjunction("5", "-1"), "5");
    EXPECT_EQ(conjunction("-2", "-3"), "-4");
    EXPECT_EQ(conjunction("-18446744073709551616", "-1"), "-18446744073709551616");
    EXPECT_EQ(conjunction("9999999999999999999999999999999999999999", "-1"), "9999999999999999999999999999999999999999");
    EXPECT_EQ(conjunction("18446744073709551617", "3"), "1");
}

}  // namespace
