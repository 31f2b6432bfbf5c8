/*
 * String functions that tell where a text stands in another. Positions count from 1; 0: it does not stand there.
 *
 * This header is C11 and C++20.
 */
#ifndef QZBIFUN_STRING_SEARCH_H
#define QZBIFUN_STRING_SEARCH_H

#include "qzbifun/forms.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- position, locate, find_in_set --------------------------------------------------------------------------------------- */

/* position(pattern in text): the byte at which the pattern first stands; a character where the pattern's implied blanks are all
 * found among the text's. An empty or NULL pattern stands in every row at 1, NULL rows too, and they become valid; all_valid is
 * the text's. Folds case where the switch case_sensitive is 0. EC_OUT_OF_MEMORY. */
bop_fn_va bposition_va_str;

/* locate(pattern, text, start): the character at which the pattern first stands at or behind the character start, which is 1
 * where it is left out; 0 for a start below 1. Blanks are characters, implied ones too. An empty pattern stands at start, up to
 * one character behind the text. The has_value of constants is not looked at. Never folds case.
 *
 * The text of the forms _clob is a CLOB of less than 2 GiB. EC_OUT_OF_MEMORY, EC_STRING_TOO_LONG, and what reading a CLOB fails
 * with: EC_LOB_TOO_LONG in a vector, EC_LOB_TOO_LONG_ROW in a constant, the host's codes. */
bop_fn_aav blocate_aav_str;
bop_fn_avv blocate_avv_str;
bop_fn_vav blocate_vav_str;
bop_fn_aa blocate_def_aa_str;
bop_fn_av blocate_def_av_str;
bop_fn_va blocate_def_va_str;
bop_fn_aav blocate_aav_str_clob;
bop_fn_avv blocate_avv_str_clob;
bop_fn_vav blocate_vav_str_clob;
bop_fn_aa blocate_def_aa_str_clob;
bop_fn_av blocate_def_av_str_clob;
bop_fn_va blocate_def_va_str_clob;

/* find_in_set(text, list): the number of the first element of a list between commas that equals the text, trailing blanks
 * included; 0 for none. A NULL list is an empty one, and an empty list has one element, the empty text. Implied blanks of the
 * list do not count. EC_OUT_OF_MEMORY: the list could not be cut. */
bop_fn_av bfind_in_set_av_str;

/* ---- instr and instrb ---------------------------------------------------------------------------------------------------- */

/* instr(text, pattern, start, occurrence): an int, the position at which the pattern stands for the occurrence-th time from
 * start on, counted in characters from 1, or 0. Occurrences overlap. start below 0: from the end leftwards, -1 being the last
 * character at which a match may begin; start 0: nothing is found. start and occurrence are ints, 1 when left out.
 *
 * An empty constant makes all rows NULL. An empty text or pattern of a row makes the row NULL; with a start other than 1 or an
 * occurrence above 1 an empty text gives 0.
 *
 * EC_INVALID_ARGUMENT: occurrence below 1, on the error stack. EC_STRING_TOO_LONG: malformed characters that have to be passed
 * or reversed. EC_OUT_OF_MEMORY.
 *
 * A pattern may end in blanks that the text only implies, or be of blanks alone. has_value of constants is not read. With the
 * switch case_sensitive 0 the case of text and pattern is folded first; with a start above 0, binstr_avvv_str and
 * binstr_def1_avv_str fold a constant pattern in the caller's record. */
bop_fn_aa binstr_def2_aa_str;
bop_fn_av binstr_def2_av_str;
bop_fn_va binstr_def2_va_str; /* the text is read through nstr_ext, whatever its length */
bop_fn_avv binstr_def1_avv_str;
bop_fn_avvv binstr_avvv_str;

/* instr(text, pattern) of a CLOB's locator. EC_LOB_TOO_LONG_ROW: the value has the KiB of the parameter LOB_SEARCH_READ_KB, or
 * cannot be read whole. EC_LOB_READ_FAILED: there is no session, or the value ended early. These, and what the host's services
 * answer, stand on the error stack under the function's name. */
bop_fn_va binstr_def2_va_lob;

/* instrb: the same with byte positions. A start inside a character begins at the next one. With case_sensitive 0 and a pattern
 * of blanks alone, the forms without start and occurrence, or with both 1, fold the texts in the caller's vector. */
bop_fn_av binstrb_def2_av_str;
bop_fn_avv binstrb_def1_avv_str;
bop_fn_avvv binstrb_avvv_str;

/* One search in ranges of bytes as they stand: no blanks are implied and no case is folded. *out_pos receives the position as
 * instr counts it, *out_byte_pos the byte of the match, counted from 1 in the bytes that were searched: those behind the
 * characters that start passes. Both are 0 for no match, and after a failure.
 *
 * start 0 searches the whole text and counts positions from 0. start below 0 leaves text and pattern reversed in place, and
 * *out_byte_pos counts in the reversed text. 0, EC_OUT_OF_MEMORY, or EC_STRING_TOO_LONG for malformed characters that have to
 * be passed or reversed; nothing is pushed. */
int32_t ifun_instr_low(qz_env* env, rt_memobj* rt_mem, char* text, uint32_t text_len, char* pattern, uint32_t pattern_len,
                       int32_t start, int32_t occurrence, int32_t* out_pos, int32_t* out_byte_pos);

#ifdef __cplusplus
}
#endif

#endif
