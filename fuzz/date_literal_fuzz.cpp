// Date literals: the quick way of reading and the one by fields come to the same, and what was read is a date.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "bop/bifun_date/date_literal.h"
#include "fuzz/require.h"
#include "qzbifun/date_parts.h"
#include "qzhost/calendar.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const char* const text = reinterpret_cast<const char*>(data);
    const auto length = static_cast<int32_t>(size);
    constexpr qztime kBefore{-1, 77, 78, 79, 80, 81, 82, 83};
    qztime value = kBefore, by_fields = kBefore;
    const int32_t code = ifun_parse_date(text, length, &value);
    require(code == bifun::read_date_by_fields({text, size}, by_fields).value);
    require(std::memcmp(&value, &by_fields, sizeof value) == 0);
    if (code == 0) {
        require(value.year >= 1 && value.year <= 9999 && value.tz == TZ_NONE);
        require(qztime_cmp_with_glgl(value.year, value.month, value.day) != 0);
        qztime again;
        require(qztime_encode(&again, value.year, value.month, value.day, value.hour, value.minute, value.second,
                              static_cast<int32_t>(value.fraction), value.tz) == 0);
    } else {
        require(code == EC_DATE_TEXT_INVALID || code == EC_DATE_VALUE_INVALID);
        require(std::memcmp(&value, &kBefore, sizeof value) == 0);
    }

    if (size < 2) return 0;
    int32_t hour, minute, second, fraction;
    ifun_parse_time_part(text, length, data[0] % 8, &hour, &minute, &second, &fraction);
    char digits[17];
    const int32_t count = data[1] % 18 - 1;
    const int32_t end = ifun_parse_date_field(text, length, data[0] % 8, digits, static_cast<char>(data[0]), count);
    require(end == -1 || (end > 0 && end <= length && std::strlen(digits) <= static_cast<size_t>(count)));
    ifun_parse_roundpart(text, static_cast<uint32_t>(size));
    return 0;
}
