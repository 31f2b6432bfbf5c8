// to_char of numbers.
#include "engine/catalog/families.h"
#include "qzbifun/codes.h"
#include "qzbifun/math.h"

namespace qzengine {
namespace {

constexpr const char* kPlain = "x as text.";
constexpr const char* kWithFormat =
    "x by a number format of 1 to 75 bytes, see docs/number-formats.md; by another all is NULL.";
constexpr const char* kWithNls =
    "x by a number format of 1 to 75 bytes and NLS parameters of 1 to 128, see docs/number-formats.md.";

}  // namespace

std::vector<Function> number_to_char_functions() {
    using enum ValueType;
    return {
        {.name = "to_char",
         .parameters = {{"x", kInt}},
         .result = kString,
         .help = kPlain,
         .forms = {{"a", "bto_char_a_int_to_varchar", &bto_char_a_int_to_varchar}},
         .examples = {{"to_char(-5)", "-5"}, {"to_char(2147483647)", "2147483647"}}},
        {.name = "to_char",
         .parameters = {{"x", kBigint}},
         .result = kString,
         .help = kPlain,
         .forms = {{"a", "bto_char_a_int64_to_varchar", &bto_char_a_int64_to_varchar}},
         .examples = {{"to_char(4294967296)", "4294967296"}, {"to_char(CAST(-7 AS bigint))", "-7"}}},
        {.name = "to_char",
         .parameters = {{"x", kDecimal}},
         .result = kString,
         .help = "x as text, with all digits of its scale and one in front of the point.",
         .forms = {{"a", "bto_char_a_dec_to_varchar", &bto_char_a_dec_to_varchar}},
         .examples = {{"to_char(.50)", "0.50"}, {"to_char(-12.345)", "-12.345"}}},
        {.name = "to_char",
         .parameters = {{"x", kDouble}},
         .result = kString,
         .help = "The shortest text that reads back as x, which is below 1e126.",
         .errors = {EC_DATA_OVERFLOW},
         .forms = {{"a", "bto_char_a_double_to_varchar", &bto_char_a_double_to_varchar}},
         .examples = {{"to_char(0.1e0)", "0.1"}, {"to_char(-1e30)", "-1E+30"}}},
        {.name = "to_char",
         .parameters = {{"x", kInt}, {"format", kString}},
         .result = kString,
         .help = kWithFormat,
         .errors = {EC_INVALID_ARGUMENT},
         .forms = {{"av", "bto_char_av_int_to_varchar_with_fmt", &bto_char_av_int_to_varchar_with_fmt}},
         .examples = {{"to_char(1234, '9,999')", " 1,234"}, {"to_char(12345, '9,999')", "######"}}},
        {.name = "to_char",
         .parameters = {{"x", kBigint}, {"format", kString}},
         .result = kString,
         .help = kWithFormat,
         .errors = {EC_INVALID_ARGUMENT},
         .forms = {{"av", "bto_char_av_int64_to_varchar_with_fmt", &bto_char_av_int64_to_varchar_with_fmt}},
         .examples = {{"to_char(5000000000, 'FM9,999,999,999')", "5,000,000,000"},
                      {"to_char(CAST(-5 AS bigint), 'FM000')", "-005"}}},
        {.name = "to_char",
         .parameters = {{"x", kDouble}, {"format", kString}},
         .result = kString,
         .help = kWithFormat,
         .errors = {EC_DATA_OVERFLOW, EC_INVALID_ARGUMENT},
         .forms = {{"av", "bto_char_av_double_to_varchar_with_fmt", &bto_char_av_double_to_varchar_with_fmt}},
         .examples = {{"to_char(123.456e0, '999.9')", " 123.5"}, {"to_char(-0.25e0, 'FM0.0')", "-0.3"}}},
        {.name = "to_char",
         .parameters = {{"x", kInt}, {"format", kString}, {"nls", kString}},
         .result = kString,
         .help = kWithNls,
         .errors = {EC_INVALID_ARGUMENT, EC_NLS_PARAMETER_INVALID},
         .forms = {{"avv", "bto_char_avv_int_to_varchar_with_nls", &bto_char_avv_int_to_varchar_with_nls}},
         .examples = {{"to_char(1234, '9G999', 'NLS_NUMERIC_CHARACTERS='',.''')", " 1.234"},
                      {"to_char(-12, 'FM99L', 'NLS_CURRENCY='' kr.''')", "-12 kr."}}},
        {.name = "to_char",
         .parameters = {{"x", kBigint}, {"format", kString}, {"nls", kString}},
         .result = kString,
         .help = kWithNls,
         .errors = {EC_INVALID_ARGUMENT, EC_NLS_PARAMETER_INVALID},
         .forms = {{"avv", "bto_char_avv_int64_to_varchar_with_nls", &bto_char_avv_int64_to_varchar_with_nls}},
         .examples = {{"to_char(5000000000, 'FM9G999G999G999', 'NLS_NUMERIC_CHARACTERS='',.''')", "5.000.000.000"},
                      {"to_char(5000000000, 'FM9999999999L', 'NLS_CURRENCY=''X''')", "5000000000X"}}},
        {.name = "to_char",
         .parameters = {{"x", kDecimal}, {"format", kString}, {"nls", kString}},
         .result = kString,
         .help = kWithNls,
         .errors = {EC_INVALID_ARGUMENT, EC_NLS_PARAMETER_INVALID},
         .forms = {{"avv", "bto_char_avv_dec_to_varchar_with_nls", &bto_char_avv_dec_to_varchar_with_nls}},
         .examples = {{"to_char(1234.5, 'FM9G999D00', 'NLS_NUMERIC_CHARACTERS='',.''')", "1.234,50"},
                      {"to_char(0.5, 'FM0D9', 'NLS_NUMERIC_CHARACTERS='',.''')", "0,5"}}},
        {.name = "to_char",
         .parameters = {{"x", kDouble}, {"format", kString}, {"nls", kString}},
         .result = kString,
         .help = kWithNls,
         .errors = {EC_DATA_OVERFLOW, EC_INVALID_ARGUMENT, EC_NLS_PARAMETER_INVALID},
         .forms = {{"avv", "bto_char_avv_double_to_varchar_with_nls", &bto_char_avv_double_to_varchar_with_nls}},
         .examples = {{"to_char(1234.5e0, 'FM9G999D00', 'NLS_NUMERIC_CHARACTERS='',.''')", "1.234,50"},
                      {"to_char(-12e0, 'FM99L', 'NLS_CURRENCY='' kr.''')", "-12 kr."}}},
    };
}

}  // namespace qzengine
