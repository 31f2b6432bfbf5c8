#include "qzhost/calendar.h"

#include <algorithm>
#include <limits>
#include <string_view>

namespace {

constexpr host_march_year make_march_year() {
    constexpr int kLengths[] = {31, 30, 31, 30, 31, 31, 30, 31, 30, 31, 31, 29};  // from March
    host_march_year days{};
    int at = 0;
    for (int i = 0; i < 12; ++i) {
        const int month = i < 10 ? i + 3 : i - 9;
        for (int day = 1; day <= kLengths[i]; ++day) days.month_and_day[at++] = static_cast<uint16_t>(month | day << 8);
    }
    return days;
}

constexpr std::string_view kEnglishDays[7] = {"SUNDAY", "MONDAY", "TUESDAY", "WEDNESDAY", "THURSDAY", "FRIDAY", "SATURDAY"};

// Weekday names of a language in one encoding: a name is the mark before or behind the day's own character.
struct NameSet {
    uint32_t charset_code;
    std::string_view before[2];  // either may stand in front
    std::string_view behind;     // stands behind, or not at all
    std::string_view days[8];    // Sunday to Saturday; the eighth is Sunday again
};

constexpr NameSet kNameSets[] = {
    // Chinese in GB18030: "week" or "week day", then the number of the day; Sunday has two.
    {0,
     {"\xd0\xc7\xc6\xda", "\xd6\xdc"},
     "",
     {"\xc8\xd5", "\xd2\xbb", "\xb6\xfe", "\xc8\xfd", "\xcb\xc4", "\xce\xe5", "\xc1\xf9", "\xcc\xec"}},
    // The same in UTF-8.
    {1, {"\u661f\u671f", "\u5468"}, "", {"\u65e5", "\u4e00", "\u4e8c", "\u4e09", "\u56db", "\u4e94", "\u516d", "\u5929"}},
    // Korean in EUC-KR: the day's syllable, alone or with "day of the week" behind.
    {2, {"", ""}, "\xbf\xe4\xc0\xcf", {"\xc0\xcf", "\xbf\xf9", "\xc8\xad", "\xbc\xf6", "\xb8\xf1", "\xb1\xdd", "\xc5\xe4", ""}},
    // The same in UTF-8.
    {1, {"", ""}, "\uc694\uc77c", {"\uc77c", "\uc6d4", "\ud654", "\uc218", "\ubaa9", "\uae08", "\ud1a0", ""}},
};

constexpr int32_t kUnknownWeekday = 8;

bool equals_upper(std::string_view text, std::string_view upper) {
    return std::ranges::equal(text, upper, [](char t, char u) { return (t >= 'a' && t <= 'z' ? t - 32 : t) == u; });
}

int32_t weekday_in(const NameSet& names, std::string_view text) {
    for (std::string_view before : names.before) {
        if (!text.starts_with(before)) continue;
        std::string_view day = text.substr(before.size());
        if (day.size() > names.behind.size() && day.ends_with(names.behind)) day.remove_suffix(names.behind.size());
        for (int32_t i = 0; i < 8; ++i) {
            if (!day.empty() && day == names.days[i]) return i % 7;
        }
    }
    return kUnknownWeekday;
}

struct Instant {
    int64_t minute;  // UTC; within 2^35
    uint32_t second;
    uint32_t fraction;
    auto operator<=>(const Instant&) const = default;
};

Instant instant_of(const qztime& value) {
    const int32_t zone = value.tz == TZ_NONE ? 0 : value.tz;
    return {int64_t{host_day_number_adjusted(&value)} * 1440 + value.hour * 60 + value.minute - zone, value.second,
            value.fraction};
}

}  // namespace

constexpr host_march_year host_days_from_march = make_march_year();

int32_t host_cmp_across_zones(const qztime* a, const qztime* b) {
    const Instant left = instant_of(*a), right = instant_of(*b);
    return (left > right) - (left < right);
}

int32_t qztime_convert_weekday(uint32_t charset_code, const char* name) {
    std::string_view text(name);
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    for (int32_t i = 0; i < 7; ++i) {
        if (equals_upper(text, kEnglishDays[i]) || equals_upper(text, kEnglishDays[i].substr(0, 3))) return i;
    }
    for (const NameSet& names : kNameSets) {
        if (names.charset_code != charset_code) continue;
        const int32_t day = weekday_in(names, text);
        if (day != kUnknownWeekday) return day;
    }
    return kUnknownWeekday;
}

int64_t host_count_days_from_zero(int32_t year, int32_t month, int32_t day) {
    qztime_format_date(&year, &month, 0);
    // As host_day_number_of, in 64 bits. The years are counted from a multiple of 400 below the lowest 32-bit number.
    constexpr uint64_t kFirstYear = 2'400'000'000;
    constexpr uint64_t kDayZero = 365 * (kFirstYear - 1) + (kFirstYear - 1) / 4 + 306;  // January 1 of year 0: 876.6e9
    const bool early = month <= 2;
    const uint64_t y = kFirstYear + static_cast<uint64_t>(int64_t{year}) - early;                // 0.25e9 to 4.55e9
    const uint64_t days_before = (979 * static_cast<uint64_t>(month + 12 * early) - 2919) >> 5;  // 0 to 337
    const uint64_t century = y / 100;
    const int64_t julian = static_cast<int64_t>(365 * y + y / 4 + days_before - kDayZero);  // within 785e9
    const int64_t dropped = static_cast<int64_t>(century - century / 4) - 18'000'002 - 10;  // since 1582; within 17e6
    return julian + day - 1 - (year > 1582 ? dropped : 0);
}
