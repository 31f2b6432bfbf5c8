// One search in texts that stand written out, for functions that look for a pattern themselves.
//
// Behaviour that looks odd and is meant: the first place of a search backwards is found among the bytes of the reversed text by
// the number that the character has in the text as it was. On multibyte text the two are not the same:
// 'a\u00e9\u00e9a\u00e9\u00e9\u00e9a' has '\u00e9' from its eighth character from the right leftwards nowhere, and is told to
// have it at 2.
#include <algorithm>
#include <cstdint>

#include "bop/bifun_str/instr_unit.h"
#include "bop/frame/export.h"
#include "bop/frame/scratch.h"
#include "qzbifun/string.h"
#include "qzhost/characters.h"
#include "qzhost/search.h"

namespace bifun {
namespace {

// A text and where its characters begin.
struct Characters {
    Text text{};
    const int32_t* positions = nullptr;
    uint32_t count = 0;
    uint32_t multibyte = 0;

    // EC_OUT_OF_MEMORY.
    Code fill(qz_env* env, rt_memobj* rt_mem, char* bytes, uint32_t len) {
        int32_t* const room = room_.take(env, rt_mem, std::max(len, 1u));
        if (room == nullptr) return Code{EC_OUT_OF_MEMORY};
        text = {bytes, len, 0};
        positions = room;
        count = qz_mbstrlen_cposition_ex(bytes, len, room, &multibyte);
        return kOk;
    }

  private:
    Scratch<int32_t, 0> room_;
};

// The character of the reversed text from which a search backwards begins, counted from 1; 0 when start lies before the text.
int64_t first_backwards(const Characters& text, uint32_t pattern_len, int32_t start) {
    const int64_t characters = text.count;
    const int64_t first = characters + start + 1;
    if (first < 1) return 0;
    const int64_t last_byte = int64_t{text.positions[first - 1]} + pattern_len - 1;
    if (last_byte >= text.text.len) return 1;
    const int32_t* const begin = text.positions;
    return characters - (std::upper_bound(begin, begin + characters, last_byte) - begin - 1);
}

uint32_t find(const Rest& rest, const Characters& text, const Characters& pattern, int32_t occurrence) {
    const uint32_t base = text.text.len - rest.len;
    const Text& p = pattern.text;
    const bool is_short = p.len <= QZ_SHIFT_OR_MAX_PATTERN;
    uint32_t place = 0;
    if (p.len == pattern.count) {
        const auto service = is_short ? qz_mbshiftor_ncmp : qz_strbmncmp;
        service(rest.bytes, rest.len, p.bytes, p.len, &place, occurrence);
    } else {
        const auto service = is_short ? qz_mbshiftor_ncmp_arr : qz_strbmncmp_arr;
        service(rest.bytes, rest.len, p.bytes, p.len, text.positions, occurrence, &place, base);
    }
    return place;
}

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT int32_t ifun_instr_low(qz_env* env, rt_memobj* rt_mem, char* text, uint32_t text_len, char* pattern,
                                    uint32_t pattern_len, int32_t start, int32_t occurrence, int32_t* out_pos,
                                    int32_t* out_byte_pos) {
    *out_pos = 0;
    *out_byte_pos = 0;
    if (start < 0) {
        if (qz_mbsrev_ex(text, text_len) == nullptr) return EC_STRING_TOO_LONG;
        if (qz_mbsrev_ex(pattern, pattern_len) == nullptr) return EC_STRING_TOO_LONG;
    }
    Characters searched;
    Characters wanted;
    if (const Code code = searched.fill(env, rt_mem, text, text_len); code.failed()) return code.value;
    if (const Code code = wanted.fill(env, rt_mem, pattern, pattern_len); code.failed()) return code.value;

    int64_t first = start;
    if (start < 0) {
        first = first_backwards(searched, pattern_len, start);
        if (first == 0) return 0;
    }
    if (pattern_len != wanted.count && searched.multibyte < wanted.multibyte) return 0;
    if (searched.count < wanted.count || first > searched.count) return 0;
    Rest rest;
    if (const Code code = pass_characters(searched.text, first - 1, rest); code.failed()) return code.value;
    const uint32_t place = find(rest, searched, wanted, occurrence);
    if (place == 0) return 0;
    const int64_t before = qz_mbstrlen_ex(rest.bytes, place - 1);
    const int64_t behind_first = qz_mbstrlen_ex(rest.bytes, rest.len);
    *out_pos = static_cast<int32_t>(start >= 0 ? start + before : 1 - int64_t{wanted.count} - before + behind_first);
    *out_byte_pos = static_cast<int32_t>(place);
    return 0;
}
