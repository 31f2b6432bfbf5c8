/*
 * Character services of the reference host: how many, how long, where, and in which case.
 *
 * The character set is the numbered parameter SERVER_CHARSET at the moment of the call: 0 GB18030, 1 UTF-8, 2 EUC-KR; any other
 * number counts as 1. A text is a range of bytes without a terminator, and all lengths are in bytes unless told otherwise. No
 * service reads outside the range that it is given.
 *
 * What a character is, in all services but qz_mb_char_get_len: the shortest well-formed sequence of the character set. A byte
 * that begins none is malformed and counts as one character of its own; so does every byte of a sequence that the range cuts
 * off.
 *   UTF-8    well-formed as in the Unicode standard: no overlong form, no surrogate, nothing above U+10FFFF.
 *   GB18030  00-7F; 81-FE with 40-7E or 80-FE; 81-FE, 30-39, 81-FE, 30-39. Bytes 80 and FF begin nothing.
 *   EUC-KR   00-7F; A1-FE with A1-FE.
 *
 * This header is C11 and C++20.
 */
#ifndef QZHOST_CHARACTERS_H
#define QZHOST_CHARACTERS_H

#include "qzbifun/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What the services that answer a length or an offset answer when there is none. */
#define QZ_MB_NONE 0xFFFFFFFFu

/* ---- Counting ------------------------------------------------------------------------------------------------------------ */

/* Number of characters in the range. */
uint32_t qz_mbstrlen_ex(const char* text, uint32_t len);

/* What qz_mbstrlen_ex counts in each of n texts, in less time. A text whose valid byte is 0 is not looked at, and its count is
 * 0. */
void host_count_characters(uint32_t* counts, uint32_t n, const bdta3_colstr* texts, const uint8_t* valid);

/* Turns positions in n texts, counted from 1, from bytes into characters: each becomes the number of characters in the bytes in
 * front of it, plus 1. 0 stays 0, and its text is not looked at. Several times as fast as one after the other. */
void host_characters_of_positions(uint32_t* positions, uint32_t n, const bdta3_colstr* texts);

/* Number of characters; writes to char_positions the 1-based byte position at which each starts, ascending, and to out_mb_count
 * how many of them are longer than one byte. The array has room for one entry per byte of text. Where characters are fewer than
 * bytes, the entry behind the last is set to INT32_MAX: a mark for the search services, which are not told the number. */
uint32_t qz_mbstrlen_cposition_ex(const char* text, uint32_t len, int32_t* char_positions, uint32_t* out_mb_count);

/* Counts whole characters. Where the range ends inside one, out_tail receives how many of its bytes stand there; otherwise
 * 0. */
uint32_t qz_mbstrlen_end(const char* text, uint32_t len, uint32_t* out_tail);

/* Nonzero when the text holds a character longer than one byte. */
int32_t qz_translate_from_str_has_mb(const char* text, uint32_t len);

/* ---- Moving -------------------------------------------------------------------------------------------------------------- */

/* The second character; NULL when the first is the last, or there is none. */
const char* qz_mbsinc_ex(const char* text, uint32_t len);

/* Passes n characters; out_rest receives the bytes left. A text of fewer characters is passed to its end. NULL, and out_rest 0,
 * when one of the characters passed is malformed. */
const char* qz_mbsninc_ex(const char* text, uint32_t len, uint32_t n, uint32_t* out_rest);

/* What qz_mbsninc_ex leaves of each of so many texts behind n characters, in less time. A text that it refuses, and one whose
 * valid byte is 0, leaves no bytes, and NULL for where they stand. */
void host_pass_characters(bdta3_colstr* rests, uint32_t rows, const bdta3_colstr* texts, const uint8_t* valid, uint32_t n);

/* Passes n characters; out_bytes receives how many bytes the m characters behind them take, fewer where the text ends. Never
 * NULL: a malformed byte is passed as a character. */
const char* qz_mbsninc_count_ex(const char* text, uint32_t len, uint32_t n, uint32_t m, uint32_t* out_bytes);

/* ---- Measuring ----------------------------------------------------------------------------------------------------------- */

/* Byte length of the first n characters; len when the text has fewer. */
uint32_t qz_mbget_bytelen(const char* text, uint32_t len, uint32_t n);

/* Byte offset of character number n, counted from 0; QZ_MB_NONE when the text has n characters or fewer. */
uint32_t qz_mbget_byte_offset(const char* text, uint32_t len, uint32_t n);

/* Cuts *in_out_bytes, at most len, down to whole characters of the text, and writes their number to out_chars. A sequence that
 * len itself cuts off goes too. */
void qz_mbget_valid_chars(const char* text, uint32_t len, uint32_t* out_chars, uint32_t* in_out_bytes);

/* Byte length that the character at text should have, by its lead byte alone; 1 for a byte that begins nothing. GB18030 needs
 * the second byte to tell two from four: that byte is read behind a lead byte, so the range must have it. Where it may not,
 * take qz_mb_char_get_len_ex. */
uint32_t qz_mb_char_get_len(const char* text);

/* Byte length of the character at text, of which bytes_left bytes are left; 1 for a malformed byte; QZ_MB_NONE when nothing is
 * left or the bytes left begin a character and do not complete it. */
uint32_t qz_mb_char_get_len_ex(const char* text, uint32_t bytes_left);

/* Nonzero when a character starts at byte index (from 0). out_next receives the first start at or behind it: in this case index
 * itself; len when there is none. */
int32_t qz_char_start(const char* text, uint32_t len, uint32_t index, uint32_t* out_next);

/* ---- Changing in place --------------------------------------------------------------------------------------------------- */

/* Reverses the characters, keeping the byte order inside each, and answers text. NULL when a byte is malformed: the text is
 * unchanged then, since no second reversal could restore it. */
char* qz_mbsrev_ex(char* text, uint32_t len);

/* The same under the compatibility mode of the server; the reference host reverses alike in all of them. 0, or EC_CHAR_INVALID
 * with the text unchanged. */
int32_t qz_mbsrev_with_compatible_mode(char* text, uint32_t len);

/* Folds to upper or lower case, character by character by Unicode's simple mappings. A character whose mapping has another byte
 * length, or none in the character set, stays; malformed bytes stay. */
void qz_mbsupper_ex(char* text, uint32_t len);
void qz_mbslower_ex(char* text, uint32_t len);

/* ---- Comparing ----------------------------------------------------------------------------------------------------------- */

/* Compares n bytes as unsigned numbers. Negative, 0 or positive. */
int32_t qz_mbsncmp_f(const char* left, const char* right, uint32_t n);

/* ---- Trimming and padding ------------------------------------------------------------------------------------------------ */

/* Takes the characters of the set off the front: *in_out_text goes behind them, *in_out_len down. Whole characters count. A
 * malformed byte in text occurs in the set when the set has the same malformed byte. */
void trim_left(qz_env* env, const char* set, uint32_t set_len, const char** in_out_text, uint32_t* in_out_len);

/* The same for leading blanks (0x20), and for trailing ones. */
void trim_left_space(const char** in_out_text, uint32_t* in_out_len);
void trim_right_space(const char* text, uint32_t* in_out_len);

enum { QZ_PAD_MAX_BYTES = 32767 }; /* longest padded value; the output buffer holds this and one byte more */

/* Fills text to length characters with pad, as often as needed and cut to whole characters, in front (lpad) or behind (rpad). A
 * text of more characters is cut to its first length ones. out_len receives the bytes of the result. An empty pad leaves a
 * short text as it is. EC_STRING_TOO_LONG when the result would be longer than QZ_PAD_MAX_BYTES, EC_INVALID_ARGUMENT for a
 * negative length; output and out_len are not defined then. output overlaps neither argument. */
int32_t qz_get_lpad_str(const char* text, uint32_t text_len, int32_t length, const char* pad, uint32_t pad_len, char* output,
                        uint32_t* out_len);
int32_t qz_get_rpad_str(const char* text, uint32_t text_len, int32_t length, const char* pad, uint32_t pad_len, char* output,
                        uint32_t* out_len);

#ifdef __cplusplus
}
#endif

#endif
