/*
 * Numbered parameters of the reference host.
 *
 * A parameter is read at the moment it is needed, from any thread. Numbers and names stand in qzbifun/codes.h, the defaults in
 * docs/host.md. A number that no parameter bears reads 0, and setting it does nothing.
 *
 * This header is C11 and C++20.
 */
#ifndef QZHOST_PARAMETERS_H
#define QZHOST_PARAMETERS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The present value of parameter number. The first argument is always 0. Cannot fail. */
uint32_t ini_get_value(uint32_t zero, uint32_t number);

/* Whether to_date without a format reads date-times (nonzero) or dates: an option of the server; host_set_oracle_date_format
 * sets it. */
int32_t ini_enable_oracle_date_fmt(void);

#ifdef __cplusplus
}
#endif

#endif
