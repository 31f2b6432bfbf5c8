// bitand(x, y) of decimals, one of which is a constant.
//
// A decimal has no binary form, so one is made: its integer part in two's complement of 160 bits. Operands of up to 40 integer
// digits fit; longer ones are refused. Non-negative operands below 2^64 skip all that.
//
// The exported pieces hold such a number as 40 hexadecimal digits, one a byte, the least significant first, beside the count of
// digits that the magnitude needs.
#include <array>
#include <cstdint>

#include "bop/frame/export.h"
#include "qzbifun/math.h"
#include "qzhost/decimal.h"

namespace bifun {
namespace {

constexpr uint32_t kMostIntegerDigits = 40;
constexpr uint32_t kHexDigits = BIFUN_HEX_DIGITS;
constexpr uint32_t kDigitsPerWord = 8;
static_assert(kHexDigits == XDEC_BINARY_WORDS * kDigitsPerWord);

// Integer digits by the record's own count; one whose scale is above its digits wraps around and is too long.
bool is_too_long(const xdec& x) { return uint32_t{x.digits} - uint32_t{x.scale} > kMostIntegerDigits; }

// 160 bits, least significant word first.
struct Bits {
    std::array<uint32_t, XDEC_BINARY_WORDS> words{};

    // Two's complement. Its own inverse.
    void negate() {
        uint64_t carry = 1;
        for (uint32_t& word : words) {
            carry += ~word;
            word = static_cast<uint32_t>(carry);
            carry >>= 32;
        }
    }

    // Of the integer part.
    static Code of(const xdec& x, Bits& bits) {
        const Code code{xdec_get_binary(&x, bits.words.data())};
        if (!code.failed() && x.sign == XDEC_SIGN_NEGATIVE) bits.negate();
        return code;
    }

    // The AND is negative where both operands are.
    void to_decimal(bool negative, xdec& result) {
        if (negative) negate();
        xdec_from_binary(&result, negative ? 1 : 0, words.data());
    }
};

Bits operator&(const Bits& x, const Bits& y) {
    Bits both;
    for (size_t i = 0; i < both.words.size(); ++i) both.words[i] = x.words[i] & y.words[i];
    return both;
}

// A failure within the rows is logged and pushed nowhere.
Code logged(int32_t code, int32_t line) {
    elog_try_report_qzerr(code, __FILE__, line);
    return Code{code};
}

struct BitAndRows {
    static constexpr Rules rules{
        .constants = ConstantNull::kIgnored,
        .flag = FlagStore::kBeforeRows,
        .store = Store::kKeep,
        .on_failure = OnFailure::kNothing,
    };

    xdec constant;
    bool is_word = false;  // the constant fits an unsigned 64-bit integer
    uint64_t word = 0;
    Bits bits;

    Start prepare(const Call&, bdta3_col*, bdta3_scalar* scalar) {
        constant = reinterpret_cast<bdta3_dec*>(scalar)->value;
        xdec_trunc_scale(&constant);
        is_word = xdec_in_ulint64(&constant) != 0;
        if (is_word) (void)xdec_get_ulint64(&constant, &word);
        const Code code = Bits::of(constant, bits);
        return code.failed() ? Start::stop(logged(code.value, __LINE__)) : Start::rows();
    }

    Code row(Row out, const xdec& x, const xdec&) const {
        xdec& result = out.slot<xdec>();
        if (!is_word && xdec_cmp(&x, &constant) == 0) {  // x AND x, as it stands
            result = x;
            return kOk;
        }
        if (is_too_long(x)) return logged(EC_DATA_OVERFLOW, __LINE__);
        uint64_t value = 0;
        if (is_word && xdec_get_ulint64(&x, &value) == 0) {
            (void)xdec_from_ulint64(&result, word & value);
            return kOk;
        }
        Bits own;
        if (const Code code = Bits::of(x, own); code.failed()) return logged(code.value, __LINE__);
        (own & bits).to_decimal(x.sign == XDEC_SIGN_NEGATIVE && constant.sign == XDEC_SIGN_NEGATIVE, result);
        return kOk;
    }
};

// Zero with any row is zero, whatever the row holds, however long it is.
struct ZeroRows {
    static constexpr Rules rules = BitAndRows::rules;
    static Code row(Row out, const xdec&, const xdec&) {
        xdec_fill_zero(&out.slot<xdec>());
        return kOk;
    }
};

struct BitAnd {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* a, bdta3_scalar* scalar) {
        xdec constant = reinterpret_cast<bdta3_dec*>(scalar)->value;
        if (is_too_long(constant)) {
            qzerr_stk_push(call.env, EC_DATA_OVERFLOW, call.name);
            return EC_DATA_OVERFLOW;
        }
        xdec_trunc_scale(&constant);
        if (constant.sign != XDEC_SIGN_ZERO) return run<BitAndRows>(call, result, nrows, a, scalar);
        if (a->all_valid != 1) return run<ZeroRows>(call, result, nrows, a, scalar);
        result->all_valid = 1;
        for (uint32_t i = 0; i < nrows; ++i) {
            result->data->valid[i] = 1;
            xdec_fill_zero(static_cast<xdec*>(result->data->values) + i);
        }
        return 0;
    }
};

// ---- Hexadecimal digits, one a byte ---------------------------------------------------------------------------------------

void to_digits(const Bits& bits, uint8_t* digits, uint32_t count) {
    for (uint32_t k = 0; k < count; ++k) {
        digits[k] = bits.words[k / kDigitsPerWord] >> (4 * (k % kDigitsPerWord)) & 15;
    }
}

// The digits below count; a byte counts by its lower four bits.
Bits from_digits(const uint8_t* digits, uint32_t count) {
    Bits bits;
    for (uint32_t k = 0; k < count && k < kHexDigits; ++k) {
        bits.words[k / kDigitsPerWord] |= (digits[k] & uint32_t{15}) << (4 * (k % kDigitsPerWord));
    }
    return bits;
}

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_2(bbit_and_for_dec_av, BitAnd, a, v)

// Reports under the name of the form above, which it is.
BIFUN_EXPORT int32_t bbit_and_for_dec_va(qz_env* env, rt_memobj* rt_mem, bdta3_scalar* x, bdta3_col* y, bdta3_col* result,
                                         uint32_t nrows) {
    return bbit_and_for_dec_av(env, rt_mem, y, x, result, nrows);
}

BIFUN_EXPORT int32_t bbitand_dec_get_hex(uint8_t* digits, const xdec* x, int32_t* count) {
    Bits bits;
    const int32_t code = xdec_get_binary(x, bits.words.data());
    if (code < 0) return code;
    uint32_t needed = kHexDigits;
    while (needed > 1 && (bits.words[(needed - 1) / kDigitsPerWord] >> (4 * ((needed - 1) % kDigitsPerWord)) & 15) == 0)
        --needed;
    to_digits(bits, digits, needed);
    *count = static_cast<int32_t>(needed);
    return 0;
}

BIFUN_EXPORT void bbitand_byte_complement(uint8_t* digits, int32_t count) {
    Bits bits = from_digits(digits, count < 0 ? 0 : static_cast<uint32_t>(count));
    bits.negate();
    to_digits(bits, digits, kHexDigits);
}

BIFUN_EXPORT int32_t bbitanddec_process_low(const uint8_t* x, const uint8_t* y, int32_t x_count, int32_t y_count,
                                            uint8_t x_sign, uint8_t y_sign, xdec* result) {
    // Of a positive operand the digits above its count are not set; a negative one has them all.
    const auto bits_of = [](const uint8_t* digits, int32_t count, uint8_t sign) {
        if (sign == XDEC_SIGN_NEGATIVE) return from_digits(digits, kHexDigits);
        return from_digits(digits, count < 0 ? 0 : static_cast<uint32_t>(count));
    };
    (bits_of(x, x_count, x_sign) & bits_of(y, y_count, y_sign))
        .to_decimal(x_sign == XDEC_SIGN_NEGATIVE && y_sign == XDEC_SIGN_NEGATIVE, *result);
    return 0;
}
