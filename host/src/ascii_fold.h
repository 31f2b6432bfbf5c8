// Case folding of the ASCII letters of a text in place, whole words at a time; all other bytes stay.
#pragma once

#include "host/src/byte_blocks.h"
#include "host/src/case_tables.h"

namespace qzhost {

template <Case to>
inline constexpr uint8_t kFirstLetter = to == Case::upper ? 'a' : 'A';
inline constexpr uint8_t kLetters = 26;
inline constexpr uint64_t kEachByte = 0x0101010101010101u;
inline constexpr unsigned kCaseBitFromHighBit = 2;  // from bit 7 to bit 5

template <Case to>
inline uint64_t fold_word(uint64_t word) {
    // Seven-bit sums cannot carry into the next byte.
    const uint64_t seven = word & ~kHighBits;
    const uint64_t from_first = seven + kEachByte * (0x80 - kFirstLetter<to>);
    const uint64_t behind_last = seven + kEachByte * (0x80 - kFirstLetter<to> - kLetters);
    const uint64_t letters = from_first & ~behind_last & ~word & kHighBits;
    return word ^ letters >> kCaseBitFromHighBit;
}

#ifdef QZHOST_VECTOR_BYTES
template <Case to>
inline __m128i fold_block(__m128i block) {
    // Moved so that the letters are the lowest signed numbers.
    const __m128i moved = _mm_sub_epi8(block, _mm_set1_epi8(static_cast<char>(kFirstLetter<to> + 0x80)));
    const __m128i letters = _mm_cmplt_epi8(moved, _mm_set1_epi8(static_cast<char>(0x80 + kLetters)));
    return _mm_xor_si128(block, _mm_and_si128(letters, _mm_set1_epi8(0x20)));
}
#endif

// The last word of a range may overlap the one before it: it is read before that is written, and written after. Answers whether
// all bytes are ASCII.
template <Case to>
inline bool fold_ascii(uint8_t* p, size_t n) {
    uint64_t others = 0;
    if (n < 8) {
        for (size_t i = 0; i < n; ++i) {
            others |= p[i];
            p[i] ^= static_cast<uint8_t>((static_cast<uint8_t>(p[i] - kFirstLetter<to>) < kLetters) << 5);
        }
        return (others & 0x80) == 0;
    }
#ifdef QZHOST_VECTOR_BYTES
    if (SpreadBlocks::takes(n)) {
        const SpreadBlocks blocks(p, n);
        for (size_t i = 0; i < SpreadBlocks::kCount; ++i) store_block(p + blocks.at[i], fold_block<to>(blocks.block[i]));
        return bits_of(blocks.all()) == 0;
    }
    if (n >= kBlock) {
        const __m128i last = load_block(p + n - kBlock);
        __m128i all = last;
        for (size_t i = 0; i + kBlock < n; i += kBlock) {
            const __m128i block = load_block(p + i);
            all = _mm_or_si128(all, block);
            store_block(p + i, fold_block<to>(block));
        }
        store_block(p + n - kBlock, fold_block<to>(last));
        return bits_of(all) == 0;
    }
#endif
    const uint64_t last = load64(p + n - 8);
    others = last;
    for (size_t i = 0; i + 8 < n; i += 8) {
        const uint64_t word = load64(p + i);
        others |= word;
        store64(p + i, fold_word<to>(word));
    }
    store64(p + n - 8, fold_word<to>(last));
    return (others & kHighBits) == 0;
}

}  // namespace qzhost
