// The FldList family's readers: by name (get), at the cursor (curr), and the node's value as
// text. The two kinds of reader differ in how they treat a mismatched type, and callers
// depend on each difference, so they are written out one by one rather than shared.
#include <cstring>
#include <string>

#include "fld_internal.h"
#include "nq_fldlist.h"
#include "nq_lnklist.h"
#include "nq_memory.h"
#include "nq_str.h"
#include "text/nq_text.h"

namespace {

// Room for any number the readers write: "%f" of the largest double is 317 characters.
constexpr std::size_t kNumberBufferSize = 400;

bool is_point_type(uint16_t type) {
    return type == NQ_FLD_DPOINT || type == NQ_FLD_MPOINT || type == NQ_FLD_VECTOR ||
           type == NQ_FLD_POINT;
}

// Writes an I, L or N value as text into out ("%d", "%ld", "%f"), whatever the caller's
// limit says. Yields false for any other type.
bool write_number(const FldNode *node, nq_wchar *out) {
    nq_wchar text[kNumberBufferSize];
    switch (node->type) {
        case NQ_FLD_INT: nqt::format(text, kNumberBufferSize, u"%d", node->value.i); break;
        case NQ_FLD_LONG: nqt::format(text, kNumberBufferSize, u"%ld", long{node->value.i}); break;
        case NQ_FLD_REAL: nqt::format(text, kNumberBufferSize, u"%f", node->value.d); break;
        default: return false;
    }
    if (out) nqt::copy(out, text);
    return true;
}

// Copies a Char or Handle value, skipped for a null string.
void copy_string(const FldNode *node, nq_wchar *out, int max) {
    if (node->value.str && out) nq_Str_ncpy(out, node->value.str, max);
}

// Overwrites the string in place, cut at its present length: the block is never grown.
void overwrite_in_place(nq_wchar *target, const nq_wchar *text) {
    if (!target) return;
    const std::size_t room = nqt::len(target);
    std::size_t i = 0;
    for (; i < room && text[i]; ++i) target[i] = text[i];
    target[i] = 0;
}

// The one buffer behind nq_FldNode_getFldValue. It grows to hold any value, and a List
// node leaves it as the previous call left it.
std::u16string &field_value_buffer() {
    static std::u16string buffer;
    return buffer;
}

}  // namespace

extern "C" {

// By name

NQ_API int nq_FldList_getChar(FldList *list, const nq_wchar *name, nq_wchar *out, int max) {
    if (out) out[0] = 0;
    FldNode *node = nq_FldList_find(list, name);
    if (!node) return -2;
    switch (node->type) {
        case NQ_FLD_CHAR:
        case NQ_FLD_HANDLE:
            copy_string(node, out, max);
            return 1;
        default:
            write_number(node, out);
            return -3;
    }
}

NQ_API int nq_FldList_getHandle(FldList *list, const nq_wchar *name, nq_wchar *out, int max) {
    if (out) out[0] = 0;
    FldNode *node = nq_FldList_find(list, name);
    if (!node) return -2;
    if (node->type != NQ_FLD_CHAR && node->type != NQ_FLD_HANDLE) return -3;
    copy_string(node, out, max);
    return 1;
}

// Integer reads: text is converted (the kit's parse saturates at the 32-bit limits, as the
// runtime's does) and still reported as a mismatch.
NQ_API int nq_FldList_getInt(FldList *list, const nq_wchar *name, int32_t *out) {
    if (!out) return 0;
    FldNode *node = nq_FldList_find(list, name);
    if (!node) return -2;
    switch (node->type) {
        case NQ_FLD_CHAR:
            if (node->value.str) *out = nqt::toi(node->value.str);
            return -3;
        case NQ_FLD_INT:
        case NQ_FLD_LONG: *out = node->value.i; return 1;
        case NQ_FLD_REAL: *out = nqfld::truncate_to_int(node->value.d); return 1;
        default: return -3;
    }
}

NQ_API int nq_FldList_getLong(FldList *list, const nq_wchar *name, int32_t *out) {
    return nq_FldList_getInt(list, name, out);
}

NQ_API int nq_FldList_getReal(FldList *list, const nq_wchar *name, double *out) {
    if (!out) return 0;
    FldNode *node = nq_FldList_find(list, name);
    if (!node) return -2;
    switch (node->type) {
        case NQ_FLD_CHAR:
            if (node->value.str) *out = nqt::tof(node->value.str);
            return -3;
        case NQ_FLD_INT:
        case NQ_FLD_LONG: *out = node->value.i; return 1;
        case NQ_FLD_REAL: *out = node->value.d; return 1;
        default: return -3;
    }
}

NQ_API int nq_FldList_getPoint(FldList *list, const nq_wchar *name, Point *out, int flag) {
    (void)flag;  // kept for callers; it changes nothing
    if (!out) return 0;
    FldNode *node = nq_FldList_find(list, name);
    if (!node) return -2;
    if (!is_point_type(node->type)) return -3;
    *out = node->value.point;
    return 1;
}

NQ_API int nq_FldList_getVector(FldList *list, const nq_wchar *name, Vector *out) {
    if (!out) return 0;
    Point p;
    const int result = nq_FldList_getPoint(list, name, &p, 1);
    if (result == 1) *out = Vector{p.x, p.y, p.z};
    return result;
}

// At the cursor

NQ_API int nq_FldList_currChar(FldList *list, nq_wchar *out, int max) {
    FldNode *node = nq_FldList_curr(list);
    if (!node) return -1;
    switch (node->type) {
        case NQ_FLD_CHAR:
        case NQ_FLD_HANDLE:
            copy_string(node, out, max);
            return 1;
        default:
            if (!write_number(node, out) && out) out[0] = 0;
            return -3;
    }
}

NQ_API int nq_FldList_currHandle(FldList *list, nq_wchar *out, int max) {
    FldNode *node = nq_FldList_curr(list);
    if (!node) return -1;
    if (node->type == NQ_FLD_CHAR || node->type == NQ_FLD_HANDLE) {
        copy_string(node, out, max);
        return 1;
    }
    if (out) out[0] = 0;
    return -3;
}

NQ_API int nq_FldList_currInt(FldList *list, int32_t *out) {
    if (!out) return 0;
    FldNode *node = nq_FldList_curr(list);
    if (!node) return -1;
    switch (node->type) {
        case NQ_FLD_INT:
        case NQ_FLD_LONG: *out = node->value.i; return 1;
        case NQ_FLD_REAL: *out = nqfld::truncate_to_int(node->value.d); return 1;
        default: return -3;  // a Char field is not converted here
    }
}

// Long and Int are one width, so the cursor reader is one function under two names.
NQ_API int nq_FldList_currLong(FldList *list, int32_t *out) __attribute__((alias("nq_FldList_currInt")));

NQ_API int nq_FldList_currReal(FldList *list, double *out) {
    if (!out) return 0;
    FldNode *node = nq_FldList_curr(list);
    if (!node) return -1;
    switch (node->type) {
        case NQ_FLD_CHAR: *out = nqt::tof(node->value.str); return 1;  // a null text reads as 0
        case NQ_FLD_INT:
        case NQ_FLD_LONG: *out = node->value.i; return 1;
        case NQ_FLD_REAL: *out = node->value.d; return 1;
        default: return -3;
    }
}

NQ_API int nq_FldList_currPoint(FldList *list, Point *out) {
    if (!out) return 0;
    FldNode *node = nq_FldList_curr(list);
    if (!node) return -1;
    if (!is_point_type(node->type)) return -3;
    *out = node->value.point;
    return 1;
}

NQ_API int nq_FldList_currVector(FldList *list, Vector *out) {
    if (!out) return 0;
    Point p;
    const int result = nq_FldList_currPoint(list, &p);
    if (result == 1) *out = Vector{p.x, p.y, p.z};
    return result;
}

NQ_API int nq_FldList_currList(FldList *list, LnkList **out) {
    if (!out) return 0;
    FldNode *node = nq_FldList_curr(list);
    if (!node) return -3;
    if (node->type != NQ_FLD_LIST && node->type != NQ_FLD_STRLIST) return -3;
    *out = node->value.list;
    return 1;
}

// The node on its own

NQ_API nq_wchar *nq_FldNode_getFldValue(FldNode *node) {
    std::u16string &buffer = field_value_buffer();
    if (!node) {
        buffer.clear();
        return nq_Str_dup(u"");
    }
    switch (node->type) {
        case NQ_FLD_CHAR:
        case NQ_FLD_HANDLE: buffer = nqt::format_string(u"%s", node->value.str); break;
        case NQ_FLD_INT: buffer = nqt::format_string(u"%d", node->value.i); break;
        case NQ_FLD_LONG: buffer = nqt::format_string(u"%ld", long{node->value.i}); break;
        case NQ_FLD_REAL: buffer = nqt::format_string(u"%f", node->value.d); break;
        case NQ_FLD_DPOINT:
        case NQ_FLD_MPOINT:
        case NQ_FLD_VECTOR:
        case NQ_FLD_POINT: {
            // The character is the low word of the first coordinate's bits, not the type
            // letter; callers have always seen it so. A zero there ends the text.
            uint64_t bits;
            std::memcpy(&bits, &node->value.p[0], sizeof bits);
            buffer = nqt::format_string(u"%c:%.3f %.3f %.3f", int(bits & 0xFFFFu), node->value.p[0],
                                        node->value.p[1], node->value.p[2]);
            break;
        }
        case NQ_FLD_LIST: break;  // formats nothing: the buffer keeps the previous value
        case NQ_FLD_STRLIST: buffer.clear(); break;  // a list record is not text
        default: buffer = nqt::format_string(u"%s", static_cast<const nq_wchar *>(node->value.ptr)); break;
    }
    return nq_Str_dup(buffer.c_str());
}

NQ_API void nq_FldNode_updateFldValue(FldNode *node, const nq_wchar *text) {
    if (!node || !text) return;
    switch (node->type) {
        case NQ_FLD_CHAR:
        case NQ_FLD_HANDLE: overwrite_in_place(node->value.str, text); break;
        case NQ_FLD_REAL: node->value.d = nqt::tof(text); break;
        case NQ_FLD_INT: node->value.i = nqt::toi(text); break;
        case NQ_FLD_LONG: node->value.i = nqt::toi(text); break;
        case NQ_FLD_DPOINT:
        case NQ_FLD_MPOINT:
        case NQ_FLD_VECTOR:
        case NQ_FLD_POINT:
        case NQ_FLD_LIST:
        case NQ_FLD_STRLIST: break;
        default: overwrite_in_place(static_cast<nq_wchar *>(node->value.ptr), text); break;
    }
}

}  // extern "C"
