// The Db family's registries, connections, opening and closing: table and tag numbering and
// their lookup rules, the connection each extension gets, and the failures of opening.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "db_test_support.h"
#include "nq_tls20an.h"
#include "test_support.h"

using dbtest::DbTest;
using dbtest::driver_calls;
using dbtest::lib_name;
using dbtest::narrow;

namespace {

const char *kTable = "CREATE TABLE %s (NAME VARCHAR(10), QTY INTEGER);";

std::string table_sql(const std::string &name) {
    char sql[256];
    std::snprintf(sql, sizeof sql, kTable, name.c_str());
    return sql;
}

class DbRegistry : public DbTest {};
class DbOpen : public DbTest {};

// ---- The table registry ----

TEST_F(DbRegistry, AddNumbersFromZeroAndOneAboveTheHighest) {
    EXPECT_EQ(nq_DbRef_add(u"a.db3"), 0);
    EXPECT_EQ(nq_DbRef_add(u"b.db3"), 1);
    EXPECT_EQ(nq_DbRef_add(u"c.db3"), 2);
    ASSERT_EQ(nq_DbRef_del(1), 1);
    // Not the gap: one above the highest.
    EXPECT_EQ(nq_DbRef_add(u"d.db3"), 3);
    ASSERT_EQ(nq_DbRef_del(3), 1);
    // A number freed at the top is given again.
    EXPECT_EQ(nq_DbRef_add(u"e.db3"), 3);
}

TEST_F(DbRegistry, SelFindsByNumberAndKeepsACopyOfTheName) {
    const char16_t name[] = u"C:\\data\\pipe.db3";
    const int id = nq_DbRef_add(name);
    DbRefNode *node = nq_DbRef_sel(id);
    ASSERT_NE(node, nullptr);
    EXPECT_NE(node->fileName, name);
    EXPECT_EQ(narrow(node->fileName), "C:\\data\\pipe.db3");
    EXPECT_EQ(node->id, id);
    EXPECT_EQ(nq_DbRef_sel(id + 1), nullptr);
    EXPECT_EQ(nq_DbRef_sel(-1), nullptr);
}

TEST_F(DbRegistry, DelGivesOneWhenFoundAndZeroOtherwise) {
    const int id = nq_DbRef_add(u"a.db3");
    EXPECT_EQ(nq_DbRef_del(id + 5), 0);
    EXPECT_EQ(nq_DbRef_del(id), 1);
    EXPECT_EQ(nq_DbRef_del(id), 0);
    EXPECT_EQ(nq_DbRef_sel(id), nullptr);
}

TEST_F(DbRegistry, NodeCreateIsZeroedApartFromNameAndNumber) {
    DbRefNode *node = nq_DbRefNode_create(u"x.db3", 7);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(narrow(node->fileName), "x.db3");
    EXPECT_EQ(node->stmt, nullptr);
    EXPECT_EQ(node->conn, nullptr);
    EXPECT_EQ(node->fields, nullptr);
    EXPECT_EQ(node->recNo, 0);
    EXPECT_EQ(node->state, 0u);
    EXPECT_EQ(node->id, 7);
    nq_DbRefNode_free(node);
    nq_DbRefNode_free(nullptr);  // nothing happens

    DbRefNode *unnamed = nq_DbRefNode_create(nullptr, 1);
    ASSERT_NE(unnamed, nullptr);
    EXPECT_EQ(unnamed->fileName, nullptr);
    nq_DbRefNode_free(unnamed);
}

TEST_F(DbRegistry, NodeFreeReleasesTheFieldList) {
    DbRefNode *node = nq_DbRefNode_create(u"x.db3", 0);
    node->fields = nq_DbFldList_create(u"A", u"1", nullptr);
    nq_DbRefNode_free(node);  // the sanitizer build sees a leak if the list stayed
}

TEST_F(DbRegistry, NodeFindWalksTheGivenList) {
    DbRefNode *a = nq_DbRefNode_create(u"a", 4);
    DbRefNode *b = nq_DbRefNode_create(u"b", 9);
    LnkList *list = nq_LnkList_create(a, b, nullptr);
    EXPECT_EQ(nq_DbRefNode_find(list, 9), b);
    EXPECT_EQ(nq_DbRefNode_find(list, 4), a);
    EXPECT_EQ(nq_DbRefNode_find(list, 5), nullptr);
    EXPECT_EQ(nq_DbRefNode_find(nullptr, 4), nullptr);
    nq_DbRefNode_free(a);
    nq_DbRefNode_free(b);
    nq_LnkList_destroy(list, nullptr);
}

// ---- The tag registry ----

TEST_F(DbRegistry, TagsAreNumberedInHundreds) {
    EXPECT_EQ(nq_DbTagRef_add(0, u"T1", u"A"), 100);
    EXPECT_EQ(nq_DbTagRef_add(0, u"T2", u"B"), 200);
    EXPECT_EQ(nq_DbTagRef_add(3, u"T3", u"C"), 300);
    ASSERT_EQ(nq_DbTagRef_del(300), 1);
    EXPECT_EQ(nq_DbTagRef_add(3, u"T4", u"C"), 300);
    ASSERT_EQ(nq_DbTagRef_del(100), 1);
    EXPECT_EQ(nq_DbTagRef_add(3, u"T5", u"C"), 400);
}

TEST_F(DbRegistry, TagKeepsTheCallersPointers) {
    const char16_t name[] = u"BYNAME";
    const char16_t expression[] = u"NAME,CODE";
    const int tag = nq_DbTagRef_add(2, name, expression);
    DbTagRefNode *node = nq_DbTagRef_selNdx(tag);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->tagName, name);
    EXPECT_EQ(node->expression, expression);
    EXPECT_EQ(node->dbRefId, 2u);
    EXPECT_EQ(node->tagNo, 100);
}

TEST_F(DbRegistry, SelNdxRoundsDownToTheHundred) {
    nq_DbTagRef_add(0, u"T1", u"A");
    nq_DbTagRef_add(0, u"T2", u"B");
    ASSERT_NE(nq_DbTagRef_selNdx(250), nullptr);
    EXPECT_EQ(nq_DbTagRef_selNdx(250)->tagNo, 200);
    EXPECT_EQ(nq_DbTagRef_selNdx(199)->tagNo, 100);
    EXPECT_EQ(nq_DbTagRef_selNdx(99), nullptr);
    EXPECT_EQ(nq_DbTagRef_selNdx(300), nullptr);
    EXPECT_EQ(nq_DbTagRef_selNdx(-100), nullptr);
}

TEST_F(DbRegistry, TagDelUsesTheSameRounding) {
    nq_DbTagRef_add(0, u"T1", u"A");
    EXPECT_EQ(nq_DbTagRef_del(99), 0);
    EXPECT_EQ(nq_DbTagRef_del(150), 1);
    EXPECT_EQ(nq_DbTagRef_del(100), 0);
}

TEST_F(DbRegistry, UpdateComparesWithTheTableNumberNotTheTagNumber) {
    const char16_t *renamed = u"RENAMED";
    nq_DbTagRef_add(0, u"T1", u"A");    // tag 100 of table 0
    nq_DbTagRef_add(200, u"T2", u"B");  // tag 200 of table 200
    // 100 rounds to 100: no tag belongs to table 100, though tag 100 exists.
    EXPECT_EQ(nq_DbTagRef_update(100, renamed), 0);
    EXPECT_EQ(narrow(nq_DbTagRef_selNdx(100)->tagName), "T1");
    // 250 rounds to 200, the table of the second tag.
    EXPECT_EQ(nq_DbTagRef_update(250, renamed), 1);
    EXPECT_EQ(nq_DbTagRef_selNdx(200)->tagName, renamed);
    // 42 rounds to 0, the table of the first tag.
    EXPECT_EQ(nq_DbTagRef_update(42, renamed), 1);
    EXPECT_EQ(nq_DbTagRef_selNdx(100)->tagName, renamed);
}

TEST_F(DbRegistry, UpdateChangesOnlyTheFirstMatch) {
    nq_DbTagRef_add(0, u"T1", u"A");
    nq_DbTagRef_add(0, u"T2", u"B");
    EXPECT_EQ(nq_DbTagRef_update(0, u"X"), 1);
    EXPECT_EQ(narrow(nq_DbTagRef_selNdx(100)->tagName), "X");
    EXPECT_EQ(narrow(nq_DbTagRef_selNdx(200)->tagName), "T2");
}

TEST_F(DbRegistry, DelTagsComparesTheExpressionPointerWithTheNumber) {
    nq_DbTagRef_add(0, u"T1", u"NAME");
    nq_DbTagRef_add(1, u"T2", u"NAME");
    // A real expression never equals a table number: nothing goes.
    EXPECT_EQ(nq_DbRef_delTags(0), 0);
    EXPECT_EQ(nq_DbRef_delTags(1), 0);
    EXPECT_NE(nq_DbTagRef_selNdx(100), nullptr);
    EXPECT_NE(nq_DbTagRef_selNdx(200), nullptr);
    // A tag without an expression has the pointer value 0, which table 0 matches.
    nq_DbTagRef_add(5, u"T3", nullptr);
    EXPECT_EQ(nq_DbRef_delTags(0), 1);
    EXPECT_EQ(nq_DbTagRef_selNdx(300), nullptr);
    EXPECT_NE(nq_DbTagRef_selNdx(100), nullptr);
}

TEST_F(DbRegistry, TagNodeCreateAndFree) {
    DbTagRefNode *node = nq_DbTagRefNode_create(u"N", u"E", 700, 3);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->tagNo, 700);
    EXPECT_EQ(node->dbRefId, 3u);
    nq_DbTagRefNode_free(node);
    nq_DbTagRefNode_free(nullptr);
}

TEST_F(DbRegistry, CloseAllEmptiesBothRegistriesAndReturnsZero) {
    nq_DbRef_add(u"a.db3");
    nq_DbRef_add(u"b.db3");
    nq_DbTagRef_add(0, u"T", u"A");
    EXPECT_EQ(nq_Db_closeAll(), 0);
    EXPECT_EQ(nq_DbRef_sel(0), nullptr);
    EXPECT_EQ(nq_DbTagRef_selNdx(100), nullptr);
    EXPECT_EQ(nq_DbRef_add(u"c.db3"), 0);
    EXPECT_EQ(nq_DbTagRef_add(0, u"T", u"A"), 100);
}

// ---- Tags of open tables ----

TEST_F(DbRegistry, CreateNdxNeedsAnOpenTable) {
    EXPECT_EQ(nq_Db_createNdx(0, u"T", u"NAME"), -1);
    const int id = open(make_db("pipe.db3", table_sql("pipe")));
    ASSERT_EQ(id, 0);
    EXPECT_EQ(nq_Db_createNdx(id, u"BYNAME", u"NAME"), 100);
    nq_Db_closeDb(id);
    EXPECT_EQ(nq_Db_createNdx(id, u"T", u"NAME"), -1);
}

TEST_F(DbRegistry, OpenNdxFindsTheTagOfThatTableInAnyCase) {
    const int a = open(make_db("a.db3", table_sql("a")));
    const int b = open(make_db("b.db3", table_sql("b")));
    ASSERT_EQ(nq_Db_createNdx(a, u"ByName", u"NAME"), 100);
    ASSERT_EQ(nq_Db_createNdx(b, u"ByQty", u"QTY"), 200);
    EXPECT_EQ(nq_Db_openNdx(a, u"BYNAME"), 100);
    EXPECT_EQ(nq_Db_openNdx(a, u"byname"), 100);
    EXPECT_EQ(nq_Db_openNdx(b, u"byqty"), 200);
    // The tag of another table is not this table's.
    EXPECT_EQ(nq_Db_openNdx(a, u"ByQty"), -1);
    EXPECT_EQ(nq_Db_openNdx(a, u"missing"), -1);
    EXPECT_EQ(nq_Db_openNdx(a, nullptr), -1);
    EXPECT_EQ(nq_Db_openNdx(9, u"ByName"), -1);
}

TEST_F(DbRegistry, CloseNdxRoundsDownAndAlwaysGivesOne) {
    const int id = open(make_db("a.db3", table_sql("a")));
    ASSERT_EQ(nq_Db_createNdx(id, u"T1", u"NAME"), 100);
    ASSERT_EQ(nq_Db_createNdx(id, u"T2", u"QTY"), 200);
    EXPECT_EQ(nq_Db_closeNdx(199), 1);
    EXPECT_EQ(nq_Db_openNdx(id, u"T1"), -1);
    EXPECT_EQ(nq_Db_openNdx(id, u"T2"), 200);
    EXPECT_EQ(nq_Db_closeNdx(199), 1);  // nothing left to close
    EXPECT_EQ(nq_Db_closeNdx(5000), 1);
}

TEST_F(DbRegistry, TagsOutliveTheirTable) {
    const std::string path = make_db("a.db3", table_sql("a"));
    const int id = open(path);
    ASSERT_EQ(nq_Db_createNdx(id, u"T1", u"NAME"), 100);
    nq_Db_closeDb(id);
    EXPECT_EQ(nq_Db_openNdx(id, u"T1"), -1);  // no table
    // The next table with that number finds the old tag.
    ASSERT_EQ(open(path), id);
    EXPECT_EQ(nq_Db_openNdx(id, u"T1"), 100);
}

TEST_F(DbRegistry, RendxAndCreateDbRefuse) {
    EXPECT_EQ(nq_Db_rendx(), -1);
    const std::string path = dir.file("new.db3");
    DbFldList *structure = nq_DbFldList_create(u"A", u"", nullptr);
    EXPECT_EQ(nq_Db_createDb(lib_name(path).c_str(), structure), -1);
    EXPECT_FALSE(nqtest::file_exists(path));
    EXPECT_EQ(nq_DbRef_sel(0), nullptr);
    nq_DbFldList_destroy(structure);
}

// ---- Opening ----

TEST_F(DbOpen, TablesAreNumberedAndNumbersComeBack) {
    const std::string a = make_db("a.db3", table_sql("a"));
    const std::string b = make_db("b.db3", table_sql("b"));
    EXPECT_EQ(open(a), 0);
    EXPECT_EQ(open(b), 1);
    // After closing number 1 the next open gets 1 again.
    EXPECT_EQ(nq_Db_closeDb(1), 1);
    EXPECT_EQ(open(b), 1);
    // After closing 0 with 1 still open, the next gets 2.
    EXPECT_EQ(nq_Db_closeDb(0), 1);
    EXPECT_EQ(open(a), 2);
}

TEST_F(DbOpen, Db3GetsAPrivateConnectionByFile) {
    const std::string path = make_db("pipe.db3", table_sql("pipe"));
    const int id = open(path);
    ASSERT_EQ(id, 0);
    DbRefNode *node = nq_DbRef_sel(id);
    ASSERT_NE(node, nullptr);
    EXPECT_NE(node->conn, nullptr);
    EXPECT_EQ(node->stmt, nullptr);
    EXPECT_EQ(node->fields, nullptr);
    EXPECT_EQ(node->state, 0u);
    EXPECT_EQ(narrow(node->fileName), narrow(lib_name(path).c_str()));
    // The driver opens the file itself, so it gets the operating system's name.
    ASSERT_EQ(driver_calls().connections.size(), 1u);
    EXPECT_EQ(driver_calls().connections[0], "Driver=SQLite3 ODBC Driver;Database=" + path + ";");
    // A second table gets a connection of its own.
    const int other = open(make_db("b.db3", table_sql("b")));
    EXPECT_NE(nq_DbRef_sel(other)->conn, node->conn);
}

TEST_F(DbOpen, NameWithoutPointOpensTheDb3File) {
    const std::string path = make_db("pipe.db3", table_sql("pipe"));
    const std::u16string bare = lib_name(dir.file("pipe"));
    const int id = nq_Db_openDb(bare.c_str());
    ASSERT_GE(id, 0);
    EXPECT_EQ(narrow(nq_DbRef_sel(id)->fileName), narrow(bare.c_str()) + ".db3");
    EXPECT_EQ(nq_Db_topRec(id), 1);  // empty table
    EXPECT_EQ(driver_calls().statements.back(), "SELECT  *  FROM pipe");
}

TEST_F(DbOpen, NameWithoutPointIsRefusedWhenTooLongForItsBuffer) {
    // 256 characters and ".db3" do not fit 260 with the terminator.
    std::u16string name = u"C:\\";
    name.append(253, u'x');
    EXPECT_EQ(nq_Db_openDb(name.c_str()), -1);
    EXPECT_EQ(nq_DbRef_add(u"next"), 0);  // no number was taken
}

TEST_F(DbOpen, ExtensionCaseDoesNotCount) {
    const std::string path = make_db("PIPE.DB3", table_sql("PIPE"));
    const int id = open(path);
    ASSERT_GE(id, 0);
    EXPECT_EQ(driver_calls().connections.size(), 1u);
}

TEST_F(DbOpen, MdbAndAccdbGoToTheSameSqliteDriver) {
    const std::string mdb = make_db("old.mdb", table_sql("old"));
    const std::string accdb = make_db("new.ACCDB", table_sql("new"));
    EXPECT_EQ(open(mdb), 0);
    EXPECT_EQ(open(accdb), 1);
    ASSERT_EQ(driver_calls().connections.size(), 2u);
    EXPECT_EQ(driver_calls().connections[0], "Driver=SQLite3 ODBC Driver;Database=" + mdb + ";");
    EXPECT_EQ(driver_calls().connections[1], "Driver=SQLite3 ODBC Driver;Database=" + accdb + ";");
    // And they are read as any SQLite table is.
    dbtest::sqlite_exec(mdb, "INSERT INTO old VALUES ('a', 1);");
    EXPECT_EQ(nq_Db_topRec(0), 0);
    EXPECT_EQ(dbtest::current_row(0, {u"NAME", u"QTY"}), "a|1");
}

TEST_F(DbOpen, MissingFileGivesMinusOneAndTakesNoNumber) {
    EXPECT_EQ(open(dir.file("missing.db3")), -1);
    EXPECT_EQ(open(dir.file("missing")), -1);
    EXPECT_TRUE(driver_calls().connections.empty());
    EXPECT_EQ(open(make_db("a.db3", table_sql("a"))), 0);
}

TEST_F(DbOpen, OtherExtensionGivesMinusOneAndTakesNoNumber) {
    const std::string text = dir.file("notes.txt");
    nqtest::write_file(text, "text");
    EXPECT_EQ(open(text), -1);
    const std::string sqlite = make_db("data.sqlite", table_sql("data"));
    EXPECT_EQ(open(sqlite), -1);
    EXPECT_TRUE(driver_calls().connections.empty());
    EXPECT_EQ(nq_DbRef_sel(0), nullptr);
    EXPECT_EQ(open(make_db("a.db3", table_sql("a"))), 0);
}

TEST_F(DbOpen, NullNameGivesMinusOne) {
    EXPECT_EQ(nq_Db_openDb(nullptr), -1);
    EXPECT_EQ(nq_Db_openDbEx(nullptr, 1), -1);
}

TEST_F(DbOpen, FlagHasNoEffect) {
    const std::string path = make_db("a.db3", table_sql("a"));
    EXPECT_EQ(nq_Db_openDbEx(lib_name(path).c_str(), 0), 0);
    EXPECT_EQ(nq_Db_openDbEx(lib_name(path).c_str(), 12345), 1);
}

TEST_F(DbOpen, FailedConnectionKeepsItsNumberTaken) {
    // A folder passes the existence test; the driver cannot open it.
    const std::string folder = dir.file("folder.db3");
    std::filesystem::create_directory(folder);
    nqtest::CaptureFd out(1);
    EXPECT_EQ(open(folder), -1);
    EXPECT_EQ(out.stop(), "Connect to Test DataSource failed.");
    DbRefNode *node = nq_DbRef_sel(0);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(narrow(node->fileName), narrow(lib_name(folder).c_str()));
    EXPECT_EQ(open(make_db("a.db3", table_sql("a"))), 1);
    // The table that never opened fails at the first read.
    EXPECT_EQ(nq_Db_topRec(0), 1);
    EXPECT_EQ(nq_Db_eof(0), 1);
}

TEST_F(DbOpen, FileThatIsNotADatabaseOpensAndFailsAtTheQuery) {
    const std::string junk = dir.file("junk.db3");
    nqtest::write_file(junk, "This file holds plain text and no database pages at all.\n");
    const int id = open(junk);
    ASSERT_GE(id, 0);
    nqtest::CaptureFd out(1);
    EXPECT_EQ(nq_Db_topRec(id), 1);
    EXPECT_EQ(out.stop(), "SQL query failed.");
    EXPECT_EQ(nq_Db_eof(id), 1);
    EXPECT_EQ(nq_Db_getRecordCount(id), 0);
    EXPECT_EQ(nq_Db_readRec(id), nullptr);
}

TEST_F(DbOpen, CloseDbAlwaysGivesOne) {
    EXPECT_EQ(nq_Db_closeDb(0), 1);
    EXPECT_EQ(nq_Db_closeDb(-7), 1);
    const int id = open(make_db("a.db3", table_sql("a") + "INSERT INTO a VALUES ('x', 1);"));
    ASSERT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(nq_Db_closeDb(id), 1);
    EXPECT_EQ(nq_DbRef_sel(id), nullptr);
    EXPECT_EQ(nq_Db_eof(id), 1);
    EXPECT_EQ(nq_Db_closeDb(id), 1);
}

TEST_F(DbOpen, ClosedTableGivesTheMissingTableResults) {
    const int id = open(make_db("a.db3", table_sql("a") + "INSERT INTO a VALUES ('x', 1);"));
    ASSERT_EQ(nq_Db_topRec(id), 0);
    nq_Db_closeDb(id);
    EXPECT_EQ(nq_Db_topRec(id), 0);
    EXPECT_EQ(nq_Db_nextRec(id), 3);
    EXPECT_EQ(nq_Db_prevRec(id, 0), 3);
    EXPECT_EQ(nq_Db_botRec(id), 3);
    EXPECT_EQ(nq_Db_readRec(id), nullptr);
    EXPECT_EQ(nq_Db_struct(id), nullptr);
    EXPECT_EQ(nq_Db_appRec(id), 1);
    DbFldList *rec = nq_DbFldList_create(u"NAME", u"y", nullptr);
    EXPECT_EQ(nq_Db_modRec(id, rec), 1);
    nq_DbFldList_destroy(rec);
    EXPECT_EQ(nq_Db_getFldStr(id, u"NAME"), nullptr);
    EXPECT_EQ(nq_Db_seekStr(u"x", id, 0), 1);
    EXPECT_EQ(nq_Db_getRecordCount(id), 0);
    EXPECT_EQ(nq_Db_eof(id), 1);
}

TEST_F(DbOpen, CloseAllAbandonsOpenTables) {
    const std::string path = make_db("a.db3", table_sql("a") + "INSERT INTO a VALUES ('x', 1);");
    ASSERT_EQ(open(path), 0);
    ASSERT_EQ(nq_Db_topRec(0), 0);
    EXPECT_EQ(nq_Db_closeAll(), 0);
    EXPECT_EQ(nq_Db_eof(0), 1);
    // Numbering starts again, and the file opens again.
    ASSERT_EQ(open(path), 0);
    EXPECT_EQ(nq_Db_topRec(0), 0);
    EXPECT_EQ(dbtest::current_row(0, {u"NAME"}), "x");
}

// The one shared connection is made once per process, so everything about it is one test.
TEST_F(DbOpen, DbfTablesShareOneConnectionMadeOnceWithFreshRegistries) {
    const int first = open(make_db("first.db3", table_sql("first")));
    ASSERT_EQ(first, 0);
    ASSERT_EQ(nq_Db_createNdx(first, u"T1", u"NAME"), 100);
    const std::string dbf = dir.file("PIPE.DBF");
    nqtest::write_file(dbf, "any bytes: only existence is tested");

    nqtest::CaptureFd out(1);
    const int id = open(dbf);  // upper-case DBF takes the ".dbf" row
    EXPECT_EQ(out.stop(), "Connect to Test DataSource failed.");
    // The data source by name, the user given with length 0.
    ASSERT_EQ(driver_calls().dataSources.size(), 1u);
    EXPECT_EQ(driver_calls().dataSources[0], "dBase for Zelmar|");
    EXPECT_EQ(driver_calls().connections.size(), 1u);  // the ".db3" one only

    // The registries were replaced: numbering starts again, and the earlier table and its
    // tag no longer resolve.
    EXPECT_EQ(id, 0);
    ASSERT_NE(nq_DbRef_sel(0), nullptr);
    EXPECT_EQ(narrow(nq_DbRef_sel(0)->fileName), narrow(lib_name(dbf).c_str()));
    EXPECT_EQ(nq_DbRef_sel(0)->fileName[0], u'C');
    EXPECT_EQ(nq_DbTagRef_selNdx(100), nullptr);

    // A second ".dbf" table shares the connection, and nothing is printed again.
    const std::string other = dir.file("other.dbf");
    nqtest::write_file(other, "x");
    nqtest::CaptureFd quiet(1);
    const int second = open(other);
    nq_Db_init();
    EXPECT_EQ(quiet.stop(), "");
    EXPECT_EQ(second, 1);
    EXPECT_EQ(nq_DbRef_sel(second)->conn, nq_DbRef_sel(id)->conn);
    EXPECT_EQ(driver_calls().dataSources.size(), 1u);
    ASSERT_NE(nq_DbRef_sel(1), nullptr);  // nq_Db_init did not replace them again

    // The connection never came up: reading fails before any statement is sent.
    const std::size_t sent = driver_calls().statements.size();
    nqtest::CaptureFd reading(1);
    EXPECT_EQ(nq_Db_topRec(id), 1);
    EXPECT_EQ(nq_Db_getRecordCount(id), 0);
    EXPECT_EQ(reading.stop(), "");
    EXPECT_EQ(driver_calls().statements.size(), sent);
    EXPECT_EQ(nq_Db_eof(id), 1);

    // A missing ".dbf" file still fails before any connection.
    EXPECT_EQ(open(dir.file("missing.dbf")), -1);
}

// The table text of ".dbf" tables, seen through a data source that does answer: in a
// process of its own, where "dBase for Zelmar" is served by the SQLite driver. SQLite cannot
// parse the bracketed names, so each statement fails after reaching the driver.
TEST_F(DbOpen, DbfTableTextReachesTheDriverBracketed) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    auto child = [this] {
        const std::string setup = dir.file("alt");
        std::filesystem::create_directory(setup);
        nqtest::write_file(setup + "/odbcinst.ini",
                           nqtest::read_file(dbtest::odbc_setup_folder() + "/odbcinst.ini"));
        nqtest::write_file(setup + "/odbc.ini", "[dBase for Zelmar]\nDriver=SQLite3 ODBC Driver\nDatabase=" +
                                                    dir.file("served.db3") + "\n");
        dbtest::sqlite_exec(dir.file("served.db3"), "CREATE TABLE t (A INTEGER);");
        setenv("ODBCSYSINI", setup.c_str(), 1);
        setenv("ODBCINI", (setup + "/odbc.ini").c_str(), 1);

        const std::string dbf = dir.file("pipe.dbf");
        nqtest::write_file(dbf, "x");
        nqtest::CaptureFd out(1);
        const int id = open(dbf);
        nq_Db_topRec(id);
        nq_Db_getRecordCount(id);
        nq_Db_appRec(id);
        DbFldList *rec = nq_DbFldList_create(u"NAME", u"abc", nullptr);
        nq_Db_modRec(id, rec);
        nq_DbFldList_destroy(rec);
        // A relative name has no backslash, so the bracket stays open.
        if (chdir(dir.path().c_str()) != 0) std::_Exit(2);
        const int relative = nq_Db_openDb(u"pipe.dbf");
        nq_Db_topRec(relative);
        const std::string printed = out.stop();

        const std::string folder = narrow(lib_name(dir.path()).c_str());
        const std::vector<std::string> expected = {
            "SELECT  *  FROM [" + folder + "]\\pipe.dbf",
            "select count(*) from [" + folder + "]\\pipe.dbf",
            "INSERT INTO [" + folder + "]\\pipe.dbf ([NAME]) VALUES ('abc')",
            "SELECT  *  FROM [pipe.dbf",
        };
        const bool same = driver_calls().statements == expected && driver_calls().connections.empty() &&
                          printed == "SQL query failed.SQL query failed.SQL query failed.";
        for (const std::string &s : driver_calls().statements) std::fprintf(stderr, "sent: %s\n", s.c_str());
        std::fprintf(stderr, "printed: %s\n%s\n", printed.c_str(), same ? "as expected" : "differs");
        std::fflush(stderr);
        std::_Exit(same ? 0 : 1);
    };
    EXPECT_EXIT(child(), ::testing::ExitedWithCode(0), "as expected");
}

}  // namespace
