// Unsigned integers to decimal digits and back, two or eight at a time. Bytes of a word are in the order of memory:
// little-endian.
#ifndef QZHOST_SRC_DECIMAL_DIGITS_H
#define QZHOST_SRC_DECIMAL_DIGITS_H

#if defined(__SSE4_1__)
#include <smmintrin.h>
#endif

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qzhost {

// "00" to "99".
inline constexpr std::array<char, 200> kDigitPairs = [] {
    std::array<char, 200> pairs{};
    for (size_t i = 0; i < 100; ++i) {
        pairs[2 * i] = static_cast<char>('0' + i / 10);
        pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return pairs;
}();

inline constexpr std::array<uint64_t, 20> kPowersOfTen = [] {
    std::array<uint64_t, 20> powers{1};
    for (size_t i = 1; i < powers.size(); ++i) {
        powers[i] = powers[i - 1] * 10;
    }
    return powers;
}();

// Count of decimal digits; 1 for 0.
inline int count_digits(uint64_t value) {
    const int approximate = (static_cast<int>(std::bit_width(value | 1)) * 1233) >> 12;  // bits * log10(2), at most 19
    return approximate + (value >= kPowersOfTen[static_cast<size_t>(approximate)] ? 1 : 0) + (value == 0 ? 1 : 0);
}

// The highest bit of x, which is not 0. bsr leaves its destination as it is where there is none, so that it waits for what was
// computed there before; in place, there is nothing else to wait for.
inline int highest_bit(uint32_t x) {
#if defined(__LZCNT__) || !defined(__x86_64__)
    return 31 - std::countl_zero(x);
#else
    __asm__("bsrl %0, %0" : "+r"(x) : : "cc");
    return static_cast<int>(x);
#endif
}

inline void write_pair(char* out, uint32_t value) { std::memcpy(out, &kDigitPairs[2 * size_t{value}], 2); }

// The eight decimal digits of value, below 10^8, one in a byte, the first in the lowest. Lanes of 32, 16 and 8 bits are split
// at once: the quotient stays in a lane's lower half and the remainder goes to the upper one. Neither product leaves its lane.
inline uint64_t eight_digits(uint32_t value) {
    const uint64_t fours = (value / 10000) | uint64_t{value % 10000} << 32;
    const uint64_t hundreds = (fours * 5243 >> 19) & 0x0000007F0000007F;  // x / 100 for x below 10^4
    const uint64_t pairs = hundreds | (fours - hundreds * 100) << 16;
    const uint64_t tens = (pairs * 103 >> 10) & 0x000F000F000F000F;  // x / 10 for x below 100
    return tens | (pairs - tens * 10) << 8;
}

inline constexpr uint64_t kEightZeros = 0x3030303030303030;  // "00000000"

// Writes value, below 10^8, as eight digits.
inline void write_8_digits(char* out, uint32_t value) {
    const uint64_t text = eight_digits(value) | kEightZeros;
    std::memcpy(out, &text, sizeof text);
}

#if defined(__SSE4_1__)

// The sixteen decimal digits of two numbers below 10^8, one in a byte, by the same steps: lanes of 64, 32 and 16 bits.
inline __m128i sixteen_digits(uint64_t upper_eight, uint64_t lower_eight) {
    const __m128i eights = _mm_set_epi64x(static_cast<int64_t>(lower_eight), static_cast<int64_t>(upper_eight));
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

#endif

// Whether the eight bytes of a text are digits: the upper half of each is 3, and still is when 6 is added.
inline bool are_8_digits(uint64_t text) {
    return ((text & 0xF0F0F0F0F0F0F0F0) | (((text + 0x0606060606060606) & 0xF0F0F0F0F0F0F0F0) >> 4)) == 0x3333333333333333;
}

// The number that eight digits of a text say.
inline uint32_t read_8_digits(uint64_t text) {
    text &= 0x0F0F0F0F0F0F0F0F;
    text = (text * 10 + (text >> 8)) & 0x00FF00FF00FF00FF;      // pairs, below 100
    text = (text * 100 + (text >> 16)) & 0x0000FFFF0000FFFF;    // fours, below 10^4
    return static_cast<uint32_t>(text * 10000 + (text >> 32));  // its lower 32 bits are below 10^8
}

// Writes the last count digits of value.
inline void write_digits(char* out, uint64_t value, int count) {
    while (count >= 8) {
        count -= 8;
        write_8_digits(out + count, static_cast<uint32_t>(value % 100000000));
        value /= 100000000;
    }
    auto rest = static_cast<uint32_t>(value % 100000000);
    while (count >= 2) {
        count -= 2;
        write_pair(out + count, rest % 100);
        rest /= 100;
    }
    if (count > 0) {
        *out = static_cast<char>('0' + rest % 10);
    }
}

}  // namespace qzhost

#endif
