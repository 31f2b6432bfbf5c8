#include "host/src/character_positions.h"

#include <algorithm>

#include "host/src/character_walk.h"
#include "host/src/picked_rows.h"
#include "qzhost/characters.h"

using namespace qzhost;

namespace {

// In front of the first byte there is nothing to be counted.
constexpr uint32_t kLeastCounted = 2;

template <class Set>
void count_in_front(uint32_t& position, const bdta3_colstr& text) {
    position = static_cast<uint32_t>(count_characters<Set>(bytes_of(text.bytes), position - 1)) + 1;
}

#ifdef QZHOST_VECTOR_BYTES
template <>
void count_in_front<Utf8>(uint32_t& position, const bdta3_colstr& text) {
    const uint8_t* const bytes = bytes_of(text.bytes);
    size_t counted = kNotCounted;
    if (SpreadBlocks::takes(text.len)) counted = count_utf8_in_front(bytes, text.len, position - 1);
    if (counted == kNotCounted) [[unlikely]]
        counted = count_characters<Utf8>(bytes, position - 1);
    position = static_cast<uint32_t>(counted) + 1;
}
#endif

template <class Set>
void count_in_front_of_each(uint32_t* positions, uint32_t n, const bdta3_colstr* texts) {
    PickedRows rows;
    rows.pick(positions, n, kLeastCounted);
    for (const uint32_t row : rows) count_in_front<Set>(positions[row], texts[row]);
}

#ifdef QZHOST_MASKED_LOADS
QZHOST_MASKED void count_utf8_in_front_of_each(uint32_t* positions, uint32_t n, const bdta3_colstr* texts) {
    PickedRows rows;
    rows.pick_masked(positions, n, kLeastCounted);
    for (const uint32_t row : rows) {
        const size_t counted = count_short_utf8(bytes_of(texts[row].bytes), positions[row] - 1);
        if (counted == kNotTold) [[unlikely]] {
            count_in_front<Utf8>(positions[row], texts[row]);
        } else {
            positions[row] = static_cast<uint32_t>(counted) + 1;
        }
    }
}
#endif

}  // namespace

void host_characters_of_positions(uint32_t* positions, uint32_t n, const bdta3_colstr* texts) {
    for (uint32_t begin = 0; begin < n; begin += PickedRows::kMost) {
        const uint32_t left = std::min(PickedRows::kMost, n - begin);
        with_server_charset([&]<class Set>(Set) {
#ifdef QZHOST_MASKED_LOADS
            if constexpr (std::is_same_v<Set, Utf8>) {
                if (has_masked_loads()) return count_utf8_in_front_of_each(positions + begin, left, texts + begin);
            }
#endif
            count_in_front_of_each<Set>(positions + begin, left, texts + begin);
        });
    }
}
