// Texts as lists of characters with all blanks written out: what the searches are held against. For well-formed text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "qzbifun/qzbifun.h"
#include "tests/support/batch.h"
#include "tests/support/host.h"
#include "tests/support/value.h"

namespace plain {

enum class Charset : uint8_t { gb18030, utf8, euc_kr };  // by the numbers of SERVER_CHARSET

inline constexpr Charset kCharsets[] = {Charset::gb18030, Charset::utf8, Charset::euc_kr};

inline uint32_t number_of(Charset charset) { return static_cast<uint32_t>(charset); }

// How many bytes the character at text[at] has.
inline size_t character_length(std::string_view text, size_t at, Charset charset) {
    const auto lead = static_cast<uint8_t>(text[at]);
    if (lead < 0x80) return 1;
    switch (charset) {
        case Charset::gb18030:
            return text[at + 1] >= '0' && text[at + 1] <= '9' ? 4 : 2;
        case Charset::utf8:
            return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        case Charset::euc_kr:
            return 2;
    }
    return 1;
}

using Characters = std::vector<std::string>;

inline Characters characters_of(const support::Text& text, Charset charset) {
    Characters characters;
    for (size_t at = 0; at < text.bytes.size();) {
        const size_t length = character_length(text.bytes, at, charset);
        characters.push_back(text.bytes.substr(at, length));
        at += length;
    }
    characters.insert(characters.end(), text.blank, " ");
    return characters;
}

// Whether the pattern stands at character i, from 0.
inline bool stands_at(const Characters& text, size_t i, const Characters& pattern) {
    if (i + pattern.size() > text.size()) return false;
    for (size_t j = 0; j < pattern.size(); ++j) {
        if (text[i + j] != pattern[j]) return false;
    }
    return true;
}

// A few letters that search functions could take for each other: bytes of one that stand in another, letters of both cases.
inline const std::vector<std::string>& letters_of(Charset charset) {
    static const std::vector<std::string> gb18030 = {"a", "A", "b", " ", "\x81\x61", "\xB0\xA1", "\x81\x30\x81\x30", "0"};
    static const std::vector<std::string> utf8 = {"a", "A", "b", " ", "\u00e9", "\u00c9", "\u4e2d", "\U0001F600"};
    static const std::vector<std::string> euc_kr = {"a", "A", "b", " ", "\xB0\xA1", "\xA1\xB0", "\xB0\xB0"};
    return charset == Charset::gb18030 ? gb18030 : charset == Charset::utf8 ? utf8 : euc_kr;
}

// Few letters of few, so that many stand in many; at times with implied blanks.
inline support::Text random_text(support::Random& random, Charset charset, uint32_t most) {
    const std::vector<std::string>& letters = letters_of(charset);
    support::Text text;
    const uint32_t length = random.below(most + 1);
    const auto kinds = random.chance(50) ? static_cast<uint32_t>(letters.size()) : 2 + random.below(4);
    for (uint32_t i = 0; i < length; ++i) {
        text.bytes += random.chance(20) ? " " : letters[(random.below(kinds) * 3 + kinds) % letters.size()];
    }
    if (random.chance(40)) text.blank = random.below(4);
    return text;
}

// The server's character set, and the switches for it, as long as this lives.
class InCharset {
  public:
    InCharset(Charset charset, bool case_sensitive) : parameters_(SERVER_CHARSET, number_of(charset)) {
        bifun_dll_var_init(0, number_of(charset), case_sensitive ? 1 : 0);
    }
    ~InCharset() { bifun_dll_var_init(0, 0, 0); }
    InCharset(const InCharset&) = delete;
    InCharset& operator=(const InCharset&) = delete;

  private:
    support::Parameters parameters_;
};

}  // namespace plain
