/*
 * Error stack and log of the reference host.
 *
 * The stack belongs to an environment and holds what the user finally sees: codes with the names of the functions that report
 * them, oldest first. The log is the server's: a line for each failure of a service, with its place in the source.
 *
 * This header is C11 and C++20.
 */
#ifndef QZHOST_ERROR_H
#define QZHOST_ERROR_H

#include "qzbifun/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Pushes a code and the name of the function that reports it. The name is copied, up to 123 bytes. The first entries need no
 * memory, so that exhaustion can be reported; a stack that cannot grow drops the entry. */
void qzerr_stk_push(qz_env* env, int32_t code, const char* name);

/* Writes a failure to the log, from any thread. Touches no error stack and no errno, and never alters the code. */
void elog_try_report_qzerr(int32_t code, const char* file, int32_t line);

#ifdef __cplusplus
}
#endif

#endif
