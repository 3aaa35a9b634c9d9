// Appending records, and the record buffer's blank and delete flag.
#include <cstring>

#include "date4.h"
#include "error4.h"
#include "file4.h"
#include "index4.h"
#include "table4.h"
#include "table4_internal.h"

using namespace table4_detail;

int table4_append_start(table4 *table, int keep_memos) {
    if (in_error(table)) return -1;
    int result = table4_flush_record(table, 1);
    if (result) return result;
    if (keep_memos && table->record_number > 0 && table->memo_column_count) {
        // The values go with the copy: read them now, while their blocks are the record's.
        result = table4_lock(table, table->record_number);
        if (result) return result;
        if (read_record_bytes(table, table->record_number, table->record_old) != table->record_width) {
            if (table->engine->error_code < 0) return -1;
            return err4describe(table->engine, -70, table->file.name, nullptr, nullptr);
        }
        for (uint32_t i = 0; i < table->memo_column_count; ++i) {
            memo_column &memo = table->memo_columns[i];
            const column4 *column = memo.column;
            std::memcpy(table->record + column->offset, table->record_old + column->offset, column->length);
            result = column4_memo_read(memo.column);
            if (result < 0) return result;
            memo.needs_read = 0;
        }
    }
    for (uint32_t i = 0; i < table->memo_column_count; ++i) {
        const column4 *column = table->memo_columns[i].column;
        std::memset(table->record + column->offset, ' ', column->length);
    }
    // The record was written above; the values just read must not be marked unread again.
    if (!table->file_locked && !exclusive(table)) release_all_locks(table);
    table->record_number = 0;
    return 0;
}

namespace {

// Takes back the keys an append added to the tags before the failed one.
void remove_added_keys(table4 *table, tag4 *failed, int32_t record) {
    for (tag4 *tag = table4_tag_next(table, nullptr); tag && tag != failed;
         tag = table4_tag_next(table, tag)) {
        const char *key = nullptr;
        if (tag4_filter_true(tag) == 1 && tag4_key_calc(tag, &key) >= 0) tag4_remove(tag, key, record);
    }
}

// Writes each memo value of the new record to fresh blocks and puts their numbers in place.
int write_new_memos(table4 *table) {
    for (uint32_t i = 0; i < table->memo_column_count; ++i) {
        memo_column &memo = table->memo_columns[i];
        column4 *column = memo.column;
        memo.changed = 0;
        char *field = table->record + column->offset;
        if (!memo.needs_read && memo.length > 0) {
            int32_t block = 0;
            const int result = memo4_write(&table->memo_file, &block, memo.contents, memo.length);
            if (result) return result < 0 ? -1 : result;
            c4ltoa(block, field, static_cast<int>(column->length));
        } else {
            std::memset(field, ' ', column->length);
        }
    }
    return 0;
}

}  // namespace

int table4_append(table4 *table) {
    if (in_error(table)) return -1;
    engine4 *engine = table->engine;
    engine->usage_flags |= usage4_append;
    const bool had_append_lock = table->append_locked || table->file_locked || exclusive(table);
    int result = table4_lock_append(table);
    if (result) return result;
    auto give_back_append = [&]() {
        if (!had_append_lock && table->append_locked) {
            flush_delayed(&table->file);
            file4_unlock(&table->file, lock4_append_offset, 1);
            table->append_locked = 0;
            table->record_count = -1;
        }
    };

    table->record_count = -1;
    int32_t count;
    {
        FreshRead fresh(engine);
        count = table4_count(table);
        result = count < 0 ? -1 : table4_lock(table, count + 1);
    }
    if (result) {
        give_back_append();
        return result;
    }
    table->bof = 0;
    table->eof = 0;
    table->record_changed = 0;
    const int32_t number = count + 1;
    table->record_number = number;

    if (l4_first(&table->index_list)) {
        const bool were_locked = table4_locked_all_index(table) != 0;
        if (!were_locked) {
            result = table4_lock_index(table);
            if (result) {
                table->record_number = 0;
                give_back_append();
                return result;
            }
        }
        for (tag4 *tag = table4_tag_next(table, nullptr); tag; tag = table4_tag_next(table, tag)) {
            const int added = tag4_add_calc(tag, number);
            if (added < 0 || added == result4_unique) {
                const int32_t saved = engine->error_code;
                engine->error_code = 0;
                remove_added_keys(table, tag, number);
                engine->error_code = saved;
                table->record_number = 0;
                give_back_append();
                if (!were_locked) release_index_locks(table);
                return added;
            }
        }
        if (!were_locked) release_index_locks(table);
    }

    result = write_new_memos(table);
    if (result) {
        table->record_number = 0;
        give_back_append();
        return result;
    }

    // The record and the end-of-file byte behind it in one write.
    table->record[table->record_width] = static_cast<char>(kFileEnd);
    result = write_record_bytes(table, number, table->record, table->record_width + 1);
    table->record[table->record_width] = '\0';
    if (result) {
        table->record_number = 0;
        give_back_append();
        return result;
    }
    table->file_changed = 1;
    table->record_number = number;
    table->record_changed = 0;
    if (table->file_locked || table->append_locked || exclusive(table)) table->record_count = number;
    result = table4_update_header(table, 1, 1);
    give_back_append();
    return result;
}

int table4_append_blank(table4 *table) {
    if (in_error(table)) return -1;
    const int result = table4_append_start(table, 0);
    if (result) return result;
    table4_blank(table);
    return table4_append(table);
}

void table4_blank(table4 *table) {
    if (!table || !table->record) return;
    std::memset(table->record, ' ', table->record_width);
    table->record_changed = 1;
}

void table4_delete(table4 *table) {
    if (!table || !table->record) return;
    if (table->record[0] != '*') {
        table->record[0] = '*';
        table->record_changed = 1;
    }
}

void table4_recall(table4 *table) {
    if (!table || !table->record) return;
    if (table->record[0] != ' ') {
        table->record[0] = ' ';
        table->record_changed = 1;
    }
}

int table4_deleted(const table4 *table) {
    if (!table || !table->record) return 0;
    return table->record[0] != ' ';
}
