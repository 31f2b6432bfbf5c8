// Functions of two numbers: atan2, log, mod, power, remainder.
#include "engine/catalog/families.h"
#include "qzbifun/codes.h"
#include "qzbifun/math.h"

namespace qzengine {

std::vector<Function> two_doubles_functions() {
    using enum ValueType;
    return {
        {.name = "atan2",
         .parameters = {{"y", kDouble}, {"x", kDouble}},
         .result = kDouble,
         .help = "Angle of the point (x, y), from -pi to pi. Fails at (0, 0).",
         .errors = {EC_INVALID_ARGUMENT},
         .forms = {{"aa", "batan2_aa_math_dbl", &batan2_aa_math_dbl},
                   {"av", "batan2_av_do_math_dbl", &batan2_av_do_math_dbl},
                   {"va", "batan2_va_do_math_dbl", &batan2_va_do_math_dbl}},
         .examples = {{"atan2(1, 1)", "0.7853981633974483"}, {"atan2(0, 1)", "0"}}},
        {.name = "log",
         .parameters = {{"base", kDouble}, {"x", kDouble}},
         .result = kDouble,
         .help = "Logarithm of x to a base; both are above 0, and the base is not 1.",
         .errors = {EC_INVALID_ARGUMENT},
         .forms = {{"aa", "blog_aa_math_dbl", &blog_aa_math_dbl},
                   {"av", "blog_av_do_math_dbl", &blog_av_do_math_dbl},
                   {"va", "blog_va_do_math_dbl", &blog_va_do_math_dbl}},
         .examples = {{"log(2, 8)", "3"}, {"log(2, 1)", "0"}}},
        {.name = "mod",
         .parameters = {{"x", kBigint}, {"y", kBigint}},
         .result = kBigint,
         .help = "Remainder of x / y with the sign of x; x where y is 0.",
         .forms = {{"aa", "bmod_aa_math_int64", &bmod_aa_math_int64},
                   {"av", "bmod_av_do_math_int64", &bmod_av_do_math_int64},
                   {"va", "bmod_va_do_math_int64", &bmod_va_do_math_int64}},
         .examples = {{"mod(-7, 3)", "-1"}, {"mod(7, 0)", "7"}}},
        {.name = "mod",
         .parameters = {{"x", kDouble}, {"y", kDouble}},
         .result = kDouble,
         .help = "Remainder of x / y with the sign of x; x where y is 0.",
         .forms = {{"aa", "bmod_aa_math_dbl", &bmod_aa_math_dbl},
                   {"av", "bmod_av_do_math_dbl", &bmod_av_do_math_dbl},
                   {"va", "bmod_va_do_math_dbl", &bmod_va_do_math_dbl}},
         .examples = {{"mod(7.5e0, 2e0)", "1.5"}, {"mod(1.5e0, 0e0)", "1.5"}}},
        {.name = "power",
         .parameters = {{"x", kDouble}, {"y", kDouble}},
         .result = kDouble,
         .help = "x to the power of y. A negative x takes whole y alone, 0 no negative y; fails where it overflows.",
         .errors = {EC_INVALID_ARGUMENT, EC_DATA_OVERFLOW},
         .forms = {{"aa", "bpower_aa_math_dbl", &bpower_aa_math_dbl},
                   {"av", "bpower_av_do_math_dbl", &bpower_av_do_math_dbl},
                   {"va", "bpower_va_do_math_dbl", &bpower_va_do_math_dbl}},
         .examples = {{"power(2, 10)", "1024"}, {"power(-8, 3)", "-512"}}},
        {.name = "remainder",
         .parameters = {{"x", kDouble}, {"y", kDouble}},
         .result = kDouble,
         .help = "x less the nearest multiple of y, which is not 0; of two equally near ones the even.",
         .errors = {EC_INVALID_ARGUMENT},
         .forms = {{"aa", "bremainder_aa", &bremainder_aa},
                   {"av", "bremainder_av", &bremainder_av},
                   {"va", "bremainder_va", &bremainder_va}},
         .examples = {{"remainder(7, 2)", "-1"}, {"remainder(5, 2)", "1"}}},
    };
}

}  // namespace qzengine
