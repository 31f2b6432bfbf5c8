// Text of a bigint.
//
// Numbers are short mostly, of any length and either sign, so that a branch for each digit is guessed wrong once a number.
// Where vector registers can do it, sixteen digits are made at once and shifted to the front.
#pragma once

#include <bit>
#include <charconv>
#include <cstdint>
#if defined(__SSE4_1__)
#include <smmintrin.h>
#endif

namespace bifun {

class IntegerText {
  public:
    explicit IntegerText(int64_t value) {
#if defined(__SSE4_1__)
        const uint64_t magnitude = value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
        if (magnitude < kFifteenDigits) {
            write(magnitude, value < 0);
        } else {
            write(magnitude / kEightDigits, value < 0);  // eleven digits at most
            append_eight(magnitude % kEightDigits);
        }
#else
        len_ = static_cast<uint32_t>(std::to_chars(bytes_, bytes_ + sizeof bytes_, value).ptr - bytes_);
#endif
    }

    const char* bytes() const { return bytes_; }
    uint32_t len() const { return len_; }

  private:
#if defined(__SSE4_1__)
    static constexpr uint64_t kEightDigits = 100'000'000;
    static constexpr uint64_t kFifteenDigits = 1'000'000'000'000'000;  // sixteen bytes with a sign

    // Sixteen digits, a byte each, from 0 to 9. Each lane is split in two of half its width, the quotient in the lower and the
    // remainder in the upper.
    static __m128i digits_of(uint64_t magnitude) {
        const auto upper = static_cast<uint32_t>(magnitude / kEightDigits);
        const auto lower = static_cast<uint32_t>(magnitude % kEightDigits);
        const __m128i fours = _mm_set_epi32(static_cast<int>(lower % 10000), static_cast<int>(lower / 10000),
                                            static_cast<int>(upper % 10000), static_cast<int>(upper / 10000));
        const __m128i hundreds = _mm_srli_epi32(_mm_mulhi_epu16(fours, _mm_set1_epi32(10486)), 4);  // by 100 below 10^4
        const __m128i belows = _mm_sub_epi16(fours, _mm_mullo_epi16(hundreds, _mm_set1_epi32(100)));
        const __m128i pairs = _mm_or_si128(hundreds, _mm_slli_epi32(belows, 16));
        const __m128i tens = _mm_mulhi_epu16(pairs, _mm_set1_epi16(6554));  // by 10 below 100
        const __m128i ones = _mm_sub_epi16(pairs, _mm_mullo_epi16(tens, _mm_set1_epi16(10)));
        return _mm_or_si128(tens, _mm_slli_epi16(ones, 8));
    }

    // Zeros in front are left out, but the last digit stays.
    void write(uint64_t magnitude, bool negative) {
        const __m128i digits = digits_of(magnitude);
        const auto nonzero = ~static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(digits, _mm_setzero_si128())));
        const int zeros = std::countr_zero(nonzero | 1u << 15);
        const int sign = negative ? 1 : 0;
        // Byte i is the digit at i + zeros, behind the sign.
        const __m128i from = _mm_add_epi8(_mm_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15),
                                          _mm_set1_epi8(static_cast<char>(zeros - sign)));
        const __m128i text = _mm_shuffle_epi8(_mm_or_si128(digits, _mm_set1_epi8('0')), from);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes_), negative ? _mm_insert_epi8(text, '-', 0) : text);
        len_ = static_cast<uint32_t>(16 - zeros + sign);
    }

    void append_eight(uint64_t magnitude) {
        const __m128i text = _mm_or_si128(digits_of(magnitude), _mm_set1_epi8('0'));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(bytes_ + len_), _mm_unpackhi_epi64(text, text));
        len_ += 8;
    }
#endif

    char bytes_[24];  // 20 are used: -9223372036854775808
    uint32_t len_;
};

}  // namespace bifun
