// repeat and space. Blanks that need not be written stay a count: those behind the last copy, and all of space.
#include <cstring>

#include "bop/bifun_str/text.h"
#include "bop/bifun_str/text_groups.h"
#include "bop/frame/export.h"
#include "bop/frame/masked_moves.h"
#include "qzbifun/string.h"

namespace bifun {
namespace {

// n copies of the text, n above 0, with its blanks between them.
template <class Moves>
BIFUN_ALWAYS_INLINE void write_copies(char* to, const Text& text, uint32_t n) {
    constexpr uint32_t kFewCopies = 8;
    const size_t unit = size_t{text.len} + text.blank;
    const size_t len = unit * n - text.blank;
    if (n <= kFewCopies) {
        for (char* const last = to + (len - text.len);; to += unit) {
            Moves::copy(to, text.bytes, text.len);
            if (to == last) return;
            if (text.blank != 0) std::memset(to + text.len, ' ', text.blank);
        }
    }
    // What is written is copied behind itself.
    Moves::copy(to, text.bytes, text.len);
    std::memset(to + text.len, ' ', text.blank);
    for (size_t done = unit; done < len;) {
        const size_t more = done < len - done ? done : len - done;
        std::memcpy(to + done, to, more);
        done += more;
    }
}

// What n copies come to: bytes to be stored, with all blanks but the last ones among them, and those.
struct Copies {
    uint64_t len = 0;
    uint64_t blank = 0;
    bool refused = false;

    Copies(const Text& text, int32_t n) {
        const uint64_t unit = uint64_t{text.len} + text.blank;
        if (unit == 0 || n == 0) return;
        const uint64_t all = unit * static_cast<uint32_t>(n);
        refused = n < 0 || all > kMostTextBytes;
        blank = text.len == 0 ? all : text.blank;
        len = all - blank;
    }
};

struct RepeatRow {
    static constexpr Rules rules{.constants = ConstantNull::kIgnored, .on_failure = OnFailure::kClear};

    static Code row(Row out, const Text& text, int32_t n) {
        const Copies copies(text, n);
        if (copies.refused) return Code{EC_INVALID_ARGUMENT};
        if (copies.len == 0) return put_blanks(out, static_cast<uint32_t>(copies.blank));
        char* const to = reserve_text(out, static_cast<uint32_t>(copies.len), static_cast<uint32_t>(copies.blank));
        if (to == nullptr) return out.fail(EC_OUT_OF_MEMORY, "brepeatstr_av_process");
        write_copies<PlainMoves>(to, text, static_cast<uint32_t>(n));
        return kOk;
    }
};

template <class Texts, class Number>
struct RepeatedRows {
    const Call& call;
    frame::Output out;
    Texts texts;
    Number number;

    uint64_t bytes(uint32_t i) const {
        if (texts.valid_at(i) == 0) return 0;
        const Copies copies(texts.value_at(i), number.value_at(i));
        return copies.refused ? UINT64_MAX : copies.len;
    }

    int32_t group(const TextGroup& group) const {
        with_moves([&]<class Moves>(Moves) BIFUN_INLINE_LAMBDA { write<Moves>(group, out, texts, number); });
        return 0;
    }

    template <class Moves>
    BIFUN_ALWAYS_INLINE static void write(const TextGroup& group, const frame::Output out, const Texts texts,
                                          const Number number) {
        auto* const slots = static_cast<bdta3_colstr*>(out.values);
        for (uint32_t k = 0; k < group.rows; ++k) {
            const uint32_t i = group.begin + k;
            out.valid[i] = texts.valid_at(i);
            if (out.valid[i] == 0) continue;
            const Text text = texts.value_at(i);
            const int32_t n = number.value_at(i);
            slots[i] = {group.len(k), static_cast<uint32_t>(Copies(text, n).blank), group.text(k)};
            if (group.len(k) != 0) write_copies<Moves>(group.text(k), text, static_cast<uint32_t>(n));
        }
    }

    int32_t each(uint32_t begin, uint32_t end) const {
        RepeatRow worker;
        return frame::each_row(worker, call, out, begin, end, texts, number);
    }
};

struct Repeat {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* text, bdta3_scalar* n) {
        if (nrows != 0) {
            const auto rows = [&]<class Texts, class Number>(const Texts& texts, const Number& number) {
                using Rows = RepeatedRows<Texts, Number>;
                return rows_in_groups(call, result, nrows, Rows{call, frame::Output(result), texts, number});
            };
            const int32_t code = with_access<std::tuple<Text, int32_t>, false>(rows, text, n);
            if (code < 0) return code;
        }
        result->all_valid = text->all_valid;
        return 0;
    }
};

// Every row's slot leads to the same place, which is never read.
struct Space {
    struct Rows {
        static constexpr Rules rules{.on_failure = OnFailure::kClear};
        char* nothing;

        static bool refuses(int32_t n) { return static_cast<uint32_t>(n) > kMostTextBytes; }
        bdta3_colstr value(int32_t n) const { return {0, static_cast<uint32_t>(n), nothing}; }
        static Code refuse(Row out, int32_t) { return out.fail(EC_INVALID_ARGUMENT, "bspace_a_str"); }
    };

    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* n) {
        result->all_valid = n->all_valid;
        if (nrows == 0) return 0;
        Rows worker{bdta3_col_space_alloc(call.env, call.rt_mem, result->data, 0)};
        return frame::rows(worker, call, frame::Output(result), nrows, n);
    }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_2(brepeatstr_av_str, Repeat, a, v)
BIFUN_EXPORT_1(bspace_a_str, Space, a)
