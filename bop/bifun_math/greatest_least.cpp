// greatest(x, y) and least(x, y) of doubles, bigints and decimals.
//
// Doubles: every comparison with a NaN is false, so an unordered pair gives y. Of equal values y's bytes are stored, which
// shows for 0.0 and -0.0 and for decimals of different scale.
#include "bop/frame/export.h"
#include "qzbifun/math.h"
#include "qzhost/decimal.h"

namespace bifun {
namespace {

struct GreatestDouble {
    static constexpr Rules rules{};
    static constexpr bool total = true;
    static double row(double x, double y) { return x > y ? x : y; }
};

struct LeastDouble {
    static constexpr Rules rules{};
    static constexpr bool total = true;
    static double row(double x, double y) { return y > x ? x : y; }
};

// Bigints and decimals go straight into the row: its valid byte stays as the arguments' bytes combine.
constexpr Rules kStraight{.store = Store::kKeep};

struct GreatestInt64 {
    static constexpr Rules rules = kStraight;
    static constexpr bool total = true;
    static int64_t row(int64_t x, int64_t y) { return x < y ? y : x; }
};

struct LeastInt64 {
    static constexpr Rules rules = kStraight;
    static constexpr bool total = true;
    static int64_t row(int64_t x, int64_t y) { return x < y ? x : y; }
};

struct GreatestDecimal {
    static constexpr Rules rules = kStraight;
    static constexpr bool total = true;
    static void row(xdec& out, const xdec& x, const xdec& y) { out = xdec_cmp(&x, &y) > 0 ? x : y; }
};

struct LeastDecimal {
    static constexpr Rules rules = kStraight;
    static constexpr bool total = true;
    static void row(xdec& out, const xdec& x, const xdec& y) { out = xdec_cmp(&x, &y) < 0 ? x : y; }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_2(bgreatest_aa_math_dbl, GreatestDouble, a, a)
BIFUN_EXPORT_2(bgreatest_av_do_math_dbl, GreatestDouble, a, v)
BIFUN_EXPORT_2(bgreatest_va_do_math_dbl, GreatestDouble, v, a)
BIFUN_EXPORT_2(bleast_aa_math, LeastDouble, a, a)
BIFUN_EXPORT_2(bleast_av_do_math, LeastDouble, a, v)
BIFUN_EXPORT_2(bleast_va_do_math, LeastDouble, v, a)

BIFUN_EXPORT_2(bgreatest_aa_math_bigint, GreatestInt64, a, a)
BIFUN_EXPORT_2(bgreatest_av_do_math_bigint, GreatestInt64, a, v)
BIFUN_EXPORT_2(bgreatest_va_do_math_bigint, GreatestInt64, v, a)
BIFUN_EXPORT_2(bleast_aa_math_bigint, LeastInt64, a, a)
BIFUN_EXPORT_2(bleast_av_bi_math_bigint, LeastInt64, a, v)
BIFUN_EXPORT_2(bleast_va_bi_math_bigint, LeastInt64, v, a)

BIFUN_EXPORT_2(bgreatest_aa_math_dec, GreatestDecimal, a, a)
BIFUN_EXPORT_2(bgreatest_av_do_math_dec, GreatestDecimal, a, v)
BIFUN_EXPORT_2(bgreatest_va_do_math_dec, GreatestDecimal, v, a)
BIFUN_EXPORT_2(bleast_aa_math_dec, LeastDecimal, a, a)
BIFUN_EXPORT_2(bleast_av_do_math_dec, LeastDecimal, a, v)
BIFUN_EXPORT_2(bleast_va_do_math_dec, LeastDecimal, v, a)
