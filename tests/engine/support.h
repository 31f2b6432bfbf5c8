// Evaluates expressions over columns that are written as texts, for the tests of the engine.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/evaluator.h"
#include "engine/letters.h"
#include "engine/plan.h"
#include "qzbifun/codes.h"

namespace qzengine {

// A column's values as texts; an absent one is NULL.
struct TestColumn {
    std::string name;
    ValueType type;
    std::vector<std::optional<std::string>> values;
};

std::vector<Column> columns_of(const std::vector<TestColumn>& columns);

// The plan of a select list over the columns.
Plan plan_of(std::string_view select, const std::vector<TestColumn>& columns,
             std::optional<std::string_view> where = std::nullopt);

// Stores text in a row; NULL without one.
void set_text(bdta3_col* vector, ValueType type, uint32_t row, const std::optional<std::string>& text);

// A row of the results: the values separated by |, NULL as NULL.
std::string result_text(const Plan& plan, const Evaluator& evaluator, uint32_t row);

// One such line for each row that is left.
std::vector<std::string> evaluate(std::string_view select, const std::vector<TestColumn>& columns,
                                  std::optional<std::string_view> where = std::nullopt);

// An expression of constants, as text.
std::string evaluate_text(std::string_view expression);

// The code with which evaluating an expression of constants fails; 0 when it does not.
int32_t evaluation_code(std::string_view expression);

// The exports that a plan calls, in the order of its nodes, separated by blanks.
std::string exports_of(const Plan& plan);

}  // namespace qzengine
