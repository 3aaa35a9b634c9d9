// The memory manager: four replaceable slots and the failure text.
#include <cstdlib>

#include "frame_msg.h"
#include "nq_memory.h"
#include "text/nq_text.h"

namespace {

nq_AllocateFn g_allocate = std::malloc;
nq_ResizeFn g_resize = std::realloc;
nq_ClearAllocateFn g_clear_allocate = std::calloc;
nq_ReleaseFn g_release = std::free;

// The last failure text. Nothing reads it; it is composed and stays.
nq_wchar g_failure[260];

void compose_failure(const char *what, size_t size) {
    // Finding the words may itself allocate (the first message settles the language, a trace
    // copies its file name); a failure inside that leaves the text to the outer one.
    static bool composing = false;
    if (composing) return;
    composing = true;
    // Two separate buffers: frame_msg's static buffer is overwritten by its second call.
    std::u16string first = nq::frame_msg(what, "TOOL", 1);
    const nq_wchar *second = nq::frame_msg("bytes of memory", "TOOL", 1);
    nqt::format(g_failure, sizeof g_failure / sizeof g_failure[0], u"%s %d %s", first.c_str(),
                static_cast<int>(size), second);
    composing = false;
}

}  // namespace

namespace nq {
// For tests inside the library's own tree.
const nq_wchar *memory_failure_text() { return g_failure; }
}  // namespace nq

extern "C" {

NQ_API void *nq_Malloc(size_t size) {
    // A slot set to null fails every request instead of calling through null.
    void *block = g_allocate ? g_allocate(size) : nullptr;
    if (!block) compose_failure("Unable to allocate", size);
    return block;
}

NQ_API void *nq_Calloc(size_t count, size_t size) {
    void *block = g_clear_allocate ? g_clear_allocate(count, size) : nullptr;
    // The element size alone is reported, not the product.
    if (!block) compose_failure("Unable to callocate", size);
    return block;
}

NQ_API void *nq_Realloc(void *block, size_t size) {
    if (!block) return nq_Malloc(size);
    void *moved = g_resize ? g_resize(block, size) : nullptr;
    if (!moved) compose_failure("Unable to re-allocate", size);
    return moved;
}

NQ_API void nq_Free(void *block) {
    if (block && g_release) g_release(block);
}

// A slot given the runtime's own function keeps what it has, so a host's function cannot
// be taken back this way. Null differs from the runtime's function and is stored.
NQ_API void nq_MemoryManager_set(nq_AllocateFn allocate, nq_ResizeFn resize,
                                 nq_ClearAllocateFn clearAllocate, nq_ReleaseFn release) {
    if (allocate != static_cast<nq_AllocateFn>(std::malloc)) g_allocate = allocate;
    if (resize != static_cast<nq_ResizeFn>(std::realloc)) g_resize = resize;
    if (clearAllocate != static_cast<nq_ClearAllocateFn>(std::calloc)) g_clear_allocate = clearAllocate;
    if (release != static_cast<nq_ReleaseFn>(std::free)) g_release = release;
}

NQ_API void nq_Memory_clear(void) {}

// One operation under two names.
NQ_API void nq_Memory_statistics(void) __attribute__((alias("nq_Memory_clear")));

}  // extern "C"
