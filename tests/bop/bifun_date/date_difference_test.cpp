// Distances between dates, all forms, against the standard library's calendar, and differences as inverses of sums.
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <limits>
#include <tuple>
#include <vector>

#include "bop/bifun_date/months_and_days.h"
#include "qzbifun/codes.h"
#include "qzbifun/qzbifun.h"
#include "qzhost/calendar.h"
#include "qzhost/decimal.h"
#include "tests/bop/bifun_date/gregorian_oracle.h"
#include "tests/support/differential.h"
#include "tests/support/test_seed.h"
#include "tests/support/vector.h"

namespace {

using namespace std::chrono;
using support::Answer;
using support::Differential;
using support::Random;
using support::Rules;

template <class R, class... A>
Differential<R, A...> family() {
    Differential<R, A...> functions;
    functions.rules.valid = Rules::Valid::kept;
    functions.rules.constants = Rules::Constants::ignored;
    functions.rules.flag_reads_constants = false;
    return functions;
}

int32_t days_apart(const qztime& first, const qztime& second) {
    return static_cast<int32_t>((gregorian::days_of(first) - gregorian::days_of(second)).count());
}

// Sundays up to a date, counted from one of them.
int32_t sundays(const qztime& value) {
    return static_cast<int32_t>(floor<weeks>(gregorian::days_of(value) - sys_days{1600y / 1 / 2}).count());
}

TEST(DateDifference, DaysWeeksAndYears) {
    auto days_between = family<int32_t, qztime, qztime>();
    days_between.draw<0>(gregorian::random_value);
    days_between.draw<1>(gregorian::random_value);
    days_between.add("aa", "bdays_between_aa_date", bdays_between_aa_date);
    days_between.add("av", "bdays_between_av_date", bdays_between_av_date);
    days_between.add("va", "bdays_between_va_date", bdays_between_va_date);
    EXPECT_EQ(days_between.run(days_apart), "");

    auto weeks_between = family<int32_t, qztime, qztime>();
    weeks_between.draw<0>(gregorian::random_value);
    weeks_between.draw<1>(gregorian::random_value);
    weeks_between.add("aa", "bweeks_between_aa_date", bweeks_between_aa_date);
    weeks_between.add("av", "bweeks_between_av_date", bweeks_between_av_date);
    weeks_between.add("va", "bweeks_between_va_date", bweeks_between_va_date);
    EXPECT_EQ(weeks_between.run([](const qztime& a, const qztime& b) { return sundays(a) - sundays(b); }), "");

    auto years_between = family<int32_t, qztime, qztime>();
    years_between.add("aa", "byears_between_aa_date", byears_between_aa_date);
    years_between.add("av", "byears_between_av_date", byears_between_av_date);
    years_between.add("va", "byears_between_va_date", byears_between_va_date);
    EXPECT_EQ(years_between.run([](const qztime& a, const qztime& b) { return a.year - b.year; }), "");
}

xdec months_apart(const qztime& a, const qztime& b) {
    const auto is_end = [](const qztime& v) {
        const year_month_day date = gregorian::date_of(v);
        return date == sys_days{date.year() / date.month() / last};
    };
    double count = (a.year - b.year) * 12 - b.month + a.month;
    if (a.day != b.day && !(is_end(a) && is_end(b))) count += (a.day - b.day) / 31.0;
    xdec result;
    EXPECT_EQ(xdec_from_double(count, &result), 0);
    return result;
}

TEST(DateDifference, Months) {
    auto months_between = family<xdec, qztime, qztime>();
    months_between.draw<0>(gregorian::random_value);
    months_between.draw<1>(gregorian::random_value);
    months_between.add("aa", "bmonths_between_aa_date", bmonths_between_aa_date);
    months_between.add("av", "bmonths_between_av_date", bmonths_between_av_date);
    months_between.add("va", "bmonths_between_va_date", bmonths_between_va_date);
    EXPECT_EQ(months_between.run(months_apart), "");
}

// ---- Completed units --------------------------------------------------------------------------------------------------------

constexpr int64_t kNanosecond = 1, kSecond = 1'000'000'000 * kNanosecond, kMinute = 60 * kSecond, kHour = 60 * kMinute;

// What a part counts: nothing, a length of time, months, or Sundays.
constexpr std::array<int32_t, 16> kParts = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

int64_t seconds_of(int32_t part) {
    return part == 4 ? 3600 : part == 5 ? 60 : part == 6 ? 1 : (part == 3 || part == 9 || part == 11) ? 86400 : 0;
}

__int128 nanoseconds_of(const qztime& value) {
    return __int128{gregorian::days_of(value).time_since_epoch().count()} * 24 * kHour + gregorian::time_of(value).count();
}

// Day of the month and time in order; what is left of a month.
std::tuple<int, nanoseconds> rest_of_month(const qztime& value) { return {value.day, gregorian::time_of(value)}; }
std::tuple<int, int, nanoseconds> rest_of_year(const qztime& value) {
    return {value.month, value.day, gregorian::time_of(value)};
}

// A count that goes one too far is taken back.
template <class Rest>
int64_t taken_back(int64_t count, const Rest& first, const Rest& second) {
    if (count > 0 && first > second) return count - 1;
    return count < 0 && first < second ? count + 1 : count;
}

Answer<int64_t> units(int32_t part, const qztime& first, const qztime& second) {
    if (const int64_t size = seconds_of(part); size != 0) {  // cut toward zero
        return static_cast<int64_t>((nanoseconds_of(second) - nanoseconds_of(first)) / (__int128{size} * kSecond));
    }
    const int32_t months = (second.year - first.year) * 12 + second.month - first.month;
    switch (part) {
        case 1:
            return taken_back(second.year - first.year, rest_of_year(first), rest_of_year(second));
        case 2:
            return taken_back(months, rest_of_month(first), rest_of_month(second));
        case 8:
            return taken_back((second.year * 4 + (second.month - 1) / 3) - (first.year * 4 + (first.month - 1) / 3),
                              rest_of_month(first), rest_of_month(second));
        case 10:
            return taken_back(sundays(second) - sundays(first), gregorian::time_of(first), gregorian::time_of(second));
        case 7:
        case 14: {
            const int64_t unit = part == 7 ? 1'000'000 : 1000;
            const auto whole = [](const qztime& v) { return static_cast<int64_t>((nanoseconds_of(v) - v.fraction) / kSecond); };
            const int64_t nanos = int64_t{second.fraction} - int64_t{first.fraction};
            return (whole(second) - whole(first)) * (kSecond / unit) + nanos / unit;
        }
        default:
            return Answer<int64_t>::error(EC_INVALID_ARGUMENT, {"self"});
    }
}

// Years apart or within one; and on the same day at times.
qztime near(Random& random) {
    qztime value = gregorian::random_value(random);
    if (random.chance(60)) value.year = static_cast<int16_t>(2023 + random.below(2));
    if (random.chance(40)) value.month = 6;
    value.day = static_cast<uint8_t>(1 + random.below(28));
    return value;
}

template <class R>
Differential<R, int32_t, qztime, qztime> counted() {
    auto functions = family<R, int32_t, qztime, qztime>();
    functions.template draw<0>([](Random& random) { return random.chance(5) ? -1 : kParts[random.below(kParts.size())]; });
    functions.template draw<1>(near);
    functions.template draw<2>(near);
    return functions;
}

TEST(DateDifference, CompletedUnits) {
    auto wide = counted<int64_t>();
    wide.batches *= 2;  // each has one part
    wide.add("vva", "bbigdatediff_vva_date", bbigdatediff_vva_date);
    wide.add("vav", "bbigdatediff_vav_date", bbigdatediff_vav_date);
    wide.add("vaa", "bbigdatediff_vaa_date", bbigdatediff_vaa_date);
    EXPECT_EQ(wide.run(units), "");

    auto narrow = counted<int32_t>();
    narrow.add("vva", "bdatediff_vva_date", bdatediff_vva_date);
    narrow.add("vav", "bdatediff_vav_date", bdatediff_vav_date);
    narrow.add("vaa", "bdatediff_vaa_date", bdatediff_vaa_date);
    EXPECT_EQ(narrow.run([](int32_t part, const qztime& first, const qztime& second) -> Answer<int32_t> {
        int64_t count = 0;
        if (ifun_parse_bigdatediff(part, &first, &second, &count) < 0) {
            return Answer<int32_t>::error(EC_INVALID_ARGUMENT, {"self"});
        }
        if (count < std::numeric_limits<int32_t>::min() || count > std::numeric_limits<int32_t>::max()) {
            return Answer<int32_t>::error(EC_DATA_OVERFLOW, {"self"});
        }
        return static_cast<int32_t>(count);
    }),
              "");
}

// ---- Inverses, over the whole calendar --------------------------------------------------------------------------------------

qztime anywhere(Random& random) {
    qztime value = support::random_value<qztime>(random);
    const int32_t length = HOST_DAY_MAX - HOST_DAY_MIN + 1;
    host_set_day_number(&value, HOST_DAY_MIN + static_cast<int32_t>(random.below(static_cast<uint32_t>(length))));
    return value;
}

TEST(DateDifference, WhatIsAddedIsCounted) {
    Random random(support::test_seed());
    int added = 0;
    for (int i = 0; i < 200000; ++i) {
        const qztime first = anywhere(random);
        static constexpr std::array<int32_t, 9> kLengths = {3, 4, 5, 6, 7, 9, 10, 11, 14};
        const int32_t part = kLengths[random.below(kLengths.size())];
        const int64_t bound = int64_t{1} << random.below(50);
        const int64_t count = static_cast<int64_t>(random.next() % static_cast<uint64_t>(2 * bound)) - bound;
        qztime second;
        if (qztime_add_by_fmt(&first, part, count, &second) < 0) continue;
        ++added;
        int64_t counted = 0;
        ASSERT_EQ(ifun_parse_bigdatediff(part, &first, &second, &counted), 0);
        ASSERT_EQ(counted, count) << "part " << part << " from " << first.year << "-" << +first.month << "-" << +first.day;
        ASSERT_EQ(ifun_parse_bigdatediff(part, &second, &first, &counted), 0);
        ASSERT_EQ(counted, -count) << "part " << part;
    }
    EXPECT_GT(added, 50000);
}

TEST(DateDifference, WhatIsCountedLeadsThereWhenAdded) {
    Random random(support::test_seed());
    for (int i = 0; i < 200000; ++i) {
        const qztime first = anywhere(random), second = anywhere(random);
        int64_t count = 0;
        ASSERT_EQ(ifun_parse_bigdatediff(HOST_PART_SECOND, &first, &second, &count), 0);
        qztime near_second;
        ASSERT_EQ(qztime_add_by_fmt(&first, HOST_PART_SECOND, count, &near_second), 0);
        int64_t rest = 1;
        ASSERT_EQ(ifun_parse_bigdatediff(HOST_PART_SECOND, &near_second, &second, &rest), 0);
        ASSERT_EQ(rest, 0);
    }
}

// ---- The exported workers ---------------------------------------------------------------------------------------------------

qztime on(int16_t year, uint8_t month, uint8_t day) { return {year, month, day, 0, 0, 0, 0, TZ_NONE}; }

TEST(WeeksBetween, CountsTheDaysBeforeItAdjustsAndTheWeekdaysAfterwards) {
    qztime first = on(1582, 10, 14), second = on(1582, 10, 4);
    int32_t weeks = -1;
    EXPECT_EQ(ifun_parse_weeks_between(&first, &second, &weeks), 0);
    EXPECT_EQ(weeks, (4 - 5 + 10) / 7);  // Thursday, Friday, ten Julian days
    EXPECT_EQ(first.day, 15);
    EXPECT_EQ(second.day, 4);
    EXPECT_EQ(ifun_parse_weeks_between(&first, &second, &weeks), 0);
    EXPECT_EQ(weeks, 0);  // one day, once it is adjusted
}

TEST(WeeksBetween, LeavesEqualDatesAlone) {
    qztime first = on(1582, 10, 10), second = on(1582, 10, 10);
    second.hour = 5;
    int32_t weeks = -1;
    EXPECT_EQ(ifun_parse_weeks_between(&first, &second, &weeks), 0);
    EXPECT_EQ(weeks, 0);
    EXPECT_EQ(first.day, 10);
    EXPECT_EQ(second.day, 10);
}

TEST(WeeksBetween, AdjustsRowsAndConstantsOfABatch) {
    support::Host host;
    support::Vector in = support::Vector::of<qztime>(host, {on(1582, 10, 6), std::nullopt, on(2000, 1, 1)});
    support::Constant constant = support::Constant::of<qztime>(on(1582, 10, 6));
    support::Vector out = support::Vector::result<int32_t>(host, 3);
    ASSERT_EQ(bweeks_between_av_date(host.env(), host.mem(), in.col(), constant.scalar(), out.col(), 3), 0);
    EXPECT_EQ(out.get<int32_t>(0), 0);
    EXPECT_EQ(in.get<qztime>(0).day, 6);  // equal dates: not adjusted
    EXPECT_EQ(reinterpret_cast<bdta3_datetime*>(constant.scalar())->value.day, 15);
    ASSERT_EQ(bweeks_between_av_date(host.env(), host.mem(), in.col(), constant.scalar(), out.col(), 3), 0);
    EXPECT_EQ(in.get<qztime>(0).day, 15);
}

// Months and days come out as the double of them does, byte for byte: all days, with months around every change of size.
TEST(MonthsBetween, AreThoseOfTheDouble) {
    std::vector<int32_t> months;
    for (int32_t i = -1300; i <= 1300; ++i) months.push_back(i);
    for (int32_t size = 1024; size <= 1 << 19; size *= 2) {
        for (int32_t i = -3; i <= 3; ++i)
            months.insert(months.end(), {size + i, -size - i, size / 3 * 4 + i, i - size / 3 * 4});
    }
    for (const int32_t i : {9999, 10000, 176543, 262142, 262143}) months.insert(months.end(), {i, -i});
    for (const int32_t month : months) {
        for (int32_t day = -30; day <= 30; ++day) {
            const bifun::MonthsAndDays number = bifun::months_and_days_of(month, day);
            if (std::abs(month) > 1 << 18) {
                ASSERT_EQ(number.scale, bifun::kOutsideTheTable) << month << " months, " << day << " days";
                continue;
            }
            if (number.scale == bifun::kOutsideTheTable) {
                ASSERT_GE(std::abs(month), (1 << 18) - 1) << month << " months, " << day << " days";
                continue;
            }
            xdec found, expected;
            ASSERT_EQ(xdec_from_unscaled(&found, number.unscaled, number.scale), 0);
            ASSERT_EQ(xdec_from_double(month + day / 31.0, &expected), 0);
            ASSERT_EQ(support::to_cell(found).bytes, support::to_cell(expected).bytes)
                << month << " months, " << day << " days";
        }
        for (const int32_t day : {-255, -32, 32, 255}) {
            EXPECT_EQ(bifun::months_and_days_of(month, day).scale, bifun::kOutsideTheTable) << month << ", " << day;
        }
    }
}

// Days that no month has are counted all the same, also in a block with others.
TEST(MonthsBetween, OfDaysThatNoMonthHas) {
    constexpr uint32_t kRows = 600;
    support::Host host;
    support::Vector first(host, support::type_of<qztime>(), kRows), second(host, support::type_of<qztime>(), kRows);
    for (uint32_t i = 0; i < kRows; ++i) {
        first.set(i, support::to_cell(on(2024, 3, static_cast<uint8_t>(i % 251 == 7 ? 200 : 1 + i % 28))), 1);
        second.set(i, support::to_cell(on(2020, static_cast<uint8_t>(1 + i % 12), 15)), 1);
    }
    const support::Vector result = support::Vector::result<xdec>(host, kRows);
    ASSERT_EQ(bmonths_between_aa_date(host.env(), host.mem(), first.col(), second.col(), result.col(), kRows), 0);
    for (uint32_t i = 0; i < kRows; ++i) {
        const auto a = first.get<qztime>(i), b = second.get<qztime>(i);
        xdec expected, single;
        ASSERT_EQ(xdec_from_double((a.year - b.year) * 12 + a.month - b.month + (a.day - b.day) / 31.0, &expected), 0);
        ASSERT_EQ(support::to_cell(result.get<xdec>(i)).bytes, support::to_cell(expected).bytes) << i;
        ASSERT_EQ(ifun_parse_months_between(&a, &b, &single), 0);
        ASSERT_EQ(support::to_cell(single).bytes, support::to_cell(expected).bytes) << i;
    }
}

TEST(MonthsBetween, OfOnePair) {
    const qztime first = on(2024, 3, 30), second = on(2024, 2, 29);
    xdec months, expected;
    EXPECT_EQ(ifun_parse_months_between(&first, &second, &months), 0);
    ASSERT_EQ(xdec_from_double(1 + 1 / 31.0, &expected), 0);
    EXPECT_EQ(support::to_cell(months).bytes, support::to_cell(expected).bytes);
}

TEST(BigDateDiff, LeavesTheResultAloneWhenThePartIsNone) {
    const qztime first = on(2024, 3, 30), second = on(2024, 2, 29);
    int64_t count = 77;
    for (const int32_t part : {0, 12, 13, 15, -1, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()}) {
        EXPECT_EQ(ifun_parse_bigdatediff(part, &first, &second, &count), EC_INVALID_ARGUMENT);
        EXPECT_EQ(count, 77);
    }
}

}  // namespace
