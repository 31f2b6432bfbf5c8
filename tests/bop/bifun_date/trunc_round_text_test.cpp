// The text workers of round and trunc that are exported.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "qzbifun/codes.h"
#include "qzbifun/date_rounding.h"

namespace {

// The code and the text, or what was there before.
struct Written {
    int32_t code;
    std::string text;
    bool operator==(const Written&) const = default;
};
void PrintTo(const Written& written, std::ostream* out) { *out << written.code << " '" << written.text << "'"; }

const std::string kUntouched = "?";

template <class Worker, class... Argument>
Written call(Worker* worker, const std::string& text, Argument... argument) {
    char buffer[DATE_ROUNDING_TEXT_BYTES];
    std::memset(buffer, 'x', sizeof buffer);
    uint32_t length = UINT32_MAX;
    const int32_t code = worker(text.data(), static_cast<uint32_t>(text.size()), argument..., buffer, &length);
    if (length == UINT32_MAX) return {code, kUntouched};
    EXPECT_EQ(strnlen(buffer, sizeof buffer), length);
    return {code, {buffer, length}};
}

Written done(const std::string& text) { return {0, text}; }
Written failed(int32_t code) { return {code, kUntouched}; }

TEST(TextRounding, OfDatetimes) {
    EXPECT_EQ(call(btrunc_dt_str_low, "2024-08-29 12:30:45.5", 1), done("2024-08-29 00:00:00"));
    EXPECT_EQ(call(ifun_round_dt_str_low, "2024-08-29 12:30:45.5", 1), done("2024-08-30 00:00:00"));
    EXPECT_EQ(call(btrunc_dt_str_low, "2024-08-29", 3), done("2024-01-01 00:00:00"));
    EXPECT_EQ(call(ifun_round_dt_str_low, "2024-08-29", 3), done("2025-01-01 00:00:00"));
    EXPECT_EQ(call(btrunc_dt_str_low, "-4712-01-01", 2), done("-4800-01-01 00:00:00"));
    EXPECT_EQ(call(btrunc_dt_str_low, "  ", 1), failed(RC_VALUE_IS_NULL));
    EXPECT_EQ(call(ifun_round_dt_str_low, "", 1), failed(RC_VALUE_IS_NULL));
    EXPECT_EQ(call(btrunc_dt_str_low, "abc", 1), failed(EC_DATE_TEXT_INVALID));
    EXPECT_EQ(call(ifun_round_dt_str_low, "123.456", 1), failed(EC_DATE_TEXT_INVALID));
    EXPECT_EQ(call(btrunc_dt_str_low, "2024-08-29", 12), failed(EC_DATE_FORMAT_INVALID));
    EXPECT_EQ(call(ifun_round_dt_str_low, "2024-08-29", 0), failed(EC_DATE_FORMAT_INVALID));
    EXPECT_EQ(call(ifun_round_dt_str_low, "9999-12-31 12:00", 1), failed(EC_DATE_VALUE_INVALID));
}

TEST(TextRounding, OfNumbers) {
    EXPECT_EQ(call(btrunc_dec_str_low, "123.456", int64_t{2}), done("123.45"));
    EXPECT_EQ(call(ifun_round_dec_str_low, "123.456", int64_t{2}), done("123.46"));
    EXPECT_EQ(call(btrunc_dec_str_low, "-0.999", int64_t{0}), done("0"));
    EXPECT_EQ(call(ifun_round_dec_str_low, "-0.999", int64_t{0}), done("-1"));
    EXPECT_EQ(call(ifun_round_dec_str_low, "99.95", int64_t{1}), done("100.0"));
    EXPECT_EQ(call(btrunc_dec_str_low, "123.456", int64_t{-5}), done("0"));
    EXPECT_EQ(call(btrunc_dec_str_low, "  ", int64_t{0}), failed(RC_VALUE_IS_NULL));
    EXPECT_EQ(call(ifun_round_dec_str_low, "2024-01-01", int64_t{0}), failed(EC_NUMBER_TEXT_INVALID));
    // A number of 126 digits, the longest there is.
    EXPECT_EQ(call(ifun_round_dec_str_low, "9.5e125", int64_t{0}), done("95" + std::string(124, '0')));
    EXPECT_EQ(call(btrunc_dec_str_low, "1e126", int64_t{0}), failed(EC_DATA_OVERFLOW));
    EXPECT_EQ(call(ifun_round_dec_str_low, "9.5e125", int64_t{-125}), failed(EC_DATA_OVERFLOW));
}

TEST(TextRounding, OfNumbersToScalesBeyond32Bits) {
    for (const int64_t scale : {int64_t{INT32_MAX}, int64_t{INT32_MAX} + 1, INT64_MAX}) {
        EXPECT_EQ(call(btrunc_dec_str_low, "123.456", scale), done("0"));
        EXPECT_EQ(call(ifun_round_dec_str_low, "123.456", scale), done("0"));
        EXPECT_EQ(call(ifun_round_dec_str_low, "abc", scale), failed(EC_NUMBER_TEXT_INVALID));
    }
    for (const int64_t scale : {int64_t{INT32_MIN}, int64_t{INT32_MIN} - 1, INT64_MIN}) {
        EXPECT_EQ(call(btrunc_dec_str_low, "123.456", scale), done("123.456"));
        EXPECT_EQ(call(ifun_round_dec_str_low, "-123.456", scale), done("-123.456"));
    }
    EXPECT_EQ(call(btrunc_dec_str_low, "123.456", int64_t{INT32_MAX} - 1), done("123.456"));
    EXPECT_EQ(call(btrunc_dec_str_low, "123.456", int64_t{INT32_MIN} + 1), done("0"));
}

TEST(TextRounding, OfEither) {
    EXPECT_EQ(call(ifun_round_str_low, "123.5"), done("124"));
    EXPECT_EQ(call(ifun_round_str_low, "20240229"), done("20240229"));
    EXPECT_EQ(call(ifun_round_str_low, "2024-02-29 12:00"), done("2024-03-01 00:00:00"));
    EXPECT_EQ(call(ifun_round_str_low, " "), failed(RC_VALUE_IS_NULL));
    EXPECT_EQ(call(ifun_round_str_low, "12a"), failed(EC_DATE_TEXT_INVALID));
}

}  // namespace
