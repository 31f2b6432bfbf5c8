/*
 * From text to expressions.
 *
 * The grammar stands in docs/engine.md. Every text is answered, with a tree or with a QueryError that names the byte at which
 * it went wrong; nesting deeper than kMaxNesting is such an error.
 */
#ifndef QZENGINE_PARSER_H
#define QZENGINE_PARSER_H

#include <optional>
#include <string_view>
#include <vector>

#include "engine/errors.h"
#include "engine/expression.h"

namespace qzengine {

inline constexpr int kMaxNesting = 200;

// One expression, the whole text.
Expression parse_expression(std::string_view text);

// "expr [AS name], ...": at least one.
std::vector<Selected> parse_select_list(std::string_view text);

Query parse_query(std::string_view select_list, std::optional<std::string_view> condition = std::nullopt);

}  // namespace qzengine

#endif
