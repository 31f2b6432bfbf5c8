// Rows whose texts are stored together, in one piece of the result's own space: room is asked for once, and every step is done
// for all of them before the next, so that none waits for what the one before it has only just stored.
#pragma once

#include <algorithm>
#include <cstdint>

#include "bop/frame/call.h"
#include "bop/frame/shared_space.h"

namespace bifun {

// The room of a group, and of each of its rows behind the one before it.
struct TextGroup {
    static constexpr uint32_t kMostRows = 256;
    // What is longer has nothing to gain.
    static constexpr uint32_t kLongestText = 256;

    uint32_t begin;
    uint32_t rows;
    char* space;
    uint32_t at[kMostRows + 1];  // of row begin + k at k; the group's bytes behind the last

    uint32_t len(uint32_t k) const { return at[k + 1] - at[k]; }
    uint32_t bytes() const { return at[rows]; }
    // Where a row's text stands: an empty one too, and none behind the group.
    char* text(uint32_t k) const { return space + (len(k) == 0 ? 0 : at[k]); }
};

// The rows from begin to in front of last. rows.bytes(i) tells the bytes that row i stores, or any number above kLongestText
// where it is to go by itself; rows.group(group) stores the rows of a group, one at least of which stores bytes, and
// rows.each(begin, end) rows one by one. Both answer the code of the first that failed.
template <class Rows>
int32_t rows_in_groups(const Call& call, const bdta3_col* result, uint32_t begin, uint32_t last, const Rows& rows) {
    TextGroup group;
    group.at[0] = 0;
    while (begin < last) {
        const uint32_t most = std::min(last - begin, TextGroup::kMostRows);
        uint32_t n = 0;
        uint32_t bytes = 0;
        while (n < most) {
            const uint64_t more = rows.bytes(begin + n);
            if (more > TextGroup::kLongestText || bytes + more > kMostSharedBytes) break;
            bytes += static_cast<uint32_t>(more);
            group.at[++n] = bytes;
        }
        group.begin = begin;
        group.rows = n;
        group.space = bytes == 0 ? nullptr : take_shared_space(call, result, bytes);
        uint32_t end = begin + n;
        if (n == 0) {
            do {
                ++end;
            } while (end < last && rows.bytes(end) > TextGroup::kLongestText);
        }
        const int32_t code = group.space == nullptr ? rows.each(begin, end) : rows.group(group);
        if (code < 0) return code;
        begin = end;
    }
    return 0;
}

template <class Rows>
int32_t rows_in_groups(const Call& call, const bdta3_col* result, uint32_t nrows, const Rows& rows) {
    return rows_in_groups(call, result, 0, nrows, rows);
}

}  // namespace bifun
