// Moving over the records: to a number, to the end, to the top and the bottom, and skipping,
// in record number order or in the order of the selected tag.
#include <cstdint>
#include <cstring>

#include "error4.h"
#include "file4.h"
#include "index4.h"
#include "table4.h"
#include "table4_internal.h"

using namespace table4_detail;

namespace {

// The record as it now stands in the file becomes the one this table holds locked.
void take_as_old(table4 *table) {
    if (table4_lock_test(table, table->record_number)) {
        std::memcpy(table->record_old, table->record, table->record_width);
        table->record_number_old = table->record_number;
        table->memo_validated = 1;
    } else {
        table->memo_validated = 0;
    }
}

// A tag entry may name a record that another process appended after this table last saw the
// count; such a record is not in this table's view yet.
bool beyond_view(table4 *table, int32_t record) {
    return record > table->known_count && record > table4_count(table);
}

}  // namespace

int table4_read_record(table4 *table, int32_t number) {
    if (in_error(table)) return -1;
    if (number <= 0) return 0;
    engine4 *engine = table->engine;
    engine->usage_flags |= usage4_record_read;
    const uint32_t got = read_record_bytes(table, number, table->record);
    if (got != table->record_width) {
        std::memset(table->record, ' ', table->record_width);
        table->record_number = -1;
        if (engine->error_code < 0) return -1;  // the file layer has reported it
        if (engine->err_go) return err4describe(engine, -70, table->file.name, nullptr, nullptr);
        return result4_missing;
    }
    table->record_number = number;
    return 0;
}

int table4_go(table4 *table, int32_t number) {
    if (in_error(table)) return -1;
    engine4 *engine = table->engine;
    int result = table4_flush_record(table, 0);
    if (result) return result;
    const bool locked = table4_lock_test(table, number) != 0;
    if (!locked) {
        table4_unlock(table);
        if (engine->read_lock) {
            result = table4_lock(table, number);
            if (result) return result;
        }
    }
    const bool fresh = !table->memo_validated && table->file.do_buffer && !table->file_locked &&
                       table4_lock_test(table, number);
    {
        FreshRead read_fresh(engine, fresh);
        result = table4_read_record(table, number);
    }
    if (result) return result;
    table->bof = 0;
    table->eof = 0;
    take_as_old(table);
    return 0;
}

int table4_go_eof(table4 *table) {
    if (in_error(table)) return -1;
    const int result = table4_flush_record(table, 0);
    if (result) return result;
    const int32_t count = table4_count(table);
    if (count < 0) return -1;
    table->record_number = count + 1;
    table->eof = 1;
    if (table->record_number == 1) table->bof = 1;
    std::memset(table->record, ' ', table->record_width);
    return result4_eof;
}

int table4_top(table4 *table) {
    if (in_error(table)) return -1;
    engine4 *engine = table->engine;
    if (tag4 *tag = table4_tag_selected(table)) {
        int result = table4_flush_record(table, 1);
        if (result) return result;
        index4_version_check(tag->index, 0, 1);
        result = tag4_top(tag);
        if (result < 0) return -1;
        if (tag4_eof(tag)) {
            table->bof = 1;
            return table4_go_eof(table);
        }
        int32_t record = tag4_record(tag);
        if (beyond_view(table, record)) {
            if (tag4_skip(tag, 1) != 1) {
                table->bof = 1;
                return table4_go_eof(table);
            }
            record = tag4_record(tag);
            if (record < 1 || record > table->known_count) return -1;
        }
        return table4_go(table, record);
    }
    int result;
    {
        HoldSetting quiet(engine->err_go, 0);
        result = table4_go(table, 1);
    }
    if (result < 1) return result;
    if (table4_count(table) > 0) return table4_go(table, 1);
    table->bof = 1;
    return table4_go_eof(table);
}

int table4_bottom(table4 *table) {
    if (in_error(table)) return -1;
    if (tag4 *tag = table4_tag_selected(table)) {
        int result = table4_flush_record(table, 1);
        if (result) return result;
        index4_version_check(tag->index, 0, 1);
        result = tag4_bottom(tag);
        if (result < 0) return -1;
        if (tag4_eof(tag)) {
            table->bof = 1;
            return table4_go_eof(table);
        }
        int32_t record = tag4_record(tag);
        if (beyond_view(table, record)) {
            if (tag4_skip(tag, -1) != -1) {
                table->bof = 1;
                return table4_go_eof(table);
            }
            record = tag4_record(tag);
            if (record < 1 || record > table->known_count) return -1;
        }
        return table4_go(table, record);
    }
    const int32_t count = table4_count(table);
    if (count <= 0) {
        if (count < 0) return -1;
        table->bof = 1;  // an empty table is at its beginning as well
        return table4_go_eof(table);
    }
    return table4_go(table, count);
}

namespace {

int skip_natural(table4 *table, int32_t count) {
    engine4 *engine = table->engine;
    table->bof = 0;
    const int64_t target = static_cast<int64_t>(table->record_number) + count;
    engine->usage_flags |= usage4_natural_skip;
    if (target > 0 && target <= INT32_MAX) {
        int result;
        {
            HoldSetting quiet(engine->err_go, 0);
            result = table4_go(table, static_cast<int32_t>(target));
        }
        if (result != result4_missing) return result;
    }
    const int32_t records = table4_count(table);
    if (records < 0) return -1;
    if (target >= 1 && target <= records) return table4_go(table, static_cast<int32_t>(target));
    if (target < 1) {
        // Before the first record: on record 1 (or still at the end of an empty table) with
        // the end-of-file flag as it was.
        const int32_t eof = table->eof;
        const int result = records >= 1 ? table4_go(table, 1) : table4_go_eof(table);
        if (result < 0) return result;
        table->eof = eof;
        table->bof = 1;
        return result4_bof;
    }
    const int result = table4_go_eof(table);
    if (result < 0) return result;
    if (records == 0 && count < 0) {
        table->bof = 1;
        return result4_bof;
    }
    return result;
}

int skip_tag(table4 *table, tag4 *tag, int32_t count) {
    engine4 *engine = table->engine;
    engine->usage_flags |= usage4_tag_skip;
    if (table->eof) {
        if (count > 0) return table4_go_eof(table);
        const int result = table4_bottom(table);
        if (result < 0) return result;
        if (table->eof) return result4_bof;
        ++count;  // the bottom is one step back already
    }
    table->bof = 0;
    int result = table4_flush_record(table, 0);
    if (result) return result;
    index4_version_check(tag->index, 1, 1);
    if (count == 0) return 0;

    const bool descending = tag->descending != 0;
    if (tag4_record(tag) != table->record_number) {
        // The tag lost its place: find the current record's entry again.
        result = table4_read_record(table, table->record_number);
        if (result) return result;
        const char *key = nullptr;
        if (tag4_key_calc(tag, &key) < 0) return -1;
        const int found = tag4_go(tag, key, table->record_number);
        if (found < 0) return -1;
        // Standing behind the key already is one step forward in the file's order, which is
        // a step backward for a descending tag.
        if (found > 0) {
            const bool one_less = descending ? count < 0 : count > 0;
            if (one_less) count += count < 0 ? 1 : -1;
        }
    }
    const int32_t steps = descending ? -count : count;
    int32_t taken = count == 0 ? 0 : tag4_skip(tag, steps);
    if (descending) taken = -taken;
    if (count > 0 && taken < count) return table4_go_eof(table);
    if (tag4_eof(tag)) {
        table->bof = 1;
        return table4_go_eof(table);
    }
    int32_t record = tag4_record(tag);
    if (beyond_view(table, record)) {
        const int32_t step = count > 0 ? 1 : -1;
        if (tag4_skip(tag, descending ? -step : step) == 0) {
            if (count > 0) return table4_go_eof(table);
            table->bof = 1;
            return table4_go_eof(table);
        }
        record = tag4_record(tag);
    }
    result = table4_go(table, record);
    if (result) return result;
    if (count < 0 && taken > count) {
        table->bof = 1;
        return result4_bof;
    }
    return 0;
}

}  // namespace

int table4_skip(table4 *table, int32_t count) {
    if (in_error(table)) return -1;
    engine4 *engine = table->engine;
    if (table->record_number < 1) {
        if (engine->err_skip) {
            err4describe(engine, -910, "Skip must be made from valid record number", nullptr, nullptr);
        }
        return -1;
    }
    if (tag4 *tag = table4_tag_selected(table)) return skip_tag(table, tag, count);
    return skip_natural(table, count);
}
