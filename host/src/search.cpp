#include "qzhost/search.h"

#include <cstring>

#include "host/src/byte_search.h"
#include "host/src/character_walk.h"
#include "host/src/masked_search.h"

using namespace qzhost;

// ---- Tables -----------------------------------------------------------------------------------------------------------------

void preprocess_bmbc(const char* pattern, uint32_t pattern_len, uint32_t* table) {
    std::fill_n(table, QZ_BMBC_ENTRIES, pattern_len);
    for (uint32_t i = 0; i + 1 < pattern_len; ++i) table[bytes_of(pattern)[i]] = pattern_len - 1 - i;
}

namespace {

constexpr uint32_t kLongestString = 32767;

// suffix[i]: how many bytes that end at i agree with as many at the pattern's end. Linear: what lies inside an agreement found
// before, from low to high, is known from its counterpart at the pattern's end.
void measure_suffixes(const uint8_t* pattern, uint32_t m, uint16_t* suffix) {
    suffix[m - 1] = static_cast<uint16_t>(m);
    int64_t low = m - 1;  // the agreement that reaches furthest to the left: (low, high]
    int64_t high = m - 1;
    for (int64_t i = int64_t{m} - 2; i >= 0; --i) {
        const int64_t counterpart = i + m - 1 - high;
        if (i > low && suffix[counterpart] < i - low) {
            suffix[i] = suffix[counterpart];
            continue;
        }
        low = std::min(low, i);
        high = i;
        while (low >= 0 && pattern[low] == pattern[low + m - 1 - high]) --low;
        suffix[i] = static_cast<uint16_t>(high - low);
    }
}

}  // namespace

void preprocess_bmgs(const char* pattern, uint32_t pattern_len, uint32_t* table) {
    const uint32_t m = pattern_len;
    if (m == 0) return;
    if (m > kLongestString) {
        // One step is always right.
        std::fill_n(table, m, 1u);
        return;
    }
    uint16_t suffix[kLongestString];
    measure_suffixes(bytes_of(pattern), m, suffix);
    std::fill_n(table, m, m);
    // The bytes that agree begin with a part that is a prefix of the pattern as well.
    for (uint32_t i = m, filled = 0; i-- > 0;) {
        if (suffix[i] != i + 1) continue;
        for (; filled < m - 1 - i; ++filled) table[filled] = m - 1 - i;
    }
    // They stand once more in the pattern, behind another byte.
    for (uint32_t i = 0; i + 1 < m; ++i) table[m - 1 - suffix[i]] = m - 1 - i;
}

uint32_t preshiftorprocess(const char* pattern, uint32_t pattern_len, uint32_t* masks) {
    std::fill_n(masks, QZ_SHIFT_MASK_ENTRIES, ~0u);
    if (pattern_len == 0 || pattern_len > QZ_SHIFT_OR_MAX_PATTERN) return 0;
    for (uint32_t i = 0; i < pattern_len; ++i) masks[bytes_of(pattern)[i]] &= ~(1u << i);
    return ~((1u << (pattern_len - 1)) - 1);
}

// ---- The search -------------------------------------------------------------------------------------------------------------

namespace {

// Where characters start is asked of ascending places.
template <class Set>
class StartsInText {
  public:
    StartsInText(const uint8_t* text, size_t n) : text_(text), size_(n) {}

    bool holds(size_t place) {
        known_ = start_of_character<Set>(text_, size_, place, known_);
        return known_ == place;
    }

  private:
    const uint8_t* text_;
    size_t size_;
    size_t known_ = 0;
};

class StartsInArray {
  public:
    StartsInArray(const int32_t* positions, size_t base) : positions_(positions), base_(base) {}

    bool holds(size_t place) {
        const size_t wanted = base_ + place + 1;
        // No character is longer than four bytes, so its entry is no earlier than this.
        next_ = std::max(next_, (wanted - 1) / Utf8::kLongest);
        while (static_cast<size_t>(positions_[next_]) < wanted) ++next_;
        return static_cast<size_t>(positions_[next_]) == wanted;
    }

  private:
    const int32_t* positions_;
    size_t base_;
    size_t next_ = 0;
};

struct AnyStart {
    bool holds(size_t) { return true; }
};

// What a caller has prepared; any of it may be absent.
struct Tables {
    const uint32_t* bmbc = nullptr;
    const uint32_t* bmgs = nullptr;
    const uint32_t* masks = nullptr;
    uint32_t limit = 0;

    // One table in both places is not two.
    bool has_boyer_moore() const { return bmbc != nullptr && bmbc != bmgs; }
};

struct Search {
    const uint8_t* text;
    size_t text_len;
    const uint8_t* pattern;
    size_t pattern_len;
    int32_t occurrence;
    Tables tables = {};

    bool is_hopeless() const { return occurrence < 1 || pattern_len == 0 || pattern_len > text_len; }
};

// Shorter patterns cannot make the scan slow.
constexpr size_t kLongPattern = 256;

// Linear time whatever the text is: by the tables, or by the standard library's search.
template <class Accept>
void find_in_hard_text(const Search& search, Accept&& accept) {
    if (search.tables.has_boyer_moore()) {
        boyer_moore(search.text, search.text_len, search.pattern, search.pattern_len, search.tables.bmbc, search.tables.bmgs,
                    accept);
        return;
    }
    for (size_t from = 0; search.text_len - from >= search.pattern_len;) {
        const void* found = memmem(search.text + from, search.text_len - from, search.pattern, search.pattern_len);
        if (found == nullptr) return;
        const size_t place = static_cast<size_t>(static_cast<const uint8_t*>(found) - search.text);
        if (accept(place)) return;
        from = place + 1;
    }
}

#ifdef QZHOST_VECTOR_BYTES
// The part of a search from a place on.
Search from_place(const Search& search, size_t place) {
    Search rest = search;
    rest.text += place;
    rest.text_len -= place;
    return rest;
}

// The scan, as long as it does not compare the same bytes over and over.
template <class Accept>
[[gnu::noinline]] void find_long_pattern(const Search& search, Accept&& accept) {
    const size_t most_compared = 4 * search.text_len + 16 * search.pattern_len;
    size_t compared = 0;
    size_t hard_from = SIZE_MAX;
    scan_for_ends(search.text, search.text_len, search.pattern, search.pattern_len, [&](size_t place) {
        if (compared > most_compared) {
            hard_from = place;
            return true;
        }
        const size_t agreed = common_start(search.text + place, search.pattern, search.pattern_len);
        compared += agreed + kBlock;
        return agreed == search.pattern_len && accept(place);
    });
    if (hard_from == SIZE_MAX) return;
    find_in_hard_text(from_place(search, hard_from), [&](size_t place) { return accept(hard_from + place); });
}
#endif

template <class Accept>
[[gnu::always_inline]] inline void find_bytes(const Search& search, Accept&& accept) {
    const uint8_t* text = search.text;
    const uint8_t* pattern = search.pattern;
    const size_t n = search.text_len;
    const size_t m = search.pattern_len;
#ifdef QZHOST_VECTOR_BYTES
    if (m >= kLongPattern) [[unlikely]]
        return find_long_pattern(search, accept);
    scan_ends(text, n, pattern, m, accept);
#else
    const Tables& tables = search.tables;
    if (tables.has_boyer_moore() || m >= kLongPattern) {
        find_in_hard_text(search, accept);
    } else if (tables.masks != nullptr) {
        // Masks that are not the pattern's must not make a match.
        shift_or(text, n, m, tables.masks, tables.limit,
                 [&](size_t place) { return equal_bytes(text + place, pattern, m) && accept(place); });
    } else {
        for (size_t i = 0; i <= n - m; ++i) {
            if (equal_bytes(text + i, pattern, m) && accept(i)) return;
        }
    }
#endif
}

// The 1-based position of the occurrence asked for, or 0.
template <class Starts>
[[gnu::always_inline]] inline uint32_t find_occurrence(const Search& search, Starts starts) {
    uint32_t position = 0;
    int32_t left = search.occurrence;
    find_bytes(search, [&](size_t place) {
        if (!starts.holds(place) || --left > 0) return false;
        position = static_cast<uint32_t>(place + 1);
        return true;
    });
    return position;
}

inline int32_t answer(uint32_t position, uint32_t* out_pos) {
    *out_pos = position;
    return position != 0;
}

// Where a byte match may begin inside a character.
[[gnu::noinline]] uint32_t find_among_characters(const Search& search) {
    return with_server_charset([&]<class Set>(Set) {
        if (Set::always_begins(search.pattern[0])) return find_occurrence(search, AnyStart{});
#ifdef QZHOST_MASKED_LOADS
        if constexpr (std::is_same_v<Set, Utf8>) {
            // The pattern begins inside a character, which well-formed text has at no start.
            if (has_masked_loads() && count_short_utf8(search.text, search.text_len) != kNotTold) return 0u;
        }
#endif
        return find_occurrence(search, StartsInText<Set>(search.text, search.text_len));
    });
}

// The pattern begins as characters do, so that every place counts.
inline uint32_t find_any(const Search& search) {
#ifdef QZHOST_MASKED_LOADS
    if (search.pattern_len <= kMaskedPattern && has_masked_loads()) {
        const size_t count = number_of_places(search.text_len, search.pattern_len);
        // A caller that has prepared nothing searches for the pattern once.
        const bool once = search.occurrence == 1 && !search.tables.has_boyer_moore();
        if (once) return first_masked(search.text, count, search.pattern, search.pattern_len);
        return find_masked(search.text, count, search.pattern, search.pattern_len, search.occurrence);
    }
#endif
#ifdef QZHOST_VECTOR_BYTES
    if (search.pattern_len <= 2 && search.occurrence == 1 && search.text_len <= SpreadBlocks::kMost) {
        return first_of_ends(search.text, search.text_len, search.pattern, search.pattern_len);
    }
#endif
    return find_occurrence(search, AnyStart{});
}

inline int32_t search_text(const Search& search, uint32_t* out_pos) {
    if (search.is_hopeless()) return answer(0, out_pos);
    // UTF-8 with a pattern that begins as characters do is what nearly all callers have, and short texts in which every call
    // counts.
    const bool plain = is_server_utf8() && Utf8::always_begins(search.pattern[0]);
    return answer(plain ? find_any(search) : find_among_characters(search), out_pos);
}

int32_t search_with_positions(const Search& search, const int32_t* positions, uint32_t base, uint32_t* out_pos) {
    if (search.is_hopeless()) return answer(0, out_pos);
    return answer(find_occurrence(search, StartsInArray(positions, base)), out_pos);
}

// Each text by itself.
void find_in_each_text(uint32_t* positions, uint32_t n, const bdta3_colstr* texts, const uint8_t* valid,
                       const Search& pattern) {
    for (uint32_t i = 0; i < n; ++i) {
        positions[i] = 0;
        if (valid[i] == 0) continue;
        Search search = pattern;
        search.text = bytes_of(texts[i].bytes);
        search.text_len = texts[i].len;
        (void)search_text(search, &positions[i]);
    }
}

#ifdef QZHOST_MASKED_LOADS
// For a pattern that begins as characters do.
void find_in_texts_masked(uint32_t* positions, uint32_t n, const bdta3_colstr* texts, const uint8_t* valid,
                          const Search& pattern) {
    const size_t m = pattern.pattern_len;
    const auto find = m == 1 ? find_masked_in_texts<1> : m == 2 ? find_masked_in_texts<2> : find_masked_in_texts<kMostProbed>;
    for (uint32_t begin = 0; begin < n; begin += PickedRows::kMost) {
        const uint32_t left = std::min(PickedRows::kMost, n - begin);
        find(positions + begin, {texts + begin, valid + begin, left}, pattern.pattern, m);
    }
}
#endif

bool fits_shift_or(uint32_t pattern_len) { return pattern_len <= QZ_SHIFT_OR_MAX_PATTERN; }

}  // namespace

int32_t qz_strbmncmp(const char* text, uint32_t text_len, const char* pattern, uint32_t pattern_len, uint32_t* out_pos,
                     int32_t occurrence) {
    return search_text({bytes_of(text), text_len, bytes_of(pattern), pattern_len, occurrence}, out_pos);
}

int32_t qz_strbmncmp_arr(const char* text, uint32_t text_len, const char* pattern, uint32_t pattern_len,
                         const int32_t* char_positions, int32_t occurrence, uint32_t* out_pos, uint32_t base) {
    return search_with_positions({bytes_of(text), text_len, bytes_of(pattern), pattern_len, occurrence}, char_positions, base,
                                 out_pos);
}

int32_t qz_strbmncmp_arr_ex(const char* text, uint32_t text_len, const char* pattern, uint32_t pattern_len, int32_t occurrence,
                            uint32_t* out_pos, const uint32_t* bmbc, const uint32_t* bmgs) {
    return search_text({bytes_of(text), text_len, bytes_of(pattern), pattern_len, occurrence, {.bmbc = bmbc, .bmgs = bmgs}},
                       out_pos);
}

void host_find_in_texts(uint32_t* positions, uint32_t n, const bdta3_colstr* texts, const uint8_t* valid, const char* pattern,
                        uint32_t pattern_len, const uint32_t* bmbc, const uint32_t* bmgs) {
    if (pattern_len == 0) return std::fill_n(positions, n, 0u), void();
    const Search search{nullptr, 0, bytes_of(pattern), pattern_len, 1, {.bmbc = bmbc, .bmgs = bmgs}};
#ifdef QZHOST_MASKED_LOADS
    const bool is_plain = with_server_charset([&]<class Set>(Set) { return Set::always_begins(search.pattern[0]); });
    if (is_plain && pattern_len <= kMaskedPattern && has_masked_loads()) {
        return find_in_texts_masked(positions, n, texts, valid, search);
    }
#endif
    find_in_each_text(positions, n, texts, valid, search);
}

int32_t qz_mbshiftor_ncmp(const char* text, uint32_t text_len, const char* pattern, uint32_t pattern_len, uint32_t* out_pos,
                          int32_t occurrence) {
    if (!fits_shift_or(pattern_len)) return answer(0, out_pos);
    return search_text({bytes_of(text), text_len, bytes_of(pattern), pattern_len, occurrence}, out_pos);
}

int32_t qz_mbshiftor_ncmp_arr(const char* text, uint32_t text_len, const char* pattern, uint32_t pattern_len,
                              const int32_t* char_positions, int32_t occurrence, uint32_t* out_pos, uint32_t base) {
    if (!fits_shift_or(pattern_len)) return answer(0, out_pos);
    return search_with_positions({bytes_of(text), text_len, bytes_of(pattern), pattern_len, occurrence}, char_positions, base,
                                 out_pos);
}

int32_t qz_mbshiftor_ncmp_arr_ex(const char* text, uint32_t text_len, const char* pattern, uint32_t pattern_len,
                                 const int32_t* char_positions, int32_t occurrence, uint32_t* out_pos,
                                 const uint32_t* shift_masks, uint32_t shift_limit, uint32_t base) {
    if (!fits_shift_or(pattern_len)) return answer(0, out_pos);
    return search_with_positions(
        {bytes_of(text), text_len, bytes_of(pattern), pattern_len, occurrence, {.masks = shift_masks, .limit = shift_limit}},
        char_positions, base, out_pos);
}

uint32_t qz_get_occur_num(const char* text, uint32_t text_len, const char* pattern, uint32_t pattern_len) {
    for (uint32_t i = 0; i < pattern_len; ++i) {
        if (pattern[i] != ' ') return 0;
    }
    uint32_t blanks = 0;
    while (blanks < text_len && text[text_len - 1 - blanks] == ' ') ++blanks;
    return blanks;
}
