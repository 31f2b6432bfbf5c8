// condition ? then : else, over a condition that is computed already.
//
// A condition row is true when its element is 1: its valid byte is never read, so a NULL condition is decided by what stands in
// its row. A constant condition is true when its has_value word is 1, and its value is not read.
//
// The forms with a vector to choose from fill the result with it and replace the rows that take the other argument. all_valid
// is that of the copied vector, or what the caller stored, and is only ever lowered.
#include <cstring>

#include "bop/bifun_math/replace_rows.h"
#include "bop/frame/export.h"
#include "bop/frame/memory.h"
#include "qzbifun/conditional.h"

namespace bifun {
namespace {

constexpr int32_t kTrue = 1;

// ---- Fixed widths ---------------------------------------------------------------------------------------------------------

template <bool kWhen, class Access>
bool is_condition(const Access& condition, uint32_t i) {
    return (condition.value_at(i) == kTrue) == kWhen;
}

template <class T>
struct IfFixed {
    static Nullable<T> constant_of(bdta3_scalar* constant) {
        return Parameter<Nullable<T>>::load_constant(reinterpret_cast<typename ValueType<T>::Record&>(*constant));
    }

    // The rows whose condition is kWhen take the argument.
    template <bool kWhen, class Slot>
    static void replace(bdta3_col* result, uint32_t nrows, bdta3_col* condition, Slot* argument) {
        const auto is_chosen = [](const auto& rows, uint32_t i) { return is_condition<kWhen>(rows, i); };
        if (replace_rows<T, int32_t>(result, nrows, is_chosen, condition, argument)) result->all_valid = 0;
    }

    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* condition, bdta3_col* yes,
                         bdta3_col* no) {
        if (const Code code = copy_vector(call, result, yes, nrows); code.failed()) return code.value;
        replace<false>(result, nrows, condition, no);
        return 0;
    }
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* condition, bdta3_col* yes,
                         bdta3_scalar* no) {
        if (const Code code = copy_vector(call, result, yes, nrows); code.failed()) return code.value;
        replace<false>(result, nrows, condition, no);
        return 0;
    }
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* condition, bdta3_scalar* yes,
                         bdta3_col* no) {
        if (const Code code = copy_vector(call, result, no, nrows); code.failed()) return code.value;
        replace<true>(result, nrows, condition, yes);
        return 0;
    }
    static int32_t batch(const Call&, bdta3_col* result, uint32_t nrows, bdta3_col* condition, bdta3_scalar* yes,
                         bdta3_scalar* no) {
        const auto is_chosen = [](const auto& rows, uint32_t i) { return is_condition<true>(rows, i); };
        const bool some_null = choose_rows<T, int32_t>(result, nrows, is_chosen, condition, constant_of(yes), constant_of(no));
        if (some_null) result->all_valid = 0;
        return 0;
    }
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_scalar* condition, bdta3_scalar* yes,
                         bdta3_col* no) {
        if (condition->has_value != kTrue) return bdta3_col_copy(call.env, call.rt_mem, result, no, nrows);
        const Nullable<T> value = constant_of(yes);
        for (uint32_t i = 0; i < nrows; ++i) static_cast<T*>(result->data->values)[i] = value.value;
        if (nrows != 0) std::memset(result->data->valid, value.valid, nrows);
        if (nrows != 0 && value.valid == 0) result->all_valid = 0;
        return 0;
    }
};

// ---- Strings --------------------------------------------------------------------------------------------------------------

struct IfString {
    // Gives back the text of a row that was copied, where it is a block of its own. The slot is empty then, should the row's
    // new text fail to be stored.
    static void release_text(const Call& call, bdta3_col* result, uint32_t i) {
        if (result->data->valid[i] != 1) return;
        bdta3_colstr& slot = static_cast<bdta3_colstr*>(result->data->values)[i];
        if (bdta3_str_is_in_local(result->data, slot.bytes) != 0) return;
        release_block(call.env, call.rt_mem, slot.bytes);
        slot = {0, 0, nullptr};
    }

    // A row that cannot be stored keeps its valid byte.
    static Code take(const Call& call, bdta3_col* result, uint32_t i, const Nullable<Text>& other) {
        if (other.valid != 0) {
            const Text& text = other.value;
            const Code code{bdta3_col_assign_str(call.env, call.rt_mem, result, i, text.bytes, text.len, text.blank)};
            if (code.failed()) {
                qzerr_stk_push(call.env, code.value, call.name);
                return code;
            }
        }
        result->data->valid[i] = other.valid;
        if (other.valid == 0) result->all_valid = 0;
        return kOk;
    }

    template <bool kReplacedWhen, class Slot>
    static int32_t copy_and_replace(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* condition,
                                    bdta3_col* copied, Slot* other) {
        if (const Code code = copy_vector(call, result, copied, nrows); code.failed()) return code.value;
        const auto rows = [&](const auto& test, const auto& replacement) -> int32_t {
            for (uint32_t i = 0; i < nrows; ++i) {
                if (!is_condition<kReplacedWhen>(test, i)) continue;
                release_text(call, result, i);
                if (const Code code = take(call, result, i, replacement.value_at(i)); code.failed()) return code.value;
            }
            return 0;
        };
        return with_access<std::tuple<int32_t, Nullable<Text>>, false>(rows, condition, other);
    }

    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* condition, bdta3_col* yes,
                         bdta3_col* no) {
        return copy_and_replace<false>(call, result, nrows, condition, yes, no);
    }
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* condition, bdta3_col* yes,
                         bdta3_scalar* no) {
        return copy_and_replace<false>(call, result, nrows, condition, yes, no);
    }
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* condition, bdta3_scalar* yes,
                         bdta3_col* no) {
        return copy_and_replace<true>(call, result, nrows, condition, no, yes);
    }

    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* condition, bdta3_scalar* yes,
                         bdta3_scalar* no) {
        const auto rows = [&](const auto& test, const auto& yes_value, const auto& no_value) -> int32_t {
            for (uint32_t i = 0; i < nrows; ++i) {
                const Nullable<Text>& text = test.value_at(i) == kTrue ? yes_value.value_at(i) : no_value.value_at(i);
                if (const Code code = take(call, result, i, text); code.failed()) return code.value;
            }
            return 0;
        };
        return with_access<std::tuple<int32_t, Nullable<Text>, Nullable<Text>>, false>(rows, condition, yes, no);
    }

    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_scalar* condition, bdta3_scalar* yes,
                         bdta3_col* no) {
        if (condition->has_value != kTrue) return bdta3_col_copy(call.env, call.rt_mem, result, no, nrows);
        const Nullable<Text> text = Parameter<Nullable<Text>>::load_constant(reinterpret_cast<nstr&>(*yes));
        for (uint32_t i = 0; i < nrows; ++i) {
            if (const Code code = take(call, result, i, text); code.failed()) return code.value;
        }
        return 0;
    }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_3(bifoperator_int_aaa, IfFixed<int32_t>, a, a, a)
BIFUN_EXPORT_3(bifoperator_int_aav, IfFixed<int32_t>, a, a, v)
BIFUN_EXPORT_3(bifoperator_int_ava, IfFixed<int32_t>, a, v, a)
BIFUN_EXPORT_3(bifoperator_int_avv, IfFixed<int32_t>, a, v, v)
BIFUN_EXPORT_3(bifoperator_int_vva, IfFixed<int32_t>, v, v, a)

BIFUN_EXPORT_3(bifoperator_int64_aaa, IfFixed<int64_t>, a, a, a)
BIFUN_EXPORT_3(bifoperator_int64_aav, IfFixed<int64_t>, a, a, v)
BIFUN_EXPORT_3(bifoperator_int64_ava, IfFixed<int64_t>, a, v, a)
BIFUN_EXPORT_3(bifoperator_int64_avv, IfFixed<int64_t>, a, v, v)
BIFUN_EXPORT_3(bifoperator_int64_vva, IfFixed<int64_t>, v, v, a)

BIFUN_EXPORT_3(bifoperator_dec_aaa, IfFixed<xdec>, a, a, a)
BIFUN_EXPORT_3(bifoperator_dec_aav, IfFixed<xdec>, a, a, v)
BIFUN_EXPORT_3(bifoperator_dec_ava, IfFixed<xdec>, a, v, a)
BIFUN_EXPORT_3(bifoperator_dec_avv, IfFixed<xdec>, a, v, v)
BIFUN_EXPORT_3(bifoperator_dec_vva, IfFixed<xdec>, v, v, a)

BIFUN_EXPORT_3(bifoperator_double_aaa, IfFixed<double>, a, a, a)
BIFUN_EXPORT_3(bifoperator_double_aav, IfFixed<double>, a, a, v)
BIFUN_EXPORT_3(bifoperator_double_ava, IfFixed<double>, a, v, a)
BIFUN_EXPORT_3(bifoperator_double_avv, IfFixed<double>, a, v, v)
BIFUN_EXPORT_3(bifoperator_double_vva, IfFixed<double>, v, v, a)

BIFUN_EXPORT_3(bifoperator_varchar_aaa, IfString, a, a, a)
BIFUN_EXPORT_3(bifoperator_varchar_aav, IfString, a, a, v)
BIFUN_EXPORT_3(bifoperator_varchar_ava, IfString, a, v, a)
BIFUN_EXPORT_3(bifoperator_varchar_avv, IfString, a, v, v)
BIFUN_EXPORT_3(bifoperator_varchar_vva, IfString, v, v, a)
