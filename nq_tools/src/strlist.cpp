// The StrList family: a linked list whose data are StrListNode records, each holding its own
// copy of a string. Cursor, order and walking are the linked list's; this adds the strings.
#include "nq_strlist.h"

#include <cstdarg>
#include <string>

#include "diag_trace.h"
#include "nq_lnklist.h"
#include "nq_memory.h"
#include "nq_str.h"
#include "text/nq_text.h"

namespace {

// Reading operations copy at most this many characters into their static buffers.
constexpr int kReadMax = 512;
constexpr std::size_t kReadBufferSize = 514;

// The copy buffer and its pointer: the pointer stays null until the first read, and is
// returned again off the end of the list.
nq_wchar g_currBuffer[kReadBufferSize];
nq_wchar *g_curr = nullptr;
// The last duplicate handed out by nq_StrList_getCurrPtr (owned by the caller).
nq_wchar *g_currDup = nullptr;
nq_wchar g_foundBuffer[kReadBufferSize];

// The list's destructor and comparison take untyped data.
int destroy_datum(void *datum) { return nq_StrListNode_destroy(static_cast<StrListNode *>(datum)); }

int compare_data(void *a, void *b) {
    const nq_wchar *sa = a ? static_cast<StrListNode *>(a)->string : nullptr;
    const nq_wchar *sb = b ? static_cast<StrListNode *>(b)->string : nullptr;
    if (!sa || !sb) return (sa ? 1 : 0) - (sb ? 1 : 0);
    return nqt::cmp(sa, sb);
}

const nq_wchar *node_string(const LnkListNode *node) {
    if (!node || !node->data) return nullptr;
    return static_cast<const StrListNode *>(node->data)->string;
}

// Makes a node and hands it to a linked list insertion; the node is released again when the
// list refuses it.
template <typename Insert>
int insert_with(StrList *list, const nq_wchar *string, Insert insert) {
    StrListNode *node = nq_StrListNode_create(string);
    if (!node) return 0;
    const int result = insert(list, node);
    if (!result) nq_StrListNode_destroy(node);
    return result;
}

// The entry under the cursor, as the reading operations see it (cut to 512 characters).
const nq_wchar *read_current(StrList *list) {
    if (nq_LnkList_eol(list)) return nullptr;
    return nq_StrList_getCurr(list);
}

}  // namespace

extern "C" {

NQ_API StrListNode *nq_StrListNode_create(const nq_wchar *string) {
    NQ_TRACE_FRAME(NQ_DIAG_STRLIST, u"Entering nq_StrListNode_create.",
                   u"Exiting nq_StrListNode_create.");
    if (!string) return nullptr;
    auto *node = static_cast<StrListNode *>(nq_Malloc(sizeof(StrListNode)));
    if (!node) return nullptr;
    node->string = nq_Str_dup(string);
    if (!node->string) {
        nq_Free(node);
        return nullptr;
    }
    return node;
}

NQ_API int nq_StrListNode_destroy(StrListNode *node) {
    // This destructor announces its entry and nothing else.
    NQ_TRACE_FRAME(NQ_DIAG_STRLIST, u"Entering nq_StrListNode_destroy.", nullptr);
    if (!node) return 0;
    nq_Free(node->string);
    nq_Free(node);
    return 1;
}

NQ_API StrList *nq_StrList_create(const nq_wchar *string, ...) {
    StrList *list = nq_LnkList_create(nullptr);
    if (!list) return nullptr;
    va_list args;
    va_start(args, string);
    for (const nq_wchar *s = string; s; s = va_arg(args, const nq_wchar *)) {
        nq_StrList_insEnd(list, s);  // a failed insertion is passed over
    }
    va_end(args);
    nq_LnkList_start(list);
    return list;
}

NQ_API int nq_StrList_destroy(StrList *list) { return nq_LnkList_destroy(list, destroy_datum); }
NQ_API int nq_StrList_delAll(StrList *list) { return nq_LnkList_delAll(list, destroy_datum); }
NQ_API int nq_StrList_delCurr(StrList *list) { return nq_LnkList_delCurr(list, destroy_datum); }
NQ_API int nq_StrList_delNth(StrList *list, int index) {
    return nq_LnkList_delNth(list, index, destroy_datum);
}

NQ_API int nq_StrList_start(StrList *list) { return nq_LnkList_start(list); }
NQ_API int nq_StrList_end(StrList *list) { return nq_LnkList_end(list); }
NQ_API int nq_StrList_next(StrList *list) { return nq_LnkList_next(list); }
NQ_API int nq_StrList_prev(StrList *list) { return nq_LnkList_prev(list); }
NQ_API int nq_StrList_skip(StrList *list, int step) { return nq_LnkList_skip(list, step); }
NQ_API int nq_StrList_eol(StrList *list) { return nq_LnkList_eol(list); }
NQ_API int nq_StrList_length(StrList *list) { return nq_LnkList_length(list); }
NQ_API int nq_StrList_count(StrList *list) { return nq_LnkList_length(list); }

NQ_API int nq_StrList_insStart(StrList *list, const nq_wchar *string) {
    NQ_TRACE_FRAME(NQ_DIAG_STRLIST, u"Entering nq_StrList_insStart.", u"Exiting nq_StrList_insStart.");
    return insert_with(list, string, [](StrList *l, StrListNode *n) { return nq_LnkList_insStart(l, n); });
}

NQ_API int nq_StrList_insEnd(StrList *list, const nq_wchar *string) {
    return insert_with(list, string, [](StrList *l, StrListNode *n) { return nq_LnkList_insEnd(l, n); });
}

NQ_API int nq_StrList_insBefore(StrList *list, const nq_wchar *string) {
    NQ_TRACE_FRAME(NQ_DIAG_STRLIST, u"Entering nq_StrList_insBefore.", u"Exiting nq_StrList_insBefore.");
    return insert_with(list, string, [](StrList *l, StrListNode *n) { return nq_LnkList_insBefore(l, n); });
}

NQ_API int nq_StrList_insAfter(StrList *list, const nq_wchar *string) {
    NQ_TRACE_FRAME(NQ_DIAG_STRLIST, u"Entering nq_StrList_insAfter.", u"Exiting nq_StrList_insAfter.");
    return insert_with(list, string, [](StrList *l, StrListNode *n) { return nq_LnkList_insAfter(l, n); });
}

NQ_API int nq_StrList_insNth(StrList *list, int index, const nq_wchar *string) {
    NQ_TRACE_FRAME(NQ_DIAG_STRLIST, u"Entering nq_StrList_insNth.", u"Exiting nq_StrList_insNth.");
    return insert_with(list, string,
                       [index](StrList *l, StrListNode *n) { return nq_LnkList_insNth(l, index, n); });
}

NQ_API int nq_StrList_insSorted(StrList *list, const nq_wchar *string) {
    NQ_TRACE_FRAME(NQ_DIAG_STRLIST, u"Entering nq_StrList_insSorted.", u"Exiting nq_StrList_insSorted.");
    if (!list || !string) return 0;
    // The walk leaves the cursor on the first greater entry, or off the list.
    list->cursor = list->head;
    while (list->cursor) {
        const nq_wchar *entry = node_string(list->cursor);
        if (entry && nqt::cmp(entry, string) > 0) return nq_StrList_insBefore(list, string);
        list->cursor = list->cursor->next;
    }
    return nq_StrList_insEnd(list, string);
}

NQ_API int nq_StrList_modCurr(StrList *list, const nq_wchar *string) {
    NQ_TRACE_FRAME(NQ_DIAG_STRLIST, u"Entering nq_StrList_modCurr.", u"Exiting nq_StrList_modCurr.");
    StrListNode *node = nq_StrListNode_create(string);
    if (!node) return 0;
    const int result = nq_LnkList_modCurr(list, node, destroy_datum);
    if (!result) nq_StrListNode_destroy(node);  // no cursor: the node is not kept
    return result;
}

NQ_API int nq_StrList_modNth(StrList *list, int index, const nq_wchar *string) {
    NQ_TRACE_FRAME(NQ_DIAG_STRLIST, u"Entering nq_StrList_modNth.", u"Exiting nq_StrList_modNth.");
    if (!nq_StrList_getNth(list, index)) return 0;
    return nq_StrList_modCurr(list, string);
}

NQ_API nq_wchar *nq_StrList_getCurr(StrList *list) {
    const nq_wchar *entry = list ? node_string(list->cursor) : nullptr;
    if (entry) {
        nq_Str_ncpy(g_currBuffer, entry, kReadMax);
        g_curr = g_currBuffer;
    }
    return g_curr;
}

NQ_API nq_wchar *nq_StrList_getCurrPtr(StrList *list) {
    const nq_wchar *entry = list ? node_string(list->cursor) : nullptr;
    if (entry) g_currDup = nq_Str_dup(entry);
    return g_currDup;
}

NQ_API nq_wchar *nq_StrList_getNth(StrList *list, int index) {
    if (!nq_LnkList_getNth(list, index)) return nullptr;
    return nq_StrList_getCurr(list);
}

NQ_API int nq_StrList_search(StrList *list, const nq_wchar *string, int ignoreCase) {
    NQ_TRACE_FRAME(NQ_DIAG_STRLIST, u"Entering nq_StrList_search.", u"Exiting nq_StrList_search.");
    if (!list) return -1;
    int index = 0;
    for (list->cursor = list->head; list->cursor; list->cursor = list->cursor->next, ++index) {
        const nq_wchar *entry = node_string(list->cursor);
        if (!entry || !string) continue;
        if ((ignoreCase ? nq_Str_cmpi(entry, string) : nqt::cmp(entry, string)) == 0) return index;
    }
    return -1;
}

NQ_API nq_wchar *nq_StrList_searchForString(StrList *list, const nq_wchar *part, int ignoreCase) {
    NQ_TRACE_FRAME(NQ_DIAG_STRLIST, u"Entering nq_StrList_searchForString.",
                   u"Exiting nq_StrList_searchForString.");
    if (!list) return nullptr;
    for (list->cursor = list->head; list->cursor; list->cursor = list->cursor->next) {
        const nq_wchar *entry = node_string(list->cursor);
        if (entry && nq_Str_index(entry, part, ignoreCase) >= 0) {
            nq_Str_ncpy(g_foundBuffer, entry, kReadMax);
            return g_foundBuffer;
        }
    }
    return nullptr;
}

NQ_API void nq_StrList_sort(StrList *list) {
    if (!list) return;
    nq_LnkList_qSort(list, compare_data);
}

NQ_API int nq_StrList_concatenate(StrList *list, StrList *second) {
    NQ_TRACE_FRAME(NQ_DIAG_STRLIST, u"Entering nq_StrList_concatenate.",
                   u"Exiting nq_StrList_concatenate.");
    if (!list || !second) return 0;
    // Counted, so that a list concatenated to itself copies its entries once.
    const int count = nq_LnkList_length(second);
    nq_LnkList_start(second);
    for (int k = 0; k < count && !nq_LnkList_eol(second); ++k) {
        nq_StrList_insEnd(list, read_current(second));
        nq_LnkList_next(second);
    }
    second->cursor = nullptr;
    return 1;
}

NQ_API StrList *nq_StrList_copy(StrList *list) {
    NQ_TRACE_FRAME(NQ_DIAG_STRLIST, u"Entering nq_StrList_copy.", u"Exiting nq_StrList_copy.");
    StrList *copy = nq_StrList_create(nullptr);
    if (!copy) return nullptr;
    if (list) {
        for (nq_LnkList_start(list); !nq_LnkList_eol(list); nq_LnkList_next(list)) {
            nq_StrList_insEnd(copy, read_current(list));
        }
    }
    nq_LnkList_start(copy);
    return copy;
}

NQ_API StrList *nq_StrList_removeDuplicates(StrList *list, int ignoreCase) {
    if (!list) return nullptr;
    if (nq_LnkList_length(list) < 2) return list;
    StrList *unique = nq_StrList_create(nullptr);
    if (!unique) return list;  // without a new list the old one is kept whole
    for (nq_LnkList_start(list); !nq_LnkList_eol(list); nq_LnkList_next(list)) {
        const nq_wchar *entry = read_current(list);
        if (nq_StrList_search(unique, entry, ignoreCase) < 0) nq_StrList_insEnd(unique, entry);
    }
    nq_StrList_destroy(list);
    nq_LnkList_start(unique);
    return unique;
}

NQ_API StrList *nq_StrList_fromDelimitedString(const nq_wchar *text, const nq_wchar *delimiters) {
    if (!text || !delimiters) return nullptr;
    std::u16string copy = text;
    StrList *list = nullptr;
    nq_wchar *state = nullptr;
    for (nq_wchar *token = nqt::tok_r(copy.data(), delimiters, &state); token;
         token = nqt::tok_r(nullptr, delimiters, &state)) {
        nq_Str_delBlks(token);  // may leave it empty; the empty entry is kept
        if (!list) {
            list = nq_StrList_create(token, nullptr);
            if (!list) return nullptr;
        } else {
            nq_StrList_insEnd(list, token);
        }
    }
    return list;
}

NQ_API nq_wchar *nq_StrList_toDelimitedString(StrList *list, const nq_wchar *delimiter) {
    const int count = nq_LnkList_length(list);
    if (count == 0) return nullptr;
    const std::size_t delimiterLength = nqt::len(delimiter);
    std::size_t size = delimiterLength * std::size_t(count - 1);
    for (nq_LnkList_start(list); !nq_LnkList_eol(list); nq_LnkList_next(list)) {
        size += nqt::len(read_current(list));
    }
    auto *out = static_cast<nq_wchar *>(nq_Malloc((size + 1) * sizeof(nq_wchar)));
    if (!out) return nullptr;
    std::size_t at = 0;
    bool first = true;
    for (nq_LnkList_start(list); !nq_LnkList_eol(list); nq_LnkList_next(list)) {
        if (!first && delimiter) {
            for (std::size_t k = 0; k < delimiterLength; ++k) out[at++] = delimiter[k];
        }
        first = false;
        const nq_wchar *entry = read_current(list);
        for (std::size_t k = 0; entry && entry[k] != 0; ++k) out[at++] = entry[k];
    }
    out[at] = 0;
    return out;
}

NQ_API StrList *nq_StrList_toDelimitedStringList(StrList *list, const nq_wchar *delimiter,
                                                 int groupSize, int quote) {
    if (nq_LnkList_length(list) == 0) return nullptr;
    // An entry is held in 260 characters, a quoted one in 258; both keep their terminator and
    // a quoted entry its closing quote.
    constexpr std::size_t kEntrySize = 260;
    constexpr std::size_t kQuotedSize = 258;
    StrList *out = nq_StrList_create(nullptr);
    if (!out) return nullptr;
    StrList *group = nullptr;
    auto flush = [&]() {
        if (!group) return;
        nq_wchar *joined = nq_StrList_toDelimitedString(group, delimiter);
        if (joined) nq_StrList_insEnd(out, joined);
        nq_Free(joined);
        nq_StrList_destroy(group);
        group = nullptr;
    };
    for (nq_LnkList_start(list); !nq_LnkList_eol(list);) {
        nq_wchar entry[kEntrySize];
        nq_wchar quoted[kQuotedSize];
        const nq_wchar *current = read_current(list);
        nq_Str_ncpy(entry, current, int(quote ? kQuotedSize - 3 : kEntrySize - 1));
        const nq_wchar *item = entry;
        if (quote) {
            nqt::format(quoted, kQuotedSize, u"'%s'", entry);
            item = quoted;
        }
        if (!group) group = nq_StrList_create(nullptr);
        nq_StrList_insEnd(group, item);
        // Walking on before the test tells whether the input is used up.
        nq_LnkList_next(list);
        if (nq_LnkList_length(group) == groupSize || nq_LnkList_eol(list)) flush();
    }
    flush();
    nq_LnkList_start(out);
    return out;
}

}  // extern "C"
