/*
 * The families of the catalog, one file each. A new family is a function here, its file, and its line in catalog.cpp.
 */
#ifndef QZENGINE_CATALOG_FAMILIES_H
#define QZENGINE_CATALOG_FAMILIES_H

#include <vector>

#include "engine/catalog/function.h"

namespace qzengine {

std::vector<Function> math_functions();         // abs, ceil, floor
std::vector<Function> floating_functions();     // of one double
std::vector<Function> two_doubles_functions();  // atan2, log, mod, power, remainder
std::vector<Function> round_trunc_functions();
std::vector<Function> number_to_char_functions();
std::vector<Function> bit_and_functions();
std::vector<Function> greatest_least_functions();
std::vector<Function> binary_float_functions();
std::vector<Function> conditional_functions();  // nvl, if, nanvl, lnnvl
std::vector<Function> date_arithmetic_functions();
std::vector<Function> date_difference_functions();
std::vector<Function> date_part_functions();  // datepart, extract, year, dayname
std::vector<Function> date_rounding_functions();
std::vector<Function> date_composition_functions();
std::vector<Function> overlaps_functions();
std::vector<Function> string_basics_functions();    // concat, length, upper, reverse, repeat
std::vector<Function> string_position_functions();  // position, locate, find_in_set
std::vector<Function> string_search_functions();    // instr, instrb

}  // namespace qzengine

#endif
