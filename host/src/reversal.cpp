#include "host/src/reversal_blocks.h"
#include "host/src/reversal_masked.h"
#include "qzbifun/codes.h"
#include "qzhost/characters.h"

using namespace qzhost;

namespace {

bool reverse_text(char* text, uint32_t len) {
#ifdef QZHOST_MASKED_LOADS
    if (is_server_utf8() && has_masked_loads()) return reverse_utf8_masked(bytes_of(text), len);
#endif
    return with_server_charset([&]<class Set>(Set) { return reverse_characters<Set>(bytes_of(text), len); });
}

}  // namespace

char* qz_mbsrev_ex(char* text, uint32_t len) { return reverse_text(text, len) ? text : nullptr; }

int32_t qz_mbsrev_with_compatible_mode(char* text, uint32_t len) { return reverse_text(text, len) ? 0 : EC_CHAR_INVALID; }
