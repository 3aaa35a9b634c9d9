// Opening and closing data files: header and descriptors read back, the alias, the checks that
// refuse an impossible header with -200, the memo file and the production index flag, and
// the close that goes through after a failure.
#include <gtest/gtest.h>

#include <string>

#include "table4_test_support.h"

namespace {

using tabletest::put_le16;
using tabletest::put_le32;

using tabletest::box_text;
using tabletest::upper;

class Table4Open : public tabletest::TableTest {
protected:
    // A closed table of the plain columns with n records.
    void make(const std::string &name, int records) {
        table4 *table = create(name);
        ASSERT_NE(table, nullptr);
        for (int i = 0; i < records; ++i) {
            ASSERT_EQ(append_row(table, ("R" + std::to_string(i + 1)).c_str(), i, "20240101", true), 0);
        }
        ASSERT_EQ(table4_close(table), 0);
    }
    std::string not_a_data_file(const std::string &name) {
        return box_text(-200, {"File is not a Data File", upper(path(name))});
    }
    void expect_refused(const std::string &name, int code = -200) {
        EXPECT_EQ(open(name), nullptr) << name;
        EXPECT_EQ(engine->error_code, code) << name;
        EXPECT_EQ(engine->table_list.count, 0u);
        engine->error_code = 0;
    }
};

TEST_F(Table4Open, ReadsTheHeaderAndBuildsTheColumns) {
    make("DATA.DBF", 3);
    table4 *table = open("DATA.DBF");
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->version, 3);
    EXPECT_EQ(table->header_length, 161);
    EXPECT_EQ(table->record_width, 28u);
    EXPECT_EQ(table->record_count, -1);
    EXPECT_EQ(table4_count(table), 3);
    EXPECT_EQ(table->known_count, 3);
    EXPECT_EQ(table->record_count, -1);  // a shared table without lock does not keep it
    EXPECT_EQ(table->has_production, 0);
    EXPECT_EQ(table->column_count, 4u);
    EXPECT_EQ(table->memo_column_count, 0u);
    EXPECT_STREQ(table->columns[1].name, "AMOUNT");
    EXPECT_EQ(table->columns[1].type, 'N');
    EXPECT_EQ(table->columns[1].offset, 11u);
    EXPECT_EQ(table->columns[1].table, table);
    EXPECT_EQ(table->columns[1].memo, nullptr);
    EXPECT_EQ(table->record_number, -1);
    EXPECT_EQ(table->record_number_old, -1);
    EXPECT_EQ(table->locks, &table->single_lock);
    EXPECT_EQ(table->locks_capacity, 1u);
    EXPECT_EQ(table->memo_file.file.handle, -1);
    EXPECT_STREQ(table->alias, "DATA");
    EXPECT_EQ(engine4_find_table(engine, "data"), table);
    EXPECT_EQ(table4_close(table), 0);
    EXPECT_EQ(engine->table_list.count, 0u);
}

TEST_F(Table4Open, TheAliasIsTheBaseNameCutToTenCharacters) {
    make("ALONGERNAMETHANTEN.DBF", 0);
    table4 *table = open("alongernamethanten");
    ASSERT_NE(table, nullptr);
    EXPECT_STREQ(table->alias, "ALONGERNAM");
    table4_close(table);
}

TEST_F(Table4Open, AMissingFileIsMinus60OrQuietly70) {
    EXPECT_EQ(open("NONE.DBF"), nullptr);
    EXPECT_EQ(engine->error_code, -60);
    ASSERT_EQ(boxes.count(), 1u);
    EXPECT_EQ(boxes.last().text, box_text(-60, {"Opening File", "File Name:", upper(path("NONE.DBF"))}));
    engine->error_code = 0;
    engine->err_open = 0;
    EXPECT_EQ(open("NONE"), nullptr);
    EXPECT_EQ(engine->error_code, 70);
    EXPECT_EQ(boxes.count(), 1u);
    engine->error_code = 0;
    EXPECT_EQ(engine->table_list.count, 0u);
}

TEST_F(Table4Open, NullArgumentsAndAnEngineInErrorGiveNull) {
    make("DATA.DBF", 0);
    EXPECT_EQ(table4_open(nullptr, path("DATA.DBF").c_str()), nullptr);
    EXPECT_EQ(table4_open(engine, nullptr), nullptr);
    engine->error_code = -5;
    EXPECT_EQ(open("DATA.DBF"), nullptr);
    EXPECT_EQ(engine->error_code, -5);
    engine->error_code = 0;
    EXPECT_EQ(boxes.count(), 0u);
}

TEST_F(Table4Open, AFileShorterThanAHeaderIsNotADataFile) {
    nqtest::write_file(path("SHORT.DBF"), std::string("\x03\x01\x02", 3));
    expect_refused("SHORT.DBF");
    ASSERT_EQ(boxes.count(), 1u);
    EXPECT_EQ(boxes.last().text, not_a_data_file("SHORT.DBF"));
    nqtest::write_file(path("NOTHING.DBF"), "");
    expect_refused("NOTHING.DBF");
}

TEST_F(Table4Open, AHeaderLengthBelow33IsRefused) {
    make("LOW.DBF", 1);
    std::string file = bytes("LOW.DBF");
    for (uint32_t length : {0u, 1u, 32u}) {
        put_le16(file, 8, length);
        nqtest::write_file(path("LOW.DBF"), file);
        expect_refused("LOW.DBF");
    }
}

TEST_F(Table4Open, AHeaderLengthPastTheEndOfTheFileIsRefused) {
    make("LONG.DBF", 1);
    std::string file = bytes("LONG.DBF");
    put_le16(file, 8, 60000);
    nqtest::write_file(path("LONG.DBF"), file);
    expect_refused("LONG.DBF");
}

TEST_F(Table4Open, ADescriptorBlockWithoutTerminatorStillOpensWhenTheWidthsAgree) {
    make("NOEND.DBF", 2);
    std::string file = bytes("NOEND.DBF");
    // The header ends right behind the last descriptor: no byte 13 anywhere in it.
    put_le16(file, 8, 32 * 5);
    file.erase(32 * 5, 1);
    nqtest::write_file(path("NOEND.DBF"), file);
    table4 *table = open("NOEND.DBF");
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->column_count, 4u);
    EXPECT_EQ(table->header_length, 160);
    ASSERT_EQ(table4_go(table, 2), 0);
    EXPECT_EQ(field(table, "NAME"), "R2        ");
    table4_close(table);
}

TEST_F(Table4Open, ADescriptorCutShortByTheHeaderIsRefused) {
    make("CUT.DBF", 1);
    std::string file = bytes("CUT.DBF");
    // No terminator, and the block ends ten bytes into a fifth descriptor.
    file[32 * 5] = 'X';
    put_le16(file, 8, 32 * 5 + 10);
    nqtest::write_file(path("CUT.DBF"), file);
    expect_refused("CUT.DBF");
}

TEST_F(Table4Open, FieldsThatDoNotFillTheRecordExactlyAreRefused) {
    make("WIDTH.DBF", 1);
    std::string file = bytes("WIDTH.DBF");
    std::string longer = file;
    longer[32 + 16] = static_cast<char>(200);  // NAME claims 200 bytes of a 28-byte record
    nqtest::write_file(path("WIDTH.DBF"), longer);
    expect_refused("WIDTH.DBF");
    std::string shorter = file;
    put_le16(shorter, 10, 40);
    nqtest::write_file(path("WIDTH.DBF"), shorter);
    expect_refused("WIDTH.DBF");
    std::string overflow = file;
    // Two-byte lengths of unknown types add up past any record width.
    for (int i = 0; i < 4; ++i) {
        overflow[32 + 32 * i + 11] = 'Q';
        put_le16(overflow, 32 + 32 * i + 16, 0xFFFF);
    }
    nqtest::write_file(path("WIDTH.DBF"), overflow);
    expect_refused("WIDTH.DBF");
}

TEST_F(Table4Open, OnlyBitSevenOfTheVersionCounts) {
    make("V.DBF", 1);
    std::string file = bytes("V.DBF");
    for (int version : {0x00, 0x03, 0x30, 0x31, 0x7F}) {
        file[0] = static_cast<char>(version);
        nqtest::write_file(path("V.DBF"), file);
        table4 *table = open("V.DBF");
        ASSERT_NE(table, nullptr) << version;
        EXPECT_EQ(table->version, version);
        EXPECT_EQ(table->memo_file.file.handle, -1);
        table4_close(table);
    }
    // A set bit asks for the memo file, and there is none.
    for (int version : {0x83, 0xF5, 0x80}) {
        file[0] = static_cast<char>(version);
        nqtest::write_file(path("V.DBF"), file);
        expect_refused("V.DBF", -60);
    }
    ASSERT_GE(boxes.count(), 1u);
    EXPECT_EQ(boxes.last().text, box_text(-60, {"Opening File", "File Name:", upper(path("V.FPT"))}));
}

TEST_F(Table4Open, AMemoTableOpensItsMemoFileForced) {
    table4 *table = create("M.DBF", tabletest::memo_columns());
    ASSERT_NE(table, nullptr);
    table4_close(table);
    table = open("M");
    ASSERT_NE(table, nullptr);
    EXPECT_GE(table->memo_file.file.handle, 0);
    EXPECT_EQ(table->memo_file.table, table);
    EXPECT_EQ(table->memo_file.block_size, 512);
    ASSERT_EQ(table->memo_column_count, 1u);
    EXPECT_EQ(table->memo_columns[0].column, &table->columns[2]);
    EXPECT_EQ(table->columns[2].memo, &table->memo_columns[0]);
    EXPECT_EQ(table->memo_columns[0].needs_read, 1);
    EXPECT_EQ(table->memo_columns[0].contents, memo4_empty);
    EXPECT_EQ(table->memo_columns[0].allocated, 0u);
    table4_close(table);
}

TEST_F(Table4Open, AMemoFileWithoutABlockSizeFailsTheOpen) {
    table4 *table = create("M.DBF", tabletest::memo_columns());
    ASSERT_NE(table, nullptr);
    table4_close(table);
    std::string memo = bytes("M.FPT");
    memo[6] = memo[7] = 0;
    nqtest::write_file(path("M.FPT"), memo);
    expect_refused("M.DBF", -70);
    nqtest::write_file(path("M.FPT"), "tiny");
    expect_refused("M.DBF", -70);
}

TEST_F(Table4Open, TheProductionIndexFlagOpensTheIndexWhichThisEngineRefuses) {
    make("P.DBF", 2);
    std::string file = bytes("P.DBF");
    file[28] = 1;
    nqtest::write_file(path("P.DBF"), file);
    expect_refused("P.DBF", -1010);
    ASSERT_EQ(boxes.count(), 1u);
    EXPECT_EQ(boxes.last().text, box_text(-1010, {err4text(-1010), "File Name:", upper(path("P.CDX"))}));
    // Without auto_open the table opens, and the flag chooses the record lock scheme.
    engine->auto_open = 0;
    table4 *table = open("P.DBF");
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->has_production, 1);
    EXPECT_EQ(table4_record_lock_offset(table, 5), 0x7FFFFFFEu - 5);
    EXPECT_EQ(table->index_list.count, 0u);
    table4_close(table);
}

TEST_F(Table4Open, CloseReturnsAndKeepsAFailureLeftBeforeIt) {
    make("C.DBF", 1);
    table4 *table = open("C.DBF");
    ASSERT_NE(table, nullptr);
    engine->error_code = -70;
    EXPECT_EQ(table4_close(table), -70);
    EXPECT_EQ(engine->error_code, -70);
    EXPECT_EQ(engine->table_list.count, 0u);
    engine->error_code = 0;
    // A positive outcome left behind is kept as well.
    table = open("C.DBF");
    engine->error_code = 5;
    EXPECT_EQ(table4_close(table), 5);
    engine->error_code = 0;
    EXPECT_EQ(table4_close(nullptr), -1);
}

TEST_F(Table4Open, ClosingWithAPendingUniqueKeyFailureWritesNothingOfTheRecord) {
    make("U.DBF", 1);
    const std::string before = bytes("U.DBF");
    table4 *table = open("U.DBF");
    ASSERT_EQ(table4_go(table, 1), 0);
    column4_assign(table4_column(table, "NAME"), "CHANGED");
    EXPECT_EQ(table->record_changed, 1);
    engine->error_code = -340;
    EXPECT_EQ(table4_close(table), -340);
    EXPECT_EQ(engine->error_code, -340);
    engine->error_code = 0;
    EXPECT_EQ(bytes("U.DBF"), before);
}

TEST_F(Table4Open, CloseWritesAChangedRecordAndTheDate) {
    make("W.DBF", 1);
    std::string file = bytes("W.DBF");
    file[1] = 1;  // an old date
    file[2] = 1;
    file[3] = 1;
    nqtest::write_file(path("W.DBF"), file);
    table4 *table = open("W.DBF");
    ASSERT_EQ(table4_go(table, 1), 0);
    column4_assign(table4_column(table, "NAME"), "CHANGED");
    EXPECT_EQ(table4_close(table), 0);
    file = bytes("W.DBF");
    EXPECT_EQ(file.substr(161 + 1, 10), "CHANGED   ");
    unsigned char today[3];
    u4yymmdd(today);
    EXPECT_EQ(static_cast<uint8_t>(file[1]), today[0]);
    EXPECT_EQ(static_cast<uint8_t>(file[3]), today[2]);
}

TEST_F(Table4Open, OnlyAChangedFileGetsANewDate) {
    make("D.DBF", 1);
    std::string file = bytes("D.DBF");
    file[1] = 1;
    nqtest::write_file(path("D.DBF"), file);
    table4 *table = open("D.DBF");
    ASSERT_EQ(table4_go(table, 1), 0);
    table4_close(table);
    EXPECT_EQ(bytes("D.DBF"), file);
}

TEST_F(Table4Open, AReadOnlyEngineOpensAndRefusesWrites) {
    make("R.DBF", 1);
    engine->read_only = 1;
    table4 *table = open("R.DBF");
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->file.is_read_only, 1);
    ASSERT_EQ(table4_go(table, 1), 0);
    column4_assign(table4_column(table, "NAME"), "NO");
    EXPECT_EQ(table4_flush_record(table, 0), -930);
    EXPECT_EQ(engine->error_code, -930);
    engine->error_code = 0;
    table->record_changed = 0;
    table4_close(table);
}

TEST_F(Table4Open, ExclusiveTablesAreTakenIntoTheCache) {
    make("X.DBF", 1);
    ASSERT_EQ(engine4_cache_start(engine), 0);
    engine->exclusive = 1;
    table4 *table = open("X.DBF");
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->file.cache_type, 1);
    EXPECT_EQ(table->file.do_buffer, 1);
    table4_close(table);
    engine->exclusive = 0;
    table = open("X.DBF");
    EXPECT_EQ(table->file.cache_type, 0);  // shared: the default keeps it out
    table4_close(table);
}

TEST_F(Table4Open, ColumnsOutGivesTheCreateFormBack) {
    make("O.DBF", 0);
    table4 *table = open("O.DBF");
    column_info *columns = table4_columns_out(table);
    ASSERT_NE(columns, nullptr);
    const column_info *given = tabletest::plain_columns();
    for (int i = 0; i < 4; ++i) {
        EXPECT_STREQ(columns[i].name, given[i].name);
        EXPECT_EQ(columns[i].type, given[i].type);
        EXPECT_EQ(columns[i].length, given[i].length);
        EXPECT_EQ(columns[i].decimals, given[i].decimals);
    }
    EXPECT_EQ(columns[4].name, nullptr);
    // The same rows make the same table.
    table4 *copy = table4_create(engine, path("COPY.DBF").c_str(), columns, nullptr);
    ASSERT_NE(copy, nullptr);
    mem4_free(columns);
    table4_close(copy);
    table4_close(table);
    EXPECT_EQ(bytes("COPY.DBF").substr(32), bytes("O.DBF").substr(32));
    EXPECT_EQ(table4_columns_out(nullptr), nullptr);
}

TEST_F(Table4Open, TablesComeFromOnePoolAndGoBackToIt) {
    make("A.DBF", 0);
    table4 *a = open("A.DBF");
    table4 *b = open("A.DBF");
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    ASSERT_NE(engine->table_pool, nullptr);
    EXPECT_EQ(engine->table_pool->unit_size, sizeof(table4));
    table4_close(a);
    table4_close(b);
    EXPECT_EQ(engine->table_list.count, 0u);
    EXPECT_EQ(engine->table_pool->free_units.count, static_cast<uint32_t>(engine->table_start));
}

TEST_F(Table4Open, OutOfMemoryWhileOpeningIsMinus920AndLeavesNothingOpen) {
    make("MEM.DBF", 1);
    static int budget;
    static size_t fail_from;
    // Each allocation of the open fails once in turn.
    for (fail_from = 1; fail_from <= 6; ++fail_from) {
        budget = 0;
        mem4_set_fail_hook([](size_t) { return ++budget == static_cast<int>(fail_from) ? 1 : 0; });
        table4 *table = open("MEM.DBF");
        mem4_set_fail_hook(nullptr);
        if (table) {
            table4_close(table);
        } else {
            EXPECT_EQ(engine->error_code, -920) << fail_from;
        }
        EXPECT_EQ(engine->table_list.count, 0u);
        engine->error_code = 0;
    }
}

}  // namespace
