#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "qzhost/calendar.h"
#include "support/test_seed.h"

namespace {

constexpr int64_t kLowest = std::numeric_limits<int64_t>::min(), kHighest = std::numeric_limits<int64_t>::max();

// "2024-02-29 10:30:15.000000005" or a part of it from the left; a value without a zone.
qztime at(const char* text) {
    int year = 0, month = 1, day = 1, hour = 0, minute = 0, second = 0;
    char fraction[10] = "";
    std::sscanf(text, "%d-%d-%d %d:%d:%d.%9s", &year, &month, &day, &hour, &minute, &second, fraction);
    std::string digits = fraction;
    digits.resize(9, '0');
    qztime value{};
    qztime_encode_without_check(&value, year, month, day, hour, minute, second, std::stoi(digits), TZ_NONE);
    return value;
}

std::string text(const qztime& v) {
    char buffer[96];
    std::snprintf(buffer, sizeof buffer, "%d-%02d-%02d %02d:%02d:%02d.%09u", v.year, v.month, v.day, v.hour, v.minute, v.second,
                  v.fraction);
    return buffer;
}

// The text of a sum, or its code.
template <class Add>
std::string sum(const char* value, Add add) {
    const qztime from = at(value);
    qztime out = at("0001-02-03 04:05:06.7");
    const int32_t code = add(&from, &out);
    if (code == 0) return text(out);
    EXPECT_EQ(text(out), text(at("0001-02-03 04:05:06.7"))) << "written in spite of the failure";
    return std::to_string(code);
}

std::string full(const char* value) { return text(at(value)); }

std::string by_part(const char* value, int32_t part, int64_t count) {
    return sum(value, [&](const qztime* from, qztime* out) { return qztime_add_by_fmt(from, part, count, out); });
}

std::string by_number(const char* value, double days) {
    return sum(value, [&](const qztime* from, qztime* out) { return qztime_date_add_number(from, days, out); });
}

const std::string kOutOfRange = std::to_string(EC_DATE_OUT_OF_RANGE);
const std::string kInvalid = std::to_string(EC_INVALID_ARGUMENT);

TEST(CalendarArithmetic, AddsEveryPart) {
    EXPECT_EQ(by_part("2024-02-29 10:30:15.5", 1, 1), full("2025-02-28 10:30:15.5"));
    EXPECT_EQ(by_part("2024-02-29 10:30:15.5", 1, 4), full("2028-02-29 10:30:15.5"));
    EXPECT_EQ(by_part("2024-01-31 10:30:15.5", 2, 1), full("2024-02-29 10:30:15.5"));
    EXPECT_EQ(by_part("2024-02-29", 2, 1), full("2024-03-29"));
    EXPECT_EQ(by_part("2024-03-31", 2, -1), full("2024-02-29"));
    EXPECT_EQ(by_part("2024-01-15", 2, -1), full("2023-12-15"));
    EXPECT_EQ(by_part("2024-01-15", 2, -24), full("2022-01-15"));
    EXPECT_EQ(by_part("0001-01-15", 2, -1), full("0000-12-15"));
    EXPECT_EQ(by_part("0000-01-15", 2, -1), full("-1-12-15"));
    EXPECT_EQ(by_part("2024-11-30", 8, 1), full("2025-02-28"));
    EXPECT_EQ(by_part("2024-02-28 23:00:00", 3, 1), full("2024-02-29 23:00:00"));
    EXPECT_EQ(by_part("2024-02-28", 9, 2), full("2024-03-01"));
    EXPECT_EQ(by_part("2024-02-28", 11, -59), full("2023-12-31"));
    EXPECT_EQ(by_part("2024-02-28", 10, 1), full("2024-03-06"));
    EXPECT_EQ(by_part("2024-02-28 23:30:15.5", 4, 1), full("2024-02-29 00:30:15.5"));
    EXPECT_EQ(by_part("2024-03-01 00:30:15.5", 4, -25), full("2024-02-28 23:30:15.5"));
    EXPECT_EQ(by_part("2024-02-28 23:59:15", 5, 1), full("2024-02-29 00:00:15"));
    EXPECT_EQ(by_part("2024-02-28 10:00:15", 5, -601), full("2024-02-27 23:59:15"));
    EXPECT_EQ(by_part("2024-12-31 23:59:59.25", 6, 1), full("2025-01-01 00:00:00.25"));
    EXPECT_EQ(by_part("2024-12-31 23:59:59.999", 7, 1), full("2025-01-01 00:00:00"));
    EXPECT_EQ(by_part("2025-01-01 00:00:00", 7, -1), full("2024-12-31 23:59:59.999"));
    EXPECT_EQ(by_part("2024-12-31 23:59:59.999999001", 14, 1), full("2025-01-01 00:00:00.000000001"));
    EXPECT_EQ(by_part("2025-01-01 00:00:00.000000001", 14, -1), full("2024-12-31 23:59:59.999999001"));
    EXPECT_EQ(by_part("1582-10-04 12:00:00", 4, 24), full("1582-10-15 12:00:00"));
    EXPECT_EQ(by_part("1582-10-15", 6, -1), full("1582-10-04 23:59:59"));
    EXPECT_EQ(by_part("1582-10-15", 14, -1), full("1582-10-04 23:59:59.999999"));
    for (const int32_t part : {-1, 0, 12, 13, 15, 65539}) EXPECT_EQ(by_part("2024-02-28", part, 0), kInvalid) << part;
}

TEST(CalendarArithmetic, StopsAtTheEndsOfTheCalendar) {
    struct Case {
        int32_t part;
        const char* last;   // plus 1 unit leaves
        const char* first;  // minus 1 unit leaves
    };
    constexpr Case kCases[] = {
        {1, "9999-01-01", "-4712-12-31"},
        {2, "9999-12-01", "-4712-01-31"},
        {3, "9999-12-31", "-4712-01-01 23:00:00"},
        {4, "9999-12-31 23:00:00", "-4712-01-01 00:59:59"},
        {5, "9999-12-31 23:59:00", "-4712-01-01 00:00:59"},
        {6, "9999-12-31 23:59:59", "-4712-01-01 00:00:00.999999999"},
        {7, "9999-12-31 23:59:59.999", "-4712-01-01 00:00:00.000999999"},
        {8, "9999-10-01", "-4712-03-31"},
        {9, "9999-12-31", "-4712-01-01"},
        {10, "9999-12-25", "-4712-01-07"},
        {11, "9999-12-31", "-4712-01-01"},
        {14, "9999-12-31 23:59:59.999999", "-4712-01-01 00:00:00.000000999"},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.part);
        EXPECT_EQ(by_part(c.last, c.part, 1), kOutOfRange);
        EXPECT_EQ(by_part(c.first, c.part, -1), kOutOfRange);
        EXPECT_EQ(by_part(c.last, c.part, 0), full(c.last));
        EXPECT_EQ(by_part(c.first, c.part, 0), full(c.first));
        for (const int64_t count :
             {kLowest, kLowest + 1, int64_t{-1} << 62, int64_t{-1} << 40, int64_t{1} << 62, kHighest - 1, kHighest}) {
            // Only milliseconds and microseconds have counts of 40 bits that stay within the calendar.
            if (c.part == 7 && std::abs(count / 2) == int64_t{1} << 39) continue;
            if (c.part == 14 && std::abs(count / 2) == int64_t{1} << 39) continue;
            EXPECT_EQ(by_part("2024-02-29", c.part, count), kOutOfRange) << count;
        }
    }
    // The whole calendar in one step.
    EXPECT_EQ(by_part("-4712-01-01", 3, 5373484), full("9999-12-31"));
    EXPECT_EQ(by_part("9999-12-31", 3, -5373484), full("-4712-01-01"));
    EXPECT_EQ(by_part("-4712-01-01", 14, int64_t{5373485} * 86400 * 1000000 - 1), full("9999-12-31 23:59:59.999999"));
    EXPECT_EQ(by_part("-4712-01-31", 2, 14711 * 12 + 11), full("9999-12-31"));
}

TEST(CalendarArithmetic, OutMayBeTheRecordAndTheZoneStays) {
    qztime value = at("2024-01-31 23:59:59.5");
    value.tz = 480;
    EXPECT_EQ(qztime_add_by_fmt(&value, 6, 1, &value), 0);
    EXPECT_EQ(text(value), full("2024-02-01 00:00:00.5"));
    EXPECT_EQ(qztime_add_by_fmt(&value, 3, -1, &value), 0);
    EXPECT_EQ(text(value), full("2024-01-31 00:00:00.5"));
    const qz_interval_ym month{0, 1, 656};
    EXPECT_EQ(qztime_date_add_iv_ym(&value, &month, &value), 0);
    EXPECT_EQ(text(value), full("2024-02-29 00:00:00.5"));
    EXPECT_EQ(qztime_date_add_number(&value, 1.5, &value), 0);
    EXPECT_EQ(text(value), full("2024-03-01 12:00:00.5"));
    const qz_interval_dt interval{-1, -12, 0, 0, -500000, 1686};
    EXPECT_EQ(datetime_add_interval_dt(&value, &interval, &value), 0);
    EXPECT_EQ(text(value), full("2024-02-29 00:00:00"));
    EXPECT_EQ(qztime_get_tz(&value), 480);
}

TEST(CalendarArithmetic, AddsNumbersOfDays) {
    EXPECT_EQ(by_number("2024-02-28 10:30:15.5", 1), full("2024-02-29 10:30:15.5"));
    EXPECT_EQ(by_number("2024-02-28", 1.5), full("2024-02-29 12:00:00"));
    EXPECT_EQ(by_number("2024-02-28", -0.5), full("2024-02-27 12:00:00"));
    EXPECT_EQ(by_number("2024-02-28", 0.0), full("2024-02-28"));
    EXPECT_EQ(by_number("2024-02-28", -0.0), full("2024-02-28"));
    // Fractions count to the nearest second: a third of a day, and halves of a second away from zero.
    EXPECT_EQ(by_number("2024-02-28", 1.0 / 3), full("2024-02-28 08:00:00"));
    EXPECT_EQ(by_number("2024-02-28", 1000000 + 1.0 / 24), by_part(by_part("2024-02-28", 3, 1000000).c_str(), 4, 1));
    EXPECT_EQ(by_number("2024-02-28", 1.0 / 86400), full("2024-02-28 00:00:01"));
    EXPECT_EQ(by_number("2024-02-28", 0.375 / 86400), full("2024-02-28"));
    EXPECT_EQ(by_number("2024-02-28", 11.0 / 2048 / 128), full("2024-02-28 00:00:04"));            // 3.625390625 seconds
    EXPECT_EQ(by_number("2024-02-28", 135.0 / 256 / 1800), full("2024-02-28 00:00:25"));           // 25.3125 seconds
    EXPECT_EQ(by_number("2024-02-28", 0.00390625 + 0.000244140625), full("2024-02-28 00:05:59"));  // 358.59375 seconds
    EXPECT_EQ(by_number("2024-02-28", -0.0009765625), full("2024-02-27 23:58:36"));                // -84.375 seconds
    EXPECT_EQ(by_number("2024-02-28", 0.015625 / 675), full("2024-02-28 00:00:02"));
    EXPECT_EQ(by_number("1582-10-04", 1.25), full("1582-10-15 06:00:00"));
    EXPECT_EQ(by_number("2024-02-28 10:30:15.5", 1e-12), full("2024-02-28 10:30:15.5"));
    EXPECT_EQ(by_number("-4712-01-01", 5373484), full("9999-12-31"));
    EXPECT_EQ(by_number("9999-12-31", 0.5), full("9999-12-31 12:00:00"));
    EXPECT_EQ(by_number("9999-12-31", 0.99999999), kOutOfRange);  // to the nearest second that is a day
    for (const double days :
         {1.0, 5373484.0, 5373485.0, 5373486.0, 2147483648.0, 1e300, HUGE_VAL, -HUGE_VAL, std::nan(""), -5373485.0}) {
        EXPECT_EQ(by_number("9999-12-31", days), kOutOfRange) << days;
    }
    EXPECT_EQ(by_number("9999-12-31", -5373484), full("-4712-01-01"));
}

TEST(CalendarArithmetic, MonthEnds) {
    struct Case {
        const char* value;
        int64_t months;
        const char* add_months;  // the last day of a month sticks
        const char* interval;    // the day stays while it can
    };
    constexpr Case kCases[] = {
        {"2024-01-31 10:30:15.5", 1, "2024-02-29 10:30:15.5", "2024-02-29 10:30:15.5"},
        {"2023-01-31", 1, "2023-02-28", "2023-02-28"},
        {"2024-02-29", 1, "2024-03-31", "2024-03-29"},
        {"2023-02-28", 1, "2023-03-31", "2023-03-28"},
        {"2024-02-28", 1, "2024-03-28", "2024-03-28"},
        {"2024-04-30", -2, "2024-02-29", "2024-02-29"},
        {"2024-04-30", 1, "2024-05-31", "2024-05-30"},
        {"2024-04-29", 1, "2024-05-29", "2024-05-29"},
        {"2024-01-30", 1, "2024-02-29", "2024-02-29"},
        {"2024-02-29", 0, "2024-02-29", "2024-02-29"},
        {"2024-02-29", 12, "2025-02-28", "2025-02-28"},
        {"2025-02-28", 36, "2028-02-29", "2028-02-28"},
        {"1500-02-28", 1, "1500-03-28", "1500-03-28"},  // a leap year of the Julian calendar
        {"1700-02-28", 1, "1700-03-31", "1700-03-28"},
        {"1582-09-30", 1, "1582-10-31", "1582-10-30"},
        {"1582-09-08", 1, "1582-10-15", "1582-10-15"},
        {"1582-11-08", -1, "1582-10-15", "1582-10-15"},
        {"1582-11-04", -1, "1582-10-04", "1582-10-04"},
        {"0001-01-31", -1, "0000-12-31", "0000-12-31"},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.value);
        SCOPED_TRACE(c.months);
        const auto months = static_cast<int32_t>(c.months);
        const qz_interval_ym interval{0, months, 656}, negative{0, -months, 656}, mixed{1, months - 12, 406};
        EXPECT_EQ(sum(c.value, [&](auto* from, auto* out) { return qztime_date_add_iv_ym(from, &interval, out); }),
                  full(c.add_months));
        EXPECT_EQ(sum(c.value, [&](auto* from, auto* out) { return qztime_date_add_iv_ym(from, &mixed, out); }),
                  full(c.add_months));
        EXPECT_EQ(sum(c.value, [&](auto* from, auto* out) { return datetime_add_interval_ym(from, &interval, out); }),
                  full(c.interval));
        EXPECT_EQ(sum(c.value, [&](auto* from, auto* out) { return datetime_sub_interval_ym(from, &negative, out); }),
                  full(c.interval));
    }
    constexpr int32_t kMin = std::numeric_limits<int32_t>::min(), kMax = std::numeric_limits<int32_t>::max();
    for (const qz_interval_ym& interval :
         {qz_interval_ym{0, kMax, 656}, qz_interval_ym{0, kMin, 656}, qz_interval_ym{kMax, kMax, 406},
          qz_interval_ym{kMin, kMin, 406}, qz_interval_ym{7976, 0, 406}, qz_interval_ym{-6737, 0, 406}}) {
        EXPECT_EQ(sum("2024-06-15", [&](auto* from, auto* out) { return qztime_date_add_iv_ym(from, &interval, out); }),
                  kOutOfRange);
        EXPECT_EQ(sum("2024-06-15", [&](auto* from, auto* out) { return datetime_add_interval_ym(from, &interval, out); }),
                  kOutOfRange);
    }
}

TEST(CalendarArithmetic, DayTimeIntervals) {
    const auto add = [](const char* value, const qz_interval_dt& interval) {
        return sum(value, [&](auto* from, auto* out) { return datetime_add_interval_dt(from, &interval, out); });
    };
    const auto subtract = [](const char* value, const qz_interval_dt& interval) {
        return sum(value, [&](auto* from, auto* out) { return datetime_sub_interval_dt(from, &interval, out); });
    };
    EXPECT_EQ(add("2024-02-28 23:59:59.5", {0, 0, 0, 0, 500000, 1686}), full("2024-02-29"));
    EXPECT_EQ(add("2024-02-28", {1, 2, 3, 4, 5, 1686}), full("2024-02-29 02:03:04.000005"));
    EXPECT_EQ(subtract("2024-02-29 02:03:04.000005", {1, 2, 3, 4, 5, 1686}), full("2024-02-28"));
    EXPECT_EQ(add("2024-02-29 02:03:04.000005", {-1, -2, -3, -4, -5, 1686}), full("2024-02-28"));
    EXPECT_EQ(subtract("1970-01-01 00:00:00", {0, 0, 480, 0, 0, 0}), full("1969-12-31 16:00:00"));
    EXPECT_EQ(add("2024-02-28", {0, 0, 0, 0, -1, 1686}), full("2024-02-27 23:59:59.999999"));
    EXPECT_EQ(add("2024-02-28", {1, -24, 60, -3600, 0, 1686}), full("2024-02-28"));
    constexpr int32_t kMin = std::numeric_limits<int32_t>::min(), kMax = std::numeric_limits<int32_t>::max();
    for (const int32_t end : {kMin, kMax}) {
        EXPECT_EQ(add("2024-02-28", {end, end, end, end, end, 1686}), kOutOfRange);
        EXPECT_EQ(subtract("2024-02-28", {end, end, end, end, end, 1686}), kOutOfRange);
        EXPECT_EQ(add("2024-02-28", {end, 0, 0, 0, 0, 1686}), kOutOfRange);
        EXPECT_EQ(add("2024-02-28", {0, end, 0, 0, 0, 1686}), kOutOfRange);
    }
    EXPECT_EQ(add("2024-02-28", {0, 0, 0, kMax, kMax, 1686}), full("2092-03-17 03:49:54.483647"));
    EXPECT_EQ(add("9999-12-31 23:59:59.999999", {0, 0, 0, 0, 1, 1686}), kOutOfRange);
    EXPECT_EQ(subtract("-4712-01-01", {0, 0, 0, 0, 1, 1686}), kOutOfRange);
}

TEST(CalendarArithmetic, DifferencesAndSumsAreInverse) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    const auto between = [&](int64_t least, int64_t most) {
        return std::uniform_int_distribution<int64_t>(least, most)(random);
    };
    const auto some = [&] {
        qztime value{};
        host_set_day_number(&value, static_cast<int32_t>(between(HOST_DAY_MIN, HOST_DAY_MAX)));
        value.hour = static_cast<uint8_t>(between(0, 23));
        value.minute = static_cast<uint8_t>(between(0, 59));
        value.second = static_cast<uint8_t>(between(0, 59));
        value.fraction = static_cast<uint32_t>(between(0, 999999) * 1000);
        value.tz = TZ_NONE;
        return value;
    };
    for (int i = 0; i < 50000; ++i) {
        const qztime a = some(), b = some();
        qztime out{};
        const int32_t days = qztime_diff_day(&b, &a);
        // Days: the time of day goes along.
        ASSERT_EQ(qztime_add_by_fmt(&a, 3, days, &out), 0);
        ASSERT_EQ(qztime_diff_day(&out, &b), 0);
        ASSERT_EQ(qztime_date_add_number(&b, -days, &out), 0);
        ASSERT_EQ(qztime_diff_day(&out, &a), 0);
        // Exact: an interval, and microseconds.
        const qz_interval_dt apart{days,
                                   b.hour - a.hour,
                                   b.minute - a.minute,
                                   b.second - a.second,
                                   (static_cast<int32_t>(b.fraction) - static_cast<int32_t>(a.fraction)) / 1000,
                                   1686};
        ASSERT_EQ(datetime_add_interval_dt(&a, &apart, &out), 0);
        ASSERT_EQ(text(out), text(b));
        ASSERT_EQ(datetime_sub_interval_dt(&b, &apart, &out), 0);
        ASSERT_EQ(text(out), text(a));
        // A completed count of a unit does not pass b, and one unit more does; months only where no end of a month or gap
        // interferes.
        for (const int32_t part : {4, 5, 6, 1, 2}) {
            if (part <= 2 && (a.day > 28 || b.day > 28 || (a.year == 1582 || b.year == 1582))) continue;
            int32_t count = 0;
            const int32_t code = qztime_parse_datediff(part, &a, &b, &count);
            if (code != 0) {
                ASSERT_EQ(code, EC_DATA_OVERFLOW);
                ASSERT_TRUE(part == 5 || part == 6);
                ASSERT_GE(std::abs(days), part == 6 ? 24855 : 1491308) << text(a) << ' ' << text(b);  // 2^31 seconds or minutes
                continue;
            }
            ASSERT_EQ(qztime_add_by_fmt(&a, part, count, &out), 0);
            const int32_t direction = qztime_cmp(&b, &a);
            ASSERT_NE(qztime_cmp(&out, &b), direction == 0 ? 1 : direction) << text(a) << ' ' << text(b) << " part " << part;
            if (qztime_add_by_fmt(&a, part, count + direction, &out) == 0 && direction != 0) {
                // A month or year that lands in the gap is moved, and does not show anything.
                if (part > 2 || out.year != 1582) {
                    ASSERT_EQ(qztime_cmp(&out, &b), direction) << text(a) << ' ' << text(b) << " part " << part;
                }
            }
        }
    }
}

TEST(CalendarArithmetic, Datediff) {
    struct Case {
        int32_t part;
        const char* first;
        const char* second;
        int32_t wanted;
    };
    constexpr Case kCases[] = {
        {1, "2000-06-01", "2001-05-31", 0},
        {1, "2000-06-01", "2001-06-01", 1},
        {1, "2001-05-31", "2000-06-01", 0},
        {1, "2001-06-01", "2000-06-01", -1},
        {1, "2000-06-01 12:00:00", "2001-06-01 11:59:59", 0},
        {1, "-4712-01-01", "9999-12-31", 14711},
        {2, "2024-01-31", "2024-02-29", 0},
        {2, "2024-01-29", "2024-02-29", 1},
        {2, "2024-02-29", "2024-01-31", 0},
        {2, "2024-02-29", "2023-01-15", -13},
        {2, "2024-01-15 00:00:00.000000001", "2024-02-15", 0},
        {3, "2024-02-28 12:00:00", "2024-03-01 11:00:00", 1},
        {3, "2024-02-28 12:00:00", "2024-03-01 12:00:00", 2},
        {3, "2024-03-01 11:00:00", "2024-02-28 12:00:00", -1},
        {9, "2024-02-28", "2024-03-01", 2},
        {11, "2024-02-28", "2024-03-01", 2},
        {3, "1582-10-04", "1582-10-15", 1},
        {4, "2024-02-29 10:30:00", "2024-02-29 12:29:59", 1},
        {4, "2024-02-29 10:30:00", "2024-02-29 12:30:00", 2},
        {4, "2024-02-29 12:29:59", "2024-02-29 10:30:00", -1},
        {5, "2024-02-28 23:59:30", "2024-02-29 00:01:29", 1},
        {6, "2024-02-28 23:59:59.5", "2024-02-29 00:00:01.4", 1},
        {6, "2024-02-28 23:59:59.5", "2024-02-29 00:00:01.5", 2},
        // The seconds of the fields, and the difference of the fractions cut toward zero: 1000 - 498.
        {7, "2024-02-28 23:59:59.5", "2024-02-29 00:00:00.0019", 502},
        {7, "2024-02-28 00:00:00.0019", "2024-02-28 00:00:00", -1},
        {14, "2024-02-28 23:59:59.5", "2024-02-29 00:00:00.0000019", 500002},
        {14, "2024-02-28 00:00:00.0000019", "2024-02-28 00:00:00", -1},
        {8, "2024-01-01", "2024-04-01", 1},
        {8, "2024-01-15", "2024-04-10", 0},
        {8, "2024-02-15", "2024-04-20", 1},
        {8, "2023-11-30", "2025-02-28", 4},
        {8, "2024-04-01", "2024-01-01", -1},
        {10, "2024-02-24", "2024-02-24 23:00:00", 0},  // a Saturday
        {10, "2024-02-24", "2024-02-25", 1},           // to Sunday
        {10, "2024-02-24 12:00:00", "2024-02-25 11:00:00", 0},
        {10, "2024-02-25", "2024-03-02", 0},  // Sunday to Saturday
        {10, "2024-03-03", "2024-02-25", -1},
        {10, "2024-02-25", "2024-02-24", -1},
    };
    for (const Case& c : kCases) {
        const qztime first = at(c.first), second = at(c.second);
        int32_t count = 77;
        EXPECT_EQ(qztime_parse_datediff(c.part, &first, &second, &count), 0);
        EXPECT_EQ(count, c.wanted) << c.part << ' ' << c.first << ' ' << c.second;
    }
    const qztime first = at("-4712-01-01"), second = at("9999-12-31");
    int32_t count = 77;
    for (const int32_t part : {0, -1, 12, 13, 15})
        EXPECT_EQ(qztime_parse_datediff(part, &first, &second, &count), EC_INVALID_ARGUMENT);
    for (const int32_t part : {5, 6, 7, 14}) {
        EXPECT_EQ(qztime_parse_datediff(part, &first, &second, &count), EC_DATA_OVERFLOW) << part;
        EXPECT_EQ(qztime_parse_datediff(part, &second, &first, &count), EC_DATA_OVERFLOW) << part;
    }
    EXPECT_EQ(count, 77);
    EXPECT_EQ(qztime_parse_datediff(4, &first, &second, &count), 0);
    EXPECT_EQ(count, 5373484 * 24);
    // The ends of 32 bits themselves.
    const qztime epoch = at("1970-01-01"), last = at("2038-01-19 03:14:07"), past = at("2038-01-19 03:14:08");
    EXPECT_EQ(qztime_parse_datediff(6, &epoch, &last, &count), 0);
    EXPECT_EQ(count, std::numeric_limits<int32_t>::max());
    EXPECT_EQ(qztime_parse_datediff(6, &epoch, &past, &count), EC_DATA_OVERFLOW);
    EXPECT_EQ(qztime_parse_datediff(6, &past, &epoch, &count), 0);
    EXPECT_EQ(count, std::numeric_limits<int32_t>::min());
}

}  // namespace
