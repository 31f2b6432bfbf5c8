// Prints the absolute values of its arguments, computed in one call. C++ owners release what the host made.
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>

#include "qzbifun/qzbifun.h"
#include "qzhost/control.h"

namespace {

template <auto release>
struct Release {
    template <class T>
    void operator()(T* object) const {
        release(object);
    }
};
using Environment = std::unique_ptr<qz_env, Release<host_env_destroy>>;
using Memory = std::unique_ptr<rt_memobj, Release<host_memobj_destroy>>;
using Column = std::unique_ptr<bdta3_col, Release<host_col_destroy>>;

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2 || argc > 1000) return 2;
    const auto rows = static_cast<std::uint32_t>(argc - 1);

    bifun_dll_var_init(0, 1, 1);
    const Environment env{host_env_create()};
    const Memory memory{env ? host_memobj_create(env.get()) : nullptr};
    if (!memory) return 1;
    const Column numbers{host_col_create(env.get(), memory.get(), HOST_INT64, rows)};
    const Column result{host_col_create(env.get(), memory.get(), HOST_INT64, rows)};
    if (!numbers || !result) return 1;

    for (std::uint32_t i = 0; i < rows; ++i) {
        static_cast<std::int64_t*>(numbers->data->values)[i] = std::strtoll(argv[i + 1], nullptr, 10);
        numbers->data->valid[i] = 1;
    }
    numbers->all_valid = 1;

    if (const int code = babs_a_math_int(env.get(), memory.get(), numbers.get(), result.get(), rows); code < 0) {
        std::cerr << host_error_text(code) << '\n';
        return 1;
    }
    for (std::uint32_t i = 0; i < rows; ++i) {
        std::cout << (i == 0 ? "" : " ") << static_cast<std::int64_t*>(result->data->values)[i];
    }
    std::cout << '\n';
    return 0;
}
