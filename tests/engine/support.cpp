#include "tests/engine/support.h"

#include <gtest/gtest.h>

#include "engine/catalog/catalog.h"
#include "engine/datetime_text.h"
#include "engine/interval_text.h"
#include "engine/parser.h"
#include "engine/value_text.h"

namespace qzengine {

std::vector<Column> columns_of(const std::vector<TestColumn>& columns) {
    std::vector<Column> made;
    for (const TestColumn& column : columns) made.push_back({column.name, column.type});
    return made;
}

Plan plan_of(std::string_view select, const std::vector<TestColumn>& columns, std::optional<std::string_view> where) {
    const std::vector<Column> made = columns_of(columns);
    return make_plan(parse_query(select, where), made, builtin_catalog());
}

void set_text(bdta3_col* vector, ValueType type, uint32_t row, const std::optional<std::string>& text) {
    vector->data->valid[row] = text.has_value();
    if (!text) {
        vector->all_valid = 0;
        return;
    }
    const auto parse = [&]<class T>(T value) {
        ASSERT_EQ(parse_text(*text, value), 0) << *text;
        values_of<T>(vector)[row] = value;
    };
    switch (type) {
        case ValueType::kInt:
            return parse(int32_t{0});
        case ValueType::kBigint:
            return parse(int64_t{0});
        case ValueType::kDecimal:
            return parse(xdec{});
        case ValueType::kDouble:
            return parse(0.0);
        case ValueType::kFloat:
            return parse(0.0F);
        case ValueType::kString:
            ASSERT_EQ(host_col_set_text(vector, row, text->data(), static_cast<uint32_t>(text->size()), 0), 0);
            return;
        case ValueType::kBinary:
            ASSERT_EQ(host_col_set_text(vector, row, text->data(), static_cast<uint32_t>(text->size()), 0), 0);
            return;
        case ValueType::kDate:
        case ValueType::kTime:
        case ValueType::kDatetime:
        case ValueType::kTimeTz:
        case ValueType::kDatetimeTz:
            ASSERT_EQ(parse_datetime(*text, type, 0, values_of<qztime>(vector)[row]), 0) << *text;
            return;
        case ValueType::kIntervalYm:
            ASSERT_EQ(parse_interval(*text, values_of<qz_interval_ym>(vector)[row]), 0) << *text;
            return;
        case ValueType::kIntervalDt:
            ASSERT_EQ(parse_interval(*text, values_of<qz_interval_dt>(vector)[row]), 0) << *text;
            return;
        default:
            FAIL() << "no text of type " << type_name(type);
    }
}

std::string result_text(const Plan& plan, const Evaluator& evaluator, uint32_t row) {
    TextBuffer line;
    for (size_t i = 0; i < plan.outputs.size(); ++i) {
        const bdta3_col* result = evaluator.result(i);
        const uint32_t physical = physical_row(result, row);
        if (i > 0) line.append('|');
        if (result->data->valid[physical] == 0) {
            EXPECT_EQ(result->all_valid, 0u) << plan.outputs[i].name;
            line.append("NULL");
        } else {
            append_value_text(line, evaluator.environment().env(), plan.nodes[plan.outputs[i].node].type, result, physical);
        }
    }
    return std::string(line.view());
}

std::vector<std::string> evaluate(std::string_view select, const std::vector<TestColumn>& columns,
                                  std::optional<std::string_view> where) {
    const Plan plan = plan_of(select, columns, where);
    const uint32_t rows = columns.empty() ? 1 : static_cast<uint32_t>(columns[0].values.size());
    Evaluator evaluator(plan, rows);
    for (size_t i = 0; i < plan.columns_read.size(); ++i) {
        const TestColumn& column = columns[plan.columns_read[i]];
        evaluator.input(i)->all_valid = 1;
        for (uint32_t row = 0; row < rows; ++row) set_text(evaluator.input(i), column.type, row, column.values[row]);
    }
    const uint32_t left = evaluator.run(rows);
    std::vector<std::string> lines;
    for (uint32_t row = 0; row < left; ++row) lines.push_back(result_text(plan, evaluator, row));
    return lines;
}

std::string evaluate_text(std::string_view expression) {
    const std::vector<std::string> lines = evaluate(expression, {});
    return lines.size() == 1 ? lines[0] : "not one row";
}

int32_t evaluation_code(std::string_view expression) {
    try {
        evaluate(expression, {});
    } catch (const EvaluationError& error) {
        return error.failure().code;
    }
    return 0;
}

std::string exports_of(const Plan& plan) {
    std::string exports;
    for (const Node& node : plan.nodes) {
        const CallStep* call = std::get_if<CallStep>(&node.what);
        if (call != nullptr) exports += (exports.empty() ? "" : " ") + call->form->symbol();
    }
    return exports;
}

}  // namespace qzengine
