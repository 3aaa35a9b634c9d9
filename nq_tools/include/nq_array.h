/* nq_tls20an: fixed-size arrays of fixed-size elements. */
#ifndef NQ_ARRAY_H
#define NQ_ARRAY_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

NQ_API nq_Array *nq_Array_create(uint32_t count, uint32_t elementSize, const void *initialElement);
NQ_API int nq_Array_destroy(nq_Array *array, nq_ArrayDestroyFn destroy);
NQ_API uint32_t nq_Array_size(nq_Array *array);
/* Bounded by the element size, not by the count (see the reference manual). */
NQ_API void *nq_Array_getAddress(nq_Array *array, uint32_t index);
NQ_API void *nq_Array_getNth(nq_Array *array, uint32_t index);
NQ_API int nq_Array_setNth(nq_Array *array, uint32_t index, const void *value, nq_ArrayDestroyFn destroy);
NQ_API int nq_Array_swap(nq_Array *array, uint32_t index1, uint32_t index2);
NQ_API int nq_Array_search(nq_Array *array, void *key, nq_ArrayCompareFn compare);

NQ_EXTERN_C_END

#endif
