// The weekday workers that are exported.
#include <gtest/gtest.h>

#include <vector>

#include "qzbifun/codes.h"
#include "qzbifun/date_parts.h"
#include "tests/bop/bifun_date/dates.h"

namespace {

using dates::date;
using dates::moment;

int32_t weekday(qztime value, int32_t mode) {
    int32_t result = -99;
    EXPECT_EQ(ifun_weekday_in(&value, mode, &result), 0);
    return result;
}

int32_t special(qztime value) {
    int32_t result = -99;
    EXPECT_EQ(ifun_weekday_in_for_glgl_special(&value, &result), 0);
    return result;
}

int32_t week_start(const qztime& value) {
    int32_t result = -99;
    EXPECT_EQ(ifun_week_start_day_for_ww(&value, &result), 0);
    return result;
}

TEST(Weekday, CountsFromTheModesFirstDay) {
    for (const qztime& sunday :
         {date(2000, 10, 1), moment(2000, 10, 1, 23, 59, 59, 999999999), moment(2000, 10, 1, 1, 1, 1, 1)}) {
        EXPECT_EQ(weekday(sunday, 0), 0);
        EXPECT_EQ(weekday(sunday, 1), 1);
        EXPECT_EQ(weekday(sunday, 2), 6);
    }
    EXPECT_EQ(weekday(date(2000, 10, 2), 0), 1);
    EXPECT_EQ(weekday(date(2000, 10, 2), 1), 2);
    EXPECT_EQ(weekday(date(2000, 10, 2), 2), 0);
    EXPECT_EQ(weekday(date(2000, 9, 30), 0), 6);
    EXPECT_EQ(weekday(date(2000, 9, 30), 1), 7);
    EXPECT_EQ(weekday(date(2000, 9, 30), 2), 5);
}

TEST(Weekday, LooksAtTheLowByteOfTheMode) {
    EXPECT_EQ(weekday(date(2000, 10, 2), 0x102), 0);
    EXPECT_EQ(weekday(date(2000, 10, 2), 0x7F01), 2);
    for (const int32_t mode : {3, 7, 255, -1, 0x200}) EXPECT_EQ(weekday(date(2000, 10, 2), mode), 1) << mode;
}

TEST(Weekday, IsInRangeAtBothEndsOfTheCalendar) {
    EXPECT_EQ(weekday(date(-4712, 1, 1), 0), 1);  // day 0 of the Julian day count: a Monday
    EXPECT_EQ(weekday(date(9999, 12, 31), 0), 5);
    EXPECT_EQ(weekday(date(0, 12, 31), 0), 5);
    EXPECT_EQ(weekday(date(1, 1, 1), 0), 6);  // in the Julian calendar
    for (int32_t day = 1; day <= 28; ++day) {
        for (int32_t mode = 0; mode < 3; ++mode) {
            const int32_t found = weekday(date(-44, 3, day), mode);
            EXPECT_GE(found, mode == 1);
            EXPECT_LE(found, mode == 1 ? 7 : 6);
        }
    }
}

TEST(Weekday, MovesAValueOutOfTheGapWhereItStands) {
    EXPECT_EQ(weekday(date(1582, 10, 4), 0), 4);
    EXPECT_EQ(weekday(date(1582, 10, 15), 0), 5);
    for (int32_t day = 5; day <= 14; ++day) {
        qztime value = moment(1582, 10, day, 7, 8, 9, 10);
        int32_t result = -1;
        EXPECT_EQ(ifun_weekday_in(&value, 0, &result), 0);
        EXPECT_EQ(result, 5);
        EXPECT_EQ(value, moment(1582, 10, 15, 7, 8, 9, 10));

        value = moment(1582, 10, day, 7, 8, 9, 10);
        EXPECT_EQ(ifun_weekday_in_for_glgl_special(&value, &result), 0);
        EXPECT_EQ(result, 5);
        EXPECT_EQ(value, moment(1582, 10, 15, 7, 8, 9, 10));
    }
    for (const qztime& kept : {date(1582, 10, 4), date(1582, 10, 15), date(1582, 9, 10), date(1583, 10, 10)}) {
        qztime value = kept;
        int32_t result = -1;
        EXPECT_EQ(ifun_weekday_in(&value, 1, &result), 0);
        EXPECT_EQ(value, kept);
    }
}

TEST(Weekday, SpecialFormCountsFromSunday) {
    EXPECT_EQ(special(date(2000, 10, 1)), 0);
    EXPECT_EQ(special(date(2000, 10, 7)), 6);
    EXPECT_EQ(special(date(1582, 10, 4)), 4);
    EXPECT_EQ(special(date(-4712, 1, 1)), 1);
}

TEST(WeekStart, IsTheWeekdayOfTheFirstOfJanuary) {
    EXPECT_EQ(week_start(date(2000, 10, 1)), 6);
    EXPECT_EQ(week_start(date(2024, 12, 31)), 1);
    EXPECT_EQ(week_start(date(1581, 10, 10)), 0);
    EXPECT_EQ(week_start(date(1583, 1, 1)), 6);
}

// From October 2 on, not from October 15 on.
TEST(WeekStart, IsFridayFromTheSecondOfOctober1582) {
    EXPECT_EQ(week_start(date(1582, 1, 1)), 1);
    EXPECT_EQ(week_start(date(1582, 9, 30)), 1);
    EXPECT_EQ(week_start(date(1582, 10, 1)), 1);
    for (int32_t day = 2; day <= 31; ++day) EXPECT_EQ(week_start(date(1582, 10, day)), 5) << day;
    EXPECT_EQ(week_start(date(1582, 11, 1)), 5);
    EXPECT_EQ(week_start(date(1582, 12, 31)), 5);
}

TEST(WeekStart, FailsOutsideTheCalendar) {
    int32_t result = 77;
    const qztime beyond = date(10000, 1, 1);
    EXPECT_EQ(ifun_week_start_day_for_ww(&beyond, &result), EC_DATE_VALUE_INVALID);
    EXPECT_EQ(result, 77);
}

}  // namespace
