#include "engine/charset.h"

#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/utf8.h>

#include <memory>
#include <new>
#include <unordered_map>

#include "qzbifun/codes.h"
#include "qzhost/control.h"
#include "qzhost/parameters.h"

namespace qzengine {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD

struct Charset {
    std::string_view name;
    const char* converter;  // ICU's; none for UTF-8
};
constexpr Charset kGb18030{"gb18030", "GB18030"};
constexpr Charset kUtf8{"utf8", nullptr};
constexpr Charset kEucKr{"euc-kr", "EUC-KR"};

const Charset& charset() {
    const uint32_t number = ini_get_value(0, SERVER_CHARSET);
    return number == 0 ? kGb18030 : number == 2 ? kEucKr : kUtf8;
}

// Without a way out of the loop: a vector of bytes at a time.
bool is_ascii(std::string_view text) {
    unsigned char all = 0;
    for (char c : text) all = static_cast<unsigned char>(all | static_cast<unsigned char>(c));
    return all < 0x80;
}

// Some converters put a control character in place of what they cannot convert.
void put_replacement(const void*, UConverterToUnicodeArgs* target, const char*, int32_t, UConverterCallbackReason reason,
                     UErrorCode* code) {
    constexpr UChar kReplacementUnit = 0xFFFD;
    if (reason > UCNV_IRREGULAR) return;  // the converter is opened, reset or closed
    *code = U_ZERO_ERROR;
    ucnv_cbToUWriteUChars(target, &kReplacementUnit, 1, 0, code);
}

// Between UTF-8 and another character set.
class Converter {
  public:
    explicit Converter(const char* name) {
        UErrorCode code = U_ZERO_ERROR;
        converter_.reset(ucnv_open(name, &code));
        ucnv_setFromUCallBack(converter_.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &code);
        ucnv_setToUCallBack(converter_.get(), &put_replacement, nullptr, nullptr, nullptr, &code);
        if (U_FAILURE(code)) throw std::bad_alloc();
    }

    std::string to_utf8(std::string_view text) {
        UErrorCode code = U_ZERO_ERROR;
        return convert(text, code, [&](char* room, int32_t size) {
            return ucnv_toAlgorithmic(UCNV_UTF8, converter_.get(), room, size, text.data(), static_cast<int32_t>(text.size()),
                                      &code);
        });
    }

    // Nothing also for what would not come back as it was: characters without a glyph are dropped unseen.
    std::optional<std::string> from_utf8(std::string_view text) {
        UErrorCode code = U_ZERO_ERROR;
        std::string converted = convert(text, code, [&](char* room, int32_t size) {
            return ucnv_fromAlgorithmic(converter_.get(), UCNV_UTF8, room, size, text.data(), static_cast<int32_t>(text.size()),
                                        &code);
        });
        if (U_FAILURE(code) || to_utf8(converted) != text) return std::nullopt;
        return converted;
    }

  private:
    // run(room, size) converts into the room, or answers how much it needs. What comes of a failure is of no use.
    template <class Run>
    static std::string convert(std::string_view text, UErrorCode& code, Run run) {
        std::string converted(text.size() * 2 + 1, '\0');
        int32_t length = run(converted.data(), static_cast<int32_t>(converted.size()));
        if (code == U_BUFFER_OVERFLOW_ERROR) {
            code = U_ZERO_ERROR;
            converted.resize(static_cast<size_t>(length));
            length = run(converted.data(), length);
        }
        converted.resize(U_FAILURE(code) ? 0 : static_cast<size_t>(length));
        return converted;
    }

    struct Close {
        void operator()(UConverter* converter) const { ucnv_close(converter); }
    };
    std::unique_ptr<UConverter, Close> converter_;
};

// Each thread has converters of its own, since one conversion is in them at a time.
Converter& converter_of(const Charset& set) {
    thread_local std::unordered_map<std::string_view, Converter> converters;
    return converters.try_emplace(set.name, set.converter).first->second;
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"  // in ICU's macro

// Calls what(code point, bytes) for each character of UTF-8; the code point is negative where the bytes are none.
template <class What>
void for_each_character(std::string_view text, What what) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    const auto size = static_cast<int32_t>(text.size());
    for (int32_t at = 0; at < size;) {
        const int32_t begin = at;
        UChar32 c = 0;
        U8_NEXT(bytes, at, size, c);
        what(c, text.substr(static_cast<size_t>(begin), static_cast<size_t>(at - begin)));
    }
}

#pragma GCC diagnostic pop

size_t width_of(UChar32 c) {
    constexpr uint32_t kWithoutWidth = U_GC_MN_MASK | U_GC_ME_MASK | U_GC_CF_MASK;
    if (c < 0) return 1;
    if ((U_MASK(u_charType(c)) & kWithoutWidth) != 0) return 0;
    const int32_t width = u_getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH);
    return width == U_EA_WIDE || width == U_EA_FULLWIDTH ? 2 : 1;
}

}  // namespace

std::string_view charset_name() { return charset().name; }

bool columns_are_utf8() { return charset().converter == nullptr; }

std::string_view to_utf8(std::string_view text, std::string& storage) {
    if (is_ascii(text)) return text;
    const Charset& set = charset();
    storage = set.converter == nullptr ? well_formed(text) : converter_of(set).to_utf8(text);
    return storage;
}

std::string to_utf8(std::string_view text) {
    std::string storage;
    return std::string(to_utf8(text, storage));
}

std::optional<std::string> from_utf8(std::string_view text) {
    const Charset& set = charset();
    if (set.converter == nullptr || is_ascii(text)) return std::string(text);
    return converter_of(set).from_utf8(text);
}

std::string_view first_unwritable(std::string_view text) {
    std::string_view found;
    for_each_character(text, [&](UChar32, std::string_view character) {
        if (found.empty() && !from_utf8(character)) found = character;
    });
    return found;
}

std::string well_formed(std::string_view text) {
    std::string whole;
    whole.reserve(text.size());
    for_each_character(text, [&](UChar32 c, std::string_view character) { whole += c < 0 ? kReplacement : character; });
    return whole;
}

size_t display_width(std::string_view text) {
    size_t width = 0;
    for_each_character(text, [&](UChar32 c, std::string_view) { width += width_of(c); });
    return width;
}

}  // namespace qzengine
