// Where a pattern stands, on machines with AVX-512: bytes of it are compared at 64 places at once, under a mask that leaves out
// what is no place.
//
// In a text of up to 64 places the steps are the same whatever its length is and whether or not there is a hit, since branches
// on either could not be foreseen. Many texts are searched one after the other in the same loop, or as one text where they
// stand one behind the other and have few hits.
#pragma once

#include <algorithm>
#include <bit>
#include <cstring>

#include "host/src/charset.h"
#include "host/src/picked_rows.h"
#include "host/src/utf8_planes.h"
#include "qzhost/search.h"

#ifdef QZHOST_MASKED_LOADS

namespace qzhost {

inline constexpr size_t kMaskedPlaces = 64;
inline constexpr size_t kMaskedPattern = 64;
inline constexpr size_t kMostProbed = 3;

// A number of which the compiler is told nothing, so that it makes no branches out of what follows from it.
inline uint64_t unforeseen(uint64_t number) {
    asm("" : "+r"(number));  // NOLINT(hicpp-no-assembler)
    return number;
}

// Places of a pattern in a text.
inline size_t number_of_places(size_t n, size_t m) { return unforeseen(n < m ? 0 : n - m + 1); }

// All bits where one was found among 64, and none where first is 64.
inline uint64_t all_bits_if_found(uint64_t first) { return (first >> 6) - 1; }

// The position, from 1, of the first place; 0 when there is none.
QZHOST_MASKED inline uint32_t first_position(uint64_t places) {
    const uint64_t first = _tzcnt_u64(places);
    return static_cast<uint32_t>((first + 1) & all_bits_if_found(first));
}

// The bytes of a pattern that are compared at every place: all of a short one. Of a longer one they leave so few places that
// those are looked at one by one.
template <size_t kBytes>
struct ProbedBytes {
    // kBytes is m, or kMostProbed: of a shorter pattern it looks at a byte twice.
    QZHOST_MASKED ProbedBytes(const uint8_t* pattern, size_t m) : offset{0, m - 1, m / 2} {
        for (size_t i = 0; i < kBytes; ++i) byte[i] = _mm512_set1_epi8(static_cast<char>(pattern[offset[i]]));
    }

    // A bit for each of up to kMaskedPlaces places of the text at which they stand. Of more places some are looked at.
    QZHOST_MASKED uint64_t places(const uint8_t* text, size_t count) const {
        const uint64_t all = _bzhi_u64(~uint64_t{0}, static_cast<unsigned>(count));
        uint64_t left = all;
        for (size_t i = 0; i < kBytes; ++i) {
            left = _mm512_mask_cmpeq_epi8_mask(left, _mm512_maskz_loadu_epi8(all, text + offset[i]), byte[i]);
        }
        return left;
    }

    // For kMaskedPlaces places.
    QZHOST_MASKED uint64_t all_places(const uint8_t* text) const {
        uint64_t left = ~uint64_t{0};
        for (size_t i = 0; i < kBytes; ++i) {
            left = _mm512_mask_cmpeq_epi8_mask(left, _mm512_loadu_si512(text + offset[i]), byte[i]);
        }
        return left;
    }

    size_t offset[kMostProbed];
    __m512i byte[kBytes];
};

// A pattern of up to kMaskedPattern bytes as a whole.
struct WholePattern {
    QZHOST_MASKED WholePattern(const uint8_t* pattern, size_t m)
        : mask(_bzhi_u64(~uint64_t{0}, static_cast<unsigned>(m))), bytes(_mm512_maskz_loadu_epi8(mask, pattern)) {}

    QZHOST_MASKED bool stands_at(const uint8_t* text) const {
        return _mm512_mask_cmpneq_epi8_mask(mask, _mm512_maskz_loadu_epi8(mask, text), bytes) == 0;
    }

    // Takes the places away that are in front of the first at which it stands.
    QZHOST_MASKED uint64_t from_first(const uint8_t* text, uint64_t places) const {
        // Where none is left, nothing is compared: a branch on that could not be foreseen.
        const uint64_t first = _tzcnt_u64(places);
        const uint64_t compared = mask & all_bits_if_found(first);
        const uint8_t* const at = text + first % kMaskedPlaces;
        const uint64_t others = _mm512_mask_cmpneq_epi8_mask(compared, _mm512_maskz_loadu_epi8(compared, at), bytes);
        if (others == 0) [[likely]]
            return places;
        do {
            places &= places - 1;
        } while (places != 0 && !stands_at(text + _tzcnt_u64(places)));
        return places;
    }

    uint64_t mask;
    __m512i bytes;
};

// ---- One text ---------------------------------------------------------------------------------------------------------------

// The first of up to 64 places at which the whole pattern stands too; kMaskedPlaces when there is none.
QZHOST_MASKED inline size_t first_whole(const WholePattern& whole, const uint8_t* text, uint64_t places) {
    for (; places != 0; places &= places - 1) {
        const size_t place = _tzcnt_u64(places);
        if (whole.stands_at(text + place)) return place;
    }
    return kMaskedPlaces;
}

// The first place at or behind from in a text of any length; count when there is none.
template <size_t kBytes>
QZHOST_MASKED inline size_t next_masked(const ProbedBytes<kBytes>& probed, const WholePattern& whole, const uint8_t* text,
                                        size_t count, size_t from) {
    for (; from + kMaskedPlaces <= count; from += kMaskedPlaces) {
        const uint64_t places = probed.all_places(text + from);
        if (places == 0) [[likely]]
            continue;
        const size_t place = first_whole(whole, text + from, places);
        if (place < kMaskedPlaces) return from + place;
    }
    if (from >= count) return count;
    const size_t place = first_whole(whole, text + from, probed.places(text + from, count - from));
    return place < kMaskedPlaces ? from + place : count;
}

// The position, from 1, of the occurrence-th place, or 0.
template <size_t kBytes>
QZHOST_MASKED inline uint32_t nth_masked(const uint8_t* text, size_t count, const uint8_t* pattern, size_t m,
                                         int32_t occurrence) {
    const ProbedBytes<kBytes> probed(pattern, m);
    if (count <= kMaskedPlaces && m == kBytes) {
        if (occurrence > static_cast<int32_t>(kMaskedPlaces)) return 0;
        return first_position(_pdep_u64(uint64_t{1} << (occurrence - 1), probed.places(text, count)));
    }
    const WholePattern whole(pattern, m);
    if (count <= kMaskedPlaces && occurrence == 1) return first_position(whole.from_first(text, probed.places(text, count)));
    size_t place = next_masked(probed, whole, text, count, 0);
    while (--occurrence > 0 && place < count) place = next_masked(probed, whole, text, count, place + 1);
    return place < count ? static_cast<uint32_t>(place + 1) : 0;
}

// For a pattern of up to kMaskedPattern bytes.
QZHOST_MASKED inline uint32_t find_masked(const uint8_t* text, size_t count, const uint8_t* pattern, size_t m,
                                          int32_t occurrence) {
    if (m == 1) return nth_masked<1>(text, count, pattern, m, occurrence);
    if (m == 2) return nth_masked<2>(text, count, pattern, m, occurrence);
    return nth_masked<kMostProbed>(text, count, pattern, m, occurrence);
}

// The first place, by the same steps for every length of the pattern: where each text has a pattern of its own, no branch could
// foresee it.
QZHOST_MASKED inline uint32_t first_masked(const uint8_t* text, size_t count, const uint8_t* pattern, size_t m) {
    if (count > kMaskedPlaces) return find_masked(text, count, pattern, m, 1);
    const ProbedBytes<kMostProbed> probed(pattern, m);
    return first_position(WholePattern(pattern, m).from_first(text, probed.places(text, count)));
}

// ---- Many texts, up to PickedRows::kMost: the position of the first place in each, or 0 -------------------------------------

struct ManyTexts {
    ManyTexts part(uint32_t begin, uint32_t size) const { return {texts + begin, valid + begin, size}; }

    const bdta3_colstr* texts;
    const uint8_t* valid;
    uint32_t n;
};

// Bytes of the texts, where all are valid and each begins where the one in front of it ends; otherwise 0.
QZHOST_MASKED inline size_t length_of_run(const ManyTexts many) {
    constexpr uint32_t kSlots = sizeof(__m512i) / sizeof(bdta3_colstr);
    constexpr __mmask8 kBegins = 0xAA;
    const __m512i only_lengths = _mm512_set1_epi64(0xFFFFFFFF);
    if (std::memchr(many.valid, 0, many.n) != nullptr) return 0;
    const bdta3_colstr* const texts = many.texts;
    const uint32_t last = many.n - 1;
    uint32_t i = 0;
    for (; i + kSlots <= last; i += kSlots) {
        const __m512i slots = _mm512_loadu_si512(texts + i);
        const __m512i lengths = _mm512_bslli_epi128(_mm512_and_si512(slots, only_lengths), sizeof(uint64_t));
        const __m512i ends = _mm512_add_epi64(slots, lengths);
        if (_mm512_mask_cmpneq_epi64_mask(kBegins, ends, _mm512_loadu_si512(texts + i + 1)) != 0) return 0;
    }
    for (; i < last; ++i) {
        if (texts[i].bytes + texts[i].len != texts[i + 1].bytes) return 0;
    }
    return static_cast<size_t>(texts[last].bytes + texts[last].len - texts[0].bytes);
}

// The last of the texts of a run that begins at or in front of a byte.
inline uint32_t text_of_byte(const ManyTexts many, const char* byte) {
    uint32_t text = 0;
    for (uint32_t step = std::bit_floor(many.n); step != 0; step /= 2) {
        const uint32_t further = text + step;
        const bool is_further = further < many.n && many.texts[further].bytes <= byte;
        text = is_further ? further : text;
    }
    return text;
}

// In a run of so many texts a hit for each kTextsForAHit is still worth looking for its text.
inline constexpr uint32_t kTextsInRun = 120;
inline constexpr uint32_t kTextsForAHit = 32;

// The texts of a run as one. Answers false where more than few have a hit: looking for the text of a hit costs more then than a
// search in each.
template <size_t kBytes>
QZHOST_MASKED bool find_masked_in_run(uint32_t* positions, const ManyTexts many, size_t length, const uint8_t* pattern,
                                      size_t m) {
    const ProbedBytes<kBytes> probed(pattern, m);
    const WholePattern whole(pattern, m);
    const char* const begin = many.texts[0].bytes;
    const size_t count = number_of_places(length, m);
    std::fill_n(positions, many.n, 0u);
    uint32_t hits_left = many.n / kTextsForAHit + 1;
    for (size_t place = 0; (place = next_masked(probed, whole, bytes_of(begin), count, place)) < count; ++place) {
        if (hits_left-- == 0) return false;
        const uint32_t i = text_of_byte(many, begin + place);
        const size_t in_text = place - static_cast<size_t>(many.texts[i].bytes - begin);
        if (positions[i] == 0 && in_text + m <= many.texts[i].len) positions[i] = static_cast<uint32_t>(in_text + 1);
    }
    return true;
}

// In each the bytes compared alone. Answers whether some have more places than kMaskedPlaces, whose positions are
// nonsense.
template <size_t kBytes>
QZHOST_MASKED bool find_masked_in_each(uint32_t* positions, const ManyTexts many, const uint8_t* pattern, size_t m) {
    const ProbedBytes<kBytes> probed(pattern, m);
    size_t most = 0;
    for (uint32_t i = 0; i < many.n; ++i) {
        const size_t len = many.texts[i].len;
        const uint8_t* const bytes = bytes_of(many.texts[i].bytes);
        const size_t count = number_of_places(unforeseen(many.valid[i] == 0 ? 0 : len), m);
        // A load of which nothing is left takes long all the same where it meets no memory.
        const uint8_t* const text = count == 0 ? pattern : bytes;
        positions[i] = first_position(probed.places(text, count));
        most = std::max(most, count);
    }
    return most > kMaskedPlaces;
}

// Goes on from what find_masked_in_each found to the first place at which the whole pattern stands.
QZHOST_MASKED inline void check_masked_in_each(uint32_t* positions, const ManyTexts many, const uint8_t* pattern, size_t m) {
    const WholePattern whole(pattern, m);
    PickedRows rows;
    rows.pick_masked(positions, many.n, 1);
    for (const uint32_t row : rows) {
        const size_t count = number_of_places(many.texts[row].len, m);
        const uint32_t position = positions[row];
        const uint8_t* const behind = bytes_of(many.texts[row].bytes) + position;
        if (count > kMaskedPlaces || whole.stands_at(behind - 1)) [[likely]]
            continue;
        const uint32_t next = find_masked(behind, count - position, pattern, m, 1);
        positions[row] = next == 0 ? 0 : position + next;
    }
}

// Each by itself.
template <size_t kBytes>
QZHOST_MASKED inline void find_masked_one_by_one(uint32_t* positions, const ManyTexts many, const uint8_t* pattern, size_t m) {
    const bool some_are_long = find_masked_in_each<kBytes>(positions, many, pattern, m);
    if (m > kBytes) check_masked_in_each(positions, many, pattern, m);
    if (!some_are_long) return;
    for (uint32_t i = 0; i < many.n; ++i) {
        const size_t count = many.valid[i] == 0 ? 0 : number_of_places(many.texts[i].len, m);
        if (count > kMaskedPlaces) positions[i] = nth_masked<kBytes>(bytes_of(many.texts[i].bytes), count, pattern, m, 1);
    }
}

// For a pattern of up to kMaskedPattern bytes. kBytes is the lesser of m and kMostProbed. The first texts tell whether hits are
// few enough for runs.
template <size_t kBytes>
QZHOST_MASKED void find_masked_in_texts(uint32_t* positions, const ManyTexts all, const uint8_t* pattern, size_t m) {
    uint32_t done = std::min(kTextsForAHit, all.n);
    find_masked_one_by_one<kBytes>(positions, all.part(0, done), pattern, m);
    const auto hits = done - std::count(positions, positions + done, 0u);
    while (hits <= 1 && done < all.n) {
        const ManyTexts part = all.part(done, std::min(kTextsInRun, all.n - done));
        const size_t length = length_of_run(part);
        if (length == 0 || !find_masked_in_run<kBytes>(positions + done, part, length, pattern, m)) break;
        done += part.n;
    }
    find_masked_one_by_one<kBytes>(positions + done, all.part(done, all.n - done), pattern, m);
}

}  // namespace qzhost

#endif
