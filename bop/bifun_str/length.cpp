// Lengths of strings, and of LOBs by their locator.
//
// What is empty differs from one to the next, and with it the rows that come out NULL: for length a string without stored
// bytes, though it have blanks, for lengthb and length_space one without either; bitlength of it is 0. The compatibility modes
// in which an empty string has the length 0 differ too.
#include <algorithm>
#include <cstring>
#include <initializer_list>

#include "bop/bifun_str/text_runs.h"
#include "bop/frame/export.h"
#include "bop/switches.h"
#include "qzbifun/codes.h"
#include "qzbifun/string.h"
#include "qzhost/characters.h"
#include "qzhost/lob.h"
#include "qzhost/parameters.h"

namespace bifun {
namespace {

constexpr Rules kRules{.flag = FlagStore::kBeforeRows};

bool compat_mode_is_one_of(std::initializer_list<uint32_t> modes) {
    for (const uint32_t mode : modes) {
        if (switches.compat_mode == mode) return true;
    }
    return false;
}

// Sums of hostile counts wrap around.
int32_t bytes_with_blanks(const Text& text) { return static_cast<int32_t>(text.len + text.blank); }
bool is_empty(const Text& text) { return (text.len | text.blank) == 0; }

// ---- Characters -------------------------------------------------------------------------------------------------------------

struct WithoutBlanks {
    static bool zero_for_empty() { return compat_mode_is_one_of({3, 5}); }
    static bool is_empty(const Text& text) { return text.len == 0; }
    static int32_t length(uint32_t characters, const Text&) { return static_cast<int32_t>(characters); }
};

struct WithBlanks {
    static bool zero_for_empty() { return compat_mode_is_one_of({3, 4, 5, 7}); }
    static bool is_empty(const Text& text) { return bifun::is_empty(text); }
    static int32_t length(uint32_t characters, const Text& text) { return static_cast<int32_t>(characters + text.blank); }
};

template <class Kind>
struct LengthRow {
    static constexpr Rules rules = kRules;
    bool empty_is_null = true;

    Start prepare(const Call&, bdta3_col*) {
        empty_is_null = !Kind::zero_for_empty();
        return Start::rows();
    }
    Code row(Row out, const Text& text) const {
        if (empty_is_null && Kind::is_empty(text)) return out.set_null();
        return out.put(Kind::length(qz_mbstrlen_ex(text.bytes, text.len), text));
    }
    bool many(const frame::Output& out, uint32_t begin, uint32_t n, const frame::BlockView<Text>& texts) const {
        uint32_t counts[frame::kBlockRows];
        host_count_characters(counts, n, texts.values, texts.valid);
        store(out, begin, n, texts, [&](uint32_t i) { return counts[i]; });
        return true;
    }

    // n rows from begin on, of so many characters.
    template <class Count>
    void store(const frame::Output& out, uint32_t begin, uint32_t n, const frame::BlockView<Text>& texts, Count&& count) const {
        uint8_t* const valid = out.valid + begin;
        int32_t* const values = static_cast<int32_t*>(out.values) + begin;
        uint32_t present = 0;
        uint32_t kept = 0;
        for (uint32_t i = 0; i < n; ++i) {
            const uint8_t was = texts.valid[i] != 0;
            valid[i] = was & !(empty_is_null & Kind::is_empty(texts.value_at(i)));
            present += was;
            kept += valid[i];
        }
        if (kept != present) out.result->all_valid = 0;
        if (kept == n) {
            for (uint32_t i = 0; i < n; ++i) values[i] = Kind::length(count(i), texts.value_at(i));
            return;
        }
        for (uint32_t i = 0; i < n; ++i) {
            if (valid[i] != 0) values[i] = Kind::length(count(i), texts.value_at(i));
        }
    }
};

// In a run of single bytes the characters need not be counted.
template <class Kind>
struct LengthRows {
    frame::Output out;
    DenseVector<Text> texts;
    LengthRow<Kind> worker;

    bool run(const TextRun& run) const {
        const auto view = block(run.begin);
        worker.store(out, run.begin, run.end - run.begin, view, [&](uint32_t i) { return view.values[i].len; });
        return true;
    }
    int32_t each(uint32_t begin, uint32_t end) const {
        for (; begin < end; begin += frame::kBlockRows) {
            (void)worker.many(out, begin, std::min(end - begin, frame::kBlockRows), block(begin));
        }
        return 0;
    }

  private:
    frame::BlockView<Text> block(uint32_t begin) const { return {texts.values + begin, texts.valid + begin}; }
};

template <class Kind>
struct LengthInCharacters {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* text) {
        if (nrows == 0 || text->sel != nullptr) return run<LengthRow<Kind>>(call, result, nrows, text);
        result->all_valid = text->all_valid;
        using Rows = LengthRows<Kind>;
        return rows_by_runs<RunOf::kSingleBytes>(
            text, nrows, Rows{frame::Output(result), DenseVector<Text>(*text), {!Kind::zero_for_empty()}});
    }
};

// NULL rows are none of the frame's business, but in one mode, which is the parameter's and not the switch's, they have a
// length.
struct LengthOfNullToo {
    static constexpr uint32_t kMode = 5;

    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* text) {
        const int32_t code = run<LengthInCharacters<WithoutBlanks>>(call, result, nrows, text);
        if (code < 0 || nrows == 0 || ini_get_value(0, COMPAT_MODE_PARAM) != kMode) return code;
        const bdta3_int zero{1, 0};
        const auto rows = [&](const auto& access) {
            for (uint32_t i = 0; i < nrows; ++i) {
                if (access.valid_at(i) == 0) bdta3_set_int(call.env, call.rt_mem, result, i, &zero);
            }
            return 0;
        };
        return with_access<std::tuple<Text>, false>(rows, text);
    }
};

// ---- Bytes ------------------------------------------------------------------------------------------------------------------

struct LengthBytes {
    static constexpr Rules rules = kRules;
    static constexpr bool total = true;
    bool empty_is_null = true;

    Start prepare(const Call&, bdta3_col*) {
        empty_is_null = !WithBlanks::zero_for_empty();
        return Start::rows();
    }
    bool makes_null(const Text& text) const { return is_empty(text) && empty_is_null; }
    int32_t row(const Text& text) const { return bytes_with_blanks(text); }
};

struct BitLength {
    static constexpr Rules rules{.store = Store::kKeep};
    static constexpr bool total = true;
    static int32_t row(const Text& text) { return static_cast<int32_t>((text.len + text.blank) * 8); }
};

// The locator is the host's, and a slot may hold anything: a length that is not there is not read.
struct LobLength {
    static constexpr Rules rules{};
    static constexpr int64_t kNotKnown = -1;

    static int64_t row(const Text& locator) {
        if (locator.len == 0) return 0;
        if (locator.bytes[LOB_KIND_AT] == LOB_KIND_LONG) return read<int64_t>(locator, LOB_LONG_LENGTH_AT);
        const int64_t length = read<uint32_t>(locator, LOB_SHORT_LENGTH_AT);
        return length == LOB_LENGTH_UNKNOWN ? kNotKnown : length;
    }

    template <class Number>
    static int64_t read(const Text& locator, uint32_t at) {
        Number number;
        if (locator.len < at + sizeof number) return kNotKnown;
        std::memcpy(&number, locator.bytes + at, sizeof number);
        return number;
    }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_1(blength_a_str, LengthOfNullToo, a)
BIFUN_EXPORT_1(blengthb_a_str, LengthBytes, a)
BIFUN_EXPORT_1(blength_space_a_str, LengthInCharacters<WithBlanks>, a)
BIFUN_EXPORT_1(bbitlength_a_str, BitLength, a)
BIFUN_EXPORT_1(blengthb_blob_a_str, LobLength, a)
