// Values whose implied blanks stand as real ones.
#pragma once

#include "bop/frame/arguments.h"
#include "bop/frame/call.h"
#include "bop/frame/memory.h"
#include "qzbifun/records.h"

namespace bifun {

// Makes out_slot the value of slot written out: its text and then its blanks, in a block of rt_mem that is the caller's to give
// back; blank is 0. Nothing happens when the two are the same slot. EC_OUT_OF_MEMORY: out_slot is as before.
int32_t colstr_expand_blanks(qz_env* env, rt_memobj* rt_mem, bdta3_colstr* out_slot, const bdta3_colstr* slot);

// A text written out, for as long as this lives.
class WrittenOut {
  public:
    explicit WrittenOut(const Call& call) : call_(call) {}
    ~WrittenOut() { release_block(call_.env, call_.rt_mem, slot_.bytes); }
    WrittenOut(const WrittenOut&) = delete;
    WrittenOut& operator=(const WrittenOut&) = delete;

    // Once. EC_OUT_OF_MEMORY.
    Code expand(const Text& text) {
        const bdta3_colstr slot{text.len, text.blank, text.bytes};
        return Code{colstr_expand_blanks(call_.env, call_.rt_mem, &slot_, &slot)};
    }

    char* bytes() const { return slot_.bytes; }
    uint32_t len() const { return slot_.len; }

  private:
    const Call call_;
    bdta3_colstr slot_{0, 0, nullptr};
};

}  // namespace bifun
