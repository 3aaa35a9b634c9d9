// Moving over records: go, the end of file, top, bottom and skip in record number order,
// with their flags and results, and reads past the end of a truncated file.
#include <gtest/gtest.h>

#include <string>

#include "table4_test_support.h"

namespace {

using tabletest::box_text;

class Table4Move : public tabletest::TableTest {
protected:
    table4 *table = nullptr;
    void SetUp() override {
        table = create("MOVE.DBF");
        ASSERT_NE(table, nullptr);
        for (int i = 1; i <= 5; ++i) {
            ASSERT_EQ(append_row(table, ("R" + std::to_string(i)).c_str(), i * 1.5, "20240101", i % 2), 0);
        }
    }
    void TearDown() override {
        if (table) table4_close(table);
    }
    std::string name() { return field(table, "NAME").substr(0, 2); }
};

TEST_F(Table4Move, GoReadsTheRecordAndClearsTheFlags) {
    table->eof = table->bof = 1;
    ASSERT_EQ(table4_go(table, 3), 0);
    EXPECT_EQ(table->record_number, 3);
    EXPECT_EQ(table4_recno(table), 3);
    EXPECT_EQ(name(), "R3");
    EXPECT_EQ(table4_eof(table), 0);
    EXPECT_EQ(table4_bof(table), 0);
    EXPECT_EQ(table->memo_validated, 0);  // not locked: nothing is taken as the stored record
    EXPECT_EQ(engine->usage_flags & usage4_record_read, usage4_record_read);
}

TEST_F(Table4Move, GoToALockedRecordKeepsItsStoredImage) {
    ASSERT_EQ(table4_lock(table, 2), 0);
    ASSERT_EQ(table4_go(table, 2), 0);
    EXPECT_EQ(table->memo_validated, 1);
    EXPECT_EQ(table->record_number_old, 2);
    EXPECT_EQ(std::string(table->record_old, table->record_width),
              std::string(table->record, table->record_width));
    EXPECT_EQ(table->locks_held, 1u);
    // A record not locked lets every lock go.
    ASSERT_EQ(table4_go(table, 4), 0);
    EXPECT_EQ(table->locks_held, 0u);
}

TEST_F(Table4Move, GoPastTheEndIsMinus70OrQuietly5) {
    EXPECT_EQ(table4_go(table, 6), -70);
    EXPECT_EQ(engine->error_code, -70);
    ASSERT_EQ(boxes.count(), 1u);
    EXPECT_EQ(boxes.last().text, box_text(-70, {"Reading File", table->file.name}));
    EXPECT_EQ(table->record_number, -1);
    EXPECT_EQ(std::string(table->record, table->record_width), std::string(table->record_width, ' '));
    engine->error_code = 0;
    engine->err_go = 0;
    EXPECT_EQ(table4_go(table, 100), 5);
    EXPECT_EQ(engine->error_code, 0);
    EXPECT_EQ(table->record_number, -1);
    EXPECT_EQ(boxes.count(), 1u);
}

TEST_F(Table4Move, GoToNumberZeroOrBelowReadsNothing) {
    ASSERT_EQ(table4_go(table, 2), 0);
    EXPECT_EQ(table4_go(table, 0), 0);
    EXPECT_EQ(table4_go(table, -4), 0);
    EXPECT_EQ(table->record_number, 2);
    EXPECT_EQ(name(), "R2");
}

TEST_F(Table4Move, GoWithReadLockLocksTheRecordFirst) {
    engine->read_lock = 1;
    ASSERT_EQ(table4_go(table, 3), 0);
    EXPECT_TRUE(table4_lock_test(table, 3));
    EXPECT_EQ(table->memo_validated, 1);
    // Another open cannot take it.
    enginetest::Engine other;
    other->lock_attempts = 1;
    table4 *second = table4_open(other, table->file.name);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(table4_lock(second, 3), 50);
    other->read_lock = 1;
    EXPECT_EQ(table4_go(second, 3), 50);
    table4_close(second);
}

TEST_F(Table4Move, GoEofSetsTheNumberPastTheLastRecordAndBlanks) {
    ASSERT_EQ(table4_go(table, 2), 0);
    EXPECT_EQ(table4_go_eof(table), 3);
    EXPECT_EQ(table->record_number, 6);
    EXPECT_EQ(table->eof, 1);
    EXPECT_EQ(table->bof, 0);
    EXPECT_EQ(std::string(table->record, table->record_width), std::string(table->record_width, ' '));
}

TEST_F(Table4Move, TopAndBottom) {
    EXPECT_EQ(table4_top(table), 0);
    EXPECT_EQ(table->record_number, 1);
    EXPECT_EQ(table->bof, 0);
    EXPECT_EQ(table4_bottom(table), 0);
    EXPECT_EQ(table->record_number, 5);
    EXPECT_EQ(table->eof, 0);
    EXPECT_EQ(name(), "R5");
}

TEST_F(Table4Move, TopAndBottomOfAnEmptyTableSetBothFlags) {
    table4 *empty = create("EMPTY.DBF");
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(table4_top(empty), 3);
    EXPECT_EQ(empty->bof, 1);
    EXPECT_EQ(empty->eof, 1);
    EXPECT_EQ(empty->record_number, 1);
    empty->bof = empty->eof = 0;
    EXPECT_EQ(table4_bottom(empty), 3);
    EXPECT_EQ(empty->bof, 1);
    EXPECT_EQ(empty->eof, 1);
    EXPECT_EQ(boxes.count(), 0u);
    table4_close(empty);
}

TEST_F(Table4Move, TopOfATableWhoseFirstRecordIsMissingReportsTheSecondRead) {
    // The header claims records that the file does not hold.
    table4_close(table);
    table = nullptr;
    std::string file = bytes("MOVE.DBF");
    nqtest::write_file(path("CUT.DBF"), file.substr(0, 161));
    table4 *cut = open("CUT.DBF");
    ASSERT_NE(cut, nullptr);
    EXPECT_EQ(table4_top(cut), -70);
    EXPECT_EQ(engine->error_code, -70);
    engine->error_code = 0;
    engine->err_go = 0;
    EXPECT_EQ(table4_top(cut), 5);
    EXPECT_EQ(table4_bottom(cut), 5);
    EXPECT_EQ(table4_go(cut, 3), 5);
    table4_close(cut);
}

TEST_F(Table4Move, SkipForwardAndBack) {
    ASSERT_EQ(table4_top(table), 0);
    EXPECT_EQ(table4_skip(table, 1), 0);
    EXPECT_EQ(table->record_number, 2);
    EXPECT_EQ(table4_skip(table, 2), 0);
    EXPECT_EQ(table->record_number, 4);
    EXPECT_EQ(table4_skip(table, -3), 0);
    EXPECT_EQ(table->record_number, 1);
    EXPECT_EQ(table4_skip(table, 0), 0);
    EXPECT_EQ(table->record_number, 1);
    EXPECT_EQ(name(), "R1");
    EXPECT_EQ(engine->usage_flags & usage4_natural_skip, usage4_natural_skip);
}

TEST_F(Table4Move, SkipPastTheEndGoesToEof) {
    ASSERT_EQ(table4_go(table, 4), 0);
    EXPECT_EQ(table4_skip(table, 1), 0);
    EXPECT_EQ(table4_skip(table, 1), 3);
    EXPECT_EQ(table->eof, 1);
    EXPECT_EQ(table->record_number, 6);
    // Back from the end reaches the last record.
    EXPECT_EQ(table4_skip(table, -1), 0);
    EXPECT_EQ(table->record_number, 5);
    EXPECT_EQ(table->eof, 0);
    EXPECT_EQ(table4_skip(table, 10), 3);
}

TEST_F(Table4Move, SkipBeforeTheFirstRecordStandsOnItWithBofAndResult4) {
    ASSERT_EQ(table4_go(table, 2), 0);
    EXPECT_EQ(table4_skip(table, -5), 4);
    EXPECT_EQ(table->record_number, 1);
    EXPECT_EQ(table->bof, 1);
    EXPECT_EQ(table->eof, 0);
    EXPECT_EQ(name(), "R1");
    // The end-of-file flag stays as it was.
    ASSERT_EQ(table4_go_eof(table), 3);
    EXPECT_EQ(table4_skip(table, -9), 4);
    EXPECT_EQ(table->record_number, 1);
    EXPECT_EQ(table->eof, 1);
    EXPECT_EQ(table->bof, 1);
}

TEST_F(Table4Move, SkipInAnEmptyTable) {
    table4 *empty = create("EMPTY.DBF");
    ASSERT_EQ(table4_top(empty), 3);
    EXPECT_EQ(table4_skip(empty, 1), 3);
    EXPECT_EQ(table4_skip(empty, -1), 4);
    EXPECT_EQ(empty->bof, 1);
    EXPECT_EQ(empty->eof, 1);
    EXPECT_EQ(table4_skip(empty, 0), 3);
    EXPECT_EQ(boxes.count(), 0u);
    table4_close(empty);
}

TEST_F(Table4Move, SkipFromNoValidRecordIsMinus910OrQuietlyMinus1) {
    EXPECT_EQ(table->record_number, 5);  // the last append
    table->record_number = -1;
    EXPECT_EQ(table4_skip(table, 1), -1);
    EXPECT_EQ(engine->error_code, -910);
    ASSERT_EQ(boxes.count(), 1u);
    EXPECT_EQ(boxes.last().text,
              box_text(-910, {"Unexpected Information", "Skip must be made from valid record number"}));
    engine->error_code = 0;
    engine->err_skip = 0;
    EXPECT_EQ(table4_skip(table, 1), -1);
    EXPECT_EQ(engine->error_code, 0);
    EXPECT_EQ(boxes.count(), 1u);
}

TEST_F(Table4Move, SkipSeesRecordsAnotherOpenAppended) {
    ASSERT_EQ(table4_bottom(table), 0);
    enginetest::Engine other;
    table4 *second = table4_open(other, table->file.name);
    ASSERT_NE(second, nullptr);
    ASSERT_EQ(table4_append_start(second, 0), 0);
    column4_assign(table4_column(second, "NAME"), "R6");
    ASSERT_EQ(table4_append(second), 0);
    table4_close(second);
    EXPECT_EQ(table4_skip(table, 1), 0);
    EXPECT_EQ(name(), "R6");
}

TEST_F(Table4Move, AnEngineInErrorDoesNotMove) {
    ASSERT_EQ(table4_go(table, 2), 0);
    engine->error_code = -1;
    EXPECT_EQ(table4_go(table, 3), -1);
    EXPECT_EQ(table4_top(table), -1);
    EXPECT_EQ(table4_bottom(table), -1);
    EXPECT_EQ(table4_skip(table, 1), -1);
    EXPECT_EQ(table4_go_eof(table), -1);
    EXPECT_EQ(table4_count(table), -1);
    EXPECT_EQ(table4_read_record(table, 1), -1);
    EXPECT_EQ(table->record_number, 2);
    engine->error_code = 0;
    EXPECT_EQ(table4_go(nullptr, 1), -1);
    EXPECT_EQ(table4_skip(nullptr, 1), -1);
    EXPECT_EQ(table4_top(nullptr), -1);
}

TEST_F(Table4Move, MovingWritesAChangedRecordFirst) {
    ASSERT_EQ(table4_go(table, 2), 0);
    column4_assign(table4_column(table, "NAME"), "TWO");
    ASSERT_EQ(table4_skip(table, 1), 0);
    ASSERT_EQ(table4_go(table, 2), 0);
    EXPECT_EQ(field(table, "NAME"), "TWO       ");
}

TEST_F(Table4Move, TheCountIsReadFreshUntilALockMakesItTrusted) {
    EXPECT_EQ(table->record_count, -1);
    EXPECT_EQ(table4_count(table), 5);
    ASSERT_EQ(table4_lock_file(table), 0);
    EXPECT_EQ(table4_count(table), 5);
    EXPECT_EQ(table->record_count, 5);
    ASSERT_EQ(table4_unlock(table), 0);
    EXPECT_EQ(table->record_count, -1);
    // A negative count in the header is no count.
    std::string file = bytes("MOVE.DBF");
    tabletest::put_le32(file, 4, 0xFFFFFFF0u);
    nqtest::write_file(path("NEG.DBF"), file);
    table4 *negative = open("NEG.DBF");
    ASSERT_NE(negative, nullptr);
    EXPECT_EQ(table4_count(negative), -1);
    EXPECT_EQ(table4_bottom(negative), -1);
    table4_close(negative);
}

}  // namespace
