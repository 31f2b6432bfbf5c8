// Texts of several rows that stand one behind the other: what is asked of one text can be asked of all at once, as long as their
// characters cannot grow together.
//
// That is so where every byte is a character of its own. No character spans two rows then, and none of a row's bytes would be
// part of a longer one in the row alone: it would be part of it in the joined text too.
//
// It is so in UTF-8 also where no text begins with a continuation byte, which all bytes of a character but its first are, and no
// others. No character reaches into the next text then, and a sequence that a text cuts off is malformed in the joined text too.
#pragma once

#include <cstdint>

#include "qzbifun/codes.h"
#include "qzhost/parameters.h"

namespace bifun {

inline bool host_takes_utf8() { return ini_get_value(0, SERVER_CHARSET) == 1; }

inline bool begins_utf8_character(char byte) { return (static_cast<uint8_t>(byte) & 0xC0) != 0x80; }

}  // namespace bifun
