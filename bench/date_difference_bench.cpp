// Distances between dates, beside plain loops over the same 13-byte records.
#include "bench/date_rows.h"
#include "qzhost/decimal.h"

namespace {

using bench::Batch;
using bench::Vector;

template <class R>
constexpr size_t kBytes = 2 * (sizeof(qztime) + 1) + sizeof(R) + 1;

// Two vectors of dates, and the result.
template <class R>
struct Dates : Batch<R> {
    explicit Dates(benchmark::State& state) : Batch<R>(state) {}

    const Vector first = this->template of<qztime>(bench::random_datetime);
    const Vector second = this->template of<qztime>(bench::other_datetime<7>);
};

// ---- Floors -----------------------------------------------------------------------------------------------------------------

template <class R, R (*kRow)(const qztime&, const qztime&)>
void BM_loop(benchmark::State& state) {
    Dates<R> dates(state);
    const uint32_t n = dates.rows();
    R* const out = dates.out().template values<R>();
    uint8_t* const out_valid = dates.result()->data->valid;
    dates.measure(kBytes<R>, [&] {
        const qztime* const a = dates.first.template values<qztime>();
        const qztime* const b = dates.second.template values<qztime>();
        for (uint32_t i = 0; i < n; ++i) out_valid[i] = dates.first.valid()[i] & dates.second.valid()[i];
        for (uint32_t i = 0; i < n; ++i) out[i] = kRow(a[i], b[i]);
        return 0;
    });
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

BENCHMARK(BM_loop<int32_t, years>)->Name("BM_loop_years")->Apply(bench::dense_dates);
BENCHMARK(BM_loop<int32_t, days>)->Name("BM_loop_days")->Apply(bench::dense_dates);
BENCHMARK(BM_loop<int64_t, seconds>)->Name("BM_loop_seconds")->Apply(bench::dense_dates);
BENCHMARK(BM_loop<int64_t, months>)->Name("BM_loop_months")->Apply(bench::dense_dates);

// The decimal alone, of as many numbers with days in them.
void BM_xdec_from_double(benchmark::State& state) {
    Batch<xdec> batch(state);
    const Vector numbers = batch.of<double>([](std::mt19937_64& random) {
        return static_cast<double>(random() % 960) - 480.0 + (static_cast<double>(random() % 61) - 30.0) / 31.0;
    });
    batch.measure(sizeof(double) + sizeof(xdec), [&] {
        for (uint32_t i = 0; i < batch.rows(); ++i) {
            if (xdec_from_double(numbers.values<double>()[i], batch.out().values<xdec>() + i) < 0) return -1;
        }
        return 0;
    });
}
BENCHMARK(BM_xdec_from_double)->Apply(bench::dense_dates);

// ---- Functions --------------------------------------------------------------------------------------------------------------

template <class R, bop_fn_aa* kFunction>
void BM_between(benchmark::State& state) {
    Dates<R> d(state);
    d.measure(kBytes<R>, [&] { return kFunction(d.env(), d.rt_mem(), d.first.col(), d.second.col(), d.result(), d.rows()); });
}

template <class R, bop_fn_vaa* kFunction, int32_t kPart>
void BM_datediff(benchmark::State& state) {
    Dates<R> d(state);
    bdta3_int part{1, kPart};
    d.measure(kBytes<R>, [&] {
        return kFunction(d.env(), d.rt_mem(), bench::constant(part), d.first.col(), d.second.col(), d.result(), d.rows());
    });
}

#define BENCH_BETWEEN(name, type) BENCHMARK(BM_between<type, name>)->Name("BM_" #name)->Apply(bench::date_shapes)
#define BENCH_DATEDIFF(name, type, part, suffix) \
    BENCHMARK(BM_datediff<type, name, part>)->Name("BM_" #name suffix)->Apply(bench::date_shapes)

BENCH_BETWEEN(byears_between_aa_date, int32_t);
BENCH_BETWEEN(bdays_between_aa_date, int32_t);
BENCH_BETWEEN(bweeks_between_aa_date, int32_t);
BENCH_BETWEEN(bmonths_between_aa_date, xdec);
BENCH_DATEDIFF(bdatediff_vaa_date, int32_t, HOST_PART_DAY, "_day");
BENCH_DATEDIFF(bdatediff_vaa_date, int32_t, HOST_PART_MONTH, "_month");
BENCH_DATEDIFF(bbigdatediff_vaa_date, int64_t, HOST_PART_DAY, "_day");
BENCH_DATEDIFF(bbigdatediff_vaa_date, int64_t, HOST_PART_SECOND, "_second");
BENCH_DATEDIFF(bbigdatediff_vaa_date, int64_t, HOST_PART_MICROSECOND, "_microsecond");
BENCH_DATEDIFF(bbigdatediff_vaa_date, int64_t, HOST_PART_MONTH, "_month");
BENCH_DATEDIFF(bbigdatediff_vaa_date, int64_t, HOST_PART_WEEK, "_week");

}  // namespace
