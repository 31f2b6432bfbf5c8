// Prints calls of exported functions on random exact numbers, a line each, for exact_functions_oracle.py to work out again:
// the function, its arguments as texts, its result as text. Usage: exact_functions_trace COUNT SEED
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "qzbifun/qzbifun.h"
#include "qzhost/control.h"
#include "qzhost/decimal.h"

namespace {

constexpr uint32_t kRows = 256;

class Column {
  public:
    Column(qz_env* env, rt_memobj* rt_mem, int32_t type) : col_(host_col_create(env, rt_mem, type, kRows)) {
        if (col_ == nullptr) std::abort();
    }
    ~Column() { host_col_destroy(col_); }
    Column(const Column&) = delete;
    Column& operator=(const Column&) = delete;

    bdta3_col* col() { return col_; }
    template <class T>
    T& value(uint32_t row) {
        return static_cast<T*>(col_->data->values)[row];
    }
    void set_all_valid() {
        for (uint32_t row = 0; row < kRows; ++row) col_->data->valid[row] = 1;
        col_->all_valid = 1;
    }

  private:
    bdta3_col* col_;
};

class Trace {
  public:
    explicit Trace(uint64_t seed) : random_(seed), env_(host_env_create()), rt_mem_(host_memobj_create(env_)) {}
    ~Trace() {
        host_memobj_destroy(rt_mem_);
        host_env_destroy(env_);
    }
    Trace(const Trace&) = delete;
    Trace& operator=(const Trace&) = delete;

    void bit_and() {
        Column x(env_, rt_mem_, HOST_DEC), result(env_, rt_mem_, HOST_DEC);
        const std::vector<std::string> texts = fill(x);
        const std::string constant_text = number();
        bdta3_dec constant{1, decimal(constant_text)};
        auto* const scalar = reinterpret_cast<bdta3_scalar*>(&constant);
        const bool constant_first = random_() % 2 != 0;
        const int32_t code = constant_first ? bbit_and_for_dec_va(env_, rt_mem_, scalar, x.col(), result.col(), kRows)
                                            : bbit_and_for_dec_av(env_, rt_mem_, x.col(), scalar, result.col(), kRows);
        if (code != 0) std::abort();
        for (uint32_t row = 0; row < kRows; ++row) {
            std::printf("bitand %s %s %s\n", texts[row].c_str(), constant_text.c_str(),
                        text_of(result.value<xdec>(row)).c_str());
        }
    }

    void to_char() {
        Column x(env_, rt_mem_, HOST_DEC), result(env_, rt_mem_, HOST_STR);
        const std::vector<std::string> texts = fill(x);
        if (bto_char_a_dec_to_varchar(env_, rt_mem_, x.col(), result.col(), kRows) != 0) std::abort();
        for (uint32_t row = 0; row < kRows; ++row) {
            const bdta3_colstr& slot = result.value<bdta3_colstr>(row);
            std::printf("to_char %s %.*s\n", texts[row].c_str(), static_cast<int>(slot.len), slot.bytes);
        }
    }

    void round_and_trunc() {
        Column x(env_, rt_mem_, HOST_DEC), places(env_, rt_mem_, HOST_INT), result(env_, rt_mem_, HOST_DEC);
        const std::vector<std::string> texts = fill(x);
        for (uint32_t row = 0; row < kRows; ++row) places.value<int32_t>(row) = static_cast<int32_t>(random_() % 60) - 30;
        places.set_all_valid();
        struct Named {
            const char* name;
            bop_fn_aa* function;
        };
        for (const auto& [name, function] : {Named{"round", bround_dec_aa_math_dbl}, Named{"trunc", btrunc_dec_aa_math}}) {
            if (function(env_, rt_mem_, x.col(), places.col(), result.col(), kRows) != 0) std::abort();
            for (uint32_t row = 0; row < kRows; ++row) {
                std::printf("%s %s %d %s\n", name, texts[row].c_str(), places.value<int32_t>(row),
                            text_of(result.value<xdec>(row)).c_str());
            }
        }
    }

  private:
    std::vector<std::string> fill(Column& column) {
        std::vector<std::string> texts;
        for (uint32_t row = 0; row < kRows; ++row) {
            texts.push_back(number());
            column.value<xdec>(row) = decimal(texts.back());
        }
        column.set_all_valid();
        return texts;
    }

    // 1 to 40 digits, the point in front of any of them or behind all.
    std::string number() {
        static constexpr uint32_t kDigits[] = {1, 2, 9, 10, 18, 19, 20, 21, 38, 39, 40};
        const uint32_t digits = kDigits[random_() % std::size(kDigits)];
        const uint32_t integer_digits = random_() % 2 != 0 ? digits : 1 + static_cast<uint32_t>(random_() % digits);
        std::string text = random_() % 2 != 0 ? "-" : "";
        for (uint32_t i = 0; i < digits; ++i) {
            if (i == integer_digits) text += '.';
            text += static_cast<char>('0' + random_() % 10);
        }
        return text;
    }

    static xdec decimal(const std::string& text) {
        xdec value;
        if (xdec_from_char(&value, text.data(), static_cast<uint32_t>(text.size())) != 0) std::abort();
        return value;
    }

    static std::string text_of(const xdec& value) {
        char text[XDEC_TEXT_SIZE];
        uint32_t length = 0;
        if (xdec_to_char_with_zero(&value, text, sizeof text, 0, 0, &length) != 0) std::abort();
        return {text, length};
    }

    std::mt19937_64 random_;
    qz_env* env_;
    rt_memobj* rt_mem_;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const uint64_t seed = std::strtoull(argv[2], nullptr, 10);
    Trace trace(seed);
    for (long batch = std::strtol(argv[1], nullptr, 10); batch > 0; --batch) {
        trace.bit_and();
        trace.to_char();
        trace.round_and_trunc();
    }
    return 0;
}
