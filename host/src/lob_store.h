// Where an environment keeps its LOBs: values by number, each with the check word that its locators must know, and the key of
// an enciphered one. Values are never changed, and go all at once: with the store or before it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qzhost {

struct LobKey {
    static constexpr size_t kBytes = 32;

    uint8_t bytes[kBytes];
};

struct LobValue {
    uint8_t* data;  // enciphered where the value is
    uint64_t length;
    uint64_t check;
    bool enciphered;
    LobKey key;
};

class LobStore {
  public:
    ~LobStore();

    // Releases the values. Their numbers are given again, but not their check words.
    void clear();

    // Takes a copy of the data; the value's number, from 1, or 0 on exhaustion.
    uint64_t add(const void* data, uint64_t length, bool enciphered);

    // NULL when there is no such value.
    const LobValue* find(uint64_t number, uint64_t check) const;

    const LobValue& at(uint64_t number) const { return values_[number - 1]; }

  private:
    bool grow();

    LobValue* values_ = nullptr;
    uint64_t count_ = 0;
    uint64_t capacity_ = 0;
};

// Enciphers or deciphers the bytes of a value from offset on. False when the cipher cannot be had.
bool apply_lob_cipher(const LobKey& key, uint64_t offset, const uint8_t* source, uint8_t* destination, uint64_t length);

}  // namespace qzhost
