// round and trunc of doubles, decimals and texts.
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <deque>
#include <string>

#include "bench/batch.h"
#include "bench/random_numbers.h"

namespace {

using bench::Host;
using bench::kHostType;
using bench::random_decimal;
using bench::random_double;
using bench::Shape;
using bench::Vector;

// ---- Arguments --------------------------------------------------------------------------------------------------------------

int32_t random_places(std::mt19937_64& random) { return static_cast<int32_t>(random() % 7) - 2; }

// -12.345678, 12345, 7.5: nine digits at most before the point and six behind it.
bdta3_colstr random_number_text(std::mt19937_64& random) {
    static std::deque<std::string> texts;  // where the slots of all vectors lead
    char text[40];
    const double value = static_cast<double>(bench::random_bigint(random) % 1'000'000'000'000) / 1e3;
    const int len = std::snprintf(text, sizeof text, "%.*f", static_cast<int>(random() % 7), value);
    texts.emplace_back(text, static_cast<size_t>(len));
    return {static_cast<uint32_t>(len), 0, texts.back().data()};
}

bdta3_int two_places() { return {1, 2}; }
bdta3_int hundreds() { return {1, -2}; }

template <class T, class R, auto kMake, class Run>
void measure(benchmark::State& state, const Run& run) {
    const Host host;
    const Shape shape(state);
    const Vector x = Vector::of<T>(host, kHostType<T>, shape, kMake);
    const Vector result(host, kHostType<R>, shape.rows);
    for (auto _ : state) {
        if (run(host, x.col(), result.col(), shape.rows) != 0) std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, sizeof(T) + sizeof(R) + 2);
}

template <class T, class R, bop_fn_a* kFunction, auto kMake>
void BM_vector(benchmark::State& state) {
    measure<T, R, kMake>(state, [](const Host& host, bdta3_col* x, bdta3_col* result, uint32_t rows) {
        return kFunction(host.env(), host.rt_mem(), x, result, rows);
    });
}

template <class T, class R, bop_fn_av* kFunction, auto kMake, auto kPlaces>
void BM_constant(benchmark::State& state) {
    bdta3_int places = kPlaces();
    measure<T, R, kMake>(state, [&](const Host& host, bdta3_col* x, bdta3_col* result, uint32_t rows) {
        return kFunction(host.env(), host.rt_mem(), x, reinterpret_cast<bdta3_scalar*>(&places), result, rows);
    });
}

template <class T, class R, bop_fn_avv* kFunction, auto kMake, auto kPlaces>
void BM_option(benchmark::State& state) {
    bdta3_int places = kPlaces();
    bdta3_dec option{1, {}};
    xdec_fill_one(&option.value);  // truncates
    measure<T, R, kMake>(state, [&](const Host& host, bdta3_col* x, bdta3_col* result, uint32_t rows) {
        return kFunction(host.env(), host.rt_mem(), x, reinterpret_cast<bdta3_scalar*>(&places),
                         reinterpret_cast<bdta3_scalar*>(&option), result, rows);
    });
}

template <class T, class R, bop_fn_aa* kFunction, auto kMake>
void BM_vectors(benchmark::State& state) {
    const Host host;
    const Vector places = Vector::of<int32_t>(host, HOST_INT, Shape(state), random_places);
    measure<T, R, kMake>(state, [&](const Host& own, bdta3_col* x, bdta3_col* result, uint32_t rows) {
        return kFunction(own.env(), own.rt_mem(), x, places.col(), result, rows);
    });
}

// ---- Floors -----------------------------------------------------------------------------------------------------------------

template <class T, auto kMake>
void BM_copy(benchmark::State& state) {
    measure<T, T, kMake>(state, [](const Host&, bdta3_col* x, bdta3_col* result, uint32_t rows) {
        std::memcpy(result->data->values, x->data->values, sizeof(T) * rows);
        std::memcpy(result->data->valid, x->data->valid, rows);
        return 0;
    });
}

// Half away from zero, with no look at zeros, infinities and overflow.
BENCH_FLOOR void round_loop(double* out, uint8_t* out_valid, const double* x, const uint8_t* valid, double power, uint32_t n) {
    for (uint32_t i = 0; i < n; ++i) {
        const double scaled = x[i] * power;
        out[i] = std::trunc(scaled + std::copysign(0.5, scaled)) / power;
    }
    for (uint32_t i = 0; i < n; ++i) out_valid[i] = valid[i];
}

void BM_loop_round(benchmark::State& state) {
    volatile double power = 100.0;
    measure<double, double, random_double>(state, [&](const Host&, bdta3_col* x, bdta3_col* result, uint32_t rows) {
        round_loop(static_cast<double*>(result->data->values), result->data->valid, static_cast<double*>(x->data->values),
                   x->data->valid, power, rows);
        return 0;
    });
}

// Reading the texts.
void BM_loop_from_chars(benchmark::State& state) {
    measure<bdta3_colstr, double, random_number_text>(state, [](const Host&, bdta3_col* x, bdta3_col* result, uint32_t rows) {
        const auto* const texts = static_cast<const bdta3_colstr*>(x->data->values);
        auto* const out = static_cast<double*>(result->data->values);
        for (uint32_t i = 0; i < rows; ++i) std::from_chars(texts[i].bytes, texts[i].bytes + texts[i].len, out[i]);
        std::memcpy(result->data->valid, x->data->valid, rows);
        return 0;
    });
}

BENCHMARK(BM_copy<double, random_double>)->Name("BM_copy_8")->Apply(bench::dense_shapes);
BENCHMARK(BM_copy<xdec, random_decimal>)->Name("BM_copy_30")->Apply(bench::dense_shapes);
BENCHMARK(BM_loop_round)->Apply(bench::dense_shapes);
BENCHMARK(BM_loop_from_chars)->Apply(bench::dense_shapes);

// ---- Functions --------------------------------------------------------------------------------------------------------------

#define BENCH(benchmark, name, label) BENCHMARK(benchmark)->Name("BM_" #name label)->Apply(bench::all_shapes)

BENCH((BM_constant<double, double, bround_av_li_math_dbl, random_double, two_places>), bround_av_li_math_dbl, "/places:2");
BENCH((BM_constant<double, double, bround_av_li_math_dbl, random_double, hundreds>), bround_av_li_math_dbl, "/places:-2");
BENCH((BM_vectors<double, double, bround_aa_math_dbl, random_double>), bround_aa_math_dbl, "");
BENCH((BM_option<double, double, bround_with_opt_avv_lide_math_dbl, random_double, two_places>),
      bround_with_opt_avv_lide_math_dbl, "/places:2");
BENCH((BM_vector<double, double, btrunc_def_a_math_dbl, random_double>), btrunc_def_a_math_dbl, "");

BENCH((BM_vector<xdec, xdec, bround_def_a_math_dbl, random_decimal>), bround_def_a_math_dbl, "");
BENCH((BM_constant<xdec, xdec, bround_dec_av_li_math_dbl, random_decimal, two_places>), bround_dec_av_li_math_dbl, "/places:2");
BENCH((BM_vectors<xdec, xdec, bround_dec_aa_math_dbl, random_decimal>), bround_dec_aa_math_dbl, "");
BENCH((BM_option<xdec, xdec, bround_dec_with_opt_avv_lide_math_dec, random_decimal, two_places>),
      bround_dec_with_opt_avv_lide_math_dec, "/places:2");
BENCH((BM_vector<xdec, xdec, btrunc_dec_def_a_math, random_decimal>), btrunc_dec_def_a_math, "");
BENCH((BM_constant<xdec, xdec, btrunc_dec_av_li_math, random_decimal, two_places>), btrunc_dec_av_li_math, "/places:2");
BENCH((BM_vectors<xdec, xdec, btrunc_dec_aa_math, random_decimal>), btrunc_dec_aa_math, "");

BENCH((BM_constant<bdta3_colstr, double, btrunc_av_li_math, random_number_text, two_places>), btrunc_av_li_math, "/places:2");
BENCH((BM_vectors<bdta3_colstr, double, btrunc_aa_math, random_number_text>), btrunc_aa_math, "");

}  // namespace
