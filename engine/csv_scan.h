/*
 * Finds the commas, line feeds and quotes of CSV text, 64 bytes at a time.
 *
 * Each is a mask with bit i for byte i. The quotes' running parity tells which bytes stand inside a quoted field, so that a
 * record is found without a step for each byte.
 */
#ifndef QZENGINE_CSV_SCAN_H
#define QZENGINE_CSV_SCAN_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qzengine {

inline constexpr size_t kScanBlock = 64;

struct CsvMasks {
    uint64_t commas;
    uint64_t newlines;
    uint64_t quotes;
};

// A word at a time: bit i of the result for byte i of the word that equals c.
inline uint64_t equal_bytes(uint64_t word, char c) {
    constexpr uint64_t kLow = 0x0101010101010101U;
    constexpr uint64_t kBelowTop = 0x7F7F7F7F7F7F7F7FU;
    const uint64_t differing = word ^ (kLow * static_cast<unsigned char>(c));
    // The top bit of each byte that is zero, and of no other; then the eight top bits side by side.
    const uint64_t zero = ~(((differing & kBelowTop) + kBelowTop) | differing | kBelowTop);
    return ((zero >> 7) * 0x0102040810204080U) >> 56;
}

inline CsvMasks scan_csv_block_portable(const char* block) {
    CsvMasks masks{0, 0, 0};
    for (unsigned i = 0; i < kScanBlock; i += 8) {
        uint64_t word = 0;
        std::memcpy(&word, block + i, sizeof word);
        masks.commas |= equal_bytes(word, ',') << i;
        masks.newlines |= equal_bytes(word, '\n') << i;
        masks.quotes |= equal_bytes(word, '"') << i;
    }
    return masks;
}

// block has 64 readable bytes.
inline CsvMasks scan_csv_block(const char* block) {
#if defined(__SSE2__)
    const auto mask_of = [block](char c) {
        const __m128i wanted = _mm_set1_epi8(c);
        uint64_t mask = 0;
        for (unsigned i = 0; i < kScanBlock; i += 16) {
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + i));
            const int equal = _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, wanted));
            mask |= static_cast<uint64_t>(static_cast<unsigned>(equal)) << i;
        }
        return mask;
    };
    return {mask_of(','), mask_of('\n'), mask_of('"')};
#else
    return scan_csv_block_portable(block);
#endif
}

// Bit i is the parity of bits 0 to i: with a mask of quotes, the bytes from an opening quote up to before its closing one.
inline uint64_t running_parity(uint64_t mask) {
    for (unsigned step = 1; step < 64; step *= 2) mask ^= mask << step;
    return mask;
}

// Where quoted text goes on from block to block.
class QuoteState {
  public:
    // The bytes of the block that stand inside quotes. Blocks are given in order.
    uint64_t inside(uint64_t quotes) {
        const uint64_t inside = running_parity(quotes) ^ carried_;
        carried_ = (inside >> 63) != 0 ? ~uint64_t{0} : 0;
        return inside;
    }
    bool open() const { return carried_ != 0; }

  private:
    uint64_t carried_ = 0;
};

}  // namespace qzengine

#endif
