// position, locate and find_in_set against walks over every character, on any bytes in any character set.
//
// First byte: the character set, whether case counts, blanks of the pattern and of the text. Second: the start. Third: the
// bytes of the pattern. Then the pattern and the text, each in a block of exactly its size.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/require.h"
#include "qzbifun/qzbifun.h"
#include "qzhost/characters.h"
#include "qzhost/control.h"

namespace {

struct Value {
    std::string stored;
    uint32_t blank;

    std::string written_out() const { return stored + std::string(blank, ' '); }
    bool is_empty() const { return stored.empty() && blank == 0; }
};

// Where the characters of a text begin, from 0.
std::vector<size_t> starts_of(const std::string& text) {
    std::vector<int32_t> positions(text.size() + 1);
    uint32_t multibyte = 0;
    const uint32_t n = qz_mbstrlen_cposition_ex(text.data(), static_cast<uint32_t>(text.size()), positions.data(), &multibyte);
    std::vector<size_t> starts;
    for (uint32_t i = 0; i < n; ++i) starts.push_back(static_cast<size_t>(positions[i]) - 1);
    return starts;
}

bool stands_at(const std::string& text, size_t at, const std::string& pattern) {
    return text.size() - at >= pattern.size() && text.compare(at, pattern.size(), pattern) == 0;
}

std::string upper(std::string text) {
    qz_mbsupper_ex(text.data(), static_cast<uint32_t>(text.size()));
    return text;
}

// Malformed bytes cannot be passed.
bool can_be_passed(std::string text) { return qz_mbsrev_ex(text.data(), static_cast<uint32_t>(text.size())) != nullptr; }

int32_t slow_locate(const Value& pattern, const Value& text, int32_t start) {
    if (start <= 0) return 0;
    const std::string in = text.written_out();
    const std::string wanted = pattern.written_out();
    const std::vector<size_t> starts = starts_of(in);
    const auto from = static_cast<size_t>(start) - 1;
    if (wanted.empty()) return from <= starts.size() ? start : 0;
    if (from >= starts.size() || !can_be_passed(in.substr(0, starts[from]))) return 0;
    for (size_t i = from; i < starts.size(); ++i) {
        if (stands_at(in, starts[i], wanted)) return static_cast<int32_t>(i) + 1;
    }
    return 0;
}

int32_t slow_position(const Value& pattern, const Value& text, bool folds) {
    if (pattern.is_empty()) return 1;
    const std::string stored = folds ? upper(text.stored) : text.stored;
    const std::string wanted = folds ? upper(pattern.stored) : pattern.stored;
    const std::vector<size_t> starts = starts_of(stored);
    if (wanted.empty()) {
        const std::string blanks(pattern.blank, ' ');
        for (const size_t at : starts) {
            if (stands_at(stored, at, blanks)) return static_cast<int32_t>(at) + 1;
        }
        return text.blank >= pattern.blank ? static_cast<int32_t>(stored.size()) + 1 : 0;
    }
    const std::string all = stored + std::string(text.blank, ' ');
    for (size_t i = 0; i < starts.size(); ++i) {
        const size_t behind = starts[i] + wanted.size();
        if (!stands_at(stored, starts[i], wanted) || !stands_at(all, behind, std::string(pattern.blank, ' '))) continue;
        const bool ends_stored_text = pattern.blank != 0 && behind == stored.size();
        return static_cast<int32_t>(ends_stored_text ? i : starts[i]) + 1;
    }
    return 0;
}

int32_t slow_find(const Value& text, const std::string& list) {
    const std::string wanted = text.written_out();
    size_t begin = 0;
    for (int32_t number = 1;; ++number) {
        const size_t end = std::min(list.find(',', begin), list.size());
        if (list.substr(begin, end - begin) == wanted) return number;
        if (end == list.size()) return 0;
        begin = end + 1;
    }
}

// One value as a vector of one row and as a constant, in a block of exactly its size.
class Argument {
  public:
    explicit Argument(const Value& value) : bytes_(new char[value.stored.size()]) {
        const auto len = static_cast<uint32_t>(value.stored.size());
        std::copy(value.stored.begin(), value.stored.end(), bytes_.get());
        slot_ = {len, value.blank, bytes_.get()};
        constant_.has_value = 1;
        constant_.len = len;
        constant_.blank = value.blank;
        if (len <= NSTR_INLINE_BYTES) std::copy(value.stored.begin(), value.stored.end(), constant_.nstr_inline);
        constant_.nstr_ext = len <= NSTR_INLINE_BYTES ? constant_.nstr_inline : bytes_.get();
    }
    Argument(const Argument&) = delete;
    Argument& operator=(const Argument&) = delete;

    bdta3_col* col() { return &col_; }
    bdta3_scalar* scalar() { return reinterpret_cast<bdta3_scalar*>(&constant_); }

  private:
    std::unique_ptr<char[]> bytes_;
    bdta3_colstr slot_{};
    nstr constant_{};
    uint8_t valid_ = 1;
    bdta3_coldata data_{&valid_, &slot_, nullptr};
    bdta3_col col_{1, nullptr, &data_};
};

template <class Function, class... Slot>
int32_t value_of(qz_env* env, rt_memobj* mem, Function* function, Slot*... slot) {
    int32_t value = -1;
    uint8_t valid = 0;
    bdta3_coldata data{&valid, &value, nullptr};
    bdta3_col result{0, nullptr, &data};
    require(function(env, mem, slot..., &result, 1) == 0);
    require(valid == 1 && host_memobj_outstanding(mem) == 0);
    return value;
}

void check(const Value& pattern, const Value& text, int32_t start, bool folds) {
    qz_env* const env = host_env_create();
    rt_memobj* const mem = host_memobj_create(env);
    Argument p(pattern);
    Argument t(text);
    bdta3_int from{1, start};
    auto* const s = reinterpret_cast<bdta3_scalar*>(&from);
    const int32_t located = slow_locate(pattern, text, start);
    require(value_of(env, mem, &blocate_aav_str, p.col(), t.col(), s) == located);
    require(value_of(env, mem, &blocate_avv_str, p.col(), t.scalar(), s) == located);
    require(value_of(env, mem, &blocate_vav_str, p.scalar(), t.col(), s) == located);
    const int32_t first = slow_locate(pattern, text, 1);
    require(value_of(env, mem, &blocate_def_aa_str, p.col(), t.col()) == first);
    require(value_of(env, mem, &blocate_def_av_str, p.col(), t.scalar()) == first);
    require(value_of(env, mem, &blocate_def_va_str, p.scalar(), t.col()) == first);
    require(value_of(env, mem, &bposition_va_str, p.scalar(), t.col()) == slow_position(pattern, text, folds));
    require(value_of(env, mem, &bfind_in_set_av_str, p.col(), t.scalar()) == slow_find(pattern, text.stored));
    host_memobj_destroy(mem);
    host_env_destroy(env);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr size_t head = 3;
    if (size < head) return 0;
    const uint8_t settings = data[0];
    const uint32_t charset = settings % 3;
    const bool folds = (settings / 3) % 2 != 0;
    const uint32_t pattern_blank = (settings / 6) % 6;
    const uint32_t text_blank = (settings / 36) % 7;
    const size_t m = data[2] < 240 ? data[2] : size_t{data[2] - 239u} * 100;
    if (size < head + m) return 0;
    host_parameter_set(SERVER_CHARSET, charset);
    bifun_dll_var_init(0, charset, folds ? 0 : 1);
    const char* const bytes = reinterpret_cast<const char*>(data) + head;
    const Value pattern{std::string(bytes, m), pattern_blank};
    const Value text{std::string(bytes + m, size - head - m), text_blank};
    check(pattern, text, static_cast<int8_t>(data[1]), folds);
    return 0;
}
