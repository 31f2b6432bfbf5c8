// Well-formedness of UTF-8 by blocks of sixteen bytes, and how many continuation bytes they hold.
//
// A pair of neighbouring bytes is looked up three times, by the high and the low half of the first and by the high half of the
// second. Each look-up answers the set of faults that its half allows; a fault that all three allow is one. Faults that span
// more than two bytes are found by counting which third and fourth bytes must be continuations.
#pragma once

#include "host/src/byte_blocks.h"

#ifdef QZHOST_VECTOR_BYTES

namespace qzhost {

class Utf8Blocks {
  public:
    // Takes the next sixteen bytes.
    void add(__m128i block) {
        if (bits_of(block) == 0) {
            // ASCII: the one possible fault is a sequence that the block before it left open.
            fault_ = _mm_or_si128(fault_, open_);
            open_ = _mm_setzero_si128();
        } else {
            check(block);
        }
        previous_ = block;
    }

    // Takes the next four times sixteen bytes and answers how many of them are continuations.
    size_t add_four(const uint8_t* p) {
        const __m128i a = load_block(p), b = load_block(p + kBlock), c = load_block(p + 2 * kBlock),
                      d = load_block(p + 3 * kBlock);
        if (bits_of(_mm_or_si128(_mm_or_si128(a, b), _mm_or_si128(c, d))) == 0) {
            fault_ = _mm_or_si128(fault_, open_);
            open_ = _mm_setzero_si128();
            previous_ = d;
            return 0;
        }
        const __m128i faults_ab = _mm_or_si128(faults_behind(previous_, a), faults_behind(a, b));
        const __m128i faults_cd = _mm_or_si128(faults_behind(b, c), faults_behind(c, d));
        fault_ = _mm_or_si128(fault_, _mm_or_si128(faults_ab, faults_cd));
        open_ = left_open(d);
        previous_ = d;
        // Each comparison answers -1 where it holds.
        const __m128i counts =
            _mm_add_epi8(_mm_add_epi8(continuations(a), continuations(b)), _mm_add_epi8(continuations(c), continuations(d)));
        const __m128i sums = _mm_sad_epu8(_mm_sub_epi8(_mm_setzero_si128(), counts), _mm_setzero_si128());
        return static_cast<size_t>(_mm_cvtsi128_si64(sums) + _mm_extract_epi16(sums, 4));
    }

    // False once a fault was found.
    bool is_sound_so_far() const { return bits_of(_mm_cmpeq_epi8(fault_, _mm_setzero_si128())) == 0xFFFF; }

    // The same, and false while a sequence is still open.
    bool is_well_formed() const { return bits_of(_mm_cmpeq_epi8(_mm_or_si128(fault_, open_), _mm_setzero_si128())) == 0xFFFF; }

    static __m128i continuations(__m128i block) { return _mm_cmplt_epi8(block, _mm_set1_epi8(static_cast<char>(0xC0))); }

    // Whether a text of kLeastSpread to 48 bytes, here with its blocks, is well-formed.
    static constexpr size_t kLeastSpread = kBlock + 3;
    static bool is_well_formed(const uint8_t* p, const SpreadBlocks& blocks) {
        const __m128i first = blocks.block[0];
        __m128i fault = faults(first, _mm_slli_si128(first, 1), _mm_slli_si128(first, 2), _mm_slli_si128(first, 3));
        for (size_t i = 1; i < SpreadBlocks::kCount; ++i) {
            const uint8_t* at = p + blocks.at[i];
            fault = _mm_or_si128(fault, faults(blocks.block[i], load_block(at - 1), load_block(at - 2), load_block(at - 3)));
        }
        fault = _mm_or_si128(fault, left_open(blocks.block[SpreadBlocks::kCount - 1]));
        return bits_of(_mm_cmpeq_epi8(fault, _mm_setzero_si128())) == 0xFFFF;
    }

  private:
    enum Fault : uint8_t {
        kTooShort = 1 << 0,         // a lead byte and no continuation behind it
        kTooLong = 1 << 1,          // a continuation behind ASCII
        kOverlong3 = 1 << 2,        // E0 80-9F
        kTooLarge = 1 << 3,         // F4 90-BF, F5 and above
        kSurrogate = 1 << 4,        // ED A0-BF
        kOverlong2 = 1 << 5,        // C0, C1
        kOverlong4 = 1 << 6,        // F0 80-8F; and F5 and above with 80-8F
        kTwoContinuations = 1 << 7  // is right where the byte is the third or fourth of a sequence, and there alone
    };
    static constexpr uint8_t kAnyLow = kTooShort | kTooLong | kTwoContinuations;

    static __m128i table(uint8_t b0, uint8_t b1, uint8_t b2, uint8_t b3, uint8_t b4, uint8_t b5, uint8_t b6, uint8_t b7,
                         uint8_t b8, uint8_t b9, uint8_t b10, uint8_t b11, uint8_t b12, uint8_t b13, uint8_t b14, uint8_t b15) {
        const uint8_t bytes[16] = {b0, b1, b2, b3, b4, b5, b6, b7, b8, b9, b10, b11, b12, b13, b14, b15};
        return load_block(bytes);
    }

    static __m128i by_first_high(__m128i half) {
        constexpr uint8_t l = kTooLong, t = kTwoContinuations;
        return _mm_shuffle_epi8(table(l, l, l, l, l, l, l, l, t, t, t, t, kTooShort | kOverlong2, kTooShort,
                                      kTooShort | kOverlong3 | kSurrogate, kTooShort | kTooLarge | kOverlong4),
                                half);
    }
    static __m128i by_first_low(__m128i half) {
        constexpr uint8_t a = kAnyLow, g = a | kTooLarge, h = g | kOverlong4;
        return _mm_shuffle_epi8(table(a | kOverlong2 | kOverlong3 | kOverlong4, a | kOverlong2, a, a, g, h, h, h, h, h, h, h, h,
                                      h | kSurrogate, h, h),
                                half);
    }
    static __m128i by_second_high(__m128i half) {
        constexpr uint8_t s = kTooShort, c = kTooLong | kTwoContinuations | kOverlong2;
        return _mm_shuffle_epi8(table(s, s, s, s, s, s, s, s, c | kOverlong3 | kOverlong4, c | kOverlong3 | kTooLarge,
                                      c | kSurrogate | kTooLarge, c | kSurrogate | kTooLarge, s, s, s, s),
                                half);
    }
    static __m128i high_half(__m128i block) { return _mm_and_si128(_mm_srli_epi16(block, 4), _mm_set1_epi8(0x0F)); }

    void check(__m128i block) {
        fault_ = _mm_or_si128(fault_, faults_behind(previous_, block));
        open_ = left_open(block);
    }

    static __m128i faults_behind(__m128i previous, __m128i block) {
        return faults(block, _mm_alignr_epi8(block, previous, 15), _mm_alignr_epi8(block, previous, 14),
                      _mm_alignr_epi8(block, previous, 13));
    }

    // Nonzero bytes where the block is at fault, given the bytes that stand one, two and three places in front of each.
    static __m128i faults(__m128i block, __m128i first, __m128i two_back, __m128i three_back) {
        const __m128i pair = _mm_and_si128(
            _mm_and_si128(by_first_high(high_half(first)), by_first_low(_mm_and_si128(first, _mm_set1_epi8(0x0F)))),
            by_second_high(high_half(block)));
        // The high bit stays where the byte two back leads three or the byte three back leads four.
        const __m128i third = _mm_subs_epu8(two_back, _mm_set1_epi8(0xE0 - 0x80));
        const __m128i fourth = _mm_subs_epu8(three_back, _mm_set1_epi8(0xF0 - 0x80));
        const __m128i due = _mm_and_si128(_mm_or_si128(third, fourth), _mm_set1_epi8(static_cast<char>(0x80)));
        return _mm_xor_si128(pair, due);
    }

    // Nonzero bytes for a lead byte too near the end of the block for its sequence.
    static __m128i left_open(__m128i block) {
        constexpr char any = -1;
        const __m128i last_whole = _mm_setr_epi8(any, any, any, any, any, any, any, any, any, any, any, any, any,
                                                 static_cast<char>(0xEF), static_cast<char>(0xDF), static_cast<char>(0xBF));
        return _mm_subs_epu8(block, last_whole);
    }

    __m128i previous_ = _mm_setzero_si128();
    __m128i fault_ = _mm_setzero_si128();
    __m128i open_ = _mm_setzero_si128();
};

}  // namespace qzhost

#endif
