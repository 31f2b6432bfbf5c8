#include "qzhost/memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "host/src/poison.h"
#include "qzhost/control.h"

#ifdef QZHOST_POISONS
#include <sanitizer/asan_interface.h>
#endif

namespace {

constexpr size_t kHostileSizes[] = {SIZE_MAX,         SIZE_MAX - 1,    SIZE_MAX - 15,   SIZE_MAX - 16,
                                    SIZE_MAX - 47,    SIZE_MAX - 48,   SIZE_MAX - 64,   SIZE_MAX / 2,
                                    SIZE_MAX / 2 + 1, size_t{1} << 62, size_t{1} << 47, (size_t{1} << 38) + 1};

bool is_aligned(const void* block) { return reinterpret_cast<uintptr_t>(block) % 16 == 0; }

class MemoryTest : public testing::Test {
  protected:
    void TearDown() override { host_memory_fail_after(-1); }
};

// ---- General blocks --------------------------------------------------------------------------------------------------------

TEST_F(MemoryTest, BlocksAreAlignedAndApart) {
    std::vector<std::pair<char*, size_t>> blocks;
    for (size_t size = 0; size < 300; size += 7) {
        char* block = static_cast<char*>(mem_malloc_ex(nullptr, size, __FILE__, __LINE__));
        ASSERT_NE(block, nullptr);
        EXPECT_TRUE(is_aligned(block));
        std::memset(block, static_cast<int>(size % 251), size);
        blocks.emplace_back(block, size);
    }
    for (const auto& [block, size] : blocks) {
        EXPECT_EQ(std::string(block, size), std::string(size, static_cast<char>(size % 251)));
        mem_free(nullptr, block);
    }
    mem_free(nullptr, nullptr);
}

TEST_F(MemoryTest, ReallocKeepsTheBytes) {
    char* block = static_cast<char*>(mem_realloc_ex(nullptr, nullptr, 10, 0, __FILE__, __LINE__));
    ASSERT_NE(block, nullptr);
    std::memcpy(block, "0123456789", 10);
    block = static_cast<char*>(mem_realloc_ex(nullptr, block, 100000, 10, __FILE__, __LINE__));
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(std::string(block, 10), "0123456789");
    block = static_cast<char*>(mem_realloc_ex(nullptr, block, 4, 100000, __FILE__, __LINE__));
    EXPECT_EQ(std::string(block, 4), "0123");
    host_memory_fail_after(0);
    EXPECT_EQ(mem_realloc_ex(nullptr, block, 8, 4, __FILE__, __LINE__), nullptr);
    host_memory_fail_after(-1);
    for (const size_t size : kHostileSizes) EXPECT_EQ(mem_realloc_ex(nullptr, block, size, 4, __FILE__, __LINE__), nullptr);
    EXPECT_EQ(std::string(block, 4), "0123");
    block = static_cast<char*>(mem_realloc_ex(nullptr, block, 0, 4, __FILE__, __LINE__));
    EXPECT_NE(block, nullptr);
    mem_free(nullptr, block);
}

TEST_F(MemoryTest, SizesBeyondReasonAreExhaustion) {
    for (const size_t size : kHostileSizes) EXPECT_EQ(mem_malloc_ex(nullptr, size, __FILE__, __LINE__), nullptr) << size;
}

TEST_F(MemoryTest, FailAfterCountsDown) {
    host_memory_fail_after(2);
    void* first = mem_malloc_ex(nullptr, 1, __FILE__, __LINE__);
    void* second = mem_malloc_ex(nullptr, 1, __FILE__, __LINE__);
    EXPECT_NE(first, nullptr);
    EXPECT_NE(second, nullptr);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(mem_malloc_ex(nullptr, 1, __FILE__, __LINE__), nullptr);
    host_memory_fail_after(-1);
    void* third = mem_malloc_ex(nullptr, 1, __FILE__, __LINE__);
    EXPECT_NE(third, nullptr);
    for (void* block : {first, second, third}) mem_free(nullptr, block);
}

// ---- Scratch heaps ---------------------------------------------------------------------------------------------------------

qz_heap* make_heap(void* buffer, uint32_t size) {
    return mem_heap_create_low2(nullptr, 0, 0, size, buffer, __FILE__, __LINE__, 1, 0);
}

// A heap with the memory object over it, as the library's callers use it.
class Scratch {
  public:
    Scratch(void* buffer, uint32_t size) : heap_(make_heap(buffer, size)) {
        memobj_ = rt_memobj_create_ex(nullptr, 0, heap_, __FILE__, __LINE__);
    }
    ~Scratch() { rt_memobj_destroy(nullptr, memobj_); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    char* take(size_t size) { return static_cast<char*>(memobj_->alloc(nullptr, memobj_->pool, size, __FILE__, __LINE__)); }
    void give_back(void* block) { memobj_->free(nullptr, memobj_->pool, block); }
    qz_heap_top* mark() { return mem_heap_get_heap_top(heap_); }
    void roll_back(qz_heap_top* mark) { mem_heap_free_heap_top(nullptr, heap_, mark); }
    qz_heap* heap() { return heap_; }
    rt_memobj* memobj() { return memobj_; }

  private:
    qz_heap* heap_;
    rt_memobj* memobj_;
};

struct Buffer {
    alignas(16) char bytes[8192 + 16];
};

TEST_F(MemoryTest, AHeapStartsInTheCallersBuffer) {
    Buffer buffer;
    for (const uint32_t offset : {0u, 1u, 8u, 15u}) {
        for (const uint32_t size : {4096u, 8096u, 8192u, 4097u}) {
            host_memory_fail_after(0);  // nothing is asked for
            Scratch scratch(buffer.bytes + offset, size);
            ASSERT_NE(scratch.memobj(), nullptr);
            size_t inside = 0;
            for (char* block = scratch.take(100); block != nullptr; block = scratch.take(100)) {
                EXPECT_TRUE(is_aligned(block));
                EXPECT_GE(block, buffer.bytes + offset);
                EXPECT_LE(block + 100, buffer.bytes + offset + size);
                std::memset(block, 1, 100);
                inside += 100;
            }
            EXPECT_GE(inside, size / 2);
            host_memory_fail_after(-1);
            EXPECT_NE(scratch.take(100), nullptr);
        }
    }
}

TEST_F(MemoryTest, ASmallOrAbsentBufferIsNotUsed) {
    Buffer buffer;
    std::memset(buffer.bytes, 'b', sizeof buffer.bytes);
    for (const uint32_t size : {0u, 1u, 16u, 64u, 80u}) {
        Scratch scratch(buffer.bytes + 1, size);
        ASSERT_NE(scratch.memobj(), nullptr);
        char* block = scratch.take(1000);
        ASSERT_NE(block, nullptr);
        std::memset(block, 1, 1000);
        EXPECT_EQ(buffer.bytes[0], 'b');
        EXPECT_EQ(std::string(buffer.bytes + 1 + size, 100), std::string(100, 'b'));
    }
    Scratch absent(nullptr, 4096);
    ASSERT_NE(absent.take(10), nullptr);
    mem_heap_free(nullptr, nullptr);
    rt_memobj_destroy(nullptr, nullptr);
    EXPECT_EQ(rt_memobj_create_ex(nullptr, 0, nullptr, __FILE__, __LINE__), nullptr);
    mem_heap_free(nullptr, make_heap(buffer.bytes, sizeof buffer.bytes));
}

TEST_F(MemoryTest, TheBufferComesBackUsable) {
    Buffer buffer;
    { Scratch scratch(buffer.bytes, sizeof buffer.bytes); }
    std::memset(buffer.bytes, 3, sizeof buffer.bytes);
    EXPECT_EQ(std::count(std::begin(buffer.bytes), std::end(buffer.bytes), 3), 8192 + 16);
}

TEST_F(MemoryTest, HeapBlocksAreApartWhateverTheirSizes) {
    const uint32_t seed = 11;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    Buffer buffer;
    Scratch scratch(buffer.bytes, 4096);
    std::vector<std::pair<char*, size_t>> blocks;
    for (int i = 0; i < 2000; ++i) {
        const size_t size = i % 97 == 0 ? random() % 100000 : random() % 200;
        char* block = scratch.take(size);
        ASSERT_NE(block, nullptr);
        ASSERT_TRUE(is_aligned(block));
        std::memset(block, i % 251, size);
        blocks.emplace_back(block, size);
        scratch.give_back(block);  // keeps it: the heap gives all back at once
    }
    for (size_t i = 0; i < blocks.size(); ++i) {
        const auto [block, size] = blocks[i];
        ASSERT_EQ(std::count(block, block + size, static_cast<char>(i % 251)), static_cast<std::ptrdiff_t>(size));
    }
}

TEST_F(MemoryTest, RollBackReturnsToTheMark) {
    Buffer buffer;
    Scratch scratch(buffer.bytes, 4096);
    char* kept = scratch.take(50);
    std::memset(kept, 'k', 50);
    qz_heap_top* mark = scratch.mark();
    char* first = scratch.take(64);
    for (const size_t total : {0u, 100u, 5000u, 300000u, 100u}) {  // inside the buffer, and over several chunks
        scratch.roll_back(mark);
        EXPECT_EQ(scratch.mark(), mark);
        char* again = scratch.take(64);
        EXPECT_EQ(again, first);
        std::memset(again, 1, 64);
        for (size_t taken = 0; taken < total; taken += 100) std::memset(scratch.take(100), 2, 100);
    }
    EXPECT_EQ(std::string(kept, 50), std::string(50, 'k'));
}

TEST_F(MemoryTest, MarksNest) {
    Scratch scratch(nullptr, 0);
    qz_heap_top* empty = scratch.mark();
    std::memset(scratch.take(3000), 1, 3000);
    qz_heap_top* outer = scratch.mark();
    char* outer_block = scratch.take(3000);
    std::memset(outer_block, 2, 3000);
    qz_heap_top* inner = scratch.mark();
    std::memset(scratch.take(100000), 3, 100000);
    scratch.roll_back(inner);
    EXPECT_EQ(std::count(outer_block, outer_block + 3000, 2), 3000);
    scratch.roll_back(outer);
    std::memset(scratch.take(3000), 4, 3000);
    scratch.roll_back(empty);
    EXPECT_EQ(scratch.mark(), empty);
    std::memset(scratch.take(3000), 5, 3000);
}

TEST_F(MemoryTest, AMarkOfAnotherHeapDoesNothing) {
    Buffer buffer, other_buffer;
    Scratch scratch(buffer.bytes, 4096), other(other_buffer.bytes, 4096);
    char* block = scratch.take(10);
    std::memset(block, 'x', 10);
    qz_heap_top* level = scratch.mark();
    scratch.roll_back(other.mark());
    scratch.roll_back(nullptr);
    EXPECT_EQ(scratch.mark(), level);
    EXPECT_EQ(std::string(block, 10), "xxxxxxxxxx");
}

TEST_F(MemoryTest, RowsThatRollBackStopAskingForMemory) {
    Buffer buffer;
    Scratch scratch(buffer.bytes, 4096);
    qz_heap_top* mark = scratch.mark();
    for (int row = 0; row < 100; ++row) {
        if (row == 10) host_memory_fail_after(0);  // the chunk of the rows before is used again
        for (int i = 0; i < 5; ++i) {
            char* block = scratch.take(10000);
            if (row < 10 && block == nullptr) FAIL();
            if (i == 0) {
                ASSERT_NE(block, nullptr) << row;
            }
        }
        scratch.roll_back(mark);
    }
}

TEST_F(MemoryTest, HeapSizesBeyondReasonAreExhaustion) {
    Buffer buffer;
    Scratch scratch(buffer.bytes, 4096);
    std::memset(scratch.take(16), 1, 16);
    qz_heap_top* level = scratch.mark();
    for (const size_t size : kHostileSizes) EXPECT_EQ(scratch.take(size), nullptr) << size;
    EXPECT_EQ(scratch.mark(), level);
    EXPECT_NE(scratch.take(0), nullptr);
    EXPECT_NE(scratch.take(0), scratch.take(0));
}

TEST_F(MemoryTest, EachAllocationOfAHeapMayFail) {
    for (int64_t allocations = 0;; ++allocations) {
        ASSERT_LT(allocations, 50);
        host_memory_fail_after(allocations);
        qz_heap* heap = make_heap(nullptr, 0);
        if (heap == nullptr) continue;
        rt_memobj* memobj = rt_memobj_create_ex(nullptr, 0, heap, __FILE__, __LINE__);
        int taken = 0;
        while (taken < 100 && memobj->alloc(nullptr, memobj->pool, 1000, __FILE__, __LINE__) != nullptr) ++taken;
        // A larger request may fail where a smaller one still fits; neither disturbs the heap.
        if (taken < 100) {
            EXPECT_EQ(memobj->alloc(nullptr, memobj->pool, 5000, __FILE__, __LINE__), nullptr);
        }
        rt_memobj_destroy(nullptr, memobj);
        if (taken == 100) break;
    }
}

#ifdef QZHOST_POISONS
TEST_F(MemoryTest, RolledBackSpaceIsUntouchable) {
    Buffer buffer;
    Scratch scratch(buffer.bytes, 4096);
    qz_heap_top* mark = scratch.mark();
    for (const size_t size : {1u, 100u, 20000u}) {
        char* block = scratch.take(size);
        EXPECT_EQ(__asan_region_is_poisoned(block, size), nullptr);
        EXPECT_TRUE(__asan_address_is_poisoned(block + size));
        scratch.roll_back(mark);
        EXPECT_TRUE(__asan_address_is_poisoned(block));
    }
}
#endif

// ---- Memory objects --------------------------------------------------------------------------------------------------------

struct Seen {
    size_t size;
    std::string file;
    int32_t line;
};

std::vector<Seen> outstanding_blocks(const rt_memobj* memobj) {
    std::vector<Seen> seen;
    const auto visit = [](void* context, size_t size, const char* file, int32_t line) {
        static_cast<std::vector<Seen>*>(context)->push_back({size, file, line});
    };
    host_memobj_visit(memobj, visit, &seen);
    return seen;
}

TEST_F(MemoryTest, AMemoryObjectCountsWhatIsOut) {
    rt_memobj* memobj = host_memobj_create(nullptr);
    ASSERT_NE(memobj, nullptr);
    const auto take = [memobj](size_t size) {
        return memobj->alloc(nullptr, memobj->pool, size, "place", static_cast<int32_t>(size));
    };
    EXPECT_EQ(host_memobj_outstanding(memobj), 0u);
    void* blocks[5];
    for (size_t i = 0; i < 5; ++i) {
        blocks[i] = take(i * 10);
        ASSERT_NE(blocks[i], nullptr);
        EXPECT_TRUE(is_aligned(blocks[i]));
        std::memset(blocks[i], 1, i * 10);
    }
    EXPECT_EQ(host_memobj_outstanding(memobj), 100u);
    memobj->free(nullptr, memobj->pool, blocks[2]);
    memobj->free(nullptr, memobj->pool, blocks[4]);
    memobj->free(nullptr, memobj->pool, nullptr);
    EXPECT_EQ(host_memobj_outstanding(memobj), 40u);
    const std::vector<Seen> seen = outstanding_blocks(memobj);
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[0].size, 0u);
    EXPECT_EQ(seen[1].size, 10u);
    EXPECT_EQ(seen[2].size, 30u);
    EXPECT_EQ(seen[2].file, "place");
    EXPECT_EQ(seen[2].line, 30);
    memobj->free(nullptr, memobj->pool, blocks[0]);
    EXPECT_EQ(outstanding_blocks(memobj).size(), 2u);
    host_memobj_reset(memobj);
    EXPECT_EQ(host_memobj_outstanding(memobj), 0u);
    EXPECT_TRUE(outstanding_blocks(memobj).empty());
    EXPECT_NE(take(77), nullptr);
    EXPECT_EQ(host_memobj_outstanding(memobj), 77u);
    host_memobj_destroy(memobj);  // with the block that is still out: the leak check of the run would tell
    host_memobj_destroy(nullptr);
}

TEST_F(MemoryTest, AMemoryObjectMayRunOut) {
    host_memory_fail_after(0);
    EXPECT_EQ(host_memobj_create(nullptr), nullptr);
    host_memory_fail_after(2);
    rt_memobj* memobj = host_memobj_create(nullptr);
    ASSERT_NE(memobj, nullptr);
    EXPECT_NE(memobj->alloc(nullptr, memobj->pool, 5, __FILE__, __LINE__), nullptr);
    EXPECT_EQ(memobj->alloc(nullptr, memobj->pool, 5, __FILE__, __LINE__), nullptr);
    EXPECT_EQ(host_memobj_outstanding(memobj), 5u);
    host_memory_fail_after(-1);
    for (const size_t size : kHostileSizes)
        EXPECT_EQ(memobj->alloc(nullptr, memobj->pool, size, __FILE__, __LINE__), nullptr) << size;
    EXPECT_EQ(host_memobj_outstanding(memobj), 5u);
    host_memobj_destroy(memobj);
}

}  // namespace
