#include "qzhost/string_value.h"

#include <cstring>

#include "qzbifun/codes.h"

namespace {

void make_empty(nstr* value, uint32_t has_value) {
    value->has_value = has_value;
    value->len = 0;
    value->blank = 0;
    value->nstr_ext = value->nstr_inline;
    value->nstr_cap = 0;
}

// Room for len bytes: len, has_value and nstr_ext are set, the bytes are the caller's to fill. NULL and an empty value on
// failure.
char* reserve(qz_env* env, rt_memobj* rt_mem, nstr* value, uint64_t len, int32_t* code) {
    make_empty(value, 0);
    if (len >= UINT32_MAX) {
        *code = EC_STRING_TOO_LONG;
        return nullptr;
    }
    if (len > NSTR_INLINE_BYTES) {
        void* block = rt_mem->alloc(env, rt_mem->pool, len + 1, __FILE__, __LINE__);
        if (block == nullptr) {
            *code = EC_OUT_OF_MEMORY;
            return nullptr;
        }
        value->nstr_ext = static_cast<char*>(block);
        value->nstr_cap = static_cast<uint32_t>(len) + 1;
        value->nstr_ext[len] = 0;
    }
    value->has_value = 1;
    value->len = static_cast<uint32_t>(len);
    *code = 0;
    return value->nstr_ext;
}

}  // namespace

int32_t nstr_assign_const_with_blank_no_clear(qz_env* env, rt_memobj* rt_mem, nstr* value, const char* bytes, uint32_t len,
                                              uint32_t blank) {
    int32_t code;
    char* room = reserve(env, rt_mem, value, uint64_t{len} + blank, &code);
    if (room == nullptr) return code;
    if (len > 0) std::memcpy(room, bytes, len);
    std::memset(room + len, ' ', blank);
    return 0;
}

int32_t nstr_assign_const_ex_no_clear(qz_env* env, rt_memobj* rt_mem, nstr* value, uint32_t len, const char* bytes) {
    return nstr_assign_const_with_blank_no_clear(env, rt_mem, value, bytes, len, 0);
}

int32_t nstr_assign_with_blank_no_clear_ex(qz_env* env, rt_memobj* rt_mem, nstr* value, const char* bytes, uint32_t len,
                                           uint32_t blank) {
    return nstr_assign_const_with_blank_no_clear(env, rt_mem, value, bytes, len, blank);
}

int32_t nstr_assign_with_blank_no_clear(qz_env* env, rt_memobj* rt_mem, nstr* value, const bdta3_colstr* slot) {
    return nstr_assign_const_with_blank_no_clear(env, rt_mem, value, slot->bytes, slot->len, slot->blank);
}

int32_t nstr_assign(qz_env* env, rt_memobj* rt_mem, nstr* value, const nstr* source) {
    const int32_t code = nstr_assign_const_ex_no_clear(env, rt_mem, value, source->len, nstr_bytes(source));
    if (code < 0) return code;
    value->blank = source->blank;
    value->has_value = source->has_value;
    return 0;
}

void nstr_assign_fast(nstr* value, uint32_t len, const char* bytes) {
    make_empty(value, 1);
    value->len = len;
    if (len > NSTR_INLINE_BYTES) {
        // The record has one pointer for what may be changed and what may not; who refers to a constant does not change it.
        value->nstr_ext = const_cast<char*>(bytes);
    } else if (len > 0) {
        std::memcpy(value->nstr_inline, bytes, len);
    }
}

void nstr_set_str_value(nstr* destination, const nstr* source) {
    nstr_assign_fast(destination, source->len, nstr_bytes(source));
    destination->blank = source->blank;
    destination->has_value = source->has_value;
}

char* nstr_set_str_value_ex(qz_env* env, rt_memobj* rt_mem, char* buffer, uint32_t buffer_size, const nstr* value) {
    const uint64_t total = uint64_t{value->len} + value->blank;
    char* room = buffer;
    if (total >= buffer_size) {
        room = static_cast<char*>(rt_mem->alloc(env, rt_mem->pool, total + 1, __FILE__, __LINE__));
        if (room == nullptr) return nullptr;
    }
    nstr_get_const_value(value, room);
    std::memset(room + value->len, ' ', value->blank);
    room[total] = 0;
    return room;
}

uint32_t nstr_get_const_value(const nstr* value, char* destination) {
    if (value->len > 0) std::memcpy(destination, nstr_bytes(value), value->len);
    destination[value->len] = 0;
    return value->len;
}

void nstr_non_reserved_clear(qz_env* env, rt_memobj* rt_mem, nstr* value) {
    if (value->nstr_cap != 0) nstr_clear(env, rt_mem, value);
}

void nstr_clear(qz_env* env, rt_memobj* rt_mem, nstr* value) {
    const bool took = value->nstr_cap != 0;
    if (took && rt_mem->pool != nullptr && rt_mem->free != nullptr) rt_mem->free(env, rt_mem->pool, value->nstr_ext);
    make_empty(value, 0);
}
