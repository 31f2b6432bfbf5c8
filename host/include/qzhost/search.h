/*
 * Search services of the reference host: the n-th place at which a pattern stands in a text.
 *
 * All lengths are in bytes. out_pos receives the byte of text at which the match begins, counted from 1, or 0; the result is
 * nonzero exactly when there is one. An occurrence below 1 has no match, nor has an empty pattern.
 *
 * A match begins at the start of a character: bytes that agree from inside a character on are none. The services with
 * char_positions read the starts from that array. The others find them in the text, whose first byte they take for a start, by
 * the rules of qzhost/characters.h; that holds for qz_strbmncmp_arr_ex too. Occurrences overlap: behind a match the search goes
 * on at the next character.
 *
 * Tables prepared by the caller hasten a search and do not change its result. Two tables that are one and the same are not
 * used. Tables of another pattern, or of nonsense, may make a search miss matches; they never make one, nor a read outside the
 * text.
 *
 * This header is C11 and C++20.
 */
#ifndef QZHOST_SEARCH_H
#define QZHOST_SEARCH_H

#include "qzbifun/records.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
    QZ_BMBC_ENTRIES = 256,       /* entries of a bad-character table */
    QZ_SHIFT_MASK_ENTRIES = 256, /* entries of a mask table */
    QZ_SHIFT_OR_MAX_PATTERN = 31 /* longest pattern of the shift-or services */
};

/* ---- Tables -------------------------------------------------------------------------------------------------------------- */

/* Boyer-Moore's bad-character table: for each byte, its distance from the pattern's end at its last place before the last byte;
 * pattern_len for a byte that has none. */
void preprocess_bmbc(const char* pattern, uint32_t pattern_len, uint32_t* table);

/* The good-suffix table: entry i is how far the pattern may move when its bytes behind i agree and byte i does not. The table
 * has pattern_len entries. Takes linear time and no memory. */
void preprocess_bmgs(const char* pattern, uint32_t pattern_len, uint32_t* table);

/* The masks of shift-or, for a pattern of 1 to QZ_SHIFT_OR_MAX_PATTERN bytes: bit i of a byte's mask is 0 where the pattern has
 * the byte at i. Answers the limit word: a state below it is a match. A longer or empty pattern: all masks are all ones, the
 * limit is 0, and nothing ever matches. */
uint32_t preshiftorprocess(const char* pattern, uint32_t pattern_len, uint32_t* masks);

/* ---- Boyer-Moore services, any pattern length ---------------------------------------------------------------------------- */

int32_t qz_strbmncmp(const char* text, uint32_t text_len, const char* pattern, uint32_t pattern_len, uint32_t* out_pos,
                     int32_t occurrence);

/* char_positions, filled by qz_mbstrlen_cposition_ex, has the characters of a whole text; text begins at byte base of that,
 * from 0. A match at position p counts when base + p stands in the array; the array alone decides. */
int32_t qz_strbmncmp_arr(const char* text, uint32_t text_len, const char* pattern, uint32_t pattern_len,
                         const int32_t* char_positions, int32_t occurrence, uint32_t* out_pos, uint32_t base);

/* With the tables of preprocess_bmbc and preprocess_bmgs. */
int32_t qz_strbmncmp_arr_ex(const char* text, uint32_t text_len, const char* pattern, uint32_t pattern_len, int32_t occurrence,
                            uint32_t* out_pos, const uint32_t* bmbc, const uint32_t* bmgs);

/* What qz_strbmncmp_arr_ex finds, with occurrence 1, in each of n texts: several times as fast as one after the other. A text
 * whose valid byte is 0 is not looked at, and its position is 0. The tables may be NULL. */
void host_find_in_texts(uint32_t* positions, uint32_t n, const bdta3_colstr* texts, const uint8_t* valid, const char* pattern,
                        uint32_t pattern_len, const uint32_t* bmbc, const uint32_t* bmgs);

/* ---- Shift-or services, patterns of at most QZ_SHIFT_OR_MAX_PATTERN bytes; a longer one has no match --------------------- */

int32_t qz_mbshiftor_ncmp(const char* text, uint32_t text_len, const char* pattern, uint32_t pattern_len, uint32_t* out_pos,
                          int32_t occurrence);

/* char_positions and base as for qz_strbmncmp_arr. */
int32_t qz_mbshiftor_ncmp_arr(const char* text, uint32_t text_len, const char* pattern, uint32_t pattern_len,
                              const int32_t* char_positions, int32_t occurrence, uint32_t* out_pos, uint32_t base);

/* With the masks and the limit word of preshiftorprocess. */
int32_t qz_mbshiftor_ncmp_arr_ex(const char* text, uint32_t text_len, const char* pattern, uint32_t pattern_len,
                                 const int32_t* char_positions, int32_t occurrence, uint32_t* out_pos,
                                 const uint32_t* shift_masks, uint32_t shift_limit, uint32_t base);

/* ---- Blanks -------------------------------------------------------------------------------------------------------------- */

/* For a pattern of blanks only: how many blanks stand at the end of text. A match can begin at each of them and run over into
 * implied blanks. 0 for any other pattern. */
uint32_t qz_get_occur_num(const char* text, uint32_t text_len, const char* pattern, uint32_t pattern_len);

#ifdef __cplusplus
}
#endif

#endif
