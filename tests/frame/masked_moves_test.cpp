// The ways in which texts are moved: nothing is read or written beside the text, whatever its length.
#include "bop/frame/masked_moves.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/text_at_page_end.h"

namespace bifun {
namespace {

// Source and target end where a page begins that nobody can touch.
template <class Moves>
void expect_moves() {
    support::TextAtPageEnd from(4096), to(4096);
    for (size_t len = 0; len <= 300; ++len) {
        std::string text;
        for (size_t i = 0; i < len; ++i) text += static_cast<char>('!' + i % 90);
        const std::string held(16, '~');
        char* const target = to.place(held + std::string(len, '?')) + held.size();
        Moves::copy(target, from.place(text), len);
        ASSERT_EQ(std::string(target - held.size(), held.size() + len), held + text) << len;
        // In front of other bytes.
        char* const before = to.place(std::string(len, '?') + held);
        Moves::copy(before, from.place(text), len);
        ASSERT_EQ(std::string(before, len + held.size()), text + held) << len;
    }
    Moves::copy(to.room(0), nullptr, 0);
}

TEST(Moves, Plain) { expect_moves<PlainMoves>(); }

#if BIFUN_HAS_MASKED_MOVES
TEST(Moves, Masked) {
    if (!has_masked_moves()) GTEST_SKIP() << "the machine has no AVX-512";
    expect_moves<MaskedMoves>();
}
#endif

TEST(Moves, TheLoopRunsOnce) {
    int runs = 0;
    char to[5] = "????";
    const size_t moved = with_moves([&]<class Moves>(Moves) BIFUN_INLINE_LAMBDA {
        ++runs;
        Moves::copy(to, "text", 4);
        return size_t{4};
    });
    EXPECT_EQ(moved, 4u);
    EXPECT_EQ(runs, 1);
    EXPECT_STREQ(to, "text");
}

}  // namespace
}  // namespace bifun
