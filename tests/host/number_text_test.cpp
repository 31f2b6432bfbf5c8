#include "qzhost/number_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <string_view>

#include "qzbifun/codes.h"
#include "support/test_seed.h"
#include "tests/host/documented_examples.h"
#include "tests/host/oracle_script.h"

namespace {

using qzbifun_test::documented_examples;
using qzbifun_test::oracle_lines;
using qzbifun_test::split;

constexpr int kLongestText = 24;
constexpr int kOracleCount = 20000;

#ifdef NDEBUG
constexpr int kRandomCount = 3'000'000;
#else
constexpr int kRandomCount = 100'000;
#endif

uint64_t bits_of(double value) { return std::bit_cast<uint64_t>(value); }

// The text of a double, in a buffer of exactly the size that is promised to be enough.
std::string text_of(double value) {
    char* const buffer = new char[QZ_DOU2CHAR_BYTES];
    std::memset(buffer, '#', QZ_DOU2CHAR_BYTES);
    const int32_t length = qz_dou2char(value, 1, buffer);
    EXPECT_LE(length, kLongestText);
    EXPECT_EQ(static_cast<size_t>(length), std::strlen(buffer));
    std::string text(buffer, static_cast<size_t>(length));
    delete[] buffer;
    return text;
}

struct Reading {
    int32_t code;
    double value;
};

constexpr double kUntouched = 77.25;

// Reads out of a block of exactly the text's length, with nothing behind it.
Reading read(std::string_view text) {
    char* const block = new char[text.size()];
    std::memcpy(block, text.data(), text.size());
    Reading reading{0, kUntouched};
    reading.code = utl_digit_from_char(block, static_cast<uint32_t>(text.size()), &reading.value, 1);
    delete[] block;
    return reading;
}

void expect_read(std::string_view text, double value) {
    const Reading reading = read(text);
    EXPECT_EQ(reading.code, 0) << text;
    EXPECT_EQ(bits_of(reading.value), bits_of(value)) << text << " gave " << reading.value;
}

void expect_refused(std::string_view text, int32_t code) {
    const Reading reading = read(text);
    EXPECT_EQ(reading.code, code) << text;
    EXPECT_EQ(reading.value, kUntouched) << text;
}

TEST(NumberText, WritesPlainDigitsInTheMiddleOfTheRange) {
    EXPECT_EQ(text_of(0.0), "0");
    EXPECT_EQ(text_of(-0.0), "-0");
    EXPECT_EQ(text_of(1.0), "1");
    EXPECT_EQ(text_of(-1.5), "-1.5");
    EXPECT_EQ(text_of(100.0), "100");
    EXPECT_EQ(text_of(0.1), "0.1");
    EXPECT_EQ(text_of(0.1 + 0.2), "0.30000000000000004");
    EXPECT_EQ(text_of(1.0 / 3.0), "0.3333333333333333");
    EXPECT_EQ(text_of(123456.789), "123456.789");
    EXPECT_EQ(text_of(9007199254740991.0), "9007199254740991");
    EXPECT_EQ(text_of(1e15), "1000000000000000");
    EXPECT_EQ(text_of(9999999999999998.0), "9999999999999998");
    EXPECT_EQ(text_of(0.0001), "0.0001");
    EXPECT_EQ(text_of(-0.00012345), "-0.00012345");
}

TEST(NumberText, WritesAnExponentOutsideOfIt) {
    EXPECT_EQ(text_of(1e16), "1E+16");
    EXPECT_EQ(text_of(-1.5e16), "-1.5E+16");
    EXPECT_EQ(text_of(0.00001), "1E-05");
    EXPECT_EQ(text_of(0.000099999), "9.9999E-05");
    EXPECT_EQ(text_of(1.5e300), "1.5E+300");
    EXPECT_EQ(text_of(5e-324), "5E-324");
    EXPECT_EQ(text_of(2.2250738585072014e-308), "2.2250738585072014E-308");
    EXPECT_EQ(text_of(-std::numeric_limits<double>::max()), "-1.7976931348623157E+308");
    EXPECT_EQ(text_of(18446744073709551616.0), "1.8446744073709552E+19");
}

TEST(NumberText, WritesWhatIsNoNumber) {
    EXPECT_EQ(text_of(std::numeric_limits<double>::quiet_NaN()), "NaN");
    EXPECT_EQ(text_of(-std::numeric_limits<double>::quiet_NaN()), "NaN");
    EXPECT_EQ(text_of(std::numeric_limits<double>::infinity()), "Infinity");
    EXPECT_EQ(text_of(-std::numeric_limits<double>::infinity()), "-Infinity");
}

TEST(NumberText, WritesTheDocumentedTexts) {
    const auto rows = documented_examples("number-formats.md", "| Double | Text |");
    EXPECT_GT(rows.size(), 15u);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 2u);
        EXPECT_EQ(text_of(std::strtod(row[0].c_str(), nullptr)), row[1]);
    }
}

TEST(NumberText, WritesWhatPythonWrites) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE(seed);
    const auto lines =
        oracle_lines("number_text_oracle.py", "write " + std::to_string(seed) + " " + std::to_string(kOracleCount));
    ASSERT_EQ(lines.size(), size_t{kOracleCount});
    for (const std::string& line : lines) {
        const auto fields = split(line, ' ');
        ASSERT_EQ(text_of(std::bit_cast<double>(std::strtoull(fields[0].c_str(), nullptr, 16))), fields[1]) << fields[0];
    }
}

// The text of a number in the C++ library's form, d.ddde+dd, without a sign.
std::string scientific(std::string_view text) {
    if (text.front() == '-') text.remove_prefix(1);
    const size_t e = text.find('E');
    int exponent =
        e == std::string_view::npos ? 0 : static_cast<int>(std::strtol(std::string(text.substr(e + 1)).c_str(), nullptr, 10));
    const std::string_view plain = text.substr(0, e);
    const size_t point = std::min(plain.find('.'), plain.size());
    std::string digits(plain.substr(0, point));
    exponent += static_cast<int>(digits.size()) - 1;
    if (point < plain.size()) digits += plain.substr(point + 1);
    const size_t first = std::min(digits.find_first_not_of('0'), digits.size() - 1);
    digits.erase(0, first);
    exponent -= static_cast<int>(first);
    while (digits.size() > 1 && digits.back() == '0') digits.pop_back();
    if (digits.size() > 1) digits.insert(1, ".");
    const std::string magnitude = std::to_string(std::abs(exponent));
    return digits + (exponent < 0 ? "e-" : "e+") + (magnitude.size() < 2 ? "0" : "") + magnitude;
}

void expect_digits_of_to_chars(double value) {
    char buffer[40];
    const char* const end = std::to_chars(buffer, buffer + sizeof buffer, std::fabs(value), std::chars_format::scientific).ptr;
    ASSERT_EQ(scientific(text_of(value)), std::string_view(buffer, static_cast<size_t>(end - buffer))) << value;
}

// Around every power of two, where the gap below a number is half of that above it.
TEST(NumberText, WritesTheDigitsOfToCharsAtEveryExponent) {
    for (uint64_t exponent = 1; exponent < 0x7FF; ++exponent) {
        for (uint64_t bits = (exponent << 52) - 4; bits <= (exponent << 52) + 4; ++bits) {
            expect_digits_of_to_chars(std::bit_cast<double>(bits));
        }
    }
}

// Where a midpoint is a short decimal, or the number lies halfway between two: products that are cut off cannot tell.
TEST(NumberText, WritesTheDigitsOfToCharsAtTies) {
    std::mt19937_64 random(support::test_seed());
    for (int shift = -4; shift <= 12; ++shift) {
        for (int i = 0; i < kRandomCount / 100; ++i) {
            const auto mantissa = static_cast<double>(random() >> 11);
            expect_digits_of_to_chars(std::ldexp(mantissa, shift));
        }
        for (int i = -50; i <= 50; ++i) expect_digits_of_to_chars(std::ldexp(9e15 + i, shift));
    }
    for (int power = 0; power <= 22; ++power) {
        for (int i = 1; i < 100; ++i) expect_digits_of_to_chars(i * std::pow(10.0, power));
        for (int i = 1; i < 100; ++i) expect_digits_of_to_chars(i / std::pow(10.0, power));
    }
}

TEST(NumberText, WritesTheDigitsOfToCharsOfUsualNumbers) {
    std::mt19937_64 random(support::test_seed());
    for (int i = 0; i < kRandomCount / 4; ++i) {
        const auto drawn = static_cast<int64_t>(random());
        for (const double value : {std::bit_cast<double>(drawn), static_cast<double>(drawn) / 1e9,
                                   static_cast<double>(drawn % 1'000'000'000) / 100, static_cast<double>(drawn % 100'000)}) {
            if (std::isfinite(value)) expect_digits_of_to_chars(value);
        }
    }
}

TEST(NumberText, ReadsWhatPythonReads) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE(seed);
    const auto lines =
        oracle_lines("number_text_oracle.py", "read " + std::to_string(seed) + " " + std::to_string(kOracleCount));
    ASSERT_EQ(lines.size(), size_t{kOracleCount});
    for (const std::string& line : lines) {
        const auto fields = split(line, ' ');
        const Reading reading = read(fields[0]);
        if (fields[1] == "overflow") {
            ASSERT_EQ(reading.code, EC_DATA_OVERFLOW) << fields[0];
        } else {
            ASSERT_EQ(reading.code, 0) << fields[0];
            ASSERT_EQ(bits_of(reading.value), std::strtoull(fields[1].c_str(), nullptr, 16)) << fields[0];
        }
    }
}

TEST(NumberText, ReadsBackWhatItWrites) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    for (int i = 0; i < kRandomCount; ++i) {
        const auto value = std::bit_cast<double>(random());
        if (std::isfinite(value)) {
            const std::string text = text_of(value);
            const Reading reading = read(text);
            ASSERT_EQ(reading.code, 0) << text;
            ASSERT_EQ(bits_of(reading.value), bits_of(value)) << text;
        }
    }
}

TEST(NumberText, ReadsEveryFormOfANumber) {
    expect_read("0", 0.0);
    expect_read("-0", -0.0);
    expect_read("+7", 7.0);
    expect_read("12.", 12.0);
    expect_read(".5", 0.5);
    expect_read("-.5e1", -5.0);
    expect_read("1.e2", 100.0);
    expect_read("123e2", 12300.0);
    expect_read("1E+2", 100.0);
    expect_read("1e-2", 0.01);
    expect_read("1e0000000000000000000000000002", 100.0);
    expect_read("  42 ", 42.0);
    expect_read("0e99999999999999999999", 0.0);
    expect_read("-0.0e-99999999999999999999", -0.0);
    expect_read("9007199254740993", 9007199254740992.0);  // between two doubles: the even one
    expect_read("9007199254740995", 9007199254740996.0);
    expect_read("179769313486231570814527423731704356798070e267", 1.7976931348623157e308);
}

TEST(NumberText, RoundsTheSmallestAndTheLargest) {
    expect_read("4.9406564584124654e-324", 5e-324);
    expect_read("2.4703282292062328e-324", 5e-324);  // above half of the smallest
    expect_read("2.4703282292062327e-324", 0.0);     // below it
    expect_read("-1e-400", -0.0);
    expect_read("1e-99999999999999999999", 0.0);
    expect_read("1.7976931348623158e308", 1.7976931348623157e308);
    expect_refused("1.7976931348623159e308", EC_DATA_OVERFLOW);
    expect_refused("-1e309", EC_DATA_OVERFLOW);
    expect_refused("1e99999999999999999999", EC_DATA_OVERFLOW);
}

TEST(NumberText, ReadsLongTexts) {
    const std::string zeros(1000, '0');
    expect_read(zeros + "1", 1.0);
    expect_read("." + zeros + "1e1001", 1.0);
    expect_read("1" + zeros + "e-1000", 1.0);
    expect_read("1" + std::string(318, '0') + "e-318", 1.0);
    expect_read("0.1" + zeros, 0.1);
    expect_read("1." + zeros + "1", 1.0);
    expect_refused("1" + zeros, EC_DATA_OVERFLOW);
}

TEST(NumberText, StopsAtANul) {
    expect_read(std::string_view("12\0"
                                 "34",
                                 5),
                12.0);
    expect_read(std::string_view("1.5 \0x", 6), 1.5);
    expect_refused(std::string_view("\0"
                                    "12",
                                    3),
                   EC_INVALID_ARGUMENT);
    expect_refused(std::string_view("1e\0"
                                    "5",
                                    4),
                   EC_INVALID_ARGUMENT);
}

TEST(NumberText, RefusesWhatIsNoNumber) {
    for (const char* text : {"",    " ",     "+",     "-",     ".",   "-.",  "e5",   ".e5",  "1e",     "1e+",
                             "1e-", "1.2.3", "1 2",   "1-",    "--1", "+-1", "0x10", "NaN",  "nan",    "Infinity",
                             "inf", "1,5",   "1e5.0", "1e5e5", "\t1", "1\n", "- 1",  "1 e5", "twelve", "\xC2\xA0"}) {
        expect_refused(text, EC_INVALID_ARGUMENT);
    }
}

TEST(NumberText, ReadsNothingBeyondTheLength) {
    double value = kUntouched;
    EXPECT_EQ(utl_digit_from_char("123456", 3, &value, 1), 0);
    EXPECT_EQ(value, 123.0);
    EXPECT_EQ(utl_digit_from_char(nullptr, 0, &value, 1), EC_INVALID_ARGUMENT);
}

TEST(NumberText, SurvivesAnyBytes) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const std::string_view alphabet("0123456789..++--eE  \0x", 22);
    for (int i = 0; i < kRandomCount; ++i) {
        std::string text(random() % 12, ' ');
        for (char& c : text) {
            c = random() % 16 == 0 ? static_cast<char>(random()) : alphabet[random() % alphabet.size()];
        }
        const Reading reading = read(text);
        const std::string seen(text.c_str());  // up to the first NUL
        char* end = nullptr;
        const double expected = std::strtod(seen.c_str(), &end);
        if (reading.code == 0) {
            ASSERT_EQ(bits_of(reading.value), bits_of(expected)) << text;
        } else {  // what strtod reads whole, this reads too, but for words, hexadecimal numbers and other white space
            const bool whole = end != seen.c_str() &&
                               seen.find_first_not_of(' ', static_cast<size_t>(end - seen.c_str())) == std::string::npos;
            const bool plain = seen.find_first_not_of("0123456789.+-eE ") == std::string::npos;
            ASSERT_FALSE(whole && plain && std::isfinite(expected)) << text;
        }
    }
}

}  // namespace
