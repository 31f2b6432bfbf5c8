/*
 * The line that tells how far a long run has come.
 */
#ifndef QZEVAL_PROGRESS_H
#define QZEVAL_PROGRESS_H

#include <chrono>
#include <cstdint>
#include <optional>

#include "engine/csv_query.h"

namespace qzeval {

// Written to standard error, if that is a terminal and standard output is not the same for rows: from the second second of a
// run on, a few times each second.
class ProgressLine {
  public:
    // total: bytes of the input, if known.
    ProgressLine(bool enabled, std::optional<uint64_t> total);
    ~ProgressLine();  // the line is gone then
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void show(const qzengine::QueryProgress& progress);
    void clear();

  private:
    using Clock = std::chrono::steady_clock;

    bool enabled_;
    bool shown_ = false;
    std::optional<uint64_t> total_;
    Clock::time_point begun_ = Clock::now();
    Clock::time_point next_;
};

}  // namespace qzeval

#endif
