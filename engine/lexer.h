/*
 * Tokens of an expression.
 */
#ifndef QZENGINE_LEXER_H
#define QZENGINE_LEXER_H

#include <string>
#include <string_view>

#include "engine/errors.h"

namespace qzengine {

enum class TokenKind { kEnd, kWord, kQuotedName, kString, kInteger, kDecimal, kDouble, kSymbol };

struct Token {
    TokenKind kind = TokenKind::kEnd;
    size_t begin = 0;
    size_t end = 0;
    std::string text;  // a word or number as written, a string or quoted name without its quotes, a symbol

    bool is_symbol(std::string_view symbol) const { return kind == TokenKind::kSymbol && text == symbol; }
    bool is_keyword(std::string_view word) const;  // in any case of letters
};

// The token at or behind byte position. QueryError for text that begins none.
Token next_token(std::string_view text, size_t position);

}  // namespace qzengine

#endif
