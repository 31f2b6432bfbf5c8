// overlaps.
#include "qzbifun/overlaps.h"

#include <fmt/format.h>

#include "engine/catalog/datetime_entries.h"
#include "engine/catalog/families.h"
#include "qzbifun/codes.h"

namespace qzengine {
namespace {

using enum ValueType;

constexpr const char* kPointsHelp =
    "1 where the periods overlap or touch, else 0. Of a period one point may be NULL; NULL where both are. Also (start1, end1) "
    "OVERLAPS (start2, end2).";
constexpr const char* kLengthsHelp =
    "1 where the periods overlap or touch, else 0. A NULL length leaves a point; NULL where a start is. Also (start1, length1) "
    "OVERLAPS (start2, length2).";

Function overlaps(ValueType start, ValueType other, const char* first, const char* second, const char* help,
                  std::vector<int32_t> errors, std::vector<Form> forms, std::vector<Example> examples) {
    return {.name = "overlaps",
            .parameters = {{"start1", start}, {first, other}, {"start2", start}, {second, other}},
            .result = kInt,
            .null_rule = NullRule::kOwn,
            .help = help,
            .errors = std::move(errors),
            .forms = std::move(forms),
            .examples = std::move(examples),
            .reads_null_rows = true};
}

Function of_points(ValueType type) {
    // Times, which have no day, differ by it in the minute.
    const auto day = [&](std::string_view text) {
        return example_literal(type, text, fmt::format("10:{}:00", text.substr(text.size() - 2)));
    };
    return overlaps(
        type, type, "end1", "end2", kPointsHelp, {},
        {{"aaaa", "boverlaps_dt_aaaa_date", &boverlaps_dt_aaaa_date},
         {"aaav", "boverlaps_dt_aaav_ts_date", &boverlaps_dt_aaav_ts_date},
         {"aava", "boverlaps_dt_aava_ts_date", &boverlaps_dt_aava_ts_date},
         {"aavv", "boverlaps_dt_aavv_tsts_date", &boverlaps_dt_aavv_tsts_date},
         {"avaa", "boverlaps_dt_avaa_ts_date", &boverlaps_dt_avaa_ts_date},
         {"avav", "boverlaps_dt_avav_tsts_date", &boverlaps_dt_avav_tsts_date},
         {"avva", "boverlaps_dt_avva_tsts_date", &boverlaps_dt_avva_tsts_date},
         {"avvv", "boverlaps_dt_avvv_tststs_date", &boverlaps_dt_avvv_tststs_date},
         {"vaaa", "boverlaps_dt_vaaa_ts_date", &boverlaps_dt_vaaa_ts_date},
         {"vaav", "boverlaps_dt_vaav_tsts_date", &boverlaps_dt_vaav_tsts_date},
         {"vava", "boverlaps_dt_vava_tsts_date", &boverlaps_dt_vava_tsts_date},
         {"vavv", "boverlaps_dt_vavv_tststs_date", &boverlaps_dt_vavv_tststs_date},
         {"vvaa", "boverlaps_dt_vvaa_tsts_date", &boverlaps_dt_vvaa_tsts_date},
         {"vvav", "boverlaps_dt_vvav_tststs_date", &boverlaps_dt_vvav_tststs_date},
         {"vvva", "boverlaps_dt_vvva_tststs_date", &boverlaps_dt_vvva_tststs_date}},
        {{fmt::format("overlaps({}, {}, {}, {})", day("2024-01-01"), day("2024-01-05"), day("2024-01-05"), day("2024-01-09")),
          "1"},
         {fmt::format("overlaps({}, NULL, {}, {})", day("2024-01-05"), day("2024-01-02"), day("2024-01-05")), "0"}});
}

Function of_months(ValueType type) {
    const auto day = [&](const char* text) { return example_literal(type, text); };
    return overlaps(
        type, kIntervalYm, "length1", "length2", kLengthsHelp, {EC_DATE_OUT_OF_RANGE},
        {{"aaaa", "boverlaps_ivym_aaaa_date", &boverlaps_ivym_aaaa_date},
         {"aaav", "boverlaps_ivym_aaav_ym_date", &boverlaps_ivym_aaav_ym_date},
         {"aava", "boverlaps_ivym_aava_ts_date", &boverlaps_ivym_aava_ts_date},
         {"aavv", "boverlaps_ivym_aavv_ymts_date", &boverlaps_ivym_aavv_ymts_date},
         {"avaa", "boverlaps_ivym_avaa_ym_date", &boverlaps_ivym_avaa_ym_date},
         {"avav", "boverlaps_ivym_avav_ymym_date", &boverlaps_ivym_avav_ymym_date},
         {"avva", "boverlaps_ivym_avva_tsym_date", &boverlaps_ivym_avva_tsym_date},
         {"avvv", "boverlaps_ivym_avvv_ymtsym_date", &boverlaps_ivym_avvv_ymtsym_date},
         {"vaaa", "boverlaps_ivym_vaaa_ts_date", &boverlaps_ivym_vaaa_ts_date},
         {"vaav", "boverlaps_ivym_vaav_ymts_date", &boverlaps_ivym_vaav_ymts_date},
         {"vava", "boverlaps_ivym_vava_tsts_date", &boverlaps_ivym_vava_tsts_date},
         {"vavv", "boverlaps_ivym_vavv_ymtsts_date", &boverlaps_ivym_vavv_ymtsts_date},
         {"vvaa", "boverlaps_ivym_vvaa_ymts_date", &boverlaps_ivym_vvaa_ymts_date},
         {"vvav", "boverlaps_ivym_vvav_ymymts_date", &boverlaps_ivym_vvav_ymymts_date},
         {"vvva", "boverlaps_ivym_vvva_tsymts_date", &boverlaps_ivym_vvva_tsymts_date}},
        {{fmt::format("overlaps({}, INTERVAL '1' MONTH, {}, INTERVAL '-1' YEAR)", day("2024-01-01"), day("2025-02-01")), "1"},
         {fmt::format("overlaps({}, INTERVAL '1' MONTH, {}, INTERVAL '1' MONTH)", day("2024-01-01"), day("2024-02-02")), "0"}});
}

Function of_days(ValueType type) {
    const auto day = [&](const char* text) { return example_literal(type, text); };
    return overlaps(
        type, kIntervalDt, "length1", "length2", kLengthsHelp, {EC_DATE_OUT_OF_RANGE},
        {{"aaaa", "boverlaps_ivdt_aaaa_date", &boverlaps_ivdt_aaaa_date},
         {"aaav", "boverlaps_ivdt_aaav_dt_date", &boverlaps_ivdt_aaav_dt_date},
         {"aava", "boverlaps_ivdt_aava_ts_date", &boverlaps_ivdt_aava_ts_date},
         {"aavv", "boverlaps_ivdt_aavv_dtts_date", &boverlaps_ivdt_aavv_dtts_date},
         {"avaa", "boverlaps_ivdt_avaa_dt_date", &boverlaps_ivdt_avaa_dt_date},
         {"avav", "boverlaps_ivdt_avav_dtdt_date", &boverlaps_ivdt_avav_dtdt_date},
         {"avva", "boverlaps_ivdt_avva_tsdt_date", &boverlaps_ivdt_avva_tsdt_date},
         {"avvv", "boverlaps_ivdt_avvv_date", &boverlaps_ivdt_avvv_date},
         {"vaaa", "boverlaps_ivdt_vaaa_ts_date", &boverlaps_ivdt_vaaa_ts_date},
         {"vaav", "boverlaps_ivdt_vaav_dtts_date", &boverlaps_ivdt_vaav_dtts_date},
         {"vava", "boverlaps_ivdt_vava_tsts_date", &boverlaps_ivdt_vava_tsts_date},
         {"vavv", "boverlaps_ivdt_vavv_date", &boverlaps_ivdt_vavv_date},
         {"vvaa", "boverlaps_ivdt_vvaa_date", &boverlaps_ivdt_vvaa_date},
         {"vvav", "boverlaps_ivdt_vvav_date", &boverlaps_ivdt_vvav_date},
         {"vvva", "boverlaps_ivdt_vvva_date", &boverlaps_ivdt_vvva_date}},
        {{fmt::format("overlaps({}, INTERVAL '36' HOUR, {}, INTERVAL '1' DAY)", day("2024-01-01"), day("2024-01-02")), "1"},
         {fmt::format("overlaps({}, INTERVAL '12' HOUR, {}, INTERVAL '1' DAY)", day("2024-01-01"), day("2024-01-02")), "0"}});
}

}  // namespace

std::vector<Function> overlaps_functions() {
    std::vector<Function> functions;
    add_for_types(functions, kDatetimeTypes, of_points);
    add_for_types(functions, kTypesWithDate, of_months);
    add_for_types(functions, kTypesWithDate, of_days);
    return functions;
}

}  // namespace qzengine
