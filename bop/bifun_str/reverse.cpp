// reverse: blanks are written out in front, and blanks that end up last become a count.
#include <cstring>

#include "bop/bifun_str/text.h"
#include "bop/frame/copy_text.h"
#include "bop/frame/export.h"
#include "qzbifun/string.h"
#include "qzhost/characters.h"

namespace bifun {
namespace {

struct Reverse {
    static constexpr Rules rules{.on_failure = OnFailure::kClear};

    static Code row(Row out, const Text& text) {
        if (text.len == 0) return put_blanks(out, text.blank);
        const uint64_t total = uint64_t{text.len} + text.blank;
        if (total > UINT32_MAX) return Code{EC_OUT_OF_MEMORY};
        uint32_t len = static_cast<uint32_t>(total);
        char* const to = bdta3_col_space_alloc(out.env(), out.rt_mem(), out.result()->data, len);
        if (to == nullptr) return Code{EC_OUT_OF_MEMORY};
        copy_text(to, text.bytes, text.len);
        if (text.blank != 0) std::memset(to + text.len, ' ', text.blank);
        // A row that fails has its slot all the same: whose block it is can be told.
        bdta3_colstr& slot = out.slot<bdta3_colstr>();
        slot = {len, 0, to};
        const int32_t code = qz_mbsrev_with_compatible_mode(to, len);
        if (code < 0) {
            elog_try_report_qzerr(code, __FILE__, __LINE__);
            return Code{code};
        }
        while (len != 0 && to[len - 1] == ' ') --len;
        slot.blank = slot.len - len;
        slot.len = len;
        return kOk;
    }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_1(breverse_a_str, Reverse, a)
