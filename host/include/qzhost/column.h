/*
 * Column services of the reference host: storing values in the rows of a vector.
 *
 * col is a vector descriptor, block its storage, row a physical row number that the caller guarantees to exist. A record is a
 * constant of the vector's value type. None of these reads or writes the vector's selection, unless told otherwise, and none
 * but bdta3_col_copy touches all_valid.
 *
 * The fixed-width setters stand here inline: they are the innermost step of every row loop.
 *
 * This header is C11 and C++20.
 */
#ifndef QZHOST_COLUMN_H
#define QZHOST_COLUMN_H

#include <string.h>

#include "qzbifun/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Fixed widths: values[row] receives the record's value, valid[row] whether the record has one (0 or 1) --------------- */

inline void bdta3_set_int(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row, const bdta3_int* record) {
    (void)env, (void)rt_mem;
    ((int32_t*)col->data->values)[row] = record->value;
    col->data->valid[row] = record->has_value != 0;
}

inline void bdta3_set_int64(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row, const bdta3_int64* record) {
    (void)env, (void)rt_mem;
    ((int64_t*)col->data->values)[row] = record->value;
    col->data->valid[row] = record->has_value != 0;
}

inline void bdta3_set_double(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row, const bdta3_double* record) {
    (void)env, (void)rt_mem;
    ((double*)col->data->values)[row] = record->value;
    col->data->valid[row] = record->has_value != 0;
}

inline void bdta3_set_dec(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row, const bdta3_dec* record) {
    (void)env, (void)rt_mem;
    ((xdec*)col->data->values)[row] = record->value;
    col->data->valid[row] = record->has_value != 0;
}

inline void bdta3_set_datetime(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row, const bdta3_datetime* record) {
    (void)env, (void)rt_mem;
    ((qztime*)col->data->values)[row] = record->value;
    col->data->valid[row] = record->has_value != 0;
}

/* ---- Strings ---------------------------------------------------------------------------------------------------------------
 *
 * A text of up to 4096 bytes is copied to the vector's own space, which grows as needed and goes with the vector or its
 * reset. A longer one is a block that rt_mem gives, so that it can be released by itself; without rt_mem it is own space as
 * well. Texts are not aligned. An empty text has a pointer too, which counts as own space. text may come from the vector
 * itself. */

/* Stores text[0..len) and blank implied blanks in slot row, and sets valid[row] to 1. text may be absent when len is 0.
 * EC_OUT_OF_MEMORY: slot and valid are as before. The slot's old text is not released. */
int32_t bdta3_col_assign_str(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row, const char* text, uint32_t len,
                             uint32_t blank);

/* The same for binary data, and for text that is the value of a LOB; blank is 0. A LOB vector receives the latter as a locator
 * with the data in it, any other vector as it stands. */
int32_t bdta3_col_assign_bin(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row, const void* data, uint32_t len);
int32_t bdta3_col_assign_text(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row, const char* text, uint32_t len);

/* The same for a NUL-terminated text, and for a counted one; blank is 0. */
int32_t bdta3_set_str_from_str(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row, const char* text);
int32_t bdta3_set_str_from_str_with_len(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row, const char* text,
                                        uint32_t len);

/* Sets the slot's len and blank, reserves len bytes and answers them for the caller to fill; valid is the caller's. NULL on
 * exhaustion, and the slot is as before then. */
char* bdta3_colstr_assign_without_value(qz_env* env, rt_memobj* rt_mem, bdta3_coldata* block, uint32_t row, uint32_t len,
                                        uint32_t blank);

/* Room for a text of size bytes; the caller fills slot and valid. NULL on exhaustion alone, also for size 0. */
char* bdta3_col_space_alloc(qz_env* env, rt_memobj* rt_mem, bdta3_coldata* block, uint32_t size);

/* Copies a slot with its text. EC_OUT_OF_MEMORY: the destination is as before. */
int32_t bdta3_colstr_copy(qz_env* env, rt_memobj* rt_mem, bdta3_coldata* block, bdta3_colstr* destination,
                          const bdta3_colstr* source);

/* Moves the trailing blanks of the first len bytes of the stored text into the slot's count: len is what the slot stores
 * now. */
void bdta3_colstr_trim(bdta3_colstr* slot, uint32_t len);

/* Compares two values as if the shorter were filled up with blanks, byte by byte. Negative, 0 or positive. zero is always 0. */
int32_t bdta3_colstr_cmp_with_blank(const bdta3_colstr* slot, const bdta3_colstr* other, int32_t zero);

/* Lets value stand for a slot. A text longer than the inline buffer is not copied, and lives as long as the slot's. A
 * shorter one stands in the buffer, with nstr_ext leading there: value itself must not be moved. Nothing is to be cleared
 * afterwards. */
void bdta3_colstr_to_nstr_fast(const bdta3_colstr* slot, nstr* value);

/* Nonzero when text, the start of a text, is in the space that goes with the block: not to be released by itself. */
int32_t bdta3_str_is_in_local(const bdta3_coldata* block, const char* text);

/* ---- Whole vectors ------------------------------------------------------------------------------------------------------- */

/* Fills physical rows 0 to nrows-1 of the destination with as many logical rows of the source, as it selects them: valid
 * bytes as they are, values, and for a string vector the texts, each of its own also where a selection repeats one. A NULL
 * row of a string vector keeps the destination's slot. all_valid of the destination becomes that of the source. Both have
 * the same value type. Source and destination may be the same vector, or share their storage; the selection stays in place
 * then and the caller clears it. EC_OUT_OF_MEMORY comes of texts and of shared storage: rows that were not copied are NULL
 * then, or all are as before. */
int32_t bdta3_col_copy(qz_env* env, rt_memobj* rt_mem, bdta3_col* destination, const bdta3_col* source, uint32_t nrows);

/* ---- Overflow tests: 0 when the value may be stored, EC_DATA_OVERFLOW for an infinity or a value out of range ------------ */

int32_t ntype_is_double_overflow(double value); /* NaN may be stored */
int32_t ntype_is_float_overflow(double value);  /* out of range: the nearest float would be infinite. NaN may be stored */

#ifdef __cplusplus
}
#endif

#endif
