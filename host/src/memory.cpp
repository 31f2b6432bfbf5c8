#include "qzhost/memory.h"

#include <cstdlib>

#include "host/src/allocation.h"
#include "qzhost/control.h"

namespace qzhost {
namespace {

constexpr int64_t kNeverFail = -1;

// How many allocations of this thread still succeed.
constinit thread_local int64_t allocations_left = kNeverFail;

bool may_allocate(size_t size) {
    if (size > kLargestBlock) return false;
    if (allocations_left < 0) return true;
    if (allocations_left == 0) return false;
    --allocations_left;
    return true;
}

}  // namespace

void* allocate(size_t size, size_t alignment) {
    if (!may_allocate(size)) return nullptr;
    if (size == 0) size = 1;
    if (alignment <= kAlignment) return std::malloc(size);
    void* block = nullptr;
    return posix_memalign(&block, alignment, size) == 0 ? block : nullptr;
}

void* reallocate(void* block, size_t size) {
    if (!may_allocate(size)) return nullptr;
    return std::realloc(block, size == 0 ? 1 : size);
}

void release(void* block) { std::free(block); }

}  // namespace qzhost

void host_memory_fail_after(int64_t allocations) {
    qzhost::allocations_left = allocations < 0 ? qzhost::kNeverFail : allocations;
}

void* mem_malloc_ex(qz_env*, size_t size, const char*, int32_t) { return qzhost::allocate(size); }

void* mem_realloc_ex(qz_env*, void* block, size_t new_size, size_t, const char*, int32_t) {
    return qzhost::reallocate(block, new_size);
}

void mem_free(qz_env*, void* block) { qzhost::release(block); }
