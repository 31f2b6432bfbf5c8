// to_datetime of five vectors, and of a few with constants.
//
// In range: years 1990 to 2030 and fields within their ranges. Carrying: months -6 to 18, days -20 to 60, hours -20 to 40,
// minutes -100 to 200. The floor writes the five fields into records as they stand.
#include "bench/batch.h"
#include "qzbifun/date.h"

namespace {

using bench::Batch;
using bench::Vector;

struct Limits {
    int32_t first[5];
    uint32_t count[5];
};

constexpr Limits kInRange{{1990, 1, 1, 0, 0}, {41, 12, 28, 24, 60}};
constexpr Limits kCarrying{{1990, -6, -20, -20, -100}, {41, 25, 81, 61, 301}};

struct Fields : Batch<qztime> {
    std::vector<Vector> vectors;

    Fields(benchmark::State& state, const Limits& limits) : Batch(state) {
        for (size_t i = 0; i < 5; ++i) {
            vectors.push_back(of<int32_t>([&](std::mt19937_64& random) {
                return limits.first[i] + static_cast<int32_t>((random() >> (8 * i)) % limits.count[i]);
            }));
        }
    }
    bdta3_col* operator[](size_t i) const { return vectors[i].col(); }
};

constexpr size_t bytes(size_t vectors) { return vectors * (sizeof(int32_t) + 1) + sizeof(qztime) + 1; }

void BM_vectors(benchmark::State& state, const Limits& limits) {
    Fields f(state, limits);
    f.measure(bytes(5),
              [&] { return bto_datetime_aaaaa_date(f.env(), f.rt_mem(), f[0], f[1], f[2], f[3], f[4], f.result(), f.rows()); });
}

void BM_date_with_constant_time(benchmark::State& state) {
    Fields f(state, kInRange);
    bdta3_int hour{1, 10}, minute{1, 30};
    f.measure(bytes(3), [&] {
        return bto_datetime_aaavv_lili_date(f.env(), f.rt_mem(), f[0], f[1], f[2], bench::constant(hour),
                                            bench::constant(minute), f.result(), f.rows());
    });
}

BENCH_FLOOR void fields_loop(qztime* out, uint8_t* out_valid, const int32_t* const* x, const uint8_t* const* valid,
                             uint32_t n) {
    for (uint32_t i = 0; i < n; ++i) {
        out[i] = {static_cast<int16_t>(x[0][i]),
                  static_cast<uint8_t>(x[1][i]),
                  static_cast<uint8_t>(x[2][i]),
                  static_cast<uint8_t>(x[3][i]),
                  static_cast<uint8_t>(x[4][i]),
                  0,
                  0,
                  TZ_NONE};
    }
    for (uint32_t i = 0; i < n; ++i) {
        out_valid[i] = static_cast<uint8_t>(valid[0][i] & valid[1][i] & valid[2][i] & valid[3][i] & valid[4][i]);
    }
}

void BM_loop_fields(benchmark::State& state) {
    Fields f(state, kInRange);
    const int32_t* values[5];
    const uint8_t* valid[5];
    for (size_t i = 0; i < 5; ++i) values[i] = f.vectors[i].values<int32_t>(), valid[i] = f.vectors[i].valid();
    f.measure(bytes(5), [&] {
        fields_loop(f.out().values<qztime>(), f.result()->data->valid, values, valid, f.rows());
        return 0;
    });
}

BENCHMARK(BM_loop_fields)->Apply(bench::dense_shapes);
BENCHMARK_CAPTURE(BM_vectors, in_range, kInRange)->Name("BM_bto_datetime_aaaaa_date")->Apply(bench::all_shapes);
BENCHMARK_CAPTURE(BM_vectors, carrying, kCarrying)->Name("BM_bto_datetime_aaaaa_date/carrying")->Apply(bench::dense_shapes);
BENCHMARK(BM_date_with_constant_time)->Name("BM_bto_datetime_aaavv_lili_date")->Apply(bench::dense_shapes);

}  // namespace
