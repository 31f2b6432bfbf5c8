#include "tests/support/random_value.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "qzhost/decimal.h"

namespace support {
namespace {

template <class T, size_t N>
T one_of(Random& random, const std::array<T, N>& values) {
    return values[random.below(N)];
}

template <class T>
T random_integer(Random& random) {
    using Limits = std::numeric_limits<T>;
    switch (random.below(4)) {
        case 0:
            return static_cast<T>(random.next());
        case 1:
            return one_of<T, 8>(random, {0, 1, -1, 2, Limits::min(), Limits::max(), Limits::min() + 1, Limits::max() - 1});
        default:
            return static_cast<T>(static_cast<T>(random.below(41)) - 20);
    }
}

template <class T, class Bits>
T random_floating(Random& random) {
    using Limits = std::numeric_limits<T>;
    switch (random.below(5)) {
        case 0: {
            const auto bits = static_cast<Bits>(random.next());
            T value;
            std::memcpy(&value, &bits, sizeof value);
            return value;
        }
        case 1: {
            const T value = one_of<T, 9>(random, {T{0}, Limits::min(), Limits::denorm_min(), Limits::max(), Limits::infinity(),
                                                  Limits::quiet_NaN(), T{1}, T{0.5}, Limits::epsilon()});
            return random.chance(50) ? value : -value;
        }
        case 2:
            return static_cast<T>(static_cast<int>(random.below(41)) - 20);
        case 3:
            return static_cast<T>((static_cast<int>(random.below(401)) - 200)) / T{4};
        default:
            return static_cast<T>(static_cast<double>(random.next()) / 0x1p64 * 4 - 2);
    }
}

xdec decimal_of(const std::string& text) {
    xdec value;
    if (xdec_from_char(&value, text.data(), static_cast<uint32_t>(text.size())) != 0) xdec_fill_zero(&value);
    return value;
}

bool is_leap(uint32_t year) { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

}  // namespace

template <>
int32_t random_value(Random& random) {
    return random_integer<int32_t>(random);
}

template <>
int64_t random_value(Random& random) {
    return random_integer<int64_t>(random);
}

template <>
double random_value(Random& random) {
    return random_floating<double, uint64_t>(random);
}

template <>
float random_value(Random& random) {
    return random_floating<float, uint32_t>(random);
}

template <>
xdec random_value(Random& random) {
    if (random.chance(15)) {
        static const char* const kEdges[] = {"0",
                                             "1",
                                             "-1",
                                             "2.00",
                                             "-2.00",
                                             "1e-130",
                                             "-1e-130",
                                             "9.99e125",
                                             "-9.99e125",
                                             "0.5",
                                             "-0.5",
                                             "18446744073709551615",
                                             "18446744073709551616",
                                             "-9223372036854775808"};
        return decimal_of(kEdges[random.below(std::size(kEdges))]);
    }
    std::string text = random.chance(50) ? "-" : "";
    const uint32_t digits = random.chance(60) ? 1 + random.below(6) : 1 + random.below(44);
    const uint32_t point = random.below(digits + 1);
    for (uint32_t i = 0; i < digits; ++i) {
        if (i == point) text += '.';
        text += static_cast<char>('0' + random.below(10));
    }
    if (random.chance(10)) text += "e" + std::to_string(static_cast<int>(random.below(160)) - 80);
    return decimal_of(text);
}

template <>
qztime random_value(Random& random) {
    static constexpr std::array<uint8_t, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    qztime value{};
    const uint32_t year = random.chance(50) ? 1990 + random.below(40) : 1 + random.below(9999);
    const uint32_t month = 1 + random.below(12);
    const uint32_t days = kDays[month - 1] + (month == 2 && is_leap(year) && year > 1582 ? 1u : 0u);
    value.year = static_cast<int16_t>(year);
    value.month = static_cast<uint8_t>(month);
    do {
        value.day = static_cast<uint8_t>(random.chance(30) ? days : 1 + random.below(days));
    } while (year == 1582 && month == 10 && value.day > 4 && value.day < 15);  // days that the calendar left out
    value.tz = TZ_NONE;
    if (random.chance(70)) {
        value.hour = static_cast<uint8_t>(random.below(24));
        value.minute = static_cast<uint8_t>(random.below(60));
        value.second = static_cast<uint8_t>(random.below(60));
    }
    if (random.chance(40)) value.fraction = random.below(1000000000);
    if (random.chance(20)) value.tz = static_cast<int16_t>(static_cast<int>(random.below(1681)) - 840);
    return value;
}

template <>
qz_interval_ym random_value(Random& random) {
    const int32_t sign = random.chance(40) ? -1 : 1;
    const int32_t years = random.chance(40) ? 0 : static_cast<int32_t>(random.below(178));
    return {sign * years, sign * static_cast<int32_t>(random.below(12)), 406};
}

template <>
qz_interval_dt random_value(Random& random) {
    const int32_t sign = random.chance(40) ? -1 : 1;
    const auto field = [&](uint32_t zeros, uint32_t bound) {
        return random.chance(zeros) ? 0 : sign * static_cast<int32_t>(random.below(bound));
    };
    const uint32_t most_days = random.chance(50) ? 10 : 100'000;
    return {field(30, most_days), field(40, 24), field(40, 60), field(40, 60), field(60, 1'000'000), 1686};
}

template <>
Text random_value(Random& random) {
    static const char* const kPieces[] = {"a", "b", "A", "B", "0", " ", "ab", "é", "中", "😀"};
    Text text;
    const uint32_t pieces = random.chance(80) ? random.below(8) : random.below(60);
    for (uint32_t i = 0; i < pieces; ++i) text.bytes += kPieces[random.below(std::size(kPieces))];
    if (random.chance(25)) text.blank = random.below(5);
    return text;
}

}  // namespace support
