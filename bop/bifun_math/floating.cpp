// The functions of one double: abs, acos, asin, atan, ceil, cos, cosh, cot, degrees, exp, floor, ln, log10, radians, rand,
// sign, sin, sinh, sqrt, tan, tanh.
//
// Every domain test is written so that an unordered comparison is false: a NaN passes it and goes on to the computation. A row
// outside its function's domain, or whose result overflows, holds 0.0 when the call returns; only sinh leaves the row as it
// was.
#include <cmath>
#include <cstdint>
#include <limits>

#include "bop/bifun_math/infinite.h"
#include "bop/bifun_math/random.h"
#include "bop/frame/export.h"
#include "qzbifun/math.h"

namespace bifun {
namespace {

// Pi to the digits that degrees and radians have always had. Its double is not the one closest to pi.
constexpr double kPi = 3.14159265358979;

constexpr Rules kRules{};

// ---- Nothing to decide ----------------------------------------------------------------------------------------------------

struct AbsDouble {
    static constexpr Rules rules = kRules;
    static constexpr bool total = true;
    static double row(double x) { return x < 0.0 ? x * -1.0 : x; }  // -0.0 is not below 0.0 and stays
};

struct CeilDouble {
    static constexpr Rules rules = kRules;
    static constexpr bool total = true;
    static double row(double x) { return std::ceil(x); }
};

struct FloorDouble {
    static constexpr Rules rules = kRules;
    static constexpr bool total = true;
    static double row(double x) { return std::floor(x); }
};

struct Radians {
    static constexpr Rules rules = kRules;
    static constexpr bool total = true;
    static double row(double x) { return x * kPi / 180.0; }
};

struct Sign {
    static constexpr Rules rules = kRules;
    static constexpr bool total = true;
    static int32_t row(double x) { return (x > 0.0) - (x < 0.0); }
};

struct Rand {
    static constexpr Rules rules = kRules;
    static constexpr bool total = true;
    static double row(double x) { return random_number(x); }
};

// One computation of the mathematics library. kCompute is a function of its own, since the library's are overloaded.
template <double (*kCompute)(double)>
struct Computed {
    static constexpr Rules rules = kRules;
    static double row(double x) { return kCompute(x); }
};

double atan_of(double x) { return std::atan(x); }
double cos_of(double x) { return std::cos(x); }
double sin_of(double x) { return std::sin(x); }
double tan_of(double x) { return std::tan(x); }
double tanh_of(double x) { return std::tanh(x); }

// ---- Outside the domain ---------------------------------------------------------------------------------------------------

Code outside_domain(Row out, const char* worker) {
    (void)out.put(0.0);
    return out.fail(EC_INVALID_ARGUMENT, worker);
}

struct Sqrt {
    static constexpr Rules rules = kRules;
    static bool refuses(double x) { return x < 0.0; }
    static double value(double x) { return std::sqrt(x); }
    static Code refuse(Row out, double) { return outside_domain(out, "bsqrt_a_process_dbl"); }
};

struct Acos {
    static constexpr Rules rules = kRules;
    static Code row(Row out, double x) {
        if (x > 1.0 || x < -1.0) return outside_domain(out, "bacos_a_process_dbl");
        return out.put(std::acos(x));
    }
};

struct Asin {
    static constexpr Rules rules = kRules;
    static Code row(Row out, double x) {
        if (x > 1.0 || x < -1.0) return outside_domain(out, "basin_a_process_dbl");
        return out.put(std::asin(x));
    }
};

struct Cot {
    static constexpr Rules rules = kRules;
    static Code row(Row out, double x) {
        if (x == 0.0) return outside_domain(out, "bcot_a_process_dbl");
        return out.put(1.0 / std::tan(x));
    }
};

struct Ln {
    static constexpr Rules rules = kRules;
    static Code row(Row out, double x) {
        if (x <= 0.0) return outside_domain(out, "bln_a_process_dbl");
        return out.put(std::log(x));
    }
};

struct Log10 {
    static constexpr Rules rules = kRules;
    static Code row(Row out, double x) {
        if (x <= 0.0) return outside_domain(out, "blog10_a_process_dbl");
        return out.put(std::log10(x));
    }
};

// ---- Overflow -------------------------------------------------------------------------------------------------------------

Code overflow(Row out, const char* worker) {
    (void)out.put(0.0);
    return out.fail(EC_DATA_OVERFLOW, worker);
}

struct Degrees {
    static constexpr Rules rules = kRules;
    static double value(double x) { return x * 180.0 / kPi; }
    static bool refuses(double x) { return is_infinite(x * 180.0); }  // the quotient is the smaller
    static Code refuse(Row out, double) { return overflow(out, "bdegrees_a_process_dbl"); }
};

struct Cosh {
    static constexpr Rules rules = kRules;
    static Code row(Row out, double x) {
        const double result = std::cosh(x);
        if (ntype_is_double_overflow(result) != 0) return overflow(out, "bcosh_a_process_dbl");
        return out.put(result);
    }
};

struct Exp {
    static constexpr Rules rules = kRules;
    static Code row(Row out, double x) {
        const double result = std::exp(x);
        if (is_infinite(result)) return overflow(out, "bexp_a_process_dbl");
        return out.put(result);
    }
};

struct Sinh {
    static constexpr Rules rules = kRules;
    static Code row(Row out, double x) {
        const double result = std::sinh(x);
        if (std::isinf(result)) return out.fail(EC_DATA_OVERFLOW, "bsinh_a_process_dbl");
        return out.put(result);
    }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_1(babs_a_math_dbl, AbsDouble, a)
BIFUN_EXPORT_1(bacos_a_math_dbl, Acos, a)
BIFUN_EXPORT_1(basin_a_math_dbl, Asin, a)
BIFUN_EXPORT_1(batan_a_math_dbl, Computed<atan_of>, a)
BIFUN_EXPORT_1(bceil_a_math_dbl, CeilDouble, a)
BIFUN_EXPORT_1(bcos_a_math_dbl, Computed<cos_of>, a)
BIFUN_EXPORT_1(bcosh_a_math_dbl, Cosh, a)
BIFUN_EXPORT_1(bcot_a_math_dbl, Cot, a)
BIFUN_EXPORT_1(bdegrees_a_math_dbl, Degrees, a)
BIFUN_EXPORT_1(bexp_a_math_dbl, Exp, a)
BIFUN_EXPORT_1(bfloor_a_math_dbl, FloorDouble, a)
BIFUN_EXPORT_1(bln_a_math_dbl, Ln, a)
BIFUN_EXPORT_1(blog10_a_math_dbl, Log10, a)
BIFUN_EXPORT_1(bradians_a_math_dbl, Radians, a)
BIFUN_EXPORT_1(brand_a_math_int, Rand, a)
BIFUN_EXPORT_1(bsign_a_math_dbl, Sign, a)
BIFUN_EXPORT_1(bsin_a_math_dbl, Computed<sin_of>, a)
BIFUN_EXPORT_1(bsinh_a_math_dbl, Sinh, a)
BIFUN_EXPORT_1(bsqrt_a_math_dbl, Sqrt, a)
BIFUN_EXPORT_1(btan_a_math_dbl, Computed<tan_of>, a)
BIFUN_EXPORT_1(btanh_a_math_dbl, Computed<tanh_of>, a)
