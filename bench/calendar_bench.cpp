// The calendar's services beside plain loops over the same 13-byte records.
//
// 65,536 records, twice: near are dates of the years 1990 to 2030, all are dates of the whole calendar, two fifths of them
// Julian. The floors are a copy of the records, and the usual arithmetic of a Gregorian calendar without a cut-over, as a
// caller would write it for one calendar only. Results go to an array of their own.
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "bench/date_rows.h"
#include "qzhost/date_text.h"
#include "qzhost/interval.h"

namespace {

constexpr uint32_t kRows = 65536;

struct Records {
    std::vector<qztime> values, others, out;
    std::vector<int32_t> numbers, results;

    explicit Records(bool near) : values(kRows), others(kRows), out(kRows), numbers(kRows), results(kRows) {
        std::mt19937 random(7);
        const int32_t least = near ? 726835 : HOST_DAY_MIN + 40000, most = near ? 741444 : HOST_DAY_MAX - 40000;
        const auto fill = [&](qztime& value) {
            host_set_day_number(&value, std::uniform_int_distribution<int32_t>(least, most)(random));
            value.hour = static_cast<uint8_t>(random() % 24);
            value.minute = static_cast<uint8_t>(random() % 60);
            value.second = static_cast<uint8_t>(random() % 60);
            value.fraction = 0;
            value.tz = TZ_NONE;
        };
        for (uint32_t i = 0; i < kRows; ++i) {
            fill(values[i]);
            fill(others[i]);
            numbers[i] = host_day_number(&values[i]);
        }
    }
};

// One pass over all records for each iteration.
template <class Row>
void run(benchmark::State& state, Row row) {
    Records records(state.range(0) == 0);
    for (auto _ : state) {
        for (uint32_t i = 0; i < kRows; ++i) row(records, i);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kRows);
    state.counters["ns"] = benchmark::Counter(static_cast<double>(state.iterations()) * kRows * 1e-9,
                                              benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

#define CALENDAR_BENCH(name, ...)                                \
    void name(benchmark::State& state) {                         \
        run(state, [](Records& r, uint32_t i) { __VA_ARGS__; }); \
    }                                                            \
    BENCHMARK(name)->ArgName("all")->Arg(0)->Arg(1)

// ---- Floors -----------------------------------------------------------------------------------------------------------------

CALENDAR_BENCH(BM_floor_copy, r.out[i] = r.values[i]);
CALENDAR_BENCH(BM_floor_gregorian_number, r.results[i] = bench::gregorian_number(r.values[i]));
CALENDAR_BENCH(BM_floor_gregorian_date, bench::set_gregorian(r.out[i], r.numbers[i]));

// ---- Fields, numbers, comparison --------------------------------------------------------------------------------------------

CALENDAR_BENCH(BM_qztime_get_year, r.results[i] = qztime_get_year(&r.values[i]));
CALENDAR_BENCH(BM_qztime_assign, qztime_assign(&r.out[i], &r.values[i]));
CALENDAR_BENCH(BM_qztime_decode_encode, int32_t y, mo, d, h, mi, s, f; int16_t tz;
               qztime_decode(&r.values[i], &y, &mo, &d, &h, &mi, &s, &f, &tz);
               r.results[i] = qztime_encode(&r.out[i], y, mo, d, h, mi, s, f, tz));
CALENDAR_BENCH(BM_qztime_decode_encode_without_check, int32_t y, mo, d, h, mi, s, f; int16_t tz;
               qztime_decode(&r.values[i], &y, &mo, &d, &h, &mi, &s, &f, &tz);
               qztime_encode_without_check(&r.out[i], y, mo, 1, h, mi, s, f, tz));
CALENDAR_BENCH(BM_host_day_number, r.results[i] = host_day_number(&r.values[i]));
CALENDAR_BENCH(BM_host_set_day_number, host_set_day_number(&r.out[i], r.numbers[i]));
CALENDAR_BENCH(BM_qztime_diff_day, r.results[i] = qztime_diff_day(&r.values[i], &r.others[i]));
CALENDAR_BENCH(BM_qztime_cmp, r.results[i] = qztime_cmp(&r.values[i], &r.others[i]));
CALENDAR_BENCH(BM_qztime_compare, r.results[i] = qztime_compare(&r.values[i], &r.others[i], 4));
CALENDAR_BENCH(BM_qztime_day_of_week, r.results[i] = qztime_day_of_week(&r.values[i]));
CALENDAR_BENCH(BM_qztime_day_of_year, r.results[i] = qztime_day_of_year(&r.values[i]));
CALENDAR_BENCH(BM_qztime_week_for_datepart, r.results[i] = qztime_week_for_datepart(&r.values[i]));
CALENDAR_BENCH(BM_qztime_month_end_day, r.results[i] = qztime_month_end_day(r.values[i].year, r.values[i].month));
CALENDAR_BENCH(BM_composition, int32_t y = 0, m = 0, d = 0;
               qztime_get_date_by_ndays_from_zero(qztime_calc_n_days_from_zero(r.values[i].year, r.values[i].month, 1) + 40, &y,
                                                  &m, &d);
               r.results[i] = y + m + d);

// ---- Arithmetic -------------------------------------------------------------------------------------------------------------

CALENDAR_BENCH(BM_qztime_add_by_fmt_day, r.results[i] = qztime_add_by_fmt(&r.values[i], 3, 40, &r.out[i]));
CALENDAR_BENCH(BM_qztime_add_by_fmt_hour, r.results[i] = qztime_add_by_fmt(&r.values[i], 4, 40, &r.out[i]));
CALENDAR_BENCH(BM_qztime_add_by_fmt_month, r.results[i] = qztime_add_by_fmt(&r.values[i], 2, 40, &r.out[i]));
CALENDAR_BENCH(BM_qztime_date_add_number_whole, r.results[i] = qztime_date_add_number(&r.values[i], 40.0, &r.out[i]));
CALENDAR_BENCH(BM_qztime_date_add_number_fraction, r.results[i] = qztime_date_add_number(&r.values[i], 40.3, &r.out[i]));
CALENDAR_BENCH(BM_qztime_date_add_iv_ym, const qz_interval_ym months{0, 13, 656};
               r.results[i] = qztime_date_add_iv_ym(&r.values[i], &months, &r.out[i]));
CALENDAR_BENCH(BM_datetime_add_interval_dt, const qz_interval_dt interval{40, 3, 2, 1, 500000, 1686};
               r.results[i] = datetime_add_interval_dt(&r.values[i], &interval, &r.out[i]));
CALENDAR_BENCH(BM_qztime_parse_datediff_second, qztime_parse_datediff(6, &r.values[i], &r.others[i], &r.results[i]));
CALENDAR_BENCH(BM_qztime_parse_datediff_month, qztime_parse_datediff(2, &r.values[i], &r.others[i], &r.results[i]));

// ---- Text -------------------------------------------------------------------------------------------------------------------

struct Form {
    const char* name;
    const char* pattern;  // year, month, day, hour, minute, second
};

constexpr Form kForms[] = {
    {"date", "%04d-%02d-%02d"},
    {"datetime", "%04d-%02d-%02d %02d:%02d:%02d"},
    {"fraction", "%04d-%02d-%02d %02d:%02d:%02d.123456"},
    {"zone", "%04d-%02d-%02dT%02d:%02d:%02d.5+08:00"},
    {"slashes", "%d/%d/%d %d:%02d"},
    {"compact", "%04d%02d%02d%02d%02d%02d"},
};

struct Texts {
    std::vector<std::string> texts;
    explicit Texts(const char* pattern) {
        const Records records(true);
        for (const qztime& v : records.values) {
            char buffer[64];
            // The pattern is one of the table's, and takes the first of these.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
            std::snprintf(buffer, sizeof buffer, pattern, v.year, v.month, v.day, v.hour, v.minute, v.second);
#pragma GCC diagnostic pop
            texts.emplace_back(buffer);
        }
    }
};

void BM_qztime_from_char_ex(benchmark::State& state) {
    const Form& form = kForms[state.range(0)];
    const Texts texts(form.pattern);
    std::vector<qztime> out(kRows);
    for (auto _ : state) {
        int32_t code = 0;
        for (uint32_t i = 0; i < kRows; ++i) {
            code |= qztime_from_char_ex(texts.texts[i].data(), static_cast<uint32_t>(texts.texts[i].size()), &out[i]);
        }
        if (code != 0) state.SkipWithError("a text was refused");
        benchmark::ClobberMemory();
    }
    state.SetLabel(form.name);
    state.SetItemsProcessed(state.iterations() * kRows);
}
BENCHMARK(BM_qztime_from_char_ex)->ArgName("form")->DenseRange(0, 5);

// The floor: digits at fixed places, with no test of anything.
void BM_floor_fixed_places(benchmark::State& state) {
    const Texts texts(kForms[1].pattern);
    std::vector<qztime> out(kRows);
    for (auto _ : state) {
        for (uint32_t i = 0; i < kRows; ++i) {
            const char* t = texts.texts[i].data();
            const auto two = [t](int at) { return (t[at] - '0') * 10 + t[at + 1] - '0'; };
            qztime_encode_without_check(&out[i], two(0) * 100 + two(2), two(5), two(8), two(11), two(14), two(17), 0, TZ_NONE);
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}
BENCHMARK(BM_floor_fixed_places);

void BM_qztime_to_char(benchmark::State& state) {
    const Records records(true);
    char buffer[HOST_DATE_TEXT_BYTES];
    for (auto _ : state) {
        for (const qztime& value : records.values) {
            benchmark::DoNotOptimize(qztime_to_char(&value, HOST_KIND_DATETIME, -1, buffer));
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}
BENCHMARK(BM_qztime_to_char);

}  // namespace
