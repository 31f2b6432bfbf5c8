#include "engine/csv_columns.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>

#include "engine/charset.h"
#include "engine/datetime_text.h"
#include "engine/host_objects.h"
#include "engine/interval_text.h"
#include "engine/kernels.h"
#include "engine/letters.h"
#include "engine/lob_values.h"
#include "engine/value_text.h"
#include "qzbifun/codes.h"
#include "qzhost/characters.h"
#include "qzhost/column.h"

namespace qzengine {
namespace {

// ---- Types ------------------------------------------------------------------------------------------------------------------

// What a field looks like. Numbers, and dates without a zone, stand from narrow to wide: a column takes the widest among its
// fields.
enum class Kind { kNothing, kBigint, kDecimal, kDouble, kDate, kDatetime, kDatetimeTz, kString };

constexpr bool is_number(Kind kind) { return kind >= Kind::kBigint && kind <= Kind::kDouble; }
constexpr bool is_date(Kind kind) { return kind == Kind::kDate || kind == Kind::kDatetime; }

Kind wider(Kind a, Kind b) {
    if (a == b || b == Kind::kNothing) return a;
    if (a == Kind::kNothing) return b;
    return (is_number(a) && is_number(b)) || (is_date(a) && is_date(b)) ? std::max(a, b) : Kind::kString;
}

constexpr size_t kDecimalDigits = 38;

constexpr bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Four digits, a hyphen, two, a hyphen, two: what ISO 8601 begins with, and hardly anything else does.
bool begins_with_iso_date(std::string_view text) {
    constexpr std::string_view kShape = "dddd-dd-dd";
    return text.size() >= kShape.size() && std::equal(kShape.begin(), kShape.end(), text.begin(), [](char shape, char c) {
               return shape == 'd' ? is_digit(c) : c == shape;
           });
}

Kind kind_of_date(std::string_view text) {
    constexpr std::pair<ValueType, Kind> kKinds[] = {
        {ValueType::kDate, Kind::kDate}, {ValueType::kDatetime, Kind::kDatetime}, {ValueType::kDatetimeTz, Kind::kDatetimeTz}};
    qztime value;
    for (const auto& [type, kind] : kKinds) {
        if (parse_datetime(text, type, TZ_NONE, value) == 0) return kind;
    }
    return Kind::kString;
}

Kind kind_of(const CsvBatch::Field& field) {
    if (field.quoted) return Kind::kString;
    if (field.size == 0) return Kind::kNothing;
    const std::string_view text = field.text();
    if (begins_with_iso_date(text)) return text.back() == ' ' ? Kind::kString : kind_of_date(text);
    size_t at = text[0] == '-' || text[0] == '+' ? 1 : 0;
    size_t digits = 0;
    bool point = false;
    for (; at < text.size() && (is_digit(text[at]) || (text[at] == '.' && !point)); ++at) {
        digits += is_digit(text[at]);
        point = point || text[at] == '.';
    }
    if (digits == 0) return Kind::kString;
    if (at == text.size()) {
        int64_t value = 0;
        if (!point && parse_text(text, value) == 0) return Kind::kBigint;
        return digits <= kDecimalDigits ? Kind::kDecimal : Kind::kDouble;
    }
    double value = 0;
    return lower_letter(text[at]) == 'e' && parse_text(text, value) == 0 ? Kind::kDouble : Kind::kString;
}

ValueType type_of(Kind kind) {
    switch (kind) {
        case Kind::kBigint:
            return ValueType::kBigint;
        case Kind::kDecimal:
            return ValueType::kDecimal;
        case Kind::kDouble:
            return ValueType::kDouble;
        case Kind::kDate:
            return ValueType::kDate;
        case Kind::kDatetime:
            return ValueType::kDatetime;
        case Kind::kDatetimeTz:
            return ValueType::kDatetimeTz;
        case Kind::kNothing:
        case Kind::kString:
            break;
    }
    return ValueType::kString;
}

// ---- Values -----------------------------------------------------------------------------------------------------------------

// what: the field is or has it, and is therefore no value of its column.
[[noreturn]] void fail_field(const CsvBatch& batch, uint32_t row, const Column& column, const CsvBatch::Field& field,
                             const std::string& what) {
    constexpr uint32_t kShown = 60;
    std::string shown =
        to_utf8(field.text().substr(0, qz_mbget_bytelen(field.begin, std::min(field.size, 4 * kShown), kShown)));
    if (qz_mbstrlen_ex(field.begin, field.size) > kShown) shown += "...";
    throw InputError(fmt::format("line {}, column {}: '{}' {}; --type {}=string reads the column as text", batch.line(row),
                                 column.name, shown, what, column.name));
}

[[noreturn]] void fail_field(const CsvBatch& batch, uint32_t row, const Column& column, const CsvBatch::Field& field,
                             int32_t code) {
    const bool out_of_range = code == EC_DATA_OVERFLOW || code == EC_INTERVAL_OUT_OF_RANGE;
    fail_field(batch, row, column, field,
               fmt::format("{} {}", out_of_range ? "is out of the range of" : "is no", type_name(column.type)));
}

int32_t parse_field(std::string_view text, int64_t& value) {
    // Up to 18 digits cannot overflow; the rest is left to the reader of all numbers.
    constexpr size_t kSafeDigits = 18;
    const bool negative = text[0] == '-';
    const size_t size = text.size() - negative;
    if (size == 0 || size > kSafeDigits) return parse_text(text, value);
    int64_t sum = 0;
    for (char c : text.substr(negative)) {
        if (!is_digit(c)) return parse_text(text, value);
        sum = sum * 10 + (c - '0');
    }
    value = negative ? -sum : sum;
    return 0;
}

template <class T>
int32_t parse_field(std::string_view text, T& value) {
    return parse_text(text, value);
}

// parse(text, value) answers 0 or a code; it is not given empty texts.
template <class T, class Parse>
void read_values(const CsvBatch& batch, uint32_t column, const Column& type, bdta3_col* vector, Parse parse) {
    uint8_t* valid = vector->data->valid;
    T* values = values_of<T>(vector);
    bool all = true;
    for (uint32_t row = 0; row < batch.rows(); ++row) {
        const CsvBatch::Field field = batch.field(row, column);
        if (field.size == 0 && !field.quoted) {
            valid[row] = 0;
            values[row] = T{};
            all = false;
            continue;
        }
        const int32_t code = field.size == 0 ? EC_NUMBER_TEXT_INVALID : parse(field.text(), values[row]);
        if (code != 0) fail_field(batch, row, type, field, code);
        valid[row] = 1;
    }
    vector->all_valid = all;
}

template <class T>
void read_numbers(const CsvBatch& batch, uint32_t column, const Column& type, bdta3_col* vector) {
    read_values<T>(batch, column, type, vector, [](std::string_view text, T& value) { return parse_field(text, value); });
}

void read_datetimes(const CsvBatch& batch, uint32_t column, const Column& type, int16_t session_zone, bdta3_col* vector) {
    read_values<qztime>(batch, column, type, vector, [&](std::string_view text, qztime& value) {
        return parse_datetime(text, type.type, session_zone, value);
    });
}

template <class T>
void read_intervals(const CsvBatch& batch, uint32_t column, const Column& type, bdta3_col* vector) {
    read_values<T>(batch, column, type, vector, [](std::string_view text, T& value) { return parse_interval(text, value); });
}

// make(row, field) gives the slot of a field that is not NULL.
template <class Make>
void read_slots(CsvBatch& batch, uint32_t column, bdta3_col* vector, Make make) {
    uint8_t* valid = vector->data->valid;
    bdta3_colstr* slots = values_of<bdta3_colstr>(vector);
    bool all = true;
    for (uint32_t row = 0; row < batch.rows(); ++row) {
        const CsvBatch::Field field = batch.unescape(batch.field(row, column));
        valid[row] = field.size > 0 || field.quoted;
        all = all && valid[row] != 0;
        slots[row] = valid[row] != 0 ? make(row, field) : bdta3_colstr{0, 0, field.begin};
    }
    vector->all_valid = all;
}

void read_strings(CsvBatch& batch, uint32_t column, bdta3_col* vector) {
    read_slots(batch, column, vector, [](uint32_t, const CsvBatch::Field& field) {
        return bdta3_colstr{field.size, 0, field.begin};
    });
}

void read_chars(CsvBatch& batch, uint32_t column, const Column& type, bdta3_col* vector) {
    read_slots(batch, column, vector, [&](uint32_t row, const CsvBatch::Field& field) {
        if (const std::optional<bdta3_colstr> slot = as_char(field.begin, field.size, type.characters)) return *slot;
        bdta3_colstr stored{field.size, 0, field.begin};
        bdta3_colstr_trim(&stored, field.size);
        fail_field(batch, row, type, field,
                   fmt::format("has {} characters, more than {}", qz_mbstrlen_ex(stored.bytes, stored.len),
                               type_name(type.declared())));
    });
}

void read_lobs(CsvBatch& batch, uint32_t column, const Column& type, bdta3_col* vector, const Environment& environment) {
    host_col_reset(vector);
    bool all = true;
    for (uint32_t row = 0; row < batch.rows(); ++row) {
        const CsvBatch::Field field = batch.unescape(batch.field(row, column));
        if (field.size == 0 && !field.quoted) {
            all = false;
            continue;
        }
        const int32_t code = store_lob(environment.env(), environment.batch_memory(), type.type, field.text(), vector, row);
        if (code < 0) throw std::bad_alloc();
    }
    vector->all_valid = all;
}

}  // namespace

std::vector<ValueType> infer_types(const CsvBatch& batch, uint32_t columns) {
    std::vector<ValueType> types;
    const uint32_t rows = std::min(batch.rows(), kSampledRows);
    for (uint32_t column = 0; column < columns; ++column) {
        Kind widest = Kind::kNothing;
        for (uint32_t row = 0; row < rows && widest != Kind::kString; ++row) {
            widest = wider(widest, kind_of(batch.field(row, column)));
        }
        types.push_back(type_of(widest));
    }
    return types;
}

void read_column(CsvBatch& batch, uint32_t column, const Column& type, bdta3_col* vector, const Environment& environment) {
    switch (type.type) {
        case ValueType::kInt:
            return read_numbers<int32_t>(batch, column, type, vector);
        case ValueType::kBigint:
            return read_numbers<int64_t>(batch, column, type, vector);
        case ValueType::kDecimal:
            return read_numbers<xdec>(batch, column, type, vector);
        case ValueType::kDouble:
            return read_numbers<double>(batch, column, type, vector);
        case ValueType::kFloat:
            return read_numbers<float>(batch, column, type, vector);
        case ValueType::kDate:
        case ValueType::kTime:
        case ValueType::kDatetime:
        case ValueType::kTimeTz:
        case ValueType::kDatetimeTz:
            return read_datetimes(batch, column, type, environment.env()->session->session_tz, vector);
        case ValueType::kIntervalYm:
            return read_intervals<qz_interval_ym>(batch, column, type, vector);
        case ValueType::kIntervalDt:
            return read_intervals<qz_interval_dt>(batch, column, type, vector);
        case ValueType::kString:
            if (type.characters > 0) return read_chars(batch, column, type, vector);
            return read_strings(batch, column, vector);
        case ValueType::kBinary:
            return read_strings(batch, column, vector);
        case ValueType::kClob:
        case ValueType::kBlob:
            return read_lobs(batch, column, type, vector, environment);
    }
}

}  // namespace qzengine
