/*
 * The catalog of SQL functions: every overload of every family, by name.
 */
#ifndef QZENGINE_CATALOG_CATALOG_H
#define QZENGINE_CATALOG_CATALOG_H

#include <span>
#include <string_view>
#include <vector>

#include "engine/catalog/function.h"

namespace qzengine {

class Catalog {
  public:
    // Entries in any order; overloads of one name keep their order. std::logic_error for an entry that contradicts itself: a
    // form without one letter for each parameter, or no form at all.
    explicit Catalog(std::vector<Function> functions);

    std::span<const Function> functions() const { return functions_; }  // sorted by name

    // The overloads of a name, in any case of letters; empty when there is none.
    std::span<const Function> overloads(std::string_view name) const;

    // A name near to one that is not there, for messages; empty when none is near.
    std::string_view nearest_name(std::string_view name) const;

  private:
    std::vector<Function> functions_;
};

// Every function that the library has.
const Catalog& builtin_catalog();

}  // namespace qzengine

#endif
