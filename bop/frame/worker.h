// What the frame reads off a worker's declaration.
#pragma once

#include <concepts>
#include <cstdint>
#include <tuple>
#include <type_traits>

#include "bop/frame/call.h"
#include "bop/frame/row.h"
#include "bop/frame/rules.h"

namespace bifun {

template <class W>
concept TotalWorker = requires {
    W::total;
};
template <class W>
concept NullingWorker = TotalWorker<W> && requires {
    &W::makes_null;
};
template <class W>
concept KernelWorker = requires {
    &W::block;
};
template <class W>
concept RefusingKernel = KernelWorker<W> && requires {
    &W::refuses;
};
template <class W>
concept GuardedWorker = !KernelWorker<W> && requires {
    &W::refuses;
};
template <class W>
concept ManyRowsWorker = requires {
    &W::many;
};
template <class W>
concept PreparedWorker = requires {
    &W::prepare;
};

// The result's element and the parameter types of a worker's function, without references, a leading Row or a leading output.
template <class F>
struct Signature;

template <class Result, class... P>
struct Signature<Result (*)(P...)> {
    using Returns = Result;
    using Parameters = std::tuple<std::remove_cvref_t<P>...>;
    static constexpr bool kInPlace = false;
};
template <class Result, class... P>
struct Signature<Result (*)(Row, P...)> : Signature<Result (*)(P...)> {};
template <class Result, class... P>
struct Signature<void (*)(Result&, P...)> : Signature<Result (*)(P...)> {
    static constexpr bool kInPlace = true;
};
template <class Result, class... P>
struct Signature<void (*)(Result*, uint32_t, const P*...)> : Signature<Result (*)(P...)> {};
template <class Result, class W, class... P>
struct Signature<void (W::*)(Result*, uint32_t, const P*...) const> : Signature<Result (*)(P...)> {};
template <class Result, class W, class... P>
struct Signature<Result (W::*)(P...)> : Signature<Result (*)(P...)> {};
template <class Result, class W, class... P>
struct Signature<Result (W::*)(P...) const> : Signature<Result (*)(P...)> {};

template <class W>
struct WorkerSignature : Signature<decltype(&W::row)> {};
template <GuardedWorker W>
struct WorkerSignature<W> : Signature<decltype(&W::value)> {};
template <KernelWorker W>
struct WorkerSignature<W> : Signature<decltype(&W::block)> {};

namespace frame {

// Where a batch is stored, read from the result once.
struct Output {
    bdta3_col* result;
    uint8_t* valid;
    void* values;

    explicit Output(bdta3_col* col) : result(col), valid(col->data->valid), values(col->data->values) {}
};

// ---- Flags and valid bytes by a worker's rules ------------------------------------------------------------------------------

inline uint32_t flag_of(const bdta3_col& col) { return col.all_valid; }
inline uint32_t flag_of(const bdta3_scalar& scalar) { return scalar.has_value != 0; }

template <class Slot>
inline constexpr bool kIsVector = std::is_same_v<Slot, bdta3_col>;

template <class W, class Slot>
inline constexpr bool kEntersFlag = kIsVector<Slot> || W::rules.constants == ConstantNull::kFlag;

template <class W, class... Slot>
uint32_t all_valid(const Slot&... slot) {
    if constexpr (W::rules.row_null == RowNull::kNever) {
        return 1;
    } else if constexpr (W::rules.row_null == RowNull::kAll) {
        return (flag_of(slot) | ...);
    } else {
        uint32_t flag = ~0u;
        ((flag &= kEntersFlag<W, Slot> ? flag_of(slot) : ~0u), ...);
        return flag;
    }
}

template <class W, class... Access>
[[gnu::always_inline]] inline uint8_t row_valid(uint32_t i, const Access&... access) {
    if constexpr (W::rules.row_null == RowNull::kNever) {
        return 1;
    } else if constexpr (W::rules.row_null == RowNull::kAll) {
        return static_cast<uint8_t>((access.valid_at(i) | ...));
    } else {
        return static_cast<uint8_t>((access.valid_at(i) & ...));
    }
}

// Whether the has_value of a constant enters each row's valid byte.
template <class W>
inline constexpr bool kRowsReadConstants = W::rules.row_null == RowNull::kAll || W::rules.constants == ConstantNull::kRows;

}  // namespace frame
}  // namespace bifun
