#include "plat_find.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>

#include "plat_fs.h"
#include "plat_utf.h"

namespace nqplat {

namespace {

// Glob matching without regard to case. A "?" with nothing left of the name matches nothing
// more, as Windows lets a trailing "?" stand for no character.
bool glob(std::u16string_view name, std::u16string_view pattern) {
    std::size_t n = 0, p = 0;
    std::size_t starP = std::u16string_view::npos, starN = 0;
    while (n < name.size() || p < pattern.size()) {
        if (p < pattern.size()) {
            const char16_t pc = pattern[p];
            if (pc == u'*') {
                starP = p++;
                starN = n;
                continue;
            }
            if (pc == u'?') {
                if (n < name.size()) ++n;
                ++p;
                continue;
            }
            if (n < name.size() && fold_case(pc) == fold_case(name[n])) {
                ++n;
                ++p;
                continue;
            }
        }
        if (starP != std::u16string_view::npos && starN < name.size()) {
            p = starP + 1;
            n = ++starN;
            continue;
        }
        return false;
    }
    return true;
}

// Birth time where the file system keeps one, else the change time, as a file time.
int64_t creation_time(int dirfd, const char *name, const struct stat &st) {
    struct statx sx;
    if (::statx(dirfd, name, AT_STATX_SYNC_AS_STAT, STATX_BTIME, &sx) == 0 &&
        (sx.stx_mask & STATX_BTIME)) {
        return to_file_time(sx.stx_btime.tv_sec, sx.stx_btime.tv_nsec);
    }
    return to_file_time(st.st_ctim.tv_sec, st.st_ctim.tv_nsec);
}

uint32_t attributes_of(const struct stat &st, const std::u16string &name) {
    uint32_t attributes = 0;
    if (S_ISDIR(st.st_mode)) attributes |= kAttrDirectory;
    if ((st.st_mode & S_IWUSR) == 0) attributes |= kAttrReadOnly;
    if (!name.empty() && name[0] == u'.' && name != u"." && name != u"..") attributes |= kAttrHidden;
    return attributes ? attributes : kAttrNormal;
}

std::u16string upper(const std::u16string &s) {
    std::u16string u = s;
    for (char16_t &c : u) c = fold_case(c);
    return u;
}

}  // namespace

bool match_pattern(std::u16string_view name, std::u16string_view pattern) {
    if (pattern.empty()) return false;
    if (pattern == u"*" || pattern == u"*.*") return true;
    if (glob(name, pattern)) return true;
    // "name.*" also stands for the name without any extension.
    if (pattern.size() >= 2 && pattern.substr(pattern.size() - 2) == u".*") {
        return glob(name, pattern.substr(0, pattern.size() - 2));
    }
    return false;
}

std::vector<FindEntry> find_entries(const char16_t *pattern) {
    std::vector<FindEntry> found;
    if (!pattern) return found;
    const std::u16string whole = pattern;
    std::size_t cut = whole.find_last_of(u"\\/");
    std::u16string folder, namePattern;
    if (cut != std::u16string::npos) {
        folder = whole.substr(0, cut + 1);
        namePattern = whole.substr(cut + 1);
    } else if (whole.size() >= 2 && whole[1] == u':') {
        folder = whole.substr(0, 2);
        namePattern = whole.substr(2);
    } else {
        namePattern = whole;
    }
    if (namePattern.empty()) return found;

    const std::string folderPath = folder.empty() ? std::string() : fs_path(folder.c_str());
    const char *path = folderPath.empty() ? "." : folderPath.c_str();
    DIR *dir = ::opendir(path);
    if (!dir) return found;
    char resolved[PATH_MAX];
    const bool root = ::realpath(path, resolved) && std::string(resolved) == "/";
    const int dirfd = ::dirfd(dir);

    std::vector<FindEntry> dots, names;
    while (const dirent *entry = ::readdir(dir)) {
        const std::string raw = entry->d_name;
        const bool dot = raw == "." || raw == "..";
        if (dot && root) continue;  // the root has no "." and ".." on Windows
        FindEntry e;
        e.name = utf8_to_utf16(raw);
        if (!match_pattern(e.name, namePattern)) continue;
        struct stat st;
        if (::fstatat(dirfd, raw.c_str(), &st, 0) != 0 &&
            ::fstatat(dirfd, raw.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0) {
            continue;  // gone since the folder was read
        }
        e.attributes = attributes_of(st, e.name);
        e.creation_time = creation_time(dirfd, raw.c_str(), st);
        e.write_time = int64_t(st.st_mtime);
        e.size = uint64_t(st.st_size);
        (dot ? dots : names).push_back(std::move(e));
    }
    ::closedir(dir);

    std::sort(dots.begin(), dots.end(),
              [](const FindEntry &a, const FindEntry &b) { return a.name.size() < b.name.size(); });
    std::sort(names.begin(), names.end(), [](const FindEntry &a, const FindEntry &b) {
        const std::u16string ua = upper(a.name), ub = upper(b.name);
        return ua != ub ? ua < ub : a.name < b.name;
    });
    found = std::move(dots);
    found.insert(found.end(), std::make_move_iterator(names.begin()),
                 std::make_move_iterator(names.end()));
    return found;
}

}  // namespace nqplat
