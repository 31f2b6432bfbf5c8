/*
 * Evaluates a query over a CSV file, from bytes to bytes.
 *
 * Batches are cut out of the input in order; each is read, evaluated and written by one of the threads with an environment of
 * its own, and its text goes out in order. So the output is the same whatever the number of threads, and of several failures
 * the first one in the file is reported. Memory is bounded by the batches at work: it does not grow with the file.
 */
#ifndef QZENGINE_CSV_QUERY_H
#define QZENGINE_CSV_QUERY_H

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/csv_reader.h"
#include "engine/plan.h"
#include "engine/result_format.h"

namespace qzengine {

using TypeOverride = std::pair<std::string, DeclaredType>;

// A CSV file whose columns have types.
class CsvTable {
  public:
    // Reads the first batch, since its rows tell the types; overrides name columns in any case of letters. InputError, and
    // UsageError for an override of a column that does not exist.
    CsvTable(ByteSource source, const std::vector<TypeOverride>& overrides, CsvLimits limits = {});

    const std::vector<Column>& columns() const { return columns_; }
    uint32_t batch_rows() const { return limits_.batch_rows; }  // at most

    // The next batch, in order; index it before use. False at the end.
    bool next(CsvBatch& batch);
    void index(CsvBatch& batch) const { reader_.index(batch); }

  private:
    CsvLimits limits_;
    CsvReader reader_;
    std::vector<Column> columns_;
    CsvBatch first_;
    bool has_first_ = false;
};

struct QueryProgress {
    uint64_t rows = 0;   // read
    uint64_t bytes = 0;  // of the input
};

struct QueryOptions {
    unsigned threads = 1;
    ResultFormat format = ResultFormat::kCsv;
    SessionSettings session;
    std::function<void(const QueryProgress&)> progress;  // called behind each batch, by one thread at a time
};

// Takes text in order. Throws OutputError when it cannot.
using TextSink = std::function<void(std::string_view)>;

// EvaluationError, InputError, or what the sink throws: the text of the batches before the failing one has been given out then.
QueryProgress run_csv_query(CsvTable& table, const Plan& plan, const QueryOptions& options, const TextSink& sink);

}  // namespace qzengine

#endif
