#include "qzhost/string_value.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "qzbifun/codes.h"
#include "qzhost/control.h"

namespace {

class StringValueTest : public testing::Test {
  protected:
    ~StringValueTest() override {
        EXPECT_EQ(host_memobj_outstanding(mem_), 0u);
        host_memobj_destroy(mem_);
        host_env_destroy(env_);
    }

    // A value as a caller may leave it before an assign: nothing of it is to be believed.
    static nstr garbage() {
        nstr value;
        std::memset(static_cast<void*>(&value), 0xA5, sizeof value);
        return value;
    }

    void expect_value(const nstr& value, const std::string& bytes, uint32_t blank = 0) {
        EXPECT_EQ(value.has_value, 1u);
        ASSERT_EQ(value.len, bytes.size());
        EXPECT_EQ(value.blank, blank);
        EXPECT_EQ(std::string(value.nstr_ext, value.len), bytes) << "nstr_ext is valid for any length";
        EXPECT_EQ(std::string(nstr_bytes(&value), value.len), bytes);
        EXPECT_EQ(value.nstr_ext == value.nstr_inline, value.len <= NSTR_INLINE_BYTES);
    }

    static void expect_empty(const nstr& value) {
        EXPECT_EQ(value.has_value, 0u);
        EXPECT_EQ(value.len, 0u);
        EXPECT_EQ(value.blank, 0u);
        EXPECT_EQ(value.nstr_ext, value.nstr_inline);
        EXPECT_EQ(value.nstr_cap, 0u);
    }

    qz_env* env_ = host_env_create();
    rt_memobj* mem_ = host_memobj_create(env_);
};

std::string pattern_of(size_t n) {
    std::string text;
    for (size_t i = 0; i < n; ++i) text += static_cast<char>('a' + i % 26);
    return text;
}

TEST_F(StringValueTest, EveryLengthAroundTheInlineRoom) {
    for (uint32_t len = 0; len <= 60; ++len) {
        for (const uint32_t blank : {0u, 1u, 47u, 48u, 49u, 200u}) {
            const std::string text = pattern_of(len);
            const std::string written_out = text + std::string(blank, ' ');
            nstr value = garbage();
            ASSERT_EQ(nstr_assign_const_ex_no_clear(env_, mem_, &value, len, text.data()), 0);
            expect_value(value, text);
            EXPECT_EQ(value.nstr_cap != 0, len > NSTR_INLINE_BYTES);
            nstr_clear(env_, mem_, &value);
            expect_empty(value);

            value = garbage();
            ASSERT_EQ(nstr_assign_const_with_blank_no_clear(env_, mem_, &value, text.data(), len, blank), 0);
            expect_value(value, written_out);
            nstr_clear(env_, mem_, &value);

            value = garbage();
            ASSERT_EQ(nstr_assign_with_blank_no_clear_ex(env_, mem_, &value, text.data(), len, blank), 0);
            expect_value(value, written_out);
            nstr_clear(env_, mem_, &value);

            std::string stored = text;
            const bdta3_colstr slot{len, blank, stored.data()};
            value = garbage();
            ASSERT_EQ(nstr_assign_with_blank_no_clear(env_, mem_, &value, &slot), 0);
            expect_value(value, written_out);
            nstr_clear(env_, mem_, &value);

            nstr source = garbage();
            ASSERT_EQ(nstr_assign_const_ex_no_clear(env_, mem_, &source, len, text.data()), 0);
            source.blank = blank;
            nstr copy = garbage();
            ASSERT_EQ(nstr_assign(env_, mem_, &copy, &source), 0);
            expect_value(copy, text, blank);
            nstr reference = garbage();
            nstr_set_str_value(&reference, &source);
            expect_value(reference, text, blank);
            EXPECT_EQ(reference.nstr_cap, 0u);
            nstr_clear(env_, mem_, &source);
            expect_value(copy, text, blank);
            nstr_non_reserved_clear(env_, mem_, &copy);
            if (len > NSTR_INLINE_BYTES) {
                expect_empty(copy);
            } else {
                expect_value(copy, text, blank);
            }
        }
    }
}

TEST_F(StringValueTest, FastAssignTakesNothing) {
    const std::string text = pattern_of(100);
    host_memory_fail_after(0);
    for (const uint32_t len : {0u, 48u, 49u, 100u}) {
        nstr value = garbage();
        nstr_assign_fast(&value, len, text.data());
        expect_value(value, text.substr(0, len));
        EXPECT_EQ(value.nstr_ext == text.data(), len > NSTR_INLINE_BYTES);
        EXPECT_EQ(value.nstr_cap, 0u);
        nstr_non_reserved_clear(env_, mem_, &value);
        expect_value(value, text.substr(0, len));
    }
    host_memory_fail_after(-1);
}

TEST_F(StringValueTest, NullStaysNull) {
    nstr source = garbage();
    nstr_assign_fast(&source, 0, nullptr);
    source.has_value = 0;
    nstr copy = garbage();
    ASSERT_EQ(nstr_assign(env_, mem_, &copy, &source), 0);
    expect_empty(copy);
    copy = garbage();
    nstr_set_str_value(&copy, &source);
    expect_empty(copy);
}

TEST_F(StringValueTest, TerminatedText) {
    for (uint32_t len = 0; len <= 60; ++len) {
        const std::string text = pattern_of(len);
        for (const uint32_t blank : {0u, 3u, 70u}) {
            nstr value = garbage();
            nstr_assign_fast(&value, len, text.data());
            value.blank = blank;
            const std::string written_out = text + std::string(blank, ' ');
            for (const uint32_t size : {0u, len + blank, len + blank + 1, 200u}) {
                std::string buffer(size, '#');
                char* result = nstr_set_str_value_ex(env_, mem_, buffer.data(), size, &value);
                ASSERT_NE(result, nullptr);
                EXPECT_EQ(result, written_out);
                EXPECT_EQ(result == buffer.data(), size > len + blank);
                if (result != buffer.data()) mem_->free(env_, mem_->pool, result);
            }
            std::string room(len + 1, '#');
            EXPECT_EQ(nstr_get_const_value(&value, room.data()), len);
            EXPECT_EQ(room, text + '\0') << "blanks are not written";
        }
    }
}

TEST_F(StringValueTest, ExhaustionLeavesAnEmptyValue) {
    const std::string text = pattern_of(49);
    std::string stored = text;
    const bdta3_colstr slot{49, 0, stored.data()};
    nstr source;
    nstr_assign_fast(&source, 49, text.data());
    nstr value = garbage();
    const auto exhaust = [&](auto assign) {
        value = garbage();
        host_memory_fail_after(0);
        EXPECT_EQ(assign(), EC_OUT_OF_MEMORY);
        host_memory_fail_after(-1);
        expect_empty(value);
        nstr_clear(env_, mem_, &value);
    };
    exhaust([&] { return nstr_assign_const_ex_no_clear(env_, mem_, &value, 49, text.data()); });
    exhaust([&] { return nstr_assign_const_with_blank_no_clear(env_, mem_, &value, text.data(), 9, 40); });
    exhaust([&] { return nstr_assign_with_blank_no_clear_ex(env_, mem_, &value, text.data(), 49, 0); });
    exhaust([&] { return nstr_assign_with_blank_no_clear(env_, mem_, &value, &slot); });
    exhaust([&] { return nstr_assign(env_, mem_, &value, &source); });
    host_memory_fail_after(0);
    char buffer[49];
    EXPECT_EQ(nstr_set_str_value_ex(env_, mem_, buffer, sizeof buffer, &source), nullptr);
    host_memory_fail_after(-1);
}

TEST_F(StringValueTest, LengthsBeyond32Bits) {
    nstr value = garbage();
    EXPECT_EQ(nstr_assign_const_with_blank_no_clear(env_, mem_, &value, "a", 1, UINT32_MAX), EC_STRING_TOO_LONG);
    expect_empty(value);
    EXPECT_EQ(nstr_assign_const_with_blank_no_clear(env_, mem_, &value, "a", 1, UINT32_MAX - 1), EC_STRING_TOO_LONG);
}

TEST_F(StringValueTest, AMemoryObjectWithoutFreeIsNotAsked) {
    rt_memobj keeps = *mem_;
    keeps.free = nullptr;
    nstr value = garbage();
    ASSERT_EQ(nstr_assign_const_ex_no_clear(env_, &keeps, &value, 60, pattern_of(60).data()), 0);
    char* block = value.nstr_ext;
    nstr_clear(env_, &keeps, &value);
    expect_empty(value);
    mem_->free(env_, mem_->pool, block);
}

}  // namespace
