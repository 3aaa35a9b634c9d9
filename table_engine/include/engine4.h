// The engine's context record, its lists, its pools and its memory.
//
// Every record the engine allocates points back to one engine4, and nearly every operation
// begins by reading its error_code: a negative value stops the operation at its entry
// (-1 or a null pointer comes back) until err4set() clears it.
//
// The records keep the fields and the field order they are known by; they are laid out with
// the compiler's natural alignment, since nothing writes them to a file as they lie in memory.
#pragma once

#include <cstddef>
#include <cstdint>

struct engine4;
struct file4;
struct pool4;
struct table4;
struct column4;
struct memo4;
struct index4;
struct tag4;
struct block4;
struct expr4;
struct sort4;
struct relate4;

// ---------------------------------------------------------------------------------------
// Lists. Every record that goes on a list begins with an l4link_st. The links are circular:
// the last record's next is the first record.

struct l4link_st {
    l4link_st *next;
    l4link_st *prev;
};

struct l4list {
    l4link_st *last;  // the last record, null for an empty list
    void *selected;   // a record marked by the list's user (the selected index file, tag)
    uint32_t count;
};

// The record arguments are records that begin with an l4link_st (or the link itself).
void l4_add(l4list *list, void *record);                        // append
void l4_add_after(l4list *list, void *anchor, void *record);
void l4_add_before(l4list *list, void *anchor, void *record);
void *l4_first(const l4list *list);
void *l4_last(const l4list *list);
void *l4_next(const l4list *list, const void *record);  // null after the last; first for null
void *l4_prev(const l4list *list, const void *record);  // null before the first; last for null
void *l4_pop(l4list *list);                             // removes and returns the last
void l4_remove(l4list *list, void *record);             // the record must be a member
int l4_contains(const l4list *list, const void *record);

// ---------------------------------------------------------------------------------------
// Pools of fixed-size units. Pools that are not private are shared by unit size among all
// engines of the process; the three lists behind them are process-wide.

struct pool4 {
    l4link_st link;        // on the process-wide list of used pools
    l4list chunks;         // the memory chunks, each with a link head
    l4list free_units;     // a free unit's first bytes are its link
    engine4 *engine;       // for out-of-memory reports, may be null
    int32_t start_count;   // units of the first chunk
    uint32_t unit_size;    // size of a unit as asked for
    int32_t expand_count;  // units of every later chunk
    int32_t use_count;     // owners sharing the pool; -1 marks a private pool
    int32_t units_out;     // up by one when the pool's own take adds a chunk, down by one per
                           // unit given back
};

pool4 *pool4_create(engine4 *engine, int32_t start_count, uint32_t unit_size,
                    int32_t expand_count, int is_private);
void *pool4_take(pool4 *pool);
void *pool4_take_zero(pool4 *pool, engine4 *engine);
void *pool4_get(engine4 *engine, pool4 **pool_slot, int32_t start_count, uint32_t unit_size,
                int32_t expand_count, int is_private);
void pool4_give_back(pool4 *pool, void *unit);
void pool4_release(pool4 *pool);
// Frees every pool of the process and every block of pool records. Pools still held by an
// engine must not be used afterwards.
void pool4_free_all();
// The process-wide list of pools in use (for inspection).
const l4list *pool4_used_list();

// ---------------------------------------------------------------------------------------
// Memory. Blocks come zero-filled with their size word in front.

void *mem4_alloc(size_t size);
void *mem4_alloc_retry(engine4 *engine, size_t size);
void *mem4_alloc_or_error(engine4 *engine, size_t size);
void mem4_free(void *block);
// Grows *buffer_slot (of *size_slot bytes) to at least size bytes, keeping its content.
int mem4_grow(engine4 *engine, char **buffer_slot, uint32_t *size_slot, uint32_t size);
// The size asked for when the block was allocated.
size_t mem4_size(const void *block);

// A hook for tests and for hosts that cap the engine's memory: when set and it returns
// non-zero for a size, mem4_alloc fails for that request. Returns the previous hook; null
// removes it.
typedef int (*mem4_fail_fn)(size_t size);
mem4_fail_fn mem4_set_fail_hook(mem4_fail_fn hook);

// ---------------------------------------------------------------------------------------
// The file cache (its working is described with the file layer, file4.h).

struct cache_block {
    l4link_st hash_link;   // on its hash list
    l4link_st usage_link;  // on its usage list (or the free list)
    uint8_t changed;       // holds bytes the file does not have yet
    uint32_t length;       // valid bytes
    file4 *file;
    uint32_t position;     // file offset of the block, a multiple of block_size
    char *data;            // block_size bytes inside one of the buffers
};

struct cache4 {
    int32_t buffer_count;  // buffers obtained; 0 when the cache is stopped
    uint32_t block_size;
    uint32_t buffer_size;
    uint32_t hash_cursor;  // where the next file is placed in the hash space, in blocks
    uint32_t block_count;
    l4list free_blocks;
    l4list data_blocks;   // usage lists: oldest first, most recently used last
    l4list index_blocks;
    l4list memo_blocks;
    l4list *evict_third;
    l4list *evict_second;
    l4list *evict_first;
    uint8_t mode_seen;    // low byte of usage_flags when the eviction order was last chosen
    uint8_t spare;
    uint8_t miss_count;
    int32_t keep_blocks;  // blocks a usage list keeps before it must give one up
    char **buffers;
    cache_block *block_records;
    uint8_t block_shift;   // log2 of block_size
    uint8_t offset_shift;  // 32 - block_shift
    uint32_t hash_size;
    uint32_t hash_mask;
    l4list *hash_lists;
    uint32_t blocks_per_buffer;
    uint8_t read_ahead_mode;  // 1 data files, 2 and 3 index files are read ahead
    char *read_ahead_buffer;
    uint32_t read_ahead_position;
    uint8_t read_ahead_busy;
    // The write-behind area: a run of consecutive changed blocks of one file on their way out.
    char *write_buffer;
    uint32_t write_start;  // file offset of the run
    uint32_t write_pos;    // file offset just behind the run
    uint32_t write_blocks;
    file4 *write_file;     // null when no run is pending
};

// ---------------------------------------------------------------------------------------
// The file handle, held by value in table4, memo4 and index4.

struct file4 {
    l4link_st link;        // on the engine's cache_files
    int32_t hash_start;    // start in the hash space of the cache; -1 until placed
    int32_t known_length;  // the length while the cache owns it; -1 unknown
    uint8_t cache_type;    // 0 none, 1 data file, 2 index file, 3 memo file
    uint8_t write_delay;   // writes may stay in the cache
    int32_t do_buffer;     // reads and writes go through the cache
    char *name;
    engine4 *engine;
    int32_t handle;        // platform handle, -1 for none
    uint8_t is_temp;       // removed at close
    uint8_t is_exclusive;  // this process alone has the file
    uint8_t is_read_only;
    uint8_t owns_name;     // name is freed at close
    uint8_t write_mode;    // cache write mode wanted: 0 off, 1 on
    uint8_t on_disk;       // 0 for a temporary file that so far lives only in the cache
};

// ---------------------------------------------------------------------------------------
// The engine.

// The key a tag position saves to survive a reload.
struct saved_key4 {
    int32_t record;
    unsigned char key[256];
};

struct engine4 {
    l4list table_list;               // open table4 records, in order of opening
    int32_t unique_default;          // 25
    char date_format[20];            // "MM/DD/YY"
    uint32_t cache_block_size;       // 1024
    uint32_t sort_pool_size;         // 61440
    uint32_t seq_buffer_size;        // 4096
    uint32_t big_buffer_size;        // 16384
    int32_t memo_block_default;      // 512 (a 16-bit value)
    int32_t memo_expr_len;           // 1024
    int32_t block_expand;            // 10
    int32_t table_expand;            // 5
    int32_t index_expand;            // 5
    int32_t tag_expand;              // 10
    int32_t table_start;             // 5
    int32_t block_start;             // 10
    int32_t index_start;             // 5
    int32_t tag_start;               // 10
    uint32_t cache_memory;           // 983040
    int32_t auto_open;               // 1
    int32_t err_create;              // 1
    int32_t off_error;               // 0
    int32_t exclusive;               // 0
    int32_t flush_on_write;          // 0
    int32_t err_expr;                // 1
    int32_t err_field;               // 1
    int32_t err_go;                  // 1
    int32_t err_open;                // 1
    int32_t optimize_default;        // -1
    int32_t read_lock;               // 0
    int32_t read_only;               // 0
    int32_t err_relate;              // 1
    int32_t safety;                  // 1
    int32_t err_skip;                // 1
    int32_t err_tag;                 // 1
    int32_t lock_attempts;           // -1
    pool4 *index_pool;
    pool4 *table_pool;
    pool4 *tag_pool;
    pool4 *extra_pool;               // released at the end; no storage part creates it
    int32_t error_code;              // 0
    int32_t init_magic;              // 21121
    char *expr_buffer;
    uint32_t expr_buffer_len;
    char *key_buffer;
    uint32_t key_buffer_len;
    char *work_buffer;
    uint32_t work_buffer_len;
    int32_t check_index;             // 1
    int32_t optimize_write_default;  // -1
    cache4 cache;
    l4list cache_files;              // the files the cache knows
    uint8_t read_fresh;              // raised around a read that must see the file as it is
    int32_t cache_on;                // 0
    int32_t cache_wanted;            // 1
    uint32_t usage_flags;            // kinds of operation since the cache started
    saved_key4 saved_key;
};

constexpr int32_t engine4_magic = 21121;

// The usage_flags bits.
constexpr uint32_t usage4_record_read = 1;
constexpr uint32_t usage4_natural_skip = 2;
constexpr uint32_t usage4_tag_skip = 4;
constexpr uint32_t usage4_tag_seek = 8;
constexpr uint32_t usage4_append = 16;
constexpr uint32_t usage4_record_write = 32;
constexpr uint32_t usage4_reindex = 64;
constexpr uint32_t usage4_cache_start = 128;

engine4 *engine4_new(int do_init);
void engine4_init(engine4 *engine);
int engine4_end(engine4 *engine);  // the record itself stays the caller's
// Frees a record from engine4_new (after engine4_end).
void engine4_free(engine4 *engine);
int engine4_close_all(engine4 *engine);
int engine4_flush_all(engine4 *engine);
int engine4_unlock_all(engine4 *engine);
table4 *engine4_find_table(engine4 *engine, const char *alias);

// The file cache.
int engine4_cache_start(engine4 *engine);
int engine4_cache_stop(engine4 *engine);
