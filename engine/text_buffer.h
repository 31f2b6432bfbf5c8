/*
 * Text that grows: what is written next is written in place, without a copy from a buffer of its own.
 */
#ifndef QZENGINE_TEXT_BUFFER_H
#define QZENGINE_TEXT_BUFFER_H

#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>

namespace qzengine {

class TextBuffer {
  public:
    // Room for n bytes behind the text, to be filled and committed. Valid until the next call.
    char* reserve(size_t n) {
        if (capacity_ - size_ < n) grow(n);
        return bytes_.get() + size_;
    }
    void commit(size_t n) { size_ += n; }

    void append(std::string_view text) {
        if (text.empty()) return;
        std::memcpy(reserve(text.size()), text.data(), text.size());
        commit(text.size());
    }
    void append(char c) {
        *reserve(1) = c;
        commit(1);
    }
    void append(size_t count, char c) {
        if (count == 0) return;
        std::memset(reserve(count), c, count);
        commit(count);
    }

    std::string_view view() const { return {bytes_.get(), size_}; }
    size_t size() const { return size_; }
    void clear() { size_ = 0; }  // the memory is kept

  private:
    void grow(size_t n) {
        constexpr size_t kFirst = 4096;
        const size_t capacity = std::max({kFirst, capacity_ * 2, size_ + n});
        auto bytes = std::make_unique_for_overwrite<char[]>(capacity);
        if (size_ > 0) std::memcpy(bytes.get(), bytes_.get(), size_);
        bytes_ = std::move(bytes);
        capacity_ = capacity;
    }

    std::unique_ptr<char[]> bytes_;
    size_t size_ = 0;
    size_t capacity_ = 0;
};

}  // namespace qzengine

#endif
