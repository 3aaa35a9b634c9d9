// The Db family's record operations against the SQLite driver: walking forward and back,
// reading, the bound record and its type mapping, appending and modifying, seeking,
// counting, and the operations that do nothing.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "db_test_support.h"
#include "nq_tls20an.h"
#include "test_support.h"

using dbtest::DbTest;
using dbtest::describe;
using dbtest::driver_calls;
using dbtest::narrow;
using dbtest::record;
using dbtest::sqlite_rows;
using dbtest::sqlite_value;

namespace {

class DbRecord : public DbTest {
protected:
    // items(NAME, QTY) with rows r0/0 ... r9/9.
    int open_items(int rows = 10) {
        std::string sql = "CREATE TABLE items (NAME VARCHAR(10), QTY INTEGER);";
        for (int i = 0; i < rows; ++i)
            sql += "INSERT INTO items VALUES ('r" + std::to_string(i) + "', " + std::to_string(i) + ");";
        path = make_db("items.db3", sql);
        return open(path);
    }
    std::string name(int id) { return narrow(nq_Db_getFldStr(id, u"NAME")); }
    int32_t rec_no(int id) { return nq_DbRef_sel(id)->recNo; }
    // Moves to row n from the top.
    void go_to(int id, int n) {
        ASSERT_EQ(nq_Db_topRec(id), 0);
        for (int i = 0; i < n; ++i) ASSERT_EQ(nq_Db_nextRec(id), 0);
        ASSERT_EQ(rec_no(id), n);
    }
    std::string read_described(int id) {
        DbFldList *row = nq_Db_readRec(id);
        std::string text = describe(row);
        nq_DbFldList_destroy(row);
        return text;
    }

    std::string path;
};

// ---- Walking ----

TEST_F(DbRecord, TopFetchesTheFirstRowIntoBoundFields) {
    const int id = open_items();
    EXPECT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(rec_no(id), 0);
    EXPECT_EQ(name(id), "r0");
    EXPECT_EQ(narrow(nq_Db_getFldStr(id, u"QTY")), "0");
    EXPECT_EQ(nq_Db_eof(id), 0);
    EXPECT_NE(nq_DbRef_sel(id)->stmt, nullptr);
}

TEST_F(DbRecord, WalkingForwardVisitsEveryRowThenEnds) {
    const int id = open_items();
    ASSERT_EQ(nq_Db_topRec(id), 0);
    std::string seen = name(id);
    while (nq_Db_nextRec(id) == 0) seen += "," + name(id);
    EXPECT_EQ(seen, "r0,r1,r2,r3,r4,r5,r6,r7,r8,r9");
    // Past the end the record set is dropped.
    EXPECT_EQ(nq_Db_eof(id), 1);
    EXPECT_EQ(nq_DbRef_sel(id)->stmt, nullptr);
    EXPECT_EQ(nq_DbRef_sel(id)->fields, nullptr);
    EXPECT_EQ(nq_Db_nextRec(id), 3);
    // A later read starts again from the top.
    EXPECT_EQ(read_described(id), "NAME=r0:C QTY=0:L");
    EXPECT_EQ(rec_no(id), 0);
}

TEST_F(DbRecord, TopAgainStartsAFreshQuery) {
    const int id = open_items();
    go_to(id, 4);
    const std::size_t sent = driver_calls().statements.size();
    EXPECT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(driver_calls().statements.size(), sent + 1);
    EXPECT_EQ(name(id), "r0");
}

TEST_F(DbRecord, TopOfAnEmptyTableFailsQuietly) {
    const int id = open_items(0);
    nqtest::CaptureFd out(1);
    EXPECT_EQ(nq_Db_topRec(id), 1);
    EXPECT_EQ(out.stop(), "");
    EXPECT_EQ(nq_Db_eof(id), 1);
    EXPECT_EQ(nq_DbRef_sel(id)->stmt, nullptr);
    EXPECT_EQ(nq_Db_readRec(id), nullptr);
}

TEST_F(DbRecord, TopOfATableTheFileDoesNotHoldPrintsTheFailure) {
    const std::string other = make_db("other.db3", "CREATE TABLE items (A INTEGER); INSERT INTO items VALUES (1);");
    const int id = open(other);
    nqtest::CaptureFd out(1);
    EXPECT_EQ(nq_Db_topRec(id), 1);
    EXPECT_EQ(out.stop(), "SQL query failed.");
    EXPECT_EQ(driver_calls().statements.back(), "SELECT  *  FROM other");
    // The statement stays until the next top.
    EXPECT_NE(nq_DbRef_sel(id)->stmt, nullptr);
    EXPECT_EQ(nq_Db_eof(id), 1);
    nqtest::CaptureFd again(1);
    EXPECT_EQ(nq_Db_topRec(id), 1);
    EXPECT_EQ(again.stop(), "SQL query failed.");
}

TEST_F(DbRecord, TableNumbersNeverGiven) {
    EXPECT_EQ(nq_Db_topRec(42), 0);
    EXPECT_EQ(nq_Db_nextRec(42), 3);
    EXPECT_EQ(nq_Db_prevRec(42, 0), 3);
    EXPECT_EQ(nq_Db_botRec(42), 3);
    EXPECT_EQ(nq_Db_readRec(42), nullptr);
    EXPECT_EQ(nq_Db_readCurrRec(nullptr), nullptr);
    EXPECT_EQ(nq_Db_struct(42), nullptr);
    EXPECT_EQ(nq_Db_appRec(42), 1);
    EXPECT_EQ(nq_Db_modRec(42, nullptr), 1);
    EXPECT_EQ(nq_Db_getFldStr(42, u"NAME"), nullptr);
    EXPECT_EQ(nq_Db_seekStr(u"r1", 42, 0), 1);
    EXPECT_EQ(nq_Db_getRecordCount(42), 0);
    EXPECT_EQ(nq_Db_eof(42), 1);
    EXPECT_EQ(nq_Db_eof(-1), 1);
}

TEST_F(DbRecord, BottomFetchesToTheEndAndKeepsTheLastRow) {
    const int id = open_items();
    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(nq_Db_botRec(id), 0);
    EXPECT_EQ(rec_no(id), 9);
    EXPECT_EQ(name(id), "r9");
    EXPECT_NE(nq_DbRef_sel(id)->stmt, nullptr);
    EXPECT_EQ(nq_Db_eof(id), 0);
    EXPECT_EQ(read_described(id), "NAME=r9:C QTY=9:L");
    // The set is past its end: the next fetch ends it.
    EXPECT_EQ(nq_Db_nextRec(id), 3);
    EXPECT_EQ(nq_Db_eof(id), 1);
}

TEST_F(DbRecord, BottomWithoutAnOpenSetDoesNothing) {
    const int id = open_items();
    EXPECT_EQ(nq_Db_botRec(id), 0);
    EXPECT_EQ(rec_no(id), 0);
    EXPECT_EQ(nq_Db_eof(id), 1);
}

TEST_F(DbRecord, WalkingBackwardRerunsTheQueryEachStep) {
    const int id = open_items();
    ASSERT_EQ(nq_Db_topRec(id), 0);
    ASSERT_EQ(nq_Db_botRec(id), 0);
    std::string seen = name(id);
    std::size_t sent = driver_calls().statements.size();
    while (nq_Db_prevRec(id, 0) == 0) {
        seen += "," + name(id);
        EXPECT_EQ(driver_calls().statements.size(), sent + 1);  // one SELECT per step
        sent = driver_calls().statements.size();
    }
    EXPECT_EQ(seen, "r9,r8,r7,r6,r5,r4,r3,r2,r1,r0");
    EXPECT_EQ(rec_no(id), 0);
}

TEST_F(DbRecord, PrevOnTheFirstRowGivesThreeAndLeavesTheCursor) {
    const int id = open_items();
    ASSERT_EQ(nq_Db_topRec(id), 0);
    const void *stmt = nq_DbRef_sel(id)->stmt;
    const std::size_t sent = driver_calls().statements.size();
    EXPECT_EQ(nq_Db_prevRec(id, 0), 3);
    EXPECT_EQ(rec_no(id), 0);
    EXPECT_EQ(nq_DbRef_sel(id)->stmt, stmt);
    EXPECT_EQ(name(id), "r0");
    EXPECT_EQ(driver_calls().statements.size(), sent);
    // Straight after opening the row number is 0 as well.
    const int fresh = open(path);
    EXPECT_EQ(nq_Db_prevRec(fresh, 0), 3);
}

TEST_F(DbRecord, PrevIgnoresTheTag) {
    const int id = open_items();
    ASSERT_EQ(nq_Db_createNdx(id, u"T", u"NAME"), 100);
    go_to(id, 6);
    EXPECT_EQ(nq_Db_prevRec(id, 100), 0);
    EXPECT_EQ(name(id), "r5");
    EXPECT_EQ(nq_Db_prevRec(id, 12345), 0);
    EXPECT_EQ(name(id), "r4");
}

TEST_F(DbRecord, PrevWhenTheTableShrankBelowTheRowEnds) {
    const int id = open_items();
    go_to(id, 6);
    dbtest::sqlite_exec(path, "DELETE FROM items WHERE QTY > 2;");
    EXPECT_EQ(nq_Db_prevRec(id, 0), 3);
    EXPECT_EQ(nq_Db_eof(id), 1);
}

// ---- Reading ----

TEST_F(DbRecord, ReadOpensTheSetAndGivesACopy) {
    const int id = open_items();
    DbFldList *row = nq_Db_readRec(id);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(describe(row), "NAME=r0:C QTY=0:L");
    EXPECT_EQ(nq_DbRef_sel(id)->state, 3u);
    EXPECT_NE(row, nq_DbRef_sel(id)->fields);
    nq_DbFldList_modFldVal(row, u"NAME", u"changed");
    EXPECT_EQ(name(id), "r0");
    nq_DbFldList_destroy(row);
    // readCurrRec takes the node itself.
    DbFldList *again = nq_Db_readCurrRec(nq_DbRef_sel(id));
    EXPECT_EQ(describe(again), "NAME=r0:C QTY=0:L");
    nq_DbFldList_destroy(again);
}

TEST_F(DbRecord, ReadKeepsWidthsAndTypeLettersOfTheColumns) {
    const int id = open(make_db("types.db3",
                                "CREATE TABLE types (C VARCHAR(20), L INTEGER, I SMALLINT, N DOUBLE, R REAL,"
                                " D DATE, TS TIMESTAMP, M TEXT, B BLOB, X);"));
    DbFldList *cols = nq_Db_struct(id);
    ASSERT_NE(cols, nullptr);
    std::string layout;
    for (LnkListNode *n = cols->head; n; n = n->next) {
        const auto *field = static_cast<const DbFldNode *>(n->data);
        layout += narrow(field->name) + ":" + char(field->type) + std::to_string(field->width) + "." +
                  std::to_string(field->precision) + "[" + narrow(field->value) + "] ";
    }
    // Integers get 2 and then 25 more; long text is bound to 64 characters.
    EXPECT_EQ(layout,
              "C:C20.0[] L:L37.0[] I:I6.0[] N:N54.0[] R:N54.0[] D:T10.0[] TS:T32.0[] M:M64.0[] B:C255.0[] "
              "X:C255.0[] ");
    nq_DbFldList_destroy(cols);
}

TEST_F(DbRecord, ColumnNameIsCutAt63Characters) {
    const std::string longName(70, 'K');
    const int id = open(make_db("names.db3", "CREATE TABLE names (" + longName + " INTEGER);"));
    DbFldList *cols = nq_Db_struct(id);
    ASSERT_NE(cols, nullptr);
    EXPECT_EQ(narrow(static_cast<DbFldNode *>(cols->head->data)->name), std::string(63, 'K'));
    nq_DbFldList_destroy(cols);
}

TEST_F(DbRecord, VeryLongColumnNameIsDescribedCut) {
    // The driver cuts a name to the 200 characters asked for without saying so, so every
    // column is built, and the record keeps 63 characters of the name.
    const int id = open(make_db("wide.db3", "CREATE TABLE wide (A INTEGER, " + std::string(250, 'Z') +
                                                " INTEGER, C INTEGER); INSERT INTO wide VALUES (1, 2, 3);"));
    EXPECT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(read_described(id), "A=1:L " + std::string(63, 'Z') + "=2:L C=3:L");
}

TEST_F(DbRecord, StructGivesTheColumnsWithEmptyValues) {
    const int id = open_items();
    DbFldList *cols = nq_Db_struct(id);
    EXPECT_EQ(describe(cols), "NAME=:C QTY=:L");
    nq_DbFldList_destroy(cols);
    // Nothing was fetched.
    EXPECT_EQ(rec_no(id), 0);
}

TEST_F(DbRecord, StructWhileASetIsOpenIsRefusedByTheDriverManager) {
    const int id = open_items();
    ASSERT_EQ(nq_Db_topRec(id), 0);
    // The same statement is run again over an open cursor, which the driver manager refuses.
    EXPECT_EQ(nq_Db_struct(id), nullptr);
    EXPECT_EQ(name(id), "r0");
}

TEST_F(DbRecord, NumbersWithoutPrecisionAreRepairedInTheCopy) {
    const int id = open(make_db("nums.db3", "CREATE TABLE nums (V DOUBLE);"
                                            "INSERT INTO nums VALUES (12.0), (12.5), (12.25), (100.0), (0.0), (7);"));
    ASSERT_EQ(nq_Db_topRec(id), 0);
    std::vector<std::string> seen;
    do {
        DbFldList *row = nq_Db_readRec(id);
        const auto *field = static_cast<const DbFldNode *>(row->head->data);
        seen.push_back(narrow(nq_Db_getFldStr(id, u"V")) + ">" + narrow(field->value) + "/" +
                       std::to_string(field->precision));
        nq_DbFldList_destroy(row);
    } while (nq_Db_nextRec(id) == 0);
    // "12.00" style values lose the point; others keep their text and gain a precision.
    EXPECT_EQ(seen, (std::vector<std::string>{"12.0>12/0", "12.5>12.5/1", "12.25>12.25/2", "100.0>100/0",
                                              "0.0>0/0", "7.0>7/0"}));
}

TEST_F(DbRecord, GetFldStrGivesTheLiveValueUntrimmed) {
    const int id = open(make_db("pad.db3", "CREATE TABLE pad (NAME VARCHAR(10), NUM DOUBLE);"
                                           "INSERT INTO pad VALUES ('  ab  ', 1.5);"));
    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(narrow(nq_Db_getFldStr(id, u"NAME")), "  ab  ");
    EXPECT_EQ(narrow(nq_Db_getFldStr(id, u"name")), "  ab  ");  // any case
    // The copy trims: trailing blanks always, leading ones only for numbers.
    EXPECT_EQ(read_described(id), "NAME=  ab:C NUM=1.5:N");
}

TEST_F(DbRecord, GetFldStrClearsItsBufferAndGivesNullForNoField) {
    const int id = open_items();
    ASSERT_EQ(nq_Db_topRec(id), 0);
    const nq_wchar *value = nq_Db_getFldStr(id, u"NAME");
    ASSERT_EQ(narrow(value), "r0");
    EXPECT_EQ(nq_Db_getFldStr(id, u"MISSING"), nullptr);
    EXPECT_EQ(value[0], 0);  // the same static buffer, cleared
    EXPECT_EQ(nq_Db_getFldStr(id, nullptr), nullptr);
}

TEST_F(DbRecord, GetFldStrOpensTheSetOfATableWithout) {
    const int id = open_items();
    EXPECT_EQ(name(id), "r0");
    EXPECT_EQ(nq_DbRef_sel(id)->state, 3u);
    // And after the end it starts again at the top.
    while (nq_Db_nextRec(id) == 0) {
    }
    EXPECT_EQ(name(id), "r0");
}

TEST_F(DbRecord, TextWiderThan255IsLongTextBoundTo64) {
    // The driver reports such a column as long text, so its buffer holds 64 characters and
    // a longer value ends the set at once.
    const int id = open(make_db("long.db3", "CREATE TABLE long (T VARCHAR(600));"
                                            "INSERT INTO long VALUES ('" + std::string(600, 'q') + "');"));
    DbFldList *cols = nq_Db_struct(id);
    EXPECT_EQ(static_cast<DbFldNode *>(cols->head->data)->type, u'M');
    EXPECT_EQ(static_cast<DbFldNode *>(cols->head->data)->width, 64u);
    nq_DbFldList_destroy(cols);
    nq_Db_closeDb(id);
    const int again = open(dir.file("long.db3"));
    EXPECT_EQ(nq_Db_topRec(again), 1);
    EXPECT_EQ(nq_Db_eof(again), 1);
}

TEST_F(DbRecord, GetFldStrHoldsTheWidestTextColumn) {
    const int id = open(make_db("wide.db3", "CREATE TABLE wide (T VARCHAR(255));"
                                            "INSERT INTO wide VALUES ('" + std::string(255, 'q') + "');"));
    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(narrow(nq_Db_getFldStr(id, u"T")), std::string(255, 'q'));
}

TEST_F(DbRecord, NullColumnLeavesWhatTheDriverWroteInTheBuffer) {
    // The indicator is never read: the buffer holds whatever the driver left in it. The
    // SQLite driver writes an empty text for a NULL, so the earlier row's text is gone.
    const int id = open(make_db("holes.db3", "CREATE TABLE holes (NAME VARCHAR(10), QTY INTEGER);"
                                             "INSERT INTO holes VALUES ('a', 1), (NULL, 2), ('c', NULL);"));
    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(dbtest::current_row(id, {u"NAME", u"QTY"}), "a|1");
    ASSERT_EQ(nq_Db_nextRec(id), 0);
    EXPECT_EQ(dbtest::current_row(id, {u"NAME", u"QTY"}), "|2");
    ASSERT_EQ(nq_Db_nextRec(id), 0);
    EXPECT_EQ(dbtest::current_row(id, {u"NAME", u"QTY"}), "c|");
}

TEST_F(DbRecord, LongTextEndsTheWalkAtTheRowItDoesNotFit) {
    // Long text is bound to 64 characters; a longer value comes back cut, with information,
    // and any fetch that is not plainly successful ends the set.
    const int id = open(make_db("memo.db3", "CREATE TABLE memo (M TEXT);"
                                            "INSERT INTO memo VALUES ('" + std::string(64, 'm') + "'), ('" +
                                                std::string(65, 'n') + "'), ('short');"));
    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(narrow(nq_Db_getFldStr(id, u"M")), std::string(64, 'm'));
    EXPECT_EQ(nq_Db_nextRec(id), 3);
    EXPECT_EQ(nq_Db_eof(id), 1);
}

// ---- Appending and modifying ----

TEST_F(DbRecord, ModifyStraightAfterOpeningIsRefused) {
    const int id = open_items();
    DbFldList *rec = record({{u"NAME", u"x", u'C'}});
    const std::size_t sent = driver_calls().statements.size();
    EXPECT_EQ(nq_Db_modRec(id, rec), 1);
    EXPECT_EQ(driver_calls().statements.size(), sent);
    EXPECT_EQ(nq_Db_modRec(id, nullptr), 1);
    nq_DbFldList_destroy(rec);
}

TEST_F(DbRecord, AppendThenModifyInsertsThenUpdates) {
    const int id = open_items(2);
    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(nq_Db_appRec(id), 0);
    EXPECT_EQ(nq_DbRef_sel(id)->state, 1u);
    EXPECT_EQ(nq_DbRef_sel(id)->stmt, nullptr);  // the set was closed
    // An append reads a blank record.
    DbFldList *rec = nq_Db_readRec(id);
    ASSERT_EQ(describe(rec), "NAME=:C QTY=:L");
    nq_DbFldList_modFldVal(rec, u"NAME", u"new");
    nq_DbFldList_modFldVal(rec, u"QTY", u"3");
    EXPECT_EQ(nq_Db_modRec(id, rec), 0);
    EXPECT_EQ(driver_calls().statements.back(), "INSERT INTO items ([NAME], [QTY]) VALUES ('new', 3)");
    EXPECT_EQ(nq_DbRef_sel(id)->state, 2u);
    // The second write updates the row just inserted.
    nq_DbFldList_modFldVal(rec, u"QTY", u"4");
    EXPECT_EQ(nq_Db_modRec(id, rec), 0);
    EXPECT_EQ(driver_calls().statements.back(), "UPDATE items SET [QTY]=4 WHERE [NAME]='new'");
    nq_DbFldList_modFldVal(rec, u"NAME", u"newer");
    EXPECT_EQ(nq_Db_modRec(id, rec), 0);
    EXPECT_EQ(driver_calls().statements.back(), "UPDATE items SET [NAME]='newer' WHERE [QTY]=4");
    EXPECT_EQ(sqlite_rows(path, "SELECT NAME, QTY FROM items"),
              (std::vector<std::string>{"r0|0", "r1|1", "newer|4"}));
    nq_DbFldList_destroy(rec);
}

TEST_F(DbRecord, AppendWithoutReadingKeepsACopyOfWhatWasWritten) {
    const int id = open_items(1);
    ASSERT_EQ(nq_Db_appRec(id), 0);
    DbFldList *rec = record({{u"NAME", u"n", u'C'}, {u"QTY", u"5", u'L'}});
    ASSERT_EQ(nq_Db_modRec(id, rec), 0);
    EXPECT_EQ(describe(nq_DbRef_sel(id)->fields), "NAME=n:C QTY=5:L");
    // A longer value replaces the kept one.
    nq_DbFldList_modFldVal(rec, u"NAME", u"a much longer name");
    ASSERT_EQ(nq_Db_modRec(id, rec), 0);
    EXPECT_EQ(driver_calls().statements.back(), "UPDATE items SET [NAME]='a much longer name' WHERE [QTY]=5");
    EXPECT_EQ(describe(nq_DbRef_sel(id)->fields), "NAME=a much longer name:C QTY=5:L");
    EXPECT_EQ(sqlite_rows(path, "SELECT NAME, QTY FROM items"),
              (std::vector<std::string>{"r0|0", "a much longer name|5"}));
    nq_DbFldList_destroy(rec);
}

TEST_F(DbRecord, MergeIntoABoundBufferTakesWhatFits) {
    const int id = open_items(0);  // NAME is VARCHAR(10)
    ASSERT_EQ(nq_Db_appRec(id), 0);
    nq_DbFldList_destroy(nq_Db_readRec(id));  // binds the blank record
    DbFldList *rec = record({{u"NAME", u"abcdefghijklmnop", u'C'}, {u"QTY", u"1", u'L'}});
    ASSERT_EQ(nq_Db_modRec(id, rec), 0);
    EXPECT_EQ(sqlite_value(path, "SELECT NAME FROM items"), "abcdefghijklmnop");
    EXPECT_EQ(describe(nq_DbRef_sel(id)->fields), "NAME=abcdefghij:C QTY=1:L");
    // So the same record next time differs from what was kept.
    ASSERT_EQ(nq_Db_modRec(id, rec), 0);
    EXPECT_EQ(driver_calls().statements.back(), "UPDATE items SET [NAME]='abcdefghijklmnop' WHERE [QTY]=1");
    nq_DbFldList_destroy(rec);
}

TEST_F(DbRecord, ModifyAfterReadingUpdatesAndKeepsTheSetOpen) {
    const int id = open_items(3);
    go_to(id, 1);
    DbFldList *row = nq_Db_readRec(id);
    const void *stmt = nq_DbRef_sel(id)->stmt;
    nq_DbFldList_modFldVal(row, u"QTY", u"11");
    EXPECT_EQ(nq_Db_modRec(id, row), 0);
    EXPECT_EQ(driver_calls().statements.back(), "UPDATE items SET [QTY]=11 WHERE [NAME]='r1'");
    // The statement ran on a handle of its own; the walk goes on.
    EXPECT_EQ(nq_DbRef_sel(id)->stmt, stmt);
    EXPECT_EQ(narrow(nq_Db_getFldStr(id, u"QTY")), "11");  // merged into the live row
    EXPECT_EQ(nq_Db_nextRec(id), 0);
    EXPECT_EQ(name(id), "r2");
    EXPECT_EQ(sqlite_rows(path, "SELECT QTY FROM items"), (std::vector<std::string>{"0", "11", "2"}));
    nq_DbFldList_destroy(row);
}

TEST_F(DbRecord, ModifyWithoutACurrentRecordIsRefused) {
    const int id = open_items(2);
    nq_DbFldList_destroy(nq_Db_readRec(id));  // state 3
    while (nq_Db_nextRec(id) == 0) {
    }
    DbFldList *rec = record({{u"NAME", u"x", u'C'}});
    EXPECT_EQ(nq_Db_modRec(id, rec), 1);
    nq_DbRef_sel(id)->state = 9;
    nq_Db_topRec(id);
    EXPECT_EQ(nq_Db_modRec(id, rec), 1);
    nq_DbFldList_destroy(rec);
}

TEST_F(DbRecord, FailedUpdateIsSilentAndKeepsTheOldValues) {
    const int id = open_items(1);
    DbFldList *row = nq_Db_readRec(id);
    dbtest::sqlite_exec(path, "DROP TABLE items; CREATE TABLE elsewhere (A INTEGER);");
    nq_DbFldList_modFldVal(row, u"QTY", u"8");
    nqtest::CaptureFd out(1);
    EXPECT_EQ(nq_Db_modRec(id, row), 1);
    EXPECT_EQ(out.stop(), "");
    EXPECT_EQ(narrow(nq_Db_getFldStr(id, u"QTY")), "0");
    nq_DbFldList_destroy(row);
}

// ---- Seeking ----

TEST_F(DbRecord, SeekFromTheTopFindsTheRowAndStaysOnIt) {
    const int id = open_items();
    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(nq_Db_seekStr(u"r6", id, 0), 0);
    EXPECT_EQ(rec_no(id), 6);
    EXPECT_EQ(name(id), "r6");
    // Any field may match.
    EXPECT_EQ(nq_Db_seekStr(u"8", id, 0), 0);
    EXPECT_EQ(name(id), "r8");
}

TEST_F(DbRecord, SeekWrapsAroundFromTheMiddle) {
    const int id = open_items();
    go_to(id, 5);
    EXPECT_EQ(nq_Db_seekStr(u"r2", id, 0), 0);
    EXPECT_EQ(rec_no(id), 2);
    EXPECT_EQ(name(id), "r2");
}

TEST_F(DbRecord, SeekFromRowFiveThatFindsNothingEndsBackOnRowFive) {
    const int id = open_items();
    go_to(id, 5);
    EXPECT_EQ(nq_Db_seekStr(u"nowhere", id, 0), 1);
    EXPECT_EQ(rec_no(id), 5);
    EXPECT_EQ(name(id), "r5");
}

TEST_F(DbRecord, SeekFromTheTopThatFindsNothingRunsOffTheEnd) {
    const int id = open_items();
    ASSERT_EQ(nq_Db_topRec(id), 0);
    const std::size_t sent = driver_calls().statements.size();
    EXPECT_EQ(nq_Db_seekStr(u"nowhere", id, 0), 1);
    EXPECT_EQ(nq_Db_eof(id), 1);
    EXPECT_EQ(driver_calls().statements.size(), sent);  // no second pass
}

TEST_F(DbRecord, SeekComparesWholeTextsExactly) {
    const int id = open_items();
    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(nq_Db_seekStr(u"r", id, 0), 1);
    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(nq_Db_seekStr(u"R3", id, 0), 1);
    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(nq_Db_seekStr(nullptr, id, 0), 1);
}

TEST_F(DbRecord, SeekOpensTheSetOfATableWithout) {
    const int id = open_items();
    EXPECT_EQ(nq_Db_seekStr(u"r3", id, 0), 0);
    EXPECT_EQ(name(id), "r3");
}

TEST_F(DbRecord, SeekWithATagLooksOnlyAtItsFields) {
    const int id = open(make_db("codes.db3", "CREATE TABLE codes (NAME VARCHAR(10), CODE VARCHAR(10));"
                                             "INSERT INTO codes VALUES ('a', 'x'), ('x', 'b'), ('c', 'z');"));
    const char16_t *byName = u"NAME";
    const char16_t *both = u"NAME,CODE";
    const char16_t *blank = u"NAME, CODE";
    const char16_t *lower = u"code";
    const int tName = nq_Db_createNdx(id, u"N", byName);
    const int tBoth = nq_Db_createNdx(id, u"B", both);
    const int tBlank = nq_Db_createNdx(id, u"K", blank);
    const int tLower = nq_Db_createNdx(id, u"L", lower);

    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(nq_Db_seekStr(u"x", id, tName), 0);  // skips row 0, whose x is a CODE
    EXPECT_EQ(rec_no(id), 1);
    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(nq_Db_seekStr(u"x", id, tBoth), 0);
    EXPECT_EQ(rec_no(id), 0);
    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(nq_Db_seekStr(u"z", id, tBlank), 1);  // " CODE" names no field
    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(nq_Db_seekStr(u"z", id, tLower), 1);  // names are compared as they stand
    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(nq_Db_seekStr(u"z", id, tBoth + 50), 0);  // rounded down to the tag
    EXPECT_EQ(rec_no(id), 2);
    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(nq_Db_seekStr(u"z", id, 9900), 0);  // no such tag: every field
}

// ---- Counting ----

TEST_F(DbRecord, CountLeavesTheWalkAlone) {
    const int id = open_items();
    go_to(id, 3);
    const void *stmt = nq_DbRef_sel(id)->stmt;
    const DbFldList *fields = nq_DbRef_sel(id)->fields;
    EXPECT_EQ(nq_Db_getRecordCount(id), 10);
    EXPECT_EQ(rec_no(id), 3);
    EXPECT_EQ(nq_DbRef_sel(id)->stmt, stmt);
    EXPECT_EQ(nq_DbRef_sel(id)->fields, fields);
    EXPECT_EQ(nq_Db_nextRec(id), 0);
    EXPECT_EQ(name(id), "r4");
}

TEST_F(DbRecord, CountOfAnEmptyTableIsZero) {
    const int id = open_items(0);
    EXPECT_EQ(nq_Db_getRecordCount(id), 0);
}

TEST_F(DbRecord, CountOfEightDigitsDoesNotFitItsBufferAndGivesZero) {
    // Sixteen bytes hold seven digits; the cut fetch counts as failed.
    const int id = open(make_db("big.db3", "CREATE VIEW big AS WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL"
                                           " SELECT x + 1 FROM c WHERE x < 10000000) SELECT x FROM c;"));
    ASSERT_GE(id, 0);
    EXPECT_EQ(nq_Db_getRecordCount(id), 0);
    EXPECT_EQ(driver_calls().statements.back(), "select count(*) from big");
}

// ---- The rest ----

TEST_F(DbRecord, EofFollowsTheCurrentRecord) {
    const int id = open_items(1);
    EXPECT_EQ(nq_Db_eof(id), 1);
    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(nq_Db_eof(id), 0);
    EXPECT_EQ(nq_Db_nextRec(id), 3);
    EXPECT_EQ(nq_Db_eof(id), 1);
}

TEST_F(DbRecord, FreeFldInfoReleasesEachLeadingBlockAndTheArray) {
    auto *info = static_cast<DbFldInfo *>(nq_Malloc(3 * sizeof(DbFldInfo)));
    info[0] = DbFldInfo{nq_Malloc(10), 10, 0, u'C'};
    info[1] = DbFldInfo{nullptr, 4, 0, u'L'};
    info[2] = DbFldInfo{nq_Str_dup(u"name"), 8, 2, u'N'};
    nq_Db_freeFldInfo(info, 3);  // the sanitizer build sees anything left behind
    nq_Db_freeFldInfo(nullptr, 5);
    auto *empty = static_cast<DbFldInfo *>(nq_Malloc(sizeof(DbFldInfo)));
    nq_Db_freeFldInfo(empty, 0);
    EXPECT_EQ(sizeof(DbFldInfo), 16u);
}

TEST_F(DbRecord, OperationsThatDoNothingReturnZeroAndChangeNothing) {
    const int id = open_items(3);
    go_to(id, 1);
    const std::size_t sent = driver_calls().statements.size();
    nq_wchar buffer[8] = u"keep";
    nq_wchar padded[8] = u"ab";
    EXPECT_EQ(nq_Db_append(id), 0);
    EXPECT_EQ(nq_Db_appendStart(id), 0);
    EXPECT_EQ(nq_Db_assignFldDouble(id, u"QTY", 2.5), 0);
    EXPECT_EQ(nq_Db_assignFldInt(id, u"QTY", 7), 0);
    EXPECT_EQ(nq_Db_assignFldStr(id, u"NAME", u"zz"), 0);
    EXPECT_EQ(nq_Db_assignFldStrN(id, u"NAME", u"zz", 2), 0);
    EXPECT_EQ(nq_Db_bof(id), 0);
    EXPECT_EQ(nq_Db_cpyFldN(id, u"NAME", buffer, 8), 0);
    EXPECT_EQ(nq_Db_delRec(id), 0);
    EXPECT_EQ(nq_Db_deleted(id), 0);
    EXPECT_EQ(nq_Db_getFldInt(id, u"QTY"), 0);
    EXPECT_EQ(nq_Db_getFldDouble(id, u"QTY"), 0.0);
    EXPECT_EQ(nq_Db_getRecordNo(id), 0);
    EXPECT_EQ(nq_Db_packDb(id), 0);
    EXPECT_EQ(nq_Db_padVal(padded, 6), 0);
    EXPECT_EQ(nq_Db_query(id, u"QTY > 1"), 0);
    EXPECT_EQ(nq_Db_readTable(id), 0);
    EXPECT_EQ(nq_Db_seekDouble(2.0, id, 0), 0);
    EXPECT_EQ(nq_Db_undelRec(id), 0);
    EXPECT_EQ(nq_Db_writeRec(id), 0);
    // Also for a table never given.
    EXPECT_EQ(nq_Db_delRec(77), 0);
    EXPECT_EQ(nq_Db_getFldDouble(77, nullptr), 0.0);

    EXPECT_EQ(narrow(buffer), "keep");
    EXPECT_EQ(narrow(padded), "ab");
    EXPECT_EQ(rec_no(id), 1);
    EXPECT_EQ(name(id), "r1");
    EXPECT_EQ(driver_calls().statements.size(), sent);
    EXPECT_EQ(sqlite_rows(path, "SELECT NAME, QTY FROM items"),
              (std::vector<std::string>{"r0|0", "r1|1", "r2|2"}));
}

}  // namespace
