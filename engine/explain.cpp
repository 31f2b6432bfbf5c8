#include <fmt/format.h>

#include "engine/plan.h"
#include "engine/value_text.h"

namespace qzengine {
namespace {

std::string argument_text(const Plan& plan, NodeId id) {
    const ConstantValue* constant = std::get_if<ConstantValue>(&plan.nodes[id].what);
    return constant != nullptr ? describe(constant->value) : fmt::format("#{}", id);
}

std::string arguments_text(const Plan& plan, const Node& node) {
    std::vector<std::string> texts;
    for (NodeId id : node.arguments) texts.push_back(argument_text(plan, id));
    return fmt::format("{}", fmt::join(texts, ", "));
}

std::string_view operator_text(ComparisonOperator operation) {
    constexpr std::string_view kSymbols[] = {"=", "<>", "<", "<=", ">", ">="};
    return kSymbols[static_cast<size_t>(operation)];
}

std::string step_text(const Plan& plan, const Node& node) {
    const std::string arguments = arguments_text(plan, node);
    if (const CallStep* call = std::get_if<CallStep>(&node.what)) {
        return fmt::format("{}({}), form {}", call->form->symbol(), arguments, call->form->letters());
    }
    if (const CastStep* cast = std::get_if<CastStep>(&node.what)) return fmt::format("{}({})", cast->cast->name(), arguments);
    if (const CompareStep* comparison = std::get_if<CompareStep>(&node.what)) {
        return fmt::format("compare {} ({})", operator_text(comparison->operation), arguments);
    }
    if (const LogicStep* logic = std::get_if<LogicStep>(&node.what)) {
        constexpr std::string_view kNames[] = {"and", "or", "not"};
        return fmt::format("{} ({})", kNames[static_cast<size_t>(logic->operation)], arguments);
    }
    if (const NullTestStep* test = std::get_if<NullTestStep>(&node.what)) {
        return fmt::format("is {}null ({})", test->negated ? "not " : "", arguments);
    }
    if (std::holds_alternative<CharStep>(node.what)) {
        return fmt::format("{} ({})", node.characters > 0 ? type_name(node.declared()) : "blanks written out", arguments);
    }
    if (std::holds_alternative<SpreadStep>(node.what)) return fmt::format("spread ({})", arguments);
    if (std::holds_alternative<CopyStep>(node.what)) return fmt::format("copy ({})", arguments);
    if (std::holds_alternative<ConditionStep>(node.what)) return fmt::format("condition ({})", arguments);
    if (std::holds_alternative<NegateStep>(node.what)) return fmt::format("negate ({})", arguments);
    return "column";
}

void explain_node(const Plan& plan, NodeId id, std::vector<bool>& shown, std::string& out) {
    const Node& node = plan.nodes[id];
    if (shown[id]) return;
    shown[id] = true;
    for (NodeId argument : node.arguments) explain_node(plan, argument, shown, out);
    if (std::holds_alternative<ConstantValue>(node.what)) {
        // A literal says all about itself where it is used.
        if (node.reason.starts_with("folded")) {
            out += fmt::format("  {} is {}, {}: {}\n", node.text, argument_text(plan, id), type_name(node.declared()),
                               node.reason);
        }
        return;
    }
    out += fmt::format("  #{} = {}: {}\n", id, node.text, type_name(node.declared()));
    out += fmt::format("      by {}; {}\n", step_text(plan, node), node.reason);
}

}  // namespace

std::string explain(const Plan& plan) {
    std::string out;
    std::vector<bool> shown(plan.nodes.size(), false);
    if (plan.condition) {
        out += fmt::format("condition {}\n", plan.nodes[*plan.condition].text);
        explain_node(plan, *plan.condition, shown, out);
        out += fmt::format("  rows where #{} is 1 are the selection of the columns from here on\n", *plan.condition);
    }
    for (const Output& output : plan.outputs) {
        out += fmt::format("output {}\n", output.name);
        explain_node(plan, output.node, shown, out);
        out += fmt::format("  is #{}\n", output.node);
    }
    return out;
}

}  // namespace qzengine
