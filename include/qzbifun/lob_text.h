/*
 * LOBs read whole.
 *
 * A CLOB or BLOB reaches a function as a locator: the bytes of a slot or of a string value. Before a function works on it, the
 * whole value is copied to one block.
 *
 * This header is C11 and C++20.
 */
#ifndef QZBIFUN_LOB_TEXT_H
#define QZBIFUN_LOB_TEXT_H

#include "qzbifun/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The value behind the locator that a string value holds. reader is handed to the host's read services; -1 is any. is_text 1
 * reads character data, anything else bytes.
 *
 * *out_data receives a block of rt_mem with a 0 byte behind the data, which the caller gives back to rt_mem; *out_len receives
 * the bytes that came, fewer than the value's length when the host delivers fewer. 0, or a negative code and *out_data is NULL:
 * EC_LOB_TOO_LONG_ROW (2 GiB or more, a length that is not known, bytes that are no locator) and EC_OUT_OF_MEMORY, both on the
 * error stack too, and what the host's services answer, which is not. */
int32_t ifun_lob_to_str_ex(qz_env* env, int32_t reader, rt_memobj* rt_mem, const nstr* lob, uint8_t is_text, char** out_data,
                           uint32_t* out_len);

/* The text of a JSON value in a slot: for is_lob 0 the slot's own bytes, not copied and without its blanks, which the caller
 * does not give back; otherwise the CLOB behind its locator, in a block as above.
 *
 * 0, or EC_JSON_NO_DATA for an empty value, EC_LOB_TOO_LONG (2 GiB or more, a length that is not known, bytes that are no
 * locator) and EC_OUT_OF_MEMORY, all on the error stack too, and what the host's services answer, which is not. After a failure
 * *out_data is NULL but where the host could not look up the value's encryption or the locator could not be copied: then it has
 * the block, for the caller to give back. */
int32_t bjson_get_data_inner(qz_env* env, rt_memobj* rt_mem, const bdta3_colstr* slot, uint32_t is_lob, char** out_data,
                             uint32_t* out_len);

#ifdef __cplusplus
}
#endif

#endif
