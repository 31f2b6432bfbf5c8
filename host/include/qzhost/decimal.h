/*
 * Decimal services of the reference host: exact decimal numbers of 43 or 44 significant digits.
 *
 * The record is xdec of qzbifun/records.h: sign, and a magnitude in base 100 whose pairs stand on both sides of the decimal
 * point, so that 22 pairs hold 44 digits, or 43 when the first pair has only one.
 *
 * Values. 0, and magnitudes from 1E-130 to below 1E126. Add, subtract, multiply and divide give the exact result, rounded
 * only when it has more than 22 pairs: to the nearest at the last pair, ties away from zero. A result of 1E126 or more is
 * EC_DATA_OVERFLOW. A result below 1E-130 becomes 1E-130 when it is at least half of that, and 0 otherwise; that is no failure.
 *
 * Scale. A number remembers how many digits it shows behind the point: 2 and 2.00 are equal, but of scale 0 and 2. The scale
 * is never less than the digits behind the point need; trailing zeros count up to a scale of 127. Text keeps the scale that it
 * writes; a sum or difference has the larger scale, a product the sum of the scales, a quotient what its digits need; round
 * and trunc to n places reduce it to n and never raise it. Zero has one form and scale 0.
 *
 * Form. Of canonical arguments every service answers the one canonical form of value and scale: the first and the last pair are
 * not 0 (each is stored plus 1), bytes behind the last pair are 0, digits is the count of integer digits plus scale (0.01 has 2
 * digits and scale 2; 0 has 1 digit), so that digits - scale is the count of integer digits. xdec_is_canonical tests it.
 * Arguments of other bytes are harmless: a sign byte that is none reads as 0, pairs out of range as some pair; the result is
 * some decimal.
 *
 * Failure. A negative code, and the destination is 0, so that a caller who does not look at the code has no stale bytes. A
 * destination may be the same record as a source everywhere.
 *
 * This header is C11 and C++20.
 */
#ifndef QZHOST_DECIMAL_H
#define QZHOST_DECIMAL_H

#include <string.h>

#include "qzbifun/codes.h"
#include "qzbifun/records.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
    XDEC_MAX_DIGITS = 44,      /* significant digits when the first pair has two */
    XDEC_MAX_INT_DIGITS = 126, /* digits in front of the point of the largest magnitude */
    XDEC_MIN_EXPONENT = -130,  /* the smallest magnitude is 1E-130 */
    XDEC_MAX_KEPT_SCALE = 127, /* trailing zeros behind the point count up to this scale */
    XDEC_SCALE_NONE = 255,     /* xdec_from_int64: no scale is given */
    XDEC_TEXT_SIZE = 304,      /* a buffer of this size holds every text of a decimal, its end mark included */
    XDEC_BINARY_WORDS = 5      /* 32-bit words of xdec_get_binary and xdec_from_binary */
};

/* ---- Moves --------------------------------------------------------------------------------------------------------------- */

/* In parts, bytes 0 to 7, 8 to 23, 24 to 27, 28 and 29, as the services load and store records: a load of a part that was
 * stored as one does not wait for the store. */
inline void xdec_copy(xdec* destination, const xdec* source) {
    struct {
        uint64_t low, high;
    } middle;
    uint64_t front;
    uint32_t back;
    uint16_t last;
    const uint8_t* from = (const uint8_t*)source;
    uint8_t* to = (uint8_t*)destination;
    memcpy(&front, from, 8);
    memcpy(&middle, from + 8, 16);
    memcpy(&back, from + 24, 4);
    memcpy(&last, from + 28, 2);
    memcpy(to, &front, 8);
    memcpy(to + 8, &middle, 16);
    memcpy(to + 24, &back, 4);
    memcpy(to + 28, &last, 2);
}

inline void xdec_fill_zero(xdec* destination) {
    const xdec zero = {XDEC_SIGN_ZERO, 1, 0, 0, 0, 1, 128, {0}};
    *destination = zero;
}

inline void xdec_fill_one(xdec* destination) {
    const xdec one = {XDEC_SIGN_POSITIVE, 1, 0, 0, 0, 2, 193, {2}};
    *destination = one;
}

/* Sixteen bytes of a record, moved as one. */
typedef uint8_t xdec_bytes16 __attribute__((vector_size(16)));

/* The magnitude, and the value with its sign turned: only the sign byte differs from the source's. Neither branches on it. The
 * magnitude changes the sign on the way, in two moves that overlap: a vector of decimals goes at the memory's speed. */
inline void xdec_abs(const xdec* source, xdec* destination) {
    const xdec_bytes16 negative = {XDEC_SIGN_NEGATIVE};
    const xdec_bytes16 turn = {XDEC_SIGN_NEGATIVE ^ XDEC_SIGN_POSITIVE}; /* 0 in the other bytes, equal or not */
    const uint8_t* from = (const uint8_t*)source;
    uint8_t* to = (uint8_t*)destination;
    xdec_bytes16 front, back;
    memcpy(&front, from, 16);
    memcpy(&back, from + sizeof(xdec) - 16, 16);
    front ^= (xdec_bytes16)(front == negative) & turn;
    memcpy(to, &front, 16);
    memcpy(to + sizeof(xdec) - 16, &back, 16);
}

inline void xdec_neg(const xdec* source, xdec* destination) {
    const uint32_t sign = source->sign;
    const uint32_t signs = XDEC_SIGN_NEGATIVE ^ XDEC_SIGN_POSITIVE; /* of one the other */
    struct {
        uint64_t low, high;
    } front, back;
    memcpy(&front, source, sizeof front);
    memcpy(&back, (const uint8_t*)source + sizeof *source - sizeof back, sizeof back);
    memcpy(destination, &front, sizeof front);
    memcpy((uint8_t*)destination + sizeof *destination - sizeof back, &back, sizeof back);
    destination->sign = (uint8_t)(sign == XDEC_SIGN_NEGATIVE || sign == XDEC_SIGN_POSITIVE ? sign ^ signs : sign);
}

/* ---- Order --------------------------------------------------------------------------------------------------------------- */

/* Negative, 0 or positive as x is less than, equal to or greater than y. The scale does not count: 2 equals 2.00. */
inline int32_t xdec_cmp(const xdec* x, const xdec* y) {
    /* lead and pairs, read as one big number, order the magnitudes. Signed, the first seven bytes decide nearly always. */
    uint64_t bytes_x, bytes_y;
    memcpy(&bytes_x, &x->lead, sizeof bytes_x);
    memcpy(&bytes_y, &y->lead, sizeof bytes_y);
    const int64_t head_x = (int64_t)(__builtin_bswap64(bytes_x) >> 8);
    const int64_t head_y = (int64_t)(__builtin_bswap64(bytes_y) >> 8);
    const int64_t sign_x = (x->sign == XDEC_SIGN_POSITIVE) - (x->sign == XDEC_SIGN_NEGATIVE);
    const int64_t sign_y = (y->sign == XDEC_SIGN_POSITIVE) - (y->sign == XDEC_SIGN_NEGATIVE);
    const int64_t key_x = sign_x * head_x;
    const int64_t key_y = sign_y * head_y;
    if (key_x != key_y || sign_x == 0) {
        return (key_x > key_y) - (key_x < key_y);
    }
    if (sign_x != sign_y) return 0; /* no decimals: a magnitude begins with 0 */
    const int order = memcmp(x->pairs, y->pairs, sizeof x->pairs);
    return (int32_t)sign_x * ((order > 0) - (order < 0));
}

/* Nonzero when the record has the one form that its value and scale have. */
int32_t xdec_is_canonical(const xdec* x);

/* ---- Arithmetic: 0 or EC_DATA_OVERFLOW ----------------------------------------------------------------------------------- */

int32_t xdec_add(const xdec* x, const xdec* y, xdec* destination);
int32_t xdec_sub(const xdec* x, const xdec* y, xdec* destination);
int32_t xdec_mul(const xdec* x, const xdec* y, xdec* destination);

/* The quotient to 22 pairs, correctly rounded. y of 0: EC_INVALID_ARGUMENT. */
int32_t xdec_div(const xdec* x, const xdec* y, xdec* destination);

/* The integer part of x divided by 16: the quotient, cut towards zero, has the sign of x; the remainder, 0 to 15, is that of
 * the magnitude. A quotient of more than 22 pairs is cut to them; the remainder is right all the same. */
void xdec_div_get_quotient_int_by_16(const xdec* x, xdec* quotient, uint32_t* remainder);

/* ---- Rounding to n places behind the point; n below 0 rounds in front of it ---------------------------------------------- */

/* To the nearest, ties away from zero. zero is always 0. EC_DATA_OVERFLOW: rounding up reaches 1E126. */
int32_t xdec_round(const xdec* source, int32_t zero, int32_t n, xdec* destination);

/* Towards zero; trunc_scale in place, to no places. */
void xdec_trunc_scale_with_pos(const xdec* source, int32_t n, xdec* destination);
void xdec_trunc_scale(xdec* value);

/* The integer part, and one more away from zero when the number is positive (ceil) or negative (floor) and its scale is not 0.
 * Scale counts and not digits: the ceil of 2.00 is 3, that of 2 is 2. */
void xdec_ceil_by_scale(const xdec* source, xdec* destination);
void xdec_floor_by_scale(const xdec* source, xdec* destination);

/* ---- Binary numbers ------------------------------------------------------------------------------------------------------ */

/* Integers. A scale other than XDEC_SCALE_NONE is what the number shows behind its point: 5 with scale 2 is 5.00. A scale
 * above XDEC_MAX_KEPT_SCALE is EC_INVALID_ARGUMENT. */
int32_t xdec_from_int64(xdec* destination, int64_t value, uint32_t scale);
int32_t xdec_from_ulint64(xdec* destination, uint64_t value);

/* value times 10 to the power -scale, of that scale: 5 with scale 2 is 0.05. A scale above XDEC_MAX_KEPT_SCALE is
 * EC_INVALID_ARGUMENT. */
int32_t xdec_from_unscaled(xdec* destination, int64_t value, uint32_t scale);

/* xdec_from_unscaled of n values, faster than one by one. A scale above XDEC_MAX_KEPT_SCALE makes its value 0. */
void host_decimals_of_unscaled(xdec* out, uint32_t n, const int64_t* values, const uint32_t* scales);

/* The shortest decimal that reads back as the same double: 0.1 is 0.1. EC_DATA_OVERFLOW: NaN, infinity, 1E126 and more. */
int32_t xdec_from_double(double value, xdec* destination);

/* To an integer, with the fraction cut off. EC_DATA_OVERFLOW: it does not fit, and *value is 0. */
int32_t xdec_get_int64(const xdec* x, int64_t* value);
int32_t xdec_get_ulint64(const xdec* x, uint64_t* value);

/* Nonzero when xdec_get_ulint64 succeeds. */
int32_t xdec_in_ulint64(const xdec* x);

/* The nearest double, ties to even. Every decimal has one, so *code is always 0; flag (1: overflow is to be reported) changes
 * nothing. code may be absent. */
double xdec_get_double(const xdec* x, int32_t* code, int32_t flag);

/* The magnitude of the integer part as binary words, the least significant first. EC_DATA_OVERFLOW: it has more than 160 bits,
 * and the words are 0. */
int32_t xdec_get_binary(const xdec* x, uint32_t words[XDEC_BINARY_WORDS]);

/* The way back; negative not 0: the value is below zero. Beyond 22 pairs the number is rounded as sums are. */
int32_t xdec_from_binary(xdec* destination, int32_t negative, const uint32_t words[XDEC_BINARY_WORDS]);

/* ---- Text ---------------------------------------------------------------------------------------------------------------- */

/* Reads blanks, a sign, digits with or without a point (at least one digit; 5. and .5 are numbers), an exponent (e or E, a
 * sign, digits), blanks. The blank is the space character alone. Digits beyond 22 pairs are rounded, ties away from zero. The
 * scale is the count of digits behind the point less the exponent, at least 0.
 * RC_VALUE_IS_NULL: the text is empty or blank, and the destination 0. EC_NUMBER_TEXT_INVALID: it is no number.
 * EC_DATA_OVERFLOW: its magnitude is 1E126 or more. */
int32_t xdec_from_char(xdec* destination, const char* text, uint32_t length);

/* Writes the number without exponent: a sign when negative, at least one digit in front of the point, and exactly scale digits
 * behind it. The text ends with a NUL that *length does not count; size counts it. EC_CHAR_RESULT_OVERFLOW: size is too small;
 * *length is 0, and the text is empty if size is not 0. */
int32_t xdec_to_char2(const xdec* x, char* buffer, uint32_t size, uint32_t* length);

/* The same, with zeros in front up to the given count of integer digits; 0 and 1 are as above. zero is always 0. A count of
 * digits above XDEC_MAX_INT_DIGITS is taken as 0. */
int32_t xdec_to_char_with_zero(const xdec* x, char* buffer, uint32_t size, uint32_t digits, int32_t zero, uint32_t* length);

#ifdef __cplusplus
}
#endif

#endif
