// Three ways to find a pattern in a text, byte by byte, without a thought of characters.
//
// Each calls accept(position) for every place at which the pattern stands, ascending and overlapping, until accept answers
// true, and answers whether it did. The pattern has at least one byte and the text at least as many. Nothing is read outside
// either.
//
//   scan_ends      compares the first and the last byte of sixteen places at once. The fastest by far for what people search;
//                  needs no preparation. At worst pattern times text, which its caller may cut short.
//   boyer_moore    skips by two prepared tables; passes long patterns by large steps.
//   shift_or       one word of state, patterns under 32 bytes. For machines without vectors.
#pragma once

#include <algorithm>
#include <cstring>

#include "host/src/byte_blocks.h"

namespace qzhost {

inline bool equal_bytes(const uint8_t* a, const uint8_t* b, size_t n) {
    if (n >= 8) {
        size_t i = 0;
#ifdef QZHOST_VECTOR_BYTES
        for (; i + kBlock < n; i += kBlock) {
            if (bits_of(_mm_cmpeq_epi8(load_block(a + i), load_block(b + i))) != 0xFFFF) return false;
        }
#endif
        for (; i + 8 < n; i += 8) {
            if (load64(a + i) != load64(b + i)) return false;
        }
        return load64(a + n - 8) == load64(b + n - 8);
    }
    if (n >= 4) return ((load32(a) ^ load32(b)) | (load32(a + n - 4) ^ load32(b + n - 4))) == 0;
    return load_below_8(a, n) == load_below_8(b, n);
}

// How many bytes at the start agree.
inline size_t common_start(const uint8_t* a, const uint8_t* b, size_t n) {
    size_t i = 0;
    while (i + 8 <= n && load64(a + i) == load64(b + i)) i += 8;
    while (i < n && a[i] == b[i]) ++i;
    return i;
}

// The bytes between the first and the last, which agree already.
inline bool equal_between_ends(const uint8_t* place, const uint8_t* pattern, size_t m) {
    return m <= 2 || equal_bytes(place + 1, pattern + 1, m - 2);
}

#ifdef QZHOST_VECTOR_BYTES

// A bit for each place of a text of up to 48 bytes at which the first and the last byte agree.
inline uint64_t places_of_ends(const uint8_t* text, size_t n, const uint8_t* pattern, size_t m) {
    const __m128i first = _mm_set1_epi8(static_cast<char>(pattern[0]));
    const __m128i last = _mm_set1_epi8(static_cast<char>(pattern[m - 1]));
    if (n < kBlock) {
        const __m128i all = load_below_16(text, n);
        const uint32_t ends = bits_of(_mm_cmpeq_epi8(all, first)) & bits_of(_mm_cmpeq_epi8(all, last)) >> (m - 1);
        return ends & ((1u << (n - m + 1)) - 1);
    }
    const SpreadBlocks blocks(text, n);
    const uint64_t firsts = blocks.bits([&](__m128i block) { return _mm_cmpeq_epi8(block, first); });
    const uint64_t lasts = blocks.bits([&](__m128i block) { return _mm_cmpeq_epi8(block, last); });
    return firsts & lasts >> (m - 1);
}

// The position, from 1, of the first place of a pattern of one or two bytes in a text of up to 48; 0 when there is none. No
// branch depends on whether there is one.
inline uint32_t first_of_ends(const uint8_t* text, size_t n, const uint8_t* pattern, size_t m) {
    const uint64_t places = places_of_ends(text, n, pattern, m);
    const uint32_t first = static_cast<uint32_t>(std::countr_zero(places | uint64_t{1} << 63)) + 1;
    return places == 0 ? 0 : first;
}

// Calls try_place(position) where the first and the last byte agree, until it answers true.
template <class TryPlace>
[[gnu::always_inline]] inline bool scan_for_ends(const uint8_t* text, size_t n, const uint8_t* pattern, size_t m,
                                                 TryPlace&& try_place) {
    const __m128i first = _mm_set1_epi8(static_cast<char>(pattern[0]));
    const __m128i last = _mm_set1_epi8(static_cast<char>(pattern[m - 1]));
    const auto try_places = [&](size_t begin, uint64_t places) {
        for (; places != 0; places &= places - 1) {
            const size_t position = begin + static_cast<size_t>(std::countr_zero(places));
            if (try_place(position)) return true;
        }
        return false;
    };
    const size_t places = n - m + 1;
    if (n <= SpreadBlocks::kMost) return try_places(0, places_of_ends(text, n, pattern, m));
    if (places < kBlock) {
        // The block of last bytes ends with the text, so its bits stand too high.
        const uint32_t firsts = bits_of(_mm_cmpeq_epi8(load_block(text), first));
        const uint32_t lasts = bits_of(_mm_cmpeq_epi8(load_block(text + n - kBlock), last)) >> (kBlock - places);
        return try_places(0, firsts & lasts);
    }
    const auto ends_at = [&](size_t begin) {
        return bits_of(_mm_and_si128(_mm_cmpeq_epi8(load_block(text + begin), first),
                                     _mm_cmpeq_epi8(load_block(text + begin + m - 1), last)));
    };
    size_t i = 0;
    for (; i + kBlock <= places; i += kBlock) {
        const uint32_t ends = ends_at(i);
        if (ends != 0 && try_places(i, ends)) return true;
    }
    if (i == places) return false;
    // A last block over places of which some were tried.
    const size_t begin = places - kBlock;
    return try_places(begin, ends_at(begin) & (~0u << (i - begin)));
}

template <class Accept>
[[gnu::always_inline]] inline bool scan_ends(const uint8_t* text, size_t n, const uint8_t* pattern, size_t m, Accept&& accept) {
    return scan_for_ends(text, n, pattern, m,
                         [&](size_t position) { return equal_between_ends(text + position, pattern, m) && accept(position); });
}

#endif

// Tables as preprocess_bmbc and preprocess_bmgs make them. With others it may miss places.
template <class Accept>
bool boyer_moore(const uint8_t* text, size_t n, const uint8_t* pattern, size_t m, const uint32_t* bmbc, const uint32_t* bmgs,
                 Accept&& accept) {
    for (size_t at = 0; at <= n - m;) {
        size_t i = m;
        while (i > 0 && pattern[i - 1] == text[at + i - 1]) --i;
        if (i == 0) {
            if (accept(at)) return true;
            at += std::max<size_t>(bmgs[0], 1);
            continue;
        }
        // bmbc measures from the pattern's end; the bytes that agree behind i are that much nearer.
        const size_t agreed = m - i;
        const size_t by_byte = bmbc[text[at + i - 1]];
        at += std::max<size_t>({bmgs[i - 1], by_byte > agreed ? by_byte - agreed : 1, 1});
    }
    return false;
}

// Masks and limit as preshiftorprocess makes them; m is below 32.
template <class Accept>
bool shift_or(const uint8_t* text, size_t n, size_t m, const uint32_t* masks, uint32_t limit, Accept&& accept) {
    uint32_t state = ~0u;
    for (size_t i = 0; i < n; ++i) {
        state = state << 1 | masks[text[i]];
        if (state < limit && i + 1 >= m && accept(i + 1 - m)) return true;
    }
    return false;
}

}  // namespace qzhost
