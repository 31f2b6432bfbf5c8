#include <cstring>
#include <type_traits>

#include "host/src/case_tables.h"
#include "host/src/character_walk.h"
#include "qzhost/characters.h"

using namespace qzhost;

namespace {

// ---- ASCII letters, whole words at a time; all other bytes stay -------------------------------------------------------------

template <Case to>
constexpr uint8_t kFirstLetter = to == Case::upper ? 'a' : 'A';
constexpr uint8_t kLetters = 26;
constexpr uint64_t kEachByte = 0x0101010101010101u;
constexpr unsigned kCaseBitFromHighBit = 2;  // from bit 7 to bit 5

template <Case to>
uint64_t fold_word(uint64_t word) {
    // Seven-bit sums cannot carry into the next byte.
    const uint64_t seven = word & ~kHighBits;
    const uint64_t from_first = seven + kEachByte * (0x80 - kFirstLetter<to>);
    const uint64_t behind_last = seven + kEachByte * (0x80 - kFirstLetter<to> - kLetters);
    const uint64_t letters = from_first & ~behind_last & ~word & kHighBits;
    return word ^ letters >> kCaseBitFromHighBit;
}

#ifdef QZHOST_VECTOR_BYTES
template <Case to>
__m128i fold_block(__m128i block) {
    // Moved so that the letters are the lowest signed numbers.
    const __m128i moved = _mm_sub_epi8(block, _mm_set1_epi8(static_cast<char>(kFirstLetter<to> + 0x80)));
    const __m128i letters = _mm_cmplt_epi8(moved, _mm_set1_epi8(static_cast<char>(0x80 + kLetters)));
    return _mm_xor_si128(block, _mm_and_si128(letters, _mm_set1_epi8(0x20)));
}
#endif

// The last word of a range may overlap the one before it: it is read before that is written, and written after. Answers whether
// all bytes are ASCII.
template <Case to>
bool fold_ascii(uint8_t* p, size_t n) {
    uint64_t others = 0;
    if (n < 8) {
        for (size_t i = 0; i < n; ++i) {
            others |= p[i];
            p[i] ^= static_cast<uint8_t>((static_cast<uint8_t>(p[i] - kFirstLetter<to>) < kLetters) << 5);
        }
        return (others & 0x80) == 0;
    }
#ifdef QZHOST_VECTOR_BYTES
    if (SpreadBlocks::takes(n)) {
        const SpreadBlocks blocks(p, n);
        for (size_t i = 0; i < SpreadBlocks::kCount; ++i) store_block(p + blocks.at[i], fold_block<to>(blocks.block[i]));
        return bits_of(blocks.all()) == 0;
    }
    if (n >= kBlock) {
        const __m128i last = load_block(p + n - kBlock);
        __m128i all = last;
        for (size_t i = 0; i + kBlock < n; i += kBlock) {
            const __m128i block = load_block(p + i);
            all = _mm_or_si128(all, block);
            store_block(p + i, fold_block<to>(block));
        }
        store_block(p + n - kBlock, fold_block<to>(last));
        return bits_of(all) == 0;
    }
#endif
    const uint64_t last = load64(p + n - 8);
    others = last;
    for (size_t i = 0; i + 8 < n; i += 8) {
        const uint64_t word = load64(p + i);
        others |= word;
        store64(p + i, fold_word<to>(word));
    }
    store64(p + n - 8, fold_word<to>(last));
    return (others & kHighBits) == 0;
}

void store_sequence(uint8_t* p, Sequence sequence, size_t length) {
    p[0] = static_cast<uint8_t>(sequence);
    p[1] = static_cast<uint8_t>(sequence >> 8);
    if (length > 2) p[2] = static_cast<uint8_t>(sequence >> 16);
    if (length > 3) p[3] = static_cast<uint8_t>(sequence >> 24);
}

// ---- UTF-8: no byte of a longer character is ASCII, and a lead byte always begins a character -------------------------------

// A lead byte says nothing of what comes next, so two and three bytes take the same steps.
void fold_two_or_three(const Utf8CaseTable& table, uint8_t* p, size_t left) {
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

void fold_four(const Utf8CaseTable& table, uint8_t* p, size_t left) {
    if (Utf8::sequence(p, left) != 4) return;
    const size_t prefix = size_t{p[0] & 0x07u} << 12 | size_t{p[1] & 0x3Fu} << 6 | (p[2] & 0x3F);
    if (Utf8CaseTable::has(prefix)) store32(p, load32(p) + table.change(prefix, p[3]));
}

void fold_utf8_character(const Utf8CaseTable& table, uint8_t* p, size_t left) {
    p[0] < 0xF0 ? fold_two_or_three(table, p, left) : fold_four(table, p, left);
}

template <Case to>
void fold_utf8_characters(uint8_t* p, size_t n) {
    const Utf8CaseTable& table = Utf8CaseTable::of(to);
#ifdef QZHOST_VECTOR_BYTES
    const auto fold_leads = [&](__m128i block, size_t first, size_t skipped) {
        uint32_t leads = bits_of(block) & ~bits_of(Utf8Blocks::continuations(block)) & (~0u << skipped);
        for (; leads != 0; leads &= leads - 1) {
            const size_t at = first + static_cast<size_t>(std::countr_zero(leads));
            fold_utf8_character(table, p + at, n - at);
        }
    };
    if (n < kBlock) return fold_leads(load_below_16(p, n), 0, 0);
    size_t i = 0;
    for (; i + kBlock <= n; i += kBlock) fold_leads(load_block(p + i), i, 0);
    if (i < n) fold_leads(load_block(p + n - kBlock), n - kBlock, kBlock - (n - i));
#else
    for (size_t i = 0; i < n; ++i) {
        if (p[i] >= 0xC2) fold_utf8_character(table, p + i, n - i);
    }
#endif
}

// ---- GB18030 and EUC-KR: a byte is what the walk from the start makes of it -------------------------------------------------

template <class Set>
const LegacyCaseTable& legacy_table(Case to) {
    return std::is_same_v<Set, Gb18030> ? gb18030_case_table(to) : euc_kr_case_table(to);
}

template <Case to, class Set>
void fold_legacy(uint8_t* p, size_t n) {
    size_t run = ascii_run(p, n);
    fold_ascii<to>(p, run);
    if (run == n) return;
    const LegacyCaseTable& table = legacy_table<Set>(to);
    for (size_t i = run; i < n; i += run) {
        const size_t length = step<Set>(p + i, n - i);
        const Sequence sequence = static_cast<Sequence>(length == 4 ? load32(p + i) : load_below_8(p + i, length));
        const Sequence target = length > 1 ? table.find(sequence) : kNoMapping;
        if (target != kNoMapping) store_sequence(p + i, target, length);
        i += length;
        run = ascii_run(p + i, n - i);
        fold_ascii<to>(p + i, run);
    }
}

template <Case to>
void fold(char* text, uint32_t len) {
    uint8_t* p = bytes_of(text);
    with_server_charset([&]<class Set>(Set) {
        if constexpr (std::is_same_v<Set, Utf8>) {
            if (!fold_ascii<to>(p, len)) fold_utf8_characters<to>(p, len);
        } else {
            fold_legacy<to, Set>(p, len);
        }
    });
}

}  // namespace

void qz_mbsupper_ex(char* text, uint32_t len) { fold<Case::upper>(text, len); }

void qz_mbslower_ex(char* text, uint32_t len) { fold<Case::lower>(text, len); }
