// The search services against a search that compares every place, over any bytes in any character set.
//
// First byte: the character set. Second: the bytes of the pattern. Third: the occurrence. Then the pattern and the text, each
// in a block of exactly its size.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "fuzz/require.h"
#include "qzbifun/codes.h"
#include "qzhost/characters.h"
#include "qzhost/control.h"
#include "qzhost/search.h"

namespace {

std::unique_ptr<char[]> copy(const uint8_t* data, size_t size) {
    std::unique_ptr<char[]> block(new char[size]);
    if (size > 0) std::memcpy(block.get(), data, size);
    return block;
}

struct Question {
    const char* text;
    uint32_t n;
    const char* pattern;
    uint32_t m;
    int32_t occurrence;
};

uint32_t slow_search(const Question& question, const std::vector<int32_t>& positions, uint32_t count) {
    if (question.m == 0) return 0;
    int32_t left = question.occurrence;
    if (left < 1) return 0;
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t at = static_cast<uint32_t>(positions[i]) - 1;
        if (question.n - at < question.m || std::memcmp(question.text + at, question.pattern, question.m) != 0) continue;
        if (--left == 0) return at + 1;
    }
    return 0;
}

void check(const Question& q) {
    std::vector<int32_t> positions(q.n);
    uint32_t multibyte = 0;
    const uint32_t count = qz_mbstrlen_cposition_ex(q.text, q.n, positions.data(), &multibyte);
    const uint32_t expected = slow_search(q, positions, count);
    std::vector<uint32_t> bmbc(QZ_BMBC_ENTRIES), bmgs(q.m), masks(QZ_SHIFT_MASK_ENTRIES);
    preprocess_bmbc(q.pattern, q.m, bmbc.data());
    preprocess_bmgs(q.pattern, q.m, bmgs.data());
    const uint32_t limit = preshiftorprocess(q.pattern, q.m, masks.data());
    uint32_t position = 0;
    const auto holds = [&](int32_t result, uint32_t wanted) { require(position == wanted && (result != 0) == (wanted != 0)); };
    holds(qz_strbmncmp(q.text, q.n, q.pattern, q.m, &position, q.occurrence), expected);
    holds(qz_strbmncmp_arr(q.text, q.n, q.pattern, q.m, positions.data(), q.occurrence, &position, 0), expected);
    holds(qz_strbmncmp_arr_ex(q.text, q.n, q.pattern, q.m, q.occurrence, &position, bmbc.data(), bmgs.data()), expected);
    const uint32_t expected_short = q.m <= QZ_SHIFT_OR_MAX_PATTERN ? expected : 0;
    holds(qz_mbshiftor_ncmp(q.text, q.n, q.pattern, q.m, &position, q.occurrence), expected_short);
    holds(qz_mbshiftor_ncmp_arr(q.text, q.n, q.pattern, q.m, positions.data(), q.occurrence, &position, 0), expected_short);
    holds(qz_mbshiftor_ncmp_arr_ex(q.text, q.n, q.pattern, q.m, positions.data(), q.occurrence, &position, masks.data(), limit,
                                   0),
          expected_short);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr size_t head = 3;
    if (size < head) return 0;
    host_parameter_set(SERVER_CHARSET, data[0] % 3);
    const size_t m = data[1] < 240 ? data[1] : size_t{data[1] - 239u} * 100;
    if (size < head + m) return 0;
    const std::unique_ptr<char[]> pattern = copy(data + head, m);
    const std::unique_ptr<char[]> text = copy(data + head + m, size - head - m);
    check({text.get(), static_cast<uint32_t>(size - head - m), pattern.get(), static_cast<uint32_t>(m),
           static_cast<int32_t>(data[2] % 8)});
    return 0;
}
