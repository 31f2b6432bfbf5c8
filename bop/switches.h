// The three switches of the process, as bifun_dll_var_init stored them. Written once before the first batch function runs.
#pragma once

#include <cstdint>

namespace bifun {

struct Switches {
    uint32_t compat_mode;
    uint32_t charset_code;
    uint32_t case_sensitive;
};

extern Switches switches;

}  // namespace bifun
