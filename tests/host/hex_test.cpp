#include "qzhost/hex.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "qzbifun/codes.h"
#include "support/text_at_page_end.h"

namespace {

struct Read {
    int32_t code;
    std::string bytes;
};

Read read_hex(const std::string& text) {
    std::vector<char> record(sizeof(uint32_t) + (text.size() + 1) / 2);
    const int32_t code = nbin_from_char_ex(text.data(), static_cast<uint32_t>(text.size()), record.data(), 0);
    uint32_t count;
    std::memcpy(&count, record.data(), sizeof count);
    return {code, std::string(record.data() + sizeof count, count)};
}

TEST(Hex, EveryByteBothWaysInBothCases) {
    for (int byte = 0; byte < 256; ++byte) {
        char upper[3], lower[3];
        std::snprintf(upper, sizeof upper, "%02X", byte);
        std::snprintf(lower, sizeof lower, "%02x", byte);
        const char c = static_cast<char>(byte);
        char written[3];
        EXPECT_EQ(nbin_to_char_ex(&c, 1, written, 0), 0);
        EXPECT_STREQ(written, upper);
        for (const char* text : {upper, lower}) {
            const Read read = read_hex(text);
            EXPECT_EQ(read.code, 0);
            EXPECT_EQ(read.bytes, std::string(1, c));
        }
    }
}

TEST(Hex, EveryOtherCharacterIsRefusedInEveryPlace) {
    for (int byte = 0; byte < 256; ++byte) {
        if (byte < 0x80 && std::isxdigit(byte)) continue;
        for (size_t length = 1; length <= 5; ++length) {
            for (size_t at = 0; at < length; ++at) {
                std::string text(length, 'A');
                text[at] = static_cast<char>(byte);
                EXPECT_EQ(read_hex(text).code, EC_HEX_TEXT_INVALID) << byte;
                EXPECT_EQ(read_hex(text).bytes, "");
                uint8_t bytes[3];
                uint32_t count = 99;
                EXPECT_EQ(nbin_from_char_low_with_len(text.data(), static_cast<uint32_t>(length), bytes, &count), -1);
            }
        }
    }
}

TEST(Hex, OddTextsHaveAZeroInFront) {
    EXPECT_EQ(read_hex("F").bytes, "\x0F");
    EXPECT_EQ(read_hex("1ab").bytes, "\x01\xAB");
    EXPECT_EQ(read_hex("").code, 0);
    EXPECT_EQ(read_hex("").bytes, "");
    uint8_t bytes[2];
    uint32_t count = 0;
    EXPECT_EQ(nbin_from_char_low_with_len("0afF", 4, bytes, &count), 0);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(bytes[0], 0x0A);
    EXPECT_EQ(bytes[1], 0xFF);
}

TEST(Hex, RoundTripAtTheEdgeOfAPage) {
    support::TextAtPageEnd source_guard(4096), text_guard(8192), record_guard(8192);
    for (uint32_t n : {0u, 1u, 7u, 255u, 4000u}) {
        std::string bytes;
        for (uint32_t i = 0; i < n; ++i) bytes += static_cast<char>(i * 37 + 11);
        char* text = text_guard.room(2 * n + 1);
        ASSERT_EQ(nbin_to_char_ex(source_guard.place(bytes), n, text, 0), 0);
        ASSERT_EQ(std::strlen(text), 2 * n);
        const char* unterminated = text_guard.place(std::string(text, 2 * n));
        char* record = record_guard.room(sizeof(uint32_t) + n);
        ASSERT_EQ(nbin_from_char_ex(unterminated, 2 * n, record, 0), 0);
        EXPECT_EQ(std::string(record + sizeof(uint32_t), n), bytes);
    }
}

}  // namespace
