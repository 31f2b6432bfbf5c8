#include "engine/kernels.h"

#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>

#include "engine/host_objects.h"
#include "qzbifun/codes.h"
#include "qzhost/calendar.h"
#include "qzhost/column.h"
#include "qzhost/decimal.h"
#include "qzhost/interval.h"

namespace qzengine {
namespace {

// ---- Order of two values; unordered is neither ------------------------------------------------------------------------------

template <class T>
bool holds(ComparisonOperator operation, T x, T y) {
    switch (operation) {
        case ComparisonOperator::kEqual:
            return x == y;
        case ComparisonOperator::kNotEqual:
            return x != y;
        case ComparisonOperator::kLess:
            return x < y;
        case ComparisonOperator::kLessEqual:
            return x <= y;
        case ComparisonOperator::kGreater:
            return x > y;
        case ComparisonOperator::kGreaterEqual:
            return x >= y;
    }
    return false;
}

bool holds(ComparisonOperator operation, const xdec& x, const xdec& y) { return holds(operation, xdec_cmp(&x, &y), 0); }

bool holds(ComparisonOperator operation, const bdta3_colstr& x, const bdta3_colstr& y) {
    return holds(operation, bdta3_colstr_cmp_with_blank(&x, &y, 0), 0);
}

bool holds(ComparisonOperator operation, const qztime& x, const qztime& y) { return holds(operation, qztime_cmp(&x, &y), 0); }

bool holds(ComparisonOperator operation, const qz_interval_ym& x, const qz_interval_ym& y) {
    return holds(operation, interval_ym_cmp(&x, &y, 0, 0), 0);
}

bool holds(ComparisonOperator operation, const qz_interval_dt& x, const qz_interval_dt& y) {
    return holds(operation, interval_dt_cmp(&x, &y, 0, 0), 0);
}

// The slot of binary data, which is compared byte by byte without blanks.
struct BinarySlot {
    bdta3_colstr slot;

    std::string_view bytes() const { return {slot.bytes, slot.len}; }
};

bool holds(ComparisonOperator operation, const BinarySlot& x, const BinarySlot& y) {
    return holds(operation, x.bytes().compare(y.bytes()), 0);
}

// ---- The two kinds of operand -----------------------------------------------------------------------------------------------

template <class T>
class VectorOperand {
  public:
    explicit VectorOperand(const bdta3_col* vector)
        : vector_(vector), valid_(vector->data->valid), values_(values_of<T>(vector)) {}
    bool valid(uint32_t i) const { return valid_[physical_row(vector_, i)] != 0; }
    const T& value(uint32_t i) const { return values_[physical_row(vector_, i)]; }

  private:
    const bdta3_col* vector_;
    const uint8_t* valid_;
    const T* values_;
};

template <class T>
T constant_value(const bdta3_scalar* record) {
    if constexpr (std::is_same_v<T, int32_t>) return reinterpret_cast<const bdta3_int*>(record)->value;
    if constexpr (std::is_same_v<T, int64_t>) return reinterpret_cast<const bdta3_int64*>(record)->value;
    if constexpr (std::is_same_v<T, double>) return reinterpret_cast<const bdta3_double*>(record)->value;
    if constexpr (std::is_same_v<T, float>) return reinterpret_cast<const bdta3_float*>(record)->value;
    if constexpr (std::is_same_v<T, xdec>) return reinterpret_cast<const bdta3_dec*>(record)->value;
    if constexpr (std::is_same_v<T, qztime>) return reinterpret_cast<const bdta3_datetime*>(record)->value;
    if constexpr (std::is_same_v<T, qz_interval_ym>) return reinterpret_cast<const bdta3_interval_ym*>(record)->value;
    if constexpr (std::is_same_v<T, qz_interval_dt>) return reinterpret_cast<const bdta3_interval_dt*>(record)->value;
    if constexpr (std::is_same_v<T, bdta3_colstr> || std::is_same_v<T, BinarySlot>) {
        const nstr* text = reinterpret_cast<const nstr*>(record);
        return T{text->len, text->blank, text->nstr_ext};
    }
}

template <class T>
class ConstantOperand {
  public:
    explicit ConstantOperand(const bdta3_scalar* record) : valid_(record->has_value != 0), value_(constant_value<T>(record)) {}
    bool valid(uint32_t) const { return valid_; }
    const T& value(uint32_t) const { return value_; }

  private:
    bool valid_;
    T value_;
};

template <class Left, class Right>
void compare_rows(ComparisonOperator operation, const Left& left, const Right& right, bdta3_col* result, uint32_t nrows) {
    uint8_t* valid = result->data->valid;
    int32_t* values = values_of<int32_t>(result);
    uint8_t all = 1;
    for (uint32_t i = 0; i < nrows; ++i) {
        const bool present = left.valid(i) && right.valid(i);
        valid[i] = present;
        values[i] = present && holds(operation, left.value(i), right.value(i));
        all &= valid[i];
    }
    result->all_valid = all;
}

template <class T>
void compare_values(ComparisonOperator operation, const Operand& left, const Operand& right, bdta3_col* result,
                    uint32_t nrows) {
    if (left.constant != nullptr) {
        compare_rows(operation, ConstantOperand<T>(left.constant), VectorOperand<T>(right.vector), result, nrows);
    } else if (right.constant != nullptr) {
        compare_rows(operation, VectorOperand<T>(left.vector), ConstantOperand<T>(right.constant), result, nrows);
    } else {
        compare_rows(operation, VectorOperand<T>(left.vector), VectorOperand<T>(right.vector), result, nrows);
    }
}

// ---- Three-valued logic -----------------------------------------------------------------------------------------------------

bool is_true(const bdta3_col* operand, uint32_t p) { return values_of<int32_t>(operand)[p] == 1; }

// Decided by the first operand that has the deciding truth; otherwise NULL if any operand is.
void join(bool deciding, std::span<const bdta3_col* const> operands, bdta3_col* result, uint32_t nrows) {
    uint8_t* valid = result->data->valid;
    int32_t* values = values_of<int32_t>(result);
    uint8_t all = 1;
    for (uint32_t i = 0; i < nrows; ++i) {
        bool known = true;
        bool decided = false;
        for (const bdta3_col* operand : operands) {
            const uint32_t p = physical_row(operand, i);
            if (operand->data->valid[p] == 0) {
                known = false;
            } else if (is_true(operand, p) == deciding) {
                decided = true;
                break;
            }
        }
        valid[i] = decided || known;
        values[i] = decided ? deciding : known && !deciding;
        all &= valid[i];
    }
    result->all_valid = all;
}

template <class T>
int32_t negate_rows(const bdta3_col* operand, bdta3_col* result, uint32_t nrows, uint32_t* failed) {
    const T* values = values_of<T>(operand);
    T* to = values_of<T>(result);
    for (uint32_t i = 0; i < nrows; ++i) {
        const uint32_t p = physical_row(operand, i);
        result->data->valid[i] = operand->data->valid[p] != 0;
        if (operand->data->valid[p] == 0) continue;
        if constexpr (std::is_same_v<T, xdec>) {
            xdec_neg(&values[p], &to[i]);
        } else {
            if constexpr (std::is_integral_v<T>) {
                if (values[p] == std::numeric_limits<T>::min()) {
                    *failed = i;
                    return EC_DATA_OVERFLOW;
                }
            }
            to[i] = -values[p];
        }
    }
    result->all_valid = operand->all_valid;
    return 0;
}

}  // namespace

bool is_comparable(ValueType type) {
    return is_numeric(type) || is_datetime(type) || is_interval(type) || type == ValueType::kString ||
           type == ValueType::kBinary;
}

void compare(ComparisonOperator operation, ValueType type, const Operand& left, const Operand& right, bdta3_col* result,
             uint32_t nrows) {
    switch (type) {
        case ValueType::kInt:
            return compare_values<int32_t>(operation, left, right, result, nrows);
        case ValueType::kBigint:
            return compare_values<int64_t>(operation, left, right, result, nrows);
        case ValueType::kDouble:
            return compare_values<double>(operation, left, right, result, nrows);
        case ValueType::kFloat:
            return compare_values<float>(operation, left, right, result, nrows);
        case ValueType::kDecimal:
            return compare_values<xdec>(operation, left, right, result, nrows);
        case ValueType::kString:
            return compare_values<bdta3_colstr>(operation, left, right, result, nrows);
        case ValueType::kBinary:
            return compare_values<BinarySlot>(operation, left, right, result, nrows);
        case ValueType::kDate:
        case ValueType::kTime:
        case ValueType::kDatetime:
        case ValueType::kTimeTz:
        case ValueType::kDatetimeTz:
            return compare_values<qztime>(operation, left, right, result, nrows);
        case ValueType::kIntervalYm:
            return compare_values<qz_interval_ym>(operation, left, right, result, nrows);
        case ValueType::kIntervalDt:
            return compare_values<qz_interval_dt>(operation, left, right, result, nrows);
        default:
            throw std::logic_error("no comparison of type " + std::string(type_name(type)));
    }
}

void logical_and(std::span<const bdta3_col* const> operands, bdta3_col* result, uint32_t nrows) {
    join(false, operands, result, nrows);
}

void logical_or(std::span<const bdta3_col* const> operands, bdta3_col* result, uint32_t nrows) {
    join(true, operands, result, nrows);
}

void logical_not(const bdta3_col* operand, bdta3_col* result, uint32_t nrows) {
    for (uint32_t i = 0; i < nrows; ++i) {
        const uint32_t p = physical_row(operand, i);
        const bool valid = operand->data->valid[p] != 0;
        result->data->valid[i] = valid;
        values_of<int32_t>(result)[i] = valid && !is_true(operand, p);
    }
    result->all_valid = operand->all_valid;
}

void test_null(bool negated, const bdta3_col* operand, bdta3_col* result, uint32_t nrows) {
    const uint8_t* valid = operand->data->valid;
    int32_t* values = values_of<int32_t>(result);
    for (uint32_t i = 0; i < nrows; ++i) values[i] = (valid[physical_row(operand, i)] != 0) == negated;
    if (nrows > 0) std::memset(result->data->valid, 1, nrows);
    result->all_valid = 1;
}

void make_condition(const bdta3_col* operand, bdta3_col* result, uint32_t nrows) {
    for (uint32_t i = 0; i < nrows; ++i) {
        const uint32_t p = physical_row(operand, i);
        const bool valid = operand->data->valid[p] != 0;
        result->data->valid[i] = valid;
        values_of<int32_t>(result)[i] = valid && is_true(operand, p);
    }
    result->all_valid = operand->all_valid;
}

int32_t negate(ValueType type, const bdta3_col* operand, bdta3_col* result, uint32_t nrows, uint32_t* failed) {
    switch (type) {
        case ValueType::kInt:
            return negate_rows<int32_t>(operand, result, nrows, failed);
        case ValueType::kBigint:
            return negate_rows<int64_t>(operand, result, nrows, failed);
        case ValueType::kDouble:
            return negate_rows<double>(operand, result, nrows, failed);
        case ValueType::kFloat:
            return negate_rows<float>(operand, result, nrows, failed);
        case ValueType::kDecimal:
            return negate_rows<xdec>(operand, result, nrows, failed);
        default:
            throw std::logic_error("no sign of type " + std::string(type_name(type)));
    }
}

int32_t make_char(qz_env* env, rt_memobj* rt_mem, uint32_t characters, const bdta3_col* operand, bdta3_col* result,
                  uint32_t nrows) {
    std::string written;
    for (uint32_t i = 0; i < nrows; ++i) {
        const uint32_t p = physical_row(operand, i);
        if (operand->data->valid[p] == 0) continue;
        bdta3_colstr made = values_of<bdta3_colstr>(operand)[p];
        if (characters == 0) {
            written.assign(std::string_view(made.bytes, made.len)).append(made.blank, ' ');
            made = {static_cast<uint32_t>(written.size()), 0, written.data()};
        } else if (const std::optional<bdta3_colstr> whole = as_char(made.bytes, made.len, characters)) {
            made = *whole;
        } else {
            made = *as_char(made.bytes, qz_mbget_bytelen(made.bytes, made.len, characters), characters);
        }
        const int32_t code = bdta3_col_assign_str(env, rt_mem, result, i, made.bytes, made.len, made.blank);
        if (code < 0) return code;
    }
    result->all_valid = operand->all_valid;
    return 0;
}

uint32_t select_true(const bdta3_col* condition, uint32_t nrows, uint16_t* rows) {
    const uint8_t* valid = condition->data->valid;
    const int32_t* values = values_of<int32_t>(condition);
    uint32_t count = 0;
    for (uint32_t i = 0; i < nrows; ++i) {
        rows[count] = static_cast<uint16_t>(i);  // overwritten unless the row counts
        count += valid[i] != 0 && values[i] == 1;
    }
    return count;
}

}  // namespace qzengine
