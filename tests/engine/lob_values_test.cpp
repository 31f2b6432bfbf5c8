// LOBs in the engine: where values are kept, which overload takes them, what comes out, and that a batch's are gone behind it.
#include "engine/lob_values.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/catalog/catalog.h"
#include "engine/csv_columns.h"
#include "engine/csv_query.h"
#include "engine/parser.h"
#include "engine/value_text.h"
#include "qzbifun/codes.h"
#include "qzhost/column.h"
#include "qzhost/lob.h"
#include "tests/engine/csv_test_support.h"
#include "tests/engine/support.h"

namespace qzengine {
namespace {

using enum ValueType;
using ::testing::HasSubstr;

const bdta3_colstr& slot(const bdta3_col* vector, uint32_t row) { return values_of<bdta3_colstr>(vector)[row]; }

std::string read_back(qz_env* env, const bdta3_colstr& locator) {
    std::string storage;
    std::string_view value;
    EXPECT_EQ(read_lob(env, locator, storage, value), 0);
    return std::string(value);
}

// ---- Storage ----------------------------------------------------------------------------------------------------------------

TEST(LobValues, ShortOnesStandInTheRowAndLongOnesTakeTheLongForm) {
    const Environment environment;
    const Vector vector = make_vector(environment, kClob, 1);
    struct Expected {
        size_t bytes;
        int kind;
    };
    for (const auto& [bytes, kind] :
         {Expected{0, LOB_KIND_IN_ROW}, Expected{1, LOB_KIND_IN_ROW}, Expected{2000, LOB_KIND_IN_ROW},
          Expected{2001, LOB_KIND_SHORT}, Expected{(size_t{1} << 20) - 1, LOB_KIND_SHORT},
          Expected{size_t{1} << 20, LOB_KIND_LONG}}) {
        const std::string value(bytes, 'x');
        ASSERT_EQ(store_lob(environment.env(), environment.batch_memory(), kClob, value, vector.get(), 0), 0);
        EXPECT_EQ(slot(vector.get(), 0).bytes[LOB_KIND_AT], kind) << bytes;
        EXPECT_EQ(nblob_get_len_for_colstr_fast(&slot(vector.get(), 0)), bytes);
        EXPECT_EQ(read_back(environment.env(), slot(vector.get(), 0)), value);
    }
}

TEST(LobValues, ABatchThatBeginsReleasesTheValuesOutOfRow) {
    Environment environment;
    const Vector vector = make_vector(environment, kBlob, 1);
    for (int batch = 0; batch < 3; ++batch) {
        ASSERT_EQ(store_lob(environment.env(), environment.batch_memory(), kBlob, std::string(3000, 'x'), vector.get(), 0), 0);
        // The store counts from 1 again, so nothing is left in it.
        EXPECT_EQ(slot(vector.get(), 0).bytes[1], 1);
        std::string kept(slot(vector.get(), 0).bytes, slot(vector.get(), 0).len);
        environment.begin_batch();
        std::string storage;
        std::string_view value;
        EXPECT_EQ(read_lob(environment.env(), {static_cast<uint32_t>(kept.size()), 0, kept.data()}, storage, value),
                  EC_LOB_READ_FAILED);
    }
}

TEST(LobValues, AConstantStandsInItsLocatorHoweverLong) {
    std::string locator = in_row_locator(kClob, std::string(100000, 'y'));
    const bdta3_colstr slot{static_cast<uint32_t>(locator.size()), 0, locator.data()};
    EXPECT_NE(nblob_is_in_row_for_colstr_fast(&slot), 0);
    EXPECT_EQ(read_back(nullptr, slot), std::string(100000, 'y'));
}

TEST(LobValues, AValueThatIsCutShortIsNotTakenForWhole) {
    const Environment environment;
    const Vector vector = make_vector(environment, kClob, 1);
    ASSERT_EQ(store_lob(environment.env(), environment.batch_memory(), kClob, std::string(3000, 'x'), vector.get(), 0), 0);
    std::string storage;
    std::string_view value;
    host_lob_limit_read(2999);
    EXPECT_EQ(read_lob(environment.env(), slot(vector.get(), 0), storage, value), EC_LOB_READ_FAILED);
    host_lob_limit_read(UINT64_MAX);
    host_lob_fail(HOST_LOB_LOOKUP, -4711);
    EXPECT_EQ(read_lob(environment.env(), slot(vector.get(), 0), storage, value), -4711);
    host_lob_fail(HOST_LOB_LOOKUP, 0);
    host_lob_fail(HOST_LOB_READ, -4712);
    EXPECT_EQ(read_lob(environment.env(), slot(vector.get(), 0), storage, value), -4712);
    try {
        TextBuffer out;
        append_value_text(out, environment.env(), kClob, vector.get(), 0);
        ADD_FAILURE() << "no error";
    } catch (const EvaluationError& error) {
        EXPECT_THAT(error.what(), HasSubstr("reading a clob failed: "));
        EXPECT_EQ(error.failure().code, -4712);
    }
    host_lob_fail(HOST_LOB_READ, 0);
}

TEST(LobValues, ForPeopleTheyAreTheirValueOrTheirLength) {
    EXPECT_EQ(describe({kClob, SlotValue{in_row_locator(kClob, "it's"), 0}}), "'it''s'");
    EXPECT_EQ(describe({kBlob, SlotValue{in_row_locator(kBlob, "it"), 0}}), "X'6974'");
    EXPECT_EQ(describe({kClob, {}}), "NULL");
    const Environment environment;
    const Vector vector = make_vector(environment, kBlob, 1);
    ASSERT_EQ(store_lob(environment.env(), environment.batch_memory(), kBlob, std::string(2001, 'x'), vector.get(), 0), 0);
    EXPECT_EQ(describe(load_constant(kBlob, vector.get(), 0)), "a blob of 2001 bytes");
}

// ---- Functions --------------------------------------------------------------------------------------------------------------

// What the tests' exports are called with: the length of the value, and more than a million for a LOB.
int32_t length_of(const bdta3_colstr& value, bool lob) {
    return lob ? 1000000 + static_cast<int32_t>(nblob_get_len_for_colstr_fast(&value))
               : static_cast<int32_t>(value.len + value.blank);
}

int32_t put_lengths(bdta3_col* x, bool lob, bdta3_col* result, uint32_t nrows) {
    for (uint32_t i = 0; i < nrows; ++i) {
        const uint32_t p = physical_row(x, i);
        result->data->valid[i] = x->data->valid[p];
        if (x->data->valid[p] != 0) values_of<int32_t>(result)[i] = length_of(slot(x, p), lob);
    }
    result->all_valid = x->all_valid;
    return 0;
}

int32_t size_of_string(qz_env*, rt_memobj*, bdta3_col* x, bdta3_col* result, uint32_t nrows) {
    return put_lengths(x, false, result, nrows);
}
int32_t size_of_lob(qz_env*, rt_memobj*, bdta3_col* x, bdta3_col* result, uint32_t nrows) {
    return put_lengths(x, true, result, nrows);
}
int32_t size_of_constant_lob(qz_env*, rt_memobj*, bdta3_scalar* x, bdta3_col* y, bdta3_col* result, uint32_t nrows) {
    nstr* locator = reinterpret_cast<nstr*>(x);
    for (uint32_t i = 0; i < nrows; ++i) {
        values_of<int32_t>(result)[i] = static_cast<int32_t>(nblob_get_4byte_len(locator));
        result->data->valid[i] = y->data->valid[physical_row(y, i)];
    }
    return 0;
}
// The value twice: a CLOB made by a function.
int32_t twice(qz_env* env, rt_memobj* rt_mem, bdta3_col* x, bdta3_col* result, uint32_t nrows) {
    for (uint32_t i = 0; i < nrows; ++i) {
        const uint32_t p = physical_row(x, i);
        result->data->valid[i] = x->data->valid[p];
        if (x->data->valid[p] == 0) continue;
        const std::string once = read_back(env, slot(x, p));
        const std::string value = once + once;
        const int32_t code = bdta3_col_assign_text(env, rt_mem, result, i, value.data(), static_cast<uint32_t>(value.size()));
        if (code < 0) return code;
    }
    result->all_valid = x->all_valid;
    return 0;
}

const Catalog& test_catalog() {
    static const Catalog catalog = [] {
        std::vector<Function> functions;
        const auto add = [&](Function function) { functions.push_back(std::move(function)); };
        add({.name = "size", .parameters = {{"x", kString}}, .result = kInt, .forms = {{"a", "size_str", &size_of_string}}});
        add({.name = "size", .parameters = {{"x", kClob}}, .result = kInt, .forms = {{"a", "size_clob", &size_of_lob}}});
        add({.name = "blob_size", .parameters = {{"x", kBlob}}, .result = kInt, .forms = {{"a", "size_blob", &size_of_lob}}});
        add({.name = "clob_size", .parameters = {{"x", kClob}}, .result = kInt, .forms = {{"a", "size_clob", &size_of_lob}}});
        add({.name = "text_size",
             .parameters = {{"x", kString}},
             .result = kInt,
             .forms = {{"a", "size_str", &size_of_string}}});
        add({.name = "in_constant",
             .parameters = {{"x", kClob}, {"y", kString}},
             .result = kInt,
             .forms = {{"va", "in_constant", &size_of_constant_lob}}});
        add({.name = "twice", .parameters = {{"x", kClob}}, .result = kClob, .forms = {{"a", "twice", &twice}}});
        return Catalog(std::move(functions));
    }();
    return catalog;
}

struct Outcome {
    std::string text;
    std::string error;
};

Outcome run(const std::string& csv, std::string_view select, const std::vector<TypeOverride>& types,
            ResultFormat format = ResultFormat::kCsv, CsvLimits limits = {}, unsigned threads = 1,
            std::optional<std::string_view> where = std::nullopt) {
    Outcome outcome;
    try {
        CsvTable table(text_source(csv), types, limits);
        const Plan plan = make_plan(parse_query(select, where), table.columns(), test_catalog());
        QueryOptions options;
        options.format = format;
        options.threads = threads;
        run_csv_query(table, plan, options, [&](std::string_view text) { outcome.text += text; });
    } catch (const std::runtime_error& error) {
        outcome.error = error.what();
    }
    return outcome;
}

const std::vector<TypeOverride> kLobs{{"c", kClob}, {"b", kBlob}};

TEST(LobColumns, AreReadAndWrittenAsTheyStand) {
    const std::string csv = "c,b\nplain,ab\n\"a \"\"quoted\"\", one\",\"\"\n,\n\"\", x \n";
    EXPECT_EQ(run(csv, "c, b", kLobs).text, "c,b\nplain,6162\n\"a \"\"quoted\"\", one\",\"\"\n,\n\"\",207820\n");
    EXPECT_EQ(run(csv, "c, b", kLobs, ResultFormat::kJson).text,
              "[\n{\"c\":\"plain\",\"b\":\"6162\"},\n{\"c\":\"a \\\"quoted\\\", one\",\"b\":\"\"},\n"
              "{\"c\":null,\"b\":null},\n{\"c\":\"\",\"b\":\"207820\"}\n]\n");
    EXPECT_THAT(run(csv, "c, b", kLobs, ResultFormat::kTable).text, HasSubstr(" plain           | 6162\n"));
}

TEST(LobColumns, OfEveryStorageComeOutWhole) {
    std::string csv = "c\n";
    for (size_t bytes : {1u, 2000u, 2001u, 5000u, 1u << 20}) csv += std::string(bytes, 'z') + "\n";
    EXPECT_EQ(run(csv, "c", {{"c", kClob}}).text, csv);
    const Outcome sizes = run(csv, "size(c) AS n, size(CAST(c AS clob)) AS m", {{"c", kClob}});
    EXPECT_EQ(sizes.text, "n,m\n1000001,1000001\n1002000,1002000\n1002001,1002001\n1005000,1005000\n2048576,2048576\n");
}

TEST(LobColumns, TakeTheOverloadOfTheirType) {
    const std::string csv = "c,s,b\nfour,five5,six666\n";
    const auto sizes = [&](std::string_view select) { return run(csv, select, kLobs); };
    EXPECT_EQ(sizes("size(c), size(s), size('ab'), size(CAST('ab' AS clob))").text,
              "size(c),size(s),size('ab'),size(CAST('ab' AS clob))\n1000004,5,2,1000002\n");
    EXPECT_EQ(sizes("clob_size(s) AS n, clob_size('abc') AS m, clob_size(NULL) AS o").text, "n,m,o\n1000005,1000003,\n")
        << "a text where nothing but a clob will do";
    EXPECT_EQ(sizes("blob_size(b) AS n, blob_size(X'00FF') AS m").text, "n,m\n1000006,1000002\n");
    EXPECT_EQ(sizes("text_size(CAST(c AS string)) AS n").text, "n\n4\n");
    EXPECT_EQ(sizes("in_constant(CAST('constant' AS clob), s) AS n, in_constant('constant', s) AS m").text, "n,m\n8,8\n");
    EXPECT_EQ(sizes("size(CAST(CAST('ab' AS char(5)) AS clob)) AS n").text, "n\n1000005\n")
        << "the blanks are part of the value";
}

TEST(LobColumns, WhereNothingTakesThemTheMessageTellsTheWayOut) {
    EXPECT_EQ(run("c,s,b\nx,y,z\n", "text_size(c)", kLobs).error,
              "text_size(clob) does not exist; there is\n  text_size(x string) -> int\n"
              "write CAST(value AS string) for a clob, CAST(value AS binary) for a blob");
    EXPECT_EQ(run("c,s,b\nx,y,z\n", "clob_size(b)", kLobs).error,
              "clob_size(blob) does not exist; there is\n  clob_size(x clob) -> int\n"
              "write CAST(value AS string) for a clob, CAST(value AS binary) for a blob");
    EXPECT_EQ(run("c,s,b\nx,y,z\n", "c = s", kLobs).error,
              "cannot compare clob with string; write CAST(value AS type) for one of them");
    EXPECT_EQ(run("c,s,b\nx,y,z\n", "c = c", kLobs).error, "values of type clob cannot be compared");
    EXPECT_EQ(
        run("c,s,b\nx,y,z\n", "in_constant(c, s)", kLobs).error,
        "argument x of in_constant(x clob, y string) -> int must be a constant; a column can be CAST to string or binary");
    EXPECT_EQ(run("c,s,b\nx,y,z\n", "CAST(1 AS clob)", kLobs).error, "there is no cast from int to clob");
}

TEST(LobColumns, AClobThatAFunctionMakesIsPrintedAsText) {
    const std::string csv = "c\nab\n\n" + std::string(5000, 'x') + "\n";
    EXPECT_EQ(run(csv, "twice(c) AS t", {{"c", kClob}}).text, "t\nabab\n\n" + std::string(10000, 'x') + "\n");
    EXPECT_EQ(run(csv, "twice('ab') AS t", {{"c", kClob}}).text, "t\nabab\nabab\nabab\n") << "of a constant too";
    EXPECT_EQ(run(csv, "size(twice(twice(c))) AS n", {{"c", kClob}}).text, "n\n1000008\n\n1020000\n");
}

TEST(LobColumns, AreReadThroughTheSelectionOfACondition) {
    const std::string csv = "c,n\none,1\n" + std::string(3000, 't') + ",2\n,3\nfour,4\n";
    EXPECT_EQ(run(csv, "c, size(c) AS s", {{"c", kClob}}, ResultFormat::kCsv, {}, 1, "n > 1").text,
              "c,s\n" + std::string(3000, 't') + ",1003000\n,\nfour,1000004\n");
    EXPECT_EQ(run(csv, "n", {{"c", kClob}}, ResultFormat::kCsv, {}, 1, "c IS NULL").text, "n\n3\n");
}

TEST(LobColumns, ManyBatchesAndThreadsGiveTheSameBytes) {
    std::string csv = "c,n\n";
    for (int i = 0; i < 600; ++i) csv += std::string(static_cast<size_t>(i % 7) * 700, 'a') + "x," + std::to_string(i) + "\n";
    for (unsigned threads : {1u, 3u}) {
        EXPECT_EQ(run(csv, "c, n", {{"c", kClob}}, ResultFormat::kCsv, {10000, 65536}, threads).text, csv);
    }
}

TEST(LobCasts, BetweenStringsAndClobsKeepTheBytes) {
    EXPECT_EQ(evaluate_text("CAST('some text' AS clob)"), "some text");
    EXPECT_EQ(evaluate_text("CAST(CAST('some text' AS clob) AS string)"), "some text");
    EXPECT_EQ(evaluate_text("CAST(X'00FF' AS blob)"), "00FF");
    EXPECT_EQ(evaluate_text("CAST(CAST(X'00FF' AS blob) AS binary)"), "00FF");
    EXPECT_EQ(evaluate_text("CAST('' AS clob)"), "");
    EXPECT_EQ(evaluate_text("CAST(NULL AS clob)"), "NULL");
    const std::string fits(32767, 'x');
    EXPECT_EQ(evaluate_text("CAST(CAST('" + fits + "' AS clob) AS string)"), fits);
    EXPECT_EQ(evaluation_code("CAST(CAST('" + fits + "x' AS clob) AS string)"), EC_STRING_TOO_LONG);
}

}  // namespace
}  // namespace qzengine
