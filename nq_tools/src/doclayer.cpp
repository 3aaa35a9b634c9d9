// The document-management layer as the File and Dir families see it. No outside layer
// runs on this system, so this in-process stand-in answers from the disk itself.
#include <sys/stat.h>

#include "nq_file.h"
#include "plat_fs.h"

namespace {

// 1 when the name is there and is (or is not) a folder.
int exists_as(const nq_wchar *name, bool folder) {
    if (!name || name[0] == 0) return 0;
    const std::string path = nqplat::fs_path(name);
    struct stat st;
    if (path.empty() || ::stat(path.c_str(), &st) != 0) return 0;
    return S_ISDIR(st.st_mode) == folder ? 1 : 0;
}

}  // namespace

extern "C" {

// Nothing keeps a view of the disk here, so there is nothing to bring up to date.
NQ_API void nq_File_revalidate(const nq_wchar *) {}

NQ_API int nq_File_exists(const nq_wchar *name) { return exists_as(name, false); }

NQ_API int nq_Dir_exists(const nq_wchar *name) { return exists_as(name, true); }

}  // extern "C"
