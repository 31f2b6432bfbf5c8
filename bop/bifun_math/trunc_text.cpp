#include "bop/bifun_math/trunc_text.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "qzhost/number_text.h"

namespace bifun {
namespace {

constexpr int32_t kExponentLimit = 1000;

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// A text being cut, NUL-terminated, with room for an exponent behind it.
struct Cut {
    char bytes[2 * (kTruncTextBytes + 1)];

    Cut(const char* text, uint32_t len) {
        std::memcpy(bytes, text, len);
        bytes[len] = '\0';
    }

    void append(const char* text, uint32_t len) {
        char* const end = bytes + std::strlen(bytes);
        std::memcpy(end, text, len);
        end[len] = '\0';
    }

    // Cuts at n places behind the point, or in front of it where n is not above 0. length: bytes that count, first: index of
    // the first byte behind a sign. Answers false where nothing of the number is left.
    bool at(int64_t point, int64_t n, int64_t length, int64_t first) {
        if (n > 0) {
            if (point + 1 + n < length) bytes[point + 1 + n] = '\0';
            return true;
        }
        const int64_t from = point + n;
        if (from <= first) return false;
        std::fill(bytes + from, bytes + point, '0');
        bytes[point] = '\0';
        return true;
    }
};

Code read(const char* text, uint32_t len, double& result) {
    return Code{utl_digit_from_char(text, len, &result, 1) < 0 ? EC_INVALID_ARGUMENT : 0};
}

// Cuts digits with at most one point, behind a sign or not, where what is left can mostly be read where it stands.
Code cut_plain(std::string_view text, uint32_t point, int32_t places, uint32_t first, double& result) {
    if (places > 0) {
        const uint64_t end = uint64_t{point} + 1 + static_cast<uint32_t>(places);
        return read(text.data(), static_cast<uint32_t>(std::min<uint64_t>(text.size(), end)), result);
    }
    if (places == 0 && point > first) return read(text.data(), point, result);
    Cut cut(text.data(), point);
    if (!cut.at(point, places, point, first)) {
        result = 0.0;
        return kOk;
    }
    return read(cut.bytes, point, result);
}

// The place of the point in digits with at most one, or the end.
Code find_point(const char* text, uint32_t start, uint32_t len, uint32_t& point) {
    uint32_t points = 0;
    point = len;
    for (uint32_t i = start; i < len; ++i) {
        if (text[i] == '.') {
            point = i;
            ++points;
        } else if (!is_digit(text[i])) {
            return Code{EC_INVALID_ARGUMENT};
        }
    }
    return Code{points > 1 ? EC_INVALID_ARGUMENT : 0};
}

}  // namespace

Code check_head(const char* text, uint32_t len, NumberHead& head) {
    head = {};
    if (len != 0 && (text[0] == '+' || text[0] == '-')) {
        head = {true, 1};
        if (len == 1) return Code{EC_INVALID_ARGUMENT};
    }
    const uint32_t at = head.position;
    if (at < len && text[at] == '.' && (at + 1 == len || !is_digit(text[at + 1]))) return Code{EC_INVALID_ARGUMENT};
    return kOk;
}

Code scan_number(const char* text, uint32_t len, uint32_t start, NumberParts& parts) {
    const Code invalid{EC_INVALID_ARGUMENT};
    parts = {};
    for (uint32_t i = start; i < len; ++i) {
        const char c = text[i];
        if (c == '.') {
            if (parts.has_e || parts.has_point) return invalid;
            parts.has_point = true;
            parts.point = i;
        } else if (c == 'E' || c == 'e') {
            if (i == 0 || i + 1 == len || parts.has_e) return invalid;
            parts.has_e = true;
            parts.e = i;
        } else if (c == '+' || c == '-') {
            if (!parts.has_e || i != parts.e + 1 || i + 1 == len) return invalid;
            if (c == '-') parts.exponent_sign = -1;
        } else if (is_digit(c)) {
            if (!parts.has_e) continue;
            parts.exponent = parts.exponent * 10 + (c - '0');
            if (parts.exponent >= kExponentLimit) return Code{EC_DATA_OVERFLOW};
        } else {
            return invalid;
        }
    }
    return kOk;
}

Code trunc_text(const char* text, uint32_t len, int32_t places, double& result, TruncFailure& failed_at) {
    uint32_t c = std::min(len, kTruncTextBytes);
    while (c != 0 && *text == ' ') ++text, --c;

    failed_at = TruncFailure::kHead;
    NumberHead head;
    if (const Code code = check_head(text, c, head); code.failed()) return code;

    failed_at = TruncFailure::kText;
    uint32_t point = 0;
    const Code plain = find_point(text, head.position, c, point);
    if (!plain.failed()) return cut_plain({text, c}, point, places, head.position, result);
    if (std::none_of(text, text + c, [](char byte) { return byte == 'E' || byte == 'e'; })) return plain;

    failed_at = TruncFailure::kScan;
    NumberParts parts;
    if (const Code code = scan_number(text, c, head.position, parts); code.failed()) return code;
    failed_at = TruncFailure::kText;

    Cut cut(text, c);
    cut.bytes[parts.e] = '\0';
    point = parts.has_point ? parts.point : c;  // without one the end of the whole text, exponent included
    int64_t n = int64_t{places} + parts.exponent_sign * parts.exponent;
    // A place further to the left than the text is long stands for its first byte.
    if (n <= 0 && n + c < 1) n = -int64_t{point};
    if (!cut.at(point, n, c, head.position)) {
        result = 0.0;
        return kOk;
    }
    cut.append(text + parts.e, c - parts.e);
    // c bytes count, whatever was cut meanwhile.
    return read(cut.bytes, c, result);
}

Code trunc_plain_text(const char* text, uint32_t len, int32_t places, double& result) {
    const uint32_t c = std::min(len, kTruncTextBytes);
    uint32_t point = 0;
    if (const Code code = find_point(text, 0, c, point); code.failed()) return code;
    return cut_plain({text, c}, point, places, 0, result);
}

}  // namespace bifun
