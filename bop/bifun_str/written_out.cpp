#include "bop/bifun_str/written_out.h"

#include <cstring>

#include "qzbifun/codes.h"

namespace bifun {

int32_t colstr_expand_blanks(qz_env* env, rt_memobj* rt_mem, bdta3_colstr* out_slot, const bdta3_colstr* slot) {
    if (out_slot == slot) return 0;
    const uint64_t total = uint64_t{slot->len} + slot->blank;
    if (total > UINT32_MAX) return EC_OUT_OF_MEMORY;
    // An empty value has a block too, so that an absent one always means exhaustion.
    const size_t size = total == 0 ? 1 : total;
    char* const bytes = static_cast<char*>(rt_mem->alloc(env, rt_mem->pool, size, __FILE__, __LINE__));
    if (bytes == nullptr) return EC_OUT_OF_MEMORY;
    if (slot->len != 0) std::memcpy(bytes, slot->bytes, slot->len);
    std::memset(bytes + slot->len, ' ', slot->blank);
    *out_slot = {static_cast<uint32_t>(total), 0, bytes};
    return 0;
}

}  // namespace bifun
