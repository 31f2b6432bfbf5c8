/*
 * What can go wrong between an expression and its results, one type for each party that can mend it.
 */
#ifndef QZENGINE_ERRORS_H
#define QZENGINE_ERRORS_H

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace qzengine {

// An expression cannot be parsed or planned. position is the byte of source, the text that it stands in, where that was seen.
class QueryError : public std::runtime_error {
  public:
    QueryError(std::string_view source, size_t position, const std::string& message)
        : std::runtime_error(message), source_(source), position_(position) {}
    const std::string& source() const { return source_; }
    size_t position() const { return position_; }

  private:
    std::string source_;
    size_t position_;
};

// The input cannot be read: a file that is no CSV, a field that does not fit its column's type. The message names the line.
class InputError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// An option or argument asks for what does not exist.
class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// A result cannot be written.
class OutputError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// A function, cast or comparison failed while it was evaluated.
struct Failure {
    static constexpr int64_t kNoRow = -1;  // the call failed as a whole, or while constants were folded

    struct StackEntry {
        int32_t code;
        std::string name;
    };

    std::string place;      // "row 5 (line 6)" where that is known
    std::string call;       // as the expression has it: "abs(n)"
    std::string operation;  // the export's symbol, or the cast
    int32_t code = 0;
    int64_t row = kNoRow;                // physical row of the batch
    std::vector<std::string> arguments;  // the failing row's values, as "n = 5"
    std::vector<StackEntry> stack;       // the error stack, oldest first
};

class EvaluationError : public std::runtime_error {
  public:
    explicit EvaluationError(Failure failure);
    const Failure& failure() const { return failure_; }

  private:
    Failure failure_;
};

}  // namespace qzengine

#endif
