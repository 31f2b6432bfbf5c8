// upper, lower and initcap.
//
// initcap raises ASCII letters alone: at the start, and behind every character that is no ASCII letter or digit. A character of
// several bytes ends a word and is never raised: 'été' is 'éTé'.
#include <cstring>

#include "bop/bifun_str/joined_texts.h"
#include "bop/bifun_str/text_groups.h"
#include "bop/bifun_str/text_runs.h"
#include "bop/frame/copy_text.h"
#include "bop/frame/export.h"
#include "bop/frame/masked_moves.h"
#include "bop/frame/shared_space.h"
#include "qzbifun/string.h"
#include "qzhost/characters.h"

namespace bifun {
namespace {

using Change = void (*)(char* text, uint32_t len);

// The row's text as it is, to be changed in place.
struct CopyRow {
    static constexpr Rules rules{.flag = FlagStore::kBeforeRows, .on_failure = OnFailure::kClear};
    static Code row(Row out, const Text& text) { return out.put_text(text.bytes, text.len, text.blank); }
};

// The store's code is not the call's. There is no text to change then, and what the row's slot holds is not this row's: it is
// NULL.
struct NlsCopyRow {
    static constexpr Rules rules{.flag = FlagStore::kBeforeRows};
    static Code row(Row out, const Text& text) { return CopyRow::row(out, text).failed() ? out.set_null() : kOk; }
};

void nothing_more(char*, uint32_t) {}

// One row after the other.
template <class Copy, Change kChange>
struct ChangeRow {
    static constexpr Rules rules = Copy::rules;
    static Code row(Row out, const Text& text) {
        const Code code = Copy::row(out, text);
        if (!code.failed() && out.is_valid()) kChange(out.slot<bdta3_colstr>().bytes, text.len);
        return code;
    }
};

// Rows are changed by the group, since a character changes by itself: their texts are copied one behind the other and changed as
// one; kStart sees to the start of each text then.
template <class Copy, Change kChange, Change kStart, class Texts>
struct ChangedRows {
    const Call& call;
    frame::Output out;
    Texts texts;
    bool utf8;

    uint64_t bytes(uint32_t i) const { return texts.valid_at(i) == 0 ? 0 : texts.value_at(i).len; }

    // Answers whether no text begins with a byte that continues a character of UTF-8.
    template <class Moves>
    BIFUN_ALWAYS_INLINE static bool join(const TextGroup& group, const Texts texts) {
        bool begin_characters = true;
        for (uint32_t k = 0; k < group.rows; ++k) {
            if (group.len(k) == 0) continue;
            const Text text = texts.value_at(group.begin + k);
            Moves::copy(group.space + group.at[k], text.bytes, text.len);
            begin_characters &= begins_utf8_character(*text.bytes);
        }
        return begin_characters;
    }

    int32_t group(const TextGroup& group) const {
        const bool begin_characters =
            with_moves([&]<class Moves>(Moves) BIFUN_INLINE_LAMBDA { return join<Moves>(group, texts); });
        const bool joined = utf8 ? begin_characters : qz_translate_from_str_has_mb(group.space, group.bytes()) == 0;
        if (joined) kChange(group.space, group.bytes());
        auto* const slots = static_cast<bdta3_colstr*>(out.values);
        for (uint32_t k = 0; k < group.rows; ++k) {
            const uint32_t i = group.begin + k;
            out.valid[i] = texts.valid_at(i) != 0;
            if (out.valid[i] == 0) continue;
            const uint32_t len = group.len(k);
            slots[i] = {len, texts.value_at(i).blank, group.text(k)};
            joined ? kStart(slots[i].bytes, len) : kChange(slots[i].bytes, len);
        }
        return 0;
    }

    int32_t each(uint32_t begin, uint32_t end) const {
        ChangeRow<Copy, kChange> worker;
        return frame::each_row(worker, call, out, begin, end, texts);
    }
};

// Texts that stand one behind the other already are copied as one too.
template <class Rows, Change kChange, Change kStart>
struct ChangedRuns {
    Rows rows;

    bool run(const TextRun& run) const {
        char* const to = take_shared_space(rows.call, rows.out.result, run.len);
        if (to == nullptr) return false;
        std::memcpy(to, run.text, run.len);
        kChange(to, run.len);
        auto* const slots = static_cast<bdta3_colstr*>(rows.out.values);
        uint8_t* const valid = rows.out.valid;
        const bdta3_colstr* const from = rows.texts.values;
        const auto moved = [&run, to](const bdta3_colstr& slot) {
            return bdta3_colstr{slot.len, slot.blank, to + (slot.bytes - run.text)};
        };
        if (run.has_null) {
            for (uint32_t i = run.begin; i < run.end; ++i) {
                valid[i] = rows.texts.valid[i] != 0;
                if (valid[i] != 0) slots[i] = moved(from[i]);
            }
        } else {
            std::memset(valid + run.begin, 1, run.end - run.begin);
            for (uint32_t i = run.begin; i < run.end; ++i) slots[i] = moved(from[i]);
        }
        if constexpr (kStart != nothing_more) {
            for (uint32_t i = run.begin; i < run.end; ++i) {
                if (valid[i] != 0) kStart(slots[i].bytes, slots[i].len);
            }
        }
        // Empty texts at the end would lead behind the space.
        for (uint32_t i = run.end; i > run.begin && (valid[i - 1] == 0 || slots[i - 1].len == 0); --i) {
            if (valid[i - 1] != 0) slots[i - 1].bytes = to;
        }
        return true;
    }

    int32_t each(uint32_t begin, uint32_t end) const { return rows_in_groups(rows.call, rows.out.result, begin, end, rows); }
};

template <class Copy, Change kChange, Change kStart = nothing_more>
struct Changed {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* text) {
        result->all_valid = text->all_valid;
        if (nrows == 0) return 0;
        const frame::Output out(result);
        const bool utf8 = host_takes_utf8();
        if (text->sel != nullptr) {
            using Rows = ChangedRows<Copy, kChange, kStart, SelectedVector<Text>>;
            return rows_in_groups(call, result, nrows, Rows{call, out, SelectedVector<Text>(*text), utf8});
        }
        using Rows = ChangedRows<Copy, kChange, kStart, DenseVector<Text>>;
        using Runs = ChangedRuns<Rows, kChange, kStart>;
        return rows_by_runs<RunOf::kCharacters>(text, nrows, Runs{{call, out, DenseVector<Text>(*text), utf8}});
    }
};

// ---- initcap ----------------------------------------------------------------------------------------------------------------

// Answers are bytes of 0 or 1, and there is no branch: the compiler makes vectors of that.
constexpr uint8_t kCaseBit = 0x20;
constexpr uint8_t is_between(uint8_t byte, uint8_t first, uint8_t last) {
    return static_cast<uint8_t>(byte - first) <= static_cast<uint8_t>(last - first);
}
// With this bit a capital is as its small letter, and nothing else becomes a letter.
constexpr uint8_t is_in_word(uint8_t byte) {
    return static_cast<uint8_t>(is_between(byte | kCaseBit, 'a', 'z') | is_between(byte, '0', '9'));
}
// A small letter behind a byte that is in a word, or is not.
constexpr uint8_t raised(uint8_t byte, uint8_t in_word) {
    return is_between(byte, 'a', 'z') > in_word ? byte ^ kCaseBit : byte;
}

// Raises the letters of a block that start a word, by the byte in front of each. A block may be raised twice, and one in front
// of it or behind it before: a capital is in the word as its small letter is.
template <uint32_t kBytes>
void raise_block(uint8_t* block) {
    uint8_t before[kBytes];
    std::memcpy(before, block - 1, kBytes);
    for (uint32_t i = 0; i < kBytes; ++i) block[i] = raised(block[i], is_in_word(before[i]));
}

// The blocks of a text but for its first byte, from the last on: so none is loaded that was just stored in part.
template <uint32_t kBytes>
void raise_blocks(uint8_t* text, uint32_t len) {
    for (uint32_t i = len; i > kBytes + 1; i -= kBytes) raise_block<kBytes>(text + i - kBytes);
    raise_block<kBytes>(text + 1);
}

// Raises the first letters of lower-case text whose longer characters have no byte of ASCII: such a byte ends a word by itself,
// part of a character or not.
void raise_capitals(char* bytes, uint32_t len) {
    auto* const text = reinterpret_cast<uint8_t*>(bytes);
    if (len == 0) return;
    if (len > 16) {
        raise_blocks<16>(text, len);
    } else if (len > 8) {
        raise_blocks<8>(text, len);
    } else if (len > 1) {
        raise_blocks<1>(text, len);
    }
    text[0] = raised(text[0], 0);
}

// The same where the second byte of a character may be a letter.
void raise_capitals_by_characters(char* text, uint32_t len) {
    const char* const end = text + len;
    uint8_t in_word = 0;
    for (char* at = text; at != end && at != nullptr;) {
        const uint8_t byte = static_cast<uint8_t>(*at);
        if (byte >= 0x80) {
            in_word = 0;
            at = const_cast<char*>(qz_mbsinc_ex(at, static_cast<uint32_t>(end - at)));
            continue;
        }
        *at = static_cast<char>(raised(byte, in_word));
        in_word = is_in_word(byte);
        ++at;
    }
}

template <Change kRaise>
void make_initcap(char* text, uint32_t len) {
    qz_mbslower_ex(text, len);
    kRaise(text, len);
}

// What the start of a text is by itself, behind other text of its run.
void raise_first(char* text, uint32_t len) {
    if (len != 0) *text = static_cast<char>(raised(static_cast<uint8_t>(*text), 0));
}

struct InitCapCopyRow {
    static constexpr Rules rules{.flag = FlagStore::kBeforeRows, .on_failure = OnFailure::kClear};
    static Code row(Row out, const Text& text) {
        char* const to = bdta3_col_space_alloc(out.env(), out.rt_mem(), out.result()->data, text.len);
        if (to == nullptr) return Code{EC_OUT_OF_MEMORY};
        copy_text(to, text.bytes, text.len);
        return out.put(bdta3_colstr{text.len, text.blank, to});
    }
};

struct InitCap {
    static constexpr uint32_t kUtf8 = 1, kEucKr = 2;

    template <Change kRaise>
    using By = Changed<InitCapCopyRow, make_initcap<kRaise>, raise_first>;

    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* text) {
        const uint32_t charset = ini_get_value(0, SERVER_CHARSET);
        return charset == kUtf8 || charset == kEucKr ? By<raise_capitals>::batch(call, result, nrows, text)
                                                     : By<raise_capitals_by_characters>::batch(call, result, nrows, text);
    }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

using Upper = Changed<CopyRow, qz_mbsupper_ex>;
using Lower = Changed<CopyRow, qz_mbslower_ex>;
using NlsUpper = Changed<NlsCopyRow, qz_mbsupper_ex>;

BIFUN_EXPORT_1(bupper_a_str, Upper, a)
BIFUN_EXPORT_1(blower_a_str, Lower, a)
BIFUN_EXPORT_1(bnls_upper_a, NlsUpper, a)
BIFUN_EXPORT_1(binitcap_a_str, InitCap, a)
