#include "engine/datetime_text.h"

#include <fmt/format.h>

#include "qzbifun/codes.h"
#include "qzhost/calendar.h"
#include "qzhost/date_text.h"

namespace qzengine {
namespace {

constexpr int16_t kTimesYear = 1900;  // where the host puts a time alone, in January, on the first

void clear_date(qztime& value) {
    value.year = kTimesYear;
    value.month = 1;
    value.day = 1;
}

void clear_time(qztime& value) {
    value.hour = 0;
    value.minute = 0;
    value.second = 0;
    value.fraction = 0;
}

// What no service writes: fields that make no value.
void append_fields(TextBuffer& out, ValueType type, const qztime& value) {
    if (has_date(type)) out.append(fmt::format("{:04}-{:02}-{:02}", +value.year, +value.month, +value.day));
    if (has_date(type) && has_time(type)) out.append(' ');
    if (has_time(type)) {
        const uint32_t fraction = value.fraction;
        out.append(fmt::format("{:02}:{:02}:{:02}.{:09}", +value.hour, +value.minute, +value.second, fraction));
    }
    if (has_zone(type) && value.tz != TZ_NONE) out.append(fmt::format(" {:+} minutes", +value.tz));
}

}  // namespace

int32_t parse_datetime(std::string_view text, ValueType type, int16_t session_zone, qztime& value) {
    qztime read;
    uint32_t held = 0;
    const int32_t code =
        qztime_from_char_ex2(text.data(), static_cast<uint32_t>(text.size()), HOST_KIND_DATETIME_TZ, &read, &held);
    if (code != 0) return EC_DATE_TEXT_INVALID;
    const bool date = (held & HOST_TEXT_HAS_DATE) != 0;
    const bool time = (held & HOST_TEXT_HAS_TIME) != 0;
    const bool zone = (held & HOST_TEXT_HAS_ZONE) != 0;
    const bool time_may_be_missing = has_date(type);
    if (date != has_date(type) || (zone && !has_zone(type))) return EC_DATE_TEXT_INVALID;
    if (time != has_time(type) && (time || !time_may_be_missing)) return EC_DATE_TEXT_INVALID;
    value = read;
    if (has_zone(type) && !zone) value.tz = session_zone;
    return 0;
}

void append_datetime(TextBuffer& out, ValueType type, const qztime& value) {
    constexpr size_t kDateBytes = std::string_view("1900-01-01 ").size();
    char text[HOST_DATE_TEXT_BYTES];
    qztime written = value;
    if (!has_date(type)) clear_date(written);
    const int32_t kind = has_zone(type) ? HOST_KIND_DATETIME_TZ : has_time(type) ? HOST_KIND_DATETIME : HOST_KIND_DATE;
    if (qztime_to_char(&written, kind, -1, text) < 0) return append_fields(out, type, value);
    out.append(std::string_view(text).substr(has_date(type) ? 0 : kDateBytes));
}

qztime datetime_as(ValueType type, const qztime& value, ValueType to, int16_t session_zone) {
    qztime made = value;
    if (!has_date(to)) clear_date(made);
    if (!has_time(type) || !has_time(to)) clear_time(made);
    if (!has_zone(to)) {
        made.tz = TZ_NONE;
    } else if (!has_zone(type)) {
        made.tz = session_zone;
    }
    return made;
}

}  // namespace qzengine
