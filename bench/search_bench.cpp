// The search services over rows of 8 to 40 and of 200 to 2,000 bytes. Floor: the first and the last byte of the pattern
// compared at sixteen places at once, without services, character sets or occurrences.
#include <benchmark/benchmark.h>

#include "bench/text_rows.h"
#include "host/src/byte_search.h"
#include "qzhost/search.h"

namespace {

using bench::Script;
using bench::TextRows;

constexpr std::string_view kPatterns[] = {"t", "sh", "e\u4e2d", "tain o", "qzbifun search words"};
constexpr std::string_view kAbsent = "#~";  // no row has it, and no byte of it

struct Prepared {
    explicit Prepared(std::string_view pattern) : bmgs(pattern.size()) {
        const uint32_t m = static_cast<uint32_t>(pattern.size());
        preprocess_bmbc(pattern.data(), m, bmbc);
        preprocess_bmgs(pattern.data(), m, bmgs.data());
    }
    uint32_t bmbc[QZ_BMBC_ENTRIES];
    std::vector<uint32_t> bmgs;
};

TextRows rows_of(const benchmark::State& state) {
    const Script script = state.range(1) == 0 ? Script::ascii : Script::utf8;
    return state.range(0) == 0 ? bench::short_rows(script) : bench::long_rows(script);
}

std::string_view pattern_of(const benchmark::State& state) {
    return state.range(2) < 0 ? kAbsent : kPatterns[static_cast<size_t>(state.range(2))];
}

template <class Find>
void each_row(benchmark::State& state, Find&& find) {
    const TextRows rows = rows_of(state);
    const std::string pattern(pattern_of(state));
    const Prepared prepared(pattern);
    uint64_t found = 0;
    for (auto _ : state) {
        for (size_t i = 0; i < rows.size(); ++i) found += find(rows[i], pattern, prepared) != 0;
    }
    benchmark::DoNotOptimize(found);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(rows.bytes()));
    state.counters["ns_row"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * static_cast<double>(rows.size()) / 1e9,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

const uint8_t* bytes_of(std::string_view text) { return reinterpret_cast<const uint8_t*>(text.data()); }

#ifdef QZHOST_VECTOR_BYTES
void BM_floor_scan_ends(benchmark::State& state) {
    each_row(state, [](std::string_view text, std::string_view pattern, const Prepared&) {
        if (pattern.size() > text.size()) return size_t{0};
        size_t position = 0;
        qzhost::scan_ends(bytes_of(text), text.size(), bytes_of(pattern), pattern.size(), [&](size_t place) {
            position = place + 1;
            return true;
        });
        return position;
    });
}
#endif

void BM_floor_boyer_moore(benchmark::State& state) {
    each_row(state, [](std::string_view text, std::string_view pattern, const Prepared& prepared) {
        if (pattern.size() > text.size()) return size_t{0};
        size_t position = 0;
        qzhost::boyer_moore(bytes_of(text), text.size(), bytes_of(pattern), pattern.size(), prepared.bmbc, prepared.bmgs.data(),
                            [&](size_t place) {
                                position = place + 1;
                                return true;
                            });
        return position;
    });
}

void BM_qz_strbmncmp_arr_ex(benchmark::State& state) {
    each_row(state, [](std::string_view text, std::string_view pattern, const Prepared& prepared) {
        uint32_t position;
        qz_strbmncmp_arr_ex(text.data(), static_cast<uint32_t>(text.size()), pattern.data(),
                            static_cast<uint32_t>(pattern.size()), 1, &position, prepared.bmbc, prepared.bmgs.data());
        return position;
    });
}

void BM_qz_strbmncmp(benchmark::State& state) {
    each_row(state, [](std::string_view text, std::string_view pattern, const Prepared&) {
        uint32_t position;
        qz_strbmncmp(text.data(), static_cast<uint32_t>(text.size()), pattern.data(), static_cast<uint32_t>(pattern.size()),
                     &position, 1);
        return position;
    });
}

void all_rows(benchmark::internal::Benchmark* bench) {
    bench->ArgNames({"long", "utf8", "pattern"})->ArgsProduct({{0, 1}, {0, 1}, {-1, 0, 1, 2, 3, 4}});
}

#ifdef QZHOST_VECTOR_BYTES
BENCHMARK(BM_floor_scan_ends)->Apply(all_rows);
#endif
BENCHMARK(BM_floor_boyer_moore)->Apply(all_rows);
BENCHMARK(BM_qz_strbmncmp_arr_ex)->Apply(all_rows);
BENCHMARK(BM_qz_strbmncmp)->Apply(all_rows);

}  // namespace
