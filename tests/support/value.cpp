#include "tests/support/value.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <vector>

#include "qzbifun/codes.h"
#include "qzhost/control.h"
#include "qzhost/decimal.h"
#include "qzhost/lob.h"

namespace support {
namespace {

template <class T>
void put(Cell& cell, const T& value) {
    cell.bytes.assign(reinterpret_cast<const char*>(&value), sizeof value);
}

int hex_digit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// The front of text as x'...': its bytes, and text goes on behind it.
bool take_hex(std::string_view& text, std::string& bytes) {
    if (text.substr(0, 2) != "x'") return false;
    size_t i = 2;
    while (i + 1 < text.size() && text[i] != '\'') {
        const int high = hex_digit(text[i]);
        const int low = hex_digit(text[i + 1]);
        if (high < 0 || low < 0) return false;
        bytes.push_back(static_cast<char>(high * 16 + low));
        i += 2;
    }
    if (i >= text.size() || text[i] != '\'') return false;
    text.remove_prefix(i + 1);
    return true;
}

// The front of text as '...' with '' for a quote.
bool take_quoted(std::string_view& text, std::string& bytes) {
    if (text.empty() || text[0] != '\'') return false;
    for (size_t i = 1; i < text.size(); ++i) {
        if (text[i] != '\'') {
            bytes.push_back(text[i]);
        } else if (i + 1 < text.size() && text[i + 1] == '\'') {
            bytes.push_back('\'');
            ++i;
        } else {
            text.remove_prefix(i + 1);
            return true;
        }
    }
    return false;
}

bool take_count(std::string_view& text, uint32_t& count) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    if (error != std::errc()) return false;
    text.remove_prefix(static_cast<size_t>(end - text.data()));
    return true;
}

// A whole record in hexadecimal; shorter ones are filled up with zero bytes.
std::string parse_record(std::string_view word, uint32_t width, Cell& cell) {
    std::string bytes;
    if (!take_hex(word, bytes) || !word.empty()) return "bad hexadecimal bytes";
    if (bytes.size() > width) return "more than " + std::to_string(width) + " bytes";
    bytes.resize(width, '\0');
    cell.bytes = std::move(bytes);
    cell.exact = true;
    return "";
}

// ---- Integers --------------------------------------------------------------------------------------------------------------

template <class T>
class Integer : public ValueType {
  public:
    Integer(const char* name, int32_t host_type) : ValueType({name, host_type, sizeof(T), sizeof(T), 2 * sizeof(T)}) {}

    std::string parse(std::string_view word, Cell& cell) const override {
        T value = 0;
        if (word == "min") {
            value = std::numeric_limits<T>::min();
        } else if (word == "max") {
            value = std::numeric_limits<T>::max();
        } else {
            if (!word.empty() && word[0] == '+') word.remove_prefix(1);
            const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
            if (error != std::errc() || end != word.data() + word.size()) return "not a value of type " + name();
        }
        put(cell, value);
        return "";
    }
    std::string print(const Cell& cell) const override { return std::to_string(from_cell<T>(cell)); }
};

// ---- Floating point: the same bits, NaN by being one ------------------------------------------------------------------------

template <class T>
class Floating : public ValueType {
  public:
    Floating(const char* name, int32_t host_type) : ValueType({name, host_type, sizeof(T), sizeof(T), 2 * sizeof(T)}) {}

    std::string parse(std::string_view word, Cell& cell) const override {
        const std::string text(word);
        char* end = nullptr;
        const T value = std::is_same_v<T, float> ? static_cast<T>(std::strtof(text.c_str(), &end))
                                                 : static_cast<T>(std::strtod(text.c_str(), &end));
        if (text.empty() || *end != '\0') return "not a value of type " + name();
        put(cell, value);
        return "";
    }

    bool same(const Cell& expected, const Cell& actual, const Tolerance& tolerance) const override {
        const T e = from_cell<T>(expected);
        const T a = from_cell<T>(actual);
        if (std::isnan(e) || std::isnan(a)) return std::isnan(e) && std::isnan(a);
        if (expected.bytes == actual.bytes) return true;
        if (std::isinf(e) || std::isinf(a) || std::signbit(e) != std::signbit(a)) return false;
        switch (tolerance.kind) {
            case Tolerance::Kind::ulp:
                return std::abs(static_cast<double>(order(e) - order(a))) <= tolerance.amount;
            case Tolerance::Kind::relative:
                return std::abs(e - a) <= static_cast<T>(tolerance.amount) * std::abs(e);
            default:
                return false;
        }
    }
    bool knows(Tolerance::Kind kind) const override { return kind != Tolerance::Kind::value; }

    std::string print(const Cell& cell) const override {
        char text[80];
        const auto value = static_cast<double>(from_cell<T>(cell));
        std::snprintf(text, sizeof text, "%.*g (%a)", std::is_same_v<T, float> ? 9 : 17, value, value);
        return text;
    }

  private:
    // Neighbouring floats of one sign have neighbouring numbers.
    static int64_t order(T value) {
        std::conditional_t<sizeof(T) == 4, int32_t, int64_t> bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        return bits;
    }
};

// ---- Decimals: the same value and the same scale ----------------------------------------------------------------------------

class Decimal : public ValueType {
  public:
    Decimal() : ValueType({"dec", HOST_DEC, sizeof(xdec), 4, sizeof(bdta3_dec)}) {}

    std::string parse(std::string_view word, Cell& cell) const override {
        if (word.substr(0, 2) == "x'") return parse_record(word, width(), cell);
        xdec value;
        const int32_t code = xdec_from_char(&value, word.data(), static_cast<uint32_t>(word.size()));
        if (code != 0) return "not a decimal";
        put(cell, value);
        return "";
    }

    bool same(const Cell& expected, const Cell& actual, const Tolerance& tolerance) const override {
        if (expected.exact) return expected.bytes == actual.bytes;
        const auto e = from_cell<xdec>(expected);
        const auto a = from_cell<xdec>(actual);
        if (xdec_is_canonical(&a) == 0 || xdec_cmp(&e, &a) != 0) return false;
        return tolerance.kind == Tolerance::Kind::value || e.scale == a.scale;
    }
    bool knows(Tolerance::Kind kind) const override { return kind == Tolerance::Kind::none || kind == Tolerance::Kind::value; }

    std::string print(const Cell& cell) const override {
        const auto value = from_cell<xdec>(cell);
        char text[XDEC_TEXT_SIZE];
        uint32_t length = 0;
        if (xdec_to_char2(&value, text, sizeof text, &length) != 0) return ValueType::print(cell);
        return std::string(text, length) + " [" + print_bytes(cell.bytes) + "]";
    }
};

// ---- Date-times and intervals -----------------------------------------------------------------------------------------------

// The numbers of {1,2,3}; false for anything else.
bool parse_numbers(std::string_view word, size_t count, std::array<int64_t, 8>& numbers) {
    if (word.size() < 2 || word.front() != '{' || word.back() != '}') return false;
    word = word.substr(1, word.size() - 2);
    for (size_t i = 0; i < count; ++i) {
        while (!word.empty() && word[0] == ' ') word.remove_prefix(1);
        const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), numbers[i]);
        if (error != std::errc()) return false;
        word.remove_prefix(static_cast<size_t>(end - word.data()));
        const bool last = i + 1 == count;
        if (last ? !word.empty() : word.empty() || word[0] != ',') return false;
        if (!last) word.remove_prefix(1);
    }
    return true;
}

class Datetime : public ValueType {
  public:
    Datetime() : ValueType({"datetime", HOST_DATETIME, sizeof(qztime), 4, sizeof(bdta3_datetime)}) {}

    // '2024-02-29', '2024-02-29 10:30:15', '... 10:30:15.123456789', each with ' +08:00' behind; {y,m,d,h,mi,s,ns,tz}; x'...'.
    std::string parse(std::string_view word, Cell& cell) const override {
        if (word.substr(0, 2) == "x'") return parse_record(word, width(), cell);
        std::array<int64_t, 8> n{0, 0, 0, 0, 0, 0, 0, TZ_NONE};
        if (!word.empty() && word[0] == '{') {
            if (!parse_numbers(word, 8, n)) return "not eight numbers";
        } else {
            std::string text;
            if (!take_quoted(word, text) || !word.empty() || !parse_text(text, n)) return "not a date-time";
        }
        const qztime value = {static_cast<int16_t>(n[0]),  static_cast<uint8_t>(n[1]), static_cast<uint8_t>(n[2]),
                              static_cast<uint8_t>(n[3]),  static_cast<uint8_t>(n[4]), static_cast<uint8_t>(n[5]),
                              static_cast<uint32_t>(n[6]), static_cast<int16_t>(n[7])};
        put(cell, value);
        return "";
    }

    std::string print(const Cell& cell) const override {
        const auto v = from_cell<qztime>(cell);
        char text[96];
        std::snprintf(text, sizeof text, "{%d,%d,%d,%d,%d,%d,%u,%d}", v.year, v.month, v.day, v.hour, v.minute, v.second,
                      v.fraction, v.tz);
        return text;
    }

  private:
    static bool parse_text(const std::string& text, std::array<int64_t, 8>& n) {
        int used = 0;
        if (std::sscanf(text.c_str(), "%ld-%ld-%ld%n", &n[0], &n[1], &n[2], &used) != 3) return false;
        std::string rest = text.substr(static_cast<size_t>(used));
        used = 0;
        if (std::sscanf(rest.c_str(), " %ld:%ld:%ld%n", &n[3], &n[4], &n[5], &used) == 3 && used > 0) {
            rest = rest.substr(static_cast<size_t>(used));
        } else {
            n[3] = n[4] = n[5] = 0;
        }
        if (!rest.empty() && rest[0] == '.') {
            size_t digits = 1;
            while (digits < rest.size() && rest[digits] >= '0' && rest[digits] <= '9') ++digits;
            if (digits == 1 || digits > 10) return false;
            n[6] = std::atol((rest.substr(1, digits - 1) + std::string(10 - digits, '0')).c_str());
            rest = rest.substr(digits);
        }
        if (rest.empty()) return true;
        char sign = 0;
        long hours = 0;
        long minutes = 0;
        used = 0;
        if (std::sscanf(rest.c_str(), " %c%2ld:%2ld%n", &sign, &hours, &minutes, &used) != 3) return false;
        if (static_cast<size_t>(used) != rest.size() || (sign != '+' && sign != '-')) return false;
        n[7] = (sign == '-' ? -1 : 1) * (hours * 60 + minutes);
        return true;
    }
};

// Intervals are written as their words, {year,month,qualifier} and {day,hour,minute,second,microseconds,qualifier}.
template <class T>
class Interval : public ValueType {
  public:
    Interval(const char* name, int32_t host_type) : ValueType({name, host_type, sizeof(T), 4, sizeof(T) + 4}) {}

    std::string parse(std::string_view word, Cell& cell) const override {
        std::array<int64_t, 8> numbers{};
        if (!parse_numbers(word, kWords, numbers)) return "not " + std::to_string(kWords) + " numbers in braces";
        std::array<int32_t, kWords> words{};
        std::transform(numbers.begin(), numbers.begin() + kWords, words.begin(),
                       [](int64_t n) { return static_cast<int32_t>(n); });
        put(cell, words);
        return "";
    }

    std::string print(const Cell& cell) const override {
        std::array<int32_t, kWords> words{};
        std::memcpy(words.data(), cell.bytes.data(), sizeof words);
        std::string text = "{";
        for (const int32_t word : words) text += std::to_string(word) + ",";
        text.back() = '}';
        return text;
    }

  private:
    static constexpr size_t kWords = sizeof(T) / 4;
};

// ---- Texts ------------------------------------------------------------------------------------------------------------------

class TextType : public ValueType {
  public:
    TextType(const char* name, int32_t host_type)
        : ValueType({name, host_type, sizeof(bdta3_colstr), sizeof(uint32_t), sizeof(nstr), true}) {}

    // 'ab', x'00FF', each times a count as in 'a'*300, joined by &, and +3 for implied blanks at the end.
    std::string parse(std::string_view word, Cell& cell) const override { return parse_text(word, cell); }

    bool same(const Cell& expected, const Cell& actual, const Tolerance& tolerance) const override {
        if (tolerance.kind == Tolerance::Kind::value) return written_out(expected) == written_out(actual);
        return expected.bytes == actual.bytes && expected.blank == actual.blank;
    }
    bool knows(Tolerance::Kind kind) const override { return kind == Tolerance::Kind::none || kind == Tolerance::Kind::value; }

    std::string print(const Cell& cell) const override {
        const bool printable = std::all_of(cell.bytes.begin(), cell.bytes.end(), [](char c) { return c >= ' ' && c < 127; });
        std::string text = printable ? cell.bytes.substr(0, 60) : print_bytes(cell.bytes);
        text = printable ? "'" + text + "'" : "x'" + text + "'";
        if (cell.bytes.size() > 60) text += "... (" + std::to_string(cell.bytes.size()) + " bytes)";
        return cell.blank == 0 ? text : text + "+" + std::to_string(cell.blank);
    }

  protected:
    static std::string parse_text(std::string_view word, Cell& cell) {
        std::string text;
        while (true) {
            std::string part;
            if (!take_hex(word, part) && !take_quoted(word, part)) return "not a text in quotes";
            uint32_t count = 1;
            if (!word.empty() && word[0] == '*') {
                word.remove_prefix(1);
                if (!take_count(word, count)) return "no count behind *";
            }
            for (uint32_t i = 0; i < count; ++i) text += part;
            if (word.empty() || word[0] != '&') break;
            word.remove_prefix(1);
        }
        uint32_t blank = 0;
        if (!word.empty() && word[0] == '+') {
            word.remove_prefix(1);
            if (!take_count(word, blank)) return "no count behind +";
        }
        if (!word.empty()) return "unexpected behind a text: " + std::string(word);
        cell.bytes = std::move(text);
        cell.blank = blank;
        return "";
    }

  private:
    static std::string written_out(const Cell& cell) { return cell.bytes + std::string(cell.blank, ' '); }
};

// A LOB is written as its data: 'text' or in_row:'text' in the locator, short:'text' and long:'text' in the environment's
// store; locator:x'...' is a locator as it stands. In a result, the text that the row holds.
class LobType : public TextType {
  public:
    using TextType::TextType;

    std::string parse(std::string_view word, Cell& cell) const override {
        static constexpr std::array<std::pair<std::string_view, uint8_t>, 4> kKinds = {
            {{"in_row:", LOB_KIND_IN_ROW}, {"short:", LOB_KIND_SHORT}, {"long:", LOB_KIND_LONG}, {"locator:", 0}}};
        cell.lob = LOB_KIND_IN_ROW;
        for (const auto& [prefix, kind] : kKinds) {
            if (word.substr(0, prefix.size()) != prefix) continue;
            word.remove_prefix(prefix.size());
            cell.lob = kind;
            break;
        }
        const std::string wrong = parse_text(word, cell);
        return wrong.empty() && cell.blank != 0 ? "a LOB has no implied blanks" : wrong;
    }
};

}  // namespace

// ---- What the types have in common ------------------------------------------------------------------------------------------

bool ValueType::same(const Cell& expected, const Cell& actual, const Tolerance&) const {
    return expected.bytes == actual.bytes;
}

std::string ValueType::print(const Cell& cell) const { return "[" + print_bytes(cell.bytes) + "]"; }

std::string print_bytes(std::string_view bytes) {
    constexpr size_t kShown = 48;
    std::string text;
    char digits[4];
    for (const char c : bytes.substr(0, kShown)) {
        std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(c));
        text += digits;
    }
    return bytes.size() > kShown ? text + "..." : text;
}

const ValueType* find_value_type(std::string_view name) {
    static const Integer<int32_t> int_type("int", HOST_INT);
    static const Integer<int64_t> bigint_type("bigint", HOST_INT64);
    static const Floating<double> double_type("double", HOST_DOUBLE);
    static const Floating<float> float_type("float", HOST_FLOAT);
    static const Decimal dec_type;
    static const Datetime datetime_type;
    static const Interval<qz_interval_ym> interval_ym_type("interval_ym", HOST_INTERVAL_YM);
    static const Interval<qz_interval_dt> interval_dt_type("interval_dt", HOST_INTERVAL_DT);
    static const TextType str_type("str", HOST_STR);
    static const TextType bin_type("bin", HOST_BIN);
    static const LobType clob_type("clob", HOST_CLOB);
    static const LobType blob_type("blob", HOST_BLOB);
    static const std::array<const ValueType*, 12> types = {&int_type, &bigint_type,   &double_type,      &float_type,
                                                           &dec_type, &datetime_type, &interval_ym_type, &interval_dt_type,
                                                           &str_type, &bin_type,      &clob_type,        &blob_type};
    const auto* found = std::find_if(types.begin(), types.end(), [&](const ValueType* type) { return type->name() == name; });
    return found == types.end() ? nullptr : *found;
}

}  // namespace support
