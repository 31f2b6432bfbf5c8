// Character sets of columns: what is converted, what is refused, and how wide it is shown.
#include "engine/charset.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "engine/parser.h"
#include "engine/plan.h"
#include "engine/value_text.h"
#include "qzbifun/codes.h"
#include "qzhost/control.h"
#include "tests/engine/csv_test_support.h"
#include "tests/engine/support.h"

namespace qzengine {
namespace {

using ::testing::HasSubstr;

enum Number : uint32_t { kGb18030 = 0, kUtf8 = 1, kEucKr = 2 };

class Charset {
  public:
    explicit Charset(Number number) { host_parameter_set(SERVER_CHARSET, number); }
    ~Charset() { host_parameters_reset(); }
    Charset(const Charset&) = delete;
    Charset& operator=(const Charset&) = delete;
};

TEST(Charset, TextIsConvertedBothWays) {
    // The bytes are those of the standards' tables, and of Python's codecs.
    struct Sample {
        Number number;
        std::string_view name;
        std::string_view bytes;
        std::string_view utf8;
    };
    constexpr Sample kSamples[] = {
        {kUtf8, "utf8", "a\xC3\xA9\xE4\xB8\xAD\xF0\x9F\x98\x80", "aé中😀"},
        {kGb18030, "gb18030", "a\xA8\xA6\xD6\xD0\x94\x39\xFC\x36", "aé中😀"},
        {kEucKr, "euc-kr", "a\xB0\xA1\xF1\xE9", "a가中"},
        {kEucKr, "euc-kr", "", ""},
    };
    for (const Sample& sample : kSamples) {
        const Charset charset(sample.number);
        EXPECT_EQ(charset_name(), sample.name);
        EXPECT_EQ(columns_are_utf8(), sample.number == kUtf8);
        EXPECT_EQ(to_utf8(sample.bytes), sample.utf8);
        EXPECT_EQ(from_utf8(sample.utf8), sample.bytes);
        EXPECT_EQ(first_unwritable(sample.utf8), "");
    }
}

TEST(Charset, WhatIsNoCharacterBecomesTheReplacementCharacter) {
    {
        const Charset charset(kUtf8);
        EXPECT_EQ(to_utf8("a\xFF\xE4\xB8z\xC3"), "a\uFFFD\uFFFDz\uFFFD");
        EXPECT_EQ(from_utf8("a\xFF"), "a\xFF") << "bytes of UTF-8 go through as they are";
    }
    {
        const Charset charset(kGb18030);
        EXPECT_EQ(to_utf8("a\xFF z"), "a\uFFFD z");
        EXPECT_EQ(to_utf8("\xD6"), "\uFFFD");
    }
    {
        const Charset charset(kEucKr);
        EXPECT_EQ(to_utf8("a\xFF z"), "a\uFFFD z");
        EXPECT_EQ(to_utf8("\xB0"), "\uFFFD");
    }
}

TEST(Charset, WhatTheSetDoesNotHaveIsRefused) {
    const Charset charset(kEucKr);
    EXPECT_EQ(from_utf8("가é"), std::nullopt);
    EXPECT_EQ(first_unwritable("가é😀"), "é");
    EXPECT_EQ(from_utf8("가\u200B"), std::nullopt) << "a character without a glyph is not dropped";
    EXPECT_EQ(from_utf8("\xFF"), std::nullopt);
    EXPECT_EQ(first_unwritable("a\xFF"), "\xFF");
    const Charset chinese(kGb18030);
    EXPECT_EQ(from_utf8("a\xFF"), std::nullopt);
    EXPECT_NE(from_utf8("가é😀\u200B"), std::nullopt) << "GB18030 has all of Unicode";
}

TEST(Charset, LongTextsAreConvertedWhole) {
    const Charset charset(kGb18030);
    // U+00E5 takes two bytes in UTF-8 and four in GB18030.
    std::string gb18030;
    std::string utf8;
    for (int i = 0; i < 5000; ++i) {
        gb18030 += "\x81\x30\x8A\x32";
        utf8 += "\xC3\xA5";
    }
    EXPECT_TRUE(to_utf8(gb18030) == utf8);
    EXPECT_TRUE(from_utf8(utf8) == gb18030);
}

TEST(Charset, WidthIsThatOfATerminal) {
    EXPECT_EQ(display_width(""), 0u);
    EXPECT_EQ(display_width("abc"), 3u);
    EXPECT_EQ(display_width("é"), 1u);
    EXPECT_EQ(display_width("e\u0301"), 1u) << "a mark over the letter before";
    EXPECT_EQ(display_width("中가あ"), 6u);
    EXPECT_EQ(display_width("\uFF21\uFF71"), 3u) << "fullwidth A, halfwidth katakana";
    EXPECT_EQ(display_width("😀"), 2u);
    EXPECT_EQ(display_width("\xFF\xE4"), 2u) << "what is no character is shown as one";
}

TEST(Charset, LiteralsAreOfTheCharacterSetOfColumns) {
    const Charset charset(kEucKr);
    const std::vector<TestColumn> columns{{"이름", ValueType::kString, {"\xB0\xA1\xB3\xAA", "\xB0\xA1"}}};
    EXPECT_EQ(evaluate("이름 = '가나' AS n, '다'", columns), (std::vector<std::string>{"1|\xB4\xD9", "0|\xB4\xD9"}));
    EXPECT_EQ(evaluate_text("CAST('가나' AS char(3))"), "\xB0\xA1\xB3\xAA ");
    EXPECT_EQ(describe({ValueType::kString, SlotValue{"\xB0\xA1", 0}}), "'가'") << "people are told in UTF-8";
    try {
        plan_of("abs(1), 이름 = 'a가é'", columns);
        ADD_FAILURE() << "no error";
    } catch (const QueryError& error) {
        EXPECT_STREQ(error.what(), "euc-kr has no character é");
        EXPECT_EQ(error.position(), std::string_view("abs(1), 이름 = ").size());
    }
    EXPECT_THAT(explain(plan_of("이름 = '가'", columns)), HasSubstr("by compare = (#0, '가'); compared as string"));
}

TEST(Charset, NamesAreUtf8WhateverTheFile) {
    const std::string csv = "\xC0\xCC\xB8\xA7,n\n\xB0\xA1,1\n";
    {
        const Charset charset(kEucKr);
        EXPECT_EQ(CsvReader(text_source(csv)).names(), (std::vector<std::string>{"이름", "n"}));
        try {
            const CsvReader reader(text_source("n,\xC0\xCC\xFF\n1,2\n"));
            ADD_FAILURE() << "no error";
        } catch (const InputError& error) {
            EXPECT_STREQ(error.what(), "line 1: the name of column 2 is no text in euc-kr");
        }
    }
    EXPECT_EQ(CsvReader(text_source(csv)).names()[0], "\xC0\xCC\xB8\xA7") << "no file of UTF-8, but not refused";
}

}  // namespace
}  // namespace qzengine
