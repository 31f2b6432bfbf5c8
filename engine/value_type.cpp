#include "engine/value_type.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>

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

// Names that stand for types of other names.
constexpr std::string_view kVarying = "varchar";
constexpr std::string_view kFixed = "char";

std::string list_of_types() {
    std::string list;
    for (const TypeRow& row : kTypes) list.append(row.name).append(", ");
    return list + "char(n) and varchar, which is string";
}

std::optional<uint32_t> read_characters(std::string_view text) {
    uint32_t n = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), n);
    if (error != std::errc() || end != text.data() + text.size() || n < 1 || n > kMostCharacters) return std::nullopt;
    return n;
}

}  // namespace

std::span<const ValueType> all_value_types() { return kAllTypes; }

std::string_view type_name(ValueType type) { return kTypes[static_cast<size_t>(type)].name; }

std::string type_name(const DeclaredType& type) {
    return type.characters > 0 ? fmt::format("{}({})", kFixed, type.characters) : std::string(type_name(type.type));
}

std::optional<DeclaredType> declare_type(std::string_view name, std::optional<std::string_view> characters,
                                         std::string& problem) {
    if (same_letters(name, kFixed)) {
        const std::optional<uint32_t> n = characters ? read_characters(*characters) : std::nullopt;
        if (n) return DeclaredType(ValueType::kString, *n);
        problem = fmt::format("char wants a number of characters from 1 to {}, such as char(20)", kMostCharacters);
        return std::nullopt;
    }
    const std::string_view wanted = same_letters(name, kVarying) ? type_name(ValueType::kString) : name;
    const auto* found =
        std::find_if(kTypes.begin(), kTypes.end(), [&](const TypeRow& row) { return same_letters(row.name, wanted); });
    if (found == kTypes.end()) {
        problem = fmt::format("{} is no type; there are {}", name, list_of_types());
    } else if (characters) {
        problem = fmt::format("{} takes nothing in parentheses; only char does", name);
    } else {
        return DeclaredType(found->type);
    }
    return std::nullopt;
}

int32_t host_type(ValueType type) { return kTypes[static_cast<size_t>(type)].host; }

}  // namespace qzengine
