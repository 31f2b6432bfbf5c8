// instr and instrb: where a pattern stands in a text, counted in characters and in bytes.
//
// A constant pattern is prepared once a batch. How it is searched for:
//
//   without a start, or with start and occurrence 1     Boyer-Moore; blanks are looked at around a hit. A block of rows at once
//                                                       when there are none to look at and case is heeded
//   from a start, up to 31 stored bytes and blanks      shift-or, hit by hit
//   instrb from the end, up to 31 bytes written out     shift-or
//   all else                                            Boyer-Moore
//
// Behaviour that looks odd and is meant:
//
//   - An empty text is NULL without a start, and 0 with one; with start and occurrence 1 it is NULL again. has_value of a
//     constant is not read: a NULL start is the number that the record holds.
//   - Without a start the case is folded to upper, with one to lower. Where that ends in different letters, so do the hits.
//   - instr with a start above 0 folds its pattern in the caller's record before it copies it; instrb folds texts in the
//     caller's vector when the pattern is of blanks.
//   - instrb without a start prepares the pattern as it stands and then searches for the folded one.
//   - With folding, and backwards, the pattern is written out, and implied blanks of a text are not seen from a start above 0:
//     instr('ab' and a blank, 'b' and a blank, 2) is 2, and 0 when case is not heeded.
//   - A constant text of blanks alone is written out, so that stored blanks of a pattern are found in it; those of a column are
//     not.
//   - All vectors: a row whose text and pattern equal those of the last row computed, up to trailing blanks, takes its value
//     and valid byte over. So 'ab' takes over what was found in 'ab' with blanks, and a text of blanks that an empty one was
//     NULL.
#include <cstdint>
#include <cstring>

#include "bop/bifun_str/find_in_block.h"
#include "bop/bifun_str/folded_block.h"
#include "bop/bifun_str/folded_copy.h"
#include "bop/bifun_str/instr_first.h"
#include "bop/bifun_str/instr_scan.h"
#include "bop/bifun_str/instr_unit.h"
#include "bop/bifun_str/local_string.h"
#include "bop/bifun_str/search_context.h"
#include "bop/bifun_str/text_value.h"
#include "bop/frame/export.h"
#include "qzbifun/string.h"
#include "qzhost/error.h"
#include "qzhost/lob.h"
#include "qzhost/parameters.h"

namespace bifun {
namespace {

constexpr Rules kRules{
    .constants = ConstantNull::kIgnored,
    .flag = FlagStore::kBeforeRows,
    .store = Store::kKeep,
    .on_failure = OnFailure::kClear,
};

Code store(Row out, int32_t position) {
    out.slot<int32_t>() = position;
    return kOk;
}

// A row that failed holds 0.
Code store_failure(Row out, Code code) {
    out.slot<int32_t>() = 0;
    return code;
}

// EC_OUT_OF_MEMORY, which nobody has pushed.
Code write_out(const Call& call, const Text& text, LocalString& local) {
    return Code{local.write_out(call.env, call.rt_mem, text)};
}
Code copy(const Call& call, bdta3_scalar* constant, LocalString& local) {
    return Code{local.copy(call.env, call.rt_mem, reinterpret_cast<const nstr&>(*constant))};
}

// ---- Without a start, a constant pattern ------------------------------------------------------------------------------------

template <class Unit>
struct FirstOfConstant {
    static constexpr Rules rules = kRules;

    FirstOfConstant() {}

    Start prepare(const Call& call, bdta3_col*, bdta3_scalar* constant) {
        call_ = &call;
        fold_ = !heeds_case();
        const Text stored = text_of(constant);
        if (is_empty(stored)) return Start::all_null();
        const Code code = is_all_blank(stored) ? prepare_blanks(stored) : prepare_stored(constant, stored);
        return code.failed() ? Start::stop(code) : Start::rows();
    }

    Code row(Row out, Text text, Text) const {
        if (is_empty(text)) return out.set_null();
        if (fold_) [[unlikely]]
            return folded_row(out, text);
        return store(out, all_blank_ ? find_blank_pattern<Unit>(*ctx_, text) : find_stored_pattern<Unit>(*ctx_, blanks_, text));
    }

    bool many(const frame::Output& out, uint32_t begin, uint32_t n, const TextBlock& texts, const Constant<Text>&) const {
        if (all_blank_ || blanks_ != 0) return false;
        uint32_t positions[frame::kBlockRows];
        if (fold_) [[unlikely]] {
            // The tables of bytes are those of another pattern, and longer texts are folded in a block of the memory object.
            if (Unit::kBytes || !find_folded_in_block(*ctx_, positions, n, texts)) return false;
        } else {
            find_in_block(*ctx_, positions, n, texts);
        }
        Unit::turn_bytes_into(positions, n, texts.values);
        store_positions<EmptyText::kIsNull>(out, begin, n, texts, positions);
        return true;
    }

  private:
    Code prepare_blanks(const Text& blanks) {
        all_blank_ = true;
        if (const Code code = write_out(*call_, blanks, local_); code.failed()) return code;
        return ctx_.prepare_boyer_moore(*call_, local_.text().bytes, local_.text().len);
    }

    Code prepare_stored(bdta3_scalar* constant, Text pattern) {
        blanks_ = pattern.blank;
        if (!fold_) return ctx_.prepare_boyer_moore(*call_, pattern.bytes, pattern.len);
        if (const Code code = copy(*call_, constant, local_); code.failed()) return code;
        const Text local = local_.text();
        if constexpr (Unit::kBytes) {
            if (const Code code = ctx_.prepare_boyer_moore(*call_, pattern.bytes, pattern.len); code.failed()) return code;
            qz_mbsupper_ex(local.bytes, local.len);
            ctx_.search_for(local.bytes);
            return kOk;
        } else {
            qz_mbsupper_ex(local.bytes, local.len);
            return ctx_.prepare_boyer_moore(*call_, local.bytes, local.len);
        }
    }

    [[gnu::noinline]] Code folded_row(Row out, const Text& text) const {
        if (all_blank_) {
            if (Unit::kBytes && ctx_->pattern_bytes <= total_bytes(text)) qz_mbsupper_ex(text.bytes, text.len);
            return store(out, find_blank_pattern<Unit>(*ctx_, text));
        }
        FoldedCopy<Unit::kBytes ? kShortEntries : kTextBuffer> folded;
        if (const Code code = folded.make(*call_, text, qz_mbsupper_ex); code.failed()) return store_failure(out, code);
        return store(out, find_stored_pattern<Unit>(*ctx_, blanks_, folded.text()));
    }

    const Call* call_ = nullptr;
    bool fold_ = false;
    bool all_blank_ = false;
    uint32_t blanks_ = 0;
    SearchContext ctx_;
    LocalString local_;
};

// ---- Without a start, a pattern of each row ---------------------------------------------------------------------------------

// What is searched for in one row.
class RowPattern {
  public:
    RowPattern() {}

    // EC_OUT_OF_MEMORY, which nobody has pushed. With has_copy() it was memory for the tables.
    Code prepare(const Call& call, const Text& pattern) {
        Text searched = pattern;
        if (pattern.len == 0 || !heeds_case()) {
            searched.len = pattern.len == 0 ? pattern.blank : pattern.len;
            searched.bytes = copy_.take(call.env, call.rt_mem, searched.len);
            if (searched.bytes == nullptr) return Code{EC_OUT_OF_MEMORY};
            if (pattern.len == 0) {
                std::memset(searched.bytes, ' ', searched.len);
            } else {
                std::memcpy(searched.bytes, pattern.bytes, pattern.len);
                qz_mbsupper_ex(searched.bytes, searched.len);
            }
        }
        has_copy_ = true;
        all_blank_ = pattern.len == 0;
        blanks_ = pattern.blank;
        return ctx_.prepare_for_one_search(call, searched.bytes, searched.len);
    }

    bool has_copy() const { return has_copy_; }

    // The text's case is folded as the pattern's is.
    int32_t find_in(const Text& text) const {
        return all_blank_ ? find_blank_pattern<InCharacters>(*ctx_, text)
                          : find_stored_pattern<InCharacters>(*ctx_, blanks_, text);
    }

  private:
    bool has_copy_ = false;
    bool all_blank_ = false;
    uint32_t blanks_ = 0;
    Scratch<char, kShortEntries> copy_;
    SearchContext ctx_;
};

struct FirstOfPair {
    static constexpr Rules rules = kRules;

    Start prepare(const Call& call, bdta3_col*, bdta3_col*) {
        call_ = &call;
        return Start::rows();
    }

    Code row(Row out, Text text, Text pattern) {
        if (has_last_ && are_equal(text, last_text_) && are_equal(pattern, last_pattern_)) return repeat(out);
        has_last_ = true;
        last_row_ = out.index();
        last_text_ = text;
        last_pattern_ = pattern;
        return instr2_row_pair(out, text, pattern);
    }

  private:
    // Up to trailing blanks.
    static bool are_equal(const Text& a, const Text& b) {
        if (a.len != 0 && b.len != 0 && a.bytes[0] != b.bytes[0]) return false;
        const bdta3_colstr left{a.len, a.blank, a.bytes};
        const bdta3_colstr right{b.len, b.blank, b.bytes};
        return bdta3_colstr_cmp_with_blank(&left, &right, 0) == 0;
    }

    Code repeat(Row out) const {
        const bdta3_coldata& block = *out.result()->data;
        out.slot<int32_t>() = static_cast<const int32_t*>(block.values)[last_row_];
        block.valid[out.index()] = block.valid[last_row_];
        return kOk;
    }

    Code instr2_row_pair(Row out, const Text& text, const Text& pattern) const {
        if (is_empty(text) || is_empty(pattern)) return out.set_null();
        if (total_bytes(pattern) > total_bytes(text)) return store(out, 0);
        RowPattern searched;
        if (const Code code = searched.prepare(*call_, pattern); code.failed()) return store_failure(out, code);
        if (pattern.len != 0 && !heeds_case()) [[unlikely]]
            return folded_row(out, text, searched);
        return store(out, searched.find_in(text));
    }

    [[gnu::noinline]] Code folded_row(Row out, const Text& text, const RowPattern& searched) const {
        FoldedCopy<kTextBuffer> folded;
        if (const Code code = folded.make(*call_, text, qz_mbsupper_ex); code.failed()) return store_failure(out, code);
        return store(out, searched.find_in(folded.text()));
    }

    const Call* call_ = nullptr;
    bool has_last_ = false;
    uint32_t last_row_ = 0;
    Text last_text_{};
    Text last_pattern_{};
};

// A row with a constant text, its case folded where case is not heeded.
Code binstr_def2_va_process(const Call& call, Row out, const Text& text, const Text& pattern) {
    if (is_empty(pattern)) return out.set_null();
    if (total_bytes(pattern) > total_bytes(text)) return store(out, 0);
    RowPattern searched;
    if (const Code code = searched.prepare(call, pattern); code.failed()) {
        // Without its tables the row ends as if nothing had been found.
        if (searched.has_copy()) return store(out, 0);
        return store_failure(out, out.fail(code.value, "binstr_def2_va_process"));
    }
    return store(out, searched.find_in(text));
}

// Unlike all others, a constant text is read where the pointer leads, which is set for short texts too.
Text text_behind_pointer(bdta3_scalar* constant) {
    Text text = text_of(constant);
    char* const behind = reinterpret_cast<nstr*>(constant)->nstr_ext;
    if (behind != nullptr) text.bytes = behind;
    return text;
}

struct FirstInConstant {
    static constexpr Rules rules = kRules;

    FirstInConstant() {}

    Start prepare(const Call& call, bdta3_scalar* constant, bdta3_col*) {
        call_ = &call;
        text_ = text_behind_pointer(constant);
        if (is_empty(text_)) return Start::all_null();
        const Code code = is_all_blank(text_) ? write_out(call, text_, local_)
                          : heeds_case()      ? kOk
                                              : copy(call, constant, local_);
        if (code.failed()) {
            qzerr_stk_push(call.env, code.value, call.name);
            return Start::stop(code);
        }
        if (!is_all_blank(text_) && heeds_case()) return Start::rows();
        text_ = local_.text();
        qz_mbsupper_ex(text_.bytes, text_.len);
        return Start::rows();
    }

    Code row(Row out, Text, Text pattern) const { return binstr_def2_va_process(*call_, out, text_, pattern); }

  private:
    const Call* call_ = nullptr;
    Text text_{};
    LocalString local_;
};

struct FirstInLob {
    static constexpr Rules rules = kRules;

    FirstInLob() {}

    Start prepare(const Call& call, bdta3_scalar* constant, bdta3_col*) {
        call_ = &call;
        const nstr& locator = reinterpret_cast<nstr&>(*constant);
        if ((locator.len | locator.blank) == 0) return Start::all_null();
        if (const Code code = read(locator); code.failed()) {
            qzerr_stk_push(call.env, code.value, call.name);
            return Start::stop(code);
        }
        if (!heeds_case()) qz_mbsupper_ex(text_.bytes, text_.len);
        return Start::rows();
    }

    Code row(Row out, Text, Text pattern) const {
        const Code code = binstr_def2_va_process(*call_, out, text_, pattern);
        return code.failed() ? out.fail(code.value, call_->name) : kOk;
    }

  private:
    // The whole value, into a block.
    Code read(const nstr& locator) {
        const uint64_t limit = uint64_t{ini_get_value(0, LOB_SEARCH_READ_KB)} << 10;
        if (nblob_is_long_row(&locator) != 0) return Code{EC_LOB_TOO_LONG_ROW};
        const uint32_t len = nblob_get_4byte_len(&locator);
        if (len >= limit) return Code{EC_LOB_TOO_LONG_ROW};
        char* const bytes = block_.take(call_->env, call_->rt_mem, len + 1);
        if (bytes == nullptr) return Code{EC_OUT_OF_MEMORY};

        ndct_work_area work;
        int32_t status = 0;
        const nblob_encryption* const encryption =
            ndct_get_blob_enc_info(call_->env, call_->rt_mem, nstr_bytes(&locator), &work, &status);
        if (status < 0) return Code{status};
        if (call_->env->session == nullptr) return Code{EC_LOB_READ_FAILED};
        uint32_t read = 0;
        const int32_t reader = sess4_get_lob_reader(call_->env->session);
        const int32_t code = nblob_get_data(call_->env, reader, &locator, bytes, len, 0, len, &read, encryption);
        if (code < 0) return Code{code};
        if (read < len) return Code{EC_LOB_READ_FAILED};
        text_ = {bytes, len, 0};
        return kOk;
    }

    const Call* call_ = nullptr;
    Text text_{};
    Scratch<char, 0> block_;
};

// ---- With a start -----------------------------------------------------------------------------------------------------------

// There is no position 0, and nothing is found from there.
struct FromNowhere {
    static constexpr Rules rules = kRules;
    static constexpr bool total = true;
    static int32_t row(Text, Text, int32_t, int32_t) { return 0; }
};

template <class Unit>
struct FromStart {
    static constexpr Rules rules = kRules;

    FromStart() {}

    Start prepare(const Call& call, bdta3_col*, bdta3_scalar* pattern, bdta3_scalar* start, bdta3_scalar* occurrence) {
        call_ = &call;
        fold_ = !heeds_case();
        task_.start = reinterpret_cast<bdta3_int*>(start)->value;
        task_.occurrence = reinterpret_cast<bdta3_int*>(occurrence)->value;
        task_.pattern = text_of(pattern);
        Code code = task_.start < 0 ? reverse_pattern() : fold_ ? fold_pattern() : kOk;
        if (!code.failed()) code = prepare_context();
        return code.failed() ? Start::stop(code) : Start::rows();
    }

    Code row(Row out, Text text, Text, int32_t, int32_t) {
        const bool hopeless = Unit::kBytes ? is_empty(text) : total_bytes(text) < total_bytes(task_.pattern);
        if (hopeless) return store(out, 0);
        int32_t position = 0;
        const Code code = task_.start < 0 ? scan_backwards<Unit>(*call_, task_, text, fold_, position)
                          : fold_         ? scan_folded(text, position)
                                          : scan_forwards<Unit>(*call_, task_, text, position);
        return code.failed() ? store_failure(out, code) : store(out, position);
    }

  private:
    Code write_out_pattern() {
        if (const Code code = write_out(*call_, task_.pattern, local_); code.failed()) return code;
        task_.pattern = local_.text();
        return kOk;
    }

    Code reverse_pattern() {
        if (const Code code = write_out_pattern(); code.failed()) return code;
        const Text& pattern = task_.pattern;
        if (qz_mbsrev_ex(pattern.bytes, pattern.len) == nullptr) return Code{EC_STRING_TOO_LONG};
        if (fold_) qz_mbslower_ex(pattern.bytes, pattern.len);
        return kOk;
    }

    Code fold_pattern() {
        if (!Unit::kBytes) qz_mbslower_ex(task_.pattern.bytes, task_.pattern.len);
        if (const Code code = write_out_pattern(); code.failed()) return code;
        if (Unit::kBytes) qz_mbslower_ex(task_.pattern.bytes, task_.pattern.len);
        return kOk;
    }

    Code prepare_context() {
        const Text& pattern = task_.pattern;
        const bool is_short = pattern.len != 0 && pattern.len <= QZ_SHIFT_OR_MAX_PATTERN;
        task_.ctx = &*ctx_;
        task_.by_shift_or = is_short && (task_.start < 0 ? Unit::kBytes : pattern.blank != 0);
        const uint32_t characters = qz_mbstrlen_ex(pattern.bytes, pattern.len);
        Rest behind;
        task_.is_well_formed = !pass_characters(pattern, characters, behind).failed();
        if (task_.by_shift_or) {
            ctx_.prepare_shift_or(pattern.bytes, pattern.len, characters);
            return kOk;
        }
        if (pattern.len != 0) return ctx_.prepare_boyer_moore(*call_, pattern.bytes, pattern.len, characters);
        char* const blanks = blanks_.take(call_->env, call_->rt_mem, pattern.blank);
        if (blanks == nullptr) return Code{EC_OUT_OF_MEMORY};
        std::memset(blanks, ' ', pattern.blank);
        return ctx_.prepare_boyer_moore(*call_, blanks, pattern.blank);
    }

    [[gnu::noinline]] Code scan_folded(const Text& text, int32_t& position) {
        FoldedCopy<kTextBuffer> folded;
        if (const Code code = folded.make(*call_, text, qz_mbslower_ex); code.failed()) return code;
        return scan_forwards<Unit>(*call_, task_, folded.text(), position);
    }

    const Call* call_ = nullptr;
    bool fold_ = false;
    InstrTask task_;
    SearchContext ctx_;
    LocalString local_;
    Scratch<char, kShortEntries> blanks_;
};

template <class Unit>
struct WithStart {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* text, bdta3_scalar* pattern,
                         bdta3_scalar* start, bdta3_scalar* occurrence) {
        if (is_empty(text_of(pattern))) {
            frame::set_all_null(result, nrows);
            return 0;
        }
        const int32_t from = reinterpret_cast<bdta3_int*>(start)->value;
        const int32_t wanted = reinterpret_cast<bdta3_int*>(occurrence)->value;
        if (wanted <= 0) {
            qzerr_stk_push(call.env, EC_INVALID_ARGUMENT, call.name);
            return EC_INVALID_ARGUMENT;
        }
        if (from == 0) return run<FromNowhere>(call, result, nrows, text, pattern, start, occurrence);
        if (from == 1 && wanted == 1) return run<FirstOfConstant<Unit>>(call, result, nrows, text, pattern);
        return run<FromStart<Unit>>(call, result, nrows, text, pattern, start, occurrence);
    }
};

template <bop_fn_avvv* kFunction>
struct FirstFromStart {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* text, bdta3_scalar* pattern,
                         bdta3_scalar* start) {
        bdta3_int first{1, 1};
        return kFunction(call.env, call.rt_mem, text, pattern, start, reinterpret_cast<bdta3_scalar*>(&first), result, nrows);
    }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

// Text and pattern.
BIFUN_EXPORT_2(binstr_def2_aa_str, FirstOfPair, a, a)
BIFUN_EXPORT_2(binstr_def2_av_str, FirstOfConstant<InCharacters>, a, v)
BIFUN_EXPORT_2(binstr_def2_va_str, FirstInConstant, v, a)
BIFUN_EXPORT_2(binstr_def2_va_lob, FirstInLob, v, a)
BIFUN_EXPORT_2(binstrb_def2_av_str, FirstOfConstant<InBytes>, a, v)

// Text, pattern and start; and occurrence.
BIFUN_EXPORT_4(binstr_avvv_str, WithStart<InCharacters>, a, v, v, v)
BIFUN_EXPORT_3(binstr_def1_avv_str, FirstFromStart<binstr_avvv_str>, a, v, v)
BIFUN_EXPORT_4(binstrb_avvv_str, WithStart<InBytes>, a, v, v, v)
BIFUN_EXPORT_3(binstrb_def1_avv_str, FirstFromStart<binstrb_avvv_str>, a, v, v)
