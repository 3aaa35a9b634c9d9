// The Ini family: reads through the cache, write-through changes that keep every other line,
// group operations, the direct file operations, and damaged files.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cwctype>
#include <string>

#include "config_test.h"

namespace {

using nqct::Fields;
using nqct::fields;
using nqct::S;
using nqtt::entries;
using nqtt::Strings;

class Ini : public nqct::ConfigTest {
protected:
    // A file "t.ini" with the given content; its library name.
    std::u16string file(const std::string &content) {
        write("t.ini", content);
        return lib("t.ini");
    }
    std::u16string get(const std::u16string &f, const nq_wchar *group, const nq_wchar *variable) {
        return S(nq_Ini_get(f.c_str(), group, variable));
    }
};

const char kSample[] =
    "; the sample\n"
    "[General]\n"
    "Name = Alpha\n"
    "Path=%ROOT%\\data\n"
    "Empty=\n"
    "Blank =    \n"
    "Count = 42abc\n"
    "\n"
    "; about the second group\n"
    "[P.1]\n"
    "x=1\n"
    "\n"
    "[P.7]\n"
    "y=2\n";

}  // namespace

// ---- Reading through the cache ----

TEST_F(Ini, GetFindsGroupsAndVariablesIgnoringCase) {
    const auto f = file(kSample);
    EXPECT_EQ(get(f, u"GENERAL", u"name"), u"Alpha");
    EXPECT_EQ(get(f, u"general", u"NAME"), u"Alpha");
    EXPECT_EQ(get(f, u"p.7", u"Y"), u"2");
}

TEST_F(Ini, MissingFileGroupVariableOrEmptyValueAllYieldNull) {
    const auto f = file(kSample);
    EXPECT_EQ(nq_Ini_get(f.c_str(), u"General", u"Nope"), nullptr);
    EXPECT_EQ(nq_Ini_get(f.c_str(), u"Nope", u"Name"), nullptr);
    EXPECT_EQ(nq_Ini_get(lib("missing.ini").c_str(), u"General", u"Name"), nullptr);
    EXPECT_EQ(nq_Ini_get(f.c_str(), u"General", u"Empty"), nullptr);
    EXPECT_EQ(nq_Ini_get(f.c_str(), u"General", u"Blank"), nullptr);
    EXPECT_EQ(nq_Ini_get(nullptr, u"General", u"Name"), nullptr);
    EXPECT_EQ(nq_Ini_get(f.c_str(), nullptr, u"Name"), nullptr);
    EXPECT_EQ(nq_Ini_get(f.c_str(), u"General", nullptr), nullptr);
    EXPECT_EQ(nq_Ini_get(u"", u"General", u"Name"), nullptr);
}

TEST_F(Ini, GetExpandsAliasesOnceAndAbsoluteDoesNot) {
    const auto f = file(kSample);
    ASSERT_EQ(nq_Alias_put(u"ROOT", u"c:\\zelmar"), 1);
    EXPECT_EQ(get(f, u"General", u"Path"), u"c:\\zelmar\\data");
    EXPECT_EQ(S(nq_Ini_getAbsolute(f.c_str(), u"General", u"Path")), u"%ROOT%\\data");
    // Session variables are not what the INI values expand.
    nq_Alias_del(u"ROOT");
    nq_Env_setSes(u"ROOT", u"session");
    EXPECT_EQ(get(f, u"General", u"Path"), u"%ROOT%\\data");
}

TEST_F(Ini, ValueWhoseExpansionIsEmptyOrBlankIsMissing) {
    const auto f = file("[G]\na=%E%\nb=%B%  x\nc=%B%\n");
    nq_Alias_put(u"E", u"");
    nq_Alias_put(u"B", u"   ");
    EXPECT_EQ(nq_Ini_get(f.c_str(), u"G", u"a"), nullptr);
    EXPECT_EQ(get(f, u"G", u"b"), u"x");  // leading blanks go
    EXPECT_EQ(nq_Ini_get(f.c_str(), u"G", u"c"), nullptr);
    nq_Alias_del(u"E");
    nq_Alias_del(u"B");
}

TEST_F(Ini, GetValueCutsAtTheLimitWithoutExpansion) {
    const auto f = file("[G]\nv=abcdef\n");
    EXPECT_EQ(S(nq_Ini_getValue(f.c_str(), u"G", u"v", 0, 3)), u"abc");
    EXPECT_EQ(S(nq_Ini_getValue(f.c_str(), u"G", u"v", 0, 100)), u"abcdef");
    EXPECT_EQ(nq_Ini_getValue(f.c_str(), u"G", u"v", 0, 0), nullptr);
    EXPECT_EQ(nq_Ini_getValue(f.c_str(), u"G", u"v", 0, -5), nullptr);
    EXPECT_EQ(S(nq_Ini_getValue(f.c_str(), u"G", u"v", 1, 3)), u"abcdef");  // limit is for raw reads
}

TEST_F(Ini, ResultsShareOneStaticBuffer) {
    const auto f = file(kSample);
    const nq_wchar *first = nq_Ini_get(f.c_str(), u"General", u"Name");
    const nq_wchar *second = nq_Ini_getAbsolute(f.c_str(), u"P.1", u"x");
    EXPECT_EQ(first, second);
    EXPECT_EQ(S(first), u"1");
}

TEST_F(Ini, GetIntConvertsLikeWtoiAndMissingIsZero) {
    const auto f = file("[G]\nn=42abc\nz=0\nneg= -7\n");
    EXPECT_EQ(nq_Ini_getInt(f.c_str(), u"G", u"n"), 42);
    EXPECT_EQ(nq_Ini_getInt(f.c_str(), u"G", u"z"), 0);
    EXPECT_EQ(nq_Ini_getInt(f.c_str(), u"G", u"missing"), 0);
    EXPECT_EQ(nq_Ini_getInt(f.c_str(), u"G", u"neg"), -7);
}

TEST_F(Ini, FileIsParsedOnceUntilReloaded) {
    const auto f = file("[G]\nv=old\n");
    EXPECT_EQ(get(f, u"G", u"v"), u"old");
    write("t.ini", "[G]\nv=new\n");
    EXPECT_EQ(get(f, u"G", u"v"), u"old");
    EXPECT_EQ(nq_Ini_reload(f.c_str()), 1);
    EXPECT_EQ(get(f, u"G", u"v"), u"new");
    write("t.ini", "[G]\nv=newer\n");
    nq_Ini_resetCache();
    EXPECT_EQ(get(f, u"G", u"v"), u"newer");
}

TEST_F(Ini, OtherSpellingsOfTheSameFileShareOneEntry) {
    const auto f = file("[G]\nv=1\n");
    EXPECT_EQ(get(f, u"G", u"v"), u"1");
    std::u16string upper = f;
    for (auto &c : upper) c = static_cast<char16_t>(std::towupper(c));
    EXPECT_EQ(nq_Ini_set(upper.c_str(), u"G", u"v", u"2"), 0);
    EXPECT_EQ(get(f, u"G", u"v"), u"2");
    const std::u16string linux_name = nqtt::W(path("t.ini"));
    EXPECT_EQ(get(linux_name, u"G", u"v"), u"2");
}

TEST_F(Ini, RelativeNameFollowsTheCurrentFolder) {
    ASSERT_EQ(::mkdir(path("one").c_str(), 0755), 0);
    ASSERT_EQ(::mkdir(path("two").c_str(), 0755), 0);
    write("one/rel.ini", "[G]\nv=one\n");
    write("two/rel.ini", "[G]\nv=two\n");
    char old[4096];
    ASSERT_NE(::getcwd(old, sizeof old), nullptr);
    ASSERT_EQ(::chdir(path("one").c_str()), 0);
    const std::u16string first = S(nq_Ini_get(u"rel.ini", u"G", u"v"));
    ASSERT_EQ(::chdir(path("two").c_str()), 0);
    const std::u16string second = S(nq_Ini_get(u"rel.ini", u"G", u"v"));
    ASSERT_EQ(::chdir(old), 0);
    EXPECT_EQ(first, u"one");
    EXPECT_EQ(second, u"two");
}

TEST_F(Ini, ReloadOfAMissingFileYieldsZeroAndForgetsIt) {
    const auto f = file("[G]\nv=1\n");
    EXPECT_EQ(get(f, u"G", u"v"), u"1");
    std::remove(path("t.ini").c_str());
    EXPECT_EQ(get(f, u"G", u"v"), u"1");
    EXPECT_EQ(nq_Ini_reload(f.c_str()), 0);
    EXPECT_EQ(nq_Ini_get(f.c_str(), u"G", u"v"), nullptr);
    EXPECT_EQ(nq_Ini_reload(nullptr), 0);
}

TEST_F(Ini, MissingFileIsSeenOnceItExists) {
    const auto f = lib("later.ini");
    EXPECT_EQ(nq_Ini_get(f.c_str(), u"G", u"v"), nullptr);
    write("later.ini", "[G]\nv=here\n");
    EXPECT_EQ(get(f, u"G", u"v"), u"here");
}

TEST_F(Ini, DuplicateSectionsJoinAndTheFirstVariableWins) {
    const auto f = file("[G]\na=1\nb=first\n[H]\nh=1\n[g]\nb=second\nc=3\n");
    EXPECT_EQ(get(f, u"G", u"b"), u"first");
    EXPECT_EQ(get(f, u"G", u"c"), u"3");
    StrList *groups = nq_Ini_findAllGroups(f.c_str());
    EXPECT_EQ(entries(groups), (Strings{u"G", u"H"}));
    nq_StrList_destroy(groups);
}

TEST_F(Ini, LinesOutsideGroupsAndCommentsMeanNothing) {
    const auto f = file("top=1\n;[NotAGroup]\n[G]\n;v=commented\n  ; x=y\n=novalue\nv=real\n");
    EXPECT_EQ(get(f, u"G", u"v"), u"real");
    EXPECT_EQ(nq_Ini_get(f.c_str(), u"G", u"top"), nullptr);
    EXPECT_EQ(nq_Ini_get(f.c_str(), u"NotAGroup", u"v"), nullptr);
    StrList *groups = nq_Ini_findAllGroups(f.c_str());
    EXPECT_EQ(entries(groups), (Strings{u"G"}));
    nq_StrList_destroy(groups);
}

TEST_F(Ini, GroupNamesAreTrimmedAndUnclosedBracketRunsToTheEnd) {
    const auto f = file("  [  Spaced Name  ]  \nv=1\n[Open\nw=2\n[]\ne=3\n");
    EXPECT_EQ(get(f, u"Spaced Name", u"v"), u"1");
    EXPECT_EQ(get(f, u"Open", u"w"), u"2");
    EXPECT_EQ(get(f, u"", u"e"), u"3");
}

// ---- Writing through ----

TEST_F(Ini, SetChangesOnlyTheLineOfTheVariable) {
    const auto f = file(kSample);
    EXPECT_EQ(nq_Ini_set(f.c_str(), u"general", u"NAME", u"Beta"), 0);
    std::string expected = kSample;
    expected.replace(expected.find("Name = Alpha"), 12, "Name=Beta");
    EXPECT_EQ(read("t.ini"), expected);
    EXPECT_EQ(get(f, u"General", u"Name"), u"Beta");
}

TEST_F(Ini, SetOfANewVariableGoesAfterTheGroupsLastVariable) {
    const auto f = file(kSample);
    EXPECT_EQ(nq_Ini_set(f.c_str(), u"P.1", u"z", u"9"), 0);
    std::string expected = kSample;
    expected.insert(expected.find("x=1\n") + 4, "z=9\n");
    EXPECT_EQ(read("t.ini"), expected);
}

TEST_F(Ini, SetOfANewGroupAppendsItWithAnEmptyLineAfter) {
    const auto f = file(kSample);
    EXPECT_EQ(nq_Ini_set(f.c_str(), u"New", u"k", u"v"), 0);
    EXPECT_EQ(read("t.ini"), std::string(kSample) + "[New]\nk=v\n\n");
    nq_Ini_resetCache();
    EXPECT_EQ(get(f, u"New", u"k"), u"v");
}

TEST_F(Ini, SetInAnEmptyGroupGoesRightAfterItsHeader) {
    const auto f = file("[A]\n; note\n\n[B]\nb=1\n");
    EXPECT_EQ(nq_Ini_set(f.c_str(), u"A", u"a", u"1"), 0);
    EXPECT_EQ(read("t.ini"), "[A]\na=1\n; note\n\n[B]\nb=1\n");
}

TEST_F(Ini, SetMakesAMissingFile) {
    const auto f = lib("made.ini");
    EXPECT_EQ(nq_Ini_set(f.c_str(), u"G", u"v", u"1"), 0);
    EXPECT_EQ(read("made.ini"), "[G]\nv=1\n\n");
    EXPECT_EQ(nq_Ini_set(f.c_str(), u"G", u"w", u"2"), 0);
    EXPECT_EQ(read("made.ini"), "[G]\nv=1\nw=2\n\n");
}

TEST_F(Ini, RoundTripSetReloadRewriteKeepsCommentsAndOrder) {
    const auto f = file(kSample);
    ASSERT_EQ(nq_Ini_set(f.c_str(), u"P.7", u"y", u"20"), 0);
    ASSERT_EQ(nq_Ini_reload(f.c_str()), 1);
    EXPECT_EQ(get(f, u"P.7", u"y"), u"20");
    ASSERT_EQ(nq_Ini_set(f.c_str(), u"General", u"Count", u"7"), 0);
    std::string expected = kSample;
    expected.replace(expected.find("Count = 42abc"), 13, "Count=7");
    expected.replace(expected.find("y=2"), 3, "y=20");
    EXPECT_EQ(read("t.ini"), expected);
}

TEST_F(Ini, SetKeepsCarriageReturnsAndAMissingLastLineEnd) {
    const auto f = file("[G]\r\na=1\r\n; c\r\nb=2");
    EXPECT_EQ(nq_Ini_set(f.c_str(), u"G", u"a", u"9"), 0);
    EXPECT_EQ(read("t.ini"), "[G]\r\na=9\r\n; c\r\nb=2");
    EXPECT_EQ(nq_Ini_set(f.c_str(), u"G", u"c", u"3"), 0);
    EXPECT_EQ(read("t.ini"), "[G]\r\na=9\r\n; c\r\nb=2\r\nc=3");
    EXPECT_EQ(get(f, u"G", u"b"), u"2");
}

TEST_F(Ini, SetOfTheSameValueLeavesTheFileAlone) {
    const auto f = file("[G]\nv=1\n");
    EXPECT_EQ(nq_Ini_set(f.c_str(), u"G", u"v", u"1"), 0);
    EXPECT_EQ(read("t.ini"), "[G]\nv=1\n");  // the line keeps its form
}

TEST_F(Ini, NullValueRemovesTheVariable) {
    const auto f = file("[G]\na=1\nb=2\nc=3\n");
    EXPECT_EQ(nq_Ini_set(f.c_str(), u"G", u"b", nullptr), 0);
    EXPECT_EQ(read("t.ini"), "[G]\na=1\nc=3\n");
    EXPECT_EQ(nq_Ini_get(f.c_str(), u"G", u"b"), nullptr);
    EXPECT_EQ(get(f, u"G", u"c"), u"3");
    EXPECT_EQ(nq_Ini_set(f.c_str(), u"G", u"zz", nullptr), 0);
    EXPECT_EQ(nq_Ini_set(f.c_str(), u"None", u"zz", nullptr), 0);
    EXPECT_EQ(read("t.ini"), "[G]\na=1\nc=3\n");
}

TEST_F(Ini, EmptyValueIsWrittenButReadsAsMissing) {
    const auto f = file("[G]\nv=1\n");
    EXPECT_EQ(nq_Ini_set(f.c_str(), u"G", u"v", u""), 0);
    EXPECT_EQ(read("t.ini"), "[G]\nv=\n");
    EXPECT_EQ(nq_Ini_get(f.c_str(), u"G", u"v"), nullptr);
}

TEST_F(Ini, CachedValueIsWhatAReaderOfTheLineSees) {
    const auto f = file("[G]\n");
    EXPECT_EQ(nq_Ini_set(f.c_str(), u"G", u"v", u"  =x  "), 0);
    EXPECT_EQ(read("t.ini"), "[G]\nv=  =x  \n");
    EXPECT_EQ(S(nq_Ini_getAbsolute(f.c_str(), u"G", u"v")), u"x");
    nq_Ini_resetCache();
    EXPECT_EQ(S(nq_Ini_getAbsolute(f.c_str(), u"G", u"v")), u"x");
}

TEST_F(Ini, NamesThatTheFormatCannotHoldAreRefused) {
    const auto f = file("[G]\nv=1\n");
    EXPECT_NE(nq_Ini_set(f.c_str(), u"a]b", u"v", u"1"), 0);
    EXPECT_NE(nq_Ini_set(f.c_str(), u"G", u"x=y", u"1"), 0);
    EXPECT_NE(nq_Ini_set(f.c_str(), u"G", u"[x", u"1"), 0);
    EXPECT_NE(nq_Ini_set(f.c_str(), u"G", u";x", u"1"), 0);
    EXPECT_NE(nq_Ini_set(f.c_str(), u"G", u"x\ny", u"1"), 0);
    EXPECT_NE(nq_Ini_set(f.c_str(), u"G", u"x", u"1\r\n[H]"), 0);
    EXPECT_NE(nq_Ini_set(f.c_str(), u"", u"x", u"1"), 0);
    EXPECT_NE(nq_Ini_set(f.c_str(), u"G", u"  ", u"1"), 0);
    EXPECT_NE(nq_Ini_set(f.c_str(), nullptr, u"x", u"1"), 0);
    EXPECT_NE(nq_Ini_set(f.c_str(), u"G", nullptr, u"1"), 0);
    EXPECT_NE(nq_Ini_set(nullptr, u"G", u"x", u"1"), 0);
    EXPECT_NE(nq_Ini_set(u"", u"G", u"x", u"1"), 0);
    EXPECT_NE(nq_Ini_set(f.c_str(), u"G", std::u16string(1100, u'n').c_str(), u"1"), 0);
    EXPECT_EQ(read("t.ini"), "[G]\nv=1\n");
}

TEST_F(Ini, FolderInPlaceOfTheFileFailsAndKeepsNothing) {
    ASSERT_EQ(::mkdir(path("dir.ini").c_str(), 0755), 0);
    const auto f = lib("dir.ini");
    EXPECT_EQ(nq_Ini_get(f.c_str(), u"G", u"v"), nullptr);
    EXPECT_NE(nq_Ini_set(f.c_str(), u"G", u"v", u"1"), 0);
    EXPECT_EQ(nq_Ini_get(f.c_str(), u"G", u"v"), nullptr);
    EXPECT_EQ(nq_Ini_addGroup(f.c_str(), u"G"), 0);
    StrList *groups = nq_Ini_findAllGroups(f.c_str());
    EXPECT_EQ(groups, nullptr);
}

TEST_F(Ini, FileInAMissingFolderCannotBeSet) {
    const auto f = lib("no/such/folder/x.ini");
    EXPECT_NE(nq_Ini_set(f.c_str(), u"G", u"v", u"1"), 0);
    EXPECT_EQ(nq_Ini_get(f.c_str(), u"G", u"v"), nullptr);
}

TEST_F(Ini, ReadOnlyFileCannotBeSetAndTheCacheKeepsTheDiskValue) {
    const auto f = file("[G]\nv=1\n");
    ::chmod(dir_.path().c_str(), 0777);
    ::chmod(path("t.ini").c_str(), 0444);
    EXPECT_TRUE(nqct::as_unprivileged([&] {
        return S(nq_Ini_get(f.c_str(), u"G", u"v")) == u"1" && nq_Ini_set(f.c_str(), u"G", u"v", u"2") != 0 &&
               S(nq_Ini_get(f.c_str(), u"G", u"v")) == u"1" && read("t.ini") == "[G]\nv=1\n";
    }));
}

TEST_F(Ini, UnreadableFileIsMissing) {
    const auto f = file("[G]\nv=1\n");
    ::chmod(dir_.path().c_str(), 0777);
    ::chmod(path("t.ini").c_str(), 0);
    EXPECT_TRUE(nqct::as_unprivileged([&] {
        return nq_Ini_get(f.c_str(), u"G", u"v") == nullptr && nq_Ini_getGroupLines(f.c_str(), u"G", 0) == nullptr &&
               nq_Ini_getGroupItems(f.c_str(), u"G") == nullptr;
    }));
}

TEST_F(Ini, WriteOnlyFileIsNeverOverwrittenUnseen) {
    const auto f = file("[G]\nv=1\n; much more\n");
    ::chmod(dir_.path().c_str(), 0777);
    ::chmod(path("t.ini").c_str(), 0222);
    EXPECT_TRUE(nqct::as_unprivileged([&] {
        return nq_Ini_set(f.c_str(), u"G", u"w", u"2") != 0 && nq_Ini_addGroup(f.c_str(), u"H") == 0 &&
               nq_Ini_get(f.c_str(), u"G", u"w") == nullptr;
    }));
    EXPECT_EQ(read("t.ini"), "[G]\nv=1\n; much more\n");
}

TEST_F(Ini, SetGroupOfAReadOnlyFileSetsNothing) {
    const auto f = file("[G]\nv=1\n");
    ::chmod(dir_.path().c_str(), 0777);
    ::chmod(path("t.ini").c_str(), 0444);
    FldList *list = nq_FldList_create(nullptr);
    nq_FldList_appChar(list, u"v", u"2");
    EXPECT_TRUE(nqct::as_unprivileged([&] { return nq_Ini_setGroup(f.c_str(), u"G", list, 0) == 0; }));
    nq_FldList_destroy(list);
    EXPECT_EQ(read("t.ini"), "[G]\nv=1\n");
}

TEST_F(Ini, SetAndVerifyReadsBackThroughTheCache) {
    const auto f = file("[G]\n");
    int result = 99;
    EXPECT_EQ(nq_Ini_setAndVerify(f.c_str(), u"G", u"v", u"Value", &result), 1);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(nq_Ini_setAndVerify(f.c_str(), u"G", u"w", u"  lead", &result), 0);  // reads back trimmed
    EXPECT_EQ(result, 0);
    EXPECT_EQ(nq_Ini_setAndVerify(f.c_str(), u"G", u"v", u"", nullptr), 1);
    EXPECT_EQ(nq_Ini_setAndVerify(f.c_str(), u"G", u"x=y", u"1", &result), 0);
    EXPECT_NE(result, 0);
}

TEST_F(Ini, SetAndVerifyComparesIgnoringCase) {
    const auto f = file("[G]\nv=abc\n");
    // The variable exists with another spelling; the set keeps the line's name.
    EXPECT_EQ(nq_Ini_setAndVerify(f.c_str(), u"G", u"V", u"XYZ", nullptr), 1);
    EXPECT_EQ(read("t.ini"), "[G]\nv=XYZ\n");
}

// ---- Groups through field lists ----

TEST_F(Ini, SetGroupWritesEachFieldAsText) {
    const auto f = file("[G]\nold=1\n");
    FldList *list = nq_FldList_create(nullptr);
    nq_FldList_appChar(list, u"name", u"Alpha");
    nq_FldList_appInt(list, u"count", 12);
    nq_FldList_appReal(list, u"size", 1.5);
    const Point p{1, 2, 3};
    nq_FldList_appPoint(list, u"where", &p);
    nq_FldList_appChar(list, u"nothing", nullptr);
    EXPECT_EQ(nq_Ini_setGroup(f.c_str(), u"G", list, 0), 1);
    EXPECT_EQ(read("t.ini"), "[G]\nold=1\nNAME=Alpha\nCOUNT=12\nSIZE=1.500000\nWHERE=\nNOTHING=\n");
    nq_FldList_destroy(list);
}

TEST_F(Ini, SetGroupWithoutWriteAccessDoesNothing) {
    FldList *list = nq_FldList_create(nullptr);
    nq_FldList_appChar(list, u"a", u"1");
    EXPECT_EQ(nq_Ini_setGroup(lib("missing.ini").c_str(), u"G", list, 0), 0);
    EXPECT_FALSE(nqtest::file_exists(path("missing.ini")));
    EXPECT_EQ(nq_Ini_setGroup(nullptr, u"G", list, 0), 0);
    EXPECT_EQ(nq_Ini_setGroup(lib("missing.ini").c_str(), nullptr, list, 0), 0);
    nq_FldList_destroy(list);
    EXPECT_EQ(nq_Ini_setGroup(lib("missing.ini").c_str(), u"G", nullptr, 0), 0);
}

TEST_F(Ini, SetGroupExistingOnlyPassesOverMissingVariables) {
    const auto f = file("[G]\na=1\nb=\n");
    FldList *list = nq_FldList_create(nullptr);
    nq_FldList_appChar(list, u"a", u"10");
    nq_FldList_appChar(list, u"b", u"20");  // empty counts as missing
    nq_FldList_appChar(list, u"c", u"30");
    EXPECT_EQ(nq_Ini_setGroup(f.c_str(), u"G", list, 1), 1);
    EXPECT_EQ(read("t.ini"), "[G]\na=10\nb=\n");
    EXPECT_EQ(nq_Ini_updateGroup(f.c_str(), u"G", list), 1);
    EXPECT_EQ(read("t.ini"), "[G]\na=10\nb=\n");
    nq_FldList_destroy(list);
}

TEST_F(Ini, SetGroupFailureStaysZeroWhileLaterFieldsAreSet) {
    const auto f = file("[G]\n");
    FldList *list = nq_FldList_create(nullptr);
    nq_FldList_appChar(list, u"a", u"1");
    nq_FldList_appChar(list, u"b=c", u"2");
    nq_FldList_appChar(list, u"d", u"3");
    EXPECT_EQ(nq_Ini_setGroup(f.c_str(), u"G", list, 0), 0);
    EXPECT_EQ(read("t.ini"), "[G]\nA=1\nD=3\n");
    nq_FldList_destroy(list);
}

TEST_F(Ini, SetGroupExReplaceEmptiesTheGroupFirst) {
    const auto f = file("[G]\na=1\n; kept\nb=2\n[H]\nh=1\n");
    FldList *list = nq_FldList_create(nullptr);
    nq_FldList_appChar(list, u"b", u"20");
    nq_FldList_appChar(list, u"c", u"30");
    EXPECT_EQ(nq_Ini_setGroupEx(f.c_str(), u"G", list, 0, 1), 1);
    EXPECT_EQ(read("t.ini"), "[G]\nB=20\nC=30\n; kept\n[H]\nh=1\n");
    EXPECT_EQ(nq_Ini_get(f.c_str(), u"G", u"a"), nullptr);

    // With existingOnly the variables that existed before are the ones set.
    EXPECT_EQ(nq_Ini_setGroupEx(f.c_str(), u"H", list, 1, 1), 1);
    EXPECT_EQ(read("t.ini"), "[G]\nB=20\nC=30\n; kept\n[H]\n");
    EXPECT_EQ(nq_Ini_setGroupEx(f.c_str(), u"G", list, 0, 0), 1);
    nq_FldList_destroy(list);
}

TEST_F(Ini, GetGroupFamilyGivesFieldsInFileOrder) {
    const auto f = file(kSample);
    nq_Alias_put(u"ROOT", u"r");
    FldList *expanded = nq_Ini_getGroup(f.c_str(), u"general");
    EXPECT_EQ(fields(expanded), (Fields{{u"NAME", u"Alpha"}, {u"PATH", u"r\\data"}, {u"COUNT", u"42abc"}}));
    FldList *raw = nq_Ini_getGroupAbsolute(f.c_str(), u"General");
    EXPECT_EQ(fields(raw), (Fields{{u"NAME", u"Alpha"}, {u"PATH", u"%ROOT%\\data"}, {u"COUNT", u"42abc"}}));
    FldList *nulls = nq_Ini_getGroupWithNulls(f.c_str(), u"General");
    EXPECT_EQ(fields(nulls), (Fields{{u"NAME", u"Alpha"},
                                     {u"PATH", u"r\\data"},
                                     {u"EMPTY", u""},
                                     {u"BLANK", u""},
                                     {u"COUNT", u"42abc"}}));
    FldList *values = nq_Ini_getGroupValues(f.c_str(), u"General", 1);
    EXPECT_EQ(fields(values), fields(expanded));
    FldList *values_raw = nq_Ini_getGroupValues(f.c_str(), u"General", 0);
    EXPECT_EQ(fields(values_raw), fields(raw));
    for (FldList *l : {expanded, raw, nulls, values, values_raw}) nq_FldList_destroy(l);
    nq_Alias_del(u"ROOT");
}

TEST_F(Ini, GetGroupOfAMissingGroupIsNullAndOfAnEmptyOneAnEmptyList) {
    const auto f = file("[Empty]\n; only a comment\n[G]\nv=1\n");
    EXPECT_EQ(nq_Ini_getGroup(f.c_str(), u"Nope"), nullptr);
    EXPECT_EQ(nq_Ini_getGroup(lib("none.ini").c_str(), u"G"), nullptr);
    FldList *empty = nq_Ini_getGroup(f.c_str(), u"Empty");
    ASSERT_NE(empty, nullptr);
    EXPECT_EQ(nq_FldList_count(empty), 0);
    nq_FldList_destroy(empty);
}

// ---- Adding and removing groups ----

TEST_F(Ini, AddGroupAppendsAHeaderAndAnEmptyLineOnce) {
    const auto f = file("[A]\na=1\n");
    EXPECT_EQ(nq_Ini_addGroup(f.c_str(), u"B"), 1);
    EXPECT_EQ(read("t.ini"), "[A]\na=1\n[B]\n\n");
    EXPECT_EQ(nq_Ini_addGroup(f.c_str(), u"b"), 0);
    EXPECT_EQ(nq_Ini_addGroup(f.c_str(), u"x]y"), 0);
    EXPECT_EQ(nq_Ini_addGroup(f.c_str(), u""), 0);
    EXPECT_EQ(nq_Ini_addGroup(f.c_str(), nullptr), 0);
    EXPECT_EQ(read("t.ini"), "[A]\na=1\n[B]\n\n");
    EXPECT_EQ(nq_Ini_set(f.c_str(), u"B", u"b", u"2"), 0);
    EXPECT_EQ(read("t.ini"), "[A]\na=1\n[B]\nb=2\n\n");
}

TEST_F(Ini, AddGroupMakesAMissingFile) {
    EXPECT_EQ(nq_Ini_addGroup(lib("new.ini").c_str(), u"G"), 1);
    EXPECT_EQ(read("new.ini"), "[G]\n\n");
}

TEST_F(Ini, RemoveGroupTakesItsLinesUpToTheNextGroup) {
    const auto f = file(kSample);
    EXPECT_EQ(nq_Ini_removeGroup(f.c_str(), u"general"), 1);
    EXPECT_EQ(read("t.ini"), "; the sample\n[P.1]\nx=1\n\n[P.7]\ny=2\n");
    EXPECT_EQ(nq_Ini_get(f.c_str(), u"General", u"Name"), nullptr);
    EXPECT_EQ(nq_Ini_removeGroup(f.c_str(), u"General"), 0);
    EXPECT_EQ(nq_Ini_removeGroup(f.c_str(), nullptr), 0);
    EXPECT_EQ(nq_Ini_removeGroup(lib("none.ini").c_str(), u"G"), 0);
    EXPECT_EQ(nq_Ini_set(f.c_str(), u"P.1", u"w", u"5"), 0);
    EXPECT_EQ(read("t.ini"), "; the sample\n[P.1]\nx=1\nw=5\n\n[P.7]\ny=2\n");
}

TEST_F(Ini, RemoveGroupTakesEverySectionOfIt) {
    const auto f = file("[G]\na=1\n[H]\nh=1\n[G]\nb=2\n");
    EXPECT_EQ(nq_Ini_removeGroup(f.c_str(), u"G"), 1);
    EXPECT_EQ(read("t.ini"), "[H]\nh=1\n");
}

// ---- Group names ----

TEST_F(Ini, FindPrefixGroupsKeepsTheFilesOrder) {
    const auto f = file("[P.7]\n[Other]\n[p.1]\n[PX]\n");
    StrList *list = nq_Ini_findPrefixGroups(f.c_str(), u"P.");
    EXPECT_EQ(entries(list), (Strings{u"P.7", u"p.1"}));
    nq_StrList_destroy(list);
    list = nq_Ini_findPrefixGroups(f.c_str(), u"");
    EXPECT_EQ(entries(list), (Strings{u"P.7", u"Other", u"p.1", u"PX"}));
    nq_StrList_destroy(list);
    list = nq_Ini_findPrefixGroups(f.c_str(), nullptr);
    EXPECT_EQ(entries(list).size(), 4u);
    nq_StrList_destroy(list);
    list = nq_Ini_findAllGroups(f.c_str());
    EXPECT_EQ(entries(list).size(), 4u);
    nq_StrList_destroy(list);
    list = nq_Ini_findPrefixGroups(f.c_str(), u"Q");
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(nq_StrList_count(list), 0);
    nq_StrList_destroy(list);
}

TEST_F(Ini, FindPrefixGroupsOfAMissingFileOrOneWithoutGroupsIsNull) {
    EXPECT_EQ(nq_Ini_findPrefixGroups(lib("none.ini").c_str(), u"P"), nullptr);
    const auto f = file("a=1\n; nothing\n");
    EXPECT_EQ(nq_Ini_findAllGroups(f.c_str()), nullptr);
    EXPECT_EQ(nq_Ini_findAllGroups(nullptr), nullptr);
}

TEST_F(Ini, NextIncrSuffixIsOneMoreThanTheLargest) {
    const auto f = file("[P.1]\n[P.7]\n[Q.9]\n");
    EXPECT_EQ(S(nq_Ini_getNextIncrSuffix(f.c_str(), u"P")), u"8");
    EXPECT_EQ(S(nq_Ini_getNextIncrSuffix(f.c_str(), u"R")), u"0");
    EXPECT_EQ(S(nq_Ini_getNextIncrSuffix(lib("none.ini").c_str(), u"P")), u"0");
}

TEST_F(Ini, NextIncrSuffixCountsNamesWithoutDotsAsZero) {
    const auto f = file("[P]\n[P.-5]\n");
    EXPECT_EQ(S(nq_Ini_getNextIncrSuffix(f.c_str(), u"P")), u"1");
    const auto g = lib("g.ini");
    write("g.ini", "[P.-5]\n[P.-9]\n[P.2147483647]\n");
    EXPECT_EQ(S(nq_Ini_getNextIncrSuffix(g.c_str(), u"P.")), u"-2147483648");
}

TEST(IniNames, GroupNameSuffixFollowsTheFirstDot) {
    nq_wchar abc[] = u"ABC";
    EXPECT_EQ(nq_Ini_getGroupNameSuffix(abc), abc);
    nq_wchar p3[] = u"PREFIX.3";
    EXPECT_EQ(S(nq_Ini_getGroupNameSuffix(p3)), u"3");
    nq_wchar p34[] = u"P.3.4";
    EXPECT_EQ(S(nq_Ini_getGroupNameSuffix(p34)), u"3.4");
    nq_wchar dot[] = u"P.";
    EXPECT_EQ(S(nq_Ini_getGroupNameSuffix(dot)), u"");
    EXPECT_EQ(nq_Ini_getGroupNameSuffix(nullptr), nullptr);
}

TEST(IniNames, GetGroupNameReadsAGroupLine) {
    nq_wchar name[64];
    EXPECT_EQ(nq_Ini_getGroupName(u"  [ abc ] rest", name), 1);
    EXPECT_EQ(S(name), u"abc");
    EXPECT_EQ(nq_Ini_getGroupName(u"[open", name), 1);
    EXPECT_EQ(S(name), u"open");
    EXPECT_EQ(nq_Ini_getGroupName(u"[]", name), 1);
    EXPECT_EQ(S(name), u"");
    EXPECT_EQ(nq_Ini_getGroupName(u"a=[b]", name), 0);
    EXPECT_EQ(S(name), u"");
    EXPECT_EQ(nq_Ini_getGroupName(u"; [c]", name), 0);
    EXPECT_EQ(nq_Ini_getGroupName(nullptr, name), 0);
    EXPECT_EQ(nq_Ini_getGroupName(u"[x]", nullptr), 1);
}

// ---- Viewing and errors ----

TEST_F(Ini, ViewCachePrintsEveryCachedFile) {
    const auto f = file("[G]\nv=1\n; c\nw = two\n[H]\n");
    nq_Ini_get(f.c_str(), u"G", u"v");
    nqtest::CaptureFd out(1);
    nq_Ini_viewCache();
    const std::string text = out.stop();
    EXPECT_NE(text.find("INI cache: 1 file(s)\n"), std::string::npos);
    EXPECT_NE(text.find("[G]\nv=1\nw=two\n[H]\n"), std::string::npos);
    nq_Ini_resetCache();
    nqtest::CaptureFd again(1);
    nq_Ini_viewCache();
    EXPECT_EQ(again.stop(), "INI cache: 0 file(s)\n");
}

TEST_F(Ini, DisplayErrorPrintsTheThreeNames) {
    nqtest::CaptureFd out(1);
    nq_Ini_displayError(u"nq.ini", u"GENERAL", u"WK");
    EXPECT_EQ(out.stop(), "Error reading Ini File\nFile Name nq.ini\nGroup Name GENERAL\nVariable Name WK");
}

TEST_F(Ini, DestroyDataReleasesTheCache) {
    const auto f = file("[G]\nv=1\n");
    EXPECT_EQ(get(f, u"G", u"v"), u"1");
    write("t.ini", "[G]\nv=2\n");
    nq_Global_destroyData();
    EXPECT_EQ(get(f, u"G", u"v"), u"2");
}

// ---- Directly on the file ----

TEST_F(Ini, FindGroupLeavesTheStreamBehindTheGroupLine) {
    write("t.ini", "[A]\na=1\n  [ b ]\nnext line\n");
    std::FILE *stream = std::fopen(path("t.ini").c_str(), "r");
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(nq_Ini_findGroup(stream, u"B"), 1);
    char line[64];
    ASSERT_NE(std::fgets(line, sizeof line, stream), nullptr);
    EXPECT_STREQ(line, "next line\n");
    EXPECT_EQ(nq_Ini_findGroup(stream, u"A"), 0);  // from where the stream stands
    std::fclose(stream);
    EXPECT_EQ(nq_Ini_findGroup(nullptr, u"A"), 0);
}

TEST_F(Ini, GetGroupLinesDropsEmptyLinesAndCommentsUnlessKept) {
    const auto f = file("[A]\n  a = 1\n\n; note\n   b=2\n[B]\nx=1\n");
    StrList *lines = nq_Ini_getGroupLines(f.c_str(), u"a", 0);
    EXPECT_EQ(entries(lines), (Strings{u"a = 1", u"b=2"}));
    nq_StrList_destroy(lines);
    lines = nq_Ini_getGroupLines(f.c_str(), u"A", 1);
    EXPECT_EQ(entries(lines), (Strings{u"a = 1", u"; note", u"b=2"}));
    nq_StrList_destroy(lines);
}

TEST_F(Ini, GetGroupLinesOfOnlyCommentsIsNullUnlessKept) {
    const auto f = file("[A]\n; one\n;two\n\n[B]\n");
    EXPECT_EQ(nq_Ini_getGroupLines(f.c_str(), u"A", 0), nullptr);
    StrList *lines = nq_Ini_getGroupLines(f.c_str(), u"A", 1);
    EXPECT_EQ(entries(lines), (Strings{u"; one", u";two"}));
    nq_StrList_destroy(lines);
    EXPECT_EQ(nq_Ini_getGroupLines(f.c_str(), u"B", 1), nullptr);
    EXPECT_EQ(nq_Ini_getGroupLines(f.c_str(), u"C", 1), nullptr);
    EXPECT_EQ(nq_Ini_getGroupLines(lib("none.ini").c_str(), u"A", 1), nullptr);
    EXPECT_EQ(nq_Ini_getGroupLines(nullptr, u"A", 1), nullptr);
}

TEST_F(Ini, GetGroupItemsTakesPairsWithNameAndValue) {
    const auto f = file("[A]\na = 1\nnovalue\n=noname\n; c=3\nb==2\n[B]\nx=1\n");
    FldList *items = nq_Ini_getGroupItems(f.c_str(), u"A");
    EXPECT_EQ(fields(items), (Fields{{u"A", u"1"}, {u"B", u"2"}}));
    nq_FldList_destroy(items);
    const auto g = lib("g.ini");
    write("g.ini", "[A]\nnovalue\n[B]\n");
    EXPECT_EQ(nq_Ini_getGroupItems(g.c_str(), u"A"), nullptr);
    EXPECT_EQ(nq_Ini_getGroupItems(g.c_str(), u"Z"), nullptr);
    EXPECT_EQ(nq_Ini_getGroupItems(nullptr, u"A"), nullptr);
}

TEST_F(Ini, SetGroupItemsReplacesTheGroupInTheFile) {
    const auto f = file("; head\n[A]\na=1\n[B]\nold=1\n; old comment\n\n[C]\nc=1\n");
    FldList *list = nq_FldList_create(nullptr);
    nq_FldList_appChar(list, u"new", u"x");
    nq_FldList_appInt(list, u"n", 5);
    EXPECT_EQ(nq_Ini_setGroupItems(f.c_str(), u"b", list), 1);
    EXPECT_EQ(read("t.ini"), "; head\n[A]\na=1\n[B]\nNEW=x\nN=5\n\n[C]\nc=1\n");
    EXPECT_FALSE(nqtest::file_exists(path("nq_tmp.ini")));
    nq_FldList_destroy(list);
}

TEST_F(Ini, SetGroupItemsOfTheLastGroupAndOfAMissingOne) {
    const auto f = file("[A]\na=1\n[B]\nb=1\n");
    FldList *list = nq_FldList_create(nullptr);
    nq_FldList_appChar(list, u"k", u"v");
    EXPECT_EQ(nq_Ini_setGroupItems(f.c_str(), u"B", list), 1);
    EXPECT_EQ(read("t.ini"), "[A]\na=1\n[B]\nK=v\n\n");
    EXPECT_EQ(nq_Ini_setGroupItems(f.c_str(), u"C", list), 1);
    EXPECT_EQ(read("t.ini"), "[A]\na=1\n[B]\nK=v\n\n[C]\nK=v\n\n");
    nq_FldList_destroy(list);
}

TEST_F(Ini, SetGroupItemsMakesAMissingFileWithTheOneGroup) {
    FldList *list = nq_FldList_create(nullptr);
    nq_FldList_appChar(list, u"k", u"v");
    EXPECT_EQ(nq_Ini_setGroupItems(lib("fresh.ini").c_str(), u"G", list), 1);
    EXPECT_EQ(read("fresh.ini"), "[G]\nK=v\n\n");
    EXPECT_EQ(nq_Ini_setGroupItems(lib("empty.ini").c_str(), u"E", nullptr), 1);
    EXPECT_EQ(read("empty.ini"), "[E]\n\n");
    EXPECT_EQ(nq_Ini_setGroupItems(lib("x.ini").c_str(), nullptr, list), 0);
    EXPECT_EQ(nq_Ini_setGroupItems(lib("no/folder/x.ini").c_str(), u"G", list), 0);
    nq_FldList_destroy(list);
}

TEST_F(Ini, SetGroupItemsNeverReplacesAFileItCannotRead) {
    const auto f = file("[G]\nv=1\n");
    ::chmod(dir_.path().c_str(), 0777);
    ::chmod(path("t.ini").c_str(), 0222);
    FldList *list = nq_FldList_create(nullptr);
    nq_FldList_appChar(list, u"k", u"v");
    EXPECT_TRUE(nqct::as_unprivileged([&] { return nq_Ini_setGroupItems(f.c_str(), u"H", list) == 0; }));
    EXPECT_EQ(read("t.ini"), "[G]\nv=1\n");
    EXPECT_FALSE(nqtest::file_exists(path("nq_tmp.ini")));
    ASSERT_EQ(::mkdir(path("folder.ini").c_str(), 0755), 0);
    EXPECT_EQ(nq_Ini_setGroupItems(lib("folder.ini").c_str(), u"H", list), 0);
    nq_FldList_destroy(list);
}

TEST_F(Ini, SetGroupItemsDoesNotTellTheCache) {
    const auto f = file("[G]\nv=1\n");
    EXPECT_EQ(get(f, u"G", u"v"), u"1");
    FldList *list = nq_FldList_create(nullptr);
    nq_FldList_appChar(list, u"v", u"2");
    ASSERT_EQ(nq_Ini_setGroupItems(f.c_str(), u"G", list), 1);
    EXPECT_EQ(get(f, u"G", u"v"), u"1");
    nq_Ini_reload(f.c_str());
    EXPECT_EQ(get(f, u"G", u"v"), u"2");
    nq_FldList_destroy(list);
}

// ---- Damaged files ----

TEST_F(Ini, NulBytesEndTheLineForItsMeaningButStayOnDisk) {
    const std::string content = std::string("[G]\na=1") + '\0' + "junk\nb=2\n";
    const auto f = file(content);
    EXPECT_EQ(get(f, u"G", u"a"), u"1");
    EXPECT_EQ(get(f, u"G", u"b"), u"2");
    EXPECT_EQ(nq_Ini_set(f.c_str(), u"G", u"b", u"3"), 0);
    EXPECT_EQ(read("t.ini"), std::string("[G]\na=1") + '\0' + "junk\nb=3\n");
}

TEST_F(Ini, LongLinesAreSeenUpTo1024CharactersAndKeptWhole) {
    const std::string long_value(1500, 'v');
    const auto f = file("[G]\nlong=" + long_value + "\nnext=1\n");
    const std::u16string seen = S(nq_Ini_getValue(f.c_str(), u"G", u"long", 0, 2000));
    EXPECT_EQ(seen, std::u16string(1024 - 5, u'v'));
    EXPECT_EQ(nq_Ini_set(f.c_str(), u"G", u"next", u"2"), 0);
    EXPECT_EQ(read("t.ini"), "[G]\nlong=" + long_value + "\nnext=2\n");
    // The direct reader cuts too, and the next line is the next line.
    StrList *lines = nq_Ini_getGroupLines(f.c_str(), u"G", 0);
    ASSERT_EQ(nq_StrList_count(lines), 2);
    EXPECT_EQ(entries(lines)[1], u"next=2");
    nq_StrList_destroy(lines);
}

TEST_F(Ini, InvalidUtf8ReadsAsByteValuesAndUntouchedLinesKeepTheirBytes) {
    const auto f = file("[G]\nname=caf\xE9\n\xFF\xFE=odd\nv=1\n");
    EXPECT_EQ(get(f, u"G", u"name"), u"caf\u00E9");
    EXPECT_EQ(get(f, u"G", u"\u00FF\u00FE"), u"odd");
    EXPECT_EQ(nq_Ini_set(f.c_str(), u"G", u"v", u"2"), 0);
    EXPECT_EQ(read("t.ini"), "[G]\nname=caf\xE9\n\xFF\xFE=odd\nv=2\n");
    EXPECT_EQ(nq_Ini_set(f.c_str(), u"G", u"w", u"\u00E9"), 0);
    EXPECT_EQ(read("t.ini"), "[G]\nname=caf\xE9\n\xFF\xFE=odd\nv=2\nw=\xC3\xA9\n");
}

TEST_F(Ini, UnbalancedBracketsAreGroupsToTheEndOfTheLine) {
    const auto f = file("[[A]\na=1\n[B]]\nb=1\n]C[\nc=1\n");
    EXPECT_EQ(get(f, u"[A", u"a"), u"1");
    EXPECT_EQ(get(f, u"B", u"b"), u"1");
    EXPECT_EQ(nq_Ini_get(f.c_str(), u"B", u"]C["), nullptr);  // a name without "=": empty, so missing
    StrList *groups = nq_Ini_findAllGroups(f.c_str());
    EXPECT_EQ(entries(groups), (Strings{u"[A", u"B"}));
    nq_StrList_destroy(groups);
}

TEST_F(Ini, ManyGroupsAndVariablesAreFoundByName) {
    std::string content;
    for (int g = 0; g < 300; ++g) {
        content += "[Group" + std::to_string(g) + "]\n";
        for (int v = 0; v < 20; ++v) content += "var" + std::to_string(v) + "=" + std::to_string(g * 100 + v) + "\n";
    }
    const auto f = file(content);
    EXPECT_EQ(get(f, u"GROUP299", u"VAR19"), u"29919");
    EXPECT_EQ(get(f, u"group0", u"var0"), u"0");
    EXPECT_EQ(nq_Ini_getInt(f.c_str(), u"Group150", u"var7"), 15007);
    EXPECT_EQ(S(nq_Ini_getNextIncrSuffix(f.c_str(), u"Group")), u"1");
}
