// What the cases cannot tell of instr and instrb: rows that take the last row's value over, texts and patterns that are folded
// where they stand, where a constant text is read, and every failure with what it leaves behind.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "qzbifun/codes.h"
#include "qzbifun/qzbifun.h"
#include "tests/support/host.h"
#include "tests/support/log_lines.h"
#include "tests/support/vector.h"

namespace {

using support::Constant;
using support::Host;
using support::Text;
using support::Vector;

class Instr : public ::testing::Test {
  protected:
    Instr() { set_case_sensitive(1); }
    ~Instr() override { bifun_dll_var_init(0, 0, 0); }

    static void set_case_sensitive(uint32_t on) { bifun_dll_var_init(0, 1, on); }

    template <class F, class... X>
    int32_t call(F* function, const Vector& result, X*... x) {
        host_.clear_errors();
        return function(host_.env(), host_.mem(), x..., result.col(), result.rows());
    }

    // The call with its n-th allocation failing, counted from 0, and all behind it.
    template <class F, class... X>
    int32_t exhausted(int64_t n, F* function, const Vector& result, X*... x) {
        host_.clear_errors();
        host_memory_fail_after(n);
        const int32_t code = function(host_.env(), host_.mem(), x..., result.col(), result.rows());
        host_memory_fail_after(-1);
        return code;
    }

    Vector texts(std::initializer_list<std::optional<Text>> values) { return Vector::of<Text>(host_, values); }
    Vector results(uint32_t rows) { return Vector::result<int32_t>(host_, rows); }
    std::string stack() const { return print(host_.errors()); }

    Host host_;
};

Constant text_constant(const std::string& bytes, uint32_t blank = 0) { return Constant::of(Text{bytes, blank}); }
Constant number(int32_t value) { return Constant::of(value); }

// ---- Rows that repeat -------------------------------------------------------------------------------------------------------

TEST_F(Instr, ARowLikeTheLastComputedOneTakesItsValueOver) {
    const Vector text = texts({Text{"ab", 3}, Text{"ab", 0}, Text{"ab", 0}, Text{"x", 0}, Text{"ab", 0}});
    const Vector pattern = texts({Text{"", 2}, Text{"", 2}, Text{"b", 0}, Text{"x", 0}, Text{"", 2}});
    const Vector result = results(5);
    ASSERT_EQ(call(binstr_def2_aa_str, result, text.col(), pattern.col()), 0);
    EXPECT_EQ(result.get<int32_t>(0), 3);
    EXPECT_EQ(result.get<int32_t>(1), 3) << "equal up to blanks";
    EXPECT_EQ(result.get<int32_t>(2), 2) << "another pattern";
    EXPECT_EQ(result.get<int32_t>(4), 0) << "computed: the last row was another";
}

TEST_F(Instr, ARowThatRepeatsANullIsNull) {
    const Vector text = texts({Text{"", 0}, Text{"", 3}, Text{"a", 0}, Text{"", 3}, Text{"", 0}});
    const Vector pattern = texts({Text{" ", 0}, Text{" ", 0}, Text{"a", 0}, Text{"", 1}, Text{"", 1}});
    const Vector result = results(5);
    ASSERT_EQ(call(binstr_def2_aa_str, result, text.col(), pattern.col()), 0);
    EXPECT_EQ(result.valid(0), 0);
    EXPECT_EQ(result.valid(1), 0) << "blanks equal an empty text";
    EXPECT_EQ(result.valid(2), 1);
    EXPECT_EQ(result.get<int32_t>(3), 1);
    EXPECT_EQ(result.get<int32_t>(4), 1) << "an empty text equals blanks";
    EXPECT_EQ(result.valid(4), 1);
    EXPECT_EQ(result.col()->all_valid, 0u);
}

TEST_F(Instr, ARepeatedRowHasTheValidByteOfTheFirst) {
    const Vector text = texts({Text{"ab", 0}, Text{"zz", 0}, Text{"ab", 1}});
    const Vector pattern = texts({Text{"b", 0}, Text{"z", 0}, Text{"b", 0}});
    text.col()->data->valid[0] = 6;
    pattern.col()->data->valid[0] = 3;
    text.col()->data->valid[1] = 0;
    const Vector result = results(3);
    ASSERT_EQ(call(binstr_def2_aa_str, result, text.col(), pattern.col()), 0);
    EXPECT_EQ(result.valid(0), 2);
    EXPECT_EQ(result.valid(1), 0);
    EXPECT_TRUE(result.value_untouched(1));
    EXPECT_EQ(result.valid(2), 2) << "a NULL row between them is not a row that was computed";
    EXPECT_EQ(result.get<int32_t>(2), 2);
}

// ---- Folding ----------------------------------------------------------------------------------------------------------------

// What a constant holds after a call with a pattern of 2 or 60 bytes.
std::string pattern_after(const std::function<void(bdta3_scalar*)>& call, const std::string& bytes) {
    Constant pattern = text_constant(bytes);
    call(pattern.scalar());
    const nstr* value = reinterpret_cast<const nstr*>(pattern.scalar());
    return std::string(bytes.size() <= NSTR_INLINE_BYTES ? value->nstr_inline : value->nstr_ext, value->len);
}

TEST_F(Instr, OnlyInstrWithAStartFoldsThePatternOfTheCaller) {
    set_case_sensitive(0);
    const Vector text = texts({Text{"xaB", 0}});
    const Vector result = results(1);
    Constant two = number(2);
    Constant one = number(1);
    Constant back = number(-1);
    for (const std::string& bytes : {std::string("aB"), "aB" + std::string(58, 'C')}) {
        const std::string lower = bytes == "aB" ? "ab" : "ab" + std::string(58, 'c');
        const auto after = [&](auto* function, bdta3_scalar* start) {
            return pattern_after(
                [&](bdta3_scalar* pattern) { ASSERT_EQ(call(function, result, text.col(), pattern, start, one.scalar()), 0); },
                bytes);
        };
        EXPECT_EQ(after(binstr_avvv_str, two.scalar()), lower);
        EXPECT_EQ(after(binstr_avvv_str, back.scalar()), bytes);
        EXPECT_EQ(after(binstr_avvv_str, one.scalar()), bytes);
        EXPECT_EQ(after(binstrb_avvv_str, two.scalar()), bytes);
        EXPECT_EQ(after(binstrb_avvv_str, back.scalar()), bytes);
        const auto of_three = [&](bdta3_scalar* pattern) {
            ASSERT_EQ(call(binstr_def1_avv_str, result, text.col(), pattern, two.scalar()), 0);
        };
        EXPECT_EQ(pattern_after(of_three, bytes), lower);
        const auto of_two = [&](bdta3_scalar* pattern) {
            ASSERT_EQ(call(binstrb_def2_av_str, result, text.col(), pattern), 0);
        };
        EXPECT_EQ(pattern_after(of_two, bytes), bytes);
    }
}

TEST_F(Instr, OnlyInstrbWithAPatternOfBlanksFoldsTheTextsOfTheCaller) {
    set_case_sensitive(0);
    Constant blanks = text_constant("", 2);
    Constant letter = text_constant("b");
    const Vector result = results(2);
    const auto text_after = [&](auto* function, Constant& pattern) {
        const Vector text = texts({Text{"ab", 2}, Text{"q", 0}});
        EXPECT_EQ(call(function, result, text.col(), pattern.scalar()), 0);
        return text.get<Text>(0).bytes + text.get<Text>(1).bytes;
    };
    EXPECT_EQ(text_after(binstrb_def2_av_str, blanks), "ABq") << "the second is shorter than the pattern";
    EXPECT_EQ(text_after(binstrb_def2_av_str, letter), "abq");
    EXPECT_EQ(text_after(binstr_def2_av_str, blanks), "abq");
    EXPECT_EQ(text_after(binstr_def2_av_str, letter), "abq");
}

// ---- Where a constant text is read ------------------------------------------------------------------------------------------

TEST_F(Instr, AConstantTextIsReadThroughThePointer) {
    nstr text{};
    text.has_value = 1;
    text.len = 3;
    std::memcpy(text.nstr_inline, "abc", 3);
    char elsewhere[] = "xyb";
    text.nstr_ext = elsewhere;
    const Vector pattern = texts({Text{"b", 0}, Text{"a", 0}});
    const Vector result = results(2);
    auto* const scalar = reinterpret_cast<bdta3_scalar*>(&text);
    ASSERT_EQ(call(binstr_def2_va_str, result, scalar, pattern.col()), 0);
    EXPECT_EQ(result.get<int32_t>(0), 3);
    EXPECT_EQ(result.get<int32_t>(1), 0);
    text.nstr_ext = nullptr;
    ASSERT_EQ(call(binstr_def2_va_str, result, scalar, pattern.col()), 0);
    EXPECT_EQ(result.get<int32_t>(0), 2) << "without a pointer the text is where short ones are";
}

TEST_F(Instr, NullConstantsAreTheValuesThatTheirRecordsHold) {
    const Vector text = texts({Text{"abcb", 0}});
    const Vector result = results(1);
    Constant pattern = text_constant("b");
    Constant start = number(3);
    Constant occurrence = number(1);
    for (Constant* constant : {&pattern, &start, &occurrence}) constant->scalar()->has_value = 0;
    ASSERT_EQ(call(binstr_avvv_str, result, text.col(), pattern.scalar(), start.scalar(), occurrence.scalar()), 0);
    EXPECT_EQ(result.get<int32_t>(0), 4);
    EXPECT_EQ(result.col()->all_valid, 1u);
}

// ---- Memory that is not there -----------------------------------------------------------------------------------------------

TEST_F(Instr, ATextThatCannotBeWrittenOutIsReportedInThreeWays) {
    std::vector<int32_t> log;
    const Vector text = texts({Text{"ab", 0}});
    Constant pattern = text_constant("b");
    Constant back = number(-1);
    Constant one = number(1);
    const auto code_of = [&](auto* function, int64_t n) {
        const Vector result = results(1);
        const support::LogLines lines;
        const int32_t code = exhausted(n, function, result, text.col(), pattern.scalar(), back.scalar(), one.scalar());
        log = lines.codes();
        EXPECT_EQ(result.valid(0), 0);
        EXPECT_EQ(result.get<int32_t>(0), 0);
        EXPECT_EQ(stack(), "empty");
        EXPECT_EQ(host_.outstanding(), 0u);
        return code;
    };
    EXPECT_EQ(code_of(binstr_avvv_str, 0), EC_OUT_OF_MEMORY);
    EXPECT_EQ(log, std::vector<int32_t>{EC_OUT_OF_MEMORY});
    EXPECT_EQ(code_of(binstrb_avvv_str, 0), EC_OUT_OF_MEMORY);
    EXPECT_TRUE(log.empty());
    // The array of character positions comes next, and is told alike.
    EXPECT_EQ(code_of(binstr_avvv_str, 1), EC_OUT_OF_MEMORY);
    EXPECT_EQ(code_of(binstrb_avvv_str, 1), EC_OUT_OF_MEMORY);
    EXPECT_TRUE(log.empty());
    set_case_sensitive(0);
    EXPECT_EQ(code_of(binstr_avvv_str, 0), EC_STRING_TOO_LONG);
    EXPECT_EQ(code_of(binstrb_avvv_str, 0), EC_OUT_OF_MEMORY);
    EXPECT_TRUE(log.empty());
    EXPECT_EQ(code_of(binstr_avvv_str, 1), EC_OUT_OF_MEMORY);
}

TEST_F(Instr, RowsBelowAndAboveAFailureStand) {
    const Vector text = texts({Text{"ab", 0}, Text{"\xC3", 0}, Text{"cb", 0}});
    Constant pattern = text_constant("b");
    Constant back = number(-1);
    const Vector result = results(3);
    EXPECT_EQ(call(binstr_def1_avv_str, result, text.col(), pattern.scalar(), back.scalar()), EC_STRING_TOO_LONG);
    EXPECT_EQ(result.get<int32_t>(0), 2);
    EXPECT_EQ(result.valid(0), 1);
    EXPECT_EQ(result.get<int32_t>(1), 0);
    EXPECT_EQ(result.valid(1), 0);
    EXPECT_TRUE(result.value_untouched(2));
    EXPECT_TRUE(result.valid_untouched(2));
    EXPECT_EQ(stack(), "empty");
    EXPECT_EQ(host_.outstanding(), 0u);
}

// The positions of a text of 256 bytes or more, which a pattern with blanks needs, and a folded text too long for the frame:
// nothing is pushed.
TEST_F(Instr, MemoryOfARowThatIsNotThereFailsTheRowAlone) {
    const Vector long_text = texts({Text{std::string(255, 'c') + "a", 2}});
    const Vector short_text = texts({Text{std::string(254, 'c') + "a", 2}});
    Constant pattern = text_constant("a", 2);
    Constant two = number(2);
    Constant one = number(1);
    for (auto* function : {binstr_avvv_str, binstrb_avvv_str}) {
        const Vector result = results(1);
        EXPECT_EQ(exhausted(0, function, result, long_text.col(), pattern.scalar(), two.scalar(), one.scalar()),
                  EC_OUT_OF_MEMORY);
        EXPECT_EQ(result.valid(0), 0);
        EXPECT_EQ(result.get<int32_t>(0), 0);
        EXPECT_EQ(stack(), "empty");
        EXPECT_EQ(exhausted(0, function, result, short_text.col(), pattern.scalar(), two.scalar(), one.scalar()), 0);
        EXPECT_EQ(result.get<int32_t>(0), 255);
    }
    set_case_sensitive(0);
    Constant letter = text_constant("A");
    for (const uint32_t bytes : {256u, 257u}) {
        const Vector text = texts({Text{std::string(bytes, 'a'), 0}});
        const Vector result = results(1);
        EXPECT_EQ(exhausted(0, binstrb_def2_av_str, result, text.col(), letter.scalar()), bytes == 256 ? 0 : EC_OUT_OF_MEMORY);
        EXPECT_EQ(result.valid(0), bytes == 256);
        EXPECT_EQ(stack(), "empty");
        EXPECT_EQ(exhausted(0, binstr_def2_av_str, result, text.col(), letter.scalar()), 0) << "32768 bytes stand in the frame";
    }
}

TEST_F(Instr, TablesThatAreNotThereFailTheCall) {
    const Vector text = texts({Text{std::string(300, 'a'), 0}});
    Constant pattern = text_constant(std::string(257, 'a'));
    Constant two = number(2);
    const Vector result = results(1);
    for (auto* function : {binstr_def2_av_str, binstrb_def2_av_str}) {
        EXPECT_EQ(exhausted(0, function, result, text.col(), pattern.scalar()), EC_OUT_OF_MEMORY);
        EXPECT_TRUE(result.valid_untouched(0));
        EXPECT_EQ(stack(), "empty");
    }
    for (auto* function : {binstr_def1_avv_str, binstrb_def1_avv_str}) {
        EXPECT_EQ(exhausted(0, function, result, text.col(), pattern.scalar(), two.scalar()), EC_OUT_OF_MEMORY);
        EXPECT_TRUE(result.valid_untouched(0));
        EXPECT_EQ(stack(), "empty");
    }
    Constant blanks = text_constant("", 49);
    EXPECT_EQ(exhausted(0, binstr_def2_av_str, result, text.col(), blanks.scalar()), EC_OUT_OF_MEMORY) << "blanks written out";
    EXPECT_EQ(stack(), "empty");
}

TEST_F(Instr, AConstantTextReportsEachOfItsAllocations) {
    const Vector result = results(1);
    Constant blank_text = text_constant("", 100);
    const Vector letter = texts({Text{"b", 0}});
    EXPECT_EQ(exhausted(0, binstr_def2_va_str, result, blank_text.scalar(), letter.col()), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "-503 binstr_def2_va_str");
    EXPECT_TRUE(result.valid_untouched(0));

    Constant text = text_constant("x" + std::string(300, 'a'));
    const Vector long_pattern = texts({Text{std::string(257, 'a'), 0}});
    EXPECT_EQ(exhausted(0, binstr_def2_va_str, result, text.scalar(), long_pattern.col()), 0) << "no memory for its table";
    EXPECT_EQ(result.get<int32_t>(0), 0);
    EXPECT_EQ(result.valid(0), 1);
    EXPECT_EQ(stack(), "empty");
    EXPECT_EQ(call(binstr_def2_va_str, result, text.scalar(), long_pattern.col()), 0);
    EXPECT_EQ(result.get<int32_t>(0), 2);

    set_case_sensitive(0);
    EXPECT_EQ(exhausted(0, binstr_def2_va_str, result, text.scalar(), long_pattern.col()), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "-503 binstr_def2_va_str") << "the folded text";
    EXPECT_EQ(exhausted(1, binstr_def2_va_str, result, text.scalar(), long_pattern.col()), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "-503 binstr_def2_va_process") << "the folded pattern";
    EXPECT_EQ(result.get<int32_t>(0), 0);
    EXPECT_EQ(result.valid(0), 0);
    EXPECT_EQ(exhausted(2, binstr_def2_va_str, result, text.scalar(), long_pattern.col()), 0) << "the table";
    EXPECT_EQ(result.get<int32_t>(0), 0);
    EXPECT_EQ(stack(), "empty");
    EXPECT_EQ(host_.outstanding(), 0u);
}

TEST_F(Instr, APairThatRunsOutOfMemoryClearsItsRow) {
    const Vector text = texts({Text{"ab", 0}, Text{"x" + std::string(300, 'a'), 0}});
    const Vector pattern = texts({Text{"b", 0}, Text{std::string(257, 'a'), 0}});
    const Vector result = results(2);
    EXPECT_EQ(exhausted(0, binstr_def2_aa_str, result, text.col(), pattern.col()), EC_OUT_OF_MEMORY);
    EXPECT_EQ(result.get<int32_t>(0), 2);
    EXPECT_EQ(result.get<int32_t>(1), 0);
    EXPECT_EQ(result.valid(1), 0);
    EXPECT_EQ(stack(), "empty");
}

// ---- CLOBs ------------------------------------------------------------------------------------------------------------------

class InstrOfClob : public Instr {
  protected:
    InstrOfClob() : pattern_(texts({Text{"b", 0}})), result_(results(1)) { host_.open_session(); }
    ~InstrOfClob() override {
        host_lob_fail(HOST_LOB_LOOKUP, 0);
        host_lob_fail(HOST_LOB_READ, 0);
        host_lob_limit_read(UINT64_MAX);
    }

    // A locator of kind 1, 2 or 4.
    nstr* make(int32_t storage, const std::string& data) {
        locator_.resize(47 + data.size());
        uint32_t len = static_cast<uint32_t>(locator_.size());
        EXPECT_EQ(host_lob_make(host_.env(), storage, 1, data.data(), data.size(), locator_.data(), &len), 0);
        value_ = {};
        value_.has_value = 1;
        value_.len = len;
        if (len <= NSTR_INLINE_BYTES) std::memcpy(value_.nstr_inline, locator_.data(), len);
        value_.nstr_ext = reinterpret_cast<char*>(locator_.data());
        return &value_;
    }
    int32_t search(nstr* lob) {
        return call(binstr_def2_va_lob, result_, reinterpret_cast<bdta3_scalar*>(lob), pattern_.col());
    }

    std::vector<uint8_t> locator_;
    nstr value_{};
    Vector pattern_;
    Vector result_;
};

TEST_F(InstrOfClob, EachServiceThatFailsEndsTheCall) {
    for (const int32_t storage : {1, 2, 4, 2 + HOST_LOB_ENCIPHERED, 4 + HOST_LOB_ENCIPHERED}) {
        SCOPED_TRACE(storage);
        nstr* const lob = make(storage, "abc");
        EXPECT_EQ(search(lob), 0);
        EXPECT_EQ(result_.get<int32_t>(0), 2);
        const Vector untouched = results(1);
        const auto expect = [&](int32_t code) {
            EXPECT_EQ(call(binstr_def2_va_lob, untouched, reinterpret_cast<bdta3_scalar*>(lob), pattern_.col()), code);
            EXPECT_EQ(stack(), std::to_string(code) + " binstr_def2_va_lob");
            EXPECT_TRUE(untouched.valid_untouched(0));
            EXPECT_EQ(host_.outstanding(), 0u);
        };
        host_lob_fail(HOST_LOB_LOOKUP, -4711);
        expect(-4711);
        host_lob_fail(HOST_LOB_LOOKUP, 0);
        host_lob_fail(HOST_LOB_READ, -4712);
        expect(-4712);
        host_lob_fail(HOST_LOB_READ, 0);
        host_lob_limit_read(2);
        expect(EC_LOB_READ_FAILED);
        host_lob_limit_read(UINT64_MAX);
        host_env_close_session(host_.env());
        expect(EC_LOB_READ_FAILED);
        host_lob_fail(HOST_LOB_LOOKUP, -4711);
        expect(-4711);  // the look-up comes before the session
        host_lob_fail(HOST_LOB_LOOKUP, 0);
        host_.open_session();
    }
}

TEST_F(InstrOfClob, MemoryThatIsNotThere) {
    nstr* const lob = make(2, "x" + std::string(300, 'a'));
    auto* const scalar = reinterpret_cast<bdta3_scalar*>(lob);
    EXPECT_EQ(exhausted(0, binstr_def2_va_lob, result_, scalar, pattern_.col()), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "-503 binstr_def2_va_lob");
    EXPECT_TRUE(result_.valid_untouched(0));

    set_case_sensitive(0);
    const Vector long_pattern = texts({Text{std::string(257, 'a'), 0}});
    EXPECT_EQ(exhausted(1, binstr_def2_va_lob, result_, scalar, long_pattern.col()), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "-503 binstr_def2_va_process, -503 binstr_def2_va_lob");
    EXPECT_EQ(result_.valid(0), 0);
    EXPECT_EQ(result_.get<int32_t>(0), 0);
    EXPECT_EQ(exhausted(2, binstr_def2_va_lob, result_, scalar, long_pattern.col()), 0) << "the table's";
    EXPECT_EQ(result_.get<int32_t>(0), 0);
    EXPECT_EQ(call(binstr_def2_va_lob, result_, scalar, long_pattern.col()), 0);
    EXPECT_EQ(result_.get<int32_t>(0), 2);
    EXPECT_EQ(host_.outstanding(), 0u);
}

TEST_F(InstrOfClob, BytesThatAreNoLocator) {
    for (const uint32_t len : {1u, 46u, 47u, 48u}) {
        value_ = {};
        value_.has_value = 1;
        value_.len = len;
        value_.nstr_ext = value_.nstr_inline;
        std::memset(value_.nstr_inline, 0xFF, sizeof value_.nstr_inline);
        EXPECT_LT(search(&value_), 0) << len;
        EXPECT_EQ(host_.outstanding(), 0u);
    }
}

// ---- Texts and patterns longer than any string ------------------------------------------------------------------------------

TEST_F(Instr, LongerThanAnyString) {
    const std::string long_text = std::string(33998, 'a') + "b ";
    Constant two = number(2);
    Constant back = number(-1);
    Constant one = number(1);
    for (const uint32_t case_sensitive : {1u, 0u}) {
        SCOPED_TRACE(case_sensitive);
        set_case_sensitive(case_sensitive);
        const Vector text = texts({Text{long_text, 34000}, Text{"", 34000}, Text{"b", 0xFFFFFFFF}});
        const Vector result = results(3);
        for (const uint32_t letters : {1u, 33500u, 40000u}) {
            for (const uint32_t blank : {0u, 3u, 33000u}) {
                Constant pattern = text_constant(std::string(letters - 1, 'a') + "b", blank);
                for (auto* function : {binstr_def2_av_str, binstrb_def2_av_str}) {
                    EXPECT_EQ(call(function, result, text.col(), pattern.scalar()), 0);
                    const bool found = letters <= 33999;
                    EXPECT_EQ(result.get<int32_t>(0), found ? static_cast<int32_t>(34000 - letters) : 0);
                }
                for (auto* function : {binstr_avvv_str, binstrb_avvv_str}) {
                    EXPECT_LE(call(function, result, text.col(), pattern.scalar(), two.scalar(), one.scalar()), 0);
                    EXPECT_LE(call(function, result, text.col(), pattern.scalar(), back.scalar(), two.scalar()), 0);
                }
            }
        }
        Constant blanks = text_constant("", 33000);
        EXPECT_EQ(call(binstr_def2_av_str, result, text.col(), blanks.scalar()), 0);
        EXPECT_EQ(result.get<int32_t>(0), 34001);
        EXPECT_EQ(result.get<int32_t>(1), 1);
        EXPECT_EQ(call(binstr_avvv_str, result, text.col(), blanks.scalar(), two.scalar(), one.scalar()), 0);
        EXPECT_EQ(call(binstrb_avvv_str, result, text.col(), blanks.scalar(), two.scalar(), one.scalar()), 0);
        EXPECT_EQ(host_.outstanding(), 0u);
    }
}

}  // namespace
