#include "qzhost/decimal.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "support/test_seed.h"

namespace {

using Bytes = std::array<uint8_t, sizeof(xdec)>;

Bytes bytes_of(const xdec& value) { return std::bit_cast<Bytes>(value); }

Bytes expected_bytes(std::initializer_list<uint8_t> head) {
    Bytes bytes{};
    std::copy(head.begin(), head.end(), bytes.begin());
    return bytes;
}

xdec dec(std::string_view text) {
    xdec value;
    EXPECT_EQ(xdec_from_char(&value, text.data(), static_cast<uint32_t>(text.size())), 0) << text;
    EXPECT_NE(xdec_is_canonical(&value), 0) << text;
    return value;
}

std::string text_of(const xdec& value) {
    char buffer[XDEC_TEXT_SIZE];
    uint32_t length = 0;
    EXPECT_EQ(xdec_to_char2(&value, buffer, sizeof buffer, &length), 0);
    EXPECT_EQ(std::strlen(buffer), length);
    return {buffer, length};
}

int32_t code_of_text(std::string_view text) {
    xdec value;
    std::memset(&value, 0xAA, sizeof value);
    const int32_t code = xdec_from_char(&value, text.data(), static_cast<uint32_t>(text.size()));
    if (code != 0) {
        EXPECT_EQ(text_of(value), "0") << text;
    }
    return code;
}

using Binary = int32_t (*)(const xdec*, const xdec*, xdec*);

std::string apply(Binary service, std::string_view x, std::string_view y) {
    const xdec a = dec(x);
    const xdec b = dec(y);
    xdec result;
    std::memset(&result, 0xAA, sizeof result);
    const int32_t code = service(&a, &b, &result);
    EXPECT_NE(xdec_is_canonical(&result), 0);
    if (code != 0) {
        EXPECT_EQ(text_of(result), "0");
        return std::to_string(code);
    }
    xdec in_place = a;
    EXPECT_EQ(service(&in_place, &b, &in_place), 0);
    EXPECT_EQ(bytes_of(in_place), bytes_of(result));
    in_place = b;
    EXPECT_EQ(service(&a, &in_place, &in_place), 0);
    EXPECT_EQ(bytes_of(in_place), bytes_of(result));
    return text_of(result);
}

std::string round_of(std::string_view text, int32_t n) {
    const xdec value = dec(text);
    xdec result;
    std::memset(&result, 0xAA, sizeof result);
    const int32_t code = xdec_round(&value, 0, n, &result);
    EXPECT_NE(xdec_is_canonical(&result), 0);
    return code == 0 ? text_of(result) : std::to_string(code);
}

std::string trunc_of(std::string_view text, int32_t n) {
    const xdec value = dec(text);
    xdec result;
    xdec_trunc_scale_with_pos(&value, n, &result);
    EXPECT_NE(xdec_is_canonical(&result), 0);
    return text_of(result);
}

const std::string kOverflow = std::to_string(EC_DATA_OVERFLOW);
const std::string kInvalid = std::to_string(EC_INVALID_ARGUMENT);

// ---- The form ---------------------------------------------------------------------------------------------------------------

TEST(DecimalForm, PowersOfTwoHaveTheseBytes) {
    xdec value;
    ASSERT_EQ(xdec_from_ulint64(&value, uint64_t{1} << 32), 0);
    EXPECT_EQ(bytes_of(value), expected_bytes({193, 10, 0, 0, 4, 0, 6, 197, 43, 95, 97, 73, 97}));
    EXPECT_EQ(bytes_of(dec("4294967296")), bytes_of(value));
    // 2^64 = 18 44 67 44 07 37 09 55 16 16
    EXPECT_EQ(bytes_of(dec("18446744073709551616")),
              expected_bytes({193, 20, 0, 0, 9, 0, 11, 202, 19, 45, 68, 45, 8, 38, 10, 56, 17, 17}));
}

TEST(DecimalForm, ZeroHasOneForm) {
    const Bytes zero = expected_bytes({128, 1, 0, 0, 0, 0, 1, 128});
    xdec value;
    xdec_fill_zero(&value);
    EXPECT_EQ(bytes_of(value), zero);
    for (const char* text : {"0", "-0", "0.00", ".0", "0e100", "-0e-500", "1e-200", "000"}) {
        EXPECT_EQ(bytes_of(dec(text)), zero) << text;
    }
    const xdec x = dec("12.50");
    xdec_sub(&x, &x, &value);
    EXPECT_EQ(bytes_of(value), zero);
    xdec_neg(&value, &value);
    EXPECT_EQ(bytes_of(value), zero);
    xdec_from_double(-0.0, &value);
    EXPECT_EQ(bytes_of(value), zero);
    const xdec little = dec("0.04");
    xdec_round(&little, 0, 1, &value);
    EXPECT_EQ(bytes_of(value), zero);
}

TEST(DecimalForm, OneAndItsNegative) {
    xdec one;
    xdec_fill_one(&one);
    EXPECT_EQ(bytes_of(one), expected_bytes({193, 1, 0, 0, 0, 0, 2, 193, 2}));
    xdec_neg(&one, &one);
    EXPECT_EQ(bytes_of(one), expected_bytes({62, 1, 0, 0, 0, 0, 2, 193, 2}));
    EXPECT_EQ(bytes_of(dec("-1")), bytes_of(one));
    xdec_abs(&one, &one);
    EXPECT_EQ(bytes_of(one), bytes_of(dec("1")));
}

TEST(DecimalForm, DigitsAndScaleCountTheText) {
    struct Case {
        const char* text;
        int digits, scale;
    };
    for (const Case& c : {Case{"2.00", 3, 2}, Case{"0.01", 2, 2}, Case{"0.010", 3, 3}, Case{"100", 3, 0}, Case{"-7", 1, 0},
                          Case{"1e125", 126, 0}, Case{"1.5e1", 2, 0}, Case{"1.50e1", 3, 1}, Case{"1e-130", 130, 130},
                          Case{"12.345", 5, 3}, Case{".5", 1, 1}, Case{"5.", 1, 0}}) {
        const xdec value = dec(c.text);
        EXPECT_EQ(value.digits, c.digits) << c.text;
        EXPECT_EQ(value.scale, c.scale) << c.text;
    }
}

TEST(DecimalForm, TrailingZerosCountUpToALimit) {
    EXPECT_EQ(dec("1." + std::string(127, '0')).scale, 127);
    EXPECT_EQ(dec("1." + std::string(200, '0')).scale, 127);
    const xdec widest = dec("9e125");
    xdec shown = dec("1." + std::string(127, '0'));
    xdec_mul(&widest, &shown, &shown);
    EXPECT_EQ(shown.digits, 253);
    EXPECT_EQ(text_of(shown), "9" + std::string(125, '0') + "." + std::string(127, '0'));
}

TEST(DecimalForm, WhatIsNotCanonical) {
    const auto spoiled = [](auto change) {
        xdec value = dec("12.50");
        change(value);
        return xdec_is_canonical(&value) != 0;
    };
    EXPECT_TRUE(spoiled([](xdec&) {}));
    EXPECT_FALSE(spoiled([](xdec& v) { v.sign = 0; }));
    EXPECT_FALSE(spoiled([](xdec& v) { v.digits = 3; }));
    EXPECT_FALSE(spoiled([](xdec& v) { v.scale = 0; }));
    EXPECT_FALSE(spoiled([](xdec& v) { v.reserved = 1; }));
    EXPECT_FALSE(spoiled([](xdec& v) { v.exponent = 1; }));
    EXPECT_FALSE(spoiled([](xdec& v) { v.length = 255; }));
    EXPECT_FALSE(spoiled([](xdec& v) { v.lead = 1; }));
    EXPECT_FALSE(spoiled([](xdec& v) { v.pairs[0] = 101; }));
    EXPECT_FALSE(spoiled([](xdec& v) { v.pairs[0] = 1; }));
    EXPECT_FALSE(spoiled([](xdec& v) { v.pairs[2] = 1; }));
    EXPECT_FALSE(spoiled([](xdec& v) { v.pairs[21] = 9; }));
}

// ---- Arithmetic -------------------------------------------------------------------------------------------------------------

TEST(DecimalArithmetic, SumsKeepTheLargerScale) {
    EXPECT_EQ(apply(xdec_add, "1.5", "2.25"), "3.75");
    EXPECT_EQ(apply(xdec_add, "1.50", "1.50"), "3.00");
    EXPECT_EQ(apply(xdec_add, "0.00", "1.5"), "1.5");  // zero has no scale
    EXPECT_EQ(apply(xdec_sub, "1", "0.99"), "0.01");
    EXPECT_EQ(apply(xdec_sub, "0.99", "1"), "-0.01");
    EXPECT_EQ(apply(xdec_sub, "1.00", "1"), "0");
    EXPECT_EQ(apply(xdec_add, "-5", "7"), "2");
    EXPECT_EQ(apply(xdec_sub, "0", "7.5"), "-7.5");
}

TEST(DecimalArithmetic, CarriesAndBorrowsRunTheWholeLength) {
    const std::string nines(44, '9');
    const std::string one_and_zeros = "1" + std::string(44, '0');
    EXPECT_EQ(apply(xdec_add, nines, "1"), one_and_zeros);
    EXPECT_EQ(apply(xdec_sub, one_and_zeros, "1"), nines);
    EXPECT_EQ(apply(xdec_add, "0.9999", "0.0001"), "1.0000");
    EXPECT_EQ(apply(xdec_sub, "1000000000000000000", "0.000000000000000001"), "999999999999999999.999999999999999999");
    for (uint32_t n = 1; n <= 44; ++n) {
        EXPECT_EQ(apply(xdec_add, std::string(n, '9'), "1"), "1" + std::string(n, '0'));
        EXPECT_EQ(apply(xdec_sub, "1" + std::string(n, '0'), "1"), std::string(n, '9'));
        EXPECT_EQ(apply(xdec_add, "-" + std::string(n, '9'), "-1"), "-1" + std::string(n, '0'));
    }
}

TEST(DecimalArithmetic, HoldsFortyOneToFortyFourDigits) {
    // An even count of digits in front of the point fills all pairs; an odd one leaves half of the first empty.
    const std::string digits41 = "12345678901234567890123456789012345678901";
    EXPECT_EQ(text_of(dec(digits41)), digits41);
    EXPECT_EQ(text_of(dec(digits41 + "25")), digits41 + "25");
    EXPECT_EQ(text_of(dec(digits41 + "256")), digits41 + "256");
    EXPECT_EQ(text_of(dec("1." + digits41)), "1." + digits41);
    EXPECT_EQ(text_of(dec("1." + digits41 + "25")), "1." + digits41 + "30");  // 43 digits: 22 pairs, 0 in the first tens place
    EXPECT_EQ(text_of(dec("12." + digits41 + "2")), "12." + digits41 + "2");
    EXPECT_EQ(apply(xdec_mul, "-99999999999999999999", "99999999999999999999"), "-9999999999999999999800000000000000000001");
    EXPECT_EQ(apply(xdec_add, std::string(40, '9'), std::string(40, '9')), "1" + std::string(39, '9') + "8");
}

TEST(DecimalArithmetic, TooManyDigitsRoundAwayFromZeroAtTheLastPair) {
    const std::string ones(44, '1');
    EXPECT_EQ(apply(xdec_add, ones, "0.5"), std::string(43, '1') + "2.0");  // the scale stays
    EXPECT_EQ(apply(xdec_add, ones, "0.49999"), ones + ".00000");
    EXPECT_EQ(apply(xdec_sub, "-" + ones, "0.5"), "-" + std::string(43, '1') + "2.0");
    EXPECT_EQ(apply(xdec_sub, ones, "0.5"), ones + ".0");  // ...10.5 rounds up again
    EXPECT_EQ(apply(xdec_sub, ones, "0.51"), std::string(43, '1') + "0.00");
    EXPECT_EQ(apply(xdec_sub, "1", "1e-60"), "1." + std::string(60, '0'));
    EXPECT_EQ(apply(xdec_add, "1e100", "-1e-100"), "1" + std::string(100, '0') + "." + std::string(100, '0'));
    EXPECT_EQ(apply(xdec_mul, std::string(44, '9'), std::string(44, '9')), std::string(43, '9') + "8" + std::string(44, '0'));
}

TEST(DecimalArithmetic, ProductsAddTheScales) {
    EXPECT_EQ(apply(xdec_mul, "1.5", "2.5"), "3.75");
    EXPECT_EQ(apply(xdec_mul, "1.50", "2"), "3.00");
    EXPECT_EQ(apply(xdec_mul, "-0.5", "0.2"), "-0.10");
    EXPECT_EQ(apply(xdec_mul, "0", "-5.00"), "0");
    EXPECT_EQ(apply(xdec_mul, "999999999999999999", "999999999999999999"), "999999999999999998000000000000000001");
}

TEST(DecimalArithmetic, QuotientsHaveTheDigitsTheyNeed) {
    EXPECT_EQ(apply(xdec_div, "1", "4"), "0.25");
    EXPECT_EQ(apply(xdec_div, "6.00", "2"), "3");
    EXPECT_EQ(apply(xdec_div, "1", "3"), "0." + std::string(44, '3'));
    EXPECT_EQ(apply(xdec_div, "2", "3"), "0." + std::string(43, '6') + "7");
    EXPECT_EQ(apply(xdec_div, "20", "3"), "6." + std::string(41, '6') + "7");  // the first pair holds one digit
    EXPECT_EQ(apply(xdec_div, "-1e100", "1e-20"), "-1" + std::string(120, '0'));
    EXPECT_EQ(apply(xdec_div, "9999999999999999999800000000000000000001", "99999999999999999999"), "99999999999999999999");
    EXPECT_EQ(apply(xdec_div, "0", "7"), "0");
    EXPECT_EQ(apply(xdec_div, "7", "0"), kInvalid);
    EXPECT_EQ(apply(xdec_div, "0", "0"), kInvalid);
}

TEST(DecimalArithmetic, TheEndsOfTheRange) {
    const std::string largest = std::string(44, '9') + std::string(82, '0');
    EXPECT_EQ(text_of(dec(largest)), largest);
    EXPECT_EQ(code_of_text("1e126"), EC_DATA_OVERFLOW);
    EXPECT_EQ(code_of_text("-99999999999999999999999999999999999999999999.5e82"), EC_DATA_OVERFLOW);  // rounds up to the limit
    EXPECT_EQ(apply(xdec_add, largest, largest), kOverflow);
    EXPECT_EQ(apply(xdec_add, largest, "5e81"), kOverflow);
    EXPECT_EQ(apply(xdec_add, largest, "4.9e81"), largest);
    EXPECT_EQ(apply(xdec_sub, "-" + largest, largest), kOverflow);
    EXPECT_EQ(apply(xdec_mul, "1e63", "1e63"), kOverflow);
    EXPECT_EQ(apply(xdec_mul, "1e63", "-1e62"), "-1" + std::string(125, '0'));
    EXPECT_EQ(apply(xdec_div, "1e100", "1e-26"), kOverflow);

    const std::string smallest = "0." + std::string(129, '0') + "1";
    EXPECT_EQ(text_of(dec("1e-130")), smallest);
    EXPECT_EQ(text_of(dec("5e-131")), smallest);
    EXPECT_EQ(text_of(dec("4.9999e-131")), "0");
    EXPECT_EQ(apply(xdec_mul, "1e-65", "5e-66"), smallest);
    EXPECT_EQ(apply(xdec_mul, "1e-65", "4e-66"), "0");
    EXPECT_EQ(apply(xdec_mul, "1e-100", "1e-100"), "0");
    EXPECT_EQ(apply(xdec_div, "-1e-100", "1e31"), "0");
    EXPECT_EQ(apply(xdec_sub, "1.7e-130", "1e-130"), smallest);  // 7E-131 rounds to the smallest
    EXPECT_EQ(apply(xdec_sub, "1.4e-130", "1e-130"), "0");
}

TEST(DecimalArithmetic, DivisionBySixteen) {
    const auto divided = [](std::string_view text) {
        const xdec value = dec(text);
        xdec quotient;
        uint32_t remainder = 99;
        xdec_div_get_quotient_int_by_16(&value, &quotient, &remainder);
        EXPECT_NE(xdec_is_canonical(&quotient), 0);
        xdec in_place = value;
        xdec_div_get_quotient_int_by_16(&in_place, &in_place, &remainder);
        EXPECT_EQ(bytes_of(in_place), bytes_of(quotient));
        return text_of(quotient) + " rest " + std::to_string(remainder);
    };
    EXPECT_EQ(divided("0"), "0 rest 0");
    EXPECT_EQ(divided("15.99"), "0 rest 15");
    EXPECT_EQ(divided("-35"), "-2 rest 3");
    EXPECT_EQ(divided("1600"), "100 rest 0");
    EXPECT_EQ(divided("0.5"), "0 rest 0");
    EXPECT_EQ(divided("18446744073709551616"), "1152921504606846976 rest 0");
    EXPECT_EQ(divided("9999999999999999999999999999999999999999"), "624999999999999999999999999999999999999 rest 15");
    EXPECT_EQ(divided("1e50"), "6250000000000000000000000000000000000000000000000 rest 0");
}

// ---- Order ------------------------------------------------------------------------------------------------------------------

TEST(DecimalOrder, IsThatOfTheValues) {
    const std::vector<std::string> ascending = {"-1e125",  "-100000000000000000000",
                                                "-100.01", "-100",
                                                "-99.99",  "-1.1",
                                                "-1",      "-0.01",
                                                "-1e-130", "0",
                                                "1e-130",  "0.01",
                                                "0.011",   "0.1",
                                                "1",       "1.1",
                                                "99.99",   "100.00",
                                                "100.01",  "1e40",
                                                "1e125"};
    for (size_t i = 0; i < ascending.size(); ++i) {
        for (size_t k = 0; k < ascending.size(); ++k) {
            const xdec x = dec(ascending[i]);
            const xdec y = dec(ascending[k]);
            const int32_t order = xdec_cmp(&x, &y);
            EXPECT_EQ((order > 0) - (order < 0), (i > k) - (i < k)) << ascending[i] << " " << ascending[k];
        }
    }
}

TEST(DecimalOrder, LooksAtEveryPair) {
    std::string digits(44, '5');
    const xdec middle = dec(digits);
    const xdec minus_middle = dec("-" + digits);
    for (size_t i = 0; i < digits.size(); ++i) {
        std::string more = digits;
        ++more[i];
        const xdec larger = dec(more);
        EXPECT_GT(xdec_cmp(&larger, &middle), 0) << i;
        EXPECT_LT(xdec_cmp(&middle, &larger), 0) << i;
        const xdec smaller = dec("-" + more);
        EXPECT_LT(xdec_cmp(&smaller, &minus_middle), 0) << i;
        EXPECT_GT(xdec_cmp(&minus_middle, &smaller), 0) << i;
    }
    const xdec scaled = dec(digits.substr(0, 40) + ".0000");
    const xdec plain = dec(digits.substr(0, 40));
    EXPECT_EQ(xdec_cmp(&scaled, &plain), 0);
}

// ---- Rounding ---------------------------------------------------------------------------------------------------------------

TEST(DecimalRounding, TiesGoAwayFromZero) {
    EXPECT_EQ(round_of("2.5", 0), "3");
    EXPECT_EQ(round_of("-2.5", 0), "-3");
    EXPECT_EQ(round_of("2.4999", 0), "2");
    EXPECT_EQ(round_of("0.5", 0), "1");
    EXPECT_EQ(round_of("0.05", 1), "0.1");
    EXPECT_EQ(round_of("0.45", 0), "0");
    EXPECT_EQ(round_of("99.95", 1), "100.0");
    EXPECT_EQ(round_of("99.949", 1), "99.9");
    EXPECT_EQ(round_of("1234.5678", 2), "1234.57");
    EXPECT_EQ(round_of("1234.5678", -2), "1200");
    EXPECT_EQ(round_of("1250", -2), "1300");
    EXPECT_EQ(round_of("50", -2), "100");
    EXPECT_EQ(round_of("49", -2), "0");
    EXPECT_EQ(round_of("500", -3), "1000");
    EXPECT_EQ(round_of("5", -1), "10");
    EXPECT_EQ(round_of("5", -2), "0");
}

TEST(DecimalRounding, NeverRaisesTheScale) {
    EXPECT_EQ(round_of("2.00", 1), "2.0");
    EXPECT_EQ(round_of("2.00", 5), "2.00");
    EXPECT_EQ(round_of("2.00", -1), "0");
    EXPECT_EQ(round_of("1.5", 2147483647), "1.5");
    EXPECT_EQ(round_of("1.5", std::numeric_limits<int32_t>::min()), "0");
    EXPECT_EQ(round_of("0", -3), "0");
}

TEST(DecimalRounding, CanOverflow) {
    EXPECT_EQ(round_of("9.5e125", -125), kOverflow);
    EXPECT_EQ(round_of("5e125", -126), kOverflow);
    EXPECT_EQ(round_of("4e125", -126), "0");
    EXPECT_EQ(round_of(std::string(44, '9'), -1), "1" + std::string(44, '0'));
}

TEST(DecimalRounding, TruncationGoesTowardsZero) {
    EXPECT_EQ(trunc_of("2.9", 0), "2");
    EXPECT_EQ(trunc_of("-2.9", 0), "-2");
    EXPECT_EQ(trunc_of("0.99", 0), "0");
    EXPECT_EQ(trunc_of("-1234.5678", 3), "-1234.567");
    EXPECT_EQ(trunc_of("1299", -2), "1200");
    EXPECT_EQ(trunc_of("99", -2), "0");
    EXPECT_EQ(trunc_of("2.00", 1), "2.0");
    EXPECT_EQ(trunc_of("1.239", 2147483647), "1.239");
    EXPECT_EQ(trunc_of("1.239", std::numeric_limits<int32_t>::min()), "0");
    xdec value = dec("-100.75");
    xdec_trunc_scale(&value);
    EXPECT_EQ(bytes_of(value), bytes_of(dec("-100")));
}

TEST(DecimalRounding, CeilAndFloorGoByTheScale) {
    const auto outwards = [](std::string_view text) {
        const xdec x = dec(text);
        xdec ceil = x, floor = x;
        xdec_ceil_by_scale(&ceil, &ceil);
        xdec_floor_by_scale(&x, &floor);
        EXPECT_NE(xdec_is_canonical(&ceil), 0);
        EXPECT_NE(xdec_is_canonical(&floor), 0);
        return text_of(ceil) + " " + text_of(floor);
    };
    EXPECT_EQ(outwards("1.1"), "2 1");
    EXPECT_EQ(outwards("-1.1"), "-1 -2");
    EXPECT_EQ(outwards("2.00"), "3 2");
    EXPECT_EQ(outwards("-2.00"), "-2 -3");
    EXPECT_EQ(outwards("2"), "2 2");
    EXPECT_EQ(outwards("-200"), "-200 -200");
    EXPECT_EQ(outwards("0.5"), "1 0");
    EXPECT_EQ(outwards("-0.01"), "0 -1");
    EXPECT_EQ(outwards("1e-130"), "1 0");
    EXPECT_EQ(outwards("0"), "0 0");
    EXPECT_EQ(outwards("99.5"), "100 99");
    EXPECT_EQ(outwards("-9999.9"), "-9999 -10000");
    EXPECT_EQ(outwards(std::string(42, '9') + ".9"), "1" + std::string(42, '0') + " " + std::string(42, '9'));
}

// ---- Binary numbers ---------------------------------------------------------------------------------------------------------

TEST(DecimalNumbers, SignedIntegers) {
    for (const int64_t value : {int64_t{0}, int64_t{1}, int64_t{-1}, int64_t{99}, int64_t{100}, int64_t{-1000000000000},
                                std::numeric_limits<int64_t>::max(), std::numeric_limits<int64_t>::min()}) {
        xdec decimal;
        ASSERT_EQ(xdec_from_int64(&decimal, value, XDEC_SCALE_NONE), 0);
        EXPECT_EQ(text_of(decimal), std::to_string(value));
        int64_t back = 1;
        EXPECT_EQ(xdec_get_int64(&decimal, &back), 0);
        EXPECT_EQ(back, value);
    }
    int64_t value = 7;
    xdec x = dec("9223372036854775808");
    EXPECT_EQ(xdec_get_int64(&x, &value), EC_DATA_OVERFLOW);
    EXPECT_EQ(value, 0);
    x = dec("-9223372036854775808.9");
    EXPECT_EQ(xdec_get_int64(&x, &value), 0);
    EXPECT_EQ(value, std::numeric_limits<int64_t>::min());
    x = dec("-9223372036854775809");
    EXPECT_EQ(xdec_get_int64(&x, &value), EC_DATA_OVERFLOW);
    x = dec("1e100");
    EXPECT_EQ(xdec_get_int64(&x, &value), EC_DATA_OVERFLOW);
    x = dec("-0.9");
    EXPECT_EQ(xdec_get_int64(&x, &value), 0);
    EXPECT_EQ(value, 0);
}

TEST(DecimalNumbers, ScaleOfAnInteger) {
    xdec x;
    EXPECT_EQ(xdec_from_int64(&x, 5, 2), 0);
    EXPECT_EQ(text_of(x), "5.00");
    EXPECT_EQ(xdec_from_int64(&x, -5, 0), 0);
    EXPECT_EQ(text_of(x), "-5");
    EXPECT_EQ(xdec_from_int64(&x, 5, 128), EC_INVALID_ARGUMENT);
    EXPECT_EQ(text_of(x), "0");
    EXPECT_EQ(xdec_from_unscaled(&x, -5, 2), 0);
    EXPECT_EQ(text_of(x), "-0.05");
    EXPECT_EQ(xdec_from_unscaled(&x, 500, 2), 0);
    EXPECT_EQ(text_of(x), "5.00");
    EXPECT_EQ(xdec_from_unscaled(&x, 1, 127), 0);
    EXPECT_EQ(text_of(x), "0." + std::string(126, '0') + "1");
    EXPECT_EQ(xdec_from_unscaled(&x, 1, XDEC_SCALE_NONE), EC_INVALID_ARGUMENT);
}

TEST(DecimalNumbers, UnsignedIntegers) {
    xdec x;
    uint64_t value = 7;
    xdec_from_ulint64(&x, std::numeric_limits<uint64_t>::max());
    EXPECT_EQ(text_of(x), "18446744073709551615");
    EXPECT_NE(xdec_in_ulint64(&x), 0);
    EXPECT_EQ(xdec_get_ulint64(&x, &value), 0);
    EXPECT_EQ(value, std::numeric_limits<uint64_t>::max());
    for (const char* text : {"18446744073709551616", "-1", "1e20", "99999999999999999999", "1e60"}) {
        x = dec(text);
        EXPECT_EQ(xdec_in_ulint64(&x), 0) << text;
        EXPECT_EQ(xdec_get_ulint64(&x, &value), EC_DATA_OVERFLOW) << text;
        EXPECT_EQ(value, 0U);
    }
    for (const char* text : {"-0.5", "0", "0.5"}) {
        x = dec(text);
        EXPECT_NE(xdec_in_ulint64(&x), 0) << text;
        EXPECT_EQ(xdec_get_ulint64(&x, &value), 0) << text;
        EXPECT_EQ(value, 0U);
    }
}

TEST(DecimalNumbers, DoublesInAndOut) {
    const auto from = [](double value) {
        xdec x;
        const int32_t code = xdec_from_double(value, &x);
        return code == 0 ? text_of(x) : std::to_string(code);
    };
    EXPECT_EQ(from(0.1), "0.1");
    EXPECT_EQ(from(-2.5), "-2.5");
    EXPECT_EQ(from(1e15), "1000000000000000");
    EXPECT_EQ(from(9007199254740993.0), "9007199254740992");
    EXPECT_EQ(from(1.0 / 3.0), "0.3333333333333333");
    EXPECT_EQ(from(123456.789), "123456.789");
    EXPECT_EQ(from(1e125), "1" + std::string(125, '0'));
    EXPECT_EQ(from(std::nextafter(1e126, 0.0)).size(), 126U);
    EXPECT_EQ(from(1e126), kOverflow);
    EXPECT_EQ(from(-1e300), kOverflow);
    EXPECT_EQ(from(std::numeric_limits<double>::infinity()), kOverflow);
    EXPECT_EQ(from(std::numeric_limits<double>::quiet_NaN()), kOverflow);
    EXPECT_EQ(from(std::numeric_limits<double>::denorm_min()), "0");

    const auto to = [](std::string_view text) {
        const xdec x = dec(text);
        int32_t code = 1;
        const double value = xdec_get_double(&x, &code, 1);
        EXPECT_EQ(code, 0);
        EXPECT_EQ(xdec_get_double(&x, nullptr, 0), value);
        return value;
    };
    EXPECT_EQ(to("0.1"), 0.1);
    EXPECT_EQ(to("-123.456"), -123.456);
    EXPECT_EQ(to("0"), 0.0);
    EXPECT_EQ(to("9007199254740993"), 9007199254740992.0);  // ties to even
    EXPECT_EQ(to("9007199254740993.00000000000000000000001"), 9007199254740994.0);
    EXPECT_EQ(to("1e125"), 1e125);
    EXPECT_EQ(to("1e-130"), 1e-130);
}

// A double is the decimal that its shortest text says, byte for byte, in every range.
TEST(DecimalNumbers, DoublesAreTheirShortestTexts) {
    std::mt19937_64 random(support::test_seed());
    const auto expect_text = [](double value) {
        char buffer[40];
        const char* const end = std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::scientific).ptr;
        xdec found = dec("7.7"), expected = dec("8.8");
        const int32_t code = xdec_from_char(&expected, buffer, static_cast<uint32_t>(end - buffer));
        ASSERT_EQ(xdec_from_double(value, &found), code) << value;
        ASSERT_EQ(std::memcmp(&found, &expected, sizeof found), 0) << value;
    };
    for (int i = 0; i < 200'000; ++i) {
        const auto drawn = static_cast<int64_t>(random());
        expect_text(static_cast<double>(drawn) / 1e9);
        expect_text(static_cast<double>(drawn % 1'000'000'000) / 100);
        expect_text(static_cast<double>(drawn % 100'000) * 1000);
        expect_text(std::ldexp(static_cast<double>(drawn), static_cast<int>(random() % 760) - 480));
    }
    for (int power = -135; power <= 127; ++power) {
        for (const char* digits : {"1", "5", "9", "12345", "-1", "-9.9", "4.9", "4.99999999999"}) {
            expect_text(std::strtod((digits + ("e" + std::to_string(power))).c_str(), nullptr));
        }
    }
}

// Many at once are as one by one, around every length of a pass, with what a pass leaves to the others among them.
TEST(DecimalNumbers, ManyUnscaledIntegers) {
    std::mt19937_64 random(support::test_seed());
    constexpr std::array<int64_t, 6> kEnds = {
        0, 1, -1, std::numeric_limits<int64_t>::max(), std::numeric_limits<int64_t>::min(), 1'844'674'407'370'955'162};
    for (uint32_t round = 0; round < 300; ++round) {
        const uint32_t n = round % 200;
        std::vector<int64_t> values(n);
        std::vector<uint32_t> scales(n);
        for (uint32_t i = 0; i < n; ++i) {
            values[i] = static_cast<int64_t>(random()) >> random() % 64;
            scales[i] = static_cast<uint32_t>(random() % (round % 3 == 0 ? 20 : 128));
            if (round % 2 != 0 && random() % 50 == 0) values[i] = kEnds[random() % kEnds.size()];
            if (round % 7 == 6 && random() % 50 == 0) scales[i] = 128 + static_cast<uint32_t>(random() % 200);
        }
        std::vector<xdec> found(n + 1, dec("7.7"));
        host_decimals_of_unscaled(found.data(), n, values.data(), scales.data());
        EXPECT_EQ(text_of(found[n]), "7.7");
        for (uint32_t i = 0; i < n; ++i) {
            xdec expected = dec("8.8");
            EXPECT_EQ(xdec_from_unscaled(&expected, values[i], scales[i]), scales[i] > 127 ? EC_INVALID_ARGUMENT : 0);
            ASSERT_EQ(std::memcmp(&found[i], &expected, sizeof expected), 0) << values[i] << " scale " << scales[i];
        }
    }
}

TEST(DecimalNumbers, BinaryWords) {
    const auto words_of = [](std::string_view text) {
        const xdec x = dec(text);
        std::array<uint32_t, XDEC_BINARY_WORDS + 1> words{};
        words.back() = 77;  // is not written
        const int32_t code = xdec_get_binary(&x, words.data());
        EXPECT_EQ(words.back(), 77U);
        words.back() = static_cast<uint32_t>(code);
        return words;
    };
    using Words = std::array<uint32_t, XDEC_BINARY_WORDS + 1>;
    EXPECT_EQ(words_of("0"), (Words{}));
    EXPECT_EQ(words_of("-7.9"), (Words{7}));
    EXPECT_EQ(words_of("79228162514264337593543950336"), (Words{0, 0, 0, 1}));
    EXPECT_EQ(words_of("79228162514264337593543950335"), (Words{~0U, ~0U, ~0U}));
    EXPECT_EQ(words_of("1e49"), (Words{0, 0, 0, 0, 0, static_cast<uint32_t>(EC_DATA_OVERFLOW)}));
    EXPECT_EQ(words_of("1.4e48")[5], 0U);  // 2^160 is about 1.4615E48
    EXPECT_EQ(words_of("1.47e48")[5], static_cast<uint32_t>(EC_DATA_OVERFLOW));

    xdec x;
    const uint32_t words[XDEC_BINARY_WORDS] = {0, 0, 0, 1, 0};
    EXPECT_EQ(xdec_from_binary(&x, 1, words), 0);
    EXPECT_EQ(text_of(x), "-79228162514264337593543950336");
}

// ---- Text -------------------------------------------------------------------------------------------------------------------

TEST(DecimalText, WhatIsANumber) {
    EXPECT_EQ(text_of(dec("  42 ")), "42");
    EXPECT_EQ(text_of(dec("+.5")), "0.5");
    EXPECT_EQ(text_of(dec("-5.")), "-5");
    EXPECT_EQ(text_of(dec("00012.3400")), "12.3400");
    EXPECT_EQ(text_of(dec("1.25E2")), "125");
    EXPECT_EQ(text_of(dec("1.25e+1")), "12.5");
    EXPECT_EQ(text_of(dec("125e-4")), "0.0125");
    EXPECT_EQ(text_of(dec("1e0000000000000000000000000000000000003")), "1000");
    EXPECT_EQ(text_of(dec(std::string(1000, '0') + "7." + std::string(1000, '0') + "1")), "7." + std::string(127, '0'));
    EXPECT_EQ(text_of(dec("0." + std::string(500, '0') + "1e500")), "0.1");
    EXPECT_EQ(text_of(dec("1" + std::string(500, '0') + "e-500")), "1." + std::string(127, '0'));
}

TEST(DecimalText, WhatIsNone) {
    for (const char* text : {"", " ", "      "}) EXPECT_EQ(code_of_text(text), RC_VALUE_IS_NULL) << text;
    for (const char* text : {"abc",   ".",    "-",   "+",   "+-1", "1.2.3", "1e",  "1e+", "e5",  "1 2", "- 1",
                             "1e5.5", "0x10", "1,5", "NaN", "inf", "1e5e5", "\t1", "1\n", "--1", ".e1", "1_000"}) {
        EXPECT_EQ(code_of_text(text), EC_NUMBER_TEXT_INVALID) << text;
    }
    EXPECT_EQ(code_of_text(std::string_view("1\0", 2)), EC_NUMBER_TEXT_INVALID);
    EXPECT_EQ(code_of_text("1e999999999999999999999"), EC_DATA_OVERFLOW);
    EXPECT_EQ(code_of_text("1e-999999999999999999999"), 0);
    EXPECT_EQ(code_of_text("0e999999999999999999999"), 0);
}

TEST(DecimalText, EveryLengthOfTextKeepsItsDigits) {
    std::mt19937 random(5);
    for (uint32_t length = 1; length <= 43; ++length) {
        for (uint32_t point = 0; point <= length; ++point) {
            std::string digits;
            for (uint32_t i = 0; i < length; ++i) digits += static_cast<char>('1' + random() % 9);
            const std::string expected =
                point == 0 ? digits
                           : (point == length ? "0." + digits
                                              : digits.substr(0, length - point) + "." + digits.substr(length - point));
            EXPECT_EQ(text_of(dec(expected)), expected);
            EXPECT_EQ(text_of(dec("-" + expected)), "-" + expected);
            EXPECT_EQ(text_of(dec("  " + expected + "   ")), expected);
            EXPECT_EQ(bytes_of(dec("00000000000000000000000" + expected)), bytes_of(dec(expected)));
        }
    }
}

TEST(DecimalText, TextIsReadInItsBoundsAlone) {
    // The heap block ends with the text: a byte read too many is found by the sanitizers.
    for (uint32_t length = 0; length <= 70; ++length) {
        std::vector<char> text(length, '7');
        xdec x;
        const int32_t code = xdec_from_char(&x, text.data(), length);
        EXPECT_EQ(code, length == 0 ? RC_VALUE_IS_NULL : 0);
        if (length > 44 || length == 0) continue;
        EXPECT_EQ(text_of(x), std::string(length, '7'));
    }
}

TEST(DecimalText, BufferSizesAreRespected) {
    for (const char* text : {"0", "-1", "12.50", "-0.001", "-12345678901234567890.12345678901234567890", "9.99e125"}) {
        const xdec x = dec(text);
        const std::string whole = text_of(x);
        for (uint32_t size = 0; size <= whole.size() + 1; ++size) {
            std::vector<char> buffer(size, '?');  // a write too many is found by the sanitizers
            uint32_t length = 99;
            const int32_t code = xdec_to_char2(&x, buffer.data(), size, &length);
            if (size <= whole.size()) {
                EXPECT_EQ(code, EC_CHAR_RESULT_OVERFLOW);
                EXPECT_EQ(length, 0U);
                if (size > 0) {
                    EXPECT_EQ(buffer[0], '\0');
                }
            } else {
                EXPECT_EQ(code, 0);
                EXPECT_EQ(std::string(buffer.data(), length), whole);
            }
        }
    }
}

TEST(DecimalText, ZerosInFront) {
    const auto shown = [](std::string_view text, uint32_t digits) {
        const xdec x = dec(text);
        char buffer[XDEC_TEXT_SIZE];
        uint32_t length = 0;
        EXPECT_EQ(xdec_to_char_with_zero(&x, buffer, sizeof buffer, digits, 0, &length), 0);
        return std::string(buffer, length);
    };
    EXPECT_EQ(shown("0.5", 0), "0.5");
    EXPECT_EQ(shown("0.5", 1), "0.5");
    EXPECT_EQ(shown("-0.5", 3), "-000.5");
    EXPECT_EQ(shown("12", 2), "12");
    EXPECT_EQ(shown("12", 4), "0012");
    EXPECT_EQ(shown("0", 3), "000");
    EXPECT_EQ(shown("12", 126), std::string(124, '0') + "12");
    EXPECT_EQ(shown("12", 127), "12");
    EXPECT_EQ(shown("12", ~0U), "12");
    EXPECT_EQ(shown("-" + ("0." + std::string(129, '0')) + "1" + std::string(41, '2') + "34", 126).size(), 300U);
}

// ---- Properties -------------------------------------------------------------------------------------------------------------

class DecimalProperties : public ::testing::Test {
  protected:
    uint32_t below(uint32_t n) { return static_cast<uint32_t>(random_() % n); }

    // Up to 18 digits and a scale: sums and products of a few of them are exact.
    xdec number() {
        xdec x;
        xdec_from_unscaled(&x, static_cast<int64_t>(random_()) >> (4 + below(60)), below(12));
        return x;
    }

    static xdec sum(const xdec& x, const xdec& y) { return applied(xdec_add, x, y); }
    static xdec difference(const xdec& x, const xdec& y) { return applied(xdec_sub, x, y); }
    static xdec product(const xdec& x, const xdec& y) { return applied(xdec_mul, x, y); }

    static xdec applied(Binary service, const xdec& x, const xdec& y) {
        xdec result;
        EXPECT_EQ(service(&x, &y, &result), 0);
        EXPECT_NE(xdec_is_canonical(&result), 0) << text_of(x) << " " << text_of(y);
        return result;
    }

    std::mt19937_64 random_{support::test_seed()};
};

constexpr int kTurns = 20000;

TEST_F(DecimalProperties, LawsOfArithmetic) {
    for (int turn = 0; turn < kTurns; ++turn) {
        const xdec x = number();
        const xdec y = number();
        const xdec z = number();
        SCOPED_TRACE(text_of(x) + " " + text_of(y) + " " + text_of(z));
        xdec minus_y;
        xdec_neg(&y, &minus_y);
        ASSERT_EQ(bytes_of(sum(x, y)), bytes_of(sum(y, x)));
        ASSERT_EQ(bytes_of(difference(x, y)), bytes_of(sum(x, minus_y)));
        ASSERT_EQ(bytes_of(product(x, y)), bytes_of(product(y, x)));
        const auto equal = [](const xdec& a, const xdec& b) { return xdec_cmp(&a, &b) == 0; };
        ASSERT_TRUE(equal(sum(sum(x, y), z), sum(x, sum(y, z))));
        ASSERT_TRUE(equal(difference(sum(x, y), y), x));
        const xdec left = product(x, sum(y, z));  // may have more than 43 digits, and then differs in the last one
        const xdec right = sum(product(x, y), product(x, z));
        if (left.digits <= 40) {
            ASSERT_TRUE(equal(left, right));
        }
        if (y.sign != XDEC_SIGN_ZERO && product(x, y).digits <= 40) {
            ASSERT_TRUE(equal(applied(xdec_div, product(x, y), y), x));
        }
        const xdec d = difference(x, y);
        ASSERT_EQ(xdec_cmp(&x, &y) > 0, d.sign == XDEC_SIGN_POSITIVE);
        ASSERT_EQ(xdec_cmp(&x, &y) < 0, d.sign == XDEC_SIGN_NEGATIVE);
    }
}

TEST_F(DecimalProperties, TextReturnsAllBytes) {
    for (int turn = 0; turn < kTurns; ++turn) {
        xdec x = number();
        if (below(4) == 0) x = product(x, number());
        ASSERT_EQ(bytes_of(dec(text_of(x))), bytes_of(x)) << text_of(x);
    }
}

TEST_F(DecimalProperties, RoundingIsTruncationOfTheHalfMore) {
    for (int turn = 0; turn < kTurns; ++turn) {
        const xdec x = number();
        const auto n = static_cast<int32_t>(below(24)) - 12;
        xdec half;
        ASSERT_EQ(xdec_from_unscaled(&half, 5, static_cast<uint32_t>(n + 13)), 0);  // half of 10^-(n+12)
        const xdec shift = dec("1e12");
        half = product(half, shift);
        if (x.sign == XDEC_SIGN_NEGATIVE) xdec_neg(&half, &half);
        const xdec more = sum(x, half);
        xdec rounded;
        xdec cut;
        ASSERT_EQ(xdec_round(&x, 0, n, &rounded), 0);
        xdec_trunc_scale_with_pos(&more, n, &cut);
        ASSERT_EQ(xdec_cmp(&rounded, &cut), 0) << text_of(x) << " to " << n;
        ASSERT_NE(xdec_is_canonical(&rounded), 0);
    }
}

// ---- Records that no service made -------------------------------------------------------------------------------------------

class DecimalHostile : public DecimalProperties {
  protected:
    // The counts of digits may be wrong, all else is as it must be.
    static bool is_harmless(const xdec& x) {
        if (x.sign == XDEC_SIGN_ZERO) return xdec_is_canonical(&x) != 0;
        bool good = (x.sign == XDEC_SIGN_NEGATIVE || x.sign == XDEC_SIGN_POSITIVE) && x.reserved == 0;
        good = good && x.length >= 2 && x.length <= 1 + XDEC_MAX_PAIRS && x.lead >= 128 && x.exponent == x.lead - 193;
        for (int i = 0; i < XDEC_MAX_PAIRS; ++i) {
            good = good && (i < x.length - 1 ? x.pairs[i] >= 1 && x.pairs[i] <= 100 : x.pairs[i] == 0);
        }
        return good;
    }

    xdec record() {
        Bytes bytes;
        if (below(2) == 0) {
            for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random_());
        } else {
            bytes = bytes_of(number());
            for (uint32_t i = below(4); i > 0; --i)
                bytes[below(sizeof bytes)] = static_cast<uint8_t>(below(2) == 0 ? 255 : random_());
        }
        constexpr std::array<uint8_t, 3> kSigns = {62, 128, 193};
        if (below(4) != 0) bytes[0] = kSigns[below(3)];
        return std::bit_cast<xdec>(bytes);
    }
};

TEST_F(DecimalHostile, RecordsOfNoMagnitudeAreComparedAlikeFromBothSides) {
    xdec positive{};
    positive.sign = XDEC_SIGN_POSITIVE;
    positive.pairs[XDEC_MAX_PAIRS - 1] = 1;
    xdec negative = positive;
    negative.sign = XDEC_SIGN_NEGATIVE;
    xdec zero{};
    zero.sign = XDEC_SIGN_ZERO;
    for (const xdec& x : {positive, negative, zero}) {
        for (const xdec& y : {positive, negative, zero}) EXPECT_EQ(xdec_cmp(&x, &y), -xdec_cmp(&y, &x));
    }
}

TEST_F(DecimalHostile, EveryServiceStaysInItsBuffers) {
    for (int turn = 0; turn < 2 * kTurns; ++turn) {
        const xdec x = record();
        const xdec y = record();
        const auto n = static_cast<int32_t>(below(8) == 0 ? random_() : below(300) - 150U);
        for (const Binary service : {xdec_add, xdec_sub, xdec_mul, xdec_div}) {
            xdec result = x;
            const int32_t code = service(&result, &y, &result);
            ASSERT_TRUE(code == 0 || code == EC_DATA_OVERFLOW || code == EC_INVALID_ARGUMENT);
            ASSERT_TRUE(is_harmless(result));
        }
        xdec result;
        xdec_round(&x, 0, n, &result);
        ASSERT_TRUE(is_harmless(result));
        xdec_trunc_scale_with_pos(&x, n, &result);
        ASSERT_TRUE(is_harmless(result));
        result = x;
        xdec_trunc_scale(&result);
        ASSERT_TRUE(is_harmless(result));
        xdec_ceil_by_scale(&x, &result);
        ASSERT_TRUE(x.scale == 0 || is_harmless(result));
        xdec_floor_by_scale(&x, &result);
        ASSERT_TRUE(x.scale == 0 || is_harmless(result));
        uint32_t remainder = 99;
        xdec_div_get_quotient_int_by_16(&x, &result, &remainder);
        ASSERT_TRUE(is_harmless(result));
        ASSERT_LT(remainder, 16U);
        const int32_t order = xdec_cmp(&x, &y);
        const int32_t opposite = xdec_cmp(&y, &x);
        ASSERT_EQ((order > 0) - (order < 0), (opposite < 0) - (opposite > 0));

        int64_t whole;
        uint64_t natural;
        xdec_get_int64(&x, &whole);
        ASSERT_EQ(xdec_get_ulint64(&x, &natural) == 0, xdec_in_ulint64(&x) != 0);
        int32_t code = 1;
        ASSERT_TRUE(std::isfinite(xdec_get_double(&x, &code, 1)));
        uint32_t words[XDEC_BINARY_WORDS];
        xdec_get_binary(&x, words);
        std::vector<char> text(below(420));
        uint32_t length = 0;
        if (xdec_to_char_with_zero(&x, text.data(), static_cast<uint32_t>(text.size()), below(200), 0, &length) == 0) {
            ASSERT_LT(length, text.size());
            ASSERT_EQ(std::strlen(text.data()), length);
            ASSERT_EQ(xdec_from_char(&result, text.data(), length), 0) << text.data();
        }
        xdec_abs(&x, &result);
        xdec_neg(&x, &result);
        xdec_copy(&result, &x);
        ASSERT_EQ(bytes_of(result), bytes_of(x));
    }
}

TEST_F(DecimalHostile, AnyTextIsReadOrRefused) {
    constexpr std::string_view kAlphabet = "0123456789999000....eE+-  \tx";
    for (int turn = 0; turn < 2 * kTurns; ++turn) {
        std::vector<char> text(below(60));
        for (char& c : text) c = below(50) == 0 ? static_cast<char>(random_()) : kAlphabet[below(kAlphabet.size())];
        xdec x;
        const int32_t code = xdec_from_char(&x, text.data(), static_cast<uint32_t>(text.size()));
        ASSERT_TRUE(code == 0 || code == RC_VALUE_IS_NULL || code == EC_NUMBER_TEXT_INVALID || code == EC_DATA_OVERFLOW);
        ASSERT_NE(xdec_is_canonical(&x), 0);
    }
}

}  // namespace
