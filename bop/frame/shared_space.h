// Room that the texts of several rows share.
#pragma once

#include <cstdint>

#include "bop/frame/call.h"
#include "bop/frame/memory.h"
#include "qzhost/column.h"

namespace bifun {

// Few enough to stay in the first cache level, and for a vector to have room for them in its own space.
inline constexpr uint32_t kMostSharedBytes = 2048;

// Room in the result's own space, which goes with the vector; NULL where there is none. A block that its rows could not give back
// one by one is given back here.
inline char* take_shared_space(const Call& call, const bdta3_col* result, uint32_t bytes) {
    char* const space = bdta3_col_space_alloc(call.env, call.rt_mem, result->data, bytes);
    if (space == nullptr || bdta3_str_is_in_local(result->data, space) != 0) return space;
    release_block(call.env, call.rt_mem, space);
    return nullptr;
}

}  // namespace bifun
