#include "tests/support/guarded.h"

#include <algorithm>
#include <cstring>

#if defined(__SANITIZE_ADDRESS__)
#define SUPPORT_POISONS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define SUPPORT_POISONS 1
#endif
#endif

#if SUPPORT_POISONS
#include <sanitizer/asan_interface.h>
#endif

namespace support {
namespace {
constexpr uint8_t kCanary = 0xC5;
constexpr size_t kGranule = 8;  // what the sanitizer can tell apart
}  // namespace

Guarded::Guarded(size_t size, uint8_t fill) : size_(size) {
    block_.reset(new uint8_t[block_size()]);
    std::memset(block_.get(), kCanary, block_size());
    std::memset(data(), fill, size_);
    poison();
}

Guarded::Guarded(const std::string& bytes) : Guarded(bytes.size(), 0) {
    if (!bytes.empty()) std::memcpy(data(), bytes.data(), bytes.size());
}

Guarded& Guarded::operator=(Guarded&& other) noexcept {
    if (this != &other) {
        unpoison();
        block_ = std::move(other.block_);
        size_ = other.size_;
    }
    return *this;
}

Guarded::~Guarded() { unpoison(); }

size_t Guarded::block_size() const { return kZone + (size_ + kGranule - 1) / kGranule * kGranule + kZone; }

bool Guarded::intact() const {
    if (!block_) return true;
    unpoison();
    const auto is_canary = [](uint8_t byte) { return byte == kCanary; };
    const uint8_t* block = block_.get();
    const bool intact =
        std::all_of(block, block + kZone, is_canary) && std::all_of(block + kZone + size_, block + block_size(), is_canary);
    poison();
    return intact;
}

void Guarded::poison() const {
#if SUPPORT_POISONS
    __asan_poison_memory_region(block_.get(), kZone);
    __asan_poison_memory_region(block_.get() + kZone + size_, block_size() - kZone - size_);
#endif
}

void Guarded::unpoison() const {
#if SUPPORT_POISONS
    if (block_) __asan_unpoison_memory_region(block_.get(), block_size());
#endif
}

}  // namespace support
