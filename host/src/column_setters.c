/* The setters that column.h defines inline, once more as symbols: for callers in other languages and for function pointers. */
#include "qzhost/column.h"

extern inline void bdta3_set_int(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row, const bdta3_int* record);
extern inline void bdta3_set_int64(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row, const bdta3_int64* record);
extern inline void bdta3_set_double(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row, const bdta3_double* record);
extern inline void bdta3_set_dec(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row, const bdta3_dec* record);
extern inline void bdta3_set_datetime(qz_env* env, rt_memobj* rt_mem, bdta3_col* col, uint32_t row,
                                      const bdta3_datetime* record);
