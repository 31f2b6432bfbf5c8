// Dates moved by days, weeks, months and intervals, beside plain loops over the same 13-byte records.
#include <cstring>

#include "bench/date_rows.h"
#include "qzhost/interval.h"

namespace {

using bench::Batch;
using bench::Vector;

constexpr size_t kBytes = 2 * (sizeof(qztime) + 1);

// ---- Floors -----------------------------------------------------------------------------------------------------------------

// BM_loop_<what>: dates and valid bytes in, dates and valid bytes out.
template <void (*kRow)(qztime&, const qztime&)>
void BM_loop(benchmark::State& state) {
    Batch<qztime> batch(state);
    const Vector dates = batch.of<qztime>(bench::random_datetime);
    const uint32_t n = batch.rows();
    qztime* const out = batch.out().values<qztime>();
    const qztime* const in = dates.values<qztime>();
    batch.measure(kBytes, [&] {
        std::memcpy(batch.result()->data->valid, dates.valid(), n);
        for (uint32_t i = 0; i < n; ++i) kRow(out[i], in[i]);
        return 0;
    });
}

void copy(qztime& out, const qztime& in) { out = in; }

void add_days(qztime& out, const qztime& in) {
    out = in;
    bench::set_gregorian(out, bench::gregorian_number(in) + 40);
}

void add_months(qztime& out, const qztime& in) {
    static constexpr uint8_t kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const uint32_t months = static_cast<uint32_t>(in.year * 12 + in.month - 1 + 13);
    const uint32_t year = months / 12, month = months % 12;
    const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
    const uint8_t end = static_cast<uint8_t>(kDays[month] + (month == 1 && leap));
    out = in;
    out.year = static_cast<int16_t>(year);
    out.month = static_cast<uint8_t>(month + 1);
    out.day = in.day < end ? in.day : end;
}

void last_day(qztime& out, const qztime& in) {
    static constexpr uint8_t kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = in.year % 4 == 0 && (in.year % 100 != 0 || in.year % 400 == 0);
    out = in;
    out.day = static_cast<uint8_t>(kDays[in.month - 1] + (in.month == 2 && leap));
}

BENCHMARK(BM_loop<copy>)->Name("BM_loop_copy")->Apply(bench::dense_dates);
BENCHMARK(BM_loop<add_days>)->Name("BM_loop_add_days")->Apply(bench::dense_dates);
BENCHMARK(BM_loop<add_months>)->Name("BM_loop_add_months")->Apply(bench::dense_dates);
BENCHMARK(BM_loop<last_day>)->Name("BM_loop_last_day")->Apply(bench::dense_dates);

// ---- Functions --------------------------------------------------------------------------------------------------------------

template <class Record, bop_fn_av* kFunction, auto kAmount>
void BM_constant(benchmark::State& state) {
    Batch<qztime> batch(state);
    const Vector dates = batch.of<qztime>(bench::random_datetime);
    batch.measure(kBytes, [&] {
        Record record = kAmount();
        return kFunction(batch.env(), batch.rt_mem(), dates.col(), bench::constant(record), batch.result(), batch.rows());
    });
}

bdta3_double days() { return {1, 40.0}; }
bdta3_double days_and_a_half() { return {1, 40.5}; }
bdta3_int weeks() { return {1, 6}; }
bdta3_int months() { return {1, 13}; }
bdta3_interval_ym years_and_months() { return {1, {1, 1, HOST_IV_QUALIFIER_YM}}; }
bdta3_interval_dt days_and_time() { return {1, {40, 3, 2, 1, 500000, HOST_IV_QUALIFIER_DT}}; }

#define BENCH_CONSTANT(name, record, amount, suffix) \
    BENCHMARK(BM_constant<record, name, amount>)->Name("BM_" #name suffix)->Apply(bench::date_shapes)

BENCH_CONSTANT(badd_days_av_date, bdta3_double, days, "");
BENCH_CONSTANT(badd_days_av_date, bdta3_double, days_and_a_half, "_fraction");
BENCH_CONSTANT(badd_weeks_av_date, bdta3_int, weeks, "");
BENCH_CONSTANT(badd_months_av_date, bdta3_int, months, "");
BENCH_CONSTANT(bdate_add_ym_av, bdta3_interval_ym, years_and_months, "");
BENCH_CONSTANT(bdate_add_dt_av, bdta3_interval_dt, days_and_time, "");

void BM_next_day(benchmark::State& state) {
    Batch<qztime> batch(state);
    const Vector dates = batch.of<qztime>(bench::random_datetime);
    char name[] = "FRIDAY";
    nstr record{};
    record.has_value = 1;
    record.len = sizeof name - 1;
    record.nstr_ext = name;
    batch.measure(kBytes, [&] {
        return bnext_day_av_date(batch.env(), batch.rt_mem(), dates.col(), bench::constant(record), batch.result(),
                                 batch.rows());
    });
}
BENCHMARK(BM_next_day)->Name("BM_bnext_day_av_date")->Apply(bench::date_shapes);

void BM_last_day(benchmark::State& state) {
    Batch<qztime> batch(state);
    const Vector dates = batch.of<qztime>(bench::random_datetime);
    batch.measure(kBytes,
                  [&] { return blast_day_a_date(batch.env(), batch.rt_mem(), dates.col(), batch.result(), batch.rows()); });
}
BENCHMARK(BM_last_day)->Name("BM_blast_day_a_date")->Apply(bench::date_shapes);

template <int32_t kPart>
void BM_dateadd(benchmark::State& state) {
    Batch<qztime> batch(state);
    const Vector dates = batch.of<qztime>(bench::random_datetime);
    batch.measure(kBytes, [&] {
        bdta3_int part{1, kPart};
        bdta3_int64 count{1, 13};
        return bdateadd_vva_date(batch.env(), batch.rt_mem(), bench::constant(part), bench::constant(count), dates.col(),
                                 batch.result(), batch.rows());
    });
}
BENCHMARK(BM_dateadd<HOST_PART_DAY>)->Name("BM_bdateadd_vva_date_day")->Apply(bench::dense_dates);
BENCHMARK(BM_dateadd<HOST_PART_MONTH>)->Name("BM_bdateadd_vva_date_month")->Apply(bench::dense_dates);
BENCHMARK(BM_dateadd<HOST_PART_HOUR>)->Name("BM_bdateadd_vva_date_hour")->Apply(bench::dense_dates);

// Amounts of their own for each row.
template <class T, bop_fn_aa* kFunction>
void BM_vectors(benchmark::State& state) {
    Batch<qztime> batch(state);
    const Vector dates = batch.of<qztime>(bench::random_datetime);
    const Vector amounts =
        batch.of<T>([](std::mt19937_64& random) { return static_cast<T>(static_cast<int32_t>(random() % 200) - 100); });
    batch.measure(kBytes + sizeof(T) + 1, [&] {
        return kFunction(batch.env(), batch.rt_mem(), dates.col(), amounts.col(), batch.result(), batch.rows());
    });
}
BENCHMARK(BM_vectors<double, badd_days_aa_date>)->Name("BM_badd_days_aa_date")->Apply(bench::date_shapes);
BENCHMARK(BM_vectors<int32_t, badd_months_aa_date>)->Name("BM_badd_months_aa_date")->Apply(bench::date_shapes);

}  // namespace
