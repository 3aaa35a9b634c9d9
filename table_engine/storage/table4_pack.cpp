// Removing records for good: pack drops the deleted ones, zap a range. Both move the records
// that stay down through a sequential reader and writer on the same file, the writer never
// ahead of the reader, and cut the file behind a new end byte.
#include <cstring>

#include "error4.h"
#include "file4.h"
#include "index4.h"
#include "table4.h"
#include "table4_internal.h"

using namespace table4_detail;

namespace table4_detail {

BufferPair::BufferPair(uint32_t wanted, uint32_t floor) {
    for (uint32_t size = wanted; size > floor && size >= 1024;) {
        reader_ = static_cast<char *>(mem4_alloc(size));
        writer_ = static_cast<char *>(mem4_alloc(size));
        if (reader_ && writer_) {
            size_ = size;
            return;
        }
        mem4_free(reader_);
        mem4_free(writer_);
        reader_ = writer_ = nullptr;
        if (size <= 2048) break;
        size -= 2048;
    }
}

BufferPair::~BufferPair() {
    mem4_free(reader_);
    mem4_free(writer_);
}

}  // namespace table4_detail

namespace {

// The state of the table after its records moved: no current record, the file cut behind
// the end byte that follows the last record kept.
int finish_move(table4 *table, int32_t kept) {
    table->record_count = kept;
    table->record_number = -1;
    table->record_number_old = -1;
    std::memset(table->record, ' ', table->record_width);
    table->record_changed = 0;
    const uint64_t end = table4_record_position(table, kept + 1) + 1;
    if (end > 0x7FFFFFFFu) return -1;
    int result = file4_set_length(&table->file, static_cast<uint32_t>(end));
    // The header tells the new count at once: a reader after the lock goes must not look
    // for records that are gone.
    if (result == 0) result = table4_update_header(table, 0, 1);
    return result;
}

// Copies records from..to (numbers) to the place of record at, keeping those the filter
// allows; then writes the end byte. The number kept comes back in *kept.
template <typename Keep>
int move_records(table4 *table, int32_t from, int32_t to, int32_t at, int32_t *kept, Keep keep) {
    engine4 *engine = table->engine;
    BufferPair buffers(engine->big_buffer_size, table->record_width);
    seq_reader reader;
    seq_writer writer;
    const uint64_t read_at = table4_record_position(table, from);
    const uint64_t write_at = table4_record_position(table, at);
    if (read_at > 0x7FFFFFFFu || write_at > 0x7FFFFFFFu) return -1;
    int result = file4_seq_read_init(&reader, &table->file, static_cast<uint32_t>(read_at),
                                     buffers.reader(), buffers.size());
    if (result == 0) {
        result = file4_seq_write_init(&writer, &table->file, static_cast<uint32_t>(write_at),
                                      buffers.writer(), buffers.size());
    }
    int32_t count = 0;
    for (int32_t number = from; result == 0 && number <= to; ++number) {
        result = file4_seq_read_all(&reader, table->record, table->record_width);
        if (result == 0 && keep(table->record)) {
            result = file4_seq_write(&writer, table->record, table->record_width);
            ++count;
        }
    }
    const char end = static_cast<char>(kFileEnd);
    if (result == 0) result = file4_seq_write(&writer, &end, 1);
    if (result == 0) result = file4_seq_write_flush(&writer);
    *kept = count;
    return result;
}

// Locks and the cache as pack and zap need them; the cache is restarted by the object's end.
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

int after_move(table4 *table, int result) {
    if (result) return result;
    table->bof = table->eof = table->record_count == 0;
    result = table4_reindex(table);
    const int header = table4_update_header(table, 1, 1);
    return result ? result : header;
}

}  // namespace

int table4_pack_data(table4 *table) {
    if (in_error(table)) return -1;
    int result = table4_lock_file(table);
    if (result) return result;
    result = table4_flush(table);
    if (result) return result;
    table->file_changed = 1;
    const int32_t count = table4_count(table);
    if (count < 0) return -1;
    int32_t kept = 0;
    result = move_records(table, 1, count, 1, &kept, [](const char *record) { return record[0] == ' '; });
    if (result) return result;
    return finish_move(table, kept);
}

int table4_pack(table4 *table) {
    if (in_error(table)) return -1;
    int result = table4_lock_all(table);
    if (result) return result;
    CacheHold cache(table->engine);
    result = table4_pack_data(table);
    return after_move(table, result);
}

int table4_zap(table4 *table, int32_t first, int32_t last) {
    if (in_error(table) || first < 0 || last < 0) return -1;
    int result = table4_lock_all(table);
    if (result) return result;
    CacheHold cache(table->engine);
    if (first == 0) first = 1;
    result = table4_flush(table);
    if (result) return result;
    const int32_t count = table4_count(table);
    if (count < 0) return -1;
    if (count < first || last < first) return 0;
    if (last > count) last = count;
    table->file_changed = 1;
    int32_t kept = 0;
    result = move_records(table, last + 1, count, first, &kept, [](const char *) { return true; });
    if (result == 0) result = finish_move(table, first - 1 + kept);
    return after_move(table, result);
}
