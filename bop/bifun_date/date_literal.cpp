#include "bop/bifun_date/date_literal.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "bop/frame/export.h"
#include "qzbifun/date_parts.h"
#include "qzhost/calendar.h"

namespace bifun {
namespace {

constexpr int32_t kFractionDigits = 9;
constexpr Code kInvalid{EC_DATE_TEXT_INVALID};

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// The bytes in a text, all of them below 128, as bits.
struct Bytes {
    uint64_t bits[2] = {0, 0};
    constexpr explicit Bytes(std::string_view text) {
        for (const char c : text) bits[c >> 6] |= uint64_t{1} << (c & 63);
    }
    bool have(char c) const { return c >= 0 && (bits[c >> 6] >> (c & 63) & 1) != 0; }
};
constexpr Bytes kSeparators("-/.@#$%*&");

struct DateAndTime {
    int32_t year = 0;
    int32_t month = 0;
    int32_t day = 0;
    TimeOfDay time;
};

bool in_range(const TimeOfDay& time) { return time.hour <= 23 && time.minute <= 59 && time.second <= 59; }

// Month 0 and day 0 are left to the calendar, which has a code of its own for them. Four digits make no year above 9999.
Code encode(const DateAndTime& value, qztime& out) {
    const auto& [year, month, day, time] = value;
    if (year < 1 || month > 12 || day > qztime_month_end_day(year, month)) return kInvalid;
    const int32_t kept_day = qztime_cmp_with_glgl(year, month, day) != 0 ? day : 15;
    return Code{qztime_encode(&out, year, month, kept_day, time.hour, time.minute, time.second, time.fraction, TZ_NONE)};
}

// ---- Field by field -------------------------------------------------------------------------------------------------------

class FieldReader {
  public:
    FieldReader(std::string_view text, int32_t position) : text_(text), position_(position) {}

    // max_digits at most 9.
    bool number(char stop, int32_t max_digits, int32_t& value) {
        DateField field;
        if (!read_date_field(text_, position_, stop, max_digits, field)) return false;
        value = 0;
        for (int32_t i = 0; i < field.digits; ++i) value = value * 10 + (byte(field.begin + i) - '0');
        position_ = field.end;
        return true;
    }

    // Digits behind the ninth are dropped, missing ones are zeros.
    bool nanoseconds(int32_t& value) {
        DateField field;
        const int32_t room = static_cast<int32_t>(text_.size()) - position_;
        if (!read_date_field(text_, position_, '\0', room, field)) return false;
        value = 0;
        for (int32_t i = 0; i < kFractionDigits; ++i) {
            value = value * 10 + (i < field.digits ? byte(field.begin + i) - '0' : 0);
        }
        return true;
    }

    bool at_end() const { return position_ >= static_cast<int32_t>(text_.size()); }

    // The given byte, and another behind it.
    bool take(char wanted) {
        if (at_end() || byte(position_) != wanted) return false;
        ++position_;
        return !at_end();
    }

    // Between two fields of a date: the separator may be missing behind the first one's blanks, a further byte may not.
    bool next_date_field(char separator) {
        if (at_end()) return false;
        if (separator != '\0' && byte(position_) == separator) ++position_;
        return !at_end();
    }

    int32_t position() const { return position_; }

  private:
    char byte(int32_t at) const { return text_[static_cast<size_t>(at)]; }

    std::string_view text_;
    int32_t position_;
};

bool read_fields(std::string_view text, DateAndTime& value) {
    constexpr size_t kSeparatorAt = 4;
    if (text.size() <= kSeparatorAt) return false;
    const char fifth = text[kSeparatorAt];
    if (!is_digit(fifth) && !kSeparators.have(fifth)) return false;
    const char separator = is_digit(fifth) ? '\0' : fifth;

    FieldReader reader(text, 0);
    if (!reader.number(separator, 4, value.year) || !reader.next_date_field(separator)) return false;
    if (!reader.number(separator, 2, value.month) || !reader.next_date_field(separator)) return false;
    if (!reader.number(' ', 2, value.day)) return false;
    return reader.at_end() || (reader.take(' ') && read_time_of_day(text, reader.position(), value.time));
}

// ---- Eight bytes at a time ------------------------------------------------------------------------------------------------

// Eight bytes that hold digits where the pattern has a 0, and the pattern's own byte elsewhere. The number that two
// neighbouring digits make stands in the byte of the first.
class Block {
  public:
    Block(const char* text, uint64_t pattern, uint64_t limits) {
        std::memcpy(&pairs_, text, sizeof pairs_);
        pairs_ ^= pattern;
        // Added to a byte, its limit carries into the high bit when a digit is above 9 or another byte differs.
        fits_ = (((pairs_ + limits) | pairs_) & 0x8080808080808080) == 0;
        pairs_ = pairs_ * 10 + (pairs_ >> 8);
    }

    bool fits() const { return fits_; }
    int32_t pair(int first) const { return static_cast<int32_t>(pairs_ >> (8 * first) & 0xFF); }

  private:
    static_assert(std::endian::native == std::endian::little);

    uint64_t pairs_;
    bool fits_;
};

constexpr uint64_t pattern_of(std::string_view text) {
    uint64_t bytes = 0;
    for (size_t i = 8; i-- > 0;) bytes = bytes << 8 | static_cast<uint8_t>(text[i]);
    return bytes;
}

constexpr uint64_t limits_of(uint64_t pattern) {
    uint64_t limits = 0;
    for (int i = 0; i < 64; i += 8) limits |= uint64_t{(pattern >> i & 0xFF) == '0' ? 0x76u : 0x7Fu} << i;
    return limits;
}

constexpr uint64_t kDate =
    pattern_of({"0000\0"
                "00\0",
                8});  // the separator goes to bytes 4 and 7
constexpr uint64_t kDateLimits = limits_of(kDate);
constexpr uint64_t kTime = pattern_of("00:00:00");
constexpr uint64_t kTimeLimits = limits_of(kTime);

// Answers the bytes read: 10, 19, or 0 for a text of another form.
int32_t read_common(std::string_view text, DateAndTime& value) {
    if (text.size() != 10 && text.size() < 19) return 0;
    const char* const bytes = text.data();
    const char separator = bytes[4];
    const Block date(bytes, kDate | uint64_t{static_cast<uint8_t>(separator)} * 0x0100000100000000, kDateLimits);
    if (!date.fits() || !kSeparators.have(separator) || !is_digit(bytes[8]) || !is_digit(bytes[9])) return 0;
    value.year = date.pair(0) * 100 + date.pair(2);
    value.month = date.pair(5);
    value.day = (bytes[8] - '0') * 10 + (bytes[9] - '0');
    if (text.size() == 10) return 10;
    const Block time(bytes + 11, kTime, kTimeLimits);
    if (bytes[10] != ' ' || !time.fits()) return 0;
    value.time = {time.pair(0), time.pair(3), time.pair(6), 0};
    return 19;
}

}  // namespace

bool read_date_field(std::string_view text, int32_t position, char stop, int32_t max_digits, DateField& field) {
    const auto length = static_cast<int32_t>(text.size());
    const auto byte = [&](int32_t at) { return text[static_cast<size_t>(at)]; };
    int32_t at = position;
    const auto skip_blanks = [&] {
        while (at < length && byte(at) == ' ') ++at;
    };

    skip_blanks();
    if (at >= length || max_digits < 1) return false;
    field.begin = at;
    field.digits = 0;
    for (; at < length && field.digits < max_digits && is_digit(byte(at)); ++at) ++field.digits;
    if (field.digits == 0) return false;
    if (at < length && field.digits < max_digits && byte(at) != stop) {
        if (byte(at) != ' ') return false;
        skip_blanks();
        if (at < length && byte(at) != stop && !is_digit(byte(at))) return false;
    }
    field.end = at;
    return true;
}

bool read_time_of_day(std::string_view text, int32_t position, TimeOfDay& time) {
    FieldReader reader(text, position);
    if (!reader.number(':', 2, time.hour) || !reader.take(':')) return false;
    if (!reader.number(':', 2, time.minute)) return false;
    if (reader.at_end()) return in_range(time);
    if (!reader.take(':') || !reader.number('.', 2, time.second)) return false;
    if (reader.at_end()) return in_range(time);
    return reader.take('.') && reader.nanoseconds(time.fraction) && in_range(time);
}

Code read_date_by_fields(std::string_view text, qztime& out) {
    DateAndTime value;
    return read_fields(text, value) ? encode(value, out) : kInvalid;
}

Code read_date(std::string_view text, qztime& out) {
    DateAndTime value;
    const int32_t position = read_common(text, value);
    if (position == 0) return read_date_by_fields(text, out);
    if (!in_range(value.time)) return kInvalid;
    if (static_cast<size_t>(position) < text.size()) {
        FieldReader reader(text, position);
        if (!reader.take('.') || !reader.nanoseconds(value.time.fraction)) return kInvalid;
    }
    return encode(value, out);
}

}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT int32_t ifun_parse_date(const char* text, int32_t length, qztime* out) {
    if (length < 0) return EC_DATE_TEXT_INVALID;
    return read_date({text, static_cast<size_t>(length)}, *out).value;
}

BIFUN_EXPORT int32_t ifun_parse_date_field(const char* text, int32_t length, int32_t position, char* buffer, char stop,
                                           int32_t max_digits) {
    if (position < 0 || position >= length) return -1;
    DateField field;
    if (!read_date_field({text, static_cast<size_t>(length)}, position, stop, max_digits, field)) return -1;
    std::copy_n(text + field.begin, field.digits, buffer);
    buffer[field.digits] = '\0';
    return field.end;
}

BIFUN_EXPORT int32_t ifun_parse_time_part(const char* text, int32_t length, int32_t position, int32_t* hour, int32_t* minute,
                                          int32_t* second, int32_t* fraction) {
    if (position < 0 || position >= length) return 0;
    TimeOfDay time;
    if (!read_time_of_day({text, static_cast<size_t>(length)}, position, time)) return 0;
    *hour = time.hour, *minute = time.minute, *second = time.second, *fraction = time.fraction;
    return 1;
}
