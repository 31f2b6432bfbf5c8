// Parts of date-times, beside plain loops over the same 13-byte records.
#include <cstring>

#include "bench/date_rows.h"

namespace {

using bench::Batch;
using bench::Vector;

constexpr size_t kBytes = sizeof(qztime) + 1 + sizeof(int32_t) + 1;

// ---- Floors -----------------------------------------------------------------------------------------------------------------

template <int32_t (*kRow)(const qztime&)>
void BM_loop(benchmark::State& state) {
    Batch<int32_t> batch(state);
    const Vector dates = batch.of<qztime>(bench::random_datetime);
    const uint32_t n = batch.rows();
    int32_t* const out = batch.out().values<int32_t>();
    const qztime* const in = dates.values<qztime>();
    batch.measure(kBytes, [&] {
        std::memcpy(batch.result()->data->valid, dates.valid(), n);
        for (uint32_t i = 0; i < n; ++i) out[i] = kRow(in[i]);
        return 0;
    });
}

int32_t year(const qztime& v) { return v.year; }
int32_t month(const qztime& v) { return v.month; }

int32_t day_of_week(const qztime& v) { return (bench::gregorian_number(v) + 7000003) % 7 + 1; }

int32_t day_of_year(const qztime& v) {
    static constexpr uint16_t kBefore[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
    const bool leap = v.year % 4 == 0 && (v.year % 100 != 0 || v.year % 400 == 0);
    return kBefore[v.month - 1] + v.day + (v.month > 2 && leap);
}

BENCHMARK(BM_loop<year>)->Name("BM_loop_year")->Apply(bench::dense_dates);
BENCHMARK(BM_loop<month>)->Name("BM_loop_month")->Apply(bench::dense_dates);
BENCHMARK(BM_loop<day_of_week>)->Name("BM_loop_day_of_week")->Apply(bench::dense_dates);
BENCHMARK(BM_loop<day_of_year>)->Name("BM_loop_day_of_year")->Apply(bench::dense_dates);

// ---- Functions --------------------------------------------------------------------------------------------------------------

template <bop_fn_a* kFunction>
void BM_part(benchmark::State& state) {
    Batch<int32_t> batch(state);
    const Vector dates = batch.of<qztime>(bench::random_datetime);
    batch.measure(kBytes, [&] { return kFunction(batch.env(), batch.rt_mem(), dates.col(), batch.result(), batch.rows()); });
}

template <class R, bop_fn_va* kFunction, int32_t kPart>
void BM_extract(benchmark::State& state) {
    Batch<R> batch(state);
    const Vector dates = batch.template of<qztime>(bench::random_datetime);
    bdta3_int part{1, kPart};
    batch.measure(kBytes, [&] {
        return kFunction(batch.env(), batch.rt_mem(), bench::constant(part), dates.col(), batch.result(), batch.rows());
    });
}

// The names are stored as strings.
template <bop_fn_a* kFunction>
void BM_name(benchmark::State& state) {
    Batch<bdta3_colstr> batch(state);
    const Vector dates = batch.of<qztime>(bench::random_datetime);
    batch.measure(sizeof(qztime) + 1 + sizeof(bdta3_colstr) + 1, [&] {
        host_col_reset(batch.result());
        return kFunction(batch.env(), batch.rt_mem(), dates.col(), batch.result(), batch.rows());
    });
}

#define BENCH_PART(name) BENCHMARK(BM_part<name>)->Name("BM_" #name)->Apply(bench::date_shapes)
#define BENCH_EXTRACT(name, part, type, suffix) \
    BENCHMARK(BM_extract<type, name, part>)->Name("BM_" #name suffix)->Apply(bench::date_shapes)

BENCH_PART(byear_a_date);
BENCH_PART(bmonth_a_date);
BENCH_PART(bhour_a_date);
BENCH_PART(bquarter_qztime_a_date);
BENCH_PART(bdayofyear_a_date);
BENCH_PART(bdayofweek_a_date);
BENCH_EXTRACT(bextract_date_va_date, HOST_PART_YEAR, int32_t, "_year");
BENCH_EXTRACT(bextract_datetime_va_date, HOST_PART_MINUTE, int32_t, "_minute");
BENCH_EXTRACT(bextract_time_ex_va_date, HOST_PART_SECOND, double, "_second");
BENCHMARK(BM_name<bdayname_a_date>)->Name("BM_bdayname_a_date")->Apply(bench::dense_dates);
BENCHMARK(BM_name<bmonthname_a_date>)->Name("BM_bmonthname_a_date")->Apply(bench::dense_dates);

}  // namespace
