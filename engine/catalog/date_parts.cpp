// Parts of dates, times and intervals: datepart, extract, the functions of one part, and the names of days and months.
#include "qzbifun/date_parts.h"

#include <fmt/format.h>

#include <span>

#include "engine/catalog/datetime_entries.h"
#include "engine/catalog/families.h"
#include "qzbifun/codes.h"
#include "qzbifun/date_extract.h"
#include "qzhost/calendar.h"

namespace qzengine {
namespace {

using enum ValueType;

// ---- datepart

Function datepart_by_code(ValueType type) {
    return {
        .name = "datepart",
        .parameters = {{"part", kInt, Needs::kKeyword, date_part_words()}, {"value", type}},
        .result = kInt,
        .help = "One part of a value. The date of a time alone is 1900-01-01. The year -1 counts as no part.",
        .errors = {EC_INVALID_ARGUMENT},
        .forms = {{"va", "bdatepart1_va_date", &bdatepart1_va_date}},
        .examples = {{fmt::format("datepart(ms, {})", example_literal(type, "2024-02-29")), has_time(type) ? "500" : "0"},
                     {fmt::format("datepart(hour, {})", example_literal(type, "2024-02-29")), has_time(type) ? "10" : "0"}}};
}

Function datepart_by_text(ValueType type) {
    return {
        .name = "datepart",
        .parameters = {{"value", type}, {"part", kString}},
        .result = kInt,
        .help = "One part of a value, named by a text. The date of a time alone is 1900-01-01.",
        .errors = {EC_INVALID_ARGUMENT},
        .forms = {{"av", "bdatepart_av_date", &bdatepart_av_date}},
        .examples = {{fmt::format("datepart({}, 'minute')", example_literal(type, "2024-02-29")), has_time(type) ? "30" : "0"},
                     {fmt::format("datepart({}, 'Q')", example_literal(type, "2024-02-29")), "1"}}};
}

// ---- One part

struct OnePart {
    const char* name;
    const char* help;
    Form form;
    const char* result;  // of 2024-02-29 10:30:15.5
    const char* other;   // of 1582-10-15 00:00:00
    bool changes_arguments = false;
};

void add_one_part(std::vector<Function>& functions, std::span<const ValueType> types, const OnePart& part) {
    add_for_types(functions, types, [&](ValueType type) {
        return Function{
            .name = part.name,
            .parameters = {{"value", type}},
            .result = kInt,
            .help = part.help,
            .forms = {part.form},
            .examples = {{fmt::format("{}({})", part.name, example_literal(type, "2024-02-29")), part.result},
                         {fmt::format("{}({})", part.name, example_literal(type, "1582-10-15", "00:00:00")), part.other}},
            .changes_arguments = part.changes_arguments};
    });
}

void add_parts_of_dates(std::vector<Function>& functions) {
    const OnePart parts[] = {
        {"year", "The year.", {"a", "byear_a_date", &byear_a_date}, "2024", "1582"},
        {"quarter", "The quarter, 1 to 4.", {"a", "bquarter_qztime_a_date", &bquarter_qztime_a_date}, "1", "4"},
        {"month", "The month, 1 to 12.", {"a", "bmonth_a_date", &bmonth_a_date}, "2", "10"},
        {"day", "The day of the month.", {"a", "bday_a_date", &bday_a_date}, "29", "15"},
        {"dayofmonth", "The day of the month.", {"a", "bdayofmonth_a_date", &bdayofmonth_a_date}, "29", "15"},
        {"dayofyear", "The day of the year. 1582 has 355 days.", {"a", "bdayofyear_a_date", &bdayofyear_a_date}, "60", "278"},
        {"dayofweek",
         "The day of the week, 1 for Sunday to 7 for Saturday.",
         {"a", "bdayofweek_a_date", &bdayofweek_a_date},
         "5",
         "6",
         true},
    };
    for (const OnePart& part : parts) add_one_part(functions, kTypesWithDate, part);
}

void add_parts_of_times(std::vector<Function>& functions) {
    const OnePart parts[] = {
        {"hour", "The hour.", {"a", "bhour_a_date", &bhour_a_date}, "10", "0"},
        {"minute", "The minute.", {"a", "bmin_a_date", &bmin_a_date}, "30", "0"},
        {"second", "The second, without its fraction.", {"a", "bsec_a_date", &bsec_a_date}, "15", "0"},
    };
    for (const OnePart& part : parts) add_one_part(functions, kTypesWithTime, part);
}

Function name_of(const char* name, const char* help, ValueType type, Form form, const char* result, const char* other) {
    return {.name = name,
            .parameters = {{"value", type}},
            .result = kString,
            .help = help,
            .forms = {std::move(form)},
            .examples = {{fmt::format("{}({})", name, example_literal(type, "2024-02-29")), result},
                         {fmt::format("{}({})", name, example_literal(type, "1582-10-15")), other}}};
}

Function dayname(ValueType type) {
    return name_of("dayname", "The English name of the day of the week.", type, {"a", "bdayname_a_date", &bdayname_a_date},
                   "Thursday", "Friday");
}

Function monthname(ValueType type) {
    return name_of("monthname", "The English name of the month.", type, {"a", "bmonthname_a_date", &bmonthname_a_date},
                   "February", "October");
}

// ---- extract

constexpr int32_t kFraction = 7;  // of an interval

constexpr Keyword kYear{"year", HOST_PART_YEAR};
constexpr Keyword kMonth{"month", HOST_PART_MONTH};
constexpr Keyword kDay{"day", HOST_PART_DAY};
constexpr Keyword kHour{"hour", HOST_PART_HOUR};
constexpr Keyword kMinute{"minute", HOST_PART_MINUTE};
constexpr Keyword kSecond{"second", HOST_PART_SECOND};
constexpr Keyword kZoneHour{"timezone_hour", HOST_PART_ZONE_HOUR};
constexpr Keyword kZoneMinute{"timezone_minute", HOST_PART_ZONE_MINUTE};

Function extract(ValueType type, std::vector<Keyword> words, ValueType result, const char* help, Form form,
                 std::vector<Example> examples) {
    return {.name = "extract",
            .parameters = {{"part", kInt, Needs::kKeyword, std::move(words)}, {"value", type}},
            .result = result,
            .help = help,
            .forms = {std::move(form)},
            .examples = std::move(examples)};
}

void add_extract(std::vector<Function>& functions) {
    constexpr const char* kPart = "A part of a value; written extract(part FROM value) too.";
    constexpr const char* kZonedPart = "A part of a value; the hour and minute of its zone both have the zone's sign.";
    constexpr const char* kSeconds = "The second with its fraction.";
    constexpr const char* kOfText = "A part of the date or datetime that the text holds. Blank: NULL.";
    functions.push_back(extract(kDate, {kYear, kMonth, kDay}, kInt, kPart,
                                {"va", "bextract_date_va_date", &bextract_date_va_date},
                                {{"extract(YEAR FROM DATE '2024-02-29')", "2024"}, {"extract(day, DATE '2024-02-29')", "29"}}));
    functions.push_back(extract(kTime, {kHour, kMinute}, kInt, kPart, {"va", "bextract_time_va_date", &bextract_time_va_date},
                                {{"extract(HOUR FROM TIME '10:30')", "10"}, {"extract(minute, TIME '10:30')", "30"}}));
    functions.push_back(extract(
        kDatetime, {kYear, kMonth, kDay, kHour, kMinute}, kInt, kPart,
        {"va", "bextract_datetime_va_date", &bextract_datetime_va_date},
        {{"extract(MONTH FROM TIMESTAMP '2024-02-29 10:30')", "2"}, {"extract(minute, TIMESTAMP '2024-02-29 10:30')", "30"}}));
    functions.push_back(
        extract(kTimeTz, {kHour, kMinute, kZoneHour, kZoneMinute}, kInt, kZonedPart,
                {"va", "bextract_time_tz_va_date", &bextract_time_tz_va_date},
                {{"extract(TIMEZONE_HOUR FROM TIME '10:30 -05:30')", "-5"}, {"extract(minute, TIME '10:45 -05:30')", "45"}}));
    functions.push_back(extract(kDatetimeTz, {kYear, kMonth, kDay, kHour, kMinute, kZoneHour, kZoneMinute}, kInt, kZonedPart,
                                {"va", "bextract_datetime_tz_va_date", &bextract_datetime_tz_va_date},
                                {{"extract(TIMEZONE_MINUTE FROM TIMESTAMP '2024-02-29 10:30 -05:30')", "-30"},
                                 {"extract(hour, TIMESTAMP '2024-02-29 10:30 -05:30')", "10"}}));
    add_for_types(functions, kTypesWithTime, [&](ValueType type) {
        return extract(type, {kSecond}, kDouble, kSeconds, {"va", "bextract_time_ex_va_date", &bextract_time_ex_va_date},
                       {{fmt::format("extract(SECOND FROM {})", example_literal(type, "2024-02-29")), "15.5"},
                        {fmt::format("extract(second, {})", example_literal(type, "2024-02-29", "10:30")), "0"}});
    });
    functions.push_back(
        extract(kIntervalYm, {kYear, kMonth}, kInt, "A field of an interval, with the interval's sign.",
                {"va", "bextract_iv_ym_va_date", &bextract_iv_ym_va_date},
                {{"extract(MONTH FROM INTERVAL '1-2' YEAR TO MONTH)", "2"}, {"extract(year, INTERVAL '-14' MONTH)", "0"}}));
    functions.push_back(extract(kIntervalDt, {kDay, kHour, kMinute, {"fraction", kFraction}}, kInt,
                                "A field of an interval, with its sign; the fraction in microseconds.",
                                {"va", "bextract_iv_dt_va_date", &bextract_iv_dt_va_date},
                                {{"extract(DAY FROM INTERVAL '3 04:05:06.7' DAY TO SECOND)", "3"},
                                 {"extract(fraction, INTERVAL '-12.5' SECOND)", "-500000"}}));
    functions.push_back(extract(kIntervalDt, {kSecond}, kDouble, kSeconds,
                                {"va", "bextract_iv_dt_ex_va_date", &bextract_iv_dt_ex_va_date},
                                {{"extract(SECOND FROM INTERVAL '12.5' SECOND)", "12.5"},
                                 {"extract(second, INTERVAL '-3 04:05:06.7' DAY TO SECOND)", "-6.7"}}));
    functions.push_back(extract(kString, {kYear, kMonth, kDay, kHour, kMinute}, kInt, kOfText,
                                {"va", "bextract_str_va_date", &bextract_str_va_date},
                                {{"extract(DAY FROM '2024-02-29')", "29"}, {"extract(hour, '')", "NULL"}}));
    functions.push_back(extract(kString, {kSecond}, kDouble, kOfText,
                                {"va", "bextract_str_ex_va_date", &bextract_str_ex_va_date},
                                {{"extract(SECOND FROM '10:30:15.25')", "15.25"}, {"extract(second, ' ')", "NULL"}}));
    for (Function& function : functions) {
        if (function.parameters.back().type == kString) function.errors = {EC_DATE_TEXT_INVALID};
    }
}

}  // namespace

std::vector<Function> date_part_functions() {
    std::vector<Function> functions;
    add_extract(functions);
    add_for_types(functions, kDatetimeTypes, datepart_by_code);
    add_for_types(functions, kDatetimeTypes, datepart_by_text);
    add_parts_of_dates(functions);
    add_parts_of_times(functions);
    add_for_types(functions, kTypesWithDate, dayname);
    add_for_types(functions, kTypesWithDate, monthname);
    functions.push_back(
        {.name = "weekday",
         .parameters = {{"text", kString}},
         .result = kInt,
         .help = "The weekday of the date in a text, 0 for Sunday to 6; in compatibility mode 4 from Monday. Blank: NULL.",
         .errors = {EC_DATE_TEXT_INVALID},
         .forms = {{"a", "bweekday_str_a_date", &bweekday_str_a_date}},
         .examples = {{"weekday('2000-10-01')", "0"}, {"weekday(DATE '2024-02-29')", "4"}}});
    return functions;
}

}  // namespace qzengine
