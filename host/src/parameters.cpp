#include "qzhost/parameters.h"

#include <array>
#include <atomic>

#include "host/src/server_charset.h"
#include "qzbifun/codes.h"
#include "qzhost/control.h"

namespace {

struct Parameter {
    uint32_t number;
    uint32_t preset;
};

constexpr uint32_t kPresetCharset = 1;

constexpr Parameter kParameters[] = {
    {LOB_SEARCH_READ_KB, 64 * 1024},
    {COMPAT_MODE_PARAM, 0},
    {JSON_MODE, 0},
    {TIME_TEXT_FRACTION, 0},
    {BASE64_CRLF, 0},
    {SERVER_CHARSET, kPresetCharset},
    {DEFAULT_TIME_ZONE, 0},
    {TIME_TEXT_NANOSECONDS, 0},
    {CLOB_TRIM_MAX_BYTES, 64 * 1024 * 1024},
    {STRING_OVERFLOW_FLAGS, 0},
    {FLOAT_SPECIALS_ALLOWED, 0},
};

constexpr uint32_t kLowest = LOB_SEARCH_READ_KB;
constexpr uint32_t kHighest = FLOAT_SPECIALS_ALLOWED;
constexpr uint32_t kNone = std::size(kParameters);  // the place of a number that no parameter bears; its value stays 0

// From number to place in the table: parameters are read for every row.
constexpr auto kPlaces = [] {
    std::array<uint8_t, kHighest - kLowest + 1> places{};
    places.fill(kNone);
    for (uint8_t i = 0; i < kNone; ++i) places[kParameters[i].number - kLowest] = i;
    return places;
}();

constexpr uint32_t place_of(uint32_t number) { return number - kLowest < kPlaces.size() ? kPlaces[number - kLowest] : kNone; }

// Each value stands alone, so no order between them is kept. They start out as their presets without any code run at load time.
template <size_t... i>
constexpr std::array<std::atomic<uint32_t>, kNone + 1> presets(std::index_sequence<i...>) {
    return {kParameters[i].preset..., 0};
}
constinit std::array<std::atomic<uint32_t>, kNone + 1> values = presets(std::make_index_sequence<kNone>());
constinit std::atomic<int32_t> oracle_date_format = 0;

}  // namespace

constinit std::atomic<uint32_t> qzhost::server_charset = kPresetCharset;

uint32_t ini_get_value(uint32_t, uint32_t number) { return values[place_of(number)].load(std::memory_order_relaxed); }

int32_t ini_enable_oracle_date_fmt() { return oracle_date_format.load(std::memory_order_relaxed); }

void host_parameter_set(uint32_t number, uint32_t value) {
    const uint32_t place = place_of(number);
    if (place != kNone) values[place].store(value, std::memory_order_relaxed);
    if (number == SERVER_CHARSET) qzhost::server_charset.store(value, std::memory_order_relaxed);
}

void host_parameters_reset() {
    for (const Parameter& parameter : kParameters) host_parameter_set(parameter.number, parameter.preset);
    host_set_oracle_date_format(0);
}

void host_set_oracle_date_format(int32_t on) { oracle_date_format.store(on != 0, std::memory_order_relaxed); }
