#include "bop/bifun_str/search_context.h"

#include <gtest/gtest.h>

#include <string>

#include "qzbifun/codes.h"
#include "qzhost/characters.h"
#include "support/host.h"

namespace bifun {
namespace {

uint32_t size_of(const std::string& text) { return static_cast<uint32_t>(text.size()); }

TEST(SearchContext, TablesUpTo256EntriesStandInTheFrame) {
    support::Host host;
    const Call call{host.env(), host.mem(), "test"};
    for (const uint32_t bytes : {1u, 255u, 256u, 257u, 32767u}) {
        const std::string pattern = std::string(bytes - 1, 'a') + "b";
        const std::string text = "aa" + pattern;
        for (const bool once : {false, true}) {
            SearchContext ctx;
            ASSERT_FALSE((once ? ctx.prepare_for_one_search(call, pattern.data(), bytes)
                               : ctx.prepare_boyer_moore(call, pattern.data(), bytes, bytes))
                             .failed());
            EXPECT_EQ(host.outstanding(), bytes <= 256 ? 0 : size_t{bytes} * 4);
            EXPECT_EQ(ctx->find(text.data(), size_of(text)), 3u);
            EXPECT_EQ(ctx->find(text.data(), size_of(text), 2), 0u);
        }
        EXPECT_EQ(host.outstanding(), 0u);
    }
}

TEST(SearchContext, TablesAreThoseOfTheServices) {
    support::Host host;
    const std::string pattern = "abcab";
    SearchContext ctx;
    ASSERT_FALSE(ctx.prepare_boyer_moore({host.env(), host.mem(), "test"}, pattern.data(), 5, 5).failed());
    uint32_t bmbc[QZ_BMBC_ENTRIES];
    uint32_t bmgs[5];
    preprocess_bmbc(pattern.data(), 5, bmbc);
    preprocess_bmgs(pattern.data(), 5, bmgs);
    EXPECT_EQ(std::memcmp(bmbc, ctx->boyer_moore.bmbc, sizeof bmbc), 0);
    EXPECT_EQ(std::memcmp(bmgs, ctx->boyer_moore.bmgs, sizeof bmgs), 0);
    EXPECT_EQ(ctx->pattern_chars, 5u);
}

TEST(SearchContext, Exhaustion) {
    support::Host host;
    const Call call{host.env(), host.mem(), "test"};
    const std::string pattern(257, 'a');
    host_memory_fail_after(0);
    SearchContext ctx;
    const Code code = ctx.prepare_boyer_moore(call, pattern.data(), size_of(pattern));
    const Code short_code = ctx.prepare_boyer_moore(call, pattern.data(), 256);
    host_memory_fail_after(-1);
    EXPECT_EQ(code.value, EC_OUT_OF_MEMORY);
    EXPECT_EQ(short_code.value, 0);
    EXPECT_TRUE(host.errors().empty());
}

TEST(SearchContext, ShiftOrGoesByTheArrayOfCharacters) {
    const std::string text = "xaaaa";
    int32_t positions[8];
    uint32_t multibyte;
    qz_mbstrlen_cposition_ex(text.data(), size_of(text), positions, &multibyte);
    SearchContext ctx;
    ctx.prepare_shift_or("aa", 2, 2);
    EXPECT_EQ(ctx->find_shift_or(text.data(), 5, positions, 1, 0), 2u);
    EXPECT_EQ(ctx->find_shift_or(text.data() + 2, 3, positions, 2, 2), 2u);
    EXPECT_EQ(ctx->find_shift_or(text.data() + 2, 3, positions, 3, 2), 0u);
    positions[2] = 5;  // no character starts at byte 3 or 4
    EXPECT_EQ(ctx->find_shift_or(text.data() + 2, 3, positions, 1, 2), 0u);
}

}  // namespace
}  // namespace bifun
