/* nq_tls20an: the memory manager. Every block the library hands out comes from here. */
#ifndef NQ_MEMORY_H
#define NQ_MEMORY_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

typedef void *(*nq_AllocateFn)(size_t size);
typedef void *(*nq_ResizeFn)(void *block, size_t size);
typedef void *(*nq_ClearAllocateFn)(size_t count, size_t size);
typedef void (*nq_ReleaseFn)(void *block);

NQ_API void *nq_Malloc(size_t size);
NQ_API void *nq_Calloc(size_t count, size_t size);
NQ_API void *nq_Realloc(void *block, size_t size);
NQ_API void nq_Free(void *block);

/* An argument equal to the C runtime's own function leaves its slot as it is. */
NQ_API void nq_MemoryManager_set(nq_AllocateFn allocate, nq_ResizeFn resize,
                                 nq_ClearAllocateFn clearAllocate, nq_ReleaseFn release);

/* Both do nothing; kept for callers that link them. */
NQ_API void nq_Memory_clear(void);
NQ_API void nq_Memory_statistics(void);

NQ_EXTERN_C_END

#endif
