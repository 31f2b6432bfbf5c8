// to_char of numbers against the C++ library's texts, and with allocations failing.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "qzbifun/codes.h"
#include "qzbifun/qzbifun.h"
#include "qzhost/decimal.h"
#include "tests/support/differential.h"
#include "tests/support/test_seed.h"
#include "tests/support/vector.h"

namespace {

using support::Constant;
using support::Differential;
using support::Host;
using support::Random;
using support::Rules;
using support::Text;
using support::Vector;

// Of every length, and where the length changes.
int64_t draw_bigint(Random& random) {
    if (random.chance(20)) return support::random_value<int64_t>(random);
    int64_t power = 1;
    for (uint32_t i = random.below(19); i > 0; --i) power *= 10;
    const int64_t value = random.chance(50) ? power - random.below(3) + 1
                                            : static_cast<int64_t>(random.next() % (10u * static_cast<uint64_t>(power)));
    return random.chance(50) ? -value : value;
}

template <class R, class... A>
Rules string_rules(const Differential<R, A...>&) {
    Rules rules;
    rules.failure = Rules::Failure::string;
    rules.flag_reads_constants = false;
    return rules;
}

TEST(ToChar, WholeNumbersAreThoseOfTheCppLibrary) {
    Differential<Text, int64_t> bigint;
    bigint.rules = string_rules(bigint);
    bigint.add("a", "bto_char_a_int64_to_varchar", bto_char_a_int64_to_varchar);
    bigint.draw<0>(draw_bigint);
    EXPECT_EQ(bigint.run([](int64_t x) { return Text{std::to_string(x), 0}; }), "");
    Differential<Text, int32_t> integer;
    integer.rules = string_rules(integer);
    integer.add("a", "bto_char_a_int_to_varchar", bto_char_a_int_to_varchar);
    integer.draw<0>([](Random& random) { return static_cast<int32_t>(draw_bigint(random)); });
    EXPECT_EQ(integer.run([](int32_t x) { return Text{std::to_string(x), 0}; }), "");
}

// Sixteen digits are made at once, and what is above them by themselves: both around every power of ten.
TEST(ToChar, WholeNumbersAtEveryLength) {
    std::vector<int64_t> numbers = {0, std::numeric_limits<int64_t>::max(), std::numeric_limits<int64_t>::min()};
    int64_t power = 1;
    for (int digits = 1; digits <= 19; ++digits) {
        for (int64_t first = 1; first <= 9; ++first) {
            for (int64_t more = -2; more <= 2; ++more) {
                const int64_t number = first * power + more;
                numbers.insert(numbers.end(), {number, -number});
            }
        }
        if (digits < 19) power *= 10;
    }
    for (int64_t above = 1; above <= 922; ++above) {
        for (const int64_t below : {int64_t{0}, int64_t{7}, int64_t{3'372'036'854'775'807}}) {
            const int64_t number = above * 10'000'000'000'000'000 + below;
            numbers.insert(numbers.end(), {number, -number});
        }
    }
    Host host;
    const auto rows = static_cast<uint32_t>(numbers.size());
    Vector x(host, support::type_of<int64_t>(), rows);
    for (uint32_t i = 0; i < rows; ++i) x.set(i, support::to_cell(numbers[i]), 1);
    const Vector result = Vector::result<Text>(host, rows);
    ASSERT_EQ(bto_char_a_int64_to_varchar(host.env(), host.mem(), x.col(), result.col(), rows), 0);
    for (uint32_t i = 0; i < rows; ++i) ASSERT_EQ(result.get<Text>(i).bytes, std::to_string(numbers[i]));
}

// Digits behind a thousand and a sign, by hand.
std::string grouped(int64_t x) {
    std::string text = std::to_string(x);
    const size_t first = x < 0 ? 1 : 0;
    for (size_t at = text.size(); at > first + 3;) text.insert(at -= 3, ",");
    return text;
}

TEST(ToChar, WholeNumbersByAFormat) {
    Differential<Text, int64_t, Text> format;
    format.rules = string_rules(format);
    format.rules.constants = Rules::Constants::ignored;
    format.add("av", "bto_char_av_int64_to_varchar_with_fmt", bto_char_av_int64_to_varchar_with_fmt);
    format.draw<0>(draw_bigint);
    format.draw<1>([](Random&) { return Text{"FM9,999,999,999,999,999,990", 0}; });
    EXPECT_EQ(format.run([](int64_t x, const Text&) { return Text{grouped(x), 0}; }), "");
}

TEST(ToChar, DoublesReadBackAsTheSameDouble) {
    const uint32_t seed = support::test_seed();
    Random random(seed);
    Host host;
    for (int i = 0; i < 3000; ++i) {
        const double x = support::random_value<double>(random);
        Vector values = Vector::of<double>(host, {x});
        Vector result = Vector::result<Text>(host, 1);
        host.clear_errors();
        const int32_t code = bto_char_a_double_to_varchar(host.env(), host.mem(), values.col(), result.col(), 1);
        if (x >= 1e126 || std::isinf(x)) {
            ASSERT_EQ(code, EC_DATA_OVERFLOW) << x << " seed " << seed;
            ASSERT_EQ(print(host.errors()), "-6102 bto_char_a_double_to_varchar_process") << x << " seed " << seed;
            ASSERT_EQ(result.valid(0), 0);
            continue;
        }
        ASSERT_EQ(code, 0) << x << " seed " << seed;
        const std::string text = result.get<Text>(0).bytes;
        const double back = std::strtod(text.c_str(), nullptr);
        ASSERT_TRUE(std::isnan(x) ? std::isnan(back) : back == x && std::signbit(back) == std::signbit(x))
            << text << " seed " << seed;
    }
}

// Rows are written in blocks: wherever the one stands that has no text, those below have theirs and those above nothing.
TEST(ToChar, ADoubleWithoutATextLeavesTheRowsAboveItAlone) {
    constexpr uint32_t kManyRows = 1200;
    const double long_one = -2.2250738585072014e-308;  // 24 bytes: fewer than a hundred to a block of texts
    for (const uint32_t failing : {0u, 1u, 80u, 85u, 86u, 300u, 511u, 512u, 513u, 1023u, 1199u}) {
        SCOPED_TRACE(failing);
        Host host;
        Vector x(host, support::type_of<double>(), kManyRows);
        for (uint32_t i = 0; i < kManyRows; ++i) x.set(i, support::to_cell(long_one), i % 7 != 3 || i == failing);
        x.set(failing, support::to_cell(2e126), 1);
        const Vector result = Vector::result<Text>(host, kManyRows);
        ASSERT_EQ(bto_char_a_double_to_varchar(host.env(), host.mem(), x.col(), result.col(), kManyRows), EC_DATA_OVERFLOW);
        ASSERT_EQ(print(host.errors()), "-6102 bto_char_a_double_to_varchar_process");
        for (uint32_t i = 0; i < failing; ++i) {
            const bool present = i % 7 != 3;
            ASSERT_EQ(result.valid(i), present) << i;
            if (present) {
                ASSERT_EQ(result.get<Text>(i).bytes, "-2.2250738585072014E-308") << i;
            }
        }
        ASSERT_EQ(result.valid(failing), 0);
        for (uint32_t i = failing + 1; i < kManyRows; ++i) ASSERT_TRUE(result.valid_untouched(i)) << i;
    }
}

// ---- Storage that runs out --------------------------------------------------------------------------------------------------

constexpr uint32_t kRows = 2000;

// Runs a function over long texts with ever more allocations succeeding, until a row behind the first fails; hands the result
// and that row to check, and answers whether there was one.
template <class Call, class Check>
bool fails_behind_row_zero(Host& host, const Call& call, const Check& check) {
    for (int64_t allocations = 0; allocations < 100; ++allocations) {
        host.clear_errors();
        const Vector result = Vector::result<Text>(host, kRows);
        host_memory_fail_after(allocations);
        const int32_t code = call(result);
        host_memory_fail_after(-1);
        if (code == 0) return false;
        EXPECT_EQ(code, EC_OUT_OF_MEMORY);
        EXPECT_EQ(print(host.errors()), "empty");
        uint32_t row = kRows;
        while (row > 0 && result.valid_untouched(row - 1)) --row;
        if (row < 2) continue;
        check(result, row - 1);
        return true;
    }
    return false;
}

TEST(ToChar, ADecimalWithoutStorageClearsRowZero) {
    Host host;
    Vector x(host, support::type_of<xdec>(), kRows);
    xdec small;
    ASSERT_EQ(xdec_from_char(&small, "1e-120", 6), 0);  // a text of 122 bytes
    for (uint32_t i = 0; i < kRows; ++i) x.set(i, support::to_cell(small), 1);
    x.col()->all_valid = 1;
    const auto call = [&](const Vector& result) {
        return bto_char_a_dec_to_varchar(host.env(), host.mem(), x.col(), result.col(), kRows);
    };
    EXPECT_TRUE(fails_behind_row_zero(host, call, [](const Vector& result, uint32_t row) {
        EXPECT_EQ(result.valid(0), 0);
        EXPECT_EQ(result.valid(row), 1);  // as the argument's
        for (uint32_t i = 1; i < row; ++i) ASSERT_EQ(result.get<Text>(i).bytes, "0." + std::string(119, '0') + "1") << i;
    }));
}

TEST(ToChar, ANumberOfAnotherTypeWithoutStorageClearsItsRow) {
    Host host;
    Vector x(host, support::type_of<int64_t>(), kRows);
    for (uint32_t i = 0; i < kRows; ++i) x.set(i, support::to_cell(INT64_MIN), 1);
    x.col()->all_valid = 1;
    Constant format = Constant::of(Text{std::string(75, '9'), 0});
    const auto call = [&](const Vector& result) {
        return bto_char_av_int64_to_varchar_with_fmt(host.env(), host.mem(), x.col(), format.scalar(), result.col(), kRows);
    };
    EXPECT_TRUE(fails_behind_row_zero(host, call, [](const Vector& result, uint32_t row) {
        EXPECT_EQ(result.valid(row), 0);
        for (uint32_t i = 0; i < row; ++i) ASSERT_EQ(result.valid(i), 1) << i;
    }));
}

// ---- Constants --------------------------------------------------------------------------------------------------------------

// The format of the double form is read where the constant's pointer leads, whatever its length.
TEST(ToChar, TheFormatOfDoublesIsReadThroughThePointer) {
    Host host;
    char elsewhere[] = "FM90.00";
    nstr format{};
    format.has_value = 1;
    format.len = 7;
    std::memcpy(format.nstr_inline, "FM90.99", 7);
    format.nstr_ext = elsewhere;
    Vector x = Vector::of<double>(host, {1.5});
    Vector result = Vector::result<Text>(host, 1);
    ASSERT_EQ(bto_char_av_double_to_varchar_with_fmt(host.env(), host.mem(), x.col(), reinterpret_cast<bdta3_scalar*>(&format),
                                                     result.col(), 1),
              0);
    EXPECT_EQ(result.get<Text>(0).bytes, "1.50");

    Vector whole = Vector::of<int32_t>(host, {1});
    Vector inline_result = Vector::result<Text>(host, 1);
    ASSERT_EQ(bto_char_av_int_to_varchar_with_fmt(host.env(), host.mem(), whole.col(), reinterpret_cast<bdta3_scalar*>(&format),
                                                  inline_result.col(), 1),
              0);
    EXPECT_EQ(inline_result.get<Text>(0).bytes, "1.");
}

TEST(ToChar, FormatsAndNlsParametersOfAnyLength) {
    Host host;
    Vector x = Vector::of<double>(host, {1.5, std::nullopt});
    for (const uint32_t len : {1u, 48u, 49u, 75u, 76u, 128u, 129u, 32767u}) {
        Constant text = Constant::of(Text{std::string(len, '9'), 0});
        Vector result = Vector::result<Text>(host, 2);
        EXPECT_EQ(bto_char_av_double_to_varchar_with_fmt(host.env(), host.mem(), x.col(), text.scalar(), result.col(), 2), 0)
            << len;
        EXPECT_EQ(result.valid(0), len <= 75 ? 1 : 0) << len;
        EXPECT_EQ(result.valid(1), 0) << len;
        EXPECT_EQ(result.col()->all_valid, 0u) << len;
        Constant format = Constant::of(Text{"9D9", 0});
        Vector with_nls = Vector::result<Text>(host, 2);
        host.clear_errors();
        EXPECT_EQ(bto_char_avv_double_to_varchar_with_nls(host.env(), host.mem(), x.col(), format.scalar(), text.scalar(),
                                                          with_nls.col(), 2),
                  EC_NLS_PARAMETER_INVALID)
            << len;
        // Too long fails before the rows, else the first row does: nines are no NLS parameter.
        EXPECT_EQ(with_nls.valid_untouched(0), len > 128) << len;
    }
}

}  // namespace
