/*
 * Text of double-precision numbers.
 *
 * Both directions are exact: a text becomes the double nearest to it (halfway cases to the even one), and a double becomes the
 * shortest text that reads back as the same double.
 *
 * This header is C11 and C++20.
 */
#ifndef QZHOST_NUMBER_TEXT_H
#define QZHOST_NUMBER_TEXT_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Reads a decimal number out of text[0..length), or out of what stands before the first NUL byte in it: blanks, a sign, digits
 * with at most one point among, before or behind them, an exponent of E or e with a sign and digits, blanks. A number too small
 * for a double becomes a zero of its sign. one is always 1. 0, EC_INVALID_ARGUMENT when the text is no such number, or
 * EC_DATA_OVERFLOW when the nearest double would be infinite; *value is as before then. */
int32_t utl_digit_from_char(const char* text, uint32_t length, double* value, int32_t one);

enum { QZ_DOU2CHAR_BYTES = 40 }; /* what the buffer of qz_dou2char must hold, the NUL included */

/* Writes the shortest text that reads back as value, NUL-terminated, and answers its length (24 at most). Of several shortest
 * texts it is the one nearest to value. Plain digits where the first significant digit stands between 10^-4 and 10^15:
 * 0.0001 and 1234567890123456; otherwise an exponent of at least two digits: 1.5E-05, 1E+16. No point where no digit follows
 * it. Negative zero is "-0", the rest "NaN", "Infinity" and "-Infinity". one is always 1. */
int32_t qz_dou2char(double value, int32_t one, char* buffer);

#ifdef __cplusplus
}
#endif

#endif
