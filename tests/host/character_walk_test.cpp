// The ways in which UTF-8 is counted and passed, each against the walk from character to character: the library takes one of
// them by the machine.
#include "host/src/character_walk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "support/test_seed.h"
#include "support/text_at_page_end.h"

namespace qzhost {
namespace {

#ifdef NDEBUG
constexpr uint32_t kStride = 1;
#else
constexpr uint32_t kStride = 13;
#endif

// A text cut by the walk.
struct Walked {
    std::vector<size_t> starts;  // and the length behind the last
    std::vector<bool> sound;     // whether the first n characters are well-formed

    explicit Walked(const std::string& text) : starts{0}, sound{true} {
        const uint8_t* const p = bytes_of(text.data());
        while (starts.back() < text.size()) {
            const int32_t length = Utf8::sequence(p + starts.back(), text.size() - starts.back());
            starts.push_back(starts.back() + (length > 0 ? static_cast<size_t>(length) : 1));
            sound.push_back(sound.back() && length > 0);
        }
    }
    size_t count() const { return starts.size() - 1; }
    size_t start(size_t n) const { return starts[std::min(n, count())]; }
    bool is_sound(size_t n) const { return sound[std::min(n, count())]; }
};

bool has_rare_lead(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](char c) {
        const auto byte = static_cast<uint8_t>(c);
        return byte == 0xC0 || byte == 0xC1 || byte == 0xE0 || byte == 0xED || byte >= 0xF0;
    });
}

class Utf8Walks : public testing::Test {
  protected:
    // The text stands in front of a page that nobody can read. Characters are passed by every number, or by those near the end.
    void check(const std::string& text, bool every_number) {
        const uint8_t* const p = bytes_of(room_.place(text));
        const size_t n = text.size();
        const Walked walked(text);
        const Utf8Count counted = count_utf8(p, n);
        ASSERT_EQ(counted.well_formed, walked.is_sound(n));
        if (counted.well_formed) {
            ASSERT_EQ(counted.characters, walked.count());
        }
        const size_t first = every_number || walked.count() < 5 ? 0 : walked.count() - 5;
        for (size_t k = first; k <= walked.count() + 2; ++k) {
            const Passed passed = pass_utf8(p, n, k);
            ASSERT_EQ(passed.bytes, walked.start(k)) << k;
            ASSERT_TRUE(std::find(walked.starts.begin(), walked.starts.end(), passed.well_formed) != walked.starts.end() &&
                        (passed.well_formed == 0 || walked.sound[index_of(walked, passed.well_formed)]))
                << k;
        }
#ifdef QZHOST_MASKED_LOADS
        if (has_masked_loads()) check_planes(text, p, walked, first);
#endif
    }

#ifdef QZHOST_MASKED_LOADS
    // Up to 63 bytes the planes tell what is well-formed, and of longer texts what has no rare lead byte. A continuation that
    // is astray starts no character for them.
    void check_planes(const std::string& text, const uint8_t* p, const Walked& walked, size_t first) {
        const size_t n = text.size();
        const bool is_short = n <= Utf8Planes::kMost;
        const bool all_sound = walked.is_sound(n);
        const bool no_rare = !has_rare_lead(text);
        ASSERT_EQ(count_short_utf8(p, n), is_short && all_sound && no_rare ? walked.count() : kNotTold);
        const size_t told = count_utf8_masked(p, n);
        ASSERT_EQ(told, all_sound && (is_short || no_rare) ? walked.count() : kNotTold);
        told_ += told != kNotTold;
        for (size_t k = first; k <= walked.count() + 2; ++k) {
            const size_t end = walked.start(k);
            const bool rare_passed = has_rare_lead(std::string_view(text).substr(0, end));
            const bool is_sound = walked.is_sound(k) && (end == n || !Utf8::is_continuation(p[end]));
            const bool in_word = is_short && k <= Utf8Planes::kMost;
            ASSERT_EQ(pass_short_utf8(p, n, k), in_word && is_sound && !rare_passed ? end : kNotTold) << k;
            const size_t passed = pass_utf8_masked(p, n, k);
            if (passed != kNotTold || is_short || no_rare) {
                ASSERT_EQ(passed, is_sound ? end : kNotTold) << k;
            }
        }
        for (size_t index = walked.start(first); index < n; ++index) {
            const size_t number = index_of(walked, index);
            const size_t start = walked.starts[number];
            const bool is_sound = walked.is_sound(number) && (start == n || !Utf8::is_continuation(p[start]));
            const bool rare_passed = has_rare_lead(std::string_view(text).substr(0, start));
            ASSERT_EQ(next_start_of_short_utf8(p, n, index), is_short && is_sound && !rare_passed ? start : kNotTold) << index;
        }
        if (told != kNotTold) check_starts(p, n, walked);
    }

    void check_starts(const uint8_t* p, size_t n, const Walked& walked) {
        auto* const starts = reinterpret_cast<int32_t*>(entries_.room(n * sizeof(int32_t)));
        uint32_t multibyte = 0;
        fill_starts_masked(p, n, starts, multibyte);
        size_t longer = 0;
        for (size_t i = 0; i < walked.count(); ++i) {
            ASSERT_EQ(static_cast<size_t>(starts[i]), walked.starts[i] + 1) << i;
            longer += walked.starts[i + 1] - walked.starts[i] > 1;
        }
        ASSERT_EQ(multibyte, longer);
    }
#endif

    // The number of the first start at or behind a byte.
    static size_t index_of(const Walked& walked, size_t byte) {
        return static_cast<size_t>(std::lower_bound(walked.starts.begin(), walked.starts.end(), byte) - walked.starts.begin());
    }

    support::TextAtPageEnd room_{4096};
    support::TextAtPageEnd entries_{4096 * sizeof(int32_t)};
    size_t told_ = 0;
};

// All pairs of bytes, and all lead bytes with second bytes before a whole tail, at the edges of words and blocks.
TEST_F(Utf8Walks, EveryPairOfBytesAtEveryEdge) {
    for (const size_t before :
         {0u, 1u, 6u, 13u, 14u, 15u, 29u, 30u, 31u, 45u, 46u, 47u, 58u, 59u, 60u, 61u, 62u, 63u, 124u, 127u}) {
        for (uint32_t pair = 0; pair < 0x10000; pair += before == 0 ? kStride : 7 * kStride) {
            const std::string two{static_cast<char>(pair >> 8), static_cast<char>(pair)};
            const std::string front(before, 'a');
            for (const std::string_view behind : {"", "\x80", "\x80\xBF", "z\xC3\xA9"}) {
                const std::string text = front + two + std::string(behind);
                check(text, false);
                ASSERT_FALSE(HasFatalFailure()) << testing::PrintToString(text);
            }
        }
    }
}

TEST_F(Utf8Walks, TextsOfEveryLength) {
    static const std::vector<std::string> common = {"a", "\xC3\xA9", "\xE4\xB8\xAD", "\xE1\x80\x80", "\xDF\xBF", "\xC2\x80"};
    static const std::vector<std::string> rare = {"\xED\x9F\xBF", "\xE0\xA0\x80", "\xF0\x9F\x98\x80", "\xF4\x8F\xBF\xBF"};
    std::mt19937 random(support::test_seed());
    for (int i = 0; i < 40000; ++i) {
        const size_t wanted = random() % (i % 4 == 0 ? 300 : 80);
        const uint32_t kind = random() % 4;
        std::string text;
        while (text.size() < wanted) {
            if (kind == 1 && random() % 8 == 0) {
                text += rare[random() % rare.size()];
            } else {
                text += common[random() % common.size()];
            }
        }
        if (kind == 2 && !text.empty()) text[random() % text.size()] = static_cast<char>(random());
        if (kind == 3) text.resize(text.size() - random() % std::min<size_t>(text.size() + 1, 4));
        check(text, i % 16 == 0);
        ASSERT_FALSE(HasFatalFailure()) << testing::PrintToString(text);
    }
#ifdef QZHOST_MASKED_LOADS
    if (has_masked_loads()) {
        EXPECT_GT(told_, 10000u);
    }
#endif
}

}  // namespace
}  // namespace qzhost
