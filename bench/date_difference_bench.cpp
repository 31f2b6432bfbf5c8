// Distances between dates, beside plain loops over the same 13-byte records.
#include <cstring>

#include "bench/date_rows.h"
#include "qzhost/decimal.h"

namespace {

using bench::Host;
using bench::Shape;
using bench::Vector;

// ---- Floors -----------------------------------------------------------------------------------------------------------------

template <class R, int32_t kType, R (*kRow)(const qztime&, const qztime&)>
void BM_loop(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector first = bench::datetimes(host, shape), second = bench::other_datetimes(host, shape);
    const Vector result(host, kType, shape.rows);
    R* const out = result.values<R>();
    uint8_t* const out_valid = result.col()->data->valid;
    for (auto _ : state) {
        const qztime *const a = first.values<qztime>(), *const b = second.values<qztime>();
        for (uint32_t i = 0; i < shape.rows; ++i) out_valid[i] = first.valid()[i] & second.valid()[i];
        for (uint32_t i = 0; i < shape.rows; ++i) out[i] = kRow(a[i], b[i]);
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, 2 * (sizeof(qztime) + 1) + sizeof(R) + 1);
}

int32_t years(const qztime& a, const qztime& b) { return a.year - b.year; }
int32_t days(const qztime& a, const qztime& b) { return bench::gregorian_number(a) - bench::gregorian_number(b); }

int64_t seconds(const qztime& a, const qztime& b) {
    const int64_t apart = int64_t{bench::gregorian_number(b) - bench::gregorian_number(a)} * 86400 + (b.hour - a.hour) * 3600 +
                          (b.minute - a.minute) * 60 + b.second - a.second;
    return apart - ((apart > 0) & (a.fraction > b.fraction)) + ((apart < 0) & (a.fraction < b.fraction));
}

int64_t months(const qztime& a, const qztime& b) {
    const int64_t count = (b.year - a.year) * 12 + b.month - a.month;
    const auto rest = [](const qztime& v) {
        return uint64_t{v.day} << 54 | uint64_t{v.hour} << 48 | uint64_t{v.minute} << 40 | uint64_t{v.second} << 32 |
               v.fraction;
    };
    const uint64_t left = rest(a), right = rest(b);
    return count - ((count > 0) & (left > right)) + ((count < 0) & (left < right));
}

BENCHMARK(BM_loop<int32_t, HOST_INT, years>)->Name("BM_loop_years")->Apply(bench::dense_dates);
BENCHMARK(BM_loop<int32_t, HOST_INT, days>)->Name("BM_loop_days")->Apply(bench::dense_dates);
BENCHMARK(BM_loop<int64_t, HOST_INT64, seconds>)->Name("BM_loop_seconds")->Apply(bench::dense_dates);
BENCHMARK(BM_loop<int64_t, HOST_INT64, months>)->Name("BM_loop_months")->Apply(bench::dense_dates);

// The decimal alone, of as many numbers with days in them.
void BM_xdec_from_double(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector numbers = Vector::of<double>(host, HOST_DOUBLE, shape, [](std::mt19937_64& random) {
        return static_cast<double>(random() % 960) - 480.0 + (static_cast<double>(random() % 61) - 30.0) / 31.0;
    });
    const Vector result(host, HOST_DEC, shape.rows);
    for (auto _ : state) {
        for (uint32_t i = 0; i < shape.rows; ++i) {
            if (xdec_from_double(numbers.values<double>()[i], result.values<xdec>() + i) < 0) std::abort();
        }
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, sizeof(double) + sizeof(xdec));
}
BENCHMARK(BM_xdec_from_double)->Apply(bench::dense_dates);

// ---- Functions --------------------------------------------------------------------------------------------------------------

template <class R, int32_t kType, bop_fn_aa* kFunction>
void BM_between(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector first = bench::datetimes(host, shape), second = bench::other_datetimes(host, shape);
    const Vector result(host, kType, shape.rows);
    for (auto _ : state) {
        if (kFunction(host.env(), host.rt_mem(), first.col(), second.col(), result.col(), shape.rows) != 0) std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, 2 * (sizeof(qztime) + 1) + sizeof(R) + 1);
}

template <class R, int32_t kType, bop_fn_vaa* kFunction, int32_t kPart>
void BM_datediff(benchmark::State& state) {
    const Host host;
    const Shape shape(state);
    const Vector first = bench::datetimes(host, shape), second = bench::other_datetimes(host, shape);
    const Vector result(host, kType, shape.rows);
    bdta3_int record{1, kPart};
    auto* const part = reinterpret_cast<bdta3_scalar*>(&record);
    for (auto _ : state) {
        if (kFunction(host.env(), host.rt_mem(), part, first.col(), second.col(), result.col(), shape.rows) != 0) std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, 2 * (sizeof(qztime) + 1) + sizeof(R) + 1);
}

#define BENCH_BETWEEN(name, type, host_type) \
    BENCHMARK(BM_between<type, host_type, name>)->Name("BM_" #name)->Apply(bench::date_shapes)
#define BENCH_DATEDIFF(name, type, host_type, part, suffix) \
    BENCHMARK(BM_datediff<type, host_type, name, part>)->Name("BM_" #name suffix)->Apply(bench::date_shapes)

BENCH_BETWEEN(byears_between_aa_date, int32_t, HOST_INT);
BENCH_BETWEEN(bdays_between_aa_date, int32_t, HOST_INT);
BENCH_BETWEEN(bweeks_between_aa_date, int32_t, HOST_INT);
BENCH_BETWEEN(bmonths_between_aa_date, xdec, HOST_DEC);
BENCH_DATEDIFF(bdatediff_vaa_date, int32_t, HOST_INT, HOST_PART_DAY, "_day");
BENCH_DATEDIFF(bdatediff_vaa_date, int32_t, HOST_INT, HOST_PART_MONTH, "_month");
BENCH_DATEDIFF(bbigdatediff_vaa_date, int64_t, HOST_INT64, HOST_PART_DAY, "_day");
BENCH_DATEDIFF(bbigdatediff_vaa_date, int64_t, HOST_INT64, HOST_PART_SECOND, "_second");
BENCH_DATEDIFF(bbigdatediff_vaa_date, int64_t, HOST_INT64, HOST_PART_MICROSECOND, "_microsecond");
BENCH_DATEDIFF(bbigdatediff_vaa_date, int64_t, HOST_INT64, HOST_PART_MONTH, "_month");
BENCH_DATEDIFF(bbigdatediff_vaa_date, int64_t, HOST_INT64, HOST_PART_WEEK, "_week");

}  // namespace
