#include "engine/catalog/datetime_entries.h"

#include <fmt/format.h>

#include "qzhost/calendar.h"

namespace qzengine {

std::string example_text(ValueType type, std::string_view date, std::string_view time) {
    std::string text;
    if (has_date(type)) text += date;
    if (has_time(type)) text += fmt::format("{}{}", text.empty() ? "" : " ", time);
    if (has_zone(type)) text += " +08:00";
    return text;
}

std::string example_literal(ValueType type, std::string_view date, std::string_view time) {
    const std::string_view word = !has_time(type) ? "DATE" : has_date(type) ? "TIMESTAMP" : "TIME";
    return fmt::format("{} '{}'", word, example_text(type, date, time));
}

std::vector<Keyword> date_part_words() {
    return {
        {"year", HOST_PART_YEAR},
        {"yyyy", HOST_PART_YEAR},
        {"yy", HOST_PART_YEAR},
        {"quarter", HOST_PART_QUARTER},
        {"qq", HOST_PART_QUARTER},
        {"q", HOST_PART_QUARTER},
        {"month", HOST_PART_MONTH},
        {"mm", HOST_PART_MONTH},
        {"m", HOST_PART_MONTH},
        {"week", HOST_PART_WEEK},
        {"wk", HOST_PART_WEEK},
        {"ww", HOST_PART_WEEK},
        {"dayofyear", HOST_PART_DAY_OF_YEAR},
        {"dy", HOST_PART_DAY_OF_YEAR},
        {"y", HOST_PART_DAY_OF_YEAR},
        {"day", HOST_PART_DAY},
        {"dd", HOST_PART_DAY},
        {"d", HOST_PART_DAY},
        {"weekday", HOST_PART_WEEKDAY},
        {"dw", HOST_PART_WEEKDAY},
        {"hour", HOST_PART_HOUR},
        {"hh", HOST_PART_HOUR},
        {"minute", HOST_PART_MINUTE},
        {"mi", HOST_PART_MINUTE},
        {"n", HOST_PART_MINUTE},
        {"second", HOST_PART_SECOND},
        {"ss", HOST_PART_SECOND},
        {"s", HOST_PART_SECOND},
        {"millisecond", HOST_PART_MILLISECOND},
        {"ms", HOST_PART_MILLISECOND},
        {"microsecond", HOST_PART_MICROSECOND},
        {"us", HOST_PART_MICROSECOND},
    };
}

}  // namespace qzengine
