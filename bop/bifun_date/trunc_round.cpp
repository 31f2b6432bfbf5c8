// round and trunc of dates, times and datetimes, which share one record.
//
// trunc of a date takes HH, MI and IW, round of a date takes none of them; that is meant.
#include "bop/bifun_date/date_words.h"
#include "bop/bifun_date/rounding.h"
#include "bop/bifun_date/truncation.h"
#include "bop/frame/export.h"
#include "qzbifun/date_rounding.h"
#include "qzhost/error.h"

namespace bifun {
namespace {

constexpr Rules kRules{.constants = ConstantNull::kIgnored, .flag = FlagStore::kBeforeRows};

Code logged(Code code) {
    elog_try_report_qzerr(code.value, __FILE__, __LINE__);
    return code;
}

template <DateStep* kStep>
struct EachDate {
    static constexpr Rules rules = kRules;
    static Code row(Row out, const qztime& value) {
        const Code code = kStep(value, out.slot<qztime>());
        return code.failed() ? logged(code) : out.stored();
    }
};

template <DateStep* kStep>
struct EachDateByElement {
    static constexpr Rules rules = kRules;
    static Code row(Row out, const qztime& value, Text) { return EachDate<kStep>::row(out, value); }
};

struct NoSuchElement {
    static constexpr Rules rules = kRules;
    static Code row(Row, const qztime&, Text) { return Code{EC_DATE_FORMAT_INVALID}; }
};

// The units that a function takes.
struct Units {
    RoundPart first;
    RoundPart last;
    constexpr bool have(RoundPart part) const { return part >= first && part <= last; }
};
constexpr Units kAllUnits{RoundPart::kDay, RoundPart::kIsoWeek};
constexpr Units kDateUnits{RoundPart::kDay, RoundPart::kWeekStart};
constexpr Units kTimeUnits{RoundPart::kHour, RoundPart::kMinute};

// The element is read once, and the loop is that of its unit.
template <bool kTruncates, const Units& kUnits>
struct ByElement {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* date, bdta3_scalar* element) {
        const Text word = ValueType<Text>::load_constant(*reinterpret_cast<nstr*>(element));
        const RoundPart part = roundpart_of({word.bytes, word.len});
        const auto each = [&](auto step) { return run<EachDateByElement<step.step>>(call, result, nrows, date, element); };
        const auto none = [&] { return run<NoSuchElement>(call, result, nrows, date, element); };
        if (!kUnits.have(part)) return none();
        if constexpr (kTruncates) {
            return with_truncation(part, each, none);
        } else {
            return with_rounding_step(part, each, none);
        }
    }
};

template <const Units& kUnits>
using TruncTo = ByElement<true, kUnits>;
template <const Units& kUnits>
using RoundTo = ByElement<false, kUnits>;

// Applies a step on behalf of a caller that gives work space.
template <class WithStep>
int32_t apply(const WithStep& with_step, int32_t part, const qztime& value, qztime& out) {
    const auto known = [&](auto step) {
        const Code code = step.step(value, out);
        return code.failed() ? logged(code).value : 0;
    };
    const bool is_part = part == static_cast<int16_t>(part);
    return with_step(is_part ? static_cast<RoundPart>(part) : RoundPart::kNone, known, [] { return +EC_DATE_FORMAT_INVALID; });
}

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_2(btrunc_date_av_date, TruncTo<kAllUnits>, a, v)
BIFUN_EXPORT_2(btrunc_datetime_av_date, TruncTo<kAllUnits>, a, v)
BIFUN_EXPORT_2(btrunc_time_av_date, TruncTo<kTimeUnits>, a, v)
BIFUN_EXPORT_2(bround_date_av_date, RoundTo<kDateUnits>, a, v)
BIFUN_EXPORT_2(bround_datetime_av_date, RoundTo<kAllUnits>, a, v)
BIFUN_EXPORT_2(bround_time_av_date, RoundTo<kTimeUnits>, a, v)
BIFUN_EXPORT_1(btrunc_day_a_date, EachDate<trunc_time>, a)
BIFUN_EXPORT_1(bround_day_a_date, EachDate<round_to_day>, a)

BIFUN_EXPORT int32_t ifun_trunc_dt_low(qztime* value, int32_t code, qztime* result) {
    const auto with_step = [](const auto&... argument) { return with_truncation(argument...); };
    const int32_t failed = apply(with_step, code, *value, *result);
    if (failed == 0) qztime_assign(value, result);
    return failed;
}

BIFUN_EXPORT int32_t ifun_round_dt_low(qztime* value, int32_t code, qztime* result) {
    const auto with_step = [](const auto&... argument) { return with_rounding_step(argument...); };
    const int32_t failed = apply(with_step, code, *value, *result);
    if (failed == 0 && code != static_cast<int32_t>(RoundPart::kDay)) qztime_assign(value, result);
    return failed;
}

BIFUN_EXPORT int32_t ifun_round_day_low(const qztime* value, qztime* result) { return round_to_day(*value, *result).value; }

BIFUN_EXPORT qztime* fun_trunc_day(qztime* result, const qztime* value) {
    (void)trunc_time(*value, *result);
    return result;
}
