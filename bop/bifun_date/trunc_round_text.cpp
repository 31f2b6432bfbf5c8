// round and trunc of text that holds a datetime or a number.
//
// The constant chooses for all rows: an element of round and trunc makes the texts datetimes, an integer makes them numbers. A
// number of 2147483647 decimal places or more is written as 0; it is meant so.
#include <cstring>
#include <limits>

#include "bop/bifun_date/date_words.h"
#include "bop/frame/export.h"
#include "qzbifun/date_rounding.h"
#include "qzhost/calendar.h"
#include "qzhost/date_text.h"
#include "qzhost/decimal.h"
#include "qzhost/error.h"

namespace bifun {
namespace {

constexpr Rules kRules{.constants = ConstantNull::kIgnored, .flag = FlagStore::kBeforeRows};
constexpr uint32_t kNumberTextBytes = 400;

// The text of a result. NUL-terminated.
struct ResultText {
    char* bytes;
    uint32_t length = 0;
};

// What a service answers: a failure is logged with its place, RC_VALUE_IS_NULL is handed on.
Code answer(int32_t code, int32_t line) {
    if (code < 0) elog_try_report_qzerr(code, __FILE__, line);
    return Code{code};
}

bool goes_on(Code code) { return code.value == 0; }

struct Truncates {
    static int32_t step(qztime* value, int32_t part, qztime* result) { return ifun_trunc_dt_low(value, part, result); }
    static int32_t to_scale(const xdec& number, int32_t scale, xdec& result) {
        xdec_trunc_scale_with_pos(&number, scale, &result);
        return 0;
    }
    static uint32_t integer_digits(const xdec&) { return 0; }
};

struct Rounds {
    static int32_t step(qztime* value, int32_t part, qztime* result) { return ifun_round_dt_low(value, part, result); }
    static int32_t to_scale(const xdec& number, int32_t scale, xdec& result) { return xdec_round(&number, 0, scale, &result); }
    static uint32_t integer_digits(const xdec& number) { return uint32_t{number.digits} - number.scale; }
};

template <class Way>
Code datetime_text(std::string_view text, int32_t part, ResultText& out) {
    qztime value, result;
    Code code = answer(qztime_from_char_ex(text.data(), static_cast<uint32_t>(text.size()), &value), __LINE__);
    if (!goes_on(code)) return code;
    code = answer(Way::step(&value, part, &result), __LINE__);
    if (!goes_on(code)) return code;
    code = answer(qztime_to_char(&result, HOST_KIND_DATETIME, -1, out.bytes), __LINE__);
    if (goes_on(code)) out.length = static_cast<uint32_t>(std::strlen(out.bytes));
    return code;
}

template <class Way>
Code write_number(const xdec& number, ResultText& out) {
    const uint32_t digits = Way::integer_digits(number);
    return answer(xdec_to_char_with_zero(&number, out.bytes, kNumberTextBytes, digits, 0, &out.length), __LINE__);
}

template <class Way>
Code number_text(std::string_view text, int64_t scale, ResultText& out) {
    using Limits = std::numeric_limits<int32_t>;
    xdec number, result;
    Code code = answer(xdec_from_char(&number, text.data(), static_cast<uint32_t>(text.size())), __LINE__);
    if (!goes_on(code)) return code;
    if (scale >= Limits::max()) {
        std::memcpy(out.bytes, "0", 2);
        out.length = 1;
        return kOk;
    }
    if (scale <= Limits::min()) return write_number<Way>(number, out);
    code = answer(Way::to_scale(number, static_cast<int32_t>(scale), result), __LINE__);
    return goes_on(code) ? write_number<Way>(result, out) : code;
}

// What reads as a number is one; all else must be a datetime.
Code round_any_text(std::string_view text, ResultText& out) {
    xdec number, result;
    Code code{xdec_from_char(&number, text.data(), static_cast<uint32_t>(text.size()))};
    if (code.failed()) return datetime_text<Rounds>(text, static_cast<int32_t>(RoundPart::kDay), out);
    if (!goes_on(code)) return code;
    code = answer(Rounds::to_scale(number, 0, result), __LINE__);
    return goes_on(code) ? write_number<Rounds>(result, out) : code;
}

// ---- Rows -----------------------------------------------------------------------------------------------------------------

struct TruncDayOfText {
    static constexpr Rules rules = kRules;
    static Code row(Row out, Text text) {
        qztime& result = out.slot<qztime>();
        const Code code = answer(qztime_from_char_ex(text.bytes, text.len, &result), __LINE__);
        if (code.failed()) return code;
        if (!goes_on(code)) return out.set_null();
        fun_trunc_day(&result, &result);
        return out.stored();
    }
};

Code put(Row out, Code code, const ResultText& text) {
    if (code.failed()) return code;
    if (!goes_on(code) || text.length == 0) return out.set_null();
    return out.put_text(text.bytes, text.length);
}

Code reported(Row out, Code code, const char* worker) { return code.failed() ? out.fail(code.value, worker) : code; }

// The constant's element, or the scale that it tells.
struct UnitOrScale {
    RoundPart part = RoundPart::kNone;
    int64_t scale = 0;

    Start prepare(const Call& call, bdta3_col*, bdta3_scalar* constant) {
        const Text word = ValueType<Text>::load_constant(*reinterpret_cast<nstr*>(constant));
        if (word.len == 0) return Start::all_null();
        part = roundpart_of({word.bytes, word.len});
        if (part != RoundPart::kNone) return Start::rows();
        const int32_t code = str2int64(word.bytes, word.len, &scale);
        if (code >= 0) return Start::rows();
        qzerr_stk_push(call.env, code, call.name);
        return Start::stop(Code{code});
    }

    template <class Way>
    Code apply(Text text, ResultText& out) const {
        const std::string_view bytes(text.bytes, text.len);
        return part != RoundPart::kNone ? datetime_text<Way>(bytes, static_cast<int32_t>(part), out)
                                        : number_text<Way>(bytes, scale, out);
    }
};

struct TruncText : UnitOrScale {
    static constexpr Rules rules = kRules;
    Code row(Row out, Text text, Text) const {
        char buffer[DATE_ROUNDING_TEXT_BYTES];
        ResultText result{buffer};
        return put(out, apply<Truncates>(text, result), result);
    }
};

struct RoundText : UnitOrScale {
    static constexpr Rules rules = kRules;
    Code row(Row out, Text text, Text) const {
        char buffer[DATE_ROUNDING_TEXT_BYTES];
        ResultText result{buffer};
        return reported(out, put(out, apply<Rounds>(text, result), result), "bround_dt_str_av_process");
    }
};

struct RoundAnyText {
    static constexpr Rules rules = kRules;
    static Code row(Row out, Text text) {
        char buffer[DATE_ROUNDING_TEXT_BYTES];
        ResultText result{buffer};
        return reported(out, put(out, round_any_text({text.bytes, text.len}, result), result), "bround_str_a_process");
    }
};

// For a caller that gives the buffer.
template <class F>
int32_t into(char* buffer, uint32_t* length, const F& write) {
    ResultText result{buffer};
    const Code code = write(result);
    if (goes_on(code)) *length = result.length;
    return code.value;
}

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_1(btrunc_day_str_a_date, TruncDayOfText, a)
BIFUN_EXPORT_2(btrunc_dt_str_av_date, TruncText, a, v)
BIFUN_EXPORT_2(bround_dt_str_av_date, RoundText, a, v)
BIFUN_EXPORT_1(bround_a_str, RoundAnyText, a)

BIFUN_EXPORT int32_t btrunc_dt_str_low(const char* text, uint32_t length, int32_t code, char* buffer, uint32_t* result_length) {
    return into(buffer, result_length, [&](ResultText& out) { return datetime_text<Truncates>({text, length}, code, out); });
}

BIFUN_EXPORT int32_t btrunc_dec_str_low(const char* text, uint32_t length, int64_t scale, char* buffer,
                                        uint32_t* result_length) {
    return into(buffer, result_length, [&](ResultText& out) { return number_text<Truncates>({text, length}, scale, out); });
}

BIFUN_EXPORT int32_t ifun_round_dt_str_low(const char* text, uint32_t length, int32_t code, char* buffer,
                                           uint32_t* result_length) {
    return into(buffer, result_length, [&](ResultText& out) { return datetime_text<Rounds>({text, length}, code, out); });
}

BIFUN_EXPORT int32_t ifun_round_dec_str_low(const char* text, uint32_t length, int64_t scale, char* buffer,
                                            uint32_t* result_length) {
    return into(buffer, result_length, [&](ResultText& out) { return number_text<Rounds>({text, length}, scale, out); });
}

BIFUN_EXPORT int32_t ifun_round_str_low(const char* text, uint32_t length, char* buffer, uint32_t* result_length) {
    return into(buffer, result_length, [&](ResultText& out) { return round_any_text({text, length}, out); });
}
