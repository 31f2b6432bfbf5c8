#include "engine/lob_values.h"

#include <new>

#include "qzbifun/codes.h"
#include "qzhost/column.h"
#include "qzhost/control.h"
#include "qzhost/lob.h"

namespace qzengine {
namespace {

int32_t storage_of(size_t bytes) {
    return bytes <= kInRowBytes ? LOB_KIND_IN_ROW : bytes < kLongFormBytes ? LOB_KIND_SHORT : LOB_KIND_LONG;
}

uint32_t locator_bytes(int32_t storage, size_t bytes) {
    return LOB_DATA_AT + (storage == LOB_KIND_IN_ROW ? static_cast<uint32_t>(bytes) : 0);
}

int32_t make_lob(qz_env* env, int32_t storage, ValueType type, std::string_view value, char* locator, uint32_t room) {
    return host_lob_make(env, storage, type == ValueType::kClob, value.data(), value.size(),
                         reinterpret_cast<uint8_t*>(locator), &room);
}

}  // namespace

int32_t store_lob(qz_env* env, rt_memobj* rt_mem, ValueType type, std::string_view value, bdta3_col* vector, uint32_t row) {
    const int32_t storage = storage_of(value.size());
    const uint32_t bytes = locator_bytes(storage, value.size());
    char* locator = bdta3_colstr_assign_without_value(env, rt_mem, vector->data, row, bytes, 0);
    if (locator == nullptr) return EC_OUT_OF_MEMORY;
    if (const int32_t code = make_lob(env, storage, type, value, locator, bytes); code < 0) return code;
    vector->data->valid[row] = 1;
    return 0;
}

std::string in_row_locator(ValueType type, std::string_view value) {
    std::string locator(locator_bytes(LOB_KIND_IN_ROW, value.size()), '\0');
    // Of the environment nothing is asked: the value stands in the locator.
    const int32_t code = make_lob(nullptr, LOB_KIND_IN_ROW, type, value, locator.data(), static_cast<uint32_t>(locator.size()));
    if (code < 0) throw std::bad_alloc();
    return locator;
}

int32_t read_lob(qz_env* env, const bdta3_colstr& slot, std::string& storage, std::string_view& value) {
    value = {};
    if (slot.len == 0) return 0;
    const uint64_t length = nblob_get_len_for_colstr_fast(&slot);
    if (nblob_is_in_row_for_colstr_fast(&slot) != 0) {
        value = {slot.bytes + LOB_DATA_AT, length};
        return 0;
    }
    nstr locator;
    bdta3_colstr_to_nstr_fast(&slot, &locator);
    if (nblob_is_long_row(&locator) != 0) return EC_LOB_TOO_LONG_ROW;
    ndct_work_area work;
    int32_t status = 0;
    const nblob_encryption* encryption = ndct_get_blob_enc_info(env, nullptr, slot.bytes, &work, &status);
    if (status < 0) return status;
    storage.resize(length);
    uint32_t read = 0;
    const auto count = static_cast<uint32_t>(length);
    const int32_t code = nblob_get_data(env, LOB_READER_ANY, &locator, storage.data(), count, 0, count, &read, encryption);
    if (code < 0) return code;
    if (read < length) return EC_LOB_READ_FAILED;
    value = storage;
    return 0;
}

}  // namespace qzengine
