/*
 * Number formats: decimals to text and text to decimals by a picture such as 'FM999G990D00'.
 *
 * One language serves both directions; docs/number-formats.md describes it. A format is parsed into a plain record that owns
 * nothing and may be copied, kept and used by several threads at once. What a format writes of a number, the same format reads
 * back as that number rounded to the format's digits, but for a field of '#' signs, which stands for a number that does not
 * fit.
 *
 * Every text written is NUL-terminated and takes at most XDEC_FORMATTED_BYTES. Nothing here allocates or touches an
 * error stack, and env may be absent.
 *
 * This header is C11 and C++20.
 */
#ifndef QZHOST_NUMBER_FORMAT_H
#define QZHOST_NUMBER_FORMAT_H

#include "qzbifun/records.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
    XDEC_FORMAT_MAX_BYTES = 75,   /* of a format */
    XDEC_NLS_MAX_BYTES = 128,     /* of a text of NLS parameters */
    XDEC_CURRENCY_MAX_BYTES = 10, /* of a currency symbol */
    XDEC_FORMATTED_BYTES = 96     /* of a text written by a format, the NUL included */
};

/* A parsed format. The members are the parser's; a caller passes the record on as it is. */
typedef struct xdec_number_format {
    uint8_t kind;            /* digits, digits with an exponent, shortest text, roman, hexadecimal */
    uint8_t sign;            /* where the sign stands and how it looks */
    uint8_t currency;        /* none, in front of the number, behind it */
    uint8_t flags;           /* fill mode, blank when zero, decimal point, lower case, exponent always */
    uint8_t integer_digits;  /* digit positions in front of the point, those behind a V included */
    uint8_t integer_shown;   /* how many of them are written whatever the value */
    uint8_t fraction_digits; /* digit positions behind the point */
    uint8_t fraction_shown;  /* how many of them fill mode leaves in place */
    uint8_t shift;           /* power of ten that the value is multiplied by: positions behind a V */
    uint8_t width;           /* bytes of the whole field */
    char decimal_point;      /* what D or . stands for */
    char group_separator;    /* what G or , stands for */
    uint8_t currency_length; /* bytes in currency_symbol */
    char currency_symbol[XDEC_CURRENCY_MAX_BYTES];
    uint64_t groups[2]; /* bit i, counted through both: a group separator stands in front of integer position i, from 0 */
} xdec_number_format;

/* Parses a format of 1 to XDEC_FORMAT_MAX_BYTES bytes with the parameters' defaults: point '.', group separator ',', currency
 * and dual currency '$', ISO currency 'USD'. 0, EC_NUMBER_FORMAT_EMPTY, or EC_INVALID_ARGUMENT for a text that is no number
 * format; *parsed is not to be used then. */
int32_t xdec_to_char_fmt_parse(qz_env* env, const char* format, uint32_t format_length, xdec_number_format* parsed);

/* The same with NLS parameters in nls[0..nls_length): name, '=' and value, any number of times, such as
 * "NLS_NUMERIC_CHARACTERS=',.' NLS_CURRENCY='EUR'". Also EC_NLS_PARAMETER_INVALID; a bad format is reported first. */
int32_t xdec_to_char_fmt_parse_with_nls(qz_env* env, const char* format, uint32_t format_length, const char* nls,
                                        uint32_t nls_length, xdec_number_format* parsed);

/* Writes number by a parsed format into buffer, which holds XDEC_FORMATTED_BYTES. A number that does not fit gives a field of
 * '#' signs, which is no failure. 0; it cannot fail. */
int32_t xdec_to_char_with_fmt_low(qz_env* env, const xdec* number, char* buffer, const xdec_number_format* parsed);

/* Parse and write in one step. Codes as above; the buffer holds an empty text on failure. */
int32_t xdec_to_char_with_fmt(qz_env* env, const xdec* number, char* buffer, const char* format, uint32_t format_length);
int32_t xdec_to_char_with_nls(qz_env* env, const xdec* number, char* buffer, const char* format, uint32_t format_length,
                              const char* nls, uint32_t nls_length);

/* Reads a number out of text[0..text_length), or out of what stands before the first NUL byte in it. 0, EC_NUMBER_TEXT_INVALID
 * for a text that does not match the format, or EC_DATA_OVERFLOW for a number that a decimal cannot hold; *number is 0 then.
 * Decimal digits beyond those of a decimal are rounded as in xdec_from_char; hexadecimal ones are never. */
int32_t char_to_dec_with_fmt_low(qz_env* env, const char* text, uint32_t text_length, const xdec_number_format* parsed,
                                 xdec* number);

/* Parse and read in one step, with the codes of both. */
int32_t char_to_dec_with_fmt(qz_env* env, const char* text, uint16_t text_length, const char* format, uint16_t format_length,
                             xdec* number);

/* Nonzero when the format is one for dates as well: made of X, with or without FM in front. In a format for dates X stands for
 * the decimal character. */
int32_t qztime_dt_fmt_is_for_xdec_and_date(const xdec_number_format* parsed);

#ifdef __cplusplus
}
#endif

#endif
