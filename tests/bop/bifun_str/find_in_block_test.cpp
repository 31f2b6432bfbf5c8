// instr, instrb, position and locate of a constant pattern, and length, which take many rows at once, against a search from
// character to character: texts that stand one behind the other, so that bytes agree across the borders of rows, empty ones and NULLs in
// between, characters cut off at the borders, vectors of many blocks, with and without a selection.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

#include "qzbifun/qzbifun.h"
#include "qzhost/characters.h"
#include "tests/support/batch.h"
#include "tests/support/host.h"
#include "tests/support/test_seed.h"
#include "tests/support/vector.h"

namespace {

using support::Constant;
using support::Random;
using support::Text;
using support::Vector;

// ---- Characters, by the rules of each set -----------------------------------------------------------------------------------

bool is_between(char byte, int low, int high) {
    const int value = static_cast<unsigned char>(byte);
    return value >= low && value <= high;
}

// Of texts without the rarer lead bytes E0, ED and F0 to F4.
size_t length_in_utf8(const std::string& text) {
    const size_t length = is_between(text[0], 0xC2, 0xDF) ? 2 : is_between(text[0], 0xE1, 0xEC) ? 3 : 1;
    if (text.size() < length) return 1;
    const bool whole = std::all_of(text.begin() + 1, text.begin() + static_cast<int64_t>(length),
                                   [](char byte) { return is_between(byte, 0x80, 0xBF); });
    return whole ? length : 1;
}

size_t length_in_gb18030(const std::string& text) {
    if (!is_between(text[0], 0x81, 0xFE) || text.size() < 2) return 1;
    if (is_between(text[1], 0x40, 0x7E) || is_between(text[1], 0x80, 0xFE)) return 2;
    const bool four = text.size() >= 4 && is_between(text[1], 0x30, 0x39) && is_between(text[2], 0x81, 0xFE) &&
                      is_between(text[3], 0x30, 0x39);
    return four ? 4 : 1;
}

size_t length_in_euc_kr(const std::string& text) {
    return text.size() >= 2 && is_between(text[0], 0xA1, 0xFE) && is_between(text[1], 0xA1, 0xFE) ? 2 : 1;
}

size_t first_length(const std::string& text, uint32_t charset) {
    return charset == 0 ? length_in_gb18030(text) : charset == 1 ? length_in_utf8(text) : length_in_euc_kr(text);
}

struct Place {
    int32_t character = 0;  // from 1; 0: there is none
    int32_t byte = 0;
};

Place first_place(const std::string& text, const std::string& pattern, uint32_t charset) {
    int32_t character = 1;
    for (size_t at = 0; at < text.size(); at += first_length(text.substr(at, 4), charset), ++character) {
        if (text.compare(at, pattern.size(), pattern) == 0) return {character, static_cast<int32_t>(at + 1)};
    }
    return {};
}

// The same behind start - 1 characters, which have to be whole.
int32_t first_character_from(const std::string& text, const std::string& pattern, uint32_t charset, int32_t start) {
    size_t at = 0;
    for (int32_t left = start - 1; left > 0 && at < text.size(); --left) {
        const size_t length = first_length(text.substr(at, 4), charset);
        if (length == 1 && static_cast<unsigned char>(text[at]) >= 0x80) return 0;
        at += length;
    }
    const Place place = first_place(text.substr(at), pattern, charset);
    return place.character == 0 ? 0 : place.character + start - 1;
}

int32_t count_characters(const std::string& text, uint32_t charset) {
    int32_t count = 0;
    for (size_t at = 0; at < text.size(); at += first_length(text.substr(at, 4), charset)) ++count;
    return count;
}

std::string upper(std::string text) {
    qz_mbsupper_ex(text.data(), static_cast<uint32_t>(text.size()));
    return text;
}

// ---- Vectors ----------------------------------------------------------------------------------------------------------------

struct Row {
    std::string text;
    uint32_t blank = 0;
    uint8_t valid = 1;
};

// One block of exactly the bytes, the rows' texts one behind the other.
class Packed {
  public:
    Packed(const std::vector<Row>& rows, const std::vector<uint16_t>& selection) : selection_(selection) {
        for (const Row& row : rows) bytes_ += row.valid != 0 ? row.text : "";
        bytes_.shrink_to_fit();
        char* at = bytes_.data();
        bool no_null = true;
        for (const Row& row : rows) {
            valid_.push_back(row.valid);
            no_null &= row.valid != 0;
            if (row.valid == 0) {
                slots_.push_back({12345, 6, nullptr});  // nobody reads it
                continue;
            }
            slots_.push_back({static_cast<uint32_t>(row.text.size()), row.blank, at});
            at += row.text.size();
        }
        data_ = {valid_.data(), slots_.data(), nullptr};
        col_ = {no_null, selection_.empty() ? nullptr : selection_.data(), &data_};
    }
    Packed(const Packed&) = delete;

    bdta3_col* col() { return &col_; }

  private:
    std::string bytes_;
    std::vector<bdta3_colstr> slots_;
    std::vector<uint8_t> valid_;
    std::vector<uint16_t> selection_;
    bdta3_coldata data_{};
    bdta3_col col_{};
};

using Letters = std::vector<std::string>;

// Bytes of one letter stand inside another, and halves of letters of two rows make one.
const Letters kLetters[] = {
    {"a", "b", "\x81\x61", "\x81", "\x81\x30\x81\x30", "0", "\xFF", "A"},
    {"a", "b", "\xC3\xA9", "\xE4\xB8\xAD", "\xC3", "\xA9", "\xE4\xB8", "A", "\xC3\x89"},
    {"a", "b", "\xB0\xA1", "\xA1\xB0", "\xB0", "\xFF", "A"},
};

class FindInBlock : public testing::Test {
  protected:
    FindInBlock() { bifun_dll_var_init(0, 1, 1); }
    ~FindInBlock() override { bifun_dll_var_init(0, 0, 0); }

    std::string draw_text(const Letters& letters, uint32_t most) {
        std::string text;
        for (uint32_t n = random_.below(most + 1); n > 0; --n) text += letters[random_.below(kinds_)];
        return text;
    }

    std::vector<Row> draw_rows(const Letters& letters) {
        const uint32_t size = random_.chance(10) ? 1500 + random_.below(600) : 1 + random_.below(90);
        const uint32_t most = random_.chance(10) ? 200 : random_.chance(20) ? 60 : 12;
        const uint32_t nulls = random_.chance(30) ? 0 : random_.below(70);
        // Blanks in a part of the rows, so that some blocks have none.
        const uint32_t blanks_from = random_.chance(50) ? size : random_.below(size);
        std::vector<Row> rows(size);
        for (uint32_t i = 0; i < size; ++i) {
            rows[i].text = random_.chance(10) ? "" : draw_text(letters, most);
            rows[i].blank = i >= blanks_from && random_.chance(5) ? random_.below(4) : 0;
            rows[i].valid = random_.chance(nulls) ? 0 : random_.chance(80) ? 1 : static_cast<uint8_t>(1 + random_.below(255));
        }
        return rows;
    }

    // Now and then bytes that two rows have together.
    std::string draw_pattern(const Letters& letters, const std::vector<Row>& rows) {
        std::string pattern = draw_text(letters, random_.chance(30) ? 20 : 4);
        if (random_.chance(50)) {
            const uint32_t i = random_.below(static_cast<uint32_t>(rows.size()));
            const std::string both = rows[i].text + rows[(i + 1) % rows.size()].text;
            if (!both.empty()) {
                const uint32_t length = 1 + random_.below(std::min<uint32_t>(static_cast<uint32_t>(both.size()), 70));
                pattern = both.substr(random_.below(static_cast<uint32_t>(both.size()) - length + 1), length);
            }
        }
        return pattern.empty() ? letters[0] : pattern;
    }

    // What a row is: nothing for NULL.
    using Expected = std::vector<std::optional<int32_t>>;

    template <class Call>
    void check(const char* name, const std::vector<Row>& rows, const std::vector<uint16_t>& selection, const Expected& expected,
               bool keeps_byte, const Call& call) {
        SCOPED_TRACE(name);
        Packed texts(rows, selection);
        const auto n = static_cast<uint32_t>(expected.size());
        const Vector result = Vector::result<int32_t>(host_, n);
        ASSERT_EQ(call(texts.col(), result.col(), n), 0);
        EXPECT_EQ(result.overrun(), "");
        bool lowered = false;
        for (uint32_t i = 0; i < n; ++i) {
            const Row& row = rows[selection.empty() ? i : selection[i]];
            if (expected[i]) {
                ASSERT_EQ(result.get<int32_t>(i), *expected[i])
                    << i << ' ' << testing::PrintToString(row.text) << " with " << row.blank << " blanks";
                ASSERT_EQ(result.valid(i), keeps_byte ? row.valid : 1) << i;
                found_ += *expected[i] > 1;
            } else {
                ASSERT_EQ(result.valid(i), 0) << i;
                ASSERT_TRUE(result.value_untouched(i)) << i;
                lowered |= row.valid != 0;
            }
        }
        EXPECT_EQ(result.col()->all_valid, lowered ? 0 : texts.col()->all_valid);
        EXPECT_EQ(host_.outstanding(), 0u);
    }

    void check_all(const std::vector<Row>& rows, const std::vector<uint16_t>& selection, const std::string& pattern,
                   uint32_t charset) {
        Expected characters, bytes, positions, located, located_from, lengths, folded_characters, folded_positions;
        const int32_t from = random_.chance(80) ? 1 + static_cast<int32_t>(random_.below(8)) : 70;
        for (size_t i = 0; i < (selection.empty() ? rows.size() : selection.size()); ++i) {
            const Row& row = rows[selection.empty() ? i : selection[i]];
            const bool present = row.valid != 0;
            const bool empty = row.text.empty() && row.blank == 0;
            const Place place = present ? first_place(row.text, pattern, charset) : Place{};
            const Place written = present ? first_place(row.text + std::string(row.blank, ' '), pattern, charset) : Place{};
            const std::string written_out = row.text + std::string(row.blank, ' ');
            const int32_t behind = present ? first_character_from(written_out, pattern, charset, from) : 0;
            located_from.push_back(present ? std::optional(behind) : std::nullopt);
            const bool counted = present && !row.text.empty();
            lengths.push_back(counted ? std::optional(count_characters(row.text, charset)) : std::nullopt);
            characters.push_back(present && !empty ? std::optional(place.character) : std::nullopt);
            bytes.push_back(present && !empty ? std::optional(place.byte) : std::nullopt);
            positions.push_back(present ? std::optional(place.byte) : std::nullopt);
            const Place folded = present ? first_place(upper(row.text), upper(pattern), charset) : Place{};
            folded_characters.push_back(present && !empty ? std::optional(folded.character) : std::nullopt);
            folded_positions.push_back(present ? std::optional(folded.byte) : std::nullopt);
            located.push_back(present ? std::optional(written.character) : std::nullopt);
        }
        Constant constant = Constant::of(Text{pattern, 0});
        bdta3_scalar* const p = constant.scalar();
        qz_env* const env = host_.env();
        rt_memobj* const mem = host_.mem();
        using Col = bdta3_col*;
        check("instr", rows, selection, characters, true,
              [&](Col text, Col out, uint32_t n) { return binstr_def2_av_str(env, mem, text, p, out, n); });
        check("instrb", rows, selection, bytes, true,
              [&](Col text, Col out, uint32_t n) { return binstrb_def2_av_str(env, mem, text, p, out, n); });
        check("position", rows, selection, positions, false,
              [&](Col text, Col out, uint32_t n) { return bposition_va_str(env, mem, p, text, out, n); });
        bifun_dll_var_init(0, 1, 0);
        check("instr, case folded", rows, selection, folded_characters, true,
              [&](Col text, Col out, uint32_t n) { return binstr_def2_av_str(env, mem, text, p, out, n); });
        check("position, case folded", rows, selection, folded_positions, false,
              [&](Col text, Col out, uint32_t n) { return bposition_va_str(env, mem, p, text, out, n); });
        bifun_dll_var_init(0, 1, 1);
        check("locate", rows, selection, located, false,
              [&](Col text, Col out, uint32_t n) { return blocate_def_va_str(env, mem, p, text, out, n); });
        Constant start = Constant::of(from);
        check("locate from a start", rows, selection, located_from, false,
              [&](Col text, Col out, uint32_t n) { return blocate_vav_str(env, mem, p, text, start.scalar(), out, n); });
        check("length", rows, selection, lengths, false,
              [&](Col text, Col out, uint32_t n) { return blength_a_str(env, mem, text, out, n); });
    }

    std::vector<uint16_t> draw_selection(size_t rows) {
        if (random_.chance(60)) return {};
        std::vector<uint16_t> selection(1 + random_.below(static_cast<uint32_t>(2 * rows)));
        for (uint16_t& row : selection) row = static_cast<uint16_t>(random_.below(static_cast<uint32_t>(rows)));
        return selection;
    }

    Random random_{support::test_seed()};
    uint32_t kinds_ = 2;
    size_t found_ = 0;
    support::Host host_;
};

TEST_F(FindInBlock, EveryFunctionOnRandomRows) {
#ifdef NDEBUG
    constexpr uint32_t kRounds = 5000;
#else
    constexpr uint32_t kRounds = 400;
#endif
    for (uint32_t round = 0; round < kRounds && !HasFatalFailure(); ++round) {
        const uint32_t charset = round % 3;
        const support::Parameters server(SERVER_CHARSET, charset);
        const Letters& letters = kLetters[charset];
        kinds_ = random_.chance(30) ? 2 : 2 + random_.below(static_cast<uint32_t>(letters.size()) - 1);
        const std::vector<Row> rows = draw_rows(letters);
        const std::string pattern = draw_pattern(letters, rows);
        SCOPED_TRACE(testing::Message() << "round " << round << ", character set " << charset << ", pattern "
                                        << testing::PrintToString(pattern));
        check_all(rows, draw_selection(rows.size()), pattern, charset);
    }
    EXPECT_GT(found_, kRounds * 20);
}

// Bytes of two rows are no match, and what the first lacks the second does not give.
TEST_F(FindInBlock, RowsEndWhereTheyEnd) {
    for (const uint32_t charset : {0u, 1u, 2u}) {
        const support::Parameters server(SERVER_CHARSET, charset);
        std::vector<Row> rows(700, {"xa", 0, 1});
        for (size_t i = 1; i < rows.size(); i += 2) rows[i].text = "bx";
        rows[600].text = "xab";
        check_all(rows, {}, "ab", charset);
        check_all(rows, {}, "abx", charset);
        for (const std::string& letter : {std::string("\x81\x61"), std::string("\xC3\xA9"), std::string("\xB0\xA1")}) {
            rows.assign(20, {"x", 0, 1});
            rows[7].text += letter[0];
            rows[8].text = letter.substr(1) + "b";
            for (const std::string& pattern : {letter, letter.substr(0, 1), letter.substr(1), std::string("b")}) {
                check_all(rows, {}, pattern, charset);
            }
        }
    }
}

// A copy of many texts has no room for it.
TEST_F(FindInBlock, ALongTextAmongOthers) {
    std::vector<Row> rows(600, {"xAb\xC3\xA9", 0, 1});
    rows[520].text = std::string(20000, 'x') + "ab";
    rows[530].text = std::string(16384, 'x');
    for (const char* pattern : {"ab", "\xC3\x89", "xx"}) check_all(rows, {}, pattern, 1);
}

// Only the block with an implied blank is written out.
TEST_F(FindInBlock, ImpliedBlanksInOneBlock) {
    std::vector<Row> rows(1600, {"a\xC3\xA9", 0, 1});
    rows[700].blank = 2;
    rows[701] = {"", 1, 1};
    rows[702] = {"", 0, 1};
    for (const char* pattern : {" ", "  ", "\xC3\xA9 ", "\xC3\xA9", "a"}) check_all(rows, {}, pattern, 1);
}

}  // namespace
