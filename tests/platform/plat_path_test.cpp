// The path bridge: library names to Linux paths, and Linux paths back to library names.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <clocale>
#include <string>

#include "plat_path.h"
#include "plat_utf.h"
#include "test_support.h"

namespace {

std::u16string widen(const std::string &utf8) { return nqplat::utf8_to_utf16(utf8); }

std::string upper(std::string s) {
    for (char &c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return s;
}

// A Linux path written the library's way: drive mark and backslashes.
std::string windows_form(const std::string &linux_path) {
    std::string out = "C:" + linux_path;
    for (char &c : out) {
        if (c == '/') c = '\\';
    }
    return out;
}

std::string os_path(const std::string &utf8_name) { return nqplat::os_path(widen(utf8_name).c_str()); }

void make_dir(const std::string &path) { ASSERT_EQ(::mkdir(path.c_str(), 0755), 0) << path; }

// A temporary folder with the lower-case tree data/pipe.dbf and alpha/beta/gamma/file.txt.
class PathBridge : public ::testing::Test {
protected:
    void SetUp() override {
        root_ = dir_.path();
        make_dir(root_ + "/data");
        nqtest::write_file(root_ + "/data/pipe.dbf", "PIPE");
        make_dir(root_ + "/alpha");
        make_dir(root_ + "/alpha/beta");
        make_dir(root_ + "/alpha/beta/gamma");
        nqtest::write_file(root_ + "/alpha/beta/gamma/file.txt", "deep");
    }

    // The library's own form of the temporary folder, e.g. "C:\tmp\nqtest-Ab12Cd".
    std::string lib_root() const { return windows_form(root_); }

    nqtest::TempDir dir_;
    std::string root_;
};

// Runs a test inside the temporary folder and goes back afterwards.
class PathBridgeRelative : public PathBridge {
protected:
    void SetUp() override {
        PathBridge::SetUp();
        char buf[4096];
        ASSERT_NE(::getcwd(buf, sizeof buf), nullptr);
        saved_cwd_ = buf;
        ASSERT_EQ(::chdir(root_.c_str()), 0);
    }
    void TearDown() override { EXPECT_EQ(::chdir(saved_cwd_.c_str()), 0); }

    std::string saved_cwd_;
};

TEST_F(PathBridge, DropsTheDriveMarkAndTurnsBackslashes) {
    EXPECT_EQ(os_path("C:\\nq-no-such-folder-7q\\Sub\\File.DBF"), "/nq-no-such-folder-7q/Sub/File.DBF");
    EXPECT_EQ(os_path("d:\\nq-no-such-folder-7q\\x"), "/nq-no-such-folder-7q/x");
    EXPECT_EQ(os_path(lib_root() + "\\data\\pipe.dbf"), root_ + "/data/pipe.dbf");
}

TEST_F(PathBridge, OnlyALetterAndAColonMakeADriveMark) {
    EXPECT_EQ(os_path("1:\\nq-no-such-7q"), "1:/nq-no-such-7q");
    EXPECT_EQ(os_path("\\C:\\nq-no-such-7q"), "/C:/nq-no-such-7q");
    EXPECT_EQ(os_path("C:"), "");
}

TEST_F(PathBridge, ThreeSpellingsReachTheSameFile) {
    const std::string expected = root_ + "/data/pipe.dbf";
    EXPECT_EQ(os_path(lib_root() + "\\DATA\\PIPE.DBF"), expected);
    EXPECT_EQ(os_path(windows_form(root_).substr(2) + "\\data\\pipe.dbf"), expected);
    EXPECT_EQ(os_path(root_ + "/data/pipe.dbf"), expected);
    EXPECT_EQ(nqtest::read_file(os_path(lib_root() + "\\Data\\Pipe.Dbf")), "PIPE");
}

TEST_F(PathBridge, WholeNameInUpperCaseResolves) {
    EXPECT_EQ(os_path(upper(lib_root()) + "\\DATA\\PIPE.DBF"), root_ + "/data/pipe.dbf");
}

TEST_F(PathBridge, ResolvesFoldersAndFilesAtEveryDepth) {
    const char *const parts[] = {"alpha", "beta", "gamma", "file.txt"};
    for (int mask = 0; mask < 16; ++mask) {
        std::string name = lib_root();
        for (int i = 0; i < 4; ++i) name += "\\" + ((mask >> i) & 1 ? upper(parts[i]) : std::string(parts[i]));
        SCOPED_TRACE(name);
        const std::string path = os_path(name);
        EXPECT_EQ(path, root_ + "/alpha/beta/gamma/file.txt");
        EXPECT_EQ(nqtest::read_file(path), "deep");
    }
}

TEST_F(PathBridge, ExactSpellingWinsAndOtherwiseTheSmallestNameByBytes) {
    make_dir(root_ + "/Mixed");
    make_dir(root_ + "/mixed");
    EXPECT_EQ(os_path(lib_root() + "\\Mixed"), root_ + "/Mixed");
    EXPECT_EQ(os_path(lib_root() + "\\mixed"), root_ + "/mixed");
    EXPECT_EQ(os_path(lib_root() + "\\MIXED"), root_ + "/Mixed");  // 'M' sorts before 'm'
    EXPECT_EQ(os_path(lib_root() + "\\mIxEd"), root_ + "/Mixed");
}

TEST_F(PathBridge, NewComponentKeepsItsCase) {
    const std::string created = os_path(lib_root() + "\\ALPHA\\NewFile.DBF");
    EXPECT_EQ(created, root_ + "/alpha/NewFile.DBF");
    nqtest::write_file(created, "new");
    // Once it exists, any spelling finds it.
    EXPECT_EQ(os_path(lib_root() + "\\alpha\\NEWFILE.dbf"), root_ + "/alpha/NewFile.DBF");
}

TEST_F(PathBridge, MissingFolderStopsResolutionBelowIt) {
    make_dir(root_ + "/beta");
    // "BETA" exists at the top, but below a missing folder nothing is looked up.
    EXPECT_EQ(os_path(lib_root() + "\\MISSING\\BETA\\Gamma"), root_ + "/MISSING/BETA/Gamma");
    EXPECT_EQ(os_path(lib_root() + "\\ALPHA\\MISSING\\BETA"), root_ + "/alpha/MISSING/BETA");
}

TEST_F(PathBridge, FileInTheMiddleStopsResolution) {
    EXPECT_EQ(os_path(lib_root() + "\\DATA\\PIPE.DBF\\X"), root_ + "/data/pipe.dbf/X");
}

TEST_F(PathBridge, DotComponentsStayAndResolutionGoesOnPastThem) {
    EXPECT_EQ(os_path(lib_root() + "\\DATA\\..\\ALPHA\\.\\BETA"), root_ + "/data/../alpha/./beta");
}

TEST_F(PathBridge, TrailingSeparatorsStay) {
    EXPECT_EQ(os_path(lib_root() + "\\DATA\\"), root_ + "/data/");
    EXPECT_EQ(os_path(lib_root() + "\\ALPHA\\BETA/"), root_ + "/alpha/beta/");
    EXPECT_EQ(os_path("\\"), "/");
    EXPECT_EQ(os_path("C:\\"), "/");
}

TEST_F(PathBridge, DoubledSeparatorsCollapse) {
    EXPECT_EQ(os_path(lib_root() + "\\\\DATA\\\\PIPE.DBF"), root_ + "/data/pipe.dbf");
    EXPECT_EQ(os_path("\\\\" + lib_root().substr(3)), root_);
}

TEST_F(PathBridge, EmptyAndNullNamesGiveEmptyPaths) {
    EXPECT_EQ(nqplat::os_path(u""), "");
    EXPECT_EQ(nqplat::os_path(nullptr), "");
    EXPECT_EQ(nqplat::os_path_bytes(""), "");
    EXPECT_EQ(nqplat::os_path_bytes(nullptr), "");
}

TEST_F(PathBridge, NonAsciiNamesAreUtf8AndMatchTheirOtherLetters) {
    nqtest::write_file(root_ + "/data/caf\xc3\xa9.txt", "x");
    EXPECT_EQ(nqplat::os_path(widen(lib_root() + "\\DATA\\CAF\xc3\xa9.TXT").c_str()),
              root_ + "/data/caf\xc3\xa9.txt");
    // A new name is written as UTF-8.
    EXPECT_EQ(nqplat::os_path((widen(lib_root()) + u"\\DATA\\\u20ac.txt").c_str()),
              root_ + "/data/\xe2\x82\xac.txt");
}

TEST_F(PathBridge, CaseOfNonAsciiLettersFollowsTheLocale) {
    nqtest::write_file(root_ + "/data/caf\xc3\xa9.txt", "x");
    const std::u16string name = widen(lib_root()) + u"\\DATA\\CAF\u00c9.TXT";
    // The "C" locale folds ASCII only, so "É" does not find "é" and stays as given.
    EXPECT_EQ(nqplat::os_path(name.c_str()), root_ + "/data/CAF\xc3\x89.TXT");
    if (!std::setlocale(LC_CTYPE, "C.UTF-8")) GTEST_SKIP() << "no C.UTF-8 locale";
    const std::string resolved = nqplat::os_path(name.c_str());
    std::setlocale(LC_CTYPE, "C");
    EXPECT_EQ(resolved, root_ + "/data/caf\xc3\xa9.txt");
}

TEST_F(PathBridge, BytesVersionResolvesAndPassesBytesThrough) {
    EXPECT_EQ(nqplat::os_path_bytes((lib_root() + "\\DATA\\PIPE.DBF").c_str()), root_ + "/data/pipe.dbf");
    // A Latin-1 byte stays that byte; the wide version writes the same letter as UTF-8.
    EXPECT_EQ(nqplat::os_path_bytes((lib_root() + "\\DATA\\N\xe9W").c_str()), root_ + "/data/N\xe9W");
    EXPECT_EQ(nqplat::os_path((widen(lib_root()) + u"\\DATA\\N\u00e9W").c_str()), root_ + "/data/N\xc3\xa9W");
}

TEST_F(PathBridgeRelative, RelativeNamesResolveInTheCurrentFolder) {
    EXPECT_EQ(os_path("DATA\\PIPE.DBF"), "data/pipe.dbf");
    EXPECT_EQ(os_path("C:DATA\\PIPE.DBF"), "data/pipe.dbf");
    EXPECT_EQ(os_path(".\\DATA\\Pipe.dbf"), "./data/pipe.dbf");
    EXPECT_EQ(os_path("NEW\\Thing"), "NEW/Thing");
    EXPECT_EQ(os_path("ALPHA\\BETA\\"), "alpha/beta/");
    EXPECT_EQ(nqtest::read_file(os_path("Alpha\\Beta\\Gamma\\FILE.TXT")), "deep");
}

TEST_F(PathBridgeRelative, ParentComponentIsFollowedByTheFileSystem) {
    const std::string own_name = root_.substr(root_.rfind('/') + 1);
    EXPECT_EQ(os_path("..\\" + upper(own_name) + "\\DATA\\PIPE.DBF"), "../" + own_name + "/data/pipe.dbf");
}

TEST_F(PathBridge, LibraryPathComesBackThroughOsPath) {
    const std::string path = root_ + "/alpha/beta/gamma/file.txt";
    EXPECT_EQ(nqplat::os_path(nqplat::library_path(path).c_str()), path);
}

TEST(LibraryPath, AbsolutePathsGetDriveCAndBackslashes) {
    EXPECT_EQ(nqplat::library_path("/home/ann/work"), u"C:\\home\\ann\\work");
    EXPECT_EQ(nqplat::library_path("/"), u"C:\\");
    EXPECT_EQ(nqplat::library_path("/home/"), u"C:\\home\\");
    EXPECT_EQ(nqplat::library_path_bytes("/home/ann/work"), "C:\\home\\ann\\work");
}

TEST(LibraryPath, RelativePathsOnlyTurnTheirSeparators) {
    EXPECT_EQ(nqplat::library_path("a/b/c"), u"a\\b\\c");
    EXPECT_EQ(nqplat::library_path("../x"), u"..\\x");
    EXPECT_EQ(nqplat::library_path("name"), u"name");
    EXPECT_EQ(nqplat::library_path_bytes("a/b"), "a\\b");
}

TEST(LibraryPath, EmptyPathStaysEmpty) {
    EXPECT_EQ(nqplat::library_path(""), u"");
    EXPECT_EQ(nqplat::library_path_bytes(""), "");
}

TEST(LibraryPath, Utf8NamesAreDecoded) {
    EXPECT_EQ(nqplat::library_path("/caf\xc3\xa9"), u"C:\\caf\u00e9");
    EXPECT_EQ(nqplat::library_path("/x\xe9"), u"C:\\x\u00e9");  // a stray Latin-1 byte reads as its letter
    EXPECT_EQ(nqplat::library_path_bytes("/caf\xc3\xa9"), "C:\\caf\xc3\xa9");
}

}  // namespace
