// concat, the lengths, upper, lower, initcap, reverse, repeat and space.
#include "engine/catalog/families.h"
#include "qzbifun/codes.h"
#include "qzbifun/string.h"

namespace qzengine {
namespace {

Function of_string(const char* name, const char* help, ValueType result, Form form, std::vector<Example> examples) {
    return {.name = name,
            .parameters = {{"x", ValueType::kString}},
            .result = result,
            .help = help,
            .forms = {std::move(form)},
            .examples = std::move(examples)};
}

}  // namespace

std::vector<Function> string_basics_functions() {
    using enum ValueType;
    return {
        {.name = "concat",
         .parameters = {{"x", kString}, {"y", kString}},
         .result = kString,
         .null_rule = NullRule::kOwn,
         .help =
             "x and y behind it, of 32767 bytes at most; NULL counts as nothing, and is the result only where both are NULL.",
         .errors = {EC_STRING_TOO_LONG, EC_INVALID_ARGUMENT},
         .forms = {{"aa", "bconcat_aa_str", &bconcat_aa_str},
                   {"av", "bconcat_av_str", &bconcat_av_str},
                   {"va", "bconcat_va_str", &bconcat_va_str}},
         .examples = {{"concat('ab', 'cd')", "abcd"}, {"concat('ab', NULL)", "ab"}}},
        {.name = "length",
         .parameters = {{"x", kString}},
         .result = kInt,
         .null_rule = NullRule::kOwn,
         .help = "Characters of x without its implied blanks; NULL for an empty text, 0 in compatibility modes 3 and 5.",
         .forms = {{"a", "blength_a_str", &blength_a_str}},
         .examples = {{"length('é中a')", "3"}, {"length('')", "NULL"}}},
        of_string("lengthb",
                  "Bytes of x with its implied blanks; NULL for an empty text, 0 in compatibility modes 3, 4, 5 and 7.", kInt,
                  {"a", "blengthb_a_str", &blengthb_a_str}, {{"lengthb('é中a')", "6"}, {"lengthb(space(3))", "3"}}),
        {.name = "lengthb",
         .parameters = {{"x", kBlob}},
         .result = kBigint,
         .help = "Bytes of x as its locator tells them; -1 where they are not known.",
         .forms = {{"a", "blengthb_blob_a_str", &blengthb_blob_a_str}},
         .examples = {{"lengthb(CAST(X'00FF00' AS blob))", "3"},
                      {"lengthb(CAST(X'' AS blob))", "0"},
                      {"lengthb(CAST(CAST(repeat('é', 5000) AS binary) AS blob))", "10000"},
                      {"lengthb(CAST(NULL AS blob))", "NULL"}}},
        of_string("length_space",
                  "Characters of x with its implied blanks; NULL for an empty text, 0 in compatibility modes 3, 4, 5 and 7.",
                  kInt, {"a", "blength_space_a_str", &blength_space_a_str},
                  {{"length_space('é中a')", "3"}, {"length_space(space(3))", "3"}}),
        of_string("bitlength", "8 times the bytes of x with its implied blanks.", kInt,
                  {"a", "bbitlength_a_str", &bbitlength_a_str}, {{"bitlength('abc')", "24"}, {"bitlength('')", "0"}}),
        of_string("upper", "x in upper case, character by character.", kString, {"a", "bupper_a_str", &bupper_a_str},
                  {{"upper('Straße, été')", "STRAßE, ÉTÉ"}, {"upper('abc1')", "ABC1"}}),
        of_string("nls_upper", "x in upper case, character by character.", kString, {"a", "bnls_upper_a", &bnls_upper_a},
                  {{"nls_upper('Straße, été')", "STRAßE, ÉTÉ"}, {"nls_upper('abc1')", "ABC1"}}),
        of_string("lower", "x in lower case, character by character.", kString, {"a", "blower_a_str", &blower_a_str},
                  {{"lower('ÉTÉ')", "été"}, {"lower('ABC1')", "abc1"}}),
        of_string("initcap",
                  "x in lower case, with ASCII letters raised at the start and behind all but ASCII letters and digits.",
                  kString, {"a", "binitcap_a_str", &binitcap_a_str},
                  {{"initcap('o''neil AND 2nd')", "O'Neil And 2nd"}, {"initcap('ÉTÉ')", "éTé"}}),
        {.name = "reverse",
         .parameters = {{"x", kString}},
         .result = kString,
         .help = "The characters of x from the last to the first.",
         .errors = {EC_CHAR_INVALID},
         .forms = {{"a", "breverse_a_str", &breverse_a_str}},
         .examples = {{"reverse('aé中')", "中éa"}, {"reverse(' ab')", "ba "}}},
        {.name = "repeat",
         .parameters = {{"x", kString}, {"n", kInt}},
         .result = kString,
         .help = "x n times, of 32767 bytes at most.",
         .errors = {EC_INVALID_ARGUMENT},
         .forms = {{"av", "brepeatstr_av_str", &brepeatstr_av_str}},
         .examples = {{"repeat('ab', 3)", "ababab"}, {"repeat('ab', 0)", ""}}},
        {.name = "space",
         .parameters = {{"n", kInt}},
         .result = kString,
         .help = "n blanks, 32767 at most.",
         .errors = {EC_INVALID_ARGUMENT},
         .forms = {{"a", "bspace_a_str", &bspace_a_str}},
         .examples = {{"concat(space(2), 'a')", "  a"}, {"lengthb(space(32767))", "32767"}}},
    };
}

}  // namespace qzengine
