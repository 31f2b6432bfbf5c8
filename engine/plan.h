/*
 * Plans: the steps by which a query is evaluated over batches of rows.
 *
 * A plan is a list of nodes. A node's arguments stand before it, so that evaluating the nodes in order is evaluating the query.
 * Each node but a constant yields a vector. The condition's nodes come first; the rows that it leaves become the selection of
 * the input columns before the nodes behind it are evaluated. A plan does not change once it is made: threads share it.
 */
#ifndef QZENGINE_PLAN_H
#define QZENGINE_PLAN_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "engine/catalog/casts.h"
#include "engine/catalog/function.h"
#include "engine/constant.h"
#include "engine/expression.h"
#include "engine/host_objects.h"
#include "engine/value_type.h"

namespace qzengine {

class Catalog;

struct Column {
    std::string name;
    ValueType type;
    uint32_t characters = 0;  // of char(n), otherwise 0

    DeclaredType declared() const { return {type, characters}; }
};

using NodeId = uint32_t;

struct ColumnRead {
    uint32_t column;  // of the input
};

struct ConstantValue {
    Constant value;
    bool as_condition = false;  // its record's has_value word says whether it is true
};

struct CallStep {
    const Function* function;
    const Form* form;
};

struct CastStep {
    const Cast* cast;
};

// A string made a char(n), or with 0 characters a string with its implied blanks written out.
struct CharStep {
    uint32_t characters;
};

// A constant in every row of a vector.
struct SpreadStep {};

// The argument's rows made one dense vector of its own, for a function that may write to it or looks at NULL rows, which hold
// zeros then: what a vector held in an earlier batch must not decide.
struct CopyStep {};

// A condition of which every row that is not true holds 0, NULL rows too.
struct ConditionStep {};

// Both arguments are of one type; either may be a constant, not both.
struct CompareStep {
    ComparisonOperator operation;
};

struct LogicStep {
    LogicOperator operation;
};

struct NullTestStep {
    bool negated;
};

struct NegateStep {};

struct Node {
    ValueType type;
    std::variant<ColumnRead, ConstantValue, CallStep, CastStep, CharStep, SpreadStep, CopyStep, ConditionStep, CompareStep,
                 LogicStep, NullTestStep, NegateStep>
        what;
    std::vector<NodeId> arguments;
    std::string text;         // the expression that the node computes, as written
    std::string reason;       // why it is computed so, for people
    uint32_t characters = 0;  // of char(n), otherwise 0

    DeclaredType declared() const { return {type, characters}; }
};

struct Output {
    std::string name;
    NodeId node;
};

struct Plan {
    std::vector<Node> nodes;
    std::vector<Output> outputs;
    std::optional<NodeId> condition;
    NodeId condition_end = 0;            // nodes before it belong to the condition
    std::vector<uint32_t> columns_read;  // input columns that the plan reads, ascending
};

// QueryError for a query that the columns or the catalog do not allow, EvaluationError when folding its constants fails.
Plan make_plan(const Query& query, std::span<const Column> columns, const Catalog& catalog,
               const SessionSettings& settings = {});

// The plan in lines for people: each call with the exported function that serves it, and why.
std::string explain(const Plan& plan);

}  // namespace qzengine

#endif
