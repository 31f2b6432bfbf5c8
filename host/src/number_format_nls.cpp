// NLS parameters of number formats: NAME = 'value' NAME = 'value' ...
//
// Blanks may stand around everything. A value in quotes may hold anything, a quote doubled; one without quotes ends at the next
// blank. What is refused is what would make a written number readable in two ways.
#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <utility>

#include "host/src/number_format_record.h"
#include "qzbifun/codes.h"

namespace qzhost {
namespace {

struct Territory {
    std::string_view name;
    std::string_view currency;
};

// Sorted by name.
constexpr std::array kTerritories = std::to_array<Territory>({
    {"ALGERIA", "DZD"},        {"AMERICA", "USD"},      {"ARGENTINA", "ARS"},  {"AUSTRALIA", "AUD"},
    {"AUSTRIA", "EUR"},        {"BAHRAIN", "BHD"},      {"BANGLADESH", "BDT"}, {"BELGIUM", "EUR"},
    {"BRAZIL", "BRL"},         {"CANADA", "CAD"},       {"CHILE", "CLP"},      {"CHINA", "CNY"},
    {"COLOMBIA", "COP"},       {"COSTA RICA", "CRC"},   {"CYPRUS", "EUR"},     {"CZECH REPUBLIC", "CZK"},
    {"DENMARK", "DKK"},        {"EGYPT", "EGP"},        {"ESTONIA", "EUR"},    {"FINLAND", "EUR"},
    {"FRANCE", "EUR"},         {"GERMANY", "EUR"},      {"GREECE", "EUR"},     {"GUATEMALA", "GTQ"},
    {"HONG KONG", "HKD"},      {"HUNGARY", "HUF"},      {"ICELAND", "ISK"},    {"INDIA", "INR"},
    {"INDONESIA", "IDR"},      {"IRELAND", "EUR"},      {"ISRAEL", "ILS"},     {"ITALY", "EUR"},
    {"JAPAN", "JPY"},          {"JORDAN", "JOD"},       {"KAZAKHSTAN", "KZT"}, {"KOREA", "KRW"},
    {"KUWAIT", "KWD"},         {"LATVIA", "EUR"},       {"LITHUANIA", "EUR"},  {"LUXEMBOURG", "EUR"},
    {"MALAYSIA", "MYR"},       {"MEXICO", "MXN"},       {"MOROCCO", "MAD"},    {"NEW ZEALAND", "NZD"},
    {"NORWAY", "NOK"},         {"OMAN", "OMR"},         {"PAKISTAN", "PKR"},   {"PERU", "PEN"},
    {"PHILIPPINES", "PHP"},    {"POLAND", "PLN"},       {"PORTUGAL", "EUR"},   {"QATAR", "QAR"},
    {"ROMANIA", "RON"},        {"SAUDI ARABIA", "SAR"}, {"SINGAPORE", "SGD"},  {"SLOVAKIA", "EUR"},
    {"SLOVENIA", "EUR"},       {"SOUTH AFRICA", "ZAR"}, {"SPAIN", "EUR"},      {"SWEDEN", "SEK"},
    {"SWITZERLAND", "CHF"},    {"TAIWAN", "TWD"},       {"THAILAND", "THB"},   {"THE NETHERLANDS", "EUR"},
    {"TUNISIA", "TND"},        {"TURKEY", "TRY"},       {"UKRAINE", "UAH"},    {"UNITED ARAB EMIRATES", "AED"},
    {"UNITED KINGDOM", "GBP"}, {"VIETNAM", "VND"},
});
static_assert(std::is_sorted(kTerritories.begin(), kTerritories.end(),
                             [](const Territory& a, const Territory& b) { return a.name < b.name; }));

// A parameter's value, its quotes taken off. No value is longer than the text of all parameters.
class Value {
  public:
    void append(char c) { bytes_[length_++] = c; }
    std::string_view text() const { return {bytes_.data(), length_}; }
    std::string_view to_upper_case() {
        std::transform(bytes_.begin(), bytes_.begin() + length_, bytes_.begin(), to_upper);
        return text();
    }

  private:
    std::array<char, XDEC_NLS_MAX_BYTES> bytes_;
    uint8_t length_ = 0;
};

class ParameterReader {
  public:
    explicit ParameterReader(std::string_view text) : rest_(text) {}

    // The next parameter's name, in any case of letters; empty behind the last one, nothing where none can be read.
    std::optional<std::string_view> next(Value& value);

  private:
    void skip_blanks() {
        while (!rest_.empty() && rest_.front() == ' ') {
            rest_.remove_prefix(1);
        }
    }
    size_t name_length() const {
        size_t length = 0;
        while (length < rest_.size() && rest_[length] != ' ' && rest_[length] != '=' && rest_[length] != '\'') {
            ++length;
        }
        return length;
    }
    bool read_quoted(Value& value);

    std::string_view rest_;
};

bool ParameterReader::read_quoted(Value& value) {
    rest_.remove_prefix(1);
    for (size_t i = 0; i < rest_.size(); ++i) {
        if (rest_[i] == '\'') {
            if (i + 1 == rest_.size() || rest_[i + 1] != '\'') {
                rest_.remove_prefix(i + 1);
                return true;
            }
            ++i;
        }
        value.append(rest_[i]);
    }
    return false;
}

std::optional<std::string_view> ParameterReader::next(Value& value) {
    skip_blanks();
    if (rest_.empty()) {
        return rest_;
    }
    const std::string_view name = rest_.substr(0, name_length());
    rest_.remove_prefix(name.size());
    skip_blanks();
    if (name.empty() || rest_.empty() || rest_.front() != '=') {
        return std::nullopt;
    }
    rest_.remove_prefix(1);
    skip_blanks();
    if (rest_.empty()) {
        return std::nullopt;
    }
    if (rest_.front() == '\'') {
        return read_quoted(value) ? std::optional(name) : std::nullopt;
    }
    const std::string_view word = rest_.substr(0, rest_.find(' '));
    for (const char c : word) {
        if (c == '\'') {
            return std::nullopt;
        }
        value.append(c);
    }
    rest_.remove_prefix(word.size());
    return name;
}

bool equals_ignoring_case(std::string_view text, std::string_view upper_case) {
    if (text.size() != upper_case.size()) {
        return false;
    }
    return text == upper_case ||  // as most people write it
           std::equal(text.begin(), text.end(), upper_case.begin(), [](char a, char b) { return to_upper(a) == b; });
}

bool is_letter(char c) { return to_upper(c) >= 'A' && to_upper(c) <= 'Z'; }
bool is_control(char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7F; }

// Signs of a field's own text: no separator and no symbol may look like one.
bool is_sign(char c) { return c == '+' || c == '-' || c == '<' || c == '>' || c == '#'; }

bool is_separator(char c) {
    const bool single_byte = static_cast<unsigned char>(c) < 0x80;
    return single_byte && !is_control(c) && !is_digit(c) && !is_letter(c) && !is_sign(c) && c != '$';
}

bool set_numeric_characters(std::string_view value, NumberLocale& locale) {
    const bool usable = value.size() == 2 && is_separator(value[0]) && is_separator(value[1]) && value[0] != value[1] &&
                        value[0] != ' ';  // blanks around a number do not belong to it
    if (usable) {
        locale.decimal_point = value[0];
        locale.group_separator = value[1];
    }
    return usable;
}

bool set_symbol(std::string_view value, CurrencySymbol& symbol) {
    const auto forbidden = [](char c) { return is_control(c) || is_digit(c) || is_sign(c); };
    if (value.size() > symbol.bytes.size() || std::any_of(value.begin(), value.end(), forbidden)) {
        return false;
    }
    symbol = {static_cast<uint8_t>(value.size()), {}};
    std::copy(value.begin(), value.end(), symbol.bytes.begin());
    return true;
}

bool set_iso_currency(Value& value, CurrencySymbol& symbol) {
    const std::string_view name = value.to_upper_case();
    const bool is_code = name.size() == 3 && std::all_of(name.begin(), name.end(), is_letter);
    const std::string_view code = is_code ? name : iso_currency_of_territory(name);
    return !code.empty() && set_symbol(code, symbol);
}

enum Parameter : size_t { kNumericCharacters, kCurrency, kIsoCurrency, kDualCurrency, kParameters };

constexpr std::array<std::string_view, kParameters> kParameterNames = {"NLS_NUMERIC_CHARACTERS", "NLS_CURRENCY",
                                                                       "NLS_ISO_CURRENCY", "NLS_DUAL_CURRENCY"};

bool set_parameter(size_t parameter, Value& value, NumberLocale& locale) {
    switch (parameter) {
        case kNumericCharacters:
            return set_numeric_characters(value.text(), locale);
        case kCurrency:
            return set_symbol(value.text(), locale.currency);
        case kIsoCurrency:
            return set_iso_currency(value, locale.iso_currency);
        case kDualCurrency:
            return set_symbol(value.text(), locale.dual_currency);
        default:
            return false;
    }
}

// A symbol of nothing but separators and blanks could be taken for a part of the number.
bool can_be_told_from_digits(const CurrencySymbol& symbol, const NumberLocale& locale) {
    const auto first = symbol.bytes.begin(), last = first + symbol.length;
    return first == last || std::any_of(first, last, [&locale](char c) {
               return c != ' ' && c != '.' && c != ',' && c != locale.decimal_point && c != locale.group_separator;
           });
}

}  // namespace

std::string_view iso_currency_of_territory(std::string_view territory) {
    const auto found = std::lower_bound(kTerritories.begin(), kTerritories.end(), territory,
                                        [](const Territory& entry, std::string_view name) { return entry.name < name; });
    return found != kTerritories.end() && found->name == territory ? found->currency : std::string_view{};
}

int32_t parse_nls_parameters(std::string_view text, NumberLocale& locale) {
    ParameterReader reader(text);
    std::array<bool, kParameters> given{};
    for (;;) {
        Value value;
        const std::optional<std::string_view> name = reader.next(value);
        if (!name) {
            return EC_NLS_PARAMETER_INVALID;
        }
        if (name->empty()) {
            break;
        }
        size_t parameter = 0;
        while (parameter < kParameters && !equals_ignoring_case(*name, kParameterNames[parameter])) {
            ++parameter;
        }
        if (!set_parameter(parameter, value, locale) || std::exchange(given[parameter], true)) {
            return EC_NLS_PARAMETER_INVALID;
        }
    }
    const bool any = std::find(given.begin(), given.end(), true) != given.end();
    const bool usable =
        any && can_be_told_from_digits(locale.currency, locale) && can_be_told_from_digits(locale.dual_currency, locale);
    return usable ? 0 : EC_NLS_PARAMETER_INVALID;
}

}  // namespace qzhost
