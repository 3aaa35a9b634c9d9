// A table at the level of its files: the cache and write modes of its data, index and memo
// files, and closing, flushing and unlocking what it holds open.
#include "engine4.h"
#include "file4.h"
#include "table4.h"

namespace {

bool memo_open(const table4 *table) { return table->memo_file.file.handle >= 0; }

// Applies an operation to the data file, every index file and the open memo file; -1 when any
// of them fails.
template <typename Operation>
int each_file(table4 *table, Operation operation) {
    int result = 0;
    if (operation(&table->file, 1) < 0) result = -1;
    for (void *walk = l4_first(&table->index_list); walk; walk = l4_next(&table->index_list, walk)) {
        if (operation(&static_cast<index4 *>(walk)->file, 2) < 0) result = -1;
    }
    if (memo_open(table) && operation(&table->memo_file.file, 3) < 0) result = -1;
    return result;
}

uint32_t record_lock_offset(const table4 *table, int32_t record) {
    if (table->has_production) return lock4_record_base - static_cast<uint32_t>(record);
    return lock4_position_base + table->header_length +
           static_cast<uint32_t>(record - 1) * table->record_width;
}

}  // namespace

int table4_cache_mode(table4 *table, int mode) {
    if (!table || mode < -1 || mode > 1) return -1;
    return each_file(table, [mode](file4 *file, int type) {
        return file4_cache_type(file, mode, type);
    });
}

int table4_write_mode(table4 *table, int mode) {
    if (!table || mode < -1 || mode > 1) return -1;
    return each_file(table, [mode](file4 *file, int) { return file4_write_mode(file, mode); });
}

int table4_flush(table4 *table) {
    if (!table || !table->engine || table->engine->error_code < 0) return -1;
    return each_file(table, [](file4 *file, int) { return file4_flush(file, 0); });
}

int table4_unlock(table4 *table) {
    if (!table || !table->engine) return -1;
    engine4 *engine = table->engine;
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
    for (uint32_t i = 0; table->locks && i < table->locks_held; ++i) {
        file4_unlock(&table->file, record_lock_offset(table, table->locks[i]), 1);
    }
    table->locks_held = 0;
    if (memo_open(table) && table->memo_file.file_locked) {
        file4_unlock(&table->memo_file.file, lock4_append_offset, 1);
        table->memo_file.file_locked = 0;
    }
    for (void *walk = l4_first(&table->index_list); walk; walk = l4_next(&table->index_list, walk)) {
        index4 *index = static_cast<index4 *>(walk);
        if (index->is_locked) {
            file4_unlock(&index->file, lock4_append_offset, 1);
            index->is_locked = 0;
        }
    }
    return engine->error_code < 0 ? -1 : 0;
}

int table4_close(table4 *table) {
    if (!table || !table->engine) return -1;
    engine4 *engine = table->engine;
    // The close goes through after an earlier failure; the last failure of its steps stands.
    engine->error_code = 0;
    int32_t last_error = 0;
    auto note = [&]() {
        if (engine->error_code != 0) last_error = engine->error_code;
        engine->error_code = 0;
    };
    if (table->file.handle >= 0) {
        table4_unlock(table);
        note();
    }
    while (void *walk = l4_first(&table->index_list)) {
        index4 *index = static_cast<index4 *>(walk);
        l4_remove(&table->index_list, index);
        file4_close(&index->file);
        note();
        pool4_give_back(engine->index_pool, index);
    }
    l4_remove(&engine->table_list, table);
    file4_close(&table->file);
    note();
    mem4_free(table->record);
    mem4_free(table->record_old);
    mem4_free(table->columns);
    mem4_free(table->memo_columns);
    if (memo_open(table)) {
        file4_close(&table->memo_file.file);
        note();
    }
    if (table->locks && table->locks != &table->single_lock) mem4_free(table->locks);
    pool4_give_back(engine->table_pool, table);
    engine->error_code = last_error;
    return last_error;
}
