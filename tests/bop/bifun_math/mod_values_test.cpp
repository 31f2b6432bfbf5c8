// mod over arrays against the C library and the processor's division, bit by bit.
#include "bop/bifun_math/mod_values.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

#include "tests/support/batch.h"
#include "tests/support/random_value.h"
#include "tests/support/test_seed.h"

namespace bifun {
namespace {

using support::Random;

#ifdef NDEBUG
constexpr uint32_t kArguments = 4000000;
#else
constexpr uint32_t kArguments = 300000;  // instrumented, and not optimised
#endif
constexpr double kInfinity = std::numeric_limits<double>::infinity();

constexpr double kEdges[] = {0.0,
                             -0.0,
                             1.0,
                             -1.0,
                             0.5,
                             2.0,
                             3.0,
                             0x1.fffffffffffffp-1,
                             0x1.0000000000001p0,
                             std::numeric_limits<double>::quiet_NaN(),
                             kInfinity,
                             -kInfinity,
                             5e-324,
                             -5e-324,
                             0x1p-1022,
                             -0x1p-1022,
                             0x1.fffffffffffffp1023,
                             -0x1.fffffffffffffp1023};

double uniform(Random& random, double low, double high) {
    return low + (high - low) * (static_cast<double>(random.next() >> 11) * 0x1p-53);
}

double any_bits(Random& random) {
    const uint64_t bits = random.next();
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

double argument(Random& random) {
    switch (random.below(4)) {
        case 0:
            return any_bits(random);
        case 1:
            return kEdges[random.below(static_cast<uint32_t>(std::size(kEdges)))];
        case 2:
            return std::ldexp(uniform(random, -1.0, 1.0), static_cast<int>(random.below(120)) - 60);
        default:
            return uniform(random, -4.0, 4.0);
    }
}

bool same(double x, double y) { return std::memcmp(&x, &y, sizeof x) == 0 || (std::isnan(x) && std::isnan(y)); }

TEST(ModValues, OfDoublesIsThatOfTheCLibrary) {
    Random random(support::test_seed());
    double x[512];
    double y[512];
    double out[512];
    for (uint32_t done = 0; done < kArguments; done += 512) {
        const uint32_t kind = random.below(4);
        for (uint32_t i = 0; i < 512; ++i) {
            y[i] = argument(random);
            x[i] = argument(random);
            const double quotient = std::floor(std::ldexp(uniform(random, -1.0, 1.0), static_cast<int>(random.below(60))));
            if (kind == 1) x[i] = y[i] * quotient;  // a multiple, or next to one
            if (kind == 2) x[i] = std::nextafter(y[i] * quotient, random.chance(50) ? 0.0 : kInfinity);
            if (kind == 3) y[i] = uniform(random, 0.01, 100.0);
        }
        const uint32_t n = 1 + random.below(512);
        mod_values(out, n, x, y);
        for (uint32_t i = 0; i < n; ++i) {
            const double wanted = y[i] == 0.0 ? x[i] : std::fmod(x[i], y[i]);
            ASSERT_TRUE(same(out[i], wanted)) << std::hexfloat << x[i] << " mod " << y[i] << " is " << out[i];
        }
    }
}

TEST(ModValues, OfBigintsIsThatOfTheProcessor) {
    Random random(support::test_seed());
    int64_t x[512];
    int64_t y[512];
    int64_t out[512];
    constexpr int64_t kMin = std::numeric_limits<int64_t>::min();
    constexpr int64_t kBorders[] = {
        0, 1, -1, kMin, kMin + 1, -(kMin + 1), int64_t{1} << 51, -(int64_t{1} << 51), (int64_t{1} << 51) - 1};
    for (uint32_t done = 0; done < kArguments; done += 512) {
        const uint32_t x_shift = random.below(64);
        const uint32_t y_shift = random.below(64);
        const uint32_t borders = random.chance(30) ? 5 : 0;
        for (uint32_t i = 0; i < 512; ++i) {
            x[i] = static_cast<int64_t>(random.next()) >> x_shift;
            y[i] = static_cast<int64_t>(random.next()) >> y_shift;
            if (random.chance(borders)) x[i] = kBorders[random.below(9)];
            if (y[i] == 0 || random.chance(borders)) y[i] = random.chance(10 + borders) ? kBorders[random.below(9)] : 7;
        }
        const uint32_t n = 1 + random.below(512);
        mod_values(out, n, x, y);
        for (uint32_t i = 0; i < n; ++i) {
            ASSERT_EQ(out[i], y[i] == 0 ? x[i] : y[i] == -1 ? 0 : x[i] % y[i]) << x[i] << " mod " << y[i];
        }
    }
}

}  // namespace
}  // namespace bifun
