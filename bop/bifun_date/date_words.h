// The words that name a part of a date: keywords of datepart, and elements of round and trunc.
//
// The two vocabularies differ on purpose. As a keyword Y and DY are the day of the year, D and DD the day of the month; as an
// element Y is the year, D and DY the start of the week, DD the day.
#pragma once

#include <cstdint>
#include <string_view>

namespace bifun {

// Round codes: the unit to which a date is rounded or truncated.
enum class RoundPart : int16_t {
    kNone = 0,
    kDay = 1,
    kCentury = 2,
    kYear = 3,
    kQuarter = 4,
    kMonth = 5,
    kWeekOfYear = 6,
    kWeekOfMonth = 7,
    kWeekStart = 8,
    kHour = 9,
    kMinute = 10,
    kIsoWeek = 11,
};

// A part code; 0 for a word that is no keyword. Any case.
int16_t datepart_of(std::string_view word);

// kNone for a word that is no element. Any case.
RoundPart roundpart_of(std::string_view word);

}  // namespace bifun
