/*
 * Results as text: CSV, JSON or a table for people. CSV is in the character set of columns, the others are UTF-8.
 *
 * csv    RFC 4180 with line feeds and a first record of names. NULL is an empty field, an empty string a pair of quotes.
 * json   an array with an object for each row, one on each line. Decimals are numbers with all their digits; what is no JSON
 *        number (NaN, Infinity) is a string.
 * table  aligned columns, numbers to the right, NULL as NULL, control characters escaped. The widths are those of the first
 *        batch; a longer value behind it moves its row's columns to the right.
 */
#ifndef QZENGINE_RESULT_FORMAT_H
#define QZENGINE_RESULT_FORMAT_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/evaluator.h"
#include "engine/text_buffer.h"

namespace qzengine {

enum class ResultFormat { kCsv, kJson, kTable };

class ResultWriter {
  public:
    virtual ~ResultWriter() = default;

    // What stands in front of all rows, between the rows of two batches, and behind all rows.
    virtual void begin(TextBuffer& out) = 0;
    virtual std::string_view separator() const { return {}; }
    virtual void end(TextBuffer& out, uint64_t rows) = 0;

    // The results of a batch. Any thread may write them, in any order, unless in_order says that batches must be written one
    // after the other.
    virtual void rows(const Evaluator& evaluator, uint32_t count, TextBuffer& out) = 0;
    virtual bool in_order() const { return false; }
};

// Writes the outputs of a plan.
std::unique_ptr<ResultWriter> make_result_writer(ResultFormat format, const Plan& plan);

}  // namespace qzengine

#endif
