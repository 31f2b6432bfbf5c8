// The two vocabularies of date parts, and single parts.
#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "qzbifun/codes.h"
#include "qzbifun/date_parts.h"
#include "tests/bop/bifun_date/dates.h"
#include "tests/support/vector.h"

namespace {

using dates::date;
using dates::moment;
using support::Constant;
using support::Vector;

const std::map<std::string, int> kKeywords = {
    {"YY", 1},      {"YYYY", 1},     {"YEAR", 1},   {"M", 2},           {"MM", 2},          {"MONTH", 2}, {"D", 3},
    {"DD", 3},      {"DAY", 3},      {"HH", 4},     {"HOUR", 4},        {"N", 5},           {"MI", 5},    {"MINUTE", 5},
    {"S", 6},       {"SS", 6},       {"SECOND", 6}, {"MS", 7},          {"MILLISECOND", 7}, {"Q", 8},     {"QQ", 8},
    {"QUARTER", 8}, {"Y", 9},        {"DY", 9},     {"DAYOFYEAR", 9},   {"WW", 10},         {"WK", 10},   {"WEEK", 10},
    {"DW", 11},     {"WEEKDAY", 11}, {"US", 14},    {"MICROSECOND", 14}};

const std::map<std::string, int> kElements = {{"DD", 1},    {"DDD", 1},  {"J", 1},    {"CC", 2},   {"SCC", 2},  {"Y", 3},
                                              {"YY", 3},    {"YYY", 3},  {"YYYY", 3}, {"YEAR", 3}, {"SYYY", 3}, {"SYYYY", 3},
                                              {"SYEAR", 3}, {"Q", 4},    {"M", 5},    {"MM", 5},   {"MON", 5},  {"MONTH", 5},
                                              {"RM", 5},    {"WW", 6},   {"W", 7},    {"D", 8},    {"DY", 8},   {"DAY", 8},
                                              {"HH", 9},    {"HH12", 9}, {"HH24", 9}, {"MI", 10},  {"IW", 11}};

int datepart(const std::string& word) {
    Constant keyword = Constant::of(support::Text{word});
    return ifun_parse_datepart(keyword.scalar());
}

int roundpart(const std::string& word) { return ifun_parse_roundpart(word.data(), static_cast<uint32_t>(word.size())); }

std::string lower(std::string word) {
    for (char& c : word) c = static_cast<char>(std::tolower(c));
    return word;
}

std::string mixed(std::string word) {
    for (size_t i = 1; i < word.size(); i += 2) word[i] = static_cast<char>(std::tolower(word[i]));
    return word;
}

// Every text of one byte and of two bytes, and every known word with a byte changed, dropped or added.
std::vector<std::string> texts_near(const std::map<std::string, int>& words) {
    std::vector<std::string> texts = {""};
    for (int a = 0; a < 256; ++a) {
        texts.emplace_back(1, static_cast<char>(a));
        for (int b = 0; b < 256; ++b) texts.push_back({static_cast<char>(a), static_cast<char>(b)});
    }
    for (const auto& [word, code] : words) {
        for (size_t i = 0; i < word.size(); ++i) {
            for (const int change : {1, -1, 0x20, 0x40, 0x80}) {
                std::string text = word;
                text[i] = static_cast<char>(text[i] ^ change);
                texts.push_back(text);
            }
            texts.push_back(std::string(word).erase(i, 1));
        }
        texts.push_back(word + "S");
        texts.push_back(word + " ");
        texts.push_back(" " + word);
        texts.push_back(word + '\0');
    }
    return texts;
}

std::string upper(std::string word) {
    for (char& c : word) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
    return word;
}

int told(const std::map<std::string, int>& words, const std::string& text) {
    const auto found = words.find(upper(text));
    return found == words.end() ? 0 : found->second;
}

TEST(DateWords, KeywordsInAnyCase) {
    for (const auto& [word, code] : kKeywords) {
        EXPECT_EQ(datepart(word), code) << word;
        EXPECT_EQ(datepart(lower(word)), code) << word;
        EXPECT_EQ(datepart(mixed(word)), code) << word;
    }
    for (const std::string& text : texts_near(kKeywords)) EXPECT_EQ(datepart(text), told(kKeywords, text)) << text;
    for (const char* word : {"YYY", "W", "H", "HH24", "IW", "CC", "MON", "NANOSECOND", "MILLISECONDS", "TZH", ""}) {
        EXPECT_EQ(datepart(word), 0) << word;
    }
    EXPECT_EQ(datepart(std::string(49, 'Y')), 0);
    EXPECT_EQ(datepart("YEAR" + std::string(45, ' ')), 0);
}

TEST(DateWords, ElementsInAnyCase) {
    for (const auto& [word, code] : kElements) {
        EXPECT_EQ(roundpart(word), code) << word;
        EXPECT_EQ(roundpart(lower(word)), code) << word;
        EXPECT_EQ(roundpart(mixed(word)), code) << word;
    }
    for (const std::string& text : texts_near(kElements)) EXPECT_EQ(roundpart(text), told(kElements, text)) << text;
    for (const char* word : {"MO", "HHH", "YEARS", "HOUR", "MINUTE", "SS", "QQ", "IYYY", "I", "B", "Z", "SYY", "MONTHS", ""}) {
        EXPECT_EQ(roundpart(word), 0) << word;
    }
    EXPECT_EQ(ifun_parse_roundpart("MM", 0), 0);
    EXPECT_EQ(ifun_parse_roundpart(nullptr, 0), 0);
}

TEST(DatePart, TakesEachPart) {
    const qztime value = moment(2024, 5, 31, 10, 30, 15, 123456789);  // a Friday
    const std::map<int, int> parts = {{1, 2024}, {2, 5}, {3, 31},  {4, 10},  {5, 30}, {6, 15},
                                      {7, 123},  {8, 2}, {9, 152}, {10, 22}, {11, 6}, {14, 123456}};
    for (int code = -3; code < 20; ++code) {
        const auto part = parts.find(code);
        EXPECT_EQ(fun_datepart1(code, &value), part == parts.end() ? -1 : part->second) << code;
    }
    for (int month = 1; month <= 12; ++month) {
        const qztime first = date(2023, month, 1);
        EXPECT_EQ(fun_datepart1(8, &first), (month + 2) / 3);
    }
    const qztime negative = date(-1, 1, 1);
    EXPECT_EQ(fun_datepart1(1, &negative), -1);
    EXPECT_EQ(fun_datepart1(0x10001, &value), -1);
}

// Where no row has a value, nobody asks for the part.
TEST(DatePart, FailsAtARowOnly) {
    support::Host host;
    Constant unknown = Constant::of(support::Text{"YYY"});
    Constant no_code = Constant::of(int32_t{12});
    Vector nulls = Vector::of<qztime>(host, {std::nullopt, std::nullopt});
    for (const uint32_t rows : {0u, 2u}) {
        Vector out = Vector::result<int32_t>(host, 2);
        EXPECT_EQ(bdatepart_av_date(host.env(), host.mem(), nulls.col(), unknown.scalar(), out.col(), rows), 0);
        EXPECT_EQ(out.col()->all_valid, 0u);
        EXPECT_EQ(bdatepart1_va_date(host.env(), host.mem(), no_code.scalar(), nulls.col(), out.col(), rows), 0);
        for (uint32_t i = 0; i < rows; ++i) EXPECT_EQ(out.valid(i), 0);
        EXPECT_TRUE(host.errors().empty());
    }
    Vector third = Vector::of<qztime>(host, {std::nullopt, std::nullopt, date(2024, 1, 1)});
    Vector out = Vector::result<int32_t>(host, 3);
    EXPECT_EQ(bdatepart_av_date(host.env(), host.mem(), third.col(), unknown.scalar(), out.col(), 3), EC_INVALID_ARGUMENT);
    EXPECT_EQ(host.errors(), (std::vector<support::StackEntry>{{EC_INVALID_ARGUMENT, "bdatepart_av_date"}}));
    EXPECT_EQ(out.col()->all_valid, Vector::kFlagPattern);
}

}  // namespace
