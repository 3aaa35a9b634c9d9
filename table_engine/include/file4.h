// The file layer: the engine's only way to touch a file.
//
// Open, create, read, write, length, flush, close, temporary files and byte-range locks with
// retries, all with 32-bit positions. Under it lies an optional write-back block cache
// (engine4_cache_start); beside it sequential readers and writers that keep their I/O on
// 1024-byte boundaries. docs/file-layer.md describes the locks and the cache.
#pragma once

#include <cstdint>

#include "engine4.h"

int file4_create(file4 *file, engine4 *engine, const char *name, int copy_name);
int file4_open(file4 *file, engine4 *engine, const char *name, int copy_name);
// Bytes read; 0 for an engine in error.
uint32_t file4_read(file4 *file, uint32_t position, void *buffer, uint32_t length);
// 0 when exactly length bytes were read, else -70.
int file4_read_all(file4 *file, uint32_t position, void *buffer, uint32_t length);
int file4_write(file4 *file, uint32_t position, const void *buffer, uint32_t length);
int32_t file4_length(file4 *file);
int file4_set_length(file4 *file, uint32_t length);
int file4_flush(file4 *file, int drop);
int file4_flush_keep_error(file4 *file);
int file4_refresh(file4 *file);
int file4_close(file4 *file);
int file4_replace(file4 *keep, file4 *from);
// A temporary file. name, when given, is a buffer of at least 13 bytes that receives the
// name "TEMPnnnn.TMP" and is kept by reference; without it the name is copied.
int file4_temp(file4 *file, engine4 *engine, char *name, int auto_remove);
int file4_cache_type(file4 *file, int mode, int type);
int file4_write_mode(file4 *file, int mode);
void file4_write_delay(file4 *file, int on);

// Byte-range locks. 50 is the locked result; read-only and exclusive files always succeed.
int file4_lock(file4 *file, uint32_t offset, uint32_t length);
int file4_unlock(file4 *file, uint32_t offset, uint32_t length);
// One lock round's wait: until the clock's second moves on.
void u4wait();

// The length of an open platform file; a length that cannot be had is the severe -950.
int32_t u4filelength(int32_t handle);

// The byte ranges of the locking protocol.
constexpr uint32_t lock4_file_offset = 0x40000000u;  // whole data file
constexpr uint32_t lock4_file_length = 0x3FFFFFFFu;
constexpr uint32_t lock4_append_offset = 0x7FFFFFFEu;  // append; index file; memo file
constexpr uint32_t lock4_record_base = 0x7FFFFFFEu;    // minus the record number (flag byte 28 set)
constexpr uint32_t lock4_position_base = 0x40000000u;  // plus the record's position (flag zero)

// Sequential reader and writer. The buffer's usable size is the size given rounded down to
// whole kilobytes (at most 63 of them); the first transfer ends on a 1024-byte boundary of
// the file. Without a buffer they fall through to file4_read and file4_write.
struct seq_reader {
    file4 *file;
    uint32_t position;   // file offset of the next transfer
    char *buffer;
    uint32_t next_read;  // bytes to ask for next
    uint32_t full_size;
    uint32_t got;        // bytes in the buffer
    uint32_t left;       // bytes of them not yet handed out
};

struct seq_writer {
    file4 *file;
    uint32_t position;    // file offset where the buffer goes
    char *buffer;
    uint32_t full_size;
    uint32_t write_size;  // size of the buffer's current window
    uint32_t room;        // bytes free in it
};

int file4_seq_read_init(seq_reader *reader, file4 *file, uint32_t position, char *buffer,
                        uint32_t size);
uint32_t file4_seq_read(seq_reader *reader, void *out, uint32_t length);
int file4_seq_read_all(seq_reader *reader, void *out, uint32_t length);
int file4_seq_write_init(seq_writer *writer, file4 *file, uint32_t position, char *buffer,
                         uint32_t size);
int file4_seq_write(seq_writer *writer, const void *data, uint32_t length);
int file4_seq_write_flush(seq_writer *writer);
int file4_seq_fill(seq_writer *writer, uint32_t count, char byte);

// The cache block that holds position (rounded down to its block) of the file, or null.
cache_block *file4_cache_find(file4 *file, uint32_t position);
// Drops the cache block holding position, unwritten even when changed.
void file4_cache_drop(file4 *file, uint32_t position);
