#include "engine/constant.h"

#include <cstring>
#include <new>

namespace qzengine {
namespace {

template <class... F>
struct Overloaded : F... {
    using F::operator()...;
};
template <class... F>
Overloaded(F...) -> Overloaded<F...>;

}  // namespace

ConstantRecord::ConstantRecord(const Constant& constant) {
    std::memset(static_cast<void*>(&record_), 0, sizeof record_);
    record_.any.has_value = constant.is_null() ? 0 : 1;
    // A NULL text is an empty one to whoever reads its length, and its pointer is good in any case.
    if (is_slot(constant.type)) record_.as_text.nstr_ext = record_.as_text.nstr_inline;
    std::visit(Overloaded{
                   [](std::monostate) {},
                   [&](int32_t value) { record_.as_int.value = value; },
                   [&](int64_t value) { record_.as_int64.value = value; },
                   [&](const xdec& value) { record_.as_dec.value = value; },
                   [&](double value) { record_.as_double.value = value; },
                   [&](float value) { record_.as_float.value = value; },
                   [&](const qztime& value) { record_.as_datetime.value = value; },
                   [&](const qz_interval_ym& value) { record_.as_interval_ym.value = value; },
                   [&](const qz_interval_dt& value) { record_.as_interval_dt.value = value; },
                   [&](const SlotValue& value) {
                       nstr& text = record_.as_text;
                       text.len = static_cast<uint32_t>(value.bytes.size());
                       text.blank = value.blank;
                       if (value.bytes.size() <= NSTR_INLINE_BYTES) {
                           std::memcpy(text.nstr_inline, value.bytes.data(), value.bytes.size());
                       } else {
                           long_text_ = value.bytes;
                           text.nstr_ext = long_text_.data();
                       }
                   },
               },
               constant.value);
}

void store_constant(const Constant& constant, bdta3_col* vector, uint32_t row) {
    if (const SlotValue* slot = std::get_if<SlotValue>(&constant.value)) {
        const int32_t code =
            host_col_set_text(vector, row, slot->bytes.data(), static_cast<uint32_t>(slot->bytes.size()), slot->blank);
        if (code < 0) throw std::bad_alloc();
        return;
    }
    const uint32_t width = host_type_width(host_type(constant.type));
    std::visit(
        [&]<class T>(const T& value) {
            if constexpr (std::is_same_v<T, std::monostate>) {
                vector->data->valid[row] = 0;
            } else if constexpr (!std::is_same_v<T, SlotValue>) {
                static_assert(std::is_trivially_copyable_v<T>);
                std::memcpy(static_cast<char*>(vector->data->values) + size_t{row} * width, &value, sizeof value);
                vector->data->valid[row] = 1;
            }
        },
        constant.value);
}

Constant load_constant(ValueType type, const bdta3_col* vector, uint32_t row) {
    Constant constant{type, {}};
    if (vector->data->valid[row] == 0) return constant;
    switch (host_type(type)) {
        case HOST_INT:
            constant.value = values_of<int32_t>(vector)[row];
            break;
        case HOST_INT64:
            constant.value = values_of<int64_t>(vector)[row];
            break;
        case HOST_DOUBLE:
            constant.value = values_of<double>(vector)[row];
            break;
        case HOST_FLOAT:
            constant.value = values_of<float>(vector)[row];
            break;
        case HOST_DEC:
            constant.value = values_of<xdec>(vector)[row];
            break;
        case HOST_DATETIME:
            constant.value = values_of<qztime>(vector)[row];
            break;
        case HOST_INTERVAL_YM:
            constant.value = values_of<qz_interval_ym>(vector)[row];
            break;
        case HOST_INTERVAL_DT:
            constant.value = values_of<qz_interval_dt>(vector)[row];
            break;
        default: {
            const bdta3_colstr& slot = values_of<bdta3_colstr>(vector)[row];
            constant.value = SlotValue{slot.len > 0 ? std::string(slot.bytes, slot.len) : std::string(), slot.blank};
        }
    }
    return constant;
}

}  // namespace qzengine
