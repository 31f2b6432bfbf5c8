// The loops of workers that compute a block of rows at a time, from arrays to an array.
//
// A selection is gathered first. Rows that are NULL are computed too and thrown away where they are few, and left out where
// they are many; a kernel computes each row by itself, so that this cannot be seen.
#pragma once

#include <algorithm>
#include <cstring>
#include <tuple>

#include "bop/frame/blocks.h"
#include "bop/frame/total.h"
#include "bop/frame/worker.h"

namespace bifun::frame {

// A block's argument as an array: the rows where they stand, or those not NULL one behind the other.
template <class P>
class KernelArgument {
  public:
    const P* dense(const BlockView<P>& view) const { return view.values; }
    const P* compact(const BlockView<P>& view, const uint16_t* rows, uint32_t n) {
        for (uint32_t i = 0; i < n; ++i) compact_[i] = view.values[rows[i]];
        return compact_;
    }
    // A constant fills its array once.
    const P* dense(const Constant<P>& constant) {
        if (!filled_) std::fill_n(compact_, kBlockRows, constant.value);
        filled_ = true;
        return compact_;
    }
    const P* compact(const Constant<P>& constant, const uint16_t*, uint32_t) { return dense(constant); }

  private:
    bool filled_ = false;
    alignas(64) P compact_[kBlockRows];
};

// The first of n rows that is present and refused; n when none is. The first loop has no branch.
template <class W, class Present, class Value, class... P>
uint32_t first_refused(const W& worker, const Present& present, const Value* values, uint32_t n, const P*... x) {
    if constexpr (RefusingKernel<W>) {
        uint64_t refused = 0;
        for (uint32_t i = 0; i < n; ++i) refused |= worker.refuses(values[i], x[i]...) ? ~uint64_t{0} : 0;
        if (refused == 0) [[likely]]
            return n;
        for (uint32_t i = 0; i < n; ++i) {
            if (present(i) && worker.refuses(values[i], x[i]...)) return i;
        }
    }
    return n;
}

template <class W, class... P>
class KernelRows {
    using Value = typename WorkerSignature<W>::Returns;

    // Up to a fourth of a block: there, computing them costs less than leaving them out.
    static constexpr uint32_t kFewNulls = 4;

  public:
    KernelRows(W& worker, const Call& call, const Output& out) : worker_(worker), call_(call), out_(out) {}

    template <class... Argument>
    Code run(uint32_t nrows, Argument&&... argument) {
        for (uint32_t begin = 0; begin < nrows;) {
            const uint32_t n = std::min(kBlockRows, nrows - begin);
            const Code code = block(begin, n, argument.block(begin, begin + n)...);
            if (code.failed()) return code;
            begin += n;
        }
        return kOk;
    }

    uint32_t failed_row() const { return failed_row_; }

  private:
    template <class... View>
    Code block(uint32_t begin, uint32_t n, const View&... view) {
        uint32_t present = 0;
        for (uint32_t i = 0; i < n; ++i) present += row_valid<W>(i, view...) != 0;
        if (present == n) return dense<false>(begin, n, view...);
        if (present >= n - n / kFewNulls) return dense<true>(begin, n, view...);
        present = 0;
        for (uint32_t i = 0; i < n; ++i) {
            rows_[present] = static_cast<uint16_t>(i);
            present += row_valid<W>(i, view...) != 0;
        }
        return compact(begin, n, present, view...);
    }

    template <bool kSomeNull, class... View>
    Code dense(uint32_t begin, uint32_t n, const View&... view) {
        return std::apply(
            [&](auto&... array) {
                const auto present = [&](uint32_t i) { return !kSomeNull || row_valid<W>(i, view...) != 0; };
                const uint32_t done = compute(present, n, array.dense(view)...);
                const uint8_t byte = done == n ? uint8_t{0} : row_valid<W>(done, view...);
                uint8_t* const valid = out_.valid + begin;
                Value* const values = static_cast<Value*>(out_.values) + begin;
                if constexpr (kSomeNull) {
                    (void)store_valid<W>(valid, done, view...);
                    for (uint32_t i = 0; i < done; ++i) {
                        const Value kept = values[i];
                        values[i] = valid[i] != 0 ? values_[i] : kept;
                    }
                } else {
                    if constexpr (W::rules.store == Store::kSet) {
                        std::memset(valid, 1, done);
                    } else {
                        (void)store_valid<W>(valid, done, view...);
                    }
                    std::memcpy(values, values_, done * sizeof(Value));
                }
                return done == n ? kOk : refuse(begin + done, byte, view.value_at(done)...);
            },
            arrays_);
    }

    template <class... View>
    Code compact(uint32_t begin, uint32_t n, uint32_t present, const View&... view) {
        return std::apply(
            [&](auto&... array) {
                const uint32_t done = compute([](uint32_t) { return true; }, present, array.compact(view, rows_, present)...);
                const uint32_t end = done == present ? n : rows_[done];
                const uint8_t byte = done == present ? uint8_t{0} : row_valid<W>(end, view...);
                Value* const values = static_cast<Value*>(out_.values) + begin;
                (void)store_valid<W>(out_.valid + begin, end, view...);
                for (uint32_t i = 0; i < done; ++i) values[rows_[i]] = values_[i];
                return done == present ? kOk : refuse(begin + end, byte, view.value_at(end)...);
            },
            arrays_);
    }

    // Computes n rows. Answers how many stand below the first that is present and refused.
    template <class Present, class... Array>
    uint32_t compute(const Present& present, uint32_t n, const Array*... x) {
        worker_.block(values_, n, x...);
        return first_refused(worker_, present, values_, n, x...);
    }

    template <class... X>
    Code refuse(uint32_t row, uint8_t byte, const X&... x) {
        if constexpr (RefusingKernel<W>) {
            failed_row_ = row;
            out_.valid[row] = byte;
            return worker_.refuse(Row(call_, out_.result, out_.valid, out_.values, row), x...);
        }
        return kOk;
    }

    W& worker_;
    const Call& call_;
    const Output& out_;
    uint32_t failed_row_ = 0;
    std::tuple<KernelArgument<P>...> arrays_;
    uint16_t rows_[kBlockRows + 1];
    alignas(64) Value values_[kBlockRows];
};

}  // namespace bifun::frame
