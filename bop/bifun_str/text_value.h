// What a text consists of.
#pragma once

#include <cstdint>

#include "bop/frame/arguments.h"

namespace bifun {

inline Text text_of(bdta3_scalar* constant) { return ValueType<Text>::load_constant(reinterpret_cast<nstr&>(*constant)); }

inline bool is_empty(const Text& text) { return (text.len | text.blank) == 0; }
inline bool is_all_blank(const Text& text) { return text.len == 0 && text.blank != 0; }
inline uint64_t total_bytes(const Text& text) { return uint64_t{text.len} + text.blank; }

}  // namespace bifun
