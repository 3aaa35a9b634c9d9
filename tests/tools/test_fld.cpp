// The FldList family: the node, names, lookup and its cursor, the new, app, mod and add
// families, the readers by name and at the cursor cell by cell, create and its "no value"
// folding, and the node-level text functions.
#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
#include <cstring>
#include <string>

#include "nq_tls20an.h"
#include "test_support.h"

namespace {

using u16 = std::u16string;

u16 S(const nq_wchar *p) { return p ? u16(p) : u16(u"<null>"); }

// Takes a string the library handed over and releases it.
u16 Take(nq_wchar *p) {
    u16 s = S(p);
    nq_Free(p);
    return s;
}

FldNode *Nth(FldList *list, int index) { return static_cast<FldNode *>(nq_LnkList_getNthSavePos(list, index)); }

class FldList_ : public ::testing::Test {
protected:
    void SetUp() override { list = nq_FldList_create(nullptr); }
    void TearDown() override { nq_FldList_destroy(list); }
    FldList *list = nullptr;
};

// One field of every type, in this order:
//   CH (C "2.5"), HA (H "hx" stored upper-case), IN (I 42), LO (L -7), RE (N -2.7),
//   DP, MP, VE, PT (points), UN (U), LI (V with one Int), SL (S with two strings).
class FldTable : public ::testing::Test {
protected:
    void SetUp() override {
        list = nq_FldList_create(nullptr);
        const Point p{1.5, -2.0, 3.25};
        const Vector v{0.0, 0.0, 1.0};
        nq_FldList_appChar(list, u"ch", u"2.5");
        nq_FldList_appHandle(list, u"ha", u"hx");
        nq_FldList_appInt(list, u"in", 42);
        nq_FldList_appLong(list, u"lo", -7);
        nq_FldList_appReal(list, u"re", -2.7);
        nq_FldList_appDpoint(list, u"dp", &p);
        nq_FldList_appMpoint(list, u"mp", &p);
        nq_FldList_appVector(list, u"ve", &v);
        nq_FldList_appPoint(list, u"pt", &p);
        nq_FldList_appUnknown(list, u"un");
        nested = nq_FldList_create(u"X", 'I', 1, nullptr);
        nq_FldList_appList(list, u"li", nested);
        strList = nq_StrList_create(u"a", u"b", nullptr);
        nq_FldList_appStrList(list, u"sl", strList);
    }
    void TearDown() override { nq_FldList_destroy(list); }
    FldList *list = nullptr;
    FldList *nested = nullptr;
    StrList *strList = nullptr;
    static constexpr const char16_t *kPoints[] = {u"DP", u"MP", u"VE", u"PT"};
    static constexpr const char16_t *kOthers[] = {u"UN", u"LI", u"SL"};
    void at(const char16_t *name) { ASSERT_NE(nq_FldList_find(list, name), nullptr) << S(name).size(); }
};

}  // namespace

// The node

TEST(FldNodeLayout, FieldsInOrderAndValueIsThreeDoublesAligned) {
    EXPECT_EQ(offsetof(FldNode, name), 0u);
    EXPECT_EQ(offsetof(FldNode, type), sizeof(void *));
    EXPECT_EQ(offsetof(FldNode, aux1), sizeof(void *) + 2);
    EXPECT_EQ(offsetof(FldNode, aux2), sizeof(void *) + 4);
    EXPECT_EQ(offsetof(FldNode, value) % 8, 0u);
    EXPECT_EQ(sizeof(FldValue), 24u);
    EXPECT_EQ(alignof(FldValue), 8u);
    EXPECT_EQ(sizeof(((FldValue *)nullptr)->ptr), sizeof(void *));
}

TEST(FldNodeLayout, TypeCodesAreTheirLetters) {
    EXPECT_EQ(NQ_FLD_CHAR, 67);
    EXPECT_EQ(NQ_FLD_DPOINT, 68);
    EXPECT_EQ(NQ_FLD_HANDLE, 72);
    EXPECT_EQ(NQ_FLD_INT, 73);
    EXPECT_EQ(NQ_FLD_LONG, 76);
    EXPECT_EQ(NQ_FLD_MPOINT, 77);
    EXPECT_EQ(NQ_FLD_REAL, 78);
    EXPECT_EQ(NQ_FLD_VECTOR, 79);
    EXPECT_EQ(NQ_FLD_POINT, 80);
    EXPECT_EQ(NQ_FLD_STRLIST, 83);
    EXPECT_EQ(NQ_FLD_UNKNOWN, 85);
    EXPECT_EQ(NQ_FLD_LIST, 86);
}

TEST(FldNew, EveryConstructorUpperCasesTheNameAndSetsAux) {
    const Point p{1, 2, 3};
    const Vector v{4, 5, 6};
    FldList *inner = nq_FldList_create(nullptr);
    FldNode *nodes[] = {
        nq_FldList_newChar(u"aB1", u"v"),   nq_FldList_newDpoint(u"aB1", &p), nq_FldList_newHandle(u"aB1", u"v"),
        nq_FldList_newInt(u"aB1", 1),       nq_FldList_newList(u"aB1", inner), nq_FldList_newLong(u"aB1", 2),
        nq_FldList_newMpoint(u"aB1", &p),   nq_FldList_newPoint(u"aB1", &p),  nq_FldList_newReal(u"aB1", 3.0),
        nq_FldList_newUnknown(u"aB1"),      nq_FldList_newVector(u"aB1", &v),
    };
    const uint16_t types[] = {'C', 'D', 'H', 'I', 'V', 'L', 'M', 'P', 'N', 'U', 'O'};
    for (size_t i = 0; i < sizeof nodes / sizeof nodes[0]; ++i) {
        ASSERT_NE(nodes[i], nullptr);
        EXPECT_EQ(S(nodes[i]->name), u"AB1");
        EXPECT_EQ(nodes[i]->type, types[i]);
        EXPECT_EQ(nodes[i]->aux1, 1);
        EXPECT_EQ(nodes[i]->aux2, 0);
    }
    EXPECT_EQ(nodes[1]->value.point.y, 2.0);
    EXPECT_EQ(nodes[3]->value.i, 1);
    EXPECT_EQ(nodes[4]->value.list, inner);
    EXPECT_EQ(nodes[5]->value.i, 2);
    EXPECT_EQ(nodes[8]->value.d, 3.0);
    EXPECT_EQ(nodes[9]->value.ptr, nullptr);
    EXPECT_EQ(nodes[10]->value.vector.z, 6.0);
    for (FldNode *n : nodes) EXPECT_EQ(nq_FldList_destroyNode(n), 1);
}

TEST(FldNew, CallersTextIsNotChangedAndValueIsACopy) {
    nq_wchar name[] = u"low";
    nq_wchar value[] = u"Mixed";
    FldNode *c = nq_FldList_newChar(name, value);
    FldNode *h = nq_FldList_newHandle(name, value);
    EXPECT_EQ(u16(name), u"low");
    EXPECT_EQ(u16(value), u"Mixed");
    EXPECT_NE(c->value.str, value);
    EXPECT_EQ(S(c->value.str), u"Mixed");  // Char values are never upper-cased
    EXPECT_EQ(S(h->value.str), u"MIXED");  // a new Handle is
    nq_FldList_destroyNode(c);
    nq_FldList_destroyNode(h);
}

TEST(FldNew, NullValuesAndNullNameAreKeptAsNull) {
    FldNode *c = nq_FldList_newChar(u"a", nullptr);
    FldNode *h = nq_FldList_newHandle(u"a", nullptr);
    FldNode *l = nq_FldList_newList(u"a", nullptr);
    FldNode *p = nq_FldList_newPoint(u"a", nullptr);
    FldNode *n = nq_FldList_newInt(nullptr, 5);
    EXPECT_EQ(c->value.str, nullptr);
    EXPECT_EQ(h->value.str, nullptr);
    EXPECT_EQ(l->value.list, nullptr);
    EXPECT_EQ(p->value.point.x, 0.0);  // a null point is the origin
    EXPECT_EQ(n->name, nullptr);
    for (FldNode *x : {c, h, l, p, n}) nq_FldList_destroyNode(x);
    EXPECT_EQ(nq_FldList_destroyNode(nullptr), 0);
}

TEST(FldNew, DestroyNodeReleasesNestedListsAndStrLists) {
    // Ownership is checked by the sanitizer build: nothing leaks, nothing is freed twice.
    FldList *deep = nq_FldList_create(u"S", 'C', u"deep", nullptr);
    FldList *mid = nq_FldList_create(nullptr);
    nq_FldList_appList(mid, u"deep", deep);
    nq_FldList_appStrList(mid, u"strs", nq_StrList_create(u"x", u"y", nullptr));
    FldNode *top = nq_FldList_newList(u"top", mid);
    EXPECT_EQ(nq_FldList_destroyNode(top), 1);
}

// The list's own operations under the field list's names

TEST_F(FldList_, ListOperationsUnderFieldListNames) {
    nq_FldList_appInt(list, u"a", 1);
    nq_FldList_appInt(list, u"b", 2);
    EXPECT_EQ(nq_FldList_count(list), 2);
    EXPECT_EQ(nq_FldList_curr(list), nullptr);  // appending leaves the cursor alone
    EXPECT_EQ(nq_FldList_eol(list), 1);
    EXPECT_EQ(nq_FldList_start(list), 1);
    EXPECT_EQ(S(nq_FldList_curr(list)->name), u"A");
    EXPECT_EQ(nq_FldList_next(list), 1);
    EXPECT_EQ(S(nq_FldList_curr(list)->name), u"B");
    EXPECT_EQ(nq_FldList_next(list), 0);
    EXPECT_EQ(nq_FldList_eol(list), 1);
    nq_FldList_start(list);
    nq_FldList_next(list);
    EXPECT_EQ(nq_FldList_prev(list), 1);
    EXPECT_EQ(S(nq_FldList_curr(list)->name), u"A");
    EXPECT_EQ(nq_FldList_count(nullptr), 0);
    EXPECT_EQ(nq_FldList_eol(nullptr), 1);
    EXPECT_EQ(nq_FldList_curr(nullptr), nullptr);
}

// Lookup

TEST_F(FldList_, FindWithLowerCaseNameFindsFieldBuiltWithAnyCase) {
    nq_FldList_appInt(list, u"MiXed", 1);
    FldNode *n = nq_FldList_find(list, u"mixed");
    ASSERT_NE(n, nullptr);
    EXPECT_EQ(S(n->name), u"MIXED");
    EXPECT_EQ(nq_FldList_find(list, u"MIXED"), n);
}

TEST_F(FldList_, FindLeavesCursorOnTheFirstMatch) {
    nq_FldList_appInt(list, u"a", 1);
    nq_FldList_appInt(list, u"b", 2);
    nq_FldList_appInt(list, u"b", 3);
    FldNode *n = nq_FldList_find(list, u"b");
    EXPECT_EQ(n->value.i, 2);
    EXPECT_EQ(nq_FldList_curr(list), n);
    EXPECT_EQ(nq_LnkList_getPos(list), 1);
}

TEST_F(FldList_, FailedFindLeavesCursorPastTheEnd) {
    nq_FldList_appChar(list, u"a", u"x");
    nq_FldList_start(list);
    EXPECT_EQ(nq_FldList_find(list, u"zz"), nullptr);
    EXPECT_EQ(nq_FldList_eol(list), 1);
    nq_wchar out[8] = u"keep";
    EXPECT_EQ(nq_FldList_currChar(list, out, 7), -1);
    EXPECT_EQ(u16(out), u"keep");
}

TEST_F(FldList_, FindOnNullOrEmptyListOrNullNameYieldsNull) {
    EXPECT_EQ(nq_FldList_find(nullptr, u"a"), nullptr);
    EXPECT_EQ(nq_FldList_find(list, u"a"), nullptr);
    EXPECT_EQ(list->cursor, nullptr);
    nq_FldList_appInt(list, u"a", 1);
    nq_FldList_start(list);
    EXPECT_EQ(nq_FldList_find(list, nullptr), nullptr);
    EXPECT_NE(list->cursor, nullptr);  // a null name moves nothing
}

TEST_F(FldList_, FindCutsANameLongerThanItsWorkBuffer) {
    const u16 kept(255, u'q');
    nq_FldList_appInt(list, kept.c_str(), 7);
    // A query of 1000 characters is cut to its first 255 and so finds the field.
    const u16 query(1000, u'Q');
    FldNode *n = nq_FldList_find(list, query.c_str());
    ASSERT_NE(n, nullptr);
    EXPECT_EQ(n->value.i, 7);
    // A stored name longer than 255 can never be found.
    const u16 longName(300, u'R');
    nq_FldList_appInt(list, longName.c_str(), 8);
    EXPECT_EQ(nq_FldList_find(list, longName.c_str()), nullptr);
}

TEST_F(FldList_, NodesWithNullNamesAreSkippedByLookup) {
    nq_FldList_appInt(list, nullptr, 1);
    nq_FldList_appInt(list, u"a", 2);
    EXPECT_EQ(nq_FldList_find(list, u"a")->value.i, 2);
    nq_FldList_start(list);
    nq_wchar out[8] = u"x";
    EXPECT_EQ(nq_FldList_currFldname(list, out), -1);
    uint16_t type = 0;
    EXPECT_EQ(nq_FldList_currFldtype(list, &type), 1);
    EXPECT_EQ(type, 'I');
}

TEST_F(FldList_, CurrFldnameAndTypeNeedANode) {
    nq_wchar out[16] = u"";
    uint16_t type = 0;
    EXPECT_EQ(nq_FldList_currFldname(list, out), -1);
    EXPECT_EQ(nq_FldList_currFldtype(list, &type), -1);
    nq_FldList_appReal(list, u"width", 1.0);
    nq_FldList_find(list, u"width");
    EXPECT_EQ(nq_FldList_currFldname(list, out), 1);
    EXPECT_EQ(u16(out), u"WIDTH");
    EXPECT_EQ(nq_FldList_currFldtype(list, &type), 1);
    EXPECT_EQ(type, 'N');
    EXPECT_EQ(nq_FldList_currFldname(nullptr, out), -1);
}

TEST_F(FldList_, DelFldDeletesTheFirstMatch) {
    nq_FldList_appChar(list, u"a", u"1");
    nq_FldList_appChar(list, u"b", u"2");
    nq_FldList_appChar(list, u"b", u"3");
    EXPECT_EQ(nq_FldList_delFld(list, u"B"), 1);
    EXPECT_EQ(nq_FldList_count(list), 2);
    nq_wchar out[8];
    EXPECT_EQ(nq_FldList_getChar(list, u"b", out, 7), 1);
    EXPECT_EQ(u16(out), u"3");
    EXPECT_EQ(nq_FldList_delFld(list, u"zz"), 0);
    EXPECT_EQ(nq_FldList_delFld(nullptr, u"a"), 0);
    EXPECT_EQ(nq_FldList_delFld(list, nullptr), 0);
    EXPECT_EQ(nq_FldList_count(list), 2);
}

TEST_F(FldList_, DelCurrAfterFindDeletesTheNodeFound) {
    nq_FldList_appInt(list, u"a", 1);
    nq_FldList_appInt(list, u"b", 2);
    nq_FldList_appInt(list, u"c", 3);
    nq_FldList_find(list, u"b");
    EXPECT_EQ(nq_FldList_delCurr(list), 1);
    EXPECT_EQ(nq_FldList_count(list), 2);
    EXPECT_EQ(nq_FldList_find(list, u"b"), nullptr);
    EXPECT_EQ(nq_FldList_delCurr(list), 0);  // past the end: nothing to delete
}

// app

TEST_F(FldList_, AppAppendsWithoutLookingSoNamesRepeat) {
    EXPECT_EQ(nq_FldList_appInt(list, u"n", 1), 1);
    EXPECT_EQ(nq_FldList_appInt(list, u"n", 2), 1);
    EXPECT_EQ(nq_FldList_count(list), 2);
    EXPECT_EQ(Nth(list, 0)->value.i, 1);
    EXPECT_EQ(Nth(list, 1)->value.i, 2);
}

TEST_F(FldList_, AppToNullListDoesNothing) {
    const Point p{1, 2, 3};
    EXPECT_EQ(nq_FldList_appChar(nullptr, u"a", u"x"), 0);
    EXPECT_EQ(nq_FldList_appPoint(nullptr, u"a", &p), 0);
    EXPECT_EQ(nq_FldList_appUnknown(nullptr, u"a"), 0);
    // A list handed to a null list stays the caller's.
    FldList *mine = nq_FldList_create(nullptr);
    EXPECT_EQ(nq_FldList_appList(nullptr, u"a", mine), 0);
    nq_FldList_destroy(mine);
    StrList *strs = nq_StrList_create(u"a", nullptr);
    EXPECT_EQ(nq_FldList_appStrList(nullptr, u"a", strs), 0);
    nq_StrList_destroy(strs);
}

TEST_F(FldList_, AppStoresMinus9999Unchanged) {
    nq_FldList_appInt(list, u"i", -9999);
    nq_FldList_appLong(list, u"l", -9999);
    nq_FldList_appReal(list, u"n", -9999.0);
    EXPECT_EQ(Nth(list, 0)->value.i, -9999);
    EXPECT_EQ(Nth(list, 1)->value.i, -9999);
    EXPECT_EQ(Nth(list, 2)->value.d, -9999.0);
}

TEST_F(FldList_, AppListAndAppStrListTakeOwnership) {
    FldList *inner = nq_FldList_create(u"A", 'C', u"x", nullptr);
    StrList *strs = nq_StrList_create(u"one", u"two", nullptr);
    EXPECT_EQ(nq_FldList_appList(list, u"l", inner), 1);
    EXPECT_EQ(nq_FldList_appStrList(list, u"s", strs), 1);
    EXPECT_EQ(Nth(list, 0)->value.list, inner);
    EXPECT_EQ(Nth(list, 1)->type, 'S');
    EXPECT_EQ(Nth(list, 1)->value.strList, strs);
    EXPECT_EQ(S(Nth(list, 1)->name), u"S");
    // Released by the list's destructor in TearDown.
}

// mod

TEST_F(FldList_, ModOverwritesTypeAndValueInPlaceAndReleasesTheString) {
    nq_FldList_appChar(list, u"a", u"text");
    nq_FldList_appInt(list, u"b", 2);
    FldNode *a = Nth(list, 0);
    EXPECT_EQ(nq_FldList_modInt(list, u"a", 5), 1);
    EXPECT_EQ(Nth(list, 0), a);  // the same node, in place
    EXPECT_EQ(a->type, 'I');
    EXPECT_EQ(a->value.i, 5);
    EXPECT_EQ(nq_FldList_modChar(list, u"b", u"now text"), 1);
    EXPECT_EQ(Nth(list, 1)->type, 'C');
    EXPECT_EQ(S(Nth(list, 1)->value.str), u"now text");
    EXPECT_EQ(nq_FldList_count(list), 2);
}

TEST_F(FldList_, ModOfMissingFieldAppends) {
    EXPECT_EQ(nq_FldList_modReal(list, u"r", 1.5), 1);
    EXPECT_EQ(nq_FldList_count(list), 1);
    EXPECT_EQ(Nth(list, 0)->value.d, 1.5);
    EXPECT_EQ(nq_FldList_modReal(nullptr, u"r", 1.5), 0);
}

TEST_F(FldList_, ModChangesOnlyTheFirstOfTwoFieldsOfOneName) {
    nq_FldList_appInt(list, u"n", 1);
    nq_FldList_appInt(list, u"n", 2);
    nq_FldList_modInt(list, u"n", 9);
    EXPECT_EQ(Nth(list, 0)->value.i, 9);
    EXPECT_EQ(Nth(list, 1)->value.i, 2);
}

TEST_F(FldList_, ModEveryTypeSetsItsType) {
    const Point p{1, 2, 3};
    const Vector v{4, 5, 6};
    nq_FldList_appChar(list, u"f", u"start");
    struct Step {
        int result;
        uint16_t type;
    };
    FldList *inner = nq_FldList_create(nullptr);
    const Step steps[] = {
        {nq_FldList_modDpoint(list, u"f", &p), 'D'}, {nq_FldList_modHandle(list, u"f", u"h"), 'H'},
        {nq_FldList_modMpoint(list, u"f", &p), 'M'}, {nq_FldList_modPoint(list, u"f", &p), 'P'},
        {nq_FldList_modVector(list, u"f", &v), 'O'}, {nq_FldList_modLong(list, u"f", 3), 'L'},
        {nq_FldList_modUnknown(list, u"f"), 'U'},    {nq_FldList_modList(list, u"f", inner), 'V'},
    };
    (void)steps;
    EXPECT_EQ(Nth(list, 0)->type, 'V');
    EXPECT_EQ(Nth(list, 0)->value.list, inner);
    for (const Step &s : steps) EXPECT_EQ(s.result, 1);
    EXPECT_EQ(nq_FldList_count(list), 1);
}

TEST_F(FldList_, ModHandleInPlaceKeepsCaseButOnAMissingFieldUpperCases) {
    nq_FldList_appChar(list, u"h", u"x");
    nq_FldList_modHandle(list, u"h", u"Mixed");
    EXPECT_EQ(Nth(list, 0)->type, 'H');
    EXPECT_EQ(S(Nth(list, 0)->value.str), u"Mixed");
    nq_FldList_modHandle(list, u"new", u"Mixed");
    EXPECT_EQ(S(Nth(list, 1)->value.str), u"MIXED");
    nq_FldList_modChar(list, u"c", u"Mixed");
    EXPECT_EQ(S(Nth(list, 2)->value.str), u"Mixed");
}

TEST_F(FldList_, ModReplacingAListLeavesTheOldListToTheCaller) {
    FldList *first = nq_FldList_create(u"A", 'I', 1, nullptr);
    FldList *second = nq_FldList_create(u"B", 'I', 2, nullptr);
    nq_FldList_appList(list, u"l", first);
    // The caller that replaces a nested list fetches it and releases it itself.
    LnkList *old = nullptr;
    nq_FldList_find(list, u"l");
    ASSERT_EQ(nq_FldList_currList(list, &old), 1);
    EXPECT_EQ(old, first);
    EXPECT_EQ(nq_FldList_modList(list, u"l", second), 1);
    EXPECT_EQ(Nth(list, 0)->value.list, second);
    nq_FldList_destroy(old);  // still allocated after mod: releasing it is not a double free
}

// add

TEST_F(FldList_, AddOfMissingFieldAppends) {
    EXPECT_EQ(nq_FldList_addCharVal(list, u"a", u"x"), 1);
    EXPECT_EQ(nq_FldList_count(list), 1);
    EXPECT_EQ(Nth(list, 0)->type, 'C');
    EXPECT_EQ(nq_FldList_addCharVal(nullptr, u"a", u"x"), 0);
}

TEST_F(FldList_, AddIntValThreeTimesGivesOneListOfThreeNodes) {
    nq_FldList_appChar(list, u"before", u"x");
    nq_FldList_addIntVal(list, u"n", 1);
    FldNode *first = Nth(list, 1);
    EXPECT_EQ(nq_FldList_addIntVal(list, u"n", 2), 1);
    EXPECT_EQ(nq_FldList_addIntVal(list, u"n", 3), 1);
    ASSERT_EQ(nq_FldList_count(list), 2);
    FldNode *v = Nth(list, 1);
    EXPECT_EQ(v->type, 'V');
    EXPECT_EQ(S(v->name), u"N");
    ASSERT_EQ(nq_FldList_count(v->value.list), 3);
    EXPECT_EQ(Nth(v->value.list, 0), first);  // the node that stood there, moved
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Nth(v->value.list, i)->type, 'I');
        EXPECT_EQ(S(Nth(v->value.list, i)->name), u"N");
        EXPECT_EQ(Nth(v->value.list, i)->value.i, i + 1);
    }
    EXPECT_EQ(nq_FldList_curr(list), v);  // the found node stays current
}

TEST_F(FldList_, AddToAListFieldAppendsToItsNestedList) {
    FldList *inner = nq_FldList_create(u"A", 'I', 1, nullptr);
    nq_FldList_appList(list, u"l", inner);
    EXPECT_EQ(nq_FldList_addRealVal(list, u"L", 2.5), 1);
    EXPECT_EQ(nq_FldList_count(list), 1);
    ASSERT_EQ(nq_FldList_count(inner), 2);
    EXPECT_EQ(Nth(inner, 1)->type, 'N');
    EXPECT_EQ(S(Nth(inner, 1)->name), u"L");
}

TEST_F(FldList_, AddToAListFieldWithoutAListGivesItOne) {
    nq_FldList_appList(list, u"l", nullptr);
    EXPECT_EQ(nq_FldList_addIntVal(list, u"l", 4), 1);
    ASSERT_NE(Nth(list, 0)->value.list, nullptr);
    EXPECT_EQ(Nth(Nth(list, 0)->value.list, 0)->value.i, 4);
}

TEST_F(FldList_, EveryAddMemberOnAnExistingFieldConverts) {
    const Point p{1, 2, 3};
    const Vector v{4, 5, 6};
    nq_FldList_appUnknown(list, u"f");
    EXPECT_EQ(nq_FldList_addCharVal(list, u"f", u"c"), 1);
    EXPECT_EQ(nq_FldList_addHandleVal(list, u"f", u"h"), 1);
    EXPECT_EQ(nq_FldList_addDpointVal(list, u"f", &p), 1);
    EXPECT_EQ(nq_FldList_addMpointVal(list, u"f", &p), 1);
    EXPECT_EQ(nq_FldList_addPointVal(list, u"f", &p), 1);
    EXPECT_EQ(nq_FldList_addVectorVal(list, u"f", &v), 1);
    EXPECT_EQ(nq_FldList_addLongVal(list, u"f", 5), 1);
    EXPECT_EQ(nq_FldList_addUnknownVal(list, u"f"), 1);
    FldList *inner = Nth(list, 0)->value.list;
    ASSERT_EQ(nq_FldList_count(inner), 9);
    const char types[] = "UCHDMPOLU";
    for (int i = 0; i < 9; ++i) EXPECT_EQ(Nth(inner, i)->type, uint16_t(types[i])) << i;
    EXPECT_EQ(S(Nth(inner, 2)->value.str), u"H");  // a new Handle node upper-cases
}

TEST_F(FldList_, AddValDispatchesOnTheTypeCode) {
    const int32_t i = 3, l = -4;
    const double r = 1.25;
    const Point p{7, 8, 9};
    EXPECT_EQ(nq_FldList_addVal(list, u"c", 'C', u"str"), 1);
    EXPECT_EQ(nq_FldList_addVal(list, u"h", 'H', u"str"), 1);
    EXPECT_EQ(nq_FldList_addVal(list, u"i", 'I', &i), 1);
    EXPECT_EQ(nq_FldList_addVal(list, u"l", 'L', &l), 1);
    EXPECT_EQ(nq_FldList_addVal(list, u"n", 'N', &r), 1);
    EXPECT_EQ(nq_FldList_addVal(list, u"d", 'D', &p), 1);
    EXPECT_EQ(nq_FldList_addVal(list, u"m", 'M', &p), 1);
    EXPECT_EQ(nq_FldList_addVal(list, u"o", 'O', &p), 1);
    EXPECT_EQ(nq_FldList_addVal(list, u"p", 'P', &p), 1);
    EXPECT_EQ(nq_FldList_addVal(list, u"u", 'U', nullptr), 1);
    ASSERT_EQ(nq_FldList_count(list), 10);
    EXPECT_EQ(S(Nth(list, 0)->value.str), u"str");
    EXPECT_EQ(S(Nth(list, 1)->value.str), u"STR");
    EXPECT_EQ(Nth(list, 2)->value.i, 3);
    EXPECT_EQ(Nth(list, 3)->value.i, -4);
    EXPECT_EQ(Nth(list, 4)->value.d, 1.25);
    EXPECT_EQ(Nth(list, 7)->type, 'O');
    EXPECT_EQ(Nth(list, 8)->value.point.z, 9.0);
    EXPECT_EQ(Nth(list, 9)->type, 'U');
}

TEST_F(FldList_, AddValRefusesOtherCodesAndMissingNumbers) {
    FldList *inner = nq_FldList_create(nullptr);
    EXPECT_EQ(nq_FldList_addVal(list, u"s", 'S', inner), 0);
    EXPECT_EQ(nq_FldList_addVal(list, u"v", 'V', inner), 0);
    EXPECT_EQ(nq_FldList_addVal(list, u"x", 'X', u"x"), 0);
    EXPECT_EQ(nq_FldList_addVal(list, u"i", 'I', nullptr), 0);
    EXPECT_EQ(nq_FldList_addVal(list, u"p", 'P', nullptr), 0);
    EXPECT_EQ(nq_FldList_count(list), 0);
    EXPECT_EQ(nq_FldList_addVal(list, u"c", 'C', nullptr), 1);  // a null string is a value
    EXPECT_EQ(Nth(list, 0)->value.str, nullptr);
    nq_FldList_destroy(inner);
}

// create

TEST(FldCreate, NullFirstNameGivesAnEmptyList) {
    FldList *list = nq_FldList_create(nullptr);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(nq_FldList_count(list), 0);
    nq_FldList_destroy(list);
}

TEST(FldCreate, ReadsTriplesOfEveryType) {
    FldList *list = nq_FldList_create(u"c", 'C', u"text", u"h", 'H', u"hand", u"d", 'D', 1.0, 2.0, 3.0,
                                      u"m", 'M', 4.0, 5.0, 6.0, u"o", 'O', 7.0, 8.0, 9.0, u"p", 'P', 10.0, 11.0,
                                      12.0, u"i", 'I', 13, u"l", 'L', 14, u"n", 'N', 15.5, nullptr);
    ASSERT_EQ(nq_FldList_count(list), 9);
    EXPECT_EQ(S(Nth(list, 0)->value.str), u"text");
    EXPECT_EQ(S(Nth(list, 1)->value.str), u"HAND");
    EXPECT_EQ(Nth(list, 2)->value.point.z, 3.0);
    EXPECT_EQ(Nth(list, 3)->value.point.x, 4.0);
    EXPECT_EQ(Nth(list, 4)->value.vector.y, 8.0);
    EXPECT_EQ(Nth(list, 5)->value.point.z, 12.0);
    EXPECT_EQ(Nth(list, 6)->value.i, 13);
    EXPECT_EQ(Nth(list, 7)->value.i, 14);
    EXPECT_EQ(Nth(list, 8)->value.d, 15.5);
    const char types[] = "CHDMOPILN";
    for (int i = 0; i < 9; ++i) EXPECT_EQ(Nth(list, i)->type, uint16_t(types[i]));
    nq_FldList_destroy(list);
}

TEST(FldCreate, FoldsTheNoValueMarkToZero) {
    FldList *list = nq_FldList_create(u"i", 'I', -9999, u"l", 'L', -9999, u"n1", 'N', -9999.0, u"n2", 'N',
                                      -9999.009, u"n3", 'N', -9998.98, u"i2", 'I', -9998, nullptr);
    EXPECT_EQ(Nth(list, 0)->value.i, 0);
    EXPECT_EQ(Nth(list, 1)->value.i, 0);
    EXPECT_EQ(Nth(list, 2)->value.d, 0.0);
    EXPECT_EQ(Nth(list, 3)->value.d, 0.0);
    EXPECT_EQ(Nth(list, 4)->value.d, -9998.98);  // not strictly within 0.01
    EXPECT_EQ(Nth(list, 5)->value.i, -9998);
    nq_FldList_destroy(list);
}

TEST(FldCreate, OtherCodesTakeOneWordAndMakeUnknown) {
    FldList *list = nq_FldList_create(u"x", 'X', 99, u"s", 'S', 0, u"v", 'V', 0, u"after", 'I', 5, nullptr);
    ASSERT_EQ(nq_FldList_count(list), 4);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Nth(list, i)->type, 'U');
        EXPECT_EQ(Nth(list, i)->value.ptr, nullptr);
    }
    EXPECT_EQ(Nth(list, 3)->value.i, 5);  // the arguments stayed in step
    nq_FldList_destroy(list);
}

TEST(FldCreate, OnlyTheLow16BitsOfTheTypeCount) {
    FldList *list = nq_FldList_create(u"i", 0x10000 | 'I', 5, nullptr);
    EXPECT_EQ(Nth(list, 0)->type, 'I');
    EXPECT_EQ(Nth(list, 0)->value.i, 5);
    nq_FldList_destroy(list);
}

// Reading by name, cell by cell

TEST_F(FldTable, GetCharColumnByColumn) {
    nq_wchar out[400];
    EXPECT_EQ(nq_FldList_getChar(list, u"ch", out, 100), 1);
    EXPECT_EQ(u16(out), u"2.5");
    EXPECT_EQ(nq_FldList_getChar(list, u"ha", out, 100), 1);
    EXPECT_EQ(u16(out), u"HX");
    EXPECT_EQ(nq_FldList_getChar(list, u"in", out, 100), -3);
    EXPECT_EQ(u16(out), u"42");
    EXPECT_EQ(nq_FldList_getChar(list, u"lo", out, 100), -3);
    EXPECT_EQ(u16(out), u"-7");
    EXPECT_EQ(nq_FldList_getChar(list, u"re", out, 100), -3);
    EXPECT_EQ(u16(out), u"-2.700000");
    for (auto name : kPoints) {
        out[0] = u'z';
        EXPECT_EQ(nq_FldList_getChar(list, name, out, 100), -3);
        EXPECT_EQ(u16(out), u"");
    }
    for (auto name : kOthers) {
        out[0] = u'z';
        EXPECT_EQ(nq_FldList_getChar(list, name, out, 100), -3);
        EXPECT_EQ(u16(out), u"");
    }
    out[0] = u'z';
    EXPECT_EQ(nq_FldList_getChar(list, u"missing", out, 100), -2);
    EXPECT_EQ(u16(out), u"");
}

TEST_F(FldTable, GetHandleColumnByColumn) {
    nq_wchar out[64];
    EXPECT_EQ(nq_FldList_getHandle(list, u"ch", out, 63), 1);
    EXPECT_EQ(u16(out), u"2.5");
    EXPECT_EQ(nq_FldList_getHandle(list, u"ha", out, 63), 1);
    EXPECT_EQ(u16(out), u"HX");
    for (auto name : {u"IN", u"LO", u"RE", u"DP", u"MP", u"VE", u"PT", u"UN", u"LI", u"SL"}) {
        out[0] = u'z';
        out[1] = 0;
        EXPECT_EQ(nq_FldList_getHandle(list, name, out, 63), -3);
        EXPECT_EQ(u16(out), u"");
    }
    EXPECT_EQ(nq_FldList_getHandle(list, u"missing", out, 63), -2);
}

TEST_F(FldTable, GetIntColumnByColumn) {
    int32_t out = 0;
    EXPECT_EQ(nq_FldList_getInt(list, u"ch", &out), -3);
    EXPECT_EQ(out, 2);  // _wtoi of "2.5": converted, still a mismatch
    out = 99;
    EXPECT_EQ(nq_FldList_getInt(list, u"ha", &out), -3);
    EXPECT_EQ(out, 99);
    EXPECT_EQ(nq_FldList_getInt(list, u"in", &out), 1);
    EXPECT_EQ(out, 42);
    EXPECT_EQ(nq_FldList_getInt(list, u"lo", &out), 1);
    EXPECT_EQ(out, -7);
    EXPECT_EQ(nq_FldList_getInt(list, u"re", &out), 1);
    EXPECT_EQ(out, -2);  // truncated toward zero
    out = 99;
    for (auto name : kPoints) EXPECT_EQ(nq_FldList_getInt(list, name, &out), -3);
    for (auto name : kOthers) EXPECT_EQ(nq_FldList_getInt(list, name, &out), -3);
    EXPECT_EQ(out, 99);
    EXPECT_EQ(nq_FldList_getInt(list, u"missing", &out), -2);
    EXPECT_EQ(out, 99);
}

TEST_F(FldTable, GetLongColumnByColumn) {
    int32_t out = 0;
    nq_FldList_modChar(list, u"ch", u"  -123abc");
    EXPECT_EQ(nq_FldList_getLong(list, u"ch", &out), -3);
    EXPECT_EQ(out, -123);
    out = 99;
    EXPECT_EQ(nq_FldList_getLong(list, u"ha", &out), -3);
    EXPECT_EQ(out, 99);
    EXPECT_EQ(nq_FldList_getLong(list, u"in", &out), 1);
    EXPECT_EQ(out, 42);
    EXPECT_EQ(nq_FldList_getLong(list, u"lo", &out), 1);
    EXPECT_EQ(out, -7);
    EXPECT_EQ(nq_FldList_getLong(list, u"re", &out), 1);
    EXPECT_EQ(out, -2);
    out = 99;
    for (auto name : kPoints) EXPECT_EQ(nq_FldList_getLong(list, name, &out), -3);
    for (auto name : kOthers) EXPECT_EQ(nq_FldList_getLong(list, name, &out), -3);
    EXPECT_EQ(out, 99);
    EXPECT_EQ(nq_FldList_getLong(list, u"missing", &out), -2);
}

TEST_F(FldTable, GetRealColumnByColumn) {
    double out = 0;
    EXPECT_EQ(nq_FldList_getReal(list, u"ch", &out), -3);
    EXPECT_EQ(out, 2.5);
    out = 99;
    EXPECT_EQ(nq_FldList_getReal(list, u"ha", &out), -3);
    EXPECT_EQ(out, 99);
    EXPECT_EQ(nq_FldList_getReal(list, u"in", &out), 1);
    EXPECT_EQ(out, 42.0);
    EXPECT_EQ(nq_FldList_getReal(list, u"lo", &out), 1);
    EXPECT_EQ(out, -7.0);
    EXPECT_EQ(nq_FldList_getReal(list, u"re", &out), 1);
    EXPECT_EQ(out, -2.7);
    out = 99;
    for (auto name : kPoints) EXPECT_EQ(nq_FldList_getReal(list, name, &out), -3);
    for (auto name : kOthers) EXPECT_EQ(nq_FldList_getReal(list, name, &out), -3);
    EXPECT_EQ(out, 99);
    EXPECT_EQ(nq_FldList_getReal(list, u"missing", &out), -2);
}

TEST_F(FldTable, GetPointAndGetVectorColumnByColumn) {
    for (auto name : kPoints) {
        Point p{0, 0, 0};
        Vector v{0, 0, 0};
        EXPECT_EQ(nq_FldList_getPoint(list, name, &p, 0), 1);
        EXPECT_EQ(nq_FldList_getVector(list, name, &v), 1);
        if (u16(name) == u"VE") {
            EXPECT_EQ(p.z, 1.0);
            EXPECT_EQ(v.z, 1.0);
        } else {
            EXPECT_EQ(p.x, 1.5);
            EXPECT_EQ(p.y, -2.0);
            EXPECT_EQ(p.z, 3.25);
            EXPECT_EQ(v.z, 3.25);
        }
    }
    for (auto name : {u"CH", u"HA", u"IN", u"LO", u"RE", u"UN", u"LI", u"SL"}) {
        Point p{9, 9, 9};
        Vector v{9, 9, 9};
        EXPECT_EQ(nq_FldList_getPoint(list, name, &p, 1), -3);
        EXPECT_EQ(nq_FldList_getVector(list, name, &v), -3);
        EXPECT_EQ(p.x, 9.0);
        EXPECT_EQ(v.x, 9.0);
    }
    Point p;
    EXPECT_EQ(nq_FldList_getPoint(list, u"missing", &p, 0), -2);
    Vector v;
    EXPECT_EQ(nq_FldList_getVector(list, u"missing", &v), -2);
}

TEST_F(FldTable, GetCopiesAtMostMaxButNumbersIgnoreIt) {
    nq_wchar out[32];
    nq_FldList_modChar(list, u"ch", u"abcdef");
    EXPECT_EQ(nq_FldList_getChar(list, u"ch", out, 3), 1);
    EXPECT_EQ(u16(out), u"abc");
    EXPECT_EQ(nq_FldList_getHandle(list, u"ha", out, 1), 1);
    EXPECT_EQ(u16(out), u"H");
    nq_FldList_modInt(list, u"in", 1234567);
    EXPECT_EQ(nq_FldList_getChar(list, u"in", out, 2), -3);
    EXPECT_EQ(u16(out), u"1234567");
}

TEST_F(FldTable, NullStringValuesAreReadAsNothing) {
    nq_FldList_modChar(list, u"ch", nullptr);
    nq_wchar out[8] = u"x";
    EXPECT_EQ(nq_FldList_getChar(list, u"ch", out, 7), 1);
    EXPECT_EQ(u16(out), u"");
    int32_t i = 5;
    double r = 5;
    EXPECT_EQ(nq_FldList_getInt(list, u"ch", &i), -3);
    EXPECT_EQ(nq_FldList_getLong(list, u"ch", &i), -3);
    EXPECT_EQ(nq_FldList_getReal(list, u"ch", &r), -3);
    EXPECT_EQ(i, 5);
    EXPECT_EQ(r, 5.0);
}

TEST_F(FldTable, GetIntTruncatesTowardZeroAndOutOfRangeIsIndefinite) {
    int32_t out = 0;
    nq_FldList_modReal(list, u"re", 2.9);
    nq_FldList_getInt(list, u"re", &out);
    EXPECT_EQ(out, 2);
    nq_FldList_modReal(list, u"re", 1e12);
    EXPECT_EQ(nq_FldList_getInt(list, u"re", &out), 1);
    EXPECT_EQ(out, INT32_MIN);
    nq_FldList_modChar(list, u"ch", u"99999999999");
    nq_FldList_getLong(list, u"ch", &out);
    EXPECT_EQ(out, INT32_MAX);  // a 32-bit _wtol saturates
}

TEST_F(FldTable, GetMovesTheCursorToTheField) {
    int32_t out;
    nq_FldList_getInt(list, u"lo", &out);
    EXPECT_EQ(nq_LnkList_getPos(list), 3);
    nq_FldList_getInt(list, u"none", &out);
    EXPECT_EQ(nq_FldList_eol(list), 1);
}

TEST_F(FldTable, NullArgumentsOfTheReadersByName) {
    nq_wchar out[8];
    int32_t i;
    double r;
    Point p;
    Vector v;
    EXPECT_EQ(nq_FldList_getChar(nullptr, u"ch", out, 7), -2);
    EXPECT_EQ(nq_FldList_getChar(list, nullptr, out, 7), -2);
    EXPECT_EQ(nq_FldList_getChar(list, u"in", nullptr, 7), -3);
    EXPECT_EQ(nq_FldList_getChar(list, u"ch", nullptr, 7), 1);
    EXPECT_EQ(nq_FldList_getHandle(list, u"ch", nullptr, 7), 1);
    EXPECT_EQ(nq_FldList_getInt(nullptr, u"in", &i), -2);
    EXPECT_EQ(nq_FldList_getInt(list, u"in", nullptr), 0);
    EXPECT_EQ(nq_FldList_getLong(list, u"in", nullptr), 0);
    EXPECT_EQ(nq_FldList_getReal(list, nullptr, &r), -2);
    EXPECT_EQ(nq_FldList_getReal(list, u"in", nullptr), 0);
    EXPECT_EQ(nq_FldList_getPoint(list, u"pt", nullptr, 0), 0);
    EXPECT_EQ(nq_FldList_getPoint(nullptr, u"pt", &p, 0), -2);
    EXPECT_EQ(nq_FldList_getVector(list, u"pt", nullptr), 0);
    EXPECT_EQ(nq_FldList_getVector(list, nullptr, &v), -2);
}

// Reading at the cursor, cell by cell

TEST_F(FldTable, CurrCharColumnByColumn) {
    nq_wchar out[400];
    at(u"ch");
    EXPECT_EQ(nq_FldList_currChar(list, out, 100), 1);
    EXPECT_EQ(u16(out), u"2.5");
    at(u"ha");
    EXPECT_EQ(nq_FldList_currChar(list, out, 100), 1);
    EXPECT_EQ(u16(out), u"HX");
    at(u"in");
    EXPECT_EQ(nq_FldList_currChar(list, out, 1), -3);
    EXPECT_EQ(u16(out), u"42");
    at(u"lo");
    EXPECT_EQ(nq_FldList_currChar(list, out, 100), -3);
    EXPECT_EQ(u16(out), u"-7");
    at(u"re");
    EXPECT_EQ(nq_FldList_currChar(list, out, 100), -3);
    EXPECT_EQ(u16(out), u"-2.700000");
    for (auto name : kPoints) {
        at(name);
        out[0] = u'z';
        EXPECT_EQ(nq_FldList_currChar(list, out, 100), -3);
        EXPECT_EQ(u16(out), u"");
    }
    for (auto name : kOthers) {
        at(name);
        out[0] = u'z';
        EXPECT_EQ(nq_FldList_currChar(list, out, 100), -3);
        EXPECT_EQ(u16(out), u"");
    }
    nq_FldList_find(list, u"missing");
    EXPECT_EQ(nq_FldList_currChar(list, out, 100), -1);
}

TEST_F(FldTable, CurrCharDoesNotClearAndKeepsOutForANullString) {
    nq_FldList_modChar(list, u"ch", nullptr);
    at(u"ch");
    nq_wchar out[8] = u"keep";
    EXPECT_EQ(nq_FldList_currChar(list, out, 7), 1);
    EXPECT_EQ(u16(out), u"keep");
    EXPECT_EQ(nq_FldList_currHandle(list, out, 7), 1);
    EXPECT_EQ(u16(out), u"keep");
}

TEST_F(FldTable, CurrHandleColumnByColumn) {
    nq_wchar out[64];
    at(u"ch");
    EXPECT_EQ(nq_FldList_currHandle(list, out, 63), 1);
    EXPECT_EQ(u16(out), u"2.5");
    at(u"ha");
    EXPECT_EQ(nq_FldList_currHandle(list, out, 1), 1);
    EXPECT_EQ(u16(out), u"H");
    for (auto name : {u"IN", u"LO", u"RE", u"DP", u"MP", u"VE", u"PT", u"UN", u"LI", u"SL"}) {
        at(name);
        out[0] = u'z';
        EXPECT_EQ(nq_FldList_currHandle(list, out, 63), -3);
        EXPECT_EQ(u16(out), u"");
        EXPECT_EQ(nq_FldList_currHandle(list, nullptr, 63), -3);  // nothing written
    }
    nq_FldList_find(list, u"missing");
    EXPECT_EQ(nq_FldList_currHandle(list, out, 63), -1);
}

TEST_F(FldTable, CurrIntAndCurrLongColumnByColumn) {
    for (auto reader : {nq_FldList_currInt, nq_FldList_currLong}) {
        int32_t out = 99;
        at(u"ch");
        EXPECT_EQ(reader(list, &out), -3);  // no conversion of text here
        EXPECT_EQ(out, 99);
        at(u"ha");
        EXPECT_EQ(reader(list, &out), -3);
        at(u"in");
        EXPECT_EQ(reader(list, &out), 1);
        EXPECT_EQ(out, 42);
        at(u"lo");
        EXPECT_EQ(reader(list, &out), 1);
        EXPECT_EQ(out, -7);
        at(u"re");
        EXPECT_EQ(reader(list, &out), 1);
        EXPECT_EQ(out, -2);
        out = 99;
        for (auto name : kPoints) {
            at(name);
            EXPECT_EQ(reader(list, &out), -3);
        }
        for (auto name : kOthers) {
            at(name);
            EXPECT_EQ(reader(list, &out), -3);
        }
        EXPECT_EQ(out, 99);
        nq_FldList_find(list, u"missing");
        EXPECT_EQ(reader(list, &out), -1);
        EXPECT_EQ(reader(list, nullptr), 0);
    }
}

TEST_F(FldTable, CurrRealColumnByColumn) {
    double out = 99;
    at(u"ch");
    EXPECT_EQ(nq_FldList_currReal(list, &out), 1);  // where getReal says -3
    EXPECT_EQ(out, 2.5);
    out = 99;
    at(u"ha");
    EXPECT_EQ(nq_FldList_currReal(list, &out), -3);
    EXPECT_EQ(out, 99);
    at(u"in");
    EXPECT_EQ(nq_FldList_currReal(list, &out), 1);
    EXPECT_EQ(out, 42.0);
    at(u"lo");
    EXPECT_EQ(nq_FldList_currReal(list, &out), 1);
    EXPECT_EQ(out, -7.0);
    at(u"re");
    EXPECT_EQ(nq_FldList_currReal(list, &out), 1);
    EXPECT_EQ(out, -2.7);
    out = 99;
    for (auto name : kPoints) {
        at(name);
        EXPECT_EQ(nq_FldList_currReal(list, &out), -3);
    }
    for (auto name : kOthers) {
        at(name);
        EXPECT_EQ(nq_FldList_currReal(list, &out), -3);
    }
    EXPECT_EQ(out, 99);
    nq_FldList_find(list, u"missing");
    EXPECT_EQ(nq_FldList_currReal(list, &out), -1);
}

TEST_F(FldTable, CurrRealOfANullCharReadsZero) {
    nq_FldList_modChar(list, u"ch", nullptr);
    at(u"ch");
    double out = 5;
    EXPECT_EQ(nq_FldList_currReal(list, &out), 1);
    EXPECT_EQ(out, 0.0);
}

TEST_F(FldTable, CurrPointAndCurrVectorColumnByColumn) {
    for (auto name : kPoints) {
        at(name);
        Point p{0, 0, 0};
        Vector v{0, 0, 0};
        EXPECT_EQ(nq_FldList_currPoint(list, &p), 1);
        EXPECT_EQ(nq_FldList_currVector(list, &v), 1);
        EXPECT_EQ(p.z, v.z);
        EXPECT_NE(p.z, 0.0);
    }
    for (auto name : {u"CH", u"HA", u"IN", u"LO", u"RE", u"UN", u"LI", u"SL"}) {
        at(name);
        Point p{9, 9, 9};
        Vector v{9, 9, 9};
        EXPECT_EQ(nq_FldList_currPoint(list, &p), -3);
        EXPECT_EQ(nq_FldList_currVector(list, &v), -3);
        EXPECT_EQ(p.x, 9.0);
    }
    nq_FldList_find(list, u"missing");
    Point p;
    Vector v;
    EXPECT_EQ(nq_FldList_currPoint(list, &p), -1);
    EXPECT_EQ(nq_FldList_currVector(list, &v), -1);
}

TEST_F(FldTable, CurrListColumnByColumn) {
    LnkList *out = nullptr;
    at(u"li");
    EXPECT_EQ(nq_FldList_currList(list, &out), 1);
    EXPECT_EQ(out, nested);  // the node's own list, not a copy
    at(u"sl");
    EXPECT_EQ(nq_FldList_currList(list, &out), 1);
    EXPECT_EQ(out, strList);
    for (auto name : {u"CH", u"HA", u"IN", u"LO", u"RE", u"DP", u"MP", u"VE", u"PT", u"UN"}) {
        at(name);
        out = nullptr;
        EXPECT_EQ(nq_FldList_currList(list, &out), -3);
        EXPECT_EQ(out, nullptr);
    }
    nq_FldList_find(list, u"missing");
    EXPECT_EQ(nq_FldList_currList(list, &out), -3);  // not -1
}

TEST_F(FldTable, CurrReadersWithoutANode) {
    FldList *empty = nq_FldList_create(nullptr);
    nq_wchar out[8];
    int32_t i;
    double r;
    Point p;
    LnkList *l;
    EXPECT_EQ(nq_FldList_currChar(empty, out, 7), -1);
    EXPECT_EQ(nq_FldList_currHandle(empty, out, 7), -1);
    EXPECT_EQ(nq_FldList_currInt(empty, &i), -1);
    EXPECT_EQ(nq_FldList_currReal(empty, &r), -1);
    EXPECT_EQ(nq_FldList_currPoint(empty, &p), -1);
    EXPECT_EQ(nq_FldList_currList(empty, &l), -3);
    EXPECT_EQ(nq_FldList_currChar(nullptr, out, 7), -1);
    EXPECT_EQ(nq_FldList_currList(nullptr, &l), -3);
    nq_FldList_destroy(empty);
}

// The node on its own

TEST_F(FldTable, GetFldValueFormatsEachType) {
    EXPECT_EQ(Take(nq_FldNode_getFldValue(nq_FldList_find(list, u"ch"))), u"2.5");
    EXPECT_EQ(Take(nq_FldNode_getFldValue(nq_FldList_find(list, u"ha"))), u"HX");
    EXPECT_EQ(Take(nq_FldNode_getFldValue(nq_FldList_find(list, u"in"))), u"42");
    EXPECT_EQ(Take(nq_FldNode_getFldValue(nq_FldList_find(list, u"lo"))), u"-7");
    EXPECT_EQ(Take(nq_FldNode_getFldValue(nq_FldList_find(list, u"re"))), u"-2.700000");
    EXPECT_EQ(Take(nq_FldNode_getFldValue(nq_FldList_find(list, u"un"))), u"(null)");
    EXPECT_EQ(Take(nq_FldNode_getFldValue(nq_FldList_find(list, u"sl"))), u"");
}

TEST_F(FldTable, GetFldValueOfAPointTakesItsCharacterFromTheFirstCoordinate) {
    // 0.1 is 0x3FB999999999999A: the low word is 0x999A.
    const Point p{0.1, 2.0, -3.0};
    nq_FldList_modPoint(list, u"pt", &p);
    EXPECT_EQ(Take(nq_FldNode_getFldValue(nq_FldList_find(list, u"pt"))), u"\u999A:0.100 2.000 -3.000");
    const Vector v{0.1, 2.0, -3.0};
    nq_FldList_modVector(list, u"ve", &v);
    EXPECT_EQ(Take(nq_FldNode_getFldValue(nq_FldList_find(list, u"ve"))), u"\u999A:0.100 2.000 -3.000");
    // 1.5 has a zero low word, a terminator: the text ends before it begins.
    EXPECT_EQ(Take(nq_FldNode_getFldValue(nq_FldList_find(list, u"dp"))), u"");
}

TEST_F(FldTable, GetFldValueOfAListRepeatsThePreviousText) {
    EXPECT_EQ(Take(nq_FldNode_getFldValue(nq_FldList_find(list, u"in"))), u"42");
    EXPECT_EQ(Take(nq_FldNode_getFldValue(nq_FldList_find(list, u"li"))), u"42");
    EXPECT_EQ(Take(nq_FldNode_getFldValue(nullptr)), u"");  // clears the buffer
    EXPECT_EQ(Take(nq_FldNode_getFldValue(nq_FldList_find(list, u"li"))), u"");
}

TEST(FldNodeValue, GetFldValueHoldsALongString) {
    const u16 longText(10000, u'w');
    FldNode *n = nq_FldList_newChar(u"a", longText.c_str());
    EXPECT_EQ(Take(nq_FldNode_getFldValue(n)), longText);
    nq_FldList_destroyNode(n);
}

TEST(FldNodeValue, UpdateParsesTextByType) {
    FldNode *r = nq_FldList_newReal(u"r", 0);
    FldNode *i = nq_FldList_newInt(u"i", 0);
    FldNode *l = nq_FldList_newLong(u"l", 0);
    nq_FldNode_updateFldValue(r, u" 3.75x");
    nq_FldNode_updateFldValue(i, u"-12.9");
    nq_FldNode_updateFldValue(l, u"77");
    EXPECT_EQ(r->value.d, 3.75);
    EXPECT_EQ(i->value.i, -12);
    EXPECT_EQ(l->value.i, 77);
    for (FldNode *n : {r, i, l}) nq_FldList_destroyNode(n);
}

TEST(FldNodeValue, UpdateOverwritesAStringInPlace) {
    FldNode *c = nq_FldList_newChar(u"c", u"abcdef");
    nq_wchar *before = c->value.str;
    nq_FldNode_updateFldValue(c, u"xyz");
    EXPECT_EQ(c->value.str, before);  // no reallocation
    EXPECT_EQ(S(c->value.str), u"xyz");
    nq_FldList_destroyNode(c);
}

TEST(FldNodeValue, UpdateCutsTextLongerThanTheString) {
    FldNode *h = nq_FldList_newHandle(u"h", u"abc");
    nq_FldNode_updateFldValue(h, u"a much longer text");
    EXPECT_EQ(S(h->value.str), u"a m");
    nq_FldList_destroyNode(h);
}

TEST(FldNodeValue, UpdateLeavesPointsListsAndEmptyValuesAlone) {
    const Point p{1, 2, 3};
    FldNode *pt = nq_FldList_newPoint(u"p", &p);
    FldNode *li = nq_FldList_newList(u"l", nullptr);
    FldNode *un = nq_FldList_newUnknown(u"u");
    FldNode *nc = nq_FldList_newChar(u"c", nullptr);
    for (FldNode *n : {pt, li, un, nc}) nq_FldNode_updateFldValue(n, u"42");
    EXPECT_EQ(pt->value.point.x, 1.0);
    EXPECT_EQ(li->value.list, nullptr);
    EXPECT_EQ(un->value.ptr, nullptr);
    EXPECT_EQ(nc->value.str, nullptr);
    nq_FldNode_updateFldValue(nullptr, u"42");
    nq_FldNode_updateFldValue(pt, nullptr);
    for (FldNode *n : {pt, li, un, nc}) nq_FldList_destroyNode(n);
}
