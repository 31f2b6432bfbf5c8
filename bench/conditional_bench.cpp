// nvl and the conditional operator: fixed widths beside the plain loop over raw arrays, strings beside a copy of the rows.
#include <string>

#include "bench/batch.h"
#include "bench/random_numbers.h"
#include "qzhost/column.h"

namespace {

using bench::Batch;
using bench::random_double;
using bench::Vector;

int32_t random_condition(std::mt19937_64& random) { return static_cast<int32_t>(random() & 1); }

constexpr size_t kDouble = sizeof(double) + 1;
constexpr size_t kCondition = sizeof(int32_t);

void BM_bnvl_double_aa(benchmark::State& state) {
    Batch<double> batch(state);
    const Vector x = batch.of<double>(random_double), y = batch.of<double>(random_double);
    batch.measure(3 * kDouble,
                  [&] { return bnvl_double_aa(batch.env(), batch.rt_mem(), x.col(), y.col(), batch.result(), batch.rows()); });
}

void BM_bnvl_double_av(benchmark::State& state) {
    Batch<double> batch(state);
    const Vector x = batch.of<double>(random_double);
    bdta3_double y{1, 0.0};
    batch.measure(2 * kDouble, [&] {
        return bnvl_double_av(batch.env(), batch.rt_mem(), x.col(), bench::constant(y), batch.result(), batch.rows());
    });
}

void BM_bifoperator_double_aaa(benchmark::State& state) {
    Batch<double> batch(state);
    const Vector condition = batch.of<int32_t>(random_condition);
    const Vector x = batch.of<double>(random_double), y = batch.of<double>(random_double);
    batch.measure(3 * kDouble + kCondition, [&] {
        return bifoperator_double_aaa(batch.env(), batch.rt_mem(), condition.col(), x.col(), y.col(), batch.result(),
                                      batch.rows());
    });
}

void BM_bifoperator_double_avv(benchmark::State& state) {
    Batch<double> batch(state);
    const Vector condition = batch.of<int32_t>(random_condition);
    bdta3_double x{1, 1.0}, y{1, 2.0};
    batch.measure(kDouble + kCondition, [&] {
        return bifoperator_double_avv(batch.env(), batch.rt_mem(), condition.col(), bench::constant(x), bench::constant(y),
                                      batch.result(), batch.rows());
    });
}

// ---- Floors ---------------------------------------------------------------------------------------------------------------

BENCH_FLOOR void nvl_loop(double* out, uint8_t* out_valid, const double* x, const uint8_t* x_valid, const double* y,
                          const uint8_t* y_valid, uint32_t n) {
    for (uint32_t i = 0; i < n; ++i) out[i] = x_valid[i] != 0 ? x[i] : y[i];
    for (uint32_t i = 0; i < n; ++i) out_valid[i] = x_valid[i] | y_valid[i];
}

void BM_loop_nvl(benchmark::State& state) {
    Batch<double> batch(state);
    const Vector x = batch.of<double>(random_double), y = batch.of<double>(random_double);
    batch.measure(3 * kDouble, [&] {
        nvl_loop(batch.out().values<double>(), batch.result()->data->valid, x.values<double>(), x.valid(), y.values<double>(),
                 y.valid(), batch.rows());
        return 0;
    });
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
    Batch<double> batch(state);
    const Vector condition = batch.of<int32_t>(random_condition);
    const Vector x = batch.of<double>(random_double), y = batch.of<double>(random_double);
    batch.measure(3 * kDouble + kCondition, [&] {
        if_loop(batch.out().values<double>(), batch.result()->data->valid, condition.values<int32_t>(), x.values<double>(),
                x.valid(), y.values<double>(), y.valid(), batch.rows());
        return 0;
    });
}

BENCH_FLOOR void if_constants_loop(double* out, uint8_t* out_valid, const int32_t* condition, double yes, double no,
                                   uint8_t yes_valid, uint8_t no_valid, uint32_t n) {
    for (uint32_t i = 0; i < n; ++i) out[i] = condition[i] == 1 ? yes : no;
    for (uint32_t i = 0; i < n; ++i) out_valid[i] = condition[i] == 1 ? yes_valid : no_valid;
}

void BM_loop_if_constants(benchmark::State& state) {
    Batch<double> batch(state);
    const Vector condition = batch.of<int32_t>(random_condition);
    batch.measure(kDouble + kCondition, [&] {
        if_constants_loop(batch.out().values<double>(), batch.result()->data->valid, condition.values<int32_t>(), 1.0, 2.0, 1,
                          1, batch.rows());
        return 0;
    });
}

BENCHMARK(BM_loop_if_constants)->Apply(bench::dense_shapes);
BENCHMARK(BM_loop_nvl)->Apply(bench::all_shapes);
BENCHMARK(BM_bnvl_double_aa)->Apply(bench::all_shapes);
BENCHMARK(BM_bnvl_double_av)->Apply(bench::all_shapes);
BENCHMARK(BM_loop_if)->Apply(bench::all_shapes);
BENCHMARK(BM_bifoperator_double_aaa)->Apply(bench::all_shapes);
BENCHMARK(BM_bifoperator_double_avv)->Apply(bench::all_shapes);

// ---- Strings of 8 to 40 bytes -----------------------------------------------------------------------------------------------

// The result is reset before each batch, as hosts reuse theirs.
using Texts = Batch<bdta3_colstr>;

Vector texts(const Texts& batch, uint32_t seed) {
    Vector vector = batch.of<bdta3_colstr>([](std::mt19937_64&) { return bdta3_colstr{}; });
    std::mt19937 random(seed);
    for (uint32_t i = 0; i < batch.rows(); ++i) {
        if (vector.valid()[i] == 0) continue;
        const std::string text(8 + random() % 33, 't');
        if (host_col_set_text(vector.col(), i, text.data(), static_cast<uint32_t>(text.size()), 0) != 0) std::abort();
    }
    return vector;
}

constexpr size_t kText = 24;

void BM_copy_texts(benchmark::State& state) {
    Texts batch(state);
    const Vector x = texts(batch, 1);
    batch.measure(kText, [&] {
        host_col_reset(batch.result());
        return bdta3_col_copy(batch.env(), batch.rt_mem(), batch.result(), x.col(), batch.rows());
    });
}

void BM_bnvl_varchar_aa(benchmark::State& state) {
    Texts batch(state);
    const Vector x = texts(batch, 1), y = texts(batch, 2);
    batch.measure(kText, [&] {
        host_col_reset(batch.result());
        return bnvl_varchar_aa(batch.env(), batch.rt_mem(), x.col(), y.col(), batch.result(), batch.rows());
    });
}

void BM_bifoperator_varchar_aaa(benchmark::State& state) {
    Texts batch(state);
    const Vector condition = batch.of<int32_t>(random_condition);
    const Vector x = texts(batch, 1), y = texts(batch, 2);
    batch.measure(kText, [&] {
        host_col_reset(batch.result());
        return bifoperator_varchar_aaa(batch.env(), batch.rt_mem(), condition.col(), x.col(), y.col(), batch.result(),
                                       batch.rows());
    });
}

BENCHMARK(BM_copy_texts)->Apply(bench::all_shapes);
BENCHMARK(BM_bnvl_varchar_aa)->Apply(bench::all_shapes);
BENCHMARK(BM_bifoperator_varchar_aaa)->Apply(bench::all_shapes);

}  // namespace
