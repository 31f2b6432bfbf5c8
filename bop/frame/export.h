// The rows of the export table: each exported name stands once, literally, beside its worker and the form of its arguments.
//
//   BIFUN_EXPORT_2(bgreatest_av_do_math_dbl, GreatestDouble, a, v)
//
// The name's own letters are held against the form when it is compiled, the declaration in the public header by the compiler.
#pragma once

#include <string_view>

#include "bop/frame/run.h"

namespace bifun::form {

using a = bdta3_col;
using v = bdta3_scalar;

// Whether the letters stand in the name, between underscores or at its end.
constexpr bool in_name(std::string_view name, std::string_view letters) {
    for (size_t at = name.find(letters); at != std::string_view::npos; at = name.find(letters, at + 1)) {
        const size_t behind = at + letters.size();
        if (at > 0 && name[at - 1] == '_' && (behind == name.size() || name[behind] == '_')) return true;
    }
    return false;
}

}  // namespace bifun::form

#define BIFUN_EXPORT extern "C" [[gnu::visibility("default")]]

#define BIFUN_EXPORT_1(name, Worker, f0)                                                                                \
    static_assert(bifun::form::in_name(#name, #f0), "the name tells another form");                                     \
    BIFUN_EXPORT int32_t name(qz_env* env, rt_memobj* rt_mem, bifun::form::f0* x0, bdta3_col* result, uint32_t nrows) { \
        return bifun::run<Worker>(bifun::Call{env, rt_mem, #name}, result, nrows, x0);                                  \
    }

#define BIFUN_EXPORT_2(name, Worker, f0, f1)                                                                               \
    static_assert(bifun::form::in_name(#name, #f0 #f1), "the name tells another form");                                    \
    BIFUN_EXPORT int32_t name(qz_env* env, rt_memobj* rt_mem, bifun::form::f0* x0, bifun::form::f1* x1, bdta3_col* result, \
                              uint32_t nrows) {                                                                            \
        return bifun::run<Worker>(bifun::Call{env, rt_mem, #name}, result, nrows, x0, x1);                                 \
    }

#define BIFUN_EXPORT_3(name, Worker, f0, f1, f2)                                                                             \
    static_assert(bifun::form::in_name(#name, #f0 #f1 #f2), "the name tells another form");                                  \
    BIFUN_EXPORT int32_t name(qz_env* env, rt_memobj* rt_mem, bifun::form::f0* x0, bifun::form::f1* x1, bifun::form::f2* x2, \
                              bdta3_col* result, uint32_t nrows) {                                                           \
        return bifun::run<Worker>(bifun::Call{env, rt_mem, #name}, result, nrows, x0, x1, x2);                               \
    }

#define BIFUN_EXPORT_4(name, Worker, f0, f1, f2, f3)                                                                         \
    static_assert(bifun::form::in_name(#name, #f0 #f1 #f2 #f3), "the name tells another form");                              \
    BIFUN_EXPORT int32_t name(qz_env* env, rt_memobj* rt_mem, bifun::form::f0* x0, bifun::form::f1* x1, bifun::form::f2* x2, \
                              bifun::form::f3* x3, bdta3_col* result, uint32_t nrows) {                                      \
        return bifun::run<Worker>(bifun::Call{env, rt_mem, #name}, result, nrows, x0, x1, x2, x3);                           \
    }

#define BIFUN_EXPORT_5(name, Worker, f0, f1, f2, f3, f4)                                                                     \
    static_assert(bifun::form::in_name(#name, #f0 #f1 #f2 #f3 #f4), "the name tells another form");                          \
    BIFUN_EXPORT int32_t name(qz_env* env, rt_memobj* rt_mem, bifun::form::f0* x0, bifun::form::f1* x1, bifun::form::f2* x2, \
                              bifun::form::f3* x3, bifun::form::f4* x4, bdta3_col* result, uint32_t nrows) {                 \
        return bifun::run<Worker>(bifun::Call{env, rt_mem, #name}, result, nrows, x0, x1, x2, x3, x4);                       \
    }
