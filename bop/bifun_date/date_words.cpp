#include "bop/bifun_date/date_words.h"

#include <algorithm>
#include <span>

#include "qzhost/calendar.h"

namespace bifun {
namespace {

template <class Code>
struct Word {
    std::string_view text;  // upper case
    Code code;
};

constexpr Word<int16_t> kKeywords[] = {
    {"YY", HOST_PART_YEAR},
    {"YYYY", HOST_PART_YEAR},
    {"YEAR", HOST_PART_YEAR},
    {"M", HOST_PART_MONTH},
    {"MM", HOST_PART_MONTH},
    {"MONTH", HOST_PART_MONTH},
    {"D", HOST_PART_DAY},
    {"DD", HOST_PART_DAY},
    {"DAY", HOST_PART_DAY},
    {"HH", HOST_PART_HOUR},
    {"HOUR", HOST_PART_HOUR},
    {"N", HOST_PART_MINUTE},
    {"MI", HOST_PART_MINUTE},
    {"MINUTE", HOST_PART_MINUTE},
    {"S", HOST_PART_SECOND},
    {"SS", HOST_PART_SECOND},
    {"SECOND", HOST_PART_SECOND},
    {"MS", HOST_PART_MILLISECOND},
    {"MILLISECOND", HOST_PART_MILLISECOND},
    {"Q", HOST_PART_QUARTER},
    {"QQ", HOST_PART_QUARTER},
    {"QUARTER", HOST_PART_QUARTER},
    {"Y", HOST_PART_DAY_OF_YEAR},
    {"DY", HOST_PART_DAY_OF_YEAR},
    {"DAYOFYEAR", HOST_PART_DAY_OF_YEAR},
    {"WW", HOST_PART_WEEK},
    {"WK", HOST_PART_WEEK},
    {"WEEK", HOST_PART_WEEK},
    {"DW", HOST_PART_WEEKDAY},
    {"WEEKDAY", HOST_PART_WEEKDAY},
    {"US", HOST_PART_MICROSECOND},
    {"MICROSECOND", HOST_PART_MICROSECOND},
};

using enum RoundPart;

constexpr Word<RoundPart> kElements[] = {
    {"DD", kDay},      {"DDD", kDay},       {"J", kDay},                            //
    {"CC", kCentury},  {"SCC", kCentury},                                           //
    {"Y", kYear},      {"YY", kYear},       {"YYY", kYear},      {"YYYY", kYear},   //
    {"YEAR", kYear},   {"SYYY", kYear},     {"SYYYY", kYear},    {"SYEAR", kYear},  //
    {"Q", kQuarter},                                                                //
    {"M", kMonth},     {"MM", kMonth},      {"MON", kMonth},     {"MONTH", kMonth},
    {"RM", kMonth},    {"WW", kWeekOfYear}, {"W", kWeekOfMonth},  //
    {"D", kWeekStart}, {"DY", kWeekStart},  {"DAY", kWeekStart},  //
    {"HH", kHour},     {"HH12", kHour},     {"HH24", kHour},      //
    {"MI", kMinute},   {"IW", kIsoWeek},
};

// Bytes, whatever the character set.
bool same_word(std::string_view word, std::string_view upper) {
    const auto same = [](char byte, char letter) { return (byte >= 'a' && byte <= 'z' ? byte - 32 : byte) == letter; };
    return std::equal(word.begin(), word.end(), upper.begin(), upper.end(), same);
}

template <class Code>
Code find(std::span<const Word<Code>> words, std::string_view word) {
    const auto found = std::find_if(words.begin(), words.end(), [&](const auto& known) { return same_word(word, known.text); });
    return found == words.end() ? Code{} : found->code;
}

}  // namespace

int16_t datepart_of(std::string_view word) { return find<int16_t>(kKeywords, word); }

RoundPart roundpart_of(std::string_view word) { return find<RoundPart>(kElements, word); }

}  // namespace bifun
