// What the host's log is told.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "qzhost/control.h"

namespace support {

struct LogLine {
    int32_t code;
    std::string file;  // without its folder

    bool operator==(const LogLine&) const = default;
};

inline void PrintTo(const LogLine& line, std::ostream* out) { *out << line.code << " in " << line.file; }

// Keeps the lines of the log while it lives.
class LogLines {
  public:
    LogLines() { host_log_set_sink(keep, this); }
    ~LogLines() { host_log_set_sink(nullptr, nullptr); }
    LogLines(const LogLines&) = delete;
    LogLines& operator=(const LogLines&) = delete;

    const std::vector<LogLine>& lines() const { return lines_; }

    std::vector<int32_t> codes() const {
        std::vector<int32_t> codes;
        for (const LogLine& line : lines_) codes.push_back(line.code);
        return codes;
    }

  private:
    static void keep(void* context, int32_t code, const char* file, int32_t) {
        const std::string path(file);
        static_cast<LogLines*>(context)->lines_.push_back({code, path.substr(path.find_last_of('/') + 1)});
    }

    std::vector<LogLine> lines_;
};

}  // namespace support
