/*
 * Values of CLOB and BLOB: making their locators and reading what stands behind them.
 *
 * A value of up to kInRowBytes stands in its locator, a longer one in the environment's store until the next batch begins, from
 * kLongFormBytes on in the long form. A constant always stands in its locator, so that it is good in every environment.
 */
#ifndef QZENGINE_LOB_VALUES_H
#define QZENGINE_LOB_VALUES_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "engine/value_type.h"
#include "qzbifun/records.h"

namespace qzengine {

inline constexpr size_t kInRowBytes = 2000;
inline constexpr size_t kLongFormBytes = size_t{1} << 20;

// Stores a value in a row of a vector of the type. 0 or a code.
int32_t store_lob(qz_env* env, rt_memobj* rt_mem, ValueType type, std::string_view value, bdta3_col* vector, uint32_t row);

// The locator of a value that stands in it.
std::string in_row_locator(ValueType type, std::string_view value);

// The value of a locator: in the slot, or else in storage. 0, or a code when it cannot be read.
int32_t read_lob(qz_env* env, const bdta3_colstr& slot, std::string& storage, std::string_view& value);

}  // namespace qzengine

#endif
