// The Dir and Drive families, and the removal of folder trees by age.
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

constexpr std::size_t kFolderBufferSize = 512;
// A search pattern and each name below the folder must fit a Windows path buffer.
constexpr std::size_t kMaxPath = 260;

nq_wchar g_current[kFolderBufferSize];
nq_wchar g_parent[kFolderBufferSize];

bool empty_name(const nq_wchar *name) { return !name || name[0] == 0; }

// The strings of a list, whole (reading through the list would cut them at 512).
std::vector<std::u16string> entries_of(StrList *list) {
    std::vector<std::u16string> out;
    for (LnkListNode *node = list ? list->head : nullptr; node; node = node->next) {
        const auto *entry = static_cast<const StrListNode *>(node->data);
        if (entry && entry->string) out.emplace_back(entry->string);
    }
    return out;
}

bool is_dot_name(const std::u16string &path) {
    const std::size_t cut = path.find_last_of(u"\\:");
    const std::u16string last = cut == std::u16string::npos ? path : path.substr(cut + 1);
    return last == u"." || last == u"..";
}

}  // namespace

extern "C" {

NQ_API nq_wchar *nq_Dir_current(void) {
    std::u16string folder;
    if (!nqplat::current_folder(folder) || folder.size() >= kFolderBufferSize) return nullptr;
    nqt::copy_bounded(g_current, kFolderBufferSize, folder.c_str());
    return g_current;
}

NQ_API int nq_Dir_change(const nq_wchar *path) {
    if (empty_name(path)) return -1;
    std::u16string folder = nq::file::lower(path);
    // A trailing backslash goes unless it is a root ("c:\", "\").
    if (folder.size() > 1 && folder.back() == u'\\' && folder[folder.size() - 2] != u':') {
        folder.pop_back();
    }
    if (folder.size() >= 2 && folder[1] == u':') {
        const int previous = nqplat::current_drive();
        int result = nqplat::change_drive(nq_Drive_num(folder[0]));
        if (result == 0 && folder.size() > 2) {
            result = nqplat::chdir(folder.c_str());
            if (result != 0) nqplat::change_drive(previous);
        }
        return result;
    }
    return nqplat::chdir(folder.c_str());
}

NQ_API int nq_Dir_create(const nq_wchar *path) {
    if (empty_name(path)) return -1;
    std::vector<nq_wchar> folder(nqt::len(path) + 2, 0);
    nqt::copy(folder.data(), nq::file::lower(path).c_str());
    nq_Fname_fixDir(folder.data());
    nq_File_revalidate(folder.data());
    const std::u16string whole = folder.data();
    int result = -1;  // stays when every folder was there
    for (std::size_t k = 1; k < whole.size(); ++k) {
        if (whole[k] != u'\\') continue;
        const std::u16string prefix = whole.substr(0, k);
        if (nqplat::access(prefix.c_str(), 0) != 0) result = nqplat::mkdir(prefix.c_str());
    }
    return result;
}

NQ_API int nq_Dir_delete(const nq_wchar *path) {
    if (empty_name(path)) return -1;
    std::u16string folder = nq::file::lower(path);
    nq_File_revalidate(folder.c_str());
    if (folder.back() == u'\\') folder.pop_back();
    return nqplat::rmdir(folder.c_str());
}

NQ_API int nq_Dir_deleteTree(const nq_wchar *path) {
    if (empty_name(path)) return -1;
    std::vector<nq_wchar> pattern(nqt::len(path) + 4, 0);
    nq_Fname_build(pattern.data(), nullptr, path, u"*", nullptr);
    nq_File_delete(pattern.data(), 0);
    StrList *left = nq_Dir_list(pattern.data());
    const std::vector<std::u16string> entries = entries_of(left);
    nq_StrList_destroy(left);
    for (const std::u16string &entry : entries) {
        if (!is_dot_name(entry)) nq_Dir_deleteTree(entry.c_str());
    }
    return nq_Dir_delete(path);
}

NQ_API nq_wchar *nq_Dir_getParent(const nq_wchar *name) {
    if (empty_name(name)) return nullptr;
    std::u16string full = nq_Fname_fullPath(name);
    if (!full.empty() && full.back() == u'\\') full.pop_back();
    const std::size_t cut = full.find_last_of(u'\\');
    if (cut == std::u16string::npos) return nullptr;  // a root, or a bare name
    nqt::copy_bounded(g_parent, kFolderBufferSize, full.substr(0, cut + 1).c_str());
    return g_parent;
}

NQ_API int nq_Drive_get(void) { return nqplat::current_drive(); }

NQ_API int nq_Drive_num(nq_wchar letter) { return int(nqt::toupper(letter)) - 64; }

NQ_API int nq_Drive_set(int number) {
    if (number < 1) return -1;
    nqplat::change_drive(number);  // there is one drive; nothing changes
    return 0;
}

NQ_API int nq_File_DeleteFolder(const nq_wchar *path, int removeFolder, int64_t minimumAge,
                                int64_t currentTime) {
    if (empty_name(path)) return 0;
    const std::u16string folder = path;
    if (folder == u"\\" || folder == u":\\") return 0;

    const uint32_t attributes = nqplat::file_attributes(path);
    if (attributes == nqplat::kInvalidAttributes) return 1;  // nothing to delete
    if (!(attributes & nqplat::kAttrDirectory)) return 0;

    uint32_t error = 0;
    if (removeFolder) {
        if (nqplat::remove_directory(path, &error)) return 1;
        if (error != nqplat::kErrorDirNotEmpty) return 0;
    }

    if (folder.size() + 4 + 1 > kMaxPath) return 0;
    const std::u16string pattern = folder + (folder.back() == u'\\' ? u"*.*" : u"\\*.*");
    const std::vector<nqplat::FindEntry> entries = nqplat::find_entries(pattern.c_str());
    if (entries.empty()) return 0;

    if (currentTime == 0) currentTime = nqplat::system_time_as_file_time();
    int result = 1;
    for (const nqplat::FindEntry &entry : entries) {
        // Every name with a leading dot stays, and with it the folder that holds it.
        if (entry.name.empty() || entry.name[0] == u'.') continue;
        const std::u16string joined = nqt::format_string(u"%s\\%s", path, entry.name.c_str());
        if (joined.size() >= kMaxPath + 1) continue;
        if (entry.attributes & nqplat::kAttrDirectory) {
            if (entry.attributes & nqplat::kAttrReadOnly) {
                nqplat::set_file_attributes(joined.c_str(),
                                            entry.attributes & ~nqplat::kAttrReadOnly);
            }
            // Young folders stay.
            if (currentTime - entry.creation_time >= minimumAge) {
                result &= nq_File_DeleteFolder(joined.c_str(), 1, minimumAge, currentTime);
            }
        } else {
            if (entry.attributes & (nqplat::kAttrReadOnly | nqplat::kAttrSystem)) {
                nqplat::set_file_attributes(joined.c_str(), nqplat::kAttrNormal);
            }
            result &= nqplat::delete_file(joined.c_str(), &error) ? 1 : 0;
        }
    }
    if (removeFolder && result) return nqplat::remove_directory(path, &error) ? 1 : 0;
    return result;
}

}  // extern "C"
