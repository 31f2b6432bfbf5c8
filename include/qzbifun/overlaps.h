/*
 * OVERLAPS of two periods, int: 1 where they overlap, 0 where they do not.
 *
 * The arguments are s1, x1, s2, x2. A period begins with a date-time s and ends with a date-time (dt), or lasts an interval
 * year-month (ivym) or day-time (ivdt). Its points may come in either order, and an interval may be negative. Two whole periods
 * overlap also where they touch in one instant.
 *
 * NULL. Of two date-times one may be NULL, and a row is NULL where both are; with intervals a row is NULL where a start is.
 * What is left of a period is a point. A start contains its point, an end does not; a period that was given by its second
 * date-time alone contains nothing but the instant itself where the other is whole. Against a first point alone the second
 * one's missing partner counts as what stands in its row or constant, so that these must be readable and mean nothing.
 *
 * A NULL row lowers all_valid to 0; nothing else stores it. Where the constants make up a period that makes every row NULL, all
 * of them are, also where there are none.
 *
 * Errors: those of adding the interval, EC_DATE_OUT_OF_RANGE.
 *
 * This header is C11 and C++20.
 */
#ifndef QZBIFUN_OVERLAPS_H
#define QZBIFUN_OVERLAPS_H

#include "qzbifun/forms.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Date-time and date-time. */
bop_fn_aaaa boverlaps_dt_aaaa_date;
bop_fn_aaav boverlaps_dt_aaav_ts_date;
bop_fn_aava boverlaps_dt_aava_ts_date;
bop_fn_aavv boverlaps_dt_aavv_tsts_date;
bop_fn_avaa boverlaps_dt_avaa_ts_date;
bop_fn_avav boverlaps_dt_avav_tsts_date;
bop_fn_avva boverlaps_dt_avva_tsts_date;
bop_fn_avvv boverlaps_dt_avvv_tststs_date;
bop_fn_vaaa boverlaps_dt_vaaa_ts_date;
bop_fn_vaav boverlaps_dt_vaav_tsts_date;
bop_fn_vava boverlaps_dt_vava_tsts_date;
bop_fn_vavv boverlaps_dt_vavv_tststs_date;
bop_fn_vvaa boverlaps_dt_vvaa_tsts_date;
bop_fn_vvav boverlaps_dt_vvav_tststs_date;
bop_fn_vvva boverlaps_dt_vvva_tststs_date;

/* Date-time and interval year-month. */
bop_fn_aaaa boverlaps_ivym_aaaa_date;
bop_fn_aaav boverlaps_ivym_aaav_ym_date;
bop_fn_aava boverlaps_ivym_aava_ts_date;
bop_fn_aavv boverlaps_ivym_aavv_ymts_date;
bop_fn_avaa boverlaps_ivym_avaa_ym_date;
bop_fn_avav boverlaps_ivym_avav_ymym_date;
bop_fn_avva boverlaps_ivym_avva_tsym_date;
bop_fn_avvv boverlaps_ivym_avvv_ymtsym_date;
bop_fn_vaaa boverlaps_ivym_vaaa_ts_date;
bop_fn_vaav boverlaps_ivym_vaav_ymts_date;
bop_fn_vava boverlaps_ivym_vava_tsts_date;
bop_fn_vavv boverlaps_ivym_vavv_ymtsts_date;
bop_fn_vvaa boverlaps_ivym_vvaa_ymts_date;
bop_fn_vvav boverlaps_ivym_vvav_ymymts_date;
bop_fn_vvva boverlaps_ivym_vvva_tsymts_date;

/* Date-time and interval day-time. */
bop_fn_aaaa boverlaps_ivdt_aaaa_date;
bop_fn_aaav boverlaps_ivdt_aaav_dt_date;
bop_fn_aava boverlaps_ivdt_aava_ts_date;
bop_fn_aavv boverlaps_ivdt_aavv_dtts_date;
bop_fn_avaa boverlaps_ivdt_avaa_dt_date;
bop_fn_avav boverlaps_ivdt_avav_dtdt_date;
bop_fn_avva boverlaps_ivdt_avva_tsdt_date;
bop_fn_avvv boverlaps_ivdt_avvv_date;
bop_fn_vaaa boverlaps_ivdt_vaaa_ts_date;
bop_fn_vaav boverlaps_ivdt_vaav_dtts_date;
bop_fn_vava boverlaps_ivdt_vava_tsts_date;
bop_fn_vavv boverlaps_ivdt_vavv_date;
bop_fn_vvaa boverlaps_ivdt_vvaa_date;
bop_fn_vvav boverlaps_ivdt_vvav_date;
bop_fn_vvva boverlaps_ivdt_vvva_date;

/* One row of date-times: p1 to p2 and q1 to q2, each with a flag that is not 0 where the point is there. 1 or 0. */
int32_t qztime_overlaps_dt_low(const qztime* p1, int32_t has_p1, const qztime* p2, int32_t has_p2, const qztime* q1,
                               int32_t has_q1, const qztime* q2, int32_t has_q2);

#ifdef __cplusplus
}
#endif

#endif
