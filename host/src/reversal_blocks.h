// Reversal of the characters of a text, byte by byte and in blocks of sixteen. The bytes of each character are turned around where
// they stand, then the bytes of the text: each character's are in their own order again.
#pragma once

#include <utility>

#include "host/src/character_walk.h"

namespace qzhost {

// ---- Bytes ------------------------------------------------------------------------------------------------------------------

// From both ends towards the middle. What is left there is done by two words that overlap.
inline void reverse_bytes(uint8_t* p, size_t n) {
#ifdef QZHOST_VECTOR_BYTES
    const __m128i backwards = _mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
    if (SpreadBlocks::takes(n)) {
        const SpreadBlocks blocks(p, n);
        for (size_t i = 0; i < SpreadBlocks::kCount; ++i) {
            store_block(p + n - kBlock - blocks.at[i], _mm_shuffle_epi8(blocks.block[i], backwards));
        }
        return;
    }
    const auto swap_ends = [&] {
        const __m128i first = load_block(p);
        const __m128i last = load_block(p + n - kBlock);
        store_block(p, _mm_shuffle_epi8(last, backwards));
        store_block(p + n - kBlock, _mm_shuffle_epi8(first, backwards));
    };
    for (; n > 2 * kBlock; p += kBlock, n -= 2 * kBlock) swap_ends();
    if (n >= kBlock) return swap_ends();
#endif
    while (n > 16) {
        const uint64_t first = load64(p);
        const uint64_t last = load64(p + n - 8);
        store64(p, __builtin_bswap64(last));
        store64(p + n - 8, __builtin_bswap64(first));
        p += 8;
        n -= 16;
    }
    if (n >= 8) {
        const uint64_t first = load64(p);
        const uint64_t last = load64(p + n - 8);
        store64(p, __builtin_bswap64(last));
        store64(p + n - 8, __builtin_bswap64(first));
    } else if (n >= 4) {
        const uint32_t first = load32(p);
        const uint32_t last = load32(p + n - 4);
        store32(p, __builtin_bswap32(last));
        store32(p + n - 4, __builtin_bswap32(first));
    } else if (n >= 2) {
        std::swap(p[0], p[n - 1]);
    }
}

// ---- Characters one by one --------------------------------------------------------------------------------------------------

inline void turn_character(uint8_t* p, size_t length) {
    std::swap(p[0], p[length - 1]);
    if (length == 4) [[unlikely]]
        std::swap(p[1], p[2]);
}

template <class Set>
inline void turn_characters(uint8_t* p, size_t n, size_t ascii) {
    for (size_t i = ascii; i < n; i += ascii_run(p + i, n - i)) {
        const size_t length = step<Set>(p + i, n - i);
        turn_character(p + i, length);
        i += length;
    }
}

// ---- Characters of UTF-8 by blocks ------------------------------------------------------------------------------------------

#ifdef QZHOST_VECTOR_BYTES

// One block after the other of well-formed text. A byte's new one stands as far behind it or in front of it as its character's
// lead byte tells.
class CharacterTurns {
  public:
    // The block with the bytes of its characters turned around; next is the block behind it.
    __m128i turned(__m128i block, __m128i next) {
        const __m128i one_back = _mm_alignr_epi8(block, previous_, 15);
        const __m128i two_back = _mm_alignr_epi8(block, previous_, 14);
        const __m128i three_back = _mm_alignr_epi8(block, previous_, 13);
        const __m128i one_ahead = _mm_alignr_epi8(next, block, 1);
        __m128i result = chosen(leads(block, 2), one_ahead, block);
        result = chosen(leads(one_back, 2), one_back, result);
        result = chosen(leads(block, 3), _mm_alignr_epi8(next, block, 2), result);
        result = chosen(leads(two_back, 3), two_back, result);
        const __m128i four_near = at_least(_mm_max_epu8(block, three_back), 0xF0);
        if (bits_of(four_near) != 0) [[unlikely]] {
            result = chosen(at_least(block, 0xF0), _mm_alignr_epi8(next, block, 3), result);
            result = chosen(at_least(one_back, 0xF0), one_ahead, result);
            result = chosen(at_least(two_back, 0xF0), one_back, result);
            result = chosen(at_least(three_back, 0xF0), three_back, result);
        }
        previous_ = block;
        return result;
    }

  private:
    static __m128i at_least(__m128i bytes, int least) {
        return _mm_cmpeq_epi8(_mm_max_epu8(bytes, _mm_set1_epi8(static_cast<char>(least))), bytes);
    }
    // The lead bytes of characters of two or three bytes: C0 to DF, E0 to EF, as signed numbers.
    static __m128i leads(__m128i bytes, int length) {
        const char first = static_cast<char>(length == 2 ? 0xC0 : 0xE0);
        const char behind = static_cast<char>(length == 2 ? 0xE0 : 0xF0);
        return _mm_andnot_si128(_mm_cmplt_epi8(bytes, _mm_set1_epi8(first)), _mm_cmplt_epi8(bytes, _mm_set1_epi8(behind)));
    }
    static __m128i chosen(__m128i where, __m128i there, __m128i elsewhere) {
        return _mm_or_si128(_mm_and_si128(where, there), _mm_andnot_si128(where, elsewhere));
    }

    __m128i previous_ = _mm_setzero_si128();
};

// Well-formed text of kBlock bytes or more, in place. A block is loaded before the one in front of it is written over.
inline void turn_utf8_characters(uint8_t* p, size_t n) {
    CharacterTurns turns;
    __m128i block = load_block(p);
    size_t i = 0;
    for (; i + 2 * kBlock <= n; i += kBlock) {
        const __m128i next = load_block(p + i + kBlock);
        store_block(p + i, turns.turned(block, next));
        block = next;
    }
    const size_t rest = n - i - kBlock;
    const __m128i next = load_below_16(p + n - rest, rest);
    store_block(p + i, turns.turned(block, next));
    uint8_t last[kBlock];
    store_block(last, turns.turned(next, _mm_setzero_si128()));
    std::memcpy(p + n - rest, last, rest);
}

// The other way round, for short text: in the reversed text each character ends with its lead byte.
inline void reverse_short_utf8(uint8_t* p, size_t n) {
    const auto turn = [p](size_t lead) {
        const size_t length = Utf8::length_by_lead(p + lead);
        turn_character(p + lead + 1 - length, length);
    };
    if (SpreadBlocks::takes(n)) {
        const auto is_lead = [](__m128i block) {
            return _mm_cmpeq_epi8(_mm_max_epu8(block, _mm_set1_epi8(static_cast<char>(0xC0))), block);
        };
        // Looked for before the bytes move, since loads of what was just stored in other pieces are slow.
        uint64_t leads = SpreadBlocks(p, n).bits(is_lead);
        reverse_bytes(p, n);
        for (; leads != 0; leads &= leads - 1) turn(n - 1 - static_cast<size_t>(std::countr_zero(leads)));
        return;
    }
    reverse_bytes(p, n);
    for (size_t i = 0; i < n; ++i) {
        if (p[i] >= 0xC0) turn(i);
    }
}

#endif

// ---- Any text: false, and the text as it was, where it is malformed ---------------------------------------------------------

inline bool reverse_utf8_by_blocks(uint8_t* p, size_t n) {
    const Utf8Count counted = count_utf8(p, n);
    if (!counted.well_formed) return false;
    if (counted.characters == n) {
        reverse_bytes(p, n);
        return true;
    }
#ifdef QZHOST_VECTOR_BYTES
    if (n <= SpreadBlocks::kMost) {
        reverse_short_utf8(p, n);
        return true;
    }
    turn_utf8_characters(p, n);
#else
    turn_characters<Utf8>(p, n, 0);
#endif
    reverse_bytes(p, n);
    return true;
}

template <class Set>
inline bool reverse_characters(uint8_t* p, size_t n) {
    if constexpr (std::is_same_v<Set, Utf8>) return reverse_utf8_by_blocks(p, n);
    const size_t ascii = ascii_run(p, n);
    if (ascii != n) {
        if (!is_well_formed<Set>(p + ascii, n - ascii)) return false;
        turn_characters<Set>(p, n, ascii);
    }
    reverse_bytes(p, n);
    return true;
}

}  // namespace qzhost
