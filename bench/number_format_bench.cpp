// Numbers to text and back. Each service stands beside the floor of the same numbers in the same run: the C++ library's
// conversion of doubles, and the plain decimal conversion where a format is at work.
//
// An item is one number; 4096 of them, so that branches are not learnt by heart.
#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "qzhost/decimal.h"
#include "qzhost/number_format.h"
#include "qzhost/number_text.h"

namespace {

constexpr size_t kNumbers = 4096;

// ---- Doubles ----------------------------------------------------------------------------------------------------------------

enum Doubles { kUniform, kTwoDecimals, kIntegers, kAnyBits };

std::vector<double> make_doubles(Doubles kind) {
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> uniform(-1e6, 1e6);
    std::vector<double> numbers(kNumbers);
    for (double& number : numbers) {
        switch (kind) {
            case kUniform:
                number = uniform(random);
                break;
            case kTwoDecimals:
                number = static_cast<double>(static_cast<int64_t>(random() % 200'000'000) - 100'000'000) / 100;
                break;
            case kIntegers:
                number = static_cast<double>(static_cast<int64_t>(random() % 2'000'000'000) - 1'000'000'000);
                break;
            case kAnyBits:
                do {
                    const uint64_t bits = random();
                    std::memcpy(&number, &bits, sizeof number);
                } while (number - number != 0);
        }
    }
    return numbers;
}

template <class Write>
void write_doubles(benchmark::State& state, Doubles kind, Write write) {
    const std::vector<double> numbers = make_doubles(kind);
    char text[QZ_DOU2CHAR_BYTES];
    for (auto _ : state) {
        for (const double number : numbers) {
            benchmark::DoNotOptimize(write(number, text));
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kNumbers));
}

void BM_qz_dou2char(benchmark::State& state, Doubles kind) {
    write_doubles(state, kind, [](double number, char* text) { return qz_dou2char(number, 1, text); });
}

void BM_floor_to_chars(benchmark::State& state, Doubles kind) {
    write_doubles(state, kind,
                  [](double number, char* text) { return std::to_chars(text, text + QZ_DOU2CHAR_BYTES, number).ptr - text; });
}

template <class Read>
void read_doubles(benchmark::State& state, Doubles kind, Read read) {
    std::vector<std::string> texts;
    for (const double number : make_doubles(kind)) {
        char text[QZ_DOU2CHAR_BYTES];
        texts.emplace_back(text, static_cast<size_t>(qz_dou2char(number, 1, text)));
    }
    for (auto _ : state) {
        for (const std::string& text : texts) {
            double number = 0;
            benchmark::DoNotOptimize(read(text, number));
            benchmark::DoNotOptimize(number);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kNumbers));
}

void BM_utl_digit_from_char(benchmark::State& state, Doubles kind) {
    read_doubles(state, kind, [](const std::string& text, double& number) {
        return utl_digit_from_char(text.data(), static_cast<uint32_t>(text.size()), &number, 1);
    });
}

void BM_floor_from_chars(benchmark::State& state, Doubles kind) {
    read_doubles(state, kind, [](const std::string& text, double& number) {
        return std::from_chars(text.data(), text.data() + text.size(), number).ptr;
    });
}

#define BIFUN_BENCH_DOUBLES(function)                        \
    BENCHMARK_CAPTURE(function, uniform, kUniform);          \
    BENCHMARK_CAPTURE(function, two_decimals, kTwoDecimals); \
    BENCHMARK_CAPTURE(function, integers, kIntegers);        \
    BENCHMARK_CAPTURE(function, any_bits, kAnyBits)

BIFUN_BENCH_DOUBLES(BM_qz_dou2char);
BIFUN_BENCH_DOUBLES(BM_floor_to_chars);
BIFUN_BENCH_DOUBLES(BM_utl_digit_from_char);
BIFUN_BENCH_DOUBLES(BM_floor_from_chars);

// ---- Formats ----------------------------------------------------------------------------------------------------------------

// Numbers of up to nine digits, two of them behind the point.
std::vector<xdec> make_decimals() {
    std::mt19937_64 random(2);
    std::vector<xdec> numbers(kNumbers);
    for (xdec& number : numbers) {
        xdec_from_unscaled(&number, static_cast<int64_t>(random() % 1'000'000'000) - 500'000'000, 2);
    }
    return numbers;
}

uint32_t size_of(std::string_view text) { return static_cast<uint32_t>(text.size()); }

template <class Write>
void write_decimals(benchmark::State& state, Write write) {
    const std::vector<xdec> numbers = make_decimals();
    char text[XDEC_TEXT_SIZE];
    for (auto _ : state) {
        for (const xdec& number : numbers) {
            benchmark::DoNotOptimize(write(number, text));
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kNumbers));
}

void BM_xdec_to_char_with_fmt(benchmark::State& state, std::string_view format) {
    write_decimals(state, [format](const xdec& number, char* text) {
        return xdec_to_char_with_fmt(nullptr, &number, text, format.data(), size_of(format));
    });
}

void BM_xdec_to_char_with_nls(benchmark::State& state, std::string_view format, std::string_view nls) {
    write_decimals(state, [format, nls](const xdec& number, char* text) {
        return xdec_to_char_with_nls(nullptr, &number, text, format.data(), size_of(format), nls.data(), size_of(nls));
    });
}

void BM_xdec_to_char_with_fmt_low(benchmark::State& state, std::string_view format) {
    xdec_number_format parsed;
    xdec_to_char_fmt_parse(nullptr, format.data(), size_of(format), &parsed);
    write_decimals(state, [&parsed](const xdec& number, char* text) {
        return xdec_to_char_with_fmt_low(nullptr, &number, text, &parsed);
    });
}

void BM_floor_xdec_to_char2(benchmark::State& state) {
    write_decimals(state, [](const xdec& number, char* text) {
        uint32_t length = 0;
        return xdec_to_char2(&number, text, XDEC_TEXT_SIZE, &length);
    });
}

template <class Read>
void read_decimals(benchmark::State& state, std::string_view format, Read read) {
    std::vector<std::string> texts;
    for (const xdec& number : make_decimals()) {
        char text[XDEC_FORMATTED_BYTES];
        xdec_to_char_with_fmt(nullptr, &number, text, format.data(), size_of(format));
        texts.emplace_back(text);
    }
    for (auto _ : state) {
        for (const std::string& text : texts) {
            xdec number;
            benchmark::DoNotOptimize(read(text, number));
            benchmark::DoNotOptimize(number);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(kNumbers));
}

void BM_char_to_dec_with_fmt(benchmark::State& state, std::string_view format) {
    read_decimals(state, format, [format](const std::string& text, xdec& number) {
        return char_to_dec_with_fmt(nullptr, text.data(), static_cast<uint16_t>(text.size()), format.data(),
                                    static_cast<uint16_t>(format.size()), &number);
    });
}

void BM_floor_xdec_from_char(benchmark::State& state) {
    read_decimals(state, "FM9999999.99",
                  [](const std::string& text, xdec& number) { return xdec_from_char(&number, text.data(), size_of(text)); });
}

BENCHMARK_CAPTURE(BM_xdec_to_char_with_fmt, plain, "9999999.99");
BENCHMARK_CAPTURE(BM_xdec_to_char_with_fmt, groups, "FML9G999G990D00MI");
BENCHMARK_CAPTURE(BM_xdec_to_char_with_fmt, exponent, "S9.99EEEE");
BENCHMARK_CAPTURE(BM_xdec_to_char_with_fmt, shortest, "TM9");
BENCHMARK_CAPTURE(BM_xdec_to_char_with_fmt, hexadecimal, "XXXXXXXX");
BENCHMARK_CAPTURE(BM_xdec_to_char_with_nls, groups, "L9G999G990D00", "NLS_NUMERIC_CHARACTERS=',.' NLS_CURRENCY='EUR'");
BENCHMARK_CAPTURE(BM_xdec_to_char_with_fmt_low, plain, "9999999.99");
BENCHMARK_CAPTURE(BM_xdec_to_char_with_fmt_low, groups, "FML9G999G990D00MI");
BENCHMARK(BM_floor_xdec_to_char2);
BENCHMARK_CAPTURE(BM_char_to_dec_with_fmt, plain, "9999999.99");
BENCHMARK_CAPTURE(BM_char_to_dec_with_fmt, groups, "FML9G999G990D00MI");
BENCHMARK(BM_floor_xdec_from_char);

}  // namespace
