// What the functions of strings share: the limit of a value, and room for one in the result.
#pragma once

#include <cstdint>

#include "bop/frame/row.h"
#include "qzhost/column.h"

namespace bifun {

inline constexpr uint32_t kMostTextBytes = 32767;  // stored bytes of a value

// Sets the row's slot and answers the len bytes for the caller to fill. NULL on exhaustion, which is none when len is 0.
inline char* reserve_text(Row out, uint32_t len, uint32_t blank) {
    return bdta3_colstr_assign_without_value(out.env(), out.rt_mem(), out.result()->data, out.index(), len, blank);
}

inline Code put_blanks(Row out, uint32_t blank) {
    (void)reserve_text(out, 0, blank);
    return kOk;
}

}  // namespace bifun
