#include "qzhost/error.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <mutex>

#include "host/src/allocation.h"
#include "host/src/environment.h"
#include "qzhost/control.h"

namespace qzhost {

void ErrorStack::open() {
    entries = in_place;
    count = 0;
    capacity = kEntriesInPlace;
}

void ErrorStack::close() {
    if (entries != in_place) release(entries);
}

bool ErrorStack::grow() {
    const size_t bytes = size_t{capacity} * sizeof(ErrorEntry);
    void* space = allocate(2 * bytes);
    if (space == nullptr) return false;
    std::memcpy(space, entries, bytes);
    close();
    entries = static_cast<ErrorEntry*>(space);
    capacity *= 2;
    return true;
}

namespace {

using LogSink = void (*)(void*, int32_t, const char*, int32_t);

// Held while the sink runs: it gets one line at a time, and one that was taken away is not running any more.
std::mutex log_lock;
LogSink log_sink = nullptr;
void* log_context = nullptr;
std::atomic<bool> log_wanted = false;  // spares the lock where nobody listens
thread_local bool inside_sink = false;

}  // namespace
}  // namespace qzhost

void qzerr_stk_push(qz_env* env, int32_t code, const char* name) {
    if (env == nullptr) return;
    qzhost::ErrorStack& stack = qzhost::environment(env)->errors;
    if (stack.count == stack.capacity && !stack.grow()) return;
    qzhost::ErrorEntry& entry = stack.entries[stack.count++];
    entry.code = code;
    const size_t length = name == nullptr ? 0 : strnlen(name, sizeof entry.name - 1);
    if (length != 0) std::memcpy(entry.name, name, length);
    entry.name[length] = '\0';
}

uint32_t host_error_count(const qz_env* env) { return qzhost::environment(env)->errors.count; }

int32_t host_error_at(const qz_env* env, uint32_t i, const char** name) {
    const qzhost::ErrorStack& stack = qzhost::environment(env)->errors;
    const bool exists = i < stack.count;
    if (name != nullptr) *name = exists ? stack.entries[i].name : "";
    return exists ? stack.entries[i].code : 0;
}

void host_error_clear(qz_env* env) { qzhost::environment(env)->errors.count = 0; }

void host_log_set_sink(void (*sink)(void*, int32_t, const char*, int32_t), void* context) {
    if (qzhost::inside_sink) return;  // it would wait for itself
    const std::lock_guard guard(qzhost::log_lock);
    qzhost::log_sink = sink;
    qzhost::log_context = context;
    qzhost::log_wanted.store(sink != nullptr, std::memory_order_relaxed);
}

void elog_try_report_qzerr(int32_t code, const char* file, int32_t line) {
    if (!qzhost::log_wanted.load(std::memory_order_relaxed) || qzhost::inside_sink) return;
    const int saved_errno = errno;
    {
        const std::lock_guard guard(qzhost::log_lock);
        if (qzhost::log_sink != nullptr) {
            qzhost::inside_sink = true;
            qzhost::log_sink(qzhost::log_context, code, file, line);
            qzhost::inside_sink = false;
        }
    }
    errno = saved_errno;
}
