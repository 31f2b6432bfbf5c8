// Where a pattern with implied blanks behind it first stands in a text, without writing out either.
//
// The stored part is searched in the stored text, and only around a hit are the blanks looked at. They are found when
//   - the hit ends the stored text and the text implies as many blanks, or
//   - the bytes behind the hit are blanks: stored ones, and then implied ones.
// A hit that ends the stored text decides: what comes behind it could not be one.
#pragma once

#include <cstdint>

#include "bop/bifun_str/search_context.h"
#include "bop/frame/arguments.h"

namespace bifun {

struct BlankedHit {
    uint32_t place = 0;             // the byte at which the hit begins, counted from 1; 0: there is none
    bool ends_stored_text = false;  // all blanks behind it are implied ones
};

// The pattern's stored part, which the context holds, and then so many blanks. place is the first hit of the stored part.
BlankedHit check_blanks(const instr_search_ctx& ctx, const Text& text, uint32_t blanks, uint32_t place);

inline BlankedHit find_with_blanks(const instr_search_ctx& ctx, const Text& text, uint32_t blanks) {
    const uint32_t place = ctx.find(text.bytes, text.len);
    if (place == 0 || blanks == 0) return {place};
    return check_blanks(ctx, text, blanks, place);
}

}  // namespace bifun
