// Texts are mostly short and of a length that no branch can guess: moves that take the same steps for many lengths.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace bifun {

// Two moves that overlap cover every length from kWidth to its double.
template <size_t kWidth>
inline void copy_ends(char* to, const char* from, size_t len) {
    char head[kWidth], tail[kWidth];
    std::memcpy(head, from, kWidth);
    std::memcpy(tail, from + len - kWidth, kWidth);
    std::memcpy(to, head, kWidth);
    std::memcpy(to + len - kWidth, tail, kWidth);
}

// memcpy; from may be absent when len is 0.
inline void copy_text(char* to, const char* from, size_t len) {
    constexpr size_t kBlock = 16;
    if (len > 3 * kBlock) {
        std::memcpy(to, from, len);
    } else if (len >= kBlock) {
        // Three blocks, of which the second overlaps the last where there is no room for it.
        const size_t last = len - kBlock;
        const size_t middle = last < kBlock ? last : kBlock;
        char first_block[kBlock], middle_block[kBlock], last_block[kBlock];
        std::memcpy(first_block, from, kBlock);
        std::memcpy(middle_block, from + middle, kBlock);
        std::memcpy(last_block, from + last, kBlock);
        std::memcpy(to, first_block, kBlock);
        std::memcpy(to + middle, middle_block, kBlock);
        std::memcpy(to + last, last_block, kBlock);
    } else if (len >= 8) {
        copy_ends<8>(to, from, len);
    } else if (len >= 4) {
        copy_ends<4>(to, from, len);
    } else if (len >= 2) {
        copy_ends<2>(to, from, len);
    } else if (len == 1) {
        *to = *from;
    }
}

}  // namespace bifun
