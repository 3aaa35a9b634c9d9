// Files for the table engine: open with access, share and disposition rules, positioned
// reads and writes, length, flush, close, and byte-range locks.
//
// The engine thinks in handles, 32-bit positions, share modes and lock violations. Here a
// handle is a file descriptor; a share mode is an open-file-description lock on one byte far
// above any position the engine can address (shared opens hold a read lock on it, exclusive
// opens a write lock), so that an exclusive open and any other open of the same file exclude
// each other whether they come from another process or from this one. Byte-range locks are
// open-file-description write locks at the engine's own offsets and lengths. Because such
// locks belong to the open file description, two opens of one file in one process conflict
// exactly as two processes do, and closing a handle drops every lock taken through it.
#pragma once

#include <cstdint>

#include "plat_winerror.h"

namespace nqplat {

// Access rights.
constexpr uint32_t kFileRead = 0x80000000u;
constexpr uint32_t kFileWrite = 0x40000000u;
// Share modes: 0 alone, anything else lets others open the file as well.
constexpr uint32_t kShareNone = 0;
constexpr uint32_t kShareReadWrite = 3;
// Dispositions.
constexpr uint32_t kCreateNew = 1;     // fails with kErrorFileExists when the file exists
constexpr uint32_t kCreateAlways = 2;  // creates or truncates
constexpr uint32_t kOpenExisting = 3;  // fails with kErrorFileNotFound when it does not exist

// file_last_error() reports the codes of plat_winerror.h.

// The share-mode byte: one byte at 4 GiB, which no 32-bit position reaches.
constexpr uint64_t kShareLockOffset = 0x100000000ull;

// What file_size() returns when the size cannot be had.
constexpr uint32_t kInvalidFileSize = 0xFFFFFFFFu;

// Opens a file by its library name (through the path bridge). Returns the handle, or -1
// with file_last_error() set: kErrorFileNotFound, kErrorFileExists, kErrorAccessDenied,
// kErrorSharingViolation, kErrorPathNotFound.
int file_open(const char *name, uint32_t access, uint32_t share, uint32_t disposition);

// Whether a position can be reached: positions at or above 2 GiB count as a negative seek,
// as a signed 32-bit file pointer would. Also false for an invalid handle.
bool file_seek(int handle, uint32_t position);

// Reads up to length bytes at position into buffer; got is what arrived (short at the end of
// the file). False on failure.
bool file_read(int handle, uint32_t position, void *buffer, uint32_t length, uint32_t *got);
// Writes length bytes at position; written is what went out. False on failure (a short write
// for want of space is a failure with kErrorDiskFull).
bool file_write(int handle, uint32_t position, const void *buffer, uint32_t length,
                uint32_t *written);

// Sets the length of the file: cut, or extended with zero bytes.
bool file_set_length(int handle, uint32_t length);
// The low 32 bits of the length, or kInvalidFileSize when it cannot be had.
uint32_t file_size(int handle);
// Writes the file's data through to the device.
bool file_flush(int handle);
// Closes the handle; every lock taken through it goes with it.
bool file_close(int handle);

// Locks length bytes from offset for this handle alone. A range another open holds, or one
// that overlaps a range this handle already holds, is refused with kErrorLockViolation.
// A length of 0 locks nothing and succeeds.
bool file_lock(int handle, uint32_t offset, uint32_t length);
// Releases a range exactly as it was locked through this handle; any other range is refused
// with kErrorNotLocked.
bool file_unlock(int handle, uint32_t offset, uint32_t length);

// Removes a file, renames one (replacing the target). Library names.
bool file_remove(const char *name);
bool file_rename(const char *from, const char *to);

// The error of the last failing call above.
uint32_t file_last_error();

// How many calls of each kind reached the operating system since the process started, for
// tests that must see that a call was or was not made.
struct FileCallCounts {
    uint64_t reads;
    uint64_t writes;
    uint64_t locks;
    uint64_t unlocks;
};
FileCallCounts file_call_counts();

}  // namespace nqplat
