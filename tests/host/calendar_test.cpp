#include "qzhost/calendar.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "support/test_seed.h"

namespace {

// Every day of the calendar; a build with sanitizers leaves out what lies far from any change of the rules.
#ifdef NDEBUG
constexpr bool kWalksAllYears = true;
#else
constexpr bool kWalksAllYears = false;
#endif

bool walked(int year) {
    return kWalksAllYears || year < -4690 || (year > -410 && year < 410) || (year > 1490 && year < 2110) || year > 9580;
}

qztime date(int year, int month, int day) {
    qztime value{};
    qztime_encode_without_check(&value, year, month, day, 0, 0, 0, 0, TZ_NONE);
    return value;
}

qztime moment(int year, int month, int day, int hour, int minute, int second, int fraction = 0, int16_t tz = TZ_NONE) {
    qztime value{};
    qztime_encode_without_check(&value, year, month, day, hour, minute, second, fraction, tz);
    return value;
}

std::string text(const qztime& v) {
    char buffer[96];
    std::snprintf(buffer, sizeof buffer, "%d-%02d-%02d %02d:%02d:%02d.%09u %d", v.year, v.month, v.day, v.hour, v.minute,
                  v.second, v.fraction, v.tz);
    return buffer;
}

// All that the fields say, as a tuple whose order is the order in time.
auto ordered(const qztime& v) {
    return std::tuple(int{v.year}, int{v.month}, int{v.day}, int{v.hour}, int{v.minute}, int{v.second}, uint32_t{v.fraction});
}

// A walk through the calendar that knows nothing but the rules of a day's successor.
struct Walk {
    int year = -4712, month = 1, day = 1;
    int number = -1721058;
    int weekday = 1;  // Julian day 0 was a Monday
    int day_of_year = 1;
    int week = 1;

    static bool leap(int year) {
        const bool fourth = year % 4 == 0;
        if (year <= 1582) return fourth;
        return fourth && (year % 100 != 0 || year % 400 == 0);
    }

    static int month_end(int year, int month) {
        constexpr int kLengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
        return kLengths[month - 1] + (month == 2 && leap(year));
    }

    bool ended() const { return year > 9999; }

    void step() {
        ++number;
        ++day_of_year;
        weekday = weekday == 6 ? 0 : weekday + 1;
        if (weekday == 0) ++week;
        if (year == 1582 && month == 10 && day == 4) {
            day = 15;
        } else if (day < month_end(year, month)) {
            ++day;
        } else if (month < 12) {
            ++month;
            day = 1;
        } else {
            ++year;
            month = day = day_of_year = week = 1;
        }
    }
};

TEST(Calendar, EveryDayFollowsFromTheOneBefore) {
    qztime before = date(-4712, 1, 1);
    int64_t days = 0;
    for (Walk at; !at.ended(); at.step()) {
        const qztime value = date(at.year, at.month, at.day);
        const qztime yesterday = before;
        before = value;
        if (!walked(at.year)) continue;
        ++days;
        // One comparison for all, since there are millions of days; the details are told when it fails.
        qztime from_number = value, next, coded, moved;
        from_number.year = 0, from_number.month = 0, from_number.day = 0;
        host_set_day_number(&from_number, at.number);
        int32_t year = 0, month = 0, day = 0;
        const bool after_gap = at.number >= 578103;
        const int64_t composed = qztime_calc_n_days_from_zero(at.year, at.month, at.day);
        const bool good =
            host_day_number(&value) == at.number && host_day_number_adjusted(&value) == at.number &&
            std::memcmp(&from_number, &value, sizeof value) == 0 && qztime_day_of_week(&value) == at.weekday &&
            qztime_day_of_year(&value) == at.day_of_year && qztime_week_for_datepart(&value) == at.week &&
            qztime_month_end_day(at.year, at.month) == Walk::month_end(at.year, at.month) &&
            qztime_date_validate(at.year, at.month, at.day) == 0 &&
            qztime_date_validate(at.year, at.month, Walk::month_end(at.year, at.month) + 1) == EC_DATE_VALUE_INVALID &&
            qztime_encode(&coded, at.year, at.month, at.day, 0, 0, 0, 0, TZ_NONE) == 0 &&
            composed == at.number + (after_gap ? 10 : 0) && host_count_days_from_zero(at.year, at.month, at.day) == composed &&
            qztime_get_date_by_ndays_from_zero(composed, &year, &month, &day) == 0 && year == at.year && month == at.month &&
            day == at.day && qztime_cmp_with_glgl(at.year, at.month, at.day) != 0 &&
            (at.number == HOST_DAY_MIN ||
             (qztime_diff_day(&value, &yesterday) == 1 && qztime_diff_day_without_glgl_adjust(&yesterday, &value) == -1 &&
              qztime_cmp(&yesterday, &value) == -1 && qztime_cmp(&value, &yesterday) == 1 &&
              qztime_add_by_fmt(&yesterday, 3, 1, &next) == 0 && std::memcmp(&next, &value, sizeof value) == 0 &&
              qztime_add_by_fmt(&value, 3, -1, &moved) == 0 && std::memcmp(&moved, &yesterday, sizeof value) == 0)) &&
            qztime_glgl_need_adjust_for_w(&value) == (at.year == 1582 && at.number >= 578103);
        ASSERT_TRUE(good) << text(value) << " number " << at.number << " is " << host_day_number(&value) << ", back "
                          << text(from_number) << ", weekday " << at.weekday << " is " << qztime_day_of_week(&value) << ", day "
                          << at.day_of_year << " is " << qztime_day_of_year(&value) << ", week " << at.week << " is "
                          << qztime_week_for_datepart(&value) << ", composed " << composed;
    }
    EXPECT_GT(days, 500000);
    if (kWalksAllYears) {
        EXPECT_EQ(days, 3652426 + 1721058 + 1);
    }
}

TEST(Calendar, KnownDays) {
    // Julian days of the almanacs, less 1721058.
    struct Known {
        int year, month, day, julian_day;
    };
    constexpr Known kDays[] = {{-4712, 1, 1, 0},       {-1, 12, 31, 1721057},   {0, 1, 1, 1721058},      {1, 1, 1, 1721424},
                               {1582, 10, 4, 2299160}, {1582, 10, 15, 2299161}, {1858, 11, 17, 2400001}, {1970, 1, 1, 2440588},
                               {2000, 1, 1, 2451545},  {2000, 10, 1, 2451819},  {9999, 12, 31, 5373484}};
    for (const Known& known : kDays) {
        const qztime value = date(known.year, known.month, known.day);
        EXPECT_EQ(host_day_number(&value), known.julian_day - 1721058) << text(value);
    }
}

// October 1582 to January 1583 as a wall calendar has them, Sunday first; the days that do not exist are left out.
constexpr const char* kAutumnOf1582[] = {
    "1582 10  .  1  2  3  4 15 16", "1582 10 17 18 19 20 21 22 23", "1582 10 24 25 26 27 28 29 30",
    "1582 10 31  .  .  .  .  .  .", "1582 11  .  1  2  3  4  5  6", "1582 11  7  8  9 10 11 12 13",
    "1582 11 14 15 16 17 18 19 20", "1582 11 21 22 23 24 25 26 27", "1582 11 28 29 30  .  .  .  .",
    "1582 12  .  .  .  1  2  3  4", "1582 12  5  6  7  8  9 10 11", "1582 12 12 13 14 15 16 17 18",
    "1582 12 19 20 21 22 23 24 25", "1582 12 26 27 28 29 30 31  .", "1583 01  .  .  .  .  .  .  1",
    "1583 01  2  3  4  5  6  7  8", "1583 01  9 10 11 12 13 14 15", "1583 01 16 17 18 19 20 21 22",
    "1583 01 23 24 25 26 27 28 29", "1583 01 30 31  .  .  .  .  .",
};

TEST(Calendar, AutumnOf1582) {
    int number = 578099;    // October 1
    int day_of_year = 274;  // 31 28 31 30 31 30 31 31 30, and 1
    for (const char* row : kAutumnOf1582) {
        std::istringstream cells(row);
        int year, month;
        cells >> year >> month;
        for (int weekday = 0; weekday < 7; ++weekday) {
            std::string cell;
            cells >> cell;
            if (cell == ".") continue;
            const qztime value = date(year, month, std::stoi(cell));
            SCOPED_TRACE(text(value));
            if (year == 1583 && month == 1 && value.day == 1) day_of_year = 1;
            EXPECT_EQ(qztime_day_of_week(&value), weekday);
            EXPECT_EQ(host_day_number(&value), number);
            EXPECT_EQ(qztime_day_of_year(&value), day_of_year);
            EXPECT_EQ(qztime_glgl_need_adjust_for_w(&value), year == 1582 && number >= 578103);
            ++number, ++day_of_year;
        }
    }
    EXPECT_EQ(number, 578099 + 21 + 30 + 31 + 31);
}

TEST(Calendar, DatesInTheGap) {
    const qztime fourth = date(1582, 10, 4), fifteenth = date(1582, 10, 15);
    for (int day = 5; day <= 14; ++day) {
        qztime value = moment(1582, 10, day, 12, 30, 15, 7, 60);
        SCOPED_TRACE(text(value));
        const qztime as_it_was = value;
        qztime coded{}, next{};
        EXPECT_EQ(qztime_cmp_with_glgl(1582, 10, day), 0);
        EXPECT_EQ(qztime_date_validate(1582, 10, day), 0);
        EXPECT_EQ(qztime_encode(&coded, 1582, 10, day, 0, 0, 0, 0, TZ_NONE), 0);
        EXPECT_EQ(coded.day, day);
        EXPECT_EQ(qztime_diff_day(&value, &fourth), 1);
        EXPECT_EQ(qztime_diff_day(&fifteenth, &value), 0);
        EXPECT_EQ(qztime_diff_day_without_glgl_adjust(&value, &fourth), day - 4);
        EXPECT_EQ(qztime_day_of_week(&value), 5);
        EXPECT_EQ(qztime_day_of_year(&value), 278);
        EXPECT_EQ(qztime_week_for_datepart(&value), qztime_week_for_datepart(&fifteenth));
        EXPECT_EQ(qztime_glgl_need_adjust_for_w(&value), 0);
        EXPECT_EQ(qztime_add_by_fmt(&value, 3, 1, &next), 0);
        EXPECT_EQ(text(next), text(moment(1582, 10, 16, 12, 30, 15, 7, 60)));
        EXPECT_EQ(qztime_add_by_fmt(&value, 5, 0, &next), 0);
        EXPECT_EQ(text(next), text(moment(1582, 10, 15, 12, 30, 15, 7, 60)));
        EXPECT_EQ(qztime_add_by_fmt(&value, 2, 1, &next), 0);
        EXPECT_EQ(text(next), text(moment(1582, 11, 15, 12, 30, 15, 7, 60)));
        // Composition counts the gap, so a day carried into it comes out as it is.
        int32_t year = 0, month = 0, composed_day = 0;
        const int64_t number = qztime_calc_n_days_from_zero(1582, 10, 1) + day - 1;
        EXPECT_EQ(qztime_calc_n_days_from_zero(1582, 10, day), number);
        EXPECT_EQ(qztime_get_date_by_ndays_from_zero(number, &year, &month, &composed_day), 0);
        EXPECT_EQ(std::tuple(year, month, composed_day), std::tuple(1582, 10, day));
        EXPECT_EQ(std::memcmp(&value, &as_it_was, sizeof value), 0);
        qztime_glgl_adjust(&value);
        EXPECT_EQ(text(value), text(moment(1582, 10, 15, 12, 30, 15, 7, 60)));
    }
    for (qztime value : {fourth, fifteenth, date(1582, 9, 10), date(1582, 11, 10), date(1581, 10, 10), date(1583, 10, 10)}) {
        const qztime as_it_was = value;
        qztime_glgl_adjust(&value);
        EXPECT_EQ(std::memcmp(&value, &as_it_was, sizeof value), 0);
    }
    qztime moved{};
    const qztime september = date(1582, 9, 10);
    EXPECT_EQ(qztime_add_by_fmt(&september, 2, 1, &moved), 0);
    EXPECT_EQ(text(moved), text(date(1582, 10, 15)));
    const qztime october = date(1582, 10, 31);
    EXPECT_EQ(qztime_month_end_day(1582, 10), 31);
    EXPECT_EQ(qztime_add_by_fmt(&october, 2, -1, &moved), 0);
    EXPECT_EQ(text(moved), text(date(1582, 9, 30)));
}

TEST(Calendar, EncodeAcceptsWhatIsAValue) {
    qztime value{};
    EXPECT_EQ(qztime_encode(&value, 2024, 2, 29, 23, 59, 59, 999999999, -330), 0);
    EXPECT_EQ(text(value), "2024-02-29 23:59:59.999999999 -330");
    int32_t year, month, day, hour, minute, second, fraction;
    int16_t tz;
    qztime_decode(&value, &year, &month, &day, &hour, &minute, &second, &fraction, &tz);
    EXPECT_EQ(std::tuple(year, month, day, hour, minute, second, fraction, tz),
              std::tuple(2024, 2, 29, 23, 59, 59, 999999999, int16_t{-330}));
    EXPECT_EQ(qztime_get_zone_hour(&value), -5);
    EXPECT_EQ(qztime_get_zone_min(&value), -30);
    struct Case {
        int year, month, day, hour, minute, second, fraction;
        int16_t tz;
    };
    constexpr Case kGood[] = {{-4712, 1, 1, 0, 0, 0, 0, TZ_NONE}, {9999, 12, 31, 0, 0, 0, 0, 840},
                              {0, 2, 29, 0, 0, 0, 0, -840},       {-4700, 1, 1, 0, 0, 0, 0, 0},
                              {1500, 2, 29, 0, 0, 0, 0, TZ_NONE}, {1600, 2, 29, 0, 0, 0, 0, TZ_NONE}};
    for (const Case& c : kGood) {
        EXPECT_EQ(qztime_encode(&value, c.year, c.month, c.day, c.hour, c.minute, c.second, c.fraction, c.tz), 0) << c.year;
    }
    constexpr int kMin = std::numeric_limits<int>::min(), kMax = std::numeric_limits<int>::max();
    constexpr Case kBad[] = {
        {-4800, 1, 1, 0, 0, 0, 0, 0},  {-4713, 12, 31, 0, 0, 0, 0, 0},      {10000, 1, 1, 0, 0, 0, 0, 0},
        {10001, 1, 1, 0, 0, 0, 0, 0},  {65536 + 2024, 1, 1, 0, 0, 0, 0, 0}, {kMin, 1, 1, 0, 0, 0, 0, 0},
        {kMax, 1, 1, 0, 0, 0, 0, 0},   {2024, 0, 1, 0, 0, 0, 0, 0},         {2024, 13, 1, 0, 0, 0, 0, 0},
        {2024, -1, 1, 0, 0, 0, 0, 0},  {2024, 258, 1, 0, 0, 0, 0, 0},       {2024, 1, 0, 0, 0, 0, 0, 0},
        {2024, 1, 32, 0, 0, 0, 0, 0},  {2024, 1, 257, 0, 0, 0, 0, 0},       {2024, 1, kMin, 0, 0, 0, 0, 0},
        {2023, 2, 29, 0, 0, 0, 0, 0},  {1700, 2, 29, 0, 0, 0, 0, 0},        {1900, 2, 29, 0, 0, 0, 0, 0},
        {2024, 4, 31, 0, 0, 0, 0, 0},  {2024, 1, 1, 24, 0, 0, 0, 0},        {2024, 1, 1, -1, 0, 0, 0, 0},
        {2024, 1, 1, 256, 0, 0, 0, 0}, {2024, 1, 1, 0, 60, 0, 0, 0},        {2024, 1, 1, 0, -1, 0, 0, 0},
        {2024, 1, 1, 0, 0, 60, 0, 0},  {2024, 1, 1, 0, 0, kMax, 0, 0},      {2024, 1, 1, 0, 0, 0, 1000000000, 0},
        {2024, 1, 1, 0, 0, 0, -1, 0},  {2024, 1, 1, 0, 0, 0, 0, 841},       {2024, 1, 1, 0, 0, 0, 0, -841},
        {2024, 1, 1, 0, 0, 0, 0, 999},
    };
    for (const Case& c : kBad) {
        qztime kept = date(1, 2, 3);
        EXPECT_EQ(qztime_encode(&kept, c.year, c.month, c.day, c.hour, c.minute, c.second, c.fraction, c.tz),
                  EC_DATE_VALUE_INVALID)
            << c.year << ' ' << c.month << ' ' << c.day << ' ' << c.hour << ' ' << c.minute << ' ' << c.second << ' '
            << c.fraction;
        EXPECT_EQ(text(kept), text(date(1, 2, 3)));
    }
    qztime_encode_without_check(&value, -4800, 1, 1, 0, 0, 0, 0, 0);
    EXPECT_EQ(qztime_get_year(&value), -4800);
}

TEST(Calendar, FieldsAreReplacedInPlace) {
    qztime value = moment(2024, 2, 10, 1, 2, 3, 4, 5);
    qztime_set_day(&value, 29);
    qztime_set_hour(&value, 10);
    qztime_set_min(&value, 20);
    qztime_set_sec(&value, 30);
    qztime_set_msec(&value, 123456789);
    qztime_set_tz(&value, 480);
    EXPECT_EQ(text(value), "2024-02-29 10:20:30.123456789 480");
    EXPECT_EQ(qztime_get_month(&value), 2);
    EXPECT_EQ(qztime_get_day(&value), 29);
    EXPECT_EQ(qztime_get_hour(&value), 10);
    EXPECT_EQ(qztime_get_min(&value), 20);
    EXPECT_EQ(qztime_get_sec(&value), 30);
    EXPECT_EQ(qztime_get_msec(&value), 123456789);
    EXPECT_EQ(qztime_get_tz(&value), 480);
    qztime copy{};
    qztime_assign(&copy, &value);
    EXPECT_EQ(std::memcmp(&copy, &value, sizeof value), 0);
}

TEST(Calendar, MonthsAreCarriedIntoTheYear) {
    struct Case {
        int year, month, wanted_year, wanted_month;
    };
    constexpr int kMin = std::numeric_limits<int>::min(), kMax = std::numeric_limits<int>::max();
    constexpr Case kCases[] = {{2024, 1, 2024, 1},      {2024, 12, 2024, 12},     {2024, 13, 2025, 1}, {2024, 14, 2025, 2},
                               {2024, 24, 2025, 12},    {2024, 25, 2026, 1},      {2024, 0, 2023, 12}, {2024, -1, 2023, 11},
                               {2024, -11, 2023, 1},    {2024, -12, 2022, 12},    {1, 0, 0, 12},       {0, 0, -1, 12},
                               {0, kMax, 178956970, 7}, {0, kMin, -178956971, 4}, {kMax, 13, kMax, 1}, {kMin, 0, kMin, 12}};
    for (const Case& c : kCases) {
        int32_t year = c.year, month = c.month;
        qztime_format_date(&year, &month, 0);
        EXPECT_EQ(std::pair(year, month), std::pair(c.wanted_year, c.wanted_month)) << c.year << ' ' << c.month;
    }
}

TEST(Calendar, NumbersForCompositionCarryAndHaveNoLimits) {
    const int64_t march = qztime_calc_n_days_from_zero(2024, 3, 1);
    EXPECT_EQ(qztime_calc_n_days_from_zero(2024, 3, 0), march - 1);
    EXPECT_EQ(qztime_calc_n_days_from_zero(2024, 2, 30), march);
    EXPECT_EQ(qztime_calc_n_days_from_zero(2023, 15, 1), march);
    EXPECT_EQ(qztime_calc_n_days_from_zero(2025, -9, 1), march);
    constexpr int kMin = std::numeric_limits<int>::min(), kMax = std::numeric_limits<int>::max();
    // 400 Gregorian years have 146097 days, four Julian ones 1461.
    EXPECT_EQ(qztime_calc_n_days_from_zero(2000000000, 1, 1),
              qztime_calc_n_days_from_zero(2000, 1, 1) + int64_t{1999998000} / 400 * 146097);
    EXPECT_EQ(qztime_calc_n_days_from_zero(-2000000000, 1, 1), -int64_t{2000000000} / 4 * 1461);
    EXPECT_LT(qztime_calc_n_days_from_zero(kMin, kMin, kMin), -784000000000);
    EXPECT_GT(qztime_calc_n_days_from_zero(kMax, kMax, kMax), 784000000000);
    int32_t year = 7, month = 8, day = 9;
    for (const int64_t number : {int64_t{HOST_DAY_MIN} - 1, int64_t{HOST_DAY_MAX} + 11, std::numeric_limits<int64_t>::min(),
                                 std::numeric_limits<int64_t>::max()}) {
        EXPECT_EQ(qztime_get_date_by_ndays_from_zero(number, &year, &month, &day), EC_DATE_OUT_OF_RANGE) << number;
    }
    EXPECT_EQ(std::tuple(year, month, day), std::tuple(7, 8, 9));
    EXPECT_EQ(qztime_get_date_by_ndays_from_zero(HOST_DAY_MAX + 10, &year, &month, &day), 0);
    EXPECT_EQ(std::tuple(year, month, day), std::tuple(9999, 12, 31));
    EXPECT_EQ(qztime_get_date_by_ndays_from_zero(-1, &year, &month, &day), 0);
    EXPECT_EQ(std::tuple(year, month, day), std::tuple(-1, 12, 31));
}

TEST(Calendar, ComparesFieldsAndInstants) {
    const qztime a = moment(2024, 2, 29, 10, 30, 15, 5);
    EXPECT_EQ(qztime_cmp(&a, &a), 0);
    for (const qztime& later :
         {moment(2025, 1, 1, 0, 0, 0), moment(2024, 3, 1, 0, 0, 0), moment(2024, 2, 29, 11, 0, 0),
          moment(2024, 2, 29, 10, 31, 0), moment(2024, 2, 29, 10, 30, 16), moment(2024, 2, 29, 10, 30, 15, 6)}) {
        EXPECT_EQ(qztime_cmp(&a, &later), -1) << text(later);
        EXPECT_EQ(qztime_cmp(&later, &a), 1) << text(later);
    }
    const qztime before_christ = date(-1, 12, 31), after = date(1, 1, 1);
    EXPECT_EQ(qztime_cmp(&before_christ, &after), -1);
    // Instants: 10:30 at +08:00 is 02:30 UTC, of the day before at 23:30 -03:00.
    const qztime east = moment(2024, 3, 1, 10, 30, 0, 0, 480), utc = moment(2024, 3, 1, 2, 30, 0, 0, 0);
    const qztime west = moment(2024, 2, 29, 23, 30, 0, 0, -180), bare = moment(2024, 3, 1, 2, 30, 0);
    for (const qztime& same : {utc, west, bare}) {
        EXPECT_EQ(qztime_cmp(&east, &same), 0) << text(same);
        EXPECT_EQ(qztime_cmp(&same, &east), 0) << text(same);
    }
    EXPECT_EQ(qztime_cmp(&utc, &bare), 0);
    const qztime next = moment(2024, 2, 29, 23, 30, 0, 1, -180);
    EXPECT_EQ(qztime_cmp(&east, &next), -1);
    EXPECT_EQ(qztime_cmp(&next, &east), 1);
}

TEST(Calendar, ComparesFromAFieldDown) {
    // The sign is negative when the first lies later.
    std::mt19937 random(20240229);
    const auto field = [&](int least, int most) { return std::uniform_int_distribution<int>(least, most)(random); };
    for (int i = 0; i < 20000; ++i) {
        const auto some = [&] {
            return moment(field(2023, 2024), field(1, 2), field(1, 2), field(0, 1), field(0, 1), field(0, 1), field(0, 1));
        };
        const qztime a = some(), b = some();
        const std::array<int, 7> left{a.year, a.month, a.day, a.hour, a.minute, a.second, static_cast<int>(a.fraction)};
        const std::array<int, 7> right{b.year, b.month, b.day, b.hour, b.minute, b.second, static_cast<int>(b.fraction)};
        for (int from = 1; from <= 7; ++from) {
            int wanted = 0;
            for (auto at = static_cast<size_t>(from - 1); at < left.size() && wanted == 0; ++at)
                wanted = left[at] > right[at] ? -1 : left[at] < right[at] ? 1 : 0;
            ASSERT_EQ(qztime_compare(&a, &b, from), wanted) << text(a) << ' ' << text(b) << ' ' << from;
        }
        EXPECT_EQ(qztime_compare(&a, &b, 0), 0);
        EXPECT_EQ(qztime_compare(&a, &b, 8), 0);
    }
}

TEST(Calendar, WeekdayNames) {
    constexpr const char* kEnglish[] = {"Sunday", "MONDAY", "tuesday", "WednesDay", "Thursday", "Friday", "saturday"};
    constexpr const char* kShort[] = {"Sun", "MON", "tue", "wed", "Thu", "Fri", "sAT"};
    for (int day = 0; day < 7; ++day) {
        for (const uint32_t charset : {0u, 1u, 2u, 7u}) {
            EXPECT_EQ(qztime_convert_weekday(charset, kEnglish[day]), day);
            EXPECT_EQ(qztime_convert_weekday(charset, kShort[day]), day);
        }
    }
    EXPECT_EQ(qztime_convert_weekday(1, "  Friday "), 5);
    for (const char* unknown : {"", " ", "S", "Su", "Sund", "Mond", "Freitag", "Sundays", "Sun Day", "8", "\xff\xfe"}) {
        for (const uint32_t charset : {0u, 1u, 2u}) EXPECT_EQ(qztime_convert_weekday(charset, unknown), 8) << unknown;
    }
    // Wednesday and the two names of Sunday, in each encoding and in no other.
    struct Name {
        uint32_t charset;
        const char* bytes;
        int day;
    };
    constexpr Name kNames[] = {{0, "\xd0\xc7\xc6\xda\xc8\xfd", 3},
                               {0, "\xd6\xdc\xc8\xfd", 3},
                               {0, "\xd0\xc7\xc6\xda\xc8\xd5", 0},
                               {0, "\xd0\xc7\xc6\xda\xcc\xec", 0},
                               {1, "\u661f\u671f\u4e09", 3},
                               {1, "\u5468\u4e09", 3},
                               {1, "\u661f\u671f\u65e5", 0},
                               {1, "\u661f\u671f\u5929", 0},
                               {1, "\uc218\uc694\uc77c", 3},
                               {1, "\uc218", 3},
                               {1, "\uc77c\uc694\uc77c", 0},
                               {2, "\xbc\xf6\xbf\xe4\xc0\xcf", 3},
                               {2, "\xbc\xf6", 3},
                               {2, "\xc0\xcf\xbf\xe4\xc0\xcf", 0}};
    for (const Name& name : kNames) {
        for (const uint32_t charset : {0u, 1u, 2u}) {
            EXPECT_EQ(qztime_convert_weekday(charset, name.bytes), charset == name.charset ? name.day : 8)
                << name.bytes << charset;
        }
    }
    for (const char* unknown : {"\u661f\u671f", "\u4e09", "\uc694\uc77c", "\u661f\u671f\u4e03", "\u5468\u4e09\u4e09"}) {
        EXPECT_EQ(qztime_convert_weekday(1, unknown), 8) << unknown;
    }
}

TEST(Calendar, AgreesWithPython) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE(seed);
    const std::string command = "python3 " QZBIFUN_SOURCE_DIR "/tests/host/calendar_oracle.py " + std::to_string(seed) +
                                (kWalksAllYears ? " 50000" : " 5000");
    FILE* answers = popen(command.c_str(), "r");
    ASSERT_NE(answers, nullptr);
    int lines = 0, faults = 0;
    int f[7], s[7], t[7], days, weekday, day_of_year, week;
    long long micros;
    while (std::fscanf(answers, "%d %d %d %d %d %d %d %d %d %d %d %d %d %d %d %d %d %d %lld %d %d %d %d %d %d %d", &f[0], &f[1],
                       &f[2], &f[3], &f[4], &f[5], &f[6], &s[0], &s[1], &s[2], &s[3], &s[4], &s[5], &s[6], &days, &weekday,
                       &day_of_year, &week, &micros, &t[0], &t[1], &t[2], &t[3], &t[4], &t[5], &t[6]) == 26) {
        ++lines;
        const qztime first = moment(f[0], f[1], f[2], f[3], f[4], f[5], f[6] * 1000);
        const qztime second = moment(s[0], s[1], s[2], s[3], s[4], s[5], s[6] * 1000);
        const qztime target = moment(t[0], t[1], t[2], t[3], t[4], t[5], t[6] * 1000);
        const int64_t seconds = micros / 1000000;
        const qz_interval_dt interval{static_cast<int32_t>(seconds / 86400),  0, 0, static_cast<int32_t>(seconds % 86400),
                                      static_cast<int32_t>(micros % 1000000), 0};
        qztime added{}, by_interval{}, back{};
        const bool good = qztime_diff_day(&first, &second) == days && qztime_day_of_week(&first) == weekday &&
                          qztime_day_of_year(&first) == day_of_year && qztime_week_for_datepart(&first) == week &&
                          qztime_add_by_fmt(&first, 14, micros, &added) == 0 && text(added) == text(target) &&
                          datetime_add_interval_dt(&first, &interval, &by_interval) == 0 && text(by_interval) == text(target) &&
                          datetime_sub_interval_dt(&target, &interval, &back) == 0 && text(back) == text(first);
        if (!good && ++faults < 10) {
            ADD_FAILURE() << text(first) << " | " << text(second) << " | " << micros << " | " << text(target) << " | days "
                          << days << ' ' << qztime_diff_day(&first, &second) << " weekday " << weekday << ' '
                          << qztime_day_of_week(&first) << " day of year " << day_of_year << ' ' << qztime_day_of_year(&first)
                          << " week " << week << ' ' << qztime_week_for_datepart(&first) << " added " << text(added) << ' '
                          << text(by_interval) << ' ' << text(back);
        }
    }
    EXPECT_EQ(pclose(answers), 0);
    EXPECT_EQ(lines, kWalksAllYears ? 50000 : 5000);
    EXPECT_EQ(faults, 0);
}

TEST(Calendar, EveryServiceWithoutACodeTakesAnyBits) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    const auto some = [&] {
        std::array<unsigned char, sizeof(qztime)> bytes;
        for (unsigned char& byte : bytes) byte = random() % 4 == 0 ? 255 : static_cast<unsigned char>(random());
        qztime value;
        std::memcpy(&value, bytes.data(), sizeof value);
        return value;
    };
    for (int i = 0; i < 200000; ++i) {
        const qztime a = some(), b = some();
        const int order = qztime_cmp(&a, &b);
        ASSERT_TRUE(order >= -1 && order <= 1);
        ASSERT_EQ(qztime_cmp(&b, &a), -order);
        if (a.tz == b.tz) {
            ASSERT_EQ(order, ordered(a) < ordered(b) ? -1 : ordered(b) < ordered(a));
        }
        ASSERT_EQ(qztime_compare(&a, &b, static_cast<int32_t>(i % 9)), -qztime_compare(&b, &a, static_cast<int32_t>(i % 9)));
        ASSERT_EQ(qztime_diff_day(&a, &b), -qztime_diff_day(&b, &a));
        const int weekday = qztime_day_of_week(&a);
        ASSERT_TRUE(weekday >= 0 && weekday <= 6);
        const int day_of_year = qztime_day_of_year(&a), week = qztime_week_for_datepart(&a);
        ASSERT_TRUE(day_of_year > -100 && day_of_year < 10000 && week > -10 && week < 2000) << text(a);
        qztime out = b;
        int32_t count = 0;
        for (int part = -1; part <= 15; ++part) {
            (void)qztime_add_by_fmt(&a, part, static_cast<int64_t>(random()) >> (random() % 64), &out);
            (void)qztime_parse_datediff(part, &a, &b, &count);
        }
        qztime adjusted = a;
        qztime_glgl_adjust(&adjusted);
        const int end = qztime_month_end_day(a.year, a.month);
        ASSERT_TRUE(end >= 28 && end <= 31);
    }
}

// ---- Many dates at once -----------------------------------------------------------------------------------------------------

TEST(CalendarVectors, NumbersAreThoseOfEachRecord) {
    std::mt19937_64 random(1);
    for (const uint32_t n : {0U, 1U, 7U, 8U, 255U, 256U, 257U, 1000U}) {
        std::vector<qztime> dates(n);
        std::vector<int32_t> numbers(n + 1, 77);
        for (int32_t round = 0; round < 100; ++round) {
            for (qztime& date : dates) {
                // Any bits, any date of the months, and the days around the gap.
                const uint64_t bits = random();
                date.year = static_cast<int16_t>(bits);
                date.month = static_cast<uint8_t>(bits >> 16);
                date.day = static_cast<uint8_t>(bits >> 24);
                if (round % 3 != 0) date.month = static_cast<uint8_t>(date.month % 12 + 1);
                if (round % 3 == 2) date.year = 1582, date.month = static_cast<uint8_t>(date.month % 3 + 9);
            }
            host_day_numbers(numbers.data(), n, dates.data());
            for (uint32_t i = 0; i < n; ++i) ASSERT_EQ(numbers[i], host_day_number_adjusted(&dates[i])) << dates[i].year;
            ASSERT_EQ(numbers[n], 77);
        }
    }
}

TEST(CalendarVectors, DatesOfEveryNumber) {
    constexpr int32_t kMost = 1000;
    std::vector<qztime> source(kMost), dates(kMost + 1), expected(kMost);
    std::vector<int32_t> numbers(kMost);
    std::mt19937_64 random(1);
    for (qztime& value : source) {
        value = {static_cast<int16_t>(random()),  static_cast<uint8_t>(random()), static_cast<uint8_t>(random()),
                 static_cast<uint8_t>(random()),  static_cast<uint8_t>(random()), static_cast<uint8_t>(random()),
                 static_cast<uint32_t>(random()), static_cast<int16_t>(random())};
    }
    const qztime untouched = source[0];
    dates[kMost] = untouched;
    for (int32_t first = HOST_DAY_MIN; first <= HOST_DAY_MAX; first += kMost) {
        for (uint32_t i = 0; i < kMost; ++i) {
            numbers[i] = std::min<int32_t>(first + static_cast<int32_t>(i), HOST_DAY_MAX);
            expected[i] = source[i];
            host_set_day_number(&expected[i], numbers[i]);
        }
        host_set_day_numbers(dates.data(), kMost, source.data(), numbers.data());
        ASSERT_EQ(std::memcmp(dates.data(), expected.data(), kMost * sizeof(qztime)), 0) << first;
        ASSERT_EQ(std::memcmp(&dates[kMost], &untouched, sizeof untouched), 0);
    }
    std::vector<qztime> in_place = source;
    host_set_day_numbers(in_place.data(), kMost, in_place.data(), numbers.data());
    EXPECT_EQ(std::memcmp(in_place.data(), expected.data(), kMost * sizeof(qztime)), 0);
    // Numbers of no date do no harm.
    for (uint32_t i = 0; i < kMost; ++i) numbers[i] = static_cast<int32_t>(random());
    host_set_day_numbers(dates.data(), kMost, source.data(), numbers.data());
    for (uint32_t i = 0; i < kMost; ++i) ASSERT_EQ(uint32_t{dates[i].fraction}, uint32_t{source[i].fraction});
}

}  // namespace
