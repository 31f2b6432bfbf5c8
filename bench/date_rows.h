// Random date-times for the benchmarks of date functions.
#pragma once

#include <cstdint>
#include <random>

#include "bench/batch.h"
#include "qzhost/calendar.h"

namespace bench {

// A date-time of the years 1990 to 2029, without a fraction and a zone.
inline qztime random_datetime(std::mt19937_64& random) {
    constexpr int32_t kFirst = 726835, kDays = 14610;
    qztime value{0,
                 0,
                 0,
                 static_cast<uint8_t>(random() % 24),
                 static_cast<uint8_t>(random() % 60),
                 static_cast<uint8_t>(random() % 60),
                 0,
                 TZ_NONE};
    host_set_day_number(&value, kFirst + static_cast<int32_t>(random() % kDays));
    return value;
}

// The same with other values: a vector takes its seed from the batch's shape.
template <unsigned kOther>
qztime other_datetime(std::mt19937_64& random) {
    random.discard(kOther);
    return random_datetime(random);
}

// 65,536 rows: without NULLs, with 1 and 50 percent, and with a selection; and 1,024 without either.
inline void date_shapes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"null", "sel", "rows"});
    for (const int64_t nulls : {0, 1, 50}) benchmark->Args({nulls, 0, 65536});
    benchmark->Args({0, 1, 65536});
    benchmark->Args({0, 0, 1024});
}

inline void dense_dates(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"null", "sel", "rows"})->Args({0, 0, 65536});
}

// The day number of the usual arithmetic of one calendar, as a caller would write it who has no cut-over.
inline int32_t gregorian_number(const qztime& v) {
    const int32_t y = v.year - (v.month <= 2);
    const int32_t era = (y >= 0 ? y : y - 399) / 400;
    const int32_t year_of_era = y - era * 400;
    const int32_t day_of_year = (153 * (v.month > 2 ? v.month - 3 : v.month + 9) + 2) / 5 + v.day - 1;
    return era * 146097 + year_of_era * 365 + year_of_era / 4 - year_of_era / 100 + day_of_year;
}

inline void set_gregorian(qztime& v, int32_t number) {
    const int32_t era = (number >= 0 ? number : number - 146096) / 146097;
    const int32_t day_of_era = number - era * 146097;
    const int32_t year_of_era = (day_of_era - day_of_era / 1460 + day_of_era / 36524 - day_of_era / 146096) / 365;
    const int32_t day_of_year = day_of_era - (365 * year_of_era + year_of_era / 4 - year_of_era / 100);
    const int32_t month = (5 * day_of_year + 2) / 153;
    v.day = static_cast<uint8_t>(day_of_year - (153 * month + 2) / 5 + 1);
    v.month = static_cast<uint8_t>(month < 10 ? month + 3 : month - 9);
    v.year = static_cast<int16_t>(year_of_era + era * 400 + (v.month <= 2));
}

}  // namespace bench
