// datepart: one part of a date by its keyword or its code.
//
// The two forms judge differently. By keyword a row fails only when there is no such part. By code it fails whenever the part
// is -1, which the year before year 0 is too.
#include "bop/bifun_date/date_words.h"
#include "bop/frame/export.h"
#include "qzbifun/date_parts.h"
#include "qzhost/calendar.h"

namespace bifun {
namespace {

constexpr Rules kRules{.constants = ConstantNull::kIgnored};
constexpr int32_t kNoPart = -1;

template <int32_t kCode>
int32_t part_of(const qztime& value) {
    switch (kCode) {
        case HOST_PART_YEAR:
            return qztime_get_year(&value);
        case HOST_PART_MONTH:
            return qztime_get_month(&value);
        case HOST_PART_DAY:
            return qztime_get_day(&value);
        case HOST_PART_HOUR:
            return qztime_get_hour(&value);
        case HOST_PART_MINUTE:
            return qztime_get_min(&value);
        case HOST_PART_SECOND:
            return qztime_get_sec(&value);
        case HOST_PART_MILLISECOND:
            return qztime_get_msec(&value) / 1000000;
        case HOST_PART_QUARTER:
            return (qztime_get_month(&value) - 1) / 3 + 1;
        case HOST_PART_DAY_OF_YEAR:
            return qztime_day_of_year(&value);
        case HOST_PART_WEEK:
            return qztime_week_for_datepart(&value);
        case HOST_PART_WEEKDAY:
            return qztime_day_of_week(&value) + 1;
        case HOST_PART_MICROSECOND:
            return qztime_get_msec(&value) / 1000;
        default:
            return kNoPart;
    }
}

// Calls f.operator()<code>() for a code that serves, none() for any other.
template <class F, class None>
auto with_part(int32_t code, const F& f, const None& none) {
    switch (code) {
#define BIFUN_PART(part) \
    case part:           \
        return f.template operator()<part>();
        BIFUN_PART(HOST_PART_YEAR)
        BIFUN_PART(HOST_PART_MONTH)
        BIFUN_PART(HOST_PART_DAY)
        BIFUN_PART(HOST_PART_HOUR)
        BIFUN_PART(HOST_PART_MINUTE)
        BIFUN_PART(HOST_PART_SECOND)
        BIFUN_PART(HOST_PART_MILLISECOND)
        BIFUN_PART(HOST_PART_QUARTER)
        BIFUN_PART(HOST_PART_DAY_OF_YEAR)
        BIFUN_PART(HOST_PART_WEEK)
        BIFUN_PART(HOST_PART_WEEKDAY)
        BIFUN_PART(HOST_PART_MICROSECOND)
#undef BIFUN_PART
        default:
            return none();
    }
}

template <int32_t kCode>
struct PartByKeyword {
    static constexpr Rules rules = kRules;
    static constexpr bool total = true;
    static int32_t row(const qztime& value, Text) { return part_of<kCode>(value); }
};

struct NoPartByKeyword {
    static constexpr Rules rules = kRules;
    static Code row(Row, const qztime&, Text) { return Code{EC_INVALID_ARGUMENT}; }
};

template <int32_t kCode>
struct PartByCode {
    static constexpr Rules rules = kRules;
    static int32_t value(int32_t, const qztime& value) { return part_of<kCode>(value); }
    static bool refuses(int32_t, const qztime& value) { return part_of<kCode>(value) == kNoPart; }
    static Code refuse(Row, int32_t, const qztime&) { return Code{EC_INVALID_ARGUMENT}; }
};

struct NoPartByCode {
    static constexpr Rules rules = kRules;
    static Code row(Row, int32_t, const qztime&) { return Code{EC_INVALID_ARGUMENT}; }
};

struct DatePartByKeyword {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* date, bdta3_scalar* keyword) {
        return with_part(
            ifun_parse_datepart(keyword),
            [&]<int32_t kCode>() { return run<PartByKeyword<kCode>>(call, result, nrows, date, keyword); },
            [&] { return run<NoPartByKeyword>(call, result, nrows, date, keyword); });
    }
};

struct DatePartByCode {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_scalar* code, bdta3_col* date) {
        return with_part(
            reinterpret_cast<const bdta3_int*>(code)->value,
            [&]<int32_t kCode>() { return run<PartByCode<kCode>>(call, result, nrows, code, date); },
            [&] { return run<NoPartByCode>(call, result, nrows, code, date); });
    }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_2(bdatepart_av_date, DatePartByKeyword, a, v)
BIFUN_EXPORT_2(bdatepart1_va_date, DatePartByCode, v, a)

BIFUN_EXPORT int32_t fun_datepart1(int32_t code, const qztime* value) {
    return with_part(
        code, [&]<int32_t kCode>() { return part_of<kCode>(*value); }, [] { return kNoPart; });
}

BIFUN_EXPORT int16_t ifun_parse_datepart(const bdta3_scalar* keyword) {
    const auto* const text = reinterpret_cast<const nstr*>(keyword);
    constexpr uint32_t kLongestKeyword = 11;
    return text->len <= kLongestKeyword ? datepart_of({text->nstr_inline, text->len}) : int16_t{0};
}

BIFUN_EXPORT int16_t ifun_parse_roundpart(const char* text, uint32_t length) {
    return static_cast<int16_t>(roundpart_of({text, length}));
}
