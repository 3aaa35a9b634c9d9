// Pools: sharing by unit size across engines, private pools, chunks, give back and release.
#include <gtest/gtest.h>

#include <cstring>
#include <set>

#include "engine_test_support.h"

namespace {

using enginetest::BoxCapture;
using enginetest::Engine;

class Pool4 : public ::testing::Test {
protected:
    void SetUp() override { pool4_free_all(); }
    void TearDown() override {
        mem4_set_fail_hook(nullptr);
        pool4_free_all();
    }
};

int fail_everything(size_t) { return 1; }

TEST_F(Pool4, CreateGivesACountedPoolOnTheUsedList) {
    pool4 *pool = pool4_create(nullptr, 5, 100, 3, 0);
    ASSERT_NE(pool, nullptr);
    EXPECT_EQ(pool->start_count, 5);
    EXPECT_EQ(pool->unit_size, 100u);
    EXPECT_EQ(pool->expand_count, 3);
    EXPECT_EQ(pool->use_count, 1);
    EXPECT_EQ(pool->units_out, 0);
    EXPECT_EQ(pool->engine, nullptr);
    EXPECT_EQ(l4_contains(pool4_used_list(), pool), 1);
    pool4_release(pool);
    EXPECT_EQ(l4_contains(pool4_used_list(), pool), 0);
}

TEST_F(Pool4, PoolsOfOneUnitSizeAreSharedAndRaisedToTheLargerRequest) {
    pool4 *first = pool4_create(nullptr, 5, 64, 3, 0);
    pool4 *second = pool4_create(nullptr, 7, 64, 2, 0);
    EXPECT_EQ(first, second);
    EXPECT_EQ(first->use_count, 2);
    EXPECT_EQ(first->start_count, 7);
    EXPECT_EQ(first->expand_count, 3);
    pool4 *other = pool4_create(nullptr, 5, 65, 3, 0);
    EXPECT_NE(other, first);
    pool4_release(first);
    EXPECT_EQ(first->use_count, 1);
    EXPECT_EQ(l4_contains(pool4_used_list(), first), 1);
    pool4_release(first);
    pool4_release(other);
    EXPECT_EQ(pool4_used_list()->count, 0u);
}

TEST_F(Pool4, TwoEnginesShareTheTablePoolAndItSurvivesTheFirstEnd) {
    engine4 *first = engine4_new(1);
    engine4 *second = engine4_new(1);
    void *a = pool4_get(first, &first->table_pool, first->table_start, sizeof(table4),
                        first->table_expand, 0);
    void *b = pool4_get(second, &second->table_pool, second->table_start, sizeof(table4),
                        second->table_expand, 0);
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    pool4 *pool = first->table_pool;
    EXPECT_EQ(second->table_pool, pool);
    EXPECT_EQ(pool->use_count, 2);
    pool4_give_back(pool, a);
    pool4_give_back(pool, b);
    engine4_end(first);
    EXPECT_EQ(first->table_pool, nullptr);
    EXPECT_EQ(pool->use_count, 1);
    EXPECT_EQ(l4_contains(pool4_used_list(), pool), 1);
    EXPECT_NE(pool4_take(pool), nullptr);  // still usable
    engine4_end(second);
    EXPECT_EQ(l4_contains(pool4_used_list(), pool), 0);
    engine4_free(first);
    engine4_free(second);
}

TEST_F(Pool4, APrivatePoolIsNeverSharedAndGoesAtItsFirstRelease) {
    pool4 *mine = pool4_create(nullptr, 2, 48, 2, 1);
    ASSERT_NE(mine, nullptr);
    EXPECT_EQ(mine->use_count, -1);
    // -1 is not above zero: a shared request of the same size makes a pool of its own.
    pool4 *shared = pool4_create(nullptr, 2, 48, 2, 0);
    EXPECT_NE(shared, mine);
    EXPECT_EQ(shared->use_count, 1);
    // Nor does a second private request find the first.
    pool4 *another = pool4_create(nullptr, 2, 48, 2, 1);
    EXPECT_NE(another, mine);
    pool4_release(mine);
    EXPECT_EQ(l4_contains(pool4_used_list(), mine), 0);
    pool4_release(another);
    pool4_release(shared);
}

TEST_F(Pool4, TakeAddsAFirstChunkOfStartCountThenChunksOfExpandCount) {
    pool4 *pool = pool4_create(nullptr, 3, 40, 2, 1);
    std::set<void *> units;
    for (int i = 0; i < 3; ++i) units.insert(pool4_take(pool));
    EXPECT_EQ(units.size(), 3u);
    EXPECT_EQ(pool->chunks.count, 1u);
    EXPECT_EQ(pool->free_units.count, 0u);
    EXPECT_EQ(pool->units_out, 1);  // counted once for the chunk the take added
    units.insert(pool4_take(pool));
    EXPECT_EQ(pool->chunks.count, 2u);
    EXPECT_EQ(pool->free_units.count, 1u);  // a chunk of two, one handed out
    EXPECT_EQ(pool->units_out, 2);
    units.insert(pool4_take(pool));
    EXPECT_EQ(units.size(), 5u);
    EXPECT_EQ(pool->chunks.count, 2u);
    pool4_release(pool);
}

TEST_F(Pool4, GiveBackKeepsTheMemoryForTheNextTake) {
    pool4 *pool = pool4_create(nullptr, 2, 40, 2, 1);
    void *unit = pool4_take(pool);
    const int32_t out = pool->units_out;
    pool4_give_back(pool, unit);
    EXPECT_EQ(pool->units_out, out - 1);
    EXPECT_EQ(pool->chunks.count, 1u);
    EXPECT_EQ(pool4_take(pool), unit);
    pool4_give_back(nullptr, unit);
    pool4_give_back(pool, nullptr);
    pool4_release(pool);
}

TEST_F(Pool4, UnitsAreAtLeastALinkLargeAndAligned) {
    pool4 *pool = pool4_create(nullptr, 4, 1, 4, 1);
    char *a = static_cast<char *>(pool4_take(pool));
    char *b = static_cast<char *>(pool4_take(pool));
    const auto distance = a > b ? a - b : b - a;
    EXPECT_GE(static_cast<size_t>(distance), sizeof(l4link_st));
    EXPECT_EQ(reinterpret_cast<uintptr_t>(a) % alignof(std::max_align_t), 0u);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(b) % alignof(std::max_align_t), 0u);
    pool4_release(pool);
}

TEST_F(Pool4, TakeZeroClearsTheUnit) {
    Engine engine;
    pool4 *pool = pool4_create(engine, 1, 64, 1, 1);
    char *unit = static_cast<char *>(pool4_take(pool));
    std::memset(unit, 0x5A, 64);
    pool4_give_back(pool, unit);
    char *again = static_cast<char *>(pool4_take_zero(pool, engine));
    ASSERT_EQ(again, unit);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(again[i], 0) << i;
    pool4_release(pool);
}

TEST_F(Pool4, TakeZeroGivesNullToAnEngineInError) {
    Engine engine;
    pool4 *pool = pool4_create(engine, 1, 64, 1, 1);
    engine->error_code = -70;
    EXPECT_EQ(pool4_take_zero(pool, engine), nullptr);
    EXPECT_EQ(pool->chunks.count, 0u);
    EXPECT_EQ(engine->error_code, -70);
    engine->error_code = 0;
    pool4_release(pool);
}

TEST_F(Pool4, AnExhaustedPoolSetsMinus920WithoutABox) {
    Engine engine;
    BoxCapture boxes;
    pool4 *pool = pool4_create(engine, 1, 64, 1, 1);
    mem4_set_fail_hook(fail_everything);
    EXPECT_EQ(pool4_take(pool), nullptr);
    EXPECT_EQ(pool4_take_zero(pool, engine), nullptr);
    EXPECT_EQ(engine->error_code, -920);
    EXPECT_EQ(boxes.count(), 0u);
    mem4_set_fail_hook(nullptr);
    engine->error_code = 0;
    pool4_release(pool);
}

TEST_F(Pool4, CreateWithoutMemoryReportsMinus920) {
    Engine engine;
    BoxCapture boxes;
    mem4_set_fail_hook(fail_everything);
    EXPECT_EQ(pool4_create(engine, 1, 64, 1, 0), nullptr);
    mem4_set_fail_hook(nullptr);
    EXPECT_EQ(engine->error_code, -920);
    ASSERT_EQ(boxes.count(), 1u);
    EXPECT_EQ(boxes.last().text, "Error #: -920\nOut of Memory\n");
    engine->error_code = 0;
    // Without an engine the failure is only the null result.
    mem4_set_fail_hook(fail_everything);
    EXPECT_EQ(pool4_create(nullptr, 1, 64, 1, 0), nullptr);
    mem4_set_fail_hook(nullptr);
}

TEST_F(Pool4, GetCreatesIntoAnEmptySlotAndTakesAZeroUnit) {
    Engine engine;
    pool4 *slot = nullptr;
    void *unit = pool4_get(engine, &slot, 2, 32, 2, 0);
    ASSERT_NE(slot, nullptr);
    ASSERT_NE(unit, nullptr);
    pool4 *first = slot;
    EXPECT_NE(pool4_get(engine, &slot, 2, 32, 2, 0), nullptr);
    EXPECT_EQ(slot, first);
    EXPECT_EQ(first->use_count, 1);  // the slot's pool is used again, not created again
    EXPECT_EQ(pool4_get(engine, nullptr, 2, 32, 2, 0), nullptr);
    pool4_release(slot);
}

TEST_F(Pool4, AReleasedPoolRecordIsUsedAgain) {
    pool4 *pool = pool4_create(nullptr, 1, 16, 1, 0);
    pool4_take(pool);
    pool4_release(pool);
    EXPECT_EQ(pool->chunks.count, 0u);
    pool4 *again = pool4_create(nullptr, 1, 24, 1, 0);
    EXPECT_EQ(again, pool);
    pool4_release(again);
}

TEST_F(Pool4, RecordsComeTenToABlockAndMorePoolsTakeMoreBlocks) {
    pool4 *pools[25];
    for (int i = 0; i < 25; ++i) {
        pools[i] = pool4_create(nullptr, 1, 16 + 8 * static_cast<uint32_t>(i), 1, 0);
        ASSERT_NE(pools[i], nullptr);
    }
    EXPECT_EQ(pool4_used_list()->count, 25u);
    for (pool4 *pool : pools) pool4_release(pool);
    EXPECT_EQ(pool4_used_list()->count, 0u);
}

TEST_F(Pool4, FreeAllClearsEveryPool) {
    pool4 *a = pool4_create(nullptr, 3, 16, 1, 0);
    pool4 *b = pool4_create(nullptr, 3, 32, 1, 1);
    pool4_take(a);
    pool4_take(b);
    pool4_free_all();
    EXPECT_EQ(pool4_used_list()->count, 0u);
    EXPECT_EQ(pool4_used_list()->last, nullptr);
    // The process can start over.
    pool4 *c = pool4_create(nullptr, 3, 16, 1, 0);
    EXPECT_NE(pool4_take(c), nullptr);
    pool4_release(c);
}

TEST_F(Pool4, NullArgumentsAreIgnored) {
    EXPECT_EQ(pool4_take(nullptr), nullptr);
    EXPECT_EQ(pool4_take_zero(nullptr, nullptr), nullptr);
    pool4_release(nullptr);
}

}  // namespace
