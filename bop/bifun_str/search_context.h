// What a search needs of its pattern, prepared once and used on every row.
#pragma once

#include <cstdint>
#include <cstring>

#include "bop/frame/call.h"
#include "bop/frame/scratch.h"
#include "qzhost/search.h"

namespace bifun {

// Up to so many entries, short data of a search stands in the frame.
inline constexpr uint32_t kShortEntries = 256;

struct instr_search_ctx {
    struct BoyerMoore {
        uint32_t bmbc[QZ_BMBC_ENTRIES];
        const uint32_t* bmgs;  // one entry for each byte of the pattern
    };
    struct ShiftOr {
        uint32_t shift_limit;
        uint32_t shift_masks[QZ_SHIFT_MASK_ENTRIES];
    };
    // A context holds one of the two.
    union {
        BoyerMoore boyer_moore;
        ShiftOr shift_or;
    };
    uint32_t pattern_chars;  // characters of the stored part of the pattern
    const char* pattern;     // as it is searched
    uint32_t pattern_bytes;

    // Where the pattern stands in the text for the occurrence-th time: the byte, counted from 1, or 0.
    uint32_t find(const char* text, uint32_t len, int32_t occurrence = 1) const {
        uint32_t place = 0;
        qz_strbmncmp_arr_ex(text, len, pattern, pattern_bytes, occurrence, &place, boyer_moore.bmbc, boyer_moore.bmgs);
        return place;
    }

    // The same by shift-or. text begins base bytes into the text whose characters stand at char_positions.
    uint32_t find_shift_or(const char* text, uint32_t len, const int32_t* char_positions, int32_t occurrence,
                           uint32_t base) const {
        uint32_t place = 0;
        qz_mbshiftor_ncmp_arr_ex(text, len, pattern, pattern_bytes, char_positions, occurrence, &place, shift_or.shift_masks,
                                 shift_or.shift_limit, base);
        return place;
    }
};

// A context with the memory that its tables take. The pattern is the caller's and outlives it.
class SearchContext {
  public:
    SearchContext() {}

    const instr_search_ctx& operator*() const { return ctx_; }
    const instr_search_ctx* operator->() const { return &ctx_; }

    // For instr_search_ctx::find. EC_OUT_OF_MEMORY, which nobody has pushed.
    Code prepare_boyer_moore(const Call& call, const char* pattern, uint32_t bytes, uint32_t chars = 0) {
        uint32_t* const bmgs = bmgs_.take(call.env, call.rt_mem, bytes);
        if (bmgs == nullptr) return Code{EC_OUT_OF_MEMORY};
        set_pattern(pattern, bytes, chars);
        preprocess_bmbc(pattern, bytes, ctx_.boyer_moore.bmbc);
        std::memset(bmgs, 0, size_t{bytes} * sizeof *bmgs);
        preprocess_bmgs(pattern, bytes, bmgs);
        ctx_.boyer_moore.bmgs = bmgs;
        return kOk;
    }

    // The same for a pattern that is searched for once. The tables of a short one cost more than a search does, and the service
    // goes without when both are one.
    Code prepare_for_one_search(const Call& call, const char* pattern, uint32_t bytes) {
        if (bytes > kShortEntries) return prepare_boyer_moore(call, pattern, bytes);
        set_pattern(pattern, bytes, 0);
        ctx_.boyer_moore.bmgs = ctx_.boyer_moore.bmbc;
        return kOk;
    }

    // For instr_search_ctx::find_shift_or; at most QZ_SHIFT_OR_MAX_PATTERN bytes.
    void prepare_shift_or(const char* pattern, uint32_t bytes, uint32_t chars) {
        set_pattern(pattern, bytes, chars);
        ctx_.shift_or.shift_limit = preshiftorprocess(pattern, bytes, ctx_.shift_or.shift_masks);
    }

    // Puts other bytes of the same length in the pattern's place; the tables stay.
    void search_for(const char* pattern) { ctx_.pattern = pattern; }

  private:
    void set_pattern(const char* pattern, uint32_t bytes, uint32_t chars) {
        ctx_.pattern = pattern;
        ctx_.pattern_bytes = bytes;
        ctx_.pattern_chars = chars;
    }

    instr_search_ctx ctx_;
    Scratch<uint32_t, kShortEntries> bmgs_;
};

}  // namespace bifun
