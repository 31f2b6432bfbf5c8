// Texts of dates and times by type: what each type needs, refuses and adds, and casts between them. That texts are split into
// the right fields is the host's test; Python's datetime.isoformat gave the expected texts here.
#include "engine/datetime_text.h"

#include <gtest/gtest.h>

#include "tests/engine/support.h"

namespace qzengine {
namespace {

constexpr int16_t kZone = 120;

// The text read as the type and written again; "no" when it is none.
std::string again(ValueType type, std::string_view text) {
    qztime value;
    const int32_t code = parse_datetime(text, type, kZone, value);
    if (code != 0) return code == EC_DATE_TEXT_INVALID ? "no" : "another code";
    TextBuffer out;
    append_datetime(out, type, value);
    return std::string(out.view());
}

TEST(DatetimeText, ATextHoldsWhatItsTypeHasAndNothingMore) {
    struct Row {
        std::string_view text;
        std::string_view date, time, datetime, time_tz, datetime_tz;
    };
    const Row rows[] = {
        {"2024-02-29", "2024-02-29", "no", "2024-02-29 00:00:00", "no", "2024-02-29 00:00:00 +02:00"},
        {"10:30:15.5", "no", "10:30:15.5", "no", "10:30:15.5 +02:00", "no"},
        {"10:30 -03:30", "no", "no", "no", "10:30:00 -03:30", "no"},
        {"2024-02-29 10:30", "no", "no", "2024-02-29 10:30:00", "no", "2024-02-29 10:30:00 +02:00"},
        {"2024-02-29T10:30:15.123456789Z", "no", "no", "no", "no", "2024-02-29 10:30:15.123456789 +00:00"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(again(ValueType::kDate, row.text), row.date) << row.text;
        EXPECT_EQ(again(ValueType::kTime, row.text), row.time) << row.text;
        EXPECT_EQ(again(ValueType::kDatetime, row.text), row.datetime) << row.text;
        EXPECT_EQ(again(ValueType::kTimeTz, row.text), row.time_tz) << row.text;
        EXPECT_EQ(again(ValueType::kDatetimeTz, row.text), row.datetime_tz) << row.text;
    }
}

TEST(DatetimeText, WhatIsNoMomentIsRefused) {
    for (std::string_view text :
         {"", " ", "x", "2024-02-30", "2023-02-29", "2024-13-01", "2024-00-10", "10000-01-01", "-4713-12-31",
          "2024-02-29 24:00", "2024-02-29 10:60", "2024-02-29 10:30 +15:00", "2024-02-29x", "99999999999"}) {
        for (ValueType type :
             {ValueType::kDate, ValueType::kTime, ValueType::kDatetime, ValueType::kTimeTz, ValueType::kDatetimeTz}) {
            EXPECT_EQ(again(type, text), "no") << text << " as " << type_name(type);
        }
    }
    EXPECT_EQ(again(ValueType::kDate, std::string(100000, '1')), "no");
    EXPECT_EQ(again(ValueType::kDate, std::string("2024-02-29\0", 11)), "no");
}

TEST(DatetimeText, TheCalendarsEndsAreRead) {
    EXPECT_EQ(again(ValueType::kDate, "-4712-01-01"), "-4712-01-01");
    EXPECT_EQ(again(ValueType::kDatetime, "9999-12-31 23:59:59.999999999"), "9999-12-31 23:59:59.999999999");
    EXPECT_EQ(again(ValueType::kDate, "1582-10-10"), "1582-10-15") << "a day that did not exist";
}

TEST(DatetimeText, ARecordThatIsNoValueIsWrittenAsItStands) {
    const qztime value{2024, 13, 45, 25, 61, 62, 5, 2000};
    const auto text = [&](ValueType type) {
        TextBuffer out;
        append_datetime(out, type, value);
        return std::string(out.view());
    };
    EXPECT_EQ(text(ValueType::kDate), "2024-13-45");
    EXPECT_EQ(text(ValueType::kTime), "25:61:62.000000005");
    EXPECT_EQ(text(ValueType::kDatetimeTz), "2024-13-45 25:61:62.000000005 +2000 minutes");
}

// ---- Casts ------------------------------------------------------------------------------------------------------------------

TEST(DatetimeText, ACastDropsWhatTheOtherTypeDoesNotHaveAndAddsWhatItHas) {
    const std::string moment = "CAST('2024-02-29 10:30:15.5 +08:00' AS datetime_tz)";
    EXPECT_EQ(evaluate_text("CAST(" + moment + " AS datetime)"), "2024-02-29 10:30:15.5");
    EXPECT_EQ(evaluate_text("CAST(" + moment + " AS date)"), "2024-02-29");
    EXPECT_EQ(evaluate_text("CAST(" + moment + " AS time)"), "10:30:15.5");
    EXPECT_EQ(evaluate_text("CAST(" + moment + " AS time_tz)"), "10:30:15.5 +08:00");
    EXPECT_EQ(evaluate_text("CAST(" + moment + " AS string)"), "2024-02-29 10:30:15.5 +08:00");
    EXPECT_EQ(evaluate_text("CAST(CAST('2024-02-29' AS date) AS datetime_tz)"), "2024-02-29 00:00:00 +00:00");
    EXPECT_EQ(evaluate_text("CAST(CAST('10:30' AS time) AS time_tz)"), "10:30:00 +00:00");
    EXPECT_EQ(evaluate_text("CAST(CAST(" + moment + " AS date) AS datetime)"), "2024-02-29 00:00:00");
    EXPECT_THROW(evaluate_text("CAST(CAST('10:30' AS time) AS datetime)"), QueryError) << "there is no day to add";
    EXPECT_EQ(evaluation_code("CAST('2024-02-30' AS date)"), EC_DATE_TEXT_INVALID);
    EXPECT_EQ(evaluation_code("CAST('2024-02-29 10:30' AS date)"), EC_DATE_TEXT_INVALID);
}

TEST(DatetimeText, CastsOfColumnsKeepNullsAndRows) {
    const TestColumn column{"s", ValueType::kString, {"2024-02-29", std::nullopt, " 1999-12-31 "}};
    const std::vector<std::string> dates{"2024-02-29", "NULL", "1999-12-31"};
    EXPECT_EQ(evaluate("CAST(s AS date)", {column}), dates);
    EXPECT_EQ(evaluate("CAST(CAST(s AS date) AS string)", {column}), dates);
    const std::vector<std::string> moments{"2024-02-29 00:00:00", "NULL", "1999-12-31 00:00:00"};
    EXPECT_EQ(evaluate("CAST(CAST(s AS date) AS datetime)", {column}), moments);
}

TEST(DatetimeText, BinaryDataIsReadAsBytesAndShownInDigits) {
    EXPECT_EQ(evaluate_text("CAST('a~' AS binary)"), "617E");
    EXPECT_EQ(evaluate_text("CAST('' AS binary)"), "");
    EXPECT_EQ(evaluate_text("CAST(CAST('a~' AS binary) AS string)"), "a~");
    EXPECT_EQ(evaluate_text("CAST('a' AS binary) < CAST('a ' AS binary)"), "1") << "no blanks are implied";
    EXPECT_EQ(evaluate_text("CAST('b' AS binary) > CAST('a~' AS binary)"), "1");
    EXPECT_EQ(evaluate_text("CAST('\xFF' AS binary) > CAST('a' AS binary)"), "1") << "bytes have no sign";
    EXPECT_THROW(evaluate_text("CAST('a' AS binary) = 'a'"), QueryError);
    const TestColumn column{"b", ValueType::kBinary, {"a", std::nullopt, ""}};
    const std::vector<std::string> compared{"0|61", "NULL|NULL", "1|"};
    EXPECT_EQ(evaluate("b < CAST('a' AS binary), b", {column}), compared);
}

// ---- Comparison -------------------------------------------------------------------------------------------------------------

TEST(DatetimeText, DatesAndTimesAreComparedInTheTypeThatHasMore) {
    EXPECT_EQ(evaluate_text("CAST('2024-02-29' AS date) = CAST('2024-02-29' AS datetime)"), "1");
    EXPECT_EQ(evaluate_text("CAST('2024-02-29' AS date) < CAST('2024-02-29 00:00:00.000000001' AS datetime)"), "1");
    EXPECT_EQ(evaluate_text("CAST('-4712-01-01' AS date) < CAST('9999-12-31' AS date)"), "1");
    EXPECT_EQ(evaluate_text("CAST('2024-02-29 10:30' AS datetime) = CAST('2024-02-29 18:30 +08:00' AS datetime_tz)"), "1");
    EXPECT_EQ(evaluate_text("CAST('10:30 +01:00' AS time_tz) < CAST('10:30' AS time)"), "1");
    EXPECT_EQ(evaluate_text("CAST('10:30' AS time) <> CAST('10:30:01' AS time)"), "1");
    EXPECT_EQ(evaluate_text("CAST('2024-02-29' AS date) = NULL"), "NULL");
    EXPECT_THROW(evaluate_text("CAST('2024-02-29' AS date) < CAST('10:30' AS time)"), QueryError);
    EXPECT_THROW(evaluate_text("CAST('2024-02-29' AS date) < '2024-03-01'"), QueryError);
    const TestColumn column{"d", ValueType::kDate, {"2024-02-29", std::nullopt, "1582-10-04"}};
    const std::vector<std::string> later{"2024-02-29"};
    EXPECT_EQ(evaluate("d", {column}, "d > CAST('1582-10-15' AS date)"), later);
}

}  // namespace
}  // namespace qzengine
