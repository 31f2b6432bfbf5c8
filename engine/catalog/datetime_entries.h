/*
 * Entries of date-time functions. Dates, times and date-times are stored alike, so that the same exports serve several types:
 * an entry is written once and entered for each of them.
 */
#ifndef QZENGINE_CATALOG_DATETIME_ENTRIES_H
#define QZENGINE_CATALOG_DATETIME_ENTRIES_H

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "engine/catalog/function.h"

namespace qzengine {

inline constexpr ValueType kTypesWithDate[] = {ValueType::kDate, ValueType::kDatetime, ValueType::kDatetimeTz};
inline constexpr ValueType kTypesWithTime[] = {ValueType::kDatetime, ValueType::kDatetimeTz, ValueType::kTime,
                                               ValueType::kTimeTz};
inline constexpr ValueType kDatetimeTypes[] = {ValueType::kDate, ValueType::kDatetime, ValueType::kDatetimeTz, ValueType::kTime,
                                               ValueType::kTimeTz};

// A value of the type for an example, of the parts that the type has and in zone +08:00: its literal, and how it is shown.
std::string example_literal(ValueType type, std::string_view date, std::string_view time = "10:30:15.5");
std::string example_text(ValueType type, std::string_view date, std::string_view time = "10:30:15.5");

// What is moved by hours or less and has a date has a time then.
constexpr ValueType with_time(ValueType type) { return type == ValueType::kDate ? ValueType::kDatetime : type; }

// Adds entry(type) for each type.
template <class Types, class Entry>
void add_for_types(std::vector<Function>& functions, const Types& types, Entry entry) {
    for (ValueType type : types) functions.push_back(entry(type));
}

// The words for parts of a date, as datepart, dateadd and datediff know them.
std::vector<Keyword> date_part_words();

}  // namespace qzengine

#endif
