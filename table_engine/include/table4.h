// The records of an open table: the data file (table4) with its fields (column4), its memo
// file (memo4) and the fields' memo values (memo_column), its compound index files (index4)
// with their tags (tag4). Each embeds its file4 by value.
//
// The data file's format and its record locks are described in docs/dbf-format.md, the memo
// file's in docs/fpt-format.md.
#pragma once

#include <cstdint>

#include "engine4.h"

struct memo_column;

// The ordinary outcomes of table operations (besides 0 for success and the negative errors).
constexpr int result4_after = 2;        // a seek stopped after the sought key
constexpr int result4_eof = 3;          // end of file
constexpr int result4_bof = 4;          // beginning of file
constexpr int result4_missing = 5;      // record or entry missing
constexpr int result4_unique = 20;      // unique key refused
constexpr int result4_unique_skip = 25; // unique key refused, quietly
constexpr int result4_locked = 50;      // another holds the lock
constexpr int result4_no_create = 60;   // a create failed with its reports off
constexpr int result4_no_open = 70;     // an open failed with its reports off
constexpr int result4_no_tag = 80;      // a seek on a table without a tag

struct memo4 {
    file4 file;
    uint16_t block_size;
    table4 *table;
    int32_t file_locked;
};

struct column4 {
    char name[11];      // up to 10 characters, upper case, NUL-ended
    uint32_t length;
    uint32_t decimals;
    int32_t type;       // the upper-cased type letter
    uint32_t offset;    // from the start of the record (the delete flag is byte 0)
    table4 *table;
    memo_column *memo;  // for the types M, G and B; null for the others
};

// The value of a memo field as the table holds it in memory.
struct memo_column {
    int32_t changed;     // assigned since it was read
    int32_t needs_read;  // contents do not belong to the current record yet
    char *contents;      // allocated + 1 bytes, or the shared empty text when allocated is 0
    uint32_t length;
    uint32_t allocated;
    column4 *column;
};

// The create input and the column description of an open table; a null name ends an array.
struct column_info {
    const char *name;
    int32_t type;  // the type letter
    int32_t length;
    int32_t decimals;
};

// The input of an index create; a null name ends an array.
struct tag_info {
    const char *name;
    const char *expression;
    const char *filter;
    int32_t unique;
    int32_t descending;
};

typedef int (*tag4_compare_fn)(const void *a, const void *b, uint32_t length);
typedef int (*tag4_convert_text_fn)(tag4 *tag, char *key, const char *text, int length);
typedef int (*tag4_convert_double_fn)(tag4 *tag, char *key, double value);

struct tag4 {
    l4link_st link;
    expr4 *expression;
    expr4 *filter;
    int32_t unique_policy;
    index4 *index;
    tag4_compare_fn compare;
    tag4_convert_text_fn convert_text;
    tag4_convert_double_fn convert_double;
    engine4 *engine;
    char name[11];
    uint8_t filter_seen;
    l4list blocks;  // the path from the root to the current leaf
    // The image of the header's first 16 bytes.
    int32_t root;
    int32_t free_list;
    uint32_t version;
    uint16_t key_length;
    uint8_t type;
    uint8_t signature;
    uint16_t descending;
    uint16_t filter_position;
    uint16_t filter_length;
    uint16_t expression_position;
    uint16_t expression_length;
    int32_t header_position;
    int32_t root_changed;
    l4list saved_blocks;
    char pad_byte;
};

struct index4 {
    l4link_st link;
    file4 file;
    l4list tag_list;
    table4 *table;
    engine4 *engine;
    tag4 header_tag;  // the tag of tags
    int32_t file_end;
    pool4 *block_pool;
    int32_t is_locked;
    uint32_t version_seen;
};

struct table4 {
    l4link_st link;
    // The header image, written back as one block.
    uint8_t version;
    uint8_t update_date[3];
    int32_t record_count;  // -1 unless the count may be trusted (file or append lock, exclusive)
    uint16_t header_length;
    char *record;      // record_width + 1 bytes: the current record and a zero byte
    char *record_old;  // the record as it stands in the file, while it is locked
    uint32_t record_width;
    int32_t record_changed;
    int32_t record_number;
    int32_t record_number_old;
    file4 file;
    char alias[11];
    uint8_t memo_validated;
    engine4 *engine;
    uint8_t has_production;
    column4 *columns;
    uint32_t column_count;
    memo_column *memo_columns;
    uint32_t memo_column_count;
    int32_t single_lock;
    int32_t *locks;  // the record numbers locked, at first &single_lock
    uint32_t locks_capacity;
    uint32_t locks_held;
    int32_t file_locked;
    int32_t append_locked;
    int32_t file_changed;
    l4list index_list;
    int32_t bof;
    int32_t eof;
    memo4 memo_file;   // handle -1 when the table has no memo file open
    int32_t known_count;  // the last count read from the file
};

// ---------------------------------------------------------------------------------------
// Data files.

// Create, open, close. A create writes the header, the descriptors and the end bytes, makes
// the memo file when a field needs one, and opens the result; tags, when given, become the
// table's production index.
table4 *table4_create(engine4 *engine, const char *name, const column_info *columns,
                      const tag_info *tags);
table4 *table4_open(engine4 *engine, const char *name);
int table4_close(table4 *table);

// The header: (1,1) writes version, date, count and header length; (1,0) version and date;
// (0,1) count and header length; (0,0) nothing.
int table4_update_header(table4 *table, int write_date, int write_count);
// The record count: kept while it may be trusted, else read from the file; -1 on failure.
int32_t table4_count(table4 *table);

// Moving.
int table4_go(table4 *table, int32_t number);
int table4_go_eof(table4 *table);
int table4_top(table4 *table);
int table4_bottom(table4 *table);
int table4_skip(table4 *table, int32_t count);
int table4_read_record(table4 *table, int32_t number);
int table4_eof(const table4 *table);
int table4_bof(const table4 *table);
int32_t table4_recno(const table4 *table);

// Seeking through the selected tag (or the first tag of the first index file); 80 without one.
int table4_seek(table4 *table, const char *text);
int table4_seek_n(table4 *table, const char *text, int length);
int table4_seek_double(table4 *table, double value);

// Writing. table4_write is the record write the library exports as nq_d4write.
int table4_write(table4 *table, int32_t number);
int table4_write_keys(table4 *table, int32_t number);
int table4_write_data(table4 *table, int32_t number);
int table4_validate_memos(table4 *table);
int table4_flush_record(table4 *table, int unlock);

// Appending.
int table4_append_start(table4 *table, int keep_memos);
int table4_append(table4 *table);
int table4_append_blank(table4 *table);

// The record buffer and its delete flag.
void table4_blank(table4 *table);
void table4_delete(table4 *table);
void table4_recall(table4 *table);
int table4_deleted(const table4 *table);

// Removing records.
int table4_pack(table4 *table);
int table4_pack_data(table4 *table);
int table4_zap(table4 *table, int32_t first, int32_t last);

// Seeing what other processes wrote, and writing out what is held.
int table4_refresh(table4 *table);
int table4_refresh_record(table4 *table);
int table4_flush(table4 *table);
int table4_flush_data(table4 *table);
int table4_update(table4 *table);

// Locks, in their order: file, memo, index; records and the append byte beside them.
int table4_lock(table4 *table, int32_t number);
int table4_lock_group(table4 *table, const int32_t *numbers, int32_t count);
int table4_lock_append(table4 *table);
int table4_lock_file(table4 *table);
int table4_lock_index(table4 *table);
int table4_lock_all(table4 *table);
int table4_unlock(table4 *table);
// Whether this table holds the record: by file lock, exclusivity or a record lock.
int table4_lock_test(const table4 *table, int32_t number);
// The byte that locks one record, by the scheme that header byte 28 chooses.
uint32_t table4_record_lock_offset(const table4 *table, int32_t number);
// The file position of a record (64-bit, so that a corrupt header cannot wrap it).
uint64_t table4_record_position(const table4 *table, int32_t number);

// The cache mode and the write mode (-1, 0 or 1, else -1) for the data file, every index
// file, and the memo file if it is open.
int table4_cache_mode(table4 *table, int mode);
int table4_write_mode(table4 *table, int mode);

// The fields of an open table, as a create would take them: column_count + 1 rows, the last
// with a null name. The names point into the table. Released with mem4_free; null when
// memory is out (-920).
column_info *table4_columns_out(table4 *table);

// ---------------------------------------------------------------------------------------
// Columns.

// By name (at most 10 characters, any case); a miss is -210 with err_field set.
column4 *table4_column(table4 *table, const char *name);
// By number, from 1; null outside.
column4 *table4_column_j(table4 *table, int32_t number);
// The field's bytes in the record (no NUL behind them).
char *column4_ptr(const column4 *column);

// Assigning: text is cut at the field's width or padded with blanks; numbers are written
// right-justified by the field's decimals; dates as CCYYMMDD; truth as T or F. A memo field
// takes text as its memo value. Each marks the record changed.
void column4_assign(column4 *column, const char *text);
void column4_assign_n(column4 *column, const char *text, uint32_t length);
void column4_assign_double(column4 *column, double value);
void column4_assign_long(column4 *column, int32_t value);
void column4_assign_date(column4 *column, const char *date);     // eight characters
void column4_assign_julian(column4 *column, int32_t julian_day);  // 0 is the blank date
void column4_assign_logical(column4 *column, int truth);

// Reading: the text is copied with a NUL behind it and cut to the size given (size counts
// the NUL); the result is the number of characters copied. A memo field reads its value.
uint32_t column4_text(const column4 *column, char *out, uint32_t size);
double column4_double(const column4 *column);
int32_t column4_long(const column4 *column);
int32_t column4_julian(const column4 *column);  // of a date field; 0 blank, -1 invalid
int column4_true(const column4 *column);         // Y and T, in either case

// ---------------------------------------------------------------------------------------
// Memo files.

int memo4_create(memo4 *memo, engine4 *engine, table4 *table, const char *name);
int memo4_open(memo4 *memo, table4 *table, const char *name);
// Reads a value into *buffer_slot; *length_slot is the buffer's capacity on entry and the
// value's length on return. A buffer too small is freed (unless its capacity is 0) and
// replaced by one of the value's length + 1 bytes.
int memo4_read(memo4 *memo, int32_t block, char **buffer_slot, uint32_t *length_slot);
int memo4_read_part(memo4 *memo, int32_t block, char **buffer_slot, uint32_t *length_slot,
                    uint32_t offset, uint32_t limit);
// The length of the value at a block: 0 below block 1, 0xFFFFFFFF when it cannot be read.
uint32_t memo4_length(memo4 *memo, int32_t block);
int memo4_write(memo4 *memo, int32_t *block_slot, const char *buffer, uint32_t length);
int memo4_write_part(memo4 *memo, int32_t *block_slot, const char *buffer, uint32_t total,
                     uint32_t offset, uint32_t chunk);
int memo4_lock(memo4 *memo);
int memo4_unlock(memo4 *memo);
// The blocks a value of length bytes occupies: (block size + length + 7) / block size.
uint32_t memo4_blocks_needed(uint32_t block_size, uint32_t length);

// Memo values of a field.
uint32_t column4_memo_len(column4 *column);
char *column4_memo_ptr(column4 *column);
int column4_memo_load(column4 *column);
int column4_memo_read(column4 *column);
int column4_memo_assign(column4 *column, const char *text, uint32_t length);
int column4_memo_set_len(column4 *column, uint32_t length);
void column4_memo_free(column4 *column);
void column4_memo_reset(column4 *column);
int column4_memo_flush(column4 *column);
// The shared empty text of memo values that hold no buffer of their own.
extern char memo4_empty[1];

// Rewrites the memo file with every value in fresh blocks, leaving out the abandoned ones.
int table4_memo_compress(table4 *table);
