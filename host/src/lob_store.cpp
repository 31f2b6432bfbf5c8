#include "host/src/lob_store.h"

#include <openssl/evp.h>
#include <openssl/rand.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "host/src/allocation.h"

namespace qzhost {

namespace {

// AES in counter mode: any part of a value can be had without the bytes before it. Each value has a key of its own, so that the
// counter may always start at 0.
constexpr uint64_t kCipherBlock = 16;
constexpr uint64_t kLargestUpdate = uint64_t{1} << 30;  // what one call of the cipher takes

void write_counter(uint64_t block, uint8_t* counter) {
    std::memset(counter, 0, kCipherBlock);
    for (size_t i = 0; i < sizeof block; ++i) counter[kCipherBlock - 1 - i] = static_cast<uint8_t>(block >> (8 * i));
}

class Cipher {
  public:
    Cipher() : context_(EVP_CIPHER_CTX_new()) {}
    ~Cipher() { EVP_CIPHER_CTX_free(context_); }
    Cipher(const Cipher&) = delete;
    Cipher& operator=(const Cipher&) = delete;

    bool open(const LobKey& key, uint64_t block) {
        uint8_t counter[kCipherBlock];
        write_counter(block, counter);
        return context_ != nullptr && EVP_EncryptInit_ex(context_, EVP_aes_256_ctr(), nullptr, key.bytes, counter) == 1;
    }

    bool update(const uint8_t* source, uint8_t* destination, uint64_t length) {
        for (uint64_t done = 0; done < length;) {
            int written = 0;
            const uint64_t part = std::min(length - done, kLargestUpdate);
            if (EVP_EncryptUpdate(context_, destination + done, &written, source + done, static_cast<int>(part)) != 1)
                return false;
            done += part;
        }
        return true;
    }

  private:
    EVP_CIPHER_CTX* context_;
};

bool draw_random(void* bytes, size_t n) { return RAND_bytes(static_cast<unsigned char*>(bytes), static_cast<int>(n)) == 1; }

}  // namespace

bool apply_lob_cipher(const LobKey& key, uint64_t offset, const uint8_t* source, uint8_t* destination, uint64_t length) {
    Cipher cipher;
    if (!cipher.open(key, offset / kCipherBlock)) return false;
    // The part of the first block that lies in front.
    uint8_t skipped[kCipherBlock] = {};
    return cipher.update(skipped, skipped, offset % kCipherBlock) && cipher.update(source, destination, length);
}

LobStore::~LobStore() {
    clear();
    release(values_);
}

void LobStore::clear() {
    for (uint64_t i = 0; i < count_; ++i) release(values_[i].data);
    count_ = 0;
}

bool LobStore::grow() {
    const uint64_t wanted = std::max<uint64_t>(8, capacity_ * 2);
    void* block = reallocate(values_, wanted * sizeof(LobValue));
    if (block == nullptr) return false;
    values_ = static_cast<LobValue*>(block);
    capacity_ = wanted;
    return true;
}

uint64_t LobStore::add(const void* data, uint64_t length, bool enciphered) {
    if (count_ == capacity_ && !grow()) return 0;
    LobValue value{nullptr, length, 0, enciphered, {}};
    if (!draw_random(&value.check, sizeof value.check)) return 0;
    if (enciphered && !draw_random(value.key.bytes, LobKey::kBytes)) return 0;
    value.data = static_cast<uint8_t*>(allocate(length));
    if (value.data == nullptr) return 0;
    if (enciphered) {
        if (!apply_lob_cipher(value.key, 0, static_cast<const uint8_t*>(data), value.data, length)) {
            release(value.data);
            return 0;
        }
    } else if (length > 0) {
        std::memcpy(value.data, data, length);
    }
    new (values_ + count_) LobValue(value);
    return ++count_;
}

const LobValue* LobStore::find(uint64_t number, uint64_t check) const {
    if (number == 0 || number > count_) return nullptr;
    const LobValue& value = at(number);
    return value.check == check ? &value : nullptr;
}

}  // namespace qzhost
