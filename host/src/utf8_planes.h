// Well-formedness and count of UTF-8 by bit planes, where the machine has AVX-512: one word holds bit 7 of 64 bytes, one bit 6,
// one bit 5. Made of blocks of sixteen bytes the planes cost more than the look-ups of Utf8Blocks.
//
// The lead bytes, moved up by one place, and those of three bytes, moved up by two, tell where continuations are due. A text is
// well-formed when they stand there and nowhere else. Four lead bytes tell more than that, and some are never right: C0, C1,
// E0, ED and all from F0 on. Texts with one of those are rare, and are left to Utf8Blocks.
#pragma once

#include "host/src/byte_blocks.h"

#if defined(QZHOST_VECTOR_BYTES) && defined(__x86_64__) && defined(__GNUC__)
#define QZHOST_MASKED_LOADS 1
#include <immintrin.h>
#define QZHOST_MASKED [[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi,bmi,bmi2,popcnt")]]

namespace qzhost {

// A bit for each byte of a text. A lead byte near the end calls for bits behind it, for which there must be room.
struct Utf8Planes {
    static constexpr size_t kMost = 62;

    uint64_t high;    // bit 7: not ASCII
    uint64_t second;  // bit 6: with bit 7 a lead byte
    uint64_t third;   // bit 5: with those the lead byte of three bytes or more
    bool rare;        // whether one of the lead bytes above may be among them

    uint64_t continuations() const { return high & ~second; }
    uint64_t due() const {
        const uint64_t leads = high & second;
        return leads << 1 | (leads & third) << 2;
    }
    // When not rare.
    bool is_well_formed() const { return continuations() == due(); }
};

inline bool has_masked_loads() {
    return __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512vl") != 0 &&
           __builtin_cpu_supports("avx512vbmi") != 0 && __builtin_cpu_supports("bmi2") != 0;
}

inline constexpr size_t kMaskedBlock = 64;
inline constexpr size_t kNotTold = SIZE_MAX;

// The planes of 64 bytes or fewer; room behind them is not asked for.
QZHOST_MASKED inline Utf8Planes planes_of(__m512i bytes) {
    constexpr char r = static_cast<char>(0x80);
    // By the lower six bits of a lead byte.
    const __m512i rare_by_lead = _mm512_set_epi8(r, r, r, r, r, r, r, r, r, r, r, r, r, r, r, r,   // F0 to FF
                                                 0, 0, r, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, r,   // ED, E0
                                                 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,   // D0 to DF
                                                 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, r, r);  // C1, C0
    const uint64_t high = _mm512_movepi8_mask(bytes);
    const uint64_t second = _mm512_test_epi8_mask(bytes, _mm512_set1_epi8(0x40));
    const uint64_t third = _mm512_test_epi8_mask(bytes, _mm512_set1_epi8(0x20));
    const uint64_t rare = _mm512_movepi8_mask(_mm512_maskz_permutexvar_epi8(high & second, bytes, rare_by_lead));
    return {high, second, third, rare != 0};
}

// Bytes at the start that are ASCII, in steps of four blocks.
QZHOST_MASKED inline size_t ascii_blocks(const uint8_t* p, size_t n) {
    size_t i = 0;
    for (; i + 4 * kMaskedBlock <= n; i += 4 * kMaskedBlock) {
        const __m512i ab = _mm512_or_si512(_mm512_loadu_si512(p + i), _mm512_loadu_si512(p + i + kMaskedBlock));
        const __m512i cd =
            _mm512_or_si512(_mm512_loadu_si512(p + i + 2 * kMaskedBlock), _mm512_loadu_si512(p + i + 3 * kMaskedBlock));
        if (_mm512_movepi8_mask(_mm512_or_si512(ab, cd)) != 0) break;
    }
    return i;
}

// Number of the characters of n bytes, or kNotTold where they are malformed or one of the rare lead bytes is among them. Bytes
// are loaded under a mask, in one step for every length, so that up to 62 take no branch.
QZHOST_MASKED inline size_t count_utf8_masked(const uint8_t* p, size_t n) {
    if (n <= Utf8Planes::kMost) [[likely]] {
        const Utf8Planes planes = planes_of(_mm512_maskz_loadu_epi8(_bzhi_u64(~uint64_t{0}, static_cast<unsigned>(n)), p));
        if (planes.rare || !planes.is_well_formed()) [[unlikely]]
            return kNotTold;
        return n - static_cast<size_t>(std::popcount(planes.continuations()));
    }
    uint64_t due = 0;  // what the block before calls for in this one
    size_t continuations = 0;
    for (size_t i = ascii_blocks(p, n);; i += kMaskedBlock) {
        const size_t left = n - i;
        const bool last = left < kMaskedBlock;
        const __m512i bytes = last ? _mm512_maskz_loadu_epi8(_bzhi_u64(~uint64_t{0}, static_cast<unsigned>(left)), p + i)
                                   : _mm512_loadu_si512(p + i);
        const Utf8Planes planes = planes_of(bytes);
        const uint64_t leads = planes.high & planes.second;
        if (planes.rare || planes.continuations() != (planes.due() | due)) [[unlikely]]
            return kNotTold;
        continuations += static_cast<size_t>(std::popcount(planes.continuations()));
        due = leads >> 63 | (leads & planes.third) >> 62;
        if (last) return n - continuations;
    }
}

}  // namespace qzhost

#endif
