// What a fuzz target demands of a result: a breach ends the run, as a crash does.
#pragma once

#include <cstdlib>

inline void require(bool holds) {
    if (!holds) std::abort();
}
