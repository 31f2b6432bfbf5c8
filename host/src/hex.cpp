#include "qzhost/hex.h"

#include <array>
#include <cstring>

#include "qzbifun/codes.h"

namespace {

constexpr uint8_t kNoDigit = 0xFF;

constexpr auto kDigitValues = [] {
    std::array<uint8_t, 256> values{};
    values.fill(kNoDigit);
    for (uint8_t i = 0; i < 10; ++i) values['0' + i] = i;
    for (uint8_t i = 0; i < 6; ++i) values['A' + i] = values['a' + i] = static_cast<uint8_t>(10 + i);
    return values;
}();

// Both digits of each byte, in the order in which they are written.
constexpr auto kDigitPairs = [] {
    std::array<char, 512> pairs{};
    constexpr char digits[] = "0123456789ABCDEF";
    for (size_t i = 0; i < 256; ++i) {
        pairs[2 * i] = digits[i >> 4];
        pairs[2 * i + 1] = digits[i & 15];
    }
    return pairs;
}();

bool read_digits(const char* text, uint32_t len, uint8_t* destination) {
    const uint8_t* digit = reinterpret_cast<const uint8_t*>(text);
    const uint8_t* end = digit + len;
    uint8_t seen = 0;
    if (len % 2 == 1) {
        const uint8_t value = kDigitValues[*digit++];
        seen |= value;
        *destination++ = value;
    }
    for (; digit != end; digit += 2) {
        const uint8_t high = kDigitValues[digit[0]];
        const uint8_t low = kDigitValues[digit[1]];
        seen |= high | low;
        *destination++ = static_cast<uint8_t>(high << 4 | (low & 15));
    }
    return seen < 16;
}

}  // namespace

int32_t nbin_from_char_ex(const char* text, uint32_t len, void* out, int32_t) {
    uint8_t* bytes = static_cast<uint8_t*>(out) + sizeof(uint32_t);
    const bool read = read_digits(text, len, bytes);
    const uint32_t count = read ? len / 2 + len % 2 : 0;
    std::memcpy(out, &count, sizeof count);
    return read ? 0 : EC_HEX_TEXT_INVALID;
}

int32_t nbin_from_char_low_with_len(const char* text, uint32_t len, uint8_t* destination, uint32_t* out_len) {
    if (!read_digits(text, len, destination)) return -1;
    *out_len = len / 2 + len % 2;
    return 0;
}

int32_t nbin_to_char_ex(const void* bytes, uint32_t len, char* destination, int32_t) {
    const uint8_t* source = static_cast<const uint8_t*>(bytes);
    for (size_t i = 0; i < len; ++i) std::memcpy(destination + 2 * i, &kDigitPairs[size_t{2} * source[i]], 2);
    destination[size_t{2} * len] = 0;
    return 0;
}
