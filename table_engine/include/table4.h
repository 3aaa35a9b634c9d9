// The records of an open table: the data file (table4), its memo file (memo4), its compound
// index files (index4) with their tags (tag4). Each embeds its file4 by value.
#pragma once

#include <cstdint>

#include "engine4.h"

struct memo_column;

struct memo4 {
    file4 file;
    uint16_t block_size;
    table4 *table;
    int32_t file_locked;
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
    int32_t record_count;
    uint16_t header_length;
    char *record;
    char *record_old;
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
    int32_t *locks;
    uint32_t locks_capacity;
    uint32_t locks_held;
    int32_t file_locked;
    int32_t append_locked;
    int32_t file_changed;
    l4list index_list;
    int32_t bof;
    int32_t eof;
    memo4 memo_file;
    int32_t known_count;
};

// The cache mode and the write mode (-1, 0 or 1, else -1) for the data file, every index
// file, and the memo file if it is open.
int table4_cache_mode(table4 *table, int mode);
int table4_write_mode(table4 *table, int mode);

// Closing, flushing and unlocking a table, as engine4_close_all, engine4_flush_all and
// engine4_unlock_all run them over the engine's tables.
int table4_close(table4 *table);
int table4_flush(table4 *table);
int table4_unlock(table4 *table);
