// greatest and least of doubles, bigints and decimals; nanvl and lnnvl.
#include "bench/batch.h"
#include "qzhost/decimal.h"

namespace {

using bench::Host;
using bench::Shape;
using bench::Vector;

double random_double(std::mt19937_64& random) { return static_cast<double>(static_cast<int64_t>(random())) / 1e12; }
int64_t random_bigint(std::mt19937_64& random) { return static_cast<int64_t>(random()) >> 20; }
xdec random_decimal(std::mt19937_64& random) {
    xdec decimal;
    if (xdec_from_unscaled(&decimal, random_bigint(random), static_cast<uint32_t>(random() % 5)) < 0) std::abort();
    return decimal;
}

template <class T, int32_t kType, bop_fn_aa* kFunction, auto kMake>
void BM_vectors(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector x = Vector::of<T>(host, kType, shape, kMake);
    const Vector y = Vector::of<T>(host, kType, shape, kMake);
    const Vector result(host, kType, shape.rows);
    for (auto _ : state) {
        if (kFunction(host.env(), host.rt_mem(), x.col(), y.col(), result.col(), shape.rows) != 0) std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, 3 * (sizeof(T) + 1));
}

template <class T, class Record, int32_t kType, bop_fn_av* kFunction, auto kMake>
void BM_constant(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector x = Vector::of<T>(host, kType, shape, kMake);
    const Vector result(host, kType, shape.rows);
    std::mt19937_64 random(1);
    Record y{1, kMake(random)};
    for (auto _ : state) {
        if (kFunction(host.env(), host.rt_mem(), x.col(), reinterpret_cast<bdta3_scalar*>(&y), result.col(), shape.rows) != 0)
            std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, 2 * (sizeof(T) + 1));
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

template <class T, int32_t kType, void (*kLoop)(Arrays<T>), auto kMake>
void BM_loop(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector x = Vector::of<T>(host, kType, shape, kMake);
    const Vector y = Vector::of<T>(host, kType, shape, kMake);
    const Vector result(host, kType, shape.rows);
    for (auto _ : state) {
        kLoop({result.values<T>(), result.col()->data->valid, x.values<T>(), x.valid(), y.values<T>(), y.valid(), shape.rows});
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, 3 * (sizeof(T) + 1));
}

BENCHMARK(BM_loop<double, HOST_DOUBLE, greatest_doubles, random_double>)
    ->Name("BM_loop_greatest_dbl")
    ->Apply(bench::dense_shapes);
BENCHMARK(BM_loop<int64_t, HOST_INT64, greatest_bigints, random_bigint>)
    ->Name("BM_loop_greatest_bigint")
    ->Apply(bench::dense_shapes);

#define BENCH_AA(name, T, kType, make) BENCHMARK(BM_vectors<T, kType, name, make>)->Name("BM_" #name)->Apply(bench::all_shapes)
#define BENCH_AV(name, T, Record, kType, make) \
    BENCHMARK(BM_constant<T, Record, kType, name, make>)->Name("BM_" #name)->Apply(bench::all_shapes)

BENCH_AA(bgreatest_aa_math_dbl, double, HOST_DOUBLE, random_double);
BENCH_AV(bgreatest_av_do_math_dbl, double, bdta3_double, HOST_DOUBLE, random_double);
BENCH_AA(bleast_aa_math, double, HOST_DOUBLE, random_double);
BENCH_AA(bgreatest_aa_math_bigint, int64_t, HOST_INT64, random_bigint);
BENCH_AV(bgreatest_av_do_math_bigint, int64_t, bdta3_int64, HOST_INT64, random_bigint);
BENCH_AA(bleast_aa_math_bigint, int64_t, HOST_INT64, random_bigint);
BENCH_AA(bgreatest_aa_math_dec, xdec, HOST_DEC, random_decimal);
BENCH_AV(bgreatest_av_do_math_dec, xdec, bdta3_dec, HOST_DEC, random_decimal);
BENCH_AA(bnanvl_aa, double, HOST_DOUBLE, random_double);
BENCH_AV(bnanvl_av, double, bdta3_double, HOST_DOUBLE, random_double);

}  // namespace
