#include "host/src/vector.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>

#include "host/src/allocation.h"
#include "qzbifun/codes.h"
#include "qzhost/column.h"

namespace qzhost {
namespace {

constexpr size_t kRowAlignment = 64;  // a cache line; also the widest vector register
constexpr uint32_t kMostRows = 65536;

constexpr size_t kTextBytesPerRow = 16;  // what the first chunk of a vector plans for
constexpr size_t kSmallestFirstChunk = 1024;
constexpr size_t kLargestFirstChunk = size_t{256} << 10;
constexpr size_t kLargestPlannedChunk = size_t{64} << 20;

constexpr uint32_t kWidths[] = {
    0,
    sizeof(int32_t),
    sizeof(int64_t),
    sizeof(double),
    sizeof(float),
    sizeof(xdec),
    sizeof(qztime),
    sizeof(qz_interval_ym),
    sizeof(qz_interval_dt),
    sizeof(bdta3_colstr),
    sizeof(bdta3_colstr),
    sizeof(bdta3_colstr),
    sizeof(bdta3_colstr),
};
static_assert(std::size(kWidths) == HOST_BLOB + 1);

// Stores a text constant. A binary value or a LOB has no implied blanks.
int32_t set_text(qz_env* env, rt_memobj* rt_mem, bdta3_col* result, uint32_t row, const nstr* value) {
    if (value->has_value == 0) {
        result->data->valid[row] = 0;
        return 0;
    }
    const char* bytes = value->len <= NSTR_INLINE_BYTES ? value->nstr_inline : value->nstr_ext;
    const uint32_t blank = block_of(result->data)->type == HOST_STR ? value->blank : 0;
    return bdta3_col_assign_str(env, rt_mem, result, row, bytes, value->len, blank);
}

template <class Record>
void set_fixed(bdta3_col* result, uint32_t row, const bdta3_scalar* value) {
    const Record* record = reinterpret_cast<const Record*>(value);
    constexpr size_t width = sizeof record->value;
    std::memcpy(static_cast<char*>(result->data->values) + row * width, &record->value, width);
    result->data->valid[row] = record->has_value != 0;
}

int32_t set_value(qz_env* env, rt_memobj* rt_mem, bdta3_col* result, uint32_t row, const bdta3_scalar* value) {
    switch (block_of(result->data)->type) {
        case HOST_INT:
            set_fixed<bdta3_int>(result, row, value);
            return 0;
        case HOST_INT64:
            set_fixed<bdta3_int64>(result, row, value);
            return 0;
        case HOST_DOUBLE:
            set_fixed<bdta3_double>(result, row, value);
            return 0;
        case HOST_FLOAT:
            set_fixed<bdta3_float>(result, row, value);
            return 0;
        case HOST_DEC:
            set_fixed<bdta3_dec>(result, row, value);
            return 0;
        case HOST_DATETIME:
            set_fixed<bdta3_datetime>(result, row, value);
            return 0;
        case HOST_INTERVAL_YM:
            set_fixed<bdta3_interval_ym>(result, row, value);
            return 0;
        case HOST_INTERVAL_DT:
            set_fixed<bdta3_interval_dt>(result, row, value);
            return 0;
        default:
            return set_text(env, rt_mem, result, row, reinterpret_cast<const nstr*>(value));
    }
}

void clear_rows(Block& block) {
    std::memset(block.base.valid, 0, block.rows);
    std::memset(block.base.values, 0, size_t{block.rows} * block.width);
}

}  // namespace

char* Block::take_elsewhere(qz_env* env, rt_memobj* rt_mem, uint32_t size) {
    if (size == 0) return &no_text;
    if (size > kLongestOwnText && rt_mem != nullptr) {
        return static_cast<char*>(rt_mem->alloc(env, rt_mem->pool, size, __FILE__, __LINE__));
    }
    return take_own(size);
}

char* Block::take_own(uint32_t size) {
    const size_t step = own_step(size);
    if (step > static_cast<size_t>(end - next) && !open_chunk(step)) return nullptr;
    char* space = next;
    next += step;
    unpoison(space, size);
    return space;
}

bool Block::open_chunk(size_t size) {
    const size_t planned = newest == nullptr ? std::clamp(rows * kTextBytesPerRow, kSmallestFirstChunk, kLargestFirstChunk)
                                             : std::min(2 * static_cast<size_t>(end - newest->begin()), kLargestPlannedChunk);
    const size_t bytes = std::max(planned, size);
    void* space = allocate(sizeof(TextChunk) + bytes);
    if (space == nullptr) return false;
    newest = new (space) TextChunk{newest, static_cast<char*>(space) + sizeof(TextChunk) + bytes};
    next = newest->begin();
    end = newest->end;
    poison(next, bytes);
    return true;
}

bool Block::is_own(const char* text) const {
    constexpr std::less<const char*> before;
    for (const TextChunk* chunk = newest; chunk != nullptr; chunk = chunk->older) {
        if (!before(text, chunk->begin()) && before(text, chunk->end)) return true;
    }
    return text == &no_text;
}

void Block::drop_texts() {
    if (newest == nullptr) return;
    while (newest->older != nullptr) {
        TextChunk* dropped = newest->older;
        newest->older = dropped->older;
        release(dropped);
    }
    next = newest->begin();
    poison(next, static_cast<size_t>(end - next));
}

void Block::release_texts() {
    drop_texts();
    release(newest);
}

}  // namespace qzhost

using qzhost::Block;
using qzhost::Vector;

uint32_t host_type_width(int32_t type) { return type >= HOST_INT && type <= HOST_BLOB ? qzhost::kWidths[type] : 0; }

bdta3_col* host_col_create(qz_env* env, rt_memobj* rt_mem, int32_t type, uint32_t rows) {
    const uint32_t width = host_type_width(type);
    if (width == 0 || rows == 0 || rows > qzhost::kMostRows) return nullptr;
    void* space = qzhost::allocate(sizeof(Vector));
    void* valid = qzhost::allocate(rows, qzhost::kRowAlignment);
    void* values = qzhost::allocate(size_t{rows} * width, qzhost::kRowAlignment);
    if (space == nullptr || valid == nullptr || values == nullptr) {
        qzhost::release(values);
        qzhost::release(valid);
        qzhost::release(space);
        return nullptr;
    }
    Vector* vector = new (space) Vector{};
    vector->base.data = &vector->block.base;
    vector->block.base = {static_cast<uint8_t*>(valid), values, qzhost::set_value};
    vector->block.type = type;
    vector->block.width = width;
    vector->block.rows = rows;
    vector->env = env;
    vector->rt_mem = rt_mem;
    qzhost::clear_rows(vector->block);
    return &vector->base;
}

void host_col_destroy(bdta3_col* col) {
    if (col == nullptr) return;
    Vector* vector = qzhost::vector_of(col);
    vector->block.release_texts();
    qzhost::release(vector->selection);
    qzhost::release(vector->block.base.values);
    qzhost::release(vector->block.base.valid);
    qzhost::release(vector);
}

int32_t host_col_type(const bdta3_col* col) { return qzhost::vector_of(col)->block.type; }

uint32_t host_col_rows(const bdta3_col* col) { return qzhost::vector_of(col)->block.rows; }

void host_col_reset(bdta3_col* col) {
    Block& block = qzhost::vector_of(col)->block;
    col->all_valid = 0;
    col->sel = nullptr;
    block.drop_texts();
    qzhost::clear_rows(block);
}

int32_t host_col_set_selection(bdta3_col* col, const uint16_t* sel, uint32_t n) {
    Vector* vector = qzhost::vector_of(col);
    if (sel == nullptr) {
        col->sel = nullptr;
        return 0;
    }
    if (std::any_of(sel, sel + n, [vector](uint16_t row) { return row >= vector->block.rows; })) return EC_INVALID_ARGUMENT;
    if (n > vector->selection_capacity || vector->selection == nullptr) {
        void* space = qzhost::allocate(size_t{n} * sizeof(uint16_t));
        if (space == nullptr) return EC_OUT_OF_MEMORY;
        std::memcpy(space, sel, size_t{n} * sizeof(uint16_t));
        qzhost::release(vector->selection);
        vector->selection = static_cast<uint16_t*>(space);
        vector->selection_capacity = n;
    } else {
        std::memmove(vector->selection, sel, size_t{n} * sizeof(uint16_t));
    }
    col->sel = vector->selection;
    return 0;
}

int32_t host_col_set_text(bdta3_col* col, uint32_t row, const char* bytes, uint32_t len, uint32_t blank) {
    Vector* vector = qzhost::vector_of(col);
    if (!vector->block.holds_text() || row >= vector->block.rows) return EC_INVALID_ARGUMENT;
    return bdta3_col_assign_str(vector->env, vector->rt_mem, col, row, bytes, len, blank);
}
