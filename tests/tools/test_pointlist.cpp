// Point lists, vector lists, point travel records and the 50-slot serial table.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "geometry_support.h"
#include "nq_tls20an.h"

using geotest::near;

namespace {

Vector V(double x, double y, double z) { return Vector{x, y, z}; }
Point P(double x, double y, double z) { return Point{x, y, z}; }

// The x coordinates from head to tail, read off the nodes.
template <typename T>
std::vector<double> xs(LnkList *list) {
    std::vector<double> out;
    for (LnkListNode *n = list->head; n; n = n->next) out.push_back(static_cast<T *>(n->data)->x);
    return out;
}

using Xs = std::vector<double>;

}  // namespace

TEST(PointList, CreateCopiesThePointsAndStartsTheCursor) {
    Point a = P(1, 0, 0), b = P(2, 0, 0), c = P(3, 0, 0);
    PointList *list = nq_PointList_create(&a, &b, &c, nullptr);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(nq_LnkList_length(list), 3);
    EXPECT_EQ(xs<Point>(list), (Xs{1, 2, 3}));
    EXPECT_EQ(list->cursor, list->head);
    EXPECT_NE(list->head->data, &a);
    a.x = 99;  // the list holds its own copy
    EXPECT_EQ(xs<Point>(list), (Xs{1, 2, 3}));
    EXPECT_EQ(nq_PointList_destroy(list), 1);
}

TEST(PointList, CreateWithImmediateNullIsEmpty) {
    PointList *list = nq_PointList_create(nullptr);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(nq_LnkList_length(list), 0);
    EXPECT_EQ(nq_PointList_destroy(list), 1);
    EXPECT_EQ(nq_PointList_destroy(nullptr), 0);
}

TEST(PointList, CopyIsDeepAndLeavesTheSourceCursor) {
    Point a = P(1, 0, 0), b = P(2, 0, 0);
    PointList *list = nq_PointList_create(&a, &b, nullptr);
    nq_LnkList_end(list);
    PointList *copy = nq_PointList_copy(list);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(xs<Point>(copy), (Xs{1, 2}));
    EXPECT_EQ(list->cursor, list->tail);
    EXPECT_EQ(copy->cursor, copy->head);
    EXPECT_NE(copy->head->data, list->head->data);
    static_cast<Point *>(list->head->data)->x = 50;
    EXPECT_EQ(xs<Point>(copy), (Xs{1, 2}));
    nq_PointList_destroy(list);
    nq_PointList_destroy(copy);
    EXPECT_EQ(nq_PointList_copy(nullptr), nullptr);
}

TEST(PointList, InsertsPlaceCopies) {
    Point p1 = P(1, 0, 0), p2 = P(2, 0, 0), p3 = P(3, 0, 0), p4 = P(4, 0, 0), p5 = P(5, 0, 0);
    PointList *list = nq_PointList_create(nullptr);
    EXPECT_EQ(nq_PointList_insEnd(list, &p3), 1);
    EXPECT_EQ(nq_PointList_insStart(list, &p1), 1);
    EXPECT_EQ(xs<Point>(list), (Xs{1, 3}));
    nq_LnkList_start(list);
    EXPECT_EQ(nq_PointList_insAfter(list, &p2), 1);
    EXPECT_EQ(xs<Point>(list), (Xs{1, 2, 3}));
    nq_LnkList_end(list);
    EXPECT_EQ(nq_PointList_insBefore(list, &p4), 1);
    EXPECT_EQ(xs<Point>(list), (Xs{1, 2, 4, 3}));
    EXPECT_EQ(nq_PointList_insNth(list, 0, &p5), 1);
    EXPECT_EQ(nq_PointList_insNth(list, 5, &p5), 1);  // at the length: appended
    EXPECT_EQ(xs<Point>(list), (Xs{5, 1, 2, 4, 3, 5}));
    nq_PointList_destroy(list);
}

TEST(PointList, InsertsIntoNothingDoNothing) {
    Point p = P(1, 0, 0);
    EXPECT_EQ(nq_PointList_insStart(nullptr, &p), 0);
    EXPECT_EQ(nq_PointList_insEnd(nullptr, &p), 0);
    EXPECT_EQ(nq_PointList_insBefore(nullptr, &p), 0);
    EXPECT_EQ(nq_PointList_insAfter(nullptr, &p), 0);
    EXPECT_EQ(nq_PointList_insNth(nullptr, 0, &p), 0);
    PointList *list = nq_PointList_create(nullptr);
    EXPECT_EQ(nq_PointList_insEnd(list, nullptr), 0);
    EXPECT_EQ(nq_LnkList_length(list), 0);
    nq_PointList_destroy(list);
}

TEST(PointList, ModifyReplacesWithACopy) {
    Point a = P(1, 0, 0), b = P(2, 0, 0), c = P(3, 0, 0), r = P(7, 0, 0), s = P(8, 0, 0);
    PointList *list = nq_PointList_create(&a, &b, &c, nullptr);
    nq_LnkList_next(list);
    EXPECT_EQ(nq_PointList_modCurr(list, &r), 1);
    EXPECT_EQ(nq_PointList_modNth(list, 2, &s), 1);
    EXPECT_EQ(xs<Point>(list), (Xs{1, 7, 8}));
    r.x = 0;
    EXPECT_EQ(xs<Point>(list), (Xs{1, 7, 8}));
    nq_PointList_destroy(list);
}

TEST(PointList, ModifyWithoutACursorOrIndexFails) {
    Point a = P(1, 0, 0), r = P(7, 0, 0);
    PointList *list = nq_PointList_create(&a, nullptr);
    nq_LnkList_next(list);  // off the list
    EXPECT_EQ(nq_PointList_modCurr(list, &r), 0);
    EXPECT_EQ(nq_PointList_modNth(list, 3, &r), 0);
    EXPECT_EQ(nq_PointList_modCurr(nullptr, &r), 0);
    EXPECT_EQ(nq_PointList_modNth(list, 0, nullptr), 0);
    EXPECT_EQ(xs<Point>(list), (Xs{1}));
    nq_PointList_destroy(list);
}

TEST(PointList, GetCurrCopyIsTheCallersOwn) {
    Point a = P(1, 2, 3);
    PointList *list = nq_PointList_create(&a, nullptr);
    Point *copy = nq_PointList_getCurrCopy(list);
    ASSERT_NE(copy, nullptr);
    EXPECT_TRUE(near(*copy, 1, 2, 3, 0));
    EXPECT_NE(copy, list->head->data);
    nq_Free(copy);
    nq_LnkList_next(list);
    EXPECT_EQ(nq_PointList_getCurrCopy(list), nullptr);
    EXPECT_EQ(nq_PointList_getCurrCopy(nullptr), nullptr);
    nq_PointList_destroy(list);
}

TEST(PointList, ClosestPointGivesIndexAndCopy) {
    Point a = P(10, 0, 0), b = P(2, 1, 0), c = P(-5, 0, 0), target = P(0, 0, 0), out;
    PointList *list = nq_PointList_create(&a, &b, &c, nullptr);
    EXPECT_EQ(nq_PointList_getClosestPoint(&out, &target, list), 1);
    EXPECT_TRUE(near(out, 2, 1, 0, 0));
    nq_PointList_destroy(list);
}

TEST(PointList, ClosestPointOfEqualsIsTheFirst) {
    Point a = P(5, 0, 0), b = P(1, 0, 0), c = P(-1, 0, 0), target = P(0, 0, 0), out;
    PointList *list = nq_PointList_create(&a, &b, &c, nullptr);
    EXPECT_EQ(nq_PointList_getClosestPoint(&out, &target, list), 1);
    EXPECT_TRUE(near(out, 1, 0, 0, 0));
    nq_PointList_destroy(list);
}

TEST(PointList, ClosestPointOfEmptyOrNullIsMinusOne) {
    Point target = P(0, 0, 0), out = P(4, 4, 4);
    PointList *list = nq_PointList_create(nullptr);
    EXPECT_EQ(nq_PointList_getClosestPoint(&out, &target, list), -1);
    EXPECT_EQ(nq_PointList_getClosestPoint(&out, &target, nullptr), -1);
    EXPECT_EQ(nq_PointList_getClosestPoint(&out, nullptr, list), -1);
    EXPECT_EQ(nq_PointList_getClosestPoint(nullptr, &target, list), -1);
    EXPECT_TRUE(near(out, 4, 4, 4, 0));
    nq_PointList_destroy(list);
}

TEST(PointList, SearchGivesTheLastMatchAndEndsOffTheList) {
    Point a = P(1, 0, 0), b = P(2, 0, 0), c = P(1, 0, 0), d = P(3, 0, 0);
    PointList *list = nq_PointList_create(&a, &b, &c, &d, nullptr);
    EXPECT_EQ(nq_PointList_search(list, &a, 1e-05), 2);
    EXPECT_EQ(nq_LnkList_eol(list), 1);
    Point missing = P(9, 0, 0);
    EXPECT_EQ(nq_PointList_search(list, &missing, 1e-05), -1);
    EXPECT_EQ(nq_PointList_search(nullptr, &a, 1e-05), -1);
    EXPECT_EQ(nq_PointList_search(list, nullptr, 1e-05), -1);
    nq_PointList_destroy(list);
}

TEST(PointList, SearchToleranceIsStrict) {
    Point a = P(0, 0, 0), b = P(1e-05, 0, 0);
    PointList *list = nq_PointList_create(&a, nullptr);
    EXPECT_EQ(nq_PointList_search(list, &b, 1e-05), -1);
    EXPECT_EQ(nq_PointList_search(list, &b, 2e-05), 0);
    nq_PointList_destroy(list);
}

TEST(VectorList, CreateCopyInsertAndModify) {
    Vector a = V(1, 0, 0), b = V(2, 0, 0), c = V(3, 0, 0);
    VectorList *list = nq_VectorList_create(&a, &b, nullptr);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->cursor, list->head);
    EXPECT_EQ(nq_VectorList_insEnd(list, &c), 1);
    EXPECT_EQ(nq_VectorList_insStart(list, &c), 1);
    nq_LnkList_start(list);
    EXPECT_EQ(nq_VectorList_insAfter(list, &a), 1);
    EXPECT_EQ(nq_VectorList_insBefore(list, &b), 1);
    EXPECT_EQ(nq_VectorList_insNth(list, 1, &b), 1);
    EXPECT_EQ(xs<Vector>(list), (Xs{2, 2, 3, 1, 1, 2, 3}));
    Vector r = V(9, 0, 0);
    EXPECT_EQ(nq_VectorList_modNth(list, 0, &r), 1);
    nq_LnkList_end(list);
    EXPECT_EQ(nq_VectorList_modCurr(list, &r), 1);
    EXPECT_EQ(xs<Vector>(list), (Xs{9, 2, 3, 1, 1, 2, 9}));
    VectorList *copy = nq_VectorList_copy(list);
    EXPECT_EQ(xs<Vector>(copy), (Xs{9, 2, 3, 1, 1, 2, 9}));
    nq_LnkList_start(copy);
    Vector *curr = nq_VectorList_getCurrCopy(copy);
    ASSERT_NE(curr, nullptr);
    EXPECT_TRUE(near(*curr, 9, 0, 0, 0));
    nq_Free(curr);
    EXPECT_EQ(nq_VectorList_destroy(list), 1);
    EXPECT_EQ(nq_VectorList_destroy(copy), 1);
}

TEST(VectorList, NullListsDoNothing) {
    Vector v = V(1, 0, 0);
    EXPECT_EQ(nq_VectorList_insStart(nullptr, &v), 0);
    EXPECT_EQ(nq_VectorList_insEnd(nullptr, &v), 0);
    EXPECT_EQ(nq_VectorList_insBefore(nullptr, &v), 0);
    EXPECT_EQ(nq_VectorList_insAfter(nullptr, &v), 0);
    EXPECT_EQ(nq_VectorList_insNth(nullptr, 0, &v), 0);
    EXPECT_EQ(nq_VectorList_modCurr(nullptr, &v), 0);
    EXPECT_EQ(nq_VectorList_modNth(nullptr, 0, &v), 0);
    EXPECT_EQ(nq_VectorList_getCurrCopy(nullptr), nullptr);
    EXPECT_EQ(nq_VectorList_copy(nullptr), nullptr);
    EXPECT_EQ(nq_VectorList_destroy(nullptr), 0);
    EXPECT_EQ(nq_VectorList_search(nullptr, &v, 1), -1);
    EXPECT_EQ(nq_VectorList_getClosestVector(&v, &v, nullptr), -1);
}

TEST(VectorList, ClosestVectorMeasuresAsPoints) {
    Vector a = V(0, 0, 3), b = V(1, 1, 0), c = V(-1, -1, 0), target = V(0, 0, 0), out;
    VectorList *list = nq_VectorList_create(&a, &b, &c, nullptr);
    EXPECT_EQ(nq_VectorList_getClosestVector(&out, &target, list), 1);
    EXPECT_TRUE(near(out, 1, 1, 0, 0));
    nq_VectorList_destroy(list);
}

TEST(VectorList, SearchGivesTheLastMatch) {
    Vector a = V(0, 1, 0), b = V(0, 1, 0), c = V(1, 0, 0);
    VectorList *list = nq_VectorList_create(&a, &b, &c, nullptr);
    EXPECT_EQ(nq_VectorList_search(list, &a, 1e-05), 1);
    EXPECT_EQ(nq_LnkList_eol(list), 1);
    Vector far = V(5, 5, 5);
    EXPECT_EQ(nq_VectorList_search(list, &far, 1e-05), -1);
    nq_VectorList_destroy(list);
}

TEST(PointTravel, NodeCarriesPointLabelAndValue) {
    Point p = P(1, 2, 3);
    PointTravelNode *node = nq_PointTravelNode_create(&p, 42, u"P%d-%s", 7, u"end");
    ASSERT_NE(node, nullptr);
    EXPECT_TRUE(near(node->point, 1, 2, 3, 0));
    EXPECT_EQ(std::u16string(node->label), u"P7-end");
    EXPECT_EQ(node->value, 42);
    nq_Free(node);
}

TEST(PointTravel, NodeWithoutPointIsNullAndWithoutFormatHasEmptyLabel) {
    EXPECT_EQ(nq_PointTravelNode_create(nullptr, 1, u"x"), nullptr);
    Point p = P(0, 0, 0);
    PointTravelNode *node = nq_PointTravelNode_create(&p, 3, nullptr);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->label[0], 0);
    EXPECT_EQ(node->value, 3);
    nq_Free(node);
}

TEST(PointTravel, LongLabelIsCutToTheField) {
    Point p = P(0, 0, 0);
    std::u16string longText(600, u'x');
    PointTravelNode *node = nq_PointTravelNode_create(&p, 0, u"%s", longText.c_str());
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(std::u16string(node->label), longText.substr(0, NQ_POINT_TRAVEL_LABEL_SIZE - 1));
    nq_Free(node);
}

TEST(PointTravel, ListAppendsAndWalks) {
    Point p = P(1, 0, 0), q = P(2, 0, 0);
    PointTravelList *list = nq_PointTravelList_create();
    ASSERT_NE(list, nullptr);
    PointTravelNode *first = nq_PointTravelNode_create(&p, 1, u"first");
    PointTravelNode *second = nq_PointTravelNode_create(&q, 2, u"second");
    EXPECT_EQ(nq_PointTravelList_insEnd(list, first), 1);
    EXPECT_EQ(nq_PointTravelList_insEnd(list, second), 1);
    EXPECT_EQ(nq_PointTravelList_insEnd(list, nullptr), 0);
    EXPECT_EQ(nq_PointTravelList_insEnd(nullptr, first), 0);
    EXPECT_EQ(nq_PointTravelList_start(list), 1);
    EXPECT_EQ(nq_PointTravelList_getCurr(list), first);
    EXPECT_EQ(nq_PointTravelList_next(list), 1);
    EXPECT_EQ(nq_PointTravelList_getCurr(list), second);
    EXPECT_EQ(nq_PointTravelList_prev(list), 1);
    EXPECT_EQ(nq_PointTravelList_getCurr(list), first);
    EXPECT_EQ(nq_PointTravelList_eol(list), 0);
    nq_PointTravelList_next(list);
    EXPECT_EQ(nq_PointTravelList_next(list), 0);
    EXPECT_EQ(nq_PointTravelList_eol(list), 1);
    EXPECT_EQ(nq_PointTravelList_getCurr(list), nullptr);
    EXPECT_EQ(nq_PointTravelList_destroy(list), 1);
    EXPECT_EQ(nq_PointTravelList_destroy(nullptr), 0);
    EXPECT_EQ(nq_PointTravelList_eol(nullptr), 1);
}

TEST(PointTravel, SerialTableKeepsFiftyValues) {
    int first = nq_PointTravelList_add(1000);
    std::vector<int> serials{first};
    for (int i = 1; i < 50; ++i) serials.push_back(nq_PointTravelList_add(1000 + i));
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(serials[i], first + i);
        EXPECT_EQ(nq_PointTravelList_get(serials[i]), 1000 + i);
    }
    // The 51st overwrites the oldest slot: its serial number is gone.
    int next = nq_PointTravelList_add(2000);
    EXPECT_EQ(next, first + 50);
    EXPECT_EQ(nq_PointTravelList_get(first), 0);
    EXPECT_EQ(nq_PointTravelList_get(first + 1), 1001);
    EXPECT_EQ(nq_PointTravelList_get(next), 2000);
    EXPECT_EQ(nq_PointTravelList_get(next + 1000), 0);
}

TEST(PointTravel, SerialTableWrapsRoundAgain) {
    int base = nq_PointTravelList_add(1);
    for (int i = 0; i < 120; ++i) nq_PointTravelList_add(10 + i);
    int last = base + 120;
    EXPECT_EQ(nq_PointTravelList_get(last), 129);
    EXPECT_EQ(nq_PointTravelList_get(last - 49), 80);
    EXPECT_EQ(nq_PointTravelList_get(last - 50), 0);
}

TEST(PointList, EveryFunctionTracesEnteringAndLeaving) {
    Point a = P(1, 0, 0), b = P(2, 0, 0), out;
    Vector va = V(1, 0, 0), vo;
    PointList *pl = nq_PointList_create(&a, &b, nullptr);
    VectorList *vl = nq_VectorList_create(&va, nullptr);
    PointTravelList *tl = nq_PointTravelList_create();
    std::vector<LnkList *> made;  // released after the traced calls
    PointTravelNode *node = nullptr;
    struct Case {
        const char *name;
        std::function<void()> call;
    } cases[] = {
        {"nq_PointList_create", [&] { made.push_back(nq_PointList_create(&a, nullptr)); }},
        {"nq_PointList_copy", [&] { made.push_back(nq_PointList_copy(pl)); }},
        {"nq_PointList_destroy", [&] { nq_PointList_destroy(nullptr); }},
        {"nq_PointList_insStart", [&] { nq_PointList_insStart(pl, &a); }},
        {"nq_PointList_insEnd", [&] { nq_PointList_insEnd(pl, &a); }},
        {"nq_PointList_insBefore", [&] { nq_PointList_insBefore(pl, &a); }},
        {"nq_PointList_insAfter", [&] { nq_PointList_insAfter(pl, &a); }},
        {"nq_PointList_insNth", [&] { nq_PointList_insNth(pl, 1, &a); }},
        {"nq_PointList_modCurr", [&] { nq_PointList_modCurr(pl, &b); }},
        {"nq_PointList_modNth", [&] { nq_PointList_modNth(pl, 0, &b); }},
        {"nq_PointList_getCurrCopy", [&] { nq_Free(nq_PointList_getCurrCopy(pl)); }},
        {"nq_PointList_getClosestPoint", [&] { nq_PointList_getClosestPoint(&out, &a, pl); }},
        {"nq_PointList_search", [&] { nq_PointList_search(pl, &a, 1); }},
        {"nq_VectorList_create", [&] { made.push_back(nq_VectorList_create(&va, nullptr)); }},
        {"nq_VectorList_copy", [&] { made.push_back(nq_VectorList_copy(vl)); }},
        {"nq_VectorList_destroy", [&] { nq_VectorList_destroy(nullptr); }},
        {"nq_VectorList_insStart", [&] { nq_VectorList_insStart(vl, &va); }},
        {"nq_VectorList_insEnd", [&] { nq_VectorList_insEnd(vl, &va); }},
        {"nq_VectorList_insBefore", [&] { nq_VectorList_insBefore(vl, &va); }},
        {"nq_VectorList_insAfter", [&] { nq_VectorList_insAfter(vl, &va); }},
        {"nq_VectorList_insNth", [&] { nq_VectorList_insNth(vl, 0, &va); }},
        {"nq_VectorList_modCurr", [&] { nq_VectorList_modCurr(vl, &va); }},
        {"nq_VectorList_modNth", [&] { nq_VectorList_modNth(vl, 0, &va); }},
        {"nq_VectorList_getCurrCopy", [&] { nq_Free(nq_VectorList_getCurrCopy(vl)); }},
        {"nq_VectorList_getClosestVector", [&] { nq_VectorList_getClosestVector(&vo, &va, vl); }},
        {"nq_VectorList_search", [&] { nq_VectorList_search(vl, &va, 1); }},
        {"nq_PointTravelNode_create", [&] { node = nq_PointTravelNode_create(&a, 0, u"x"); }},
        {"nq_PointTravelList_create", [&] { made.push_back(nq_PointTravelList_create()); }},
        {"nq_PointTravelList_insEnd", [&] { nq_PointTravelList_insEnd(tl, nullptr); }},
        {"nq_PointTravelList_destroy", [&] { nq_PointTravelList_destroy(nullptr); }},
        {"nq_PointTravelList_add", [&] { nq_PointTravelList_add(5); }},
        {"nq_PointTravelList_get", [&] { nq_PointTravelList_get(5); }},
    };
    for (const Case &k : cases)
        geotest::expect_frame(NQ_DIAG_POINT, "pointlist.cpp", std::string("Entering ") + k.name + ".",
                              std::string("Leaving ") + k.name + ".", k.call);
    for (LnkList *list : made) nq_PointList_destroy(list);
    nq_Free(node);
    nq_PointList_destroy(pl);
    nq_VectorList_destroy(vl);
    nq_PointTravelList_destroy(tl);
}

TEST(PointTravel, ListWalksAreTheLinkedListsOwn) {
    Point p = P(0, 0, 0);
    PointTravelList *list = nq_PointTravelList_create();
    nq_PointTravelList_insEnd(list, nq_PointTravelNode_create(&p, 1, u"a"));
    // Under the point bit alone the walks say nothing; under the list bit they speak as the list.
    geotest::expect_silent(NQ_DIAG_POINT, 3, [&] {
        nq_PointTravelList_start(list);
        nq_PointTravelList_getCurr(list);
        nq_PointTravelList_eol(list);
        nq_PointTravelList_next(list);
        nq_PointTravelList_prev(list);
    });
    geotest::expect_frame(NQ_DIAG_LNKLIST, "lnklist.cpp", "Entering nq_LnkList_start.", "Exiting nq_LnkList_start.",
                          [&] { nq_PointTravelList_start(list); });
    nq_PointTravelList_destroy(list);
}
