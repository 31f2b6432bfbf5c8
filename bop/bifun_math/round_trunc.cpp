// round(x, n) and trunc(x, n) of doubles and decimals, and trunc of numbers that stand as text.
//
// A name's last part is no guide to its types: bround_def_a_math_dbl and bround_dec_*_math_dbl work on decimals, btrunc_*_math
// reads text where no type is told.
#include <cmath>
#include <cstdint>

#include "bop/bifun_math/round_double.h"
#include "bop/bifun_math/trunc_text.h"
#include "bop/frame/export.h"
#include "qzbifun/math.h"
#include "qzhost/decimal.h"

namespace bifun {
namespace {

constexpr Rules kRules{.flag = FlagStore::kBeforeRowsIfConstant};

// ---- Doubles --------------------------------------------------------------------------------------------------------------

// What tells the functions apart that round or truncate a double at a place.
struct Rounds {
    static constexpr Rules rules = kRules;
    static constexpr bool kTruncates = false;
    static constexpr const char* kWorker = "bround_aa_process_dbl";
};

// n must not be NULL; an option that is NULL or zero rounds, any other truncates.
constexpr Rules kWithOption{.constants = ConstantNull::kIgnored, .flag = FlagStore::kBeforeRows};

template <bool kTruncate>
struct WithOption {
    static constexpr Rules rules = kWithOption;
    static constexpr bool kTruncates = kTruncate;
    static constexpr const char* kWorker = "bround_with_opt_avv_process_dbl";
};

template <class Kind>
Code overflow_with_zero(Row out) {
    (void)out.put(0.0);
    return out.fail(EC_DATA_OVERFLOW, Kind::kWorker);
}

template <class Kind>
struct RoundDouble {
    static constexpr Rules rules = Kind::rules;
    static Code row(Row out, double x, int32_t n) {
        return with_rounding(n, Kind::kTruncates, [&](const auto& rounding) {
            return rounding.overflows(x) ? overflow_with_zero<Kind>(out) : out.put(rounding.apply(x));
        });
    }
};

int32_t places_of(const bdta3_scalar* n) { return reinterpret_cast<const bdta3_int*>(n)->value; }

// With a constant n the power of ten is known before the rows. Scaled up, no value overflows.
template <class Kind>
struct RoundFraction {
    static constexpr Rules rules = Kind::rules;
    static constexpr bool total = true;
    PlaceRounding<Way::kFraction> rounding;

    Start prepare(const Call&, bdta3_col*, bdta3_scalar* n) {
        rounding = {places_of(n), Kind::kTruncates};
        return Start::rows();
    }
    double row(double x, int32_t) const { return rounding.apply(x); }
};

template <class Kind>
struct RoundInteger {
    static constexpr Rules rules = Kind::rules;
    PlaceRounding<Way::kInteger> rounding;

    Start prepare(const Call&, bdta3_col*, bdta3_scalar* n) {
        rounding = {places_of(n), Kind::kTruncates};
        return Start::rows();
    }
    bool refuses(double x, int32_t) const { return rounding.overflows(x); }
    double value(double x, int32_t) const { return rounding.apply(x); }
    static Code refuse(Row out, double, int32_t) { return overflow_with_zero<Kind>(out); }
};

template <class Kind>
struct RoundDoubleAt {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* x, bdta3_scalar* n) {
        switch (way_of(places_of(n))) {
            case Way::kFraction:
                return run<RoundFraction<Kind>>(call, result, nrows, x, n);
            case Way::kInteger:
                return run<RoundInteger<Kind>>(call, result, nrows, x, n);
            default:
                return run<RoundDouble<Kind>>(call, result, nrows, x, n);
        }
    }
};

bool option_truncates(const bdta3_scalar* option) {
    const auto* const value = reinterpret_cast<const bdta3_dec*>(option);
    return value->has_value != 0 && value->value.sign != XDEC_SIGN_ZERO;
}

struct RoundDoubleWithOption {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* x, bdta3_scalar* n,
                         bdta3_scalar* option) {
        if (n->has_value == 0) {
            frame::set_all_null(result, nrows);
            return 0;
        }
        if (option_truncates(option)) return RoundDoubleAt<WithOption<true>>::batch(call, result, nrows, x, n);
        return RoundDoubleAt<WithOption<false>>::batch(call, result, nrows, x, n);
    }
};

// The factor is 0.0 for a zero and for NaN, which makes the product a zero of x's sign or NaN.
struct TruncDouble {
    static constexpr Rules rules = kRules;
    static constexpr bool total = true;
    static double row(double x) {
        const double sign = x > 0.0 ? 1.0 : x < 0.0 ? -1.0 : 0.0;
        return std::floor(sign * x) * sign;
    }
};

struct TruncInt64 {
    static constexpr Rules rules = kRules;
    static constexpr bool total = true;
    static int64_t row(int64_t x) { return x; }
};

// ---- Decimals -------------------------------------------------------------------------------------------------------------

// A rounding that overflows leaves what the service left, and is not looked at.
struct RoundDecimal {
    static constexpr Rules rules = kRules;
    static Code row(Row out, const xdec& x, int32_t n) {
        xdec_round(&x, 0, n, &out.slot<xdec>());
        return out.stored();
    }
};

struct RoundDecimalToInteger {
    static constexpr Rules rules{.store = Store::kKeep};
    static Code row(Row out, const xdec& x) {
        xdec_round(&x, 0, 0, &out.slot<xdec>());
        return kOk;
    }
};

struct RoundDecimalWithOption {
    static constexpr Rules rules = kWithOption;
    bool truncates = false;

    Start prepare(const Call&, bdta3_col*, bdta3_scalar* n, bdta3_scalar* option) {
        if (n->has_value == 0) return Start::all_null();
        truncates = option_truncates(option);
        return Start::rows();
    }
    Code row(Row out, const xdec& x, int32_t n, const xdec&) const {
        xdec& result = out.slot<xdec>();
        if (truncates) {
            xdec_trunc_scale_with_pos(&x, n, &result);
            return out.stored();
        }
        const int32_t code = xdec_round(&x, 0, n, &result);
        if (code >= 0) return out.stored();
        xdec_fill_zero(&result);
        (void)out.stored();
        return out.fail(code, "bround_dec_with_opt_avv_process_dec");
    }
};

struct TruncDecimal {
    static constexpr Rules rules = kRules;
    static Code row(Row out, const xdec& x, int32_t n) {
        xdec_trunc_scale_with_pos(&x, n, &out.slot<xdec>());
        return out.stored();
    }
};

// The rows of a NULL constant are computed, and NULL.
struct TruncNullDecimal {
    static constexpr Rules rules = kRules;
    static Code row(Row out, const xdec& x, int32_t n) {
        xdec result;
        xdec_trunc_scale_with_pos(&x, n, &result);
        return out.put_null(result);
    }
};

struct TruncDecimalConstant {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_scalar* x, bdta3_col* n) {
        if (x->has_value == 0) return run<TruncNullDecimal>(call, result, nrows, x, n);
        return run<TruncDecimal>(call, result, nrows, x, n);
    }
};

struct TruncDecimalToInteger {
    static constexpr Rules rules = kRules;
    static Code row(Row out, const xdec& x) {
        xdec_trunc_scale_with_pos(&x, 0, &out.slot<xdec>());
        return out.stored();
    }
};

// ---- Text -----------------------------------------------------------------------------------------------------------------

constexpr Rules kText{.flag = FlagStore::kBeforeRows, .store = Store::kKeep};

struct TruncText {
    static constexpr Rules rules = kText;
    static Code row(Row out, Text text, int32_t n) {
        constexpr const char* kWorker = "btrunc_process_new";
        if (text.len == 0) return text.blank == 0 ? out.set_null() : out.fail(EC_INVALID_ARGUMENT, kWorker);
        double result = 0;
        TruncFailure failed_at = TruncFailure::kNone;
        const Code code = trunc_text(text.bytes, text.len, n, result, failed_at);
        if (code.failed()) {
            if (failed_at == TruncFailure::kHead) (void)out.fail(code.value, "ifun_trunc_head_check");
            if (failed_at == TruncFailure::kScan) (void)out.fail(code.value, "ifun_trunc_escan");
            return out.fail(code.value, kWorker);
        }
        out.slot<double>() = result;
        return kOk;
    }
};

// Takes neither sign nor blank nor exponent.
struct TruncTextConstant {
    static constexpr Rules rules = kText;
    static Code row(Row out, Text text, int32_t n) {
        double result = 0;
        const Code code = trunc_plain_text(text.bytes, text.len, n, result);
        if (code.failed()) return out.fail(code.value, "btrunc_process");
        out.slot<double>() = result;
        return kOk;
    }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_2(bround_aa_math_dbl, RoundDouble<Rounds>, a, a)
BIFUN_EXPORT_2(bround_av_li_math_dbl, RoundDoubleAt<Rounds>, a, v)
BIFUN_EXPORT_2(bround_va_do_math_dbl, RoundDouble<Rounds>, v, a)
BIFUN_EXPORT_3(bround_with_opt_avv_lide_math_dbl, RoundDoubleWithOption, a, v, v)

BIFUN_EXPORT_1(bround_def_a_math_dbl, RoundDecimalToInteger, a)
BIFUN_EXPORT_2(bround_dec_aa_math_dbl, RoundDecimal, a, a)
BIFUN_EXPORT_2(bround_dec_av_li_math_dbl, RoundDecimal, a, v)
BIFUN_EXPORT_2(bround_dec_va_de_math_dbl, RoundDecimal, v, a)
BIFUN_EXPORT_3(bround_dec_with_opt_avv_lide_math_dec, RoundDecimalWithOption, a, v, v)

BIFUN_EXPORT_2(btrunc_aa_math, TruncText, a, a)
BIFUN_EXPORT_2(btrunc_av_li_math, TruncText, a, v)
BIFUN_EXPORT_2(btrunc_va_s_math, TruncTextConstant, v, a)

BIFUN_EXPORT_1(btrunc_def_a_math_dbl, TruncDouble, a)
BIFUN_EXPORT_1(btrunc_int_def_a_math_int, TruncInt64, a)
BIFUN_EXPORT_2(btrunc_dec_aa_math, TruncDecimal, a, a)
BIFUN_EXPORT_2(btrunc_dec_av_li_math, TruncDecimal, a, v)
BIFUN_EXPORT_2(btrunc_dec_va_de_math, TruncDecimalConstant, v, a)
BIFUN_EXPORT_1(btrunc_dec_def_a_math, TruncDecimalToInteger, a)

BIFUN_EXPORT int32_t double_round_with_trunc_flag(double x, int32_t n, int32_t trunc_flag, double* result) {
    return with_rounding(n, trunc_flag != 0, [&](const auto& rounding) {
        *result = rounding.apply(x);
        return rounding.overflows(x) ? EC_DATA_OVERFLOW : 0;
    });
}

BIFUN_EXPORT int32_t ifun_trunc_head_check(qz_env* env, const char* text, uint32_t len, int32_t* has_sign, uint32_t* position) {
    NumberHead head;
    const Code code = check_head(text, len, head);
    *has_sign = head.has_sign ? 1 : 0;
    *position = head.position;
    if (code.failed()) qzerr_stk_push(env, code.value, "ifun_trunc_head_check");
    return code.value;
}

BIFUN_EXPORT int32_t ifun_trunc_escan(qz_env* env, const char* text, uint32_t len, uint32_t start, int32_t* exponent_sign,
                                      int32_t* exponent, uint32_t* point, uint32_t* e) {
    NumberParts parts;
    const Code code = scan_number(text, len, start, parts);
    *exponent_sign = parts.exponent_sign;
    *exponent = parts.exponent;
    if (parts.has_point) *point = parts.point;
    if (parts.has_e) *e = parts.e;
    if (code.failed()) qzerr_stk_push(env, code.value, "ifun_trunc_escan");
    return code.value;
}
