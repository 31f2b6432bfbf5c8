// Scans from a start. Behaviour that looks odd and is meant:
//
//   - The plain and the all-blank scan take the start as a signed 16-bit number: 65538 is 2, and 40000 is -25536, which passes
//     no character and is still added to what is found, instr('abc', 'c', 40000) being -25534.
//   - Where an occurrence of a pattern of blanks is not stored, it is counted from the blanks that end the stored text: what
//     stands further in front counts for nothing. Two blanks stand in 'ab  c ' with two implied ones at 3, 6 and 7, the second
//     time at 7.
//   - instrb takes a start inside the last character, but at its last byte, as it stands, and counts the bytes from there on
//     for blanks: two blanks are found in '\u00e9\u4e2d' from byte 4 on at 4.
//   - The scan for a pattern with blanks takes the start, a number of characters, for the byte at which the search begins,
//     until the first hit is behind it. The two differ behind multibyte characters: 'b' and 2 blanks is not found in
//     '\u00e9b  ' from the second character on, since byte 2 begins none, and in '\u00e9\u00e9b  ' from the third on at 2.
//     Bytes behind the stored text are no blanks to that scan.
//   - A hit too near the end of the stored text for its blanks ends that scan, though the next may end the text: 'b' and 2
//     blanks is not found in 'abb' with 2 implied ones from 2 on.
//   - After a hit with n blanks, that scan goes on at character n + 1 at the earliest: a stored blank and 3 implied ones stand
//     twice in five stored blanks, and are found once.
//   - instrb searches the stored part of a pattern with blanks, of up to 31 bytes, for the occurrence asked for, and counts
//     those hits besides: the second 'b' with a blank in 'b b b b ' is the fourth 'b', since each step is two long.
//   - Backwards, a multibyte pattern is not searched for in a text that has as many characters, implied blanks included, as
//     stored bytes: '\u00e9' with one implied blank has two of each, and '\u00e9' is not found in it from the end.
#include "bop/bifun_str/instr_scan.h"

#include <algorithm>
#include <cstring>

#include "bop/bifun_str/folded_copy.h"
#include "bop/bifun_str/written_out.h"
#include "qzhost/characters.h"
#include "qzhost/error.h"

namespace bifun {
namespace {

// ---- A pattern without blanks -----------------------------------------------------------------------------------------------

// The length of the character at the start of text by its lead byte, which GB18030 needs the second byte for.
uint32_t length_by_lead(const char* text, uint32_t len) {
    if (len > 1) return qz_mb_char_get_len(text);
    const char alone[2] = {text[0], 0};
    return qz_mb_char_get_len(alone);
}

Rest walk_by_lead(Rest rest, uint32_t count) {
    for (; count > 0 && rest.len != 0; --count) {
        const uint32_t length = std::min(length_by_lead(rest.bytes, rest.len), rest.len);
        rest = {rest.bytes + length, rest.len - length};
    }
    return rest;
}

// What is left behind n characters, counted by their lead bytes; nothing when the text has fewer. Of well-formed characters the
// lead byte tells all.
Rest pass_by_lead(AsciiBegins& ascii, const Text& text, int32_t n) {
    if (n <= 0) return {text.bytes, text.len};
    const uint32_t count = static_cast<uint32_t>(n);
    if (ascii.hold(text, count)) return {text.bytes + count, text.len - count};
    uint32_t left = 0;
    if (const char* const behind = qz_mbsninc_ex(text.bytes, text.len, count, &left)) return {behind, left};
    return walk_by_lead({text.bytes, text.len}, count);
}

// Where characters cannot match, because there are fewer of them or none of several bytes. A well-formed pattern needs no look:
// where its bytes begin a character, all its characters are.
bool lacks_characters(const InstrTask& task, const Text& text) {
    if (task.is_well_formed) return false;
    const uint32_t characters = qz_mbstrlen_ex(text.bytes, text.len);
    const bool has_multibyte = task.ctx->pattern_bytes > task.ctx->pattern_chars;
    return characters < task.ctx->pattern_chars || (has_multibyte && characters == text.len);
}

int32_t instr_scan_plain(InstrTask& task, const Text& text) {
    const int16_t start = static_cast<int16_t>(task.start);
    const Rest rest = pass_by_lead(task.ascii, text, start - 1);
    const uint32_t place = task.ctx->find(rest.bytes, rest.len, task.occurrence);
    return place == 0 ? 0 : static_cast<int32_t>(qz_mbstrlen_ex(rest.bytes, place - 1)) + start;
}

int32_t instrb_scan_plain(InstrTask& task, const Text& text) {
    if (lacks_characters(task, text)) return 0;
    const int16_t wanted = static_cast<int16_t>(task.start);
    const bool is_start = wanted > 0 && task.ascii.hold(text, static_cast<uint32_t>(wanted));
    const std::optional<uint32_t> start = is_start ? wanted : InBytes::first_start(text, wanted);
    if (!start) return 0;
    const uint32_t skipped = *start - 1;
    const uint32_t place = task.ctx->find(text.bytes + skipped, text.len - skipped, task.occurrence);
    return place == 0 ? 0 : static_cast<int32_t>(skipped + place);
}

// ---- A pattern of blanks ----------------------------------------------------------------------------------------------------

// The position when the text implies so many blanks.
int32_t when_implied(const Text& text, int64_t blanks, int64_t position) {
    return text.blank >= blanks ? static_cast<int32_t>(position) : 0;
}

// The blanks are not all stored: they begin with those that end the rest, and run over into the implied ones, one further for
// each occurrence.
int32_t blanks_behind_stored_text(const InstrTask& task, const Text& text, const Rest& rest, int64_t stored_length) {
    const int64_t blanks = task.ctx->pattern_bytes;
    if (task.occurrence == 1) return when_implied(text, blanks, stored_length + 1);
    const int64_t stored = qz_get_occur_num(rest.bytes, rest.len, task.ctx->pattern, task.ctx->pattern_bytes);
    return when_implied(text, blanks - stored + task.occurrence - 1, stored_length - stored + task.occurrence);
}

Code instr_scan_all_blank(const InstrTask& task, const Text& text, int32_t& position) {
    const int64_t start = static_cast<int16_t>(task.start);
    const int64_t blanks = task.ctx->pattern_bytes;
    const int64_t occurrence = task.occurrence;
    position = 0;
    if (text.len == 0) {
        position = when_implied(text, start + blanks + occurrence - 2, start + occurrence - 1);
        return kOk;
    }
    const int64_t characters = qz_mbstrlen_ex(text.bytes, text.len);
    if (static_cast<int16_t>(characters + text.blank) < static_cast<int16_t>(blanks + occurrence - 1) + start - 1) return kOk;
    if (start > characters) {
        position = when_implied(text, start - text.len + blanks + occurrence - 2, start + occurrence - 1);
        return kOk;
    }
    Rest rest;
    if (const Code code = pass_characters(text, start - 1, rest); code.failed()) return code;
    const uint32_t place = task.ctx->find(rest.bytes, rest.len, task.occurrence);
    position = place != 0 ? static_cast<int32_t>(qz_mbstrlen_ex(rest.bytes, place - 1) + start)
                          : blanks_behind_stored_text(task, text, rest, characters);
    return kOk;
}

int32_t instrb_scan_all_blank(const InstrTask& task, const Text& text) {
    const int16_t start = static_cast<int16_t>(task.start);
    const int64_t blanks = task.ctx->pattern_bytes;
    const int64_t occurrence = task.occurrence;
    if (text.len == 0) return when_implied(text, start + blanks + occurrence - 2, start + occurrence - 1);
    const std::optional<uint32_t> first = InBytes::first_start(text, start);
    if (!first) {
        const int64_t behind = start == int64_t{text.len} ? 1 : start - int64_t{text.len};
        return when_implied(text, behind + blanks + occurrence - 2, behind + text.len + occurrence - 1);
    }
    const uint32_t skipped = *first - 1;
    const Rest rest{text.bytes + skipped, text.len - skipped};
    const uint32_t place = task.ctx->find(rest.bytes, rest.len, task.occurrence);
    if (place != 0) return static_cast<int32_t>(skipped + place);
    return blanks_behind_stored_text(task, text, rest, text.len);
}

// ---- A pattern with blanks behind its stored part ---------------------------------------------------------------------------

// Up to so many bytes, the positions of a text's characters stand in the frame.
using CharPositions = Scratch<int32_t, kShortEntries - 1>;

// Where the scan begins.
struct ScanBegin {
    bool found = false;
    int64_t byte = 0;  // counted from 1, as the scan takes it
    Rest rest{nullptr, 0};
};

Code begin_in_text(InCharacters, const InstrTask& task, const Text& text, uint32_t characters, ScanBegin& begin) {
    const int64_t least = int64_t{task.start} + task.ctx->pattern_chars + task.pattern.blank + task.occurrence - 2;
    if (task.start > int64_t{characters} || int64_t{text.blank} + characters < least) return kOk;
    begin.found = true;
    begin.byte = task.start;
    return pass_characters(text, int64_t{task.start} - 1, begin.rest);
}

Code begin_in_text(InBytes, const InstrTask& task, const Text& text, uint32_t, ScanBegin& begin) {
    const std::optional<uint32_t> first = InBytes::first_start(text, task.start);
    if (!first) return kOk;
    const int64_t least = int64_t{*first} + task.pattern.len + task.pattern.blank + task.occurrence - 2;
    if (int64_t{text.blank} + text.len < least) return kOk;
    begin.found = true;
    begin.byte = *first;
    begin.rest = {text.bytes + *first - 1, text.len - *first + 1};
    return kOk;
}

bool are_stored_blanks(const char* from, const char* end, uint32_t n) {
    return static_cast<uint64_t>(end - from) >= n && std::all_of(from, from + n, [](char byte) { return byte == ' '; });
}

template <class Unit>
Code instr_scan_with_blank(const Call& call, const InstrTask& task, const Text& text, int32_t& position) {
    position = 0;
    CharPositions room;
    int32_t* const char_positions = room.take(call.env, call.rt_mem, text.len);
    if (char_positions == nullptr) return Code{EC_OUT_OF_MEMORY};
    uint32_t multibyte = 0;
    const uint32_t characters = qz_mbstrlen_cposition_ex(text.bytes, text.len, char_positions, &multibyte);
    ScanBegin begin;
    if (const Code code = begin_in_text(Unit{}, task, text, characters, begin); code.failed()) return code;
    if (!begin.found) return kOk;

    const uint32_t blanks = task.pattern.blank;
    const int32_t* const end = char_positions + characters;
    int64_t byte = begin.byte;
    Rest rest = begin.rest;
    for (int32_t found = 0; found < task.occurrence;) {
        const uint32_t place = task.by_shift_or ? task.ctx->find_shift_or(rest.bytes, rest.len, char_positions,
                                                                          Unit::shift_or_occurrence(task.occurrence),
                                                                          static_cast<uint32_t>(byte - 1))
                                                : task.ctx->find(rest.bytes, rest.len);
        if (place == 0) return kOk;
        const int64_t hit = byte + place - 1;
        const int64_t stored_end = hit + task.pattern.len - 1;
        if (text.len < stored_end + blanks) {
            const bool are_implied = text.len == stored_end && found == task.occurrence - 1 && text.blank >= blanks;
            position = are_implied ? static_cast<int32_t>(Unit::position(text, static_cast<uint32_t>(hit))) : 0;
            return kOk;
        }
        const char* const behind = rest.bytes + place - 1 + task.pattern.len;
        const bool has_blanks = are_stored_blanks(behind, text.bytes + text.len, blanks);
        if (has_blanks && ++found == task.occurrence) {
            position = static_cast<int32_t>(Unit::position(text, static_cast<uint32_t>(hit)));
            return kOk;
        }
        const int32_t* const from = has_blanks ? char_positions + std::min(blanks, characters) : char_positions;
        const int32_t* const next = std::upper_bound(from, end, hit);
        if (next == end) return kOk;
        byte = *next;
        rest = {text.bytes + byte - 1, text.len - static_cast<uint32_t>(byte) + 1};
    }
    return kOk;
}

// ---- Backwards --------------------------------------------------------------------------------------------------------------

// A text written out and turned round, with where its characters begin.
class Reversed {
  public:
    explicit Reversed(const Call& call) : call_(call), text_(call) {}

    template <class Unit>
    Code make(const Text& text, bool fold) {
        if (const Code code = text_.expand(text); code.failed()) return report<Unit>(code, fold);
        if (fold) qz_mbslower_ex(text_.bytes(), text_.len());
        if (qz_mbsrev_ex(text_.bytes(), text_.len()) == nullptr) return Code{EC_STRING_TOO_LONG};
        positions_ = room_.take(call_.env, call_.rt_mem, std::max(text_.len(), 1u));
        if (positions_ == nullptr) return Code{EC_OUT_OF_MEMORY};
        uint32_t multibyte = 0;
        characters_ = qz_mbstrlen_cposition_ex(text_.bytes(), text_.len(), positions_, &multibyte);
        return kOk;
    }

    Text text() const { return {text_.bytes(), text_.len(), 0}; }
    const int32_t* char_positions() const { return positions_; }
    uint32_t characters() const { return characters_; }

  private:
    // How a text that cannot be written out is reported differs from row to row: instr logs it, and says of a text to be folded
    // that it is too long.
    template <class Unit>
    static Code report(Code code, bool fold) {
        if (Unit::kBytes) return code;
        if (fold) return Code{EC_STRING_TOO_LONG};
        elog_try_report_qzerr(code.value, __FILE__, __LINE__);
        return code;
    }

    const Call& call_;
    WrittenOut text_;
    Scratch<int32_t, 0> room_;
    int32_t* positions_ = nullptr;
    uint32_t characters_ = 0;
};

Code find_backwards(InCharacters, const InstrTask& task, const Text& text, const Reversed& reversed, bool, int32_t& position) {
    const instr_search_ctx& ctx = *task.ctx;
    const int64_t characters = reversed.characters();
    const int64_t wanted = ctx.pattern_chars;
    const int64_t first = characters + task.start + 1;
    if (first < 1) return kOk;
    const int64_t last = first + wanted - 1;
    const int64_t skip = std::max<int64_t>(characters - last, 0);
    const bool lacks_multibyte = ctx.pattern_bytes > wanted && characters == text.len;
    if (lacks_multibyte || characters < wanted || skip + 1 > characters) return kOk;
    Rest rest;
    if (const Code code = pass_characters(reversed.text(), skip, rest); code.failed()) return code;
    const uint32_t place = ctx.find(rest.bytes, rest.len, task.occurrence);
    if (place == 0) return kOk;
    const int64_t before = qz_mbstrlen_ex(rest.bytes, place - 1);
    position = static_cast<int32_t>(qz_mbstrlen_ex(rest.bytes, rest.len) + 1 - wanted - before);
    return kOk;
}

Code find_backwards(InBytes, const InstrTask& task, const Text&, const Reversed& reversed, bool fold, int32_t& position) {
    const instr_search_ctx& ctx = *task.ctx;
    const Text whole = reversed.text();
    const int64_t characters = reversed.characters();
    const int64_t wanted = ctx.pattern_chars;
    const int64_t back = -int64_t{task.start};
    if (back > whole.len) return kOk;
    const int32_t* const begin = reversed.char_positions();
    // The last character that starts at or before the byte.
    const int64_t index = std::upper_bound(begin, begin + characters, back) - begin - 1;
    if (ctx.pattern_bytes > wanted && whole.len == characters) return kOk;
    const int64_t start = index + 2 > wanted ? index - wanted + 2 : 1;
    if (characters < wanted || start > characters) return kOk;
    Rest rest;
    if (const Code code = pass_characters(whole, start - 1, rest); code.failed()) return code;
    uint32_t place = 0;
    if (task.by_shift_or) {
        place = ctx.find_shift_or(rest.bytes, rest.len, begin, task.occurrence, whole.len - rest.len);
    } else if (fold) {
        place = ctx.find(rest.bytes, rest.len, task.occurrence);
    } else {
        // The good-suffix table stands for both.
        qz_strbmncmp_arr_ex(rest.bytes, rest.len, ctx.pattern, ctx.pattern_bytes, task.occurrence, &place, ctx.boyer_moore.bmgs,
                            ctx.boyer_moore.bmgs);
    }
    if (place != 0) position = static_cast<int32_t>(int64_t{rest.len} - ctx.pattern_bytes - place + 2);
    return kOk;
}

}  // namespace

template <class Unit>
Code scan_forwards(const Call& call, InstrTask& task, const Text& text, int32_t& position) {
    if (task.pattern.blank != 0) {
        if (task.pattern.len != 0) return instr_scan_with_blank<Unit>(call, task, text, position);
        if constexpr (!Unit::kBytes) return instr_scan_all_blank(task, text, position);
        position = instrb_scan_all_blank(task, text);
        return kOk;
    }
    position = Unit::kBytes ? instrb_scan_plain(task, text) : instr_scan_plain(task, text);
    return kOk;
}

template <class Unit>
Code scan_backwards(const Call& call, const InstrTask& task, const Text& text, bool fold, int32_t& position) {
    position = 0;
    Reversed reversed(call);
    if (const Code code = reversed.make<Unit>(text, fold); code.failed()) return code;
    return find_backwards(Unit{}, task, text, reversed, fold, position);
}

template Code scan_forwards<InCharacters>(const Call&, InstrTask&, const Text&, int32_t&);
template Code scan_forwards<InBytes>(const Call&, InstrTask&, const Text&, int32_t&);
template Code scan_backwards<InCharacters>(const Call&, const InstrTask&, const Text&, bool, int32_t&);
template Code scan_backwards<InBytes>(const Call&, const InstrTask&, const Text&, bool, int32_t&);

}  // namespace bifun
