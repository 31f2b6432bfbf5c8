// Months and days, a month having 31, as a decimal: months + days / 31.0 in doubles, in its shortest digits.
//
// The fraction of such a number is one of thirty, rounded to the last bit of a double of its size. So its digits stand in a
// table, a row for each size of the integer part, and are not searched for. Below 16, months and days may round to another
// double when the days borrow from the months: 1 - 5/31 is not 26/31. From 16 on days / 31 is exact enough for both to round
// alike.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace bifun {
namespace months_and_days {

inline constexpr uint32_t kDays = 31;
inline constexpr double kDaysOfMonth = kDays;
inline constexpr uint32_t kSmallMonths = 16;     // a row for each below
inline constexpr uint32_t kMonthsEnd = 1 << 18;  // the calendar has 176,544
// And log2(months): rows from 32 on, of 16 to 31 months, 32 to 63 ...
inline constexpr uint32_t kRowOfLog2 = 2 * kSmallMonths - 4;
inline constexpr uint32_t kRows = 2 * kSmallMonths + 18 - 4;

using Wide = unsigned __int128;

// Digits behind the point, the last of which is not 0. In one word, so that all of them stay in the first cache level.
class Fraction {
  public:
    constexpr Fraction() = default;
    constexpr Fraction(uint64_t digits, uint32_t count) : word_(digits << kCountBits | count) {}
    constexpr uint64_t digits() const { return word_ >> kCountBits; }  // below 10^17
    constexpr uint32_t count() const { return word_ & ((1U << kCountBits) - 1); }

  private:
    static constexpr uint32_t kCountBits = 5;
    uint64_t word_ = 0;
};

inline constexpr std::array<uint64_t, 19> kPowersOfTen = [] {
    std::array<uint64_t, 19> powers{1};
    for (size_t i = 1; i < powers.size(); ++i) powers[i] = powers[i - 1] * 10;
    return powers;
}();

// The digits behind the point of the shortest decimal that reads back as value, 1/31 to below 2^18 and no whole number of
// months.
constexpr Fraction shortest_fraction(double value) {
    constexpr uint64_t kOne = uint64_t{1} << 52;
    const auto bits = std::bit_cast<uint64_t>(value);
    const uint64_t mantissa = (bits & (kOne - 1)) | kOne;
    const uint32_t shift = 1 + 1023 + 52 - static_cast<uint32_t>(bits >> 52);  // value is 2 * mantissa / 2^shift; 36 to 58
    for (uint32_t count = 7;; ++count) {  // with fewer digits no decimal comes that close to 31sts
        const uint64_t power = kPowersOfTen[count];
        const Wide scaled = Wide{2 * mantissa} * power;  // power to its neighbours' midpoints; below 2^112
        const Wide decimal = (scaled + (Wide{1} << (shift - 1))) >> shift;
        const Wide rounded = decimal << shift;
        const Wide distance = rounded > scaled ? rounded - scaled : scaled - rounded;
        if (distance < power + (mantissa % 2 == 0)) return {static_cast<uint64_t>(decimal % power), count};
    }
}

// What the rows stand for: the double of whole months and days, as arithmetic makes it.
constexpr double number_of_row(uint32_t row, uint32_t days) {
    if (row < kSmallMonths) return row + days / kDaysOfMonth;
    if (row < 2 * kSmallMonths) {
        return row - kSmallMonths + 1 + (static_cast<double>(days) - kDaysOfMonth) / kDaysOfMonth;
    }
    return (1 << (row - kRowOfLog2)) + days / kDaysOfMonth;
}

// The exponent of its double; of 0, no number above 18.
inline uint32_t log2_of(uint32_t value) {
    return static_cast<uint32_t>(std::bit_cast<uint64_t>(static_cast<double>(static_cast<int32_t>(value | 1))) >> 52) - 1023;
}

inline constexpr uint32_t kColumns = 32;

inline constexpr std::array<Fraction, kRows* kColumns> kFractions = [] {
    std::array<Fraction, kRows * kColumns> table{};
    for (uint32_t row = 0; row < kRows; ++row) {
        for (uint32_t days = 1; days < kDays; ++days) {
            table[row * kColumns + days] = shortest_fraction(number_of_row(row, days));
        }
    }
    return table;
}();

}  // namespace months_and_days

// A number of months and days, as unscaled / 10^scale.
struct MonthsAndDays {
    int64_t unscaled;  // 17 digits at most
    uint32_t scale;    // kOutsideTheTable where the table has no digits for it
};

inline constexpr uint32_t kOutsideTheTable = ~0U;

// months is within 790 thousand, days within 255. Signs and sizes follow no pattern: there is no branch on them. Nor is there a
// condition that becomes a register's lowest byte, or a search for a bit, both of which wait for what the register held before.
inline MonthsAndDays months_and_days_of(int32_t months, int32_t days) {
    using namespace months_and_days;
    const uint32_t signs = 0 - (static_cast<uint32_t>(months * 32 + days) >> 31);
    const uint32_t signed_days = (static_cast<uint32_t>(days) ^ signs) - signs;
    const uint32_t borrows = signed_days >> 31;
    const uint32_t whole = (static_cast<uint32_t>(months) ^ signs) - signs - borrows;
    const uint32_t rest = signed_days + kDays * borrows;
    if ((whole >= kMonthsEnd) | (rest >= kDays)) [[unlikely]] {
        return {0, kOutsideTheTable};
    }
    const uint32_t small = 0 - ((whole - kSmallMonths) >> 31);
    const uint32_t row_of_small = whole + kSmallMonths * borrows;
    const uint32_t row_of_large = kRowOfLog2 + log2_of(whole);
    const Fraction fraction = kFractions[((row_of_small & small) | (row_of_large & ~small)) * kColumns + rest];
    const uint64_t unscaled = whole * kPowersOfTen[fraction.count()] + fraction.digits();
    const uint64_t wide_signs = 0 - uint64_t{signs & 1};
    return {static_cast<int64_t>((unscaled ^ wide_signs) - wide_signs), fraction.count()};
}

}  // namespace bifun
