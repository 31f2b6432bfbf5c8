#include <gtest/gtest.h>
#include <unicode/uchar.h>

#include <random>
#include <thread>

#include "qzhost/characters.h"
#include "server_charset.h"
#include "support/test_seed.h"
#include "support/text_at_page_end.h"

namespace {

#ifdef NDEBUG
constexpr int kRandomTexts = 60000;
#else
constexpr int kRandomTexts = 2000;
#endif

enum class Case { upper, lower };
constexpr Case kCases[] = {Case::upper, Case::lower};

std::string folded(std::string text, Case to) {
    const uint32_t len = static_cast<uint32_t>(text.size());
    to == Case::upper ? qz_mbsupper_ex(text.data(), len) : qz_mbslower_ex(text.data(), len);
    return text;
}

// What a character must become: by way of its code point, by ICU's simple mapping, if it has the same length there.
std::string expected(Converter& converter, const std::string& character, Case to) {
    const auto c = converter.decode(character);
    if (!c) return character;
    const UChar32 point = static_cast<UChar32>(*c);
    const auto mapped = converter.encode(static_cast<uint32_t>(to == Case::upper ? u_toupper(point) : u_tolower(point)));
    return mapped && mapped->size() == character.size() ? *mapped : character;
}

class CaseFoldTest : public testing::TestWithParam<CharsetUnderTest> {
  protected:
    ServerCharset server_{GetParam()};
    Converter converter_{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Charsets, CaseFoldTest, testing::ValuesIn(kCharsets), name_of_charset);

TEST_P(CaseFoldTest, EveryCodePoint) {
    int changed = 0;
    for (uint32_t c = 0; c < 0x110000; ++c) {
        if (is_surrogate(c)) continue;
        // Above the first two planes no letter has a case.
        if (c > 0x20000 && c % 97 != 0) continue;
        const auto character = converter_.encode(c);
        if (!character) continue;
        for (const Case to : kCases) {
            const std::string result = folded(*character, to);
            ASSERT_EQ(result, expected(converter_, *character, to)) << std::hex << c;
            changed += result != *character;
        }
    }
    EXPECT_GT(changed, GetParam().number == kEucKr.number ? 200 : 2500);
}

TEST_P(CaseFoldTest, EverySequenceOfTwoBytes) {
    for (uint32_t first = 0x80; first < 256; ++first) {
        for (uint32_t second = 0; second < 256; ++second) {
            const std::string text = {static_cast<char>(first), static_cast<char>(second)};
            const std::vector<std::string> pieces = converter_.cut(text);
            for (const Case to : kCases) {
                std::string result;
                for (const std::string& piece : pieces) result += expected(converter_, piece, to);
                ASSERT_EQ(folded(text, to), result) << std::hex << first << ' ' << second;
            }
        }
    }
}

TEST_P(CaseFoldTest, TextsCharacterByCharacter) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto below = [&](size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(random); };
    std::vector<std::string> characters = {"a", "z", "A", "Z",    "@",    "[",    "`",    "{",
                                           "0", " ", "m", "\x7F", "\x80", "\xFF", "\xC3", "\xE1"};
    for (const uint32_t c : {0xE9u,   0xC9u,   0xDFu,   0x131u,  0x17Fu,   0x3B1u,   0x416u,  0x436u,  0x10D0u, 0x1E9Eu,
                             0x4E2Du, 0xAC00u, 0xFF21u, 0xFF5Au, 0x10428u, 0x1E922u, 0x2160u, 0x2170u, 0x23Au,  0x212Au}) {
        if (const auto character = converter_.encode(c)) characters.push_back(*character);
    }
    support::TextAtPageEnd guard(4096);
    for (int round = 0; round < kRandomTexts; ++round) {
        std::string text;
        const bool ascii = below(3) == 0;
        for (size_t pieces = below(round % 10 == 0 ? 150 : 50); pieces > 0; --pieces)
            text += characters[below(ascii ? 12 : characters.size())];
        const std::vector<std::string> pieces = converter_.cut(text);
        for (const Case to : kCases) {
            std::string result;
            for (const std::string& piece : pieces) result += expected(converter_, piece, to);
            char* at = guard.place(text);
            to == Case::upper ? qz_mbsupper_ex(at, static_cast<uint32_t>(text.size()))
                              : qz_mbslower_ex(at, static_cast<uint32_t>(text.size()));
            ASSERT_EQ(std::string_view(at, text.size()), result) << text;
        }
    }
}

TEST(CaseFold, ByHand) {
    const ServerCharset server(kUtf8);
    EXPECT_EQ(folded("abc xyz {`@[ 019", Case::upper), "ABC XYZ {`@[ 019");
    EXPECT_EQ(folded("ABC XYZ {`@[ 019", Case::lower), "abc xyz {`@[ 019");
    EXPECT_EQ(folded("stra\xC3\x9F"
                     "e",
                     Case::upper),
              "STRA\xC3\x9F"
              "E")
        << "sharp s has no single capital of its length";
    EXPECT_EQ(folded("\xC4\xB1", Case::upper), "\xC4\xB1") << "I is shorter than dotless i";
    EXPECT_EQ(folded("\xE4\xB8\xAD\xD0\xB6", Case::upper), "\xE4\xB8\xAD\xD0\x96");
}

// A trail byte that looks like a letter is none.
TEST(CaseFold, TrailBytesOfGb18030Stay) {
    const ServerCharset server(kGb18030);
    EXPECT_EQ(folded("\x81\x61\x61", Case::upper), "\x81\x61\x41");
    EXPECT_EQ(folded("\xA3\xE1\xA3\xC1", Case::upper), "\xA3\xC1\xA3\xC1") << "fullwidth a";
    EXPECT_EQ(folded("\xFF\x61", Case::upper), "\xFF\x41") << "FF leads nothing";
}

TEST(CaseFold, TablesAreBuiltOnceForAllThreads) {
    const ServerCharset server(kGb18030);
    std::vector<std::thread> threads;
    std::vector<std::string> results(4);
    for (std::string& result : results) threads.emplace_back([&result] { result = folded("\xA6\xC1\xA7\xD1", Case::upper); });
    for (std::thread& thread : threads) thread.join();
    for (const std::string& result : results) EXPECT_EQ(result, "\xA6\xA1\xA7\xA1") << "alpha, and Cyrillic a";
}

}  // namespace
