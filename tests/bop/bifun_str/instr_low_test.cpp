// One search in texts written out: against a search that compares characters, and what it leaves behind.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "qzbifun/codes.h"
#include "qzbifun/string_search.h"
#include "qzhost/characters.h"
#include "support/host.h"
#include "support/test_seed.h"
#include "support/text_at_page_end.h"

namespace {

using support::Host;

struct Found {
    int32_t code;
    int32_t position;
    int32_t byte;
    bool operator==(const Found&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Found& found) {
    return out << found.code << ' ' << found.position << ' ' << found.byte;
}

// Text and pattern stand in front of pages that nobody may read.
Found search(Host& host, std::string text, std::string pattern, int32_t start, int32_t occurrence) {
    static support::TextAtPageEnd text_guard(4096);
    static support::TextAtPageEnd pattern_guard(4096);
    Found found{0, -7, -7};
    found.code = ifun_instr_low(host.env(), host.mem(), text_guard.place(text), static_cast<uint32_t>(text.size()),
                                pattern_guard.place(pattern), static_cast<uint32_t>(pattern.size()), start, occurrence,
                                &found.position, &found.byte);
    return found;
}

TEST(InstrLow, PositionAndByte) {
    Host host;
    const auto expect = [&](const std::string& text, const std::string& pattern, int32_t start, int32_t occurrence,
                            const Found& expected) {
        EXPECT_EQ(search(host, text, pattern, start, occurrence), expected) << text << ' ' << pattern << ' ' << start;
    };
    expect("abcabc", "b", 1, 1, {0, 2, 2});
    expect("abcabc", "b", 3, 1, {0, 5, 3});
    expect("abcabc", "b", 1, 2, {0, 5, 5});
    expect("abcabc", "b", -1, 1, {0, 5, 2});
    expect("abcabc", "b", -1, 2, {0, 2, 5});
    expect("abcabc", "b", -3, 1, {0, 2, 3});
    expect("abcabc", "bc", -2, 1, {0, 5, 1});
    expect("abcabc", "bc", -7, 1, {0, 0, 0});
    expect("abc", "b", 0, 1, {0, 1, 2});  // from no position: the count begins with 0
    expect("abc", "b", 4, 1, {0, 0, 0});
    expect("abc", "b", INT32_MAX, 1, {0, 0, 0});
    expect("abc", "b", INT32_MIN, 1, {0, 0, 0});
    expect("abc", "b", 1, 0, {0, 0, 0});
    expect("abc", "", 1, 1, {0, 0, 0});
    expect("", "b", 1, 1, {0, 0, 0});
    expect("", "b", -1, 1, {0, 0, 0});
    expect("", "", 0, 1, {0, 0, 0});
    expect("b", "bc", 1, 1, {0, 0, 0});
    expect("\u00e9b\u4e2db", "b", 3, 1, {0, 4, 4});
    expect("\u00e9b\u4e2db", "\u4e2d", 1, 1, {0, 3, 4});
    expect("abcdef", "\u4e2d", 1, 1, {0, 0, 0});
    // The pattern's bytes are two characters, of which the text has one.
    expect("\u4e2d", "\xE4\xB8", 1, 1, {0, 0, 0});
    expect("\u4e2db", "\xE4\xB8", 1, 1, {0, 1, 1});
    // Backwards in multibyte text: the first place is measured in bytes of the reversed text.
    expect("a\u00e9\u00e9a\u00e9\u00e9\u00e9a", "\u00e9", -8, 1, {0, 2, 1});
    const std::string letters(40, 'a');
    expect("b" + letters, std::string(31, 'a'), 1, 2, {0, 3, 3});
    expect("b" + letters, std::string(32, 'a'), 1, 2, {0, 3, 3});
    expect("b\u00e9" + letters, "\u00e9" + std::string(29, 'a'), 2, 1, {0, 2, 1});
    expect("b\u00e9" + letters, "\u00e9" + std::string(30, 'a'), 2, 1, {0, 2, 1});
    expect("b\u00e9" + letters, "\u00e9" + std::string(30, 'a'), -30, 1, {0, 2, 11});
    EXPECT_EQ(host.outstanding(), 0u);
}

TEST(InstrLow, TextAndPatternStayReversed) {
    Host host;
    std::string text = "a\u00e9bc";
    std::string pattern = "bc";
    int32_t position = 0;
    int32_t byte = 0;
    ASSERT_EQ(ifun_instr_low(host.env(), host.mem(), text.data(), 5, pattern.data(), 2, -1, 1, &position, &byte), 0);
    EXPECT_EQ(position, 3);
    EXPECT_EQ(byte, 1);
    EXPECT_EQ(text, "cb\u00e9a");
    EXPECT_EQ(pattern, "cb");
}

TEST(InstrLow, Failures) {
    Host host;
    EXPECT_EQ(search(host, "a\xC3", "a", -1, 1), (Found{EC_STRING_TOO_LONG, 0, 0}));
    EXPECT_EQ(search(host, "a", "\xC3", -1, 1), (Found{EC_STRING_TOO_LONG, 0, 0}));
    EXPECT_EQ(search(host,
                     "\xC3"
                     "ab",
                     "b", 2, 1),
              (Found{EC_STRING_TOO_LONG, 0, 0}));
    for (int64_t n = 0; n < 2; ++n) {
        host_memory_fail_after(n);
        const Found found = search(host, "ab", "b", 1, 1);
        host_memory_fail_after(-1);
        EXPECT_EQ(found, (Found{EC_OUT_OF_MEMORY, 0, 0})) << n;
        EXPECT_EQ(host.outstanding(), 0u);
    }
    EXPECT_TRUE(host.errors().empty());
}

// ---- Against a search that compares characters ------------------------------------------------------------------------------

using Characters = std::vector<std::string>;

std::string join(const Characters& characters) {
    std::string text;
    for (const std::string& character : characters) text += character;
    return text;
}

// Counted from 1, or 0.
int32_t slow_position(const Characters& text, const Characters& pattern, int32_t start, int32_t occurrence) {
    const int32_t n = static_cast<int32_t>(text.size());
    const int32_t step = start < 0 ? -1 : 1;
    for (int32_t at = start < 0 ? n + start : start - 1; at >= 0 && at < n; at += step) {
        const size_t begin = static_cast<size_t>(at);
        if (begin + pattern.size() > text.size()) continue;
        if (!std::equal(pattern.begin(), pattern.end(), text.begin() + at)) continue;
        if (--occurrence == 0) return at + 1;
    }
    return 0;
}

// The same for a start below 0 as the search finds its first place: by the bytes at which the characters of the reversed text
// begin.
int32_t position_by_reversed_bytes(const Characters& text, const Characters& pattern, int32_t start, int32_t occurrence) {
    const Characters reversed(text.rbegin(), text.rend());
    const int32_t n = static_cast<int32_t>(text.size());
    const int32_t m = static_cast<int32_t>(pattern.size());
    const int32_t first = n + start + 1;
    if (first < 1) return 0;
    std::vector<size_t> begins;
    size_t bytes = 0;
    for (const std::string& character : reversed) {
        begins.push_back(bytes + 1);
        bytes += character.size();
    }
    const size_t reached = begins[static_cast<size_t>(first - 1)] + join(pattern).size() - 1;
    int32_t from = 1;
    for (int32_t i = 0; i < n && reached < bytes; ++i) {
        if (begins[static_cast<size_t>(i)] <= reached) from = n - i;
    }
    // From there leftwards, the place of each match's last character decides.
    for (int32_t end = n - from; end >= m - 1; --end) {
        if (!std::equal(pattern.begin(), pattern.end(), text.begin() + end - (m - 1))) continue;
        if (--occurrence == 0) return end - m + 2;
    }
    return 0;
}

TEST(InstrLow, AgreesWithAComparisonOfCharacters) {
    Host host;
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto below = [&](size_t n) { return static_cast<uint32_t>(random() % n); };
    struct Charset {
        uint32_t number;
        std::vector<Characters> alphabets;
    };
    const Charset charsets[] = {
        {1, {{"a", "b"}, {"a", "\u00e9"}, {"\u00e9", "\u00e8"}, {"a", "\u4e2d", "\U0001F600"}}},
        {0, {{"a", "\x81\x61"}, {"0", "\x81\x30\x81\x30"}, {"\x81\x61", "\x61"}}},
        {2, {{"a", "\xB0\xA1"}, {"\xB0\xA1", "\xA1\xB0", "\xB0\xB0"}}},
    };
    int hits = 0;
    int apart = 0;
    for (const Charset& charset : charsets) {
        const support::Parameters parameters(SERVER_CHARSET, charset.number);
        for (int round = 0; round < 20000; ++round) {
            const Characters& alphabet = charset.alphabets[below(charset.alphabets.size())];
            const auto value = [&](uint32_t least, uint32_t most) {
                Characters made(least + below(most - least + 1));
                for (std::string& character : made) character = alphabet[below(alphabet.size())];
                return made;
            };
            const Characters text = value(0, round % 50 == 0 ? 120 : 12);
            const Characters pattern = round % 50 == 0 ? value(8, 40) : value(1, 3);
            const int32_t start = static_cast<int32_t>(below(2 * text.size() + 4)) - static_cast<int32_t>(text.size() + 1);
            if (start == 0) continue;
            const int32_t occurrence = 1 + static_cast<int32_t>(below(4));
            const Found found = search(host, join(text), join(pattern), start, occurrence);
            int32_t expected = slow_position(text, pattern, start, occurrence);
            if (start < 0) {
                const int32_t by_bytes = position_by_reversed_bytes(text, pattern, start, occurrence);
                if (join(text).size() == text.size()) {
                    ASSERT_EQ(by_bytes, expected) << "characters of one byte";
                }
                apart += by_bytes != expected;
                expected = by_bytes;
            }
            ASSERT_EQ(found.code, 0);
            ASSERT_EQ(found.position, expected) << join(text) << ' ' << join(pattern) << ' ' << start << ' ' << occurrence;
            ASSERT_EQ(found.byte != 0, expected != 0);
            hits += expected != 0;
        }
    }
    EXPECT_GT(hits, 5000);
    EXPECT_GT(apart, 100);
    EXPECT_EQ(host.outstanding(), 0u);
}

}  // namespace
