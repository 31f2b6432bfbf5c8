// Working memory of a call that stands in the frame while it is short.
#pragma once

#include <cstdint>

#include "bop/frame/memory.h"

namespace bifun {

// Up to kInFrame entries in place, more in a block of the memory object. Made empty and uninitialised, whatever its size.
template <class T, uint32_t kInFrame>
class Scratch {
  public:
    Scratch() {}
    ~Scratch() { release(); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    // Room for n entries, not set to anything, in place of what was taken before. NULL on exhaustion. file and line are the
    // caller's; clang 14 lacks std::source_location.
    T* take(qz_env* env, rt_memobj* rt_mem, uint32_t n, const char* file = __builtin_FILE(), int32_t line = __builtin_LINE()) {
        release();
        if (n <= kInFrame) return frame_;
        env_ = env;
        rt_mem_ = rt_mem;
        block_ = static_cast<T*>(rt_mem->alloc(env, rt_mem->pool, size_t{n} * sizeof(T), file, line));
        return block_;
    }

  private:
    void release() {
        if (block_ != nullptr) release_block(env_, rt_mem_, block_);
        block_ = nullptr;
    }

    T* block_ = nullptr;
    qz_env* env_ = nullptr;
    rt_memobj* rt_mem_ = nullptr;
    T frame_[kInFrame == 0 ? 1 : kInFrame];
};

}  // namespace bifun
