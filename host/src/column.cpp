#include "qzhost/column.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "host/src/allocation.h"
#include "host/src/vector.h"
#include "qzbifun/codes.h"
#include "qzhost/lob.h"

using qzhost::Block;

namespace {

bdta3_colstr& slot_of(bdta3_coldata* block, uint32_t row) { return static_cast<bdta3_colstr*>(block->values)[row]; }

// Two overlapping moves of a fixed width cover every length from that width to its double.
template <size_t kWidth>
void move_ends(char* to, const char* from, uint32_t len) {
    char head[kWidth], tail[kWidth];
    std::memcpy(head, from, kWidth);
    std::memcpy(tail, from + len - kWidth, kWidth);
    std::memcpy(to, head, kWidth);
    std::memcpy(to + len - kWidth, tail, kWidth);
}

// memcpy for lengths that are mostly short and that the compiler does not know.
void copy_text(char* to, const char* from, uint32_t len) {
    if (len > 32) {
        std::memcpy(to, from, len);
    } else if (len > 16) {
        move_ends<16>(to, from, len);
    } else if (len >= 8) {
        move_ends<8>(to, from, len);
    } else if (len >= 4) {
        move_ends<4>(to, from, len);
    } else if (len >= 2) {
        move_ends<2>(to, from, len);
    } else if (len == 1) {
        *to = *from;
    }
}

// Copies of elements of one width, row by row through a selection.
template <size_t kWidth>
void gather(char* to, const char* from, const uint16_t* sel, uint32_t n) {
    for (uint32_t i = 0; i < n; ++i) std::memcpy(to + i * kWidth, from + sel[i] * kWidth, kWidth);
}

void gather(char* to, const char* from, const uint16_t* sel, uint32_t n, uint32_t width) {
    switch (width) {
        case sizeof(int32_t):
            return gather<sizeof(int32_t)>(to, from, sel, n);
        case sizeof(int64_t):
            return gather<sizeof(int64_t)>(to, from, sel, n);
        case sizeof(qz_interval_ym):
            return gather<sizeof(qz_interval_ym)>(to, from, sel, n);
        case sizeof(qztime):
            return gather<sizeof(qztime)>(to, from, sel, n);
        case sizeof(bdta3_colstr):
            return gather<sizeof(bdta3_colstr)>(to, from, sel, n);
        case sizeof(qz_interval_dt):
            return gather<sizeof(qz_interval_dt)>(to, from, sel, n);
        default:
            return gather<sizeof(xdec)>(to, from, sel, n);
    }
}

void gather_valid(uint8_t* to, const uint8_t* from, const uint16_t* sel, uint32_t n) {
    for (uint32_t i = 0; i < n; ++i) to[i] = from[sel[i]];
}

// The rows of a vector that are to be copied, of a source that is not the destination.
struct Rows {
    const uint8_t* valid;
    const void* values;
    const uint16_t* sel;
    uint32_t n;
};

void copy_fixed(Block& block, const Rows& rows) {
    char* values = static_cast<char*>(block.base.values);
    if (rows.sel == nullptr) {
        std::memcpy(block.base.valid, rows.valid, rows.n);
        std::memcpy(values, rows.values, size_t{rows.n} * block.width);
    } else {
        gather_valid(block.base.valid, rows.valid, rows.sel, rows.n);
        gather(values, static_cast<const char*>(rows.values), rows.sel, rows.n, block.width);
    }
}

// Copies the text of one row that has a value. EC_OUT_OF_MEMORY: the destination's slot is as before.
int32_t copy_slot(qz_env* env, rt_memobj* rt_mem, Block& block, bdta3_colstr& to, const bdta3_colstr& from) {
    const bdta3_colstr slot = from;
    char* space = block.take(env, rt_mem, slot.len);
    if (space == nullptr) return EC_OUT_OF_MEMORY;
    copy_text(space, slot.bytes, slot.len);
    to = {slot.len, slot.blank, space};
    return 0;
}

// Rows whose texts stand one behind the other, as a vector stores them row by row: one move copies them all.
struct Run {
    uint32_t end;   // first row behind the run
    uint32_t size;  // bytes of its texts
};

constexpr uint32_t kLongestRun = 32 * 1024;  // bytes: the slots and texts of a run are still in the cache when they are copied

Run find_run(const bdta3_colstr* slots, const uint8_t* valid, uint32_t first, uint32_t n) {
    const char* next = slots[first].bytes;
    uint32_t size = 0;
    uint32_t row = first;
    for (; row < n && valid[row] != 0; ++row) {
        const bdta3_colstr& slot = slots[row];
        if (slot.bytes != next || slot.len - 1 >= qzhost::kLongestOwnText || size > kLongestRun) break;
        next += slot.len;
        size += slot.len;
    }
    return {row, size};
}

// Slots of NULL rows stay as they are: they need not point to anything. After a failure no row is left half copied.
int32_t copy_texts(qz_env* env, rt_memobj* rt_mem, Block& block, const Rows& rows) {
    const bdta3_colstr* from = static_cast<const bdta3_colstr*>(rows.values);
    bdta3_colstr* to = static_cast<bdta3_colstr*>(block.base.values);
    std::memcpy(block.base.valid, rows.valid, rows.n);
    for (uint32_t row = 0; row < rows.n;) {
        if (rows.valid[row] == 0) {
            ++row;
            continue;
        }
        const Run run = find_run(from, rows.valid, row, rows.n);
        char* space = run.end - row < 2 ? nullptr : block.take_own(run.size);
        if (space != nullptr) {
            const char* begin = from[row].bytes;
            std::memcpy(space, begin, run.size);
            for (; row < run.end; ++row) to[row] = {from[row].len, from[row].blank, space + (from[row].bytes - begin)};
        } else {
            if (copy_slot(env, rt_mem, block, to[row], from[row]) < 0) {
                std::memset(block.base.valid + row, 0, rows.n - row);
                return EC_OUT_OF_MEMORY;
            }
            ++row;
        }
    }
    return 0;
}

int32_t gather_texts(qz_env* env, rt_memobj* rt_mem, Block& block, const Rows& rows) {
    const bdta3_colstr* from = static_cast<const bdta3_colstr*>(rows.values);
    bdta3_colstr* to = static_cast<bdta3_colstr*>(block.base.values);
    uint8_t* valid = block.base.valid;
    for (uint32_t i = 0; i < rows.n; ++i) {
        const uint32_t row = rows.sel[i];
        valid[i] = rows.valid[row];
        if (valid[i] != 0 && copy_slot(env, rt_mem, block, to[i], from[row]) < 0) {
            std::memset(valid + i, 0, rows.n - i);
            return EC_OUT_OF_MEMORY;
        }
    }
    return 0;
}

int32_t copy_rows(qz_env* env, rt_memobj* rt_mem, Block& block, const Rows& rows) {
    if (block.holds_text()) {
        return rows.sel == nullptr ? copy_texts(env, rt_mem, block, rows) : gather_texts(env, rt_mem, block, rows);
    }
    copy_fixed(block, rows);
    return 0;
}

// Copies a vector onto itself through a selection, by way of a dense copy of the rows.
int32_t rearrange(qz_env* env, rt_memobj* rt_mem, Block& block, const Rows& rows) {
    char* values = static_cast<char*>(qzhost::allocate(size_t{rows.n} * (block.width + 1)));
    if (values == nullptr) return EC_OUT_OF_MEMORY;
    uint8_t* valid = reinterpret_cast<uint8_t*>(values + size_t{rows.n} * block.width);
    gather(values, static_cast<const char*>(rows.values), rows.sel, rows.n, block.width);
    gather_valid(valid, rows.valid, rows.sel, rows.n);
    const int32_t code = copy_rows(env, rt_mem, block, {valid, values, nullptr, rows.n});
    qzhost::release(values);
    return code;
}

// A text in a LOB vector is a value whose data stands in the locator.
int32_t assign_in_row_lob(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row, const char* text, uint32_t len) {
    if (len > UINT32_MAX - LOB_DATA_AT) return EC_OUT_OF_MEMORY;
    Block& block = *qzhost::block_of(col->data);
    uint32_t locator_len = LOB_DATA_AT + len;
    char* locator = block.take(env, rt_mem, locator_len);
    if (locator == nullptr) return EC_OUT_OF_MEMORY;
    const int32_t code = host_lob_make(env, LOB_KIND_IN_ROW, block.type == HOST_CLOB, text, len,
                                       reinterpret_cast<uint8_t*>(locator), &locator_len);
    if (code < 0) return code;
    slot_of(col->data, row) = {locator_len, 0, locator};
    col->data->valid[row] = 1;
    return 0;
}

constexpr uint64_t kEightBlanks = 0x2020202020202020;

bool are_eight_blanks(const char* bytes) {
    uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word == kEightBlanks;
}

}  // namespace

int32_t bdta3_col_assign_str(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row, const char* text, uint32_t len,
                             uint32_t blank) {
    char* space = qzhost::block_of(col->data)->take(env, rt_mem, len);
    if (space == nullptr) return EC_OUT_OF_MEMORY;
    copy_text(space, text, len);
    slot_of(col->data, row) = {len, blank, space};
    col->data->valid[row] = 1;
    return 0;
}

int32_t bdta3_col_assign_bin(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row, const void* data, uint32_t len) {
    return bdta3_col_assign_str(env, rt_mem, col, row, static_cast<const char*>(data), len, 0);
}

int32_t bdta3_col_assign_text(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row, const char* text, uint32_t len) {
    if (qzhost::block_of(col->data)->holds_lobs()) return assign_in_row_lob(env, rt_mem, col, row, text, len);
    return bdta3_col_assign_str(env, rt_mem, col, row, text, len, 0);
}

int32_t bdta3_set_str_from_str(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row, const char* text) {
    return bdta3_col_assign_str(env, rt_mem, col, row, text, static_cast<uint32_t>(std::strlen(text)), 0);
}

int32_t bdta3_set_str_from_str_with_len(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row, const char* text,
                                        uint32_t len) {
    return bdta3_col_assign_str(env, rt_mem, col, row, text, len, 0);
}

char* bdta3_colstr_assign_without_value(qz_env* env, rt_memobj* rt_mem, bdta3_coldata* block, uint32_t row, uint32_t len,
                                        uint32_t blank) {
    char* space = qzhost::block_of(block)->take(env, rt_mem, len);
    if (space != nullptr) slot_of(block, row) = {len, blank, space};
    return space;
}

char* bdta3_col_space_alloc(qz_env* env, rt_memobj* rt_mem, bdta3_coldata* block, uint32_t size) {
    return qzhost::block_of(block)->take(env, rt_mem, size);
}

int32_t bdta3_colstr_copy(qz_env* env, rt_memobj* rt_mem, bdta3_coldata* block, bdta3_colstr* destination,
                          const bdta3_colstr* source) {
    char* space = qzhost::block_of(block)->take(env, rt_mem, source->len);
    if (space == nullptr) return EC_OUT_OF_MEMORY;
    copy_text(space, source->bytes, source->len);
    *destination = {source->len, source->blank, space};
    return 0;
}

void bdta3_colstr_trim(bdta3_colstr* slot, uint32_t len) {
    uint32_t kept = len;
    while (kept >= 8 && are_eight_blanks(slot->bytes + kept - 8)) kept -= 8;
    while (kept != 0 && slot->bytes[kept - 1] == ' ') --kept;
    slot->blank += len - kept;
    slot->len = kept;
}

int32_t bdta3_colstr_cmp_with_blank(const bdta3_colstr* slot, const bdta3_colstr* other, int32_t) {
    const uint32_t common = std::min(slot->len, other->len);
    const int order = common == 0 ? 0 : std::memcmp(slot->bytes, other->bytes, common);
    if (order != 0) return order;
    const bdta3_colstr& longer = slot->len > common ? *slot : *other;
    uint32_t i = common;
    while (longer.len - i >= 8 && are_eight_blanks(longer.bytes + i)) i += 8;
    for (; i < longer.len; ++i) {
        const int byte = static_cast<unsigned char>(longer.bytes[i]);
        if (byte != ' ') return &longer == slot ? byte - ' ' : ' ' - byte;
    }
    return 0;
}

void bdta3_colstr_to_nstr_fast(const bdta3_colstr* slot, nstr* value) {
    value->has_value = 1;
    value->len = slot->len;
    value->blank = slot->blank;
    value->nstr_cap = 0;
    if (slot->len > NSTR_INLINE_BYTES) {
        value->nstr_ext = slot->bytes;
    } else {
        copy_text(value->nstr_inline, slot->bytes, slot->len);
        value->nstr_ext = value->nstr_inline;
    }
}

int32_t bdta3_str_is_in_local(const bdta3_coldata* block, const char* text) { return qzhost::block_of(block)->is_own(text); }

int32_t bdta3_col_copy(qz_env* env, rt_memobj* rt_mem, bdta3_col* destination, const bdta3_col* source, uint32_t nrows) {
    Block& block = *qzhost::block_of(destination->data);
    const Rows rows{source->data->valid, source->data->values, source->sel, nrows};
    int32_t code = 0;
    if (nrows != 0 && source->data->values != block.base.values) {
        code = copy_rows(env, rt_mem, block, rows);
    } else if (nrows != 0 && source->sel != nullptr) {
        code = rearrange(env, rt_mem, block, rows);
    }
    if (code == 0) destination->all_valid = source->all_valid;
    return code;
}

int32_t ntype_is_double_overflow(double value) { return std::isinf(value) ? EC_DATA_OVERFLOW : 0; }

int32_t ntype_is_float_overflow(double value) {
    // Half a unit above the largest float: from here on the nearest float, ties to even, is infinite.
    constexpr double kBound = 0x1.ffffffp127;
    return std::fabs(value) >= kBound ? EC_DATA_OVERFLOW : 0;
}
