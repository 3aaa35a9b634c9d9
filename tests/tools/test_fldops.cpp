// Whole field lists: concatenate, combine and copy with the StrList loss, copyFld, the
// one-sided compare and diff, converting a node to a list, transforms, the console and
// diagnostic printers byte for byte, and lists built from setting lines and table fields.
#include <gtest/gtest.h>

#include <cmath>
#include <climits>
#include <string>

#include "nq_tls20an.h"
#include "test_support.h"

namespace {

using u16 = std::u16string;

u16 S(const nq_wchar *p) { return p ? u16(p) : u16(u"<null>"); }
std::u16string W(const std::string &s) { return std::u16string(s.begin(), s.end()); }

FldNode *Nth(FldList *list, int index) { return static_cast<FldNode *>(nq_LnkList_getNthSavePos(list, index)); }

// The fields as "NAME:T" from head to tail, nested lists in brackets.
std::string Shape(FldList *list) {
    std::string out;
    if (!list) return "<null>";
    for (LnkListNode *n = list->head; n; n = n->next) {
        auto *f = static_cast<FldNode *>(n->data);
        if (!out.empty()) out += ",";
        for (const nq_wchar *c = f->name; c && *c; ++c) out += char(*c);
        out += ":";
        out += char(f->type);
        if (f->type == 'V') out += "[" + Shape(f->value.list) + "]";
    }
    return out;
}

// The prefix of a top-level line ("%-16s ") and of a nested one.
std::string L0(std::string name) {
    if (name.size() < 16) name.resize(16, ' ');
    return name + " ";
}
std::string Lv(int level) { return std::string(17 + 3 * (level - 1), ' '); }

std::string Printed(FldList *list) {
    nqtest::CaptureFd capture(1);
    nq_FldList_printList(list);
    return capture.stop();
}

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

class FldOps : public ::testing::Test {
protected:
    void SetUp() override {
        a = nq_FldList_create(nullptr);
        b = nq_FldList_create(nullptr);
    }
    void TearDown() override {
        nq_FldList_destroy(a);
        nq_FldList_destroy(b);
    }
    FldList *a = nullptr;
    FldList *b = nullptr;
};

// A list with one field of every type: C, H, I, L, N, D, M, O, P, U, V (holding an Int
// and a Char), S.
FldList *EveryType() {
    const Point p{1, 2, 3};
    const Vector v{4, 5, 6};
    FldList *list = nq_FldList_create(u"c", 'C', u"text", u"h", 'H', u"hand", u"i", 'I', 1, u"l", 'L', 2,
                                      u"n", 'N', 2.5, nullptr);
    nq_FldList_appDpoint(list, u"d", &p);
    nq_FldList_appMpoint(list, u"m", &p);
    nq_FldList_appVector(list, u"o", &v);
    nq_FldList_appPoint(list, u"p", &p);
    nq_FldList_appUnknown(list, u"u");
    nq_FldList_appList(list, u"v", nq_FldList_create(u"x", 'I', 7, u"y", 'C', u"why", nullptr));
    nq_FldList_appStrList(list, u"s", nq_StrList_create(u"one", u"two", nullptr));
    return list;
}

class DiagLog : public ::testing::Test {
protected:
    void SetUp() override {
        nq_Diag_disable();
        path = dir.file("fld.log");
        ASSERT_EQ(nq_Diag_setOutput(2, W(path).c_str()), 1);
    }
    void TearDown() override {
        nq_Diag_disable();
        nq_Diag_setOutput(1, nullptr);
    }
    std::string Log() { return WithoutLineNumbers(nqtest::read_file(path)); }
    nqtest::TempDir dir;
    std::string path;
};

}  // namespace

// concatenate, combine, copy

TEST_F(FldOps, ConcatenateAppendsEveryFieldWithItsType) {
    FldList *src = EveryType();
    nq_FldList_appInt(a, u"first", 0);
    EXPECT_EQ(nq_FldList_concatenate(a, src), 1);
    EXPECT_EQ(Shape(a), "FIRST:I,C:C,H:H,I:I,L:L,N:N,D:D,M:M,O:O,P:P,U:U,V:V[X:I,Y:C],S:U");
    EXPECT_EQ(S(Nth(a, 1)->value.str), u"text");
    EXPECT_NE(Nth(a, 1)->value.str, Nth(src, 0)->value.str);  // a copy of the string
    EXPECT_EQ(S(Nth(a, 2)->value.str), u"HAND");
    EXPECT_EQ(Nth(a, 3)->value.i, 1);
    EXPECT_EQ(Nth(a, 4)->value.i, 2);
    EXPECT_EQ(Nth(a, 5)->value.d, 2.5);
    EXPECT_EQ(Nth(a, 6)->value.point.z, 3.0);
    EXPECT_EQ(Nth(a, 8)->value.vector.x, 4.0);
    EXPECT_NE(Nth(a, 11)->value.list, Nth(src, 10)->value.list);  // a deep copy
    EXPECT_EQ(Nth(a, 12)->value.ptr, nullptr);  // the StrList is lost
    nq_FldList_destroy(src);
    // The copies outlive the source.
    EXPECT_EQ(S(Nth(Nth(a, 11)->value.list, 1)->value.str), u"why");
}

TEST_F(FldOps, ConcatenateKeepsDuplicatesAndNullArgumentsYieldZero) {
    nq_FldList_appInt(b, u"n", 1);
    nq_FldList_appInt(b, u"n", 2);
    nq_FldList_appInt(a, u"n", 0);
    EXPECT_EQ(nq_FldList_concatenate(a, b), 1);
    EXPECT_EQ(Shape(a), "N:I,N:I,N:I");
    EXPECT_EQ(nq_FldList_concatenate(nullptr, b), 0);
    EXPECT_EQ(nq_FldList_concatenate(a, nullptr), 0);
    EXPECT_EQ(nq_FldList_count(a), 3);
}

TEST_F(FldOps, ConcatenateAListWithItselfDoublesIt) {
    nq_FldList_appInt(a, u"x", 1);
    nq_FldList_appChar(a, u"y", u"t");
    EXPECT_EQ(nq_FldList_concatenate(a, a), 1);
    EXPECT_EQ(Shape(a), "X:I,Y:C,X:I,Y:C");
}

TEST_F(FldOps, CombineOverwritesValueAndTypeAndKeepsTheOrderOfDst) {
    nq_FldList_appInt(a, u"one", 1);
    nq_FldList_appChar(a, u"two", u"old");
    nq_FldList_appReal(a, u"three", 3.0);
    nq_FldList_appReal(b, u"TWO", 2.5);
    nq_FldList_appChar(b, u"four", u"new");
    EXPECT_EQ(nq_FldList_combine(a, b), 1);
    EXPECT_EQ(Shape(a), "ONE:I,TWO:N,THREE:N,FOUR:C");
    EXPECT_EQ(Nth(a, 1)->value.d, 2.5);
    EXPECT_EQ(S(Nth(a, 3)->value.str), u"new");
    EXPECT_EQ(nq_FldList_combine(nullptr, b), 0);
    EXPECT_EQ(nq_FldList_combine(a, nullptr), 0);
}

TEST_F(FldOps, CombineTurnsAStrListIntoUnknownAndCopiesListsDeep) {
    FldList *src = EveryType();
    nq_FldList_appChar(a, u"s", u"was text");
    nq_FldList_appInt(a, u"v", 1);
    EXPECT_EQ(nq_FldList_combine(a, src), 1);
    EXPECT_EQ(Shape(a), "S:U,V:V[X:I,Y:C],C:C,H:H,I:I,L:L,N:N,D:D,M:M,O:O,P:P,U:U");
    nq_FldList_destroy(src);
}

TEST_F(FldOps, CombineReleasesTheListsItReplaces) {
    // Replacing nested lists and string lists through combine leaks nothing (sanitizer build).
    nq_FldList_appList(a, u"v", nq_FldList_create(u"old", 'I', 1, nullptr));
    nq_FldList_appStrList(a, u"s", nq_StrList_create(u"old", nullptr));
    nq_FldList_appList(b, u"v", nq_FldList_create(u"new", 'I', 2, nullptr));
    nq_FldList_appInt(b, u"s", 5);
    EXPECT_EQ(nq_FldList_combine(a, b), 1);
    EXPECT_EQ(Shape(a), "V:V[NEW:I],S:I");
    EXPECT_EQ(Nth(a, 1)->value.i, 5);
}

TEST_F(FldOps, CombineAListWithItselfSetsTheFirstFieldOfEachName) {
    nq_FldList_appChar(a, u"x", u"text");
    nq_FldList_appList(a, u"v", nq_FldList_create(u"in", 'N', 1.5, nullptr));
    nq_FldList_appInt(a, u"x", 3);  // a second X: its value goes to the first
    EXPECT_EQ(nq_FldList_combine(a, a), 1);
    EXPECT_EQ(Shape(a), "X:I,V:V[IN:N],X:I");
    EXPECT_EQ(Nth(a, 0)->value.i, 3);
}

TEST(FldCopy, CopyOfAStrListFieldIsUnknownOfThatName) {
    FldList *src = nq_FldList_create(nullptr);
    nq_FldList_appStrList(src, u"names", nq_StrList_create(u"a", nullptr));
    FldList *copy = nq_FldList_copy(src);
    EXPECT_EQ(Shape(copy), "NAMES:U");
    EXPECT_EQ(Nth(copy, 0)->value.ptr, nullptr);
    nq_FldList_destroy(src);
    nq_FldList_destroy(copy);
}

TEST(FldCopy, CopyIsDeepAndKeepsDuplicates) {
    FldList *src = EveryType();
    nq_FldList_appInt(src, u"i", 99);
    FldList *copy = nq_FldList_copy(src);
    EXPECT_EQ(Shape(copy), "C:C,H:H,I:I,L:L,N:N,D:D,M:M,O:O,P:P,U:U,V:V[X:I,Y:C],S:U,I:I");
    nq_FldList_destroy(src);
    EXPECT_EQ(S(Nth(copy, 0)->value.str), u"text");
    nq_FldList_destroy(copy);
}

TEST(FldCopy, CopyOfNullIsAnEmptyList) {
    FldList *copy = nq_FldList_copy(nullptr);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(nq_FldList_count(copy), 0);
    nq_FldList_destroy(copy);
}

TEST(FldCopy, NullNestedListCopiesAsAnEmptyOne) {
    FldList *src = nq_FldList_create(nullptr);
    nq_FldList_appList(src, u"v", nullptr);
    FldList *copy = nq_FldList_copy(src);
    ASSERT_NE(Nth(copy, 0)->value.list, nullptr);
    EXPECT_EQ(nq_FldList_count(Nth(copy, 0)->value.list), 0);
    nq_FldList_destroy(src);
    nq_FldList_destroy(copy);
}

// copyFld

TEST_F(FldOps, CopyFldWritesEachTypeByItsModMember) {
    FldList *src = EveryType();
    const struct {
        const char16_t *name;
        char type;
    } cases[] = {{u"c", 'C'}, {u"h", 'C'}, {u"i", 'I'}, {u"l", 'L'}, {u"n", 'N'},
                 {u"d", 'D'}, {u"m", 'M'}, {u"o", 'O'}, {u"p", 'P'}};
    for (const auto &c : cases) {
        EXPECT_EQ(nq_FldList_copyFld(src, c.name, a, u"target"), 1);
        ASSERT_EQ(nq_FldList_count(a), 1);
        EXPECT_EQ(Nth(a, 0)->type, uint16_t(c.type)) << char(c.name[0]);
    }
    nq_FldList_copyFld(src, u"h", a, u"target");
    EXPECT_EQ(S(Nth(a, 0)->value.str), u"HAND");  // a Handle arrives as a Char
    nq_FldList_copyFld(src, u"o", a, u"target");
    EXPECT_EQ(Nth(a, 0)->value.vector.z, 6.0);
    nq_FldList_copyFld(src, u"l", a, u"target");
    EXPECT_EQ(Nth(a, 0)->value.i, 2);
    nq_FldList_copyFld(src, u"n", a, u"target");
    EXPECT_EQ(Nth(a, 0)->value.d, 2.5);
    nq_FldList_destroy(src);
}

TEST_F(FldOps, CopyFldOfOtherTypesWritesNothingAndSucceeds) {
    FldList *src = EveryType();
    for (auto name : {u"u", u"v", u"s"}) {
        EXPECT_EQ(nq_FldList_copyFld(src, name, a, u"target"), 1);
        EXPECT_EQ(nq_FldList_count(a), 0);
    }
    nq_FldList_destroy(src);
}

TEST_F(FldOps, CopyFldCutsAStringAt512) {
    const u16 text(700, u'k');
    nq_FldList_appChar(b, u"long", text.c_str());
    EXPECT_EQ(nq_FldList_copyFld(b, u"long", a, u"cut"), 1);
    EXPECT_EQ(S(Nth(a, 0)->value.str), u16(512, u'k'));
}

TEST_F(FldOps, CopyFldOverwritesAnExistingTargetAndANullCharArrivesEmpty) {
    nq_FldList_appChar(b, u"src", nullptr);
    nq_FldList_appInt(a, u"dst", 5);
    EXPECT_EQ(nq_FldList_copyFld(b, u"src", a, u"dst"), 1);
    EXPECT_EQ(Shape(a), "DST:C");
    EXPECT_EQ(S(Nth(a, 0)->value.str), u"");
}

TEST_F(FldOps, CopyFldWithinOneList) {
    nq_FldList_appReal(a, u"x", 1.5);
    EXPECT_EQ(nq_FldList_copyFld(a, u"x", a, u"y"), 1);
    EXPECT_EQ(Shape(a), "X:N,Y:N");
    EXPECT_EQ(Nth(a, 1)->value.d, 1.5);
}

TEST_F(FldOps, CopyFldOfAMissingFieldOrNullArgumentYieldsZero) {
    nq_FldList_appInt(b, u"x", 1);
    EXPECT_EQ(nq_FldList_copyFld(b, u"missing", a, u"y"), 0);
    EXPECT_EQ(nq_FldList_copyFld(nullptr, u"x", a, u"y"), 0);
    EXPECT_EQ(nq_FldList_copyFld(b, nullptr, a, u"y"), 0);
    EXPECT_EQ(nq_FldList_copyFld(b, u"x", nullptr, u"y"), 0);
    EXPECT_EQ(nq_FldList_copyFld(b, u"x", a, nullptr), 0);
    EXPECT_EQ(nq_FldList_count(a), 0);
}

// compareNode

TEST(FldCompare, NullNodeGivesMinusTwo) {
    FldNode *n = nq_FldList_newInt(u"a", 1);
    EXPECT_EQ(nq_FldList_compareNode(nullptr, n), -2);
    EXPECT_EQ(nq_FldList_compareNode(n, nullptr), -2);
    EXPECT_EQ(nq_FldList_compareNode(nullptr, nullptr), -2);
    nq_FldList_destroyNode(n);
}

TEST(FldCompare, TypesCompareAsNumbers) {
    FldNode *i = nq_FldList_newInt(u"a", 1);
    FldNode *c = nq_FldList_newChar(u"a", u"1");
    EXPECT_EQ(nq_FldList_compareNode(i, c), 1);  // I is above C
    EXPECT_EQ(nq_FldList_compareNode(c, i), -1);
    nq_FldList_destroyNode(i);
    nq_FldList_destroyNode(c);
}

TEST(FldCompare, RealsAreOneSided) {
    FldNode *one = nq_FldList_newReal(u"a", 1.0);
    FldNode *near = nq_FldList_newReal(u"a", 1.0005);
    FldNode *more = nq_FldList_newReal(u"a", 1.5);
    EXPECT_EQ(nq_FldList_compareNode(one, near), 0);
    EXPECT_EQ(nq_FldList_compareNode(one, more), -1);
    EXPECT_EQ(nq_FldList_compareNode(more, one), 0);
    EXPECT_EQ(nq_FldList_compareNode(one, one), 0);
    for (FldNode *n : {one, near, more}) nq_FldList_destroyNode(n);
}

TEST(FldCompare, IntegersAreOneSidedWithA32BitDifference) {
    FldNode *three = nq_FldList_newInt(u"a", 3);
    FldNode *five = nq_FldList_newInt(u"a", 5);
    FldNode *lthree = nq_FldList_newLong(u"a", 3);
    FldNode *lfive = nq_FldList_newLong(u"a", 5);
    FldNode *big = nq_FldList_newInt(u"a", INT_MAX);
    FldNode *minus = nq_FldList_newInt(u"a", -1);
    EXPECT_EQ(nq_FldList_compareNode(three, five), -1);
    EXPECT_EQ(nq_FldList_compareNode(five, three), 0);
    EXPECT_EQ(nq_FldList_compareNode(three, three), 0);
    EXPECT_EQ(nq_FldList_compareNode(lthree, lfive), -1);
    EXPECT_EQ(nq_FldList_compareNode(lfive, lthree), 0);
    EXPECT_EQ(nq_FldList_compareNode(big, minus), -1);  // the difference wraps below zero
    for (FldNode *n : {three, five, lthree, lfive, big, minus}) nq_FldList_destroyNode(n);
}

TEST(FldCompare, StringsGiveTheirCompareInAnySign) {
    FldNode *apple = nq_FldList_newChar(u"a", u"apple");
    FldNode *pear = nq_FldList_newChar(u"a", u"pear");
    FldNode *upper = nq_FldList_newChar(u"a", u"APPLE");
    FldNode *none = nq_FldList_newChar(u"a", nullptr);
    FldNode *h1 = nq_FldList_newHandle(u"a", u"x");
    FldNode *h2 = nq_FldList_newHandle(u"a", u"y");
    EXPECT_LT(nq_FldList_compareNode(apple, pear), 0);
    EXPECT_GT(nq_FldList_compareNode(pear, apple), 0);
    EXPECT_NE(nq_FldList_compareNode(apple, upper), 0);  // case counts
    EXPECT_EQ(nq_FldList_compareNode(apple, apple), 0);
    EXPECT_LT(nq_FldList_compareNode(none, apple), 0);  // a null string reads as empty
    EXPECT_LT(nq_FldList_compareNode(h1, h2), 0);
    for (FldNode *n : {apple, pear, upper, none, h1, h2}) nq_FldList_destroyNode(n);
}

TEST(FldCompare, PointsListsAndUnknownsAlwaysCompareEqual) {
    const Point p{0, 0, 0}, q{100, 200, 300};
    FldNode *np = nq_FldList_newPoint(u"a", &p);
    FldNode *nq = nq_FldList_newPoint(u"a", &q);
    FldNode *l1 = nq_FldList_newList(u"a", nullptr);
    FldNode *l2 = nq_FldList_newList(u"a", nullptr);
    FldNode *u1 = nq_FldList_newUnknown(u"a");
    FldNode *u2 = nq_FldList_newUnknown(u"b");
    EXPECT_EQ(nq_FldList_compareNode(np, nq), 0);
    EXPECT_EQ(nq_FldList_compareNode(nq, np), 0);
    EXPECT_EQ(nq_FldList_compareNode(l1, l2), 0);
    EXPECT_EQ(nq_FldList_compareNode(u1, u2), 0);
    for (FldNode *n : {np, nq, l1, l2, u1, u2}) nq_FldList_destroyNode(n);
}

// diff

TEST_F(FldOps, DiffOfListsDifferingOnlyInAPointIsNull) {
    const Point p{0, 0, 0}, q{5, 5, 5};
    nq_FldList_appPoint(a, u"p", &p);
    nq_FldList_appPoint(b, u"p", &q);
    EXPECT_EQ(nq_FldList_diff(a, b, 0), nullptr);
}

TEST_F(FldOps, DiffTakesAFieldOnlyWhenAIsBelowB) {
    nq_FldList_appInt(a, u"n", 5);
    nq_FldList_appInt(b, u"n", 3);
    EXPECT_EQ(nq_FldList_diff(a, b, 0), nullptr);
    FldList *d = nq_FldList_diff(b, a, 0);
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(Shape(d), "N:I");
    EXPECT_EQ(Nth(d, 0)->value.i, 3);
    EXPECT_NE(Nth(d, 0), Nth(b, 0));  // a copy: the nodes of the first list stay its own
    nq_FldList_destroy(d);
    EXPECT_EQ(Nth(b, 0)->value.i, 3);
}

TEST_F(FldOps, DiffIncludesMissingFieldsOnlyWhenAsked) {
    nq_FldList_appInt(a, u"both", 1);
    nq_FldList_appChar(a, u"onlya", u"x");
    nq_FldList_appInt(b, u"both", 1);
    nq_FldList_appChar(b, u"onlyb", u"y");
    EXPECT_EQ(nq_FldList_diff(a, b, 0), nullptr);
    FldList *d = nq_FldList_diff(a, b, 1);
    EXPECT_EQ(Shape(d), "ONLYA:C");  // fields only in b never appear
    nq_FldList_destroy(d);
}

TEST_F(FldOps, DiffOfDifferentTypesAndStrings) {
    nq_FldList_appChar(a, u"t", u"1");
    nq_FldList_appInt(b, u"t", 1);
    nq_FldList_appChar(a, u"s", u"abc");
    nq_FldList_appChar(b, u"s", u"abd");
    nq_FldList_appStrList(a, u"strs", nq_StrList_create(u"x", nullptr));
    nq_FldList_appStrList(b, u"strs", nq_StrList_create(u"y", nullptr));
    FldList *d = nq_FldList_diff(a, b, 0);
    EXPECT_EQ(Shape(d), "T:C,S:C");  // C below I, "abc" below "abd"; S compares equal
    nq_FldList_destroy(d);
}

TEST_F(FldOps, DiffSkipsNamelessFieldsAndHandlesNulls) {
    nq_FldList_appInt(a, nullptr, 1);
    nq_FldList_appInt(a, u"x", 1);
    EXPECT_EQ(nq_FldList_diff(nullptr, b, 1), nullptr);
    FldList *d = nq_FldList_diff(a, nullptr, 1);  // nothing can be found in no list
    EXPECT_EQ(Shape(d), "X:I");
    nq_FldList_destroy(d);
}

TEST_F(FldOps, DiffOfAListWithItselfIsNull) {
    nq_FldList_appInt(a, u"x", 5);
    nq_FldList_appInt(a, u"x", 3);
    nq_FldList_appChar(a, u"y", u"t");
    // Each node is compared with the first of its name: 3 is below 5.
    FldList *d = nq_FldList_diff(a, a, 1);
    EXPECT_EQ(Shape(d), "X:I");
    EXPECT_EQ(Nth(d, 0)->value.i, 3);
    nq_FldList_destroy(d);
    nq_FldList_delFld(a, u"x");
    nq_FldList_delFld(a, u"x");
    EXPECT_EQ(nq_FldList_diff(a, a, 1), nullptr);
}

TEST_F(FldOps, DiffWithALongNameDoesNotOverflow) {
    const u16 name(2000, u'N');
    nq_FldList_appInt(a, name.c_str(), 1);
    FldList *d = nq_FldList_diff(a, b, 1);
    ASSERT_NE(d, nullptr);
    EXPECT_EQ(S(Nth(d, 0)->name), name);
    nq_FldList_destroy(d);
}

// convertNodeToList

TEST_F(FldOps, ConvertMissingFieldAppendsAnEmptyListField) {
    nq_FldList_appInt(a, u"x", 1);
    EXPECT_EQ(nq_FldList_convertNodeToList(a, u"new"), nullptr);
    EXPECT_EQ(Shape(a), "X:I,NEW:V[<null>]");
    EXPECT_EQ(Nth(a, 1)->value.list, nullptr);
}

TEST_F(FldOps, ConvertOfAListFieldChangesNothing) {
    FldList *inner = nq_FldList_create(u"in", 'I', 1, nullptr);
    nq_FldList_appList(a, u"l", inner);
    EXPECT_EQ(nq_FldList_convertNodeToList(a, u"l"), nullptr);
    EXPECT_EQ(Nth(a, 0)->value.list, inner);
    EXPECT_EQ(Shape(a), "L:V[IN:I]");
}

TEST_F(FldOps, ConvertMovesTheNodeIntoANewListInItsPlace) {
    nq_FldList_appInt(a, u"before", 0);
    nq_FldList_appChar(a, u"field", u"value");
    nq_FldList_appInt(a, u"after", 2);
    FldNode *old = Nth(a, 1);
    nq_wchar *oldName = old->name;
    nq_wchar *oldValue = old->value.str;
    FldNode *made = nq_FldList_convertNodeToList(a, u"field");
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(Shape(a), "BEFORE:I,FIELD:V[FIELD:C],AFTER:I");
    EXPECT_EQ(Nth(a, 1), made);
    EXPECT_EQ(made->aux1, 1);
    EXPECT_EQ(Nth(made->value.list, 0), old);  // moved, not copied
    EXPECT_EQ(old->name, oldName);
    EXPECT_EQ(old->value.str, oldValue);
    EXPECT_EQ(nq_FldList_curr(a), made);
    EXPECT_EQ(nq_FldList_convertNodeToList(nullptr, u"x"), nullptr);
}

// applyTransform

class FldTransform : public FldOps {
protected:
    void SetUp() override {
        FldOps::SetUp();
        rotation = nq_RotMatrix_create();
        nq_RotMatrix_fromAngle(rotation, M_PI / 2);
        const Point p{1, 0, 0};
        const Vector v{1, 0, 0};
        nq_FldList_appPoint(a, u"p", &p);
        nq_FldList_appMpoint(a, u"m", &p);
        nq_FldList_appDpoint(a, u"d", &p);
        nq_FldList_appVector(a, u"o", &v);
        nq_FldList_appInt(a, u"i", 1);
        nq_FldList_appList(a, u"v", nq_FldList_create(u"p", 'P', 1.0, 0.0, 0.0, nullptr));
    }
    void TearDown() override {
        nq_RotMatrix_destroy(rotation);
        FldOps::TearDown();
    }
    static void ExpectPoint(const Point &p, double x, double y, double z) {
        EXPECT_NEAR(p.x, x, 1e-12);
        EXPECT_NEAR(p.y, y, 1e-12);
        EXPECT_NEAR(p.z, z, 1e-12);
    }
    Point rotated(double x, double y, double z) {
        Point p{x, y, z};
        nq_RotMatrix_rotatePoint(&p, rotation);
        return p;
    }
    RotMatrix *rotation = nullptr;
    const Point offset{10, 20, 30};
};

TEST_F(FldTransform, NullArgumentsYieldZero) {
    EXPECT_EQ(nq_FldList_applyTransform(nullptr, &offset, rotation, u"P"), 0);
    EXPECT_EQ(nq_FldList_applyTransform(a, nullptr, nullptr, u"P"), 0);
    EXPECT_EQ(nq_FldList_applyTransform(a, &offset, rotation, nullptr), 0);
    ExpectPoint(Nth(a, 0)->value.point, 1, 0, 0);
}

TEST_F(FldTransform, PositionsAreRotatedThenMovedDirectionsOnlyRotated) {
    const Point r = rotated(1, 0, 0);
    EXPECT_EQ(nq_FldList_applyTransform(a, &offset, rotation, u"PMDO"), 1);
    ExpectPoint(Nth(a, 0)->value.point, r.x + 10, r.y + 20, r.z + 30);
    ExpectPoint(Nth(a, 1)->value.point, r.x + 10, r.y + 20, r.z + 30);
    ExpectPoint(Nth(a, 2)->value.point, r.x, r.y, r.z);
    ExpectPoint(Nth(a, 3)->value.point, r.x, r.y, r.z);
    EXPECT_EQ(Nth(a, 4)->value.i, 1);
    // Nested lists are not entered.
    ExpectPoint(Nth(Nth(a, 5)->value.list, 0)->value.point, 1, 0, 0);
}

TEST_F(FldTransform, TypesFilterTheFields) {
    EXPECT_EQ(nq_FldList_applyTransform(a, &offset, rotation, u"P"), 1);
    const Point r = rotated(1, 0, 0);
    ExpectPoint(Nth(a, 0)->value.point, r.x + 10, r.y + 20, r.z + 30);
    for (int i = 1; i <= 3; ++i) ExpectPoint(Nth(a, i)->value.point, 1, 0, 0);
}

TEST_F(FldTransform, OffsetWithoutRotationLeavesDirectionsAndReportsOne) {
    EXPECT_EQ(nq_FldList_applyTransform(a, &offset, nullptr, u"PMDO"), 1);
    ExpectPoint(Nth(a, 0)->value.point, 11, 20, 30);
    ExpectPoint(Nth(a, 1)->value.point, 11, 20, 30);
    ExpectPoint(Nth(a, 2)->value.point, 1, 0, 0);
    ExpectPoint(Nth(a, 3)->value.point, 1, 0, 0);
}

TEST_F(FldTransform, RotationWithoutOffset) {
    const Point r = rotated(1, 0, 0);
    EXPECT_EQ(nq_FldList_applyTransform(a, nullptr, rotation, u"MO"), 1);
    ExpectPoint(Nth(a, 0)->value.point, 1, 0, 0);
    ExpectPoint(Nth(a, 1)->value.point, r.x, r.y, r.z);
    ExpectPoint(Nth(a, 2)->value.point, 1, 0, 0);
    ExpectPoint(Nth(a, 3)->value.point, r.x, r.y, r.z);
}

TEST_F(FldTransform, AFailingRotationIsReportedAndNoOffsetFollows) {
    Matrix *wrong = nq_Matrix_create(2, 2);
    EXPECT_EQ(nq_FldList_applyTransform(a, &offset, wrong, u"PD"), 0);
    ExpectPoint(Nth(a, 0)->value.point, 1, 0, 0);  // no translation after a failed turn
    nq_Matrix_destroy(wrong);
}

// Printing to the console

TEST(FldPrint, EachTypeInItsFormat) {
    FldList *list = EveryType();
    const std::string expected =
        L0("C") + "C:text\n" +
        L0("H") + "H:HAND\n" +
        L0("I") + "I:1\n" +
        L0("L") + "L:2\n" +
        L0("N") + "N:2.500000\n" +
        L0("D") + "D:1.000 2.000 3.000\n" +
        L0("M") + "M:1.000 2.000 3.000\n" +
        L0("O") + "O:4.000 5.000 6.000\n" +
        L0("P") + "P:1.000 2.000 3.000\n" +
        L0("U") + "<undefined>\n" +
        L0("V") + "\n" +
        Lv(1) + "I:7\n" +
        Lv(1) + "C:why\n" +
        L0("S") + "<undefined>\n";
    EXPECT_EQ(Printed(list), expected);
    nq_FldList_destroy(list);
}

TEST(FldPrint, NestedLevelsIndentWithoutNames) {
    FldList *deepest = nq_FldList_create(u"z", 'I', 3, nullptr);
    FldList *middle = nq_FldList_create(u"y", 'I', 2, nullptr);
    nq_FldList_appList(middle, u"deeper", deepest);
    FldList *top = nq_FldList_create(u"x", 'I', 1, nullptr);
    nq_FldList_appList(top, u"nested", middle);
    const std::string expected =
        L0("X") + "I:1\n" +
        L0("NESTED") + "\n" +
        Lv(1) + "I:2\n" +
        Lv(1) + "\n" +
        Lv(2) + "I:3\n";
    EXPECT_EQ(Printed(top), expected);
    nqtest::CaptureFd capture(1);
    nq_FldList_printLevelList(middle, 2);
    EXPECT_EQ(capture.stop(), std::string(20, ' ') + "I:2\n" + std::string(20, ' ') + "\n" +
                                  std::string(23, ' ') + "I:3\n");
    nq_FldList_destroy(top);
}

TEST(FldPrint, NullStringLeavesTheLineOpenAndLongNamesPrintWhole) {
    FldList *list = nq_FldList_create(nullptr);
    nq_FldList_appChar(list, u"empty", nullptr);
    nq_FldList_appLong(list, u"averyveryverylongname", -5);
    nq_FldList_appInt(list, nullptr, 9);  // no name: not printed at all
    nq_FldList_appList(list, u"nolist", nullptr);
    EXPECT_EQ(Printed(list), L0("EMPTY") + "AVERYVERYVERYLONGNAME L:-5\n" + L0("NOLIST") + "\n");
    nq_FldList_destroy(list);
}

TEST(FldPrint, NullListPrintsNothing) {
    EXPECT_EQ(Printed(nullptr), "");
    nqtest::CaptureFd capture(1);
    nq_FldList_printLevelList(nullptr, 3);
    EXPECT_EQ(capture.stop(), "");
}

TEST(FldPrint, TextIsUtf8OnTheConsole) {
    FldList *list = nq_FldList_create(u"t", 'C', u"\u00e9\u4e2d", nullptr);
    EXPECT_EQ(Printed(list), L0("T") + "C:\xc3\xa9\xe4\xb8\xad\n");
    nq_FldList_destroy(list);
}

TEST(FldPrint, PrintWalksTheListsOwnCursor) {
    FldList *list = nq_FldList_create(u"a", 'I', 1, u"b", 'I', 2, nullptr);
    nq_FldList_start(list);
    Printed(list);
    EXPECT_EQ(nq_FldList_eol(list), 1);
    nq_FldList_destroy(list);
}

// Printing to the diagnostics

TEST_F(DiagLog, PrintListDiagWritesEachLineWithoutLineEnds) {
    nq_Diag_setLevel(2);
    nq_Diag_setCondition(0x100);
    FldList *list = EveryType();
    nq_FldList_appChar(list, u"nul", nullptr);
    nq_FldList_printListDiag(list, 2, 0x101);
    const std::string expected =
        "fldops.cpp (N) " + L0("C") + "C:text\n" +
        "fldops.cpp (N) " + L0("H") + "H:HAND\n" +
        "fldops.cpp (N) " + L0("I") + "I:1\n" +
        "fldops.cpp (N) " + L0("L") + "L:2\n" +
        "fldops.cpp (N) " + L0("N") + "N:2.500000\n" +
        "fldops.cpp (N) " + L0("D") + "D:1.000 2.000 3.000\n" +
        "fldops.cpp (N) " + L0("M") + "M:1.000 2.000 3.000\n" +
        "fldops.cpp (N) " + L0("O") + "O:4.000 5.000 6.000\n" +
        "fldops.cpp (N) " + L0("P") + "P:1.000 2.000 3.000\n" +
        "fldops.cpp (N) " + L0("U") + "<undefined>\n" +
        "fldops.cpp (N) " + L0("V") + "\n" +
        "fldops.cpp (N) " + Lv(1) + "I:7\n" +
        "fldops.cpp (N) " + Lv(1) + "C:why\n" +
        "fldops.cpp (N) " + L0("S") + "<undefined>\n";
    EXPECT_EQ(Log(), expected);
    nq_FldList_destroy(list);
}

TEST_F(DiagLog, PrintLevelListDiagIndentsFromTheGivenLevel) {
    nq_Diag_setLevel(3);
    nq_Diag_setCondition(1);
    FldList *list = nq_FldList_create(u"a", 'N', 0.5, nullptr);
    nq_FldList_appList(list, u"l", nq_FldList_create(u"b", 'L', 4, nullptr));
    nq_FldList_printLevelListDiag(list, 2, 1, 1);
    EXPECT_EQ(Log(), "fldops.cpp (N) " + std::string(20, ' ') + "N:0.500000\n" + "fldops.cpp (N) " +
                         std::string(20, ' ') + "\n" + "fldops.cpp (N) " + std::string(23, ' ') + "L:4\n");
    nq_FldList_destroy(list);
}

TEST_F(DiagLog, PrintDiagIsGatedByLevelAndMask) {
    FldList *list = nq_FldList_create(u"a", 'I', 1, nullptr);
    nq_Diag_setLevel(1);
    nq_Diag_setCondition(0xF0);
    nq_FldList_printListDiag(list, 2, 0xF0);  // level above the current one
    nq_FldList_printListDiag(list, 1, 0x0F);  // no bit in common
    nq_FldList_printListDiag(list, 1, 0);
    EXPECT_EQ(Log(), "");
    nq_FldList_printListDiag(list, 0, 0x10);
    EXPECT_EQ(Log(), "fldops.cpp (N) " + L0("A") + "I:1\n");
    nq_FldList_destroy(list);
}

TEST_F(DiagLog, PrintDiagComposesInTheDiagnosticsBufferOnlyWhenItWrites) {
    FldList *list = nq_FldList_create(u"a", 'I', 1, nullptr);
    nq_Diag_setOutput(0, nullptr);
    nq_Diag_setLevel(3);
    nq_Diag_setCondition(2);
    nq_Diag_getDiagMsgBuf()[0] = u'Q';
    nq_Diag_getDiagMsgBuf()[1] = 0;
    nq_FldList_printListDiag(list, 3, 4);
    EXPECT_EQ(S(nq_Diag_getDiagMsgBuf()), u"Q");
    nq_FldList_printListDiag(list, 3, 2);
    EXPECT_EQ(S(nq_Diag_getDiagMsgBuf()), u"A" + u16(16, u' ') + u"I:1");
    nq_FldList_destroy(list);
}

TEST_F(DiagLog, PrintDiagCutsAnOverlongLineAndReportsIt) {
    nq_Diag_setLevel(3);
    nq_Diag_setCondition(1);
    const u16 text(5000, u'x');
    FldList *list = nq_FldList_create(u"a", 'C', text.c_str(), nullptr);
    nq_FldList_printListDiag(list, 3, 1);
    const std::string log = Log();
    EXPECT_NE(log.find("Buffer size 5019 too big for diagnostics in fldops.cpp at "), std::string::npos);
    nq_FldList_destroy(list);
}

TEST_F(DiagLog, PrintDiagWithAnAbsurdLevelOrNameStaysInItsBuffers) {
    nq_Diag_setLevel(3);
    nq_Diag_setCondition(1);
    const u16 name(400, u'n');
    FldList *list = nq_FldList_create(name.c_str(), 'I', 1, nullptr);
    nq_FldList_printLevelListDiag(list, 1000000, 3, 1);
    nq_FldList_printLevelListDiag(list, 0, 3, 1);
    const std::string log = Log();
    EXPECT_EQ(log, "fldops.cpp (N) " + std::string(259, ' ') + "I:1\n" + "fldops.cpp (N) " +
                       std::string(259, 'N') + "I:1\n");
    nq_FldList_destroy(list);
}

// From setting lines

TEST(FldFromEnv, NameValueLinesBecomeCharFields) {
    StrList *lines = nq_StrList_create(u"path = C:\\data", u"  mode = = fast  ", u"novalue", u"=orphan", u"empty=",
                                       u"Count=3", nullptr);
    FldList *list = nq_FldList_fromEnvList(lines);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(Shape(list), "PATH:C,MODE:C,COUNT:C");
    EXPECT_EQ(S(Nth(list, 0)->value.str), u"C:\\data");
    EXPECT_EQ(S(Nth(list, 1)->value.str), u"fast");
    EXPECT_EQ(S(Nth(list, 2)->value.str), u"3");
    EXPECT_EQ(S(nq_FldList_curr(list)->name), u"PATH");  // the cursor is on the head
    nq_FldList_destroy(list);
    nq_StrList_destroy(lines);
}

TEST(FldFromEnv, NoUsablePairGivesNull) {
    StrList *lines = nq_StrList_create(u"nothing", u"=", u"", u"   ", nullptr);
    EXPECT_EQ(nq_FldList_fromEnvList(lines), nullptr);
    nq_StrList_destroy(lines);
    EXPECT_EQ(nq_FldList_fromEnvList(nullptr), nullptr);
    StrList *none = nq_StrList_create(nullptr);
    EXPECT_EQ(nq_FldList_fromEnvList(none), nullptr);
    nq_StrList_destroy(none);
}

TEST(FldFromEnv, LongLinesAreTakenWhole) {
    const u16 value(3000, u'v');
    const u16 line = u"key=" + value;
    StrList *lines = nq_StrList_create(line.c_str(), u"a=b", nullptr);
    FldList *list = nq_FldList_fromEnvList(lines);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(nq_FldList_count(list), 2);
    EXPECT_EQ(S(Nth(list, 1)->value.str), u"b");
    nq_FldList_destroy(list);
    nq_StrList_destroy(lines);
}

// From a table's fields

TEST(FldFromDb, NumbersByPrecisionAndTextAsGiven) {
    DbFldList *db = nq_DbFldList_create(nullptr);
    nq_DbFldList_insEnd(db, u"count", u"  42 ", 5, 0, u'N');
    nq_DbFldList_insEnd(db, u"ratio", u"1,5", 5, 1, u'N');
    nq_DbFldList_insEnd(db, u"price", u"2.25", 6, 2, u'N');
    nq_DbFldList_insEnd(db, u"label", u"  text  ", 10, 0, u'C');
    nq_DbFldList_insEnd(db, u"float", u" 3.5", 6, 1, u'F');
    nq_DbFldList_insEnd(db, u"", u"skipped", 1, 0, u'C');
    nq_DbFldList_insEnd(db, u"date", nullptr, 8, 0, u'D');
    nq_DbFldList_insEnd(db, u"zero", nullptr, 4, 2, u'N');
    FldList *list = nq_FldList_fromDbFldList(db);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(Shape(list), "COUNT:I,RATIO:N,PRICE:N,LABEL:C,FLOAT:C,DATE:C,ZERO:N");
    EXPECT_EQ(Nth(list, 0)->value.i, 42);
    EXPECT_EQ(Nth(list, 1)->value.d, 1.5);
    EXPECT_EQ(Nth(list, 2)->value.d, 2.25);
    EXPECT_EQ(S(Nth(list, 3)->value.str), u"  text");  // leading blanks as the field gave them
    EXPECT_EQ(S(Nth(list, 4)->value.str), u"3.5");
    EXPECT_EQ(S(Nth(list, 5)->value.str), u"");
    EXPECT_EQ(Nth(list, 6)->value.d, 0.0);
    EXPECT_EQ(nq_DbFldList_eol(db), 1);
    nq_FldList_destroy(list);
    nq_DbFldList_destroy(db);
}

TEST(FldFromDb, NullOrEmptyGivesAnEmptyList) {
    FldList *list = nq_FldList_fromDbFldList(nullptr);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(nq_FldList_count(list), 0);
    nq_FldList_destroy(list);
}

TEST(FldFromDb, LongValuesAreCutAt512) {
    DbFldList *db = nq_DbFldList_create(nullptr);
    const u16 text(900, u't');
    nq_DbFldList_insEnd(db, u"memo", text.c_str(), 900, 0, u'M');
    FldList *list = nq_FldList_fromDbFldList(db);
    EXPECT_EQ(S(Nth(list, 0)->value.str), u16(512, u't'));
    nq_FldList_destroy(list);
    nq_DbFldList_destroy(db);
}

// appStrList

TEST_F(FldOps, AppStrListBuildsAnOwningSNode) {
    StrList *strs = nq_StrList_create(u"a", u"b", nullptr);
    EXPECT_EQ(nq_FldList_appStrList(a, u"Names", strs), 1);
    FldNode *n = Nth(a, 0);
    EXPECT_EQ(S(n->name), u"NAMES");
    EXPECT_EQ(n->type, 'S');
    EXPECT_EQ(n->aux1, 1);
    EXPECT_EQ(n->value.strList, strs);
    nq_wchar out[8] = u"x";
    nq_FldList_start(a);
    EXPECT_EQ(nq_FldList_currChar(a, out, 7), -3);
    EXPECT_EQ(nq_FldList_appStrList(a, u"none", nullptr), 1);  // a null list is a value too
}

TEST_F(DiagLog, PrintDiagLinesStayWholeAmongTheListsOwnTraces) {
    nq_Diag_setLevel(3);
    nq_Diag_setCondition(0xFFFFFFFFu);
    FldList *list = nq_FldList_create(u"a", 'I', 1, u"b", 'C', u"two", nullptr);
    nq_FldList_printListDiag(list, 3, 1);
    nq_Diag_disable();
    const std::string log = Log();
    EXPECT_NE(log.find("lnklist.cpp (N) Entering nq_LnkList_start.\n"), std::string::npos);
    EXPECT_NE(log.find("fldops.cpp (N) " + L0("A") + "I:1\n"), std::string::npos);
    EXPECT_NE(log.find("fldops.cpp (N) " + L0("B") + "C:two\n"), std::string::npos);
    nq_FldList_destroy(list);
}
