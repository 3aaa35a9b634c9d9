// Removing records: pack drops the deleted ones and zap a range; both leave one end byte behind
// the last record, a header that tells the new count, and no current record.
#include <gtest/gtest.h>

#include <string>

#include "table4_test_support.h"

namespace {

using tabletest::le32;

class Table4Pack : public tabletest::TableTest {
protected:
    table4 *table = nullptr;
    void SetUp() override { fill(10); }
    void TearDown() override {
        if (table) table4_close(table);
    }
    void fill(int records) {
        table = create("P.DBF");
        ASSERT_NE(table, nullptr);
        for (int i = 1; i <= records; ++i) {
            ASSERT_EQ(append_row(table, ("R" + std::to_string(i)).c_str(), i, "20000101", true), 0);
        }
    }
    void remove(std::initializer_list<int> numbers) {
        for (int n : numbers) {
            ASSERT_EQ(table4_go(table, n), 0);
            table4_delete(table);
        }
        ASSERT_EQ(table4_flush_record(table, 1), 0);
    }
    // The names of the records in the file, in order.
    std::string names() {
        const std::string file = bytes("P.DBF");
        const uint32_t count = le32(file, 4);
        std::string out;
        for (uint32_t i = 0; i < count; ++i) {
            std::string name = file.substr(161 + i * 28 + 1, 10);
            name.erase(name.find_last_not_of(' ') + 1);
            out += (out.empty() ? "" : ",") + name;
        }
        return out;
    }
    void expect_end(uint32_t count) {
        const std::string file = bytes("P.DBF");
        EXPECT_EQ(le32(file, 4), count);
        ASSERT_EQ(file.size(), 161 + count * 28 + 1);
        EXPECT_EQ(file.back(), '\x1A');
        EXPECT_EQ(file[160], '\x0D');
    }
};

TEST_F(Table4Pack, PackDropsTheDeletedRecords) {
    remove({2, 5, 10});
    ASSERT_EQ(table4_pack(table), 0);
    EXPECT_EQ(names(), "R1,R3,R4,R6,R7,R8,R9");
    expect_end(7);
    EXPECT_EQ(table->record_number, -1);
    EXPECT_EQ(table->record_number_old, -1);
    EXPECT_EQ(table->bof, 0);
    EXPECT_EQ(table->eof, 0);
    EXPECT_EQ(table4_count(table), 7);
    EXPECT_EQ(std::string(table->record, 28), std::string(28, ' '));
    EXPECT_EQ(table->file_locked, 1);  // the locks stay until the caller lets them go
    ASSERT_EQ(table4_unlock(table), 0);
    ASSERT_EQ(table4_go(table, 4), 0);
    EXPECT_EQ(field(table, "NAME"), "R6        ");
}

TEST_F(Table4Pack, RecordsWhoseFlagIsNotABlankGoToo) {
    ASSERT_EQ(table4_go(table, 3), 0);
    table->record[0] = '#';
    table->record_changed = 1;
    ASSERT_EQ(table4_flush_record(table, 1), 0);
    ASSERT_EQ(table4_pack(table), 0);
    EXPECT_EQ(names(), "R1,R2,R4,R5,R6,R7,R8,R9,R10");
}

TEST_F(Table4Pack, PackingEveryRecordLeavesTheHeaderAndOneEndByte) {
    const std::string header = bytes("P.DBF").substr(8, 153);
    remove({1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
    ASSERT_EQ(table4_pack(table), 0);
    expect_end(0);
    EXPECT_EQ(bytes("P.DBF").substr(8, 153), header);
    EXPECT_EQ(table->bof, 1);
    EXPECT_EQ(table->eof, 1);
    EXPECT_EQ(table4_count(table), 0);
    EXPECT_EQ(table4_top(table), 3);
}

TEST_F(Table4Pack, NothingDeletedKeepsEverything) {
    ASSERT_EQ(table4_pack(table), 0);
    EXPECT_EQ(names(), "R1,R2,R3,R4,R5,R6,R7,R8,R9,R10");
    expect_end(10);
}

TEST_F(Table4Pack, APackWritesAPendingChangeFirst) {
    ASSERT_EQ(table4_go(table, 4), 0);
    table4_delete(table);
    ASSERT_EQ(table4_pack(table), 0);
    EXPECT_EQ(names(), "R1,R2,R3,R5,R6,R7,R8,R9,R10");
}

TEST_F(Table4Pack, PackWorksWithSmallBuffersAndWithNone) {
    table4_close(table);
    table = nullptr;
    engine->safety = 0;
    fill(300);
    for (int n = 1; n <= 300; n += 3) {
        ASSERT_EQ(table4_go(table, n), 0);
        table4_delete(table);
    }
    ASSERT_EQ(table4_flush_record(table, 1), 0);
    // Buffers of 4096 bytes: several windows, records across their edges.
    engine->big_buffer_size = 4096;
    ASSERT_EQ(table4_pack(table), 0);
    expect_end(200);
    ASSERT_EQ(table4_unlock(table), 0);
    ASSERT_EQ(table4_go(table, 200), 0);
    EXPECT_EQ(field(table, "NAME"), "R300      ");
    // No memory for buffers at all: record by record.
    for (int n = 1; n <= 200; n += 2) {
        ASSERT_EQ(table4_go(table, n), 0);
        table4_delete(table);
    }
    ASSERT_EQ(table4_flush_record(table, 1), 0);
    static int refused;
    refused = 0;
    mem4_set_fail_hook([](size_t size) {
        if (size < 1024) return 0;
        ++refused;
        return 1;
    });
    ASSERT_EQ(table4_pack(table), 0);
    mem4_set_fail_hook(nullptr);
    EXPECT_GT(refused, 0);
    expect_end(100);
    ASSERT_EQ(table4_unlock(table), 0);
    ASSERT_EQ(table4_go(table, 100), 0);
    EXPECT_EQ(field(table, "NAME"), "R300      ");
    ASSERT_EQ(table4_go(table, 1), 0);
    EXPECT_EQ(field(table, "NAME"), "R3        ");
}

TEST_F(Table4Pack, PackStopsAndRestartsTheCache) {
    ASSERT_EQ(engine4_cache_start(engine), 0);
    remove({1});
    ASSERT_EQ(table4_pack(table), 0);
    EXPECT_EQ(engine->cache_on, 1);
    expect_end(9);
}

TEST_F(Table4Pack, PackLeavesTheMemoFileAlone) {
    table4 *memo = create("MP.DBF", tabletest::memo_columns());
    for (const char *value : {"one", "two", "three"}) {
        ASSERT_EQ(table4_append_start(memo, 0), 0);
        ASSERT_EQ(column4_memo_assign(table4_column(memo, "NOTE"), value, static_cast<uint32_t>(strlen(value))), 0);
        ASSERT_EQ(table4_append(memo), 0);
    }
    ASSERT_EQ(table4_go(memo, 2), 0);
    table4_delete(memo);
    const std::string before = bytes("MP.FPT");
    ASSERT_EQ(table4_pack(memo), 0);
    EXPECT_EQ(bytes("MP.FPT"), before);
    ASSERT_EQ(table4_go(memo, 2), 0);
    EXPECT_EQ(tabletest::TableTest::memo(memo, "NOTE"), "three");
    table4_close(memo);
}

TEST_F(Table4Pack, PackUnderAnothersLockGives50) {
    enginetest::Engine other_engine;
    table4 *other = table4_open(other_engine, table->file.name);
    ASSERT_EQ(table4_lock(other, 3), 0);
    ASSERT_EQ(table4_unlock(table), 0);
    engine->lock_attempts = 1;
    EXPECT_EQ(table4_pack(table), 50);
    EXPECT_EQ(table->file_locked, 0);
    table4_close(other);
    expect_end(10);
}

TEST_F(Table4Pack, ZapRemovesARange) {
    ASSERT_EQ(table4_zap(table, 3, 5), 0);
    EXPECT_EQ(names(), "R1,R2,R6,R7,R8,R9,R10");
    expect_end(7);
    EXPECT_EQ(table->bof, 0);
    EXPECT_EQ(table->eof, 0);
}

TEST_F(Table4Pack, ZapFromZeroIsFromOneAndALastPastTheCountIsCut) {
    ASSERT_EQ(table4_zap(table, 8, 1000), 0);
    EXPECT_EQ(names(), "R1,R2,R3,R4,R5,R6,R7");
    expect_end(7);
    ASSERT_EQ(table4_zap(table, 0, 2), 0);
    EXPECT_EQ(names(), "R3,R4,R5,R6,R7");
    ASSERT_EQ(table4_zap(table, 0, 0x7FFFFFFF), 0);
    expect_end(0);
    EXPECT_EQ(table->bof, 1);
    EXPECT_EQ(table->eof, 1);
}

TEST_F(Table4Pack, ZapOfNothingChangesNothing) {
    const std::string before = bytes("P.DBF");
    EXPECT_EQ(table4_zap(table, 11, 20), 0);
    EXPECT_EQ(table4_zap(table, 5, 4), 0);
    EXPECT_EQ(bytes("P.DBF"), before);
    EXPECT_EQ(table4_zap(table, -1, 3), -1);
    EXPECT_EQ(table4_zap(table, 1, -3), -1);
    EXPECT_EQ(table4_zap(nullptr, 1, 3), -1);
    EXPECT_EQ(table4_pack(nullptr), -1);
    EXPECT_EQ(table4_pack_data(nullptr), -1);
    engine->error_code = -1;
    EXPECT_EQ(table4_pack(table), -1);
    EXPECT_EQ(table4_zap(table, 1, 2), -1);
    engine->error_code = 0;
    EXPECT_EQ(bytes("P.DBF"), before);
}

TEST_F(Table4Pack, PackDataAloneAlsoLeavesTheHeaderRight) {
    remove({1, 2});
    ASSERT_EQ(table4_pack_data(table), 0);
    expect_end(8);
    ASSERT_EQ(table4_unlock(table), 0);
    enginetest::Engine other_engine;
    table4 *other = table4_open(other_engine, table->file.name);
    EXPECT_EQ(table4_count(other), 8);
    table4_close(other);
}

}  // namespace
