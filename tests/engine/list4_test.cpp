// The circular lists: add after, add before, walks, pop, remove and the selected rules.
#include <gtest/gtest.h>

#include <vector>

#include "engine_test_support.h"

namespace {

struct Record {
    l4link_st link;
    int value;
};

std::vector<int> walk_forward(const l4list &list) {
    std::vector<int> values;
    for (void *r = l4_next(&list, nullptr); r; r = l4_next(&list, r)) {
        values.push_back(static_cast<Record *>(r)->value);
    }
    return values;
}

std::vector<int> walk_backward(const l4list &list) {
    std::vector<int> values;
    for (void *r = l4_prev(&list, nullptr); r; r = l4_prev(&list, r)) {
        values.push_back(static_cast<Record *>(r)->value);
    }
    return values;
}

class List4 : public ::testing::Test {
protected:
    Record r[6] = {{{}, 0}, {{}, 1}, {{}, 2}, {{}, 3}, {{}, 4}, {{}, 5}};
    l4list list = {};
};

TEST_F(List4, EmptyListHasNoMembers) {
    EXPECT_EQ(l4_first(&list), nullptr);
    EXPECT_EQ(l4_last(&list), nullptr);
    EXPECT_EQ(l4_next(&list, nullptr), nullptr);
    EXPECT_EQ(l4_prev(&list, nullptr), nullptr);
    EXPECT_EQ(l4_pop(&list), nullptr);
    EXPECT_EQ(list.count, 0u);
}

TEST_F(List4, AddAfterOnEmptyListLinksTheRecordToItself) {
    l4_add_after(&list, nullptr, &r[1]);
    EXPECT_EQ(list.last, &r[1].link);
    EXPECT_EQ(r[1].link.next, &r[1].link);
    EXPECT_EQ(r[1].link.prev, &r[1].link);
    EXPECT_EQ(list.count, 1u);
}

TEST_F(List4, AddAppendsAndTheLastLinksToTheFirst) {
    for (int i = 1; i <= 3; ++i) l4_add(&list, &r[i]);
    EXPECT_EQ(walk_forward(list), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(walk_backward(list), (std::vector<int>{3, 2, 1}));
    EXPECT_EQ(l4_first(&list), &r[1]);
    EXPECT_EQ(l4_last(&list), &r[3]);
    EXPECT_EQ(r[3].link.next, &r[1].link);  // circular
    EXPECT_EQ(r[1].link.prev, &r[3].link);
    EXPECT_EQ(list.count, 3u);
}

TEST_F(List4, AddAfterTheLastMakesANewLast) {
    l4_add(&list, &r[1]);
    l4_add(&list, &r[2]);
    l4_add_after(&list, &r[2], &r[3]);
    EXPECT_EQ(l4_last(&list), &r[3]);
    l4_add_after(&list, &r[1], &r[4]);
    EXPECT_EQ(walk_forward(list), (std::vector<int>{1, 4, 2, 3}));
    EXPECT_EQ(l4_last(&list), &r[3]);
}

TEST_F(List4, AddBeforeTheFirstMakesANewFirstAndKeepsTheLast) {
    l4_add(&list, &r[1]);
    l4_add(&list, &r[2]);
    l4_add_before(&list, &r[1], &r[0]);
    EXPECT_EQ(walk_forward(list), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(l4_first(&list), &r[0]);
    EXPECT_EQ(l4_last(&list), &r[2]);
    l4_add_before(&list, &r[2], &r[5]);
    EXPECT_EQ(walk_forward(list), (std::vector<int>{0, 1, 5, 2}));
    EXPECT_EQ(l4_last(&list), &r[2]);
    EXPECT_EQ(list.count, 4u);
}

TEST_F(List4, AddBeforeOnEmptyListTakesTheRecord) {
    l4_add_before(&list, nullptr, &r[2]);
    EXPECT_EQ(walk_forward(list), (std::vector<int>{2}));
}

TEST_F(List4, NextOfTheLastIsNullThoughTheListIsCircular) {
    l4_add(&list, &r[1]);
    l4_add(&list, &r[2]);
    EXPECT_EQ(l4_next(&list, &r[2]), nullptr);
    EXPECT_EQ(l4_next(&list, nullptr), &r[1]);
    EXPECT_EQ(l4_prev(&list, &r[1]), nullptr);
    EXPECT_EQ(l4_prev(&list, nullptr), &r[2]);
}

TEST_F(List4, PopTakesTheLast) {
    for (int i = 1; i <= 3; ++i) l4_add(&list, &r[i]);
    EXPECT_EQ(l4_pop(&list), &r[3]);
    EXPECT_EQ(l4_pop(&list), &r[2]);
    EXPECT_EQ(walk_forward(list), (std::vector<int>{1}));
    EXPECT_EQ(l4_pop(&list), &r[1]);
    EXPECT_EQ(l4_pop(&list), nullptr);
    EXPECT_EQ(list.count, 0u);
    EXPECT_EQ(list.last, nullptr);
}

TEST_F(List4, RemoveOfTheLastMovesLastToItsPredecessor) {
    for (int i = 1; i <= 3; ++i) l4_add(&list, &r[i]);
    l4_remove(&list, &r[3]);
    EXPECT_EQ(l4_last(&list), &r[2]);
    EXPECT_EQ(walk_forward(list), (std::vector<int>{1, 2}));
    l4_remove(&list, &r[1]);
    EXPECT_EQ(walk_forward(list), (std::vector<int>{2}));
    l4_remove(&list, &r[2]);
    EXPECT_EQ(list.last, nullptr);
    EXPECT_EQ(list.count, 0u);
}

TEST_F(List4, RemoveOfANullRecordIsIgnored) {
    l4_add(&list, &r[1]);
    l4_remove(&list, nullptr);
    EXPECT_EQ(list.count, 1u);
}

TEST_F(List4, RemovingTheSelectedRecordOfAOneRecordListLeavesSelectedNull) {
    l4_add(&list, &r[1]);
    list.selected = &r[1];
    l4_remove(&list, &r[1]);
    EXPECT_EQ(list.selected, nullptr);
}

TEST_F(List4, RemovingTheSelectedRecordSelectsItsPredecessor) {
    for (int i = 1; i <= 3; ++i) l4_add(&list, &r[i]);
    list.selected = &r[2];
    l4_remove(&list, &r[2]);
    EXPECT_EQ(list.selected, &r[1]);
    // The predecessor of the first is the last: the list is circular.
    list.selected = &r[1];
    l4_remove(&list, &r[1]);
    EXPECT_EQ(list.selected, &r[3]);
}

TEST_F(List4, RemovingAnotherRecordKeepsTheSelection) {
    for (int i = 1; i <= 3; ++i) l4_add(&list, &r[i]);
    list.selected = &r[2];
    l4_remove(&list, &r[3]);
    EXPECT_EQ(list.selected, &r[2]);
}

TEST_F(List4, ContainsWalksTheList) {
    l4_add(&list, &r[1]);
    l4_add(&list, &r[2]);
    EXPECT_EQ(l4_contains(&list, &r[2]), 1);
    EXPECT_EQ(l4_contains(&list, &r[3]), 0);
    EXPECT_EQ(l4_contains(&list, nullptr), 0);
    l4list empty = {};
    EXPECT_EQ(l4_contains(&empty, &r[1]), 0);
}

TEST_F(List4, NullListsAreIgnored) {
    l4_add(nullptr, &r[1]);
    l4_add_after(nullptr, nullptr, &r[1]);
    l4_add_before(nullptr, nullptr, &r[1]);
    l4_remove(nullptr, &r[1]);
    EXPECT_EQ(l4_first(nullptr), nullptr);
    EXPECT_EQ(l4_last(nullptr), nullptr);
    EXPECT_EQ(l4_next(nullptr, nullptr), nullptr);
    EXPECT_EQ(l4_prev(nullptr, nullptr), nullptr);
    EXPECT_EQ(l4_pop(nullptr), nullptr);
    EXPECT_EQ(l4_contains(nullptr, &r[1]), 0);
}

}  // namespace
