#include "tests/support/value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace support {
namespace {

Cell parsed(const char* type, const char* word) {
    Cell cell;
    EXPECT_EQ(find_value_type(type)->parse(word, cell), "") << word;
    return cell;
}

bool parses(const char* type, const char* word) {
    Cell cell;
    return find_value_type(type)->parse(word, cell).empty();
}

bool same(const char* type, const char* expected, const char* actual, Tolerance tolerance = {}) {
    return find_value_type(type)->same(parsed(type, expected), parsed(type, actual), tolerance);
}

constexpr Tolerance kOneUlp = {Tolerance::Kind::ulp, 1};
constexpr Tolerance kByValue = {Tolerance::Kind::value, 0};

TEST(Values, AreAsWideAsTheElementsOfVectors) {
    const std::pair<const char*, uint32_t> widths[] = {{"int", 4},  {"bigint", 8},    {"double", 8},       {"float", 4},
                                                       {"dec", 30}, {"datetime", 13}, {"interval_ym", 12}, {"interval_dt", 24},
                                                       {"str", 16}, {"bin", 16}};
    for (const auto& [name, width] : widths) {
        ASSERT_NE(find_value_type(name), nullptr) << name;
        EXPECT_EQ(find_value_type(name)->width(), width) << name;
    }
    EXPECT_EQ(find_value_type("varchar"), nullptr);
}

TEST(Values, ReadIntegers) {
    EXPECT_EQ(from_cell<int32_t>(parsed("int", "-2147483648")), std::numeric_limits<int32_t>::min());
    EXPECT_EQ(from_cell<int32_t>(parsed("int", "max")), std::numeric_limits<int32_t>::max());
    EXPECT_EQ(from_cell<int64_t>(parsed("bigint", "min")), std::numeric_limits<int64_t>::min());
    EXPECT_EQ(from_cell<int64_t>(parsed("bigint", "+5")), 5);
    for (const char* word : {"", "-", "1x", "0x10", "1.0", "9223372036854775808"}) EXPECT_FALSE(parses("bigint", word)) << word;
}

TEST(Values, ReadDoublesByTheBit) {
    EXPECT_TRUE(std::signbit(from_cell<double>(parsed("double", "-0.0"))));
    EXPECT_TRUE(std::isnan(from_cell<double>(parsed("double", "NaN"))));
    EXPECT_EQ(from_cell<double>(parsed("double", "-inf")), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(from_cell<double>(parsed("double", "0x1p-1074")), std::numeric_limits<double>::denorm_min());
    EXPECT_EQ(from_cell<float>(parsed("float", "0x1p-149")), std::numeric_limits<float>::denorm_min());
    EXPECT_FALSE(parses("double", "1.0.0"));
    EXPECT_FALSE(parses("double", ""));
}

TEST(Values, CompareDoublesByTheBit) {
    EXPECT_TRUE(same("double", "1.5", "1.5"));
    EXPECT_TRUE(same("double", "NaN", "-NaN"));
    EXPECT_FALSE(same("double", "NaN", "1"));
    EXPECT_FALSE(same("double", "0.0", "-0.0"));
    EXPECT_FALSE(same("double", "1", "0x1.0000000000001p0"));
    EXPECT_TRUE(same("double", "1", "0x1.0000000000001p0", kOneUlp));
    EXPECT_FALSE(same("double", "1", "0x1.0000000000002p0", kOneUlp));
    EXPECT_FALSE(same("double", "0.0", "-0.0", kOneUlp));
    EXPECT_FALSE(same("double", "1e308", "inf", {Tolerance::Kind::relative, 1.0}));
    EXPECT_TRUE(same("double", "100", "100.0000001", {Tolerance::Kind::relative, 1e-8}));
    EXPECT_FALSE(same("double", "100", "100.0000001", {Tolerance::Kind::relative, 1e-10}));
    EXPECT_TRUE(same("float", "1", "0x1.000002p0", kOneUlp));
    EXPECT_FALSE(same("float", "1", "0x1.000002p0"));
}

TEST(Values, CompareDecimalsByValueAndScale) {
    EXPECT_TRUE(same("dec", "2.00", "2.00"));
    EXPECT_FALSE(same("dec", "2.00", "2"));
    EXPECT_TRUE(same("dec", "2.00", "2", kByValue));
    EXPECT_FALSE(same("dec", "2.00", "3", kByValue));
    EXPECT_TRUE(same("dec", "4294967296", "x'C10A0000040006C52B5F614961'"));
    EXPECT_TRUE(same("dec", "x'C10A0000040006C52B5F614961'", "4294967296"));
    EXPECT_FALSE(same("dec", "x'C1'", "x'C101'"));
    EXPECT_FALSE(same("dec", "0", "x'C1'"));  // not a decimal's one form
    EXPECT_FALSE(parses("dec", ""));
    EXPECT_FALSE(parses("dec", "1,5"));
}

TEST(Values, ReadDateTimes) {
    const auto is = [](const char* word, qztime t) { return parsed("datetime", word).bytes == to_cell(t).bytes; };
    EXPECT_TRUE(is("'2024-02-29'", {2024, 2, 29, 0, 0, 0, 0, TZ_NONE}));
    EXPECT_TRUE(is("'2024-02-29 10:30:15'", {2024, 2, 29, 10, 30, 15, 0, TZ_NONE}));
    EXPECT_TRUE(is("'2024-02-29 10:30:15.25'", {2024, 2, 29, 10, 30, 15, 250000000, TZ_NONE}));
    EXPECT_TRUE(is("'2024-02-29 10:30:15.000000001 -03:30'", {2024, 2, 29, 10, 30, 15, 1, -210}));
    EXPECT_TRUE(is("'2024-02-29 +08:00'", {2024, 2, 29, 0, 0, 0, 0, 480}));
    EXPECT_TRUE(is("'-4712-01-01'", {-4712, 1, 1, 0, 0, 0, 0, TZ_NONE}));
    EXPECT_TRUE(is("{2024,13,32,25,61,62,5,1000}", {2024, 13, 32, 25, 61, 62, 5, 1000}));
    for (const char* word : {"2024-02-29", "'2024-02'", "'2024-02-29 10:30'", "'2024-02-29 10:30:15.'",
                             "'2024-02-29 10:30:15x'", "{2024,2,29}", "{1,2,3,4,5,6,7,8,9}"}) {
        EXPECT_FALSE(parses("datetime", word)) << word;
    }
}

TEST(Values, ReadIntervals) {
    EXPECT_EQ(parsed("interval_ym", "{1,-2,3}").bytes, to_cell(qz_interval_ym{1, -2, 3}).bytes);
    EXPECT_EQ(parsed("interval_dt", "{1,2,3,4,5,6}").bytes, to_cell(qz_interval_dt{1, 2, 3, 4, 5, 6}).bytes);
    EXPECT_FALSE(parses("interval_ym", "{1,2}"));
    EXPECT_FALSE(parses("interval_ym", "{1,2,3,4}"));
}

TEST(Values, ReadTexts) {
    EXPECT_EQ(from_cell<Text>(parsed("str", "'ab'+3")), (Text{"ab", 3}));
    EXPECT_EQ(from_cell<Text>(parsed("str", "''")), (Text{"", 0}));
    EXPECT_EQ(from_cell<Text>(parsed("str", "'it''s'")), (Text{"it's", 0}));
    EXPECT_EQ(from_cell<Text>(parsed("str", "x'00FF'&'ab'*2&' '")), (Text{std::string("\0\xFF"
                                                                                      "abab ",
                                                                                      7),
                                                                          0}));
    EXPECT_TRUE(same("str", "'ab  '", "'ab'+2", kByValue));
    EXPECT_FALSE(same("str", "'ab  '", "'ab'+2"));
    EXPECT_FALSE(same("str", "'ab'", "'ab'+2", kByValue));
    for (const char* word : {"ab", "'ab", "'a'b", "'a'&", "'a'*x", "x'0'", "x'0G'"}) EXPECT_FALSE(parses("str", word)) << word;
}

TEST(Values, ArePrintedAsTheyAreRead) {
    for (const auto& [type, word] : {std::pair{"int", "-5"},
                                     {"bigint", "9223372036854775807"},
                                     {"datetime", "{2024,2,29,1,2,3,4,480}"},
                                     {"interval_ym", "{1,2,3}"},
                                     {"str", "'ab'+3"}}) {
        EXPECT_EQ(find_value_type(type)->print(parsed(type, word)), word);
    }
}

}  // namespace
}  // namespace support
