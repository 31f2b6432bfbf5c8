// Texts with their case folded in a copy, for a search that does not heed case.
#pragma once

#include <cstdint>
#include <cstring>

#include "bop/frame/arguments.h"
#include "bop/frame/call.h"
#include "bop/frame/scratch.h"
#include "bop/switches.h"
#include "qzhost/characters.h"

namespace bifun {

// Any string fits, with a byte to spare.
inline constexpr uint32_t kTextBuffer = 32768;

inline bool heeds_case() { return switches.case_sensitive != 0; }

using FoldInPlace = void(char*, uint32_t);

// The copy of up to kInFrame bytes stands in the frame.
template <uint32_t kInFrame>
class FoldedCopy {
  public:
    FoldedCopy() {}

    // EC_OUT_OF_MEMORY, which nobody has pushed.
    Code make(const Call& call, const Text& text, FoldInPlace* fold) {
        char* const bytes = room_.take(call.env, call.rt_mem, text.len);
        if (bytes == nullptr) return Code{EC_OUT_OF_MEMORY};
        if (text.len != 0) std::memcpy(bytes, text.bytes, text.len);
        fold(bytes, text.len);
        text_ = {bytes, text.len, text.blank};
        return kOk;
    }

    const Text& text() const { return text_; }

  private:
    Text text_;
    Scratch<char, kInFrame> room_;
};

}  // namespace bifun
