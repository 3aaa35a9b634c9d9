// Whole-list operations on field lists: merging, copying, comparing, restructuring,
// transforming geometry in place, printing, and building a list from setting lines or a
// table's fields. Each walks a list with the list's own cursor and leaves it moved.
#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <string>

#include "diag_trace.h"
#include "fld_internal.h"
#include "nq_dbfldlist.h"
#include "nq_diag.h"
#include "nq_fldlist.h"
#include "nq_ini.h"
#include "nq_lnklist.h"
#include "nq_memory.h"
#include "nq_point.h"
#include "nq_rotmatrix.h"
#include "nq_str.h"
#include "nq_strlist.h"
#include "text/nq_text.h"

namespace {

// Work buffers of these operations, in characters with the terminator.
constexpr int kWorkSize = 512;
constexpr std::size_t kPrefixSize = 260;
// Blanks before a nested line: 17, and 3 more for each level below the first.
constexpr int kNestIndent = 17;
constexpr int kLevelIndent = 3;

// The value of one node written to dst under the node's name, by the app members
// (appending) or the mod members (setting in place). A List is copied deep; every other
// code, S among them, arrives as an Unknown field: a StrList is never carried over.
int put_field(FldList *dst, const FldNode *node, bool set) {
    const nq_wchar *name = node->name;
    const Point point = node->value.point;
    const Vector vector = node->value.vector;
    switch (node->type) {
        case NQ_FLD_CHAR:
            return set ? nq_FldList_modChar(dst, name, node->value.str)
                       : nq_FldList_appChar(dst, name, node->value.str);
        case NQ_FLD_HANDLE:
            return set ? nq_FldList_modHandle(dst, name, node->value.str)
                       : nq_FldList_appHandle(dst, name, node->value.str);
        case NQ_FLD_INT:
            return set ? nq_FldList_modInt(dst, name, node->value.i)
                       : nq_FldList_appInt(dst, name, node->value.i);
        case NQ_FLD_LONG:
            return set ? nq_FldList_modLong(dst, name, node->value.i)
                       : nq_FldList_appLong(dst, name, node->value.i);
        case NQ_FLD_REAL:
            return set ? nq_FldList_modReal(dst, name, node->value.d)
                       : nq_FldList_appReal(dst, name, node->value.d);
        case NQ_FLD_DPOINT:
            return set ? nq_FldList_modDpoint(dst, name, &point) : nq_FldList_appDpoint(dst, name, &point);
        case NQ_FLD_MPOINT:
            return set ? nq_FldList_modMpoint(dst, name, &point) : nq_FldList_appMpoint(dst, name, &point);
        case NQ_FLD_POINT:
            return set ? nq_FldList_modPoint(dst, name, &point) : nq_FldList_appPoint(dst, name, &point);
        case NQ_FLD_VECTOR:
            return set ? nq_FldList_modVector(dst, name, &vector) : nq_FldList_appVector(dst, name, &vector);
        case NQ_FLD_LIST: {
            FldList *copy = nq_FldList_copy(node->value.list);
            const int result = set ? nq_FldList_modList(dst, name, copy) : nq_FldList_appList(dst, name, copy);
            if (result != 1) nq_FldList_destroy(copy);  // the copy found no home
            return result;
        }
        default:
            return set ? nq_FldList_modUnknown(dst, name) : nq_FldList_appUnknown(dst, name);
    }
}

// A field about to be overwritten by combine gives up the list it owns: the mod members
// leave a replaced List or StrList to their caller, and here the caller is this library.
void release_owned_list(FldList *dst, const nq_wchar *name) {
    FldNode *old = nq_FldList_find(dst, name);
    if (!old || !old->value.ptr) return;
    if (old->type == NQ_FLD_LIST) nq_FldList_destroy(old->value.list);
    else if (old->type == NQ_FLD_STRLIST) nq_StrList_destroy(old->value.strList);
    else return;
    old->value.ptr = nullptr;
    old->type = NQ_FLD_UNKNOWN;
}

// Every node of src put into dst. A list merged with itself is merged from a copy, since
// walking a list while appending to it, or looking names up in it, never ends.
int merge(FldList *dst, FldList *src, bool set) {
    if (!dst || !src) return 0;
    if (dst == src) {
        FldList *copy = nq_FldList_copy(src);
        if (!copy) return 0;
        merge(dst, copy, set);
        nq_FldList_destroy(copy);
        return 1;
    }
    nq_LnkList_start(src);
    while (!nq_LnkList_eol(src)) {
        const auto *node = static_cast<const FldNode *>(nq_LnkList_getCurr(src));
        if (node) {
            if (set && node->name) release_owned_list(dst, node->name);
            put_field(dst, node, set);
        }
        nq_LnkList_next(src);
    }
    return 1;
}

// The numeric part of nq_FldList_compareNode: equal within 0.001 or greater is 0.
int compare_difference(double d) {
    if (std::fabs(d) < 0.001) return 0;
    return d < 0 ? -1 : 0;
}

// The blanks that start a line below the top level: 17, and 3 more for each level below
// the first; no more than a prefix buffer holds, for absurd levels.
std::size_t nest_blanks(int level) {
    const long long wanted = kNestIndent + static_cast<long long>(kLevelIndent) * (level - 1);
    return wanted < static_cast<long long>(kPrefixSize) ? std::size_t(wanted) : kPrefixSize - 1;
}

// The prefix of a printed line: the name as "%-16s " at level 0, blanks below it.
void compose_prefix(nq_wchar *prefix, const FldNode *node, int level) {
    if (level <= 0) {
        nqt::format(prefix, kPrefixSize, u"%-16s ", node->name);
        return;
    }
    const std::size_t blanks = nest_blanks(level);
    for (std::size_t i = 0; i < blanks; ++i) prefix[i] = u' ';
    prefix[blanks] = 0;
}

// One line of the diagnostic printer, composed in the diagnostics buffer and written with
// the count the formatting gave, when the caller's level and mask allow it.
void send_diag_line(int diagLevel, uint32_t condition, int line, const nq_wchar *format, ...) {
    if (diagLevel > nq_Diag_getLevel() || (nq_Diag_getCondition() & condition) == 0) return;
    nq_wchar *buffer = nq_Diag_getDiagMsgBuf();
    va_list args;
    va_start(args, format);
    const int count = nqt::vformat(buffer, NQ_DIAG_MSGBUF_SIZE, format, args);
    va_end(args);
    nq_Diag_putOutput(count, buffer, NQ_TRACE_FILE, line);
}

}  // namespace

extern "C" {

NQ_API int nq_FldList_concatenate(FldList *dst, FldList *src) { return merge(dst, src, false); }

NQ_API int nq_FldList_combine(FldList *dst, FldList *src) { return merge(dst, src, true); }

NQ_API FldList *nq_FldList_copy(FldList *src) {
    FldList *list = nq_FldList_create(nullptr);
    if (!list) return nullptr;
    nq_FldList_concatenate(list, src);
    return list;
}

NQ_API int nq_FldList_copyFld(FldList *src, const nq_wchar *srcName, FldList *dst,
                              const nq_wchar *dstName) {
    if (!src || !srcName || !dst || !dstName) return 0;
    FldNode *node = nq_FldList_find(src, srcName);
    if (!node) return 0;
    int result = 1;
    switch (node->type) {
        case NQ_FLD_CHAR:
        case NQ_FLD_HANDLE: {
            // Read through the Char reader, so a Handle arrives as a Char, cut at 512.
            nq_wchar text[kWorkSize + 1] = {0};
            nq_FldList_currChar(src, text, kWorkSize);
            result = nq_FldList_modChar(dst, dstName, text);
            break;
        }
        case NQ_FLD_INT:
        case NQ_FLD_LONG: {
            int32_t value = 0;
            nq_FldList_currInt(src, &value);
            result = node->type == NQ_FLD_INT ? nq_FldList_modInt(dst, dstName, value)
                                              : nq_FldList_modLong(dst, dstName, value);
            break;
        }
        case NQ_FLD_REAL: {
            double value = 0.0;
            nq_FldList_currReal(src, &value);
            result = nq_FldList_modReal(dst, dstName, value);
            break;
        }
        case NQ_FLD_DPOINT:
        case NQ_FLD_MPOINT:
        case NQ_FLD_POINT:
        case NQ_FLD_VECTOR: {
            Point p{0.0, 0.0, 0.0};
            nq_FldList_currPoint(src, &p);
            const Vector v{p.x, p.y, p.z};
            if (node->type == NQ_FLD_DPOINT) result = nq_FldList_modDpoint(dst, dstName, &p);
            else if (node->type == NQ_FLD_MPOINT) result = nq_FldList_modMpoint(dst, dstName, &p);
            else if (node->type == NQ_FLD_POINT) result = nq_FldList_modPoint(dst, dstName, &p);
            else result = nq_FldList_modVector(dst, dstName, &v);
            break;
        }
        default:
            break;  // nothing is written, and that counts as done
    }
    return result;
}

NQ_API int nq_FldList_compareNode(FldNode *a, FldNode *b) {
    if (!a || !b) return -2;
    if (a->type < b->type) return -1;
    if (a->type > b->type) return 1;
    switch (a->type) {
        case NQ_FLD_CHAR:
        case NQ_FLD_HANDLE: {
            const int c = nqt::cmp(a->value.str ? a->value.str : u"", b->value.str ? b->value.str : u"");
            return c < 0 ? -1 : (c > 0 ? 1 : 0);
        }
        case NQ_FLD_INT:
        case NQ_FLD_LONG: {
            // A 32-bit difference, wrapping as the processor's subtraction does.
            const auto d = static_cast<int32_t>(static_cast<uint32_t>(a->value.i) - static_cast<uint32_t>(b->value.i));
            return d < 0 ? -1 : 0;
        }
        case NQ_FLD_REAL: return compare_difference(a->value.d - b->value.d);
        case NQ_FLD_DPOINT:
        case NQ_FLD_MPOINT:
        case NQ_FLD_VECTOR:
        case NQ_FLD_POINT: {
            // A distance is never negative, so points always compare as 0.
            double d = 0.0;
            nq_Point_distance(&d, &a->value.point, &b->value.point);
            return compare_difference(d);
        }
        default: return 0;
    }
}

NQ_API FldList *nq_FldList_diff(FldList *a, FldList *b, int includeMissing) {
    if (!a) return nullptr;
    LnkList *taken = nullptr;
    int index = 0;
    nq_LnkList_start(a);
    while (!nq_LnkList_eol(a)) {
        auto *node = static_cast<FldNode *>(nq_LnkList_getCurr(a));
        nq_wchar name[kWorkSize + 1];
        if (node && node->name) {
            nqt::copy_bounded(name, sizeof name / sizeof name[0], node->name);
            FldNode *other = nq_FldList_find(b, name);
            // Lookup moved the cursor of b; when b is a, put it back on this node.
            if (b == a) nq_LnkList_setPos(a, index);
            const bool take = other ? nq_FldList_compareNode(node, other) != 0 : includeMissing != 0;
            if (take) {
                if (!taken) taken = nq_LnkList_create(node, nullptr);
                else nq_LnkList_insEnd(taken, node);
            }
        }
        nq_LnkList_next(a);
        ++index;
    }
    if (!taken) return nullptr;
    FldList *result = nq_FldList_copy(taken);
    nq_LnkList_destroy(taken, nullptr);  // the nodes are a's
    return result;
}

NQ_API FldNode *nq_FldList_convertNodeToList(FldList *list, const nq_wchar *name) {
    FldNode *node = nq_FldList_find(list, name);
    if (!node) {
        nq_FldList_appList(list, name, nullptr);
        return nullptr;
    }
    if (node->type == NQ_FLD_LIST) return nullptr;
    LnkList *nested = nq_LnkList_create(nullptr);
    if (!nested) return nullptr;
    if (!nq_LnkList_insEnd(nested, node)) {
        nq_LnkList_destroy(nested, nullptr);
        return nullptr;
    }
    FldNode *wrapper = nq_FldList_newList(node->name, nested);
    if (!wrapper) {
        // No node to stand in its place: the old node stays where it was.
        nq_LnkList_destroy(nested, nullptr);
        return nullptr;
    }
    // The old node moves, not copied, so its name and value stay valid; the cursor stays
    // on the place, now holding the List node.
    nq_LnkList_modCurr(list, wrapper, nullptr);
    return wrapper;
}

NQ_API int nq_FldList_applyTransform(FldList *list, const Point *offset, const RotMatrix *rotation,
                                     const nq_wchar *types) {
    if (!list || (!offset && !rotation) || !types) return 0;
    int result = 1;
    nq_LnkList_start(list);
    while (!nq_LnkList_eol(list)) {
        auto *node = static_cast<FldNode *>(nq_LnkList_getCurr(list));
        const uint16_t type = node ? node->type : 0;
        const bool geometric = type == NQ_FLD_POINT || type == NQ_FLD_MPOINT || type == NQ_FLD_DPOINT ||
                               type == NQ_FLD_VECTOR;
        if (geometric && nqt::chr(types, static_cast<nq_wchar>(type))) {
            int status = 1;
            if (type == NQ_FLD_DPOINT || type == NQ_FLD_VECTOR) {
                // Directions turn but do not move.
                if (rotation) status = nq_RotMatrix_rotateVector(&node->value.vector, rotation);
            } else {
                if (rotation) status = nq_RotMatrix_rotatePoint(&node->value.point, rotation);
                if (offset && status == 1) status = nq_Point_add(&node->value.point, &node->value.point, offset);
            }
            if (status != 1) result = status;
        }
        nq_LnkList_next(list);
    }
    return result;
}

NQ_API void nq_FldList_printLevelList(FldList *list, int level) {
    if (!list) return;
    nq_LnkList_start(list);
    while (!nq_LnkList_eol(list)) {
        auto *node = static_cast<FldNode *>(nq_LnkList_getCurr(list));
        if (node && node->name) {
            if (level <= 0) nqt::print(u"%-16s ", node->name);
            else nqt::print(u"%s", std::u16string(nest_blanks(level), u' ').c_str());
            const int letter = node->type;
            const double *p = node->value.p;
            switch (node->type) {
                case NQ_FLD_CHAR:
                case NQ_FLD_HANDLE:
                    // A null string leaves the line open.
                    if (node->value.str) nqt::print(u"%c:%s\n", letter, node->value.str);
                    break;
                case NQ_FLD_DPOINT:
                case NQ_FLD_MPOINT:
                case NQ_FLD_VECTOR:
                case NQ_FLD_POINT: nqt::print(u"%c:%.3f %.3f %.3f\n", letter, p[0], p[1], p[2]); break;
                case NQ_FLD_INT: nqt::print(u"%c:%d\n", letter, node->value.i); break;
                case NQ_FLD_LONG: nqt::print(u"%c:%ld\n", letter, long{node->value.i}); break;
                case NQ_FLD_REAL: nqt::print(u"%c:%f\n", letter, node->value.d); break;
                case NQ_FLD_LIST:
                    nqt::print(u"\n");
                    nq_FldList_printLevelList(node->value.list, level + 1);
                    break;
                default: nqt::print(u"<undefined>\n"); break;
            }
        }
        nq_LnkList_next(list);
    }
}

NQ_API void nq_FldList_printList(FldList *list) { nq_FldList_printLevelList(list, 0); }

NQ_API void nq_FldList_printLevelListDiag(FldList *list, int level, int diagLevel, uint32_t condition) {
    if (!list) return;
    // The prefix of the line being sent; the line itself goes to the diagnostics buffer.
    static nq_wchar prefix[kPrefixSize];
    nq_LnkList_start(list);
    while (!nq_LnkList_eol(list)) {
        auto *node = static_cast<FldNode *>(nq_LnkList_getCurr(list));
        if (node && node->name) {
            compose_prefix(prefix, node, level);
            const int letter = node->type;
            const double *p = node->value.p;
            switch (node->type) {
                case NQ_FLD_CHAR:
                case NQ_FLD_HANDLE:
                    if (node->value.str)
                        send_diag_line(diagLevel, condition, __LINE__, u"%s%c:%s", prefix, letter, node->value.str);
                    break;
                case NQ_FLD_DPOINT:
                case NQ_FLD_MPOINT:
                case NQ_FLD_VECTOR:
                case NQ_FLD_POINT:
                    send_diag_line(diagLevel, condition, __LINE__, u"%s%c:%.3f %.3f %.3f", prefix, letter, p[0],
                                   p[1], p[2]);
                    break;
                case NQ_FLD_INT:
                    send_diag_line(diagLevel, condition, __LINE__, u"%s%c:%d", prefix, letter, node->value.i);
                    break;
                case NQ_FLD_LONG:
                    send_diag_line(diagLevel, condition, __LINE__, u"%s%c:%ld", prefix, letter, long{node->value.i});
                    break;
                case NQ_FLD_REAL:
                    send_diag_line(diagLevel, condition, __LINE__, u"%s%c:%f", prefix, letter, node->value.d);
                    break;
                case NQ_FLD_LIST:
                    send_diag_line(diagLevel, condition, __LINE__, u"%s", prefix);
                    nq_FldList_printLevelListDiag(node->value.list, level + 1, diagLevel, condition);
                    break;
                default:
                    send_diag_line(diagLevel, condition, __LINE__, u"%s%s", prefix, u"<undefined>");
                    break;
            }
        }
        nq_LnkList_next(list);
    }
}

NQ_API void nq_FldList_printListDiag(FldList *list, int diagLevel, uint32_t condition) {
    nq_FldList_printLevelListDiag(list, 0, diagLevel, condition);
}

NQ_API FldList *nq_FldList_fromEnvList(StrList *lines) {
    if (!lines) return nullptr;
    FldList *list = nullptr;
    nq_StrList_start(lines);
    while (!nq_StrList_eol(lines)) {
        nq_wchar *line = nq_StrList_getCurrPtr(lines);
        if (line) {
            // Both parts are shorter than the line, so a buffer of its length holds either.
            const std::size_t room = nqt::len(line) + 1;
            auto *name = static_cast<nq_wchar *>(nq_Malloc(room * sizeof(nq_wchar)));
            auto *value = static_cast<nq_wchar *>(nq_Malloc(room * sizeof(nq_wchar)));
            if (name && value) {
                name[0] = 0;
                nq_Ini_parse(line, name, value);
                if (name[0] && value[0]) {
                    if (!list) list = nq_FldList_create(name, int(NQ_FLD_CHAR), value, nullptr);
                    else nq_FldList_appChar(list, name, value);
                }
            }
            nq_Free(value);
            nq_Free(name);
            nq_Free(line);
        }
        nq_StrList_next(lines);
    }
    if (list) nq_LnkList_start(list);
    return list;
}

NQ_API FldList *nq_FldList_fromDbFldList(DbFldList *dbList) {
    FldList *list = nq_FldList_create(nullptr);
    if (!list) return nullptr;
    nq_LnkList_start(dbList);
    while (!nq_LnkList_eol(dbList)) {
        nq_wchar name[kWorkSize + 1];
        nqt::copy_bounded(name, sizeof name / sizeof name[0], nq_DbFldList_getCurrName(dbList));
        if (name[0]) {
            const nq_wchar type = nq_DbFldList_getCurrType(dbList);
            const uint32_t precision = nq_DbFldList_getCurrPrec(dbList);
            nq_wchar text[kWorkSize + 1];
            nqt::copy_bounded(text, sizeof text / sizeof text[0], nq_DbFldList_getCurrStr(dbList));
            if (type == u'N' && precision == 0) {
                nq_FldList_appInt(list, name, nqt::toi(text));
            } else if (type == u'N') {
                // Text written under a decimal-comma locale still parses.
                if (nq_wchar *comma = nqt::chr(text, u','); comma && text[0]) *comma = u'.';
                nq_FldList_appReal(list, name, nqt::tof(text));
            } else {
                nq_FldList_appChar(list, name, text);
            }
        }
        nq_LnkList_next(dbList);
    }
    return list;
}

NQ_API int nq_FldList_appStrList(FldList *list, const nq_wchar *name, StrList *strList) {
    if (!list) return 0;
    FldNode *node = nqfld::new_node(name, NQ_FLD_STRLIST);
    if (node) node->value.strList = strList;
    return nqfld::append_node(list, node);
}

}  // extern "C"
