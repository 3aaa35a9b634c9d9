// Folder searches with Windows patterns (FindFirstFileW / _wfindfirst): "*" and "?" in the
// last component only, compared without regard to case; "*.*" and any pattern ending in
// ".*" also match names without a dot. A folder other than the root lists "." and ".."
// first, as Windows does; the other names follow ordered as a case-insensitive file system
// lists them (by upper-case code units).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nqplat {

struct FindEntry {
    std::u16string name;        // the entry's name alone
    uint32_t attributes = 0;    // kAttr* bits of plat_fs.h
    int64_t creation_time = 0;  // file time (100 ns since 1601): birth time, else change time
    int64_t write_time = 0;     // seconds since 1970
    uint64_t size = 0;
};

// Windows name matching of one name against one pattern.
bool match_pattern(std::u16string_view name, std::u16string_view pattern);

// Every entry that matches pattern (a library name whose last component may hold wildcards).
// Empty when the folder cannot be read or nothing matches.
std::vector<FindEntry> find_entries(const char16_t *pattern);

}  // namespace nqplat
