// The LnkList family: a doubly linked list of opaque data words with one built-in cursor.
// Every other list of the library is this list with a typed face.
#include <cstdarg>

#include "diag_trace.h"
#include "nq_lnklist.h"
#include "nq_memory.h"

#define LNK_FRAME(name) \
    NQ_TRACE_FRAME(NQ_DIAG_LNKLIST, u"Entering nq_LnkList_" name ".", u"Exiting nq_LnkList_" name ".")

namespace {

LnkListNode *new_node(void *datum) {
    auto *node = static_cast<LnkListNode *>(nq_Malloc(sizeof(LnkListNode)));
    if (node) {
        node->data = datum;
        node->next = nullptr;
        node->prev = nullptr;
    }
    return node;
}

// Takes a node out of the chain, repairing head and tail; count and cursor are the caller's.
void unlink(LnkList *list, LnkListNode *node) {
    if (node->prev) node->prev->next = node->next; else list->head = node->next;
    if (node->next) node->next->prev = node->prev; else list->tail = node->prev;
    node->next = node->prev = nullptr;
}

void link_before(LnkList *list, LnkListNode *at, LnkListNode *node) {
    node->next = at;
    node->prev = at->prev;
    if (at->prev) at->prev->next = node; else list->head = node;
    at->prev = node;
}

void link_after(LnkList *list, LnkListNode *at, LnkListNode *node) {
    node->prev = at;
    node->next = at->next;
    if (at->next) at->next->prev = node; else list->tail = node;
    at->next = node;
}

LnkListNode *node_at(LnkList *list, int index) {
    LnkListNode *node = list->head;
    for (int i = 0; i < index && node; ++i) node = node->next;
    return node;
}

// With no cursor, first to the head (before) or the tail (after); the cursor stays on that
// node, not on the new one. On an empty list the new node is head, tail and cursor.
int insert_at_cursor(LnkList *list, void *datum, bool before) {
    LnkListNode *node = list ? new_node(datum) : nullptr;
    if (!node) return 0;
    if (!list->head) {
        list->head = list->tail = list->cursor = node;
    } else if (before) {
        if (!list->cursor) list->cursor = list->head;
        link_before(list, list->cursor, node);
    } else {
        if (!list->cursor) list->cursor = list->tail;
        link_after(list, list->cursor, node);
    }
    ++list->count;
    return 1;
}

}  // namespace

extern "C" {

NQ_API LnkList *nq_LnkList_create(void *datum, ...) {
    LNK_FRAME("create");
    auto *list = static_cast<LnkList *>(nq_Malloc(sizeof(LnkList)));
    if (list) {
        list->count = 0;
        list->head = list->tail = list->cursor = nullptr;
        va_list args;
        va_start(args, datum);
        // A failed insert during creation is passed over.
        for (void *d = datum; d; d = va_arg(args, void *)) nq_LnkList_insEnd(list, d);
        va_end(args);
        // Inserting at the end leaves the cursor alone, so creation puts it on the head.
        nq_LnkList_start(list);
    }
    return list;
}

NQ_API int nq_LnkList_destroy(LnkList *list, nq_DestroyFn destroy) {
    LNK_FRAME("destroy");
    int result = 0;
    if (list) {
        result = nq_LnkList_delAll(list, destroy);
        nq_Free(list);
    }
    return result;
}

NQ_API int nq_LnkList_delAll(LnkList *list, nq_DestroyFn destroy) {
    LNK_FRAME("delAll");
    int result = 0;
    if (list) {
        while (list->head) {
            LnkListNode *node = list->head;
            list->head = node->next;
            if (destroy && node->data) destroy(node->data);
            nq_Free(node);
            --list->count;
        }
        list->head = list->tail = list->cursor = nullptr;
        result = 1;
    }
    return result;
}

// The cursor goes to the next node, or to the previous one when the tail was deleted.
NQ_API int nq_LnkList_delCurr(LnkList *list, nq_DestroyFn destroy) {
    LNK_FRAME("delCurr");
    int result = 0;
    if (list && list->cursor) {
        LnkListNode *node = list->cursor;
        list->cursor = node->next ? node->next : node->prev;
        unlink(list, node);
        if (destroy && node->data) destroy(node->data);
        nq_Free(node);
        --list->count;
        result = 1;
    }
    return result;
}

// Goes by the datum: a node with null data cannot be deleted by index.
NQ_API int nq_LnkList_delNth(LnkList *list, int index, nq_DestroyFn destroy) {
    LNK_FRAME("delNth");
    int result = 0;
    if (nq_LnkList_getNth(list, index)) result = nq_LnkList_delCurr(list, destroy);
    return result;
}

NQ_API int nq_LnkList_start(LnkList *list) {
    LNK_FRAME("start");
    int result = 0;
    if (list) {
        list->cursor = list->head;
        result = list->head != nullptr;
    }
    return result;
}

NQ_API int nq_LnkList_end(LnkList *list) {
    LNK_FRAME("end");
    int result = 0;
    if (list) {
        list->cursor = list->tail;
        result = list->tail != nullptr;
    }
    return result;
}

NQ_API int nq_LnkList_next(LnkList *list) { return nq_LnkList_skip(list, 1); }

NQ_API int nq_LnkList_prev(LnkList *list) { return nq_LnkList_skip(list, -1); }

// No wrap: a cursor that falls off either end stays off.
NQ_API int nq_LnkList_skip(LnkList *list, int step) {
    LNK_FRAME("skip");
    int result = 0;
    if (list) {
        for (; step > 0 && list->cursor; --step) list->cursor = list->cursor->next;
        for (; step < 0 && list->cursor; ++step) list->cursor = list->cursor->prev;
        result = list->cursor != nullptr;
    }
    return result;
}

NQ_API int nq_LnkList_eol(LnkList *list) {
    LNK_FRAME("eol");
    return !list || !list->cursor;
}

// Cursor against tail: 1 on an empty list, where both are null.
NQ_API int nq_LnkList_isLast(LnkList *list) {
    LNK_FRAME("isLast");
    return list && list->cursor == list->tail;
}

NQ_API int nq_LnkList_length(LnkList *list) {
    LNK_FRAME("length");
    return list ? list->count : 0;
}

NQ_API void *nq_LnkList_getCurr(LnkList *list) {
    LNK_FRAME("getCurr");
    return list && list->cursor ? list->cursor->data : nullptr;
}

NQ_API void *nq_LnkList_getNth(LnkList *list, int index) {
    LNK_FRAME("getNth");
    void *datum = nullptr;
    if (list && index >= 0) {
        list->cursor = node_at(list, index);
        datum = list->cursor ? list->cursor->data : nullptr;
    }
    return datum;
}

// An off-list cursor saves as -1 and comes back on the head, not off the list.
NQ_API void *nq_LnkList_getNthSavePos(LnkList *list, int index) {
    const int saved = nq_LnkList_getPos(list);
    void *datum = nq_LnkList_getNth(list, index);
    nq_LnkList_setPos(list, saved);
    return datum;
}

// Walks back to the head counting, then walks forward again to put the cursor back.
NQ_API int nq_LnkList_getPos(LnkList *list) {
    LNK_FRAME("getPos");
    int position = -1;
    if (list && list->cursor) {
        position = 0;
        while (list->cursor->prev) {
            list->cursor = list->cursor->prev;
            ++position;
        }
        nq_LnkList_setPos(list, position);
    }
    return position;
}

// An index of 0 or less gives the head; past the end gives a null cursor; 1 either way.
NQ_API int nq_LnkList_setPos(LnkList *list, int index) {
    LNK_FRAME("setPos");
    int result = 0;
    if (list) {
        list->cursor = node_at(list, index);
        result = 1;
    }
    return result;
}

// The cursor is not touched, not even on an empty list.
NQ_API int nq_LnkList_insStart(LnkList *list, void *datum) {
    LNK_FRAME("insStart");
    int result = 0;
    LnkListNode *node = list ? new_node(datum) : nullptr;
    if (node) {
        if (list->head) link_before(list, list->head, node); else list->head = list->tail = node;
        ++list->count;
        result = 1;
    }
    return result;
}

NQ_API int nq_LnkList_insEnd(LnkList *list, void *datum) {
    LNK_FRAME("insEnd");
    int result = 0;
    LnkListNode *node = list ? new_node(datum) : nullptr;
    if (node) {
        if (list->tail) link_after(list, list->tail, node); else list->head = list->tail = node;
        ++list->count;
        result = 1;
    }
    return result;
}

NQ_API int nq_LnkList_insBefore(LnkList *list, void *datum) {
    LNK_FRAME("insBefore");
    return insert_at_cursor(list, datum, true);
}

NQ_API int nq_LnkList_insAfter(LnkList *list, void *datum) {
    LNK_FRAME("insAfter");
    return insert_at_cursor(list, datum, false);
}

// Before the node at the index when it holds a datum; otherwise after the cursor, which
// past the end means at the tail.
NQ_API int nq_LnkList_insNth(LnkList *list, int index, void *datum) {
    LNK_FRAME("insNth");
    int result;
    if (nq_LnkList_getNth(list, index)) result = nq_LnkList_insBefore(list, datum);
    else result = nq_LnkList_insAfter(list, datum);
    return result;
}

NQ_API int nq_LnkList_modCurr(LnkList *list, void *datum, nq_DestroyFn destroy) {
    LNK_FRAME("modCurr");
    int result = 0;
    if (list && list->cursor) {
        if (destroy && list->cursor->data) destroy(list->cursor->data);
        list->cursor->data = datum;
        result = 1;
    }
    return result;
}

NQ_API int nq_LnkList_modNth(LnkList *list, int index, void *datum, nq_DestroyFn destroy) {
    LNK_FRAME("modNth");
    int result = 0;
    if (nq_LnkList_getNth(list, index)) result = nq_LnkList_modCurr(list, datum, destroy);
    return result;
}

// Relinks the node so that it ends at index to in both directions; the cursor goes with it.
NQ_API int nq_LnkList_move(LnkList *list, int fromIndex, int toIndex) {
    if (!list || fromIndex < 0 || toIndex < 0 || fromIndex >= list->count || toIndex >= list->count) return 0;
    if (fromIndex == toIndex) return 1;
    LnkListNode *moved = node_at(list, fromIndex);
    LnkListNode *target = node_at(list, toIndex);
    if (!moved || !target) return 0;
    unlink(list, moved);
    if (fromIndex > toIndex) link_before(list, target, moved);
    else link_after(list, target, moved);
    list->cursor = moved;
    return 1;
}

// The second list's nodes go behind the first's tail, and the second record is gone.
NQ_API int nq_LnkList_join(LnkList *list, LnkList *second) {
    LNK_FRAME("join");
    int result = 0;
    if (list && second) {
        if (second->head) {
            if (list->tail) {
                list->tail->next = second->head;
                second->head->prev = list->tail;
            } else {
                list->head = second->head;
            }
            list->tail = second->tail;
            list->count += second->count;
        }
        list->cursor = list->head;
        second->head = second->tail = second->cursor = nullptr;
        nq_LnkList_destroy(second, nullptr);
        result = 1;
    }
    return result;
}

NQ_API void *nq_LnkList_search(LnkList *list, void *key, nq_CompareFn compare) {
    LNK_FRAME("search");
    void *found = nullptr;
    if (list && compare) {
        for (list->cursor = list->head; list->cursor; list->cursor = list->cursor->next) {
            if (list->cursor->data && compare(list->cursor->data, key) == 0) {
                found = list->cursor->data;
                break;
            }
        }
    }
    return found;
}

// Selection sort by swapping data; nodes with null data stay where they are.
NQ_API void nq_LnkList_sort(LnkList *list, nq_CompareFn compare) {
    LNK_FRAME("sort");
    if (!list || !compare) return;
    for (LnkListNode *a = list->head; a; a = a->next) {
        if (!a->data) continue;
        LnkListNode *minimum = a;
        for (LnkListNode *b = a->next; b; b = b->next) {
            if (b->data && compare(b->data, minimum->data) < 0) minimum = b;
        }
        if (minimum != a) {
            void *datum = a->data;
            a->data = minimum->data;
            minimum->data = datum;
        }
    }
}

// The larger of the first two different data, or none when all data are equal.
NQ_API void *nq_LnkList_findPivot(LnkList *list, nq_CompareFn compare) {
    LNK_FRAME("findPivot");
    void *pivot = nullptr;
    if (list && compare && list->head && list->head->data) {
        void *first = list->head->data;
        for (LnkListNode *node = list->head->next; node; node = node->next) {
            if (!node->data) continue;
            const int order = compare(node->data, first);
            if (order > 0) {
                pivot = node->data;
                break;
            }
            if (order < 0) {
                pivot = first;
                break;
            }
        }
    }
    return pivot;
}

// Splits the chain in place: data below the pivot are swapped to the front, which becomes
// the left list; the rest is the right list. No node moves; both work lists keep count 0.
NQ_API void nq_LnkList_partition(LnkList *list, LnkList *left, LnkList *right, void *pivot, nq_CompareFn compare) {
    LNK_FRAME("partition");
    if (!list || !left || !right || !compare) return;
    left->head = left->tail = left->cursor = nullptr;
    right->head = right->cursor = list->head;
    right->tail = list->tail;
    for (list->cursor = list->head; list->cursor; list->cursor = list->cursor->next) {
        LnkListNode *current = list->cursor;
        if (compare(current->data, pivot) < 0) {
            if (!left->tail) left->head = left->tail = left->cursor = right->head;
            else left->tail = left->tail->next;
            right->head = right->head->next;
            if (!right->head) right->tail = nullptr;
            if (left->tail != current) {
                void *datum = left->tail->data;
                left->tail->data = current->data;
                current->data = datum;
            }
        }
    }
    if (left->tail) left->tail->next = nullptr;
    if (right->head) right->head->prev = nullptr;
}

// Quick sort that moves data, not nodes: split around the pivot, sort both sides, rejoin.
NQ_API void nq_LnkList_qSort(LnkList *list, nq_CompareFn compare) {
    LNK_FRAME("qSort");
    void *pivot = list ? nq_LnkList_findPivot(list, compare) : nullptr;
    if (!pivot) return;
    LnkList *left = nq_LnkList_create(nullptr);
    LnkList *right = nq_LnkList_create(nullptr);
    if (left && right) {
        nq_LnkList_partition(list, left, right, pivot, compare);
        // Both sides have a node unless the comparison is inconsistent; then stop here
        // rather than recurse on the same list for ever.
        if (left->tail && right->head) {
            nq_LnkList_qSort(left, compare);
            nq_LnkList_qSort(right, compare);
            left->tail->next = right->head;
            right->head->prev = left->tail;
        }
    }
    // Released, not destroyed: the nodes are the list's.
    nq_Free(left);
    nq_Free(right);
}

}  // extern "C"
