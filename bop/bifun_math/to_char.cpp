// to_char(x), to_char(x, format) and to_char(x, format, nls) of numbers.
//
// With a format every number goes through a decimal. The format is parsed once a batch; a format that does not parse fails the
// first row that has a value, since a batch of NULLs has no use for it.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "bop/bifun_math/integer_text.h"
#include "bop/frame/export.h"
#include "bop/frame/text_block.h"
#include "qzbifun/math.h"
#include "qzhost/decimal.h"
#include "qzhost/number_format.h"
#include "qzhost/number_text.h"

namespace bifun {
namespace {

constexpr Rules kRules{
    .constants = ConstantNull::kIgnored,
    .flag = FlagStore::kBeforeRows,
    .on_failure = OnFailure::kClear,
};

// Doubles from here on have no text. Only above zero: what is far below it passes this test.
constexpr double kDoubleLimit = 1e126;

// 0, or the code of a double that has no text.
int32_t range_code(double x) {
    if (std::fabs(x) < kDoubleLimit) return 0;  // nothing that a double may not be
    return x >= kDoubleLimit ? +EC_DATA_OVERFLOW : ntype_is_double_overflow(x);
}

Code check_range(Row out, double x, const char* worker) {
    const int32_t code = range_code(x);
    return code < 0 ? out.fail(code, worker) : kOk;
}

// ---- Without a format -----------------------------------------------------------------------------------------------------

// Writer: of put_texts, and the name that a code is reported under.
template <class Writer, class T>
struct PlainText {
    static constexpr Rules rules = Writer::rules;
    const Call* call;

    Start prepare(const Call& batch, bdta3_col*) {
        call = &batch;
        return Start::rows();
    }
    Code row(Row out, const T& x) const {
        char text[Writer::kBytes];
        const int32_t len = Writer::write(text, x);
        return len < 0 ? out.fail(len, Writer::kName) : out.put_text(text, static_cast<uint32_t>(len));
    }
    bool many(const frame::Output& out, uint32_t begin, uint32_t n, const frame::BlockView<T>& x) const {
        return put_texts<Writer>(*call, out, begin, n, x);
    }
};

struct WholeNumberWriter {
    static constexpr Rules rules = kRules;
    static constexpr const char* kName = "";  // no code to report
    static constexpr uint32_t kBytes = kIntegerTextBytes;
    static int32_t write(char* to, int64_t x) { return static_cast<int32_t>(write_integer(to, x)); }
};

struct DoubleWriter {
    static constexpr Rules rules = kRules;
    static constexpr const char* kName = "bto_char_a_double_to_varchar_process";
    static constexpr uint32_t kBytes = QZ_DOU2CHAR_BYTES;
    static int32_t write(char* to, double x) {
        const int32_t code = range_code(x);
        return code < 0 ? code : qz_dou2char(x, 1, to);
    }
};

// Unlike its kin it clears row 0 when a row fails, and not the row.
struct DecimalWriter {
    static constexpr Rules rules{.flag = FlagStore::kBeforeRows, .on_failure = OnFailure::kClearFirst};
    static constexpr const char* kName = "bto_char_a_dec_to_varchar_process";
    static constexpr uint32_t kBytes = XDEC_TEXT_SIZE;
    static int32_t write(char* to, const xdec& x) {
        uint32_t len = 0;
        const int32_t code = xdec_to_char_with_zero(&x, to, XDEC_TEXT_SIZE, 0, 0, &len);
        return code < 0 ? code : static_cast<int32_t>(len);
    }
};

template <class T>
using WholeNumberText = PlainText<WholeNumberWriter, T>;
using DoubleText = PlainText<DoubleWriter, double>;
using DecimalText = PlainText<DecimalWriter, xdec>;

// ---- With a format, and with NLS parameters -------------------------------------------------------------------------------

constexpr uint32_t kFormatBytes = XDEC_FORMAT_MAX_BYTES;
constexpr uint32_t kNlsBytes = XDEC_NLS_MAX_BYTES;

// The number of a row as a decimal.
struct FromInteger {
    static int32_t convert(int64_t x, xdec& number) { return xdec_from_int64(&number, x, XDEC_SCALE_NONE); }
};

template <class T>
struct Number;

template <>
struct Number<int32_t> : FromInteger {
    static constexpr const char* kWithFormat = "bto_char_av_int_to_varchar_with_fmt_process";
    static constexpr const char* kWithNls = "bto_char_avv_int_to_varchar_with_nls_process";
};

template <>
struct Number<int64_t> : FromInteger {
    static constexpr const char* kWithFormat = "bto_char_av_int64_to_varchar_with_fmt_process";
    static constexpr const char* kWithNls = "bto_char_avv_int64_to_varchar_with_nls_process";
};

template <>
struct Number<double> {
    static constexpr const char* kWithFormat = "bto_char_av_double_to_varchar_with_fmt_process";
    static constexpr const char* kWithNls = "bto_char_avv_double_to_varchar_with_nls_process";
    static int32_t convert(double x, xdec& number) { return xdec_from_double(x, &number); }
};

template <>
struct Number<xdec> {
    static constexpr const char* kWithNls = "bto_char_avv_dec_to_varchar_process_with_nls";
};

struct Format {
    xdec_number_format parsed;
    Code code;  // of the parser

    Code write(Row out, const xdec& number, const char* worker) const {
        if (code.failed()) return out.fail(code.value, worker);
        char text[XDEC_FORMATTED_BYTES];
        const int32_t written = xdec_to_char_with_fmt_low(out.env(), &number, text, &parsed);
        if (written < 0) return out.fail(written, worker);
        return out.put_text(text, static_cast<uint32_t>(std::strlen(text)));
    }

    // The range of a double is tested before it is converted.
    template <class T>
    Code write_row(Row out, const T& x, const char* worker) const {
        if constexpr (std::is_same_v<T, xdec>) {
            return write(out, x, worker);
        } else {
            if constexpr (std::is_same_v<T, double>) {
                if (const Code range = check_range(out, x, worker); range.failed()) return range;
            }
            xdec number;
            if (const int32_t converted = Number<T>::convert(x, number); converted < 0) return out.fail(converted, worker);
            return write(out, number, worker);
        }
    }
};

Text text_of(bdta3_scalar* constant) { return ValueType<Text>::load_constant(reinterpret_cast<nstr&>(*constant)); }

// The format of doubles is read where the pointer leads, which is set for short texts too.
template <class T>
Text format_of(bdta3_scalar* constant) {
    Text text = text_of(constant);
    if constexpr (std::is_same_v<T, double>) {
        char* const behind = reinterpret_cast<nstr*>(constant)->nstr_ext;
        if (behind != nullptr) text.bytes = behind;
    }
    return text;
}

bool is_usable_format(const Text& format) { return format.len != 0 && format.len <= kFormatBytes; }

template <class T>
struct WithFormat {
    static constexpr Rules rules = kRules;
    Format format;

    Start prepare(const Call& call, bdta3_col*, bdta3_scalar* format_constant) {
        const Text text = format_of<T>(format_constant);
        if (!is_usable_format(text)) return Start::all_null();
        format.code.value = xdec_to_char_fmt_parse(call.env, text.bytes, text.len, &format.parsed);
        return Start::rows();
    }
    Code row(Row out, const T& x, Text) const { return format.write_row(out, x, Number<T>::kWithFormat); }
};

template <class T>
struct WithNls {
    static constexpr Rules rules = kRules;
    Format format;

    Start prepare(const Call& call, bdta3_col*, bdta3_scalar* format_constant, bdta3_scalar* nls_constant) {
        const Text text = text_of(format_constant);
        const Text nls = text_of(nls_constant);
        if (!is_usable_format(text)) return Start::all_null();
        if (nls.len == 0 || nls.len > kNlsBytes) {
            qzerr_stk_push(call.env, EC_NLS_PARAMETER_INVALID, call.name);
            return Start::stop(Code{EC_NLS_PARAMETER_INVALID});
        }
        format.code.value = xdec_to_char_fmt_parse_with_nls(call.env, text.bytes, text.len, nls.bytes, nls.len, &format.parsed);
        return Start::rows();
    }
    Code row(Row out, const T& x, Text, Text) const { return format.write_row(out, x, Number<T>::kWithNls); }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_1(bto_char_a_int_to_varchar, WholeNumberText<int32_t>, a)
BIFUN_EXPORT_1(bto_char_a_int64_to_varchar, WholeNumberText<int64_t>, a)
BIFUN_EXPORT_1(bto_char_a_double_to_varchar, DoubleText, a)
BIFUN_EXPORT_1(bto_char_a_dec_to_varchar, DecimalText, a)

BIFUN_EXPORT_2(bto_char_av_int_to_varchar_with_fmt, WithFormat<int32_t>, a, v)
BIFUN_EXPORT_2(bto_char_av_int64_to_varchar_with_fmt, WithFormat<int64_t>, a, v)
BIFUN_EXPORT_2(bto_char_av_double_to_varchar_with_fmt, WithFormat<double>, a, v)

BIFUN_EXPORT_3(bto_char_avv_int_to_varchar_with_nls, WithNls<int32_t>, a, v, v)
BIFUN_EXPORT_3(bto_char_avv_int64_to_varchar_with_nls, WithNls<int64_t>, a, v, v)
BIFUN_EXPORT_3(bto_char_avv_double_to_varchar_with_nls, WithNls<double>, a, v, v)
BIFUN_EXPORT_3(bto_char_avv_dec_to_varchar_with_nls, WithNls<xdec>, a, v, v)
