// A table at the level of its files: flushing what it holds, updating, refreshing the files
// and the current record from what another open wrote, and the cache's part in it.
#include <gtest/gtest.h>

#include <string>

#include "plat_file.h"
#include "table4_test_support.h"

namespace {

class Table4Files : public tabletest::TableTest {
protected:
    table4 *table = nullptr;
    enginetest::Engine other_engine;
    table4 *other = nullptr;
    void SetUp() override {
        table = create("F.DBF", tabletest::memo_columns());
        ASSERT_NE(table, nullptr);
        for (int i = 1; i <= 3; ++i) {
            ASSERT_EQ(table4_append_start(table, 0), 0);
            column4_assign(table4_column(table, "NAME"), ("R" + std::to_string(i)).c_str());
            ASSERT_EQ(column4_memo_assign(table4_column(table, "NOTE"), "memo", 4), 0);
            ASSERT_EQ(table4_append(table), 0);
        }
        ASSERT_EQ(table4_unlock(table), 0);
        other = table4_open(other_engine, table->file.name);
        ASSERT_NE(other, nullptr);
    }
    void TearDown() override {
        if (other) table4_close(other);
        if (table) table4_close(table);
    }
    void change_in_other(int record, const char *name, const char *note) {
        ASSERT_EQ(table4_go(other, record), 0);
        column4_assign(table4_column(other, "NAME"), name);
        ASSERT_EQ(column4_memo_assign(table4_column(other, "NOTE"), note, static_cast<uint32_t>(strlen(note))), 0);
        ASSERT_EQ(table4_flush_record(other, 1), 0);
    }
};

TEST_F(Table4Files, RefreshRecordReadsWhatAnotherOpenWrote) {
    ASSERT_EQ(table4_go(table, 2), 0);
    EXPECT_EQ(memo(table, "NOTE"), "memo");
    change_in_other(2, "Other", "a longer memo from the other open");
    column4_assign(table4_column(table, "NAME"), "dropped");
    ASSERT_EQ(table4_refresh_record(table), 0);
    EXPECT_EQ(table->record_changed, 0);  // the pending change is dropped
    EXPECT_EQ(field(table, "NAME"), "Other     ");
    EXPECT_EQ(memo(table, "NOTE"), "a longer memo from the other open");
    EXPECT_EQ(table->bof, 0);
    EXPECT_EQ(table->eof, 0);
}

TEST_F(Table4Files, RefreshRecordDoesNothingWhereTheRecordCannotHaveChanged) {
    ASSERT_EQ(table4_go(table, 2), 0);
    ASSERT_EQ(table4_lock_file(table), 0);
    const auto before = nqplat::file_call_counts();
    EXPECT_EQ(table4_refresh_record(table), 0);
    EXPECT_EQ(nqplat::file_call_counts().reads, before.reads);
    ASSERT_EQ(table4_unlock(table), 0);
    ASSERT_EQ(table4_go_eof(table), 3);
    EXPECT_EQ(table4_refresh_record(table), 0);  // beyond the count
    table->record_number = -1;
    EXPECT_EQ(table4_refresh_record(table), 0);
    EXPECT_EQ(table4_refresh_record(nullptr), -1);
}

TEST_F(Table4Files, ALockedRecordRefreshedKeepsItsStoredImage) {
    ASSERT_EQ(table4_lock(table, 1), 0);
    ASSERT_EQ(table4_go(table, 1), 0);
    table->memo_validated = 0;
    ASSERT_EQ(table4_refresh_record(table), 0);
    EXPECT_EQ(table->record_number_old, 1);
    EXPECT_EQ(table->memo_validated, 1);
}

TEST_F(Table4Files, RefreshDropsWhatTheCacheHeldOfEveryFile) {
    table4_close(table);
    ASSERT_EQ(engine4_cache_start(engine), 0);
    engine->optimize_default = 1;
    table = open("F.DBF");
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->memo_file.file.do_buffer, 1);
    ASSERT_EQ(table4_go(table, 3), 0);
    EXPECT_EQ(memo(table, "NOTE"), "memo");
    change_in_other(3, "Three", "changed elsewhere");
    ASSERT_EQ(table4_refresh(table), 0);
    ASSERT_EQ(table4_go(table, 3), 0);
    EXPECT_EQ(field(table, "NAME"), "Three     ");
    EXPECT_EQ(memo(table, "NOTE"), "changed elsewhere");
}

TEST_F(Table4Files, FlushWritesTheRecordAndTheFilesUpdateTheRecordAlone) {
    ASSERT_EQ(table4_go(table, 1), 0);
    column4_assign(table4_column(table, "NAME"), "flushed");
    ASSERT_EQ(table4_flush(table), 0);
    EXPECT_EQ(table->record_changed, 0);
    ASSERT_EQ(table4_go(other, 1), 0);
    EXPECT_EQ(field(other, "NAME"), "flushed   ");
    column4_assign(table4_column(table, "NAME"), "updated");
    ASSERT_EQ(table4_update(table), 0);
    ASSERT_EQ(table4_go(other, 1), 0);
    EXPECT_EQ(field(other, "NAME"), "updated   ");
    column4_assign(table4_column(table, "NAME"), "data");
    ASSERT_EQ(table4_flush_data(table), 0);
    ASSERT_EQ(table4_go(other, 1), 0);
    EXPECT_EQ(field(other, "NAME"), "data      ");
    engine->error_code = -1;
    EXPECT_EQ(table4_flush(table), -1);
    EXPECT_EQ(table4_update(table), -1);
    EXPECT_EQ(table4_flush_data(table), -1);
    EXPECT_EQ(table4_refresh(table), -1);
    engine->error_code = 0;
}

TEST_F(Table4Files, AnUpdateThatCannotWriteIsMinus1) {
    ASSERT_EQ(table4_lock(other, 2), 0);
    engine->lock_attempts = 1;
    ASSERT_EQ(table4_go(table, 2), 0);
    column4_assign(table4_column(table, "NAME"), "blocked");
    EXPECT_EQ(table4_update(table), -1);
    EXPECT_EQ(table->record_changed, 1);
    table4_unlock(other);
    EXPECT_EQ(table4_update(table), 0);
}

TEST_F(Table4Files, TheAppendLockDropsAChangedHeaderBlockOfTheCacheUnwritten) {
    table4_close(table);
    ASSERT_EQ(engine4_cache_start(engine), 0);
    engine->optimize_default = 1;
    engine->optimize_write_default = 1;
    table = open("F.DBF");
    ASSERT_NE(table, nullptr);
    ASSERT_EQ(table->file.write_mode, 1);
    const std::string before = bytes("F.DBF");
    // A header change held back in the cache, as a writer under a lock would leave it.
    table->file.write_delay = 1;
    ASSERT_EQ(file4_write(&table->file, 4, "\x63\0\0\0", 4), 0);
    cache_block *block = file4_cache_find(&table->file, 0);
    ASSERT_NE(block, nullptr);
    ASSERT_EQ(block->changed, 1);
    table->file.write_delay = 0;
    ASSERT_EQ(table4_lock_append(table), 0);
    EXPECT_EQ(file4_cache_find(&table->file, 0), nullptr);
    EXPECT_EQ(table4_count(table), 3);  // the count as the file has it
    ASSERT_EQ(table4_unlock(table), 0);
    EXPECT_EQ(bytes("F.DBF"), before);
}

}  // namespace
