// position against a plain search that writes both values out, where the two differ on purpose, and what is left behind when
// memory runs out.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "qzbifun/codes.h"
#include "qzbifun/qzbifun.h"
#include "tests/bop/bifun_str/plain_text.h"
#include "tests/support/differential.h"
#include "tests/support/log_lines.h"
#include "tests/support/vector.h"

namespace {

using plain::Characters;
using plain::Charset;
using plain::InCharset;
using support::Constant;
using support::Differential;
using support::Host;
using support::LogLines;
using support::Random;
using support::Rules;
using support::Text;
using support::Vector;

// Upper case of the letters that the tests use.
Characters folded(Characters characters) {
    for (std::string& character : characters) {
        if (character == "a") character = "A";
        if (character == "b") character = "B";
        if (character == "\u00e9") character = "\u00c9";
    }
    return characters;
}

struct Place {
    int32_t byte;       // from 1; 0: none
    int32_t character;  // likewise
};

Place first_place(const Characters& text, const Characters& pattern, size_t behind_last_start) {
    int32_t byte = 1;
    for (size_t i = 0; i < text.size() && i < behind_last_start; ++i) {
        if (plain::stands_at(text, i, pattern)) return {byte, static_cast<int32_t>(i) + 1};
        byte += static_cast<int32_t>(text[i].size());
    }
    return {0, 0};
}

// What position makes of the plain search's places. How often it differs from the plain search, and why.
struct Told {
    size_t same = 0;
    size_t found = 0;
    size_t character_for_byte = 0;    // all blanks of the pattern are implied in the text, behind multibyte characters
    size_t blanks_over_border = 0;    // a pattern of blanks that begins among stored blanks and ends among implied ones
    size_t stored_among_implied = 0;  // a stored blank of the pattern that stands among implied ones

    int32_t position(const Text& text, const Text& pattern, Charset charset, bool case_sensitive) {
        Characters in = plain::characters_of(text, charset);
        Characters wanted = plain::characters_of(pattern, charset);
        if (!case_sensitive) {
            in = folded(in);
            wanted = folded(wanted);
        }
        const Place plain = first_place(in, wanted, in.size());
        const size_t stored_text = in.size() - text.blank;
        const size_t stored_pattern = wanted.size() - pattern.blank;
        found += plain.byte != 0;
        if (stored_pattern == 0) {
            const size_t starts = stored_text >= wanted.size() ? stored_text - wanted.size() + 1 : 0;
            const Place stored = first_place(in, wanted, starts);
            const auto behind = static_cast<int32_t>(text.bytes.size()) + 1;
            const int32_t value = stored.byte != 0 ? stored.byte : text.blank >= pattern.blank ? behind : 0;
            ++(value == plain.byte ? same : blanks_over_border);
            return value;
        }
        const size_t starts = stored_text >= stored_pattern ? stored_text - stored_pattern + 1 : 0;
        const Place place = first_place(in, wanted, starts);
        const bool ends_stored_text =
            place.byte != 0 && static_cast<size_t>(place.character) - 1 + stored_pattern == stored_text;
        const int32_t value = ends_stored_text && pattern.blank != 0 ? place.character : place.byte;
        if (value == plain.byte) {
            ++same;
        } else {
            ++(place.byte == 0 ? stored_among_implied : character_for_byte);
        }
        return value;
    }
};

TEST(Position, IsThePlainSearchButWhereItIsMeantToDiffer) {
    Told told;
    size_t character_for_byte_in_ascii = 0;
    for (const Charset charset : plain::kCharsets) {
        for (const bool case_sensitive : {true, false}) {
            const InCharset settings(charset, case_sensitive);
            Differential<int32_t, Text, Text> position;
            position.rules.flag = Rules::Flag::copy;
            position.rules.copied_argument = 2;
            position.rules.failure = Rules::Failure::string;
            position.add("va", "bposition_va_str", bposition_va_str);
            position.draw<0>([&](Random& random) {
                for (;;) {  // an empty pattern has a rule of its own
                    Text pattern = plain::random_text(random, charset, random.chance(20) ? 0 : 3);
                    if (!pattern.bytes.empty() || pattern.blank != 0) return pattern;
                }
            });
            position.draw<1>([&](Random& random) { return plain::random_text(random, charset, random.chance(90) ? 8 : 60); });
            EXPECT_EQ(position.run([&](const Text& pattern, const Text& text) {
                const size_t before = told.character_for_byte;
                const int32_t value = told.position(text, pattern, charset, case_sensitive);
                if (told.character_for_byte == before) return value;
                const bool ascii = plain::characters_of(text, charset).size() == text.bytes.size() + text.blank;
                character_for_byte_in_ascii += ascii ? 1 : 0;
                return value;
            }),
                      "");
        }
    }
    RecordProperty("same", std::to_string(told.same));
    RecordProperty("character_for_byte", std::to_string(told.character_for_byte));
    RecordProperty("blanks_over_border", std::to_string(told.blanks_over_border));
    RecordProperty("stored_among_implied", std::to_string(told.stored_among_implied));
    EXPECT_EQ(character_for_byte_in_ascii, 0u);
    EXPECT_GT(told.found, told.same / 10);
    EXPECT_GT(told.character_for_byte, 0u);
    EXPECT_GT(told.blanks_over_border, 0u);
    EXPECT_GT(told.stored_among_implied, 0u);
    EXPECT_GT(told.same, 5 * (told.character_for_byte + told.blanks_over_border + told.stored_among_implied));
}

class PositionExhausted : public ::testing::Test {
  protected:
    // The call on some rows after so many allocations that succeed.
    int32_t call(const Text& pattern, const Vector& text, const Vector& result, int64_t allocations) {
        Constant constant = Constant::of(pattern);
        const LogLines log;
        host_.clear_errors();
        host_memory_fail_after(allocations);
        const int32_t code =
            bposition_va_str(host_.env(), host_.mem(), constant.scalar(), text.col(), result.col(), text.rows());
        host_memory_fail_after(-1);
        log_ = log.codes();
        EXPECT_EQ(print(host_.errors()), "empty");
        EXPECT_EQ(host_.outstanding(), 0u);
        EXPECT_EQ(constant.changed(), "");
        return code;
    }
    int32_t call(const Text& pattern, int64_t allocations) {
        const Vector text = Vector::of<Text>(host_, {Text{"ab", 0}});
        const Vector result = Vector::result<int32_t>(host_, 1);
        const int32_t code = call(pattern, text, result, allocations);
        if (code < 0) {
            EXPECT_TRUE(result.valid_untouched(0));
        }
        return code;
    }

    Host host_;
    std::vector<int32_t> log_;
    const std::vector<int32_t> nothing_{};
    const std::vector<int32_t> exhaustion_{EC_OUT_OF_MEMORY};
};

TEST_F(PositionExhausted, ShortPatternsTakeNoMemory) {
    const InCharset exact(Charset::utf8, true);
    EXPECT_EQ(call({"b", 0}, 0), 0);
    EXPECT_EQ(call({"b", 300}, 0), 0);
    EXPECT_EQ(call({std::string(256, 'a'), 0}, 0), 0);
    EXPECT_EQ(call({"", 48}, 0), 0);
    const InCharset folding(Charset::utf8, false);
    EXPECT_EQ(call({std::string(48, 'a'), 5}, 0), 0);
}

TEST_F(PositionExhausted, ATableIsNeitherReportedNorLogged) {
    const InCharset exact(Charset::utf8, true);
    EXPECT_EQ(call({std::string(257, 'a'), 0}, 0), EC_OUT_OF_MEMORY);
    EXPECT_EQ(log_, nothing_);
    EXPECT_EQ(call({std::string(257, 'a'), 0}, 1), 0);
    EXPECT_EQ(call({"", 257}, 1), EC_OUT_OF_MEMORY);
    EXPECT_EQ(log_, nothing_);
    EXPECT_EQ(call({"", 257}, 2), 0);
}

TEST_F(PositionExhausted, ACopyOfThePatternIsLogged) {
    {
        const InCharset exact(Charset::utf8, true);
        EXPECT_EQ(call({"", 49}, 0), EC_OUT_OF_MEMORY);
        EXPECT_EQ(log_, exhaustion_);
        EXPECT_EQ(call({"", 49}, 1), 0);
        EXPECT_EQ(call({std::string(49, 'a'), 0}, 0), 0);  // which is not copied
    }
    const InCharset folding(Charset::utf8, false);
    EXPECT_EQ(call({std::string(49, 'a'), 0}, 0), EC_OUT_OF_MEMORY);
    EXPECT_EQ(log_, exhaustion_);
    EXPECT_EQ(call({std::string(49, 'a'), 0}, 1), 0);
}

TEST_F(PositionExhausted, ATextThatTheBufferDoesNotHoldFailsItsRow) {
    const InCharset folding(Charset::utf8, false);
    const std::string whole_buffer(32767, 'x');
    const Vector text = Vector::of<Text>(host_, {Text{whole_buffer + "b", 0}, Text{whole_buffer + "xb", 0}, Text{"b", 0}});
    const Vector result = Vector::result<int32_t>(host_, 3);
    EXPECT_EQ(call({"B", 0}, text, result, 0), EC_OUT_OF_MEMORY);
    EXPECT_EQ(log_, nothing_);
    EXPECT_EQ(result.get<int32_t>(0), 32768);
    EXPECT_EQ(result.valid(0), 1);
    EXPECT_EQ(result.valid(1), 0);
    EXPECT_TRUE(result.value_untouched(1));
    EXPECT_TRUE(result.valid_untouched(2));
    EXPECT_EQ(call({"B", 0}, text, result, 1), 0);
    EXPECT_EQ(result.get<int32_t>(1), 32769);
    EXPECT_EQ(result.get<int32_t>(2), 1);
}

}  // namespace
