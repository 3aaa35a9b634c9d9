// Point lists, vector lists and point travel records: linked lists whose data are heap
// copies owned by the list. Traced under the Point bit with "Leaving" exits; the walks
// exported under the travel list's names are the linked list's own and trace as such.
#include <climits>
#include <cstdarg>

#include "diag_trace.h"
#include "nq_lnklist.h"
#include "nq_memory.h"
#include "nq_point.h"
#include "nq_vector.h"
#include "text/nq_text.h"

namespace {

int release(void *datum) {
    nq_Free(datum);
    return 1;
}

template <typename T>
T *heap_copy(const T &value) {
    T *copy = static_cast<T *>(nq_Malloc(sizeof(T)));
    if (copy) *copy = value;
    return copy;
}

template <typename T>
LnkList *create_list(const T *first, va_list args) {
    LnkList *list = nq_LnkList_create(nullptr);
    if (!list) return nullptr;
    for (const T *item = first; item; item = va_arg(args, const T *)) {
        T *copy = heap_copy(*item);
        // A copy that cannot be made or linked is left out, as the plain list does.
        if (copy && !nq_LnkList_insEnd(list, copy)) nq_Free(copy);
    }
    nq_LnkList_start(list);
    return list;
}

template <typename T>
LnkList *copy_list(LnkList *list) {
    if (!list) return nullptr;
    LnkList *result = nq_LnkList_create(nullptr);
    if (!result) return nullptr;
    // Walk the nodes, not the cursor, so that the source keeps its position.
    for (LnkListNode *node = list->head; node; node = node->next) {
        T *copy = node->data ? heap_copy(*static_cast<const T *>(node->data)) : nullptr;
        if (node->data && !copy) {
            nq_LnkList_destroy(result, release);
            return nullptr;
        }
        if (!nq_LnkList_insEnd(result, copy)) {
            nq_Free(copy);
            nq_LnkList_destroy(result, release);
            return nullptr;
        }
    }
    nq_LnkList_start(result);
    return result;
}

// Hands a new copy to one of the linked list's inserts or replacements; the copy goes
// again when the list does not take it.
template <typename T, typename Op>
int with_copy(LnkList *list, const T *value, Op op) {
    if (!list || !value) return 0;
    T *copy = heap_copy(*value);
    if (!copy) return 0;
    if (!op(copy)) {
        nq_Free(copy);
        return 0;
    }
    return 1;
}

template <typename T>
T *curr_copy(LnkList *list) {
    const T *current = static_cast<const T *>(nq_LnkList_getCurr(list));
    return current ? heap_copy(*current) : nullptr;
}

Point as_point(const Point &p) { return p; }
Point as_point(const Vector &v) { return Point{v.x, v.y, v.z}; }

// The first of the closest elements wins: a later one must be strictly closer.
template <typename T>
int closest(T *out, const T *target, LnkList *list) {
    if (!out || !target || !list || nq_LnkList_length(list) == 0) return -1;
    const Point where = as_point(*target);
    int best = -1;
    double bestDistance = 0.0;
    int index = 0;
    for (nq_LnkList_start(list); !nq_LnkList_eol(list); nq_LnkList_next(list), ++index) {
        const T *item = static_cast<const T *>(nq_LnkList_getCurr(list));
        if (!item) continue;
        const Point here = as_point(*item);
        double d;
        nq_Point_distance(&d, &here, &where);
        if (best < 0 || d < bestDistance) {
            best = index;
            bestDistance = d;
            *out = *item;
        }
    }
    return best;
}

// The walk goes to the end: the last equal element wins and the cursor ends off the list.
template <typename T, typename Equal>
int search(LnkList *list, const T *target, Equal equal) {
    if (!list || !target) return -1;
    int found = -1;
    int index = 0;
    for (nq_LnkList_start(list); !nq_LnkList_eol(list); nq_LnkList_next(list), ++index) {
        const T *item = static_cast<const T *>(nq_LnkList_getCurr(list));
        if (item && equal(item, target)) found = index;
    }
    return found;
}

// The serial table of point travel values: slots 1 to 50, slot 0 unused.
constexpr int kTravelSlots = 50;
struct TravelSlot {
    int serial;
    intptr_t value;
};
TravelSlot g_travel[kTravelSlots + 1];
int g_travel_serial = 0;
int g_travel_slot = 1;

}  // namespace

extern "C" {

NQ_API PointList *nq_PointList_create(const Point *first, ...) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_PointList_create.", u"Leaving nq_PointList_create.");
    va_list args;
    va_start(args, first);
    LnkList *list = create_list(first, args);
    va_end(args);
    return list;
}

NQ_API PointList *nq_PointList_copy(PointList *list) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_PointList_copy.", u"Leaving nq_PointList_copy.");
    return copy_list<Point>(list);
}

NQ_API int nq_PointList_destroy(PointList *list) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_PointList_destroy.", u"Leaving nq_PointList_destroy.");
    return nq_LnkList_destroy(list, release);
}

NQ_API int nq_PointList_insStart(PointList *list, const Point *p) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_PointList_insStart.", u"Leaving nq_PointList_insStart.");
    return with_copy(list, p, [&](Point *c) { return nq_LnkList_insStart(list, c); });
}

NQ_API int nq_PointList_insEnd(PointList *list, const Point *p) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_PointList_insEnd.", u"Leaving nq_PointList_insEnd.");
    return with_copy(list, p, [&](Point *c) { return nq_LnkList_insEnd(list, c); });
}

NQ_API int nq_PointList_insBefore(PointList *list, const Point *p) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_PointList_insBefore.",
                   u"Leaving nq_PointList_insBefore.");
    return with_copy(list, p, [&](Point *c) { return nq_LnkList_insBefore(list, c); });
}

NQ_API int nq_PointList_insAfter(PointList *list, const Point *p) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_PointList_insAfter.", u"Leaving nq_PointList_insAfter.");
    return with_copy(list, p, [&](Point *c) { return nq_LnkList_insAfter(list, c); });
}

NQ_API int nq_PointList_insNth(PointList *list, int index, const Point *p) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_PointList_insNth.", u"Leaving nq_PointList_insNth.");
    return with_copy(list, p, [&](Point *c) { return nq_LnkList_insNth(list, index, c); });
}

NQ_API int nq_PointList_modCurr(PointList *list, const Point *p) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_PointList_modCurr.", u"Leaving nq_PointList_modCurr.");
    return with_copy(list, p, [&](Point *c) { return nq_LnkList_modCurr(list, c, release); });
}

NQ_API int nq_PointList_modNth(PointList *list, int index, const Point *p) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_PointList_modNth.", u"Leaving nq_PointList_modNth.");
    return with_copy(list, p, [&](Point *c) { return nq_LnkList_modNth(list, index, c, release); });
}

NQ_API Point *nq_PointList_getCurrCopy(PointList *list) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_PointList_getCurrCopy.",
                   u"Leaving nq_PointList_getCurrCopy.");
    return curr_copy<Point>(list);
}

NQ_API int nq_PointList_getClosestPoint(Point *out, const Point *p, PointList *list) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_PointList_getClosestPoint.",
                   u"Leaving nq_PointList_getClosestPoint.");
    return closest(out, p, list);
}

NQ_API int nq_PointList_search(PointList *list, const Point *p, double tolerance) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_PointList_search.", u"Leaving nq_PointList_search.");
    return search(list, p, [tolerance](const Point *a, const Point *b) {
        return nq_Point_equalWithinTol(a, b, tolerance) != 0;
    });
}

NQ_API VectorList *nq_VectorList_create(const Vector *first, ...) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_VectorList_create.", u"Leaving nq_VectorList_create.");
    va_list args;
    va_start(args, first);
    LnkList *list = create_list(first, args);
    va_end(args);
    return list;
}

NQ_API VectorList *nq_VectorList_copy(VectorList *list) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_VectorList_copy.", u"Leaving nq_VectorList_copy.");
    return copy_list<Vector>(list);
}

NQ_API int nq_VectorList_destroy(VectorList *list) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_VectorList_destroy.", u"Leaving nq_VectorList_destroy.");
    return nq_LnkList_destroy(list, release);
}

NQ_API int nq_VectorList_insStart(VectorList *list, const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_VectorList_insStart.",
                   u"Leaving nq_VectorList_insStart.");
    return with_copy(list, v, [&](Vector *c) { return nq_LnkList_insStart(list, c); });
}

NQ_API int nq_VectorList_insEnd(VectorList *list, const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_VectorList_insEnd.", u"Leaving nq_VectorList_insEnd.");
    return with_copy(list, v, [&](Vector *c) { return nq_LnkList_insEnd(list, c); });
}

NQ_API int nq_VectorList_insBefore(VectorList *list, const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_VectorList_insBefore.",
                   u"Leaving nq_VectorList_insBefore.");
    return with_copy(list, v, [&](Vector *c) { return nq_LnkList_insBefore(list, c); });
}

NQ_API int nq_VectorList_insAfter(VectorList *list, const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_VectorList_insAfter.",
                   u"Leaving nq_VectorList_insAfter.");
    return with_copy(list, v, [&](Vector *c) { return nq_LnkList_insAfter(list, c); });
}

NQ_API int nq_VectorList_insNth(VectorList *list, int index, const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_VectorList_insNth.", u"Leaving nq_VectorList_insNth.");
    return with_copy(list, v, [&](Vector *c) { return nq_LnkList_insNth(list, index, c); });
}

NQ_API int nq_VectorList_modCurr(VectorList *list, const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_VectorList_modCurr.", u"Leaving nq_VectorList_modCurr.");
    return with_copy(list, v, [&](Vector *c) { return nq_LnkList_modCurr(list, c, release); });
}

NQ_API int nq_VectorList_modNth(VectorList *list, int index, const Vector *v) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_VectorList_modNth.", u"Leaving nq_VectorList_modNth.");
    return with_copy(list, v, [&](Vector *c) { return nq_LnkList_modNth(list, index, c, release); });
}

NQ_API Vector *nq_VectorList_getCurrCopy(VectorList *list) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_VectorList_getCurrCopy.",
                   u"Leaving nq_VectorList_getCurrCopy.");
    return curr_copy<Vector>(list);
}

NQ_API int nq_VectorList_getClosestVector(Vector *out, const Vector *v, VectorList *list) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_VectorList_getClosestVector.",
                   u"Leaving nq_VectorList_getClosestVector.");
    return closest(out, v, list);
}

NQ_API int nq_VectorList_search(VectorList *list, const Vector *v, double tolerance) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_VectorList_search.", u"Leaving nq_VectorList_search.");
    return search(list, v, [tolerance](const Vector *a, const Vector *b) {
        return nq_Vector_equalWithinTol(a, b, tolerance) != 0;
    });
}

NQ_API PointTravelNode *nq_PointTravelNode_create(const Point *point, intptr_t value,
                                                  const nq_wchar *format, ...) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_PointTravelNode_create.",
                   u"Leaving nq_PointTravelNode_create.");
    if (!point) return nullptr;
    PointTravelNode *node = static_cast<PointTravelNode *>(nq_Malloc(sizeof(PointTravelNode)));
    if (!node) return nullptr;
    node->point = *point;
    node->label[0] = 0;
    if (format) {
        va_list args;
        va_start(args, format);
        // Cut at the label's size; a longer text never runs past it.
        nqt::vformat(node->label, NQ_POINT_TRAVEL_LABEL_SIZE, format, args);
        va_end(args);
    }
    node->value = value;
    return node;
}

NQ_API PointTravelList *nq_PointTravelList_create(void) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_PointTravelList_create.",
                   u"Leaving nq_PointTravelList_create.");
    return nq_LnkList_create(nullptr);
}

NQ_API int nq_PointTravelList_insEnd(PointTravelList *list, PointTravelNode *node) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_PointTravelList_insEnd.",
                   u"Leaving nq_PointTravelList_insEnd.");
    if (!list || !node) return 0;
    return nq_LnkList_insEnd(list, node);
}

NQ_API int nq_PointTravelList_destroy(PointTravelList *list) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_PointTravelList_destroy.",
                   u"Leaving nq_PointTravelList_destroy.");
    // A node holds nothing of its own: one release each.
    return nq_LnkList_destroy(list, release);
}

NQ_API int nq_PointTravelList_start(PointTravelList *list) { return nq_LnkList_start(list); }

NQ_API int nq_PointTravelList_next(PointTravelList *list) { return nq_LnkList_next(list); }

NQ_API int nq_PointTravelList_prev(PointTravelList *list) { return nq_LnkList_prev(list); }

NQ_API PointTravelNode *nq_PointTravelList_getCurr(PointTravelList *list) {
    return static_cast<PointTravelNode *>(nq_LnkList_getCurr(list));
}

NQ_API int nq_PointTravelList_eol(PointTravelList *list) { return nq_LnkList_eol(list); }

NQ_API int nq_PointTravelList_add(intptr_t value) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_PointTravelList_add.", u"Leaving nq_PointTravelList_add.");
    g_travel_serial = g_travel_serial == INT_MAX ? 1 : g_travel_serial + 1;
    g_travel[g_travel_slot].serial = g_travel_serial;
    g_travel[g_travel_slot].value = value;
    // From slot 50 back to slot 1: the oldest entry is the next to go.
    g_travel_slot = g_travel_slot == kTravelSlots ? 1 : g_travel_slot + 1;
    return g_travel_serial;
}

NQ_API intptr_t nq_PointTravelList_get(int serial) {
    NQ_TRACE_FRAME(NQ_DIAG_POINT, u"Entering nq_PointTravelList_get.", u"Leaving nq_PointTravelList_get.");
    for (int slot = 1; slot <= kTravelSlots; ++slot)
        if (g_travel[slot].serial == serial) return g_travel[slot].value;
    return 0;
}

}  // extern "C"
