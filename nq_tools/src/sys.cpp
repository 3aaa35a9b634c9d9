// The Sys family: the product's folders by key, versions of files and products, and the
// mode-selection switch.
#include <string>

#include "config_internal.h"
#include "nq_env.h"
#include "nq_file.h"
#include "nq_fname.h"
#include "nq_str.h"
#include "nq_sys.h"
#include "plat_registry.h"
#include "plat_version.h"
#include "text/nq_text.h"

namespace {

constexpr int kSessionNumbers = 1000;

nq_wchar g_version_number[32];
nq_wchar g_product_version[256];

// A key's value: the session first, then "GENERAL" of nq.ini (unless ini_only). Empty when
// found nowhere; from_ini tells where it came from.
std::u16string lookup(const nq_wchar *key, bool ini_only, bool *from_ini = nullptr) {
    if (from_ini) *from_ini = false;
    if (!ini_only) {
        if (const nq_wchar *value = nq_Env_getSes(key)) return value;
    }
    if (const nq_wchar *value = nq_Env_getIni(u"GENERAL", key)) {
        if (from_ini) *from_ini = true;
        return value;
    }
    return {};
}

// A folder as the family hands it out: a trailing backslash (nq_Fname_fixDir) and lower case.
std::u16string folder(std::u16string path) {
    path.push_back(u'\0');
    path.push_back(u'\0');  // room for the backslash
    nq_Fname_fixDir(path.data());
    path.resize(nqt::len(path.c_str()));
    nqt::lwr(path.data());
    return path;
}

std::u16string lower(std::u16string s) {
    nqt::lwr(s.data());
    return s;
}

nq_wchar *hand_out(nq_wchar *output, const std::u16string &value) {
    if (output) nqt::copy_bounded(output, nq::kSysNameSize, value.c_str());
    return output;
}

std::u16string net_dir() { return folder(lookup(u"WK", false)); }

std::u16string local_dir() {
    const std::u16string value = lookup(u"WKWS", false);
    return value.empty() ? net_dir() : folder(value);
}

std::u16string bin_dir() {
    std::u16string value = lookup(u"NQ_DEV_BIN_DIR", true);
    if (value.empty()) value = lookup(u"NQ_BIN_DIR", true);
    return value.empty() ? folder(net_dir() + u"bin") : folder(value);
}

// A key found in nq.ini but not in the session goes to the session, so that later lookups
// stay local.
std::u16string session_backed(const nq_wchar *key) {
    bool from_ini = false;
    const std::u16string value = lookup(key, false, &from_ini);
    if (from_ini) nq_Env_setSes(key, value.c_str());
    return value;
}

std::u16string spec_dir(const nq_wchar *subfolder) {
    std::u16string value = session_backed(u"WKSPECS");
    if (value.empty()) {
        value = folder(net_dir() + u"specs");
        nq_Env_setSes(u"WKSPECS", value.c_str());
    }
    std::u16string result = folder(value);
    if (subfolder && subfolder[0]) result = folder(result + subfolder);
    return result;
}

std::u16string temp_dir() {
    const std::u16string value = session_backed(u"WKTMP");
    return value.empty() ? folder(local_dir() + u"wktmp") : folder(value);
}

bool exists(const std::u16string &name) { return nq_File_hasAccess(name.c_str(), 0) == 1; }

std::u16string session_temp_dir(std::u16string base) {
    const nq_wchar *number = nq_Env_getSes(u"WKSES");
    if (number) return folder(base + number);
    for (int n = 1; n <= kSessionNumbers; ++n) {
        const std::u16string candidate = nqt::format_string(u"%s%d", base.c_str(), n);
        if (exists(candidate)) continue;
        nq_Env_setSes(u"WKSES", nqt::format_string(u"%d", n).c_str());
        return folder(candidate);
    }
    return base;  // every number is taken: the plain folder stands
}

std::u16string format_version(const uint16_t parts[4]) {
    return nqt::format_string(u"%02hd.%02hd.%02hd.%02hd", static_cast<short>(parts[0]),
                              static_cast<short>(parts[1]), static_cast<short>(parts[2]),
                              static_cast<short>(parts[3]));
}

}  // namespace

namespace nq {

std::u16string config_ini_name() { return lower(config_folder() + u"nq.ini"); }

}  // namespace nq

extern "C" {

NQ_API nq_wchar *nq_Sys_getNetDir(nq_wchar *output) { return hand_out(output, net_dir()); }

NQ_API nq_wchar *nq_Sys_getLocalDir(nq_wchar *output) { return hand_out(output, local_dir()); }

NQ_API nq_wchar *nq_Sys_getBinDir(nq_wchar *output) { return hand_out(output, bin_dir()); }

NQ_API nq_wchar *nq_Sys_getSpecDir(nq_wchar *output, const nq_wchar *subfolder) {
    return hand_out(output, spec_dir(subfolder));
}

NQ_API nq_wchar *nq_Sys_getTempDir(nq_wchar *output, int perSession) {
    std::u16string result = temp_dir();
    if (perSession) result = session_temp_dir(result);
    if (!result.empty() && !exists(result)) nq_Dir_create(result.c_str());
    return hand_out(output, result);
}

NQ_API nq_wchar *nq_Sys_getCfgDir(nq_wchar *output) { return hand_out(output, nq::config_folder()); }

NQ_API nq_wchar *nq_Sys_getNetName(nq_wchar *output, const nq_wchar *name) {
    return hand_out(output, lower(net_dir() + (name ? name : u"")));
}

NQ_API nq_wchar *nq_Sys_getLocalName(nq_wchar *output, const nq_wchar *name) {
    return hand_out(output, lower(local_dir() + (name ? name : u"")));
}

NQ_API nq_wchar *nq_Sys_getBinName(nq_wchar *output, const nq_wchar *name) {
    return hand_out(output, lower(bin_dir() + (name ? name : u"")));
}

NQ_API nq_wchar *nq_Sys_getCfgName(nq_wchar *output, const nq_wchar *name) {
    return hand_out(output, lower(nq::config_folder() + (name ? name : u"")));
}

NQ_API nq_wchar *nq_Sys_getSpecName(nq_wchar *output, const nq_wchar *subfolder, const nq_wchar *name) {
    return hand_out(output, lower(spec_dir(subfolder) + (name ? name : u"")));
}

NQ_API nq_wchar *nq_Sys_getTempName(nq_wchar *output, const nq_wchar *name) {
    nq_wchar dir[nq::kSysNameSize];
    nq_Sys_getTempDir(dir, 0);
    return hand_out(output, lower(dir + std::u16string(name ? name : u"")));
}

NQ_API nq_wchar *nq_Sys_getVersionBinName(nq_wchar *output, const nq_wchar *name, int check) {
    const std::u16string plain = bin_dir() + (name ? name : u"");
    std::u16string result = plain;
    if (const nq_wchar *found = nq_Env_getSes(u"ACADVER")) {
        const std::u16string version = found;  // the session's buffer is shared with other lookups
        const std::u16string versioned = folder(bin_dir() + version) + (name ? name : u"");
        result = !check || exists(versioned) ? versioned : plain;
    }
    return hand_out(output, lower(result));
}

NQ_API nq_wchar *nq_Sys_getVersionNumber(const nq_wchar *file) {
    nqplat::VersionInfo info;
    if (!nqplat::file_version(file, info)) return nullptr;
    nqt::copy_bounded(g_version_number, 32, format_version(info.file).c_str());
    return g_version_number;
}

NQ_API nq_wchar *nq_Sys_getProductVersion(const nq_wchar *product) {
    g_product_version[0] = 0;
    const nqplat::RegistryKey uninstall =
        nqplat::registry_open(u"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall");
    if (!uninstall.is_open()) return nullptr;
    if (!product) return g_product_version;
    const int length = static_cast<int>(nqt::len(product));
    for (const std::u16string &subkey : uninstall.subkeys()) {
        const nqplat::RegistryKey key = uninstall.open(subkey);
        std::u16string name, version;
        if (!key.query(u"DisplayName", name)) continue;
        if (nq_Str_ncmpi(name.c_str(), product, length) != 0) continue;
        key.query(u"DisplayVersion", version);
        nqt::copy_bounded(g_product_version, 256, version.c_str());
        if (nq_Str_cmpi(name.c_str(), product) == 0) break;  // an exact match ends the walk
    }
    return g_product_version;
}

NQ_API int nq_Sys_getShowModeSelectGUI(void) {
    const nq_wchar *value = nq_Env_getIni(u"GENERAL", u"ShowModeSelectionGUI");
    return value && nqt::cmp(value, u"1") == 0 ? 1 : 0;
}

NQ_API int nq_Sys_setShowModeSelectGUI(int flag) {
    return nq_Env_setIni(u"GENERAL", u"ShowModeSelectionGUI", flag ? u"1" : u"0");
}

NQ_API int nq_Sys_is64bitSystem(void) { return 0; }

}  // extern "C"
