// The loops of workers that are total, or total but for a guard: no branch on the row, so that they can be vectorised.
#pragma once

#include <type_traits>

#include "bop/frame/blocks.h"
#include "bop/frame/worker.h"

namespace bifun::frame {

template <class W, class... P>
BIFUN_ALWAYS_INLINE auto value_of(const W& worker, const P&... argument) {
    if constexpr (GuardedWorker<W>) {
        return worker.value(argument...);
    } else {
        return worker.row(argument...);
    }
}

// The valid bytes of a block's n rows. Answers whether one of them is NULL.
template <class W, class... View>
BIFUN_ALWAYS_INLINE bool store_valid(uint8_t* valid, uint32_t n, const View&... view) {
    uint8_t some_null = 0;
    for (uint32_t i = 0; i < n; ++i) {
        const uint8_t byte = row_valid<W>(i, view...);
        some_null = static_cast<uint8_t>(some_null | (byte == 0));
        valid[i] = W::rules.store == Store::kSet ? byte != 0 : byte;
    }
    return some_null != 0;
}

// Whether the worker would make a row of the block NULL. The test is folded into a mask as wide as the values, which is what
// lets the loop be vectorised.
template <class W, class... View>
BIFUN_ALWAYS_INLINE bool block_makes_null(const W& worker, uint32_t n, const View&... view) {
    using Mask = std::conditional_t<sizeof(typename WorkerSignature<W>::Returns) == 8, uint64_t, uint32_t>;
    Mask made = 0;
    for (uint32_t i = 0; i < n; ++i) made |= worker.makes_null(view.value_at(i)...) ? ~Mask{0} : Mask{0};
    return made != 0;
}

// One block of which the worker makes rows NULL, which lowers the result's flag.
template <class W, class... View>
BIFUN_ALWAYS_INLINE void nulling_block(const W& worker, const Output& out, uint32_t begin, uint32_t n, const View&... view) {
    static_assert(W::rules.flag == FlagStore::kBeforeRows, "the flag is lowered as rows turn NULL");
    using Value = typename WorkerSignature<W>::Returns;
    uint8_t* const valid = out.valid + begin;
    Value* const values = static_cast<Value*>(out.values) + begin;
    uint8_t some_made = 0;
    for (uint32_t i = 0; i < n; ++i) {
        const uint8_t byte = row_valid<W>(i, view...);
        const uint8_t kept = worker.makes_null(view.value_at(i)...) ? uint8_t{0} : byte;
        some_made = static_cast<uint8_t>(some_made | (kept ^ byte));
        valid[i] = W::rules.store == Store::kSet ? kept != 0 : kept;
        const Value computed = worker.row(view.value_at(i)...);
        const Value held = values[i];
        values[i] = kept != 0 ? computed : held;
    }
    if (some_made != 0) out.result->all_valid = 0;
}

// One block: the valid bytes, then the values. A NULL row is computed too and keeps what it held.
template <class W, class... View>
BIFUN_ALWAYS_INLINE void total_block(const W& worker, const Output& out, uint32_t begin, uint32_t n, const View&... view) {
    using Value = typename WorkerSignature<W>::Returns;
    uint8_t* const valid = out.valid + begin;
    Value* const values = static_cast<Value*>(out.values) + begin;
    if constexpr (NullingWorker<W>) {
        if (block_makes_null<W>(worker, n, view...)) return nulling_block<W>(worker, out, begin, n, view...);
    }
    if constexpr (WorkerSignature<W>::kInPlace) {
        Value discarded;
        for (uint32_t i = 0; i < n; ++i) {
            const uint8_t byte = row_valid<W>(i, view...);
            worker.row(byte != 0 ? values[i] : discarded, view.value_at(i)...);
            valid[i] = W::rules.store == Store::kSet ? byte != 0 : byte;
        }
    } else if (store_valid<W>(valid, n, view...)) {
        for (uint32_t i = 0; i < n; ++i) {
            const Value computed = value_of(worker, view.value_at(i)...);
            const Value kept = values[i];
            values[i] = valid[i] != 0 ? computed : kept;
        }
    } else {
        for (uint32_t i = 0; i < n; ++i) values[i] = value_of(worker, view.value_at(i)...);
    }
}

// Whether a row of the block is refused. NULL rows are left out only when there is something to leave out. The test is folded
// into a mask as wide as the values, which is what lets the loop be vectorised.
template <class W, class... View>
BIFUN_ALWAYS_INLINE bool block_refused(const W& worker, uint32_t n, const View&... view) {
    using Mask = std::conditional_t<sizeof(typename WorkerSignature<W>::Returns) == 8, uint64_t, uint32_t>;
    Mask refused = 0;
    for (uint32_t i = 0; i < n; ++i) refused |= worker.refuses(view.value_at(i)...) ? ~Mask{0} : Mask{0};
    if (refused == 0) [[likely]]
        return false;
    for (uint32_t i = 0; i < n; ++i) {
        if (row_valid<W>(i, view...) != 0 && worker.refuses(view.value_at(i)...)) return true;
    }
    return false;
}

// worker: a copy, whose members no store of a row can alias. Answers the rows done: all of them, or those below a block in
// which a row is refused.
template <class W, class... Argument>
BIFUN_ALWAYS_INLINE uint32_t total_blocks(const W worker, const Output& out, uint32_t nrows, Argument&... argument) {
    for (uint32_t begin = 0; begin < nrows;) {
        const uint32_t end = begin + std::min(kBlockRows, nrows - begin);
        const auto done = [&](const auto&... view) {
            if constexpr (GuardedWorker<W>) {
                if (block_refused<W>(worker, end - begin, view...)) return false;
            }
            total_block<W>(worker, out, begin, end - begin, view...);
            return true;
        };
        if (!done(argument.block(begin, end)...)) [[unlikely]]
            return begin;
        begin = end;
    }
    return nrows;
}

template <class W, class... Argument>
uint32_t total_rows_base(const W& worker, const Output out, uint32_t nrows, Argument&... argument) {
    return total_blocks<W>(worker, out, nrows, argument...);
}

#if BIFUN_HAS_WIDE_LOOPS
template <class W, class... Argument>
BIFUN_WIDE uint32_t total_rows_wide(const W& worker, const Output out, uint32_t nrows, Argument&... argument) {
    return total_blocks<W>(worker, out, nrows, argument...);
}
#endif

template <class W, class... Argument>
uint32_t total_rows(const W& worker, const Output& out, uint32_t nrows, Argument... argument) {
#if BIFUN_HAS_WIDE_LOOPS
    if (has_wide_loops()) return total_rows_wide<W>(worker, out, nrows, argument...);
#endif
    return total_rows_base<W>(worker, out, nrows, argument...);
}

}  // namespace bifun::frame
