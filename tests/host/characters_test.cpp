#include "qzhost/characters.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>

#include <climits>
#include <numeric>
#include <random>

#include "server_charset.h"
#include "support/test_seed.h"
#include "support/text_at_page_end.h"

namespace {

#ifdef NDEBUG
constexpr int kRandomTexts = 60000;
constexpr int kRoundsOfLength = 24;
constexpr uint32_t kFourByteStride = 7;
#else
constexpr int kRandomTexts = 2000;
constexpr int kRoundsOfLength = 3;
constexpr uint32_t kFourByteStride = 211;
#endif

std::string hex(std::string_view text) {
    std::string out;
    char pair[4];
    for (const char c : text) {
        std::snprintf(pair, sizeof pair, "%02X ", static_cast<uint8_t>(c));
        out += pair;
    }
    return out;
}

uint32_t size_of(std::string_view text) { return static_cast<uint32_t>(text.size()); }

// Texts of characters and of broken ones, from ASCII only to bytes at random.
class RandomTexts {
  public:
    RandomTexts(const CharsetUnderTest& charset, Converter& converter, uint32_t seed) : random_(seed) {
        std::uniform_int_distribution<uint32_t> code_point(0x80, 0x2FFFF);
        const uint32_t common[] = {0xE9, 0xDF, 0x131, 0x3B1, 0x416, 0x4E2D, 0x6587, 0xAC00, 0xFF21, 0x1F600, 0x10428, 0x3042};
        for (const uint32_t c : common) add(converter.encode(c));
        while (characters_.size() < 60) add(converter.encode(code_point(random_)));
        leads_ = charset.number == kUtf8.number ? "\xC3\xE4\xF0\x80\xBF\xED\xF4\xC0\xF8"
                                                : "\x81\x84\xA1\xB0\xFE\x30\x39\x80\xFF\x7E";
    }

    std::string next(size_t most_pieces) {
        const uint32_t kind = below(4);
        std::string text;
        for (size_t pieces = below(static_cast<uint32_t>(most_pieces + 1)); pieces > 0; --pieces) {
            const bool ascii = kind == 0 || below(3) == 0;
            if (ascii) {
                text += static_cast<char>(' ' + below(95));
            } else if (kind == 3 && below(2) == 0) {
                text += leads_[below(static_cast<uint32_t>(leads_.size()))];
            } else {
                text += characters_[below(static_cast<uint32_t>(characters_.size()))];
            }
        }
        // Cut anywhere, so that a last character may lack bytes.
        if (kind == 3 && !text.empty()) text.resize(text.size() - below(std::min<uint32_t>(3, size_of(text))));
        return text;
    }

    uint32_t below(uint32_t n) { return std::uniform_int_distribution<uint32_t>(0, n - 1)(random_); }

  private:
    void add(std::optional<std::string> character) {
        if (character && character->size() > 1) characters_.push_back(*character);
    }

    std::mt19937 random_;
    std::vector<std::string> characters_;
    std::string leads_;
};

class CharactersTest : public testing::TestWithParam<CharsetUnderTest> {
  protected:
    ServerCharset server_{GetParam()};
    Converter converter_{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Charsets, CharactersTest, testing::ValuesIn(kCharsets), name_of_charset);

TEST_P(CharactersTest, EverySequenceOfOneAndTwoBytes) {
    support::TextAtPageEnd guard(16);
    for (uint32_t first = 0; first < 256; ++first) {
        for (uint32_t second = 0; second < 256; ++second) {
            const char bytes[] = {static_cast<char>(first), static_cast<char>(second)};
            for (const std::string_view text : {std::string_view(bytes, 1), std::string_view(bytes, 2)}) {
                const std::vector<std::string> pieces = converter_.cut(text);
                const char* at = guard.place(text);
                ASSERT_EQ(qz_mbstrlen_ex(at, size_of(text)), pieces.size()) << hex(text);
                ASSERT_EQ(qz_mbget_bytelen(at, size_of(text), 1), pieces[0].size()) << hex(text);
                ASSERT_EQ(qz_translate_from_str_has_mb(at, size_of(text)) != 0, pieces[0].size() > 1) << hex(text);
            }
        }
    }
}

TEST_P(CharactersTest, LengthByLeadIsThatOfEveryWholeCharacter) {
    for (uint32_t c = 0; c < 0x110000; c += c < 0x10000 ? 1 : 61) {
        const auto character = converter_.encode(c);
        if (!character || is_surrogate(c)) continue;
        const std::string padded = *character + "!";
        ASSERT_EQ(qz_mb_char_get_len(padded.data()), character->size()) << std::hex << c;
        ASSERT_EQ(qz_mb_char_get_len_ex(character->data(), size_of(*character)), character->size()) << std::hex << c;
        ASSERT_EQ(qz_mbstrlen_ex(character->data(), size_of(*character)), 1u) << std::hex << c;
        for (uint32_t left = 1; left < character->size(); ++left) {
            ASSERT_EQ(qz_mb_char_get_len_ex(character->data(), left), QZ_MB_NONE) << std::hex << c;
        }
    }
}

TEST(Utf8Characters, SurrogatesOverlongFormsAndLargeNumbersAreMalformed) {
    const ServerCharset server(kUtf8);
    for (const std::string_view text : {"\xED\xA0\x80", "\xED\xBF\xBF", "\xE0\x80\x80", "\xE0\x9F\xBF"}) {
        EXPECT_EQ(qz_mbstrlen_ex(text.data(), 3), 3u) << hex(text);
        EXPECT_EQ(qz_mb_char_get_len_ex(text.data(), 3), 1u) << hex(text);
    }
    for (const std::string_view text :
         {"\xF0\x80\x80\x80", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF\xBF\xBF\xBF"}) {
        EXPECT_EQ(qz_mbstrlen_ex(text.data(), 4), 4u) << hex(text);
    }
    EXPECT_EQ(qz_mbstrlen_ex("\xED\x9F\xBF", 3), 1u);
    EXPECT_EQ(qz_mbstrlen_ex("\xF4\x8F\xBF\xBF", 4), 1u);
}

// Each pair of bytes in every place of a block and across its edge, where the vector path carries state over.
TEST(Utf8Characters, EveryPairAroundTheEdgeOfABlock) {
    const ServerCharset server(kUtf8);
    Converter converter(kUtf8);
    for (const size_t front : {size_t{13}, size_t{14}, size_t{15}, size_t{30}, size_t{62}, size_t{63}}) {
        for (uint32_t first = 0x7F; first < 256; ++first) {
            for (uint32_t second = 0x7F; second < 256; second += 3) {
                for (const std::string_view behind : {"", "\x80", "\xBF\x80", "z"}) {
                    std::string text = "\xC3\xA9" + std::string(front - 2, 'a');
                    const std::string middle = {static_cast<char>(first), static_cast<char>(second)};
                    text += middle;
                    text += behind;
                    const size_t expected = front - 1 + converter.cut(text.substr(front)).size();
                    ASSERT_EQ(qz_mbstrlen_ex(text.data(), size_of(text)), expected) << front << ": " << hex(text.substr(front));
                }
            }
        }
    }
}

TEST(Gb18030Characters, FourByteSequencesBySample) {
    const ServerCharset server(kGb18030);
    Converter converter(kGb18030);
    constexpr uint32_t all = 126 * 10 * 126 * 10;
    for (uint32_t i = 0; i < all; i += kFourByteStride) {
        const std::string text = {static_cast<char>(0x81 + i / 12600), static_cast<char>(0x30 + i / 1260 % 10),
                                  static_cast<char>(0x81 + i / 10 % 126), static_cast<char>(0x30 + i % 10)};
        ASSERT_EQ(qz_mbstrlen_ex(text.data(), 4), 1u) << hex(text);
        ASSERT_EQ(qz_mb_char_get_len(text.data()), 4u) << hex(text);
        // Converters know no character behind some of them, but never more than one.
        ASSERT_TRUE(converter.is_one_character(text) || !converter.decode(text)) << hex(text);
    }
    for (const std::string_view text : {"\x81\x30\x81\x40", "\x81\x30\x30\x81", "\x81\x39\x80\x30", "\x81\x30\xFF\x30"}) {
        EXPECT_EQ(qz_mb_char_get_len_ex(text.data(), 4), 1u) << hex(text);
        EXPECT_EQ(qz_mbstrlen_ex(text.data(), 4), converter.cut(text).size()) << hex(text);
    }
}

// ---- Every service against the text cut by ICU, at the edge of an unreadable page -------------------------------------------

struct Cut {
    std::vector<std::string> pieces;
    std::vector<uint32_t> starts;  // and the length behind the last
    uint32_t tail;                 // bytes at the end that begin a character and do not complete it

    uint32_t count() const { return static_cast<uint32_t>(pieces.size()); }
    uint32_t start(uint64_t n) const { return starts[std::min<uint64_t>(n, count())]; }
};

bool can_be_completed(Converter& converter, const std::string& bytes, uint32_t charset) {
    const std::string fillers = charset == kUtf8.number ? "\x80\x90\xA0\xBF" : "\x30\x81\xA1";
    if (bytes.size() > 1 && converter.is_one_character(bytes)) return true;
    if (bytes.size() >= Converter::kLongest) return false;
    for (const char filler : fillers) {
        if (can_be_completed(converter, bytes + filler, charset)) return true;
    }
    return false;
}

// Whether the bytes begin a character and do not complete it.
bool is_cut_off(Converter& converter, const std::string& bytes, uint32_t charset) {
    for (size_t length = 1; length <= bytes.size(); ++length) {
        if (converter.is_one_character(bytes.substr(0, length))) return false;
    }
    return can_be_completed(converter, bytes, charset);
}

Cut cut_text(Converter& converter, const std::string& text, uint32_t charset) {
    Cut cut{converter.cut(text), {0}, 0};
    for (const std::string& piece : cut.pieces) cut.starts.push_back(cut.starts.back() + size_of(piece));
    for (uint32_t bytes = std::min<uint32_t>(3, size_of(text)); bytes > 0 && cut.tail == 0; --bytes) {
        const uint32_t at = size_of(text) - bytes;
        const bool is_start = std::find(cut.starts.begin(), cut.starts.end(), at) != cut.starts.end();
        if (is_start && is_cut_off(converter, text.substr(at), charset)) cut.tail = bytes;
    }
    return cut;
}

class PassingTest : public CharactersTest {
  protected:
    // Passing n characters, and m more.
    void check(const char* at, uint32_t len, const Cut& cut, uint32_t n, uint32_t m) {
        SCOPED_TRACE(n);
        ASSERT_EQ(qz_mbget_bytelen(at, len, n), cut.start(n));
        ASSERT_EQ(qz_mbget_byte_offset(at, len, n), n < cut.count() ? cut.start(n) : QZ_MB_NONE);
        uint32_t bytes = 99;
        ASSERT_EQ(qz_mbsninc_count_ex(at, len, n, m, &bytes), at + cut.start(n));
        ASSERT_EQ(bytes, cut.start(uint64_t{n} + m) - cut.start(n)) << m;
        bool sound = true;
        for (uint32_t i = 0; i < std::min(n, cut.count()); ++i) sound &= converter_.is_well_formed(cut.pieces[i]);
        uint32_t rest = 99;
        ASSERT_EQ(qz_mbsninc_ex(at, len, n, &rest), sound ? at + cut.start(n) : nullptr);
        ASSERT_EQ(rest, sound ? len - cut.start(n) : 0);
    }
};

INSTANTIATE_TEST_SUITE_P(Charsets, PassingTest, testing::ValuesIn(kCharsets), name_of_charset);

// Around the length that a word has bits for, and far above it.
TEST_P(PassingTest, EveryNumberOfCharactersOfTextsOfEveryLength) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomTexts texts(GetParam(), converter_, seed);
    support::TextAtPageEnd guard(4096);
    for (uint32_t length = 0; length < 140; ++length) {
        for (int round = 0; round < kRoundsOfLength; ++round) {
            std::string text;
            while (text.size() < length) text += texts.next(length);
            // Of many a last character lacks bytes.
            text.resize(length);
            SCOPED_TRACE(hex(text));
            const Cut cut = cut_text(converter_, text, GetParam().number);
            const char* at = guard.place(text);
            for (uint32_t n = 0; n <= cut.count() + 1; ++n) {
                check(at, length, cut, n, texts.below(cut.count() + 2));
                if (HasFatalFailure()) return;
            }
            for (const uint32_t n : {63u, 64u, 65u, 127u, 1u << 31, UINT32_MAX}) check(at, length, cut, n, 1);
            if (HasFatalFailure()) return;
        }
    }
}

TEST_P(PassingTest, ManyTextsAreCountedAndPassedAsEachIs) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomTexts texts(GetParam(), converter_, seed);
    uint32_t left = 0;
    uint32_t refused = 0;
    for (int round = 0; round < kRandomTexts / 20; ++round) {
        const uint32_t rows = texts.below(60);
        std::vector<std::string> kept;
        std::vector<bdta3_colstr> slots;
        std::vector<uint8_t> valid;
        for (uint32_t i = 0; i < rows; ++i) kept.push_back(texts.next(texts.below(8) == 0 ? 100 : 20));
        for (std::string& text : kept) {
            valid.push_back(texts.below(5) == 0 ? 0 : 255);
            // Nobody reads what stands in a row that is NULL.
            slots.push_back({size_of(text), 7, valid.back() == 0 ? reinterpret_cast<char*>(6) : text.data()});
        }
        std::vector<uint32_t> counts(rows, 99);
        std::vector<bdta3_colstr> rests(rows);
        const uint32_t n = texts.below(10) == 0 ? texts.below(100) : texts.below(6);
        host_count_characters(counts.data(), rows, slots.data(), valid.data());
        host_pass_characters(rests.data(), rows, slots.data(), valid.data(), n);
        for (uint32_t i = 0; i < rows; ++i) {
            SCOPED_TRACE(hex(kept[i]));
            uint32_t rest = 0;
            const char* const behind = valid[i] == 0 ? nullptr : qz_mbsninc_ex(kept[i].data(), size_of(kept[i]), n, &rest);
            ASSERT_EQ(counts[i], valid[i] == 0 ? 0 : qz_mbstrlen_ex(kept[i].data(), size_of(kept[i])));
            ASSERT_EQ(rests[i].bytes, behind);
            ASSERT_EQ(rests[i].len, rest);
            ASSERT_EQ(rests[i].blank, 0u);
            left += rest != 0;
            refused += valid[i] != 0 && behind == nullptr;
        }
    }
    EXPECT_GT(left, 100u);
    EXPECT_GT(refused, 10u);
}

TEST_P(PassingTest, ServicesAgreeWithTheTextCutByIcu) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomTexts texts(GetParam(), converter_, seed);
    support::TextAtPageEnd guard(4096);
    support::TextAtPageEnd positions_guard(4096 * sizeof(int32_t));
    for (int round = 0; round < kRandomTexts; ++round) {
        const std::string text = texts.next(round % 10 == 0 ? 200 : 30);
        const uint32_t len = size_of(text);
        const Cut cut = cut_text(converter_, text, GetParam().number);
        SCOPED_TRACE(hex(text));
        const char* at = guard.place(text);

        ASSERT_EQ(qz_mbstrlen_ex(at, len), cut.count());

        int32_t* positions = reinterpret_cast<int32_t*>(positions_guard.room(len * sizeof(int32_t)));
        uint32_t multibyte = 0;
        ASSERT_EQ(qz_mbstrlen_cposition_ex(at, len, positions, &multibyte), cut.count());
        uint32_t longer = 0;
        for (uint32_t i = 0; i < cut.count(); ++i) {
            ASSERT_EQ(positions[i], static_cast<int32_t>(cut.starts[i] + 1)) << i;
            longer += cut.pieces[i].size() > 1;
        }
        ASSERT_EQ(multibyte, longer);
        if (cut.count() < len) {
            ASSERT_EQ(positions[cut.count()], INT32_MAX);
        }
        ASSERT_EQ(qz_translate_from_str_has_mb(at, len) != 0, longer > 0);

        uint32_t tail = 99;
        const uint32_t whole = qz_mbstrlen_end(at, len, &tail);
        ASSERT_EQ(tail, cut.tail);
        ASSERT_EQ(whole, cut.count() - cut.tail) << "each byte of the tail is a character in the count of all";

        const char* second = qz_mbsinc_ex(at, len);
        ASSERT_EQ(second, cut.count() > 1 ? at + cut.starts[1] : nullptr);

        const uint32_t n = texts.below(cut.count() + 3);
        check(at, len, cut, n, texts.below(cut.count() + 3));
        if (HasFatalFailure()) return;

        for (uint32_t i = 0; i < cut.count(); ++i) {
            const uint32_t left = len - cut.starts[i];
            const bool cut_off = is_cut_off(converter_, text.substr(cut.starts[i]), GetParam().number);
            const uint32_t expected = cut_off ? QZ_MB_NONE : size_of(cut.pieces[i]);
            ASSERT_EQ(qz_mb_char_get_len_ex(at + cut.starts[i], left), expected) << i;
        }

        uint32_t limit = texts.below(len + 3);
        uint32_t chars = 99;
        uint32_t expected_chars = 0;
        while (expected_chars < cut.count() - cut.tail && cut.starts[expected_chars + 1] <= limit) ++expected_chars;
        qz_mbget_valid_chars(at, len, &chars, &limit);
        ASSERT_EQ(chars, expected_chars);
        ASSERT_EQ(limit, cut.starts[expected_chars]);

        for (uint32_t i = 0; i <= len; ++i) {
            uint32_t next = 99;
            const auto found = std::lower_bound(cut.starts.begin(), cut.starts.end(), i);
            const bool is_start = i < len && *found == i;
            ASSERT_EQ(qz_char_start(at, len, i, &next) != 0, is_start) << i;
            ASSERT_EQ(next, *found) << i;
        }
    }
}

TEST_P(CharactersTest, ReversalKeepsCharactersWhole) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    RandomTexts texts(GetParam(), converter_, seed);
    support::TextAtPageEnd guard(4096);
    int refused = 0;
    for (int round = 0; round < kRandomTexts; ++round) {
        const std::string text = texts.next(round % 10 == 0 ? 200 : 30);
        SCOPED_TRACE(hex(text));
        const std::vector<std::string> pieces = converter_.cut(text);
        const bool malformed = !std::all_of(pieces.begin(), pieces.end(),
                                            [&](const std::string& piece) { return converter_.is_well_formed(piece); });
        std::string reversed;
        for (auto piece = pieces.rbegin(); piece != pieces.rend(); ++piece) reversed += *piece;
        char* at = guard.place(text);
        char* answer = qz_mbsrev_ex(at, size_of(text));
        ASSERT_EQ(answer, malformed ? nullptr : at);
        ASSERT_EQ(std::string_view(at, text.size()), malformed ? text : reversed);
        at = guard.place(text);
        ASSERT_EQ(qz_mbsrev_with_compatible_mode(at, size_of(text)), malformed ? EC_CHAR_INVALID : 0);
        ASSERT_EQ(std::string_view(at, text.size()), malformed ? text : reversed);
        if (!malformed) {
            ASSERT_EQ(qz_mbsrev_ex(at, size_of(text)), at);
            ASSERT_EQ(std::string_view(at, text.size()), text);
        }
        refused += malformed;
    }
    EXPECT_GT(refused, 0);
    EXPECT_LT(refused, kRandomTexts);
}

TEST(Characters, AnyOtherNumberOfTheParameterIsUtf8) {
    host_parameter_set(SERVER_CHARSET, 7);
    EXPECT_EQ(qz_mbstrlen_ex("\xE4\xB8\xAD", 3), 1u);
    host_parameters_reset();
}

TEST(Characters, EmptyTexts) {
    uint32_t out = 99;
    EXPECT_EQ(qz_mbstrlen_ex(nullptr, 0), 0u);
    EXPECT_EQ(qz_mbstrlen_cposition_ex(nullptr, 0, nullptr, &out), 0u);
    EXPECT_EQ(out, 0u);
    EXPECT_EQ(qz_mbsinc_ex(nullptr, 0), nullptr);
    EXPECT_EQ(qz_mbget_bytelen(nullptr, 0, 3), 0u);
    EXPECT_EQ(qz_mbget_byte_offset(nullptr, 0, 0), QZ_MB_NONE);
    EXPECT_EQ(qz_mb_char_get_len_ex(nullptr, 0), QZ_MB_NONE);
    EXPECT_EQ(qz_mbsncmp_f(nullptr, nullptr, 0), 0);
    EXPECT_EQ(qz_char_start(nullptr, 0, 0, &out), 0);
    EXPECT_EQ(out, 0u);
    EXPECT_EQ(qz_mbsrev_with_compatible_mode(nullptr, 0), 0);
}

TEST(Characters, BytesCompareAsUnsignedNumbers) {
    EXPECT_EQ(qz_mbsncmp_f("abc", "abd", 2), 0);
    EXPECT_LT(qz_mbsncmp_f("abc", "abd", 3), 0);
    EXPECT_GT(qz_mbsncmp_f("\xE4", "z", 1), 0);
    EXPECT_NE(qz_mbsncmp_f("A", "a", 1), 0);
}

}  // namespace
