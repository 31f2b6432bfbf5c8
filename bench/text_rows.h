// Rows of text to measure with: enough of them that no branch is learnt by heart, in one run of bytes.
#pragma once

#include <cstdint>
#include <cstring>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace bench {

enum class Script { ascii, utf8 };  // utf8: three characters of ten have two or three bytes

struct TextRow {
    uint32_t at;
    uint32_t len;
};

class TextRows {
  public:
    TextRows(Script script, uint32_t least_bytes, uint32_t most_bytes, size_t rows) {
        std::mt19937 random(4711);
        std::uniform_int_distribution<uint32_t> bytes(least_bytes, most_bytes);
        for (size_t i = 0; i < rows; ++i) {
            const uint32_t at = static_cast<uint32_t>(text_.size());
            const uint32_t wanted = bytes(random);
            while (text_.size() - at < wanted) append_character(script, wanted - (text_.size() - at), random);
            rows_.push_back({at, wanted});
        }
        copy_ = text_;
    }

    // Rows of words, a blank in front of each, of 8 to 40 characters; the last word may be cut off.
    TextRows(std::span<const std::string_view> words, size_t rows) {
        std::mt19937 random(815);
        for (size_t i = 0; i < rows; ++i) {
            const uint32_t at = static_cast<uint32_t>(text_.size());
            append_words(words, 8 + random() % 33, random);
            rows_.push_back({at, static_cast<uint32_t>(text_.size()) - at});
        }
        copy_ = text_;
    }

    size_t size() const { return rows_.size(); }
    size_t bytes() const { return text_.size(); }
    std::string_view operator[](size_t i) const { return {text_.data() + rows_[i].at, rows_[i].len}; }

    // A row of the copy that may be changed.
    char* writable(size_t i) { return copy_.data() + rows_[i].at; }
    uint32_t length(size_t i) const { return rows_[i].len; }

    // The row copied once: the floor of all that changes text.
    char* copied(size_t i) {
        char* to = writable(i);
        std::memcpy(to, text_.data() + rows_[i].at, rows_[i].len);
        return to;
    }

  private:
    void append_character(Script script, size_t room, std::mt19937& random) {
        static constexpr std::string_view kLonger[] = {"\u00e9", "\u00c4", "\u0436", "\u0416",
                                                       "\u03b1", "\u4e2d", "\u6587", "\u3042"};
        if (script == Script::utf8 && random() % 10 < 3) {
            const std::string_view character = kLonger[random() % std::size(kLonger)];
            if (character.size() <= room) {
                text_ += character;
                return;
            }
        }
        static constexpr std::string_view kLetters = "etaoin shrdluETAOINSHRDLU bcdfgjkmpqvwxyz 0123456789";
        text_ += kLetters[random() % kLetters.size()];
    }

    void append_words(std::span<const std::string_view> words, size_t characters, std::mt19937& random) {
        for (std::string_view left; characters > 0; --characters) {
            if (left.empty()) {
                text_ += ' ';
                left = words[random() % words.size()];
                continue;
            }
            size_t length = 1;
            while (length < left.size() && (static_cast<uint8_t>(left[length]) & 0xC0) == 0x80) ++length;
            text_ += left.substr(0, length);
            left.remove_prefix(length);
        }
    }

    std::string text_;
    std::string copy_;
    std::vector<TextRow> rows_;
};

inline constexpr size_t kShortRows = 1 << 16;
inline constexpr size_t kLongRows = 1 << 12;

inline TextRows short_rows(Script script) { return {script, 8, 40, kShortRows}; }
inline constexpr std::string_view kWords[] = {
    "a",     "to",   "we",      "for",   "harbour", "Bridge", "East",     "yellow", "receipt", "Anna",     "Ring",
    "cargo", "1987", "mooring", "crate", "refund",  "B3",     "supplier", "Costa",  "silver",  "ordinary", "shopping",
    "yes",   "Unit", "tiny",    "Y-205", "collect", "Brown",  "pickup",   "Lisbon", "evening", "was"};
inline constexpr std::string_view kWordsOfUtf8[] = {
    "Straße", "to",     "cliché", "cargo",    "Спасибо", "receipt", "图书馆", "crate",  "京都",   "señal", "Brown",
    "Αθήνα",  "yellow", "garçon", "shopping", "город",   "1987",    "Gdańsk", "大阪府", "refund", "🚲",     "Köln"};

inline TextRows word_rows(Script script) {
    return script == Script::ascii ? TextRows(kWords, kShortRows) : TextRows(kWordsOfUtf8, kShortRows);
}
inline TextRows long_rows(Script script) { return {script, 200, 2000, kLongRows}; }

}  // namespace bench
