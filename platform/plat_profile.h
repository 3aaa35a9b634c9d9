// Text files of groups and name=value lines, read the way the Windows profile functions read
// them (GetPrivateProfileStringW). The registry file and nq_Env_getWin stand on this.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace nqplat {

struct ProfileEntry {
    std::u16string key;    // text before the first "=", trimmed
    std::u16string value;  // text after it, trimmed
};

struct ProfileSection {
    std::u16string name;  // between "[" and "]", trimmed
    std::vector<ProfileEntry> entries;
};

// Splits UTF-8 text into sections. A UTF-8 byte order mark is skipped, a CR before LF is
// dropped, a line is seen up to its first NUL, and invalid UTF-8 bytes become the code units
// of the same value. Lines before the first group, comment lines (";") and lines without "="
// belong to no entry.
std::vector<ProfileSection> parse_profile(std::string_view bytes);

// Reads and splits the file at a Linux path; false when it is missing, not a regular file
// or cannot be read.
bool read_profile(const std::string &os_path, std::vector<ProfileSection> &sections);

// GetPrivateProfileStringW for one value: the first group of that name, the first entry of
// that key; a value wrapped in a pair of equal quotes loses them. A missing file, group or key
// gives the default (trimmed). At most size - 1 units and a terminator are written (nothing for
// size 0); the result is the number of units written before the terminator.
std::size_t get_profile_string(const char16_t *section, const char16_t *key,
                               const char16_t *fallback, char16_t *out, std::size_t size,
                               const char16_t *file);

}  // namespace nqplat
