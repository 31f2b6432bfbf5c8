// One call of a batch function, and the code a step of it comes to.
#pragma once

#include <cstdint>

#include "qzbifun/codes.h"
#include "qzbifun/records.h"

namespace bifun {

// A return code, of a type of its own so that it is never taken for an int result.
struct [[nodiscard]] Code {
    int32_t value = 0;
    constexpr bool failed() const { return value < 0; }
};

inline constexpr Code kOk{};

struct Call {
    qz_env* env;
    rt_memobj* rt_mem;
    const char* name;  // of the exported function
};

// What a worker's preparation decides before the first row.
struct [[nodiscard]] Start {
    enum class Next : uint8_t {
        kRows,     // go on
        kAllNull,  // all rows are NULL: all_valid and valid[0..nrows) are cleared, no value is touched
        kStop,     // return the code; nothing is written
    };
    Next next = Next::kRows;
    Code code;

    static constexpr Start rows() { return {}; }
    static constexpr Start all_null() { return {Next::kAllNull, kOk}; }
    static constexpr Start stop(Code code) { return {Next::kStop, code}; }
};

}  // namespace bifun
