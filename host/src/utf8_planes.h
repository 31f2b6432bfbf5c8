// Well-formedness, count and places of UTF-8 by bit planes, where the machine has AVX-512: one word tells of 64 bytes which are
// not ASCII, one which are lead bytes, one which lead three. Made of blocks of sixteen bytes the planes cost more than the
// look-ups of Utf8Blocks.
//
// The lead bytes, moved up by one place, and those of three bytes, moved up by two, tell where continuations are due. A text is
// well-formed when they stand there and nowhere else. Four lead bytes tell more than that, and some are never right: C0, C1,
// E0, ED and all from F0 on. They are rare in most languages: they are looked at where there are any, and texts longer than a
// word of bits that have one are left to Utf8Blocks.
#pragma once

#include <algorithm>
#include <cstdlib>

#include "host/src/byte_blocks.h"

#if defined(QZHOST_VECTOR_BYTES) && defined(__x86_64__) && defined(__GNUC__)
#define QZHOST_MASKED_LOADS 1
#include <immintrin.h>
#define QZHOST_MASKED [[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi,bmi,bmi2,popcnt")]]

namespace qzhost {

// The variable lets a test take the paths of other machines.
inline bool choose_masked_loads() {
    const char* const wanted = std::getenv("QZHOST_MASKED_LOADS");
    if (wanted != nullptr && wanted[0] == '0') return false;
    __builtin_cpu_init();
    return __builtin_cpu_supports("avx512bw") != 0 && __builtin_cpu_supports("avx512vl") != 0 &&
           __builtin_cpu_supports("avx512vbmi") != 0 && __builtin_cpu_supports("bmi2") != 0;
}

// Chosen once, while the library is loaded. Whoever calls before that takes the other paths.
[[gnu::visibility("hidden")]] inline const bool kHasMaskedLoads = choose_masked_loads();
inline bool has_masked_loads() { return kHasMaskedLoads; }

inline constexpr size_t kMaskedBlock = 64;
inline constexpr size_t kNotTold = SIZE_MAX;

// A bit for each byte of a text.
struct Utf8Planes {
    // A character that the end cuts off calls for the byte behind it, for which there must be a bit.
    static constexpr size_t kMost = 63;

    uint64_t high;            // not ASCII
    uint64_t leads;           // from C0 on
    uint64_t leads_of_three;  // from E0 on
    uint64_t rare;  // lead bytes that tell more than how many continuations follow; those of four bytes are among them

    uint64_t continuations() const { return high & ~leads; }
    // But for the third byte behind a lead byte of four.
    uint64_t due() const { return leads << 1 | leads_of_three << 2; }

    // A bit for each character that is malformed, cut off or rare: inside it or at the byte behind. So all in front of a byte
    // that is no continuation, and of the end, are well-formed when no bit is set up to that place, itself included.
    uint64_t doubts() const { return (continuations() ^ due()) | rare << 1; }
};

// The lowest n bits, n up to 64.
QZHOST_MASKED inline uint64_t low_bits(size_t n) { return _bzhi_u64(~uint64_t{0}, static_cast<uint32_t>(n)); }

// The first n bytes, up to 64, and zero bytes behind them.
QZHOST_MASKED inline __m512i load_masked(const uint8_t* p, size_t n) { return _mm512_maskz_loadu_epi8(low_bits(n), p); }

QZHOST_MASKED inline Utf8Planes planes_of(__m512i bytes) {
    constexpr char r = static_cast<char>(0x80);
    // By the lower six bits of a lead byte.
    const __m512i rare_by_lead = _mm512_set_epi8(r, r, r, r, r, r, r, r, r, r, r, r, r, r, r, r,   // F0 to FF
                                                 0, 0, r, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, r,   // ED, E0
                                                 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,   // D0 to DF
                                                 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, r, r);  // C1, C0
    const uint64_t leads = _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8(static_cast<char>(0xC0)));
    // A mask of all, since gcc 12 warns of what the intrinsic without one leaves undefined.
    const __m512i by_lead = _mm512_maskz_permutexvar_epi8(~uint64_t{0}, bytes, rare_by_lead);
    const uint64_t rare = _mm512_movepi8_mask(by_lead) & leads;
    return {_mm512_movepi8_mask(bytes), leads, _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8(static_cast<char>(0xE0))), rare};
}

// ---- Up to 63 bytes: the same steps for every length ------------------------------------------------------------------------

// Number of the characters of n bytes, or kNotTold: of more than 63 bytes, and where there is a doubt.
QZHOST_MASKED inline size_t count_short_utf8(const uint8_t* p, size_t n) {
    if (n > Utf8Planes::kMost) [[unlikely]]
        return kNotTold;
    const Utf8Planes planes = planes_of(load_masked(p, n));
    if (planes.doubts() != 0) [[unlikely]]
        return kNotTold;
    return n - static_cast<size_t>(std::popcount(planes.continuations()));
}

// The place of bit number n of those that are set; none when there are fewer.
QZHOST_MASKED inline uint64_t nth_bit(uint64_t bits, size_t n) { return _pdep_u64(uint64_t{1} << n, bits); }

// Whether no bit is set up to the place of another, itself included; with no other bit at all.
QZHOST_MASKED inline bool is_free_up_to(uint64_t bit, uint64_t bits) { return (bits & _blsmsk_u64(bit)) == 0; }

// The bytes of the first n characters, or of all; kNotTold where one of the numbers is above 63, and where there is a doubt
// about one of them.
QZHOST_MASKED inline size_t pass_short_utf8(const uint8_t* p, size_t len, size_t n) {
    if ((len | n) > Utf8Planes::kMost) [[unlikely]]
        return kNotTold;
    const Utf8Planes planes = planes_of(load_masked(p, len));
    // Behind the text there seem to be characters of one byte.
    const uint64_t start = nth_bit(~planes.continuations(), n);
    if (!is_free_up_to(start, planes.doubts())) [[unlikely]]
        return kNotTold;
    return std::min<size_t>(_tzcnt_u64(start), len);
}

// The first start of a character at or behind byte index, which is below len; kNotTold of more than 63 bytes, and where there
// is a doubt about a character in front of it.
QZHOST_MASKED inline size_t next_start_of_short_utf8(const uint8_t* p, size_t len, size_t index) {
    if (len > Utf8Planes::kMost) [[unlikely]]
        return kNotTold;
    const Utf8Planes planes = planes_of(load_masked(p, len));
    const uint64_t start = _blsi_u64(~planes.continuations() & ~low_bits(index));
    if (!is_free_up_to(start, planes.doubts())) [[unlikely]]
        return kNotTold;
    return std::min<size_t>(_tzcnt_u64(start), len);
}

QZHOST_MASKED inline uint64_t places_of(__m512i bytes, uint8_t byte) {
    return _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8(static_cast<char>(byte)));
}

// The doubts that are left when the rare characters of a text have been looked at: the faults.
QZHOST_MASKED inline uint64_t faults_of_short_utf8(const uint8_t* p, size_t n) {
    const __m512i bytes = load_masked(p, n);
    const Utf8Planes planes = planes_of(bytes);
    const uint64_t third = _mm512_test_epi8_mask(bytes, _mm512_set1_epi8(0x20));
    const uint64_t fourth = _mm512_test_epi8_mask(bytes, _mm512_set1_epi8(0x10));
    const uint64_t misplaced = planes.continuations() ^ (planes.due() | (planes.leads_of_three & fourth) << 3);
    // Overlong forms, surrogates and numbers above U+10FFFF.
    const uint64_t wrong_second = (places_of(bytes, 0xE0) << 1 & ~third) | (places_of(bytes, 0xED) << 1 & third) |
                                  (places_of(bytes, 0xF0) << 1 & ~(third | fourth)) |
                                  (places_of(bytes, 0xF4) << 1 & (third | fourth));
    const uint64_t never = places_of(bytes, 0xC0) | places_of(bytes, 0xC1) |
                           _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8(static_cast<char>(0xF5)));
    return misplaced | wrong_second | never << 1;
}

// ---- Any length -------------------------------------------------------------------------------------------------------------

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

QZHOST_MASKED inline bool is_ascii_masked(const uint8_t* p, size_t n) {
    for (size_t i = ascii_blocks(p, n); i < n; i += kMaskedBlock) {
        if (_mm512_movepi8_mask(load_masked(p + i, std::min(n - i, kMaskedBlock))) != 0) return false;
    }
    return true;
}

// A text as one block after the other, each with what the one in front of it calls for.
class Utf8PlanesInTurn {
  public:
    QZHOST_MASKED void take(__m512i bytes) {
        const Utf8Planes planes = planes_of(bytes);
        continuations_ = planes.continuations();
        doubts_ = (continuations_ ^ (planes.due() | due_)) | planes.rare << 1 | rare_;
        due_ = planes.leads >> 63 | planes.leads_of_three >> 62;
        rare_ = planes.rare >> 63;
    }
    uint64_t continuations() const { return continuations_; }
    uint64_t doubts() const { return doubts_; }

  private:
    uint64_t continuations_ = 0;
    uint64_t doubts_ = 0;
    uint64_t due_ = 0;
    uint64_t rare_ = 0;
};

// Number of the characters of n bytes, or kNotTold: where they are malformed, and where there are rare ones in more than 63
// bytes. What count_short_utf8 tells need not be asked again.
QZHOST_MASKED inline size_t count_doubtful_utf8(const uint8_t* p, size_t n) {
    if (n <= Utf8Planes::kMost) {
        const uint64_t continuations = planes_of(load_masked(p, n)).continuations();
        return faults_of_short_utf8(p, n) == 0 ? n - static_cast<size_t>(std::popcount(continuations)) : kNotTold;
    }
    Utf8PlanesInTurn blocks;
    size_t continuations = 0;
    size_t i = ascii_blocks(p, n);
    for (; n - i >= kMaskedBlock; i += kMaskedBlock) {
        blocks.take(_mm512_loadu_si512(p + i));
        if (blocks.doubts() != 0) [[unlikely]]
            return kNotTold;
        continuations += static_cast<size_t>(std::popcount(blocks.continuations()));
    }
    blocks.take(load_masked(p + i, n - i));
    continuations += static_cast<size_t>(std::popcount(blocks.continuations()));
    return blocks.doubts() == 0 ? n - continuations : kNotTold;
}

QZHOST_MASKED inline size_t count_utf8_masked(const uint8_t* p, size_t n) {
    const size_t told = count_short_utf8(p, n);
    return told != kNotTold ? told : count_doubtful_utf8(p, n);
}

// The bytes of the first n characters, or of all; kNotTold as above, by the characters passed alone. What pass_short_utf8 tells
// need not be asked again.
QZHOST_MASKED inline size_t pass_doubtful_utf8(const uint8_t* p, size_t len, size_t n) {
    if (len <= Utf8Planes::kMost) {
        const uint64_t starts = ~planes_of(load_masked(p, len)).continuations();
        const uint64_t start = nth_bit(starts, std::min(n, len));
        return is_free_up_to(start, faults_of_short_utf8(p, len)) ? std::min<size_t>(_tzcnt_u64(start), len) : kNotTold;
    }
    Utf8PlanesInTurn blocks;
    size_t i = ascii_blocks(p, std::min(len, n));
    n -= i;
    for (; len - i >= kMaskedBlock; i += kMaskedBlock) {
        blocks.take(_mm512_loadu_si512(p + i));
        const size_t count = kMaskedBlock - static_cast<size_t>(std::popcount(blocks.continuations()));
        if (n < count) {
            const uint64_t start = nth_bit(~blocks.continuations(), n);
            return is_free_up_to(start, blocks.doubts()) ? i + _tzcnt_u64(start) : kNotTold;
        }
        if (blocks.doubts() != 0) [[unlikely]]
            return kNotTold;
        n -= count;
    }
    blocks.take(load_masked(p + i, len - i));
    const uint64_t start = nth_bit(~blocks.continuations(), std::min(n, len - i));
    return is_free_up_to(start, blocks.doubts()) ? i + std::min<size_t>(_tzcnt_u64(start), len - i) : kNotTold;
}

QZHOST_MASKED inline size_t pass_utf8_masked(const uint8_t* p, size_t len, size_t n) {
    const size_t told = pass_short_utf8(p, len, n);
    return told != kNotTold ? told : pass_doubtful_utf8(p, len, n);
}

// Where each character starts, counted from 1, of a text that is counted; the array has room for len entries.
QZHOST_MASKED inline void fill_starts_masked(const uint8_t* p, size_t len, int32_t* positions, uint32_t& multibyte) {
    constexpr size_t kEntries = sizeof(__m512i) / sizeof(int32_t);
    const __m512i step = _mm512_set1_epi32(kEntries);
    __m512i numbers = _mm512_setr_epi32(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
    multibyte = 0;
    for (size_t i = 0; i < len; i += kMaskedBlock) {
        const size_t size = std::min(len - i, kMaskedBlock);
        const Utf8Planes planes = planes_of(load_masked(p + i, size));
        multibyte += static_cast<uint32_t>(std::popcount(planes.leads));
        uint64_t starts = ~planes.continuations() & low_bits(size);
        for (; starts != 0; starts >>= kEntries) {
            const auto some = static_cast<__mmask16>(starts);
            const auto count = static_cast<uint32_t>(std::popcount(some));
            _mm512_mask_storeu_epi32(positions, static_cast<__mmask16>(low_bits(count)),
                                     _mm512_maskz_compress_epi32(some, numbers));
            positions += count;
            numbers = _mm512_add_epi32(numbers, step);
        }
    }
}

}  // namespace qzhost

#endif
