/*
 * One-pass functions of a string: concat, lengths, case, reverse, repeat, space.
 *
 * A string is its stored bytes and a count of blanks behind them that are not stored; each function says whether those count,
 * are written out or are carried over. Characters are those of the host's character set. A result holds at most 32767 stored
 * bytes; blanks that stay a count may come on top.
 *
 * This header is C11 and C++20.
 */
#ifndef QZBIFUN_STRING_BASICS_H
#define QZBIFUN_STRING_BASICS_H

#include "qzbifun/forms.h"

#ifdef __cplusplus
extern "C" {
#endif

/* concat(a, b): blanks of a are written out where text of b follows them, and added to those of b where none does; a NULL
 * counts as nothing, and a row is NULL only when both are. EC_STRING_TOO_LONG: more than 32767 stored bytes.
 * EC_INVALID_ARGUMENT: so many in a alone, with b NULL; b alone is stored whatever its length. */
bop_fn_aa bconcat_aa_str;
bop_fn_av bconcat_av_str;
bop_fn_va bconcat_va_str;

/* Lengths, result int unless told otherwise. A string that is empty in the sense of the function has none: the row is NULL, but
 * for the compatibility modes named, in which it is 0. */
bop_fn_a blength_a_str;  /* characters, blanks left out; empty without stored bytes; 3, 5. With parameter COMPAT_MODE_PARAM 5 a
                                 NULL row is 0 too */
bop_fn_a blengthb_a_str; /* bytes, blanks counted; 3, 4, 5, 7 */
bop_fn_a blength_space_a_str; /* characters, blanks counted; 3, 4, 5, 7 */
bop_fn_a bbitlength_a_str;    /* 8 times the bytes, blanks counted; 0 for an empty string */

/* Bytes of a LOB by its locator, result bigint; the data is not read. -1: the length is not known, also where the locator is
 * too short to tell it; 0 for a slot without a locator. */
bop_fn_a blengthb_blob_a_str;

/* Upper and lower case, character by character; blanks stay a count. EC_OUT_OF_MEMORY, with nothing on the error stack. */
bop_fn_a bupper_a_str;
bop_fn_a blower_a_str;
bop_fn_a bnls_upper_a; /* as bupper_a_str, and never fails: a row that cannot be stored is NULL */

/* Lower case, with capitals at the start and behind every character that is no ASCII letter or digit. Only ASCII letters are
 * raised. EC_OUT_OF_MEMORY, with nothing on the error stack. */
bop_fn_a binitcap_a_str;

/* The characters in reverse, blanks first; what blanks end up last are a count again. EC_CHAR_INVALID: bytes that are no
 * character, on the log and not on the error stack. EC_OUT_OF_MEMORY, with nothing on the error stack. */
bop_fn_a breverse_a_str;

/* n times the string, its blanks written out between the copies; empty for n 0. EC_INVALID_ARGUMENT, with nothing on the error
 * stack: n below 0, or a result of more than 32767 bytes, blanks counted. The has_value of n is not read. */
bop_fn_av brepeatstr_av_str; /* string, int */

/* A string of n blanks, none of them stored. EC_INVALID_ARGUMENT: n below 0 or above 32767. */
bop_fn_a bspace_a_str; /* int */

#ifdef __cplusplus
}
#endif

#endif
