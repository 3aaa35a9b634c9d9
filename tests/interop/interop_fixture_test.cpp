// Tables written by other programs (the shared fixtures): the dBASE III and FoxPro tables open
// and read as their summaries, their exports and an independent reader say; tables of
// versions this engine does not describe open or are refused cleanly.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "interop_support.h"

namespace {

using interop::Dump;

int quiet_box(const char *, const char *, unsigned int) { return 1; }

struct Summary {
    std::vector<std::string> fields;  // "NAME TYPE LENGTH DECIMALS"
    int records = -1;
};

// A summary file: "Records: n", then a field table below a line of dashes.
Summary read_summary(const std::string &path) {
    Summary summary;
    std::ifstream in(path);
    std::string line;
    bool in_fields = false;
    while (std::getline(in, line)) {
        if (line.rfind("Records:", 0) == 0) summary.records = std::stoi(line.substr(8));
        if (line.rfind("-----", 0) == 0) {
            in_fields = true;
            continue;
        }
        if (!in_fields) continue;
        std::istringstream words(line);
        std::string name, type, length, decimals;
        if (words >> name >> type >> length >> decimals) {
            summary.fields.push_back(name + " " + type + " " + length + " " + decimals);
        }
    }
    return summary;
}

// The values of a record export: one "- value" a field, values running on over indented lines.
std::vector<std::string> read_record_export(const std::string &path) {
    std::vector<std::string> values;
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line)) {
        const size_t start = line.find_first_not_of(' ');
        if (start == std::string::npos || line == "---") continue;
        if (line.compare(start, 2, "- ") == 0) {
            values.push_back(line.substr(start + 2));
        } else if (!values.empty()) {
            values.back() += " " + line.substr(start);
        }
    }
    for (std::string &value : values) {
        if (value.size() >= 2 && value.front() == '\'' && value.back() == '\'') value = value.substr(1, value.size() - 2);
    }
    return values;
}

class InteropFixture : public ::testing::Test {
protected:
    nqtest::TempDir dir;
    engine4 *engine = nullptr;
    nq_MessageBoxHandler previous = nullptr;

    void SetUp() override {
        previous = nq_Platform_setMessageBoxHandler(quiet_box);
        engine = engine4_new(1);
        ASSERT_NE(engine, nullptr);
        engine->read_only = 1;  // the fixtures are never changed
    }
    void TearDown() override {
        engine4_end(engine);
        engine4_free(engine);
        nq_Platform_setMessageBoxHandler(previous);
    }
    static std::string fixture(const std::string &name) { return interop::fixtures() + "/" + name; }

    static void expect_same(const Dump &expected, const Dump &actual, const std::string &what) {
        ASSERT_TRUE(expected.ok) << what << "\n" << expected.output;
        ASSERT_TRUE(actual.ok) << what;
        EXPECT_EQ(expected.fields, actual.fields) << what;
        ASSERT_EQ(expected.live.size(), actual.live.size()) << what;
        for (size_t i = 0; i < expected.live.size(); ++i) {
            ASSERT_EQ(expected.live[i], actual.live[i]) << what << ", live record " << i;
        }
        ASSERT_EQ(expected.deleted.size(), actual.deleted.size()) << what;
        for (size_t i = 0; i < expected.deleted.size(); ++i) {
            ASSERT_EQ(expected.deleted[i], actual.deleted[i]) << what << ", deleted record " << i;
        }
    }

    // Opens (or fails to open) a table and, when open, reads every record and memo value.
    // The result is 0 for an open table, else the error code left by the open.
    int open_and_read(const std::string &path, int32_t *records = nullptr) {
        engine->error_code = 0;
        table4 *table = table4_open(engine, path.c_str());
        if (!table) {
            const int code = engine->error_code;
            engine->error_code = 0;
            return code ? code : -9999;
        }
        const int32_t count = table4_count(table);
        int32_t read = 0;
        for (int32_t n = 1; n <= count; ++n) {
            if (table4_go(table, n) != 0) break;
            ++read;
            for (uint32_t j = 0; j < table->column_count; ++j) {
                column4 *column = &table->columns[j];
                interop::normal_value(column);
            }
        }
        if (records) *records = read;
        table4_close(table);
        engine->error_code = 0;
        return 0;
    }
};

TEST_F(InteropFixture, TheDbaseIIITableReadsAsItsSummaryAndAnIndependentReaderSay) {
    const std::string name = fixture("peer-a/dbase_03.dbf");
    table4 *table = table4_open(engine, name.c_str());
    ASSERT_NE(table, nullptr) << engine->error_code;
    EXPECT_EQ(table->version, 0x03);
    EXPECT_EQ(table->memo_file.file.handle, -1);
    const Summary summary = read_summary(fixture("peer-a/dbase_03_summary.txt"));
    ASSERT_EQ(summary.records, 14);
    EXPECT_EQ(table4_count(table), summary.records);
    const Dump ours = interop::engine_dump(table);
    table4_close(table);
    EXPECT_EQ(ours.fields, summary.fields);
    expect_same(interop::peer_dump("dbfread", name), ours, "dbase_03");
}

TEST_F(InteropFixture, TheFoxProTableWithMemosReadsAsItsSummaryAndAnIndependentReaderSay) {
    const std::string name = fixture("peer-a/dbase_f5.dbf");
    table4 *table = table4_open(engine, name.c_str());
    ASSERT_NE(table, nullptr) << engine->error_code;
    EXPECT_EQ(table->version, 0xF5);
    EXPECT_GE(table->memo_file.file.handle, 0);
    EXPECT_GT(table->memo_file.block_size, 0);
    const Summary summary = read_summary(fixture("peer-a/dbase_f5_summary.txt"));
    ASSERT_EQ(summary.records, 975);
    EXPECT_EQ(table4_count(table), summary.records);
    const Dump ours = interop::engine_dump(table);
    table4_close(table);
    EXPECT_EQ(ours.fields, summary.fields);
    const Dump theirs = interop::peer_dump("dbfread", name);
    expect_same(theirs, ours, "dbase_f5");
    // Some records do hold memo text.
    int with_memo = 0;
    for (const auto &row : ours.live) with_memo += row[57].empty() ? 0 : 1;
    EXPECT_GT(with_memo, 0);
}

TEST_F(InteropFixture, ADbaseIIITableWithAnotherKindOfMemoFileIsRefusedForWantOfItsMemoFile) {
    for (const char *name : {"peer-a/dbase_83.dbf", "peer-c/test.dbf"}) {
        engine->error_code = 0;
        EXPECT_EQ(table4_open(engine, fixture(name).c_str()), nullptr) << name;
        EXPECT_EQ(engine->error_code, -60) << name;
        EXPECT_EQ(engine->table_list.count, 0u);
    }
    engine->error_code = 0;
}

TEST_F(InteropFixture, WithoutItsMemoFlagTheDbaseIIITableReadsAsItsExportsSay) {
    // A copy whose version byte no longer asks for a memo file.
    std::string data = nqtest::read_file(fixture("peer-a/dbase_83.dbf"));
    ASSERT_GT(data.size(), 32u);
    data[0] = 0x03;
    nqtest::write_file(dir.file("D83.DBF"), data);
    table4 *table = table4_open(engine, dir.file("D83.DBF").c_str());
    ASSERT_NE(table, nullptr);
    const Summary summary = read_summary(fixture("peer-a/dbase_83_summary.txt"));
    EXPECT_EQ(table4_count(table), summary.records);
    const Dump ours = interop::engine_dump(table);
    EXPECT_EQ(ours.fields, summary.fields);
    for (int record : {0, 9}) {
        SCOPED_TRACE(record);
        const std::vector<std::string> expected =
            read_record_export(fixture("peer-a/dbase_83_record_" + std::to_string(record) + ".yml"));
        ASSERT_EQ(expected.size(), 15u);
        ASSERT_EQ(table4_go(table, record + 1), 0);
        for (uint32_t j = 0; j < 15; ++j) {
            column4 *column = &table->columns[j];
            const std::string value = interop::normal_value(column);
            switch (column->type) {
                case 'N':
                    EXPECT_DOUBLE_EQ(c4atod(value.c_str(), static_cast<int>(value.size())),
                                     std::stod(expected[j]))
                        << column->name;
                    break;
                case 'L':
                    EXPECT_EQ(value, expected[j] == "true" ? "T" : "F") << column->name;
                    break;
                case 'C':
                    EXPECT_EQ(value, expected[j]) << column->name;
                    break;
                default:
                    break;  // the memo lives in the other kind of memo file
            }
        }
    }
    table4_close(table);
    // An independent reader agrees on every field but the memo.
    const Dump theirs = interop::select_types(interop::peer_dump("dbfread", fixture("peer-a/dbase_83.dbf")), "CNLD");
    table = table4_open(engine, dir.file("D83.DBF").c_str());
    ASSERT_NE(table, nullptr);
    const Dump ours_without_memo = interop::engine_dump(table, "CNLD");
    table4_close(table);
    expect_same(theirs, ours_without_memo, "dbase_83");
}

TEST_F(InteropFixture, TablesOfOtherVersionsOpenOrAreRefusedCleanly) {
    const char *names[] = {"peer-a/dbase_30.dbf",
                           "peer-a/dbase_31.dbf",
                           "peer-a/foxprodb/calls.dbf",
                           "peer-a/foxprodb/contacts.dbf",
                           "peer-a/foxprodb/setup.dbf",
                           "peer-a/foxprodb/types.dbf",
                           "peer-a/foxprodb/FOXPRO-DB-TEST.DBC",
                           "peer-b/database/employees.dbf",
                           "peer-b/database/expense categories.dbf",
                           "peer-b/database/expense details.dbf",
                           "peer-b/database/expense reports.dbf",
                           "peer-b/database/EXPENSES.DBC",
                           "peer-b/table/TEST.DBF",
                           "peer-c/afox5.dbf",
                           "peer-a/dbase_30.fpt",
                           "peer-a/foxprodb/calls.CDX"};
    int opened = 0;
    for (const char *name : names) {
        SCOPED_TRACE(name);
        const std::string path = fixture(name);
        ASSERT_TRUE(nqtest::file_exists(path));
        // With the production index opened by the open, the flag of these tables asks for
        // an index this engine does not read.
        engine->auto_open = 1;
        int result = open_and_read(path);
        EXPECT_TRUE(result == 0 || result == -200 || result == -1010 || result == -60 || result == -70) << result;
        engine->auto_open = 0;
        int32_t records = 0;
        result = open_and_read(path, &records);
        EXPECT_TRUE(result == 0 || result == -200 || result == -60 || result == -70) << result;
        if (result != 0) continue;
        ++opened;
        // Where the engine opens one, its character fields agree with an independent reader.
        const Dump theirs = interop::peer_dump("dbfread", path);
        if (!theirs.ok) continue;  // a version that reader does not know either
        table4 *table = table4_open(engine, path.c_str());
        ASSERT_NE(table, nullptr);
        EXPECT_EQ(table4_count(table), records);
        const Dump ours = interop::engine_dump(table, "C");
        table4_close(table);
        expect_same(interop::select_types(theirs, "C"), ours, name);
    }
    EXPECT_GT(opened, 0);
    EXPECT_EQ(engine->table_list.count, 0u);
}

}  // namespace
