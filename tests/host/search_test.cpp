#include "qzhost/search.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "host/src/byte_search.h"
#include "host/src/masked_search.h"
#include "qzhost/characters.h"
#include "server_charset.h"
#include "support/test_seed.h"
#include "support/text_at_page_end.h"

namespace {

#ifdef NDEBUG
constexpr int kRandomTexts = 100000;
constexpr int kLongTexts = 400;
#else
constexpr int kRandomTexts = 4000;
constexpr int kLongTexts = 20;
#endif

uint32_t size_of(std::string_view text) { return static_cast<uint32_t>(text.size()); }

// A pattern with all that can be prepared for it.
struct Prepared {
    explicit Prepared(const std::string& pattern) : bmbc(QZ_BMBC_ENTRIES), bmgs(pattern.size()), masks(QZ_SHIFT_MASK_ENTRIES) {
        preprocess_bmbc(pattern.data(), size_of(pattern), bmbc.data());
        preprocess_bmgs(pattern.data(), size_of(pattern), bmgs.data());
        limit = preshiftorprocess(pattern.data(), size_of(pattern), masks.data());
    }

    std::vector<uint32_t> bmbc;
    std::vector<uint32_t> bmgs;
    std::vector<uint32_t> masks;
    uint32_t limit;
};

// ---- Tables, against their definitions --------------------------------------------------------------------------------------

uint32_t good_suffix_shift(const std::string& pattern, size_t i) {
    const size_t m = pattern.size();
    for (size_t shift = 1; shift < m; ++shift) {
        bool fits = true;
        for (size_t k = i + 1; k < m && fits; ++k) fits = k < shift || pattern[k - shift] == pattern[k];
        if (fits && i >= shift) fits = pattern[i - shift] != pattern[i];
        if (fits) return static_cast<uint32_t>(shift);
    }
    return static_cast<uint32_t>(m);
}

TEST(SearchTables, EveryPatternOverTwoLetters) {
    for (size_t m = 1; m <= 11; ++m) {
        for (uint32_t bits = 0; bits < 1u << m; ++bits) {
            std::string pattern;
            for (size_t i = 0; i < m; ++i) pattern += bits >> i & 1 ? 'b' : 'a';
            const Prepared prepared(pattern);
            for (size_t i = 0; i < m; ++i) ASSERT_EQ(prepared.bmgs[i], good_suffix_shift(pattern, i)) << pattern << ' ' << i;
            for (uint32_t byte = 0; byte < 256; ++byte) {
                const size_t place = pattern.substr(0, m - 1).rfind(static_cast<char>(byte));
                ASSERT_EQ(prepared.bmbc[byte], place == std::string::npos ? m : m - 1 - place) << pattern;
                for (size_t i = 0; i < m; ++i) ASSERT_EQ(prepared.masks[byte] >> i & 1, pattern[i] != static_cast<char>(byte));
            }
        }
    }
}

TEST(SearchTables, LimitWord) {
    uint32_t masks[QZ_SHIFT_MASK_ENTRIES];
    EXPECT_EQ(preshiftorprocess("a", 1, masks), 0xFFFFFFFFu);
    EXPECT_EQ(preshiftorprocess("abc", 3, masks), 0xFFFFFFFCu);
    EXPECT_EQ(preshiftorprocess(std::string(31, 'a').data(), 31, masks), 0xC0000000u);
    EXPECT_EQ(preshiftorprocess(std::string(32, 'a').data(), 32, masks), 0u);
    EXPECT_EQ(masks[0x61], 0xFFFFFFFFu);
    EXPECT_EQ(preshiftorprocess("", 0, masks), 0u);
}

TEST(SearchTables, PatternLongerThanAString) {
    const std::string pattern(40000, 'x');
    const Prepared prepared(pattern);
    EXPECT_EQ(prepared.bmgs, std::vector<uint32_t>(40000, 1));
    const Prepared longest(std::string(32767, 'x'));
    EXPECT_EQ(longest.bmgs[0], 1u);
    EXPECT_EQ(longest.bmgs[32766], 32767u) << "no other byte stands before the last";
}

// ---- The three byte searches ------------------------------------------------------------------------------------------------

std::vector<size_t> slow_places(std::string_view text, std::string_view pattern) {
    std::vector<size_t> places;
    for (size_t i = 0; i + pattern.size() <= text.size(); ++i) {
        bool equal = true;
        for (size_t k = 0; k < pattern.size(); ++k) equal &= text[i + k] == pattern[k];
        if (equal) places.push_back(i);
    }
    return places;
}

TEST(ByteSearch, AllThreeFindEveryPlace) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto below = [&](size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(random); };
    support::TextAtPageEnd text_guard(4096);
    support::TextAtPageEnd pattern_guard(4096);
    for (int round = 0; round < kRandomTexts; ++round) {
        const size_t letters = 1 + below(3);
        std::string text(1 + below(round % 20 == 0 ? 300 : 70), 'a');
        for (char& c : text) c = static_cast<char>('a' + below(letters));
        std::string pattern(1 + below(std::min<size_t>(text.size(), 40)), 'a');
        for (char& c : pattern) c = static_cast<char>('a' + below(letters));
        if (below(2) == 0) pattern = text.substr(below(text.size() - pattern.size() + 1), pattern.size());
        SCOPED_TRACE(text + " / " + pattern);
        const std::vector<size_t> expected = slow_places(text, pattern);
        const Prepared prepared(pattern);
        const uint8_t* t = reinterpret_cast<const uint8_t*>(text_guard.place(text));
        const uint8_t* p = reinterpret_cast<const uint8_t*>(pattern_guard.place(pattern));
        std::vector<size_t> found;
        const auto collect = [&](size_t place) {
            found.push_back(place);
            return false;
        };
#ifdef QZHOST_VECTOR_BYTES
        EXPECT_FALSE(qzhost::scan_ends(t, text.size(), p, pattern.size(), collect));
        ASSERT_EQ(found, expected);
#endif
        found.clear();
        EXPECT_FALSE(
            qzhost::boyer_moore(t, text.size(), p, pattern.size(), prepared.bmbc.data(), prepared.bmgs.data(), collect));
        ASSERT_EQ(found, expected);
        if (pattern.size() > QZ_SHIFT_OR_MAX_PATTERN) continue;
        found.clear();
        EXPECT_FALSE(qzhost::shift_or(t, text.size(), pattern.size(), prepared.masks.data(), prepared.limit, collect));
        ASSERT_EQ(found, expected);
    }
}

// What the library takes for short texts, by the machine: every length around a block and its half, in front of a page that
// nobody can read, against the places.
TEST(ByteSearch, ShortTextsOfEveryLength) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto below = [&](size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(random); };
    support::TextAtPageEnd text_guard(4096);
    support::TextAtPageEnd pattern_guard(4096);
    for (int round = 0; round < kRandomTexts / 100; ++round) {
        for (size_t n = 0; n <= 130; ++n) {
            const size_t letters = 1 + below(4);
            std::string text(n, 'a');
            for (char& c : text) c = static_cast<char>('a' + below(letters));
            // A byte 0 is one like any other, also behind the text.
            if (round % 4 == 0 && n != 0) text[below(n)] = '\0';
            std::string pattern(1 + below(below(4) == 0 ? 66 : 6), 'a');
            for (char& c : pattern) c = static_cast<char>('a' + below(letters));
            if (round % 8 == 0) pattern.back() = '\0';
            const size_t m = pattern.size();
            if (m <= n && below(2) == 0) pattern = text.substr(below(n - m + 1), m);
            SCOPED_TRACE(testing::PrintToString(text) + " / " + testing::PrintToString(pattern));
            const std::vector<size_t> expected = slow_places(text, pattern);
            const auto nth = [&](size_t i) { return i > expected.size() ? 0 : static_cast<uint32_t>(expected[i - 1] + 1); };
            const uint8_t* const t = reinterpret_cast<const uint8_t*>(text_guard.place(text));
            const uint8_t* const p = reinterpret_cast<const uint8_t*>(pattern_guard.place(pattern));
#ifdef QZHOST_VECTOR_BYTES
            if (m <= 2 && m <= n && n <= qzhost::SpreadBlocks::kMost) {
                ASSERT_EQ(qzhost::first_of_ends(t, n, p, m), nth(1));
            }
#endif
#ifdef QZHOST_MASKED_LOADS
            if (!qzhost::has_masked_loads()) continue;
            const size_t count = qzhost::number_of_places(n, m);
            ASSERT_EQ(count, n < m ? 0 : n - m + 1);
            if (m > qzhost::kMaskedPattern) continue;
            ASSERT_EQ(qzhost::first_masked(t, count, p, m), nth(1));
            for (const int32_t occurrence : {1, 2, 3, 9, 60, 64, 65, 1000}) {
                ASSERT_EQ(qzhost::find_masked(t, count, p, m, occurrence), nth(static_cast<size_t>(occurrence))) << occurrence;
            }
#endif
        }
    }
}

// Tables of nonsense lead the search astray, but not out of the text.
TEST(ByteSearch, WrongTablesStayInside) {
    support::TextAtPageEnd text_guard(4096);
    support::TextAtPageEnd pattern_guard(4096);
    const std::string text(300, 'a');
    const std::string pattern(260, 'a');
    const char* t = text_guard.place(text);
    const char* p = pattern_guard.place(pattern);
    for (const uint32_t word : {0u, 1u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
        const std::vector<uint32_t> bmbc(QZ_BMBC_ENTRIES, word);
        const std::vector<uint32_t> bmgs(pattern.size(), word);
        uint32_t position = 99;
        EXPECT_EQ(qz_strbmncmp_arr_ex(t, 300, p, 260, 1, &position, bmbc.data(), bmgs.data()), 1);
        EXPECT_EQ(position, 1u);
        qz_strbmncmp_arr_ex(t, 300, p, 260, 41, &position, bmbc.data(), bmgs.data());
        EXPECT_LE(position, 41u);
        EXPECT_EQ(qz_strbmncmp_arr_ex(t, 300, p, 260, 41, &position, bmgs.data(), bmgs.data()), 1) << "one table is not used";
        EXPECT_EQ(position, 41u);
    }
}

// ---- Services, against a search that compares characters --------------------------------------------------------------------

struct Case {
    std::string text;
    std::string pattern;
};

class SearchTest : public testing::TestWithParam<CharsetUnderTest> {
  protected:
    // The 1-based positions at which the bytes agree and a character of the text begins.
    std::vector<uint32_t> slow_search(const std::string& text, const std::string& pattern) {
        std::vector<uint32_t> positions;
        uint32_t at = 0;
        for (const std::string& piece : converter_.cut(text)) {
            if (!pattern.empty() && text.compare(at, pattern.size(), pattern) == 0) positions.push_back(at + 1);
            at += size_of(piece);
        }
        return positions;
    }

    Case draw(size_t most_characters, size_t most_pattern) {
        Case drawn;
        const size_t kinds = 2 + below(letters_.size() - 1);
        const auto letter = [&] { return letters_[below(kinds)]; };
        for (size_t n = below(most_characters + 1); n > 0; --n) drawn.text += letter();
        for (size_t n = 1 + below(most_pattern); n > 0; --n) drawn.pattern += letter();
        switch (below(4)) {
            case 0: {
                // Bytes of the text, which may begin inside a character.
                const size_t length = 1 + below(most_pattern);
                if (length <= drawn.text.size())
                    drawn.pattern = drawn.text.substr(below(drawn.text.size() - length + 1), length);
                break;
            }
            case 1:
                drawn.text += drawn.pattern;
                break;
            default:
                break;
        }
        return drawn;
    }

    size_t below(size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(random_); }

    void compare_all(const Case& drawn);

    ServerCharset server_{GetParam()};
    Converter converter_{GetParam()};
    uint32_t seed_ = support::test_seed();
    std::mt19937 random_{seed_};
    // Small, and such that bytes of one stand inside another.
    std::vector<std::string> letters_ =
        GetParam().number == kUtf8.number
            ? std::vector<std::string>{"a", "b", "\xC3\xA9", "\xE2\x82\xAC", "\xE2\x82\xA9", "\x82"}
        : GetParam().number == kEucKr.number
            ? std::vector<std::string>{"a", "b", "\xB0\xA1", "\xA1\xB0", "\xB0\xB0", "\xFF"}
            : std::vector<std::string>{"a", "0", "\x81\x61", "\x61\x81\x30\x81\x30", "\x81\x81", "\xFF"};
    support::TextAtPageEnd text_guard_{8192};
    support::TextAtPageEnd pattern_guard_{8192};
};

INSTANTIATE_TEST_SUITE_P(Charsets, SearchTest, testing::ValuesIn(kCharsets), name_of_charset);

void SearchTest::compare_all(const Case& drawn) {
    SCOPED_TRACE(testing::PrintToString(drawn.text) + " / " + testing::PrintToString(drawn.pattern));
    const uint32_t n = size_of(drawn.text);
    const uint32_t m = size_of(drawn.pattern);
    const std::vector<uint32_t> expected = slow_search(drawn.text, drawn.pattern);
    const Prepared prepared(drawn.pattern);
    const char* text = text_guard_.place(drawn.text);
    const char* pattern = pattern_guard_.place(drawn.pattern);
    std::vector<int32_t> positions(n);
    uint32_t multibyte;
    const uint32_t characters = qz_mbstrlen_cposition_ex(text, n, positions.data(), &multibyte);
    // A part of the text, from a character on.
    const uint32_t skipped = static_cast<uint32_t>(below(characters + 1));
    const uint32_t base = skipped < characters ? static_cast<uint32_t>(positions[skipped] - 1) : n;
    std::vector<uint32_t> behind;
    for (const uint32_t position : expected) {
        if (position > base) behind.push_back(position - base);
    }
    const bool is_short = m <= QZ_SHIFT_OR_MAX_PATTERN;
    for (int32_t occurrence = -1; occurrence <= static_cast<int32_t>(expected.size()) + 1; ++occurrence) {
        const auto nth = [&](const std::vector<uint32_t>& places) {
            const bool has = occurrence >= 1 && static_cast<size_t>(occurrence) <= places.size();
            return has ? places[static_cast<size_t>(occurrence) - 1] : 0;
        };
        const auto check = [&](const char* name, int32_t result, uint32_t position, uint32_t wanted) {
            ASSERT_EQ(position, wanted) << name << ' ' << occurrence;
            ASSERT_EQ(result != 0, wanted != 0) << name << ' ' << occurrence;
        };
        uint32_t position = 99;
        int32_t result = qz_strbmncmp(text, n, pattern, m, &position, occurrence);
        check("qz_strbmncmp", result, position, nth(expected));
        result = qz_strbmncmp_arr_ex(text, n, pattern, m, occurrence, &position, prepared.bmbc.data(), prepared.bmgs.data());
        check("qz_strbmncmp_arr_ex", result, position, nth(expected));
        result = qz_strbmncmp_arr_ex(text, n, pattern, m, occurrence, &position, prepared.bmgs.data(), prepared.bmgs.data());
        check("qz_strbmncmp_arr_ex, one table", result, position, nth(expected));
        result = qz_strbmncmp_arr(text + base, n - base, pattern, m, positions.data(), occurrence, &position, base);
        check("qz_strbmncmp_arr", result, position, nth(behind));
        result = qz_mbshiftor_ncmp(text, n, pattern, m, &position, occurrence);
        check("qz_mbshiftor_ncmp", result, position, is_short ? nth(expected) : 0);
        result = qz_mbshiftor_ncmp_arr(text + base, n - base, pattern, m, positions.data(), occurrence, &position, base);
        check("qz_mbshiftor_ncmp_arr", result, position, is_short ? nth(behind) : 0);
        result = qz_mbshiftor_ncmp_arr_ex(text + base, n - base, pattern, m, positions.data(), occurrence, &position,
                                          prepared.masks.data(), prepared.limit, base);
        check("qz_mbshiftor_ncmp_arr_ex", result, position, is_short ? nth(behind) : 0);
    }
}

TEST_P(SearchTest, ShortTextsOverSmallAlphabets) {
    SCOPED_TRACE("seed " + std::to_string(seed_));
    for (int round = 0; round < kRandomTexts && !HasFatalFailure(); ++round) compare_all(draw(24, 6));
}

TEST_P(SearchTest, LongTextsAndPatterns) {
    SCOPED_TRACE("seed " + std::to_string(seed_));
    for (int round = 0; round < kLongTexts && !HasFatalFailure(); ++round) {
        compare_all(draw(600, 300));
        // One letter throughout: as many matches as can be.
        const std::string letter = letters_[2];
        Case even;
        for (size_t i = 0; i < 200; ++i) even.text += letter;
        for (size_t i = 1 + below(199); i > 0; --i) even.pattern += letter;
        compare_all(even);
    }
}

TEST_P(SearchTest, PatternsNoLongerThanTheTextOnly) {
    uint32_t position = 99;
    EXPECT_EQ(qz_strbmncmp("ab", 2, "abc", 3, &position, 1), 0);
    EXPECT_EQ(position, 0u);
    position = 99;
    EXPECT_EQ(qz_strbmncmp("ab", 2, "", 0, &position, 1), 0);
    EXPECT_EQ(position, 0u);
    position = 99;
    EXPECT_EQ(qz_strbmncmp(nullptr, 0, "a", 1, &position, 1), 0);
    EXPECT_EQ(position, 0u);
}

// Many texts at once come to what they come to one by one.
class ManyTexts {
  public:
    explicit ManyTexts(const std::vector<std::string>& texts) {
        for (const std::string& text : texts) bytes_ += text;
        char* at = bytes_.data();
        for (const std::string& text : texts) {
            slots_.push_back({size_of(text), 77, at});
            at += text.size();
        }
    }
    ManyTexts(const ManyTexts&) = delete;

    uint32_t size() const { return static_cast<uint32_t>(slots_.size()); }
    std::vector<bdta3_colstr>& slots() { return slots_; }

  private:
    std::string bytes_;
    std::vector<bdta3_colstr> slots_;
};

TEST_P(SearchTest, ManyTextsAtOnce) {
    SCOPED_TRACE("seed " + std::to_string(seed_));
    size_t found = 0;
    for (int round = 0; round < kRandomTexts / 40; ++round) {
        const Case drawn = draw(24, below(4) == 0 ? 70 : 6);
        std::vector<std::string> texts(below(4) == 0 ? below(1500) : below(40));
        const size_t most = below(4) == 0 ? 200 : 30;
        for (std::string& text : texts) text = below(3) == 0 ? drawn.text : draw(most, 1).text;
        ManyTexts many(texts);
        std::vector<uint8_t> valid(texts.size());
        for (uint32_t i = 0; i < many.size(); ++i) {
            valid[i] = below(5) == 0 ? 0 : static_cast<uint8_t>(1 + below(255));
            if (valid[i] == 0) many.slots()[i] = {12345, 6, nullptr};
        }
        const Prepared prepared(drawn.pattern);
        const char* const pattern = pattern_guard_.place(drawn.pattern);
        std::vector<uint32_t> positions(texts.size() + 1, 99);
        for (const bool with_tables : {false, true}) {
            host_find_in_texts(positions.data(), many.size(), many.slots().data(), valid.data(), pattern,
                               size_of(drawn.pattern), with_tables ? prepared.bmbc.data() : nullptr,
                               with_tables ? prepared.bmgs.data() : nullptr);
            for (uint32_t i = 0; i < many.size(); ++i) {
                uint32_t wanted = 0;
                if (valid[i] != 0)
                    qz_strbmncmp(texts[i].data(), size_of(texts[i]), pattern, size_of(drawn.pattern), &wanted, 1);
                ASSERT_EQ(positions[i], wanted)
                    << i << ' ' << testing::PrintToString(texts[i]) << " / " << testing::PrintToString(drawn.pattern);
                found += wanted > 1;
            }
            ASSERT_EQ(positions.back(), 99u);
        }
        std::vector<uint32_t> characters = positions;
        host_characters_of_positions(characters.data(), many.size(), many.slots().data());
        for (uint32_t i = 0; i < many.size(); ++i) {
            const uint32_t wanted = positions[i] == 0 ? 0 : qz_mbstrlen_ex(texts[i].data(), positions[i] - 1) + 1;
            ASSERT_EQ(characters[i], wanted) << testing::PrintToString(texts[i]) << ' ' << positions[i];
        }
        ASSERT_EQ(characters.back(), 99u);
    }
    EXPECT_GT(found, 1000u);
}

TEST_P(SearchTest, NoPatternStandsInNoText) {
    ManyTexts many({"abc", "", "a"});
    const uint8_t valid[] = {1, 1, 0};
    uint32_t positions[] = {99, 99, 99, 99};
    host_find_in_texts(positions, 3, many.slots().data(), valid, "", 0, nullptr, nullptr);
    EXPECT_EQ(std::vector<uint32_t>(positions, positions + 4), (std::vector<uint32_t>{0, 0, 0, 99}));
    host_characters_of_positions(positions, 0, nullptr);
    EXPECT_EQ(positions[3], 99u);
}

// Texts of which each ends where an unreadable page begins.
TEST_P(SearchTest, ManyTextsAtAPagesEnd) {
    for (size_t n = 0; n <= 70; ++n) {
        const std::string text(n, 'a');
        char* const at = text_guard_.place(text);
        std::vector<bdta3_colstr> slots;
        for (uint32_t i = 0; i <= n; ++i) slots.push_back({i, 0, at + n - i});
        const std::vector<uint8_t> valid(slots.size(), 1);
        for (const std::string& pattern : {std::string("a"), std::string("aa"), std::string("aaa"), std::string(20, 'a'),
                                           std::string(64, 'a'), std::string(65, 'a'), std::string("ab")}) {
            std::vector<uint32_t> positions(slots.size(), 99);
            host_find_in_texts(positions.data(), static_cast<uint32_t>(slots.size()), slots.data(), valid.data(),
                               pattern_guard_.place(pattern), size_of(pattern), nullptr, nullptr);
            for (uint32_t i = 0; i <= n; ++i) ASSERT_EQ(positions[i], pattern.back() == 'a' && pattern.size() <= i ? 1u : 0u);
            // As if each text had been found to end with a pattern of one byte.
            for (uint32_t i = 0; i <= n; ++i) positions[i] = i;
            host_characters_of_positions(positions.data(), static_cast<uint32_t>(slots.size()), slots.data());
            for (uint32_t i = 0; i <= n; ++i) ASSERT_EQ(positions[i], i);
        }
    }
}

#ifdef QZHOST_MASKED_LOADS
TEST(PickedRows, BothWaysPickTheSame) {
    std::mt19937 random(support::test_seed());
    for (uint32_t n = 0; n <= qzhost::PickedRows::kMost; n += n < 40 ? 1 : 59) {
        std::vector<uint32_t> numbers(n);
        for (uint32_t& number : numbers) number = random() % 4 == 0 ? 0xFFFFFFFFu - random() % 2 : random() % 4;
        for (const uint32_t least : {1u, 2u}) {
            std::vector<uint32_t> expected;
            for (uint32_t i = 0; i < n; ++i) {
                if (numbers[i] >= least) expected.push_back(i);
            }
            qzhost::PickedRows picked;
            picked.pick(numbers.data(), n, least);
            EXPECT_EQ(std::vector<uint32_t>(picked.begin(), picked.end()), expected);
            if (!qzhost::has_masked_loads()) continue;
            qzhost::PickedRows masked;
            masked.pick_masked(numbers.data(), n, least);
            EXPECT_EQ(std::vector<uint32_t>(masked.begin(), masked.end()), expected);
        }
    }
}
#endif

// A text in which the pattern nearly stands at every place: the scan gives up, and what takes over goes on where it stopped.
TEST(Search, HardTexts) {
    const ServerCharset server(kUtf8);
    const std::string run(20000, 'a');
    for (const size_t half : {150u, 3000u}) {
        const std::string pattern = std::string(half, 'a') + "b" + std::string(half, 'a');
        const std::string text = run + "b" + run + "b" + run;
        const Prepared prepared(pattern);
        for (const int32_t occurrence : {1, 2, 3}) {
            const size_t expected = occurrence == 3 ? 0 : static_cast<size_t>(occurrence) * 20001 - half;
            uint32_t position = 99;
            qz_strbmncmp(text.data(), size_of(text), pattern.data(), size_of(pattern), &position, occurrence);
            EXPECT_EQ(position, expected);
            position = 99;
            qz_strbmncmp_arr_ex(text.data(), size_of(text), pattern.data(), size_of(pattern), occurrence, &position,
                                prepared.bmbc.data(), prepared.bmgs.data());
            EXPECT_EQ(position, expected);
        }
    }
}

// The array alone decides, also where it does not agree with the text given.
TEST(Search, PositionsAreTakenAsTheyAre) {
    const ServerCharset server(kUtf8);
    const std::string text =
        "\xC3\xA9"
        "ab ab";
    std::vector<int32_t> positions(text.size());
    uint32_t multibyte;
    ASSERT_EQ(qz_mbstrlen_cposition_ex(text.data(), size_of(text), positions.data(), &multibyte), 6u);
    uint32_t position = 99;
    EXPECT_EQ(qz_mbshiftor_ncmp_arr(text.data() + 2, 5, "ab", 2, positions.data(), 1, &position, 2), 1);
    EXPECT_EQ(position, 1u);
    // With a base of 1 the first match falls into the first character, and does not count.
    EXPECT_EQ(qz_mbshiftor_ncmp_arr(text.data() + 2, 5, "ab", 2, positions.data(), 1, &position, 1), 1);
    EXPECT_EQ(position, 4u);
}

TEST(Search, BytesInsideTheLastCharacterAreNoMatch) {
    const ServerCharset server(kGb18030);
    const std::string text = "b\x81\x61";
    std::vector<int32_t> positions(text.size());
    uint32_t multibyte;
    ASSERT_EQ(qz_mbstrlen_cposition_ex(text.data(), 3, positions.data(), &multibyte), 2u);
    uint32_t position = 99;
    EXPECT_EQ(qz_strbmncmp_arr(text.data(), 3, "a", 1, positions.data(), 1, &position, 0), 0);
    EXPECT_EQ(position, 0u);
    EXPECT_EQ(qz_strbmncmp(text.data(), 3, "a", 1, &position, 1), 0);
}

TEST(Search, BlanksAtTheEnd) {
    EXPECT_EQ(qz_get_occur_num("ab   ", 5, "  ", 2), 3u);
    EXPECT_EQ(qz_get_occur_num("     ", 5, "  ", 2), 5u);
    EXPECT_EQ(qz_get_occur_num("  ab", 4, "  ", 2), 0u);
    EXPECT_EQ(qz_get_occur_num("ab  ", 4, " b", 2), 0u);
    EXPECT_EQ(qz_get_occur_num(nullptr, 0, " ", 1), 0u);
}

}  // namespace
