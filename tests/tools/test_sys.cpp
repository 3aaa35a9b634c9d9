// The Sys, Global, Drawing, RM and Zelmar families: folders by key, temporary session folders,
// versions of files, modules and products, the system's version, and the process-wide switches.
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cwctype>
#include <string>

#include "config_test.h"

namespace {

using nqct::S;

class Sys : public nqct::ConfigTest {
protected:
    std::u16string net(nq_wchar *(*fn)(nq_wchar *)) {
        nq_wchar out[600];
        EXPECT_EQ(fn(out), out);
        return out;
    }
    std::u16string named(nq_wchar *(*fn)(nq_wchar *, const nq_wchar *), const nq_wchar *name) {
        nq_wchar out[600];
        EXPECT_EQ(fn(out, name), out);
        return out;
    }
    // The library form of a folder of the temporary folder, lower case with a backslash.
    std::u16string folder(const std::string &name) const {
        std::u16string f = lib(name) + u"\\";
        for (auto &c : f) c = static_cast<char16_t>(std::towlower(c));
        return f;
    }
    std::u16string lower(std::u16string s) const {
        for (auto &c : s) c = static_cast<char16_t>(std::towlower(c));
        return s;
    }
    void write_registry(const std::string &content) const { write("registry.reg", content); }
};

// The Linux path of the loaded library.
std::string library_file() {
    Dl_info info{};
    if (!::dladdr(reinterpret_cast<void *>(&nq_Sys_getVersionNumber), &info) || !info.dli_fname) return {};
    char real[PATH_MAX];
    return ::realpath(info.dli_fname, real) ? real : info.dli_fname;
}

}  // namespace

// ---- Folders ----

TEST_F(Sys, NetDirWithoutWKAnywhereIsEmptyAndBinNameIsRelative) {
    EXPECT_EQ(net(nq_Sys_getNetDir), u"");
    EXPECT_EQ(net(nq_Sys_getLocalDir), u"");
    EXPECT_EQ(net(nq_Sys_getBinDir), u"bin\\");
    EXPECT_EQ(named(nq_Sys_getBinName, u"Tool.EXE"), u"bin\\tool.exe");
    EXPECT_EQ(named(nq_Sys_getNetName, u"A.TXT"), u"a.txt");
}

TEST_F(Sys, FoldersComeFromTheSessionBeforeNqIni) {
    write_ini("[GENERAL]\nWK=C:\\Ini\\Net\nWKWS=C:\\Ini\\Local\\\n");
    EXPECT_EQ(net(nq_Sys_getNetDir), u"c:\\ini\\net\\");
    EXPECT_EQ(net(nq_Sys_getLocalDir), u"c:\\ini\\local\\");
    nq_Env_setSes(u"WK", u"C:\\Ses\\NET");
    EXPECT_EQ(net(nq_Sys_getNetDir), u"c:\\ses\\net\\");
    EXPECT_EQ(named(nq_Sys_getNetName, u"File.Dbf"), u"c:\\ses\\net\\file.dbf");
    EXPECT_EQ(named(nq_Sys_getLocalName, u"X"), u"c:\\ini\\local\\x");
}

TEST_F(Sys, LocalDirFallsBackToTheNetFolder) {
    nq_Env_setSes(u"WK", u"c:\\net");
    EXPECT_EQ(net(nq_Sys_getLocalDir), u"c:\\net\\");
}

TEST_F(Sys, BinDirIsReadFromNqIniOnlyDevFirst) {
    nq_Env_setSes(u"WK", u"c:\\net");
    nq_Env_setSes(u"NQ_BIN_DIR", u"c:\\session\\bin");  // not looked at
    EXPECT_EQ(net(nq_Sys_getBinDir), u"c:\\net\\bin\\");
    write_ini("[GENERAL]\nNQ_BIN_DIR=C:\\Release\\Bin\nNQ_DEV_BIN_DIR=C:\\Dev\\Bin\n");
    EXPECT_EQ(net(nq_Sys_getBinDir), u"c:\\dev\\bin\\");
    write_ini("[GENERAL]\nNQ_BIN_DIR=C:\\Release\\Bin\n");
    nq_Ini_resetCache();
    EXPECT_EQ(net(nq_Sys_getBinDir), u"c:\\release\\bin\\");
    EXPECT_EQ(named(nq_Sys_getBinName, u"Run.EXE"), u"c:\\release\\bin\\run.exe");
}

TEST_F(Sys, SpecDirFallbackIsStoredInTheSession) {
    nq_Env_setSes(u"WK", u"c:\\Net");
    nq_wchar out[600];
    EXPECT_EQ(S(nq_Sys_getSpecDir(out, nullptr)), u"c:\\net\\specs\\");
    EXPECT_EQ(S(nq_Env_getSes(u"WKSPECS")), u"c:\\net\\specs\\");
    EXPECT_EQ(S(nq_Sys_getSpecDir(out, u"Pipe")), u"c:\\net\\specs\\pipe\\");
    EXPECT_EQ(S(nq_Sys_getSpecDir(out, u"")), u"c:\\net\\specs\\");
    EXPECT_EQ(S(nq_Sys_getSpecName(out, u"Pipe", u"A.SPC")), u"c:\\net\\specs\\pipe\\a.spc");
    EXPECT_EQ(S(nq_Sys_getSpecName(out, nullptr, u"A.SPC")), u"c:\\net\\specs\\a.spc");
}

TEST_F(Sys, SpecAndTempKeysFromNqIniAreCopiedToTheSession) {
    write_ini("[GENERAL]\nWKSPECS=C:\\Specs\n");
    nq_wchar out[600];
    EXPECT_EQ(S(nq_Sys_getSpecDir(out, nullptr)), u"c:\\specs\\");
    EXPECT_EQ(S(nq_Env_getSes(u"WKSPECS")), u"C:\\Specs");
    // A later change of nq.ini is not seen: the session answers first.
    nq_Env_setIni(u"GENERAL", u"WKSPECS", u"C:\\Other");
    EXPECT_EQ(S(nq_Sys_getSpecDir(out, nullptr)), u"c:\\specs\\");

    const std::u16string tmp = lib("Temp");
    nq_Env_setIni(u"GENERAL", u"WKTMP", tmp.c_str());
    EXPECT_EQ(S(nq_Sys_getTempDir(out, 0)), folder("Temp"));
    EXPECT_EQ(S(nq_Env_getSes(u"WKTMP")), tmp);
}

TEST_F(Sys, TempDirFallsBackToTheLocalFolderAndIsMade) {
    nq_Env_setSes(u"WKWS", lib("local").c_str());
    nq_wchar out[600];
    EXPECT_EQ(S(nq_Sys_getTempDir(out, 0)), folder("local") + u"wktmp\\");
    EXPECT_TRUE(nqtest::file_exists(path("local/wktmp")));
    EXPECT_EQ(S(nq_Sys_getTempName(out, u"Work.TMP")), folder("local") + u"wktmp\\work.tmp");
}

TEST_F(Sys, SessionTempFolderTakesTheLowestFreeNumberAndKeepsIt) {
    nq_Env_setSes(u"WKTMP", lib("tmp").c_str());
    ASSERT_EQ(::mkdir(path("tmp").c_str(), 0755), 0);
    ASSERT_EQ(::mkdir(path("tmp/1").c_str(), 0755), 0);
    nq_wchar out[600];
    EXPECT_EQ(S(nq_Sys_getTempDir(out, 1)), folder("tmp") + u"2\\");
    EXPECT_TRUE(nqtest::file_exists(path("tmp/2")));
    EXPECT_EQ(S(nq_Env_getSes(u"WKSES")), u"2");
    // Twice in one process: the same folder, although it exists now.
    EXPECT_EQ(S(nq_Sys_getTempDir(out, 1)), folder("tmp") + u"2\\");
}

TEST_F(Sys, SessionNumberAlreadySetIsUsedAsItIs) {
    nq_Env_setSes(u"WKTMP", lib("tmp").c_str());
    nq_Env_setSes(u"WKSES", u"7");
    nq_wchar out[600];
    EXPECT_EQ(S(nq_Sys_getTempDir(out, 1)), folder("tmp") + u"7\\");
    EXPECT_TRUE(nqtest::file_exists(path("tmp/7")));
}

TEST_F(Sys, After1000UsedNumbersThePlainTempFolderStands) {
    nq_Env_setSes(u"WKTMP", lib("tmp").c_str());
    ASSERT_EQ(::mkdir(path("tmp").c_str(), 0755), 0);
    for (int n = 1; n <= 1000; ++n) nqtest::write_file(path("tmp/" + std::to_string(n)), "");
    nq_wchar out[600];
    EXPECT_EQ(S(nq_Sys_getTempDir(out, 1)), folder("tmp"));
    EXPECT_EQ(nq_Env_getSes(u"WKSES"), nullptr);
}

TEST_F(Sys, CfgDirIsNqCfgDirInTheLibrarysForm) {
    EXPECT_EQ(net(nq_Sys_getCfgDir), folder("cfg"));
    EXPECT_EQ(named(nq_Sys_getCfgName, u"NQ.INI"), folder("cfg") + u"nq.ini");
    nqct::ScopedEnv other("NQ_CFG_DIR", "/Some/Where/");
    EXPECT_EQ(net(nq_Sys_getCfgDir), u"c:\\some\\where\\");
}

TEST_F(Sys, CfgDirWithoutNqCfgDirIsTheCurrentFolder) {
    nqct::ScopedEnv none("NQ_CFG_DIR", nullptr);
    char old[4096];
    ASSERT_NE(::getcwd(old, sizeof old), nullptr);
    ASSERT_EQ(::chdir(dir_.path().c_str()), 0);
    char here[4096];
    ASSERT_NE(::getcwd(here, sizeof here), nullptr);
    const std::u16string cfg = net(nq_Sys_getCfgDir);
    ASSERT_EQ(::chdir(old), 0);
    EXPECT_EQ(cfg, lower(nqtt::L(here)) + u"\\");
}

TEST_F(Sys, FolderResultsAreCutAt511Characters) {
    write_ini("[GENERAL]\nWK=c:\\" + std::string(600, 'w') + "\n");
    std::u16string out(700, u'#');
    nq_Sys_getNetDir(out.data());
    EXPECT_EQ(S(out.c_str()).size(), 511u);
    EXPECT_EQ(out[512], u'#');
}

TEST_F(Sys, VersionBinNameUsesTheAcadverSubfolder) {
    nq_Env_setSes(u"WK", lib("net").c_str());
    ASSERT_EQ(::mkdir(path("net").c_str(), 0755), 0);
    ASSERT_EQ(::mkdir(path("net/bin").c_str(), 0755), 0);
    ASSERT_EQ(::mkdir(path("net/bin/r24").c_str(), 0755), 0);
    nqtest::write_file(path("net/bin/r24/here.dll"), "");
    nq_wchar out[600];
    EXPECT_EQ(S(nq_Sys_getVersionBinName(out, u"Here.DLL", 1)), folder("net") + u"bin\\here.dll");
    nq_Env_setSes(u"ACADVER", u"R24");
    EXPECT_EQ(S(nq_Sys_getVersionBinName(out, u"Here.DLL", 1)), folder("net") + u"bin\\r24\\here.dll");
    EXPECT_EQ(S(nq_Sys_getVersionBinName(out, u"Gone.DLL", 1)), folder("net") + u"bin\\gone.dll");
    EXPECT_EQ(S(nq_Sys_getVersionBinName(out, u"Gone.DLL", 0)), folder("net") + u"bin\\r24\\gone.dll");
}

// ---- Versions ----

TEST_F(Sys, LibraryCarriesItsVersionInANote) {
    const std::string file = library_file();
    ASSERT_FALSE(file.empty());
    // The versioned file name of the build tells the project version.
    const std::size_t so = file.rfind(".so.");
    ASSERT_NE(so, std::string::npos);
    int major = -1, minor = -1, patch = -1;
    ASSERT_EQ(std::sscanf(file.c_str() + so, ".so.%d.%d.%d", &major, &minor, &patch), 3);
    char expected[32];
    std::snprintf(expected, sizeof expected, "%02d.%02d.%02d.00", major, minor, patch);
    EXPECT_EQ(S(nq_Sys_getVersionNumber(nqtt::L(file).c_str())), nqtt::W(expected));
    // A copy under a name without a version still has it: it comes from the note.
    nqtest::write_file(path("copy.bin"), nqtest::read_file(file));
    EXPECT_EQ(S(nq_Sys_getVersionNumber(lib("copy.bin").c_str())), nqtt::W(expected));

    for (const nq_wchar *name : {u"nq_tls20an", u"NQ_TLS20AN.DLL", u"libnq_tls20an.so", u"C:\\bin\\nq_tls20an.dll"}) {
        EXPECT_EQ(S(nq_Global_getModuleFileVersion(name)), nqtt::W(expected));
        EXPECT_EQ(S(nq_Global_getModuleProductVersion(name)), nqtt::W(expected));
    }
}

TEST_F(Sys, VersionNumberFromAVersionedNameOrNone) {
    write("libx.so.2.3", "not an elf file");
    EXPECT_EQ(S(nq_Sys_getVersionNumber(lib("libx.so.2.3").c_str())), u"02.03.00.00");
    write("plain.txt", "text");
    EXPECT_EQ(nq_Sys_getVersionNumber(lib("plain.txt").c_str()), nullptr);
    EXPECT_EQ(nq_Sys_getVersionNumber(lib("missing.so.1").c_str()), nullptr);
    EXPECT_EQ(nq_Sys_getVersionNumber(nullptr), nullptr);
}

TEST_F(Sys, ModuleVersionOfAModuleNotLoadedOrWithoutVersionIsEmpty) {
    EXPECT_EQ(S(nq_Global_getModuleFileVersion(u"nq-not-loaded")), u"");
    EXPECT_EQ(S(nq_Global_getModuleProductVersion(u"nq-not-loaded")), u"");
    EXPECT_EQ(S(nq_Global_getModuleFileVersion(nullptr)), u"");  // the test program has none
}

TEST_F(Sys, ProductVersionLastPrefixMatchWinsAndAnExactMatchEnds) {
    write_registry(
        "[HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\{A}]\n"
        "DisplayName=Plant Designer Viewer\nDisplayVersion=1.0\n"
        "[HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\{B}]\n"
        "DisplayName=Plant Designer\nDisplayVersion=2.0\n"
        "[HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\{C}]\n"
        "DisplayName=PLANT DESIGNER Tools\nDisplayVersion=3.0\n"
        "[HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\{D}]\n"
        "DisplayVersion=9.9\n");
    EXPECT_EQ(S(nq_Sys_getProductVersion(u"plant designer")), u"2.0");  // {B} is exact
    EXPECT_EQ(S(nq_Sys_getProductVersion(u"Plant")), u"3.0");          // the last of three
    EXPECT_EQ(S(nq_Sys_getProductVersion(u"Other")), u"");
}

TEST_F(Sys, ProductVersionWithoutTheKeyIsNull) {
    EXPECT_EQ(nq_Sys_getProductVersion(u"Plant"), nullptr);  // no registry file
    write_registry("[HKLM\\Software\\Other]\nx=1\n");
    EXPECT_EQ(nq_Sys_getProductVersion(u"Plant"), nullptr);
}

TEST_F(Sys, VistaAndUacFollowTheSystemDescription) {
    const auto answers = [&](const std::string &values, const char *expected) {
        write_registry("[HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion]\n" + values);
        nqct::ScopedEnv expect("NQ_TEST_EXPECT", expected);
        return nqct::passes_in_fresh_process("DISABLED_FreshSys.VistaAndUacAreAsExpected");
    };
    {
        nqct::ScopedEnv expect("NQ_TEST_EXPECT", "00");
        EXPECT_TRUE(nqct::passes_in_fresh_process("DISABLED_FreshSys.VistaAndUacAreAsExpected"));
    }
    EXPECT_TRUE(answers("CurrentMajorVersionNumber=6\nCurrentMinorVersionNumber=0\n", "11"));
    EXPECT_TRUE(answers("CurrentMajorVersionNumber=6\nCurrentMinorVersionNumber=0\nProductType=3\n", "01"));
    EXPECT_TRUE(answers("CurrentMajorVersionNumber=6\nCurrentMinorVersionNumber=1\n", "01"));
    EXPECT_TRUE(answers("CurrentMajorVersionNumber=10\n", "01"));
    EXPECT_TRUE(answers("CurrentMajorVersionNumber=5\nCurrentMinorVersionNumber=1\n", "00"));
    EXPECT_TRUE(answers("CurrentMajorVersionNumber=6\nPlatformId=1\n", "00"));
}

// Run by the test above: NQ_TEST_EXPECT holds the two answers, Vista first.
TEST(DISABLED_FreshSys, VistaAndUacAreAsExpected) {
    const char *expected = std::getenv("NQ_TEST_EXPECT");
    ASSERT_NE(expected, nullptr);
    EXPECT_EQ(nq_Global_isVista(), expected[0] - '0');
    EXPECT_EQ(nq_Global_isOSWithUACSupport(), expected[1] - '0');
}

TEST_F(Sys, SystemIsTakenOnce) {
    EXPECT_TRUE(nqct::passes_in_fresh_process("DISABLED_FreshSys.SystemIsTakenOnce"));
}

TEST(DISABLED_FreshSys, SystemIsTakenOnce) {
    const char *registry = std::getenv("NQ_REGISTRY");
    ASSERT_NE(registry, nullptr);
    std::remove(registry);
    EXPECT_EQ(nq_Global_isVista(), 0);
    nqtest::write_file(registry,
                       "[HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion]\nCurrentMajorVersionNumber=6\n");
    EXPECT_EQ(nq_Global_isVista(), 0);
    EXPECT_EQ(nq_Global_isOSWithUACSupport(), 0);
    std::remove(registry);
}

TEST_F(Sys, Is64bitSystemIsAlwaysZero) { EXPECT_EQ(nq_Sys_is64bitSystem(), 0); }

// ---- Switches ----

TEST_F(Sys, ShowModeSelectGuiIsTheVariableInNqIni) {
    EXPECT_EQ(nq_Sys_getShowModeSelectGUI(), 0);
    EXPECT_EQ(nq_Sys_setShowModeSelectGUI(1), 0);
    EXPECT_EQ(nqtest::read_file(ini_path()), "[GENERAL]\nShowModeSelectionGUI=1\n\n");
    EXPECT_EQ(nq_Sys_getShowModeSelectGUI(), 1);
    EXPECT_EQ(nq_Sys_setShowModeSelectGUI(7), 0);
    EXPECT_EQ(nq_Sys_getShowModeSelectGUI(), 1);
    EXPECT_EQ(nq_Sys_setShowModeSelectGUI(0), 0);
    EXPECT_EQ(nq_Sys_getShowModeSelectGUI(), 0);
    nq_Env_setIni(u"GENERAL", u"ShowModeSelectionGUI", u"yes");
    EXPECT_EQ(nq_Sys_getShowModeSelectGUI(), 0);
}

TEST_F(Sys, ApplicationGroupIsKeptUntilDestroyData) {
    nq_wchar out[600] = u"junk";
    EXPECT_EQ(nq_Sys_getApplicationGroup(out), 1);
    EXPECT_EQ(S(out), u"");
    EXPECT_EQ(nq_Sys_setApplicationGroup(u"Piping"), 1);
    EXPECT_EQ(nq_Sys_getApplicationGroup(out), 1);
    EXPECT_EQ(S(out), u"Piping");
    EXPECT_EQ(nq_Sys_setApplicationGroup(nullptr), 0);
    EXPECT_EQ(nq_Sys_getApplicationGroup(nullptr), 1);
    nq_Global_destroyData();
    nq_Sys_getApplicationGroup(out);
    EXPECT_EQ(S(out), u"");
}

TEST_F(Sys, BaseSectionNameIsReadOnceFromTheEnvironmentThenNqIni) {
    write_ini("[GENERAL]\nBaseSectionName=FromIni\n");
    {
        nqct::ScopedEnv env("NQ_BASE_SECTION", "FromEnv");
        EXPECT_EQ(S(nq_Zelmar_getBaseSectionName()), u"FromEnv");
    }
    EXPECT_EQ(S(nq_Zelmar_getBaseSectionName()), u"FromEnv");  // kept
    nq_Global_destroyData();
    EXPECT_EQ(S(nq_Zelmar_getBaseSectionName()), u"FromIni");
    write_ini("");
    nq_Global_destroyData();
    EXPECT_EQ(S(nq_Zelmar_getBaseSectionName()), u"");
}

TEST(Drawing, SaveIgnoredOnlyForTheStoredName) {
    EXPECT_EQ(nq_Drawing_IsSaveIgnored(u"never.dwg"), 0);
    nq_Drawing_IgnoreSaveEvents(u"C:\\Plant\\A.DWG", 1);
    EXPECT_EQ(nq_Drawing_IsSaveIgnored(u"c:\\plant\\a.dwg"), 1);
    EXPECT_EQ(nq_Drawing_IsSaveIgnored(u"c:\\plant\\b.dwg"), 0);
    EXPECT_EQ(nq_Drawing_IsSaveIgnored(nullptr), 0);
    nq_Drawing_IgnoreSaveEvents(u"C:\\Plant\\A.DWG", 0);
    EXPECT_EQ(nq_Drawing_IsSaveIgnored(u"c:\\plant\\a.dwg"), 0);
    nq_Drawing_IgnoreSaveEvents(u"B.DWG", 5);
    EXPECT_EQ(nq_Drawing_IsSaveIgnored(u"b.dwg"), 5);
    EXPECT_EQ(nq_Drawing_IsSaveIgnored(u"C:\\Plant\\A.DWG"), 0);
    nq_Drawing_IgnoreSaveEvents(nullptr, 0);
}

namespace {
void *g_seen[3];
int track(void *object, void *owner, void *data) {
    g_seen[0] = object;
    g_seen[1] = owner;
    g_seen[2] = data;
    return 42;
}
}  // namespace

TEST(RM, CallbackIsStoredAndCalled) {
    nq_RM_setFuncTrackObject(nullptr);
    EXPECT_EQ(nq_RM_callFuncTrackObject(nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(nq_RM_setFuncTrackObject(track), track);
    int a, b, c;
    EXPECT_EQ(nq_RM_callFuncTrackObject(&a, &b, &c), 42);
    EXPECT_EQ(g_seen[0], &a);
    EXPECT_EQ(g_seen[1], &b);
    EXPECT_EQ(g_seen[2], &c);
    EXPECT_EQ(nq_RM_setFuncTrackObject(nullptr), nullptr);
    EXPECT_EQ(nq_RM_callFuncTrackObject(&a, &b, &c), 0);
}
