#include "qzhost/interval.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "qzbifun/codes.h"

namespace {

constexpr int64_t kMicrosPerSecond = 1'000'000;
constexpr int64_t kPowersOfTen[] = {1, 10, 100, 1000, 10'000, 100'000, 1'000'000, 10'000'000, 100'000'000, 1'000'000'000};

enum Field : int32_t { kYear, kMonth, kDay, kHour, kMinute, kSecond };

// Units of the field above it that make one, for months and for seconds: 12 months a year, 86400 seconds a day.
constexpr int64_t kFieldSize[] = {12, 1, 86400, 3600, 60, 1};

// No interval is as long; in days it is still below 2^63 seconds.
constexpr int64_t kMostSeconds = 100'000'000'000'000;

struct Kind {
    Field first;
    Field last;
};

constexpr Kind kKinds[] = {
    {kYear, kYear},     {kYear, kMonth},    {kMonth, kMonth},   {kDay, kDay},     {kDay, kHour},
    {kDay, kMinute},    {kDay, kSecond},    {kHour, kHour},     {kHour, kMinute}, {kHour, kSecond},
    {kMinute, kMinute}, {kMinute, kSecond}, {kSecond, kSecond},
};

struct Qualifier {
    Kind kind;
    int32_t precision;        // 1 to 9
    int32_t fraction_digits;  // 0 to 6

    static std::optional<Qualifier> of(int32_t word, bool day_time) {
        const int32_t kind = word >> 8, precision = word >> 4 & 15, fraction_digits = word & 15;
        if (kind < HOST_IV_YEAR || kind > HOST_IV_SECOND || (kind >= HOST_IV_DAY) != day_time) return std::nullopt;
        if (precision < 1 || precision > 9 || (day_time && fraction_digits > 6)) return std::nullopt;
        return Qualifier{kKinds[kind], precision, fraction_digits};
    }
};

// An interval's length without its sign: months, or seconds and microseconds.
struct Length {
    int64_t units = 0;   // months or seconds
    int64_t micros = 0;  // 0 to 999999
    bool negative = false;
};

// Text between blanks, read from the left.
class Reader {
  public:
    explicit Reader(std::string_view text) : text_(text) {
        while (!text_.empty() && is_blank(text_.front())) text_.remove_prefix(1);
        while (!text_.empty() && is_blank(text_.back())) text_.remove_suffix(1);
    }

    bool at_end() const { return text_.empty(); }

    bool take(char wanted) {
        if (text_.empty() || upper(text_.front()) != wanted) return false;
        text_.remove_prefix(1);
        return true;
    }

    bool take_blanks() {
        const size_t before = text_.size();
        while (!text_.empty() && is_blank(text_.front())) text_.remove_prefix(1);
        return text_.size() != before;
    }

    // A number of one digit or more. What is above kTooLarge stays there.
    std::optional<int64_t> number() {
        if (text_.empty() || !is_digit(text_.front())) return std::nullopt;
        int64_t value = 0;
        for (; !text_.empty() && is_digit(text_.front()); text_.remove_prefix(1)) {
            value = std::min(value * 10 + (text_.front() - '0'), kTooLarge);
        }
        return value;
    }

    // The digits behind a point as microseconds, those behind the sixth dropped.
    std::optional<int64_t> fraction() {
        if (text_.empty() || !is_digit(text_.front())) return std::nullopt;
        int64_t micros = 0, place = kMicrosPerSecond / 10;
        for (; !text_.empty() && is_digit(text_.front()); text_.remove_prefix(1), place /= 10) {
            micros += (text_.front() - '0') * place;
        }
        return micros;
    }

    static char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }
    static bool is_blank(char c) { return c == ' ' || c == '\t'; }

  private:
    // More than any interval holds in any unit; a day, hour, minute and second of it together are still below 2^63 seconds.
    static constexpr int64_t kTooLarge = 100'000'000'000'000;
    static bool is_digit(char c) { return c >= '0' && c <= '9'; }

    std::string_view text_;
};

// Behind the P of 1Y2M, 3DT4H5M6.7S: each field at most once, in descending order, one at least, and one behind a T.
bool read_iso(Reader& in, bool day_time, Length& length) {
    constexpr char kLetters[] = "YMDHMS";
    int32_t field = day_time ? kDay : kYear;
    int32_t last = day_time ? kDay : kMonth;
    bool any = false;
    while (!in.at_end()) {
        if (last == kDay && in.take('T')) {
            field = kHour, last = kSecond, any = false;
            continue;
        }
        const std::optional<int64_t> number = in.number();
        if (!number) return false;
        const bool has_fraction = in.take('.');
        const std::optional<int64_t> micros = has_fraction ? in.fraction() : 0;
        while (field <= last && !in.take(kLetters[field])) ++field;
        if (field > last || !micros || (has_fraction && field != kSecond)) return false;
        length.units += *number * kFieldSize[field];  // four fields at most: 9.01e18
        length.micros = *micros;
        ++field;
        any = true;
    }
    return any;
}

// The fields of a kind with their separators; those behind the first have their natural limits.
bool read_fields(Reader& in, Kind kind, Length& length) {
    for (int32_t field = kind.first; field <= kind.last; ++field) {
        if (field != kind.first && !(field == kHour ? in.take_blanks() : in.take(field == kMonth ? '-' : ':'))) return false;
        const std::optional<int64_t> number = in.number();
        if (!number || (field != kind.first && *number * kFieldSize[field] >= kFieldSize[field - 1])) return false;
        length.units += *number * kFieldSize[field];
    }
    if (kind.last == kSecond && in.take('.')) {
        const std::optional<int64_t> micros = in.fraction();
        if (!micros) return false;
        length.micros = *micros;
    }
    return in.at_end();
}

std::optional<Length> read_length(const char* text, const Qualifier& qualifier) {
    Reader in(text);
    Length length;
    length.negative = in.take('-');
    if (!length.negative) in.take('+');
    const bool day_time = qualifier.kind.first >= kDay;
    const bool read = in.take('P') ? read_iso(in, day_time, length) : read_fields(in, qualifier.kind, length);
    return read ? std::optional(length) : std::nullopt;
}

// Divides a length among the fields from the kind's first to its last. What is less than one of the last field is not expected.
int32_t split(const Length& length, const Qualifier& qualifier, int32_t (&fields)[6]) {
    int64_t rest = length.units;
    for (int32_t field = qualifier.kind.first; field <= qualifier.kind.last; ++field) {
        const int64_t value = rest / kFieldSize[field];
        if (field == qualifier.kind.first && value >= kPowersOfTen[qualifier.precision]) return EC_INTERVAL_OUT_OF_RANGE;
        rest -= value * kFieldSize[field];
        fields[field] = static_cast<int32_t>(length.negative ? -value : value);
    }
    return rest == 0 ? 0 : EC_INTERVAL_TEXT_INVALID;
}

int32_t store_ym(const Length& length, int32_t word, const Qualifier& qualifier, qz_interval_ym* out) {
    int32_t fields[6] = {};
    const int32_t code = split(length, qualifier, fields);
    if (code == 0) *out = {fields[kYear], fields[kMonth], word};
    return code;
}

int32_t store_dt(const Length& length, int32_t word, const Qualifier& qualifier, qz_interval_dt* out) {
    int32_t fields[6] = {};
    const int32_t code = split(length, qualifier, fields);
    if (code < 0) return code;
    if (qualifier.kind.last != kSecond && length.micros != 0) return EC_INTERVAL_TEXT_INVALID;
    const int64_t unit = kPowersOfTen[6 - qualifier.fraction_digits];
    const int32_t micros = static_cast<int32_t>(length.micros / unit * unit);
    *out = {fields[kDay], fields[kHour], fields[kMinute], fields[kSecond], length.negative ? -micros : micros, word};
    return 0;
}

// Seconds and microseconds of a day-time interval with fields of any size, the microseconds not negative.
struct Seconds {
    int64_t seconds;  // within 2^48
    int64_t micros;   // 0 to 999999
    auto operator<=>(const Seconds&) const = default;
};

Seconds seconds_of(const qz_interval_dt& interval) {
    const int64_t carry = interval.iv_fraction / kMicrosPerSecond - (interval.iv_fraction % kMicrosPerSecond < 0);
    const int64_t seconds =
        interval.iv_day * kFieldSize[kDay] + interval.iv_hour * kFieldSize[kHour] + interval.iv_minute * kFieldSize[kMinute];
    return {seconds + interval.iv_second + carry, interval.iv_fraction - carry * kMicrosPerSecond};
}

// number times size, rounded to a whole number, half away from zero: whole + carry, kept apart since the caller scales the
// whole part.
struct Product {
    int64_t whole;  // integer part of the number, below 2^62
    int64_t carry;  // fraction of the number times size, rounded; at most size
};

std::optional<Product> multiply(const xdec& number, int64_t size) {
    constexpr int32_t kMostIntegerPairs = 8;  // 16 digits are more than any interval holds
    const int32_t count = std::clamp(number.length - 1, 0, static_cast<int32_t>(XDEC_MAX_PAIRS));
    const int32_t integer_pairs = number.lead - 192;
    if (integer_pairs > kMostIntegerPairs) return std::nullopt;
    const auto pair = [&](int32_t i) -> int64_t {
        return i >= 0 && i < count && number.pairs[i] > 0 ? number.pairs[i] - 1 : 0;
    };
    Product product{};
    for (int32_t i = 0; i < integer_pairs; ++i) product.whole = product.whole * 100 + pair(i);
    int64_t digits = 0;  // the pair behind the point
    for (int32_t i = count - 1; i >= integer_pairs; --i) {
        const int64_t sum = pair(i) * size + product.carry;  // below 255 * 2^37 + 2^39
        digits = sum % 100;
        product.carry = sum / 100;
    }
    product.carry += digits >= 50;
    return product;
}

std::string_view trimmed(const char* text, uint32_t length) {
    std::string_view word(text, length);
    while (!word.empty() && Reader::is_blank(word.front())) word.remove_prefix(1);
    while (!word.empty() && Reader::is_blank(word.back())) word.remove_suffix(1);
    return word;
}

// The field that a unit names, or none.
std::optional<Field> unit_of(const char* text, uint32_t length, Field first, Field last) {
    constexpr std::string_view kNames[] = {"YEAR", "MONTH", "DAY", "HOUR", "MINUTE", "SECOND"};
    const std::string_view word = trimmed(text, length);
    for (int32_t field = first; field <= last; ++field) {
        const auto same = [](char t, char u) { return Reader::upper(t) == u; };
        if (std::ranges::equal(word, kNames[field], same)) return static_cast<Field>(field);
    }
    return std::nullopt;
}

char* put_digits(char* to, int64_t value, int32_t least) {
    char digits[20];
    int32_t count = 0;
    for (; value > 0 || count < least; value /= 10) digits[count++] = static_cast<char>('0' + value % 10);
    return std::reverse_copy(digits, digits + count, to);
}

}  // namespace

int32_t interval_ym_cmp(const qz_interval_ym* a, const qz_interval_ym* b, [[maybe_unused]] int32_t zero1,
                        [[maybe_unused]] int32_t zero2) {
    const int64_t left = int64_t{a->iv_year} * 12 + a->iv_month, right = int64_t{b->iv_year} * 12 + b->iv_month;
    return (left > right) - (left < right);
}

int32_t interval_dt_cmp(const qz_interval_dt* a, const qz_interval_dt* b, [[maybe_unused]] int32_t zero1,
                        [[maybe_unused]] int32_t zero2) {
    const Seconds left = seconds_of(*a), right = seconds_of(*b);
    return (left > right) - (left < right);
}

int32_t qz_interval_ym_from_char([[maybe_unused]] qz_env* env, const char* text, qz_interval_ym* out, int32_t qualifier) {
    const std::optional<Qualifier> wanted = Qualifier::of(qualifier, false);
    if (!wanted) return EC_INVALID_ARGUMENT;
    const std::optional<Length> length = read_length(text, *wanted);
    return length ? store_ym(*length, qualifier, *wanted, out) : EC_INTERVAL_TEXT_INVALID;
}

int32_t qz_interval_dt_from_char([[maybe_unused]] qz_env* env, const char* text, qz_interval_dt* out, int32_t qualifier) {
    const std::optional<Qualifier> wanted = Qualifier::of(qualifier, true);
    if (!wanted) return EC_INVALID_ARGUMENT;
    const std::optional<Length> length = read_length(text, *wanted);
    return length ? store_dt(*length, qualifier, *wanted, out) : EC_INTERVAL_TEXT_INVALID;
}

void qz_interval_dt_to_char_oracle(const qz_interval_dt* interval, char* buffer, [[maybe_unused]] int32_t zero) {
    Seconds length = seconds_of(*interval);
    const bool negative = length.seconds < 0;
    if (negative) {
        // -(s + m/1000000) with m from 0 to 999999
        const int64_t borrowed = length.micros > 0;
        length = {-length.seconds - borrowed, borrowed * kMicrosPerSecond - length.micros};
    }
    const std::optional<Qualifier> qualifier = Qualifier::of(interval->iv_qualifier, true);
    const bool from_days = qualifier && qualifier->kind.first == kDay;
    char* to = buffer;
    *to++ = negative ? '-' : '+';
    to = put_digits(to, length.seconds / 86400, from_days ? qualifier->precision : 2);
    *to++ = ' ';
    to = put_digits(to, length.seconds / 3600 % 24, 2);
    *to++ = ':';
    to = put_digits(to, length.seconds / 60 % 60, 2);
    *to++ = ':';
    to = put_digits(to, length.seconds % 60, 2);
    if (qualifier && qualifier->kind.last == kSecond && qualifier->fraction_digits > 0) {
        *to++ = '.';
        to = put_digits(to, length.micros / kPowersOfTen[6 - qualifier->fraction_digits], qualifier->fraction_digits);
    }
    *to = 0;
}

int32_t xdec_to_ivdt(const xdec* number, const char* unit, uint32_t unit_length, qz_interval_dt* out) {
    const std::optional<Field> field = unit_of(unit, unit_length, kDay, kSecond);
    if (!field) return EC_INVALID_ARGUMENT;
    const int64_t size = kFieldSize[*field];
    const std::optional<Product> product = multiply(*number, size * kMicrosPerSecond);
    if (!product || product->whole > kMostSeconds) return EC_INTERVAL_OUT_OF_RANGE;
    const Length length{product->whole * size + product->carry / kMicrosPerSecond, product->carry % kMicrosPerSecond,
                        number->sign == XDEC_SIGN_NEGATIVE};
    return store_dt(length, HOST_IV_QUALIFIER_DT, *Qualifier::of(HOST_IV_QUALIFIER_DT, true), out);
}

int32_t xdec_to_ivym(const xdec* number, const char* unit, uint32_t unit_length, qz_interval_ym* out) {
    const std::optional<Field> field = unit_of(unit, unit_length, kYear, kMonth);
    if (!field) return EC_INVALID_ARGUMENT;
    const int64_t size = kFieldSize[*field];
    const std::optional<Product> product = multiply(*number, size);
    if (!product || product->whole > kMostSeconds) return EC_INTERVAL_OUT_OF_RANGE;
    const Length length{product->whole * size + product->carry, 0, number->sign == XDEC_SIGN_NEGATIVE};
    return store_ym(length, HOST_IV_QUALIFIER_YM, *Qualifier::of(HOST_IV_QUALIFIER_YM, false), out);
}
