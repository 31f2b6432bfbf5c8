// Date functions on several threads at once: environments and vectors of their own, constants and switches in common.
#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "qzbifun/qzbifun.h"
#include "tests/support/random_value.h"
#include "tests/support/vector.h"

namespace {

using support::Constant;
using support::Host;
using support::Random;
using support::Text;
using support::Vector;

constexpr uint32_t kRows = 200;
constexpr int kThreads = 4;
constexpr int kRounds = 6;

// What all threads read.
class Shared {
  public:
    Shared() {
        Random random(4242);
        for (uint32_t i = 0; i < kRows; ++i) {
            qztime first = support::random_value<qztime>(random), second_date = support::random_value<qztime>(random);
            if (first.year > 9900) first.year = 1600;
            if (i % 20 == 0) second_date = {1582, 10, 10, 0, 0, 0, 0, TZ_NONE};  // some functions adjust it where it stands
            firsts.push_back(first);
            seconds.push_back(second_date);
            months.push_back(support::random_value<qz_interval_ym>(random));
            days.push_back(support::random_value<qz_interval_dt>(random));
            numbers.push_back(static_cast<int32_t>(random.below(60)) - 20);
            texts.push_back({i % 3 == 0   ? "2024-02-" + std::to_string(1 + i % 29) + " 12:30:" + std::to_string(i % 60)
                             : i % 3 == 1 ? std::to_string(i) + ".55"
                                          : std::string(i % 4, ' ')});
        }
    }

    template <class T>
    bdta3_scalar* constant(const T& value) {
        return constants_.emplace_back(Constant::of<T>(value)).scalar();
    }

    std::vector<qztime> firsts, seconds;
    std::vector<qz_interval_ym> months;
    std::vector<qz_interval_dt> days;
    std::vector<int32_t> numbers;
    std::vector<Text> texts;

  private:
    std::deque<Constant> constants_;

  public:
    bdta3_scalar* const date = constant(qztime{2024, 2, 29, 10, 30, 15, 500'000'000, 480});
    bdta3_scalar* const last = constant(qztime{9999, 12, 31, 23, 59, 59, 0, TZ_NONE});
    bdta3_scalar* const month = constant(qz_interval_ym{0, 1, 656});
    bdta3_scalar* const century = constant(Text{"CC"});
    bdta3_scalar* const week = constant(Text{"WW"});
    bdta3_scalar* const week_start = constant(Text{"DAY"});
    bdta3_scalar* const day = constant(Text{"DD"});
    bdta3_scalar* const places = constant(Text{"1"});
    bdta3_scalar* const keyword = constant(Text{"DAYOFYEAR"});
    bdta3_scalar* const friday = constant(Text{"Friday"});
    bdta3_scalar* const five = constant(5);
    bdta3_scalar* const second = constant(6);
    bdta3_scalar* const year = constant(2024);
};

// Calls functions one after another on one environment, each on vectors of its own, and writes down what each came to.
class Session {
  public:
    explicit Session(const Shared& shared) : shared_(shared) {}

    std::string run() {
        const Shared& s = shared_;
        call<qztime>(bround_datetime_av_date, vector(s.firsts), s.week_start);
        call<qztime>(bround_date_av_date, vector(s.seconds), s.week);
        call<qztime>(btrunc_datetime_av_date, vector(s.firsts), s.century);
        call<qztime>(btrunc_date_av_date, vector(s.seconds), s.week);
        call<qztime>(bround_day_a_date, vector(s.firsts));
        call<Text>(btrunc_dt_str_av_date, vector(s.texts), s.places);
        call<Text>(bround_dt_str_av_date, vector(s.texts), s.day);  // fails where the text is a number
        call<Text>(bround_a_str, vector(s.texts));
        call<int32_t>(bdatediff_vaa_date, s.five, vector(s.firsts), vector(s.seconds));
        call<int64_t>(bbigdatediff_vav_date, s.second, vector(s.firsts), s.date);
        call<xdec>(bmonths_between_aa_date, vector(s.firsts), vector(s.seconds));
        call<int32_t>(bweeks_between_av_date, vector(s.seconds), s.date);
        call<qztime>(bto_datetime_vaaaa_li_date, s.year, vector(s.numbers), vector(s.numbers), vector(s.numbers),
                     vector(s.numbers));
        call<int32_t>(bextract_datetime_va_date, s.five, vector(s.firsts));
        call<double>(bextract_time_ex_va_date, s.second, vector(s.firsts));
        call<int32_t>(bextract_iv_dt_va_date, s.second, vector(s.days));
        call<int32_t>(bextract_str_va_date, s.five, vector(s.texts));
        call<int32_t>(bweekday_str_a_date, vector(s.texts));
        call<int32_t>(bdatepart_av_date, vector(s.firsts), s.keyword);
        call<int32_t>(bdayofweek_a_date, vector(s.seconds));
        call<Text>(bdayname_a_date, vector(s.firsts));
        call<Text>(bmonthname_a_date, vector(s.firsts));
        call<qztime>(bnext_day_av_date, vector(s.seconds), s.friday);
        call<qztime>(bdate_add_ym_av, vector(s.firsts), s.month);
        call<qztime>(badd_months_va_date, s.last, vector(s.numbers));  // fails where the number is positive
        call<int32_t>(boverlaps_ivym_avaa_ym_date, vector(s.firsts), s.month, vector(s.firsts), vector(s.months));
        call<int32_t>(boverlaps_dt_vaaa_ts_date, s.date, vector(s.firsts), vector(s.seconds), vector(s.firsts));
        return told_;
    }

  private:
    template <class T>
    bdta3_col* vector(const std::vector<T>& values) {
        Vector& vector = vectors_.emplace_back(host_, support::type_of<T>(), kRows);
        for (uint32_t i = 0; i < kRows; ++i) vector.set(i, support::to_cell(values[i]), i % 11 != 0);
        return vector.col();
    }

    template <class R, class Function, class... Argument>
    void call(Function* function, Argument*... argument) {
        const Vector out = Vector::result<R>(host_, kRows);
        host_.clear_errors();
        const int32_t code = function(host_.env(), host_.mem(), argument..., out.col(), kRows);
        told_ +=
            "call " + std::to_string(code) + " " + print(host_.errors()) + " " + std::to_string(out.col()->all_valid) + "\n";
        for (uint32_t i = 0; i < kRows && !out.valid_untouched(i); ++i) {
            const bool written = out.valid(i) != 0 && (std::is_same_v<R, Text> ? code == 0 : !out.value_untouched(i));
            told_ += std::to_string(out.valid(i)) + " " + (written ? out.cell(i).bytes : "") + "\n";
        }
        vectors_.clear();
    }

    const Shared& shared_;
    Host host_;
    std::deque<Vector> vectors_;
    std::string told_;
};

TEST(DateThread, ResultsAreThoseOfOneThread) {
    const Shared shared;
    const std::string expected = Session(shared).run();
    std::vector<std::string> found(size_t{kThreads} * kRounds);
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
            for (int round = 0; round < kRounds; ++round) {
                found[static_cast<size_t>(thread * kRounds + round)] = Session(shared).run();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (const std::string& told : found) EXPECT_TRUE(told == expected);
    // The failures are told with their stacks, each by the environment on which it came up.
    EXPECT_NE(expected.find("bround_dt_str_av_process"), std::string::npos);
    EXPECT_NE(expected.find("badd_months_va_date"), std::string::npos);
}

}  // namespace
