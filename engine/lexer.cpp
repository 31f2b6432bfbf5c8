#include "engine/lexer.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "engine/letters.h"

namespace qzengine {
namespace {

constexpr bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v'; }
constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Bytes above ASCII belong to names: column names are written in the file's character set.
constexpr bool begins_word(char c) {
    const char lower = lower_letter(c);
    return (lower >= 'a' && lower <= 'z') || c == '_' || static_cast<unsigned char>(c) >= 0x80;
}
constexpr bool continues_word(char c) { return begins_word(c) || is_digit(c) || c == '$' || c == '#'; }

size_t skip_digits(std::string_view text, size_t at) {
    while (at < text.size() && is_digit(text[at])) ++at;
    return at;
}

// Text between quotes; a doubled quote stands for one.
Token quoted(std::string_view text, size_t begin, TokenKind kind) {
    const char quote = text[begin];
    Token token{kind, begin, begin + 1, {}};
    while (token.end < text.size()) {
        const char c = text[token.end++];
        if (c != quote) {
            token.text += c;
        } else if (token.end < text.size() && text[token.end] == quote) {
            token.text += quote;
            ++token.end;
        } else {
            return token;
        }
    }
    throw QueryError(text, begin,
                     kind == TokenKind::kString ? "the string has no closing quote" : "the name has no closing quote");
}

Token number(std::string_view text, size_t begin) {
    Token token{TokenKind::kInteger, begin, skip_digits(text, begin), {}};
    if (token.end < text.size() && text[token.end] == '.') {
        token.kind = TokenKind::kDecimal;
        token.end = skip_digits(text, token.end + 1);
    }
    if (token.end < text.size() && lower_letter(text[token.end]) == 'e') {
        size_t digits = token.end + 1;
        if (digits < text.size() && (text[digits] == '+' || text[digits] == '-')) ++digits;
        const size_t end = skip_digits(text, digits);
        if (end == digits) throw QueryError(text, begin, "the number's exponent has no digits");
        token.kind = TokenKind::kDouble;
        token.end = end;
    }
    if (token.end < text.size() && continues_word(text[token.end])) {
        throw QueryError(text, begin, "a number is followed by a letter; put a name that begins with a digit in double quotes");
    }
    token.text = text.substr(begin, token.end - begin);
    return token;
}

}  // namespace

bool Token::is_keyword(std::string_view word) const { return kind == TokenKind::kWord && same_letters(text, word); }

Token next_token(std::string_view text, size_t position) {
    size_t at = position;
    while (at < text.size() && is_blank(text[at])) ++at;
    if (at >= text.size()) return {TokenKind::kEnd, text.size(), text.size(), {}};

    const char c = text[at];
    if (begins_word(c)) {
        size_t end = at + 1;
        while (end < text.size() && continues_word(text[end])) ++end;
        return {TokenKind::kWord, at, end, std::string(text.substr(at, end - at))};
    }
    if (c == '\'') return quoted(text, at, TokenKind::kString);
    if (c == '"') return quoted(text, at, TokenKind::kQuotedName);
    if (is_digit(c) || (c == '.' && at + 1 < text.size() && is_digit(text[at + 1]))) return number(text, at);

    constexpr std::array<std::string_view, 15> kSymbols{"<>", "<=", ">=", "!=", "||", "=", "<", ">",
                                                        "(",  ")",  ",",  "-",  "+",  "*", "/"};
    for (std::string_view symbol : kSymbols) {
        if (text.substr(at, symbol.size()) == symbol) return {TokenKind::kSymbol, at, at + symbol.size(), std::string(symbol)};
    }
    if (c > ' ' && c < 0x7F) throw QueryError(text, at, fmt::format("'{}' has no meaning here", c));
    throw QueryError(text, at, fmt::format("the byte 0x{:02X} has no meaning here", static_cast<unsigned char>(c)));
}

}  // namespace qzengine
