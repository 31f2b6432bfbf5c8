#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "qzhost/characters.h"
#include "server_charset.h"
#include "support/test_seed.h"
#include "support/text_at_page_end.h"

namespace {

#ifdef NDEBUG
constexpr int kRandomTexts = 60000;
#else
constexpr int kRandomTexts = 2500;
#endif

uint32_t size_of(std::string_view text) { return static_cast<uint32_t>(text.size()); }

class TrimAndPadTest : public testing::TestWithParam<CharsetUnderTest> {
  protected:
    std::string draw(size_t most) {
        std::string text;
        for (size_t n = below(most + 1); n > 0; --n) text += letters_[below(letters_.size())];
        return text;
    }
    size_t below(size_t n) { return std::uniform_int_distribution<size_t>(0, n - 1)(random_); }

    ServerCharset server_{GetParam()};
    Converter converter_{GetParam()};
    uint32_t seed_ = support::test_seed();
    std::mt19937 random_{seed_};
    std::vector<std::string> letters_ = [this] {
        std::vector<std::string> letters = {" ", "a", "0", "\xFF"};
        for (const uint32_t c : {0x4E2Du, 0xE9u, 0x3B1u, 0xAC00u}) {
            if (const auto character = converter_.encode(c)) letters.push_back(*character);
        }
        letters.push_back(letters.back().substr(0, 1));
        return letters;
    }();
};

INSTANTIATE_TEST_SUITE_P(Charsets, TrimAndPadTest, testing::ValuesIn(kCharsets), name_of_charset);

TEST_P(TrimAndPadTest, TrimLeftByWholeCharacters) {
    SCOPED_TRACE("seed " + std::to_string(seed_));
    support::TextAtPageEnd text_guard(4096), set_guard(4096);
    for (int round = 0; round < kRandomTexts; ++round) {
        const std::string text = draw(20);
        const std::string set = draw(4);
        const std::vector<std::string> members = converter_.cut(set);
        uint32_t leading = 0;
        for (const std::string& piece : converter_.cut(text)) {
            if (std::find(members.begin(), members.end(), piece) == members.end()) break;
            leading += size_of(piece);
        }
        const char* at = text_guard.place(text);
        uint32_t len = size_of(text);
        const char* moved = at;
        trim_left(nullptr, set_guard.place(set), size_of(set), &moved, &len);
        ASSERT_EQ(moved, at + leading) << testing::PrintToString(text) << " / " << testing::PrintToString(set);
        ASSERT_EQ(len, text.size() - leading);
    }
}

TEST_P(TrimAndPadTest, TrimBlanks) {
    for (size_t front = 0; front < 4; ++front) {
        for (size_t behind = 0; behind < 4; ++behind) {
            for (const std::string middle : {"", "a", "\t", "a  b"}) {
                const std::string text = std::string(front, ' ') + middle + std::string(behind, ' ');
                const std::string_view view = text;
                const char* at = text.data();
                uint32_t len = size_of(text);
                trim_left_space(&at, &len);
                const size_t leading = std::min(view.find_first_not_of(' '), view.size());
                EXPECT_EQ(std::string_view(at, len), view.substr(leading));
                len = size_of(text);
                trim_right_space(text.data(), &len);
                EXPECT_EQ(len, view.find_last_not_of(' ') + 1);
            }
        }
    }
}

std::string slow_pad(Converter& converter, const std::string& text, size_t length, const std::string& pad, bool left) {
    std::vector<std::string> pieces = converter.cut(text);
    const std::vector<std::string> fill = converter.cut(pad);
    std::string filled;
    for (size_t i = 0; pieces.size() + i < length && !fill.empty(); ++i) filled += fill[i % fill.size()];
    pieces.resize(std::min(pieces.size(), length));
    std::string kept;
    for (const std::string& piece : pieces) kept += piece;
    return left ? filled + kept : kept + filled;
}

TEST_P(TrimAndPadTest, PadByCharacters) {
    SCOPED_TRACE("seed " + std::to_string(seed_));
    support::TextAtPageEnd text_guard(4096), pad_guard(4096), output_guard(4096);
    for (int round = 0; round < kRandomTexts; ++round) {
        const std::string text = draw(12);
        const std::string pad = draw(4);
        const size_t length = below(30);
        for (const bool left : {true, false}) {
            const std::string expected = slow_pad(converter_, text, length, pad, left);
            char* output = output_guard.room(expected.size());
            uint32_t out_len = 99;
            const auto service = left ? qz_get_lpad_str : qz_get_rpad_str;
            ASSERT_EQ(service(text_guard.place(text), size_of(text), static_cast<int32_t>(length), pad_guard.place(pad),
                              size_of(pad), output, &out_len),
                      0);
            ASSERT_EQ(std::string(output, out_len), expected);
        }
    }
}

TEST(TrimAndPad, LimitsOfPadding) {
    const ServerCharset server(kUtf8);
    std::string output(QZ_PAD_MAX_BYTES + 1, '#');
    uint32_t len = 0;
    EXPECT_EQ(qz_get_lpad_str("ab", 2, 32767, " ", 1, output.data(), &len), 0);
    EXPECT_EQ(len, 32767u);
    EXPECT_EQ(output, std::string(32765, ' ') + "ab#");
    EXPECT_EQ(qz_get_lpad_str("ab", 2, 32768, " ", 1, output.data(), &len), EC_STRING_TOO_LONG);
    EXPECT_EQ(qz_get_rpad_str("ab", 2, INT32_MAX, "\xE4\xB8\xAD", 3, output.data(), &len), EC_STRING_TOO_LONG);
    EXPECT_EQ(qz_get_rpad_str("ab", 2, -1, " ", 1, output.data(), &len), EC_INVALID_ARGUMENT);
    EXPECT_EQ(qz_get_rpad_str("ab", 2, 10923, "\xE4\xB8\xAD", 3, output.data(), &len), 0);
    EXPECT_EQ(len, 2u + 3 * 10921);
    EXPECT_EQ(qz_get_rpad_str("ab", 2, 10924, "\xE4\xB8\xAD", 3, output.data(), &len), EC_STRING_TOO_LONG);
    EXPECT_EQ(qz_get_rpad_str("ab", 2, 5, "", 0, output.data(), &len), 0);
    EXPECT_EQ(len, 2u) << "nothing to fill with";
}

}  // namespace
