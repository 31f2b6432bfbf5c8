// Memory between canaries: what a call reads or writes beside the array it was given is seen.
//
// Writes are seen by intact(), in any build. Under AddressSanitizer the zones around the array are poisoned too, so that reads
// stop the program at once, whatever the array's length.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace support {

class Guarded {
  public:
    Guarded() = default;
    Guarded(size_t size, uint8_t fill);
    explicit Guarded(const std::string& bytes);
    Guarded(Guarded&& other) noexcept = default;
    Guarded& operator=(Guarded&& other) noexcept;
    ~Guarded();

    // The array, aligned for any type; null only for one that was never made.
    uint8_t* data() { return block_ ? block_.get() + kZone : nullptr; }
    const uint8_t* data() const { return block_ ? block_.get() + kZone : nullptr; }
    size_t size() const { return size_; }

    // The present bytes, and whether they equal those of another time.
    std::string bytes() const { return {reinterpret_cast<const char*>(data()), size_}; }

    // False when a byte beside the array was written.
    bool intact() const;

  private:
    static constexpr size_t kZone = 64;

    size_t block_size() const;
    void poison() const;
    void unpoison() const;

    std::unique_ptr<uint8_t[]> block_;
    size_t size_ = 0;
};

}  // namespace support
