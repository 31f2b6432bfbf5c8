// abs, ceil and floor.
#include "qzbifun/math.h"

#include "engine/catalog/families.h"
#include "qzbifun/codes.h"

namespace qzengine {

std::vector<Function> math_functions() {
    using enum ValueType;
    return {
        {.name = "abs",
         .parameters = {{"x", kBigint}},
         .result = kBigint,
         .help = "Magnitude of x. The lowest bigint has none.",
         .errors = {EC_DATA_OVERFLOW},
         .forms = {{"a", "babs_a_math_int", &babs_a_math_int}},
         .examples = {{"abs(-7)", "7"}, {"abs(9223372036854775807)", "9223372036854775807"}}},
        {.name = "abs",
         .parameters = {{"x", kDecimal}},
         .result = kDecimal,
         .help = "Magnitude of x.",
         .forms = {{"a", "babs_a_math_dec", &babs_a_math_dec}},
         .examples = {{"abs(-12.50)", "12.50"}, {"abs(0.001)", "0.001"}}},
        {.name = "ceil",
         .parameters = {{"x", kInt}},
         .result = kInt,
         .help = "x itself: an int is whole.",
         .forms = {{"a", "bceil_a_math_int", &bceil_a_math_int}},
         .examples = {{"ceil(7)", "7"}, {"ceil(-2147483647)", "-2147483647"}}},
        {.name = "ceil",
         .parameters = {{"x", kBigint}},
         .result = kBigint,
         .help = "x itself: a bigint is whole.",
         .forms = {{"a", "bceil_a_math_int64", &bceil_a_math_int64}},
         .examples = {{"ceil(4294967296)", "4294967296"}, {"ceil(CAST(-3 AS bigint))", "-3"}}},
        {.name = "ceil",
         .parameters = {{"x", kDecimal}},
         .result = kDecimal,
         .help = "Whole number at or above x. Goes by the stored scale alone: 2.00 has fraction digits and gives 3.",
         .forms = {{"a", "bceil_a_math_dec", &bceil_a_math_dec}},
         .examples = {{"ceil(1.1)", "2"}, {"ceil(-1.1)", "-1"}}},
        {.name = "floor",
         .parameters = {{"x", kInt}},
         .result = kInt,
         .help = "x itself: an int is whole.",
         .forms = {{"a", "bfloor_a_math_int", &bfloor_a_math_int}},
         .examples = {{"floor(7)", "7"}, {"floor(-2147483647)", "-2147483647"}}},
        {.name = "floor",
         .parameters = {{"x", kBigint}},
         .result = kBigint,
         .help = "x itself: a bigint is whole.",
         .forms = {{"a", "bfloor_a_math_bigint", &bfloor_a_math_bigint}},
         .examples = {{"floor(4294967296)", "4294967296"}, {"floor(CAST(-3 AS bigint))", "-3"}}},
        {.name = "floor",
         .parameters = {{"x", kDecimal}},
         .result = kDecimal,
         .help = "Whole number at or below x. Goes by the stored scale alone: -2.00 has fraction digits and gives -3.",
         .forms = {{"a", "bfloor_a_math_dec", &bfloor_a_math_dec}},
         .examples = {{"floor(1.1)", "1"}, {"floor(-1.1)", "-2"}}},
    };
}

}  // namespace qzengine
