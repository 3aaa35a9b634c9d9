// Compressing the memo file: every value a record names moves to fresh blocks in record
// order, abandoned blocks disappear, and a value that cannot be read leaves everything as it
// was.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "table4_test_support.h"

namespace {

using tabletest::be32;

class Memo4Compress : public tabletest::TableTest {
protected:
    table4 *table = nullptr;
    std::vector<std::string> values;
    void make(int block_size) {
        engine->memo_block_default = block_size;
        table = create("C.DBF", tabletest::memo_columns());
        ASSERT_NE(table, nullptr);
        for (int i = 0; i < 12; ++i) {
            std::string value = i % 4 == 3 ? "" : std::string(static_cast<size_t>(i * 97 + 5), static_cast<char>('a' + i));
            values.push_back(value);
            ASSERT_EQ(table4_append_start(table, 0), 0);
            ASSERT_EQ(column4_memo_assign(table4_column(table, "NOTE"), value.data(),
                                          static_cast<uint32_t>(value.size())),
                      0);
            ASSERT_EQ(table4_append(table), 0);
        }
        // Rewrites that move values leave their old blocks behind.
        for (int i = 0; i < 12; i += 2) {
            ASSERT_EQ(table4_go(table, i + 1), 0);
            values[i] += std::string(700, 'z');
            ASSERT_EQ(column4_memo_assign(table4_column(table, "NOTE"), values[i].data(),
                                          static_cast<uint32_t>(values[i].size())),
                      0);
        }
        ASSERT_EQ(table4_flush_record(table, 1), 0);
    }
    void TearDown() override {
        if (table) table4_close(table);
    }
    void expect_values(table4 *t) {
        for (int i = 0; i < 12; ++i) {
            ASSERT_EQ(table4_go(t, i + 1), 0);
            EXPECT_EQ(memo(t, "NOTE"), values[i]) << i;
        }
    }
};

TEST_F(Memo4Compress, ValuesMoveToFreshBlocksInRecordOrder) {
    make(64);
    const size_t before = bytes("C.FPT").size();
    ASSERT_EQ(table4_memo_compress(table), 0);
    const std::string after = bytes("C.FPT");
    EXPECT_LT(after.size(), before);
    EXPECT_EQ(tabletest::be16(after, 6), 64u);
    // Record order, no gaps: each value starts where the one before ended.
    uint32_t expected = 8;
    for (int i = 0; i < 12; ++i) {
        ASSERT_EQ(table4_go(table, i + 1), 0);
        if (values[i].empty()) {
            EXPECT_EQ(field(table, "NOTE"), "         0") << i;
            continue;
        }
        EXPECT_EQ(static_cast<uint32_t>(std::stoul(field(table, "NOTE"))), expected) << i;
        expected += memo4_blocks_needed(64, static_cast<uint32_t>(values[i].size()));
    }
    EXPECT_EQ(be32(after, 0), expected);
    expect_values(table);
    ASSERT_EQ(table4_unlock(table), 0);
    table4_close(table);
    table = open("C.DBF");
    expect_values(table);
    EXPECT_FALSE(nqtest::file_exists(path("C.TMP")));
}

TEST_F(Memo4Compress, AnExclusiveTableGetsTheNewFileByRename) {
    make(512);
    table4_close(table);
    engine->exclusive = 1;
    table = open("C.DBF");
    ASSERT_NE(table, nullptr);
    ASSERT_EQ(table4_memo_compress(table), 0);
    expect_values(table);
    EXPECT_FALSE(nqtest::file_exists(path("C.TMP")));
    table4_close(table);
    engine->exclusive = 0;
    table = open("C.DBF");
    expect_values(table);
}

TEST_F(Memo4Compress, TheCurrentRecordIsReadAgainWithItsNewNumbers) {
    make(512);
    ASSERT_EQ(table4_go(table, 11), 0);
    ASSERT_EQ(table4_memo_compress(table), 0);
    EXPECT_EQ(memo(table, "NOTE"), values[10]);
    column4_assign(table4_column(table, "NAME"), "after");
    ASSERT_EQ(table4_flush_record(table, 0), 0);
    ASSERT_EQ(table4_go(table, 11), 0);
    EXPECT_EQ(memo(table, "NOTE"), values[10]);
}

TEST_F(Memo4Compress, AValueThatCannotBeReadLeavesTheTableAsItWas) {
    make(512);
    ASSERT_EQ(table4_unlock(table), 0);
    ASSERT_EQ(table4_go(table, 5), 0);
    const int32_t block = std::stoi(field(table, "NOTE"));
    ASSERT_GT(block, 0);
    std::string memo_file = bytes("C.FPT");
    tabletest::put_be32(memo_file, static_cast<size_t>(block) * 512 + 4, 0x7FFFFF00u);
    nqtest::write_file(path("C.FPT"), memo_file);
    const std::string data_before = bytes("C.DBF");
    EXPECT_EQ(table4_memo_compress(table), -1);
    EXPECT_TRUE(bytes("C.DBF") == data_before);
    EXPECT_TRUE(bytes("C.FPT") == memo_file);
    EXPECT_FALSE(nqtest::file_exists(path("C.TMP")));
    EXPECT_EQ(engine->error_code, 0);
}

TEST_F(Memo4Compress, ATableWithoutMemoFieldsHasNothingToDo) {
    table4 *plain = create("PLAIN.DBF");
    EXPECT_EQ(table4_memo_compress(plain), 0);
    EXPECT_EQ(plain->file_locked, 0);
    table4_close(plain);
    EXPECT_EQ(table4_memo_compress(nullptr), -1);
}

TEST_F(Memo4Compress, CompressWaitsForNoOneButGives50WhenTheFileIsLocked) {
    make(512);
    ASSERT_EQ(table4_unlock(table), 0);
    enginetest::Engine other_engine;
    table4 *other = table4_open(other_engine, table->file.name);
    ASSERT_EQ(table4_lock(other, 1), 0);
    engine->lock_attempts = 1;
    EXPECT_EQ(table4_memo_compress(table), 50);
    table4_close(other);
    EXPECT_EQ(table4_memo_compress(table), 0);
    expect_values(table);
}

TEST_F(Memo4Compress, CompressRunsWithTheCacheOnAndRestartsIt) {
    ASSERT_EQ(engine4_cache_start(engine), 0);
    make(1024);
    ASSERT_EQ(table4_memo_compress(table), 0);
    EXPECT_EQ(engine->cache_on, 1);
    expect_values(table);
}

}  // namespace
