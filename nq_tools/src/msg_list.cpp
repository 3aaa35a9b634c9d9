// The Msg family, second half: keyword lists and message lists.
#include <algorithm>
#include <clocale>
#include <cstdarg>
#include <cstdint>
#include <string>

#include "diag_trace.h"
#include "msg_internal.h"
#include "nq_env.h"
#include "nq_lnklist.h"
#include "nq_memory.h"
#include "nq_msg.h"
#include "nq_str.h"
#include "nq_strlist.h"
#include "text/nq_text.h"

namespace {

constexpr uint32_t kTraceBit = 1024;
using nq::msg::kWorkSize;

#define MSG_FRAME(name) NQ_TRACE_FRAME(kTraceBit, nullptr, u"Leaving " name u".")

// The keyword list's two reports, formatted into the diagnostics buffer; they show from level
// 2 on, where the trace frame needs 3.
void report(int line, const nq_wchar *format, ...) {
    if (nq_Diag_getLevel() < 2 || (nq_Diag_getCondition() & kTraceBit) == 0) return;
    nq_wchar *buffer = nq_Diag_getDiagMsgBuf();
    va_list args;
    va_start(args, format);
    const int count = nqt::vformat(buffer, NQ_DIAG_MSGBUF_SIZE, format, args);
    va_end(args);
    nq_Diag_putOutput(count, buffer, NQ_TRACE_FILE, line);
}

std::u16string locale_name(const char *name) { return nqt::from_utf8(name ? name : ""); }

// "LANG_LOCALE" of the configuration, when there is one, becomes the process's locale.
void apply_language_locale() {
    const nq_wchar *wanted = nq_Env_getIni(u"GENERAL", u"LANG_LOCALE");
    if (!wanted) return;
    const std::u16string original = locale_name(std::setlocale(LC_ALL, nullptr));
    std::setlocale(LC_ALL, nqt::to_utf8(wanted).c_str());
    // A name the system does not know leaves the locale as it was, and says so.
    const std::u16string current = locale_name(std::setlocale(LC_ALL, nullptr));
    report(__LINE__, u"Current locale set to %s original locale %s", current.c_str(), original.c_str());
}

// The separator that a language puts between the keywords of a list. The message tables can
// name another, but no such table is consulted here, so it is always ",".
const nq_wchar *language_separator() {
    const nq_wchar *language = nq_Env_getIni(u"GENERAL", u"LANGUAGE");
    if (language && language[0]) apply_language_locale();
    return u",";
}

const nq_wchar *entry(const LnkListNode *node) {
    const auto *item = node ? static_cast<const StrListNode *>(node->data) : nullptr;
    return item ? item->string : nullptr;
}

int destroy_pair(void *datum) { return nq_MsgKeyWordListNode_destroy(static_cast<MsgKeyWordListNode *>(datum)); }

int destroy_message(void *datum) {
    auto *node = static_cast<MsgNode *>(datum);
    if (node) {
        nq_Free(node->text);
        nq_Free(node);
    }
    return 1;
}

// Copies at most 16 characters into a key or context field.
void copy_name(nq_wchar (&field)[NQ_MSG_NAME_SIZE], const nq_wchar *name) {
    nqt::copy_bounded(field, NQ_MSG_NAME_SIZE - 1, name ? name : u"");
    field[NQ_MSG_NAME_SIZE - 1] = 0;
}

// Appends a new message; one that cannot be appended is not kept.
void append_message(MsgList *list, const nq_wchar *key, const nq_wchar *text, const nq_wchar *context,
                    int format) {
    MsgNode *node = nq_MsgNode_create(key, text, context, format, 0);
    if (node && !nq_LnkList_insEnd(list, node)) destroy_message(node);
}

}  // namespace

extern "C" {

NQ_API MsgKeyWordListNode *nq_MsgKeyWordListNode_create(const nq_wchar *keyWord, const nq_wchar *translation) {
    MSG_FRAME("nq_MsgKeyWordListNode_create");
    auto *node = static_cast<MsgKeyWordListNode *>(nq_Malloc(sizeof(MsgKeyWordListNode)));
    if (!node) return nullptr;
    node->keyWord = nq_Str_dup(keyWord);
    node->translation = nq_Str_dup(translation);
    if ((keyWord && !node->keyWord) || (translation && !node->translation)) {
        nq_MsgKeyWordListNode_destroy(node);
        return nullptr;
    }
    return node;
}

NQ_API int nq_MsgKeyWordListNode_destroy(MsgKeyWordListNode *node) {
    MSG_FRAME("nq_MsgKeyWordListNode_destroy");
    if (!node) return 0;
    nq_Free(node->keyWord);
    nq_Free(node->translation);
    nq_Free(node);
    return 1;
}

NQ_API MsgKeyWordList *nq_MsgKeyWordList_create(void) {
    MSG_FRAME("nq_MsgKeyWordList_create");
    return nq_LnkList_create(nullptr);
}

NQ_API int nq_MsgKeyWordList_append(MsgKeyWordList *list, const nq_wchar *keyWord, const nq_wchar *translation) {
    MSG_FRAME("nq_MsgKeyWordList_append");
    if (!list || !keyWord || !translation) return 0;
    MsgKeyWordListNode *node = nq_MsgKeyWordListNode_create(keyWord, translation);
    if (node && !nq_LnkList_insEnd(list, node)) nq_MsgKeyWordListNode_destroy(node);
    return 0;
}

NQ_API nq_wchar *nq_MsgKeyWordList_find(MsgKeyWordList *list, const nq_wchar *keyWord) {
    MSG_FRAME("nq_MsgKeyWordList_find");
    static nq_wchar found[kWorkSize];
    nqt::copy_bounded(found, kWorkSize, keyWord ? keyWord : u"");
    if (!keyWord) return found;
    for (const LnkListNode *n = list ? list->head : nullptr; n; n = n->next) {
        const auto *pair = static_cast<const MsgKeyWordListNode *>(n->data);
        if (pair && pair->keyWord && pair->translation && nqt::icmp(pair->keyWord, keyWord) == 0) {
            nqt::copy_bounded(found, kWorkSize, pair->translation);
            break;
        }
    }
    return found;
}

NQ_API int nq_MsgKeyWordList_destroy(MsgKeyWordList *list) {
    MSG_FRAME("nq_MsgKeyWordList_destroy");
    if (!list) return 0;
    nq_LnkList_destroy(list, destroy_pair);
    return 1;
}

NQ_API MsgKeyWordList *nq_Msg_getKeyWordList(const nq_wchar *keyWords, const nq_wchar *context) {
    MSG_FRAME("nq_Msg_getKeyWordList");
    if (!keyWords) return nullptr;
    const std::u16string translated = nq_Msg_translate(keyWords, context, 1);
    StrList *english = nq_StrList_fromDelimitedString(keyWords, u",");
    if (!english) return nullptr;

    const nq_wchar *separator = language_separator();
    StrList *foreign = nq_StrList_fromDelimitedString(translated.c_str(), separator);
    // A translation without a separator has lost its list shape when the English had one.
    if (nq_Str_index(translated.c_str(), separator, 0) < 0 && nq_StrList_length(english) > 1) {
        nq_StrList_destroy(foreign);
        nq_StrList_destroy(english);
        return nq_MsgKeyWordList_create();
    }

    MsgKeyWordList *pairs = nullptr;
    const LnkListNode *f = foreign ? foreign->head : nullptr;
    for (const LnkListNode *e = english->head; e; e = e->next, f = f ? f->next : nullptr) {
        const nq_wchar *keyWord = entry(e);
        const nq_wchar *translation = entry(f);
        if (!keyWord || !translation) continue;
        if (!pairs) pairs = nq_MsgKeyWordList_create();
        if (pairs) nq_MsgKeyWordList_append(pairs, keyWord, translation);
    }
    nq_StrList_destroy(foreign);
    nq_StrList_destroy(english);
    report(__LINE__, u"Leaving with key word string count is %d", nq_LnkList_length(pairs));
    return pairs;
}

NQ_API MsgNode *nq_MsgNode_create(const nq_wchar *key, const nq_wchar *text, const nq_wchar *context, int format,
                                  int padWidth) {
    MSG_FRAME("nq_MsgNode_create");
    auto *node = static_cast<MsgNode *>(nq_Malloc(sizeof(MsgNode)));
    if (!node) return nullptr;
    copy_name(node->key, key);
    copy_name(node->context, context);
    node->format = format;
    node->padWidth = padWidth;
    node->text = nq_Str_dup(text);
    if (text && !node->text) {
        nq_Free(node);
        return nullptr;
    }
    return node;
}

NQ_API int nq_MsgList_destroy(MsgList *list) {
    MSG_FRAME("nq_MsgList_destroy");
    if (!list) return 0;
    nq_LnkList_destroy(list, destroy_message);
    return 1;
}

NQ_API int nq_Msg_multiple(MsgList *list) {
    MSG_FRAME("nq_Msg_multiple");
    for (const LnkListNode *n = list ? list->head : nullptr; n; n = n->next) {
        auto *node = static_cast<MsgNode *>(n->data);
        if (!node || !node->text || !node->text[0] || !node->context[0]) continue;
        nq_wchar local[kWorkSize];
        nqt::copy_bounded(local, kWorkSize, nq_Msg_translate(node->text, node->context, node->format));
        // A translation that begins with "^" asks for the message to stay as it was.
        if (local[0] == u'^') continue;
        if (node->padWidth > 0) nq_Str_pad(local, std::min<int>(node->padWidth, kWorkSize - 1));
        // Without memory for the new text, the old one stays.
        if (nq_wchar *copy = nq_Str_dup(local)) {
            nq_Free(node->text);
            node->text = copy;
        }
    }
    return 1;
}

NQ_API MsgList *nq_Msg_mlt(const nq_wchar *key, ...) {
    MSG_FRAME("nq_Msg_mlt");
    MsgList *list = nq_LnkList_create(nullptr);
    if (!list) return nullptr;
    va_list args;
    va_start(args, key);
    int format = 0;
    while (key) {
        const nq_wchar *text = va_arg(args, const nq_wchar *);
        if (!text) break;
        const nq_wchar *context = va_arg(args, const nq_wchar *);
        // A null context ends its group: no format follows, and the last one stays.
        if (context) format = va_arg(args, int);
        append_message(list, key, text, context, format);
        // After a format of 0 the next group reuses this key and begins with its text.
        if (format != 0) key = va_arg(args, const nq_wchar *);
    }
    va_end(args);
    nq_Msg_multiple(list);
    return list;
}

NQ_API MsgList *nq_Msg_mltReadArray(const MsgRecord *records) {
    MSG_FRAME("nq_Msg_mltReadArray");
    MsgList *list = nq_LnkList_create(nullptr);
    if (!list) return nullptr;
    int format = 0;
    for (const MsgRecord *r = records; r && r->key && r->key[0] && r->text; ++r) {
        if (r->context) format = r->format;
        append_message(list, r->key, r->text, r->context, format);
    }
    nq_Msg_multiple(list);
    return list;
}

NQ_API nq_wchar *nq_Msg_find(MsgList *list, const nq_wchar *key) {
    MSG_FRAME("nq_Msg_find");
    static nq_wchar found[kWorkSize];
    nqt::copy_bounded(found, kWorkSize, key ? key : u"");
    if (!key) return found;
    for (const LnkListNode *n = list ? list->head : nullptr; n; n = n->next) {
        const auto *node = static_cast<const MsgNode *>(n->data);
        if (node && node->text && nqt::cmp(node->key, key) == 0) {
            nqt::copy_bounded(found, kWorkSize, node->text);
            break;
        }
    }
    return found;
}

}  // extern "C"
