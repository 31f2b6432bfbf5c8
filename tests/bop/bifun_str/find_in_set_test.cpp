// find_in_set against a plain telling, and what is left behind when memory runs out.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "qzbifun/codes.h"
#include "qzbifun/qzbifun.h"
#include "tests/support/differential.h"
#include "tests/support/vector.h"

namespace {

using support::Answer;
using support::Constant;
using support::Differential;
using support::Host;
using support::Random;
using support::Rules;
using support::Text;
using support::Vector;

std::string written_out(const Text& text) { return text.bytes + std::string(text.blank, ' '); }

// Cuts the whole list on every row and writes the text out. A NULL list is an empty one.
int32_t plain_find(const Text& text, const std::string& list) {
    const std::string wanted = written_out(text);
    int32_t number = 1;
    for (size_t begin = 0;; ++number) {
        const size_t comma = list.find(',', begin);
        const size_t end = comma == std::string::npos ? list.size() : comma;
        if (list.substr(begin, end - begin) == wanted) return number;
        if (comma == std::string::npos) return 0;
        begin = comma + 1;
    }
}

std::string few_letters(Random& random, uint32_t most, const std::string& alphabet) {
    std::string text;
    const uint32_t length = random.below(most + 1);
    for (uint32_t i = 0; i < length; ++i) text += alphabet[random.below(static_cast<uint32_t>(alphabet.size()))];
    return text;
}

TEST(FindInSet, IsThePlainWalkOverTheElements) {
    Differential<int32_t, Text, Text> find;
    find.rules.flag = Rules::Flag::copy;
    find.rules.constants = Rules::Constants::own;
    find.rules.null_evaluated = true;
    find.add("av", "bfind_in_set_av_str", bfind_in_set_av_str);
    find.draw<0>([](Random& random) {
        return Text{few_letters(random, 4, random.chance(5) ? "a ," : "ab "), random.chance(30) ? random.below(4) : 0};
    });
    // Most lists are short, some pass one or two growths of the array.
    find.draw<1>([](Random& random) {
        const uint32_t most = random.chance(80) ? 24 : random.chance(50) ? 200 : 1000;
        return Text{few_letters(random, most, random.chance(70) ? "ab ," : "a,,"), random.chance(20) ? random.below(4) : 0};
    });
    size_t found = 0;
    size_t absent = 0;
    EXPECT_EQ(find.run([&](const std::optional<Text>& text, const std::optional<Text>& list) -> Answer<int32_t> {
        if (!text) return Answer<int32_t>::null();
        const int32_t number = plain_find(*text, list ? list->bytes : "");
        ++(number > 0 ? found : absent);
        return number;
    }),
              "");
    EXPECT_GT(found, absent / 50);
}

// Of all lengths, so that some of them meet in a chain.
TEST(FindInSet, TheStartOfAnElementIsNotTheElement) {
    Host host;
    const std::string letters = "abcdefghijklmnopqrstuvwxyzabcdefghijklmnopqrstuvwxyz";
    const Vector text = Vector::of<Text>(host, {Text{letters.substr(0, 8), 0}, Text{letters.substr(0, 8), 1}});
    for (size_t length = 9; length <= letters.size(); ++length) {
        Constant list = Constant::of(Text{letters.substr(0, length), 0});
        const Vector result = Vector::result<int32_t>(host, 2);
        ASSERT_EQ(bfind_in_set_av_str(host.env(), host.mem(), text.col(), list.scalar(), result.col(), 2), 0);
        EXPECT_EQ(result.get<int32_t>(0), 0) << length;
        EXPECT_EQ(result.get<int32_t>(1), 0) << length;
    }
}

class FindInSetExhausted : public ::testing::Test {
  protected:
    // The call after so many allocations that succeed.
    int32_t call(const std::string& list, int64_t allocations) {
        const Vector text = Vector::of<Text>(host_, {Text{"a", 0}});
        Constant constant = Constant::of(Text{list, 0});
        const Vector result = Vector::result<int32_t>(host_, 1);
        host_.clear_errors();
        host_memory_fail_after(allocations);
        const int32_t code = bfind_in_set_av_str(host_.env(), host_.mem(), text.col(), constant.scalar(), result.col(), 1);
        host_memory_fail_after(-1);
        if (code == 0) value_ = result.get<int32_t>(0);
        return code;
    }
    std::string stack() const { return print(host_.errors()); }

    Host host_;
    int32_t value_ = -1;
};

TEST_F(FindInSetExhausted, TheFirstArrayIsNotReported) {
    EXPECT_EQ(call("b,a", 0), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "empty");
    EXPECT_EQ(call("", 0), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "empty");
    EXPECT_EQ(call("b,a", 1), 0);
    EXPECT_EQ(value_, 2);
}

TEST_F(FindInSetExhausted, ItsGrowthIs) {
    EXPECT_EQ(call(std::string(99, ','), 1), 0);  // 100 elements
    EXPECT_EQ(call(std::string(100, ',') + "a", 1), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "-503 bfind_in_set_av_str");
    EXPECT_EQ(call(std::string(100, ',') + "a", 2), 0);
    EXPECT_EQ(value_, 101);
    EXPECT_EQ(call(std::string(200, ',') + "a", 2), EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack(), "-503 bfind_in_set_av_str");
    EXPECT_EQ(call(std::string(200, ',') + "a", 3), 0);
    EXPECT_EQ(value_, 201);
}

// The array is general memory, not the memory object's.
TEST_F(FindInSetExhausted, NothingIsTakenFromTheMemoryObject) {
    EXPECT_EQ(call("b,a", 1), 0);
    EXPECT_EQ(host_.outstanding(), 0u);
}

TEST(FindInSet, AListLongerThanAStringMayBeIsReadWhole) {
    Host host;
    const std::string list = std::string(100000, ',') + "a";
    const Vector text = Vector::of<Text>(host, {Text{"a", 0}, Text{"", 0}});
    Constant constant = Constant::of(Text{list, 0});
    const Vector result = Vector::result<int32_t>(host, 2);
    ASSERT_EQ(bfind_in_set_av_str(host.env(), host.mem(), text.col(), constant.scalar(), result.col(), 2), 0);
    EXPECT_EQ(result.get<int32_t>(0), 100001);
    EXPECT_EQ(result.get<int32_t>(1), 1);
    EXPECT_EQ(constant.changed(), "");
}

}  // namespace
