#include "host/src/environment.h"

#include <new>

#include "host/src/allocation.h"
#include "qzhost/control.h"

using qzhost::Environment;
using qzhost::Session;

namespace {

constexpr int16_t kDefaultTimeZone = 0;
constexpr uint32_t kDefaultLanguage = 1;

}  // namespace

qz_env* host_env_create() {
    void* space = qzhost::allocate(sizeof(Environment));
    if (space == nullptr) return nullptr;
    Environment* environment = new (space) Environment{};
    environment->errors.open();
    return &environment->base;
}

void host_env_destroy(qz_env* env) {
    if (env == nullptr) return;
    host_env_close_session(env);
    qzhost::environment(env)->errors.close();
    qzhost::destroy_lob_store(qzhost::environment(env)->lobs);
    qzhost::release(env);
}

qz_session* host_env_open_session(qz_env* env) {
    void* space = qzhost::allocate(sizeof(Session));
    if (space == nullptr) return nullptr;
    host_env_close_session(env);
    Session* session = new (space) Session{};
    session->base = {kDefaultTimeZone, kDefaultLanguage, kDefaultLanguage};
    env->session = &session->base;
    return env->session;
}

void host_env_close_session(qz_env* env) {
    qzhost::release(env->session);
    env->session = nullptr;
}

void host_session_set_time_zone(qz_session* session, int16_t minutes) { session->session_tz = minutes; }

void host_session_set_language(qz_session* session, uint32_t lang, uint32_t date_lang) {
    session->session_lang = lang;
    session->session_date_lang = date_lang;
}
