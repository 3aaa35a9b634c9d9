// The StrList family: owned copies, the static read buffers, sorted insertion, search,
// duplicates, delimited strings, grouped IN lists and the trace frame.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "nq_tls20an.h"
#include "test_support.h"
#include "text_test_util.h"

using nqtt::entries;
using nqtt::S;
using nqtt::Strings;

namespace {

// A list that goes when the test ends.
struct Owned {
    StrList *list;
    explicit Owned(StrList *l) : list(l) {}
    ~Owned() { nq_StrList_destroy(list); }
    operator StrList *() const { return list; }
};

StrList *make(std::initializer_list<const nq_wchar *> strings) {
    StrList *list = nq_StrList_create(nullptr);
    for (const nq_wchar *s : strings) nq_StrList_insEnd(list, s);
    nq_StrList_start(list);
    return list;
}

// Console trace lines of what runs inside, with the family's bit (and only it) set.
template <typename F>
std::string trace(F body, uint32_t mask = NQ_DIAG_STRLIST) {
    nq_Diag_setDiagOutput(NQ_DIAG_OUTPUT_CONSOLE);
    nq_Diag_setLevel(3);
    nq_Diag_setCondition(mask);
    nqtest::CaptureFd out(1);
    body();
    std::string text = out.stop();
    nq_Diag_disable();
    return text;
}

// The messages of trace lines "file (line) message".
std::vector<std::string> messages(const std::string &text) {
    std::vector<std::string> out;
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        const std::string line = text.substr(start, end - start);
        const std::size_t cut = line.find(") ");
        out.push_back(cut == std::string::npos ? line : line.substr(cut + 2));
        start = end + 1;
    }
    return out;
}

using Lines = std::vector<std::string>;

}  // namespace

// ---- Creating and the node ----

TEST(StrList, CreateCopiesTheStringsAndStandsOnTheHead) {
    nq_wchar text[] = u"one";
    Owned list(nq_StrList_create(text, u"two", u"three", nullptr));
    text[0] = u'X';
    EXPECT_EQ(entries(list), Strings({u"one", u"two", u"three"}));
    EXPECT_EQ(S(nq_StrList_getCurr(list)), u"one");
    EXPECT_EQ(nq_StrList_length(list), 3);
    EXPECT_EQ(nq_StrList_count(list), 3);
}

TEST(StrList, CreateWithAnImmediateNullIsEmpty) {
    Owned list(nq_StrList_create(nullptr));
    ASSERT_NE(list.list, nullptr);
    EXPECT_EQ(nq_StrList_length(list), 0);
    EXPECT_EQ(nq_StrList_eol(list), 1);
}

TEST(StrList, NodeHoldsItsOwnCopy) {
    StrListNode *node = nq_StrListNode_create(u"abc");
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(S(node->string), u"abc");
    EXPECT_EQ(nq_StrListNode_destroy(node), 1);
    EXPECT_EQ(nq_StrListNode_create(nullptr), nullptr);
    EXPECT_EQ(nq_StrListNode_destroy(nullptr), 0);
}

// ---- Inserting ----

TEST(StrList, InsEndWithANullStringChangesNothing) {
    Owned list(make({u"a"}));
    EXPECT_EQ(nq_StrList_insEnd(list, nullptr), 0);
    EXPECT_EQ(nq_StrList_insStart(list, nullptr), 0);
    EXPECT_EQ(nq_StrList_insBefore(list, nullptr), 0);
    EXPECT_EQ(nq_StrList_insAfter(list, nullptr), 0);
    EXPECT_EQ(nq_StrList_insNth(list, 0, nullptr), 0);
    EXPECT_EQ(entries(list), Strings({u"a"}));
    EXPECT_EQ(nq_StrList_insEnd(nullptr, u"x"), 0);
    EXPECT_EQ(nq_StrList_insStart(nullptr, u"x"), 0);
    EXPECT_EQ(nq_StrList_insNth(nullptr, 0, u"x"), 0);
}

TEST(StrList, InsertionsFollowTheLinkedListsCursorRules) {
    Owned list(make({u"b", u"d"}));
    EXPECT_EQ(nq_StrList_insStart(list, u"a"), 1);
    EXPECT_EQ(nq_StrList_insEnd(list, u"e"), 1);
    nq_StrList_start(list);
    nq_StrList_next(list);  // on "b"
    EXPECT_EQ(nq_StrList_insAfter(list, u"c"), 1);
    EXPECT_EQ(S(nq_StrList_getCurr(list)), u"b");
    EXPECT_EQ(nq_StrList_insBefore(list, u"ab"), 1);
    EXPECT_EQ(nq_StrList_insNth(list, 0, u"0"), 1);
    EXPECT_EQ(nq_StrList_insNth(list, 7, u"z"), 1);  // the length appends
    EXPECT_EQ(entries(list), Strings({u"0", u"a", u"ab", u"b", u"c", u"d", u"e", u"z"}));
}

TEST(StrList, InsSortedGoesBeforeTheFirstGreaterEntry) {
    Owned list(nq_StrList_create(nullptr));
    for (const nq_wchar *s : {u"m", u"b", u"x", u"B", u"m", u"a"}) {
        EXPECT_EQ(nq_StrList_insSorted(list, s), 1);
    }
    EXPECT_EQ(entries(list), Strings({u"B", u"a", u"b", u"m", u"m", u"x"}));
}

TEST(StrList, InsSortedPutsEqualStringsAfterTheirEquals) {
    Owned list(make({u"a", u"b", u"c"}));
    nq_StrList_insSorted(list, u"b");
    // The new "b" stands before "c", the cursor stays on "c".
    EXPECT_EQ(S(nq_StrList_getCurr(list)), u"c");
    StrListNode *second = static_cast<StrListNode *>(list.list->head->next->data);
    StrListNode *third = static_cast<StrListNode *>(list.list->head->next->next->data);
    EXPECT_EQ(S(second->string), u"b");
    EXPECT_EQ(S(third->string), u"b");
    EXPECT_EQ(list.list->cursor, list.list->tail);
}

TEST(StrList, InsSortedAtTheEndLeavesTheCursorOff) {
    Owned list(make({u"a", u"b"}));
    EXPECT_EQ(nq_StrList_insSorted(list, u"z"), 1);
    EXPECT_EQ(entries(list), Strings({u"a", u"b", u"z"}));
    EXPECT_EQ(nq_StrList_eol(list), 1);
    EXPECT_EQ(nq_StrList_insSorted(list, nullptr), 0);
    EXPECT_EQ(nq_StrList_insSorted(nullptr, u"a"), 0);
}

// ---- Modifying ----

TEST(StrList, ModCurrReplacesTheEntry) {
    Owned list(make({u"a", u"b"}));
    nq_StrList_next(list);
    EXPECT_EQ(nq_StrList_modCurr(list, u"B"), 1);
    EXPECT_EQ(entries(list), Strings({u"a", u"B"}));
    EXPECT_EQ(nq_StrList_modCurr(list, nullptr), 0);
    EXPECT_EQ(entries(list), Strings({u"a", u"B"}));
}

TEST(StrList, ModCurrWithoutACursorKeepsNothing) {
    Owned list(make({u"a"}));
    nq_StrList_next(list);
    EXPECT_EQ(nq_StrList_modCurr(list, u"x"), 0);
    EXPECT_EQ(entries(list), Strings({u"a"}));
    EXPECT_EQ(nq_StrList_modCurr(nullptr, u"x"), 0);
}

TEST(StrList, ModNthNeedsAnEntryThere) {
    Owned list(make({u"a", u"b", u"c"}));
    EXPECT_EQ(nq_StrList_modNth(list, 2, u"C"), 1);
    EXPECT_EQ(nq_StrList_modNth(list, 3, u"D"), 0);
    EXPECT_EQ(nq_StrList_modNth(list, -1, u"D"), 0);
    EXPECT_EQ(entries(list), Strings({u"a", u"b", u"C"}));
}

// ---- Reading ----

TEST(StrList, GetCurrOffTheEndReturnsTheLastStringAgain) {
    Owned list(make({u"a", u"b"}));
    nq_StrList_end(list);
    const nq_wchar *last = nq_StrList_getCurr(list);
    EXPECT_EQ(S(last), u"b");
    EXPECT_EQ(nq_StrList_next(list), 0);
    EXPECT_EQ(nq_StrList_eol(list), 1);
    EXPECT_EQ(nq_StrList_getCurr(list), last);
    EXPECT_EQ(S(nq_StrList_getCurr(list)), u"b");
    EXPECT_EQ(S(nq_StrList_getCurr(nullptr)), u"b");
}

TEST(StrList, GetCurrIsAStaticCopy) {
    Owned list(make({u"a", u"b"}));
    const nq_wchar *first = nq_StrList_getCurr(list);
    nq_StrList_next(list);
    const nq_wchar *second = nq_StrList_getCurr(list);
    EXPECT_EQ(first, second);
    EXPECT_EQ(S(second), u"b");
    const StrListNode *node = static_cast<const StrListNode *>(list.list->tail->data);
    EXPECT_NE(static_cast<const nq_wchar *>(node->string), second);
}

TEST(StrList, LongStringsAreCutTo512OnReadingButKeptWhole) {
    const std::u16string longer(700, u'q');
    Owned list(nq_StrList_create(longer.c_str(), nullptr));
    EXPECT_EQ(S(nq_StrList_getCurr(list)), std::u16string(512, u'q'));
    EXPECT_EQ(entries(list), Strings({longer}));
    nq_wchar *whole = nq_StrList_getCurrPtr(list);
    EXPECT_EQ(S(whole), longer);
    nq_Free(whole);
    Owned copy(nq_StrList_copy(list));
    EXPECT_EQ(entries(copy), Strings({std::u16string(512, u'q')}));
}

TEST(StrList, GetCurrPtrDuplicatesAndOffTheListGivesTheLastBlockAgain) {
    Owned list(make({u"a"}));
    nq_wchar *dup = nq_StrList_getCurrPtr(list);
    EXPECT_EQ(S(dup), u"a");
    nq_wchar *again = nq_StrList_getCurrPtr(list);
    EXPECT_NE(dup, again);
    nq_Free(dup);
    nq_StrList_next(list);
    // The same block once more; it is the caller's, and this caller releases it once.
    EXPECT_EQ(nq_StrList_getCurrPtr(list), again);
    nq_Free(again);
}

TEST(StrList, GetNthMovesTheCursor) {
    Owned list(make({u"a", u"b", u"c"}));
    EXPECT_EQ(S(nq_StrList_getNth(list, 1)), u"b");
    EXPECT_EQ(S(nq_StrList_getCurr(list)), u"b");
    EXPECT_EQ(nq_StrList_getNth(list, 3), nullptr);
    EXPECT_EQ(nq_StrList_eol(list), 1);
    EXPECT_EQ(nq_StrList_getNth(list, -1), nullptr);
    EXPECT_EQ(nq_StrList_getNth(nullptr, 0), nullptr);
}

// ---- Searching and sorting ----

TEST(StrList, SearchLeavesTheCursorOnTheMatch) {
    Owned list(make({u"alpha", u"Beta", u"gamma"}));
    EXPECT_EQ(nq_StrList_search(list, u"Beta", 0), 1);
    EXPECT_EQ(S(nq_StrList_getCurr(list)), u"Beta");
    EXPECT_EQ(nq_StrList_search(list, u"beta", 0), -1);
    EXPECT_EQ(nq_StrList_eol(list), 1);
    EXPECT_EQ(nq_StrList_search(list, u"GAMMA", 1), 2);
    EXPECT_EQ(nq_StrList_search(list, nullptr, 1), -1);
    EXPECT_EQ(nq_StrList_search(nullptr, u"a", 0), -1);
}

TEST(StrList, SearchForStringFindsAPartInItsOwnBuffer) {
    Owned list(make({u"red apple", u"Green Pear", u"pear tree"}));
    const nq_wchar *curr = nq_StrList_getNth(list, 0);
    const nq_wchar *found = nq_StrList_searchForString(list, u"pear", 0);
    EXPECT_EQ(S(found), u"pear tree");
    EXPECT_NE(found, curr);
    EXPECT_EQ(S(nq_StrList_getCurr(list)), u"pear tree");
    EXPECT_EQ(S(nq_StrList_searchForString(list, u"PEAR", 1)), u"Green Pear");
    EXPECT_EQ(nq_StrList_searchForString(list, u"plum", 1), nullptr);
    EXPECT_EQ(nq_StrList_eol(list), 1);
    EXPECT_EQ(S(nq_StrList_searchForString(list, u"", 0)), u"red apple");
    EXPECT_EQ(nq_StrList_searchForString(nullptr, u"a", 0), nullptr);
}

TEST(StrList, SortOrdersByCodeUnit) {
    Owned list(make({u"pear", u"Apple", u"apple", u"banana", u"pear", u"_x"}));
    nq_StrList_sort(list);
    EXPECT_EQ(entries(list), Strings({u"Apple", u"_x", u"apple", u"banana", u"pear", u"pear"}));
    nq_StrList_sort(nullptr);
}

// ---- Whole lists ----

TEST(StrList, ConcatenateCopiesTheSecondListWhichStays) {
    Owned list(make({u"a"}));
    Owned second(make({u"b", u"c"}));
    EXPECT_EQ(nq_StrList_concatenate(list, second), 1);
    EXPECT_EQ(entries(list), Strings({u"a", u"b", u"c"}));
    EXPECT_EQ(entries(second), Strings({u"b", u"c"}));
    EXPECT_EQ(nq_StrList_eol(second), 1);
    EXPECT_EQ(nq_StrList_concatenate(list, nullptr), 0);
    EXPECT_EQ(nq_StrList_concatenate(nullptr, second), 0);
}

TEST(StrList, ConcatenateToItselfCopiesEachEntryOnce) {
    Owned list(make({u"a", u"b"}));
    EXPECT_EQ(nq_StrList_concatenate(list, list), 1);
    EXPECT_EQ(entries(list), Strings({u"a", u"b", u"a", u"b"}));
}

TEST(StrList, CopyOfNullIsAnEmptyList) {
    Owned copy(nq_StrList_copy(nullptr));
    ASSERT_NE(copy.list, nullptr);
    EXPECT_EQ(nq_StrList_length(copy), 0);
    Owned list(make({u"x", u"y"}));
    Owned other(nq_StrList_copy(list));
    EXPECT_EQ(entries(other), Strings({u"x", u"y"}));
    EXPECT_NE(other.list, list.list);
}

TEST(StrList, RemoveDuplicatesKeepsTheFirstOccurrence) {
    StrList *list = make({u"a", u"B", u"a", u"b", u"c", u"B"});
    list = nq_StrList_removeDuplicates(list, 0);
    EXPECT_EQ(entries(list), Strings({u"a", u"B", u"b", u"c"}));
    list = nq_StrList_removeDuplicates(list, 1);
    EXPECT_EQ(entries(list), Strings({u"a", u"B", u"c"}));
    nq_StrList_destroy(list);
}

TEST(StrList, RemoveDuplicatesOfOneEntryReturnsTheSameList) {
    StrList *list = make({u"only"});
    EXPECT_EQ(nq_StrList_removeDuplicates(list, 0), list);
    StrList *empty = nq_StrList_create(nullptr);
    EXPECT_EQ(nq_StrList_removeDuplicates(empty, 1), empty);
    EXPECT_EQ(nq_StrList_removeDuplicates(nullptr, 1), nullptr);
    nq_StrList_destroy(list);
    nq_StrList_destroy(empty);
}

// ---- Delimited strings ----

TEST(StrList, FromDelimitedStringTrimsEachToken) {
    Owned list(nq_StrList_fromDelimitedString(u" a , b ", u","));
    EXPECT_EQ(entries(list), Strings({u"a", u"b"}));
    EXPECT_EQ(S(nq_StrList_getCurr(list)), u"a");
}

TEST(StrList, FromDelimitedStringOfOnlyDelimitersIsNull) {
    EXPECT_EQ(nq_StrList_fromDelimitedString(u",,", u","), nullptr);
    EXPECT_EQ(nq_StrList_fromDelimitedString(u"", u","), nullptr);
    EXPECT_EQ(nq_StrList_fromDelimitedString(nullptr, u","), nullptr);
    EXPECT_EQ(nq_StrList_fromDelimitedString(u"a", nullptr), nullptr);
}

TEST(StrList, FromDelimitedStringKeepsATokenOfBlanksAsEmpty) {
    Owned list(nq_StrList_fromDelimitedString(u",,a;;  ;b,", u",;"));
    EXPECT_EQ(entries(list), Strings({u"a", u"", u"b"}));
}

TEST(StrList, ToDelimitedStringJoinsWithoutATrailingDelimiter) {
    Owned one(make({u"solo"}));
    nq_wchar *joined = nq_StrList_toDelimitedString(one, u", ");
    EXPECT_EQ(S(joined), u"solo");
    nq_Free(joined);
    Owned three(make({u"a", u"bb", u"c"}));
    joined = nq_StrList_toDelimitedString(three, u", ");
    EXPECT_EQ(S(joined), u"a, bb, c");
    nq_Free(joined);
    joined = nq_StrList_toDelimitedString(three, nullptr);
    EXPECT_EQ(S(joined), u"abbc");
    nq_Free(joined);
    Owned empty(nq_StrList_create(nullptr));
    EXPECT_EQ(nq_StrList_toDelimitedString(empty, u","), nullptr);
    EXPECT_EQ(nq_StrList_toDelimitedString(nullptr, u","), nullptr);
}

TEST(StrList, ToDelimitedStringListGroupsOfTwoFromFiveGiveThree) {
    Owned list(make({u"1", u"2", u"3", u"4", u"5"}));
    Owned groups(nq_StrList_toDelimitedStringList(list, u",", 2, 0));
    EXPECT_EQ(entries(groups), Strings({u"1,2", u"3,4", u"5"}));
}

TEST(StrList, ToDelimitedStringListQuotesWithoutDoublingQuotes) {
    Owned list(make({u"a", u"o'k", u"c"}));
    Owned groups(nq_StrList_toDelimitedStringList(list, u",", 5, 1));
    EXPECT_EQ(entries(groups), Strings({u"'a','o'k','c'"}));
}

TEST(StrList, ToDelimitedStringListWithoutAGroupSizeMakesOneString) {
    Owned list(make({u"a", u"b", u"c"}));
    Owned groups(nq_StrList_toDelimitedStringList(list, u"|", 0, 0));
    EXPECT_EQ(entries(groups), Strings({u"a|b|c"}));
    Owned exact(nq_StrList_toDelimitedStringList(list, u"|", 3, 0));
    EXPECT_EQ(entries(exact), Strings({u"a|b|c"}));
}

TEST(StrList, ToDelimitedStringListCutsLongEntriesToItsBuffers) {
    Owned list(make({std::u16string(400, u'e').c_str()}));
    Owned plain(nq_StrList_toDelimitedStringList(list, u",", 2, 0));
    EXPECT_EQ(entries(plain), Strings({std::u16string(259, u'e')}));
    Owned quoted(nq_StrList_toDelimitedStringList(list, u",", 2, 1));
    EXPECT_EQ(entries(quoted), Strings({u"'" + std::u16string(255, u'e') + u"'"}));
}

TEST(StrList, ToDelimitedStringListOfAnEmptyListIsNull) {
    Owned empty(nq_StrList_create(nullptr));
    EXPECT_EQ(nq_StrList_toDelimitedStringList(empty, u",", 2, 1), nullptr);
    EXPECT_EQ(nq_StrList_toDelimitedStringList(nullptr, u",", 2, 1), nullptr);
}

// ---- The linked list's operations under this name ----

TEST(StrList, ForwardersWalkAndDelete) {
    StrList *list = make({u"a", u"b", u"c", u"d"});
    EXPECT_EQ(nq_StrList_end(list), 1);
    EXPECT_EQ(S(nq_StrList_getCurr(list)), u"d");
    EXPECT_EQ(nq_StrList_prev(list), 1);
    EXPECT_EQ(nq_StrList_skip(list, -2), 1);
    EXPECT_EQ(S(nq_StrList_getCurr(list)), u"a");
    EXPECT_EQ(nq_StrList_skip(list, 9), 0);
    EXPECT_EQ(nq_StrList_start(list), 1);
    EXPECT_EQ(nq_StrList_delCurr(list), 1);
    EXPECT_EQ(S(nq_StrList_getCurr(list)), u"b");
    EXPECT_EQ(nq_StrList_delNth(list, 1), 1);
    EXPECT_EQ(entries(list), Strings({u"b", u"d"}));
    EXPECT_EQ(nq_StrList_delNth(list, 5), 0);
    EXPECT_EQ(nq_StrList_delAll(list), 1);
    EXPECT_EQ(nq_StrList_length(list), 0);
    EXPECT_EQ(nq_StrList_eol(list), 1);
    EXPECT_EQ(nq_StrList_destroy(list), 1);
    EXPECT_EQ(nq_StrList_destroy(nullptr), 0);
    EXPECT_EQ(nq_StrList_length(nullptr), 0);
    EXPECT_EQ(nq_StrList_eol(nullptr), 1);
}

// ---- Tracing ----

TEST(StrListTrace, InsertionTracesItselfAndTheNode) {
    Owned list(nq_StrList_create(nullptr));
    const std::string text = trace([&] { nq_StrList_insStart(list, u"a"); });
    EXPECT_EQ(messages(text), Lines({"Entering nq_StrList_insStart.", "Entering nq_StrListNode_create.",
                                     "Exiting nq_StrListNode_create.", "Exiting nq_StrList_insStart."}));
    EXPECT_EQ(text.rfind("strlist.cpp (", 0), 0u);
}

TEST(StrListTrace, InsEndTracesOnlyTheNode) {
    Owned list(nq_StrList_create(nullptr));
    const std::string text = trace([&] { nq_StrList_insEnd(list, u"a"); });
    EXPECT_EQ(messages(text), Lines({"Entering nq_StrListNode_create.", "Exiting nq_StrListNode_create."}));
}

TEST(StrListTrace, TheNodeDestructorHasNoExitMessage) {
    StrList *list = make({u"a"});
    const std::string text = trace([&] { nq_StrList_destroy(list); });
    EXPECT_EQ(messages(text), Lines({"Entering nq_StrListNode_destroy."}));
}

TEST(StrListTrace, EachTracingOperationNamesItself) {
    Owned list(make({u"b", u"a"}));
    Owned other(make({u"c"}));
    const struct {
        const char *name;
        std::function<void()> call;
    } cases[] = {
        {"nq_StrList_search", [&] { nq_StrList_search(list, u"zz", 0); }},
        {"nq_StrList_searchForString", [&] { nq_StrList_searchForString(list, u"zz", 0); }},
        {"nq_StrList_concatenate", [&] { nq_StrList_concatenate(list, nullptr); }},
        {"nq_StrList_insAfter", [&] { nq_StrList_insAfter(list, nullptr); }},
        {"nq_StrList_insBefore", [&] { nq_StrList_insBefore(list, nullptr); }},
        {"nq_StrList_insNth", [&] { nq_StrList_insNth(list, 0, nullptr); }},
        {"nq_StrList_insSorted", [&] { nq_StrList_insSorted(list, nullptr); }},
        {"nq_StrList_modCurr", [&] { nq_StrList_modCurr(list, nullptr); }},
        {"nq_StrList_modNth", [&] { nq_StrList_modNth(list, 9, nullptr); }},
    };
    for (const auto &c : cases) {
        const std::string name = c.name;
        const Lines got = messages(trace(c.call));
        ASSERT_GE(got.size(), 2u) << name;
        EXPECT_EQ(got.front(), "Entering " + name + ".");
        EXPECT_EQ(got.back(), "Exiting " + name + ".");
    }
    StrList *copy = nullptr;
    const Lines copied = messages(trace([&] { copy = nq_StrList_copy(nullptr); }));
    EXPECT_EQ(copied, Lines({"Entering nq_StrList_copy.", "Exiting nq_StrList_copy."}));
    nq_StrList_destroy(copy);
}

TEST(StrListTrace, NothingBelowLevelThreeOrWithoutTheBit) {
    Owned list(nq_StrList_create(nullptr));
    nq_Diag_setDiagOutput(NQ_DIAG_OUTPUT_CONSOLE);
    nq_Diag_setLevel(2);
    nq_Diag_setCondition(NQ_DIAG_STRLIST);
    {
        nqtest::CaptureFd out(1);
        nq_StrList_insStart(list, u"a");
        EXPECT_EQ(out.stop(), "");
    }
    nq_Diag_disable();
    EXPECT_EQ(trace([&] { nq_StrList_insStart(list, u"b"); }, NQ_DIAG_LNKLIST).find("StrList"),
              std::string::npos);
}

// A fresh process: the static read slot is null until the first string is read.
TEST(StrListDeathTest, GetCurrIsNullUntilAStringIsRead) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");  // re-executed, so no earlier read counts
    EXPECT_EXIT(
        {
            StrList *list = nq_StrList_create(nullptr);
            bool ok = nq_StrList_getCurr(list) == nullptr && nq_StrList_getCurrPtr(list) == nullptr;
            nq_StrList_insEnd(list, u"first");
            ok = ok && nq_StrList_getCurr(list) == nullptr;  // the cursor is still off the list
            nq_StrList_start(list);
            ok = ok && S(nq_StrList_getCurr(list)) == u"first";
            std::_Exit(ok ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}
