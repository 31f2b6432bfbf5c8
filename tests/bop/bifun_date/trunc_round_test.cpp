// round and trunc against a slow telling of their rules over a calendar that is walked day by day, and against a table written
// by hand for the months around the calendar change.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "qzbifun/codes.h"
#include "qzbifun/date_parts.h"
#include "qzbifun/date_rounding.h"
#include "tests/bop/bifun_date/dates.h"
#include "tests/support/differential.h"
#include "tests/support/random_value.h"
#include "tests/support/test_seed.h"
#include "tests/support/vector.h"

namespace {

using dates::date;
using dates::moment;
using support::Constant;
using support::Vector;

enum Part { kDay = 1, kCentury, kYear, kQuarter, kMonth, kWeekOfYear, kWeekOfMonth, kWeekStart, kHour, kMinute, kIsoWeek };

#ifdef NDEBUG
constexpr size_t kEveryDay = 1;
#else
constexpr size_t kEveryDay = 23;  // of the years without a peculiarity; instrumented, and not optimised
#endif

struct Day {
    int32_t year, month, day;
    int32_t weekday;  // 0 for Sunday

    auto key() const { return std::tuple(year, month, day); }
};

// The days of the years 1499 to 2501, walked one by one.
class Calendar {
  public:
    Calendar() {
        Day day{1499, 1, 1, 0};
        for (; day.year <= 2501; step(day)) days_.push_back(day);
        // 2000-10-01 was a Sunday.
        const size_t sunday = index(2000, 10, 1);
        for (size_t i = 0; i < days_.size(); ++i) days_[i].weekday = static_cast<int32_t>((i + 6 * sunday) % 7);
    }

    const std::vector<Day>& days() const { return days_; }

    size_t index(int32_t year, int32_t month, int32_t day) const {
        if (places_.empty()) {
            for (size_t i = 0; i < days_.size(); ++i) places_[days_[i].key()] = i;
        }
        return places_.at(std::tuple(year, month, day));
    }

  private:
    static void step(Day& day) {
        static constexpr int32_t kEnds[] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
        bool leap = day.year % 4 == 0;
        if (day.year > 1582 && day.year % 100 == 0 && day.year % 400 != 0) leap = false;
        if (day.year == 1582 && day.month == 10 && day.day == 4) {
            day.day = 15;
        } else if (day.day < kEnds[day.month] || (day.month == 2 && day.day == 28 && leap)) {
            ++day.day;
        } else {
            day.day = 1;
            if (++day.month > 12) day.month = 1, ++day.year;
        }
    }

    std::vector<Day> days_;
    mutable std::map<std::tuple<int32_t, int32_t, int32_t>, size_t> places_;
};

const Calendar& calendar() {
    static const Calendar instance;
    return instance;
}

// One value of the walked calendar.
struct Walked {
    size_t place;
    int32_t hour, minute, second;
    uint32_t fraction;
    int16_t tz;

    const Day& day(int64_t away = 0) const {
        return calendar().days()[static_cast<size_t>(static_cast<int64_t>(place) + away)];
    }
    qztime record() const {
        const Day& d = day();
        return moment(d.year, d.month, d.day, hour, minute, second, fraction, tz);
    }
    qztime midnight(int64_t away) const {
        const Day& d = day(away);
        return moment(d.year, d.month, d.day, 0, 0, 0, 0, tz);
    }
};

bool from_cutover_in_1582(const Day& d) { return d.year == 1582 && (d.month > 10 || (d.month == 10 && d.day >= 15)); }

int32_t weekday_of(int32_t year, int32_t month, int32_t day) {
    return calendar().days()[calendar().index(year, month, day)].weekday;
}

// The latest day on or before the value with that weekday.
qztime back_to(const Walked& value, int32_t weekday) {
    int64_t away = 0;
    while (value.day(away).weekday != weekday) --away;
    return value.midnight(away);
}

qztime told_trunc(const Walked& value, Part part) {
    const Day& d = value.day();
    const auto first = [](int32_t year, int32_t month) { return moment(year, month, 1, 0, 0, 0, 0, 0); };
    qztime same = value.record();
    switch (part) {
        case kDay:
            return value.midnight(0);
        case kCentury: {
            int32_t year = d.year;
            while (year % 100 != 1) --year;
            return first(year, 1);
        }
        case kYear:
            return first(d.year, 1);
        case kQuarter:
            return first(d.year, d.month < 4 ? 1 : d.month < 7 ? 4 : d.month < 10 ? 7 : 10);
        case kMonth:
            return first(d.year, d.month);
        case kWeekOfYear:
            return back_to(value, from_cutover_in_1582(d) ? 5 : weekday_of(d.year, 1, 1));
        case kWeekOfMonth:
            return back_to(value, from_cutover_in_1582(d) ? 5 : weekday_of(d.year, d.month, 1));
        case kWeekStart:
            return back_to(value, 0);
        case kHour:
            same.minute = 0;
            [[fallthrough]];
        case kMinute:
            same.second = 0;
            same.fraction = 0;
            return same;
        case kIsoWeek:
            return back_to(value, 1);
    }
    std::abort();
}

// The day with that weekday that is at most three days away.
qztime nearest(const Walked& value, int32_t weekday) {
    for (int64_t away = -3; away <= 3; ++away) {
        if (value.day(away).weekday == weekday) return value.midnight(away);
    }
    std::abort();
}

// The value a minute later, and again, until its minute, or its hour, has changed.
qztime forward(const Walked& value, bool to_hour) {
    Walked next = value;
    do {
        if (++next.minute == 60) {
            next.minute = 0;
            if (++next.hour == 24) next.hour = 0, ++next.place;
        }
    } while (to_hour && next.minute != 0);
    next.second = 0;
    next.fraction = 0;
    return next.record();
}

qztime told_round(const Walked& value, Part part) {
    const Day& d = value.day();
    const auto first = [](int32_t year, int32_t month) {
        return month > 12 ? date(year + 1, month - 12, 1) : date(year, month, 1);
    };
    switch (part) {
        case kDay:
            if (value.hour < 12) return value.midnight(0);
            if (d.key() == std::tuple(1582, 10, 4)) return moment(1582, 10, 5, 0, 0, 0, 0, value.tz);
            return value.midnight(1);
        case kCentury: {
            int32_t year = d.year;
            while (year % 100 != 0) --year;
            return first(d.year - year < 50 ? year + 1 : year + 101, 1);
        }
        case kYear:
            return first(d.month < 7 ? d.year : d.year + 1, 1);
        case kQuarter: {
            static constexpr int32_t kBefore16[] = {0, 1, 1, 4, 4, 4, 7, 7, 7, 10, 10, 10, 13};
            static constexpr int32_t kFrom16[] = {0, 1, 4, 4, 4, 7, 7, 7, 10, 10, 10, 13, 13};
            return first(d.year, d.day < 16 ? kBefore16[d.month] : kFrom16[d.month]);
        }
        case kMonth:
            return first(d.year, d.day < 16 ? d.month : d.month + 1);
        case kWeekOfYear: {
            const bool friday = d.year == 1582 && (d.month > 10 || (d.month == 10 && d.day >= 2));
            return nearest(value, friday ? 5 : weekday_of(d.year, 1, 1));
        }
        case kWeekOfMonth:
            return nearest(value, from_cutover_in_1582(d) ? 5 : weekday_of(d.year, d.month, 1));
        case kWeekStart: {
            const bool back = d.weekday < 3 || (d.weekday == 3 && value.hour < 12);
            return value.midnight(back ? -d.weekday : 7 - d.weekday);
        }
        case kHour:
            return value.minute > 30 || (value.minute == 30 && value.second >= 30) ? forward(value, true)
                                                                                   : told_trunc(value, kHour);
        case kMinute:
            return value.second >= 30 ? forward(value, false) : told_trunc(value, kMinute);
        case kIsoWeek: {
            static constexpr int64_t kAway[] = {1, 0, -1, -2, -3, 3, 2};
            return value.midnight(kAway[d.weekday]);
        }
    }
    std::abort();
}

using Worker = int32_t(qztime*, int32_t, qztime*);

qztime applied(Worker* worker, qztime value, int32_t part) {
    const qztime given = value;
    qztime result = moment(-1, 77, 78, 79, 80, 81, 82, 83);
    EXPECT_EQ(worker(&value, part, &result), 0);
    EXPECT_EQ(value, worker == ifun_round_dt_low && part == kDay ? given : result);
    return result;
}

bool peculiar(const Day& day) {
    return (day.year >= 1581 && day.year <= 1584) || day.year % 100 <= 1 || day.year % 100 == 50 || day.day >= 30;
}

TEST(TruncRound, EveryDayOfAThousandYearsByEveryPart) {
    static constexpr std::array<std::array<uint32_t, 4>, 6> kTimes = {
        {{0, 0, 0, 0}, {11, 59, 59, 999999999}, {12, 0, 0, 0}, {23, 30, 30, 1}, {10, 30, 29, 5}, {23, 59, 30, 0}}};
    const std::vector<Day>& days = calendar().days();
    size_t seen = 0;
    for (size_t place = calendar().index(1500, 1, 1); days[place].year <= 2500; ++place) {
        if (place % kEveryDay != 0 &&
            !(peculiar(days[place]) && (kEveryDay == 1 || days[place].year == 1582 || place % 5 == 0))) {
            continue;
        }
        // Each day at two of the times; all of them come to every weekday and month.
        for (const size_t time : {place % kTimes.size(), (place + 2) % kTimes.size()}) {
            const auto& [hour, minute, second, fraction] = kTimes[time];
            const Walked value{place,
                               static_cast<int32_t>(hour),
                               static_cast<int32_t>(minute),
                               static_cast<int32_t>(second),
                               fraction,
                               static_cast<int16_t>(place % 3 == 0 ? 480 : TZ_NONE)};
            const qztime record = value.record();
            for (int32_t part = kDay; part <= kIsoWeek; ++part) {
                ASSERT_EQ(applied(ifun_trunc_dt_low, record, part), told_trunc(value, Part(part)))
                    << show(record) << " to " << part;
                ASSERT_EQ(applied(ifun_round_dt_low, record, part), told_round(value, Part(part)))
                    << show(record) << " to " << part;
            }
            ++seen;
        }
    }
    EXPECT_GT(seen, 2 * 365'000 / kEveryDay);
}

// ---- The calendar change, by hand -----------------------------------------------------------------------------------------

// In a month and day of 1582, or of 1583 from month 13 on: 10'05 is October 5.
struct Range {
    int32_t first, last, result;
};

const std::vector<Range> kTruncFridays = {  // from 1582-10-15 on, and Saturdays from 1583-01-01 on
    {1015, 1021, 1015}, {1022, 1028, 1022}, {1029, 1104, 1029}, {1105, 1111, 1105}, {1112, 1118, 1112}, {1119, 1125, 1119},
    {1126, 1202, 1126}, {1203, 1209, 1203}, {1210, 1216, 1210}, {1217, 1223, 1217}, {1224, 1230, 1224}, {1231, 1231, 1231},
    {1301, 1307, 1301}, {1308, 1314, 1308}, {1315, 1321, 1315}, {1322, 1328, 1322}, {1329, 1331, 1329}};

const std::vector<Range> kNearestFridays = {
    {1015, 1018, 1015}, {1019, 1025, 1022}, {1026, 1101, 1029}, {1102, 1108, 1105}, {1109, 1115, 1112}, {1116, 1122, 1119},
    {1123, 1129, 1126}, {1130, 1206, 1203}, {1207, 1213, 1210}, {1214, 1220, 1217}, {1221, 1227, 1224}, {1228, 1231, 1231},
    {1301, 1304, 1301}, {1305, 1311, 1308}, {1312, 1318, 1315}, {1319, 1325, 1322}, {1326, 1331, 1329}};

std::vector<Range> with(std::vector<Range> first, const std::vector<Range>& rest) {
    first.insert(first.end(), rest.begin(), rest.end());
    return first;
}

qztime of_number(int32_t number) {
    const int32_t month = number / 100;
    return month > 12 ? date(1583, month - 12, number % 100) : date(1582, month, number % 100);
}

int32_t next_number(int32_t number) {
    return number == 1031 ? 1101 : number == 1130 ? 1201 : number == 1231 ? 1301 : number + 1;
}

void check_by_hand(Worker* worker, Part part, const std::vector<Range>& ranges) {
    int32_t expected_first = 1001;
    for (const Range& range : ranges) {
        ASSERT_EQ(range.first, expected_first) << "a day is left out";
        for (int32_t number = range.first;; number = next_number(number)) {
            qztime record = of_number(number);
            EXPECT_EQ(applied(worker, record, part), of_number(range.result)) << show(record) << " to " << part;
            if (number == range.last) break;
        }
        expected_first = next_number(range.last);
    }
    EXPECT_EQ(expected_first, 1332);
}

// 1582-01-01 and 1582-10-01 were Mondays, 1582-10-04 a Thursday, 1582-10-15 a Friday, 1583-01-01 a Saturday. Days 5 to 14 of
// October stand for the records in the gap.
TEST(TruncRound, AroundTheCalendarChangeByHand) {
    check_by_hand(ifun_trunc_dt_low, kDay, [] {
        std::vector<Range> ranges;
        for (int32_t number = 1001; number != 1332; number = next_number(number)) {
            ranges.push_back({number, number, number >= 1005 && number <= 1014 ? 1015 : number});
        }
        return ranges;
    }());
    check_by_hand(ifun_trunc_dt_low, kWeekOfYear, with({{1001, 1004, 1001}, {1005, 1014, 1015}}, kTruncFridays));
    check_by_hand(ifun_trunc_dt_low, kWeekOfMonth, with({{1001, 1004, 1001}, {1005, 1014, 1015}}, kTruncFridays));
    check_by_hand(ifun_trunc_dt_low, kWeekStart,
                  {{1001, 1004, 930},
                   {1005, 1016, 930},
                   {1017, 1023, 1017},
                   {1024, 1030, 1024},
                   {1031, 1106, 1031},
                   {1107, 1113, 1107},
                   {1114, 1120, 1114},
                   {1121, 1127, 1121},
                   {1128, 1204, 1128},
                   {1205, 1211, 1205},
                   {1212, 1218, 1212},
                   {1219, 1225, 1219},
                   {1226, 1301, 1226},
                   {1302, 1308, 1302},
                   {1309, 1315, 1309},
                   {1316, 1322, 1316},
                   {1323, 1329, 1323},
                   {1330, 1331, 1330}});
    check_by_hand(ifun_trunc_dt_low, kIsoWeek,
                  {{1001, 1004, 1001},
                   {1005, 1017, 1001},
                   {1018, 1024, 1018},
                   {1025, 1031, 1025},
                   {1101, 1107, 1101},
                   {1108, 1114, 1108},
                   {1115, 1121, 1115},
                   {1122, 1128, 1122},
                   {1129, 1205, 1129},
                   {1206, 1212, 1206},
                   {1213, 1219, 1213},
                   {1220, 1226, 1220},
                   {1227, 1302, 1227},
                   {1303, 1309, 1303},
                   {1310, 1316, 1310},
                   {1317, 1323, 1317},
                   {1324, 1330, 1324},
                   {1331, 1331, 1331}});
    check_by_hand(ifun_round_dt_low, kWeekOfYear,
                  with({{1001, 1001, 1001}, {1002, 1004, 1015}, {1005, 1014, 1015}}, kNearestFridays));
    // In the gap the first of the month, a Monday, is what counts, and the value is 1582-10-15.
    check_by_hand(ifun_round_dt_low, kWeekOfMonth, with({{1001, 1004, 1001}, {1005, 1014, 1018}}, kNearestFridays));
    check_by_hand(ifun_round_dt_low, kWeekStart,
                  {{1001, 1003, 930},
                   {1004, 1020, 1017},
                   {1021, 1027, 1024},
                   {1028, 1103, 1031},
                   {1104, 1110, 1107},
                   {1111, 1117, 1114},
                   {1118, 1124, 1121},
                   {1125, 1201, 1128},
                   {1202, 1208, 1205},
                   {1209, 1215, 1212},
                   {1216, 1222, 1219},
                   {1223, 1229, 1226},
                   {1230, 1305, 1302},
                   {1306, 1312, 1309},
                   {1313, 1319, 1316},
                   {1320, 1326, 1323},
                   {1327, 1331, 1330}});
    check_by_hand(ifun_round_dt_low, kIsoWeek,
                  {{1001, 1004, 1001},
                   {1005, 1021, 1018},
                   {1022, 1028, 1025},
                   {1029, 1104, 1101},
                   {1105, 1111, 1108},
                   {1112, 1118, 1115},
                   {1119, 1125, 1122},
                   {1126, 1202, 1129},
                   {1203, 1209, 1206},
                   {1210, 1216, 1213},
                   {1217, 1223, 1220},
                   {1224, 1230, 1227},
                   {1231, 1306, 1303},
                   {1307, 1313, 1310},
                   {1314, 1320, 1317},
                   {1321, 1327, 1324},
                   {1328, 1331, 1331}});
}

TEST(TruncRound, DaysOfTheGap) {
    const qztime in_gap = moment(1582, 10, 10, 12, 30, 30, 7, 60);
    qztime result;
    EXPECT_EQ(fun_trunc_day(&result, &in_gap), &result);
    EXPECT_EQ(result, moment(1582, 10, 10, 0, 0, 0, 0, 60));
    EXPECT_EQ(applied(ifun_trunc_dt_low, in_gap, kDay), moment(1582, 10, 15, 0, 0, 0, 0, 60));
    EXPECT_EQ(ifun_round_day_low(&in_gap, &result), 0);
    EXPECT_EQ(result, moment(1582, 10, 11, 0, 0, 0, 0, 60));
    EXPECT_EQ(applied(ifun_round_dt_low, in_gap, kDay), moment(1582, 10, 11, 0, 0, 0, 0, 60));
    EXPECT_EQ(applied(ifun_trunc_dt_low, in_gap, kHour), moment(1582, 10, 10, 12, 0, 0, 0, 60));
    EXPECT_EQ(applied(ifun_round_dt_low, in_gap, kHour), moment(1582, 10, 15, 13, 0, 0, 0, 60));
    EXPECT_EQ(applied(ifun_round_dt_low, in_gap, kMinute), moment(1582, 10, 15, 12, 31, 0, 0, 60));
    EXPECT_EQ(applied(ifun_round_dt_low, moment(1582, 10, 10, 12, 30, 29), kHour), moment(1582, 10, 10, 12, 0, 0));
    EXPECT_EQ(applied(ifun_round_dt_low, moment(1582, 10, 4, 23, 45, 0), kHour), date(1582, 10, 15));
    EXPECT_EQ(applied(ifun_round_dt_low, moment(1582, 10, 4, 23, 59, 30), kMinute), date(1582, 10, 15));
}

TEST(TruncRound, CenturiesAroundYearZero) {
    const std::map<int32_t, int32_t> truncated = {{2000, 1901},   {2001, 2001},   {1999, 1901},   {100, 1},     {101, 101},
                                                  {1, 1},         {0, 0},         {-1, -100},     {-100, -100}, {-101, -200},
                                                  {-4700, -4700}, {-4701, -4800}, {-4712, -4800}, {9999, 9901}};
    for (const auto& [year, first] : truncated) {
        EXPECT_EQ(applied(ifun_trunc_dt_low, moment(year, 6, 7, 8, 9, 10), kCentury), moment(first, 1, 1, 0, 0, 0, 0, 0))
            << year;
    }
    const std::map<int32_t, int32_t> rounded = {{1949, 1901}, {1950, 2001}, {2049, 2001}, {2050, 2101},   {2000, 2001},
                                                {49, 1},      {0, 1},       {-1, 1},      {-50, 1},       {-51, -100},
                                                {-100, -100}, {-150, -100}, {-151, -200}, {-4712, -4700}, {9949, 9901}};
    for (const auto& [year, first] : rounded) {
        EXPECT_EQ(applied(ifun_round_dt_low, moment(year, 6, 7, 8, 9, 10), kCentury), date(first, 1, 1)) << year;
    }
}

TEST(TruncRound, FailsOutsideTheCalendarAndChangesNothing) {
    const qztime untouched = moment(-1, 77, 78, 79, 80, 81, 82, 83);
    const auto fails = [&](Worker* worker, const qztime& value, int32_t part, int32_t code) {
        qztime given = value, result = untouched;
        EXPECT_EQ(worker(&given, part, &result), code) << show(value) << " to " << part;
        EXPECT_EQ(given, value);
        EXPECT_EQ(result, untouched);
    };
    const qztime last = moment(9999, 12, 31, 23, 59, 59);  // a Friday
    for (const Part part : {kDay, kCentury, kYear, kQuarter, kMonth})
        fails(ifun_round_dt_low, last, part, EC_DATE_VALUE_INVALID);
    for (const Part part : {kWeekStart, kHour, kMinute, kIsoWeek}) fails(ifun_round_dt_low, last, part, EC_DATE_OUT_OF_RANGE);
    const qztime first = date(-4712, 1, 1);  // a Monday
    fails(ifun_trunc_dt_low, first, kWeekStart, EC_DATE_OUT_OF_RANGE);
    EXPECT_EQ(applied(ifun_trunc_dt_low, first, kIsoWeek), first);
    for (const int32_t part : {0, -1, 12, 13, 255, 65537, INT32_MIN, INT32_MAX}) {
        fails(ifun_trunc_dt_low, date(2024, 1, 1), part, EC_DATE_FORMAT_INVALID);
        fails(ifun_round_dt_low, date(2024, 1, 1), part, EC_DATE_FORMAT_INVALID);
    }
    qztime result = untouched;
    EXPECT_EQ(ifun_round_day_low(&last, &result), EC_DATE_VALUE_INVALID);
    EXPECT_EQ(result, untouched);
}

// Any bits may stand in a record.
TEST(TruncRound, TakesAnyBits) {
    const uint32_t seed = support::test_seed();
    support::Random random(seed);
    for (int i = 0; i < 100000; ++i) {
        const uint64_t bits[2] = {random.next(), random.next()};
        qztime value, result{};
        std::memcpy(static_cast<void*>(&value), bits, sizeof value);
        if (random.chance(50)) value.year = static_cast<int16_t>(1582);
        if (random.chance(50)) value.month = 10;
        for (int32_t part = kDay; part <= kIsoWeek; ++part) {
            qztime work = value;
            EXPECT_LE(ifun_trunc_dt_low(&work, part, &result), 0);
            work = value;
            EXPECT_LE(ifun_round_dt_low(&work, part, &result), 0);
        }
    }
}

// An element that a function does not take is no matter where no row has a value.
TEST(TruncRound, AnElementFailsAtARowOnly) {
    const std::pair<const char*, bop_fn_av*> kFunctions[] = {{"XX", btrunc_date_av_date},   {"HH", bround_date_av_date},
                                                             {"DD", btrunc_time_av_date},   {"DD", bround_time_av_date},
                                                             {"", btrunc_datetime_av_date}, {"MO", bround_datetime_av_date}};
    for (const auto& [word, function] : kFunctions) {
        support::Host host;
        Constant element = Constant::of(support::Text{word});
        Vector nulls = Vector::of<qztime>(host, {std::nullopt, std::nullopt});
        Vector out = Vector::result<qztime>(host, 2);
        EXPECT_EQ(function(host.env(), host.mem(), nulls.col(), element.scalar(), out.col(), 2), 0);
        EXPECT_EQ(out.valid(0), 0);
        EXPECT_EQ(function(host.env(), host.mem(), nulls.col(), element.scalar(), out.col(), 0), 0);
        EXPECT_TRUE(host.errors().empty());
    }
}

// ---- Every form -------------------------------------------------------------------------------------------------------------

struct Element {
    const char* word;
    int32_t part;  // 0: none
};
constexpr Element kElements[] = {{"DD", kDay},
                                 {"j", kDay},
                                 {"CC", kCentury},
                                 {"scc", kCentury},
                                 {"Y", kYear},
                                 {"syear", kYear},
                                 {"Q", kQuarter},
                                 {"MM", kMonth},
                                 {"rm", kMonth},
                                 {"WW", kWeekOfYear},
                                 {"W", kWeekOfMonth},
                                 {"d", kWeekStart},
                                 {"DAY", kWeekStart},
                                 {"HH24", kHour},
                                 {"hh", kHour},
                                 {"MI", kMinute},
                                 {"IW", kIsoWeek},
                                 {"MO", 0},
                                 {"", 0}};

int32_t part_of(const support::Text& word) {
    for (const Element& element : kElements) {
        if (word.bytes == element.word) return element.part;
    }
    std::abort();
}

support::Text random_element(support::Random& random) {
    return {kElements[random.below(std::size(kElements))].word, random.below(2)};
}

// Of the years 1500 to 2500.
qztime random_record(support::Random& random) {
    static const size_t first = calendar().index(1500, 1, 1), behind = calendar().index(2501, 1, 1);
    const qztime time = support::random_value<qztime>(random);
    const size_t place = random.chance(10) ? calendar().index(1582, 9, 1) + random.below(120)
                                           : first + random.below(static_cast<uint32_t>(behind - first));
    return Walked{place, time.hour, time.minute, time.second, time.fraction, time.tz}.record();
}

Walked walked(const qztime& v) {
    return {calendar().index(v.year, v.month, v.day), v.hour, v.minute, v.second, v.fraction, v.tz};
}

TEST(TruncRound, FormsTakeTheElementsOfTheirKind) {
    struct Form {
        const char* name;
        bop_fn_av* function;
        qztime (*told)(const Walked&, Part);
        int32_t first, last;  // parts that it takes
    };
    static constexpr Form kForms[] = {{"btrunc_date_av_date", btrunc_date_av_date, told_trunc, kDay, kIsoWeek},
                                      {"btrunc_datetime_av_date", btrunc_datetime_av_date, told_trunc, kDay, kIsoWeek},
                                      {"btrunc_time_av_date", btrunc_time_av_date, told_trunc, kHour, kMinute},
                                      {"bround_date_av_date", bround_date_av_date, told_round, kDay, kWeekStart},
                                      {"bround_datetime_av_date", bround_datetime_av_date, told_round, kDay, kIsoWeek},
                                      {"bround_time_av_date", bround_time_av_date, told_round, kHour, kMinute}};
    for (const Form& form : kForms) {
        support::Differential<qztime, qztime, support::Text> rows;
        rows.rules.flag_reads_constants = false;
        rows.draw<0>(random_record);
        rows.draw<1>(random_element);
        rows.batches /= 2;
        rows.add("av", form.name, form.function);
        EXPECT_EQ(rows.run([&](const qztime& value, const support::Text& element) -> support::Answer<qztime> {
            const int32_t part = part_of(element);
            if (part < form.first || part > form.last) {
                return support::Answer<qztime>::error(EC_DATE_FORMAT_INVALID, {"self"});
            }
            return form.told(walked(value), Part(part));
        }),
                  "");
    }
    support::Differential<qztime, qztime> trunc, round;
    trunc.draw<0>(random_record), round.draw<0>(random_record);
    trunc.add("a", "btrunc_day_a_date", btrunc_day_a_date);
    round.add("a", "bround_day_a_date", bround_day_a_date);
    EXPECT_EQ(trunc.run([](const qztime& value) { return walked(value).midnight(0); }), "");
    EXPECT_EQ(round.run([](const qztime& value) { return told_round(walked(value), kDay); }), "");
}

std::string text_of(const qztime& v) {
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02u-%02u %02u:%02u:%02u", v.year, v.month, v.day, v.hour, v.minute, v.second);
    return text;
}

TEST(TruncRound, FormsOfTextWriteWhatTheyComeTo) {
    const auto differs = [](const char* name, bop_fn_av* function, qztime (*told)(const Walked&, Part),
                            const std::vector<std::string>& stack) {
        support::Differential<support::Text, support::Text, support::Text> rows;
        rows.rules.flag_reads_constants = false;
        rows.rules.flag_lowered = true;
        std::map<std::string, qztime> records;
        rows.draw<0>([&](support::Random& random) -> support::Text {
            if (random.chance(10)) return {std::string(random.below(3), ' '), random.below(3)};
            if (random.chance(2)) return {"2024-02-30"};
            qztime value = random_record(random);
            value.fraction = 0;
            const std::string text = text_of(value);
            records.emplace(text, value);
            return {text, random.below(3)};
        });
        rows.draw<1>([](support::Random& random) {
            for (;;) {
                if (support::Text element = random_element(random); part_of(element) != 0) return element;
            }
        });
        rows.add("av", name, function);
        return rows.run([&](const support::Text& text, const support::Text& element) -> support::Answer<support::Text> {
            if (text.bytes.find_first_not_of(' ') == std::string::npos) return support::Answer<support::Text>::null();
            const auto record = records.find(text.bytes);
            if (record == records.end()) return support::Answer<support::Text>::error(EC_DATE_TEXT_INVALID, stack);
            return support::Text{text_of(told(walked(record->second), Part(part_of(element))))};
        });
    };
    EXPECT_EQ(differs("btrunc_dt_str_av_date", btrunc_dt_str_av_date, told_trunc, {"self"}), "");
    EXPECT_EQ(differs("bround_dt_str_av_date", bround_dt_str_av_date, told_round, {"bround_dt_str_av_process", "self"}), "");
}

}  // namespace
