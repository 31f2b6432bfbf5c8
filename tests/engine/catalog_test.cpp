// The catalog: every entry answers its examples, and its forms are what the exports say.
#include "engine/catalog/catalog.h"

#include <gtest/gtest.h>

#include <deque>
#include <set>

#include "engine/evaluator.h"
#include "engine/parser.h"
#include "engine/plan.h"
#include "engine/value_text.h"
#include "qzbifun/math.h"
#include "qzhost/column.h"
#include "tests/engine/support.h"

namespace qzengine {
namespace {

TEST(Catalog, EveryEntryHasTwoExamplesWhoseResultsAreAsTold) {
    for (const Function& function : builtin_catalog().functions()) {
        EXPECT_GE(function.examples.size(), 2u) << signature(function);
        for (const Example& example : function.examples) {
            EXPECT_EQ(evaluate_text(example.expression), example.result) << signature(function) << ": " << example.expression;
        }
    }
}

// The first call of the function in an expression; null when there is none.
const Expression* find_call(const Expression& expression, const Function& function) {
    const Call* call = std::get_if<Call>(&expression.what);
    if (call != nullptr && lower_letters(call->function) == function.name &&
        expression.arguments.size() == function.parameters.size()) {
        return &expression;
    }
    for (const Expression& argument : expression.arguments) {
        if (const Expression* found = find_call(argument, function)) return found;
    }
    return nullptr;
}

// The value of an expression of constants, in a vector of the type.
class Value {
  public:
    Value(const std::string& expression, ValueType type) : plan_(plan(expression, type)), evaluator_(plan_, 1) {
        evaluator_.run(1);
    }

    void copy_to(const Evaluator& evaluator, size_t input) const {
        const bdta3_col* value = evaluator_.result(0);
        bdta3_col* copy = evaluator.input(input);
        if (value->data->valid[physical_row(value, 0)] == 0) {
            copy->all_valid = copy->data->valid[0] = 0;
        } else {
            const Environment& environment = evaluator.environment();
            ASSERT_EQ(bdta3_col_copy(environment.env(), environment.memory(), copy, value, 1), 0);
        }
    }

  private:
    static Plan plan(const std::string& expression, ValueType type) {
        Plan plan = plan_of(expression, {});
        if (plan.nodes[plan.outputs[0].node].type == type) return plan;
        return plan_of("CAST(" + expression + " AS " + std::string(type_name(type)) + ")", {});
    }

    const Plan plan_;
    Evaluator evaluator_;
};

// What an example comes to with some arguments of its call in columns, and the exports by which.
struct Replayed {
    std::string result;
    std::string exports;
};

// The arguments that stand in columns are those with an a in letters.
Replayed replay_example(const Function& function, const std::string& letters, const Example& example) {
    const Query query = parse_query(example.expression, std::nullopt);
    const Expression* call = find_call(query.selected[0].expression, function);
    if (call == nullptr) return {};
    std::string select = example.expression;
    std::vector<Column> columns;
    std::deque<Value> values;                    // they stay where they are
    for (size_t i = letters.size(); i-- > 0;) {  // from the last, so that those in front stay where they are
        if (letters[i] != 'a') continue;
        const Expression& argument = call->arguments[i];
        const Parameter& parameter = function.parameters[i];
        const std::string name = "column" + std::to_string(i);
        const size_t length = argument.end - argument.begin;
        columns.push_back({name, parameter.type});
        values.emplace_back(example.expression.substr(argument.begin, length), parameter.type);
        select.replace(argument.begin, length, parameter.needs == Needs::kCondition ? name + " = 1" : name);
    }
    const Plan plan = make_plan(parse_query(select, std::nullopt), columns, builtin_catalog());
    Evaluator evaluator(plan, 1);
    for (size_t i = 0; i < plan.columns_read.size(); ++i) values[plan.columns_read[i]].copy_to(evaluator, i);
    evaluator.run(1);
    return {result_text(plan, evaluator, 0), exports_of(plan)};
}

// So each export of the catalog is what the planner calls for the arguments it is for.
TEST(Catalog, EveryFormAnswersTwoExamplesOfItsEntry) {
    for (const Function& function : builtin_catalog().functions()) {
        for (const Form& form : function.forms) {
            size_t answered = 0;
            for (const Example& example : function.examples) {
                const Replayed replayed = replay_example(function, form.letters(), example);
                if ((" " + replayed.exports + " ").find(" " + form.symbol() + " ") == std::string::npos) continue;
                EXPECT_EQ(replayed.result, example.result) << form.symbol() << ": " << example.expression;
                ++answered;
            }
            EXPECT_GE(answered, 2u) << form.symbol() << ", " << form.letters() << " of " << signature(function);
        }
    }
}

TEST(Catalog, EveryEntryHasHelpOfOneLine) {
    for (const Function& function : builtin_catalog().functions()) {
        EXPECT_FALSE(std::string_view(function.help).empty()) << signature(function);
        EXPECT_EQ(std::string_view(function.help).find('\n'), std::string_view::npos) << signature(function);
        EXPECT_EQ(std::string(function.name), lower_letters(function.name));
    }
}

TEST(Catalog, NoTwoEntriesHaveOneSignatureAndNoTwoFormsOneSetOfLetters) {
    std::set<std::string> signatures;
    for (const Function& function : builtin_catalog().functions()) {
        std::string types = std::string(function.name) + "(";
        for (const Parameter& parameter : function.parameters) {
            types += std::string(type_name(parameter.type)) + ",";
            for (const Keyword& keyword : parameter.keywords) types += std::string(keyword.word) + ",";
        }
        EXPECT_TRUE(signatures.insert(types).second) << types;
        std::set<std::string> letters;
        for (const Form& form : function.forms) EXPECT_TRUE(letters.insert(form.letters()).second) << form.symbol();
    }
}

TEST(Catalog, NamesAreFoundInAnyCaseOfLetters) {
    EXPECT_EQ(builtin_catalog().overloads("ABS").size(), builtin_catalog().overloads("abs").size());
    EXPECT_FALSE(builtin_catalog().overloads("Ceil").empty());
    EXPECT_TRUE(builtin_catalog().overloads("ceiling of the room").empty());
    EXPECT_TRUE(builtin_catalog().overloads("").empty());
}

TEST(Catalog, NearestNameForgivesTwoEditsAndNoMore) {
    EXPECT_EQ(builtin_catalog().nearest_name("flor"), "floor");
    EXPECT_EQ(builtin_catalog().nearest_name("CIEL"), "ceil");
    EXPECT_EQ(builtin_catalog().nearest_name("entirely_else"), "");
    EXPECT_EQ(builtin_catalog().nearest_name(std::string(100000, 'x')), "");
}

TEST(Catalog, AFormWhoseLettersDoNotFitItsExportIsRefused) {
    EXPECT_THROW(Form("v", "babs_a_math_int", &babs_a_math_int), std::logic_error);
    EXPECT_THROW(Form("aa", "babs_a_math_int", &babs_a_math_int), std::logic_error);
    EXPECT_NO_THROW(Form("a", "babs_a_math_int", &babs_a_math_int));
}

TEST(Catalog, AnEntryThatContradictsItselfIsRefused) {
    const auto catalog_of = [](Function function) {
        std::vector<Function> functions;
        functions.push_back(std::move(function));
        return Catalog(std::move(functions));
    };
    EXPECT_THROW(catalog_of({.name = "f", .parameters = {}, .result = ValueType::kInt}), std::logic_error);
    EXPECT_THROW(catalog_of({.name = "f",
                             .parameters = {},
                             .result = ValueType::kBigint,
                             .forms = {{"a", "babs_a_math_int", &babs_a_math_int}}}),
                 std::logic_error);
}

// ---- Casts ------------------------------------------------------------------------------------------------------------------

TEST(Casts, EveryPairOfNumbersAndTextHasOne) {
    const ValueType types[] = {ValueType::kInt,    ValueType::kBigint, ValueType::kDecimal,
                               ValueType::kDouble, ValueType::kFloat,  ValueType::kString};
    for (ValueType from : types) {
        for (ValueType to : types) EXPECT_EQ(find_cast(from, to) != nullptr, from != to) << type_name(from) << type_name(to);
    }
}

TEST(Casts, ToAWholeNumberRoundsHalvesAwayFromZero) {
    EXPECT_EQ(evaluate_text("CAST(2.5 AS bigint)"), "3");
    EXPECT_EQ(evaluate_text("CAST(-2.5 AS bigint)"), "-3");
    EXPECT_EQ(evaluate_text("CAST(2.4999 AS int)"), "2");
    EXPECT_EQ(evaluate_text("CAST(2.5e0 AS int)"), "3");
    EXPECT_EQ(evaluate_text("CAST(-2.5e0 AS bigint)"), "-3");
    EXPECT_EQ(evaluate_text("CAST(0.49999999999999994 AS int)"), "0");
}

TEST(Casts, RangesAreExactToTheLastValue) {
    EXPECT_EQ(evaluate_text("CAST(2147483647.4 AS int)"), "2147483647");
    EXPECT_EQ(evaluate_text("CAST(-2147483648.4 AS int)"), "-2147483648");
    EXPECT_EQ(evaluation_code("CAST(2147483647.5 AS int)"), EC_DATA_OVERFLOW);
    EXPECT_EQ(evaluation_code("CAST(2147483648 AS int)"), EC_DATA_OVERFLOW);
    EXPECT_EQ(evaluation_code("CAST(9.223372036854775807e18 AS bigint)"), EC_DATA_OVERFLOW);
    EXPECT_EQ(evaluate_text("CAST(-9.223372036854775808e18 AS bigint)"), "-9223372036854775808");
    EXPECT_EQ(evaluation_code("CAST('NaN' AS double)"), 0);
    EXPECT_EQ(evaluation_code("CAST(CAST('NaN' AS double) AS int)"), EC_DATA_OVERFLOW);
    EXPECT_EQ(evaluation_code("CAST(1e300 AS float)"), EC_DATA_OVERFLOW);
    EXPECT_EQ(evaluation_code("CAST(1e300 AS decimal)"), EC_DATA_OVERFLOW);
}

TEST(Casts, TextIsANumberWithBlanksAroundItOrNone) {
    EXPECT_EQ(evaluate_text("CAST('  -12.50 ' AS decimal)"), "-12.50");
    EXPECT_EQ(evaluate_text("CAST('+7' AS int)"), "7");
    EXPECT_EQ(evaluate_text("CAST('1e3' AS double)"), "1000");
    EXPECT_EQ(evaluation_code("CAST('' AS int)"), EC_NUMBER_TEXT_INVALID);
    EXPECT_EQ(evaluation_code("CAST('   ' AS decimal)"), EC_NUMBER_TEXT_INVALID);
    EXPECT_EQ(evaluation_code("CAST('12x' AS bigint)"), EC_NUMBER_TEXT_INVALID);
    EXPECT_EQ(evaluation_code("CAST('1.5' AS int)"), EC_NUMBER_TEXT_INVALID);
    EXPECT_EQ(evaluation_code("CAST('+-1' AS int)"), EC_NUMBER_TEXT_INVALID);
    EXPECT_EQ(evaluation_code("CAST('99999999999999999999' AS bigint)"), EC_DATA_OVERFLOW);
}

TEST(Casts, NumbersBecomeTheirShortestText) {
    EXPECT_EQ(evaluate_text("CAST(-7 AS string)"), "-7");
    EXPECT_EQ(evaluate_text("CAST(1.50 AS string)"), "1.50");
    EXPECT_EQ(evaluate_text("CAST(0.1e0 AS string)"), "0.1");
    EXPECT_EQ(evaluate_text("CAST(CAST(0.1 AS float) AS string)"), "0.1");
    EXPECT_EQ(evaluate_text("CAST(CAST(0.1 AS float) AS decimal)"), "0.1");
    EXPECT_EQ(evaluate_text("CAST(0.1e0 AS decimal)"), "0.1");
}

TEST(Casts, ToCharCutsAndFillsToSoManyCharacters) {
    EXPECT_EQ(evaluate_text("CAST('ab' AS char(5))"), "ab   ");
    EXPECT_EQ(evaluate_text("CAST('ab  ' AS char(2))"), "ab");
    EXPECT_EQ(evaluate_text("CAST('abcdef' AS char(3))"), "abc");
    EXPECT_EQ(evaluate_text("CAST('a  def' AS char(3))"), "a  ");
    EXPECT_EQ(evaluate_text("CAST('é中😀x' AS char(3))"), "é中😀");
    EXPECT_EQ(evaluate_text("CAST('' AS char(3))"), "   ");
    EXPECT_EQ(evaluate_text("CAST(12.5 AS char(6))"), "12.5  ");
    EXPECT_EQ(evaluate_text("CAST(CAST('ab' AS char(5)) AS char(3))"), "ab ");
    EXPECT_EQ(evaluate_text("CAST(CAST('ab' AS char(3)) AS char(5))"), "ab   ");
    EXPECT_EQ(evaluate_text("CAST(CAST(' 7' AS char(5)) AS int)"), "7");
    EXPECT_EQ(evaluate_text("CAST(CAST('ab' AS char(3)) AS binary)"), "616220");
    EXPECT_EQ(evaluate_text("CAST('ab' AS char(5)) = 'ab '"), "1");
    EXPECT_EQ(evaluate_text("CAST(NULL AS char(5))"), "NULL");
}

TEST(Casts, TheBlanksOfACharAreImpliedAndThoseOfAVarcharStored) {
    const std::vector<TestColumn> columns{{"s", ValueType::kString, {"ab ", "abcd", std::nullopt, ""}}};
    const Plan plan = plan_of("CAST(s AS char(3)), CAST(CAST(s AS char(3)) AS varchar), CAST('x ' AS char(3))", columns);
    Evaluator evaluator(plan, 4);
    evaluator.input(0)->all_valid = 0;
    for (uint32_t row = 0; row < 4; ++row) set_text(evaluator.input(0), ValueType::kString, row, columns[0].values[row]);
    ASSERT_EQ(evaluator.run(4), 4u);
    const auto parts = [&](size_t output) {
        std::string text;
        for (uint32_t row = 0; row < 4; ++row) {
            const bdta3_colstr& slot = values_of<bdta3_colstr>(evaluator.result(output))[row];
            const bool valid = evaluator.result(output)->data->valid[row] != 0;
            text += valid ? std::string(slot.bytes, slot.len) + "+" + std::to_string(slot.blank) + "|" : "NULL|";
        }
        return text;
    };
    EXPECT_EQ(parts(0), "ab+1|abc+0|NULL|+3|");
    EXPECT_EQ(parts(1), "ab +0|abc+0|NULL|   +0|");
    EXPECT_EQ(parts(2), "x+2|x+2|x+2|x+2|");
    EXPECT_EQ(evaluator.result(0)->all_valid, 0u);
    EXPECT_EQ(evaluator.result(2)->all_valid, 1u);
    EXPECT_NE(explain(plan).find("CAST(s AS char(3)): char(3)\n      by char(3) (#0); explicit\n"), std::string::npos);
}

TEST(Casts, NullStaysNull) {
    for (const Cast& cast : all_casts()) {
        const std::string text =
            "CAST(CAST(NULL AS " + std::string(type_name(cast.from)) + ") AS " + std::string(type_name(cast.to)) + ")";
        EXPECT_EQ(evaluate_text(text), "NULL") << text;
    }
}

}  // namespace
}  // namespace qzengine
