// The bridge into the table engine: a DbFldNode moved into a column of an open table, the
// record write and the number conversions under their exported names.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "nq_tls20an.h"
#include "table_engine.h"
#include "test_support.h"

namespace {

class Bridge : public ::testing::Test {
protected:
    void SetUp() override {
        engine = engine4_new(1);
        ASSERT_NE(engine, nullptr);
        engine->off_error = 1;
        engine->err_field = 0;  // as a bridge engine: a missing column is no error
        const column_info columns[] = {{"NAME", 'C', 10, 0}, {"SIZE", 'N', 8, 2}, {"RATE", 'F', 10, 3},
                                       {"COUNT", 'N', 6, 0}, {"DONE", 'L', 1, 0}, {"MADE", 'D', 8, 0},
                                       {nullptr, 0, 0, 0}};
        path = dir.file("PIPES.DBF");
        table = table4_create(engine, path.c_str(), columns, nullptr);
        ASSERT_NE(table, nullptr);
        ASSERT_EQ(table4_append_blank(table), 0);
        ASSERT_EQ(table4_go(table, 1), 0);
    }
    void TearDown() override {
        if (table) table4_close(table);
        engine4_end(engine);
        engine4_free(engine);
    }
    // The column's bytes in the record, as they stand.
    std::string text(const char *name) {
        const column4 *column = table4_column(table, name);
        return std::string(column4_ptr(column), column->length);
    }
    // A node as the record operations make it.
    DbFldNode *node(const nq_wchar *name, const nq_wchar *value, nq_wchar type) {
        DbFldNode *n = nq_DbFldNode_new(name, value, 10, 0, type);
        EXPECT_NE(n, nullptr);
        return n;
    }

    nqtest::TempDir dir;
    std::string path;
    engine4 *engine = nullptr;
    table4 *table = nullptr;
};

}  // namespace

TEST_F(Bridge, TextGoesInBlankPadded) {
    DbFldNode *n = node(u"NAME", u"P-101", u'C');
    EXPECT_EQ(nq_Db_updFld(table, n), 0);
    EXPECT_EQ(text("NAME"), "P-101     ");
    nq_DbFldNode_destroy(n);
}

TEST_F(Bridge, NumbersGoInAsDoubles) {
    DbFldNode *size = node(u"SIZE", u"12.5", u'N');
    DbFldNode *rate = node(u"RATE", u"  3.25", u'F');
    EXPECT_EQ(nq_Db_updFld(table, size), 0);
    EXPECT_EQ(nq_Db_updFld(table, rate), 0);
    EXPECT_EQ(text("SIZE"), "   12.50");
    EXPECT_EQ(text("RATE"), "     3.250");
    nq_DbFldNode_destroy(size);
    nq_DbFldNode_destroy(rate);
}

TEST_F(Bridge, TypeLGoesInAsAnInteger) {
    // The letter means an integer column of the record layer, whatever the column holds.
    DbFldNode *count = node(u"COUNT", u"42", u'L');
    EXPECT_EQ(nq_Db_updFld(table, count), 0);
    EXPECT_EQ(text("COUNT"), "    42");
    nq_DbFldNode_destroy(count);
}

TEST_F(Bridge, OtherTypesGoInAsText) {
    DbFldNode *made = node(u"MADE", u"20261121", u'T');
    DbFldNode *done = node(u"DONE", u"T", u'C');
    EXPECT_EQ(nq_Db_updFld(table, made), 0);
    EXPECT_EQ(nq_Db_updFld(table, done), 0);
    EXPECT_EQ(text("MADE"), "20261121");
    EXPECT_EQ(text("DONE"), "T");
    nq_DbFldNode_destroy(made);
    nq_DbFldNode_destroy(done);
}

TEST_F(Bridge, NameIsFoundRegardlessOfCase) {
    DbFldNode *n = node(u"name", u"lower", u'C');
    EXPECT_EQ(nq_Db_updFld(table, n), 0);
    EXPECT_EQ(text("NAME"), "lower     ");
    nq_DbFldNode_destroy(n);
}

TEST_F(Bridge, MissingColumnOrValueGivesOne) {
    DbFldNode *missing = node(u"NOSUCH", u"x", u'C');
    EXPECT_EQ(nq_Db_updFld(table, missing), 1);
    nq_DbFldNode_destroy(missing);
    DbFldNode *empty = node(u"NAME", nullptr, u'C');
    EXPECT_EQ(nq_Db_updFld(table, empty), 1);
    EXPECT_EQ(text("NAME"), std::string(10, ' '));
    nq_DbFldNode_destroy(empty);
    EXPECT_EQ(nq_Db_updFld(nullptr, nullptr), 1);
    EXPECT_EQ(nq_Db_updFld(table, nullptr), 1);
}

TEST_F(Bridge, RecordWriteStoresTheAssignedValues) {
    DbFldNode *n = node(u"NAME", u"WRITTEN", u'C');
    nq_Db_updFld(table, n);
    EXPECT_EQ(nq_d4write(table, 1), 0);
    table4_close(table);
    table = table4_open(engine, path.c_str());
    ASSERT_NE(table, nullptr);
    ASSERT_EQ(table4_go(table, 1), 0);
    EXPECT_EQ(text("NAME"), "WRITTEN   ");
    EXPECT_EQ(nq_d4write(table, 0), -1);
    nq_DbFldNode_destroy(n);
}

TEST(BridgeConversions, ReadNumberText) {
    EXPECT_DOUBLE_EQ(nq_c4atod("  12.75", 7), 12.75);
    EXPECT_DOUBLE_EQ(nq_c4atod("12.75", 2), 12.0);  // only the given length counts
    EXPECT_EQ(nq_c4atoi("  -42", 5), -42);
    EXPECT_EQ(nq_c4atoi("123456", 3), 123);
}

TEST_F(Bridge, MissingColumnUnderTheFieldGateLatchesTheEngineError) {
    engine->err_field = 1;
    DbFldNode *missing = node(u"NOSUCH", u"x", u'C');
    EXPECT_EQ(nq_Db_updFld(table, missing), 1);
    EXPECT_EQ(engine->error_code, -210);
    nq_DbFldNode_destroy(missing);
    err4set(engine, 0);
}
