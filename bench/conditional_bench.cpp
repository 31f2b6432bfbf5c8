// nvl and the conditional operator: fixed widths beside the plain loop over raw arrays, strings beside a copy of the rows.
#include <string>

#include "bench/batch.h"
#include "qzhost/column.h"

namespace {

using bench::Host;
using bench::Shape;
using bench::Vector;

double random_double(std::mt19937_64& random) { return static_cast<double>(static_cast<int64_t>(random())) / 1e12; }
int32_t random_condition(std::mt19937_64& random) { return static_cast<int32_t>(random() & 1); }

void BM_bnvl_double_aa(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector x = Vector::of<double>(host, HOST_DOUBLE, shape, random_double);
    const Vector y = Vector::of<double>(host, HOST_DOUBLE, shape, random_double);
    const Vector result(host, HOST_DOUBLE, shape.rows);
    for (auto _ : state) {
        if (bnvl_double_aa(host.env(), host.rt_mem(), x.col(), y.col(), result.col(), shape.rows) != 0) std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, 3 * (sizeof(double) + 1));
}

void BM_bnvl_double_av(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector x = Vector::of<double>(host, HOST_DOUBLE, shape, random_double);
    const Vector result(host, HOST_DOUBLE, shape.rows);
    bdta3_double y{1, 0.0};
    for (auto _ : state) {
        if (bnvl_double_av(host.env(), host.rt_mem(), x.col(), reinterpret_cast<bdta3_scalar*>(&y), result.col(), shape.rows) !=
            0)
            std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, 2 * (sizeof(double) + 1));
}

void BM_bifoperator_double_aaa(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector condition = Vector::of<int32_t>(host, HOST_INT, shape, random_condition);
    const Vector x = Vector::of<double>(host, HOST_DOUBLE, shape, random_double);
    const Vector y = Vector::of<double>(host, HOST_DOUBLE, shape, random_double);
    const Vector result(host, HOST_DOUBLE, shape.rows);
    for (auto _ : state) {
        if (bifoperator_double_aaa(host.env(), host.rt_mem(), condition.col(), x.col(), y.col(), result.col(), shape.rows) != 0)
            std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, 3 * (sizeof(double) + 1) + sizeof(int32_t));
}

void BM_bifoperator_double_avv(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector condition = Vector::of<int32_t>(host, HOST_INT, shape, random_condition);
    const Vector result(host, HOST_DOUBLE, shape.rows);
    bdta3_double x{1, 1.0};
    bdta3_double y{1, 2.0};
    for (auto _ : state) {
        if (bifoperator_double_avv(host.env(), host.rt_mem(), condition.col(), reinterpret_cast<bdta3_scalar*>(&x),
                                   reinterpret_cast<bdta3_scalar*>(&y), result.col(), shape.rows) != 0)
            std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, sizeof(double) + 1 + sizeof(int32_t));
}

// ---- Floors ---------------------------------------------------------------------------------------------------------------

BENCH_FLOOR void nvl_loop(double* out, uint8_t* out_valid, const double* x, const uint8_t* x_valid, const double* y,
                          const uint8_t* y_valid, uint32_t n) {
    for (uint32_t i = 0; i < n; ++i) out[i] = x_valid[i] != 0 ? x[i] : y[i];
    for (uint32_t i = 0; i < n; ++i) out_valid[i] = x_valid[i] | y_valid[i];
}

void BM_loop_nvl(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector x = Vector::of<double>(host, HOST_DOUBLE, shape, random_double);
    const Vector y = Vector::of<double>(host, HOST_DOUBLE, shape, random_double);
    const Vector result(host, HOST_DOUBLE, shape.rows);
    for (auto _ : state) {
        nvl_loop(result.values<double>(), result.col()->data->valid, x.values<double>(), x.valid(), y.values<double>(),
                 y.valid(), shape.rows);
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, 3 * (sizeof(double) + 1));
}

BENCH_FLOOR void if_loop(double* out, uint8_t* out_valid, const int32_t* condition, const double* x, const uint8_t* x_valid,
                         const double* y, const uint8_t* y_valid, uint32_t n) {
    for (uint32_t i = 0; i < n; ++i) {
        const double yes = x[i], no = y[i];
        out[i] = condition[i] == 1 ? yes : no;
    }
    for (uint32_t i = 0; i < n; ++i) {
        const uint8_t yes = x_valid[i], no = y_valid[i];
        out_valid[i] = condition[i] == 1 ? yes : no;
    }
}

void BM_loop_if(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector condition = Vector::of<int32_t>(host, HOST_INT, shape, random_condition);
    const Vector x = Vector::of<double>(host, HOST_DOUBLE, shape, random_double);
    const Vector y = Vector::of<double>(host, HOST_DOUBLE, shape, random_double);
    const Vector result(host, HOST_DOUBLE, shape.rows);
    for (auto _ : state) {
        if_loop(result.values<double>(), result.col()->data->valid, condition.values<int32_t>(), x.values<double>(), x.valid(),
                y.values<double>(), y.valid(), shape.rows);
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, 3 * (sizeof(double) + 1) + sizeof(int32_t));
}

BENCH_FLOOR void if_constants_loop(double* out, uint8_t* out_valid, const int32_t* condition, double yes, double no,
                                   uint8_t yes_valid, uint8_t no_valid, uint32_t n) {
    for (uint32_t i = 0; i < n; ++i) out[i] = condition[i] == 1 ? yes : no;
    for (uint32_t i = 0; i < n; ++i) out_valid[i] = condition[i] == 1 ? yes_valid : no_valid;
}

void BM_loop_if_constants(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector condition = Vector::of<int32_t>(host, HOST_INT, shape, random_condition);
    const Vector result(host, HOST_DOUBLE, shape.rows);
    for (auto _ : state) {
        if_constants_loop(result.values<double>(), result.col()->data->valid, condition.values<int32_t>(), 1.0, 2.0, 1, 1,
                          shape.rows);
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, sizeof(double) + 1 + sizeof(int32_t));
}

BENCHMARK(BM_loop_if_constants)->Apply(bench::dense_shapes);
BENCHMARK(BM_loop_nvl)->Apply(bench::all_shapes);
BENCHMARK(BM_bnvl_double_aa)->Apply(bench::all_shapes);
BENCHMARK(BM_bnvl_double_av)->Apply(bench::all_shapes);
BENCHMARK(BM_loop_if)->Apply(bench::all_shapes);
BENCHMARK(BM_bifoperator_double_aaa)->Apply(bench::all_shapes);
BENCHMARK(BM_bifoperator_double_avv)->Apply(bench::all_shapes);

// ---- Strings of 8 to 40 bytes -----------------------------------------------------------------------------------------------

// A text vector of the shape; the result is reset before each batch, as hosts reuse theirs.
Vector texts(const Host& host, const Shape& shape, uint32_t seed) {
    Vector vector = Vector::of<bdta3_colstr>(host, HOST_STR, shape, [](std::mt19937_64&) { return bdta3_colstr{}; });
    std::mt19937 random(seed);
    for (uint32_t i = 0; i < shape.rows; ++i) {
        if (vector.valid()[i] == 0) continue;
        const std::string text(8 + random() % 33, 't');
        if (host_col_set_text(vector.col(), i, text.data(), static_cast<uint32_t>(text.size()), 0) != 0) std::abort();
    }
    return vector;
}

void BM_copy_texts(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector x = texts(host, shape, 1);
    const Vector result(host, HOST_STR, shape.rows);
    for (auto _ : state) {
        host_col_reset(result.col());
        if (bdta3_col_copy(host.env(), host.rt_mem(), result.col(), x.col(), shape.rows) != 0) std::abort();
    }
    bench::report(state, shape.rows, 24);
}

void BM_bnvl_varchar_aa(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector x = texts(host, shape, 1);
    const Vector y = texts(host, shape, 2);
    const Vector result(host, HOST_STR, shape.rows);
    for (auto _ : state) {
        host_col_reset(result.col());
        if (bnvl_varchar_aa(host.env(), host.rt_mem(), x.col(), y.col(), result.col(), shape.rows) != 0) std::abort();
    }
    bench::report(state, shape.rows, 24);
}

void BM_bifoperator_varchar_aaa(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector condition = Vector::of<int32_t>(host, HOST_INT, shape, random_condition);
    const Vector x = texts(host, shape, 1);
    const Vector y = texts(host, shape, 2);
    const Vector result(host, HOST_STR, shape.rows);
    for (auto _ : state) {
        host_col_reset(result.col());
        if (bifoperator_varchar_aaa(host.env(), host.rt_mem(), condition.col(), x.col(), y.col(), result.col(), shape.rows) !=
            0)
            std::abort();
    }
    bench::report(state, shape.rows, 24);
}

BENCHMARK(BM_copy_texts)->Apply(bench::all_shapes);
BENCHMARK(BM_bnvl_varchar_aa)->Apply(bench::all_shapes);
BENCHMARK(BM_bifoperator_varchar_aaa)->Apply(bench::all_shapes);

}  // namespace
