#include "qzhost/characters.h"

#include <array>
#include <climits>
#include <cstring>
#include <optional>
#include <type_traits>

#include "host/src/character_walk.h"

using namespace qzhost;

// ---- Counting ---------------------------------------------------------------------------------------------------------------

namespace {

// The services that rows of short texts live on choose first, then look at the planes of a short text. What those do not tell
// stands apart, so that it costs short texts no register.
[[gnu::noinline]] uint32_t count_by_charset(const char* text, uint32_t len) {
    return with_server_charset(
        [&]<class Set>(Set) { return static_cast<uint32_t>(count_characters<Set>(bytes_of(text), len)); });
}

#ifdef QZHOST_MASKED_LOADS
bool is_server_utf8_with_masked_loads() { return has_masked_loads() && is_server_utf8(); }

QZHOST_MASKED [[gnu::noinline]] uint32_t count_doubtful(const char* text, uint32_t len) {
    const size_t told = count_doubtful_utf8(bytes_of(text), len);
    return static_cast<uint32_t>(told != kNotTold ? told : count_utf8_by_blocks(bytes_of(text), len));
}

QZHOST_MASKED uint32_t count_by_planes(const char* text, uint32_t len) {
    const size_t told = count_short_utf8(bytes_of(text), len);
    return told != kNotTold ? static_cast<uint32_t>(told) : count_doubtful(text, len);
}
#endif

}  // namespace

uint32_t qz_mbstrlen_ex(const char* text, uint32_t len) {
#ifdef QZHOST_MASKED_LOADS
    if (is_server_utf8_with_masked_loads()) [[likely]]
        return count_by_planes(text, len);
#endif
    return count_by_charset(text, len);
}

namespace {

template <class Set>
void count_in_each(uint32_t* counts, uint32_t n, const bdta3_colstr* texts, const uint8_t* valid) {
    for (uint32_t i = 0; i < n; ++i) {
        const size_t len = valid[i] == 0 ? 0 : texts[i].len;
        counts[i] = static_cast<uint32_t>(count_characters<Set>(bytes_of(texts[i].bytes), len));
    }
}

#ifdef QZHOST_MASKED_LOADS
// Texts that the planes do not tell are counted behind the others: a call among them would cost all of them their registers.
QZHOST_MASKED void count_in_each_by_planes(uint32_t* counts, uint32_t n, const bdta3_colstr* texts, const uint8_t* valid) {
    constexpr uint32_t kUntold = static_cast<uint32_t>(kNotTold);
    bool some_untold = false;
    for (uint32_t i = 0; i < n; ++i) {
        const size_t len = valid[i] == 0 ? 0 : texts[i].len;
        // A load of nothing takes long all the same where it meets no memory.
        const void* const text = len == 0 ? static_cast<const void*>(counts) : texts[i].bytes;
        counts[i] = static_cast<uint32_t>(count_short_utf8(static_cast<const uint8_t*>(text), len));
        some_untold |= counts[i] == kUntold;
    }
    if (!some_untold) return;
    for (uint32_t i = 0; i < n; ++i) {
        if (counts[i] == kUntold) counts[i] = count_doubtful(texts[i].bytes, texts[i].len);
    }
}
#endif

}  // namespace

void host_count_characters(uint32_t* counts, uint32_t n, const bdta3_colstr* texts, const uint8_t* valid) {
#ifdef QZHOST_MASKED_LOADS
    if (is_server_utf8_with_masked_loads()) return count_in_each_by_planes(counts, n, texts, valid);
#endif
    with_server_charset([&]<class Set>(Set) { count_in_each<Set>(counts, n, texts, valid); });
}

namespace {

// Positions fit a signed 32-bit number: nobody has an array with room for a text of 2^31 bytes.
int32_t position_of(size_t index) { return static_cast<int32_t>(index + 1); }

template <class Set>
uint32_t fill_positions_by_step(const uint8_t* p, uint32_t len, int32_t* positions, uint32_t& multibyte) {
    uint32_t count = 0;
    multibyte = 0;
    for (size_t i = 0; i < len;) {
        const size_t end = i + ascii_run(p + i, len - i);
        while (i < end) positions[count++] = position_of(i++);
        for (; i < len && !is_ascii(p[i]); ++count) {
            const size_t length = step<Set>(p + i, len - i);
            positions[count] = position_of(i);
            multibyte += length > 1;
            i += length;
        }
    }
    return count;
}

#ifdef QZHOST_VECTOR_BYTES

// Text of which each byte but the continuations starts a character.
uint32_t fill_positions_of_well_formed(const uint8_t* p, uint32_t len, int32_t* positions, uint32_t& multibyte) {
    uint32_t count = 0;
    multibyte = 0;
    for (size_t i = 0; i < len; i += kBlock) {
        const size_t left = len - i;
        const __m128i block = left >= kBlock ? load_block(p + i) : load_below_16(p + i, left);
        const uint32_t inside = left >= kBlock ? 0xFFFF : (1u << left) - 1;
        const uint32_t others = bits_of(block);
        const uint32_t continuations = others == 0 ? 0 : bits_of(Utf8Blocks::continuations(block));
        if (continuations == 0 && left >= kBlock) {
            for (size_t k = 0; k < kBlock; ++k) positions[count + k] = position_of(i + k);
            count += kBlock;
        } else {
            for (uint32_t starts = inside & ~continuations; starts != 0; starts &= starts - 1) {
                positions[count++] = position_of(i + static_cast<size_t>(std::countr_zero(starts)));
            }
        }
        multibyte += static_cast<uint32_t>(std::popcount(others & ~continuations));
    }
    return count;
}

#endif

#ifdef QZHOST_MASKED_LOADS
// kNotTold as count_utf8_masked has it.
QZHOST_MASKED size_t fill_positions_by_planes(const uint8_t* p, uint32_t len, int32_t* positions, uint32_t& multibyte) {
    const size_t count = count_utf8_masked(p, len);
    if (count != kNotTold) fill_starts_masked(p, len, positions, multibyte);
    return count;
}
#endif

template <class Set>
uint32_t fill_positions_by_blocks(const uint8_t* p, uint32_t len, int32_t* positions, uint32_t& multibyte) {
    uint32_t count = 0;
#ifdef QZHOST_VECTOR_BYTES
    if (std::is_same_v<Set, Utf8> && count_utf8(p, len).well_formed) {
        count = fill_positions_of_well_formed(p, len, positions, multibyte);
    } else {
        count = fill_positions_by_step<Set>(p, len, positions, multibyte);
    }
#else
    count = fill_positions_by_step<Set>(p, len, positions, multibyte);
#endif
    return count;
}

template <class Set>
uint32_t fill_positions(const uint8_t* p, uint32_t len, int32_t* positions, uint32_t& multibyte) {
    size_t count = SIZE_MAX;
#ifdef QZHOST_MASKED_LOADS
    if (std::is_same_v<Set, Utf8> && has_masked_loads()) count = fill_positions_by_planes(p, len, positions, multibyte);
#endif
    if (count == SIZE_MAX) count = fill_positions_by_blocks<Set>(p, len, positions, multibyte);
    if (count < len) positions[count] = INT32_MAX;
    return static_cast<uint32_t>(count);
}

}  // namespace

uint32_t qz_mbstrlen_cposition_ex(const char* text, uint32_t len, int32_t* char_positions, uint32_t* out_mb_count) {
    return with_server_charset(
        [&]<class Set>(Set) { return fill_positions<Set>(bytes_of(text), len, char_positions, *out_mb_count); });
}

uint32_t qz_mbstrlen_end(const char* text, uint32_t len, uint32_t* out_tail) {
    return with_server_charset([&]<class Set>(Set) {
        const size_t tail = cut_off_bytes<Set>(bytes_of(text), len);
        *out_tail = static_cast<uint32_t>(tail);
        return static_cast<uint32_t>(count_characters<Set>(bytes_of(text), len - tail));
    });
}

namespace {

template <class Set>
bool has_multibyte(const uint8_t* p, size_t n) {
    for (size_t i = ascii_run(p, n); i < n; i += 1 + ascii_run(p + i + 1, n - i - 1)) {
        if (Set::sequence(p + i, n - i) > 1) return true;
    }
    return false;
}

}  // namespace

int32_t qz_translate_from_str_has_mb(const char* text, uint32_t len) {
#ifdef QZHOST_MASKED_LOADS
    if (has_masked_loads() && is_ascii_masked(bytes_of(text), len)) return 0;
#endif
    return with_server_charset([&]<class Set>(Set) { return has_multibyte<Set>(bytes_of(text), len); });
}

// ---- Moving -----------------------------------------------------------------------------------------------------------------

const char* qz_mbsinc_ex(const char* text, uint32_t len) {
    if (len == 0) return nullptr;
    return with_server_charset([&]<class Set>(Set) -> const char* {
        const size_t length = step<Set>(bytes_of(text), len);
        return length < len ? text + length : nullptr;
    });
}

namespace {

// So few characters are passed one by one sooner than in blocks.
constexpr uint32_t kFewCharacters = 8;

// What the bytes behind a lead byte of UTF-8 have to be, so that a character is judged without a branch.
struct Utf8Lead {
    uint8_t length;
    uint8_t first_second;  // lowest second byte
    uint16_t seconds;      // how many second bytes there are from it on; of a malformed byte none
    uint32_t later_bits;   // the two highest bits of the third and the fourth byte, where the character has them
};

constexpr Utf8Lead utf8_lead(unsigned lead) {
    if (lead < 0x80) return {1, 0, 256, 0};
    if (lead < 0xC2 || lead > 0xF4) return {1, 0, 0, 0};
    const unsigned first = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned last = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    const auto first_second = static_cast<uint8_t>(first);
    const auto seconds = static_cast<uint16_t>(last - first + 1);
    if (lead < 0xE0) return {2, first_second, seconds, 0};
    if (lead < 0xF0) return {3, first_second, seconds, 0x00C00000};
    return {4, first_second, seconds, 0xC0C00000};
}

constexpr std::array<Utf8Lead, 256> kUtf8Leads = [] {
    std::array<Utf8Lead, 256> leads{};
    for (unsigned lead = 0; lead < leads.size(); ++lead) leads[lead] = utf8_lead(lead);
    return leads;
}();

// The bytes of the first n characters, or of all; nothing when one is malformed.
template <class Set>
std::optional<uint32_t> bytes_of_few(const uint8_t* p, uint32_t len, uint32_t n) {
    uint32_t i = 0;
    if constexpr (std::is_same_v<Set, Utf8>) {
        bool sound = true;
        for (; n > 0 && i + sizeof(uint32_t) <= len; --n) {
            const uint32_t word = load32(p + i);
            const Utf8Lead& lead = kUtf8Leads[p[i]];
            sound &= static_cast<uint8_t>((word >> 8) - lead.first_second) < lead.seconds;
            sound &= ((word ^ 0x80800000) & lead.later_bits) == 0;
            i += lead.length;
        }
        if (!sound) return std::nullopt;
    }
    for (; n > 0 && i < len; --n) {
        const int32_t length = Set::sequence(p + i, len - i);
        if (length <= 0) return std::nullopt;
        i += static_cast<uint32_t>(length);
    }
    return i;
}

template <class Set>
const char* pass_sound_characters(const char* text, uint32_t len, uint32_t n, uint32_t* out_rest) {
    if (n <= kFewCharacters) {
        const std::optional<uint32_t> passed = bytes_of_few<Set>(bytes_of(text), len, n);
        *out_rest = passed ? len - *passed : 0;
        return passed ? text + *passed : nullptr;
    }
    const auto [passed, checked] = pass_characters<Set>(bytes_of(text), len, n);
    const bool sound = is_well_formed<Set>(bytes_of(text) + checked, passed - checked);
    *out_rest = sound ? len - static_cast<uint32_t>(passed) : 0;
    return sound ? text + passed : nullptr;
}

[[gnu::noinline]] const char* pass_sound_by_charset(const char* text, uint32_t len, uint32_t n, uint32_t* out_rest) {
    return with_server_charset([&]<class Set>(Set) { return pass_sound_characters<Set>(text, len, n, out_rest); });
}

[[gnu::noinline]] uint32_t pass_by_charset(const char* text, uint32_t len, uint32_t n) {
    return with_server_charset(
        [&]<class Set>(Set) { return static_cast<uint32_t>(pass_characters<Set>(bytes_of(text), len, n).bytes); });
}

#ifdef QZHOST_MASKED_LOADS
QZHOST_MASKED [[gnu::noinline]] const char* pass_sound_doubtful(const char* text, uint32_t len, uint32_t n,
                                                                uint32_t* out_rest) {
    const size_t passed = pass_doubtful_utf8(bytes_of(text), len, n);
    if (passed == kNotTold) return pass_sound_characters<Utf8>(text, len, n, out_rest);
    *out_rest = len - static_cast<uint32_t>(passed);
    return text + passed;
}

QZHOST_MASKED const char* pass_sound_by_planes(const char* text, uint32_t len, uint32_t n, uint32_t* out_rest) {
    const size_t passed = pass_short_utf8(bytes_of(text), len, n);
    if (passed == kNotTold) [[unlikely]]
        return pass_sound_doubtful(text, len, n, out_rest);
    *out_rest = len - static_cast<uint32_t>(passed);
    return text + passed;
}

QZHOST_MASKED [[gnu::noinline]] uint32_t pass_doubtful(const char* text, uint32_t len, uint32_t n) {
    const size_t passed = pass_doubtful_utf8(bytes_of(text), len, n);
    return static_cast<uint32_t>(passed != kNotTold ? passed : pass_utf8(bytes_of(text), len, n).bytes);
}

QZHOST_MASKED uint32_t pass_by_planes(const char* text, uint32_t len, uint32_t n) {
    const size_t passed = pass_short_utf8(bytes_of(text), len, n);
    return passed != kNotTold ? static_cast<uint32_t>(passed) : pass_doubtful(text, len, n);
}
#endif

}  // namespace

const char* qz_mbsninc_ex(const char* text, uint32_t len, uint32_t n, uint32_t* out_rest) {
#ifdef QZHOST_MASKED_LOADS
    if (is_server_utf8_with_masked_loads()) [[likely]]
        return pass_sound_by_planes(text, len, n, out_rest);
#endif
    return pass_sound_by_charset(text, len, n, out_rest);
}

namespace {

template <class Set>
void pass_in(bdta3_colstr& rest, const bdta3_colstr& text, uint32_t n) {
    rest = {0, 0, nullptr};
    // It is the text's own storage that is answered.
    rest.bytes = const_cast<char*>(pass_sound_characters<Set>(text.bytes, text.len, n, &rest.len));
}

template <class Set>
void pass_in_each(bdta3_colstr* rests, uint32_t rows, const bdta3_colstr* texts, const uint8_t* valid, uint32_t n) {
    for (uint32_t i = 0; i < rows; ++i) {
        rests[i] = {0, 0, nullptr};
        if (valid[i] != 0) pass_in<Set>(rests[i], texts[i], n);
    }
}

#ifdef QZHOST_MASKED_LOADS
// Untold texts behind the others, as in counting.
QZHOST_MASKED void pass_in_each_by_planes(bdta3_colstr* rests, uint32_t rows, const bdta3_colstr* texts, const uint8_t* valid,
                                          uint32_t n) {
    bool some_untold = false;
    for (uint32_t i = 0; i < rows; ++i) {
        const size_t len = valid[i] == 0 ? 0 : texts[i].len;
        char* const text = texts[i].bytes;
        const void* const loaded = len == 0 ? static_cast<const void*>(rests) : text;
        const size_t passed = pass_short_utf8(static_cast<const uint8_t*>(loaded), len, n);
        const bool told = passed != kNotTold;
        rests[i].len = static_cast<uint32_t>(told ? len - passed : 0);
        rests[i].blank = 0;
        rests[i].bytes = told && valid[i] != 0 ? text + passed : nullptr;
        some_untold |= !told;
    }
    if (!some_untold) return;
    for (uint32_t i = 0; i < rows; ++i) {
        if (rests[i].bytes == nullptr && valid[i] != 0) {
            rests[i].bytes = const_cast<char*>(pass_sound_doubtful(texts[i].bytes, texts[i].len, n, &rests[i].len));
        }
    }
}
#endif

}  // namespace

void host_pass_characters(bdta3_colstr* rests, uint32_t rows, const bdta3_colstr* texts, const uint8_t* valid, uint32_t n) {
#ifdef QZHOST_MASKED_LOADS
    if (is_server_utf8_with_masked_loads()) return pass_in_each_by_planes(rests, rows, texts, valid, n);
#endif
    with_server_charset([&]<class Set>(Set) { pass_in_each<Set>(rests, rows, texts, valid, n); });
}

const char* qz_mbsninc_count_ex(const char* text, uint32_t len, uint32_t n, uint32_t m, uint32_t* out_bytes) {
    const uint32_t passed = qz_mbget_bytelen(text, len, n);
    *out_bytes = qz_mbget_bytelen(text + passed, len - passed, m);
    return text + passed;
}

// ---- Measuring --------------------------------------------------------------------------------------------------------------

uint32_t qz_mbget_bytelen(const char* text, uint32_t len, uint32_t n) {
#ifdef QZHOST_MASKED_LOADS
    if (is_server_utf8_with_masked_loads()) [[likely]]
        return pass_by_planes(text, len, n);
#endif
    return pass_by_charset(text, len, n);
}

uint32_t qz_mbget_byte_offset(const char* text, uint32_t len, uint32_t n) {
    // The text has a character number n exactly when passing n leaves bytes.
    const uint32_t passed = qz_mbget_bytelen(text, len, n);
    return passed < len ? passed : QZ_MB_NONE;
}

void qz_mbget_valid_chars(const char* text, uint32_t len, uint32_t* out_chars, uint32_t* in_out_bytes) {
    with_server_charset([&]<class Set>(Set) {
        const uint8_t* p = bytes_of(text);
        const size_t whole = len - cut_off_bytes<Set>(p, len);
        size_t end = std::min<size_t>(*in_out_bytes, whole);
        if (end < whole) end = start_of_character<Set>(p, whole, end, 0);
        *out_chars = static_cast<uint32_t>(count_characters<Set>(p, end));
        *in_out_bytes = static_cast<uint32_t>(end);
    });
}

uint32_t qz_mb_char_get_len(const char* text) {
    return with_server_charset([&]<class Set>(Set) { return Set::length_by_lead(bytes_of(text)); });
}

uint32_t qz_mb_char_get_len_ex(const char* text, uint32_t bytes_left) {
    if (bytes_left == 0) return QZ_MB_NONE;
    return with_server_charset([&]<class Set>(Set) {
        const int32_t length = Set::sequence(bytes_of(text), bytes_left);
        if (length == kCutOff) return QZ_MB_NONE;
        return length == kMalformed ? 1u : static_cast<uint32_t>(length);
    });
}

namespace {

[[gnu::noinline]] int32_t char_start_by_charset(const char* text, uint32_t len, uint32_t index, uint32_t* out_next) {
    return with_server_charset([&]<class Set>(Set) -> int32_t {
        const uint8_t* p = bytes_of(text);
        const size_t start = start_of_character<Set>(p, len, index, 0);
        const bool is_start = start == index;
        *out_next = static_cast<uint32_t>(is_start ? start : start + step<Set>(p + start, len - start));
        return is_start;
    });
}

#ifdef QZHOST_MASKED_LOADS
QZHOST_MASKED int32_t char_start_by_planes(const char* text, uint32_t len, uint32_t index, uint32_t* out_next) {
    const size_t next = next_start_of_short_utf8(bytes_of(text), len, index);
    if (next == kNotTold) [[unlikely]]
        return char_start_by_charset(text, len, index, out_next);
    *out_next = static_cast<uint32_t>(next);
    return next == index;
}
#endif

}  // namespace

int32_t qz_char_start(const char* text, uint32_t len, uint32_t index, uint32_t* out_next) {
    if (index >= len) {
        *out_next = len;
        return 0;
    }
#ifdef QZHOST_MASKED_LOADS
    if (is_server_utf8_with_masked_loads()) [[likely]]
        return char_start_by_planes(text, len, index, out_next);
#endif
    return char_start_by_charset(text, len, index, out_next);
}

// ---- Comparing --------------------------------------------------------------------------------------------------------------

int32_t qz_mbsncmp_f(const char* left, const char* right, uint32_t n) { return n == 0 ? 0 : std::memcmp(left, right, n); }
