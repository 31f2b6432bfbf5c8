// The column services beside the plain moves of the same bytes.
//
// A batch is 4096 rows. Texts are stored batch after batch in one vector that is reset in between, as a host reuses its result
// vectors; the reset is part of what is measured, and of the floor, which clears the same rows. Rows per second and bytes of
// values per second.
#include <benchmark/benchmark.h>

#include <cstring>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "qzhost/column.h"
#include "qzhost/control.h"

namespace {

constexpr uint32_t kRows = 4096;

class Vector {
  public:
    explicit Vector(int32_t type) : col_(host_col_create(nullptr, nullptr, type, kRows)) {}
    ~Vector() { host_col_destroy(col_); }
    Vector(const Vector&) = delete;
    Vector& operator=(const Vector&) = delete;

    bdta3_col* col() { return col_; }
    bdta3_colstr* slots() { return static_cast<bdta3_colstr*>(col_->data->values); }

    void select_permuted() {
        std::vector<uint16_t> sel(kRows);
        std::iota(sel.begin(), sel.end(), uint16_t{0});
        std::shuffle(sel.begin(), sel.end(), std::mt19937(1));
        host_col_set_selection(col_, sel.data(), kRows);
    }

    // Texts of about the given length: half of it to half more.
    size_t fill_texts(uint32_t length) {
        std::mt19937 random(2);
        const std::string bytes(2 * length + 1, 't');
        size_t total = 0;
        for (uint32_t row = 0; row < kRows; ++row) {
            const uint32_t len = length / 2 + static_cast<uint32_t>(random() % (length + 1));
            host_col_set_text(col_, row, bytes.data(), len, 0);
            total += len;
        }
        col_->all_valid = 1;
        return total;
    }

    void set_all_valid() {
        std::memset(col_->data->valid, 1, kRows);
        col_->all_valid = 1;
    }

  private:
    bdta3_col* col_;
};

void report(benchmark::State& state, size_t bytes_per_batch) {
    state.SetItemsProcessed(state.iterations() * kRows);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes_per_batch));
}

// ---- Storing texts ----------------------------------------------------------------------------------------------------------

void BM_bdta3_col_assign_str(benchmark::State& state) {
    Vector from(HOST_STR), to(HOST_STR);
    const size_t bytes = from.fill_texts(static_cast<uint32_t>(state.range(0)));
    for (auto _ : state) {
        host_col_reset(to.col());
        for (uint32_t row = 0; row < kRows; ++row) {
            const bdta3_colstr& slot = from.slots()[row];
            if (bdta3_col_assign_str(nullptr, nullptr, to.col(), row, slot.bytes, slot.len, slot.blank) < 0) std::abort();
        }
        benchmark::ClobberMemory();
    }
    report(state, bytes);
}

// A loop that only moves: memcpy of each text behind the last, and its slot.
void BM_floor_store_texts(benchmark::State& state) {
    Vector from(HOST_STR), to(HOST_STR);
    const size_t bytes = from.fill_texts(static_cast<uint32_t>(state.range(0)));
    std::vector<char> space(bytes);
    for (auto _ : state) {
        host_col_reset(to.col());
        char* next = space.data();
        for (uint32_t row = 0; row < kRows; ++row) {
            const bdta3_colstr& slot = from.slots()[row];
            std::memcpy(next, slot.bytes, slot.len);
            to.slots()[row] = {slot.len, slot.blank, next};
            to.col()->data->valid[row] = 1;
            next += slot.len;
        }
        benchmark::ClobberMemory();
    }
    report(state, bytes);
}

BENCHMARK(BM_bdta3_col_assign_str)->ArgName("len")->Arg(4)->Arg(12)->Arg(24)->Arg(60)->Arg(300);
BENCHMARK(BM_floor_store_texts)->ArgName("len")->Arg(4)->Arg(12)->Arg(24)->Arg(60)->Arg(300);

// ---- Copies of vectors ------------------------------------------------------------------------------------------------------

void BM_bdta3_col_copy_str(benchmark::State& state) {
    Vector from(HOST_STR), to(HOST_STR);
    const size_t bytes = from.fill_texts(static_cast<uint32_t>(state.range(0)));
    if (state.range(1) != 0) from.select_permuted();
    for (auto _ : state) {
        host_col_reset(to.col());
        if (bdta3_col_copy(nullptr, nullptr, to.col(), from.col(), kRows) < 0) std::abort();
        benchmark::ClobberMemory();
    }
    report(state, bytes);
}

// One memcpy of all texts, and one of all slots, which is what no copy with pointers of its own can be.
void BM_floor_copy_texts(benchmark::State& state) {
    Vector from(HOST_STR), to(HOST_STR);
    const size_t bytes = from.fill_texts(static_cast<uint32_t>(state.range(0)));
    std::vector<char> space(bytes), source(bytes, 't');
    for (auto _ : state) {
        host_col_reset(to.col());
        std::memcpy(space.data(), source.data(), bytes);
        std::memcpy(to.slots(), from.slots(), kRows * sizeof(bdta3_colstr));
        std::memcpy(to.col()->data->valid, from.col()->data->valid, kRows);
        benchmark::ClobberMemory();
    }
    report(state, bytes);
}

BENCHMARK(BM_bdta3_col_copy_str)->ArgNames({"len", "sel"})->ArgsProduct({{4, 12, 24, 60, 300}, {0, 1}});
BENCHMARK(BM_floor_copy_texts)->ArgName("len")->Arg(4)->Arg(12)->Arg(24)->Arg(60)->Arg(300);

void BM_bdta3_col_copy(benchmark::State& state) {
    const int32_t type = static_cast<int32_t>(state.range(0));
    Vector from(type), to(type);
    from.set_all_valid();
    if (state.range(1) != 0) from.select_permuted();
    for (auto _ : state) {
        if (bdta3_col_copy(nullptr, nullptr, to.col(), from.col(), kRows) < 0) std::abort();
        benchmark::ClobberMemory();
    }
    report(state, kRows * (host_type_width(type) + 1));
}

void BM_floor_memcpy(benchmark::State& state) {
    const size_t bytes = kRows * (host_type_width(static_cast<int32_t>(state.range(0))) + 1);
    std::vector<char> from(bytes), to(bytes);
    for (auto _ : state) {
        std::memcpy(to.data(), from.data(), bytes);
        benchmark::ClobberMemory();
    }
    report(state, bytes);
}

BENCHMARK(BM_bdta3_col_copy)
    ->ArgNames({"type", "sel"})
    ->ArgsProduct({{HOST_INT, HOST_INT64, HOST_DEC, HOST_DATETIME, HOST_INTERVAL_YM, HOST_INTERVAL_DT}, {0, 1}});
BENCHMARK(BM_floor_memcpy)
    ->ArgName("type")
    ->Arg(HOST_INT)
    ->Arg(HOST_INT64)
    ->Arg(HOST_DEC)
    ->Arg(HOST_DATETIME)
    ->Arg(HOST_INTERVAL_YM)
    ->Arg(HOST_INTERVAL_DT);

// ---- Slots ------------------------------------------------------------------------------------------------------------------

void BM_bdta3_colstr_cmp_with_blank(benchmark::State& state) {
    Vector from(HOST_STR);
    const size_t bytes = from.fill_texts(static_cast<uint32_t>(state.range(0)));
    for (auto _ : state) {
        int32_t order = 0;
        for (uint32_t row = 1; row < kRows; ++row)
            order += bdta3_colstr_cmp_with_blank(&from.slots()[row], &from.slots()[row - 1], 0);
        benchmark::DoNotOptimize(order);
    }
    report(state, bytes);
}

BENCHMARK(BM_bdta3_colstr_cmp_with_blank)->ArgName("len")->Arg(12)->Arg(60);

}  // namespace
