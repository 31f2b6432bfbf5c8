#include "tests/support/vector.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace support {
namespace {

constexpr uint8_t kNullPattern = 0xA7;

bool all_bytes(const uint8_t* bytes, size_t count, uint8_t byte) {
    return std::all_of(bytes, bytes + count, [byte](uint8_t b) { return b == byte; });
}

// What a row or constant holds of a text: its bytes, or the locator of a LOB that is stored now.
std::string stored_bytes(const ValueType& type, const Cell& cell, Host* host) {
    if (cell.lob == 0) return cell.bytes;
    if (host == nullptr) throw std::logic_error("a LOB without a host to store it");
    std::string locator(64 + cell.bytes.size(), '\0');
    auto length = static_cast<uint32_t>(locator.size());
    const int32_t code = host_lob_make(host->env(), cell.lob, type.host_type() == HOST_CLOB, cell.bytes.data(),
                                       cell.bytes.size(), reinterpret_cast<uint8_t*>(locator.data()), &length);
    if (code != 0) throw std::runtime_error("the host stores no such LOB");
    locator.resize(length);
    return locator;
}

}  // namespace

// ---- Vector -----------------------------------------------------------------------------------------------------------------

void Vector::Destroy::operator()(bdta3_col* col) const {
    col->sel = nullptr;
    col->data->valid = valid;
    col->data->values = values;
    host_col_destroy(col);
}

Vector::Vector(Host& host, const ValueType& type, uint32_t rows)
    : type_(&type),
      rows_(rows),
      col_(host_col_create(host.env(), host.mem(), type.host_type(), rows)),
      valid_(rows, 0),
      values_(size_t{rows} * type.width(), kNullPattern),
      nothing_(0, 0),
      host_(&host) {
    if (col_ == nullptr) throw std::runtime_error("no vector of " + std::to_string(rows) + " rows");
    owner_ = {col_, Destroy{col_->data->valid, col_->data->values}};
    col_->data->valid = valid_.data();
    col_->data->values = values_.data();
    if (!type.is_text()) return;
    for (uint32_t row = 0; row < rows; ++row) {
        const bdta3_colstr slot = {1u << 30, 1u << 30, reinterpret_cast<char*>(nothing_.data())};
        std::memcpy(values_.data() + size_t{row} * sizeof slot, &slot, sizeof slot);
    }
}

Vector::~Vector() = default;

Vector Vector::result(Host& host, const ValueType& type, uint32_t rows) {
    Vector vector(host, type, rows);
    std::memset(vector.valid_.data(), kValidPattern, vector.valid_.size());
    std::memset(vector.values_.data(), kValuePattern, vector.values_.size());
    vector.col_->all_valid = kFlagPattern;
    return vector;
}

const Vector::StoredText& Vector::text_of(const Cell& cell) {
    const std::string key = static_cast<char>(cell.lob) + cell.bytes;
    auto found = texts_.find(key);
    if (found == texts_.end()) {
        std::string bytes = stored_bytes(*type_, cell, host_);
        found = texts_.emplace(key, StoredText{Guarded(bytes), bytes}).first;
    }
    return found->second;
}

void Vector::set(uint32_t row, const Cell& cell, uint8_t byte) {
    valid_.data()[row] = byte;
    if (!cell.filled) return;
    uint8_t* element = values_.data() + size_t{row} * type_->width();
    if (type_->is_text()) {
        const StoredText& text = text_of(cell);
        char* bytes = reinterpret_cast<char*>(const_cast<uint8_t*>(text.memory.data()));
        const bdta3_colstr slot = {static_cast<uint32_t>(text.bytes.size()), cell.blank, bytes};
        std::memcpy(element, &slot, sizeof slot);
    } else {
        if (cell.bytes.size() != type_->width()) throw std::logic_error("a cell of another type");
        std::memcpy(element, cell.bytes.data(), cell.bytes.size());
    }
}

void Vector::select(const std::vector<uint16_t>& rows) {
    selection_ = Guarded(rows.size() * sizeof(uint16_t), 0);
    if (!rows.empty()) std::memcpy(selection_.data(), rows.data(), selection_.size());
    col_->sel = reinterpret_cast<uint16_t*>(selection_.data());
}

Cell Vector::cell(uint32_t row) const {
    Cell cell;
    cell.has = valid(row);
    const uint8_t* element = values_.data() + size_t{row} * type_->width();
    if (!type_->is_text()) {
        cell.bytes.assign(reinterpret_cast<const char*>(element), type_->width());
        return cell;
    }
    const bdta3_colstr text = slot(row);
    cell.bytes.assign(text.bytes, text.len);
    cell.blank = text.blank;
    return cell;
}

bdta3_colstr Vector::slot(uint32_t row) const {
    bdta3_colstr slot;
    std::memcpy(&slot, values_.data() + size_t{row} * sizeof slot, sizeof slot);
    return slot;
}

bool Vector::value_untouched(uint32_t row) const {
    return all_bytes(values_.data() + size_t{row} * type_->width(), type_->width(), kValuePattern);
}

std::string Vector::overrun() const {
    if (!valid_.intact()) return "written beside the valid bytes";
    if (!values_.intact()) return "written beside the values";
    if (!selection_.intact()) return "written beside the selection";
    if (!nothing_.intact()) return "written through the text of a NULL row";
    for (const auto& [key, text] : texts_) {
        if (!text.memory.intact()) return "written beside the text " + print_bytes(text.bytes);
    }
    return "";
}

void Vector::remember() { before_ = State{*col_, *col_->data, valid_.bytes(), values_.bytes(), selection_.bytes()}; }

std::string Vector::changed() const {
    if (!before_.has_value()) throw std::logic_error("nothing was remembered");
    if (col_->all_valid != before_->col.all_valid) return "all_valid was changed";
    if (col_->sel != before_->col.sel || col_->data != before_->col.data) return "the descriptor was changed";
    if (std::memcmp(col_->data, &before_->data, sizeof before_->data) != 0) return "the storage block was changed";
    if (valid_.bytes() != before_->valid) return "valid bytes were changed";
    if (values_.bytes() != before_->values) return "values were changed";
    if (selection_.bytes() != before_->selection) return "the selection was changed";
    for (const auto& [key, text] : texts_) {
        if (text.memory.bytes() != text.bytes) return "the text " + print_bytes(text.bytes) + " was changed";
    }
    return "";
}

// ---- Constant ---------------------------------------------------------------------------------------------------------------

Constant::Constant(const ValueType& type, const Cell& cell, Host* host) : record_(type.constant_size(), kNullPattern) {
    uint8_t* record = record_.data();
    std::memcpy(record, &cell.has, sizeof cell.has);
    if (!type.is_text()) {
        if (cell.filled) std::memcpy(record + type.constant_offset(), cell.bytes.data(), cell.bytes.size());
    } else {
        const std::string bytes = stored_bytes(type, cell, host);
        text_ = Guarded(bytes);
        nstr value;
        std::memcpy(&value, record, sizeof value);
        value.len = static_cast<uint32_t>(bytes.size());
        value.blank = cell.blank;
        value.nstr_cap = 0;
        const bool is_inline = bytes.size() <= NSTR_INLINE_BYTES;
        if (is_inline && !bytes.empty()) std::memcpy(value.nstr_inline, bytes.data(), bytes.size());
        value.nstr_ext = is_inline ? reinterpret_cast<nstr*>(record)->nstr_inline : reinterpret_cast<char*>(text_.data());
        std::memcpy(record, &value, sizeof value);
    }
    record_before_ = record_.bytes();
    text_before_ = text_.size() == 0 ? "" : text_.bytes();
}

std::string Constant::changed() const {
    if (!record_.intact() || !text_.intact()) return "written beside the constant";
    if (record_.bytes() != record_before_) return "the constant was changed";
    if (text_.size() != 0 && text_.bytes() != text_before_) return "the constant's text was changed";
    return "";
}

}  // namespace support
