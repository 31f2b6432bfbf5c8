// The records behind bdta3_col and bdta3_coldata, and where the texts of a string vector stand.
//
// Own space. A text of up to kLongestOwnText bytes is copied to the vector's own space: chunks that double in size and are
// filled from the front, byte after byte, without alignment. A vector has no chunk before its first text. Texts are never
// released one by one there; a reset keeps the newest chunk, the largest, and drops the others, so that a vector that is used
// batch after batch soon lives in one chunk that fits.
//
// Blocks of their own. A longer text is a block of the caller's memory object, which the caller may release by itself. Without
// a memory object it goes to own space as well.
//
// A text without stored bytes needs neither: its slot points to a mark in the block, which counts as own space, so that the
// pointer is neither NULL nor ever released.
#pragma once

#include "host/src/poison.h"
#include "qzbifun/records.h"
#include "qzhost/control.h"

namespace qzhost {

inline constexpr uint32_t kLongestOwnText = 4096;

// Stands at the front of the space that it describes.
struct TextChunk {
    TextChunk* older;
    char* end;

    char* begin() { return reinterpret_cast<char*>(this + 1); }
    const char* begin() const { return reinterpret_cast<const char*>(this + 1); }
};

struct Block {
    bdta3_coldata base;
    int32_t type;    // HOST_INT ...
    uint32_t width;  // bytes a row in values
    uint32_t rows;
    char* next;  // fill position of the newest chunk
    char* end;
    TextChunk* newest;
    char no_text;

    bool holds_text() const { return type >= HOST_STR; }
    bool holds_lobs() const { return type >= HOST_CLOB; }

    // Room for size bytes of text; NULL on exhaustion.
    char* take(qz_env* env, rt_memobj* rt_mem, uint32_t size) {
        const size_t step = own_step(size);
        if (size - 1 < kLongestOwnText && step <= static_cast<size_t>(end - next)) {
            char* space = next;
            next += step;
            unpoison(space, size);
            return space;
        }
        return take_elsewhere(env, rt_mem, size);
    }

    // Own space for size bytes of several texts; NULL on exhaustion.
    char* take_own(uint32_t size);

    char* take_elsewhere(qz_env* env, rt_memobj* rt_mem, uint32_t size);
    bool open_chunk(size_t size);
    bool is_own(const char* text) const;
    void drop_texts();  // all chunks but the newest, which is empty then
    void release_texts();

    // Under AddressSanitizer texts keep a distance that nobody may touch.
    static constexpr size_t own_step(uint32_t size) {
        if constexpr (kRedZone == 0) return size;
        return ((size_t{size} + 7) & ~size_t{7}) + kRedZone;
    }
};

struct Vector {
    bdta3_col base;
    Block block;
    qz_env* env;
    rt_memobj* rt_mem;
    uint16_t* selection;  // kept for reuse; base.sel is this or NULL
    uint32_t selection_capacity;
};

inline Block* block_of(bdta3_coldata* data) { return reinterpret_cast<Block*>(data); }
inline const Block* block_of(const bdta3_coldata* data) { return reinterpret_cast<const Block*>(data); }
inline Vector* vector_of(bdta3_col* col) { return reinterpret_cast<Vector*>(col); }
inline const Vector* vector_of(const bdta3_col* col) { return reinterpret_cast<const Vector*>(col); }

}  // namespace qzhost
