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

    // What a character of two bytes becomes, as a little-endian number, by its own number; it may be itself. One more entry
    // stands behind the last, for loads of four bytes.
    const uint16_t* two_bytes() const { return two_bytes_.data(); }

    // By the lower six bits of a lead byte: kTwo, or the sets of longer characters, where a character that it leads has a
    // mapping; 0 where none has one. A longer character may have one where its second byte, looked up by its lower six bits, is
    // in one of the same sets.
    static constexpr uint8_t kTwo = 0x80;
    static constexpr uint8_t kLonger = 0x7F;
    const std::array<uint8_t, 64>& sets_of_leads() const { return sets_of_leads_; }
    const std::array<uint8_t, 64>& sets_of_seconds() const { return sets_of_seconds_; }

    // The lead bytes that have a set, by their lower half: bit 0 for C0 to CF, bit 1 for D0 to DF, and so on.
    const std::array<uint8_t, 16>& leads_by_low_half() const { return leads_by_low_half_; }

    static const Utf8CaseTable& of(Case to);

  private:
    static constexpr size_t kPrefixes = 0x20000 / 64;  // no letter with two cases has a number above
    static constexpr size_t kPages = 96;               // 59 in use with Unicode 15; page 0 maps nothing
    static constexpr size_t kTwoBytes = 0x800;

    void add(uint32_t from, uint32_t to);
    void add_lead(Sequence from, int32_t length);

    alignas(64) std::array<uint8_t, 64> sets_of_leads_{};
    alignas(64) std::array<uint8_t, 64> sets_of_seconds_{};
    std::array<uint8_t, 16> leads_by_low_half_{};
    uint8_t next_set_ = 1;
    size_t pages_in_use_ = 1;
    std::array<uint16_t, kTwoBytes + 1> two_bytes_{};
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
