#include "qzhost/lob.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "host/src/allocation.h"
#include "host/src/environment.h"
#include "host/src/lob_store.h"
#include "qzbifun/codes.h"
#include "qzhost/characters.h"
#include "qzhost/control.h"
#include "qzhost/string_value.h"

using namespace qzhost;

// A key ring has no key of its own: a read takes the value's from the store.
struct nblob_encryption {
    bool is_ring;
    uint64_t number;
    LobKey key;
};

namespace {

constexpr size_t kNumberAt = 1;
constexpr size_t kFlagsAt = 13;
constexpr size_t kCheckAt = 14;
constexpr uint8_t kTextFlag = 1;
constexpr uint8_t kEncipheredFlag = 2;
constexpr uint64_t kNoSoundLength = UINT64_MAX;
constexpr uint64_t kTooLongToRead = uint64_t{1} << 31;

static_assert(sizeof(nblob_encryption) <= sizeof(ndct_work_area));
static_assert(alignof(nblob_encryption) <= alignof(ndct_work_area));  // NOLINT(misc-redundant-expression): of two types

template <class Number>
Number read_number(const uint8_t* at) {
    Number number;
    std::memcpy(&number, at, sizeof number);
    return number;
}

template <class Number>
void write_number(uint8_t* at, Number number) {
    std::memcpy(at, &number, sizeof number);
}

// The head of a locator, all of LOB_DATA_AT bytes.
struct LocatorHead {
    uint8_t kind;
    uint64_t number;
    uint64_t length;
    uint8_t flags;
    uint64_t check;
};

LocatorHead read_head(const uint8_t* bytes) {
    LocatorHead head{bytes[LOB_KIND_AT], read_number<uint64_t>(bytes + kNumberAt), 0, bytes[kFlagsAt],
                     read_number<uint64_t>(bytes + kCheckAt)};
    head.length = head.kind == LOB_KIND_LONG ? read_number<uint64_t>(bytes + LOB_LONG_LENGTH_AT)
                                             : read_number<uint32_t>(bytes + LOB_SHORT_LENGTH_AT);
    return head;
}

void write_head(const LocatorHead& head, uint8_t* bytes) {
    std::memset(bytes, 0, LOB_DATA_AT);
    bytes[LOB_KIND_AT] = head.kind;
    bytes[kFlagsAt] = head.flags;
    write_number(bytes + kNumberAt, head.number);
    write_number(bytes + kCheckAt, head.check);
    if (head.kind == LOB_KIND_LONG) {
        write_number(bytes + LOB_LONG_LENGTH_AT, head.length);
    } else {
        write_number(bytes + LOB_SHORT_LENGTH_AT, static_cast<uint32_t>(head.length));
    }
}

// The bytes of a slot or string value, taken for a locator.
struct Locator {
    const uint8_t* bytes;
    uint32_t len;

    bool is_absent() const { return len == 0; }

    // The whole head stands there, and all data of an in-row value.
    bool is_sound() const {
        if (len < LOB_DATA_AT) return false;
        const LocatorHead head = read_head(bytes);
        return head.kind != LOB_KIND_IN_ROW || head.length <= len - LOB_DATA_AT;
    }

    uint64_t length() const {
        if (is_absent()) return 0;
        return is_sound() ? read_head(bytes).length : kNoSoundLength;
    }
};

Locator locator_of(const nstr* value) { return {reinterpret_cast<const uint8_t*>(nstr_bytes(value)), value->len}; }
Locator locator_of(const bdta3_colstr* slot) { return {reinterpret_cast<const uint8_t*>(slot->bytes), slot->len}; }

// What tests make of this thread's reads.
constinit thread_local int32_t lookup_code = 0;
constinit thread_local int32_t read_code = 0;
constinit thread_local uint64_t most_bytes_read = UINT64_MAX;

const LobValue* find_value(const qz_env* env, const LocatorHead& head) {
    const LobStore* store = environment(env)->lobs;
    return store == nullptr ? nullptr : store->find(head.number, head.check);
}

}  // namespace

// ---- What a locator says ----------------------------------------------------------------------------------------------------

int32_t nblob_is_long_row(const nstr* locator) { return locator_of(locator).length() >= kTooLongToRead; }

uint32_t nblob_get_4byte_len(const nstr* locator) {
    const uint64_t length = locator_of(locator).length();
    if (length == kNoSoundLength) return 0;
    return static_cast<uint32_t>(std::min<uint64_t>(length, LOB_LENGTH_UNKNOWN));
}

uint64_t nblob_get_len_for_colstr_fast(const bdta3_colstr* slot) { return locator_of(slot).length(); }

int32_t nblob_is_in_row_for_colstr_fast(const bdta3_colstr* slot) {
    const Locator locator = locator_of(slot);
    return locator.is_sound() && locator.bytes[LOB_KIND_AT] == LOB_KIND_IN_ROW;
}

int32_t sess4_get_lob_reader(const qz_session*) { return LOB_READER_ANY; }

// ---- Encryption -------------------------------------------------------------------------------------------------------------

const nblob_encryption* ndct_get_blob_enc_info_low(qz_env* env, rt_memobj*, const char* locator, ndct_work_area* work,
                                                   int32_t* out_reuse, int32_t* out_status) {
    *out_reuse = 0;
    *out_status = lookup_code;
    if (lookup_code != 0) return nullptr;
    const LocatorHead head = read_head(reinterpret_cast<const uint8_t*>(locator));
    nblob_encryption* handle = new (work) nblob_encryption{true, 0, {}};
    if (head.kind == LOB_KIND_IN_ROW || (head.flags & kEncipheredFlag) == 0) return handle;
    const LobValue* value = find_value(env, head);
    if (value == nullptr) {
        *out_status = EC_LOB_READ_FAILED;
        return nullptr;
    }
    *out_reuse = 1;
    *handle = {false, head.number, value->key};
    return handle;
}

const nblob_encryption* ndct_get_blob_enc_info(qz_env* env, rt_memobj* rt_mem, const char* locator, ndct_work_area* work,
                                               int32_t* out_status) {
    int32_t reuse;
    return ndct_get_blob_enc_info_low(env, rt_mem, locator, work, &reuse, out_status);
}

// ---- Reading ----------------------------------------------------------------------------------------------------------------

namespace {

const LobKey* key_for(const LobValue& value, uint64_t number, const nblob_encryption* encryption) {
    if (encryption == nullptr) return nullptr;
    if (encryption->is_ring) return &value.key;
    return encryption->number == number ? &encryption->key : nullptr;
}

int32_t read_from_store(const LobValue& value, uint64_t number, const nblob_encryption* encryption, uint8_t* destination,
                        uint64_t offset, uint64_t length) {
    if (!value.enciphered) {
        std::memcpy(destination, value.data + offset, length);
        return 0;
    }
    const LobKey* key = key_for(value, number, encryption);
    if (key == nullptr) return EC_LOB_READ_FAILED;
    return apply_lob_cipher(*key, offset, value.data + offset, destination, length) ? 0 : EC_OUT_OF_MEMORY;
}

struct Part {
    uint64_t offset;
    uint64_t most;    // bytes asked for, and no more than there is room for
    uint64_t read;    // what came
    uint64_t behind;  // bytes of the value behind those
};

int32_t read_part(qz_env* env, const nstr* value, uint8_t* destination, const nblob_encryption* encryption, Part& part) {
    part.read = part.behind = 0;
    if (read_code != 0) return read_code;
    const Locator locator = locator_of(value);
    if (locator.is_absent()) return 0;
    if (!locator.is_sound()) return EC_LOB_READ_FAILED;
    const LocatorHead head = read_head(locator.bytes);
    const bool in_row = head.kind == LOB_KIND_IN_ROW;
    const LobValue* stored = in_row ? nullptr : find_value(env, head);
    if (!in_row && stored == nullptr) return EC_LOB_READ_FAILED;
    const uint64_t length = in_row ? head.length : stored->length;
    if (part.offset >= length) return 0;
    const uint64_t wanted = std::min({part.most, length - part.offset, most_bytes_read});
    if (wanted == 0) return 0;
    if (in_row) {
        std::memcpy(destination, locator.bytes + LOB_DATA_AT + part.offset, wanted);
    } else {
        const int32_t code = read_from_store(*stored, head.number, encryption, destination, part.offset, wanted);
        if (code < 0) return code;
    }
    part.read = wanted;
    part.behind = length - part.offset - wanted;
    return 0;
}

}  // namespace

int32_t nblob_get_data(qz_env* env, int32_t, const nstr* locator, void* destination, uint32_t capacity, uint64_t offset,
                       uint32_t count, uint32_t* out_read, const nblob_encryption* encryption) {
    Part part{offset, std::min(capacity, count), 0, 0};
    const int32_t code = read_part(env, locator, static_cast<uint8_t*>(destination), encryption, part);
    *out_read = static_cast<uint32_t>(part.read);
    return code;
}

int32_t ntext_get_data(qz_env* env, int32_t, const nstr* locator, void* destination, uint32_t capacity, uint64_t offset,
                       uint32_t count, uint32_t* out_read, const nblob_encryption* encryption) {
    Part part{offset, std::min(capacity, count), 0, 0};
    const int32_t code = read_part(env, locator, static_cast<uint8_t*>(destination), encryption, part);
    *out_read = static_cast<uint32_t>(part.read);
    if (part.behind > 0) {
        uint32_t tail = 0;
        qz_mbstrlen_end(static_cast<const char*>(destination), *out_read, &tail);
        *out_read -= tail;
    }
    return code;
}

// ---- Control ----------------------------------------------------------------------------------------------------------------

namespace {

constexpr int32_t kKindMask = 0xFF;

struct NewLob {
    int32_t storage;
    bool is_text;
    const void* data;
    uint64_t length;

    int32_t kind() const { return storage & kKindMask; }
    bool is_enciphered() const { return (storage & HOST_LOB_ENCIPHERED) != 0; }

    bool is_possible() const {
        if ((storage & ~(kKindMask | HOST_LOB_ENCIPHERED)) != 0) return false;
        if (kind() == LOB_KIND_IN_ROW) return !is_enciphered() && length <= UINT32_MAX - LOB_DATA_AT;
        return kind() == LOB_KIND_LONG || (kind() == LOB_KIND_SHORT && length < LOB_LENGTH_UNKNOWN);
    }
    uint32_t locator_bytes() const { return LOB_DATA_AT + (kind() == LOB_KIND_IN_ROW ? static_cast<uint32_t>(length) : 0); }
};

LobStore* store_of(qz_env* env) {
    LobStore*& store = environment(env)->lobs;
    if (store == nullptr) {
        void* space = allocate(sizeof(LobStore));
        if (space != nullptr) store = new (space) LobStore;
    }
    return store;
}

}  // namespace

int32_t host_lob_make(qz_env* env, int32_t storage, int32_t is_text, const void* data, uint64_t len, uint8_t* locator,
                      uint32_t* locator_len) {
    const NewLob lob{storage, is_text != 0, data, len};
    if (!lob.is_possible()) return EC_INVALID_ARGUMENT;
    const uint32_t room = *locator_len;
    *locator_len = lob.locator_bytes();
    if (room < *locator_len) return EC_INVALID_ARGUMENT;
    LocatorHead head{static_cast<uint8_t>(lob.kind()), 0, len, 0, 0};
    head.flags = static_cast<uint8_t>((lob.is_text ? kTextFlag : 0) | (lob.is_enciphered() ? kEncipheredFlag : 0));
    if (lob.kind() == LOB_KIND_IN_ROW) {
        write_head(head, locator);
        if (len > 0) std::memcpy(locator + LOB_DATA_AT, data, len);
        return 0;
    }
    LobStore* store = store_of(env);
    if (store == nullptr) return EC_OUT_OF_MEMORY;
    head.number = store->add(data, len, lob.is_enciphered());
    if (head.number == 0) return EC_OUT_OF_MEMORY;
    head.check = store->at(head.number).check;
    write_head(head, locator);
    return 0;
}

void host_lob_release_all(qz_env* env) {
    LobStore* store = environment(env)->lobs;
    if (store != nullptr) store->clear();
}

void host_lob_fail(int32_t what, int32_t code) {
    if (what == HOST_LOB_LOOKUP) lookup_code = code;
    if (what == HOST_LOB_READ) read_code = code;
}

void host_lob_limit_read(uint64_t bytes) { most_bytes_read = bytes; }

namespace qzhost {

void destroy_lob_store(LobStore* store) {
    if (store == nullptr) return;
    store->~LobStore();
    release(store);
}

}  // namespace qzhost
