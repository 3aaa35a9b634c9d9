#include "plat_profile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>


#include "plat_path.h"
#include "plat_utf.h"

namespace nqplat {

namespace {

bool is_blank(char16_t c) { return c == u' ' || c == u'\t'; }

std::u16string trim(std::u16string_view s) {
    std::size_t begin = 0, end = s.size();
    while (begin < end && is_blank(s[begin])) ++begin;
    while (end > begin && is_blank(s[end - 1])) --end;
    return std::u16string(s.substr(begin, end - begin));
}

}  // namespace

std::vector<ProfileSection> parse_profile(std::string_view bytes) {
    std::vector<ProfileSection> sections;
    if (bytes.size() >= 3 && bytes.substr(0, 3) == "\xEF\xBB\xBF") bytes.remove_prefix(3);
    while (!bytes.empty()) {
        std::size_t eol = bytes.find('\n');
        std::string_view raw = bytes.substr(0, eol);
        bytes.remove_prefix(eol == std::string_view::npos ? bytes.size() : eol + 1);
        if (!raw.empty() && raw.back() == '\r') raw.remove_suffix(1);
        const std::size_t nul = raw.find('\0');
        if (nul != std::string_view::npos) raw = raw.substr(0, nul);

        const std::u16string line = trim(utf8_to_utf16(raw));
        if (line.empty() || line[0] == u';') continue;
        if (line[0] == u'[') {
            const std::size_t close = line.find(u']');
            ProfileSection section;
            section.name = trim(std::u16string_view(line).substr(
                1, close == std::u16string::npos ? std::u16string::npos : close - 1));
            sections.push_back(std::move(section));
            continue;
        }
        const std::size_t equals = line.find(u'=');
        if (equals == std::u16string::npos || sections.empty()) continue;
        ProfileEntry entry;
        entry.key = trim(std::u16string_view(line).substr(0, equals));
        entry.value = trim(std::u16string_view(line).substr(equals + 1));
        sections.back().entries.push_back(std::move(entry));
    }
    return sections;
}

bool read_profile(const std::string &os_path, std::vector<ProfileSection> &sections) {
    sections.clear();
    if (os_path.empty()) return false;
    const int fd = ::open(os_path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    struct stat st;
    if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
        ::close(fd);
        return false;
    }
    std::string bytes;
    char buffer[16384];
    for (;;) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0) {
            ::close(fd);
            return false;
        }
        if (got == 0) break;
        bytes.append(buffer, static_cast<std::size_t>(got));
    }
    ::close(fd);
    sections = parse_profile(bytes);
    return true;
}

std::size_t get_profile_string(const char16_t *section, const char16_t *key,
                               const char16_t *fallback, char16_t *out, std::size_t size,
                               const char16_t *file) {
    std::u16string value = trim(fallback ? std::u16string_view(fallback) : std::u16string_view());
    std::vector<ProfileSection> sections;
    if (section && key && file && read_profile(os_path(file), sections)) {
        for (const ProfileSection &s : sections) {
            if (!equal_ignoring_case(s.name, section)) continue;
            for (const ProfileEntry &e : s.entries) {
                if (!equal_ignoring_case(e.key, key)) continue;
                value = e.value;
                if (value.size() >= 2 && (value[0] == u'"' || value[0] == u'\'') &&
                    value.back() == value[0]) {
                    value = value.substr(1, value.size() - 2);
                }
                break;
            }
            break;  // only the first group of a name counts
        }
    }
    if (!out || size == 0) return 0;
    const std::size_t n = value.size() < size - 1 ? value.size() : size - 1;
    value.copy(out, n);
    out[n] = 0;
    return n;
}

}  // namespace nqplat
