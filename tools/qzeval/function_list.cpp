#include "tools/qzeval/function_list.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

#include "engine/errors.h"
#include "qzhost/control.h"

namespace qzeval {
namespace {

using qzengine::Catalog;
using qzengine::Function;

const char* null_rule_text(const Function& function) {
    switch (function.null_rule) {
        case qzengine::NullRule::kAnyNull:
            return "a NULL argument makes the row NULL";
        case qzengine::NullRule::kOwn:
            return "a rule of its own, told above";
    }
    return "";
}

std::string keywords_text(const qzengine::Parameter& parameter) {
    std::vector<std::string_view> words;
    for (const qzengine::Keyword& keyword : parameter.keywords) words.push_back(keyword.word);
    return fmt::format("{}", fmt::join(words, ", "));
}

std::string describe(const Function& function) {
    std::string text = fmt::format("{}\n    {}\n", signature(function), function.help);
    for (const qzengine::Parameter& parameter : function.parameters) {
        if (!parameter.keywords.empty()) text += fmt::format("    {}: one of {}\n", parameter.name, keywords_text(parameter));
    }
    text += fmt::format("    NULL: {}\n", null_rule_text(function));
    for (int32_t code : function.errors) {
        text += fmt::format("    error: {} ({}), {}\n", host_error_name(code), code, host_error_text(code));
    }
    for (const qzengine::Form& form : function.forms) {
        text += fmt::format("    form {}: {}\n", form.letters(), form.symbol());
    }
    for (const qzengine::Example& example : function.examples) {
        text += fmt::format("    {} is {}\n", example.expression, example.result);
    }
    return text;
}

}  // namespace

std::string list_functions(const Catalog& catalog) {
    size_t width = 0;
    for (const Function& function : catalog.functions()) width = std::max(width, signature(function).size());
    std::string text;
    for (const Function& function : catalog.functions()) {
        text += fmt::format("{:<{}}  {}\n", signature(function), width, function.help);
    }
    return text;
}

std::string describe_function(const Catalog& catalog, std::string_view name) {
    const std::span<const Function> overloads = catalog.overloads(name);
    if (overloads.empty()) {
        const std::string_view near = catalog.nearest_name(name);
        throw qzengine::UsageError(
            fmt::format("there is no function {}{}", name, near.empty() ? "" : fmt::format("; did you mean {}?", near)));
    }
    std::vector<std::string> descriptions;
    for (const Function& function : overloads) descriptions.push_back(describe(function));
    return fmt::format("{}", fmt::join(descriptions, "\n"));
}

}  // namespace qzeval
