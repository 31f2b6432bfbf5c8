// nvl(a, b): a where it has a value, b elsewhere.
//
// The result starts out as a copy of a, whose gaps are then filled from b. all_valid is a's, which comes with the copy, and
// only ever lowered: b may fill every gap, and the flag still tells the reader to look.
//
// In compatibility mode 2 an empty string is no value, in a and in b.
#include "bop/bifun_math/replace_rows.h"
#include "bop/frame/export.h"
#include "bop/switches.h"
#include "qzbifun/conditional.h"

namespace bifun {
namespace {

// ---- Fixed widths ---------------------------------------------------------------------------------------------------------

template <class T>
struct Nvl {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* a, bdta3_col* b) {
        result->all_valid = a->all_valid & b->all_valid;
        return fill_gaps(call, result, nrows, a, b);
    }

    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* a, bdta3_scalar* b) {
        // Any has_value but 0 fills a row with a valid byte of 1.
        auto constant = reinterpret_cast<typename ValueType<T>::Record&>(*b);
        constant.has_value = constant.has_value != 0;
        result->all_valid = a->all_valid & constant.has_value;
        return fill_gaps(call, result, nrows, a, reinterpret_cast<bdta3_scalar*>(&constant));
    }

    template <class Slot>
    static int32_t fill_gaps(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* a, Slot* b) {
        if (const Code code = copy_vector(call, result, a, nrows); code.failed()) return code.value;
        const auto is_null = [](const auto& row, uint32_t i) { return row.valid_at(i) == 0; };
        replace_rows<T, T>(result, nrows, is_null, a, b);
        return 0;
    }
};

// ---- Strings and binaries -------------------------------------------------------------------------------------------------

bool is_empty_string(const Text& text) { return text.len == 0 && text.blank == 0; }
bool is_empty_binary(const Text& data) { return data.len == 0; }

bool empty_is_null() { return switches.compat_mode == 2; }

template <class A>
bool has_value(const A& access, uint32_t i, bool with_empty, bool (*is_empty)(const Text&)) {
    return access.valid_at(i) != 0 && (with_empty || !is_empty(access.value_at(i)));
}

// A failed store clears the row. The batch function reports it in the string form with a constant alone.
struct NvlString {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* a, bdta3_col* b) {
        result->all_valid = a->all_valid & b->all_valid;
        if (const Code code = copy_vector(call, result, a, nrows); code.failed()) return code.value;
        const bool with_empty = !empty_is_null();
        const auto rows = [&](const auto& first, const auto& second) -> int32_t {
            for (uint32_t i = 0; i < nrows; ++i) {
                if (has_value(first, i, with_empty, is_empty_string)) continue;
                if (const Code code = take(call, result, i, second, with_empty); code.failed()) return code.value;
            }
            return 0;
        };
        return with_access<std::tuple<Text, Text>, false>(rows, a, b);
    }

    // Bytes of valid other than 0 and 1 lower the flag, though the row has its value.
    template <class A>
    static Code take(const Call& call, bdta3_col* result, uint32_t i, const A& b, bool with_empty) {
        uint8_t& valid = result->data->valid[i];
        valid = b.valid_at(i);
        if (valid != 1) result->all_valid = 0;
        if (valid == 0) return kOk;
        const Text text = b.value_at(i);
        if (is_empty_string(text) && !with_empty) {
            valid = 0;
            result->all_valid = 0;
            return kOk;
        }
        const bdta3_colstr source{text.len, text.blank, text.bytes};
        bdta3_colstr* const slot = static_cast<bdta3_colstr*>(result->data->values) + i;
        const Code code{bdta3_colstr_copy(call.env, call.rt_mem, result->data, slot, &source)};
        if (code.failed()) valid = 0;
        return code;
    }

    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* a, bdta3_scalar* b);
};

Code store_string(const Call& call, bdta3_col* result, uint32_t i, const Text& text) {
    return Code{bdta3_col_assign_str(call.env, call.rt_mem, result, i, text.bytes, text.len, text.blank)};
}
Code store_binary(const Call& call, bdta3_col* result, uint32_t i, const Text& data) {
    return Code{bdta3_col_assign_bin(call.env, call.rt_mem, result, i, data.bytes, data.len)};
}

// A constant b, which is usable in all rows or in none.
template <auto kIsEmpty, auto kStore, bool kReportsStore>
int32_t fill_with_constant(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* a, bdta3_scalar* b) {
    result->all_valid = a->all_valid & (b->has_value != 0);
    if (const Code code = copy_vector(call, result, a, nrows); code.failed()) return code.value;
    const bool with_empty = !empty_is_null();
    const Text text = ValueType<Text>::load_constant(reinterpret_cast<nstr&>(*b));
    const bool usable = b->has_value != 0 && (with_empty || !kIsEmpty(text));
    const auto rows = [&](const auto& first) -> int32_t {
        for (uint32_t i = 0; i < nrows; ++i) {
            if (has_value(first, i, with_empty, kIsEmpty)) continue;
            uint8_t& valid = result->data->valid[i];
            valid = usable;
            if (!usable) {
                result->all_valid = 0;
                continue;
            }
            if (const Code code = kStore(call, result, i, text); code.failed()) {
                valid = 0;
                if (kReportsStore) qzerr_stk_push(call.env, code.value, call.name);
                return code.value;
            }
        }
        return 0;
    };
    return with_access<std::tuple<Text>, false>(rows, a);
}

int32_t NvlString::batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* a, bdta3_scalar* b) {
    return fill_with_constant<is_empty_string, store_string, true>(call, result, nrows, a, b);
}

struct NvlBinary {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* a, bdta3_scalar* b) {
        return fill_with_constant<is_empty_binary, store_binary, false>(call, result, nrows, a, b);
    }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_2(bnvl_int_aa, Nvl<int32_t>, a, a)
BIFUN_EXPORT_2(bnvl_int_av, Nvl<int32_t>, a, v)
BIFUN_EXPORT_2(bnvl_int64_aa, Nvl<int64_t>, a, a)
BIFUN_EXPORT_2(bnvl_int64_av, Nvl<int64_t>, a, v)
BIFUN_EXPORT_2(bnvl_double_aa, Nvl<double>, a, a)
BIFUN_EXPORT_2(bnvl_double_av, Nvl<double>, a, v)
BIFUN_EXPORT_2(bnvl_dec_aa, Nvl<xdec>, a, a)
BIFUN_EXPORT_2(bnvl_dec_av, Nvl<xdec>, a, v)
BIFUN_EXPORT_2(bnvl_date_aa, Nvl<qztime>, a, a)
BIFUN_EXPORT_2(bnvl_date_av, Nvl<qztime>, a, v)

BIFUN_EXPORT_2(bnvl_varchar_aa, NvlString, a, a)
BIFUN_EXPORT_2(bnvl_varchar_av, NvlString, a, v)
BIFUN_EXPORT_2(bnvl_varbinary_av, NvlBinary, a, v)
