// The ways in which row i of an argument is reached, and the choice among them that stands outside every loop.
//
// Each way is copied into the loop, so that its pointers stay in registers.
#pragma once

#include <cstdint>
#include <tuple>
#include <type_traits>

#include "bop/frame/arguments.h"

namespace bifun {

template <class P>
struct DenseVector {
    const uint8_t* valid;
    const Element<P>* values;

    explicit DenseVector(const bdta3_col& col)
        : valid(col.data->valid), values(static_cast<const Element<P>*>(col.data->values)) {}
    uint8_t valid_at(uint32_t i) const { return valid[i]; }
    decltype(auto) value_at(uint32_t i) const { return Parameter<P>::load(values[i], valid[i]); }
};

template <class P>
struct SelectedVector : DenseVector<P> {
    const uint16_t* sel;

    explicit SelectedVector(const bdta3_col& col) : DenseVector<P>(col), sel(col.sel) {}
    uint8_t valid_at(uint32_t i) const { return this->valid[sel[i]]; }
    decltype(auto) value_at(uint32_t i) const { return Parameter<P>::load(this->values[sel[i]], this->valid[sel[i]]); }
};

// A vector with or without a selection, decided by the row: for forms with so many vectors that a loop each would only be code.
template <class P>
struct AnyVector : DenseVector<P> {
    const uint16_t* sel;

    explicit AnyVector(const bdta3_col& col) : DenseVector<P>(col), sel(col.sel) {}
    uint32_t row(uint32_t i) const { return sel ? sel[i] : i; }
    uint8_t valid_at(uint32_t i) const { return this->valid[row(i)]; }
    decltype(auto) value_at(uint32_t i) const { return Parameter<P>::load(this->values[row(i)], this->valid[row(i)]); }
};

template <class P>
struct Constant {
    typename Parameter<P>::Loaded value;
    uint8_t valid;  // what it brings to the row's valid byte

    Constant(bdta3_scalar& scalar, uint8_t valid_byte)
        : value(Parameter<P>::load_constant(reinterpret_cast<typename Parameter<P>::Type::Record&>(scalar))),
          valid(valid_byte) {}
    uint8_t valid_at(uint32_t) const { return valid; }
    decltype(auto) value_at(uint32_t) const { return (value); }
};

namespace frame {

inline bool has_selection(const bdta3_col& col) { return col.sel != nullptr; }
inline bool has_selection(const bdta3_scalar&) { return false; }

// Turns one slot after the other into an access, then hands all of them to the loop. One and two vectors have a loop for each
// combination of selections; more have two, since a loop each would only be code.
template <class Parameters, bool kReadConstants, bool kManyVectors, class Loop>
struct Dispatch {
    const Loop& loop;
    bool any_selection;

    template <class... Access>
    int32_t next(std::tuple<>, const Access&... access) const {
        return loop(access...);
    }

    template <class... Rest, class... Access>
    int32_t next(std::tuple<bdta3_col&, Rest&...> slots, const Access&... access) const {
        using P = std::tuple_element_t<sizeof...(Access), Parameters>;
        const bdta3_col& col = std::get<0>(slots);
        if constexpr (kManyVectors) {
            if (any_selection) return next(rest(slots), access..., AnyVector<P>(col));
        } else {
            if (col.sel != nullptr) return next(rest(slots), access..., SelectedVector<P>(col));
        }
        return next(rest(slots), access..., DenseVector<P>(col));
    }

    template <class... Rest, class... Access>
    int32_t next(std::tuple<bdta3_scalar&, Rest&...> slots, const Access&... access) const {
        using P = std::tuple_element_t<sizeof...(Access), Parameters>;
        bdta3_scalar& scalar = std::get<0>(slots);
        const uint8_t valid = kReadConstants ? static_cast<uint8_t>(scalar.has_value) : uint8_t{0xFF};
        return next(rest(slots), access..., Constant<P>(scalar, valid));
    }

    template <class First, class... Rest>
    static std::tuple<Rest&...> rest(std::tuple<First&, Rest&...> slots) {
        return std::apply([](First&, Rest&... tail) { return std::tuple<Rest&...>(tail...); }, slots);
    }
};

}  // namespace frame

// Calls loop(access...) with one access for each slot, by the parameter types in the tuple Parameters. kReadConstants: the low
// byte of a constant's has_value is its valid byte; otherwise a constant counts as present.
template <class Parameters, bool kReadConstants, class Loop, class... Slot>
int32_t with_access(const Loop& loop, Slot*... slot) {
    constexpr size_t kVectors = (size_t{std::is_same_v<Slot, bdta3_col>} + ...);
    const bool any_selection = (frame::has_selection(*slot) || ...);
    const frame::Dispatch<Parameters, kReadConstants, (kVectors > 2), Loop> dispatch{loop, any_selection};
    return dispatch.next(std::tuple<Slot&...>(*slot...));
}

}  // namespace bifun
