// The functions of one double, each beside its plain loop: over all rows where the computation is cheap and cannot fail, over
// the rows that have a value, with the domain test, where it is a call of the C library.
#include <cmath>
#include <limits>

#include "bench/batch.h"

namespace {

using bench::Host;
using bench::Shape;
using bench::Vector;

constexpr double kPi = 3.14159265358979;

template <int kLow, int kHigh>
double random_double(std::mt19937_64& random) {
    return kLow + (kHigh - kLow) * (static_cast<double>(random() >> 11) * 0x1p-53);
}

using Make = double (*)(std::mt19937_64&);
constexpr Make kAny = random_double<-100, 100>;
constexpr Make kPositive = random_double<0, 1000>;
constexpr Make kUnit = random_double<-1, 1>;
constexpr Make kSmall = random_double<-20, 20>;

void shapes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"null", "sel", "rows"});
    for (const int64_t nulls : {0, 1, 50}) benchmark->Args({nulls, 0, 65536});
    benchmark->Args({0, 1, 65536});
}

template <class R, bop_fn_a* kFunction, Make kMake>
void BM_function(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector x = Vector::of<double>(host, HOST_DOUBLE, shape, kMake);
    const Vector result(host, sizeof(R) == 4 ? HOST_INT : HOST_DOUBLE, shape.rows);
    for (auto _ : state) {
        if (kFunction(host.env(), host.rt_mem(), x.col(), result.col(), shape.rows) != 0) std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, sizeof(double) + sizeof(R) + 2);
}

// ---- Plain loops ------------------------------------------------------------------------------------------------------------

template <class R>
struct Arrays {
    R* out;
    uint8_t* out_valid;
    const double* x;
    const uint8_t* valid;
    const uint16_t* sel;
    uint32_t n;
};

#define CHEAP_LOOP(name, R, computation)                                       \
    BENCH_FLOOR void name##_dense(const Arrays<R> a) {                         \
        for (uint32_t i = 0; i < a.n; ++i) {                                   \
            const double x = a.x[i];                                           \
            a.out[i] = computation;                                            \
        }                                                                      \
        for (uint32_t i = 0; i < a.n; ++i) a.out_valid[i] = a.valid[i];        \
    }                                                                          \
    BENCH_FLOOR void name##_selected(const Arrays<R> a) {                      \
        for (uint32_t i = 0; i < a.n; ++i) {                                   \
            const double x = a.x[a.sel[i]];                                    \
            a.out[i] = computation;                                            \
        }                                                                      \
        for (uint32_t i = 0; i < a.n; ++i) a.out_valid[i] = a.valid[a.sel[i]]; \
    }                                                                          \
    void name##_loop(const Arrays<R> a) { a.sel != nullptr ? name##_selected(a) : name##_dense(a); }

CHEAP_LOOP(abs, double, std::fabs(x))
CHEAP_LOOP(ceil, double, std::ceil(x))
CHEAP_LOOP(floor, double, std::floor(x))
CHEAP_LOOP(sqrt, double, std::sqrt(x))
CHEAP_LOOP(radians, double, x* kPi / 180.0)
CHEAP_LOOP(degrees, double, x * 180.0 / kPi)
CHEAP_LOOP(sign, int32_t, (x > 0.0) - (x < 0.0))

// A row of a call: whether x is in the domain and the result no overflow, and the result.
template <auto kCompute>
[[gnu::noinline]] void call_loop(const Arrays<double> a) {
    for (uint32_t i = 0; i < a.n; ++i) {
        const uint32_t row = a.sel != nullptr ? a.sel[i] : i;
        a.out_valid[i] = a.valid[row];
        if (a.valid[row] == 0) continue;
        if (!kCompute(a.x[row], a.out[i])) std::abort();
    }
}

bool in_unit(double x) { return !(x > 1.0 || x < -1.0); }
bool not_overflowed(double x) { return !(std::fabs(x) > std::numeric_limits<double>::max()); }

bool acos_row(double x, double& out) { return in_unit(x) && (out = std::acos(x), true); }
bool asin_row(double x, double& out) { return in_unit(x) && (out = std::asin(x), true); }
bool atan_row(double x, double& out) { return out = std::atan(x), true; }
bool cos_row(double x, double& out) { return out = std::cos(x), true; }
bool cosh_row(double x, double& out) { return not_overflowed(out = std::cosh(x)); }
bool cot_row(double x, double& out) { return x != 0.0 && (out = 1.0 / std::tan(x), true); }
bool exp_row(double x, double& out) { return not_overflowed(out = std::exp(x)); }
bool ln_row(double x, double& out) { return !(x <= 0.0) && (out = std::log(x), true); }
bool log10_row(double x, double& out) { return !(x <= 0.0) && (out = std::log10(x), true); }
bool sin_row(double x, double& out) { return out = std::sin(x), true; }
bool sinh_row(double x, double& out) { return not_overflowed(out = std::sinh(x)); }
bool tan_row(double x, double& out) { return out = std::tan(x), true; }
bool tanh_row(double x, double& out) { return out = std::tanh(x), true; }
bool rand_row(double x, double& out) {
    const uint32_t seed = x >= -0x1p63 && x < 0x1p63 ? static_cast<uint32_t>(static_cast<int64_t>(x)) : 0;
    const uint32_t drawn = seed * 214013u + 2531011u;
    return out = (drawn >> 16 & 0x7FFF) / 32767.0, true;
}

template <class R, void (*kLoop)(Arrays<R>), Make kMake>
void BM_loop(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector x = Vector::of<double>(host, HOST_DOUBLE, shape, kMake);
    const Vector result(host, sizeof(R) == 4 ? HOST_INT : HOST_DOUBLE, shape.rows);
    for (auto _ : state) {
        kLoop({result.values<R>(), result.col()->data->valid, x.values<double>(), x.valid(), x.col()->sel, shape.rows});
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, sizeof(double) + sizeof(R) + 2);
}

#define BENCH_CHEAP(export_name, name, R, make)                                      \
    BENCHMARK(BM_loop<R, name##_loop, make>)->Name("BM_loop_" #name)->Apply(shapes); \
    BENCHMARK(BM_function<R, export_name, make>)->Name("BM_" #export_name)->Apply(shapes)
#define BENCH_CALL(export_name, name, make)                                                         \
    BENCHMARK(BM_loop<double, call_loop<name##_row>, make>)->Name("BM_loop_" #name)->Apply(shapes); \
    BENCHMARK(BM_function<double, export_name, make>)->Name("BM_" #export_name)->Apply(shapes)

BENCH_CHEAP(babs_a_math_dbl, abs, double, kAny);
BENCH_CHEAP(bceil_a_math_dbl, ceil, double, kAny);
BENCH_CHEAP(bdegrees_a_math_dbl, degrees, double, kAny);
BENCH_CHEAP(bfloor_a_math_dbl, floor, double, kAny);
BENCH_CHEAP(bradians_a_math_dbl, radians, double, kAny);
BENCH_CHEAP(bsign_a_math_dbl, sign, int32_t, kAny);
BENCH_CHEAP(bsqrt_a_math_dbl, sqrt, double, kPositive);
BENCH_CALL(bacos_a_math_dbl, acos, kUnit);
BENCH_CALL(basin_a_math_dbl, asin, kUnit);
BENCH_CALL(batan_a_math_dbl, atan, kAny);
BENCH_CALL(bcos_a_math_dbl, cos, kAny);
BENCH_CALL(bcosh_a_math_dbl, cosh, kSmall);
BENCH_CALL(bcot_a_math_dbl, cot, kAny);
BENCH_CALL(bexp_a_math_dbl, exp, kSmall);
BENCH_CALL(bln_a_math_dbl, ln, kPositive);
BENCH_CALL(blog10_a_math_dbl, log10, kPositive);
BENCH_CALL(brand_a_math_int, rand, kAny);
BENCH_CALL(bsin_a_math_dbl, sin, kAny);
BENCH_CALL(bsinh_a_math_dbl, sinh, kSmall);
BENCH_CALL(btan_a_math_dbl, tan, kAny);
BENCH_CALL(btanh_a_math_dbl, tanh, kSmall);

}  // namespace
