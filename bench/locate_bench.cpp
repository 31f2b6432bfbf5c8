// position, locate and find_in_set over rows of 8 to 40 and of 200 to 2,000 bytes, ASCII and with three characters of ten
// longer. Floors: copying the rows once, and a search that compares the first and the last byte of the pattern at sixteen
// places at once, without services, character sets, NULLs or characters to be counted.
#include <benchmark/benchmark.h>

#include <string>
#include <string_view>
#include <vector>

#include "bench/batch.h"
#include "bench/text_rows.h"
#include "host/src/byte_search.h"

namespace {

using bench::Host;
using bench::Script;
using bench::TextRows;
using bench::Vector;

// A third of the short rows has the first, few have the second; of the third none has a byte.
constexpr std::string_view kPatterns[] = {"t", "e\u4e2d", "#~"};

bool is_long(const benchmark::State& state) { return state.range(0) != 0; }

TextRows rows_of(const benchmark::State& state) {
    const Script script = state.range(1) == 0 ? Script::ascii : Script::utf8;
    return is_long(state) ? bench::long_rows(script) : bench::short_rows(script);
}

std::string_view pattern_of(const benchmark::State& state) { return kPatterns[static_cast<size_t>(state.range(2))]; }

Vector strings(const Host& host, uint32_t rows) {
    Vector vector(host, HOST_STR, rows);
    std::fill_n(vector.col()->data->valid, rows, uint8_t{1});
    vector.col()->all_valid = 1;
    return vector;
}

Vector texts(const Host& host, TextRows& rows, uint32_t blank = 0) {
    const auto n = static_cast<uint32_t>(rows.size());
    Vector vector = strings(host, n);
    for (uint32_t i = 0; i < n; ++i) vector.values<bdta3_colstr>()[i] = {rows.length(i), blank, rows.writable(i)};
    return vector;
}

// A string constant that refers to the text.
class Text {
  public:
    explicit Text(std::string_view text, uint32_t blank = 0) : bytes_(text) {
        value_.has_value = 1;
        value_.len = static_cast<uint32_t>(bytes_.size());
        value_.blank = blank;
        if (bytes_.size() <= NSTR_INLINE_BYTES) std::memcpy(value_.nstr_inline, bytes_.data(), bytes_.size());
        value_.nstr_ext = bytes_.size() <= NSTR_INLINE_BYTES ? value_.nstr_inline : bytes_.data();
    }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    bdta3_scalar* scalar() { return reinterpret_cast<bdta3_scalar*>(&value_); }

  private:
    std::string bytes_;
    nstr value_{};
};

template <class Call>
void each_batch(benchmark::State& state, const TextRows& rows, const Host& host, const Call& call) {
    bifun_dll_var_init(0, 1, 1);
    const auto n = static_cast<uint32_t>(rows.size());
    const Vector result(host, HOST_INT, n);
    for (auto _ : state) {
        if (call(host.env(), host.rt_mem(), result.col(), n) != 0) state.SkipWithError("the call failed");
        benchmark::DoNotOptimize(result.values<int32_t>());
    }
    bench::report(state, n, rows.bytes() / n);
}

// ---- Floors -----------------------------------------------------------------------------------------------------------------

void BM_copy_rows(benchmark::State& state) {
    TextRows rows = rows_of(state);
    for (auto _ : state) {
        for (size_t i = 0; i < rows.size(); ++i) benchmark::DoNotOptimize(rows.copied(i));
    }
    bench::report(state, static_cast<uint32_t>(rows.size()), rows.bytes() / rows.size());
}

#ifdef QZHOST_VECTOR_BYTES
const uint8_t* bytes_of(std::string_view text) { return reinterpret_cast<const uint8_t*>(text.data()); }

void BM_loop_scan_ends(benchmark::State& state) {
    const TextRows rows = rows_of(state);
    const std::string pattern(pattern_of(state));
    std::vector<int32_t> positions(rows.size());
    for (auto _ : state) {
        for (size_t i = 0; i < rows.size(); ++i) {
            positions[i] = 0;
            if (pattern.size() > rows[i].size()) continue;
            qzhost::scan_ends(bytes_of(rows[i]), rows[i].size(), bytes_of(pattern), pattern.size(), [&](size_t place) {
                positions[i] = static_cast<int32_t>(place) + 1;
                return true;
            });
        }
        benchmark::DoNotOptimize(positions.data());
    }
    bench::report(state, static_cast<uint32_t>(rows.size()), rows.bytes() / rows.size());
}
#endif

// ---- position and locate ----------------------------------------------------------------------------------------------------

template <bool kCaseSensitive>
void position(benchmark::State& state) {
    TextRows rows = rows_of(state);
    const Host host;
    const Vector text = texts(host, rows);
    Text pattern(pattern_of(state));
    each_batch(state, rows, host, [&](qz_env* env, rt_memobj* mem, bdta3_col* out, uint32_t n) {
        bifun_dll_var_init(0, 1, kCaseSensitive ? 1 : 0);
        return bposition_va_str(env, mem, pattern.scalar(), text.col(), out, n);
    });
}
void BM_bposition_va_str(benchmark::State& state) { position<true>(state); }
void BM_bposition_va_str_folded(benchmark::State& state) { position<false>(state); }

void BM_blocate_def_va_str(benchmark::State& state) {
    TextRows rows = rows_of(state);
    const Host host;
    const Vector text = texts(host, rows);
    Text pattern(pattern_of(state));
    each_batch(state, rows, host, [&](qz_env* env, rt_memobj* mem, bdta3_col* out, uint32_t n) {
        return blocate_def_va_str(env, mem, pattern.scalar(), text.col(), out, n);
    });
}

// Texts with five implied blanks, which have to be written out.
void BM_blocate_def_va_str_blanks(benchmark::State& state) {
    TextRows rows = rows_of(state);
    const Host host;
    const Vector text = texts(host, rows, 5);
    Text pattern(pattern_of(state));
    each_batch(state, rows, host, [&](qz_env* env, rt_memobj* mem, bdta3_col* out, uint32_t n) {
        return blocate_def_va_str(env, mem, pattern.scalar(), text.col(), out, n);
    });
}

void BM_blocate_vav_str(benchmark::State& state) {
    TextRows rows = rows_of(state);
    const Host host;
    const Vector text = texts(host, rows);
    Text pattern(pattern_of(state));
    bdta3_int start{1, 4};
    each_batch(state, rows, host, [&](qz_env* env, rt_memobj* mem, bdta3_col* out, uint32_t n) {
        return blocate_vav_str(env, mem, pattern.scalar(), text.col(), reinterpret_cast<bdta3_scalar*>(&start), out, n);
    });
}

// Three bytes out of the middle of every other row.
void BM_blocate_def_aa_str(benchmark::State& state) {
    TextRows rows = rows_of(state);
    const Host host;
    const Vector text = texts(host, rows);
    const auto n_rows = static_cast<uint32_t>(rows.size());
    const Vector pattern = strings(host, n_rows);
    for (uint32_t i = 0; i < n_rows; ++i) {
        const uint32_t from = i % 2 == 0 ? i : (i + 1) % n_rows;
        pattern.values<bdta3_colstr>()[i] = {3, 0, rows.writable(from) + rows.length(from) / 2};
    }
    each_batch(state, rows, host, [&](qz_env* env, rt_memobj* mem, bdta3_col* out, uint32_t n) {
        return blocate_def_aa_str(env, mem, pattern.col(), text.col(), out, n);
    });
}

// ---- find_in_set ------------------------------------------------------------------------------------------------------------

constexpr uint32_t kElements = 20;

std::string list_of(const std::vector<std::string>& elements) {
    std::string list;
    for (const std::string& element : elements) list += (list.empty() ? "" : ",") + element;
    return list;
}

// Twenty of the rows; each of the others meets those of its length alone.
void BM_bfind_in_set_av_str(benchmark::State& state) {
    TextRows rows = rows_of(state);
    const Host host;
    const Vector text = texts(host, rows);
    std::vector<std::string> elements;
    for (uint32_t i = 0; i < kElements; ++i) elements.emplace_back(rows[i * 97]);
    Text list(list_of(elements));
    each_batch(state, rows, host, [&](qz_env* env, rt_memobj* mem, bdta3_col* out, uint32_t n) {
        return bfind_in_set_av_str(env, mem, text.col(), list.scalar(), out, n);
    });
}

// Twenty elements of one length, and each row is one of them: eight letters, or the first 200 bytes of long rows.
void BM_bfind_in_set_av_str_one_length(benchmark::State& state) {
    TextRows rows = rows_of(state);
    const Host host;
    const uint32_t length = is_long(state) ? 200 : 8;
    std::vector<std::string> elements;
    for (uint32_t i = 0; i < kElements; ++i) elements.emplace_back(rows[i * 97].substr(0, length));
    const auto n_rows = static_cast<uint32_t>(rows.size());
    const Vector text = strings(host, n_rows);
    for (uint32_t i = 0; i < n_rows; ++i) {
        text.values<bdta3_colstr>()[i] = {length, 0, elements[(i * 2654435761u >> 16) % kElements].data()};
    }
    Text list(list_of(elements));
    each_batch(state, rows, host, [&](qz_env* env, rt_memobj* mem, bdta3_col* out, uint32_t n) {
        return bfind_in_set_av_str(env, mem, text.col(), list.scalar(), out, n);
    });
}

void all_rows(benchmark::internal::Benchmark* bench) { bench->ArgNames({"long", "utf8"})->ArgsProduct({{0, 1}, {0, 1}}); }

void all_patterns(benchmark::internal::Benchmark* bench) {
    bench->ArgNames({"long", "utf8", "pattern"})->ArgsProduct({{0, 1}, {0, 1}, {0, 1, 2}});
}

BENCHMARK(BM_copy_rows)->Apply(all_rows);
#ifdef QZHOST_VECTOR_BYTES
BENCHMARK(BM_loop_scan_ends)->Apply(all_patterns);
#endif
BENCHMARK(BM_bposition_va_str)->Apply(all_patterns);
BENCHMARK(BM_bposition_va_str_folded)->Apply(all_patterns);
BENCHMARK(BM_blocate_def_va_str)->Apply(all_patterns);
BENCHMARK(BM_blocate_def_va_str_blanks)->Apply(all_patterns);
BENCHMARK(BM_blocate_vav_str)->Apply(all_patterns);
BENCHMARK(BM_blocate_def_aa_str)->Apply(all_rows);
BENCHMARK(BM_bfind_in_set_av_str)->Apply(all_rows);
BENCHMARK(BM_bfind_in_set_av_str_one_length)->Apply(all_rows);

}  // namespace
