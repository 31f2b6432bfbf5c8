// instr and instrb against a slow telling over lists of characters, on random texts of small alphabets.
//
// The telling follows the rules of the functions. Beside it stands the plain meaning, a search of both values written out, and
// each place where the two part on purpose is named and counted; where none of the names applies they must not part.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "qzbifun/codes.h"
#include "qzbifun/qzbifun.h"
#include "tests/support/host.h"
#include "tests/support/test_seed.h"
#include "tests/support/vector.h"

namespace {

using support::Constant;
using support::Host;
using support::Text;
using support::Vector;

using Characters = std::vector<std::string>;

std::string join(const Characters& characters) {
    std::string bytes;
    for (const std::string& character : characters) bytes += character;
    return bytes;
}

struct Value {
    Characters stored;
    uint32_t blank = 0;

    std::string bytes() const { return join(stored); }
    int64_t len() const { return static_cast<int64_t>(bytes().size()); }
    int64_t count() const { return static_cast<int64_t>(stored.size()); }
    int64_t total() const { return len() + blank; }
    Characters written_out() const {
        Characters all = stored;
        all.insert(all.end(), blank, " ");
        return all;
    }
    Text text() const { return {bytes(), blank}; }
};

std::string print(const Value& value) { return "[" + value.bytes() + "]+" + std::to_string(value.blank); }

// ---- A search of lists ------------------------------------------------------------------------------------------------------

bool stands_at(const Characters& text, const Characters& pattern, int64_t at) {
    const int64_t m = static_cast<int64_t>(pattern.size());
    return at >= 0 && at + m <= static_cast<int64_t>(text.size()) &&
           std::equal(pattern.begin(), pattern.end(), text.begin() + at);
}

// The index of the n-th place at or behind from; -1 when there is none.
int64_t nth_place(const Characters& text, const Characters& pattern, int64_t from, int64_t n) {
    for (int64_t at = from; at < static_cast<int64_t>(text.size()); ++at) {
        if (stands_at(text, pattern, at) && --n == 0) return at;
    }
    return -1;
}

// Of the n-th place at or in front of from, leftwards.
int64_t nth_place_leftwards(const Characters& text, const Characters& pattern, int64_t from, int64_t n) {
    for (int64_t at = std::min(from, static_cast<int64_t>(text.size()) - 1); at >= 0; --at) {
        if (stands_at(text, pattern, at) && --n == 0) return at;
    }
    return -1;
}

// Bytes in front of a character.
int64_t bytes_before(const Characters& text, int64_t index) {
    int64_t bytes = 0;
    for (int64_t i = 0; i < index; ++i) bytes += static_cast<int64_t>(text[static_cast<size_t>(i)].size());
    return bytes;
}

// The first character that begins at or behind byte offset; the number of characters when there is none.
int64_t first_character_from(const Characters& text, int64_t offset) {
    int64_t index = 0;
    while (index < static_cast<int64_t>(text.size()) && bytes_before(text, index) < offset) ++index;
    return index;
}

// The position of the character with that index, in characters or bytes.
int64_t position_of(const Characters& text, int64_t index, bool in_bytes) {
    return (in_bytes ? bytes_before(text, index) : index) + 1;
}

// ---- The plain meaning ------------------------------------------------------------------------------------------------------

int64_t plain(const Value& text, const Value& pattern, int64_t start, int64_t occurrence, bool in_bytes) {
    const Characters t = text.written_out();
    const Characters p = pattern.written_out();
    int64_t at;
    if (start < 0) {
        int64_t from = static_cast<int64_t>(t.size()) + start;
        if (in_bytes) {
            from = -1;
            const int64_t offset = bytes_before(t, static_cast<int64_t>(t.size())) + start;
            if (offset >= 0) from = first_character_from(t, offset + 1) - 1;
        }
        at = nth_place_leftwards(t, p, from, occurrence);
    } else {
        at = nth_place(t, p, in_bytes ? first_character_from(t, start - 1) : start - 1, occurrence);
    }
    return at < 0 ? 0 : position_of(t, at, in_bytes);
}

// ---- The rules --------------------------------------------------------------------------------------------------------------

using Answer = std::optional<int64_t>;  // nothing: NULL

bool are_blanks(const Characters& text, int64_t from, int64_t to) {
    return std::all_of(text.begin() + from, text.begin() + to, [](const std::string& character) { return character == " "; });
}

// Without a start.
Answer told_first(const Value& text, const Value& pattern, bool in_bytes) {
    if (text.total() == 0 || pattern.total() == 0) return std::nullopt;
    if (pattern.total() > text.total()) return 0;
    const int64_t blanks = pattern.blank;
    if (pattern.stored.empty()) {
        if (const int64_t at = nth_place(text.stored, pattern.written_out(), 0, 1); at >= 0) {
            return position_of(text.stored, at, in_bytes);
        }
        return text.blank >= blanks ? position_of(text.stored, text.count(), in_bytes) : 0;
    }
    for (int64_t n = 1;; ++n) {
        const int64_t at = nth_place(text.stored, pattern.stored, 0, n);
        if (at < 0) return 0;
        const int64_t end = at + pattern.count();
        const int64_t position = position_of(text.stored, at, in_bytes);
        if (blanks == 0) return position;
        if (end == text.count()) return text.blank >= blanks ? position : 0;
        const int64_t stored = std::min(blanks, text.count() - end);
        if (text.total() - bytes_before(text.stored, end) < blanks) return 0;
        if (are_blanks(text.stored, end, end + stored) && stored + text.blank >= blanks) return position;
    }
}

int64_t told_plain(const Value& text, const Value& pattern, int64_t start, int64_t occurrence, bool in_bytes) {
    const int64_t from = in_bytes ? first_character_from(text.stored, start - 1) : start - 1;
    const int64_t at = nth_place(text.stored, pattern.stored, from, occurrence);
    return at < 0 ? 0 : position_of(text.stored, at, in_bytes);
}

int64_t told_all_blank(const Value& text, const Value& pattern, int64_t start, int64_t occurrence, bool in_bytes) {
    const int64_t blanks = pattern.blank;
    const int64_t length = in_bytes ? text.len() : text.count();
    const auto implied = [&](int64_t needed, int64_t position) { return text.blank >= needed ? position : 0; };
    if (text.stored.empty()) return implied(start + blanks + occurrence - 2, start + occurrence - 1);
    const int64_t from = in_bytes ? first_character_from(text.stored, start - 1) : start - 1;
    if (from >= text.count()) {
        if (!in_bytes) return implied(start - length + blanks + occurrence - 2, start + occurrence - 1);
        const int64_t behind = start == length ? 1 : start - length;
        return implied(behind + blanks + occurrence - 2, behind + length + occurrence - 1);
    }
    if (const int64_t at = nth_place(text.stored, pattern.written_out(), from, occurrence); at >= 0) {
        return position_of(text.stored, at, in_bytes);
    }
    int64_t ending = 0;
    while (ending < text.count() - from && text.stored[static_cast<size_t>(text.count() - 1 - ending)] == " ") ++ending;
    if (occurrence == 1) ending = 0;
    return implied(blanks - ending + occurrence - 1, length - ending + occurrence);
}

// The loop with its byte, which is a number of characters at first in instr.
int64_t told_with_blank(const Value& text, const Value& pattern, int64_t start, int64_t occurrence, bool in_bytes) {
    const std::string t = text.bytes();
    const std::string p = pattern.bytes();
    const int64_t len = text.len();
    const int64_t blanks = pattern.blank;
    std::vector<int64_t> begins;
    for (int64_t i = 0; i < text.count(); ++i) begins.push_back(bytes_before(text.stored, i) + 1);
    const int64_t first = in_bytes ? first_character_from(text.stored, start - 1) : start - 1;
    if (first >= text.count()) return 0;
    int64_t real = begins[static_cast<size_t>(first)];  // where the rest begins
    int64_t byte = in_bytes ? real : start;             // and where it is taken to begin
    const int64_t least = (in_bytes ? byte + pattern.len() : byte + pattern.count()) + blanks + occurrence - 2;
    if (text.blank + (in_bytes ? len : text.count()) < least) return 0;
    const bool is_short = p.size() < 32;
    for (int64_t found = 0; found < occurrence;) {
        int64_t place = 0;
        int64_t left = is_short && in_bytes ? occurrence : 1;
        for (int64_t at = real; place == 0 && at + pattern.len() - 1 <= len; ++at) {
            const int64_t tested = is_short ? byte + at - real : at;
            const bool begins_character = std::find(begins.begin(), begins.end(), tested) != begins.end();
            if (begins_character && t.compare(static_cast<size_t>(at - 1), p.size(), p) == 0 && --left == 0)
                place = at - real + 1;
        }
        if (place == 0) return 0;
        const int64_t hit = byte + place - 1;
        // Bytes of a character that is not all there are characters.
        int64_t characters = 0;
        for (int64_t i = 0; i < text.count() && begins[static_cast<size_t>(i)] < hit; ++i) {
            const int64_t begin = begins[static_cast<size_t>(i)];
            const int64_t size = static_cast<int64_t>(text.stored[static_cast<size_t>(i)].size());
            characters += begin + size <= hit ? 1 : hit - begin;
        }
        const int64_t position = in_bytes ? hit : characters + 1;
        const int64_t end = hit + pattern.len() - 1;
        if (len < end + blanks) return len == end && found == occurrence - 1 && text.blank >= blanks ? position : 0;
        const size_t behind = static_cast<size_t>(real + place - 2 + pattern.len());
        const bool has_blanks = t.substr(behind, static_cast<size_t>(blanks)) == std::string(static_cast<size_t>(blanks), ' ');
        if (has_blanks && ++found == occurrence) return position;
        size_t next = has_blanks ? static_cast<size_t>(blanks) : 0;
        while (next < begins.size() && begins[next] <= hit) ++next;
        if (next >= begins.size()) return 0;
        byte = real = begins[next];
    }
    return 0;
}

Answer told(const Value& text, Value pattern, int64_t start, int64_t occurrence, bool heeds_case, bool in_bytes) {
    if (pattern.total() == 0) return std::nullopt;
    if (start == 0) return 0;
    if (start == 1 && occurrence == 1) return told_first(text, pattern, in_bytes);
    if (in_bytes ? text.total() == 0 : text.total() < pattern.total()) return 0;
    if (start < 0) {
        const bool lacks = pattern.len() > pattern.count() && text.count() + text.blank == text.len();
        return lacks && !in_bytes ? 0 : plain(text, pattern, start, occurrence, in_bytes);
    }
    if (!heeds_case) pattern = {pattern.written_out(), 0};
    if (pattern.stored.empty()) return told_all_blank(text, pattern, start, occurrence, in_bytes);
    if (pattern.blank != 0) return told_with_blank(text, pattern, start, occurrence, in_bytes);
    return told_plain(text, pattern, start, occurrence, in_bytes);
}

// ---- Where the rules part from the plain meaning ----------------------------------------------------------------------------

// The first name that applies; "" when none does, and the two agree.
std::string reason_to_part(const Value& text, const Value& pattern, int64_t start, int64_t occurrence, bool heeds_case,
                           bool in_bytes) {
    const bool first = start == 1 && occurrence == 1;
    const bool stored_blanks = !pattern.stored.empty() && pattern.stored.back() == " ";
    const bool multibyte = text.len() != text.count();
    if (text.total() == 0) return "an empty text is NULL or 0";
    if (start < 0) {
        const bool lacks = !in_bytes && pattern.len() > pattern.count() && text.count() + text.blank == text.len();
        return lacks ? "as many characters as stored bytes" : "";
    }
    const bool is_inside_last =
        in_bytes && multibyte && start < text.len() && start > bytes_before(text.stored, text.count() - 1) + 1;
    if (is_inside_last && pattern.stored.empty() && heeds_case)
        return "a start inside the last character is taken as it stands";
    if (text.blank == 0 && (first || pattern.blank == 0)) return "";
    if (!first && !heeds_case) return text.blank == 0 ? "" : "implied blanks are not seen when case is folded";
    if (pattern.stored.empty()) {
        if (text.blank == 0) return "";
        return "stored and implied blanks do not add up";
    }
    if (stored_blanks) return "stored blanks are not found in implied ones";
    if (first || pattern.blank == 0) return "";
    if (multibyte && !in_bytes) return "a character's number is taken for a byte";
    if (in_bytes && occurrence > 1) return "occurrences are counted twice";
    if (text.blank > 0) return "a hit near the end of the stored text ends the scan";
    return "";
}

// ---- Random values ----------------------------------------------------------------------------------------------------------

struct Alphabet {
    uint32_t charset;
    Characters letters;
};

const Alphabet kAlphabets[] = {
    {1, {"a", " "}},
    {1, {"a", "b", " "}},
    {1, {"a", "A", "b", "B", " "}},
    {1, {"a", "\u00e9", " "}},
    {1, {"\u00e9", "\u00c9", "\u00e8", "a"}},
    {1, {"\u4e2d", "\u6587", " ", "\U0001F600"}},
    {0, {"a", "\x81\x61", " "}},
    {0, {"0", "\x81\x30\x81\x30", "\x81\x61", "A"}},
    {2, {"a", "\xB0\xA1", "\xA1\xB0", " "}},
};

std::string upper(const std::string& letter) {
    if (letter == "\u00e9") return "\u00c9";
    if (letter == "\u00e8") return "\u00c8";
    return letter.size() == 1 && letter[0] >= 'a' && letter[0] <= 'z' ? std::string(1, static_cast<char>(letter[0] - 32))
                                                                      : letter;
}

Value folded(Value value) {
    for (std::string& letter : value.stored) letter = upper(letter);
    return value;
}

class InstrDifferential : public ::testing::Test {
  protected:
    InstrDifferential() : seed_(support::test_seed()), random_(seed_) {}
    ~InstrDifferential() override { bifun_dll_var_init(0, 0, 0); }

    uint32_t below(size_t n) { return static_cast<uint32_t>(random_() % n); }

    Value random_value(const Characters& letters, uint32_t most) {
        Value value;
        value.stored.resize(below(most + 1));
        for (std::string& letter : value.stored) letter = letters[below(letters.size())];
        value.blank = below(2) == 0 ? 0 : below(5);
        return value;
    }

    // Short patterns hit often; one of several is a piece of the text, long ones always are.
    Value random_pattern(const Characters& letters, const Value& text, bool is_long) {
        if (!is_long && (text.stored.empty() || below(3) != 0)) return random_value(letters, 3);
        Value pattern;
        const size_t most = is_long ? 40 : 4;
        const size_t size = std::min<size_t>(text.stored.size(), is_long ? 25 + below(most - 25) : 1 + below(most));
        const size_t at = below(text.stored.size() - size + 1);
        pattern.stored.assign(text.stored.begin() + static_cast<int64_t>(at),
                              text.stored.begin() + static_cast<int64_t>(at + size));
        pattern.blank = below(3);
        return pattern;
    }

    Vector vector_of(const std::vector<Value>& values) {
        Vector vector(host_, support::type_of<Text>(), static_cast<uint32_t>(values.size()));
        for (uint32_t i = 0; i < values.size(); ++i) {
            vector.set(i, support::to_cell(std::optional<Text>(values[i].text())), 1);
        }
        vector.col()->all_valid = 1;
        return vector;
    }

    template <class F, class... X>
    std::vector<Answer> call(F* function, size_t rows, X*... x) {
        const Vector result = Vector::result<int32_t>(host_, static_cast<uint32_t>(rows));
        EXPECT_EQ(function(host_.env(), host_.mem(), x..., result.col(), result.rows()), 0);
        EXPECT_EQ(result.overrun(), "");
        std::vector<Answer> answers;
        for (uint32_t i = 0; i < rows; ++i) {
            answers.push_back(result.valid(i) == 0 ? Answer() : Answer(result.get<int32_t>(i)));
        }
        return answers;
    }

    const uint32_t seed_;
    std::mt19937 random_;
    Host host_;
};

std::string print(const Answer& answer) { return answer ? std::to_string(*answer) : "NULL"; }

constexpr uint32_t kRows = 6;
#ifdef NDEBUG
constexpr int kRounds = 40000;
#else
constexpr int kRounds = 1500;
#endif

TEST_F(InstrDifferential, EveryFormOnRandomValues) {
    SCOPED_TRACE("seed " + std::to_string(seed_));
    std::map<std::string, int> parted;
    int hits = 0;
    int compared = 0;
    for (int round = 0; round < kRounds; ++round) {
        // One of eight looks for letters with a blank or two behind them in text that is full of them, one for a blank behind
        // text that ends in a long character, one backwards in texts of as many characters as stored bytes, one for a letter
        // with a blank behind long characters.
        const bool is_dense = round % 8 == 1;
        const bool is_blank = round % 8 == 3;
        const bool is_even = round % 8 == 5;
        const bool is_behind = round % 8 == 7;
        const Alphabet& alphabet = kAlphabets[is_dense               ? 0
                                              : is_blank             ? 5
                                              : is_even || is_behind ? 3
                                                                     : below(std::size(kAlphabets))];
        const support::Parameters charset(SERVER_CHARSET, alphabet.charset);
        const bool heeds_case = is_behind || below(3) != 0;
        bifun_dll_var_init(0, alphabet.charset, heeds_case);
        const bool is_long = round % 16 == 0;
        std::vector<Value> texts;
        for (uint32_t i = 0; i < kRows; ++i) texts.push_back(random_value(alphabet.letters, is_long ? 300 : 12));
        if (is_long && texts[0].stored.size() < 45) texts[0].stored.resize(45, "a");
        const Value pattern = is_dense    ? Value{{"a"}, 1 + below(2)}
                              : is_blank  ? Value{{}, 1}
                              : is_even   ? Value{{"\u00e9"}, 0}
                              : is_behind ? Value{{"a"}, 1}
                                          : random_pattern(alphabet.letters, texts[0], is_long);
        int64_t start = below(4) == 0 ? 1 : static_cast<int64_t>(below(30)) - 14;
        if (is_blank) start = std::max<int64_t>(texts[0].len() - 1, 0);
        if (is_even) start = -1 - static_cast<int64_t>(below(3));
        if (is_behind) start = 2 + static_cast<int64_t>(below(3));
        if (is_even) texts[0].blank = static_cast<uint32_t>(texts[0].len() - texts[0].count());
        const int64_t occurrence = below(2) == 0 ? 1 : 1 + below(4);

        const auto by_case = [&](const Value& value) { return heeds_case ? value : folded(value); };
        const auto check = [&](const std::vector<Answer>& answers, const auto& expected, const std::string& name) {
            for (uint32_t i = 0; i < kRows; ++i) {
                const Answer wanted = expected(i);
                ASSERT_EQ(print(answers[i]), print(wanted))
                    << name << ' ' << print(texts[i]) << ' ' << print(pattern) << ' ' << start << ' ' << occurrence
                    << (heeds_case ? "" : " folded") << ", charset " << alphabet.charset;
                hits += wanted.value_or(0) != 0;
            }
        };
        const auto check_plain = [&](const Answer& answer, const Value& text, int64_t from, int64_t n, bool in_bytes) {
            if (from == 0 || pattern.total() == 0) return;
            const int64_t meant = plain(by_case(text), by_case(pattern), from, n, in_bytes);
            ++compared;
            if (answer == meant) return;
            const std::string reason = reason_to_part(text, pattern, from, n, heeds_case, in_bytes);
            ASSERT_NE(reason, "") << print(text) << ' ' << print(pattern) << ' ' << from << ' ' << n << ": " << print(answer)
                                  << ", plainly " << meant;
            ++parted[reason];
        };

        Constant start_constant = Constant::of(static_cast<int32_t>(start));
        Constant occurrence_constant = Constant::of(static_cast<int32_t>(occurrence));
        for (const bool in_bytes : {false, true}) {
            const Vector column = vector_of(texts);
            Constant constant = Constant::of(pattern.text());
            const auto first = [&](uint32_t i) { return told_first(by_case(texts[i]), by_case(pattern), in_bytes); };
            check(call(in_bytes ? binstrb_def2_av_str : binstr_def2_av_str, kRows, column.col(), constant.scalar()), first,
                  "av");
            const auto from_start = [&](int64_t n) {
                return [&, n](uint32_t i) { return told(by_case(texts[i]), by_case(pattern), start, n, heeds_case, in_bytes); };
            };
            check(call(in_bytes ? binstrb_def1_avv_str : binstr_def1_avv_str, kRows, column.col(), constant.scalar(),
                       start_constant.scalar()),
                  from_start(1), "avv");
            check(call(in_bytes ? binstrb_avvv_str : binstr_avvv_str, kRows, column.col(), constant.scalar(),
                       start_constant.scalar(), occurrence_constant.scalar()),
                  from_start(occurrence), "avvv");
            for (uint32_t i = 0; i < kRows; ++i) {
                check_plain(first(i), texts[i], 1, 1, in_bytes);
                check_plain(from_start(occurrence)(i), texts[i], start, occurrence, in_bytes);
            }
        }

        // A pattern of each row, some equal to the one before up to blanks.
        std::vector<Value> patterns;
        for (uint32_t i = 0; i < kRows; ++i) patterns.push_back(random_pattern(alphabet.letters, texts[0], is_long));
        Constant constant_text = Constant::of(texts[0].text());
        const Vector pattern_column = vector_of(patterns);
        const std::vector<Answer> in_constant = call(binstr_def2_va_str, kRows, constant_text.scalar(), pattern_column.col());
        // A constant text of blanks is written out, so that stored blanks of a pattern are found in it.
        const Value searched = texts[0].stored.empty() ? Value{texts[0].written_out(), 0} : texts[0];
        for (uint32_t i = 0; i < kRows; ++i) {
            const Answer wanted = told_first(by_case(searched), by_case(patterns[i]), false);
            ASSERT_EQ(print(in_constant[i]), print(wanted)) << "va " << print(texts[0]) << ' ' << print(patterns[i]);
        }
        for (uint32_t i = 1; i < kRows; ++i) {
            if (below(3) != 0) continue;
            texts[i] = texts[i - 1];
            patterns[i] = patterns[i - 1];
            texts[i].blank = below(3);
        }
        const Vector text_column = vector_of(texts);
        const Vector new_patterns = vector_of(patterns);
        const std::vector<Answer> pairs = call(binstr_def2_aa_str, kRows, text_column.col(), new_patterns.col());
        const auto trimmed = [](const Value& value) {
            std::string bytes = value.bytes();
            bytes.erase(bytes.find_last_not_of(' ') + 1);
            return bytes;
        };
        std::optional<uint32_t> last;
        Answer answer;
        for (uint32_t i = 0; i < kRows; ++i) {
            const bool repeats =
                last && trimmed(texts[i]) == trimmed(texts[*last]) && trimmed(patterns[i]) == trimmed(patterns[*last]);
            if (!repeats) {
                last = i;
                answer = told_first(by_case(texts[i]), by_case(patterns[i]), false);
            } else if (answer != told_first(by_case(texts[i]), by_case(patterns[i]), false)) {
                ++parted["a repeated row takes the value over"];
            }
            ASSERT_EQ(print(pairs[i]), print(answer)) << "aa " << print(texts[i]) << ' ' << print(patterns[i]);
        }
        ASSERT_EQ(host_.outstanding(), 0u);
        if (HasFatalFailure()) return;
    }
    EXPECT_GT(hits, kRounds * 4);
    EXPECT_GT(compared, kRounds * 10);
    // Each of the reasons is there.
    for (const char* reason :
         {"an empty text is NULL or 0", "as many characters as stored bytes", "implied blanks are not seen when case is folded",
          "stored and implied blanks do not add up", "stored blanks are not found in implied ones",
          "a character's number is taken for a byte", "occurrences are counted twice",
          "a hit near the end of the stored text ends the scan", "a start inside the last character is taken as it stands",
          "a repeated row takes the value over"}) {
        EXPECT_GT(parted[reason], 0) << reason;
    }
}

}  // namespace
