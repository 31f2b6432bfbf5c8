#include <limits>

#include "qzhost/calendar.h"

namespace {

constexpr int32_t kSecondsPerDay = 86400;
constexpr int32_t kNanosPerSecond = 1'000'000'000;

// From the first month of the calendar to the last.
constexpr int32_t kMonths = (HOST_YEAR_MAX - HOST_YEAR_MIN + 1) * 12;

enum class MonthEnd { kKept, kSticks };  // kSticks: the last day of a month becomes the last day of another

// The day of a date, moved to the end of the gap if the date lies in it.
int32_t out_of_gap(int32_t year, int32_t month, int32_t day) { return qztime_cmp_with_glgl(year, month, day) != 0 ? day : 15; }

int32_t add_months(const qztime& value, int64_t months, MonthEnd rule, qztime* out) {
    if (months < -kMonths || months > kMonths) return EC_DATE_OUT_OF_RANGE;
    // Months since the calendar began: within 900 thousand for any record.
    const int32_t target = (value.year - HOST_YEAR_MIN) * 12 + value.month - 1 + static_cast<int32_t>(months);
    if (target < 0 || target >= kMonths) return EC_DATE_OUT_OF_RANGE;
    const int32_t year = static_cast<int32_t>(static_cast<uint32_t>(target) / 12) + HOST_YEAR_MIN;
    const int32_t month = static_cast<int32_t>(static_cast<uint32_t>(target) % 12) + 1;
    const int32_t end = qztime_month_end_day(year, month);
    int32_t day = out_of_gap(value.year, value.month, value.day);
    const bool sticks = rule == MonthEnd::kSticks && day >= 28 && day == qztime_month_end_day(value.year, value.month);
    if (sticks || day > end) day = end;
    *out = value;
    out->year = static_cast<int16_t>(year);
    out->month = static_cast<uint8_t>(month);
    out->day = static_cast<uint8_t>(out_of_gap(year, month, day));
    return 0;
}

void set_second_of_day(qztime& value, uint32_t second) {
    value.hour = static_cast<uint8_t>(second / 3600);
    value.minute = static_cast<uint8_t>(second / 60 % 60);
    value.second = static_cast<uint8_t>(second % 60);
}

int32_t second_of_day(const qztime& value) { return value.hour * 3600 + value.minute * 60 + value.second; }  // below 1 million

// seconds within 2^54; the fraction is untouched.
int32_t add_seconds(const qztime& value, int64_t seconds, qztime* out) {
    constexpr int64_t kBias = int64_t{1} << 40;  // days that make the sum positive; 86400 times as many are below 2^57
    const uint64_t sum = static_cast<uint64_t>(kBias * kSecondsPerDay + second_of_day(value) + seconds);
    const uint64_t days = sum / kSecondsPerDay;
    const uint32_t second = static_cast<uint32_t>(sum - days * kSecondsPerDay);
    const int32_t code = host_add_days(&value, static_cast<int64_t>(days) - kBias, out);
    if (code == 0) set_second_of_day(*out, second);
    return code;
}

// seconds within 2^54, nanos within 2^61.
int32_t add_nanos(const qztime& value, int64_t seconds, int64_t nanos, qztime* out) {
    const int64_t sum = int64_t{value.fraction} + nanos;
    const int64_t rest = sum % kNanosPerSecond, borrowed = rest < 0;
    const int32_t code = add_seconds(value, seconds + sum / kNanosPerSecond - borrowed, out);
    if (code == 0) out->fraction = static_cast<uint32_t>(rest + borrowed * kNanosPerSecond);
    return code;
}

// count units of so many seconds each.
int32_t add_units(const qztime& value, int64_t count, int64_t size, qztime* out) {
    constexpr int64_t kMost = int64_t{HOST_DAY_MAX - HOST_DAY_MIN + 1} * kSecondsPerDay;
    if (count < -kMost || count > kMost) return EC_DATE_OUT_OF_RANGE;
    return add_seconds(value, count * size, out);  // within 2^51
}

// count fractions of a second, kPerSecond of which make one. Any count.
template <int64_t kPerSecond>
int32_t add_fractions(const qztime& value, int64_t count, qztime* out) {
    const int64_t seconds = count / kPerSecond;  // within 2^54
    return add_nanos(value, seconds, (count - seconds * kPerSecond) * (kNanosPerSecond / kPerSecond), out);
}

// Months of a year-month interval; within 2^35.
int64_t months_of(const qz_interval_ym& interval) { return int64_t{interval.iv_year} * 12 + interval.iv_month; }

int32_t add_interval(const qztime& value, const qz_interval_dt& interval, int64_t sign, qztime* out) {
    const int64_t seconds = int64_t{interval.iv_day} * kSecondsPerDay + int64_t{interval.iv_hour} * 3600 +
                            int64_t{interval.iv_minute} * 60 + interval.iv_second;  // within 2^48
    if (interval.iv_fraction == 0) return add_seconds(value, sign * seconds, out);
    return add_nanos(value, sign * seconds, sign * interval.iv_fraction * 1000, out);  // nanos within 2^41
}

// Completed units: a raw count that the fields from field down show to be one too many, or too few, is corrected.
int64_t completed(int64_t count, const qztime& first, const qztime& second, int32_t field) {
    const int32_t left = qztime_compare(&first, &second, field);
    return count - ((count > 0) & (left < 0)) + ((count < 0) & (left > 0));
}

int64_t weeks_between(const qztime& first, const qztime& second) {
    const int32_t days = qztime_diff_day(&first, &second);
    if (days == 0) return 0;
    return completed((qztime_day_of_week(&first) - qztime_day_of_week(&second) - days) / 7, first, second, HOST_PART_HOUR);
}

int64_t years_between(const qztime& first, const qztime& second) { return second.year - first.year; }

int64_t months_between(const qztime& first, const qztime& second) {
    return years_between(first, second) * 12 - first.month + second.month;
}

int64_t quarters_between(const qztime& first, const qztime& second) {
    return years_between(first, second) * 4 - (first.month - 1) / 3 + (second.month - 1) / 3;
}

int64_t hours_between(const qztime& first, const qztime& second) {
    return int64_t{qztime_diff_day(&second, &first)} * 24 - first.hour + second.hour;  // within 2^30
}

int64_t minutes_between(const qztime& first, const qztime& second) {
    return hours_between(first, second) * 60 - first.minute + second.minute;  // within 2^36
}

int64_t seconds_between(const qztime& first, const qztime& second) {
    return minutes_between(first, second) * 60 - first.second + second.second;  // within 2^42
}

// The seconds of the fields and what the fractions differ by, in units of so many nanoseconds, the latter cut toward zero.
int64_t fractions_between(const qztime& first, const qztime& second, int64_t unit) {
    const int64_t nanos = int64_t{second.fraction} - int64_t{first.fraction};         // within 2^32
    return seconds_between(first, second) * (kNanosPerSecond / unit) + nanos / unit;  // within 2^62
}

int32_t count_units(int32_t part, const qztime& first, const qztime& second, int64_t* result) {
    const auto correct = [&](int64_t count, int32_t field) {
        *result = completed(count, first, second, field);
        return 0;
    };
    switch (part) {
        case HOST_PART_YEAR:
            return correct(years_between(first, second), HOST_PART_MONTH);
        case HOST_PART_QUARTER:
            return correct(quarters_between(first, second), HOST_PART_DAY);
        case HOST_PART_MONTH:
            return correct(months_between(first, second), HOST_PART_DAY);
        case HOST_PART_WEEK:
            *result = weeks_between(first, second);
            return 0;
        case HOST_PART_DAY:
        case HOST_PART_DAY_OF_YEAR:
        case HOST_PART_WEEKDAY:
            return correct(qztime_diff_day(&second, &first), HOST_PART_HOUR);
        case HOST_PART_HOUR:
            return correct(hours_between(first, second), HOST_PART_MINUTE);
        case HOST_PART_MINUTE:
            return correct(minutes_between(first, second), HOST_PART_SECOND);
        case HOST_PART_SECOND:
            return correct(seconds_between(first, second), HOST_PART_MILLISECOND);
        case HOST_PART_MILLISECOND:
            *result = fractions_between(first, second, 1'000'000);
            return 0;
        case HOST_PART_MICROSECOND:
            *result = fractions_between(first, second, 1000);
            return 0;
        default:
            return EC_INVALID_ARGUMENT;
    }
}

}  // namespace

int32_t host_add_part(const qztime* value, int32_t part, int64_t count, qztime* out) {
    // A count of years, quarters or weeks this large is out of range in months or days too, and its product stays in 64 bits.
    constexpr int64_t kFar = int64_t{1} << 40;
    const int64_t bounded = count < -kFar ? -kFar : count > kFar ? kFar : count;
    switch (part) {
        case HOST_PART_YEAR:
            return add_months(*value, bounded * 12, MonthEnd::kKept, out);
        case HOST_PART_QUARTER:
            return add_months(*value, bounded * 3, MonthEnd::kKept, out);
        case HOST_PART_MONTH:
            return add_months(*value, bounded, MonthEnd::kKept, out);
        case HOST_PART_WEEK:
            return host_add_days(value, bounded * 7, out);
        case HOST_PART_DAY:
        case HOST_PART_DAY_OF_YEAR:
        case HOST_PART_WEEKDAY:
            return host_add_days(value, count, out);
        case HOST_PART_HOUR:
            return add_units(*value, count, 3600, out);
        case HOST_PART_MINUTE:
            return add_units(*value, count, 60, out);
        case HOST_PART_SECOND:
            return add_units(*value, count, 1, out);
        case HOST_PART_MILLISECOND:
            return add_fractions<1000>(*value, count, out);
        case HOST_PART_MICROSECOND:
            return add_fractions<1'000'000>(*value, count, out);
        default:
            return EC_INVALID_ARGUMENT;
    }
}

int32_t host_add_part_of_days(const qztime* value, double days, qztime* out) {
    const double seconds = days * kSecondsPerDay;  // within 2^39, where the product's error is under 2^-13
    return add_seconds(*value, static_cast<int64_t>(seconds + (seconds < 0 ? -0.5 : 0.5)), out);
}

int32_t qztime_date_add_iv_ym(const qztime* value, const qz_interval_ym* interval, qztime* out) {
    return add_months(*value, months_of(*interval), MonthEnd::kSticks, out);
}

int32_t datetime_add_interval_ym(const qztime* value, const qz_interval_ym* interval, qztime* out) {
    return add_months(*value, months_of(*interval), MonthEnd::kKept, out);
}

int32_t datetime_sub_interval_ym(const qztime* value, const qz_interval_ym* interval, qztime* out) {
    return add_months(*value, -months_of(*interval), MonthEnd::kKept, out);
}

int32_t datetime_add_interval_dt(const qztime* value, const qz_interval_dt* interval, qztime* out) {
    return add_interval(*value, *interval, 1, out);
}

int32_t datetime_sub_interval_dt(const qztime* value, const qz_interval_dt* interval, qztime* out) {
    return add_interval(*value, *interval, -1, out);
}

int32_t qztime_parse_datediff(int32_t part, const qztime* first, const qztime* second, int32_t* result) {
    int64_t count = 0;
    const int32_t code = count_units(part, *first, *second, &count);
    if (code < 0) return code;
    if (count < std::numeric_limits<int32_t>::min() || count > std::numeric_limits<int32_t>::max()) return EC_DATA_OVERFLOW;
    *result = static_cast<int32_t>(count);
    return 0;
}
