// The File family: access, attributes and times; creating, moving and removing single
// files; names with the file system's help.
#include "nq_file.h"

#include <sys/stat.h>

#include <cstdio>
#include <string>

#include "plat_fs.h"
#include "text/nq_text.h"

namespace {

constexpr std::size_t kRelativeBufferSize = 513;  // 512 characters and the terminator
constexpr std::size_t kUncBufferSize = 512;

nq_wchar g_relative[kRelativeBufferSize];
nq_wchar g_unc[kUncBufferSize];

bool empty_name(const nq_wchar *name) { return !name || name[0] == 0; }

}  // namespace

extern "C" {

NQ_API int nq_File_hasAccess(const nq_wchar *name, int mode) {
    if (empty_name(name)) return 0;
    if (mode != 0 && mode != 2 && mode != 4 && mode != 6) return 0;
    return nqplat::access(name, mode) >= 0 ? 1 : 0;
}

NQ_API int nq_File_isWriteEnabled(const nq_wchar *name) { return nq_File_hasAccess(name, 2); }

NQ_API int nq_File_setReadOnlyAccess(const nq_wchar *name) {
    if (empty_name(name)) return 0;
    nq_File_revalidate(name);
    return nqplat::chmod(name, 4) == 0 ? 1 : 0;  // no write bit: read-only
}

NQ_API int nq_File_setReadWriteAccess(const nq_wchar *name) {
    if (empty_name(name)) return 0;
    nq_File_revalidate(name);
    return nqplat::chmod(name, 128) == 0 ? 1 : 0;  // the write bit: read-write
}

NQ_API int nq_File_getTime(const nq_wchar *name, int32_t *time) {
    int64_t seconds = 0;
    if (empty_name(name) || !nqplat::modification_time(name, &seconds)) return 1;
    // Times are kept as 32-bit seconds.
    if (time) *time = int32_t(seconds);
    return 0;
}

NQ_API int nq_File_setTime(const nq_wchar *name, int64_t time) {
    if (empty_name(name)) return -1;
    nq_File_revalidate(name);
    return nqplat::set_times(name, time);
}

NQ_API int nq_File_cmpTime(const nq_wchar *a, const nq_wchar *b) {
    int32_t ta = 0, tb = 0;
    if (nq_File_getTime(a, &ta) != 0) return -1;
    if (nq_File_getTime(b, &tb) != 0) return 1;
    return ta < tb ? -1 : ta > tb ? 1 : 0;
}

NQ_API long nq_File_length(FILE *stream) {
    if (!stream) return -1;
    struct stat st;
    if (::fstat(::fileno(stream), &st) != 0) return -1;
    return long(st.st_size);
}

NQ_API int nq_File_create(const nq_wchar *name) {
    if (empty_name(name)) return 0;
    if (nq_File_exists(name)) return 1;
    std::FILE *stream = nqplat::fopen(name, "w");
    if (!stream) return 0;
    return std::fclose(stream) == 0 ? 1 : 0;
}

NQ_API int nq_File_move(const nq_wchar *source, const nq_wchar *dest) {
    if (empty_name(source) || empty_name(dest)) return -1;
    // The destination goes first, whether or not the rename will work; but not when it is
    // the source itself under another spelling, which is a rename of its case.
    if (!nqplat::same_file(source, dest)) nqplat::unlink(dest);
    const int result = nqplat::rename(source, dest);
    nq_File_revalidate(source);
    nq_File_revalidate(dest);
    return result;
}

NQ_API int nq_File_deleteSingle(const nq_wchar *name) {
    if (empty_name(name)) return 0;
    nq_File_revalidate(name);
    return nqplat::unlink(name) == 0 ? 1 : 0;
}

NQ_API nq_wchar *nq_File_getRelativeFilename(const nq_wchar *base, const nq_wchar *target) {
    if (!base || !target) return nullptr;
    const std::size_t bl = nqt::len(base), tl = nqt::len(target);
    if (bl < 4 || bl > 512 || tl < 4 || tl > 512) return nullptr;

    // Another drive: only the whole name will do.
    if (nqt::toupper(base[0]) != nqt::toupper(target[0])) {
        nqt::copy(g_relative, target);
        return g_relative;
    }
    // The drive mark and root ("C:\") are taken as equal; the rest compares exactly.
    std::size_t i = 3;
    while (i < bl && i < tl && base[i] == target[i]) ++i;

    if (i == bl && (target[i] == u'\\' || target[i - 1] == u'\\')) {
        const nq_wchar *rest = target + i;
        if (*rest == u'\\') ++rest;
        nqt::copy(g_relative, rest);
        return g_relative;
    }

    // One level for the folder the difference stands in, one for each folder below it.
    std::size_t levels = 1;
    for (std::size_t k = i + 1; k < bl; ++k) {
        if (base[k] == u'\\' && base[k + 1] != 0) ++levels;
    }
    std::size_t from = i;
    while (from > 0 && target[from - 1] != u'\\') --from;
    if (levels * 3 + (tl - from) >= kRelativeBufferSize) return nullptr;

    std::size_t out = 0;
    for (std::size_t k = 0; k < levels; ++k) {
        g_relative[out++] = u'.';
        g_relative[out++] = u'.';
        g_relative[out++] = u'\\';
    }
    nqt::copy(g_relative + out, target + from);
    return g_relative;
}

NQ_API nq_wchar *nq_File_getUNCPathName(const nq_wchar *name) {
    g_unc[0] = 0;
    if (!name) return g_unc;
    nqt::copy_bounded(g_unc, kUncBufferSize, name);
    // A drive could name a network share; this system has none, so the question always
    // takes its failure path and the name stays as it came.
    return g_unc;
}

}  // extern "C"
