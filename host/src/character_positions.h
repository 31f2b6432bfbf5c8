// How many characters stand in front of a byte of a short text, counted without a branch on where that is.
#pragma once

#include "host/src/utf8_blocks.h"

#ifdef QZHOST_VECTOR_BYTES

namespace qzhost {

inline constexpr size_t kNotCounted = SIZE_MAX;

// Of the first bytes of UTF-8, where SpreadBlocks takes the text; kNotCounted where the whole text is not seen to be
// well-formed.
inline size_t count_utf8_in_front(const uint8_t* p, size_t n, size_t front) {
    const SpreadBlocks blocks(p, n);
    if (bits_of(blocks.all()) == 0) return front;
    if (n < Utf8Blocks::kLeastSpread || !Utf8Blocks::is_well_formed(p, blocks)) return kNotCounted;
    const uint64_t continuations = blocks.bits(Utf8Blocks::continuations) & ((uint64_t{1} << front) - 1);
    return front - static_cast<size_t>(std::popcount(continuations));
}

}  // namespace qzhost

#endif
