#include "engine/host_objects.h"

#include <new>

namespace qzengine {

Environment::Environment(const SessionSettings& settings) : env_(host_env_create()) {
    if (env_ == nullptr) throw std::bad_alloc();
    qz_session* session = host_env_open_session(env_);
    memory_ = host_memobj_create(env_);
    batch_memory_ = host_memobj_create(env_);
    if (session == nullptr || memory_ == nullptr || batch_memory_ == nullptr) {
        release();
        throw std::bad_alloc();
    }
    if (settings.time_zone) host_session_set_time_zone(session, *settings.time_zone);
}

Environment::~Environment() { release(); }

void Environment::release() {
    if (batch_memory_ != nullptr) host_memobj_destroy(batch_memory_);
    if (memory_ != nullptr) host_memobj_destroy(memory_);
    if (env_->session != nullptr) host_env_close_session(env_);
    host_env_destroy(env_);
}

void Environment::begin_batch() {
    host_lob_release_all(env_);
    if (host_memobj_outstanding(batch_memory_) == 0) return;
    host_memobj_destroy(batch_memory_);
    batch_memory_ = host_memobj_create(env_);
    if (batch_memory_ == nullptr) throw std::bad_alloc();
}

std::vector<Failure::StackEntry> Environment::take_errors() {
    std::vector<Failure::StackEntry> entries;
    for (uint32_t i = 0; i < host_error_count(env_); ++i) {
        const char* name = "";
        const int32_t code = host_error_at(env_, i, &name);
        entries.push_back({code, name != nullptr ? name : ""});
    }
    host_error_clear(env_);
    return entries;
}

Vector make_vector(const Environment& environment, ValueType type, uint32_t rows) {
    Vector vector(host_col_create(environment.env(), environment.memory(), host_type(type), rows));
    if (vector == nullptr) throw std::bad_alloc();
    return vector;
}

}  // namespace qzengine
