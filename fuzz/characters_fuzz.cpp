// The character services over any bytes in any character set: they agree with one another and read nothing outside.
//
// First byte: the character set. Second: a number of characters. The rest is the text, in a block of exactly its size.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "fuzz/require.h"
#include "qzbifun/codes.h"
#include "qzhost/characters.h"
#include "qzhost/control.h"

namespace {

struct Text {
    std::unique_ptr<char[]> bytes;
    uint32_t len;

    Text(const uint8_t* data, size_t size) : bytes(new char[size]), len(static_cast<uint32_t>(size)) {
        if (size > 0) std::memcpy(bytes.get(), data, size);
    }
    const char* at(uint32_t i) const { return bytes.get() + i; }
    std::string string() const { return {bytes.get(), len}; }
};

// The walk from character to character, which all other services must agree with.
void check_walk(const Text& text) {
    std::unique_ptr<int32_t[]> positions(new int32_t[text.len]);
    uint32_t multibyte = 0;
    const uint32_t count = qz_mbstrlen_cposition_ex(text.at(0), text.len, positions.get(), &multibyte);
    require(qz_mbstrlen_ex(text.at(0), text.len) == count);
    require((qz_translate_from_str_has_mb(text.at(0), text.len) != 0) == (multibyte > 0));
    uint32_t at = 0;
    for (uint32_t i = 0; i < count; ++i) {
        require(static_cast<uint32_t>(positions[i]) == at + 1);
        uint32_t next = 0;
        require(qz_char_start(text.at(0), text.len, at, &next) != 0);
        const uint32_t length = qz_mbget_bytelen(text.at(at), text.len - at, 1);
        const char* behind = qz_mbsinc_ex(text.at(at), text.len - at);
        at += length;
        require(behind == (at < text.len ? text.at(at) : nullptr));
        if (length > 1) require(qz_char_start(text.at(0), text.len, at - 1, &next) == 0 && next == at);
    }
    require(at == text.len);
}

void check_passing(const Text& text, uint32_t n) {
    const uint32_t passed = qz_mbget_bytelen(text.at(0), text.len, n);
    uint32_t rest = 0;
    const char* behind = qz_mbsninc_ex(text.at(0), text.len, n, &rest);
    require(behind == nullptr ? rest == 0 : behind == text.at(passed) && rest == text.len - passed);
    uint32_t bytes = 0;
    require(qz_mbsninc_count_ex(text.at(0), text.len, n, 1, &bytes) == text.at(passed));
    require(bytes == qz_mbget_bytelen(text.at(passed), text.len - passed, 1));
    uint32_t characters = 0;
    uint32_t limit = n;
    qz_mbget_valid_chars(text.at(0), text.len, &characters, &limit);
    require(limit <= n && limit <= text.len && qz_mbstrlen_ex(text.at(0), limit) == characters);
    uint32_t tail = 0;
    const uint32_t whole = qz_mbstrlen_end(text.at(0), text.len, &tail);
    require(tail <= 3 && tail <= text.len && qz_mbstrlen_ex(text.at(0), text.len - tail) == whole);
}

void check_changes(Text& text) {
    const std::string before = text.string();
    const uint32_t count = qz_mbstrlen_ex(text.at(0), text.len);
    if (qz_mbsrev_ex(text.bytes.get(), text.len) == nullptr) {
        require(text.string() == before);
    } else {
        require(qz_mbstrlen_ex(text.at(0), text.len) == count);
        require(qz_mbsrev_ex(text.bytes.get(), text.len) != nullptr);
        require(text.string() == before);
    }
    qz_mbsupper_ex(text.bytes.get(), text.len);
    require(qz_mbstrlen_ex(text.at(0), text.len) == count);
    const std::string upper = text.string();
    qz_mbsupper_ex(text.bytes.get(), text.len);
    require(text.string() == upper);
    qz_mbslower_ex(text.bytes.get(), text.len);
    require(qz_mbstrlen_ex(text.at(0), text.len) == count);
}

void check_trim_and_pad(const Text& text, const Text& other) {
    const char* moved = text.at(0);
    uint32_t left = text.len;
    trim_left(nullptr, other.at(0), other.len, &moved, &left);
    require(moved == text.at(text.len - left));
    static char output[QZ_PAD_MAX_BYTES + 1];
    uint32_t out_len = 0;
    for (const int32_t length : {0, 7, 300, 20000}) {
        if (qz_get_lpad_str(text.at(0), text.len, length, other.at(0), other.len, output, &out_len) == 0) {
            require(out_len <= QZ_PAD_MAX_BYTES);
        }
        if (qz_get_rpad_str(text.at(0), text.len, length, other.at(0), other.len, output, &out_len) == 0) {
            require(out_len <= QZ_PAD_MAX_BYTES);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    host_parameter_set(SERVER_CHARSET, data[0] % 3);
    const uint32_t n = data[1];
    Text text(data + 2, size - 2);
    const Text head(data + 2, (size - 2) / 4);
    check_walk(text);
    check_passing(text, n);
    check_trim_and_pad(text, head);
    check_changes(text);
    return 0;
}
