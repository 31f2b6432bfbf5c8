// Blocks of a call's memory object.
#pragma once

#include "qzbifun/records.h"

namespace bifun {

// Gives a block back. A memory object without free or pool drops its blocks as a whole.
inline void release_block(qz_env* env, const rt_memobj* rt_mem, void* block) {
    if (block == nullptr || rt_mem->pool == nullptr || rt_mem->free == nullptr) return;
    rt_mem->free(env, rt_mem->pool, block);
}

}  // namespace bifun
