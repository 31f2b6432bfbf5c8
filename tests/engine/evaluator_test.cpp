// Values: selections, NULLs, three-valued logic, comparisons, failures and the rows they name.
#include "engine/evaluator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

#include "tests/engine/support.h"

namespace qzengine {
namespace {

using enum ValueType;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr auto kNull = std::nullopt;

const TestColumn kNumbers{"n", kBigint, {"-3", "0", kNull, "7", "-9223372036854775807"}};
const TestColumn kPrices{"p", kDecimal, {"1.10", kNull, "-2.00", "2.00", "-0.5"}};

TEST(Evaluator, NullRowsStayNullAndOthersAreComputed) {
    EXPECT_THAT(evaluate("abs(n)", {kNumbers}), ElementsAre("3", "0", "NULL", "7", "9223372036854775807"));
    EXPECT_THAT(evaluate("ceil(p), floor(p)", {kPrices}), ElementsAre("2|1", "NULL|NULL", "-2|-3", "3|2", "0|-1"));
}

TEST(Evaluator, AConditionLeavesRowsAndCallsReadThroughIt) {
    EXPECT_THAT(evaluate("n, abs(n), ceil(p)", {kNumbers, kPrices}, "n < 0"),
                ElementsAre("-3|3|2", "-9223372036854775807|9223372036854775807|0"));
    EXPECT_THAT(evaluate("abs(n)", {kNumbers}, "n is null"), ElementsAre("NULL"));
    EXPECT_THAT(evaluate("n", {kNumbers}, "n > 100"), IsEmpty());
    EXPECT_THAT(evaluate("n", {kNumbers}, "FALSE"), IsEmpty());
    EXPECT_THAT(evaluate("n", {kNumbers}, "NULL"), IsEmpty());
    EXPECT_EQ(evaluate("n", {kNumbers}, "TRUE").size(), 5u);
    EXPECT_THAT(evaluate("1", {kNumbers}, "n > 0"), ElementsAre("1"));
}

TEST(Evaluator, EverythingIsReadThroughTheSelection) {
    EXPECT_THAT(evaluate("n, -n, n = 7, n is null, n < 0 or n > 5, not n = 7, cast(n as decimal), cast(n as string)",
                         {kNumbers}, "n is null or n >= 0"),
                ElementsAre("0|0|0|0|0|1|0|0", "NULL|NULL|NULL|1|NULL|NULL|NULL|NULL", "7|-7|1|0|1|0|7|7"));
}

TEST(Evaluator, RunsAreIndependentOfTheRunBefore) {
    const Plan plan = plan_of("abs(n), cast(n as string)", {kNumbers}, "n <> 1");
    Evaluator evaluator(plan, 4);
    const auto fill = [&](const std::vector<std::optional<std::string>>& values) {
        evaluator.input(0)->all_valid = 1;
        for (uint32_t row = 0; row < values.size(); ++row) set_text(evaluator.input(0), kBigint, row, values[row]);
    };
    fill({"1", "-2", kNull, "-4"});
    EXPECT_EQ(evaluator.run(4), 2u);
    fill({"-5", "-6"});
    EXPECT_EQ(evaluator.run(2), 2u);
    EXPECT_EQ(evaluator.input(0)->sel, nullptr) << "all rows were left";
    EXPECT_EQ(values_of<int64_t>(evaluator.result(0))[1], 6);
    EXPECT_EQ(evaluator.run(0), 0u);
}

// ---- Three-valued logic -----------------------------------------------------------------------------------------------------

TEST(Evaluator, ThreeValuedLogicIsAsTheTablesHaveIt) {
    const TestColumn x{"x", kInt, {"1", "1", "1", "0", "0", "0", kNull, kNull, kNull}};
    const TestColumn y{"y", kInt, {"1", "0", kNull, "1", "0", kNull, "1", "0", kNull}};
    EXPECT_THAT(evaluate("x and y", {x, y}), ElementsAre("1", "0", "NULL", "0", "0", "0", "NULL", "0", "NULL"));
    EXPECT_THAT(evaluate("x or y", {x, y}), ElementsAre("1", "1", "1", "1", "0", "NULL", "1", "NULL", "NULL"));
    EXPECT_THAT(evaluate("not y", {x, y}), ElementsAre("0", "1", "NULL", "0", "1", "NULL", "0", "1", "NULL"));
    EXPECT_THAT(evaluate("x and y and TRUE", {x, y}), ElementsAre("1", "0", "NULL", "0", "0", "0", "NULL", "0", "NULL"));
    EXPECT_THAT(evaluate("x or y or NULL", {x, y}), ElementsAre("1", "1", "1", "1", "NULL", "NULL", "1", "NULL", "NULL"));
    EXPECT_THAT(evaluate("x is null, y is not null", {x, y}),
                ElementsAre("0|1", "0|1", "0|0", "0|1", "0|1", "0|0", "1|1", "1|1", "1|0"));
}

TEST(Evaluator, AConditionIsTrueWhenItIsOneAndNothingElse) {
    const TestColumn x{"x", kInt, {"1", "2", "-1", "0", kNull}};
    EXPECT_THAT(evaluate("x", {x}, "x"), ElementsAre("1"));
    EXPECT_THAT(evaluate("not x", {x}), ElementsAre("0", "1", "1", "1", "NULL"));
    EXPECT_THAT(evaluate("x or FALSE", {x}), ElementsAre("1", "0", "0", "0", "NULL"));
}

TEST(Evaluator, LogicOfConstantsIsFolded) {
    EXPECT_EQ(evaluate_text("TRUE and NULL"), "NULL");
    EXPECT_EQ(evaluate_text("FALSE and NULL"), "0");
    EXPECT_EQ(evaluate_text("TRUE or NULL"), "1");
    EXPECT_EQ(evaluate_text("not NULL"), "NULL");
    EXPECT_EQ(evaluate_text("NULL is null"), "1");
    EXPECT_EQ(evaluate_text("1 = NULL"), "NULL");
    EXPECT_EQ(evaluate_text("NULL = NULL"), "NULL");
}

// ---- Comparisons ------------------------------------------------------------------------------------------------------------

TEST(Evaluator, EveryOperatorInEveryFormOfItsOperands) {
    const TestColumn x{"x", kBigint, {"1", "2", "3", kNull}};
    const TestColumn y{"y", kBigint, {"2", "2", "2", "2"}};
    const std::vector<std::pair<std::string, std::vector<std::string>>> expected{
        {"=", {"0", "1", "0", "NULL"}},  {"<>", {"1", "0", "1", "NULL"}}, {"<", {"1", "0", "0", "NULL"}},
        {"<=", {"1", "1", "0", "NULL"}}, {">", {"0", "0", "1", "NULL"}},  {">=", {"0", "1", "1", "NULL"}}};
    for (const auto& [operation, values] : expected) {
        EXPECT_EQ(evaluate("x " + operation + " y", {x, y}), values) << operation;
        EXPECT_EQ(evaluate("x " + operation + " 2", {x}), values) << operation;
    }
    EXPECT_THAT(evaluate("2 < x", {x}), ElementsAre("0", "0", "1", "NULL"));
}

TEST(Evaluator, NumbersOfDifferentTypesAreComparedInTheWiderOne) {
    EXPECT_EQ(evaluate_text("2 = 2.00"), "1");
    EXPECT_EQ(evaluate_text("9223372036854775807 < 9223372036854775807.5"), "1");
    EXPECT_EQ(evaluate_text("1.5 = 1.5e0"), "1");
    EXPECT_EQ(evaluate_text("0.1 = CAST(0.1 AS float)"), "0") << "the float nearest to 0.1 is not the double nearest to it";
    EXPECT_EQ(evaluate_text("CAST(0.1 AS float) = CAST(0.1 AS float)"), "1");
}

TEST(Evaluator, NanIsUnequalToEverything) {
    const TestColumn x{"x", kDouble, {"nan", "1"}};
    EXPECT_THAT(evaluate("x = x, x <> x, x < 2, x >= 0", {x}), ElementsAre("0|1|0|0", "1|0|1|1"));
}

TEST(Evaluator, StringsAreComparedAsIfFilledUpWithBlanks) {
    EXPECT_EQ(evaluate_text("'ab' = 'ab  '"), "1");
    EXPECT_EQ(evaluate_text("'ab' < 'ab!'"), "1");
    EXPECT_EQ(evaluate_text("'' = '   '"), "1");
    EXPECT_EQ(evaluate_text("CAST('ab' AS string) > 'ab '"), "0");
    const std::string longer(60, 'x');
    const TestColumn s{"s", kString, {longer, longer + " ", "x", kNull}};
    EXPECT_THAT(evaluate("s = '" + longer + "'", {s}), ElementsAre("1", "1", "0", "NULL"));
}

// ---- Failures ---------------------------------------------------------------------------------------------------------------

// Bigints of which the given rows are the lowest one, that has no magnitude.
TestColumn with_lowest(uint32_t rows, std::initializer_list<uint32_t> lowest) {
    TestColumn column{"n", kBigint, std::vector<std::optional<std::string>>(rows, "1")};
    for (uint32_t row : lowest) column.values[row] = std::to_string(std::numeric_limits<int64_t>::min());
    return column;
}

Failure failure_of(std::string_view select, const std::vector<TestColumn>& columns,
                   std::optional<std::string_view> where = std::nullopt) {
    try {
        evaluate(select, columns, where);
    } catch (const EvaluationError& error) {
        return error.failure();
    }
    ADD_FAILURE() << "no failure";
    return {};
}

TEST(Evaluator, AFailureNamesItsRowWhereverItStands) {
    for (uint32_t row : {0u, 1u, 499u, 998u, 999u}) {
        const Failure failure = failure_of("abs(n)", {with_lowest(1000, {row})});
        EXPECT_EQ(failure.row, row);
        EXPECT_EQ(failure.call, "abs(n)");
        EXPECT_EQ(failure.operation, "babs_a_math_int");
        EXPECT_EQ(failure.code, EC_DATA_OVERFLOW);
        EXPECT_THAT(failure.arguments, ElementsAre("n = -9223372036854775808"));
        ASSERT_EQ(failure.stack.size(), 2u) << "looking for the row leaves nothing on the stack";
    }
    EXPECT_EQ(failure_of("abs(n)", {with_lowest(1000, {700, 300, 999})}).row, 300) << "the first one";
}

TEST(Evaluator, AFailureBehindAConditionNamesTheRowOfTheBatch) {
    TestColumn number{"k", kBigint, {}};
    for (int i = 0; i < 100; ++i) number.values.push_back(std::to_string(i));
    const std::vector<TestColumn> columns{with_lowest(100, {20, 60}), number};
    EXPECT_EQ(failure_of("abs(n)", columns, "k > 30").row, 60);
    EXPECT_EQ(failure_of("ceil(abs(-n))", columns, "k > 30").row, 60);
    EXPECT_EQ(failure_of("k", columns, "abs(n) > 0").row, 20) << "the condition is computed for all rows";
    EXPECT_EQ(evaluate("abs(n)", columns, "k > 60").size(), 39u) << "rows that are not selected do not fail";
}

TEST(Evaluator, CastsAndSignsNameTheirRowsToo) {
    const Failure sign = failure_of("-n", {with_lowest(10, {4})});
    EXPECT_EQ(sign.row, 4);
    EXPECT_EQ(sign.code, EC_DATA_OVERFLOW);
    const TestColumn text{"s", kString, {"1", "2x", "3"}};
    const Failure cast = failure_of("cast(s as int)", {text});
    EXPECT_EQ(cast.row, 1);
    EXPECT_EQ(cast.operation, "cast string to int");
    EXPECT_THAT(cast.arguments, ElementsAre("s = '2x'"));
    EXPECT_EQ(failure_of("cast(s as int)", {text}, "s <> '1'").row, 1);
}

TEST(Evaluator, AnEvaluatorGoesOnBehindAFailure) {
    const Plan plan = plan_of("abs(n)", {kNumbers});
    Evaluator evaluator(plan, 2);
    set_text(evaluator.input(0), kBigint, 0, "-9223372036854775808");
    set_text(evaluator.input(0), kBigint, 1, "-1");
    EXPECT_THROW(evaluator.run(2), EvaluationError);
    set_text(evaluator.input(0), kBigint, 0, "-5");
    EXPECT_EQ(evaluator.run(2), 2u);
    EXPECT_EQ(values_of<int64_t>(evaluator.result(0))[0], 5);
}

TEST(Evaluator, AWholeBatchOfTheMostRows) {
    const Plan plan = plan_of("abs(n)", {kNumbers}, "n < 0");
    Evaluator evaluator(plan, kMaxBatchRows);
    bdta3_col* n = evaluator.input(0);
    for (uint32_t row = 0; row < kMaxBatchRows; ++row) {
        n->data->valid[row] = 1;
        values_of<int64_t>(n)[row] = row % 3 == 0 ? -int64_t{row} : row;
    }
    n->all_valid = 1;
    // Row 0 is 0, so that 65,535 / 3 of the rows are below it.
    ASSERT_EQ(evaluator.run(kMaxBatchRows), 21845u);
    EXPECT_EQ(values_of<int64_t>(evaluator.result(0))[21844], 65535);
}

TEST(Evaluator, ExhaustionOfMemoryIsBadAlloc) {
    const Plan plan = plan_of("cast(n as string), abs(n)", {kNumbers}, "n > 0");
    int64_t allocations = 0;
    for (;; ++allocations) {
        host_memory_fail_after(allocations);
        try {
            Evaluator evaluator(plan, 100);
            host_memory_fail_after(-1);
            break;
        } catch (const std::bad_alloc&) {
            host_memory_fail_after(-1);
        }
        ASSERT_LT(allocations, 1000);
    }
    EXPECT_GT(allocations, 5);
}

// overlaps compares with what stands in a NULL row. Two rows of the same batch size, one batch after the other: what the first
// left in the vectors must not show in the second.
TEST(Evaluator, WhatANullRowHeldInAnEarlierBatchDoesNotShow) {
    const std::vector<TestColumn> columns{{"a", ValueType::kString, {"2024-03-01"}}, {"b", ValueType::kString, {std::nullopt}}};
    const Plan plan = plan_of("overlaps(CAST(a AS date), NULL, CAST(b AS date), DATE '2024-01-01')", columns);
    const auto result_of = [&](Evaluator& evaluator, const char* second) {
        for (size_t i = 0; i < plan.columns_read.size(); ++i) {
            const bool first = plan.columns_read[i] == 0;
            evaluator.input(i)->all_valid = 1;
            set_text(evaluator.input(i), ValueType::kString, 0,
                     first               ? std::optional<std::string>("2024-03-01")
                     : second != nullptr ? std::optional<std::string>(second)
                                         : std::nullopt);
        }
        EXPECT_EQ(evaluator.run(1), 1u);
        EXPECT_EQ(evaluator.result(0)->data->valid[0], 1);
        return values_of<int32_t>(evaluator.result(0))[0];
    };
    Evaluator fresh(plan, 1);
    Evaluator used(plan, 1);
    result_of(used, "2024-12-31");
    EXPECT_EQ(result_of(used, nullptr), result_of(fresh, nullptr));
    EXPECT_EQ(result_of(used, nullptr), 0) << "the point 2024-03-01 lies behind a period from zeros";
}

}  // namespace
}  // namespace qzengine
