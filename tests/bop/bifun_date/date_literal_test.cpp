// ifun_parse_date and the two readers below it.
#include "bop/bifun_date/date_literal.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <memory>
#include <string>

#include "qzbifun/codes.h"
#include "qzbifun/date_parts.h"
#include "tests/bop/bifun_date/dates.h"
#include "tests/support/batch.h"
#include "tests/support/random_value.h"
#include "tests/support/test_seed.h"

namespace {

using dates::date;
using dates::moment;

// A copy of exactly the text's length, so that a read behind it is seen.
class ExactText {
  public:
    explicit ExactText(const std::string& text) : bytes_(new char[text.size()]), length_(static_cast<int32_t>(text.size())) {
        text.copy(bytes_.get(), text.size());
    }
    const char* data() const { return bytes_.get(); }
    int32_t length() const { return length_; }

  private:
    std::unique_ptr<char[]> bytes_;
    int32_t length_;
};

const qztime kUntouched = moment(-1, 77, 78, 79, 80, 81, 82, 83);

void reads(const std::string& text, const qztime& expected) {
    const ExactText copy(text);
    qztime value = kUntouched;
    EXPECT_EQ(ifun_parse_date(copy.data(), copy.length(), &value), 0) << text;
    EXPECT_EQ(value, expected) << text;
}

void fails(const std::string& text, int32_t code = EC_DATE_TEXT_INVALID) {
    const ExactText copy(text);
    qztime value = kUntouched;
    EXPECT_EQ(ifun_parse_date(copy.data(), copy.length(), &value), code) << text;
    EXPECT_EQ(value, kUntouched) << text;
}

TEST(DateLiteral, ReadsDatesWithAndWithoutSeparators) {
    reads("20240229", date(2024, 2, 29));
    reads("2024-02-29", date(2024, 2, 29));
    reads("2024/02/29", date(2024, 2, 29));
    reads("2024.2.9", date(2024, 2, 9));
    reads("2024@02@29 10:30", moment(2024, 2, 29, 10, 30, 0));
    for (const char separator : std::string("-/.@#$%*&")) {
        const std::string s(1, separator);
        reads("2024" + s + "12" + s + "31", date(2024, 12, 31));
        reads("2024" + s + "1" + s + "2 3:4:5", moment(2024, 1, 2, 3, 4, 5));
    }
    for (int byte = 0; byte < 256; ++byte) {
        const std::string s(1, static_cast<char>(byte));
        const bool known = byte != 0 && std::string("-/.@#$%*&").find(s) != std::string::npos;
        if (!known) fails("2024" + s + "12" + s + "31");
    }
}

TEST(DateLiteral, TakesTheSeparatorFromTheFifthByte) {
    fails("2024-02/29");
    fails("123-01-02");
    fails("12345-1-2");
    fails(" 2024-01-02");
    reads("24-1-2", date(24, 1, 2));  // the fifth byte is the second separator
    fails("24/1-2");
    fails("1-1-2");  // the fifth byte is the day
    fails("+2024-01-02");
    fails("-2024-01-02");
}

TEST(DateLiteral, TakesBlanksInFrontOfFieldsAndBehindShortOnes) {
    reads("2024- 2- 9", date(2024, 2, 9));
    reads("2024-2 -9", date(2024, 2, 9));
    reads("2024-02 09", date(2024, 2, 9));
    reads("2024-2  9", date(2024, 2, 9));
    reads("20242 9", date(2024, 2, 9));
}

TEST(DateLiteral, NeedsAllThreeFields) {
    for (const char* text : {"", "2", "2024", "2024-", "2024-1", "2024-1-", "2024-01-", "2024-01-  ", "20241", "202412",
                             "2024----", "2024-a-1", "2024-1-a", "abcd-1-1", "2024-1-1a", "2024-1-1-"}) {
        fails(text);
    }
    qztime value = kUntouched;
    EXPECT_EQ(ifun_parse_date("2024-02-29", -1, &value), EC_DATE_TEXT_INVALID);
    EXPECT_EQ(ifun_parse_date("2024-02-29", std::numeric_limits<int32_t>::min(), &value), EC_DATE_TEXT_INVALID);
    EXPECT_EQ(value, kUntouched);
}

TEST(DateLiteral, HoldsTheFieldsAgainstTheCalendar) {
    fails("0000-01-02");
    reads("0001-01-01", date(1, 1, 1));
    reads("9999-12-31", date(9999, 12, 31));
    fails("2024-13-01");
    fails("2024-02-30");
    fails("2023-02-29");
    reads("1500-02-29", date(1500, 2, 29));
    fails("1900-02-29");
    fails("2024-04-31");
    fails("2024-12-32");
    // Zeros pass the reader and fail in the calendar, which has a code of its own.
    fails("2024-00-10", EC_DATE_VALUE_INVALID);
    fails("2024-10-00", EC_DATE_VALUE_INVALID);
    fails("20240010", EC_DATE_VALUE_INVALID);
    fails("2024-00-10 10:30:15", EC_DATE_VALUE_INVALID);
    fails("2024-00-10 24:30:15");
}

TEST(DateLiteral, MovesADateOutOfTheGap) {
    reads("1582-10-10", date(1582, 10, 15));
    reads("1582-10-05", date(1582, 10, 15));
    reads("15821014", date(1582, 10, 15));
    reads("1582-10-10 01:02:03", moment(1582, 10, 15, 1, 2, 3));
    reads("1582-10-04", date(1582, 10, 4));
    reads("1582-10-15", date(1582, 10, 15));
}

TEST(DateLiteral, ReadsTimes) {
    fails("2024-01-02 ");
    fails("2024-01-02   ");
    fails("2024-01-02 10");
    fails("2024-01-02 10:");
    reads("2024-01-02 10:30", moment(2024, 1, 2, 10, 30, 0));
    fails("2024-01-02 10:30:");
    reads("2024-01-02 10:30:15", moment(2024, 1, 2, 10, 30, 15));
    fails("2024-01-02 10:30:15.");
    reads("2024-01-02 10:30:15.5", moment(2024, 1, 2, 10, 30, 15, 500000000));
    reads("2024-01-02 10:30:15.123456789012", moment(2024, 1, 2, 10, 30, 15, 123456789));
    reads("2024-01-02 10:30:15.123456789999", moment(2024, 1, 2, 10, 30, 15, 123456789));
    reads("2024-01-02 10:30:15.000000001", moment(2024, 1, 2, 10, 30, 15, 1));
    reads("2024-01-02   10:30:15", moment(2024, 1, 2, 10, 30, 15));
    reads("2024-01-02  1: 2: 3. 4", moment(2024, 1, 2, 1, 2, 3, 400000000));
    reads("20240102 1:2:3", moment(2024, 1, 2, 1, 2, 3));
    fails("2024-01-02T10:30:15");
    fails("2024-01-0210:30:15");
    fails("2024-01-02 10-30");
    fails("2024-01-02 10:30 ");
    reads("2024-01-02 10:3 ", moment(2024, 1, 2, 10, 3, 0));
    fails("2024-01-02 10:30:15 .5");
    reads("2024-01-02 10:30:5 .5", moment(2024, 1, 2, 10, 30, 5, 500000000));
    fails("2024-01-02 10:30:15x");
    fails("2024-01-02 10:30:15 ");
    fails("2024-01-02 10:30:1x");
    fails("2024-01-02 103015");
    reads("2024-01-02 00:00:00", date(2024, 1, 2));
    reads("2024-01-02 23:59:59.999999999", moment(2024, 1, 2, 23, 59, 59, 999999999));
    for (const char* time : {"24:00:00", "23:60:00", "23:59:60", "99:00", "24:00", "23:60"})
        fails("2024-01-02 " + std::string(time));
}

// What stands behind the fraction is not looked at, if only it begins with blanks and a digit, or with a zero byte.
TEST(DateLiteral, StopsLookingBehindTheFraction) {
    reads("2024-01-02 10:30:15.12 34", moment(2024, 1, 2, 10, 30, 15, 120000000));
    reads("2024-01-02 10:30:15.12 3x", moment(2024, 1, 2, 10, 30, 15, 120000000));
    reads("2024-01-02 10:30:15.12   ", moment(2024, 1, 2, 10, 30, 15, 120000000));
    fails("2024-01-02 10:30:15.12 x");
    fails("2024-01-02 10:30:15.12x");
    fails("2024-01-02 10:30:15.12-08:00");
    using namespace std::string_literals;
    reads("2024-01-02 10:30:15.12\0x"s, moment(2024, 1, 2, 10, 30, 15, 120000000));
    fails("2024-01-02 10:30:15.\0"s);
    fails("2024-01-02 10:30:15\0"s);
    // Without a separator there is none to be skipped.
    fails(" 2024\0002\00029"s);
    fails("20242\0009"s);
    fails("2024\00002\00029"s);
}

// The two ways of reading come to the same, whatever is written over a literal.
TEST(DateLiteral, ReadsCommonFormsAsAllOthers) {
#ifdef NDEBUG
    constexpr int kTexts = 3000000;
#else
    constexpr int kTexts = 150000;
#endif
    static const std::string kForms[] = {"2024-02-29",          "1582-10-10",          "0001-01-01",
                                         "9999-12-31 23:59:59", "2024-02-29 10:30:15", "2024-02-29 10:30:15.123456789",
                                         "20240229 10:30:15",   "2024-2-9 1:2:3.4 5",  "2024-00-10"};
    static const std::string kBytes = std::string("0123456789 -/.:T") + '\0' + '\x7f' + '\xb0' + '\xff';
    const uint32_t seed = support::test_seed();
    support::Random random(seed);
    int read = 0;
    for (int i = 0; i < kTexts; ++i) {
        std::string text = kForms[random.below(std::size(kForms))];
        for (uint32_t changes = random.below(4); changes > 0; --changes) {
            text[random.below(static_cast<uint32_t>(text.size()))] = kBytes[random.below(static_cast<uint32_t>(kBytes.size()))];
        }
        if (random.chance(10)) text.resize(random.below(static_cast<uint32_t>(text.size()) + 1));
        qztime quick = kUntouched, slow = kUntouched;
        const int32_t code = bifun::read_date(text, quick).value;
        ASSERT_EQ(code, bifun::read_date_by_fields(text, slow).value) << text << ", seed " << seed;
        ASSERT_EQ(quick, slow) << text << ", seed " << seed;
        read += code == 0;
    }
    EXPECT_GT(read, kTexts / 10);
    EXPECT_LT(read, kTexts);
}

// ---- The readers ----------------------------------------------------------------------------------------------------------

struct FieldAnswer {
    int32_t position;
    std::string digits;
    bool operator==(const FieldAnswer&) const = default;
};
void PrintTo(const FieldAnswer& answer, std::ostream* out) { *out << answer.position << " '" << answer.digits << "'"; }

FieldAnswer field(const std::string& text, int32_t position, char stop, int32_t max_digits) {
    const ExactText copy(text);
    const std::unique_ptr<char[]> buffer(new char[static_cast<size_t>(std::max(max_digits, 0)) + 1]);
    const int32_t end = ifun_parse_date_field(copy.data(), copy.length(), position, buffer.get(), stop, max_digits);
    return {end, end < 0 ? "" : buffer.get()};
}

const FieldAnswer kNone{-1, ""};

TEST(DateField, StopsAtTheEndTheCountOrTheStop) {
    EXPECT_EQ(field("12", 0, '-', 4), (FieldAnswer{2, "12"}));
    EXPECT_EQ(field("2024-1", 0, '-', 4), (FieldAnswer{4, "2024"}));
    EXPECT_EQ(field("20245", 0, '-', 4), (FieldAnswer{4, "2024"}));
    EXPECT_EQ(field("20x", 0, '-', 2), (FieldAnswer{2, "20"}));
    EXPECT_EQ(field("12-3", 0, '-', 4), (FieldAnswer{2, "12"}));
    EXPECT_EQ(field("a12-3", 1, '-', 4), (FieldAnswer{3, "12"}));
    EXPECT_EQ(field("12/3", 0, '-', 4), kNone);
}

TEST(DateField, SkipsBlanks) {
    EXPECT_EQ(field("  12", 0, '-', 4), (FieldAnswer{4, "12"}));
    EXPECT_EQ(field("12  -3", 0, '-', 4), (FieldAnswer{4, "12"}));
    EXPECT_EQ(field("12  34", 0, '-', 4), (FieldAnswer{4, "12"}));
    EXPECT_EQ(field("12   ", 0, '-', 4), (FieldAnswer{5, "12"}));
    EXPECT_EQ(field("12  x", 0, '-', 4), kNone);
    EXPECT_EQ(field("12 3", 0, ' ', 4), (FieldAnswer{2, "12"}));  // a blank that stops stays
    EXPECT_EQ(field("\t12", 0, '-', 4), kNone);
}

TEST(DateField, NeedsADigit) {
    EXPECT_EQ(field("", 0, '-', 4), kNone);
    EXPECT_EQ(field("   ", 0, '-', 4), kNone);
    EXPECT_EQ(field("-12", 0, '-', 4), kNone);
    EXPECT_EQ(field("12", 2, '-', 4), kNone);
    EXPECT_EQ(field("12", 9, '-', 4), kNone);
    EXPECT_EQ(field("12", -1, '-', 4), kNone);
    EXPECT_EQ(field("12", 0, '-', 0), kNone);
    EXPECT_EQ(field("12", 0, '-', -3), kNone);
    EXPECT_EQ(ifun_parse_date_field("12", -5, 0, nullptr, '-', 4), -1);
}

TEST(DateField, TakesAZeroByteForTheStopThatIsNone) {
    EXPECT_EQ(field(std::string("12\0x", 4), 0, '\0', 4), (FieldAnswer{2, "12"}));
    EXPECT_EQ(field(std::string("12\0x", 4), 0, '-', 4), kNone);
}

struct Time {
    int32_t hour = -7, minute = -7, second = -7, fraction = -7;
    bool operator==(const Time&) const = default;
};

bool time_part(const std::string& text, int32_t position, Time& time) {
    const ExactText copy(text);
    const int32_t answer =
        ifun_parse_time_part(copy.data(), copy.length(), position, &time.hour, &time.minute, &time.second, &time.fraction);
    EXPECT_TRUE(answer == 0 || answer == 1);
    return answer == 1;
}

TEST(TimePart, ReadsFromThePositionOn) {
    Time time;
    EXPECT_TRUE(time_part("10:30", 0, time));
    EXPECT_EQ(time, (Time{10, 30, 0, 0}));
    EXPECT_TRUE(time_part("xx 1:2:3", 2, time));
    EXPECT_EQ(time, (Time{1, 2, 3, 0}));
    EXPECT_TRUE(time_part("10:30:15.25", 0, time));
    EXPECT_EQ(time, (Time{10, 30, 15, 250000000}));
    EXPECT_TRUE(time_part("10:30:15.0000000019", 0, time));
    EXPECT_EQ(time, (Time{10, 30, 15, 1}));
}

TEST(TimePart, WritesNothingWhenItFails) {
    for (const char* text :
         {"", "10", "10:", "24:00", "10:60", "10:30:60", "10:30:", "10:30:15.", "10:30:15,5", "x", "10.30"}) {
        Time time;
        EXPECT_FALSE(time_part(text, 0, time)) << text;
        EXPECT_EQ(time, Time()) << text;
    }
    Time time;
    EXPECT_FALSE(time_part("10:30", 5, time));
    EXPECT_FALSE(time_part("10:30", -1, time));
    EXPECT_EQ(time, Time());
}

}  // namespace
