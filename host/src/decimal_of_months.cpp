// Months and days, a month having 31, as a decimal.
//
// The fraction of such a number is one of thirty, rounded to the last bit of a double of its size. So its digits stand in a
// table, a row for each size of the integer part, and are not searched for. Below 16, months and days may round to another
// double when the days borrow from the months: 1 - 5/31 is not 26/31. From 16 on days / 31 is exact enough for both to round
// alike.

#include <array>
#include <bit>

#include "host/src/decimal_lanes.h"
#include "host/src/wide_integer.h"

#if QZHOST_DECIMAL_LANES

namespace qzhost {
namespace {

constexpr uint32_t kDays = 31;
constexpr double kDaysOfMonth = kDays;
constexpr uint32_t kSmallMonths = 16;                  // a row for each below
constexpr uint32_t kMonthsEnd = 1 << 18;               // the calendar has 176,544
constexpr uint32_t kRowOfLog2 = 2 * kSmallMonths - 4;  // and log2(months): rows from 32 on, 16 to 31 months, 32 to 63 ...
constexpr uint32_t kRows = 2 * kSmallMonths + 18 - 4;
constexpr uint32_t kColumns = 32;   // of which 0 and 31 stay empty
constexpr size_t kEntryPairs = 16;  // 9 at most are used, and zeros behind them read below
constexpr int32_t kMaxMonthPairs = 3;

struct Fraction {
    uint64_t digits;  // the last is not 0
    uint32_t count;
};

// The digits behind the point of the shortest decimal that reads back as value, 1/31 to below 2^18 and no whole number of
// months.
constexpr Fraction shortest_fraction(double value) {
    constexpr uint64_t kOne = uint64_t{1} << 52;
    const auto bits = std::bit_cast<uint64_t>(value);
    const uint64_t mantissa = (bits & (kOne - 1)) | kOne;
    const uint32_t shift = 1 + 1023 + 52 - static_cast<uint32_t>(bits >> 52);  // value is 2 * mantissa / 2^shift; 36 to 58
    uint64_t power = 10'000'000;  // with fewer digits no decimal comes that close to 31sts
    for (uint32_t count = 7;; ++count, power *= 10) {
        const Uint128 scaled = Uint128{2 * mantissa} * power;  // power to its neighbours' midpoints; below 2^112
        const Uint128 decimal = (scaled + (Uint128{1} << (shift - 1))) >> shift;
        const Uint128 rounded = decimal << shift;
        const Uint128 distance = rounded > scaled ? rounded - scaled : scaled - rounded;
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

struct Fractions {
    uint8_t pairs[kRows * kColumns * kEntryPairs];
    uint8_t digits[kRows * kColumns];
};

alignas(64) constexpr Fractions kFractions = [] {
    Fractions table{};
    for (uint32_t row = 0; row < kRows; ++row) {
        for (uint32_t days = 1; days < kDays; ++days) {
            Fraction fraction = shortest_fraction(number_of_row(row, days));
            const uint32_t entry = row * kColumns + days;
            table.digits[entry] = static_cast<uint8_t>(fraction.count);
            if (fraction.count % 2 != 0) fraction.digits *= 10;
            for (uint32_t i = (fraction.count + 1) / 2; i-- > 0; fraction.digits /= 100) {
                table.pairs[entry * kEntryPairs + i] = static_cast<uint8_t>(fraction.digits % 100 + 1);
            }
        }
    }
    return table;
}();

}  // namespace
}  // namespace qzhost

#endif

int32_t host_xdec_from_months(int32_t months, int32_t days, xdec* destination) {
#if QZHOST_DECIMAL_LANES
    using namespace qzhost;
    const bool negative = months < 0 || (months == 0 && days < 0);
    const uint32_t borrows = (days < 0) != negative;
    const uint32_t sign = negative ? ~0U : 1U;
    const uint32_t whole = sign * static_cast<uint32_t>(months) - borrows;
    const uint32_t rest = sign * static_cast<uint32_t>(days) + kDays * borrows;
    if (whole < kMonthsEnd && rest - 1 < kDays - 1) [[likely]] {
        const uint32_t row = whole < kSmallMonths ? whole + kSmallMonths * borrows
                                                  : kRowOfLog2 + static_cast<uint32_t>(std::bit_width(whole)) - 1;
        const uint32_t entry = row * kColumns + rest;
        const int32_t whole_pairs = (whole > 0) + (whole >= 100) + (whole >= 10000);
        const uint32_t hundreds = whole / 100;
        const uint32_t bytes = (hundreds / 100 | hundreds % 100 << 8 | (whole - hundreds * 100) << 16) + 0x010101;
        // Loaded from where the months' pairs leave it.
        const lanes::Lanes fraction = lanes::load(kFractions.pairs + entry * kEntryPairs - static_cast<uint32_t>(whole_pairs));
        const auto front = static_cast<int32_t>(bytes >> 8 * (kMaxMonthPairs - whole_pairs));
        const lanes::Lanes pairs = _mm_or_si128(fraction, _mm_cvtsi32_si128(front));
        const uint32_t scale = kFractions.digits[entry];
        const int32_t count = whole_pairs + static_cast<int32_t>(scale + 1) / 2;
        lanes::store_record(destination, lanes::make_head(negative, scale, whole_pairs, count, pairs), pairs,
                            _mm_setzero_si128());
        return 0;
    }
#endif
    return xdec_from_double(months + days / 31.0, destination);
}
