/*
 * The casts between value types.
 *
 * A cast is explicit, CAST(x AS type), or made by the planner where a function has no overload for an argument's own type. The
 * planner makes a cast only if it has a cost, and prefers the overload whose casts cost least in sum.
 */
#ifndef QZENGINE_CATALOG_CASTS_H
#define QZENGINE_CATALOG_CASTS_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "engine/value_type.h"
#include "qzbifun/records.h"

namespace qzengine {

// Fills rows 0 to nrows-1 of to from the same logical rows of from; NULL stays NULL. Answers 0, or the code of the first row
// that fails, and that logical row in *failed.
using CastKernel = int32_t (*)(qz_env* env, rt_memobj* rt_mem, const bdta3_col* from, bdta3_col* to, uint32_t nrows,
                               uint32_t* failed);

struct Cast {
    static constexpr int kExplicitOnly = -1;

    ValueType from;
    ValueType to;
    int cost;
    CastKernel kernel;

    std::string name() const;  // "cast bigint to decimal"
};

std::span<const Cast> all_casts();

// The cast, or NULL when there is none.
const Cast* find_cast(ValueType from, ValueType to);

// What it costs to give a from where a to is wanted: 0 for the same type, nothing when only an explicit cast does it.
std::optional<int> implicit_cost(ValueType from, ValueType to);

}  // namespace qzengine

#endif
