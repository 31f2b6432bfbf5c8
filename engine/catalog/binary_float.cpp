// to_binary_float and to_binary_double.
#include "engine/catalog/families.h"
#include "qzbifun/codes.h"
#include "qzbifun/math.h"

namespace qzengine {
namespace {

Function conversion(const char* name, const char* help, ValueType from, ValueType to, Form form,
                    std::vector<Example> examples) {
    return {.name = name,
            .parameters = {{"x", from}},
            .result = to,
            .help = help,
            .errors = {EC_DATA_OVERFLOW},
            .forms = {std::move(form)},
            .examples = std::move(examples)};
}

}  // namespace

std::vector<Function> binary_float_functions() {
    using enum ValueType;
    constexpr const char* kToFloat =
        "The float nearest to x. Infinities and NaN pass only while FLOAT_SPECIALS_ALLOWED is set.";
    constexpr const char* kToDouble =
        "The double nearest to x. Infinities and NaN pass only while FLOAT_SPECIALS_ALLOWED is set.";
    return {
        conversion("to_binary_float", kToFloat, kDecimal, kFloat,
                   {"a", "bto_binary_float_number_a", &bto_binary_float_number_a},
                   {{"to_binary_float(1.5)", "1.5"}, {"to_binary_float(16777217)", "16777216"}}),
        conversion("to_binary_float", kToFloat, kDouble, kFloat, {"a", "bto_binary_float_d_a", &bto_binary_float_d_a},
                   {{"to_binary_float(1e10)", "10000000000"}, {"to_binary_float(1e-60)", "0"}}),
        conversion("to_binary_float", kToFloat, kFloat, kFloat, {"a", "bto_binary_float_f_a", &bto_binary_float_f_a},
                   {{"to_binary_float(CAST(1.5 AS float))", "1.5"}, {"to_binary_float(CAST(-0.25 AS float))", "-0.25"}}),
        conversion("to_binary_double", kToDouble, kDecimal, kDouble,
                   {"a", "bto_binary_double_number_a", &bto_binary_double_number_a},
                   {{"to_binary_double(1.5)", "1.5"}, {"to_binary_double(16777217)", "16777217"}}),
        conversion("to_binary_double", kToDouble, kDouble, kDouble, {"a", "bto_binary_double_d_a", &bto_binary_double_d_a},
                   {{"to_binary_double(2.5e0)", "2.5"}, {"to_binary_double(-1e300)", "-1E+300"}}),
        conversion("to_binary_double", kToDouble, kFloat, kDouble, {"a", "bto_binary_double_f_a", &bto_binary_double_f_a},
                   {{"to_binary_double(CAST(1.5 AS float))", "1.5"}, {"to_binary_double(CAST(-0.25 AS float))", "-0.25"}}),
    };
}

}  // namespace qzengine
