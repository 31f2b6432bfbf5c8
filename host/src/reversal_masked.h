// Reversal of UTF-8 in vectors of 64 bytes, where the machine has AVX-512, without a step for each character.
//
// To turn the bytes of each character around and then those of the text is one permutation of a vector. Which byte comes to a place
// is told by its character's lead byte, and lead bytes by their bit planes: a bit for each byte.
#pragma once

#include "host/src/reversal_blocks.h"

#ifdef QZHOST_MASKED_LOADS

namespace qzhost {

// The lead bytes of characters of two bytes or more, of three or more and of four, among 64 bytes.
struct Utf8Leads {
    uint64_t two, three, four;
};

// Not under a mask, gcc 12 takes what it leaves undefined for a mistake.
QZHOST_MASKED inline __m512i permuted(__m512i places, __m512i bytes) {
    return _mm512_maskz_permutexvar_epi8(~uint64_t{0}, places, bytes);
}

QZHOST_MASKED inline __m512i ascending_places() {
    return _mm512_set_epi8(63, 62, 61, 60, 59, 58, 57, 56, 55, 54, 53, 52, 51, 50, 49, 48,  //
                           47, 46, 45, 44, 43, 42, 41, 40, 39, 38, 37, 36, 35, 34, 33, 32,  //
                           31, 30, 29, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19, 18, 17, 16,  //
                           15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
}

// The bytes from place last down to 0, and others behind them.
QZHOST_MASKED inline __m512i backwards_from(__m512i bytes, size_t last) {
    const __m512i places = _mm512_sub_epi8(_mm512_set1_epi8(static_cast<char>(last)), ascending_places());
    return permuted(places, bytes);
}

// Each character of well-formed text with its bytes turned around. At the vector's ends characters may be cut: their bytes are
// any then.
QZHOST_MASKED inline __m512i with_characters_turned(__m512i bytes, const Utf8Leads& leads) {
    const uint64_t two = leads.two & ~leads.three, three = leads.three & ~leads.four, four = leads.four;
    __m512i places = ascending_places();
    places = _mm512_mask_add_epi8(places, two | four | four << 1, places, _mm512_set1_epi8(1));
    places = _mm512_mask_add_epi8(places, three | four, places, _mm512_set1_epi8(2));
    places = _mm512_mask_sub_epi8(places, two << 1 | four << 2 | four << 3, places, _mm512_set1_epi8(1));
    places = _mm512_mask_sub_epi8(places, three << 2 | four << 3, places, _mm512_set1_epi8(2));
    return permuted(places, bytes);
}

QZHOST_MASKED inline Utf8Leads leads_of(__m512i bytes, const Utf8Planes& planes) {
    const uint64_t three = planes.leads_of_three;
    return {planes.leads, three, three & _mm512_test_epi8_mask(bytes, _mm512_set1_epi8(0x10))};
}

// What lies before and behind a vector's bytes that are to be turned: enough for each of their characters to be whole.
struct WholeBytes {
    static constexpr size_t kMargin = 0;
    QZHOST_MASKED static __m512i turned(__m512i bytes) { return bytes; }
};
struct WholeCharacters {
    static constexpr size_t kMargin = 3;
    QZHOST_MASKED static __m512i turned(__m512i bytes) {
        return with_characters_turned(bytes, leads_of(bytes, planes_of(bytes)));
    }
};

// 64 bytes or more, from both ends towards the middle, in place. What comes next at either end is loaded before the bytes in
// front of it, which it needs for its margin, are written over.
template <class Whole>
QZHOST_MASKED inline void reverse_from_both_ends(uint8_t* p, size_t n) {
    constexpr size_t kMargin = Whole::kMargin;
    size_t margin = 0;  // there is none outside the text, nor is any needed
    __m512i front = _mm512_loadu_si512(p);
    __m512i back = _mm512_loadu_si512(p + n - kMaskedBlock);
    for (size_t done = 0;;) {
        const size_t left = n - 2 * done;
        const size_t whole = kMaskedBlock - kMargin - margin;
        const bool last = left <= 2 * whole;
        const size_t from_front = last ? left - left / 2 : whole;
        const size_t from_back = last ? left / 2 : whole;
        const __m512i reversed_front = backwards_from(Whole::turned(front), margin + from_front - 1);
        const __m512i reversed_back = backwards_from(Whole::turned(back), kMaskedBlock - margin - 1);
        uint8_t* const begin = p + done;
        uint8_t* const end = p + n - done;
        if (!last) {
            front = _mm512_loadu_si512(begin + whole - kMargin);
            back = _mm512_loadu_si512(end - whole + kMargin - kMaskedBlock);
        }
        _mm512_mask_storeu_epi8(begin, low_bits(from_back), reversed_back);
        _mm512_mask_storeu_epi8(end - from_front, low_bits(from_front), reversed_front);
        if (last) return;
        done += whole;
        margin = kMargin;
    }
}

// Up to 63 bytes. False, and the text as it was, where it is malformed.
QZHOST_MASKED inline bool reverse_short_utf8_masked(uint8_t* p, size_t n) {
    __m512i bytes = load_masked(p, n);
    if (_mm512_movepi8_mask(bytes) != 0) {
        const Utf8Planes planes = planes_of(bytes);
        if (planes.doubts() != 0 && faults_of_short_utf8(p, n) != 0) [[unlikely]]
            return false;
        bytes = with_characters_turned(bytes, leads_of(bytes, planes));
    }
    _mm512_mask_storeu_epi8(p, low_bits(n), backwards_from(bytes, n - 1));
    return true;
}

[[gnu::noinline]] QZHOST_MASKED inline bool reverse_long_utf8_masked(uint8_t* p, size_t n) {
    size_t characters = count_utf8_masked(p, n);
    if (characters == kNotTold) {
        const Utf8Count counted = count_utf8(p, n);
        if (!counted.well_formed) return false;
        characters = counted.characters;
    }
    characters == n ? reverse_from_both_ends<WholeBytes>(p, n) : reverse_from_both_ends<WholeCharacters>(p, n);
    return true;
}

// Any text. False, and the text as it was, where it is malformed.
QZHOST_MASKED inline bool reverse_utf8_masked(uint8_t* p, size_t n) {
    return n <= Utf8Planes::kMost ? reverse_short_utf8_masked(p, n) : reverse_long_utf8_masked(p, n);
}

}  // namespace qzhost

#endif
