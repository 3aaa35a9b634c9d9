// Keyword lists and message lists, in English (the translated path is in
// test_msg_translator.cpp).
#include <algorithm>
#include <clocale>
#include <string>
#include <utility>
#include <vector>

#include "msg_test.h"

using nqmt::S;

namespace {

class MsgLists : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        ::unsetenv("NQ_TRANSLATOR");
        nqmt::Scene settle;
        nq_Msg_translate(u"", u"", 0);
    }
    nqmt::Scene scene;
};

using Pairs = std::vector<std::pair<std::u16string, std::u16string>>;

Pairs pairs(MsgKeyWordList *list) {
    Pairs out;
    for (LnkListNode *n = list ? list->head : nullptr; n; n = n->next) {
        const auto *pair = static_cast<const MsgKeyWordListNode *>(n->data);
        out.emplace_back(S(pair->keyWord), S(pair->translation));
    }
    return out;
}

struct Message {
    std::u16string key, text, context;
    int format, padWidth;
    bool operator==(const Message &) const = default;
};

std::vector<Message> messages(MsgList *list) {
    std::vector<Message> out;
    for (LnkListNode *n = list ? list->head : nullptr; n; n = n->next) {
        const auto *node = static_cast<const MsgNode *>(n->data);
        out.push_back({S(node->key), S(node->text), S(node->context), node->format, node->padWidth});
    }
    return out;
}

}  // namespace

// Keyword list nodes and lists.

TEST_F(MsgLists, KeyWordNodeHoldsCopiesOfBoth) {
    nq_wchar keyWord[] = u"Red";
    MsgKeyWordListNode *node = nq_MsgKeyWordListNode_create(keyWord, u"Rot");
    ASSERT_NE(node, nullptr);
    keyWord[0] = u'X';
    EXPECT_EQ(S(node->keyWord), u"Red");
    EXPECT_EQ(S(node->translation), u"Rot");
    EXPECT_EQ(nq_MsgKeyWordListNode_destroy(node), 1);
}

TEST_F(MsgLists, KeyWordNodeKeepsNullArgumentsNull) {
    MsgKeyWordListNode *node = nq_MsgKeyWordListNode_create(nullptr, nullptr);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->keyWord, nullptr);
    EXPECT_EQ(node->translation, nullptr);
    EXPECT_EQ(nq_MsgKeyWordListNode_destroy(node), 1);
    EXPECT_EQ(nq_MsgKeyWordListNode_destroy(nullptr), 0);
}

TEST_F(MsgLists, KeyWordListStartsEmpty) {
    MsgKeyWordList *list = nq_MsgKeyWordList_create();
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(nq_LnkList_length(list), 0);
    EXPECT_EQ(nq_MsgKeyWordList_destroy(list), 1);
}

TEST_F(MsgLists, AppendGivesZeroAndKeepsTheOrder) {
    MsgKeyWordList *list = nq_MsgKeyWordList_create();
    EXPECT_EQ(nq_MsgKeyWordList_append(list, u"Red", u"Rot"), 0);
    EXPECT_EQ(nq_MsgKeyWordList_append(list, u"Green", u"Grün"), 0);
    EXPECT_EQ(pairs(list), (Pairs{{u"Red", u"Rot"}, {u"Green", u"Grün"}}));
    nq_MsgKeyWordList_destroy(list);
}

TEST_F(MsgLists, AppendWithANullArgumentAppendsNothing) {
    MsgKeyWordList *list = nq_MsgKeyWordList_create();
    EXPECT_EQ(nq_MsgKeyWordList_append(list, nullptr, u"Rot"), 0);
    EXPECT_EQ(nq_MsgKeyWordList_append(list, u"Red", nullptr), 0);
    EXPECT_EQ(nq_MsgKeyWordList_append(nullptr, u"Red", u"Rot"), 0);
    EXPECT_EQ(nq_LnkList_length(list), 0);
    nq_MsgKeyWordList_destroy(list);
}

TEST_F(MsgLists, FindIgnoresCase) {
    MsgKeyWordList *list = nq_MsgKeyWordList_create();
    nq_MsgKeyWordList_append(list, u"Flange", u"Flansch");
    EXPECT_EQ(S(nq_MsgKeyWordList_find(list, u"FLANGE")), u"Flansch");
    EXPECT_EQ(S(nq_MsgKeyWordList_find(list, u"flange")), u"Flansch");
    nq_MsgKeyWordList_destroy(list);
}

TEST_F(MsgLists, FindOfAMissingKeyWordYieldsItself) {
    MsgKeyWordList *list = nq_MsgKeyWordList_create();
    nq_MsgKeyWordList_append(list, u"Flange", u"Flansch");
    EXPECT_EQ(S(nq_MsgKeyWordList_find(list, u"Valve")), u"Valve");
    EXPECT_EQ(S(nq_MsgKeyWordList_find(nullptr, u"Valve")), u"Valve");
    nq_MsgKeyWordList_destroy(list);
}

TEST_F(MsgLists, FindOfNullYieldsTheEmptyText) {
    MsgKeyWordList *list = nq_MsgKeyWordList_create();
    nq_MsgKeyWordList_append(list, u"", u"leer");
    EXPECT_EQ(S(nq_MsgKeyWordList_find(list, nullptr)), u"");
    nq_MsgKeyWordList_destroy(list);
}

TEST_F(MsgLists, FindTakesTheFirstMatchAndLeavesTheCursor) {
    MsgKeyWordList *list = nq_MsgKeyWordList_create();
    nq_MsgKeyWordList_append(list, u"a", u"first");
    nq_MsgKeyWordList_append(list, u"A", u"second");
    nq_LnkList_end(list);
    LnkListNode *cursor = list->cursor;
    EXPECT_EQ(S(nq_MsgKeyWordList_find(list, u"a")), u"first");
    EXPECT_EQ(list->cursor, cursor);
    nq_MsgKeyWordList_destroy(list);
}

TEST_F(MsgLists, FindPassesOverPairsWithoutTranslation) {
    MsgKeyWordList *list = nq_MsgKeyWordList_create();
    nq_LnkList_insEnd(list, nq_MsgKeyWordListNode_create(u"Bolt", nullptr));
    EXPECT_EQ(S(nq_MsgKeyWordList_find(list, u"bolt")), u"bolt");
    nq_MsgKeyWordList_append(list, u"Bolt", u"Schraube");
    EXPECT_EQ(S(nq_MsgKeyWordList_find(list, u"bolt")), u"Schraube");
    nq_MsgKeyWordList_destroy(list);
}

TEST_F(MsgLists, FindCutsAtItsBuffer) {
    const std::u16string longKey(700, u'k');
    EXPECT_EQ(S(nq_MsgKeyWordList_find(nullptr, longKey.c_str())), std::u16string(511, u'k'));
}

TEST_F(MsgLists, DestroyOfNullKeyWordListGivesZero) { EXPECT_EQ(nq_MsgKeyWordList_destroy(nullptr), 0); }

// Keyword lists from a string (in English the translation is the English).

TEST_F(MsgLists, GetKeyWordListPairsEachKeyWordWithItself) {
    MsgKeyWordList *list = nq_Msg_getKeyWordList(u"Red, Green ,Blue", u"COLOR");
    EXPECT_EQ(pairs(list), (Pairs{{u"Red", u"Red"}, {u"Green", u"Green"}, {u"Blue", u"Blue"}}));
    EXPECT_EQ(S(nq_MsgKeyWordList_find(list, u"green")), u"Green");
    nq_MsgKeyWordList_destroy(list);
}

TEST_F(MsgLists, GetKeyWordListOfOneKeyWord) {
    MsgKeyWordList *list = nq_Msg_getKeyWordList(u"Only", nullptr);
    EXPECT_EQ(pairs(list), (Pairs{{u"Only", u"Only"}}));
    nq_MsgKeyWordList_destroy(list);
}

TEST_F(MsgLists, GetKeyWordListOfNullOrNoKeyWordIsNull) {
    EXPECT_EQ(nq_Msg_getKeyWordList(nullptr, u"C"), nullptr);
    EXPECT_EQ(nq_Msg_getKeyWordList(u"", u"C"), nullptr);
    EXPECT_EQ(nq_Msg_getKeyWordList(u",,,", u"C"), nullptr);
}

TEST_F(MsgLists, GetKeyWordListTranslatesTheWholeStringWithItsEscapes) {
    // The translation has its escapes resolved; the English keywords keep them.
    MsgKeyWordList *list = nq_Msg_getKeyWordList(u"a\\tb,c", u"C");
    EXPECT_EQ(pairs(list), (Pairs{{u"a\\tb", u"a\tb"}, {u"c", u"c"}}));
    nq_MsgKeyWordList_destroy(list);
}

TEST_F(MsgLists, GetKeyWordListKeepsEmptyKeyWordsBetweenBlanks) {
    MsgKeyWordList *list = nq_Msg_getKeyWordList(u"a, ,b", u"C");
    EXPECT_EQ(pairs(list), (Pairs{{u"a", u"a"}, {u"", u""}, {u"b", u"b"}}));
    nq_MsgKeyWordList_destroy(list);
}

TEST_F(MsgLists, GetKeyWordListReportsItsCountAtLevelTwo) {
    nqmt::TraceLog log(scene.dir(), 2);
    MsgKeyWordList *list = nq_Msg_getKeyWordList(u"a,b", u"C");
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"msg_list.cpp Leaving with key word string count is 2"}));
    nq_MsgKeyWordList_destroy(list);
}

TEST_F(MsgLists, GetKeyWordListReportsNothingBelowLevelTwoOrWithoutTheBit) {
    {
        nqmt::TraceLog log(scene.dir(), 1);
        nq_MsgKeyWordList_destroy(nq_Msg_getKeyWordList(u"a,b", u"C"));
        EXPECT_TRUE(log.lines().empty());
    }
    nqmt::TraceLog log(scene.dir(), 3, 2048u);  // a bit no family uses
    nq_MsgKeyWordList_destroy(nq_Msg_getKeyWordList(u"a,b", u"C"));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(MsgLists, GetKeyWordListTracesItsWayOutAtLevelThree) {
    nqmt::TraceLog log(scene.dir(), 3);
    nq_MsgKeyWordList_destroy(nq_Msg_getKeyWordList(u"a", u"C"));
    const std::vector<std::string> lines = log.lines();
    auto at = [&](const std::string &line) { return std::find(lines.begin(), lines.end(), line) - lines.begin(); };
    const auto count = at("msg_list.cpp Leaving with key word string count is 1");
    const auto leaving = at("msg_list.cpp Leaving nq_Msg_getKeyWordList.");
    EXPECT_LT(count, static_cast<long>(lines.size()));
    EXPECT_LT(leaving, static_cast<long>(lines.size()));
    EXPECT_LT(count, leaving);
}

TEST_F(MsgLists, GetKeyWordListSetsTheLanguageLocaleAndReportsIt) {
    scene.write_ini("LANGUAGE=DEU\nLANG_LOCALE=C\n");
    const std::string before = std::setlocale(LC_ALL, nullptr);
    nqmt::TraceLog log(scene.dir(), 2);
    MsgKeyWordList *list = nq_Msg_getKeyWordList(u"x,y", u"C");
    EXPECT_EQ(log.lines(), (std::vector<std::string>{
                               "msg_list.cpp Current locale set to C original locale " + before,
                               "msg_list.cpp Leaving with key word string count is 2",
                           }));
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
    nq_MsgKeyWordList_destroy(list);
    std::setlocale(LC_ALL, before.c_str());
}

TEST_F(MsgLists, GetKeyWordListWithAnUnknownLocaleKeepsTheLocale) {
    scene.write_ini("LANGUAGE=DEU\nLANG_LOCALE=no_SUCH.locale\n");
    const std::string before = std::setlocale(LC_ALL, nullptr);
    nqmt::TraceLog log(scene.dir(), 2);
    nq_MsgKeyWordList_destroy(nq_Msg_getKeyWordList(u"x", u"C"));
    const std::vector<std::string> lines = log.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], "msg_list.cpp Current locale set to " + before + " original locale " + before);
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
}

TEST_F(MsgLists, GetKeyWordListSetsNoLocaleWithoutALanguage) {
    scene.write_ini("LANG_LOCALE=C\n");
    nqmt::TraceLog log(scene.dir(), 2);
    nq_MsgKeyWordList_destroy(nq_Msg_getKeyWordList(u"x", u"C"));
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"msg_list.cpp Leaving with key word string count is 1"}));
}

TEST_F(MsgLists, GetKeyWordListWithALanguageButNoLocaleReportsOnlyTheCount) {
    scene.write_ini("LANGUAGE=FRA\n");
    nqmt::TraceLog log(scene.dir(), 2);
    nq_MsgKeyWordList_destroy(nq_Msg_getKeyWordList(u"x", u"C"));
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"msg_list.cpp Leaving with key word string count is 1"}));
}

// Message nodes.

TEST_F(MsgLists, NodeCreateFillsTheFieldsInOrder) {
    MsgNode *node = nq_MsgNode_create(u"TITLE", u"Pipe data", u"DIALOG", 2, 12);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(S(node->key), u"TITLE");
    EXPECT_EQ(S(node->text), u"Pipe data");
    EXPECT_EQ(S(node->context), u"DIALOG");
    EXPECT_EQ(node->format, 2);
    EXPECT_EQ(node->padWidth, 12);
    MsgList *list = nq_LnkList_create(node, nullptr);
    EXPECT_EQ(nq_MsgList_destroy(list), 1);
}

TEST_F(MsgLists, NodeCreateCutsKeyAndContextToSixteen) {
    MsgNode *node = nq_MsgNode_create(u"ABCDEFGHIJKLMNOPQRST", u"t", u"0123456789abcdefXYZ", 0, 0);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(S(node->key), u"ABCDEFGHIJKLMNOP");
    EXPECT_EQ(S(node->context), u"0123456789abcdef");
    nq_MsgList_destroy(nq_LnkList_create(node, nullptr));
}

TEST_F(MsgLists, NodeCreateWithNullArguments) {
    MsgNode *node = nq_MsgNode_create(nullptr, nullptr, nullptr, 0, 0);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(S(node->key), u"");
    EXPECT_EQ(node->text, nullptr);
    EXPECT_EQ(S(node->context), u"");
    nq_MsgList_destroy(nq_LnkList_create(node, nullptr));
}

TEST_F(MsgLists, DestroyOfNullMessageListGivesZero) { EXPECT_EQ(nq_MsgList_destroy(nullptr), 0); }

// Whole lists.

TEST_F(MsgLists, MultipleTranslatesAndDecoratesEachMessage) {
    MsgList *list = nq_LnkList_create(nq_MsgNode_create(u"A", u"Size", u"C", 2, 0),
                                        nq_MsgNode_create(u"B", u"Tab\\there", u"C", 5, 0), nullptr);
    EXPECT_EQ(nq_Msg_multiple(list), 1);
    EXPECT_EQ(messages(list), (std::vector<Message>{{u"A", u"Size ", u"C", 2, 0}, {u"B", u"Tab\there\n", u"C", 5, 0}}));
    nq_MsgList_destroy(list);
}

TEST_F(MsgLists, MultiplePadsToThePadWidth) {
    MsgList *list = nq_LnkList_create(nq_MsgNode_create(u"A", u"ab", u"C", 1, 6),
                                        nq_MsgNode_create(u"B", u"longer text", u"C", 1, 3), nullptr);
    nq_Msg_multiple(list);
    EXPECT_EQ(messages(list)[0].text, u"ab    ");
    EXPECT_EQ(messages(list)[1].text, u"longer text");
    nq_MsgList_destroy(list);
}

TEST_F(MsgLists, MultipleLeavesAMessageWhoseResultBeginsWithCaret) {
    MsgList *list = nq_LnkList_create(nq_MsgNode_create(u"A", u"^keep\\n", u"C", 2, 9), nullptr);
    nq_Msg_multiple(list);
    EXPECT_EQ(messages(list)[0].text, u"^keep\\n");
    nq_MsgList_destroy(list);
}

TEST_F(MsgLists, MultipleTestsTheCaretAfterDecoration) {
    // A leading line break comes first, so the caret is no longer the first character.
    MsgList *list = nq_LnkList_create(nq_MsgNode_create(u"A", u"^x", u"C", 3, 0), nullptr);
    nq_Msg_multiple(list);
    EXPECT_EQ(messages(list)[0].text, u"\n^x");
    nq_MsgList_destroy(list);
}

TEST_F(MsgLists, MultiplePassesOverMessagesWithoutTextOrContext) {
    MsgList *list = nq_LnkList_create(nq_MsgNode_create(u"A", u"no context", nullptr, 2, 20),
                                        nq_MsgNode_create(u"B", u"", u"C", 2, 20),
                                        nq_MsgNode_create(u"C", nullptr, u"C", 2, 20), nullptr);
    EXPECT_EQ(nq_Msg_multiple(list), 1);
    const std::vector<Message> got = messages(list);
    EXPECT_EQ(got[0].text, u"no context");
    EXPECT_EQ(got[1].text, u"");
    EXPECT_EQ(got[2].text, u"<null>");
    nq_MsgList_destroy(list);
}

TEST_F(MsgLists, MultipleOfNullOrEmptyListGivesOne) {
    EXPECT_EQ(nq_Msg_multiple(nullptr), 1);
    MsgList *list = nq_LnkList_create(nullptr);
    EXPECT_EQ(nq_Msg_multiple(list), 1);
    nq_MsgList_destroy(list);
}

TEST_F(MsgLists, MultipleCutsAtItsWorkBuffer) {
    const std::u16string longText(300, u'w');
    MsgList *list = nq_LnkList_create(nq_MsgNode_create(u"A", longText.c_str(), u"C", 1, 1000), nullptr);
    nq_Msg_multiple(list);
    // The translation keeps 255 characters, the padding fills the 511 of the work buffer.
    EXPECT_EQ(messages(list)[0].text, std::u16string(255, u'w') + std::u16string(256, u' '));
    nq_MsgList_destroy(list);
}

// Building lists from arguments: how nq_Msg_mlt consumes them.

TEST_F(MsgLists, MltReadsGroupsOfFourUntilNull) {
    MsgList *list = nq_Msg_mlt(u"K1", u"First", u"C", 2, u"K2", u"Second", u"C", 5, nullptr);
    EXPECT_EQ(messages(list), (std::vector<Message>{{u"K1", u"First ", u"C", 2, 0}, {u"K2", u"Second\n", u"C", 5, 0}}));
    nq_MsgList_destroy(list);
}

TEST_F(MsgLists, MltAfterFormatZeroKeepsTheKeyAndReadsTextNext) {
    MsgList *list = nq_Msg_mlt(u"K1", u"one", u"C", 0, u"two", u"C", 3, u"K3", u"three", u"C", 2, nullptr);
    EXPECT_EQ(messages(list), (std::vector<Message>{
                                  {u"K1", u"one", u"C", 0, 0},
                                  {u"K1", u"\ntwo", u"C", 3, 0},
                                  {u"K3", u"three ", u"C", 2, 0},
                              }));
    nq_MsgList_destroy(list);
}

TEST_F(MsgLists, MltNullContextEndsTheGroupAndKeepsTheFormat) {
    MsgList *list = nq_Msg_mlt(u"K1", u"one", u"C", 2, u"K2", u"two", nullptr, u"K3", u"three", u"C", 5, nullptr);
    EXPECT_EQ(messages(list), (std::vector<Message>{
                                  {u"K1", u"one ", u"C", 2, 0},
                                  {u"K2", u"two", u"", 2, 0},  // no context: not translated
                                  {u"K3", u"three\n", u"C", 5, 0},
                              }));
    nq_MsgList_destroy(list);
}

TEST_F(MsgLists, MltNullContextBeforeAnyFormatKeepsTheKey) {
    // The format is still 0, so the next group reads its text at once.
    MsgList *list = nq_Msg_mlt(u"K1", u"one", nullptr, u"two", u"C", 2, nullptr);
    EXPECT_EQ(messages(list), (std::vector<Message>{{u"K1", u"one", u"", 0, 0}, {u"K1", u"two ", u"C", 2, 0}}));
    nq_MsgList_destroy(list);
}

TEST_F(MsgLists, MltNullTextEndsTheArguments) {
    MsgList *list = nq_Msg_mlt(u"K1", u"one", u"C", 1, u"K2", nullptr, u"never", u"C", 1, nullptr);
    EXPECT_EQ(messages(list), (std::vector<Message>{{u"K1", u"one", u"C", 1, 0}}));
    nq_MsgList_destroy(list);
}

TEST_F(MsgLists, MltWithANullFirstKeyGivesAnEmptyList) {
    MsgList *list = nq_Msg_mlt(nullptr);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(nq_LnkList_length(list), 0);
    nq_MsgList_destroy(list);
}

TEST_F(MsgLists, MltCutsKeysAndContextsToSixteen) {
    MsgList *list = nq_Msg_mlt(u"A_VERY_LONG_KEY_NAME", u"t", u"A_VERY_LONG_CONTEXT", 1, nullptr);
    EXPECT_EQ(messages(list), (std::vector<Message>{{u"A_VERY_LONG_KEY_", u"t", u"A_VERY_LONG_CONT", 1, 0}}));
    nq_MsgList_destroy(list);
}

TEST_F(MsgLists, MltReadArrayReadsRecordsUntilAnEmptyKey) {
    const MsgRecord records[] = {
        {u"K1", u"one", u"C", 2},
        {u"K2", u"two", nullptr, 7},  // no context: the previous format
        {u"K3", u"three", u"C", 5},
        {u"", u"never", u"C", 1},
        {u"K5", u"never", u"C", 1},
    };
    MsgList *list = nq_Msg_mltReadArray(records);
    EXPECT_EQ(messages(list), (std::vector<Message>{
                                  {u"K1", u"one ", u"C", 2, 0},
                                  {u"K2", u"two", u"", 2, 0},
                                  {u"K3", u"three\n", u"C", 5, 0},
                              }));
    nq_MsgList_destroy(list);
}

TEST_F(MsgLists, MltReadArrayStopsAtANullKeyOrText) {
    const MsgRecord nullKey[] = {{u"K1", u"one", u"C", 1}, {nullptr, u"x", u"C", 1}};
    MsgList *list = nq_Msg_mltReadArray(nullKey);
    EXPECT_EQ(nq_LnkList_length(list), 1);
    nq_MsgList_destroy(list);
    const MsgRecord nullText[] = {{u"K1", nullptr, u"C", 1}};
    list = nq_Msg_mltReadArray(nullText);
    EXPECT_EQ(nq_LnkList_length(list), 0);
    nq_MsgList_destroy(list);
}

TEST_F(MsgLists, MltReadArrayOfNullGivesAnEmptyList) {
    MsgList *list = nq_Msg_mltReadArray(nullptr);
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(nq_LnkList_length(list), 0);
    nq_MsgList_destroy(list);
}

// Finding a message by key.

TEST_F(MsgLists, FindGivesTheTextOfTheFirstMessageOfTheKey) {
    MsgList *list = nq_Msg_mlt(u"A", u"alpha", u"C", 1, u"B", u"beta", u"C", 1, u"B", u"second", u"C", 1, nullptr);
    EXPECT_EQ(S(nq_Msg_find(list, u"B")), u"beta");
    EXPECT_EQ(S(nq_Msg_find(list, u"A")), u"alpha");
    nq_MsgList_destroy(list);
}

TEST_F(MsgLists, FindComparesKeysExactly) {
    MsgList *list = nq_Msg_mlt(u"Key", u"text", u"C", 1, nullptr);
    EXPECT_EQ(S(nq_Msg_find(list, u"KEY")), u"KEY");
    EXPECT_EQ(S(nq_Msg_find(list, u"Ke")), u"Ke");
    nq_MsgList_destroy(list);
}

TEST_F(MsgLists, FindPassesOverMessagesWithoutText) {
    MsgList *list = nq_LnkList_create(nq_MsgNode_create(u"K", nullptr, u"C", 1, 0),
                                        nq_MsgNode_create(u"K", u"found", u"C", 1, 0), nullptr);
    EXPECT_EQ(S(nq_Msg_find(list, u"K")), u"found");
    nq_MsgList_destroy(list);
}

TEST_F(MsgLists, FindOfAMissingKeyYieldsTheKey) {
    EXPECT_EQ(S(nq_Msg_find(nullptr, u"NOPE")), u"NOPE");
    EXPECT_EQ(S(nq_Msg_find(nullptr, nullptr)), u"");
}

TEST_F(MsgLists, ListFunctionsTraceTheirWayOut) {
    nqmt::TraceLog log(scene.dir(), 3);
    nq_MsgList_destroy(nq_Msg_mlt(u"K", u"t", u"C", 1, nullptr));
    const std::vector<std::string> lines = log.lines();
    auto has = [&](const std::string &line) { return std::find(lines.begin(), lines.end(), line) != lines.end(); };
    EXPECT_TRUE(has("msg_list.cpp Leaving nq_MsgNode_create."));
    EXPECT_TRUE(has("msg_list.cpp Leaving nq_Msg_multiple."));
    EXPECT_TRUE(has("msg_list.cpp Leaving nq_Msg_mlt."));
    EXPECT_TRUE(has("msg_list.cpp Leaving nq_MsgList_destroy."));
    for (const std::string &line : lines) EXPECT_EQ(line.find("Entering"), std::string::npos) << line;
}
