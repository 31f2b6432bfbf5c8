// concat(a, b).
//
// Blanks stay a count as long as no text follows them: 'a' with two blanks and 'b' is 'a  b', with an empty text it is 'a' with
// two blanks. The limit is on stored bytes, so that a value may be longer than 32767 with its blanks. One operand alone is
// handed on: b whatever its length, a up to the limit, and beyond it under another code than that of the two together.
#include <cstring>

#include "bop/bifun_str/text.h"
#include "bop/bifun_str/text_groups.h"
#include "bop/frame/export.h"
#include "bop/frame/masked_moves.h"
#include "qzbifun/string.h"

namespace bifun {
namespace {

// What a row stores: a value, then its blanks as far as they are written out, then the other value. A NULL brings nothing.
struct Joint {
    Text a, b;
    uint32_t written;

    Joint(const Nullable<Text>& first, const Nullable<Text>& second)
        : a(of(first)), b(of(second)), written(b.len != 0 ? a.blank : 0) {}

    // Without a branch on the row.
    static Text of(const Nullable<Text>& operand) {
        const uint32_t present = operand.valid != 0 ? ~0u : 0u;
        return {operand.value.bytes, operand.value.len & present, operand.value.blank & present};
    }

    uint64_t len() const { return uint64_t{a.len} + written + b.len; }
    uint64_t blank() const { return uint64_t{a.blank - written} + b.blank; }

    template <class Moves>
    BIFUN_ALWAYS_INLINE void write(char* to) const {
        Moves::copy(to, a.bytes, a.len);
        if (written != 0) std::memset(to + a.len, ' ', written);
        Moves::copy(to + a.len + written, b.bytes, b.len);
    }
};

template <class Form>
struct ConcatRow {
    static constexpr Rules rules{.row_null = RowNull::kAll, .on_failure = OnFailure::kClear};

    static Code row(Row out, const Nullable<Text>& a, const Nullable<Text>& b) {
        const Joint joint(a, b);
        const uint64_t len = joint.len();
        // More blanks than a slot can count are too many as well.
        if (a.valid != 0 && (len > kMostTextBytes || joint.blank() > UINT32_MAX)) {
            return Code{b.valid != 0 ? EC_STRING_TOO_LONG : EC_INVALID_ARGUMENT};
        }
        char* const to = reserve_text(out, static_cast<uint32_t>(len), static_cast<uint32_t>(joint.blank()));
        if (len == 0) return kOk;
        if (to == nullptr) return out.fail(EC_OUT_OF_MEMORY, Form::kWorker);
        joint.write<PlainMoves>(to);
        return kOk;
    }
};

template <class Form, class A, class B>
struct ConcatRows {
    const Call& call;
    frame::Output out;
    A a;
    B b;

    uint64_t bytes(uint32_t i) const {
        const Joint joint(a.value_at(i), b.value_at(i));
        return joint.blank() > UINT32_MAX ? UINT64_MAX : joint.len();
    }

    int32_t group(const TextGroup& group) const {
        with_moves([&]<class Moves>(Moves) BIFUN_INLINE_LAMBDA { join<Moves>(group, out, a, b); });
        return 0;
    }

    template <class Moves>
    BIFUN_ALWAYS_INLINE static void join(const TextGroup& group, const frame::Output out, const A a, const B b) {
        auto* const slots = static_cast<bdta3_colstr*>(out.values);
        for (uint32_t k = 0; k < group.rows; ++k) {
            const uint32_t i = group.begin + k;
            out.valid[i] = static_cast<uint8_t>(a.valid_at(i) | b.valid_at(i));
            if (out.valid[i] == 0) continue;
            const Joint joint(a.value_at(i), b.value_at(i));
            slots[i] = {group.len(k), static_cast<uint32_t>(joint.blank()), group.text(k)};
            joint.template write<Moves>(group.text(k));
        }
    }

    int32_t each(uint32_t begin, uint32_t end) const {
        ConcatRow<Form> worker;
        return frame::each_row(worker, call, out, begin, end, a, b);
    }
};

template <class Form, class... Slot>
int32_t concat_rows(const Call& call, bdta3_col* result, uint32_t nrows, Slot*... slot) {
    const auto rows = [&]<class A, class B>(const A& a, const B& b) {
        return rows_in_groups(call, result, nrows, ConcatRows<Form, A, B>{call, frame::Output(result), a, b});
    };
    return nrows == 0 ? 0 : with_access<std::tuple<Nullable<Text>, Nullable<Text>>, true>(rows, slot...);
}

// Unlike its kin it looks at the rows: the flag is 1 where none came out NULL.
struct ConcatVectors {
    static constexpr const char* kWorker = "bconcat_aa_process";

    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* a, bdta3_col* b) {
        const int32_t code = concat_rows<ConcatVectors>(call, result, nrows, a, b);
        if (code < 0) return code;
        result->all_valid = nrows == 0 || std::memchr(result->data->valid, 0, nrows) == nullptr;
        return 0;
    }
};

// Any has_value but 0 is a value. Its low byte enters the valid bytes of the rows, so that it must not be 0.
nstr with_value_in_low_byte(const bdta3_scalar* constant) {
    nstr copy = reinterpret_cast<const nstr&>(*constant);
    if (copy.has_value != 0 && static_cast<uint8_t>(copy.has_value) == 0) copy.has_value = 1;
    return copy;
}

struct ConcatWithConstant {
    static constexpr const char* kWorker = "bconcat_av_process";

    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* a, bdta3_scalar* b) {
        nstr constant = with_value_in_low_byte(b);
        result->all_valid = frame::flag_of(*a) | frame::flag_of(*b);
        return concat_rows<ConcatWithConstant>(call, result, nrows, a, reinterpret_cast<bdta3_scalar*>(&constant));
    }
};

struct ConcatToConstant {
    static constexpr const char* kWorker = "bconcat_va_process";

    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_scalar* a, bdta3_col* b) {
        nstr constant = with_value_in_low_byte(a);
        result->all_valid = frame::flag_of(*a) | frame::flag_of(*b);
        return concat_rows<ConcatToConstant>(call, result, nrows, reinterpret_cast<bdta3_scalar*>(&constant), b);
    }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_2(bconcat_aa_str, ConcatVectors, a, a)
BIFUN_EXPORT_2(bconcat_av_str, ConcatWithConstant, a, v)
BIFUN_EXPORT_2(bconcat_va_str, ConcatToConstant, v, a)
