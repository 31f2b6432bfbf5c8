// Bytes that end where an unreadable page begins: whoever reads one byte too many dies on the spot, in any build.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace support {

class TextAtPageEnd {
  public:
    explicit TextAtPageEnd(size_t most_bytes) {
        const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
        readable_ = (most_bytes + page - 1) / page * page;
        mapped_ = readable_ + page;
        void* block = mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (block == MAP_FAILED) std::abort();
        begin_ = static_cast<char*>(block);
        if (mprotect(begin_ + readable_, page, PROT_NONE) != 0) std::abort();
    }
    ~TextAtPageEnd() { munmap(begin_, mapped_); }
    TextAtPageEnd(const TextAtPageEnd&) = delete;
    TextAtPageEnd& operator=(const TextAtPageEnd&) = delete;

    // Room for n bytes in front of the unreadable page.
    char* room(size_t n) { return begin_ + readable_ - n; }

    // A copy of text there.
    char* place(std::string_view text) {
        char* at = room(text.size());
        if (!text.empty()) std::memcpy(at, text.data(), text.size());
        return at;
    }

  private:
    char* begin_;
    size_t readable_;
    size_t mapped_;
};

}  // namespace support
