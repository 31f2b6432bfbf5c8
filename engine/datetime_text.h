/*
 * Texts of dates, times and date-times, by their SQL type.
 *
 * All five types are stored as date-time records. A time stands on 1900-01-01; a date has midnight; what is not zoned has
 * TZ_NONE.
 *
 * A text must hold what its type has and nothing more, so that nothing is dropped unseen: "2024-02-29 10:30" is no date. Two
 * things may be missing: the time of a date-time, which is midnight then, and a zone, for which the session's stands. What
 * dates, times and zones look like tells qzhost/date_text.h.
 */
#ifndef QZENGINE_DATETIME_TEXT_H
#define QZENGINE_DATETIME_TEXT_H

#include <cstdint>
#include <string_view>

#include "engine/text_buffer.h"
#include "engine/value_type.h"
#include "qzbifun/records.h"

namespace qzengine {

// A whole text, with blanks around it or none, as one of the five types. 0 or EC_DATE_TEXT_INVALID.
int32_t parse_datetime(std::string_view text, ValueType type, int16_t session_zone, qztime& value);

// "2024-02-29", "10:30:15.5", "2024-02-29 10:30:15", each zoned one with " +08:00" behind it; the fraction is as short as it
// can be. A record whose fields make no value is written as its fields stand.
void append_datetime(TextBuffer& out, ValueType type, const qztime& value);

// The value as another of the five types, which both have a date or both a time. A time that is added is midnight, a zone that
// is added the session's; what the other type does not have is dropped.
qztime datetime_as(ValueType type, const qztime& value, ValueType to, int16_t session_zone);

}  // namespace qzengine

#endif
