// Database field lists: the node and its 63-character name, the value rule, both find forms,
// templates and field descriptions, the static result buffers, and the printer.
#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "nq_tls20an.h"
#include "test_support.h"

namespace {

using u16 = std::u16string;

u16 S(const nq_wchar *p) { return p ? u16(p) : u16(u"<null>"); }
std::u16string W(const std::string &s) { return std::u16string(s.begin(), s.end()); }

// Line numbers of the log depend on the source: each "(digits)" becomes "(N)".
std::string WithoutLineNumbers(const std::string &log) {
    std::string out;
    for (std::size_t i = 0; i < log.size(); ++i) {
        std::size_t j = i + 1;
        while (log[i] == '(' && j < log.size() && log[j] >= '0' && log[j] <= '9') ++j;
        if (log[i] == '(' && j > i + 1 && j < log.size() && log[j] == ')') {
            out += "(N)";
            i = j;
        } else {
            out += log[i];
        }
    }
    return out;
}

DbFldNode *Nth(DbFldList *list, int index) {
    return static_cast<DbFldNode *>(nq_LnkList_getNthSavePos(list, index));
}

class DbFld : public ::testing::Test {
protected:
    void SetUp() override { list = nq_DbFldList_create(nullptr); }
    void TearDown() override { nq_DbFldList_destroy(list); }
    DbFldList *list = nullptr;
    nqtest::TempDir dir;
    u16 Write(const std::string &name, const std::string &content) {
        nqtest::write_file(dir.file(name), content);
        return W(dir.file(name));
    }
};

}  // namespace

// The node

TEST(DbFldNodeLayout, FieldsInOrder) {
    EXPECT_EQ(offsetof(DbFldNode, name), 0u);
    EXPECT_EQ(sizeof(((DbFldNode *)nullptr)->name), 64 * sizeof(nq_wchar));
    EXPECT_EQ(offsetof(DbFldNode, value), 128u);
    EXPECT_LT(offsetof(DbFldNode, value), offsetof(DbFldNode, width));
    EXPECT_LT(offsetof(DbFldNode, width), offsetof(DbFldNode, precision));
    EXPECT_LT(offsetof(DbFldNode, precision), offsetof(DbFldNode, type));
}

TEST(DbFldNode_, NewKeepsTheFieldsAndUpperCasesTheType) {
    DbFldNode *n = nq_DbFldNode_new(u"Name", u"value", 12, 2, u'n');
    ASSERT_NE(n, nullptr);
    EXPECT_EQ(S(n->name), u"Name");  // the node keeps the name's case
    EXPECT_EQ(S(n->value), u"value");
    EXPECT_EQ(n->width, 12u);
    EXPECT_EQ(n->precision, 2u);
    EXPECT_EQ(n->type, u'N');
    EXPECT_EQ(nq_DbFldNode_destroy(n), 1);
    EXPECT_EQ(nq_DbFldNode_destroy(nullptr), 0);
}

TEST(DbFldNode_, ANameOf70CharactersKeepsItsFirst63) {
    const u16 name = u16(63, u'a') + u"bcdefgh";
    DbFldNode *n = nq_DbFldNode_new(name.c_str(), nullptr, 0, 0, u'C');
    EXPECT_EQ(S(n->name), u16(63, u'a'));
    nq_DbFldNode_destroy(n);
    DbFldNode *none = nq_DbFldNode_new(nullptr, nullptr, 0, 0, 0);
    EXPECT_EQ(S(none->name), u"");
    EXPECT_EQ(none->type, u'C');  // the default type
    EXPECT_EQ(none->value, nullptr);
    nq_DbFldNode_destroy(none);
}

TEST(DbFldNode_, ValueRuleTrimsByType) {
    DbFldNode *n = nq_DbFldNode_new(u"a", u"  12.50  ", 8, 2, u'N');
    DbFldNode *f = nq_DbFldNode_new(u"a", u"\t1.5 ", 8, 2, u'F');
    DbFldNode *c = nq_DbFldNode_new(u"a", u"  12.50  ", 8, 2, u'C');
    EXPECT_EQ(S(n->value), u"12.50");
    EXPECT_EQ(S(f->value), u"1.5");
    EXPECT_EQ(S(c->value), u"  12.50");  // leading blanks stay for text
    for (DbFldNode *x : {n, f, c}) nq_DbFldNode_destroy(x);
}

TEST(DbFldNode_, TrimmedValueKeepsItsBlockInPlace) {
    DbFldNode *n = nq_DbFldNode_new(u"a", u"          ", 10, 0, u'C');
    EXPECT_EQ(S(n->value), u"");
    // The block still has room for the full width: the record layer writes into it.
    for (int i = 0; i < 10; ++i) n->value[i] = u'x';
    n->value[10] = 0;
    EXPECT_EQ(S(n->value), u16(10, u'x'));
    nq_DbFldNode_destroy(n);
}

TEST(DbFldNode_, TracesEnteringOnlyUnderBit512) {
    nqtest::TempDir dir;
    const std::string path = dir.file("db.log");
    nq_Diag_disable();
    ASSERT_EQ(nq_Diag_setOutput(2, W(path).c_str()), 1);
    nq_Diag_setLevel(3);
    nq_Diag_setCondition(512);
    DbFldNode *n = nq_DbFldNode_new(u"a", u"b", 1, 0, u'C');
    nq_DbFldNode_destroy(n);
    nq_Diag_setLevel(2);
    nq_DbFldNode_destroy(nq_DbFldNode_new(u"a", u"b", 1, 0, u'C'));
    nq_Diag_setLevel(3);
    nq_Diag_setCondition(4);
    nq_DbFldNode_destroy(nq_DbFldNode_new(u"a", u"b", 1, 0, u'C'));
    nq_Diag_disable();
    nq_Diag_setOutput(1, nullptr);
    const std::string log = WithoutLineNumbers(nqtest::read_file(path));
    EXPECT_EQ(log,
              "dbfld.cpp (N) Entering nq_DbFldNode_new.\n"
              "dbfld.cpp (N) Entering nq_StrListNode_destroy.\n");
}

// Lists

TEST_F(DbFld, CreateMakesCNodesWithUpperCaseNames) {
    DbFldList *l = nq_DbFldList_create(u"first", u"one", u"Second", nullptr, u"third", u" three ", nullptr);
    ASSERT_EQ(nq_DbFldList_length(l), 3);
    EXPECT_EQ(S(Nth(l, 0)->name), u"FIRST");
    EXPECT_EQ(S(Nth(l, 1)->name), u"SECOND");
    EXPECT_EQ(S(Nth(l, 1)->value), u"");  // a null value gives the empty text
    EXPECT_EQ(S(Nth(l, 2)->value), u" three");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Nth(l, i)->type, u'C');
        EXPECT_EQ(Nth(l, i)->width, 0u);
        EXPECT_EQ(Nth(l, i)->precision, 0u);
    }
    nq_DbFldList_destroy(l);
    EXPECT_EQ(nq_DbFldList_length(list), 0);  // a first name of null gives an empty list
}

TEST_F(DbFld, InsertsAtBothEnds) {
    EXPECT_EQ(nq_DbFldList_insEnd(list, u"b", u"2", 1, 0, u'C'), 1);
    EXPECT_EQ(nq_DbFldList_insStart(list, u"a", u"1", 1, 0, u'C'), 1);
    EXPECT_EQ(nq_DbFldList_insEnd(list, u"c", nullptr, 1, 0, u'd'), 1);
    EXPECT_EQ(S(Nth(list, 0)->name), u"a");
    EXPECT_EQ(S(Nth(list, 1)->name), u"b");
    EXPECT_EQ(Nth(list, 2)->type, u'D');
    EXPECT_EQ(Nth(list, 2)->value, nullptr);
    EXPECT_EQ(nq_DbFldList_insEnd(nullptr, u"x", u"y", 1, 0, u'C'), 0);
    EXPECT_EQ(nq_DbFldList_insStart(nullptr, u"x", u"y", 1, 0, u'C'), 0);
}

TEST_F(DbFld, CopyTrimsValuesAndMovesTheSourceCursorPastTheEnd) {
    nq_DbFldList_insEnd(list, u"n", u"12", 5, 1, u'N');
    nq_DbFldList_insEnd(list, u"t", u"text", 10, 0, u'C');
    nq_DbFldList_insEnd(list, u"z", nullptr, 3, 0, u'L');
    Nth(list, 0)->value[0] = u' ';  // a value written in place by the record layer
    nq_DbFldList_start(list);
    DbFldList *copy = nq_DbFldList_copy(list);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(nq_DbFldList_eol(list), 1);
    ASSERT_EQ(nq_DbFldList_length(copy), 3);
    EXPECT_EQ(S(Nth(copy, 0)->value), u"2");
    EXPECT_NE(Nth(copy, 1)->value, Nth(list, 1)->value);
    EXPECT_EQ(S(Nth(copy, 1)->value), u"text");
    EXPECT_EQ(Nth(copy, 1)->width, 10u);
    EXPECT_EQ(Nth(copy, 0)->precision, 1u);
    EXPECT_EQ(Nth(copy, 2)->value, nullptr);
    EXPECT_EQ(Nth(copy, 2)->type, u'L');
    nq_DbFldList_destroy(copy);
    EXPECT_EQ(nq_DbFldList_copy(nullptr), nullptr);
}

TEST_F(DbFld, DestroyOfNullIsIgnored) { EXPECT_EQ(nq_DbFldList_destroy(nullptr), 0); }

TEST_F(DbFld, ListOperationsUnderThisFamilysNames) {
    nq_DbFldList_insEnd(list, u"a", u"1", 1, 0, u'C');
    nq_DbFldList_insEnd(list, u"b", u"2", 1, 0, u'C');
    EXPECT_EQ(nq_DbFldList_length(list), 2);
    EXPECT_EQ(nq_DbFldList_start(list), 1);
    EXPECT_EQ(S(nq_DbFldList_getCurrName(list)), u"a");
    EXPECT_EQ(nq_DbFldList_next(list), 1);
    EXPECT_EQ(S(nq_DbFldList_getCurrName(list)), u"b");
    EXPECT_EQ(nq_DbFldList_prev(list), 1);
    EXPECT_EQ(nq_DbFldList_end(list), 1);
    EXPECT_EQ(S(nq_DbFldList_getCurrName(list)), u"b");
    EXPECT_EQ(nq_DbFldList_next(list), 0);
    EXPECT_EQ(nq_DbFldList_eol(list), 1);
    EXPECT_EQ(nq_DbFldList_length(nullptr), 0);
}

// Finding

TEST_F(DbFld, FindUpperCasesOnlyTheNameAskedFor) {
    nq_DbFldList_insEnd(list, u"lower", u"1", 1, 0, u'C');
    nq_DbFldList_insEnd(list, u"UPPER", u"2", 1, 0, u'C');
    EXPECT_EQ(nq_DbFldList_find(list, u"upper"), 1);
    EXPECT_EQ(S(nq_DbFldList_getCurrStr(list)), u"2");
    EXPECT_EQ(nq_DbFldList_find(list, u"lower"), 0);  // a stored lower-case name is never found
    EXPECT_EQ(nq_DbFldList_eol(list), 1);
    DbFldNode *n = nq_DbFldList_findFld(list, u"LOWER");
    ASSERT_NE(n, nullptr);
    EXPECT_EQ(S(n->value), u"1");
    EXPECT_EQ(nq_DbFldList_getCurrStr(list), nq_DbFldList_getCurrStr(list));
    EXPECT_EQ(S(nq_DbFldList_getCurrStr(list)), u"1");  // the cursor stays on it
    EXPECT_EQ(nq_DbFldList_findFld(list, u"none"), nullptr);
    EXPECT_EQ(nq_DbFldList_find(nullptr, u"x"), 0);
    EXPECT_EQ(nq_DbFldList_find(list, nullptr), 0);
    EXPECT_EQ(nq_DbFldList_findFld(nullptr, u"x"), nullptr);
    EXPECT_EQ(nq_DbFldList_findFld(list, nullptr), nullptr);
}

TEST_F(DbFld, DelFldFindsByTheUpperCaseName) {
    nq_DbFldList_insEnd(list, u"lower", u"1", 1, 0, u'C');
    nq_DbFldList_insEnd(list, u"KEEP", u"2", 1, 0, u'C');
    nq_DbFldList_insEnd(list, u"GONE", u"3", 1, 0, u'C');
    EXPECT_EQ(nq_DbFldList_delFld(list, u"gone"), 1);
    EXPECT_EQ(nq_DbFldList_delFld(list, u"lower"), 0);
    EXPECT_EQ(nq_DbFldList_delFld(nullptr, u"keep"), 0);
    EXPECT_EQ(nq_DbFldList_delFld(list, nullptr), 0);
    EXPECT_EQ(nq_DbFldList_length(list), 2);
    nq_DbFldList_start(list);
    EXPECT_EQ(nq_DbFldList_delCurr(list), 1);
    EXPECT_EQ(S(Nth(list, 0)->name), u"KEEP");
}

TEST_F(DbFld, FreeValuesKeepsTheNodes) {
    nq_DbFldList_insEnd(list, u"a", u"1", 1, 0, u'C');
    nq_DbFldList_insEnd(list, u"b", nullptr, 1, 0, u'C');
    nq_DbFldList_insEnd(list, u"c", u"3", 1, 0, u'C');
    nq_DbFldList_freeValues(list);
    EXPECT_EQ(nq_DbFldList_length(list), 3);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(Nth(list, i)->value, nullptr);
    nq_DbFldList_start(list);
    nq_DbFldList_freeValues(list);
    EXPECT_EQ(nq_DbFldList_eol(list), 1);
    nq_DbFldList_freeValues(nullptr);
}

// Reading

TEST_F(DbFld, CurrentReadersWithoutANode) {
    EXPECT_EQ(S(nq_DbFldList_getCurrName(list)), u"");
    EXPECT_EQ(S(nq_DbFldList_getCurrStr(list)), u"");
    EXPECT_EQ(S(nq_DbFldList_getCurrStrPadded(list)), u"");
    EXPECT_EQ(nq_DbFldList_getCurrInt(list), 0);
    EXPECT_EQ(nq_DbFldList_getCurrDouble(list), 0.0);
    EXPECT_EQ(nq_DbFldList_getCurrWidth(list), 0u);
    EXPECT_EQ(nq_DbFldList_getCurrPrec(list), 0u);
    EXPECT_EQ(nq_DbFldList_getCurrType(list), u'C');
    EXPECT_EQ(nq_DbFldList_getCurrType(nullptr), u'C');
    EXPECT_EQ(S(nq_DbFldList_getCurrStr(nullptr)), u"");
}

TEST_F(DbFld, CurrentReaders) {
    nq_DbFldList_insEnd(list, u"amount", u" 12.75 ", 8, 2, u'N');
    nq_DbFldList_start(list);
    EXPECT_EQ(S(nq_DbFldList_getCurrName(list)), u"amount");
    EXPECT_EQ(S(nq_DbFldList_getCurrStr(list)), u"12.75");
    EXPECT_EQ(S(nq_DbFldList_getCurrStrPadded(list)), u"12.75   ");
    EXPECT_EQ(nq_DbFldList_getCurrInt(list), 12);
    EXPECT_EQ(nq_DbFldList_getCurrDouble(list), 12.75);
    EXPECT_EQ(nq_DbFldList_getCurrWidth(list), 8u);
    EXPECT_EQ(nq_DbFldList_getCurrPrec(list), 2u);
    EXPECT_EQ(nq_DbFldList_getCurrType(list), u'N');
}

TEST_F(DbFld, EachReaderHasAStaticBufferOfItsOwn) {
    nq_DbFldList_insEnd(list, u"name", u"value", 7, 0, u'C');
    nq_DbFldList_start(list);
    nq_wchar *name = nq_DbFldList_getCurrName(list);
    nq_wchar *str = nq_DbFldList_getCurrStr(list);
    nq_wchar *padded = nq_DbFldList_getCurrStrPadded(list);
    nq_wchar *nth = nq_DbFldList_getNthStr(list, 0);
    nq_wchar *nthPadded = nq_DbFldList_getNthStrPadded(list, 0);
    EXPECT_EQ(S(name), u"name");
    EXPECT_EQ(S(str), u"value");
    EXPECT_EQ(S(padded), u"value  ");
    EXPECT_EQ(S(nth), u"value");
    EXPECT_EQ(S(nthPadded), u"value  ");
    EXPECT_EQ(nq_DbFldList_getCurrName(list), name);  // the same buffer, call after call
}

TEST_F(DbFld, TextResultsAreCutAt512AndPaddingStopsThere) {
    const u16 longValue(700, u'v');
    nq_DbFldList_insEnd(list, u"memo", longValue.c_str(), 100000, 0, u'M');
    nq_DbFldList_insEnd(list, u"short", u"ab", 1000, 0, u'C');
    nq_DbFldList_start(list);
    EXPECT_EQ(S(nq_DbFldList_getCurrStr(list)), u16(512, u'v'));
    EXPECT_EQ(S(nq_DbFldList_getCurrStrPadded(list)), u16(512, u'v'));
    EXPECT_EQ(S(Nth(list, 0)->value), longValue);  // the node keeps it whole
    nq_DbFldList_next(list);
    EXPECT_EQ(S(nq_DbFldList_getCurrStrPadded(list)), u"ab" + u16(510, u' '));
    EXPECT_EQ(S(nq_DbFldList_getNthStrPadded(list, 1)), u"ab" + u16(510, u' '));
    EXPECT_EQ(S(nq_DbFldList_getNthStr(list, 0)), u16(512, u'v'));
}

TEST_F(DbFld, NumbersAreReadFromTheFirst512Characters) {
    const u16 digits = u"7" + u16(600, u'0');
    nq_DbFldList_insEnd(list, u"n", u"-42abc", 5, 0, u'N');
    nq_DbFldList_insEnd(list, u"e", nullptr, 5, 0, u'N');
    nq_DbFldList_insEnd(list, u"d", (u"1." + digits).c_str(), 5, 0, u'N');
    nq_DbFldList_start(list);
    EXPECT_EQ(nq_DbFldList_getCurrInt(list), -42);
    EXPECT_EQ(nq_DbFldList_getCurrDouble(list), -42.0);
    nq_DbFldList_next(list);
    EXPECT_EQ(nq_DbFldList_getCurrInt(list), 0);
    EXPECT_EQ(nq_DbFldList_getCurrDouble(list), 0.0);
    nq_DbFldList_next(list);
    EXPECT_DOUBLE_EQ(nq_DbFldList_getCurrDouble(list), 1.7);
}

TEST_F(DbFld, GetFldValFindsWithoutCaseAndCopiesWhole) {
    const u16 longValue(2000, u'w');
    nq_DbFldList_insEnd(list, u"Memo", longValue.c_str(), 10, 0, u'M');
    nq_DbFldList_insEnd(list, u"none", nullptr, 10, 0, u'C');
    EXPECT_EQ(S(nq_DbFldList_getFldVal(list, u"MEMO")), longValue);
    EXPECT_EQ(S(nq_DbFldList_getFldVal(list, u"none")), u"");
    EXPECT_EQ(S(nq_DbFldList_getFldVal(list, u"missing")), u"");
    EXPECT_EQ(S(nq_DbFldList_getFldVal(nullptr, u"memo")), u"");
}

TEST_F(DbFld, NthReadersMoveTheCursorAndAreEmptyPastTheEnd) {
    nq_DbFldList_insEnd(list, u"a", u"1", 3, 0, u'C');
    nq_DbFldList_insEnd(list, u"b", u"2", 3, 0, u'C');
    EXPECT_EQ(S(nq_DbFldList_getNthStr(list, 1)), u"2");
    EXPECT_EQ(S(nq_DbFldList_getCurrName(list)), u"b");
    EXPECT_EQ(S(nq_DbFldList_getNthStrPadded(list, 0)), u"1  ");
    EXPECT_EQ(S(nq_DbFldList_getNthStr(list, 2)), u"");
    EXPECT_EQ(S(nq_DbFldList_getNthStrPadded(list, 5)), u"");
    EXPECT_EQ(S(nq_DbFldList_getNthStr(nullptr, 0)), u"");
}

// Setting

TEST_F(DbFld, ModifyingValuesFollowsTheValueRule) {
    nq_DbFldList_insEnd(list, u"num", u"1", 5, 0, u'N');
    nq_DbFldList_insEnd(list, u"txt", u"a", 5, 0, u'C');
    nq_DbFldList_start(list);
    EXPECT_EQ(nq_DbFldList_modCurrVal(list, u"  7  "), 1);
    EXPECT_EQ(S(Nth(list, 0)->value), u"7");
    EXPECT_EQ(nq_DbFldList_modFldVal(list, u"TXT", u"  b  "), 1);
    EXPECT_EQ(S(Nth(list, 1)->value), u"  b");
    EXPECT_EQ(nq_DbFldList_modNthVal(list, 0, nullptr), 0);  // a null value leaves null
    EXPECT_EQ(Nth(list, 0)->value, nullptr);
    EXPECT_EQ(nq_DbFldList_modNthVal(list, 0, u"9"), 1);
    EXPECT_EQ(S(Nth(list, 0)->value), u"9");
    EXPECT_EQ(nq_DbFldList_modFldVal(list, u"missing", u"x"), 0);
    EXPECT_EQ(nq_DbFldList_modNthVal(list, 2, u"x"), 0);
    EXPECT_EQ(nq_DbFldList_modCurrVal(list, u"x"), 0);  // past the end now
    EXPECT_EQ(nq_DbFldList_modCurrVal(nullptr, u"x"), 0);
}

TEST_F(DbFld, ModifyingWidthAndPrecisionYieldsTheOldNumber) {
    EXPECT_EQ(nq_DbFldList_modCurrWidth(list, 5), 0u);  // empty list: nothing changes
    EXPECT_EQ(nq_DbFldList_modCurrPrec(list, 5), 0u);
    nq_DbFldList_insEnd(list, u"a", u"1", 8, 2, u'N');
    nq_DbFldList_start(list);
    EXPECT_EQ(nq_DbFldList_modCurrWidth(list, 10), 8u);
    EXPECT_EQ(nq_DbFldList_modCurrPrec(list, 3), 2u);
    EXPECT_EQ(nq_DbFldList_getCurrWidth(list), 10u);
    EXPECT_EQ(nq_DbFldList_getCurrPrec(list), 3u);
}

// Field descriptions and templates

TEST(DbFldDesc, AGoodLineGivesNameTypeWidthAndPrecision) {
    nq_wchar name[NQ_DBFLD_NAME_SIZE];
    nq_wchar type = 0;
    int width = -1, precision = -1;
    EXPECT_EQ(nq_DbFldList_parseFldDesc(u"name C012000", name, &type, &width, &precision), 1);
    EXPECT_EQ(S(name), u"NAME");
    EXPECT_EQ(type, u'C');
    EXPECT_EQ(width, 12);
    EXPECT_EQ(precision, 0);
    EXPECT_EQ(nq_DbFldList_parseFldDesc(u"  price    n010002 trailing words", name, &type, &width, &precision),
              1);
    EXPECT_EQ(S(name), u"PRICE");
    EXPECT_EQ(type, u'N');
    EXPECT_EQ(width, 10);
    EXPECT_EQ(precision, 2);
}

TEST(DbFldDesc, BadLines) {
    nq_wchar name[NQ_DBFLD_NAME_SIZE];
    nq_wchar type;
    int width, precision;
    EXPECT_EQ(nq_DbFldList_parseFldDesc(u"NAME C01200", name, &type, &width, &precision), 0);  // 6 characters
    EXPECT_EQ(nq_DbFldList_parseFldDesc(u"NAME", name, &type, &width, &precision), 0);
    EXPECT_EQ(nq_DbFldList_parseFldDesc(u"", name, &type, &width, &precision), 0);
    EXPECT_EQ(nq_DbFldList_parseFldDesc(u"      ", name, &type, &width, &precision), 0);
    EXPECT_EQ(nq_DbFldList_parseFldDesc(nullptr, name, &type, &width, &precision), 0);
}

TEST(DbFldDesc, ALongNameIsCutAndNullOutputsAreSkipped) {
    nq_wchar name[NQ_DBFLD_NAME_SIZE];
    const u16 line = u16(200, u'x') + u" C005001";
    EXPECT_EQ(nq_DbFldList_parseFldDesc(line.c_str(), name, nullptr, nullptr, nullptr), 1);
    EXPECT_EQ(S(name), u16(63, u'X'));
    EXPECT_EQ(nq_DbFldList_parseFldDesc(u"a L001000", nullptr, nullptr, nullptr, nullptr), 1);
}

TEST_F(DbFld, TemplateBuildsNodesFromGoodLinesAndSkipsTheRest) {
    const u16 path = Write("t.tpl",
                           "ID N005000\r\n"
                           "NAME C030000\n"
                           "bad C01200\n"
                           "\n"
                           "; remark\n"
                           "   \n"
                           "price n010002\n"
                           "LAST D008000");
    DbFldList *t = nq_DbFldList_fromTemplate(path.c_str());
    ASSERT_NE(t, nullptr);
    ASSERT_EQ(nq_DbFldList_length(t), 4);
    EXPECT_EQ(S(Nth(t, 0)->name), u"ID");
    EXPECT_EQ(Nth(t, 0)->width, 5u);
    EXPECT_EQ(S(Nth(t, 1)->name), u"NAME");
    EXPECT_EQ(Nth(t, 1)->width, 30u);
    EXPECT_EQ(S(Nth(t, 2)->name), u"PRICE");
    EXPECT_EQ(Nth(t, 2)->type, u'N');
    EXPECT_EQ(Nth(t, 2)->precision, 2u);
    EXPECT_EQ(S(Nth(t, 3)->name), u"LAST");
    for (int i = 0; i < 4; ++i) EXPECT_EQ(Nth(t, i)->value, nullptr);
    nq_DbFldList_destroy(t);
}

TEST_F(DbFld, TemplatesKnowNoCommentsOnlyTheShapeOfALine) {
    DbFldList *t = nq_DbFldList_fromTemplate(Write("c.tpl", "; comment\n").c_str());
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(S(Nth(t, 0)->name), u";");
    EXPECT_EQ(Nth(t, 0)->type, u'C');
    EXPECT_EQ(Nth(t, 0)->width, 0u);
    nq_DbFldList_destroy(t);
}

TEST_F(DbFld, TemplateWithoutAGoodLineOrFileIsNull) {
    EXPECT_EQ(nq_DbFldList_fromTemplate(Write("empty.tpl", "").c_str()), nullptr);
    EXPECT_EQ(nq_DbFldList_fromTemplate(Write("bad.tpl", "NAME C01200\nX\n\n").c_str()), nullptr);
    EXPECT_EQ(nq_DbFldList_fromTemplate(W(dir.file("missing.tpl")).c_str()), nullptr);
    EXPECT_EQ(nq_DbFldList_fromTemplate(W(dir.path()).c_str()), nullptr);
    EXPECT_EQ(nq_DbFldList_fromTemplate(nullptr), nullptr);
}

TEST_F(DbFld, TemplateOfBinaryJunkAndOverlongLines) {
    std::string junk;
    for (int i = 0; i < 4096; ++i) {
        const char c = char((i * 37 + 11) & 0xFF);
        junk += c == ' ' ? '\x01' : c;  // without blanks no word is followed by a description
    }
    EXPECT_EQ(nq_DbFldList_fromTemplate(Write("junk.tpl", junk).c_str()), nullptr);
    // A line longer than 256 characters is cut there and its rest dropped.
    const std::string longLine = std::string(300, 'L') + " C001000\n";
    DbFldList *t = nq_DbFldList_fromTemplate(Write("long.tpl", longLine + junk + "\nOK C002000\n").c_str());
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(S(Nth(t, nq_DbFldList_length(t) - 1)->name), u"OK");
    nq_DbFldList_destroy(t);
}

// Printing

TEST_F(DbFld, PrintListWritesNameTypeAndValueAndJoinsANullValueLine) {
    nq_DbFldList_insEnd(list, u"ID", u"17", 5, 0, u'N');
    nq_DbFldList_insEnd(list, u"EMPTY", nullptr, 5, 0, u'C');
    nq_DbFldList_insEnd(list, u"A_RATHER_LONG_NAME", u"text", 5, 0, u'c');
    nqtest::CaptureFd capture(1);
    nq_DbFldList_printList(list);
    nq_DbFldList_printList(nullptr);
    EXPECT_EQ(capture.stop(), "ID" + std::string(15, ' ') + "N:17\n" + "EMPTY" + std::string(12, ' ') +
                                  "A_RATHER_LONG_NAME C:text\n");
}
