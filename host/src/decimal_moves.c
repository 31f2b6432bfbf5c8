/* The services that decimal.h defines inline, once more as symbols: for callers in other languages and for function
 * pointers. */
#include "qzhost/decimal.h"

extern inline void xdec_copy(xdec* destination, const xdec* source);
extern inline void xdec_fill_zero(xdec* destination);
extern inline void xdec_fill_one(xdec* destination);
extern inline void xdec_abs(const xdec* source, xdec* destination);
extern inline void xdec_neg(const xdec* source, xdec* destination);
extern inline int32_t xdec_cmp(const xdec* x, const xdec* y);
