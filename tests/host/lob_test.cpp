#include "qzhost/lob.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>

#include "qzbifun/codes.h"
#include "qzhost/control.h"
#include "qzhost/string_value.h"
#include "server_charset.h"
#include "support/test_seed.h"
#include "support/text_at_page_end.h"

namespace {

constexpr int32_t kInRow = LOB_KIND_IN_ROW;
constexpr int32_t kShort = LOB_KIND_SHORT;
constexpr int32_t kLong = LOB_KIND_LONG;
constexpr int32_t kEnciphered = HOST_LOB_ENCIPHERED;
constexpr int32_t kStorages[] = {kInRow, kShort, kLong, kShort | kEnciphered, kLong | kEnciphered};

class LobTest : public testing::Test {
  protected:
    ~LobTest() override {
        host_lob_fail(HOST_LOB_LOOKUP, 0);
        host_lob_fail(HOST_LOB_READ, 0);
        host_lob_limit_read(UINT64_MAX);
        host_memory_fail_after(-1);
        host_memobj_destroy(mem_);
        host_env_destroy(env_);
    }

    std::string make(int32_t storage, const std::string& data, bool is_text = false) {
        std::string locator(LOB_DATA_AT + data.size(), '#');
        uint32_t len = static_cast<uint32_t>(locator.size());
        EXPECT_EQ(
            host_lob_make(env_, storage, is_text, data.data(), data.size(), reinterpret_cast<uint8_t*>(locator.data()), &len),
            0);
        locator.resize(len);
        return locator;
    }

    struct Read {
        int32_t code;
        std::string data;
    };

    // By the handle of its own look-up.
    Read read(const std::string& locator, uint32_t capacity, uint64_t offset = 0, bool is_text = false) {
        ndct_work_area work;
        int32_t status = 99;
        const nblob_encryption* handle = ndct_get_blob_enc_info(env_, mem_, locator.data(), &work, &status);
        if (status < 0) {
            EXPECT_EQ(handle, nullptr);
            return {status, ""};
        }
        return read_by(handle, locator, capacity, offset, is_text);
    }

    Read read_by(const nblob_encryption* handle, const std::string& locator, uint32_t capacity, uint64_t offset = 0,
                 bool is_text = false) {
        nstr value;
        nstr_assign_fast(&value, static_cast<uint32_t>(locator.size()), locator.data());
        char* room = guard_.room(capacity);
        uint32_t count = 99;
        const auto service = is_text ? ntext_get_data : nblob_get_data;
        const int32_t code = service(env_, LOB_READER_ANY, &value, room, capacity, offset, capacity, &count, handle);
        EXPECT_LE(count, capacity);
        return {code, std::string(room, count)};
    }

    static nstr value_of(const std::string& locator) {
        nstr value;
        nstr_assign_fast(&value, static_cast<uint32_t>(locator.size()), locator.data());
        value.nstr_ext = const_cast<char*>(locator.data());
        return value;
    }
    static bdta3_colstr slot_of(std::string& locator) { return {static_cast<uint32_t>(locator.size()), 0, locator.data()}; }

    qz_env* env_ = host_env_create();
    rt_memobj* mem_ = host_memobj_create(env_);
    support::TextAtPageEnd guard_{1 << 16};
};

std::string sample(size_t n) {
    std::string data;
    for (size_t i = 0; i < n; ++i) data += static_cast<char>(i * 31 + i / 251);
    return data;
}

TEST_F(LobTest, LayoutOfALocator) {
    std::string in_row = make(kInRow, "abc");
    ASSERT_EQ(in_row.size(), 50u);
    EXPECT_EQ(in_row[0], 1);
    EXPECT_EQ(in_row.substr(9, 4), std::string("\3\0\0\0", 4));
    EXPECT_EQ(in_row.substr(47), "abc");
    const std::string short_form = make(kShort, sample(0x1234));
    ASSERT_EQ(short_form.size(), 47u);
    EXPECT_NE(short_form[0], 1);
    EXPECT_NE(short_form[0], 4);
    EXPECT_EQ(short_form.substr(9, 4), std::string("\x34\x12\0\0", 4));
    const std::string long_form = make(kLong, sample(0x1234));
    EXPECT_EQ(long_form[0], 4);
    EXPECT_EQ(long_form.substr(39, 8), std::string("\x34\x12\0\0\0\0\0\0", 8));
}

TEST_F(LobTest, EveryStorageReadsBackInWholeAndInParts) {
    for (const int32_t storage : kStorages) {
        for (const uint32_t n : {0u, 1u, 2u, 15u, 16u, 17u, 1000u, 40000u}) {
            SCOPED_TRACE(testing::Message() << "storage " << storage << ", " << n << " bytes");
            const std::string data = sample(n);
            std::string locator = make(storage, data);
            const nstr value = value_of(locator);
            const bdta3_colstr slot = slot_of(locator);
            EXPECT_EQ(nblob_is_long_row(&value), 0);
            EXPECT_EQ(nblob_get_4byte_len(&value), n);
            EXPECT_EQ(nblob_get_len_for_colstr_fast(&slot), n);
            EXPECT_EQ(nblob_is_in_row_for_colstr_fast(&slot) != 0, storage == kInRow);
            for (const uint32_t offset : {0u, 1u, 15u, 16u, 17u, 999u, 39999u, n}) {
                for (const uint32_t capacity : {0u, 1u, 16u, 33u, 65000u}) {
                    const Read part = read(locator, capacity, offset);
                    EXPECT_EQ(part.code, 0);
                    EXPECT_EQ(part.data, offset < n ? data.substr(offset, capacity) : "") << offset << ' ' << capacity;
                }
            }
        }
    }
}

TEST_F(LobTest, EncipheredValuesNeedTheirHandle) {
    const std::string data = sample(100);
    const std::string first = make(kShort | kEnciphered, data);
    const std::string second = make(kShort | kEnciphered, data);
    const std::string plain = make(kShort, data);
    ndct_work_area first_work, plain_work;
    int32_t status = 99;
    int32_t reuse = 99;
    const nblob_encryption* own = ndct_get_blob_enc_info_low(env_, mem_, first.data(), &first_work, &reuse, &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(reuse, 1) << "the key of one value";
    EXPECT_EQ(read_by(own, first, 200).data, data);
    EXPECT_EQ(read_by(own, second, 200).code, EC_LOB_READ_FAILED);
    EXPECT_EQ(read_by(own, plain, 200).data, data);
    EXPECT_EQ(read_by(nullptr, first, 200).code, EC_LOB_READ_FAILED);
    EXPECT_EQ(read_by(nullptr, plain, 200).data, data);
    const nblob_encryption* ring = ndct_get_blob_enc_info_low(env_, mem_, plain.data(), &plain_work, &reuse, &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(reuse, 0) << "serves all further rows";
    EXPECT_EQ(read_by(ring, first, 200).data, data);
    EXPECT_EQ(read_by(ring, second, 200).data, data);
    EXPECT_EQ(read_by(ring, plain, 200).data, data);
    EXPECT_EQ(read_by(ring, make(kInRow, "x"), 200).data, "x");
}

TEST_F(LobTest, TextEndsWithAWholeCharacter) {
    const ServerCharset server(kUtf8);
    const std::string text =
        "a\xE4\xB8\xAD"
        "b\xC3\xA9";
    for (const int32_t storage : kStorages) {
        const std::string locator = make(storage, text, true);
        EXPECT_EQ(read(locator, 1, 0, true).data, "a");
        EXPECT_EQ(read(locator, 2, 0, true).data, "a");
        EXPECT_EQ(read(locator, 3, 0, true).data, "a");
        EXPECT_EQ(read(locator, 4, 0, true).data, "a\xE4\xB8\xAD");
        EXPECT_EQ(read(locator, 6, 0, true).data,
                  "a\xE4\xB8\xAD"
                  "b");
        EXPECT_EQ(read(locator, 7, 0, true).data, text);
        EXPECT_EQ(read(locator, 6).data, text.substr(0, 6)) << "bytes are bytes";
        // A value that itself ends in half a character is given as it is.
        EXPECT_EQ(read(make(storage, text.substr(0, 3), true), 10, 0, true).data, text.substr(0, 3));
    }
}

TEST_F(LobTest, FailuresOnRequest) {
    for (const int32_t storage : kStorages) {
        const std::string locator = make(storage, "data");
        host_lob_fail(HOST_LOB_LOOKUP, -4711);
        EXPECT_EQ(read(locator, 10).code, -4711);
        host_lob_fail(HOST_LOB_LOOKUP, 0);
        host_lob_fail(HOST_LOB_READ, -4712);
        EXPECT_EQ(read(locator, 10).code, -4712);
        EXPECT_EQ(read(locator, 10, 0, true).code, -4712);
        host_lob_fail(HOST_LOB_READ, 0);
        host_lob_limit_read(3);
        EXPECT_EQ(read(locator, 10).data, "dat");
        EXPECT_EQ(read(locator, 10, 0, true).data, "dat");
        EXPECT_EQ(read(locator, 2).data, "da");
        host_lob_limit_read(0);
        EXPECT_EQ(read(locator, 10).data, "");
        host_lob_limit_read(UINT64_MAX);
        EXPECT_EQ(read(locator, 10).data, "data");
    }
}

TEST_F(LobTest, ExhaustionInEveryPlace) {
    const std::string data = sample(100);
    for (const int32_t storage : kStorages) {
        qz_env* env = host_env_create();
        uint8_t locator[200];
        uint32_t len = sizeof locator;
        int64_t taken = 0;
        for (;; ++taken) {
            host_memory_fail_after(taken);
            len = sizeof locator;
            const int32_t code = host_lob_make(env, storage, 0, data.data(), data.size(), locator, &len);
            host_memory_fail_after(-1);
            if (code == 0) break;
            ASSERT_EQ(code, EC_OUT_OF_MEMORY);
            ASSERT_LT(taken, 10);
        }
        if (storage == kInRow) {
            EXPECT_EQ(taken, 0);
        } else {
            EXPECT_GT(taken, 0);
        }
        host_env_destroy(env);
    }
}

TEST_F(LobTest, WhatCannotBeMade) {
    uint8_t locator[100];
    uint32_t len = sizeof locator;
    EXPECT_EQ(host_lob_make(env_, kInRow | kEnciphered, 0, "x", 1, locator, &len), EC_INVALID_ARGUMENT);
    EXPECT_EQ(host_lob_make(env_, 3, 0, "x", 1, locator, &len), EC_INVALID_ARGUMENT);
    EXPECT_EQ(host_lob_make(env_, 0x200 | kShort, 0, "x", 1, locator, &len), EC_INVALID_ARGUMENT);
    EXPECT_EQ(host_lob_make(env_, kShort, 0, "x", UINT32_MAX, locator, &len), EC_INVALID_ARGUMENT);
    EXPECT_EQ(host_lob_make(env_, kInRow, 0, "x", UINT32_MAX, locator, &len), EC_INVALID_ARGUMENT);
    EXPECT_EQ(host_lob_make(env_, kLong, 0, "x", UINT64_MAX, locator, &len), EC_OUT_OF_MEMORY);
    len = 49;
    EXPECT_EQ(host_lob_make(env_, kInRow, 0, "abc", 3, locator, &len), EC_INVALID_ARGUMENT);
    EXPECT_EQ(len, 50u) << "the room needed";
    len = 46;
    EXPECT_EQ(host_lob_make(env_, kShort, 0, "abc", 3, locator, &len), EC_INVALID_ARGUMENT);
    EXPECT_EQ(len, 47u);
}

TEST_F(LobTest, LocatorsOfOtherEnvironmentsNameNothing) {
    const std::string locator = make(kShort, "secret");
    qz_env* other = host_env_create();
    uint8_t own[LOB_DATA_AT];
    uint32_t len = sizeof own;
    ASSERT_EQ(host_lob_make(other, kShort, 0, "other", 5, own, &len), 0);
    const nstr value = value_of(locator);
    char room[10];
    uint32_t count = 99;
    EXPECT_EQ(nblob_get_data(other, -1, &value, room, 10, 0, 10, &count, nullptr), EC_LOB_READ_FAILED);
    EXPECT_EQ(count, 0u);
    host_env_destroy(other);
}

TEST_F(LobTest, ReleasedValuesAreGoneAndTheirLocatorsNameNothing) {
    for (const int32_t storage : {kShort, kLong, kShort | kEnciphered}) {
        host_lob_release_all(env_);
        const std::string old = make(storage, "old");
        const std::string in_row = make(kInRow, "kept");
        host_lob_release_all(env_);
        EXPECT_EQ(read_by(nullptr, old, 10).code, EC_LOB_READ_FAILED);
        // The next value takes the old one's number; the old locator does not find it.
        const std::string next = make(storage, "new");
        EXPECT_EQ(old.substr(1, 8), next.substr(1, 8));
        EXPECT_EQ(read_by(nullptr, old, 10).code, EC_LOB_READ_FAILED);
        EXPECT_EQ(read(next, 10).data, "new");
        EXPECT_EQ(read(in_row, 10).data, "kept");
    }
}

// ---- Locators that nobody made ----------------------------------------------------------------------------------------------

TEST_F(LobTest, LengthsAtTheLimits) {
    std::string locator = make(kLong, "x");
    const auto with_length = [&](uint64_t length) {
        std::memcpy(locator.data() + LOB_LONG_LENGTH_AT, &length, sizeof length);
        return value_of(locator);
    };
    nstr value = with_length((uint64_t{1} << 31) - 1);
    EXPECT_EQ(nblob_is_long_row(&value), 0);
    EXPECT_EQ(nblob_get_4byte_len(&value), 0x7FFFFFFFu);
    value = with_length(uint64_t{1} << 31);
    EXPECT_NE(nblob_is_long_row(&value), 0);
    value = with_length(uint64_t{1} << 32);
    EXPECT_EQ(nblob_get_4byte_len(&value), LOB_LENGTH_UNKNOWN);
    bdta3_colstr slot = slot_of(locator);
    EXPECT_EQ(nblob_get_len_for_colstr_fast(&slot), uint64_t{1} << 32);

    std::string unknown = make(kShort, "x");
    std::memset(unknown.data() + LOB_SHORT_LENGTH_AT, 0xFF, 4);
    value = value_of(unknown);
    EXPECT_NE(nblob_is_long_row(&value), 0);
    EXPECT_EQ(nblob_get_4byte_len(&value), LOB_LENGTH_UNKNOWN);
    slot = slot_of(unknown);
    EXPECT_EQ(nblob_get_len_for_colstr_fast(&slot), 0xFFFFFFFFu);
    EXPECT_EQ(read(unknown, 10).data, "x") << "the store knows";
}

TEST_F(LobTest, CutLocatorsAreNotSound) {
    const std::string in_row = make(kInRow, "abc");
    const std::string short_form = make(kShort, "abc");
    for (const std::string& whole : {in_row, short_form}) {
        for (size_t n = 1; n < whole.size(); ++n) {
            std::string cut = whole.substr(0, n);
            const nstr value = value_of(cut);
            const bdta3_colstr slot = slot_of(cut);
            EXPECT_NE(nblob_is_long_row(&value), 0) << n;
            EXPECT_EQ(nblob_get_4byte_len(&value), 0u) << n;
            EXPECT_EQ(nblob_get_len_for_colstr_fast(&slot), UINT64_MAX) << n;
            EXPECT_EQ(nblob_is_in_row_for_colstr_fast(&slot), 0) << n;
            EXPECT_EQ(read_by(nullptr, cut, 10).code, EC_LOB_READ_FAILED) << n;
        }
    }
}

TEST_F(LobTest, NoLocatorIsAnEmptyValue) {
    std::string none;
    const nstr value = value_of(none);
    const bdta3_colstr slot{0, 0, nullptr};
    EXPECT_EQ(nblob_is_long_row(&value), 0);
    EXPECT_EQ(nblob_get_4byte_len(&value), 0u);
    EXPECT_EQ(nblob_get_len_for_colstr_fast(&slot), 0u);
    EXPECT_EQ(nblob_is_in_row_for_colstr_fast(&slot), 0);
    EXPECT_EQ(read_by(nullptr, none, 10).code, 0);
}

TEST_F(LobTest, BytesAtRandomStayInside) {
    const uint32_t seed = support::test_seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const std::string sound[] = {make(kInRow, sample(60)), make(kShort, sample(60)), make(kLong | kEnciphered, sample(60))};
    support::TextAtPageEnd locators(4096);
    for (int round = 0; round < 20000; ++round) {
        std::string bytes = sound[random() % 3];
        for (uint32_t changes = random() % 4; changes > 0; --changes)
            bytes[random() % bytes.size()] = static_cast<char>(random());
        bytes.resize(random() % (bytes.size() + 1));
        char* at = locators.place(bytes);
        const uint32_t len = static_cast<uint32_t>(bytes.size());
        nstr value;
        nstr_assign_fast(&value, len, at);
        const bdta3_colstr slot{len, 0, at};
        const uint64_t length = nblob_get_len_for_colstr_fast(&slot);
        if (nblob_is_in_row_for_colstr_fast(&slot) != 0) {
            EXPECT_LE(LOB_DATA_AT + length, len);
        }
        EXPECT_EQ(nblob_is_long_row(&value) != 0, length >= uint64_t{1} << 31);
        const nblob_encryption* handle = nullptr;
        ndct_work_area work;
        int32_t status = 0;
        if (len >= LOB_DATA_AT) handle = ndct_get_blob_enc_info(env_, mem_, at, &work, &status);
        char* room = guard_.room(64);
        for (const auto service : {nblob_get_data, ntext_get_data}) {
            uint32_t count = 99;
            const int32_t code = service(env_, -1, &value, room, 64, random() % 70, 64, &count, handle);
            EXPECT_LE(count, code < 0 ? 0 : 64u);
        }
    }
}

}  // namespace
