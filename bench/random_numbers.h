// Random numbers to measure with, as users have them: prices and counts rather than bits.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>

#include "qzhost/decimal.h"

namespace bench {

// Up to ten integer digits, any fraction, of both signs.
inline double random_double(std::mt19937_64& random) { return static_cast<double>(static_cast<int64_t>(random())) / 1e9; }

// 1 to 18 digits, of both signs.
inline int64_t random_bigint(std::mt19937_64& random) {
    static constexpr int64_t kLimits[] = {10, 10'000, 1'000'000'000, 1'000'000'000'000'000'000};
    return static_cast<int64_t>(random()) % kLimits[random() % 4];
}

inline int32_t random_int(std::mt19937_64& random) { return static_cast<int32_t>(random_bigint(random)); }

// 1 to 18 digits, up to 4 of them behind the point, of both signs.
inline xdec random_decimal(std::mt19937_64& random) {
    xdec decimal;
    if (xdec_from_unscaled(&decimal, random_bigint(random), static_cast<uint32_t>(random() % 5)) < 0) std::abort();
    return decimal;
}

// A whole number of so many random digits.
inline xdec random_digits(std::mt19937_64& random, uint32_t digits, bool negative) {
    std::string text = negative ? "-1" : "1";
    while (text.size() < digits + (negative ? 1 : 0)) text += static_cast<char>('0' + random() % 10);
    xdec decimal;
    if (xdec_from_char(&decimal, text.data(), static_cast<uint32_t>(text.size())) != 0) std::abort();
    return decimal;
}

}  // namespace bench
