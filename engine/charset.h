/*
 * The character set of columns and results, and UTF-8.
 *
 * Strings of columns and results are in the character set of the host's parameter SERVER_CHARSET. Expressions, names, messages,
 * and what is written for people or as JSON are UTF-8.
 */
#ifndef QZENGINE_CHARSET_H
#define QZENGINE_CHARSET_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace qzengine {

// "utf8", "gb18030" or "euc-kr".
std::string_view charset_name();
bool columns_are_utf8();

// A text of columns as UTF-8. Where bytes are no character of the set, or one that Unicode does not have, U+FFFD stands.
std::string to_utf8(std::string_view text);

// The same without a copy where the text is ASCII: the text itself, or storage.
std::string_view to_utf8(std::string_view text, std::string& storage);

// UTF-8 in the character set of columns; nothing when that does not have each of its characters. In a file of UTF-8 nothing is
// changed or refused.
std::optional<std::string> from_utf8(std::string_view text);

// The first character of the text that from_utf8 refuses.
std::string_view first_unwritable(std::string_view text);

// Well-formed UTF-8: U+FFFD in place of what is not.
std::string well_formed(std::string_view text);

// Columns of a terminal that UTF-8 text takes: two for a wide character of East Asia, none for a mark over the one before.
size_t display_width(std::string_view text);

}  // namespace qzengine

#endif
