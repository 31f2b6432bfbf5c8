// instr and instrb.
#include "engine/catalog/families.h"
#include "qzbifun/codes.h"
#include "qzbifun/string.h"

namespace qzengine {
namespace {

constexpr const char* kInstrHelp =
    "Position of the pattern in the text, in characters from 1, or 0. A start below 0 searches from the end leftwards; the "
    "occurrence counts overlapping matches.";
constexpr const char* kInstrbHelp =
    "Position of the pattern in the text, in bytes from 1, or 0. A start below 0 searches from the end leftwards; the "
    "occurrence counts overlapping matches.";

// A constant CLOB, searched for the patterns of a column.
Function search_in_clob() {
    return {.name = "instr",
            .parameters = {{"text", ValueType::kClob}, {"pattern", ValueType::kString}},
            .result = ValueType::kInt,
            .help = "The same in a constant CLOB, read whole; it has fewer KiB than the parameter LOB_SEARCH_READ_KB.",
            .errors = {EC_LOB_READ_FAILED, EC_LOB_TOO_LONG_ROW},
            .forms = {{"va", "binstr_def2_va_lob", &binstr_def2_va_lob}},
            .examples = {{"instr(CAST('a\u4e2db' AS clob), 'b')", "3"}, {"instr(CAST('abc' AS clob), '')", "NULL"}}};
}

Function search(const char* name, const char* help, size_t arguments, std::vector<Form> forms, std::vector<Example> examples) {
    std::vector<Parameter> parameters = {{"text", ValueType::kString}, {"pattern", ValueType::kString}};
    if (arguments > 2) parameters.push_back({"start", ValueType::kInt});
    if (arguments > 3) parameters.push_back({"occurrence", ValueType::kInt});
    std::vector<int32_t> errors;
    if (arguments > 2) errors.push_back(EC_STRING_TOO_LONG);
    if (arguments > 3) errors.push_back(EC_INVALID_ARGUMENT);
    return {.name = name,
            .parameters = std::move(parameters),
            .result = ValueType::kInt,
            .help = help,
            .errors = std::move(errors),
            .forms = std::move(forms),
            .examples = std::move(examples),
            .changes_arguments = true};
}

}  // namespace

std::vector<Function> string_search_functions() {
    return {
        search("instr", kInstrHelp, 2,
               {{"aa", "binstr_def2_aa_str", &binstr_def2_aa_str},
                {"av", "binstr_def2_av_str", &binstr_def2_av_str},
                {"va", "binstr_def2_va_str", &binstr_def2_va_str}},
               {{"instr('abcabc', 'bc')", "2"}, {"instr('\u4e2d\u6587', '\u6587')", "2"}, {"instr('abc', '')", "NULL"}}),
        search_in_clob(),
        search("instr", kInstrHelp, 3, {{"avv", "binstr_def1_avv_str", &binstr_def1_avv_str}},
               {{"instr('abcabc', 'b', 3)", "5"}, {"instr('abcabc', 'b', -1)", "5"}}),
        search("instr", kInstrHelp, 4, {{"avvv", "binstr_avvv_str", &binstr_avvv_str}},
               {{"instr('abcabc', 'b', 1, 2)", "5"}, {"instr('abcabc', 'b', -1, 2)", "2"}}),
        search("instrb", kInstrbHelp, 2, {{"av", "binstrb_def2_av_str", &binstrb_def2_av_str}},
               {{"instrb('abcabc', 'bc')", "2"}, {"instrb('\u4e2d\u6587', '\u6587')", "4"}}),
        search("instrb", kInstrbHelp, 3, {{"avv", "binstrb_def1_avv_str", &binstrb_def1_avv_str}},
               {{"instrb('\u4e2d\u6587', '\u6587', 3)", "4"}, {"instrb('abcabc', 'b', -1)", "5"}}),
        search("instrb", kInstrbHelp, 4, {{"avvv", "binstrb_avvv_str", &binstrb_avvv_str}},
               {{"instrb('abcabc', 'b', 1, 2)", "5"}, {"instrb('\u4e2d\u6587\u6587', '\u6587', -1, 2)", "4"}}),
    };
}

}  // namespace qzengine
