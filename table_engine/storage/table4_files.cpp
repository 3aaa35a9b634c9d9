// A table at the level of its files: the cache and write modes of its data, index and memo
// files; writing out what it holds; seeing again what other processes wrote.
#include <cstring>

#include "engine4.h"
#include "file4.h"
#include "index4.h"
#include "table4.h"
#include "table4_internal.h"

using namespace table4_detail;

namespace {

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

int table4_flush_data(table4 *table) {
    if (in_error(table)) return -1;
    int result = 0;
    if (table->record) result = table4_flush_record(table, 0);
    if (result) return result;
    if (table->file.handle >= 0) result = file4_flush(&table->file, 0);
    if (result) return result;
    if (memo_open(table)) result = file4_flush(&table->memo_file.file, 0);
    return result;
}

int table4_flush(table4 *table) {
    if (in_error(table)) return -1;
    int result = table4_flush_data(table);
    for (void *walk = l4_first(&table->index_list); walk; walk = l4_next(&table->index_list, walk)) {
        const int flushed = index4_flush(static_cast<index4 *>(walk));
        if (flushed && !result) result = flushed;
    }
    return result;
}

int table4_update(table4 *table) {
    if (in_error(table)) return -1;
    int result = 0;
    if (table->record && table4_flush_record(table, 0) != 0) result = -1;
    for (void *walk = l4_first(&table->index_list); walk; walk = l4_next(&table->index_list, walk)) {
        if (index4_update(static_cast<index4 *>(walk)) < 0) result = -1;
    }
    return result;
}

int table4_refresh(table4 *table) {
    if (in_error(table)) return -1;
    return each_file(table, [](file4 *file, int) { return file4_refresh(file); });
}

int table4_refresh_record(table4 *table) {
    if (in_error(table)) return -1;
    if (table->file_locked || exclusive(table) || table->record_number < 1) return 0;
    if (table->record_number > table4_count(table)) return 0;
    engine4 *engine = table->engine;
    mark_memos(table);
    if (memo_open(table)) file4_refresh(&table->memo_file.file);
    table->record_changed = 0;
    int result;
    {
        FreshRead fresh(engine, table->file.do_buffer != 0);
        result = table4_read_record(table, table->record_number);
    }
    if (result) return result;
    table->bof = 0;
    table->eof = 0;
    if (table4_lock_test(table, table->record_number)) {
        std::memcpy(table->record_old, table->record, table->record_width);
        table->record_number_old = table->record_number;
        table->memo_validated = 1;
    }
    return 0;
}
