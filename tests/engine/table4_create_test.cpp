// Creating data files: the header and the descriptors to the byte, the sizes each type gets,
// the memo file beside the table, and the refusals.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "table4_test_support.h"

namespace {

using tabletest::le16;
using tabletest::le32;
using tabletest::be16;
using tabletest::be32;

using tabletest::box_text;
using tabletest::upper;

class Table4Create : public tabletest::TableTest {};

TEST_F(Table4Create, WritesTheHeaderDescriptorsAndEndBytesToTheByte) {
    table4 *table = create("PLAIN.DBF");
    ASSERT_NE(table, nullptr);
    ASSERT_EQ(table4_close(table), 0);
    const std::string file = bytes("PLAIN.DBF");
    ASSERT_EQ(file.size(), 32u * 5 + 2);  // header, four descriptors, 13 and 26
    EXPECT_EQ(static_cast<uint8_t>(file[0]), 3);
    unsigned char today[3];
    u4yymmdd(today);
    EXPECT_EQ(static_cast<uint8_t>(file[1]), today[0]);
    EXPECT_EQ(static_cast<uint8_t>(file[2]), today[1]);
    EXPECT_EQ(static_cast<uint8_t>(file[3]), today[2]);
    EXPECT_EQ(le32(file, 4), 0u);
    EXPECT_EQ(le16(file, 8), 161u);
    EXPECT_EQ(le16(file, 10), 1u + 10 + 8 + 8 + 1);
    EXPECT_EQ(file.substr(12, 20), std::string(20, '\0'));

    struct Expect {
        const char *name;
        char type;
        uint8_t length, decimals;
    } expected[] = {{"NAME", 'C', 10, 0}, {"AMOUNT", 'N', 8, 2}, {"SEEN", 'D', 8, 0}, {"OK", 'L', 1, 0}};
    for (int i = 0; i < 4; ++i) {
        const std::string d = file.substr(32 + 32 * i, 32);
        std::string name(11, '\0');
        name.replace(0, std::strlen(expected[i].name), expected[i].name);
        EXPECT_EQ(d.substr(0, 11), name) << i;
        EXPECT_EQ(d[11], expected[i].type) << i;
        EXPECT_EQ(d.substr(12, 4), std::string(4, '\0')) << i;
        EXPECT_EQ(static_cast<uint8_t>(d[16]), expected[i].length) << i;
        EXPECT_EQ(static_cast<uint8_t>(d[17]), expected[i].decimals) << i;
        EXPECT_EQ(d.substr(18, 14), std::string(14, '\0')) << i;
    }
    EXPECT_EQ(file[160], 13);
    EXPECT_EQ(file[161], 26);
    EXPECT_FALSE(nqtest::file_exists(path("PLAIN.FPT")));
    EXPECT_EQ(boxes.count(), 0u);
}

TEST_F(Table4Create, AMemoFieldWritesVersionF5AndCreatesTheMemoFile) {
    table4 *table = create("NOTES.DBF", tabletest::memo_columns());
    ASSERT_NE(table, nullptr);
    EXPECT_GE(table->memo_file.file.handle, 0);
    EXPECT_EQ(table->memo_file.block_size, 512);
    ASSERT_EQ(table4_close(table), 0);
    const std::string file = bytes("NOTES.DBF");
    EXPECT_EQ(static_cast<uint8_t>(file[0]), 0xF5);
    EXPECT_EQ(file[32 + 64 + 11], 'M');
    EXPECT_EQ(static_cast<uint8_t>(file[32 + 64 + 16]), 10);
    const std::string memo = bytes("NOTES.FPT");
    ASSERT_EQ(memo.size(), 512u);
    EXPECT_EQ(be32(memo, 0), 1u);  // 512 / 512
    EXPECT_EQ(be16(memo, 4), 0u);
    EXPECT_EQ(be16(memo, 6), 512u);
    EXPECT_EQ(memo.substr(8), std::string(504, '\0'));
}

TEST_F(Table4Create, GeneralAndBinaryFieldsAlsoCallForTheMemoFile) {
    int made = 0;
    for (char type : {'G', 'B', 'g'}) {
        const std::string name = "T" + std::to_string(++made) + ".DBF";
        const column_info columns[] = {{"PIC", type, 3, 4}, {nullptr, 0, 0, 0}};
        table4 *table = create(name, columns);
        ASSERT_NE(table, nullptr) << type;
        EXPECT_EQ(table->version, 0xF5);
        EXPECT_EQ(table->columns[0].length, 10u);
        EXPECT_EQ(table->columns[0].decimals, 0u);
        EXPECT_NE(table->columns[0].memo, nullptr);
        table4_close(table);
    }
}

TEST_F(Table4Create, EachTypeGetsItsSize) {
    const column_info columns[] = {{"D", 'D', 3, 2},  {"L", 'L', 9, 9}, {"M", 'M', 4, 1},  {"N", 'N', 12, 3},
                                   {"F", 'F', 20, 5}, {"C", 'C', 7, 3}, {nullptr, 0, 0, 0}};
    table4 *table = create("SIZES.DBF", columns);
    ASSERT_NE(table, nullptr);
    const uint32_t lengths[] = {8, 1, 10, 12, 20, 7};
    const uint32_t decimals[] = {0, 0, 0, 3, 5, 0};
    uint32_t offset = 1;
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(table->columns[i].length, lengths[i]) << i;
        EXPECT_EQ(table->columns[i].decimals, decimals[i]) << i;
        EXPECT_EQ(table->columns[i].offset, offset) << i;
        offset += lengths[i];
    }
    EXPECT_EQ(table->record_width, offset);
    table4_close(table);
}

TEST_F(Table4Create, ACharacterFieldWiderThan255KeepsItsHighByteInTheDecimalsPlace) {
    const column_info columns[] = {{"TEXT", 'C', 300, 7}, {nullptr, 0, 0, 0}};
    table4 *table = create("WIDE.DBF", columns);
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->columns[0].length, 300u);
    EXPECT_EQ(table->columns[0].decimals, 0u);
    EXPECT_EQ(table->record_width, 301u);
    table4_close(table);
    const std::string file = bytes("WIDE.DBF");
    EXPECT_EQ(static_cast<uint8_t>(file[48]), 300 & 0xFF);
    EXPECT_EQ(static_cast<uint8_t>(file[49]), 1);
}

TEST_F(Table4Create, AnUnknownTypeIsWrittenWithNothingInTheRecord) {
    const column_info columns[] = {{"ODD", 'x', 5, 2}, {"NAME", 'C', 4, 0}, {nullptr, 0, 0, 0}};
    table4 *table = create("ODD.DBF", columns);
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->column_count, 2u);
    EXPECT_EQ(table->columns[0].type, 'X');
    EXPECT_EQ(table->columns[0].length, 0u);
    EXPECT_EQ(table->columns[1].offset, 1u);
    EXPECT_EQ(table->record_width, 5u);
    table4_close(table);
    const std::string file = bytes("ODD.DBF");
    EXPECT_EQ(file[43], 'X');
    EXPECT_EQ(file[48], 0);
    EXPECT_EQ(file[49], 0);
}

TEST_F(Table4Create, NamesAreCutToTenUpperCasedAndLoseTrailingBlanks) {
    const column_info columns[] = {{"a_very_long_name", 'c', 3, 0}, {"ab  ", 'n', 4, 1}, {nullptr, 0, 0, 0}};
    table4 *table = create("NAMES.DBF", columns);
    ASSERT_NE(table, nullptr);
    EXPECT_STREQ(table->columns[0].name, "A_VERY_LON");
    EXPECT_EQ(table->columns[0].type, 'C');
    EXPECT_STREQ(table->columns[1].name, "AB");
    EXPECT_EQ(table->columns[1].type, 'N');
    table4_close(table);
    const std::string file = bytes("NAMES.DBF");
    EXPECT_EQ(file.substr(32, 11), std::string("A_VERY_LON") + '\0');
    EXPECT_EQ(file.substr(64, 11), std::string("AB") + std::string(9, '\0'));
}

TEST_F(Table4Create, TheNameGetsTheExtensionDbfWhenItHasNone) {
    table4 *table = create("bare");
    ASSERT_NE(table, nullptr);
    EXPECT_TRUE(nqtest::file_exists(path("BARE.DBF")));
    EXPECT_STREQ(table->alias, "BARE");
    table4_close(table);
    table = create("other.dat");
    ASSERT_NE(table, nullptr);
    EXPECT_TRUE(nqtest::file_exists(path("OTHER.DAT")));
    table4_close(table);
}

TEST_F(Table4Create, ATableWithoutFieldsHasARecordOfTheDeleteFlagAlone) {
    const column_info none[] = {{nullptr, 0, 0, 0}};
    table4 *table = create("EMPTY.DBF", none);
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->column_count, 0u);
    EXPECT_EQ(table->record_width, 1u);
    EXPECT_EQ(table->header_length, 33);
    EXPECT_EQ(table4_append_blank(table), 0);
    EXPECT_EQ(table4_count(table), 1);
    table4_close(table);
    EXPECT_EQ(bytes("EMPTY.DBF").size(), 33u + 1 + 1);
}

TEST_F(Table4Create, ARecordOf65535BytesOrMoreIsMinus230) {
    const column_info columns[] = {{"A", 'C', 65000, 0}, {"B", 'C', 534, 0}, {nullptr, 0, 0, 0}};
    EXPECT_EQ(create("HUGE.DBF", columns), nullptr);
    EXPECT_EQ(engine->error_code, -230);
    ASSERT_EQ(boxes.count(), 1u);
    EXPECT_EQ(boxes.last().text, box_text(-230, {"Record Length is too Large", path("HUGE.DBF")}));
    EXPECT_FALSE(nqtest::file_exists(path("HUGE.DBF")));
    engine->error_code = 0;
    // One byte less fits.
    const column_info fits[] = {{"A", 'C', 65000, 0}, {"B", 'C', 533, 0}, {nullptr, 0, 0, 0}};
    table4 *table = create("BIG.DBF", fits);
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->record_width, 65534u);
    table4_close(table);
}

TEST_F(Table4Create, LengthsADescriptorCannotHoldAreRefusedWithMinus230) {
    const column_info wide_number[] = {{"N", 'N', 256, 0}, {nullptr, 0, 0, 0}};
    const column_info negative[] = {{"C", 'C', -1, 0}, {nullptr, 0, 0, 0}};
    const column_info decimals[] = {{"F", 'F', 10, 300}, {nullptr, 0, 0, 0}};
    for (const column_info *columns : {wide_number, negative, decimals}) {
        engine->error_code = 0;
        EXPECT_EQ(create("BAD.DBF", columns), nullptr);
        EXPECT_EQ(engine->error_code, -230);
    }
    engine->error_code = 0;
    EXPECT_FALSE(nqtest::file_exists(path("BAD.DBF")));
}

TEST_F(Table4Create, TooManyFieldsIsMinus20) {
    std::vector<std::string> names;
    for (int i = 0; i < 2047; ++i) names.push_back("F" + std::to_string(i));
    std::vector<column_info> columns;
    for (const std::string &name : names) columns.push_back({name.c_str(), 'C', 1, 0});
    columns.push_back({nullptr, 0, 0, 0});
    EXPECT_EQ(create("MANY.DBF", columns.data()), nullptr);
    EXPECT_EQ(engine->error_code, -20);
    ASSERT_EQ(boxes.count(), 1u);
    EXPECT_EQ(boxes.last().text, box_text(-20, {"Creating File", "Too Many Fields", path("MANY.DBF")}));
    engine->error_code = 0;
    // 2046 fields: 2046 * 32 + 34 stays below 65535.
    columns.erase(columns.end() - 2);
    table4 *table = create("MANY.DBF", columns.data());
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->column_count, 2046u);
    EXPECT_EQ(table->header_length, 32 * 2047 + 1);
    table4_close(table);
}

TEST_F(Table4Create, WithErrCreateOffAFailedCreateGives60Quietly) {
    engine->err_create = 0;
    std::vector<std::string> names;
    for (int i = 0; i < 2100; ++i) names.push_back("F" + std::to_string(i));
    std::vector<column_info> columns;
    for (const std::string &name : names) columns.push_back({name.c_str(), 'C', 1, 0});
    columns.push_back({nullptr, 0, 0, 0});
    EXPECT_EQ(create("MANY.DBF", columns.data()), nullptr);
    EXPECT_EQ(engine->error_code, 60);
    engine->error_code = 0;
    nqtest::write_file(path("THERE.DBF"), "keep");
    EXPECT_EQ(create("THERE.DBF"), nullptr);
    EXPECT_EQ(engine->error_code, 60);
    EXPECT_EQ(boxes.count(), 0u);
    EXPECT_EQ(bytes("THERE.DBF"), "keep");
    engine->error_code = 0;
}

TEST_F(Table4Create, SafetyKeepsAnExistingFileAndOffItIsOverwritten) {
    nqtest::write_file(path("THERE.DBF"), "keep");
    EXPECT_EQ(create("THERE.DBF"), nullptr);
    EXPECT_EQ(engine->error_code, -20);
    ASSERT_EQ(boxes.count(), 1u);
    EXPECT_EQ(boxes.last().text, box_text(-20, {"Creating File", "File Name:", upper(path("THERE.DBF"))}));
    EXPECT_EQ(bytes("THERE.DBF"), "keep");
    engine->error_code = 0;
    engine->safety = 0;
    table4 *table = create("THERE.DBF");
    ASSERT_NE(table, nullptr);
    table4_close(table);
    EXPECT_EQ(bytes("THERE.DBF").size(), 162u);
}

TEST_F(Table4Create, NullArgumentsAndAnEngineInErrorGiveNull) {
    EXPECT_EQ(table4_create(nullptr, path("A.DBF").c_str(), tabletest::plain_columns(), nullptr), nullptr);
    EXPECT_EQ(table4_create(engine, nullptr, tabletest::plain_columns(), nullptr), nullptr);
    EXPECT_EQ(table4_create(engine, path("A.DBF").c_str(), nullptr, nullptr), nullptr);
    engine->error_code = -1;
    EXPECT_EQ(create("A.DBF"), nullptr);
    engine->error_code = 0;
    EXPECT_FALSE(nqtest::file_exists(path("A.DBF")));
    EXPECT_EQ(boxes.count(), 0u);
}

TEST_F(Table4Create, ANameTooLongForItsBufferIsRefused) {
    const std::string name = "/" + std::string(300, 'a') + ".dbf";
    EXPECT_EQ(table4_create(engine, name.c_str(), tabletest::plain_columns(), nullptr), nullptr);
    EXPECT_EQ(engine->error_code, -20);
    engine->error_code = 0;
}

TEST_F(Table4Create, TagsAskForAnIndexThisEngineCannotMakeAndTheTableIsClosed) {
    const tag_info tags[] = {{"NAME", "NAME", nullptr, 0, 0}, {nullptr, nullptr, nullptr, 0, 0}};
    EXPECT_EQ(table4_create(engine, path("TAGGED.DBF").c_str(), tabletest::plain_columns(), tags), nullptr);
    EXPECT_EQ(engine->error_code, -1010);
    EXPECT_EQ(engine->table_list.count, 0u);
    engine->error_code = 0;
    EXPECT_TRUE(nqtest::file_exists(path("TAGGED.DBF")));
}

TEST_F(Table4Create, TheCreatedTableIsOpenAtNoRecord) {
    table4 *table = create("NEW.DBF");
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->record_number, -1);
    EXPECT_EQ(table->record_count, -1);
    EXPECT_EQ(table4_count(table), 0);
    EXPECT_EQ(table->eof, 0);
    EXPECT_EQ(table->bof, 0);
    EXPECT_EQ(engine->table_list.count, 1u);
    EXPECT_EQ(std::string(table->record, table->record_width), std::string(28, ' '));
    EXPECT_EQ(table->record[table->record_width], '\0');
    table4_close(table);
}

}  // namespace
