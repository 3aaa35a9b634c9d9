#include "plat_registry.h"

#include "plat_utf.h"

#include <algorithm>
#include <cstdlib>

namespace nqplat {

namespace {

struct RootName {
    std::u16string_view short_name;
    std::u16string_view long_name;
};

constexpr RootName kRoots[] = {
    {u"HKLM", u"HKEY_LOCAL_MACHINE"},
    {u"HKCU", u"HKEY_CURRENT_USER"},
    {u"HKCR", u"HKEY_CLASSES_ROOT"},
    {u"HKU", u"HKEY_USERS"},
    {u"HKCC", u"HKEY_CURRENT_CONFIG"},
};

std::u16string upper(std::u16string_view s) {
    std::u16string out(s);
    for (char16_t &c : out) c = fold_case(c);
    return out;
}

// True when path lies below key (path starts with key and a backslash).
bool is_below(std::u16string_view path, std::u16string_view key) {
    return path.size() > key.size() + 1 && path[key.size()] == u'\\' &&
           equal_ignoring_case(path.substr(0, key.size()), key);
}

}  // namespace

std::u16string registry_canonical(std::u16string_view path) {
    std::u16string out;
    std::size_t pos = 0;
    bool first = true;
    while (pos < path.size()) {
        std::size_t next = path.find(u'\\', pos);
        if (next == std::u16string_view::npos) next = path.size();
        std::u16string_view part = path.substr(pos, next - pos);
        pos = next + 1;
        if (part.empty()) continue;
        if (first) {
            for (const RootName &root : kRoots) {
                if (equal_ignoring_case(part, root.short_name) || equal_ignoring_case(part, root.long_name)) {
                    part = root.long_name;
                }
            }
            first = false;
        } else {
            out.push_back(u'\\');
        }
        out.append(part);
    }
    return out;
}

RegistryKey registry_open(std::u16string_view path) {
    RegistryKey key;
    const char *file = std::getenv("NQ_REGISTRY");
    if (!file || !*file) return key;
    auto sections = std::make_shared<std::vector<ProfileSection>>();
    if (!read_profile(file, *sections)) return key;
    for (ProfileSection &s : *sections) s.name = registry_canonical(s.name);

    const std::u16string wanted = registry_canonical(path);
    if (wanted.empty()) return key;
    const bool exists = std::any_of(sections->begin(), sections->end(), [&](const ProfileSection &s) {
        return equal_ignoring_case(s.name, wanted) || is_below(s.name, wanted);
    });
    if (!exists) return key;
    key.sections_ = std::move(sections);
    key.path_ = wanted;
    return key;
}

bool RegistryKey::query(std::u16string_view name, std::u16string &value) const {
    if (!sections_) return false;
    for (const ProfileSection &s : *sections_) {
        if (!equal_ignoring_case(s.name, path_)) continue;
        for (const ProfileEntry &e : s.entries) {
            if (equal_ignoring_case(e.key, name)) {
                value = e.value;
                return true;
            }
        }
    }
    return false;
}

std::vector<std::u16string> RegistryKey::subkeys() const {
    std::vector<std::u16string> names;
    if (!sections_) return names;
    for (const ProfileSection &s : *sections_) {
        if (!is_below(s.name, path_)) continue;
        std::u16string_view rest = std::u16string_view(s.name).substr(path_.size() + 1);
        rest = rest.substr(0, rest.find(u'\\'));
        const bool seen = std::any_of(names.begin(), names.end(),
                                      [&](const std::u16string &n) { return equal_ignoring_case(n, rest); });
        if (!seen) names.emplace_back(rest);
    }
    std::stable_sort(names.begin(), names.end(), [](const std::u16string &a, const std::u16string &b) {
        return upper(a) < upper(b);
    });
    return names;
}

RegistryKey RegistryKey::open(std::u16string_view subkey) const {
    RegistryKey key;
    if (!sections_) return key;
    const std::u16string wanted = registry_canonical(path_ + u"\\" + std::u16string(subkey));
    const bool exists = std::any_of(sections_->begin(), sections_->end(), [&](const ProfileSection &s) {
        return equal_ignoring_case(s.name, wanted) || is_below(s.name, wanted);
    });
    if (!exists || wanted.size() <= path_.size()) return key;
    key.sections_ = sections_;
    key.path_ = wanted;
    return key;
}

}  // namespace nqplat
