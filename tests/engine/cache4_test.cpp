// The block cache: start and its sizing, the switches of a file, cached reads and writes,
// eviction order, read-ahead, write-behind, and a randomized workload checked against a
// plain model of the files for several cache sizes.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "engine_test_support.h"
#include "plat_file.h"

namespace {

using enginetest::BoxCapture;
using enginetest::Engine;
using nqtest::TempDir;

std::string pattern(size_t length, unsigned seed) {
    std::string text(length, '\0');
    for (size_t i = 0; i < length; ++i) text[i] = static_cast<char>('A' + (i * 7 + seed) % 26);
    return text;
}

// A small cache: four buffers of four 1024-byte blocks.
void small_cache(engine4 *engine) {
    engine->cache_block_size = 1024;
    engine->big_buffer_size = 4096;
    engine->cache_memory = 6 * 4096;
}

TEST(Cache4Start, DefaultSizing) {
    Engine engine;
    ASSERT_EQ(engine4_cache_start(engine), 0);
    const cache4 &cache = engine->cache;
    EXPECT_EQ(engine->cache_on, 1);
    EXPECT_EQ(cache.block_size, 1024u);
    EXPECT_EQ(cache.buffer_size, 16384u);
    EXPECT_EQ(cache.blocks_per_buffer, 16u);
    EXPECT_EQ(cache.buffer_count, 983040 / 16384 - 2);
    EXPECT_EQ(cache.block_count, 58u * 16u);
    EXPECT_EQ(cache.hash_size, 1024u);  // 2 << log2(928)
    EXPECT_EQ(cache.hash_mask, 1023u);
    EXPECT_EQ(cache.block_shift, 10);
    EXPECT_EQ(cache.offset_shift, 22);
    EXPECT_EQ(cache.free_blocks.count, 928u);
    EXPECT_EQ(cache.miss_count, 10);
    EXPECT_EQ(engine->usage_flags, 128u);
    EXPECT_EQ(cache.evict_first, &engine->cache.memo_blocks);
    EXPECT_EQ(cache.evict_second, &engine->cache.index_blocks);
    EXPECT_EQ(cache.evict_third, &engine->cache.data_blocks);
    EXPECT_NE(cache.write_buffer, nullptr);
    EXPECT_NE(cache.read_ahead_buffer, nullptr);
    EXPECT_EQ(engine4_cache_start(engine), 0);  // running already
    EXPECT_EQ(cache.buffer_count, 58);
    EXPECT_EQ(engine4_cache_stop(engine), 0);
    EXPECT_EQ(engine->cache_on, 0);
    EXPECT_EQ(engine->cache.buffer_count, 0);
    EXPECT_EQ(engine4_cache_stop(engine), 0);  // stopped already
}

TEST(Cache4Start, RefusesBadSizes) {
    Engine engine;
    engine->cache_block_size = 0;
    EXPECT_EQ(engine4_cache_start(engine), -1);
    engine->cache_block_size = 1024;
    engine->big_buffer_size = 0;
    EXPECT_EQ(engine4_cache_start(engine), -1);
    engine->big_buffer_size = 512;
    EXPECT_EQ(engine4_cache_start(engine), -1);
    engine->big_buffer_size = 16384;
    engine->cache_block_size = 1000;  // blocks are of a power-of-two size
    EXPECT_EQ(engine4_cache_start(engine), -1);
    EXPECT_EQ(engine->cache_on, 0);
    EXPECT_EQ(engine4_cache_start(nullptr), -1);
    EXPECT_EQ(engine4_cache_stop(nullptr), -1);
}

TEST(Cache4Start, ABufferSizeThatIsNotWholeBlocksIsRoundedDown) {
    Engine engine;
    engine->big_buffer_size = 16384 + 1000;
    ASSERT_EQ(engine4_cache_start(engine), 0);
    EXPECT_EQ(engine->cache.buffer_size, 16384u);
}

TEST(Cache4Start, LittleMemoryShrinksTheBufferOneBlockAtATimeUntilFourFit) {
    Engine engine;
    engine->cache_memory = 5 * 16384;  // fewer than six buffers
    ASSERT_EQ(engine4_cache_start(engine), 0);
    // 81920 / 16384 - 2 = 3; ... 81920 / 13312 - 2 = 4.
    EXPECT_EQ(engine->cache.buffer_size, 13312u);
    EXPECT_EQ(engine->cache.buffer_count, 4);
    EXPECT_EQ(engine->cache.block_count, 4u * 13u);
}

TEST(Cache4Start, TooLittleMemoryFailsOnlyAtBufferSizeZero) {
    Engine engine;
    engine->cache_memory = 5000;
    EXPECT_EQ(engine4_cache_start(engine), -1);
    EXPECT_EQ(engine->cache_on, 0);
    engine->cache_memory = 6 * 1024;  // exactly four buffers of one block
    ASSERT_EQ(engine4_cache_start(engine), 0);
    EXPECT_EQ(engine->cache.buffer_size, 1024u);
    EXPECT_EQ(engine->cache.buffer_count, 4);
}

int g_allowed = 0;
int allow_some_buffers(size_t size) {
    if (size != 16384) return 0;
    return g_allowed-- > 0 ? 0 : 1;
}

TEST(Cache4Start, FewerThanFourBuffersTryFourOfHalfTheSize) {
    Engine engine;
    g_allowed = 4;  // the write and read-ahead buffers and two buffers
    mem4_set_fail_hook(allow_some_buffers);
    ASSERT_EQ(engine4_cache_start(engine), 0);
    mem4_set_fail_hook(nullptr);
    EXPECT_EQ(engine->cache.buffer_size, 8192u);
    EXPECT_EQ(engine->cache.buffer_count, 4);
    EXPECT_EQ(engine->cache.free_blocks.count, 32u);
}

TEST(Cache4Start, NoBufferAtAllStopsTheCache) {
    Engine engine;
    g_allowed = 2;
    mem4_set_fail_hook(allow_some_buffers);
    EXPECT_EQ(engine4_cache_start(engine), -1);
    mem4_set_fail_hook(nullptr);
    EXPECT_EQ(engine->cache_on, 0);
    EXPECT_EQ(engine->cache.buffer_count, 0);
}

class Cache4 : public ::testing::Test {
protected:
    TempDir dir;
    Engine engine;
    std::string path(const char *name) const { return dir.file(name); }
    // An open file with content, under cache control of the given type.
    void open_with(file4 *file, const char *name, const std::string &content, int type) {
        nqtest::write_file(path(name), content);
        ASSERT_EQ(file4_open(file, engine, path(name).c_str(), 1), 0);
        ASSERT_EQ(file4_cache_type(file, 1, type), 0);
    }
};

TEST_F(Cache4, CacheTypeMinusOneBuffersOnlyExclusiveOrReadOnlyFiles) {
    ASSERT_EQ(engine4_cache_start(engine), 0);
    file4 shared, alone;
    nqtest::write_file(path("S"), "s");
    nqtest::write_file(path("A"), "a");
    ASSERT_EQ(file4_open(&shared, engine, path("S").c_str(), 1), 0);
    EXPECT_EQ(file4_cache_type(&shared, -1, 1), 0);
    EXPECT_EQ(shared.cache_type, 0);
    EXPECT_EQ(shared.do_buffer, 0);
    engine->exclusive = 1;
    ASSERT_EQ(file4_open(&alone, engine, path("A").c_str(), 1), 0);
    engine->exclusive = 0;
    EXPECT_EQ(file4_cache_type(&alone, -1, 2), 0);
    EXPECT_EQ(alone.cache_type, 2);
    EXPECT_EQ(alone.do_buffer, 1);
    EXPECT_EQ(alone.write_mode, 1);  // from optimize_write_default -1: exclusive
    EXPECT_EQ(alone.write_delay, 1);
    EXPECT_EQ(l4_contains(&engine->cache_files, &alone), 1);
    file4_close(&shared);
    file4_close(&alone);
    EXPECT_EQ(engine->cache_files.count, 0u);
}

TEST_F(Cache4, FilesArePlacedApartInTheHashSpace) {
    ASSERT_EQ(engine4_cache_start(engine), 0);
    file4 first, second, third;
    open_with(&first, "F1", std::string(5000, 'x'), 1);
    EXPECT_EQ(first.hash_start, 0);
    EXPECT_EQ(first.known_length, -1);
    EXPECT_EQ(engine->cache.hash_cursor, 4u);  // 5000 bytes: four whole blocks
    open_with(&second, "F2", std::string(100, 'y'), 2);
    EXPECT_EQ(second.hash_start, 4 * 1024);
    EXPECT_EQ(engine->cache.hash_cursor, 4u);
    open_with(&third, "F3", "", 3);
    EXPECT_EQ(third.hash_start, 4 * 1024);
    // Switching on again changes nothing.
    EXPECT_EQ(file4_cache_type(&first, 1, 2), 0);
    EXPECT_EQ(first.cache_type, 1);
    file4_close(&first);
    file4_close(&second);
    file4_close(&third);
}

TEST_F(Cache4, WithoutTheCacheAFileWaitsUnplacedUntilItStarts) {
    file4 file;
    open_with(&file, "F", std::string(3000, 'x'), 1);
    EXPECT_EQ(file.hash_start, -1);
    EXPECT_EQ(file.do_buffer, 0);
    EXPECT_EQ(file.cache_type, 1);
    ASSERT_EQ(engine4_cache_start(engine), 0);
    EXPECT_EQ(file.hash_start, 0);
    EXPECT_EQ(file.do_buffer, 1);
    EXPECT_EQ(file.known_length, -1);
    EXPECT_EQ(engine->cache.hash_cursor, 2u);
    char buffer[3000];
    EXPECT_EQ(file4_read(&file, 0, buffer, 3000), 3000u);
    EXPECT_NE(file4_cache_find(&file, 0), nullptr);
    ASSERT_EQ(engine4_cache_stop(engine), 0);
    EXPECT_EQ(file.do_buffer, 0);
    EXPECT_EQ(file.cache_type, 1);
    EXPECT_EQ(file4_cache_find(&file, 0), nullptr);
    file4_close(&file);
}

TEST_F(Cache4, SwitchingOffFlushesDropsAndLeaves) {
    ASSERT_EQ(engine4_cache_start(engine), 0);
    engine->exclusive = 1;
    file4 file;
    open_with(&file, "F", "", 1);
    ASSERT_EQ(file4_write(&file, 0, "delayed", 7), 0);
    EXPECT_EQ(nqtest::read_file(path("F")), "");
    EXPECT_EQ(file4_cache_type(&file, 0, 1), 0);
    EXPECT_EQ(nqtest::read_file(path("F")), "delayed");
    EXPECT_EQ(file.cache_type, 0);
    EXPECT_EQ(file.do_buffer, 0);
    EXPECT_EQ(file.write_mode, 0);
    EXPECT_EQ(file.write_delay, 0);
    EXPECT_EQ(engine->cache_files.count, 0u);
    EXPECT_EQ(engine->cache.free_blocks.count, engine->cache.block_count);
    EXPECT_EQ(file4_cache_type(&file, 0, 1), 0);  // off already
    file4_close(&file);
}

TEST_F(Cache4, WriteModes) {
    ASSERT_EQ(engine4_cache_start(engine), 0);
    file4 shared;
    open_with(&shared, "S", "", 1);
    EXPECT_EQ(shared.write_mode, 0);
    EXPECT_EQ(file4_write_mode(&shared, 1), 0);
    EXPECT_EQ(shared.write_mode, 1);
    EXPECT_EQ(shared.write_delay, 0);  // shared: no delay until a lock
    file4_write_delay(&shared, 1);
    EXPECT_EQ(shared.write_delay, 1);
    ASSERT_EQ(file4_write(&shared, 0, "abc", 3), 0);
    EXPECT_EQ(nqtest::read_file(path("S")), "");
    EXPECT_EQ(file4_write_mode(&shared, -1), 0);  // shared: flushed, then off
    EXPECT_EQ(nqtest::read_file(path("S")), "abc");
    EXPECT_EQ(shared.write_mode, 0);
    EXPECT_EQ(shared.write_delay, 0);
    file4_write_delay(&shared, 1);
    EXPECT_EQ(shared.write_delay, 0);  // only in write mode
    EXPECT_EQ(file4_write_mode(&shared, 0), 0);  // equal: no change
    EXPECT_EQ(file4_write_mode(&shared, 2), -1);
    engine->exclusive = 1;
    file4 alone;
    open_with(&alone, "A", "", 2);
    engine->exclusive = 0;
    EXPECT_EQ(file4_write_mode(&alone, 0), 0);
    EXPECT_EQ(alone.write_mode, 0);
    EXPECT_EQ(alone.write_delay, 0);
    EXPECT_EQ(file4_write_mode(&alone, 1), 0);
    EXPECT_EQ(alone.write_delay, 1);
    ASSERT_EQ(file4_write(&alone, 0, "xyz", 3), 0);
    EXPECT_EQ(file4_write_mode(&alone, 0), 0);  // flushed, then off
    EXPECT_EQ(nqtest::read_file(path("A")), "xyz");
    EXPECT_EQ(file4_write_mode(&alone, -1), 0);
    EXPECT_EQ(alone.write_mode, 1);
    EXPECT_EQ(alone.write_delay, 1);
    file4_close(&shared);
    file4_close(&alone);
}

TEST_F(Cache4, TheLengthTheCacheLearnedUnderALockFollowsLaterWrites) {
    ASSERT_EQ(engine4_cache_start(engine), 0);
    file4 file;
    open_with(&file, "F", "", 1);
    ASSERT_EQ(file4_write_mode(&file, 1), 0);
    ASSERT_EQ(file4_lock(&file, lock4_append_offset, 1), 0);
    ASSERT_EQ(file4_write(&file, 0, "0123456789", 10), 0);
    EXPECT_EQ(file.known_length, 10);
    ASSERT_EQ(file4_flush(&file, 0), 0);
    ASSERT_EQ(file4_unlock(&file, lock4_append_offset, 1), 0);
    ASSERT_EQ(file4_write(&file, 20, "tail", 4), 0);  // written through
    EXPECT_EQ(nqtest::read_file(path("F")), std::string("0123456789") + std::string(10, '\0') + "tail");
    EXPECT_EQ(file4_length(&file), 24);
    ASSERT_EQ(file4_set_length(&file, 12), 0);
    EXPECT_EQ(file4_length(&file), 12);
    EXPECT_EQ(nqtest::read_file(path("F")), "0123456789" + std::string(2, '\0'));
    file4_close(&file);
}

TEST_F(Cache4, AFullBlockWriteAtABoundaryDoesNotReadTheBlock) {
    ASSERT_EQ(engine4_cache_start(engine), 0);
    engine->exclusive = 1;
    file4 file;
    open_with(&file, "F", pattern(8192, 1), 1);
    const std::string block(1024, '#');
    auto reads = nqplat::file_call_counts().reads;
    ASSERT_EQ(file4_write(&file, 2048, block.data(), 1024), 0);
    EXPECT_EQ(nqplat::file_call_counts().reads, reads);
    cache_block *cached = file4_cache_find(&file, 2048);
    ASSERT_NE(cached, nullptr);
    EXPECT_EQ(cached->length, 1024u);
    EXPECT_EQ(cached->changed, 1);
    // A part of a block within the file reads the rest of it first.
    ASSERT_EQ(file4_write(&file, 4096 + 5, "abc", 3), 0);
    EXPECT_EQ(nqplat::file_call_counts().reads, reads + 1);
    // Past the end of the file there is nothing to read.
    reads = nqplat::file_call_counts().reads;
    ASSERT_EQ(file4_write(&file, 20000, "end", 3), 0);
    EXPECT_EQ(nqplat::file_call_counts().reads, reads);
    EXPECT_EQ(file4_length(&file), 20003);
    file4_close(&file);
    std::string expected = pattern(8192, 1);
    expected.replace(2048, 1024, block);
    expected.replace(4101, 3, "abc");
    expected.resize(20000, '\0');
    expected += "end";
    EXPECT_EQ(nqtest::read_file(path("F")), expected);
}

TEST_F(Cache4, ReadsComeFromTheCacheOnceTheBlockIsThere) {
    ASSERT_EQ(engine4_cache_start(engine), 0);
    file4 file;
    const std::string content = pattern(5000, 2);
    open_with(&file, "F", content, 1);
    char buffer[5000];
    ASSERT_EQ(file4_read(&file, 0, buffer, 5000), 5000u);
    EXPECT_EQ(std::string(buffer, 5000), content);
    const auto reads = nqplat::file_call_counts().reads;
    ASSERT_EQ(file4_read(&file, 1000, buffer, 3000), 3000u);
    EXPECT_EQ(std::string(buffer, 3000), content.substr(1000, 3000));
    EXPECT_EQ(nqplat::file_call_counts().reads, reads);
    // A read past the end stops at the last, short block.
    EXPECT_EQ(file4_read(&file, 4500, buffer, 2000), 500u);
    EXPECT_EQ(file4_read(&file, 9000, buffer, 10), 0u);
    file4_close(&file);
}

TEST_F(Cache4, ReadFreshReadsAnUnchangedBlockOfASharedFileAgain) {
    ASSERT_EQ(engine4_cache_start(engine), 0);
    file4 file;
    open_with(&file, "F", "old text", 1);
    char buffer[9] = {};
    ASSERT_EQ(file4_read(&file, 0, buffer, 8), 8u);
    Engine writer;
    file4 other;
    ASSERT_EQ(file4_open(&other, writer, path("F").c_str(), 1), 0);
    ASSERT_EQ(file4_write(&other, 0, "new", 3), 0);
    ASSERT_EQ(file4_read(&file, 0, buffer, 8), 8u);
    EXPECT_STREQ(buffer, "old text");  // the cache's copy
    engine->read_fresh = 1;
    ASSERT_EQ(file4_read(&file, 0, buffer, 8), 8u);
    engine->read_fresh = 0;
    EXPECT_STREQ(buffer, "new text");
    file4_close(&other);
    file4_close(&file);
}

TEST_F(Cache4, RefreshDropsWhatWasCachedAndForgetsTheLength) {
    ASSERT_EQ(engine4_cache_start(engine), 0);
    file4 file;
    const std::string content = pattern(2048, 7);
    open_with(&file, "F", content, 1);
    char buffer[16] = {};
    ASSERT_EQ(file4_read(&file, 0, buffer, 10), 10u);
    Engine writer;
    file4 other;
    ASSERT_EQ(file4_open(&other, writer, path("F").c_str(), 1), 0);
    ASSERT_EQ(file4_write(&other, 5, "ABCDEFGH", 8), 0);
    ASSERT_EQ(file4_write(&other, 2048, "more", 4), 0);
    EXPECT_EQ(file4_read(&file, 0, buffer, 13), 13u);
    EXPECT_EQ(std::string(buffer, 13), content.substr(0, 13));  // the cache's old copy
    EXPECT_EQ(file4_refresh(&file), 0);
    EXPECT_EQ(file.known_length, -1);
    EXPECT_EQ(file4_cache_find(&file, 0), nullptr);
    EXPECT_EQ(file4_read(&file, 0, buffer, 13), 13u);
    EXPECT_EQ(std::string(buffer, 13), content.substr(0, 5) + "ABCDEFGH");
    EXPECT_EQ(file4_length(&file), 2052);
    file4_close(&other);
    file4_close(&file);
}

TEST_F(Cache4, RefreshLeavesExclusiveAndReadOnlyFilesAlone) {
    ASSERT_EQ(engine4_cache_start(engine), 0);
    engine->exclusive = 1;
    file4 file;
    open_with(&file, "F", "", 1);
    ASSERT_EQ(file4_write(&file, 0, "kept", 4), 0);
    EXPECT_EQ(file4_refresh(&file), 0);
    EXPECT_NE(file4_cache_find(&file, 0), nullptr);
    EXPECT_EQ(file.known_length, 4);
    file4_close(&file);
}

TEST_F(Cache4, SetLengthDropsAndCutsBlocksAndADelayedFileKeepsTheLengthItself) {
    ASSERT_EQ(engine4_cache_start(engine), 0);
    engine->exclusive = 1;
    file4 file;
    open_with(&file, "F", "", 1);
    const std::string content = pattern(10000, 3);
    ASSERT_EQ(file4_write(&file, 0, content.data(), 10000), 0);
    EXPECT_EQ(file4_length(&file), 10000);
    EXPECT_EQ(nqtest::read_file(path("F")), "");  // all in the cache
    ASSERT_EQ(file4_set_length(&file, 3000), 0);
    EXPECT_EQ(file4_length(&file), 3000);
    EXPECT_EQ(file4_cache_find(&file, 5000), nullptr);
    ASSERT_NE(file4_cache_find(&file, 2048), nullptr);
    EXPECT_EQ(file4_cache_find(&file, 2048)->length, 3000u - 2048u);
    EXPECT_EQ(nqtest::read_file(path("F")), "");  // the disk is not touched
    ASSERT_EQ(file4_set_length(&file, 12000), 0);
    EXPECT_EQ(file4_length(&file), 12000);
    char buffer[100];
    ASSERT_EQ(file4_read(&file, 2990, buffer, 100), 100u);
    EXPECT_EQ(std::string(buffer, 10), content.substr(2990, 10));
    EXPECT_EQ(std::string(buffer + 10, 90), std::string(90, '\0'));
    ASSERT_EQ(file4_flush(&file, 0), 0);
    std::string expected = content.substr(0, 3000);
    expected.resize(12000, '\0');
    EXPECT_EQ(nqtest::read_file(path("F")), expected);
    file4_close(&file);
}

TEST_F(Cache4, BytesCutOffUnderDelayReadAsZerosWhenTheFileGrowsAgain) {
    ASSERT_EQ(engine4_cache_start(engine), 0);
    engine->exclusive = 1;
    file4 file;
    open_with(&file, "F", "", 1);
    const std::string content = pattern(3000, 11);
    ASSERT_EQ(file4_write(&file, 0, content.data(), 3000), 0);
    ASSERT_EQ(file4_flush(&file, 0), 0);
    EXPECT_EQ(nqtest::read_file(path("F")), content);
    ASSERT_EQ(file4_set_length(&file, 1000), 0);
    ASSERT_EQ(file4_set_length(&file, 3000), 0);
    char buffer[3000];
    ASSERT_EQ(file4_read(&file, 0, buffer, 3000), 3000u);
    EXPECT_EQ(std::string(buffer, 1000), content.substr(0, 1000));
    EXPECT_EQ(std::string(buffer + 1000, 2000), std::string(2000, '\0'));
    file4_close(&file);
    EXPECT_EQ(nqtest::read_file(path("F")), content.substr(0, 1000) + std::string(2000, '\0'));
}

TEST_F(Cache4, FlushWithDropFreesTheFilesBlocks) {
    ASSERT_EQ(engine4_cache_start(engine), 0);
    file4 file;
    open_with(&file, "F", pattern(8000, 4), 1);
    char buffer[8000];
    ASSERT_EQ(file4_read(&file, 0, buffer, 8000), 8000u);
    EXPECT_EQ(engine->cache.data_blocks.count, 8u);
    EXPECT_EQ(file4_flush(&file, 0), 0);
    EXPECT_EQ(engine->cache.data_blocks.count, 8u);
    EXPECT_EQ(file4_flush(&file, 1), 0);
    EXPECT_EQ(engine->cache.data_blocks.count, 0u);
    EXPECT_EQ(engine->cache.free_blocks.count, engine->cache.block_count);
    file4_close(&file);
}

TEST_F(Cache4, DropThrowsAChangedBlockAwayUnwritten) {
    ASSERT_EQ(engine4_cache_start(engine), 0);
    engine->exclusive = 1;
    file4 file;
    open_with(&file, "F", "header....", 1);
    ASSERT_EQ(file4_write(&file, 0, "HEADER", 6), 0);
    file4_cache_drop(&file, 3);
    EXPECT_EQ(file4_cache_find(&file, 0), nullptr);
    char buffer[11] = {};
    ASSERT_EQ(file4_read(&file, 0, buffer, 10), 10u);
    EXPECT_STREQ(buffer, "header....");
    file4_close(&file);
    EXPECT_EQ(nqtest::read_file(path("F")), "header....");
}

TEST_F(Cache4, StopWritesWhatIsDelayedAndRestartBuffersTheFilesAgain) {
    ASSERT_EQ(engine4_cache_start(engine), 0);
    engine->exclusive = 1;
    file4 file;
    open_with(&file, "F", "", 3);
    ASSERT_EQ(file4_write(&file, 0, "kept across", 11), 0);
    EXPECT_EQ(nqtest::read_file(path("F")), "");
    ASSERT_EQ(engine4_cache_stop(engine), 0);
    EXPECT_EQ(nqtest::read_file(path("F")), "kept across");
    EXPECT_EQ(file.do_buffer, 0);
    EXPECT_EQ(file.write_delay, 0);
    EXPECT_EQ(file.write_mode, 1);
    ASSERT_EQ(engine4_cache_start(engine), 0);
    EXPECT_EQ(file.do_buffer, 1);
    EXPECT_EQ(file.write_delay, 1);
    EXPECT_EQ(file.known_length, -1);
    EXPECT_EQ(file4_length(&file), 11);
    file4_close(&file);
}

TEST_F(Cache4, AFlushThatFailsWhileStoppingIsMinus620) {
    BoxCapture boxes;
    ASSERT_EQ(engine4_cache_start(engine), 0);
    engine->exclusive = 1;
    file4 file;
    open_with(&file, "F", "", 1);
    ASSERT_EQ(file4_write(&file, 0, "lost", 4), 0);
    const int32_t handle = file.handle;
    file.handle = 424242;  // the write cannot reach the file
    EXPECT_EQ(engine4_cache_stop(engine), -620);
    EXPECT_EQ(engine->error_code, -620);
    ASSERT_GE(boxes.count(), 2u);
    EXPECT_EQ(boxes.boxes()[0].text, "Error #: -120\nWriting to File\n" + path("F") + "\n");
    EXPECT_EQ(boxes.last().text, "Error #: -620\nOptimization Removal Failure\n");
    engine->error_code = 0;
    file.handle = handle;
    file4_close(&file);
}

TEST_F(Cache4, AFlushThatFailsWhileSwitchingOffIsMinus630) {
    BoxCapture boxes;
    ASSERT_EQ(engine4_cache_start(engine), 0);
    engine->exclusive = 1;
    file4 file;
    open_with(&file, "F", "", 1);
    ASSERT_EQ(file4_write(&file, 0, "lost", 4), 0);
    const int32_t handle = file.handle;
    file.handle = 424242;
    EXPECT_EQ(file4_cache_type(&file, 0, 1), -630);
    EXPECT_EQ(boxes.last().text, "Error #: -630\nOptimization File Flushing Failure\n");
    engine->error_code = 0;
    file.handle = handle;
    file4_close(&file);
}

// ---- eviction order ---------------------------------------------------------------------

class Cache4Eviction : public Cache4 {
protected:
    file4 memo, index, data;
    void SetUp() override {
        small_cache(engine);
        ASSERT_EQ(engine4_cache_start(engine), 0);
        ASSERT_EQ(engine->cache.block_count, 16u);
        open_with(&memo, "M", pattern(16384, 1), 3);
        open_with(&index, "I", pattern(16384, 2), 2);
        open_with(&data, "D", pattern(32768, 3), 1);
    }
    void TearDown() override {
        file4_close(&memo);
        file4_close(&index);
        file4_close(&data);
    }
    void read_block(file4 *file, uint32_t block) {
        char buffer[1024];
        ASSERT_EQ(file4_read(file, block * 1024, buffer, 1024), 1024u);
    }
    bool cached(file4 *file, uint32_t block) { return file4_cache_find(file, block * 1024) != nullptr; }
};

TEST_F(Cache4Eviction, TheMemoListGoesFirstThenTheOrderOfTheUsageSeen) {
    for (uint32_t b = 0; b < 4; ++b) read_block(&memo, b);
    for (uint32_t b = 0; b < 4; ++b) read_block(&index, b);
    for (uint32_t b = 0; b < 8; ++b) read_block(&data, b);
    EXPECT_EQ(engine->cache.free_blocks.count, 0u);
    // The first miss without a free block: miss_count passes 10 and the usage since the
    // start (128) puts data before index. The memo list gives its oldest first.
    read_block(&data, 8);
    EXPECT_EQ(engine->cache.mode_seen, 128);
    EXPECT_EQ(engine->cache.evict_second, &engine->cache.data_blocks);
    EXPECT_EQ(engine->cache.evict_third, &engine->cache.index_blocks);
    EXPECT_EQ(engine->usage_flags, 0u);
    EXPECT_EQ(engine->cache.miss_count, 5);
    EXPECT_FALSE(cached(&memo, 0));
    EXPECT_TRUE(cached(&memo, 1));
    for (uint32_t b = 9; b < 12; ++b) read_block(&data, b);
    for (uint32_t b = 0; b < 4; ++b) EXPECT_FALSE(cached(&memo, b)) << b;
    EXPECT_EQ(engine->cache.miss_count, 8);
    // The memo list is empty: data gives up its oldest, index is kept.
    read_block(&data, 12);
    EXPECT_FALSE(cached(&data, 0));
    EXPECT_TRUE(cached(&data, 1));
    for (uint32_t b = 0; b < 4; ++b) EXPECT_TRUE(cached(&index, b)) << b;
    // Appends seen: index before data once miss_count passes 10 again.
    engine->usage_flags |= usage4_append;
    read_block(&data, 13);  // miss_count 10: the order stands, data block 1 goes
    EXPECT_FALSE(cached(&data, 1));
    EXPECT_TRUE(cached(&index, 0));
    read_block(&data, 14);  // 11: adapt
    EXPECT_EQ(engine->cache.mode_seen, 16);
    EXPECT_EQ(engine->cache.evict_second, &engine->cache.index_blocks);
    EXPECT_EQ(engine->cache.miss_count, 0);
    EXPECT_FALSE(cached(&index, 0));
    EXPECT_TRUE(cached(&data, 2));
}

TEST_F(Cache4Eviction, ARecentlyUsedBlockStaysLonger) {
    for (uint32_t b = 0; b < 16; ++b) read_block(&data, b);
    read_block(&data, 0);  // used again: now the most recent
    read_block(&data, 16);
    EXPECT_TRUE(cached(&data, 0));
    EXPECT_FALSE(cached(&data, 1));
}

struct AdaptCase {
    uint32_t usage;
    uint8_t read_ahead;
    bool data_second;
    uint8_t miss_count;
};

TEST_F(Cache4Eviction, TheUsageSeenChoosesReadAheadAndOrder) {
    const AdaptCase cases[] = {
        {0, 0, false, 0},   {1, 0, false, 0},   {2, 1, false, 0},  {4, 2, false, 0},
        {6, 3, false, 0},   {7, 3, false, 0},   {8, 0, true, 0},   {15, 0, true, 0},
        {16, 0, false, 0},  {63, 0, false, 0},  {64, 0, true, 5},  {255, 0, true, 5},
        {0x300 | 2, 1, false, 0},  // only the low byte counts
    };
    for (uint32_t b = 0; b < 16; ++b) read_block(&data, b);
    uint32_t next = 16;
    for (const AdaptCase &c : cases) {
        engine->cache.mode_seen = 200;  // something else, so that the usage counts as new
        engine->cache.miss_count = 10;
        engine->usage_flags = c.usage;
        read_block(&data, next++ % 32);
        EXPECT_EQ(engine->cache.read_ahead_mode, c.read_ahead) << c.usage;
        EXPECT_EQ(engine->cache.evict_first, &engine->cache.memo_blocks) << c.usage;
        EXPECT_EQ(engine->cache.evict_second,
                  c.data_second ? &engine->cache.data_blocks : &engine->cache.index_blocks)
            << c.usage;
        EXPECT_EQ(engine->cache.evict_third,
                  c.data_second ? &engine->cache.index_blocks : &engine->cache.data_blocks)
            << c.usage;
        EXPECT_EQ(engine->cache.miss_count, c.miss_count) << c.usage;
        EXPECT_EQ(engine->usage_flags, 0u);
        EXPECT_EQ(engine->cache.mode_seen, c.usage & 0xFF);
    }
    // The same usage again changes nothing and the misses go on counting.
    engine->cache.miss_count = 10;
    engine->usage_flags = 2;
    engine->cache.mode_seen = 2;
    engine->cache.read_ahead_mode = 0;
    read_block(&data, 3);
    EXPECT_EQ(engine->cache.miss_count, 11);
    EXPECT_EQ(engine->usage_flags, 2u);
    EXPECT_EQ(engine->cache.read_ahead_mode, 0);
}

// ---- read-ahead and write-behind --------------------------------------------------------

TEST_F(Cache4, ReadAheadFillsTheBufferSizedRangeOfAMissingBlock) {
    ASSERT_EQ(engine4_cache_start(engine), 0);
    file4 data, index;
    const std::string content = pattern(65536, 5);
    open_with(&data, "D", content, 1);
    open_with(&index, "I", content, 2);
    engine->cache.read_ahead_mode = 1;
    auto reads = nqplat::file_call_counts().reads;
    char byte = 0;
    ASSERT_EQ(file4_read(&data, 20000, &byte, 1), 1u);
    EXPECT_EQ(byte, content[20000]);
    EXPECT_EQ(nqplat::file_call_counts().reads, reads + 1);
    for (uint32_t p = 16384; p < 32768; p += 1024) EXPECT_NE(file4_cache_find(&data, p), nullptr) << p;
    EXPECT_EQ(file4_cache_find(&data, 15360), nullptr);
    EXPECT_EQ(file4_cache_find(&data, 32768), nullptr);
    char buffer[16384];
    reads = nqplat::file_call_counts().reads;
    ASSERT_EQ(file4_read(&data, 16384, buffer, 16384), 16384u);
    EXPECT_EQ(std::string(buffer, 16384), content.substr(16384, 16384));
    EXPECT_EQ(nqplat::file_call_counts().reads, reads);
    // Mode 1 reads data files ahead, not index files.
    ASSERT_EQ(file4_read(&index, 20000, &byte, 1), 1u);
    EXPECT_EQ(file4_cache_find(&index, 16384), nullptr);
    // Modes 2 and 3 read index files ahead, not data files.
    engine->cache.read_ahead_mode = 3;
    ASSERT_EQ(file4_read(&index, 40000, &byte, 1), 1u);
    EXPECT_NE(file4_cache_find(&index, 32768), nullptr);
    EXPECT_NE(file4_cache_find(&index, 48128), nullptr);
    ASSERT_EQ(file4_read(&data, 40000, &byte, 1), 1u);
    EXPECT_EQ(file4_cache_find(&data, 32768), nullptr);
    // Near the end only what the file has becomes blocks.
    engine->cache.read_ahead_mode = 1;
    ASSERT_EQ(file4_read(&data, 65000, buffer, 1000), 536u);
    ASSERT_NE(file4_cache_find(&data, 65536), nullptr);  // the miss past the end: no bytes
    EXPECT_EQ(file4_cache_find(&data, 65536)->length, 0u);
    EXPECT_EQ(file4_cache_find(&data, 66560), nullptr);
    file4_close(&data);
    file4_close(&index);
}

TEST_F(Cache4, ChangedBlocksLeaveThroughTheWriteBehindRun) {
    small_cache(engine);
    ASSERT_EQ(engine4_cache_start(engine), 0);
    engine->exclusive = 1;
    file4 file;
    open_with(&file, "F", "", 1);
    const std::string content = pattern(64 * 1024, 6);
    const auto writes = nqplat::file_call_counts().writes;
    for (uint32_t b = 0; b < 64; ++b) {
        ASSERT_EQ(file4_write(&file, b * 1024, content.data() + b * 1024, 1024), 0);
    }
    // 48 blocks had to leave; they went in runs of up to four.
    const auto written = nqplat::file_call_counts().writes - writes;
    EXPECT_GE(written, 11u);
    EXPECT_LE(written, 13u);
    char buffer[1024];
    ASSERT_EQ(file4_read(&file, 5 * 1024, buffer, 1024), 1024u);  // from the disk or the run
    EXPECT_EQ(std::string(buffer, 1024), content.substr(5 * 1024, 1024));
    ASSERT_EQ(file4_flush(&file, 0), 0);
    EXPECT_EQ(nqtest::read_file(path("F")), content);
    file4_close(&file);
}

TEST_F(Cache4, AReadOfARangeInTheWriteBehindRunWritesTheRunFirst) {
    small_cache(engine);
    ASSERT_EQ(engine4_cache_start(engine), 0);
    engine->exclusive = 1;
    file4 file;
    open_with(&file, "F", "", 1);
    const std::string content = pattern(18 * 1024, 8);
    ASSERT_EQ(file4_write(&file, 0, content.data(), 18 * 1024), 0);
    // Blocks 0 and 1 left the cache and wait in the run; nothing is on the disk yet.
    EXPECT_EQ(file4_cache_find(&file, 0), nullptr);
    EXPECT_EQ(engine->cache.write_file, &file);
    EXPECT_EQ(engine->cache.write_blocks, 2u);
    EXPECT_EQ(nqtest::read_file(path("F")), "");
    char buffer[1024];
    ASSERT_EQ(file4_read(&file, 0, buffer, 1024), 1024u);
    EXPECT_EQ(std::string(buffer, 1024), content.substr(0, 1024));
    file4_close(&file);
    EXPECT_EQ(nqtest::read_file(path("F")), content);
}

TEST_F(Cache4, ReadAheadNeverOverwritesBlocksThatLeftTheCacheWhileItRan) {
    small_cache(engine);
    ASSERT_EQ(engine4_cache_start(engine), 0);
    engine->exclusive = 1;
    file4 file;
    open_with(&file, "F", pattern(16 * 1024, 9), 1);
    const std::string changed = pattern(16 * 1024, 10);
    ASSERT_EQ(file4_write(&file, 0, changed.data(), 16 * 1024), 0);  // sixteen changed blocks
    char buffer[1024];
    EXPECT_EQ(file4_read(&file, 17 * 1024, buffer, 10), 0u);  // block 0 leaves for the run
    engine->cache.read_ahead_mode = 1;
    // The miss on block 0 reads its range ahead; the blocks it takes push the changed
    // blocks 1, 2 ... of that very range out, whose bytes on the disk are older.
    for (uint32_t b = 0; b < 4; ++b) {
        ASSERT_EQ(file4_read(&file, b * 1024, buffer, 1024), 1024u);
        EXPECT_EQ(std::string(buffer, 1024), changed.substr(b * 1024, 1024)) << b;
    }
    file4_close(&file);
    EXPECT_EQ(nqtest::read_file(path("F")), changed);
}

TEST_F(Cache4, TableModesReachEveryFileOfATable) {
    ASSERT_EQ(engine4_cache_start(engine), 0);
    nqtest::write_file(path("T.DBF"), "d");
    nqtest::write_file(path("T.CDX"), "i");
    nqtest::write_file(path("T.FPT"), "m");
    table4 table;
    std::memset(&table, 0, sizeof(table));
    table.engine = engine;
    index4 index;
    std::memset(&index, 0, sizeof(index));
    ASSERT_EQ(file4_open(&table.file, engine, path("T.DBF").c_str(), 1), 0);
    ASSERT_EQ(file4_open(&index.file, engine, path("T.CDX").c_str(), 1), 0);
    l4_add(&table.index_list, &index);
    table.memo_file.file.handle = -1;
    EXPECT_EQ(table4_cache_mode(&table, 1), 0);
    EXPECT_EQ(table.file.cache_type, 1);
    EXPECT_EQ(index.file.cache_type, 2);
    ASSERT_EQ(file4_open(&table.memo_file.file, engine, path("T.FPT").c_str(), 1), 0);
    EXPECT_EQ(table4_cache_mode(&table, 1), 0);
    EXPECT_EQ(table.memo_file.file.cache_type, 3);
    EXPECT_EQ(table4_write_mode(&table, 1), 0);
    EXPECT_EQ(table.file.write_mode, 1);
    EXPECT_EQ(index.file.write_mode, 1);
    EXPECT_EQ(table.memo_file.file.write_mode, 1);
    EXPECT_EQ(table4_cache_mode(&table, 2), -1);
    EXPECT_EQ(table4_write_mode(&table, -2), -1);
    EXPECT_EQ(table4_cache_mode(nullptr, 1), -1);
    EXPECT_EQ(table4_cache_mode(&table, 0), 0);
    EXPECT_EQ(table.file.cache_type, 0);
    EXPECT_EQ(index.file.cache_type, 0);
    EXPECT_EQ(table.memo_file.file.cache_type, 0);
    file4_close(&table.file);
    file4_close(&index.file);
    file4_close(&table.memo_file.file);
}

// ---- the randomized workload --------------------------------------------------------------

struct Workload {
    const char *label;
    bool cache;
    uint32_t block_size;
    uint32_t big_buffer;
    uint32_t memory;
    bool exclusive;
    bool locks;  // a shared file in write mode, delayed while it holds a lock
    unsigned seed;
};

class Cache4Random : public ::testing::TestWithParam<Workload> {};

TEST_P(Cache4Random, GivesTheSameBytesAsAPlainModel) {
    const Workload &w = GetParam();
    TempDir dir;
    Engine engine;
    engine->cache_block_size = w.block_size;
    engine->big_buffer_size = w.big_buffer;
    engine->cache_memory = w.memory;
    if (w.cache) {
        ASSERT_EQ(engine4_cache_start(engine), 0);
    }
    engine->exclusive = w.exclusive ? 1 : 0;
    constexpr int kFiles = 3;
    file4 files[kFiles];
    std::vector<char> model[kFiles];
    std::string names[kFiles];
    bool locked[kFiles] = {};
    for (int i = 0; i < kFiles; ++i) {
        names[i] = dir.file("FILE" + std::to_string(i));
        ASSERT_EQ(file4_create(&files[i], engine, names[i].c_str(), 0), 0);
        ASSERT_EQ(file4_cache_type(&files[i], 1, i + 1), 0);
        if (w.locks) {
            ASSERT_EQ(file4_write_mode(&files[i], 1), 0);
        }
    }
    std::mt19937 random(w.seed);
    auto pick = [&](uint32_t low, uint32_t high) {
        return std::uniform_int_distribution<uint32_t>(low, high)(random);
    };
    std::vector<char> buffer(70000);
    for (int step = 0; step < 2500; ++step) {
        const int f = static_cast<int>(pick(0, kFiles - 1));
        file4 *file = &files[f];
        std::vector<char> &bytes = model[f];
        const uint32_t op = pick(0, 99);
        SCOPED_TRACE(::testing::Message() << w.label << " step " << step << " op " << op);
        if (op < 35) {  // write
            uint32_t position = pick(0, 40000), length = pick(1, 3000);
            if (pick(0, 4) == 0) {  // whole blocks at a boundary
                position -= position % w.block_size;
                length = w.block_size * pick(1, 4);
            }
            if (pick(0, 9) == 0) position = static_cast<uint32_t>(bytes.size());  // append
            if (pick(0, 11) == 0) length = pick(8000, 40000);  // a run longer than a tiny cache
            for (uint32_t i = 0; i < length; ++i) buffer[i] = static_cast<char>(pick(0, 255));
            ASSERT_EQ(file4_write(file, position, buffer.data(), length), 0);
            if (bytes.size() < position + length) bytes.resize(position + length, '\0');
            std::memcpy(bytes.data() + position, buffer.data(), length);
        } else if (op < 70) {  // read
            uint32_t position = pick(0, static_cast<uint32_t>(bytes.size()) + 2000);
            const uint32_t length = pick(1, 6000);
            if (pick(0, 5) == 0) position = pick(0, 8) * w.block_size;  // where runs begin
            if (pick(0, 7) == 0) engine->read_fresh = 1;
            const uint32_t got = file4_read(file, position, buffer.data(), length);
            engine->read_fresh = 0;
            const uint32_t expected = position >= bytes.size()
                                          ? 0
                                          : std::min<uint32_t>(length, static_cast<uint32_t>(bytes.size()) - position);
            ASSERT_EQ(got, expected);
            if (got) {
                ASSERT_EQ(std::memcmp(buffer.data(), bytes.data() + position, got), 0);
            }
        } else if (op < 76) {  // length change
            const uint32_t length = pick(0, 45000);
            ASSERT_EQ(file4_set_length(file, length), 0);
            bytes.resize(length, '\0');
        } else if (op < 82) {
            ASSERT_EQ(file4_length(file), static_cast<int32_t>(bytes.size()));
        } else if (op < 86) {
            ASSERT_EQ(file4_flush(file, static_cast<int>(pick(0, 1))), 0);
        } else if (op < 89) {
            if (w.locks && locked[f]) {
                ASSERT_EQ(file4_flush(file, 0), 0);
            }
            ASSERT_EQ(file4_refresh(file), 0);
        } else if (op < 95) {  // usage of some kind: changes eviction and read-ahead
            engine->usage_flags |= 1u << pick(0, 6);
        } else if (op < 98) {
            if (w.locks) {
                if (!locked[f]) {
                    ASSERT_EQ(file4_lock(file, lock4_append_offset, 1), 0);
                    locked[f] = true;
                } else {
                    // What was delayed goes out before the lock does.
                    ASSERT_EQ(file4_flush(file, 0), 0);
                    ASSERT_EQ(file4_unlock(file, lock4_append_offset, 1), 0);
                    locked[f] = false;
                }
            }
        } else if (w.cache) {  // the cache stops and starts again
            ASSERT_EQ(engine4_cache_stop(engine), 0);
            ASSERT_EQ(engine4_cache_start(engine), 0);
        }
        ASSERT_EQ(engine->error_code, 0);
    }
    for (int i = 0; i < kFiles; ++i) {
        ASSERT_EQ(file4_length(&files[i]), static_cast<int32_t>(model[i].size()));
        const uint32_t size = static_cast<uint32_t>(model[i].size());
        std::vector<char> all(size + 1);
        ASSERT_EQ(file4_read(&files[i], 0, all.data(), size + 1), size);
        if (size) {
            ASSERT_EQ(std::memcmp(all.data(), model[i].data(), size), 0);
        }
        if (locked[i]) {
            ASSERT_EQ(file4_flush(&files[i], 0), 0);
            ASSERT_EQ(file4_unlock(&files[i], lock4_append_offset, 1), 0);
        }
        ASSERT_EQ(file4_close(&files[i]), 0);
        const std::string disk = nqtest::read_file(names[i]);
        ASSERT_EQ(disk.size(), model[i].size()) << i;
        if (!disk.empty()) {
            EXPECT_EQ(std::memcmp(disk.data(), model[i].data(), disk.size()), 0) << i;
        }
    }
    EXPECT_EQ(engine->cache_files.count, 0u);
    if (w.cache) {
        EXPECT_EQ(engine->cache.free_blocks.count, engine->cache.block_count);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, Cache4Random,
    ::testing::Values(
        Workload{"no cache, exclusive", false, 1024, 16384, 983040, true, false, 1},
        Workload{"no cache, shared", false, 1024, 16384, 983040, false, false, 2},
        Workload{"tiny cache, exclusive", true, 1024, 4096, 6 * 4096, true, false, 3},
        Workload{"tiny cache, shared", true, 1024, 4096, 6 * 4096, false, false, 4},
        Workload{"tiny cache, shared with locks", true, 1024, 4096, 6 * 4096, false, true, 5},
        Workload{"small blocks", true, 512, 2048, 6 * 2048, true, false, 6},
        Workload{"small blocks with locks", true, 512, 2048, 8 * 2048, false, true, 7},
        Workload{"large blocks", true, 4096, 16384, 8 * 16384, true, false, 8},
        Workload{"default cache, exclusive", true, 1024, 16384, 983040, true, false, 9},
        Workload{"default cache, shared with locks", true, 1024, 16384, 983040, false, true, 10},
        Workload{"medium cache, exclusive", true, 2048, 8192, 12 * 8192, true, false, 11}),
    [](const ::testing::TestParamInfo<Workload> &info) {
        std::string name = info.param.label;
        for (char &c : name) {
            if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
        }
        return name;
    });

}  // namespace
