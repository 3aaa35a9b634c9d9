// The Env and Alias families: session variables, the nq.ini layer, profile reads, the
// expansion orders, splitting, and aliases.
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "config_test.h"

namespace {

using nqct::Fields;
using nqct::fields;
using nqct::S;
using nqtt::entries;
using nqtt::Strings;

class Env : public nqct::ConfigTest {};

std::u16string expand_var(const std::u16string &text, int *position) {
    return S(nq_Env_expandVar(text.c_str(), position));
}

}  // namespace

// ---- Session variables ----

TEST_F(Env, SetSesAddsThenChangesIgnoringCase) {
    EXPECT_EQ(nq_Env_setSes(u"A", u"1"), 1);
    EXPECT_EQ(nq_Env_setSes(u"a", u"2"), 0);
    EXPECT_EQ(S(nq_Env_getSes(u"A")), u"2");
    StrList *list = nq_Env_getSesList();
    EXPECT_EQ(entries(list), (Strings{u"a = 2"}));  // the name in the case of the last call
    nq_StrList_destroy(list);
}

TEST_F(Env, EmptyOrNullValueRemovesTheVariable) {
    nq_Env_setSes(u"A", u"1");
    nq_Env_setSes(u"B", u"2");
    EXPECT_EQ(nq_Env_setSes(u"A", u""), 0);
    EXPECT_EQ(nq_Env_getSes(u"A"), nullptr);
    EXPECT_EQ(nq_Env_setSes(u"b", nullptr), 0);
    EXPECT_EQ(nq_Env_getSes(u"B"), nullptr);
    EXPECT_EQ(nq_Env_setSes(u"C", u""), 1);  // nothing to remove: no match existed
    StrList *list = nq_Env_getSesList();
    EXPECT_EQ(nq_StrList_count(list), 0);
    nq_StrList_destroy(list);
}

TEST_F(Env, GetSesBeforeAnySetYieldsNullAndMakesNoList) {
    EXPECT_TRUE(nqct::passes_in_fresh_process("DISABLED_FreshEnv.GetSesBeforeAnySetYieldsNullAndMakesNoList"));
    EXPECT_TRUE(nqct::passes_in_fresh_process("DISABLED_FreshEnv.EmptyValueMakesTheListThatStaysEmpty"));
}

TEST(DISABLED_FreshEnv, GetSesBeforeAnySetYieldsNullAndMakesNoList) {
    EXPECT_EQ(nq_Env_getSes(u"A"), nullptr);
    EXPECT_EQ(nq_Env_getSesLocal(u"A"), nullptr);
    EXPECT_EQ(nq_Env_getSesList(), nullptr);
    nq_Env_resetSes();  // with no list there is nothing to empty, and none is made
    EXPECT_EQ(nq_Env_getSesList(), nullptr);
}

TEST(DISABLED_FreshEnv, EmptyValueMakesTheListThatStaysEmpty) {
    EXPECT_EQ(nq_Env_setSes(u"A", u""), 1);
    StrList *list = nq_Env_getSesList();
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(nq_StrList_count(list), 0);
    nq_StrList_destroy(list);
}

TEST_F(Env, ValuesComeBackTrimmedAndAfterTheFirstEqualSign) {
    nq_Env_setSes(u"T", u"  spaced  ");
    EXPECT_EQ(S(nq_Env_getSes(u"T")), u"spaced");
    nq_Env_setSes(u"E", u"x=y");
    EXPECT_EQ(S(nq_Env_getSes(u"E")), u"x=y");
    nq_Env_setSes(u"F", u"=lost");
    EXPECT_EQ(S(nq_Env_getSes(u"F")), u"lost");
}

TEST_F(Env, EntriesAreSeenCutTo512Characters) {
    const std::u16string value(600, u'v');
    nq_Env_setSes(u"L", value.c_str());
    EXPECT_EQ(S(nq_Env_getSes(u"L")), std::u16string(512 - 4, u'v'));
}

TEST_F(Env, ResetSesKeepsAnEmptyList) {
    nq_Env_setSes(u"A", u"1");
    nq_Env_resetSes();
    StrList *list = nq_Env_getSesList();
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(nq_StrList_count(list), 0);
    nq_StrList_destroy(list);
    nq_Env_setSesLocal(u"B", u"2");
    nq_Env_resetSesLocal();
    EXPECT_EQ(nq_Env_getSesLocal(u"B"), nullptr);
}

TEST_F(Env, LocalNamesAreTheSameOperations) {
    EXPECT_EQ(nq_Env_setSesLocal(u"X", u"1"), 1);
    EXPECT_EQ(S(nq_Env_getSes(u"x")), u"1");
    EXPECT_EQ(nq_Env_setSes(u"X", u"2"), 0);
    EXPECT_EQ(S(nq_Env_getSesLocal(u"X")), u"2");
}

TEST_F(Env, GetSesListIsTheCallersCopy) {
    nq_Env_setSes(u"A", u"1");
    StrList *list = nq_Env_getSesList();
    nq_StrList_insEnd(list, u"B = 2");
    nq_StrList_destroy(list);
    EXPECT_EQ(nq_Env_getSes(u"B"), nullptr);
}

TEST_F(Env, NullNamesChangeNothing) {
    EXPECT_EQ(nq_Env_setSes(nullptr, u"1"), 0);
    EXPECT_EQ(nq_Env_getSes(nullptr), nullptr);
}

TEST_F(Env, SetSesAppChangesNothingThatCanBeSeen) {
    nq_Env_setSes(u"A", u"1");
    nq_Env_setSesApp();
    EXPECT_EQ(S(nq_Env_getSes(u"A")), u"1");
    StrList *list = nq_Env_getSesList();
    EXPECT_EQ(entries(list), (Strings{u"A = 1"}));
    nq_StrList_destroy(list);
}

// ---- nq.ini ----

TEST_F(Env, IniOperationsUseNqIniOfTheConfigurationFolder) {
    write_ini("[GENERAL]\nWK = c:\\net\nExp=%R%\\x\n");
    EXPECT_EQ(S(nq_Env_getIni(u"general", u"wk")), u"c:\\net");
    nq_Alias_put(u"R", u"root");
    EXPECT_EQ(S(nq_Env_getIni(u"GENERAL", u"Exp")), u"root\\x");
    nq_Alias_del(u"R");
    EXPECT_EQ(nq_Env_setIni(u"GENERAL", u"New", u"1"), 0);
    EXPECT_EQ(nqtest::read_file(ini_path()), "[GENERAL]\nWK = c:\\net\nExp=%R%\\x\nNew=1\n");
    FldList *group = nq_Env_getIniGroup(u"GENERAL");
    EXPECT_EQ(fields(group), (Fields{{u"WK", u"c:\\net"}, {u"EXP", u"%R%\\x"}, {u"NEW", u"1"}}));
    nq_FldList_destroy(group);
}

TEST_F(Env, MissingNqIniGivesNothingAndSetMakesIt) {
    EXPECT_EQ(nq_Env_getIni(u"GENERAL", u"WK"), nullptr);
    EXPECT_EQ(nq_Env_getIniGroup(u"GENERAL"), nullptr);
    EXPECT_EQ(nq_Env_setIni(u"GENERAL", u"WK", u"x"), 0);
    EXPECT_EQ(nqtest::read_file(ini_path()), "[GENERAL]\nWK=x\n\n");
}

TEST_F(Env, FolderInPlaceOfNqIniFails) {
    ASSERT_EQ(::mkdir(ini_path().c_str(), 0755), 0);
    EXPECT_EQ(nq_Env_getIni(u"GENERAL", u"WK"), nullptr);
    EXPECT_NE(nq_Env_setIni(u"GENERAL", u"WK", u"x"), 0);
}

TEST_F(Env, UnreadableNqIniGivesNothing) {
    write_ini("[GENERAL]\nWK=x\n");
    ::chmod(dir_.path().c_str(), 0777);
    ::chmod(ini_path().c_str(), 0);
    EXPECT_TRUE(nqct::as_unprivileged([] {
        return nq_Env_getIni(u"GENERAL", u"WK") == nullptr && nq_Env_getIniGroup(u"GENERAL") == nullptr &&
               nq_Env_setIni(u"GENERAL", u"WK", u"y") != 0;
    }));
}

TEST_F(Env, WithoutNqCfgDirNqIniIsInTheCurrentFolder) {
    nqct::ScopedEnv no_cfg("NQ_CFG_DIR", nullptr);
    char old[4096];
    ASSERT_NE(::getcwd(old, sizeof old), nullptr);
    ASSERT_EQ(::chdir(dir_.path().c_str()), 0);
    write("nq.ini", "[GENERAL]\nHere=yes\n");
    const std::u16string value = S(nq_Env_getIni(u"GENERAL", u"Here"));
    ASSERT_EQ(::chdir(old), 0);
    EXPECT_EQ(value, u"yes");
}

TEST_F(Env, DisplayIniErrorNamesNqIni) {
    nqtest::CaptureFd out(1);
    nq_Env_displayIniError(u"GENERAL", u"WK");
    const std::string text = out.stop();
    EXPECT_EQ(text.rfind("Error reading Ini File\nFile Name c:", 0), 0u);
    EXPECT_NE(text.find("\\cfg\\nq.ini\nGroup Name GENERAL\nVariable Name WK"), std::string::npos);
}

// ---- Profile reads ----

TEST_F(Env, GetWinReadsLikeTheProfileFunctions) {
    write("w.ini", "[Sec]\nKey = \"  quoted  \"\nPlain=  text  \nEmpty=\n[sec]\nOther=1\n");
    const auto f = lib("w.ini");
    EXPECT_EQ(S(nq_Env_getWin(f.c_str(), u"SEC", u"key")), u"  quoted  ");
    EXPECT_EQ(S(nq_Env_getWin(f.c_str(), u"Sec", u"Plain")), u"text");
    EXPECT_EQ(nq_Env_getWin(f.c_str(), u"Sec", u"Empty"), nullptr);
    EXPECT_EQ(nq_Env_getWin(f.c_str(), u"Sec", u"Other"), nullptr);  // only the first group counts
    EXPECT_EQ(nq_Env_getWin(f.c_str(), u"None", u"Key"), nullptr);
    EXPECT_EQ(nq_Env_getWin(lib("missing.ini").c_str(), u"Sec", u"Key"), nullptr);
    EXPECT_EQ(nq_Env_getWin(nullptr, u"Sec", u"Key"), nullptr);
    EXPECT_EQ(nq_Env_getWin(f.c_str(), nullptr, u"Key"), nullptr);
    EXPECT_EQ(nq_Env_getWin(f.c_str(), u"Sec", nullptr), nullptr);
}

TEST_F(Env, GetWinCutsAt255Characters) {
    write("w.ini", "[S]\nk=" + std::string(400, 'x') + "\n");
    EXPECT_EQ(S(nq_Env_getWin(lib("w.ini").c_str(), u"S", u"k")), std::u16string(255, u'x'));
}

TEST_F(Env, GetWinReadsTheDiskNotTheCache) {
    write("w.ini", "[S]\nk=1\n");
    const auto f = lib("w.ini");
    EXPECT_EQ(S(nq_Ini_get(f.c_str(), u"S", u"k")), u"1");
    write("w.ini", "[S]\nk=2\n");
    EXPECT_EQ(S(nq_Env_getWin(f.c_str(), u"S", u"k")), u"2");
}

// ---- Expansion ----

TEST_F(Env, ExpandVarLooksInSessionThenNqIniThenEnvironment) {
    write_ini("[GENERAL]\nBOTH=from ini\nINIONLY=ini\n");
    nqct::ScopedEnv both("BOTH", "from env");
    nqct::ScopedEnv envonly("ENVONLY", "env");
    nq_Env_setSes(u"BOTH", u"from session");
    int position = 0;
    EXPECT_EQ(expand_var(u"%BOTH%", &position), u"from session");
    EXPECT_EQ(position, 6);
    nq_Env_setSes(u"BOTH", u"");
    position = 0;
    EXPECT_EQ(expand_var(u"%both%", &position), u"from ini");
    position = 0;
    EXPECT_EQ(expand_var(u"%INIONLY%", &position), u"ini");
    position = 0;
    EXPECT_EQ(expand_var(u"%ENVONLY%", &position), u"env");
    position = 0;
    EXPECT_EQ(expand_var(u"%NOWHERE_NQ%", &position), u"");
    EXPECT_EQ(position, 12);
}

TEST_F(Env, ExpandVarPositionRules) {
    nq_Env_setSes(u"X", u"value");
    int position = 2;
    EXPECT_EQ(expand_var(u"ab%X%cd", &position), u"value");
    EXPECT_EQ(position, 5);
    position = 1;
    EXPECT_EQ(expand_var(u"ab%X%cd", &position), u"");  // no "%" there
    EXPECT_EQ(position, 1);
    position = 0;
    EXPECT_EQ(expand_var(u"%%rest", &position), u"");  // an empty name
    EXPECT_EQ(position, 2);
    position = 0;
    EXPECT_EQ(expand_var(u"%X", &position), u"value");  // the name runs to the end
    EXPECT_EQ(position, 2);
    position = 99;
    EXPECT_EQ(expand_var(u"%X%", &position), u"");
    EXPECT_EQ(position, 99);
    position = -1;
    EXPECT_EQ(expand_var(u"%X%", &position), u"");
    EXPECT_EQ(S(nq_Env_expandVar(nullptr, &position)), u"");
    EXPECT_EQ(S(nq_Env_expandVar(u"%X%", nullptr)), u"");
}

TEST_F(Env, ExpandStrDoublePercentIsOnePercent) {
    EXPECT_EQ(S(nq_Env_expandStr(u"100%%")), u"100%");
    EXPECT_EQ(S(nq_Env_expandStr(u"%%%%")), u"%%");
}

TEST_F(Env, ExpandStrDropsNamesFoundNowhere) {
    EXPECT_EQ(S(nq_Env_expandStr(u"a%UNSET_NQ_NAME%b")), u"ab");
    EXPECT_EQ(S(nq_Env_expandStr(u"tail%")), u"tail");
    EXPECT_EQ(S(nq_Env_expandStr(u"")), u"");
    EXPECT_EQ(S(nq_Env_expandStr(nullptr)), u"");
}

TEST_F(Env, ExpandStrUsesEveryLayer) {
    write_ini("[GENERAL]\nWK=c:\\net\n");
    nq_Env_setSes(u"USER_NQ", u"ann");
    const std::u16string home = nqtt::W(dir_.path());
    EXPECT_EQ(S(nq_Env_expandStr(u"%WK%\\%USER_NQ%;%HOME%;50%%")), u"c:\\net\\ann;" + home + u";50%");
    EXPECT_EQ(S(nq_Env_expandStr(u"x%USER_NQ")), u"xann");  // no closing sign: the name runs to the end
}

TEST_F(Env, ExpandStrIsCutAtItsBuffer) {
    nq_Env_setSes(u"V", std::u16string(500, u'v').c_str());
    std::u16string text;
    for (int i = 0; i < 20; ++i) text += u"%V%";
    const std::u16string out = S(nq_Env_expandStr(text.c_str()));
    EXPECT_EQ(out.size(), 4095u);
    EXPECT_EQ(out, std::u16string(4095, u'v'));
}

TEST_F(Env, ExpandedValuesAreNotScannedAgain) {
    nq_Env_setSes(u"A", u"%B%");
    nq_Env_setSes(u"B", u"b");
    EXPECT_EQ(S(nq_Env_expandStr(u"%A%")), u"%B%");
}

// ---- Splitting ----

TEST_F(Env, SplitKeepsABlankPartAsEmpty) {
    StrList *parts = nq_Env_split(u" a ; ; b ");
    EXPECT_EQ(entries(parts), (Strings{u"a", u"", u"b"}));
    nq_StrList_destroy(parts);
    parts = nq_Env_split(u"a;;;b;");
    EXPECT_EQ(entries(parts), (Strings{u"a", u"b"}));
    nq_StrList_destroy(parts);
    EXPECT_EQ(nq_Env_split(u";;"), nullptr);
    EXPECT_EQ(nq_Env_split(u""), nullptr);
    EXPECT_EQ(nq_Env_split(nullptr), nullptr);
}

// ---- Aliases ----

TEST_F(Env, AliasPutGetAndDelete) {
    EXPECT_EQ(nq_Alias_put(u"root", u"c:\\zelmar"), 1);
    nq_wchar out[64] = u"junk";
    EXPECT_EQ(nq_Alias_get(out, u"ROOT", 63), 1);
    EXPECT_EQ(S(out), u"c:\\zelmar");
    EXPECT_EQ(nq_Alias_get(out, u"root", 2), 1);
    EXPECT_EQ(S(out), u"c:");
    EXPECT_EQ(nq_Alias_put(u"Root", u"d:\\"), 1);
    EXPECT_EQ(nq_Alias_get(out, u"ROOT", 63), 1);
    EXPECT_EQ(S(out), u"d:\\");
    EXPECT_EQ(nq_Alias_del(u"root"), 1);
    EXPECT_EQ(nq_Alias_get(out, u"ROOT", 63), -2);
    EXPECT_EQ(S(out), u"");  // emptied first
    EXPECT_EQ(nq_Alias_del(u"root"), 0);
    EXPECT_EQ(nq_Alias_put(nullptr, u"x"), 0);
}

TEST_F(Env, AliasGetBeforeAnyPutFindsNothing) {
    EXPECT_TRUE(nqct::passes_in_fresh_process("DISABLED_FreshEnv.AliasGetBeforeAnyPutFindsNothing"));
}

TEST(DISABLED_FreshEnv, AliasGetBeforeAnyPutFindsNothing) {
    nq_wchar out[8] = u"junk";
    EXPECT_NE(nq_Alias_get(out, u"X", 7), 1);
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(nq_Alias_del(u"X"), 0);
    nq_Alias_expandStr(out, u"%X%");
    EXPECT_EQ(S(out), u"%X%");
}

TEST_F(Env, AliasPutFromFldListPutsEachFieldAsText) {
    FldList *list = nq_FldList_create(nullptr);
    nq_FldList_appChar(list, u"one", u"1");
    nq_FldList_appInt(list, u"two", 2);
    EXPECT_EQ(nq_Alias_putFromFldList(list), 1);
    nq_wchar out[32];
    EXPECT_EQ(nq_Alias_get(out, u"ONE", 31), 1);
    EXPECT_EQ(S(out), u"1");
    EXPECT_EQ(nq_Alias_get(out, u"TWO", 31), 1);
    EXPECT_EQ(S(out), u"2");
    nq_FldList_destroy(list);
    EXPECT_EQ(nq_Alias_putFromFldList(nullptr), 0);
    nq_Alias_del(u"one");
    nq_Alias_del(u"two");
}

TEST_F(Env, AliasExpandStrLeavesUnknownNamesWithTheirSigns) {
    nq_wchar out[128];
    EXPECT_EQ(nq_Alias_expandStr(out, u"%NOPE%\\x"), 0);
    EXPECT_EQ(S(out), u"%NOPE%\\x");
    nq_Alias_expandStr(out, u"a%b");
    EXPECT_EQ(S(out), u"a");
    nq_Alias_expandStr(out, u"%%");
    EXPECT_EQ(S(out), u"%%");
}

TEST_F(Env, AliasExpandStrExpandsOnce) {
    nq_Alias_put(u"A", u"%B%");
    nq_Alias_put(u"B", u"b");
    nq_wchar out[128];
    nq_Alias_expandStr(out, u"[%A%|%b%|%a]");
    EXPECT_EQ(S(out), u"[%B%|b|");
    nq_Alias_del(u"A");
    nq_Alias_del(u"B");
}

TEST_F(Env, AliasExpandStrCutsValuesAt256AndIgnoresSessionVariables) {
    nq_Alias_put(u"LONG", std::u16string(300, u'l').c_str());
    nq_Env_setSes(u"SES", u"s");
    nq_wchar out[512];
    nq_Alias_expandStr(out, u"%LONG%%SES%");
    EXPECT_EQ(S(out), std::u16string(256, u'l') + u"%SES%");
    nq_Alias_del(u"LONG");
    // A name longer than any alias can be stays as it is.
    const std::u16string long_name = u"%" + std::u16string(300, u'n') + u"%";
    std::u16string buffer(400, u'\0');
    nq_Alias_expandStr(buffer.data(), long_name.c_str());
    EXPECT_EQ(S(buffer.c_str()), long_name);
}

TEST_F(Env, AliasExpandStrWithNullArgumentsDoesNothing) {
    nq_wchar out[8] = u"keep";
    EXPECT_EQ(nq_Alias_expandStr(out, nullptr), 0);
    EXPECT_EQ(S(out), u"keep");
    EXPECT_EQ(nq_Alias_expandStr(nullptr, u"x"), 0);
}
