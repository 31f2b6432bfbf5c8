#include "engine/interval_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>

#include "qzbifun/codes.h"

namespace qzengine {
namespace {

// Hands read the text with the end mark that the host's readers want.
template <class Read>
int32_t with_end_mark(std::string_view text, Read read) {
    if (text.find('\0') != std::string_view::npos) return EC_INTERVAL_TEXT_INVALID;
    constexpr size_t kShort = 64;
    char copy[kShort];
    if (text.size() >= kShort) return read(std::string(text).c_str());
    copy[text.copy(copy, text.size())] = '\0';
    return read(copy);
}

}  // namespace

int32_t parse_interval(std::string_view text, qz_interval_ym& value, int32_t qualifier) {
    return with_end_mark(text, [&](const char* t) { return qz_interval_ym_from_char(nullptr, t, &value, qualifier); });
}

int32_t parse_interval(std::string_view text, qz_interval_dt& value, int32_t qualifier) {
    return with_end_mark(text, [&](const char* t) { return qz_interval_dt_from_char(nullptr, t, &value, qualifier); });
}

void append_interval(TextBuffer& out, const qz_interval_ym& value) {
    const int64_t months = int64_t{value.iv_year} * 12 + value.iv_month;  // below 2^35
    const int64_t length = months < 0 ? -months : months;
    out.append(fmt::format("{}{}-{}", months < 0 ? "-" : "", length / 12, length % 12));
}

void append_interval(TextBuffer& out, const qz_interval_dt& value) {
    constexpr int32_t kMicrosPerSecond = 1'000'000;
    constexpr int32_t kFractionDigits = 6;
    const bool has_fraction = value.iv_fraction % kMicrosPerSecond != 0;
    qz_interval_dt written = value;
    written.iv_qualifier = HOST_IV_QUALIFIER_DT - (has_fraction ? 0 : kFractionDigits);
    char buffer[HOST_IV_TEXT_BYTES];
    qz_interval_dt_to_char_oracle(&written, buffer, 0);  // "+000000003 04:05:06.789000"
    std::string_view text(buffer);
    if (text[0] == '-') out.append('-');
    text.remove_prefix(std::min(text.find_first_not_of('0', 1), text.find(' ') - 1));
    if (has_fraction) text = text.substr(0, text.find_last_not_of('0') + 1);
    out.append(text);
}

}  // namespace qzengine
