// Memo values of fields: assigned, written with the record, read on first use after a move,
// kept or dropped by append_start, refreshed from the file when another process moved them,
// and every size against every block size.
#include <gtest/gtest.h>

#include <string>

#include "table4_test_support.h"

namespace {

using tabletest::be32;

class Memo4Column : public tabletest::TableTest {
protected:
    table4 *table = nullptr;
    void SetUp() override {
        table = create("MC.DBF", tabletest::memo_columns());
        ASSERT_NE(table, nullptr);
    }
    void TearDown() override {
        if (table) table4_close(table);
    }
    column4 *note() { return table4_column(table, "NOTE"); }
    int add(const std::string &value) {
        if (table4_append_start(table, 0) != 0) return -1;
        table4_blank(table);
        column4_assign(table4_column(table, "NAME"), "N");
        if (column4_memo_assign(note(), value.data(), static_cast<uint32_t>(value.size())) != 0) return -1;
        return table4_append(table);
    }
};

TEST_F(Memo4Column, AnAppendedValueGetsABlockAndReadsBack) {
    ASSERT_EQ(add("first value"), 0);
    EXPECT_EQ(field(table, "NOTE"), "         1");
    EXPECT_EQ(table->memo_columns[0].changed, 0);
    ASSERT_EQ(table4_go(table, 1), 0);
    EXPECT_EQ(table->memo_columns[0].needs_read, 1);
    EXPECT_EQ(memo(table, "NOTE"), "first value");
    EXPECT_EQ(table->memo_columns[0].needs_read, 0);
    EXPECT_EQ(table->memo_columns[0].contents[11], '\0');
    const std::string memo_file = bytes("MC.FPT");
    EXPECT_EQ(be32(memo_file, 512), 1u);
    EXPECT_EQ(be32(memo_file, 516), 11u);
}

TEST_F(Memo4Column, AnEmptyValueIsBlockZeroWithABlankField) {
    ASSERT_EQ(add(""), 0);
    EXPECT_EQ(field(table, "NOTE"), "          ");
    ASSERT_EQ(table4_go(table, 1), 0);
    EXPECT_EQ(memo(table, "NOTE"), "");
    EXPECT_EQ(table->memo_columns[0].contents, memo4_empty);
    EXPECT_EQ(bytes("MC.FPT").size(), 512u);
    // A value emptied later gets block 0 too, and its blocks stay lost until compression.
    ASSERT_EQ(add("some"), 0);
    ASSERT_EQ(table4_go(table, 2), 0);
    ASSERT_EQ(column4_memo_assign(note(), "", 0), 0);
    ASSERT_EQ(table4_flush_record(table, 0), 0);
    EXPECT_EQ(field(table, "NOTE"), "          ");
    EXPECT_EQ(be32(bytes("MC.FPT"), 0), 2u);
}

TEST_F(Memo4Column, RewritingKeepsTheBlockWhileTheValueFitsAndMovesItOtherwise) {
    ASSERT_EQ(add(std::string(400, 'a')), 0);
    ASSERT_EQ(table4_go(table, 1), 0);
    ASSERT_EQ(column4_memo_assign(note(), "shorter", 7), 0);
    EXPECT_EQ(table->record_changed, 1);
    ASSERT_EQ(table4_go(table, 1), 0);  // writes the record first
    EXPECT_EQ(field(table, "NOTE"), "         1");
    EXPECT_EQ(memo(table, "NOTE"), "shorter");
    ASSERT_EQ(column4_memo_assign(note(), std::string(2000, 'b').c_str(), 2000), 0);
    ASSERT_EQ(table4_write(table, 1), 0);
    EXPECT_EQ(field(table, "NOTE"), "         2");
    ASSERT_EQ(table4_go(table, 1), 0);
    EXPECT_EQ(memo(table, "NOTE"), std::string(2000, 'b'));
}

TEST_F(Memo4Column, AFieldThatIsNotAMemoTakesTheTextItself) {
    column4 *name = table4_column(table, "NAME");
    EXPECT_EQ(column4_memo_assign(name, "plain", 5), 0);
    EXPECT_EQ(field(table, "NAME"), "plain     ");
    EXPECT_EQ(column4_memo_len(name), 10u);
    EXPECT_EQ(std::string(column4_memo_ptr(name), 10), "plain     ");
    EXPECT_EQ(column4_memo_set_len(name, 3), -1);
    column4_memo_free(name);   // nothing to do
    column4_memo_reset(name);  // nothing to do
    EXPECT_EQ(column4_memo_flush(name), 0);
}

TEST_F(Memo4Column, AssignViaTheTextAccessorsGoesToTheMemo) {
    table4_append_start(table, 0);
    column4_assign(note(), "through assign");
    EXPECT_EQ(table->memo_columns[0].length, 14u);
    ASSERT_EQ(table4_append(table), 0);
    ASSERT_EQ(table4_go(table, 1), 0);
    char out[64];
    EXPECT_EQ(column4_text(note(), out, sizeof(out)), 14u);
    EXPECT_STREQ(out, "through assign");
}

TEST_F(Memo4Column, SetLenGrowsTheBufferAndMarksTheRecordChanged) {
    ASSERT_EQ(add("x"), 0);
    memo_column &m = table->memo_columns[0];
    table->record_changed = 0;
    column4_memo_free(note());
    ASSERT_EQ(column4_memo_set_len(note(), 0), 0);
    EXPECT_EQ(m.contents, memo4_empty);  // allocated 0 keeps the shared text
    EXPECT_EQ(m.changed, 1);
    EXPECT_EQ(table->record_changed, 1);
    ASSERT_EQ(column4_memo_set_len(note(), 10), 0);
    EXPECT_EQ(m.allocated, 10u);
    EXPECT_EQ(mem4_size(m.contents), 11u);
    EXPECT_EQ(m.contents[10], '\0');
    char *buffer = m.contents;
    ASSERT_EQ(column4_memo_set_len(note(), 4), 0);
    EXPECT_EQ(m.contents, buffer);
    EXPECT_EQ(m.length, 4u);
    EXPECT_EQ(m.contents[4], '\0');
    mem4_set_fail_hook([](size_t) { return 1; });
    EXPECT_EQ(column4_memo_set_len(note(), 100), -920);
    mem4_set_fail_hook(nullptr);
    EXPECT_EQ(m.allocated, 0u);
    EXPECT_EQ(m.contents, memo4_empty);
    EXPECT_EQ(m.needs_read, 1);
    engine->error_code = 0;
    table->record_changed = 0;
}

TEST_F(Memo4Column, FreeAndResetLeaveTheValueToBeReadAgain) {
    ASSERT_EQ(add("value"), 0);
    ASSERT_EQ(table4_go(table, 1), 0);
    EXPECT_EQ(memo(table, "NOTE"), "value");
    memo_column &m = table->memo_columns[0];
    column4_memo_reset(note());
    EXPECT_EQ(m.length, 0u);
    EXPECT_EQ(m.needs_read, 1);
    EXPECT_EQ(memo(table, "NOTE"), "value");
    column4_memo_free(note());
    EXPECT_EQ(m.contents, memo4_empty);
    EXPECT_EQ(m.allocated, 0u);
    EXPECT_EQ(m.needs_read, 1);
    EXPECT_EQ(memo(table, "NOTE"), "value");
}

TEST_F(Memo4Column, BeforeAnyRecordTheValueIsEmpty) {
    ASSERT_EQ(add("value"), 0);
    table4_close(table);
    table = open("MC.DBF");
    ASSERT_EQ(table->record_number, -1);
    EXPECT_EQ(column4_memo_len(note()), 0u);
    EXPECT_EQ(column4_memo_load(note()), 0);
    EXPECT_EQ(column4_memo_load(nullptr), -1);
    EXPECT_EQ(column4_memo_read(nullptr), -1);
}

TEST_F(Memo4Column, FlushWritesOnlyAChangedValue) {
    ASSERT_EQ(add("value"), 0);
    ASSERT_EQ(table4_go(table, 1), 0);
    const std::string before = bytes("MC.FPT");
    EXPECT_EQ(column4_memo_flush(note()), 0);
    EXPECT_EQ(bytes("MC.FPT"), before);
}

TEST_F(Memo4Column, AppendStartCanCarryTheValuesToTheNewRecord) {
    ASSERT_EQ(add("carried"), 0);
    ASSERT_EQ(table4_go(table, 1), 0);
    ASSERT_EQ(table4_append_start(table, 1), 0);
    EXPECT_EQ(field(table, "NOTE"), "          ");  // the number goes, the value stays
    EXPECT_EQ(table->memo_columns[0].needs_read, 0);
    ASSERT_EQ(table4_append(table), 0);
    EXPECT_EQ(field(table, "NOTE"), "         2");
    ASSERT_EQ(table4_go(table, 2), 0);
    EXPECT_EQ(memo(table, "NOTE"), "carried");
    // Without keeping, the new record has no value.
    ASSERT_EQ(table4_append_start(table, 0), 0);
    ASSERT_EQ(table4_append(table), 0);
    EXPECT_EQ(field(table, "NOTE"), "          ");
    ASSERT_EQ(table4_go(table, 3), 0);
    EXPECT_EQ(memo(table, "NOTE"), "");
}

TEST_F(Memo4Column, AWriteTakesTheMemoNumberAnotherProcessGaveTheRecord) {
    ASSERT_EQ(add("mine"), 0);
    ASSERT_EQ(table4_unlock(table), 0);
    ASSERT_EQ(table4_go(table, 1), 0);
    EXPECT_EQ(table->memo_validated, 0);
    // Another open moves the value.
    enginetest::Engine other_engine;
    table4 *other = table4_open(other_engine, table->file.name);
    ASSERT_NE(other, nullptr);
    ASSERT_EQ(table4_go(other, 1), 0);
    ASSERT_EQ(column4_memo_assign(table4_column(other, "NOTE"), std::string(900, 'o').c_str(), 900), 0);
    ASSERT_EQ(table4_flush_record(other, 1), 0);
    EXPECT_EQ(field(other, "NOTE"), "         2");
    table4_close(other);
    // This table changes another field; its write keeps the other's memo number.
    column4_assign(table4_column(table, "NAME"), "renamed");
    ASSERT_EQ(table4_write(table, 1), 0);
    EXPECT_EQ(table->memo_validated, 1);
    EXPECT_EQ(field(table, "NOTE"), "         2");
    ASSERT_EQ(table4_go(table, 1), 0);
    EXPECT_EQ(memo(table, "NOTE"), std::string(900, 'o'));
    EXPECT_EQ(field(table, "NAME"), "renamed   ");
}

TEST_F(Memo4Column, WithReadLockALoadValidatesTheRecordFirst) {
    ASSERT_EQ(add("locked read"), 0);
    engine->read_lock = 1;
    ASSERT_EQ(table4_go(table, 1), 0);
    EXPECT_EQ(memo(table, "NOTE"), "locked read");
    EXPECT_EQ(table->memo_validated, 1);
    EXPECT_TRUE(table4_lock_test(table, 1));
}

TEST_F(Memo4Column, EverySizeInEveryBlockSizeSurvivesAReopen) {
    table4_close(table);
    table = nullptr;
    const uint32_t sizes[] = {0, 1, 511, 512, 513, 5000};
    for (int block_size : {64, 512, 1024}) {
        SCOPED_TRACE(block_size);
        engine->memo_block_default = block_size;
        const std::string name = "S" + std::to_string(block_size) + ".DBF";
        table4 *t = create(name, tabletest::memo_columns());
        ASSERT_NE(t, nullptr);
        EXPECT_EQ(t->memo_file.block_size, block_size);
        for (uint32_t size : sizes) {
            std::string value(size, '\0');
            for (uint32_t i = 0; i < size; ++i) value[i] = static_cast<char>('A' + (i * 7 + size) % 26);
            ASSERT_EQ(table4_append_start(t, 0), 0);
            ASSERT_EQ(column4_memo_assign(table4_column(t, "NOTE"), value.data(), size), 0);
            ASSERT_EQ(table4_append(t), 0);
        }
        table4_close(t);
        engine->memo_block_default = 512;
        t = open(name);
        ASSERT_NE(t, nullptr);
        EXPECT_EQ(t->memo_file.block_size, block_size);
        for (int n = 1; n <= 6; ++n) {
            ASSERT_EQ(table4_go(t, n), 0);
            const uint32_t size = sizes[n - 1];
            std::string value(size, '\0');
            for (uint32_t i = 0; i < size; ++i) value[i] = static_cast<char>('A' + (i * 7 + size) % 26);
            EXPECT_EQ(memo(t, "NOTE"), value) << size;
        }
        table4_close(t);
    }
}

TEST_F(Memo4Column, AMemoFieldWithoutAnOpenMemoFileReadsEmpty) {
    ASSERT_EQ(add("value"), 0);
    table4_close(table);
    table = nullptr;
    std::string file = bytes("MC.DBF");
    file[0] = 0x03;  // the version no longer asks for the memo file
    nqtest::write_file(path("NOMEMO.DBF"), file);
    table4 *t = open("NOMEMO.DBF");
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(t->memo_file.file.handle, -1);
    ASSERT_EQ(table4_go(t, 1), 0);
    EXPECT_EQ(memo(t, "NOTE"), "");
    ASSERT_EQ(column4_memo_assign(table4_column(t, "NOTE"), "new", 3), 0);
    EXPECT_EQ(table4_flush_record(t, 0), -1);
    t->record_changed = 0;
    EXPECT_EQ(table4_append_start(t, 0), 0);
    ASSERT_EQ(column4_memo_assign(table4_column(t, "NOTE"), "new", 3), 0);
    EXPECT_EQ(table4_append(t), -1);
    EXPECT_EQ(table4_count(t), 1);
    t->record_changed = 0;
    table4_close(t);
    EXPECT_EQ(engine->error_code, 0);
}

}  // namespace
