// Version information of files and of the system: the stand-ins of GetFileVersionInfoW,
// VerQueryValueW, GetModuleHandleW / GetModuleFileNameW and GetVersionExW.
//
// A file's version is told by an ELF note (docs/platform.md has its layout):
//
//   section ".note.nq.version", type SHT_NOTE, alignment 4
//   namesz = 3, descsz = 16, type = 1 (kVersionNoteType), name "NQ\0" and one byte of padding,
//   descriptor: file version major, minor, patch, build, then product version major, minor,
//   patch, build, eight 16-bit words in the byte order of the ELF file.
//
// A file without the note tells its version by a versioned name (libx.so.1.2.3, also reached
// through a symbolic link), which serves as file and product version alike. Else it has none.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace nqplat {

constexpr uint32_t kVersionNoteType = 1;
constexpr char kVersionNoteName[] = "NQ";
constexpr char kVersionNoteSection[] = ".note.nq.version";

struct VersionInfo {
    uint16_t file[4] = {0, 0, 0, 0};     // major, minor, patch, build
    uint16_t product[4] = {0, 0, 0, 0};
};

// The version note in the ELF file at a Linux path; false when the file cannot be read, is no
// ELF file or has no note.
bool read_version_note(const std::string &os_path, VersionInfo &info);

// The version of a versioned shared-object name: the numbers after ".so." (up to four, the
// missing ones 0). False when the name carries none.
bool version_from_name(std::string_view file_name, VersionInfo &info);

// GetFileVersionInfoW of a library name: the note, else the versioned name of the file or of
// the file a symbolic link leads to. False for a missing file or one without a version.
bool file_version(const char16_t *name, VersionInfo &info);

// GetModuleHandleW + GetModuleFileNameW: the Linux path of a module loaded in this process.
// A module is named as Windows names it ("nq_tls20an", "nq_tls20an.dll") or as Linux does
// ("libnq_tls20an.so", "libnq_tls20an.so.1"); case does not matter and a folder part is
// ignored. A null name is the program itself. False when no such module is loaded.
bool module_path(const char16_t *module, std::string &path);

// What GetVersionExW (with the extended record) tells of the system. Linux is reported as an
// NT-family system (platform 2) of version 0.0, a workstation, which is neither Vista nor
// capable of user account control, unless the registry file sets the values of the key
// HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Windows NT\CurrentVersion: "PlatformId",
// "CurrentMajorVersionNumber", "CurrentMinorVersionNumber", "CurrentBuildNumber" and
// "ProductType" (1 workstation, 2 domain controller, 3 server), each a decimal number.
struct OsVersion {
    uint32_t platform = 2;
    uint32_t major = 0;
    uint32_t minor = 0;
    uint32_t build = 0;
    uint32_t product_type = 1;
};
OsVersion os_version();

}  // namespace nqplat
