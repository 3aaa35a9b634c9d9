// Compressing a memo file: every value the records still name is copied into a new file of
// the same block size, in record order, and the records take the new block numbers; the new
// file then replaces the old one. Blocks that no record names are gone afterwards.
#include <cstring>

#include "date4.h"
#include "error4.h"
#include "file4.h"
#include "table4.h"
#include "table4_internal.h"

using namespace table4_detail;

namespace {

class CacheHold {
public:
    explicit CacheHold(engine4 *engine) : engine_(engine), was_on_(engine->cache_on != 0) {
        if (was_on_) engine4_cache_stop(engine);
    }
    ~CacheHold() {
        if (was_on_) engine4_cache_start(engine_);
    }
    CacheHold(const CacheHold &) = delete;
    CacheHold &operator=(const CacheHold &) = delete;

private:
    engine4 *engine_;
    bool was_on_;
};

// Copies the values every record names into the new memo file, in record order, and notes
// their new block numbers (0 for none), one a memo field. Nothing of the data file changes
// here, so a value that cannot be read leaves the table as it was.
int copy_values(table4 *table, memo4 *into, int32_t count, int32_t *numbers) {
    engine4 *engine = table->engine;
    BufferPair buffers(engine->big_buffer_size, table->record_width);
    seq_reader reader;
    int result = file4_seq_read_init(&reader, &table->file, table->header_length, buffers.reader(),
                                     buffers.size());
    char *work = nullptr;
    uint32_t work_size = 0;
    char *record = table->record_old;
    for (int32_t number = 1; result == 0 && number <= count; ++number) {
        result = file4_seq_read_all(&reader, record, table->record_width);
        for (uint32_t i = 0; result == 0 && i < table->memo_column_count; ++i) {
            const column4 *column = table->memo_columns[i].column;
            const int32_t block = c4atol(record + column->offset, static_cast<int>(column->length));
            const uint32_t length = memo4_length(&table->memo_file, block);
            int32_t new_block = 0;
            if (length == 0 || length == 0xFFFFFFFFu) {
                *numbers++ = 0;
                continue;
            }
            for (uint32_t offset = 0; result == 0 && offset < length;) {
                // One pass takes the whole value: the work buffer grows to the largest met.
                uint32_t got = work_size;
                char *before = work;
                result = memo4_read_part(&table->memo_file, block, &work, &got, offset, 0xFFFFFFFFu);
                if (work != before) work_size = work ? static_cast<uint32_t>(mem4_size(work) - 1) : 0;
                if (result) break;
                if (got == 0) {
                    result = -1;
                    break;
                }
                result = memo4_write_part(into, &new_block, work, length, 0, got);
                offset += got;
            }
            *numbers++ = new_block;
        }
    }
    mem4_free(work);
    return result;
}

// Puts the new block numbers into the records: a value that is gone gets the number 0.
int rewrite_numbers(table4 *table, int32_t count, const int32_t *numbers) {
    engine4 *engine = table->engine;
    BufferPair buffers(engine->big_buffer_size, table->record_width);
    seq_reader reader;
    seq_writer writer;
    int result = file4_seq_read_init(&reader, &table->file, table->header_length, buffers.reader(),
                                     buffers.size());
    if (result == 0) {
        result = file4_seq_write_init(&writer, &table->file, table->header_length, buffers.writer(),
                                      buffers.size());
    }
    char *record = table->record_old;
    for (int32_t number = 1; result == 0 && number <= count; ++number) {
        result = file4_seq_read_all(&reader, record, table->record_width);
        for (uint32_t i = 0; result == 0 && i < table->memo_column_count; ++i) {
            const column4 *column = table->memo_columns[i].column;
            c4ltoa(*numbers++, record + column->offset, static_cast<int>(column->length));
        }
        if (result == 0) result = file4_seq_write(&writer, record, table->record_width);
    }
    if (result == 0) result = file4_seq_write_flush(&writer);
    return result;
}

}  // namespace

int table4_memo_compress(table4 *table) {
    if (in_error(table)) return -1;
    if (!table->memo_column_count) return 0;
    if (!memo_open(table)) return -1;
    engine4 *engine = table->engine;
    int result = table4_update(table);
    if (result) return result;
    result = table4_lock_file(table);
    if (result) return result;
    result = memo4_lock(&table->memo_file);
    if (result) return result;

    memo4 fresh;
    std::memset(&fresh, 0, sizeof(fresh));
    fresh.file.handle = -1;
    {
        HoldSetting same_size(engine->memo_block_default, table->memo_file.block_size);
        result = memo4_create(&fresh, engine, table, nullptr);
    }
    if (result) {
        if (fresh.file.handle >= 0) file4_close(&fresh.file);
        return result;
    }
    const int32_t count = table4_count(table);
    int32_t *numbers = nullptr;
    if (count < 0) {
        result = -1;
    } else {
        numbers = static_cast<int32_t *>(mem4_alloc_or_error(
            engine, (static_cast<size_t>(count) * table->memo_column_count + 1) * sizeof(int32_t)));
        if (!numbers) result = -920;
    }
    {
        CacheHold cache(engine);
        if (result == 0) result = copy_values(table, &fresh, count, numbers);
        if (result == 0) result = rewrite_numbers(table, count, numbers);
        if (result) {
            // The old file stays as it was; the new one goes.
            const int32_t saved = engine->error_code;
            engine->error_code = 0;
            fresh.file.is_temp = 1;
            file4_close(&fresh.file);
            engine->error_code = saved;
        } else {
            result = file4_replace(&table->memo_file.file, &fresh.file);
        }
    }
    mem4_free(numbers);
    // The record in memory names the old blocks: it is read again.
    mark_memos(table);
    table->memo_validated = 0;
    if (result == 0 && table->record_number > 0 && !table->eof) {
        result = table4_read_record(table, table->record_number);
    }
    return result;
}
