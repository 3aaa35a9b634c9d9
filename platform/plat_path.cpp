#include "plat_path.h"

#include <dirent.h>
#include <sys/stat.h>

#include <vector>

#include "plat_utf.h"

namespace nqplat {

namespace {

bool exists(const std::string &path) {
    struct stat st;
    return ::lstat(path.c_str(), &st) == 0;
}

bool same_name_ignoring_case(const std::string &a, const std::string &b) {
    return equal_ignoring_case(utf8_to_utf16(a), utf8_to_utf16(b));
}

// The entry of folder that matches name ignoring case; the smallest by byte order when
// several do, so that the choice does not depend on the order of the folder.
bool find_ignoring_case(const std::string &folder, const std::string &name, std::string &found) {
    DIR *dir = ::opendir(folder.empty() ? "." : folder.c_str());
    if (!dir) return false;
    bool any = false;
    while (const dirent *entry = ::readdir(dir)) {
        const std::string candidate = entry->d_name;
        if (candidate == "." || candidate == "..") continue;
        if (same_name_ignoring_case(candidate, name) && (!any || candidate < found)) {
            found = candidate;
            any = true;
        }
    }
    ::closedir(dir);
    return any;
}

std::string resolve(std::string name) {
    // The drive mark: one letter and a colon in front.
    if (name.size() >= 2 && name[1] == ':' &&
        ((name[0] >= 'A' && name[0] <= 'Z') || (name[0] >= 'a' && name[0] <= 'z'))) {
        name.erase(0, 2);
    }
    for (char &c : name) {
        if (c == '\\') c = '/';
    }
    if (name.empty()) return name;

    std::string out;
    std::size_t pos = 0;
    if (name[0] == '/') {
        out = "/";
        pos = 1;
    }
    bool parent_exists = true;
    while (pos <= name.size()) {
        std::size_t slash = name.find('/', pos);
        if (slash == std::string::npos) slash = name.size();
        std::string component = name.substr(pos, slash - pos);
        const bool last = slash == name.size();
        if (!component.empty()) {
            std::string candidate = out + component;
            if (parent_exists && component != "." && component != ".." && !exists(candidate)) {
                std::string found;
                if (find_ignoring_case(out, component, found)) {
                    candidate = out + found;
                } else {
                    parent_exists = false;  // nothing below a missing folder can exist
                }
            }
            out = candidate;
        }
        if (!last) {
            if (!out.empty() && out.back() != '/') out.push_back('/');
        }
        pos = slash + 1;
    }
    return out;
}

}  // namespace

std::string os_path(const char16_t *name) {
    if (!name) return {};
    return resolve(utf16_to_utf8(name));
}

std::string os_path_bytes(const char *name) {
    if (!name) return {};
    return resolve(name);
}

std::string library_path_bytes(std::string_view path) {
    std::string out;
    if (!path.empty() && path[0] == '/') out = "C:";
    out.append(path);
    for (char &c : out) {
        if (c == '/') c = '\\';
    }
    return out;
}

std::u16string library_path(std::string_view path) {
    return utf8_to_utf16(library_path_bytes(path));
}

}  // namespace nqplat
