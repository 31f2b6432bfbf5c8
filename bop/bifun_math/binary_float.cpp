// to_binary_float(x) and to_binary_double(x) of decimals, doubles and floats; nanvl(x, y) and lnnvl(condition).
//
// Whether infinities and NaN may pass is a parameter of the host, asked for each row. nanvl gives x, a NaN too; all it adds is
// that a NULL y makes the row NULL. lnnvl never gives NULL: a NULL condition is decided by the element that stands in its row.
#include <cmath>

#include "bop/frame/export.h"
#include "qzbifun/math.h"
#include "qzhost/decimal.h"
#include "qzhost/parameters.h"

namespace bifun {
namespace {

constexpr Rules kConversion{.flag = FlagStore::kBeforeRows, .store = Store::kKeep};

bool specials_allowed() { return ini_get_value(0, FLOAT_SPECIALS_ALLOWED) != 0; }

double to_double(double x) { return x; }
double to_double(float x) { return x; }
double to_double(const xdec& x) {
    int32_t code = 0;
    return xdec_get_double(&x, &code, 0);
}

// The overflow test is that of the narrower of the two types.
template <class To, class From, auto kOverflow>
struct ToBinary {
    static constexpr Rules rules = kConversion;
    static Code row(Row out, const From& x) {
        const double value = to_double(x);
        if (!specials_allowed()) {
            if (const Code code{kOverflow(value)}; code.failed()) return code;
            if (std::isnan(value)) return Code{EC_DATA_OVERFLOW};
        }
        out.slot<To>() = static_cast<To>(value);
        return kOk;
    }
};

struct DoubleFromDecimal {
    static constexpr Rules rules = kConversion;
    static Code row(Row out, const xdec& x) {
        Code code;
        const double value = xdec_get_double(&x, &code.value, specials_allowed() ? 0 : 1);
        if (code.failed()) return code;
        out.slot<double>() = value;
        return kOk;
    }
};

// Moved as bits, so that every NaN stays the NaN it is.
struct First {
    static constexpr Rules rules{.constants = ConstantNull::kRows, .store = Store::kKeep};
    static constexpr bool total = true;
    static int64_t row(int64_t x, int64_t) { return x; }
};

struct IsNotTrue {
    static constexpr Rules rules{.row_null = RowNull::kNever};
    static constexpr bool total = true;
    static int32_t row(int32_t condition) { return condition != 1; }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

using FloatFromDecimal = ToBinary<float, xdec, &ntype_is_float_overflow>;
using FloatFromDouble = ToBinary<float, double, &ntype_is_float_overflow>;
using FloatFromFloat = ToBinary<float, float, &ntype_is_float_overflow>;
using DoubleFromDouble = ToBinary<double, double, &ntype_is_double_overflow>;
using DoubleFromFloat = ToBinary<double, float, &ntype_is_float_overflow>;

BIFUN_EXPORT_1(bto_binary_float_number_a, FloatFromDecimal, a)
BIFUN_EXPORT_1(bto_binary_float_d_a, FloatFromDouble, a)
BIFUN_EXPORT_1(bto_binary_float_f_a, FloatFromFloat, a)
BIFUN_EXPORT_1(bto_binary_double_number_a, DoubleFromDecimal, a)
BIFUN_EXPORT_1(bto_binary_double_d_a, DoubleFromDouble, a)
BIFUN_EXPORT_1(bto_binary_double_f_a, DoubleFromFloat, a)

BIFUN_EXPORT_2(bnanvl_aa, First, a, a)
BIFUN_EXPORT_2(bnanvl_av, First, a, v)
BIFUN_EXPORT_2(bnanvl_va, First, v, a)

BIFUN_EXPORT_1(blnnvl_a_bool, IsNotTrue, a)
