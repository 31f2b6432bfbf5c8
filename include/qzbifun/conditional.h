/*
 * Conditional functions: those that do not pass NULL on in the usual way.
 *
 * This header is C11 and C++20.
 */
#ifndef QZBIFUN_CONDITIONAL_H
#define QZBIFUN_CONDITIONAL_H

#include "qzbifun/forms.h"

#ifdef __cplusplus
extern "C" {
#endif

/* nvl(a, b): a where it has a value, b elsewhere; NULL where neither has one. In compatibility mode 2 an empty string is no
 * value, in a and in b. EC_OUT_OF_MEMORY: a text could not be stored. */
bop_fn_aa bnvl_int_aa; /* int */
bop_fn_av bnvl_int_av;
bop_fn_aa bnvl_int64_aa; /* bigint */
bop_fn_av bnvl_int64_av;
bop_fn_aa bnvl_double_aa; /* double */
bop_fn_av bnvl_double_av;
bop_fn_aa bnvl_dec_aa; /* decimal */
bop_fn_av bnvl_dec_av;
bop_fn_aa bnvl_date_aa; /* date-time */
bop_fn_av bnvl_date_av;
bop_fn_aa bnvl_varchar_aa; /* string */
bop_fn_av bnvl_varchar_av;
bop_fn_av bnvl_varbinary_av; /* binary; blanks play no part in whether it is empty */

/* condition ? then : else. A condition row is true when its element is 1, whether the row is NULL or not; a constant condition
 * is true when its has_value word is 1, and its value is not read. The rows are valid or NULL as the chosen argument is.
 * all_valid is only ever lowered: in the forms avv and vva the caller stores 1 in it before the call.
 * EC_OUT_OF_MEMORY: a text could not be stored. */
bop_fn_aaa bifoperator_int_aaa; /* int */
bop_fn_aav bifoperator_int_aav;
bop_fn_ava bifoperator_int_ava;
bop_fn_avv bifoperator_int_avv;
bop_fn_vva bifoperator_int_vva;
bop_fn_aaa bifoperator_int64_aaa; /* bigint */
bop_fn_aav bifoperator_int64_aav;
bop_fn_ava bifoperator_int64_ava;
bop_fn_avv bifoperator_int64_avv;
bop_fn_vva bifoperator_int64_vva;
bop_fn_aaa bifoperator_dec_aaa; /* decimal */
bop_fn_aav bifoperator_dec_aav;
bop_fn_ava bifoperator_dec_ava;
bop_fn_avv bifoperator_dec_avv;
bop_fn_vva bifoperator_dec_vva;
bop_fn_aaa bifoperator_double_aaa; /* double */
bop_fn_aav bifoperator_double_aav;
bop_fn_ava bifoperator_double_ava;
bop_fn_avv bifoperator_double_avv;
bop_fn_vva bifoperator_double_vva;
bop_fn_aaa bifoperator_varchar_aaa; /* string */
bop_fn_aav bifoperator_varchar_aav;
bop_fn_ava bifoperator_varchar_ava;
bop_fn_avv bifoperator_varchar_avv;
bop_fn_vva bifoperator_varchar_vva;

#ifdef __cplusplus
}
#endif

#endif
