#include "tools/qzeval/progress.h"

#include <fmt/format.h>

#include <cstdio>
#include <string>

namespace qzeval {
namespace {

constexpr std::chrono::milliseconds kQuietStart{1000};
constexpr std::chrono::milliseconds kInterval{200};
constexpr const char* kEraseLine = "\r\x1B[K";

}  // namespace

ProgressLine::ProgressLine(bool enabled, std::optional<uint64_t> total)
    : enabled_(enabled), total_(total), next_(begun_ + kQuietStart) {}

ProgressLine::~ProgressLine() { clear(); }

void ProgressLine::show(const qzengine::QueryProgress& progress) {
    if (!enabled_) return;
    const Clock::time_point now = Clock::now();
    if (now < next_) return;
    next_ = now + kInterval;
    const double seconds = std::chrono::duration<double>(now - begun_).count();
    const double bytes = static_cast<double>(progress.bytes);
    std::string line = fmt::format("{}{} rows, {:.0f} MB/s", kEraseLine, progress.rows, bytes / 1e6 / seconds);
    if (total_ && *total_ > 0) line += fmt::format(", {:.0f} %", 100 * bytes / static_cast<double>(*total_));
    std::fputs(line.c_str(), stderr);
    std::fflush(stderr);
    shown_ = true;
}

void ProgressLine::clear() {
    if (!shown_) return;
    std::fputs(kEraseLine, stderr);
    std::fflush(stderr);
    shown_ = false;
}

}  // namespace qzeval
