/*
 * Composition of date-times from numbers.
 *
 * This header is C11 and C++20.
 */
#ifndef QZBIFUN_DATE_COMPOSITION_H
#define QZBIFUN_DATE_COMPOSITION_H

#include "qzbifun/forms.h"

#ifdef __cplusplus
extern "C" {
#endif

/* to_datetime(year, month, day, hour, minute): five ints to a datetime without zone, its seconds 0. No argument need be in its
 * range: a month of 14, a day of 0 or 40, an hour of 30, a minute of -1 carry into the larger fields. A date in the gap of
 * October 1582 becomes 1582-10-15. EC_YEAR_ZERO: the date falls in year 0; the codes of the calendar outside its range. A NULL
 * in a vector makes the row NULL; of a constant only the value is read. */
bop_fn_aaaaa bto_datetime_aaaaa_date;
bop_fn_aaaav bto_datetime_aaaav_li_date;
bop_fn_aaava bto_datetime_aaava_li_date;
bop_fn_aaavv bto_datetime_aaavv_lili_date;
bop_fn_aavaa bto_datetime_aavaa_li_date;
bop_fn_aavav bto_datetime_aavav_lili_date;
bop_fn_aavva bto_datetime_aavva_lili_date;
bop_fn_aavvv bto_datetime_aavvv_lilili_date;
bop_fn_avaaa bto_datetime_avaaa_li_date;
bop_fn_avaav bto_datetime_avaav_lili_date;
bop_fn_avava bto_datetime_avava_lili_date;
bop_fn_avavv bto_datetime_avavv_lilili_date;
bop_fn_avvaa bto_datetime_avvaa_lili_date;
bop_fn_avvav bto_datetime_avvav_lilili_date;
bop_fn_avvva bto_datetime_avvva_lilili_date;
bop_fn_avvvv bto_datetime_avvvv_lililili_date;
bop_fn_vaaaa bto_datetime_vaaaa_li_date;
bop_fn_vaaav bto_datetime_vaaav_lili_date;
bop_fn_vaava bto_datetime_vaava_lili_date;
bop_fn_vaavv bto_datetime_vaavv_lilili_date;
bop_fn_vavaa bto_datetime_vavaa_lili_date;
bop_fn_vavav bto_datetime_vavav_lilili_date;
bop_fn_vavva bto_datetime_vavva_lilili_date;
bop_fn_vavvv bto_datetime_vavvv_lililili_date;
bop_fn_vvaaa bto_datetime_vvaaa_lili_date;
bop_fn_vvaav bto_datetime_vvaav_lilili_date;
bop_fn_vvava bto_datetime_vvava_lilili_date;
bop_fn_vvavv bto_datetime_vvavv_lililili_date;
bop_fn_vvvaa bto_datetime_vvvaa_lilili_date;
bop_fn_vvvav bto_datetime_vvvav_lililili_date;
bop_fn_vvvva bto_datetime_vvvva_lililili_date;

/* The same of five numbers. On failure the result is as it was. */
int32_t ifun_convert_datetime(int32_t year, int32_t month, int32_t day, int32_t hour, int32_t minute, qztime* result);

#ifdef __cplusplus
}
#endif

#endif
