// What a call that fails at a row leaves behind: whether all_valid is stored before or after the rows, and what the log is
// told.
#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "qzbifun/codes.h"
#include "qzbifun/qzbifun.h"
#include "qzhost/control.h"
#include "tests/bop/bifun_date/dates.h"
#include "tests/support/log_lines.h"
#include "tests/support/vector.h"

namespace {

using dates::date;
using dates::moment;
using support::Constant;
using support::Host;
using support::Text;
using support::Vector;

// ---- all_valid --------------------------------------------------------------------------------------------------------------

// Rows of which the second fails, and no row is NULL.
struct Batch {
    template <class T>
    Vector& of(std::initializer_list<std::optional<T>> values) {
        return vectors.emplace_back(Vector::of<T>(host, values));
    }
    template <class T>
    bdta3_scalar* constant(const T& value) {
        return constants.emplace_back(Constant::of<T>(value)).scalar();
    }

    Host host;
    std::deque<Vector> vectors;
    std::deque<Constant> constants;
};

using Call = std::function<int32_t(Batch&, bdta3_col* result)>;

// The flag that the failed call leaves: that of the vectors, or as the caller had it.
template <class R>
uint32_t flag_after_failure(const Call& call, int32_t code) {
    Batch batch;
    Vector out = Vector::result<R>(batch.host, 3);
    EXPECT_EQ(call(batch, out.col()), code);
    EXPECT_EQ(out.valid(0), 1);
    EXPECT_TRUE(out.valid_untouched(2));
    EXPECT_TRUE(out.value_untouched(2));
    return out.col()->all_valid;
}

template <class R>
void expect_flag_after_rows(const char* name, const Call& call, int32_t code) {
    EXPECT_EQ(flag_after_failure<R>(call, code), Vector::kFlagPattern) << name;
}

template <class R>
void expect_flag_before_rows(const char* name, const Call& call, int32_t code) {
    EXPECT_EQ(flag_after_failure<R>(call, code), 1u) << name;
}

const qztime kLast = date(9999, 12, 31);  // a Friday
const qztime kOther = date(2024, 2, 29);

bdta3_col* last_in_the_middle(Batch& b) { return b.of<qztime>({kOther, kLast, kOther}).col(); }

// An amount that only the last day of the calendar cannot be moved by.
template <auto* kForm, class Amount>
Call moved_by(const Amount& amount) {
    return [amount](Batch& b, bdta3_col* result) {
        return kForm(b.host.env(), b.host.mem(), last_in_the_middle(b), b.constant(amount), result, 3);
    };
}

template <auto* kForm, class Amount>
Call moved_by_vector(const Amount& amount) {
    return [amount](Batch& b, bdta3_col* result) {
        bdta3_col* const amounts = b.of<Amount>({amount, amount, amount}).col();
        return kForm(b.host.env(), b.host.mem(), last_in_the_middle(b), amounts, result, 3);
    };
}

template <auto* kForm, class Amount>
Call constant_moved_by(const Amount& amount, const Amount& too_much) {
    return [=](Batch& b, bdta3_col* result) {
        bdta3_col* const amounts = b.of<Amount>({amount, too_much, amount}).col();
        return kForm(b.host.env(), b.host.mem(), b.constant(kOther), amounts, result, 3);
    };
}

TEST(DateFailure, SumsStoreTheFlagBehindTheRows) {
    const auto fails = [](const char* name, const Call& call) {
        expect_flag_after_rows<qztime>(name, call, EC_DATE_OUT_OF_RANGE);
    };
    fails("badd_days_aa_date", moved_by_vector<badd_days_aa_date>(1.0));
    fails("badd_days_av_date", moved_by<badd_days_av_date>(1.0));
    fails("badd_days_va_date", constant_moved_by<badd_days_va_date>(1.0, 1e9));
    fails("badd_weeks_aa_date", moved_by_vector<badd_weeks_aa_date>(1));
    fails("badd_weeks_av_date", moved_by<badd_weeks_av_date>(1));
    fails("badd_weeks_va_date", constant_moved_by<badd_weeks_va_date>(1, 10'000'000));
    fails("badd_months_aa_date", moved_by_vector<badd_months_aa_date>(1));
    fails("badd_months_av_date", moved_by<badd_months_av_date>(1));
    fails("badd_months_va_date", constant_moved_by<badd_months_va_date>(1, 1'000'000));
    const qz_interval_ym month{0, 1, 656}, month_back{0, -1, 656};
    const qz_interval_dt day{1, 0, 0, 0, 0, 1686};
    fails("bdate_add_ym_aa", moved_by_vector<bdate_add_ym_aa>(month));
    fails("bdate_add_ym_av", moved_by<bdate_add_ym_av>(month));
    fails("bdate_sub_ym_aa", moved_by_vector<bdate_sub_ym_aa>(month_back));
    fails("bdate_sub_ym_av", moved_by<bdate_sub_ym_av>(month_back));
    fails("bdate_add_dt_aa", moved_by_vector<bdate_add_dt_aa>(day));
    fails("bdate_add_dt_av", moved_by<bdate_add_dt_av>(day));
    fails("bdateadd_vaa_date", [](Batch& b, bdta3_col* result) {
        bdta3_col* const counts = b.of<int64_t>({1, 1, 1}).col();
        return bdateadd_vaa_date(b.host.env(), b.host.mem(), b.constant(3), counts, last_in_the_middle(b), result, 3);
    });
    fails("bdateadd_vva_date", [](Batch& b, bdta3_col* result) {
        return bdateadd_vva_date(b.host.env(), b.host.mem(), b.constant(3), b.constant(int64_t{1}), last_in_the_middle(b),
                                 result, 3);
    });
    fails("bdateadd_vav_date", [](Batch& b, bdta3_col* result) {
        bdta3_col* const counts = b.of<int64_t>({1, int64_t{1} << 50, 1}).col();
        return bdateadd_vav_date(b.host.env(), b.host.mem(), b.constant(3), counts, b.constant(kOther), result, 3);
    });
    fails("bto_datetime_avvvv_lililili_date", [](Batch& b, bdta3_col* result) {
        bdta3_col* const years = b.of<int32_t>({2024, 10000, 2024}).col();
        return bto_datetime_avvvv_lililili_date(b.host.env(), b.host.mem(), years, b.constant(1), b.constant(1), b.constant(0),
                                                b.constant(0), result, 3);
    });
}

TEST(DateFailure, CountsAndPartsStoreTheFlagBehindTheRows) {
    // Seconds from the first that only the second row is too far for.
    const auto dates_apart = [](Batch& b) { return b.of<qztime>({kOther, kLast, kOther}).col(); };
    expect_flag_after_rows<int32_t>(
        "bdatediff_vva_date",
        [&](Batch& b, bdta3_col* result) {
            return bdatediff_vva_date(b.host.env(), b.host.mem(), b.constant(6), b.constant(kOther), dates_apart(b), result, 3);
        },
        EC_DATA_OVERFLOW);
    expect_flag_after_rows<int32_t>(
        "bdatediff_vav_date",
        [&](Batch& b, bdta3_col* result) {
            return bdatediff_vav_date(b.host.env(), b.host.mem(), b.constant(6), dates_apart(b), b.constant(kOther), result, 3);
        },
        EC_DATA_OVERFLOW);
    expect_flag_after_rows<int32_t>(
        "bdatediff_vaa_date",
        [&](Batch& b, bdta3_col* result) {
            bdta3_col* const others = b.of<qztime>({kOther, kOther, kOther}).col();
            return bdatediff_vaa_date(b.host.env(), b.host.mem(), b.constant(6), others, dates_apart(b), result, 3);
        },
        EC_DATA_OVERFLOW);
    // The year -1 is what stands for no part.
    expect_flag_after_rows<int32_t>(
        "bdatepart1_va_date",
        [](Batch& b, bdta3_col* result) {
            bdta3_col* const values = b.of<qztime>({kOther, date(-1, 1, 1), kOther}).col();
            return bdatepart1_va_date(b.host.env(), b.host.mem(), b.constant(1), values, result, 3);
        },
        EC_INVALID_ARGUMENT);
}

TEST(DateFailure, DaysNamedStoreTheFlagInFrontOfTheRows) {
    expect_flag_before_rows<qztime>("bnext_day_av_date", moved_by<bnext_day_av_date>(Text{"sunday"}), EC_DATE_OUT_OF_RANGE);
    expect_flag_before_rows<qztime>(
        "blast_day_str_a_date",
        [](Batch& b, bdta3_col* result) {
            bdta3_col* const texts = b.of<Text>({Text{"2024-02-29"}, Text{"x"}, Text{"2024-02-29"}}).col();
            return blast_day_str_a_date(b.host.env(), b.host.mem(), texts, result, 3);
        },
        EC_DATE_TEXT_INVALID);
}

TEST(DateFailure, RoundingStoresTheFlagInFrontOfTheRows) {
    expect_flag_before_rows<qztime>("bround_date_av_date", moved_by<bround_date_av_date>(Text{"DAY"}), EC_DATE_OUT_OF_RANGE);
    expect_flag_before_rows<qztime>("bround_datetime_av_date", moved_by<bround_datetime_av_date>(Text{"CC"}),
                                    EC_DATE_VALUE_INVALID);
    const auto of_dates = [](bop_fn_av* function, const char* element, const qztime& value) {
        return [=](Batch& b, bdta3_col* result) {
            bdta3_col* const values = b.of<qztime>({kOther, value, kOther}).col();
            return function(b.host.env(), b.host.mem(), values, b.constant(Text{element}), result, 3);
        };
    };
    const qztime first = date(-4712, 1, 1), last_hour = moment(9999, 12, 31, 23, 59, 59);
    expect_flag_before_rows<qztime>("bround_time_av_date", of_dates(bround_time_av_date, "HH", last_hour),
                                    EC_DATE_OUT_OF_RANGE);
    expect_flag_before_rows<qztime>("btrunc_date_av_date", of_dates(btrunc_date_av_date, "DAY", first), EC_DATE_OUT_OF_RANGE);
    expect_flag_before_rows<qztime>("btrunc_datetime_av_date", of_dates(btrunc_datetime_av_date, "DAY", first),
                                    EC_DATE_OUT_OF_RANGE);
    expect_flag_before_rows<qztime>(
        "bround_day_a_date",
        [&](Batch& b, bdta3_col* result) {
            return bround_day_a_date(b.host.env(), b.host.mem(), b.of<qztime>({kOther, last_hour, kOther}).col(), result, 3);
        },
        EC_DATE_VALUE_INVALID);
    const auto of_texts = [](bop_fn_av* function, const char* element) {
        return [=](Batch& b, bdta3_col* result) {
            bdta3_col* const texts = b.of<Text>({Text{"2024-02-29"}, Text{"x"}, Text{"2024-02-29"}}).col();
            return function(b.host.env(), b.host.mem(), texts, b.constant(Text{element}), result, 3);
        };
    };
    expect_flag_before_rows<Text>("btrunc_dt_str_av_date", of_texts(btrunc_dt_str_av_date, "DD"), EC_DATE_TEXT_INVALID);
    expect_flag_before_rows<Text>("bround_dt_str_av_date", of_texts(bround_dt_str_av_date, "DD"), EC_DATE_TEXT_INVALID);
    const auto of_texts_alone = [](bop_fn_a* function) {
        return [=](Batch& b, bdta3_col* result) {
            bdta3_col* const texts = b.of<Text>({Text{"2024-02-29"}, Text{"x"}, Text{"2024-02-29"}}).col();
            return function(b.host.env(), b.host.mem(), texts, result, 3);
        };
    };
    expect_flag_before_rows<Text>("bround_a_str", of_texts_alone(bround_a_str), EC_DATE_TEXT_INVALID);
    expect_flag_before_rows<qztime>("btrunc_day_str_a_date", of_texts_alone(btrunc_day_str_a_date), EC_DATE_TEXT_INVALID);
}

// Names are stored as texts, for which there may be no room.
TEST(DateFailure, NamesStoreTheFlagInFrontOfTheRows) {
    for (bop_fn_a* const function : {bdayname_a_date, bmonthname_a_date}) {
        Host host;
        const Vector in = Vector::of<qztime>(host, {kOther, kOther});
        const Vector out = Vector::result<Text>(host, 2);
        host_memory_fail_after(0);
        EXPECT_EQ(function(host.env(), host.mem(), in.col(), out.col(), 2), EC_OUT_OF_MEMORY);
        host_memory_fail_after(-1);
        EXPECT_EQ(out.col()->all_valid, 1u);
    }
}

// ---- The log ----------------------------------------------------------------------------------------------------------------

using Lines = std::vector<support::LogLine>;

// What the log is told while a call runs.
template <class Call>
Lines logged(const Call& call) {
    const support::LogLines log;
    call();
    return log.lines();
}

TEST(DateLog, IsToldOfWeekStartsThatFail) {
    int32_t weekday = 0;
    const qztime beyond = date(10000, 1, 1);
    EXPECT_EQ(logged([&] { ifun_week_start_day_for_ww(&beyond, &weekday); }), (Lines{{EC_DATE_VALUE_INVALID, "weekday.cpp"}}));
    EXPECT_EQ(logged([&] { ifun_week_start_day_for_ww(&kOther, &weekday); }), Lines{});
}

TEST(DateLog, IsToldOfCompositionsThatFailButNotOfYearZero) {
    qztime result;
    const auto compose = [&](int32_t year) { return logged([&] { ifun_convert_datetime(year, 1, 1, 0, 0, &result); }); };
    EXPECT_EQ(compose(10000), (Lines{{EC_DATE_OUT_OF_RANGE, "to_datetime.cpp"}}));
    EXPECT_EQ(compose(0), Lines{});
    EXPECT_EQ(compose(2024), Lines{});
}

TEST(DateLog, IsToldOfRoundingThatFails) {
    qztime value, result;
    const auto by = [&](int32_t (*worker)(qztime*, int32_t, qztime*), const qztime& given, int32_t part) {
        value = given;
        return logged([&] { worker(&value, part, &result); });
    };
    const qztime last = moment(9999, 12, 31, 23, 59, 59), first = date(-4712, 1, 1);
    const Lines not_a_date = {{EC_DATE_VALUE_INVALID, "trunc_round.cpp"}};
    const Lines outside = {{EC_DATE_OUT_OF_RANGE, "trunc_round.cpp"}};
    for (const int32_t part : {1, 2, 3, 4, 5}) EXPECT_EQ(by(ifun_round_dt_low, last, part), not_a_date) << part;
    for (const int32_t part : {8, 9, 10, 11}) EXPECT_EQ(by(ifun_round_dt_low, last, part), outside) << part;
    EXPECT_EQ(by(ifun_trunc_dt_low, first, 8), outside);
    EXPECT_EQ(by(ifun_trunc_dt_low, date(10000, 1, 1), 3), not_a_date);
    for (const int32_t part : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}) {
        EXPECT_EQ(by(ifun_round_dt_low, kOther, part), Lines{}) << part;
        EXPECT_EQ(by(ifun_trunc_dt_low, kOther, part), Lines{}) << part;
    }
}

TEST(DateLog, IsToldOfRowsThatFailToRound) {
    Host host;
    const auto by = [&](bop_fn_av* function, const qztime& value, const char* element) {
        const Vector in = Vector::of<qztime>(host, {kOther, value});
        Constant word = Constant::of(Text{element});
        const Vector out = Vector::result<qztime>(host, 2);
        return logged([&] { function(host.env(), host.mem(), in.col(), word.scalar(), out.col(), 2); });
    };
    EXPECT_EQ(by(bround_date_av_date, kLast, "CC"), (Lines{{EC_DATE_VALUE_INVALID, "trunc_round.cpp"}}));
    EXPECT_EQ(by(btrunc_date_av_date, date(-4712, 1, 1), "DAY"), (Lines{{EC_DATE_OUT_OF_RANGE, "trunc_round.cpp"}}));
}

TEST(DateLog, IsToldOfTextsThatFailToRound) {
    char buffer[DATE_ROUNDING_TEXT_BYTES];
    uint32_t length = 0;
    const auto by = [&](auto* worker, const std::string& text, auto... argument) {
        return logged([&] { worker(text.data(), static_cast<uint32_t>(text.size()), argument..., buffer, &length); });
    };
    const Lines no_date = {{EC_DATE_TEXT_INVALID, "trunc_round_text.cpp"}};
    const Lines no_number = {{EC_NUMBER_TEXT_INVALID, "trunc_round_text.cpp"}};
    const Lines too_large = {{EC_DATA_OVERFLOW, "trunc_round_text.cpp"}};
    EXPECT_EQ(by(btrunc_dt_str_low, "x", 1), no_date);
    EXPECT_EQ(by(ifun_round_dt_str_low, "x", 1), no_date);
    EXPECT_EQ(by(ifun_round_dt_str_low, "9999-12-31 12:00", 1).back(),
              (support::LogLine{EC_DATE_VALUE_INVALID, "trunc_round_text.cpp"}));
    EXPECT_EQ(by(btrunc_dec_str_low, "x", int64_t{1}), no_number);
    EXPECT_EQ(by(ifun_round_dec_str_low, "x", int64_t{1}), no_number);
    EXPECT_EQ(by(ifun_round_dec_str_low, "9.5e125", int64_t{-125}), too_large);
    EXPECT_EQ(by(btrunc_dt_str_low, " ", 1), Lines{});
    EXPECT_EQ(by(btrunc_dec_str_low, " ", int64_t{1}), Lines{});
    // What is no number may still be a date: only then is something wrong.
    EXPECT_EQ(by(ifun_round_str_low, "2024-02-29"), Lines{});
    EXPECT_EQ(by(ifun_round_str_low, "x"), no_date);
}

}  // namespace
