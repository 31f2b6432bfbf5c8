// Text to date-time and back. What was read is written, and reads back to the same record.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>

#include "fuzz/require.h"
#include "qzhost/date_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const char* text = reinterpret_cast<const char*>(data);
    const auto length = static_cast<uint32_t>(size);

    int64_t integer = 0;
    str2int64(text, length, &integer);
    qztime zoned{};
    qztime_from_char_with_tz(text, length, 480, &zoned);

    for (const int32_t kind : {HOST_KIND_DATE, HOST_KIND_DATETIME, HOST_KIND_DATETIME_TZ}) {
        qztime value{};
        uint32_t info = 0;
        if (qztime_from_char_ex2(text, length, kind, &value, &info) != 0) continue;
        char written[HOST_DATE_TEXT_BYTES];
        require(qztime_to_char(&value, kind, -1, written) == 0);
        const size_t bytes = std::strlen(written);
        require(bytes < sizeof written);
        qztime again{};
        require(qztime_from_char_ex2(written, static_cast<uint32_t>(bytes), kind, &again, &info) == 0);
        require(std::memcmp(&value, &again, sizeof value) == 0);
    }
    return 0;
}
