// Every form of instr and instrb over any bytes, in any character set, with and without case: nothing is read or written
// outside the values, memory is given back, and what is found stands where it was found.
//
// Bytes: character set and switches; the pattern's bytes; its blanks; the text's blanks; start and occurrence, two bytes each.
// Then the pattern and the text, each in a block of exactly its size.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include "fuzz/require.h"
#include "qzbifun/qzbifun.h"
#include "qzhost/control.h"

namespace {

struct Host {
    qz_env* env = host_env_create();
    rt_memobj* mem = host_memobj_create(env);
};

// A value in a block of its own.
struct Value {
    std::unique_ptr<char[]> bytes;
    uint32_t len;
    uint32_t blank;

    Value(const uint8_t* data, uint32_t size, uint32_t blanks) : bytes(new char[size]), len(size), blank(blanks) {
        if (size > 0) std::memcpy(bytes.get(), data, size);
    }

    bdta3_colstr slot() const { return {len, blank, bytes.get()}; }
    nstr constant() const {
        nstr value{};
        value.has_value = 1;
        value.len = len;
        value.blank = blank;
        value.nstr_ext = bytes.get();
        if (len <= NSTR_INLINE_BYTES && len > 0) std::memcpy(value.nstr_inline, bytes.get(), len);
        return value;
    }
};

bdta3_scalar* scalar(void* record) { return static_cast<bdta3_scalar*>(record); }

struct OneRow {
    bdta3_colstr slot;
    uint8_t valid = 1;
    bdta3_coldata data{&valid, &slot, nullptr};
    bdta3_col col{1, nullptr, &data};
};

class Result {
  public:
    template <class F, class... X>
    int32_t call(Host& host, F* function, X*... x) {
        value_ = 0;
        const int32_t code = function(host.env, host.mem, x..., &col_, 1);
        require(code <= 0);
        require(host_memobj_outstanding(host.mem) == 0);
        host_error_clear(host.env);
        return code == 0 && valid_ != 0 ? value_ : 0;
    }

  private:
    int32_t value_ = 0;
    uint8_t valid_ = 0;
    bdta3_coldata data_{&valid_, &value_, nullptr};
    bdta3_col col_{1, nullptr, &data_};
};

// Whether the pattern stands in the text at a byte, where both heed case and blanks are what they are.
bool stands_at(const Value& text, const Value& pattern, int64_t byte) {
    if (byte < 0 || byte + pattern.len + pattern.blank > int64_t{text.len} + text.blank) return false;
    for (int64_t i = 0; i < int64_t{pattern.len} + pattern.blank; ++i) {
        const char wanted = i < pattern.len ? pattern.bytes[static_cast<size_t>(i)] : ' ';
        const char there = byte + i < text.len ? text.bytes[static_cast<size_t>(byte + i)] : ' ';
        if (wanted != there) return false;
    }
    return true;
}

void search(Host& host, const Value& text, const Value& pattern, int32_t start, int32_t occurrence, bool heeds_case) {
    OneRow texts{text.slot()};
    OneRow patterns{pattern.slot()};
    nstr text_constant = text.constant();
    nstr pattern_constant = pattern.constant();
    bdta3_int from{1, start};
    bdta3_int wanted{1, occurrence};
    Result result;
    const int32_t pair = result.call(host, binstr_def2_aa_str, &texts.col, &patterns.col);
    const int32_t first = result.call(host, binstr_def2_av_str, &texts.col, scalar(&pattern_constant));
    require(pair == first);
    const int32_t in_constant = result.call(host, binstr_def2_va_str, scalar(&text_constant), &patterns.col);
    require(text.len == 0 || in_constant == first);
    const int32_t byte = result.call(host, binstrb_def2_av_str, &texts.col, scalar(&pattern_constant));
    require((byte != 0) == (first != 0) && byte >= first);
    if (heeds_case && byte != 0) require(stands_at(text, pattern, byte - 1));

    result.call(host, binstr_def1_avv_str, &texts.col, scalar(&pattern_constant), scalar(&from));
    result.call(host, binstrb_def1_avv_str, &texts.col, scalar(&pattern_constant), scalar(&from));
    result.call(host, binstr_avvv_str, &texts.col, scalar(&pattern_constant), scalar(&from), scalar(&wanted));
    const int32_t nth =
        result.call(host, binstrb_avvv_str, &texts.col, scalar(&pattern_constant), scalar(&from), scalar(&wanted));
    // Of a pattern of blanks, a start inside the text's last character is taken as it stands.
    if (heeds_case && nth != 0 && pattern.len != 0) require(stands_at(text, pattern, nth - 1));
}

void search_written_out(Host& host, Value text, Value pattern, int32_t start, int32_t occurrence) {
    int32_t position = -1;
    int32_t byte = -1;
    const int32_t code = ifun_instr_low(host.env, host.mem, text.bytes.get(), text.len, pattern.bytes.get(), pattern.len, start,
                                        occurrence, &position, &byte);
    require(code <= 0 && (code == 0 || (position == 0 && byte == 0)));
    require(byte >= 0 && byte <= static_cast<int32_t>(text.len));
    require(host_memobj_outstanding(host.mem) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr size_t kHead = 8;
    if (size < kHead) return 0;
    static Host host;
    const uint32_t charset = data[0] % 3;
    const bool heeds_case = (data[0] & 0x80) == 0;
    host_parameter_set(SERVER_CHARSET, charset);
    bifun_dll_var_init(0, charset, heeds_case);
    const uint8_t* const bytes = data + kHead;
    const uint32_t given = static_cast<uint32_t>(size - kHead);
    const uint32_t pattern_len = data[1] < given ? data[1] : given;
    const auto number = [&](size_t at) { return static_cast<int16_t>(data[at] | data[at + 1] << 8); };
    const auto value = [&](bool is_text) {
        return is_text ? Value(bytes + pattern_len, given - pattern_len, data[3]) : Value(bytes, pattern_len, data[2]);
    };
    search(host, value(true), value(false), number(4), number(6), heeds_case);
    search_written_out(host, value(true), value(false), number(4), number(6));
    return 0;
}
