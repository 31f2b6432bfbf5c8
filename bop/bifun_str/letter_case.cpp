// upper, lower and initcap.
//
// initcap raises ASCII letters alone: at the start, and behind every character that is no ASCII letter or digit. A character of
// several bytes ends a word and is never raised: 'été' is 'éTé'.
#include <cstring>

#include "bop/frame/copy_text.h"
#include "bop/frame/export.h"
#include "qzbifun/string.h"
#include "qzhost/characters.h"

namespace bifun {
namespace {

// The row's text as it is, to be folded in place.
template <void (*kFold)(char*, uint32_t)>
Code put_folded(Row out, const Text& text) {
    const Code code = out.put_text(text.bytes, text.len, text.blank);
    if (!code.failed()) kFold(out.slot<bdta3_colstr>().bytes, text.len);
    return code;
}

template <void (*kFold)(char*, uint32_t)>
struct Fold {
    static constexpr Rules rules{.on_failure = OnFailure::kClear};
    static Code row(Row out, const Text& text) { return put_folded<kFold>(out, text); }
};

// The store's code is not the call's. There is no text to fold then, and what the row's slot holds is not this row's: it is NULL.
struct NlsUpper {
    static constexpr Rules rules{.flag = FlagStore::kBeforeRows};
    static Code row(Row out, const Text& text) { return put_folded<qz_mbsupper_ex>(out, text).failed() ? out.set_null() : kOk; }
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

// Lower-case text with its capitals raised. in_word: the last byte was an ASCII letter or digit.
class Capitals {
  public:
    explicit Capitals(char* text, uint32_t len) : at_(text), end_(text + len) {}

    void raise() {
        while (at_ != nullptr && at_ != end_) {
            if (!raise_words()) raise_characters();
        }
    }

  private:
    size_t left() const { return static_cast<size_t>(end_ - at_); }

    // Words of ASCII, eight bytes at a time. Answers whether the text is done.
    bool raise_words() {
        for (; left() >= kWord; at_ += kWord) {
            uint64_t word;
            std::memcpy(&word, at_, kWord);
            if ((word & kHighBits) != 0) return false;
            const uint64_t letters = bytes_between(word, 'a', 'z');
            const uint64_t in_word = letters | bytes_between(word, '0', '9') | bytes_between(word, 'A', 'Z');
            const uint64_t behind_one = in_word << 8 | (in_word_ ? 0x80 : 0);
            word ^= (letters & ~behind_one) >> 2;  // from the high bit to that of the case
            std::memcpy(at_, &word, kWord);
            in_word_ = in_word >> 63 != 0;
        }
        return left() == 0;
    }

    // Up to eight bytes, and the characters of several bytes among them.
    void raise_characters() {
        for (char* const stop = at_ + (left() < kWord ? left() : kWord); at_ < stop;) {
            const char byte = *at_;
            if (static_cast<unsigned char>(byte) >= 0x80) {
                in_word_ = false;
                at_ = const_cast<char*>(qz_mbsinc_ex(at_, static_cast<uint32_t>(left())));
                if (at_ == nullptr) return;
                continue;
            }
            const bool letter = byte >= 'a' && byte <= 'z';
            if (letter && !in_word_) *at_ = static_cast<char>(byte - 0x20);
            in_word_ = letter || (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z');
            ++at_;
        }
    }

    char* at_;  // the start of a character; NULL behind the last one, where that has several bytes
    char* end_;
    bool in_word_ = false;
};

struct InitCap {
    static constexpr Rules rules{.on_failure = OnFailure::kClear};
    static Code row(Row out, const Text& text) {
        char* const to = bdta3_col_space_alloc(out.env(), out.rt_mem(), out.result()->data, text.len);
        if (to == nullptr) return Code{EC_OUT_OF_MEMORY};
        copy_text(to, text.bytes, text.len);
        qz_mbslower_ex(to, text.len);
        Capitals(to, text.len).raise();
        return out.put(bdta3_colstr{text.len, text.blank, to});
    }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_1(bupper_a_str, Fold<qz_mbsupper_ex>, a)
BIFUN_EXPORT_1(blower_a_str, Fold<qz_mbslower_ex>, a)
BIFUN_EXPORT_1(bnls_upper_a, NlsUpper, a)
BIFUN_EXPORT_1(binitcap_a_str, InitCap, a)
