/* nq_tls20an: the doubly linked list with one cursor on which every other list stands. */
#ifndef NQ_LNKLIST_H
#define NQ_LNKLIST_H

#include "nq_types.h"

NQ_EXTERN_C_BEGIN

/* The data, closed by a null: nq_LnkList_create(a, b, NULL). */
NQ_API LnkList *nq_LnkList_create(void *datum, ...);
NQ_API int nq_LnkList_destroy(LnkList *list, nq_DestroyFn destroy);
NQ_API int nq_LnkList_delAll(LnkList *list, nq_DestroyFn destroy);
NQ_API int nq_LnkList_delCurr(LnkList *list, nq_DestroyFn destroy);
NQ_API int nq_LnkList_delNth(LnkList *list, int index, nq_DestroyFn destroy);

NQ_API int nq_LnkList_start(LnkList *list);
NQ_API int nq_LnkList_end(LnkList *list);
NQ_API int nq_LnkList_next(LnkList *list);
NQ_API int nq_LnkList_prev(LnkList *list);
NQ_API int nq_LnkList_skip(LnkList *list, int step);
NQ_API int nq_LnkList_eol(LnkList *list);
NQ_API int nq_LnkList_isLast(LnkList *list);
NQ_API int nq_LnkList_length(LnkList *list);

NQ_API void *nq_LnkList_getCurr(LnkList *list);
NQ_API void *nq_LnkList_getNth(LnkList *list, int index);
NQ_API void *nq_LnkList_getNthSavePos(LnkList *list, int index);
NQ_API int nq_LnkList_getPos(LnkList *list);
NQ_API int nq_LnkList_setPos(LnkList *list, int index);

NQ_API int nq_LnkList_insStart(LnkList *list, void *datum);
NQ_API int nq_LnkList_insEnd(LnkList *list, void *datum);
NQ_API int nq_LnkList_insBefore(LnkList *list, void *datum);
NQ_API int nq_LnkList_insAfter(LnkList *list, void *datum);
NQ_API int nq_LnkList_insNth(LnkList *list, int index, void *datum);
NQ_API int nq_LnkList_modCurr(LnkList *list, void *datum, nq_DestroyFn destroy);
NQ_API int nq_LnkList_modNth(LnkList *list, int index, void *datum, nq_DestroyFn destroy);
NQ_API int nq_LnkList_move(LnkList *list, int fromIndex, int toIndex);
NQ_API int nq_LnkList_join(LnkList *list, LnkList *second);

NQ_API void *nq_LnkList_search(LnkList *list, void *key, nq_CompareFn compare);
NQ_API void nq_LnkList_sort(LnkList *list, nq_CompareFn compare);
NQ_API void nq_LnkList_qSort(LnkList *list, nq_CompareFn compare);
NQ_API void *nq_LnkList_findPivot(LnkList *list, nq_CompareFn compare);
NQ_API void nq_LnkList_partition(LnkList *list, LnkList *left, LnkList *right, void *pivot,
                                 nq_CompareFn compare);

NQ_EXTERN_C_END

#endif
