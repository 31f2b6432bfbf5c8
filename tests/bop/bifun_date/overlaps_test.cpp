// OVERLAPS: which points are there, times all orders of the four points, against a statement of the outcome in words of its
// own.
#include "qzbifun/overlaps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "qzbifun/codes.h"
#include "qzhost/calendar.h"
#include "tests/bop/bifun_date/gregorian_oracle.h"
#include "tests/support/differential.h"
#include "tests/support/vector.h"

namespace {

// A point of a period: where it lies, and whether it is there. A point that is not there has a slot, which lies somewhere too.
struct Point {
    int at;
    bool present;
};

enum class Shape { kWhole, kFirst, kSecond };  // which points of a period are there

Shape shape_of(Point first, Point second) {
    return first.present && second.present ? Shape::kWhole : first.present ? Shape::kFirst : Shape::kSecond;
}

// The outcome cell by cell: shapes of the first period down, of the second across.
bool stated(Point p1, Point p2, Point q1, Point q2) {
    const int lo1 = std::min(p1.at, p2.at), hi1 = std::max(p1.at, p2.at);
    const int lo2 = std::min(q1.at, q2.at), hi2 = std::max(q1.at, q2.at);
    const auto in = [](int point, int from, int to) { return point == from || (from < point && point < to); };
    switch (shape_of(p1, p2)) {
        case Shape::kWhole:
            switch (shape_of(q1, q2)) {
                case Shape::kWhole:
                    return lo1 <= hi2 && lo2 <= hi1;
                case Shape::kFirst:
                    return in(q1.at, lo1, hi1);
                case Shape::kSecond:
                    return lo1 == q2.at;
            }
            break;
        case Shape::kFirst:
            switch (shape_of(q1, q2)) {
                case Shape::kWhole:
                    return in(p1.at, lo2, hi2);
                case Shape::kFirst:
                    return p1.at == q1.at;
                case Shape::kSecond:
                    return in(p1.at, q2.at, q1.at);
            }
            break;
        case Shape::kSecond:
            switch (shape_of(q1, q2)) {
                case Shape::kWhole:
                    return p2.at == lo2;
                case Shape::kFirst:
                    return in(q1.at, p2.at, p1.at);
                case Shape::kSecond:
                    return p2.at == q2.at;
            }
    }
    return false;
}

// Points are days; or apart by a nanosecond, across a change of month and year.
qztime day(int at) { return {2024, 1, static_cast<uint8_t>(1 + at), 12, 0, 0, 0, TZ_NONE}; }

qztime nanosecond(int at) {
    if (at == 0) return {2023, 12, 31, 23, 59, 59, 999999999, TZ_NONE};
    return {2024, 1, 1, 0, 0, 0, static_cast<uint32_t>(at - 1), TZ_NONE};
}

// The same instant in zones that differ by the point's place among the four.
qztime zoned(int at, int place) {
    static constexpr std::array<int16_t, 4> kZones = {0, 480, -330, TZ_NONE};
    const int16_t zone = kZones[static_cast<size_t>(place)];
    const int minute = 12 * 60 + at + (zone == TZ_NONE ? 0 : zone);
    return {2024, 6, 15, static_cast<uint8_t>(minute / 60), static_cast<uint8_t>(minute % 60), 0, 0, zone};
}

struct Row {
    std::array<Point, 4> points;
    std::string text() const {
        std::string text;
        for (const Point& point : points) text += (point.present ? " " : " slot:") + std::to_string(point.at);
        return text;
    }
    bool is_null() const { return !((points[0].present || points[1].present) && (points[2].present || points[3].present)); }
    bool outcome() const { return stated(points[0], points[1], points[2], points[3]); }
};

// Every set of points that are there, and all orders of four places, equal ones included.
std::vector<Row> all_rows() {
    std::vector<Row> rows;
    for (int places = 0; places < 256; ++places) {
        for (int present = 0; present < 16; ++present) {
            Row row;
            for (int i = 0; i < 4; ++i) row.points[static_cast<size_t>(i)] = {places >> (2 * i) & 3, (present >> i & 1) != 0};
            rows.push_back(row);
        }
    }
    return rows;
}

TEST(OverlapsOfDatetimes, EveryCellAndEveryOrder) {
    for (const Row& row : all_rows()) {
        if (row.is_null()) continue;
        const auto& p = row.points;
        const auto check = [&](const std::array<qztime, 4>& values) {
            return qztime_overlaps_dt_low(&values[0], p[0].present ? 1 : 0, &values[1], p[1].present ? -5 : 0, &values[2],
                                          p[2].present ? 7 : 0, &values[3], p[3].present ? 1 : 0);
        };
        const int32_t expected = row.outcome() ? 1 : 0;
        ASSERT_EQ(check({day(p[0].at), day(p[1].at), day(p[2].at), day(p[3].at)}), expected) << row.text();
        ASSERT_EQ(check({nanosecond(p[0].at), nanosecond(p[1].at), nanosecond(p[2].at), nanosecond(p[3].at)}), expected)
            << row.text();
        ASSERT_EQ(check({zoned(p[0].at, 0), zoned(p[1].at, 1), zoned(p[2].at, 2), zoned(p[3].at, 3)}), expected) << row.text();
    }
}

// ---- Batches: the 15 forms of a family, told by their letters ---------------------------------------------------------------

struct Form {
    const char* letters;
    int32_t (*call)(qz_env*, rt_memobj*, std::array<void*, 4>, bdta3_col*, uint32_t);
};

template <class F>
struct Caller;

template <class A0, class A1, class A2, class A3>
struct Caller<int32_t(qz_env*, rt_memobj*, A0*, A1*, A2*, A3*, bdta3_col*, uint32_t)> {
    template <auto* kFunction>
    static int32_t call(qz_env* env, rt_memobj* mem, std::array<void*, 4> x, bdta3_col* result, uint32_t nrows) {
        return kFunction(env, mem, static_cast<A0*>(x[0]), static_cast<A1*>(x[1]), static_cast<A2*>(x[2]),
                         static_cast<A3*>(x[3]), result, nrows);
    }
};

#define FORM(letters, name) \
    Form { letters, &Caller<decltype(name)>::call<name> }

const std::array<Form, 15> kDatetimes = {
    FORM("aaaa", boverlaps_dt_aaaa_date),       FORM("aaav", boverlaps_dt_aaav_ts_date),
    FORM("aava", boverlaps_dt_aava_ts_date),    FORM("aavv", boverlaps_dt_aavv_tsts_date),
    FORM("avaa", boverlaps_dt_avaa_ts_date),    FORM("avav", boverlaps_dt_avav_tsts_date),
    FORM("avva", boverlaps_dt_avva_tsts_date),  FORM("avvv", boverlaps_dt_avvv_tststs_date),
    FORM("vaaa", boverlaps_dt_vaaa_ts_date),    FORM("vaav", boverlaps_dt_vaav_tsts_date),
    FORM("vava", boverlaps_dt_vava_tsts_date),  FORM("vavv", boverlaps_dt_vavv_tststs_date),
    FORM("vvaa", boverlaps_dt_vvaa_tsts_date),  FORM("vvav", boverlaps_dt_vvav_tststs_date),
    FORM("vvva", boverlaps_dt_vvva_tststs_date)};

const std::array<Form, 15> kIntervals = {
    FORM("aaaa", boverlaps_ivdt_aaaa_date),      FORM("aaav", boverlaps_ivdt_aaav_dt_date),
    FORM("aava", boverlaps_ivdt_aava_ts_date),   FORM("aavv", boverlaps_ivdt_aavv_dtts_date),
    FORM("avaa", boverlaps_ivdt_avaa_dt_date),   FORM("avav", boverlaps_ivdt_avav_dtdt_date),
    FORM("avva", boverlaps_ivdt_avva_tsdt_date), FORM("avvv", boverlaps_ivdt_avvv_date),
    FORM("vaaa", boverlaps_ivdt_vaaa_ts_date),   FORM("vaav", boverlaps_ivdt_vaav_dtts_date),
    FORM("vava", boverlaps_ivdt_vava_tsts_date), FORM("vavv", boverlaps_ivdt_vavv_date),
    FORM("vvaa", boverlaps_ivdt_vvaa_date),      FORM("vvav", boverlaps_ivdt_vvav_date),
    FORM("vvva", boverlaps_ivdt_vvva_date)};

// One row through a form, and the outcome expected of it: nothing for NULL.
template <class Second>
void check_form(support::Host& host, const Form& form, const std::array<qztime, 2>& starts,
                const std::array<Second, 2>& seconds, const std::array<bool, 4>& present, std::optional<int32_t> expected,
                const std::string& text) {
    std::vector<support::Vector> vectors;
    std::vector<support::Constant> constants;
    vectors.reserve(4), constants.reserve(4);
    std::array<void*, 4> arguments{};
    for (size_t i = 0; i < 4; ++i) {
        support::Cell cell = i % 2 == 0 ? support::to_cell(starts[i / 2]) : support::to_cell(seconds[i / 2]);
        const support::ValueType& type = i % 2 == 0 ? support::type_of<qztime>() : support::type_of<Second>();
        if (form.letters[i] == 'a') {
            vectors.emplace_back(host, type, 1);
            vectors.back().set(0, cell, present[i] ? 1 : 0);
            arguments[i] = vectors.back().col();
        } else {
            cell.has = present[i] ? 256 : 0;  // a word whose low byte is 0
            constants.emplace_back(type, cell);
            arguments[i] = constants.back().scalar();
        }
    }
    support::Vector out = support::Vector::result<int32_t>(host, 1);
    out.col()->all_valid = 1;
    ASSERT_EQ(form.call(host.env(), host.mem(), arguments, out.col(), 1), 0);
    ASSERT_EQ(out.valid(0), expected.has_value() ? 1 : 0) << form.letters << text;
    ASSERT_EQ(out.col()->all_valid, expected.has_value() ? 1u : 0u) << form.letters << text;
    if (expected.has_value()) {
        ASSERT_EQ(out.get<int32_t>(0), *expected) << form.letters << text;
    } else {
        ASSERT_TRUE(out.value_untouched(0)) << form.letters << text;
    }
}

TEST(OverlapsOfDatetimes, EveryFormOnEveryCell) {
    support::Host host;
    const std::vector<Row> rows = all_rows();
    size_t turn = 0;
    for (const Row& row : rows) {
        const auto& p = row.points;
        // Every form meets every set of points; the orders take turns.
        for (size_t k = 0; k < 3; ++k) {
            const Form& form = kDatetimes[turn++ % kDatetimes.size()];
            check_form<qztime>(host, form, {day(p[0].at), day(p[2].at)}, {day(p[1].at), day(p[3].at)},
                               {p[0].present, p[1].present, p[2].present, p[3].present},
                               row.is_null() ? std::nullopt : std::optional<int32_t>(row.outcome()), row.text());
            if (HasFatalFailure()) return;
        }
    }
}

TEST(OverlapsOfIntervals, EveryFormOnEveryCell) {
    support::Host host;
    size_t turn = 0;
    for (const Row& row : all_rows()) {
        const auto& p = row.points;
        const auto interval = [&](size_t i) { return qz_interval_dt{p[i + 1].at - p[i].at, 0, 0, 0, 0, 1686}; };
        const bool null = !p[0].present || !p[2].present;  // the starts
        const Form& form = kIntervals[turn++ % kIntervals.size()];
        check_form<qz_interval_dt>(host, form, {day(p[0].at), day(p[2].at)}, {interval(0), interval(2)},
                                   {p[0].present, p[1].present, p[2].present, p[3].present},
                                   null ? std::nullopt : std::optional<int32_t>(row.outcome()), row.text());
        if (HasFatalFailure()) return;
    }
}

// ---- Whole batches: selections of their own, NULLs, rows that fail ----------------------------------------------------------

template <class Second>
support::Differential<int32_t, qztime, Second, qztime, Second> family() {
    support::Differential<int32_t, qztime, Second, qztime, Second> forms;
    forms.rules.null_evaluated = true;
    forms.rules.constants = support::Rules::Constants::own;
    forms.rules.flag = support::Rules::Flag::kept;
    forms.rules.flag_lowered = true;
    forms.batches /= 3;
    forms.with_no_rows = false;  // constants that make all rows NULL lower the flag then too
    return forms;
}

using Answer = support::Answer<int32_t>;

qztime on_day(uint32_t at) {
    return {static_cast<int16_t>(at < 31 ? 2024 : 2023), 1, static_cast<uint8_t>(1 + at % 31), 12, 0, 0, 0, TZ_NONE};
}

// First points lie in the first half of the days and second ones in the other, so that the slot of a point that is missing
// decides nothing: what it does is shown above.
TEST(OverlapsDifferential, OfDatetimes) {
    auto forms = family<qztime>();
    const auto first = [](support::Random& random) { return day(static_cast<int>(random.below(4))); };
    const auto second = [](support::Random& random) { return day(static_cast<int>(3 + random.below(4))); };
    forms.draw<0>(first), forms.draw<1>(second), forms.draw<2>(first), forms.draw<3>(second);
    forms.add("aaaa", "boverlaps_dt_aaaa_date", boverlaps_dt_aaaa_date);
    forms.add("aaav", "boverlaps_dt_aaav_ts_date", boverlaps_dt_aaav_ts_date);
    forms.add("aava", "boverlaps_dt_aava_ts_date", boverlaps_dt_aava_ts_date);
    forms.add("aavv", "boverlaps_dt_aavv_tsts_date", boverlaps_dt_aavv_tsts_date);
    forms.add("avaa", "boverlaps_dt_avaa_ts_date", boverlaps_dt_avaa_ts_date);
    forms.add("avav", "boverlaps_dt_avav_tsts_date", boverlaps_dt_avav_tsts_date);
    forms.add("avva", "boverlaps_dt_avva_tsts_date", boverlaps_dt_avva_tsts_date);
    forms.add("avvv", "boverlaps_dt_avvv_tststs_date", boverlaps_dt_avvv_tststs_date);
    forms.add("vaaa", "boverlaps_dt_vaaa_ts_date", boverlaps_dt_vaaa_ts_date);
    forms.add("vaav", "boverlaps_dt_vaav_tsts_date", boverlaps_dt_vaav_tsts_date);
    forms.add("vava", "boverlaps_dt_vava_tsts_date", boverlaps_dt_vava_tsts_date);
    forms.add("vavv", "boverlaps_dt_vavv_tststs_date", boverlaps_dt_vavv_tststs_date);
    forms.add("vvaa", "boverlaps_dt_vvaa_tsts_date", boverlaps_dt_vvaa_tsts_date);
    forms.add("vvav", "boverlaps_dt_vvav_tststs_date", boverlaps_dt_vvav_tststs_date);
    forms.add("vvva", "boverlaps_dt_vvva_tststs_date", boverlaps_dt_vvva_tststs_date);
    using Value = std::optional<qztime>;
    EXPECT_EQ(forms.run([](const Value& p1, const Value& p2, const Value& q1, const Value& q2) -> Answer {
        if ((!p1 && !p2) || (!q1 && !q2)) return Answer::null();
        const auto point = [](const Value& value) { return Point{value ? value->day : 0, value.has_value()}; };
        if ((!p1 && !q2) || (!p2 && !q1)) return p1 ? p1->day == q2->day : p2->day == q1->day;
        return stated(point(p1), point(p2), point(q1), point(q2));
    }),
              "");
}

// A duration moves a start to an end; one that leaves the calendar ends the batch, unless a start is missing.
template <class Interval, class Add>
auto told_by(Add add) {
    return [add](const std::optional<qztime>& s1, const std::optional<Interval>& x1, const std::optional<qztime>& s2,
                 const std::optional<Interval>& x2) -> Answer {
        if (!s1 || !s2) return Answer::null();
        std::optional<std::chrono::sys_days> end1, end2;
        if (x1 && !(end1 = add(*s1, *x1))) return Answer::error(EC_DATE_OUT_OF_RANGE, {"self"}, std::nullopt);
        if (x2 && !(end2 = add(*s2, *x2))) return Answer::error(EC_DATE_OUT_OF_RANGE, {"self"}, std::nullopt);
        const auto number = [](std::chrono::sys_days date) { return static_cast<int>(date.time_since_epoch().count()); };
        const auto start = [&](const qztime& value) { return Point{number(gregorian::days_of(value)), true}; };
        const auto end = [&](const std::optional<std::chrono::sys_days>& date) {
            return Point{date ? number(*date) : 0, date.has_value()};
        };
        return stated(start(*s1), end(end1), start(*s2), end(end2));
    };
}

qztime start_of_a_period(support::Random& random) {
    qztime value = random.chance(3) ? qztime{9999, 12, 31, 12, 0, 0, 0, TZ_NONE} : on_day(random.below(62));
    if (random.chance(30)) value.month = 2, value.day = static_cast<uint8_t>(1 + value.day % 28);
    return value;
}

std::optional<std::chrono::sys_days> in_calendar(std::chrono::sys_days date) {
    return date < std::chrono::sys_days{std::chrono::year{10000} / 1 / 1} ? std::optional(date) : std::nullopt;
}

TEST(OverlapsDifferential, OfMonths) {
    auto forms = family<qz_interval_ym>();
    const auto months = [](support::Random& random) {
        return qz_interval_ym{random.chance(5) ? 1 : 0, static_cast<int32_t>(random.below(7)) - 3, 406};
    };
    forms.draw<0>(start_of_a_period), forms.draw<1>(months), forms.draw<2>(start_of_a_period), forms.draw<3>(months);
    forms.add("aaaa", "boverlaps_ivym_aaaa_date", boverlaps_ivym_aaaa_date);
    forms.add("aaav", "boverlaps_ivym_aaav_ym_date", boverlaps_ivym_aaav_ym_date);
    forms.add("aava", "boverlaps_ivym_aava_ts_date", boverlaps_ivym_aava_ts_date);
    forms.add("aavv", "boverlaps_ivym_aavv_ymts_date", boverlaps_ivym_aavv_ymts_date);
    forms.add("avaa", "boverlaps_ivym_avaa_ym_date", boverlaps_ivym_avaa_ym_date);
    forms.add("avav", "boverlaps_ivym_avav_ymym_date", boverlaps_ivym_avav_ymym_date);
    forms.add("avva", "boverlaps_ivym_avva_tsym_date", boverlaps_ivym_avva_tsym_date);
    forms.add("avvv", "boverlaps_ivym_avvv_ymtsym_date", boverlaps_ivym_avvv_ymtsym_date);
    forms.add("vaaa", "boverlaps_ivym_vaaa_ts_date", boverlaps_ivym_vaaa_ts_date);
    forms.add("vaav", "boverlaps_ivym_vaav_ymts_date", boverlaps_ivym_vaav_ymts_date);
    forms.add("vava", "boverlaps_ivym_vava_tsts_date", boverlaps_ivym_vava_tsts_date);
    forms.add("vavv", "boverlaps_ivym_vavv_ymtsts_date", boverlaps_ivym_vavv_ymtsts_date);
    forms.add("vvaa", "boverlaps_ivym_vvaa_ymts_date", boverlaps_ivym_vvaa_ymts_date);
    forms.add("vvav", "boverlaps_ivym_vvav_ymymts_date", boverlaps_ivym_vvav_ymymts_date);
    forms.add("vvva", "boverlaps_ivym_vvva_tsymts_date", boverlaps_ivym_vvva_tsymts_date);
    EXPECT_EQ(forms.run(told_by<qz_interval_ym>([](const qztime& start, const qz_interval_ym& x) {
        const std::chrono::year_month_day date = gregorian::date_of(start);
        const std::chrono::year_month month =
            std::chrono::year_month{date.year(), date.month()} + std::chrono::months{12 * x.iv_year + x.iv_month};
        const std::chrono::day last = (month / std::chrono::last).day();
        return in_calendar(month / std::min(date.day(), last));
    })),
              "");
}

TEST(OverlapsDifferential, OfDays) {
    auto forms = family<qz_interval_dt>();
    const auto days = [](support::Random& random) {
        const int32_t count = static_cast<int32_t>(random.below(61)) - 30;
        return random.chance(50) ? qz_interval_dt{count, 0, 0, 0, 0, 1686} : qz_interval_dt{0, 0, 0, 86400 * count, 0, 1686};
    };
    forms.draw<0>(start_of_a_period), forms.draw<1>(days), forms.draw<2>(start_of_a_period), forms.draw<3>(days);
    forms.add("aaaa", "boverlaps_ivdt_aaaa_date", boverlaps_ivdt_aaaa_date);
    forms.add("aaav", "boverlaps_ivdt_aaav_dt_date", boverlaps_ivdt_aaav_dt_date);
    forms.add("aava", "boverlaps_ivdt_aava_ts_date", boverlaps_ivdt_aava_ts_date);
    forms.add("aavv", "boverlaps_ivdt_aavv_dtts_date", boverlaps_ivdt_aavv_dtts_date);
    forms.add("avaa", "boverlaps_ivdt_avaa_dt_date", boverlaps_ivdt_avaa_dt_date);
    forms.add("avav", "boverlaps_ivdt_avav_dtdt_date", boverlaps_ivdt_avav_dtdt_date);
    forms.add("avva", "boverlaps_ivdt_avva_tsdt_date", boverlaps_ivdt_avva_tsdt_date);
    forms.add("avvv", "boverlaps_ivdt_avvv_date", boverlaps_ivdt_avvv_date);
    forms.add("vaaa", "boverlaps_ivdt_vaaa_ts_date", boverlaps_ivdt_vaaa_ts_date);
    forms.add("vaav", "boverlaps_ivdt_vaav_dtts_date", boverlaps_ivdt_vaav_dtts_date);
    forms.add("vava", "boverlaps_ivdt_vava_tsts_date", boverlaps_ivdt_vava_tsts_date);
    forms.add("vavv", "boverlaps_ivdt_vavv_date", boverlaps_ivdt_vavv_date);
    forms.add("vvaa", "boverlaps_ivdt_vvaa_date", boverlaps_ivdt_vvaa_date);
    forms.add("vvav", "boverlaps_ivdt_vvav_date", boverlaps_ivdt_vvav_date);
    forms.add("vvva", "boverlaps_ivdt_vvva_date", boverlaps_ivdt_vvva_date);
    EXPECT_EQ(forms.run(told_by<qz_interval_dt>([](const qztime& start, const qz_interval_dt& x) {
        return in_calendar(gregorian::days_of(start) + std::chrono::days{x.iv_day + x.iv_second / 86400});
    })),
              "");
}

}  // namespace
