// The ways in which UTF-8 is folded, each against ICU's mappings character by character: the library takes one of them by the
// machine.
#include "host/src/utf8_fold.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>

#include <map>
#include <random>
#include <string>
#include <vector>

#include "server_charset.h"
#include "support/test_seed.h"
#include "support/text_at_page_end.h"

namespace qzhost {
namespace {

#ifdef NDEBUG
constexpr int kRandomTexts = 100000;
constexpr uint32_t kEachOfMany = 1;
#else
constexpr int kRandomTexts = 1500;
constexpr uint32_t kEachOfMany = 23;
#endif

class Utf8Folds : public testing::Test {
  protected:
    // The mapping of a character, if it has the same length.
    const std::string& expected(const std::string& character, Case to) {
        const auto [found, is_new] = expected_[to == Case::upper].try_emplace(character, character);
        if (is_new && character.size() > 1) {
            if (const auto c = converter_.decode(character)) {
                const UChar32 point = static_cast<UChar32>(*c);
                const auto mapped =
                    converter_.encode(static_cast<uint32_t>(to == Case::upper ? u_toupper(point) : u_tolower(point)));
                if (mapped && mapped->size() == character.size()) found->second = *mapped;
            }
        } else if (is_new && static_cast<uint8_t>(character[0]) < 0x80) {
            found->second[0] = static_cast<char>(to == Case::upper ? u_toupper(character[0]) : u_tolower(character[0]));
        }
        return found->second;
    }

    void check(const std::vector<std::string>& characters) {
        std::string text, upper, lower;
        for (const std::string& character : characters) {
            text += character;
            upper += expected(character, Case::upper);
            lower += expected(character, Case::lower);
        }
        check(text, upper, lower);
    }

    // Any bytes, cut into characters by ICU.
    void check_bytes(const std::string& text) { check(converter_.cut(text)); }

    void check(const std::string& text, const std::string& upper, const std::string& lower) {
        check_way<fold_utf8_by_blocks<Case::upper>>(text, upper, Case::upper);
        check_way<fold_utf8_by_blocks<Case::lower>>(text, lower, Case::lower);
#ifdef QZHOST_MASKED_LOADS
        if (!has_masked_fold()) return;
        check_way<fold_utf8_masked<Case::upper>>(text, upper, Case::upper);
        check_way<fold_utf8_masked<Case::lower>>(text, lower, Case::lower);
#endif
    }

    // The text stands in front of a page that nobody can touch, and behind bytes that have to stay.
    template <void (*kFold)(const Utf8CaseTable&, uint8_t*, size_t)>
    void check_way(const std::string& text, const std::string& folded, Case to) {
        static const std::string front = "q\xC3\xA9";
        char* const at = room_.place(front + text);
        kFold(Utf8CaseTable::of(to), bytes_of(at) + front.size(), text.size());
        ASSERT_EQ(std::string_view(at, front.size() + text.size()), front + folded) << testing::PrintToString(text);
    }

    support::TextAtPageEnd room_{8192};
    Converter converter_{kUtf8};
    std::map<std::string, std::string> expected_[2];
};

// At all places of a block of 64, its edges among them.
TEST_F(Utf8Folds, EveryCharacterInTheMiddleOfText) {
    for (uint32_t c = 1; c < 0x20000; ++c) {
        const UChar32 point = static_cast<UChar32>(c);
        if (is_surrogate(c) || (u_toupper(point) == u_tolower(point) && c % kEachOfMany != 0)) continue;
        std::vector<std::string> text(c % 130, "b");
        text.push_back(*converter_.encode(c));
        text.insert(text.end(), c % 7, "M");
        check(text);
        if (HasFatalFailure()) return;
    }
}

TEST_F(Utf8Folds, EveryPairOfBytesAtEveryEdge) {
    for (const size_t before : {0u, 1u, 14u, 15u, 47u, 59u, 60u, 61u, 62u, 63u, 121u, 122u, 123u, 127u}) {
        const std::string front(before, 'a');
        const std::string raised(before, 'A');
        for (uint32_t pair = 0x8000; pair < 0x10000; pair += before == 0 ? 1 : 11 * kEachOfMany) {
            const std::string two{static_cast<char>(pair >> 8), static_cast<char>(pair)};
            for (const char* const behind : {"", "\x80", "\x80\xBF", "z\xC3\xA9"}) {
                std::string text = front, upper = raised, lower = front;
                for (const std::string& character : converter_.cut(two + behind)) {
                    text += character;
                    upper += expected(character, Case::upper);
                    lower += expected(character, Case::lower);
                }
                check(text, upper, lower);
                if (HasFatalFailure()) return;
            }
        }
    }
}

TEST_F(Utf8Folds, TextsOfEveryLength) {
    // Of every script with two cases some letters, some of which change their length, and what has no case.
    std::vector<std::string> characters[3];
    for (const char c : {'a', 'z', 'A', 'Z', '@', '[', '`', '{', '0', ' ', 'm', '\x7F'}) characters[0].emplace_back(1, c);
    for (const uint32_t c :
         {0xE9u,  0xC9u,  0xDFu,  0xFFu,  0xB5u,  0x130u, 0x131u, 0x17Fu, 0x23Au, 0x250u, 0x391u,  0x3B1u, 0x3C2u,
          0x416u, 0x436u, 0x451u, 0x561u, 0x5D0u, 0x7FFu, 0x80u,  0x1C4u, 0x1C5u, 0x345u, 0x10FFu, 0x37Fu})
        characters[1].push_back(*converter_.encode(c));
    for (const uint32_t c :
         {0x10D0u, 0x10A0u,  0x1C90u,  0x1E9Eu,  0x1E00u,  0x1FB3u,  0x2126u,   0x212Au,  0x2014u, 0x2160u, 0x24D0u,
          0x2C30u, 0xA641u,  0xAB70u,  0x13A0u,  0xAC00u,  0xD7A3u,  0xE01u,    0x4E2Du,  0x3042u, 0xFF21u, 0xFF5Au,
          0xFF0Cu, 0x10428u, 0x1E922u, 0x118C0u, 0x1F600u, 0x20000u, 0x10FFFFu, 0x16E60u, 0xFFFDu})
        characters[2].push_back(*converter_.encode(c));
    static constexpr std::string_view kMalformed[] = {"\x80",     "\xBF",     "\xC1\xA1",        "\xC3",         "\xD0",
                                                      "\xE1\xBA", "\xE0\x80", "\xE0\x81\xA1",    "\xED\xA0\x80", "\xF0\x90\x90",
                                                      "\xFF",     "\xF5\x80", "\xF0\x80\x90\xA8"};
    std::mt19937 random(support::test_seed());
    for (int i = 0; i < kRandomTexts; ++i) {
        const size_t wanted = random() % (i % 8 == 0 ? 1000 : 200);
        const size_t kind = random() % 6;  // ASCII, two bytes, longer, two of them, all, malformed
        std::string text;
        while (text.size() < wanted) {
            const size_t set = kind < 3 ? (random() % 3 == 0 ? 0 : kind) : random() % (kind == 3 ? 2 : 3);
            if (kind == 5 && random() % 6 == 0) {
                text += kMalformed[random() % std::size(kMalformed)];
            } else {
                text += characters[set][random() % characters[set].size()];
            }
        }
        text.resize(wanted);  // which may cut the last character off
        check_bytes(text);
        if (HasFatalFailure()) return;
    }
}

}  // namespace
}  // namespace qzhost
