// The LOB services, and the functions that read LOBs whole, over bytes that nobody made a locator of: a code or data from
// inside, never a read outside.
//
// The first bytes choose what is asked; the rest stands for the locator, in a block of exactly its size. Where it knows a
// value's check word is written in, so that the store is reached.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include "bop/bifun_str/lob_read.h"
#include "fuzz/require.h"
#include "qzbifun/codes.h"
#include "qzbifun/string.h"
#include "qzhost/control.h"
#include "qzhost/lob.h"
#include "qzhost/string_value.h"

namespace {

constexpr char kValue[] = "a value of some forty bytes in the store";

struct Store {
    qz_env* env = host_env_create();
    rt_memobj* mem = host_memobj_create(env);
    uint8_t plain[LOB_DATA_AT];
    uint8_t enciphered[LOB_DATA_AT];

    Store() {
        uint32_t len = LOB_DATA_AT;
        require(host_lob_make(env, LOB_KIND_SHORT, 1, kValue, sizeof kValue, plain, &len) == 0);
        require(host_lob_make(env, int32_t{LOB_KIND_LONG} | HOST_LOB_ENCIPHERED, 1, kValue, sizeof kValue, enciphered, &len) ==
                0);
    }
    ~Store() {
        host_memobj_destroy(mem);
        host_env_destroy(env);
    }
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;
};

constexpr size_t kIdentityAt = 1;    // the number of the value
constexpr size_t kIdentityEnd = 22;  // behind its check word

// A memory object without room for the gigabytes that a locator may tell.
void* take_little(qz_env* env, void* pool, size_t size, const char* file, int32_t line) {
    constexpr size_t kMost = size_t{1} << 20;
    const rt_memobj* mem = static_cast<const rt_memobj*>(pool);
    return size > kMost ? nullptr : mem->alloc(env, mem->pool, size, file, line);
}
void give_back(qz_env* env, void* pool, void* block) {
    const rt_memobj* mem = static_cast<const rt_memobj*>(pool);
    mem->free(env, mem->pool, block);
}

// All that a reader delivers lies inside, and what is out afterwards is the one block that the caller has.
void read_whole(const Store& store, const nstr& value, const bdta3_colstr& slot, uint8_t is_text) {
    rt_memobj little{take_little, give_back, store.mem};
    for (const int reader : {0, 1, 2}) {
        char* data = nullptr;
        uint32_t len = 0;
        const int32_t code = reader == 0 ? ifun_lob_to_str_ex(store.env, LOB_READER_ANY, &little, &value, is_text, &data, &len)
                             : reader == 1 ? bifun::bifun_lob_to_str(store.env, &little, &slot, is_text, &data, &len)
                                           : bjson_get_data_inner(store.env, &little, &slot, 1, &data, &len);
        require(code <= 0 && (code < 0 || (data != nullptr && data[len] == 0)));
        if (data != nullptr) give_back(store.env, store.mem, data);
        require(host_memobj_outstanding(store.mem) == 0);
    }
    host_error_clear(store.env);
}

void measure(const Store& store, bdta3_colstr& slot) {
    uint8_t valid = 1, result_valid = 0;
    int64_t length = 0;
    bdta3_coldata data{&valid, &slot, nullptr}, result_data{&result_valid, &length, nullptr};
    bdta3_col col{1, nullptr, &data}, result{0, nullptr, &result_data};
    require(blengthb_blob_a_str(store.env, store.mem, &col, &result, 1) == 0 && result_valid == 1);
    const uint64_t told = nblob_get_len_for_colstr_fast(&slot);
    if (told < LOB_LENGTH_UNKNOWN) require(length == static_cast<int64_t>(told));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Store store;
    constexpr size_t head = 4;
    if (size < head) return 0;
    const uint32_t len = static_cast<uint32_t>(size - head);
    std::unique_ptr<char[]> bytes(new char[len]);
    if (len > 0) std::memcpy(bytes.get(), data + head, len);
    if (len >= kIdentityEnd && data[0] % 3 != 0) {
        const uint8_t* known = data[0] % 3 == 1 ? store.plain : store.enciphered;
        // Its length stays what the input says.
        std::memcpy(bytes.get() + kIdentityAt, known + kIdentityAt, LOB_SHORT_LENGTH_AT - kIdentityAt);
        std::memcpy(bytes.get() + LOB_SHORT_LENGTH_AT + 4, known + LOB_SHORT_LENGTH_AT + 4,
                    kIdentityEnd - LOB_SHORT_LENGTH_AT - 4);
    }
    nstr value;
    nstr_assign_fast(&value, len, bytes.get());
    bdta3_colstr slot{len, 0, bytes.get()};

    const uint64_t length = nblob_get_len_for_colstr_fast(&slot);
    require((nblob_is_long_row(&value) != 0) == (length >= uint64_t{1} << 31));
    const bool in_row = nblob_is_in_row_for_colstr_fast(&slot) != 0;
    // What a reader copies on that word lies inside.
    require(!in_row || LOB_DATA_AT + length <= len);
    if (length < uint64_t{1} << 31) require(nblob_get_4byte_len(&value) == length);

    read_whole(store, value, slot, data[1] & 3);
    measure(store, slot);

    ndct_work_area work;
    int32_t status = 0;
    int32_t reuse = 0;
    const nblob_encryption* handle = nullptr;
    if (len >= LOB_DATA_AT) {
        handle = ndct_get_blob_enc_info_low(store.env, store.mem, bytes.get(), &work, &reuse, &status);
        require((handle == nullptr) == (status < 0));
    }
    const uint32_t capacity = data[1];
    std::unique_ptr<char[]> destination(new char[capacity]);
    for (const auto service : {nblob_get_data, ntext_get_data}) {
        uint32_t read = 0;
        const int32_t code =
            service(store.env, LOB_READER_ANY, &value, destination.get(), capacity, data[2], 16u * data[3], &read, handle);
        require(code <= 0 && read <= (code < 0 ? 0 : capacity));
        if (code == 0 && !in_row && len > 0 && data[2] < sizeof kValue) {
            require(std::memcmp(destination.get(), kValue + data[2], read) == 0);
        }
    }
    return 0;
}
