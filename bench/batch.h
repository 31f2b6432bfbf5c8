// Batches for the benchmarks of exported functions, and the floors they stand beside.
//
// A benchmark is named BM_<export>/null:<percent>/sel:<0 or 1>/rows:<n>. It counts rows a second, and the bytes of values and
// valid bytes that go in and out. Its floors, in the same run, are BM_copy_<bytes>, a memcpy of as many bytes as one vector
// holds, and BM_loop_<what>, the plain loop over raw arrays, compiled with what the library's loops may use.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <random>
#include <string_view>
#include <utility>
#include <vector>

#include "qzbifun/qzbifun.h"
#include "qzhost/control.h"

#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__)
// A floor runs at the machine's own width, as the library's loops do.
#define BENCH_FLOOR [[gnu::noinline, gnu::target_clones("avx2", "default")]]
#else
#define BENCH_FLOOR [[gnu::noinline]]
#endif

namespace bench {

struct Shape {
    uint32_t rows;
    uint32_t null_percent;
    bool selected;

    explicit Shape(const benchmark::State& state)
        : rows(static_cast<uint32_t>(state.range(2))),
          null_percent(static_cast<uint32_t>(state.range(0))),
          selected(state.range(1) != 0) {}
};

// All shapes: NULLs 0, 1 and 50 percent, without and with a selection, 1,024 and 65,536 rows.
inline void all_shapes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"null", "sel", "rows"});
    for (const int64_t rows : {1024, 65536})
        for (const int64_t selected : {0, 1})
            for (const int64_t nulls : {0, 1, 50}) benchmark->Args({nulls, selected, rows});
}

inline void dense_shapes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"null", "sel", "rows"});
    for (const int64_t rows : {1024, 65536}) benchmark->Args({0, 0, rows});
}

// One environment and one memory object for a benchmark.
class Host {
  public:
    Host() : env_(host_env_create()), rt_mem_(host_memobj_create(env_)) {}
    ~Host() {
        host_memobj_destroy(rt_mem_);
        host_env_destroy(env_);
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    qz_env* env() const { return env_; }
    rt_memobj* rt_mem() const { return rt_mem_; }

  private:
    qz_env* env_;
    rt_memobj* rt_mem_;
};

// The vector type that has elements of T.
template <class T>
inline constexpr int32_t kHostType = HOST_INT;
template <>
inline constexpr int32_t kHostType<int64_t> = HOST_INT64;
template <>
inline constexpr int32_t kHostType<double> = HOST_DOUBLE;
template <>
inline constexpr int32_t kHostType<xdec> = HOST_DEC;
template <>
inline constexpr int32_t kHostType<qztime> = HOST_DATETIME;
template <>
inline constexpr int32_t kHostType<qz_interval_ym> = HOST_INTERVAL_YM;
template <>
inline constexpr int32_t kHostType<qz_interval_dt> = HOST_INTERVAL_DT;
template <>
inline constexpr int32_t kHostType<bdta3_colstr> = HOST_STR;

template <class Record>
bdta3_scalar* constant(Record& record) {
    return reinterpret_cast<bdta3_scalar*>(&record);
}

// A constant text of up to 48 bytes.
inline nstr text_constant(std::string_view text) {
    nstr constant{};
    constant.has_value = 1;
    constant.len = static_cast<uint32_t>(text.size());
    std::memcpy(constant.nstr_inline, text.data(), text.size());
    return constant;
}

class Vector {
  public:
    Vector(const Host& host, int32_t type, uint32_t rows) : col_(host_col_create(host.env(), host.rt_mem(), type, rows)) {}

    // Rows of make(random), a share of them NULL; the selection permutes them.
    template <class T, class Make>
    static Vector of(const Host& host, int32_t type, const Shape& shape, const Make& make) {
        Vector vector(host, type, shape.rows);
        bdta3_col* const col = vector.col();
        std::mt19937_64 random(shape.rows);
        for (uint32_t i = 0; i < shape.rows; ++i) {
            vector.values<T>()[i] = make(random);
            col->data->valid[i] = random() % 100 >= shape.null_percent;
        }
        col->all_valid = shape.null_percent == 0;
        if (!shape.selected) return vector;
        std::vector<uint16_t> sel(shape.rows);
        std::iota(sel.begin(), sel.end(), uint16_t{0});
        std::shuffle(sel.begin(), sel.end(), random);
        host_col_set_selection(col, sel.data(), shape.rows);
        return vector;
    }

    ~Vector() { host_col_destroy(col_); }
    Vector(Vector&& other) noexcept : col_(std::exchange(other.col_, nullptr)) {}
    Vector& operator=(Vector&&) = delete;

    bdta3_col* col() const { return col_; }
    const uint8_t* valid() const { return col_->data->valid; }
    template <class T>
    T* values() const {
        return static_cast<T*>(col_->data->values);
    }

  private:
    bdta3_col* col_;
};

inline void report(benchmark::State& state, uint32_t rows, size_t bytes_a_row) {
    state.SetItemsProcessed(state.iterations() * rows);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(rows * bytes_a_row));
}

// A function's batch, with a result of elements R.
template <class R>
class Batch {
  public:
    explicit Batch(benchmark::State& state) : state_(state), shape_(state), result_(host_, kHostType<R>, shape_.rows) {}

    qz_env* env() const { return host_.env(); }
    rt_memobj* rt_mem() const { return host_.rt_mem(); }
    uint32_t rows() const { return shape_.rows; }
    bool selected() const { return shape_.selected; }
    const Vector& out() const { return result_; }
    bdta3_col* result() const { return result_.col(); }

    // An argument.
    template <class T, class Make>
    Vector of(const Make& make) const {
        return Vector::of<T>(host_, kHostType<T>, shape_, make);
    }

    // Calls run, which answers a code, again and again.
    template <class Run>
    void measure(size_t bytes_a_row, const Run& run) {
        for (auto _ : state_) {
            if (run() != 0) std::abort();
            benchmark::ClobberMemory();
        }
        report(state_, shape_.rows, bytes_a_row);
    }

    // memcpy of values and valid bytes.
    void measure_copy(const Vector& x) {
        measure(2 * (sizeof(R) + 1), [&] {
            std::memcpy(result_.values<R>(), x.values<R>(), sizeof(R) * rows());
            std::memcpy(result_.col()->data->valid, x.valid(), rows());
            return 0;
        });
    }

  private:
    benchmark::State& state_;
    const Host host_;
    const Shape shape_;
    const Vector result_;
};

}  // namespace bench
