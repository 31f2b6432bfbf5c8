/*
 * Evaluates a plan, batch by batch.
 *
 * The caller begins a batch, fills the input vectors with its rows, runs it, and reads the results, which stand until the next
 * one begins. Vectors are made once and used for every batch. An evaluator belongs to one thread; several evaluate one plan at
 * once.
 */
#ifndef QZENGINE_EVALUATOR_H
#define QZENGINE_EVALUATOR_H

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "engine/constant.h"
#include "engine/errors.h"
#include "engine/host_objects.h"
#include "engine/plan.h"

namespace qzengine {

inline constexpr uint32_t kMaxBatchRows = 65536;

class Evaluator {
  public:
    // rows: the most rows of a batch, 1 to kMaxBatchRows. The plan outlives the evaluator.
    Evaluator(const Plan& plan, uint32_t rows, const SessionSettings& settings = {});

    // Gives back what the last batch took, its results too. To be called before the input of the next batch is filled.
    void begin_batch() { environment_.begin_batch(); }

    // The vector of plan.columns_read[i], to be filled: valid, values and all_valid; a NULL row holds zeros.
    bdta3_col* input(size_t i) const { return inputs_[i]; }

    // Evaluates the first nrows rows of the input. Answers how many rows the condition left, which is how many logical rows
    // each result has. EvaluationError names the failing row of the batch.
    uint32_t run(uint32_t nrows);

    // The vector of plan.outputs[i], to be read through its selection.
    const bdta3_col* result(size_t i) const;

    const Environment& environment() const { return environment_; }

  private:
    void evaluate(NodeId id, uint32_t nrows);
    uint32_t apply_condition(uint32_t nrows);
    int32_t call(const Node& node, const CallStep& step, bdta3_col* result, uint32_t nrows);
    [[noreturn]] void fail(const Node& node, std::string operation, int32_t code, int64_t row,
                           std::vector<Failure::StackEntry> stack = {});
    int64_t failing_row(const Node& node, const CallStep& step, bdta3_col* result, uint32_t nrows);
    const bdta3_col* vector_of(NodeId id) const { return vectors_[id].get(); }

    const Plan& plan_;
    Environment environment_;
    std::vector<Vector> vectors_;                           // by node; none for constants
    std::vector<std::unique_ptr<ConstantRecord>> records_;  // by node; for constants
    std::vector<bdta3_col*> inputs_;
    std::vector<uint16_t> selected_;
    bool narrowed_ = false;  // the inputs have a selection
};

}  // namespace qzengine

#endif
