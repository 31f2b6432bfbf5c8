#include "bop/switches.h"

#include "qzbifun/qzbifun.h"

namespace bifun {

Switches switches{};

}  // namespace bifun

extern "C" [[gnu::visibility("default")]] void bifun_dll_var_init(uint32_t compat_mode, uint32_t charset_code,
                                                                  uint32_t case_sensitive) {
    bifun::switches = {compat_mode, charset_code, case_sensitive};
}
