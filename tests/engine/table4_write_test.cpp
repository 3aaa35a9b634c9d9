// Writing and appending records: the record write with its lock and flags, the flush of a
// changed record, append with its end byte and header, append_start with and without memo
// values, blank, delete and recall, the header updates.
#include <gtest/gtest.h>

#include <string>

#include "plat_file.h"
#include "table4_test_support.h"

namespace {

using tabletest::le32;

class Table4Write : public tabletest::TableTest {
protected:
    table4 *table = nullptr;
    void SetUp() override {
        table = create("W.DBF");
        ASSERT_NE(table, nullptr);
    }
    void TearDown() override {
        if (table) table4_close(table);
    }
    std::string record_bytes(int number) {
        return bytes("W.DBF").substr(161 + (number - 1) * 28, 28);
    }
};

TEST_F(Table4Write, AppendWritesTheRecordTheEndByteAndTheHeader) {
    ASSERT_EQ(table4_append_start(table, 0), 0);
    EXPECT_EQ(table->record_number, 0);
    table4_blank(table);
    column4_assign(table4_column(table, "NAME"), "Anna");
    column4_assign_double(table4_column(table, "AMOUNT"), 12.5);
    column4_assign_date(table4_column(table, "SEEN"), "20240229");
    column4_assign_logical(table4_column(table, "OK"), 1);
    ASSERT_EQ(table4_append(table), 0);
    EXPECT_EQ(table->record_number, 1);
    EXPECT_EQ(table->record_changed, 0);
    EXPECT_EQ(table->file_changed, 0);  // the header write cleared it
    EXPECT_EQ(table->append_locked, 0);
    EXPECT_EQ(table->locks_held, 1u);  // the new record stays locked
    EXPECT_EQ(table->record[table->record_width], '\0');
    EXPECT_EQ(engine->usage_flags & usage4_append, usage4_append);
    const std::string file = bytes("W.DBF");
    ASSERT_EQ(file.size(), 161u + 28 + 1);
    EXPECT_EQ(file.substr(161), " Anna         12.5020240229T\x1A");
    EXPECT_EQ(le32(file, 4), 1u);
    unsigned char today[3];
    u4yymmdd(today);
    EXPECT_EQ(static_cast<uint8_t>(file[1]), today[0]);
}

TEST_F(Table4Write, AppendsFollowEachOtherAndTheCountGrows) {
    for (int i = 1; i <= 20; ++i) {
        ASSERT_EQ(append_row(table, ("N" + std::to_string(i)).c_str(), i, "19991231", false), 0);
        EXPECT_EQ(table->record_number, i);
    }
    EXPECT_EQ(table4_count(table), 20);
    const std::string file = bytes("W.DBF");
    EXPECT_EQ(file.size(), 161u + 20 * 28 + 1);
    EXPECT_EQ(file.back(), '\x1A');
    EXPECT_EQ(record_bytes(20).substr(0, 4), " N20");
}

TEST_F(Table4Write, AppendBlankAddsABlankRecord) {
    ASSERT_EQ(append_row(table, "X", 1, "20000101", true), 0);
    ASSERT_EQ(table4_append_blank(table), 0);
    EXPECT_EQ(table->record_number, 2);
    EXPECT_EQ(record_bytes(2), std::string(28, ' '));
}

TEST_F(Table4Write, AppendStartKeepsTheFieldsOfTheCurrentRecordForACopy) {
    ASSERT_EQ(append_row(table, "Source", 3, "20000101", true), 0);
    ASSERT_EQ(table4_go(table, 1), 0);
    ASSERT_EQ(table4_append_start(table, 0), 0);
    ASSERT_EQ(table4_append(table), 0);
    EXPECT_EQ(record_bytes(2), record_bytes(1));
}

TEST_F(Table4Write, WriteReplacesTheRecordInPlace) {
    ASSERT_EQ(append_row(table, "One", 1, "20000101", true), 0);
    ASSERT_EQ(append_row(table, "Two", 2, "20000102", true), 0);
    ASSERT_EQ(table4_go(table, 1), 0);
    column4_assign(table4_column(table, "NAME"), "Uno");
    EXPECT_EQ(table->record_changed, 1);
    ASSERT_EQ(table4_write(table, 1), 0);
    EXPECT_EQ(table->record_changed, 0);
    EXPECT_TRUE(table4_lock_test(table, 1));
    EXPECT_EQ(record_bytes(1).substr(0, 6), " Uno  ");
    EXPECT_EQ(record_bytes(2).substr(0, 6), " Two  ");
    EXPECT_EQ(engine->usage_flags & usage4_record_write, usage4_record_write);
    // The record may go to another number.
    ASSERT_EQ(table4_write(table, 2), 0);
    EXPECT_EQ(record_bytes(2).substr(0, 6), " Uno  ");
}

TEST_F(Table4Write, WriteRefusesNumbersBelowOneAndAnEngineInError) {
    ASSERT_EQ(append_row(table, "One", 1, "20000101", true), 0);
    EXPECT_EQ(table4_write(table, 0), -1);
    EXPECT_EQ(table4_write(table, -3), -1);
    engine->error_code = -2;
    EXPECT_EQ(table4_write(table, 1), -1);
    EXPECT_EQ(table4_append(table), -1);
    EXPECT_EQ(table4_append_start(table, 0), -1);
    EXPECT_EQ(table4_append_blank(table), -1);
    engine->error_code = 0;
    EXPECT_EQ(table4_write(nullptr, 1), -1);
}

TEST_F(Table4Write, WriteToARecordAnotherHoldsGives50) {
    ASSERT_EQ(append_row(table, "One", 1, "20000101", true), 0);
    ASSERT_EQ(table4_unlock(table), 0);  // the append left record 1 locked
    enginetest::Engine other;
    other->lock_attempts = 1;
    table4 *second = table4_open(other, table->file.name);
    ASSERT_NE(second, nullptr);
    ASSERT_EQ(table4_lock(second, 1), 0);
    engine->lock_attempts = 1;
    ASSERT_EQ(table4_go(table, 1), 0);
    column4_assign(table4_column(table, "NAME"), "Mine");
    EXPECT_EQ(table4_write(table, 1), 50);
    EXPECT_EQ(table->record_changed, 1);  // still pending
    EXPECT_EQ(engine->error_code, 0);
    table4_unlock(second);
    EXPECT_EQ(table4_write(table, 1), 0);
    table4_close(second);
}

TEST_F(Table4Write, FlushRecordWritesOnlyAChangedRecord) {
    ASSERT_EQ(append_row(table, "One", 1, "20000101", true), 0);
    ASSERT_EQ(table4_go(table, 1), 0);
    const auto before = nqplat::file_call_counts();
    EXPECT_EQ(table4_flush_record(table, 0), 0);
    EXPECT_EQ(nqplat::file_call_counts().writes, before.writes);
    table4_delete(table);
    EXPECT_EQ(table4_flush_record(table, 1), 0);
    EXPECT_EQ(record_bytes(1)[0], '*');
    EXPECT_EQ(table->locks_held, 0u);  // with unlock, the record lock went
    EXPECT_EQ(table->record_number_old, -1);
    // At the end of file nothing is written and the change is dropped.
    ASSERT_EQ(table4_go_eof(table), 3);
    table->record_changed = 1;
    EXPECT_EQ(table4_flush_record(table, 0), 0);
    EXPECT_EQ(table->record_changed, 0);
}

TEST_F(Table4Write, DeleteRecallAndDeleted) {
    ASSERT_EQ(append_row(table, "One", 1, "20000101", true), 0);
    ASSERT_EQ(table4_go(table, 1), 0);
    EXPECT_FALSE(table4_deleted(table));
    table4_recall(table);
    EXPECT_EQ(table->record_changed, 0);  // nothing to change
    table4_delete(table);
    EXPECT_TRUE(table4_deleted(table));
    EXPECT_EQ(table->record_changed, 1);
    table->record_changed = 0;
    table4_delete(table);
    EXPECT_EQ(table->record_changed, 0);
    table4_recall(table);
    EXPECT_FALSE(table4_deleted(table));
    EXPECT_EQ(table->record_changed, 1);
    // Any flag byte other than a blank counts as deleted.
    table->record[0] = '#';
    EXPECT_TRUE(table4_deleted(table));
    table4_blank(table);
    EXPECT_FALSE(table4_deleted(table));
    // Null is ignored.
    table4_delete(nullptr);
    table4_recall(nullptr);
    table4_blank(nullptr);
    EXPECT_EQ(table4_deleted(nullptr), 0);
}

TEST_F(Table4Write, UpdateHeaderWritesThePartsAsked) {
    ASSERT_EQ(append_row(table, "One", 1, "20000101", true), 0);
    std::string file = bytes("W.DBF");
    file[1] = file[2] = file[3] = 0;
    tabletest::put_le32(file, 4, 99);
    nqtest::write_file(path("H.DBF"), file);
    table4 *h = open("H.DBF");
    ASSERT_NE(h, nullptr);
    ASSERT_EQ(table4_lock_file(h), 0);
    h->record_count = 7;
    h->version = 0x42;
    EXPECT_EQ(table4_update_header(h, 0, 0), 0);
    EXPECT_EQ(bytes("H.DBF"), file);
    EXPECT_EQ(table4_update_header(h, 0, 1), 0);
    std::string now = bytes("H.DBF");
    EXPECT_EQ(le32(now, 4), 7u);
    EXPECT_EQ(now[0], file[0]);
    EXPECT_EQ(now[1], 0);
    h->file_changed = 1;
    EXPECT_EQ(table4_update_header(h, 1, 0), 0);
    EXPECT_EQ(h->file_changed, 0);
    now = bytes("H.DBF");
    EXPECT_EQ(now[0], 0x42);
    unsigned char today[3];
    u4yymmdd(today);
    EXPECT_EQ(static_cast<uint8_t>(now[2]), today[1]);
    h->record_count = 8;
    EXPECT_EQ(table4_update_header(h, 1, 1), 0);
    EXPECT_EQ(le32(bytes("H.DBF"), 4), 8u);
    EXPECT_EQ(tabletest::le16(bytes("H.DBF"), 8), 161u);
    h->version = 3;
    table4_close(h);
}

TEST_F(Table4Write, AnAppendThatCannotTakeTheAppendLockGives50AndWritesNothing) {
    ASSERT_EQ(append_row(table, "One", 1, "20000101", true), 0);
    enginetest::Engine other;
    table4 *second = table4_open(other, table->file.name);
    ASSERT_EQ(table4_lock_append(second), 0);
    engine->lock_attempts = 2;
    enginetest::FakeClock clock;
    const std::string before = bytes("W.DBF");
    ASSERT_EQ(table4_append_start(table, 0), 0);
    EXPECT_EQ(table4_append(table), 50);
    EXPECT_EQ(bytes("W.DBF"), before);
    EXPECT_EQ(table->append_locked, 0);
    table4_close(second);
    EXPECT_EQ(table4_append(table), 0);
    EXPECT_EQ(table4_count(table), 2);
}

TEST_F(Table4Write, AnAppendWhoseNewRecordAnotherHoldsGives50AndLetsTheAppendByteGo) {
    ASSERT_EQ(append_row(table, "One", 1, "20000101", true), 0);
    enginetest::Engine other;
    other->lock_attempts = 1;
    table4 *second = table4_open(other, table->file.name);
    ASSERT_EQ(table4_lock(second, 2), 0);  // the number the next append takes
    engine->lock_attempts = 1;
    ASSERT_EQ(table4_append_start(table, 0), 0);
    EXPECT_EQ(table4_append(table), 50);
    EXPECT_EQ(table->append_locked, 0);
    EXPECT_EQ(table4_count(table), 1);
    EXPECT_EQ(table4_lock_append(second), 0);  // the append byte is free again
    table4_close(second);
}

TEST_F(Table4Write, AnAppendUnderAFileLockKeepsTheLockAndTheCount) {
    ASSERT_EQ(table4_lock_file(table), 0);
    for (int i = 0; i < 3; ++i) ASSERT_EQ(append_row(table, "L", i, "20000101", true), 0);
    EXPECT_EQ(table->file_locked, 1);
    EXPECT_EQ(table->record_count, 3);
    EXPECT_EQ(table4_unlock(table), 0);
    EXPECT_EQ(table4_count(table), 3);
}

TEST_F(Table4Write, AnExclusiveTableAppendsWithoutLocks) {
    table4_close(table);
    table = nullptr;
    engine->exclusive = 1;
    table = open("W.DBF");
    ASSERT_NE(table, nullptr);
    const auto before = nqplat::file_call_counts();
    for (int i = 0; i < 3; ++i) ASSERT_EQ(append_row(table, "E", i, "20000101", true), 0);
    EXPECT_EQ(nqplat::file_call_counts().locks, before.locks);
    EXPECT_EQ(table->record_count, 3);
    EXPECT_EQ(table4_count(table), 3);
}

TEST_F(Table4Write, WithTheCacheAndWritesDelayedEverythingReachesTheFile) {
    table4_close(table);
    table = nullptr;
    ASSERT_EQ(engine4_cache_start(engine), 0);
    engine->optimize_default = 1;
    engine->optimize_write_default = 1;
    table = open("W.DBF");
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->file.do_buffer, 1);
    for (int i = 1; i <= 50; ++i) ASSERT_EQ(append_row(table, ("C" + std::to_string(i)).c_str(), i, "20000101", true), 0);
    ASSERT_EQ(table4_go(table, 7), 0);
    column4_assign(table4_column(table, "NAME"), "Seven");
    ASSERT_EQ(table4_unlock(table), 0);
    // Unlocked, a shared file keeps nothing back: another open sees it all.
    enginetest::Engine other;
    table4 *second = table4_open(other, table->file.name);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(table4_count(second), 50);
    ASSERT_EQ(table4_go(second, 50), 0);
    EXPECT_EQ(field(second, "NAME"), "C50       ");
    ASSERT_EQ(table4_go(second, 7), 0);
    EXPECT_EQ(field(second, "NAME"), "Seven     ");
    table4_close(second);
}

}  // namespace
