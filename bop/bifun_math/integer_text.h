// Text of a bigint.
//
// Numbers are short mostly, of any length and either sign, so that a branch for each digit, or for each length, is guessed wrong
// once a number. Where vector registers can do it, sixteen digits are made at once and shifted to the front, behind those of
// what is above them.
#pragma once

#include <array>
#include <bit>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstring>
#if defined(__SSE4_1__)
#include <smmintrin.h>
#endif

namespace bifun {

inline constexpr uint32_t kIntegerTextBytes = 24;  // 20 are used: -9223372036854775808

#if defined(__SSE4_1__)

namespace integer_text {

inline constexpr uint64_t kEightDigits = 100'000'000;

// Sixteen digits of a number below 10^16, a byte each, from 0 to 9. Each lane is split in two of half its width: the quotient
// goes to its lower half, and the remainder to the upper.
inline __m128i digits_of(uint64_t value) {
    const uint64_t upper = value / kEightDigits;
    const __m128i eights = _mm_set_epi64x(static_cast<int64_t>(value - upper * kEightDigits), static_cast<int64_t>(upper));
    const __m128i upper_fours = _mm_srli_epi64(_mm_mul_epu32(eights, _mm_set1_epi64x(3518437209)), 45);  // 2^45 / 10^4
    const __m128i lower_fours = _mm_sub_epi64(eights, _mm_mul_epu32(upper_fours, _mm_set1_epi64x(10000)));
    const __m128i fours = _mm_or_si128(upper_fours, _mm_slli_epi64(lower_fours, 32));
    const __m128i upper_pairs = _mm_srli_epi16(_mm_mulhi_epu16(fours, _mm_set1_epi32(5243)), 3);  // 2^19 / 100
    const __m128i lower_pairs = _mm_sub_epi16(fours, _mm_mullo_epi16(upper_pairs, _mm_set1_epi32(100)));
    const __m128i pairs = _mm_or_si128(upper_pairs, _mm_slli_epi32(lower_pairs, 16));
    const __m128i tens = _mm_mulhi_epu16(pairs, _mm_set1_epi16(6554));  // 2^16 / 10
    // tens + (pairs - tens * 10) * 256
    return _mm_add_epi16(_mm_slli_epi16(pairs, 8), _mm_mullo_epi16(tens, _mm_set1_epi16(1 - (10 << 8))));
}

// The text of a number below 1000, empty for 0, and its length in the fourth byte.
inline constexpr std::array<uint32_t, 1000> kLeading = [] {
    std::array<uint32_t, 1000> texts{};
    for (uint32_t value = 1; value < texts.size(); ++value) {
        uint32_t length = 0;
        for (uint32_t rest = value; rest != 0; rest /= 10, ++length) texts[value] = texts[value] << 8 | ('0' + rest % 10);
        texts[value] |= length << 24;
    }
    return texts;
}();

struct Successive {
    uint8_t from[32];
};

inline constexpr Successive kSuccessive = [] {
    Successive numbers{};
    for (size_t i = 0; i < sizeof numbers.from; ++i) numbers.from[i] = static_cast<uint8_t>(i);
    return numbers;
}();

}  // namespace integer_text

// Writes a text and answers its length; kIntegerTextBytes at to may be written.
inline uint32_t write_integer(char* to, int64_t value) {
    using namespace integer_text;
    const auto bits = static_cast<uint64_t>(value);
    const uint64_t negative = bits >> 63;
    const uint64_t magnitude = (bits ^ (0 - negative)) + negative;
    const uint64_t above = magnitude / (kEightDigits * kEightDigits);  // at most 922
    const __m128i digits = digits_of(magnitude - above * kEightDigits * kEightDigits);
    const uint32_t leading = kLeading[above];

    to[0] = '-';
    char* const at = to + negative;
    std::memcpy(at, &leading, sizeof leading);
    // Zeros in front are left out when nothing stands before them, but the last digit stays.
    const auto zero = static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(digits, _mm_setzero_si128())));
    const uint32_t length = leading >> 24;
    const auto zeros = static_cast<uint32_t>(std::countr_zero(~zero | 1U << 15 | (0 - length) >> 31));
    const __m128i from = _mm_loadu_si128(reinterpret_cast<const __m128i*>(kSuccessive.from + zeros));
    const __m128i text = _mm_shuffle_epi8(_mm_or_si128(digits, _mm_set1_epi8('0')), from);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(at + length), text);
    return static_cast<uint32_t>(negative) + length + 16 - zeros;
}

#else

inline uint32_t write_integer(char* to, int64_t value) {
    return static_cast<uint32_t>(std::to_chars(to, to + kIntegerTextBytes, value).ptr - to);
}

#endif

}  // namespace bifun
