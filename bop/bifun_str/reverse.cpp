// reverse: blanks are written out in front, and blanks that end up last become a count.
//
// Rows are reversed by the group: their texts are joined from the last to the first and reversed as one text, in which each
// row's is in its place then. Texts whose characters grow together so are reversed one by one.
#include <cstring>

#include "bop/bifun_str/joined_texts.h"
#include "bop/bifun_str/text.h"
#include "bop/bifun_str/text_groups.h"
#include "bop/frame/export.h"
#include "bop/frame/masked_moves.h"
#include "qzbifun/string.h"
#include "qzhost/characters.h"

namespace bifun {
namespace {

// Bytes of a value with its blanks written out. Without stored bytes they stay a count.
uint64_t written_out(const Text& text) { return text.len == 0 ? 0 : uint64_t{text.len} + text.blank; }

bdta3_colstr with_blanks_counted(char* text, uint32_t len) {
    uint32_t kept = len;
    while (kept != 0 && text[kept - 1] == ' ') --kept;
    return {kept, len - kept, text};
}

// Reverses a row's text where it stands. A row that fails has its slot all the same: whose block it is can be told.
Code put_reversed(bdta3_colstr& slot, char* text, uint32_t len) {
    slot = {len, 0, text};
    const int32_t code = qz_mbsrev_with_compatible_mode(text, len);
    if (code < 0) {
        elog_try_report_qzerr(code, __FILE__, __LINE__);
        return Code{code};
    }
    slot = with_blanks_counted(text, len);
    return kOk;
}

template <class Moves>
BIFUN_ALWAYS_INLINE void write_out(char* to, const Text& text) {
    Moves::copy(to, text.bytes, text.len);
    if (text.blank != 0) std::memset(to + text.len, ' ', text.blank);
}

struct ReverseRow {
    static constexpr Rules rules{.on_failure = OnFailure::kClear};

    static Code row(Row out, const Text& text) {
        if (text.len == 0) return put_blanks(out, text.blank);
        const uint64_t len = written_out(text);
        if (len > UINT32_MAX) return Code{EC_OUT_OF_MEMORY};
        char* const to = bdta3_col_space_alloc(out.env(), out.rt_mem(), out.result()->data, static_cast<uint32_t>(len));
        if (to == nullptr) return Code{EC_OUT_OF_MEMORY};
        write_out<PlainMoves>(to, text);
        return put_reversed(out.slot<bdta3_colstr>(), to, static_cast<uint32_t>(len));
    }
};

template <class Texts>
struct ReversedRows {
    const Call& call;
    frame::Output out;
    Texts texts;
    bool utf8;

    uint64_t bytes(uint32_t i) const { return texts.valid_at(i) == 0 ? 0 : written_out(texts.value_at(i)); }

    // Writes the texts out, the last in front. Answers whether none begins with a byte that continues a character of UTF-8.
    template <class Moves>
    BIFUN_ALWAYS_INLINE static bool join_backwards(const TextGroup& group, const Texts texts) {
        char* const end = group.space + group.bytes();
        bool begin_characters = true;
        for (uint32_t k = 0; k < group.rows; ++k) {
            const uint32_t i = group.begin + k;
            if (group.len(k) == 0) continue;
            const Text text = texts.value_at(i);
            write_out<Moves>(end - group.at[k + 1], text);
            begin_characters &= begins_utf8_character(*text.bytes);
        }
        return begin_characters;
    }

    int32_t group(const TextGroup& group) const {
        const bool begin_characters =
            with_moves([&]<class Moves>(Moves) BIFUN_INLINE_LAMBDA { return join_backwards<Moves>(group, texts); });
        const bool joined = utf8 ? begin_characters : qz_translate_from_str_has_mb(group.space, group.bytes()) == 0;
        // A text that cannot be reversed is as it was.
        return put_rows(group, joined && qz_mbsrev_with_compatible_mode(group.space, group.bytes()) >= 0);
    }

    // The rows of texts that were reversed as one, or are still to be.
    int32_t put_rows(const TextGroup& group, bool reversed) const {
        auto* const slots = static_cast<bdta3_colstr*>(out.values);
        char* const end = group.space + group.bytes();
        for (uint32_t k = 0; k < group.rows; ++k) {
            const uint32_t i = group.begin + k;
            const uint32_t len = group.len(k);
            out.valid[i] = texts.valid_at(i);
            if (out.valid[i] == 0) continue;
            if (len == 0) {
                slots[i] = {0, texts.value_at(i).blank, group.space};
            } else if (reversed) {
                slots[i] = with_blanks_counted(group.space + group.at[k], len);
            } else if (const Code code = put_reversed(slots[i], end - group.at[k + 1], len); code.failed()) {
                return frame::failed<ReverseRow>(call, out, i, code);
            }
        }
        return 0;
    }

    int32_t each(uint32_t begin, uint32_t end) const {
        ReverseRow worker;
        return frame::each_row(worker, call, out, begin, end, texts);
    }
};

struct Reverse {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* text) {
        if (nrows != 0) {
            const bool utf8 = host_takes_utf8();
            const auto rows = [&]<class Texts>(const Texts& texts) {
                return rows_in_groups(call, result, nrows, ReversedRows<Texts>{call, frame::Output(result), texts, utf8});
            };
            const int32_t code = with_access<std::tuple<Text>, false>(rows, text);
            if (code < 0) return code;
        }
        result->all_valid = text->all_valid;
        return 0;
    }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_1(breverse_a_str, Reverse, a)
