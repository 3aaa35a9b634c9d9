// The fields of the current record: finding them by name and number, assigning text, numbers,
// dates and truth in their fixed-width forms, and reading them back.
#include <gtest/gtest.h>

#include <string>

#include "table4_test_support.h"

namespace {

using tabletest::box_text;

class Table4Column : public tabletest::TableTest {
protected:
    table4 *table = nullptr;
    void SetUp() override {
        const column_info columns[] = {{"NAME", 'C', 6, 0}, {"COUNT", 'N', 5, 0}, {"PRICE", 'N', 8, 2},
                                       {"RATE", 'F', 10, 4}, {"SEEN", 'D', 8, 0}, {"OK", 'L', 1, 0},
                                       {nullptr, 0, 0, 0}};
        table = create("COL.DBF", columns);
        ASSERT_NE(table, nullptr);
        ASSERT_EQ(table4_append_blank(table), 0);
        table->record_changed = 0;
    }
    void TearDown() override {
        if (table) table4_close(table);
    }
    column4 *col(const char *name) { return table4_column(table, name); }
    std::string text(const char *name) {
        char out[64];
        const uint32_t n = column4_text(col(name), out, sizeof(out));
        return std::string(out, n);
    }
};

TEST_F(Table4Column, FoundByNameInAnyCaseAndByNumber) {
    EXPECT_EQ(col("NAME"), &table->columns[0]);
    EXPECT_EQ(col("price"), &table->columns[2]);
    EXPECT_EQ(col("Ok  "), &table->columns[5]);
    EXPECT_EQ(table4_column_j(table, 1), &table->columns[0]);
    EXPECT_EQ(table4_column_j(table, 6), &table->columns[5]);
    EXPECT_EQ(table4_column_j(table, 0), nullptr);
    EXPECT_EQ(table4_column_j(table, 7), nullptr);
    EXPECT_EQ(table4_column_j(nullptr, 1), nullptr);
    EXPECT_EQ(boxes.count(), 0u);
}

TEST_F(Table4Column, AnUnknownNameIsMinus210OrQuietlyNull) {
    EXPECT_EQ(col("MISSING"), nullptr);
    EXPECT_EQ(engine->error_code, -210);
    ASSERT_EQ(boxes.count(), 1u);
    EXPECT_EQ(boxes.last().text, box_text(-210, {"Unrecognized Field Name", "MISSING"}));
    engine->error_code = 0;
    engine->err_field = 0;
    EXPECT_EQ(col("MISSING"), nullptr);
    EXPECT_EQ(engine->error_code, 0);
    EXPECT_EQ(boxes.count(), 1u);
    // Only ten characters of a name count.
    EXPECT_EQ(col("NAMEXXXXXXXX"), nullptr);
    EXPECT_EQ(table4_column(table, nullptr), nullptr);
    EXPECT_EQ(table4_column(nullptr, "NAME"), nullptr);
}

TEST_F(Table4Column, TextIsBlankPaddedOrCut) {
    column4_assign(col("NAME"), "Ab");
    EXPECT_EQ(field(table, "NAME"), "Ab    ");
    EXPECT_EQ(table->record_changed, 1);
    column4_assign(col("NAME"), "Longer than six");
    EXPECT_EQ(field(table, "NAME"), "Longer");
    column4_assign_n(col("NAME"), "xyz", 2);
    EXPECT_EQ(field(table, "NAME"), "xy    ");
    column4_assign(col("NAME"), "");
    EXPECT_EQ(field(table, "NAME"), "      ");
    column4_assign(col("NAME"), nullptr);
    EXPECT_EQ(field(table, "NAME"), "      ");
    // A NUL ends the text even inside the length.
    column4_assign_n(col("NAME"), "a\0bc", 4);
    EXPECT_EQ(field(table, "NAME"), "a     ");
    EXPECT_EQ(text("NAME"), "a     ");
    column4_assign(nullptr, "x");  // ignored
}

TEST_F(Table4Column, NumbersAreRightJustifiedByTheDecimals) {
    column4_assign_long(col("COUNT"), 42);
    EXPECT_EQ(field(table, "COUNT"), "   42");
    column4_assign_long(col("COUNT"), -7);
    EXPECT_EQ(field(table, "COUNT"), "   -7");
    column4_assign_long(col("COUNT"), 123456);
    EXPECT_EQ(field(table, "COUNT"), "*****");
    column4_assign_double(col("PRICE"), 3.14159);
    EXPECT_EQ(field(table, "PRICE"), "    3.14");
    column4_assign_double(col("PRICE"), -0.5);
    EXPECT_EQ(field(table, "PRICE"), "   -0.50");
    column4_assign_long(col("PRICE"), 12);
    EXPECT_EQ(field(table, "PRICE"), "   12.00");
    column4_assign_double(col("RATE"), 1.0 / 3);
    EXPECT_EQ(field(table, "RATE"), "    0.3333");
    column4_assign_double(col("COUNT"), 2.7);
    EXPECT_EQ(field(table, "COUNT"), "    3");
    column4_assign_double(col("NAME"), 12);
    EXPECT_EQ(field(table, "NAME"), "    12");
}

TEST_F(Table4Column, NumbersReadBack) {
    column4_assign(col("PRICE"), "  -12.75");
    EXPECT_DOUBLE_EQ(column4_double(col("PRICE")), -12.75);
    EXPECT_EQ(column4_long(col("PRICE")), -12);
    column4_assign(col("COUNT"), "  310");
    EXPECT_EQ(column4_long(col("COUNT")), 310);
    EXPECT_DOUBLE_EQ(column4_double(col("COUNT")), 310.0);
    column4_assign(col("COUNT"), "     ");
    EXPECT_EQ(column4_long(col("COUNT")), 0);
    column4_assign(col("NAME"), "77abc");
    EXPECT_EQ(column4_long(col("NAME")), 77);
    column4_assign(col("PRICE"), "99999999");
    EXPECT_EQ(column4_long(col("PRICE")), 99999999);
}

TEST_F(Table4Column, DatesAreWrittenAsCCYYMMDDAndReadAsJulianDays) {
    column4_assign_date(col("SEEN"), "20240229");
    EXPECT_EQ(field(table, "SEEN"), "20240229");
    const int32_t day = column4_julian(col("SEEN"));
    EXPECT_EQ(day, date4julian("20240229"));
    EXPECT_EQ(column4_long(col("SEEN")), day);
    EXPECT_DOUBLE_EQ(column4_double(col("SEEN")), day);
    column4_assign_julian(col("SEEN"), day + 1);
    EXPECT_EQ(field(table, "SEEN"), "20240301");
    column4_assign_long(col("SEEN"), day);
    EXPECT_EQ(field(table, "SEEN"), "20240229");
    column4_assign_double(col("SEEN"), day - 60.0);
    EXPECT_EQ(field(table, "SEEN"), "20231231");
    column4_assign_julian(col("SEEN"), 0);
    EXPECT_EQ(field(table, "SEEN"), "        ");
    EXPECT_EQ(column4_julian(col("SEEN")), 0);
    column4_assign(col("SEEN"), "20230230");
    EXPECT_EQ(column4_julian(col("SEEN")), -1);
    EXPECT_EQ(column4_julian(col("NAME")), -1);  // not a date field
}

TEST_F(Table4Column, TruthIsTOrFAndReadsTrueForTAndYInEitherCase) {
    column4_assign_logical(col("OK"), 1);
    EXPECT_EQ(field(table, "OK"), "T");
    EXPECT_EQ(column4_true(col("OK")), 1);
    column4_assign_logical(col("OK"), 0);
    EXPECT_EQ(field(table, "OK"), "F");
    EXPECT_EQ(column4_true(col("OK")), 0);
    for (const char *letter : {"T", "t", "Y", "y"}) {
        column4_assign(col("OK"), letter);
        EXPECT_EQ(column4_true(col("OK")), 1) << letter;
        EXPECT_EQ(column4_long(col("OK")), 1) << letter;
    }
    for (const char *letter : {"F", "n", "?", " ", "1"}) {
        column4_assign(col("OK"), letter);
        EXPECT_EQ(column4_true(col("OK")), 0) << letter;
    }
    column4_assign_long(col("OK"), 5);
    EXPECT_EQ(field(table, "OK"), "T");
    column4_assign_double(col("OK"), 0.0);
    EXPECT_EQ(field(table, "OK"), "F");
    EXPECT_DOUBLE_EQ(column4_double(col("OK")), 0.0);
}

TEST_F(Table4Column, TextReadsAreCutToTheBuffer) {
    column4_assign(col("NAME"), "abcdef");
    char small[4];
    EXPECT_EQ(column4_text(col("NAME"), small, sizeof(small)), 3u);
    EXPECT_STREQ(small, "abc");
    EXPECT_EQ(column4_text(col("NAME"), small, 1), 0u);
    EXPECT_STREQ(small, "");
    EXPECT_EQ(column4_text(col("NAME"), nullptr, 5), 0u);
    EXPECT_EQ(column4_text(nullptr, small, sizeof(small)), 0u);
    EXPECT_STREQ(small, "");
    EXPECT_EQ(column4_ptr(nullptr), nullptr);
}

TEST_F(Table4Column, ValuesSurviveAWriteAndARead) {
    column4_assign(col("NAME"), "Bob");
    column4_assign_long(col("COUNT"), 9);
    column4_assign_double(col("PRICE"), 1.25);
    column4_assign_double(col("RATE"), -2.5);
    column4_assign_date(col("SEEN"), "19991231");
    column4_assign_logical(col("OK"), 1);
    ASSERT_EQ(table4_append(table), 0);
    ASSERT_EQ(table4_go(table, 1), 0);
    ASSERT_EQ(table4_go(table, 2), 0);
    EXPECT_EQ(text("NAME"), "Bob   ");
    EXPECT_EQ(column4_long(col("COUNT")), 9);
    EXPECT_DOUBLE_EQ(column4_double(col("PRICE")), 1.25);
    EXPECT_DOUBLE_EQ(column4_double(col("RATE")), -2.5);
    EXPECT_EQ(field(table, "RATE"), "   -2.5000");
    EXPECT_EQ(text("SEEN"), "19991231");
    EXPECT_EQ(column4_true(col("OK")), 1);
}

}  // namespace
