// One call of an exported batch function with everything that is expected of it.
//
// A Batch tells each row's arguments, valid bytes and outcome, how each vector is laid out behind a selection, and by which
// rules the function treats NULLs, flags and failures. run() lays the vectors out in guarded memory, calls the function, and
// answers every difference from what the rules and outcomes say: the code, the error stack, each row's value and valid byte,
// rows at and above a failure, bytes of NULL rows, all_valid, the result's selection, the arguments, the canaries, the memory.
// The case tables and the differential tests stand on it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/host.h"
#include "tests/support/value.h"

namespace support {

// What a function does about NULLs, flags and failures. tests/cases/README.md tells each word.
struct Rules {
    enum class Flag : uint8_t { combine, copy, any, one, kept };
    enum class Constants : uint8_t { ignored, rows, once, own };
    enum class Valid : uint8_t { set, kept, taken, any };
    enum class Failure : uint8_t { numeric, string, first };
    enum class Exhaustion : uint8_t { memory, any, unchecked };

    Flag flag = Flag::combine;
    uint32_t copied_argument = 1;                 // Flag::copy: counted from 1
    bool flag_lowered = false;                    // 0 when a row comes out NULL
    bool flag_reads_constants = true;             // Flag::combine: has_value enters
    Constants constants = Constants::ignored;     // what the rows make of a constant's has_value
    Valid valid = Valid::set;                     // the valid byte of a computed row
    Failure failure = Failure::numeric;           // what becomes of the row that failed
    bool null_evaluated = false;                  // rows with NULL arguments are computed too
    bool bytes_plain = false;                     // valid bytes of arguments are 0 and 1 only
    Exhaustion exhaustion = Exhaustion::memory;   // the code when an allocation fails: EC_OUT_OF_MEMORY, or any failure
    std::vector<std::vector<StackEntry>> pushes;  // the stacks that may stand then; none told: an empty one
    bool inputs_changed = false;                  // arguments may be written to
};

struct Outcome {
    enum class Kind : uint8_t { value, null, error, setup_error, all_null };
    enum class Row : uint8_t { by_rule, null, kept, value };

    Kind kind = Kind::value;
    Cell value;  // Kind::value: the result; Kind::null: what the row's element holds, with null_row value
    Tolerance tolerance;
    Row null_row = Row::by_rule;  // Kind::null: the element may be anything, is kept, or has the value
    int32_t code = 0;
    std::vector<StackEntry> stack;
    Row failed_row = Row::by_rule;
    Cell failed_value;
};

constexpr size_t kMaxArguments = 5;

struct BatchRow {
    std::array<const Cell*, kMaxArguments> arguments{};  // one for each SQL argument; those of constants are not looked at
    std::array<uint8_t, kMaxArguments> bytes{};          // valid bytes, likewise
    const Outcome* outcome = nullptr;                    // not looked at when the row is NULL by the AND of the bytes
};

enum class Selection : uint8_t {
    none,      // row i is i
    permuted,  // each row elsewhere, among rows that nobody may read
    repeated,  // equal rows share one
};

struct Batch {
    std::string form;              // a, v or i for each SQL argument; i is an int by value
    std::optional<int32_t> extra;  // one more argument, behind nrows
    std::vector<const ValueType*> arguments;
    const ValueType* result = nullptr;
    Rules rules;
    void* function = nullptr;
    std::vector<BatchRow> rows;
    bool no_rows = false;               // call with nrows 0; rows are laid out all the same
    std::vector<Cell> constants;        // one for each SQL argument; those of vectors are not looked at
    std::vector<Selection> selections;  // likewise, of vectors
    bool flags_low = false;             // all_valid of the arguments is 0 though no row is NULL
    const Outcome* whole = nullptr;     // Kind::all_null or Kind::setup_error: the outcome of the call, for any rows
    int64_t fail_after = -1;            // so many allocations of the call succeed, then all fail; -1: none fails
    uint64_t seed = 0;                  // of permutations
};

// Answers what differs, in at most a few lines; empty when the call did all that was expected. Where allocations fail, the call
// may answer EC_OUT_OF_MEMORY instead, with one of the stacks that the rules tell for it; its rows count for nothing then. `code` receives what the call answered.
std::vector<std::string> run(Host& host, const Batch& batch, int32_t* code = nullptr);

// A small generator of reproducible numbers.
class Random {
  public:
    explicit Random(uint64_t seed) : state_(seed) {}
    uint64_t next() {
        uint64_t z = (state_ += 0x9E3779B97F4A7C15u);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
        return z ^ (z >> 31);
    }
    uint32_t below(uint32_t bound) { return static_cast<uint32_t>(next() % bound); }
    bool chance(uint32_t percent) { return below(100) < percent; }

  private:
    uint64_t state_;
};

}  // namespace support
