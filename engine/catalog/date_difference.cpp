// Functions that measure the distance between two dates.
#include "qzbifun/date_difference.h"

#include <fmt/format.h>

#include "engine/catalog/datetime_entries.h"
#include "engine/catalog/families.h"
#include "qzbifun/codes.h"

namespace qzengine {
namespace {

using enum ValueType;

Function between(const char* name, const char* help, ValueType type, ValueType result, std::vector<Form> forms,
                 std::vector<Example> examples) {
    return {.name = name,
            .parameters = {{"first", type}, {"second", type}},
            .result = result,
            .help = help,
            .forms = std::move(forms),
            .examples = std::move(examples)};
}

Example between_example(const char* name, ValueType type, const char* first, const char* second, const char* result) {
    return {fmt::format("{}({}, {})", name, example_literal(type, first), example_literal(type, second)), result};
}

Function days_between(ValueType type) {
    return between("days_between", "first minus second in days; the time of day plays no part.", type, kInt,
                   {{"aa", "bdays_between_aa_date", &bdays_between_aa_date},
                    {"av", "bdays_between_av_date", &bdays_between_av_date},
                    {"va", "bdays_between_va_date", &bdays_between_va_date}},
                   {between_example("days_between", type, "2024-03-01", "2024-02-28", "2"),
                    between_example("days_between", type, "1582-10-04", "1582-10-15", "-1")});
}

Function weeks_between(ValueType type) {
    Function function = between("weeks_between", "The Sundays that lie between, positive when first is later.", type, kInt,
                                {{"aa", "bweeks_between_aa_date", &bweeks_between_aa_date},
                                 {"av", "bweeks_between_av_date", &bweeks_between_av_date},
                                 {"va", "bweeks_between_va_date", &bweeks_between_va_date}},
                                {between_example("weeks_between", type, "2000-10-01", "2000-09-30", "1"),
                                 between_example("weeks_between", type, "2000-10-01", "2000-10-07", "0")});
    function.changes_arguments = true;
    return function;
}

Function months_between(ValueType type) {
    return between("months_between",
                   "first minus second in months, and the remaining days by 31sts; none remain between last days.", type,
                   kDecimal,
                   {{"aa", "bmonths_between_aa_date", &bmonths_between_aa_date},
                    {"av", "bmonths_between_av_date", &bmonths_between_av_date},
                    {"va", "bmonths_between_va_date", &bmonths_between_va_date}},
                   {between_example("months_between", type, "2024-03-31", "2024-02-29", "1"),
                    between_example("months_between", type, "2024-03-30", "2024-02-29", "1.032258064516129")});
}

Function years_between(ValueType type) {
    return between("years_between", "The difference of the two years; months and days play no part.", type, kInt,
                   {{"aa", "byears_between_aa_date", &byears_between_aa_date},
                    {"av", "byears_between_av_date", &byears_between_av_date},
                    {"va", "byears_between_va_date", &byears_between_va_date}},
                   {between_example("years_between", type, "2025-01-01", "2024-12-31", "1"),
                    between_example("years_between", type, "2024-01-01", "2024-12-31", "0")});
}

Function part_difference(const char* name, ValueType type, ValueType result, std::vector<Form> forms,
                         std::vector<Example> examples) {
    return {.name = name,
            .parameters = {{"part", kInt, Needs::kKeyword, date_part_words()}, {"first", type}, {"second", type}},
            .result = result,
            .help = "The whole parts from first to second, positive when second is later.",
            .errors = {EC_INVALID_ARGUMENT, EC_DATA_OVERFLOW},
            .forms = std::move(forms),
            .examples = std::move(examples)};
}

Example part_example(const char* name, const char* part, ValueType type, const char* first, const char* second,
                     const char* result) {
    return {fmt::format("{}({}, {}, {})", name, part, example_literal(type, first), example_literal(type, second)), result};
}

Function datediff(ValueType type) {
    return part_difference("datediff", type, kInt,
                           {{"vaa", "bdatediff_vaa_date", &bdatediff_vaa_date},
                            {"vav", "bdatediff_vav_date", &bdatediff_vav_date},
                            {"vva", "bdatediff_vva_date", &bdatediff_vva_date}},
                           {part_example("datediff", "year", type, "2000-06-01", "2001-05-31", "0"),
                            part_example("datediff", "hh", type, "2024-03-01", "2024-02-28", "-48")});
}

Function bigdatediff(ValueType type) {
    return part_difference("bigdatediff", type, kBigint,
                           {{"vaa", "bbigdatediff_vaa_date", &bbigdatediff_vaa_date},
                            {"vav", "bbigdatediff_vav_date", &bbigdatediff_vav_date},
                            {"vva", "bbigdatediff_vva_date", &bbigdatediff_vva_date}},
                           {part_example("bigdatediff", "second", type, "1700-01-01", "2000-01-01", "9467020800"),
                            part_example("bigdatediff", "q", type, "2024-03-31", "2024-01-01", "0")});
}

}  // namespace

std::vector<Function> date_difference_functions() {
    std::vector<Function> functions;
    for (auto entry : {days_between, weeks_between, months_between, years_between, datediff, bigdatediff}) {
        add_for_types(functions, kTypesWithDate, entry);
    }
    return functions;
}

}  // namespace qzengine
