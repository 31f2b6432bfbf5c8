// The rows of instr and instrb with a start: three scans forwards, by the shape of the pattern, and one backwards.
//
// A scan answers a position of the text, or 0, in a parameter, and a code: EC_OUT_OF_MEMORY, or EC_STRING_TOO_LONG for a text
// with malformed characters that have to be passed. Nothing is pushed, and the position is not defined after a failure.
#pragma once

#include <cstdint>

#include "bop/bifun_str/instr_unit.h"
#include "bop/bifun_str/search_context.h"
#include "bop/frame/call.h"

namespace bifun {

// What is searched for, from where, and for which time; the same for all rows.
struct InstrTask {
    const instr_search_ctx* ctx = nullptr;
    Text pattern{};  // its stored part and its count of blanks
    int32_t start = 1;
    int32_t occurrence = 1;
    bool by_shift_or = false;
    bool is_well_formed = false;  // the pattern
    AsciiBegins ascii;
};

// Dispatches a start above 0. The text's case is folded as the pattern's is.
template <class Unit>
Code scan_forwards(const Call& call, InstrTask& task, const Text& text, int32_t& position);

// A start below 0. The task's pattern is written out, reversed, and with fold folded; the text is as it stands.
template <class Unit>
Code scan_backwards(const Call& call, const InstrTask& task, const Text& text, bool fold, int32_t& position);

}  // namespace bifun
