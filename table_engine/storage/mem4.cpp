// The engine's memory: zero-filled blocks with their size word in front.
//
// The word in front also carries a mark, so that handing back something that did not come
// from here is caught as the severe "Memory Error" instead of corrupting the heap. The head
// is as large as the strictest alignment, so that what follows it is aligned for any record.
#include <cstdlib>
#include <cstring>

#include "engine4.h"
#include "error4.h"

namespace {

constexpr uint32_t kMark = 0x344D454Du;

struct alignas(alignof(std::max_align_t)) BlockHead {
    size_t size;
    uint32_t mark;
};

mem4_fail_fn g_fail_hook = nullptr;

BlockHead *head_of(const void *block) {
    return reinterpret_cast<BlockHead *>(const_cast<char *>(static_cast<const char *>(block)) -
                                         sizeof(BlockHead));
}

}  // namespace

mem4_fail_fn mem4_set_fail_hook(mem4_fail_fn hook) {
    mem4_fail_fn previous = g_fail_hook;
    g_fail_hook = hook;
    return previous;
}

void *mem4_alloc(size_t size) {
    if (g_fail_hook && g_fail_hook(size)) return nullptr;
    if (size > static_cast<size_t>(PTRDIFF_MAX) - sizeof(BlockHead)) return nullptr;
    void *raw = std::calloc(1, size + sizeof(BlockHead));
    if (!raw) return nullptr;
    BlockHead *head = static_cast<BlockHead *>(raw);
    head->size = size;
    head->mark = kMark;
    return head + 1;
}

void *mem4_alloc_retry(engine4 *engine, size_t size) {
    void *block = mem4_alloc(size);
    if (!block && engine && engine->cache_on) {
        // The cache's buffers are the one memory the engine can give up at once.
        engine4_cache_stop(engine);
        block = mem4_alloc(size);
        engine4_cache_start(engine);
    }
    return block;
}

void *mem4_alloc_or_error(engine4 *engine, size_t size) {
    void *block = mem4_alloc_retry(engine, size);
    if (!block && engine) err4report(engine, -920, nullptr);
    return block;
}

void mem4_free(void *block) {
    if (!block) return;
    BlockHead *head = head_of(block);
    if (head->mark != kMark) err4severe(-920, "Memory Error");
    head->mark = 0;
    std::free(head);
}

size_t mem4_size(const void *block) { return block ? head_of(block)->size : 0; }

int mem4_grow(engine4 *engine, char **buffer_slot, uint32_t *size_slot, uint32_t size) {
    if (!buffer_slot || !size_slot) return -1;
    if (*buffer_slot && *size_slot >= size) return 0;
    char *grown = static_cast<char *>(mem4_alloc_retry(engine, size));
    if (!grown) {
        if (engine) err4report(engine, -920, nullptr);
        return -920;
    }
    if (*buffer_slot) {
        std::memcpy(grown, *buffer_slot, *size_slot < size ? *size_slot : size);
        mem4_free(*buffer_slot);
    }
    *buffer_slot = grown;
    *size_slot = size;
    return 0;
}
