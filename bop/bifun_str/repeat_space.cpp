// repeat and space. Blanks that need not be written stay a count: those behind the last copy, and all of space.
#include <cstring>

#include "bop/bifun_str/text.h"
#include "bop/frame/copy_text.h"
#include "bop/frame/export.h"
#include "qzbifun/string.h"

namespace bifun {
namespace {

// n copies of the text, n above 0, with its blanks between them.
void write_copies(char* to, const Text& text, uint32_t n) {
    constexpr uint32_t kFewCopies = 8;
    const size_t unit = size_t{text.len} + text.blank;
    const size_t len = unit * n - text.blank;
    if (n <= kFewCopies) {
        for (char* const last = to + (len - text.len);; to += unit) {
            copy_text(to, text.bytes, text.len);
            if (to == last) return;
            if (text.blank != 0) std::memset(to + text.len, ' ', text.blank);
        }
    }
    // What is written is copied behind itself.
    copy_text(to, text.bytes, text.len);
    std::memset(to + text.len, ' ', text.blank);
    for (size_t done = unit; done < len;) {
        const size_t more = done < len - done ? done : len - done;
        std::memcpy(to + done, to, more);
        done += more;
    }
}

struct Repeat {
    static constexpr Rules rules{.constants = ConstantNull::kIgnored, .on_failure = OnFailure::kClear};

    static Code row(Row out, const Text& text, int32_t n) {
        const uint64_t total = uint64_t{text.len} + text.blank;
        if (total == 0 || n == 0) return put_blanks(out, 0);
        if (n < 0 || static_cast<uint64_t>(n) > kMostTextBytes / total) return Code{EC_INVALID_ARGUMENT};
        const uint32_t all = static_cast<uint32_t>(total) * static_cast<uint32_t>(n);
        if (text.len == 0) return put_blanks(out, all);
        char* const to = reserve_text(out, all - text.blank, text.blank);
        if (to == nullptr) return out.fail(EC_OUT_OF_MEMORY, "brepeatstr_av_process");
        write_copies(to, text, static_cast<uint32_t>(n));
        return kOk;
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
