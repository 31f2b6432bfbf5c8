// What nvl of texts leaves behind when memory runs out, and bytes of valid other than 0 and 1.
#include <gtest/gtest.h>

#include <optional>
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

class NvlOfTexts : public ::testing::Test {
  protected:
    // The call with no memory left; b is a vector or a constant.
    template <class F, class B>
    int32_t exhausted(F* function, const Vector& a, B* b, const Vector& result) {
        host_.clear_errors();
        host_memory_fail_after(0);
        const int32_t code = function(host_.env(), host_.mem(), a.col(), b, result.col(), kRows);
        host_memory_fail_after(-1);
        return code;
    }
    Vector result() { return Vector::result<Text>(host_, kRows); }
    std::string stack() const { return print(host_.errors()); }

    Host host_;
    Constant constant_ = Constant::of(Text{"b", 0});
};

TEST_F(NvlOfTexts, EachReportsACopyThatRunsOutOfMemory) {
    const Vector a = Vector::of<Text>(host_, {Text{"a", 0}, std::nullopt});
    const Vector b = Vector::of<Text>(host_, {std::nullopt, Text{"b", 0}});
    EXPECT_EQ(exhausted(bnvl_varchar_aa, a, b.col(), result()), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "-503 bnvl_varchar_aa");
    EXPECT_EQ(exhausted(bnvl_varchar_av, a, constant_.scalar(), result()), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "-503 bnvl_varchar_av");
    EXPECT_EQ(exhausted(bnvl_varbinary_av, a, constant_.scalar(), result()), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "-503 bnvl_varbinary_av");
}

// A store that fails clears its row in each, and is reported by the string form with a constant alone. The copy of a vector of
// NULLs needs no memory.
TEST_F(NvlOfTexts, AStoreThatRunsOutOfMemoryClearsItsRow) {
    const Vector a = Vector::of<Text>(host_, {std::nullopt, std::nullopt});
    const Vector b = Vector::of<Text>(host_, {Text{"b", 0}, Text{"b", 0}});
    const Vector of_vectors = result();
    EXPECT_EQ(exhausted(bnvl_varchar_aa, a, b.col(), of_vectors), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "empty");
    EXPECT_EQ(of_vectors.valid(0), 0);
    const Vector of_constant = result();
    EXPECT_EQ(exhausted(bnvl_varchar_av, a, constant_.scalar(), of_constant), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "-503 bnvl_varchar_av");
    EXPECT_EQ(of_constant.valid(0), 0);
    const Vector of_binary = result();
    EXPECT_EQ(exhausted(bnvl_varbinary_av, a, constant_.scalar(), of_binary), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "empty");
    EXPECT_EQ(of_binary.valid(0), 0);
}

TEST_F(NvlOfTexts, AByteOtherThanOneLowersTheFlag) {
    Vector a = Vector::of<Text>(host_, {std::nullopt, Text{"a", 0}});
    Vector b = Vector::of<Text>(host_, {Text{"b", 0}, Text{"b", 0}});
    a.col()->all_valid = 1;  // which it is not, so that the flag after the copy is one that can go down
    b.col()->data->valid[0] = 2;
    const Vector chosen = result();
    ASSERT_EQ(bnvl_varchar_aa(host_.env(), host_.mem(), a.col(), b.col(), chosen.col(), kRows), 0);
    EXPECT_EQ(chosen.col()->all_valid, 0u);
    EXPECT_EQ(chosen.valid(0), 2);
    EXPECT_EQ(chosen.get<Text>(0).bytes, "b");
    EXPECT_EQ(chosen.get<Text>(1).bytes, "a");
}

}  // namespace
