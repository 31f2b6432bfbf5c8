// The records behind qz_env and qz_session. The library sees their first members only.
#pragma once

#include "qzbifun/records.h"

namespace qzhost {

// Names of the functions that push are copied in place, cut at the room.
struct ErrorEntry {
    int32_t code;
    char name[124];
};

// The first entries stand in the record: reporting that memory is exhausted needs none.
struct ErrorStack {
    static constexpr uint32_t kEntriesInPlace = 8;

    ErrorEntry in_place[kEntriesInPlace];
    ErrorEntry* entries;
    uint32_t count;
    uint32_t capacity;

    void open();
    void close();
    bool grow();
};

struct Session {
    qz_session base;
};

class LobStore;
void destroy_lob_store(LobStore* store);  // NULL is allowed

struct Environment {
    qz_env base;
    ErrorStack errors;
    LobStore* lobs;  // made with the first LOB
};

inline Environment* environment(qz_env* env) { return reinterpret_cast<Environment*>(env); }
inline const Environment* environment(const qz_env* env) { return reinterpret_cast<const Environment*>(env); }

}  // namespace qzhost
