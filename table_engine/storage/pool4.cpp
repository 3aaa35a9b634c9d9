// Pools of fixed-size units, so that records never go to the allocator one by one.
//
// Three process-wide lists stand behind them: the pools in use, the pool records available
// for new pools, and the blocks those records were cut from (ten records a block). Pools that
// are not private are shared by unit size across all engines of the process.
#include <cstring>

#include "engine4.h"
#include "error4.h"

namespace {

l4list g_used = {};
l4list g_available = {};
l4list g_blocks = {};

constexpr int kRecordsPerBlock = 10;

// Units are laid out at a stride that keeps every unit aligned for any record and large
// enough for the link a free unit carries.
size_t stride_of(uint32_t unit_size) {
    size_t size = unit_size < sizeof(l4link_st) ? sizeof(l4link_st) : unit_size;
    const size_t align = alignof(std::max_align_t);
    return (size + align - 1) / align * align;
}

bool refill_available() {
    char *block = static_cast<char *>(
        mem4_alloc(sizeof(l4link_st) + kRecordsPerBlock * sizeof(pool4)));
    if (!block) return false;
    l4_add(&g_blocks, block);
    pool4 *records = reinterpret_cast<pool4 *>(block + sizeof(l4link_st));
    for (int i = 0; i < kRecordsPerBlock; ++i) l4_add(&g_available, &records[i]);
    return true;
}

void free_chunks(pool4 *pool) {
    while (void *chunk = l4_pop(&pool->chunks)) mem4_free(chunk);
    pool->free_units = {};
}

}  // namespace

const l4list *pool4_used_list() { return &g_used; }

pool4 *pool4_create(engine4 *engine, int32_t start_count, uint32_t unit_size,
                    int32_t expand_count, int is_private) {
    if (!is_private) {
        for (void *walk = l4_next(&g_used, nullptr); walk; walk = l4_next(&g_used, walk)) {
            pool4 *pool = static_cast<pool4 *>(walk);
            if (pool->unit_size == unit_size && pool->use_count > 0) {
                if (start_count > pool->start_count) pool->start_count = start_count;
                if (expand_count > pool->expand_count) pool->expand_count = expand_count;
                ++pool->use_count;
                return pool;
            }
        }
    }
    if (!g_available.last && !refill_available()) {
        if (engine) err4report(engine, -920, nullptr);
        return nullptr;
    }
    pool4 *pool = static_cast<pool4 *>(l4_pop(&g_available));
    std::memset(pool, 0, sizeof(*pool));
    pool->engine = engine;
    pool->start_count = start_count;
    pool->unit_size = unit_size;
    pool->expand_count = expand_count;
    pool->use_count = is_private ? -1 : 1;
    l4_add(&g_used, pool);
    return pool;
}

void *pool4_take(pool4 *pool) {
    if (!pool) return nullptr;
    if (!pool->free_units.last) {
        int32_t count = pool->chunks.last ? pool->expand_count : pool->start_count;
        if (count < 1) count = 1;
        const size_t stride = stride_of(pool->unit_size);
        char *chunk = static_cast<char *>(mem4_alloc(sizeof(l4link_st) + count * stride));
        if (!chunk) return nullptr;
        l4_add(&pool->chunks, chunk);
        char *unit = chunk + sizeof(l4link_st);
        for (int32_t i = 0; i < count; ++i, unit += stride) l4_add(&pool->free_units, unit);
        ++pool->units_out;
    }
    return l4_pop(&pool->free_units);
}

void *pool4_take_zero(pool4 *pool, engine4 *engine) {
    if (engine && engine->error_code < 0) return nullptr;
    void *unit = pool4_take(pool);
    if (!unit) {
        if (engine) engine->error_code = -920;  // set without a box
        return nullptr;
    }
    std::memset(unit, 0, pool->unit_size);
    return unit;
}

void *pool4_get(engine4 *engine, pool4 **pool_slot, int32_t start_count, uint32_t unit_size,
                int32_t expand_count, int is_private) {
    if (!pool_slot) return nullptr;
    if (!*pool_slot) {
        *pool_slot = pool4_create(engine, start_count, unit_size, expand_count, is_private);
        if (!*pool_slot) return nullptr;
    }
    return pool4_take_zero(*pool_slot, engine);
}

void pool4_give_back(pool4 *pool, void *unit) {
    if (!pool || !unit) return;
    --pool->units_out;
    l4_add(&pool->free_units, unit);
}

void pool4_release(pool4 *pool) {
    if (!pool) return;
    --pool->use_count;
    if (pool->use_count > 0) return;
    free_chunks(pool);
    l4_remove(&g_used, pool);
    l4_add(&g_available, pool);
}

void pool4_free_all() {
    for (void *walk = l4_next(&g_used, nullptr); walk; walk = l4_next(&g_used, walk)) {
        free_chunks(static_cast<pool4 *>(walk));
    }
    while (void *block = l4_pop(&g_blocks)) mem4_free(block);
    g_used = {};
    g_available = {};
    g_blocks = {};
}
