// The rows of a block searched for one pattern together, where a search is all that they take.
#pragma once

#include <cstdint>
#include <cstring>

#include "bop/bifun_str/search_context.h"
#include "bop/bifun_str/text_value.h"
#include "bop/frame/blocks.h"
#include "bop/frame/worker.h"
#include "qzhost/search.h"

namespace bifun {

using TextBlock = frame::BlockView<Text>;

// The byte at which the pattern first stands in each text, counted from 1; 0 where it does not, and in rows that are NULL.
inline void find_in_block(const instr_search_ctx& ctx, uint32_t* positions, uint32_t n, const TextBlock& texts) {
    host_find_in_texts(positions, n, texts.values, texts.valid, ctx.pattern, ctx.pattern_bytes, ctx.boyer_moore.bmbc,
                       ctx.boyer_moore.bmgs);
}

enum class EmptyText : uint8_t { kIsNull, kIsSearched };

// Whether a row is NULL or, by its length and blanks, empty. Those of NULL rows may count.
template <EmptyText kEmpty>
bool some_may_be_null(const uint8_t* valid, const bdta3_colstr* texts, uint32_t n) {
    if (std::memchr(valid, 0, n) != nullptr) return true;
    uint32_t empty = 0;
    if constexpr (kEmpty == EmptyText::kIsNull) {
        for (uint32_t i = 0; i < n; ++i) empty |= (texts[i].len | texts[i].blank) == 0;
    }
    return empty != 0;
}

// Stores the positions of n rows from begin on, and their valid bytes: as they are where an empty text turns its row NULL, and
// 1 where it does not. The elements of NULL rows stay as they were.
template <EmptyText kEmpty>
void store_positions(const frame::Output& out, uint32_t begin, uint32_t n, const TextBlock& block, const uint32_t* positions) {
    // Apart, since a store through a byte pointer may alias the block.
    const bdta3_colstr* const texts = block.values;
    const uint8_t* const present = block.valid;
    uint8_t* const valid = out.valid + begin;
    int32_t* const values = static_cast<int32_t*>(out.values) + begin;
    if (!some_may_be_null<kEmpty>(present, texts, n)) {
        if constexpr (kEmpty == EmptyText::kIsNull) {
            std::memcpy(valid, present, n);
        } else {
            std::memset(valid, 1, n);
        }
        std::memcpy(values, positions, n * sizeof *values);
        return;
    }
    bool some_empty = false;
    for (uint32_t i = 0; i < n; ++i) {
        uint8_t byte = kEmpty == EmptyText::kIsNull ? present[i] : present[i] != 0;
        if (kEmpty == EmptyText::kIsNull && byte != 0 && (texts[i].len | texts[i].blank) == 0) {
            byte = 0;
            some_empty = true;
        }
        valid[i] = byte;
        const int32_t held = values[i];
        values[i] = byte != 0 ? static_cast<int32_t>(positions[i]) : held;
    }
    if (some_empty) out.result->all_valid = 0;
}

}  // namespace bifun
