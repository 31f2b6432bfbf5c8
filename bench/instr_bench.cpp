// instr over rows of 8 to 40 and of 200 to 2,000 bytes, of ASCII and of UTF-8 with three characters of ten longer than a byte.
// Floors: the rows copied once, and the first and the last byte of the pattern compared at sixteen places at once, without
// services, character sets, positions or vectors.
#include <benchmark/benchmark.h>

#include "bench/batch.h"
#include "bench/text_rows.h"
#include "host/src/byte_search.h"
#include "qzbifun/string.h"

namespace {

using bench::Script;
using bench::TextRows;

constexpr std::string_view kPatterns[] = {"t", "sh", "e\u4e2d", "tain o", "qzbifun search words", "\u4e2d"};
constexpr std::string_view kAbsent = "#~";  // no row has it, and no byte of it

TextRows rows_of(const benchmark::State& state) {
    const Script script = state.range(1) == 0 ? Script::ascii : Script::utf8;
    return state.range(0) == 0 ? bench::short_rows(script) : bench::long_rows(script);
}

std::string_view pattern_of(const benchmark::State& state) {
    return state.range(2) < 0 ? kAbsent : kPatterns[static_cast<size_t>(state.range(2))];
}

class Constant {
  public:
    explicit Constant(std::string_view text, uint32_t blank = 0) {
        value_.has_value = 1;
        value_.len = static_cast<uint32_t>(text.size());
        value_.blank = blank;
        std::memcpy(value_.nstr_inline, text.data(), text.size());
        value_.nstr_ext = value_.nstr_inline;
    }
    bdta3_scalar* scalar() { return reinterpret_cast<bdta3_scalar*>(&value_); }

  private:
    nstr value_{};
};

class Number {
  public:
    explicit Number(int32_t value) : value_{1, value} {}
    bdta3_scalar* scalar() { return reinterpret_cast<bdta3_scalar*>(&value_); }

  private:
    bdta3_int value_;
};

// A batch of rows with its result.
class Batch {
  public:
    explicit Batch(const TextRows& rows)
        : size_(static_cast<uint32_t>(rows.size())), text_(host_, HOST_STR, size_), result_(host_, HOST_INT, size_) {
        bifun_dll_var_init(0, 1, 1);
        for (uint32_t i = 0; i < size_; ++i) {
            host_col_set_text(text_.col(), i, rows[i].data(), static_cast<uint32_t>(rows[i].size()), 0);
        }
        text_.col()->all_valid = 1;
    }

    template <class F, class... X>
    void call(F* function, X*... x) {
        if (function(host_.env(), host_.rt_mem(), x..., result_.col(), size_) != 0) std::abort();
    }

    const bench::Host& host() const { return host_; }
    bdta3_col* text() const { return text_.col(); }
    uint32_t size() const { return size_; }

  private:
    bench::Host host_;
    uint32_t size_;
    bench::Vector text_;
    bench::Vector result_;
};

void report(benchmark::State& state, const TextRows& rows) {
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(rows.size()));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(rows.bytes()));
    state.counters["ns_row"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * static_cast<double>(rows.size()) / 1e9,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

template <class Call>
void each_batch(benchmark::State& state, Call&& call) {
    const TextRows rows = rows_of(state);
    Batch batch(rows);
    for (auto _ : state) call(batch);
    report(state, rows);
}

void BM_floor_copy(benchmark::State& state) {
    TextRows rows = rows_of(state);
    for (auto _ : state) {
        for (size_t i = 0; i < rows.size(); ++i) benchmark::DoNotOptimize(rows.copied(i));
    }
    report(state, rows);
}

#ifdef QZHOST_VECTOR_BYTES
void BM_floor_scan_ends(benchmark::State& state) {
    const TextRows rows = rows_of(state);
    const std::string pattern(pattern_of(state));
    const auto* const p = reinterpret_cast<const uint8_t*>(pattern.data());
    std::vector<int32_t> result(rows.size());
    for (auto _ : state) {
        for (size_t i = 0; i < rows.size(); ++i) {
            size_t position = 0;
            if (pattern.size() <= rows[i].size()) {
                qzhost::scan_ends(reinterpret_cast<const uint8_t*>(rows[i].data()), rows[i].size(), p, pattern.size(),
                                  [&](size_t place) {
                                      position = place + 1;
                                      return true;
                                  });
            }
            result[i] = static_cast<int32_t>(position);
        }
        benchmark::DoNotOptimize(result.data());
    }
    report(state, rows);
}
#endif

void BM_binstr_def2_av_str(benchmark::State& state) {
    Constant pattern(pattern_of(state));
    each_batch(state, [&](Batch& batch) { batch.call(binstr_def2_av_str, batch.text(), pattern.scalar()); });
}

// Words of a language, of which a few end in "ing", and 17 bytes that hardly a row has.
void BM_binstr_def2_av_str_words(benchmark::State& state) {
    const TextRows rows = bench::word_rows(state.range(0) == 0 ? Script::ascii : Script::utf8);
    Constant pattern(state.range(1) == 0 ? "ing" : "shopping ordinary");
    Batch batch(rows);
    for (auto _ : state) batch.call(binstr_def2_av_str, batch.text(), pattern.scalar());
    report(state, rows);
}

void BM_binstrb_def2_av_str(benchmark::State& state) {
    Constant pattern(pattern_of(state));
    each_batch(state, [&](Batch& batch) { batch.call(binstrb_def2_av_str, batch.text(), pattern.scalar()); });
}

// From the third character on, the second time.
template <bop_fn_avvv* kFunction>
void from_third_the_second(benchmark::State& state) {
    Constant pattern(pattern_of(state));
    Number start(3);
    Number occurrence(2);
    each_batch(state, [&](Batch& batch) {
        batch.call(kFunction, batch.text(), pattern.scalar(), start.scalar(), occurrence.scalar());
    });
}
void BM_binstr_avvv_str(benchmark::State& state) { from_third_the_second<binstr_avvv_str>(state); }
void BM_binstrb_avvv_str(benchmark::State& state) { from_third_the_second<binstrb_avvv_str>(state); }

// The same with two blanks behind the pattern.
void BM_binstr_avvv_str_blanks(benchmark::State& state) {
    Constant pattern(pattern_of(state), 2);
    Number start(3);
    Number occurrence(2);
    each_batch(state, [&](Batch& batch) {
        batch.call(binstr_avvv_str, batch.text(), pattern.scalar(), start.scalar(), occurrence.scalar());
    });
}

void BM_binstr_avvv_str_backwards(benchmark::State& state) {
    Constant pattern(pattern_of(state));
    Number start(-1);
    Number occurrence(1);
    each_batch(state, [&](Batch& batch) {
        batch.call(binstr_avvv_str, batch.text(), pattern.scalar(), start.scalar(), occurrence.scalar());
    });
}

// Patterns of 1 to 6 bytes out of a column; every second row has its own.
std::vector<std::string> patterns_of(const TextRows& rows) {
    std::mt19937 random(815);
    std::vector<std::string> patterns;
    for (size_t i = 0; i < rows.size(); ++i) {
        const std::string_view from = rows[i % 2 == 0 ? i : random() % rows.size()];
        const size_t bytes = 1 + random() % 6;
        const size_t at = random() % (from.size() - bytes + 1);
        patterns.emplace_back(from.substr(at, bytes));
    }
    return patterns;
}

void BM_binstr_def2_aa_str(benchmark::State& state) {
    const TextRows rows = rows_of(state);
    Batch batch(rows);
    const std::vector<std::string> patterns = patterns_of(rows);
    const bench::Vector column(batch.host(), HOST_STR, batch.size());
    for (uint32_t i = 0; i < batch.size(); ++i) {
        host_col_set_text(column.col(), i, patterns[i].data(), static_cast<uint32_t>(patterns[i].size()), 0);
    }
    for (auto _ : state) batch.call(binstr_def2_aa_str, batch.text(), column.col());
    report(state, rows);
}

void with_patterns(benchmark::internal::Benchmark* bench) {
    bench->ArgNames({"long", "utf8", "pattern"})->ArgsProduct({{0, 1}, {0, 1}, {-1, 0, 1, 2, 3, 4, 5}});
}
void without_patterns(benchmark::internal::Benchmark* bench) {
    bench->ArgNames({"long", "utf8"})->ArgsProduct({{0, 1}, {0, 1}});
}

BENCHMARK(BM_floor_copy)->Apply(without_patterns);
#ifdef QZHOST_VECTOR_BYTES
BENCHMARK(BM_floor_scan_ends)->Apply(with_patterns);
#endif
BENCHMARK(BM_binstr_def2_av_str)->Apply(with_patterns);
BENCHMARK(BM_binstr_def2_av_str_words)->ArgNames({"utf8", "long_pattern"})->ArgsProduct({{0, 1}, {0, 1}});
BENCHMARK(BM_binstrb_def2_av_str)->Apply(with_patterns);
BENCHMARK(BM_binstr_def2_aa_str)->Apply(without_patterns);
BENCHMARK(BM_binstr_avvv_str)->Apply(with_patterns);
BENCHMARK(BM_binstrb_avvv_str)->Apply(with_patterns);
BENCHMARK(BM_binstr_avvv_str_blanks)->Apply(with_patterns);
BENCHMARK(BM_binstr_avvv_str_backwards)->Apply(with_patterns);

}  // namespace
