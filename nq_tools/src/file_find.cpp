// The File family: searching folders, listing them and removing files by pattern or list.
#include <cstdio>
#include <string>
#include <vector>

#include "file_internal.h"
#include "nq_file.h"
#include "nq_fname.h"
#include "nq_strlist.h"
#include "plat_find.h"
#include "plat_fs.h"
#include "text/nq_text.h"

namespace {

// A found name goes into the caller's buffer as into a find record's name field.
constexpr std::size_t kFoundNameSize = 260;
constexpr int kListLineLimit = 512;

// The one search of the process: what the pattern matched and the next one to give.
struct Search {
    bool open = false;
    std::vector<nqplat::FindEntry> entries;
    std::size_t next = 0;
};
Search g_search;

void give(nq_wchar *name, const std::u16string &found) {
    nqt::copy_bounded(name, kFoundNameSize, found.c_str());
}

// The folder part of a pattern, through its last backslash or colon.
std::u16string folder_part(const nq_wchar *pattern) {
    std::vector<nq_wchar> folder(nqt::len(pattern) + 1, 0);
    nq_Fname_extractPath(pattern, folder.data());
    return folder.data();
}

}  // namespace

extern "C" {

NQ_API int nq_File_findFirst(const nq_wchar *pattern, nq_wchar *name) {
    // A new search replaces one left open.
    g_search = Search();
    if (!pattern || !name) return -1;
    g_search.entries = nqplat::find_entries(pattern);
    if (g_search.entries.empty()) return -1;
    g_search.open = true;
    give(name, g_search.entries[0].name);
    g_search.next = 1;
    return 0;
}

NQ_API int nq_File_findNext(nq_wchar *name) {
    if (!g_search.open || !name) return -1;
    if (g_search.next >= g_search.entries.size()) {
        g_search = Search();  // the end closes the search
        return -1;
    }
    give(name, g_search.entries[g_search.next++].name);
    return 0;
}

NQ_API StrList *nq_Dir_list(const nq_wchar *pattern) {
    if (!pattern) return nullptr;
    const std::u16string folder = folder_part(pattern);
    nq_wchar found[kFoundNameSize];
    if (nq_File_findFirst(pattern, found) != 0) return nullptr;
    StrList *list = nq_StrList_create(nullptr);
    do {
        const std::u16string entry = folder + found;
        nq_StrList_insEnd(list, nq::file::lower(entry.c_str()).c_str());
    } while (nq_File_findNext(found) == 0);
    nq_StrList_start(list);
    return list;
}

NQ_API int nq_File_delete(const nq_wchar *name, int isList) {
    if (!name || name[0] == 0) return 0;
    int removed = 0;
    if (!isList) {
        const std::u16string folder = folder_part(name);
        nq_wchar found[kFoundNameSize];
        for (int r = nq_File_findFirst(name, found); r == 0; r = nq_File_findNext(found)) {
            const std::u16string path = nqt::format_string(u"%s%s", folder.c_str(), found);
            removed += nq_File_deleteSingle(path.c_str());
        }
        return removed;
    }
    std::FILE *list = nqplat::fopen(name, "r");
    if (!list) return 0;
    nq_wchar line[kListLineLimit + 1];
    while (nq_File_readLine(list, line, kListLineLimit)) removed += nq_File_deleteSingle(line);
    nq::file::forget_ahead(list);
    std::fclose(list);
    return removed;
}

}  // extern "C"
