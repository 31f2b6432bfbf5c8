#include "host/src/case_tables.h"

#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/utf8.h>

#include <cstring>

namespace qzhost {

namespace {

constexpr uint32_t kFirstMultibyte = 0x80;
constexpr uint32_t kCodePoints = 0x110000;

uint32_t map_code_point(uint32_t c, Case to) {
    const UChar32 point = static_cast<UChar32>(c);
    return static_cast<uint32_t>(to == Case::upper ? u_toupper(point) : u_tolower(point));
}

// A character's bytes; length 0 when the character set has none for it.
struct Encoded {
    Sequence sequence;
    int32_t length;
};

Encoded encode_utf8(uint32_t c) {
    uint8_t bytes[4] = {};
    int32_t length = 0;
    UBool failed = false;
    U8_APPEND(bytes, length, 4, c, failed);
    return failed ? Encoded{0, 0} : Encoded{load32(bytes), length};
}

class Encoder {
  public:
    explicit Encoder(const char* name) : converter_(ucnv_open(name, &opened_)) {
        // A character that the set does not have ends the conversion with an error.
        if (is_open()) ucnv_setFromUCallBack(converter_, UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &opened_);
    }
    ~Encoder() { ucnv_close(converter_); }
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    bool is_open() const { return U_SUCCESS(opened_); }

    Encoded encode(uint32_t c) {
        UChar units[2];
        int32_t count = 0;
        U16_APPEND_UNSAFE(units, count, c);
        uint8_t bytes[8] = {};
        UErrorCode code = U_ZERO_ERROR;
        const int32_t length = ucnv_fromUChars(converter_, reinterpret_cast<char*>(bytes), sizeof bytes, units, count, &code);
        return U_FAILURE(code) || length > 4 ? Encoded{0, 0} : Encoded{load32(bytes), length};
    }

  private:
    UErrorCode opened_ = U_ZERO_ERROR;
    UConverter* converter_;
};

}  // namespace

Utf8CaseTable::Utf8CaseTable(Case to) {
    for (uint32_t c = kFirstMultibyte; c < kTwoBytes; ++c) two_bytes_[c] = static_cast<uint16_t>(encode_utf8(c).sequence);
    for (uint32_t c = kFirstMultibyte; c < kPrefixes * 64; ++c) {
        const uint32_t mapped = map_code_point(c, to);
        if (mapped != c) add(c, mapped);
    }
}

void Utf8CaseTable::add(uint32_t from, uint32_t to) {
    const Encoded source = encode_utf8(from);
    const Encoded target = encode_utf8(to);
    if (source.length != target.length) return;
    uint8_t& page = page_of_[from / 64];
    if (page == 0) {
        if (pages_in_use_ == kPages) return;
        page = static_cast<uint8_t>(pages_in_use_++);
    }
    changes_[page][from % 64] = target.sequence - source.sequence;
    if (source.length == 2) two_bytes_[from] = static_cast<uint16_t>(target.sequence);
    add_lead(source.sequence, source.length);
}

void Utf8CaseTable::add_lead(Sequence from, int32_t length) {
    const uint8_t lead = from & 0xFF;
    uint8_t& set = sets_of_leads_[lead % 64];
    if (set == 0) {
        leads_by_low_half_[lead % 16] |= static_cast<uint8_t>(1 << (lead - 0xC0) / 16);
        set = length == 2 ? kTwo : next_set_;
        // When all bits are taken lead bytes share the last.
        if (length > 2 && (next_set_ << 1 & kLonger) != 0) next_set_ = static_cast<uint8_t>(next_set_ << 1);
    }
    if (length > 2) sets_of_seconds_[(from >> 8) % 64] |= set;
}

const Utf8CaseTable& Utf8CaseTable::of(Case to) {
    static const Utf8CaseTable upper(Case::upper);
    static const Utf8CaseTable lower(Case::lower);
    return to == Case::upper ? upper : lower;
}

LegacyCaseTable::LegacyCaseTable(const char* converter_name, Case to) {
    Encoder encoder(converter_name);
    if (!encoder.is_open()) return;
    for (uint32_t c = kFirstMultibyte; c < kCodePoints; ++c) {
        const uint32_t mapped = map_code_point(c, to);
        if (mapped == c) continue;
        const Encoded source = encoder.encode(c);
        const Encoded target = encoder.encode(mapped);
        if (source.length > 1 && source.length == target.length) add(source.sequence, target.sequence);
    }
}

void LegacyCaseTable::add(Sequence from, Sequence to) {
    if (mappings_ == kMostMappings) return;
    ++mappings_;
    size_t i = place_of(from);
    while (places_[i].from != kNoMapping) i = (i + 1) % kPlaces;
    places_[i] = {from, to};
}

const LegacyCaseTable& gb18030_case_table(Case to) {
    static const LegacyCaseTable upper("GB18030", Case::upper);
    static const LegacyCaseTable lower("GB18030", Case::lower);
    return to == Case::upper ? upper : lower;
}

const LegacyCaseTable& euc_kr_case_table(Case to) {
    static const LegacyCaseTable upper("EUC-KR", Case::upper);
    static const LegacyCaseTable lower("EUC-KR", Case::lower);
    return to == Case::upper ? upper : lower;
}

}  // namespace qzhost
