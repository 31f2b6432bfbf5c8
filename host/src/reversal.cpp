#include <utility>

#include "host/src/character_walk.h"
#include "qzbifun/codes.h"
#include "qzhost/characters.h"

using namespace qzhost;

namespace {

// The bytes from both ends towards the middle, eight at a time. What is left in the middle, eight to sixteen bytes, is done by
// two words that overlap.
void reverse_bytes(uint8_t* p, size_t n) {
#ifdef QZHOST_VECTOR_BYTES
    if (SpreadBlocks::takes(n)) {
        const SpreadBlocks blocks(p, n);
        const __m128i backwards = _mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
        for (size_t i = 0; i < SpreadBlocks::kCount; ++i) {
            store_block(p + n - kBlock - blocks.at[i], _mm_shuffle_epi8(blocks.block[i], backwards));
        }
        return;
    }
#endif
    while (n > 16) {
        const uint64_t first = load64(p);
        const uint64_t last = load64(p + n - 8);
        store64(p, __builtin_bswap64(last));
        store64(p + n - 8, __builtin_bswap64(first));
        p += 8;
        n -= 16;
    }
    if (n >= 8) {
        const uint64_t first = load64(p);
        const uint64_t last = load64(p + n - 8);
        store64(p, __builtin_bswap64(last));
        store64(p + n - 8, __builtin_bswap64(first));
    } else if (n >= 4) {
        const uint32_t first = load32(p);
        const uint32_t last = load32(p + n - 4);
        store32(p, __builtin_bswap32(last));
        store32(p + n - 4, __builtin_bswap32(first));
    } else if (n >= 2) {
        std::swap(p[0], p[n - 1]);
    }
}

void reverse_sequence(uint8_t* p, size_t length) {
    std::swap(p[0], p[length - 1]);
    if (length == 4) [[unlikely]]
        std::swap(p[1], p[2]);
}

// The bytes of each character, then the bytes of all: each character's come out in their own order.
template <class Set>
void reverse_well_formed(uint8_t* p, size_t n, size_t ascii) {
    for (size_t i = ascii; i < n; i += ascii_run(p + i, n - i)) {
        const size_t length = step<Set>(p + i, n - i);
        reverse_sequence(p + i, length);
        i += length;
    }
    reverse_bytes(p, n);
}

#ifdef QZHOST_VECTOR_BYTES
// The other way round for UTF-8: in the reversed text each character ends with its lead byte.
template <>
void reverse_well_formed<Utf8>(uint8_t* p, size_t n, size_t) {
    const auto turn = [p](size_t lead) {
        const size_t length = Utf8::length_by_lead(p + lead);
        reverse_sequence(p + lead + 1 - length, length);
    };
    const auto is_lead = [](__m128i block) {
        return _mm_cmpeq_epi8(_mm_max_epu8(block, _mm_set1_epi8(static_cast<char>(0xC0))), block);
    };
    if (SpreadBlocks::takes(n)) {
        // Looked for before the bytes move, since loads of what was just stored in other pieces are slow.
        uint64_t leads = SpreadBlocks(p, n).bits(is_lead);
        reverse_bytes(p, n);
        for (; leads != 0; leads &= leads - 1) turn(n - 1 - static_cast<size_t>(std::countr_zero(leads)));
        return;
    }
    reverse_bytes(p, n);
    size_t i = 0;
    for (; i + kBlock <= n; i += kBlock) {
        for (uint32_t leads = bits_of(is_lead(load_block(p + i))); leads != 0; leads &= leads - 1) {
            turn(i + static_cast<size_t>(std::countr_zero(leads)));
        }
    }
    for (; i < n; ++i) {
        if (p[i] >= 0xC0) turn(i);
    }
}
#endif

template <class Set>
bool reverse_characters(uint8_t* p, size_t n) {
    if constexpr (std::is_same_v<Set, Utf8>) {
        const Utf8Count counted = count_utf8(p, n);
        if (!counted.well_formed) return false;
        counted.characters == n ? reverse_bytes(p, n) : reverse_well_formed<Set>(p, n, 0);
        return true;
    }
    const size_t ascii = ascii_run(p, n);
    if (ascii == n) {
        reverse_bytes(p, n);
        return true;
    }
    if (!is_well_formed<Set>(p + ascii, n - ascii)) return false;
    reverse_well_formed<Set>(p, n, ascii);
    return true;
}

bool reverse_text(char* text, uint32_t len) {
    return with_server_charset([&]<class Set>(Set) { return reverse_characters<Set>(bytes_of(text), len); });
}

}  // namespace

char* qz_mbsrev_ex(char* text, uint32_t len) { return reverse_text(text, len) ? text : nullptr; }

int32_t qz_mbsrev_with_compatible_mode(char* text, uint32_t len) { return reverse_text(text, len) ? 0 : EC_CHAR_INVALID; }
