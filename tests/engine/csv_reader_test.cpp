// CSV files: every odd field, every malformed record, batches of every size, and libcsv as the judge.
#include "engine/csv_reader.h"

#include <csv.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <random>

#include "engine/csv_scan.h"
#include "tests/engine/csv_test_support.h"

namespace qzengine {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

using Row = std::vector<std::optional<std::string>>;  // an absent field was empty and without quotes

struct File {
    std::vector<std::string> names;
    std::vector<Row> rows;
    std::vector<uint64_t> lines;
    std::string error;
};

File read_file(const std::string& text, CsvLimits limits = {}, size_t piece = size_t{1} << 20) {
    File file;
    try {
        CsvReader reader(text_source(text, piece), limits);
        file.names = reader.names();
        CsvBatch batch;
        while (reader.next(batch)) {
            reader.index(batch);
            EXPECT_LE(batch.rows(), limits.batch_rows);
            for (uint32_t row = 0; row < batch.rows(); ++row) {
                file.lines.push_back(batch.line(row));
                Row& fields = file.rows.emplace_back();
                for (uint32_t column = 0; column < file.names.size(); ++column) {
                    const CsvBatch::Field field = batch.unescape(batch.field(row, column));
                    const bool present = field.size > 0 || field.quoted;
                    fields.push_back(present ? std::optional<std::string>(field.text()) : std::nullopt);
                }
            }
        }
    } catch (const InputError& error) {
        file.error = error.what();
    }
    return file;
}

const std::optional<std::string> kNull;

TEST(CsvReader, PlainRecords) {
    const File file = read_file("a,b\n1,x\n2,y\n");
    EXPECT_THAT(file.names, ElementsAre("a", "b"));
    EXPECT_THAT(file.rows, ElementsAre(Row{"1", "x"}, Row{"2", "y"}));
    EXPECT_THAT(file.lines, ElementsAre(2, 3));
    EXPECT_EQ(file.error, "");
}

TEST(CsvReader, TheLastRecordMayLackItsEnd) {
    EXPECT_THAT(read_file("a,b\n1,x").rows, ElementsAre(Row{"1", "x"}));
    EXPECT_THAT(read_file("a,b\n1,").rows, ElementsAre(Row{"1", kNull}));
    EXPECT_THAT(read_file("a,b\n1,\"x\"").rows, ElementsAre(Row{"1", "x"}));
    EXPECT_TRUE(read_file("a,b").rows.empty());
    EXPECT_THAT(read_file("a,b").names, ElementsAre("a", "b"));
}

TEST(CsvReader, CarriageReturnsBelongToLineEndsAndNothingElse) {
    EXPECT_THAT(read_file("a,b\r\n1,x\r\n,\r\n\"q\",\"r\"\r\n").rows,
                ElementsAre(Row{"1", "x"}, Row{kNull, kNull}, Row{"q", "r"}));
    EXPECT_THAT(read_file("a,b\r\n1,x\r\n").names, ElementsAre("a", "b"));
    EXPECT_THAT(read_file("a,b\n1\r,x\ry\n").rows, ElementsAre(Row{"1\r", "x\ry"}));
    EXPECT_THAT(read_file("a,b\n1,\"x\r\"\n").rows, ElementsAre(Row{"1", "x\r"}));
    EXPECT_THAT(read_file("a\n\r\r\n").rows, ElementsAre(Row{"\r"}));
}

TEST(CsvReader, QuotedFieldsHoldAnything) {
    const File file = read_file("a,b\n\"x, \"\"y\"\"\",\"line 1\nline 2\r\nline 3\"\n\"\",\n\"\"\"\",\"\"\"\"\"\"\n1,2\n");
    EXPECT_EQ(file.error, "");
    EXPECT_THAT(file.rows,
                ElementsAre(Row{"x, \"y\"", "line 1\nline 2\r\nline 3"}, Row{"", kNull}, Row{"\"", "\"\""}, Row{"1", "2"}));
    EXPECT_THAT(file.lines, ElementsAre(2, 5, 6, 7));
}

TEST(CsvReader, NamesMayBeQuoted) {
    EXPECT_THAT(read_file("\"a, b\",\"say \"\"c\"\"\"\n1,2\n").names, ElementsAre("a, b", "say \"c\""));
    EXPECT_THAT(read_file("a,,b\n1,2,3\n").names, ElementsAre("a", "", "b"));
}

TEST(CsvReader, AByteOrderMarkIsSkipped) {
    EXPECT_THAT(read_file("\xEF\xBB\xBF"
                          "a,b\n1,2\n")
                    .names,
                ElementsAre("a", "b"));
    EXPECT_THAT(read_file("\xEF\xBB\xBF"
                          "\"a\"\n1\n")
                    .names,
                ElementsAre("a"));
    EXPECT_THAT(read_file("\xEF\xBB"
                          "a\n1\n")
                    .names,
                ElementsAre("\xEF\xBB"
                            "a"));
}

TEST(CsvReader, EmptyLinesAreSkippedUnlessThereIsOneColumn) {
    const File file = read_file("a,b\n\n1,2\n\r\n\n3,4\n\n");
    EXPECT_EQ(file.error, "");
    EXPECT_THAT(file.rows, ElementsAre(Row{"1", "2"}, Row{"3", "4"}));
    EXPECT_THAT(file.lines, ElementsAre(3, 6));
    EXPECT_THAT(read_file("a\n1\n\n2\n\"\"\n").rows, ElementsAre(Row{"1"}, Row{kNull}, Row{"2"}, Row{""}));
}

TEST(CsvReader, MalformedRecordsAreNamedByLine) {
    EXPECT_EQ(read_file("").error, "line 1 is empty; it must name the columns");
    EXPECT_EQ(read_file("\xEF\xBB\xBF").error, "line 1 is empty; it must name the columns");
    EXPECT_EQ(read_file("\n1\n").error, "line 1 is empty; it must name the columns");
    EXPECT_EQ(read_file("a,b\n1,2\n3\n").error,
              "line 3: column b is missing: there is 1 field and the first line names 2 columns");
    EXPECT_EQ(read_file("a,b,c\n1,2\n").error,
              "line 2: column c is missing: there are 2 fields and the first line names 3 columns");
    EXPECT_EQ(read_file("a,b\n1,2,3\n").error,
              "line 2: field 3 has no column: there are 3 fields and the first line names 2 columns");
    EXPECT_EQ(read_file("a\n1,2\n").error,
              "line 2: field 2 has no column: there are 2 fields and the first line names 1 column");
    EXPECT_EQ(read_file("a,b\n1,2\n3\n4,5,6\n").error, read_file("a,b\n1,2\n3\n").error)
        << "they do not make up for one another";
    EXPECT_EQ(read_file("a,b\n\"m\n\",1\nx\"y,2\n").error,
              "line 4: a quote stands inside a field that does not begin with one");
    EXPECT_EQ(read_file("a,b\n1,\"x\"y\n").error, "line 2: text stands behind the closing quote of a field");
    EXPECT_EQ(read_file("a,b\n1,\"x\" \n").error, "line 2: text stands behind the closing quote of a field");
    EXPECT_EQ(read_file("a,b\n1,\"x\"\r\r\n").error, "line 2: text stands behind the closing quote of a field");
    EXPECT_EQ(read_file("a,b\n1,2\n3,\"x\n4,5\n").error, "line 3: the quoted field is not closed");
    EXPECT_EQ(read_file("a,b\n1,\"").error, "line 2: the quoted field is not closed");
    EXPECT_EQ(read_file("a,\"b\n1,2\n").error, "line 1: the quoted field is not closed");
}

TEST(CsvReader, ARecordLongerThanABatchIsReadWhole) {
    const std::string longer(5000, 'x');
    const File file = read_file("a,b\n1," + longer + "\n2,y\n", {100, 65536});
    EXPECT_THAT(file.rows, ElementsAre(Row{"1", longer}, Row{"2", "y"}));
}

TEST(CsvReader, ARecordBeyondTheLimitIsAnErrorAndNotAllMemory) {
    // A field that is never closed: the reader stops at the limit, however much would follow.
    size_t given = 0;
    const ByteSource endless = [&](char* buffer, size_t size) {
        std::memset(buffer, 'x', size);
        if (given == 0) std::memcpy(buffer, "a\n\"", 3);
        given += size;
        return size;
    };
    try {
        CsvReader reader(endless, {1 << 16, 65536});
        CsvBatch batch;
        reader.next(batch);
        FAIL() << "no error";
    } catch (const InputError& error) {
        EXPECT_THAT(error.what(), HasSubstr("line 2: the record is longer than 67108864 bytes"));
        EXPECT_LE(given, kMaxRecordBytes + (size_t{1} << 17));
    }
}

TEST(CsvReader, AFailingSourceIsReported) {
    const ByteSource failing = [](char*, size_t) -> size_t { throw InputError("cannot read disk: broken"); };
    EXPECT_THROW(CsvReader{failing}, InputError);
    EXPECT_THROW(open_byte_source("/nonexistent/file.csv"), InputError);
}

TEST(CsvReader, TheCutIntoBatchesDoesNotShow) {
    std::string text = "a,b,c\n";
    for (int i = 0; i < 300; ++i) {
        text += std::to_string(i) + (i % 7 == 0 ? ",\"q\n\"\"" + std::string(static_cast<size_t>(i), 'z') + "\"," : ",plain,") +
                (i % 5 == 0 ? "" : "end") + (i % 2 == 0 ? "\r\n" : "\n");
    }
    const File whole = read_file(text);
    ASSERT_EQ(whole.error, "");
    ASSERT_EQ(whole.rows.size(), 300u);
    for (size_t bytes : {1u, 2u, 63u, 64u, 65u, 127u, 128u, 1000u, 4096u}) {
        for (uint32_t rows : {1u, 2u, 63u, 64u, 65u, 65536u}) {
            const File cut = read_file(text, {bytes, rows}, bytes % 3 == 0 ? 1 : 777);
            EXPECT_EQ(cut.rows, whole.rows) << bytes << " " << rows;
            EXPECT_EQ(cut.lines, whole.lines) << bytes << " " << rows;
        }
    }
}

TEST(CsvReader, ErrorsNameTheSameLineHoweverTheFileIsCut) {
    std::string text = "a,b\n";
    for (int i = 0; i < 100; ++i) text += "1,\"x\ny\"\n";
    for (const char* bad : {"1\n", "1,2,3\n", "x\"y,1\n", "1,\"x\"y\n"}) {
        const std::string error = read_file(text + bad + text).error;
        EXPECT_THAT(error, HasSubstr("line 202: ")) << bad;
        for (size_t bytes : {1u, 50u, 64u, 500u}) EXPECT_EQ(read_file(text + bad + text, {bytes, 65536}).error, error) << bad;
    }
}

TEST(CsvReader, OfSeveralFaultsTheFirstIsTold) {
    const std::string missing = "line 2: column b is missing: there is 1 field and the first line names 2 columns";
    const std::string stray = "line 2: a quote stands inside a field that does not begin with one";
    for (size_t bytes : {1u, 1000u}) {
        EXPECT_EQ(read_file("a,b\n1\nx\"y,2\n", {bytes, 65536}).error, missing);
        EXPECT_EQ(read_file("a,b\nx\"y,2\n1\n", {bytes, 65536}).error, stray);
        EXPECT_EQ(read_file("a,b\nx\"y,2\n1\"\n3,4\n", {bytes, 65536}).error, stray);
    }
}

// ---- libcsv as the judge ----------------------------------------------------------------------------------------------------

// What libcsv makes of the text; nothing when it refuses it.
std::optional<std::vector<Row>> read_by_libcsv(const std::string& text) {
    struct State {
        std::vector<Row> rows;
        Row row;
    } state;
    csv_parser parser;
    if (csv_init(&parser, CSV_STRICT | CSV_STRICT_FINI | CSV_EMPTY_IS_NULL) != 0) return std::nullopt;
    csv_set_space_func(&parser, [](unsigned char) { return 0; });
    // A carriage return alone ends no record here.
    csv_set_term_func(&parser, [](unsigned char c) { return c == '\n' ? 1 : 0; });
    const auto field = [](void* bytes, size_t size, void* data) {
        Row& row = static_cast<State*>(data)->row;
        row.push_back(bytes == nullptr ? std::nullopt : std::optional(std::string(static_cast<char*>(bytes), size)));
    };
    const auto record = [](int, void* data) {
        State& s = *static_cast<State*>(data);
        s.rows.push_back(std::move(s.row));
        s.row.clear();
    };
    const bool good = csv_parse(&parser, text.data(), text.size(), field, record, &state) == text.size() &&
                      csv_fini(&parser, field, record, &state) == 0;
    csv_free(&parser);
    if (!good) return std::nullopt;
    return std::move(state.rows);
}

TEST(CsvReader, AgreesWithLibcsvOnRandomText) {
    constexpr uint32_t kSeed = 7;
    RecordProperty("seed", static_cast<int>(kSeed));
    std::mt19937 random(kSeed);
    constexpr std::string_view kPieces[] = {"a",     "bc",     ",", ",",   "\n",    "\"",      "\"\"",
                                            "\",\"", "\"\n\"", " ", "1.5", "\"x\"", ",\"y\"\n"};
    int good = 0;
    int refused = 0;
    for (int round = 0; round < 30000; ++round) {
        std::string text = "h,i\n";
        for (size_t n = random() % 14; n > 0; --n) text += kPieces[random() % std::size(kPieces)];
        const std::optional<std::vector<Row>> judged = read_by_libcsv(text);
        const File file = read_file(text, {1 + random() % 80, 65536});
        // libcsv skips empty lines too; it has no opinion about the number of fields.
        bool expected = judged.has_value();
        std::vector<Row> rows;
        if (judged) {
            rows.assign(judged->begin() + 1, judged->end());
            expected = std::all_of(rows.begin(), rows.end(), [](const Row& row) { return row.size() == 2; });
        }
        ASSERT_EQ(file.error.empty(), expected) << "<" << text << "> " << file.error;
        if (expected) {
            ASSERT_EQ(file.rows, rows) << "<" << text << ">";
        }
        ++(expected ? good : refused);
    }
    EXPECT_GT(good, 1000);
    EXPECT_GT(refused, 1000);
}

TEST(CsvReader, RandomBytesAreAnsweredOneWayOrTheOther) {
    constexpr uint32_t kSeed = 11;
    RecordProperty("seed", static_cast<int>(kSeed));
    std::mt19937 random(kSeed);
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        for (size_t n = random() % 300; n > 0; --n) {
            text += random() % 3 == 0 ? ",\"\n\r"[random() % 4] : static_cast<char>(random() % 256);
        }
        const File file = read_file(text, {1 + random() % 100, static_cast<uint32_t>(1 + random() % 100)}, 1 + random() % 50);
        if (!file.error.empty()) continue;
        for (const Row& row : file.rows) ASSERT_EQ(row.size(), file.names.size());
    }
}

// ---- The scan ---------------------------------------------------------------------------------------------------------------

TEST(CsvScan, MasksAreThoseOfTheObviousLoop) {
    std::mt19937 random(3);
    for (int round = 0; round < 5000; ++round) {
        char block[kScanBlock];
        CsvMasks expected{0, 0, 0};
        for (size_t i = 0; i < kScanBlock; ++i) {
            constexpr char kNear[] = {',', '\n', '"', '+', '-', '\x0B', '!', '#', '\xAC', '\x8A', '\xA2', '\0', '\xFF', 'x'};
            block[i] = kNear[random() % std::size(kNear)];
            const uint64_t bit = uint64_t{1} << i;
            expected.commas |= block[i] == ',' ? bit : 0;
            expected.newlines |= block[i] == '\n' ? bit : 0;
            expected.quotes |= block[i] == '"' ? bit : 0;
        }
        for (const CsvMasks& masks : {scan_csv_block(block), scan_csv_block_portable(block)}) {
            ASSERT_EQ(masks.commas, expected.commas);
            ASSERT_EQ(masks.newlines, expected.newlines);
            ASSERT_EQ(masks.quotes, expected.quotes);
        }
    }
}

TEST(CsvScan, ParityRunsFromQuoteToQuoteAndOnIntoTheNextBlock) {
    EXPECT_EQ(running_parity(0), 0u);
    EXPECT_EQ(running_parity(1), ~uint64_t{0});
    EXPECT_EQ(running_parity(0b100100), 0b11100u);
    EXPECT_EQ(running_parity(0b11), 0b1u);
    QuoteState state;
    EXPECT_EQ(state.inside(uint64_t{1} << 63), uint64_t{1} << 63);
    EXPECT_TRUE(state.open());
    EXPECT_EQ(state.inside(0), ~uint64_t{0});
    EXPECT_EQ(state.inside(0b1000), 0b111u);
    EXPECT_FALSE(state.open());
}

}  // namespace
}  // namespace qzengine
