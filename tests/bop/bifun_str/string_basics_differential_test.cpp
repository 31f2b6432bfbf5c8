// concat, lengths, case, reverse, repeat and space, all forms, against plain tellings of their rows: character by character,
// and with what a character is told once more.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "qzbifun/codes.h"
#include "qzbifun/qzbifun.h"
#include "qzhost/characters.h"
#include "tests/support/differential.h"

namespace {

using support::Answer;
using support::Differential;
using support::Parameters;
using support::Random;
using support::Rules;
using support::Text;

enum Charset : uint32_t { kGb18030, kUtf8, kEucKr };
constexpr Charset kCharsets[] = {kGb18030, kUtf8, kEucKr};

bool between(uint32_t byte, uint32_t low, uint32_t high) { return byte >= low && byte <= high; }

// The byte at i; 0 behind the end.
uint32_t byte_at(const std::string& s, size_t i) { return i < s.size() ? static_cast<unsigned char>(s[i]) : 0; }

// Bytes of the character at the front of a text that is not empty; 0 when there is none.
size_t utf8_character(const std::string& s) {
    const auto at = [&](size_t i) { return byte_at(s, i); };
    const auto tail = [&](size_t i) { return between(at(i), 0x80, 0xBF); };
    if (at(0) < 0x80) return 1;
    if (between(at(0), 0xC2, 0xDF)) return tail(1) ? 2 : 0;
    if (between(at(0), 0xE0, 0xEF)) {
        const uint32_t code = (at(0) & 15) << 12 | (at(1) & 63) << 6 | (at(2) & 63);
        return tail(1) && tail(2) && code >= 0x800 && !(code >= 0xD800 && code <= 0xDFFF) ? 3 : 0;
    }
    const uint32_t code = (at(0) & 7) << 18 | (at(1) & 63) << 12 | (at(2) & 63) << 6 | (at(3) & 63);
    return between(at(0), 0xF0, 0xF4) && tail(1) && tail(2) && tail(3) && code >= 0x10000 && code <= 0x10FFFF ? 4 : 0;
}

size_t gb18030_character(const std::string& s) {
    const auto at = [&](size_t i) { return byte_at(s, i); };
    const auto lead = [&](size_t i) { return between(at(i), 0x81, 0xFE); };
    const auto digit = [&](size_t i) { return between(at(i), '0', '9'); };
    if (at(0) < 0x80) return 1;
    if (!lead(0)) return 0;
    if (between(at(1), 0x40, 0x7E) || between(at(1), 0x80, 0xFE)) return 2;
    return digit(1) && lead(2) && digit(3) ? 4 : 0;
}

size_t euc_kr_character(const std::string& s) {
    const auto half = [&](size_t i) { return between(byte_at(s, i), 0xA1, 0xFE); };
    if (byte_at(s, 0) < 0x80) return 1;
    return half(0) && half(1) ? 2 : 0;
}

struct Characters {
    std::vector<std::string> list;
    bool well_formed = true;
};

Characters characters_of(const std::string& text, Charset charset) {
    Characters result;
    for (size_t i = 0; i < text.size();) {
        const std::string rest = text.substr(i, 4);
        const size_t told = charset == kUtf8      ? utf8_character(rest)
                            : charset == kGb18030 ? gb18030_character(rest)
                                                  : euc_kr_character(rest);
        result.well_formed &= told != 0;
        const size_t length = std::max<size_t>(told, 1);
        result.list.push_back(text.substr(i, length));
        i += length;
    }
    return result;
}

// Texts that are long enough for every loop, of letters, digits, blanks, whole characters of each set, and at times any bytes.
Text draw(Random& random, Charset charset, uint32_t garbage) {
    static const std::vector<std::string> longer[] = {
        {"\xD6\xD0", "\x81\x61", "\x81\x41", "\x81\x7A", "\x81\x30\x81\x30", "\xA3\xE1", "\xA3\xC1", "\xA7\xA1",
         "\xFE\x39\xFE\x39"},
        {"é", "É", "中", "😀", "ÿ", "ß", "ж", "Ж", "ⱥ", "\u00A0", "\uFFFD", "\U0010FFFF", "\u07FF", "\u0800"},
        {"\xB0\xA1", "\xA3\xE1", "\xA3\xC1", "\xA5\xC1", "\xFE\xFE"}};
    static constexpr char kAscii[] = "abzABZ019 ._-@[`{/:\t";
    Text text;
    const uint32_t pieces = random.chance(80) ? random.below(45) : random.below(300);
    const uint32_t multibyte = std::array<uint32_t, 3>{0, 30, 90}[random.below(3)];
    const bool spoiled = random.chance(garbage);
    for (uint32_t i = 0; i < pieces; ++i) {
        if (spoiled && random.chance(5)) {
            text.bytes += static_cast<char>(random.below(256));
        } else if (random.chance(multibyte)) {
            const std::vector<std::string>& list = longer[charset];
            text.bytes += list[random.below(static_cast<uint32_t>(list.size()))];
        } else {
            text.bytes += kAscii[random.below(sizeof kAscii - 1)];
        }
    }
    if (random.chance(30)) text.blank = random.below(6);
    return text;
}

std::string blanks(uint32_t n) { return std::string(n, ' '); }

template <class R, class Tell>
void compare(const std::string& name, bop_fn_a* function, Charset charset, const Rules& rules, const Tell& tell,
             uint32_t garbage = 30) {
    SCOPED_TRACE(testing::Message() << name << ", character set " << charset);
    const Parameters server(SERVER_CHARSET, charset);
    Differential<R, Text> differential;
    differential.rules = rules;
    differential.batches = support::kBatches / 3;  // one part for each character set
    differential.template draw<0>([&](Random& random) { return draw(random, charset, garbage); });
    differential.add("a", name, function);
    EXPECT_EQ(differential.run(tell), "");
}

Rules string_rules() {
    Rules rules;
    rules.failure = Rules::Failure::string;
    return rules;
}

TEST(StringBasicsDifferential, Concat) {
    Differential<Text, Text, Text> concat;
    concat.rules = string_rules();
    concat.rules.null_evaluated = true;
    concat.rules.constants = Rules::Constants::own;
    concat.rules.valid = Rules::Valid::any;
    concat.rules.flag = Rules::Flag::any;
    concat.add("av", "bconcat_av_str", bconcat_av_str);
    concat.add("va", "bconcat_va_str", bconcat_va_str);
    concat.rules.flag = Rules::Flag::one;
    concat.rules.flag_lowered = true;
    concat.add("aa", "bconcat_aa_str", bconcat_aa_str);
    const auto any_length = [](Random& random) {
        Text text = support::random_value<Text>(random);
        const uint32_t wanted = 32760 + random.below(12);
        if (random.chance(2)) text.bytes = std::string(wanted, 'x');
        if (random.chance(1)) text.blank = wanted;
        return text;
    };
    concat.draw<0>(any_length);
    concat.draw<1>(any_length);
    const auto tell = [](const std::optional<Text>& a, const std::optional<Text>& b) -> Answer<Text> {
        if (!a && !b) return Answer<Text>::null();
        if (!a) return *b;
        if (!b) return a->bytes.size() > 32767 ? Answer<Text>::error(EC_INVALID_ARGUMENT, {}) : Answer<Text>(*a);
        Text joined = *a;
        if (b->bytes.empty()) {
            joined.blank += b->blank;
        } else {
            joined = {a->bytes + blanks(a->blank) + b->bytes, b->blank};
        }
        if (joined.bytes.size() > 32767) return Answer<Text>::error(EC_STRING_TOO_LONG, {});
        return joined;
    };
    EXPECT_EQ(concat.run(tell), "");
}

TEST(StringBasicsDifferential, Lengths) {
    Rules rules;
    rules.flag = Rules::Flag::copy;
    rules.flag_lowered = true;
    Rules kept = rules;
    kept.flag_lowered = false;
    kept.valid = Rules::Valid::kept;
    for (const Charset charset : kCharsets) {
        const auto count = [&](const Text& x) { return static_cast<int32_t>(characters_of(x.bytes, charset).list.size()); };
        const auto bytes = [](const Text& x) { return static_cast<int32_t>(x.bytes.size() + x.blank); };
        compare<int32_t>("blength_a_str", blength_a_str, charset, rules,
                         [&](const Text& x) { return x.bytes.empty() ? Answer<int32_t>::null() : Answer<int32_t>(count(x)); });
        compare<int32_t>("blengthb_a_str", blengthb_a_str, charset, rules,
                         [&](const Text& x) { return bytes(x) == 0 ? Answer<int32_t>::null() : Answer<int32_t>(bytes(x)); });
        compare<int32_t>("blength_space_a_str", blength_space_a_str, charset, rules, [&](const Text& x) {
            return bytes(x) == 0 ? Answer<int32_t>::null() : Answer<int32_t>(count(x) + static_cast<int32_t>(x.blank));
        });
        compare<int32_t>("bbitlength_a_str", bbitlength_a_str, charset, kept, [&](const Text& x) { return 8 * bytes(x); });
    }
}

// One character folded by itself.
std::string folded(std::string character, bool upper) {
    upper ? qz_mbsupper_ex(character.data(), static_cast<uint32_t>(character.size()))
          : qz_mbslower_ex(character.data(), static_cast<uint32_t>(character.size()));
    return character;
}

TEST(StringBasicsDifferential, UpperAndLower) {
    for (const Charset charset : kCharsets) {
        const auto fold = [&](bool upper) {
            return [=](const Text& x) {
                Text result{"", x.blank};
                for (const std::string& character : characters_of(x.bytes, charset).list)
                    result.bytes += folded(character, upper);
                return result;
            };
        };
        compare<Text>("bupper_a_str", bupper_a_str, charset, string_rules(), fold(true));
        compare<Text>("bnls_upper_a", bnls_upper_a, charset, string_rules(), fold(true));
        compare<Text>("blower_a_str", blower_a_str, charset, string_rules(), fold(false));
    }
}

TEST(StringBasicsDifferential, InitCap) {
    for (const Charset charset : kCharsets) {
        const auto tell = [&](const Text& x) {
            Text result{"", x.blank};
            bool in_word = false;
            for (const std::string& character : characters_of(x.bytes, charset).list) {
                std::string low = folded(character, false);
                const bool letter = low.size() == 1 && low[0] >= 'a' && low[0] <= 'z';
                if (letter && !in_word) low = folded(low, true);
                in_word = letter || (low.size() == 1 && low[0] >= '0' && low[0] <= '9');
                result.bytes += low;
            }
            return result;
        };
        compare<Text>("binitcap_a_str", binitcap_a_str, charset, string_rules(), tell);
    }
}

TEST(StringBasicsDifferential, Reverse) {
    Rules rules = string_rules();
    rules.valid = Rules::Valid::kept;
    for (const Charset charset : kCharsets) {
        const auto tell = [&](const Text& x) -> Answer<Text> {
            Characters all = characters_of(x.bytes, charset);
            if (!all.well_formed) return Answer<Text>::error(EC_CHAR_INVALID, {});
            Text result{x.bytes.empty() ? "" : blanks(x.blank), x.bytes.empty() ? x.blank : 0};
            std::reverse(all.list.begin(), all.list.end());
            for (const std::string& character : all.list) result.bytes += character;
            while (!result.bytes.empty() && result.bytes.back() == ' ') {
                result.bytes.pop_back();
                ++result.blank;
            }
            return result;
        };
        compare<Text>("breverse_a_str", breverse_a_str, charset, rules, tell, 10);
    }
}

TEST(StringBasicsDifferential, Repeat) {
    Differential<Text, Text, int32_t> repeat;
    repeat.rules = string_rules();
    repeat.rules.flag = Rules::Flag::copy;
    repeat.rules.valid = Rules::Valid::kept;
    repeat.add("av", "brepeatstr_av_str", brepeatstr_av_str);
    repeat.draw<0>([](Random& random) { return draw(random, kUtf8, 30); });
    repeat.draw<1>([](Random& random) {
        if (random.chance(10)) return support::random_value<int32_t>(random);
        return static_cast<int32_t>(random.chance(80) ? random.below(20) : random.below(3000)) - 1;
    });
    // The value of the constant counts though it be NULL.
    const auto tell = [](const Text& x, int32_t copies) -> Answer<Text> {
        const size_t total = x.bytes.size() + x.blank;
        if (total == 0 || copies == 0) return Text{};
        if (copies < 0 || static_cast<size_t>(copies) > 32767 / total) return Answer<Text>::error(EC_INVALID_ARGUMENT, {});
        if (x.bytes.empty()) return Text{"", x.blank * static_cast<uint32_t>(copies)};
        Text result{x.bytes, x.blank};
        for (int32_t i = 1; i < copies; ++i) result.bytes += blanks(x.blank) + x.bytes;
        return result;
    };
    EXPECT_EQ(repeat.run(tell), "");
}

TEST(StringBasicsDifferential, Space) {
    Differential<Text, int32_t> space;
    space.rules = string_rules();
    space.add("a", "bspace_a_str", bspace_a_str);
    space.draw<0>([](Random& random) {
        return random.chance(90) ? static_cast<int32_t>(random.below(32768)) : support::random_value<int32_t>(random);
    });
    EXPECT_EQ(space.run([](int32_t n) -> Answer<Text> {
        if (n < 0 || n > 32767) return Answer<Text>::error(EC_INVALID_ARGUMENT, {"bspace_a_str"});
        return Text{"", static_cast<uint32_t>(n)};
    }),
              "");
}

}  // namespace
