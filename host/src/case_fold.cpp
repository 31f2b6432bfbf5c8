#include <type_traits>

#include "host/src/ascii_fold.h"
#include "host/src/case_tables.h"
#include "host/src/character_walk.h"
#include "host/src/utf8_fold.h"
#include "qzhost/characters.h"

using namespace qzhost;

namespace {

void store_sequence(uint8_t* p, Sequence sequence, size_t length) {
    p[0] = static_cast<uint8_t>(sequence);
    p[1] = static_cast<uint8_t>(sequence >> 8);
    if (length > 2) p[2] = static_cast<uint8_t>(sequence >> 16);
    if (length > 3) p[3] = static_cast<uint8_t>(sequence >> 24);
}

// ---- GB18030 and EUC-KR: a byte is what the walk from the start makes of it -------------------------------------------------

template <class Set>
const LegacyCaseTable& legacy_table(Case to) {
    return std::is_same_v<Set, Gb18030> ? gb18030_case_table(to) : euc_kr_case_table(to);
}

template <Case to, class Set>
void fold_legacy(uint8_t* p, size_t n) {
    size_t run = ascii_run(p, n);
    fold_ascii<to>(p, run);
    if (run == n) return;
    const LegacyCaseTable& table = legacy_table<Set>(to);
    for (size_t i = run; i < n; i += run) {
        const size_t length = step<Set>(p + i, n - i);
        const Sequence sequence = static_cast<Sequence>(length == 4 ? load32(p + i) : load_below_8(p + i, length));
        const Sequence target = length > 1 ? table.find(sequence) : kNoMapping;
        if (target != kNoMapping) store_sequence(p + i, target, length);
        i += length;
        run = ascii_run(p + i, n - i);
        fold_ascii<to>(p + i, run);
    }
}

template <Case to>
void fold(char* text, uint32_t len) {
    uint8_t* p = bytes_of(text);
    with_server_charset([&]<class Set>(Set) {
        if constexpr (std::is_same_v<Set, Utf8>) {
            fold_utf8<to>(Utf8CaseTable::of(to), p, len);
        } else {
            fold_legacy<to, Set>(p, len);
        }
    });
}

}  // namespace

void qz_mbsupper_ex(char* text, uint32_t len) { fold<Case::upper>(text, len); }

void qz_mbslower_ex(char* text, uint32_t len) { fold<Case::lower>(text, len); }
