// find_in_set(text, list): which element of a comma-separated list the text is, counted from 1; 0 when it is none.
//
// What looks odd and is meant:
//   - A NULL list is an empty list and not a NULL result: find_in_set('a', NULL) is 0.
//   - An empty list has one element, the empty one: find_in_set('', '') is 1.
//   - With an empty list the elements of NULL rows become 0 too; their valid bytes stay the text's.
//   - Implied blanks of the list count for nothing, those of the text do: with the list 'a,b ', 'b' and one implied blank is 2.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "bop/frame/export.h"
#include "qzbifun/string.h"
#include "qzhost/characters.h"
#include "qzhost/memory.h"

namespace bifun {
namespace {

constexpr uint32_t kElementsAtOnce = 100;

// The elements of a list, where they stand in it. Those of one length are chained, so that a text meets no others: the length is
// most of the comparison.
class ElementList {
  public:
    explicit ElementList(qz_env* env) : env_(env) {}
    ~ElementList() { mem_free(env_, elements_); }
    ElementList(const ElementList&) = delete;
    ElementList& operator=(const ElementList&) = delete;

    Code cut(const Call& call, const char* list, uint32_t len) {
        const char* begin = list;
        const char* const end = list + len;
        for (;;) {
            const size_t left = static_cast<size_t>(end - begin);
            const void* comma = left == 0 ? nullptr : std::memchr(begin, ',', left);
            const char* const behind = comma == nullptr ? end : static_cast<const char*>(comma);
            if (const Code code = append(call, begin, static_cast<uint32_t>(behind - begin)); code.failed()) return code;
            if (comma == nullptr) break;
            begin = behind + 1;
        }
        chain();
        return kOk;
    }

    // The number of the first element that is the text. One that is a lone comma is none, as no element holds a comma.
    int32_t find(const Text& text) const {
        const uint64_t length = uint64_t{text.len} + text.blank;
        for (uint32_t k = first_[bucket(length)]; k != 0; k = elements_[k - 1].next) {
            const Element& element = elements_[k - 1];
            if (element.len == length && qz_mbsncmp_f(text.bytes, element.bytes, text.len) == 0 &&
                is_blank(element.bytes + text.len, text.blank)) {
                return static_cast<int32_t>(k);
            }
        }
        return 0;
    }

  private:
    struct Element {
        const char* bytes;
        uint32_t len;
        uint32_t next;  // number of the next one whose length falls into the same bucket; 0: none
    };

    // Longer elements share the last bucket.
    static constexpr uint32_t kBuckets = 64;
    static size_t bucket(uint64_t length) { return std::min<uint64_t>(length, kBuckets - 1); }

    static bool is_blank(const char* bytes, uint32_t n) {
        return std::all_of(bytes, bytes + n, [](char byte) { return byte == ' '; });
    }

    Code append(const Call& call, const char* bytes, uint32_t len) {
        if (count_ == capacity_) {
            if (const Code code = grow(call); code.failed()) return code;
        }
        elements_[count_++] = {bytes, len, 0};
        return kOk;
    }

    // Only growth is reported to the user.
    Code grow(const Call& call) {
        const size_t size = capacity_ * sizeof(Element);
        const size_t new_size = size + kElementsAtOnce * sizeof(Element);
        void* const block = elements_ == nullptr ? mem_malloc_ex(env_, new_size, __FILE__, __LINE__)
                                                 : mem_realloc_ex(env_, elements_, new_size, size, __FILE__, __LINE__);
        if (block == nullptr) {
            if (elements_ != nullptr) qzerr_stk_push(env_, EC_OUT_OF_MEMORY, call.name);
            return Code{EC_OUT_OF_MEMORY};
        }
        elements_ = static_cast<Element*>(block);
        capacity_ += kElementsAtOnce;
        return kOk;
    }

    // From the last to the first, so that a chain ascends.
    void chain() {
        for (uint32_t k = count_; k > 0; --k) {
            uint32_t& first = first_[bucket(elements_[k - 1].len)];
            elements_[k - 1].next = first;
            first = k;
        }
    }

    qz_env* env_;
    Element* elements_ = nullptr;
    size_t capacity_ = 0;
    uint32_t count_ = 0;
    uint32_t first_[kBuckets] = {};  // number of the first element in each bucket; 0: none
};

struct FindInList {
    static constexpr Rules rules{.constants = ConstantNull::kIgnored};
    const ElementList& list;

    int32_t row(Text text, Text) const { return list.find(text); }
};

struct FindInSet {
    static int32_t batch(const Call& call, bdta3_col* result, uint32_t nrows, bdta3_col* text, bdta3_scalar* list_constant) {
        const Text list = ValueType<Text>::load_constant(reinterpret_cast<nstr&>(*list_constant));
        const uint32_t len = list_constant->has_value == 0 ? 0 : list.len;
        if (len == 0) {
            const bdta3_int none{1, 0};
            for (uint32_t i = 0; i < nrows; ++i) bdta3_set_int(call.env, call.rt_mem, result, i, &none);
        }
        ElementList elements(call.env);
        if (const Code code = elements.cut(call, list.bytes, len); code.failed()) return code.value;
        result->all_valid = text->all_valid;
        if (nrows == 0) return 0;
        FindInList rows{elements};
        return frame::rows(rows, call, frame::Output(result), nrows, text, list_constant);
    }
};

}  // namespace
}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT_2(bfind_in_set_av_str, FindInSet, a, v)
