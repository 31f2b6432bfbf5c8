#include <algorithm>
#include <cstring>

#include "host/src/character_walk.h"
#include "qzbifun/codes.h"
#include "qzhost/characters.h"

using namespace qzhost;

namespace {

template <class Set>
bool occurs(const uint8_t* character, size_t length, const uint8_t* set, size_t set_len) {
    for (size_t i = 0; i < set_len;) {
        const size_t other = step<Set>(set + i, set_len - i);
        if (other == length && std::memcmp(set + i, character, length) == 0) return true;
        i += other;
    }
    return false;
}

template <class Set>
size_t leading_of_set(const uint8_t* p, size_t n, const uint8_t* set, size_t set_len) {
    size_t i = 0;
    while (i < n) {
        const size_t length = step<Set>(p + i, n - i);
        if (!occurs<Set>(p + i, length, set, set_len)) break;
        i += length;
    }
    return i;
}

}  // namespace

void trim_left(qz_env*, const char* set, uint32_t set_len, const char** in_out_text, uint32_t* in_out_len) {
    const size_t leading = with_server_charset(
        [&]<class Set>(Set) { return leading_of_set<Set>(bytes_of(*in_out_text), *in_out_len, bytes_of(set), set_len); });
    *in_out_text += leading;
    *in_out_len -= static_cast<uint32_t>(leading);
}

void trim_left_space(const char** in_out_text, uint32_t* in_out_len) {
    uint32_t leading = 0;
    while (leading < *in_out_len && (*in_out_text)[leading] == ' ') ++leading;
    *in_out_text += leading;
    *in_out_len -= leading;
}

void trim_right_space(const char* text, uint32_t* in_out_len) {
    // A blank is no part of a longer character in any of the character sets.
    uint32_t len = *in_out_len;
    while (len > 0 && text[len - 1] == ' ') --len;
    *in_out_len = len;
}

namespace {

// A padded value taken apart: whole copies of the pad, a piece of one, and the text.
struct Padding {
    size_t text_bytes;
    size_t copies;
    size_t piece_bytes;
};

template <class Set>
Padding plan_padding(const char* text, uint32_t text_len, uint32_t length, const char* pad, uint32_t pad_len) {
    const size_t characters = count_characters<Set>(bytes_of(text), text_len);
    if (characters >= length) return {pass_characters<Set>(bytes_of(text), text_len, length).bytes, 0, 0};
    const size_t missing = length - characters;
    const size_t pad_characters = count_characters<Set>(bytes_of(pad), pad_len);
    if (pad_characters == 0) return {text_len, 0, 0};
    return {text_len, missing / pad_characters, pass_characters<Set>(bytes_of(pad), pad_len, missing % pad_characters).bytes};
}

char* append(char* end, const char* bytes, size_t n) {
    if (n > 0) std::memcpy(end, bytes, n);
    return end + n;
}

char* append_padding(char* end, const Padding& plan, const char* pad, uint32_t pad_len) {
    if (pad_len == 1) {
        std::memset(end, pad[0], plan.copies);
        return end + plan.copies;
    }
    for (size_t i = 0; i < plan.copies; ++i) end = append(end, pad, pad_len);
    return append(end, pad, plan.piece_bytes);
}

enum class Side { left, right };

int32_t pad_text(Side side, const char* text, uint32_t text_len, int32_t length, const char* pad, uint32_t pad_len,
                 char* output, uint32_t* out_len) {
    if (length < 0) return EC_INVALID_ARGUMENT;
    const Padding plan = with_server_charset(
        [&]<class Set>(Set) { return plan_padding<Set>(text, text_len, static_cast<uint32_t>(length), pad, pad_len); });
    // Below 2^32 + 2^31 * 2^32 + 2^32: it fits 64 bits.
    const uint64_t total = uint64_t{plan.text_bytes} + uint64_t{plan.copies} * pad_len + plan.piece_bytes;
    if (total > QZ_PAD_MAX_BYTES) return EC_STRING_TOO_LONG;
    if (side == Side::left) {
        append(append_padding(output, plan, pad, pad_len), text, plan.text_bytes);
    } else {
        append_padding(append(output, text, plan.text_bytes), plan, pad, pad_len);
    }
    *out_len = static_cast<uint32_t>(total);
    return 0;
}

}  // namespace

int32_t qz_get_lpad_str(const char* text, uint32_t text_len, int32_t length, const char* pad, uint32_t pad_len, char* output,
                        uint32_t* out_len) {
    return pad_text(Side::left, text, text_len, length, pad, pad_len, output, out_len);
}

int32_t qz_get_rpad_str(const char* text, uint32_t text_len, int32_t length, const char* pad, uint32_t pad_len, char* output,
                        uint32_t* out_len) {
    return pad_text(Side::right, text, text_len, length, pad, pad_len, output, out_len);
}
