// The scratch pattern of a row, ten blocks and a roll-back, beside malloc and free of the same blocks.
#include <benchmark/benchmark.h>

#include <cstdlib>

#include "qzhost/control.h"
#include "qzhost/memory.h"

namespace {

constexpr int kBlocks = 10;

void BM_mem_heap_free_heap_top(benchmark::State& state) {
    alignas(16) char buffer[4096];
    qz_heap* heap = mem_heap_create_low2(nullptr, 0, 0, sizeof buffer, buffer, __FILE__, __LINE__, 1, 0);
    rt_memobj* memobj = rt_memobj_create_ex(nullptr, 0, heap, __FILE__, __LINE__);
    qz_heap_top* mark = mem_heap_get_heap_top(heap);
    const size_t size = static_cast<size_t>(state.range(0));
    for (auto _ : state) {
        for (int i = 0; i < kBlocks; ++i)
            benchmark::DoNotOptimize(memobj->alloc(nullptr, memobj->pool, size, __FILE__, __LINE__));
        mem_heap_free_heap_top(nullptr, heap, mark);
    }
    state.SetItemsProcessed(state.iterations() * kBlocks);
    rt_memobj_destroy(nullptr, memobj);
}

void BM_host_memobj_alloc_free(benchmark::State& state) {
    rt_memobj* memobj = host_memobj_create(nullptr);
    const size_t size = static_cast<size_t>(state.range(0));
    void* blocks[kBlocks];
    for (auto _ : state) {
        for (void*& block : blocks) block = memobj->alloc(nullptr, memobj->pool, size, __FILE__, __LINE__);
        for (void* block : blocks) memobj->free(nullptr, memobj->pool, block);
    }
    state.SetItemsProcessed(state.iterations() * kBlocks);
    host_memobj_destroy(memobj);
}

void BM_floor_malloc_free(benchmark::State& state) {
    const size_t size = static_cast<size_t>(state.range(0));
    void* blocks[kBlocks];
    for (auto _ : state) {
        for (void*& block : blocks) benchmark::DoNotOptimize(block = std::malloc(size));
        for (void* block : blocks) std::free(block);
    }
    state.SetItemsProcessed(state.iterations() * kBlocks);
}

BENCHMARK(BM_mem_heap_free_heap_top)->ArgName("size")->Arg(64)->Arg(2000);
BENCHMARK(BM_host_memobj_alloc_free)->ArgName("size")->Arg(64)->Arg(2000);
BENCHMARK(BM_floor_malloc_free)->ArgName("size")->Arg(64)->Arg(2000);

}  // namespace
