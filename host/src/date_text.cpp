#include "qzhost/date_text.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <string_view>

#include "qzbifun/codes.h"
#include "qzhost/calendar.h"

namespace {

// The date of a time that stands alone.
constexpr int32_t kTimeAloneYear = 1900;

struct Fields {
    int32_t year = kTimeAloneYear;
    int32_t month = 1;
    int32_t day = 1;
    int32_t hour = 0;
    int32_t minute = 0;
    int32_t second = 0;
    int32_t fraction = 0;
    int32_t zone = TZ_NONE;
    uint32_t info = 0;
};

// Writes a record when the fields make one; a date in the gap moves to its end.
int32_t encode(const Fields& f, qztime* out) {
    const int32_t day = qztime_cmp_with_glgl(f.year, f.month, f.day) != 0 ? f.day : 15;
    const int32_t code =
        qztime_encode(out, f.year, f.month, day, f.hour, f.minute, f.second, f.fraction, static_cast<int16_t>(f.zone));
    return code < 0 ? EC_DATE_TEXT_INVALID : 0;
}

bool is_blank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool is_digit(char c) { return c >= '0' && c <= '9'; }
char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }

// Reads digits from the left, at most nine into the value, whose missing places are zeros: the fraction of a second in
// nanoseconds.
int32_t nanoseconds(std::string_view digits) {
    int32_t value = 0;
    for (size_t i = 0; i < 9; ++i) value = value * 10 + (i < digits.size() ? digits[i] - '0' : 0);
    return value;
}

// ---- The common forms, eight bytes at a time --------------------------------------------------------------------------------

// Eight bytes that must hold digits where the pattern has a 0 and the pattern's own byte elsewhere. The value of two
// neighbouring digits then stands in the byte of the first.
struct Block {
    uint64_t pairs;
    bool fits;

    Block(const char* text, const char (&pattern)[9]) {
        uint64_t bytes, wanted, limit;
        char limits[8];
        // Added to a byte, the limit sets its high bit when a digit is above 9 or another byte is not 0.
        for (int i = 0; i < 8; ++i) limits[i] = pattern[i] == '0' ? 0x76 : 0x7f;
        std::memcpy(&bytes, text, 8);
        std::memcpy(&wanted, pattern, 8);
        std::memcpy(&limit, limits, 8);
        bytes ^= wanted;
        fits = (((bytes + limit) | bytes) & 0x8080808080808080) == 0;
        pairs = bytes * 10 + (bytes >> 8);
    }

    int32_t pair(int first) const { return static_cast<int32_t>(pairs >> (8 * first) & 255); }
};

// 2024-02-29 as a whole text, or 2024-02-29 10:30:15 and 2024-02-29T10:30:15 as the beginning of one. The bytes read, 0 for
// none.
uint32_t read_common(const char* text, uint32_t length, Fields& f) {
    if (length != 10 && length < 19) return 0;
    const Block date(text, "0000-00-");
    const uint32_t day_tens = static_cast<uint8_t>(text[8] - '0'), day_ones = static_cast<uint8_t>(text[9] - '0');
    if (!date.fits || day_tens > 9 || day_ones > 9) return 0;
    if (length > 10) {
        const Block time(text + 11, "00:00:00");
        if ((text[10] != ' ' && text[10] != 'T') || !time.fits) return 0;
        f.hour = time.pair(0), f.minute = time.pair(3), f.second = time.pair(6);
        f.info = HOST_TEXT_HAS_TIME;
    }
    f.year = date.pair(0) * 100 + date.pair(2);
    f.month = date.pair(5);
    f.day = static_cast<int32_t>(day_tens * 10 + day_ones);
    f.info |= HOST_TEXT_HAS_DATE;
    return length > 10 ? 19 : 10;
}

// ---- All forms ------------------------------------------------------------------------------------------------------------

class Reader {
  public:
    Reader(std::string_view text, Fields& fields) : text_(text), f_(fields) {}

    // The whole text, without blanks around it.
    bool read() {
        const size_t digits = digits_ahead(0);
        const bool time_alone = upper(peek()) == 'T' || (digits > 0 && digits <= 2 && peek(digits) == ':');
        if (!time_alone) {
            if (!read_date()) return false;
            if (text_.empty()) return true;
            if (!skip_to_time()) return false;
        } else if (upper(peek()) == 'T') {
            drop(1);
        }
        return read_time() && read_behind_time();
    }

    // What may follow hours, minutes and seconds, to the end of the text.
    bool read_behind_seconds() { return read_fraction() && read_behind_time(); }

  private:
    static constexpr std::string_view kDateSeparators = "-/.@#$%*&";

    char peek(size_t at = 0) const { return at < text_.size() ? text_[at] : '\0'; }
    void drop(size_t count) { text_.remove_prefix(count); }

    bool take(char wanted) {
        if (text_.empty() || text_.front() != wanted) return false;
        drop(1);
        return true;
    }

    bool take_word(std::string_view word) {
        if (text_.size() < word.size() ||
            !std::equal(word.begin(), word.end(), text_.begin(), [](char w, char t) { return w == upper(t); })) {
            return false;
        }
        drop(word.size());
        return true;
    }

    void skip_blanks() {
        while (!text_.empty() && is_blank(text_.front())) drop(1);
    }

    size_t digits_ahead(size_t from) const {
        size_t count = 0;
        while (from + count < text_.size() && is_digit(text_[from + count])) ++count;
        return count;
    }

    // The next count digits, which are there; at most 4.
    int32_t number(size_t count) {
        int32_t value = 0;
        for (size_t i = 0; i < count; ++i) value = value * 10 + (text_[i] - '0');
        drop(count);
        return value;
    }

    // A field of one digit or two.
    bool read_short(int32_t& field) {
        const size_t count = digits_ahead(0);
        if (count < 1 || count > 2) return false;
        field = number(count);
        return true;
    }

    bool read_date() {
        f_.info |= HOST_TEXT_HAS_DATE;
        const bool is_signed = peek() == '-' || peek() == '+';
        const bool negative = peek() == '-';
        if (is_signed) drop(1);
        const size_t count = digits_ahead(0);
        const bool compact = count == 8 || count == 12 || count == 14;
        if (compact && !is_signed) {
            f_.year = number(4), f_.month = number(2), f_.day = number(2);
            return true;
        }
        const char separator = peek(count);
        if (count < 1 || count > 4 || kDateSeparators.find(separator) == std::string_view::npos) return false;
        f_.year = number(count);
        if (negative) f_.year = -f_.year;
        return take(separator) && read_short(f_.month) && take(separator) && read_short(f_.day);
    }

    // What parts date and time: a T, blanks, or nothing between compact digits.
    bool skip_to_time() {
        const bool parted = is_blank(peek()) || upper(peek()) == 'T';
        skip_blanks();
        if (upper(peek()) == 'T') drop(1);
        return parted || is_digit(peek());
    }

    bool read_time() {
        f_.info |= HOST_TEXT_HAS_TIME;
        const size_t count = digits_ahead(0);
        if (count == 4 || count == 6) {
            f_.hour = number(2), f_.minute = number(2);
            if (count == 4) return true;
            f_.second = number(2);
            return read_fraction();
        }
        if (!read_short(f_.hour) || !take(':') || !read_short(f_.minute)) return false;
        if (!take(':')) return true;
        return read_short(f_.second) && read_fraction();
    }

    // A point without digits is what the default text of a value without fraction digits ends in.
    bool read_fraction() {
        if (!take('.') && !take(',')) return true;
        const size_t count = digits_ahead(0);
        f_.fraction = nanoseconds(text_.substr(0, count));
        if (count > 0) f_.info |= HOST_TEXT_HAS_FRACTION;
        drop(count);
        return true;
    }

    bool read_behind_time() {
        skip_blanks();
        if (text_.empty()) return true;
        if (!read_half_of_day()) return false;
        skip_blanks();
        return read_zone() && text_.empty();
    }

    bool read_half_of_day() {
        const bool morning = take_word("AM"), afternoon = !morning && take_word("PM");
        if (!morning && !afternoon) return true;
        if (f_.hour < 1 || f_.hour > 12) return false;
        f_.hour = f_.hour % 12 + (afternoon ? 12 : 0);
        return true;
    }

    bool read_zone() {
        if (text_.empty()) return true;
        f_.info |= HOST_TEXT_HAS_ZONE;
        f_.zone = 0;
        if (take_word("Z") || take_word("UTC")) return true;
        const bool west = peek() == '-';
        if (!take('-') && !take('+')) return false;
        const size_t count = digits_ahead(0);
        if (count != 1 && count != 2 && count != 4) return false;
        const int32_t hours = number(count == 1 ? 1 : 2);
        int32_t minutes = count == 4 ? number(2) : 0;
        if (count != 4 && take(':') && !(digits_ahead(0) == 2 && read_short(minutes))) return false;
        if (hours > 14 || minutes > 59) return false;
        f_.zone = (hours * 60 + minutes) * (west ? -1 : 1);
        return f_.zone >= -HOST_ZONE_MAX && f_.zone <= HOST_ZONE_MAX;
    }

    std::string_view text_;
    Fields& f_;
};

std::string_view trimmed(const char* text, uint32_t length) {
    std::string_view all(text, length);
    while (!all.empty() && is_blank(all.front())) all.remove_prefix(1);
    while (!all.empty() && is_blank(all.back())) all.remove_suffix(1);
    return all;
}

// 0 with the fields of the text, a code, or RC_VALUE_IS_NULL.
int32_t read_fields(const char* text, uint32_t length, Fields& f) {
    const uint32_t common = read_common(text, length, f);
    if (common == length && length != 0) return 0;
    if (common != 0) return Reader({text + common, length - common}, f).read_behind_seconds() ? 0 : EC_DATE_TEXT_INVALID;
    const std::string_view all = trimmed(text, length);
    if (all.empty()) return RC_VALUE_IS_NULL;
    return Reader(all, f).read() ? 0 : EC_DATE_TEXT_INVALID;
}

// ---- Writing ----------------------------------------------------------------------------------------------------------------

char* put_two(char* to, int32_t value) {
    *to++ = static_cast<char>('0' + value / 10);
    *to++ = static_cast<char>('0' + value % 10);
    return to;
}

char* put_date(char* to, const qztime& value) {
    int32_t year = value.year;
    if (year < 0) {
        *to++ = '-';
        year = -year;
    }
    if (year > 9999) *to++ = static_cast<char>('0' + year / 10000);
    to = put_two(to, year / 100 % 100);
    to = put_two(to, year % 100);
    *to++ = '-';
    to = put_two(to, value.month);
    *to++ = '-';
    return put_two(to, value.day);
}

char* put_time(char* to, const qztime& value) {
    to = put_two(to, value.hour);
    *to++ = ':';
    to = put_two(to, value.minute);
    *to++ = ':';
    return put_two(to, value.second);
}

// A point and the first digits of the fraction; with -1 all up to the last that is not 0, and no point when there is none.
char* put_fraction(char* to, uint32_t fraction, int32_t digits) {
    char all[9];
    for (int i = 8; i >= 0; --i, fraction /= 10) all[i] = static_cast<char>('0' + fraction % 10);
    if (digits < 0) {
        digits = 9;
        while (digits > 0 && all[digits - 1] == '0') --digits;
    }
    if (digits == 0) return to;
    *to++ = '.';
    return std::copy_n(all, digits, to);
}

char* put_zone(char* to, int32_t zone) {
    *to++ = ' ';
    *to++ = zone < 0 ? '-' : '+';
    if (zone < 0) zone = -zone;
    to = put_two(to, zone / 60);
    *to++ = ':';
    return put_two(to, zone % 60);
}

bool is_kind(int32_t kind) { return kind == HOST_KIND_DATE || kind == HOST_KIND_DATETIME || kind == HOST_KIND_DATETIME_TZ; }

bool is_zone(int32_t zone) { return zone == TZ_NONE || (zone >= -HOST_ZONE_MAX && zone <= HOST_ZONE_MAX); }

}  // namespace

int32_t qztime_from_char_ex(const char* text, uint32_t length, qztime* out) {
    Fields f;
    const int32_t code = read_fields(text, length, f);
    return code == 0 ? encode(f, out) : code;
}

int32_t qztime_from_char_ex2(const char* text, uint32_t length, int32_t kind, qztime* out, uint32_t* info) {
    if (!is_kind(kind)) return EC_INVALID_ARGUMENT;
    Fields f;
    int32_t code = read_fields(text, length, f);
    if (code != 0) return code;
    qztime value;
    code = encode(f, &value);
    if (code < 0) return code;
    if (kind == HOST_KIND_DATE) {
        if ((f.info & HOST_TEXT_HAS_DATE) == 0) return EC_DATE_TEXT_INVALID;
        value.hour = value.minute = value.second = 0;
        value.fraction = 0;
    }
    if (kind != HOST_KIND_DATETIME_TZ) value.tz = TZ_NONE;
    *out = value;
    if (info != nullptr) *info = f.info;
    return 0;
}

int32_t qztime_from_char_with_tz(const char* text, uint32_t length, uint32_t default_zone, qztime* out) {
    Fields f;
    if (read_fields(text, length, f) != 0) return 0;
    if ((f.info & HOST_TEXT_HAS_ZONE) == 0) {
        f.zone = static_cast<int32_t>(default_zone);
        if (!is_zone(f.zone)) return 0;
    }
    return encode(f, out) == 0;
}

int32_t qztime_to_char(const qztime* value, int32_t kind, int32_t fraction_digits, char* buffer) {
    if (!is_kind(kind) || fraction_digits < -1 || fraction_digits > 9) return EC_INVALID_ARGUMENT;
    const bool has_time = kind != HOST_KIND_DATE;
    if (value->month < 1 || value->month > 12 || value->day < 1 || value->day > 31) return EC_DATE_VALUE_INVALID;
    if (has_time && (value->hour > 23 || value->minute > 59 || value->second > 59 || value->fraction > 999'999'999)) {
        return EC_DATE_VALUE_INVALID;
    }
    if (kind == HOST_KIND_DATETIME_TZ && !is_zone(value->tz)) return EC_DATE_VALUE_INVALID;
    char* to = put_date(buffer, *value);
    if (has_time) {
        *to++ = ' ';
        to = put_time(to, *value);
        to = put_fraction(to, value->fraction, fraction_digits);
    }
    if (kind == HOST_KIND_DATETIME_TZ && value->tz != TZ_NONE) to = put_zone(to, value->tz);
    *to = 0;
    return 0;
}

int32_t str2int64(const char* text, uint32_t length, int64_t* out) {
    std::string_view digits = trimmed(text, length);
    const bool negative = digits.starts_with('-');
    if (negative || digits.starts_with('+')) digits.remove_prefix(1);
    if (digits.empty() || !std::ranges::all_of(digits, is_digit)) return EC_NUMBER_TEXT_INVALID;
    // Gathered as a negative number, which reaches one further.
    int64_t value = 0;
    for (const char digit : digits) {
        if (__builtin_mul_overflow(value, 10, &value) || __builtin_sub_overflow(value, digit - '0', &value)) {
            return EC_DATA_OVERFLOW;
        }
    }
    if (!negative && value == std::numeric_limits<int64_t>::min()) return EC_DATA_OVERFLOW;
    *out = negative ? value : -value;
    return 0;
}
