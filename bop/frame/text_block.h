// The texts of a block of rows, written one behind the other and moved to the result as one: a store for each row would be a
// call, and branches on a length that cannot be foreseen.
#pragma once

#include <cstdint>
#include <cstring>

#include "bop/frame/blocks.h"
#include "bop/frame/call.h"
#include "bop/frame/shared_space.h"
#include "bop/frame/worker.h"

namespace bifun {

// Writer: `static int32_t write(char* to, x)` writes a text that is not empty and answers its length, or what is negative for a
// row that is to be done by itself; and `static constexpr uint32_t kBytes`, which it may write at most, the text or what it
// leaves behind it. False: the rows from some row on are to be done one by one, and the result has nothing of those yet that
// stand above a row that fails.
template <class Writer, class View>
bool put_texts(const Call& call, const frame::Output& out, uint32_t begin, uint32_t n, const View& x) {
    static_assert(Writer::kBytes < kMostSharedBytes);
    char texts[kMostSharedBytes];
    uint16_t ends[frame::kBlockRows];
    uint8_t* const valid = out.valid + begin;
    auto* const slots = static_cast<bdta3_colstr*>(out.values) + begin;
    for (uint32_t first = 0, end = 0; first < n; first = end) {
        uint32_t size = 0;
        for (; end < n && size <= kMostSharedBytes - Writer::kBytes; ++end) {
            if (x.valid_at(end) != 0) {
                const int32_t len = Writer::write(texts + size, x.value_at(end));
                if (len < 0) [[unlikely]]
                    return false;
                size += static_cast<uint32_t>(len);
            }
            ends[end] = static_cast<uint16_t>(size);
        }
        char* const space = size == 0 ? nullptr : take_shared_space(call, out.result, size);
        if (size != 0) {
            if (space == nullptr) return false;
            std::memcpy(space, texts, size);
        }
        uint32_t start = 0;
        for (uint32_t i = first; i < end; ++i) {
            valid[i] = x.valid_at(i) != 0;
            if (valid[i] != 0) slots[i] = {ends[i] - start, 0, space + start};
            start = ends[i];
        }
    }
    return true;
}

}  // namespace bifun
