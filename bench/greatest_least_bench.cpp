// greatest and least of doubles, bigints and decimals; nanvl and lnnvl.
#include "bench/batch.h"
#include "bench/random_numbers.h"

namespace {

using bench::Batch;
using bench::random_bigint;
using bench::random_decimal;
using bench::random_double;
using bench::Vector;

template <class T, bop_fn_aa* kFunction, auto kMake>
void BM_vectors(benchmark::State& state) {
    Batch<T> batch(state);
    const Vector x = batch.template of<T>(kMake), y = batch.template of<T>(kMake);
    batch.measure(3 * (sizeof(T) + 1),
                  [&] { return kFunction(batch.env(), batch.rt_mem(), x.col(), y.col(), batch.result(), batch.rows()); });
}

template <class T, class Record, bop_fn_av* kFunction, auto kMake>
void BM_constant(benchmark::State& state) {
    Batch<T> batch(state);
    const Vector x = batch.template of<T>(kMake);
    std::mt19937_64 random(1);
    Record y{1, kMake(random)};
    batch.measure(2 * (sizeof(T) + 1), [&] {
        return kFunction(batch.env(), batch.rt_mem(), x.col(), bench::constant(y), batch.result(), batch.rows());
    });
}

// ---- Floors: the plain loops over raw arrays --------------------------------------------------------------------------------

template <class T>
struct Arrays {
    T* out;
    uint8_t* out_valid;
    const T* x;
    const uint8_t* x_valid;
    const T* y;
    const uint8_t* y_valid;
    uint32_t n;
};

BENCH_FLOOR void greatest_doubles(const Arrays<double> a) {
    for (uint32_t i = 0; i < a.n; ++i) a.out[i] = a.x[i] > a.y[i] ? a.x[i] : a.y[i];
    for (uint32_t i = 0; i < a.n; ++i) a.out_valid[i] = a.x_valid[i] & a.y_valid[i];
}

BENCH_FLOOR void greatest_bigints(const Arrays<int64_t> a) {
    for (uint32_t i = 0; i < a.n; ++i) a.out[i] = a.x[i] < a.y[i] ? a.y[i] : a.x[i];
    for (uint32_t i = 0; i < a.n; ++i) a.out_valid[i] = a.x_valid[i] & a.y_valid[i];
}

template <class T, void (*kLoop)(Arrays<T>), auto kMake>
void BM_loop(benchmark::State& state) {
    Batch<T> batch(state);
    const Vector x = batch.template of<T>(kMake), y = batch.template of<T>(kMake);
    const Arrays<T> arrays{batch.out().template values<T>(),
                           batch.result()->data->valid,
                           x.values<T>(),
                           x.valid(),
                           y.values<T>(),
                           y.valid(),
                           batch.rows()};
    batch.measure(3 * (sizeof(T) + 1), [&] { return kLoop(arrays), 0; });
}

BENCHMARK(BM_loop<double, greatest_doubles, random_double>)->Name("BM_loop_greatest_dbl")->Apply(bench::dense_shapes);
BENCHMARK(BM_loop<int64_t, greatest_bigints, random_bigint>)->Name("BM_loop_greatest_bigint")->Apply(bench::dense_shapes);

#define BENCH_AA(name, T, make) BENCHMARK(BM_vectors<T, name, make>)->Name("BM_" #name)->Apply(bench::all_shapes)
#define BENCH_AV(name, T, Record, make) \
    BENCHMARK(BM_constant<T, Record, name, make>)->Name("BM_" #name)->Apply(bench::all_shapes)

BENCH_AA(bgreatest_aa_math_dbl, double, random_double);
BENCH_AV(bgreatest_av_do_math_dbl, double, bdta3_double, random_double);
BENCH_AA(bleast_aa_math, double, random_double);
BENCH_AA(bgreatest_aa_math_bigint, int64_t, random_bigint);
BENCH_AV(bgreatest_av_do_math_bigint, int64_t, bdta3_int64, random_bigint);
BENCH_AA(bleast_aa_math_bigint, int64_t, random_bigint);
BENCH_AA(bgreatest_aa_math_dec, xdec, random_decimal);
BENCH_AV(bgreatest_av_do_math_dec, xdec, bdta3_dec, random_decimal);
BENCH_AA(bnanvl_aa, double, random_double);
BENCH_AV(bnanvl_av, double, bdta3_double, random_double);

}  // namespace
