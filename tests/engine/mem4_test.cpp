// The engine's memory: zero-filled blocks, the retry around the cache, -920 reports, growth.
#include <gtest/gtest.h>

#include <cstring>

#include "engine_test_support.h"

namespace {

using enginetest::BoxCapture;
using enginetest::Engine;

size_t g_fail_size = 0;
int g_fail_times = 0;
int g_calls_of_size = 0;

// Fails requests of g_fail_size, g_fail_times times (-1: always).
int fail_size(size_t size) {
    if (size != g_fail_size) return 0;
    ++g_calls_of_size;
    if (g_fail_times == 0) return 0;
    if (g_fail_times > 0) --g_fail_times;
    return 1;
}

class Mem4 : public ::testing::Test {
protected:
    void SetUp() override {
        g_fail_size = 0;
        g_fail_times = 0;
        g_calls_of_size = 0;
    }
    void TearDown() override { mem4_set_fail_hook(nullptr); }
};

TEST_F(Mem4, AllocGivesZeroFilledAlignedMemoryThatKnowsItsSize) {
    for (size_t size : {size_t{1}, size_t{7}, size_t{100}, size_t{4096}}) {
        unsigned char *block = static_cast<unsigned char *>(mem4_alloc(size));
        ASSERT_NE(block, nullptr);
        for (size_t i = 0; i < size; ++i) ASSERT_EQ(block[i], 0) << size << " " << i;
        EXPECT_EQ(mem4_size(block), size);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % alignof(std::max_align_t), 0u);
        mem4_free(block);
    }
    void *empty = mem4_alloc(0);
    EXPECT_NE(empty, nullptr);
    mem4_free(empty);
}

TEST_F(Mem4, FreeOfNullDoesNothing) { mem4_free(nullptr); }

TEST_F(Mem4, AnImpossibleSizeFails) { EXPECT_EQ(mem4_alloc(SIZE_MAX), nullptr); }

TEST_F(Mem4, TheFailHookRefusesRequests) {
    g_fail_size = 333;
    g_fail_times = -1;
    EXPECT_EQ(mem4_set_fail_hook(fail_size), nullptr);
    EXPECT_EQ(mem4_alloc(333), nullptr);
    void *other = mem4_alloc(334);
    EXPECT_NE(other, nullptr);
    mem4_free(other);
    EXPECT_EQ(mem4_set_fail_hook(nullptr), fail_size);
    void *now = mem4_alloc(333);
    EXPECT_NE(now, nullptr);
    mem4_free(now);
}

TEST_F(Mem4, AllocOrErrorReportsMinus920SystemModal) {
    Engine engine;
    BoxCapture boxes;
    g_fail_size = 333;
    g_fail_times = -1;
    mem4_set_fail_hook(fail_size);
    EXPECT_EQ(mem4_alloc_or_error(engine, 333), nullptr);
    EXPECT_EQ(engine->error_code, -920);
    ASSERT_EQ(boxes.count(), 1u);
    EXPECT_EQ(boxes.last().title, "TABELLIX ERROR");
    EXPECT_EQ(boxes.last().text, "Error #: -920\nOut of Memory\n");
    EXPECT_EQ(boxes.last().style, 16u | 4096u);
    // Without an engine there is nobody to report to.
    EXPECT_EQ(mem4_alloc_or_error(nullptr, 333), nullptr);
    EXPECT_EQ(boxes.count(), 1u);
    engine->error_code = 0;
}

TEST_F(Mem4, AllocOrErrorWithMemoryReportsNothing) {
    Engine engine;
    BoxCapture boxes;
    void *block = mem4_alloc_or_error(engine, 64);
    EXPECT_NE(block, nullptr);
    EXPECT_EQ(boxes.count(), 0u);
    mem4_free(block);
}

TEST_F(Mem4, RetryStopsTheCacheTriesAgainAndRestartsIt) {
    Engine engine;
    ASSERT_EQ(engine4_cache_start(engine), 0);
    g_fail_size = 5555;
    g_fail_times = 1;
    mem4_set_fail_hook(fail_size);
    void *block = mem4_alloc_retry(engine, 5555);
    EXPECT_NE(block, nullptr);
    EXPECT_EQ(g_calls_of_size, 2);
    EXPECT_EQ(engine->cache_on, 1);
    EXPECT_GT(engine->cache.buffer_count, 0);
    mem4_free(block);
}

TEST_F(Mem4, RetryWithoutTheCacheTriesOnce) {
    Engine engine;
    g_fail_size = 5555;
    g_fail_times = 1;
    mem4_set_fail_hook(fail_size);
    EXPECT_EQ(mem4_alloc_retry(engine, 5555), nullptr);
    EXPECT_EQ(g_calls_of_size, 1);
    g_fail_times = 1;
    g_calls_of_size = 0;
    EXPECT_EQ(mem4_alloc_retry(nullptr, 5555), nullptr);
    EXPECT_EQ(g_calls_of_size, 1);
}

TEST_F(Mem4, RetryThatFailsTwiceStillRestartsTheCache) {
    Engine engine;
    ASSERT_EQ(engine4_cache_start(engine), 0);
    g_fail_size = 5555;
    g_fail_times = -1;
    mem4_set_fail_hook(fail_size);
    EXPECT_EQ(mem4_alloc_retry(engine, 5555), nullptr);
    EXPECT_EQ(g_calls_of_size, 2);
    EXPECT_EQ(engine->cache_on, 1);
}

TEST_F(Mem4, GrowKeepsTheContentAndDoesNothingWhenLargeEnough) {
    Engine engine;
    char *buffer = nullptr;
    uint32_t size = 0;
    ASSERT_EQ(mem4_grow(engine, &buffer, &size, 10), 0);
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(size, 10u);
    std::memcpy(buffer, "0123456789", 10);
    char *same = buffer;
    EXPECT_EQ(mem4_grow(engine, &buffer, &size, 8), 0);
    EXPECT_EQ(buffer, same);
    EXPECT_EQ(size, 10u);
    EXPECT_EQ(mem4_grow(engine, &buffer, &size, 100), 0);
    EXPECT_EQ(size, 100u);
    EXPECT_EQ(std::memcmp(buffer, "0123456789", 10), 0);
    for (int i = 10; i < 100; ++i) EXPECT_EQ(buffer[i], 0);
    mem4_free(buffer);
}

TEST_F(Mem4, GrowFailureReportsAndKeepsTheOldBuffer) {
    Engine engine;
    BoxCapture boxes;
    char *buffer = nullptr;
    uint32_t size = 0;
    ASSERT_EQ(mem4_grow(engine, &buffer, &size, 16), 0);
    char *old = buffer;
    g_fail_size = 64;
    g_fail_times = -1;
    mem4_set_fail_hook(fail_size);
    EXPECT_EQ(mem4_grow(engine, &buffer, &size, 64), -920);
    EXPECT_EQ(buffer, old);
    EXPECT_EQ(size, 16u);
    EXPECT_EQ(engine->error_code, -920);
    EXPECT_EQ(boxes.count(), 1u);
    // Handed no engine, the grow only returns -920.
    EXPECT_EQ(mem4_grow(nullptr, &buffer, &size, 64), -920);
    EXPECT_EQ(boxes.count(), 1u);
    mem4_set_fail_hook(nullptr);
    engine->error_code = 0;
    mem4_free(buffer);
    EXPECT_EQ(mem4_grow(engine, nullptr, &size, 1), -1);
}

// A block that did not come from the engine cannot be given back: the severe report ends
// the process with "Memory Error".
TEST(Mem4Death, FreeingAForeignBlockIsTheSevereMemoryError) {
    EXPECT_EXIT(
        {
            alignas(std::max_align_t) static char fake[64] = {};
            mem4_free(fake + 32);
        },
        ::testing::ExitedWithCode(1), "Severe Error Number #: -920\nOut of Memory\nMemory Error");
}

}  // namespace
