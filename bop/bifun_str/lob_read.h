// A LOB of a slot, whole, in one block.
#pragma once

#include "qzbifun/records.h"

namespace bifun {

// Reads the value behind the locator of a slot: as character data when the low byte of is_text is 1, as bytes otherwise.
// *out_data receives a block of rt_mem with a 0 byte behind the *out_len bytes of the value; it is the caller's to give back.
//
// EC_LOB_TOO_LONG and EC_OUT_OF_MEMORY are pushed. Codes of the services are handed on; a failed look-up of the encryption is
// logged. After a failed look-up, or when the locator cannot be copied, *out_data still has the block: whoever reads with a
// memory object that is not dropped afterwards gives it back. After all other failures it is NULL.
int32_t bifun_lob_to_str(qz_env* env, rt_memobj* rt_mem, const bdta3_colstr* slot, uint32_t is_text, char** out_data,
                         uint32_t* out_len);

}  // namespace bifun
