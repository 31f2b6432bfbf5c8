// round and trunc against slow tellings of their steps: powers by std::pow, parts by std::modf, texts byte by byte.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "bop/bifun_math/round_double.h"
#include "qzbifun/codes.h"
#include "qzbifun/qzbifun.h"
#include "qzhost/decimal.h"
#include "qzhost/number_text.h"
#include "tests/support/differential.h"
#include "tests/support/test_seed.h"
#include "tests/support/vector.h"

namespace {

using support::Answer;
using support::Differential;
using support::Random;
using support::Rules;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

// ---- Doubles ----------------------------------------------------------------------------------------------------------------

// The result and whether it is an overflow.
struct Rounded {
    double value;
    bool overflow;
};

Rounded rounded(double x, int32_t n, bool truncate) {
    if (x == 0.0 || n > 40) return {x, std::isinf(x)};
    const double power = std::pow(10.0, std::fabs(static_cast<double>(n)));
    double whole = 0;
    double fraction = 0;
    if (n > 0) {
        if (std::isinf(power * x)) return {x, false};
        fraction = std::modf(power * x, &whole);
    } else {
        if (std::isinf(power)) return {0.0, false};
        fraction = std::modf(x / power, &whole);
    }
    if (!truncate && x > 0.0 && fraction >= 0.5) whole = whole + 1.0;
    if (!truncate && x < 0.0 && fraction <= -0.5) whole = whole - 1.0;
    const double value = n > 0 ? whole / power : whole * power;
    return {value, std::isinf(value)};
}

Answer<double> rounded_or_failed(double x, int32_t n, bool truncate, const char* worker) {
    const Rounded result = rounded(x, n, truncate);
    if (result.overflow) return Answer<double>::error(EC_DATA_OVERFLOW, {worker, "self"}, 0.0);
    return result.value;
}

// Mostly where places are of use, at times anything.
int32_t draw_places(Random& random) {
    if (random.chance(10)) return support::random_value<int32_t>(random);
    if (random.chance(10)) return static_cast<int32_t>(random.below(700)) - 350;
    return static_cast<int32_t>(random.below(50)) - 8;
}

// Halves, neighbours of halves, prices, any bits.
double draw_double(Random& random) {
    const double whole = static_cast<int32_t>(random.next()) >> random.below(31);
    switch (random.below(4)) {
        case 0:
            return support::random_value<double>(random);
        case 1:
            return (whole + 0.5) / std::pow(10.0, random.below(6));
        case 2:
            return std::nextafter(whole + 0.5, random.chance(50) ? kInfinity : -kInfinity);
        default:
            return whole / 1000;
    }
}

TEST(RoundDouble, PowersOfTenAreThoseOfTheCLibrary) {
    for (int32_t n = 0; n <= bifun::kGreatestPower; ++n) {
        const double power = bifun::power_of_ten(n);
        EXPECT_EQ(power, std::pow(10.0, n)) << n;
        const double nearest = std::strtod(("1e" + std::to_string(n)).c_str(), nullptr);
        EXPECT_LE(std::nextafter(nearest, 0.0), power) << n;
        EXPECT_GE(std::nextafter(nearest, kInfinity), power) << n;
    }
}

TEST(RoundDouble, FollowsTheStepsInEveryForm) {
    Differential<double, double, int32_t> round;
    round.add("aa", "bround_aa_math_dbl", bround_aa_math_dbl);
    round.add("av", "bround_av_li_math_dbl", bround_av_li_math_dbl);
    round.add("va", "bround_va_do_math_dbl", bround_va_do_math_dbl);
    round.draw<0>(draw_double);
    round.draw<1>(draw_places);
    EXPECT_EQ(round.run([](double x, int32_t n) { return rounded_or_failed(x, n, false, "bround_aa_process_dbl"); }), "");
}

TEST(RoundDouble, OneValueFollowsTheSteps) {
    const uint32_t seed = support::test_seed();
    Random random(seed);
    for (int i = 0; i < 200000; ++i) {
        const double x = draw_double(random);
        const int32_t n = draw_places(random);
        const int32_t flag = random.chance(50) ? 0 : static_cast<int32_t>(random.next() | 1);
        const Rounded expected = rounded(x, n, flag != 0);
        double result = 0;
        ASSERT_EQ(double_round_with_trunc_flag(x, n, flag, &result), expected.overflow ? EC_DATA_OVERFLOW : 0)
            << x << " " << n << " seed " << seed;
        if (std::isnan(expected.value)) {
            ASSERT_TRUE(std::isnan(result)) << n << " seed " << seed;
        } else {
            ASSERT_EQ(std::bit_cast<uint64_t>(result), std::bit_cast<uint64_t>(expected.value))
                << x << " " << n << " flag " << flag << " seed " << seed;
        }
    }
}

TEST(RoundDouble, OptionChoosesBetweenRoundingAndTruncating) {
    Differential<double, double, int32_t, xdec> round;
    round.rules.null_evaluated = true;
    round.rules.flag_lowered = true;
    round.rules.flag_reads_constants = false;
    round.rules.constants = Rules::Constants::own;
    round.with_no_rows = false;  // a NULL n lowers the flag without rows too: the tables of cases tell that
    round.add("avv", "bround_with_opt_avv_lide_math_dbl", bround_with_opt_avv_lide_math_dbl);
    round.draw<0>(draw_double);
    round.draw<1>(draw_places);
    using Places = std::optional<int32_t>;
    const auto telling = [](const std::optional<double>& x, const Places& n, const std::optional<xdec>& option) {
        if (!x.has_value() || !n.has_value()) return Answer<double>::null();
        const bool truncate = option.has_value() && option->sign != XDEC_SIGN_ZERO;
        return rounded_or_failed(*x, *n, truncate, "bround_with_opt_avv_process_dbl");
    };
    EXPECT_EQ(round.run(telling), "");
}

TEST(TruncDouble, IsTheFloorOfTheMagnitude) {
    Differential<double, double> trunc;
    trunc.add("a", "btrunc_def_a_math_dbl", btrunc_def_a_math_dbl);
    EXPECT_EQ(trunc.run([](double x) {
        const double s = x > 0.0 ? 1.0 : x < 0.0 ? -1.0 : 0.0;
        return std::floor(s * x) * s;
    }),
              "");
}

// ---- Decimals ---------------------------------------------------------------------------------------------------------------

int32_t draw_decimal_places(Random& random) {
    return random.chance(10) ? support::random_value<int32_t>(random) : static_cast<int32_t>(random.below(60)) - 30;
}

TEST(RoundDecimal, EveryFormIsTheService) {
    Differential<xdec, xdec, int32_t> round;
    round.add("aa", "bround_dec_aa_math_dbl", bround_dec_aa_math_dbl);
    round.add("av", "bround_dec_av_li_math_dbl", bround_dec_av_li_math_dbl);
    round.add("va", "bround_dec_va_de_math_dbl", bround_dec_va_de_math_dbl);
    round.draw<1>(draw_decimal_places);
    EXPECT_EQ(round.run([](const xdec& x, int32_t n) {
        xdec result;
        xdec_round(&x, 0, n, &result);
        return result;
    }),
              "");
    Differential<xdec, xdec> whole;
    whole.rules.valid = Rules::Valid::kept;
    whole.add("a", "bround_def_a_math_dbl", bround_def_a_math_dbl);
    EXPECT_EQ(whole.run([](const xdec& x) {
        xdec result;
        xdec_round(&x, 0, 0, &result);
        return result;
    }),
              "");
}

TEST(TruncDecimal, EveryFormIsTheService) {
    Differential<xdec, xdec, int32_t> trunc;
    trunc.add("aa", "btrunc_dec_aa_math", btrunc_dec_aa_math);
    trunc.add("av", "btrunc_dec_av_li_math", btrunc_dec_av_li_math);
    trunc.draw<1>(draw_decimal_places);
    EXPECT_EQ(trunc.run([](const xdec& x, int32_t n) {
        xdec result;
        xdec_trunc_scale_with_pos(&x, n, &result);
        return result;
    }),
              "");
    Differential<xdec, xdec> whole;
    whole.add("a", "btrunc_dec_def_a_math", btrunc_dec_def_a_math);
    EXPECT_EQ(whole.run([](xdec x) {
        xdec_trunc_scale(&x);
        return x;
    }),
              "");
}

TEST(RoundDecimal, AnyThirtyBytesAreReadInside) {
    const uint32_t seed = support::test_seed();
    Random random(seed);
    support::Host host;
    for (int i = 0; i < 2000; ++i) {
        std::vector<xdec> numbers(1);
        auto* const bytes = reinterpret_cast<uint8_t*>(numbers.data());
        for (size_t k = 0; k < sizeof(xdec); ++k) bytes[k] = static_cast<uint8_t>(random.next());
        if (random.chance(70)) bytes[0] = random.chance(50) ? XDEC_SIGN_POSITIVE : XDEC_SIGN_NEGATIVE;
        support::Vector x = support::Vector::of<xdec>(host, {numbers[0]});
        support::Vector n = support::Vector::of<int32_t>(host, {draw_decimal_places(random)});
        for (auto* function : {bround_dec_aa_math_dbl, btrunc_dec_aa_math}) {
            support::Vector result = support::Vector::result<xdec>(host, 1);
            ASSERT_EQ(function(host.env(), host.mem(), x.col(), n.col(), result.col(), 1), 0) << seed;
            ASSERT_EQ(result.overrun(), "") << seed;
            ASSERT_EQ(result.valid(0), 1) << seed;
        }
    }
}

// ---- Text -------------------------------------------------------------------------------------------------------------------

constexpr size_t kTextBytes = 319;

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// What the scan for an exponent finds, or the code with which it fails.
struct Scanned {
    int32_t code = 0;
    int64_t exponent = 0;
    int sign = 1;
    std::optional<size_t> point, e;
};

Scanned scanned(const std::string& text, size_t start) {
    Scanned found;
    const auto failed = [&](int32_t code) {
        found.code = code;
        return found;
    };
    for (size_t i = start; i < text.size(); ++i) {
        const char c = text[i];
        const bool last = i + 1 == text.size();
        if (c == '.') {
            if (found.e.has_value() || found.point.has_value()) return failed(EC_INVALID_ARGUMENT);
            found.point = i;
        } else if (c == 'e' || c == 'E') {
            if (i == 0 || last || found.e.has_value()) return failed(EC_INVALID_ARGUMENT);
            found.e = i;
        } else if (c == '+' || c == '-') {
            if (!found.e.has_value() || (text[i - 1] != 'E' && text[i - 1] != 'e') || last) return failed(EC_INVALID_ARGUMENT);
            if (c == '-') found.sign = -1;
        } else if (is_digit(c)) {
            if (!found.e.has_value()) continue;
            found.exponent = found.exponent * 10 + (c - '0');
            if (found.exponent >= 1000) return failed(EC_DATA_OVERFLOW);
        } else {
            return failed(EC_INVALID_ARGUMENT);
        }
    }
    return found;
}

Answer<double> text_read(const char* text, size_t len, const char* worker) {
    double value = 0;
    if (utl_digit_from_char(text, static_cast<uint32_t>(len), &value, 1) < 0)
        return Answer<double>::error(EC_INVALID_ARGUMENT, {worker, "self"});
    return value;
}

Answer<double> truncated_text(const support::Text& value, int32_t places) {
    const char* const worker = "btrunc_process_new";
    using Names = std::vector<std::string>;
    const auto failed = [&](int32_t code, Names names) { return Answer<double>::error(code, names); };
    if (value.bytes.empty()) {
        if (value.blank == 0) return Answer<double>::null();
        return failed(EC_INVALID_ARGUMENT, {worker, "self"});
    }
    std::string text = value.bytes.substr(0, kTextBytes);
    const bool has_e = text.find_first_of("eE") != std::string::npos;
    text.erase(0, std::min(text.find_first_not_of(' '), text.size()));

    const Names at_head = {"ifun_trunc_head_check", worker, "self"};
    const size_t start = !text.empty() && (text[0] == '+' || text[0] == '-') ? 1 : 0;
    if (start == 1 && text.size() == 1) return failed(EC_INVALID_ARGUMENT, at_head);
    if (start < text.size() && text[start] == '.' && (start + 1 == text.size() || !is_digit(text[start + 1])))
        return failed(EC_INVALID_ARGUMENT, at_head);

    int64_t n = places;
    size_t point = text.size();
    std::string exponent;
    std::vector<char> buffer(2 * kTextBytes + 2);
    std::copy(text.begin(), text.end(), buffer.begin());
    if (has_e) {
        const Scanned found = scanned(text, start);
        if (found.code != 0) return failed(found.code, {"ifun_trunc_escan", worker, "self"});
        point = found.point.value_or(text.size());
        n += found.sign * found.exponent;
        exponent = text.substr(*found.e);
        buffer[*found.e] = '\0';
    } else {
        for (size_t i = start; i < text.size(); ++i) {
            if (!is_digit(text[i]) && text[i] != '.') return failed(EC_INVALID_ARGUMENT, {worker, "self"});
        }
        if (std::count(text.begin(), text.end(), '.') > 1) return failed(EC_INVALID_ARGUMENT, {worker, "self"});
        point = std::min(text.find('.'), text.size());
    }
    const auto c = static_cast<int64_t>(text.size());
    const auto at = static_cast<int64_t>(point);
    if (n > 0) {
        if (at + 1 + n < c) buffer[static_cast<size_t>(at + 1 + n)] = '\0';
    } else {
        if (n + c < 1) n = -at;
        const int64_t from = at + n;
        if (from <= static_cast<int64_t>(start)) return 0.0;
        for (int64_t i = from; i < at; ++i) buffer[static_cast<size_t>(i)] = '0';
        buffer[point] = '\0';
    }
    std::strcat(buffer.data(), exponent.c_str());
    return text_read(buffer.data(), text.size(), worker);
}

Answer<double> truncated_plain_text(const support::Text& value, int32_t places) {
    const char* const worker = "btrunc_process";
    std::string text = value.bytes.substr(0, kTextBytes);
    const bool digits = std::all_of(text.begin(), text.end(), [](char c) { return is_digit(c) || c == '.'; });
    if (!digits || std::count(text.begin(), text.end(), '.') > 1)
        return Answer<double>::error(EC_INVALID_ARGUMENT, {worker, "self"});
    const auto point = static_cast<int64_t>(std::min(text.find('.'), text.size()));
    if (places < 1) {
        const int64_t from = point + places;
        if (from <= 0) return 0.0;
        text.resize(static_cast<size_t>(point));
        std::fill(text.begin() + from, text.end(), '0');
    } else if (point + 1 + places < static_cast<int64_t>(text.size())) {
        text.resize(static_cast<size_t>(point + 1 + places));
    }
    return text_read(text.data(), text.size(), worker);
}

// Numbers, numbers with a fault, any text of a number's bytes; at times longer than what is looked at.
support::Text draw_text(Random& random) {
    static constexpr std::string_view kBytes = "0123456789.+-eE ";
    std::string text;
    if (random.chance(40)) {
        for (uint32_t i = random.below(8); i > 0; --i) text += kBytes[random.below(kBytes.size())];
    } else {
        const auto digits = [&](uint32_t most) {
            for (uint32_t i = random.below(most); i > 0; --i) text += static_cast<char>('0' + random.below(10));
        };
        if (random.chance(10)) text += "  ";
        if (random.chance(30)) text += random.chance(50) ? '-' : '+';
        digits(random.chance(3) ? 330 : 8);
        if (random.chance(70)) text += '.';
        digits(8);
        if (random.chance(40)) {
            text += random.chance(50) ? 'e' : 'E';
            if (random.chance(50)) text += random.chance(50) ? '-' : '+';
            digits(5);
        }
        if (random.chance(5) && !text.empty())
            text[random.below(static_cast<uint32_t>(text.size()))] = kBytes[random.below(16)];
    }
    return {text, random.chance(20) ? random.below(5) : 0};
}

int32_t draw_text_places(Random& random) {
    return random.chance(5) ? support::random_value<int32_t>(random) : static_cast<int32_t>(random.below(24)) - 12;
}

TEST(TruncOfText, FollowsTheSteps) {
    Differential<double, support::Text, int32_t> trunc;
    trunc.rules.valid = Rules::Valid::kept;
    trunc.rules.flag_lowered = true;
    trunc.batches = 80;
    trunc.add("aa", "btrunc_aa_math", btrunc_aa_math);
    trunc.add("av", "btrunc_av_li_math", btrunc_av_li_math);
    trunc.draw<0>(draw_text);
    trunc.draw<1>(draw_text_places);
    EXPECT_EQ(trunc.run(truncated_text), "");
}

TEST(TruncOfText, AConstantFollowsTheOlderSteps) {
    Differential<double, support::Text, int32_t> trunc;
    trunc.rules.valid = Rules::Valid::kept;
    trunc.batches = 80;
    trunc.add("va", "btrunc_va_s_math", btrunc_va_s_math);
    trunc.draw<0>([](Random& random) {
        support::Text text = draw_text(random);
        if (random.chance(80))
            std::erase_if(text.bytes, [](char c) { return c == '+' || c == '-' || c == ' ' || c == 'e' || c == 'E'; });
        return text;
    });
    trunc.draw<1>(draw_text_places);
    EXPECT_EQ(trunc.run(truncated_plain_text), "");
}

TEST(TruncOfText, LooksAtTheFirst319BytesOfAnyText) {
    support::Host host;
    for (const size_t len : {size_t{318}, size_t{319}, size_t{320}, size_t{32767}}) {
        // 0.00...07 with the 7 as the last byte, and the same with garbage behind what is looked at.
        std::string text = "0." + std::string(len - 3, '0') + "7";
        support::Vector x = support::Vector::of<support::Text>(host, {support::Text{text, 0}});
        support::Vector n = support::Vector::of<int32_t>(host, {1000});
        support::Vector result = support::Vector::result<double>(host, 1);
        ASSERT_EQ(btrunc_aa_math(host.env(), host.mem(), x.col(), n.col(), result.col(), 1), 0) << len;
        const double expected = len <= kTextBytes ? std::strtod(text.c_str(), nullptr) : 0.0;
        EXPECT_EQ(result.get<double>(0), expected) << len;
        EXPECT_EQ(result.overrun(), "");

        support::Constant constant = support::Constant::of(support::Text{text, 0});
        support::Vector from_constant = support::Vector::result<double>(host, 1);
        ASSERT_EQ(btrunc_va_s_math(host.env(), host.mem(), constant.scalar(), n.col(), from_constant.col(), 1), 0) << len;
        EXPECT_EQ(from_constant.get<double>(0), expected) << len;
    }
}

TEST(TruncOfText, ExponentsAtTheEndOf319Bytes) {
    support::Host host;
    // The cut text and the exponent behind it together are longer than the text was.
    const std::string text = std::string(313, '9') + ".5e-99" + std::string(32448, '1');
    support::Vector x = support::Vector::of<support::Text>(host, {support::Text{text, 0}, support::Text{"1" + text, 0}});
    support::Vector n = support::Vector::of<int32_t>(host, {-100, -100});
    support::Vector result = support::Vector::result<double>(host, 2);
    // 313 nines, a point, "5e-9" of the exponent: 319 bytes.
    const int32_t code = btrunc_aa_math(host.env(), host.mem(), x.col(), n.col(), result.col(), 2);
    EXPECT_EQ(code, 0);
    EXPECT_EQ(result.overrun(), "");
}

}  // namespace
