// Writing the current record: its memo values first, the keys of every tag next, the record's
// bytes last.
#include <cstring>

#include "error4.h"
#include "file4.h"
#include "index4.h"
#include "table4.h"
#include "table4_internal.h"

using namespace table4_detail;

namespace {

constexpr int kKeyRoom = 256;

struct TagChange {
    char old_key[kKeyRoom];
    char new_key[kKeyRoom];
    int old_length;
    int new_length;
    int old_true;
    int new_true;
};

// The key and filter truth of one tag over the record that the buffer pointer shows.
int key_of(tag4 *tag, char *key, int *length, int *passes) {
    const char *calc = nullptr;
    const int calc_length = tag4_key_calc(tag, &calc);
    if (calc_length < 0 || calc_length >= kKeyRoom) return -1;
    std::memcpy(key, calc, static_cast<size_t>(calc_length));
    *length = calc_length;
    *passes = tag4_filter_true(tag);
    return *passes < 0 ? -1 : 0;
}

// Puts the old keys back into the tags before failed: the new key out, the old one in.
void undo_tags(table4 *table, tag4 *failed, int32_t number) {
    for (tag4 *tag = table4_tag_next(table, nullptr); tag && tag != failed;
         tag = table4_tag_next(table, tag)) {
        char *saved_record = table->record;
        TagChange change;
        if (key_of(tag, change.new_key, &change.new_length, &change.new_true) != 0) continue;
        table->record = table->record_old;
        const int old_ok = key_of(tag, change.old_key, &change.old_length, &change.old_true);
        table->record = saved_record;
        if (old_ok != 0) continue;
        if (change.old_true == change.new_true && change.old_length == change.new_length &&
            std::memcmp(change.old_key, change.new_key, static_cast<size_t>(change.new_length)) == 0) {
            continue;
        }
        if (change.new_true) tag4_remove(tag, change.new_key, number);
        if (change.old_true) tag4_add(tag, change.old_key, number);
    }
}

}  // namespace

int table4_write_keys(table4 *table, int32_t number) {
    if (in_error(table)) return -1;
    engine4 *engine = table->engine;
    engine->usage_flags |= usage4_record_write;
    int result = table4_lock(table, number);
    if (result) {
        table->record_number_old = -1;
        return result;
    }
    if (!l4_first(&table->index_list)) {
        table->record_number_old = -1;
        return 0;
    }
    {
        FreshRead fresh(engine, table->file.do_buffer != 0);
        if (read_record_bytes(table, number, table->record_old) != table->record_width) {
            table->record_number_old = -1;
            if (engine->error_code < 0) return -1;
            return err4describe(engine, -70, table->file.name, nullptr, nullptr);
        }
    }
    table->record_number_old = number;
    if (std::memcmp(table->record, table->record_old, table->record_width) == 0) {
        table->record_number_old = -1;
        return 0;
    }

    const bool were_locked = table4_locked_all_index(table) != 0;
    bool locked_here = false;
    result = 0;
    for (tag4 *tag = table4_tag_next(table, nullptr); tag; tag = table4_tag_next(table, tag)) {
        TagChange change;
        char *saved_record = table->record;
        if (key_of(tag, change.new_key, &change.new_length, &change.new_true) != 0) {
            result = -1;
            break;
        }
        table->record = table->record_old;
        const int old_ok = key_of(tag, change.old_key, &change.old_length, &change.old_true);
        table->record = saved_record;
        if (old_ok != 0) {
            result = -1;
            break;
        }
        if (change.old_true == change.new_true && change.old_length == change.new_length &&
            std::memcmp(change.old_key, change.new_key, static_cast<size_t>(change.new_length)) == 0) {
            continue;
        }
        if (!were_locked && !locked_here) {
            result = table4_lock_index(table);
            if (result) break;
            locked_here = true;
        }
        if (change.old_true) tag4_remove(tag, change.old_key, number);
        if (change.new_true) {
            const int added = tag4_add(tag, change.new_key, number);
            if (added == result4_unique || added == -340) {
                // The key cannot stand: every tag gets its old key back, and the refusal
                // comes back into force afterwards.
                const int32_t saved = engine->error_code;
                engine->error_code = 0;
                if (change.old_true) tag4_add(tag, change.old_key, number);
                undo_tags(table, tag, number);
                engine->error_code = saved;
                result = added;
                break;
            }
            if (added < 0) {
                result = added;
                break;
            }
        }
    }
    table->record_number_old = -1;
    if (locked_here) release_index_locks(table);
    return result;
}

int table4_write_data(table4 *table, int32_t number) {
    if (in_error(table)) return -1;
    const int result = table4_lock(table, number);
    if (result) return result;
    table->record_changed = 0;
    table->file_changed = 1;
    return write_record_bytes(table, number, table->record, table->record_width);
}

int table4_validate_memos(table4 *table) {
    if (in_error(table)) return -1;
    if (table->memo_validated) return 0;
    engine4 *engine = table->engine;
    int result = table4_lock(table, table->record_number);
    if (result) return result;
    {
        // Another process may have given a memo value a new place since this record was read.
        FreshRead fresh(engine, table->file.do_buffer != 0);
        if (read_record_bytes(table, table->record_number, table->record_old) != table->record_width) {
            if (engine->error_code < 0) return -1;
            return err4describe(engine, -70, table->file.name, nullptr, nullptr);
        }
    }
    for (uint32_t i = 0; i < table->memo_column_count; ++i) {
        const column4 *column = table->memo_columns[i].column;
        std::memcpy(table->record + column->offset, table->record_old + column->offset, column->length);
    }
    table->memo_validated = 1;
    return 0;
}

int table4_write(table4 *table, int32_t number) {
    if (in_error(table) || number < 1) return -1;
    const int32_t changed = table->record_changed;
    table->record_changed = 0;
    int result = 0;
    if (table->memo_column_count) {
        result = table4_validate_memos(table);
        if (result) {
            table->record_changed = changed;
            return result;
        }
    }
    result = table4_write_keys(table, number);
    table->record_changed = changed;
    if (result) return result;
    int outcome = 0;
    for (uint32_t i = 0; i < table->memo_column_count; ++i) {
        const int flushed = column4_memo_flush(table->memo_columns[i].column);
        if (flushed < 0) return -1;
        if (flushed > 0) outcome = flushed;
    }
    result = table4_write_data(table, number);
    return result ? result : outcome;
}

int table4_flush_record(table4 *table, int unlock) {
    if (in_error(table)) return -1;
    if (table->record_number > 0 && !table->eof) {
        if (table->record_changed) {
            const int result = table4_write(table, table->record_number);
            if (result) return result;
        }
        mark_memos(table);
        table->record_number_old = -1;
        if (unlock) release_record_locks(table);
    } else {
        mark_memos(table);
        table->record_changed = 0;
    }
    return 0;
}
