// position, locate, find_in_set.
#include "engine/catalog/families.h"
#include "qzbifun/codes.h"
#include "qzbifun/string.h"

namespace qzengine {

std::vector<Function> string_position_functions() {
    using enum ValueType;
    return {
        {.name = "position",
         .parameters = {{"pattern", kString}, {"text", kString}},
         .result = kInt,
         .null_rule = NullRule::kOwn,
         .help = "The byte of the text at which the pattern first stands, or 0; 1 in every row for an empty or NULL pattern.",
         .forms = {{"va", "bposition_va_str", &bposition_va_str}},
         .examples = {{"POSITION('b' IN 'abc')", "2"}, {"position('中', 'é中')", "3"}}},
        {.name = "locate",
         .parameters = {{"pattern", kString}, {"text", kString}, {"start", kInt}},
         .result = kInt,
         .help = "The character at which the pattern first stands, at or behind the character start, or 0; exact in case.",
         .forms = {{"aav", "blocate_aav_str", &blocate_aav_str},
                   {"avv", "blocate_avv_str", &blocate_avv_str},
                   {"vav", "blocate_vav_str", &blocate_vav_str}},
         .examples = {{"locate('b', 'abcb', 3)", "4"}, {"locate('', 'abc', 4)", "4"}}},
        {.name = "locate",
         .parameters = {{"pattern", kString}, {"text", kString}},
         .result = kInt,
         .help = "The character at which the pattern first stands, or 0; exact in case.",
         .forms = {{"aa", "blocate_def_aa_str", &blocate_def_aa_str},
                   {"av", "blocate_def_av_str", &blocate_def_av_str},
                   {"va", "blocate_def_va_str", &blocate_def_va_str}},
         .examples = {{"locate('中', 'é中')", "2"}, {"locate('A', 'abc')", "0"}}},
        {.name = "locate",
         .parameters = {{"pattern", kString}, {"text", kClob}, {"start", kInt}},
         .result = kInt,
         .help = "The character of a CLOB at which the pattern first stands, at or behind the character start, or 0.",
         .errors = {EC_LOB_TOO_LONG, EC_LOB_TOO_LONG_ROW, EC_LOB_READ_FAILED},
         .forms = {{"aav", "blocate_aav_str_clob", &blocate_aav_str_clob},
                   {"avv", "blocate_avv_str_clob", &blocate_avv_str_clob},
                   {"vav", "blocate_vav_str_clob", &blocate_vav_str_clob}},
         .examples = {{"locate('b', CAST('abcb' AS clob), 3)", "4"}, {"locate('', CAST('abc' AS clob), 5)", "0"}}},
        {.name = "locate",
         .parameters = {{"pattern", kString}, {"text", kClob}},
         .result = kInt,
         .help = "The character of a CLOB at which the pattern first stands, or 0.",
         .errors = {EC_LOB_TOO_LONG, EC_LOB_TOO_LONG_ROW, EC_LOB_READ_FAILED},
         .forms = {{"aa", "blocate_def_aa_str_clob", &blocate_def_aa_str_clob},
                   {"av", "blocate_def_av_str_clob", &blocate_def_av_str_clob},
                   {"va", "blocate_def_va_str_clob", &blocate_def_va_str_clob}},
         .examples = {{"locate('中', CAST('é中' AS clob))", "2"}, {"locate('d', CAST('abc' AS clob))", "0"}}},
        {.name = "find_in_set",
         .parameters = {{"text", kString}, {"list", kString}},
         .result = kInt,
         .null_rule = NullRule::kOwn,
         .help =
             "The number of the first element of the list between commas that is the text, or 0. A NULL list is an empty one.",
         .forms = {{"av", "bfind_in_set_av_str", &bfind_in_set_av_str}},
         .examples = {{"find_in_set('b', 'a,b,c')", "2"}, {"find_in_set('ab', 'a,b')", "0"}}},
    };
}

}  // namespace qzengine
