// nvl, the conditional operator, nanvl and lnnvl.
#include "qzbifun/conditional.h"

#include "engine/catalog/families.h"
#include "qzbifun/math.h"

namespace qzengine {
namespace {

constexpr const char* kNvlHelp = "x where it has a value, else y. In compatibility mode 2 an empty string is no value.";
constexpr const char* kIfHelp = "yes in the rows whose condition is true, no in the others, where it is NULL too.";

Function nvl(ValueType type, std::vector<Form> forms, std::vector<Example> examples) {
    return {.name = "nvl",
            .parameters = {{"x", type}, {"y", type}},
            .result = type,
            .null_rule = NullRule::kOwn,
            .help = kNvlHelp,
            .forms = std::move(forms),
            .examples = std::move(examples)};
}

// Dates, times and date-times are stored alike, so that the same exports serve them all.
Function nvl_datetime(ValueType type, std::vector<Example> examples) {
    return nvl(type, {{"aa", "bnvl_date_aa", &bnvl_date_aa}, {"av", "bnvl_date_av", &bnvl_date_av}}, std::move(examples));
}

Function conditional(ValueType type, std::vector<Form> forms, std::vector<Example> examples) {
    return {.name = "if",
            .parameters = {{"condition", ValueType::kInt, Needs::kCondition}, {"yes", type}, {"no", type}},
            .result = type,
            .null_rule = NullRule::kOwn,
            .help = kIfHelp,
            .forms = std::move(forms),
            .examples = std::move(examples)};
}

}  // namespace

std::vector<Function> conditional_functions() {
    using enum ValueType;
    return {
        nvl(kInt, {{"aa", "bnvl_int_aa", &bnvl_int_aa}, {"av", "bnvl_int_av", &bnvl_int_av}},
            {{"nvl(NULL, 5)", "5"}, {"nvl(3, 5)", "3"}}),
        nvl(kBigint, {{"aa", "bnvl_int64_aa", &bnvl_int64_aa}, {"av", "bnvl_int64_av", &bnvl_int64_av}},
            {{"nvl(NULL, 4294967296)", "4294967296"}, {"nvl(4294967296, 5)", "4294967296"}}),
        nvl(kDecimal, {{"aa", "bnvl_dec_aa", &bnvl_dec_aa}, {"av", "bnvl_dec_av", &bnvl_dec_av}},
            {{"nvl(NULL, 1.50)", "1.50"}, {"nvl(CAST(NULL AS decimal), NULL)", "NULL"}}),
        nvl(kDouble, {{"aa", "bnvl_double_aa", &bnvl_double_aa}, {"av", "bnvl_double_av", &bnvl_double_av}},
            {{"nvl(NULL, 1e3)", "1000"}, {"nvl(2.5e0, 1e3)", "2.5"}}),
        nvl(kString, {{"aa", "bnvl_varchar_aa", &bnvl_varchar_aa}, {"av", "bnvl_varchar_av", &bnvl_varchar_av}},
            {{"nvl(NULL, 'none')", "none"}, {"nvl('some', 'none')", "some"}}),

        nvl(kBinary, {{"av", "bnvl_varbinary_av", &bnvl_varbinary_av}},
            {{"nvl(CAST(NULL AS binary), CAST('ab' AS binary))", "6162"},
             {"nvl(CAST('ab' AS binary), CAST('cd' AS binary))", "6162"}}),
        nvl_datetime(kDate, {{"nvl(NULL, CAST('2024-02-29' AS date))", "2024-02-29"},
                             {"nvl(CAST('2024-02-29' AS date), CAST('1999-12-31' AS date))", "2024-02-29"}}),
        nvl_datetime(kTime, {{"nvl(NULL, CAST('10:30:15' AS time))", "10:30:15"},
                             {"nvl(CAST('10:30' AS time), CAST('23:59' AS time))", "10:30:00"}}),
        nvl_datetime(kDatetime,
                     {{"nvl(NULL, CAST('2024-02-29 10:30:15' AS datetime))", "2024-02-29 10:30:15"},
                      {"nvl(CAST('2024-02-29' AS datetime), CAST('1999-12-31' AS datetime))", "2024-02-29 00:00:00"}}),
        nvl_datetime(kTimeTz, {{"nvl(NULL, CAST('10:30:15 +08:00' AS time_tz))", "10:30:15 +08:00"},
                               {"nvl(CAST('10:30Z' AS time_tz), CAST('23:59' AS time_tz))", "10:30:00 +00:00"}}),
        nvl_datetime(kDatetimeTz,
                     {{"nvl(NULL, CAST('2024-02-29T10:30:15+08:00' AS datetime_tz))", "2024-02-29 10:30:15 +08:00"},
                      {"nvl(CAST('2024-02-29' AS datetime_tz), NULL)", "2024-02-29 00:00:00 +00:00"}}),

        conditional(kInt,
                    {{"aaa", "bifoperator_int_aaa", &bifoperator_int_aaa},
                     {"aav", "bifoperator_int_aav", &bifoperator_int_aav},
                     {"ava", "bifoperator_int_ava", &bifoperator_int_ava},
                     {"avv", "bifoperator_int_avv", &bifoperator_int_avv},
                     {"vva", "bifoperator_int_vva", &bifoperator_int_vva}},
                    {{"if(2 > 1, 10, 20)", "10"}, {"if(NULL, 10, 20)", "20"}}),
        conditional(kBigint,
                    {{"aaa", "bifoperator_int64_aaa", &bifoperator_int64_aaa},
                     {"aav", "bifoperator_int64_aav", &bifoperator_int64_aav},
                     {"ava", "bifoperator_int64_ava", &bifoperator_int64_ava},
                     {"avv", "bifoperator_int64_avv", &bifoperator_int64_avv},
                     {"vva", "bifoperator_int64_vva", &bifoperator_int64_vva}},
                    {{"if(2 > 1, 4294967296, 20)", "4294967296"}, {"if(2 < 1, 4294967296, NULL)", "NULL"}}),
        conditional(kDecimal,
                    {{"aaa", "bifoperator_dec_aaa", &bifoperator_dec_aaa},
                     {"aav", "bifoperator_dec_aav", &bifoperator_dec_aav},
                     {"ava", "bifoperator_dec_ava", &bifoperator_dec_ava},
                     {"avv", "bifoperator_dec_avv", &bifoperator_dec_avv},
                     {"vva", "bifoperator_dec_vva", &bifoperator_dec_vva}},
                    {{"if(2 > 1, 1.50, 2.50)", "1.50"}, {"if(2 < 1, 1.50, 2.50)", "2.50"}}),
        conditional(kDouble,
                    {{"aaa", "bifoperator_double_aaa", &bifoperator_double_aaa},
                     {"aav", "bifoperator_double_aav", &bifoperator_double_aav},
                     {"ava", "bifoperator_double_ava", &bifoperator_double_ava},
                     {"avv", "bifoperator_double_avv", &bifoperator_double_avv},
                     {"vva", "bifoperator_double_vva", &bifoperator_double_vva}},
                    {{"if(2 > 1, 1e3, 2e3)", "1000"}, {"if(2 < 1, 1e3, 2e3)", "2000"}}),
        conditional(kString,
                    {{"aaa", "bifoperator_varchar_aaa", &bifoperator_varchar_aaa},
                     {"aav", "bifoperator_varchar_aav", &bifoperator_varchar_aav},
                     {"ava", "bifoperator_varchar_ava", &bifoperator_varchar_ava},
                     {"avv", "bifoperator_varchar_avv", &bifoperator_varchar_avv},
                     {"vva", "bifoperator_varchar_vva", &bifoperator_varchar_vva}},
                    {{"if('a' < 'b', 'before', 'behind')", "before"}, {"if('a' > 'b', 'behind', NULL)", "NULL"}}),

        {.name = "nanvl",
         .parameters = {{"x", kDouble}, {"y", kDouble}},
         .result = kDouble,
         .help = "x, be it NaN or not; NULL where x or y is.",
         .forms = {{"aa", "bnanvl_aa", &bnanvl_aa}, {"av", "bnanvl_av", &bnanvl_av}, {"va", "bnanvl_va", &bnanvl_va}},
         .examples = {{"nanvl(1.5e0, 2)", "1.5"}, {"nanvl(CAST('NaN' AS double), 2)", "NaN"}, {"nanvl(1.5e0, NULL)", "NULL"}}},
        {.name = "lnnvl",
         .parameters = {{"condition", kInt, Needs::kCondition}},
         .result = kInt,
         .null_rule = NullRule::kOwn,
         .help = "1 where the condition is false or NULL, else 0.",
         .forms = {{"a", "blnnvl_a_bool", &blnnvl_a_bool}},
         .examples = {{"lnnvl(2 > 1)", "0"}, {"lnnvl(NULL)", "1"}}},
    };
}

}  // namespace qzengine
