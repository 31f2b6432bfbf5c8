// Rows of a result that take another value than the one the batch was filled with: what nvl and the conditional operator share.
//
// A row is chosen by a test on an argument: is_chosen(access, i). It takes value and valid byte of another argument, whether
// that has a value or not.
#pragma once

#include <algorithm>
#include <cstdint>
#include <tuple>

#include "bop/frame/blocks.h"
#include "bop/frame/run.h"

namespace bifun {

// One block of elements that fit a register, without a branch on the row. Answers whether a row became NULL.
template <class T, class IsChosen, class Tested, class Other>
BIFUN_ALWAYS_INLINE bool replace_in_block(T* values, uint8_t* valid, uint32_t n, const IsChosen& is_chosen,
                                          const Tested& tested, const Other& other) {
    uint8_t some_chosen = 0;
    for (uint32_t i = 0; i < n; ++i) some_chosen = static_cast<uint8_t>(some_chosen | (is_chosen(tested, i) ? 1 : 0));
    if (some_chosen == 0) return false;
    for (uint32_t i = 0; i < n; ++i) {
        const T kept = values[i];
        const T taken = other.value_at(i).value;
        values[i] = is_chosen(tested, i) ? taken : kept;
    }
    uint8_t some_null = 0;
    for (uint32_t i = 0; i < n; ++i) {
        const uint8_t kept = valid[i];
        const uint8_t taken = other.value_at(i).valid;
        const uint8_t null = taken == 0 ? 1 : 0;
        valid[i] = is_chosen(tested, i) ? taken : kept;
        some_null = static_cast<uint8_t>(some_null | (is_chosen(tested, i) ? null : 0));
    }
    return some_null != 0;
}

template <class T, class IsChosen, class Tested, class Other>
BIFUN_ALWAYS_INLINE bool replace_in_blocks(const frame::Output& out, uint32_t nrows, const IsChosen& is_chosen, Tested& tested,
                                           Other& other) {
    bool some_null = false;
    for (uint32_t begin = 0; begin < nrows;) {
        const uint32_t end = begin + std::min(frame::kBlockRows, nrows - begin);
        T* const values = static_cast<T*>(out.values) + begin;
        some_null |= replace_in_block(values, out.valid + begin, end - begin, is_chosen, tested.block(begin, end),
                                      other.block(begin, end));
        begin = end;
    }
    return some_null;
}

template <class T, class IsChosen, class Tested, class Other>
bool replace_in_blocks_base(const frame::Output out, uint32_t nrows, const IsChosen is_chosen, Tested& tested, Other& other) {
    return replace_in_blocks<T>(out, nrows, is_chosen, tested, other);
}

#if BIFUN_HAS_WIDE_LOOPS
template <class T, class IsChosen, class Tested, class Other>
BIFUN_WIDE bool replace_in_blocks_wide(const frame::Output out, uint32_t nrows, const IsChosen is_chosen, Tested& tested,
                                       Other& other) {
    return replace_in_blocks<T>(out, nrows, is_chosen, tested, other);
}
#endif

// Elements that do not fit a register are moved only where they are taken.
template <class T, class IsChosen, class Tested, class Other>
bool replace_row_by_row(const frame::Output& out, uint32_t nrows, const IsChosen& is_chosen, const Tested tested,
                        const Other other) {
    uint8_t* const valid = out.valid;
    T* const values = static_cast<T*>(out.values);
    bool some_null = false;
    for (uint32_t i = 0; i < nrows; ++i) {
        if (!is_chosen(tested, i)) continue;
        const auto& taken = other.value_at(i);
        values[i] = taken.value;
        valid[i] = taken.valid;
        some_null |= taken.valid == 0;
    }
    return some_null;
}

// Replaces the rows of the result that is_chosen chooses by the argument tested, read as type TestedAs, by those of other.
// Answers whether a row became NULL.
template <class T, class TestedAs, class IsChosen, class Slot>
bool replace_rows(bdta3_col* result, uint32_t nrows, const IsChosen& is_chosen, bdta3_col* tested, Slot* other) {
    if (nrows == 0) return false;
    const frame::Output out(result);
    if constexpr (sizeof(T) <= sizeof(uint64_t)) {
        auto tested_blocks = frame::blocked<TestedAs, false>(*tested);
        auto other_blocks = frame::blocked<Nullable<T>, false>(*other);
#if BIFUN_HAS_WIDE_LOOPS
        if (frame::has_wide_loops()) return replace_in_blocks_wide<T>(out, nrows, is_chosen, tested_blocks, other_blocks);
#endif
        return replace_in_blocks_base<T>(out, nrows, is_chosen, tested_blocks, other_blocks);
    } else {
        bool some_null = false;
        const auto rows = [&](const auto& tested_rows, const auto& other_rows) {
            some_null = replace_row_by_row<T>(out, nrows, is_chosen, tested_rows, other_rows);
            return 0;
        };
        with_access<std::tuple<TestedAs, Nullable<T>>, false>(rows, tested, other);
        return some_null;
    }
}

// One block in which every row takes one of two constants. Answers whether a row became NULL.
template <class T, class IsChosen, class Tested>
BIFUN_ALWAYS_INLINE bool choose_in_block(T* values, uint8_t* valid, uint32_t n, const IsChosen& is_chosen, const Tested& tested,
                                         const Nullable<T> yes, const Nullable<T> no) {
    for (uint32_t i = 0; i < n; ++i) values[i] = is_chosen(tested, i) ? yes.value : no.value;
    uint8_t some_yes = 0;
    uint8_t some_no = 0;
    for (uint32_t i = 0; i < n; ++i) {
        const uint8_t chosen = is_chosen(tested, i) ? 1 : 0;
        some_yes = static_cast<uint8_t>(some_yes | chosen);
        some_no = static_cast<uint8_t>(some_no | (chosen ^ 1));
        valid[i] = is_chosen(tested, i) ? yes.valid : no.valid;
    }
    return (some_yes != 0 && yes.valid == 0) || (some_no != 0 && no.valid == 0);
}

template <class T, class IsChosen, class Tested>
BIFUN_ALWAYS_INLINE bool choose_in_blocks(const frame::Output& out, uint32_t nrows, const IsChosen& is_chosen, Tested& tested,
                                          const Nullable<T> yes, const Nullable<T> no) {
    bool some_null = false;
    for (uint32_t begin = 0; begin < nrows;) {
        const uint32_t end = begin + std::min(frame::kBlockRows, nrows - begin);
        T* const values = static_cast<T*>(out.values) + begin;
        some_null |= choose_in_block(values, out.valid + begin, end - begin, is_chosen, tested.block(begin, end), yes, no);
        begin = end;
    }
    return some_null;
}

template <class T, class IsChosen, class Tested>
bool choose_in_blocks_base(const frame::Output out, uint32_t nrows, const IsChosen is_chosen, Tested& tested,
                           const Nullable<T> yes, const Nullable<T> no) {
    return choose_in_blocks<T>(out, nrows, is_chosen, tested, yes, no);
}

#if BIFUN_HAS_WIDE_LOOPS
template <class T, class IsChosen, class Tested>
BIFUN_WIDE bool choose_in_blocks_wide(const frame::Output out, uint32_t nrows, const IsChosen is_chosen, Tested& tested,
                                      const Nullable<T> yes, const Nullable<T> no) {
    return choose_in_blocks<T>(out, nrows, is_chosen, tested, yes, no);
}
#endif

// Fills the result with yes in the rows that is_chosen chooses, with no in the others. Answers whether a row became NULL.
template <class T, class TestedAs, class IsChosen>
bool choose_rows(bdta3_col* result, uint32_t nrows, const IsChosen& is_chosen, bdta3_col* tested, const Nullable<T>& yes,
                 const Nullable<T>& no) {
    if (nrows == 0) return false;
    const frame::Output out(result);
    auto blocks = frame::blocked<TestedAs, false>(*tested);
#if BIFUN_HAS_WIDE_LOOPS
    if (sizeof(T) <= sizeof(uint64_t) && frame::has_wide_loops())
        return choose_in_blocks_wide<T>(out, nrows, is_chosen, blocks, yes, no);
#endif
    return choose_in_blocks_base<T>(out, nrows, is_chosen, blocks, yes, no);
}

// Fills the result with a vector's rows; a failure is reported under the batch function's name.
inline Code copy_vector(const Call& call, bdta3_col* result, const bdta3_col* source, uint32_t nrows) {
    const Code code{bdta3_col_copy(call.env, call.rt_mem, result, source, nrows)};
    if (code.failed()) qzerr_stk_push(call.env, code.value, call.name);
    return code;
}

}  // namespace bifun
