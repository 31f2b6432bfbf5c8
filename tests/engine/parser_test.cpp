// Texts to expressions: what is accepted, how it nests, and where errors are seen.
#include "engine/parser.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <random>

namespace qzengine {
namespace {

// The tree as a text with every pair of parentheses.
std::string shape(const Expression& expression) {
    std::string arguments;
    for (const Expression& argument : expression.arguments) {
        if (!arguments.empty()) arguments += ' ';
        arguments += shape(argument);
    }
    struct Describe {
        const std::string& arguments;
        std::string operator()(const NullLiteral&) const { return "NULL"; }
        std::string operator()(const BooleanLiteral& literal) const { return literal.value ? "TRUE" : "FALSE"; }
        std::string operator()(const NumberLiteral& literal) const {
            constexpr const char* kKinds[] = {"i:", "d:", "f:"};
            return kKinds[static_cast<size_t>(literal.kind)] + literal.text;
        }
        std::string operator()(const StringLiteral& literal) const { return "s:" + literal.text; }
        std::string operator()(const DatetimeLiteral& literal) const {
            constexpr const char* kNames[] = {"date", "time", "timestamp"};
            return fmt::format("[{} s:{}]", kNames[static_cast<size_t>(literal.kind)], literal.text);
        }
        std::string operator()(const IntervalLiteral& literal) const {
            return fmt::format("[{} {} s:{}]", type_name(literal.type), literal.qualifier, literal.text);
        }
        std::string operator()(const BinaryLiteral& literal) const { return "x:" + literal.digits; }
        std::string operator()(const Name& name) const { return (name.quoted ? "q:" : "n:") + name.name; }
        std::string operator()(const Call& call) const { return fmt::format("{}({})", call.function, arguments); }
        std::string operator()(const CastTo& cast) const { return fmt::format("[{} {}]", type_name(cast.type), arguments); }
        std::string operator()(const Comparison& comparison) const {
            constexpr const char* kSymbols[] = {"=", "<>", "<", "<=", ">", ">="};
            return fmt::format("[{} {}]", kSymbols[static_cast<size_t>(comparison.operation)], arguments);
        }
        std::string operator()(const Logic& logic) const {
            constexpr const char* kNames[] = {"and", "or", "not"};
            return fmt::format("[{} {}]", kNames[static_cast<size_t>(logic.operation)], arguments);
        }
        std::string operator()(const NullTest& test) const {
            return fmt::format("[{} {}]", test.negated ? "notnull" : "isnull", arguments);
        }
        std::string operator()(const Negation&) const { return fmt::format("[- {}]", arguments); }
    };
    return std::visit(Describe{arguments}, expression.what);
}

std::string shape_of(std::string_view text) { return shape(parse_expression(text)); }

// Where the error is seen, -1 without one.
std::ptrdiff_t error_position(std::string_view text) {
    try {
        parse_expression(text);
    } catch (const QueryError& error) {
        EXPECT_EQ(error.source(), text);
        return static_cast<std::ptrdiff_t>(error.position());
    }
    return -1;
}

std::string error_of(std::string_view text) {
    try {
        parse_select_list(text);
    } catch (const QueryError& error) {
        return error.what();
    }
    return "";
}

TEST(Parser, Literals) {
    EXPECT_EQ(shape_of("42"), "i:42");
    EXPECT_EQ(shape_of("1.50"), "d:1.50");
    EXPECT_EQ(shape_of(".5"), "d:.5");
    EXPECT_EQ(shape_of("5."), "d:5.");
    EXPECT_EQ(shape_of("1e3"), "f:1e3");
    EXPECT_EQ(shape_of("1.5E-3"), "f:1.5E-3");
    EXPECT_EQ(shape_of("'it''s'"), "s:it's");
    EXPECT_EQ(shape_of("''"), "s:");
    EXPECT_EQ(shape_of("''''"), "s:'");
    EXPECT_EQ(shape_of("'a\nb'"), "s:a\nb");
    EXPECT_EQ(shape_of("null"), "NULL");
    EXPECT_EQ(shape_of("True"), "TRUE");
    EXPECT_EQ(shape_of("FALSE"), "FALSE");
}

TEST(Parser, AMinusBelongsToTheNumberBehindIt) {
    EXPECT_EQ(shape_of("-1"), "i:-1");
    EXPECT_EQ(shape_of("- 2147483648"), "i:-2147483648");
    EXPECT_EQ(shape_of("-(1.5)"), "d:-1.5");
    EXPECT_EQ(shape_of("--1"), "[- i:-1]");
    EXPECT_EQ(shape_of("-x"), "[- n:x]");
    EXPECT_EQ(shape_of("+x"), "n:x");
    EXPECT_EQ(shape_of("-abs(-1)"), "[- abs(i:-1)]");
}

TEST(Parser, NamesAreColumnsUnlessAParenthesisFollows) {
    EXPECT_EQ(shape_of("price"), "n:price");
    EXPECT_EQ(shape_of("\"odd \"\"name\"\"\""), "q:odd \"name\"");
    EXPECT_EQ(shape_of("\"and\""), "q:and");
    EXPECT_EQ(shape_of("größe_2$"), "n:größe_2$");
    EXPECT_EQ(shape_of("abs (price)"), "abs(n:price)");
    EXPECT_EQ(shape_of("f()"), "f()");
    EXPECT_EQ(shape_of("f(a, 'b', g(1))"), "f(n:a s:b g(i:1))");
}

TEST(Parser, AndBindsTighterThanOrAndNotTighterThanAnd) {
    EXPECT_EQ(shape_of("a or b and not c"), "[or n:a [and n:b [not n:c]]]");
    EXPECT_EQ(shape_of("(a or b) and c"), "[and [or n:a n:b] n:c]");
    EXPECT_EQ(shape_of("not a = b"), "[not [= n:a n:b]]");
    EXPECT_EQ(shape_of("not not a"), "[not [not n:a]]");
    EXPECT_EQ(shape_of("a and b and c and d"), "[and n:a n:b n:c n:d]");
    EXPECT_EQ(shape_of("a is null or b is not null"), "[or [isnull n:a] [notnull n:b]]");
}

TEST(Parser, Comparisons) {
    EXPECT_EQ(shape_of("a=1"), "[= n:a i:1]");
    EXPECT_EQ(shape_of("a<>1"), "[<> n:a i:1]");
    EXPECT_EQ(shape_of("a != 1"), "[<> n:a i:1]");
    EXPECT_EQ(shape_of("a<=-1"), "[<= n:a i:-1]");
    EXPECT_EQ(shape_of("abs(a)>=b"), "[>= abs(n:a) n:b]");
    EXPECT_EQ(shape_of("a<b and b>c"), "[and [< n:a n:b] [> n:b n:c]]");
}

TEST(Parser, CastsNameAType) {
    EXPECT_EQ(shape_of("CAST(a AS decimal)"), "[decimal n:a]");
    EXPECT_EQ(shape_of("cast(1 = 2 as String)"), "[string [= i:1 i:2]]");
    EXPECT_EQ(shape_of("cast(a as CHAR(5))"), "[char(5) n:a]");
    EXPECT_EQ(shape_of("cast(a as varchar)"), "[string n:a]");
    EXPECT_EQ(shape_of("cast(a as clob)"), "[clob n:a]");
}

TEST(Parser, ExpressionsKnowWhereTheyStand) {
    const std::string_view text = " abs( (a) ) ";
    const Expression call = parse_expression(text);
    EXPECT_EQ(text.substr(call.begin, call.end - call.begin), "abs( (a) )");
    const Expression& argument = call.arguments[0];
    EXPECT_EQ(text.substr(argument.begin, argument.end - argument.begin), "(a)");
}

TEST(Parser, SelectListsNameTheirColumns) {
    const std::vector<Selected> list = parse_select_list("a, abs(b), c AS d, 1 as \"x y\", \"q\"");
    ASSERT_EQ(list.size(), 5u);
    EXPECT_EQ(list[0].name, "a");
    EXPECT_EQ(list[1].name, "abs(b)");
    EXPECT_EQ(list[2].name, "d");
    EXPECT_EQ(list[3].name, "x y");
    EXPECT_EQ(list[4].name, "q");
}

TEST(Parser, ErrorsAreSeenWhereTheyStand) {
    EXPECT_EQ(error_position(""), 0);
    EXPECT_EQ(error_position("   "), 3);
    EXPECT_EQ(error_position("abs("), 4);
    EXPECT_EQ(error_position("abs(1"), 5);
    EXPECT_EQ(error_position("abs(1,)"), 6);
    EXPECT_EQ(error_position("abs(,1)"), 4);
    EXPECT_EQ(error_position("(1"), 2);
    EXPECT_EQ(error_position("1)"), 1);
    EXPECT_EQ(error_position("a b"), 2);
    EXPECT_EQ(error_position("a = = b"), 4);
    EXPECT_EQ(error_position("a = b = c"), 6);
    EXPECT_EQ(error_position("a and"), 5);
    EXPECT_EQ(error_position("and a"), 0);
    EXPECT_EQ(error_position("a is 5"), 5);
    EXPECT_EQ(error_position("a is not 5"), 9);
    EXPECT_EQ(error_position("x + 1"), 2);
    EXPECT_EQ(error_position("abs(x - 1)"), 6);
    EXPECT_EQ(error_position("'open"), 0);
    EXPECT_EQ(error_position("a = \"open"), 4);
    EXPECT_EQ(error_position("1e"), 0);
    EXPECT_EQ(error_position("1e+"), 0);
    EXPECT_EQ(error_position("12abc"), 0);
    EXPECT_EQ(error_position("a ; b"), 2);
    EXPECT_EQ(error_position(std::string_view("a \0", 3)), 2);
    EXPECT_EQ(error_position("cast(a as 5)"), 10);
    EXPECT_EQ(error_position("cast(a as colour)"), 10);
    EXPECT_EQ(error_position("cast(a)"), 6);
    for (const char* wrong : {"cast(a as char)", "cast(a as char(0))", "cast(a as char(32768))", "cast(a as char(1.5))",
                              "cast(a as char('5'))", "cast(a as char(99999999999999999999))"}) {
        EXPECT_EQ(error_of(wrong), "char wants a number of characters from 1 to 32767, such as char(20)") << wrong;
        EXPECT_EQ(error_position(wrong), 10) << wrong;
    }
    EXPECT_EQ(error_of("cast(a as varchar(5))"), "varchar takes nothing in parentheses; only char does");
    EXPECT_EQ(error_of("cast(a as char(5)"), "expected ), the expression ends here");
    EXPECT_EQ(error_of("cast(a as char(5, 6))"), "expected ), found ,");
    EXPECT_EQ(error_position("\"abs\"(1)"), 5);
}

TEST(Parser, ErrorsSayWhatToDo) {
    EXPECT_EQ(error_of("a + b"), "there is no operator +; use functions, comparisons, AND, OR and NOT");
    EXPECT_EQ(error_of("f(a * b)"), "there is no operator *; use functions, comparisons, AND, OR and NOT");
    EXPECT_EQ(error_of("1, "), "expected a value, a column or a function, the expression ends here");
    EXPECT_EQ(error_of("a as"), "expected a name behind AS, the expression ends here");
    EXPECT_EQ(error_of("2x"), "a number is followed by a letter; put a name that begins with a digit in double quotes");
    EXPECT_EQ(error_of("1 < 2 < 3"), "comparisons do not chain; join them with AND");
}

TEST(Parser, TwoBarsAreConcat) {
    EXPECT_EQ(shape_of("a || 'b'"), "concat(n:a s:b)");
    EXPECT_EQ(shape_of("a || b || c"), "concat(concat(n:a n:b) n:c)");
    EXPECT_EQ(shape_of("a || (b || c)"), "concat(n:a concat(n:b n:c))");
    EXPECT_EQ(shape_of("a || b = c || d"), "[= concat(n:a n:b) concat(n:c n:d)]");
    EXPECT_EQ(shape_of("a || b is null"), shape_of("concat(a, b) is null"));
    EXPECT_EQ(shape_of("a || -b"), shape_of("concat(a, -b)"));
    EXPECT_EQ(error_position("a || "), 5);
    EXPECT_EQ(error_position("|| a"), 0);
    EXPECT_EQ(error_position("a | | b"), 2);
    // A chain is as deep a tree as it is long.
    std::string chain = "a";
    for (int i = 0; i < kMaxNesting - 1; ++i) chain += " || a";
    EXPECT_EQ(error_of(chain), "");
    EXPECT_EQ(error_of(chain + " || a"), "nesting deeper than 200 levels");
    EXPECT_EQ(error_of("f(" + chain + ")"), "nesting deeper than 200 levels");
}

TEST(Parser, DatesAndTimesAreWordsBeforeATextOnly) {
    EXPECT_EQ(shape_of("DATE '2024-02-29'"), "[date s:2024-02-29]");
    EXPECT_EQ(shape_of("time'10:30'"), "[time s:10:30]");
    EXPECT_EQ(shape_of("Timestamp 'it''s'"), "[timestamp s:it's]");
    EXPECT_EQ(shape_of("X'6162'"), "x:6162");
    EXPECT_EQ(shape_of("date = time"), "[= n:date n:time]");
    EXPECT_EQ(shape_of("interval(x)"), "interval(n:x)");
    EXPECT_EQ(shape_of("f(interval, timestamp)"), "f(n:interval n:timestamp)");
    EXPECT_EQ(error_position("\"date\" '2024-02-29'"), 7);
    EXPECT_EQ(error_position("DATE '2024-02-29' '2024-02-29'"), 18);
    EXPECT_EQ(error_position("string 'x'"), 7);
}

TEST(Parser, TwoPeriodsMayOverlap) {
    EXPECT_EQ(shape_of("(a, b) OVERLAPS (c, DATE '2024-02-29')"), "overlaps(n:a n:b n:c [date s:2024-02-29])");
    EXPECT_EQ(shape_of("not (a, f(b)) overlaps (c, d) and e"), "[and [not overlaps(n:a f(n:b) n:c n:d)] n:e]");
    EXPECT_EQ(shape_of("overlaps(a, b, c, d)"), "overlaps(n:a n:b n:c n:d)");
    EXPECT_EQ(error_position("(a, b)"), 6);
    EXPECT_EQ(error_position("(a, b, c)"), 5);
    EXPECT_EQ(error_position("(a, b) overlaps c"), 16);
    EXPECT_EQ(error_position("(a, b) overlaps (c)"), 18);
}

TEST(Parser, PositionTakesItsPatternBeforeIn) {
    EXPECT_EQ(shape_of("POSITION('a' IN b)"), "POSITION(s:a n:b)");
    EXPECT_EQ(shape_of("position(f(a) in f(b))"), "position(f(n:a) f(n:b))");
    EXPECT_EQ(shape_of("position(a, b)"), "position(n:a n:b)");
    EXPECT_EQ(shape_of("position(in in in)"), "position(n:in n:in)");
    EXPECT_EQ(shape_of("position(a or b in c)"), "position([or n:a n:b] n:c)");
    EXPECT_EQ(error_position("f(a IN b)"), 4);
    EXPECT_EQ(error_position("position(a IN)"), 13);
    EXPECT_EQ(error_position("position(a IN b, c)"), 15);
    EXPECT_EQ(error_position("position(a IN b IN c)"), 16);
    EXPECT_EQ(error_position("position(a, b IN c)"), 14);
}

TEST(Parser, ExtractTakesItsPartBeforeFrom) {
    EXPECT_EQ(shape_of("EXTRACT(year FROM d)"), "EXTRACT(n:year n:d)");
    EXPECT_EQ(shape_of("extract(second from DATE '2024-02-29')"), "extract(n:second [date s:2024-02-29])");
    EXPECT_EQ(shape_of("extract(year, d)"), "extract(n:year n:d)");
    EXPECT_EQ(shape_of("extract(f(x), d)"), "extract(f(n:x) n:d)");
    EXPECT_EQ(error_position("f(year FROM d)"), 7);
    EXPECT_EQ(error_position("extract(year FROM)"), 17);
    EXPECT_EQ(error_position("extract(year FROM d, e)"), 19);
}

// A qualifier is kind * 256 + precision * 16 + fraction digits, with 9 and 6 where they are not written.
TEST(Parser, IntervalsNameTheirFields) {
    EXPECT_EQ(shape_of("INTERVAL '1-2' YEAR TO MONTH"), fmt::format("[interval_ym {} s:1-2]", 1 * 256 + 9 * 16 + 6));
    EXPECT_EQ(shape_of("interval '1' year"), fmt::format("[interval_ym {} s:1]", 0 * 256 + 9 * 16 + 6));
    EXPECT_EQ(shape_of("interval '1' month(3)"), fmt::format("[interval_ym {} s:1]", 2 * 256 + 3 * 16 + 6));
    EXPECT_EQ(shape_of("interval '1' day"), fmt::format("[interval_dt {} s:1]", 3 * 256 + 9 * 16 + 6));
    EXPECT_EQ(shape_of("interval '1 2' day(2) to hour"), fmt::format("[interval_dt {} s:1 2]", 4 * 256 + 2 * 16 + 6));
    EXPECT_EQ(shape_of("interval '1 2:3' day to minute"), fmt::format("[interval_dt {} s:1 2:3]", 5 * 256 + 9 * 16 + 6));
    EXPECT_EQ(shape_of("interval '1' day to second(0)"), fmt::format("[interval_dt {} s:1]", 6 * 256 + 9 * 16));
    EXPECT_EQ(shape_of("interval '1' hour"), fmt::format("[interval_dt {} s:1]", 7 * 256 + 9 * 16 + 6));
    EXPECT_EQ(shape_of("interval '1:2' hour to minute"), fmt::format("[interval_dt {} s:1:2]", 8 * 256 + 9 * 16 + 6));
    EXPECT_EQ(shape_of("interval '1' hour to second"), fmt::format("[interval_dt {} s:1]", 9 * 256 + 9 * 16 + 6));
    EXPECT_EQ(shape_of("interval '1' minute"), fmt::format("[interval_dt {} s:1]", 10 * 256 + 9 * 16 + 6));
    EXPECT_EQ(shape_of("interval '1' minute to second"), fmt::format("[interval_dt {} s:1]", 11 * 256 + 9 * 16 + 6));
    EXPECT_EQ(shape_of("interval '1' second(2, 3)"), fmt::format("[interval_dt {} s:1]", 12 * 256 + 2 * 16 + 3));
}

TEST(Parser, AnIntervalOfFieldsThatDoNotGoTogetherIsSeenWhereItIs) {
    EXPECT_EQ(error_position("INTERVAL '1'"), 12);
    EXPECT_EQ(error_position("INTERVAL '1' fortnight"), 13);
    EXPECT_EQ(error_position("INTERVAL '1' day to"), 19);
    EXPECT_EQ(error_of("INTERVAL '1' day to day"), "there is no interval DAY TO DAY");
    EXPECT_EQ(error_of("INTERVAL '1' month to year"), "there is no interval MONTH TO YEAR");
    EXPECT_EQ(error_position("INTERVAL '1' month to day"), 13);
    EXPECT_EQ(error_position("INTERVAL '1' day(0)"), 17);
    EXPECT_EQ(error_position("INTERVAL '1' day(10)"), 17);
    EXPECT_EQ(error_position("INTERVAL '1' day(2, 3)"), 18);
    EXPECT_EQ(error_position("INTERVAL '1' second(2, 7)"), 23);
    EXPECT_EQ(error_position("INTERVAL '1' minute to second(7)"), 30);
    EXPECT_EQ(error_position("INTERVAL '1' hour to minute(1)"), 27);
    EXPECT_EQ(error_position("INTERVAL '1' day(99999999999999999999)"), 17);
}

TEST(Parser, NestingHasALimitAndChainsHaveNone) {
    const auto nested = [](size_t levels) { return std::string(levels, '(') + "1" + std::string(levels, ')'); };
    EXPECT_EQ(error_position(nested(kMaxNesting - 1)), -1);
    EXPECT_EQ(error_position(nested(kMaxNesting)), kMaxNesting);
    for (const char* opening : {"(", "-", "+", "not ", "f(", "cast("}) {
        std::string text;
        for (int i = 0; i < 100000; ++i) text += opening;
        EXPECT_GT(error_position(text), 0) << opening;
    }
    std::string chain = "a";
    for (int i = 0; i < 100000; ++i) chain += i % 2 == 0 ? " and a" : " or a";
    EXPECT_EQ(error_position(chain), -1);
}

// Whatever the bytes, there is a tree or an error within the text.
TEST(Parser, RandomTextsAreAnsweredOneWayOrTheOther) {
    constexpr uint32_t kSeed = 20260;
    RecordProperty("seed", static_cast<int>(kSeed));
    std::mt19937 random(kSeed);
    constexpr std::string_view kPieces[] = {
        "a",    "abs",   "(",   ")",       ",",   "'",    "\"",  "1",       ".",    "e",    "-", "=",    "<>", "<",
        "and",  "or",    "is",  "null",    "not", "cast", "as ", "decimal", " ",    "''",   "é", "\n",   "%",  "interval ",
        " day", "date ", "to ", "second(", "||",  "1.",   "*",   "x'",      "true", "\x80", "+", "\"\"", "0"};
    int accepted = 0;
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (size_t n = random() % 12; n > 0; --n) text += kPieces[random() % std::size(kPieces)];
        if (random() % 4 == 0) text += static_cast<char>(random() % 256);
        try {
            for (const Selected& selected : parse_select_list(text)) {
                ASSERT_LT(selected.expression.begin, selected.expression.end) << text;
                ASSERT_LE(selected.expression.end, text.size()) << text;
            }
            ++accepted;
        } catch (const QueryError& error) {
            ASSERT_LE(error.position(), text.size()) << text;
        }
    }
    EXPECT_GT(accepted, 500) << "the pieces make expressions often enough to mean something";
}

}  // namespace
}  // namespace qzengine
