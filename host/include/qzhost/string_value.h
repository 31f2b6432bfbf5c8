/*
 * String values of the reference host: filling, reading and giving back an nstr.
 *
 * The bytes of a value stand in nstr_inline when it has at most 48 and behind nstr_ext otherwise; every service here leaves
 * nstr_ext valid for short values too, pointing at nstr_inline, so a value filled here must not be copied as a record. An
 * assign service looks at nothing that the value held before. A value of more than 48 bytes takes its storage, with a 0 byte
 * behind it, from the memory object given; nstr_cap counts it.
 *
 * Assign services answer 0, EC_OUT_OF_MEMORY, or EC_STRING_TOO_LONG when bytes and written-out blanks do not fit 32 bits; the
 * value is NULL and empty then, and clearing it is harmless.
 *
 * This header is C11 and C++20.
 */
#ifndef QZHOST_STRING_VALUE_H
#define QZHOST_STRING_VALUE_H

#include "qzbifun/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Makes the value hold a copy of the given bytes, blank 0. bytes may be absent when len is 0. */
int32_t nstr_assign_const_ex_no_clear(qz_env* env, rt_memobj* rt_mem, nstr* value, uint32_t len, const char* bytes);

/* The same, followed by blank real blanks: len of the value counts both. */
int32_t nstr_assign_const_with_blank_no_clear(qz_env* env, rt_memobj* rt_mem, nstr* value, const char* bytes, uint32_t len,
                                              uint32_t blank);
int32_t nstr_assign_with_blank_no_clear_ex(qz_env* env, rt_memobj* rt_mem, nstr* value, const char* bytes, uint32_t len,
                                           uint32_t blank);

/* The same from a slot. */
int32_t nstr_assign_with_blank_no_clear(qz_env* env, rt_memobj* rt_mem, nstr* value, const bdta3_colstr* slot);

/* Copies a value as it is: blanks stay a count, NULL stays NULL. */
int32_t nstr_assign(qz_env* env, rt_memobj* rt_mem, nstr* value, const nstr* source);

/* Makes the value refer to the bytes, which outlive it; up to 48 are copied inline. Takes nothing and cannot fail. */
void nstr_assign_fast(nstr* value, uint32_t len, const char* bytes);

/* Copies a value without taking memory: more than 48 bytes stay the source's, which outlives the destination. */
void nstr_set_str_value(nstr* destination, const nstr* source);

/* Gives the value, its blanks written out, as 0-terminated text: in the buffer when it fits with its terminator, otherwise in
 * memory of the memory object, which the caller gives back. NULL on exhaustion. */
char* nstr_set_str_value_ex(qz_env* env, rt_memobj* rt_mem, char* buffer, uint32_t buffer_size, const nstr* value);

/* Copies the stored bytes to destination, ends them with a 0 byte and answers their number. The caller guarantees len + 1
 * bytes. */
uint32_t nstr_get_const_value(const nstr* value, char* destination);

/* Releases what an assign service took and leaves the value NULL and empty. */
void nstr_clear(qz_env* env, rt_memobj* rt_mem, nstr* value);

/* The same for a value whose storage may be somebody else's: one that took nothing stays as it is. */
void nstr_non_reserved_clear(qz_env* env, rt_memobj* rt_mem, nstr* value);

/* The bytes of a value, found by the rule of 48. */
static inline const char* nstr_bytes(const nstr* value) {
    return value->len <= NSTR_INLINE_BYTES ? value->nstr_inline : value->nstr_ext;
}

#ifdef __cplusplus
}
#endif

#endif
