#include "bop/bifun_str/written_out.h"

#include <gtest/gtest.h>

#include <string>

#include "qzbifun/codes.h"
#include "support/host.h"

namespace bifun {
namespace {

TEST(WrittenOut, BlanksStandBehindTheText) {
    support::Host host;
    char text[] = "ab";
    const bdta3_colstr slot{2, 3, text};
    bdta3_colstr out{7, 7, nullptr};
    ASSERT_EQ(colstr_expand_blanks(host.env(), host.mem(), &out, &slot), 0);
    EXPECT_EQ(std::string(out.bytes, out.len), "ab   ");
    EXPECT_EQ(out.blank, 0u);
    EXPECT_EQ(host.outstanding(), 5u);
    host.mem()->free(host.env(), host.mem()->pool, out.bytes);
    EXPECT_EQ(host.outstanding(), 0u);
}

TEST(WrittenOut, EmptyAndAllBlank) {
    support::Host host;
    for (const uint32_t blank : {0u, 4u}) {
        WrittenOut out(Call{host.env(), host.mem(), "test"});
        ASSERT_FALSE(out.expand({nullptr, 0, blank}).failed());
        EXPECT_EQ(std::string(out.bytes(), out.len()), std::string(blank, ' '));
    }
    EXPECT_EQ(host.outstanding(), 0u);
}

// An allocator may answer nothing where nothing is asked for.
TEST(WrittenOut, AnEmptyValueHasABlockToo) {
    support::Host host;
    static char block[1];
    rt_memobj strict{
        [](qz_env*, void*, size_t size, const char*, int32_t) { return size == 0 ? nullptr : static_cast<void*>(block); },
        nullptr, nullptr};
    const bdta3_colstr slot{0, 0, nullptr};
    bdta3_colstr out{7, 7, nullptr};
    ASSERT_EQ(colstr_expand_blanks(host.env(), &strict, &out, &slot), 0);
    EXPECT_EQ(out.bytes, block);
    EXPECT_EQ(out.len, 0u);
    EXPECT_EQ(out.blank, 0u);
}

TEST(WrittenOut, TheSameSlotStaysAsItIs) {
    support::Host host;
    char text[] = "ab";
    bdta3_colstr slot{2, 3, text};
    EXPECT_EQ(colstr_expand_blanks(host.env(), host.mem(), &slot, &slot), 0);
    EXPECT_EQ(slot.len, 2u);
    EXPECT_EQ(slot.blank, 3u);
    EXPECT_EQ(slot.bytes, text);
}

TEST(WrittenOut, Exhaustion) {
    support::Host host;
    char text[] = "ab";
    bdta3_colstr out{7, 8, text};
    host_memory_fail_after(0);
    const bdta3_colstr slot{2, 3, text};
    const int32_t code = colstr_expand_blanks(host.env(), host.mem(), &out, &slot);
    host_memory_fail_after(-1);
    EXPECT_EQ(code, EC_OUT_OF_MEMORY);
    EXPECT_EQ(out.len, 7u);
    EXPECT_EQ(out.bytes, text);
    const bdta3_colstr immense{2, 0xFFFFFFFF, text};
    EXPECT_EQ(colstr_expand_blanks(host.env(), host.mem(), &out, &immense), EC_OUT_OF_MEMORY);
    EXPECT_TRUE(host.errors().empty());
}

}  // namespace
}  // namespace bifun
