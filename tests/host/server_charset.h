// The server's character set for the time of a test, and what ICU says of its bytes.
#pragma once

#include <gtest/gtest.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/utf16.h>

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qzbifun/codes.h"
#include "qzhost/control.h"

struct CharsetUnderTest {
    uint32_t number;
    const char* name;  // ICU's
};

inline constexpr CharsetUnderTest kGb18030{0, "GB18030"};
inline constexpr CharsetUnderTest kUtf8{1, "UTF-8"};
inline constexpr CharsetUnderTest kEucKr{2, "EUC-KR"};
inline constexpr CharsetUnderTest kCharsets[] = {kGb18030, kUtf8, kEucKr};

inline std::string name_of_charset(const testing::TestParamInfo<CharsetUnderTest>& tested) {
    return tested.param.number == kUtf8.number ? "Utf8" : tested.param.number == kGb18030.number ? "Gb18030" : "EucKr";
}

inline bool is_surrogate(uint32_t c) { return c >= 0xD800 && c < 0xE000; }

class ServerCharset {
  public:
    explicit ServerCharset(const CharsetUnderTest& charset) { host_parameter_set(SERVER_CHARSET, charset.number); }
    ~ServerCharset() { host_parameters_reset(); }
    ServerCharset(const ServerCharset&) = delete;
    ServerCharset& operator=(const ServerCharset&) = delete;
};

// ICU's converter of a character set.
class Converter {
  public:
    explicit Converter(const CharsetUnderTest& charset) {
        UErrorCode code = U_ZERO_ERROR;
        converter_ = ucnv_open(charset.name, &code);
        ucnv_setToUCallBack(converter_, note_fault, &faults_, nullptr, nullptr, &code);
        ucnv_setFromUCallBack(converter_, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &code);
        if (U_FAILURE(code)) std::abort();
    }
    ~Converter() { ucnv_close(converter_); }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // Whether the bytes are one character, assigned or not.
    bool is_one_character(std::string_view bytes) {
        const std::u16string units = decode_units(bytes);
        if (faults_.malformed > 0) return false;
        const bool pair = units.size() == 2 && is_surrogate(units[0]);
        return static_cast<int>(units.size()) - pair + faults_.unassigned == 1;
    }

    // A converter of EUC-KR takes the control characters of the upper half for characters; this system does not.
    bool is_well_formed(std::string_view piece) {
        return is_one_character(piece) && (piece.size() > 1 || static_cast<uint8_t>(piece[0]) < 0x80);
    }

    // The code point of an assigned character.
    std::optional<uint32_t> decode(std::string_view character) {
        const std::u16string units = decode_units(character);
        if (faults_.malformed + faults_.unassigned > 0 || units.empty()) return std::nullopt;
        const uint32_t first = units[0];
        if (units.size() == 1) return first;
        if (units.size() > 2 || !is_surrogate(first)) return std::nullopt;
        return 0x10000 + (first - 0xD800) * 0x400 + (uint32_t{units[1]} - 0xDC00);
    }

    std::optional<std::string> encode(uint32_t c) {
        UChar units[2];
        int32_t count = 0;
        U16_APPEND_UNSAFE(units, count, c);
        char bytes[8];
        UErrorCode code = U_ZERO_ERROR;
        const int32_t length = ucnv_fromUChars(converter_, bytes, sizeof bytes, units, count, &code);
        // A converter drops characters without a glyph that its set does not have.
        if (U_FAILURE(code) || length == 0) return std::nullopt;
        return std::string(bytes, static_cast<size_t>(length));
    }

    // A text cut into the shortest pieces that are one character each; a byte that begins none is a piece of its own.
    std::vector<std::string> cut(std::string_view text) {
        std::vector<std::string> pieces;
        while (!text.empty()) {
            size_t length = 1;
            while (length <= kLongest && !is_one_character(text.substr(0, length))) ++length;
            if (length > kLongest || length > text.size()) length = 1;
            pieces.emplace_back(text.substr(0, length));
            text.remove_prefix(length);
        }
        return pieces;
    }

    static constexpr size_t kLongest = 4;

  private:
    struct Faults {
        int malformed = 0;
        int unassigned = 0;
    };

    static void note_fault(const void* context, UConverterToUnicodeArgs*, const char*, int32_t, UConverterCallbackReason reason,
                           UErrorCode* code) {
        if (reason > UCNV_IRREGULAR) return;
        Faults* faults = static_cast<Faults*>(const_cast<void*>(context));
        ++(reason == UCNV_UNASSIGNED ? faults->unassigned : faults->malformed);
        *code = U_ZERO_ERROR;
    }

    std::u16string decode_units(std::string_view bytes) {
        faults_ = {};
        std::u16string units(bytes.size() * 2 + 1, 0);
        UErrorCode code = U_ZERO_ERROR;
        const int32_t count = ucnv_toUChars(converter_, units.data(), static_cast<int32_t>(units.size()), bytes.data(),
                                            static_cast<int32_t>(bytes.size()), &code);
        if (U_FAILURE(code)) std::abort();
        units.resize(static_cast<size_t>(count));
        return units;
    }

    UConverter* converter_;
    Faults faults_;
};
