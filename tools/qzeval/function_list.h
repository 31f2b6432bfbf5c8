/*
 * The catalog for people.
 */
#ifndef QZEVAL_FUNCTION_LIST_H
#define QZEVAL_FUNCTION_LIST_H

#include <string>
#include <string_view>

#include "engine/catalog/catalog.h"

namespace qzeval {

// Every overload in a line: signature and help.
std::string list_functions(const qzengine::Catalog& catalog);

// The overloads of a name with NULL rule, errors, exported functions and examples. UsageError for an unknown name.
std::string describe_function(const qzengine::Catalog& catalog, std::string_view name);

}  // namespace qzeval

#endif
