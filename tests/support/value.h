// Values of every type that a vector's row, a constant or a line of a case file can hold.
//
// A Cell is a value without its type: the exact bytes of the element, or a text with its implied blanks. A ValueType knows the
// widths of the type, how a case file writes it, and when two of its values are the same. To add a type, derive from ValueType
// in value.cpp and name it in the list at the file's end.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "qzbifun/records.h"

namespace support {

struct Cell {
    std::string bytes;   // the element's bytes, or the text
    uint32_t blank = 0;  // implied blanks of a text
    uint32_t has = 1;    // what has_value or the row's valid byte says; 0: NULL
    uint8_t lob = 0;     // storage kind of a LOB whose data bytes are; 0: they are what is stored
    bool exact = false;  // to be compared byte by byte
    bool filled = true;  // bytes are meant; false for a NULL of which nothing was told

    bool present() const { return has != 0; }
    bool same(const Cell& other) const {
        return bytes == other.bytes && blank == other.blank && has == other.has && lob == other.lob && filled == other.filled;
    }
};

// How far a result may be from what is expected.
struct Tolerance {
    enum class Kind : uint8_t { none, ulp, relative, value };
    Kind kind = Kind::none;
    double amount = 0;
};

class ValueType {
  public:
    virtual ~ValueType() = default;

    const std::string& name() const { return name_; }
    int32_t host_type() const { return host_type_; }
    uint32_t width() const { return width_; }                      // bytes of an element of values
    uint32_t constant_offset() const { return constant_offset_; }  // of the value in the constant's record
    uint32_t constant_size() const { return constant_size_; }
    bool is_text() const { return is_text_; }

    // Reads one word of a case file. Answers what is wrong with it, "" when it was read.
    virtual std::string parse(std::string_view word, Cell& cell) const = 0;

    // True when actual may stand where expected was told. The types that know a tolerance heed it.
    virtual bool same(const Cell& expected, const Cell& actual, const Tolerance& tolerance) const;
    virtual bool knows(Tolerance::Kind kind) const { return kind == Tolerance::Kind::none; }

    virtual std::string print(const Cell& cell) const;  // of a present cell, as parse reads it

  protected:
    struct Shape {
        const char* name;
        int32_t host_type;
        uint32_t width;
        uint32_t constant_offset;
        uint32_t constant_size;
        bool is_text = false;
    };
    explicit ValueType(const Shape& shape)
        : name_(shape.name),
          host_type_(shape.host_type),
          width_(shape.width),
          constant_offset_(shape.constant_offset),
          constant_size_(shape.constant_size),
          is_text_(shape.is_text) {}

  private:
    std::string name_;
    int32_t host_type_;
    uint32_t width_;
    uint32_t constant_offset_;
    uint32_t constant_size_;
    bool is_text_;
};

// The type of that name (int, bigint, double, float, dec, datetime, interval_ym, interval_dt, str, bin, clob, blob); null for
// another.
const ValueType* find_value_type(std::string_view name);

// "41 42": bytes in hexadecimal, for messages; long ones are shortened.
std::string print_bytes(std::string_view bytes);

// ---- C++ types as cells -----------------------------------------------------------------------------------------------------

// A text with implied blanks.
struct Text {
    std::string bytes;
    uint32_t blank = 0;

    bool operator==(const Text&) const = default;
};

template <class T>
const ValueType& type_of() {
    const char* name = std::is_same_v<T, int32_t>          ? "int"
                       : std::is_same_v<T, int64_t>        ? "bigint"
                       : std::is_same_v<T, double>         ? "double"
                       : std::is_same_v<T, float>          ? "float"
                       : std::is_same_v<T, xdec>           ? "dec"
                       : std::is_same_v<T, qztime>         ? "datetime"
                       : std::is_same_v<T, qz_interval_ym> ? "interval_ym"
                       : std::is_same_v<T, qz_interval_dt> ? "interval_dt"
                                                           : "str";
    return *find_value_type(name);
}

template <class T>
Cell to_cell(const T& value) {
    Cell cell;
    if constexpr (std::is_same_v<T, Text>) {
        cell.bytes = value.bytes;
        cell.blank = value.blank;
    } else {
        static_assert(std::is_trivially_copyable_v<T>);
        cell.bytes.assign(reinterpret_cast<const char*>(&value), sizeof value);
    }
    return cell;
}

template <class T>
Cell to_cell(const std::optional<T>& value) {
    if (value.has_value()) return to_cell(*value);
    Cell cell;
    cell.has = 0;
    cell.filled = false;
    return cell;
}

template <class T>
T from_cell(const Cell& cell) {
    if constexpr (std::is_same_v<T, Text>) {
        return Text{cell.bytes, cell.blank};
    } else {
        T value{};
        std::memcpy(static_cast<void*>(&value), cell.bytes.data(), sizeof value);
        return value;
    }
}

}  // namespace support
