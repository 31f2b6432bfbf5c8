// The functions of string_basics.h over rows of 8 to 40 and of 200 to 2,000 bytes, ASCII and with three characters of ten of
// several bytes. The floor of those that make a string is the same rows stored once, each copied by itself, in the same run.
//
// Results are stored batch after batch in one vector that is reset in between, as a host reuses its result vectors. The reset
// and that of the memory object, which long results come from, are part of what is measured.
#include <cstring>
#include <string_view>

#include "bench/batch.h"
#include "bench/text_rows.h"

namespace {

using bench::Host;
using bench::Script;
using bench::TextRows;
using bench::Vector;

enum Layout : int64_t { kDense, kPermuted };

// Rows as a string vector. Their texts stand one behind the other, as a file or a vector holds them.
struct Texts {
    TextRows rows;
    uint32_t n;
    Vector vector;

    Texts(const Host& host, bool is_long, Script script, Layout layout)
        : rows(is_long ? bench::long_rows(script) : bench::short_rows(script)),
          n(static_cast<uint32_t>(rows.size())),
          vector(host, HOST_STR, n) {
        auto* const slots = vector.values<bdta3_colstr>();
        std::memset(vector.col()->data->valid, 1, n);
        vector.col()->all_valid = 1;
        for (uint32_t i = 0; i < n; ++i) slots[i] = {rows.length(i), 0, rows.writable(i)};
        if (layout == kDense) return;
        std::vector<uint16_t> sel(n);
        std::iota(sel.begin(), sel.end(), uint16_t{0});
        std::shuffle(sel.begin(), sel.end(), std::mt19937(1));
        host_col_set_selection(vector.col(), sel.data(), n);
    }
};

template <class Call>
void measure(benchmark::State& state, int32_t result_type, const Call& call) {
    const Host host;
    const Host result_host;
    const Script script = state.range(1) == 0 ? Script::ascii : Script::utf8;
    const Texts texts(host, state.range(0) != 0, script, static_cast<Layout>(state.range(2)));
    const Vector result(result_host, result_type, texts.n);
    for (auto _ : state) {
        if (result_type == HOST_STR) {
            host_col_reset(result.col());
            host_memobj_reset(result_host.rt_mem());
        }
        if (call(result_host, texts, result.col()) != 0) std::abort();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * texts.n);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(texts.rows.bytes()));
}

template <bop_fn_a* kFunction, int32_t kResult>
void BM_of_text(benchmark::State& state) {
    measure(state, kResult, [](const Host& host, const Texts& texts, bdta3_col* result) {
        return kFunction(host.env(), host.rt_mem(), texts.vector.col(), result, texts.n);
    });
}

void BM_concat_aa(benchmark::State& state) {
    measure(state, HOST_STR, [](const Host& host, const Texts& texts, bdta3_col* result) {
        return bconcat_aa_str(host.env(), host.rt_mem(), texts.vector.col(), texts.vector.col(), result, texts.n);
    });
}

void BM_concat_av(benchmark::State& state) {
    nstr constant = bench::text_constant(" and more");
    measure(state, HOST_STR, [&](const Host& host, const Texts& texts, bdta3_col* result) {
        return bconcat_av_str(host.env(), host.rt_mem(), texts.vector.col(), reinterpret_cast<bdta3_scalar*>(&constant), result,
                              texts.n);
    });
}

void BM_repeat(benchmark::State& state) {
    bdta3_int three{1, 3};
    measure(state, HOST_STR, [&](const Host& host, const Texts& texts, bdta3_col* result) {
        return brepeatstr_av_str(host.env(), host.rt_mem(), texts.vector.col(), reinterpret_cast<bdta3_scalar*>(&three), result,
                                 texts.n);
    });
}

void BM_space(benchmark::State& state) {
    const Host host;
    const bench::Shape shape(state);
    const Vector n = Vector::of<int32_t>(host, HOST_INT, shape,
                                         [](std::mt19937_64& random) { return static_cast<int32_t>(random() % 100); });
    const Vector result(host, HOST_STR, shape.rows);
    for (auto _ : state) {
        if (bspace_a_str(host.env(), host.rt_mem(), n.col(), result.col(), shape.rows) != 0) std::abort();
        benchmark::ClobberMemory();
    }
    bench::report(state, shape.rows, sizeof(int32_t) + sizeof(bdta3_colstr) + 2);
}

// ---- Floors -----------------------------------------------------------------------------------------------------------------

// The rows copied one behind the other, with their slots and valid bytes.
void BM_copy_rows(benchmark::State& state) {
    std::vector<char> bytes;
    measure(state, HOST_STR, [&](const Host&, const Texts& texts, bdta3_col* result) {
        bytes.resize(texts.rows.bytes());
        char* at = bytes.data();
        const bdta3_col& col = *texts.vector.col();
        const auto* const from = static_cast<const bdta3_colstr*>(col.data->values);
        auto* const to = static_cast<bdta3_colstr*>(result->data->values);
        for (uint32_t i = 0; i < texts.n; ++i) {
            const bdta3_colstr& slot = from[col.sel == nullptr ? i : col.sel[i]];
            std::memcpy(at, slot.bytes, slot.len);
            to[i] = {slot.len, slot.blank, at};
            at += slot.len;
        }
        std::memcpy(result->data->valid, col.data->valid, texts.n);
        return 0;
    });
}

// One load of the slot and one of the text: what reading a row costs at least.
void BM_loop_first_byte(benchmark::State& state) {
    measure(state, HOST_INT, [](const Host&, const Texts& texts, bdta3_col* result) {
        const bdta3_col& col = *texts.vector.col();
        const auto* const from = static_cast<const bdta3_colstr*>(col.data->values);
        auto* const to = static_cast<int32_t*>(result->data->values);
        for (uint32_t i = 0; i < texts.n; ++i)
            to[i] = static_cast<unsigned char>(from[col.sel == nullptr ? i : col.sel[i]].bytes[0]);
        std::memcpy(result->data->valid, col.data->valid, texts.n);
        return 0;
    });
}

BENCH_FLOOR void add_lengths(const bdta3_colstr* from, int32_t* to, uint32_t n) {
    for (uint32_t i = 0; i < n; ++i) to[i] = static_cast<int32_t>(from[i].len + from[i].blank);
}

void BM_loop_lengths(benchmark::State& state) {
    measure(state, HOST_INT, [](const Host&, const Texts& texts, bdta3_col* result) {
        const bdta3_col& col = *texts.vector.col();
        add_lengths(static_cast<const bdta3_colstr*>(col.data->values), static_cast<int32_t*>(result->data->values), texts.n);
        std::memcpy(result->data->valid, col.data->valid, texts.n);
        return 0;
    });
}

void all_rows(benchmark::internal::Benchmark* bench) {
    bench->ArgNames({"long", "utf8", "sel"})->ArgsProduct({{0, 1}, {0, 1}, {kDense}});
    bench->Args({0, 0, kPermuted})->Args({0, 1, kPermuted});
}
void slots_alone(benchmark::internal::Benchmark* bench) {
    bench->ArgNames({"long", "utf8", "sel"})->Args({0, 0, kDense})->Args({0, 0, kPermuted});
}

BENCHMARK(BM_copy_rows)->Apply(all_rows);
BENCHMARK(BM_loop_first_byte)->Apply(all_rows);
BENCHMARK(BM_loop_lengths)->Apply(slots_alone);

#define BENCH_TEXT(name) BENCHMARK(BM_of_text<name, HOST_STR>)->Name("BM_" #name)->Apply(all_rows)

BENCHMARK(BM_of_text<blength_a_str, HOST_INT>)->Name("BM_blength_a_str")->Apply(all_rows);
BENCHMARK(BM_of_text<blength_space_a_str, HOST_INT>)->Name("BM_blength_space_a_str")->Apply(all_rows);
BENCHMARK(BM_of_text<blengthb_a_str, HOST_INT>)->Name("BM_blengthb_a_str")->Apply(slots_alone);
BENCHMARK(BM_of_text<bbitlength_a_str, HOST_INT>)->Name("BM_bbitlength_a_str")->Apply(slots_alone);
BENCH_TEXT(bupper_a_str);
BENCH_TEXT(blower_a_str);
BENCH_TEXT(bnls_upper_a);
BENCH_TEXT(binitcap_a_str);
BENCH_TEXT(breverse_a_str);
BENCHMARK(BM_concat_aa)->Name("BM_bconcat_aa_str")->Apply(all_rows);
BENCHMARK(BM_concat_av)->Name("BM_bconcat_av_str")->Apply(all_rows);
BENCHMARK(BM_repeat)->Name("BM_brepeatstr_av_str")->Apply(all_rows);
BENCHMARK(BM_space)->Name("BM_bspace_a_str")->Apply(bench::dense_shapes);

}  // namespace
