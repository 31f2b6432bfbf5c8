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

// The first eight bytes of a text that is written out, or all of them, as a number. Equal texts have equal ones.
uint64_t first_bytes(const Text& text) {
    constexpr uint32_t kBytes = sizeof(uint64_t);
    uint64_t word = 0;
    if (text.len >= kBytes) {
        std::memcpy(&word, text.bytes, kBytes);
        return word;
    }
    for (uint32_t i = 0; i < text.len; ++i) word |= uint64_t{static_cast<uint8_t>(text.bytes[i])} << (8 * i);
    const uint32_t end = static_cast<uint32_t>(std::min<uint64_t>(uint64_t{text.len} + text.blank, kBytes));
    for (uint32_t i = text.len; i < end; ++i) word |= uint64_t{' '} << (8 * i);
    return word;
}

// The elements of a list, where they stand in it, chained by a hash of length and first bytes: a text meets hardly an element
// but those that it may be.
class ElementList {
  public:
    explicit ElementList(qz_env* env) : env_(env) {}
    ~ElementList() { mem_free(env_, elements_); }
    ElementList(const ElementList&) = delete;
    ElementList& operator=(const ElementList&) = delete;

    Code cut(const Call& call, char* list, uint32_t len) {
        char* begin = list;
        char* const end = list + len;
        for (;;) {
            const size_t left = static_cast<size_t>(end - begin);
            void* const comma = left == 0 ? nullptr : std::memchr(begin, ',', left);
            char* const behind = comma == nullptr ? end : static_cast<char*>(comma);
            if (const Code code = append(call, {begin, static_cast<uint32_t>(behind - begin), 0}); code.failed()) return code;
            if (comma == nullptr) break;
            begin = behind + 1;
        }
        chain();
        return kOk;
    }

    // The number of the first element that is the text. One that is a lone comma is none, as no element holds a comma.
    int32_t find(const Text& text) const {
        const uint64_t length = uint64_t{text.len} + text.blank;
        const uint64_t first = first_bytes(text);
        for (uint32_t k = chain_of(length, first); k != 0; k = elements_[k - 1].next) {
            const Element& element = elements_[k - 1];
            if (element.text.len == length && element.first_bytes == first &&
                qz_mbsncmp_f(text.bytes, element.text.bytes, text.len) == 0 &&
                is_blank(element.text.bytes + text.len, text.blank)) {
                return static_cast<int32_t>(k);
            }
        }
        return 0;
    }

  private:
    // Most chains are empty, and what is no element meets none.
    static constexpr uint32_t kChainsEachBits = 2;
    static constexpr uint32_t kChainsEach = 1 << kChainsEachBits;

    struct Element {
        Text text;
        uint64_t first_bytes;
        uint32_t next;  // number of the next one in its chain; 0: none
        // Numbers of the first ones of some of the chains, which stand here to be one block with the elements; 0: none.
        uint32_t chains[kChainsEach];
    };

    uint32_t& chain_of(uint64_t length, uint64_t first) const {
        constexpr uint64_t kGolden = 0x9E3779B97F4A7C15u;
        const uint64_t hash = ((first ^ length << 32) * kGolden) >> 32;
        const uint64_t chain = hash * count_ >> (32 - kChainsEachBits);
        return elements_[chain >> kChainsEachBits].chains[chain % kChainsEach];
    }

    static bool is_blank(const char* bytes, uint32_t n) {
        return std::all_of(bytes, bytes + n, [](char byte) { return byte == ' '; });
    }

    Code append(const Call& call, const Text& text) {
        if (count_ == capacity_) {
            if (const Code code = grow(call); code.failed()) return code;
        }
        elements_[count_++] = {text, first_bytes(text), 0, {}};
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
            Element& element = elements_[k - 1];
            uint32_t& first = chain_of(element.text.len, element.first_bytes);
            element.next = first;
            first = k;
        }
    }

    qz_env* env_;
    Element* elements_ = nullptr;
    size_t capacity_ = 0;
    uint32_t count_ = 0;
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
