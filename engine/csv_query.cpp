#include "engine/csv_query.h"

#include <fmt/format.h>

#include <condition_variable>
#include <exception>
#include <mutex>
#include <thread>

#include "engine/csv_columns.h"
#include "engine/letters.h"

namespace qzengine {

CsvTable::CsvTable(ByteSource source, const std::vector<TypeOverride>& overrides, CsvLimits limits)
    : limits_(limits), reader_(std::move(source), limits) {
    has_first_ = reader_.next(first_);
    const auto count = static_cast<uint32_t>(reader_.names().size());
    std::vector<ValueType> types(count, ValueType::kString);
    if (has_first_) {
        reader_.index(first_);
        types = infer_types(first_, count);
    }
    for (uint32_t i = 0; i < count; ++i) columns_.push_back({reader_.names()[i], types[i]});
    for (const auto& [name, type] : overrides) {
        bool found = false;
        for (Column& column : columns_) {
            if (!same_letters(column.name, name)) continue;
            column.type = type.type;
            column.characters = type.characters;
            found = true;
        }
        if (!found) throw UsageError(fmt::format("there is no column {} to give the type {}", name, type_name(type)));
    }
}

bool CsvTable::next(CsvBatch& batch) {
    if (!has_first_) return reader_.next(batch);
    has_first_ = false;
    std::swap(batch, first_);
    return true;
}

namespace {

class QueryRun {
  public:
    QueryRun(CsvTable& table, const Plan& plan, const QueryOptions& options, const TextSink& sink)
        : table_(table), plan_(plan), options_(options), sink_(sink), writer_(make_result_writer(options.format, plan)) {}

    QueryProgress run() {
        TextBuffer text;
        writer_->begin(text);
        sink_(text.view());

        std::vector<std::unique_ptr<Worker>> workers;
        do {
            workers.push_back(std::make_unique<Worker>(plan_, table_.batch_rows(), options_.session));
        } while (workers.size() < options_.threads);
        {
            std::vector<std::jthread> threads;  // joined here, whatever happens
            for (size_t i = 1; i < workers.size(); ++i) threads.emplace_back([this, &workers, i] { work(*workers[i]); });
            work(*workers[0]);
        }
        if (error_ != nullptr) std::rethrow_exception(error_);

        text.clear();
        writer_->end(text, rows_written_);
        sink_(text.view());
        return progress_;
    }

  private:
    // What a thread has for itself.
    struct Worker {
        Worker(const Plan& plan, uint32_t batch_rows, const SessionSettings& session) : evaluator(plan, batch_rows, session) {}
        Evaluator evaluator;
        CsvBatch batch;
        TextBuffer text;
        uint32_t rows = 0;  // results of the batch
    };

    void work(Worker& worker) {
        for (;;) {
            uint64_t ticket = 0;
            std::exception_ptr error;
            try {
                if (!take_batch(worker, ticket)) return;
                evaluate(worker);
            } catch (...) {
                error = std::current_exception();
            }
            if (!hand_out(ticket, worker, error)) return;
        }
    }

    // Takes the next batch and its place in the order. False when there is none.
    bool take_batch(Worker& worker, uint64_t& ticket) {
        const std::lock_guard lock(reading_);
        if (finished_) return false;
        ticket = next_ticket_++;
        finished_ = true;  // a reader that fails is not asked again
        finished_ = !table_.next(worker.batch);
        return !finished_;
    }

    void evaluate(Worker& worker) {
        table_.index(worker.batch);
        worker.evaluator.begin_batch();
        for (size_t i = 0; i < plan_.columns_read.size(); ++i) {
            const uint32_t column = plan_.columns_read[i];
            read_column(worker.batch, column, table_.columns()[column], worker.evaluator.input(i),
                        worker.evaluator.environment());
        }
        worker.rows = worker.evaluator.run(worker.batch.rows());
        worker.text.clear();
        if (!writer_->in_order()) writer_->rows(worker.evaluator, worker.rows, worker.text);
    }

    // Waits for the batch's turn and gives its text out. False when the run is over.
    bool hand_out(uint64_t ticket, Worker& worker, const std::exception_ptr& error) {
        std::unique_lock lock(writing_);
        turn_changed_.wait(lock, [&] { return turn_ == ticket || error_ != nullptr; });
        if (error_ != nullptr) return false;
        try {
            if (error != nullptr) std::rethrow_exception(error);
            write(worker);
        } catch (const EvaluationError& failed) {
            error_ = std::make_exception_ptr(with_place(failed, worker));
        } catch (...) {
            error_ = std::current_exception();
        }
        ++turn_;
        turn_changed_.notify_all();
        if (error_ == nullptr) return true;
        lock.unlock();
        const std::lock_guard reading(reading_);
        finished_ = true;
        return false;
    }

    void write(Worker& worker) {
        if (writer_->in_order()) writer_->rows(worker.evaluator, worker.rows, worker.text);
        if (worker.rows > 0) {
            if (rows_written_ > 0) sink_(writer_->separator());
            sink_(worker.text.view());
        }
        rows_written_ += worker.rows;
        progress_.rows += worker.batch.rows();
        progress_.bytes += worker.batch.bytes();
        if (options_.progress) options_.progress(progress_);
    }

    EvaluationError with_place(const EvaluationError& error, const Worker& worker) const {
        Failure failure = error.failure();
        if (failure.row != Failure::kNoRow) {
            const uint64_t row = progress_.rows + static_cast<uint64_t>(failure.row) + 1;
            failure.place = fmt::format("row {} (line {})", row, worker.batch.line(static_cast<uint32_t>(failure.row)));
        }
        return EvaluationError(std::move(failure));
    }

    CsvTable& table_;
    const Plan& plan_;
    const QueryOptions& options_;
    const TextSink& sink_;
    std::unique_ptr<ResultWriter> writer_;

    std::mutex reading_;  // guards the table's batches and the two below
    uint64_t next_ticket_ = 0;
    bool finished_ = false;

    std::mutex writing_;  // guards the sink and all below
    std::condition_variable turn_changed_;
    uint64_t turn_ = 0;
    std::exception_ptr error_;
    uint64_t rows_written_ = 0;
    QueryProgress progress_;
};

}  // namespace

QueryProgress run_csv_query(CsvTable& table, const Plan& plan, const QueryOptions& options, const TextSink& sink) {
    return QueryRun(table, plan, options, sink).run();
}

}  // namespace qzengine
