// OVERLAPS of two periods.
//
// Two whole periods are closed at both ends, so that they overlap where they touch. Where a point is missing the rule is
// another and not symmetrical in a period's points: a first point that is left stands for an instant, a second one for a period
// of which the missing first point is the end, whatever its slot holds. That slot is read, and nothing else is made of it.
#include "qzbifun/overlaps.h"

#include <cstring>

#include "bop/frame/export.h"
#include "qzhost/calendar.h"

namespace bifun {
namespace {

// ---- One row ----------------------------------------------------------------------------------------------------------------

struct Point {
    const qztime* value;
    bool present;
};

// A period as the rules see it: from base on, up to second where it is open to it.
struct Period {
    const qztime* base;
    const qztime* second;
    bool open;   // the other's base may lie between base and second
    bool whole;  // both points are there, in order
};

Period period_of(const Point& first, const Point& second) {
    if (first.present && second.present) {
        const bool reversed = qztime_cmp(first.value, second.value) > 0;
        return {reversed ? second.value : first.value, reversed ? first.value : second.value, true, true};
    }
    if (first.present) return {first.value, second.value, false, false};
    return {second.value, first.value, true, false};
}

bool is_before(const qztime* a, const qztime* b) { return qztime_cmp(a, b) < 0; }

bool overlap(const Period& p, const Period& q) {
    const int32_t order = qztime_cmp(p.base, q.base);
    if (order == 0) return true;
    if (p.whole && q.whole) return order > 0 ? !is_before(q.second, p.base) : !is_before(p.second, q.base);
    if (p.open == q.open) return false;
    if (q.open) return order > 0 && is_before(p.base, q.second);
    return order < 0 && is_before(q.base, p.second);
}

// ---- Whole periods: the common case, in one zone without a branch on the order of the points --------------------------------

// Zone and fraction of a record.
uint64_t zone_and_fraction(const qztime& value) {
    constexpr uint32_t kOffset = 5;  // of the minute; the second and these six bytes follow
    uint64_t bytes;
    static_assert(kOffset + sizeof bytes == sizeof(qztime));
    std::memcpy(&bytes, reinterpret_cast<const char*>(&value) + kOffset, sizeof bytes);
    return bytes >> 16;
}

bool in_one_zone(const qztime& p1, const qztime& p2, const qztime& q1, const qztime& q2) {
    return ((p1.tz ^ p2.tz) | (p1.tz ^ q1.tz) | (p1.tz ^ q2.tz)) == 0;
}

bool of_one_zone_and_fraction(const qztime& p1, const qztime& p2, const qztime& q1, const qztime& q2) {
    const uint64_t first = zone_and_fraction(p1);
    return ((first ^ zone_and_fraction(p2)) | (first ^ zone_and_fraction(q1)) | (first ^ zone_and_fraction(q2))) == 0;
}

using Moment = unsigned __int128;

Moment moment_of(const qztime& value) { return Moment{host_second_key(&value)} << 32 | value.fraction; }

// Two periods are apart when both points of one lie behind both of the other.
template <class T>
bool not_apart(T p1, T p2, T q1, T q2) {
    const bool behind = (p1 > q1) & (p1 > q2) & (p2 > q1) & (p2 > q2);
    const bool before = (p1 < q1) & (p1 < q2) & (p2 < q1) & (p2 < q2);
    return !(behind | before);
}

bool whole_overlap(const qztime& p1, const qztime& p2, const qztime& q1, const qztime& q2) {
    if (of_one_zone_and_fraction(p1, p2, q1, q2)) {
        return not_apart(host_second_key(&p1), host_second_key(&p2), host_second_key(&q1), host_second_key(&q2));
    }
    if (in_one_zone(p1, p2, q1, q2)) return not_apart(moment_of(p1), moment_of(p2), moment_of(q1), moment_of(q2));
    return overlap(period_of({&p1, true}, {&p2, true}), period_of({&q1, true}, {&q2, true}));
}

// ---- Families ---------------------------------------------------------------------------------------------------------------

// A row's argument: the record and whether it is there.
template <class T>
struct Argument {
    const T& value;
    bool present;
};

struct OverlapsDatetimes {
    using Second = qztime;

    // Whether the flags of a period make the row NULL.
    static bool is_null(bool first, bool second) { return !(first | second); }

    static Code row(const Argument<qztime>& p1, const Argument<qztime>& p2, const Argument<qztime>& q1,
                    const Argument<qztime>& q2, int32_t* result) {
        if (p1.present & p2.present & q1.present & q2.present) {
            *result = whole_overlap(p1.value, p2.value, q1.value, q2.value);
        } else {
            *result = overlap(period_of({&p1.value, p1.present}, {&p2.value, p2.present}),
                              period_of({&q1.value, q1.present}, {&q2.value, q2.present}));
        }
        return kOk;
    }
};

template <class Interval, int32_t (*kAdd)(const qztime*, const Interval*, qztime*)>
struct OverlapsIntervals {
    using Second = Interval;

    static bool is_null(bool start, bool) { return !start; }

    static Code row(const Argument<qztime>& s1, const Argument<Interval>& x1, const Argument<qztime>& s2,
                    const Argument<Interval>& x2, int32_t* result) {
        qztime end1 = s1.value, end2 = s2.value;
        if (x1.present) {
            if (const Code code{kAdd(&s1.value, &x1.value, &end1)}; code.failed()) return code;
        }
        if (x2.present) {
            if (const Code code{kAdd(&s2.value, &x2.value, &end2)}; code.failed()) return code;
        }
        if (x1.present & x2.present) {
            *result = whole_overlap(s1.value, end1, s2.value, end2);
        } else {
            *result =
                overlap(period_of({&s1.value, true}, {&end1, x1.present}), period_of({&s2.value, true}, {&end2, x2.present}));
        }
        return kOk;
    }
};

// ---- Batches ----------------------------------------------------------------------------------------------------------------

// What a constant leaves of its valid byte.
uint8_t mask_of(const bdta3_col&) { return 0xFF; }
uint8_t mask_of(const bdta3_scalar& scalar) { return scalar.has_value != 0 ? 0xFF : 0; }

// Whether two constants make up a period that makes all rows NULL.
template <class F, class First, class Second>
bool is_null_period(const First& first, const Second& second) {
    if constexpr (std::is_same_v<First, bdta3_scalar> && std::is_same_v<Second, bdta3_scalar>) {
        return F::is_null(first.has_value != 0, second.has_value != 0);
    }
    return false;
}

template <class F>
struct Overlaps {
    template <class S1, class X1, class S2, class X2>
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, S1* s1, X1* x1, S2* s2, X2* x2) {
        if (is_null_period<F>(*s1, *x1) || is_null_period<F>(*s2, *x2)) {
            frame::set_all_null(result, nrows);
            return 0;
        }
        if (nrows == 0) return 0;
        const uint8_t masks[4] = {mask_of(*s1), mask_of(*x1), mask_of(*s2), mask_of(*x2)};
        const auto rows = [&](const auto&... access) { return each_row(call, result, nrows, masks, access...); };
        return with_access<std::tuple<qztime, typename F::Second, qztime, typename F::Second>, false>(rows, s1, x1, s2, x2);
    }

    template <class A1, class A2, class A3, class A4>
    static int32_t each_row(const Call& call, bdta3_col* result, uint32_t nrows, const uint8_t (&masks)[4], const A1 s1,
                            const A2 x1, const A3 s2, const A4 x2) {
        using Second = typename F::Second;
        const uint8_t mask_s1 = masks[0], mask_x1 = masks[1], mask_s2 = masks[2], mask_x2 = masks[3];
        const frame::Output out(result);
        auto* const values = static_cast<int32_t*>(out.values);
        for (uint32_t i = 0; i < nrows; ++i) {
            const Argument<qztime> first{s1.value_at(i), (s1.valid_at(i) & mask_s1) != 0};
            const Argument<Second> first_end{x1.value_at(i), (x1.valid_at(i) & mask_x1) != 0};
            const Argument<qztime> second{s2.value_at(i), (s2.valid_at(i) & mask_s2) != 0};
            const Argument<Second> second_end{x2.value_at(i), (x2.valid_at(i) & mask_x2) != 0};
            if (F::is_null(first.present, first_end.present) || F::is_null(second.present, second_end.present)) {
                out.valid[i] = 0;
                result->all_valid = 0;
                continue;
            }
            out.valid[i] = 1;
            if (const Code code = F::row(first, first_end, second, second_end, values + i); code.failed()) {
                qzerr_stk_push(call.env, code.value, call.name);
                return code.value;
            }
        }
        return 0;
    }
};

using OverlapsDt = Overlaps<OverlapsDatetimes>;
using OverlapsIvYm = Overlaps<OverlapsIntervals<qz_interval_ym, datetime_add_interval_ym>>;
using OverlapsIvDt = Overlaps<OverlapsIntervals<qz_interval_dt, datetime_add_interval_dt>>;

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_4(boverlaps_dt_aaaa_date, OverlapsDt, a, a, a, a)
BIFUN_EXPORT_4(boverlaps_dt_aaav_ts_date, OverlapsDt, a, a, a, v)
BIFUN_EXPORT_4(boverlaps_dt_aava_ts_date, OverlapsDt, a, a, v, a)
BIFUN_EXPORT_4(boverlaps_dt_aavv_tsts_date, OverlapsDt, a, a, v, v)
BIFUN_EXPORT_4(boverlaps_dt_avaa_ts_date, OverlapsDt, a, v, a, a)
BIFUN_EXPORT_4(boverlaps_dt_avav_tsts_date, OverlapsDt, a, v, a, v)
BIFUN_EXPORT_4(boverlaps_dt_avva_tsts_date, OverlapsDt, a, v, v, a)
BIFUN_EXPORT_4(boverlaps_dt_avvv_tststs_date, OverlapsDt, a, v, v, v)
BIFUN_EXPORT_4(boverlaps_dt_vaaa_ts_date, OverlapsDt, v, a, a, a)
BIFUN_EXPORT_4(boverlaps_dt_vaav_tsts_date, OverlapsDt, v, a, a, v)
BIFUN_EXPORT_4(boverlaps_dt_vava_tsts_date, OverlapsDt, v, a, v, a)
BIFUN_EXPORT_4(boverlaps_dt_vavv_tststs_date, OverlapsDt, v, a, v, v)
BIFUN_EXPORT_4(boverlaps_dt_vvaa_tsts_date, OverlapsDt, v, v, a, a)
BIFUN_EXPORT_4(boverlaps_dt_vvav_tststs_date, OverlapsDt, v, v, a, v)
BIFUN_EXPORT_4(boverlaps_dt_vvva_tststs_date, OverlapsDt, v, v, v, a)

BIFUN_EXPORT_4(boverlaps_ivym_aaaa_date, OverlapsIvYm, a, a, a, a)
BIFUN_EXPORT_4(boverlaps_ivym_aaav_ym_date, OverlapsIvYm, a, a, a, v)
BIFUN_EXPORT_4(boverlaps_ivym_aava_ts_date, OverlapsIvYm, a, a, v, a)
BIFUN_EXPORT_4(boverlaps_ivym_aavv_ymts_date, OverlapsIvYm, a, a, v, v)
BIFUN_EXPORT_4(boverlaps_ivym_avaa_ym_date, OverlapsIvYm, a, v, a, a)
BIFUN_EXPORT_4(boverlaps_ivym_avav_ymym_date, OverlapsIvYm, a, v, a, v)
BIFUN_EXPORT_4(boverlaps_ivym_avva_tsym_date, OverlapsIvYm, a, v, v, a)
BIFUN_EXPORT_4(boverlaps_ivym_avvv_ymtsym_date, OverlapsIvYm, a, v, v, v)
BIFUN_EXPORT_4(boverlaps_ivym_vaaa_ts_date, OverlapsIvYm, v, a, a, a)
BIFUN_EXPORT_4(boverlaps_ivym_vaav_ymts_date, OverlapsIvYm, v, a, a, v)
BIFUN_EXPORT_4(boverlaps_ivym_vava_tsts_date, OverlapsIvYm, v, a, v, a)
BIFUN_EXPORT_4(boverlaps_ivym_vavv_ymtsts_date, OverlapsIvYm, v, a, v, v)
BIFUN_EXPORT_4(boverlaps_ivym_vvaa_ymts_date, OverlapsIvYm, v, v, a, a)
BIFUN_EXPORT_4(boverlaps_ivym_vvav_ymymts_date, OverlapsIvYm, v, v, a, v)
BIFUN_EXPORT_4(boverlaps_ivym_vvva_tsymts_date, OverlapsIvYm, v, v, v, a)

BIFUN_EXPORT_4(boverlaps_ivdt_aaaa_date, OverlapsIvDt, a, a, a, a)
BIFUN_EXPORT_4(boverlaps_ivdt_aaav_dt_date, OverlapsIvDt, a, a, a, v)
BIFUN_EXPORT_4(boverlaps_ivdt_aava_ts_date, OverlapsIvDt, a, a, v, a)
BIFUN_EXPORT_4(boverlaps_ivdt_aavv_dtts_date, OverlapsIvDt, a, a, v, v)
BIFUN_EXPORT_4(boverlaps_ivdt_avaa_dt_date, OverlapsIvDt, a, v, a, a)
BIFUN_EXPORT_4(boverlaps_ivdt_avav_dtdt_date, OverlapsIvDt, a, v, a, v)
BIFUN_EXPORT_4(boverlaps_ivdt_avva_tsdt_date, OverlapsIvDt, a, v, v, a)
BIFUN_EXPORT_4(boverlaps_ivdt_avvv_date, OverlapsIvDt, a, v, v, v)
BIFUN_EXPORT_4(boverlaps_ivdt_vaaa_ts_date, OverlapsIvDt, v, a, a, a)
BIFUN_EXPORT_4(boverlaps_ivdt_vaav_dtts_date, OverlapsIvDt, v, a, a, v)
BIFUN_EXPORT_4(boverlaps_ivdt_vava_tsts_date, OverlapsIvDt, v, a, v, a)
BIFUN_EXPORT_4(boverlaps_ivdt_vavv_date, OverlapsIvDt, v, a, v, v)
BIFUN_EXPORT_4(boverlaps_ivdt_vvaa_date, OverlapsIvDt, v, v, a, a)
BIFUN_EXPORT_4(boverlaps_ivdt_vvav_date, OverlapsIvDt, v, v, a, v)
BIFUN_EXPORT_4(boverlaps_ivdt_vvva_date, OverlapsIvDt, v, v, v, a)

BIFUN_EXPORT int32_t qztime_overlaps_dt_low(const qztime* p1, int32_t has_p1, const qztime* p2, int32_t has_p2,
                                            const qztime* q1, int32_t has_q1, const qztime* q2, int32_t has_q2) {
    return overlap(period_of({p1, has_p1 != 0}, {p2, has_p2 != 0}), period_of({q1, has_q1 != 0}, {q2, has_q2 != 0}));
}
