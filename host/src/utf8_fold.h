// Case folding of UTF-8 in place.
//
// No byte of a longer character is ASCII, and a lead byte always begins a character, whatever stands in front of it: what a
// character becomes can be told where it stands, and malformed bytes around it change nothing. Most longer characters have no
// second case (Han, kana, hangul, most punctuation); their lead bytes are passed over.
#pragma once

#include <algorithm>

#include "host/src/ascii_fold.h"
#include "host/src/case_tables.h"
#include "host/src/charset.h"
#include "host/src/utf8_planes.h"

namespace qzhost {

// ---- One character ----------------------------------------------------------------------------------------------------------

// A lead byte says nothing of what comes next, so two and three bytes take the same steps.
inline void fold_two_or_three(const Utf8CaseTable& table, uint8_t* p, size_t left) {
    const bool three = p[0] >= 0xE0;
    const size_t length = three ? 3 : 2;
    if (left < length) return;
    const uint8_t second = p[1];
    const uint8_t last = p[length - 1];
    if (!Utf8::is_second(p[0], second) || !Utf8::is_continuation(last)) return;
    const size_t prefix = three ? size_t{p[0] & 0x0Fu} << 6 | (second & 0x3F) : p[0] & 0x1F;
    const Sequence sequence = p[0] | Sequence{second} << 8 | Sequence{last} << (8 * (length - 1));
    const Sequence target = sequence + table.change(prefix, last);
    p[0] = static_cast<uint8_t>(target);
    p[1] = static_cast<uint8_t>(target >> 8);
    p[length - 1] = static_cast<uint8_t>(target >> (8 * (length - 1)));
}

inline void fold_four(const Utf8CaseTable& table, uint8_t* p, size_t left) {
    if (Utf8::sequence(p, left) != 4) return;
    const size_t prefix = size_t{p[0] & 0x07u} << 12 | size_t{p[1] & 0x3Fu} << 6 | (p[2] & 0x3F);
    if (Utf8CaseTable::has(prefix)) store32(p, load32(p) + table.change(prefix, p[3]));
}

// p leads to a lead byte of which a character with a mapping may begin.
inline void fold_utf8_character(const Utf8CaseTable& table, uint8_t* p, size_t left) {
    p[0] < 0xF0 ? fold_two_or_three(table, p, left) : fold_four(table, p, left);
}

// ---- The longer characters of a text; ASCII stays ---------------------------------------------------------------------------

#ifdef QZHOST_VECTOR_BYTES

// A bit for each lead byte of which a character with a mapping may begin.
inline uint32_t leads_to_fold(const Utf8CaseTable& table, __m128i block) {
    const __m128i by_high_half = _mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 4, 8);
    const __m128i half = _mm_set1_epi8(0x0F);
    const __m128i sets = _mm_shuffle_epi8(load_block(table.leads_by_low_half().data()), _mm_and_si128(block, half));
    const __m128i bits = _mm_shuffle_epi8(by_high_half, _mm_and_si128(_mm_srli_epi16(block, 4), half));
    return bits_of(_mm_cmpgt_epi8(_mm_and_si128(sets, bits), _mm_setzero_si128()));
}

inline void fold_longer_characters(const Utf8CaseTable& table, uint8_t* p, size_t n) {
    const auto fold_leads = [&](__m128i block, size_t first, size_t skipped) {
        for (uint32_t leads = leads_to_fold(table, block) & ~0u << skipped; leads != 0; leads &= leads - 1) {
            const size_t at = first + static_cast<size_t>(std::countr_zero(leads));
            fold_utf8_character(table, p + at, n - at);
        }
    };
    if (n < kBlock) return fold_leads(load_below_16(p, n), 0, 0);
    size_t i = 0;
    for (; i + kBlock <= n; i += kBlock) fold_leads(load_block(p + i), i, 0);
    if (i < n) fold_leads(load_block(p + n - kBlock), n - kBlock, kBlock - (n - i));
}

#else

inline void fold_longer_characters(const Utf8CaseTable& table, uint8_t* p, size_t n) {
    for (size_t i = 0; i < n; ++i) {
        if (p[i] >= 0xC2) fold_utf8_character(table, p + i, n - i);
    }
}

#endif

// ---- All of a text, 64 bytes at a time --------------------------------------------------------------------------------------

#ifdef QZHOST_MASKED_LOADS

#define QZHOST_MASKED_FOLD [[gnu::target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512vbmi2,bmi,bmi2,popcnt")]]

[[gnu::visibility("hidden")]] inline const bool kHasMaskedFold = kHasMaskedLoads && __builtin_cpu_supports("avx512vbmi2") != 0;
inline bool has_masked_fold() { return kHasMaskedFold; }

// One half of the 32 characters of two bytes, count of which there are at least: what they become, in the same half of targets.
// The other masks are of all, since gcc 12 warns of what the intrinsics without one leave undefined.
template <int kHalf>
QZHOST_MASKED_FOLD inline __m512i fold_half(const Utf8CaseTable& table, __m512i characters, unsigned count, __m512i targets) {
    constexpr __mmask16 kAll = 0xFFFF;
    constexpr __mmask8 kAllWords = 0xFF;
    const __mmask16 wanted = static_cast<__mmask16>(_bzhi_u64(kAll, count));
    const __m256i half = _mm512_maskz_extracti64x4_epi64(kAllWords, characters, kHalf);
    const __m256i six_bits = _mm256_and_si256(half, _mm256_set1_epi16(0x3F1F));
    const __m256i numbers = _mm256_maddubs_epi16(six_bits, _mm256_set1_epi16(0x0140));  // 64 times the first, and the second
    const __m512i wide = _mm512_maskz_cvtepu16_epi32(kAll, numbers);
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wsign-conversion"  // of the mask, where this is a macro of gcc's
    const __m512i found =
        _mm512_mask_i32gather_epi32(_mm512_setzero_si512(), wanted, wide, table.two_bytes(), sizeof(uint16_t));
#pragma GCC diagnostic pop
    return _mm512_maskz_inserti64x4(kAllWords, targets, _mm512_maskz_cvtepi32_epi16(kAll, found), kHalf);
}

// A bit for each letter of ASCII that has another case.
template <Case to>
QZHOST_MASKED_FOLD inline uint64_t ascii_letters(__m512i bytes) {
    const __m512i from_first = _mm512_sub_epi8(bytes, _mm512_set1_epi8(kFirstLetter<to>));
    return _mm512_cmplt_epu8_mask(from_first, _mm512_set1_epi8(kLetters));
}

QZHOST_MASKED_FOLD inline __m512i with_other_case(__m512i bytes, uint64_t letters) {
    return _mm512_mask_blend_epi8(letters, bytes, _mm512_xor_si512(bytes, _mm512_set1_epi8(0x20)));
}

// Folds whole blocks at the start as long as they are ASCII, and answers their bytes.
template <Case to>
QZHOST_MASKED_FOLD inline size_t fold_ascii_blocks(uint8_t* p, size_t n) {
    size_t i = 0;
    for (; n - i >= kMaskedBlock; i += kMaskedBlock) {
        const __m512i bytes = _mm512_loadu_si512(p + i);
        if (_mm512_movepi8_mask(bytes) != 0) break;
        _mm512_storeu_si512(p + i, with_other_case(bytes, ascii_letters<to>(bytes)));
    }
    return i;
}

// Blocks overlap by three bytes, so that each character stands whole in the one in which it begins. A block is loaded before
// the one in front of it is stored, and only the bytes that were folded are stored: neither waits for the other.
template <Case to>
QZHOST_MASKED_FOLD inline void fold_utf8_masked(const Utf8CaseTable& table, uint8_t* p, size_t n) {
    constexpr size_t kWhole = kMaskedBlock - (Utf8::kLongest - 1);  // bytes that begin a whole character
    const __m512i sets_of_leads = _mm512_load_si512(table.sets_of_leads().data());
    const size_t ascii = fold_ascii_blocks<to>(p, n);
    __m512i next = load_masked(p + ascii, std::min(n - ascii, kMaskedBlock));
    for (size_t i = ascii;; i += kWhole) {
        const size_t left = n - i;
        const bool last = left <= kMaskedBlock;
        const __m512i bytes = next;
        if (!last) next = load_masked(p + i + kWhole, std::min(left - kWhole, kMaskedBlock));
        const uint64_t taken = low_bits(last ? left : kWhole);

        uint64_t folded = ascii_letters<to>(bytes) & taken;
        __m512i result = with_other_case(bytes, folded);

        const uint64_t high = _mm512_movepi8_mask(bytes);
        const uint64_t leads = _mm512_cmpge_epu8_mask(bytes, _mm512_set1_epi8(static_cast<char>(0xC0)));
        const __m512i sets = _mm512_maskz_permutexvar_epi8(leads & taken, bytes, sets_of_leads);
        const uint64_t continuations = high & ~leads;
        const uint64_t two = _mm512_movepi8_mask(sets) & continuations >> 1;
        if (two != 0) {
            const uint64_t both = two | two << 1;
            const __m512i characters = _mm512_maskz_compress_epi8(both, bytes);
            const unsigned count = static_cast<unsigned>(std::popcount(two));
            __m512i targets = fold_half<0>(table, characters, count, _mm512_setzero_si512());
            if (count > 16) targets = fold_half<1>(table, characters, count - 16, targets);
            result = _mm512_mask_expand_epi8(result, both, targets);
            folded |= both;
        }
        _mm512_mask_storeu_epi8(p + i, folded, result);

        uint64_t longer = _mm512_test_epi8_mask(sets, _mm512_set1_epi8(Utf8CaseTable::kLonger));
        if (longer != 0) {
            // Each byte is looked up as a second byte, and the sets moved to the byte in front.
            const __m512i as_second =
                _mm512_maskz_permutexvar_epi8(continuations, bytes, _mm512_load_si512(table.sets_of_seconds().data()));
            longer &= _mm512_test_epi8_mask(_mm512_maskz_compress_epi8(~uint64_t{1}, as_second), sets);
            for (; longer != 0; longer &= longer - 1) {
                const size_t at = i + static_cast<size_t>(std::countr_zero(longer));
                fold_utf8_character(table, p + at, n - at);
            }
        }
        if (last) return;
    }
}

#endif

// ---- Any text ---------------------------------------------------------------------------------------------------------------

template <Case to>
inline void fold_utf8_by_blocks(const Utf8CaseTable& table, uint8_t* p, size_t n) {
    if (!fold_ascii<to>(p, n)) fold_longer_characters(table, p, n);
}

template <Case to>
inline void fold_utf8(const Utf8CaseTable& table, uint8_t* p, size_t n) {
#ifdef QZHOST_MASKED_LOADS
    if (has_masked_fold()) return fold_utf8_masked<to>(table, p, n);
#endif
    fold_utf8_by_blocks<to>(table, p, n);
}

}  // namespace qzhost
