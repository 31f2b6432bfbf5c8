#include "tests/support/case_file.h"

#include <gtest/gtest.h>

#include "qzbifun/codes.h"

namespace support {
namespace {

std::string errors_of(const std::string& text) {
    std::string errors;
    for (const CaseFile::Error& error : parse_cases(text, "test").errors)
        errors += std::to_string(error.line) + ": " + error.text + "\n";
    return errors;
}

TEST(CaseFile, ReadsFunctionsFormsRulesAndSettings) {
    const CaseFile file = parse_cases(R"(# a comment
function f(double, int) -> bigint  aa=f_aa av=f_av  valid kept   # behind the forms
forms  va=f_va
rules  failure string
rules for av va  flag copy 2 lowered  constants rows
rules for va  pushes none or f_process, self

1.5 2 -> 3
with compat_mode 3 charset 0 parameter JSON_MODE 2
with time_zone -330
NULL:1 2@255 -> NULL  in aa va
without
1 NULL -> error EC_DATA_OVERFLOW  row 7  stack f_process, self, x:-77
function g(str)  a=g
'a' -> all NULL
)",
                                      "test");
    ASSERT_TRUE(file.errors.empty()) << file.errors[0].line << ": " << file.errors[0].text;
    ASSERT_EQ(file.functions.size(), 2u);
    const CaseFunction& f = file.functions[0];
    EXPECT_EQ(f.line, 2);
    EXPECT_EQ(f.name, "f");
    EXPECT_EQ(f.result->name(), "bigint");
    ASSERT_EQ(f.forms.size(), 3u);
    EXPECT_EQ(f.forms[2].form, "va");
    EXPECT_EQ(f.forms[2].exported, "f_va");
    EXPECT_EQ(f.forms[0].rules.valid, Rules::Valid::kept);
    EXPECT_EQ(f.forms[0].rules.flag, Rules::Flag::combine);
    EXPECT_EQ(f.forms[0].rules.failure, Rules::Failure::string);
    EXPECT_EQ(f.forms[1].rules.flag, Rules::Flag::copy);
    EXPECT_EQ(f.forms[1].rules.copied_argument, 2u);
    EXPECT_TRUE(f.forms[2].rules.flag_lowered);
    EXPECT_FALSE(f.forms[2].rules.flag_reads_constants);
    EXPECT_EQ(f.forms[2].rules.constants, Rules::Constants::rows);
    EXPECT_TRUE(f.forms[1].rules.pushes.empty());
    ASSERT_EQ(f.forms[2].rules.pushes.size(), 2u);
    EXPECT_EQ(print(f.forms[2].rules.pushes[0]), "empty");
    EXPECT_EQ(print(f.forms[2].rules.pushes[1]), "-503 f_process, -503 self");

    ASSERT_EQ(f.lines.size(), 3u);
    EXPECT_EQ(f.lines[0].settings, Settings());
    EXPECT_EQ(from_cell<double>(f.lines[0].arguments[0]), 1.5);
    EXPECT_EQ(from_cell<int64_t>(f.lines[0].outcome.value), 3);
    const CaseLine& second = f.lines[1];
    EXPECT_EQ(second.line, 11);
    EXPECT_EQ(second.settings.compat_mode, 3u);
    EXPECT_EQ(second.settings.charset, 0u);
    EXPECT_EQ(second.settings.time_zone, -330);
    EXPECT_TRUE(second.settings.session);
    ASSERT_EQ(second.settings.parameters.size(), 1u);
    EXPECT_EQ(second.settings.parameters[0].first, static_cast<uint32_t>(JSON_MODE));
    EXPECT_EQ(second.arguments[0].has, 0u);
    EXPECT_TRUE(second.arguments[0].filled);
    EXPECT_EQ(second.arguments[1].has, 255u);
    EXPECT_EQ(second.outcome.kind, Outcome::Kind::null);
    EXPECT_EQ(second.only_forms, (std::vector<std::string>{"aa", "va"}));
    const Outcome& error = f.lines[2].outcome;
    EXPECT_EQ(f.lines[2].settings, Settings());
    EXPECT_FALSE(f.lines[2].arguments[1].filled);
    EXPECT_EQ(error.code, EC_DATA_OVERFLOW);
    EXPECT_EQ(error.failed_row, Outcome::Row::value);
    EXPECT_EQ(from_cell<int64_t>(error.failed_value), 7);
    EXPECT_EQ(print(error.stack), "-6102 f_process, -6102 self, -77 x");
    EXPECT_EQ(file.functions[1].lines[0].outcome.kind, Outcome::Kind::all_null);
}

TEST(CaseFile, TellsWhereALineIsMalformed) {
    EXPECT_EQ(errors_of("function f(int)  a=f\n1 -> 1\n2 => 2\n3 -> 3\n4 -> 4 5\n"),
              "3: -> should stand behind the arguments, not: =>\n5: unexpected: 5\n");
}

TEST(CaseFile, TakesNothingItDoesNotKnow) {
    const std::string head = "function f(int, double) -> str  aa=f av=g\n";
    EXPECT_EQ(errors_of(head + "1 2 -> 'x'\n"), "");
    for (const char* line : {
             "1 -> 'x'",
             "1 2 3 -> 'x'",
             "1 2",
             "1 2 ->",
             "1.5 2 -> 'x'",
             "2147483648 2 -> 'x'",
             "1 2x -> 'x'",
             "1 2 -> x",
             "1 2 -> 'x",
             "1 2 -> 'x'*",
             "1 2 -> 'x'+",
             "1 2 -> x'0'",
             "1 2 -> x'0g'",
             "1 2 -> 'x' ~1ulp",
             "1 2 -> 'x' in va",
             "1 2 -> 'x' in",
             "1@x 2 -> 'x'",
             "1 2 -> error EC_NO_SUCH_CODE stack none",
             "1 2 -> error 17 stack none",
             "1 2 -> error EC_DATA_OVERFLOW",
             "1 2 -> error EC_DATA_OVERFLOW stack",
             "1 2 -> error EC_DATA_OVERFLOW stack self,",
             "1 2 -> error EC_DATA_OVERFLOW stack self row",
             "1 2 -> setup error EC_DATA_OVERFLOW stack self row kept",
             "1 2 -> setup",
             "1 2 -> all",
             "with",
             "with nothing",
             "with compat_mode",
             "with compat_mode x",
             "with parameter NO_SUCH 1",
             "without anything",
             "rules",
             "rules flag",
             "rules flag copy 3",
             "rules flag sometimes",
             "rules for va valid kept",
             "rules colour red",
             "rules pushes",
             "rules pushes f,",
             "rules pushes none or",
             "rules pushes f:x",
             "forms aaa=h",
             "forms vv=h",
             "forms ab=h",
             "forms aa=",
             "forms ai=h",
             "forms aa:=h",
             "forms aa:x=h",
             "forms aa=h strange",
             "function",
             "function g",
             "function g(",
             "function g(text)  a=g",
             "function g(int) -> text  a=g",
             "function g(int int)  aa=g",
         }) {
        EXPECT_NE(errors_of(head + "1 2 -> 'x'\n" + line + "\n"), "") << line;
    }
    EXPECT_NE(errors_of(""), "");
    EXPECT_NE(errors_of("1 -> 1\n"), "");
    EXPECT_NE(errors_of("function f(int)  a=f\n"), "");
    EXPECT_NE(errors_of("function f(int)\n1 -> 1\n"), "");
    EXPECT_NE(read_cases("/nonexistent/x.case").errors.size(), 0u);
}

TEST(CaseFile, HasRulesAndFormsInFrontOfTheCases) {
    EXPECT_NE(errors_of("function f(int)  a=f\n1 -> 1\nrules valid kept\n"), "");
    EXPECT_NE(errors_of("function f(int)  a=f\n1 -> 1\nforms a=g\n"), "");
}

}  // namespace
}  // namespace support
