// Number formats. The input is a format, NLS parameters and a text, each ended by a newline but for the last. Whatever the text
// says as a plain number or by the format is written by the format; what was written reads back, and is written again alike.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "fuzz/require.h"
#include "qzhost/decimal.h"
#include "qzhost/number_format.h"

namespace {

std::string_view take_line(std::string_view& rest) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(line.size() < rest.size() ? line.size() + 1 : line.size());
    return line;
}

uint32_t size_of(std::string_view text) { return static_cast<uint32_t>(text.size()); }

void write_and_read_back(const xdec& number, const xdec_number_format& format) {
    char written[XDEC_FORMATTED_BYTES];
    require(xdec_to_char_with_fmt_low(nullptr, &number, written, &format) == 0);
    const size_t length = strnlen(written, sizeof written);
    require(length < sizeof written);
    if (length > 0 && written[0] == '#') return;

    xdec back;
    require(char_to_dec_with_fmt_low(nullptr, written, static_cast<uint32_t>(length), &format, &back) == 0);
    if (back.sign == XDEC_SIGN_ZERO) return;  // the minus of a number that was rounded to zero is not read
    char again[XDEC_FORMATTED_BYTES];
    require(xdec_to_char_with_fmt_low(nullptr, &back, again, &format) == 0);
    require(std::strcmp(written, again) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::string_view picture = take_line(text), nls = take_line(text);
    xdec_number_format format;
    const int32_t code = nls.empty() ? xdec_to_char_fmt_parse(nullptr, picture.data(), size_of(picture), &format)
                                     : xdec_to_char_fmt_parse_with_nls(nullptr, picture.data(), size_of(picture), nls.data(),
                                                                       size_of(nls), &format);
    if (code != 0) return 0;

    xdec number;
    if (char_to_dec_with_fmt_low(nullptr, text.data(), size_of(text), &format, &number) == 0) {
        require(xdec_is_canonical(&number) != 0);
        write_and_read_back(number, format);
    }
    if (xdec_from_char(&number, text.data(), size_of(text)) == 0) {
        write_and_read_back(number, format);
    }
    return 0;
}
