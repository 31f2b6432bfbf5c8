// What a position counts: characters in instr, bytes in instrb. Where the two search differently for the same reason, the
// difference stands here.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>

#include "bop/frame/arguments.h"
#include "bop/frame/call.h"
#include "qzhost/characters.h"

namespace bifun {

inline uint64_t high_bits_of(const char* eight_bytes) {
    uint64_t word;
    std::memcpy(&word, eight_bytes, sizeof word);
    return word & 0x8080808080808080u;
}

// Bytes at the start of text that are characters of their own in every character set.
inline uint32_t ascii_bytes(const char* text, uint32_t len) {
    uint32_t i = 0;
    while (i + 8 <= len && high_bits_of(text + i) == 0) i += 8;
    while (i < len && static_cast<signed char>(text[i]) >= 0) ++i;
    return i;
}

// Texts of 16 to 48 bytes are looked at as words that overlap: the same steps for every length, so that no branch depends on
// it.
inline bool is_short(const Text& text) { return text.len - 16 <= 32; }

inline bool is_short_ascii(const Text& text) {
    const uint32_t last = text.len - 16;
    const uint32_t middle = last < 16 ? last : 16;
    const uint64_t high = (high_bits_of(text.bytes) | high_bits_of(text.bytes + 8)) |
                          (high_bits_of(text.bytes + middle) | high_bits_of(text.bytes + middle + 8)) |
                          (high_bits_of(text.bytes + last) | high_bits_of(text.bytes + last + 8));
    return high == 0;
}

inline uint32_t count_characters(const char* text, uint32_t len) {
    const uint32_t ascii = ascii_bytes(text, len);
    return ascii == len ? len : ascii + qz_mbstrlen_ex(text + ascii, len - ascii);
}

// Where a search begins.
struct Rest {
    const char* bytes;
    uint32_t len;
};

// What is left behind n characters. A count below 1 passes none.
inline Code pass_characters(const Text& text, int64_t n, Rest& rest) {
    rest = {text.bytes, text.len};
    if (n <= 0) return kOk;
    rest.bytes = qz_mbsninc_ex(text.bytes, text.len, static_cast<uint32_t>(n), &rest.len);
    return Code{rest.bytes == nullptr ? EC_STRING_TOO_LONG : 0};
}

struct InCharacters {
    static constexpr bool kBytes = false;

    // The position of the byte place, counted from 1.
    static uint32_t position(const Text& text, uint32_t place) {
        if (!is_short(text)) return count_characters(text.bytes, place - 1) + 1;
        return is_short_ascii(text) ? place : qz_mbstrlen_ex(text.bytes, place - 1) + 1;
    }
    static uint32_t length(const Text& text) { return count_characters(text.bytes, text.len); }
    // The positions of bytes in n texts, 0 where there is none.
    static void turn_bytes_into(uint32_t* positions, uint32_t n, const bdta3_colstr* texts) {
        host_characters_of_positions(positions, n, texts);
    }

    // Each of the hits that a pattern with blanks needs is searched for by itself.
    static int32_t shift_or_occurrence(int32_t) { return 1; }
};

struct InBytes {
    static constexpr bool kBytes = true;

    static uint32_t position(const Text&, uint32_t place) { return place; }
    static uint32_t length(const Text& text) { return text.len; }
    static void turn_bytes_into(uint32_t*, uint32_t, const bdta3_colstr*) {}

    // The service counts the stored parts, and the loop around it those with blanks behind them.
    static int32_t shift_or_occurrence(int32_t occurrence) { return occurrence; }

    // The first byte at or behind start at which a character starts, counted from 1; nothing when there is none.
    static std::optional<uint32_t> first_start(const Text& text, int32_t start) {
        if (text.len == 0 || start > static_cast<int64_t>(text.len)) return std::nullopt;
        if (start <= 1) return 1;
        const uint32_t index = static_cast<uint32_t>(start) - 1;
        uint32_t next = 0;
        if (qz_char_start(text.bytes, text.len, index, &next) != 0) return index + 1;
        return next < text.len ? std::optional(next + 1) : std::nullopt;
    }
};

}  // namespace bifun
