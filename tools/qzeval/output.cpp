#include "tools/qzeval/output.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>
#include <system_error>

namespace qzeval {
namespace {

// The unfinished file, for the signal handler: set before the handlers, and the first byte cleared before the file is gone.
std::array<char, PATH_MAX> unfinished{};

constexpr int kEndingSignals[] = {SIGHUP, SIGINT, SIGTERM};

extern "C" void remove_unfinished(int signal_number) {
    if (unfinished[0] != '\0') unlink(unfinished.data());
    // The handler was for one time: this ends the program as the signal would have.
    raise(signal_number);
}

void remove_on_signals(const std::string& path) {
    std::memcpy(unfinished.data(), path.c_str(), path.size() + 1);
    struct sigaction action {};
    action.sa_handler = &remove_unfinished;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    for (int number : kEndingSignals) sigaction(number, &action, nullptr);
}

// The file itself where the path is a link to it.
std::string resolved(const std::string& path) {
    const std::unique_ptr<char, decltype(&free)> real(realpath(path.c_str(), nullptr), &free);
    return real != nullptr ? real.get() : path;
}

}  // namespace

Output::Output(std::string path) : path_(std::move(path)) {
    if (path_.empty()) {
        descriptor_ = STDOUT_FILENO;
        return;
    }
    path_ = resolved(path_);
    struct stat present {};
    const bool exists = stat(path_.c_str(), &present) == 0;
    if (exists && !S_ISREG(present.st_mode)) {
        descriptor_ = open(path_.c_str(), O_WRONLY | O_CLOEXEC);
        if (descriptor_ < 0) fail("cannot open");
        return;
    }
    // What the file would have if it were made in place; of an old file its own.
    const mode_t mask = umask(0);
    umask(mask);
    open_beside(path_);
    fchmod(descriptor_, exists ? present.st_mode & 07777 : 0666 & ~mask);
}

void Output::open_beside(const std::string& target) {
    temporary_ = target + ".XXXXXX";
    if (temporary_.size() >= unfinished.size()) {
        errno = ENAMETOOLONG;
        fail("cannot write");
    }
    descriptor_ = mkostemp(temporary_.data(), O_CLOEXEC);
    if (descriptor_ < 0) {
        temporary_.clear();
        fail("cannot write");
    }
    remove_on_signals(temporary_);
}

Output::~Output() {
    if (descriptor_ > STDERR_FILENO) close(descriptor_);
    if (temporary_.empty()) return;
    unlink(temporary_.c_str());
    unfinished[0] = '\0';
}

void Output::fail(const char* what) const {
    const std::string name = path_.empty() ? "standard output" : path_;
    throw qzengine::OutputError(fmt::format("{} {}: {}", what, name, std::generic_category().message(errno)));
}

void Output::write(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor_, text.data(), text.size());
        if (written < 0 && errno != EINTR) fail("cannot write");
        if (written > 0) text.remove_prefix(static_cast<size_t>(written));
    }
}

void Output::finish() {
    if (path_.empty()) return;
    const int descriptor = descriptor_;
    descriptor_ = -1;
    if (close(descriptor) != 0) fail("cannot write");
    if (temporary_.empty()) return;
    if (rename(temporary_.c_str(), path_.c_str()) != 0) fail("cannot replace");
    unfinished[0] = '\0';
    temporary_.clear();
}

}  // namespace qzeval
