// Compound index files and their tags, as the data file calls on them: opening the production
// index, keeping keys up to date in writes and appends, the tag walks behind top, bottom,
// skip and seek, locks, flushes and reindexing.
//
// A table's index files hang on its index_list; the list's selected word points at the
// index4 whose tag list's selected word is the current tag, and no selected tag means record
// number order.
#pragma once

#include <cstdint>

#include "table4.h"

// Index files.
index4 *i4open(table4 *table, const char *name);
index4 *index4_create(table4 *table, const char *name, const tag_info *tags);
int index4_close(index4 *index);
int index4_lock(index4 *index);
int index4_unlock(index4 *index);
int index4_update(index4 *index);
int index4_flush(index4 *index);
int index4_version_check(index4 *index, int reposition, int adopt);
int index4_reindex(index4 *index);
// Every index file of the table built anew from its records.
int table4_reindex(table4 *table);

// Tags of a table.
// By name (at most 10 characters, any case); a miss is -330 with err_tag set.
tag4 *table4_tag(table4 *table, const char *name);
// The first tag of the first index file for null, then the next tag of the same file, then
// the first tag of the next file that has any; null after the last.
tag4 *table4_tag_next(table4 *table, tag4 *tag);
// The current tag, or null for record number order.
tag4 *table4_tag_selected(table4 *table);
// Selects a tag of the table; null selects record number order.
void table4_tag_select(table4 *table, tag4 *tag);
// The tag a seek uses: the selected one, else the first tag of the first index file.
tag4 *table4_tag_default(table4 *table);
// Whether every index file is exclusive or locked.
int table4_locked_all_index(table4 *table);

// Positions in a tag.
int tag4_top(tag4 *tag);
int tag4_bottom(tag4 *tag);
int32_t tag4_skip(tag4 *tag, int32_t count);  // the steps taken, signed
int tag4_seek(tag4 *tag, const void *key, int length);
int tag4_go(tag4 *tag, const void *key, int32_t record);
int tag4_eof(tag4 *tag);
int32_t tag4_record(tag4 *tag);
const char *tag4_key(tag4 *tag);

// Keys.
// The key of the table's current record by the tag's expression: its length, -1 on failure;
// *key points into the engine's key buffer.
int tag4_key_calc(tag4 *tag, const char **key);
// 1 when the current record passes the tag's filter (a tag without one passes all), 0 when
// not, -1 on failure.
int tag4_filter_true(tag4 *tag);
int tag4_add(tag4 *tag, const void *key, int32_t record);
int tag4_remove(tag4 *tag, const void *key, int32_t record);
// The current record's key added when it passes the filter.
int tag4_add_calc(tag4 *tag, int32_t record);
