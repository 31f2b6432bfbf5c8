#include "engine/parser.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

#include "engine/letters.h"
#include "engine/lexer.h"
#include "qzhost/interval.h"

namespace qzengine {
namespace {

// Words that are never a column or a function unless they stand in double quotes.
constexpr std::array<std::string_view, 9> kReserved{"and", "or", "not", "is", "null", "true", "false", "as", "cast"};

// Fields of intervals, from the longest. Those of one type follow each other.
constexpr std::array<std::string_view, 6> kIntervalFields{"YEAR", "MONTH", "DAY", "HOUR", "MINUTE", "SECOND"};
constexpr size_t kDayField = 2;
constexpr size_t kSecondField = 5;

struct IntervalKind {
    size_t first;
    size_t last;
    int32_t number;
};
constexpr IntervalKind kIntervalKinds[] = {
    {0, 0, HOST_IV_YEAR},           {0, 1, HOST_IV_YEAR_TO_MONTH},
    {1, 1, HOST_IV_MONTH},          {2, 2, HOST_IV_DAY},
    {2, 3, HOST_IV_DAY_TO_HOUR},    {2, 4, HOST_IV_DAY_TO_MINUTE},
    {2, 5, HOST_IV_DAY_TO_SECOND},  {3, 3, HOST_IV_HOUR},
    {3, 4, HOST_IV_HOUR_TO_MINUTE}, {3, 5, HOST_IV_HOUR_TO_SECOND},
    {4, 4, HOST_IV_MINUTE},         {4, 5, HOST_IV_MINUTE_TO_SECOND},
    {5, 5, HOST_IV_SECOND},
};

constexpr int32_t kMostPrecision = 9;
constexpr int32_t kMostFractionDigits = 6;

class Parser {
  public:
    explicit Parser(std::string_view text) : text_(text), token_(next_token(text, 0)) {}

    Expression whole_expression() {
        Expression expression = disjunction();
        expect_end();
        return expression;
    }

    std::vector<Selected> select_list() {
        std::vector<Selected> list;
        do {
            list.push_back(selected());
        } while (accept_symbol(","));
        expect_end();
        return list;
    }

  private:
    // Counts the nesting of what is being parsed, since each level takes stack.
    class Level {
      public:
        explicit Level(Parser& parser) : parser_(parser) {
            if (++parser_.nesting_ > kMaxNesting) parser_.fail_nesting();
        }
        ~Level() { --parser_.nesting_; }
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;

      private:
        Parser& parser_;
    };

    [[noreturn]] void fail(const std::string& message) const { throw QueryError(text_, token_.begin, message); }

    [[noreturn]] void fail_nesting() const { fail(fmt::format("nesting deeper than {} levels", kMaxNesting)); }

    std::string found() const {
        if (token_.kind == TokenKind::kEnd) return "the expression ends here";
        return fmt::format("found {}", text_.substr(token_.begin, token_.end - token_.begin));
    }

    void advance() {
        previous_end_ = token_.end;
        token_ = next_token(text_, token_.end);
    }

    bool accept_symbol(std::string_view symbol) {
        if (!token_.is_symbol(symbol)) return false;
        advance();
        return true;
    }

    bool accept_keyword(std::string_view word) {
        if (!token_.is_keyword(word)) return false;
        advance();
        return true;
    }

    void expect_symbol(std::string_view symbol) {
        if (!accept_symbol(symbol)) fail(fmt::format("expected {}, {}", symbol, found()));
    }

    void expect_keyword(std::string_view word) {
        if (!accept_keyword(word)) fail(fmt::format("expected {}, {}", word, found()));
    }

    void expect_end() {
        if (token_.kind == TokenKind::kEnd) return;
        fail_behind_operand("an operator, a comma or the end");
    }

    // What stands behind a whole operand and cannot go on there.
    [[noreturn]] void fail_behind_operand(std::string_view expected) const {
        constexpr std::array<std::string_view, 4> kArithmetic{"+", "-", "*", "/"};
        if (std::any_of(kArithmetic.begin(), kArithmetic.end(),
                        [&](std::string_view symbol) { return token_.is_symbol(symbol); })) {
            fail(fmt::format("there is no operator {}; use functions, comparisons, AND, OR and NOT", token_.text));
        }
        fail(fmt::format("expected {}, {}", expected, found()));
    }

    bool at_reserved_word() const {
        return std::any_of(kReserved.begin(), kReserved.end(), [&](std::string_view word) { return token_.is_keyword(word); });
    }

    Selected selected() {
        Selected item{disjunction(), {}};
        if (accept_keyword("as")) {
            if (token_.kind != TokenKind::kWord && token_.kind != TokenKind::kQuotedName)
                fail("expected a name behind AS, " + found());
            item.name = token_.text;
            advance();
        } else if (const Name* name = std::get_if<Name>(&item.expression.what)) {
            item.name = name->name;
        } else {
            item.name = text_.substr(item.expression.begin, item.expression.end - item.expression.begin);
        }
        return item;
    }

    Expression disjunction() {
        const Level level(*this);
        return chain(LogicOperator::kOr, "or", &Parser::conjunction);
    }

    Expression conjunction() { return chain(LogicOperator::kAnd, "and", &Parser::negated_condition); }

    // One operand, or all that the word joins as one node: however long the chain, the tree stays shallow.
    Expression chain(LogicOperator operation, std::string_view word, Expression (Parser::*next)()) {
        Expression first = (this->*next)();
        if (!token_.is_keyword(word)) return first;
        Expression joined{first.begin, 0, Logic{operation}, {}};
        joined.arguments.push_back(std::move(first));
        while (accept_keyword(word)) joined.arguments.push_back((this->*next)());
        joined.end = previous_end_;
        return joined;
    }

    Expression negated_condition() {
        if (!token_.is_keyword("not")) return comparison();
        const Level level(*this);
        const size_t begin = token_.begin;
        advance();
        return with_argument(begin, Logic{LogicOperator::kNot}, negated_condition());
    }

    Expression comparison() {
        Expression left = concatenation();
        if (accept_keyword("is")) {
            const bool negated = accept_keyword("not");
            expect_keyword("null");
            const size_t begin = left.begin;
            return with_argument(begin, NullTest{negated}, std::move(left));
        }
        const std::optional<ComparisonOperator> operation = comparison_operator();
        if (!operation) return left;
        advance();
        const size_t begin = left.begin;
        Expression compared = with_argument(begin, Comparison{*operation}, std::move(left));
        compared.arguments.push_back(concatenation());
        compared.end = previous_end_;
        if (comparison_operator()) fail("comparisons do not chain; join them with AND");
        return compared;
    }

    std::optional<ComparisonOperator> comparison_operator() const {
        if (token_.kind != TokenKind::kSymbol) return std::nullopt;
        constexpr std::array<std::pair<std::string_view, ComparisonOperator>, 7> kOperators{{
            {"=", ComparisonOperator::kEqual},
            {"<>", ComparisonOperator::kNotEqual},
            {"!=", ComparisonOperator::kNotEqual},
            {"<", ComparisonOperator::kLess},
            {"<=", ComparisonOperator::kLessEqual},
            {">", ComparisonOperator::kGreater},
            {">=", ComparisonOperator::kGreaterEqual},
        }};
        for (const auto& [symbol, operation] : kOperators) {
            if (token_.text == symbol) return operation;
        }
        return std::nullopt;
    }

    // a || b || c is concat(concat(a, b), c): each link of the chain is a level of the tree.
    Expression concatenation() {
        Expression left = signed_operand();
        for (int links = 1; token_.is_symbol("||"); ++links) {
            if (nesting_ + links > kMaxNesting) fail_nesting();
            advance();
            const size_t begin = left.begin;
            Expression joined = with_argument(begin, Call{"concat"}, std::move(left));
            joined.arguments.push_back(signed_operand());
            joined.end = previous_end_;
            left = std::move(joined);
        }
        return left;
    }

    Expression signed_operand() {
        const size_t begin = token_.begin;
        if (accept_symbol("+")) {
            const Level level(*this);
            return signed_operand();
        }
        if (!accept_symbol("-")) return operand();
        const Level level(*this);
        Expression value = signed_operand();
        // The sign belongs to the number, so that the lowest int and bigint can be written.
        if (NumberLiteral* number = std::get_if<NumberLiteral>(&value.what); number != nullptr && number->text.front() != '-') {
            number->text.insert(0, 1, '-');
            value.begin = begin;
            return value;
        }
        return with_argument(begin, Negation{}, std::move(value));
    }

    Expression operand() {
        const size_t begin = token_.begin;
        switch (token_.kind) {
            case TokenKind::kInteger:
                return number(NumberLiteral::Kind::kInteger);
            case TokenKind::kDecimal:
                return number(NumberLiteral::Kind::kDecimal);
            case TokenKind::kDouble:
                return number(NumberLiteral::Kind::kDouble);
            case TokenKind::kString: {
                std::string text = std::move(token_.text);
                advance();
                return {begin, previous_end_, StringLiteral{std::move(text)}, {}};
            }
            case TokenKind::kWord:
            case TokenKind::kQuotedName:
                return named();
            case TokenKind::kSymbol:
                if (accept_symbol("(")) {
                    Expression inner = disjunction();
                    if (token_.is_symbol(",")) return overlaps(begin, std::move(inner));
                    if (!accept_symbol(")")) fail_behind_operand("a closing parenthesis");
                    inner.begin = begin;
                    inner.end = previous_end_;
                    return inner;
                }
                break;
            case TokenKind::kEnd:
                break;
        }
        fail("expected a value, a column or a function, " + found());
    }

    // (start, end) OVERLAPS (start, end) is overlaps(start, end, start, end). The first start is read, its comma is not.
    Expression overlaps(size_t begin, Expression start) {
        Expression made{begin, 0, Call{"overlaps"}, {}};
        made.arguments.push_back(std::move(start));
        end_of_period(made);
        expect_keyword("overlaps");
        expect_symbol("(");
        made.arguments.push_back(disjunction());
        end_of_period(made);
        made.end = previous_end_;
        return made;
    }

    void end_of_period(Expression& made) {
        expect_symbol(",");
        made.arguments.push_back(disjunction());
        if (!accept_symbol(")")) fail_behind_operand("a closing parenthesis");
    }

    Expression number(NumberLiteral::Kind kind) {
        Expression literal{token_.begin, token_.end, NumberLiteral{kind, token_.text}, {}};
        advance();
        return literal;
    }

    Expression named() {
        const size_t begin = token_.begin;
        if (accept_keyword("null")) return {begin, previous_end_, NullLiteral{}, {}};
        if (accept_keyword("true")) return {begin, previous_end_, BooleanLiteral{true}, {}};
        if (accept_keyword("false")) return {begin, previous_end_, BooleanLiteral{false}, {}};
        if (accept_keyword("cast")) return cast(begin);
        if (at_reserved_word()) fail(fmt::format("expected a value, a column or a function, {}", found()));

        const bool quoted = token_.kind == TokenKind::kQuotedName;
        std::string name = std::move(token_.text);
        advance();
        if (!quoted && token_.is_symbol("(")) return call(begin, std::move(name));
        if (!quoted && token_.kind == TokenKind::kString) {
            // Only before a text are these words no names, so that columns may be called so.
            if (same_letters(name, "date")) return datetime_literal(begin, DatetimeLiteral::Kind::kDate);
            if (same_letters(name, "time")) return datetime_literal(begin, DatetimeLiteral::Kind::kTime);
            if (same_letters(name, "timestamp")) return datetime_literal(begin, DatetimeLiteral::Kind::kTimestamp);
            if (same_letters(name, "interval")) return interval_literal(begin);
            if (same_letters(name, "x")) return binary_literal(begin);
        }
        return {begin, previous_end_, Name{std::move(name), quoted}, {}};
    }

    // The text that the token holds, and where it stands.
    std::pair<std::string, size_t> text() {
        std::pair<std::string, size_t> taken(std::move(token_.text), token_.begin);
        advance();
        return taken;
    }

    Expression datetime_literal(size_t begin, DatetimeLiteral::Kind kind) {
        auto [value, value_begin] = text();
        return {begin, previous_end_, DatetimeLiteral{kind, std::move(value), value_begin}, {}};
    }

    Expression binary_literal(size_t begin) {
        auto [digits, digits_begin] = text();
        return {begin, previous_end_, BinaryLiteral{std::move(digits), digits_begin}, {}};
    }

    // '1-2' YEAR TO MONTH, '90' MINUTE(3), '3 04:05:06.5' DAY TO SECOND(1), '6.5' SECOND(2, 1)
    Expression interval_literal(size_t begin) {
        auto [value, value_begin] = text();
        const size_t fields_begin = token_.begin;
        const size_t first = interval_field();
        size_t last = first;
        int32_t precision = kMostPrecision;
        int32_t fraction_digits = kMostFractionDigits;
        if (accept_symbol("(")) {
            precision = digits_count("a precision", 1, kMostPrecision);
            if (first == kSecondField && accept_symbol(",")) fraction_digits = fraction_count();
            expect_symbol(")");
        }
        const bool has_last = accept_keyword("to");
        if (has_last) {
            last = interval_field();
            if (last == kSecondField && accept_symbol("(")) {
                fraction_digits = fraction_count();
                expect_symbol(")");
            }
        }
        const auto* kind = std::find_if(std::begin(kIntervalKinds), std::end(kIntervalKinds),
                                        [&](const IntervalKind& known) { return known.first == first && known.last == last; });
        if (kind == std::end(kIntervalKinds) || (has_last && last == first)) {
            throw QueryError(text_, fields_begin,
                             fmt::format("there is no interval {} TO {}", kIntervalFields[first], kIntervalFields[last]));
        }
        const ValueType type = first < kDayField ? ValueType::kIntervalYm : ValueType::kIntervalDt;
        const int32_t qualifier = kind->number * 256 + precision * 16 + fraction_digits;
        return {begin, previous_end_, IntervalLiteral{type, std::move(value), value_begin, qualifier}, {}};
    }

    size_t interval_field() {
        for (size_t i = 0; i < kIntervalFields.size(); ++i) {
            if (accept_keyword(kIntervalFields[i])) return i;
        }
        fail("expected YEAR, MONTH, DAY, HOUR, MINUTE or SECOND, " + found());
    }

    int32_t fraction_count() { return digits_count("fraction digits", 0, kMostFractionDigits); }

    int32_t digits_count(std::string_view what, int32_t least, int32_t most) {
        const bool one_digit = token_.kind == TokenKind::kInteger && token_.text.size() == 1;
        const int32_t count = one_digit ? token_.text[0] - '0' : -1;
        if (count < least || count > most) fail(fmt::format("expected {} from {} to {}, {}", what, least, most, found()));
        advance();
        return count;
    }

    Expression call(size_t begin, std::string name) {
        expect_symbol("(");
        Expression made{begin, 0, Call{std::move(name)}, {}};
        if (same_letters(std::get<Call>(made.what).function, "extract") && token_.kind == TokenKind::kWord &&
            next_token(text_, token_.end).is_keyword("from")) {
            // EXTRACT(part FROM value) is extract(part, value).
            made.arguments.push_back({token_.begin, token_.end, Name{token_.text, false}, {}});
            advance();
            advance();
            made.arguments.push_back(disjunction());
        } else if (!token_.is_symbol(")")) {
            made.arguments.push_back(disjunction());
            if (same_letters(std::get<Call>(made.what).function, "position") && accept_keyword("in")) {
                // POSITION(pattern IN text) is position(pattern, text).
                made.arguments.push_back(disjunction());
            } else {
                while (accept_symbol(",")) made.arguments.push_back(disjunction());
            }
        }
        if (!accept_symbol(")")) fail_behind_operand("a comma or a closing parenthesis");
        made.end = previous_end_;
        return made;
    }

    Expression cast(size_t begin) {
        expect_symbol("(");
        Expression value = disjunction();
        expect_keyword("as");
        const DeclaredType type = declared_type();
        expect_symbol(")");
        return with_argument(begin, CastTo{type}, std::move(value));
    }

    // A name, and for char a number in parentheses.
    DeclaredType declared_type() {
        const Token name = token_;
        if (name.kind != TokenKind::kWord) fail(fmt::format("expected a type, such as int or char(20), {}", found()));
        advance();
        std::optional<std::string> characters;
        if (accept_symbol("(")) {
            characters = text_.substr(token_.begin, token_.end - token_.begin);
            advance();
            expect_symbol(")");
        }
        std::string problem;
        const std::optional<DeclaredType> type = declare_type(name.text, characters, problem);
        if (!type) throw QueryError(text_, name.begin, problem);
        return *type;
    }

    template <class What>
    Expression with_argument(size_t begin, What what, Expression argument) {
        Expression made{begin, previous_end_, what, {}};
        made.arguments.push_back(std::move(argument));
        return made;
    }

    std::string_view text_;
    Token token_;
    size_t previous_end_ = 0;
    int nesting_ = 0;
};

}  // namespace

Expression parse_expression(std::string_view text) { return Parser(text).whole_expression(); }

std::vector<Selected> parse_select_list(std::string_view text) { return Parser(text).select_list(); }

Query parse_query(std::string_view select_list, std::optional<std::string_view> condition) {
    Query query{std::string(select_list), parse_select_list(select_list), {}, {}};
    if (condition) {
        query.condition_text = *condition;
        query.condition = parse_expression(*condition);
    }
    return query;
}

}  // namespace qzengine
