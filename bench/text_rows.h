// Rows of text to measure with: enough of them that no branch is learnt by heart, in one run of bytes.
#pragma once

#include <cstdint>
#include <cstring>
#include <random>
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

    std::string text_;
    std::string copy_;
    std::vector<TextRow> rows_;
};

inline constexpr size_t kShortRows = 1 << 16;
inline constexpr size_t kLongRows = 1 << 12;

inline TextRows short_rows(Script script) { return {script, 8, 40, kShortRows}; }
inline TextRows long_rows(Script script) { return {script, 200, 2000, kLongRows}; }

}  // namespace bench
