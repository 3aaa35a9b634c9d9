// What the parts of the data and memo file code share among themselves.
#pragma once

#include <cstdint>

#include "engine4.h"
#include "file4.h"
#include "table4.h"

namespace table4_detail {

constexpr unsigned char kDescriptorEnd = 13;  // stands where the next descriptor would begin
constexpr unsigned char kFileEnd = 26;        // behind the last record
constexpr uint32_t kHeaderSize = 32;
constexpr uint32_t kDescriptorSize = 32;
constexpr int kNameBuffer = 258;  // a file name with its extension and NUL

inline bool in_error(const table4 *table) {
    return !table || !table->engine || table->engine->error_code < 0;
}

inline bool memo_open(const table4 *table) { return table->memo_file.file.handle >= 0; }

// Exclusive files count as locked in every lock decision.
inline bool exclusive(const table4 *table) { return table->file.is_exclusive != 0; }

// A setting of the engine held at a value for a scope.
class HoldSetting {
public:
    HoldSetting(int32_t &slot, int32_t value) : slot_(slot), saved_(slot) { slot = value; }
    ~HoldSetting() { slot_ = saved_; }
    HoldSetting(const HoldSetting &) = delete;
    HoldSetting &operator=(const HoldSetting &) = delete;

private:
    int32_t &slot_;
    int32_t saved_;
};

// read_fresh raised for a scope.
class FreshRead {
public:
    explicit FreshRead(engine4 *engine, bool raise = true) : engine_(engine), saved_(engine->read_fresh) {
        if (raise) engine->read_fresh = 1;
    }
    ~FreshRead() { engine_->read_fresh = saved_; }
    FreshRead(const FreshRead &) = delete;
    FreshRead &operator=(const FreshRead &) = delete;

private:
    engine4 *engine_;
    uint8_t saved_;
};

// The reader's and the writer's buffer of pack, zap and memo compression: big_buffer_size
// each at first, falling by 2048 while either cannot be had and the size stays above the
// record width. Both null when none could be had: the sequential I/O then goes unbuffered.
class BufferPair {
public:
    BufferPair(uint32_t wanted, uint32_t floor);
    ~BufferPair();
    BufferPair(const BufferPair &) = delete;
    BufferPair &operator=(const BufferPair &) = delete;
    char *reader() const { return reader_; }
    char *writer() const { return writer_; }
    uint32_t size() const { return size_; }

private:
    char *reader_ = nullptr;
    char *writer_ = nullptr;
    uint32_t size_ = 0;
};

// Writes what the cache holds back for a shared file that delays its writes: a lock about
// to be given up must not leave changed blocks behind it.
int flush_delayed(file4 *file);

// Every memo value of the table no longer belongs to the current record.
void mark_memos(table4 *table);
// Gives up the record locks (after writing what they kept back).
int release_record_locks(table4 *table);
// Gives up every lock of the table (file, append, records, memo, index files) without
// writing the record first.
int release_all_locks(table4 *table);
// Gives up the locks of the index files.
int release_index_locks(table4 *table);
// The number of the record whose bytes are read into buffer; its bytes must be exactly
// record_width, else the count read is returned.
uint32_t read_record_bytes(table4 *table, int32_t number, char *buffer);
// Writes the record buffer at its place, with a record width of bytes.
int write_record_bytes(table4 *table, int32_t number, const char *buffer, uint32_t length);

// Everything a table holds in memory, given back; the file stays as it is.
void free_table_memory(table4 *table);

}  // namespace table4_detail
