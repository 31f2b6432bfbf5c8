// The switches before and after they are set, seen through nvl of an empty string: in compatibility mode 2 that is NULL.
#include "bop/switches.h"

#include <gtest/gtest.h>

#include "qzbifun/qzbifun.h"
#include "tests/support/vector.h"

namespace {

using support::Constant;
using support::Host;
using support::Text;
using support::Vector;

// When the library is loaded, before any test may have set them.
const bifun::Switches kAtLoad = bifun::switches;

std::string nvl_of_empty_and_x() {
    Host host;
    const Vector a = Vector::of<Text>(host, {Text{"", 0}});
    Constant b = Constant::of(Text{"x", 0});
    const Vector result = Vector::result<Text>(host, 1);
    EXPECT_EQ(bnvl_varchar_av(host.env(), host.mem(), a.col(), b.scalar(), result.col(), 1), 0);
    return result.get<Text>(0).bytes;
}

TEST(Switches, AreZeroUntilTheyAreSet) {
    EXPECT_EQ(kAtLoad.compat_mode, 0u);
    EXPECT_EQ(kAtLoad.charset_code, 0u);
    EXPECT_EQ(kAtLoad.case_sensitive, 0u);
}

TEST(Switches, EachArgumentSetsItsOwn) {
    bifun_dll_var_init(5, 6, 7);
    EXPECT_EQ(bifun::switches.compat_mode, 5u);
    EXPECT_EQ(bifun::switches.charset_code, 6u);
    EXPECT_EQ(bifun::switches.case_sensitive, 7u);
    bifun_dll_var_init(0, 0, 0);
}

TEST(Switches, AnUnknownCompatibilityModeIsTheDefault) {
    for (const uint32_t mode : {0u, 1u, 2u, 3u, 6u, 99u, 0xFFFFFFFFu}) {
        bifun_dll_var_init(mode, 1, 1);
        EXPECT_EQ(nvl_of_empty_and_x(), mode == 2 ? "x" : "") << mode;
    }
    bifun_dll_var_init(0, 0, 0);
}

}  // namespace
