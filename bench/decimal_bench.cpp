// The decimal services, a value a turn out of an array, beside what the same values cost in bytes moved.
//
// Values have 1 to 18 digits, a scale of 0 up to their digits, and either sign. They do not come in any order that a branch
// could learn. "wide" ones have 19 to 38 digits.

#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "qzhost/decimal.h"

namespace {

constexpr int64_t kFew = 1024;
constexpr int64_t kMany = 65536;

using Decimals = std::vector<xdec>;

std::string random_text(std::mt19937_64& random, uint64_t min_digits, uint64_t max_digits) {
    const uint64_t count = min_digits + random() % (max_digits - min_digits + 1);
    const uint64_t scale = random() % (count + 1);
    std::string text = random() % 2 == 0 ? "-" : "";
    if (scale == count) text += '0';
    for (uint64_t i = 0; i < count; ++i) {
        if (i == count - scale) text += '.';
        text += static_cast<char>(i == 0 ? '1' + random() % 9 : '0' + random() % 10);
    }
    return text;
}

std::vector<std::string> texts(int64_t count, uint64_t seed, uint64_t min_digits = 1, uint64_t max_digits = 18) {
    std::mt19937_64 random(seed);
    std::vector<std::string> made;
    for (int64_t i = 0; i < count; ++i) made.push_back(random_text(random, min_digits, max_digits));
    return made;
}

Decimals decimals(int64_t count, uint64_t seed, uint64_t min_digits = 1, uint64_t max_digits = 18) {
    Decimals made;
    for (const std::string& text : texts(count, seed, min_digits, max_digits)) {
        made.emplace_back();
        xdec_from_char(&made.back(), text.data(), static_cast<uint32_t>(text.size()));
    }
    return made;
}

void count_items(benchmark::State& state, size_t bytes_per_item) {
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetBytesProcessed(state.iterations() * state.range(0) * static_cast<int64_t>(bytes_per_item));
}

// ---- Floors -----------------------------------------------------------------------------------------------------------------

// The records of two arguments and a result, moved as they are.
void BM_memcpy_of_records(benchmark::State& state) {
    const Decimals x = decimals(state.range(0), 1);
    Decimals out(x.size());
    for (auto _ : state) {
        std::memcpy(static_cast<void*>(out.data()), x.data(), x.size() * sizeof(xdec));
        benchmark::ClobberMemory();
    }
    count_items(state, 2 * sizeof(xdec));
}
BENCHMARK(BM_memcpy_of_records)->Arg(kFew)->Arg(kMany);

// A call of the shared library for each record that does next to nothing.
void BM_call_per_record(benchmark::State& state) {
    const Decimals x = decimals(state.range(0), 1);
    Decimals out(x.size());
    void (*volatile service)(const xdec*, xdec*) = xdec_abs;
    for (auto _ : state) {
        for (size_t i = 0; i < x.size(); ++i) service(&x[i], &out[i]);
        benchmark::ClobberMemory();
    }
    count_items(state, 2 * sizeof(xdec));
}
BENCHMARK(BM_call_per_record)->Arg(kFew)->Arg(kMany);

// ---- Services ---------------------------------------------------------------------------------------------------------------

template <int32_t (*Service)(const xdec*, const xdec*, xdec*)>
void binary(benchmark::State& state, uint64_t min_digits, uint64_t max_digits) {
    const Decimals x = decimals(state.range(0), 1, min_digits, max_digits);
    const Decimals y = decimals(state.range(0), 2, min_digits, max_digits);
    Decimals out(x.size());
    for (auto _ : state) {
        for (size_t i = 0; i < x.size(); ++i) Service(&x[i], &y[i], &out[i]);
        benchmark::ClobberMemory();
    }
    count_items(state, 3 * sizeof(xdec));
}

template <int32_t (*Service)(const xdec*, const xdec*, xdec*)>
void narrow(benchmark::State& state) {
    binary<Service>(state, 1, 18);
}
template <int32_t (*Service)(const xdec*, const xdec*, xdec*)>
void wide(benchmark::State& state) {
    binary<Service>(state, 19, 38);
}

BENCHMARK(narrow<xdec_add>)->Name("BM_xdec_add")->Arg(kFew)->Arg(kMany);
BENCHMARK(narrow<xdec_sub>)->Name("BM_xdec_sub")->Arg(kFew)->Arg(kMany);
BENCHMARK(narrow<xdec_mul>)->Name("BM_xdec_mul")->Arg(kFew)->Arg(kMany);
BENCHMARK(narrow<xdec_div>)->Name("BM_xdec_div")->Arg(kFew)->Arg(kMany);
BENCHMARK(wide<xdec_add>)->Name("BM_xdec_add/wide")->Arg(kFew)->Arg(kMany);
BENCHMARK(wide<xdec_mul>)->Name("BM_xdec_mul/wide")->Arg(kFew)->Arg(kMany);
BENCHMARK(wide<xdec_div>)->Name("BM_xdec_div/wide")->Arg(kFew)->Arg(kMany);

void BM_xdec_cmp(benchmark::State& state) {
    const Decimals x = decimals(state.range(0), 1);
    const Decimals y = decimals(state.range(0), 2);
    std::vector<int32_t> out(x.size());
    for (auto _ : state) {
        for (size_t i = 0; i < x.size(); ++i) out[i] = xdec_cmp(&x[i], &y[i]);
        benchmark::ClobberMemory();
    }
    count_items(state, 2 * sizeof(xdec));
}
BENCHMARK(BM_xdec_cmp)->Arg(kFew)->Arg(kMany);

template <class Change>
void unary(benchmark::State& state, Change change, uint64_t min_digits = 1, uint64_t max_digits = 18) {
    const Decimals x = decimals(state.range(0), 1, min_digits, max_digits);
    Decimals out(x.size());
    for (auto _ : state) {
        for (size_t i = 0; i < x.size(); ++i) change(x[i], out[i]);
        benchmark::ClobberMemory();
    }
    count_items(state, 2 * sizeof(xdec));
}

void BM_xdec_abs(benchmark::State& state) {
    unary(state, [](const xdec& x, xdec& out) { xdec_abs(&x, &out); });
}
void BM_xdec_round(benchmark::State& state) {
    unary(state, [](const xdec& x, xdec& out) { xdec_round(&x, 0, 2, &out); });
}
void BM_xdec_trunc_scale_with_pos(benchmark::State& state) {
    unary(state, [](const xdec& x, xdec& out) { xdec_trunc_scale_with_pos(&x, 2, &out); });
}
void BM_xdec_trunc_scale(benchmark::State& state) {
    unary(state, [](const xdec& x, xdec& out) {
        xdec_copy(&out, &x);
        xdec_trunc_scale(&out);
    });
}
void BM_xdec_round_wide(benchmark::State& state) {
    unary(
        state, [](const xdec& x, xdec& out) { xdec_round(&x, 0, 2, &out); }, 19, 38);
}
// The steps of a ceil: a copy, its fraction cut off, and 1 added to what is positive.
void BM_ceil_steps(benchmark::State& state) {
    unary(state, [](const xdec& x, xdec& out) {
        xdec_copy(&out, &x);
        if (x.scale == 0) return;
        xdec_trunc_scale(&out);
        if (x.sign != XDEC_SIGN_POSITIVE) return;
        xdec one;
        xdec_fill_one(&one);
        xdec_add(&out, &one, &out);
    });
}
void BM_xdec_ceil_by_scale(benchmark::State& state) {
    unary(state, [](const xdec& x, xdec& out) { xdec_ceil_by_scale(&x, &out); });
}
BENCHMARK(BM_xdec_ceil_by_scale)->Arg(kFew)->Arg(kMany);

// To binary and back, as a bit-and of wide numbers does.
void BM_binary_words(benchmark::State& state) {
    unary(
        state,
        [](const xdec& x, xdec& out) {
            uint32_t words[XDEC_BINARY_WORDS];
            xdec_get_binary(&x, words);
            xdec_from_binary(&out, x.sign == XDEC_SIGN_NEGATIVE, words);
        },
        30, 40);
}
BENCHMARK(BM_binary_words)->Arg(kFew);

void BM_xdec_div_get_quotient_int_by_16(benchmark::State& state) {
    unary(
        state,
        [](const xdec& x, xdec& out) {
            uint32_t remainder;
            xdec_div_get_quotient_int_by_16(&x, &out, &remainder);
            benchmark::DoNotOptimize(remainder);
        },
        30, 40);
}
BENCHMARK(BM_xdec_abs)->Arg(kFew)->Arg(kMany);
BENCHMARK(BM_xdec_round)->Arg(kFew)->Arg(kMany);
BENCHMARK(BM_xdec_round_wide)->Name("BM_xdec_round/wide")->Arg(kFew)->Arg(kMany);
BENCHMARK(BM_xdec_trunc_scale_with_pos)->Arg(kFew)->Arg(kMany);
BENCHMARK(BM_xdec_trunc_scale)->Arg(kFew)->Arg(kMany);
BENCHMARK(BM_ceil_steps)->Arg(kFew)->Arg(kMany);
BENCHMARK(BM_xdec_div_get_quotient_int_by_16)->Arg(kFew);

// ---- Numbers ----------------------------------------------------------------------------------------------------------------

void BM_xdec_from_int64(benchmark::State& state) {
    std::mt19937_64 random(3);
    std::vector<int64_t> values(static_cast<size_t>(state.range(0)));
    for (int64_t& value : values) value = static_cast<int64_t>(random()) >> random() % 60;
    Decimals out(values.size());
    for (auto _ : state) {
        for (size_t i = 0; i < values.size(); ++i) xdec_from_int64(&out[i], values[i], XDEC_SCALE_NONE);
        benchmark::ClobberMemory();
    }
    count_items(state, sizeof(int64_t) + sizeof(xdec));
}
BENCHMARK(BM_xdec_from_int64)->Arg(kFew)->Arg(kMany);

// Seventeen digits, fourteen to sixteen of them behind the point.
template <class Store>
void unscaled(benchmark::State& state, const Store& store) {
    std::mt19937_64 random(3);
    std::vector<int64_t> values(static_cast<size_t>(state.range(0)));
    std::vector<uint32_t> scales(values.size());
    for (int64_t& value : values) value = static_cast<int64_t>(random()) % 100'000'000'000'000'000;
    for (uint32_t& scale : scales) scale = 14 + static_cast<uint32_t>(random() % 3);
    Decimals out(values.size());
    for (auto _ : state) {
        store(out.data(), static_cast<uint32_t>(values.size()), values.data(), scales.data());
        benchmark::ClobberMemory();
    }
    count_items(state, sizeof(int64_t) + sizeof(uint32_t) + sizeof(xdec));
}

void BM_xdec_from_unscaled(benchmark::State& state) {
    unscaled(state, [](xdec* out, uint32_t n, const int64_t* values, const uint32_t* scales) {
        for (uint32_t i = 0; i < n; ++i) xdec_from_unscaled(&out[i], values[i], scales[i]);
    });
}
BENCHMARK(BM_xdec_from_unscaled)->Arg(kFew)->Arg(kMany);

void BM_host_decimals_of_unscaled(benchmark::State& state) { unscaled(state, host_decimals_of_unscaled); }
BENCHMARK(BM_host_decimals_of_unscaled)->Arg(kFew)->Arg(kMany);

void BM_xdec_get_int64(benchmark::State& state) {
    const Decimals x = decimals(state.range(0), 1);
    std::vector<int64_t> out(x.size());
    for (auto _ : state) {
        for (size_t i = 0; i < x.size(); ++i) xdec_get_int64(&x[i], &out[i]);
        benchmark::ClobberMemory();
    }
    count_items(state, sizeof(int64_t) + sizeof(xdec));
}
BENCHMARK(BM_xdec_get_int64)->Arg(kFew)->Arg(kMany);

// Doubles of all 17 digits (random bits of a common magnitude), and those that stand for short decimals.
void from_doubles(benchmark::State& state, bool short_ones) {
    std::mt19937_64 random(4);
    std::vector<double> values(static_cast<size_t>(state.range(0)));
    for (double& value : values) {
        value = short_ones ? static_cast<double>(static_cast<int64_t>(random()) >> (24 + random() % 36)) / 100.0
                           : std::uniform_real_distribution<double>(-1e6, 1e6)(random);
    }
    Decimals out(values.size());
    for (auto _ : state) {
        for (size_t i = 0; i < values.size(); ++i) xdec_from_double(values[i], &out[i]);
        benchmark::ClobberMemory();
    }
    count_items(state, sizeof(double) + sizeof(xdec));
}
void BM_xdec_from_double(benchmark::State& state) { from_doubles(state, false); }
void BM_xdec_from_double_short(benchmark::State& state) { from_doubles(state, true); }
BENCHMARK(BM_xdec_from_double)->Arg(kFew)->Arg(kMany);
BENCHMARK(BM_xdec_from_double_short)->Name("BM_xdec_from_double/short")->Arg(kFew)->Arg(kMany);

void BM_xdec_get_double(benchmark::State& state) {
    const Decimals x = decimals(state.range(0), 1);
    std::vector<double> out(x.size());
    int32_t code;
    for (auto _ : state) {
        for (size_t i = 0; i < x.size(); ++i) out[i] = xdec_get_double(&x[i], &code, 1);
        benchmark::ClobberMemory();
    }
    count_items(state, sizeof(double) + sizeof(xdec));
}
BENCHMARK(BM_xdec_get_double)->Arg(kFew)->Arg(kMany);

// ---- Text -------------------------------------------------------------------------------------------------------------------

void from_texts(benchmark::State& state, const std::vector<std::string>& source) {
    Decimals out(source.size());
    std::string all;
    std::vector<size_t> begin;
    for (const std::string& text : source) {
        begin.push_back(all.size());
        all += text;
    }
    begin.push_back(all.size());
    for (auto _ : state) {
        for (size_t i = 0; i < out.size(); ++i) {
            xdec_from_char(&out[i], all.data() + begin[i], static_cast<uint32_t>(begin[i + 1] - begin[i]));
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(all.size() + out.size() * sizeof(xdec)));
}
void BM_xdec_from_char(benchmark::State& state) { from_texts(state, texts(state.range(0), 5)); }
void BM_xdec_from_char_wide(benchmark::State& state) { from_texts(state, texts(state.range(0), 5, 19, 38)); }
BENCHMARK(BM_xdec_from_char)->Arg(kFew)->Arg(kMany);
BENCHMARK(BM_xdec_from_char_wide)->Name("BM_xdec_from_char/wide")->Arg(kFew)->Arg(kMany);

void to_texts(benchmark::State& state, const Decimals& x) {
    char text[512];
    uint32_t length = 0;
    for (auto _ : state) {
        for (const xdec& value : x) {
            xdec_to_char2(&value, text, sizeof text, &length);
            benchmark::DoNotOptimize(length);
        }
        benchmark::ClobberMemory();
    }
    count_items(state, sizeof(xdec));
}
void BM_xdec_to_char2(benchmark::State& state) { to_texts(state, decimals(state.range(0), 1)); }
void BM_xdec_to_char2_wide(benchmark::State& state) { to_texts(state, decimals(state.range(0), 1, 19, 38)); }
BENCHMARK(BM_xdec_to_char2)->Arg(kFew)->Arg(kMany);
BENCHMARK(BM_xdec_to_char2_wide)->Name("BM_xdec_to_char2/wide")->Arg(kFew)->Arg(kMany);

}  // namespace
