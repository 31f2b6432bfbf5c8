// Text to interval and back, for the qualifier in the first two bytes. What was read as days and time is written, and reads
// back.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "fuzz/require.h"
#include "qzbifun/codes.h"
#include "qzhost/interval.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

void require_code(int32_t code) {
    require(code == 0 || code == EC_INTERVAL_TEXT_INVALID || code == EC_INTERVAL_OUT_OF_RANGE || code == EC_INVALID_ARGUMENT);
}

void check_round_trip(const qz_interval_dt& value) {
    char written[HOST_IV_TEXT_BYTES];
    qz_interval_dt_to_char_oracle(&value, written, 0);
    require(std::strlen(written) < sizeof written);
    if (value.iv_qualifier != HOST_IV_QUALIFIER_DT) return;
    qz_interval_dt again{};
    require(qz_interval_dt_from_char(nullptr, written, &again, value.iv_qualifier) == 0);
    require(std::memcmp(&value, &again, sizeof value) == 0);
    require(interval_dt_cmp(&value, &again, 0, 0) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    const int32_t word = data[0] << 8 | data[1];
    const std::string text(reinterpret_cast<const char*>(data + 2), size - 2);

    for (const int32_t qualifier : {word, static_cast<int32_t>(HOST_IV_QUALIFIER_DT)}) {
        qz_interval_dt days{};
        const int32_t code = qz_interval_dt_from_char(nullptr, text.c_str(), &days, qualifier);
        require_code(code);
        if (code == 0) check_round_trip(days);
    }
    for (const int32_t qualifier : {word, static_cast<int32_t>(HOST_IV_QUALIFIER_YM)}) {
        qz_interval_ym months{};
        require_code(qz_interval_ym_from_char(nullptr, text.c_str(), &months, qualifier));
    }

    // The same bytes as records.
    qz_interval_dt bits{};
    std::memcpy(&bits, data, size < sizeof bits ? size : sizeof bits);
    char written[HOST_IV_TEXT_BYTES];
    qz_interval_dt_to_char_oracle(&bits, written, 0);
    require(std::strlen(written) < sizeof written);
    xdec number{};
    std::memcpy(&number, data, size < sizeof number ? size : sizeof number);
    qz_interval_dt days{};
    qz_interval_ym months{};
    require_code(xdec_to_ivdt(&number, "HOUR", 4, &days));
    require_code(xdec_to_ivym(&number, "YEAR", 4, &months));
    return 0;
}
