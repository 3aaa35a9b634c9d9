#include "plat_version.h"

#include <fcntl.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <cwctype>
#include <vector>

#include "plat_path.h"
#include "plat_registry.h"
#include "plat_utf.h"

namespace nqplat {

namespace {

constexpr uint32_t kShtNote = 7;
constexpr uint32_t kPtNote = 4;
// Notes and their tables are small; a bigger claim is a damaged file.
constexpr uint64_t kMaxNoteArea = 1u << 20;
constexpr uint64_t kMaxTableEntries = 65535;

class ElfFile {
public:
    explicit ElfFile(const std::string &path) : fd_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
        struct stat st;
        if (fd_ >= 0 && ::fstat(fd_, &st) == 0 && S_ISREG(st.st_mode)) size_ = static_cast<uint64_t>(st.st_size);
    }
    ~ElfFile() {
        if (fd_ >= 0) ::close(fd_);
    }
    ElfFile(const ElfFile &) = delete;
    ElfFile &operator=(const ElfFile &) = delete;

    bool read(uint64_t offset, uint64_t length, std::vector<unsigned char> &out) const {
        if (fd_ < 0 || offset > size_ || length > size_ - offset) return false;
        out.resize(length);
        uint64_t done = 0;
        while (done < length) {
            const ssize_t got = ::pread(fd_, out.data() + done, length - done, static_cast<off_t>(offset + done));
            if (got <= 0) return false;
            done += static_cast<uint64_t>(got);
        }
        return true;
    }

private:
    int fd_;
    uint64_t size_ = 0;
};

// Reads an unsigned number of 1 to 8 bytes in the file's byte order.
uint64_t get(const unsigned char *p, int bytes, bool big_endian) {
    uint64_t v = 0;
    for (int i = 0; i < bytes; ++i) {
        const int shift = big_endian ? 8 * (bytes - 1 - i) : 8 * i;
        v |= static_cast<uint64_t>(p[i]) << shift;
    }
    return v;
}

uint64_t round_up(uint64_t v, uint64_t align) { return (v + align - 1) / align * align; }

// Looks through one area of notes for ours.
bool find_note(const std::vector<unsigned char> &area, uint64_t align, bool big_endian, VersionInfo &info) {
    uint64_t pos = 0;
    while (pos + 12 <= area.size()) {
        const uint64_t namesz = get(&area[pos], 4, big_endian);
        const uint64_t descsz = get(&area[pos + 4], 4, big_endian);
        const uint64_t type = get(&area[pos + 8], 4, big_endian);
        const uint64_t name_at = pos + 12;
        const uint64_t desc_at = name_at + round_up(namesz, align);
        const uint64_t next = desc_at + round_up(descsz, align);
        if (namesz > area.size() || descsz > area.size() || next > area.size() + align) return false;
        if (desc_at + descsz > area.size()) return false;
        if (type == kVersionNoteType && namesz == sizeof kVersionNoteName && descsz >= 16 &&
            std::memcmp(&area[name_at], kVersionNoteName, sizeof kVersionNoteName) == 0) {
            for (int i = 0; i < 4; ++i) {
                info.file[i] = static_cast<uint16_t>(get(&area[desc_at + 2 * i], 2, big_endian));
                info.product[i] = static_cast<uint16_t>(get(&area[desc_at + 8 + 2 * i], 2, big_endian));
            }
            return true;
        }
        pos = next;
    }
    return false;
}

std::string lower_ascii(std::string s) {
    for (char &c : s) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return s;
}

std::string base_name(const std::string &path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// The name without folder, "lib" in front and ".so..." or a Windows extension behind.
std::string module_stem(std::string name) {
    name = lower_ascii(base_name(name));
    if (name.rfind("lib", 0) == 0) name.erase(0, 3);
    for (std::size_t at = name.find(".so"); at != std::string::npos; at = name.find(".so", at + 1)) {
        if (at + 3 == name.size() || name[at + 3] == '.') {
            name.erase(at);
            return name;
        }
    }
    for (const char *ext : {".dll", ".exe"}) {
        const std::size_t n = std::strlen(ext);
        if (name.size() > n && name.compare(name.size() - n, n, ext) == 0) name.erase(name.size() - n);
    }
    return name;
}

std::string program_file() {
    char buffer[PATH_MAX];
    const ssize_t n = ::readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    if (n <= 0) return {};
    return std::string(buffer, static_cast<std::size_t>(n));
}

struct ModuleSearch {
    std::string wanted;       // lower-cased base name asked for
    std::string wanted_stem;
    std::string found;
};

int visit_module(dl_phdr_info *info, size_t, void *data) {
    auto *search = static_cast<ModuleSearch *>(data);
    std::string path = info->dlpi_name ? info->dlpi_name : "";
    if (path.empty()) path = program_file();
    if (path.empty()) return 0;
    const std::string name = lower_ascii(base_name(path));
    if (name == search->wanted || (!search->wanted_stem.empty() && module_stem(name) == search->wanted_stem)) {
        search->found = path;
        return 1;
    }
    return 0;
}

uint32_t registry_number(const RegistryKey &key, std::u16string_view name, uint32_t fallback) {
    std::u16string text;
    if (!key.query(name, text) || text.empty()) return fallback;
    const std::string narrow = utf16_to_utf8(text.c_str(), text.size());
    char *end = nullptr;
    const unsigned long v = std::strtoul(narrow.c_str(), &end, 10);
    return end && *end == '\0' ? static_cast<uint32_t>(v) : fallback;
}

}  // namespace

bool read_version_note(const std::string &os_path, VersionInfo &info) {
    ElfFile file(os_path);
    std::vector<unsigned char> header;
    if (!file.read(0, 52, header)) return false;
    if (std::memcmp(header.data(), "\x7F" "ELF", 4) != 0) return false;
    const bool is64 = header[4] == 2;
    if (!is64 && header[4] != 1) return false;
    if (header[5] != 1 && header[5] != 2) return false;
    const bool be = header[5] == 2;
    if (is64 && !file.read(0, 64, header)) return false;

    const uint64_t phoff = is64 ? get(&header[0x20], 8, be) : get(&header[0x1C], 4, be);
    const uint64_t shoff = is64 ? get(&header[0x28], 8, be) : get(&header[0x20], 4, be);
    const uint64_t phentsize = get(&header[is64 ? 0x36 : 0x2A], 2, be);
    uint64_t phnum = get(&header[is64 ? 0x38 : 0x2C], 2, be);
    const uint64_t shentsize = get(&header[is64 ? 0x3A : 0x2E], 2, be);
    uint64_t shnum = get(&header[is64 ? 0x3C : 0x30], 2, be);
    const uint64_t min_sh = is64 ? 0x40 : 0x28;
    const uint64_t min_ph = is64 ? 0x38 : 0x20;

    std::vector<unsigned char> entry, area;
    // The sections first: they name the note's area exactly.
    if (shoff != 0 && shentsize >= min_sh) {
        if (shnum == 0 && file.read(shoff, shentsize, entry)) {
            shnum = is64 ? get(&entry[0x20], 8, be) : get(&entry[0x14], 4, be);  // many sections
        }
        for (uint64_t i = 0; i < shnum && i < kMaxTableEntries; ++i) {
            if (!file.read(shoff + i * shentsize, shentsize, entry)) break;
            if (get(&entry[4], 4, be) != kShtNote) continue;
            const uint64_t offset = is64 ? get(&entry[0x18], 8, be) : get(&entry[0x10], 4, be);
            const uint64_t size = is64 ? get(&entry[0x20], 8, be) : get(&entry[0x14], 4, be);
            const uint64_t align = is64 ? get(&entry[0x30], 8, be) : get(&entry[0x20], 4, be);
            if (size > kMaxNoteArea || !file.read(offset, size, area)) continue;
            if (find_note(area, align == 8 ? 8 : 4, be, info)) return true;
        }
    }
    // A file stripped of its section table still has the note segments.
    if (phoff != 0 && phentsize >= min_ph) {
        if (phnum == 0xFFFF) phnum = 0;
        for (uint64_t i = 0; i < phnum && i < kMaxTableEntries; ++i) {
            if (!file.read(phoff + i * phentsize, phentsize, entry)) break;
            if (get(&entry[0], 4, be) != kPtNote) continue;
            const uint64_t offset = is64 ? get(&entry[8], 8, be) : get(&entry[4], 4, be);
            const uint64_t size = is64 ? get(&entry[0x20], 8, be) : get(&entry[0x10], 4, be);
            const uint64_t align = is64 ? get(&entry[0x30], 8, be) : get(&entry[0x1C], 4, be);
            if (size > kMaxNoteArea || !file.read(offset, size, area)) continue;
            if (find_note(area, align == 8 ? 8 : 4, be, info)) return true;
        }
    }
    return false;
}

bool version_from_name(std::string_view file_name, VersionInfo &info) {
    const std::size_t slash = file_name.find_last_of('/');
    if (slash != std::string_view::npos) file_name.remove_prefix(slash + 1);
    const std::size_t at = file_name.find(".so.");
    if (at == std::string_view::npos) return false;
    std::string_view rest = file_name.substr(at + 4);
    VersionInfo v;
    int parts = 0;
    while (!rest.empty() && parts < 4) {
        std::size_t digits = 0;
        uint32_t number = 0;
        while (digits < rest.size() && rest[digits] >= '0' && rest[digits] <= '9') {
            number = number * 10 + static_cast<uint32_t>(rest[digits] - '0');
            if (number > 0xFFFF) return false;
            ++digits;
        }
        if (digits == 0) return false;
        v.file[parts] = v.product[parts] = static_cast<uint16_t>(number);
        ++parts;
        rest.remove_prefix(digits);
        if (rest.empty()) break;
        if (rest[0] != '.') return false;
        rest.remove_prefix(1);
        if (rest.empty()) return false;
    }
    if (parts == 0 || !rest.empty()) return false;
    info = v;
    return true;
}

bool file_version(const char16_t *name, VersionInfo &info) {
    if (!name || !name[0]) return false;
    const std::string path = os_path(name);
    struct stat st;
    if (::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return false;
    if (read_version_note(path, info)) return true;
    if (version_from_name(path, info)) return true;
    char resolved[PATH_MAX];
    return ::realpath(path.c_str(), resolved) && version_from_name(resolved, info);
}

bool module_path(const char16_t *module, std::string &path) {
    if (!module) {
        path = program_file();
        return !path.empty();
    }
    // A Windows module name may carry a folder; only its last part counts.
    std::u16string name(module);
    const std::size_t cut = name.find_last_of(u"\\/:");
    if (cut != std::u16string::npos) name.erase(0, cut + 1);
    if (name.empty()) return false;
    ModuleSearch search;
    search.wanted = lower_ascii(utf16_to_utf8(name.c_str(), name.size()));
    search.wanted_stem = module_stem(search.wanted);
    ::dl_iterate_phdr(visit_module, &search);
    if (search.found.empty()) return false;
    path = search.found;
    return true;
}

OsVersion os_version() {
    OsVersion v;
    const RegistryKey key = registry_open(u"HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion");
    if (!key.is_open()) return v;
    v.platform = registry_number(key, u"PlatformId", v.platform);
    v.major = registry_number(key, u"CurrentMajorVersionNumber", v.major);
    v.minor = registry_number(key, u"CurrentMinorVersionNumber", v.minor);
    v.build = registry_number(key, u"CurrentBuildNumber", v.build);
    v.product_type = registry_number(key, u"ProductType", v.product_type);
    return v;
}

}  // namespace nqplat
