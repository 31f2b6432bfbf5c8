// The numbers of codes and parameters, which hosts and clients know as numbers.
#include "qzbifun/codes.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

TEST(Codes, KeepTheirNumbers) {
    static constexpr std::pair<int, int> kCodes[] = {
        {EC_OUT_OF_MEMORY, -503},
        {EC_LOB_READ_FAILED, -543},
        {EC_NOT_IMPLEMENTED, -2004},
        {EC_INET_INVALID, -2158},
        {EC_HASH_ALGORITHM_INVALID, -2184},
        {EC_OVERLAY_ARGUMENT, -2206},
        {EC_JSON_PATH_EMPTY, -3101},
        {EC_JSON_PATH_INVALID, -3102},
        {EC_JSON_NO_DATA, -3105},
        {EC_JSON_RESULT_TOO_LONG, -3111},
        {EC_JSON_PATH_NOT_ELEMENT, -3113},
        {EC_NLS_PARAMETER_INVALID, -4037},
        {EC_VALUE_NOT_USABLE, -4702},
        {EC_DATA_OVERFLOW, -6102},
        {EC_STRING_TOO_LONG, -6108},
        {EC_TRIM_SET_NOT_ONE_CHAR, -6109},
        {EC_NEGATIVE_LENGTH, -6110},
        {EC_DATE_VALUE_INVALID, -6111},
        {EC_WEEKDAY_NAME_TOO_LONG, -6112},
        {EC_DATE_TEXT_INVALID, -6118},
        {EC_CHAR_RESULT_OVERFLOW, -6124},
        {EC_DATE_FORMAT_INVALID, -6127},
        {EC_NUMBER_TEXT_INVALID, -6128},
        {EC_NUMBER_FORMAT_EMPTY, -6129},
        {EC_YEAR_ZERO, -6132},
        {EC_WEEKDAY_NAME_INVALID, -6145},
        {EC_HEX_TEXT_INVALID, -6147},
        {EC_MD5_FAILED, -6148},
        {EC_HASH_FAILED, -6175},
        {EC_INVALID_ARGUMENT, -6803},
        {EC_TEXT_TOO_LONG, -6806},
        {EC_CHAR_INVALID, -6819},
        {EC_LOB_TOO_LONG, -7112},
        {EC_LOB_TOO_LONG_ROW, -7125},
        {RC_JSON_TAKE_DEFAULT, 100},
        {RC_VALUE_IS_NULL, 109},
    };
    for (const auto& [code, number] : kCodes) EXPECT_EQ(code, number);
}

TEST(Parameters, KeepTheirNumbers) {
    static constexpr std::pair<int, int> kParameters[] = {
        {LOB_SEARCH_READ_KB, 505},
        {COMPAT_MODE_PARAM, 508},
        {JSON_MODE, 510},
        {TIME_TEXT_FRACTION, 529},
        {BASE64_CRLF, 542},
        {SERVER_CHARSET, 635},
        {DEFAULT_TIME_ZONE, 650},
        {TIME_TEXT_NANOSECONDS, 772},
        {CLOB_TRIM_MAX_BYTES, 791},
        {STRING_OVERFLOW_FLAGS, 845},
        {FLOAT_SPECIALS_ALLOWED, 872},
    };
    for (const auto& [parameter, number] : kParameters) EXPECT_EQ(parameter, number);
}

}  // namespace
