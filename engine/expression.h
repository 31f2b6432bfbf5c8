/*
 * Expressions as they are written: the tree that the parser makes and the planner reads.
 */
#ifndef QZENGINE_EXPRESSION_H
#define QZENGINE_EXPRESSION_H

#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "engine/value_type.h"

namespace qzengine {

struct NullLiteral {};

struct BooleanLiteral {
    bool value;
};

// A number as written, with the sign of a minus before it. Its type follows from how it is written.
struct NumberLiteral {
    enum class Kind { kInteger, kDecimal, kDouble };
    Kind kind;
    std::string text;
};

struct StringLiteral {
    std::string text;
};

// DATE, TIME or TIMESTAMP before a text.
struct DatetimeLiteral {
    enum class Kind { kDate, kTime, kTimestamp };
    Kind kind;
    std::string text;
    size_t text_begin;  // where the text stands in the source
};

// INTERVAL, a text, and the fields that it holds.
struct IntervalLiteral {
    ValueType type;
    std::string text;
    size_t text_begin;
    int32_t qualifier;  // see qzhost/interval.h
};

// X before hexadecimal digits.
struct BinaryLiteral {
    std::string digits;
    size_t text_begin;
};

// A name alone: a column, or a keyword where a parameter wants one.
struct Name {
    std::string name;
    bool quoted;
};

struct Call {
    std::string function;
};

struct CastTo {
    DeclaredType type;
};

enum class ComparisonOperator { kEqual, kNotEqual, kLess, kLessEqual, kGreater, kGreaterEqual };

struct Comparison {
    ComparisonOperator operation;
};

enum class LogicOperator { kAnd, kOr, kNot };

// AND and OR have two or more operands, NOT has one.
struct Logic {
    LogicOperator operation;
};

struct NullTest {
    bool negated;  // IS NOT NULL
};

struct Negation {};  // unary minus

struct Expression {
    size_t begin = 0;  // bytes of the source text
    size_t end = 0;
    std::variant<NullLiteral, BooleanLiteral, NumberLiteral, StringLiteral, DatetimeLiteral, IntervalLiteral, BinaryLiteral,
                 Name, Call, CastTo, Comparison, Logic, NullTest, Negation>
        what;
    std::vector<Expression> arguments;
};

// One result column.
struct Selected {
    Expression expression;
    std::string name;  // behind AS, or the expression as written
};

// What is asked of a table: the columns to compute, and the condition of the rows to compute them for. Positions in an
// expression count in the text that it stands in.
struct Query {
    std::string select_text;
    std::vector<Selected> selected;
    std::string condition_text;
    std::optional<Expression> condition;
};

}  // namespace qzengine

#endif
