/*
 * Records that cross the boundary between the library and its host.
 *
 * A batch function reads column vectors and constants and fills one result vector. Every record here is laid out exactly: the
 * elements of a vector are packed (4, 8, 8, 4, 30, 13, 12, 24 or 16 bytes a row, by value type), the other records are plain C
 * structs with natural alignment. All multi-byte fields are little-endian. The assertions at the end hold sizes and offsets.
 *
 * This header is C11 and C++20.
 */
#ifndef QZBIFUN_RECORDS_H
#define QZBIFUN_RECORDS_H

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Session environment ------------------------------------------------------------------------------------------------- */

/* What the library reads of a session. The host keeps fields of its own behind these. */
typedef struct qz_session {
    int16_t session_tz;         /* the session's time zone, minutes east of UTC */
    uint32_t session_lang;      /* language number of date formats */
    uint32_t session_date_lang; /* language number that from_unixtime with a format takes in place of session_lang */
} qz_session;

/* First argument of every exported function, and handle of every host service. session may be absent. */
typedef struct qz_env {
    qz_session* session;
} qz_env;

/* ---- Memory object ------------------------------------------------------------------------------------------------------- */

/* Where the strings and the scratch space of a call come from. alloc answers NULL on exhaustion. free and pool may be absent:
 * a release is skipped then. file and line name the place in the source that asks. */
typedef struct rt_memobj {
    void* (*alloc)(qz_env* env, void* pool, size_t size, const char* file, int32_t line);
    void (*free)(qz_env* env, void* pool, void* block);
    void* pool;
} rt_memobj;

/* ---- Values -------------------------------------------------------------------------------------------------------------- */

enum {
    XDEC_SIGN_NEGATIVE = 62, /* the character '>' */
    XDEC_SIGN_ZERO = 128,
    XDEC_SIGN_POSITIVE = 193,
    XDEC_MAX_PAIRS = 22
};

#pragma pack(push, 1)

/* Decimal: sign, then magnitude in base 100. The magnitude is 0.p1 p2 p3... times 100 to the power (lead - 192), each pair
 * stored plus 1; the first and the last pair are not 0. 2^32 is 193, 10, 0, 0, 4, 0, 6, 197, 43, 95, 97, 73, 97, then zero
 * bytes. 0 is 128, 1, 0, 0, 0, 0, 1, 128, then zero bytes. A negative value differs from its magnitude in the sign alone. */
typedef struct xdec {
    uint8_t sign;                  /* XDEC_SIGN_... */
    uint8_t digits;                /* count of integer digits plus scale: 2.00 has 3, 0.01 has 2, 0 has 1 */
    uint8_t scale;                 /* digits behind the decimal point, trailing zeros included; 0: no fraction is stored */
    uint8_t reserved;              /* 0 */
    int16_t exponent;              /* base-100 exponent of the first pair: the value is p1.p2p3... times 100 to this power */
    uint8_t length;                /* bytes in use from lead on: 1 + count of pairs */
    uint8_t lead;                  /* 192 + count of integer pairs */
    uint8_t pairs[XDEC_MAX_PAIRS]; /* each pair of digits plus 1, most significant first; the rest are 0 */
} xdec;

/* Date-time. One record serves dates, times and date-times, with and without a zone; the column's type says which. */
typedef struct qztime {
    int16_t year;      /* calendar year; negative years exist */
    uint8_t month;     /* 1 to 12 */
    uint8_t day;       /* 1 to 31 */
    uint8_t hour;      /* 0 to 23 */
    uint8_t minute;    /* 0 to 59 */
    uint8_t second;    /* 0 to 59 */
    uint32_t fraction; /* nanoseconds, 0 to 999999999 */
    int16_t tz;        /* minutes east of UTC, or TZ_NONE */
} qztime;

#pragma pack(pop)

enum { TZ_NONE = 1000 }; /* qztime.tz of a value without a time zone */

typedef struct qz_interval_ym {
    int32_t iv_year;
    int32_t iv_month;
    int32_t iv_qualifier; /* kind and precisions, for the host's interval services */
} qz_interval_ym;

typedef struct qz_interval_dt {
    int32_t iv_day;
    int32_t iv_hour;
    int32_t iv_minute;
    int32_t iv_second;
    int32_t iv_fraction; /* microseconds */
    int32_t iv_qualifier;
} qz_interval_dt;

/* String, binary and LOB slot of a vector: bytes[0..len) and then blank implied blanks. Not NUL-terminated. */
typedef struct bdta3_colstr {
    uint32_t len;
    uint32_t blank;
    char* bytes;
} bdta3_colstr;

/* ---- Constants ----------------------------------------------------------------------------------------------------------- */

/* What all constants begin with; 0: the constant is NULL. A constant argument is passed as a pointer to this record and is one
 * of the records below, by the value type that the function's name tells. */
typedef struct bdta3_scalar {
    uint32_t has_value;
} bdta3_scalar;

typedef struct bdta3_int {
    uint32_t has_value;
    int32_t value;
} bdta3_int;

typedef struct bdta3_int64 {
    uint32_t has_value;
    int64_t value;
} bdta3_int64;

typedef struct bdta3_double {
    uint32_t has_value;
    double value;
} bdta3_double;

typedef struct bdta3_float {
    uint32_t has_value;
    float value;
} bdta3_float;

typedef struct bdta3_dec {
    uint32_t has_value;
    xdec value;
} bdta3_dec;

typedef struct bdta3_datetime {
    uint32_t has_value;
    qztime value;
} bdta3_datetime;

typedef struct bdta3_interval_ym {
    uint32_t has_value;
    qz_interval_ym value;
} bdta3_interval_ym;

typedef struct bdta3_interval_dt {
    uint32_t has_value;
    qz_interval_dt value;
} bdta3_interval_dt;

enum { NSTR_INLINE_BYTES = 48 };

/* String constant and the host's string value. The bytes stand in nstr_inline when len is at most NSTR_INLINE_BYTES and behind
 * nstr_ext otherwise; nstr_ext is valid for short values too. blank counts trailing blanks that are not stored. */
typedef struct nstr {
    uint32_t has_value;
    uint32_t len;
    uint32_t blank;
    char nstr_inline[NSTR_INLINE_BYTES];
    char* nstr_ext;
    uint32_t nstr_cap; /* the host's own: bytes that the value took from a memory object, 0 when it took none */
} nstr;

/* ---- Vectors ------------------------------------------------------------------------------------------------------------- */

struct bdta3_col;

/* Storage block of a vector. The host keeps fields of its own behind these three. */
typedef struct bdta3_coldata {
    uint8_t* valid; /* one byte a physical row; 0: NULL */
    void* values;   /* typed array, indexed by physical row */
    /* Stores a constant of the vector's own type in a row. 0, or EC_OUT_OF_MEMORY for a text: the row is as it was. */
    int32_t (*set_value)(qz_env* env, rt_memobj* rt_mem, struct bdta3_col* result, uint32_t row, const bdta3_scalar* value);
} bdta3_coldata;

/* Vector descriptor. */
typedef struct bdta3_col {
    uint32_t all_valid; /* 1: no row is NULL; 0: a row may be NULL */
    uint16_t* sel;      /* logical row i is physical row sel[i]; absent: physical row i */
    bdta3_coldata* data;
} bdta3_col;

/* ---- Layout -------------------------------------------------------------------------------------------------------------- */

static_assert(sizeof(xdec) == 30, "element width of a decimal vector");
static_assert(offsetof(xdec, exponent) == 4 && offsetof(xdec, length) == 6 && offsetof(xdec, pairs) == 8, "decimal layout");
static_assert(sizeof(qztime) == 13, "element width of a date-time vector");
static_assert(sizeof(qz_interval_ym) == 12 && sizeof(qz_interval_dt) == 24, "element widths of interval vectors");
static_assert(sizeof(bdta3_colstr) == 16 && offsetof(bdta3_colstr, bytes) == 8, "string slot");
static_assert(offsetof(bdta3_int, value) == 4 && offsetof(bdta3_float, value) == 4, "4-byte constants");
static_assert(offsetof(bdta3_int64, value) == 8 && offsetof(bdta3_double, value) == 8, "8-byte constants");
static_assert(offsetof(bdta3_dec, value) == 4 && offsetof(bdta3_datetime, value) == 4, "packed constants");
static_assert(offsetof(bdta3_interval_ym, value) == 4 && offsetof(bdta3_interval_dt, value) == 4, "interval constants");
static_assert(offsetof(nstr, nstr_inline) == 12 && offsetof(nstr, nstr_ext) == 64, "string constant");
static_assert(offsetof(bdta3_coldata, values) == 8 && offsetof(bdta3_coldata, set_value) == 16, "storage block");
static_assert(offsetof(bdta3_col, sel) == 8 && offsetof(bdta3_col, data) == 16, "vector descriptor");
static_assert(offsetof(rt_memobj, free) == 8 && offsetof(rt_memobj, pool) == 16, "memory object");

#ifdef __cplusplus
}
#endif

#endif
