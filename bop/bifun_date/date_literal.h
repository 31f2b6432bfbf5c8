// Date literals: a date, or a date and a time, without any format.
#pragma once

#include <cstdint>
#include <string_view>

#include "bop/frame/call.h"
#include "qzbifun/records.h"

namespace bifun {

// A numeric field of a text: its digits, and the position behind it.
struct DateField {
    int32_t begin = 0;
    int32_t digits = 0;
    int32_t end = 0;
};

// Reads blanks, then up to max_digits digits. Behind fewer digits must stand the end, the stop character, or blanks and then
// any of these or a digit; those blanks belong to the field. Answers false for anything else. position is 0 or above.
bool read_date_field(std::string_view text, int32_t position, char stop, int32_t max_digits, DateField& field);

struct TimeOfDay {
    int32_t hour = 0;
    int32_t minute = 0;
    int32_t second = 0;
    int32_t fraction = 0;  // nanoseconds
};

// Reads hours and minutes, and seconds and a fraction where the text goes on. Answers false for anything else.
bool read_time_of_day(std::string_view text, int32_t position, TimeOfDay& time);

// The codes of ifun_parse_date. The texts that people mostly write, 2024-02-29 and 2024-02-29 10:30:15 with any separator, are
// read eight bytes at a time; read_date_by_fields reads any text field by field, and comes to the same.
Code read_date(std::string_view text, qztime& out);
Code read_date_by_fields(std::string_view text, qztime& out);

}  // namespace bifun
