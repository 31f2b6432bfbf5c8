#include "engine/catalog/catalog.h"

#include <algorithm>
#include <iterator>
#include <numeric>

#include "engine/catalog/families.h"
#include "engine/letters.h"

namespace qzengine {
namespace {

// Edits that turn one word into the other.
size_t distance(std::string_view a, std::string_view b) {
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < a.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i + 1;
        for (size_t j = 0; j < b.size(); ++j) {
            const size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

void check(const Function& function) {
    if (function.forms.empty()) throw std::logic_error(std::string("no form of ") + function.name);
    for (const Form& form : function.forms) {
        if (form.letters().size() != function.parameters.size()) {
            throw std::logic_error(form.symbol() + " has " + std::to_string(form.letters().size()) + " arguments, its entry " +
                                   signature(function));
        }
    }
}

}  // namespace

std::string signature(const Function& function) {
    std::string text = function.name;
    text += '(';
    for (size_t i = 0; i < function.parameters.size(); ++i) {
        const Parameter& parameter = function.parameters[i];
        if (i > 0) text += ", ";
        text += parameter.name;
        text += ' ';
        switch (parameter.needs) {
            case Needs::kValue:
                text += type_name(parameter.type);
                break;
            case Needs::kCondition:
                text += "condition";
                break;
            case Needs::kKeyword:
                text += "keyword";
                break;
        }
    }
    text += ") -> ";
    text += type_name(function.result);
    return text;
}

Catalog::Catalog(std::vector<Function> functions) : functions_(std::move(functions)) {
    for (const Function& function : functions_) check(function);
    std::stable_sort(functions_.begin(), functions_.end(),
                     [](const Function& a, const Function& b) { return std::string_view(a.name) < b.name; });
}

std::span<const Function> Catalog::overloads(std::string_view name) const {
    const std::string wanted = lower_letters(name);
    const auto first = std::find_if(functions_.begin(), functions_.end(), [&](const Function& f) { return f.name == wanted; });
    const auto last = std::find_if(first, functions_.end(), [&](const Function& f) { return f.name != wanted; });
    return {first, last};
}

std::string_view Catalog::nearest_name(std::string_view name) const {
    constexpr size_t kFarthest = 2;
    const std::string wanted = lower_letters(name.substr(0, 64));
    std::string_view best;
    size_t best_distance = kFarthest + 1;
    for (const Function& function : functions_) {
        const size_t d = distance(function.name, wanted);
        if (d < best_distance && d < wanted.size()) {
            best = function.name;
            best_distance = d;
        }
    }
    return best;
}

const Catalog& builtin_catalog() {
    static const Catalog catalog = [] {
        std::vector<Function> functions;
        constexpr std::vector<Function> (*kFamilies[])() = {
            math_functions,
            floating_functions,
            two_doubles_functions,
            round_trunc_functions,
            number_to_char_functions,
            bit_and_functions,
            greatest_least_functions,
            binary_float_functions,
            conditional_functions,
            date_arithmetic_functions,
            date_difference_functions,
            date_part_functions,
            date_rounding_functions,
            date_composition_functions,
            overlaps_functions,
            string_basics_functions,
            string_position_functions,
            string_search_functions,
        };
        for (auto family : kFamilies) {
            std::vector<Function> entries = family();
            std::move(entries.begin(), entries.end(), std::back_inserter(functions));
        }
        return Catalog(std::move(functions));
    }();
    return catalog;
}

}  // namespace qzengine
