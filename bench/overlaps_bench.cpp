// OVERLAPS of four vectors, beside the plain loop over the same records.
#include <utility>

#include "bench/date_rows.h"
#include "qzhost/interval.h"

namespace {

using bench::Host;
using bench::Shape;
using bench::Vector;

// Two thirds of the pairs of periods overlap; one in two periods is backwards.
struct Periods {
    Vector s1, x1, s2, x2;

    Periods(const Host& host, const Shape& shape)
        : s1(bench::datetimes(host, shape)),
          x1(bench::other_datetimes(host, shape)),
          s2(bench::third_datetimes(host, shape)),
          x2(bench::fourth_datetimes(host, shape)) {}
};

constexpr size_t kBytes = 4 * (sizeof(qztime) + 1) + sizeof(int32_t) + 1;

// The fields of a value in order.
std::pair<uint64_t, uint32_t> moment(const qztime& v) {
    const uint64_t date = static_cast<uint64_t>(v.year) << 16 | static_cast<uint64_t>(v.month) << 8 | v.day;
    const uint64_t time = static_cast<uint64_t>(v.hour) << 16 | static_cast<uint64_t>(v.minute) << 8 | v.second;
    return {date << 24 | time, v.fraction};
}

void BM_loop_overlaps(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Periods periods(host, shape);
    const Vector result(host, HOST_INT, shape.rows);
    const qztime *const s1 = periods.s1.values<qztime>(), *const x1 = periods.x1.values<qztime>();
    const qztime *const s2 = periods.s2.values<qztime>(), *const x2 = periods.x2.values<qztime>();
    int32_t* const out = result.values<int32_t>();
    uint8_t* const valid = result.col()->data->valid;
    for (auto _ : state) {
        for (uint32_t i = 0; i < shape.rows; ++i) {
            auto lo1 = moment(s1[i]), hi1 = moment(x1[i]), lo2 = moment(s2[i]), hi2 = moment(x2[i]);
            if (hi1 < lo1) std::swap(lo1, hi1);
            if (hi2 < lo2) std::swap(lo2, hi2);
            out[i] = lo1 <= hi2 && lo2 <= hi1;
            valid[i] = 1;
        }
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, kBytes);
}
BENCHMARK(BM_loop_overlaps)->Apply(bench::dense_dates);

void BM_overlaps(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Periods p(host, shape);
    const Vector result(host, HOST_INT, shape.rows);
    for (auto _ : state) {
        const int32_t code = boverlaps_dt_aaaa_date(host.env(), host.rt_mem(), p.s1.col(), p.x1.col(), p.s2.col(), p.x2.col(),
                                                    result.col(), shape.rows);
        if (code != 0) std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, kBytes);
}
BENCHMARK(BM_overlaps)->Name("BM_boverlaps_dt_aaaa_date")->Apply(bench::date_shapes);

void BM_overlaps_constants(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Periods p(host, shape);
    const Vector result(host, HOST_INT, shape.rows);
    bdta3_datetime from{1, {2005, 1, 1, 0, 0, 0, 0, TZ_NONE}}, to{1, {2010, 1, 1, 0, 0, 0, 0, TZ_NONE}};
    for (auto _ : state) {
        const int32_t code = boverlaps_dt_aavv_tsts_date(host.env(), host.rt_mem(), p.s1.col(), p.x1.col(),
                                                         reinterpret_cast<bdta3_scalar*>(&from),
                                                         reinterpret_cast<bdta3_scalar*>(&to), result.col(), shape.rows);
        if (code != 0) std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, kBytes);
}
BENCHMARK(BM_overlaps_constants)->Name("BM_boverlaps_dt_aavv_tsts_date")->Apply(bench::date_shapes);

template <class Interval, int32_t kType, bop_fn_aaaa* kFunction, auto kMake>
void BM_overlaps_intervals(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Periods p(host, shape);
    const Vector x1 = Vector::of<Interval>(host, kType, shape, kMake), x2 = Vector::of<Interval>(host, kType, shape, kMake);
    const Vector result(host, HOST_INT, shape.rows);
    for (auto _ : state) {
        const int32_t code =
            kFunction(host.env(), host.rt_mem(), p.s1.col(), x1.col(), p.s2.col(), x2.col(), result.col(), shape.rows);
        if (code != 0) std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, 2 * (sizeof(qztime) + sizeof(Interval) + 2) + sizeof(int32_t) + 1);
}

qz_interval_ym random_months(std::mt19937_64& random) {
    return {0, static_cast<int32_t>(random() % 240) - 120, HOST_IV_QUALIFIER_YM};
}
qz_interval_dt random_days(std::mt19937_64& random) {
    return {static_cast<int32_t>(random() % 8000) - 4000, static_cast<int32_t>(random() % 24), 0, 0, 0, HOST_IV_QUALIFIER_DT};
}

BENCHMARK(BM_overlaps_intervals<qz_interval_ym, HOST_INTERVAL_YM, boverlaps_ivym_aaaa_date, random_months>)
    ->Name("BM_boverlaps_ivym_aaaa_date")
    ->Apply(bench::dense_dates);
BENCHMARK(BM_overlaps_intervals<qz_interval_dt, HOST_INTERVAL_DT, boverlaps_ivdt_aaaa_date, random_days>)
    ->Name("BM_boverlaps_ivdt_aaaa_date")
    ->Apply(bench::dense_dates);

}  // namespace
