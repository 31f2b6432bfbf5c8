/*
 * Control of the reference host: environments, sessions, parameters, memory, vectors and LOBs for whoever embeds the library
 * without a server, in any language that can call C.
 *
 * A thread may own any number of environments. Environments on different threads share nothing writable but the parameters.
 *
 * This header is C11 and C++20.
 */
#ifndef QZHOST_CONTROL_H
#define QZHOST_CONTROL_H

#include "qzbifun/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Environments and sessions ------------------------------------------------------------------------------------------- */

qz_env* host_env_create(void); /* no session; NULL on exhaustion */
void host_env_destroy(qz_env* env);

/* Opens a session in UTC with language 1, in place of one that is open; env->session is set. NULL on exhaustion. */
qz_session* host_env_open_session(qz_env* env);
void host_env_close_session(qz_env* env);
void host_session_set_time_zone(qz_session* session, int16_t minutes);
void host_session_set_language(qz_session* session, uint32_t lang, uint32_t date_lang);

/* ---- Error stack, oldest entry first, and log ---------------------------------------------------------------------------- */

uint32_t host_error_count(const qz_env* env);

/* The code of entry i; *name receives the pushed function name, which lives until the next push. 0 and "" for no entry. name
 * may be NULL. */
int32_t host_error_at(const qz_env* env, uint32_t i, const char** name);
void host_error_clear(qz_env* env);
const char* host_error_text(int32_t code); /* a message a user can act on; never NULL */
const char* host_error_name(int32_t code); /* the code's name, such as "EC_DATA_OVERFLOW"; never NULL */

/* Sends the log to sink, for the whole process; NULL drops it, which is the default. The sink gets one line at a time, on
 * the thread that reports, and is not called any more when the function returns. What a sink itself reports is dropped, and
 * it cannot set another one. */
void host_log_set_sink(void (*sink)(void* context, int32_t code, const char* file, int32_t line), void* context);

/* ---- Numbered parameters ------------------------------------------------------------------------------------------------- */

void host_parameter_set(uint32_t number, uint32_t value);
void host_parameters_reset(void); /* documented defaults */
void host_set_oracle_date_format(int32_t on);

/* ---- Memory -------------------------------------------------------------------------------------------------------------- */

/* A memory object serves one thread. Long texts of vectors are its blocks: who reuses vectors batch after batch resets it
 * too. */
rt_memobj* host_memobj_create(qz_env* env);  /* NULL on exhaustion */
void host_memobj_destroy(rt_memobj* memobj); /* with all blocks that are still out; NULL is allowed */
void host_memobj_reset(rt_memobj* memobj);   /* releases all blocks that are still out; the memory object stays in use */
size_t host_memobj_outstanding(const rt_memobj* memobj); /* bytes taken and not given back */

/* Shows each block that is still out, oldest first, with its size and the place in the source that took it. The file names that
 * the takers gave must still be there, as literals are. */
void host_memobj_visit(const rt_memobj* memobj, void (*visit)(void* context, size_t size, const char* file, int32_t line),
                       void* context);

/* On this thread so many allocations of the host still succeed, and all behind them fail; -1: none fails. */
void host_memory_fail_after(int64_t allocations);

/* ---- Vectors ------------------------------------------------------------------------------------------------------------- */

/* Value types of vectors. */
enum {
    HOST_INT = 1,
    HOST_INT64 = 2,
    HOST_DOUBLE = 3,
    HOST_FLOAT = 4,
    HOST_DEC = 5,
    HOST_DATETIME = 6,
    HOST_INTERVAL_YM = 7,
    HOST_INTERVAL_DT = 8,
    HOST_STR = 9,
    HOST_BIN = 10,
    HOST_CLOB = 11,
    HOST_BLOB = 12
};

uint32_t host_type_width(int32_t type); /* bytes a row in values; 0 for an unknown type */

/* A vector of 1 to 65536 physical rows, all NULL, all_valid 0, values zeroed. rt_mem is where host_col_set_text takes long
 * texts from; it may be NULL, and the vector's own storage does not come from it. NULL on exhaustion or for bad arguments. */
bdta3_col* host_col_create(qz_env* env, rt_memobj* rt_mem, int32_t type, uint32_t rows);
void host_col_destroy(bdta3_col* col); /* NULL is allowed */
int32_t host_col_type(const bdta3_col* col);
uint32_t host_col_rows(const bdta3_col* col);

/* Back to the state of a new vector, its memory kept for reuse: all rows NULL, texts dropped, no selection. */
void host_col_reset(bdta3_col* col);

/* Copies n row numbers as the vector's selection; NULL clears it. 0, EC_OUT_OF_MEMORY, or EC_INVALID_ARGUMENT for a row number
 * beyond the vector, which leaves the selection as it was. */
int32_t host_col_set_selection(bdta3_col* col, const uint16_t* sel, uint32_t n);

/* Stores a text in a string or binary vector, or a locator in a LOB vector; the row is valid then. 0, EC_OUT_OF_MEMORY, or
 * EC_INVALID_ARGUMENT for another type of vector or a row beyond it. */
int32_t host_col_set_text(bdta3_col* col, uint32_t row, const char* bytes, uint32_t len, uint32_t blank);

/* ---- LOBs, see qzhost/lob.h ---------------------------------------------------------------------------------------------- */

enum {
    HOST_LOB_ENCIPHERED = 0x100, /* added to a storage kind other than in-row: the store keeps the value enciphered */
    HOST_LOB_LOOKUP = 1,         /* what host_lob_fail makes fail: the look-up of the encryption handle */
    HOST_LOB_READ = 2            /* reading */
};

/* Makes a LOB of a copy of the data and writes its locator. storage: 1 in-row, 2 short, 4 long. locator_len holds the room at
 * locator and receives the bytes written: 47, and those of the data for in-row. 0, EC_OUT_OF_MEMORY, or EC_INVALID_ARGUMENT for
 * an unknown storage, a value too long for it, or too little room; locator_len receives the room needed then. */
int32_t host_lob_make(qz_env* env, int32_t storage, int32_t is_text, const void* data, uint64_t len, uint8_t* locator,
                      uint32_t* locator_len);

/* Releases all values of the environment's store, so that a host that works batch after batch keeps those of one batch only.
 * Locators of them name nothing from then on; in-row values stand in their locators and are not touched. */
void host_lob_release_all(qz_env* env);

/* This thread: look-ups or reads answer code from now on, to test callers; 0 restores. */
void host_lob_fail(int32_t what, int32_t code);

/* This thread: a read delivers at most so many bytes; UINT64_MAX restores. */
void host_lob_limit_read(uint64_t bytes);

#ifdef __cplusplus
}
#endif

#endif
