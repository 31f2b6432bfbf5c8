// What the bytes of a parsed number format mean, for its parser, its writer and its reader.
#ifndef QZHOST_SRC_NUMBER_FORMAT_RECORD_H
#define QZHOST_SRC_NUMBER_FORMAT_RECORD_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "qzhost/number_format.h"

namespace qzhost {

enum FormatKind : uint8_t {
    kDigitPicture,
    kScientific,    // EEEE
    kShortestText,  // TM
    kRoman,
    kHexadecimal
};

enum FormatSign : uint8_t {
    kMinusInFront,  // no element: a minus, or the blank that its place leaves
    kSignInFront,   // S first
    kSignBehind,    // S last
    kMinusBehind,   // MI
    kAngleBrackets  // PR
};

enum FormatCurrency : uint8_t { kNoCurrency, kCurrencyInFront, kCurrencyBehind };

enum FormatFlag : uint8_t {
    kFillMode = 1,       // FM
    kBlankWhenZero = 2,  // B
    kHasPoint = 4,
    kLowerCase = 8,       // rn, x
    kAlwaysExponent = 16  // TME
};

inline bool has_flag(const xdec_number_format& format, FormatFlag flag) { return (format.flags & flag) != 0; }

inline bool has_group_before(const xdec_number_format& format, int position) {
    return (format.groups[position / 64] >> position % 64 & 1) != 0;
}

// Values of the NLS parameters. The texts are UTF-8 or whatever else the host's character set is.
struct CurrencySymbol {
    uint8_t length = 0;
    std::array<char, XDEC_CURRENCY_MAX_BYTES> bytes{};
};

struct NumberLocale {
    char decimal_point = '.';
    char group_separator = ',';
    CurrencySymbol currency{1, {'$'}};
    CurrencySymbol iso_currency{3, {'U', 'S', 'D'}};
    CurrencySymbol dual_currency{1, {'$'}};
};

// Reads NLS parameters on top of what locale holds. 0 or EC_NLS_PARAMETER_INVALID.
int32_t parse_nls_parameters(std::string_view text, NumberLocale& locale);

// The ISO 4217 code of a territory's currency, its name in upper case; empty for a name that is not known.
std::string_view iso_currency_of_territory(std::string_view territory);

inline char to_upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
inline bool is_digit(char c) { return c >= '0' && c <= '9'; }

}  // namespace qzhost

#endif
