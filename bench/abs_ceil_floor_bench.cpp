// abs, ceil and floor of integers and decimals.
#include "bench/batch.h"
#include "bench/random_numbers.h"

namespace {

using bench::Batch;
using bench::random_decimal;
using bench::Vector;

template <class T>
T random_integer(std::mt19937_64& random) {
    return static_cast<T>(random()) / 2;  // never the lowest, which has no magnitude
}

template <class T, bop_fn_a* kFunction, auto kMake>
void BM_function(benchmark::State& state) {
    Batch<T> batch(state);
    const Vector x = batch.template of<T>(kMake);
    batch.measure(2 * (sizeof(T) + 1),
                  [&] { return kFunction(batch.env(), batch.rt_mem(), x.col(), batch.result(), batch.rows()); });
}

// ---- Floors ---------------------------------------------------------------------------------------------------------------

template <class T, auto kMake>
void BM_copy(benchmark::State& state) {
    Batch<T> batch(state);
    batch.measure_copy(batch.template of<T>(kMake));
}

BENCH_FLOOR void abs_loop(int64_t* out, uint8_t* out_valid, const int64_t* x, const uint8_t* valid, uint32_t n) {
    for (uint32_t i = 0; i < n; ++i) out[i] = x[i] < 0 ? -x[i] : x[i];
    for (uint32_t i = 0; i < n; ++i) out_valid[i] = valid[i];
}

BENCH_FLOOR void abs_gather(int64_t* out, uint8_t* out_valid, const int64_t* x, const uint8_t* valid, const uint16_t* sel,
                            uint32_t n) {
    for (uint32_t i = 0; i < n; ++i) {
        const int64_t value = x[sel[i]];
        out[i] = value < 0 ? -value : value;
        out_valid[i] = valid[sel[i]];
    }
}

void BM_loop_abs(benchmark::State& state) {
    Batch<int64_t> batch(state);
    const Vector x = batch.of<int64_t>(random_integer<int64_t>);
    int64_t* const out = batch.out().values<int64_t>();
    uint8_t* const out_valid = batch.result()->data->valid;
    batch.measure(2 * (sizeof(int64_t) + 1), [&] {
        if (batch.selected()) {
            abs_gather(out, out_valid, x.values<int64_t>(), x.valid(), x.col()->sel, batch.rows());
        } else {
            abs_loop(out, out_valid, x.values<int64_t>(), x.valid(), batch.rows());
        }
        return 0;
    });
}

BENCHMARK(BM_copy<int64_t, random_integer<int64_t>>)->Name("BM_copy_8")->Apply(bench::dense_shapes);
BENCHMARK(BM_copy<int32_t, random_integer<int32_t>>)->Name("BM_copy_4")->Apply(bench::dense_shapes);
BENCHMARK(BM_copy<xdec, random_decimal>)->Name("BM_copy_30")->Apply(bench::dense_shapes);
BENCHMARK(BM_loop_abs)->Apply(bench::all_shapes);

#define BENCH_INT64(name) \
    BENCHMARK(BM_function<int64_t, name, random_integer<int64_t>>)->Name("BM_" #name)->Apply(bench::all_shapes)
#define BENCH_INT(name) \
    BENCHMARK(BM_function<int32_t, name, random_integer<int32_t>>)->Name("BM_" #name)->Apply(bench::all_shapes)
#define BENCH_DEC(name) BENCHMARK(BM_function<xdec, name, random_decimal>)->Name("BM_" #name)->Apply(bench::all_shapes)

BENCH_INT64(babs_a_math_int);
BENCH_INT64(bceil_a_math_int64);
BENCH_INT64(bfloor_a_math_bigint);
BENCH_INT(bceil_a_math_int);
BENCH_INT(bfloor_a_math_int);
BENCH_DEC(babs_a_math_dec);
BENCH_DEC(bceil_a_math_dec);
BENCH_DEC(bfloor_a_math_dec);

}  // namespace
