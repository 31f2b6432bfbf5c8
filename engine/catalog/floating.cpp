// Functions of one double.
#include <cstdint>
#include <utility>

#include "engine/catalog/families.h"
#include "qzbifun/codes.h"
#include "qzbifun/math.h"

namespace qzengine {
namespace {

Function of_double(const char* name, const char* help, std::vector<int32_t> errors, Form form, std::vector<Example> examples,
                   ValueType result = ValueType::kDouble) {
    return {.name = name,
            .parameters = {{"x", ValueType::kDouble}},
            .result = result,
            .help = help,
            .errors = std::move(errors),
            .forms = {std::move(form)},
            .examples = std::move(examples)};
}

}  // namespace

std::vector<Function> floating_functions() {
    return {
        of_double("abs", "Magnitude of x; -0.0 stays as it is.", {}, {"a", "babs_a_math_dbl", &babs_a_math_dbl},
                  {{"abs(-1.5e0)", "1.5"}, {"abs(-1e300)", "1E+300"}}),
        of_double("acos", "Angle whose cosine is x, from 0 to pi; x from -1 to 1.", {EC_INVALID_ARGUMENT},
                  {"a", "bacos_a_math_dbl", &bacos_a_math_dbl}, {{"acos(1)", "0"}, {"acos(0)", "1.5707963267948966"}}),
        of_double("asin", "Angle whose sine is x, from -pi/2 to pi/2; x from -1 to 1.", {EC_INVALID_ARGUMENT},
                  {"a", "basin_a_math_dbl", &basin_a_math_dbl}, {{"asin(1)", "1.5707963267948966"}, {"asin(NULL)", "NULL"}}),
        of_double("atan", "Angle whose tangent is x, from -pi/2 to pi/2.", {}, {"a", "batan_a_math_dbl", &batan_a_math_dbl},
                  {{"atan(1)", "0.7853981633974483"}, {"atan(0)", "0"}}),
        of_double("ceil", "Whole number at or above x.", {}, {"a", "bceil_a_math_dbl", &bceil_a_math_dbl},
                  {{"ceil(1.5e0)", "2"}, {"ceil(-1.5e0)", "-1"}}),
        of_double("cos", "Cosine of the angle x.", {}, {"a", "bcos_a_math_dbl", &bcos_a_math_dbl},
                  {{"cos(0)", "1"}, {"cos(1)", "0.5403023058681398"}}),
        of_double("cosh", "Hyperbolic cosine of x. Fails where it overflows.", {EC_DATA_OVERFLOW},
                  {"a", "bcosh_a_math_dbl", &bcosh_a_math_dbl}, {{"cosh(0)", "1"}, {"cosh(NULL)", "NULL"}}),
        of_double("cot", "Cotangent of the angle x, which is not 0.", {EC_INVALID_ARGUMENT},
                  {"a", "bcot_a_math_dbl", &bcot_a_math_dbl}, {{"cot(NULL)", "NULL"}, {"cot(0.5)", "1.830487721712452"}}),
        of_double("degrees", "Radians x in degrees, by a pi of 15 digits. Fails where x * 180 overflows.", {EC_DATA_OVERFLOW},
                  {"a", "bdegrees_a_math_dbl", &bdegrees_a_math_dbl},
                  {{"degrees(3.14159265358979)", "180"}, {"degrees(1)", "57.29577951308238"}}),
        of_double("exp", "e to the power of x. Fails where it overflows.", {EC_DATA_OVERFLOW},
                  {"a", "bexp_a_math_dbl", &bexp_a_math_dbl}, {{"exp(0)", "1"}, {"exp(1)", "2.718281828459045"}}),
        of_double("floor", "Whole number at or below x.", {}, {"a", "bfloor_a_math_dbl", &bfloor_a_math_dbl},
                  {{"floor(1.5e0)", "1"}, {"floor(-1.5e0)", "-2"}}),
        of_double("ln", "Natural logarithm of x, which is above 0.", {EC_INVALID_ARGUMENT},
                  {"a", "bln_a_math_dbl", &bln_a_math_dbl}, {{"ln(1)", "0"}, {"ln(10)", "2.302585092994046"}}),
        of_double("log10", "Logarithm of x, which is above 0, to base 10.", {EC_INVALID_ARGUMENT},
                  {"a", "blog10_a_math_dbl", &blog10_a_math_dbl}, {{"log10(1000)", "3"}, {"log10(2)", "0.3010299956639812"}}),
        of_double("radians", "Degrees x in radians, by a pi of 15 digits.", {},
                  {"a", "bradians_a_math_dbl", &bradians_a_math_dbl},
                  {{"radians(180)", "3.14159265358979"}, {"radians(0)", "0"}}),
        of_double("rand",
                  "A number from 0 to 1, both included, that x seeds: equal x, cut to a whole number, give equal numbers.", {},
                  {"a", "brand_a_math_int", &brand_a_math_int},
                  {{"rand(0)", "0.0011597033600878933"}, {"rand(5.9)", "0.0016479995117038484"}}),
        of_double("sign", "1 where x is above 0, -1 where it is below, otherwise 0.", {},
                  {"a", "bsign_a_math_dbl", &bsign_a_math_dbl}, {{"sign(-2.5)", "-1"}, {"sign(0)", "0"}}, ValueType::kInt),
        of_double("sin", "Sine of the angle x.", {}, {"a", "bsin_a_math_dbl", &bsin_a_math_dbl},
                  {{"sin(0)", "0"}, {"sin(1)", "0.8414709848078965"}}),
        of_double("sinh", "Hyperbolic sine of x. Fails where it overflows.", {EC_DATA_OVERFLOW},
                  {"a", "bsinh_a_math_dbl", &bsinh_a_math_dbl}, {{"sinh(0)", "0"}, {"sinh(NULL)", "NULL"}}),
        of_double("sqrt", "Square root of x, which is not below 0.", {EC_INVALID_ARGUMENT},
                  {"a", "bsqrt_a_math_dbl", &bsqrt_a_math_dbl}, {{"sqrt(16)", "4"}, {"sqrt(2)", "1.4142135623730951"}}),
        of_double("tan", "Tangent of the angle x.", {}, {"a", "btan_a_math_dbl", &btan_a_math_dbl},
                  {{"tan(0)", "0"}, {"tan(1)", "1.5574077246549023"}}),
        of_double("tanh", "Hyperbolic tangent of x.", {}, {"a", "btanh_a_math_dbl", &btanh_a_math_dbl},
                  {{"tanh(0)", "0"}, {"tanh(100)", "1"}}),
    };
}

}  // namespace qzengine
