// The Array family: a fixed number of fixed-size elements, stored by value.
#include <cstring>

#include "diag_trace.h"
#include "nq_array.h"
#include "nq_memory.h"

namespace {

// An element lies inside the data block only below the count; the exported address rule
// is bounded by the element size instead, so every write checks this as well.
bool inside(const nq_Array *array, uint32_t index) {
    return array->data != nullptr && index < array->count;
}

}  // namespace

extern "C" {

NQ_API nq_Array *nq_Array_create(uint32_t count, uint32_t elementSize, const void *initialElement) {
    NQ_TRACE_FRAME(NQ_DIAG_ARRAY, u"Entering nq_Array_create.", u"Exiting nq_Array_create.");
    nq_Array *array = nullptr;
    if (count != 0) {
        array = static_cast<nq_Array *>(nq_Malloc(sizeof(nq_Array)));
        if (array) {
            array->data = nq_Malloc(static_cast<size_t>(count) * elementSize);
            if (!array->data) {
                // The record is kept, empty; its element size stays unset.
                array->count = 0;
                array->elementSize = 0;
            } else {
                array->count = count;
                array->elementSize = elementSize;
                for (uint32_t i = 0; i < count; ++i) {
                    void *address = nq_Array_getAddress(array, i);
                    if (address && initialElement) std::memcpy(address, initialElement, elementSize);
                }
            }
        }
    }
    return array;
}

NQ_API int nq_Array_destroy(nq_Array *array, nq_ArrayDestroyFn destroy) {
    NQ_TRACE_FRAME(NQ_DIAG_ARRAY, u"Entering nq_Array_destroy.", u"Exiting nq_Array_destroy.");
    int result = 0;
    if (array) {
        if (array->data) {
            if (destroy) {
                for (uint32_t i = 0; i < array->count; ++i) destroy(nq_Array_getAddress(array, i));
            }
            nq_Free(array->data);
        }
        nq_Free(array);
        result = 1;
    }
    return result;
}

NQ_API uint32_t nq_Array_size(nq_Array *array) {
    NQ_TRACE_FRAME(NQ_DIAG_ARRAY, u"Entering nq_Array_size.", u"Exiting nq_Array_size.");
    return array ? array->count : 0;
}

// The index is checked against the element size, not the count. Callers rely on it.
NQ_API void *nq_Array_getAddress(nq_Array *array, uint32_t index) {
    NQ_TRACE_FRAME(NQ_DIAG_ARRAY, u"Entering nq_Array_getAddress.", u"Exiting nq_Array_search.");
    void *address = nullptr;
    if (array && array->data && index < array->elementSize) {
        // Computed as an integer: past the count the address lies outside the block.
        address = reinterpret_cast<void *>(reinterpret_cast<uintptr_t>(array->data) +
                                           static_cast<uintptr_t>(index) * array->elementSize);
    }
    return address;
}

NQ_API void *nq_Array_getNth(nq_Array *array, uint32_t index) {
    NQ_TRACE_FRAME(NQ_DIAG_ARRAY, u"Entering nq_Array_getNth.", u"Exiting nq_Array_getNth.");
    void *element = nullptr;
    if (array && index < array->count) element = nq_Array_getAddress(array, index);
    return element;
}

NQ_API int nq_Array_setNth(nq_Array *array, uint32_t index, const void *value, nq_ArrayDestroyFn destroy) {
    NQ_TRACE_FRAME(NQ_DIAG_ARRAY, u"Entering nq_Array_modNth.", u"Exiting nq_Array_modNth.");
    if (array) {
        void *address = nq_Array_getAddress(array, index);
        if (address && inside(array, index)) {
            if (destroy) destroy(address);
            if (value) std::memcpy(address, value, array->elementSize);
        }
    }
    return 0;
}

NQ_API int nq_Array_swap(nq_Array *array, uint32_t index1, uint32_t index2) {
    NQ_TRACE_FRAME(NQ_DIAG_ARRAY, u"Entering nq_Array_swap.", u"Exiting nq_Array_swap.");
    int result = 0;
    if (array && index1 < array->count && index2 < array->count) {
        void *temporary = nq_Malloc(array->elementSize);
        if (temporary) {
            void *a = nq_Array_getAddress(array, index1);
            void *b = nq_Array_getAddress(array, index2);
            if (a && b) {
                std::memcpy(temporary, a, array->elementSize);
                std::memmove(a, b, array->elementSize);
                std::memcpy(b, temporary, array->elementSize);
                result = 1;
            }
            nq_Free(temporary);
        }
    }
    return result;
}

// Not found and found at index 0 both yield 0.
NQ_API int nq_Array_search(nq_Array *array, void *key, nq_ArrayCompareFn compare) {
    NQ_TRACE_FRAME(NQ_DIAG_ARRAY, u"Entering nq_Array_search.", u"Exiting nq_Array_search.");
    int result = 0;
    if (array && compare) {
        for (uint32_t i = 0; i < array->count; ++i) {
            void *address = nq_Array_getAddress(array, i);
            if (address && compare(address, key) == 0) {
                result = static_cast<int>(i);
                break;
            }
        }
    }
    return result;
}

}  // extern "C"
