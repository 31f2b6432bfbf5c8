// The rows of instr and instrb without a start: the first place at which a pattern stands.
#pragma once

#include <cstdint>

#include "bop/bifun_str/blank_check.h"
#include "bop/bifun_str/instr_unit.h"
#include "bop/bifun_str/search_context.h"
#include "bop/bifun_str/text_value.h"

namespace bifun {

// A pattern with stored bytes, which the context holds, and then so many blanks.
template <class Unit>
inline int32_t find_stored_pattern(const instr_search_ctx& ctx, uint32_t blanks, const Text& text) {
    if (ctx.pattern_bytes > text.len) return 0;
    const BlankedHit hit = find_with_blanks(ctx, text, blanks);
    return hit.place == 0 ? 0 : static_cast<int32_t>(Unit::position(text, hit.place));
}

// A pattern of blanks, which the context holds as bytes. They are all stored or all implied: where some of each would do, the
// implied ones alone count.
template <class Unit>
inline int32_t find_blank_pattern(const instr_search_ctx& ctx, const Text& text) {
    if (ctx.pattern_bytes > total_bytes(text)) return 0;
    const bool implied = text.blank >= ctx.pattern_bytes;
    if (text.len == 0) return implied ? 1 : 0;
    if (const uint32_t place = ctx.find(text.bytes, text.len); place != 0) {
        return static_cast<int32_t>(Unit::position(text, place));
    }
    return implied ? static_cast<int32_t>(Unit::length(text) + 1) : 0;
}

}  // namespace bifun
