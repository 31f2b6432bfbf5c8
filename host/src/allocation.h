// The one way to memory in the host: every allocation of every service, so that each of them can be made to fail.
//
// Nothing here throws. A request above kLargestBlock is refused outright, so that a size made by overflow is exhaustion and not
// a crash.
#pragma once

#include <cstddef>

namespace qzhost {

inline constexpr size_t kAlignment = 16;
inline constexpr size_t kLargestBlock = size_t{1} << 38;

// A block aligned for any type, or to alignment, which is a power of two. size 0 gives a block of its own. NULL on exhaustion.
[[nodiscard]] void* allocate(size_t size, size_t alignment = kAlignment);

// Resizes a block that has the default alignment; block may be NULL. NULL on exhaustion, and the block is as before then.
[[nodiscard]] void* reallocate(void* block, size_t size);

void release(void* block);  // NULL is allowed

}  // namespace qzhost
