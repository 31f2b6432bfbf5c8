#include "qzhost/date_text.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <string_view>

#include "qzbifun/codes.h"
#include "qzhost/calendar.h"
#include "support/test_seed.h"

namespace {

// A copy of exactly the text's bytes, so that a read behind them is seen.
struct Exact {
    explicit Exact(std::string_view text)
        : bytes(std::make_unique<char[]>(text.size())), length(static_cast<uint32_t>(text.size())) {
        if (!text.empty()) std::memcpy(bytes.get(), text.data(), text.size());
    }
    std::unique_ptr<char[]> bytes;
    uint32_t length;
};

std::string describe(const qztime& v) {
    char buffer[96];
    const int zone = v.tz;
    std::snprintf(buffer, sizeof buffer, "%d-%02d-%02d %02d:%02d:%02d.%09u %s", v.year, v.month, v.day, v.hour, v.minute,
                  v.second, v.fraction, zone == TZ_NONE ? "none" : std::to_string(zone).c_str());
    return buffer;
}

// What reading a text gives: the value, or the code.
std::string read(std::string_view text) {
    const Exact exact(text);
    qztime value;
    std::memset(&value, 0x5a, sizeof value);
    const qztime before = value;
    const int32_t code = qztime_from_char_ex(exact.bytes.get(), exact.length, &value);
    if (code == 0) return describe(value);
    EXPECT_EQ(std::memcmp(&before, &value, sizeof value), 0) << text;
    return std::to_string(code);
}

TEST(DateText, ReadsWhatPeopleWrite) {
    struct Case {
        const char* text;
        const char* value;
        uint32_t info;
    };
    constexpr uint32_t kDate = HOST_TEXT_HAS_DATE, kTime = HOST_TEXT_HAS_TIME, kFraction = HOST_TEXT_HAS_FRACTION,
                       kZone = HOST_TEXT_HAS_ZONE;
    constexpr Case kCases[] = {
        // Dates.
        {"2024-02-29", "2024-02-29 00:00:00.000000000 none", kDate},
        {"2024/02/29", "2024-02-29 00:00:00.000000000 none", kDate},
        {"2024.2.9", "2024-02-09 00:00:00.000000000 none", kDate},
        {"2024-2-29", "2024-02-29 00:00:00.000000000 none", kDate},
        {"2024@02@29", "2024-02-29 00:00:00.000000000 none", kDate},
        {"2024#02#29", "2024-02-29 00:00:00.000000000 none", kDate},
        {"2024$02$29", "2024-02-29 00:00:00.000000000 none", kDate},
        {"2024%02%29", "2024-02-29 00:00:00.000000000 none", kDate},
        {"2024*02*29", "2024-02-29 00:00:00.000000000 none", kDate},
        {"2024&02&29", "2024-02-29 00:00:00.000000000 none", kDate},
        {"24-1-2", "24-01-02 00:00:00.000000000 none", kDate},
        {"0024-01-02", "24-01-02 00:00:00.000000000 none", kDate},
        {"0000-02-29", "0-02-29 00:00:00.000000000 none", kDate},
        {"-4712-01-01", "-4712-01-01 00:00:00.000000000 none", kDate},
        {"-1-12-31", "-1-12-31 00:00:00.000000000 none", kDate},
        {"+2024-02-29", "2024-02-29 00:00:00.000000000 none", kDate},
        {"9999-12-31", "9999-12-31 00:00:00.000000000 none", kDate},
        {"1500-02-29", "1500-02-29 00:00:00.000000000 none", kDate},
        {"20240229", "2024-02-29 00:00:00.000000000 none", kDate},
        {"  2024-02-29\t\n", "2024-02-29 00:00:00.000000000 none", kDate},
        // The gap ends on the 15th.
        {"1582-10-04", "1582-10-04 00:00:00.000000000 none", kDate},
        {"1582-10-05", "1582-10-15 00:00:00.000000000 none", kDate},
        {"15821014", "1582-10-15 00:00:00.000000000 none", kDate},
        {"1582-10-10 10:30:15", "1582-10-15 10:30:15.000000000 none", kDate | kTime},
        {"1582-10-15", "1582-10-15 00:00:00.000000000 none", kDate},
        // Both.
        {"2024-02-29 10:30:15", "2024-02-29 10:30:15.000000000 none", kDate | kTime},
        {"2024-02-29T10:30:15", "2024-02-29 10:30:15.000000000 none", kDate | kTime},
        {"2024-02-29t10:30:15", "2024-02-29 10:30:15.000000000 none", kDate | kTime},
        {"2024-02-29 T10:30:15", "2024-02-29 10:30:15.000000000 none", kDate | kTime},
        {"2024-02-29    10:30:15", "2024-02-29 10:30:15.000000000 none", kDate | kTime},
        {"2024-02-29 10:30", "2024-02-29 10:30:00.000000000 none", kDate | kTime},
        {"2024/2/29 1:3:5", "2024-02-29 01:03:05.000000000 none", kDate | kTime},
        {"2024-02-29 23:59:59", "2024-02-29 23:59:59.000000000 none", kDate | kTime},
        {" 2024-02-29 10:30:15 ", "2024-02-29 10:30:15.000000000 none", kDate | kTime},
        {"20240229 10:30:15", "2024-02-29 10:30:15.000000000 none", kDate | kTime},
        {"20240229T103015", "2024-02-29 10:30:15.000000000 none", kDate | kTime},
        {"20240229 1030", "2024-02-29 10:30:00.000000000 none", kDate | kTime},
        {"20240229103015", "2024-02-29 10:30:15.000000000 none", kDate | kTime},
        {"202402291030", "2024-02-29 10:30:00.000000000 none", kDate | kTime},
        {"20240229103015.25", "2024-02-29 10:30:15.250000000 none", kDate | kTime | kFraction},
        // Fractions.
        {"2024-02-29 10:30:15.5", "2024-02-29 10:30:15.500000000 none", kDate | kTime | kFraction},
        {"2024-02-29 10:30:15,5", "2024-02-29 10:30:15.500000000 none", kDate | kTime | kFraction},
        {"2024-02-29 10:30:15.000000001", "2024-02-29 10:30:15.000000001 none", kDate | kTime | kFraction},
        {"2024-02-29 10:30:15.1234567899999", "2024-02-29 10:30:15.123456789 none", kDate | kTime | kFraction},
        {"2024-02-29 10:30:15.", "2024-02-29 10:30:15.000000000 none", kDate | kTime},
        {"10:30:15.5", "1900-01-01 10:30:15.500000000 none", kTime | kFraction},
        // Times alone.
        {"10:30", "1900-01-01 10:30:00.000000000 none", kTime},
        {"1:2:3", "1900-01-01 01:02:03.000000000 none", kTime},
        {"T10:30:15", "1900-01-01 10:30:15.000000000 none", kTime},
        {"T103015", "1900-01-01 10:30:15.000000000 none", kTime},
        // Halves of a day.
        {"2024-02-29 10:30 PM", "2024-02-29 22:30:00.000000000 none", kDate | kTime},
        {"2024-02-29 10:30:15am", "2024-02-29 10:30:15.000000000 none", kDate | kTime},
        {"12:00 AM", "1900-01-01 00:00:00.000000000 none", kTime},
        {"12:00 pm", "1900-01-01 12:00:00.000000000 none", kTime},
        {"11:59:59.9 PM +01:00", "1900-01-01 23:59:59.900000000 60", kTime | kFraction | kZone},
        // Zones.
        {"2024-02-29T10:30:15Z", "2024-02-29 10:30:15.000000000 0", kDate | kTime | kZone},
        {"2024-02-29 10:30:15 z", "2024-02-29 10:30:15.000000000 0", kDate | kTime | kZone},
        {"2024-02-29 10:30:15 UTC", "2024-02-29 10:30:15.000000000 0", kDate | kTime | kZone},
        {"2024-02-29T10:30:15.5+08:00", "2024-02-29 10:30:15.500000000 480", kDate | kTime | kFraction | kZone},
        {"2024-02-29 10:30:15 +08:00", "2024-02-29 10:30:15.000000000 480", kDate | kTime | kZone},
        {"2024-02-29 10:30:15 -03:30", "2024-02-29 10:30:15.000000000 -210", kDate | kTime | kZone},
        {"20240229T103015-0330", "2024-02-29 10:30:15.000000000 -210", kDate | kTime | kZone},
        {"2024-02-29 10:30:15 +8", "2024-02-29 10:30:15.000000000 480", kDate | kTime | kZone},
        {"2024-02-29 10:30:15 +08", "2024-02-29 10:30:15.000000000 480", kDate | kTime | kZone},
        {"2024-02-29 10:30:15 +5:30", "2024-02-29 10:30:15.000000000 330", kDate | kTime | kZone},
        {"2024-02-29 10:30:15 +14:00", "2024-02-29 10:30:15.000000000 840", kDate | kTime | kZone},
        {"2024-02-29 10:30:15 -14:00", "2024-02-29 10:30:15.000000000 -840", kDate | kTime | kZone},
        {"2024-02-29 10:30+00:00", "2024-02-29 10:30:00.000000000 0", kDate | kTime | kZone},
        {"10:30 +08:00", "1900-01-01 10:30:00.000000000 480", kTime | kZone},
    };
    for (const Case& c : kCases) {
        EXPECT_EQ(read(c.text), c.value) << c.text;
        qztime value{};
        uint32_t info = 0;
        EXPECT_EQ(
            qztime_from_char_ex2(c.text, static_cast<uint32_t>(std::strlen(c.text)), HOST_KIND_DATETIME_TZ, &value, &info), 0);
        EXPECT_EQ(describe(value), c.value) << c.text;
        EXPECT_EQ(info, c.info) << c.text;
    }
}

TEST(DateText, RefusesEverythingElse) {
    constexpr const char* kTexts[] = {
        // No dates of the calendar.
        "2024-02-30",
        "2023-02-29",
        "1900-02-29",
        "2024-00-10",
        "2024-13-01",
        "2024-01-00",
        "2024-01-32",
        "10000-01-01",
        "-4713-12-31",
        "-4712-00-01",
        "20240230",
        "00000000",
        "99991332",
        // No times.
        "2024-02-29 24:00:00",
        "2024-02-29 10:60:00",
        "2024-02-29 10:30:60",
        "2024-02-29 10",
        "2024-02-29 10:",
        "2024-02-29 10:30:",
        "2024-02-29 :30",
        "2024-02-29 100:30",
        "2024-02-29 10:300",
        "2024-02-29 10:30:150",
        "2024-02-29 10:30.5",
        "24:00",
        "1:60",
        "10:",
        ":10",
        "2024-02-29 10:30:15.5.5",
        "2024-02-29 10:30:15..5",
        "2024-02-29 10:30:15.5x",
        "202402291",
        // Halves of a day want an hour from 1 to 12.
        "2024-02-29 0:30 AM",
        "2024-02-29 13:30 PM",
        "2024-02-29 10:30 XM",
        "2024-02-29 PM",
        "2024-02-29 10:30 A",
        // No zones.
        "2024-02-29 10:30:15 +",
        "2024-02-29 10:30:15 +08:",
        "2024-02-29 10:30:15 +08:0",
        "2024-02-29 10:30:15 +08:60",
        "2024-02-29 10:30:15 +14:01",
        "2024-02-29 10:30:15 -15:00",
        "2024-02-29 10:30:15 +080",
        "2024-02-29 10:30:15 +08000",
        "2024-02-29 10:30:15 ZZ",
        "2024-02-29 10:30:15 UT",
        "2024-02-29 10:30:15 Z+08:00",
        "2024-02-29Z",
        "2024-02-29 +08:00",
        // No forms.
        "2024-02/29",
        "2024-02",
        "2024-02-",
        "2024",
        "2024-02-29-",
        "2024--02-29",
        "2024-+2-29",
        "20240229x",
        "x",
        "-",
        "+",
        "T",
        "-T10:30",
        "--2024-02-29",
        "2024-02-29T",
        "2024-02-29 T",
        "2024-02-29TT10:30",
        "2024 02 29",
        "2024-002-29",
        "2024-02-029",
        "2024-02-29:10:30",
        "2024-02-2910:30",
        "+20240229",
        "-47120101",
        "2024022",
        "2024-02-29 10:30:15 2024-02-29",
        "Feb 29 2024",
        "29.02.2024",
        "yesterday",
        "2024-02-29 10:30:15\xff",
        "\xff\xfe\xfd",
        "2024\xef\xbc\x8d-02-29",
    };
    for (const char* text : kTexts) {
        EXPECT_EQ(read(text), std::to_string(EC_DATE_TEXT_INVALID)) << text;
        qztime value{};
        EXPECT_EQ(qztime_from_char_with_tz(text, static_cast<uint32_t>(std::strlen(text)), 0, &value), 0) << text;
    }
    EXPECT_EQ(read(std::string_view("2024-02-29\0", 11)), std::to_string(EC_DATE_TEXT_INVALID));
    EXPECT_EQ(read(std::string_view("2024\0"
                                    "02\0"
                                    "29",
                                    10)),
              std::to_string(EC_DATE_TEXT_INVALID));
}

TEST(DateText, BlankTextIsNull) {
    for (const char* text : {"", " ", "      ", "\t\r\n "}) {
        EXPECT_EQ(read(text), std::to_string(RC_VALUE_IS_NULL));
        qztime value{};
        EXPECT_EQ(qztime_from_char_ex2(text, static_cast<uint32_t>(std::strlen(text)), 16, &value, nullptr), RC_VALUE_IS_NULL);
        EXPECT_EQ(qztime_from_char_with_tz(text, static_cast<uint32_t>(std::strlen(text)), 0, &value), 0);
    }
    qztime value{};
    EXPECT_EQ(qztime_from_char_ex(nullptr, 0, &value), RC_VALUE_IS_NULL);
}

TEST(DateText, WantedKinds) {
    constexpr std::string_view kText = "2024-02-29 10:30:15.5 +08:00", kTime = "10:30", kDate = "2024-02-29";
    const auto read_as = [](std::string_view text, int32_t kind) {
        qztime value{};
        const int32_t code = qztime_from_char_ex2(text.data(), static_cast<uint32_t>(text.size()), kind, &value, nullptr);
        return code == 0 ? describe(value) : std::to_string(code);
    };
    EXPECT_EQ(read_as(kText, 14), "2024-02-29 00:00:00.000000000 none");
    EXPECT_EQ(read_as(kText, 16), "2024-02-29 10:30:15.500000000 none");
    EXPECT_EQ(read_as(kText, 23), "2024-02-29 10:30:15.500000000 480");
    EXPECT_EQ(read_as(kTime, 14), std::to_string(EC_DATE_TEXT_INVALID));
    EXPECT_EQ(read_as(kTime, 16), "1900-01-01 10:30:00.000000000 none");
    EXPECT_EQ(read_as(kDate, 23), "2024-02-29 00:00:00.000000000 none");
    for (const int32_t kind : {-1, 0, 13, 15, 17, 22, 24}) EXPECT_EQ(read_as(kText, kind), std::to_string(EC_INVALID_ARGUMENT));
}

TEST(DateText, DefaultZone) {
    const auto read_with = [](std::string_view text, uint32_t zone) {
        qztime value{};
        const int32_t done = qztime_from_char_with_tz(text.data(), static_cast<uint32_t>(text.size()), zone, &value);
        return done != 0 ? describe(value) : std::string("refused");
    };
    EXPECT_EQ(read_with("2024-02-29 10:30:15", 0), "2024-02-29 10:30:15.000000000 0");
    EXPECT_EQ(read_with("2024-02-29 10:30:15", 480), "2024-02-29 10:30:15.000000000 480");
    EXPECT_EQ(read_with("2024-02-29 10:30:15", static_cast<uint32_t>(-330)), "2024-02-29 10:30:15.000000000 -330");
    EXPECT_EQ(read_with("2024-02-29", 480), "2024-02-29 00:00:00.000000000 480");
    EXPECT_EQ(read_with("2024-02-29 10:30:15 -01:00", 480), "2024-02-29 10:30:15.000000000 -60");
    EXPECT_EQ(read_with("2024-02-29 10:30:15 Z", 480), "2024-02-29 10:30:15.000000000 0");
    EXPECT_EQ(read_with("2024-02-29 10:30:15", TZ_NONE), "2024-02-29 10:30:15.000000000 none");
    for (const uint32_t zone : {841u, 999u, 65536u, 4294966455u}) {
        EXPECT_EQ(read_with("2024-02-29 10:30:15", zone), "refused") << zone;
        EXPECT_EQ(read_with("2024-02-29 10:30:15 Z", zone), "2024-02-29 10:30:15.000000000 0") << zone;
    }
}

TEST(DateText, WritesTheDefaultText) {
    const auto write = [](const qztime& value, int32_t kind, int32_t digits) {
        char buffer[HOST_DATE_TEXT_BYTES];
        const int32_t code = qztime_to_char(&value, kind, digits, buffer);
        return code == 0 ? std::string(buffer) : std::to_string(code);
    };
    const auto make = [](int year, int month, int day, int hour, int minute, int second, int fraction, int tz) {
        qztime value{};
        qztime_encode_without_check(&value, year, month, day, hour, minute, second, fraction, static_cast<int16_t>(tz));
        return value;
    };
    const qztime value = make(2024, 2, 9, 1, 2, 3, 123456789, 480);
    EXPECT_EQ(write(value, 14, -1), "2024-02-09");
    EXPECT_EQ(write(value, 16, -1), "2024-02-09 01:02:03.123456789");
    EXPECT_EQ(write(value, 23, -1), "2024-02-09 01:02:03.123456789 +08:00");
    EXPECT_EQ(write(value, 16, 0), "2024-02-09 01:02:03");
    EXPECT_EQ(write(value, 16, 3), "2024-02-09 01:02:03.123");
    EXPECT_EQ(write(value, 16, 9), "2024-02-09 01:02:03.123456789");
    const qztime whole = make(2024, 2, 9, 1, 2, 3, 0, TZ_NONE);
    EXPECT_EQ(write(whole, 16, -1), "2024-02-09 01:02:03");
    EXPECT_EQ(write(whole, 23, -1), "2024-02-09 01:02:03");
    EXPECT_EQ(write(whole, 16, 3), "2024-02-09 01:02:03.000");
    EXPECT_EQ(write(make(2024, 2, 9, 1, 2, 3, 500000000, -210), 23, -1), "2024-02-09 01:02:03.5 -03:30");
    EXPECT_EQ(write(make(24, 2, 9, 0, 0, 0, 0, TZ_NONE), 14, -1), "0024-02-09");
    EXPECT_EQ(write(make(0, 2, 29, 0, 0, 0, 0, TZ_NONE), 14, -1), "0000-02-29");
    EXPECT_EQ(write(make(-4800, 1, 1, 0, 0, 0, 0, 0), 16, -1), "-4800-01-01 00:00:00");
    EXPECT_EQ(write(make(-32768, 12, 31, 23, 59, 59, 999999999, -840), 23, 9), "-32768-12-31 23:59:59.999999999 -14:00");
    for (const int32_t kind : {-1, 0, 15, 22}) EXPECT_EQ(write(value, kind, -1), std::to_string(EC_INVALID_ARGUMENT));
    for (const int32_t digits : {-2, 10}) EXPECT_EQ(write(value, 16, digits), std::to_string(EC_INVALID_ARGUMENT));
    for (const qztime& bad :
         {make(2024, 0, 1, 0, 0, 0, 0, 0), make(2024, 13, 1, 0, 0, 0, 0, 0), make(2024, 1, 0, 0, 0, 0, 0, 0),
          make(2024, 1, 32, 0, 0, 0, 0, 0), make(2024, 1, 1, 24, 0, 0, 0, 0), make(2024, 1, 1, 0, 60, 0, 0, 0),
          make(2024, 1, 1, 0, 0, 60, 0, 0), make(2024, 1, 1, 0, 0, 0, 1000000000, 0), make(2024, 1, 1, 0, 0, 0, 0, 841)}) {
        EXPECT_EQ(write(bad, 23, -1), std::to_string(EC_DATE_VALUE_INVALID));
    }
}

TEST(DateText, EveryValueReadsBackAsItIsWritten) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    const auto between = [&](int least, int most) { return std::uniform_int_distribution<int>(least, most)(random); };
    for (int i = 0; i < 50000; ++i) {
        qztime value{};
        host_set_day_number(&value, between(HOST_DAY_MIN, HOST_DAY_MAX));
        value.hour = static_cast<uint8_t>(between(0, 23));
        value.minute = static_cast<uint8_t>(between(0, 59));
        value.second = static_cast<uint8_t>(between(0, 59));
        const int digits = between(0, 9);
        uint32_t unit = 1;
        for (int digit = digits; digit < 9; ++digit) unit *= 10;
        value.fraction = static_cast<uint32_t>(between(0, 999999999)) / unit * unit;
        value.tz = static_cast<int16_t>(i % 3 == 0 ? TZ_NONE : between(-HOST_ZONE_MAX, HOST_ZONE_MAX));
        char buffer[HOST_DATE_TEXT_BYTES];
        ASSERT_EQ(qztime_to_char(&value, HOST_KIND_DATETIME_TZ, i % 2 == 0 ? -1 : digits, buffer), 0);
        ASSERT_EQ(read(buffer), describe(value)) << buffer;
    }
}

TEST(DateText, ReadsNoByteBehindTheText) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    constexpr std::string_view kAlphabet = "0123456789012345678901234567890123456789-/.:::  TZ+APMUC,\xff\0";
    constexpr std::string_view kSeeds[] = {"2024-02-29 10:30:15.123456789 +08:00", "20240229T103015-0330",
                                           "-4712-1-1 1:2:3 PM"};
    int values = 0;
    for (int i = 0; i < 100000; ++i) {
        std::string text;
        if (i % 2 == 0) {
            const size_t length = random() % 40;
            for (size_t at = 0; at < length; ++at) text += kAlphabet[random() % kAlphabet.size()];
        } else {
            text = kSeeds[random() % 3].substr(0, random() % 40);
            if (!text.empty() && i % 4 == 1) text[random() % text.size()] = kAlphabet[random() % kAlphabet.size()];
        }
        const Exact exact(text);
        qztime value{};
        const int32_t code = qztime_from_char_ex(exact.bytes.get(), exact.length, &value);
        ASSERT_TRUE(code == 0 || code == EC_DATE_TEXT_INVALID || code == RC_VALUE_IS_NULL);
        if (code != 0) continue;
        ++values;
        // What is read is a value.
        qztime again{};
        ASSERT_EQ(qztime_encode(&again, value.year, value.month, value.day, value.hour, value.minute, value.second,
                                static_cast<int32_t>(value.fraction), value.tz),
                  0)
            << text;
        ASSERT_NE(qztime_cmp_with_glgl(value.year, value.month, value.day), 0);
    }
    EXPECT_GT(values, 1000);
}

TEST(DateText, Integers) {
    const auto read_integer = [](std::string_view text) {
        const Exact exact(text);
        int64_t value = 77;
        const int32_t code = str2int64(exact.bytes.get(), exact.length, &value);
        if (code < 0) {
            EXPECT_EQ(value, 77);
        }
        return code == 0 ? std::to_string(value) : "code " + std::to_string(code);
    };
    for (const char* text : {"0", "1", "-1", "9223372036854775807", "-9223372036854775808"})
        EXPECT_EQ(read_integer(text), text);
    EXPECT_EQ(read_integer("+7"), "7");
    EXPECT_EQ(read_integer("  -12 "), "-12");
    EXPECT_EQ(read_integer("000000000000000000000000012"), "12");
    EXPECT_EQ(read_integer("-0"), "0");
    const std::string invalid = "code " + std::to_string(EC_NUMBER_TEXT_INVALID),
                      overflow = "code " + std::to_string(EC_DATA_OVERFLOW);
    for (const char* text : {"", " ", "+", "-", "--1", "+-1", "1.5", "1e3", "0x1", "1 2", "a", "1a", "DD", "\xff"}) {
        EXPECT_EQ(read_integer(text), invalid) << text;
    }
    EXPECT_EQ(read_integer(std::string_view("1\0", 2)), invalid);
    for (const char* text : {"9223372036854775808", "-9223372036854775809", "99999999999999999999", "-99999999999999999999"}) {
        EXPECT_EQ(read_integer(text), overflow) << text;
    }
}

}  // namespace
