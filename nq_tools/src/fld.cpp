// The FldList family: an ordered list of named, typed values on the linked list. This file
// holds the node, lookup, and the new, app, mod and add families; the readers are in
// fld_access.cpp and the whole-list operations in fldops.cpp.
#include <cmath>
#include <cstdarg>
#include <cstddef>
#include <cstring>

#include "fld_internal.h"
#include "nq_fldlist.h"
#include "nq_lnklist.h"
#include "nq_memory.h"
#include "nq_str.h"
#include "nq_strlist.h"
#include "text/nq_text.h"

static_assert(sizeof(FldValue) == 24, "the value is three doubles wide");
static_assert(alignof(FldValue) == 8, "the value is 8-byte aligned");
static_assert(offsetof(FldNode, type) == sizeof(void *), "name, then type");
static_assert(offsetof(FldNode, aux2) == offsetof(FldNode, aux1) + 2, "aux1, then aux2");

namespace {

// Lookup copies the name into a work buffer of this many characters; longer names are cut.
constexpr std::size_t kFindBufferSize = 256;

bool is_string_type(uint16_t type) { return type == NQ_FLD_CHAR || type == NQ_FLD_HANDLE; }

// A point argument of null stands for the origin.
Point point_or_origin(const Point *p) { return p ? *p : Point{0.0, 0.0, 0.0}; }
Vector vector_or_origin(const Vector *v) { return v ? *v : Vector{0.0, 0.0, 0.0}; }

FldNode *build(const nq_wchar *name, uint16_t type, FldValue value) {
    FldNode *node = nqfld::new_node(name, type);
    if (node) node->value = value;
    return node;
}

FldValue int_value(int32_t v) {
    FldValue value{};
    value.i = v;
    return value;
}

FldValue real_value(double v) {
    FldValue value{};
    value.d = v;
    return value;
}

FldValue point_value(Point p) {
    FldValue value{};
    value.point = p;
    return value;
}

FldValue vector_value(Vector v) {
    FldValue value{};
    value.vector = v;
    return value;
}

FldValue list_value(FldList *list) {
    FldValue value{};
    value.list = list;
    return value;
}

// Sets the first field of that name in place, or appends the node that make() builds when
// there is none. Only a Char or Handle string of the old value is released.
template <typename Make, typename Set>
int mod_field(FldList *list, const nq_wchar *name, uint16_t type, Make make, Set set) {
    FldNode *node = nq_FldList_find(list, name);
    if (!node) {
        if (!list) return 0;
        return nqfld::append_node(list, make());
    }
    if (is_string_type(node->type) && node->value.str) nq_Free(node->value.str);
    node->type = type;
    node->value = FldValue{};
    set(node);
    return 1;
}

// Adds a value to a field that may hold several (see nq_FldList_addCharVal).
template <typename Make>
int add_field(FldList *list, const nq_wchar *name, Make make) {
    FldNode *node = nq_FldList_find(list, name);
    if (!node) {
        if (!list) return 0;
        return nqfld::append_node(list, make());
    }
    FldList *nested = nullptr;
    if (node->type == NQ_FLD_LIST) {
        // A List field made without a list (nq_FldList_appList with null) gets one now, so
        // that the value has somewhere to go.
        if (!node->value.list) node->value.list = nq_LnkList_create(nullptr);
        nested = node->value.list;
    } else {
        FldNode *converted = nq_FldList_convertNodeToList(list, name);
        if (converted) nested = converted->value.list;
    }
    if (nested) nqfld::append_node(nested, make());
    return 1;
}

}  // namespace

namespace nqfld {

FldNode *new_node(const nq_wchar *name, uint16_t type) {
    auto *node = static_cast<FldNode *>(nq_Malloc(sizeof(FldNode)));
    if (!node) return nullptr;
    std::memset(node, 0, sizeof *node);
    node->name = nq_Str_dup(name);
    if (node->name) nqt::upr(node->name);
    node->type = type;
    node->aux1 = 1;
    node->aux2 = 0;
    return node;
}

int append_node(FldList *list, FldNode *node) {
    if (!node) return -4;
    if (list && nq_LnkList_insEnd(list, node)) return 1;
    // The list did not take the node. What the caller handed over stays the caller's.
    if (node->type == NQ_FLD_LIST || node->type == NQ_FLD_STRLIST) node->value.ptr = nullptr;
    nq_FldList_destroyNode(node);
    return list ? -4 : 0;
}

int destroy_datum(void *datum) { return nq_FldList_destroyNode(static_cast<FldNode *>(datum)); }

int32_t truncate_to_int(double value) {
    if (std::isnan(value) || value <= -2147483649.0 || value >= 2147483648.0) return INT32_MIN;
    return static_cast<int32_t>(value);
}

}  // namespace nqfld

extern "C" {

// The linked list's operations under the field list's names.
NQ_API int nq_FldList_start(FldList *list) { return nq_LnkList_start(list); }
NQ_API int nq_FldList_next(FldList *list) { return nq_LnkList_next(list); }
NQ_API int nq_FldList_prev(FldList *list) { return nq_LnkList_prev(list); }
NQ_API int nq_FldList_eol(FldList *list) { return nq_LnkList_eol(list); }
NQ_API int nq_FldList_count(FldList *list) { return nq_LnkList_length(list); }
NQ_API FldNode *nq_FldList_curr(FldList *list) {
    return static_cast<FldNode *>(nq_LnkList_getCurr(list));
}

NQ_API FldList *nq_FldList_create(const nq_wchar *name, ...) {
    // Whether the list could be made is not asked: appending to null does nothing.
    FldList *list = nq_LnkList_create(nullptr);
    va_list args;
    va_start(args, name);
    for (const nq_wchar *n = name; n; n = va_arg(args, const nq_wchar *)) {
        const auto type = static_cast<uint16_t>(va_arg(args, int));
        switch (type) {
            case NQ_FLD_CHAR: nq_FldList_appChar(list, n, va_arg(args, const nq_wchar *)); break;
            case NQ_FLD_HANDLE: nq_FldList_appHandle(list, n, va_arg(args, const nq_wchar *)); break;
            case NQ_FLD_DPOINT:
            case NQ_FLD_MPOINT:
            case NQ_FLD_VECTOR:
            case NQ_FLD_POINT: {
                Point p;
                p.x = va_arg(args, double);
                p.y = va_arg(args, double);
                p.z = va_arg(args, double);
                if (type == NQ_FLD_DPOINT) nq_FldList_appDpoint(list, n, &p);
                else if (type == NQ_FLD_MPOINT) nq_FldList_appMpoint(list, n, &p);
                else if (type == NQ_FLD_POINT) nq_FldList_appPoint(list, n, &p);
                else {
                    const Vector v{p.x, p.y, p.z};
                    nq_FldList_appVector(list, n, &v);
                }
                break;
            }
            case NQ_FLD_INT:
            case NQ_FLD_LONG: {
                int32_t v = va_arg(args, int);
                if (v == -9999) v = 0;  // the "no value" mark is folded here and only here
                if (type == NQ_FLD_INT) nq_FldList_appInt(list, n, v);
                else nq_FldList_appLong(list, n, v);
                break;
            }
            case NQ_FLD_REAL: {
                double v = va_arg(args, double);
                if (std::fabs(v - -9999.0) < 0.01) v = 0.0;
                nq_FldList_appReal(list, n, v);
                break;
            }
            default:
                (void)va_arg(args, int);  // one word, ignored
                nq_FldList_appUnknown(list, n);
                break;
        }
    }
    va_end(args);
    return list;
}

NQ_API int nq_FldList_destroyNode(FldNode *node) {
    if (!node) return 0;
    nq_Free(node->name);
    switch (node->type) {
        case NQ_FLD_CHAR:
        case NQ_FLD_HANDLE:
            if (node->value.str) nq_Free(node->value.str);
            break;
        case NQ_FLD_LIST:
            if (node->value.list) nq_FldList_destroy(node->value.list);
            break;
        case NQ_FLD_STRLIST:
            if (node->value.strList) nq_StrList_destroy(node->value.strList);
            break;
        default:
            break;
    }
    nq_Free(node);
    return 1;
}

NQ_API int nq_FldList_destroy(FldList *list) { return nq_LnkList_destroy(list, nqfld::destroy_datum); }

NQ_API int nq_FldList_delCurr(FldList *list) { return nq_LnkList_delCurr(list, nqfld::destroy_datum); }

NQ_API int nq_FldList_delFld(FldList *list, const nq_wchar *name) {
    if (!list || !name) return 0;
    if (!nq_FldList_find(list, name)) return 0;
    return nq_FldList_delCurr(list);
}

NQ_API FldNode *nq_FldList_find(FldList *list, const nq_wchar *name) {
    if (!list || !name || list->count == 0) return nullptr;
    nq_wchar wanted[kFindBufferSize];
    nqt::copy_bounded(wanted, kFindBufferSize, name);
    nqt::upr(wanted);
    nq_LnkList_start(list);
    while (!nq_LnkList_eol(list)) {
        auto *node = static_cast<FldNode *>(nq_LnkList_getCurr(list));
        if (node && node->name && nqt::cmp(node->name, wanted) == 0) return node;
        nq_LnkList_next(list);
    }
    return nullptr;
}

NQ_API int nq_FldList_currFldname(FldList *list, nq_wchar *out) {
    FldNode *node = nq_FldList_curr(list);
    if (!node || !node->name) return -1;
    if (out) nqt::copy(out, node->name);
    return 1;
}

NQ_API int nq_FldList_currFldtype(FldList *list, uint16_t *out) {
    FldNode *node = nq_FldList_curr(list);
    if (!node) return -1;
    if (out) *out = node->type;
    return 1;
}

// new

NQ_API FldNode *nq_FldList_newChar(const nq_wchar *name, const nq_wchar *value) {
    FldNode *node = nqfld::new_node(name, NQ_FLD_CHAR);
    if (node) node->value.str = nq_Str_dup(value);
    return node;
}

NQ_API FldNode *nq_FldList_newHandle(const nq_wchar *name, const nq_wchar *value) {
    FldNode *node = nqfld::new_node(name, NQ_FLD_HANDLE);
    if (node) {
        node->value.str = nq_Str_dup(value);
        if (node->value.str) nqt::upr(node->value.str);
    }
    return node;
}

NQ_API FldNode *nq_FldList_newDpoint(const nq_wchar *name, const Point *value) {
    return build(name, NQ_FLD_DPOINT, point_value(point_or_origin(value)));
}

NQ_API FldNode *nq_FldList_newMpoint(const nq_wchar *name, const Point *value) {
    return build(name, NQ_FLD_MPOINT, point_value(point_or_origin(value)));
}

NQ_API FldNode *nq_FldList_newPoint(const nq_wchar *name, const Point *value) {
    return build(name, NQ_FLD_POINT, point_value(point_or_origin(value)));
}

NQ_API FldNode *nq_FldList_newVector(const nq_wchar *name, const Vector *value) {
    return build(name, NQ_FLD_VECTOR, vector_value(vector_or_origin(value)));
}

NQ_API FldNode *nq_FldList_newInt(const nq_wchar *name, int32_t value) {
    return build(name, NQ_FLD_INT, int_value(value));
}

NQ_API FldNode *nq_FldList_newLong(const nq_wchar *name, int32_t value) {
    return build(name, NQ_FLD_LONG, int_value(value));
}

NQ_API FldNode *nq_FldList_newReal(const nq_wchar *name, double value) {
    return build(name, NQ_FLD_REAL, real_value(value));
}

NQ_API FldNode *nq_FldList_newList(const nq_wchar *name, FldList *value) {
    return build(name, NQ_FLD_LIST, list_value(value));
}

NQ_API FldNode *nq_FldList_newUnknown(const nq_wchar *name) {
    return build(name, NQ_FLD_UNKNOWN, FldValue{});
}

// app

#define NQ_FLD_APP(list, make) ((list) ? nqfld::append_node((list), (make)) : 0)

NQ_API int nq_FldList_appChar(FldList *list, const nq_wchar *name, const nq_wchar *value) {
    return NQ_FLD_APP(list, nq_FldList_newChar(name, value));
}
NQ_API int nq_FldList_appHandle(FldList *list, const nq_wchar *name, const nq_wchar *value) {
    return NQ_FLD_APP(list, nq_FldList_newHandle(name, value));
}
NQ_API int nq_FldList_appDpoint(FldList *list, const nq_wchar *name, const Point *value) {
    return NQ_FLD_APP(list, nq_FldList_newDpoint(name, value));
}
NQ_API int nq_FldList_appMpoint(FldList *list, const nq_wchar *name, const Point *value) {
    return NQ_FLD_APP(list, nq_FldList_newMpoint(name, value));
}
NQ_API int nq_FldList_appPoint(FldList *list, const nq_wchar *name, const Point *value) {
    return NQ_FLD_APP(list, nq_FldList_newPoint(name, value));
}
NQ_API int nq_FldList_appVector(FldList *list, const nq_wchar *name, const Vector *value) {
    return NQ_FLD_APP(list, nq_FldList_newVector(name, value));
}
NQ_API int nq_FldList_appInt(FldList *list, const nq_wchar *name, int32_t value) {
    return NQ_FLD_APP(list, nq_FldList_newInt(name, value));
}
NQ_API int nq_FldList_appLong(FldList *list, const nq_wchar *name, int32_t value) {
    return NQ_FLD_APP(list, nq_FldList_newLong(name, value));
}
NQ_API int nq_FldList_appReal(FldList *list, const nq_wchar *name, double value) {
    return NQ_FLD_APP(list, nq_FldList_newReal(name, value));
}
NQ_API int nq_FldList_appList(FldList *list, const nq_wchar *name, FldList *value) {
    return NQ_FLD_APP(list, nq_FldList_newList(name, value));
}
NQ_API int nq_FldList_appUnknown(FldList *list, const nq_wchar *name) {
    return NQ_FLD_APP(list, nq_FldList_newUnknown(name));
}

// mod

NQ_API int nq_FldList_modChar(FldList *list, const nq_wchar *name, const nq_wchar *value) {
    return mod_field(
        list, name, NQ_FLD_CHAR, [&] { return nq_FldList_newChar(name, value); },
        [&](FldNode *n) { n->value.str = nq_Str_dup(value); });
}

NQ_API int nq_FldList_modHandle(FldList *list, const nq_wchar *name, const nq_wchar *value) {
    // In place the text is stored as given; only a new node upper-cases it.
    return mod_field(
        list, name, NQ_FLD_HANDLE, [&] { return nq_FldList_newHandle(name, value); },
        [&](FldNode *n) { n->value.str = nq_Str_dup(value); });
}

NQ_API int nq_FldList_modDpoint(FldList *list, const nq_wchar *name, const Point *value) {
    return mod_field(
        list, name, NQ_FLD_DPOINT, [&] { return nq_FldList_newDpoint(name, value); },
        [&](FldNode *n) { n->value.point = point_or_origin(value); });
}

NQ_API int nq_FldList_modMpoint(FldList *list, const nq_wchar *name, const Point *value) {
    return mod_field(
        list, name, NQ_FLD_MPOINT, [&] { return nq_FldList_newMpoint(name, value); },
        [&](FldNode *n) { n->value.point = point_or_origin(value); });
}

NQ_API int nq_FldList_modPoint(FldList *list, const nq_wchar *name, const Point *value) {
    return mod_field(
        list, name, NQ_FLD_POINT, [&] { return nq_FldList_newPoint(name, value); },
        [&](FldNode *n) { n->value.point = point_or_origin(value); });
}

NQ_API int nq_FldList_modVector(FldList *list, const nq_wchar *name, const Vector *value) {
    return mod_field(
        list, name, NQ_FLD_VECTOR, [&] { return nq_FldList_newVector(name, value); },
        [&](FldNode *n) { n->value.vector = vector_or_origin(value); });
}

NQ_API int nq_FldList_modInt(FldList *list, const nq_wchar *name, int32_t value) {
    return mod_field(
        list, name, NQ_FLD_INT, [&] { return nq_FldList_newInt(name, value); },
        [&](FldNode *n) { n->value.i = value; });
}

NQ_API int nq_FldList_modLong(FldList *list, const nq_wchar *name, int32_t value) {
    return mod_field(
        list, name, NQ_FLD_LONG, [&] { return nq_FldList_newLong(name, value); },
        [&](FldNode *n) { n->value.i = value; });
}

NQ_API int nq_FldList_modReal(FldList *list, const nq_wchar *name, double value) {
    return mod_field(
        list, name, NQ_FLD_REAL, [&] { return nq_FldList_newReal(name, value); },
        [&](FldNode *n) { n->value.d = value; });
}

NQ_API int nq_FldList_modList(FldList *list, const nq_wchar *name, FldList *value) {
    // The list that stood here is not destroyed; the caller who replaces one releases it.
    return mod_field(
        list, name, NQ_FLD_LIST, [&] { return nq_FldList_newList(name, value); },
        [&](FldNode *n) { n->value.list = value; });
}

NQ_API int nq_FldList_modUnknown(FldList *list, const nq_wchar *name) {
    return mod_field(
        list, name, NQ_FLD_UNKNOWN, [&] { return nq_FldList_newUnknown(name); },
        [](FldNode *) {});
}

// add

NQ_API int nq_FldList_addCharVal(FldList *list, const nq_wchar *name, const nq_wchar *value) {
    return add_field(list, name, [&] { return nq_FldList_newChar(name, value); });
}
NQ_API int nq_FldList_addHandleVal(FldList *list, const nq_wchar *name, const nq_wchar *value) {
    return add_field(list, name, [&] { return nq_FldList_newHandle(name, value); });
}
NQ_API int nq_FldList_addDpointVal(FldList *list, const nq_wchar *name, const Point *value) {
    return add_field(list, name, [&] { return nq_FldList_newDpoint(name, value); });
}
NQ_API int nq_FldList_addMpointVal(FldList *list, const nq_wchar *name, const Point *value) {
    return add_field(list, name, [&] { return nq_FldList_newMpoint(name, value); });
}
NQ_API int nq_FldList_addPointVal(FldList *list, const nq_wchar *name, const Point *value) {
    return add_field(list, name, [&] { return nq_FldList_newPoint(name, value); });
}
NQ_API int nq_FldList_addVectorVal(FldList *list, const nq_wchar *name, const Vector *value) {
    return add_field(list, name, [&] { return nq_FldList_newVector(name, value); });
}
NQ_API int nq_FldList_addIntVal(FldList *list, const nq_wchar *name, int32_t value) {
    return add_field(list, name, [&] { return nq_FldList_newInt(name, value); });
}
NQ_API int nq_FldList_addLongVal(FldList *list, const nq_wchar *name, int32_t value) {
    return add_field(list, name, [&] { return nq_FldList_newLong(name, value); });
}
NQ_API int nq_FldList_addRealVal(FldList *list, const nq_wchar *name, double value) {
    return add_field(list, name, [&] { return nq_FldList_newReal(name, value); });
}
NQ_API int nq_FldList_addUnknownVal(FldList *list, const nq_wchar *name) {
    return add_field(list, name, [&] { return nq_FldList_newUnknown(name); });
}

NQ_API int nq_FldList_addVal(FldList *list, const nq_wchar *name, uint16_t type, const void *value) {
    const auto *text = static_cast<const nq_wchar *>(value);
    switch (type) {
        case NQ_FLD_CHAR: nq_FldList_addCharVal(list, name, text); return 1;
        case NQ_FLD_HANDLE: nq_FldList_addHandleVal(list, name, text); return 1;
        case NQ_FLD_UNKNOWN: nq_FldList_addUnknownVal(list, name); return 1;
        default: break;
    }
    // The numbers and points are read through the pointer, so it must be there.
    if (!value) return 0;
    switch (type) {
        case NQ_FLD_INT: nq_FldList_addIntVal(list, name, *static_cast<const int32_t *>(value)); return 1;
        case NQ_FLD_LONG: nq_FldList_addLongVal(list, name, *static_cast<const int32_t *>(value)); return 1;
        case NQ_FLD_REAL: nq_FldList_addRealVal(list, name, *static_cast<const double *>(value)); return 1;
        case NQ_FLD_DPOINT: nq_FldList_addDpointVal(list, name, static_cast<const Point *>(value)); return 1;
        case NQ_FLD_MPOINT: nq_FldList_addMpointVal(list, name, static_cast<const Point *>(value)); return 1;
        case NQ_FLD_POINT: nq_FldList_addPointVal(list, name, static_cast<const Point *>(value)); return 1;
        case NQ_FLD_VECTOR: nq_FldList_addVectorVal(list, name, static_cast<const Vector *>(value)); return 1;
        default: return 0;
    }
}

}  // extern "C"
