// Dates moved by days, weeks, months and intervals, to the next weekday and to the month's end.
//
// Each function hands one amount to one service of the calendar, which holds the rules of month ends and the range. What a
// constant's has_value says plays no part, and a result is built in its row, whose valid byte stays as combined from the
// arguments.
//
// The weeks of add_weeks are multiplied in 32 bits and wrap around unnoticed.
#include "qzbifun/date_arithmetic.h"

#include <cmath>
#include <cstring>

#include "bop/bifun_date/weekday.h"
#include "bop/frame/blocks.h"
#include "bop/frame/export.h"
#include "bop/switches.h"
#include "qzhost/date_text.h"
#include "qzhost/interval.h"

namespace bifun {
namespace {

constexpr Rules kRules{.constants = ConstantNull::kIgnored, .store = Store::kKeep};
constexpr Rules kFlagFirst{
    .constants = ConstantNull::kIgnored,
    .flag = FlagStore::kBeforeRows,
    .store = Store::kKeep,
};

// ---- By an amount -----------------------------------------------------------------------------------------------------------

double days_of_days(double days) { return days; }
double days_of_weeks(int32_t weeks) { return static_cast<int32_t>(static_cast<uint32_t>(weeks) * 7); }

// From the first day of the calendar to the last, and one more.
constexpr double kMostDays = HOST_DAY_MAX - HOST_DAY_MIN + 1;

BIFUN_ALWAYS_INLINE bool are_within_calendar(double days) { return (days > -kMostDays) & (days < kMostDays); }  // NaN is not
BIFUN_ALWAYS_INLINE bool is_in_calendar(int32_t number) { return (number >= HOST_DAY_MIN) & (number <= HOST_DAY_MAX); }

uint32_t load_time(const qztime& date) { return date.hour | uint32_t{date.minute} << 8 | uint32_t{date.second} << 16; }

void store_time(qztime& date, uint32_t time) {
    date.hour = static_cast<uint8_t>(time);
    date.minute = static_cast<uint8_t>(time >> 8);
    date.second = static_cast<uint8_t>(time >> 16);
}

// Adds whole days to day numbers. False: days are not whole, or lead out of the calendar.
BIFUN_ALWAYS_INLINE bool add_whole_days(int32_t* sums, uint32_t n, const int32_t* numbers, const double* days) {
    uint32_t others = 0;
    for (uint32_t i = 0; i < n; ++i) {
        const auto whole = static_cast<int32_t>(are_within_calendar(days[i]) ? days[i] : 0.0);
        sums[i] = numbers[i] + whole;
        const bool plain = (days[i] == whole) & is_in_calendar(sums[i]);
        others |= plain ? 0 : ~0U;
    }
    return others == 0;
}

// Adds days with a fraction, as qztime_date_add_number does: a fraction counts to the nearest second, half a second away from
// zero. times are those of the dates, and then of the sums. False: days lead out of the calendar, or a time is none.
BIFUN_ALWAYS_INLINE bool add_days_and_seconds(int32_t* sums, uint32_t* times, uint32_t n, const int32_t* numbers,
                                              const double* days) {
    constexpr double kSecondsOfDay = 86400;
    uint32_t others = 0;
    for (uint32_t i = 0; i < n; ++i) {
        const uint32_t hour = times[i] & 0xFF, minute = times[i] >> 8 & 0xFF, second = times[i] >> 16;
        const bool fits = are_within_calendar(days[i]);
        const double seconds = (fits ? days[i] : 0.0) * kSecondsOfDay;  // within 2^39
        const double rounded = std::trunc(seconds + (seconds < 0 ? -0.5 : 0.5));
        const double total = rounded + static_cast<int32_t>(hour * 3600 + minute * 60 + second);  // exact
        const auto whole = static_cast<int32_t>(std::floor(total / kSecondsOfDay));  // a second is more than the error
        const auto rest = static_cast<uint32_t>(static_cast<int32_t>(total - whole * kSecondsOfDay));
        sums[i] = numbers[i] + whole;
        times[i] = rest / 3600 | rest % 3600 / 60 << 8 | rest % 60 << 16;
        const bool plain = fits & is_in_calendar(sums[i]) & (hour < 24) & (minute < 60) & (second < 60);
        others |= plain ? 0 : ~0U;
    }
    return others == 0;
}

// Moves a block of dates. False: a row is to be done by itself.
BIFUN_ALWAYS_INLINE bool add_days_in_block(qztime* out, uint32_t n, const qztime* dates, const double* days) {
    int32_t numbers[frame::kBlockRows], sums[frame::kBlockRows];
    host_day_numbers(numbers, n, dates);
    if (add_whole_days(sums, n, numbers, days)) {
        host_set_day_numbers(out, n, dates, sums);
        return true;
    }
    uint32_t times[frame::kBlockRows];
    for (uint32_t i = 0; i < n; ++i) times[i] = load_time(dates[i]);
    if (!add_days_and_seconds(sums, times, n, numbers, days)) return false;
    host_set_day_numbers(out, n, dates, sums);
    for (uint32_t i = 0; i < n; ++i) store_time(out[i], times[i]);
    return true;
}

#if BIFUN_HAS_WIDE_LOOPS
BIFUN_WIDE bool add_days_wide(qztime* out, uint32_t n, const qztime* dates, const double* days) {
    return add_days_in_block(out, n, dates, days);
}
#endif

bool add_days(qztime* out, uint32_t n, const qztime* dates, const double* days) {
#if BIFUN_HAS_WIDE_LOOPS
    if (frame::has_wide_loops()) return add_days_wide(out, n, dates, days);
#endif
    return add_days_in_block(out, n, dates, days);
}

// A block of days that all stay in the calendar moves its day numbers, and the times where days have fractions; the service
// adds any other, row by row.
template <class Amount, double (*kDays)(Amount)>
struct AddDays {
    static constexpr Rules rules = kRules;

    static void block(qztime* out, uint32_t n, const qztime* dates, const Amount* amounts) {
        double days[frame::kBlockRows];
        for (uint32_t i = 0; i < n; ++i) days[i] = kDays(amounts[i]);
        if (add_days(out, n, dates, days)) [[likely]]
            return;
        for (uint32_t i = 0; i < n; ++i) {
            if (qztime_date_add_number(dates + i, days[i], out + i) < 0) out[i].month = kNoMonth;
        }
    }

    static bool refuses(const qztime& computed, const qztime&, Amount) { return computed.month == kNoMonth; }

    static Code refuse(Row, const qztime& date, Amount amount) {
        qztime unused;
        return Code{qztime_date_add_number(&date, kDays(amount), &unused)};
    }

  private:
    static constexpr uint8_t kNoMonth = 0;
};

using AddSomeDays = AddDays<double, days_of_days>;
using AddSomeWeeks = AddDays<int32_t, days_of_weeks>;

struct AddMonths {
    static constexpr Rules rules = kRules;
    static Code row(Row out, const qztime& date, int32_t months) {
        constexpr int32_t kQualifierMonth = 656;  // MONTH(9)
        const qz_interval_ym interval{0, months, kQualifierMonth};
        return Code{qztime_date_add_iv_ym(&date, &interval, &out.slot<qztime>())};
    }
};

template <class Interval, int32_t (*kService)(const qztime*, const Interval*, qztime*)>
struct Move {
    static constexpr Rules rules = kRules;
    static Code row(Row out, const qztime& date, const Interval& interval) {
        return Code{kService(&date, &interval, &out.slot<qztime>())};
    }
};

using AddIntervalYm = Move<qz_interval_ym, datetime_add_interval_ym>;
using SubIntervalYm = Move<qz_interval_ym, datetime_sub_interval_ym>;
using AddIntervalDt = Move<qz_interval_dt, datetime_add_interval_dt>;

struct DateAdd {
    static constexpr Rules rules = kRules;
    static Code row(Row out, int32_t part, int64_t count, const qztime& date) {
        return Code{qztime_add_by_fmt(&date, part, count, &out.slot<qztime>())};
    }
};

// ---- To a day ---------------------------------------------------------------------------------------------------------------

struct NextDay {
    static constexpr Rules rules = kFlagFirst;
    static constexpr uint32_t kNameBytes = 20;  // with the NUL behind it
    static constexpr int32_t kUnknownWeekday = 8;

    int32_t target = 0;

    Start prepare(const Call& call, bdta3_col*, bdta3_scalar* weekday) {
        const nstr& name = reinterpret_cast<nstr&>(*weekday);
        if (name.len >= kNameBytes) return refuse(call, EC_WEEKDAY_NAME_TOO_LONG);
        char text[kNameBytes] = {};
        if (name.len != 0) std::memcpy(text, name.nstr_ext, name.len);  // where short text stands too
        target = qztime_convert_weekday(switches.charset_code, text);
        return target == kUnknownWeekday ? refuse(call, EC_WEEKDAY_NAME_INVALID) : Start::rows();
    }

    static Start refuse(const Call& call, int32_t code) {
        qzerr_stk_push(call.env, code, call.name);
        return Start::stop(Code{code});
    }

    // 1 to 7 days: a date on the weekday itself moves on by a week.
    Code row(Row out, const qztime& date, const Text&) const {
        const int32_t weekday = weekday_of(adjusted_in_place(date));
        const int32_t days = target - weekday + (weekday >= target ? 7 : 0);
        return Code{qztime_add_by_fmt(&date, HOST_PART_DAY, days, &out.slot<qztime>())};
    }
};

// The day is found before anything is stored: out may be the value itself.
void set_last_day(qztime& out, const qztime& value) {
    const int32_t end = qztime_month_end_day(value.year, value.month);
    qztime_assign(&out, &value);
    qztime_set_day(&out, end);
}

struct LastDay {
    static constexpr Rules rules = kRules;
    static constexpr bool total = true;
    static void row(qztime& out, const qztime& date) { set_last_day(out, date); }
};

struct LastDayOfText {
    static constexpr Rules rules = kFlagFirst;
    static Code row(Row out, const Text& text) {
        qztime date;
        const Code code{qztime_from_char_ex(text.bytes, text.len, &date)};
        if (code.failed()) return code;
        if (code.value == RC_VALUE_IS_NULL) return out.set_null();
        set_last_day(out.slot<qztime>(), date);
        return kOk;
    }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_2(badd_days_aa_date, AddSomeDays, a, a)
BIFUN_EXPORT_2(badd_days_av_date, AddSomeDays, a, v)
BIFUN_EXPORT_2(badd_days_va_date, AddSomeDays, v, a)

BIFUN_EXPORT_2(badd_weeks_aa_date, AddSomeWeeks, a, a)
BIFUN_EXPORT_2(badd_weeks_av_date, AddSomeWeeks, a, v)
BIFUN_EXPORT_2(badd_weeks_va_date, AddSomeWeeks, v, a)

BIFUN_EXPORT_2(badd_months_aa_date, AddMonths, a, a)
BIFUN_EXPORT_2(badd_months_av_date, AddMonths, a, v)
BIFUN_EXPORT_2(badd_months_va_date, AddMonths, v, a)

BIFUN_EXPORT_2(bdate_add_ym_aa, AddIntervalYm, a, a)
BIFUN_EXPORT_2(bdate_add_ym_av, AddIntervalYm, a, v)
BIFUN_EXPORT_2(bdate_sub_ym_aa, SubIntervalYm, a, a)
BIFUN_EXPORT_2(bdate_sub_ym_av, SubIntervalYm, a, v)
BIFUN_EXPORT_2(bdate_add_dt_aa, AddIntervalDt, a, a)
BIFUN_EXPORT_2(bdate_add_dt_av, AddIntervalDt, a, v)

BIFUN_EXPORT_3(bdateadd_vaa_date, DateAdd, v, a, a)
BIFUN_EXPORT_3(bdateadd_vav_date, DateAdd, v, a, v)
BIFUN_EXPORT_3(bdateadd_vva_date, DateAdd, v, v, a)

BIFUN_EXPORT_2(bnext_day_av_date, NextDay, a, v)

BIFUN_EXPORT_1(blast_day_a_date, LastDay, a)
BIFUN_EXPORT_1(blast_day_str_a_date, LastDayOfText, a)

BIFUN_EXPORT int32_t ifun_parse_last_day(const qztime* value, qztime* out) {
    set_last_day(*out, *value);
    return 0;
}
