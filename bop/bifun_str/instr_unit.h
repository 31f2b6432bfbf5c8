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

// Whether the texts of a batch begin with n bytes, 1 or more, that are characters of their own in every character set. This is
// asked of few bytes, and as long as all texts did: where they differ, no branch on it could be foreseen.
class AsciiBegins {
  public:
    bool hold(const Text& text, uint32_t n) {
        uint64_t word;
        if (!so_far_ || n > sizeof word || text.len < sizeof word) return false;
        std::memcpy(&word, text.bytes, sizeof word);
        so_far_ = (word & 0x8080808080808080u >> (8 * (sizeof word - n))) == 0;
        return so_far_;
    }

  private:
    bool so_far_ = true;
};

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
    static uint32_t position(const Text& text, uint32_t place) { return qz_mbstrlen_ex(text.bytes, place - 1) + 1; }
    static uint32_t length(const Text& text) { return qz_mbstrlen_ex(text.bytes, text.len); }
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
        uint32_t first = index;
        // Whether there is one at the index cannot be foreseen, so that no branch asks: first is what it was, then.
        (void)qz_char_start(text.bytes, text.len, index, &first);
        return first < text.len ? std::optional(first + 1) : std::nullopt;
    }
};

}  // namespace bifun
