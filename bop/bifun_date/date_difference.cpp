// Distances between two dates: days, weeks, months, years, and completed units of any part.
//
// The functions count in different ways on purpose. days_between, weeks_between, months_between and years_between are first
// minus second; datediff and bigdatediff count from first to second, so that their signs are the other way round. weeks_between
// and the week of bigdatediff count Sundays; a month of months_between has 31 days whatever the month; years_between looks at
// nothing but the year.
#include "qzbifun/date_difference.h"

#include <algorithm>
#include <type_traits>

#include "bop/bifun_date/months_and_days.h"
#include "bop/bifun_date/weekday.h"
#include "bop/frame/export.h"
#include "qzhost/decimal.h"

namespace bifun {
namespace {

constexpr Rules kRules{.constants = ConstantNull::kIgnored, .store = Store::kKeep};

// ---- Days, weeks, months, years ---------------------------------------------------------------------------------------------

// Sundays between two dates: Saturday and the next Sunday are a week apart, Sunday and the next Saturday are not. The days are
// counted before a date in the gap is adjusted, the weekdays afterwards.
int32_t weeks_between(const qztime& first, const qztime& second) {
    const int32_t days = qztime_diff_day_without_glgl_adjust(&first, &second);  // within 24 million
    if (days == 0) return 0;
    const int32_t second_weekday = weekday_of(adjusted_in_place(second));
    const int32_t first_weekday = weekday_of(adjusted_in_place(first));
    return (second_weekday - first_weekday + days) / 7;
}

bool are_month_ends(const qztime& first, const qztime& second) {
    constexpr uint8_t kShortestMonth = 28;
    if (std::min(first.day, second.day) < kShortestMonth) [[likely]] {
        return false;
    }
    return first.day == qztime_month_end_day(first.year, first.month) &&
           second.day == qztime_month_end_day(second.year, second.month);
}

struct Apart {
    int32_t months;  // within 790 thousand
    int32_t days;
};

Apart apart(const qztime& first, const qztime& second) {
    const int32_t months = (first.year - second.year) * 12 - second.month + first.month;
    return {months, are_month_ends(first, second) ? 0 : first.day - second.day};
}

int32_t store_by_double(xdec* out, const Apart& between) { return xdec_from_double(between.months + between.days / 31.0, out); }

// In passes: each step would wait for the one before.
void months_between(xdec* out, uint32_t n, const qztime* first, const qztime* second) {
    Apart between[frame::kBlockRows];
    int64_t unscaled[frame::kBlockRows] = {};
    uint32_t scales[frame::kBlockRows] = {};
    for (uint32_t i = 0; i < n; ++i) between[i] = apart(first[i], second[i]);
    uint32_t others = 0;
    for (uint32_t i = 0; i < n; ++i) {
        const MonthsAndDays number = months_and_days_of(between[i].months, between[i].days);
        unscaled[i] = number.unscaled;
        scales[i] = number.scale;
        others |= number.scale;
    }
    host_decimals_of_unscaled(out, n, unscaled, scales);
    if (others != kOutsideTheTable) [[likely]]
        return;
    for (uint32_t i = 0; i < n; ++i) {
        if (scales[i] == kOutsideTheTable) (void)store_by_double(&out[i], between[i]);
    }
}

// first minus second, of a block of rows.
void days_between(int32_t* out, uint32_t n, const qztime* first, const qztime* second) {
    int32_t numbers[frame::kBlockRows];
    host_day_numbers(numbers, n, first);
    host_day_numbers(out, n, second);
    for (uint32_t i = 0; i < n; ++i) out[i] = numbers[i] - out[i];
}

struct DaysBetween {
    static constexpr Rules rules = kRules;
    static void block(int32_t* out, uint32_t n, const qztime* first, const qztime* second) {
        days_between(out, n, first, second);
    }
};

struct WeeksBetween {
    static constexpr Rules rules = kRules;
    static int32_t row(const qztime& first, const qztime& second) { return weeks_between(first, second); }
};

struct MonthsBetween {
    static constexpr Rules rules = kRules;
    static void block(xdec* out, uint32_t n, const qztime* first, const qztime* second) {
        months_between(out, n, first, second);
    }
};

struct YearsBetween {
    static constexpr Rules rules = kRules;
    static constexpr bool total = true;
    static int32_t row(const qztime& first, const qztime& second) { return qztime_get_year(&first) - qztime_get_year(&second); }
};

// ---- Completed units --------------------------------------------------------------------------------------------------------

// Of so many days from first to second, within 24 million.
int64_t hours(int64_t days, const qztime& first, const qztime& second) { return days * 24 - first.hour + second.hour; }

int64_t minutes(int64_t days, const qztime& first, const qztime& second) {
    return hours(days, first, second) * 60 - first.minute + second.minute;
}

int64_t seconds(int64_t days, const qztime& first, const qztime& second) {
    return minutes(days, first, second) * 60 - first.second + second.second;  // within 2^42
}

// The fractions differ by units of so many nanoseconds, cut toward zero whatever the sign of the seconds.
int64_t fractions(int64_t days, const qztime& first, const qztime& second, int64_t nanoseconds) {
    const int64_t apart = int64_t{second.fraction} - int64_t{first.fraction};
    return seconds(days, first, second) * (1'000'000'000 / nanoseconds) + apart / nanoseconds;  // within 2^62
}

int64_t years(const qztime& first, const qztime& second) { return second.year - first.year; }

int64_t months(const qztime& first, const qztime& second) { return years(first, second) * 12 - first.month + second.month; }

int64_t quarters(const qztime& first, const qztime& second) {
    const bool borrows = second.month < first.month;
    const int64_t year = second.year - borrows;
    const int32_t month = second.month + (borrows ? 12 : 0);
    return (year - first.year) * 4 - (first.month - 1) / 3 + (month - 1) / 3;
}

int64_t sundays(const qztime& first, const qztime& second) {
    return (qztime_day_of_week(&first) - qztime_day_of_week(&second) - qztime_diff_day(&first, &second)) / 7;
}

// A raw count that the fields from field down show to be one too many, or one too few, becomes that of completed units.
int64_t completed(int64_t count, const qztime& first, const qztime& second, int32_t field) {
    const int32_t left = qztime_compare(&first, &second, field);
    return count - ((count > 0) & (left < 0)) + ((count < 0) & (left > 0));
}

int64_t weeks(const qztime& first, const qztime& second) {
    const int64_t count = sundays(first, second);
    const bool same_day = qztime_diff_day(&first, &second) == 0;
    return same_day ? 0 : completed(count, first, second, HOST_PART_HOUR);
}

// Parts whose units are counted from the days between the dates.
template <int32_t kPart>
inline constexpr bool kCountsFromDays =
    kPart == HOST_PART_DAY || kPart == HOST_PART_HOUR || kPart == HOST_PART_MINUTE || kPart == HOST_PART_SECOND ||
    kPart == HOST_PART_MILLISECOND || kPart == HOST_PART_MICROSECOND;

// The units of such a part from first to second.
template <int32_t kPart>
int64_t units_of_days(int64_t days, const qztime& first, const qztime& second) {
    switch (kPart) {
        case HOST_PART_DAY:
            return completed(days, first, second, HOST_PART_HOUR);
        case HOST_PART_HOUR:
            return completed(hours(days, first, second), first, second, HOST_PART_MINUTE);
        case HOST_PART_MINUTE:
            return completed(minutes(days, first, second), first, second, HOST_PART_SECOND);
        case HOST_PART_SECOND:
            return completed(seconds(days, first, second), first, second, HOST_PART_MILLISECOND);
        case HOST_PART_MILLISECOND:
            return fractions(days, first, second, 1'000'000);
        default:
            static_assert(kCountsFromDays<kPart>);
            return fractions(days, first, second, 1000);
    }
}

// Those of any part.
template <int32_t kPart>
int64_t units(const qztime& first, const qztime& second) {
    if constexpr (kCountsFromDays<kPart>) return units_of_days<kPart>(qztime_diff_day(&second, &first), first, second);
    switch (kPart) {
        case HOST_PART_YEAR:
            return completed(years(first, second), first, second, HOST_PART_MONTH);
        case HOST_PART_QUARTER:
            return completed(quarters(first, second), first, second, HOST_PART_DAY);
        case HOST_PART_MONTH:
            return completed(months(first, second), first, second, HOST_PART_DAY);
        default:
            return weeks(first, second);
    }
}

template <int32_t kPart>
using PartNumber = std::integral_constant<int32_t, kPart>;

// Calls f with the number of a part, days being one unit, or none().
template <class F, class None>
auto with_part(int32_t part, const F& f, const None& none) {
    switch (part) {
        case HOST_PART_YEAR:
            return f(PartNumber<HOST_PART_YEAR>());
        case HOST_PART_QUARTER:
            return f(PartNumber<HOST_PART_QUARTER>());
        case HOST_PART_MONTH:
            return f(PartNumber<HOST_PART_MONTH>());
        case HOST_PART_WEEK:
            return f(PartNumber<HOST_PART_WEEK>());
        case HOST_PART_DAY:
        case HOST_PART_DAY_OF_YEAR:
        case HOST_PART_WEEKDAY:
            return f(PartNumber<HOST_PART_DAY>());
        case HOST_PART_HOUR:
            return f(PartNumber<HOST_PART_HOUR>());
        case HOST_PART_MINUTE:
            return f(PartNumber<HOST_PART_MINUTE>());
        case HOST_PART_SECOND:
            return f(PartNumber<HOST_PART_SECOND>());
        case HOST_PART_MILLISECOND:
            return f(PartNumber<HOST_PART_MILLISECOND>());
        case HOST_PART_MICROSECOND:
            return f(PartNumber<HOST_PART_MICROSECOND>());
        default:
            return none();
    }
}

struct DateDiff {
    static constexpr Rules rules = kRules;
    static Code row(Row out, int32_t part, const qztime& first, const qztime& second) {
        return Code{qztime_parse_datediff(part, &first, &second, &out.slot<int32_t>())};
    }
};

template <int32_t kPart>
struct CountUnits {
    static constexpr Rules rules = kRules;
    static int64_t row(int32_t, const qztime& first, const qztime& second) { return units<kPart>(first, second); }
};

template <int32_t kPart>
requires kCountsFromDays<kPart>
struct CountUnits<kPart> {
    static constexpr Rules rules = kRules;
    static void block(int64_t* out, uint32_t n, const int32_t*, const qztime* first, const qztime* second) {
        int32_t days[frame::kBlockRows];
        days_between(days, n, second, first);
        for (uint32_t i = 0; i < n; ++i) out[i] = units_of_days<kPart>(days[i], first[i], second[i]);
    }
};

struct NoSuchPart {
    static constexpr Rules rules = kRules;
    static Code row(Row, int32_t, const qztime&, const qztime&) { return Code{EC_INVALID_ARGUMENT}; }
};

// The part is looked at once, and the loop is that of its unit.
struct BigDateDiff {
    template <class First, class Second>
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_scalar* part, First* first,
                         Second* second) {
        const auto count = [&]<int32_t kPart>(PartNumber<kPart>) {
            return run<CountUnits<kPart>>(call, result, nrows, part, first, second);
        };
        const auto none = [&] { return run<NoSuchPart>(call, result, nrows, part, first, second); };
        return with_part(ValueType<int32_t>::load_constant(reinterpret_cast<bdta3_int&>(*part)), count, none);
    }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_2(bdays_between_aa_date, DaysBetween, a, a)
BIFUN_EXPORT_2(bdays_between_av_date, DaysBetween, a, v)
BIFUN_EXPORT_2(bdays_between_va_date, DaysBetween, v, a)

BIFUN_EXPORT_2(bweeks_between_aa_date, WeeksBetween, a, a)
BIFUN_EXPORT_2(bweeks_between_av_date, WeeksBetween, a, v)
BIFUN_EXPORT_2(bweeks_between_va_date, WeeksBetween, v, a)

BIFUN_EXPORT_2(bmonths_between_aa_date, MonthsBetween, a, a)
BIFUN_EXPORT_2(bmonths_between_av_date, MonthsBetween, a, v)
BIFUN_EXPORT_2(bmonths_between_va_date, MonthsBetween, v, a)

BIFUN_EXPORT_2(byears_between_aa_date, YearsBetween, a, a)
BIFUN_EXPORT_2(byears_between_av_date, YearsBetween, a, v)
BIFUN_EXPORT_2(byears_between_va_date, YearsBetween, v, a)

BIFUN_EXPORT_3(bdatediff_vaa_date, DateDiff, v, a, a)
BIFUN_EXPORT_3(bdatediff_vav_date, DateDiff, v, a, v)
BIFUN_EXPORT_3(bdatediff_vva_date, DateDiff, v, v, a)

BIFUN_EXPORT_3(bbigdatediff_vaa_date, BigDateDiff, v, a, a)
BIFUN_EXPORT_3(bbigdatediff_vav_date, BigDateDiff, v, a, v)
BIFUN_EXPORT_3(bbigdatediff_vva_date, BigDateDiff, v, v, a)

BIFUN_EXPORT int32_t ifun_parse_weeks_between(qztime* first, qztime* second, int32_t* result) {
    *result = weeks_between(*first, *second);
    return 0;
}

BIFUN_EXPORT int32_t ifun_parse_months_between(const qztime* first, const qztime* second, xdec* result) {
    const Apart between = apart(*first, *second);
    const MonthsAndDays number = months_and_days_of(between.months, between.days);
    if (number.scale == kOutsideTheTable) return store_by_double(result, between);
    return xdec_from_unscaled(result, number.unscaled, number.scale);
}

BIFUN_EXPORT int32_t ifun_parse_bigdatediff(int32_t part, const qztime* first, const qztime* second, int64_t* result) {
    const auto count = [&]<int32_t kPart>(PartNumber<kPart>) {
        *result = units<kPart>(*first, *second);
        return 0;
    };
    return with_part(part, count, [] { return +EC_INVALID_ARGUMENT; });
}
