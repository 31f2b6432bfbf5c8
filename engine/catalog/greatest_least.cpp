// greatest and least of numbers.
#include "engine/catalog/families.h"
#include "qzbifun/math.h"

namespace qzengine {
namespace {

Function extreme(const char* name, const char* help, ValueType type, std::vector<Form> forms, std::vector<Example> examples) {
    return {.name = name,
            .parameters = {{"x", type}, {"y", type}},
            .result = type,
            .help = help,
            .forms = std::move(forms),
            .examples = std::move(examples)};
}

}  // namespace

std::vector<Function> greatest_least_functions() {
    using enum ValueType;
    constexpr const char* kGreatest = "The greater of x and y; y where they are equal.";
    constexpr const char* kLeast = "The lesser of x and y; y where they are equal.";
    constexpr const char* kGreatestDouble = "The greater of x and y; y where they are equal or one of them is NaN.";
    constexpr const char* kLeastDouble = "The lesser of x and y; y where they are equal or one of them is NaN.";
    return {
        extreme("greatest", kGreatest, kBigint,
                {{"aa", "bgreatest_aa_math_bigint", &bgreatest_aa_math_bigint},
                 {"av", "bgreatest_av_do_math_bigint", &bgreatest_av_do_math_bigint},
                 {"va", "bgreatest_va_do_math_bigint", &bgreatest_va_do_math_bigint}},
                {{"greatest(3, 5)", "5"}, {"greatest(-3, -7)", "-3"}, {"greatest(-3, NULL)", "NULL"}}),
        extreme("greatest", kGreatest, kDecimal,
                {{"aa", "bgreatest_aa_math_dec", &bgreatest_aa_math_dec},
                 {"av", "bgreatest_av_do_math_dec", &bgreatest_av_do_math_dec},
                 {"va", "bgreatest_va_do_math_dec", &bgreatest_va_do_math_dec}},
                {{"greatest(3.5, 2.75)", "3.5"}, {"greatest(2.0, 2.00)", "2.00"}}),
        extreme("greatest", kGreatestDouble, kDouble,
                {{"aa", "bgreatest_aa_math_dbl", &bgreatest_aa_math_dbl},
                 {"av", "bgreatest_av_do_math_dbl", &bgreatest_av_do_math_dbl},
                 {"va", "bgreatest_va_do_math_dbl", &bgreatest_va_do_math_dbl}},
                {{"greatest(3e0, 5e0)", "5"}, {"greatest(-1e300, 0.5)", "0.5"}}),
        extreme("least", kLeast, kBigint,
                {{"aa", "bleast_aa_math_bigint", &bleast_aa_math_bigint},
                 {"av", "bleast_av_bi_math_bigint", &bleast_av_bi_math_bigint},
                 {"va", "bleast_va_bi_math_bigint", &bleast_va_bi_math_bigint}},
                {{"least(3, 5)", "3"}, {"least(-3, -7)", "-7"}, {"least(-3, NULL)", "NULL"}}),
        extreme("least", kLeast, kDecimal,
                {{"aa", "bleast_aa_math_dec", &bleast_aa_math_dec},
                 {"av", "bleast_av_do_math_dec", &bleast_av_do_math_dec},
                 {"va", "bleast_va_do_math_dec", &bleast_va_do_math_dec}},
                {{"least(3.5, 2.75)", "2.75"}, {"least(2.0, 2.00)", "2.00"}}),
        extreme("least", kLeastDouble, kDouble,
                {{"aa", "bleast_aa_math", &bleast_aa_math},
                 {"av", "bleast_av_do_math", &bleast_av_do_math},
                 {"va", "bleast_va_do_math", &bleast_va_do_math}},
                {{"least(3e0, 5e0)", "3"}, {"least(-1e300, 0.5)", "-1E+300"}}),
    };
}

}  // namespace qzengine
