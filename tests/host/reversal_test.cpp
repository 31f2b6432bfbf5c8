// The ways in which UTF-8 is reversed, each against the list of the text's characters: the library takes one of them by the
// machine.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "host/src/reversal_blocks.h"
#include "host/src/reversal_masked.h"
#include "support/test_seed.h"
#include "support/text_at_page_end.h"

namespace qzhost {
namespace {

using Characters = std::vector<std::string>;

std::string joined(const Characters& characters) {
    std::string text;
    for (const std::string& character : characters) text += character;
    return text;
}

class Reversal : public testing::Test {
  protected:
    using Way = bool(uint8_t*, size_t);

    // The text stands in front of a page that nobody can read.
    void check_way(Way* reverse, const std::string& text, const std::string* reversed) {
        char* const at = room_.place(text);
        ASSERT_EQ(reverse(bytes_of(at), text.size()), reversed != nullptr) << testing::PrintToString(text);
        ASSERT_EQ(std::string(at, text.size()), reversed != nullptr ? *reversed : text) << testing::PrintToString(text);
    }

    // reversed is NULL for malformed text, which stays.
    void check(const std::string& text, const std::string* reversed) {
        check_way(reverse_utf8_by_blocks, text, reversed);
#ifdef QZHOST_MASKED_LOADS
        if (has_masked_loads()) check_way(reverse_utf8_masked, text, reversed);
#endif
    }

    void check(const Characters& characters) {
        const std::string reversed = joined({characters.rbegin(), characters.rend()});
        check(joined(characters), &reversed);
    }
    void check_malformed(const std::string& text) { check(text, nullptr); }

    support::TextAtPageEnd room_{4096};
};

// Characters whose bytes are all different, so that none passes for another.
const Characters kAscii = {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k"};
const Characters kTwo = {"\u00e9", "\u0416", "\u07ff", "\u0080"};
const Characters kThree = {"\u4e2d", "\u3042", "\u1000", "\ufffd"};
const Characters kThreeRare = {"\u0800", "\ud7ff", "\u0fff"};
const Characters kFour = {"\U0001f600", "\U00010000", "\U0010ffff", "\U000e0041"};

struct Mix {
    const char* name;
    std::vector<const Characters*> of;
};
const std::vector<Mix> kMixes = {
    {"ascii", {&kAscii}},
    {"two", {&kTwo}},
    {"three", {&kThree}},
    {"four", {&kFour}},
    {"ascii and two", {&kAscii, &kAscii, &kTwo}},
    {"ascii and three", {&kAscii, &kAscii, &kThree}},
    {"ascii, two, three", {&kAscii, &kAscii, &kTwo, &kThree}},
    {"two and three", {&kTwo, &kThree}},
    {"rare leads", {&kAscii, &kTwo, &kThree, &kThreeRare}},
    {"all", {&kAscii, &kTwo, &kThree, &kThreeRare, &kFour}},
    {"mostly ascii", {&kAscii, &kAscii, &kAscii, &kAscii, &kAscii, &kAscii, &kAscii, &kAscii, &kTwo, &kFour}},
};

// As many bytes, of characters of the mix, filled up with ASCII.
Characters draw(const Mix& mix, size_t bytes, std::mt19937& random) {
    Characters drawn;
    while (bytes > 0) {
        const Characters& set = *mix.of[random() % mix.of.size()];
        const std::string& character = set[random() % set.size()];
        drawn.push_back(character.size() <= bytes ? character : kAscii[bytes]);
        bytes -= drawn.back().size();
    }
    std::shuffle(drawn.begin(), drawn.end(), random);
    return drawn;
}

TEST_F(Reversal, EveryLengthOfEveryMix) {
    std::mt19937 random(support::test_seed());
    for (const Mix& mix : kMixes) {
        SCOPED_TRACE(mix.name);
        for (size_t bytes = 0; bytes <= 260; ++bytes) {
            for (int i = 0; i < 5; ++i) check(draw(mix, bytes, random));
            if (HasFatalFailure()) return;
        }
        for (const size_t bytes : {511u, 512u, 1000u, 2047u, 4096u}) check(draw(mix, bytes, random));
    }
}

// One longer character at every place of ASCII text of every length.
TEST_F(Reversal, OneCharacterAtEveryPlace) {
    for (const Characters& set : {kTwo, kThree, kThreeRare, kFour}) {
        for (size_t n = 1; n <= 140; n += n < 70 ? 1 : 6) {
            for (size_t at = 0; at < n; ++at) {
                Characters characters(n, "a");
                for (size_t i = 0; i < n; ++i) characters[i] = kAscii[i % kAscii.size()];
                characters[at] = set[at % set.size()];
                check(characters);
            }
            if (HasFatalFailure()) return;
        }
    }
}

// What is no character at all, at every place of texts of every length, before and behind whole characters.
TEST_F(Reversal, MalformedTextStays) {
    const std::vector<std::string> broken = {"\x80",
                                             "\xbf",
                                             "\xc3",
                                             "\xc0\x80",
                                             "\xc1\xbf",
                                             "\xe4\xb8",
                                             "\xe4",
                                             "\xe0\x9f\xbf",
                                             "\xed\xa0\x80",
                                             "\xf0\x9f\x98",
                                             "\xf0\x8f\xbf\xbf",
                                             "\xf4\x90\x80\x80",
                                             "\xf5\x80\x80\x80",
                                             "\xff",
                                             "\xfe\x80",
                                             "\xc3\xa9\x80",
                                             "\xe4\xb8\xad\x80",
                                             "\xf0\x9f\x98\x80\x80",
                                             "\xf8\x88\x80\x80\x80"};
    for (const std::string& piece : broken) {
        for (size_t before = 0; before <= 140; before += before < 70 ? 1 : 7) {
            const std::string front(before, 'x');
            check_malformed(front + piece);
            check_malformed(front + piece + "x");
            check_malformed(front + piece + "\u4e2d\U0001f600\u00e9");
            check_malformed(joined({"\u00e9", front, piece}));
            check_malformed(joined({"\U0001f600", front, piece, std::string(70, 'y')}));
        }
        if (HasFatalFailure()) return;
    }
}

// Every cut of a text within a character.
TEST_F(Reversal, TextThatIsCutOff) {
    std::mt19937 random(support::test_seed());
    for (int i = 0; i < 3000; ++i) {
        const Characters characters = draw(kMixes[1 + random() % (kMixes.size() - 1)], 4 + random() % 200, random);
        std::string text = joined(characters);
        const size_t last = characters.back().size();
        for (size_t cut = 1; cut < last; ++cut) {
            check_malformed(text.substr(0, text.size() - cut));
            check_malformed(text.substr(0, text.size() - cut) + "a");
        }
        const size_t first = characters.front().size();
        for (size_t cut = 1; cut < first; ++cut) check_malformed(text.substr(cut));
        if (HasFatalFailure()) return;
    }
}

// Every three bytes of the ranges' edges.
TEST_F(Reversal, EverySecondByte) {
    for (uint32_t lead = 0xc0; lead <= 0xff; ++lead) {
        for (uint32_t second = 0x70; second <= 0xcf; ++second) {
            for (const char* const tail : {"", "\x80", "\xbf\x80"}) {
                const std::string character = std::string{static_cast<char>(lead), static_cast<char>(second)} + tail;
                const int32_t told = Utf8::sequence(bytes_of(character.data()), character.size());
                const bool whole = told == static_cast<int32_t>(character.size());
                for (const size_t before : {0u, 13u, 40u, 61u, 63u, 64u, 90u}) {
                    const std::string front(before, 'x');
                    whole ? check({front, character, "z"}) : check_malformed(front + character + "z");
                }
            }
        }
        if (HasFatalFailure()) return;
    }
}

}  // namespace
}  // namespace qzhost
