// The file layer: open, create, read, write, length, flush, close, replace, temporary files,
// and the switches of the cache for one file.
#include <cstdio>
#include <cstring>

#include "date4.h"
#include "error4.h"
#include "file4.h"
#include "file4_internal.h"
#include "plat_file.h"

using namespace file4_detail;

namespace {

void clear_record(file4 *file) {
    std::memset(file, 0, sizeof(*file));
    file->handle = -1;
    file->hash_start = -1;
    file->known_length = -1;
}

bool in_error(const file4 *file) {
    return !file || !file->engine || file->engine->error_code < 0;
}

// "File Name:" and the name, the words of the open, create, read and length-setting reports.
int report_file(engine4 *engine, int code, const file4 *file) {
    return err4describe(engine, code, "File Name:", file ? file->name : nullptr, nullptr);
}

int open_or_create(file4 *file, engine4 *engine, const char *name, int copy_name, bool create) {
    if (!file || !engine) return -1;
    if (engine->error_code < 0) return -1;
    engine->error_code = 0;
    clear_record(file);
    file->engine = engine;

    uint32_t access = nqplat::kFileRead | nqplat::kFileWrite;
    if (engine->read_only == 1) {
        access = nqplat::kFileRead;
        file->is_read_only = 1;
    }
    const uint32_t share = engine->exclusive ? nqplat::kShareNone : nqplat::kShareReadWrite;
    const uint32_t disposition = !create         ? nqplat::kOpenExisting
                                 : engine->safety ? nqplat::kCreateNew
                                                  : nqplat::kCreateAlways;
    const int handle = nqplat::file_open(name, access, share, disposition);
    if (handle < 0) {
        const uint8_t read_only = file->is_read_only;
        clear_record(file);
        file->engine = engine;
        file->is_read_only = read_only;
        if (create) {
            if (!engine->err_create) {
                engine->error_code = 60;
                return 60;
            }
            return err4describe(engine, -20, "File Name:", name, nullptr);
        }
        if (!engine->err_open) {
            engine->error_code = 70;
            return 70;
        }
        return err4describe(engine, -60, "File Name:", name, nullptr);
    }
    file->handle = handle;
    if (copy_name) {
        const size_t length = std::strlen(name) + 1;
        char *copy = static_cast<char *>(mem4_alloc(length));
        if (!copy) {
            nqplat::file_close(handle);
            clear_record(file);
            file->engine = engine;
            return err4report(engine, -920, nullptr);
        }
        std::memcpy(copy, name, length);
        file->name = copy;
        file->owns_name = 1;
    } else {
        file->name = const_cast<char *>(name);
    }
    file->is_exclusive = static_cast<uint8_t>(engine->exclusive & 0xFF);
    file->on_disk = 1;
    return 0;
}

// The operating system's part of a write.
int write_to_disk(file4 *file, uint32_t position, const void *buffer, uint32_t length) {
    engine4 *engine = file->engine;
    if (!file->on_disk) {
        // A temporary file that lived in the cache gets its file now; read_fresh tells
        // file4_temp to keep the cache's fields of the record.
        const uint8_t fresh = engine->read_fresh;
        engine->read_fresh = 1;
        const int made = file4_temp(file, engine, file->name, 1);
        engine->read_fresh = fresh;
        if (made != 0) return made < 0 ? made : -1;
    }
    cache_flush_run_of(file, position, length);
    uint32_t written = 0;
    if (!nqplat::file_seek(file->handle, position) ||
        !nqplat::file_write(file->handle, position, buffer, length, &written) ||
        written != length) {
        return err4describe(engine, -120, file->name, nullptr, nullptr);
    }
    if (engine->flush_on_write) file4_flush_keep_error(file);
    return 0;
}

}  // namespace

namespace file4_detail {

int flush_file(file4 *file, int drop) {
    if (file->do_buffer) {
        const int result = cache_flush_file(file, drop);
        if (result) return result;
    }
    if (file->handle >= 0 && file->on_disk && !file->is_read_only) {
        if (!nqplat::file_flush(file->handle)) return err4report(file->engine, -630, nullptr);
    }
    return 0;
}

int cache_control_off(file4 *file) {
    if (file->cache_type == 0) return 0;
    int result = 0;
    file->write_mode = 0;
    if (file->do_buffer && flush_file(file, 1) != 0) {
        result = err4report(file->engine, -630, nullptr);
    }
    file->write_delay = 0;
    l4_remove(&file->engine->cache_files, file);
    file->cache_type = 0;
    file->do_buffer = 0;
    return result;
}

}  // namespace file4_detail

int file4_create(file4 *file, engine4 *engine, const char *name, int copy_name) {
    return open_or_create(file, engine, name, copy_name, true);
}

int file4_open(file4 *file, engine4 *engine, const char *name, int copy_name) {
    return open_or_create(file, engine, name, copy_name, false);
}

uint32_t file4_read(file4 *file, uint32_t position, void *buffer, uint32_t length) {
    if (in_error(file) || !buffer || length == 0) return 0;
    engine4 *engine = file->engine;
    uint32_t got = 0;
    if (file->do_buffer) {
        got = cache_read(file, position, static_cast<char *>(buffer), length);
    } else {
        if (!file->on_disk) return 0;  // a temporary file with nothing written yet
        if (!nqplat::file_seek(file->handle, position)) {
            report_file(engine, -70, file);
            return 0;
        }
        if (!nqplat::file_read(file->handle, position, buffer, length, &got)) {
            report_file(engine, -70, file);
            return 0;
        }
    }
    if (got > length) {
        report_file(engine, -70, file);
        return 0;
    }
    return got;
}

int file4_read_all(file4 *file, uint32_t position, void *buffer, uint32_t length) {
    if (in_error(file)) return -1;
    const uint32_t got = file4_read(file, position, buffer, length);
    if (file->engine->error_code < 0) return file->engine->error_code;  // reported already
    if (got != length) return report_file(file->engine, -70, file);
    return 0;
}

int file4_write(file4 *file, uint32_t position, const void *buffer, uint32_t length) {
    if (in_error(file)) return -1;
    engine4 *engine = file->engine;
    if (file->is_read_only) {
        return err4describe(engine, -930, "Attempt to write to a read-only file", nullptr, nullptr);
    }
    if (length == 0) return 0;
    if (!buffer) return err4report(engine, -930, nullptr);
    if (file->do_buffer) {
        const uint32_t taken = cache_write(file, position, static_cast<const char *>(buffer), length);
        if (taken != length) return err4describe(engine, -120, file->name, nullptr, nullptr);
    }
    if (!(file->do_buffer && file->write_mode && file->write_delay)) {
        return write_to_disk(file, position, buffer, length);
    }
    return 0;
}

int32_t u4filelength(int32_t handle) {
    const uint32_t size = nqplat::file_size(handle);
    if (size == 0xFFFFFFFFu || size == 0xFFFFFFFEu) err4severe(-950, "u4filelength()");
    return static_cast<int32_t>(size);
}

int32_t file4_length(file4 *file) {
    if (in_error(file)) return -1;
    if (!file->on_disk) {
        // A temporary file that so far lives in the cache.
        return (file->known_length >= 0) ? file->known_length : 0;
    }
    if (file->do_buffer && file->known_length >= 0) return file->known_length;
    const int32_t length = u4filelength(file->handle);
    if (length < 0) return err4describe(file->engine, -30, file->name, nullptr, nullptr);
    return length;
}

int file4_set_length(file4 *file, uint32_t length) {
    if (in_error(file)) return -1;
    engine4 *engine = file->engine;
    // A positive result left in the engine blocks truncation, where other operations go on.
    if (engine->error_code > 0 && engine->error_code < 200) return -1;
    if (file->is_read_only) {
        return err4describe(engine, -930, "Attempt to change file length of a read-only file",
                            nullptr, nullptr);
    }
    if (file->do_buffer) {
        cache_cut(file, length);
        if (file->write_delay) {
            // The disk keeps its length until the next flush, but never keeps bytes past a
            // cut: a later extension must read as zeros.
            if (file->on_disk && file->handle >= 0 &&
                static_cast<int64_t>(nqplat::file_size(file->handle)) > length &&
                !nqplat::file_set_length(file->handle, length)) {
                return err4describe(engine, -40, "File Name:", file->name, nullptr);
            }
            file->known_length = static_cast<int32_t>(length);
            return 0;
        }
    }
    if (!file->on_disk) {
        file->known_length = static_cast<int32_t>(length);
        return 0;
    }
    if (!nqplat::file_seek(file->handle, length)) {
        return err4describe(engine, -40, file->name, nullptr, nullptr);
    }
    if (!nqplat::file_set_length(file->handle, length)) {
        return err4describe(engine, -40, "File Name:", file->name, nullptr);
    }
    if (file->known_length >= 0) file->known_length = static_cast<int32_t>(length);
    return 0;
}

int file4_flush(file4 *file, int drop) {
    if (in_error(file)) return -1;
    return flush_file(file, drop);
}

int file4_flush_keep_error(file4 *file) {
    if (!file || !file->engine) return -1;
    engine4 *engine = file->engine;
    const int32_t saved = engine->error_code;
    engine->error_code = 0;
    const int result = file4_flush(file, 0);
    if (saved != 0) engine->error_code = saved;
    return result;
}

int file4_refresh(file4 *file) {
    if (in_error(file)) return -1;
    if (!file->do_buffer || file->is_exclusive || file->is_read_only) return 0;
    const int result = flush_file(file, 1);
    file->known_length = -1;
    return result;
}

int file4_close(file4 *file) {
    if (!file) return 0;
    engine4 *engine = file->engine;
    if (engine) {
        // What the cache holds goes out even after an earlier failure.
        const int32_t saved = engine->error_code;
        engine->error_code = 0;
        if (file->on_disk && file->handle >= 0) {
            cache_control_off(file);
            nqplat::file_close(file->handle);  // a failed close goes unnoticed, and stays so
            if (file->is_temp) nqplat::file_remove(file->name);
        } else if (!file->on_disk && file->cache_type != 0) {
            // Only the cache holds it: length 0 and out of the cache, no file to touch.
            cache_forget(file);
            file->known_length = 0;
            file->do_buffer = 0;
            cache_control_off(file);
        }
        if (saved != 0) engine->error_code = saved;
    } else if (file->handle >= 0) {
        nqplat::file_close(file->handle);
    }
    if (file->owns_name) mem4_free(file->name);
    clear_record(file);
    return (engine && engine->error_code < 0) ? -1 : 0;
}

int file4_temp(file4 *file, engine4 *engine, char *name, int auto_remove) {
    if (!file || !engine) return -1;
    if (engine->error_code < 0) return -1;
    if (auto_remove && engine->cache_on && !engine->read_fresh) {
        // The data lives in the cache until it overflows; the file is made then.
        clear_record(file);
        file->is_temp = 1;
        file->on_disk = 0;
        file->is_exclusive = 1;
        file->engine = engine;
        file->name = name;
        file4_cache_type(file, 1, 3);
        file4_write_mode(file, 1);
        return 0;
    }
    const bool restore_cache = engine->read_fresh != 0;
    const file4 saved = *file;

    char own_name[16];
    char *buffer = name ? name : own_name;
    int result = 1;
    for (int attempt = 0; attempt < 100 && result > 0; ++attempt) {
        u4delay_sec();
        const int64_t seconds = u4clock() % 10000;
        std::snprintf(buffer, 13, "TEMP%04d.TMP", static_cast<int>(seconds < 0 ? -seconds : seconds));
        const int32_t err_create = engine->err_create, exclusive = engine->exclusive,
                      safety = engine->safety;
        engine->err_create = 0;
        engine->exclusive = 1;
        engine->safety = 1;  // a name in use is the next attempt, never an overwrite
        result = file4_create(file, engine, buffer, name == nullptr);
        engine->err_create = err_create;
        engine->exclusive = exclusive;
        engine->safety = safety;
    }
    if (result != 0) {
        if (restore_cache) {
            *file = saved;  // the cache's record must stay whole
        } else {
            clear_record(file);
            file->engine = engine;
        }
        if (result < 0) return -1;
        return err4describe(engine, -20, "Temporary Working File", nullptr, nullptr);
    }
    if (auto_remove) {
        file->is_temp = 1;
        if (engine->cache_on) {
            if (restore_cache) {
                file->link = saved.link;
                file->hash_start = saved.hash_start;
                file->known_length = saved.known_length;
                file->cache_type = saved.cache_type;
                file->write_delay = saved.write_delay;
                file->do_buffer = saved.do_buffer;
                file->write_mode = saved.write_mode;
            } else {
                file4_cache_type(file, 1, 3);
                file4_write_mode(file, 1);
            }
        }
    }
    return 0;
}

int file4_replace(file4 *keep, file4 *from) {
    if (in_error(keep) || in_error(from)) return -1;
    engine4 *engine = keep->engine;
    if (keep->is_read_only || from->is_read_only) {
        return err4describe(engine, -930, "Attempt to replace to a read-only file", nullptr, nullptr);
    }
    const uint8_t cache_type = keep->cache_type, write_mode = keep->write_mode;
    if (keep->is_exclusive) {
        // Both leave the cache first, from with its data written out.
        cache_control_off(keep);
        cache_control_off(from);
        if (engine->error_code < 0) return -1;
        bool replaced = false;
        if (!from->on_disk) {
            // Nothing of it ever reached a file: keep is emptied.
            if (file4_set_length(keep, 0) != 0) return -1;
            file4_close(from);
            replaced = true;
        } else if (nqplat::file_rename(from->name, keep->name)) {
            // from's file now stands under keep's name; keep's old file is gone with the
            // rename. from's handle closes without removing anything, and keep opens the
            // file again with its flags.
            from->is_temp = 0;
            file4_close(from);
            char *keep_name = keep->name;
            const uint8_t keep_owned = keep->owns_name;
            nqplat::file_close(keep->handle);
            keep->handle = -1;
            keep->owns_name = 0;
            const int32_t exclusive = engine->exclusive, read_only = engine->read_only;
            engine->exclusive = 1;
            engine->read_only = 0;
            const int opened = file4_open(keep, engine, keep_name, 0);
            engine->exclusive = exclusive;
            engine->read_only = read_only;
            if (opened != 0) {
                if (keep_owned) mem4_free(keep_name);
                return opened;
            }
            keep->owns_name = keep_owned;
            replaced = true;
        }
        if (replaced) {
            if (cache_type) {
                file4_cache_type(keep, 1, cache_type);
                file4_write_mode(keep, write_mode);
            }
            return engine->error_code < 0 ? -1 : 0;
        }
        // The two names lie on different file systems: the content is copied instead.
    }

    int result = file4_set_length(keep, 0);
    if (result) return result;
    const bool cache_was_on = engine->cache_on != 0;
    if (cache_was_on) engine4_cache_stop(engine);
    uint32_t size = engine->big_buffer_size;
    char *buffer = nullptr;
    while (!buffer && size >= 2048) {
        buffer = static_cast<char *>(mem4_alloc(size));
        if (!buffer) size -= 2048;
    }
    if (!buffer) {
        size = 100;
        buffer = static_cast<char *>(mem4_alloc(size));
    }
    if (!buffer) {
        if (cache_was_on) engine4_cache_start(engine);
        return err4report(engine, -920, nullptr);
    }
    const int32_t length = file4_length(from);
    for (uint32_t position = 0; result == 0 && length > 0 && position < static_cast<uint32_t>(length);) {
        const uint32_t want = static_cast<uint32_t>(length) - position < size
                                  ? static_cast<uint32_t>(length) - position
                                  : size;
        const uint32_t got = file4_read(from, position, buffer, want);
        if (got == 0) break;
        result = file4_write(keep, position, buffer, got);
        position += got;
    }
    from->is_temp = 1;
    file4_close(from);
    mem4_free(buffer);
    if (cache_was_on) engine4_cache_start(engine);
    if (cache_type && keep->cache_type == 0) {
        file4_cache_type(keep, 1, cache_type);
        file4_write_mode(keep, write_mode);
    }
    if (result) return result;
    return engine->error_code < 0 ? -1 : 0;
}

int file4_cache_type(file4 *file, int mode, int type) {
    if (in_error(file)) return -1;
    engine4 *engine = file->engine;
    if (mode == -1) mode = (file->is_exclusive || file->is_read_only) ? 1 : 0;
    if (mode) {
        if (file->cache_type != 0) return 0;
        if (engine->cache_on) {
            file->known_length = -1;
            cache_place(engine, file);
            file->do_buffer = 1;
        } else {
            file->hash_start = -1;
        }
        l4_add(&engine->cache_files, file);
        file->cache_type = static_cast<uint8_t>(type);
        return file4_write_mode(file, engine->optimize_write_default);
    }
    return cache_control_off(file);
}

int file4_write_mode(file4 *file, int mode) {
    if (in_error(file)) return -1;
    if (mode == file->write_mode) return 0;
    int result = 0;
    switch (mode) {
        case -1:
            if (file->is_exclusive) {
                file->write_mode = 1;
                if (file->do_buffer) file->write_delay = 1;
            } else {
                if (file->do_buffer) result = flush_file(file, 0);
                file->write_mode = 0;
                file->write_delay = 0;
            }
            return result;
        case 0:
            if (file->do_buffer) result = flush_file(file, 0);
            file->write_mode = 0;
            file->write_delay = 0;
            return result;
        case 1:
            file->write_mode = 1;
            file->write_delay = (file->is_exclusive && file->do_buffer) ? 1 : 0;
            return 0;
        default:
            return -1;
    }
}

void file4_write_delay(file4 *file, int on) {
    if (!file || file->write_mode != 1) return;
    file->write_delay = on ? 1 : 0;
}
