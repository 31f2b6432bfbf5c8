#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <utility>

#include "engine/catalog/catalog.h"
#include "engine/charset.h"
#include "engine/datetime_text.h"
#include "engine/evaluator.h"
#include "engine/interval_text.h"
#include "engine/kernels.h"
#include "engine/letters.h"
#include "engine/lob_values.h"
#include "engine/plan.h"
#include "engine/value_text.h"
#include "qzbifun/codes.h"

namespace qzengine {
namespace {

// A planned expression. A NULL that nothing gives a type yet fits any type at no cost.
struct Planned {
    NodeId node = 0;
    bool untyped_null = false;
};

// The one type in which values of two types are compared; nothing when there is none.
std::optional<ValueType> common_type(ValueType a, ValueType b) {
    if (a == b) return a;
    if (is_datetime(a) && is_datetime(b)) {
        // The one that has more, where the casts to it drop nothing.
        if (implicit_cost(a, b)) return b;
        return implicit_cost(b, a) ? std::optional(a) : std::nullopt;
    }
    if (!is_numeric(a) || !is_numeric(b)) return std::nullopt;
    const auto either = [&](ValueType type) { return a == type || b == type; };
    if (either(ValueType::kDouble) || either(ValueType::kFloat)) return ValueType::kDouble;
    return either(ValueType::kDecimal) ? ValueType::kDecimal : ValueType::kBigint;
}

const Keyword* find_keyword(const Parameter& parameter, std::string_view word) {
    const auto found = std::find_if(parameter.keywords.begin(), parameter.keywords.end(),
                                    [&](const Keyword& keyword) { return same_letters(keyword.word, word); });
    return found == parameter.keywords.end() ? nullptr : &*found;
}

// The word that an argument may be read as, where a parameter wants a keyword.
std::optional<std::string_view> as_word(const Expression& expression) {
    if (const Name* name = std::get_if<Name>(&expression.what); name != nullptr && !name->quoted) return name->name;
    if (const StringLiteral* text = std::get_if<StringLiteral>(&expression.what)) return text->text;
    return std::nullopt;
}

constexpr const char* kFolded = "folded: all arguments are constant";

class Planner {
  public:
    Planner(std::span<const Column> columns, const Catalog& catalog, const SessionSettings& settings)
        : columns_(columns), catalog_(catalog), settings_(settings) {}

    Plan plan(const Query& query) {
        if (query.condition) {
            source_ = query.condition_text;
            const Planned condition = plan_expression(*query.condition);
            check_condition(*query.condition, condition, "the condition");
            plan_.condition = as_vector(typed(condition, ValueType::kInt));
            plan_.condition_end = static_cast<NodeId>(plan_.nodes.size());
        }
        source_ = query.select_text;
        for (const Selected& selected : query.selected) {
            const NodeId node = as_vector(plan_expression(selected.expression).node);
            plan_.outputs.push_back({selected.name, node});
        }
        for (const auto& [column, node] : column_nodes_) plan_.columns_read.push_back(column);
        return std::move(plan_);
    }

  private:
    [[noreturn]] void fail(const Expression& at, const std::string& message) const {
        throw QueryError(source_, at.begin, message);
    }

    std::string text_of(const Expression& expression) const {
        return std::string(source_.substr(expression.begin, expression.end - expression.begin));
    }

    // ---- Nodes

    NodeId add(Node node) {
        plan_.nodes.push_back(std::move(node));
        return static_cast<NodeId>(plan_.nodes.size() - 1);
    }

    ValueType type_of(NodeId node) const { return plan_.nodes[node].type; }

    const Constant* constant_of(NodeId node) const {
        const ConstantValue* constant = std::get_if<ConstantValue>(&plan_.nodes[node].what);
        return constant != nullptr ? &constant->value : nullptr;
    }

    bool all_constant(std::span<const NodeId> nodes) const {
        return std::all_of(nodes.begin(), nodes.end(), [&](NodeId node) { return constant_of(node) != nullptr; });
    }

    NodeId add_constant(Constant value, std::string text, std::string reason = "constant") {
        const ValueType type = value.type;
        return add({type, ConstantValue{std::move(value)}, {}, std::move(text), std::move(reason)});
    }

    NodeId as_vector(NodeId node) {
        if (constant_of(node) == nullptr) return node;
        return add({type_of(node),
                    SpreadStep{},
                    {node},
                    plan_.nodes[node].text,
                    "the constant in every row",
                    plan_.nodes[node].characters});
    }

    // Gives an untyped NULL a type.
    NodeId typed(Planned planned, ValueType type) {
        if (!planned.untyped_null) return planned.node;
        return add_constant({type, {}}, "NULL");
    }

    // Adds a step; with constants alone, its value.
    NodeId add_step(Node step) {
        if (!all_constant(step.arguments)) return add(std::move(step));
        return fold(std::move(step));
    }

    // The value of a step over constants, computed over vectors of one row by the very step that would compute a column.
    NodeId fold(Node step) {
        Plan one_row;
        for (NodeId& argument : step.arguments) {
            one_row.nodes.push_back(plan_.nodes[argument]);
            argument = static_cast<NodeId>(one_row.nodes.size() - 1);
        }
        std::string text = step.text;
        const DeclaredType type = step.declared();
        spread_where_needed(one_row, step);
        one_row.nodes.push_back(std::move(step));
        one_row.outputs.push_back({"", static_cast<NodeId>(one_row.nodes.size() - 1)});

        Evaluator evaluator(one_row, 1, settings_);
        try {
            evaluator.run(1);
        } catch (const EvaluationError& error) {
            Failure failure = error.failure();
            failure.row = Failure::kNoRow;
            throw EvaluationError(std::move(failure));
        }
        const NodeId folded = add_constant(load_constant(type.type, evaluator.result(0), 0), std::move(text), kFolded);
        plan_.nodes[folded].characters = type.characters;
        return folded;
    }

    // Arguments that the step takes as vectors.
    static void spread_where_needed(Plan& plan, Node& step) {
        for (size_t i = 0; i < step.arguments.size(); ++i) {
            const CallStep* call = std::get_if<CallStep>(&step.what);
            const bool keeps =
                call != nullptr ? call->form->letters()[i] == 'v' : std::holds_alternative<CompareStep>(step.what) && i > 0;
            if (keeps) continue;
            const Node& constant = plan.nodes[step.arguments[i]];
            plan.nodes.push_back({constant.type, SpreadStep{}, {step.arguments[i]}, constant.text, ""});
            step.arguments[i] = static_cast<NodeId>(plan.nodes.size() - 1);
        }
    }

    // ---- Expressions

    Planned plan_expression(const Expression& expression) {
        return std::visit([&](const auto& what) { return plan_what(expression, what); }, expression.what);
    }

    Planned plan_what(const Expression&, const NullLiteral&) { return {add_constant({ValueType::kInt, {}}, "NULL"), true}; }

    Planned plan_what(const Expression& expression, const BooleanLiteral& literal) {
        return {add_constant({ValueType::kInt, int32_t{literal.value}}, text_of(expression))};
    }

    // A text is of the character set of columns.
    Planned plan_what(const Expression& expression, const StringLiteral& literal) {
        std::optional<std::string> text = from_utf8(literal.text);
        if (!text) {
            fail(expression,
                 fmt::format("{} has no character {}", charset_name(), well_formed(first_unwritable(literal.text))));
        }
        return {add_constant({ValueType::kString, SlotValue{std::move(*text), 0}}, text_of(expression))};
    }

    // A text that names a zone makes a zoned value.
    Planned plan_what(const Expression& expression, const DatetimeLiteral& literal) {
        using Kind = DatetimeLiteral::Kind;
        const std::pair<ValueType, ValueType> types =
            literal.kind == Kind::kDate   ? std::pair(ValueType::kDate, ValueType::kDate)
            : literal.kind == Kind::kTime ? std::pair(ValueType::kTime, ValueType::kTimeTz)
                                          : std::pair(ValueType::kDatetime, ValueType::kDatetimeTz);
        qztime value;
        for (ValueType type : {types.first, types.second}) {
            if (parse_datetime(literal.text, type, TZ_NONE, value) == 0)
                return {add_constant({type, value}, text_of(expression))};
        }
        throw QueryError(source_, literal.text_begin, fmt::format("'{}' is no {}", literal.text, type_name(types.first)));
    }

    Planned plan_what(const Expression& expression, const IntervalLiteral& literal) {
        int32_t code = 0;
        const auto read = [&]<class T>(T value) {
            code = parse_interval(literal.text, value, literal.qualifier);
            return Constant{literal.type, value};
        };
        Constant constant = literal.type == ValueType::kIntervalYm ? read(qz_interval_ym{}) : read(qz_interval_dt{});
        if (code != 0) {
            throw QueryError(
                source_, literal.text_begin,
                code == EC_INTERVAL_OUT_OF_RANGE
                    ? fmt::format("the first field of '{}' has more than {} digits", literal.text, literal.qualifier / 16 % 16)
                    : fmt::format("'{}' is no interval of these fields", literal.text));
        }
        return {add_constant(std::move(constant), text_of(expression))};
    }

    Planned plan_what(const Expression& expression, const BinaryLiteral& literal) {
        SlotValue value;
        if (parse_hex(literal.digits, value.bytes) != 0) {
            throw QueryError(source_, literal.text_begin, "expected hexadecimal digits, two for each byte");
        }
        return {add_constant({ValueType::kBinary, std::move(value)}, text_of(expression))};
    }

    // The narrowest of int, bigint and decimal that holds an integer; a decimal for digits with a point; a double for an
    // exponent.
    Planned plan_what(const Expression& expression, const NumberLiteral& literal) {
        Constant constant;
        int32_t code = 0;
        const auto read = [&]<class T>(ValueType type, T value) {
            code = parse_text(literal.text, value);
            constant = {type, value};
            return code == 0;
        };
        const bool integer = literal.kind == NumberLiteral::Kind::kInteger;
        const bool done = literal.kind == NumberLiteral::Kind::kDouble
                              ? read(ValueType::kDouble, 0.0)
                              : (integer && (read(ValueType::kInt, int32_t{0}) || read(ValueType::kBigint, int64_t{0}))) ||
                                    read(ValueType::kDecimal, xdec{});
        if (!done) {
            fail(expression, fmt::format("the number {} is {}", literal.text,
                                         code == EC_DATA_OVERFLOW ? "too large" : host_error_text(code)));
        }
        return {add_constant(std::move(constant), text_of(expression))};
    }

    Planned plan_what(const Expression& expression, const Name& name) {
        std::optional<uint32_t> found;
        for (uint32_t i = 0; i < columns_.size(); ++i) {
            const bool same = name.quoted ? columns_[i].name == name.name : same_letters(columns_[i].name, name.name);
            if (!same) continue;
            if (found) fail(expression, fmt::format("more than one column has the name {}", name.name));
            found = i;
        }
        if (!found) fail(expression, no_column(name.name));
        const auto [entry, added] = column_nodes_.try_emplace(*found, NodeId{0});
        if (added) {
            const Column& column = columns_[*found];
            entry->second = add({column.type, ColumnRead{*found}, {}, column.name, "column of the input", column.characters});
        }
        return {entry->second};
    }

    std::string no_column(const std::string& name) const {
        constexpr size_t kListed = 20;
        std::string text = fmt::format("there is no column {}", name);
        if (columns_.empty()) return text + ": the input has no columns";
        text += "; the columns are ";
        for (size_t i = 0; i < std::min(columns_.size(), kListed); ++i) text += (i > 0 ? ", " : "") + columns_[i].name;
        if (columns_.size() > kListed) text += fmt::format(" and {} more", columns_.size() - kListed);
        return text;
    }

    Planned plan_what(const Expression& expression, const CastTo& cast) {
        const Planned planned = plan_expression(expression.arguments[0]);
        const ValueType type = cast.type.type;
        const NodeId node = typed(planned, type);
        if (type_of(node) != type && find_cast(type_of(node), type) == nullptr) {
            fail(expression, fmt::format("there is no cast from {} to {}", type_name(type_of(node)), type_name(cast.type)));
        }
        const NodeId made = add_cast(node, type, text_of(expression), "explicit");
        if (plan_.nodes[made].declared() == cast.type) return {made};
        return {
            add_step({type, CharStep{cast.type.characters}, {made}, text_of(expression), "explicit", cast.type.characters})};
    }

    // The cast exists, or the types are the same.
    NodeId add_cast(NodeId node, ValueType type, std::string text, std::string reason) {
        if (type_of(node) == type) return node;
        if (const Constant* constant = constant_of(node); constant != nullptr && is_lob(type) && !constant->is_null()) {
            const SlotValue& value = std::get<SlotValue>(constant->value);
            SlotValue locator{in_row_locator(type, value.bytes + std::string(value.blank, ' ')), 0};
            return add_constant({type, std::move(locator)}, std::move(text), kFolded);
        }
        return add_step({type, CastStep{find_cast(type_of(node), type)}, {node}, std::move(text), std::move(reason)});
    }

    Planned plan_what(const Expression& expression, const Comparison& comparison) {
        const Planned left = plan_expression(expression.arguments[0]);
        const Planned right = plan_expression(expression.arguments[1]);
        const ValueType left_type = type_of(left.untyped_null ? right.node : left.node);
        const ValueType right_type = type_of(right.untyped_null ? left.node : right.node);
        const std::optional<ValueType> type = common_type(left_type, right_type);
        if (!type) {
            const auto castable_to = [](ValueType from, ValueType to) {
                return is_comparable(to) && find_cast(from, to) != nullptr;
            };
            const bool castable = castable_to(left_type, right_type) || castable_to(right_type, left_type);
            fail(expression, fmt::format("cannot compare {} with {}{}", type_name(left_type), type_name(right_type),
                                         castable ? "; write CAST(value AS type) for one of them" : ""));
        }
        if (!is_comparable(*type)) fail(expression, fmt::format("values of type {} cannot be compared", type_name(*type)));
        const std::string reason = fmt::format("compared as {}", type_name(*type));
        const NodeId x = add_cast(typed(left, *type), *type, text_of(expression.arguments[0]), reason);
        const NodeId y = add_cast(typed(right, *type), *type, text_of(expression.arguments[1]), reason);
        return {add_step({ValueType::kInt, CompareStep{comparison.operation}, {x, y}, text_of(expression), reason})};
    }

    void check_condition(const Expression& expression, const Planned& planned, std::string_view what) const {
        if (planned.untyped_null || type_of(planned.node) == ValueType::kInt) return;
        fail(expression, fmt::format("{} must be a condition (int), not {}", what, type_name(type_of(planned.node))));
    }

    Planned plan_what(const Expression& expression, const Logic& logic) {
        constexpr std::string_view kNames[] = {"AND", "OR", "NOT"};
        const std::string_view name = kNames[static_cast<size_t>(logic.operation)];
        std::vector<NodeId> operands;
        for (const Expression& argument : expression.arguments) {
            const Planned operand = plan_expression(argument);
            check_condition(argument, operand, fmt::format("an operand of {}", name));
            operands.push_back(typed(operand, ValueType::kInt));
        }
        if (!all_constant(operands)) {
            for (NodeId& operand : operands) operand = as_vector(operand);
        }
        return {add_step(
            {ValueType::kInt, LogicStep{logic.operation}, std::move(operands), text_of(expression), "three-valued logic"})};
    }

    Planned plan_what(const Expression& expression, const NullTest& test) {
        const NodeId operand = plan_expression(expression.arguments[0]).node;
        return {add_step({ValueType::kInt, NullTestStep{test.negated}, {operand}, text_of(expression), "never NULL"})};
    }

    Planned plan_what(const Expression& expression, const Negation&) {
        const Planned operand = plan_expression(expression.arguments[0]);
        if (operand.untyped_null) return operand;
        const ValueType type = type_of(operand.node);
        if (!is_numeric(type)) fail(expression, fmt::format("a value of type {} has no sign", type_name(type)));
        return {add_step({type, NegateStep{}, {operand.node}, text_of(expression), "sign turned"})};
    }

    // ---- Calls

    // An argument of a call: planned when the first overload asks for its value, since a keyword is none.
    struct Argument {
        const Expression* expression;
        std::optional<Planned> planned;
    };

    Planned planned_argument(Argument& argument) {
        if (!argument.planned) argument.planned = plan_expression(*argument.expression);
        return *argument.planned;
    }

    Planned plan_what(const Expression& expression, const Call& call) {
        const std::span<const Function> overloads = catalog_.overloads(call.function);
        if (overloads.empty()) fail(expression, no_function(call.function));
        std::vector<Argument> arguments;
        for (const Expression& argument : expression.arguments) arguments.push_back({&argument, std::nullopt});
        const Function& function = choose_overload(expression, overloads, arguments);
        return {plan_call(expression, function, arguments)};
    }

    std::string no_function(const std::string& name) const {
        std::string text = fmt::format("there is no function {}", name);
        if (const std::string_view near = catalog_.nearest_name(name); !near.empty())
            text += fmt::format("; did you mean {}?", near);
        return text;
    }

    const Function& choose_overload(const Expression& expression, std::span<const Function> overloads,
                                    std::vector<Argument>& arguments) {
        const Function* best = nullptr;
        int best_cost = 0;
        bool counted = false;
        for (const Function& function : overloads) {
            if (function.parameters.size() != arguments.size()) continue;
            counted = true;
            if (takes_word_as_value(function, overloads, arguments)) continue;
            const std::optional<int> cost = overload_cost(function, arguments);
            if (!cost || (best != nullptr && *cost >= best_cost)) continue;
            best = &function;
            best_cost = *cost;
        }
        if (best != nullptr) return *best;
        fail(expression, counted ? no_overload(expression, overloads, arguments) : wrong_count(expression, overloads));
    }

    // Whether the overload wants a value where a word stands that is a keyword to another one and no column.
    bool takes_word_as_value(const Function& function, std::span<const Function> overloads,
                             std::span<const Argument> arguments) const {
        for (size_t i = 0; i < arguments.size(); ++i) {
            const Name* name = std::get_if<Name>(&arguments[i].expression->what);
            if (name == nullptr || name->quoted || function.parameters[i].needs == Needs::kKeyword) continue;
            const bool is_column = std::any_of(columns_.begin(), columns_.end(),
                                               [&](const Column& column) { return same_letters(column.name, name->name); });
            const bool is_keyword = std::any_of(overloads.begin(), overloads.end(), [&](const Function& other) {
                return other.parameters.size() > i && find_keyword(other.parameters[i], name->name) != nullptr;
            });
            if (is_keyword && !is_column) return true;
        }
        return false;
    }

    // What the casts of the arguments cost; nothing when an argument does not fit.
    std::optional<int> overload_cost(const Function& function, std::vector<Argument>& arguments) {
        int sum = 0;
        for (size_t i = 0; i < arguments.size(); ++i) {
            const Parameter& parameter = function.parameters[i];
            if (parameter.needs == Needs::kKeyword) {
                const std::optional<std::string_view> word = as_word(*arguments[i].expression);
                if (!word || find_keyword(parameter, *word) == nullptr) return std::nullopt;
                continue;
            }
            const Planned planned = planned_argument(arguments[i]);
            if (planned.untyped_null) continue;
            const std::optional<int> cost = implicit_cost(type_of(planned.node), parameter.type);
            if (!cost) return std::nullopt;
            sum += *cost;
        }
        return sum;
    }

    std::string wrong_count(const Expression& expression, std::span<const Function> overloads) const {
        std::string text = fmt::format("{} with {} argument{} does not exist; there is", overloads[0].name,
                                       expression.arguments.size(), expression.arguments.size() == 1 ? "" : "s");
        return text + signatures(overloads);
    }

    std::string no_overload(const Expression&, std::span<const Function> overloads, std::span<const Argument> arguments) const {
        std::string types;
        for (const Argument& argument : arguments) {
            if (!types.empty()) types += ", ";
            types += !argument.planned                ? text_of(*argument.expression)
                     : argument.planned->untyped_null ? "NULL"
                                                      : std::string(type_name(type_of(argument.planned->node)));
        }
        std::string text = fmt::format("{}({}) does not exist; there is", overloads[0].name, types);
        text += signatures(overloads);
        const bool has_lob = std::any_of(arguments.begin(), arguments.end(), [&](const Argument& argument) {
            return argument.planned && is_lob(type_of(argument.planned->node));
        });
        if (has_lob) text += "\nwrite CAST(value AS string) for a clob, CAST(value AS binary) for a blob";
        return text;
    }

    static std::string signatures(std::span<const Function> overloads) {
        std::string text;
        for (const Function& function : overloads) text += "\n  " + signature(function);
        return text;
    }

    NodeId plan_call(const Expression& expression, const Function& function, std::vector<Argument>& arguments) {
        std::vector<NodeId> nodes;
        bool has_null = false;
        for (size_t i = 0; i < arguments.size(); ++i) {
            const NodeId node = plan_parameter(function.parameters[i], arguments[i]);
            const Constant* constant = constant_of(node);
            has_null = has_null || (constant != nullptr && constant->is_null());
            nodes.push_back(node);
        }
        std::string text = text_of(expression);
        if (has_null && function.null_rule == NullRule::kAnyNull) {
            return add_constant({function.result, {}}, std::move(text), "folded: an argument is NULL");
        }
        const Form& form = choose_form(expression, function, nodes);
        // A LOB may live in the environment that made it, so that a call with such a result is not computed ahead.
        const bool folds = all_constant(nodes) && !is_lob(function.result);
        std::string reason = folds ? "" : describe_form(function, form, nodes);
        if (!folds) fit_arguments(function, form, nodes);
        Node step{function.result, CallStep{&function, &form}, std::move(nodes), std::move(text), std::move(reason)};
        return folds ? fold(std::move(step)) : add(std::move(step));
    }

    NodeId plan_parameter(const Parameter& parameter, Argument& argument) {
        const Expression& expression = *argument.expression;
        if (parameter.needs == Needs::kKeyword) {
            const Keyword* keyword = find_keyword(parameter, *as_word(expression));
            return add_constant({ValueType::kInt, keyword->value}, text_of(expression), "keyword");
        }
        const NodeId node = add_cast(typed(planned_argument(argument), parameter.type), parameter.type, text_of(expression),
                                     fmt::format("parameter {} is {}", parameter.name, type_name(parameter.type)));
        if (parameter.needs != Needs::kCondition) return node;
        if (const Constant* constant = constant_of(node)) {
            return add({ValueType::kInt, ConstantValue{*constant, true}, {}, text_of(expression), "constant condition"});
        }
        const auto& what = plan_.nodes[node].what;
        const bool computed = std::holds_alternative<CompareStep>(what) || std::holds_alternative<LogicStep>(what) ||
                              std::holds_alternative<NullTestStep>(what);
        if (computed) return node;
        return add({ValueType::kInt, ConditionStep{}, {node}, text_of(expression), "NULL counts as not true"});
    }

    // The form that takes the most of the constants as they are; it must not want a constant where there is none.
    const Form& choose_form(const Expression& expression, const Function& function, std::span<const NodeId> nodes) const {
        const Form* best = nullptr;
        std::ptrdiff_t best_constants = -1;
        size_t wanted = 0;  // an argument that some form wants constant
        for (const Form& form : function.forms) {
            const std::string& letters = form.letters();
            size_t i = 0;
            while (i < nodes.size() && (letters[i] == 'a' || constant_of(nodes[i]) != nullptr)) ++i;
            if (i < nodes.size()) {
                wanted = std::max(wanted, i);
                continue;
            }
            const std::ptrdiff_t constants = std::count(letters.begin(), letters.end(), 'v');
            if (constants <= best_constants) continue;
            best = &form;
            best_constants = constants;
        }
        if (best != nullptr) return *best;
        const Parameter& parameter = function.parameters[wanted];
        fail(expression.arguments[wanted],
             fmt::format("argument {} of {} must be a constant{}", parameter.name, signature(function),
                         is_lob(parameter.type) ? "; a column can be CAST to string or binary" : ""));
    }

    std::string describe_form(const Function& function, const Form& form, std::span<const NodeId> nodes) const {
        std::string reason = fmt::format("serves {}", signature(function));
        for (size_t i = 0; i < nodes.size(); ++i) {
            if (constant_of(nodes[i]) == nullptr) continue;
            reason += fmt::format("; {} is constant{}", function.parameters[i].name,
                                  form.letters()[i] == 'v' ? "" : " and is spread, since no form takes it so");
        }
        return reason;
    }

    // Makes vectors of what the form takes as vectors.
    void fit_arguments(const Function& function, const Form& form, std::vector<NodeId>& nodes) {
        for (size_t i = 0; i < nodes.size(); ++i) {
            if (form.letters()[i] != 'a') continue;
            nodes[i] = as_vector(nodes[i]);
            if (!function.changes_arguments && !function.reads_null_rows) continue;
            nodes[i] = add({type_of(nodes[i]),
                            CopyStep{},
                            {nodes[i]},
                            plan_.nodes[nodes[i]].text,
                            fmt::format("{} {}", function.name,
                                        function.reads_null_rows ? "looks at NULL rows" : "may write to its arguments")});
        }
    }

    std::span<const Column> columns_;
    const Catalog& catalog_;
    const SessionSettings& settings_;
    std::string_view source_;
    Plan plan_;
    std::map<uint32_t, NodeId> column_nodes_;
};

}  // namespace

Plan make_plan(const Query& query, std::span<const Column> columns, const Catalog& catalog, const SessionSettings& settings) {
    return Planner(columns, catalog, settings).plan(query);
}

}  // namespace qzengine
