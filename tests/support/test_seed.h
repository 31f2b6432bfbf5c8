// The seed of a randomised test.
#pragma once

#include <cstdint>

namespace support {

// The same in every run, so that a change is judged by what it changed; QZBIFUN_TEST_SEED names another, and `random` a new one
// each time, for a longer search. It is printed, so that a failure can be run again.
uint32_t test_seed();

}  // namespace support
