// The parser of number formats.
//
// A format is read once from left to right. Its elements come in this order, and the stage tells how far the parser is:
//
//   FM  S or B or currency  digits and separators  point and digits, or V and digits  EEEE  currency  S or MI or PR
//
// $ and B have no place of their own and may stand anywhere in front of the last sign element. RN, TM and X are formats of
// their own.
#include <cstring>

#include "host/src/number_format_record.h"
#include "qzbifun/codes.h"

namespace qzhost {
namespace {

enum class Stage : uint8_t { start, integer, fraction, shifted, exponent, currency, sign };

// Elements of one format are all literal or all from the parameters: with ',' as the point, '9,9D9' could be read in two ways.
enum class Separators : uint8_t { none, literal, from_parameters };

class FormatParser {
  public:
    FormatParser(std::string_view text, xdec_number_format& format)
        : at_(text.data()), end_(at_ + text.size()), format_(format) {}

    bool parse();
    char currency_element() const { return currency_; }
    bool separators_are_literal() const { return separators_ == Separators::literal; }

  private:
    bool take(std::string_view upper_case_word);
    bool element();
    bool digit(bool zero);
    bool group(Separators separators);
    bool point(Separators separators);
    bool shift();
    bool exponent();
    bool leading_or_trailing_currency(char element);
    bool dollar();
    bool blank_when_zero();
    bool sign_in_front_or_behind();
    bool sign_behind(char second, FormatSign sign);
    bool shortest_text();
    bool roman();
    bool hexadecimal(char first);
    bool use(Separators separators);
    bool finish();

    const char* at_;
    const char* const end_;
    xdec_number_format& format_;
    Stage stage_ = Stage::start;
    Separators separators_ = Separators::none;
    char currency_ = '\0';
    uint8_t group_count_ = 0;
    uint8_t first_zero_ = UINT8_MAX;  // integer position of the first 0
    bool group_is_last_ = false;      // a digit must follow
};

bool FormatParser::take(std::string_view word) {
    if (static_cast<size_t>(end_ - at_) < word.size()) {
        return false;
    }
    for (size_t i = 0; i < word.size(); ++i) {
        if (to_upper(at_[i]) != word[i]) {
            return false;
        }
    }
    at_ += word.size();
    return true;
}

bool FormatParser::parse() {
    if (take("FM")) {
        format_.flags |= kFillMode;
    }
    while (at_ != end_) {
        if (!element()) {
            return false;
        }
    }
    return finish();
}

bool FormatParser::element() {
    const char c = *at_++;
    if (group_is_last_ && c != '9' && c != '0') {
        return false;
    }
    switch (c) {
        case '9':
            return digit(false);
        case '0':
            return digit(true);
        case ',':
            return group(Separators::literal);
        case '.':
            return point(Separators::literal);
        case '$':
            return dollar();
        case 'G':
        case 'g':
            return group(Separators::from_parameters);
        case 'D':
        case 'd':
            return point(Separators::from_parameters);
        case 'L':
        case 'l':
        case 'C':
        case 'c':
        case 'U':
        case 'u':
            return leading_or_trailing_currency(to_upper(c));
        case 'S':
        case 's':
            return sign_in_front_or_behind();
        case 'M':
        case 'm':
            return sign_behind('I', kMinusBehind);
        case 'P':
        case 'p':
            return sign_behind('R', kAngleBrackets);
        case 'B':
        case 'b':
            return blank_when_zero();
        case 'V':
        case 'v':
            return shift();
        case 'E':
        case 'e':
            return exponent();
        case 'T':
        case 't':
            return shortest_text();
        case 'R':
        case 'r':
            return roman();
        case 'X':
        case 'x':
            return hexadecimal(c);
        default:
            return false;
    }
}

bool FormatParser::digit(bool zero) {
    group_is_last_ = false;
    if (stage_ == Stage::fraction) {
        ++format_.fraction_digits;
        if (zero) {
            format_.fraction_shown = format_.fraction_digits;
        }
        return true;
    }
    if (stage_ > Stage::shifted) {
        return false;
    }
    if (stage_ == Stage::start) {
        stage_ = Stage::integer;
    }
    if (stage_ == Stage::shifted) {
        ++format_.shift;
    }
    if (zero && first_zero_ == UINT8_MAX) {
        first_zero_ = format_.integer_digits;
    }
    ++format_.integer_digits;
    return true;
}

bool FormatParser::use(Separators separators) {
    if (separators_ != Separators::none && separators_ != separators) {
        return false;
    }
    separators_ = separators;
    return true;
}

bool FormatParser::group(Separators separators) {
    if (stage_ != Stage::integer || !use(separators)) {
        return false;
    }
    const uint8_t position = format_.integer_digits;
    format_.groups[position / 64] |= uint64_t{1} << position % 64;
    ++group_count_;
    group_is_last_ = true;
    return true;
}

bool FormatParser::point(Separators separators) {
    if (stage_ > Stage::integer || !use(separators)) {
        return false;
    }
    stage_ = Stage::fraction;
    format_.flags |= kHasPoint;
    return true;
}

bool FormatParser::shift() {
    if (stage_ > Stage::integer) {
        return false;
    }
    stage_ = Stage::shifted;
    return true;
}

bool FormatParser::exponent() {
    const bool allowed =
        (stage_ == Stage::integer || stage_ == Stage::fraction) && format_.integer_digits > 0 && group_count_ == 0;
    if (!allowed || !take("EEE")) {
        return false;
    }
    stage_ = Stage::exponent;
    format_.kind = kScientific;
    return true;
}

bool FormatParser::leading_or_trailing_currency(char element) {
    if (currency_ != '\0' || stage_ > Stage::exponent) {
        return false;
    }
    currency_ = element;
    if (stage_ == Stage::start) {
        format_.currency = kCurrencyInFront;
    } else {
        format_.currency = kCurrencyBehind;
        stage_ = Stage::currency;
    }
    return true;
}

bool FormatParser::dollar() {
    if (currency_ != '\0' || stage_ == Stage::sign) {
        return false;
    }
    currency_ = '$';
    format_.currency = kCurrencyInFront;
    return true;
}

bool FormatParser::blank_when_zero() {
    if (has_flag(format_, kBlankWhenZero) || stage_ == Stage::sign) {
        return false;
    }
    format_.flags |= kBlankWhenZero;
    return true;
}

bool FormatParser::sign_in_front_or_behind() {
    if (format_.sign != kMinusInFront) {
        return false;
    }
    if (stage_ == Stage::start) {
        format_.sign = kSignInFront;
        return currency_ == '\0';
    }
    format_.sign = kSignBehind;
    stage_ = Stage::sign;
    return at_ == end_;
}

bool FormatParser::sign_behind(char second, FormatSign sign) {
    const bool allowed = format_.sign == kMinusInFront && stage_ != Stage::start;
    if (!allowed || !take(std::string_view(&second, 1))) {
        return false;
    }
    format_.sign = sign;
    stage_ = Stage::sign;
    return at_ == end_;
}

bool FormatParser::shortest_text() {
    // Nothing stands in front of it: its text has no width that fill mode could take away.
    const bool alone = stage_ == Stage::start && format_.flags == 0 && format_.sign == kMinusInFront && currency_ == '\0';
    if (!alone || !take("M")) {
        return false;
    }
    format_.kind = kShortestText;
    if (take("E")) {
        format_.flags |= kAlwaysExponent;
    } else {
        take("9");
    }
    return at_ == end_;
}

constexpr uint8_t kRomanWidth = 15;  // MMMDCCCLXXXVIII

bool FormatParser::roman() {
    const bool alone =
        stage_ == Stage::start && (format_.flags & ~kFillMode) == 0 && format_.sign == kMinusInFront && currency_ == '\0';
    const bool lower_case = at_[-1] == 'r';
    if (!alone || !take("N")) {
        return false;
    }
    format_.kind = kRoman;
    format_.width = kRomanWidth;
    if (lower_case) {
        format_.flags |= kLowerCase;
    }
    return at_ == end_;
}

bool FormatParser::hexadecimal(char first) {
    const bool only_zeros = stage_ == Stage::start || (stage_ == Stage::integer && first_zero_ == 0);
    const bool allowed = only_zeros && (format_.flags & ~kFillMode) == 0 && format_.sign == kMinusInFront &&
                         currency_ == '\0' && group_count_ == 0;
    if (!allowed) {
        return false;
    }
    const auto zeros = format_.integer_digits;
    auto positions = static_cast<uint8_t>(zeros + 1);
    for (; at_ != end_; ++at_, ++positions) {
        if (to_upper(*at_) != 'X') {
            return false;
        }
    }
    format_.kind = kHexadecimal;
    format_.integer_digits = positions;
    format_.integer_shown = zeros > 0 ? positions : 1;
    format_.width = static_cast<uint8_t>(positions + (zeros > 0 ? 0 : 1));
    if (first == 'x') {
        format_.flags |= kLowerCase;
    }
    return true;
}

constexpr uint8_t kCurrencyWidth = XDEC_CURRENCY_MAX_BYTES;
constexpr uint8_t kIsoCurrencyWidth = 7;
constexpr uint8_t kExponentWidth = 5;  // E+125

uint8_t currency_width(char element) {
    switch (element) {
        case '\0':
            return 0;
        case '$':
            return 1;
        case 'C':
            return kIsoCurrencyWidth;
        default:
            return kCurrencyWidth;
    }
}

// What only the whole format tells, and the width of its field. At most 74 elements beside a currency, so that no sum leaves a
// byte.
bool FormatParser::finish() {
    if (format_.kind == kShortestText || format_.kind == kRoman || format_.kind == kHexadecimal) {
        return true;
    }
    if (group_is_last_ || format_.integer_digits + format_.fraction_digits == 0) {
        return false;
    }
    if (first_zero_ != UINT8_MAX) {
        format_.integer_shown = static_cast<uint8_t>(format_.integer_digits - first_zero_);
    }
    const bool scientific = format_.kind == kScientific;
    if (scientific && has_flag(format_, kBlankWhenZero)) {
        return false;
    }
    const int integer_width = scientific ? 1 : format_.integer_digits + group_count_;
    const int sign_width = format_.sign == kAngleBrackets ? 2 : 1;
    format_.width =
        static_cast<uint8_t>(sign_width + currency_width(currency_) + integer_width + (has_flag(format_, kHasPoint) ? 1 : 0) +
                             format_.fraction_digits + (scientific ? kExponentWidth : 0));
    return true;
}

void set_currency(char element, const NumberLocale& locale, xdec_number_format& format) {
    if (element == '\0') {
        return;
    }
    const CurrencySymbol dollar{1, {'$'}};
    const CurrencySymbol& symbol = element == 'L'   ? locale.currency
                                   : element == 'C' ? locale.iso_currency
                                   : element == 'U' ? locale.dual_currency
                                                    : dollar;
    format.currency_length = symbol.length;
    std::memcpy(format.currency_symbol, symbol.bytes.data(), sizeof format.currency_symbol);
}

int32_t check_length(uint32_t length) {
    if (length == 0) {
        return EC_NUMBER_FORMAT_EMPTY;
    }
    return length > XDEC_FORMAT_MAX_BYTES ? EC_INVALID_ARGUMENT : 0;
}

void apply_locale(const FormatParser& parser, const NumberLocale& locale, xdec_number_format& format) {
    format.decimal_point = parser.separators_are_literal() ? '.' : locale.decimal_point;
    format.group_separator = parser.separators_are_literal() ? ',' : locale.group_separator;
    set_currency(parser.currency_element(), locale, format);
}

// nls is null where the locale is the default one.
int32_t parse_format(std::string_view format, const std::string_view* nls, xdec_number_format& parsed) {
    const int32_t code = check_length(static_cast<uint32_t>(format.size()));
    if (code != 0) {
        return code;
    }
    parsed = {};
    FormatParser parser(format, parsed);
    if (!parser.parse()) {
        return EC_INVALID_ARGUMENT;
    }
    NumberLocale locale;
    if (nls != nullptr && (nls->size() > XDEC_NLS_MAX_BYTES || parse_nls_parameters(*nls, locale) != 0)) {
        return EC_NLS_PARAMETER_INVALID;
    }
    apply_locale(parser, locale, parsed);
    return 0;
}

}  // namespace
}  // namespace qzhost

int32_t xdec_to_char_fmt_parse(qz_env*, const char* format, uint32_t format_length, xdec_number_format* parsed) {
    return qzhost::parse_format({format, format_length}, nullptr, *parsed);
}

int32_t xdec_to_char_fmt_parse_with_nls(qz_env*, const char* format, uint32_t format_length, const char* nls,
                                        uint32_t nls_length, xdec_number_format* parsed) {
    const std::string_view parameters(nls, nls_length);
    return qzhost::parse_format({format, format_length}, &parameters, *parsed);
}

int32_t qztime_dt_fmt_is_for_xdec_and_date(const xdec_number_format* parsed) {
    return parsed->kind == qzhost::kHexadecimal && parsed->width > parsed->integer_digits ? 1 : 0;
}
