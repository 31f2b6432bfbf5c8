// The character services over rows of 8 to 40 and of 200 to 2,000 bytes. Floor of the services that change text: the same rows
// copied once. Floor of those that only read: one load a row.
#include <benchmark/benchmark.h>

#include "bench/text_rows.h"
#include "qzhost/characters.h"

namespace {

using bench::Script;
using bench::TextRows;

template <class Row>
void each_row(benchmark::State& state, TextRows rows, Row&& row) {
    for (auto _ : state) {
        for (size_t i = 0; i < rows.size(); ++i) row(rows, i);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(rows.size()));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(rows.bytes()));
    state.counters["ns_row"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * static_cast<double>(rows.size()) / 1e9,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

TextRows rows_of(const benchmark::State& state) {
    const Script script = state.range(1) == 0 ? Script::ascii : Script::utf8;
    return state.range(0) == 0 ? bench::short_rows(script) : bench::long_rows(script);
}

void BM_floor_load(benchmark::State& state) {
    each_row(state, rows_of(state), [](TextRows& rows, size_t i) { benchmark::DoNotOptimize(rows[i].front()); });
}

void BM_floor_copy(benchmark::State& state) {
    each_row(state, rows_of(state), [](TextRows& rows, size_t i) { benchmark::DoNotOptimize(rows.copied(i)); });
}

void BM_qz_mbstrlen_ex(benchmark::State& state) {
    each_row(state, rows_of(state),
             [](TextRows& rows, size_t i) { benchmark::DoNotOptimize(qz_mbstrlen_ex(rows[i].data(), rows.length(i))); });
}

void BM_qz_mbstrlen_cposition_ex(benchmark::State& state) {
    std::vector<int32_t> positions(4096);
    each_row(state, rows_of(state), [&](TextRows& rows, size_t i) {
        uint32_t multibyte;
        benchmark::DoNotOptimize(qz_mbstrlen_cposition_ex(rows[i].data(), rows.length(i), positions.data(), &multibyte));
    });
}

void BM_qz_mbsupper_ex(benchmark::State& state) {
    each_row(state, rows_of(state), [](TextRows& rows, size_t i) { qz_mbsupper_ex(rows.copied(i), rows.length(i)); });
}

void BM_qz_mbslower_ex(benchmark::State& state) {
    each_row(state, rows_of(state), [](TextRows& rows, size_t i) { qz_mbslower_ex(rows.copied(i), rows.length(i)); });
}

void BM_qz_mbsrev_ex(benchmark::State& state) {
    each_row(state, rows_of(state),
             [](TextRows& rows, size_t i) { benchmark::DoNotOptimize(qz_mbsrev_ex(rows.copied(i), rows.length(i))); });
}

void BM_qz_mbsninc_ex(benchmark::State& state) {
    each_row(state, rows_of(state), [](TextRows& rows, size_t i) {
        uint32_t rest;
        benchmark::DoNotOptimize(qz_mbsninc_ex(rows[i].data(), rows.length(i), rows.length(i) / 3, &rest));
    });
}

void BM_qz_get_lpad_str(benchmark::State& state) {
    std::vector<char> output(QZ_PAD_MAX_BYTES + 1);
    each_row(state, rows_of(state), [&](TextRows& rows, size_t i) {
        uint32_t len;
        benchmark::DoNotOptimize(qz_get_lpad_str(rows[i].data(), rows.length(i), static_cast<int32_t>(rows.length(i)) + 8, "*",
                                                 1, output.data(), &len));
    });
}

void all_rows(benchmark::internal::Benchmark* bench) { bench->ArgNames({"long", "utf8"})->ArgsProduct({{0, 1}, {0, 1}}); }

BENCHMARK(BM_floor_load)->Apply(all_rows);
BENCHMARK(BM_floor_copy)->Apply(all_rows);
BENCHMARK(BM_qz_mbstrlen_ex)->Apply(all_rows);
BENCHMARK(BM_qz_mbstrlen_cposition_ex)->Apply(all_rows);
BENCHMARK(BM_qz_mbsupper_ex)->Apply(all_rows);
BENCHMARK(BM_qz_mbslower_ex)->Apply(all_rows);
BENCHMARK(BM_qz_mbsrev_ex)->Apply(all_rows);
BENCHMARK(BM_qz_mbsninc_ex)->Apply(all_rows);
BENCHMARK(BM_qz_get_lpad_str)->Apply(all_rows);

}  // namespace
