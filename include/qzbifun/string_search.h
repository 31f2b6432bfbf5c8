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

/* position(pattern in text): the byte at which the pattern first stands; a character where the pattern's implied blanks are all found
 * among the text's. An empty or NULL pattern stands in every row at 1, NULL rows too, and they become valid; all_valid is the
 * text's. Folds case where the switch case_sensitive is 0. EC_OUT_OF_MEMORY. */
bop_fn_va bposition_va_str;

/* locate(pattern, text, start): the character at which the pattern first stands at or behind the character start, which is 1 where
 * it is left out; 0 for a start below 1. Blanks are characters, implied ones too. An empty pattern stands at start, up to one
 * character behind the text. The has_value of constants is not looked at. Never folds case.
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

#ifdef __cplusplus
}
#endif

#endif
