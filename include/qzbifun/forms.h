/*
 * Function types of the exported batch functions, one for each form.
 *
 * A form has one letter for each SQL argument, left to right: a is a vector, v a constant. Every batch function takes the
 * environment, the memory object, its arguments, the result vector and the number of rows; it answers 0, or the negative code
 * of the first row that failed.
 *
 * This header is C11 and C++20.
 */
#ifndef QZBIFUN_FORMS_H
#define QZBIFUN_FORMS_H

#include "qzbifun/records.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef int32_t bop_fn_a(qz_env*, rt_memobj*, bdta3_col*, bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_aa(qz_env*, rt_memobj*, bdta3_col*, bdta3_col*, bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_av(qz_env*, rt_memobj*, bdta3_col*, bdta3_scalar*, bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_va(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_col*, bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_aaa(qz_env*, rt_memobj*, bdta3_col*, bdta3_col*, bdta3_col*, bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_aav(qz_env*, rt_memobj*, bdta3_col*, bdta3_col*, bdta3_scalar*, bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_ava(qz_env*, rt_memobj*, bdta3_col*, bdta3_scalar*, bdta3_col*, bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_avv(qz_env*, rt_memobj*, bdta3_col*, bdta3_scalar*, bdta3_scalar*, bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_vaa(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_col*, bdta3_col*, bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_vav(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_col*, bdta3_scalar*, bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_vva(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_scalar*, bdta3_col*, bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_aaaa(qz_env*, rt_memobj*, bdta3_col*, bdta3_col*, bdta3_col*, bdta3_col*, bdta3_col* result,
                            uint32_t nrows);
typedef int32_t bop_fn_aaav(qz_env*, rt_memobj*, bdta3_col*, bdta3_col*, bdta3_col*, bdta3_scalar*, bdta3_col* result,
                            uint32_t nrows);
typedef int32_t bop_fn_aava(qz_env*, rt_memobj*, bdta3_col*, bdta3_col*, bdta3_scalar*, bdta3_col*, bdta3_col* result,
                            uint32_t nrows);
typedef int32_t bop_fn_aavv(qz_env*, rt_memobj*, bdta3_col*, bdta3_col*, bdta3_scalar*, bdta3_scalar*, bdta3_col* result,
                            uint32_t nrows);
typedef int32_t bop_fn_avaa(qz_env*, rt_memobj*, bdta3_col*, bdta3_scalar*, bdta3_col*, bdta3_col*, bdta3_col* result,
                            uint32_t nrows);
typedef int32_t bop_fn_avav(qz_env*, rt_memobj*, bdta3_col*, bdta3_scalar*, bdta3_col*, bdta3_scalar*, bdta3_col* result,
                            uint32_t nrows);
typedef int32_t bop_fn_avva(qz_env*, rt_memobj*, bdta3_col*, bdta3_scalar*, bdta3_scalar*, bdta3_col*, bdta3_col* result,
                            uint32_t nrows);
typedef int32_t bop_fn_avvv(qz_env*, rt_memobj*, bdta3_col*, bdta3_scalar*, bdta3_scalar*, bdta3_scalar*, bdta3_col* result,
                            uint32_t nrows);
typedef int32_t bop_fn_vaaa(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_col*, bdta3_col*, bdta3_col*, bdta3_col* result,
                            uint32_t nrows);
typedef int32_t bop_fn_vaav(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_col*, bdta3_col*, bdta3_scalar*, bdta3_col* result,
                            uint32_t nrows);
typedef int32_t bop_fn_vava(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_col*, bdta3_scalar*, bdta3_col*, bdta3_col* result,
                            uint32_t nrows);
typedef int32_t bop_fn_vavv(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_col*, bdta3_scalar*, bdta3_scalar*, bdta3_col* result,
                            uint32_t nrows);
typedef int32_t bop_fn_vvaa(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_scalar*, bdta3_col*, bdta3_col*, bdta3_col* result,
                            uint32_t nrows);
typedef int32_t bop_fn_vvav(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_scalar*, bdta3_col*, bdta3_scalar*, bdta3_col* result,
                            uint32_t nrows);
typedef int32_t bop_fn_vvva(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_scalar*, bdta3_scalar*, bdta3_col*, bdta3_col* result,
                            uint32_t nrows);

/* Five arguments, at least one of them a vector. */
typedef int32_t bop_fn_aaaaa(qz_env*, rt_memobj*, bdta3_col*, bdta3_col*, bdta3_col*, bdta3_col*, bdta3_col*, bdta3_col* result,
                             uint32_t nrows);
typedef int32_t bop_fn_aaaav(qz_env*, rt_memobj*, bdta3_col*, bdta3_col*, bdta3_col*, bdta3_col*, bdta3_scalar*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_aaava(qz_env*, rt_memobj*, bdta3_col*, bdta3_col*, bdta3_col*, bdta3_scalar*, bdta3_col*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_aaavv(qz_env*, rt_memobj*, bdta3_col*, bdta3_col*, bdta3_col*, bdta3_scalar*, bdta3_scalar*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_aavaa(qz_env*, rt_memobj*, bdta3_col*, bdta3_col*, bdta3_scalar*, bdta3_col*, bdta3_col*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_aavav(qz_env*, rt_memobj*, bdta3_col*, bdta3_col*, bdta3_scalar*, bdta3_col*, bdta3_scalar*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_aavva(qz_env*, rt_memobj*, bdta3_col*, bdta3_col*, bdta3_scalar*, bdta3_scalar*, bdta3_col*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_aavvv(qz_env*, rt_memobj*, bdta3_col*, bdta3_col*, bdta3_scalar*, bdta3_scalar*, bdta3_scalar*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_avaaa(qz_env*, rt_memobj*, bdta3_col*, bdta3_scalar*, bdta3_col*, bdta3_col*, bdta3_col*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_avaav(qz_env*, rt_memobj*, bdta3_col*, bdta3_scalar*, bdta3_col*, bdta3_col*, bdta3_scalar*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_avava(qz_env*, rt_memobj*, bdta3_col*, bdta3_scalar*, bdta3_col*, bdta3_scalar*, bdta3_col*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_avavv(qz_env*, rt_memobj*, bdta3_col*, bdta3_scalar*, bdta3_col*, bdta3_scalar*, bdta3_scalar*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_avvaa(qz_env*, rt_memobj*, bdta3_col*, bdta3_scalar*, bdta3_scalar*, bdta3_col*, bdta3_col*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_avvav(qz_env*, rt_memobj*, bdta3_col*, bdta3_scalar*, bdta3_scalar*, bdta3_col*, bdta3_scalar*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_avvva(qz_env*, rt_memobj*, bdta3_col*, bdta3_scalar*, bdta3_scalar*, bdta3_scalar*, bdta3_col*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_avvvv(qz_env*, rt_memobj*, bdta3_col*, bdta3_scalar*, bdta3_scalar*, bdta3_scalar*, bdta3_scalar*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_vaaaa(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_col*, bdta3_col*, bdta3_col*, bdta3_col*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_vaaav(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_col*, bdta3_col*, bdta3_col*, bdta3_scalar*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_vaava(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_col*, bdta3_col*, bdta3_scalar*, bdta3_col*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_vaavv(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_col*, bdta3_col*, bdta3_scalar*, bdta3_scalar*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_vavaa(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_col*, bdta3_scalar*, bdta3_col*, bdta3_col*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_vavav(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_col*, bdta3_scalar*, bdta3_col*, bdta3_scalar*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_vavva(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_col*, bdta3_scalar*, bdta3_scalar*, bdta3_col*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_vavvv(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_col*, bdta3_scalar*, bdta3_scalar*, bdta3_scalar*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_vvaaa(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_scalar*, bdta3_col*, bdta3_col*, bdta3_col*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_vvaav(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_scalar*, bdta3_col*, bdta3_col*, bdta3_scalar*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_vvava(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_scalar*, bdta3_col*, bdta3_scalar*, bdta3_col*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_vvavv(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_scalar*, bdta3_col*, bdta3_scalar*, bdta3_scalar*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_vvvaa(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_scalar*, bdta3_scalar*, bdta3_col*, bdta3_col*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_vvvav(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_scalar*, bdta3_scalar*, bdta3_col*, bdta3_scalar*,
                             bdta3_col* result, uint32_t nrows);
typedef int32_t bop_fn_vvvva(qz_env*, rt_memobj*, bdta3_scalar*, bdta3_scalar*, bdta3_scalar*, bdta3_scalar*, bdta3_col*,
                             bdta3_col* result, uint32_t nrows);

#ifdef __cplusplus
}
#endif

#endif
