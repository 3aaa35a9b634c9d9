// The Env family: session variables, the nq.ini layer, the process environment, and the
// expansion of %name% through them.
#include <cstdlib>
#include <string>

#include "config_internal.h"
#include "nq_env.h"
#include "nq_ini.h"
#include "nq_str.h"
#include "nq_strlist.h"
#include "plat_profile.h"
#include "plat_utf.h"
#include "text/nq_text.h"

namespace {

// Entries are read through nq_StrList_getCurr, so each is seen cut to 512 characters.
constexpr int kEntrySize = 513;
constexpr std::size_t kExpandVarSize = 2048;
constexpr std::size_t kExpandStrSize = 4096;
constexpr std::size_t kWinSize = 256;
constexpr std::size_t kNameSize = 513;

StrList *g_session = nullptr;
bool g_session_app = false;
nq_wchar g_ses_value[kEntrySize];
nq_wchar g_expand_var[kExpandVarSize];
nq_wchar g_expand_str[kExpandStrSize];
nq_wchar g_win[kWinSize];

// Walks the session list for the name; the cursor stays on a match. The value of the match
// goes to value (room for an entry) if given.
bool find_session(const nq_wchar *name, nq_wchar *value) {
    if (!g_session || !name) return false;
    nq_wchar entry_name[kEntrySize], entry_value[kEntrySize];
    for (nq_StrList_start(g_session); !nq_StrList_eol(g_session); nq_StrList_next(g_session)) {
        const nq_wchar *entry = nq_StrList_getCurr(g_session);
        nq_Ini_parse(entry, entry_name, entry_value);
        if (nq_Str_cmpi(entry_name, name) == 0) {
            if (value) nqt::copy(value, entry_value);
            return true;
        }
    }
    return false;
}

}  // namespace

extern "C" {

NQ_API nq_wchar *nq_Env_getSesLocal(const nq_wchar *name) {
    if (!find_session(name, g_ses_value)) return nullptr;
    return g_ses_value;
}

NQ_API nq_wchar *nq_Env_getSes(const nq_wchar *name) { return nq_Env_getSesLocal(name); }

NQ_API int nq_Env_setSesLocal(const nq_wchar *name, const nq_wchar *value) {
    if (!name) return 0;
    bool match = false;
    if (g_session) {
        match = find_session(name, nullptr);
    } else {
        g_session = nq_StrList_create(nullptr);
        if (!g_session) return 0;
    }
    if (value && value[0]) {
        const std::u16string entry = nqt::format_string(u"%s = %s", name, value);
        if (match) {
            nq_StrList_modCurr(g_session, entry.c_str());
        } else {
            nq_StrList_insEnd(g_session, entry.c_str());
        }
    } else if (match) {
        nq_StrList_delCurr(g_session);
    }
    return match ? 0 : 1;
}

NQ_API int nq_Env_setSes(const nq_wchar *name, const nq_wchar *value) {
    return nq_Env_setSesLocal(name, value);
}

NQ_API StrList *nq_Env_getSesList(void) { return g_session ? nq_StrList_copy(g_session) : nullptr; }

NQ_API void nq_Env_resetSesLocal(void) {
    if (g_session) nq_StrList_delAll(g_session);
}

NQ_API void nq_Env_resetSes(void) { nq_Env_resetSesLocal(); }

NQ_API void nq_Env_setSesApp(void) { g_session_app = true; }

NQ_API nq_wchar *nq_Env_getIni(const nq_wchar *group, const nq_wchar *variable) {
    return nq_Ini_get(nq::config_ini_name().c_str(), group, variable);
}

NQ_API int nq_Env_setIni(const nq_wchar *group, const nq_wchar *variable, const nq_wchar *value) {
    return nq_Ini_set(nq::config_ini_name().c_str(), group, variable, value);
}

NQ_API FldList *nq_Env_getIniGroup(const nq_wchar *group) {
    return nq_Ini_getGroup(nq::config_ini_name().c_str(), group);
}

NQ_API void nq_Env_displayIniError(const nq_wchar *group, const nq_wchar *variable) {
    nq_Ini_displayError(nq::config_ini_name().c_str(), group, variable);
}

NQ_API nq_wchar *nq_Env_getWin(const nq_wchar *file, const nq_wchar *group, const nq_wchar *variable) {
    g_win[0] = 0;
    if (!file || !group || !variable) return nullptr;
    nqplat::get_profile_string(group, variable, u"", g_win, kWinSize, file);
    return g_win[0] ? g_win : nullptr;
}

NQ_API nq_wchar *nq_Env_expandVar(const nq_wchar *text, int *position) {
    g_expand_var[0] = 0;
    if (!text || !position || *position < 0) return g_expand_var;
    const std::size_t length = nqt::len(text);
    std::size_t at = static_cast<std::size_t>(*position);
    if (at >= length || text[at] != u'%') return g_expand_var;

    const std::size_t start = at + 1;
    std::size_t end = start;
    while (end < length && text[end] != u'%') ++end;
    *position = static_cast<int>(end < length ? end + 1 : end);
    if (end == start) return g_expand_var;

    nq_wchar name[kNameSize];
    nqt::copy_bounded(name, std::min(kNameSize, end - start + 1), text + start);
    if (const nq_wchar *value = nq_Env_getSes(name)) {
        nqt::copy_bounded(g_expand_var, kExpandVarSize, value);
    } else if (const nq_wchar *value = nq_Env_getIni(u"GENERAL", name)) {
        nqt::copy_bounded(g_expand_var, kExpandVarSize, value);
    } else if (const char *env = std::getenv(nqplat::utf16_to_utf8(name).c_str())) {
        const std::u16string wide = nqplat::utf8_to_utf16(env);
        nqt::copy_bounded(g_expand_var, kExpandVarSize, wide.c_str());
    }
    return g_expand_var;
}

NQ_API nq_wchar *nq_Env_expandStr(const nq_wchar *text) {
    std::u16string out;
    const std::size_t length = nqt::len(text);
    int position = 0;
    while (static_cast<std::size_t>(position) < length && out.size() < kExpandStrSize) {
        const nq_wchar c = text[position];
        if (c != u'%') {
            out.push_back(c);
            ++position;
        } else if (text[position + 1] == u'%') {
            out.push_back(u'%');
            position += 2;
        } else {
            out += nq_Env_expandVar(text, &position);
        }
    }
    nqt::copy_bounded(g_expand_str, kExpandStrSize, out.c_str());
    return g_expand_str;
}

NQ_API StrList *nq_Env_split(const nq_wchar *text) {
    if (!text) return nullptr;
    std::u16string copy(text);
    StrList *list = nullptr;
    nq_wchar *state = nullptr;
    for (nq_wchar *part = nqt::tok_r(copy.data(), u";", &state); part;
         part = nqt::tok_r(nullptr, u";", &state)) {
        nq_Str_delBlks(part);
        if (!list) list = nq_StrList_create(nullptr);
        if (list) nq_StrList_insEnd(list, part);
    }
    if (list) nq_StrList_start(list);
    return list;
}

}  // extern "C"
