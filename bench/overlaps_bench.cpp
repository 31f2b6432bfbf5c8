// OVERLAPS of four vectors, beside the plain loop over the same records.
#include <utility>

#include "bench/date_rows.h"
#include "qzhost/interval.h"

namespace {

using bench::Batch;
using bench::Vector;

// Two thirds of the pairs of periods overlap; one in two periods is backwards.
struct Periods : Batch<int32_t> {
    explicit Periods(benchmark::State& state) : Batch(state) {}

    const Vector s1 = of<qztime>(bench::random_datetime), x1 = of<qztime>(bench::other_datetime<7>);
    const Vector s2 = of<qztime>(bench::other_datetime<8>), x2 = of<qztime>(bench::other_datetime<9>);
};

constexpr size_t kBytes = 4 * (sizeof(qztime) + 1) + sizeof(int32_t) + 1;

// The fields of a value in order.
std::pair<uint64_t, uint32_t> moment(const qztime& v) {
    const uint64_t date = static_cast<uint64_t>(v.year) << 16 | static_cast<uint64_t>(v.month) << 8 | v.day;
    const uint64_t time = static_cast<uint64_t>(v.hour) << 16 | static_cast<uint64_t>(v.minute) << 8 | v.second;
    return {date << 24 | time, v.fraction};
}

void BM_loop_overlaps(benchmark::State& state) {
    Periods periods(state);
    const uint32_t n = periods.rows();
    const qztime *const s1 = periods.s1.values<qztime>(), *const x1 = periods.x1.values<qztime>();
    const qztime *const s2 = periods.s2.values<qztime>(), *const x2 = periods.x2.values<qztime>();
    int32_t* const out = periods.out().values<int32_t>();
    uint8_t* const valid = periods.result()->data->valid;
    periods.measure(kBytes, [&] {
        for (uint32_t i = 0; i < n; ++i) {
            auto lo1 = moment(s1[i]), hi1 = moment(x1[i]), lo2 = moment(s2[i]), hi2 = moment(x2[i]);
            if (hi1 < lo1) std::swap(lo1, hi1);
            if (hi2 < lo2) std::swap(lo2, hi2);
            out[i] = lo1 <= hi2 && lo2 <= hi1;
            valid[i] = 1;
        }
        return 0;
    });
}
BENCHMARK(BM_loop_overlaps)->Apply(bench::dense_dates);

void BM_overlaps(benchmark::State& state) {
    Periods p(state);
    p.measure(kBytes, [&] {
        return boverlaps_dt_aaaa_date(p.env(), p.rt_mem(), p.s1.col(), p.x1.col(), p.s2.col(), p.x2.col(), p.result(),
                                      p.rows());
    });
}
BENCHMARK(BM_overlaps)->Name("BM_boverlaps_dt_aaaa_date")->Apply(bench::date_shapes);

void BM_overlaps_constants(benchmark::State& state) {
    Periods p(state);
    bdta3_datetime from{1, {2005, 1, 1, 0, 0, 0, 0, TZ_NONE}}, to{1, {2010, 1, 1, 0, 0, 0, 0, TZ_NONE}};
    p.measure(kBytes, [&] {
        return boverlaps_dt_aavv_tsts_date(p.env(), p.rt_mem(), p.s1.col(), p.x1.col(), bench::constant(from),
                                           bench::constant(to), p.result(), p.rows());
    });
}
BENCHMARK(BM_overlaps_constants)->Name("BM_boverlaps_dt_aavv_tsts_date")->Apply(bench::date_shapes);

template <class Interval, bop_fn_aaaa* kFunction, auto kMake>
void BM_overlaps_intervals(benchmark::State& state) {
    Periods p(state);
    const Vector x1 = p.of<Interval>(kMake), x2 = p.of<Interval>(kMake);
    p.measure(2 * (sizeof(qztime) + sizeof(Interval) + 2) + sizeof(int32_t) + 1,
              [&] { return kFunction(p.env(), p.rt_mem(), p.s1.col(), x1.col(), p.s2.col(), x2.col(), p.result(), p.rows()); });
}

qz_interval_ym random_months(std::mt19937_64& random) {
    return {0, static_cast<int32_t>(random() % 240) - 120, HOST_IV_QUALIFIER_YM};
}
qz_interval_dt random_days(std::mt19937_64& random) {
    return {static_cast<int32_t>(random() % 8000) - 4000, static_cast<int32_t>(random() % 24), 0, 0, 0, HOST_IV_QUALIFIER_DT};
}

BENCHMARK(BM_overlaps_intervals<qz_interval_ym, boverlaps_ivym_aaaa_date, random_months>)
    ->Name("BM_boverlaps_ivym_aaaa_date")
    ->Apply(bench::dense_dates);
BENCHMARK(BM_overlaps_intervals<qz_interval_dt, boverlaps_ivdt_aaaa_date, random_days>)
    ->Name("BM_boverlaps_ivdt_aaaa_date")
    ->Apply(bench::dense_dates);

}  // namespace
