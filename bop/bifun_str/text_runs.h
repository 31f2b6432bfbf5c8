// Rows whose texts stand one behind the other, as a vector stores them row by row: what is asked of one text can be asked of
// all at once, as long as their characters cannot grow together.
//
// That is so where every byte is a character of its own. No character spans two rows then, and none of a row's bytes would be
// part of a longer one in the row alone: it would be part of it in the run too.
#pragma once

#include <cstdint>
#include <cstring>

#include "bop/frame/run.h"
#include "qzhost/characters.h"

namespace bifun {

struct TextRun {
    uint32_t begin, end;  // rows; those that are NULL in between take no part
    char* text;
    uint32_t len;
};

// Short enough for the texts to stay in the first cache level, and for a vector to have room for them in its own space.
inline constexpr uint32_t kMostRunBytes = 2048;
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
        if (slot.len > kMostRunBytes - run.len || slot.bytes != run.text + run.len) break;
        run.len += slot.len;
    }
    return run;
}

// The rows of a vector, the runs among them as a whole: rows.run(run) answers whether it did them all; rows.each(begin, end)
// does them one by one and answers the code of the first that failed.
template <class Rows>
int32_t rows_by_runs(const bdta3_col* texts, uint32_t nrows, Rows&& rows) {
    const auto* const slots = static_cast<const bdta3_colstr*>(texts->data->values);
    uint32_t between = kFewRowsBetweenRuns;
    for (uint32_t i = 0; i < nrows;) {
        const TextRun run = find_text_run(slots, texts->data->valid, i, nrows);
        if (run.end - i >= kLeastRunRows && run.len != 0 && qz_translate_from_str_has_mb(run.text, run.len) == 0 &&
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
