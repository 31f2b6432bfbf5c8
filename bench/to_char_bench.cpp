// to_char of numbers. Texts are stored batch after batch in one vector that is reset in between, as a host reuses its result
// vectors; the reset is part of what is measured.
#include <charconv>
#include <cstring>
#include <string_view>
#include <vector>

#include "bench/batch.h"
#include "bench/random_numbers.h"

namespace {

using bench::Host;
using bench::kHostType;
using bench::random_bigint;
using bench::random_decimal;
using bench::Shape;
using bench::Vector;

// A price: two digits behind the point, which the shortest text has too.
double random_price(std::mt19937_64& random) { return static_cast<double>(random_bigint(random) % 1'000'000'000) / 100; }

// Of twelve digits mostly, so that the lengths can be guessed.
int64_t random_account(std::mt19937_64& random) { return static_cast<int64_t>(random()) % 1'000'000'000'000; }

template <class T, auto kMake, class Run>
void measure(benchmark::State& state, const Run& run) {
    const Host host;
    const Shape shape(state);
    const Vector x = Vector::of<T>(host, kHostType<T>, shape, kMake);
    const Vector result(host, HOST_STR, shape.rows);
    for (auto _ : state) {
        host_col_reset(result.col());
        if (run(host, x.col(), result.col(), shape.rows) != 0) std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, sizeof(T) + sizeof(bdta3_colstr) + 2);
}

template <class T, bop_fn_a* kFunction, auto kMake>
void BM_plain(benchmark::State& state) {
    measure<T, kMake>(state, [](const Host& host, bdta3_col* x, bdta3_col* result, uint32_t rows) {
        return kFunction(host.env(), host.rt_mem(), x, result, rows);
    });
}

template <class T, bop_fn_av* kFunction, auto kMake>
void BM_format(benchmark::State& state) {
    nstr format = bench::text_constant("FM999G999G999G999G999G990D00");
    format.nstr_ext = format.nstr_inline;
    measure<T, kMake>(state, [&](const Host& host, bdta3_col* x, bdta3_col* result, uint32_t rows) {
        return kFunction(host.env(), host.rt_mem(), x, reinterpret_cast<bdta3_scalar*>(&format), result, rows);
    });
}

template <class T, bop_fn_avv* kFunction, auto kMake>
void BM_nls(benchmark::State& state) {
    nstr format = bench::text_constant("FM999G999G999G999G999G990D00");
    nstr nls = bench::text_constant("NLS_NUMERIC_CHARACTERS=',.'");
    measure<T, kMake>(state, [&](const Host& host, bdta3_col* x, bdta3_col* result, uint32_t rows) {
        return kFunction(host.env(), host.rt_mem(), x, reinterpret_cast<bdta3_scalar*>(&format),
                         reinterpret_cast<bdta3_scalar*>(&nls), result, rows);
    });
}

// ---- Floors: the C++ library's conversion into one run of bytes -------------------------------------------------------------

template <class T, auto kMake>
void BM_loop_to_chars(benchmark::State& state) {
    std::vector<char> bytes(size_t{32} * Shape(state).rows);
    measure<T, kMake>(state, [&](const Host&, bdta3_col* x, bdta3_col* result, uint32_t rows) {
        const T* const values = static_cast<const T*>(x->data->values);
        auto* const slots = static_cast<bdta3_colstr*>(result->data->values);
        char* at = bytes.data();
        for (uint32_t i = 0; i < rows; ++i) {
            char* const end = std::to_chars(at, at + 32, values[i]).ptr;
            slots[i] = {static_cast<uint32_t>(end - at), 0, at};
            at = end;
        }
        std::memcpy(result->data->valid, x->data->valid, rows);
        return 0;
    });
}

BENCHMARK(BM_loop_to_chars<int64_t, random_account>)->Name("BM_loop_to_chars_bigint/12_digits")->Apply(bench::dense_shapes);
BENCHMARK(BM_loop_to_chars<int64_t, random_bigint>)->Name("BM_loop_to_chars_bigint/any")->Apply(bench::dense_shapes);
BENCHMARK(BM_loop_to_chars<double, random_price>)->Name("BM_loop_to_chars_double/price")->Apply(bench::dense_shapes);
BENCHMARK(BM_loop_to_chars<double, bench::random_double>)->Name("BM_loop_to_chars_double/any")->Apply(bench::dense_shapes);

// ---- Functions --------------------------------------------------------------------------------------------------------------

#define BENCH(benchmark, name, label) BENCHMARK(benchmark)->Name("BM_" #name label)->Apply(bench::all_shapes)

BENCH((BM_plain<int32_t, bto_char_a_int_to_varchar, bench::random_int>), bto_char_a_int_to_varchar, "");
BENCH((BM_plain<int64_t, bto_char_a_int64_to_varchar, random_account>), bto_char_a_int64_to_varchar, "/12_digits");
BENCH((BM_plain<int64_t, bto_char_a_int64_to_varchar, random_bigint>), bto_char_a_int64_to_varchar, "/any");
BENCH((BM_plain<double, bto_char_a_double_to_varchar, random_price>), bto_char_a_double_to_varchar, "/price");
BENCH((BM_plain<double, bto_char_a_double_to_varchar, bench::random_double>), bto_char_a_double_to_varchar, "/any");
BENCH((BM_plain<xdec, bto_char_a_dec_to_varchar, random_decimal>), bto_char_a_dec_to_varchar, "");

BENCH((BM_format<int64_t, bto_char_av_int64_to_varchar_with_fmt, random_bigint>), bto_char_av_int64_to_varchar_with_fmt, "");
BENCH((BM_format<double, bto_char_av_double_to_varchar_with_fmt, random_price>), bto_char_av_double_to_varchar_with_fmt, "");
BENCH((BM_nls<int64_t, bto_char_avv_int64_to_varchar_with_nls, random_bigint>), bto_char_avv_int64_to_varchar_with_nls, "");
BENCH((BM_nls<xdec, bto_char_avv_dec_to_varchar_with_nls, random_decimal>), bto_char_avv_dec_to_varchar_with_nls, "");

}  // namespace
