// Rows whose texts are stored together, as reverse, concat and repeat do it: what each row comes to by itself, told character by
// character, and what becomes of the rows around one that fails.
#include "bop/bifun_str/text_groups.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "bop/frame/masked_moves.h"
#include "qzbifun/codes.h"
#include "qzbifun/qzbifun.h"
#include "tests/support/batch.h"
#include "tests/support/host.h"
#include "tests/support/test_seed.h"
#include "tests/support/vector.h"

namespace {

using bifun::TextGroup;
using support::Constant;
using support::Random;
using support::Text;
using support::Vector;

// ---- Which rows make a group ------------------------------------------------------------------------------------------------

struct Noted {
    std::vector<std::string> steps;
    int32_t code_of_group = 0, code_of_each = 0;
};

// Tells what it is asked to store.
struct NotingRows {
    const std::vector<uint64_t>& sizes;
    Noted& noted;

    uint64_t bytes(uint32_t i) const { return sizes[i]; }
    int32_t group(const TextGroup& group) const {
        std::string step = "group " + std::to_string(group.begin) + "+" + std::to_string(group.rows);
        uint64_t at = 0;
        for (uint32_t k = 0; k < group.rows; ++k) {
            EXPECT_EQ(group.at[k], at);
            EXPECT_EQ(group.len(k), sizes[group.begin + k]);
            at += group.len(k);
        }
        EXPECT_EQ(group.bytes(), at);
        std::fill_n(group.space, group.bytes(), 'x');
        noted.steps.push_back(step);
        return noted.code_of_group;
    }
    int32_t each(uint32_t begin, uint32_t end) const {
        noted.steps.push_back("each " + std::to_string(begin) + "+" + std::to_string(end - begin));
        return noted.code_of_each;
    }
};

class TextGroups : public testing::Test {
  protected:
    using Steps = std::vector<std::string>;

    int32_t note(const std::vector<uint64_t>& sizes, Noted& noted) {
        const Vector result = Vector::result<Text>(host_, 1000);
        const bifun::Call call{host_.env(), host_.mem(), "name"};
        return bifun::rows_in_groups(call, result.col(), static_cast<uint32_t>(sizes.size()), NotingRows{sizes, noted});
    }
    Steps steps(const std::vector<uint64_t>& sizes) {
        Noted noted;
        EXPECT_EQ(note(sizes, noted), 0);
        return noted.steps;
    }

    support::Host host_;
};

TEST_F(TextGroups, AsManyRowsAsThereIsRoomFor) {
    EXPECT_EQ(steps({}), Steps{});
    EXPECT_EQ(steps({1}), Steps{"group 0+1"});
    EXPECT_EQ(steps({0}), Steps{"each 0+1"});
    EXPECT_EQ(steps({0, 0, 3, 0}), Steps{"group 0+4"});
    EXPECT_EQ(steps(std::vector<uint64_t>(8, 256)), Steps{"group 0+8"});
    EXPECT_EQ(steps(std::vector<uint64_t>(9, 256)), (Steps{"group 0+8", "group 8+1"}));
    EXPECT_EQ(steps({2, 256, 257, 1000, UINT64_MAX, 256, 2}), (Steps{"group 0+2", "each 2+3", "group 5+2"}));
    EXPECT_EQ(steps({257}), Steps{"each 0+1"});
    EXPECT_EQ(steps(std::vector<uint64_t>(600, 1)), (Steps{"group 0+256", "group 256+256", "group 512+88"}));
    EXPECT_EQ(steps(std::vector<uint64_t>(300, 0)), (Steps{"each 0+256", "each 256+44"}));
    EXPECT_EQ(host_.outstanding(), 0u);
}

TEST_F(TextGroups, TheFirstCodeEndsThem) {
    Noted noted{{}, -5, 0};
    EXPECT_EQ(note({300, 1, 300}, noted), -5);
    EXPECT_EQ(noted.steps, (Steps{"each 0+1", "group 1+1"}));
    noted = {{}, 0, -7};
    EXPECT_EQ(note({1, 300, 1}, noted), -7);
    EXPECT_EQ(noted.steps, (Steps{"group 0+1", "each 1+1"}));
}

TEST_F(TextGroups, WithoutMemoryRowsGoByThemselves) {
    Noted noted;
    const Vector result = Vector::result<Text>(host_, 1);
    const bifun::Call call{host_.env(), host_.mem(), "name"};
    const std::vector<uint64_t> sizes(20, 200);
    host_memory_fail_after(0);
    EXPECT_EQ(bifun::rows_in_groups(call, result.col(), 20, NotingRows{sizes, noted}), 0);
    host_memory_fail_after(-1);
    EXPECT_EQ(noted.steps, (Steps{"each 0+10", "each 10+10"}));
}

// Rows could not give back one by one what is one block.
TEST_F(TextGroups, ABlockIsNoOwnSpace) {
    const Vector result = Vector::result<Text>(host_, 1);
    const bifun::Call call{host_.env(), host_.mem(), "name"};
    EXPECT_EQ(bifun::take_shared_space(call, result.col(), 5000), nullptr);
    EXPECT_EQ(host_.outstanding(), 0u);
    char* const space = bifun::take_shared_space(call, result.col(), 2048);
    ASSERT_NE(space, nullptr);
    std::fill_n(space, 2048, 'x');
    EXPECT_NE(bdta3_str_is_in_local(result.col()->data, space), 0);
}

// ---- reverse and concat -----------------------------------------------------------------------------------------------------

// A value by its characters.
struct Row {
    std::vector<std::string> characters;
    uint32_t blank = 0;
    bool valid = true;

    std::string bytes() const {
        std::string text;
        for (const std::string& character : characters) text += character;
        return text;
    }
    Text text() const { return {bytes(), blank}; }
};

Text with_blanks_counted(std::string text) {
    const size_t kept = text.find_last_not_of(' ') + 1;
    const uint32_t blank = static_cast<uint32_t>(text.size() - kept);
    text.resize(kept);
    return {text, blank};
}

Text reversed(const Row& row) {
    if (row.characters.empty()) return row.text();
    std::string text(row.blank, ' ');
    for (auto character = row.characters.rbegin(); character != row.characters.rend(); ++character) text += *character;
    return with_blanks_counted(text);
}

Text joined(const Row& a, const Row& b) {
    if (!a.valid) return b.text();
    if (!b.valid) return a.text();
    if (b.characters.empty()) return {a.bytes(), a.blank + b.blank};
    return {a.bytes() + std::string(a.blank, ' ') + b.bytes(), b.blank};
}

Text repeated(const Row& row, int32_t n) {
    if (n == 0) return {"", 0};
    if (row.characters.empty()) return {"", row.blank * static_cast<uint32_t>(n)};
    std::string text;
    for (int32_t i = 0; i < n; ++i) text += (i == 0 ? "" : std::string(row.blank, ' ')) + row.bytes();
    return {text, row.blank};
}

const std::vector<std::string> kLonger[] = {
    {"\xD6\xD0", "\x81\x61", "\x81\x30\x81\x30", "\xFE\x39\xFE\x39", "\xB0\xA1"},
    {"\u00e9", "\u0416", "\u4e2d", "\u0800", "\ud7ff", "\U0001f600", "\U0010ffff"},
    {"\xB0\xA1", "\xA3\xE1", "\xFE\xFE"},
};

std::vector<Row> draw_rows(Random& random, uint32_t charset, size_t n) {
    const uint32_t longer = std::vector<uint32_t>{0, 1, 30, 100}[random.below(4)];
    const uint32_t most = std::vector<uint32_t>{8, 40, 90, 400}[random.below(4)];
    std::vector<Row> rows(n);
    for (Row& row : rows) {
        row.characters.resize(random.chance(10) ? 0 : random.below(random.chance(1) ? 6000 : most));
        for (std::string& character : row.characters) {
            const std::vector<std::string>& list = kLonger[charset];
            character = random.chance(longer) ? list[random.below(static_cast<uint32_t>(list.size()))]
                                              : std::string(1, "abcxyz019 "[random.below(10)]);
        }
        if (random.chance(20)) row.blank = random.below(random.chance(5) ? 300 : 5);
        row.valid = !random.chance(8);
    }
    return rows;
}

// By the moves of this machine, and by those that every machine has.
class GroupedRows : public testing::TestWithParam<bool> {
  protected:
    GroupedRows() { bifun::takes_masked_moves &= GetParam(); }
    ~GroupedRows() override {
        bifun::takes_masked_moves = bifun::has_masked_moves();
        host_memory_fail_after(-1);
    }

    Vector vector_of(const std::vector<Row>& rows) {
        Vector vector(host_, support::type_of<Text>(), static_cast<uint32_t>(rows.size()));
        for (uint32_t i = 0; i < rows.size(); ++i) {
            vector.set(i, support::to_cell(std::optional<Text>(rows[i].text())), rows[i].valid ? 1 : 0);
        }
        return vector;
    }

    // Rows [0, end) are as expected, and what follows is as it was.
    void expect_rows(const Vector& result, const std::vector<std::optional<Text>>& expected, uint32_t end, bool failed) {
        for (uint32_t i = 0; i < end; ++i) {
            ASSERT_EQ(result.valid(i) != 0, expected[i].has_value()) << i;
            if (expected[i]) {
                ASSERT_EQ(result.get<Text>(i), *expected[i]) << i;
            } else {
                ASSERT_TRUE(result.value_untouched(i)) << i;
            }
        }
        if (failed) {
            ASSERT_EQ(result.valid(end), 0);
        }
        for (uint32_t i = end + failed; i < result.rows(); ++i) {
            ASSERT_TRUE(result.valid_untouched(i)) << i;
            ASSERT_TRUE(result.value_untouched(i)) << i;
        }
        ASSERT_EQ(result.overrun(), "");
    }

    // Texts that have a block of their own.
    void give_back(const Vector& result, uint32_t end) {
        for (uint32_t i = 0; i < end; ++i) {
            if (result.valid(i) == 0) continue;
            char* const bytes = result.slot(i).bytes;
            if (bdta3_str_is_in_local(result.col()->data, bytes) == 0) host_.mem()->free(host_.env(), host_.mem()->pool, bytes);
        }
    }

    int32_t reverse(const Vector& texts, const Vector& result, uint32_t n) {
        return breverse_a_str(host_.env(), host_.mem(), texts.col(), result.col(), n);
    }

    support::Host host_;
};

TEST_P(GroupedRows, ReverseInEveryCharacterSet) {
    Random random(support::test_seed());
    for (int i = 0; i < 30; ++i) {
        const uint32_t charset = static_cast<uint32_t>(i) % 3;
        SCOPED_TRACE(testing::Message() << "character set " << charset << ", try " << i);
        const support::Parameters server(SERVER_CHARSET, charset);
        const std::vector<Row> rows = draw_rows(random, charset, 1 + random.below(500));
        const uint32_t n = static_cast<uint32_t>(rows.size());
        Vector texts = vector_of(rows);
        std::vector<uint16_t> sel(n);
        std::iota(sel.begin(), sel.end(), uint16_t{0});
        for (const bool selected : {false, true}) {
            if (selected) {
                for (uint16_t& row : sel) row = static_cast<uint16_t>(random.below(n));
                texts.select(sel);
            }
            std::vector<std::optional<Text>> expected(n);
            for (uint32_t k = 0; k < n; ++k) {
                if (rows[sel[k]].valid) expected[k] = reversed(rows[sel[k]]);
            }
            const Vector result = Vector::result<Text>(host_, n);
            ASSERT_EQ(reverse(texts, result, n), 0);
            expect_rows(result, expected, n, false);
            give_back(result, n);
            ASSERT_EQ(host_.outstanding(), 0u);
            if (HasFatalFailure()) return;
        }
    }
}

// The row's code, whatever stands behind it, and its text at every place of a group.
TEST_P(GroupedRows, ReverseEndsAtTheFirstMalformedRow) {
    struct Broken {
        uint32_t charset;
        std::string text, behind;
    };
    const std::vector<Broken> broken = {
        {1, "ab\xFF", "cd"},      {1, "\xC3", "x"},         {1, "x\xC3", "\xA9y"},        {1, "\xA9y", "x\xC3"},
        {1, "\xB8\xAD", "x\xE4"}, {1, "x\xE4", "\xB8\xAD"}, {0, "x\x81", "az"},           {0, "x\xFF", "az"},
        {2, "x\xB0", "\xA1z"},    {2, "\xA1z", "x\xB0"},    {0, "\x81\x30\x81", "\x30x"}, {0, "\xFFz", "a\x81"},
    };
    for (const Broken& one : broken) {
        const support::Parameters server(SERVER_CHARSET, one.charset);
        for (const uint32_t at : {0u, 1u, 7u, 100u, 258u}) {
            std::vector<Row> rows(260, {{"t", "e", kLonger[one.charset][0], "x"}, 0, true});
            rows[at].characters = {one.text};
            rows[at + 1].characters = {one.behind};
            std::vector<std::optional<Text>> expected(rows.size());
            std::transform(rows.begin(), rows.end(), expected.begin(), reversed);
            const Vector texts = vector_of(rows);
            const Vector result = Vector::result<Text>(host_, 260);
            ASSERT_EQ(reverse(texts, result, 260), EC_CHAR_INVALID) << testing::PrintToString(one.text) << at;
            EXPECT_EQ(print(host_.errors()), "empty");
            expect_rows(result, expected, at, true);
            if (HasFatalFailure()) return;
        }
    }
}

// A byte that is whole in GB18030 alone and part of a character behind another text's last byte.
TEST_P(GroupedRows, CharactersOfNeighboursDoNotGrowTogether) {
    const support::Parameters server(SERVER_CHARSET, 0);
    const std::vector<Row> rows = {{{"0", "\x81\x30\x81\x30"}, 0, true}, {{"a", "\xD6\xD0"}, 0, true}, {{"0", "b"}, 0, true}};
    const Vector texts = vector_of(rows);
    const Vector result = Vector::result<Text>(host_, 3);
    ASSERT_EQ(reverse(texts, result, 3), 0);
    expect_rows(result,
                {Text{"\x81\x30\x81\x30"
                      "0",
                      0},
                 Text{"\xD6\xD0"
                      "a",
                      0},
                 Text{"b0", 0}},
                3, false);
}

TEST_P(GroupedRows, ConcatOfAnyRows) {
    Random random(support::test_seed());
    for (int i = 0; i < 20; ++i) {
        SCOPED_TRACE(i);
        const uint32_t n = 1 + random.below(500);
        const std::vector<Row> left = draw_rows(random, 1, n), right = draw_rows(random, 1, n);
        Vector a = vector_of(left), b = vector_of(right);
        std::vector<uint16_t> sel(n);
        std::iota(sel.begin(), sel.end(), uint16_t{0});
        if (i % 2 == 1) {
            for (uint16_t& row : sel) row = static_cast<uint16_t>(random.below(n));
            a.select(sel);
        }
        std::vector<std::optional<Text>> both(n), with(n), to(n);
        const Row fixed{{"f", "i", "x"}, 2, true};
        bool none = true;
        for (uint32_t k = 0; k < n; ++k) {
            const Row& first = left[sel[k]];
            if (first.valid || right[k].valid) both[k] = joined(first, right[k]);
            none &= both[k].has_value();
            with[k] = joined(first, fixed);
            to[k] = joined(fixed, right[k]);
        }
        Constant constant = Constant::of(fixed.text());
        const Vector aa = Vector::result<Text>(host_, n), av = Vector::result<Text>(host_, n),
                     va = Vector::result<Text>(host_, n);
        ASSERT_EQ(bconcat_aa_str(host_.env(), host_.mem(), a.col(), b.col(), aa.col(), n), 0);
        EXPECT_EQ(aa.col()->all_valid, none ? 1u : 0u);
        ASSERT_EQ(bconcat_av_str(host_.env(), host_.mem(), a.col(), constant.scalar(), av.col(), n), 0);
        ASSERT_EQ(bconcat_va_str(host_.env(), host_.mem(), constant.scalar(), b.col(), va.col(), n), 0);
        expect_rows(aa, both, n, false);
        expect_rows(av, with, n, false);
        expect_rows(va, to, n, false);
        for (const Vector* const result : {&aa, &av, &va}) give_back(*result, n);
        ASSERT_EQ(host_.outstanding(), 0u);
        if (HasFatalFailure()) return;
    }
}

TEST_P(GroupedRows, RepeatOfAnyRows) {
    Random random(support::test_seed());
    for (const int32_t copies : {0, 1, 2, 3, 8, 9, 30}) {
        SCOPED_TRACE(copies);
        std::vector<Row> rows = draw_rows(random, 1, 1 + random.below(500));
        for (Row& row : rows) row.characters.resize(std::min<size_t>(row.characters.size(), 180));  // none is too long
        const uint32_t n = static_cast<uint32_t>(rows.size());
        std::vector<std::optional<Text>> expected(n);
        for (uint32_t i = 0; i < n; ++i) {
            if (rows[i].valid) expected[i] = repeated(rows[i], copies);
        }
        const Vector texts = vector_of(rows);
        const Vector result = Vector::result<Text>(host_, n);
        Constant number = Constant::of(copies);
        ASSERT_EQ(brepeatstr_av_str(host_.env(), host_.mem(), texts.col(), number.scalar(), result.col(), n), 0);
        expect_rows(result, expected, n, false);
        give_back(result, n);
        ASSERT_EQ(host_.outstanding(), 0u);
        if (HasFatalFailure()) return;
    }
}

TEST_P(GroupedRows, RepeatEndsAtTheFirstRowThatIsTooLong) {
    for (const uint32_t at : {0u, 1u, 30u, 99u}) {
        std::vector<Row> rows(100, {{"a"}, 0, true});
        rows[at].characters = {"a", "b", "c"};
        const std::vector<std::optional<Text>> expected(100, Text{std::string(10923, 'a'), 0});
        const Vector texts = vector_of(rows);
        const Vector result = Vector::result<Text>(host_, 100);
        Constant number = Constant::of(10923);
        ASSERT_EQ(brepeatstr_av_str(host_.env(), host_.mem(), texts.col(), number.scalar(), result.col(), 100),
                  EC_INVALID_ARGUMENT);
        expect_rows(result, expected, at, true);
        give_back(result, at);
        if (HasFatalFailure()) return;
    }
}

// Whose text that is can be told by its first byte, which is not behind the vector's space.
TEST_P(GroupedRows, AnEmptyTextStandsWithinTheGroup) {
    const Vector texts = vector_of({{{"a"}, 0, true}, {{}, 0, true}}), empty = vector_of({{}, {}});
    const Vector turned = Vector::result<Text>(host_, 2), with = Vector::result<Text>(host_, 2);
    const Vector twice = Vector::result<Text>(host_, 2);
    Constant two = Constant::of(2);
    ASSERT_EQ(reverse(texts, turned, 2), 0);
    ASSERT_EQ(bconcat_aa_str(host_.env(), host_.mem(), texts.col(), empty.col(), with.col(), 2), 0);
    EXPECT_EQ(turned.slot(1).bytes, turned.slot(0).bytes);
    EXPECT_EQ(with.slot(1).bytes, with.slot(0).bytes);
    ASSERT_EQ(brepeatstr_av_str(host_.env(), host_.mem(), texts.col(), two.scalar(), twice.col(), 2), 0);
    EXPECT_EQ(twice.slot(1).bytes, twice.slot(0).bytes);
}

// Blanks are counted in 32 bits, and a row beyond that is too long at any place of a group.
TEST_P(GroupedRows, ConcatEndsAtTheFirstRowThatIsTooLong) {
    for (const uint32_t at : {0u, 1u, 30u, 99u}) {
        std::vector<Row> left(100, {{"abc"}, 1, true}), right(100, {{"de"}, 0, true});
        left[at].blank = UINT32_MAX;
        right[at] = {{}, 1, true};
        std::vector<std::optional<Text>> expected(100);
        std::transform(left.begin(), left.begin() + at, right.begin(), expected.begin(), joined);
        const Vector a = vector_of(left), b = vector_of(right);
        const Vector result = Vector::result<Text>(host_, 100);
        ASSERT_EQ(bconcat_aa_str(host_.env(), host_.mem(), a.col(), b.col(), result.col(), 100), EC_STRING_TOO_LONG);
        expect_rows(result, expected, at, true);
        if (HasFatalFailure()) return;
    }
}

// With ever more allocations the rows get ever further; those that are stored are right, and those behind are as they were.
TEST_P(GroupedRows, EveryAllocationFailsOnce) {
    std::vector<Row> rows;
    for (uint32_t i = 0; i < 200; ++i) {
        rows.push_back({std::vector<std::string>(i % 40 == 39 ? 5000 : 20 + i % 30, i % 3 == 0 ? "\u00e9" : "x"), i % 4, true});
    }
    const uint32_t n = static_cast<uint32_t>(rows.size());
    const Vector texts = vector_of(rows), blank = vector_of(std::vector<Row>(n, {{"z"}, 1, true}));
    std::vector<std::optional<Text>> turned, with;
    for (const Row& row : rows) turned.emplace_back(reversed(row)), with.emplace_back(joined(row, {{"z"}, 1, true}));
    for (const bool reverses : {true, false}) {
        int failures = 0;
        for (int64_t allocations = 0;; ++allocations) {
            ASSERT_LT(allocations, 100);
            const Vector result = Vector::result<Text>(host_, n);
            host_.clear_errors();
            host_memory_fail_after(allocations);
            const int32_t code = reverses ? reverse(texts, result, n)
                                          : bconcat_aa_str(host_.env(), host_.mem(), texts.col(), blank.col(), result.col(), n);
            host_memory_fail_after(-1);
            const std::vector<std::optional<Text>>& expected = reverses ? turned : with;
            if (code == 0) {
                expect_rows(result, expected, n, false);
                give_back(result, n);
                ASSERT_EQ(host_.outstanding(), 0u);
                break;
            }
            ++failures;
            ASSERT_EQ(code, EC_OUT_OF_MEMORY);
            EXPECT_EQ(print(host_.errors()), reverses ? "empty" : "-503 bconcat_aa_process");
            uint32_t done = 0;
            while (done < n && result.valid(done) != 0 && !result.valid_untouched(done)) ++done;
            expect_rows(result, expected, done, true);
            give_back(result, done);
            ASSERT_EQ(host_.outstanding(), 0u);
            if (HasFatalFailure()) return;
        }
        EXPECT_GE(failures, 6);
    }
}

INSTANTIATE_TEST_SUITE_P(Moves, GroupedRows, testing::Bool(),
                         [](const auto& moves) { return moves.param ? "OfThisMachine" : "OfEveryMachine"; });

}  // namespace
