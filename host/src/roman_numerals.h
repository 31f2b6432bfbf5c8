// Roman numerals of the digits 0 to 9 at each power of ten; those of a number are the ones of its digits, one behind the other.
#ifndef QZHOST_SRC_ROMAN_NUMERALS_H
#define QZHOST_SRC_ROMAN_NUMERALS_H

#include <array>
#include <string_view>

namespace qzhost {

inline constexpr int kRomanPowers = 4;  // thousands to ones; there are three thousands at most

inline constexpr std::array<std::array<std::string_view, 10>, kRomanPowers> kRomanDigits = {{
    {"", "I", "II", "III", "IV", "V", "VI", "VII", "VIII", "IX"},
    {"", "X", "XX", "XXX", "XL", "L", "LX", "LXX", "LXXX", "XC"},
    {"", "C", "CC", "CCC", "CD", "D", "DC", "DCC", "DCCC", "CM"},
    {"", "M", "MM", "MMM"},
}};

}  // namespace qzhost

#endif
