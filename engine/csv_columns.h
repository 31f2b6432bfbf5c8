/*
 * Types of CSV columns, and their values in vectors.
 *
 * An empty field without quotes is NULL, in a column of any type; an empty one in quotes is an empty string.
 */
#ifndef QZENGINE_CSV_COLUMNS_H
#define QZENGINE_CSV_COLUMNS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/csv_reader.h"
#include "engine/host_objects.h"
#include "engine/plan.h"
#include "engine/value_type.h"

namespace qzengine {

inline constexpr uint32_t kSampledRows = 1000;

// The types that the first kSampledRows rows of an indexed batch fit, by column. Of whole numbers that fit bigint: bigint; of
// numbers with at most 38 digits and without exponent: decimal; of other numbers: double; of dates such as 2024-02-29: date; of
// such dates some of which have a time: datetime; of such dates all of which have a time and a zone: datetime_tz; of anything
// else, of what stands in quotes, and of no value at all: string.
std::vector<ValueType> infer_types(const CsvBatch& batch, uint32_t columns);

// Stores a column's fields of an indexed batch in rows 0 to batch.rows()-1 of a vector. Strings and binary data are not copied:
// they stand in the batch, in which doubled quotes are made single; the blanks at the end of a char(n) are left out and
// implied. LOBs are made in the environment. A date-time that names no zone gets the session's if its type has one. InputError
// names line and column of a field that does not fit.
void read_column(CsvBatch& batch, uint32_t column, const Column& type, bdta3_col* vector, const Environment& environment);

}  // namespace qzengine

#endif
