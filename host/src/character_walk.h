// Walks over the characters of a text, shared by the character and the search services.
#pragma once

#include <algorithm>
#include <type_traits>

#include "host/src/charset.h"
#include "host/src/utf8_blocks.h"
#include "host/src/utf8_planes.h"

namespace qzhost {

// ---- Well-formedness and count of UTF-8 -------------------------------------------------------------------------------------

struct Utf8Count {
    bool well_formed;
    size_t characters;  // when well-formed
};

inline Utf8Count count_utf8_by_step(const uint8_t* p, size_t n) {
    Utf8Count result{true, 0};
    for (size_t i = 0; i < n; ++result.characters) {
        const int32_t length = Utf8::sequence(p + i, n - i);
        result.well_formed &= length > 0;
        i += length > 0 ? static_cast<size_t>(length) : 1;
    }
    return result;
}

#ifdef QZHOST_VECTOR_BYTES

// Text whose first i bytes are ASCII.
inline Utf8Count count_utf8_from(const uint8_t* p, size_t n, size_t i) {
    Utf8Blocks blocks;
    size_t continuations = 0;
    for (; i + 4 * kBlock <= n; i += 4 * kBlock) continuations += blocks.add_four(p + i);
    for (; i + kBlock <= n; i += kBlock) {
        const __m128i block = load_block(p + i);
        blocks.add(block);
        continuations += static_cast<size_t>(std::popcount(bits_of(Utf8Blocks::continuations(block))));
    }
    if (i < n) {
        const __m128i block = load_below_16(p + i, n - i);
        blocks.add(block);
        continuations += static_cast<size_t>(std::popcount(bits_of(Utf8Blocks::continuations(block))));
    }
    return {blocks.is_well_formed(), n - continuations};
}

inline Utf8Count count_utf8(const uint8_t* p, size_t n) {
    if (n < kBlock) {
        if (bits_of(load_below_16(p, n)) == 0) return {true, n};
        return count_utf8_from(p, n, 0);
    }
    if (SpreadBlocks::takes(n)) {
        const SpreadBlocks blocks(p, n);
        if (bits_of(blocks.all()) == 0) return {true, n};
        if (n < Utf8Blocks::kLeastSpread) return count_utf8_from(p, n, 0);
        const uint64_t continuations = blocks.bits(Utf8Blocks::continuations);
        return {Utf8Blocks::is_well_formed(p, blocks), n - static_cast<size_t>(std::popcount(continuations))};
    }
    size_t i = 0;
    for (; i + 4 * kBlock <= n; i += 4 * kBlock) {
        const __m128i any = _mm_or_si128(_mm_or_si128(load_block(p + i), load_block(p + i + kBlock)),
                                         _mm_or_si128(load_block(p + i + 2 * kBlock), load_block(p + i + 3 * kBlock)));
        if (bits_of(any) != 0) return count_utf8_from(p, n, i);
    }
    for (; i + kBlock <= n; i += kBlock) {
        if (bits_of(load_block(p + i)) != 0) return count_utf8_from(p, n, i);
    }
    // What is left shares its block with bytes that were looked at.
    if (bits_of(load_block(p + n - kBlock)) == 0) return {true, n};
    return count_utf8_from(p, n, i);
}

#else

inline Utf8Count count_utf8(const uint8_t* p, size_t n) {
    const size_t ascii = ascii_run(p, n);
    if (ascii == n) return {true, n};
    Utf8Count result = count_utf8_by_step(p + ascii, n - ascii);
    result.characters += ascii;
    return result;
}

#endif

// ---- Any character set ------------------------------------------------------------------------------------------------------

[[gnu::noinline]] inline size_t count_utf8_by_blocks(const uint8_t* p, size_t n) {
    const Utf8Count counted = count_utf8(p, n);
    return counted.well_formed ? counted.characters : count_utf8_by_step(p, n).characters;
}

template <class Set>
inline size_t count_characters(const uint8_t* p, size_t n) {
    if constexpr (std::is_same_v<Set, Utf8>) {
#ifdef QZHOST_MASKED_LOADS
        if (has_masked_loads()) {
            const size_t told = count_utf8_masked(p, n);
            if (told != kNotTold) [[likely]]
                return told;
        }
#endif
        return count_utf8_by_blocks(p, n);
    }
    size_t count = 0;
    for (size_t i = 0; i < n;) {
        const size_t run = ascii_run(p + i, n - i);
        i += run;
        count += run;
        for (; i < n && !is_ascii(p[i]); ++count) i += step<Set>(p + i, n - i);
    }
    return count;
}

template <class Set>
inline bool is_well_formed(const uint8_t* p, size_t n) {
    if constexpr (std::is_same_v<Set, Utf8>) return count_utf8(p, n).well_formed;
    for (size_t i = ascii_run(p, n); i < n; i += ascii_run(p + i, n - i)) {
        const int32_t length = Set::sequence(p + i, n - i);
        if (length <= 0) return false;
        i += static_cast<size_t>(length);
    }
    return true;
}

struct Passed {
    size_t bytes;
    size_t well_formed;  // as many of them, from the first on, are known to be; the others may be
};

template <class Set>
inline size_t pass_characters_by_step(const uint8_t* p, size_t len, size_t n) {
    size_t i = 0;
    while (n > 0 && i < len) {
        if (is_ascii(p[i])) {
            const size_t run = ascii_run(p + i, std::min(n, len - i));
            i += run;
            n -= run;
        } else {
            i += step<Set>(p + i, len - i);
            --n;
        }
    }
    return i;
}

#ifdef QZHOST_VECTOR_BYTES

// Where bit number n, from 0, of those that are set stands; there are more than n.
inline size_t place_of_set_bit(uint64_t bits, size_t n) {
    size_t place = 0;
    for (unsigned width = 32; width > 0; width /= 2) {
        const size_t below = static_cast<size_t>(std::popcount(bits & ((uint64_t{1} << width) - 1)));
        const bool above = n >= below;
        n -= above ? below : 0;
        bits >>= above ? width : 0;
        place += above ? width : 0;
    }
    return place;
}

// Passes well-formed text without looking at its characters one by one, as far as that goes.
inline Passed pass_utf8(const uint8_t* p, size_t len, size_t n) {
    if (SpreadBlocks::takes(len)) {
        const SpreadBlocks blocks(p, len);
        if (bits_of(blocks.all()) == 0) return {std::min(n, len), std::min(n, len)};
        if (len >= Utf8Blocks::kLeastSpread && Utf8Blocks::is_well_formed(p, blocks)) {
            const uint64_t starts = ~blocks.bits(Utf8Blocks::continuations) & ((uint64_t{1} << len) - 1);
            const size_t count = static_cast<size_t>(std::popcount(starts));
            const size_t passed = n >= count ? len : place_of_set_bit(starts, n);
            return {passed, passed};
        }
    }
    Utf8Blocks blocks;
    size_t i = 0;
    size_t left = n;
    while (i + 4 * kBlock <= len) {
        const size_t starting = 4 * kBlock - blocks.add_four(p + i);
        if (starting > left || !blocks.is_sound_so_far()) break;
        left -= starting;
        i += 4 * kBlock;
    }
    if (i > 0) {
        // The last character may reach over the edge of the last block.
        do {
            --i;
        } while (Utf8::is_continuation(p[i]));
        ++left;
    }
    return {i + pass_characters_by_step<Utf8>(p + i, len - i, left), i};
}

#endif

// Passes up to n characters of p[0..len).
template <class Set>
inline Passed pass_characters(const uint8_t* p, size_t len, size_t n) {
#ifdef QZHOST_MASKED_LOADS
    if (std::is_same_v<Set, Utf8> && has_masked_loads()) {
        if (const size_t told = pass_utf8_masked(p, len, n); told != kNotTold) return {told, told};
    }
#endif
#ifdef QZHOST_VECTOR_BYTES
    if constexpr (std::is_same_v<Set, Utf8>) return pass_utf8(p, len, n);
#endif
    return {pass_characters_by_step<Set>(p, len, n), 0};
}

// Where the character starts that byte index belongs to; known is a start at or below index.
template <class Set>
inline size_t start_of_character(const uint8_t* p, size_t len, size_t index, size_t known) {
    if constexpr (std::is_same_v<Set, Utf8>) {
        for (size_t back = 0; back < Utf8::kLongest && back <= index - known; ++back) {
            const uint8_t* lead = p + index - back;
            if (Utf8::is_continuation(*lead)) continue;
            const bool reaches = Utf8::sequence(lead, len - (index - back)) > static_cast<int32_t>(back);
            return reaches ? index - back : index;
        }
        return index;
    }
    size_t i = known;
    while (i < index) {
        if (is_ascii(p[i])) {
            i += ascii_run(p + i, index - i);
        } else {
            const size_t length = step<Set>(p + i, len - i);
            if (i + length > index) return i;
            i += length;
        }
    }
    return index;
}

// The bytes at the end that begin a character and do not complete it.
template <class Set>
inline size_t cut_off_bytes(const uint8_t* p, size_t n) {
    if constexpr (std::is_same_v<Set, Utf8>) {
        for (size_t back = 1; back < Utf8::kLongest && back <= n; ++back) {
            if (!Utf8::is_continuation(p[n - back])) return Utf8::sequence(p + n - back, back) == kCutOff ? back : 0;
        }
        return 0;
    }
    for (size_t i = ascii_run(p, n); i < n; i += ascii_run(p + i, n - i)) {
        const int32_t length = Set::sequence(p + i, n - i);
        if (length == kCutOff) return n - i;
        i += length > 0 ? static_cast<size_t>(length) : 1;
    }
    return 0;
}

}  // namespace qzhost
