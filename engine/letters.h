/*
 * Letters of names and keywords: ASCII only, independent of the locale.
 */
#ifndef QZENGINE_LETTERS_H
#define QZENGINE_LETTERS_H

#include <string>
#include <string_view>

namespace qzengine {

constexpr char lower_letter(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// Equal but for the case of ASCII letters.
constexpr bool same_letters(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        if (lower_letter(a[i]) != lower_letter(b[i])) return false;
    }
    return true;
}

inline std::string lower_letters(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) c = lower_letter(c);
    return lower;
}

}  // namespace qzengine

#endif
