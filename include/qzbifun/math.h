/*
 * Numeric functions.
 *
 * NULL rule unless a function says otherwise: a NULL argument gives a NULL row, and the row's element is left as it was.
 *
 * This header is C11 and C++20.
 */
#ifndef QZBIFUN_MATH_H
#define QZBIFUN_MATH_H

#include "qzbifun/forms.h"

#ifdef __cplusplus
extern "C" {
#endif

/* abs(x). The lowest bigint has no magnitude: EC_DATA_OVERFLOW. */
bop_fn_a babs_a_math_int; /* bigint, its name notwithstanding */
bop_fn_a babs_a_math_dec; /* decimal */

/* ceil(x) and floor(x). Those of a decimal go by its scale alone: ceil of 2.00, stored with two fraction digits, is 3. */
bop_fn_a bceil_a_math_int;     /* int */
bop_fn_a bceil_a_math_int64;   /* bigint */
bop_fn_a bceil_a_math_dec;     /* decimal */
bop_fn_a bfloor_a_math_int;    /* int */
bop_fn_a bfloor_a_math_bigint; /* bigint */
bop_fn_a bfloor_a_math_dec;    /* decimal */

/* Functions of one double. Outside the domain: EC_INVALID_ARGUMENT. A NaN passes every test and gives what the mathematics
 * library gives for it. */
bop_fn_a babs_a_math_dbl;
bop_fn_a bacos_a_math_dbl; /* -1 to 1 */
bop_fn_a basin_a_math_dbl; /* -1 to 1 */
bop_fn_a batan_a_math_dbl;
bop_fn_a bceil_a_math_dbl;
bop_fn_a bcos_a_math_dbl;
bop_fn_a bcosh_a_math_dbl;    /* EC_DATA_OVERFLOW */
bop_fn_a bcot_a_math_dbl;     /* not 0 */
bop_fn_a bdegrees_a_math_dbl; /* EC_DATA_OVERFLOW; pi to 15 digits */
bop_fn_a bexp_a_math_dbl;     /* EC_DATA_OVERFLOW */
bop_fn_a bfloor_a_math_dbl;
bop_fn_a bln_a_math_dbl;      /* above 0 */
bop_fn_a blog10_a_math_dbl;   /* above 0 */
bop_fn_a bradians_a_math_dbl; /* pi to 15 digits */
bop_fn_a brand_a_math_int;    /* double, its name notwithstanding: a number from 0 to 1 that follows from x alone */
bop_fn_a bsign_a_math_dbl;    /* result int: -1, 0 or 1; 0 for NaN */
bop_fn_a bsin_a_math_dbl;
bop_fn_a bsinh_a_math_dbl; /* EC_DATA_OVERFLOW */
bop_fn_a bsqrt_a_math_dbl; /* not below 0 */
bop_fn_a btan_a_math_dbl;
bop_fn_a btanh_a_math_dbl;

/* Functions of two doubles; a NaN passes every test. A NULL constant shows in all_valid alone. */
bop_fn_aa batan2_aa_math_dbl; /* atan2(x, y): not both 0 */
bop_fn_av batan2_av_do_math_dbl;
bop_fn_va batan2_va_do_math_dbl;
bop_fn_aa blog_aa_math_dbl; /* log(base, x): both above 0, base not 1 */
bop_fn_av blog_av_do_math_dbl;
bop_fn_va blog_va_do_math_dbl;
bop_fn_aa bmod_aa_math_dbl; /* mod(x, y), with the sign of x; x where y is 0 */
bop_fn_av bmod_av_do_math_dbl;
bop_fn_va bmod_va_do_math_dbl;
bop_fn_aa bmod_aa_math_int64; /* the same of bigints */
bop_fn_av bmod_av_do_math_int64;
bop_fn_va bmod_va_do_math_int64;
bop_fn_aa bpower_aa_math_dbl; /* power(x, y): x not below 0 unless y is whole, not 0 to a negative power; EC_DATA_OVERFLOW */
bop_fn_av bpower_av_do_math_dbl;
bop_fn_va bpower_va_do_math_dbl;

/* remainder(x, y): x less y times the nearest whole quotient, halves to the even one; a zero has the sign of x.
 * EC_INVALID_ARGUMENT: y is 0. A NULL constant gives NULL rows. */
bop_fn_aa bremainder_aa;
bop_fn_av bremainder_av;
bop_fn_va bremainder_va;

/* The same of one pair. y is not tested: NaN where it is 0. */
double get_remainder(double x, double y);

/* round(x, n): to n decimal places, ties away from zero; n may be negative. n without a value counts by what stands in it.
 * EC_DATA_OVERFLOW: an infinite result. A value whose scaling overflows is kept as it is. */
bop_fn_aa bround_aa_math_dbl; /* double, int */
bop_fn_av bround_av_li_math_dbl;
bop_fn_va bround_va_do_math_dbl;
bop_fn_a bround_def_a_math_dbl;   /* decimal, its name notwithstanding; n is 0 */
bop_fn_aa bround_dec_aa_math_dbl; /* decimal, int */
bop_fn_av bround_dec_av_li_math_dbl;
bop_fn_va bround_dec_va_de_math_dbl;

/* round(x, n, option): truncates when the decimal option is neither NULL nor zero. A NULL n makes all rows NULL. */
bop_fn_avv bround_with_opt_avv_lide_math_dbl;     /* double, int, decimal */
bop_fn_avv bround_dec_with_opt_avv_lide_math_dec; /* decimal, int, decimal */

/* trunc(x, n): cut to n decimal places. */
bop_fn_aa btrunc_dec_aa_math; /* decimal, int */
bop_fn_av btrunc_dec_av_li_math;
bop_fn_va btrunc_dec_va_de_math;    /* a NULL constant makes the computed rows NULL */
bop_fn_a btrunc_dec_def_a_math;     /* decimal, to an integer */
bop_fn_a btrunc_def_a_math_dbl;     /* double, to an integer */
bop_fn_a btrunc_int_def_a_math_int; /* bigint: the value */

/* trunc(text, n), result double: cuts the digits in the text, then reads it. Looks at 319 bytes. With an exponent the places
 * count in the mantissa, and without a point beside it nothing of the mantissa is cut. An empty text gives NULL.
 * EC_INVALID_ARGUMENT: the text is no number; EC_DATA_OVERFLOW: its exponent reaches 1000. */
bop_fn_aa btrunc_aa_math; /* string, int */
bop_fn_av btrunc_av_li_math;
bop_fn_va btrunc_va_s_math; /* the constant may hold digits and a point alone */

/* One double rounded (trunc_flag 0) or truncated at n places, as above. 0 or EC_DATA_OVERFLOW; *result is always written. */
int32_t double_round_with_trunc_flag(double x, int32_t n, int32_t trunc_flag, double* result);

/* The head of a number in text[0..len): whether it has a sign (0 or 1), and the index behind it. EC_INVALID_ARGUMENT, on the
 * error stack too: a sign alone, or a point without a digit behind it. */
int32_t ifun_trunc_head_check(qz_env* env, const char* text, uint32_t len, int32_t* has_sign, uint32_t* position);

/* The parts of a number in text[start..len): the exponent and its sign (1 or -1), 0 and 1 where there is none, the indexes of
 * the point and of the E, which stay as they are where there is none. EC_INVALID_ARGUMENT, EC_DATA_OVERFLOW for an exponent of
 * 1000 or more; both on the error stack too. */
int32_t ifun_trunc_escan(qz_env* env, const char* text, uint32_t len, uint32_t start, int32_t* exponent_sign, int32_t* exponent,
                         uint32_t* point, uint32_t* e);

/* greatest(x, y) and least(x, y). A NaN on either side gives y, and so do equal values. */
bop_fn_aa bgreatest_aa_math_dbl; /* double */
bop_fn_av bgreatest_av_do_math_dbl;
bop_fn_va bgreatest_va_do_math_dbl;
bop_fn_aa bleast_aa_math;
bop_fn_av bleast_av_do_math;
bop_fn_va bleast_va_do_math;
bop_fn_aa bgreatest_aa_math_bigint; /* bigint; the constants too, whatever the letters of the name */
bop_fn_av bgreatest_av_do_math_bigint;
bop_fn_va bgreatest_va_do_math_bigint;
bop_fn_aa bleast_aa_math_bigint;
bop_fn_av bleast_av_bi_math_bigint;
bop_fn_va bleast_va_bi_math_bigint;
bop_fn_aa bgreatest_aa_math_dec; /* decimal; the constants too */
bop_fn_av bgreatest_av_do_math_dec;
bop_fn_va bgreatest_va_do_math_dec;
bop_fn_aa bleast_aa_math_dec;
bop_fn_av bleast_av_do_math_dec;
bop_fn_va bleast_va_do_math_dec;

/* to_char(x), result string. EC_DATA_OVERFLOW: a double of 1e126 or more, or an infinite one. A row that fails is cleared; in
 * the decimal form without a format row 0 is, whichever row failed. */
bop_fn_a bto_char_a_int_to_varchar;
bop_fn_a bto_char_a_int64_to_varchar;
bop_fn_a bto_char_a_double_to_varchar;
bop_fn_a bto_char_a_dec_to_varchar;

/* to_char(x, format). A format of 0 bytes or above 75 makes all rows NULL; one that does not parse fails the first row. */
bop_fn_av bto_char_av_int_to_varchar_with_fmt;
bop_fn_av bto_char_av_int64_to_varchar_with_fmt;
bop_fn_av bto_char_av_double_to_varchar_with_fmt;

/* to_char(x, format, nls). EC_NLS_PARAMETER_INVALID: nls has 0 bytes or above 128, or does not parse. */
bop_fn_avv bto_char_avv_int_to_varchar_with_nls;
bop_fn_avv bto_char_avv_int64_to_varchar_with_nls;
bop_fn_avv bto_char_avv_double_to_varchar_with_nls;
bop_fn_avv bto_char_avv_dec_to_varchar_with_nls;

/* bitand(x, y) of decimals in two's complement of 160 bits, their fractions cut off. A NULL constant counts by what stands in
 * it. EC_DATA_OVERFLOW: an operand of more than 40 integer digits, unless the constant is 0. */
bop_fn_av bbit_and_for_dec_av;
bop_fn_va bbit_and_for_dec_va;

enum { BIFUN_HEX_DIGITS = 40 }; /* of an operand of bitand: one a byte, 0 to 15, the least significant first */

/* Writes the digits of the magnitude of x's integer part, and their count, 1 to BIFUN_HEX_DIGITS; digits above the count stay
 * as they are. EC_DATA_OVERFLOW: it needs more; nothing is written. */
int32_t bbitand_dec_get_hex(uint8_t* digits, const xdec* x, int32_t* count);

/* Turns count digits of a magnitude into their two's complement, all BIFUN_HEX_DIGITS of it. */
void bbitand_byte_complement(uint8_t* digits, int32_t count);

/* The AND of two operands as a decimal. The signs are sign bytes of decimals: a negative operand is a two's complement of all
 * digits, of any other the digits below its count are read. Always 0. */
int32_t bbitanddec_process_low(const uint8_t* x, const uint8_t* y, int32_t x_count, int32_t y_count, uint8_t x_sign,
                               uint8_t y_sign, xdec* result);

/* to_binary_float(x) and to_binary_double(x). While the parameter FLOAT_SPECIALS_ALLOWED is 0, EC_DATA_OVERFLOW for a value out
 * of range and for NaN; else infinities and NaN pass. */
bop_fn_a bto_binary_float_number_a;  /* decimal to float */
bop_fn_a bto_binary_float_d_a;       /* double to float */
bop_fn_a bto_binary_float_f_a;       /* float to float */
bop_fn_a bto_binary_double_number_a; /* decimal to double */
bop_fn_a bto_binary_double_d_a;      /* double to double */
bop_fn_a bto_binary_double_f_a;      /* float to double */

/* nanvl(x, y): x. It does not look for NaN; a NULL on either side, constants included, gives NULL. Elements of 8 bytes. */
bop_fn_aa bnanvl_aa;
bop_fn_av bnanvl_av;
bop_fn_va bnanvl_va;

/* lnnvl(condition), int: 0 where the condition's element is 1, else 1. Never NULL; a NULL condition goes by its element. */
bop_fn_a blnnvl_a_bool;

#ifdef __cplusplus
}
#endif

#endif
