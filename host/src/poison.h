// Marks space inside a block that nobody may touch: what a heap was rolled back over, and the gaps between texts. Only a build
// with AddressSanitizer acts on it.
#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define QZHOST_POISONS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QZHOST_POISONS 1
#endif
#endif

#ifdef QZHOST_POISONS
#include <sanitizer/asan_interface.h>
#endif

namespace qzhost {

#ifdef QZHOST_POISONS
inline constexpr size_t kRedZone = 16;  // bytes kept untouchable behind each piece that is cut from a larger block
inline void poison(const void* begin, size_t size) { __asan_poison_memory_region(begin, size); }
inline void unpoison(const void* begin, size_t size) { __asan_unpoison_memory_region(begin, size); }
#else
inline constexpr size_t kRedZone = 0;
inline void poison(const void*, size_t) {}
inline void unpoison(const void*, size_t) {}
#endif

}  // namespace qzhost
