#include "bop/bifun_date/weekday.h"

#include "bop/bifun_date/week_start.h"
#include "bop/frame/export.h"
#include "qzbifun/date_parts.h"
#include "qzhost/error.h"

using namespace bifun;

BIFUN_EXPORT int32_t ifun_weekday_in(qztime* value, int32_t mode, int32_t* result) {
    qztime_glgl_adjust(value);
    switch (mode & 0xFF) {
        case 1:
            *result = weekday_of(*value) + 1;
            break;
        case 2:
            *result = weekday_of(*value, FirstDay::kMonday);
            break;
        default:
            *result = weekday_of(*value);
    }
    return 0;
}

BIFUN_EXPORT int32_t ifun_weekday_in_for_glgl_special(qztime* value, int32_t* result) {
    qztime_glgl_adjust(value);
    *result = weekday_of(*value);
    return 0;
}

BIFUN_EXPORT int32_t ifun_week_start_day_for_ww(const qztime* value, int32_t* result) {
    const Code code = week_start_of_year(*value, *result);
    if (code.failed()) elog_try_report_qzerr(code.value, __FILE__, __LINE__);
    return code.value;
}
