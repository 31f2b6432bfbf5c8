#include "bop/bifun_math/round_double.h"

#include <array>

namespace bifun {
namespace {

// The base is read where the compiler cannot know it, or it would compute the powers itself: its 10^23 is another double.
const volatile double kBase = 10.0;

// Filled when the library is loaded, since no row has the time for a pow.
const std::array<double, kGreatestPower + 1> kPowers = [] {
    std::array<double, kGreatestPower + 1> powers{};
    for (size_t n = 0; n < powers.size(); ++n) powers[n] = std::pow(kBase, static_cast<double>(n));
    return powers;
}();

}  // namespace

double power_of_ten(int32_t n) { return kPowers[static_cast<size_t>(n)]; }

}  // namespace bifun
