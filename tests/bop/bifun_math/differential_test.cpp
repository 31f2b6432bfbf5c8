// Numeric and conditional functions, all forms, against plain tellings of their rows.
#include "tests/support/differential.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "qzbifun/codes.h"
#include "qzbifun/qzbifun.h"
#include "qzhost/decimal.h"

namespace {

using support::Answer;
using support::Differential;
using support::Rules;

TEST(NumericDifferential, AbsOfBigints) {
    Differential<int64_t, int64_t> abs;
    abs.add("a", "babs_a_math_int", babs_a_math_int);
    EXPECT_EQ(abs.run([](int64_t x) -> Answer<int64_t> {
        if (x == INT64_MIN) return Answer<int64_t>::error(EC_DATA_OVERFLOW, {"babs_a_process_int", "self"});
        return x < 0 ? -x : x;
    }),
              "");
}

TEST(NumericDifferential, GreatestAndLeast) {
    Differential<double, double, double> greatest;
    greatest.add("aa", "bgreatest_aa_math_dbl", bgreatest_aa_math_dbl);
    greatest.add("av", "bgreatest_av_do_math_dbl", bgreatest_av_do_math_dbl);
    greatest.add("va", "bgreatest_va_do_math_dbl", bgreatest_va_do_math_dbl);
    EXPECT_EQ(greatest.run([](double x, double y) { return x > y ? x : y; }), "");
    Differential<double, double, double> least;
    least.add("aa", "bleast_aa_math", bleast_aa_math);
    least.add("av", "bleast_av_do_math", bleast_av_do_math);
    least.add("va", "bleast_va_do_math", bleast_va_do_math);
    EXPECT_EQ(least.run([](double x, double y) { return y > x ? x : y; }), "");
    Differential<int64_t, int64_t, int64_t> bigint;
    bigint.rules.valid = Rules::Valid::kept;
    bigint.add("aa", "bgreatest_aa_math_bigint", bgreatest_aa_math_bigint);
    bigint.add("av", "bgreatest_av_do_math_bigint", bgreatest_av_do_math_bigint);
    bigint.add("va", "bgreatest_va_do_math_bigint", bgreatest_va_do_math_bigint);
    EXPECT_EQ(bigint.run([](int64_t x, int64_t y) { return x < y ? y : x; }), "");
    Differential<xdec, xdec, xdec> decimal;
    decimal.rules.valid = Rules::Valid::kept;
    decimal.add("aa", "bleast_aa_math_dec", bleast_aa_math_dec);
    decimal.add("av", "bleast_av_do_math_dec", bleast_av_do_math_dec);
    decimal.add("va", "bleast_va_do_math_dec", bleast_va_do_math_dec);
    EXPECT_EQ(decimal.run([](const xdec& x, const xdec& y) { return xdec_cmp(&x, &y) < 0 ? x : y; }), "");
}

TEST(NumericDifferential, ModOfBigints) {
    Differential<int64_t, int64_t, int64_t> mod;
    mod.add("aa", "bmod_aa_math_int64", bmod_aa_math_int64);
    mod.add("av", "bmod_av_do_math_int64", bmod_av_do_math_int64);
    mod.add("va", "bmod_va_do_math_int64", bmod_va_do_math_int64);
    EXPECT_EQ(mod.run([](int64_t x, int64_t y) -> int64_t { return y == 0 ? x : y == -1 ? 0 : x % y; }), "");
}

TEST(NumericDifferential, Remainder) {
    Differential<double, double, double> remainder;
    remainder.rules.valid = Rules::Valid::kept;
    remainder.add("aa", "bremainder_aa", bremainder_aa);
    remainder.rules.constants = Rules::Constants::rows;
    remainder.rules.flag_reads_constants = false;
    remainder.add("av", "bremainder_av", bremainder_av);
    remainder.add("va", "bremainder_va", bremainder_va);
    // Small whole multiples of a quarter, where the nearest whole quotient is exact.
    const auto quarter = [](support::Random& random) { return (static_cast<int>(random.below(401)) - 200) / 4.0; };
    remainder.draw<0>(quarter);
    remainder.draw<1>(quarter);
    EXPECT_EQ(remainder.run([](double x, double y) -> Answer<double> {
        if (y == 0.0) return Answer<double>::error(EC_INVALID_ARGUMENT, {"self"});
        const double r = std::remainder(x, y);
        return r == 0.0 ? std::copysign(0.0, x < 0.0 ? -1.0 : 1.0) : r;
    }),
              "");
}

TEST(NumericDifferential, FloatsOfDoubles) {
    Differential<float, double> narrow;
    narrow.rules.valid = Rules::Valid::kept;
    narrow.add("a", "bto_binary_float_d_a", bto_binary_float_d_a);
    EXPECT_EQ(narrow.run([](double x) -> Answer<float> {
        if (std::isnan(x) || std::isinf(static_cast<float>(std::clamp(x, -1e39, 1e39)))) {
            return Answer<float>::error(EC_DATA_OVERFLOW, {"self"});
        }
        return static_cast<float>(x);
    }),
              "");
}

template <class T>
std::string nvl_against_its_telling(const char* aa_name, bop_fn_aa* aa, const char* av_name, bop_fn_av* av) {
    Differential<T, T, T> nvl;
    nvl.rules.null_evaluated = true;
    nvl.rules.flag = Rules::Flag::copy;
    nvl.rules.copied_argument = 1;
    nvl.rules.constants = Rules::Constants::own;
    nvl.rules.valid = Rules::Valid::taken;
    nvl.add("aa", aa_name, aa);
    nvl.add("av", av_name, av);
    using Maybe = std::optional<T>;
    return nvl.run([](const Maybe& a, const Maybe& b) {
        return a.has_value() ? Answer<T>(*a) : b.has_value() ? Answer<T>(*b) : Answer<T>::null();
    });
}

TEST(ConditionalDifferential, Nvl) {
    EXPECT_EQ(nvl_against_its_telling<int32_t>("bnvl_int_aa", bnvl_int_aa, "bnvl_int_av", bnvl_int_av), "");
    EXPECT_EQ(nvl_against_its_telling<int64_t>("bnvl_int64_aa", bnvl_int64_aa, "bnvl_int64_av", bnvl_int64_av), "");
    EXPECT_EQ(nvl_against_its_telling<double>("bnvl_double_aa", bnvl_double_aa, "bnvl_double_av", bnvl_double_av), "");
    EXPECT_EQ(nvl_against_its_telling<xdec>("bnvl_dec_aa", bnvl_dec_aa, "bnvl_dec_av", bnvl_dec_av), "");
    EXPECT_EQ(nvl_against_its_telling<qztime>("bnvl_date_aa", bnvl_date_aa, "bnvl_date_av", bnvl_date_av), "");
}

}  // namespace
