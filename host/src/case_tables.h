// Case mappings of multibyte characters, from sequence to sequence of the same length, built once from Unicode's simple
// mappings.
//
// UTF-8: a character's bytes but the last choose a page of 64, the last byte the entry. Most pages map nothing and are shared.
// GB18030, EUC-KR: the order of these sets has no pages that would pay; a hash table holds the sequences that have a mapping.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "host/src/byte_blocks.h"

namespace qzhost {

enum class Case { upper, lower };

// A character's bytes as a little-endian number.
using Sequence = uint32_t;
inline constexpr Sequence kNoMapping = 0;

class Utf8CaseTable {
  public:
    explicit Utf8CaseTable(Case to);

    // What to add to the character's sequence, modulo 2^32; 0 when it stays. A prefix is its number without the last six bits.
    Sequence change(size_t prefix, uint8_t last) const { return changes_[page_of_[prefix]][last & 0x3F]; }
    static bool has(size_t prefix) { return prefix < kPrefixes; }

    static const Utf8CaseTable& of(Case to);

  private:
    static constexpr size_t kPrefixes = 0x20000 / 64;  // no letter with two cases has a number above
    static constexpr size_t kPages = 96;               // 59 in use with Unicode 15; page 0 maps nothing

    void add(uint32_t from, uint32_t to);

    size_t pages_in_use_ = 1;
    std::array<uint8_t, kPrefixes> page_of_{};
    std::array<std::array<Sequence, 64>, kPages> changes_{};
};

class LegacyCaseTable {
  public:
    // converter_name: as ICU knows the character set.
    LegacyCaseTable(const char* converter_name, Case to);

    Sequence find(Sequence from) const {
        for (size_t i = place_of(from);; i = (i + 1) % kPlaces) {
            if (places_[i].from == from) return places_[i].to;
            if (places_[i].from == kNoMapping) return kNoMapping;
        }
    }

  private:
    static constexpr unsigned kPlaceBits = 12;
    static constexpr size_t kPlaces = size_t{1} << kPlaceBits;  // for about 1400 mappings at most
    static constexpr size_t kMostMappings = kPlaces / 2;

    struct Mapping {
        Sequence from;
        Sequence to;
    };

    static size_t place_of(Sequence from) { return from * 0x9E3779B1u >> (32 - kPlaceBits); }
    void add(Sequence from, Sequence to);

    size_t mappings_ = 0;
    std::array<Mapping, kPlaces> places_{};
};

const LegacyCaseTable& gb18030_case_table(Case to);
const LegacyCaseTable& euc_kr_case_table(Case to);

}  // namespace qzhost
