// The Alias family: a process-wide table of names and values, and the single expansion of
// %name% by it that the INI values go through.
#include <cstdint>
#include <limits>

#include "config_internal.h"
#include "nq_env.h"
#include "nq_fldlist.h"
#include "text/nq_text.h"

namespace {

FldList *g_aliases = nullptr;

// Longer names cannot be aliases: the field list compares at most this many characters.
constexpr std::size_t kAliasNameMax = 255;
constexpr int kAliasValueLimit = 256;

class Output {
public:
    Output(nq_wchar *out, std::size_t capacity) : out_(out), capacity_(capacity) {}
    void put(const nq_wchar *text, std::size_t count) {
        for (std::size_t i = 0; i < count && length_ + 1 < capacity_; ++i) out_[length_++] = text[i];
        out_[length_] = 0;
    }
    void put(const nq_wchar *text) { put(text, nqt::len(text)); }
    std::size_t length() const { return length_; }

private:
    nq_wchar *out_;
    std::size_t capacity_;
    std::size_t length_ = 0;
};

}  // namespace

namespace nq {

std::size_t alias_expand(nq_wchar *out, std::size_t capacity, const nq_wchar *text) {
    if (!out || capacity == 0) return 0;
    out[0] = 0;
    if (!text) return 0;
    Output output(out, capacity);
    const nq_wchar *p = text;
    for (;;) {
        const nq_wchar *open = nqt::chr(p, u'%');
        if (!open) {
            output.put(p);
            break;
        }
        output.put(p, static_cast<std::size_t>(open - p));
        const nq_wchar *close = nqt::chr(open + 1, u'%');
        if (!close) break;  // no closing sign: the name is dropped and the scan ends
        const std::size_t length = static_cast<std::size_t>(close - open - 1);
        nq_wchar value[kAliasValueLimit + 1];
        bool found = false;
        if (length > 0 && length <= kAliasNameMax) {
            nq_wchar name[kAliasNameMax + 1];
            nqt::copy_bounded(name, length + 1, open + 1);
            found = nq_Alias_get(value, name, kAliasValueLimit) == 1;
        }
        if (found) {
            output.put(value);
        } else {
            output.put(open, length + 2);  // the name back with both of its signs
        }
        p = close + 1;
    }
    return output.length();
}

}  // namespace nq

extern "C" {

NQ_API int nq_Alias_put(const nq_wchar *name, const nq_wchar *value) {
    if (!name) return 0;
    if (!value) return g_aliases ? nq_FldList_delFld(g_aliases, name) : 0;
    if (!g_aliases) g_aliases = nq_FldList_create(nullptr);
    if (!g_aliases) return -4;
    return nq_FldList_modChar(g_aliases, name, value);
}

NQ_API int nq_Alias_del(const nq_wchar *name) { return nq_Alias_put(name, nullptr); }

NQ_API int nq_Alias_get(nq_wchar *output, const nq_wchar *name, int limit) {
    if (output) output[0] = 0;
    return nq_FldList_getChar(g_aliases, name, output, limit);
}

NQ_API int nq_Alias_putFromFldList(FldList *list) {
    if (!list) return 0;
    for (nq_FldList_start(list); !nq_FldList_eol(list); nq_FldList_next(list)) {
        const FldNode *node = nq_FldList_curr(list);
        if (!node || !node->name) continue;
        nq_wchar value[513] = {0};
        nq_FldList_currChar(list, value, 512);
        nq_Alias_put(node->name, value);
    }
    return 1;
}

NQ_API int nq_Alias_expandStr(nq_wchar *output, const nq_wchar *text) {
    if (!output || !text) return 0;
    // The caller gives room, as for every unbounded copy of the Str family.
    nq::alias_expand(output, std::numeric_limits<std::size_t>::max(), text);
    return 0;
}

}  // extern "C"
