#include "qzhost/interval.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <string_view>

#include "qzbifun/codes.h"
#include "qzhost/decimal.h"
#include "support/test_seed.h"

namespace {

constexpr int32_t kMin = std::numeric_limits<int32_t>::min(), kMax = std::numeric_limits<int32_t>::max();

int32_t qualifier(int32_t kind, int32_t precision, int32_t fraction_digits) {
    return kind << 8 | precision << 4 | fraction_digits;
}

std::string describe(const qz_interval_ym& v) {
    std::ostringstream out;
    out << v.iv_year << ' ' << v.iv_month << " q" << v.iv_qualifier;
    return out.str();
}

std::string describe(const qz_interval_dt& v) {
    std::ostringstream out;
    out << v.iv_day << ' ' << v.iv_hour << ' ' << v.iv_minute << ' ' << v.iv_second << ' ' << v.iv_fraction << " q"
        << v.iv_qualifier;
    return out.str();
}

// The fields that a text gives, or the code. The text stands in memory of its own, so that a read behind its NUL is seen.
template <class Interval>
std::string read(std::string_view text, int32_t word, int32_t (*from_char)(qz_env*, const char*, Interval*, int32_t)) {
    const auto exact = std::make_unique<char[]>(text.size() + 1);
    std::memcpy(exact.get(), text.data(), text.size());
    exact[text.size()] = 0;
    Interval value;
    std::memset(&value, 0x5a, sizeof value);
    const Interval before = value;
    const int32_t code = from_char(nullptr, exact.get(), &value, word);
    if (code == 0) return describe(value);
    EXPECT_EQ(std::memcmp(&before, &value, sizeof value), 0) << text;
    return std::to_string(code);
}

std::string read_ym(std::string_view text, int32_t word = HOST_IV_QUALIFIER_YM) {
    return read(text, word, qz_interval_ym_from_char);
}
std::string read_dt(std::string_view text, int32_t word = HOST_IV_QUALIFIER_DT) {
    return read(text, word, qz_interval_dt_from_char);
}

std::string write(const qz_interval_dt& value) {
    char buffer[HOST_IV_TEXT_BYTES];
    std::memset(buffer, 0x5a, sizeof buffer);
    qz_interval_dt_to_char_oracle(&value, buffer, 0);
    EXPECT_LT(strnlen(buffer, sizeof buffer), sizeof buffer);
    return buffer;
}

const std::string kInvalid = std::to_string(EC_INTERVAL_TEXT_INVALID);
const std::string kOutOfRange = std::to_string(EC_INTERVAL_OUT_OF_RANGE);
const std::string kArgument = std::to_string(EC_INVALID_ARGUMENT);

TEST(Interval, QualifiersOfTheLibrary) {
    EXPECT_EQ(qualifier(HOST_IV_MONTH, 9, 0), 656);
    EXPECT_EQ(qualifier(HOST_IV_YEAR_TO_MONTH, 9, 6), HOST_IV_QUALIFIER_YM);
    EXPECT_EQ(qualifier(HOST_IV_DAY_TO_SECOND, 9, 6), HOST_IV_QUALIFIER_DT);
}

TEST(Interval, ReadsYearsAndMonths) {
    EXPECT_EQ(read_ym("1-2"), "1 2 q406");
    EXPECT_EQ(read_ym("  01-02  "), "1 2 q406");
    EXPECT_EQ(read_ym("+1-2"), "1 2 q406");
    EXPECT_EQ(read_ym("-1-2"), "-1 -2 q406");
    EXPECT_EQ(read_ym("0-11"), "0 11 q406");
    EXPECT_EQ(read_ym("999999999-11"), "999999999 11 q406");
    EXPECT_EQ(read_ym("000000000000001-1"), "1 1 q406");
    EXPECT_EQ(read_ym("P1Y2M"), "1 2 q406");
    EXPECT_EQ(read_ym("-p1y2m"), "-1 -2 q406");
    EXPECT_EQ(read_ym("P14M"), "1 2 q406");
    EXPECT_EQ(read_ym("P3Y"), "3 0 q406");
    EXPECT_EQ(read_ym("1000000000-0"), kOutOfRange);
    EXPECT_EQ(read_ym("99999999999999999999999-0"), kOutOfRange);
    EXPECT_EQ(read_ym("P999999999Y12M"), kOutOfRange);
    EXPECT_EQ(read_ym("15", 656), "0 15 q656");
    EXPECT_EQ(read_ym("-15", 656), "0 -15 q656");
    EXPECT_EQ(read_ym("P1Y2M", 656), "0 14 q656");
    EXPECT_EQ(read_ym("999999999", 656), "0 999999999 q656");
    EXPECT_EQ(read_ym("1000000000", 656), kOutOfRange);
    EXPECT_EQ(read_ym("1-2", 656), kInvalid);
    EXPECT_EQ(read_ym("12", qualifier(HOST_IV_YEAR, 2, 0)), "12 0 q32");
    EXPECT_EQ(read_ym("100", qualifier(HOST_IV_YEAR, 2, 0)), kOutOfRange);
    EXPECT_EQ(read_ym("P1Y2M", qualifier(HOST_IV_YEAR, 2, 0)), kInvalid);
    EXPECT_EQ(read_ym("P24M", qualifier(HOST_IV_YEAR, 2, 0)), "2 0 q32");
    for (const char* text :
         {"",      " ", "1",  "1-", "-",    "+",     "--1-2", "1--2", "1-12", "1-2-3", "1 2",     "1:2",    "1-2x", "x",
          "1.5-2", "P", "PT", "P1", "P1Y2", "P1M2Y", "P1Y1Y", "P1D",  "P-1Y", "P1.5Y", "1-2 P1Y", "P1YT2M", "\xff", "1-\xff"}) {
        EXPECT_EQ(read_ym(text), kInvalid) << text;
    }
    for (const int32_t word : {-1, kMin, kMax, 1686, 0x300, 0xd90, 0x100, 0x1a0, 0x1f0})
        EXPECT_EQ(read_ym("1-2", word), kArgument) << word;
}

TEST(Interval, ReadsDaysAndTimes) {
    EXPECT_EQ(read_dt("3 04:05:06.789"), "3 4 5 6 789000 q1686");
    EXPECT_EQ(read_dt(" 3   04:05:06 "), "3 4 5 6 0 q1686");
    EXPECT_EQ(read_dt("-3 04:05:06.000001"), "-3 -4 -5 -6 -1 q1686");
    EXPECT_EQ(read_dt("+0 0:0:0"), "0 0 0 0 0 q1686");
    EXPECT_EQ(read_dt("-0 00:00:00.5"), "0 0 0 0 -500000 q1686");
    EXPECT_EQ(read_dt("3 04:05:06.1234569999"), "3 4 5 6 123456 q1686");
    EXPECT_EQ(read_dt("999999999 23:59:59.999999"), "999999999 23 59 59 999999 q1686");
    EXPECT_EQ(read_dt("1000000000 00:00:00"), kOutOfRange);
    EXPECT_EQ(read_dt("P3DT4H5M6.7S"), "3 4 5 6 700000 q1686");
    EXPECT_EQ(read_dt("-P3DT4H"), "-3 -4 0 0 0 q1686");
    EXPECT_EQ(read_dt("PT36H"), "1 12 0 0 0 q1686");
    EXPECT_EQ(read_dt("PT90M"), "0 1 30 0 0 q1686");
    EXPECT_EQ(read_dt("PT0.5S"), "0 0 0 0 500000 q1686");
    EXPECT_EQ(read_dt("P100D"), "100 0 0 0 0 q1686");
    EXPECT_EQ(read_dt("PT86399999999999S"), "999999999 23 59 59 0 q1686");
    for (const char* text :
         {"PT86400000000000S", "PT99999999999999H", "P99999999999999999999DT99999999999999999999H99999999999999999999M9S"}) {
        EXPECT_EQ(read_dt(text), kOutOfRange) << text;
    }
    for (const char* text : {"",           " ",          "3",          "3 4",          "3 04:05",      "04:05:06",
                             "3 24:00:00", "3 00:60:00", "3 00:00:60", "3 04:05:06.",  "3 04:05:06.x", "3 04:05:06 7",
                             "3  ",        "3:04:05:06", "3-04:05:06", "- 3 04:05:06", "3 -04:05:06",  "P",
                             "PT",         "P1DT",       "P1H",        "PT1D",         "P1DT2H3H",     "PT1S2M",
                             "P1Y",        "P1D T2H",    "PTT1H",      "P1.5D",        "PT1.5H",       "PT1.S",
                             "PT.5S",      "\xff"}) {
        EXPECT_EQ(read_dt(text), kInvalid) << text;
    }
    for (const int32_t word : {-1, 656, 406, 0x290, 0xd96, 0x606, 0x6a6, 0x697})
        EXPECT_EQ(read_dt("3 04:05:06", word), kArgument) << word;
}

TEST(Interval, ReadsEveryKindOfDaysAndTimes) {
    struct Case {
        int32_t kind;
        const char* text;
        const char* fields;
    };
    constexpr Case kCases[] = {
        {HOST_IV_DAY, "-5", "-5 0 0 0 0"},
        {HOST_IV_DAY_TO_HOUR, "5 6", "5 6 0 0 0"},
        {HOST_IV_DAY_TO_MINUTE, "5 6:7", "5 6 7 0 0"},
        {HOST_IV_DAY_TO_SECOND, "5 6:7:8.9", "5 6 7 8 900000"},
        {HOST_IV_HOUR, "600", "0 600 0 0 0"},
        {HOST_IV_HOUR_TO_MINUTE, "600:7", "0 600 7 0 0"},
        {HOST_IV_HOUR_TO_SECOND, "600:7:8.9", "0 600 7 8 900000"},
        {HOST_IV_MINUTE, "700", "0 0 700 0 0"},
        {HOST_IV_MINUTE_TO_SECOND, "-700:8.9", "0 0 -700 -8 -900000"},
        {HOST_IV_SECOND, "800.123456", "0 0 0 800 123456"},
    };
    for (const Case& c : kCases) {
        const int32_t word = qualifier(c.kind, 3, 6);
        EXPECT_EQ(read_dt(c.text, word), std::string(c.fields) + " q" + std::to_string(word));
        const int32_t narrow = qualifier(c.kind, 2, 0);
        const bool fits = c.kind <= HOST_IV_DAY_TO_SECOND;
        const std::string whole =
            std::string(c.fields).substr(0, std::string(c.fields).rfind(' ')) + " 0 q" + std::to_string(narrow);
        EXPECT_EQ(read_dt(c.text, narrow), fits ? whole : kOutOfRange) << c.text;
    }
    // An ISO text must not hold less than the kind's last field.
    EXPECT_EQ(read_dt("PT48H", qualifier(HOST_IV_DAY, 9, 0)), "2 0 0 0 0 q" + std::to_string(qualifier(HOST_IV_DAY, 9, 0)));
    EXPECT_EQ(read_dt("PT49H", qualifier(HOST_IV_DAY, 9, 0)), kInvalid);
    EXPECT_EQ(read_dt("PT60.5S", qualifier(HOST_IV_MINUTE, 9, 0)), kInvalid);
    EXPECT_EQ(read_dt("P1DT1H", qualifier(HOST_IV_HOUR, 9, 0)), "0 25 0 0 0 q" + std::to_string(qualifier(HOST_IV_HOUR, 9, 0)));
}

TEST(Interval, WritesSignDaysTimeAndFraction) {
    EXPECT_EQ(write({3, 4, 5, 6, 789000, 1686}), "+000000003 04:05:06.789000");
    EXPECT_EQ(write({-3, -4, -5, -6, -789000, 1686}), "-000000003 04:05:06.789000");
    EXPECT_EQ(write({0, 0, 0, 0, 0, 1686}), "+000000000 00:00:00.000000");
    EXPECT_EQ(write({0, 0, 0, 0, -1, 1686}), "-000000000 00:00:00.000001");
    EXPECT_EQ(write({0, 0, 0, -1, 0, 1686}), "-000000000 00:00:01.000000");
    EXPECT_EQ(write({999999999, 23, 59, 59, 999999, 1686}), "+999999999 23:59:59.999999");
    EXPECT_EQ(write({3, 4, 5, 6, 789999, qualifier(HOST_IV_DAY_TO_SECOND, 2, 3)}), "+03 04:05:06.789");
    EXPECT_EQ(write({3, 4, 5, 6, 789999, qualifier(HOST_IV_DAY_TO_SECOND, 1, 0)}), "+3 04:05:06");
    EXPECT_EQ(write({100, 4, 0, 0, 0, qualifier(HOST_IV_DAY_TO_HOUR, 2, 0)}), "+100 04:00:00");
    EXPECT_EQ(write({0, 36, 0, 0, 0, qualifier(HOST_IV_HOUR, 9, 0)}), "+01 12:00:00");
    EXPECT_EQ(write({0, 0, 0, 800, 5, qualifier(HOST_IV_SECOND, 9, 6)}), "+00 00:13:20.000005");
    EXPECT_EQ(write({1, -24, 0, 0, 0, 1686}), "+000000000 00:00:00.000000");
    EXPECT_EQ(write({0, 0, 480, 0, 0, 0}), "+00 08:00:00");
    // 2147483647 * 90061 seconds and 2147483647 microseconds; the other end is one more of each.
    EXPECT_EQ(write({kMax, kMax, kMax, kMax, kMax, 1686}), "+2238478295 12:56:54.483647");
    EXPECT_EQ(write({kMin, kMin, kMin, kMin, kMin, 1686}), "-2238478296 13:57:55.483648");
}

TEST(Interval, ReadsBackWhatIsWritten) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    const auto between = [&](int least, int most) { return std::uniform_int_distribution<int>(least, most)(random); };
    for (int i = 0; i < 20000; ++i) {
        const int sign = random() % 2 == 0 ? 1 : -1;
        const qz_interval_dt value{sign * between(0, 999999999), sign * between(0, 23),     sign * between(0, 59),
                                   sign * between(0, 59),        sign * between(0, 999999), 1686};
        ASSERT_EQ(read_dt(write(value)), describe(value));
        const qz_interval_ym months{sign * between(0, 999999999), sign * between(0, 11), 406};
        const std::string text = std::string(sign < 0 ? "-" : "") + std::to_string(sign * months.iv_year) + "-" +
                                 std::to_string(sign * months.iv_month);
        ASSERT_EQ(read_ym(text), describe(months));
    }
}

TEST(Interval, ComparesLengths) {
    const auto ym = [](qz_interval_ym a, qz_interval_ym b) { return interval_ym_cmp(&a, &b, 0, 0); };
    EXPECT_EQ(ym({1, 0, 406}, {0, 12, 656}), 0);
    EXPECT_EQ(ym({1, 1, 406}, {0, 12, 656}), 1);
    EXPECT_EQ(ym({0, 11, 406}, {1, 0, 656}), -1);
    EXPECT_EQ(ym({-1, -1, 406}, {0, -12, 656}), -1);
    EXPECT_EQ(ym({kMax, kMax, 0}, {kMin, kMin, 0}), 1);
    EXPECT_EQ(ym({kMin, kMin, 0}, {kMax, kMax, 0}), -1);
    const auto dt = [](qz_interval_dt a, qz_interval_dt b) { return interval_dt_cmp(&a, &b, 0, 0); };
    EXPECT_EQ(dt({1, 0, 0, 0, 0, 1686}, {0, 24, 0, 0, 0, 0}), 0);
    EXPECT_EQ(dt({0, 0, 0, 1, 0, 1686}, {0, 0, 0, 0, 1000000, 0}), 0);
    EXPECT_EQ(dt({0, 0, 0, 0, -1, 1686}, {0, 0, 0, -1, 999999, 0}), 0);
    EXPECT_EQ(dt({0, 0, 0, 0, -1, 1686}, {0, 0, 0, 0, 0, 1686}), -1);
    EXPECT_EQ(dt({1, 0, 0, 0, 1, 1686}, {1, 0, 0, 0, 0, 1686}), 1);
    EXPECT_EQ(dt({0, 0, 1440, 0, 1, 1686}, {1, 0, 0, 0, 0, 1686}), 1);
    EXPECT_EQ(dt({kMax, kMax, kMax, kMax, kMax, 0}, {kMin, kMin, kMin, kMin, kMin, 0}), 1);
    EXPECT_EQ(dt({kMin, kMin, kMin, kMin, kMin, 0}, {kMax, kMax, kMax, kMax, kMax, 0}), -1);
}

// A decimal from plain digits, through the host's own reader, and the interval that a unit makes of it.
std::string from_number(const char* number, std::string_view unit) {
    xdec value;
    EXPECT_EQ(xdec_from_char(&value, number, static_cast<uint32_t>(std::strlen(number))), 0) << number;
    const auto length = static_cast<uint32_t>(unit.size());
    const auto exact = std::make_unique<char[]>(length);
    std::memcpy(exact.get(), unit.data(), length);
    if (unit == "YEAR" || unit == "MONTH") {
        qz_interval_ym out{};
        const int32_t code = xdec_to_ivym(&value, exact.get(), length, &out);
        return code == 0 ? describe(out) : std::to_string(code);
    }
    qz_interval_dt out{};
    const int32_t code = xdec_to_ivdt(&value, exact.get(), length, &out);
    return code == 0 ? describe(out) : std::to_string(code);
}

TEST(Interval, NumbersOfAUnit) {
    EXPECT_EQ(from_number("1", "DAY"), "1 0 0 0 0 q1686");
    EXPECT_EQ(from_number("1.5", "day"), "1 12 0 0 0 q1686");
    EXPECT_EQ(from_number("-1.5", " Day "), "-1 -12 0 0 0 q1686");
    EXPECT_EQ(from_number("100", "HOUR"), "4 4 0 0 0 q1686");
    EXPECT_EQ(from_number("90.25", "MINUTE"), "0 1 30 15 0 q1686");
    EXPECT_EQ(from_number("3661.123456", "SECOND"), "0 1 1 1 123456 q1686");
    EXPECT_EQ(from_number("0", "DAY"), "0 0 0 0 0 q1686");
    EXPECT_EQ(from_number("0.0000005", "SECOND"), "0 0 0 0 1 q1686");
    EXPECT_EQ(from_number("-0.0000005", "SECOND"), "0 0 0 0 -1 q1686");
    EXPECT_EQ(from_number("0.00000049999999999999999", "SECOND"), "0 0 0 0 0 q1686");
    EXPECT_EQ(from_number("59.9999995", "SECOND"), "0 0 1 0 0 q1686");
    EXPECT_EQ(from_number("999999999.99999999999", "DAY"), "999999999 23 59 59 999999 q1686");
    EXPECT_EQ(from_number("999999999.9999999999999", "DAY"), kOutOfRange);
    EXPECT_EQ(from_number("1000000000", "DAY"), kOutOfRange);
    EXPECT_EQ(from_number("86399999999999.999999", "SECOND"), "999999999 23 59 59 999999 q1686");
    EXPECT_EQ(from_number("86400000000000", "SECOND"), kOutOfRange);
    EXPECT_EQ(from_number("1e30", "SECOND"), kOutOfRange);
    EXPECT_EQ(from_number("1e-30", "DAY"), "0 0 0 0 0 q1686");
    EXPECT_EQ(from_number("1.5", "YEAR"), "1 6 q406");
    EXPECT_EQ(from_number("-14", "MONTH"), "-1 -2 q406");
    EXPECT_EQ(from_number("0.5", "MONTH"), "0 1 q406");
    EXPECT_EQ(from_number("-0.49", "MONTH"), "0 0 q406");
    EXPECT_EQ(from_number("999999999.95", "YEAR"), "999999999 11 q406");
    EXPECT_EQ(from_number("999999999.96", "YEAR"), kOutOfRange);
    EXPECT_EQ(from_number("1e40", "MONTH"), kOutOfRange);
    xdec one;
    xdec_fill_one(&one);
    qz_interval_dt dt{};
    qz_interval_ym ym{};
    for (const char* unit : {"", " ", "DAYS", "DA", "WEEK", "MILLISECOND", "D", "DAY X", "\xff"}) {
        const auto length = static_cast<uint32_t>(std::strlen(unit));
        EXPECT_EQ(xdec_to_ivdt(&one, unit, length, &dt), EC_INVALID_ARGUMENT) << unit;
        EXPECT_EQ(xdec_to_ivym(&one, unit, length, &ym), EC_INVALID_ARGUMENT) << unit;
    }
    EXPECT_EQ(xdec_to_ivdt(&one, "YEAR", 4, &dt), EC_INVALID_ARGUMENT);
    EXPECT_EQ(xdec_to_ivym(&one, "DAY", 3, &ym), EC_INVALID_ARGUMENT);
}

TEST(Interval, NumbersAgreeWithPython) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE(seed);
    const std::string command =
        "python3 " QZBIFUN_SOURCE_DIR "/tests/host/interval_oracle.py " + std::to_string(seed) + " 10000";
    FILE* answers = popen(command.c_str(), "r");
    ASSERT_NE(answers, nullptr);
    char line[256], number[128], unit[16];
    int lines = 0, in_range = 0, at = 0;
    while (std::fgets(line, sizeof line, answers) != nullptr) {
        ASSERT_EQ(std::sscanf(line, "%127s %15s %n", number, unit, &at), 2);
        std::string wanted(line + at);
        wanted.pop_back();
        const bool months = unit == std::string("YEAR") || unit == std::string("MONTH");
        wanted = wanted == "range" ? kOutOfRange : wanted + (months ? " q406" : " q1686");
        ASSERT_EQ(from_number(number, unit), wanted) << number << ' ' << unit;
        ++lines;
        in_range += wanted != kOutOfRange;
    }
    EXPECT_EQ(pclose(answers), 0);
    EXPECT_EQ(lines, 10000);
    EXPECT_GT(in_range, 2000);
}

TEST(Interval, HostileDecimalsAndTexts) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    constexpr std::string_view kAlphabet = "0123456789-+:. PTYMDHSx\xff";
    for (int i = 0; i < 50000; ++i) {
        unsigned char bytes[sizeof(xdec)];
        for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
        if (i % 2 == 0) bytes[7] = static_cast<unsigned char>(180 + random() % 24);
        xdec number;
        std::memcpy(&number, bytes, sizeof number);
        qz_interval_dt dt{};
        qz_interval_ym ym{};
        if (xdec_to_ivdt(&number, "DAY", 3, &dt) == 0) {
            ASSERT_TRUE(std::abs(dt.iv_day) <= 999999999 && std::abs(dt.iv_hour) <= 23 && std::abs(dt.iv_fraction) <= 999999);
        }
        if (xdec_to_ivym(&number, "YEAR", 4, &ym) == 0) {
            ASSERT_TRUE(std::abs(ym.iv_year) <= 999999999 && std::abs(ym.iv_month) <= 11);
        }
        std::string text;
        const size_t length = random() % 24;
        for (size_t at = 0; at < length; ++at) text += kAlphabet[random() % kAlphabet.size()];
        (void)read_dt(text, static_cast<int32_t>(random() % 0xe00));
        (void)read_ym(text, static_cast<int32_t>(random() % 0xe00));
        std::memcpy(&dt, bytes, sizeof dt);
        (void)write(dt);
    }
}

}  // namespace
