// Both readers of LOBs over every storage: what they deliver, what they report, and who has the block after a failure.
#include "bop/bifun_str/lob_read.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "qzbifun/codes.h"
#include "qzbifun/string.h"
#include "qzhost/lob.h"
#include "qzhost/string_value.h"
#include "tests/support/host.h"
#include "tests/support/log_lines.h"
#include "tests/support/text_at_page_end.h"

namespace {

constexpr int32_t kInRow = LOB_KIND_IN_ROW;
constexpr int32_t kShort = LOB_KIND_SHORT;
constexpr int32_t kLong = LOB_KIND_LONG;
constexpr int32_t kEnciphered = HOST_LOB_ENCIPHERED;
constexpr int32_t kStorages[] = {kInRow, kShort, kLong, kShort | kEnciphered, kLong | kEnciphered};
constexpr int32_t kOutOfRow[] = {kShort, kLong, kShort | kEnciphered, kLong | kEnciphered};

constexpr uint8_t kBytes = 0;
constexpr uint8_t kText = 1;

struct Read {
    int32_t code = 0;
    std::optional<std::string> data;  // none: out_data is NULL
    uint32_t len = 0;
    std::string stack;
    std::vector<support::LogLine> log;
};

class LobRead : public testing::Test {
  protected:
    ~LobRead() override {
        host_lob_fail(HOST_LOB_LOOKUP, 0);
        host_lob_fail(HOST_LOB_READ, 0);
        host_lob_limit_read(UINT64_MAX);
        host_memory_fail_after(-1);
    }

    std::string make(int32_t storage, const std::string& data) {
        std::string locator(LOB_DATA_AT + data.size(), '#');
        uint32_t len = static_cast<uint32_t>(locator.size());
        uint8_t* const bytes = reinterpret_cast<uint8_t*>(locator.data());
        EXPECT_EQ(host_lob_make(host_.env(), storage, 1, data.data(), data.size(), bytes, &len), 0);
        locator.resize(len);
        return locator;
    }

    // The locator stands where nothing behind it can be read.
    bdta3_colstr slot_of(const std::string& locator) {
        return {static_cast<uint32_t>(locator.size()), 0, room_.place(locator)};
    }
    nstr value_of(const std::string& locator) {
        nstr value;
        nstr_assign_fast(&value, static_cast<uint32_t>(locator.size()), room_.place(locator));
        return value;
    }

    using Call = std::function<int32_t(char**, uint32_t*)>;

    Read read(const Call& call) {
        host_.clear_errors();
        Read result;
        char nothing;
        char* data = &nothing;
        uint32_t len = 12345;
        const support::LogLines log;
        result.code = call(&data, &len);
        result.log = log.lines();
        result.len = len;
        result.stack = print(host_.errors());
        if (data == nullptr) {
            EXPECT_EQ(host_.outstanding(), 0u);
            return result;
        }
        if (result.code == 0) {
            EXPECT_EQ(data[len], 0);
            result.data = std::string(data, len);
        } else {
            result.data = "";
        }
        host_.mem()->free(host_.env(), host_.mem()->pool, data);
        EXPECT_EQ(host_.outstanding(), 0u);
        return result;
    }

    Read by_value(const nstr& value, uint8_t is_text = kText) {
        return read([&](char** data, uint32_t* len) {
            return ifun_lob_to_str_ex(host_.env(), LOB_READER_ANY, host_.mem(), &value, is_text, data, len);
        });
    }
    Read by_value(const std::string& locator, uint8_t is_text = kText) { return by_value(value_of(locator), is_text); }

    Read by_slot(const std::string& locator, uint32_t is_text = kText) {
        const bdta3_colstr slot = slot_of(locator);
        return read([&](char** data, uint32_t* len) {
            return bifun::bifun_lob_to_str(host_.env(), host_.mem(), &slot, is_text, data, len);
        });
    }

    Read json_of(const std::string& locator) {
        const bdta3_colstr slot = slot_of(locator);
        return read(
            [&](char** data, uint32_t* len) { return bjson_get_data_inner(host_.env(), host_.mem(), &slot, 1, data, len); });
    }

    static void expect_data(const Read& read, const std::string& data) {
        EXPECT_EQ(read.code, 0);
        EXPECT_EQ(read.data, data);
        EXPECT_EQ(read.stack, "empty");
        EXPECT_TRUE(read.log.empty());
    }
    // has_block: the caller has a block to give back.
    static void expect_failure(const Read& read, int32_t code, const std::string& stack, bool has_block = false) {
        EXPECT_EQ(read.code, code);
        EXPECT_EQ(read.data.has_value(), has_block);
        EXPECT_EQ(read.stack, stack);
    }

    support::Host host_;
    support::TextAtPageEnd room_{1 << 16};
};

std::string sample(size_t n) {
    std::string data;
    for (size_t i = 0; i < n; ++i) data += static_cast<char>('!' + (i * 31 + i / 251) % 90);
    return data;
}

TEST_F(LobRead, EveryStorageGivesTheWholeValue) {
    for (const int32_t storage : kStorages) {
        for (const size_t n : {1u, 2u, 17u, 1000u, 40000u}) {
            SCOPED_TRACE(testing::Message() << "storage " << storage << ", " << n << " bytes");
            const std::string data = sample(n);
            const std::string locator = make(storage, data);
            for (const uint8_t is_text : {kBytes, kText, uint8_t{2}}) {
                expect_data(by_value(locator, is_text), data);
                expect_data(by_slot(locator, is_text), data);
            }
            expect_data(json_of(locator), data);
        }
    }
}

TEST_F(LobRead, AnEmptyValueIsABlockWithAZeroByte) {
    for (const int32_t storage : kStorages) {
        const std::string locator = make(storage, "");
        expect_data(by_value(locator), "");
        expect_data(by_slot(locator), "");
        expect_failure(json_of(locator), EC_JSON_NO_DATA, "-3105 bjson_get_data_inner");
    }
    // No locator at all.
    expect_data(by_value(std::string()), "");
    expect_data(by_slot(std::string()), "");
    expect_failure(json_of(std::string()), EC_JSON_NO_DATA, "-3105 bjson_get_data_inner");
}

// The bytes of a string value stand inline up to 48 and behind the pointer from 49 on; the other place is not looked at.
TEST_F(LobRead, ALocatorOf48BytesStandsInlineAndOneOf49Behind) {
    const std::string shorter = make(kInRow, "x");
    ASSERT_EQ(shorter.size(), 48u);
    nstr value = value_of(shorter);
    value.nstr_ext = nullptr;
    expect_data(by_value(value), "x");
    const std::string longer = make(kInRow, "xy");
    ASSERT_EQ(longer.size(), 49u);
    value = value_of(longer);
    std::memset(value.nstr_inline, 0xFF, sizeof value.nstr_inline);
    expect_data(by_value(value), "xy");
    // Out of row, with a byte behind the 48 that the host may have put there.
    std::string stored = make(kShort, "stored");
    stored.resize(48, '#');
    value = value_of(stored);
    value.nstr_ext = nullptr;
    expect_data(by_value(value), "stored");
    expect_data(by_slot(stored), "stored");
    stored.resize(49, '#');
    value = value_of(stored);
    std::memset(value.nstr_inline, 0xFF, sizeof value.nstr_inline);
    expect_data(by_value(value), "stored");
    expect_data(by_slot(stored), "stored");
}

TEST_F(LobRead, InRowDataAsksNobody) {
    host_lob_fail(HOST_LOB_LOOKUP, -4711);
    host_lob_fail(HOST_LOB_READ, -4712);
    const std::string locator = make(kInRow, "in row");
    expect_data(by_value(locator), "in row");
    expect_data(by_slot(locator), "in row");
    expect_data(json_of(locator), "in row");
}

TEST_F(LobRead, FewerBytesThanAskedFor) {
    host_lob_limit_read(3);
    for (const int32_t storage : kOutOfRow) {
        const std::string locator = make(storage, "abcdef");
        expect_data(by_value(locator), "abc");
        expect_data(by_slot(locator), "abc");
        expect_data(json_of(locator), "abc");
    }
    host_lob_limit_read(0);
    expect_data(by_value(make(kLong, "abcdef")), "");
    expect_data(by_slot(make(kLong, "abcdef")), "");
}

// What tells reading as text from reading as bytes: text that is cut short ends with a whole character.
TEST_F(LobRead, OnlyTheByteOneReadsText) {
    const support::Parameters utf8(SERVER_CHARSET, 1);
    host_lob_limit_read(2);
    const std::string locator = make(kShort, "a\xC3\xA9z");
    expect_data(by_value(locator, 1), "a");
    expect_data(by_value(locator, 0), "a\xC3");
    expect_data(by_value(locator, 2), "a\xC3");
    expect_data(by_value(locator, 255), "a\xC3");
    expect_data(by_slot(locator, 1), "a");
    expect_data(by_slot(locator, 0x101), "a");  // the low byte counts
    expect_data(by_slot(locator, 0x100), "a\xC3");
    expect_data(by_slot(locator, 2), "a\xC3");
    expect_data(json_of(locator), "a");
}

TEST_F(LobRead, AFailedLookUpLeavesTheBlockToTheCallerOfTheSlotReaderAlone) {
    host_lob_fail(HOST_LOB_LOOKUP, -4711);
    for (const int32_t storage : kOutOfRow) {
        const std::string locator = make(storage, "value");
        const Read value = by_value(locator);
        expect_failure(value, -4711, "empty");
        EXPECT_TRUE(value.log.empty());
        for (const Read& slot : {by_slot(locator), json_of(locator)}) {
            expect_failure(slot, -4711, "empty", true);
            EXPECT_EQ(slot.log, (std::vector<support::LogLine>{{-4711, "lob_read.cpp"}}));
        }
    }
}

TEST_F(LobRead, AFailedReadGivesTheBlockBack) {
    host_lob_fail(HOST_LOB_READ, -4712);
    for (const int32_t storage : kOutOfRow) {
        const std::string locator = make(storage, "value");
        for (const Read& read :
             {by_value(locator), by_value(locator, kBytes), by_slot(locator), by_slot(locator, kBytes), json_of(locator)}) {
            expect_failure(read, -4712, "empty");
            EXPECT_TRUE(read.log.empty());
        }
    }
}

// A locator whose value is not in the store any more, as one of another environment.
TEST_F(LobRead, ALocatorThatNamesNothing) {
    support::Host other;
    for (const int32_t storage : {kShort, kLong}) {
        std::string locator(LOB_DATA_AT, '#');
        uint32_t len = LOB_DATA_AT;
        uint8_t* const bytes = reinterpret_cast<uint8_t*>(locator.data());
        ASSERT_EQ(host_lob_make(other.env(), storage, 1, "abc", 3, bytes, &len), 0);
        expect_failure(by_value(locator), EC_LOB_READ_FAILED, "empty");
        expect_failure(by_slot(locator), EC_LOB_READ_FAILED, "empty");
    }
}

std::string with_length(std::string locator, uint64_t length) {
    const bool is_long = locator[LOB_KIND_AT] == LOB_KIND_LONG;
    std::memcpy(locator.data() + (is_long ? LOB_LONG_LENGTH_AT : LOB_SHORT_LENGTH_AT), &length, is_long ? 8 : 4);
    return locator;
}

TEST_F(LobRead, TwoGibibytesAreTooLong) {
    for (const int32_t storage : {kShort, kLong}) {
        const std::string locator = make(storage, "abc");
        for (const uint64_t length : {uint64_t{1} << 31, uint64_t{0xFFFFFFFF}, UINT64_MAX, (uint64_t{1} << 32) + 3}) {
            if (storage == kShort && length > UINT32_MAX) continue;
            const std::string told = with_length(locator, length);
            expect_failure(by_value(told), EC_LOB_TOO_LONG_ROW, "-7125 ifun_lob_to_str_ex");
            expect_failure(by_slot(told), EC_LOB_TOO_LONG, "-7112 bifun_lob_to_str");
            expect_failure(json_of(told), EC_LOB_TOO_LONG, "-7112 bifun_lob_to_str");
        }
        // One byte less is read, here without the memory for it.
        const std::string told = with_length(locator, (uint64_t{1} << 31) - 1);
        host_memory_fail_after(0);
        const Read value = by_value(told);
        const Read slot = by_slot(told);
        host_memory_fail_after(-1);
        expect_failure(value, EC_OUT_OF_MEMORY, "-503 ifun_lob_to_str_ex");
        expect_failure(slot, EC_OUT_OF_MEMORY, "-503 bifun_lob_to_str");
        EXPECT_EQ(value.len, 0x7FFFFFFFu);
        EXPECT_EQ(slot.len, 0x7FFFFFFFu);
    }
}

// A value is read as far as its locator tells, and no further than it is.
TEST_F(LobRead, TheLocatorTellsTheLength) {
    for (const int32_t storage : {kShort, kLong, kShort | kEnciphered, kLong | kEnciphered}) {
        const std::string locator = make(storage, "abcdef");
        for (const uint64_t length : {1u, 5u, 6u, 7u, 1000u}) {
            const std::string expected = std::string("abcdef").substr(0, length);
            expect_data(by_value(with_length(locator, length)), expected);
            expect_data(by_slot(with_length(locator, length)), expected);
        }
    }
}

TEST_F(LobRead, BytesThatAreNoLocator) {
    const std::string in_row = make(kInRow, "abc");
    for (size_t n = 1; n < in_row.size(); ++n) {
        expect_failure(by_value(in_row.substr(0, n)), EC_LOB_TOO_LONG_ROW, "-7125 ifun_lob_to_str_ex");
        expect_failure(by_slot(in_row.substr(0, n)), EC_LOB_TOO_LONG, "-7112 bifun_lob_to_str");
    }
    for (const int32_t storage : kOutOfRow) {
        const std::string locator = make(storage, "abc");
        for (size_t n = 1; n < locator.size(); ++n) {
            expect_failure(by_value(locator.substr(0, n)), EC_LOB_TOO_LONG_ROW, "-7125 ifun_lob_to_str_ex");
            expect_failure(by_slot(locator.substr(0, n)), EC_LOB_TOO_LONG, "-7112 bifun_lob_to_str");
        }
    }
    // In-row data that is shorter than told.
    expect_failure(by_slot(with_length(in_row, 4)), EC_LOB_TOO_LONG, "-7112 bifun_lob_to_str");
}

TEST_F(LobRead, NoMemoryForTheValue) {
    for (const int32_t storage : kStorages) {
        for (const std::string& data : {std::string(), std::string("value")}) {
            const std::string locator = make(storage, data);
            host_memory_fail_after(0);
            const Read value = by_value(locator);
            const Read slot = by_slot(locator);
            host_memory_fail_after(-1);
            expect_failure(value, EC_OUT_OF_MEMORY, "-503 ifun_lob_to_str_ex");
            expect_failure(slot, EC_OUT_OF_MEMORY, "-503 bifun_lob_to_str");
            EXPECT_EQ(value.len, data.size());
            EXPECT_EQ(slot.len, data.size());
        }
    }
}

// The slot reader copies the locator; one that does not stand inline takes memory. The block stays with the caller then.
TEST_F(LobRead, NoMemoryForTheLocator) {
    std::string locator = make(kShort, "value");
    locator.resize(NSTR_INLINE_BYTES + 1, '#');
    for (const bool json : {false, true}) {
        host_memory_fail_after(1);
        const Read read = json ? json_of(locator) : by_slot(locator);
        host_memory_fail_after(-1);
        expect_failure(read, EC_OUT_OF_MEMORY, "empty", true);
    }
}

void* take_and_fill(qz_env*, void*, size_t size, const char*, int32_t) {
    void* block = ::operator new(size);
    std::memset(block, 0xFF, size);
    return block;
}

// free and pool may be absent: nothing is given back, and nothing is called.
TEST_F(LobRead, AMemoryObjectThatTakesNothingBack) {
    host_lob_fail(HOST_LOB_READ, -4712);
    const std::string locator = make(kShort, "value");
    const nstr value = value_of(locator);
    static void* taken;
    taken = nullptr;
    rt_memobj without_free{[](qz_env* env, void* pool, size_t size, const char* file, int32_t line) {
                               return taken = take_and_fill(env, pool, size, file, line);
                           },
                           nullptr, this};
    rt_memobj without_pool{without_free.alloc, [](qz_env*, void*, void*) { FAIL() << "has no pool to give back to"; }, nullptr};
    for (rt_memobj* mem : {&without_free, &without_pool}) {
        char* data = nullptr;
        uint32_t len = 0;
        EXPECT_EQ(ifun_lob_to_str_ex(host_.env(), LOB_READER_ANY, mem, &value, kText, &data, &len), -4712);
        EXPECT_EQ(data, nullptr);
        ::operator delete(taken);
    }
}

TEST_F(LobRead, JsonOfAStringIsItsOwnBytes) {
    std::string text = "{\"a\": 1}";
    const bdta3_colstr slot{static_cast<uint32_t>(text.size()), 5, text.data()};
    char* data = nullptr;
    uint32_t len = 0;
    EXPECT_EQ(bjson_get_data_inner(host_.env(), host_.mem(), &slot, 0, &data, &len), 0);
    EXPECT_EQ(data, text.data());
    EXPECT_EQ(len, text.size());
    EXPECT_EQ(host_.outstanding(), 0u);
    // Blanks alone are no data.
    for (const uint32_t blank : {0u, 3u}) {
        const bdta3_colstr empty{0, blank, text.data()};
        host_.clear_errors();
        data = text.data();
        len = 1;
        EXPECT_EQ(bjson_get_data_inner(host_.env(), host_.mem(), &empty, 0, &data, &len), EC_JSON_NO_DATA);
        EXPECT_EQ(data, nullptr);
        EXPECT_EQ(len, 0u);
        EXPECT_EQ(print(host_.errors()), "-3105 bjson_get_data_inner");
    }
}

TEST_F(LobRead, AnyFlagButZeroIsALob) {
    const std::string locator = make(kInRow, "{}");
    const bdta3_colstr slot = slot_of(locator);
    for (const uint32_t is_lob : {1u, 2u, 0x100u, 0x80000000u}) {
        expect_data(read([&](char** data, uint32_t* len) {
                        return bjson_get_data_inner(host_.env(), host_.mem(), &slot, is_lob, data, len);
                    }),
                    "{}");
    }
}

}  // namespace
