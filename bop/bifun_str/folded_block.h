// The texts of a block of rows with their case folded, in a copy, for a search that does not heed case: joined and folded as one,
// since a character is folded by itself.
#pragma once

#include <cstdint>

#include "bop/bifun_str/find_in_block.h"
#include "bop/bifun_str/folded_copy.h"
#include "bop/bifun_str/joined_texts.h"
#include "bop/frame/masked_moves.h"
#include "qzhost/characters.h"

namespace bifun {

class FoldedBlock {
  public:
    FoldedBlock() {}

    // Folds the first texts of a block, as many as there is room for, and answers how many. 0: not even the first, which is to
    // be folded by itself.
    uint32_t fold(const TextBlock& texts, uint32_t n, FoldInPlace* fold_text, bool utf8) {
        const Joined joined = with_moves([&]<class Moves>(Moves) BIFUN_INLINE_LAMBDA { return join<Moves>(texts, n); });
        if (utf8 ? joined.begin_characters : qz_translate_from_str_has_mb(bytes_, joined.bytes) == 0) {
            fold_text(bytes_, joined.bytes);
        } else {
            for (uint32_t i = 0; i < joined.rows; ++i) {
                if (texts.valid[i] != 0) fold_text(slots_[i].bytes, slots_[i].len);
            }
        }
        return joined.rows;
    }

    // With the valid bytes of the block that was folded.
    const bdta3_colstr* texts() const { return slots_; }

  private:
    // A whole block of short texts.
    static constexpr uint32_t kBytes = 16384;

    struct Joined {
        uint32_t rows;
        uint32_t bytes;
        bool begin_characters;  // none begins with a byte that continues a character of UTF-8
    };

    template <class Moves>
    BIFUN_ALWAYS_INLINE Joined join(const TextBlock& texts, uint32_t n) {
        Joined joined{0, 0, true};
        for (; joined.rows < n; ++joined.rows) {
            slots_[joined.rows] = {};
            if (texts.valid[joined.rows] == 0) continue;
            const bdta3_colstr& text = texts.values[joined.rows];
            if (text.len > kBytes - joined.bytes) break;
            char* const to = bytes_ + joined.bytes;
            slots_[joined.rows] = {text.len, text.blank, to};
            if (text.len == 0) continue;
            Moves::copy(to, text.bytes, text.len);
            joined.begin_characters &= begins_utf8_character(*text.bytes);
            joined.bytes += text.len;
        }
        return joined;
    }

    bdta3_colstr slots_[frame::kBlockRows];
    char bytes_[kBytes];
};

// find_in_block of texts in upper case. False: a text is too long for a copy of many.
inline bool find_folded_in_block(const instr_search_ctx& ctx, uint32_t* positions, uint32_t n, const TextBlock& texts) {
    FoldedBlock folded;
    const bool utf8 = host_takes_utf8();
    for (uint32_t i = 0; i < n;) {
        const uint32_t rows = folded.fold({texts.values + i, texts.valid + i}, n - i, qz_mbsupper_ex, utf8);
        if (rows == 0) return false;
        find_in_block(ctx, positions + i, rows, {folded.texts(), texts.valid + i});
        i += rows;
    }
    return true;
}

}  // namespace bifun
