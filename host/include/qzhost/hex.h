/*
 * Hexadecimal services of the reference host.
 *
 * Digits are read in either case and written in upper case.
 *
 * This header is C11 and C++20.
 */
#ifndef QZHOST_HEX_H
#define QZHOST_HEX_H

#include "qzbifun/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What nbin_from_char_ex fills: the caller gives it room for all bytes that the text can make. */
typedef struct nbin_record {
    uint32_t count;
    uint8_t bytes[]; /* count of them */
} nbin_record;

/* Turns len hexadecimal digits into (len + 1) / 2 bytes: an odd text counts as one with a 0 in front. out is an nbin_record. 0,
 * or EC_HEX_TEXT_INVALID for any other character, and out's count is 0 then. flag is always 0. */
int32_t nbin_from_char_ex(const char* text, uint32_t len, void* out, int32_t flag);

/* The same without a record: the bytes to destination, their number to out_len. 0, or -1 for any other character. */
int32_t nbin_from_char_low_with_len(const char* text, uint32_t len, uint8_t* destination, uint32_t* out_len);

/* Writes two digits per byte and a closing 0 byte: the caller gives 2 * len + 1 bytes. Answers 0. flag is always 0. */
int32_t nbin_to_char_ex(const void* bytes, uint32_t len, char* destination, int32_t flag);

#ifdef __cplusplus
}
#endif

#endif
