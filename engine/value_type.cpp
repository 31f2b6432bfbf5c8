#include "engine/value_type.h"

#include <algorithm>
#include <array>

#include "engine/letters.h"
#include "qzhost/control.h"

namespace qzengine {
namespace {

struct TypeRow {
    ValueType type;
    std::string_view name;
    int32_t host;
};

constexpr std::array kTypes{
    TypeRow{ValueType::kInt, "int", HOST_INT},
    TypeRow{ValueType::kBigint, "bigint", HOST_INT64},
    TypeRow{ValueType::kDecimal, "decimal", HOST_DEC},
    TypeRow{ValueType::kDouble, "double", HOST_DOUBLE},
    TypeRow{ValueType::kFloat, "float", HOST_FLOAT},
    TypeRow{ValueType::kString, "string", HOST_STR},
    TypeRow{ValueType::kBinary, "binary", HOST_BIN},
    TypeRow{ValueType::kDate, "date", HOST_DATETIME},
    TypeRow{ValueType::kTime, "time", HOST_DATETIME},
    TypeRow{ValueType::kDatetime, "datetime", HOST_DATETIME},
    TypeRow{ValueType::kTimeTz, "time_tz", HOST_DATETIME},
    TypeRow{ValueType::kDatetimeTz, "datetime_tz", HOST_DATETIME},
    TypeRow{ValueType::kIntervalYm, "interval_ym", HOST_INTERVAL_YM},
    TypeRow{ValueType::kIntervalDt, "interval_dt", HOST_INTERVAL_DT},
    TypeRow{ValueType::kClob, "clob", HOST_CLOB},
    TypeRow{ValueType::kBlob, "blob", HOST_BLOB},
};

constexpr bool rows_stand_in_order() {
    for (size_t i = 0; i < kTypes.size(); ++i) {
        if (static_cast<size_t>(kTypes[i].type) != i) return false;
    }
    return true;
}
static_assert(rows_stand_in_order(), "the table is indexed by the type");

constexpr std::array<ValueType, kTypes.size()> kAllTypes = [] {
    std::array<ValueType, kTypes.size()> types{};
    std::transform(kTypes.begin(), kTypes.end(), types.begin(), [](const TypeRow& row) { return row.type; });
    return types;
}();

}  // namespace

std::span<const ValueType> all_value_types() { return kAllTypes; }

std::string_view type_name(ValueType type) { return kTypes[static_cast<size_t>(type)].name; }

std::optional<ValueType> type_from_name(std::string_view name) {
    const auto* found =
        std::find_if(kTypes.begin(), kTypes.end(), [&](const TypeRow& row) { return same_letters(row.name, name); });
    if (found == kTypes.end()) return std::nullopt;
    return found->type;
}

int32_t host_type(ValueType type) { return kTypes[static_cast<size_t>(type)].host; }

}  // namespace qzengine
