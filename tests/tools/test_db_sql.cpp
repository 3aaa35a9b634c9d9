// The statement texts of the Db family as they reach the driver: SELECT, count, INSERT and
// UPDATE, string by string, and the refusal of texts that outgrow their buffers.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "db_test_support.h"
#include "nq_tls20an.h"
#include "test_support.h"

using dbtest::DbTest;
using dbtest::driver_calls;
using dbtest::record;
using dbtest::sqlite_rows;
using dbtest::sqlite_value;
using dbtest::u16;

namespace {

class DbSql : public DbTest {
protected:
    // pipe(NAME, QTY, PRICE, NOTE) with one row, opened and read (so the next write updates).
    int open_pipe(const std::string &rows = "INSERT INTO pipe VALUES ('abc', 5, 1.5, '');") {
        path = make_db("pipe.db3",
                       "CREATE TABLE pipe (NAME VARCHAR(20), QTY INTEGER, PRICE DOUBLE, NOTE VARCHAR(20));" +
                           rows);
        return open(path);
    }
    // The current row as a record to change.
    DbFldList *read(int id) {
        DbFldList *row = nq_Db_readRec(id);
        EXPECT_NE(row, nullptr);
        return row;
    }
    const std::string &last_statement() {
        static const std::string none = "<none>";
        return driver_calls().statements.empty() ? none : driver_calls().statements.back();
    }

    std::string path;
};

// ---- SELECT and count ----

TEST_F(DbSql, SelectNamesTheBaseNameWithBlanksAroundTheStar) {
    const int id = open_pipe();
    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(driver_calls().statements, std::vector<std::string>{"SELECT  *  FROM pipe"});
}

TEST_F(DbSql, SelectOfSettingsDb3IsOrderedByTyp) {
    const std::string settings = make_db("Settings.DB3",
                                         "CREATE TABLE Settings (TYP VARCHAR(5), VAL VARCHAR(5));"
                                         "INSERT INTO Settings VALUES ('c', '1'), ('a', '2'), ('b', '3');");
    const int id = open(settings);
    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(last_statement(), "SELECT  *  FROM Settings ORDER BY TYP");
    std::string order = dbtest::narrow(nq_Db_getFldStr(id, u"TYP"));
    while (nq_Db_nextRec(id) == 0) order += dbtest::narrow(nq_Db_getFldStr(id, u"TYP"));
    EXPECT_EQ(order, "abc");
}

TEST_F(DbSql, OtherTablesComeInTheDriversOrder) {
    const std::string other = make_db("mysettings.db3",
                                      "CREATE TABLE mysettings (TYP VARCHAR(5));"
                                      "INSERT INTO mysettings VALUES ('c'), ('a'), ('b');");
    const int id = open(other);
    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(last_statement(), "SELECT  *  FROM mysettings");
    std::string order = dbtest::narrow(nq_Db_getFldStr(id, u"TYP"));
    while (nq_Db_nextRec(id) == 0) order += dbtest::narrow(nq_Db_getFldStr(id, u"TYP"));
    EXPECT_EQ(order, "cab");
}

TEST_F(DbSql, SettingsWithoutAFolderIsNotOrdered) {
    // The fixed order needs a separator before the name.
    make_db("settings.db3", "CREATE TABLE settings (TYP VARCHAR(5)); INSERT INTO settings VALUES ('b'), ('a');");
    const std::u16string relative = u"settings.db3";
    // Relative names resolve from the current folder, so open it from there.
    char cwd[4096];
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    ASSERT_EQ(chdir(dir.path().c_str()), 0);
    const int id = nq_Db_openDb(relative.c_str());
    ASSERT_GE(id, 0);
    EXPECT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(last_statement(), "SELECT  *  FROM settings");
    ASSERT_EQ(chdir(cwd), 0);
}

TEST_F(DbSql, CountText) {
    const int id = open_pipe("INSERT INTO pipe VALUES ('a', 1, 1, ''), ('b', 2, 2, '');");
    EXPECT_EQ(nq_Db_getRecordCount(id), 2);
    EXPECT_EQ(driver_calls().statements, std::vector<std::string>{"select count(*) from pipe"});
}

TEST_F(DbSql, LinuxStyleNameUsesTheTextAfterTheLastSlash) {
    path = make_db("pipe.db3", "CREATE TABLE pipe (A INTEGER); INSERT INTO pipe VALUES (1);");
    const int id = nq_Db_openDb(u16(path).c_str());
    ASSERT_GE(id, 0);
    EXPECT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(last_statement(), "SELECT  *  FROM pipe");
    EXPECT_EQ(nq_Db_getRecordCount(id), 1);
}

TEST_F(DbSql, SelectOfExactly255CharactersRunsAnd256IsRefused) {
    // "SELECT  *  FROM " is 16 characters.
    const std::string fits(239, 't'), too_long(240, 'u');
    const int a = open(make_db(fits + ".db3", "CREATE TABLE " + fits + " (A INTEGER); INSERT INTO " + fits +
                                                  " VALUES (7);"));
    const int b = open(make_db(too_long + ".db3", "CREATE TABLE " + too_long + " (A INTEGER);"));
    ASSERT_GE(a, 0);
    ASSERT_GE(b, 0);
    EXPECT_EQ(nq_Db_topRec(a), 0);
    EXPECT_EQ(last_statement().size(), 255u);
    EXPECT_EQ(dbtest::narrow(nq_Db_getFldStr(a, u"A")), "7");

    dbtest::clear_driver_calls();
    nqtest::CaptureFd out(1);
    EXPECT_EQ(nq_Db_topRec(b), 1);
    EXPECT_EQ(out.stop(), "SQL query failed.");
    EXPECT_TRUE(driver_calls().statements.empty());
    EXPECT_EQ(nq_Db_eof(b), 1);
    EXPECT_EQ(nq_Db_struct(b), nullptr);
}

TEST_F(DbSql, CountOfExactly255CharactersRunsAnd256IsRefused) {
    // "select count(*) from " is 21 characters.
    const std::string fits(234, 'c'), too_long(235, 'd');
    const int a = open(make_db(fits + ".db3", "CREATE TABLE " + fits + " (A INTEGER); INSERT INTO " + fits +
                                                  " VALUES (1), (2);"));
    const int b = open(make_db(too_long + ".db3", "CREATE TABLE " + too_long + " (A INTEGER); INSERT INTO " +
                                                      too_long + " VALUES (1);"));
    EXPECT_EQ(nq_Db_getRecordCount(a), 2);
    EXPECT_EQ(last_statement().size(), 255u);
    dbtest::clear_driver_calls();
    EXPECT_EQ(nq_Db_getRecordCount(b), 0);
    EXPECT_TRUE(driver_calls().statements.empty());
    // The SELECT of the same table still fits.
    EXPECT_EQ(nq_Db_topRec(b), 0);
}

// ---- INSERT ----

TEST_F(DbSql, InsertSkipsEmptyFieldsAndQuotesOnlyTypeC) {
    const int id = open_pipe("");
    ASSERT_EQ(nq_Db_appRec(id), 0);
    DbFldList *rec = record({{u"NAME", u"abc", u'C'},
                             {u"QTY", u"5", u'L'},
                             {u"PRICE", u"", u'N'},
                             {u"NOTE", u"12", u'M'}});
    EXPECT_EQ(nq_Db_modRec(id, rec), 0);
    EXPECT_EQ(last_statement(), "INSERT INTO pipe ([NAME], [QTY], [NOTE]) VALUES ('abc', 5, 12)");
    EXPECT_EQ(sqlite_rows(path, "SELECT NAME, QTY, PRICE, NOTE FROM pipe"),
              std::vector<std::string>{"abc|5|<null>|12"});
    nq_DbFldList_destroy(rec);
}

TEST_F(DbSql, InsertPastesTypesTAndIAndNBare) {
    const int id = open_pipe("");
    nq_Db_appRec(id);
    DbFldList *rec = record({{u"QTY", u"2", u'I'}, {u"PRICE", u"2.5", u'N'}, {u"NOTE", u"2020-01-02", u'T'}});
    EXPECT_EQ(nq_Db_modRec(id, rec), 0);
    EXPECT_EQ(last_statement(), "INSERT INTO pipe ([QTY], [PRICE], [NOTE]) VALUES (2, 2.5, 2020-01-02)");
    // Unquoted, the date is arithmetic to the database.
    EXPECT_EQ(sqlite_value(path, "SELECT NOTE FROM pipe"), "2017");
    nq_DbFldList_destroy(rec);
}

TEST_F(DbSql, InsertOfTextTypedOtherThanCFailsAtTheDriver) {
    const int id = open_pipe("");
    nq_Db_appRec(id);
    DbFldList *rec = record({{u"NAME", u"plain words", u'M'}});
    nqtest::CaptureFd out(1);
    EXPECT_EQ(nq_Db_modRec(id, rec), 1);
    EXPECT_EQ(out.stop(), "SQL query failed.");
    EXPECT_EQ(last_statement(), "INSERT INTO pipe ([NAME]) VALUES (plain words)");
    nq_DbFldList_destroy(rec);
}

TEST_F(DbSql, InsertWithNothingToWriteCutsAnywayAndFails) {
    const int id = open_pipe("");
    nq_Db_appRec(id);
    DbFldList *rec = record({{u"NAME", u"", u'C'}, {u"QTY", nullptr, u'L'}});
    nqtest::CaptureFd out(1);
    EXPECT_EQ(nq_Db_modRec(id, rec), 1);
    EXPECT_EQ(out.stop(), "SQL query failed.");
    EXPECT_EQ(last_statement(), "INSERT INTO pipe) VALUES)");
    EXPECT_EQ(nq_DbRef_sel(id)->state, 1u);  // still an append
    nq_DbFldList_destroy(rec);
}

TEST_F(DbSql, QuoteMarkReachesTheDriverUnescapedAndTheInsertFails) {
    const int id = open_pipe("");
    nq_Db_appRec(id);
    DbFldList *rec = record({{u"NAME", u"O'Brien", u'C'}});
    nqtest::CaptureFd out(1);
    EXPECT_EQ(nq_Db_modRec(id, rec), 1);
    EXPECT_EQ(out.stop(), "SQL query failed.");
    EXPECT_EQ(last_statement(), "INSERT INTO pipe ([NAME]) VALUES ('O'Brien')");
    EXPECT_EQ(sqlite_value(path, "SELECT count(*) FROM pipe"), "0");
    nq_DbFldList_destroy(rec);
}

TEST_F(DbSql, InsertOfExactly1023CharactersRunsAnd1024IsRefused) {
    const int id = open_pipe("");
    // "INSERT INTO pipe ([NAME]) VALUES ('" ... "')" is 37 characters around the value.
    for (const std::size_t length : {std::size_t(986), std::size_t(987)}) {
        dbtest::clear_driver_calls();
        nq_Db_appRec(id);
        const std::u16string value(length, u'v');
        DbFldList *rec = record({{u"NAME", value.c_str(), u'C'}});
        nqtest::CaptureFd out(1);
        const int result = nq_Db_modRec(id, rec);
        const std::string printed = out.stop();
        if (length == 986) {
            EXPECT_EQ(result, 0);
            EXPECT_EQ(printed, "");
            ASSERT_EQ(driver_calls().statements.size(), 1u);
            EXPECT_EQ(last_statement().size(), 1023u);
        } else {
            EXPECT_EQ(result, 1);
            EXPECT_EQ(printed, "SQL query failed.");
            EXPECT_TRUE(driver_calls().statements.empty());
        }
        nq_DbFldList_destroy(rec);
    }
    EXPECT_EQ(sqlite_value(path, "SELECT length(NAME) FROM pipe"), "986");
}

// ---- UPDATE ----

TEST_F(DbSql, UpdateSetsChangedFieldsAndFindsTheRowByUnchangedNonEmptyOnes) {
    const int id = open_pipe();
    DbFldList *row = read(id);
    ASSERT_EQ(dbtest::describe(row), "NAME=abc:C QTY=5:L PRICE=1.5:N NOTE=:C");
    nq_DbFldList_modFldVal(row, u"QTY", u"6");
    EXPECT_EQ(nq_Db_modRec(id, row), 0);
    // NOTE is empty on both sides and plays no part.
    EXPECT_EQ(last_statement(), "UPDATE pipe SET [QTY]=6 WHERE [NAME]='abc' AND [PRICE]=1.5");
    EXPECT_EQ(sqlite_value(path, "SELECT QTY FROM pipe"), "6");
    nq_DbFldList_destroy(row);
}

TEST_F(DbSql, UpdateTakesFieldsMissingFromTheNewRecordFromTheOldOne) {
    const int id = open_pipe();
    nq_DbFldList_destroy(read(id));
    DbFldList *rec = record({{u"QTY", u"7", u'L'}});
    EXPECT_EQ(nq_Db_modRec(id, rec), 0);
    EXPECT_EQ(last_statement(), "UPDATE pipe SET [QTY]=7 WHERE [NAME]='abc' AND [PRICE]=1.5");
    nq_DbFldList_destroy(rec);
}

TEST_F(DbSql, UpdateTakesNameAndQuotingFromTheNewField) {
    const int id = open_pipe();
    nq_DbFldList_destroy(read(id));
    // Lower-case names are found without regard to case and written as given; QTY typed C
    // is quoted, NAME typed L is not.
    DbFldList *rec = record({{u"name", u"abc", u'L'}, {u"qty", u"8", u'C'}});
    EXPECT_EQ(nq_Db_modRec(id, rec), 1);  // abc, bare, names no column: a silent failure
    EXPECT_EQ(last_statement(), "UPDATE pipe SET [qty]='8' WHERE [name]=abc AND [PRICE]=1.5");
    nq_DbFldList_destroy(rec);
}

TEST_F(DbSql, UpdateWithEveryValueChangedHasNoWhereAndReachesTheWholeTable) {
    const int id = open_pipe("INSERT INTO pipe VALUES ('abc', 5, 1.5, ''), ('xyz', 9, 2.5, '');");
    DbFldList *row = read(id);
    nq_DbFldList_modFldVal(row, u"NAME", u"new");
    nq_DbFldList_modFldVal(row, u"QTY", u"1");
    nq_DbFldList_modFldVal(row, u"PRICE", u"3.5");
    EXPECT_EQ(nq_Db_modRec(id, row), 0);
    EXPECT_EQ(last_statement(), "UPDATE pipe SET [NAME]='new', [QTY]=1, [PRICE]=3.5");
    EXPECT_EQ(sqlite_rows(path, "SELECT NAME, QTY, PRICE FROM pipe"),
              (std::vector<std::string>{"new|1|3.5", "new|1|3.5"}));
    nq_DbFldList_destroy(row);
}

TEST_F(DbSql, UpdateReachesEveryRowSharingTheUnchangedValues) {
    const int id = open_pipe("INSERT INTO pipe VALUES ('abc', 5, 1.5, ''), ('abc', 5, 1.5, ''),"
                             " ('abc', 6, 1.5, '');");
    DbFldList *row = read(id);
    nq_DbFldList_modFldVal(row, u"NOTE", u"seen");
    EXPECT_EQ(nq_Db_modRec(id, row), 0);
    EXPECT_EQ(last_statement(), "UPDATE pipe SET [NOTE]='seen' WHERE [NAME]='abc' AND [QTY]=5 AND [PRICE]=1.5");
    EXPECT_EQ(sqlite_rows(path, "SELECT QTY, NOTE FROM pipe"),
              (std::vector<std::string>{"5|seen", "5|seen", "6|"}));
    nq_DbFldList_destroy(row);
}

TEST_F(DbSql, EqualRecordRunsNoStatementAndSucceeds) {
    const int id = open_pipe();
    DbFldList *row = read(id);
    const std::size_t sent = driver_calls().statements.size();
    EXPECT_EQ(nq_Db_modRec(id, row), 0);
    EXPECT_EQ(driver_calls().statements.size(), sent);
    nq_DbFldList_destroy(row);
}

TEST_F(DbSql, EmptyNumberCountsAsZeroPointZero) {
    const int id = open_pipe("INSERT INTO pipe VALUES ('abc', 5, 0.0, '');");
    ASSERT_EQ(nq_Db_topRec(id), 0);
    ASSERT_EQ(dbtest::narrow(nq_Db_getFldStr(id, u"PRICE")), "0.0");
    nq_DbFldList_destroy(read(id));
    // Empty N against "0.0" is unchanged, so it joins the where clause; F likewise.
    DbFldList *rec = record({{u"NAME", u"abd", u'C'}, {u"PRICE", u"", u'N'}});
    EXPECT_EQ(nq_Db_modRec(id, rec), 0);
    EXPECT_EQ(last_statement(), "UPDATE pipe SET [NAME]='abd' WHERE [QTY]=5 AND [PRICE]=0.0");
    nq_DbFldList_destroy(rec);
    // What was written is kept: PRICE now holds the empty text, so read the row afresh.
    ASSERT_EQ(nq_Db_topRec(id), 0);
    nq_DbFldList_destroy(read(id));
    rec = record({{u"NAME", u"abe", u'C'}, {u"PRICE", u"", u'F'}});
    EXPECT_EQ(nq_Db_modRec(id, rec), 0);
    EXPECT_EQ(last_statement(), "UPDATE pipe SET [NAME]='abe' WHERE [QTY]=5 AND [PRICE]=0.0");
    EXPECT_EQ(sqlite_value(path, "SELECT NAME FROM pipe"), "abe");
    nq_DbFldList_destroy(rec);
}

TEST_F(DbSql, EmptyLogicalOrIntegerIsWrittenAsZero) {
    const int id = open_pipe();
    nq_DbFldList_destroy(read(id));
    DbFldList *rec = record({{u"QTY", u"", u'L'}});
    EXPECT_EQ(nq_Db_modRec(id, rec), 0);
    EXPECT_EQ(last_statement(), "UPDATE pipe SET [QTY]=0 WHERE [NAME]='abc' AND [PRICE]=1.5");
    EXPECT_EQ(sqlite_value(path, "SELECT QTY FROM pipe"), "0");
    nq_DbFldList_destroy(rec);
}

TEST_F(DbSql, EmptyTextIsWrittenAsTheEmptyString) {
    const int id = open_pipe();
    nq_DbFldList_destroy(read(id));
    DbFldList *rec = record({{u"NAME", u"", u'C'}});
    EXPECT_EQ(nq_Db_modRec(id, rec), 0);
    EXPECT_EQ(last_statement(), "UPDATE pipe SET [NAME]='' WHERE [QTY]=5 AND [PRICE]=1.5");
    EXPECT_EQ(sqlite_value(path, "SELECT NAME FROM pipe"), "");
    nq_DbFldList_destroy(rec);
}

TEST_F(DbSql, QuoteMarkInAnUpdateFailsSilently) {
    const int id = open_pipe();
    nq_DbFldList_destroy(read(id));
    DbFldList *rec = record({{u"NAME", u"O'Brien", u'C'}});
    nqtest::CaptureFd out(1);
    EXPECT_EQ(nq_Db_modRec(id, rec), 1);
    EXPECT_EQ(out.stop(), "");
    EXPECT_EQ(last_statement(), "UPDATE pipe SET [NAME]='O'Brien' WHERE [QTY]=5 AND [PRICE]=1.5");
    EXPECT_EQ(sqlite_value(path, "SELECT NAME FROM pipe"), "abc");
    nq_DbFldList_destroy(rec);
}

TEST_F(DbSql, SetClauseOf1023CharactersRunsAnd1024IsRefused) {
    // " SET [NAME]='" ... "', " is 16 characters around the value, before the cut.
    for (const std::size_t length : {std::size_t(1007), std::size_t(1008)}) {
        nq_Db_closeAll();
        dbtest::clear_driver_calls();
        const int id = open_pipe();
        nq_DbFldList_destroy(read(id));
        const std::size_t sent = driver_calls().statements.size();
        const std::u16string value(length, u'w');
        DbFldList *rec = record({{u"NAME", value.c_str(), u'C'}});
        nqtest::CaptureFd out(1);
        const int result = nq_Db_modRec(id, rec);
        EXPECT_EQ(out.stop(), "");
        if (length == 1007) {
            EXPECT_EQ(result, 0);
            EXPECT_EQ(driver_calls().statements.size(), sent + 1);
            EXPECT_EQ(sqlite_value(path, "SELECT length(NAME) FROM pipe"), "1007");
        } else {
            EXPECT_EQ(result, 1);
            EXPECT_EQ(driver_calls().statements.size(), sent);
        }
        nq_DbFldList_destroy(rec);
        nq_Db_closeDb(id);
        std::remove(path.c_str());
    }
}

// A table whose row is found by long unchanged texts: A changes to a, and B1 to B4 (text
// of at most 255 characters, which the driver binds as it is) hold 250, 250, 250 and k
// characters. The where clause, before its cut, is 7 + (k + 12) + 3 * 262 = 805 + k.
class DbSqlWide : public DbSql {
protected:
    int open_wide(const std::string &table, std::size_t k) {
        const std::string folder = dir.file(table + std::to_string(k));
        std::filesystem::create_directory(folder);
        path = folder + "/" + table + ".db3";
        const std::string b(250, 'b');
        dbtest::sqlite_exec(path, "CREATE TABLE " + table + " (A VARCHAR(10), B1 VARCHAR(255), B2 VARCHAR(255),"
                                  " B3 VARCHAR(255), B4 VARCHAR(255)); INSERT INTO " + table + " VALUES ('a', '" +
                                  b + "', '" + b + "', '" + b + "', '" + std::string(k, 'k') + "');");
        return open(path);
    }
    // Writes A = a characters; the result and whether a statement went out.
    int write_a(int id, std::size_t a, bool *sent) {
        DbFldList *row = read(id);
        const std::u16string value(a, u'z');
        nq_DbFldList_modFldVal(row, u"A", value.c_str());
        const std::size_t before = driver_calls().statements.size();
        const int result = nq_Db_modRec(id, row);
        *sent = driver_calls().statements.size() == before + 1;
        nq_DbFldList_destroy(row);
        return result;
    }
};

TEST_F(DbSqlWide, WhereClauseOf1023CharactersRunsAnd1024IsRefused) {
    bool sent = false;
    int id = open_wide("w", 218);
    EXPECT_EQ(write_a(id, 1, &sent), 0);
    EXPECT_TRUE(sent);
    EXPECT_EQ(sqlite_value(path, "SELECT A FROM w"), "z");

    id = open_wide("w", 219);
    EXPECT_EQ(write_a(id, 1, &sent), 1);
    EXPECT_FALSE(sent);
    EXPECT_EQ(sqlite_value(path, "SELECT A FROM w"), "a");
}

TEST_F(DbSqlWide, UpdateOf2047CharactersRunsAnd2048IsRefused) {
    // "UPDATE " and a table name of t, the set clause cut to a + 11, the where clause cut to
    // 800 + k: with a = 1010 and k = 200 the whole is 2028 + t, each clause within 1023.
    bool sent = false;
    const std::string t19(19, 't'), t20(20, 't');
    int id = open_wide(t19, 200);
    EXPECT_EQ(write_a(id, 1010, &sent), 0);
    ASSERT_TRUE(sent);
    EXPECT_EQ(last_statement().size(), 2047u);
    EXPECT_EQ(sqlite_value(path, "SELECT length(A) FROM " + t19), "1010");

    id = open_wide(t20, 200);
    EXPECT_EQ(write_a(id, 1010, &sent), 1);
    EXPECT_FALSE(sent);
    EXPECT_EQ(sqlite_value(path, "SELECT A FROM " + t20), "a");
}

}  // namespace
