// Text sixteen bytes at a time: runs of ASCII, and loads of what is left at the end of a range, never outside it.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSSE3__)
#define QZHOST_VECTOR_BYTES 1
#include <tmmintrin.h>
#endif

namespace qzhost {

inline constexpr size_t kBlock = 16;
inline constexpr uint64_t kHighBits = 0x8080808080808080u;

inline uint64_t load64(const void* p) {
    uint64_t word;
    std::memcpy(&word, p, sizeof word);
    return word;
}
inline uint32_t load32(const void* p) {
    uint32_t word;
    std::memcpy(&word, p, sizeof word);
    return word;
}
inline void store64(void* p, uint64_t word) { std::memcpy(p, &word, sizeof word); }
inline void store32(void* p, uint32_t word) { std::memcpy(p, &word, sizeof word); }

// The n bytes at p, n below 8, as a little-endian number.
inline uint64_t load_below_8(const uint8_t* p, size_t n) {
    if (n >= 4) return load32(p) | uint64_t{load32(p + n - 4)} << (8 * (n - 4));
    if (n == 0) return 0;
    return p[0] | uint64_t{p[n / 2]} << (8 * (n / 2)) | uint64_t{p[n - 1]} << (8 * (n - 1));
}

inline bool is_ascii(uint8_t byte) { return byte < 0x80; }

#ifdef QZHOST_VECTOR_BYTES

inline __m128i load_block(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
inline void store_block(void* p, __m128i block) { _mm_storeu_si128(static_cast<__m128i*>(p), block); }

// A bit for each byte of a comparison's result, or for each byte that is not ASCII.
inline uint32_t bits_of(__m128i block) { return static_cast<uint32_t>(_mm_movemask_epi8(block)); }

// The n bytes at p, n below 16, with zero bytes behind them.
inline __m128i load_below_16(const uint8_t* p, size_t n) {
    if (n < 8) return _mm_cvtsi64_si128(static_cast<int64_t>(load_below_8(p, n)));
    // Two shifts, since one may be by 64 bits.
    const size_t half = 4 * (kBlock - n);
    const uint64_t high = load64(p + n - 8) >> half >> half;
    return _mm_set_epi64x(static_cast<int64_t>(high), static_cast<int64_t>(load64(p)));
}

// A short text as blocks that overlap: the same steps for every length from 16 to 48, so that no branch depends on it.
struct SpreadBlocks {
    static constexpr size_t kCount = 3;
    static constexpr size_t kMost = kCount * kBlock;

    SpreadBlocks(const uint8_t* p, size_t n) {
        const size_t last = n - kBlock;
        at[0] = 0;
        at[1] = last < kBlock ? last : kBlock;
        at[2] = last;
        for (size_t i = 0; i < kCount; ++i) block[i] = load_block(p + at[i]);
    }

    static bool takes(size_t n) { return n - kBlock <= kMost - kBlock; }

    __m128i all() const { return _mm_or_si128(_mm_or_si128(block[0], block[1]), block[2]); }

    // A bit for each byte of the text, from a vector's answer for each block.
    template <class Answer>
    uint64_t bits(Answer&& answer) const {
        uint64_t result = 0;
        for (size_t i = 0; i < kCount; ++i) result |= uint64_t{bits_of(answer(block[i]))} << at[i];
        return result;
    }

    __m128i block[kCount];
    size_t at[kCount];
};

#endif

// How many bytes at the start of p[0..n) are ASCII.
inline size_t ascii_run(const uint8_t* p, size_t n) {
    size_t i = 0;
#ifdef QZHOST_VECTOR_BYTES
    for (; i + kBlock <= n; i += kBlock) {
        if (const uint32_t others = bits_of(load_block(p + i))) return i + static_cast<size_t>(std::countr_zero(others));
    }
#endif
    for (; i + 8 <= n; i += 8) {
        if (const uint64_t others = load64(p + i) & kHighBits) return i + static_cast<size_t>(std::countr_zero(others)) / 8;
    }
    const uint64_t others = load_below_8(p + i, n - i) & kHighBits;
    return others == 0 ? n : i + static_cast<size_t>(std::countr_zero(others)) / 8;
}

}  // namespace qzhost
