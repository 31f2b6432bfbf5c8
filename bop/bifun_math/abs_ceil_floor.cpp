// abs(x), ceil(x) and floor(x) of integers and decimals.
//
// ceil and floor of a decimal go by the scale it is stored with and not by its digits: a fraction that is stored counts as one,
// though it be zero. ceil of 2.00 with scale 2 is 3, and floor of -2.00 is -3.
#include <cstdint>
#include <limits>

#include "bop/frame/export.h"
#include "qzbifun/math.h"
#include "qzhost/decimal.h"

namespace bifun {
namespace {

struct AbsInt64 {
    static constexpr Rules rules{};
    static bool refuses(int64_t x) { return x == std::numeric_limits<int64_t>::min(); }
    static int64_t value(int64_t x) {
        const uint64_t bits = static_cast<uint64_t>(x);
        return static_cast<int64_t>(x < 0 ? 0 - bits : bits);  // unsigned: the refused value passes here too
    }
    static Code refuse(Row out, int64_t) { return out.fail(EC_DATA_OVERFLOW, "babs_a_process_int"); }
};

struct AbsDecimal {
    static constexpr Rules rules{};
    static constexpr bool total = true;
    static void row(xdec& out, const xdec& x) { xdec_abs(&x, &out); }
};

// Ceil and floor of integers.
template <class T>
struct Same {
    static constexpr Rules rules{};
    static constexpr bool total = true;
    static T row(T x) { return x; }
};

// Ceil and floor of decimals.
template <auto kService>
struct Outwards {
    static constexpr Rules rules{};
    static Code row(Row out, const xdec& x) {
        kService(&x, &out.slot<xdec>());
        return out.stored();
    }
};

using CeilDecimal = Outwards<&xdec_ceil_by_scale>;
using FloorDecimal = Outwards<&xdec_floor_by_scale>;

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_1(babs_a_math_int, AbsInt64, a)
BIFUN_EXPORT_1(babs_a_math_dec, AbsDecimal, a)

BIFUN_EXPORT_1(bceil_a_math_int, Same<int32_t>, a)
BIFUN_EXPORT_1(bceil_a_math_int64, Same<int64_t>, a)
BIFUN_EXPORT_1(bceil_a_math_dec, CeilDecimal, a)

BIFUN_EXPORT_1(bfloor_a_math_int, Same<int32_t>, a)
BIFUN_EXPORT_1(bfloor_a_math_bigint, Same<int64_t>, a)
BIFUN_EXPORT_1(bfloor_a_math_dec, FloorDecimal, a)
