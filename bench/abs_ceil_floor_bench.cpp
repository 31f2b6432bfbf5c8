// abs, ceil and floor of integers and decimals.
#include <cstring>

#include "bench/batch.h"
#include "qzhost/decimal.h"

namespace {

using bench::Host;
using bench::Shape;
using bench::Vector;

template <class T>
T random_integer(std::mt19937_64& random) {
    return static_cast<T>(random()) / 2;  // never the lowest, which has no magnitude
}

// 1 to 18 digits, up to 4 of them behind the point, of both signs.
xdec random_decimal(std::mt19937_64& random) {
    static constexpr int64_t kLimits[] = {10, 10000, 1000000000, 100000000000000000};
    const int64_t limit = kLimits[random() % 4];
    const int64_t value = static_cast<int64_t>(random() % static_cast<uint64_t>(limit)) - limit / 2;
    xdec decimal;
    if (xdec_from_unscaled(&decimal, value, static_cast<uint32_t>(random() % 5)) < 0) std::abort();
    return decimal;
}

template <class T, int32_t kType, bop_fn_a* kFunction, auto kMake>
void BM_function(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector x = Vector::of<T>(host, kType, shape, kMake);
    const Vector result(host, kType, shape.rows);
    for (auto _ : state) {
        if (kFunction(host.env(), host.rt_mem(), x.col(), result.col(), shape.rows) != 0) std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, 2 * (sizeof(T) + 1));
}

// ---- Floors ---------------------------------------------------------------------------------------------------------------

// memcpy of values and valid bytes.
template <class T, int32_t kType, auto kMake>
void BM_copy(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector x = Vector::of<T>(host, kType, shape, kMake);
    const Vector result(host, kType, shape.rows);
    for (auto _ : state) {
        std::memcpy(result.values<T>(), x.values<T>(), sizeof(T) * shape.rows);
        std::memcpy(result.col()->data->valid, x.valid(), shape.rows);
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, 2 * (sizeof(T) + 1));
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
    const Host host;
    const Shape shape(state);
    const Vector x = Vector::of<int64_t>(host, HOST_INT64, shape, random_integer<int64_t>);
    const Vector result(host, HOST_INT64, shape.rows);
    int64_t* const out = result.values<int64_t>();
    uint8_t* const out_valid = result.col()->data->valid;
    for (auto _ : state) {
        if (shape.selected) {
            abs_gather(out, out_valid, x.values<int64_t>(), x.valid(), x.col()->sel, shape.rows);
        } else {
            abs_loop(out, out_valid, x.values<int64_t>(), x.valid(), shape.rows);
        }
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, 2 * (sizeof(int64_t) + 1));
}

BENCHMARK(BM_copy<int64_t, HOST_INT64, random_integer<int64_t>>)->Name("BM_copy_8")->Apply(bench::dense_shapes);
BENCHMARK(BM_copy<int32_t, HOST_INT, random_integer<int32_t>>)->Name("BM_copy_4")->Apply(bench::dense_shapes);
BENCHMARK(BM_copy<xdec, HOST_DEC, random_decimal>)->Name("BM_copy_30")->Apply(bench::dense_shapes);
BENCHMARK(BM_loop_abs)->Apply(bench::all_shapes);

#define BENCH_INT64(name) \
    BENCHMARK(BM_function<int64_t, HOST_INT64, name, random_integer<int64_t>>)->Name("BM_" #name)->Apply(bench::all_shapes)
#define BENCH_INT(name) \
    BENCHMARK(BM_function<int32_t, HOST_INT, name, random_integer<int32_t>>)->Name("BM_" #name)->Apply(bench::all_shapes)
#define BENCH_DEC(name) \
    BENCHMARK(BM_function<xdec, HOST_DEC, name, random_decimal>)->Name("BM_" #name)->Apply(bench::all_shapes)

BENCH_INT64(babs_a_math_int);
BENCH_INT64(bceil_a_math_int64);
BENCH_INT64(bfloor_a_math_bigint);
BENCH_INT(bceil_a_math_int);
BENCH_INT(bfloor_a_math_int);
BENCH_DEC(babs_a_math_dec);
BENCH_DEC(bceil_a_math_dec);
BENCH_DEC(bfloor_a_math_dec);

}  // namespace
