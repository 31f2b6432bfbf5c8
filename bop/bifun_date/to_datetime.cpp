// to_datetime(year, month, day, hour, minute): a datetime from numbers that need not be in their ranges.
//
// Minutes and hours carry into the day, months into the year, and days into the month: day 0 is the last of the month before.
#include "bop/frame/export.h"
#include "qzbifun/date_composition.h"
#include "qzhost/calendar.h"
#include "qzhost/error.h"

namespace bifun {
namespace {

constexpr uint32_t kMinutesOfHour = 60;
constexpr int64_t kMinutesOfDay = 24 * kMinutesOfHour;

struct CarriedTime {
    int64_t days;
    int32_t hour;
    int32_t minute;
};

// Cut towards minus infinity, so that what is negative borrows from the day.
CarriedTime carry(int32_t hour, int32_t minute) {
    constexpr int64_t kDays = int64_t{1} << 28;                     // make the sum positive
    const int64_t total = int64_t{hour} * kMinutesOfHour + minute;  // within 131 thousand million
    const auto positive = static_cast<uint64_t>(total + kDays * kMinutesOfDay);
    const uint64_t days = positive / kMinutesOfDay;
    const auto minutes = static_cast<uint32_t>(positive - days * kMinutesOfDay);  // 0 to 1439
    const uint32_t hours = minutes / kMinutesOfHour;
    return {static_cast<int64_t>(days) - kDays, static_cast<int32_t>(hours),
            static_cast<int32_t>(minutes - hours * kMinutesOfHour)};
}

Code logged(int32_t code, int32_t line) {
    elog_try_report_qzerr(code, __FILE__, line);
    return Code{code};
}

// Most rows hold a date and a time as they are.
bool in_range(int32_t year, int32_t month, int32_t day, int32_t hour, int32_t minute) {
    return static_cast<uint32_t>(hour) < 24 && static_cast<uint32_t>(minute) < 60 && year != 0 &&
           qztime_date_validate(year, month, day) == 0;
}

Code compose(int32_t year, int32_t month, int32_t day, int32_t hour, int32_t minute, qztime& result) {
    if (in_range(year, month, day, hour, minute)) {
        const int32_t kept_day = qztime_cmp_with_glgl(year, month, day) != 0 ? day : 15;
        qztime_encode_without_check(&result, year, month, kept_day, hour, minute, 0, 0, TZ_NONE);
        return kOk;
    }
    const CarriedTime time = carry(hour, minute);
    qztime_format_date(&year, &month, 0);
    const int64_t number = qztime_calc_n_days_from_zero(year, month, 1) + time.days + day - 1;  // far within 64 bits
    const int32_t code = qztime_get_date_by_ndays_from_zero(number, &year, &month, &day);
    if (code < 0) return logged(code, __LINE__);
    if (year == 0) return Code{EC_YEAR_ZERO};
    // A day that the calendar numbers exists: nothing is left to check but the gap.
    if (qztime_cmp_with_glgl(year, month, day) == 0) day = 15;
    qztime_encode_without_check(&result, year, month, day, time.hour, time.minute, 0, 0, TZ_NONE);
    return kOk;
}

struct ToDatetime {
    static constexpr Rules rules{.constants = ConstantNull::kIgnored, .store = Store::kKeep};
    static Code row(Row out, int32_t year, int32_t month, int32_t day, int32_t hour, int32_t minute) {
        return compose(year, month, day, hour, minute, out.slot<qztime>());
    }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_5(bto_datetime_aaaaa_date, ToDatetime, a, a, a, a, a)
BIFUN_EXPORT_5(bto_datetime_aaaav_li_date, ToDatetime, a, a, a, a, v)
BIFUN_EXPORT_5(bto_datetime_aaava_li_date, ToDatetime, a, a, a, v, a)
BIFUN_EXPORT_5(bto_datetime_aaavv_lili_date, ToDatetime, a, a, a, v, v)
BIFUN_EXPORT_5(bto_datetime_aavaa_li_date, ToDatetime, a, a, v, a, a)
BIFUN_EXPORT_5(bto_datetime_aavav_lili_date, ToDatetime, a, a, v, a, v)
BIFUN_EXPORT_5(bto_datetime_aavva_lili_date, ToDatetime, a, a, v, v, a)
BIFUN_EXPORT_5(bto_datetime_aavvv_lilili_date, ToDatetime, a, a, v, v, v)
BIFUN_EXPORT_5(bto_datetime_avaaa_li_date, ToDatetime, a, v, a, a, a)
BIFUN_EXPORT_5(bto_datetime_avaav_lili_date, ToDatetime, a, v, a, a, v)
BIFUN_EXPORT_5(bto_datetime_avava_lili_date, ToDatetime, a, v, a, v, a)
BIFUN_EXPORT_5(bto_datetime_avavv_lilili_date, ToDatetime, a, v, a, v, v)
BIFUN_EXPORT_5(bto_datetime_avvaa_lili_date, ToDatetime, a, v, v, a, a)
BIFUN_EXPORT_5(bto_datetime_avvav_lilili_date, ToDatetime, a, v, v, a, v)
BIFUN_EXPORT_5(bto_datetime_avvva_lilili_date, ToDatetime, a, v, v, v, a)
BIFUN_EXPORT_5(bto_datetime_avvvv_lililili_date, ToDatetime, a, v, v, v, v)
BIFUN_EXPORT_5(bto_datetime_vaaaa_li_date, ToDatetime, v, a, a, a, a)
BIFUN_EXPORT_5(bto_datetime_vaaav_lili_date, ToDatetime, v, a, a, a, v)
BIFUN_EXPORT_5(bto_datetime_vaava_lili_date, ToDatetime, v, a, a, v, a)
BIFUN_EXPORT_5(bto_datetime_vaavv_lilili_date, ToDatetime, v, a, a, v, v)
BIFUN_EXPORT_5(bto_datetime_vavaa_lili_date, ToDatetime, v, a, v, a, a)
BIFUN_EXPORT_5(bto_datetime_vavav_lilili_date, ToDatetime, v, a, v, a, v)
BIFUN_EXPORT_5(bto_datetime_vavva_lilili_date, ToDatetime, v, a, v, v, a)
BIFUN_EXPORT_5(bto_datetime_vavvv_lililili_date, ToDatetime, v, a, v, v, v)
BIFUN_EXPORT_5(bto_datetime_vvaaa_lili_date, ToDatetime, v, v, a, a, a)
BIFUN_EXPORT_5(bto_datetime_vvaav_lilili_date, ToDatetime, v, v, a, a, v)
BIFUN_EXPORT_5(bto_datetime_vvava_lilili_date, ToDatetime, v, v, a, v, a)
BIFUN_EXPORT_5(bto_datetime_vvavv_lililili_date, ToDatetime, v, v, a, v, v)
BIFUN_EXPORT_5(bto_datetime_vvvaa_lilili_date, ToDatetime, v, v, v, a, a)
BIFUN_EXPORT_5(bto_datetime_vvvav_lililili_date, ToDatetime, v, v, v, a, v)
BIFUN_EXPORT_5(bto_datetime_vvvva_lililili_date, ToDatetime, v, v, v, v, a)

BIFUN_EXPORT int32_t ifun_convert_datetime(int32_t year, int32_t month, int32_t day, int32_t hour, int32_t minute,
                                           qztime* result) {
    return compose(year, month, day, hour, minute, *result).value;
}
