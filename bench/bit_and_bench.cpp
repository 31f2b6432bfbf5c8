// bitand of decimals: below 2^64, and by 40 digits.
#include <cstring>
#include <vector>

#include "bench/batch.h"
#include "bench/random_numbers.h"

namespace {

using bench::Batch;
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
    Batch<xdec> batch(state);
    const Vector x = batch.of<xdec>(kMake);
    bdta3_dec mask{1, kMask()};
    batch.measure(2 * (sizeof(xdec) + 1), [&] {
        return bbit_and_for_dec_av(batch.env(), batch.rt_mem(), x.col(), bench::constant(mask), batch.result(), batch.rows());
    });
}

// ---- Floors -----------------------------------------------------------------------------------------------------------------

void BM_copy_30(benchmark::State& state) {
    Batch<xdec> batch(state);
    batch.measure_copy(batch.of<xdec>(random_word));
}

// A decimal to a word and back, with nothing around it.
void BM_loop_word(benchmark::State& state) {
    Batch<xdec> batch(state);
    const Vector x = batch.of<xdec>(random_word);
    batch.measure(2 * (sizeof(xdec) + 1), [&] {
        for (uint32_t i = 0; i < batch.rows(); ++i) {
            uint64_t word = 0;
            if (xdec_get_ulint64(x.values<xdec>() + i, &word) < 0) std::abort();
            if (xdec_from_ulint64(batch.out().values<xdec>() + i, word & 0x00FF'F0F0'3333'5555) < 0) std::abort();
        }
        std::memcpy(batch.result()->data->valid, x.valid(), batch.rows());
        return 0;
    });
}

BENCHMARK(BM_copy_30)->Apply(bench::dense_shapes);
BENCHMARK(BM_loop_word)->Apply(bench::dense_shapes);
BENCHMARK(BM_bit_and<random_word, word_mask>)->Name("BM_bbit_and_for_dec_av/word")->Apply(bench::all_shapes);
BENCHMARK(BM_bit_and<random_wide, word_mask>)->Name("BM_bbit_and_for_dec_av/wide_row")->Apply(bench::all_shapes);
BENCHMARK(BM_bit_and<random_wide, wide_mask>)->Name("BM_bbit_and_for_dec_av/wide")->Apply(bench::all_shapes);

}  // namespace
