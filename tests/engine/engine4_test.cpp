// The engine's context: defaults, start, the order of the end, and the walks over tables.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "engine_test_support.h"

namespace {

using enginetest::BoxCapture;
using enginetest::Engine;
using nqtest::TempDir;

TEST(Engine4, NewWithInitGivesEveryDefault) {
    Engine engine;
    engine4 *e = engine.get();
    ASSERT_NE(e, nullptr);
    EXPECT_EQ(e->table_list.count, 0u);
    EXPECT_EQ(e->table_list.last, nullptr);
    EXPECT_EQ(e->unique_default, 25);
    EXPECT_STREQ(e->date_format, "MM/DD/YY");
    EXPECT_EQ(e->cache_block_size, 1024u);
    EXPECT_EQ(e->sort_pool_size, 61440u);
    EXPECT_EQ(e->seq_buffer_size, 4096u);
    EXPECT_EQ(e->big_buffer_size, 16384u);
    EXPECT_EQ(e->memo_block_default, 512);
    EXPECT_EQ(e->memo_expr_len, 1024);
    EXPECT_EQ(e->block_expand, 10);
    EXPECT_EQ(e->table_expand, 5);
    EXPECT_EQ(e->index_expand, 5);
    EXPECT_EQ(e->tag_expand, 10);
    EXPECT_EQ(e->table_start, 5);
    EXPECT_EQ(e->block_start, 10);
    EXPECT_EQ(e->index_start, 5);
    EXPECT_EQ(e->tag_start, 10);
    EXPECT_EQ(e->cache_memory, 983040u);
    EXPECT_EQ(e->auto_open, 1);
    EXPECT_EQ(e->err_create, 1);
    EXPECT_EQ(e->off_error, 0);
    EXPECT_EQ(e->exclusive, 0);
    EXPECT_EQ(e->flush_on_write, 0);
    EXPECT_EQ(e->err_expr, 1);
    EXPECT_EQ(e->err_field, 1);
    EXPECT_EQ(e->err_go, 1);
    EXPECT_EQ(e->err_open, 1);
    EXPECT_EQ(e->optimize_default, -1);
    EXPECT_EQ(e->read_lock, 0);
    EXPECT_EQ(e->read_only, 0);
    EXPECT_EQ(e->err_relate, 1);
    EXPECT_EQ(e->safety, 1);
    EXPECT_EQ(e->err_skip, 1);
    EXPECT_EQ(e->err_tag, 1);
    EXPECT_EQ(e->lock_attempts, -1);
    EXPECT_EQ(e->index_pool, nullptr);
    EXPECT_EQ(e->table_pool, nullptr);
    EXPECT_EQ(e->tag_pool, nullptr);
    EXPECT_EQ(e->extra_pool, nullptr);
    EXPECT_EQ(e->error_code, 0);
    EXPECT_EQ(e->init_magic, 21121);
    EXPECT_EQ(e->expr_buffer, nullptr);
    EXPECT_EQ(e->expr_buffer_len, 0u);
    EXPECT_EQ(e->key_buffer, nullptr);
    EXPECT_EQ(e->key_buffer_len, 0u);
    EXPECT_EQ(e->work_buffer, nullptr);
    EXPECT_EQ(e->work_buffer_len, 0u);
    EXPECT_EQ(e->check_index, 1);
    EXPECT_EQ(e->optimize_write_default, -1);
    EXPECT_EQ(e->cache.buffer_count, 0);
    EXPECT_EQ(e->cache_files.count, 0u);
    EXPECT_EQ(e->read_fresh, 0);
    EXPECT_EQ(e->cache_on, 0);
    EXPECT_EQ(e->cache_wanted, 1);
    EXPECT_EQ(e->usage_flags, 0u);
}

TEST(Engine4, NewWithoutInitGivesAClearedRecord) {
    for (int do_init : {0, 2, -1}) {
        engine4 *e = engine4_new(do_init);
        ASSERT_NE(e, nullptr);
        EXPECT_EQ(e->init_magic, 0);
        EXPECT_EQ(e->unique_default, 0);
        EXPECT_EQ(e->date_format[0], '\0');
        engine4_init(e);
        EXPECT_EQ(e->init_magic, 21121);
        engine4_free(e);
    }
}

TEST(Engine4, NewFailsWhenMemoryIsOut) {
    mem4_set_fail_hook([](size_t) { return 1; });
    EXPECT_EQ(engine4_new(1), nullptr);
    mem4_set_fail_hook(nullptr);
}

TEST(Engine4, InitClearsTheRecordAndSetsTheDefaultsAgain) {
    Engine engine;
    engine->error_code = -70;
    engine->lock_attempts = 3;
    engine->usage_flags = 99;
    std::strcpy(engine->date_format, "CCYY.MM.DD");
    engine4_init(engine);
    EXPECT_EQ(engine->error_code, 0);
    EXPECT_EQ(engine->lock_attempts, -1);
    EXPECT_EQ(engine->usage_flags, 0u);
    EXPECT_STREQ(engine->date_format, "MM/DD/YY");
    engine4_init(nullptr);  // ignored
}

TEST(Engine4, EndOfNullIsMinusOne) { EXPECT_EQ(engine4_end(nullptr), -1); }

TEST(Engine4, EndReturnsTheErrorCodeAndFreesTheWorkAreas) {
    engine4 *e = engine4_new(1);
    ASSERT_EQ(mem4_grow(e, &e->expr_buffer, &e->expr_buffer_len, 100), 0);
    ASSERT_EQ(mem4_grow(e, &e->key_buffer, &e->key_buffer_len, 50), 0);
    ASSERT_EQ(mem4_grow(e, &e->work_buffer, &e->work_buffer_len, 20), 0);
    e->error_code = -910;
    EXPECT_EQ(engine4_end(e), -910);
    EXPECT_EQ(e->expr_buffer, nullptr);
    EXPECT_EQ(e->expr_buffer_len, 0u);
    EXPECT_EQ(e->key_buffer, nullptr);
    EXPECT_EQ(e->key_buffer_len, 0u);
    EXPECT_EQ(e->work_buffer, nullptr);
    EXPECT_EQ(e->work_buffer_len, 0u);
    // The record itself is the caller's, still readable.
    EXPECT_EQ(e->init_magic, 21121);
    engine4_free(e);
}

TEST(Engine4, EndStopsTheCacheAndReleasesEveryPool) {
    pool4_free_all();
    engine4 *e = engine4_new(1);
    ASSERT_EQ(engine4_cache_start(e), 0);
    ASSERT_NE(pool4_get(e, &e->index_pool, 5, 300, 5, 0), nullptr);
    ASSERT_NE(pool4_get(e, &e->table_pool, 5, 400, 5, 0), nullptr);
    ASSERT_NE(pool4_get(e, &e->tag_pool, 5, 500, 5, 0), nullptr);
    ASSERT_NE(pool4_get(e, &e->extra_pool, 5, 600, 5, 0), nullptr);
    EXPECT_EQ(pool4_used_list()->count, 4u);
    EXPECT_EQ(engine4_end(e), 0);
    EXPECT_EQ(e->cache_on, 0);
    EXPECT_EQ(e->cache.buffer_count, 0);
    EXPECT_EQ(e->index_pool, nullptr);
    EXPECT_EQ(e->table_pool, nullptr);
    EXPECT_EQ(e->tag_pool, nullptr);
    EXPECT_EQ(e->extra_pool, nullptr);
    EXPECT_EQ(pool4_used_list()->count, 0u);
    // A second end finds nothing left to do.
    EXPECT_EQ(engine4_end(e), 0);
    engine4_free(e);
}

// A table record as the data file layer keeps it, over a file of its own.
table4 *open_table(engine4 *e, const std::string &path, const char *alias) {
    nqtest::write_file(path, std::string(64, 'x'));
    table4 *table = static_cast<table4 *>(
        pool4_get(e, &e->table_pool, e->table_start, sizeof(table4), e->table_expand, 0));
    if (!table) return nullptr;
    table->engine = e;
    table->memo_file.file.handle = -1;
    table->locks = &table->single_lock;
    table->locks_capacity = 1;
    table->record_number = -1;
    table->record_number_old = -1;
    table->header_length = 33;
    table->record_width = 10;
    if (file4_open(&table->file, e, path.c_str(), 1) != 0) return nullptr;
    std::strncpy(table->alias, alias, sizeof(table->alias) - 1);
    l4_add(&e->table_list, table);
    return table;
}

TEST(Engine4, FindTableComparesTheUpperCasedAlias) {
    TempDir dir;
    Engine engine;
    table4 *pipe = open_table(engine, dir.file("pipe.dbf"), "PIPE");
    table4 *valve = open_table(engine, dir.file("valve.dbf"), "VALVE");
    table4 *pipe2 = open_table(engine, dir.file("pipe2.dbf"), "PIPE");
    ASSERT_NE(pipe, nullptr);
    ASSERT_NE(valve, nullptr);
    ASSERT_NE(pipe2, nullptr);
    EXPECT_EQ(engine4_find_table(engine, "pipe"), pipe);  // the first match
    EXPECT_EQ(engine4_find_table(engine, "Valve"), valve);
    EXPECT_EQ(engine4_find_table(engine, "VALV"), nullptr);
    EXPECT_EQ(engine4_find_table(engine, "VALVES"), nullptr);
    EXPECT_EQ(engine4_find_table(engine, "valve_and_more_than_eleven"), nullptr);
    EXPECT_EQ(engine4_find_table(engine, nullptr), nullptr);
    EXPECT_EQ(engine4_find_table(nullptr, "PIPE"), nullptr);
    EXPECT_EQ(engine4_close_all(engine), 0);
}

TEST(Engine4, CloseAllClosesEveryTable) {
    TempDir dir;
    Engine engine;
    for (const char *name : {"A", "B", "C"}) {
        ASSERT_NE(open_table(engine, dir.file(name), name), nullptr);
    }
    EXPECT_EQ(engine->table_list.count, 3u);
    EXPECT_EQ(engine4_close_all(engine), 0);
    EXPECT_EQ(engine->table_list.count, 0u);
    EXPECT_EQ(engine4_find_table(engine, "B"), nullptr);
    EXPECT_EQ(engine4_close_all(engine), 0);  // nothing left
}

TEST(Engine4, CloseAllIsMinusOneWhenACloseFails) {
    TempDir dir;
    Engine engine;
    BoxCapture boxes;
    ASSERT_NE(open_table(engine, dir.file("A"), "A"), nullptr);
    table4 *b = open_table(engine, dir.file("B"), "B");
    ASSERT_NE(b, nullptr);
    ASSERT_NE(open_table(engine, dir.file("C"), "C"), nullptr);
    b->append_locked = 1;  // claims a lock it does not hold: the unlock fails with -110
    EXPECT_EQ(engine4_close_all(engine), -1);
    EXPECT_EQ(engine->table_list.count, 0u);  // every table is closed all the same
    ASSERT_EQ(boxes.count(), 1u);
    EXPECT_EQ(boxes.last().text, "Error #: -110\nUnlocking File\n" + dir.file("B") + "\n");
    engine->error_code = 0;
}

TEST(Engine4, CloseAllIsMinusOneForAnEngineInError) {
    Engine engine;
    engine->error_code = -5;
    EXPECT_EQ(engine4_close_all(engine), -1);
    engine->error_code = 0;
    EXPECT_EQ(engine4_close_all(nullptr), -1);
}

TEST(Engine4, FlushAllFlushesEveryTableAndGivesTheLastNonZeroResult) {
    TempDir dir;
    Engine engine;
    ASSERT_EQ(engine4_cache_start(engine), 0);
    table4 *a = open_table(engine, dir.file("A"), "A");
    ASSERT_NE(a, nullptr);
    engine->exclusive = 1;
    table4 *b = open_table(engine, dir.file("B"), "B");
    ASSERT_NE(b, nullptr);
    engine->exclusive = 0;
    ASSERT_EQ(file4_cache_type(&b->file, 1, 1), 0);
    ASSERT_EQ(file4_write(&b->file, 0, "written", 7), 0);
    EXPECT_EQ(nqtest::read_file(dir.file("B")).substr(0, 7), std::string(7, 'x'));  // delayed
    EXPECT_EQ(engine4_flush_all(engine), 0);
    EXPECT_EQ(nqtest::read_file(dir.file("B")).substr(0, 7), "written");
    engine->error_code = -3;
    EXPECT_EQ(engine4_flush_all(engine), -1);
    engine->error_code = 0;
    EXPECT_EQ(engine4_flush_all(nullptr), -1);
}

TEST(Engine4, UnlockAllReleasesTheLocksOfEveryTable) {
    TempDir dir;
    Engine engine;
    table4 *a = open_table(engine, dir.file("A"), "A");
    table4 *b = open_table(engine, dir.file("B"), "B");
    ASSERT_EQ(file4_lock(&a->file, lock4_file_offset, lock4_file_length), 0);
    a->file_locked = 1;
    ASSERT_EQ(file4_lock(&b->file, lock4_append_offset, 1), 0);
    b->append_locked = 1;
    b->record_count = 12;
    ASSERT_EQ(file4_lock(&b->file, lock4_position_base + 33 + 10, 1), 0);  // record 2
    b->single_lock = 2;
    b->locks_held = 1;
    EXPECT_EQ(engine4_unlock_all(engine), 0);
    EXPECT_EQ(a->file_locked, 0);
    EXPECT_EQ(b->append_locked, 0);
    EXPECT_EQ(b->record_count, -1);
    EXPECT_EQ(b->locks_held, 0u);
    // Another open of each file can take the same bytes now.
    Engine other;
    file4 fa, fb;
    ASSERT_EQ(file4_open(&fa, other, dir.file("A").c_str(), 0), 0);
    ASSERT_EQ(file4_open(&fb, other, dir.file("B").c_str(), 0), 0);
    other->lock_attempts = 1;
    EXPECT_EQ(file4_lock(&fa, lock4_file_offset, lock4_file_length), 0);
    EXPECT_EQ(file4_lock(&fb, lock4_append_offset, 1), 0);
    EXPECT_EQ(file4_lock(&fb, lock4_position_base + 43, 1), 0);
    file4_close(&fa);
    file4_close(&fb);
    EXPECT_EQ(engine4_unlock_all(nullptr), -1);
}

TEST(Engine4, UnlockAllReleasesTheLocksEvenAfterAFailureAndIsThenMinusOne) {
    TempDir dir;
    Engine engine;
    table4 *a = open_table(engine, dir.file("A"), "A");
    ASSERT_EQ(file4_lock(&a->file, lock4_append_offset, 1), 0);
    a->append_locked = 1;
    engine->error_code = -70;
    EXPECT_EQ(engine4_unlock_all(engine), -1);
    EXPECT_EQ(a->append_locked, 0);
    Engine other;
    other->lock_attempts = 1;
    file4 fa;
    ASSERT_EQ(file4_open(&fa, other, dir.file("A").c_str(), 0), 0);
    EXPECT_EQ(file4_lock(&fa, lock4_append_offset, 1), 0);
    file4_close(&fa);
    engine->error_code = 0;
}

}  // namespace
