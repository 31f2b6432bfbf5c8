// round and trunc of texts, by the unit or scale in the first byte. What comes out is a text that the same call leaves as it
// is.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "bop/bifun_date/date_words.h"
#include "fuzz/require.h"
#include "qzbifun/codes.h"
#include "qzbifun/date_rounding.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

// The text that a worker writes, or the code.
struct Written {
    int32_t code;
    std::string text;
};

template <class Worker, class... Argument>
Written write(Worker* worker, std::string_view text, Argument... argument) {
    char buffer[DATE_ROUNDING_TEXT_BYTES];
    uint32_t length = 0;
    const int32_t code = worker(text.data(), static_cast<uint32_t>(text.size()), argument..., buffer, &length);
    require(code <= 0 || code == RC_VALUE_IS_NULL);
    if (code != 0) return {code, ""};
    require(length > 0 && length == strnlen(buffer, sizeof buffer));
    return {0, {buffer, length}};
}

template <class Worker, class... Argument>
void require_stable(Worker* worker, std::string_view text, Argument... argument) {
    const Written once = write(worker, text, argument...);
    if (once.code != 0 || once.text.starts_with("-4800-") || once.text.starts_with("1582-10-")) return;
    const Written twice = write(worker, once.text, argument...);
    require(twice.code == 0 && twice.text == once.text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) return 0;
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const int32_t part = data[0] % 14;
    require_stable(btrunc_dt_str_low, text, part);
    // A week that is rounded may begin in the next year or month, which counts its weeks from another day.
    const auto unit = static_cast<bifun::RoundPart>(part);
    if (unit == bifun::RoundPart::kWeekOfYear || unit == bifun::RoundPart::kWeekOfMonth) {
        write(ifun_round_dt_str_low, text, part);
    } else {
        require_stable(ifun_round_dt_str_low, text, part);
    }
    const int64_t scale = data[0] % 64 - 16;
    require_stable(btrunc_dec_str_low, text, scale);
    require_stable(ifun_round_dec_str_low, text, scale);
    require_stable(ifun_round_str_low, text);
    return 0;
}
