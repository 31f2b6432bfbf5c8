// position(pattern in text): where the pattern first stands in the text, counted from 1; 0 where it does not.
//
// What looks odd and is meant:
//   - An empty pattern makes every row 1 and valid, rows of a NULL text too; only all_valid is still the text's. So does a NULL
//     one.
//   - The position is a byte: 'b' stands in the UTF-8 text 'éb' at 3. But where the pattern has implied blanks that are all
//     found among the text's implied ones, it is a character: 'b' and one blank stand in 'éb' and one blank at 2, and in 'éb c'
//     at 3. On text of single bytes the two agree.
//   - A hit of the pattern's stored part that ends the stored text decides: with too few implied blanks behind it the value is
//     0.
//   - A pattern of blanks alone is found in the stored bytes, or else whole among the implied blanks, never across the border:
//     two blanks stand in 'a ' and one blank nowhere, and in 'a ' and two blanks at 3.
//
// Where case_sensitive is 0, pattern and texts are folded to upper case first, the texts in a buffer. One that is longer than a
// string may be is folded in a block of the memory object.
#include <cstdint>

#include "bop/bifun_str/blank_check.h"
#include "bop/bifun_str/find_in_block.h"
#include "bop/bifun_str/folded_block.h"
#include "bop/bifun_str/folded_copy.h"
#include "bop/bifun_str/local_string.h"
#include "bop/bifun_str/search_context.h"
#include "bop/frame/export.h"
#include "qzbifun/string.h"
#include "qzhost/characters.h"

namespace bifun {
namespace {

// Searches for blanks that all stand, as the pattern is written out.
struct BlankPattern {
    static constexpr bool kIsBlank = true;

    static int32_t take(LocalString& local, const Call& call, const nstr& pattern, bool) {
        const Text blanks{nullptr, 0, pattern.blank};
        return local.write_out(call.env, call.rt_mem, blanks);
    }

    static int32_t find(const instr_search_ctx& ctx, const Text& text, uint32_t) {
        const uint32_t blanks = ctx.pattern_bytes;
        if (blanks > uint64_t{text.len} + text.blank) return 0;
        if (const uint32_t hit = ctx.find(text.bytes, text.len); hit != 0) return static_cast<int32_t>(hit);
        return text.blank >= blanks ? static_cast<int32_t>(text.len + 1) : 0;
    }
};

// Searches for the stored part, and looks at the blanks around a hit.
struct StoredPattern {
    static constexpr bool kIsBlank = false;

    // One that is not folded is taken as it stands.
    static int32_t take(LocalString& local, const Call& call, const nstr& pattern, bool folded) {
        return folded ? local.copy(call.env, call.rt_mem, pattern) : 0;
    }

    static int32_t find(const instr_search_ctx& ctx, const Text& text, uint32_t blanks) {
        if (ctx.pattern_bytes > text.len) return 0;
        // No branch on whether there is a hit, which no one can foresee.
        if (blanks == 0) return static_cast<int32_t>(ctx.find(text.bytes, text.len));
        const BlankedHit hit = find_with_blanks(ctx, text, blanks);
        if (hit.ends_stored_text) return static_cast<int32_t>(qz_mbstrlen_ex(text.bytes, hit.place - 1)) + 1;
        return static_cast<int32_t>(hit.place);
    }
};

template <class Pattern, bool kFolded>
struct PositionOf {
    static constexpr Rules rules{
        .constants = ConstantNull::kIgnored,
        .flag = FlagStore::kBeforeRows,
        .on_failure = OnFailure::kClear,
    };

    PositionOf() {}

    Start prepare(const Call& call, bdta3_scalar* constant, bdta3_col*) {
        caller = &call;
        nstr& argument = reinterpret_cast<nstr&>(*constant);
        if (const int32_t code = Pattern::take(local, call, argument, kFolded); code < 0) {
            elog_try_report_qzerr(code, __FILE__, __LINE__);
            return Start::stop(Code{code});
        }
        const Text pattern = local.taken() ? local.text() : ValueType<Text>::load_constant(argument);
        if (kFolded) qz_mbsupper_ex(pattern.bytes, pattern.len);
        blanks = pattern.blank;
        const Code code = context.prepare_boyer_moore(call, pattern.bytes, pattern.len);
        return code.failed() ? Start::stop(code) : Start::rows();
    }

    Code row(Row out, Text, Text text) const {
        if constexpr (kFolded) {
            FoldedCopy<kTextBuffer> folded;
            if (const Code code = folded.make(*caller, text, qz_mbsupper_ex); code.failed()) return code;
            return out.put(Pattern::find(*context, folded.text(), blanks));
        } else {
            return out.put(Pattern::find(*context, text, blanks));
        }
    }

    bool many(const frame::Output& out, uint32_t begin, uint32_t n, const Constant<Text>&, const TextBlock& texts) const {
        if (Pattern::kIsBlank || blanks != 0) return false;
        uint32_t positions[frame::kBlockRows];
        if constexpr (kFolded) {
            if (!find_folded_in_block(*context, positions, n, texts)) return false;
        } else {
            find_in_block(*context, positions, n, texts);
        }
        store_positions<EmptyText::kIsSearched>(out, begin, n, texts, positions);
        return true;
    }

    const Call* caller = nullptr;
    LocalString local;
    SearchContext context;
    uint32_t blanks = 0;  // implied ones of the pattern
};

struct Position {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_scalar* constant, bdta3_col* text) {
        const nstr& pattern = reinterpret_cast<const nstr&>(*constant);
        const bool folded = !heeds_case();
        if (pattern.len != 0) return rows<StoredPattern>(folded, call, result, nrows, constant, text);
        if (pattern.blank != 0) return rows<BlankPattern>(folded, call, result, nrows, constant, text);
        result->all_valid = text->all_valid;
        const bdta3_int first{1, 1};
        for (uint32_t i = 0; i < nrows; ++i) bdta3_set_int(call.env, call.rt_mem, result, i, &first);
        return 0;
    }

  private:
    template <class Pattern>
    static int32_t rows(bool folded, const Call& call, bdta3_col* result, uint32_t nrows, bdta3_scalar* pattern,
                        bdta3_col* text) {
        return folded ? run<PositionOf<Pattern, true>>(call, result, nrows, pattern, text)
                      : run<PositionOf<Pattern, false>>(call, result, nrows, pattern, text);
    }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_2(bposition_va_str, Position, v, a)
