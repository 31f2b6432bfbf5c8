// Parts of values: the workers of one value, and the batch functions against the standard library's calendar.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <set>
#include <string>

#include "qzbifun/codes.h"
#include "qzbifun/qzbifun.h"
#include "tests/bop/bifun_date/gregorian_oracle.h"
#include "tests/support/differential.h"
#include "tests/support/vector.h"

namespace {

using namespace std::chrono;
using support::Differential;
using support::Rules;

const qztime kValue{2024, 2, 29, 10, 30, 15, 250000000, -330};

// Calls a worker with every code from -1 to 20 and answers those that it serves, each with what it told.
template <class T, class R>
std::set<std::pair<int32_t, R>> served(int32_t (*worker)(int32_t, const T*, R*), const T& value) {
    std::set<std::pair<int32_t, R>> parts;
    for (int32_t part = -1; part <= 20; ++part) {
        constexpr R kUntouched = -777;
        R result = kUntouched;
        const int32_t code = worker(part, &value, &result);
        if (code == 0) {
            parts.emplace(part, result);
        } else {
            EXPECT_EQ(code, EC_INVALID_ARGUMENT);
            EXPECT_EQ(result, kUntouched);
        }
    }
    return parts;
}

using Ints = std::set<std::pair<int32_t, int32_t>>;
using Doubles = std::set<std::pair<int32_t, double>>;

TEST(ExtractWorkers, ServeThePartsOfTheirKind) {
    EXPECT_EQ(served(ifun_parse_extract_date, kValue), (Ints{{1, 2024}, {2, 2}, {3, 29}}));
    EXPECT_EQ(served(ifun_parse_extract_time, kValue), (Ints{{4, 10}, {5, 30}}));
    EXPECT_EQ(served(ifun_parse_extract_time_tz, kValue), (Ints{{4, 10}, {5, 30}, {12, -5}, {13, -30}}));
    EXPECT_EQ(served(ifun_parse_extract_datetime, kValue), (Ints{{1, 2024}, {2, 2}, {3, 29}, {4, 10}, {5, 30}}));
    EXPECT_EQ(served(ifun_parse_extract_datetime_tz, kValue),
              (Ints{{1, 2024}, {2, 2}, {3, 29}, {4, 10}, {5, 30}, {12, -5}, {13, -30}}));
    EXPECT_EQ(served(ifun_parse_extract_iv_ym, qz_interval_ym{-3, 4, 406}), (Ints{{1, -3}, {2, 4}}));
    const qz_interval_dt interval{1, 2, 3, 4, 500000, 1686};
    EXPECT_EQ(served(ifun_parse_extract_iv_dt, interval), (Ints{{3, 1}, {4, 2}, {5, 3}, {6, 4}, {7, 500000}}));
    EXPECT_EQ(served(ifun_parse_extract_msec, kValue), (Doubles{{6, 15.25}}));
    EXPECT_EQ(served(ifun_parse_extract_ivdt_msec, interval), (Doubles{{6, 4.5}}));
}

int32_t extract(int32_t part, const std::string& text, int32_t* result) {
    return ifun_parse_extract_str(part, text.data(), static_cast<uint32_t>(text.size()), result);
}

TEST(ExtractWorkers, OfATextLookAtTheTextFirst) {
    int32_t result = 77;
    EXPECT_EQ(extract(4, "2024-02-29 10:30", &result), 0);
    EXPECT_EQ(result, 10);
    result = 77;
    EXPECT_EQ(extract(99, "", &result), RC_VALUE_IS_NULL);
    EXPECT_EQ(extract(99, "   ", &result), RC_VALUE_IS_NULL);
    EXPECT_EQ(extract(99, "29th of February", &result), EC_DATE_TEXT_INVALID);
    EXPECT_EQ(extract(4, "29th of February", &result), EC_DATE_TEXT_INVALID);
    EXPECT_EQ(extract(99, "2024-02-29", &result), EC_INVALID_ARGUMENT);
    EXPECT_EQ(extract(6, "2024-02-29", &result), EC_INVALID_ARGUMENT);
    EXPECT_EQ(result, 77);
}

TEST(Names, OfDaysAndMonths) {
    char buffer[BIFUN_DAY_NAME_BYTES];
    uint32_t length = 77;
    const qztime wednesday{2000, 9, 6, 0, 0, 0, 0, TZ_NONE};  // the longest names there are
    EXPECT_EQ(ifun_parse_dayname(&wednesday, buffer, &length), 0);
    EXPECT_STREQ(buffer, "Wednesday");
    EXPECT_EQ(length, 9u);
    EXPECT_EQ(ifun_parse_monthname(&wednesday, buffer, &length), 0);
    EXPECT_STREQ(buffer, "September");
    EXPECT_EQ(length, 9u);
    const qztime may{2024, 5, 1, 0, 0, 0, 0, TZ_NONE};
    EXPECT_EQ(ifun_parse_monthname(&may, buffer, &length), 0);
    EXPECT_STREQ(buffer, "May");
    EXPECT_EQ(length, 3u);
}

TEST(Names, OfNoMonthIsNotWritten) {
    char buffer[BIFUN_DAY_NAME_BYTES] = "before";
    uint32_t length = 77;
    for (const uint8_t month : {uint8_t{0}, uint8_t{13}, uint8_t{255}}) {
        const qztime value{2024, month, 1, 0, 0, 0, 0, TZ_NONE};
        EXPECT_EQ(ifun_parse_monthname(&value, buffer, &length), 0);
        EXPECT_STREQ(buffer, "before");
        EXPECT_EQ(length, 77u);
    }
}

TEST(DayOfWeek, AdjustsADateInTheGapWhereItStands) {
    support::Host host;
    const qztime in_gap{1582, 10, 5, 1, 2, 3, 4, 60};
    support::Vector in = support::Vector::of<qztime>(host, {in_gap, std::nullopt, in_gap, qztime{1582, 10, 4, 0, 0, 0, 0, 60}});
    in.set(1, support::to_cell(in_gap), 0);
    in.select({0, 1, 3});
    support::Vector out = support::Vector::result<int32_t>(host, 3);
    ASSERT_EQ(bdayofweek_a_date(host.env(), host.mem(), in.col(), out.col(), 3), 0);
    EXPECT_EQ(out.get<int32_t>(0), 6);
    EXPECT_EQ(out.get<int32_t>(2), 5);
    EXPECT_EQ(in.get<qztime>(0).day, 15);
    EXPECT_EQ(in.get<qztime>(0).hour, 1);
    EXPECT_EQ(in.get<qztime>(1).day, 5);  // NULL
    EXPECT_EQ(in.get<qztime>(2).day, 5);  // not selected
    EXPECT_EQ(in.get<qztime>(3).day, 4);
}

Differential<int32_t, qztime> of_a_date() {
    Differential<int32_t, qztime> function;
    function.rules.valid = Rules::Valid::kept;
    function.draw<0>(gregorian::random_value);
    return function;
}

TEST(ExtractDifferential, DaysOfWeeksAndYears) {
    auto dayofweek = of_a_date();
    dayofweek.add("a", "bdayofweek_a_date", bdayofweek_a_date);
    EXPECT_EQ(
        dayofweek.run([](const qztime& v) { return static_cast<int32_t>(weekday{gregorian::days_of(v)}.c_encoding()) + 1; }),
        "");
    auto dayofyear = of_a_date();
    dayofyear.add("a", "bdayofyear_a_date", bdayofyear_a_date);
    EXPECT_EQ(dayofyear.run([](const qztime& v) {
        return static_cast<int32_t>((gregorian::days_of(v) - sys_days{year{v.year} / 1 / 1}).count()) + 1;
    }),
              "");
    auto quarter = of_a_date();
    quarter.add("a", "bquarter_qztime_a_date", bquarter_qztime_a_date);
    EXPECT_EQ(quarter.run([](const qztime& v) -> int32_t { return (v.month + 2) / 3; }), "");
}

// ---- EXTRACT, every form ----------------------------------------------------------------------------------------------------

template <class R>
support::Answer<R> no_such_part() {
    return support::Answer<R>::error(EC_INVALID_ARGUMENT, {"self"});
}

template <class R, class T>
Differential<R, int32_t, T> extraction() {
    Differential<R, int32_t, T> function;
    function.rules.valid = Rules::Valid::kept;
    function.rules.constants = Rules::Constants::ignored;
    function.rules.flag_reads_constants = false;
    function.template draw<0>([](support::Random& random) { return static_cast<int32_t>(random.below(17)) - 1; });
    return function;
}

// Of a date-time: by what the parts that a kind serves are.
std::string extract_differs(const std::string& name, bop_fn_va* function, const std::set<int32_t>& kind) {
    auto extract = extraction<int32_t, qztime>();
    extract.add("va", name, function);
    return extract.run([&](int32_t part, const qztime& v) -> support::Answer<int32_t> {
        if (!kind.contains(part)) return no_such_part<int32_t>();
        const int32_t fields[] = {0, v.year, v.month, v.day, v.hour, v.minute};
        const auto zone = minutes{+v.tz};
        if (part == 12) return static_cast<int32_t>(duration_cast<hours>(zone).count());
        if (part == 13) return static_cast<int32_t>((zone - duration_cast<hours>(zone)).count());
        return fields[part];
    });
}

TEST(ExtractDifferential, OfDatetimes) {
    EXPECT_EQ(extract_differs("bextract_date_va_date", bextract_date_va_date, {1, 2, 3}), "");
    EXPECT_EQ(extract_differs("bextract_time_va_date", bextract_time_va_date, {4, 5}), "");
    EXPECT_EQ(extract_differs("bextract_time_tz_va_date", bextract_time_tz_va_date, {4, 5, 12, 13}), "");
    EXPECT_EQ(extract_differs("bextract_datetime_va_date", bextract_datetime_va_date, {1, 2, 3, 4, 5}), "");
    EXPECT_EQ(extract_differs("bextract_datetime_tz_va_date", bextract_datetime_tz_va_date, {1, 2, 3, 4, 5, 12, 13}), "");
    auto seconds = extraction<double, qztime>();
    seconds.add("va", "bextract_time_ex_va_date", bextract_time_ex_va_date);
    EXPECT_EQ(seconds.run([](int32_t part, const qztime& v) -> support::Answer<double> {
        if (part != 6) return no_such_part<double>();
        return v.second + v.fraction / 1e9;
    }),
              "");
}

TEST(ExtractDifferential, OfIntervals) {
    auto of_months = extraction<int32_t, qz_interval_ym>();
    of_months.add("va", "bextract_iv_ym_va_date", bextract_iv_ym_va_date);
    EXPECT_EQ(of_months.run([](int32_t part, const qz_interval_ym& v) -> support::Answer<int32_t> {
        if (part != 1 && part != 2) return no_such_part<int32_t>();
        return part == 1 ? v.iv_year : v.iv_month;
    }),
              "");
    auto of_days = extraction<int32_t, qz_interval_dt>();
    of_days.add("va", "bextract_iv_dt_va_date", bextract_iv_dt_va_date);
    EXPECT_EQ(of_days.run([](int32_t part, const qz_interval_dt& v) -> support::Answer<int32_t> {
        if (part < 3 || part > 7) return no_such_part<int32_t>();
        const int32_t fields[] = {v.iv_day, v.iv_hour, v.iv_minute, v.iv_second, v.iv_fraction};
        return fields[part - 3];
    }),
              "");
    auto seconds = extraction<double, qz_interval_dt>();
    seconds.add("va", "bextract_iv_dt_ex_va_date", bextract_iv_dt_ex_va_date);
    EXPECT_EQ(seconds.run([](int32_t part, const qz_interval_dt& v) -> support::Answer<double> {
        if (part != 6) return no_such_part<double>();
        return v.iv_second + v.iv_fraction / 1e6;
    }),
              "");
}

// Texts of dates and times, some of them blank or none at all; the text is looked at before the part.
TEST(ExtractDifferential, OfTexts) {
    const auto draw = [](support::Random& random) -> support::Text {
        if (random.chance(10)) return {std::string(random.below(3), ' '), random.below(3)};
        if (random.chance(5)) return {"2024-02-30"};
        char text[64];
        std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u.%03u", 1 + random.below(9999), 1 + random.below(12),
                      1 + random.below(28), random.below(24), random.below(60), random.below(60), random.below(1000));
        return {text, random.below(3)};
    };
    struct Read {
        bool blank, read;
        int32_t fields[6];
        double seconds;
    };
    const auto read = [](const std::string& text) {
        Read r{text.find_first_not_of(' ') == std::string::npos, text.size() > 20, {}, 0};
        if (!r.read) return r;
        const auto field = [&](size_t at, size_t digits) { return std::stoi(text.substr(at, digits)); };
        const int32_t year = field(0, 4), month = field(5, 2), day = field(8, 2);
        const bool in_gap = year == 1582 && month == 10 && day > 4 && day < 15;
        r = {false, true, {0, year, month, in_gap ? 15 : day, field(11, 2), field(14, 2)}, std::stod(text.substr(17))};
        return r;
    };
    auto parts = extraction<int32_t, support::Text>();
    parts.rules.flag_lowered = true;
    parts.draw<1>(draw);
    parts.add("va", "bextract_str_va_date", bextract_str_va_date);
    EXPECT_EQ(parts.run([&](int32_t part, const support::Text& text) -> support::Answer<int32_t> {
        const Read r = read(text.bytes);
        if (r.blank) return support::Answer<int32_t>::null();
        if (!r.read) return support::Answer<int32_t>::error(EC_DATE_TEXT_INVALID, {"self"});
        if (part < 1 || part > 5) return no_such_part<int32_t>();
        return r.fields[part];
    }),
              "");
    auto seconds = extraction<double, support::Text>();
    seconds.rules.flag_lowered = true;
    seconds.draw<1>(draw);
    seconds.tolerance = {support::Tolerance::Kind::relative, 1e-15};
    seconds.add("va", "bextract_str_ex_va_date", bextract_str_ex_va_date);
    EXPECT_EQ(seconds.run([&](int32_t part, const support::Text& text) -> support::Answer<double> {
        const Read r = read(text.bytes);
        if (r.blank) return support::Answer<double>::null();
        if (!r.read) return support::Answer<double>::error(EC_DATE_TEXT_INVALID, {"self"});
        if (part != 6) return no_such_part<double>();
        return r.seconds;
    }),
              "");
}

}  // namespace
