// Files and folders the way the Windows runtime presents them, on Linux. Every name is a
// library name and reaches the system through os_path. Results follow the runtime call
// each function stands in for (0 / -1 with errno, or true / false with a Win32 error code).
//
// The read-only attribute of Windows is the owner's write bit here: a file without it is
// read-only, cannot be opened for writing and cannot be removed, whoever runs the process.
// Folders answer every access test once they exist, as on Windows.
#pragma once

#include <cstdint>

#include "plat_winerror.h"
#include <cstdio>
#include <string>

namespace nqplat {

// File attribute bits as GetFileAttributesW gives them.
constexpr uint32_t kAttrReadOnly = 0x01;
constexpr uint32_t kAttrHidden = 0x02;
constexpr uint32_t kAttrSystem = 0x04;
constexpr uint32_t kAttrDirectory = 0x10;
constexpr uint32_t kAttrNormal = 0x80;
constexpr uint32_t kInvalidAttributes = 0xFFFFFFFFu;


// The Linux path of a library name; a bare drive mark ("C:") is the current folder.
std::string fs_path(const char16_t *name);

// _waccess: mode 0 existence, 2 write, 4 read, 6 both. 0 or -1.
int access(const char16_t *name, int mode);
// _wchmod: the write bit of pmode (128) makes the file read-write, its absence read-only.
int chmod(const char16_t *name, int pmode);
// Last modification time in seconds; false when the name cannot be read.
bool modification_time(const char16_t *name, int64_t *seconds);
// _wutime64: access and modification time to seconds. 0 or -1.
int set_times(const char16_t *name, int64_t seconds);
// _wrename: never replaces an existing destination. 0 or -1.
int rename(const char16_t *from, const char16_t *to);
// Both names are one file on the disk (the same file under two spellings or links).
bool same_file(const char16_t *a, const char16_t *b);
// _wunlink: files only, not read-only ones. 0 or -1.
int unlink(const char16_t *name);
int mkdir(const char16_t *name);
int rmdir(const char16_t *name);
int chdir(const char16_t *name);
// The current folder in the library's form ("C:\home\ann"); false if it cannot be read.
bool current_folder(std::u16string &out);

// _wfopen with a narrow mode: a folder is not opened, nor a read-only file for writing.
std::FILE *fopen(const char16_t *name, const char *mode);

// GetFileAttributesW, SetFileAttributesW (read-only, normal), DeleteFileW, RemoveDirectoryW;
// the failing ones give their Win32 error code.
uint32_t file_attributes(const char16_t *name);
bool set_file_attributes(const char16_t *name, uint32_t attributes);
bool delete_file(const char16_t *name, uint32_t *error);
bool remove_directory(const char16_t *name, uint32_t *error);

// GetSystemTimeAsFileTime: 100-ns units since 1601-01-01.
int64_t system_time_as_file_time();
// Seconds and nanoseconds since 1970 as a file time.
int64_t to_file_time(int64_t seconds, int64_t nanoseconds);

// _getdrive: this system has one drive, C (3). _chdrive: 0 for drive 3, -1 for any other.
int current_drive();
int change_drive(int drive);

}  // namespace nqplat
