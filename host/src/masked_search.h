// Where a pattern stands in texts of few places, on machines with AVX-512: bytes of the pattern are compared at 64 places at
// once, under a mask that leaves out what is no place. The steps are the same for every text, so that no branch depends on how
// long it is or on whether there is a hit.
#pragma once

#include <algorithm>

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

// The bytes of a pattern that are compared at every place: all of a short one. Of a longer one they leave so few places that
// the first is looked at closer.
template <size_t kBytes>
struct ProbedBytes {
    // kBytes is m, or less and kMostProbed.
    QZHOST_MASKED ProbedBytes(const uint8_t* pattern, size_t m) : offset{0, m - 1, m / 2} {
        for (size_t i = 0; i < kBytes; ++i) byte[i] = _mm512_set1_epi8(static_cast<char>(pattern[offset[i]]));
    }

    // A bit for each of the text's places at which they stand.
    QZHOST_MASKED uint64_t places(const uint8_t* text, size_t count) const {
        const uint64_t all = _bzhi_u64(~uint64_t{0}, static_cast<unsigned>(count));
        uint64_t left = all;
        for (size_t i = 0; i < kBytes; ++i) {
            left = _mm512_mask_cmpeq_epi8_mask(left, _mm512_maskz_loadu_epi8(all, text + offset[i]), byte[i]);
        }
        return left;
    }

    size_t offset[kMostProbed];
    __m512i byte[kBytes];
};

// All bits where one was found among 64, and none where first is 64. It takes no branch.
inline uint64_t all_bits_if_found(uint64_t first) { return (first >> 6) - 1; }

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

// The position, from 1, of the first place; 0 when there is none.
QZHOST_MASKED inline uint32_t first_position(uint64_t places) {
    const uint64_t first = _tzcnt_u64(places);
    return static_cast<uint32_t>((first + 1) & all_bits_if_found(first));
}

// The occurrence-th, from 1, place of a pattern of kBytes.
template <size_t kBytes>
QZHOST_MASKED inline uint32_t nth_masked(const uint8_t* text, size_t count, const uint8_t* pattern, int32_t occurrence) {
    if (occurrence > static_cast<int32_t>(kMaskedPlaces)) return 0;
    const uint64_t places = ProbedBytes<kBytes>(pattern, kBytes).places(text, count);
    return first_position(_pdep_u64(uint64_t{1} << (occurrence - 1), places));
}

// A text of up to kMaskedPlaces places. Longer patterns than those of nth_masked, up to kMaskedPattern bytes.
QZHOST_MASKED inline uint32_t first_masked(const uint8_t* text, size_t count, const uint8_t* pattern, size_t m) {
    const uint64_t places = ProbedBytes<kMostProbed>(pattern, m).places(text, count);
    return first_position(WholePattern(pattern, m).from_first(text, places));
}

inline bool takes_masked(size_t count, size_t m, int32_t occurrence) {
    return count <= kMaskedPlaces && (m <= kMostProbed || (m <= kMaskedPattern && occurrence == 1));
}

// What takes_masked takes.
QZHOST_MASKED inline uint32_t find_masked(const uint8_t* text, size_t count, const uint8_t* pattern, size_t m,
                                          int32_t occurrence) {
    switch (m) {
        case 1:
            return nth_masked<1>(text, count, pattern, occurrence);
        case 2:
            return nth_masked<2>(text, count, pattern, occurrence);
        case 3:
            return nth_masked<3>(text, count, pattern, occurrence);
        default:
            return first_masked(text, count, pattern, m);
    }
}

// For each of n texts the first place at which the bytes of a pattern stand that are compared, those with a valid byte of 0 left
// out. Answers whether some have more places than kMaskedPlaces; their positions are nonsense.
template <size_t kBytes>
QZHOST_MASKED bool find_masked_in_each(uint32_t* positions, uint32_t n, const bdta3_colstr* texts, const uint8_t* valid,
                                       const uint8_t* pattern, size_t m) {
    const ProbedBytes<kBytes> probed(pattern, m);
    size_t most = 0;
    for (uint32_t i = 0; i < n; ++i) {
        const size_t len = texts[i].len;
        const uint8_t* const bytes = bytes_of(texts[i].bytes);
        const size_t count = number_of_places(unforeseen(valid[i] == 0 ? 0 : len), m);
        // A load of which nothing is left takes long all the same where it meets no memory.
        const uint8_t* const text = count == 0 ? pattern : bytes;
        positions[i] = first_position(probed.places(text, count));
        most = std::max(most, count);
    }
    return most > kMaskedPlaces;
}

// Goes on from what find_masked_in_each found to the first place at which the whole pattern stands. At most PickedRows::kMost.
QZHOST_MASKED inline void check_masked_in_each(uint32_t* positions, uint32_t n, const bdta3_colstr* texts,
                                               const uint8_t* pattern, size_t m) {
    const WholePattern whole(pattern, m);
    PickedRows rows;
    rows.pick_masked(positions, n, 1);
    for (const uint32_t row : rows) {
        const size_t count = number_of_places(texts[row].len, m);
        const uint32_t position = positions[row];
        const uint8_t* const behind = bytes_of(texts[row].bytes) + position;
        if (count > kMaskedPlaces || whole.stands_at(behind - 1)) [[likely]]
            continue;
        const uint32_t next = first_masked(behind, count - position, pattern, m);
        positions[row] = next == 0 ? 0 : position + next;
    }
}

}  // namespace qzhost

#endif
