/* The services that calendar.h defines inline, once more as symbols: for callers in other languages and for function
 * pointers. */
#include "qzhost/calendar.h"

extern inline int32_t host_julian_number(int32_t year, int32_t month, int32_t day);
extern inline int32_t host_dropped_days(int32_t year, int32_t month, int32_t julian_number);
extern inline int32_t host_day_number_of(int32_t year, int32_t month, int32_t day);
extern inline int32_t host_day_number(const qztime* value);
extern inline int32_t host_day_number_adjusted(const qztime* value);
extern inline void host_set_julian_count(qztime* value, uint32_t julian);
extern inline void host_set_day_number(qztime* value, int32_t number);
extern inline int32_t qztime_get_year(const qztime* value);
extern inline int32_t qztime_get_month(const qztime* value);
extern inline int32_t qztime_get_day(const qztime* value);
extern inline int32_t qztime_get_hour(const qztime* value);
extern inline int32_t qztime_get_min(const qztime* value);
extern inline int32_t qztime_get_sec(const qztime* value);
extern inline int32_t qztime_get_msec(const qztime* value);
extern inline int16_t qztime_get_tz(const qztime* value);
extern inline int32_t qztime_get_zone_hour(const qztime* value);
extern inline int32_t qztime_get_zone_min(const qztime* value);
extern inline void qztime_set_day(qztime* value, int32_t day);
extern inline void qztime_set_hour(qztime* value, int32_t hour);
extern inline void qztime_set_min(qztime* value, int32_t minute);
extern inline void qztime_set_sec(qztime* value, int32_t second);
extern inline void qztime_set_msec(qztime* value, int32_t fraction);
extern inline void qztime_set_tz(qztime* value, int16_t tz);
extern inline void qztime_assign(qztime* destination, const qztime* source);
extern inline void qztime_decode(const qztime* value, int32_t* year, int32_t* month, int32_t* day, int32_t* hour,
                                 int32_t* minute, int32_t* second, int32_t* fraction, int16_t* tz);
extern inline void qztime_encode_without_check(qztime* value, int32_t year, int32_t month, int32_t day, int32_t hour,
                                               int32_t minute, int32_t second, int32_t fraction, int16_t tz);
extern inline int32_t host_is_leap_year(int32_t year);
extern inline int32_t qztime_month_end_day(int32_t year, int32_t month);
extern inline int32_t qztime_date_validate(int32_t year, int32_t month, int32_t day);
extern inline int32_t qztime_encode(qztime* value, int32_t year, int32_t month, int32_t day, int32_t hour, int32_t minute,
                                    int32_t second, int32_t fraction, int16_t tz);
extern inline int32_t qztime_cmp_with_glgl(int32_t year, int32_t month, int32_t day);
extern inline void qztime_glgl_adjust(qztime* value);
extern inline int32_t qztime_glgl_need_adjust_for_w(const qztime* value);
extern inline uint64_t host_second_key(const qztime* value);
extern inline int32_t qztime_cmp(const qztime* a, const qztime* b);
extern inline int32_t qztime_compare(const qztime* a, const qztime* b, int32_t field);
extern inline int32_t qztime_diff_day(const qztime* a, const qztime* b);
extern inline int32_t qztime_diff_day_without_glgl_adjust(const qztime* a, const qztime* b);
extern inline int32_t qztime_day_of_week(const qztime* value);
extern inline int32_t qztime_day_of_year(const qztime* value);
extern inline int32_t qztime_week_for_datepart(const qztime* value);
extern inline void qztime_format_date(int32_t* year, int32_t* month, int32_t zero);
extern inline int64_t qztime_calc_n_days_from_zero(int32_t year, int32_t month, int32_t day);
extern inline int32_t qztime_get_date_by_ndays_from_zero(int64_t number, int32_t* year, int32_t* month, int32_t* day);
extern inline int32_t host_add_days(const qztime* value, int64_t days, qztime* out);
extern inline int32_t qztime_add_by_fmt(const qztime* value, int32_t part, int64_t count, qztime* out);
extern inline int32_t qztime_date_add_number(const qztime* value, double days, qztime* out);
