// Queries over CSV files, from bytes to bytes: types, formats, many batches, threads, and which failure is reported.
#include "engine/csv_query.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>

#include "engine/catalog/catalog.h"
#include "engine/parser.h"
#include "qzbifun/codes.h"
#include "qzhost/control.h"
#include "tests/engine/csv_test_support.h"

namespace qzengine {
namespace {

using ::testing::HasSubstr;

struct Outcome {
    std::string text;
    std::string error;
    QueryProgress progress;
};

struct Setup {
    std::string_view select;
    std::optional<std::string_view> where = std::nullopt;
    ResultFormat format = ResultFormat::kCsv;
    unsigned threads = 1;
    CsvLimits limits = {};
    std::vector<TypeOverride> types = {};
};

Outcome run(const std::string& csv, const Setup& setup) {
    Outcome result;
    try {
        CsvTable table(text_source(csv), setup.types, setup.limits);
        const Plan plan = make_plan(parse_query(setup.select, setup.where), table.columns(), builtin_catalog());
        QueryOptions options;
        options.format = setup.format;
        options.threads = setup.threads;
        result.progress = run_csv_query(table, plan, options, [&](std::string_view text) { result.text += text; });
    } catch (const std::runtime_error& error) {
        result.error = error.what();
    }
    return result;
}

std::string types_of(const std::string& csv, const std::vector<TypeOverride>& types = {}) {
    std::string text;
    const CsvTable table(text_source(csv), types);
    for (const Column& column : table.columns()) {
        text += column.name + ":" + type_name(column.declared()) + " ";
    }
    return text;
}

// ---- Types ------------------------------------------------------------------------------------------------------------------

TEST(CsvTable, TypesFollowFromTheFields) {
    EXPECT_EQ(types_of("a,b,c,d\n1,1.5,1e3,x\n-2,2,1.5,\n"), "a:bigint b:decimal c:double d:string ");
    EXPECT_EQ(types_of("a,b\n,\n,1\n"), "a:string b:bigint ");
    EXPECT_EQ(types_of("a\n"), "a:string ");
    EXPECT_EQ(types_of("a\n9223372036854775807\n-9223372036854775808\n"), "a:bigint ");
    EXPECT_EQ(types_of("a\n9223372036854775808\n"), "a:decimal ");
    EXPECT_EQ(types_of("a\n" + std::string(38, '9') + "\n"), "a:decimal ");
    EXPECT_EQ(types_of("a\n" + std::string(39, '9') + "\n"), "a:double ");
    EXPECT_EQ(types_of("a\n\"1\"\n"), "a:string ") << "what is quoted is text";
    EXPECT_EQ(types_of("a,b,c,d,e,f\n-,.,+-1,1e,nan,1.2.3\n"), "a:string b:string c:string d:string e:string f:string ");
    EXPECT_EQ(types_of("a,b,c,d\n+1,.5,5.,-.5\n"), "a:bigint b:decimal c:decimal d:decimal ");
    EXPECT_EQ(types_of("a\n1 \n"), "a:string ");
}

TEST(CsvTable, DatesAreSeenWhereEveryFieldIsOneInIsoForm) {
    EXPECT_EQ(
        types_of("a,b,c\n2024-02-29,2024-02-29 10:30,2024-02-29T10:30:15.5Z\n,2024-02-29T10:30:15,2024-02-29 10:30 +08:00\n"),
        "a:date b:datetime c:datetime_tz ");
    EXPECT_EQ(types_of("a\n2024-02-29\n2024-02-29 10:30\n"), "a:datetime ");
    EXPECT_EQ(types_of("a,b\n2024-02-29 10:30,2024-02-29\n2024-02-29 10:30Z,2024-02-29 10:30Z\n"), "a:string b:string ")
        << "a zone for all or for none";
    EXPECT_EQ(types_of("a,b,c\n2024-02-29,1,1.5\n1,2024-02-29,2024-02-29 10:30\n"), "a:string b:string c:string ");
    EXPECT_EQ(types_of("a,b,c,d,e\n10:30:15,24-02-29,2024/02/29,20240229,2024-2-29\n"),
              "a:string b:string c:string d:bigint e:string ");
    EXPECT_EQ(types_of("a,b,c,d\n2023-02-29,2024-02-29 ,\"2024-02-29\",2024-02-29x\n"), "a:string b:string c:string d:string ");
}

TEST(CsvTable, TypesFollowFromTheFirstThousandRows) {
    std::string csv = "a\n";
    for (int i = 0; i < 999; ++i) csv += "1\n";
    EXPECT_EQ(types_of(csv + "x\n"), "a:string ");
    EXPECT_EQ(types_of(csv + "1\nx\n"), "a:bigint ");
}

TEST(CsvTable, AGivenTypeComesFirst) {
    EXPECT_EQ(types_of("a,B\n1,2\n", {{"b", ValueType::kDouble}}), "a:bigint B:double ");
    EXPECT_THROW(types_of("a\n1\n", {{"c", ValueType::kInt}}), UsageError);
    EXPECT_EQ(types_of("a,b,c\n1,2,3\n", {{"a", ValueType::kClob}, {"b", ValueType::kBlob}, {"c", {ValueType::kString, 20}}}),
              "a:clob b:blob c:char(20) ");
}

TEST(CsvTable, AFieldThatDoesNotFitIsNamedByLineAndColumn) {
    std::string csv = "a,b\n";
    for (int i = 0; i < 1000; ++i) csv += "x,1\n";
    EXPECT_EQ(run(csv + "x,1.5\n", {"b"}).error,
              "line 1002, column b: '1.5' is no bigint; --type b=string reads the column as text");
    EXPECT_EQ(
        run(csv + "x,9223372036854775808\n", {"b"}).error,
        "line 1002, column b: '9223372036854775808' is out of the range of bigint; --type b=string reads the column as text");
    EXPECT_EQ(run(csv + "x,\"\"\n", {"b"}).error,
              "line 1002, column b: '' is no bigint; --type b=string reads the column as text");
    EXPECT_EQ(run("d\n2024-02-29\n\"2024-02-30\"\n", {"d", {}, {}, 1, {}, {{"d", ValueType::kDate}}}).error,
              "line 3, column d: '2024-02-30' is no date; --type d=string reads the column as text");
    EXPECT_EQ(run("d\n9999999999-0\n", {"d", {}, {}, 1, {}, {{"d", ValueType::kIntervalYm}}}).error,
              "line 2, column d: '9999999999-0' is out of the range of interval_ym; --type d=string reads the column as text");
    EXPECT_EQ(run("d\n\n\"\"\n", {"d", {}, {}, 1, {}, {{"d", ValueType::kDatetime}}}).error,
              "line 3, column d: '' is no datetime; --type d=string reads the column as text");
    EXPECT_EQ(run(csv + "x,1.5\n", {"a"}).error, "") << "only columns that are used are read";
    EXPECT_THAT(run("a\n" + std::string(100, '7') + "x\n", {"a", {}, {}, 1, {}, {{"a", ValueType::kInt}}}).error,
                HasSubstr("'" + std::string(60, '7') + "...' is no int"));
}

TEST(CsvTable, EveryReadableTypeReadsItsFields) {
    const auto read = [](ValueType type, const std::string& field) {
        return run("a\n" + field + "\n", {"a", {}, {}, 1, {}, {{"a", type}}}).text;
    };
    EXPECT_EQ(read(ValueType::kInt, "-2147483648"), "a\n-2147483648\n");
    EXPECT_EQ(read(ValueType::kBigint, "-9223372036854775808"), "a\n-9223372036854775808\n");
    EXPECT_EQ(read(ValueType::kBigint, "+999999999999999999"), "a\n999999999999999999\n");
    EXPECT_EQ(read(ValueType::kBigint, "000000000000000000000000000001"), "a\n1\n");
    EXPECT_EQ(read(ValueType::kDecimal, "-0.50"), "a\n-0.50\n");
    EXPECT_EQ(read(ValueType::kDouble, "0.1"), "a\n0.1\n");
    EXPECT_EQ(read(ValueType::kFloat, "0.1"), "a\n0.1\n");
    EXPECT_EQ(read(ValueType::kDecimal, "\"12.5\""), "a\n12.5\n");
    EXPECT_EQ(read(ValueType::kString, "12.50"), "a\n12.50\n");
    EXPECT_EQ(read(ValueType::kBinary, "\"a\"\"b\""), "a\n612262\n");
    EXPECT_EQ(read(ValueType::kBinary, "\"\""), "a\n\"\"\n") << "empty, and not NULL";
    EXPECT_EQ(read(ValueType::kDate, "\"2024/2/29\""), "a\n2024-02-29\n");
    EXPECT_EQ(read(ValueType::kTime, "10:30:15.250"), "a\n10:30:15.25\n");
    EXPECT_EQ(read(ValueType::kDatetime, "20240229T103015"), "a\n2024-02-29 10:30:15\n");
    EXPECT_EQ(read(ValueType::kIntervalYm, "-1-2"), "a\n-1-2\n");
    EXPECT_EQ(read(ValueType::kIntervalDt, "3 04:05:06.5"), "a\n3 04:05:06.5\n");
    EXPECT_EQ(read(ValueType::kTimeTz, "10:30 +8"), "a\n10:30:00 +08:00\n");
    EXPECT_EQ(read(ValueType::kDatetimeTz, "2024-02-29 10:30Z"), "a\n2024-02-29 10:30:00 +00:00\n");
}

TEST(CsvTable, AZonedFieldThatNamesNoZoneHasThatOfTheSession) {
    CsvTable table(text_source("d\n2024-02-29 10:30\n2024-02-29 10:30Z\n"), {{"d", ValueType::kDatetimeTz}});
    QueryOptions options;
    options.session.time_zone = int16_t{-210};
    const Query query = parse_query("d, CAST(CAST(d AS datetime) AS datetime_tz) AS e, CAST('2024-01-01' AS datetime_tz) AS f");
    const Plan plan = make_plan(query, table.columns(), builtin_catalog(), options.session);
    std::string text;
    run_csv_query(table, plan, options, [&](std::string_view part) { text += part; });
    EXPECT_EQ(text,
              "d,e,f\n"
              "2024-02-29 10:30:00 -03:30,2024-02-29 10:30:00 -03:30,2024-01-01 00:00:00 -03:30\n"
              "2024-02-29 10:30:00 +00:00,2024-02-29 10:30:00 -03:30,2024-01-01 00:00:00 -03:30\n");
}

// ---- Formats ----------------------------------------------------------------------------------------------------------------

constexpr const char* kOdd = "s,n,d\n\"a,\"\"b\"\"\n\",1,1.50\n\"\",,\n,-7,\nplain,0,-0.25\n";

TEST(CsvQuery, CsvGoesOutAsItCameIn) {
    EXPECT_EQ(run(kOdd, {"s, n, d"}).text, kOdd);
    EXPECT_EQ(run("a b\n\"x\ry\"\n", {"\"a b\" as \"a,b\""}).text, "\"a,b\"\n\"x\ry\"\n");
}

TEST(CsvQuery, JsonIsAnArrayOfObjects) {
    EXPECT_EQ(run(kOdd, {"s, n, d as \"the \\ \"\"d\"\"\"", {}, ResultFormat::kJson}).text,
              "[\n"
              "{\"s\":\"a,\\\"b\\\"\\u000a\",\"n\":1,\"the \\\\ \\\"d\\\"\":1.50},\n"
              "{\"s\":\"\",\"n\":null,\"the \\\\ \\\"d\\\"\":null},\n"
              "{\"s\":null,\"n\":-7,\"the \\\\ \\\"d\\\"\":null},\n"
              "{\"s\":\"plain\",\"n\":0,\"the \\\\ \\\"d\\\"\":-0.25}\n"
              "]\n");
    EXPECT_EQ(run("a\n", {"a", {}, ResultFormat::kJson}).text, "[\n]\n");
    EXPECT_EQ(run("a\nnan\n1e300\n", {"a", {}, ResultFormat::kJson, 1, {}, {{"a", ValueType::kDouble}}}).text,
              "[\n{\"a\":\"NaN\"},\n{\"a\":1E+300}\n]\n");
}

TEST(CsvQuery, JsonJoinsBatchesWhateverTheConditionLeaves) {
    std::string csv = "n\n";
    for (int i = 0; i < 10; ++i) csv += std::to_string(i) + "\n";
    EXPECT_EQ(run(csv, {"n", "n = 4 or n = 8", ResultFormat::kJson, 1, {2, 1}}).text, "[\n{\"n\":4},\n{\"n\":8}\n]\n");
}

TEST(CsvQuery, TablesAreAlignedByCharacters) {
    EXPECT_EQ(
        run("city,n\nZürich,5\nBern,1000\nx\x1B[2J,\n\"a\nb\",7\n", {"city, n AS \"count of n\"", {}, ResultFormat::kTable})
            .text,
        " city     | count of n\n"
        "----------+------------\n"
        " Zürich   |          5\n"
        " Bern     |       1000\n"
        " x\\x1B[2J |       NULL\n"
        " a\\nb     |          7\n"
        "(4 rows)\n");
    EXPECT_EQ(run("a\n", {"a", {}, ResultFormat::kTable}).text, " a\n---\n(0 rows)\n");
    EXPECT_EQ(run("a\n1\n", {"a", {}, ResultFormat::kTable}).text, " a\n---\n 1\n(1 row)\n");
}

// ---- Many batches and threads -----------------------------------------------------------------------------------------------

// Three times as many rows as a batch can have, every value told by its row.
std::string many_rows() {
    std::string csv = "n,p,s\n";
    for (int i = 0; i < 200000; ++i) {
        csv += std::to_string(i % 2 == 0 ? i : -i) + "," + (i % 11 == 0 ? "" : std::to_string(i) + ".5") + ",r" +
               std::to_string(i) + "\n";
    }
    return csv;
}

std::string expected_rows() {
    std::string text = "a,c,s\n";
    for (int i = 0; i < 200000; ++i) {
        if (i % 2 == 0) continue;
        text += std::to_string(i) + "," + (i % 11 == 0 ? "" : std::to_string(i + 1)) + ",r" + std::to_string(i) + "\n";
    }
    return text;
}

TEST(CsvQuery, ManyBatchesOnAnyNumberOfThreadsGiveTheSameBytes) {
    const std::string csv = many_rows();
    const std::string expected = expected_rows();
    for (unsigned threads : {1u, 2u, 5u}) {
        for (const CsvLimits& limits : {CsvLimits{}, CsvLimits{size_t{4} << 20, 65536}, CsvLimits{30000, 1000}}) {
            const Outcome result = run(csv, {"abs(n) as a, ceil(p) as c, s", "n < 0", ResultFormat::kCsv, threads, limits});
            ASSERT_EQ(result.error, "");
            ASSERT_TRUE(result.text == expected) << threads << " threads, batches of " << limits.batch_bytes;
            EXPECT_EQ(result.progress.rows, 200000u);
        }
    }
}

TEST(CsvQuery, AFailureNamesRowAndLineAndTheTextBeforeItsBatchIsTheSame) {
    std::string csv = "n,s\n";
    for (int i = 1; i <= 5000; ++i)
        csv += (i == 3210 || i == 4000 ? "-9223372036854775808" : std::to_string(i)) + ",\"two\nlines\"\n";
    const Outcome one = run(csv, {"abs(n)", {}, ResultFormat::kCsv, 1, {5000, 65536}});
    EXPECT_THAT(one.error, HasSubstr("row 3210 (line 6420): abs(n) failed: "));
    EXPECT_THAT(one.error, HasSubstr("(EC_DATA_OVERFLOW, -6102)\n  in babs_a_math_int\n  with n = -9223372036854775808\n"
                                     "  reported by babs_a_process_int (-6102)\n  reported by babs_a_math_int (-6102)"));
    EXPECT_THAT(one.text, testing::StartsWith("abs(n)\n1\n2\n"));
    for (int round = 0; round < 5; ++round) {
        const Outcome three = run(csv, {"abs(n)", {}, ResultFormat::kCsv, 3, {5000, 65536}});
        EXPECT_EQ(three.error, one.error);
        EXPECT_EQ(three.text, one.text);
    }
}

TEST(CsvQuery, AMalformedRecordBehindAFailureDoesNotHideIt) {
    std::string csv = "n\n";
    for (int i = 1; i <= 3000; ++i) csv += i == 1500 ? "-9223372036854775808\n" : i == 2500 ? "1,2\n" : "1\n";
    for (unsigned threads : {1u, 4u}) {
        EXPECT_THAT(run(csv, {"abs(n)", {}, ResultFormat::kCsv, threads, {500, 65536}}).error,
                    HasSubstr("row 1500 (line 1501)"));
    }
    for (unsigned threads : {1u, 4u}) {
        EXPECT_THAT(run(csv, {"n", {}, ResultFormat::kCsv, threads, {500, 65536}}).error,
                    HasSubstr("line 2501: field 2 has no column"));
    }
}

TEST(CsvQuery, ASinkThatFailsEndsTheRun) {
    for (unsigned threads : {1u, 3u}) {
        CsvTable table(text_source(many_rows()), {}, {10000, 65536});
        const Plan plan = make_plan(parse_query("n"), table.columns(), builtin_catalog());
        QueryOptions options;
        options.threads = threads;
        int calls = 0;
        EXPECT_THROW(run_csv_query(table, plan, options,
                                   [&](std::string_view) {
                                       if (++calls == 5) throw OutputError("the disk is full");
                                   }),
                     OutputError);
        EXPECT_EQ(calls, 5);
    }
}

// ---- char(n) ----------------------------------------------------------------------------------------------------------------

TEST(CsvQuery, ACharIsWrittenWithoutItsBlanksAndAStringWithThem) {
    const std::string csv = "s,n\nab,1\nab   ,2\n\"ab  \",3\n     ,4\n\"\",5\n,6\n\"a\"\"b        \",7\n";
    const std::vector<TypeOverride> types{{"s", {ValueType::kString, 5}}};
    EXPECT_EQ(run(csv, {.select = "s", .types = types}).text, "s\nab\nab\nab\n\"\"\n\"\"\n\n\"a\"\"b\"\n");
    EXPECT_EQ(run(csv, {.select = "CAST(s AS string) AS t", .types = types}).text,
              "t\nab   \nab   \nab   \n     \n     \n\n\"a\"\"b  \"\n");
    EXPECT_EQ(run(csv, {.select = "s", .where = "n < 5", .format = ResultFormat::kJson, .types = types}).text,
              "[\n{\"s\":\"ab\"},\n{\"s\":\"ab\"},\n{\"s\":\"ab\"},\n{\"s\":\"\"}\n]\n");
    EXPECT_EQ(run(csv, {.select = "s, n", .where = "s = 'ab '", .format = ResultFormat::kTable, .types = types}).text,
              " s  | n\n----+---\n ab | 1\n ab | 2\n ab | 3\n(3 rows)\n");
    EXPECT_EQ(run(csv, {.select = "s", .where = "n = 2"}).text, "s\nab   \n") << "a string keeps what stands in the file";
}

TEST(CsvQuery, ACharCountsCharactersNotBytes) {
    const std::vector<TypeOverride> types{{"s", {ValueType::kString, 3}}};
    EXPECT_EQ(run("s\né中😀\né\n", {.select = "CAST(s AS string) AS t", .types = types}).text, "t\né中😀\né  \n");
    EXPECT_EQ(run("s\nabc   \né中😀x  \n", {.select = "s", .types = types}).error,
              "line 3, column s: 'é中😀x  ' has 4 characters, more than char(3); --type s=string reads the column as text");
    EXPECT_EQ(run("n,s\n1,\"line\nbreak\"\n", {.select = "s", .types = types}).error,
              "line 2, column s: 'line\nbreak' has 10 characters, more than char(3); --type s=string reads the column as text");
}

// ---- Character sets ---------------------------------------------------------------------------------------------------------

class EucKr {
  public:
    EucKr() { host_parameter_set(SERVER_CHARSET, 2); }
    ~EucKr() { host_parameters_reset(); }
    EucKr(const EucKr&) = delete;
    EucKr& operator=(const EucKr&) = delete;
};

TEST(CsvQuery, ResultsAreOfTheFilesCharacterSetAndJsonAndTablesAreUtf8) {
    const EucKr charset;
    const std::string csv = "\xC0\xCC\xB8\xA7,n\n\xB0\xA1\xB3\xAA,1\na\xFF,2\n";
    EXPECT_EQ(run(csv, {.select = "이름, n"}).text, csv) << "bytes that are no characters go through";
    EXPECT_EQ(run(csv, {.select = "이름, '다' AS 다", .where = "이름 = '가나'"}).text,
              "\xC0\xCC\xB8\xA7,\xB4\xD9\n\xB0\xA1\xB3\xAA,\xB4\xD9\n");
    EXPECT_EQ(run(csv, {.select = "이름, n AS é", .format = ResultFormat::kJson}).text,
              "[\n{\"이름\":\"가나\",\"é\":1},\n{\"이름\":\"a\uFFFD\",\"é\":2}\n]\n");
    EXPECT_EQ(run(csv, {.select = "이름, n AS é", .format = ResultFormat::kTable}).text,
              " 이름 | é\n------+---\n 가나 | 1\n a\uFFFD   | 2\n(2 rows)\n");
    EXPECT_EQ(run(csv, {.select = "이름, n AS é"}).error,
              "the name é cannot be written: euc-kr has no character é; AS gives another name");
    EXPECT_EQ(run(csv, {.select = "이름", .types = {{"이름", {ValueType::kString, 2}}}}).text,
              "\xC0\xCC\xB8\xA7\n\xB0\xA1\xB3\xAA\na\xFF\n");
    EXPECT_EQ(run(csv, {.select = "이름", .types = {{"이름", {ValueType::kString, 1}}}}).error,
              "line 2, column 이름: '가나' has 2 characters, more than char(1); --type 이름=string reads the column as text");
}

TEST(CsvQuery, JsonIsUtf8AlsoOfAFileThatIsNot) {
    EXPECT_EQ(run("s\na\xFFz\n", {.select = "s", .format = ResultFormat::kJson}).text, "[\n{\"s\":\"a\uFFFDz\"}\n]\n");
    EXPECT_EQ(run("s\na\xFFz\n", {.select = "s"}).text, "s\na\xFFz\n");
}

TEST(CsvQuery, ATableIsAlignedByWhatATerminalShows) {
    EXPECT_EQ(run("s,t\n中文,1\ne\u0301,2\nabcde,3\n", {.select = "s, t", .format = ResultFormat::kTable}).text,
              " s     | t\n-------+---\n 中文  | 1\n e\u0301     | 2\n abcde | 3\n(3 rows)\n");
    EXPECT_EQ(run("s\n\u009B31m\n", {.select = "s", .format = ResultFormat::kTable}).text,
              " s\n---------\n \\x9B31m\n(1 row)\n");
}

TEST(CsvQuery, AFieldThatDoesNotFitIsShownInWholeCharacters) {
    std::string long_text;
    std::string shown;
    for (int i = 0; i < 70; ++i) {
        long_text += "中";
        if (i < 60) shown += "中";
    }
    EXPECT_EQ(run("n\n" + long_text + "\n", {.select = "n", .types = {{"n", ValueType::kInt}}}).error,
              "line 2, column n: '" + shown + "...' is no int; --type n=string reads the column as text");
    EXPECT_EQ(run("n\n" + shown + "\n", {.select = "n", .types = {{"n", ValueType::kInt}}}).error,
              "line 2, column n: '" + shown + "' is no int; --type n=string reads the column as text");
}

TEST(CsvQuery, StringsWithDoubledQuotesAreReadOnceForTwoUses) {
    EXPECT_EQ(run("s\n\"a\"\"b\"\n", {"s, s as t, s = 'a\"b' as u"}).text, "s,t,u\n\"a\"\"b\",\"a\"\"b\",1\n");
}

TEST(CsvQuery, RandomFilesAndThreadsNeverDisagree) {
    constexpr uint32_t kSeed = 5;
    RecordProperty("seed", static_cast<int>(kSeed));
    std::mt19937 random(kSeed);
    constexpr std::string_view kPieces[] = {
        "1", "-2.5", ",", ",", "\n", "\n", "\"x\"", "\"", "a", "1e5", "", "\"\"\"\"", "9223372036854775807"};
    for (int round = 0; round < 300; ++round) {
        std::string csv = "a,b\n";
        for (size_t n = random() % 60; n > 0; --n) csv += kPieces[random() % std::size(kPieces)];
        const Outcome one = run(csv, {"a, b", "b is not null", ResultFormat::kJson, 1, {20, 3}});
        const Outcome four = run(csv, {"a, b", "b is not null", ResultFormat::kJson, 4, {20, 3}});
        ASSERT_EQ(one.text, four.text) << csv;
        ASSERT_EQ(one.error, four.error) << csv;
    }
}

}  // namespace
}  // namespace qzengine
