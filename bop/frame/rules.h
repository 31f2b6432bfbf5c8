// What a family of functions does about NULLs, flags, stores and failures, told once beside its worker.
#pragma once

#include <cstdint>

namespace bifun {

// When a result row is NULL, and with it what all_valid says of the result.
enum class RowNull : uint8_t {
    kAny,    // when any vector argument is: the valid byte is the AND of theirs, all_valid the AND of the flags
    kAll,    // when all arguments are: the OR of bytes and flags, constants included
    kNever,  // no input makes a NULL: both are 1 and no input's valid byte is read
};

// What the has_value of a constant argument does where RowNull is kAny.
enum class ConstantNull : uint8_t {
    kFlag,     // enters all_valid; rows follow the vectors and compute with the value field as it stands
    kRows,     // its low byte enters each row's valid byte; all_valid follows the vectors alone
    kIgnored,  // left out of both
    kBatch,    // a NULL constant makes all rows NULL, without a look at them
};

// When all_valid is stored. A worker that may turn a row NULL lowers the flag as it does so, hence needs it stored before.
enum class FlagStore : uint8_t {
    kAfterRows,
    kBeforeRows,
    kBeforeRowsIfConstant,  // before the rows in the forms with a constant, after them where all arguments are vectors
};

// What becomes of the valid byte of a computed row.
enum class Store : uint8_t {
    kSet,   // 1, as the host's fixed-width setters leave it
    kKeep,  // as combined from the arguments, for values written straight into the row
};

// What a batch function does about a row that failed, before it returns the row's code.
enum class OnFailure : uint8_t {
    kPush,        // pushes the code under its own name, on top of what the worker pushed
    kClear,       // clears the row's valid byte
    kClearFirst,  // clears the valid byte of row 0, whichever row failed
    kNothing,
};

struct Rules {
    RowNull row_null = RowNull::kAny;
    ConstantNull constants = ConstantNull::kFlag;
    FlagStore flag = FlagStore::kAfterRows;
    Store store = Store::kSet;
    OnFailure on_failure = OnFailure::kPush;
};

}  // namespace bifun
