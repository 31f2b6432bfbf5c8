// Functions that move a date: add_days and its kin, intervals, dateadd, next_day, last_day.
#include "qzbifun/date_arithmetic.h"

#include <fmt/format.h>

#include "engine/catalog/datetime_entries.h"
#include "engine/catalog/families.h"
#include "qzbifun/codes.h"

namespace qzengine {
namespace {

using enum ValueType;

// A date moved by an amount that is its second argument.
Function moved(const char* name, const char* help, ValueType type, ValueType result, Parameter amount, std::vector<Form> forms,
               std::vector<Example> examples) {
    return {.name = name,
            .parameters = {{"date", type}, std::move(amount)},
            .result = result,
            .help = help,
            .errors = {EC_DATE_OUT_OF_RANGE},
            .forms = std::move(forms),
            .examples = std::move(examples)};
}

Function add_days(ValueType type) {
    const ValueType result = with_time(type);
    const std::string date = example_literal(type, "2024-02-28", "06:00:00");
    return moved("add_days", "date so many days later; a fraction moves the time of day, to the second.", type, result,
                 {"days", kDouble},
                 {{"aa", "badd_days_aa_date", &badd_days_aa_date},
                  {"av", "badd_days_av_date", &badd_days_av_date},
                  {"va", "badd_days_va_date", &badd_days_va_date}},
                 {{fmt::format("add_days({}, 1.5)", date),
                   type == kDate ? "2024-02-29 12:00:00" : example_text(result, "2024-02-29", "18:00:00")},
                  {fmt::format("add_days({}, -28)", date),
                   type == kDate ? "2024-01-31 00:00:00" : example_text(result, "2024-01-31", "06:00:00")}});
}

Function add_weeks(ValueType type) {
    const std::string date = example_literal(type, "2024-02-28");
    return moved("add_weeks", "date so many weeks later. The count of days wraps around at 32 bits.", type, type,
                 {"weeks", kInt},
                 {{"aa", "badd_weeks_aa_date", &badd_weeks_aa_date},
                  {"av", "badd_weeks_av_date", &badd_weeks_av_date},
                  {"va", "badd_weeks_va_date", &badd_weeks_va_date}},
                 {{fmt::format("add_weeks({}, 1)", date), example_text(type, "2024-03-06")},
                  {fmt::format("add_weeks({}, -4)", date), example_text(type, "2024-01-31")}});
}

Function add_months(ValueType type) {
    return moved("add_months", "date so many months later. The last day of a month stays one.", type, type, {"months", kInt},
                 {{"aa", "badd_months_aa_date", &badd_months_aa_date},
                  {"av", "badd_months_av_date", &badd_months_av_date},
                  {"va", "badd_months_va_date", &badd_months_va_date}},
                 {{fmt::format("add_months({}, 1)", example_literal(type, "2024-02-29")), example_text(type, "2024-03-31")},
                  {fmt::format("add_months({}, -11)", example_literal(type, "2024-01-31")), example_text(type, "2023-02-28")}});
}

Function add_year_month(ValueType type) {
    const std::string date = example_literal(type, "2024-01-31");
    return moved("date_add", "date and interval. A day that the month lacks becomes its last.", type, type,
                 {"interval", kIntervalYm},
                 {{"aa", "bdate_add_ym_aa", &bdate_add_ym_aa}, {"av", "bdate_add_ym_av", &bdate_add_ym_av}},
                 {{fmt::format("date_add({}, INTERVAL '1' MONTH)", date), example_text(type, "2024-02-29")},
                  {fmt::format("date_add({}, INTERVAL '1-1' YEAR TO MONTH)", date), example_text(type, "2025-02-28")}});
}

Function subtract_year_month(ValueType type) {
    const std::string date = example_literal(type, "2024-03-31");
    return moved("date_sub", "date less interval. A day that the month lacks becomes its last.", type, type,
                 {"interval", kIntervalYm},
                 {{"aa", "bdate_sub_ym_aa", &bdate_sub_ym_aa}, {"av", "bdate_sub_ym_av", &bdate_sub_ym_av}},
                 {{fmt::format("date_sub({}, INTERVAL '1' MONTH)", date), example_text(type, "2024-02-29")},
                  {fmt::format("date_sub({}, INTERVAL '-1' YEAR)", date), example_text(type, "2025-03-31")}});
}

Function add_day_time(ValueType type) {
    const ValueType result = with_time(type);
    const std::string date = example_literal(type, "2024-02-28", "12:30:00");
    return moved("date_add", "date and interval.", type, result, {"interval", kIntervalDt},
                 {{"aa", "bdate_add_dt_aa", &bdate_add_dt_aa}, {"av", "bdate_add_dt_av", &bdate_add_dt_av}},
                 {{fmt::format("date_add({}, INTERVAL '1' DAY)", date),
                   type == kDate ? "2024-02-29 00:00:00" : example_text(result, "2024-02-29", "12:30:00")},
                  {fmt::format("date_add({}, INTERVAL '-13:00' HOUR TO MINUTE)", date),
                   type == kDate ? "2024-02-27 11:00:00" : example_text(result, "2024-02-27", "23:30:00")}});
}

Function dateadd(ValueType type) {
    const ValueType result = with_time(type);
    const std::string date = example_literal(type, "2024-01-31", "12:30:00");
    return {.name = "dateadd",
            .parameters = {{"part", kInt, Needs::kKeyword, date_part_words()}, {"count", kBigint}, {"date", type}},
            .result = result,
            .help = "date so many parts later. A day that the month lacks becomes its last.",
            .errors = {EC_INVALID_ARGUMENT, EC_DATE_OUT_OF_RANGE},
            .forms = {{"vaa", "bdateadd_vaa_date", &bdateadd_vaa_date},
                      {"vav", "bdateadd_vav_date", &bdateadd_vav_date},
                      {"vva", "bdateadd_vva_date", &bdateadd_vva_date}},
            .examples = {{fmt::format("dateadd(month, 1, {})", date),
                          type == kDate ? "2024-02-29 00:00:00" : example_text(result, "2024-02-29", "12:30:00")},
                         {fmt::format("dateadd(mi, -1, {})", date),
                          type == kDate ? "2024-01-30 23:59:00" : example_text(result, "2024-01-31", "12:29:00")}}};
}

Function next_day(ValueType type) {
    const std::string date = example_literal(type, "2024-02-29");
    return {.name = "next_day",
            .parameters = {{"date", type}, {"weekday", kString}},
            .result = type,
            .help = "The first such weekday behind date.",
            .errors = {EC_WEEKDAY_NAME_TOO_LONG, EC_WEEKDAY_NAME_INVALID, EC_DATE_OUT_OF_RANGE},
            .forms = {{"av", "bnext_day_av_date", &bnext_day_av_date}},
            .examples = {{fmt::format("next_day({}, 'Sunday')", date), example_text(type, "2024-03-03")},
                         {fmt::format("next_day({}, 'thu')", date), example_text(type, "2024-03-07")}},
            .changes_arguments = true};
}

Function last_day(ValueType type) {
    return {.name = "last_day",
            .parameters = {{"date", type}},
            .result = type,
            .help = "The last day of the date's month.",
            .forms = {{"a", "blast_day_a_date", &blast_day_a_date}},
            .examples = {{fmt::format("last_day({})", example_literal(type, "2024-02-10")), example_text(type, "2024-02-29")},
                         {fmt::format("last_day({})", example_literal(type, "2023-12-31")), example_text(type, "2023-12-31")}}};
}

}  // namespace

std::vector<Function> date_arithmetic_functions() {
    std::vector<Function> functions;
    for (auto entry :
         {add_days, add_weeks, add_months, add_year_month, subtract_year_month, add_day_time, dateadd, next_day, last_day}) {
        add_for_types(functions, kTypesWithDate, entry);
    }
    functions.push_back({.name = "last_day",
                         .parameters = {{"text", kString}},
                         .result = kDatetime,
                         .help = "The last day of the month of the date or datetime that the text holds. Blank: NULL.",
                         .errors = {EC_DATE_TEXT_INVALID},
                         .forms = {{"a", "blast_day_str_a_date", &blast_day_str_a_date}},
                         .examples = {{"last_day('2024-02-10 12:30')", "2024-02-29 12:30:00"}, {"last_day('')", "NULL"}}});
    return functions;
}

}  // namespace qzengine
