/*
 * Steps that the engine computes itself: comparisons, three-valued logic, tests for NULL, signs.
 *
 * Operands are vectors, read through their selections; a comparison also takes a constant on one side, as its record. Results
 * are dense. A condition is an int: 1 true, 0 false, and a NULL row holds 0.
 */
#ifndef QZENGINE_KERNELS_H
#define QZENGINE_KERNELS_H

#include <cstdint>
#include <optional>
#include <span>

#include "engine/expression.h"
#include "engine/value_type.h"
#include "qzbifun/records.h"
#include "qzhost/characters.h"
#include "qzhost/column.h"

namespace qzengine {

// One side of a comparison: either of the two is set.
struct Operand {
    const bdta3_col* vector = nullptr;
    const bdta3_scalar* constant = nullptr;
};

// Whether values of the type can be compared.
bool is_comparable(ValueType type);

// Strings are compared as if the shorter were filled up with blanks, binary data byte by byte, date-times of different zones as
// instants. An operand that is NaN makes every comparison false but <>.
void compare(ComparisonOperator operation, ValueType type, const Operand& left, const Operand& right, bdta3_col* result,
             uint32_t nrows);

void logical_and(std::span<const bdta3_col* const> operands, bdta3_col* result, uint32_t nrows);
void logical_or(std::span<const bdta3_col* const> operands, bdta3_col* result, uint32_t nrows);
void logical_not(const bdta3_col* operand, bdta3_col* result, uint32_t nrows);

// Never NULL.
void test_null(bool negated, const bdta3_col* operand, bdta3_col* result, uint32_t nrows);

// 1 where the operand is true, 0 elsewhere; NULL stays NULL.
void make_condition(const bdta3_col* operand, bdta3_col* result, uint32_t nrows);

// The value with its sign turned, for numeric types. EC_DATA_OVERFLOW for the lowest int and bigint, and *failed is the row.
int32_t negate(ValueType type, const bdta3_col* operand, bdta3_col* result, uint32_t nrows, uint32_t* failed);

// Each string as a char of so many characters, cut where it has more, the blanks behind it implied; with 0 characters as a
// varying string with all its blanks written out. 0 or EC_OUT_OF_MEMORY.
int32_t make_char(qz_env* env, rt_memobj* rt_mem, uint32_t characters, const bdta3_col* operand, bdta3_col* result,
                  uint32_t nrows);

// The text as a char of so many characters, in place; nothing when it has more, blanks at its end aside.
inline std::optional<bdta3_colstr> as_char(char* text, uint32_t len, uint32_t characters) {
    bdta3_colstr slot{len, 0, text};
    bdta3_colstr_trim(&slot, len);
    const uint32_t count = qz_mbstrlen_ex(slot.bytes, slot.len);
    if (count > characters) return std::nullopt;
    slot.blank = characters - count;
    return slot;
}

// The rows among 0 to nrows-1 of a dense condition that are true, ascending; answers how many.
uint32_t select_true(const bdta3_col* condition, uint32_t nrows, uint16_t* rows);

}  // namespace qzengine

#endif
