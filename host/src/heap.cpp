// Scratch heaps.
//
// A heap is a chain of chunks, of which only the newest is filled, from the front. The chain starts in the caller's buffer,
// which also holds the heap's record. A mark is nothing but the fill position at its time: rolling back finds the chunk around
// it, drops the newer ones and goes on filling there. So a mark needs no space and cannot fail.
//
// Of the chunks that a roll-back drops, the largest is kept: a loop that rolls back after each row would otherwise go to the
// general allocator for each row again.
#include <algorithm>
#include <cstdint>
#include <new>

#include "host/src/allocation.h"
#include "host/src/poison.h"
#include "qzhost/memory.h"

namespace {

// Stands at the front of the space that it describes.
struct alignas(qzhost::kAlignment) Chunk {
    Chunk* older;
    char* end;

    char* begin() { return reinterpret_cast<char*>(this + 1); }
    bool holds(const char* position) { return begin() <= position && position <= end; }
};

constexpr size_t kFirstChunkBytes = 4096;
constexpr size_t kLargestPlannedChunkBytes = size_t{1} << 20;

constexpr size_t round_up(size_t size) { return (size + qzhost::kAlignment - 1) & ~(qzhost::kAlignment - 1); }

}  // namespace

struct alignas(qzhost::kAlignment) qz_heap {
    rt_memobj memobj;  // all memory objects over this heap are the same
    Chunk* newest;
    char* next;  // fill position in newest
    Chunk* spare;
    size_t planned_bytes;  // of the next chunk to be allocated
    bool own_record;       // the record was allocated, and does not stand in the caller's buffer

    void* allocate(size_t size);
    bool open_chunk(size_t size);
    void set_aside(Chunk* chunk);
};

namespace {

void* heap_alloc(qz_env*, void* pool, size_t size, const char*, int32_t) { return static_cast<qz_heap*>(pool)->allocate(size); }

void heap_keep(qz_env*, void*, void*) {}

// Makes a record, and behind it the first chunk, in space that is aligned and large enough for both.
qz_heap* make_heap(char* space, size_t size, bool own_record) {
    Chunk* first = new (space + sizeof(qz_heap)) Chunk{nullptr, space + size};
    qz_heap* heap =
        new (space) qz_heap{{heap_alloc, heap_keep, space}, first, first->begin(), nullptr, kFirstChunkBytes, own_record};
    qzhost::poison(heap->next, static_cast<size_t>(first->end - heap->next));
    return heap;
}

}  // namespace

void* qz_heap::allocate(size_t size) {
    if (size > qzhost::kLargestBlock) return nullptr;
    const size_t step = round_up(std::max<size_t>(size, 1)) + qzhost::kRedZone;
    if (step > static_cast<size_t>(newest->end - next) && !open_chunk(step)) return nullptr;
    char* block = next;
    next += step;
    qzhost::unpoison(block, size);
    return block;
}

// Opens a chunk with room for at least size bytes.
bool qz_heap::open_chunk(size_t size) {
    Chunk* chunk = spare;
    if (chunk != nullptr && size <= static_cast<size_t>(chunk->end - chunk->begin())) {
        spare = nullptr;
    } else {
        const size_t bytes = std::max(planned_bytes, sizeof(Chunk) + size);
        void* space = qzhost::allocate(bytes);
        if (space == nullptr) return false;
        chunk = new (space) Chunk{nullptr, static_cast<char*>(space) + bytes};
        qzhost::poison(chunk->begin(), bytes - sizeof(Chunk));
        planned_bytes = std::min(2 * planned_bytes, kLargestPlannedChunkBytes);
    }
    chunk->older = newest;
    newest = chunk;
    next = chunk->begin();
    return true;
}

// Takes a chunk out of use: the largest one seen so far stays for reuse.
void qz_heap::set_aside(Chunk* chunk) {
    if (spare == nullptr || spare->end - spare->begin() < chunk->end - chunk->begin()) std::swap(spare, chunk);
    qzhost::release(chunk);
    qzhost::poison(spare->begin(), static_cast<size_t>(spare->end - spare->begin()));
}

qz_heap* mem_heap_create_low2(qz_env*, int32_t, int32_t, uint32_t size, void* buffer, const char*, int32_t, int32_t, int32_t) {
    constexpr size_t kRecords = sizeof(qz_heap) + sizeof(Chunk);
    const size_t skip = round_up(reinterpret_cast<uintptr_t>(buffer)) - reinterpret_cast<uintptr_t>(buffer);
    if (buffer != nullptr && size >= skip + kRecords) {
        const size_t usable = (size - skip) & ~(qzhost::kAlignment - 1);
        return make_heap(static_cast<char*>(buffer) + skip, usable, false);
    }
    void* space = qzhost::allocate(kRecords);
    return space == nullptr ? nullptr : make_heap(static_cast<char*>(space), kRecords, true);
}

void mem_heap_free(qz_env*, qz_heap* heap) {
    if (heap == nullptr) return;
    qzhost::release(heap->spare);
    Chunk* chunk = heap->newest;
    while (chunk->older != nullptr) {
        Chunk* older = chunk->older;
        qzhost::release(chunk);
        chunk = older;
    }
    // The first chunk stands in the caller's buffer, which goes back as it came.
    qzhost::unpoison(chunk->begin(), static_cast<size_t>(chunk->end - chunk->begin()));
    if (heap->own_record) qzhost::release(heap);
}

qz_heap_top* mem_heap_get_heap_top(qz_heap* heap) { return reinterpret_cast<qz_heap_top*>(heap->next); }

void mem_heap_free_heap_top(qz_env*, qz_heap* heap, qz_heap_top* mark) {
    char* position = reinterpret_cast<char*>(mark);
    Chunk* target = heap->newest;
    while (target != nullptr && !target->holds(position)) target = target->older;
    if (target == nullptr) return;
    while (heap->newest != target) {
        Chunk* dropped = heap->newest;
        heap->newest = dropped->older;
        heap->set_aside(dropped);
    }
    heap->next = position;
    qzhost::poison(position, static_cast<size_t>(target->end - position));
}

rt_memobj* rt_memobj_create_ex(qz_env*, int32_t, qz_heap* heap, const char*, int32_t) {
    return heap == nullptr ? nullptr : &heap->memobj;
}

void rt_memobj_destroy(qz_env* env, rt_memobj* memobj) {
    if (memobj != nullptr) mem_heap_free(env, static_cast<qz_heap*>(memobj->pool));
}
