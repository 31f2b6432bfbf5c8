// The functions of one and of two doubles, all forms, against the C library in a plain loop.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "qzbifun/codes.h"
#include "qzbifun/qzbifun.h"
#include "tests/support/differential.h"

namespace {

using support::Answer;
using support::Differential;
using support::Random;
using support::Rules;

constexpr double kPi = 3.14159265358979;  // the 15 digits of degrees and radians

// Arguments at which functions of this kind turn, besides any others.
double turning(Random& random) {
    static constexpr double kPlaces[] = {0.0,    1.0,    0.5,    2.0,   90.0,     180.0, 709.78,
                                         709.79, 710.47, 710.48, 745.2, 131072.5, 1e306, 1e22};
    switch (random.below(4)) {
        case 0: {
            const double place = kPlaces[random.below(static_cast<uint32_t>(std::size(kPlaces)))];
            return random.chance(50) ? place : -place;
        }
        case 1:
            return (static_cast<double>(random.next()) * 0x1p-64 - 0.5) * 1500.0;
        default:
            return support::random_value<double>(random);
    }
}

using Telling = Answer<double> (*)(double);

Answer<double> outside_domain(const char* worker) { return Answer<double>::error(EC_INVALID_ARGUMENT, {worker, "self"}, 0.0); }
Answer<double> overflow(const char* worker) { return Answer<double>::error(EC_DATA_OVERFLOW, {worker, "self"}, 0.0); }

struct OneDouble {
    const char* name;
    bop_fn_a* function;
    Telling tell;
};

const OneDouble kFunctions[] = {
    {"babs_a_math_dbl", babs_a_math_dbl, [](double x) -> Answer<double> { return x < 0.0 ? -x : x; }},
    {"bacos_a_math_dbl", bacos_a_math_dbl,
     [](double x) -> Answer<double> {
         if (x > 1.0 || x < -1.0) return outside_domain("bacos_a_process_dbl");
         return std::acos(x);
     }},
    {"basin_a_math_dbl", basin_a_math_dbl,
     [](double x) -> Answer<double> {
         if (x > 1.0 || x < -1.0) return outside_domain("basin_a_process_dbl");
         return std::asin(x);
     }},
    {"batan_a_math_dbl", batan_a_math_dbl, [](double x) -> Answer<double> { return std::atan(x); }},
    {"bceil_a_math_dbl", bceil_a_math_dbl, [](double x) -> Answer<double> { return std::ceil(x); }},
    {"bcos_a_math_dbl", bcos_a_math_dbl, [](double x) -> Answer<double> { return std::cos(x); }},
    {"bcosh_a_math_dbl", bcosh_a_math_dbl,
     [](double x) -> Answer<double> {
         const double value = std::cosh(x);
         if (std::isinf(value)) return overflow("bcosh_a_process_dbl");
         return value;
     }},
    {"bcot_a_math_dbl", bcot_a_math_dbl,
     [](double x) -> Answer<double> {
         if (x == 0.0) return outside_domain("bcot_a_process_dbl");
         return 1.0 / std::tan(x);
     }},
    {"bdegrees_a_math_dbl", bdegrees_a_math_dbl,
     [](double x) -> Answer<double> {
         const double turned = x * 180.0;
         if (std::isinf(turned / kPi)) return overflow("bdegrees_a_process_dbl");
         return turned / kPi;
     }},
    {"bexp_a_math_dbl", bexp_a_math_dbl,
     [](double x) -> Answer<double> {
         const double value = std::exp(x);
         if (std::isinf(value)) return overflow("bexp_a_process_dbl");
         return value;
     }},
    {"bfloor_a_math_dbl", bfloor_a_math_dbl, [](double x) -> Answer<double> { return std::floor(x); }},
    {"bln_a_math_dbl", bln_a_math_dbl,
     [](double x) -> Answer<double> {
         if (x <= 0.0) return outside_domain("bln_a_process_dbl");
         return std::log(x);
     }},
    {"blog10_a_math_dbl", blog10_a_math_dbl,
     [](double x) -> Answer<double> {
         if (x <= 0.0) return outside_domain("blog10_a_process_dbl");
         return std::log10(x);
     }},
    {"bradians_a_math_dbl", bradians_a_math_dbl,
     [](double x) -> Answer<double> {
         const double product = x * kPi;
         return product / 180.0;
     }},
    {"brand_a_math_int", brand_a_math_int,
     [](double x) -> Answer<double> {
         const bool fits = x >= -0x1p63 && x < 0x1p63;
         uint64_t state = fits ? static_cast<uint64_t>(static_cast<int64_t>(x)) % 4294967296 : 0;
         state = (state * 214013 + 2531011) % 4294967296;
         return static_cast<double>(state / 65536 % 32768) / 32767.0;
     }},
    {"bsin_a_math_dbl", bsin_a_math_dbl, [](double x) -> Answer<double> { return std::sin(x); }},
    {"bsinh_a_math_dbl", bsinh_a_math_dbl,
     [](double x) -> Answer<double> {
         const double value = std::sinh(x);
         if (std::isinf(value)) return Answer<double>::error(EC_DATA_OVERFLOW, {"bsinh_a_process_dbl", "self"});
         return value;
     }},
    {"bsqrt_a_math_dbl", bsqrt_a_math_dbl,
     [](double x) -> Answer<double> {
         if (x < 0.0) return outside_domain("bsqrt_a_process_dbl");
         return std::sqrt(x);
     }},
    {"btan_a_math_dbl", btan_a_math_dbl, [](double x) -> Answer<double> { return std::tan(x); }},
    {"btanh_a_math_dbl", btanh_a_math_dbl, [](double x) -> Answer<double> { return std::tanh(x); }},
};

class FloatingDifferential : public testing::TestWithParam<OneDouble> {};

TEST_P(FloatingDifferential, AgreesWithThePlainLoop) {
    Differential<double, double> rows;
    rows.draw<0>(turning);
    rows.add("a", GetParam().name, GetParam().function);
    EXPECT_EQ(rows.run(GetParam().tell), "");
}

INSTANTIATE_TEST_SUITE_P(OneDouble, FloatingDifferential, testing::ValuesIn(kFunctions),
                         [](const auto& each) { return std::string(each.param.name); });

TEST(FloatingDifferentialOfInt, Sign) {
    Differential<int32_t, double> sign;
    sign.add("a", "bsign_a_math_dbl", bsign_a_math_dbl);
    EXPECT_EQ(sign.run([](double x) -> int32_t { return x > 0.0 ? 1 : x < 0.0 ? -1 : 0; }), "");
}

// ---- Two numbers ------------------------------------------------------------------------------------------------------------

using TwoDoubles = Differential<double, double, double>;

TEST(TwoDoublesDifferential, Atan2) {
    TwoDoubles rows;
    rows.draw<0>(turning);
    rows.draw<1>(turning);
    rows.add("aa", "batan2_aa_math_dbl", batan2_aa_math_dbl);
    rows.add("av", "batan2_av_do_math_dbl", batan2_av_do_math_dbl);
    rows.add("va", "batan2_va_do_math_dbl", batan2_va_do_math_dbl);
    EXPECT_EQ(rows.run([](double x, double y) -> Answer<double> {
        if (x == 0.0 && y == 0.0) return outside_domain("batan2_aa_process_dbl");
        return std::atan2(x, y);
    }),
              "");
}

TEST(TwoDoublesDifferential, Log) {
    TwoDoubles rows;
    const auto often_positive = [](Random& random) {
        const double x = turning(random);
        return random.chance(90) ? std::fabs(x) : x;
    };
    rows.draw<0>(often_positive);
    rows.draw<1>(often_positive);
    rows.add("aa", "blog_aa_math_dbl", blog_aa_math_dbl);
    rows.add("av", "blog_av_do_math_dbl", blog_av_do_math_dbl);
    rows.add("va", "blog_va_do_math_dbl", blog_va_do_math_dbl);
    EXPECT_EQ(rows.run([](double base, double x) -> Answer<double> {
        if (base <= 0.0 || x <= 0.0 || base == 1.0) return outside_domain("blog_aa_process_dbl");
        return std::log(x) / std::log(base);
    }),
              "");
}

TEST(TwoDoublesDifferential, Power) {
    TwoDoubles rows;
    rows.draw<0>(turning);
    rows.draw<1>(turning);
    rows.add("aa", "bpower_aa_math_dbl", bpower_aa_math_dbl);
    rows.add("av", "bpower_av_do_math_dbl", bpower_av_do_math_dbl);
    rows.add("va", "bpower_va_do_math_dbl", bpower_va_do_math_dbl);
    EXPECT_EQ(rows.run([](double x, double y) -> Answer<double> {
        if (x == 0.0 && y < 0.0) return outside_domain("bpower_aa_process_dbl");
        if (x < 0.0 && std::ceil(y) != y) return outside_domain("bpower_aa_process_dbl");
        const double value = std::pow(x, y);
        if (std::isinf(value)) return overflow("bpower_aa_process_dbl");
        return value;
    }),
              "");
}

TEST(TwoDoublesDifferential, Mod) {
    TwoDoubles rows;
    rows.draw<0>(turning);
    rows.draw<1>(turning);
    rows.add("aa", "bmod_aa_math_dbl", bmod_aa_math_dbl);
    rows.add("av", "bmod_av_do_math_dbl", bmod_av_do_math_dbl);
    EXPECT_EQ(rows.run([](double x, double y) { return y == 0.0 ? x : std::fmod(x, y); }), "");
}

// The remainder as it is told step by step, over arguments of any size.
TEST(TwoDoublesDifferential, Remainder) {
    TwoDoubles rows;
    rows.rules.valid = Rules::Valid::kept;
    rows.draw<0>(turning);
    rows.draw<1>(turning);
    rows.add("aa", "bremainder_aa", bremainder_aa);
    rows.rules.constants = Rules::Constants::rows;
    rows.rules.flag_reads_constants = false;
    rows.add("av", "bremainder_av", bremainder_av);
    rows.add("va", "bremainder_va", bremainder_va);
    EXPECT_EQ(rows.run([](double x, double y) -> Answer<double> {
        if (y == 0.0) return Answer<double>::error(EC_INVALID_ARGUMENT, {"self"});
        const double q = x / y;
        double n = std::trunc(q);
        const double f = std::isinf(q) ? 0.0 : q - n;
        // Halves have a quotient below 2^52, whose last digit tells whether it is odd.
        const bool odd = std::fabs(f) == 0.5 && std::fmod(std::fabs(n), 2.0) == 1.0;
        if (f < -0.5 || (f < 0.0 && odd)) {
            n -= 1.0;
        } else if (q > 0.0 && (f > 0.5 || odd)) {
            n += 1.0;
        }
        const double product = n * y;
        const double r = x - product;
        return r == 0.0 && x < 0.0 ? -r : r;
    }),
              "");
}

}  // namespace
