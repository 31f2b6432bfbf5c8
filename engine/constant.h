/*
 * Single values: what the planner knows of a constant, the record by which a constant is passed, and one row of a vector.
 */
#ifndef QZENGINE_CONSTANT_H
#define QZENGINE_CONSTANT_H

#include <string>
#include <variant>

#include "engine/host_objects.h"
#include "engine/value_type.h"
#include "qzbifun/records.h"

namespace qzengine {

// Text, binary data or a LOB's locator, with blanks behind it that are not written out.
struct SlotValue {
    std::string bytes;
    uint32_t blank = 0;
};

// monostate is NULL. Which alternative another value takes follows from the type's storage.
using Value =
    std::variant<std::monostate, int32_t, int64_t, xdec, double, float, qztime, qz_interval_ym, qz_interval_dt, SlotValue>;

struct Constant {
    ValueType type = ValueType::kInt;
    Value value;

    bool is_null() const { return std::holds_alternative<std::monostate>(value); }
    // A condition that is true.
    bool is_true() const { return std::holds_alternative<int32_t>(value) && std::get<int32_t>(value) == 1; }
};

// The record of a constant argument. It is passed as a pointer to something that a function may write to, so each evaluator has
// its own.
class ConstantRecord {
  public:
    explicit ConstantRecord(const Constant& constant);
    ConstantRecord(const ConstantRecord&) = delete;
    ConstantRecord& operator=(const ConstantRecord&) = delete;

    bdta3_scalar* get() { return &record_.any; }

  private:
    union Record {
        bdta3_scalar any;
        bdta3_int as_int;
        bdta3_int64 as_int64;
        bdta3_double as_double;
        bdta3_float as_float;
        bdta3_dec as_dec;
        bdta3_datetime as_datetime;
        bdta3_interval_ym as_interval_ym;
        bdta3_interval_dt as_interval_dt;
        nstr as_text;
    };

    std::string long_text_;
    Record record_;
};

// Stores the constant in a physical row of a vector of its type.
void store_constant(const Constant& constant, bdta3_col* vector, uint32_t row);

// The value in a physical row.
Constant load_constant(ValueType type, const bdta3_col* vector, uint32_t row);

}  // namespace qzengine

#endif
