// The Ini family: configuration files of groups and "name=value" lines, read through the
// in-process cache (ini_cache.cpp) or directly from the file.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "config_internal.h"
#include "ini_cache.h"
#include "nq_file.h"
#include "nq_fldlist.h"
#include "nq_fname.h"
#include "nq_ini.h"
#include "nq_str.h"
#include "nq_strlist.h"
#include "plat_fs.h"
#include "text/nq_text.h"

namespace {

constexpr int kValueSize = 2048;     // the shared static result
constexpr int kLocalSize = 1024;     // a value as the cache hands it on
constexpr int kLineSize = nq::IniFile::kLineLimit + 1;

nq_wchar g_value[kValueSize];
nq_wchar *g_last_value = nullptr;   // the last result handed out
nq_wchar g_suffix[16];

const nq::IniFile::Group *cached_group(const nq_wchar *file, const nq_wchar *group) {
    if (!file || !group) return nullptr;
    const nq::IniFile *f = nq::IniCache::instance().file(file, false);
    return f ? f->group(group) : nullptr;
}

// One value made ready for a caller: cut to the local size, expanded or cut to limit, leading
// blanks removed. Yields false when nothing is left.
bool prepare_value(const std::u16string &value, bool expand, int limit, nq_wchar *out, std::size_t capacity) {
    out[0] = 0;
    if (value.empty()) return false;
    nq_wchar local[kLocalSize];
    nqt::copy_bounded(local, kLocalSize, value.c_str());
    if (expand) {
        nq::alias_expand(out, capacity, local);
    } else {
        const int most = static_cast<int>(capacity) - 1;
        nq_Str_ncpy(out, local, std::clamp(limit, 0, most));
    }
    nq_Str_rlb(out);
    return out[0] != 0;
}

FldList *group_list(const nq_wchar *file, const nq_wchar *group, bool expand, bool keep_empty) {
    const nq::IniFile::Group *g = cached_group(file, group);
    if (!g) return nullptr;
    FldList *list = nq_FldList_create(nullptr);
    if (!list) return nullptr;
    nq_wchar value[kValueSize];
    for (const nq::IniFile::Variable &v : g->variables) {
        if (!prepare_value(v.value, expand, 512, value, kValueSize) && !keep_empty) continue;
        nq_FldList_appChar(list, v.name.c_str(), value);
    }
    nq_FldList_start(list);
    return list;
}

// The variables the fields of a list set, by the rules of nq_Ini_setGroup. Yields 0 when a
// field has no name.
int fields_to_set(const nq_wchar *file, const nq_wchar *group, FldList *list, int existingOnly,
                  std::vector<std::pair<std::u16string, std::u16string>> &writes) {
    int result = 1;
    for (nq_FldList_start(list); !nq_FldList_eol(list); nq_FldList_next(list)) {
        const FldNode *node = nq_FldList_curr(list);
        if (!node || !node->name) {
            result = 0;
            continue;
        }
        if (existingOnly && !nq_Ini_get(file, group, node->name)) continue;
        nq_wchar value[513] = {0};
        const int read = nq_FldList_currChar(list, value, 512);
        if (read == 1 || read == -3) writes.emplace_back(node->name, value);
    }
    return result;
}

int set_group(const nq_wchar *file, const nq_wchar *group, FldList *list, int existingOnly, bool replace) {
    if (!file || !group || !list) return 0;
    if (!nq_File_hasAccess(file, 2)) return 0;
    std::vector<std::pair<std::u16string, std::u16string>> writes;
    int result = fields_to_set(file, group, list, existingOnly, writes);
    if (replace) {
        const nq::IniFile::Group *g = cached_group(file, group);
        if (g) {
            std::vector<std::u16string> names;
            for (const auto &v : g->variables) names.push_back(v.name);
            for (const auto &name : names) {
                if (nq_Ini_set(file, group, name.c_str(), nullptr) != 0) result = 0;
            }
        }
    }
    for (const auto &[name, value] : writes) {
        if (nq_Ini_set(file, group, name.c_str(), value.c_str()) != 0) result = 0;
    }
    return result;
}

// Reads the lines of the group that follows the stream's position, without blanks in front;
// empty lines are dropped, and comments unless keep_comments. Calls take(line) for each.
template <typename Take>
void read_group_lines(std::FILE *stream, bool keep_comments, Take take) {
    nq_wchar line[kLineSize];
    while (nq_File_readLine(stream, line, kLineSize - 1)) {
        nq_Str_rlb(line);
        if (!line[0]) continue;
        if (line[0] == u';' && !keep_comments) continue;
        if (line[0] == u'[') break;
        take(line);
    }
}

// Writes each field as "name=value" (value up to 1024 characters); a field whose value cannot
// be read as text gets no line.
void write_fields(std::FILE *out, FldList *list) {
    if (!list) return;
    for (nq_FldList_start(list); !nq_FldList_eol(list); nq_FldList_next(list)) {
        const FldNode *node = nq_FldList_curr(list);
        if (!node || !node->name) continue;
        nq_wchar value[1025] = {0};
        const int read = nq_FldList_currChar(list, value, 1024);
        if (read == 1 || read == -3) nqt::fprint(out, u"%s=%s\n", node->name, value);
    }
}

bool is_group_line(const nq_wchar *line, const nq_wchar *group) {
    nq_wchar name[kLineSize];
    return nq_Ini_getGroupName(line, name) && (!group || nq_Str_cmpi(name, group) == 0);
}

}  // namespace

extern "C" {

// ---- Through the cache ----

NQ_API nq_wchar *nq_Ini_getValue(const nq_wchar *file, const nq_wchar *group, const nq_wchar *variable,
                                 int expand, int limit) {
    g_value[0] = 0;
    const nq::IniFile::Group *g = cached_group(file, group);
    const nq::IniFile::Variable *v = g && variable ? g->find(variable) : nullptr;
    if (!v || !prepare_value(v->value, expand != 0, limit, g_value, kValueSize)) return nullptr;
    g_last_value = g_value;
    return g_last_value;
}

NQ_API nq_wchar *nq_Ini_get(const nq_wchar *file, const nq_wchar *group, const nq_wchar *variable) {
    return nq_Ini_getValue(file, group, variable, 1, 512);
}

NQ_API nq_wchar *nq_Ini_getAbsolute(const nq_wchar *file, const nq_wchar *group, const nq_wchar *variable) {
    return nq_Ini_getValue(file, group, variable, 0, 512);
}

NQ_API int nq_Ini_getInt(const nq_wchar *file, const nq_wchar *group, const nq_wchar *variable) {
    const nq_wchar *value = nq_Ini_get(file, group, variable);
    return value ? nqt::toi(value) : 0;
}

NQ_API int nq_Ini_set(const nq_wchar *file, const nq_wchar *group, const nq_wchar *variable,
                      const nq_wchar *value) {
    if (!group || !variable) return 1;
    nq::IniFile *f = nq::IniCache::instance().file(file, true);
    return f ? f->set(group, variable, value) : 1;
}

NQ_API int nq_Ini_setAndVerify(const nq_wchar *file, const nq_wchar *group, const nq_wchar *variable,
                               const nq_wchar *value, int *setResult) {
    const int result = nq_Ini_set(file, group, variable, value);
    if (setResult) *setResult = result;
    const nq_wchar *back = nq_Ini_getValue(file, group, variable, 0, 1024);
    return nqt::icmp(back ? back : u"", value ? value : u"") == 0 ? 1 : 0;
}

NQ_API int nq_Ini_setGroup(const nq_wchar *file, const nq_wchar *group, FldList *list, int existingOnly) {
    return set_group(file, group, list, existingOnly, false);
}

NQ_API int nq_Ini_setGroupEx(const nq_wchar *file, const nq_wchar *group, FldList *list, int existingOnly,
                             int replace) {
    return set_group(file, group, list, existingOnly, replace != 0);
}

NQ_API int nq_Ini_updateGroup(const nq_wchar *file, const nq_wchar *group, FldList *list) {
    return set_group(file, group, list, 1, false);
}

NQ_API FldList *nq_Ini_getGroup(const nq_wchar *file, const nq_wchar *group) {
    return group_list(file, group, true, false);
}

NQ_API FldList *nq_Ini_getGroupAbsolute(const nq_wchar *file, const nq_wchar *group) {
    return group_list(file, group, false, false);
}

NQ_API FldList *nq_Ini_getGroupWithNulls(const nq_wchar *file, const nq_wchar *group) {
    return group_list(file, group, true, true);
}

NQ_API FldList *nq_Ini_getGroupValues(const nq_wchar *file, const nq_wchar *group, int expand) {
    return group_list(file, group, expand != 0, false);
}

NQ_API int nq_Ini_addGroup(const nq_wchar *file, const nq_wchar *group) {
    if (!group) return 0;
    nq::IniFile *f = nq::IniCache::instance().file(file, true);
    return f && f->add_group(group) ? 1 : 0;
}

NQ_API int nq_Ini_removeGroup(const nq_wchar *file, const nq_wchar *group) {
    if (!group) return 0;
    nq::IniFile *f = nq::IniCache::instance().file(file, false);
    return f && f->remove_group(group) ? 1 : 0;
}

NQ_API StrList *nq_Ini_findPrefixGroups(const nq_wchar *file, const nq_wchar *prefix) {
    const nq::IniFile *f = file ? nq::IniCache::instance().file(file, false) : nullptr;
    if (!f || f->groups().empty()) return nullptr;
    StrList *list = nq_StrList_create(nullptr);
    if (!list) return nullptr;
    const int length = static_cast<int>(nqt::len(prefix));
    for (const auto &g : f->groups()) {
        if (length == 0 || nq_Str_ncmpi(g->name.c_str(), prefix, length) == 0) {
            nq_StrList_insEnd(list, g->name.c_str());
        }
    }
    nq_StrList_start(list);
    return list;
}

NQ_API StrList *nq_Ini_findAllGroups(const nq_wchar *file) { return nq_Ini_findPrefixGroups(file, u""); }

NQ_API nq_wchar *nq_Ini_getNextIncrSuffix(const nq_wchar *file, const nq_wchar *prefix) {
    nqt::copy(g_suffix, u"0");
    StrList *groups = nq_Ini_findPrefixGroups(file, prefix);
    if (!groups) return g_suffix;
    bool any = false;
    int largest = 0;
    for (const LnkListNode *n = groups->head; n; n = n->next) {
        const auto *entry = static_cast<const StrListNode *>(n->data);
        if (!entry || !entry->string) continue;
        const int number = nqt::toi(nq_Ini_getGroupNameSuffix(entry->string));
        if (!any || number > largest) largest = number;
        any = true;
    }
    nq_StrList_destroy(groups);
    // The runtime's int arithmetic: the largest number plus one wraps around.
    if (any) nqt::format(g_suffix, 16, u"%d", static_cast<int>(static_cast<unsigned>(largest) + 1u));
    return g_suffix;
}

NQ_API int nq_Ini_reload(const nq_wchar *file) { return nq::IniCache::instance().reload(file) ? 1 : 0; }

NQ_API void nq_Ini_resetCache(void) { nq::IniCache::instance().reset(); }

NQ_API void nq_Ini_viewCache(void) {
    nq::IniCache::instance().view(stdout);
    std::fflush(stdout);
}

// ---- Directly on the file ----

NQ_API int nq_Ini_findGroup(FILE *stream, const nq_wchar *group) {
    if (!stream || !group) return 0;
    nq_wchar line[kLineSize];
    while (nq_File_readLine(stream, line, kLineSize - 1)) {
        if (is_group_line(line, group)) return 1;
    }
    return 0;
}

NQ_API StrList *nq_Ini_getGroupLines(const nq_wchar *file, const nq_wchar *group, int keepComments) {
    if (!file || !group) return nullptr;
    std::FILE *stream = nqplat::fopen(file, "r");
    if (!stream) return nullptr;
    StrList *list = nullptr;
    if (nq_Ini_findGroup(stream, group)) {
        read_group_lines(stream, keepComments != 0, [&](const nq_wchar *line) {
            if (!list) list = nq_StrList_create(nullptr);
            if (list) nq_StrList_insEnd(list, line);
        });
    }
    std::fclose(stream);
    if (list) nq_StrList_start(list);
    return list;
}

NQ_API FldList *nq_Ini_getGroupItems(const nq_wchar *file, const nq_wchar *group) {
    if (!file || !group) return nullptr;
    std::FILE *stream = nqplat::fopen(file, "r");
    if (!stream) return nullptr;
    FldList *list = nullptr;
    if (nq_Ini_findGroup(stream, group)) {
        read_group_lines(stream, false, [&](const nq_wchar *line) {
            nq_wchar name[kLineSize], value[kLineSize];
            nq_Ini_parse(line, name, value);
            if (!name[0] || !value[0]) return;
            if (!list) list = nq_FldList_create(nullptr);
            if (list) nq_FldList_appChar(list, name, value);
        });
    }
    std::fclose(stream);
    if (list) nq_FldList_start(list);
    return list;
}

NQ_API int nq_Ini_setGroupItems(const nq_wchar *file, const nq_wchar *group, FldList *list) {
    if (!file || !group) return 0;
    std::u16string folder(nqt::len(file) + 1, u'\0');
    nq_Fname_extractPath(file, folder.data());
    folder.resize(nqt::len(folder.c_str()));
    const std::u16string temporary = folder + u"nq_tmp.ini";

    std::FILE *in = nqplat::fopen(file, "r");
    // A file that is there but cannot be read is not replaced by one group alone.
    if (!in && nq_File_hasAccess(file, 0)) return 0;
    std::FILE *out = nqplat::fopen(temporary.c_str(), "w");
    if (!out) {
        if (in) std::fclose(in);
        return 0;
    }
    bool found = false;
    if (in) {
        nq_wchar line[kLineSize];
        while (nq_File_readLine(in, line, kLineSize - 1)) {
            nqt::fprint(out, u"%s\n", line);
            if (is_group_line(line, group)) {
                found = true;
                break;
            }
        }
        if (found) {
            write_fields(out, list);
            nqt::fprint(out, u"\n");
            // The old lines of the group go; the next group and all after it stay.
            while (nq_File_readLine(in, line, kLineSize - 1)) {
                if (is_group_line(line, nullptr)) {
                    nqt::fprint(out, u"%s\n", line);
                    break;
                }
            }
            while (nq_File_readLine(in, line, kLineSize - 1)) nqt::fprint(out, u"%s\n", line);
        }
        std::fclose(in);
    }
    if (!found) {
        nqt::fprint(out, u"[%s]\n", group);
        write_fields(out, list);
        nqt::fprint(out, u"\n");
    }
    const bool written = std::ferror(out) == 0;
    if (std::fclose(out) != 0 || !written) {
        nqplat::unlink(temporary.c_str());
        return 0;
    }
    return nq_File_move(temporary.c_str(), file) == 0 ? 1 : 0;
}

NQ_API void nq_Ini_parse(const nq_wchar *line, nq_wchar *name, nq_wchar *value) {
    // Spaces and then "=" signs are passed over between name and value, so a value can never
    // begin with "=": "  name = = value" is the name "name" and the value "value".
    if (name) name[0] = 0;
    if (value) value[0] = 0;
    if (!line) return;
    const nq_wchar *p = line;
    while (*p == u' ') ++p;
    const nq_wchar *nameStart = p;
    while (*p && *p != u'=') ++p;
    if (name) {
        std::size_t n = 0;
        for (const nq_wchar *q = nameStart; q < p; ++q) name[n++] = *q;
        name[n] = 0;
        nq_Str_delBlks(name);
    }
    if (!*p) return;  // no "=": a name with an empty value
    while (*p == u' ' || *p == u'=') ++p;
    if (value) {
        nqt::copy(value, p);
        nq_Str_delBlks(value);
    }
}

NQ_API int nq_Ini_getGroupName(const nq_wchar *line, nq_wchar *name) {
    if (name) name[0] = 0;
    if (!line) return 0;
    const nq_wchar *p = line;
    while (*p && nqt::isspace(*p)) ++p;
    if (*p != u'[') return 0;
    ++p;
    if (name) {
        std::size_t n = 0;
        while (p[n] && p[n] != u']') {
            name[n] = p[n];
            ++n;
        }
        name[n] = 0;
        nq_Str_delBlks(name);
    }
    return 1;
}

NQ_API nq_wchar *nq_Ini_getGroupNameSuffix(nq_wchar *groupName) {
    if (!groupName) return nullptr;
    nq_wchar *dot = nqt::chr(groupName, u'.');
    return dot ? dot + 1 : groupName;
}

NQ_API void nq_Ini_displayError(const nq_wchar *file, const nq_wchar *group, const nq_wchar *variable) {
    nqt::print(u"Error reading Ini File\nFile Name %s\nGroup Name %s\nVariable Name %s", file, group,
               variable);
}

}  // extern "C"
