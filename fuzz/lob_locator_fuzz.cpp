// The LOB services over bytes that nobody made a locator of: a code or data from inside, never a read outside.
//
// The first bytes choose what is asked; the rest stands for the locator, in a block of exactly its size. Where it knows a value's
// check word is written in, so that the store is reached.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include "fuzz/require.h"
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
    const bdta3_colstr slot{len, 0, bytes.get()};

    const uint64_t length = nblob_get_len_for_colstr_fast(&slot);
    require((nblob_is_long_row(&value) != 0) == (length >= uint64_t{1} << 31));
    const bool in_row = nblob_is_in_row_for_colstr_fast(&slot) != 0;
    // What a reader copies on that word lies inside.
    require(!in_row || LOB_DATA_AT + length <= len);
    if (length < uint64_t{1} << 31) require(nblob_get_4byte_len(&value) == length);

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
