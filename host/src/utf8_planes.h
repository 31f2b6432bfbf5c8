// Well-formedness and count of short UTF-8 by bit planes: one word holds bit 7 of all bytes of a text, one bit 6, one bit 5.
//
// The lead bytes, moved up by one place, and those of three bytes, moved up by two, tell where continuations are due. A text is
// well-formed when they stand there and nowhere else. Four lead bytes tell more than that, and some are never right: C0, C1, E0, ED and
// all from F0 on. Texts with one of those are rare, and are left to Utf8Blocks.
#pragma once

#include "host/src/byte_blocks.h"

#ifdef QZHOST_VECTOR_BYTES

#if defined(__x86_64__) && defined(__GNUC__)
#define QZHOST_MASKED_LOADS 1
#include <immintrin.h>
#define QZHOST_MASKED [[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi,bmi,bmi2,popcnt")]]
#endif

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

// Nonzero bytes where the block has one of the rare lead bytes.
inline __m128i rare_leads(__m128i block) {
    enum : char { kC = 1, kE = 2, kF = 4 };
    const __m128i by_high = _mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, kC, 0, kE, kF);
    const __m128i by_low = _mm_setr_epi8(kC | kE | kF, kC | kF, kF, kF, kF, kF, kF, kF, kF, kF, kF, kF, kF, kE | kF, kF, kF);
    const __m128i half = _mm_set1_epi8(0x0F);
    const __m128i high = _mm_shuffle_epi8(by_high, _mm_and_si128(_mm_srli_epi16(block, 4), half));
    return _mm_and_si128(high, _mm_shuffle_epi8(by_low, _mm_and_si128(block, half)));
}

inline bool is_zero(__m128i block) { return bits_of(_mm_cmpeq_epi8(block, _mm_setzero_si128())) == 0xFFFF; }

inline Utf8Planes planes_of(__m128i block) {
    return {bits_of(block), bits_of(_mm_slli_epi16(block, 1)), bits_of(_mm_slli_epi16(block, 2)), !is_zero(rare_leads(block))};
}

inline Utf8Planes planes_of(const SpreadBlocks& blocks) {
    __m128i rare = _mm_setzero_si128();
    for (size_t i = 0; i < SpreadBlocks::kCount; ++i) rare = _mm_or_si128(rare, rare_leads(blocks.block[i]));
    return {blocks.bits([](__m128i block) { return block; }),
            blocks.bits([](__m128i block) { return _mm_slli_epi16(block, 1); }),
            blocks.bits([](__m128i block) { return _mm_slli_epi16(block, 2); }), !is_zero(rare)};
}

#ifdef QZHOST_MASKED_LOADS

inline bool has_masked_loads() {
    return __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512vl") != 0 &&
           __builtin_cpu_supports("avx512vbmi") != 0;
}

// Number of the characters of n bytes, or kNotTold where they are malformed or one of the rare lead bytes is among them. The bytes are
// loaded under a mask, in one step for every length, so that up to 62 take no branch.
inline constexpr size_t kNotTold = SIZE_MAX;
inline constexpr size_t kMaskedBlock = 64;

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

#endif

}  // namespace qzhost

#endif
