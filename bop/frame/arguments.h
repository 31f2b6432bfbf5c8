// Arguments as a worker sees them. The type of a worker's parameter tells the element of a vector and the record of a constant;
// whether the argument is one or the other, and through which selection it is read, is settled before the row loop.
#pragma once

#include <cstdint>
#include <type_traits>

#include "qzbifun/records.h"

namespace bifun {

// A string argument: bytes[0..len) and then blank implied blanks, from a slot or a constant of any length.
struct Text {
    char* bytes;
    uint32_t len;
    uint32_t blank;
};

// A parameter of this type sees an argument that may be NULL. The value of a NULL is whatever stands there.
template <class T>
struct Nullable {
    T value;
    uint8_t valid;  // a vector's valid byte, or the low byte of a constant's has_value
};

// The element and the record of a parameter type, and how each is loaded.
template <class T>
struct ValueType;

template <class T, class RecordType>
struct PlainValue {
    using Element = T;
    using Record = RecordType;
    using Loaded = T;
    static T load(const T& element) { return element; }
    static T load_constant(const Record& record) { return record.value; }
};

// Wide values are seen where they stand.
template <class T, class RecordType>
struct WideValue {
    using Element = T;
    using Record = RecordType;
    using Loaded = const T&;
    static const T& load(const T& element) { return element; }
    static const T& load_constant(const Record& record) { return record.value; }
};

template <>
struct ValueType<int32_t> : PlainValue<int32_t, bdta3_int> {};
template <>
struct ValueType<int64_t> : PlainValue<int64_t, bdta3_int64> {};
template <>
struct ValueType<double> : PlainValue<double, bdta3_double> {};
template <>
struct ValueType<float> : PlainValue<float, bdta3_float> {};
template <>
struct ValueType<xdec> : WideValue<xdec, bdta3_dec> {};
template <>
struct ValueType<qztime> : WideValue<qztime, bdta3_datetime> {};
template <>
struct ValueType<qz_interval_ym> : WideValue<qz_interval_ym, bdta3_interval_ym> {};
template <>
struct ValueType<qz_interval_dt> : WideValue<qz_interval_dt, bdta3_interval_dt> {};

template <>
struct ValueType<Text> {
    using Element = bdta3_colstr;
    using Record = nstr;
    using Loaded = Text;
    static Text load(const bdta3_colstr& slot) { return {slot.bytes, slot.len, slot.blank}; }
    static Text load_constant(nstr& value) {
        char* const bytes = value.len <= NSTR_INLINE_BYTES ? value.nstr_inline : value.nstr_ext;
        return {bytes, value.len, value.blank};
    }
};

template <class T>
struct IsNullable : std::false_type {};
template <class T>
struct IsNullable<Nullable<T>> : std::true_type {
    using Value = T;
};

// A parameter type P without its reference: how it is loaded from a place and a valid byte.
template <class P>
struct Parameter {
    using Type = ValueType<P>;
    template <class Place>
    static typename Type::Loaded load(Place& place, uint8_t) {
        return Type::load(place);
    }
    static typename Type::Loaded load_constant(typename Type::Record& record) { return Type::load_constant(record); }
    using Loaded = typename Type::Loaded;
};

template <class T>
struct Parameter<Nullable<T>> {
    using Type = ValueType<T>;
    static Nullable<T> load(const typename Type::Element& element, uint8_t valid) { return {Type::load(element), valid}; }
    static Nullable<T> load_constant(typename Type::Record& record) {
        return {Type::load_constant(record), static_cast<uint8_t>(record.has_value)};
    }
    using Loaded = Nullable<T>;
};

template <class P>
using Element = typename Parameter<P>::Type::Element;

}  // namespace bifun
