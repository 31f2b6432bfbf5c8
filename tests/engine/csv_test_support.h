// CSV text in memory as the input of readers and queries.
#pragma once

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "engine/csv_reader.h"

namespace qzengine {

// Gives the text out in pieces of at most so many bytes.
inline ByteSource text_source(std::string text, size_t piece = size_t{1} << 20) {
    struct State {
        std::string text;
        size_t at = 0;
    };
    auto state = std::make_shared<State>(State{std::move(text), 0});
    return [state, piece](char* buffer, size_t size) {
        const size_t n = std::min({size, piece, state->text.size() - state->at});
        std::memcpy(buffer, state->text.data() + state->at, n);
        state->at += n;
        return n;
    };
}

}  // namespace qzengine
