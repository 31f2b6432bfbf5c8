// What the conditional operator does with texts that it replaces, and when memory runs out.
#include <gtest/gtest.h>

#include <string>

#include "qzbifun/codes.h"
#include "qzbifun/qzbifun.h"
#include "tests/support/host.h"
#include "tests/support/vector.h"

namespace {

using support::Constant;
using support::Host;
using support::Text;
using support::Vector;

constexpr uint32_t kRows = 2;
constexpr uint32_t kBlock = 5000;  // bytes of a text that is a block of the memory object

class IfOfTexts : public ::testing::Test {
  protected:
    // The call with so many allocations left.
    template <class F, class X, class Y, class Z>
    int32_t call(int64_t allocations, F* function, X* condition, Y* yes, Z* no, const Vector& result) {
        host_.clear_errors();
        host_memory_fail_after(allocations);
        const int32_t code = function(host_.env(), host_.mem(), condition, yes, no, result.col(), kRows);
        host_memory_fail_after(-1);
        return code;
    }
    Vector result() { return Vector::result<Text>(host_, kRows); }
    std::string stack() const { return print(host_.errors()); }

    Host host_;
    Vector truths_ = Vector::of<int32_t>(host_, {1, 1});
    Vector texts_ = Vector::of<Text>(host_, {Text{"a", 0}, Text{"b", 0}});
    Vector blocks_ = Vector::of<Text>(host_, {Text{std::string(kBlock, 'x'), 0}, Text{std::string(kBlock, 'y'), 0}});
    Constant constant_ = Constant::of(Text{"c", 0});
    bdta3_int truth_{1, 0};
    bdta3_int untruth_{0, 1};
};

TEST_F(IfOfTexts, ACopyThatRunsOutOfMemoryIsReportedButNotWithAConstantCondition) {
    bdta3_scalar* const c = constant_.scalar();
    EXPECT_EQ(call(0, bifoperator_varchar_aaa, truths_.col(), texts_.col(), texts_.col(), result()), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "-503 bifoperator_varchar_aaa");
    EXPECT_EQ(call(0, bifoperator_varchar_aav, truths_.col(), texts_.col(), c, result()), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "-503 bifoperator_varchar_aav");
    EXPECT_EQ(call(0, bifoperator_varchar_ava, truths_.col(), c, texts_.col(), result()), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "-503 bifoperator_varchar_ava");
    bdta3_scalar* const untruth = reinterpret_cast<bdta3_scalar*>(&untruth_);
    EXPECT_EQ(call(0, bifoperator_varchar_vva, untruth, c, texts_.col(), result()), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "empty");
}

TEST_F(IfOfTexts, AStoreThatRunsOutOfMemoryIsReportedAndLeavesTheRow) {
    bdta3_scalar* const c = constant_.scalar();
    const Vector chosen = result();
    EXPECT_EQ(call(0, bifoperator_varchar_avv, truths_.col(), c, c, chosen), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "-503 bifoperator_varchar_avv");
    EXPECT_TRUE(chosen.valid_untouched(0));
    const Vector filled = result();
    bdta3_scalar* const truth = reinterpret_cast<bdta3_scalar*>(&truth_);
    EXPECT_EQ(call(0, bifoperator_varchar_vva, truth, c, texts_.col(), filled), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "-503 bifoperator_varchar_vva");
    EXPECT_TRUE(filled.valid_untouched(0));
}

TEST_F(IfOfTexts, AReplacedBlockIsGivenBack) {
    static_cast<int32_t*>(truths_.col()->data->values)[1] = 0;  // the second row keeps its block
    const size_t before = host_.outstanding();
    const Vector replaced = result();
    ASSERT_EQ(call(-1, bifoperator_varchar_ava, truths_.col(), constant_.scalar(), blocks_.col(), replaced), 0);
    EXPECT_EQ(host_.outstanding(), before + kBlock);
    EXPECT_EQ(replaced.get<Text>(0).bytes, "c");
    EXPECT_EQ(replaced.get<Text>(1).bytes, std::string(kBlock, 'y'));
}

// Its old text is gone, so the row has none.
TEST_F(IfOfTexts, AReplacedBlockIsGivenBackThoughTheStoreFails) {
    const size_t before = host_.outstanding();
    const Vector replaced = result();
    ASSERT_EQ(call(kRows, bifoperator_varchar_ava, truths_.col(), constant_.scalar(), blocks_.col(), replaced),
              EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "-503 bifoperator_varchar_ava");
    EXPECT_EQ(host_.outstanding(), before + kBlock);
    EXPECT_EQ(replaced.valid(0), 1);
    EXPECT_EQ(replaced.slot(0).len, 0u);
    EXPECT_EQ(replaced.get<Text>(1).bytes, std::string(kBlock, 'y'));  // as it was copied
}

// A memory object that gives nothing back, as an arena, is not asked to.
TEST_F(IfOfTexts, NothingIsGivenBackWithoutFree) {
    rt_memobj arena = *host_.mem();
    arena.free = nullptr;
    const size_t before = host_.outstanding();
    const Vector replaced = result();
    ASSERT_EQ(
        bifoperator_varchar_ava(host_.env(), &arena, truths_.col(), constant_.scalar(), blocks_.col(), replaced.col(), kRows),
        0);
    EXPECT_EQ(host_.outstanding(), before + kRows * kBlock);
    EXPECT_EQ(replaced.get<Text>(0).bytes, "c");
}

// What is chosen has its valid byte, whatever that is.
TEST_F(IfOfTexts, AnyByteButZeroIsAValue) {
    texts_.col()->data->valid[1] = 2;
    const Vector replaced = result();
    static_cast<int32_t*>(truths_.col()->data->values)[0] = 0;
    static_cast<int32_t*>(truths_.col()->data->values)[1] = 0;
    ASSERT_EQ(call(-1, bifoperator_varchar_aaa, truths_.col(), blocks_.col(), texts_.col(), replaced), 0);
    EXPECT_EQ(replaced.valid(0), 1);
    EXPECT_EQ(replaced.valid(1), 2);
    EXPECT_EQ(replaced.get<Text>(1).bytes, "b");
    EXPECT_EQ(replaced.col()->all_valid, 1u);
}

}  // namespace
