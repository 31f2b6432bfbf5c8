// The three character sets of the server, each a type with one question: what stands at the start of these bytes?
//
// sequence(p, left), left above 0, answers the length of the well-formed sequence there, or why there is none: kMalformed when
// no bytes behind could make it one, kCutOff when all bytes left begin a sequence that needs more. Nothing is read behind the
// range.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "host/src/byte_blocks.h"
#include "host/src/server_charset.h"

namespace qzhost {

inline constexpr int32_t kMalformed = 0;
inline constexpr int32_t kCutOff = -1;

inline bool is_between(uint8_t byte, uint8_t low, uint8_t high) {
    return static_cast<uint8_t>(byte - low) <= static_cast<uint8_t>(high - low);
}

struct Utf8 {
    static constexpr uint32_t kLongest = 4;

    static bool is_continuation(uint8_t byte) { return (byte & 0xC0) == 0x80; }

    // By the lead byte alone; 1 for a byte that leads nothing.
    static uint32_t length_by_lead(const uint8_t* p) {
        const uint8_t lead = p[0];
        if (lead < 0xC2 || lead > 0xF4) return 1;
        return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    }

    // Whether the byte is never the second or a later one of a character.
    static bool always_begins(uint8_t byte) { return !is_continuation(byte); }

    // The second byte also tells overlong forms, surrogates and numbers above U+10FFFF.
    static bool is_second(uint8_t lead, uint8_t second) {
        switch (lead) {
            case 0xE0:
                return is_between(second, 0xA0, 0xBF);
            case 0xED:
                return is_between(second, 0x80, 0x9F);
            case 0xF0:
                return is_between(second, 0x90, 0xBF);
            case 0xF4:
                return is_between(second, 0x80, 0x8F);
            default:
                return is_continuation(second);
        }
    }

    static int32_t sequence(const uint8_t* p, size_t left) {
        if (is_ascii(p[0])) return 1;
        const uint32_t length = length_by_lead(p);
        if (length == 1) return kMalformed;
        if (left < 2) return kCutOff;
        if (!is_second(p[0], p[1])) return kMalformed;
        if (length == 2) return 2;
        if (left < 3) return kCutOff;
        if (!is_continuation(p[2])) return kMalformed;
        if (length == 3) return 3;
        if (left < 4) return kCutOff;
        return is_continuation(p[3]) ? 4 : kMalformed;
    }
};

struct Gb18030 {
    static constexpr uint32_t kLongest = 4;

    static bool is_lead(uint8_t byte) { return is_between(byte, 0x81, 0xFE); }
    static bool is_digit(uint8_t byte) { return is_between(byte, 0x30, 0x39); }
    static bool is_second_of_two(uint8_t byte) { return is_between(byte, 0x40, 0xFE) && byte != 0x7F; }

    static bool always_begins(uint8_t byte) { return byte < 0x40 ? !is_digit(byte) : byte == 0x7F || byte == 0xFF; }

    static uint32_t length_by_lead(const uint8_t* p) {
        if (!is_lead(p[0])) return 1;
        return is_digit(p[1]) ? 4 : 2;
    }

    static int32_t sequence(const uint8_t* p, size_t left) {
        if (is_ascii(p[0])) return 1;
        if (!is_lead(p[0])) return kMalformed;
        if (left < 2) return kCutOff;
        if (is_second_of_two(p[1])) return 2;
        if (!is_digit(p[1])) return kMalformed;
        if (left < 3) return kCutOff;
        if (!is_lead(p[2])) return kMalformed;
        if (left < 4) return kCutOff;
        return is_digit(p[3]) ? 4 : kMalformed;
    }
};

struct EucKr {
    static constexpr uint32_t kLongest = 2;

    static bool is_half(uint8_t byte) { return is_between(byte, 0xA1, 0xFE); }

    static bool always_begins(uint8_t byte) { return !is_half(byte); }

    static uint32_t length_by_lead(const uint8_t* p) { return is_half(p[0]) ? 2 : 1; }

    static int32_t sequence(const uint8_t* p, size_t left) {
        if (is_ascii(p[0])) return 1;
        if (!is_half(p[0])) return kMalformed;
        if (left < 2) return kCutOff;
        return is_half(p[1]) ? 2 : kMalformed;
    }
};

// How far the next character is: a malformed or cut-off byte is one of its own.
template <class Set>
inline size_t step(const uint8_t* p, size_t left) {
    const int32_t length = Set::sequence(p, left);
    return length > 0 ? static_cast<size_t>(length) : 1;
}

inline constexpr uint32_t kServerGb18030 = 0;
inline constexpr uint32_t kServerEucKr = 2;

inline bool is_server_utf8() {
    const uint32_t number = server_charset.load(std::memory_order_relaxed);
    return number != kServerGb18030 && number != kServerEucKr;
}

// Calls what with the server's character set, read here once.
template <class What>
inline decltype(auto) with_server_charset(What&& what) {
    const uint32_t number = server_charset.load(std::memory_order_relaxed);
    if (number == kServerGb18030) [[unlikely]]
        return what(Gb18030{});
    if (number == kServerEucKr) [[unlikely]]
        return what(EucKr{});
    return what(Utf8{});
}

inline const uint8_t* bytes_of(const char* text) { return reinterpret_cast<const uint8_t*>(text); }
inline uint8_t* bytes_of(char* text) { return reinterpret_cast<uint8_t*>(text); }
inline const char* text_of(const uint8_t* bytes) { return reinterpret_cast<const char*>(bytes); }

}  // namespace qzhost
