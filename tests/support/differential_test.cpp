// The differential driver against functions with and without a fault.
#include "tests/support/differential.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "qzbifun/codes.h"
#include "qzhost/decimal.h"
#include "qzhost/error.h"
#include "tests/support/test_seed.h"

namespace support {
namespace {

// ---- Larger of two doubles; of a root of a negative one, a failure ----------------------------------------------------------

enum class Fault { none, nan_other_way, zero_other_way, bytes_as_booleans, selection_ignored, flag_from_rows };

double larger_of(double x, double y) { return x > y ? x : y; }

template <Fault kFault>
int32_t larger(bdta3_col* x, bdta3_col* y, bdta3_scalar* constant, bdta3_col* result, uint32_t nrows) {
    bool all = true;
    for (uint32_t i = 0; i < nrows; ++i) {
        const uint32_t p = x->sel != nullptr && kFault != Fault::selection_ignored ? x->sel[i] : i;
        const double a = static_cast<const double*>(x->data->values)[p];
        uint8_t byte = x->data->valid[p];
        double b = 0;
        if (y != nullptr) {
            const uint32_t q = y->sel != nullptr ? y->sel[i] : i;
            b = static_cast<const double*>(y->data->values)[q];
            const uint8_t other = y->data->valid[q];
            byte = kFault == Fault::bytes_as_booleans ? byte && other : static_cast<uint8_t>(byte & other);
        } else {
            b = reinterpret_cast<const bdta3_double*>(constant)->value;
        }
        result->data->valid[i] = byte;
        all = all && byte != 0;
        if (byte == 0) continue;
        double value = larger_of(a, b);
        if (kFault == Fault::nan_other_way && std::isnan(a)) value = a;
        if (kFault == Fault::zero_other_way && a == 0 && b == 0) value = a;
        static_cast<double*>(result->data->values)[i] = value;
        result->data->valid[i] = 1;
    }
    result->all_valid = x->all_valid & (y != nullptr ? y->all_valid : uint32_t{constant->has_value != 0});
    if (kFault == Fault::flag_from_rows) result->all_valid = all;
    return 0;
}

template <Fault kFault>
int32_t larger_aa(qz_env*, rt_memobj*, bdta3_col* x, bdta3_col* y, bdta3_col* result, uint32_t nrows) {
    return larger<kFault>(x, y, nullptr, result, nrows);
}

template <Fault kFault>
int32_t larger_av(qz_env*, rt_memobj*, bdta3_col* x, bdta3_scalar* y, bdta3_col* result, uint32_t nrows) {
    return larger<kFault>(x, nullptr, y, result, nrows);
}

// Few values, so that every pair of them comes up whatever the seed.
double draw_telling(Random& random) {
    constexpr double kTelling[] = {0.0, -0.0, 1.5, -2.0, std::numeric_limits<double>::quiet_NaN()};
    return kTelling[random.below(std::size(kTelling))];
}

template <Fault kFault>
std::string run_larger() {
    Differential<double, double, double> differential;
    differential.draw<0>(draw_telling);
    differential.draw<1>(draw_telling);
    differential.add("aa", "larger_aa", larger_aa<kFault>);
    differential.add("av", "larger_av", larger_av<kFault>);
    return differential.run(larger_of);
}

TEST(Differential, PassesAFunctionThatIsRight) { EXPECT_EQ(run_larger<Fault::none>(), ""); }

TEST(Differential, SeesFaults) {
    EXPECT_NE(run_larger<Fault::nan_other_way>(), "");
    EXPECT_NE(run_larger<Fault::zero_other_way>(), "");
    EXPECT_NE(run_larger<Fault::bytes_as_booleans>(), "");
    EXPECT_NE(run_larger<Fault::selection_ignored>(), "");
    EXPECT_NE(run_larger<Fault::flag_from_rows>(), "");
}

// ---- Failures ---------------------------------------------------------------------------------------------------------------

int32_t root_a(qz_env* env, rt_memobj*, bdta3_col* x, bdta3_col* result, uint32_t nrows) {
    for (uint32_t i = 0; i < nrows; ++i) {
        const uint32_t p = x->sel != nullptr ? x->sel[i] : i;
        const double value = static_cast<const double*>(x->data->values)[p];
        result->data->valid[i] = x->data->valid[p];
        if (x->data->valid[p] == 0) continue;
        result->data->valid[i] = 1;
        static_cast<double*>(result->data->values)[i] = value < 0 ? 0.0 : std::sqrt(value);
        if (value < 0) {
            qzerr_stk_push(env, EC_INVALID_ARGUMENT, "root_process");
            qzerr_stk_push(env, EC_INVALID_ARGUMENT, "root_a");
            return EC_INVALID_ARGUMENT;
        }
    }
    result->all_valid = x->all_valid;
    return 0;
}

TEST(Differential, KnowsFailures) {
    Differential<double, double> differential;
    differential.add("a", "root_a", root_a);
    const auto root = [](const std::vector<std::string>& names, std::optional<double> row) {
        return [=](double x) -> Answer<double> {
            if (x < 0) return Answer<double>::error(EC_INVALID_ARGUMENT, names, row);
            return std::sqrt(x);
        };
    };
    EXPECT_EQ(differential.run(root({"root_process", "self"}, 0.0)), "");
    EXPECT_NE(differential.run(root({"self"}, 0.0)), "");
    EXPECT_NE(differential.run(root({"root_process", "self"}, std::nullopt)), "");
}

// ---- NULL rules of their own ------------------------------------------------------------------------------------------------

int32_t first_av(qz_env*, rt_memobj*, bdta3_col* x, bdta3_scalar* y, bdta3_col* result, uint32_t nrows) {
    const auto* other = reinterpret_cast<const bdta3_dec*>(y);
    result->all_valid = x->all_valid & uint32_t{y->has_value != 0};
    for (uint32_t i = 0; i < nrows; ++i) {
        const uint32_t p = x->sel != nullptr ? x->sel[i] : i;
        const bool present = x->data->valid[p] != 0;
        result->data->valid[i] = present ? x->data->valid[p] : y->has_value != 0;
        static_cast<xdec*>(result->data->values)[i] = present ? static_cast<const xdec*>(x->data->values)[p] : other->value;
    }
    return 0;
}

TEST(Differential, KnowsNullRulesOfTheirOwn) {
    Differential<xdec, xdec, xdec> differential;
    differential.rules.null_evaluated = true;
    differential.rules.constants = Rules::Constants::own;
    differential.rules.valid = Rules::Valid::taken;
    differential.add("av", "first_av", first_av);
    using Maybe = std::optional<xdec>;
    const auto first = [](const Maybe& x, const Maybe& y) -> Answer<xdec> {
        return x.has_value() ? Answer<xdec>(*x) : y.has_value() ? Answer<xdec>(*y) : Answer<xdec>::null();
    };
    EXPECT_EQ(differential.run(first), "");
    EXPECT_NE(differential.run([](const Maybe& x, const Maybe&) -> Answer<xdec> {
        return x.has_value() ? Answer<xdec>(*x) : Answer<xdec>::null();
    }),
              "");
}

// ---- Random values ----------------------------------------------------------------------------------------------------------

TEST(RandomValues, MeetTheEdges) {
    Random random(test_seed());
    bool nan = false, negative_zero = false, infinity = false, subnormal = false, lowest = false;
    for (int i = 0; i < 20000; ++i) {
        const auto x = random_value<double>(random);
        nan |= std::isnan(x);
        negative_zero |= x == 0 && std::signbit(x);
        infinity |= std::isinf(x);
        subnormal |= std::fpclassify(x) == FP_SUBNORMAL;
        lowest |= random_value<int64_t>(random) == INT64_MIN;
        const auto decimal = random_value<xdec>(random);
        ASSERT_NE(xdec_is_canonical(&decimal), 0);
    }
    EXPECT_TRUE(nan && negative_zero && infinity && subnormal && lowest);
}

}  // namespace
}  // namespace support
