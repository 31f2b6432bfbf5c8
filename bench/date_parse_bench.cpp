// ifun_parse_date, and the words for parts of a date, text by text.
//
// 65,536 texts of one form, of random dates of the years 1990 to 2030, packed in one buffer. The floor reads two digits at a
// time of a text of known form and checks nothing.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "qzbifun/date.h"

namespace {

constexpr uint32_t kRows = 65536;

struct Texts {
    std::string bytes;
    int32_t length = 0;

    // A printf format of year, month, day, hour, minute, second, nanoseconds, all of them ints.
    explicit Texts(const char* format) {
        std::mt19937 random(5);
        for (uint32_t i = 0; i < kRows; ++i) {
            const auto below = [&](uint32_t bound) { return static_cast<int>(random() % bound); };
            const int year = 1990 + below(41), month = 1 + below(12), day = 1 + below(28), hour = below(24), minute = below(60),
                      second = below(60), fraction = below(1000000000);
            char text[64];
            length = std::snprintf(text, sizeof text, format, year, month, day, hour, minute, second, fraction);
            bytes.append(text, static_cast<size_t>(length));
        }
    }
    const char* operator[](uint32_t i) const { return bytes.data() + size_t{i} * static_cast<size_t>(length); }
};

void report(benchmark::State& state) { state.SetItemsProcessed(state.iterations() * kRows); }

void BM_parse(benchmark::State& state, const char* format) {
    const Texts texts(format);
    std::vector<qztime> out(kRows);
    for (auto _ : state) {
        for (uint32_t i = 0; i < kRows; ++i) {
            if (ifun_parse_date(texts[i], texts.length, &out[i]) != 0) std::abort();
        }
        benchmark::ClobberMemory();
    }
    report(state);
}

void BM_loop_digits(benchmark::State& state) {
    const Texts texts("%04d-%02d-%02d %02d:%02d:%02d");
    std::vector<qztime> out(kRows);
    for (auto _ : state) {
        for (uint32_t i = 0; i < kRows; ++i) {
            const char* const t = texts[i];
            const auto pair = [t](int at) { return (t[at] - '0') * 10 + (t[at + 1] - '0'); };
            out[i] = {static_cast<int16_t>(pair(0) * 100 + pair(2)),
                      static_cast<uint8_t>(pair(5)),
                      static_cast<uint8_t>(pair(8)),
                      static_cast<uint8_t>(pair(11)),
                      static_cast<uint8_t>(pair(14)),
                      static_cast<uint8_t>(pair(17)),
                      0,
                      TZ_NONE};
        }
        benchmark::ClobberMemory();
    }
    report(state);
}

void BM_words(benchmark::State& state) {
    static constexpr const char* kWords[] = {"DD", "YYYY", "month", "WW", "HH24", "MI", "IW", "XX"};
    for (auto _ : state) {
        for (uint32_t i = 0; i < kRows; ++i) {
            const char* const word = kWords[i % 8];
            benchmark::DoNotOptimize(ifun_parse_roundpart(word, static_cast<uint32_t>(std::strlen(word))));
        }
    }
    report(state);
}

BENCHMARK(BM_loop_digits)->ArgName("rows")->Arg(kRows);
#define BENCH_FORM(name, format) \
    BENCHMARK_CAPTURE(BM_parse, name, format)->Name("BM_ifun_parse_date/" #name)->ArgName("rows")->Arg(kRows)
BENCH_FORM(date_and_time, "%04d-%02d-%02d %02d:%02d:%02d");
BENCH_FORM(date, "%04d-%02d-%02d");
BENCH_FORM(with_fraction, "%04d-%02d-%02d %02d:%02d:%02d.%09d");
BENCH_FORM(slashes, "%04d/%02d/%02d %02d:%02d:%02d");
BENCH_FORM(compact, "%04d%02d%02d %02d:%02d:%02d");
BENCHMARK(BM_words)->Name("BM_ifun_parse_roundpart")->ArgName("rows")->Arg(kRows);

}  // namespace
