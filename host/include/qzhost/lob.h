/*
 * LOB services of the reference host: what a locator says, and reading the value behind it.
 *
 * A locator is the stored form of a CLOB or BLOB in a slot or a string value. Integers are little-endian and unaligned:
 *
 *   offset 0   u8   storage kind: 1 the data stands in the locator, 4 the long form, any other the short form
 *   offset 1   u64  number of the value in its environment's store
 *   offset 9   u32  value length of the short form (kind 1 too); 0xFFFFFFFF: not known
 *   offset 13  u8   1: character data, 2: enciphered in the store, added up
 *   offset 14  u64  check word: a value of the store is only found by a locator that knows it
 *   offset 39  u64  value length of the long form
 *   offset 47       data of an in-row value
 *
 * Values out of row live in the store of the environment that made them until host_lob_release_all, and go with it. A locator
 * is checked before it is used: one that is cut short, whose in-row data is not all there, or that names no value of the store
 * is answered by a code and never by reading outside. A slot or string value of length 0 holds no locator and counts as an
 * empty value.
 *
 * Failures: EC_LOB_READ_FAILED for a locator that names nothing or a wrong encryption handle, EC_OUT_OF_MEMORY, and whatever
 * host_lob_fail told.
 *
 * This header is C11 and C++20.
 */
#ifndef QZHOST_LOB_H
#define QZHOST_LOB_H

#include "qzbifun/records.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
    LOB_KIND_IN_ROW = 1,
    LOB_KIND_SHORT = 2,
    LOB_KIND_LONG = 4,
    LOB_KIND_AT = 0, /* offsets in a locator */
    LOB_SHORT_LENGTH_AT = 9,
    LOB_LONG_LENGTH_AT = 39,
    LOB_DATA_AT = 47,   /* and the size of a locator without data */
    LOB_READER_ANY = -1 /* the reader of a caller that has none of its own */
};
#define LOB_LENGTH_UNKNOWN 0xFFFFFFFFu

/* What makes a value readable: the key of one enciphered value, or a key ring that serves every value of the environment. */
typedef struct nblob_encryption nblob_encryption;

/* The caller's room for a handle; it lives as long as the handle is used. */
typedef struct ndct_work_area {
    uint64_t words[10];
} ndct_work_area;

/* Nonzero when the value cannot be read whole through its string value: of 2^31 bytes or more, or no sound locator. */
int32_t nblob_is_long_row(const nstr* locator);

/* Value length as 32 bits: 0xFFFFFFFF when it is not known or larger, 0 when the locator is not sound. */
uint32_t nblob_get_4byte_len(const nstr* locator);

/* Value length of a slot's locator, without reading the data: 0xFFFFFFFF when a short form does not know it, all ones when the
 * locator is not sound. */
uint64_t nblob_get_len_for_colstr_fast(const bdta3_colstr* slot);

/* Nonzero when the data stands in the slot's locator, all of it. */
int32_t nblob_is_in_row_for_colstr_fast(const bdta3_colstr* slot);

/* The encryption handle of a value. locator has LOB_DATA_AT bytes at least: a sound length says so. out_status is 0 or
 * negative; the result is NULL then. */
const nblob_encryption* ndct_get_blob_enc_info(qz_env* env, rt_memobj* rt_mem, const char* locator, ndct_work_area* work,
                                               int32_t* out_status);

/* The same; out_reuse reads 0 when the handle serves all further rows too, 1 when it is this value's own. */
const nblob_encryption* ndct_get_blob_enc_info_low(qz_env* env, rt_memobj* rt_mem, const char* locator, ndct_work_area* work,
                                                   int32_t* out_reuse, int32_t* out_status);

/* Copies up to count bytes of the value, from byte offset on, to destination, which holds capacity. out_read receives how many
 * came: fewer where the value ends or the store delivers less. 0 or negative, and out_read is 0 then. encryption may be absent
 * for a value that is not enciphered. */
int32_t nblob_get_data(qz_env* env, int32_t reader, const nstr* locator, void* destination, uint32_t capacity, uint64_t offset,
                       uint32_t count, uint32_t* out_read, const nblob_encryption* encryption);

/* The same for character data: what is read ends with a whole character, unless the value itself does not. */
int32_t ntext_get_data(qz_env* env, int32_t reader, const nstr* locator, void* destination, uint32_t capacity, uint64_t offset,
                       uint32_t count, uint32_t* out_read, const nblob_encryption* encryption);

/* The reader that a session's own reads use. */
int32_t sess4_get_lob_reader(const qz_session* session);

#ifdef __cplusplus
}
#endif

#endif
