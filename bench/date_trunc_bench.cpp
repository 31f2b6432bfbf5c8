// trunc and round of dates, by every unit.
//
// Dates of the years 1990 to 2030 with random times of day, so that what goes up and what goes down alternate without order;
// beside them the whole calendar, two fifths of it before the calendar change. The floors are a copy of the records and valid
// bytes, and the plain loops that a caller would write for trunc to the month and to the Monday in one calendar only.
#include <cstring>

#include "bench/batch.h"
#include "qzbifun/date.h"
#include "qzhost/calendar.h"

namespace {

using bench::Batch;
using bench::Vector;

constexpr size_t kBytes = 2 * (sizeof(qztime) + 1);

template <int32_t kFirst, int32_t kLast>
qztime random_date(std::mt19937_64& random) {
    qztime value;
    host_set_day_number(&value, kFirst + static_cast<int32_t>(random() % static_cast<uint64_t>(kLast - kFirst)));
    value.hour = static_cast<uint8_t>(random() % 24);
    value.minute = static_cast<uint8_t>(random() % 60);
    value.second = static_cast<uint8_t>(random() % 60);
    value.fraction = static_cast<uint32_t>(random() % 1000000000);
    value.tz = TZ_NONE;
    return value;
}

constexpr auto kNear = random_date<726835, 741444>;                               // 1990 to 2030
constexpr auto kWhole = random_date<HOST_DAY_MIN + 40000, HOST_DAY_MAX - 40000>;  // also of the centuries around

void BM_element(benchmark::State& state, bop_fn_av* function, const char* word, qztime (*make)(std::mt19937_64&)) {
    Batch<qztime> batch(state);
    const Vector x = batch.of<qztime>(make);
    nstr element = bench::text_constant(word);
    batch.measure(kBytes, [&] {
        return function(batch.env(), batch.rt_mem(), x.col(), bench::constant(element), batch.result(), batch.rows());
    });
}

void BM_day(benchmark::State& state, bop_fn_a* function) {
    Batch<qztime> batch(state);
    const Vector x = batch.of<qztime>(kNear);
    batch.measure(kBytes, [&] { return function(batch.env(), batch.rt_mem(), x.col(), batch.result(), batch.rows()); });
}

// ---- Floors ---------------------------------------------------------------------------------------------------------------

void BM_loop(benchmark::State& state, void (*loop)(qztime*, uint8_t*, const qztime*, const uint8_t*, uint32_t)) {
    Batch<qztime> batch(state);
    const Vector x = batch.of<qztime>(kNear);
    batch.measure(kBytes, [&] {
        loop(batch.out().values<qztime>(), batch.result()->data->valid, x.values<qztime>(), x.valid(), batch.rows());
        return 0;
    });
}

void copy(qztime* out, uint8_t* out_valid, const qztime* x, const uint8_t* valid, uint32_t n) {
    std::memcpy(out, x, sizeof(qztime) * n);
    std::memcpy(out_valid, valid, n);
}

BENCH_FLOOR void to_month(qztime* out, uint8_t* out_valid, const qztime* x, const uint8_t* valid, uint32_t n) {
    for (uint32_t i = 0; i < n; ++i) out[i] = {x[i].year, x[i].month, 1, 0, 0, 0, 0, 0};
    for (uint32_t i = 0; i < n; ++i) out_valid[i] = valid[i];
}

// The usual arithmetic of a Gregorian calendar by eras of 400 years.
BENCH_FLOOR void to_monday(qztime* out, uint8_t* out_valid, const qztime* x, const uint8_t* valid, uint32_t n) {
    for (uint32_t i = 0; i < n; ++i) {
        const int32_t month = x[i].month;
        const int32_t y = x[i].year - (month <= 2);
        const int32_t of_year = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + x[i].day - 1;
        const int32_t from_march = y / 400 * 146097 + y % 400 * 365 + y % 400 / 4 - y % 400 / 100 + of_year;
        const int32_t monday = from_march - (from_march + 2) % 7;  // 0000-03-01 was a Wednesday
        const int32_t era = monday / 146097, of_era = monday % 146097;
        const int32_t year_of_era = (of_era - of_era / 1460 + of_era / 36524 - of_era / 146096) / 365;
        const int32_t march_day = of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
        const int32_t march_month = (5 * march_day + 2) / 153;
        out[i].day = static_cast<uint8_t>(march_day - (153 * march_month + 2) / 5 + 1);
        out[i].month = static_cast<uint8_t>(march_month < 10 ? march_month + 3 : march_month - 9);
        out[i].year = static_cast<int16_t>(era * 400 + year_of_era + (march_month >= 10));
        out[i].hour = out[i].minute = out[i].second = 0;
        out[i].fraction = 0;
        out[i].tz = x[i].tz;
    }
    for (uint32_t i = 0; i < n; ++i) out_valid[i] = valid[i];
}

BENCHMARK_CAPTURE(BM_loop, copy, copy)->Name("BM_copy_13")->Apply(bench::dense_shapes);
BENCHMARK_CAPTURE(BM_loop, month, to_month)->Name("BM_loop_trunc_month")->Apply(bench::dense_shapes);
BENCHMARK_CAPTURE(BM_loop, monday, to_monday)->Name("BM_loop_trunc_monday")->Apply(bench::dense_shapes);

// Every unit dense; YYYY and WW in all shapes too.
#define BENCH_UNIT(name, word) \
    BENCHMARK_CAPTURE(BM_element, word, name, #word, kNear)->Name("BM_" #name "/" #word)->Apply(bench::dense_shapes)
#define BENCH_UNIT_WHOLE(name, word)                         \
    BENCHMARK_CAPTURE(BM_element, word, name, #word, kWhole) \
        ->Name("BM_" #name "/" #word "/whole_calendar")      \
        ->Apply(bench::dense_shapes)
#define BENCH_SHAPES(name, word) \
    BENCHMARK_CAPTURE(BM_element, word, name, #word, kNear)->Name("BM_" #name "/" #word)->Apply(bench::all_shapes)

BENCH_SHAPES(btrunc_datetime_av_date, YYYY);
BENCH_UNIT(btrunc_datetime_av_date, CC);
BENCH_UNIT(btrunc_datetime_av_date, Q);
BENCH_UNIT(btrunc_datetime_av_date, MM);
BENCH_UNIT(btrunc_datetime_av_date, DD);
BENCH_UNIT(btrunc_datetime_av_date, HH);
BENCH_UNIT(btrunc_datetime_av_date, MI);
BENCH_SHAPES(btrunc_datetime_av_date, WW);
BENCH_UNIT(btrunc_datetime_av_date, W);
BENCH_UNIT(btrunc_datetime_av_date, DAY);
BENCH_UNIT(btrunc_datetime_av_date, IW);
BENCH_UNIT_WHOLE(btrunc_datetime_av_date, IW);

BENCH_UNIT(bround_datetime_av_date, CC);
BENCH_UNIT(bround_datetime_av_date, YYYY);
BENCH_UNIT(bround_datetime_av_date, Q);
BENCH_SHAPES(bround_datetime_av_date, MM);
BENCH_UNIT(bround_datetime_av_date, DD);
BENCH_UNIT(bround_datetime_av_date, HH);
BENCH_UNIT(bround_datetime_av_date, MI);
BENCH_UNIT(bround_datetime_av_date, WW);
BENCH_UNIT(bround_datetime_av_date, W);
BENCH_UNIT(bround_datetime_av_date, DAY);
BENCH_UNIT(bround_datetime_av_date, IW);
BENCH_UNIT_WHOLE(bround_datetime_av_date, WW);

BENCHMARK_CAPTURE(BM_day, trunc, btrunc_day_a_date)->Name("BM_btrunc_day_a_date")->Apply(bench::all_shapes);
BENCHMARK_CAPTURE(BM_day, round, bround_day_a_date)->Name("BM_bround_day_a_date")->Apply(bench::all_shapes);

}  // namespace
