// Rows whose texts stand one behind the other already, as a vector stores them row by row.
#pragma once

#include <cstdint>
#include <cstring>

#include "bop/bifun_str/joined_texts.h"
#include "bop/frame/run.h"
#include "bop/frame/shared_space.h"
#include "qzhost/characters.h"

namespace bifun {

struct TextRun {
    uint32_t begin, end;  // rows; those that are NULL in between take no part
    char* text;
    uint32_t len;
    bool has_null;
};

// Below this a run is not worth asking about.
inline constexpr uint32_t kLeastRunRows = 8;
// Rows to go by themselves before the next run is looked for; twice as many each time that there was none.
inline constexpr uint32_t kFewRowsBetweenRuns = 64;
inline constexpr uint32_t kMostRowsBetweenRuns = 1024;

// What a run has to be of.
enum class RunOf {
    kSingleBytes,  // each byte is a character
    kCharacters,   // its characters are those of its texts
};

// The run from a row on; len is 0 where there is none. kUtf8: it ends in front of a text that begins with a continuation byte.
template <bool kUtf8>
inline TextRun find_text_run(const bdta3_colstr* slots, const uint8_t* valid, uint32_t begin, uint32_t nrows) {
    uint32_t end = begin;
    while (end < nrows && valid[end] == 0) ++end;
    bool has_null = end != begin;
    if (end == nrows) return {begin, end, nullptr, 0, has_null};
    char* const text = slots[end].bytes;
    uint32_t len = 0;
    for (; end < nrows; ++end) {
        if (valid[end] == 0) {
            has_null = true;
            continue;
        }
        const bdta3_colstr& slot = slots[end];
        if (slot.len > kMostSharedBytes - len || slot.bytes != text + len) break;
        // An empty text may stand behind the last byte.
        if (kUtf8 && len != 0 && slot.len != 0 && !begins_utf8_character(*slot.bytes)) break;
        len += slot.len;
    }
    return {begin, end, text, len, has_null};
}

// The rows of a vector, the runs among them as a whole: rows.run(run) answers whether it did them all; rows.each(begin, end)
// does them one by one and answers the code of the first that failed.
template <RunOf kOf, class Rows>
int32_t rows_by_runs(const bdta3_col* texts, uint32_t nrows, Rows&& rows) {
    const auto* const slots = static_cast<const bdta3_colstr*>(texts->data->values);
    const uint8_t* const valid = texts->data->valid;
    const bool utf8 = kOf == RunOf::kCharacters && host_takes_utf8();
    uint32_t between = kFewRowsBetweenRuns;
    for (uint32_t i = 0; i < nrows;) {
        const TextRun run = utf8 ? find_text_run<true>(slots, valid, i, nrows) : find_text_run<false>(slots, valid, i, nrows);
        if (run.end - i >= kLeastRunRows && run.len != 0 && (utf8 || qz_translate_from_str_has_mb(run.text, run.len) == 0) &&
            rows.run(run)) {
            between = kFewRowsBetweenRuns;
            i = run.end;
            continue;
        }
        const uint32_t end = nrows - i < between ? nrows : i + between;
        if (between < kMostRowsBetweenRuns) between *= 2;
        if (const int32_t code = rows.each(i, end); code < 0) return code;
        i = end;
    }
    return 0;
}

}  // namespace bifun
