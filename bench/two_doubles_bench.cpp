// The functions of two numbers, with two vectors and with a constant, each beside the plain loop over the rows that have a
// value.
#include <cmath>
#include <limits>

#include "bench/batch.h"

namespace {

using bench::Host;
using bench::Shape;
using bench::Vector;

void shapes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"null", "sel", "rows"});
    for (const int64_t nulls : {0, 1, 50}) benchmark->Args({nulls, 0, 65536});
    benchmark->Args({0, 1, 65536});
}

template <class T>
T random_number(std::mt19937_64& random);
template <>
double random_number(std::mt19937_64& random) {
    return 0.5 + 1000.0 * (static_cast<double>(random() >> 11) * 0x1p-53);
}
template <>
int64_t random_number(std::mt19937_64& random) {
    return static_cast<int64_t>(random() % 1000000000000);
}

template <class T>
T random_divisor(std::mt19937_64& random);
template <>
double random_divisor(std::mt19937_64& random) {
    return 1.5 + 10.0 * (static_cast<double>(random() >> 11) * 0x1p-53);
}
template <>
int64_t random_divisor(std::mt19937_64& random) {
    return static_cast<int64_t>(1 + random() % 100000);
}

int64_t random_wide(std::mt19937_64& random) { return static_cast<int64_t>(random()); }
int64_t random_wide_divisor(std::mt19937_64& random) { return static_cast<int64_t>(random() >> 20) + 1; }

template <class T>
struct Operands {
    using Make = T (*)(std::mt19937_64&);
    using Record = std::conditional_t<std::is_same_v<T, double>, bdta3_double, bdta3_int64>;
    static constexpr int32_t kType = std::is_same_v<T, double> ? HOST_DOUBLE : HOST_INT64;

    Host host;
    Vector x;
    Vector y;
    Vector result;
    Record constant;
    uint32_t rows;

    Operands(const benchmark::State& state, Make make_x, Make make_y, T y_constant)
        : x(Vector::of<T>(host, kType, Shape(state), make_x)),
          y(Vector::of<T>(host, kType, Shape(state), make_y)),
          result(host, kType, Shape(state).rows),
          constant{1, y_constant},
          rows(Shape(state).rows) {}
};

template <class T, bop_fn_aa* kFunction, auto kX, auto kY>
void BM_vectors(benchmark::State& state) {
    const Operands<T> o(state, kX, kY, T{});
    for (auto _ : state) {
        if (kFunction(o.host.env(), o.host.rt_mem(), o.x.col(), o.y.col(), o.result.col(), o.rows) != 0) std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, o.rows, 3 * (sizeof(T) + 1));
}

template <class T, bop_fn_av* kFunction, auto kX, int kHundredths>
void BM_second_constant(benchmark::State& state) {
    Operands<T> o(state, kX, kX, static_cast<T>(kHundredths) / 100);
    auto* const constant = reinterpret_cast<bdta3_scalar*>(&o.constant);
    for (auto _ : state) {
        if (kFunction(o.host.env(), o.host.rt_mem(), o.x.col(), constant, o.result.col(), o.rows) != 0) std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, o.rows, 2 * (sizeof(T) + 1));
}

template <class T, bop_fn_va* kFunction, auto kX, int kHundredths>
void BM_first_constant(benchmark::State& state) {
    Operands<T> o(state, kX, kX, static_cast<T>(kHundredths) / 100);
    auto* const constant = reinterpret_cast<bdta3_scalar*>(&o.constant);
    for (auto _ : state) {
        if (kFunction(o.host.env(), o.host.rt_mem(), constant, o.x.col(), o.result.col(), o.rows) != 0) std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, o.rows, 2 * (sizeof(T) + 1));
}

// ---- Plain loops ------------------------------------------------------------------------------------------------------------

template <auto kRow, class T, bool kSelected>
[[gnu::noinline]] void loop(const Operands<T>& o) {
    T* const out = o.result.template values<T>();
    uint8_t* const out_valid = o.result.col()->data->valid;
    const T* const x = o.x.template values<T>();
    const T* const y = o.y.template values<T>();
    const uint8_t* const x_valid = o.x.valid();
    const uint8_t* const y_valid = o.y.valid();
    const uint16_t* const x_sel = o.x.col()->sel;
    const uint16_t* const y_sel = o.y.col()->sel;
    const uint32_t n = o.rows;
    for (uint32_t i = 0; i < n; ++i) {
        const uint32_t x_row = kSelected ? x_sel[i] : i;
        const uint32_t y_row = kSelected ? y_sel[i] : i;
        out_valid[i] = x_valid[x_row] & y_valid[y_row];
        if (out_valid[i] == 0) continue;
        if (!kRow(x[x_row], y[y_row], out[i])) std::abort();
    }
}

template <auto kRow, class T, bool kSelected>
[[gnu::noinline]] void constant_loop(const Operands<T>& o) {
    T* const out = o.result.template values<T>();
    uint8_t* const out_valid = o.result.col()->data->valid;
    const T* const x = o.x.template values<T>();
    const T y = o.constant.value;
    const uint8_t* const x_valid = o.x.valid();
    const uint16_t* const x_sel = o.x.col()->sel;
    const uint32_t n = o.rows;
    for (uint32_t i = 0; i < n; ++i) {
        const uint32_t row = kSelected ? x_sel[i] : i;
        out_valid[i] = x_valid[row];
        if (out_valid[i] == 0) continue;
        if (!kRow(x[row], y, out[i])) std::abort();
    }
}

template <class T, auto kRow, auto kX, auto kY>
void BM_loop(benchmark::State& state) {
    const Operands<T> o(state, kX, kY, T{});
    for (auto _ : state) {
        Shape(state).selected ? loop<kRow, T, true>(o) : loop<kRow, T, false>(o);
        benchmark::ClobberMemory();
    }
    bench::report(state, o.rows, 3 * (sizeof(T) + 1));
}

template <class T, auto kRow, auto kX, int kHundredths>
void BM_constant_loop(benchmark::State& state) {
    const Operands<T> o(state, kX, kX, static_cast<T>(kHundredths) / 100);
    for (auto _ : state) {
        Shape(state).selected ? constant_loop<kRow, T, true>(o) : constant_loop<kRow, T, false>(o);
        benchmark::ClobberMemory();
    }
    bench::report(state, o.rows, 2 * (sizeof(T) + 1));
}

bool atan2_row(double x, double y, double& out) { return !(x == 0.0 && y == 0.0) && (out = std::atan2(x, y), true); }
bool log_row(double base, double x, double& out) {
    return !(base <= 0.0 || x <= 0.0 || base == 1.0) && (out = std::log(x) / std::log(base), true);
}
bool log_of_base_row(double x, double base, double& out) { return log_row(base, x, out); }
bool mod_row(double x, double y, double& out) { return out = y == 0.0 ? x : std::fmod(x, y), true; }
bool mod_of_bigints_row(int64_t x, int64_t y, int64_t& out) { return out = y == 0 ? x : y == -1 ? 0 : x % y, true; }
bool power_row(double x, double y, double& out) {
    if ((x == 0.0 && y < 0.0) || (x < 0.0 && std::ceil(y) != y)) return false;
    return !(std::fabs(out = std::pow(x, y)) > std::numeric_limits<double>::max());
}
bool remainder_row(double x, double y, double& out) { return y != 0.0 && (out = std::remainder(x, y), true); }

constexpr auto kNumber = random_number<double>;
constexpr auto kDivisor = random_divisor<double>;
constexpr auto kBigint = random_number<int64_t>;
constexpr auto kBigintDivisor = random_divisor<int64_t>;

#define BENCH_VECTORS(export_name, row, T, x, y)                                       \
    BENCHMARK(BM_loop<T, row, x, y>)->Name("BM_loop_of_" #export_name)->Apply(shapes); \
    BENCHMARK(BM_vectors<T, export_name, x, y>)->Name("BM_" #export_name)->Apply(shapes)
#define BENCH_CONSTANT(export_name, row, T, x, y)                                               \
    BENCHMARK(BM_constant_loop<T, row, x, y>)->Name("BM_loop_of_" #export_name)->Apply(shapes); \
    BENCHMARK(BM_second_constant<T, export_name, x, y>)->Name("BM_" #export_name)->Apply(shapes)

BENCH_VECTORS(batan2_aa_math_dbl, atan2_row, double, kNumber, kDivisor);
BENCH_VECTORS(blog_aa_math_dbl, log_row, double, kDivisor, kNumber);
BENCHMARK(BM_constant_loop<double, log_of_base_row, kNumber, 1000>)->Name("BM_loop_of_blog_va_do_math_dbl")->Apply(shapes);
BENCHMARK(BM_first_constant<double, blog_va_do_math_dbl, kNumber, 1000>)->Name("BM_blog_va_do_math_dbl")->Apply(shapes);
BENCH_VECTORS(bmod_aa_math_dbl, mod_row, double, kNumber, kDivisor);
BENCH_CONSTANT(bmod_av_do_math_dbl, mod_row, double, kNumber, 725);
BENCH_VECTORS(bmod_aa_math_int64, mod_of_bigints_row, int64_t, kBigint, kBigintDivisor);
BENCH_CONSTANT(bmod_av_do_math_int64, mod_of_bigints_row, int64_t, kBigint, 100000);
BENCHMARK(BM_loop<int64_t, mod_of_bigints_row, random_wide, random_wide_divisor>)
    ->Name("BM_loop_of_wide_bigints")
    ->Apply(shapes);
BENCHMARK(BM_vectors<int64_t, bmod_aa_math_int64, random_wide, random_wide_divisor>)
    ->Name("BM_bmod_aa_math_int64/wide")
    ->Apply(shapes);
BENCH_VECTORS(bpower_aa_math_dbl, power_row, double, kNumber, kDivisor);
BENCH_CONSTANT(bpower_av_do_math_dbl, power_row, double, kNumber, 170);
BENCH_VECTORS(bremainder_aa, remainder_row, double, kNumber, kDivisor);
BENCH_CONSTANT(bremainder_av, remainder_row, double, kNumber, 725);

}  // namespace
