#include <algorithm>
#include <iterator>

#include "qzbifun/codes.h"
#include "qzhost/control.h"

namespace {

struct CodeText {
    int32_t code;
    const char* name;
    const char* text;
};

#define QZHOST_CODE(code, text) \
    { code, #code, text }

// By code, falling.
constexpr CodeText kCodes[] = {
    QZHOST_CODE(RC_VALUE_IS_NULL, "the text holds no value; the result is NULL"),
    QZHOST_CODE(RC_JSON_TAKE_DEFAULT, "the JSON path selects nothing; the default applies"),
    {0, "SUCCESS", "success"},
    QZHOST_CODE(EC_OUT_OF_MEMORY, "out of memory: use smaller batches or give the process more memory"),
    QZHOST_CODE(EC_LOB_READ_FAILED, "a CLOB could not be read whole: its stored data may be damaged or gone"),
    QZHOST_CODE(EC_NOT_IMPLEMENTED, "this function is not implemented: use another form of it"),
    QZHOST_CODE(EC_INET_INVALID, "invalid network address: expected an IPv4 or IPv6 address, with or without a prefix length"),
    QZHOST_CODE(EC_HASH_ALGORITHM_INVALID, "unknown hash algorithm, or one that is no hash"),
    QZHOST_CODE(EC_OVERLAY_ARGUMENT, "overlay: start and count must not be negative"),
    QZHOST_CODE(EC_JSON_PATH_EMPTY, "the JSON path is NULL or empty"),
    QZHOST_CODE(EC_JSON_PATH_INVALID, "invalid JSON path: expected '$' and steps such as '.name' or '[0]'"),
    QZHOST_CODE(EC_JSON_NO_DATA, "there is no JSON data in the argument"),
    QZHOST_CODE(EC_JSON_RESULT_TOO_LONG, "the JSON result is longer than a string may be (32767 bytes): use the CLOB form"),
    QZHOST_CODE(EC_JSON_PATH_NOT_ELEMENT, "the JSON path must end in an array element such as '[0]'"),
    QZHOST_CODE(EC_NLS_PARAMETER_INVALID,
                "invalid language parameter or collation name, or one that this character set does not have"),
    QZHOST_CODE(EC_VALUE_NOT_USABLE, "the value cannot be used here: it is NULL, or a style number without a format"),
    QZHOST_CODE(EC_DATA_OVERFLOW, "numeric overflow: the result does not fit its type"),
    QZHOST_CODE(EC_STRING_TOO_LONG, "the string result is longer than 32767 bytes"),
    QZHOST_CODE(EC_TRIM_SET_NOT_ONE_CHAR, "trim: the trim set must be exactly one character"),
    QZHOST_CODE(EC_NEGATIVE_LENGTH, "the length of a substring must not be negative"),
    QZHOST_CODE(EC_DATE_VALUE_INVALID, "the value is no valid date or time, or none for this format"),
    QZHOST_CODE(EC_WEEKDAY_NAME_TOO_LONG, "the weekday name is too long (20 bytes or more)"),
    QZHOST_CODE(EC_DATE_TEXT_INVALID,
                "the text is not a date: it does not match the format, or names a day or time that does not exist"),
    QZHOST_CODE(EC_CHAR_RESULT_OVERFLOW, "the character result is longer than this function allows"),
    QZHOST_CODE(EC_DATE_FORMAT_INVALID,
                "invalid date format: empty, longer than 75 bytes, or with an element that is unknown or not allowed here"),
    QZHOST_CODE(EC_NUMBER_TEXT_INVALID, "the text is not a number"),
    QZHOST_CODE(EC_NUMBER_FORMAT_EMPTY, "the number format is empty"),
    QZHOST_CODE(EC_YEAR_ZERO, "the composed date falls in year 0, which no date is composed in"),
    QZHOST_CODE(EC_WEEKDAY_NAME_INVALID, "unknown weekday name: use a name of the session's language"),
    QZHOST_CODE(EC_HEX_TEXT_INVALID, "the text is not hexadecimal or binary data: it ends in blanks"),
    QZHOST_CODE(EC_MD5_FAILED, "the MD5 digest could not be computed"),
    QZHOST_CODE(EC_HASH_FAILED, "the hash digest could not be computed"),
    QZHOST_CODE(EC_INVALID_ARGUMENT, "invalid argument: the value is outside what the function accepts"),
    QZHOST_CODE(EC_TEXT_TOO_LONG, "the text is too long to be converted (above 32766 bytes)"),
    QZHOST_CODE(EC_CHAR_INVALID, "malformed multibyte character: the text does not fit the character set"),
    QZHOST_CODE(EC_DATE_OUT_OF_RANGE, "the date leaves the calendar, which runs from -4712-01-01 to 9999-12-31"),
    QZHOST_CODE(EC_INTERVAL_TEXT_INVALID,
                "the text is not an interval: expected fields such as '1-2' or '3 04:05:06', or P1Y2M"),
    QZHOST_CODE(EC_INTERVAL_OUT_OF_RANGE, "the interval's first field has more digits than its precision allows"),
    QZHOST_CODE(EC_LOB_TOO_LONG, "the LOB is too long: 2147483648 bytes or more"),
    QZHOST_CODE(EC_LOB_TOO_LONG_ROW, "the LOB is too long to be read whole by this function"),
};

#undef QZHOST_CODE

static_assert(std::is_sorted(std::begin(kCodes), std::end(kCodes),
                             [](const CodeText& a, const CodeText& b) { return a.code > b.code; }));

constexpr CodeText kUnknown{0, "UNKNOWN", "a code that is not in the list of codes"};

const CodeText& find(int32_t code) {
    const CodeText* found =
        std::lower_bound(std::begin(kCodes), std::end(kCodes), code, [](const CodeText& a, int32_t b) { return a.code > b; });
    return found != std::end(kCodes) && found->code == code ? *found : kUnknown;
}

}  // namespace

const char* host_error_text(int32_t code) { return find(code).text; }

const char* host_error_name(int32_t code) { return find(code).name; }
