// Texts of intervals. Python's divmod gave the carried fields.
#include "engine/interval_text.h"

#include <gtest/gtest.h>

#include <climits>

#include "tests/engine/support.h"

namespace qzengine {
namespace {

template <class T>
std::string text_of(const T& value) {
    TextBuffer out;
    append_interval(out, value);
    return std::string(out.view());
}

TEST(IntervalText, IsTheShortestThatLiteralsHave) {
    EXPECT_EQ(text_of(qz_interval_ym{1, 2, 0}), "1-2");
    EXPECT_EQ(text_of(qz_interval_ym{-1, -2, HOST_IV_QUALIFIER_YM}), "-1-2");
    EXPECT_EQ(text_of(qz_interval_ym{0, 0, 656}), "0-0");
    EXPECT_EQ(text_of(qz_interval_ym{0, 14, 656}), "1-2");
    EXPECT_EQ(text_of(qz_interval_ym{0, -1, 656}), "-0-1");
    EXPECT_EQ(text_of(qz_interval_ym{INT_MIN, INT_MIN, -1}), "-2326440618-8");
    EXPECT_EQ(text_of(qz_interval_dt{3, 4, 5, 6, 789000, HOST_IV_QUALIFIER_DT}), "3 04:05:06.789");
    EXPECT_EQ(text_of(qz_interval_dt{0, 0, 0, 0, 0, 0}), "0 00:00:00");
    EXPECT_EQ(text_of(qz_interval_dt{100, 0, 0, 0, 0, HOST_IV_DAY * 256 + 48}), "100 00:00:00");
    EXPECT_EQ(text_of(qz_interval_dt{0, 0, 0, 0, -1, HOST_IV_QUALIFIER_DT}), "-0 00:00:00.000001");
    EXPECT_EQ(text_of(qz_interval_dt{0, 36, 0, 10, 0, 0}), "1 12:00:10");
    EXPECT_EQ(text_of(qz_interval_dt{999999999, 23, 59, 59, 999999, 0}), "999999999 23:59:59.999999");
    EXPECT_EQ(text_of(qz_interval_dt{0, 0, 0, 0, 2500000, 0}), "0 00:00:02.5");
}

TEST(IntervalText, IsReadByTheQualifiersFields) {
    const auto read = [](std::string_view text) {
        qz_interval_dt value{};
        const int32_t code = parse_interval(text, value);
        return code != 0 ? std::to_string(code) : text_of(value);
    };
    EXPECT_EQ(read(" 3 04:05:06.7 "), "3 04:05:06.7");
    EXPECT_EQ(read("PT36H"), "1 12:00:00");
    EXPECT_EQ(read(std::string(1000, ' ') + "-1 00:00:00"), "-1 00:00:00");
    const std::string invalid = std::to_string(EC_INTERVAL_TEXT_INVALID);
    EXPECT_EQ(read(""), invalid);
    EXPECT_EQ(read("3"), invalid);
    EXPECT_EQ(read("1-2"), invalid);
    EXPECT_EQ(read("3 24:00:00"), invalid);
    EXPECT_EQ(read(std::string_view("3 04:05:06\0x", 12)), invalid);
    EXPECT_EQ(read(std::string_view("3 04:05:06\0", 11)), invalid);
    EXPECT_EQ(read("1000000000 00:00:00"), std::to_string(EC_INTERVAL_OUT_OF_RANGE));
    qz_interval_ym months{};
    EXPECT_EQ(parse_interval("1-12", months), EC_INTERVAL_TEXT_INVALID);
    EXPECT_EQ(parse_interval("1000000000-0", months), EC_INTERVAL_OUT_OF_RANGE);
    EXPECT_EQ(parse_interval("999999999-11", months), 0);
    EXPECT_EQ(months.iv_year, 999999999);
    EXPECT_EQ(months.iv_month, 11);
}

TEST(IntervalText, CastsAndComparisons) {
    EXPECT_EQ(evaluate_text("CAST('1-2' AS interval_ym)"), "1-2");
    EXPECT_EQ(evaluate_text("CAST(CAST('P3DT4H' AS interval_dt) AS string)"), "3 04:00:00");
    EXPECT_EQ(evaluation_code("CAST('x' AS interval_ym)"), EC_INTERVAL_TEXT_INVALID);
    EXPECT_EQ(evaluation_code("CAST('9999999999 0:0:0' AS interval_dt)"), EC_INTERVAL_OUT_OF_RANGE);
    EXPECT_EQ(evaluate_text("INTERVAL '1' YEAR = INTERVAL '12' MONTH"), "1");
    EXPECT_EQ(evaluate_text("INTERVAL '1' DAY < INTERVAL '24:00:00.000001' HOUR TO SECOND"), "1");
    EXPECT_EQ(evaluate_text("INTERVAL '-1' DAY < INTERVAL '-1' HOUR"), "1");
    EXPECT_THROW(evaluate_text("INTERVAL '1' DAY < INTERVAL '1' MONTH"), QueryError);
    const TestColumn ym{"y", ValueType::kIntervalYm, {"1-2", std::nullopt, "-0-1"}};
    const TestColumn dt{"d", ValueType::kIntervalDt, {"1 00:00:00", "2 00:00:00", std::nullopt}};
    const std::vector<std::string> lines{"1-2|0|1 00:00:00|1", "NULL|NULL|2 00:00:00|0", "-0-1|1|NULL|NULL"};
    EXPECT_EQ(evaluate("y, y < INTERVAL '1' YEAR, d, INTERVAL '36' HOUR > d", {ym, dt}), lines);
}

}  // namespace
}  // namespace qzengine
