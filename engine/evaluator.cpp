#include "engine/evaluator.h"

#include <fmt/format.h>

#include <array>
#include <cstring>
#include <new>
#include <utility>

#include "engine/kernels.h"
#include "engine/value_text.h"
#include "qzbifun/codes.h"
#include "qzhost/column.h"

namespace qzengine {
namespace {

// The rows of a batch; the condition's selection is of 16-bit row numbers.
static_assert(kMaxBatchRows - 1 <= UINT16_MAX);

// What a value of the row is called in a message: the expression, unless that says it all.
std::string describe_argument(const Node& node, const Constant& value) {
    const std::string text = describe(value);
    return text == node.text ? text : fmt::format("{} = {}", node.text, text);
}

void clear_null_rows(bdta3_col* vector, uint32_t width, uint32_t nrows) {
    for (uint32_t i = 0; i < nrows; ++i) {
        if (vector->data->valid[i] == 0) std::memset(static_cast<char*>(vector->data->values) + size_t{i} * width, 0, width);
    }
}

}  // namespace

Evaluator::Evaluator(const Plan& plan, uint32_t rows, const SessionSettings& settings)
    : plan_(plan), environment_(settings), vectors_(plan.nodes.size()), records_(plan.nodes.size()) {
    for (NodeId id = 0; id < plan.nodes.size(); ++id) {
        const Node& node = plan.nodes[id];
        if (const ConstantValue* constant = std::get_if<ConstantValue>(&node.what)) {
            Constant value = constant->value;
            if (constant->as_condition) value.value = value.is_true() ? Value(int32_t{1}) : Value();
            records_[id] = std::make_unique<ConstantRecord>(value);
            continue;
        }
        vectors_[id] = make_vector(environment_, node.type, rows);
        if (!std::holds_alternative<SpreadStep>(node.what)) continue;
        const Constant& constant = std::get<ConstantValue>(plan.nodes[node.arguments[0]].what).value;
        for (uint32_t row = 0; row < rows; ++row) store_constant(constant, vectors_[id].get(), row);
        vectors_[id]->all_valid = !constant.is_null();
    }
    for (uint32_t column : plan.columns_read) {
        for (NodeId id = 0; id < plan.nodes.size(); ++id) {
            const ColumnRead* read = std::get_if<ColumnRead>(&plan.nodes[id].what);
            if (read != nullptr && read->column == column) inputs_.push_back(vectors_[id].get());
        }
    }
    if (plan.condition) selected_.resize(rows);
}

uint32_t Evaluator::run(uint32_t nrows) {
    uint32_t rows = nrows;
    narrowed_ = false;
    for (bdta3_col* input : inputs_) input->sel = nullptr;
    for (NodeId id = 0; id < plan_.nodes.size(); ++id) {
        if (plan_.condition && id == plan_.condition_end) rows = apply_condition(nrows);
        evaluate(id, rows);
    }
    // Nothing but the condition and columns that it reads too.
    if (plan_.condition && plan_.condition_end == plan_.nodes.size()) rows = apply_condition(nrows);
    return rows;
}

// Keeps the rows that are true: from here on the inputs are read through them, without a copy.
uint32_t Evaluator::apply_condition(uint32_t nrows) {
    const uint32_t count = select_true(vector_of(*plan_.condition), nrows, selected_.data());
    narrowed_ = count < nrows;
    if (!narrowed_) return count;
    for (bdta3_col* input : inputs_) {
        if (host_col_set_selection(input, selected_.data(), count) < 0) throw std::bad_alloc();
    }
    return count;
}

const bdta3_col* Evaluator::result(size_t i) const { return vector_of(plan_.outputs[i].node); }

void Evaluator::evaluate(NodeId id, uint32_t nrows) {
    const Node& node = plan_.nodes[id];
    bdta3_col* result = vectors_[id].get();
    const auto argument = [&](size_t i) { return vector_of(node.arguments[i]); };

    if (const CallStep* step = std::get_if<CallStep>(&node.what)) {
        if (is_slot(node.type)) host_col_reset(result);
        if (const int32_t code = call(node, *step, result, nrows); code < 0) {
            std::vector<Failure::StackEntry> stack = environment_.take_errors();
            const int64_t row = failing_row(node, *step, result, nrows);
            fail(node, step->form->symbol(), code, row, std::move(stack));
        }
    } else if (const CastStep* cast = std::get_if<CastStep>(&node.what)) {
        if (is_slot(node.type)) host_col_reset(result);
        uint32_t failed = 0;
        const int32_t code =
            cast->cast->kernel(environment_.env(), environment_.batch_memory(), argument(0), result, nrows, &failed);
        if (code < 0) fail(node, cast->cast->name(), code, failed);
    } else if (const CharStep* fixed = std::get_if<CharStep>(&node.what)) {
        host_col_reset(result);
        const int32_t code =
            make_char(environment_.env(), environment_.batch_memory(), fixed->characters, argument(0), result, nrows);
        if (code < 0) throw std::bad_alloc();
    } else if (const CompareStep* comparison = std::get_if<CompareStep>(&node.what)) {
        const auto operand = [&](size_t i) {
            const NodeId from = node.arguments[i];
            return Operand{vector_of(from), records_[from] != nullptr ? records_[from]->get() : nullptr};
        };
        compare(comparison->operation, plan_.nodes[node.arguments[0]].type, operand(0), operand(1), result, nrows);
    } else if (const LogicStep* logic = std::get_if<LogicStep>(&node.what)) {
        std::vector<const bdta3_col*> operands;
        for (size_t i = 0; i < node.arguments.size(); ++i) operands.push_back(argument(i));
        switch (logic->operation) {
            case LogicOperator::kAnd:
                logical_and(operands, result, nrows);
                break;
            case LogicOperator::kOr:
                logical_or(operands, result, nrows);
                break;
            case LogicOperator::kNot:
                logical_not(operands[0], result, nrows);
                break;
        }
    } else if (const NullTestStep* test = std::get_if<NullTestStep>(&node.what)) {
        test_null(test->negated, argument(0), result, nrows);
    } else if (std::holds_alternative<ConditionStep>(node.what)) {
        make_condition(argument(0), result, nrows);
    } else if (std::holds_alternative<NegateStep>(node.what)) {
        uint32_t failed = 0;
        const int32_t code = negate(node.type, argument(0), result, nrows, &failed);
        if (code < 0) fail(node, node.text, code, failed);
    } else if (std::holds_alternative<CopyStep>(node.what)) {
        if (is_slot(node.type)) host_col_reset(result);
        const int32_t code = bdta3_col_copy(environment_.env(), environment_.batch_memory(), result, argument(0), nrows);
        if (code < 0) throw std::bad_alloc();
        if (!is_slot(node.type)) clear_null_rows(result, host_type_width(host_type(node.type)), nrows);
    }
}

int32_t Evaluator::call(const Node& node, const CallStep& step, bdta3_col* result, uint32_t nrows) {
    constexpr size_t kMostArguments = 16;
    std::array<void*, kMostArguments> arguments{};
    for (size_t i = 0; i < node.arguments.size(); ++i) {
        const NodeId id = node.arguments[i];
        arguments.at(i) =
            step.form->letters()[i] == 'a' ? static_cast<void*>(vectors_[id].get()) : static_cast<void*>(records_[id]->get());
    }
    // Some functions only ever lower the flag.
    result->all_valid = 1;
    return step.form->call(environment_.env(), environment_.batch_memory(), arguments.data(), result, nrows);
}

// A call tells the code of the first row that fails but not the row. It is the last of the fewest rows with which the call
// fails: every row below it succeeds.
int64_t Evaluator::failing_row(const Node& node, const CallStep& step, bdta3_col* result, uint32_t nrows) {
    const auto fails_with = [&](uint32_t rows) {
        if (is_slot(node.type)) host_col_reset(result);
        const bool failed = call(node, step, result, rows) < 0;
        host_error_clear(environment_.env());
        return failed;
    };
    int64_t row = Failure::kNoRow;
    if (!fails_with(0) && fails_with(nrows)) {
        uint32_t good = 0;
        uint32_t bad = nrows;
        while (bad - good > 1) {
            const uint32_t middle = good + (bad - good) / 2;
            (fails_with(middle) ? bad : good) = middle;
        }
        row = bad - 1;
    }
    return row;
}

void Evaluator::fail(const Node& node, std::string operation, int32_t code, int64_t row,
                     std::vector<Failure::StackEntry> stack) {
    Failure failure{{}, node.text, std::move(operation), code, row, {}, std::move(stack)};
    for (NodeId id : node.arguments) {
        const Node& argument = plan_.nodes[id];
        if (const ConstantValue* constant = std::get_if<ConstantValue>(&argument.what)) {
            failure.arguments.push_back(describe_argument(argument, constant->value));
        } else if (row != Failure::kNoRow) {
            const uint32_t physical = physical_row(vector_of(id), static_cast<uint32_t>(row));
            failure.arguments.push_back(describe_argument(argument, load_constant(argument.type, vector_of(id), physical)));
        }
    }
    if (row != Failure::kNoRow && narrowed_) failure.row = selected_[static_cast<size_t>(row)];
    throw EvaluationError(std::move(failure));
}

}  // namespace qzengine
