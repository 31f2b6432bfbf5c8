// round and trunc of dates and times, and of texts that hold one.
#include "qzbifun/date_rounding.h"

#include <fmt/format.h>

#include "engine/catalog/datetime_entries.h"
#include "engine/catalog/families.h"
#include "qzbifun/codes.h"

namespace qzengine {
namespace {

using enum ValueType;

Function by_element(const char* name, const char* help, ValueType type, Form form, std::vector<Example> examples) {
    return {.name = name,
            .parameters = {{"value", type}, {"element", kString}},
            .result = type,
            .help = help,
            .errors = {EC_DATE_FORMAT_INVALID, EC_DATE_VALUE_INVALID, EC_DATE_OUT_OF_RANGE},
            .forms = {std::move(form)},
            .examples = std::move(examples)};
}

constexpr const char* kTruncHelp =
    "value cut to CC, YYYY, Q, MM, WW (week from January 1), W (from the first of the month), IW (Monday), DAY (Sunday), DD, "
    "HH or MI.";
constexpr const char* kRoundHelp =
    "value to the nearest CC, YYYY, Q, MM, WW (week from January 1), W (from the first of the month), IW (Monday), DAY "
    "(Sunday), DD, HH or MI.";
constexpr const char* kRoundDateHelp =
    "date to the nearest CC, YYYY, Q, MM, WW (week from January 1), W (from the first of the month), DAY (Sunday) or DD.";
constexpr const char* kTimeHelp = "value cut to HH or MI.";
constexpr const char* kRoundTimeHelp = "value to the nearest HH, from 30:30 on up, or MI.";

Function trunc_datetime(ValueType type) {
    return by_element(
        "trunc", kTruncHelp, type, {"av", "btrunc_datetime_av_date", &btrunc_datetime_av_date},
        {{fmt::format("trunc({}, 'DD')", example_literal(type, "2024-02-29")), example_text(type, "2024-02-29", "00:00:00")},
         {fmt::format("trunc({}, 'hh')", example_literal(type, "2024-02-29")), example_text(type, "2024-02-29", "10:00:00")}});
}

Function round_datetime(ValueType type) {
    return by_element(
        "round", kRoundHelp, type, {"av", "bround_datetime_av_date", &bround_datetime_av_date},
        {{fmt::format("round({}, 'IW')", example_literal(type, "2024-02-29")), example_text(type, "2024-02-26", "00:00:00")},
         {fmt::format("round({}, 'mi')", example_literal(type, "2024-02-29", "23:59:30")),
          example_text(type, "2024-03-01", "00:00:00")}});
}

Function trunc_time(ValueType type) {
    return by_element("trunc", kTimeHelp, type, {"av", "btrunc_time_av_date", &btrunc_time_av_date},
                      {{fmt::format("trunc({}, 'HH')", example_literal(type, "")), example_text(type, "", "10:00:00")},
                       {fmt::format("trunc({}, 'MI')", example_literal(type, "")), example_text(type, "", "10:30:00")}});
}

Function round_time(ValueType type) {
    return by_element(
        "round", kRoundTimeHelp, type, {"av", "bround_time_av_date", &bround_time_av_date},
        {{fmt::format("round({}, 'HH')", example_literal(type, "", "10:30:30")), example_text(type, "", "11:00:00")},
         {fmt::format("round({}, 'HH')", example_literal(type, "", "10:30:29")), example_text(type, "", "10:00:00")}});
}

Function to_the_day(const char* name, const char* help, ValueType type, Form form, std::vector<Example> examples) {
    return {.name = name,
            .parameters = {{"value", type}},
            .result = type,
            .help = help,
            .errors = {},
            .forms = {std::move(form)},
            .examples = std::move(examples)};
}

Function trunc_day(ValueType type) {
    return to_the_day(
        "trunc", "value at midnight.", type, {"a", "btrunc_day_a_date", &btrunc_day_a_date},
        {{fmt::format("trunc({})", example_literal(type, "2024-02-29")), example_text(type, "2024-02-29", "00:00:00")},
         {fmt::format("trunc({})", example_literal(type, "-0001-12-31")), example_text(type, "-0001-12-31", "00:00:00")}});
}

Function round_day(ValueType type) {
    Function function = to_the_day("round", "value at midnight, from noon on that of the next day.", type,
                                   {"a", "bround_day_a_date", &bround_day_a_date},
                                   {{fmt::format("round({})", example_literal(type, "2024-02-29", "11:59:59")),
                                     example_text(type, "2024-02-29", "00:00:00")},
                                    {fmt::format("round({})", example_literal(type, "2024-02-29", "12:00:00")),
                                     type == kDate ? "2024-02-29" : example_text(type, "2024-03-01", "00:00:00")}});
    function.errors = {EC_DATE_VALUE_INVALID};
    return function;
}

Function of_text(const char* name, const char* help, Form form, std::vector<Example> examples) {
    return {.name = name,
            .parameters = {{"text", kString}, {"element", kString}},
            .result = kString,
            .help = help,
            .errors = {EC_NUMBER_TEXT_INVALID, EC_DATE_TEXT_INVALID, EC_DATE_VALUE_INVALID, EC_DATA_OVERFLOW},
            .forms = {std::move(form)},
            .examples = std::move(examples)};
}

}  // namespace

std::vector<Function> date_rounding_functions() {
    std::vector<Function> functions;
    functions.push_back(
        by_element("trunc", kTruncHelp, kDate, {"av", "btrunc_date_av_date", &btrunc_date_av_date},
                   {{"trunc(DATE '2024-02-29', 'MM')", "2024-02-01"}, {"trunc(DATE '2000-02-29', 'CC')", "1901-01-01"}}));
    functions.push_back(
        by_element("round", kRoundDateHelp, kDate, {"av", "bround_date_av_date", &bround_date_av_date},
                   {{"round(DATE '2024-02-16', 'Q')", "2024-04-01"}, {"round(DATE '2024-02-29', 'DAY')", "2024-03-03"}}));
    constexpr ValueType kDatetimes[] = {kDatetime, kDatetimeTz};
    constexpr ValueType kTimes[] = {kTime, kTimeTz};
    add_for_types(functions, kDatetimes, trunc_datetime);
    add_for_types(functions, kDatetimes, round_datetime);
    add_for_types(functions, kTimes, trunc_time);
    add_for_types(functions, kTimes, round_time);
    add_for_types(functions, kTypesWithDate, trunc_day);
    add_for_types(functions, kTypesWithDate, round_day);
    functions.push_back(
        of_text("trunc",
                "A text that holds a datetime cut as by trunc of a datetime, or a number cut to so many decimal places, "
                "as element tells. Blank: NULL.",
                {"av", "btrunc_dt_str_av_date", &btrunc_dt_str_av_date},
                {{"trunc('2024-02-29 10:30', 'MM')", "2024-02-01 00:00:00"}, {"trunc('123.456', '1')", "123.4"}}));
    functions.push_back(
        of_text("round",
                "A text that holds a datetime rounded as by round of a datetime, or a number to so many decimal places, "
                "as element tells. Blank: NULL.",
                {"av", "bround_dt_str_av_date", &bround_dt_str_av_date},
                {{"round('2024-02-29 10:30', 'YYYY')", "2024-01-01 00:00:00"}, {"round('123.456', '1')", "123.5"}}));
    functions.push_back({.name = "trunc",
                         .parameters = {{"text", kString}},
                         .result = kDatetime,
                         .help = "The date or datetime that a text holds, at midnight. Blank: NULL.",
                         .errors = {EC_DATE_TEXT_INVALID},
                         .forms = {{"a", "btrunc_day_str_a_date", &btrunc_day_str_a_date}},
                         .examples = {{"trunc('2024-02-29 10:30')", "2024-02-29 00:00:00"}, {"trunc('')", "NULL"}}});
    functions.push_back({.name = "round",
                         .parameters = {{"text", kString}},
                         .result = kString,
                         .help = "A text that holds a number, to a whole one, or a datetime, to the day. Blank: NULL.",
                         .errors = {EC_DATE_TEXT_INVALID, EC_DATE_VALUE_INVALID},
                         .forms = {{"a", "bround_a_str", &bround_a_str}},
                         .examples = {{"round('2.5')", "3"}, {"round('2024-02-29 12:00')", "2024-03-01 00:00:00"}}});
    return functions;
}

}  // namespace qzengine
