// Reading CSV: the scan of 64 bytes, the fields of a batch, and libcsv on the same bytes. The floor is a copy of the bytes.
#include <benchmark/benchmark.h>
#include <csv.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>

#include "engine/csv_columns.h"
#include "engine/csv_reader.h"
#include "engine/csv_scan.h"
#include "engine/evaluator.h"

namespace {

using namespace qzengine;

// Prices with two digits behind the point and whole numbers of up to twelve digits, as scripts/make_bench_csv.py writes them.
const std::string& sample() {
    static const std::string text = [] {
        std::mt19937_64 random(1);
        std::string csv = "price,n\n";
        while (csv.size() < size_t{240} << 10) {
            const auto cents = static_cast<int64_t>(random() % 20'000'000) - 10'000'000;
            uint64_t limit = 10;
            for (uint64_t digits = random() % 12; digits > 0; --digits) limit *= 10;
            if (cents < 0) csv += '-';
            csv += std::to_string(std::abs(cents) / 100) + '.' + std::to_string(100 + std::abs(cents) % 100).substr(1) + ',' +
                   std::to_string(random() % limit) + '\n';
        }
        return csv;
    }();
    return text;
}

void report(benchmark::State& state, size_t rows) {
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(sample().size()));
    if (rows > 0) state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(rows));
}

void BM_floor_memcpy(benchmark::State& state) {
    std::string copy(sample().size(), ' ');
    for (auto _ : state) {
        std::memcpy(copy.data(), sample().data(), copy.size());
        benchmark::ClobberMemory();
    }
    report(state, 0);
}
BENCHMARK(BM_floor_memcpy);

template <CsvMasks (*kScan)(const char*)>
void BM_scan(benchmark::State& state) {
    for (auto _ : state) {
        for (size_t at = 0; at + kScanBlock <= sample().size(); at += kScanBlock) {
            benchmark::DoNotOptimize(kScan(sample().data() + at));
        }
    }
    report(state, 0);
}
BENCHMARK_TEMPLATE(BM_scan, scan_csv_block)->Name("BM_scan/vector_registers");
BENCHMARK_TEMPLATE(BM_scan, scan_csv_block_portable)->Name("BM_scan/portable");

struct OneBatch {
    OneBatch() : reader(source(), {size_t{1} << 20, kMaxBatchRows}) {
        reader.next(batch);
        reader.index(batch);
    }
    static ByteSource source() {
        return [at = size_t{0}](char* buffer, size_t size) mutable {
            const size_t n = std::min(size, sample().size() - at);
            std::memcpy(buffer, sample().data() + at, n);
            at += n;
            return n;
        };
    }
    CsvReader reader;
    CsvBatch batch;
};

void BM_cut_and_index(benchmark::State& state) {
    size_t rows = 0;
    for (auto _ : state) {
        OneBatch one;
        rows = one.batch.rows();
    }
    report(state, rows);
}
BENCHMARK(BM_cut_and_index);

void BM_index(benchmark::State& state) {
    OneBatch one;
    for (auto _ : state) {
        one.reader.index(one.batch);
        benchmark::ClobberMemory();
    }
    report(state, one.batch.rows());
}
BENCHMARK(BM_index);

void BM_libcsv(benchmark::State& state) {
    struct Counts {
        size_t fields = 0;
        size_t rows = 0;
    } counts;
    for (auto _ : state) {
        counts = {};
        csv_parser parser;
        csv_init(&parser, CSV_STRICT | CSV_EMPTY_IS_NULL);
        const auto field = [](void*, size_t, void* data) { ++static_cast<Counts*>(data)->fields; };
        const auto record = [](int, void* data) { ++static_cast<Counts*>(data)->rows; };
        csv_parse(&parser, sample().data(), sample().size(), field, record, &counts);
        csv_fini(&parser, field, record, &counts);
        csv_free(&parser);
        benchmark::DoNotOptimize(counts);
    }
    report(state, counts.rows);
}
BENCHMARK(BM_libcsv);

void BM_read_column(benchmark::State& state, uint32_t column, DeclaredType type) {
    OneBatch one;
    const Environment environment;
    const Vector vector = make_vector(environment, type.type, one.batch.rows());
    for (auto _ : state) {
        read_column(one.batch, column, {"x", type.type, type.characters}, vector.get(), environment);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * one.batch.rows());
}
BENCHMARK_CAPTURE(BM_read_column, decimal, 0, ValueType::kDecimal);
BENCHMARK_CAPTURE(BM_read_column, double, 0, ValueType::kDouble);
BENCHMARK_CAPTURE(BM_read_column, bigint, 1, ValueType::kBigint);
BENCHMARK_CAPTURE(BM_read_column, string, 0, ValueType::kString);
BENCHMARK_CAPTURE(BM_read_column, char, 0, DeclaredType(ValueType::kString, 20));

}  // namespace
