#include "tests/support/test_seed.h"

#include <cstdio>
#include <cstdlib>
#include <random>
#include <string_view>

namespace support {
namespace {

constexpr uint32_t kUsualSeed = 15821015;

uint32_t wanted_seed() {
    const char* const wanted = std::getenv("QZBIFUN_TEST_SEED");
    if (wanted == nullptr) return kUsualSeed;
    if (std::string_view(wanted) == "random") return std::random_device{}();
    return static_cast<uint32_t>(std::strtoul(wanted, nullptr, 10));
}

}  // namespace

uint32_t test_seed() {
    const uint32_t seed = wanted_seed();
    std::printf("seed: QZBIFUN_TEST_SEED=%u\n", seed);
    return seed;
}

}  // namespace support
