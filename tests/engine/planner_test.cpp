// Which overload and which form serve a call, what is folded and what is spread.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "engine/catalog/catalog.h"
#include "engine/kernels.h"
#include "engine/parser.h"
#include "engine/plan.h"
#include "engine/value_text.h"
#include "qzbifun/forms.h"
#include "tests/engine/support.h"

namespace qzengine {
namespace {

using enum ValueType;

const std::vector<TestColumn> kColumns{{"i", kInt, {}},   {"b", kBigint, {}}, {"d", kDecimal, {}},   {"f", kDouble, {}},
                                       {"r", kFloat, {}}, {"s", kString, {}}, {"odd Name", kInt, {}}};

// ---- Exports of the tests' own: the result is a text of what they were called with, one digit for each argument
// ------------------

int32_t first_int(const bdta3_col* vector) { return values_of<int32_t>(vector)[physical_row(vector, 0)]; }
int32_t int_of(const bdta3_scalar* constant) { return reinterpret_cast<const bdta3_int*>(constant)->value; }

int32_t put(bdta3_col* result, uint32_t nrows, int32_t value) {
    for (uint32_t i = 0; i < nrows; ++i) {
        values_of<int32_t>(result)[i] = value;
        result->data->valid[i] = 1;
    }
    return 0;
}

int32_t two_aa(qz_env*, rt_memobj*, bdta3_col* x, bdta3_col* y, bdta3_col* result, uint32_t nrows) {
    return put(result, nrows, 1000 + first_int(x) * 10 + first_int(y));
}
int32_t two_av(qz_env*, rt_memobj*, bdta3_col* x, bdta3_scalar* y, bdta3_col* result, uint32_t nrows) {
    return put(result, nrows, 2000 + first_int(x) * 10 + int_of(y));
}
int32_t two_va(qz_env*, rt_memobj*, bdta3_scalar* x, bdta3_col* y, bdta3_col* result, uint32_t nrows) {
    return put(result, nrows, 3000 + int_of(x) * 10 + first_int(y));
}
int32_t condition_va(qz_env*, rt_memobj*, bdta3_scalar* x, bdta3_col* y, bdta3_col* result, uint32_t nrows) {
    return put(result, nrows, static_cast<int32_t>(x->has_value) * 10 + first_int(y));
}
int32_t condition_aa(qz_env*, rt_memobj*, bdta3_col* x, bdta3_col*, bdta3_col* result, uint32_t nrows) {
    for (uint32_t i = 0; i < nrows; ++i) {
        values_of<int32_t>(result)[i] = values_of<int32_t>(x)[physical_row(x, i)];
        result->data->valid[i] = 1;
    }
    return 0;
}
int32_t with_extra(qz_env*, rt_memobj*, bdta3_col*, bdta3_col* result, uint32_t nrows, int32_t extra) {
    return put(result, nrows, extra);
}
int32_t flag_only_lowered(qz_env*, rt_memobj*, bdta3_col*, bdta3_col* result, uint32_t nrows) {
    put(result, nrows, static_cast<int32_t>(result->all_valid));
    return 0;
}
int32_t writes_to_argument(qz_env*, rt_memobj*, bdta3_col* x, bdta3_col* result, uint32_t nrows) {
    for (uint32_t i = 0; i < nrows; ++i) values_of<int32_t>(x)[physical_row(x, i)] += 1;
    return put(result, nrows, 0);
}

const Catalog& test_catalog() {
    static const Catalog catalog = [] {
        std::vector<Function> functions;
        const auto add = [&](Function function) { functions.push_back(std::move(function)); };
        add({.name = "two",
             .parameters = {{"x", kInt}, {"y", kInt}},
             .result = kInt,
             .forms = {{"aa", "two_aa", &two_aa}, {"av", "two_av", &two_av}, {"va", "two_va", &two_va}}});
        add({.name = "no_va",
             .parameters = {{"x", kInt}, {"y", kInt}},
             .result = kInt,
             .null_rule = NullRule::kOwn,
             .forms = {{"aa", "two_aa", &two_aa}, {"av", "two_av", &two_av}}});
        add({.name = "only_av",
             .parameters = {{"x", kInt}, {"y", kInt}},
             .result = kInt,
             .forms = {{"av", "two_av", &two_av}}});
        add({.name = "moved",
             .parameters = {{"unit", kInt, Needs::kKeyword, {{"day", 4}, {"month", 7}}}, {"y", kInt}},
             .result = kInt,
             .forms = {{"va", "two_va", &two_va}}});
        add({.name = "choose",
             .parameters = {{"x", kInt, Needs::kCondition}, {"y", kInt}},
             .result = kInt,
             .null_rule = NullRule::kOwn,
             .forms = {{"va", "condition_va", &condition_va}, {"aa", "condition_aa", &condition_aa}}});
        add({.name = "extra", .parameters = {{"x", kInt}}, .result = kInt, .forms = {{"a", "with_extra", &with_extra, 42}}});
        add({.name = "flag", .parameters = {{"x", kInt}}, .result = kInt, .forms = {{"a", "flag", &flag_only_lowered}}});
        add({.name = "writes",
             .parameters = {{"x", kInt}},
             .result = kInt,
             .forms = {{"a", "writes", &writes_to_argument}},
             .changes_arguments = true});
        return Catalog(std::move(functions));
    }();
    return catalog;
}

Plan test_plan(std::string_view select, std::optional<std::string_view> where = std::nullopt) {
    const std::vector<Column> columns = columns_of(kColumns);
    return make_plan(parse_query(select, where), columns, test_catalog());
}

// The first output over the rows i = 5, 6, NULL.
std::vector<std::string> test_values(std::string_view select, std::optional<std::string_view> where = std::nullopt) {
    const Plan plan = test_plan(select, where);
    Evaluator evaluator(plan, 3);
    for (size_t k = 0; k < plan.columns_read.size(); ++k) {
        set_text(evaluator.input(k), kInt, 0, "5");
        set_text(evaluator.input(k), kInt, 1, "6");
        set_text(evaluator.input(k), kInt, 2, std::nullopt);
        values_of<int32_t>(evaluator.input(k))[2] = 1;  // what a NULL row holds is nobody's business
    }
    std::vector<std::string> values;
    const uint32_t rows = evaluator.run(3);
    for (uint32_t row = 0; row < rows; ++row) {
        const bdta3_col* result = evaluator.result(0);
        const uint32_t physical = physical_row(result, row);
        values.push_back(result->data->valid[physical] ? std::to_string(values_of<int32_t>(result)[physical]) : "NULL");
    }
    return values;
}

// The value of the first output, if it is folded.
std::string folded(std::string_view select) {
    const Plan plan = test_plan(select);
    const Node& spread = plan.nodes[plan.outputs[0].node];
    if (!std::holds_alternative<SpreadStep>(spread.what)) return "not folded";
    const Constant& constant = std::get<ConstantValue>(plan.nodes[spread.arguments[0]].what).value;
    return constant.is_null() ? "NULL" : std::to_string(std::get<int32_t>(constant.value));
}

std::string error_of(std::string_view select, std::optional<std::string_view> where = std::nullopt) {
    try {
        plan_of(select, kColumns, where);
    } catch (const QueryError& error) {
        return std::to_string(error.position()) + ": " + error.what();
    }
    return "";
}

using ::testing::ElementsAre;
using ::testing::HasSubstr;

// ---- Overloads --------------------------------------------------------------------------------------------------------------

TEST(Planner, TheOverloadOfTheArgumentsTypeIsTaken) {
    EXPECT_EQ(exports_of(plan_of("ceil(i)", kColumns)), "bceil_a_math_int");
    EXPECT_EQ(exports_of(plan_of("ceil(b)", kColumns)), "bceil_a_math_int64");
    EXPECT_EQ(exports_of(plan_of("ceil(d)", kColumns)), "bceil_a_math_dec");
    EXPECT_EQ(exports_of(plan_of("floor(b)", kColumns)), "bfloor_a_math_bigint");
    EXPECT_EQ(exports_of(plan_of("abs(d)", kColumns)), "babs_a_math_dec");
}

TEST(Planner, AMissingTypeIsCastTheCheapestWay) {
    const Plan plan = plan_of("abs(i)", kColumns);
    EXPECT_EQ(exports_of(plan), "babs_a_math_int");
    const auto cast = std::find_if(plan.nodes.begin(), plan.nodes.end(),
                                   [](const Node& node) { return std::holds_alternative<CastStep>(node.what); });
    ASSERT_NE(cast, plan.nodes.end());
    EXPECT_EQ(std::get<CastStep>(cast->what).cast->name(), "cast int to bigint");
}

TEST(Planner, TextIsNoNumberUnlessCast) {
    EXPECT_THAT(error_of("abs(s)"), HasSubstr("0: abs(string) does not exist; there is\n  abs(x bigint) -> bigint"));
    EXPECT_EQ(exports_of(plan_of("abs(CAST(s AS decimal))", kColumns)), "babs_a_math_dec");
}

TEST(Planner, ErrorsNameWhatThereIs) {
    EXPECT_EQ(error_of("absolute(i)"), "0: there is no function absolute");
    EXPECT_EQ(error_of("ceil(flor(i))"), "5: there is no function flor; did you mean floor?");
    EXPECT_THAT(error_of("abs(i, i)"), HasSubstr("0: abs with 2 arguments does not exist; there is\n  abs("));
    EXPECT_THAT(error_of("abs()"), HasSubstr("abs with 0 arguments does not exist"));
    EXPECT_EQ(error_of("abs(x)"), "4: there is no column x; the columns are i, b, d, f, r, s, odd Name");
    EXPECT_EQ(error_of("i", "s = 5"), "0: cannot compare string with int; write CAST(value AS type) for one of them");
    EXPECT_EQ(error_of("i", "d"), "0: the condition must be a condition (int), not decimal");
    EXPECT_EQ(error_of("i and s"), "6: an operand of AND must be a condition (int), not string");
    EXPECT_EQ(error_of("-s"), "0: a value of type string has no sign");
    EXPECT_EQ(error_of("1e999"), "0: the number 1e999 is too large");
}

TEST(Planner, ColumnsAreFoundInAnyCaseAndQuotedOnesAsWritten) {
    EXPECT_EQ(plan_of("\"odd Name\", I", kColumns).columns_read, (std::vector<uint32_t>{0, 6}));
    EXPECT_THAT(error_of("\"I\""), HasSubstr("there is no column I"));
    EXPECT_THROW(plan_of("x", {{"x", kInt, {}}, {"X", kInt, {}}}), QueryError);
    EXPECT_NO_THROW(plan_of("\"x\"", {{"x", kInt, {}}, {"X", kInt, {}}}));
}

TEST(Planner, OnlyTheColumnsThatAreReadAreListed) {
    EXPECT_EQ(plan_of("abs(d)", kColumns, "i > 0").columns_read, (std::vector<uint32_t>{0, 2}));
    EXPECT_TRUE(plan_of("1", kColumns).columns_read.empty());
}

// ---- Literals ---------------------------------------------------------------------------------------------------------------

TEST(Planner, ANumberTakesTheNarrowestTypeThatHoldsIt) {
    const auto type_of = [](std::string_view text) {
        const Plan plan = plan_of(text, {});
        return std::string(type_name(plan.nodes[plan.outputs[0].node].type));
    };
    EXPECT_EQ(type_of("2147483647"), "int");
    EXPECT_EQ(type_of("-2147483648"), "int");
    EXPECT_EQ(type_of("2147483648"), "bigint");
    EXPECT_EQ(type_of("-9223372036854775808"), "bigint");
    EXPECT_EQ(type_of("9223372036854775808"), "decimal");
    EXPECT_EQ(type_of("1.0"), "decimal");
    EXPECT_EQ(type_of("1e0"), "double");
    EXPECT_EQ(type_of("'1'"), "string");
    EXPECT_EQ(type_of("TRUE"), "int");
}

// ---- Forms ------------------------------------------------------------------------------------------------------------------

// The constant's type and how it is told.
std::string literal_of(std::string_view text) {
    const Plan plan = plan_of(text, {});
    const ConstantValue& constant = std::get<ConstantValue>(plan.nodes[0].what);
    return std::string(type_name(constant.value.type)) + " " + describe(constant.value);
}

TEST(Planner, LiteralsOfDatesTimesIntervalsAndBytes) {
    EXPECT_EQ(literal_of("date '2024/2/29'"), "date DATE '2024-02-29'");
    EXPECT_EQ(literal_of("TIME '10:30'"), "time TIME '10:30:00'");
    EXPECT_EQ(literal_of("TIME '10:30Z'"), "time_tz TIME '10:30:00 +00:00'");
    EXPECT_EQ(literal_of("TIMESTAMP '2024-02-29'"), "datetime TIMESTAMP '2024-02-29 00:00:00'");
    EXPECT_EQ(literal_of("TIMESTAMP '20240229T103015.5+08:00'"), "datetime_tz TIMESTAMP '2024-02-29 10:30:15.5 +08:00'");
    EXPECT_EQ(literal_of("INTERVAL '14' MONTH"), "interval_ym INTERVAL '1-2' YEAR TO MONTH");
    EXPECT_EQ(literal_of("INTERVAL '-90.05' SECOND(2,1)"), "interval_dt INTERVAL '-0 00:01:30' DAY TO SECOND");
    EXPECT_EQ(literal_of("X'00fF'"), "binary X'00FF'");
    EXPECT_EQ(literal_of("x''"), "binary X''");
}

TEST(Planner, ALiteralThatIsNoneIsSeenAtItsText) {
    struct Row {
        std::string_view text;
        size_t position;
        std::string_view message;
    };
    const Row rows[] = {
        {"1, DATE '2024-02-30'", 8, "'2024-02-30' is no date"},
        {"DATE '2024-02-29 10:30'", 5, "'2024-02-29 10:30' is no date"},
        {"DATE '10000-01-01'", 5, "'10000-01-01' is no date"},
        {"DATE ''", 5, "'' is no date"},
        {"TIME '24:00'", 5, "'24:00' is no time"},
        {"TIMESTAMP '10:30'", 10, "'10:30' is no datetime"},
        {"INTERVAL '1-12' YEAR TO MONTH", 9, "'1-12' is no interval of these fields"},
        {"INTERVAL '100' DAY(2)", 9, "the first field of '100' has more than 2 digits"},
        {"X'123'", 1, "expected hexadecimal digits, two for each byte"},
        {"X'1g'", 1, "expected hexadecimal digits, two for each byte"},
    };
    for (const Row& row : rows) {
        try {
            plan_of(row.text, {});
            FAIL() << row.text;
        } catch (const QueryError& error) {
            EXPECT_EQ(error.position(), row.position) << row.text;
            EXPECT_EQ(error.what(), row.message);
        }
    }
    EXPECT_EQ(error_of("DATE '2024-02-29' < 1"), "0: cannot compare date with int");
    EXPECT_EQ(error_of("DATE '2024-02-29' < '2024-03-01'"),
              "0: cannot compare date with string; write CAST(value AS type) for one of them");
}

TEST(Planner, TheFormFollowsWhichArgumentsAreConstant) {
    EXPECT_EQ(exports_of(test_plan("two(i, i)")), "two_aa");
    EXPECT_EQ(exports_of(test_plan("two(i, 1)")), "two_av");
    EXPECT_EQ(exports_of(test_plan("two(1, i)")), "two_va");
    EXPECT_THAT(test_values("two(i, 1)"), ElementsAre("2051", "2051", "2051"));
    EXPECT_THAT(test_values("two(1, i)"), ElementsAre("3015", "3015", "3015"));
}

TEST(Planner, AConstantThatNoFormTakesIsSpread) {
    EXPECT_EQ(exports_of(test_plan("no_va(1, i)")), "two_aa");
    EXPECT_THAT(test_values("no_va(7, i)"), ElementsAre("1075", "1075", "1075"));
}

TEST(Planner, AnArgumentThatEveryFormWantsConstantMustBeOne) {
    try {
        test_plan("only_av(i, i)");
        FAIL() << "no error";
    } catch (const QueryError& error) {
        EXPECT_STREQ(error.what(), "argument y of only_av(x int, y int) -> int must be a constant");
        EXPECT_EQ(error.position(), 11u);
    }
}

TEST(Planner, ConstantsAreFoldedThroughTheFormWithTheMostConstants) {
    EXPECT_EQ(folded("two(1, 2)"), "2012");
    EXPECT_EQ(folded("no_va(1, 2)"), "2012");
    EXPECT_EQ(folded("only_av(3, two(0, 1))"), "4031") << "2001 + 30 + 2001 - 1";
    EXPECT_EQ(folded("two(i, 2)"), "not folded");
}

TEST(Planner, AConstantNullNeverReachesAFunctionThatPassesItOn) {
    EXPECT_EQ(folded("two(i, NULL)"), "NULL");
    EXPECT_EQ(folded("two(NULL, NULL)"), "NULL");
    EXPECT_EQ(exports_of(test_plan("two(i, NULL)")), "");
    EXPECT_EQ(exports_of(test_plan("no_va(i, NULL)")), "two_av") << "its NULL rule is its own";
}

TEST(Planner, KeywordsBecomeTheirNumbers) {
    EXPECT_THAT(test_values("moved(month, i)"), ElementsAre("3075", "3075", "3075"));
    EXPECT_THAT(test_values("moved('DAY', i)"), ElementsAre("3045", "3045", "3045"));
    EXPECT_THROW(test_plan("moved(year, i)"), QueryError);
    EXPECT_THROW(test_plan("moved(4, i)"), QueryError);
}

TEST(Planner, AWordIsAColumnWhereOneHasItsName) {
    EXPECT_EQ(exports_of(plan_of("datepart(minute, d), datepart(d, 'minute')", {{"d", kDatetime, {}}})),
              "bdatepart1_va_date bdatepart_av_date");
    EXPECT_EQ(exports_of(plan_of("datepart(d, d)", {{"d", kDatetime, {}}})), "bdatepart1_va_date");
    EXPECT_EQ(error_of("datepart(minutes, i)"), "9: " + error_of("minutes").substr(3));
}

TEST(Planner, ACallOverDatesTakesTheOverloadOfItsType) {
    EXPECT_EQ(exports_of(plan_of("trunc(a, 'MM'), trunc(b, 'HH'), trunc(c, 'HH')",
                                 {{"a", kDate, {}}, {"b", kDatetimeTz, {}}, {"c", kTime, {}}})),
              "btrunc_date_av_date btrunc_datetime_av_date btrunc_time_av_date");
    const Plan mixed = plan_of("days_between(a, b)", {{"a", kDate, {}}, {"b", kDatetime, {}}});
    EXPECT_THAT(explain(mixed), HasSubstr("by cast date to datetime(#0); parameter first is datetime"));
    EXPECT_EQ(exports_of(plan_of("extract(second FROM a), extract(minute FROM a)", {{"a", kDatetime, {}}})),
              "bextract_time_ex_va_date bextract_datetime_va_date");
    EXPECT_THAT(error_of("extract(year FROM t)", std::nullopt), HasSubstr("there is no column t"));
}

TEST(Planner, AConstantConditionSaysInItsFirstWordWhetherItIsTrue) {
    EXPECT_THAT(test_values("choose(TRUE, i)"), ElementsAre("15", "15", "15"));
    EXPECT_THAT(test_values("choose(1 = 2, i)"), ElementsAre("5", "5", "5"));
    EXPECT_THAT(test_values("choose(NULL, i)"), ElementsAre("5", "5", "5"));
    EXPECT_THAT(test_values("choose(2, i)"), ElementsAre("5", "5", "5")) << "true is 1 and nothing else";
}

TEST(Planner, AConditionVectorHoldsZeroInRowsThatAreNotTrue) {
    EXPECT_THAT(test_values("choose(i, i)"), ElementsAre("0", "0", "0")) << "the NULL row held 1";
    EXPECT_THAT(test_values("choose(i = 6, i)"), ElementsAre("0", "1", "0"));
}

TEST(Planner, AnExtraArgumentIsPassedBehindTheRows) { EXPECT_THAT(test_values("extra(i)"), ElementsAre("42", "42", "42")); }

TEST(Planner, ResultsStartWithTheFlagRaised) { EXPECT_THAT(test_values("flag(i)"), ElementsAre("1", "1", "1")); }

TEST(Planner, AFunctionThatWritesToItsArgumentsIsGivenACopy) {
    EXPECT_THAT(test_values("i, writes(i), i"), ElementsAre("5", "6", "NULL"));
}

TEST(Planner, AFoldedFailureHasNoRow) {
    try {
        plan_of("abs(CAST('-9223372036854775808' AS bigint))", {});
        FAIL() << "no error";
    } catch (const EvaluationError& error) {
        EXPECT_EQ(error.failure().row, Failure::kNoRow);
        EXPECT_EQ(error.failure().code, EC_DATA_OVERFLOW);
        EXPECT_EQ(error.failure().operation, "babs_a_math_int");
        ASSERT_EQ(error.failure().stack.size(), 2u);
        EXPECT_EQ(error.failure().stack[0].name, "babs_a_process_int");
        EXPECT_EQ(error.failure().stack[1].name, "babs_a_math_int");
    }
}

TEST(Planner, ThePlanIsToldWithExportsAndReasons) {
    const std::string text = explain(test_plan("two(i, 1) AS t, no_va(2, i)", "i > 0"));
    EXPECT_THAT(text, HasSubstr("condition i > 0\n"));
    EXPECT_THAT(text, HasSubstr("output t\n"));
    EXPECT_THAT(text, HasSubstr("by two_av(#0, 1), form av; serves two(x int, y int) -> int; y is constant\n"));
    EXPECT_THAT(text, HasSubstr("x is constant and is spread, since no form takes it so"));
    EXPECT_THAT(explain(test_plan("two(1, 2)")), HasSubstr("two(1, 2) is 2012, int: folded: all arguments are constant"));
    const std::string dates = explain(plan_of("d < DATE '2024-2-29'", {{"d", kDate, {}}}));
    EXPECT_THAT(dates, HasSubstr("by compare < (#0, DATE '2024-02-29'); compared as date"));
}

}  // namespace
}  // namespace qzengine
