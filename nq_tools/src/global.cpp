// The Global, Drawing, RM and Zelmar families, and the application object that holds the
// application group, the base section name and the configuration folder.
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <string>

#include "config_internal.h"
#include "ini_cache.h"
#include "nq_env.h"
#include "nq_sys.h"
#include "plat_path.h"
#include "plat_utf.h"
#include "plat_version.h"
#include "text/nq_text.h"

namespace {

constexpr std::size_t kBaseSectionSize = 512;
constexpr int kVistaCode = 106;

// The application object: made on first use, released by nq_Global_destroyData.
struct Application {
    std::u16string group;
    bool base_section_read = false;
    nq_wchar base_section[kBaseSectionSize] = {0};
};
Application *g_application = nullptr;

Application &application() {
    if (!g_application) g_application = new Application();
    return *g_application;
}

nq_wchar g_module_version[32];
std::u16string g_drawing;
int g_drawing_flag = 0;
nq_RMTrackFn g_track = nullptr;

// One code a system, by platform, version and product type; Vista is 106.
int system_code(const nqplat::OsVersion &v) {
    const bool workstation = v.product_type == 1;
    if (v.platform == 1 && v.major == 4) {
        if (v.minor == 0) return 101;   // 95
        if (v.minor == 10) return 102;  // 98
        if (v.minor == 90) return 103;  // Me
    }
    if (v.platform != 2) return 0;
    if (v.major == 4) return 104;                          // NT 4
    if (v.major == 5 && v.minor == 0) return 105;          // 2000
    if (v.major == 5 && v.minor == 1) return 107;          // XP
    if (v.major == 5 && v.minor == 2) return workstation ? 108 : 109;   // XP x64, Server 2003
    if (v.major == 6 && v.minor == 0) return workstation ? kVistaCode : 110;  // Server 2008
    if (v.major == 6 && v.minor == 1) return workstation ? 111 : 112;   // 7, Server 2008 R2
    if (v.major == 6 && v.minor == 2) return workstation ? 113 : 114;   // 8, Server 2012
    if (v.major == 6 && v.minor == 3) return workstation ? 115 : 116;   // 8.1, Server 2012 R2
    if (v.major == 10) return workstation ? 117 : 118;                  // 10, Server 2016 and later
    return 0;
}

// The system, asked once.
const nqplat::OsVersion &system_version() {
    static const nqplat::OsVersion version = nqplat::os_version();
    return version;
}

nq_wchar *module_version(const nq_wchar *module, bool product) {
    g_module_version[0] = 0;
    std::string path;
    if (!nqplat::module_path(module, path)) return g_module_version;
    nqplat::VersionInfo info;
    bool found = nqplat::read_version_note(path, info) || nqplat::version_from_name(path, info);
    if (!found) {
        char real[PATH_MAX];
        found = ::realpath(path.c_str(), real) && nqplat::version_from_name(real, info);
    }
    if (!found) return g_module_version;
    const uint16_t *parts = product ? info.product : info.file;
    nqt::format(g_module_version, 32, u"%02hd.%02hd.%02hd.%02hd", static_cast<short>(parts[0]),
                static_cast<short>(parts[1]), static_cast<short>(parts[2]), static_cast<short>(parts[3]));
    return g_module_version;
}

}  // namespace

namespace nq {

std::u16string config_folder() {
    std::u16string folder;
    const char *configured = std::getenv("NQ_CFG_DIR");
    if (configured && *configured) {
        folder = nqplat::library_path(configured);
    } else {
        char cwd[PATH_MAX];
        if (::getcwd(cwd, sizeof cwd)) folder = nqplat::library_path(cwd);
    }
    if (!folder.empty() && folder.back() != u'\\') folder.push_back(u'\\');
    nqt::lwr(folder.data());
    return folder;
}

void application_release() {
    delete g_application;
    g_application = nullptr;
}

}  // namespace nq

extern "C" {

NQ_API int nq_Sys_getApplicationGroup(nq_wchar *output) {
    if (output) nqt::copy_bounded(output, nq::kSysNameSize, application().group.c_str());
    return 1;
}

NQ_API int nq_Sys_setApplicationGroup(const nq_wchar *group) {
    if (!group) return 0;
    application().group = group;
    return 1;
}

NQ_API nq_wchar *nq_Zelmar_getBaseSectionName(void) {
    Application &app = application();
    if (!app.base_section_read) {
        app.base_section_read = true;
        const char *configured = std::getenv("NQ_BASE_SECTION");
        if (configured && *configured) {
            nqt::copy_bounded(app.base_section, kBaseSectionSize, nqplat::utf8_to_utf16(configured).c_str());
        } else if (const nq_wchar *value = nq_Env_getIni(u"GENERAL", u"BaseSectionName")) {
            nqt::copy_bounded(app.base_section, kBaseSectionSize, value);
        }
    }
    return app.base_section;
}

NQ_API nq_wchar *nq_Global_getModuleFileVersion(const nq_wchar *module) { return module_version(module, false); }

NQ_API nq_wchar *nq_Global_getModuleProductVersion(const nq_wchar *module) { return module_version(module, true); }

NQ_API int nq_Global_isVista(void) { return system_code(system_version()) == kVistaCode ? 1 : 0; }

NQ_API int nq_Global_isOSWithUACSupport(void) {
    const nqplat::OsVersion &v = system_version();
    return v.platform == 2 && v.major >= 6 ? 1 : 0;
}

NQ_API void nq_Global_destroyData(void) {
    nq::ini_cache_release();
    nq::application_release();
}

NQ_API void nq_Drawing_IgnoreSaveEvents(const nq_wchar *drawing, int flag) {
    g_drawing = drawing ? drawing : u"";
    g_drawing_flag = flag;
}

NQ_API int nq_Drawing_IsSaveIgnored(const nq_wchar *drawing) {
    if (!drawing) return 0;
    return nqt::icmp(drawing, g_drawing.c_str()) == 0 ? g_drawing_flag : 0;
}

NQ_API nq_RMTrackFn nq_RM_setFuncTrackObject(nq_RMTrackFn callback) {
    g_track = callback;
    return g_track;
}

NQ_API int nq_RM_callFuncTrackObject(void *object, void *owner, void *data) {
    return g_track ? g_track(object, owner, data) : 0;
}

}  // extern "C"
