#include "qzhost/number_format.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qzbifun/codes.h"
#include "qzhost/decimal.h"
#include "support/test_seed.h"
#include "tests/host/documented_examples.h"
#include "tests/host/oracle_script.h"

namespace {

using qzbifun_test::documented_examples;
using qzbifun_test::oracle_lines;
using qzbifun_test::split;
using qzbifun_test::without_marks;

constexpr int kOracleCount = 30000;
constexpr int kTextSize = XDEC_FORMATTED_BYTES;

#ifdef NDEBUG
constexpr int kRandomCount = 2'000'000;
#else
constexpr int kRandomCount = 200'000;
#endif

xdec decimal(std::string_view text) {
    xdec number;
    EXPECT_EQ(xdec_from_char(&number, text.data(), static_cast<uint32_t>(text.size())), 0) << text;
    return number;
}

std::string plain_text(const xdec& number) {
    char text[XDEC_TEXT_SIZE];
    uint32_t length = 0;
    EXPECT_EQ(xdec_to_char2(&number, text, sizeof text, &length), 0);
    return {text, length};
}

struct Parsed {
    int32_t code;
    xdec_number_format format;
};

// Parses out of blocks of exactly the given lengths, with nothing behind them.
Parsed parse(std::string_view format, std::string_view nls = {}) {
    const std::vector<char> format_block(format.begin(), format.end()), nls_block(nls.begin(), nls.end());
    Parsed parsed;
    const auto format_length = static_cast<uint32_t>(format.size());
    parsed.code = nls.empty() ? xdec_to_char_fmt_parse(nullptr, format_block.data(), format_length, &parsed.format)
                              : xdec_to_char_fmt_parse_with_nls(nullptr, format_block.data(), format_length, nls_block.data(),
                                                                static_cast<uint32_t>(nls.size()), &parsed.format);
    return parsed;
}

// Writes into a block of exactly the size that is promised to be enough.
std::string write(const xdec& number, const xdec_number_format& format) {
    const std::vector<char> fence(kTextSize, '\x7F');
    std::vector<char> buffer = fence;
    EXPECT_EQ(xdec_to_char_with_fmt_low(nullptr, &number, buffer.data(), &format), 0);
    const void* const nul = std::memchr(buffer.data(), '\0', buffer.size());
    EXPECT_NE(nul, nullptr);
    return nul == nullptr ? std::string() : std::string(buffer.data());
}

std::string write(std::string_view number, std::string_view format) {
    const Parsed parsed = parse(format);
    EXPECT_EQ(parsed.code, 0) << format;
    return parsed.code == 0 ? write(decimal(number), parsed.format) : "";
}

struct Reading {
    int32_t code;
    xdec number;
};

Reading read(std::string_view text, const xdec_number_format& format) {
    const std::vector<char> block(text.begin(), text.end());
    Reading reading;
    std::memset(&reading.number, 0xAB, sizeof reading.number);
    reading.code =
        char_to_dec_with_fmt_low(nullptr, block.data(), static_cast<uint32_t>(text.size()), &format, &reading.number);
    EXPECT_TRUE(xdec_is_canonical(&reading.number)) << text;
    if (reading.code != 0) {
        EXPECT_LT(reading.code, 0);
        EXPECT_EQ(reading.number.sign, XDEC_SIGN_ZERO) << text;
    }
    return reading;
}

Reading read(std::string_view text, std::string_view format) {
    const Parsed parsed = parse(format);
    EXPECT_EQ(parsed.code, 0) << format;
    return read(text, parsed.format);
}

void expect_reads(std::string_view text, std::string_view format, std::string_view number) {
    const Reading reading = read(text, format);
    ASSERT_EQ(reading.code, 0) << text << " by " << format;
    const xdec expected = decimal(number);
    EXPECT_EQ(xdec_cmp(&reading.number, &expected), 0) << text << " by " << format << " gave " << plain_text(reading.number);
}

void expect_refuses(std::string_view text, std::string_view format, int32_t code = EC_NUMBER_TEXT_INVALID) {
    EXPECT_EQ(read(text, format).code, code) << "'" << text << "' by " << format;
}

void expect_bad(std::string_view format, int32_t code = EC_INVALID_ARGUMENT) { EXPECT_EQ(parse(format).code, code) << format; }

int32_t code_of(std::string_view name) {
    return name == "EC_NUMBER_TEXT_INVALID" ? EC_NUMBER_TEXT_INVALID : name == "EC_DATA_OVERFLOW" ? EC_DATA_OVERFLOW : 0;
}

// ---- The examples of docs/number-formats.md ---------------------------------------------------------------------------------

TEST(NumberFormat, WritesTheDocumentedTexts) {
    const auto rows = documented_examples("number-formats.md", "| Number | Format | Text |");
    EXPECT_GT(rows.size(), 80u);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 3u);
        EXPECT_EQ("'" + write(row[0], row[1]) + "'", row[2]) << row[0] << " by " << row[1];
    }
}

TEST(NumberFormat, ReadsTheDocumentedTexts) {
    const auto rows = documented_examples("number-formats.md", "| Text | Format | Number |");
    EXPECT_GT(rows.size(), 40u);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 3u);
        const std::string text = without_marks(row[0], '\'');
        if (row[2].starts_with("EC_")) {
            ASSERT_LT(code_of(row[2]), 0);
            expect_refuses(text, row[1], code_of(row[2]));
        } else {
            expect_reads(text, row[1], row[2]);
        }
    }
}

TEST(NumberFormat, WritesTheDocumentedTextsOfNlsParameters) {
    const auto rows = documented_examples("number-formats.md", "| Number | Format | NLS parameters | Text |");
    EXPECT_GT(rows.size(), 10u);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 4u);
        const Parsed parsed = parse(row[1], row[2]);
        ASSERT_EQ(parsed.code, 0) << row[2];
        const std::string text = write(decimal(row[0]), parsed.format);
        EXPECT_EQ("'" + text + "'", row[3]) << row[0] << " by " << row[1] << " with " << row[2];
        const Reading reading = read(text, parsed.format);
        const xdec number = decimal(row[0]);
        EXPECT_EQ(reading.code, 0) << text;
        EXPECT_EQ(xdec_cmp(&reading.number, &number), 0) << text;
    }
}

// ---- Both ways against Python -----------------------------------------------------------------------------------------------

TEST(NumberFormat, WritesAndReadsBackWhatPythonDoes) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE(seed);
    const auto lines = oracle_lines("number_format_oracle.py", std::to_string(seed) + " " + std::to_string(kOracleCount));
    ASSERT_EQ(lines.size(), size_t{kOracleCount});
    for (const std::string& line : lines) {
        const auto fields = split(line, '\t');
        ASSERT_EQ(fields.size(), 5u) << line;
        const Parsed parsed = parse(fields[1], fields[2]);
        ASSERT_EQ(parsed.code, 0) << line;
        const std::string text = write(decimal(fields[0]), parsed.format);
        ASSERT_EQ(text, fields[3]) << line;
        const Reading reading = read(text, parsed.format);
        if (fields[4] == "none") {
            ASSERT_EQ(reading.code, EC_NUMBER_TEXT_INVALID) << line;
        } else {
            const xdec expected = decimal(fields[4]);
            ASSERT_EQ(reading.code, 0) << line;
            ASSERT_EQ(xdec_cmp(&reading.number, &expected), 0) << line << " gave " << plain_text(reading.number);
        }
    }
}

// ---- Formats ----------------------------------------------------------------------------------------------------------------

const std::vector<std::string> kElements = {"9",  "0",    ".",  ",",  "D",  "G",   "$",   "L", "C", "U", "S", "MI",
                                            "PR", "EEEE", "RN", "rn", "TM", "TM9", "TME", "V", "X", "x", "B", "FM"};

TEST(NumberFormat, TakesEveryElementAloneOrNot) {
    const std::vector<std::string> alone = {"9", "0", "RN", "rn", "TM", "TM9", "TME", "X", "x"};
    for (const std::string& element : kElements) {
        const bool good = std::find(alone.begin(), alone.end(), element) != alone.end();
        EXPECT_EQ(parse(element).code, good ? 0 : EC_INVALID_ARGUMENT) << element;
    }
}

// Every pair of elements that is a format. What they write of 5 was put together by hand from the table of elements.
TEST(NumberFormat, TakesThePairsOfElementsThatAreFormats) {
    const std::vector<std::pair<std::string, std::string>> good = {
        {"99", "  5"},          {"90", "  5"},          {"9.", " 5."},          {"9D", " 5."},       {"9$", " $5"},
        {"9L", "          5$"}, {"9C", "     5USD"},    {"9U", "          5$"}, {"9S", "5+"},        {"9MI", "5 "},
        {"9PR", " 5 "},         {"9EEEE", "  5E+00"},   {"9V", " 5"},           {"9B", " 5"},        {"09", " 05"},
        {"00", " 05"},          {"0.", " 5."},          {"0D", " 5."},          {"0$", " $5"},       {"0L", "          5$"},
        {"0C", "     5USD"},    {"0U", "          5$"}, {"0S", "5+"},           {"0MI", "5 "},       {"0PR", " 5 "},
        {"0EEEE", "  5E+00"},   {"0V", " 5"},           {"0X", "05"},           {"0x", "05"},        {"0B", " 5"},
        {".9", "###"},          {".0", "###"},          {"D9", "###"},          {"D0", "###"},       {"$9", " $5"},
        {"$0", " $5"},          {"L9", "          $5"}, {"L0", "          $5"}, {"C9", "     USD5"}, {"C0", "     USD5"},
        {"U9", "          $5"}, {"U0", "          $5"}, {"S9", "+5"},           {"S0", "+5"},        {"V9", "##"},
        {"V0", "##"},           {"XX", "  5"},          {"Xx", "  5"},          {"xX", "  5"},       {"xx", "  5"},
        {"B9", " 5"},           {"B0", " 5"},           {"FM9", "5"},           {"FM0", "5"},        {"FMRN", "V"},
        {"FMrn", "v"},          {"FMX", "5"},           {"FMx", "5"},           {"TM9", "5"}};
    size_t found = 0;
    for (const std::string& first : kElements) {
        for (const std::string& second : kElements) {
            const std::string pair = first + second;
            const auto entry = std::find_if(good.begin(), good.end(), [&pair](const auto& e) { return e.first == pair; });
            if (parse(pair).code != 0) {
                EXPECT_EQ(entry, good.end()) << pair;
                continue;
            }
            ++found;
            if (entry == good.end()) {
                ADD_FAILURE() << pair << " is taken for a format";
                continue;
            }
            EXPECT_EQ(write("5", pair), entry->second) << pair;
        }
    }
    EXPECT_EQ(found, good.size());
}

TEST(NumberFormat, RefusesWhatIsNoFormat) {
    expect_bad("", EC_NUMBER_FORMAT_EMPTY);
    for (const char* format : {" ",      " 9",     "9 ",     "9 9",    "A",
                               "9A",     "YYYY",   "9-",     "-9",     "#",
                               "1",      "9..9",   "9.9.9",  "9D9.9",  "9V9.9",
                               "9.9V9",  "9V9V9",  "9,9D9",  "9G9.9",  "9.9,9",
                               "9D9G9",  "9V9,9",  ",99",    "9,,9",   "9,",
                               "9,.9",   "9,S",    "9,$9",   "$,9",    "SS9",
                               "S9S",    "S9MI",   "S9PR",   "9MIS",   "9SMI",
                               "9S9",    "9MI9",   "MI9",    "PR9",    "9PR9",
                               "$9$",    "$L9",    "L9L",    "LC9",    "9L9",
                               "9LC",    "LS9",    "$S9",    "9SL",    "9MIL",
                               "9MI$",   "9SB",    "BB9",    "B9B",    "FMFM9",
                               "9FM",    "BFM9",   "EEEE",   ".9EEEE", "9E",
                               "9EE",    "9EEE",   "9EEEEE", "9EEEE9", "9,9EEEE",
                               "B9EEEE", "9VEEEE", "9EEEEV", "TM0",    "TM99",
                               "TMM",    "TMEE",   "FMTM",   "9TM",    "STM",
                               "TMS",    "$TM",    "BTM",    "T",      "RN9",
                               "9RN",    "SRN",    "RNS",    "BRN",    "$RN",
                               "RNRN",   "R",      "RR",     "X9",     "9X",
                               "90X",    "X0",     "SX",     "XS",     "$X",
                               "BX",     "0,0X",   "X.",     ".X",     "0.X",
                               "XMI",    "M",      "P",      "9M",     "9P",
                               "V",      "S",      "B",      "$",      "SV",
                               "S.",     "FM",     "FMS",    "L.",     "99999999999999999999X"}) {
        expect_bad(format);
    }
    expect_bad(
        std::string_view("9\0"
                         "9",
                         3));
    expect_bad("9\xE2\x82\xAC");
}

TEST(NumberFormat, DoesNotMindTheCaseOfElements) {
    EXPECT_EQ(write("-1234.5", "fml9g999d99mi"), "$1,234.5-");
    EXPECT_EQ(write("1234.5", "s9.9eeee"), " +1.2E+03");
    EXPECT_EQ(write("-5", "b9pr"), "<5>");
    EXPECT_EQ(write("-5", "u9"), "         -$5");
    EXPECT_EQ(write("1.5", "9v9"), " 15");
    EXPECT_EQ(write("1.5", "tm9"), "1.5");
    EXPECT_EQ(write("1.5", "tme"), "1.5E+00");
    EXPECT_EQ(write("4", "Rn"), "             IV");
    EXPECT_EQ(write("4", "rN"), "             iv");
    EXPECT_EQ(write("255", "Xx"), " FF");
    EXPECT_EQ(write("255", "0xX"), "0ff");
}

// ---- Limits -----------------------------------------------------------------------------------------------------------------

TEST(NumberFormat, TakesSeventyFiveBytes) {
    const std::string digits(XDEC_FORMAT_MAX_BYTES, '9');
    const std::string number(44, '7');
    EXPECT_EQ(write(number, digits), std::string(32, ' ') + number);
    expect_reads(number, digits, number);
    expect_bad(digits + "9");
    expect_bad(std::string(70000, '9'));

    const std::string widest = "L" + std::string(74, '9');
    EXPECT_EQ(write("5", widest).size(), 85u);
    EXPECT_EQ(write("1E100", widest), std::string(85, '#'));
    EXPECT_EQ(write("-1E73", "L" + std::string(74, '9')), std::string(9, ' ') + "-$1" + std::string(73, '0'));

    const std::string exponent = "U9." + std::string(66, '9') + "EEEEPR";
    ASSERT_EQ(exponent.size(), size_t{XDEC_FORMAT_MAX_BYTES});
    EXPECT_EQ(write("-1", exponent), std::string(10, ' ') + "<$1." + std::string(66, '0') + "E+00>");

    const std::string zeros(XDEC_FORMAT_MAX_BYTES, '0');
    EXPECT_EQ(write("-1", zeros), "-" + std::string(74, '0') + "1");
    EXPECT_EQ(write("1", "." + std::string(74, '9')), std::string(76, '#'));
    EXPECT_EQ(write("1E-74", "." + std::string(74, '9')), " ." + std::string(73, '0') + "1");
    EXPECT_EQ(write("5E-75", "." + std::string(74, '9')), " ." + std::string(73, '0') + "1");
    EXPECT_EQ(write("4E-75", "." + std::string(74, '9')), " ." + std::string(74, '0'));
}

TEST(NumberFormat, SeparatesAnyNumberOfGroups) {
    std::string format = "9", text = "1";
    for (int i = 0; i < 37; ++i) {
        format += ",9";
        text += ",0";
    }
    ASSERT_EQ(format.size(), 75u);
    EXPECT_EQ(write("1E37", format), " " + text);
    expect_reads(text, format, "1E37");
    expect_reads("1" + std::string(37, '0'), format, "1E37");
    EXPECT_EQ(write("1E36", format), std::string(3, ' ') + text.substr(0, text.size() - 2));
    text[1] = '0';
    expect_refuses(text, format);

    // Separators on both sides of the 64th position.
    const std::string late = std::string(62, '9') + ",9,9,9,999";
    EXPECT_EQ(write("1234567", late), std::string(62, ' ') + "1,2,3,4,567");
    expect_reads("1,2,3,4,567", late, "1234567");
    expect_refuses("1,2,34,567", late);
}

TEST(NumberFormat, WritesAllTheDigitsOfADecimal) {
    const std::string forty = "1234567890123456789012345678901234567890";
    EXPECT_EQ(write(forty, "FM" + std::string(40, '9')), forty);
    EXPECT_EQ(write("-" + forty, "FM" + std::string(40, '9')), "-" + forty);
    EXPECT_EQ(write("0." + forty, "FM0." + std::string(39, '9') + "0"), "0." + forty);
    EXPECT_EQ(write(std::string(40, '9') + ".5", std::string(40, '9')), std::string(41, '#'));
    EXPECT_EQ(write(std::string(40, '9') + ".5", std::string(41, '9')), " 1" + std::string(40, '0'));
    EXPECT_EQ(write(std::string(40, '9') + ".4", std::string(41, '9')), "  " + std::string(40, '9'));
    EXPECT_EQ(write("1E125", "9EEEE"), " 1E+125");
    EXPECT_EQ(write("9.9E125", "9EEEE"), " 1E+126");
    EXPECT_EQ(write("1E-130", "9EEEE"), " 1E-130");
    EXPECT_EQ(write("1E-130", "TM"), "1E-130");
    EXPECT_EQ(write("9.9E125", "TM"), "9.9E+125");
    EXPECT_EQ(write("-1E62", "TM"), "-1" + std::string(62, '0'));
    EXPECT_EQ(write("-1E63", "TM"), "-1E+63");
    EXPECT_EQ(write("1E-63", "TM"), "." + std::string(62, '0') + "1");
    EXPECT_EQ(write("1E-64", "TM"), "1E-64");
}

TEST(NumberFormat, ReadsAsManyDigitsAsADecimalHas) {
    const std::string nines(75, '9');
    expect_reads(std::string(44, '7'), nines, std::string(44, '7'));
    expect_reads(std::string(44, '7') + "1", nines, std::string(44, '7') + "0");  // 43 digits, and rounded
    EXPECT_EQ(plain_text(read("12.30", "99.99").number), "12.30");
    EXPECT_EQ(plain_text(read("1230", "99V99").number), "12.30");
    expect_refuses("9.9E125", "9EEEE");
    expect_refuses("9E126", "9EEEE", EC_DATA_OVERFLOW);
    expect_reads("9E125", "9EEEE", "9E125");
    expect_reads("1E-200", "9EEEE", "0");
}

TEST(NumberFormat, ReadsNoHexadecimalNumberThatADecimalWouldRound) {
    const std::string format(75, 'X');
    expect_reads("FFFFFFFFFFFFFFFF", format, "18446744073709551615");
    expect_reads("2CD76FE086B93CE2F768A00B229FFFFFFFFF9C", format, std::string(43, '9') + "00");
    expect_reads("47BF19673DF52E37F2410011D0FFFFFFFFFFF", format, std::string(44, '9'));
    expect_refuses("2CD76FE086B93CE2F768A00B229FFFFFFFFFFF", format, EC_DATA_OVERFLOW);  // 45 nines
    expect_refuses(std::string(75, 'F'), format, EC_DATA_OVERFLOW);
    expect_reads(std::string(75, '0'), format, "0");
}

TEST(NumberFormat, IsReadUpToANul) {
    expect_reads(std::string_view("12\0"
                                  "9",
                                  4),
                 "99", "12");
    expect_refuses(std::string_view("\0"
                                    "12",
                                    3),
                   "99");
    expect_refuses("", "99");
    expect_refuses("   ", "99");
    expect_reads("", "B99", "0");
}

TEST(NumberFormat, ReadsAThousandBytes) {
    const std::string blanks(500, ' ');
    expect_reads(blanks + "12" + blanks, "99", "12");
    expect_refuses(std::string(1014, '1'), "99");
    expect_refuses(std::string(1014, '1'), "TM");
    expect_refuses(std::string(1014, 'M'), "RN");
    expect_refuses(std::string(1014, 'F'), "XX");
}

// ---- Every numeral ----------------------------------------------------------------------------------------------------------

TEST(NumberFormat, ReadsEveryRomanNumeralAndNoOther) {
    const xdec_number_format roman = parse("FMRN").format;
    std::vector<std::string> numerals;
    for (int64_t value = 1; value <= 3999; ++value) {
        xdec number;
        ASSERT_EQ(xdec_from_int64(&number, value, XDEC_SCALE_NONE), 0);
        numerals.push_back(write(number, roman));
        const Reading reading = read(numerals.back(), roman);
        ASSERT_EQ(reading.code, 0) << numerals.back();
        ASSERT_EQ(xdec_cmp(&reading.number, &number), 0) << numerals.back();
    }
    // Any word of up to six of the letters is read when it is one of them, and only then.
    std::sort(numerals.begin(), numerals.end());
    const std::string letters = "MDCLXVI";
    for (size_t length = 1; length <= 6; ++length) {
        std::vector<size_t> word(length);
        for (bool more = true; more;) {
            std::string text;
            for (const size_t letter : word) {
                text += letters[letter];
            }
            const bool known = std::binary_search(numerals.begin(), numerals.end(), text);
            ASSERT_EQ(read(text, roman).code == 0, known) << text;
            size_t i = 0;
            while (i < length && ++word[i] == letters.size()) {
                word[i++] = 0;
            }
            more = i < length;
        }
    }
}

// ---- NLS parameters ---------------------------------------------------------------------------------------------------------

void expect_bad_nls(std::string_view nls) {
    xdec_number_format format;
    const std::vector<char> block(nls.begin(), nls.end());
    EXPECT_EQ(xdec_to_char_fmt_parse_with_nls(nullptr, "L9D9", 4, block.data(), static_cast<uint32_t>(nls.size()), &format),
              EC_NLS_PARAMETER_INVALID)
        << nls;
}

TEST(NumberFormat, RefusesBadNlsParameters) {
    for (const char* nls : {"",
                            " ",
                            "x",
                            "NLS_CURRENCY",
                            "NLS_CURRENCY=",
                            "NLS_CURRENCY= ",
                            "NLS_CURRENCY 'x'",
                            "NLS_CURRENCY='x",
                            "NLS_CURRENCY='x''",
                            "NLS_CURRENCY=x'y'",
                            "='x'",
                            "NLS_CURRENCY='x' y",
                            "NLS_CURRENCY='x' NLS_CURRENCY='y'",
                            "NLS_DATE_LANGUAGE='x'",
                            "NLS_CURRENC='x'",
                            "NLS_CURRENCYY='x'",
                            "NLS_CURRENCY='x', NLS_DUAL_CURRENCY='y'",
                            "NLS_CURRENCY='12345678901'",
                            "NLS_CURRENCY='AusDollars1'",
                            "NLS_CURRENCY='AAAAAAAAAAA'",
                            "NLS_CURRENCY='1'",
                            "NLS_CURRENCY='-'",
                            "NLS_CURRENCY='#'",
                            "NLS_CURRENCY='<'",
                            "NLS_CURRENCY='.'",
                            "NLS_CURRENCY=' '",
                            "NLS_CURRENCY='\t'",
                            "NLS_CURRENCY=';' NLS_NUMERIC_CHARACTERS=';:'",
                            "NLS_DUAL_CURRENCY=','",
                            "NLS_NUMERIC_CHARACTERS=''",
                            "NLS_NUMERIC_CHARACTERS='.'",
                            "NLS_NUMERIC_CHARACTERS='.,;'",
                            "NLS_NUMERIC_CHARACTERS='..'",
                            "NLS_NUMERIC_CHARACTERS='.1'",
                            "NLS_NUMERIC_CHARACTERS='-.'",
                            "NLS_NUMERIC_CHARACTERS='.+'",
                            "NLS_NUMERIC_CHARACTERS='<.'",
                            "NLS_NUMERIC_CHARACTERS='.>'",
                            "NLS_NUMERIC_CHARACTERS='E.'",
                            "NLS_NUMERIC_CHARACTERS=' .'",
                            "NLS_NUMERIC_CHARACTERS='#.'",
                            "NLS_NUMERIC_CHARACTERS='$.'",
                            "NLS_NUMERIC_CHARACTERS='\xC2\xB7'",
                            "NLS_NUMERIC_CHARACTERS='.\t'",
                            "NLS_ISO_CURRENCY=''",
                            "NLS_ISO_CURRENCY='EU'",
                            "NLS_ISO_CURRENCY='E1R'",
                            "NLS_ISO_CURRENCY='ATLANTIS'"}) {
        expect_bad_nls(nls);
    }
    expect_bad_nls(std::string_view("NLS_CURRENCY='\0'", 16));
}

TEST(NumberFormat, TakesAHundredAndTwentyEightBytesOfNlsParameters) {
    const std::string parameter = "NLS_CURRENCY='EUR'";
    const std::string longest = parameter + std::string(XDEC_NLS_MAX_BYTES - parameter.size(), ' ');
    const Parsed parsed = parse("FML9", longest);
    ASSERT_EQ(parsed.code, 0);
    EXPECT_EQ(write(decimal("5"), parsed.format), "EUR5");
    expect_bad_nls(longest + " ");
    EXPECT_EQ(parse("FML9", "NLS_CURRENCY='" + std::string(114, 'x')).code, EC_NLS_PARAMETER_INVALID);
}

TEST(NumberFormat, ReportsABadFormatBeforeBadParameters) {
    xdec_number_format format;
    EXPECT_EQ(xdec_to_char_fmt_parse_with_nls(nullptr, "", 0, "x", 1, &format), EC_NUMBER_FORMAT_EMPTY);
    EXPECT_EQ(xdec_to_char_fmt_parse_with_nls(nullptr, "A", 1, "x", 1, &format), EC_INVALID_ARGUMENT);
}

TEST(NumberFormat, KnowsTheCurrenciesOfTerritories) {
    const auto code_of_territory = [](const std::string& name) {
        const Parsed parsed = parse("FMC9", "NLS_ISO_CURRENCY='" + name + "'");
        EXPECT_EQ(parsed.code, 0) << name;
        return write(decimal("1"), parsed.format).substr(0, 3);
    };
    EXPECT_EQ(code_of_territory("ALGERIA"), "DZD");  // the first and the last of the table, and some in the middle
    EXPECT_EQ(code_of_territory("VIETNAM"), "VND");
    EXPECT_EQ(code_of_territory("america"), "USD");
    EXPECT_EQ(code_of_territory("China"), "CNY");
    EXPECT_EQ(code_of_territory("HONG KONG"), "HKD");
    EXPECT_EQ(code_of_territory("THE NETHERLANDS"), "EUR");
}

// ---- The one-step services --------------------------------------------------------------------------------------------------

TEST(NumberFormat, WritesAndReadsInOneStep) {
    const xdec number = decimal("-1234.567");
    char text[kTextSize] = "x";
    EXPECT_EQ(xdec_to_char_with_fmt(nullptr, &number, text, "9,999.99", 8), 0);
    EXPECT_STREQ(text, "-1,234.57");
    EXPECT_EQ(xdec_to_char_with_nls(nullptr, &number, text, "9G999D99", 8, "NLS_NUMERIC_CHARACTERS=',.'", 27), 0);
    EXPECT_STREQ(text, "-1.234,57");
    xdec back;
    EXPECT_EQ(char_to_dec_with_fmt(nullptr, "-1,234.57", 9, "9,999.99", 8, &back), 0);
    EXPECT_EQ(plain_text(back), "-1234.57");
}

TEST(NumberFormat, LeavesAnEmptyTextAndAZeroOnFailure) {
    const xdec number = decimal("5");
    char text[kTextSize] = "x";
    EXPECT_EQ(xdec_to_char_with_fmt(nullptr, &number, text, "", 0), EC_NUMBER_FORMAT_EMPTY);
    EXPECT_STREQ(text, "");
    text[0] = 'x';
    EXPECT_EQ(xdec_to_char_with_fmt(nullptr, &number, text, "Q", 1), EC_INVALID_ARGUMENT);
    EXPECT_STREQ(text, "");
    text[0] = 'x';
    EXPECT_EQ(xdec_to_char_with_nls(nullptr, &number, text, "9", 1, "Q", 1), EC_NLS_PARAMETER_INVALID);
    EXPECT_STREQ(text, "");
    xdec back = number;
    EXPECT_EQ(char_to_dec_with_fmt(nullptr, "5", 1, "", 0, &back), EC_NUMBER_FORMAT_EMPTY);
    EXPECT_EQ(back.sign, XDEC_SIGN_ZERO);
    back = number;
    EXPECT_EQ(char_to_dec_with_fmt(nullptr, "5", 1, "Q", 1, &back), EC_INVALID_ARGUMENT);
    EXPECT_EQ(back.sign, XDEC_SIGN_ZERO);
}

TEST(NumberFormat, TellsTheFormatsThatAreForDatesToo) {
    const auto is_for_dates_too = [](const char* text) {
        const Parsed parsed = parse(text);
        EXPECT_EQ(parsed.code, 0) << text;
        return qztime_dt_fmt_is_for_xdec_and_date(&parsed.format);
    };
    for (const char* format : {"X", "x", "FMX", "XX"}) {
        EXPECT_NE(is_for_dates_too(format), 0) << format;
    }
    for (const char* format : {"9", "0X", "RN", "TM", "999D99", "FM0X", "9EEEE"}) {
        EXPECT_EQ(is_for_dates_too(format), 0) << format;
    }
}

// ---- Hostile arguments ------------------------------------------------------------------------------------------------------

TEST(NumberFormat, SurvivesAnyFormatTextAndDecimal) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const auto random_text = [&random](std::string_view alphabet, size_t limit) {
        std::string text(random() % limit, ' ');
        for (char& c : text) {
            c = random() % 32 == 0 ? static_cast<char>(random()) : alphabet[random() % alphabet.size()];
        }
        return text;
    };
    int formats = 0, written_and_read = 0;
    for (int i = 0; i < kRandomCount; ++i) {
        std::string text;
        while (text.size() < 76 && random() % 6 != 0) {
            text += kElements[random() % (random() % 2 == 0 ? 3 : kElements.size())];
        }
        const Parsed parsed = random() % 8 == 0 ? parse(random_text("90.,DGSVBLXEM", 80)) : parse(text);
        if (parsed.code != 0) {
            continue;
        }
        ++formats;
        xdec number;  // any bytes, most of them in their ranges
        auto* const bytes = reinterpret_cast<uint8_t*>(&number);
        for (size_t k = 0; k < sizeof number; ++k) {
            bytes[k] = static_cast<uint8_t>(random());
        }
        if (random() % 4 != 0) {
            number.sign = random() % 2 == 0 ? XDEC_SIGN_POSITIVE : XDEC_SIGN_NEGATIVE;
            number.length = static_cast<uint8_t>(1 + random() % 24);
            number.lead = static_cast<uint8_t>(190 + random() % 6);
        }
        const std::string written = write(number, parsed.format);
        ASSERT_LT(written.size(), size_t{kTextSize});
        written_and_read += read(written, parsed.format).code == 0 ? 1 : 0;
        read(random_text("0123456789.,-+<>$ EXMVI#", 60), parsed.format);
    }
    EXPECT_GT(formats, kRandomCount / 100);
    EXPECT_GT(written_and_read, kRandomCount / 1000);
}

}  // namespace
