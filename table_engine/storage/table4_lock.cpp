// The locks of a table, in their order: the whole file, the memo file, the index files; one
// record (or a group of them) and the append byte beside those. docs/dbf-format.md gives the
// bytes.
#include <cstring>

#include "error4.h"
#include "file4.h"
#include "index4.h"
#include "table4.h"
#include "table4_internal.h"

using namespace table4_detail;

namespace table4_detail {

int flush_delayed(file4 *file) {
    if (file->handle < 0 || !file->do_buffer || !file->write_delay || file->is_exclusive) return 0;
    return file4_flush_keep_error(file);
}

int release_record_locks(table4 *table) {
    int result = 0;
    if (table->locks_held) flush_delayed(&table->file);
    for (uint32_t i = 0; table->locks && i < table->locks_held; ++i) {
        if (file4_unlock(&table->file, table4_record_lock_offset(table, table->locks[i]), 1) < 0) {
            result = -1;
        }
    }
    table->locks_held = 0;
    return result;
}

int release_index_locks(table4 *table) {
    int result = 0;
    for (void *walk = l4_first(&table->index_list); walk; walk = l4_next(&table->index_list, walk)) {
        index4 *index = static_cast<index4 *>(walk);
        if (index->is_locked && index4_unlock(index) < 0) result = -1;
    }
    return result;
}

}  // namespace table4_detail

int table4_lock_test(const table4 *table, int32_t number) {
    if (!table) return 0;
    if (table->file_locked || exclusive(table)) return 1;
    for (uint32_t i = 0; table->locks && i < table->locks_held; ++i) {
        if (table->locks[i] == number) return 1;
    }
    return 0;
}

int table4_lock(table4 *table, int32_t number) {
    if (in_error(table)) return -1;
    if (number < 1) return -1;
    if (table4_lock_test(table, number)) return 0;
    release_index_locks(table);
    release_record_locks(table);
    const int result = file4_lock(&table->file, table4_record_lock_offset(table, number), 1);
    if (result) return result;
    table->locks[0] = number;
    table->locks_held = 1;
    return 0;
}

int table4_lock_group(table4 *table, const int32_t *numbers, int32_t count) {
    if (in_error(table)) return -1;
    if (table->file_locked || exclusive(table)) return 0;
    if (count < 0 || (count > 0 && !numbers)) return -1;
    if (table4_unlock(table) < 0) return -1;
    engine4 *engine = table->engine;
    if (static_cast<uint32_t>(count) > table->locks_capacity) {
        int32_t *grown = static_cast<int32_t *>(mem4_alloc(static_cast<size_t>(count) * sizeof(int32_t)));
        if (!grown) {
            table->locks = &table->single_lock;
            table->locks_capacity = 1;
            return err4report(engine, -920, nullptr);
        }
        if (table->locks != &table->single_lock) mem4_free(table->locks);
        table->locks = grown;
        table->locks_capacity = static_cast<uint32_t>(count);
    }
    int32_t rounds = engine->lock_attempts == 0 ? 1 : engine->lock_attempts;
    for (;;) {
        int failure = 0;
        {
            // Each round tries every record once, so that two lockers of overlapping groups
            // cannot hold each other up for ever.
            HoldSetting once(engine->lock_attempts, 1);
            for (int32_t i = 0; i < count; ++i) {
                const int32_t number = numbers[i];
                bool held = false;
                for (uint32_t j = 0; j < table->locks_held; ++j) held = held || table->locks[j] == number;
                if (held) continue;
                if (number < 1) {
                    failure = -1;
                    break;
                }
                failure = file4_lock(&table->file, table4_record_lock_offset(table, number), 1);
                if (failure) break;
                table->locks[table->locks_held++] = number;
            }
        }
        if (failure == 0) return 0;
        release_record_locks(table);
        if (failure != result4_locked || rounds == 1) return failure;
        if (rounds > 1) --rounds;
        u4wait();
    }
}

int table4_lock_append(table4 *table) {
    if (in_error(table)) return -1;
    if (table->file_locked || table->append_locked || exclusive(table)) return 0;
    release_record_locks(table);
    const int result = file4_lock(&table->file, lock4_append_offset, 1);
    if (result) return result;
    engine4 *engine = table->engine;
    if (table->file.do_buffer && engine->cache_on) {
        // The header must be taken fresh: a changed block holding it would hide another's
        // append.
        cache_block *block = file4_cache_find(&table->file, 0);
        if (block && block->changed) file4_cache_drop(&table->file, 0);
    }
    table->append_locked = 1;
    return 0;
}

int table4_lock_file(table4 *table) {
    if (in_error(table)) return -1;
    if (table->file_locked || exclusive(table)) return 0;
    // The file's range covers the append byte and every record byte, which this handle may
    // not lock twice: its own smaller locks give way first.
    release_record_locks(table);
    if (table->append_locked) {
        flush_delayed(&table->file);
        file4_unlock(&table->file, lock4_append_offset, 1);
        table->append_locked = 0;
        table->record_count = -1;
    }
    const int result = file4_lock(&table->file, lock4_file_offset, lock4_file_length);
    if (result) return result;
    table->file_locked = 1;
    file4_refresh(&table->file);
    return 0;
}

int table4_lock_index(table4 *table) {
    if (in_error(table)) return -1;
    engine4 *engine = table->engine;
    int32_t rounds = engine->lock_attempts == 0 ? 1 : engine->lock_attempts;
    for (;;) {
        int failure = 0;
        {
            HoldSetting once(engine->lock_attempts, 1);
            for (void *walk = l4_first(&table->index_list); walk && failure == 0;
                 walk = l4_next(&table->index_list, walk)) {
                failure = index4_lock(static_cast<index4 *>(walk));
            }
        }
        if (failure == 0) return 0;
        release_index_locks(table);
        if (failure != result4_locked || rounds == 1) return failure;
        if (rounds > 1) --rounds;
        u4wait();
    }
}

int table4_lock_all(table4 *table) {
    if (in_error(table)) return -1;
    int result = table4_lock_file(table);
    if (result) return result;
    if (memo_open(table)) result = memo4_lock(&table->memo_file);
    if (result == 0) result = table4_lock_index(table);
    if (result) table4_unlock(table);
    return result;
}

int table4_locked_all_index(table4 *table) {
    if (!table) return 0;
    for (void *walk = l4_first(&table->index_list); walk; walk = l4_next(&table->index_list, walk)) {
        index4 *index = static_cast<index4 *>(walk);
        if (!index->file.is_exclusive && !index->is_locked) return 0;
    }
    return 1;
}

// Unlocking goes on after a failure: a lock must not outlive the error that stopped the work
// it was taken for.
int table4_unlock(table4 *table) {
    if (!table || !table->engine) return -1;
    engine4 *engine = table->engine;
    if (table->record && engine->error_code >= 0) table4_flush_record(table, 0);
    for (void *walk = l4_first(&table->index_list); walk; walk = l4_next(&table->index_list, walk)) {
        if (engine->error_code >= 0) index4_update(static_cast<index4 *>(walk));
    }
    return release_all_locks(table);
}

namespace table4_detail {

int release_all_locks(table4 *table) {
    engine4 *engine = table->engine;
    if (table->file.handle >= 0 && (table->file_locked || table->append_locked || table->locks_held)) {
        flush_delayed(&table->file);
    }
    if (table->file_locked) {
        file4_unlock(&table->file, lock4_file_offset, lock4_file_length);
        table->file_locked = 0;
        table->record_count = -1;
        table->record_number_old = -1;
        table->memo_validated = 0;
    }
    if (table->append_locked) {
        file4_unlock(&table->file, lock4_append_offset, 1);
        table->append_locked = 0;
        table->record_count = -1;
    }
    release_record_locks(table);
    if (memo_open(table)) memo4_unlock(&table->memo_file);
    release_index_locks(table);
    return engine->error_code < 0 ? -1 : 0;
}

}  // namespace table4_detail
