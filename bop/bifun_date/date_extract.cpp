// Parts of date-time values, intervals and texts.
//
// EXTRACT looks at its part code in the rows alone: a code that the value does not have fails at the first row that is not
// NULL, and never when there is none. The seconds are a part of their own family, a double with the fraction. Names are English
// whatever the session's language.
#include "qzbifun/date_extract.h"

#include <cstring>
#include <string_view>

#include "bop/bifun_date/weekday.h"
#include "bop/frame/export.h"
#include "bop/switches.h"
#include "qzhost/date_text.h"

namespace bifun {
namespace {

constexpr Rules kRules{.constants = ConstantNull::kIgnored, .store = Store::kKeep};
constexpr Rules kFlagFirst{
    .constants = ConstantNull::kIgnored,
    .flag = FlagStore::kBeforeRows,
    .store = Store::kKeep,
};

// ---- One part ---------------------------------------------------------------------------------------------------------------

int32_t quarter(const qztime* value) {
    const int32_t month = qztime_get_month(value);
    return month / 3 + (month % 3 != 0);
}

template <auto kPart>
struct Part {
    static constexpr Rules rules = kRules;
    static constexpr bool total = true;
    static int32_t row(const qztime& value) { return kPart(&value); }
};

struct WeekdayNumbers {
    static constexpr Rules rules = kRules;
    static void block(int32_t* out, uint32_t n, const qztime* dates) {
        host_day_numbers(out, n, dates);
        for (uint32_t i = 0; i < n; ++i) out[i] = weekday_of_number(out[i]) + 1;
    }
};

struct DayOfWeek {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* date) {
        const int32_t code = run<WeekdayNumbers>(call, result, nrows, date);
        // Rows in the gap are found adjusted afterwards.
        auto* const values = static_cast<qztime*>(date->data->values);
        for (uint32_t i = 0; i < nrows; ++i) {
            const uint32_t row = date->sel != nullptr ? date->sel[i] : i;
            if (qztime_cmp_with_glgl(values[row].year, values[row].month, values[row].day) == 0 &&
                date->data->valid[row] != 0) {
                qztime_glgl_adjust(values + row);
            }
        }
        return code;
    }
};

struct WeekdayOfText {
    static constexpr Rules rules = kFlagFirst;
    FirstDay first = FirstDay::kSunday;

    Start prepare(const Call&, bdta3_col*) {
        constexpr uint32_t kModeOfMondays = 4;
        if (switches.compat_mode == kModeOfMondays) first = FirstDay::kMonday;
        return Start::rows();
    }

    Code row(Row out, const Text& text) const {
        qztime value;
        const Code code{qztime_from_char_ex(text.bytes, text.len, &value)};
        if (code.failed()) return code;
        if (code.value == RC_VALUE_IS_NULL) return out.set_null();
        out.slot<int32_t>() = weekday_of(value, first);
        return kOk;
    }
};

// ---- Names ------------------------------------------------------------------------------------------------------------------

constexpr std::string_view kDays[7] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
constexpr std::string_view kMonths[12] = {"January", "February", "March",     "April",   "May",      "June",
                                          "July",    "August",   "September", "October", "November", "December"};

std::string_view day_name(const qztime& value) { return kDays[qztime_day_of_week(&value)]; }

// Empty for a month outside 1 to 12.
std::string_view month_name(const qztime& value) {
    return value.month >= 1 && value.month <= 12 ? kMonths[value.month - 1] : std::string_view{};
}

template <std::string_view (*kName)(const qztime&)>
struct Name {
    static constexpr Rules rules{.constants = ConstantNull::kIgnored, .flag = FlagStore::kBeforeRows};
    static Code row(Row out, const qztime& value) {
        const std::string_view name = kName(value);
        return out.put_text(name.data(), static_cast<uint32_t>(name.size()));
    }
};

int32_t write_name(std::string_view name, char* buffer, uint32_t* length) {
    if (name.empty()) return 0;
    std::memcpy(buffer, name.data(), name.size());
    buffer[name.size()] = '\0';
    *length = static_cast<uint32_t>(name.size());
    return 0;
}

// ---- EXTRACT ----------------------------------------------------------------------------------------------------------------

int32_t iv_year(const qz_interval_ym* value) { return value->iv_year; }
int32_t iv_month(const qz_interval_ym* value) { return value->iv_month; }
int32_t iv_day(const qz_interval_dt* value) { return value->iv_day; }
int32_t iv_hour(const qz_interval_dt* value) { return value->iv_hour; }
int32_t iv_minute(const qz_interval_dt* value) { return value->iv_minute; }
int32_t iv_second(const qz_interval_dt* value) { return value->iv_second; }
int32_t iv_fraction(const qz_interval_dt* value) { return value->iv_fraction; }

double seconds(const qztime* value) { return qztime_get_sec(value) + qztime_get_msec(value) / 1e9; }
double iv_seconds(const qz_interval_dt* value) { return value->iv_second + value->iv_fraction / 1e6; }

// A part code with the function that takes it from a value.
template <int32_t kPart, auto kTake>
struct Field {
    static constexpr int32_t kCode = kPart;
    static constexpr auto take = kTake;
};

// The parts that one kind of value has.
template <class T, class R, class... Fields>
struct Parts {
    using Value = T;
    using Result = R;

    // Calls act(field) with the field of the code. False: there is none.
    template <class Act>
    static bool with_field(int32_t part, const Act& act) {
        return ((part == Fields::kCode && (act(Fields{}), true)) || ...);
    }

    static Code of(int32_t part, const T& value, R* result) {
        const bool found = with_field(part, [&](auto field) { *result = field.take(&value); });
        return found ? kOk : Code{EC_INVALID_ARGUMENT};
    }
};

using Year = Field<HOST_PART_YEAR, qztime_get_year>;
using Month = Field<HOST_PART_MONTH, qztime_get_month>;
using Day = Field<HOST_PART_DAY, qztime_get_day>;
using Hour = Field<HOST_PART_HOUR, qztime_get_hour>;
using Minute = Field<HOST_PART_MINUTE, qztime_get_min>;
using ZoneHour = Field<HOST_PART_ZONE_HOUR, qztime_get_zone_hour>;
using ZoneMinute = Field<HOST_PART_ZONE_MINUTE, qztime_get_zone_min>;

using DateParts = Parts<qztime, int32_t, Year, Month, Day>;
using TimeParts = Parts<qztime, int32_t, Hour, Minute>;
using TimeTzParts = Parts<qztime, int32_t, Hour, Minute, ZoneHour, ZoneMinute>;
using DatetimeParts = Parts<qztime, int32_t, Year, Month, Day, Hour, Minute>;
using DatetimeTzParts = Parts<qztime, int32_t, Year, Month, Day, Hour, Minute, ZoneHour, ZoneMinute>;
using IntervalYmParts = Parts<qz_interval_ym, int32_t, Field<HOST_PART_YEAR, iv_year>, Field<HOST_PART_MONTH, iv_month>>;
using IntervalDtParts =
    Parts<qz_interval_dt, int32_t, Field<HOST_PART_DAY, iv_day>, Field<HOST_PART_HOUR, iv_hour>,
          Field<HOST_PART_MINUTE, iv_minute>, Field<HOST_PART_SECOND, iv_second>, Field<HOST_PART_MILLISECOND, iv_fraction>>;
using SecondParts = Parts<qztime, double, Field<HOST_PART_SECOND, seconds>>;
using IntervalSecondParts = Parts<qz_interval_dt, double, Field<HOST_PART_SECOND, iv_seconds>>;

// The loop of a part that the value has.
template <class K, class F>
struct ExtractField {
    static constexpr Rules rules = kRules;
    static constexpr bool total = true;
    static typename K::Result row(int32_t, const typename K::Value& value) { return F::take(&value); }
};

// Of one that it has not: the first row that is not NULL fails.
template <class K>
struct ExtractNothing {
    static constexpr Rules rules = kRules;
    static Code row(Row, int32_t, const typename K::Value&) { return Code{EC_INVALID_ARGUMENT}; }
};

template <class K>
struct Extract {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_scalar* part, bdta3_col* values) {
        int32_t code = 0;
        const auto extract = [&](auto field) {
            code = run<ExtractField<K, decltype(field)>>(call, result, nrows, part, values);
        };
        if (K::with_field(reinterpret_cast<bdta3_int*>(part)->value, extract)) return code;
        return run<ExtractNothing<K>>(call, result, nrows, part, values);
    }
};

template <class K>
Code extract_from_text(int32_t part, const Text& text, typename K::Result* result) {
    qztime value;
    const Code code{qztime_from_char_ex(text.bytes, text.len, &value)};
    if (code.value != 0) return code;
    return K::of(part, value, result);
}

template <class K>
struct ExtractFromText {
    static constexpr Rules rules = kFlagFirst;
    static Code row(Row out, int32_t part, const Text& text) {
        typename K::Result value{};
        const Code code = extract_from_text<K>(part, text, &value);
        if (code.failed()) return code;
        if (code.value == RC_VALUE_IS_NULL) return out.set_null();
        out.slot<typename K::Result>() = value;
        return kOk;
    }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_1(byear_a_date, Part<qztime_get_year>, a)
BIFUN_EXPORT_1(bmonth_a_date, Part<qztime_get_month>, a)
BIFUN_EXPORT_1(bday_a_date, Part<qztime_get_day>, a)
BIFUN_EXPORT_1(bdayofmonth_a_date, Part<qztime_get_day>, a)
BIFUN_EXPORT_1(bhour_a_date, Part<qztime_get_hour>, a)
BIFUN_EXPORT_1(bmin_a_date, Part<qztime_get_min>, a)
BIFUN_EXPORT_1(bsec_a_date, Part<qztime_get_sec>, a)
BIFUN_EXPORT_1(bdayofyear_a_date, Part<qztime_day_of_year>, a)
BIFUN_EXPORT_1(bquarter_qztime_a_date, Part<quarter>, a)
BIFUN_EXPORT_1(bdayofweek_a_date, DayOfWeek, a)
BIFUN_EXPORT_1(bweekday_str_a_date, WeekdayOfText, a)

BIFUN_EXPORT_1(bdayname_a_date, Name<day_name>, a)
BIFUN_EXPORT_1(bmonthname_a_date, Name<month_name>, a)

BIFUN_EXPORT_2(bextract_date_va_date, Extract<DateParts>, v, a)
BIFUN_EXPORT_2(bextract_time_va_date, Extract<TimeParts>, v, a)
BIFUN_EXPORT_2(bextract_time_tz_va_date, Extract<TimeTzParts>, v, a)
BIFUN_EXPORT_2(bextract_datetime_va_date, Extract<DatetimeParts>, v, a)
BIFUN_EXPORT_2(bextract_datetime_tz_va_date, Extract<DatetimeTzParts>, v, a)
BIFUN_EXPORT_2(bextract_str_va_date, ExtractFromText<DatetimeParts>, v, a)
BIFUN_EXPORT_2(bextract_iv_ym_va_date, Extract<IntervalYmParts>, v, a)
BIFUN_EXPORT_2(bextract_iv_dt_va_date, Extract<IntervalDtParts>, v, a)
BIFUN_EXPORT_2(bextract_time_ex_va_date, Extract<SecondParts>, v, a)
BIFUN_EXPORT_2(bextract_str_ex_va_date, ExtractFromText<SecondParts>, v, a)
BIFUN_EXPORT_2(bextract_iv_dt_ex_va_date, Extract<IntervalSecondParts>, v, a)

BIFUN_EXPORT int32_t ifun_parse_extract_date(int32_t part, const qztime* value, int32_t* result) {
    return DateParts::of(part, *value, result).value;
}

BIFUN_EXPORT int32_t ifun_parse_extract_time(int32_t part, const qztime* value, int32_t* result) {
    return TimeParts::of(part, *value, result).value;
}

BIFUN_EXPORT int32_t ifun_parse_extract_time_tz(int32_t part, const qztime* value, int32_t* result) {
    return TimeTzParts::of(part, *value, result).value;
}

BIFUN_EXPORT int32_t ifun_parse_extract_datetime(int32_t part, const qztime* value, int32_t* result) {
    return DatetimeParts::of(part, *value, result).value;
}

BIFUN_EXPORT int32_t ifun_parse_extract_datetime_tz(int32_t part, const qztime* value, int32_t* result) {
    return DatetimeTzParts::of(part, *value, result).value;
}

BIFUN_EXPORT int32_t ifun_parse_extract_iv_ym(int32_t part, const qz_interval_ym* value, int32_t* result) {
    return IntervalYmParts::of(part, *value, result).value;
}

BIFUN_EXPORT int32_t ifun_parse_extract_iv_dt(int32_t part, const qz_interval_dt* value, int32_t* result) {
    return IntervalDtParts::of(part, *value, result).value;
}

BIFUN_EXPORT int32_t ifun_parse_extract_msec(int32_t part, const qztime* value, double* result) {
    return SecondParts::of(part, *value, result).value;
}

BIFUN_EXPORT int32_t ifun_parse_extract_ivdt_msec(int32_t part, const qz_interval_dt* value, double* result) {
    return IntervalSecondParts::of(part, *value, result).value;
}

BIFUN_EXPORT int32_t ifun_parse_extract_str(int32_t part, const char* text, uint32_t length, int32_t* result) {
    const Text counted{const_cast<char*>(text), length, 0};  // is not written to
    return extract_from_text<DatetimeParts>(part, counted, result).value;
}

BIFUN_EXPORT int32_t ifun_parse_dayname(const qztime* value, char* buffer, uint32_t* length) {
    return write_name(day_name(*value), buffer, length);
}

BIFUN_EXPORT int32_t ifun_parse_monthname(const qztime* value, char* buffer, uint32_t* length) {
    return write_name(month_name(*value), buffer, length);
}
