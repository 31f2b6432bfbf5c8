#include "host/src/character_positions.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "host/src/character_walk.h"
#include "support/test_seed.h"
#include "support/text_at_page_end.h"

#ifdef QZHOST_VECTOR_BYTES

namespace qzhost {
namespace {

// Against the walk from character to character: texts of every length that is taken, up to every byte.
TEST(CharacterPositions, InFrontOfEveryByteOfShortTexts) {
    static const std::vector<std::string> letters = {"a", "b", "\xC3\xA9", "\xE4\xB8\xAD", "\xF0\x9F\x98\x80", "\xE4", "\x80"};
    std::mt19937 random(support::test_seed());
    support::TextAtPageEnd room(64);
    size_t counted_with_longer = 0;
    for (int round = 0; round < 3000; ++round) {
        const size_t n = kBlock + random() % (SpreadBlocks::kMost - kBlock + 1);
        const size_t kinds = 1 + random() % letters.size();
        std::string text;
        while (text.size() < n) text += letters[random() % kinds];
        text.resize(n);  // which may cut the last character off
        ASSERT_TRUE(SpreadBlocks::takes(n));
        const uint8_t* const p = bytes_of(room.place(text));
        const Utf8Count whole = count_utf8_by_step(p, n);
        for (size_t front = 0; front < n; ++front) {
            const size_t counted = count_utf8_in_front(p, n, front);
            if (!whole.well_formed || (n < Utf8Blocks::kLeastSpread && whole.characters != n)) {
                ASSERT_EQ(counted, kNotCounted) << testing::PrintToString(text);
            } else if (!Utf8::is_continuation(p[front])) {
                ASSERT_EQ(counted, count_utf8_by_step(p, front).characters) << testing::PrintToString(text) << ' ' << front;
                counted_with_longer += whole.characters != n;
            }
        }
    }
    EXPECT_GT(counted_with_longer, 1000u);
}

}  // namespace
}  // namespace qzhost

#endif
