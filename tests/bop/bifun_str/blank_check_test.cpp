#include "bop/bifun_str/blank_check.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "qzhost/characters.h"
#include "support/host.h"
#include "support/test_seed.h"
#include "support/text_at_page_end.h"

namespace bifun {
namespace {

struct Value {
    std::string stored;
    uint32_t blank;

    std::string written_out() const { return stored + std::string(blank, ' '); }
};

BlankedHit find(support::Host& host, const Value& text, const Value& pattern) {
    static support::TextAtPageEnd guard(4096);
    SearchContext ctx;
    const Call call{host.env(), host.mem(), "test"};
    EXPECT_FALSE(ctx.prepare_boyer_moore(call, pattern.stored.data(), static_cast<uint32_t>(pattern.stored.size())).failed());
    const Text slot{guard.place(text.stored), static_cast<uint32_t>(text.stored.size()), text.blank};
    return find_with_blanks(*ctx, slot, pattern.blank);
}

TEST(BlankCheck, ImpliedAndStoredBlanks) {
    support::Host host;
    const auto expect = [&](const Value& text, const Value& pattern, uint32_t place, bool ends) {
        SCOPED_TRACE(text.stored + " / " + pattern.stored);
        const BlankedHit hit = find(host, text, pattern);
        EXPECT_EQ(hit.place, place);
        EXPECT_EQ(hit.ends_stored_text, ends);
    };
    expect({"ab", 2}, {"b", 2}, 2, true);
    expect({"ab", 1}, {"b", 2}, 0, false);
    expect({"ab x", 0}, {"b", 2}, 0, false);
    expect({"ab  x", 0}, {"b", 2}, 2, false);
    expect({"ab xb", 2}, {"b", 2}, 5, true);
    expect({"abxb  ", 0}, {"b", 2}, 4, false);
    expect({"ab ", 1}, {"b", 2}, 2, false);
    expect({"ab ", 0}, {"b", 2}, 0, false);
    expect({"b", 0}, {"b", 0}, 1, false);
    expect({"", 5}, {"b", 1}, 0, false);
    expect({"ab", 0xFFFFFFFF}, {"b", 0xFFFFFFFF}, 2, true);
    expect({"abc", 0xFFFFFFFF}, {"b", 0xFFFFFFFF}, 0, false);
}

// Both written out, at the starts of characters. The stored part of the pattern is found in stored bytes alone.
uint32_t slow_find(const Value& text, const Value& pattern) {
    const std::string t = text.written_out();
    const std::string p = pattern.written_out();
    const uint32_t n = static_cast<uint32_t>(t.size());
    for (uint32_t i = 0; i + p.size() <= n && i + pattern.stored.size() <= text.stored.size();
         i += qz_mbget_bytelen(t.data() + i, n - i, 1)) {
        if (t.compare(i, p.size(), p) == 0) return i + 1;
    }
    return 0;
}

TEST(BlankCheck, AgreesWithASearchOfValuesWrittenOut) {
    support::Host host;
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto below = [&](size_t n) { return static_cast<uint32_t>(random() % n); };
    const std::vector<std::vector<std::string>> alphabets = {{"a", " "}, {"a", "b", " "}, {"a", " ", "\u00e9", "\u4e2d"}};
    int hits = 0;
    for (int round = 0; round < 50000; ++round) {
        const auto& alphabet = alphabets[below(alphabets.size())];
        const auto value = [&](uint32_t least, uint32_t most, uint32_t blank) {
            Value made{"", below(blank)};
            for (uint32_t n = least + below(most - least + 1); n > 0; --n) made.stored += alphabet[below(alphabet.size())];
            return made;
        };
        const Value text = value(0, 14, 5);
        const Value pattern = value(1, 3, 5);
        const BlankedHit hit = find(host, text, pattern);
        ASSERT_EQ(hit.place, slow_find(text, pattern))
            << '[' << text.stored << "]+" << text.blank << " [" << pattern.stored << "]+" << pattern.blank;
        if (hit.place == 0) continue;
        ++hits;
        const bool ends = hit.place - 1 + pattern.stored.size() == text.stored.size();
        if (pattern.blank != 0) {
            ASSERT_EQ(hit.ends_stored_text, ends);
        }
    }
    EXPECT_GT(hits, 5000);
}

}  // namespace
}  // namespace bifun
