/*
 * Value types of SQL expressions, and how each is stored in a vector of the host.
 *
 * A boolean or condition is an int, true exactly when it is 1. Several SQL types may share one storage: dates, times and
 * date-times are all stored as date-time records.
 */
#ifndef QZENGINE_VALUE_TYPE_H
#define QZENGINE_VALUE_TYPE_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace qzengine {

enum class ValueType : uint8_t {
    kInt,
    kBigint,
    kDecimal,
    kDouble,
    kFloat,
    kString,
    kBinary,
    kDate,
    kTime,
    kDatetime,
    kTimeTz,
    kDatetimeTz,
    kIntervalYm,
    kIntervalDt,
    kClob,
    kBlob,
};

std::span<const ValueType> all_value_types();

// The name by which expressions, options and messages know the type: "bigint", "interval_ym".
std::string_view type_name(ValueType type);

// A type as columns and casts declare it: char(n) is a string of n characters, the blanks at its end implied.
struct DeclaredType {
    ValueType type;
    uint32_t characters = 0;  // n of char(n), and 0 for every other type

    constexpr DeclaredType(ValueType of) : type(of) {}  // NOLINT(google-explicit-constructor): most types are no more
    constexpr DeclaredType(ValueType of, uint32_t n) : type(of), characters(n) {}
    bool operator==(const DeclaredType&) const = default;
};

inline constexpr uint32_t kMostCharacters = 32767;

// "bigint", "char(20)".
std::string type_name(const DeclaredType& type);

// The type of that name, in any case of letters, with what stands in parentheses behind it; nothing for what is no type, and
// problem tells why.
std::optional<DeclaredType> declare_type(std::string_view name, std::optional<std::string_view> characters,
                                         std::string& problem);

// HOST_INT and so on.
int32_t host_type(ValueType type);

constexpr bool is_numeric(ValueType type) {
    return type == ValueType::kInt || type == ValueType::kBigint || type == ValueType::kDecimal || type == ValueType::kDouble ||
           type == ValueType::kFloat;
}

// Date-time records, and what of one the type has.
constexpr bool is_datetime(ValueType type) { return type >= ValueType::kDate && type <= ValueType::kDatetimeTz; }
constexpr bool has_date(ValueType type) {
    return type == ValueType::kDate || type == ValueType::kDatetime || type == ValueType::kDatetimeTz;
}
constexpr bool has_time(ValueType type) { return is_datetime(type) && type != ValueType::kDate; }
constexpr bool has_zone(ValueType type) { return type == ValueType::kTimeTz || type == ValueType::kDatetimeTz; }

constexpr bool is_interval(ValueType type) { return type == ValueType::kIntervalYm || type == ValueType::kIntervalDt; }

constexpr bool is_lob(ValueType type) { return type == ValueType::kClob || type == ValueType::kBlob; }

// The value is kept in a string slot: text, binary data or a LOB's locator.
constexpr bool is_slot(ValueType type) {
    return type == ValueType::kString || type == ValueType::kBinary || type == ValueType::kClob || type == ValueType::kBlob;
}

}  // namespace qzengine

#endif
