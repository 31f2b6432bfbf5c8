#include "bop/bifun_str/blank_check.h"

#include <algorithm>

#include "qzhost/characters.h"

namespace bifun {
namespace {

// Whether the bytes of the value from offset on, as many as asked for, are blanks; it has as many.
bool blanks_follow(const Text& text, uint64_t offset, uint32_t blanks) {
    const uint64_t stored = offset < text.len ? std::min<uint64_t>(blanks, text.len - offset) : 0;
    const char* const from = text.bytes + offset;
    return std::all_of(from, from + stored, [](char byte) { return byte == ' '; });
}

}  // namespace

BlankedHit check_blanks(const instr_search_ctx& ctx, const Text& text, uint32_t blanks, uint32_t place) {
    const uint64_t total = uint64_t{text.len} + text.blank;
    for (uint32_t begin = place - 1;;) {
        const uint64_t end = uint64_t{begin} + ctx.pattern_bytes;
        if (end == text.len) return text.blank >= blanks ? BlankedHit{begin + 1, true} : BlankedHit{};
        if (end + blanks > total) return {};
        if (blanks_follow(text, end, blanks)) return {begin + 1};
        // On, one character behind the hit.
        const uint32_t next = begin + qz_mbget_bytelen(text.bytes + begin, text.len - begin, 1);
        if (next >= text.len) return {};
        const uint32_t found = ctx.find(text.bytes + next, text.len - next);
        if (found == 0) return {};
        begin = next + found - 1;
    }
}

}  // namespace bifun
