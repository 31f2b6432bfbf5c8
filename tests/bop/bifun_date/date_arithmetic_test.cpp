// Dates moved by an amount, all forms, against the standard library's calendar.
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <string>

#include "qzbifun/qzbifun.h"
#include "qzhost/calendar.h"
#include "tests/bop/bifun_date/gregorian_oracle.h"
#include "tests/support/differential.h"
#include "tests/support/test_seed.h"
#include "tests/support/vector.h"

namespace {

using namespace std::chrono;
using support::Differential;
using support::Random;
using support::Rules;

// What all functions of the family have in common.
template <class R, class... A>
Differential<R, A...> family() {
    Differential<R, A...> functions;
    functions.rules.valid = Rules::Valid::kept;
    functions.rules.constants = Rules::Constants::ignored;
    functions.rules.flag_reads_constants = false;
    return functions;
}

int32_t below(Random& random, int32_t bound) {
    return static_cast<int32_t>(random.below(2 * static_cast<uint32_t>(bound))) - bound;
}

// Years to months, days kept or the last of the month.
qztime add_months(const qztime& value, int32_t count, bool last_stays) {
    const year_month_day date = gregorian::date_of(value);
    const year_month month = year_month{date.year(), date.month()} + months{count};
    const auto last = [](year_month m) { return (m / std::chrono::last).day(); };
    const bool is_last = date.day() == last(year_month{date.year(), date.month()});
    const bool to_last = (last_stays && is_last) || date.day() > last(month);
    return gregorian::on(value, month / (to_last ? last(month) : date.day()));
}

TEST(DateArithmetic, DaysAndWeeks) {
    auto add_days = family<qztime, qztime, double>();
    add_days.draw<0>(gregorian::random_value);
    add_days.draw<1>([](Random& random) { return double{1} * below(random, 5000); });
    add_days.add("aa", "badd_days_aa_date", badd_days_aa_date);
    add_days.add("av", "badd_days_av_date", badd_days_av_date);
    add_days.add("va", "badd_days_va_date", badd_days_va_date);
    EXPECT_EQ(add_days.run([](const qztime& date, double count) {
        return gregorian::on(date, gregorian::days_of(date) + days{static_cast<int32_t>(count)});
    }),
              "");
    auto add_weeks = family<qztime, qztime, int32_t>();
    add_weeks.draw<0>(gregorian::random_value);
    add_weeks.draw<1>([](Random& random) { return below(random, 800); });
    add_weeks.add("aa", "badd_weeks_aa_date", badd_weeks_aa_date);
    add_weeks.add("av", "badd_weeks_av_date", badd_weeks_av_date);
    add_weeks.add("va", "badd_weeks_va_date", badd_weeks_va_date);
    EXPECT_EQ(add_weeks.run([](const qztime& date, int32_t count) {
        return gregorian::on(date, gregorian::days_of(date) + weeks{count});
    }),
              "");
}

// To the nearest second, half a second away from zero: 1/256 of a day has 337.5 seconds, and a double holds them exactly.
TEST(DateArithmetic, FractionsOfDays) {
    constexpr int32_t kParts = 256;
    const auto seconds_of = [](double count) {
        const auto parts = static_cast<int64_t>(count * kParts);
        return seconds{parts < 0 ? -((-parts * 675 + 1) / 2) : (parts * 675 + 1) / 2};
    };
    auto add_days = family<qztime, qztime, double>();
    add_days.draw<0>(gregorian::random_value);
    add_days.draw<1>(
        [](Random& random) { return double{1} * below(random, random.chance(50) ? 600 : 5000 * kParts) / kParts; });
    add_days.add("aa", "badd_days_aa_date", badd_days_aa_date);
    add_days.add("av", "badd_days_av_date", badd_days_av_date);
    add_days.add("va", "badd_days_va_date", badd_days_va_date);
    EXPECT_EQ(add_days.run([&](const qztime& date, double count) {
        const sys_seconds sum =
            gregorian::days_of(date) + hours{date.hour} + minutes{date.minute} + seconds{date.second} + seconds_of(count);
        const hh_mm_ss time{sum - floor<days>(sum)};
        qztime moved = gregorian::on(date, floor<days>(sum));
        moved.hour = static_cast<uint8_t>(time.hours().count());
        moved.minute = static_cast<uint8_t>(time.minutes().count());
        moved.second = static_cast<uint8_t>(time.seconds().count());
        return moved;
    }),
              "");
}

// Blocks in which rows are left to the service, for a time that is none, at the calendar's ends and beside them.
TEST(DateArithmetic, DaysOfAnyRecordAreThoseOfTheService) {
    constexpr uint32_t kRows = 600;
    Random random(support::test_seed());
    const std::array<double, 8> amounts = {0.5, -0.5, 1, -1, 0.25, -1e-6, 86399.5 / 86400, -0.5 / 86400};
    for (int round = 0; round < 200; ++round) {
        support::Host host;
        support::Vector dates(host, support::type_of<qztime>(), kRows), days(host, support::type_of<double>(), kRows);
        const bool hostile = round % 4 == 1, ends = round % 4 == 2, whole = round % 8 < 4;
        for (uint32_t i = 0; i < kRows; ++i) {
            qztime date = gregorian::random_value(random);
            if (hostile && random.chance(1))
                (random.chance(50) ? date.hour : date.second) = static_cast<uint8_t>(random.below(256));
            if (ends && random.chance(1)) date = qztime{-4712, 1, 2, 12, 0, 0, 5, TZ_NONE};
            if (ends && random.chance(1)) date = qztime{9999, 12, 28, 12, 0, 0, 5, TZ_NONE};
            dates.set(i, support::to_cell(date), 1);
            days.set(i, support::to_cell(whole && random.chance(90) ? 3.0 : amounts[random.below(amounts.size())]), 1);
        }
        const support::Vector result = support::Vector::result<qztime>(host, kRows);
        ASSERT_EQ(badd_days_aa_date(host.env(), host.mem(), dates.col(), days.col(), result.col(), kRows), 0);
        for (uint32_t i = 0; i < kRows; ++i) {
            const qztime date = dates.get<qztime>(i);
            qztime moved;
            ASSERT_EQ(qztime_date_add_number(&date, days.get<double>(i), &moved), 0);
            ASSERT_EQ(support::to_cell(result.get<qztime>(i)).bytes, support::to_cell(moved).bytes) << round << ": " << i;
        }
    }
}

TEST(DateArithmetic, MonthsAndTheirEnds) {
    auto months_added = family<qztime, qztime, int32_t>();
    months_added.draw<0>(gregorian::random_value);
    months_added.draw<1>([](Random& random) { return below(random, 180); });
    months_added.add("aa", "badd_months_aa_date", badd_months_aa_date);
    months_added.add("av", "badd_months_av_date", badd_months_av_date);
    months_added.add("va", "badd_months_va_date", badd_months_va_date);
    EXPECT_EQ(months_added.run([](const qztime& date, int32_t count) { return add_months(date, count, true); }), "");
    auto end = family<qztime, qztime>();
    end.draw<0>(gregorian::random_value);
    end.add("a", "blast_day_a_date", blast_day_a_date);
    EXPECT_EQ(end.run([](const qztime& date) {
        const year_month_day day = gregorian::date_of(date);
        return gregorian::on(date, day.year() / day.month() / std::chrono::last);
    }),
              "");
}

TEST(DateArithmetic, PartsByTheirCodes) {
    auto dateadd = family<qztime, int32_t, int64_t, qztime>();
    dateadd.draw<0>([](Random& random) { return std::array<int32_t, 7>{1, 2, 3, 8, 9, 10, 11}[random.below(7)]; });
    dateadd.draw<1>([](Random& random) { return int64_t{below(random, 15)}; });
    dateadd.draw<2>(gregorian::random_value);
    dateadd.add("vva", "bdateadd_vva_date", bdateadd_vva_date);
    dateadd.add("vav", "bdateadd_vav_date", bdateadd_vav_date);
    dateadd.add("vaa", "bdateadd_vaa_date", bdateadd_vaa_date);
    EXPECT_EQ(dateadd.run([](int32_t part, int64_t wide_count, const qztime& date) {
        const auto count = static_cast<int32_t>(wide_count);
        if (part == 1) return add_months(date, 12 * count, false);
        if (part == 2) return add_months(date, count, false);
        if (part == 8) return add_months(date, 3 * count, false);
        return gregorian::on(date, gregorian::days_of(date) + days{part == 10 ? 7 * count : count});
    }),
              "");
}

// Fields of any size count by what they come to.
TEST(DateArithmetic, IntervalsOfYearsAndMonths) {
    const auto of_any_size = [](Random& random) {
        qz_interval_ym interval = support::random_value<qz_interval_ym>(random);
        if (random.chance(20)) interval.iv_month = below(random, 2000);
        return interval;
    };
    const auto count = [](const qz_interval_ym& interval) { return 12 * interval.iv_year + interval.iv_month; };
    auto added = family<qztime, qztime, qz_interval_ym>();
    added.draw<0>(gregorian::random_value);
    added.draw<1>(of_any_size);
    added.add("aa", "bdate_add_ym_aa", bdate_add_ym_aa);
    added.add("av", "bdate_add_ym_av", bdate_add_ym_av);
    EXPECT_EQ(
        added.run([&](const qztime& date, const qz_interval_ym& interval) { return add_months(date, count(interval), false); }),
        "");
    auto subtracted = family<qztime, qztime, qz_interval_ym>();
    subtracted.draw<0>(gregorian::random_value);
    subtracted.draw<1>(of_any_size);
    subtracted.add("aa", "bdate_sub_ym_aa", bdate_sub_ym_aa);
    subtracted.add("av", "bdate_sub_ym_av", bdate_sub_ym_av);
    EXPECT_EQ(subtracted.run([&](const qztime& date, const qz_interval_ym& interval) {
        return add_months(date, -count(interval), false);
    }),
              "");
}

TEST(DateArithmetic, IntervalsOfDaysAndTimes) {
    auto added = family<qztime, qztime, qz_interval_dt>();
    added.draw<0>([](Random& random) {
        qztime value = gregorian::random_value(random);
        value.year = static_cast<int16_t>(2000 + value.year % 1000);
        return value;
    });
    added.draw<1>([](Random& random) {
        qz_interval_dt interval = support::random_value<qz_interval_dt>(random);
        if (random.chance(10)) interval.iv_second = random.chance(50) ? INT32_MAX : INT32_MIN;
        if (random.chance(10)) interval.iv_fraction = random.chance(50) ? INT32_MAX : INT32_MIN;
        return interval;
    });
    added.add("aa", "bdate_add_dt_aa", bdate_add_dt_aa);
    added.add("av", "bdate_add_dt_av", bdate_add_dt_av);
    EXPECT_EQ(added.run([](const qztime& date, const qz_interval_dt& interval) {
        const auto time = gregorian::time_of(date) + hours{interval.iv_hour} + minutes{interval.iv_minute} +
                          seconds{interval.iv_second} + microseconds{interval.iv_fraction};
        const auto carried = floor<days>(time);
        return gregorian::at(gregorian::on(date, gregorian::days_of(date) + days{interval.iv_day} + carried), time - carried);
    }),
              "");
}

TEST(DateArithmetic, NextDayWalksToTheWeekday) {
    static constexpr std::array<const char*, 7> kNames = {"sunday", "MON", "Tuesday", "wed", "Thursday", "FRIDAY", "sat"};
    auto next_day = family<qztime, qztime, support::Text>();
    next_day.draw<0>(gregorian::random_value);
    next_day.draw<1>([](Random& random) { return support::Text{kNames[random.below(7)], random.below(3)}; });
    next_day.add("av", "bnext_day_av_date", bnext_day_av_date);
    EXPECT_EQ(next_day.run([](const qztime& date, const support::Text& name) {
        unsigned wanted = 0;
        while (name.bytes != kNames[wanted]) ++wanted;
        sys_days day = gregorian::days_of(date) + days{1};
        while (weekday{day}.c_encoding() != wanted) day += days{1};
        return gregorian::on(date, day);
    }),
              "");
}

// Each day of the months around the cut-over, whose weekdays follow one another.
TEST(DateArithmetic, NextDayAcrossTheGap) {
    support::Host host;
    support::Vector in = support::Vector::of<qztime>(host, {qztime{}});
    support::Vector out = support::Vector::result<qztime>(host, 1);
    support::Constant friday = support::Constant::of<support::Text>(support::Text{"Friday", 0});
    qztime day{1582, 9, 28, 8, 30, 0, 5, 60};  // a Friday
    for (int i = 0; i < 60; ++i) {
        qztime expected = day;
        ASSERT_EQ(host_add_days(&day, 7 - i % 7, &expected), 0);
        in.set(0, support::to_cell(day), 1);
        ASSERT_EQ(bnext_day_av_date(host.env(), host.mem(), in.col(), friday.scalar(), out.col(), 1), 0);
        ASSERT_EQ(out.cell(0).bytes, support::to_cell(expected).bytes) << day.month << "-" << day.day;
        ASSERT_EQ(host_add_days(&day, 1, &day), 0);
    }
    EXPECT_EQ(day.month, 12);  // 60 days later the gap lies behind
    EXPECT_EQ(day.day, 7);
}

TEST(DateArithmetic, NextDayAdjustsADateInTheGapWhereItStands) {
    support::Host host;
    support::Vector in =
        support::Vector::of<qztime>(host, {qztime{1582, 10, 5, 1, 2, 3, 4, 60}, qztime{1582, 10, 4, 1, 2, 3, 4, 60}});
    support::Vector out = support::Vector::result<qztime>(host, 2);
    support::Constant name = support::Constant::of<support::Text>(support::Text{"saturday", 0});
    ASSERT_EQ(bnext_day_av_date(host.env(), host.mem(), in.col(), name.scalar(), out.col(), 2), 0);
    EXPECT_EQ(in.get<qztime>(0).day, 15);
    EXPECT_EQ(in.get<qztime>(0).hour, 1);
    EXPECT_EQ(in.get<qztime>(1).day, 4);
    EXPECT_EQ(out.get<qztime>(0).day, 16);
    EXPECT_EQ(out.get<qztime>(1).day, 16);
}

// A short name stands inline and behind the pointer alike; it is read behind the pointer.
TEST(DateArithmetic, NextDayReadsTheNameBehindThePointer) {
    support::Host host;
    const support::Vector in = support::Vector::of<qztime>(host, {qztime{2024, 2, 29, 0, 0, 0, 0, TZ_NONE}});
    support::Vector out = support::Vector::result<qztime>(host, 1);
    support::Constant name = support::Constant::of<support::Text>(support::Text{"friday", 0});
    auto& text = *reinterpret_cast<nstr*>(name.scalar());
    std::memcpy(text.nstr_inline, "monday", 6);
    char friday[] = {'f', 'r', 'i', 'd', 'a', 'y'};
    text.nstr_ext = friday;
    ASSERT_EQ(bnext_day_av_date(host.env(), host.mem(), in.col(), name.scalar(), out.col(), 1), 0);
    EXPECT_EQ(out.get<qztime>(0).month, 3);
    EXPECT_EQ(out.get<qztime>(0).day, 1);
}

TEST(LastDay, OfEveryMonthOfTheCalendar) {
    static constexpr std::array<uint8_t, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    for (int year = HOST_YEAR_MIN; year <= HOST_YEAR_MAX; ++year) {
        const bool leap = year % 4 == 0 && (year <= 1582 || year % 100 != 0 || year % 400 == 0);
        for (unsigned month = 1; month <= 12; ++month) {
            qztime value{static_cast<int16_t>(year), static_cast<uint8_t>(month), 1, 23, 59, 58, 7, -60};
            qztime end{};
            ASSERT_EQ(ifun_parse_last_day(&value, &end), 0);
            value.day = static_cast<uint8_t>(kDays[month - 1] + (month == 2 && leap ? 1 : 0));
            ASSERT_EQ(support::to_cell(end).bytes, support::to_cell(value).bytes) << year << "-" << month;
            ASSERT_EQ(ifun_parse_last_day(&end, &end), 0);  // in place
            ASSERT_EQ(support::to_cell(end).bytes, support::to_cell(value).bytes);
        }
    }
}

}  // namespace
