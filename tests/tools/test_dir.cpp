// The Dir and Drive families, and nq_File_DeleteFolder.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <string>

#include "nq_tls20an.h"
#include "test_support.h"
#include "text_test_util.h"

using nqtest::TempDir;
using nqtest::file_exists;
using nqtest::write_file;
using nqtt::L;
using nqtt::S;

namespace {

std::string cwd() {
    char buffer[PATH_MAX];
    return ::getcwd(buffer, sizeof buffer) ? std::string(buffer) : std::string();
}

// Puts the current folder back when the test ends.
struct KeepCwd {
    std::string saved = cwd();
    ~KeepCwd() { EXPECT_EQ(::chdir(saved.c_str()), 0); }
};

std::u16string N(const TempDir &dir, const std::string &name) { return L(dir.file(name)); }

void make_dir(const std::string &path) { ASSERT_EQ(::mkdir(path.c_str(), 0777), 0) << path; }

// File times count 100 ns from 1601.
constexpr int64_t kYear = 365LL * 24 * 3600 * 10000000LL;

}  // namespace

// ---- Current folder ----

TEST(DirCurrent, IsTheWorkingFolderInLibraryForm) {
    EXPECT_EQ(S(nq_Dir_current()), L(cwd()));
    EXPECT_EQ(nq_Dir_current(), nq_Dir_current());  // one static buffer
}

TEST(DirChange, ChangesTheWorkingFolder) {
    KeepCwd keep;
    TempDir dir;
    make_dir(dir.file("Sub"));
    EXPECT_EQ(nq_Dir_change(N(dir, "SUB\\").c_str()), 0);  // lower-cased, resolved, backslash cut
    EXPECT_EQ(cwd(), dir.file("Sub"));
    EXPECT_EQ(nq_Dir_change(u".."), 0);
    EXPECT_EQ(cwd(), dir.path());
    EXPECT_EQ(nq_Dir_change(u"Sub"), 0);
    EXPECT_EQ(cwd(), dir.file("Sub"));
}

TEST(DirChange, DriveMarks) {
    KeepCwd keep;
    TempDir dir;
    ASSERT_EQ(::chdir(dir.path().c_str()), 0);
    EXPECT_EQ(nq_Dir_change(u"C:"), 0);  // the drive alone: nothing moves
    EXPECT_EQ(cwd(), dir.path());
    EXPECT_EQ(nq_Dir_change(u"c:\\"), 0);
    EXPECT_EQ(cwd(), "/");
    EXPECT_EQ(nq_Dir_change(L(dir.path()).c_str()), 0);
    EXPECT_EQ(cwd(), dir.path());
    EXPECT_EQ(nq_Dir_change(u"D:\\tmp"), -1);  // there is no drive D
    EXPECT_EQ(cwd(), dir.path());
    EXPECT_EQ(nq_Drive_get(), 3);
}

TEST(DirChange, FailuresLeaveTheFolder) {
    KeepCwd keep;
    TempDir dir;
    write_file(dir.file("file"), "x");
    ASSERT_EQ(::chdir(dir.path().c_str()), 0);
    EXPECT_EQ(nq_Dir_change(N(dir, "missing").c_str()), -1);
    EXPECT_EQ(nq_Dir_change(N(dir, "file").c_str()), -1);
    EXPECT_EQ(nq_Dir_change(u""), -1);
    EXPECT_EQ(nq_Dir_change(nullptr), -1);
    EXPECT_EQ(cwd(), dir.path());
}

// ---- Creating and deleting ----

TEST(DirCreate, MakesEveryMissingFolderInLowerCase) {
    TempDir dir;
    EXPECT_EQ(nq_Dir_create(N(dir, "New\\Deep\\Tree").c_str()), 0);
    EXPECT_TRUE(file_exists(dir.file("new/deep/tree")));
    EXPECT_EQ(nq_Dir_exists(N(dir, "NEW\\DEEP\\TREE").c_str()), 1);
}

TEST(DirCreate, AnExistingFolderYieldsMinusOne) {
    TempDir dir;
    make_dir(dir.file("have"));
    EXPECT_EQ(nq_Dir_create(N(dir, "have").c_str()), -1);
    EXPECT_EQ(nq_Dir_create(N(dir, "HAVE\\").c_str()), -1);
    EXPECT_EQ(nq_Dir_create(N(dir, "have\\more").c_str()), 0);
    EXPECT_TRUE(file_exists(dir.file("have/more")));
}

TEST(DirCreate, AFileInTheWayFails) {
    TempDir dir;
    write_file(dir.file("file"), "x");
    EXPECT_EQ(nq_Dir_create(N(dir, "file\\sub").c_str()), -1);
    EXPECT_EQ(nq_Dir_create(nullptr), -1);
    EXPECT_EQ(nq_Dir_create(u""), -1);
}

TEST(DirDelete, RemovesAnEmptyFolder) {
    TempDir dir;
    make_dir(dir.file("a"));
    make_dir(dir.file("b"));
    EXPECT_EQ(nq_Dir_delete(N(dir, "A").c_str()), 0);
    EXPECT_FALSE(file_exists(dir.file("a")));
    EXPECT_EQ(nq_Dir_delete(N(dir, "b\\").c_str()), 0);
    EXPECT_FALSE(file_exists(dir.file("b")));
}

TEST(DirDelete, FailsOnFullMissingOrReadOnlyFolders) {
    TempDir dir;
    make_dir(dir.file("full"));
    write_file(dir.file("full/f"), "x");
    make_dir(dir.file("ro"));
    ::chmod(dir.file("ro").c_str(), 0555);
    EXPECT_EQ(nq_Dir_delete(N(dir, "full").c_str()), -1);
    EXPECT_EQ(nq_Dir_delete(N(dir, "missing").c_str()), -1);
    EXPECT_EQ(nq_Dir_delete(N(dir, "ro").c_str()), -1);
    EXPECT_TRUE(file_exists(dir.file("ro")));
    EXPECT_EQ(nq_Dir_delete(N(dir, "full\\f").c_str()), -1);
    EXPECT_EQ(nq_Dir_delete(nullptr), -1);
    ::chmod(dir.file("ro").c_str(), 0755);
}

TEST(DirDeleteTree, RemovesAWholeTree) {
    TempDir dir;
    make_dir(dir.file("t"));
    make_dir(dir.file("t/a"));
    make_dir(dir.file("t/a/b"));
    make_dir(dir.file("t/Empty"));
    write_file(dir.file("t/f1"), "x");
    write_file(dir.file("t/a/f2.txt"), "x");
    write_file(dir.file("t/a/b/.hidden"), "x");
    EXPECT_EQ(nq_Dir_deleteTree(N(dir, "T").c_str()), 0);
    EXPECT_FALSE(file_exists(dir.file("t")));
}

TEST(DirDeleteTree, AFileThatStaysKeepsItsFolders) {
    TempDir dir;
    make_dir(dir.file("t"));
    make_dir(dir.file("t/a"));
    write_file(dir.file("t/a/ro"), "x");
    write_file(dir.file("t/other"), "x");
    ::chmod(dir.file("t/a/ro").c_str(), 0444);
    EXPECT_EQ(nq_Dir_deleteTree(N(dir, "t").c_str()), -1);
    EXPECT_TRUE(file_exists(dir.file("t/a/ro")));
    EXPECT_FALSE(file_exists(dir.file("t/other")));
    EXPECT_EQ(nq_Dir_deleteTree(N(dir, "missing").c_str()), -1);
    EXPECT_EQ(nq_Dir_deleteTree(nullptr), -1);
}

// ---- Parents ----

TEST(DirParent, CutsBehindThePreviousBackslash) {
    EXPECT_EQ(S(nq_Dir_getParent(u"C:\\a")), u"C:\\");
    EXPECT_EQ(S(nq_Dir_getParent(u"C:\\a\\b\\")), u"C:\\a\\");
    EXPECT_EQ(S(nq_Dir_getParent(u"C:\\a\\b\\c.txt")), u"C:\\a\\b\\");
    EXPECT_EQ(S(nq_Dir_getParent(u"name")), L(cwd()) + u"\\");
}

TEST(DirParent, ARootHasNone) {
    EXPECT_EQ(nq_Dir_getParent(u"C:\\"), nullptr);
    EXPECT_EQ(nq_Dir_getParent(u"\\"), nullptr);
    EXPECT_EQ(nq_Dir_getParent(nullptr), nullptr);
    EXPECT_EQ(nq_Dir_getParent(u""), nullptr);
}

// ---- Drives ----

TEST(Drive, OneDriveC) {
    EXPECT_EQ(nq_Drive_get(), 3);
    EXPECT_EQ(nq_Drive_num(u'a'), 1);
    EXPECT_EQ(nq_Drive_num(u'C'), 3);
    EXPECT_EQ(nq_Drive_num(u'z'), 26);
    EXPECT_EQ(nq_Drive_set(0), -1);
    EXPECT_EQ(nq_Drive_set(-4), -1);
    EXPECT_EQ(nq_Drive_set(1), 0);
    EXPECT_EQ(nq_Drive_set(4), 0);
    EXPECT_EQ(nq_Drive_set(3), 0);
    EXPECT_EQ(nq_Drive_get(), 3);
}

// ---- Deleting folder trees by age ----

TEST(DeleteFolder, AMissingFolderIsSuccess) {
    TempDir dir;
    EXPECT_EQ(nq_File_DeleteFolder(N(dir, "missing").c_str(), 1, 0, 0), 1);
}

TEST(DeleteFolder, RefusedNames) {
    TempDir dir;
    write_file(dir.file("file"), "x");
    EXPECT_EQ(nq_File_DeleteFolder(u"", 1, 0, 0), 0);
    EXPECT_EQ(nq_File_DeleteFolder(nullptr, 1, 0, 0), 0);
    EXPECT_EQ(nq_File_DeleteFolder(u"\\", 1, 0, 0), 0);
    EXPECT_EQ(nq_File_DeleteFolder(u":\\", 1, 0, 0), 0);
    EXPECT_EQ(nq_File_DeleteFolder(N(dir, "file").c_str(), 1, 0, 0), 0);
    EXPECT_TRUE(file_exists(dir.file("file")));
}

TEST(DeleteFolder, AnEmptyFolderGoesAtOnce) {
    TempDir dir;
    make_dir(dir.file("e"));
    EXPECT_EQ(nq_File_DeleteFolder(N(dir, "e").c_str(), 1, 0, 0), 1);
    EXPECT_FALSE(file_exists(dir.file("e")));
}

TEST(DeleteFolder, AWholeTreeWithReadOnlyParts) {
    TempDir dir;
    make_dir(dir.file("t"));
    make_dir(dir.file("t/a"));
    make_dir(dir.file("t/a/b"));
    write_file(dir.file("t/f"), "x");
    write_file(dir.file("t/a/ro"), "x");
    write_file(dir.file("t/a/b/g"), "x");
    ::chmod(dir.file("t/a/ro").c_str(), 0444);
    ::chmod(dir.file("t/a/b").c_str(), 0555);
    EXPECT_EQ(nq_File_DeleteFolder(N(dir, "t").c_str(), 1, 0, 0), 1);
    EXPECT_FALSE(file_exists(dir.file("t")));
}

TEST(DeleteFolder, WithoutTheFlagTheFolderItselfStays) {
    TempDir dir;
    make_dir(dir.file("t"));
    make_dir(dir.file("t/a"));
    write_file(dir.file("t/f"), "x");
    EXPECT_EQ(nq_File_DeleteFolder(N(dir, "t\\").c_str(), 0, 0, 0), 1);
    EXPECT_TRUE(file_exists(dir.file("t")));
    EXPECT_FALSE(file_exists(dir.file("t/a")));
    EXPECT_FALSE(file_exists(dir.file("t/f")));
}

TEST(DeleteFolder, NamesWithALeadingDotStayAndKeepTheFolder) {
    TempDir dir;
    make_dir(dir.file("t"));
    write_file(dir.file("t/.keep"), "x");
    write_file(dir.file("t/gone"), "x");
    EXPECT_EQ(nq_File_DeleteFolder(N(dir, "t").c_str(), 1, 0, 0), 0);
    EXPECT_TRUE(file_exists(dir.file("t/.keep")));
    EXPECT_FALSE(file_exists(dir.file("t/gone")));
    EXPECT_EQ(nq_File_DeleteFolder(N(dir, "t").c_str(), 0, 0, 0), 1);
    EXPECT_TRUE(file_exists(dir.file("t/.keep")));
}

TEST(DeleteFolder, YoungSubfoldersStayButFilesGoWhateverTheirAge) {
    TempDir dir;
    make_dir(dir.file("t"));
    make_dir(dir.file("t/young"));
    write_file(dir.file("t/young/inner"), "x");
    write_file(dir.file("t/f"), "x");
    // A minimum age of a hundred years spares every folder made today.
    EXPECT_EQ(nq_File_DeleteFolder(N(dir, "t").c_str(), 0, 100 * kYear, 0), 1);
    EXPECT_TRUE(file_exists(dir.file("t/young/inner")));
    EXPECT_FALSE(file_exists(dir.file("t/f")));
    EXPECT_EQ(nq_File_DeleteFolder(N(dir, "t").c_str(), 1, 100 * kYear, 0), 0);
    EXPECT_TRUE(file_exists(dir.file("t/young")));
}

TEST(DeleteFolder, TheCurrentTimeGivenDecidesTheAge) {
    TempDir dir;
    make_dir(dir.file("t"));
    make_dir(dir.file("t/sub"));
    // A current time in 1602: every folder is younger than a day.
    EXPECT_EQ(nq_File_DeleteFolder(N(dir, "t").c_str(), 0, kYear / 365, kYear), 1);
    EXPECT_TRUE(file_exists(dir.file("t/sub")));
    // A current time far in the future: old enough.
    EXPECT_EQ(nq_File_DeleteFolder(N(dir, "t").c_str(), 0, kYear, 1000 * kYear), 1);
    EXPECT_FALSE(file_exists(dir.file("t/sub")));
}

TEST(DeleteFolder, APathTooLongForItsPatternFails) {
    TempDir dir;
    std::string path = dir.path();
    while (L(path).size() + 5 <= 260) {
        path += "/" + std::string(40, 'd');
        make_dir(path);
    }
    write_file(path + "/f", "x");
    EXPECT_EQ(nq_File_DeleteFolder(L(path).c_str(), 1, 0, 0), 0);
    EXPECT_TRUE(file_exists(path + "/f"));
}

TEST(DeleteFolder, ANameTooLongWhenJoinedIsPassedOver) {
    TempDir dir;
    std::string path = dir.path();
    while (L(path).size() + 5 + 41 <= 260) {
        path += "/" + std::string(40, 'd');
        make_dir(path);
    }
    ASSERT_LE(L(path).size() + 5, 260u);
    const std::size_t room = 261 - (L(path).size() + 1);
    const std::string longName(room, 'n'), shortName = "s";
    write_file(path + "/" + longName, "x");
    write_file(path + "/" + shortName, "x");
    EXPECT_EQ(nq_File_DeleteFolder(L(path).c_str(), 0, 0, 0), 1);
    EXPECT_TRUE(file_exists(path + "/" + longName));
    EXPECT_FALSE(file_exists(path + "/" + shortName));
}
