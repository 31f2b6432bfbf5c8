// A string value of a call's own, given back at its end.
#pragma once

#include "bop/frame/arguments.h"
#include "qzhost/string_value.h"

namespace bifun {

class LocalString {
  public:
    LocalString() {}
    ~LocalString() {
        if (taken_) nstr_clear(env_, rt_mem_, &value_);
    }
    LocalString(const LocalString&) = delete;
    LocalString& operator=(const LocalString&) = delete;

    // Each takes one value, and only one. 0, or the service's code; there is no value then.
    int32_t write_out(qz_env* env, rt_memobj* rt_mem, const Text& text) {
        return take(env, rt_mem, nstr_assign_with_blank_no_clear_ex(env, rt_mem, &value_, text.bytes, text.len, text.blank));
    }
    int32_t copy(qz_env* env, rt_memobj* rt_mem, const nstr& source) {
        return take(env, rt_mem, nstr_assign(env, rt_mem, &value_, &source));
    }

    bool taken() const { return taken_; }
    Text text() { return ValueType<Text>::load_constant(value_); }

  private:
    int32_t take(qz_env* env, rt_memobj* rt_mem, int32_t code) {
        taken_ = code >= 0;
        env_ = env;
        rt_mem_ = rt_mem;
        return code;
    }

    nstr value_;
    qz_env* env_ = nullptr;
    rt_memobj* rt_mem_ = nullptr;
    bool taken_ = false;
};

}  // namespace bifun
