#include "plat_fs.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <ctime>

#include "plat_path.h"
#include "plat_utf.h"

namespace nqplat {

namespace {

constexpr mode_t kWriteBits = S_IWUSR | S_IWGRP | S_IWOTH;
// File times count 100-ns units from 1601-01-01; this many lie before 1970-01-01.
constexpr int64_t kFileTimeOf1970 = 116444736000000000LL;

bool stat_path(const std::string &path, struct stat &st) {
    return !path.empty() && ::stat(path.c_str(), &st) == 0;
}

bool read_only(const struct stat &st) { return (st.st_mode & S_IWUSR) == 0; }

uint32_t win32_error(int error) {
    switch (error) {
    case ENOENT: return kErrorFileNotFound;
    case ENOTDIR: return kErrorPathNotFound;
    case ENOTEMPTY:
    case EEXIST: return kErrorDirNotEmpty;
    default: return kErrorAccessDenied;
    }
}

// The last component of a library name as it was spelled (backslash or slash separated).
std::u16string last_component(const char16_t *name) {
    std::u16string n = name;
    const std::size_t cut = n.find_last_of(u"\\/:");
    return cut == std::u16string::npos ? n : n.substr(cut + 1);
}

}  // namespace

std::string fs_path(const char16_t *name) {
    std::string path = os_path(name);
    if (path.empty() && name && name[0] != 0) path = ".";  // a bare drive mark
    return path;
}

int access(const char16_t *name, int mode) {
    if (mode != 0 && mode != 2 && mode != 4 && mode != 6) {
        errno = EINVAL;
        return -1;
    }
    const std::string path = fs_path(name);
    struct stat st;
    if (!stat_path(path, st)) return -1;
    if (S_ISDIR(st.st_mode)) return 0;  // a folder only has to exist
    if ((mode & 2) && (read_only(st) || ::access(path.c_str(), W_OK) != 0)) {
        errno = EACCES;
        return -1;
    }
    if ((mode & 4) && ::access(path.c_str(), R_OK) != 0) return -1;
    return 0;
}

int chmod(const char16_t *name, int pmode) {
    const std::string path = fs_path(name);
    struct stat st;
    if (!stat_path(path, st)) return -1;
    mode_t mode = st.st_mode & 07777;
    // Only the write bit (128) has a meaning, as in the Windows runtime.
    mode = (pmode & 0x80) ? (mode | S_IWUSR) : (mode & ~kWriteBits);
    return ::chmod(path.c_str(), mode) == 0 ? 0 : -1;
}

bool modification_time(const char16_t *name, int64_t *seconds) {
    struct stat st;
    if (!stat_path(fs_path(name), st)) return false;
    if (seconds) *seconds = int64_t(st.st_mtime);
    return true;
}

int set_times(const char16_t *name, int64_t seconds) {
    const std::string path = fs_path(name);
    if (path.empty()) {
        errno = ENOENT;
        return -1;
    }
    struct timespec times[2];
    times[0].tv_sec = times[1].tv_sec = time_t(seconds);
    times[0].tv_nsec = times[1].tv_nsec = 0;
    return ::utimensat(AT_FDCWD, path.c_str(), times, 0) == 0 ? 0 : -1;
}

int rename(const char16_t *from, const char16_t *to) {
    const std::string source = fs_path(from);
    std::string target = fs_path(to);
    struct stat ss, ts;
    if (!stat_path(source, ss) && ::lstat(source.c_str(), &ss) != 0) return -1;
    if (target.empty()) {
        errno = ENOENT;
        return -1;
    }
    if (::lstat(target.c_str(), &ts) == 0) {
        if (ts.st_dev != ss.st_dev || ts.st_ino != ss.st_ino) {
            errno = EEXIST;  // the runtime never replaces a destination
            return -1;
        }
        // The same file under another case: the new name keeps its spelling.
        const std::size_t slash = target.find_last_of('/');
        target = (slash == std::string::npos ? std::string() : target.substr(0, slash + 1)) +
                 utf16_to_utf8(last_component(to).c_str());
    }
    return ::rename(source.c_str(), target.c_str()) == 0 ? 0 : -1;
}

bool same_file(const char16_t *a, const char16_t *b) {
    struct stat sa, sb;
    return stat_path(fs_path(a), sa) && stat_path(fs_path(b), sb) && sa.st_dev == sb.st_dev &&
           sa.st_ino == sb.st_ino;
}

int unlink(const char16_t *name) {
    const std::string path = fs_path(name);
    struct stat st;
    if (path.empty() || ::lstat(path.c_str(), &st) != 0) {
        errno = ENOENT;
        return -1;
    }
    struct stat target;
    const bool isDir = S_ISDIR(st.st_mode);
    const bool readOnly = !S_ISLNK(st.st_mode) ? read_only(st)
                                               : (stat_path(path, target) && read_only(target));
    if (isDir || readOnly) {
        errno = EACCES;
        return -1;
    }
    return ::unlink(path.c_str()) == 0 ? 0 : -1;
}

int mkdir(const char16_t *name) {
    const std::string path = fs_path(name);
    if (path.empty()) {
        errno = ENOENT;
        return -1;
    }
    return ::mkdir(path.c_str(), 0777) == 0 ? 0 : -1;
}

int rmdir(const char16_t *name) {
    uint32_t error = 0;
    if (remove_directory(name, &error)) return 0;
    errno = error == kErrorDirNotEmpty ? ENOTEMPTY : error == kErrorFileNotFound ? ENOENT : EACCES;
    return -1;
}

int chdir(const char16_t *name) {
    const std::string path = fs_path(name);
    if (path.empty()) {
        errno = ENOENT;
        return -1;
    }
    return ::chdir(path.c_str()) == 0 ? 0 : -1;
}

bool current_folder(std::u16string &out) {
    char buffer[PATH_MAX];
    if (!::getcwd(buffer, sizeof buffer)) return false;
    out = library_path(buffer);
    return true;
}

std::FILE *fopen(const char16_t *name, const char *mode) {
    if (!name || !mode) {
        errno = EINVAL;
        return nullptr;
    }
    const std::string path = fs_path(name);
    if (path.empty()) {
        errno = ENOENT;
        return nullptr;
    }
    std::string m;
    bool writes = false;
    for (const char *c = mode; *c && *c != ','; ++c) {
        if (*c == 'r' || *c == 'w' || *c == 'a' || *c == '+' || *c == 'b' || *c == 'x') m += *c;
        if (*c == 'w' || *c == 'a' || *c == '+') writes = true;
    }
    struct stat st;
    if (stat_path(path, st) && (S_ISDIR(st.st_mode) || (writes && read_only(st)))) {
        errno = EACCES;
        return nullptr;
    }
    return std::fopen(path.c_str(), m.c_str());
}

uint32_t file_attributes(const char16_t *name) {
    struct stat st;
    if (!stat_path(fs_path(name), st)) return kInvalidAttributes;
    uint32_t attributes = 0;
    if (S_ISDIR(st.st_mode)) attributes |= kAttrDirectory;
    if (read_only(st)) attributes |= kAttrReadOnly;
    const std::u16string last = last_component(name);
    if (!last.empty() && last[0] == u'.' && last != u"." && last != u"..") attributes |= kAttrHidden;
    return attributes ? attributes : kAttrNormal;
}

bool set_file_attributes(const char16_t *name, uint32_t attributes) {
    return chmod(name, (attributes & kAttrReadOnly) ? 0 : 0x80) == 0;
}

bool delete_file(const char16_t *name, uint32_t *error) {
    if (unlink(name) == 0) return true;
    if (error) *error = win32_error(errno);
    return false;
}

bool remove_directory(const char16_t *name, uint32_t *error) {
    const std::string path = fs_path(name);
    struct stat st;
    uint32_t code = 0;
    if (!stat_path(path, st)) {
        code = kErrorFileNotFound;
    } else if (!S_ISDIR(st.st_mode)) {
        code = 267;  // ERROR_DIRECTORY: the name is no folder
    } else if (read_only(st)) {
        code = kErrorAccessDenied;
    } else if (::rmdir(path.c_str()) != 0) {
        code = win32_error(errno);
    }
    if (code && error) *error = code;
    return code == 0;
}

int64_t to_file_time(int64_t seconds, int64_t nanoseconds) {
    return seconds * 10000000LL + nanoseconds / 100 + kFileTimeOf1970;
}

int64_t system_time_as_file_time() {
    struct timespec now;
    ::clock_gettime(CLOCK_REALTIME, &now);
    return to_file_time(now.tv_sec, now.tv_nsec);
}

int current_drive() { return 3; }

int change_drive(int drive) { return drive == 3 ? 0 : -1; }

}  // namespace nqplat
