#include "qzhost/error.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "qzbifun/codes.h"
#include "qzhost/control.h"

namespace {

class ErrorTest : public testing::Test {
  protected:
    void SetUp() override { env = host_env_create(); }
    void TearDown() override {
        host_memory_fail_after(-1);
        host_log_set_sink(nullptr, nullptr);
        host_env_destroy(env);
    }

    std::string name_at(uint32_t i) const {
        const char* name = nullptr;
        host_error_at(env, i, &name);
        return name;
    }

    qz_env* env = nullptr;
};

TEST_F(ErrorTest, TheStackKeepsCodesAndNamesInOrder) {
    EXPECT_EQ(host_error_count(env), 0u);
    for (int32_t i = 0; i < 100; ++i) {
        std::string name = "function_" + std::to_string(i);
        qzerr_stk_push(env, -i - 1, name.c_str());
        std::fill(name.begin(), name.end(), '?');  // the stack has a copy
    }
    ASSERT_EQ(host_error_count(env), 100u);
    for (uint32_t i = 0; i < 100; ++i) {
        EXPECT_EQ(host_error_at(env, i, nullptr), -static_cast<int32_t>(i) - 1);
        EXPECT_EQ(name_at(i), "function_" + std::to_string(i));
    }
    host_error_clear(env);
    EXPECT_EQ(host_error_count(env), 0u);
    qzerr_stk_push(env, EC_DATA_OVERFLOW, "babs_a_process_int");
    EXPECT_EQ(host_error_at(env, 0, nullptr), EC_DATA_OVERFLOW);
    EXPECT_EQ(name_at(0), "babs_a_process_int");
}

TEST_F(ErrorTest, EntriesThatDoNotExistReadEmpty) {
    qzerr_stk_push(env, -1, "one");
    for (const uint32_t i : {1u, 2u, UINT32_MAX}) {
        EXPECT_EQ(host_error_at(env, i, nullptr), 0);
        EXPECT_EQ(name_at(i), "");
    }
}

TEST_F(ErrorTest, OddNames) {
    qzerr_stk_push(env, -1, nullptr);
    qzerr_stk_push(env, -2, "");
    for (const size_t length : {122u, 123u, 124u, 5000u}) {
        const std::string name(length, 'n');
        qzerr_stk_push(env, -3, name.c_str());
        EXPECT_EQ(name_at(host_error_count(env) - 1), name.substr(0, 123)) << length;
    }
    EXPECT_EQ(name_at(0), "");
    EXPECT_EQ(name_at(1), "");
    qzerr_stk_push(nullptr, -1, "nobody listens");
}

TEST_F(ErrorTest, ExhaustionCanBeReported) {
    host_memory_fail_after(0);
    uint32_t kept = 0;
    for (; kept < 1000; ++kept) {
        qzerr_stk_push(env, EC_OUT_OF_MEMORY, "name");
        if (host_error_count(env) == kept) break;
    }
    EXPECT_GE(kept, 2u);
    EXPECT_LT(kept, 1000u);
    EXPECT_EQ(name_at(kept - 1), "name");
    host_memory_fail_after(-1);
    qzerr_stk_push(env, -7, "later");
    EXPECT_EQ(host_error_count(env), kept + 1);
    EXPECT_EQ(name_at(kept), "later");
    EXPECT_EQ(host_error_at(env, 0, nullptr), EC_OUT_OF_MEMORY);
}

TEST_F(ErrorTest, StacksAreApart) {
    qz_env* other = host_env_create();
    qzerr_stk_push(env, -1, "one");
    EXPECT_EQ(host_error_count(other), 0u);
    host_env_destroy(other);
}

// ---- Names and texts of codes ----------------------------------------------------------------------------------------------

TEST(ErrorTextTest, EachCodeOfTheHeaderHasItsNameAndAText) {
    std::ifstream header(QZBIFUN_SOURCE_DIR "/include/qzbifun/codes.h");
    const std::string source{std::istreambuf_iterator<char>(header), {}};
    const std::regex definition(R"((EC_\w+|RC_\w+) = (-?\d+))");
    std::set<std::string> texts;
    int codes = 0;
    for (std::sregex_iterator it(source.begin(), source.end(), definition), end; it != end; ++it) {
        const int32_t code = std::stoi((*it)[2]);
        EXPECT_EQ(host_error_name(code), (*it)[1].str());
        EXPECT_TRUE(texts.insert(host_error_text(code)).second) << host_error_text(code);
        ++codes;
    }
    EXPECT_GE(codes, 36);
    EXPECT_FALSE(texts.contains(""));
    EXPECT_FALSE(texts.contains(host_error_text(-1)));
    EXPECT_FALSE(texts.contains(host_error_text(0)));
}

TEST(ErrorTextTest, NumbersThatAreNoCodeSaySo) {
    for (const int32_t code : {-1, 1, -504, -502, -99999, 110, INT32_MAX, INT32_MIN}) {
        EXPECT_STREQ(host_error_name(code), "UNKNOWN") << code;
        EXPECT_STREQ(host_error_text(code), host_error_text(-1)) << code;
    }
    EXPECT_STREQ(host_error_name(0), "SUCCESS");
    EXPECT_STREQ(host_error_text(0), "success");
}

// ---- The log ---------------------------------------------------------------------------------------------------------------

struct Line {
    int32_t code;
    std::string file;
    int32_t line;
};

void keep(void* context, int32_t code, const char* file, int32_t line) {
    static_cast<std::vector<Line>*>(context)->push_back({code, file, line});
    errno = 77;
}

TEST_F(ErrorTest, TheLogGoesToTheSink) {
    std::vector<Line> lines;
    elog_try_report_qzerr(-1, "nowhere.cpp", 1);
    host_log_set_sink(keep, &lines);
    errno = 5;
    elog_try_report_qzerr(EC_CHAR_INVALID, "soundex.cpp", 42);
    EXPECT_EQ(errno, 5);
    host_log_set_sink(nullptr, nullptr);
    elog_try_report_qzerr(-1, "nowhere.cpp", 1);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].code, EC_CHAR_INVALID);
    EXPECT_EQ(lines[0].file, "soundex.cpp");
    EXPECT_EQ(lines[0].line, 42);
    EXPECT_EQ(host_error_count(env), 0u);
}

// What a sink does to the log from inside is without effect.
void meddle(void* context, int32_t code, const char* file, int32_t line) {
    ++*static_cast<int*>(context);
    elog_try_report_qzerr(code, file, line);
    host_log_set_sink(nullptr, nullptr);
}

TEST_F(ErrorTest, ASinkMayMeddle) {
    int calls = 0;
    host_log_set_sink(meddle, &calls);
    elog_try_report_qzerr(-1, "a.cpp", 1);
    elog_try_report_qzerr(-1, "a.cpp", 1);
    EXPECT_EQ(calls, 2);
}

}  // namespace
