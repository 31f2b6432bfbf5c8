// The functions of two numbers: atan2, log, mod, power and remainder of doubles, mod of bigints.
//
// Domain tests let a NaN pass, as those of the functions of one double do. mod by 0 gives its first argument and never fails;
// remainder by 0 fails.
#include <cmath>
#include <cstdint>
#include <limits>

#include "bop/bifun_math/mod_values.h"
#include "bop/frame/export.h"
#include "qzbifun/math.h"

namespace bifun {
namespace {

constexpr Rules kRules{.flag = FlagStore::kBeforeRowsIfConstant};

Code fail_with_zero(Row out, int32_t code, const char* worker) {
    (void)out.put(0.0);
    return out.fail(code, worker);
}

// All forms report under the worker's name of the form with two vectors.
struct Atan2 {
    static constexpr Rules rules = kRules;
    static Code row(Row out, double x, double y) {
        if (x == 0.0 && y == 0.0) return fail_with_zero(out, EC_INVALID_ARGUMENT, "batan2_aa_process_dbl");
        return out.put(std::atan2(x, y));
    }
};

struct Log {
    static constexpr Rules rules = kRules;
    static Code row(Row out, double base, double x) {
        return outside_domain(base, x) ? refuse(out) : out.put(std::log(x) / std::log(base));
    }
    static bool outside_domain(double base, double x) { return base <= 0.0 || x <= 0.0 || base == 1.0; }
    static Code refuse(Row out) { return fail_with_zero(out, EC_INVALID_ARGUMENT, "blog_aa_process_dbl"); }
};

// The logarithm of a constant base is the same in every row.
struct LogOfConstantBase {
    static constexpr Rules rules = kRules;
    double base_logarithm = 0;

    Start prepare(const Call&, bdta3_scalar* base, bdta3_col*) {
        base_logarithm = std::log(reinterpret_cast<const bdta3_double*>(base)->value);
        return Start::rows();
    }
    Code row(Row out, double base, double x) const {
        return Log::outside_domain(base, x) ? Log::refuse(out) : out.put(std::log(x) / base_logarithm);
    }
};

struct Power {
    static constexpr Rules rules = kRules;
    static Code row(Row out, double x, double y) {
        constexpr const char* kWorker = "bpower_aa_process_dbl";
        const bool outside_domain = (x == 0.0 && y < 0.0) || (x < 0.0 && std::ceil(y) != y);
        if (outside_domain) return fail_with_zero(out, EC_INVALID_ARGUMENT, kWorker);
        const double power = std::pow(x, y);
        if (std::isinf(power)) return fail_with_zero(out, EC_DATA_OVERFLOW, kWorker);
        return out.put(power);
    }
};

struct ModDouble {
    static constexpr Rules rules = kRules;
    static void block(double* out, uint32_t n, const double* x, const double* y) { mod_values(out, n, x, y); }
};

// By 0 it is x that is stored, with the flag it came with: a NULL constant gives NULL rows there, and only there.
struct ModOfNullConstant {
    static constexpr Rules rules = kRules;
    static Code row(Row out, double x, double y) {
        if (y == 0.0) return out.put_null(x);
        double rest = 0;
        mod_values(&rest, 1, &x, &y);
        return out.put(rest);
    }
};

struct ModOfConstant {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_scalar* x, bdta3_col* y) {
        if (x->has_value == 0) return run<ModOfNullConstant>(call, result, nrows, x, y);
        return run<ModDouble>(call, result, nrows, x, y);
    }
};

struct ModInt64 {
    static constexpr Rules rules = kRules;
    static void block(int64_t* out, uint32_t n, const int64_t* x, const int64_t* y) { mod_values(out, n, x, y); }
};

// The remainder to the nearest quotient, halves to the even one; a remainder of zero takes the sign of x. y is not tested.
// Without a branch: a quotient that is infinite or NaN has a NaN as its fraction, which no comparison holds of.
double remainder_of(double x, double y) {
    const double quotient = x / y;
    const double whole = std::trunc(quotient);
    const double fraction = quotient - whole;
    const double half = whole * 0.5;
    const double to_even = std::trunc(half) != half ? 0.5 : 1.0;  // the least fraction that goes to the next quotient
    const double magnitude = std::fabs(fraction);
    const double step = magnitude > 0.5 ? 1.0 : magnitude == to_even ? 1.0 : 0.0;
    const double nearest = whole + std::copysign(step, fraction < 0.0 ? -1.0 : step - 0.5);  // -0.0 leaves a quotient of -0.0
    const double rest = x - nearest * y;
    const double turned = x < 0.0 ? -rest : rest;
    return rest == 0.0 ? turned : rest;
}

struct Remainder {
    static constexpr Rules rules{
        .constants = ConstantNull::kRows,  // a NULL constant makes NULL rows
        .flag = FlagStore::kBeforeRows,
        .store = Store::kKeep,
    };
    static double value(double x, double y) { return remainder_of(x, y); }
    static bool refuses(double, double y) { return y == 0.0; }
    static Code refuse(Row, double, double) { return Code{EC_INVALID_ARGUMENT}; }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT double get_remainder(double x, double y) { return remainder_of(x, y); }

BIFUN_EXPORT_2(batan2_aa_math_dbl, Atan2, a, a)
BIFUN_EXPORT_2(batan2_av_do_math_dbl, Atan2, a, v)
BIFUN_EXPORT_2(batan2_va_do_math_dbl, Atan2, v, a)

BIFUN_EXPORT_2(blog_aa_math_dbl, Log, a, a)
BIFUN_EXPORT_2(blog_av_do_math_dbl, Log, a, v)
BIFUN_EXPORT_2(blog_va_do_math_dbl, LogOfConstantBase, v, a)

BIFUN_EXPORT_2(bmod_aa_math_dbl, ModDouble, a, a)
BIFUN_EXPORT_2(bmod_av_do_math_dbl, ModDouble, a, v)
BIFUN_EXPORT_2(bmod_va_do_math_dbl, ModOfConstant, v, a)

BIFUN_EXPORT_2(bmod_aa_math_int64, ModInt64, a, a)
BIFUN_EXPORT_2(bmod_av_do_math_int64, ModInt64, a, v)
BIFUN_EXPORT_2(bmod_va_do_math_int64, ModInt64, v, a)

BIFUN_EXPORT_2(bpower_aa_math_dbl, Power, a, a)
BIFUN_EXPORT_2(bpower_av_do_math_dbl, Power, a, v)
BIFUN_EXPORT_2(bpower_va_do_math_dbl, Power, v, a)

BIFUN_EXPORT_2(bremainder_aa, Remainder, a, a)
BIFUN_EXPORT_2(bremainder_av, Remainder, a, v)
BIFUN_EXPORT_2(bremainder_va, Remainder, v, a)
