// Byte-range locks with the retry rounds of lock_attempts.
#include "error4.h"
#include "file4.h"
#include "plat_file.h"

int file4_lock(file4 *file, uint32_t offset, uint32_t length) {
    if (!file || !file->engine) return -1;
    // This process alone has the file, or nobody may change it: nothing to keep out.
    if (file->is_read_only || file->is_exclusive) return 0;
    engine4 *engine = file->engine;
    if (engine->error_code < 0) return -1;
    int32_t attempts = engine->lock_attempts;
    if (attempts == 0) attempts = 1;
    for (;;) {
        if (nqplat::file_lock(file->handle, offset, length)) {
            file4_write_delay(file, 1);
            return 0;
        }
        if (nqplat::file_last_error() != nqplat::kErrorLockViolation) {
            return err4describe(engine, -50, file->name, nullptr, nullptr);
        }
        if (attempts == 1) return 50;  // locked by another: handed upwards, no error
        if (attempts > 1) --attempts;  // -1 tries for ever
        u4wait();
    }
}

// Unlocking goes on after a failure: a lock must not outlive the error that stopped the work
// it was taken for.
int file4_unlock(file4 *file, uint32_t offset, uint32_t length) {
    if (!file || !file->engine) return -1;
    if (file->is_read_only || file->is_exclusive) return 0;
    engine4 *engine = file->engine;
    // A shared file delays its writes only while it holds a lock.
    file4_write_delay(file, 0);
    if (!nqplat::file_unlock(file->handle, offset, length)) {
        return err4describe(engine, -110, file->name, nullptr, nullptr);
    }
    return 0;
}
