// Vectors and constants for calls under test, with canaries around every array.
//
// A Vector is a vector of the reference host whose valid bytes, values and selection lie in guarded memory of exactly the
// length that the call may touch. Rows are NULL at first, and what stands in a NULL row invites mistakes: numbers are a
// pattern, and the bytes of a text lie in memory that must not be read.
//
//   Vector x = Vector::of<double>(host, {1.0, std::nullopt, 3.0});
//   Constant y = Constant::of<double>(2.0);
//   Vector out = Vector::result<double>(host, 3);
//   int32_t code = bgreatest_av_do_math_dbl(host.env(), host.mem(), x.col(), y.scalar(), out.col(), 3);
//   EXPECT_EQ(out.get<double>(0), 2.0);
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "tests/support/guarded.h"
#include "tests/support/host.h"
#include "tests/support/value.h"

namespace support {

class Vector {
  public:
    // For arguments: all rows NULL, all_valid 0.
    Vector(Host& host, const ValueType& type, uint32_t rows);
    ~Vector();
    Vector(Vector&&) noexcept = default;
    Vector& operator=(Vector&&) = delete;

    template <class T>
    static Vector of(Host& host, std::initializer_list<std::optional<T>> values) {
        Vector vector(host, type_of<T>(), static_cast<uint32_t>(values.size()));
        uint32_t row = 0;
        bool all = true;
        for (const std::optional<T>& value : values) {
            all &= value.has_value();
            const Cell cell = to_cell(value);
            vector.set(row++, cell, value.has_value());
        }
        vector.col()->all_valid = all;
        return vector;
    }

    // For results: every byte is a pattern that a call would hardly write, all_valid too.
    static Vector result(Host& host, const ValueType& type, uint32_t rows);
    template <class T>
    static Vector result(Host& host, uint32_t rows) {
        return result(host, type_of<T>(), rows);
    }

    bdta3_col* col() const { return col_; }
    const ValueType& type() const { return *type_; }
    uint32_t rows() const { return rows_; }

    // Stores a value, and the row's valid byte. The texts of equal cells are shared.
    void set(uint32_t row, const Cell& cell, uint8_t byte);

    // Row numbers of the logical rows; the vector keeps its own guarded copy.
    void select(const std::vector<uint16_t>& rows);

    uint8_t valid(uint32_t row) const { return valid_.data()[row]; }
    Cell cell(uint32_t row) const;          // whatever its valid byte
    bdta3_colstr slot(uint32_t row) const;  // of a text vector
    template <class T>
    T get(uint32_t row) const {
        return from_cell<T>(cell(row));
    }

    // What a result holds before a call.
    static constexpr uint8_t kValidPattern = 0xEE;
    static constexpr uint8_t kValuePattern = 0xA5;
    static constexpr uint32_t kFlagPattern = 7;
    bool valid_untouched(uint32_t row) const { return valid(row) == kValidPattern; }
    bool value_untouched(uint32_t row) const;

    // "" when no byte beside the arrays was written; otherwise where.
    std::string overrun() const;

    // Keeps the present state; changed() tells what differs from it, "" when nothing does.
    void remember();
    std::string changed() const;

  private:
    struct StoredText {
        Guarded memory;
        std::string bytes;
    };
    const StoredText& text_of(const Cell& cell);

    const ValueType* type_ = nullptr;
    uint32_t rows_ = 0;
    struct Destroy {
        void operator()(bdta3_col* col) const;
        uint8_t* valid;
        void* values;
    };
    std::unique_ptr<bdta3_col, Destroy> owner_;
    bdta3_col* col_ = nullptr;
    Guarded valid_;
    Guarded values_;
    Guarded selection_;
    Guarded nothing_;  // empty: NULL rows of a text vector point here
    Host* host_ = nullptr;
    std::unordered_map<std::string, StoredText> texts_;  // by the bytes that the cells told, with their storage kind in front

    struct State {
        bdta3_col col;
        bdta3_coldata data;
        std::string valid, values, selection;
    };
    std::optional<State> before_;
};

class Constant {
  public:
    // has_value is the cell's; the value field is filled also when it is 0. host is where a LOB is stored.
    Constant(const ValueType& type, const Cell& cell, Host* host = nullptr);

    template <class T>
    static Constant of(const std::optional<T>& value) {
        return Constant(type_of<T>(), to_cell(value));
    }
    template <class T>
    static Constant of(const T& value) {
        return Constant(type_of<T>(), to_cell(value));
    }

    bdta3_scalar* scalar() { return reinterpret_cast<bdta3_scalar*>(record_.data()); }
    std::string changed() const;  // "" when neither the record nor its text was written to, nor what lies beside them

  private:
    Guarded record_;
    Guarded text_;
    std::string record_before_, text_before_;
};

}  // namespace support
