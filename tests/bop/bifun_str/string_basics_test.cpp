// What the tables of cases cannot tell of concat, lengths, case, reverse, repeat and space: who reports what when memory runs
// out, the log, constants whose has_value has a low byte of 0.
#include <gtest/gtest.h>

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
using support::LogLine;
using support::LogLines;
using support::Text;
using support::Vector;

class StringBasics : public ::testing::Test {
  protected:
    ~StringBasics() override { host_memory_fail_after(-1); }

    Vector texts(std::initializer_list<std::optional<Text>> values) { return Vector::of<Text>(host_, values); }

    // The call, with so many allocations left.
    template <class F, class... Argument>
    int32_t call_with(int64_t allocations, F* function, const Vector& result, Argument*... argument) {
        host_.clear_errors();
        host_memory_fail_after(allocations);
        const int32_t code = function(host_.env(), host_.mem(), argument..., result.col(), result.rows());
        host_memory_fail_after(-1);
        return code;
    }

    // The first row is stored in the vector's own space; the second is long, and has a block that cannot be had.
    template <class F, class... Argument>
    void expect_second_row_exhausts(const std::string& stack, F* function, Argument*... argument) {
        const Vector result = Vector::result<Text>(host_, 3);
        EXPECT_EQ(call_with(1, function, result, argument...), EC_OUT_OF_MEMORY);
        EXPECT_EQ(print(host_.errors()), stack);
        EXPECT_NE(result.valid(0), 0);
        EXPECT_EQ(result.valid(1), 0);
        EXPECT_TRUE(result.valid_untouched(2));
        EXPECT_TRUE(result.value_untouched(2));
    }

    Host host_;
};

const Text kLong{std::string(5000, 'x'), 0};

TEST_F(StringBasics, WhoReportsExhaustion) {
    const Vector a = texts({Text{"a", 0}, kLong, Text{"c", 0}});
    const Vector b = texts({Text{"b", 0}, Text{"b", 0}, Text{"b", 0}});
    const Vector null = texts({std::nullopt, std::nullopt, std::nullopt});
    Constant constant = Constant::of(Text{"b", 0});
    expect_second_row_exhausts("-503 bconcat_aa_process", bconcat_aa_str, a.col(), b.col());
    expect_second_row_exhausts("-503 bconcat_aa_process", bconcat_aa_str, a.col(), null.col());
    expect_second_row_exhausts("-503 bconcat_aa_process", bconcat_aa_str, null.col(), a.col());
    expect_second_row_exhausts("-503 bconcat_av_process", bconcat_av_str, a.col(), constant.scalar());
    expect_second_row_exhausts("-503 bconcat_va_process", bconcat_va_str, constant.scalar(), a.col());
    Constant twice = Constant::of(int32_t{2});
    expect_second_row_exhausts("-503 brepeatstr_av_process", brepeatstr_av_str, a.col(), twice.scalar());
    expect_second_row_exhausts("empty", bupper_a_str, a.col());
    expect_second_row_exhausts("empty", blower_a_str, a.col());
    expect_second_row_exhausts("empty", binitcap_a_str, a.col());
    expect_second_row_exhausts("empty", breverse_a_str, a.col());
}

// A code of the store is not one of the call. The row is NULL: its slot does not hold its text.
TEST_F(StringBasics, NlsUpperGoesOnWithoutMemory) {
    const Vector a = texts({Text{"a", 0}, kLong, Text{"c", 2}});
    const Vector result = Vector::result<Text>(host_, 3);
    EXPECT_EQ(call_with(1, bnls_upper_a, result, a.col()), 0);
    EXPECT_EQ(print(host_.errors()), "empty");
    EXPECT_EQ(result.col()->all_valid, 0u);
    EXPECT_EQ(result.get<Text>(0), (Text{"A", 0}));
    EXPECT_EQ(result.valid(1), 0);
    EXPECT_EQ(result.get<Text>(2), (Text{"C", 2}));
    EXPECT_EQ(call_with(-1, bnls_upper_a, result, a.col()), 0);
    EXPECT_EQ(result.col()->all_valid, 1u);
    EXPECT_EQ(result.get<Text>(1).bytes, std::string(5000, 'X'));
    host_.mem()->free(host_.env(), host_.mem()->pool, result.slot(1).bytes);
}

TEST_F(StringBasics, AReversalThatFailsIsLoggedAndPushedNowhere) {
    const Vector a = texts({Text{"ab", 0}, Text{"a\xFF", 0}, Text{"c", 0}});
    const Vector result = Vector::result<Text>(host_, 3);
    const LogLines log;
    const int32_t code = breverse_a_str(host_.env(), host_.mem(), a.col(), result.col(), 3);
    EXPECT_EQ(code, EC_CHAR_INVALID);
    EXPECT_EQ(print(host_.errors()), "empty");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{EC_CHAR_INVALID, "reverse.cpp"}}));
    EXPECT_EQ(result.get<Text>(0), (Text{"ba", 0}));
    EXPECT_EQ(result.valid(1), 0);
    EXPECT_TRUE(result.valid_untouched(2));
}

// Any word but 0 is a value, also one whose low byte is 0.
TEST_F(StringBasics, AConstantOfConcatIsAValueByItsWholeWord) {
    const Vector a = texts({std::nullopt, Text{"a", 0}});
    for (const uint32_t word : {1u, 2u, 0x100u, 0x80000000u}) {
        Constant constant = Constant::of(Text{"b", 0});
        constant.scalar()->has_value = word;
        const Vector with = Vector::result<Text>(host_, 2);
        ASSERT_EQ(bconcat_av_str(host_.env(), host_.mem(), a.col(), constant.scalar(), with.col(), 2), 0);
        EXPECT_EQ(with.col()->all_valid, 1u) << word;
        EXPECT_NE(with.valid(0), 0) << word;
        EXPECT_EQ(with.get<Text>(0).bytes, "b");
        EXPECT_EQ(with.get<Text>(1).bytes, "ab");
        const Vector to = Vector::result<Text>(host_, 2);
        ASSERT_EQ(bconcat_va_str(host_.env(), host_.mem(), constant.scalar(), a.col(), to.col(), 2), 0);
        EXPECT_EQ(to.col()->all_valid, 1u) << word;
        EXPECT_EQ(to.get<Text>(0).bytes, "b");
        EXPECT_EQ(to.get<Text>(1).bytes, "ba");
    }
}

// The flags of concat of two vectors say nothing; its rows do.
TEST_F(StringBasics, TheFlagOfConcatOfTwoVectorsComesOfTheRows) {
    Vector a = texts({std::nullopt, Text{"a", 0}});
    Vector b = texts({Text{"b", 0}, std::nullopt});
    const Vector full = Vector::result<Text>(host_, 2);
    ASSERT_EQ(bconcat_aa_str(host_.env(), host_.mem(), a.col(), b.col(), full.col(), 2), 0);
    EXPECT_EQ(full.col()->all_valid, 1u);
    const Vector with_null = Vector::result<Text>(host_, 2);
    a.col()->all_valid = 1;  // which it is not
    ASSERT_EQ(bconcat_aa_str(host_.env(), host_.mem(), a.col(), a.col(), with_null.col(), 2), 0);
    EXPECT_EQ(with_null.col()->all_valid, 0u);
    const Vector none = Vector::result<Text>(host_, 1);
    ASSERT_EQ(bconcat_aa_str(host_.env(), host_.mem(), a.col(), b.col(), none.col(), 0), 0);
    EXPECT_EQ(none.col()->all_valid, 1u);
}

}  // namespace
