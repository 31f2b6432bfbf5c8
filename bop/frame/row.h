// The output row that a worker stores for itself.
#pragma once

#include "bop/frame/call.h"
#include "qzhost/column.h"
#include "qzhost/error.h"

namespace bifun {

class Row {
  public:
    // valid and values are those of result, read once a batch: a store through a byte pointer may alias every field.
    Row(const Call& call, bdta3_col* result, uint8_t* valid, void* values, uint32_t index)
        : call_(call), result_(result), valid_(valid), values_(values), index_(index) {}

    qz_env* env() const { return call_.env; }
    rt_memobj* rt_mem() const { return call_.rt_mem; }
    bdta3_col* result() const { return result_; }
    uint32_t index() const { return index_; }

    bool is_valid() const { return valid_[index_] != 0; }

    // The row's element, to be filled in place; stored() marks it as the fixed-width setters do.
    template <class T>
    T& slot() const {
        return static_cast<T*>(values_)[index_];
    }
    Code stored() const {
        valid_[index_] = 1;
        return kOk;
    }

    template <class T>
    Code put(const T& value) const {
        slot<T>() = value;
        return stored();
    }

    // Stores a copy of a text.
    Code put_text(const char* text, uint32_t len, uint32_t blank = 0) const {
        return Code{bdta3_col_assign_str(call_.env, call_.rt_mem, result_, index_, text, len, blank)};
    }

    // A NULL that keeps a value behind it; all_valid is left alone.
    template <class T>
    Code put_null(const T& value) const {
        slot<T>() = value;
        valid_[index_] = 0;
        return kOk;
    }

    // A row that turns NULL though its arguments were not. The worker's rules store all_valid before the rows.
    Code set_null() const {
        valid_[index_] = 0;
        result_->all_valid = 0;
        return kOk;
    }

    // Reports what the worker found, under the worker's name.
    Code fail(int32_t code, const char* worker) const {
        qzerr_stk_push(call_.env, code, worker);
        return Code{code};
    }

  private:
    const Call& call_;
    bdta3_col* result_;
    uint8_t* valid_;
    void* values_;
    uint32_t index_;
};

}  // namespace bifun
