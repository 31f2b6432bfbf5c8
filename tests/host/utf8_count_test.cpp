// The ways in which UTF-8 is counted, each against the walk from character to character: the library takes one of them by the
// machine.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "host/src/character_walk.h"
#include "support/test_seed.h"
#include "support/text_at_page_end.h"

namespace qzhost {
namespace {

class Utf8Counts : public testing::Test {
  protected:
    // The text stands in front of a page that nobody can read.
    void check(const std::string& text) {
        const uint8_t* const p = bytes_of(room_.place(text));
        const size_t n = text.size();
        const Utf8Count expected = count_utf8_by_step(p, n);
        const Utf8Count counted = count_utf8(p, n);
        ASSERT_EQ(counted.well_formed, expected.well_formed) << testing::PrintToString(text);
        if (expected.well_formed) {
            ASSERT_EQ(counted.characters, expected.characters) << testing::PrintToString(text);
        }
#ifdef QZHOST_MASKED_LOADS
        if (!has_masked_loads()) return;
        const size_t told = count_utf8_masked(p, n);
        if (told != kNotTold) {
            ++told_;
            ASSERT_TRUE(expected.well_formed) << testing::PrintToString(text);
            ASSERT_EQ(told, expected.characters) << testing::PrintToString(text);
        }
#endif
    }

    support::TextAtPageEnd room_{4096};
    size_t told_ = 0;
};

// All pairs of bytes, and all lead bytes with second bytes before a whole tail, at the edges of words and blocks.
TEST_F(Utf8Counts, EveryPairOfBytesAtEveryEdge) {
    for (const size_t before :
         {0u, 1u, 6u, 13u, 14u, 15u, 29u, 30u, 31u, 45u, 46u, 47u, 58u, 59u, 60u, 61u, 62u, 63u, 124u, 127u}) {
        for (uint32_t pair = 0; pair < 0x10000; pair += before == 0 ? 1 : 7) {
            const std::string two{static_cast<char>(pair >> 8), static_cast<char>(pair)};
            const std::string front(before, 'a');
            check(front + two);
            check(front + two + "\x80");
            check(front + two + "\x80\xBF");
            check(front + two + "z\xC3\xA9");
        }
    }
}

TEST_F(Utf8Counts, TextsOfEveryLength) {
    static const std::vector<std::string> common = {"a", "\xC3\xA9", "\xE4\xB8\xAD", "\xE1\x80\x80", "\xDF\xBF", "\xC2\x80"};
    static const std::vector<std::string> rare = {"\xED\x9F\xBF", "\xE0\xA0\x80", "\xF0\x9F\x98\x80", "\xF4\x8F\xBF\xBF"};
    std::mt19937 random(support::test_seed());
    for (int i = 0; i < 40000; ++i) {
        const size_t wanted = random() % (i % 4 == 0 ? 300 : 80);
        const uint32_t kind = random() % 4;
        std::string text;
        while (text.size() < wanted) {
            if (kind == 1 && random() % 8 == 0) {
                text += rare[random() % rare.size()];
            } else {
                text += common[random() % common.size()];
            }
        }
        if (kind == 2 && !text.empty()) text[random() % text.size()] = static_cast<char>(random());
        if (kind == 3) text.resize(text.size() - random() % std::min<size_t>(text.size() + 1, 4));
        check(text);
    }
#ifdef QZHOST_MASKED_LOADS
    if (has_masked_loads()) {
        EXPECT_GT(told_, 10000u);
    }
#endif
}

}  // namespace
}  // namespace qzhost
