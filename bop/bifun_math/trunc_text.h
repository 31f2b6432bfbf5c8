// Truncating a number that stands as text: the digits are cut in the text itself, so that no binary rounding disturbs them, and
// what is left is read as a double.
#pragma once

#include <cstdint>

#include "bop/frame/call.h"

namespace bifun {

// Bytes of a text that are looked at; a longer one is judged by them alone.
inline constexpr uint32_t kTruncTextBytes = 319;

// Where a number begins and whether a sign stands in front of it.
struct NumberHead {
    bool has_sign = false;
    uint32_t position = 0;  // of the first byte behind the sign
};

// EC_INVALID_ARGUMENT: a sign alone, or a point without a digit behind it. len is at least 1.
Code check_head(const char* text, uint32_t len, NumberHead& head);

// The parts of a number with an exponent.
struct NumberParts {
    int32_t exponent_sign = 1;
    int32_t exponent = 0;
    uint32_t point = 0;  // index of the point
    uint32_t e = 0;      // index of the E
    bool has_point = false;
    bool has_e = false;
};

// EC_INVALID_ARGUMENT: no number; EC_DATA_OVERFLOW: the exponent reaches 1000.
Code scan_number(const char* text, uint32_t len, uint32_t start, NumberParts& parts);

// Cuts the number in text[0..len) to the given number of decimal places. With an exponent the places count in the mantissa.
// The codes of check_head and scan_number, told apart by failed_at, and EC_INVALID_ARGUMENT for other text that is no number.
enum class TruncFailure : uint8_t { kNone, kHead, kScan, kText };
Code trunc_text(const char* text, uint32_t len, int32_t places, double& result, TruncFailure& failed_at);

// The same without sign, blanks and exponent: digits and at most one point.
Code trunc_plain_text(const char* text, uint32_t len, int32_t places, double& result);

}  // namespace bifun
