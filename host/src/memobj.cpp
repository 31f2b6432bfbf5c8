// Memory objects for embedders: each block is an allocation of its own, chained so that the object can give back what its users
// did not.
#include <new>

#include "host/src/allocation.h"
#include "qzhost/control.h"

namespace {

// Stands in front of each block. The chain is a ring through the object's own anchor, so that linking has no special cases.
struct alignas(qzhost::kAlignment) BlockHeader {
    BlockHeader* older;
    BlockHeader* newer;
    size_t size;
    const char* file;
    int32_t line;
};

struct HostMemobj {
    rt_memobj base;
    BlockHeader anchor;
    size_t outstanding;
};

HostMemobj* host_memobj(rt_memobj* memobj) { return static_cast<HostMemobj*>(memobj->pool); }
const HostMemobj* host_memobj(const rt_memobj* memobj) { return static_cast<const HostMemobj*>(memobj->pool); }

void* memobj_alloc(qz_env*, void* pool, size_t size, const char* file, int32_t line) {
    if (size > qzhost::kLargestBlock) return nullptr;
    HostMemobj* memobj = static_cast<HostMemobj*>(pool);
    void* space = qzhost::allocate(sizeof(BlockHeader) + size);
    if (space == nullptr) return nullptr;
    BlockHeader* header = new (space) BlockHeader{memobj->anchor.older, &memobj->anchor, size, file, line};
    header->older->newer = header;
    header->newer->older = header;
    memobj->outstanding += size;
    return header + 1;
}

void memobj_free(qz_env*, void* pool, void* block) {
    if (block == nullptr) return;
    HostMemobj* memobj = static_cast<HostMemobj*>(pool);
    BlockHeader* header = static_cast<BlockHeader*>(block) - 1;
    header->older->newer = header->newer;
    header->newer->older = header->older;
    memobj->outstanding -= header->size;
    qzhost::release(header);
}

}  // namespace

rt_memobj* host_memobj_create(qz_env*) {
    void* space = qzhost::allocate(sizeof(HostMemobj));
    if (space == nullptr) return nullptr;
    HostMemobj* memobj = new (space) HostMemobj{{memobj_alloc, memobj_free, space}, {}, 0};
    memobj->anchor.older = memobj->anchor.newer = &memobj->anchor;
    return &memobj->base;
}

void host_memobj_destroy(rt_memobj* memobj) {
    if (memobj == nullptr) return;
    host_memobj_reset(memobj);
    qzhost::release(host_memobj(memobj));
}

void host_memobj_reset(rt_memobj* memobj) {
    HostMemobj* object = host_memobj(memobj);
    BlockHeader* header = object->anchor.newer;
    while (header != &object->anchor) {
        BlockHeader* newer = header->newer;
        qzhost::release(header);
        header = newer;
    }
    object->anchor.older = object->anchor.newer = &object->anchor;
    object->outstanding = 0;
}

size_t host_memobj_outstanding(const rt_memobj* memobj) { return host_memobj(memobj)->outstanding; }

void host_memobj_visit(const rt_memobj* memobj, void (*visit)(void*, size_t, const char*, int32_t), void* context) {
    const HostMemobj* object = host_memobj(memobj);
    for (const BlockHeader* header = object->anchor.newer; header != &object->anchor; header = header->newer) {
        visit(context, header->size, header->file, header->line);
    }
}
