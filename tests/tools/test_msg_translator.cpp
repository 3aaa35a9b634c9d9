// The translated path, end to end through the example translator plug-in. The language is
// settled once a process and the missing translator is announced once, so each scene runs as
// a test of its own ("DISABLED_", run nowhere else) in a fresh process of this program.
#include <dlfcn.h>

#include <string>
#include <utility>
#include <vector>

#include "config_test.h"
#include "msg_test.h"

using nqmt::S;

namespace {

// Tab-separated: context, English, translation (see examples/example_translator.c).
const std::string kTable =
    "# context\tEnglish\ttranslation\n"
    "MENU\tOpen\t\xc3\x96" "ffnen\n"
    "MENU\tSave\tSpeichern\n"
    "MENU\tCancel\t\n"
    "MENU\tTab\\\\tStop\t\n"
    "ESC\tRaw\troh\\\\n\n"
    "*\tAnywhere\t\xc3\x9c" "berall\n"
    "DBCols\tDiameter\tDurchmesser\n"
    "COLOR\tRed,Green,Blue\tRot, Gr\xc3\xbcn ,Blau\n"
    "COLOR\tRed,Green\tRot Gr\xc3\xbcn\n"
    "COLOR\tOne,Two,Three\tEins,Zwei\n"
    "COLOR\tSingle\tEinzeln\n"
    "LIST\tKeep\t^Behalten\n"
    "LIST\tWidth\tBreite\n"
    "LONG\tLong\t" + std::string(400, 'L') + "\n";

const char kBoxText[] =
    "Unable to create an instance of the Message Translator.\n"
    "Make sure this component (WKApplication2.dll) is installed and registered correctly.";

// A scene in German with the example translator.
struct German : nqmt::Scene {
    German() : nqmt::Scene("LANGUAGE=DEU\n", kTable, NQ_TEST_EXAMPLE_TRANSLATOR) {}
};

bool plugin_loaded() {
    void *handle = ::dlopen(NQ_TEST_EXAMPLE_TRANSLATOR, RTLD_NOW | RTLD_NOLOAD);
    if (handle) ::dlclose(handle);
    return handle != nullptr;
}

void expect_one_box() {
    ASSERT_EQ(nqmt::boxes().size(), 1u);
    EXPECT_EQ(nqmt::boxes()[0].title, "Message Translator Error");
    EXPECT_EQ(nqmt::boxes()[0].text, kBoxText);
    EXPECT_EQ(nqmt::boxes()[0].style, 0x30u);
}

using Pairs = std::vector<std::pair<std::u16string, std::u16string>>;

Pairs pairs(MsgKeyWordList *list) {
    Pairs out;
    for (LnkListNode *n = list ? list->head : nullptr; n; n = n->next) {
        const auto *pair = static_cast<const MsgKeyWordListNode *>(n->data);
        out.emplace_back(S(pair->keyWord), S(pair->translation));
    }
    return out;
}

bool fresh(const std::string &test) { return nqct::passes_in_fresh_process("MsgTranslatorScene.DISABLED_" + test); }

}  // namespace

// The scenes.

TEST(MsgTranslatorScene, DISABLED_GermanTranslatesThroughThePlugin) {
    German scene;
    EXPECT_EQ(S(nq_Msg("Open", "MENU", 1)), u"Öffnen");
    EXPECT_EQ(S(nq_Msg_translate(u"Save", u"MENU", 0)), u"Speichern");
    EXPECT_EQ(S(nq_Msg_translate(u"Anywhere", u"ELSEWHERE", 1)), u"Überall");
    EXPECT_TRUE(plugin_loaded());
    EXPECT_TRUE(nqmt::boxes().empty());
}

TEST(MsgTranslatorScene, DISABLED_FormatIndexReachesThePlugin) {
    German scene;
    const char16_t *expected[] = {u"Öffnen", u"Öffnen", u"Öffnen ", u"\nÖffnen", u"\nÖffnen ", u"Öffnen\n",
                                  u"Öffnen \n", u"\nÖffnen\n", u"\nÖffnen \n", u"Öffnen"};
    for (int code = 0; code <= 9; ++code) {
        EXPECT_EQ(S(nq_Msg_translate(u"Open", u"MENU", code)), expected[code]) << code;
    }
    // 16 bits of code - 1: 0x10002 reaches it as 2, -1 as -2 (all bits but the lowest).
    EXPECT_EQ(S(nq_Msg_translate(u"Open", u"MENU", 0x10003)), u"\nÖffnen");
    EXPECT_EQ(S(nq_Msg_translate(u"Open", u"MENU", -1)), u"\nÖffnen\n");
}

TEST(MsgTranslatorScene, DISABLED_EmptyTranslationFallsBackToTheDecoratedEnglish) {
    German scene;
    EXPECT_EQ(S(nq_Msg_translate(u"Cancel", u"MENU", 2)), u"Cancel ");
    EXPECT_EQ(S(nq_Msg_translate(u"Tab\\tStop", u"MENU", 5)), u"Tab\tStop\n");
}

TEST(MsgTranslatorScene, DISABLED_TextThePluginDoesNotKnowIsTheDecoratedEnglish) {
    German scene;
    EXPECT_EQ(S(nq_Msg_translate(u"Nowhere", u"MENU", 5)), u"Nowhere\n");
    EXPECT_EQ(S(nq_Msg_translate(u"Open", u"OTHER", 2)), u"Open ");  // known, in another context
    EXPECT_EQ(S(nq_Msg_translate(nullptr, nullptr, 3)), u"\n");
    EXPECT_TRUE(nqmt::boxes().empty());
}

TEST(MsgTranslatorScene, DISABLED_TranslationIsShownAsItCame) {
    German scene;
    EXPECT_EQ(S(nq_Msg_translate(u"Raw", u"ESC", 1)), u"roh\\n");
}

TEST(MsgTranslatorScene, DISABLED_TranslationIsCutAtTheBuffer) {
    German scene;
    EXPECT_EQ(S(nq_Msg_translate(u"Long", u"LONG", 1)), std::u16string(255, u'L'));
}

TEST(MsgTranslatorScene, DISABLED_DebugForcesTheTranslatorInEnglish) {
    nqmt::Scene scene("LANGUAGE=ENG\nLANGUAGE_DEBUG=1\n", kTable, NQ_TEST_EXAMPLE_TRANSLATOR);
    EXPECT_EQ(S(nq_Msg("Open", "MENU", 2)), u"Öffnen ");
    EXPECT_TRUE(nqmt::boxes().empty());
}

TEST(MsgTranslatorScene, DISABLED_DebugWithoutALanguageUsesTheTranslator) {
    nqmt::Scene scene("LANGUAGE_DEBUG=yes\n", kTable, NQ_TEST_EXAMPLE_TRANSLATOR);
    EXPECT_EQ(S(nq_Msg("Open", "MENU", 1)), u"Öffnen");
}

TEST(MsgTranslatorScene, DISABLED_LowerCaseEngIsEnglishAndLoadsNothing) {
    nqmt::Scene scene("LANGUAGE=english\n", kTable, NQ_TEST_EXAMPLE_TRANSLATOR);
    EXPECT_EQ(S(nq_Msg("Open", "MENU", 2)), u"Open ");
    EXPECT_FALSE(plugin_loaded());
    EXPECT_TRUE(nqmt::boxes().empty());
}

TEST(MsgTranslatorScene, DISABLED_MissingLanguageIsEnglishAndLoadsNothing) {
    nqmt::Scene scene("", kTable, NQ_TEST_EXAMPLE_TRANSLATOR);
    EXPECT_EQ(S(nq_Msg_translate(u"Open", u"MENU", 2)), u"Open ");
    EXPECT_FALSE(plugin_loaded());
    EXPECT_TRUE(nqmt::boxes().empty());
}

TEST(MsgTranslatorScene, DISABLED_DebugZeroIsOff) {
    nqmt::Scene scene("LANGUAGE=Eng\nLANGUAGE_DEBUG=0\n", kTable, NQ_TEST_EXAMPLE_TRANSLATOR);
    EXPECT_EQ(S(nq_Msg("Open", "MENU", 1)), u"Open");
    EXPECT_FALSE(plugin_loaded());
}

TEST(MsgTranslatorScene, DISABLED_ALanguageThatOnlyBeginsLikeEnglishIsNot) {
    nqmt::Scene scene("LANGUAGE=EN\n", kTable, NQ_TEST_EXAMPLE_TRANSLATOR);
    EXPECT_EQ(S(nq_Msg("Open", "MENU", 1)), u"Öffnen");
}

TEST(MsgTranslatorScene, DISABLED_MissingPluginIsAnnouncedOnceThenEnglish) {
    nqmt::Scene scene("LANGUAGE=DEU\n", kTable, "/nonexistent/translator.so");
    EXPECT_EQ(S(nq_Msg("Open", "MENU", 2)), u"Open ");
    expect_one_box();
    EXPECT_EQ(S(nq_Msg("Save", "MENU", 3)), u"\nSave");
    EXPECT_EQ(S(nq_Msg_translate(u"Open", u"MENU", 1)), u"Open");
    EXPECT_EQ(nqmt::boxes().size(), 1u);
}

TEST(MsgTranslatorScene, DISABLED_UnsetTranslatorIsAnnouncedOnce) {
    nqmt::Scene scene("LANGUAGE=DEU\n", kTable, nullptr);
    EXPECT_EQ(S(nq_Msg("Open", "MENU", 1)), u"Open");
    EXPECT_EQ(S(nq_Msg("Open", "MENU", 1)), u"Open");
    expect_one_box();
}

TEST(MsgTranslatorScene, DISABLED_PluginWithoutTheEntryPointsCountsAsNone) {
    nqmt::Scene scene("LANGUAGE=DEU\n", kTable, NQ_TEST_LIBRARY_FILE);
    EXPECT_EQ(S(nq_Msg("Open", "MENU", 1)), u"Open");
    expect_one_box();
}

TEST(MsgTranslatorScene, DISABLED_FileThatIsNoSharedObjectCountsAsNone) {
    nqmt::Scene scene("LANGUAGE=DEU\n", kTable, nullptr);
    nqtest::write_file(scene.dir().file("fake.so"), "not a shared object\n");
    nqmt::ScopedEnv translator("NQ_TRANSLATOR", scene.dir().file("fake.so"));
    EXPECT_EQ(S(nq_Msg("Open", "MENU", 1)), u"Open");
    expect_one_box();
}

TEST(MsgTranslatorScene, DISABLED_HandlerThatAsksForAMessageGetsEnglish) {
    static std::u16string inside;
    nqmt::Scene scene("LANGUAGE=DEU\n", kTable, nullptr);
    nq_Platform_setMessageBoxHandler([](const char *, const char *, unsigned int) {
        inside = S(nq_Msg("Open", "MENU", 2));
        return 1;
    });
    EXPECT_EQ(S(nq_Msg("Save", "MENU", 1)), u"Save");
    EXPECT_EQ(inside, u"Open ");
}

TEST(MsgTranslatorScene, DISABLED_TheFirstCallSettlesTheLanguage) {
    German scene;
    EXPECT_EQ(S(nq_Msg("Open", "MENU", 1)), u"Öffnen");
    scene.write_ini("LANGUAGE=ENG\n");
    EXPECT_EQ(S(nq_Msg("Open", "MENU", 1)), u"Öffnen");
}

TEST(MsgTranslatorScene, DISABLED_EnglishStaysAfterTheLanguageChanges) {
    nqmt::Scene scene("LANGUAGE=ENG\n", kTable, NQ_TEST_EXAMPLE_TRANSLATOR);
    EXPECT_EQ(S(nq_Msg("Open", "MENU", 1)), u"Open");
    scene.write_ini("LANGUAGE=DEU\n");
    EXPECT_EQ(S(nq_Msg("Open", "MENU", 1)), u"Open");
    EXPECT_FALSE(plugin_loaded());
    EXPECT_TRUE(nqmt::boxes().empty());
}

TEST(MsgTranslatorScene, DISABLED_DbColsAndPadTranslate) {
    German scene;
    EXPECT_EQ(S(nq_MsgDBCols(u"Diameter", 1)), u"Durchmesser");
    EXPECT_EQ(S(nq_Msg_pad(u"Save", u"MENU", 1, 12)), u"Speichern   ");
    EXPECT_EQ(S(nq_Msg_pad(u"Save", u"MENU", 2, 3)), u"Speichern ");
}

TEST(MsgTranslatorScene, DISABLED_KeyWordListPairsByPosition) {
    German scene;
    MsgKeyWordList *list = nq_Msg_getKeyWordList(u"Red,Green,Blue", u"COLOR");
    EXPECT_EQ(pairs(list), (Pairs{{u"Red", u"Rot"}, {u"Green", u"Grün"}, {u"Blue", u"Blau"}}));
    EXPECT_EQ(S(nq_MsgKeyWordList_find(list, u"GREEN")), u"Grün");
    EXPECT_EQ(S(nq_MsgKeyWordList_find(list, u"Black")), u"Black");
    nq_MsgKeyWordList_destroy(list);
}

TEST(MsgTranslatorScene, DISABLED_KeyWordListThatLostItsSeparatorIsEmpty) {
    German scene;
    MsgKeyWordList *list = nq_Msg_getKeyWordList(u"Red,Green", u"COLOR");
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(nq_LnkList_length(list), 0);
    nq_MsgKeyWordList_destroy(list);
}

TEST(MsgTranslatorScene, DISABLED_KeyWordListOfOneKeyWordNeedsNoSeparator) {
    German scene;
    MsgKeyWordList *list = nq_Msg_getKeyWordList(u"Single", u"COLOR");
    EXPECT_EQ(pairs(list), (Pairs{{u"Single", u"Einzeln"}}));
    nq_MsgKeyWordList_destroy(list);
}

TEST(MsgTranslatorScene, DISABLED_KeyWordListPairsUpToTheShorterList) {
    German scene;
    MsgKeyWordList *list = nq_Msg_getKeyWordList(u"One,Two,Three", u"COLOR");
    EXPECT_EQ(pairs(list), (Pairs{{u"One", u"Eins"}, {u"Two", u"Zwei"}}));
    nq_MsgKeyWordList_destroy(list);
}

TEST(MsgTranslatorScene, DISABLED_KeyWordListOfAnUnknownStringPairsTheEnglish) {
    German scene;
    MsgKeyWordList *list = nq_Msg_getKeyWordList(u"Up,Down", u"COLOR");
    EXPECT_EQ(pairs(list), (Pairs{{u"Up", u"Up"}, {u"Down", u"Down"}}));
    nq_MsgKeyWordList_destroy(list);
}

TEST(MsgTranslatorScene, DISABLED_MultipleTranslatesPadsAndKeepsCaretResults) {
    German scene;
    MsgList *list = nq_LnkList_create(nq_MsgNode_create(u"K", u"Keep", u"LIST", 2, 20),
                                      nq_MsgNode_create(u"W", u"Width", u"LIST", 1, 10),
                                      nq_MsgNode_create(u"O", u"Open", u"MENU", 2, 0), nullptr);
    EXPECT_EQ(nq_Msg_multiple(list), 1);
    EXPECT_EQ(S(nq_Msg_find(list, u"K")), u"Keep");
    EXPECT_EQ(S(nq_Msg_find(list, u"W")), u"Breite    ");
    EXPECT_EQ(S(nq_Msg_find(list, u"O")), u"Öffnen ");
    nq_MsgList_destroy(list);
}

TEST(MsgTranslatorScene, DISABLED_MltTranslatesTheListItBuilds) {
    German scene;
    MsgList *list = nq_Msg_mlt(u"O", u"Open", u"MENU", 2, u"S", u"Save", u"MENU", 5, u"N", u"Nowhere", u"MENU", 2,
                               nullptr);
    EXPECT_EQ(S(nq_Msg_find(list, u"O")), u"Öffnen ");
    EXPECT_EQ(S(nq_Msg_find(list, u"S")), u"Speichern\n");
    EXPECT_EQ(S(nq_Msg_find(list, u"N")), u"Nowhere ");
    nq_MsgList_destroy(list);
    const MsgRecord records[] = {{u"O", u"Open", u"MENU", 1}, {nullptr, nullptr, nullptr, 0}};
    list = nq_Msg_mltReadArray(records);
    EXPECT_EQ(S(nq_Msg_find(list, u"O")), u"Öffnen");
    nq_MsgList_destroy(list);
}

// Each scene in a process of its own.

TEST(MsgTranslator, GermanTranslatesThroughThePlugin) { EXPECT_TRUE(fresh("GermanTranslatesThroughThePlugin")); }
TEST(MsgTranslator, FormatIndexReachesThePlugin) { EXPECT_TRUE(fresh("FormatIndexReachesThePlugin")); }
TEST(MsgTranslator, EmptyTranslationFallsBackToTheDecoratedEnglish) {
    EXPECT_TRUE(fresh("EmptyTranslationFallsBackToTheDecoratedEnglish"));
}
TEST(MsgTranslator, TextThePluginDoesNotKnowIsTheDecoratedEnglish) {
    EXPECT_TRUE(fresh("TextThePluginDoesNotKnowIsTheDecoratedEnglish"));
}
TEST(MsgTranslator, TranslationIsShownAsItCame) { EXPECT_TRUE(fresh("TranslationIsShownAsItCame")); }
TEST(MsgTranslator, TranslationIsCutAtTheBuffer) { EXPECT_TRUE(fresh("TranslationIsCutAtTheBuffer")); }
TEST(MsgTranslator, DebugForcesTheTranslatorInEnglish) { EXPECT_TRUE(fresh("DebugForcesTheTranslatorInEnglish")); }
TEST(MsgTranslator, DebugWithoutALanguageUsesTheTranslator) {
    EXPECT_TRUE(fresh("DebugWithoutALanguageUsesTheTranslator"));
}
TEST(MsgTranslator, LowerCaseEngIsEnglishAndLoadsNothing) {
    EXPECT_TRUE(fresh("LowerCaseEngIsEnglishAndLoadsNothing"));
}
TEST(MsgTranslator, MissingLanguageIsEnglishAndLoadsNothing) {
    EXPECT_TRUE(fresh("MissingLanguageIsEnglishAndLoadsNothing"));
}
TEST(MsgTranslator, DebugZeroIsOff) { EXPECT_TRUE(fresh("DebugZeroIsOff")); }
TEST(MsgTranslator, ALanguageThatOnlyBeginsLikeEnglishIsNot) {
    EXPECT_TRUE(fresh("ALanguageThatOnlyBeginsLikeEnglishIsNot"));
}
TEST(MsgTranslator, MissingPluginIsAnnouncedOnceThenEnglish) {
    EXPECT_TRUE(fresh("MissingPluginIsAnnouncedOnceThenEnglish"));
}
TEST(MsgTranslator, UnsetTranslatorIsAnnouncedOnce) { EXPECT_TRUE(fresh("UnsetTranslatorIsAnnouncedOnce")); }
TEST(MsgTranslator, PluginWithoutTheEntryPointsCountsAsNone) {
    EXPECT_TRUE(fresh("PluginWithoutTheEntryPointsCountsAsNone"));
}
TEST(MsgTranslator, FileThatIsNoSharedObjectCountsAsNone) {
    EXPECT_TRUE(fresh("FileThatIsNoSharedObjectCountsAsNone"));
}
TEST(MsgTranslator, HandlerThatAsksForAMessageGetsEnglish) {
    EXPECT_TRUE(fresh("HandlerThatAsksForAMessageGetsEnglish"));
}
TEST(MsgTranslator, TheFirstCallSettlesTheLanguage) { EXPECT_TRUE(fresh("TheFirstCallSettlesTheLanguage")); }
TEST(MsgTranslator, EnglishStaysAfterTheLanguageChanges) {
    EXPECT_TRUE(fresh("EnglishStaysAfterTheLanguageChanges"));
}
TEST(MsgTranslator, DbColsAndPadTranslate) { EXPECT_TRUE(fresh("DbColsAndPadTranslate")); }
TEST(MsgTranslator, KeyWordListPairsByPosition) { EXPECT_TRUE(fresh("KeyWordListPairsByPosition")); }
TEST(MsgTranslator, KeyWordListThatLostItsSeparatorIsEmpty) {
    EXPECT_TRUE(fresh("KeyWordListThatLostItsSeparatorIsEmpty"));
}
TEST(MsgTranslator, KeyWordListOfOneKeyWordNeedsNoSeparator) {
    EXPECT_TRUE(fresh("KeyWordListOfOneKeyWordNeedsNoSeparator"));
}
TEST(MsgTranslator, KeyWordListPairsUpToTheShorterList) { EXPECT_TRUE(fresh("KeyWordListPairsUpToTheShorterList")); }
TEST(MsgTranslator, KeyWordListOfAnUnknownStringPairsTheEnglish) {
    EXPECT_TRUE(fresh("KeyWordListOfAnUnknownStringPairsTheEnglish"));
}
TEST(MsgTranslator, MultipleTranslatesPadsAndKeepsCaretResults) {
    EXPECT_TRUE(fresh("MultipleTranslatesPadsAndKeepsCaretResults"));
}
TEST(MsgTranslator, MltTranslatesTheListItBuilds) { EXPECT_TRUE(fresh("MltTranslatesTheListItBuilds")); }
