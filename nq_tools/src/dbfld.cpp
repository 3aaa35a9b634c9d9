// The DbFldList family: a linked list of column name, value text, width, precision and type
// letter, the form in which records and structures pass through the database layer.
#include <cstdarg>
#include <cstdio>
#include <string>

#include "diag_trace.h"
#include "nq_dbfldlist.h"
#include "nq_file.h"
#include "nq_lnklist.h"
#include "nq_memory.h"
#include "nq_str.h"
#include "plat_fs.h"
#include "text/nq_text.h"

namespace {

// Text results are cut to this many characters.
constexpr int kTextMax = 512;
// Template lines are read with this limit.
constexpr int kTemplateLineMax = 256;
// A field description: type letter, three digits of width, three of precision.
constexpr std::size_t kDescLength = 7;

// One static result buffer of an operation.
struct TextBuffer {
    nq_wchar text[kTextMax + 1];
};

TextBuffer g_currName, g_currStr, g_currStrPadded, g_nthStr, g_nthStrPadded;

DbFldNode *current(DbFldList *list) { return static_cast<DbFldNode *>(nq_LnkList_getCurr(list)); }

int destroy_datum(void *datum) { return nq_DbFldNode_destroy(static_cast<DbFldNode *>(datum)); }

// The value rule: the old value goes; a null value stays null (0); otherwise a duplicate,
// trimmed in place (trailing blanks, and for N and F leading ones too), and 1 even when
// the duplicate could not be made. Trimming in place keeps the block at its full size,
// which the record layer uses as the column's bound buffer.
int set_value(DbFldNode *node, const nq_wchar *value) {
    if (node->value) {
        nq_Free(node->value);
        node->value = nullptr;
    }
    if (!value) return 0;
    node->value = nq_Str_dup(value);
    if (node->value) {
        nq_Str_rtb(node->value);
        if (node->type == u'N' || node->type == u'F') nq_Str_rlb(node->value);
    }
    return 1;
}

// The current value, at most 512 characters, into buffer; empty without node or value.
nq_wchar *copy_current(DbFldList *list, TextBuffer &buffer) {
    DbFldNode *node = current(list);
    nqt::copy_bounded(buffer.text, kTextMax + 1, node ? node->value : nullptr);
    return buffer.text;
}

// The same, then padded with blanks to the node's width (no further than the buffer).
nq_wchar *copy_current_padded(DbFldList *list, TextBuffer &buffer) {
    copy_current(list, buffer);
    if (DbFldNode *node = current(list)) {
        const uint32_t width = node->width < uint32_t(kTextMax) ? node->width : uint32_t(kTextMax);
        nq_Str_pad(buffer.text, int(width));
    }
    return buffer.text;
}

int insert(DbFldList *list, const nq_wchar *name, const nq_wchar *value, uint32_t width,
           uint32_t precision, nq_wchar type, bool atEnd) {
    if (!list) return 0;
    DbFldNode *node = nq_DbFldNode_new(name, value, width, precision, type);
    if (!node) return 0;
    const int result = atEnd ? nq_LnkList_insEnd(list, node) : nq_LnkList_insStart(list, node);
    if (!result) nq_DbFldNode_destroy(node);
    return result;
}

}  // namespace

extern "C" {

NQ_API DbFldNode *nq_DbFldNode_new(const nq_wchar *name, const nq_wchar *value, uint32_t width,
                                   uint32_t precision, nq_wchar type) {
    NQ_TRACE_FRAME(NQ_DIAG_DBFLD, u"Entering nq_DbFldNode_new.", nullptr);
    auto *node = static_cast<DbFldNode *>(nq_Malloc(sizeof(DbFldNode)));
    if (!node) return nullptr;
    nqt::copy_bounded(node->name, NQ_DBFLD_NAME_SIZE, name);  // 63 characters are kept
    node->value = nullptr;
    node->width = width;
    node->precision = precision;
    node->type = type ? nqt::toupper(type) : u'C';
    set_value(node, value);
    return node;
}

NQ_API int nq_DbFldNode_destroy(DbFldNode *node) {
    // This literal names the string list's destructor; trace readers know it so.
    NQ_TRACE_FRAME(NQ_DIAG_DBFLD, u"Entering nq_StrListNode_destroy.", nullptr);
    if (!node) return 0;
    nq_Free(node->value);
    nq_Free(node);
    return 1;
}

NQ_API DbFldList *nq_DbFldList_create(const nq_wchar *name, ...) {
    DbFldList *list = nq_LnkList_create(nullptr);
    if (!list) return nullptr;
    va_list args;
    va_start(args, name);
    for (const nq_wchar *n = name; n; n = va_arg(args, const nq_wchar *)) {
        const nq_wchar *value = va_arg(args, const nq_wchar *);
        DbFldNode *node = nq_DbFldNode_new(n, value ? value : u"", 0, 0, u'C');
        if (!node) continue;
        nqt::upr(node->name);
        if (!nq_LnkList_insEnd(list, node)) nq_DbFldNode_destroy(node);
    }
    va_end(args);
    return list;
}

NQ_API DbFldList *nq_DbFldList_copy(DbFldList *list) {
    if (!list) return nullptr;
    DbFldList *copy = nq_LnkList_create(nullptr);
    if (!copy) return nullptr;
    nq_LnkList_start(list);
    while (!nq_LnkList_eol(list)) {
        if (DbFldNode *node = current(list))
            insert(copy, node->name, node->value, node->width, node->precision, node->type, true);
        nq_LnkList_next(list);
    }
    return copy;
}

NQ_API int nq_DbFldList_destroy(DbFldList *list) {
    if (!list) return 0;
    return nq_LnkList_destroy(list, destroy_datum);
}

NQ_API int nq_DbFldList_delCurr(DbFldList *list) { return nq_LnkList_delCurr(list, destroy_datum); }

NQ_API int nq_DbFldList_delFld(DbFldList *list, const nq_wchar *name) {
    if (!list || !name) return 0;
    if (!nq_DbFldList_find(list, name)) return 0;
    return nq_DbFldList_delCurr(list);
}

NQ_API int nq_DbFldList_start(DbFldList *list) { return nq_LnkList_start(list); }
NQ_API int nq_DbFldList_end(DbFldList *list) { return nq_LnkList_end(list); }
NQ_API int nq_DbFldList_next(DbFldList *list) { return nq_LnkList_next(list); }
NQ_API int nq_DbFldList_prev(DbFldList *list) { return nq_LnkList_prev(list); }
NQ_API int nq_DbFldList_eol(DbFldList *list) { return nq_LnkList_eol(list); }
NQ_API int nq_DbFldList_length(DbFldList *list) { return nq_LnkList_length(list); }

NQ_API int nq_DbFldList_find(DbFldList *list, const nq_wchar *name) {
    if (!list || !name) return 0;
    // Only the name asked for is upper-cased; a stored lower-case name is never found here.
    nq_wchar *wanted = nq_Str_dup(name);
    if (!wanted) return 0;
    nqt::upr(wanted);
    int found = 0;
    nq_LnkList_start(list);
    while (!nq_LnkList_eol(list)) {
        DbFldNode *node = current(list);
        if (node && nqt::cmp(node->name, wanted) == 0) {
            found = 1;
            break;
        }
        nq_LnkList_next(list);
    }
    nq_Free(wanted);
    return found;
}

NQ_API DbFldNode *nq_DbFldList_findFld(DbFldList *list, const nq_wchar *name) {
    if (!list || !name) return nullptr;
    nq_LnkList_start(list);
    while (!nq_LnkList_eol(list)) {
        DbFldNode *node = current(list);
        if (node && nq_Str_cmpi(node->name, name) == 0) return node;
        nq_LnkList_next(list);
    }
    return nullptr;
}

NQ_API void nq_DbFldList_freeValues(DbFldList *list) {
    if (!list) return;
    nq_LnkList_start(list);
    while (!nq_LnkList_eol(list)) {
        if (DbFldNode *node = current(list)) {
            nq_Free(node->value);
            node->value = nullptr;
        }
        nq_LnkList_next(list);
    }
}

NQ_API int nq_DbFldList_parseFldDesc(const nq_wchar *line, nq_wchar *name, nq_wchar *type, int *width,
                                     int *precision) {
    if (!line) return 0;
    std::u16string word(nqt::len(line) + 1, u'\0');
    int pos = 0;
    nq_Str_nextSDLWord(word.data(), line, &pos);
    const nq_wchar *p = line + pos;
    while (*p == u' ' || *p == u'\t') ++p;
    nq_wchar desc[kDescLength + 1];
    std::size_t n = 0;
    for (; n < kDescLength && p[n]; ++n) desc[n] = p[n];
    desc[n] = 0;
    if (word[0] == 0 || n != kDescLength) return 0;

    if (name) {
        nqt::copy_bounded(name, NQ_DBFLD_NAME_SIZE, word.c_str());
        nqt::upr(name);
    }
    if (type) *type = nqt::toupper(desc[0]);
    const nq_wchar widthText[4] = {desc[1], desc[2], desc[3], 0};
    const nq_wchar precisionText[4] = {desc[4], desc[5], desc[6], 0};
    if (width) *width = nqt::toi(widthText);
    if (precision) *precision = nqt::toi(precisionText);
    return 1;
}

NQ_API DbFldList *nq_DbFldList_fromTemplate(const nq_wchar *path) {
    if (!path) return nullptr;
    std::FILE *stream = nqplat::fopen(path, "r");
    if (!stream) return nullptr;
    DbFldList *list = nq_LnkList_create(nullptr);
    if (!list) {
        std::fclose(stream);
        return nullptr;
    }
    nq_wchar line[kTemplateLineMax + 1];
    while (nq_File_readLine(stream, line, kTemplateLineMax)) {
        // Text mode: a carriage return before the line feed is not part of the line.
        const std::size_t length = nqt::len(line);
        if (length > 0 && line[length - 1] == u'\r') line[length - 1] = 0;
        nq_wchar name[NQ_DBFLD_NAME_SIZE];
        nq_wchar type = 0;
        int width = 0, precision = 0;
        if (nq_DbFldList_parseFldDesc(line, name, &type, &width, &precision))
            insert(list, name, nullptr, uint32_t(width), uint32_t(precision), type, true);
    }
    std::fclose(stream);
    if (nq_LnkList_length(list) == 0) {
        nq_DbFldList_destroy(list);
        return nullptr;
    }
    return list;
}

NQ_API nq_wchar *nq_DbFldList_getCurrName(DbFldList *list) {
    DbFldNode *node = current(list);
    nqt::copy_bounded(g_currName.text, kTextMax + 1, node ? node->name : nullptr);
    return g_currName.text;
}

NQ_API nq_wchar *nq_DbFldList_getCurrStr(DbFldList *list) { return copy_current(list, g_currStr); }

NQ_API nq_wchar *nq_DbFldList_getCurrStrPadded(DbFldList *list) {
    return copy_current_padded(list, g_currStrPadded);
}

NQ_API int nq_DbFldList_getCurrInt(DbFldList *list) {
    DbFldNode *node = current(list);
    if (!node || !node->value) return 0;
    nq_wchar text[kTextMax + 1];
    nqt::copy_bounded(text, kTextMax + 1, node->value);
    return nqt::toi(text);
}

NQ_API double nq_DbFldList_getCurrDouble(DbFldList *list) {
    DbFldNode *node = current(list);
    if (!node || !node->value) return 0.0;
    nq_wchar text[kTextMax + 1];
    nqt::copy_bounded(text, kTextMax + 1, node->value);
    return nqt::tof(text);
}

NQ_API uint32_t nq_DbFldList_getCurrWidth(DbFldList *list) {
    DbFldNode *node = current(list);
    return node ? node->width : 0;
}

NQ_API uint32_t nq_DbFldList_getCurrPrec(DbFldList *list) {
    DbFldNode *node = current(list);
    return node ? node->precision : 0;
}

NQ_API nq_wchar nq_DbFldList_getCurrType(DbFldList *list) {
    DbFldNode *node = current(list);
    return node ? node->type : u'C';
}

NQ_API nq_wchar *nq_DbFldList_getFldVal(DbFldList *list, const nq_wchar *name) {
    // Grows to hold any value whole.
    static std::u16string buffer;
    DbFldNode *node = nq_DbFldList_findFld(list, name);
    buffer.assign(node && node->value ? node->value : u"");
    return buffer.data();
}

NQ_API nq_wchar *nq_DbFldList_getNthStr(DbFldList *list, int n) {
    if (!nq_LnkList_getNth(list, n)) {
        g_nthStr.text[0] = 0;
        return g_nthStr.text;
    }
    return copy_current(list, g_nthStr);
}

NQ_API nq_wchar *nq_DbFldList_getNthStrPadded(DbFldList *list, int n) {
    if (!nq_LnkList_getNth(list, n)) {
        g_nthStrPadded.text[0] = 0;
        return g_nthStrPadded.text;
    }
    return copy_current_padded(list, g_nthStrPadded);
}

NQ_API int nq_DbFldList_insEnd(DbFldList *list, const nq_wchar *name, const nq_wchar *value,
                               uint32_t width, uint32_t precision, nq_wchar type) {
    return insert(list, name, value, width, precision, type, true);
}

NQ_API int nq_DbFldList_insStart(DbFldList *list, const nq_wchar *name, const nq_wchar *value,
                                 uint32_t width, uint32_t precision, nq_wchar type) {
    return insert(list, name, value, width, precision, type, false);
}

NQ_API int nq_DbFldList_modCurrVal(DbFldList *list, const nq_wchar *value) {
    DbFldNode *node = current(list);
    if (!node) return 0;
    return set_value(node, value);
}

NQ_API int nq_DbFldList_modFldVal(DbFldList *list, const nq_wchar *name, const nq_wchar *value) {
    DbFldNode *node = nq_DbFldList_findFld(list, name);
    if (!node) return 0;
    return set_value(node, value);
}

NQ_API int nq_DbFldList_modNthVal(DbFldList *list, int n, const nq_wchar *value) {
    if (!nq_LnkList_getNth(list, n)) return 0;
    return nq_DbFldList_modCurrVal(list, value);
}

NQ_API uint32_t nq_DbFldList_modCurrWidth(DbFldList *list, uint32_t width) {
    DbFldNode *node = current(list);
    if (!node) return 0;
    const uint32_t old = node->width;
    node->width = width;
    return old;
}

NQ_API uint32_t nq_DbFldList_modCurrPrec(DbFldList *list, uint32_t precision) {
    DbFldNode *node = current(list);
    if (!node) return 0;
    const uint32_t old = node->precision;
    node->precision = precision;
    return old;
}

NQ_API void nq_DbFldList_printList(DbFldList *list) {
    if (!list) return;
    nq_LnkList_start(list);
    while (!nq_LnkList_eol(list)) {
        if (DbFldNode *node = current(list)) {
            nqt::print(u"%-16s ", node->name);
            // A null value leaves the line open; the next name follows on it.
            if (node->value) nqt::print(u"%c:%s\n", int(node->type), node->value);
        }
        nq_LnkList_next(list);
    }
}

}  // extern "C"
