// The engine's context: its defaults, its start and its end, and the walks over its tables.
#include <cctype>
#include <cstring>

#include "engine4.h"
#include "table4.h"

engine4 *engine4_new(int do_init) {
    engine4 *engine = static_cast<engine4 *>(mem4_alloc(sizeof(engine4)));
    if (engine && do_init == 1) engine4_init(engine);
    return engine;
}

void engine4_free(engine4 *engine) { mem4_free(engine); }

void engine4_init(engine4 *engine) {
    if (!engine) return;
    std::memset(engine, 0, sizeof(*engine));
    engine->unique_default = 25;
    std::strncpy(engine->date_format, "MM/DD/YY", sizeof(engine->date_format) - 1);
    engine->cache_block_size = 1024;
    engine->sort_pool_size = 61440;
    engine->seq_buffer_size = 4096;
    engine->big_buffer_size = 16384;
    engine->memo_block_default = 512;
    engine->memo_expr_len = 1024;
    engine->block_expand = 10;
    engine->table_expand = 5;
    engine->index_expand = 5;
    engine->tag_expand = 10;
    engine->table_start = 5;
    engine->block_start = 10;
    engine->index_start = 5;
    engine->tag_start = 10;
    engine->cache_memory = 983040;
    engine->auto_open = 1;
    engine->err_create = 1;
    engine->off_error = 0;
    engine->exclusive = 0;
    engine->flush_on_write = 0;
    engine->err_expr = 1;
    engine->err_field = 1;
    engine->err_go = 1;
    engine->err_open = 1;
    engine->optimize_default = -1;
    engine->read_lock = 0;
    engine->read_only = 0;
    engine->err_relate = 1;
    engine->safety = 1;
    engine->err_skip = 1;
    engine->err_tag = 1;
    engine->lock_attempts = -1;
    engine->error_code = 0;
    engine->init_magic = engine4_magic;
    engine->check_index = 1;
    engine->optimize_write_default = -1;
    engine->cache_on = 0;
    engine->cache_wanted = 1;
    engine->usage_flags = 0;
}

int engine4_end(engine4 *engine) {
    if (!engine) return -1;
    engine4_cache_stop(engine);
    engine4_close_all(engine);
    pool4_release(engine->index_pool);
    engine->index_pool = nullptr;
    pool4_release(engine->extra_pool);
    engine->extra_pool = nullptr;
    pool4_release(engine->table_pool);
    engine->table_pool = nullptr;
    pool4_release(engine->tag_pool);
    engine->tag_pool = nullptr;
    // The fourth slot a second time: null by now, so harmless, and kept in the order.
    pool4_release(engine->extra_pool);
    engine->extra_pool = nullptr;
    mem4_free(engine->expr_buffer);
    engine->expr_buffer = nullptr;
    engine->expr_buffer_len = 0;
    mem4_free(engine->key_buffer);
    engine->key_buffer = nullptr;
    engine->key_buffer_len = 0;
    mem4_free(engine->work_buffer);
    engine->work_buffer = nullptr;
    engine->work_buffer_len = 0;
    return engine->error_code;
}

int engine4_close_all(engine4 *engine) {
    if (!engine) return -1;
    int result = 0;
    void *table = l4_first(&engine->table_list);
    while (table) {
        // The close takes the table off the list, so its successor is read first.
        void *next = l4_next(&engine->table_list, table);
        if (table4_close(static_cast<table4 *>(table)) < 0) result = -1;
        table = next;
    }
    if (engine->error_code < 0) result = -1;
    return result;
}

int engine4_flush_all(engine4 *engine) {
    if (!engine) return -1;
    int result = 0;
    for (void *table = l4_first(&engine->table_list); table;
         table = l4_next(&engine->table_list, table)) {
        const int rc = table4_flush(static_cast<table4 *>(table));
        if (rc != 0) result = rc;
    }
    return result;
}

int engine4_unlock_all(engine4 *engine) {
    if (!engine) return -1;
    for (void *table = l4_first(&engine->table_list); table;
         table = l4_next(&engine->table_list, table)) {
        table4_unlock(static_cast<table4 *>(table));
    }
    return engine->error_code < 0 ? -1 : 0;
}

table4 *engine4_find_table(engine4 *engine, const char *alias) {
    if (!engine || !alias) return nullptr;
    char wanted[12];
    int i = 0;
    for (; i < 11 && alias[i]; ++i) {
        wanted[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(alias[i])));
    }
    wanted[i] = '\0';
    for (void *walk = l4_first(&engine->table_list); walk;
         walk = l4_next(&engine->table_list, walk)) {
        table4 *table = static_cast<table4 *>(walk);
        if (std::strncmp(table->alias, wanted, sizeof(table->alias)) == 0) return table;
    }
    return nullptr;
}
