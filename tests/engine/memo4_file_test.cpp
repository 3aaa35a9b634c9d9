// The memo file: its header, where values go for each block size, the block arithmetic with
// its asymmetry, reads into buffers of any capacity, partial reads and writes, the length,
// the lock, and values that point past the end of the file.
#include <gtest/gtest.h>

#include <string>

#include "table4_test_support.h"

namespace {

using enginetest::FakeClock;
using tabletest::be16;
using tabletest::be32;
using tabletest::box_text;

class Memo4File : public tabletest::TableTest {
protected:
    memo4 memo;
    void SetUp() override {
        std::memset(&memo, 0, sizeof(memo));
        memo.file.handle = -1;
    }
    void TearDown() override {
        if (memo.file.handle >= 0) file4_close(&memo.file);
    }
    int make(int block_size, const std::string &name = "M.FPT") {
        engine->memo_block_default = block_size;
        return memo4_create(&memo, engine, nullptr, path(name).c_str());
    }
    int32_t put(const std::string &value, int32_t block = 0) {
        int32_t slot = block;
        if (memo4_write(&memo, &slot, value.data(), static_cast<uint32_t>(value.size())) != 0) return -99;
        return slot;
    }
    std::string get(int32_t block) {
        char *buffer = nullptr;
        uint32_t length = 0;
        if (memo4_read(&memo, block, &buffer, &length) != 0) return "<failed>";
        std::string value(buffer ? buffer : "", length);
        mem4_free(buffer);
        return value;
    }
    std::string file() { return bytes("M.FPT"); }
};

TEST_F(Memo4File, CreateWritesTheHeaderAndALengthOf512) {
    for (int size : {512, 64, 1024, 100, 32768}) {
        SCOPED_TRACE(size);
        ASSERT_EQ(make(size, "H" + std::to_string(size) + ".FPT"), 0);
        EXPECT_EQ(memo.block_size, size);
        const std::string header = bytes("H" + std::to_string(size) + ".FPT");
        ASSERT_EQ(header.size(), 512u);
        EXPECT_EQ(be32(header, 0), size <= 512 ? 512u / size : 1u);
        EXPECT_EQ(be16(header, 4), 0u);
        EXPECT_EQ(be16(header, 6), static_cast<uint32_t>(size));
        EXPECT_EQ(header.substr(8), std::string(504, '\0'));
        file4_close(&memo.file);
    }
}

TEST_F(Memo4File, ABlockSizeOfZeroIsRefused) {
    EXPECT_EQ(make(0), -930);
    engine->error_code = 0;
    EXPECT_EQ(make(65536), -930);  // a 16-bit value: the low half is zero
    EXPECT_FALSE(nqtest::file_exists(path("M.FPT")));
    engine->error_code = 0;
}

TEST_F(Memo4File, CreateUsesTheNameAsGivenAndHandsBackTheWritesResult) {
    engine->memo_block_default = 512;
    ASSERT_EQ(memo4_create(&memo, engine, nullptr, path("notes.mem").c_str()), 0);
    EXPECT_TRUE(nqtest::file_exists(path("notes.mem")));
    file4_close(&memo.file);
    // An existing file with safety on: the create's failure is not tested, the write fails.
    EXPECT_EQ(memo4_create(&memo, engine, nullptr, path("notes.mem").c_str()), -1);
    EXPECT_EQ(engine->error_code, -20);
    engine->error_code = 0;
    EXPECT_EQ(memo4_create(nullptr, engine, nullptr, "x"), -1);
    EXPECT_EQ(memo4_create(&memo, nullptr, nullptr, "x"), -1);
}

TEST_F(Memo4File, ANullNameMakesATemporaryFileBesideTheTable) {
    table4 *table = create("T.DBF", tabletest::memo_columns());
    ASSERT_NE(table, nullptr);
    nqtest::write_file(path("T.TMP"), "in the way");
    engine->memo_block_default = 64;
    ASSERT_EQ(memo4_create(&memo, engine, table, nullptr), 0);
    EXPECT_EQ(memo.table, table);
    EXPECT_EQ(memo.file.is_temp, 1);
    EXPECT_EQ(bytes("T.TMP").size(), 512u);  // safety is off for the call
    file4_close(&memo.file);
    EXPECT_FALSE(nqtest::file_exists(path("T.TMP")));
    EXPECT_EQ(engine->safety, 1);
    EXPECT_EQ(engine->err_create, 1);
    table4_close(table);
}

TEST_F(Memo4File, OpenTakesTheBlockSizeFromTheHeader) {
    ASSERT_EQ(make(64), 0);
    file4_close(&memo.file);
    table4 *table = create("T.DBF");
    memo4 opened;
    std::memset(&opened, 0, sizeof(opened));
    ASSERT_EQ(memo4_open(&opened, table, path("M.FPT").c_str()), 0);
    EXPECT_EQ(opened.block_size, 64);
    EXPECT_EQ(opened.table, table);
    EXPECT_EQ(opened.file_locked, 0);
    file4_close(&opened.file);
    EXPECT_EQ(memo4_open(&opened, table, path("NONE.FPT").c_str()), -60);
    engine->error_code = 0;
    table4_close(table);
}

TEST_F(Memo4File, TheFirstValueGoesBehindTheHeaderForEachBlockSize) {
    struct Case {
        int size;
        int32_t block;
    } cases[] = {{512, 1}, {64, 8}, {1024, 1}, {32, 16}};
    for (const Case &c : cases) {
        SCOPED_TRACE(c.size);
        const std::string name = "B" + std::to_string(c.size) + ".FPT";
        ASSERT_EQ(make(c.size, name), 0);
        EXPECT_EQ(put("hello"), c.block);
        const std::string bytes_now = bytes(name);
        const size_t at = static_cast<size_t>(c.block) * c.size;
        ASSERT_EQ(bytes_now.size(), at + 8 + 5);
        EXPECT_EQ(be32(bytes_now, at), 1u);
        EXPECT_EQ(be32(bytes_now, at + 4), 5u);
        EXPECT_EQ(bytes_now.substr(at + 8), "hello");
        // The next value follows behind the blocks this one needs.
        EXPECT_EQ(be32(bytes_now, 0), static_cast<uint32_t>(c.block) + memo4_blocks_needed(c.size, 5));
        file4_close(&memo.file);
    }
    // Block size 1024 leaves a hole between the header and block 1.
    EXPECT_EQ(bytes("B1024.FPT").substr(512, 512), std::string(512, '\0'));
}

TEST_F(Memo4File, TheBlocksAValueNeedsCountItsEightByteHead) {
    EXPECT_EQ(memo4_blocks_needed(512, 1), 1u);
    EXPECT_EQ(memo4_blocks_needed(512, 504), 1u);
    EXPECT_EQ(memo4_blocks_needed(512, 505), 2u);
    EXPECT_EQ(memo4_blocks_needed(512, 0), 1u);
    EXPECT_EQ(memo4_blocks_needed(64, 5000), 79u);
    EXPECT_EQ(memo4_blocks_needed(0, 5), 0u);
}

TEST_F(Memo4File, ValuesFollowEachOtherAndReadBack) {
    ASSERT_EQ(make(512), 0);
    const std::string values[] = {"a", std::string(511, 'b'), std::string(512, 'c'), std::string(513, 'd'),
                                  std::string(5000, 'e')};
    int32_t blocks[5];
    int32_t expected = 1;
    for (int i = 0; i < 5; ++i) {
        blocks[i] = put(values[i]);
        EXPECT_EQ(blocks[i], expected) << i;
        expected += static_cast<int32_t>(memo4_blocks_needed(512, static_cast<uint32_t>(values[i].size())));
    }
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(get(blocks[i]), values[i]) << i;
        EXPECT_EQ(memo4_length(&memo, blocks[i]), values[i].size()) << i;
    }
    EXPECT_EQ(be32(file(), 0), static_cast<uint32_t>(expected));
}

TEST_F(Memo4File, ARewriteThatFitsTheBlocksItHadStaysInPlace) {
    ASSERT_EQ(make(512), 0);
    const int32_t block = put(std::string(300, 'x'));
    put("behind");
    EXPECT_EQ(put(std::string(100, 'y'), block), block);
    EXPECT_EQ(get(block), std::string(100, 'y'));
    EXPECT_EQ(put(std::string(504, 'z'), block), block);
    // Longer than its blocks: a new place at the end; the old blocks are lost.
    const uint32_t next = be32(file(), 0);
    EXPECT_EQ(put(std::string(600, 'w'), block), static_cast<int32_t>(next));
    EXPECT_EQ(get(static_cast<int32_t>(next)), std::string(600, 'w'));
    EXPECT_EQ(get(block), std::string(504, 'z'));
}

TEST_F(Memo4File, AValueOfTheSameLengthWhoseHeadReachesANextBlockMoves) {
    ASSERT_EQ(make(512), 0);
    // 505 bytes need two blocks with their head, but the old value counts as one.
    const int32_t block = put(std::string(505, 'a'));
    EXPECT_EQ(memo4_blocks_needed(512, 505), 2u);
    const int32_t again = put(std::string(505, 'b'), block);
    EXPECT_NE(again, block);
    EXPECT_EQ(again, block + 2);
    // 504 bytes fit one block either way and stay.
    const int32_t fits = put(std::string(504, 'c'));
    EXPECT_EQ(put(std::string(504, 'd'), fits), fits);
}

TEST_F(Memo4File, AnEmptyValueIsBlockZeroAndFreesNothing) {
    ASSERT_EQ(make(512), 0);
    const int32_t block = put("something");
    const std::string before = file();
    int32_t slot = block;
    EXPECT_EQ(memo4_write(&memo, &slot, "", 0), 0);
    EXPECT_EQ(slot, 0);
    EXPECT_EQ(file(), before);
    EXPECT_EQ(get(0), "");
    EXPECT_EQ(memo4_length(&memo, 0), 0u);
    EXPECT_EQ(memo4_length(&memo, -3), 0u);
}

TEST_F(Memo4File, AReadAllocatesOnlyWhenTheCapacityIsTooSmall) {
    ASSERT_EQ(make(512), 0);
    const int32_t block = put("twelve bytes");
    // Capacity 0: a buffer of the value's length and one more.
    char *buffer = nullptr;
    uint32_t length = 0;
    ASSERT_EQ(memo4_read(&memo, block, &buffer, &length), 0);
    ASSERT_NE(buffer, nullptr);
    EXPECT_EQ(length, 12u);
    EXPECT_EQ(mem4_size(buffer), 13u);
    // Enough capacity: the same buffer.
    char *same = buffer;
    length = 20;
    ASSERT_EQ(memo4_read(&memo, block, &buffer, &length), 0);
    EXPECT_EQ(buffer, same);
    EXPECT_EQ(length, 12u);
    EXPECT_EQ(std::string(buffer, length), "twelve bytes");
    // Too small: freed and made again.
    length = 3;
    static int allocations;
    allocations = 0;
    mem4_set_fail_hook([](size_t) {
        ++allocations;
        return 0;
    });
    ASSERT_EQ(memo4_read(&memo, block, &buffer, &length), 0);
    mem4_set_fail_hook(nullptr);
    EXPECT_EQ(allocations, 1);
    EXPECT_EQ(length, 12u);
    EXPECT_EQ(std::string(buffer, length), "twelve bytes");
    // A failed allocation leaves no buffer behind.
    length = 3;
    mem4_set_fail_hook([](size_t) { return 1; });
    EXPECT_EQ(memo4_read(&memo, block, &buffer, &length), -920);
    mem4_set_fail_hook(nullptr);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(length, 0u);
    engine->error_code = 0;
}

TEST_F(Memo4File, AReadBelowBlockOneGivesNothing) {
    ASSERT_EQ(make(512), 0);
    char keep[] = "kept";
    char *buffer = keep;
    uint32_t length = 77;
    EXPECT_EQ(memo4_read(&memo, 0, &buffer, &length), 0);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(buffer, keep);
    EXPECT_EQ(memo4_read(&memo, 1, nullptr, &length), -1);
}

TEST_F(Memo4File, PartsOfAValueAreReadFromAnOffsetUpToALimit) {
    ASSERT_EQ(make(64), 0);
    const int32_t block = put("0123456789");
    char *buffer = nullptr;
    uint32_t length = 0;
    ASSERT_EQ(memo4_read_part(&memo, block, &buffer, &length, 3, 4), 0);
    EXPECT_EQ(std::string(buffer, length), "3456");
    EXPECT_EQ(mem4_size(buffer), 11u);  // allocated for the whole value
    length = 10;
    ASSERT_EQ(memo4_read_part(&memo, block, &buffer, &length, 7, 0xFFFFFFFFu), 0);
    EXPECT_EQ(std::string(buffer, length), "789");
    length = 10;
    ASSERT_EQ(memo4_read_part(&memo, block, &buffer, &length, 12, 5), 0);
    EXPECT_EQ(length, 0u);
    mem4_free(buffer);
}

TEST_F(Memo4File, AWriteAtAnOffsetGoesStraightThereWithoutTheHeadsAllowance) {
    ASSERT_EQ(make(64), 0);
    int32_t block = put("0123456789");
    // Offset 8 is the value's first byte, since the head is not allowed for.
    ASSERT_EQ(memo4_write_part(&memo, &block, "AB", 10, 8, 2), 0);
    EXPECT_EQ(get(block), "AB23456789");
    ASSERT_EQ(memo4_write_part(&memo, &block, "Z", 10, 17, 1), 0);
    EXPECT_EQ(get(block), "AB2345678Z");
    int32_t none = 0;
    EXPECT_EQ(memo4_write_part(&memo, &none, "Z", 10, 17, 1), -1);
}

TEST_F(Memo4File, AWriteInPiecesTakesThePlaceOfTheWholeValueFirst) {
    ASSERT_EQ(make(64), 0);
    const std::string value(200, 'p');
    int32_t block = 0;
    ASSERT_EQ(memo4_write_part(&memo, &block, value.data(), 200, 0, 100), 0);
    EXPECT_EQ(block, 8);
    // The head names the first piece's length; the space is reserved for the whole.
    EXPECT_EQ(be32(file(), 0), 8u + memo4_blocks_needed(64, 200));
    EXPECT_EQ(memo4_length(&memo, block), 100u);
}

TEST_F(Memo4File, ValuesPastTheEndOfTheFileCannotBeRead) {
    ASSERT_EQ(make(512), 0);
    const int32_t block = put("short");
    // A block number past the end.
    EXPECT_EQ(get(block + 100), "<failed>");
    EXPECT_EQ(memo4_length(&memo, block + 100), 0xFFFFFFFFu);
    EXPECT_EQ(get(0x7FFFFFFF), "<failed>");
    // A length past the end: nothing is allocated for it.
    std::string bytes_now = file();
    tabletest::put_be32(bytes_now, 512 + 4, 0xFFFFFFF0u);
    nqtest::write_file(path("M.FPT"), bytes_now);
    static size_t largest;
    largest = 0;
    mem4_set_fail_hook([](size_t size) {
        if (size > largest) largest = size;
        return 0;
    });
    EXPECT_EQ(get(block), "<failed>");
    mem4_set_fail_hook(nullptr);
    EXPECT_LT(largest, 1024u);
    EXPECT_EQ(memo4_length(&memo, block), 0xFFFFFFF0u);
    EXPECT_EQ(engine->error_code, 0);
}

TEST_F(Memo4File, AHeaderThatCannotBeReadWhileTakingSpaceIsMinus70) {
    ASSERT_EQ(make(512), 0);
    ASSERT_EQ(file4_set_length(&memo.file, 4), 0);
    int32_t block = 0;
    EXPECT_EQ(memo4_write(&memo, &block, "x", 1), -70);
    ASSERT_GE(boxes.count(), 1u);
    EXPECT_EQ(boxes.last().text, box_text(-70, {"Reading File", "File Name:", memo.file.name}));
    EXPECT_EQ(memo.file_locked, 0);
    engine->error_code = 0;
}

TEST_F(Memo4File, ANextFreeBlockOfZeroWouldOverwriteTheHeaderAndIsRefused) {
    ASSERT_EQ(make(512), 0);
    std::string header = file();
    tabletest::put_be32(header, 0, 0);
    nqtest::write_file(path("M.FPT"), header);
    int32_t block = 0;
    EXPECT_EQ(memo4_write(&memo, &block, "x", 1), -1);
    EXPECT_EQ(file().size(), 512u);
}

TEST_F(Memo4File, TheLockWaitsForEverAndGuardsTheNextFreeWord) {
    ASSERT_EQ(make(512), 0);
    memo4 other;
    std::memset(&other, 0, sizeof(other));
    enginetest::Engine other_engine;
    table4 *table = create("T.DBF");
    ASSERT_EQ(file4_open(&other.file, other_engine, path("M.FPT").c_str(), 0), 0);
    other.block_size = 512;
    ASSERT_EQ(memo4_lock(&other), 0);
    EXPECT_EQ(other.file_locked, 1);
    EXPECT_EQ(memo4_lock(&other), 0);
    FakeClock clock;
    static memo4 *holder;
    holder = &other;
    FakeClock::on_pause() = [] {
        if (FakeClock::pauses() == 4) memo4_unlock(holder);
    };
    engine->lock_attempts = 1;  // forced to wait for ever all the same
    ASSERT_EQ(memo4_lock(&memo), 0);
    EXPECT_EQ(FakeClock::pauses(), 4);
    EXPECT_EQ(engine->lock_attempts, 1);
    FakeClock::on_pause() = nullptr;
    EXPECT_EQ(memo4_unlock(&memo), 0);
    EXPECT_EQ(memo.file_locked, 0);
    EXPECT_EQ(memo4_unlock(&memo), 0);  // not locked: nothing to do
    file4_close(&other.file);
    table4_close(table);
    memo4 closed;
    std::memset(&closed, 0, sizeof(closed));
    closed.file.handle = -1;
    EXPECT_EQ(memo4_lock(&closed), -1);
    EXPECT_EQ(memo4_lock(nullptr), -1);
}

TEST_F(Memo4File, AWriterThatHeldTheLockKeepsIt) {
    ASSERT_EQ(make(512), 0);
    ASSERT_EQ(memo4_lock(&memo), 0);
    put("a");
    EXPECT_EQ(memo.file_locked, 1);
    ASSERT_EQ(memo4_unlock(&memo), 0);
    put("b");
    EXPECT_EQ(memo.file_locked, 0);
}

TEST_F(Memo4File, EverythingRefusesAFileThatIsNotOpen) {
    char *buffer = nullptr;
    uint32_t length = 0;
    int32_t block = 0;
    EXPECT_EQ(memo4_read(&memo, 1, &buffer, &length), -1);
    EXPECT_EQ(memo4_length(&memo, 1), 0xFFFFFFFFu);
    EXPECT_EQ(memo4_write(&memo, &block, "x", 1), -1);
    EXPECT_EQ(memo4_write(nullptr, &block, "x", 1), -1);
    EXPECT_EQ(buffer, nullptr);
}

}  // namespace
