#include "plat_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <atomic>
#include <cstdio>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

#include "plat_path.h"

namespace nqplat {

namespace {

thread_local uint32_t t_last_error = kErrorNone;

// What each open handle was granted and the ranges locked through it. The kernel merges
// and splits the ranges of one open file description freely; the engine expects a handle
// to refuse a second lock on a range it holds and to release only what it locked, so the
// ranges are kept here as they were taken.
struct HandleState {
    bool can_write = false;
    bool exclusive_lock = false;  // the share byte is held as a write lock
    std::vector<std::pair<uint32_t, uint32_t>> ranges;  // offset, length
};

std::mutex g_mutex;
std::unordered_map<int, HandleState> g_handles;
struct {
    std::atomic<uint64_t> reads{0}, writes{0}, locks{0}, unlocks{0};
} g_counts;

uint32_t error_from_errno(int error, bool creating) {
    switch (error) {
        case ENOENT: return creating ? kErrorPathNotFound : kErrorFileNotFound;
        case ENOTDIR: return kErrorPathNotFound;
        case EEXIST: return kErrorFileExists;
        case EACCES:
        case EPERM:
        case EROFS:
        case EISDIR:
        case ETXTBSY: return kErrorAccessDenied;
        case EBADF: return kErrorInvalidHandle;
        case ENOSPC:
        case EDQUOT:
        case EFBIG: return kErrorDiskFull;
        case EINVAL: return kErrorInvalidParameter;
        default: return kErrorIo;
    }
}

bool fail(uint32_t error) {
    t_last_error = error;
    return false;
}

HandleState *state_of(int handle) {
    auto found = g_handles.find(handle);
    return found == g_handles.end() ? nullptr : &found->second;
}

bool known_handle(int handle) {
    std::lock_guard<std::mutex> guard(g_mutex);
    return state_of(handle) != nullptr;
}

// One open-file-description lock. EINVAL and ENOLCK mean the file system keeps no such
// locks (some network file systems); the caller then goes on without them.
int ofd_lock(int fd, short type, uint64_t offset, uint64_t length) {
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = static_cast<off_t>(offset);
    lock.l_len = static_cast<off_t>(length);
    while (::fcntl(fd, F_OFD_SETLK, &lock) != 0) {
        if (errno != EINTR) return errno;
    }
    return 0;
}

bool lock_refused(int error) { return error == EAGAIN || error == EACCES; }

}  // namespace

int file_open(const char *name, uint32_t access, uint32_t share, uint32_t disposition) {
    if (!name || !*name) {
        t_last_error = kErrorFileNotFound;
        return -1;
    }
    const std::string path = os_path_bytes(name);
    if (path.empty()) {
        t_last_error = kErrorFileNotFound;
        return -1;
    }
    int flags = O_CLOEXEC;
    bool creating = false;
    switch (disposition) {
        case kCreateNew: flags |= O_CREAT | O_EXCL; creating = true; break;
        case kCreateAlways: flags |= O_CREAT; creating = true; break;
        case kOpenExisting: break;
        default: t_last_error = kErrorInvalidParameter; return -1;
    }
    const bool want_write = (access & kFileWrite) != 0;
    const bool exclusive = share == kShareNone;

    int fd = -1;
    bool can_write = want_write;
    if (want_write) {
        fd = ::open(path.c_str(), flags | O_RDWR, 0666);
    } else {
        // An exclusive open must take a write lock on the share byte, which the kernel grants
        // only to a descriptor open for writing. A read-only exclusive open therefore asks for
        // writing underneath when the file allows it; the handle itself still refuses writes.
        if (exclusive) fd = ::open(path.c_str(), flags | O_RDWR, 0666);
        if (fd < 0) fd = ::open(path.c_str(), flags | O_RDONLY, 0666);
        can_write = false;
    }
    if (fd < 0) {
        t_last_error = error_from_errno(errno, creating);
        return -1;
    }
    struct stat st;
    if (::fstat(fd, &st) != 0 || S_ISDIR(st.st_mode)) {
        ::close(fd);
        t_last_error = kErrorAccessDenied;
        return -1;
    }
    const int mode = ::fcntl(fd, F_GETFL) & O_ACCMODE;
    const bool fd_writes = mode == O_RDWR || mode == O_WRONLY;

    // The share byte: exclusive opens hold it for writing, shared ones for reading, so that
    // one exclusive open keeps out every other open and is kept out by any.
    const short share_type = (exclusive && fd_writes) ? F_WRLCK : F_RDLCK;
    const int locked = ofd_lock(fd, share_type, kShareLockOffset, 1);
    if (locked != 0 && locked != EINVAL && locked != ENOLCK) {
        ::close(fd);
        t_last_error = lock_refused(locked) ? kErrorSharingViolation : error_from_errno(locked, false);
        return -1;
    }
    // Truncation waits until the share check has passed, so that a refused open leaves the
    // file as it was.
    if (disposition == kCreateAlways && st.st_size != 0) {
        if (!can_write || ::ftruncate(fd, 0) != 0) {
            ::close(fd);
            t_last_error = kErrorAccessDenied;
            return -1;
        }
    }
    {
        std::lock_guard<std::mutex> guard(g_mutex);
        HandleState &state = g_handles[fd];
        state = HandleState{};
        state.can_write = can_write;
        state.exclusive_lock = share_type == F_WRLCK;
    }
    t_last_error = kErrorNone;
    return fd;
}

bool file_seek(int handle, uint32_t position) {
    if (!known_handle(handle)) return fail(kErrorInvalidHandle);
    if (position > 0x7FFFFFFFu) return fail(kErrorNegativeSeek);
    return true;
}

bool file_read(int handle, uint32_t position, void *buffer, uint32_t length, uint32_t *got) {
    if (got) *got = 0;
    if (!known_handle(handle)) return fail(kErrorInvalidHandle);
    if (length && !buffer) return fail(kErrorInvalidParameter);
    ++g_counts.reads;
    uint32_t done = 0;
    while (done < length) {
        const ssize_t n = ::pread(handle, static_cast<char *>(buffer) + done, length - done,
                                  static_cast<off_t>(position) + done);
        if (n < 0) {
            if (errno == EINTR) continue;
            if (got) *got = done;
            return fail(error_from_errno(errno, false));
        }
        if (n == 0) break;
        done += static_cast<uint32_t>(n);
    }
    if (got) *got = done;
    t_last_error = kErrorNone;
    return true;
}

bool file_write(int handle, uint32_t position, const void *buffer, uint32_t length,
                uint32_t *written) {
    if (written) *written = 0;
    bool can_write = false;
    {
        std::lock_guard<std::mutex> guard(g_mutex);
        HandleState *state = state_of(handle);
        if (!state) return fail(kErrorInvalidHandle);
        can_write = state->can_write;
    }
    if (!can_write) return fail(kErrorAccessDenied);
    if (length && !buffer) return fail(kErrorInvalidParameter);
    ++g_counts.writes;
    uint32_t done = 0;
    while (done < length) {
        const ssize_t n = ::pwrite(handle, static_cast<const char *>(buffer) + done,
                                   length - done, static_cast<off_t>(position) + done);
        if (n < 0) {
            if (errno == EINTR) continue;
            if (written) *written = done;
            return fail(error_from_errno(errno, false));
        }
        if (n == 0) {
            if (written) *written = done;
            return fail(kErrorDiskFull);
        }
        done += static_cast<uint32_t>(n);
    }
    if (written) *written = done;
    t_last_error = kErrorNone;
    return true;
}

bool file_set_length(int handle, uint32_t length) {
    bool can_write = false;
    {
        std::lock_guard<std::mutex> guard(g_mutex);
        HandleState *state = state_of(handle);
        if (!state) return fail(kErrorInvalidHandle);
        can_write = state->can_write;
    }
    if (!can_write) return fail(kErrorAccessDenied);
    while (::ftruncate(handle, static_cast<off_t>(length)) != 0) {
        if (errno != EINTR) return fail(error_from_errno(errno, false));
    }
    t_last_error = kErrorNone;
    return true;
}

uint32_t file_size(int handle) {
    if (!known_handle(handle)) {
        t_last_error = kErrorInvalidHandle;
        return kInvalidFileSize;
    }
    struct stat st;
    if (::fstat(handle, &st) != 0) {
        t_last_error = error_from_errno(errno, false);
        return kInvalidFileSize;
    }
    t_last_error = kErrorNone;
    return static_cast<uint32_t>(static_cast<uint64_t>(st.st_size) & 0xFFFFFFFFu);
}

bool file_flush(int handle) {
    if (!known_handle(handle)) return fail(kErrorInvalidHandle);
    if (::fdatasync(handle) != 0 && errno != EINVAL && errno != EROFS) {
        return fail(error_from_errno(errno, false));
    }
    t_last_error = kErrorNone;
    return true;
}

bool file_close(int handle) {
    {
        std::lock_guard<std::mutex> guard(g_mutex);
        if (g_handles.erase(handle) == 0) return fail(kErrorInvalidHandle);
    }
    // A close that is interrupted has still released the descriptor on Linux.
    if (::close(handle) != 0 && errno != EINTR) return fail(error_from_errno(errno, false));
    t_last_error = kErrorNone;
    return true;
}

bool file_lock(int handle, uint32_t offset, uint32_t length) {
    std::lock_guard<std::mutex> guard(g_mutex);
    HandleState *state = state_of(handle);
    if (!state) return fail(kErrorInvalidHandle);
    ++g_counts.locks;
    if (length == 0) {
        t_last_error = kErrorNone;
        return true;
    }
    const uint64_t begin = offset, end = static_cast<uint64_t>(offset) + length;
    for (const auto &range : state->ranges) {
        const uint64_t held_begin = range.first, held_end = uint64_t{range.first} + range.second;
        if (begin < held_end && held_begin < end) return fail(kErrorLockViolation);
    }
    // A descriptor open only for reading can hold only read locks; those still keep every
    // writer's lock out, which is what matters to the engine.
    const int mode = ::fcntl(handle, F_GETFL) & O_ACCMODE;
    const short type = mode == O_RDONLY ? F_RDLCK : F_WRLCK;
    const int locked = ofd_lock(handle, type, begin, length);
    if (locked != 0 && locked != EINVAL && locked != ENOLCK) {
        return fail(lock_refused(locked) ? kErrorLockViolation : error_from_errno(locked, false));
    }
    state->ranges.emplace_back(offset, length);
    t_last_error = kErrorNone;
    return true;
}

bool file_unlock(int handle, uint32_t offset, uint32_t length) {
    std::lock_guard<std::mutex> guard(g_mutex);
    HandleState *state = state_of(handle);
    if (!state) return fail(kErrorInvalidHandle);
    ++g_counts.unlocks;
    if (length == 0) {
        t_last_error = kErrorNone;
        return true;
    }
    for (auto it = state->ranges.begin(); it != state->ranges.end(); ++it) {
        if (it->first == offset && it->second == length) {
            const int unlocked = ofd_lock(handle, F_UNLCK, offset, length);
            if (unlocked != 0 && unlocked != EINVAL && unlocked != ENOLCK) {
                return fail(error_from_errno(unlocked, false));
            }
            state->ranges.erase(it);
            t_last_error = kErrorNone;
            return true;
        }
    }
    return fail(kErrorNotLocked);
}

bool file_remove(const char *name) {
    if (!name || !*name) return fail(kErrorFileNotFound);
    const std::string path = os_path_bytes(name);
    if (::unlink(path.c_str()) != 0) return fail(error_from_errno(errno, false));
    t_last_error = kErrorNone;
    return true;
}

bool file_rename(const char *from, const char *to) {
    if (!from || !*from || !to || !*to) return fail(kErrorFileNotFound);
    const std::string source = os_path_bytes(from);
    const std::string target = os_path_bytes(to);
    if (std::rename(source.c_str(), target.c_str()) != 0) {
        return fail(error_from_errno(errno, false));
    }
    t_last_error = kErrorNone;
    return true;
}

uint32_t file_last_error() { return t_last_error; }

FileCallCounts file_call_counts() {
    return {g_counts.reads.load(), g_counts.writes.load(), g_counts.locks.load(),
            g_counts.unlocks.load()};
}

}  // namespace nqplat
