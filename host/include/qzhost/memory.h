/*
 * Memory services of the reference host: general blocks, scratch heaps with mark and roll-back, memory objects.
 *
 * Every allocation answers NULL on exhaustion and never throws; a size beyond 2^38 bytes is exhaustion. Blocks are aligned to
 * 16 bytes. file and line name the place in the source that asks.
 *
 * This header is C11 and C++20.
 */
#ifndef QZHOST_MEMORY_H
#define QZHOST_MEMORY_H

#include "qzbifun/records.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct qz_heap qz_heap;
typedef struct qz_heap_top qz_heap_top; /* a mark of a heap's fill level */

/* Makes a heap that gives space out of the caller's buffer of the given size first, and allocates only when that is full. The
 * buffer outlives the heap. A buffer too small for the heap's own record is not used. NULL on exhaustion. The four numbers are
 * always 0, 0 in front and 1, 0 behind. */
qz_heap* mem_heap_create_low2(qz_env* env, int32_t zero1, int32_t zero2, uint32_t size, void* buffer, const char* file,
                              int32_t line, int32_t one, int32_t zero3);

/* Releases the heap and all in it; not the caller's buffer. NULL is allowed. */
void mem_heap_free(qz_env* env, qz_heap* heap);

/* A mark of the present fill level, valid until the heap is rolled back below it or freed. Takes no memory and cannot fail. */
qz_heap_top* mem_heap_get_heap_top(qz_heap* heap);

/* Releases all that was allocated since the mark. The mark stays valid. The heap keeps one chunk for what comes next, so that a
 * loop that rolls back after each row soon asks for no memory. A mark of another heap does nothing. */
void mem_heap_free_heap_top(qz_env* env, qz_heap* heap, qz_heap_top* mark);

/* A memory object that allocates from the heap, whose free member does nothing: the heap gives all back at once. It lives in
 * the heap's record, so a roll-back does not touch it and it cannot fail; NULL for no heap. zero is always 0. */
rt_memobj* rt_memobj_create_ex(qz_env* env, int32_t zero, qz_heap* heap, const char* file, int32_t line);

/* Ends a memory object of rt_memobj_create_ex, and its heap with it. NULL is allowed. */
void rt_memobj_destroy(qz_env* env, rt_memobj* memobj);

/* General blocks. size 0 gives a block of its own. A block that cannot be resized is as before. */
void* mem_malloc_ex(qz_env* env, size_t size, const char* file, int32_t line);
void* mem_realloc_ex(qz_env* env, void* block, size_t new_size, size_t old_size, const char* file, int32_t line);
void mem_free(qz_env* env, void* block); /* NULL is allowed */

#ifdef __cplusplus
}
#endif

#endif
