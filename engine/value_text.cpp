#include "engine/value_text.h"

#include <fmt/format.h>

#include <charconv>
#include <cmath>
#include <utility>

#include "engine/charset.h"
#include "engine/datetime_text.h"
#include "engine/interval_text.h"
#include "engine/letters.h"
#include "engine/lob_values.h"
#include "qzbifun/codes.h"
#include "qzhost/decimal.h"
#include "qzhost/lob.h"
#include "qzhost/number_text.h"

namespace qzengine {
namespace {

constexpr size_t kNumberBytes = 32;  // the longest integer takes 20, the shortest text of a float less

template <class T>
void append_number(TextBuffer& out, T value) {
    char* begin = out.reserve(kNumberBytes);
    out.commit(static_cast<size_t>(std::to_chars(begin, begin + kNumberBytes, value).ptr - begin));
}

// A number may have a plus sign, which from_chars does not read.
std::string_view without_plus(std::string_view text) {
    return text.size() > 1 && text[0] == '+' && text[1] != '-' ? text.substr(1) : text;
}

template <class T>
int32_t parse_number(std::string_view text, T& value) {
    const std::string_view digits = without_plus(text);
    T parsed{};
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), parsed);
    if (end != digits.data() + digits.size() || error == std::errc::invalid_argument) return EC_NUMBER_TEXT_INVALID;
    if (error != std::errc()) return EC_DATA_OVERFLOW;
    value = parsed;
    return 0;
}

}  // namespace

void append_text(TextBuffer& out, int32_t value) { append_number(out, value); }
void append_text(TextBuffer& out, int64_t value) { append_number(out, value); }

void append_text(TextBuffer& out, double value) {
    out.commit(static_cast<size_t>(qz_dou2char(value, 1, out.reserve(QZ_DOU2CHAR_BYTES))));
}

// The shortest digits of a float, nine at most, are also those of the double nearest to them.
void append_text(TextBuffer& out, float value) {
    double same_digits = static_cast<double>(value);
    if (std::isfinite(value)) {
        char digits[kNumberBytes];
        const char* end = std::to_chars(digits, digits + sizeof digits, value).ptr;
        std::from_chars(digits, end, same_digits);
    }
    append_text(out, same_digits);
}

void append_text(TextBuffer& out, const xdec& value) {
    uint32_t length = 0;
    xdec_to_char2(&value, out.reserve(XDEC_TEXT_SIZE), XDEC_TEXT_SIZE, &length);
    out.commit(length);
}

void append_text(TextBuffer& out, const bdta3_colstr& value) {
    out.append(std::string_view(value.bytes, value.len));
    out.append(value.blank, ' ');
}

void append_hex(TextBuffer& out, std::string_view bytes) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    char* digits = out.reserve(2 * bytes.size());
    for (size_t i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        digits[2 * i] = kDigits[byte >> 4];
        digits[2 * i + 1] = kDigits[byte & 15];
    }
    out.commit(2 * bytes.size());
}

std::string_view lob_text(qz_env* env, ValueType type, const bdta3_colstr& slot, std::string& storage) {
    std::string_view value;
    const int32_t code = read_lob(env, slot, storage, value);
    if (code == 0) return value;
    Failure failure;
    failure.call = failure.operation = "reading a " + std::string(type_name(type));
    failure.code = code;
    throw EvaluationError(std::move(failure));
}

void append_value_text(TextBuffer& out, qz_env* env, ValueType type, const bdta3_col* vector, uint32_t row) {
    switch (type) {
        case ValueType::kInt:
            return append_text(out, values_of<int32_t>(vector)[row]);
        case ValueType::kBigint:
            return append_text(out, values_of<int64_t>(vector)[row]);
        case ValueType::kDecimal:
            return append_text(out, values_of<xdec>(vector)[row]);
        case ValueType::kDouble:
            return append_text(out, values_of<double>(vector)[row]);
        case ValueType::kFloat:
            return append_text(out, values_of<float>(vector)[row]);
        case ValueType::kString:
            return append_text(out, values_of<bdta3_colstr>(vector)[row]);
        case ValueType::kBinary: {
            const bdta3_colstr& slot = values_of<bdta3_colstr>(vector)[row];
            return append_hex(out, {slot.bytes, slot.len});
        }
        case ValueType::kDate:
        case ValueType::kTime:
        case ValueType::kDatetime:
        case ValueType::kTimeTz:
        case ValueType::kDatetimeTz:
            return append_datetime(out, type, values_of<qztime>(vector)[row]);
        case ValueType::kIntervalYm:
            return append_interval(out, values_of<qz_interval_ym>(vector)[row]);
        case ValueType::kIntervalDt:
            return append_interval(out, values_of<qz_interval_dt>(vector)[row]);
        case ValueType::kClob:
        case ValueType::kBlob: {
            std::string storage;
            const std::string_view value = lob_text(env, type, values_of<bdta3_colstr>(vector)[row], storage);
            return type == ValueType::kClob ? out.append(value) : append_hex(out, value);
        }
    }
}

namespace {

void describe_bytes(TextBuffer& out, bool binary, std::string_view bytes, uint32_t blank) {
    out.append(binary ? "X'" : "'");
    if (binary) {
        append_hex(out, bytes);
    } else {
        for (char c : to_utf8(bytes)) {
            if (c == '\'') out.append(c);
            out.append(c);
        }
    }
    out.append(blank, ' ');
    out.append('\'');
}

// The value where it stands in the locator, otherwise its length.
void describe_lob(TextBuffer& out, ValueType type, std::string locator) {
    const bdta3_colstr slot{static_cast<uint32_t>(locator.size()), 0, locator.data()};
    std::string storage;
    std::string_view value;
    if (slot.len == 0 || nblob_is_in_row_for_colstr_fast(&slot) != 0) {
        read_lob(nullptr, slot, storage, value);
        describe_bytes(out, type == ValueType::kBlob, value, 0);
    } else {
        out.append(fmt::format("a {} of {} bytes", type_name(type), nblob_get_len_for_colstr_fast(&slot)));
    }
}

}  // namespace

std::string describe(const Constant& constant) {
    if (constant.is_null()) return "NULL";
    TextBuffer out;
    if (const qztime* moment = std::get_if<qztime>(&constant.value)) {
        out.append(!has_time(constant.type) ? "DATE '" : has_date(constant.type) ? "TIMESTAMP '" : "TIME '");
        append_datetime(out, constant.type, *moment);
        out.append('\'');
    } else if (const qz_interval_ym* months = std::get_if<qz_interval_ym>(&constant.value)) {
        out.append("INTERVAL '");
        append_interval(out, *months);
        out.append("' YEAR TO MONTH");
    } else if (const qz_interval_dt* time = std::get_if<qz_interval_dt>(&constant.value)) {
        out.append("INTERVAL '");
        append_interval(out, *time);
        out.append("' DAY TO SECOND");
    } else if (is_lob(constant.type)) {
        describe_lob(out, constant.type, std::get<SlotValue>(constant.value).bytes);
    } else if (const SlotValue* slot = std::get_if<SlotValue>(&constant.value)) {
        describe_bytes(out, constant.type == ValueType::kBinary, slot->bytes, slot->blank);
    } else {
        std::visit(
            [&]<class T>(const T& value) {
                if constexpr (requires { append_text(out, value); }) append_text(out, value);
            },
            constant.value);
    }
    return std::string(out.view());
}

int32_t parse_hex(std::string_view digits, std::string& bytes) {
    const auto value_of = [](char c) {
        const char lower = lower_letter(c);
        return c >= '0' && c <= '9' ? c - '0' : lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
    };
    if (digits.size() % 2 != 0) return EC_HEX_TEXT_INVALID;
    std::string read;
    for (size_t i = 0; i < digits.size(); i += 2) {
        const int high = value_of(digits[i]);
        const int low = value_of(digits[i + 1]);
        if (high < 0 || low < 0) return EC_HEX_TEXT_INVALID;
        read += static_cast<char>(high * 16 + low);
    }
    bytes = std::move(read);
    return 0;
}

int32_t parse_text(std::string_view text, int32_t& value) { return parse_number(text, value); }
int32_t parse_text(std::string_view text, int64_t& value) { return parse_number(text, value); }
int32_t parse_text(std::string_view text, double& value) { return parse_number(text, value); }
int32_t parse_text(std::string_view text, float& value) { return parse_number(text, value); }

int32_t parse_text(std::string_view text, xdec& value) {
    const int32_t code = xdec_from_char(&value, text.data(), static_cast<uint32_t>(text.size()));
    return code == 0 ? 0 : code < 0 ? code : EC_NUMBER_TEXT_INVALID;
}

}  // namespace qzengine
