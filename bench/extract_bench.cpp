// Parts of date-times, beside plain loops over the same 13-byte records.
#include <cstring>

#include "bench/date_rows.h"

namespace {

using bench::Host;
using bench::Shape;
using bench::Vector;

constexpr size_t kBytes = sizeof(qztime) + 1 + sizeof(int32_t) + 1;

// ---- Floors -----------------------------------------------------------------------------------------------------------------

template <int32_t (*kRow)(const qztime&)>
void BM_loop(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector dates = bench::datetimes(host, shape), result(host, HOST_INT, shape.rows);
    int32_t* const out = result.values<int32_t>();
    const qztime* const in = dates.values<qztime>();
    for (auto _ : state) {
        std::memcpy(result.col()->data->valid, dates.valid(), shape.rows);
        for (uint32_t i = 0; i < shape.rows; ++i) out[i] = kRow(in[i]);
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, kBytes);
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
    const Host host;
    const Shape shape(state);
    const Vector dates = bench::datetimes(host, shape), result(host, HOST_INT, shape.rows);
    for (auto _ : state) {
        if (kFunction(host.env(), host.rt_mem(), dates.col(), result.col(), shape.rows) != 0) std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, kBytes);
}

template <bop_fn_va* kFunction, int32_t kPart, int32_t kType>
void BM_extract(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector dates = bench::datetimes(host, shape), result(host, kType, shape.rows);
    bdta3_int record{1, kPart};
    auto* const part = reinterpret_cast<bdta3_scalar*>(&record);
    for (auto _ : state) {
        if (kFunction(host.env(), host.rt_mem(), part, dates.col(), result.col(), shape.rows) != 0) std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, kBytes);
}

// The names are stored as strings.
template <bop_fn_a* kFunction>
void BM_name(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector dates = bench::datetimes(host, shape), result(host, HOST_STR, shape.rows);
    for (auto _ : state) {
        host_col_reset(result.col());
        if (kFunction(host.env(), host.rt_mem(), dates.col(), result.col(), shape.rows) != 0) std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, sizeof(qztime) + 1 + sizeof(bdta3_colstr) + 1);
}

#define BENCH_PART(name) BENCHMARK(BM_part<name>)->Name("BM_" #name)->Apply(bench::date_shapes)
#define BENCH_EXTRACT(name, part, type, suffix) \
    BENCHMARK(BM_extract<name, part, type>)->Name("BM_" #name suffix)->Apply(bench::date_shapes)

BENCH_PART(byear_a_date);
BENCH_PART(bmonth_a_date);
BENCH_PART(bhour_a_date);
BENCH_PART(bquarter_qztime_a_date);
BENCH_PART(bdayofyear_a_date);
BENCH_PART(bdayofweek_a_date);
BENCH_EXTRACT(bextract_date_va_date, HOST_PART_YEAR, HOST_INT, "_year");
BENCH_EXTRACT(bextract_datetime_va_date, HOST_PART_MINUTE, HOST_INT, "_minute");
BENCH_EXTRACT(bextract_time_ex_va_date, HOST_PART_SECOND, HOST_DOUBLE, "_second");
BENCHMARK(BM_name<bdayname_a_date>)->Name("BM_bdayname_a_date")->Apply(bench::dense_dates);
BENCHMARK(BM_name<bmonthname_a_date>)->Name("BM_bmonthname_a_date")->Apply(bench::dense_dates);

}  // namespace
