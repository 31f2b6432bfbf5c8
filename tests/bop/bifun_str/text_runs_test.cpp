// Texts that stand one behind the other, which lengths and case take as a whole, come to what they come to one by one: through
// a selection of all rows, where there are no runs.
#include "bop/bifun_str/text_runs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include "qzbifun/codes.h"
#include "qzbifun/qzbifun.h"
#include "tests/support/batch.h"
#include "tests/support/host.h"
#include "tests/support/test_seed.h"
#include "tests/support/vector.h"

namespace {

using support::Random;
using support::Text;
using support::Vector;

// Rows over one block of bytes of exactly their size.
class Packed {
  public:
    struct Row {
        std::string text;
        uint32_t blank = 0;
        bool valid = true;
    };

    explicit Packed(const std::vector<Row>& rows) : slots_(rows.size()), valid_(rows.size()), all_(rows.size()) {
        size_t size = 0;
        for (const Row& row : rows) size += row.valid ? row.text.size() : 0;
        bytes_.resize(size);
        char* at = bytes_.data();
        bool no_null = true;
        for (size_t i = 0; i < rows.size(); ++i) {
            valid_[i] = rows[i].valid ? 2 : 0;
            no_null &= rows[i].valid;
            if (!rows[i].valid) {
                slots_[i] = {12345, 6, nullptr};  // nobody reads it
                continue;
            }
            std::copy(rows[i].text.begin(), rows[i].text.end(), at);
            slots_[i] = {static_cast<uint32_t>(rows[i].text.size()), rows[i].blank, at};
            at += rows[i].text.size();
        }
        std::iota(all_.begin(), all_.end(), uint16_t{0});
        data_ = {valid_.data(), slots_.data(), nullptr};
        dense_ = {no_null, nullptr, &data_};
        selected_ = {no_null, all_.data(), &data_};
    }
    Packed(const Packed&) = delete;

    bdta3_col* dense() { return &dense_; }
    bdta3_col* selected() { return &selected_; }
    uint32_t rows() const { return static_cast<uint32_t>(slots_.size()); }
    const bdta3_colstr* slots() const { return slots_.data(); }
    const uint8_t* valid() const { return valid_.data(); }

  private:
    std::vector<char> bytes_;
    std::vector<bdta3_colstr> slots_;
    std::vector<uint8_t> valid_;
    std::vector<uint16_t> all_;
    bdta3_coldata data_{};
    bdta3_col dense_{}, selected_{};
};

class TextRuns : public testing::Test {
  protected:
    template <class T>
    void compare(Packed& texts, bop_fn_a* function, const char* name) {
        SCOPED_TRACE(name);
        const uint32_t n = texts.rows();
        const Vector run = Vector::result<T>(host_, n);
        const Vector each = Vector::result<T>(host_, n);
        const int32_t code = function(host_.env(), host_.mem(), texts.dense(), run.col(), n);
        ASSERT_EQ(code, 0);
        ASSERT_EQ(function(host_.env(), host_.mem(), texts.selected(), each.col(), n), 0);
        EXPECT_EQ(run.col()->all_valid, each.col()->all_valid);
        EXPECT_EQ(run.overrun(), "");
        for (uint32_t i = 0; i < n; ++i) {
            ASSERT_EQ(run.valid(i), each.valid(i)) << i;
            if (run.valid(i) == 0) {
                ASSERT_TRUE(run.value_untouched(i)) << i;
            } else {
                ASSERT_EQ(run.get<T>(i), each.get<T>(i)) << i;
            }
        }
        for (uint32_t i = 0; i < n; ++i) give_back(run, i), give_back(each, i);
    }

    // Texts that are too long for the vector's own space.
    void give_back(const Vector& vector, uint32_t i) {
        if (vector.type().name() != "str" || vector.valid(i) == 0) return;
        char* const bytes = vector.slot(i).bytes;
        if (bdta3_str_is_in_local(vector.col()->data, bytes) == 0) host_.mem()->free(host_.env(), host_.mem()->pool, bytes);
    }

    // What the host makes of each text by itself.
    void check_texts(Packed& texts, bop_fn_a* function, const char* name, std::string (*changed)(std::string)) {
        SCOPED_TRACE(name);
        const uint32_t n = texts.rows();
        for (bdta3_col* const argument : {texts.dense(), texts.selected()}) {
            const Vector result = Vector::result<Text>(host_, n);
            ASSERT_EQ(function(host_.env(), host_.mem(), argument, result.col(), n), 0);
            for (uint32_t i = 0; i < n; ++i) {
                ASSERT_EQ(result.valid(i) != 0, texts.valid()[i] != 0) << i;
                if (result.valid(i) == 0) continue;
                const bdta3_colstr& slot = texts.slots()[i];
                ASSERT_EQ(result.get<Text>(i), (Text{changed(std::string(slot.bytes, slot.len)), slot.blank})) << i;
            }
            for (uint32_t i = 0; i < n; ++i) give_back(result, i);
        }
    }

    static std::string upper(std::string text) {
        qz_mbsupper_ex(text.data(), static_cast<uint32_t>(text.size()));
        return text;
    }
    static std::string lower(std::string text) {
        qz_mbslower_ex(text.data(), static_cast<uint32_t>(text.size()));
        return text;
    }
    static std::string initcap(std::string text) {
        text = lower(text);
        bool in_word = false;
        for (size_t i = 0; i < text.size();) {
            const uint32_t step = qz_mb_char_get_len_ex(text.data() + i, static_cast<uint32_t>(text.size() - i));
            const char c = text[i];
            const bool small = step == 1 && c >= 'a' && c <= 'z';
            if (small && !in_word) text[i] = static_cast<char>(c - 'a' + 'A');
            in_word = small || (step == 1 && c >= '0' && c <= '9');
            i += step == QZ_MB_NONE ? 1 : step;
        }
        return text;
    }

    void compare_all(Packed& texts) {
        check_texts(texts, bupper_a_str, "bupper_a_str", upper);
        check_texts(texts, blower_a_str, "blower_a_str", lower);
        check_texts(texts, bnls_upper_a, "bnls_upper_a", upper);
        check_texts(texts, binitcap_a_str, "binitcap_a_str", initcap);
        compare<int32_t>(texts, blength_a_str, "blength_a_str");
        compare<int32_t>(texts, blength_space_a_str, "blength_space_a_str");
        compare<Text>(texts, bupper_a_str, "bupper_a_str");
        compare<Text>(texts, blower_a_str, "blower_a_str");
        compare<Text>(texts, bnls_upper_a, "bnls_upper_a");
        compare<Text>(texts, binitcap_a_str, "binitcap_a_str");
        EXPECT_EQ(host_.outstanding(), 0u);
    }

    support::Host host_;
};

// The same bytes, here and there divided between a row and the next in another place, which may be inside a character.
void cut_elsewhere(Random& random, std::vector<Packed::Row>& rows) {
    for (size_t i = 1; i < rows.size(); ++i) {
        if (!rows[i - 1].valid || rows[i].text.empty() || random.below(20) != 0) continue;
        rows[i - 1].text += rows[i].text[0];
        rows[i].text.erase(0, 1);
    }
}

std::vector<Packed::Row> random_rows(Random& random, uint32_t charset) {
    static constexpr std::string_view kPieces[] = {"a", "b", "Z", "7", " ", "-", "word ", "TWO words ", "x1y"};
    static constexpr std::string_view kLonger[] = {"\x81\x61", "\xC3\xA9", "\xB0\xA1"};
    // 0, 1: ASCII; 2: also bytes that are no character; 3: a few longer ones; 4: many; 5: many, and rows that cut them
    const uint32_t kind = random.below(6);
    const bool long_rows = random.below(8) == 0;
    std::vector<Packed::Row> rows(1 + random.below(400));
    for (Packed::Row& row : rows) {
        const uint32_t pieces = random.below(10) == 0 ? 0 : random.below(long_rows ? 2000 : 12);
        for (uint32_t i = 0; i < pieces; ++i) {
            if (kind == 2 && random.below(20) == 0) {
                row.text += '\xFF';
            } else if ((kind == 3 && random.below(400) == 0) || (kind >= 4 && random.below(3) == 0)) {
                row.text += kLonger[charset].substr(random.below(10) == 0, 2);
            } else {
                row.text += kPieces[random.below(static_cast<uint32_t>(std::size(kPieces)))];
            }
        }
        if (kind == 2 && random.below(9) == 0) row.text += kLonger[charset][0];  // the next row might complete it
        if (random.below(5) == 0) row.blank = random.below(4);
        row.valid = random.below(kind == 1 ? 10 : 100) != 0;
    }
    if (kind == 5) cut_elsewhere(random, rows);
    return rows;
}

TEST_F(TextRuns, ComeToWhatTheirRowsComeTo) {
    Random random(support::test_seed());
    for (int i = 0; i < 90; ++i) {
        const uint32_t charset = static_cast<uint32_t>(i) % 3;
        const support::Parameters server(SERVER_CHARSET, charset);
        Packed texts(random_rows(random, charset));
        SCOPED_TRACE(testing::Message() << "character set " << charset << ", try " << i);
        compare_all(texts);
        if (HasFatalFailure()) return;
    }
}

// A character whose halves are in two rows is none.
TEST_F(TextRuns, HalvesOfACharacterStayApart) {
    for (const uint32_t charset : {0u, 1u, 2u}) {
        const support::Parameters server(SERVER_CHARSET, charset);
        for (const std::string& pair : {std::string("\xC3\xA9"), std::string("\x81\x61"), std::string("\xB0\xA1")}) {
            std::vector<Packed::Row> rows(20, {"abc de", 0, true});
            rows[9].text += pair[0];
            rows[10].text = pair.substr(1) + "! ";
            Packed texts(rows);
            const Vector lengths = Vector::result<int32_t>(host_, texts.rows());
            ASSERT_EQ(blength_a_str(host_.env(), host_.mem(), texts.dense(), lengths.col(), texts.rows()), 0);
            EXPECT_EQ(lengths.get<int32_t>(9), 7);
            EXPECT_EQ(lengths.get<int32_t>(10), 3);
            compare_all(texts);
        }
    }
}

// In UTF-8 a run may have longer characters, and malformed bytes that are no continuation.
TEST_F(TextRuns, LongerCharactersOfUtf8) {
    std::vector<Packed::Row> rows(30, {"abc d\xC3\xA9", 0, true});
    rows[3].text = "\xD0\xB6x \xD1\x8F";
    rows[7].text = "";
    rows[8].text = "abc\xC3";  // the next text does not go on with this
    rows[12].text = "\xFF\xE4\xB8";
    rows[29].text = "";
    Packed texts(rows);
    const Vector upper = Vector::result<Text>(host_, 30);
    ASSERT_EQ(bupper_a_str(host_.env(), host_.mem(), texts.dense(), upper.col(), 30), 0);
    const Vector initcap = Vector::result<Text>(host_, 30);
    ASSERT_EQ(binitcap_a_str(host_.env(), host_.mem(), texts.dense(), initcap.col(), 30), 0);
    for (uint32_t i = 0; i < 30; ++i) {
        const char* const raised = i == 3              ? "\xD0\x96X \xD0\xAF"
                                   : i == 7 || i == 29 ? ""
                                   : i == 8            ? "ABC\xC3"
                                   : i == 12           ? "\xFF\xE4\xB8"
                                                       : "ABC D\xC3\x89";
        EXPECT_EQ(upper.get<Text>(i), (Text{raised, 0})) << i;
        if (i != 3 && i != 7 && i != 8 && i != 12 && i != 29) {
            EXPECT_EQ(initcap.get<Text>(i), (Text{"Abc D\xC3\xA9", 0})) << i;
        }
    }
    EXPECT_EQ(initcap.get<Text>(3), (Text{"\xD0\xB6X \xD1\x8F", 0}));
    EXPECT_EQ(initcap.get<Text>(8), (Text{"Abc\xC3", 0}));
    compare_all(texts);
}

TEST_F(TextRuns, EndInFrontOfAContinuation) {
    std::vector<Packed::Row> rows(10, {"\xC3\xA9", 0, true});
    rows[0].valid = rows[9].valid = false;
    rows[4].text = "";
    const auto end = [](const std::vector<Packed::Row>& all, bool utf8) {
        Packed texts(all);
        return utf8 ? bifun::find_text_run<true>(texts.slots(), texts.valid(), 0, 10).end
                    : bifun::find_text_run<false>(texts.slots(), texts.valid(), 0, 10).end;
    };
    EXPECT_EQ(end(rows, true), 10u);
    for (const char* const first : {"\x7F", "\xC0", "\xFF", ""}) {
        rows[5].text = rows[8].text = first;
        EXPECT_EQ(end(rows, true), 10u) << first;
    }
    for (const char* const first : {"\x80", "\xBF"}) {
        rows[8].text = first;
        EXPECT_EQ(end(rows, true), 8u) << first;
        EXPECT_EQ(end(rows, false), 10u) << first;
    }
    rows[1].text = "\x80";  // nothing in front of it
    rows[8].text = "";
    EXPECT_EQ(end(rows, true), 10u);
}

TEST_F(TextRuns, EachRowOfARunBeginsAWord) {
    Packed texts(std::vector<Packed::Row>(30, {"one tWO3x", 1, true}));
    const Vector result = Vector::result<Text>(host_, 30);
    ASSERT_EQ(binitcap_a_str(host_.env(), host_.mem(), texts.dense(), result.col(), 30), 0);
    for (uint32_t i = 0; i < 30; ++i) EXPECT_EQ(result.get<Text>(i), (Text{"One Two3x", 1})) << i;
}

TEST_F(TextRuns, WhatARunIs) {
    std::vector<Packed::Row> rows(100, {std::string(100, 'x'), 0, true});
    rows[0].valid = rows[3].valid = false;
    rows[5].text = "";
    Packed texts(rows);
    const bifun::TextRun run = bifun::find_text_run<false>(texts.slots(), texts.valid(), 0, texts.rows());
    EXPECT_EQ(run.begin, 0u);
    EXPECT_EQ(run.end, 23u);  // 20 texts of 100 bytes, two NULLs and an empty one
    EXPECT_EQ(run.len, 2000u);
    EXPECT_EQ(run.text, texts.slots()[1].bytes);
    EXPECT_TRUE(run.has_null);
    Packed no_null(std::vector<Packed::Row>(3, {"", 0, true}));
    EXPECT_FALSE(bifun::find_text_run<false>(no_null.slots(), no_null.valid(), 0, 3).has_null);
    Packed null(std::vector<Packed::Row>(3, {"", 0, false}));
    EXPECT_EQ(bifun::find_text_run<false>(null.slots(), null.valid(), 0, 3).len, 0u);
    Packed too_long({{std::string(5000, 'x'), 0, true}, {"y", 0, true}});
    EXPECT_EQ(bifun::find_text_run<false>(too_long.slots(), too_long.valid(), 0, 2).len, 0u);
}

// Without memory for a run its rows go by themselves, and the first that cannot be stored is told.
TEST_F(TextRuns, NoMemoryForARun) {
    Packed texts(std::vector<Packed::Row>(30, {"abcdef", 0, true}));
    for (bdta3_col* const argument : {texts.dense(), texts.selected()}) {
        for (bop_fn_a* const function : {bupper_a_str, blower_a_str, binitcap_a_str}) {
            const Vector result = Vector::result<Text>(host_, 30);
            host_memory_fail_after(0);
            const int32_t code = function(host_.env(), host_.mem(), argument, result.col(), 30);
            host_memory_fail_after(-1);
            EXPECT_EQ(code, EC_OUT_OF_MEMORY);
            EXPECT_EQ(print(host_.errors()), "empty");
            EXPECT_EQ(result.valid(0), 0);
            EXPECT_TRUE(result.valid_untouched(1));
        }
        const Vector result = Vector::result<Text>(host_, 30);
        host_memory_fail_after(0);
        EXPECT_EQ(bnls_upper_a(host_.env(), host_.mem(), argument, result.col(), 30), 0);
        host_memory_fail_after(-1);
        EXPECT_EQ(result.col()->all_valid, 0u);
        for (uint32_t i = 0; i < 30; ++i) EXPECT_EQ(result.valid(i), 0);
    }
}

}  // namespace
