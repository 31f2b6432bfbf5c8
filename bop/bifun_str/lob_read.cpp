// LOBs read whole, into one block: no string function works on a LOB in place.
//
// Data that stands in the locator is copied from there; neither the dictionary nor the store is asked. The two readers differ
// in what they leave behind when the look-up of the encryption fails: that of slots leaves its block in out_data, and logs.
#include "bop/bifun_str/lob_read.h"

#include <cstring>

#include "bop/frame/export.h"
#include "bop/frame/memory.h"
#include "qzbifun/codes.h"
#include "qzbifun/string.h"
#include "qzhost/error.h"
#include "qzhost/lob.h"
#include "qzhost/string_value.h"

namespace bifun {
namespace {

constexpr uint64_t kTooLong = uint64_t{1} << 31;

struct Destination {
    char** data;
    uint32_t* len;

    void clear() const {
        *data = nullptr;
        *len = 0;
    }
    void end_at(uint32_t bytes) const {
        (*data)[bytes] = 0;
        *len = bytes;
    }
};

int32_t pushed(qz_env* env, int32_t code, const char* reader) {
    qzerr_stk_push(env, code, reader);
    return code;
}

// A block for n bytes and the 0 byte behind them.
int32_t allocate(qz_env* env, rt_memobj* rt_mem, uint32_t n, const char* reader, const Destination& out) {
    *out.len = n;
    *out.data = static_cast<char*>(rt_mem->alloc(env, rt_mem->pool, size_t{n} + 1, __FILE__, __LINE__));
    return *out.data == nullptr ? pushed(env, EC_OUT_OF_MEMORY, reader) : 0;
}

int32_t copy_in_row(const char* locator, uint32_t n, const Destination& out) {
    std::memcpy(*out.data, locator + LOB_DATA_AT, n);
    out.end_at(n);
    return 0;
}

int32_t read_from_store(qz_env* env, int32_t reader, rt_memobj* rt_mem, const nstr* locator, bool is_text, uint32_t n,
                        const nblob_encryption* encryption, const Destination& out) {
    const auto service = is_text ? ntext_get_data : nblob_get_data;
    uint32_t read = 0;
    const int32_t code = service(env, reader, locator, *out.data, n, 0, n, &read, encryption);
    if (code < 0) {
        release_block(env, rt_mem, *out.data);
        *out.data = nullptr;
        return code;
    }
    out.end_at(read);
    return code;
}

}  // namespace

int32_t bifun_lob_to_str(qz_env* env, rt_memobj* rt_mem, const bdta3_colstr* slot, uint32_t is_text, char** out_data,
                         uint32_t* out_len) {
    constexpr const char* kName = "bifun_lob_to_str";
    const Destination out{out_data, out_len};
    out.clear();
    const uint64_t length = nblob_get_len_for_colstr_fast(slot);
    if (length >= kTooLong) return pushed(env, EC_LOB_TOO_LONG, kName);
    const uint32_t n = static_cast<uint32_t>(length);
    if (const int32_t code = allocate(env, rt_mem, n, kName, out); code < 0) return code;
    if (n == 0) {
        out.end_at(0);
        return 0;
    }
    if (nblob_is_in_row_for_colstr_fast(slot) != 0) return copy_in_row(slot->bytes, n, out);

    ndct_work_area work;
    int32_t status = 0;
    const nblob_encryption* encryption = ndct_get_blob_enc_info(env, rt_mem, slot->bytes, &work, &status);
    if (status < 0) {
        elog_try_report_qzerr(status, __FILE__, __LINE__);
        return status;
    }
    nstr locator;
    if (nstr_assign_const_ex_no_clear(env, rt_mem, &locator, slot->len, slot->bytes) < 0) return EC_OUT_OF_MEMORY;
    const bool as_text = static_cast<uint8_t>(is_text) == 1;
    const int32_t code = read_from_store(env, LOB_READER_ANY, rt_mem, &locator, as_text, n, encryption, out);
    nstr_clear(env, rt_mem, &locator);
    return code;
}

}  // namespace bifun

using namespace bifun;

BIFUN_EXPORT int32_t ifun_lob_to_str_ex(qz_env* env, int32_t reader, rt_memobj* rt_mem, const nstr* lob, uint8_t is_text,
                                        char** out_data, uint32_t* out_len) {
    constexpr const char* kName = "ifun_lob_to_str_ex";
    const Destination out{out_data, out_len};
    out.clear();
    if (nblob_is_long_row(lob) != 0) return pushed(env, EC_LOB_TOO_LONG_ROW, kName);
    const uint32_t n = nblob_get_4byte_len(lob);
    if (const int32_t code = allocate(env, rt_mem, n, kName, out); code < 0) return code;
    if (n == 0) {
        out.end_at(0);
        return 0;
    }
    // A locator that tells a length is whole, in-row data too: all others are long rows or empty.
    const char* const locator = nstr_bytes(lob);
    if (locator[LOB_KIND_AT] == LOB_KIND_IN_ROW) return copy_in_row(locator, n, out);

    ndct_work_area work;
    int32_t status = 0;
    const nblob_encryption* encryption = ndct_get_blob_enc_info(env, rt_mem, locator, &work, &status);
    if (status < 0) {
        release_block(env, rt_mem, *out_data);
        *out_data = nullptr;
        return status;
    }
    return read_from_store(env, reader, rt_mem, lob, is_text == 1, n, encryption, out);
}

BIFUN_EXPORT int32_t bjson_get_data_inner(qz_env* env, rt_memobj* rt_mem, const bdta3_colstr* slot, uint32_t is_lob,
                                          char** out_data, uint32_t* out_len) {
    const Destination out{out_data, out_len};
    out.clear();
    if (is_lob != 0) {
        if (nblob_get_len_for_colstr_fast(slot) != 0) return bifun_lob_to_str(env, rt_mem, slot, 1, out_data, out_len);
    } else if (slot->len != 0) {
        *out_data = slot->bytes;
        *out_len = slot->len;
        return 0;
    }
    return pushed(env, EC_JSON_NO_DATA, "bjson_get_data_inner");
}
