// Text to decimal and back: a decimal that was read is canonical, and its text reads back to the same record.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "fuzz/require.h"
#include "qzhost/decimal.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    xdec value;
    const int32_t code = xdec_from_char(&value, reinterpret_cast<const char*>(data), static_cast<uint32_t>(size));
    require(xdec_is_canonical(&value) != 0);
    if (code != 0) {
        require(code == RC_VALUE_IS_NULL || code == EC_NUMBER_TEXT_INVALID || code == EC_DATA_OVERFLOW);
        require(value.sign == XDEC_SIGN_ZERO);
        return 0;
    }

    char text[XDEC_TEXT_SIZE];
    uint32_t length = 0;
    require(xdec_to_char2(&value, text, sizeof text, &length) == 0);
    require(length < sizeof text && text[length] == '\0');
    xdec again;
    require(xdec_from_char(&again, text, length) == 0);
    require(std::memcmp(&value, &again, sizeof value) == 0);

    // A buffer one byte too small is told so, and nothing behind it is written.
    text[length] = '#';
    uint32_t shorter = 1;
    require(xdec_to_char2(&value, text, length, &shorter) == EC_CHAR_RESULT_OVERFLOW);
    require(shorter == 0 && text[length] == '#');
    return 0;
}
