// Text to double and back. What is read equals what strtod reads, and the shortest text of it reads back to the same bits.
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "fuzz/require.h"
#include "qzhost/number_text.h"

namespace {

bool same_bits(double a, double b) { return std::bit_cast<uint64_t>(a) == std::bit_cast<uint64_t>(b); }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    double value = 0;
    if (utl_digit_from_char(reinterpret_cast<const char*>(data), static_cast<uint32_t>(size), &value, 1) != 0) return 0;
    const std::string text(reinterpret_cast<const char*>(data), size);  // ends at the first NUL for strtod, as it does for us
    require(same_bits(value, std::strtod(text.c_str(), nullptr)));

    char shortest[QZ_DOU2CHAR_BYTES];
    const int32_t length = qz_dou2char(value, 1, shortest);
    double again = 0;
    require(utl_digit_from_char(shortest, static_cast<uint32_t>(length), &again, 1) == 0);
    require(same_bits(value, again));
    return 0;
}
