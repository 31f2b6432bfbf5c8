// upper, lower and initcap.
//
// initcap raises ASCII letters alone: at the start, and behind every character that is no ASCII letter or digit. A character of
// several bytes ends a word and is never raised: 'été' is 'éTé'.
#include <cstring>

#include "bop/bifun_str/text_runs.h"
#include "bop/frame/copy_text.h"
#include "bop/frame/export.h"
#include "qzbifun/string.h"
#include "qzhost/characters.h"

namespace bifun {
namespace {

using Change = void (*)(char* text, uint32_t len);

// The row's text as it is, to be changed in place.
template <Change kChange>
Code put_changed(Row out, const Text& text) {
    const Code code = out.put_text(text.bytes, text.len, text.blank);
    if (!code.failed()) kChange(out.slot<bdta3_colstr>().bytes, text.len);
    return code;
}

template <Change kFold>
struct FoldRow {
    static constexpr Rules rules{.on_failure = OnFailure::kClear};
    static Code row(Row out, const Text& text) { return put_changed<kFold>(out, text); }
};

// The store's code is not the call's. There is no text to fold then, and what the row's slot holds is not this row's: it is
// NULL.
struct NlsUpperRow {
    static constexpr Rules rules{.flag = FlagStore::kBeforeRows};
    static Code row(Row out, const Text& text) {
        return put_changed<qz_mbsupper_ex>(out, text).failed() ? out.set_null() : kOk;
    }
};

void nothing_more(char*, uint32_t) {}

// Runs are copied and changed as a whole, since a character changes by itself; kStart sees to the start of each row's text then.
template <class RowWorker, Change kChange, Change kStart>
struct ChangedRows {
    const Call& call;
    frame::Output out;
    DenseVector<Text> texts;
    RowWorker worker;

    bool run(const TextRun& run) {
        char* const to = own_space(call, out.result, run.len);
        if (to == nullptr) return false;
        std::memcpy(to, run.text, run.len);
        kChange(to, run.len);
        auto* const slots = static_cast<bdta3_colstr*>(out.values);
        for (uint32_t i = run.begin; i < run.end; ++i) {
            out.valid[i] = texts.valid_at(i) != 0;
            if (out.valid[i] == 0) continue;
            const Text text = texts.value_at(i);
            // An empty text at the end of the run would lead behind it.
            slots[i] = {text.len, text.blank, text.len == 0 ? to : to + (text.bytes - run.text)};
            kStart(slots[i].bytes, text.len);
        }
        return true;
    }
    int32_t each(uint32_t begin, uint32_t end) { return frame::each_row<RowWorker>(worker, call, out, begin, end, texts); }
};

template <class RowWorker, Change kChange, Change kStart = nothing_more>
struct Changed {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* text) {
        if (nrows == 0 || text->sel != nullptr) return run<RowWorker>(call, result, nrows, text);
        result->all_valid = text->all_valid;
        using Rows = ChangedRows<RowWorker, kChange, kStart>;
        return rows_by_runs<RunOf::kCharacters>(text, nrows, Rows{call, frame::Output(result), DenseVector<Text>(*text), {}});
    }
};

// ---- initcap ----------------------------------------------------------------------------------------------------------------

constexpr uint64_t kEachByte = 0x0101010101010101u;
constexpr uint64_t kHighBits = kEachByte * 0x80;
constexpr size_t kWord = sizeof(uint64_t);

// The high bit of each byte that is between two characters of ASCII. Sums of seven bits do not carry into the next byte.
constexpr uint64_t bytes_between(uint64_t ascii, char first, char last) {
    const uint64_t not_below = ascii + kEachByte * static_cast<uint64_t>(0x80 - first);
    const uint64_t above = ascii + kEachByte * static_cast<uint64_t>(0x80 - last - 1);
    return not_below & ~above & kHighBits;
}

struct Capitals {
    uint64_t in_word;  // letters of either case and digits
    uint64_t small;    // letters that are still small
};

constexpr Capitals capitals_of(uint64_t word) {
    // With this bit a capital is as its small letter, and nothing else becomes a letter.
    const uint64_t letters = bytes_between(word | kEachByte * 0x20, 'a', 'z');
    return {letters | bytes_between(word, '0', '9'), letters & word << 2};
}

// Eight bytes of ASCII. behind: whether the byte in front of them is in a word.
constexpr uint64_t raise_word(uint64_t word, const Capitals& capitals, uint64_t behind) {
    return word ^ (capitals.small & ~(capitals.in_word << 8 | behind << 7)) >> 2;  // from the high bit to that of the case
}

uint64_t load_word(const char* at) {
    uint64_t word;
    std::memcpy(&word, at, kWord);
    return word;
}

// The text from at on, character by character, where it is not ASCII.
void raise_characters(char* at, const char* end, bool in_word) {
    while (at != end) {
        const char byte = *at;
        if (static_cast<unsigned char>(byte) >= 0x80) {
            in_word = false;
            at = const_cast<char*>(qz_mbsinc_ex(at, static_cast<uint32_t>(end - at)));
            if (at == nullptr) return;
            continue;
        }
        const bool small = byte >= 'a' && byte <= 'z';
        if (small && !in_word) *at = static_cast<char>(byte - 0x20);
        in_word = small || (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z');
        ++at;
    }
}

// Raises the first letters of lower-case text. Eight bytes at a time as long as it is ASCII; what is left of the last eight is
// done with bytes that were done before, which stay as they are.
void raise_capitals(char* text, uint32_t len) {
    char* const end = text + len;
    char* at = text;
    uint64_t behind = 0;
    while (end - at >= static_cast<ptrdiff_t>(kWord)) {
        const uint64_t word = load_word(at);
        if ((word & kHighBits) != 0) return raise_characters(at, end, behind != 0);
        const Capitals capitals = capitals_of(word);
        const uint64_t raised = raise_word(word, capitals, behind);
        std::memcpy(at, &raised, kWord);
        behind = capitals.in_word >> 63;
        at += kWord;
    }
    const size_t rest = static_cast<size_t>(end - at);
    if (rest == 0) return;
    if (len < kWord) return raise_characters(at, end, behind != 0);
    const uint64_t word = load_word(end - kWord);
    if ((word & kHighBits) != 0) return raise_characters(at, end, behind != 0);
    // The bytes in front of the rest are not looked at again: what is in front of them is not in the word.
    const uint64_t fresh = ~uint64_t{0} << 8 * (kWord - rest);
    const Capitals capitals = capitals_of(word);
    const uint64_t raised = (raise_word(word, capitals, 0) & fresh) | (word & ~fresh);
    std::memcpy(end - kWord, &raised, kWord);
}

void make_initcap(char* text, uint32_t len) {
    qz_mbslower_ex(text, len);
    raise_capitals(text, len);
}

// What the start of a text is by itself, behind other text of its run.
void raise_first(char* text, uint32_t len) {
    if (len != 0 && *text >= 'a' && *text <= 'z') *text = static_cast<char>(*text - 0x20);
}

struct InitCapRow {
    static constexpr Rules rules{.on_failure = OnFailure::kClear};
    static Code row(Row out, const Text& text) {
        char* const to = bdta3_col_space_alloc(out.env(), out.rt_mem(), out.result()->data, text.len);
        if (to == nullptr) return Code{EC_OUT_OF_MEMORY};
        copy_text(to, text.bytes, text.len);
        make_initcap(to, text.len);
        return out.put(bdta3_colstr{text.len, text.blank, to});
    }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

using Upper = Changed<FoldRow<qz_mbsupper_ex>, qz_mbsupper_ex>;
using Lower = Changed<FoldRow<qz_mbslower_ex>, qz_mbslower_ex>;
using NlsUpper = Changed<NlsUpperRow, qz_mbsupper_ex>;
using InitCap = Changed<InitCapRow, make_initcap, raise_first>;

BIFUN_EXPORT_1(bupper_a_str, Upper, a)
BIFUN_EXPORT_1(blower_a_str, Lower, a)
BIFUN_EXPORT_1(bnls_upper_a, NlsUpper, a)
BIFUN_EXPORT_1(binitcap_a_str, InitCap, a)
