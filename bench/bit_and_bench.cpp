// bitand of decimals: below 2^64, and by 40 digits.
#include <cstring>
#include <vector>

#include "bench/batch.h"
#include "bench/random_numbers.h"

namespace {

using bench::Host;
using bench::Shape;
using bench::Vector;

xdec from_word(uint64_t word) {
    xdec decimal;
    if (xdec_from_ulint64(&decimal, word) != 0) std::abort();
    return decimal;
}

xdec random_word(std::mt19937_64& random) { return from_word(random() >> random() % 64); }
xdec random_wide(std::mt19937_64& random) { return bench::random_digits(random, 40, random() % 2 != 0); }
xdec word_mask() { return from_word(0x00FF'F0F0'3333'5555); }
xdec wide_mask() {
    std::mt19937_64 random(7);
    return bench::random_digits(random, 40, true);
}

template <auto kMake, auto kMask>
void BM_bit_and(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector x = Vector::of<xdec>(host, HOST_DEC, shape, kMake);
    const Vector result(host, HOST_DEC, shape.rows);
    bdta3_dec mask{1, kMask()};
    for (auto _ : state) {
        if (bbit_and_for_dec_av(host.env(), host.rt_mem(), x.col(), reinterpret_cast<bdta3_scalar*>(&mask), result.col(),
                                shape.rows) != 0)
            std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, 2 * (sizeof(xdec) + 1));
}

// ---- Floors -----------------------------------------------------------------------------------------------------------------

void BM_copy_30(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector x = Vector::of<xdec>(host, HOST_DEC, shape, random_word);
    const Vector result(host, HOST_DEC, shape.rows);
    for (auto _ : state) {
        std::memcpy(result.values<xdec>(), x.values<xdec>(), sizeof(xdec) * shape.rows);
        std::memcpy(result.col()->data->valid, x.valid(), shape.rows);
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, 2 * (sizeof(xdec) + 1));
}

// A decimal to a word and back, with nothing around it.
void BM_loop_word(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector x = Vector::of<xdec>(host, HOST_DEC, shape, random_word);
    const Vector result(host, HOST_DEC, shape.rows);
    for (auto _ : state) {
        for (uint32_t i = 0; i < shape.rows; ++i) {
            uint64_t word = 0;
            if (xdec_get_ulint64(x.values<xdec>() + i, &word) < 0) std::abort();
            if (xdec_from_ulint64(result.values<xdec>() + i, word & 0x00FF'F0F0'3333'5555) < 0) std::abort();
        }
        std::memcpy(result.col()->data->valid, x.valid(), shape.rows);
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, 2 * (sizeof(xdec) + 1));
}

BENCHMARK(BM_copy_30)->Apply(bench::dense_shapes);
BENCHMARK(BM_loop_word)->Apply(bench::dense_shapes);
BENCHMARK(BM_bit_and<random_word, word_mask>)->Name("BM_bbit_and_for_dec_av/word")->Apply(bench::all_shapes);
BENCHMARK(BM_bit_and<random_wide, word_mask>)->Name("BM_bbit_and_for_dec_av/wide_row")->Apply(bench::all_shapes);
BENCHMARK(BM_bit_and<random_wide, wide_mask>)->Name("BM_bbit_and_for_dec_av/wide")->Apply(bench::all_shapes);

}  // namespace
