// The row loop behind every batch function.
//
// A worker is a struct that tells one SQL function on one row. It has `static constexpr Rules rules` and one of
//
//   static R row(P...)             computes the value and cannot fail. With `static constexpr bool total = true` it is defined
//                                  on any bits and so cheap that NULL rows are computed too and thrown away, without a branch.
//                                  Beside it may stand `bool makes_null(P...)`, total too: those rows come out NULL, their
//                                  elements untouched, and lower all_valid, which the rules store before the rows
//   static void row(R& out, P...)  the same for wide values, built where they stand; total, and out may be an argument's row
//   static Code row(Row, P...)     stores its row itself and may fail
//   static R value(P...)           total, but for arguments of which
//   static bool refuses(P...)      is true; the first such row is reported by
//   static Code refuse(Row, P...)
//
// or, for a computation that runs over arrays,
//
//   static void block(R* out, uint32_t n, const P*... x)   computes n rows, at most kBlockRows; on any bits, and each by itself
//   static bool refuses(R computed, P...)                  if rows may fail: the first such row is reported by
//   static Code refuse(Row, P...)
//
// Beside row(Row, P...) may stand
//
//   bool many(const frame::Output&, uint32_t begin, uint32_t n, const View&... x)   does the n rows from begin on, at most
//                                  kBlockRows, as row would, valid bytes included; or answers false and leaves them alone
//
// A view is a frame::BlockView<P> of rows counted from begin, or a Constant<P>.
//
// The parameters are int32_t, int64_t, double, float, const xdec&, const qztime&, the intervals, Text, or Nullable of these.
// A worker with set-up for the batch has non-static members and
//
//   Start prepare(const Call&, Slot*... arguments)
//
// which runs once, before the number of rows is looked at; its destructor gives back what it took. One that is total or guarded
// is plain data: the loop works on a copy, whose members no store of a row can alias.
//
// A family whose loop is another has, in place of all this,
//
//   static int32_t batch(const Call&, bdta3_col* result, uint32_t nrows, Slot*... arguments)
#pragma once

#include <concepts>
#include <cstring>
#include <utility>

#include "bop/frame/access.h"
#include "bop/frame/kernel.h"
#include "bop/frame/total.h"
#include "bop/frame/worker.h"

namespace bifun {
namespace frame {

template <class W>
int32_t failed(const Call& call, const Output& out, uint32_t row, Code code) {
    switch (W::rules.on_failure) {
        case OnFailure::kPush:
            qzerr_stk_push(call.env, code.value, call.name);
            break;
        case OnFailure::kClear:
            out.valid[row] = 0;
            break;
        case OnFailure::kClearFirst:
            out.valid[0] = 0;
            break;
        case OnFailure::kNothing:
            break;
    }
    return code.value;
}

template <class W, class... Access>
int32_t each_row(W& worker, const Call& call, const Output out, uint32_t begin, uint32_t end, const Access... access) {
    for (uint32_t i = begin; i < end; ++i) {
        const uint8_t valid = row_valid<W>(i, access...);
        out.valid[i] = valid;
        if (valid == 0) continue;
        const Row row(call, out.result, out.valid, out.values, i);
        Code code;
        if constexpr (GuardedWorker<W>) {
            if (worker.refuses(access.value_at(i)...)) {
                code = worker.refuse(row, access.value_at(i)...);
            } else {
                static_cast<typename WorkerSignature<W>::Returns*>(out.values)[i] = worker.value(access.value_at(i)...);
                if constexpr (W::rules.store == Store::kSet) out.valid[i] = 1;
            }
        } else if constexpr (std::same_as<typename WorkerSignature<W>::Returns, Code>) {
            code = worker.row(row, access.value_at(i)...);
        } else {
            using Value = typename WorkerSignature<W>::Returns;
            static_cast<Value*>(out.values)[i] = worker.row(access.value_at(i)...);
            if constexpr (W::rules.store == Store::kSet) out.valid[i] = 1;
        }
        if (code.failed()) [[unlikely]]
            return failed<W>(call, out, i, code);
    }
    return 0;
}

// The rows of a total worker, block by block; those of a guarded one as far as none is refused.
template <class W, class... P, class... Slot>
uint32_t rows_in_blocks(const W& worker, const Output& out, uint32_t nrows, std::tuple<P...>*, Slot*... slot) {
    return total_rows<W>(worker, out, nrows, blocked<P, kRowsReadConstants<W>>(*slot)...);
}

template <class W, class... P, class... Slot>
int32_t kernel_rows(W& worker, const Call& call, const Output& out, uint32_t nrows, std::tuple<P...>*, Slot*... slot) {
    KernelRows<W, P...> rows(worker, call, out);
    const Code code = rows.run(nrows, blocked<P, kRowsReadConstants<W>>(*slot)...);
    return code.failed() ? failed<W>(call, out, rows.failed_row(), code) : 0;
}

// The rows of a worker that does many at once. A block that it leaves alone is done row by row.
template <class W, class... P, class... Slot>
int32_t many_rows(W& worker, const Call& call, const Output& out, uint32_t nrows, std::tuple<P...>*, Slot*... slot) {
    const auto blocks = [&](auto&&... argument) {
        for (uint32_t begin = 0; begin < nrows;) {
            const uint32_t end = begin + std::min(kBlockRows, nrows - begin);
            if (!worker.many(out, begin, end - begin, argument.block(begin, end)...)) {
                const auto rest = [&](const auto&... access) { return each_row<W>(worker, call, out, begin, end, access...); };
                const int32_t code = with_access<std::tuple<P...>, kRowsReadConstants<W>>(rest, slot...);
                if (code < 0) return code;
            }
            begin = end;
        }
        return 0;
    };
    return blocks(blocked<P, kRowsReadConstants<W>>(*slot)...);
}

template <class W, class... Slot>
int32_t rows(W& worker, const Call& call, const Output& out, uint32_t nrows, Slot*... slot) {
    using Parameters = typename WorkerSignature<W>::Parameters;
    uint32_t done = 0;
    if constexpr (KernelWorker<W>) {
        return kernel_rows(worker, call, out, nrows, static_cast<Parameters*>(nullptr), slot...);
    } else if constexpr (ManyRowsWorker<W>) {
        return many_rows(worker, call, out, nrows, static_cast<Parameters*>(nullptr), slot...);
    } else if constexpr (TotalWorker<W> || GuardedWorker<W>) {
        done = rows_in_blocks(worker, out, nrows, static_cast<Parameters*>(nullptr), slot...);
        if (done == nrows) return 0;
    }
    if constexpr (!TotalWorker<W> && !KernelWorker<W>) {
        const auto rest = [&](const auto&... access) { return each_row<W>(worker, call, out, done, nrows, access...); };
        return with_access<Parameters, kRowsReadConstants<W>>(rest, slot...);
    }
    return 0;
}

inline bool is_null(const bdta3_col&) { return false; }
inline bool is_null(const bdta3_scalar& scalar) { return scalar.has_value == 0; }

inline void set_all_null(bdta3_col* result, uint32_t nrows) {
    result->all_valid = 0;
    if (nrows != 0) std::memset(result->data->valid, 0, nrows);
}

}  // namespace frame

template <class W, class... Slot>
concept WholeBatch = requires(const Call& call, bdta3_col* result, Slot*... slot) {
    W::batch(call, result, 0u, slot...);
};

template <class W, class... Slot>
requires WholeBatch<W, Slot...> int32_t run(const Call& call, bdta3_col* result, uint32_t nrows, Slot*... slot) {
    return W::batch(call, result, nrows, slot...);
}

// Runs a worker over a batch. One slot for each SQL argument, a vector or a constant.
template <class W, class... Slot>
int32_t run(const Call& call, bdta3_col* result, uint32_t nrows, Slot*... slot) {
    using Parameters = typename WorkerSignature<W>::Parameters;
    static_assert(std::tuple_size_v<Parameters> == sizeof...(Slot), "a worker has one parameter for each SQL argument");
    constexpr size_t kVectors = (size_t{frame::kIsVector<Slot>} + ...);
    constexpr bool kFlagFirst = W::rules.flag == FlagStore::kBeforeRows ||
                                (W::rules.flag == FlagStore::kBeforeRowsIfConstant && kVectors < sizeof...(Slot));

    W worker{};
    if constexpr (PreparedWorker<W>) {
        const Start start = worker.prepare(call, slot...);
        if (start.next == Start::Next::kStop) return start.code.value;
        if (start.next == Start::Next::kAllNull) {
            frame::set_all_null(result, nrows);
            return 0;
        }
    }
    if constexpr (W::rules.constants == ConstantNull::kBatch) {
        if ((frame::is_null(*slot) || ...)) {
            frame::set_all_null(result, nrows);
            return 0;
        }
    }
    const uint32_t flag = frame::all_valid<W>(*slot...);
    if (kFlagFirst) result->all_valid = flag;
    if (nrows != 0) {
        const int32_t code = frame::rows<W>(worker, call, frame::Output(result), nrows, slot...);
        if (code < 0) return code;
    }
    if (!kFlagFirst) result->all_valid = flag;
    return 0;
}

}  // namespace bifun
