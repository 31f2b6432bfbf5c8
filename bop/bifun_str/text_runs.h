// Rows whose texts stand one behind the other already, as a vector stores them row by row.
#pragma once

#include <cstdint>
#include <cstring>

#include "bop/bifun_str/joined_texts.h"
#include "bop/frame/run.h"
#include "qzhost/characters.h"

namespace bifun {

struct TextRun {
    uint32_t begin, end;  // rows; those that are NULL in between take no part
    char* text;
    uint32_t len;
};

// Below this a run is not worth asking about.
inline constexpr uint32_t kLeastRunRows = 8;
// Rows to go by themselves before the next run is looked for; twice as many each time that there was none.
inline constexpr uint32_t kFewRowsBetweenRuns = 64;
inline constexpr uint32_t kMostRowsBetweenRuns = 1024;

// The run from a row on. len is 0 where there is none.
inline TextRun find_text_run(const bdta3_colstr* slots, const uint8_t* valid, uint32_t begin, uint32_t nrows) {
    TextRun run{begin, begin, nullptr, 0};
    while (run.end < nrows && valid[run.end] == 0) ++run.end;
    if (run.end == nrows) return run;
    run.text = slots[run.end].bytes;
    for (; run.end < nrows; ++run.end) {
        if (valid[run.end] == 0) continue;
        const bdta3_colstr& slot = slots[run.end];
        if (slot.len > kMostJoinedBytes - run.len || slot.bytes != run.text + run.len) break;
        run.len += slot.len;
    }
    return run;
}

// What a run has to be of.
enum class RunOf {
    kSingleBytes,  // each byte is a character
    kCharacters,   // its characters are those of its texts
};

// Whether each text of a run that is not empty begins with a byte that may begin a character of UTF-8.
inline bool texts_begin_utf8_characters(const bdta3_colstr* slots, const uint8_t* valid, const TextRun& run) {
    bool begins = true;
    for (uint32_t i = run.begin; i < run.end; ++i) {
        // An empty text may stand behind the last byte.
        if (valid[i] != 0 && slots[i].len != 0) begins &= begins_utf8_character(*slots[i].bytes);
    }
    return begins;
}

// The rows of a vector, the runs among them as a whole: rows.run(run) answers whether it did them all; rows.each(begin, end)
// does them one by one and answers the code of the first that failed.
template <RunOf kOf, class Rows>
int32_t rows_by_runs(const bdta3_col* texts, uint32_t nrows, Rows&& rows) {
    const auto* const slots = static_cast<const bdta3_colstr*>(texts->data->values);
    const uint8_t* const valid = texts->data->valid;
    const bool utf8 = kOf == RunOf::kCharacters && host_takes_utf8();
    const auto is_run = [&](const TextRun& run) {
        return utf8 ? texts_begin_utf8_characters(slots, valid, run) : qz_translate_from_str_has_mb(run.text, run.len) == 0;
    };
    uint32_t between = kFewRowsBetweenRuns;
    for (uint32_t i = 0; i < nrows;) {
        const TextRun run = find_text_run(slots, valid, i, nrows);
        if (run.end - i >= kLeastRunRows && run.len != 0 && is_run(run) && rows.run(run)) {
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
