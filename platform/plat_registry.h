// The registry, kept in a text file named by the environment variable NQ_REGISTRY.
//
// The file has the form of an INI file: each group is one key, named by its full path with
// the root spelled out or abbreviated ("[HKEY_LOCAL_MACHINE\SOFTWARE\Zelmar]" or
// "[HKLM\SOFTWARE\Zelmar]"), and each name=value line is one string value of that key. A key
// exists when a group names it or any key below it. Names of keys and values compare without
// regard to case. With no such file (the variable unset or empty, the file missing or
// unreadable) no key can be opened. The file is read again at each open, so a change is seen
// at once.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "plat_profile.h"

namespace nqplat {

class RegistryKey {
public:
    RegistryKey() = default;
    // True when the key is open (RegOpenKeyExW succeeded).
    bool is_open() const { return sections_ != nullptr; }
    // RegQueryValueExW of a string value; false when the key or the value is missing.
    bool query(std::u16string_view name, std::u16string &value) const;
    // RegEnumKeyExW: the names of the keys one level below, each once, ordered as the
    // registry lists them (by the upper case of each code unit).
    std::vector<std::u16string> subkeys() const;
    // The key one level below, by name; not open when there is none.
    RegistryKey open(std::u16string_view subkey) const;
    // The full path in the canonical form (root spelled out, one backslash between parts).
    const std::u16string &path() const { return path_; }

private:
    friend RegistryKey registry_open(std::u16string_view path);
    std::shared_ptr<const std::vector<ProfileSection>> sections_;
    std::u16string path_;
};

// RegOpenKeyExW of a full path such as "HKEY_LOCAL_MACHINE\Software\Microsoft".
RegistryKey registry_open(std::u16string_view path);

// A key path in its canonical form: "HKLM", "HKCU", "HKCR", "HKU" spelled out, runs of
// backslashes made one, and no backslash at either end.
std::u16string registry_canonical(std::u16string_view path);

}  // namespace nqplat
