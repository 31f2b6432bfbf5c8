/*
 * Codes and numbered parameters.
 *
 * Every function answers a signed 32-bit code: negative for a failure, 0 for success, and in a few services a small positive
 * status. The texts behind the codes are the host's (host_error_text in qzhost/control.h).
 *
 * This header is C11 and C++20.
 */
#ifndef QZBIFUN_CODES_H
#define QZBIFUN_CODES_H

enum {
    EC_OUT_OF_MEMORY = -503,           /* no memory, or no room in a vector */
    EC_LOB_READ_FAILED = -543,         /* the text of a CLOB ended early */
    EC_NOT_IMPLEMENTED = -2004,        /* the function has a name alone */
    EC_INET_INVALID = -2158,           /* text is no network address */
    EC_HASH_ALGORITHM_INVALID = -2184, /* the id names no hash */
    EC_OVERLAY_ARGUMENT = -2206,       /* overlay starts or counts below 0 */
    EC_JSON_PATH_EMPTY = -3101,        /* a JSON path without text */
    EC_JSON_PATH_INVALID = -3102,      /* text is no JSON path */
    EC_JSON_NO_DATA = -3105,           /* a locator without JSON behind it */
    EC_JSON_RESULT_TOO_LONG = -3111,   /* JSON text of more than 32767 bytes for a string */
    EC_JSON_PATH_NOT_ELEMENT = -3113,  /* the path ends in something other than an element */
    EC_NLS_PARAMETER_INVALID = -4037,  /* text is no NLS parameters, or names no collation that the character set has */
    EC_VALUE_NOT_USABLE = -4702,       /* a NULL where sys_extract_utc needs a value; a style that has no format */
    EC_DATA_OVERFLOW = -6102,          /* a number that its type does not hold */
    EC_STRING_TOO_LONG = -6108,        /* a string of more than 32767 bytes, or one that cannot be reversed */
    EC_TRIM_SET_NOT_ONE_CHAR = -6109,  /* trim by none or several characters */
    EC_NEGATIVE_LENGTH = -6110,        /* substr of less than no characters, in compatibility mode 1 */
    EC_DATE_VALUE_INVALID = -6111,     /* a date that the calendar does not have */
    EC_WEEKDAY_NAME_TOO_LONG = -6112,  /* no weekday has a name of 20 bytes */
    EC_DATE_TEXT_INVALID = -6118,      /* text is no date */
    EC_CHAR_RESULT_OVERFLOW = -6124,   /* text does not fit the room for it */
    EC_DATE_FORMAT_INVALID = -6127,    /* text is no date format, or none that the function takes */
    EC_NUMBER_TEXT_INVALID = -6128,    /* text is no number */
    EC_NUMBER_FORMAT_EMPTY = -6129,    /* a number format without text */
    EC_YEAR_ZERO = -6132,              /* to_datetime of year 0 */
    EC_WEEKDAY_NAME_INVALID = -6145,   /* no weekday has this name */
    EC_HEX_TEXT_INVALID = -6147,       /* implied blanks where digits are wanted */
    EC_MD5_FAILED = -6148,             /* the host could not compute an MD5 digest */
    EC_HASH_FAILED = -6175,            /* the host could not compute another digest */
    EC_INVALID_ARGUMENT = -6803,       /* the function is not defined there */
    EC_TEXT_TOO_LONG = -6806,          /* text_to_char of more than 32766 bytes */
    EC_CHAR_INVALID = -6819,           /* bytes that are no character */
    EC_LOB_TOO_LONG = -7112,           /* a LOB of 2 GiB or more */
    EC_LOB_TOO_LONG_ROW = -7125,       /* a LOB that is not read as a whole */

    /* Raised by the reference host's services alone; the functions hand them on. */
    EC_DATE_OUT_OF_RANGE = -6901,     /* date arithmetic leaves -4712-01-01 to 9999-12-31 */
    EC_INTERVAL_TEXT_INVALID = -6902, /* text cannot be read as an interval */
    EC_INTERVAL_OUT_OF_RANGE = -6903  /* interval exceeds its leading precision */
};

/* Status values that are no failure. */
enum {
    RC_JSON_TAKE_DEFAULT = 100, /* the JSON services: take the default, or no path */
    RC_VALUE_IS_NULL = 109      /* the text holds no value */
};

/* Numbers of the host's parameters, read through ini_get_value. The defaults are the host's. */
enum {
    LOB_SEARCH_READ_KB = 505,    /* KiB: a LOB searched for a string must be shorter */
    COMPAT_MODE_PARAM = 508,     /* as the compat_mode switch */
    JSON_MODE = 510,             /* 2: the DEFAULT value of json_value has its escapes removed */
    TIME_TEXT_FRACTION = 529,    /* 1: the default text of a time carries its fraction */
    BASE64_CRLF = 542,           /* nonzero: a line break after each 64 output characters */
    SERVER_CHARSET = 635,        /* 0 GB18030, 1 UTF-8, 2 EUC-KR */
    DEFAULT_TIME_ZONE = 650,     /* zone of a text that names none, where no session format applies */
    TIME_TEXT_NANOSECONDS = 772, /* 1: nine fraction digits in place of six */
    CLOB_TRIM_MAX_BYTES = 791,   /* bytes: a longer CLOB is not trimmed */
    STRING_OVERFLOW_FLAGS = 845, /* bit of value 2: an over-long string is cut in compat_mode 2 and does not fail */
    FLOAT_SPECIALS_ALLOWED = 872 /* nonzero: no test for overflow and NaN in to_binary_float and to_binary_double */
};

#endif
