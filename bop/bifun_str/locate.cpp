// locate(pattern, text) and locate(pattern, text, start): the character of the text at which the pattern first stands, at or
// behind the character start; 0 where it does not. The match is exact, and blanks are characters, implied ones too.
//
// What looks odd and is meant:
//   - The switch case_sensitive has no effect: locate('A', 'abc') is 0 whatever it says.
//   - An empty pattern stands at every start up to the place behind the text: locate('', 'abc', 4) is 4, locate('', 'abc', 5)
//     is 0. Without a start it is found even in an empty text: locate('', '') is 1.
//   - The value of a constant counts, not its flag: with a start of NULL the number behind it is taken.
//   - Behind malformed bytes nothing is found: they cannot be passed by characters. locate('b', x'FF62', 2) is 0.
//
// Both values are searched written out. A text without implied blanks is so already and is not copied; a constant is written
// out, and a constant CLOB read, by the first row that needs it and for all.
#include <cstdint>

#include "bop/bifun_str/find_in_block.h"
#include "bop/bifun_str/lob_read.h"
#include "bop/bifun_str/local_string.h"
#include "bop/bifun_str/text_value.h"
#include "bop/bifun_str/written_out.h"
#include "bop/frame/export.h"
#include "bop/frame/memory.h"
#include "qzbifun/string.h"
#include "qzhost/characters.h"
#include "qzhost/lob.h"
#include "qzhost/search.h"
#include "qzhost/string_value.h"

namespace bifun {
namespace {

// A text whose blanks are all real.
struct Bytes {
    const char* bytes = nullptr;
    uint32_t len = 0;
};

// A service's code, in the log when it failed. The line is the caller's.
Code logged(int32_t code, int32_t line = __builtin_LINE()) {
    if (code < 0) elog_try_report_qzerr(code, __FILE__, line);
    return Code{code};
}

// ---- Where an argument's bytes come from: open before the row's search, close behind it -------------------------------------

// What a row takes and gives back.
class OfOneRow {
  public:
    void close(const Row& row) {
        release_block(row.env(), row.rt_mem(), block_);
        block_ = nullptr;
    }

  protected:
    char* block_ = nullptr;
};

struct VectorText : OfOneRow {
    Code open(const Row& row, const Text& argument, Bytes& text) {
        text = {argument.bytes, argument.len};
        if (argument.blank == 0) [[likely]]
            return kOk;
        const bdta3_colstr slot{argument.len, argument.blank, argument.bytes};
        bdta3_colstr written;
        const int32_t code = colstr_expand_blanks(row.env(), row.rt_mem(), &written, &slot);
        if (code < 0) return logged(code);
        block_ = written.bytes;
        text = {written.bytes, written.len};
        return kOk;
    }
};

struct VectorClob : OfOneRow {
    Code open(const Row& row, const Text& argument, Bytes& text) {
        const bdta3_colstr slot{argument.len, argument.blank, argument.bytes};
        const int32_t code = bifun_lob_to_str(row.env(), row.rt_mem(), &slot, 1, &block_, &text.len);
        text.bytes = block_;
        return logged(code);
    }
};

struct ConstantText {
    Code open(const Row& row, const Text& argument, Bytes& text) {
        text = {argument.bytes, argument.len};
        if (argument.blank == 0) [[likely]]
            return kOk;
        if (!written_.taken()) {
            const int32_t code = written_.write_out(row.env(), row.rt_mem(), argument);
            if (code < 0) return logged(code);
        }
        const Text written = written_.text();
        text = {written.bytes, written.len};
        return kOk;
    }
    void close(const Row&) {}

  private:
    LocalString written_;
};

class ConstantClob {
  public:
    ~ConstantClob() {
        if (block_ != nullptr) release_block(env_, rt_mem_, block_);
    }

    Code open(const Row& row, const Text& argument, Bytes& text) {
        if (block_ == nullptr) {
            env_ = row.env();
            rt_mem_ = row.rt_mem();
            nstr locator;
            nstr_assign_fast(&locator, argument.len, argument.bytes);
            const int32_t code = ifun_lob_to_str_ex(env_, LOB_READER_ANY, rt_mem_, &locator, 1, &block_, &len_);
            if (code < 0) return logged(code);
        }
        text = {block_, len_};
        return kOk;
    }
    void close(const Row&) {}

  private:
    qz_env* env_ = nullptr;
    rt_memobj* rt_mem_ = nullptr;
    char* block_ = nullptr;  // absent after a failure
    uint32_t len_ = 0;
};

template <class Source>
class Opened {
  public:
    Opened(Source& source, const Row& row, const Text& argument)
        : source_(source), row_(row), code_(source.open(row, argument, text_)) {}
    ~Opened() { source_.close(row_); }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;

    Code code() const { return code_; }
    const Bytes& operator*() const { return text_; }

  private:
    Source& source_;
    const Row& row_;
    Bytes text_;
    Code code_;
};

// ---- Rows -------------------------------------------------------------------------------------------------------------------

// Where the text begins with character start of another, the character of that at which the pattern first stands.
int32_t find(const Bytes& pattern, const char* text, uint32_t len, int32_t start) {
    uint32_t hit = 0;
    if (qz_strbmncmp(text, len, pattern.bytes, pattern.len, &hit, 1) == 0) return 0;
    return static_cast<int32_t>(qz_mbstrlen_ex(text, hit - 1)) + start;
}

constexpr Rules kRules{
    .constants = ConstantNull::kIgnored,
    .flag = FlagStore::kBeforeRows,
    .on_failure = OnFailure::kClear,
};

template <class PatternSource, class TextSource>
struct LocateFrom {
    static constexpr Rules rules = kRules;

    Code row(Row out, Text pattern_argument, Text text_argument, int32_t start) {
        if (start <= 0) return out.put(0);
        const Opened text(text_source, out, text_argument);
        if (text.code().failed()) return text.code();
        const Opened pattern(pattern_source, out, pattern_argument);
        if (pattern.code().failed()) return pattern.code();
        if ((*pattern).len == 0) {
            const bool is_within = static_cast<uint32_t>(start) - 1 <= qz_mbstrlen_ex((*text).bytes, (*text).len);
            return out.put(is_within ? start : 0);
        }
        // Apart, since a copy of both in one would wait for two stores.
        const char* rest = (*text).bytes;
        uint32_t rest_len = (*text).len;
        if (rest_len == 0) return out.put(0);
        if (start > 1) rest = qz_mbsninc_ex(rest, rest_len, static_cast<uint32_t>(start) - 1, &rest_len);
        return out.put(find(*pattern, rest, rest_len, start));
    }

    PatternSource pattern_source;
    TextSource text_source;
};

template <class PatternSource, class TextSource>
struct Locate {
    static constexpr Rules rules = kRules;

    // Of a CLOB the locator is tested, so that an empty one is read.
    Code row(Row out, Text pattern_argument, Text text_argument) {
        if (is_empty(pattern_argument)) return out.put(1);
        if (is_empty(text_argument)) return out.put(0);
        const Opened text(text_source, out, text_argument);
        if (text.code().failed()) return text.code();
        const Opened pattern(pattern_source, out, pattern_argument);
        if (pattern.code().failed()) return pattern.code();
        return out.put(find(*pattern, (*text).bytes, (*text).len, 1));
    }

    PatternSource pattern_source;
    TextSource text_source;
};

// A column of texts and a constant pattern, from some character on: the rows of a block together, where nothing has to be
// written out. Answers whether it did them.
bool locate_in_block(const frame::Output& out, uint32_t begin, uint32_t n, const Text& pattern, const TextBlock& texts,
                     int32_t start) {
    uint32_t blanks = pattern.blank;
    for (uint32_t i = 0; i < n; ++i) blanks |= texts.valid[i] == 0 ? 0 : texts.values[i].blank;
    if (pattern.len == 0 || blanks != 0 || start <= 0) return false;
    bdta3_colstr rests[frame::kBlockRows];
    const bdta3_colstr* searched = texts.values;
    const uint32_t passed = static_cast<uint32_t>(start) - 1;
    if (passed != 0) {
        host_pass_characters(rests, n, texts.values, texts.valid, passed);
        searched = rests;
    }
    uint32_t positions[frame::kBlockRows];
    host_find_in_texts(positions, n, searched, texts.valid, pattern.bytes, pattern.len, nullptr, nullptr);
    host_characters_of_positions(positions, n, searched);
    for (uint32_t i = 0; i < n; ++i) positions[i] += positions[i] == 0 ? 0 : passed;
    store_positions<EmptyText::kIsSearched>(out, begin, n, texts, positions);
    return true;
}

struct LocateFromVa : LocateFrom<ConstantText, VectorText> {
    bool many(const frame::Output& out, uint32_t begin, uint32_t n, const Constant<Text>& pattern, const TextBlock& texts,
              const Constant<int32_t>& start) const {
        return locate_in_block(out, begin, n, pattern.value, texts, start.value);
    }
};

struct LocateVa : Locate<ConstantText, VectorText> {
    bool many(const frame::Output& out, uint32_t begin, uint32_t n, const Constant<Text>& pattern,
              const TextBlock& texts) const {
        return locate_in_block(out, begin, n, pattern.value, texts, 1);
    }
};

using LocateFromAa = LocateFrom<VectorText, VectorText>;
using LocateFromAv = LocateFrom<VectorText, ConstantText>;
using LocateAa = Locate<VectorText, VectorText>;
using LocateAv = Locate<VectorText, ConstantText>;

using LocateFromAaClob = LocateFrom<VectorText, VectorClob>;
using LocateFromAvClob = LocateFrom<VectorText, ConstantClob>;
using LocateFromVaClob = LocateFrom<ConstantText, VectorClob>;
using LocateAaClob = Locate<VectorText, VectorClob>;
using LocateAvClob = Locate<VectorText, ConstantClob>;
using LocateVaClob = Locate<ConstantText, VectorClob>;

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_3(blocate_aav_str, LocateFromAa, a, a, v)
BIFUN_EXPORT_3(blocate_avv_str, LocateFromAv, a, v, v)
BIFUN_EXPORT_3(blocate_vav_str, LocateFromVa, v, a, v)
BIFUN_EXPORT_2(blocate_def_aa_str, LocateAa, a, a)
BIFUN_EXPORT_2(blocate_def_av_str, LocateAv, a, v)
BIFUN_EXPORT_2(blocate_def_va_str, LocateVa, v, a)

BIFUN_EXPORT_3(blocate_aav_str_clob, LocateFromAaClob, a, a, v)
BIFUN_EXPORT_3(blocate_avv_str_clob, LocateFromAvClob, a, v, v)
BIFUN_EXPORT_3(blocate_vav_str_clob, LocateFromVaClob, v, a, v)
BIFUN_EXPORT_2(blocate_def_aa_str_clob, LocateAaClob, a, a)
BIFUN_EXPORT_2(blocate_def_av_str_clob, LocateAvClob, a, v)
BIFUN_EXPORT_2(blocate_def_va_str_clob, LocateVaClob, v, a)
