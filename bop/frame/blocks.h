// Vectors block by block, for loops without a branch on the row.
//
// A block's rows lie dense: those of a vector with a selection are gathered first, which costs a pass over what the first cache
// level holds and saves a loop for every combination of selections.
#pragma once

#include <algorithm>
#include <cstdint>

#include "bop/frame/access.h"
#include "bop/frame/arguments.h"

#define BIFUN_ALWAYS_INLINE [[gnu::always_inline]] inline

#if defined(__x86_64__)
#define BIFUN_HAS_WIDE_LOOPS 1
#define BIFUN_WIDE [[gnu::target("avx2,bmi,bmi2")]]
#endif

namespace bifun::frame {

// Few enough for the blocks of all arguments and of the result to stay in the first cache level between the passes.
inline constexpr uint32_t kBlockRows = 512;

#if BIFUN_HAS_WIDE_LOOPS
// Whether this machine runs the loops marked BIFUN_WIDE.
inline bool has_wide_loops() { return __builtin_cpu_supports("avx2") != 0; }
#endif

// The rows of one block, counted from its first.
template <class P>
struct BlockView {
    const Element<P>* values;
    const uint8_t* valid;

    uint8_t valid_at(uint32_t i) const { return valid[i]; }
    decltype(auto) value_at(uint32_t i) const { return Parameter<P>::load(values[i], valid[i]); }
};

template <class P>
class BlockedVector {
  public:
    explicit BlockedVector(const bdta3_col& col)
        : values_(static_cast<const Element<P>*>(col.data->values)), valid_(col.data->valid), sel_(col.sel) {}

    BIFUN_ALWAYS_INLINE BlockView<P> block(uint32_t begin, uint32_t end) {
        if (sel_ == nullptr) return {values_ + begin, valid_ + begin};
        for (uint32_t i = begin; i < end; ++i) {
            const uint32_t row = sel_[i];
            gathered_[i - begin] = values_[row];
            gathered_valid_[i - begin] = valid_[row];
        }
        return {gathered_, gathered_valid_};
    }

  private:
    const Element<P>* values_;
    const uint8_t* valid_;
    const uint16_t* sel_;
    alignas(64) Element<P> gathered_[kBlockRows];
    alignas(64) uint8_t gathered_valid_[kBlockRows];
};

template <class P>
class BlockedConstant {
  public:
    BlockedConstant(bdta3_scalar& scalar, uint8_t valid) : constant_(scalar, valid) {}
    BIFUN_ALWAYS_INLINE Constant<P> block(uint32_t, uint32_t) const { return constant_; }

  private:
    Constant<P> constant_;
};

template <class P, bool kReadConstants>
BlockedVector<P> blocked(const bdta3_col& col) {
    return BlockedVector<P>(col);
}

template <class P, bool kReadConstants>
BlockedConstant<P> blocked(bdta3_scalar& scalar) {
    return BlockedConstant<P>(scalar, kReadConstants ? static_cast<uint8_t>(scalar.has_value) : uint8_t{0xFF});
}

}  // namespace bifun::frame
