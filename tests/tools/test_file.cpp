// The File family: the document layer, access and times, copying and its relatives,
// searching, text reading, pieces, the byte transformation and names.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "nq_tls20an.h"
#include "test_support.h"
#include "text_test_util.h"

using nqtest::TempDir;
using nqtest::file_exists;
using nqtest::read_file;
using nqtest::write_file;
using nqtt::L;
using nqtt::S;
using nqtt::Strings;

namespace {

// Sizes around the buffers: the copy buffer (16384), the piece blocks (65535) and the
// piece work buffer (131072).
const std::vector<std::size_t> kStraddling = {0, 1, 16383, 16384, 16385, 65535, 65536, 131072, 131073};

std::string bytes(std::size_t n, unsigned seed = 7) {
    std::string s(n, '\0');
    unsigned x = seed;
    for (std::size_t i = 0; i < n; ++i) {
        x = x * 1103515245u + 12345u;
        s[i] = static_cast<char>(x >> 16);
    }
    return s;
}

std::u16string N(const TempDir &dir, const std::string &name) { return L(dir.file(name)); }

int64_t mtime_of(const std::string &path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 ? int64_t(st.st_mtime) : -1;
}

void set_mtime(const std::string &path, time_t seconds) {
    struct utimbuf times = {seconds, seconds};
    ASSERT_EQ(::utime(path.c_str(), &times), 0);
}

mode_t mode_of(const std::string &path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0 ? st.st_mode : 0;
}

Strings lines_of(StrList *list) {
    Strings out = nqtt::entries(list);
    nq_StrList_destroy(list);
    return out;
}

// Reads every line of a file with nq_File_readLine.
struct LineReader {
    std::FILE *stream;
    explicit LineReader(const std::string &path) : stream(std::fopen(path.c_str(), "r")) {}
    ~LineReader() {
        if (stream) std::fclose(stream);
    }
};

}  // namespace

// ---- The document layer ----

TEST(FileDocLayer, ExistsTellsFilesFromFolders) {
    TempDir dir;
    write_file(dir.file("f.txt"), "x");
    EXPECT_EQ(nq_File_exists(N(dir, "f.txt").c_str()), 1);
    EXPECT_EQ(nq_File_exists(N(dir, "F.TXT").c_str()), 1);  // names ignore case
    EXPECT_EQ(nq_File_exists(L(dir.path()).c_str()), 0);
    EXPECT_EQ(nq_File_exists(N(dir, "missing").c_str()), 0);
    EXPECT_EQ(nq_Dir_exists(L(dir.path()).c_str()), 1);
    EXPECT_EQ(nq_Dir_exists(N(dir, "f.txt").c_str()), 0);
    EXPECT_EQ(nq_Dir_exists(N(dir, "missing").c_str()), 0);
    EXPECT_EQ(nq_File_exists(nullptr), 0);
    EXPECT_EQ(nq_File_exists(u""), 0);
    EXPECT_EQ(nq_Dir_exists(nullptr), 0);
    EXPECT_EQ(nq_Dir_exists(u""), 0);
}

TEST(FileDocLayer, RevalidateDoesNothing) {
    TempDir dir;
    write_file(dir.file("f.txt"), "keep");
    nq_File_revalidate(N(dir, "f.txt").c_str());
    nq_File_revalidate(N(dir, "new.txt").c_str());
    nq_File_revalidate(nullptr);
    EXPECT_EQ(read_file(dir.file("f.txt")), "keep");
    EXPECT_FALSE(file_exists(dir.file("new.txt")));
}

// ---- Access and attributes ----

TEST(FileAccess, ModesZeroTwoFourSixOnly) {
    TempDir dir;
    write_file(dir.file("f"), "x");
    const std::u16string f = N(dir, "f");
    for (int mode : {0, 2, 4, 6}) EXPECT_EQ(nq_File_hasAccess(f.c_str(), mode), 1) << mode;
    for (int mode : {1, 3, 5, 7, 8, -1}) EXPECT_EQ(nq_File_hasAccess(f.c_str(), mode), 0) << mode;
    EXPECT_EQ(nq_File_hasAccess(N(dir, "missing").c_str(), 0), 0);
    EXPECT_EQ(nq_File_hasAccess(nullptr, 0), 0);
    EXPECT_EQ(nq_File_hasAccess(u"", 0), 0);
    EXPECT_EQ(nq_File_hasAccess(L(dir.path()).c_str(), 6), 1);  // a folder need only exist
}

TEST(FileAccess, ReadOnlyAndReadWriteSetTheWriteBit) {
    TempDir dir;
    write_file(dir.file("f"), "x");
    const std::u16string f = N(dir, "f");
    EXPECT_EQ(nq_File_isWriteEnabled(f.c_str()), 1);
    EXPECT_EQ(nq_File_setReadOnlyAccess(f.c_str()), 1);
    EXPECT_EQ(mode_of(dir.file("f")) & 0222, 0u);
    EXPECT_EQ(nq_File_isWriteEnabled(f.c_str()), 0);
    EXPECT_EQ(nq_File_hasAccess(f.c_str(), 6), 0);
    EXPECT_EQ(nq_File_hasAccess(f.c_str(), 4), 1);
    EXPECT_EQ(nq_File_hasAccess(f.c_str(), 0), 1);
    EXPECT_EQ(nq_File_setReadWriteAccess(f.c_str()), 1);
    EXPECT_NE(mode_of(dir.file("f")) & S_IWUSR, 0u);
    EXPECT_EQ(nq_File_isWriteEnabled(f.c_str()), 1);
}

TEST(FileAccess, AttributeChangesFailOnMissingOrNullNames) {
    TempDir dir;
    EXPECT_EQ(nq_File_setReadOnlyAccess(N(dir, "missing").c_str()), 0);
    EXPECT_EQ(nq_File_setReadWriteAccess(N(dir, "missing").c_str()), 0);
    EXPECT_EQ(nq_File_setReadOnlyAccess(nullptr), 0);
    EXPECT_EQ(nq_File_setReadWriteAccess(u""), 0);
    EXPECT_EQ(nq_File_isWriteEnabled(nullptr), 0);
}

TEST(FileAccess, AFileWithoutReadPermissionIsNotReadable) {
    if (::geteuid() == 0) GTEST_SKIP() << "permissions do not bind the super-user";
    TempDir dir;
    write_file(dir.file("f"), "x");
    ::chmod(dir.file("f").c_str(), 0);
    EXPECT_EQ(nq_File_hasAccess(N(dir, "f").c_str(), 4), 0);
    EXPECT_EQ(nq_File_hasAccess(N(dir, "f").c_str(), 0), 1);
    EXPECT_EQ(nq_File_readFile(N(dir, "f").c_str()), nullptr);
}

// ---- Times ----

TEST(FileTime, GetTimeGivesTheModificationTime) {
    TempDir dir;
    write_file(dir.file("f"), "x");
    set_mtime(dir.file("f"), 1234567890);
    int32_t t = 0;
    EXPECT_EQ(nq_File_getTime(N(dir, "f").c_str(), &t), 0);
    EXPECT_EQ(t, 1234567890);
    t = 5;
    EXPECT_EQ(nq_File_getTime(N(dir, "missing").c_str(), &t), 1);
    EXPECT_EQ(t, 5);
    EXPECT_EQ(nq_File_getTime(nullptr, &t), 1);
}

TEST(FileTime, SetTimeSetsAccessAndModification) {
    TempDir dir;
    write_file(dir.file("f"), "x");
    EXPECT_EQ(nq_File_setTime(N(dir, "f").c_str(), 1000000000), 0);
    struct stat st;
    ASSERT_EQ(::stat(dir.file("f").c_str(), &st), 0);
    EXPECT_EQ(st.st_mtime, 1000000000);
    EXPECT_EQ(st.st_atime, 1000000000);
    EXPECT_EQ(nq_File_setTime(N(dir, "missing").c_str(), 1), -1);
    EXPECT_EQ(nq_File_setTime(nullptr, 1), -1);
}

TEST(FileTime, CmpTimeOrdersByAgeAndBlamesTheUnreadableSide) {
    TempDir dir;
    write_file(dir.file("old"), "x");
    write_file(dir.file("new"), "x");
    write_file(dir.file("same"), "x");
    set_mtime(dir.file("old"), 1000);
    set_mtime(dir.file("new"), 2000);
    set_mtime(dir.file("same"), 1000);
    const std::u16string o = N(dir, "old"), n = N(dir, "new"), s = N(dir, "same"), m = N(dir, "missing");
    EXPECT_EQ(nq_File_cmpTime(o.c_str(), n.c_str()), -1);
    EXPECT_EQ(nq_File_cmpTime(n.c_str(), o.c_str()), 1);
    EXPECT_EQ(nq_File_cmpTime(o.c_str(), s.c_str()), 0);
    EXPECT_EQ(nq_File_cmpTime(m.c_str(), o.c_str()), -1);
    EXPECT_EQ(nq_File_cmpTime(o.c_str(), m.c_str()), 1);
    EXPECT_EQ(nq_File_cmpTime(m.c_str(), m.c_str()), -1);
}

TEST(FileTime, LengthOfAStream) {
    TempDir dir;
    write_file(dir.file("f"), bytes(12345));
    std::FILE *f = std::fopen(dir.file("f").c_str(), "rb");
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(nq_File_length(f), 12345);
    std::fclose(f);
    EXPECT_EQ(nq_File_length(nullptr), -1);
}

// ---- Creating ----

TEST(FileCreate, AnExistingFileIsKept) {
    TempDir dir;
    write_file(dir.file("f"), "content");
    EXPECT_EQ(nq_File_create(N(dir, "f").c_str()), 1);
    EXPECT_EQ(read_file(dir.file("f")), "content");
}

TEST(FileCreate, ANewFileIsEmpty) {
    TempDir dir;
    EXPECT_EQ(nq_File_create(N(dir, "New.txt").c_str()), 1);
    EXPECT_TRUE(file_exists(dir.file("New.txt")));
    EXPECT_EQ(read_file(dir.file("New.txt")), "");
}

TEST(FileCreate, FailsWhereNoFileCanBeMade) {
    TempDir dir;
    EXPECT_EQ(nq_File_create(N(dir, "no\\such\\f").c_str()), 0);
    EXPECT_EQ(nq_File_create(L(dir.path()).c_str()), 0);  // a folder is no file
    EXPECT_EQ(nq_File_create(nullptr), 0);
    EXPECT_EQ(nq_File_create(u""), 0);
}

// ---- Copying ----

TEST(FileCopy, CopiesContentAndTimeAcrossBufferSizes) {
    TempDir dir;
    for (std::size_t size : kStraddling) {
        const std::string content = bytes(size, unsigned(size));
        write_file(dir.file("src"), content);
        set_mtime(dir.file("src"), 1500000000);
        EXPECT_EQ(nq_File_copy(N(dir, "src").c_str(), N(dir, "dst").c_str()), 0) << size;
        EXPECT_EQ(read_file(dir.file("dst")), content) << size;
        EXPECT_EQ(mtime_of(dir.file("dst")), 1500000000) << size;
    }
}

TEST(FileCopy, OntoItselfByAnotherFormOfTheNameDoesNothing) {
    TempDir dir;
    write_file(dir.file("same.txt"), "keep me");
    const std::u16string a = N(dir, "same.txt");
    const std::u16string b = N(dir, ".\\SAME.TXT");
    EXPECT_EQ(nq_File_copy(a.c_str(), b.c_str()), 1);
    EXPECT_EQ(read_file(dir.file("same.txt")), "keep me");
}

TEST(FileCopy, OntoAnotherNameOfTheSameFileDoesNothing) {
    TempDir dir;
    write_file(dir.file("a"), "linked");
    ASSERT_EQ(::link(dir.file("a").c_str(), dir.file("b").c_str()), 0);
    EXPECT_EQ(nq_File_copy(N(dir, "a").c_str(), N(dir, "b").c_str()), 1);
    EXPECT_EQ(read_file(dir.file("a")), "linked");
}

TEST(FileCopy, FailuresYieldOne) {
    TempDir dir;
    write_file(dir.file("src"), "x");
    write_file(dir.file("ro"), "old");
    ::chmod(dir.file("ro").c_str(), 0444);
    EXPECT_EQ(nq_File_copy(N(dir, "missing").c_str(), N(dir, "dst").c_str()), 1);
    EXPECT_FALSE(file_exists(dir.file("dst")));
    EXPECT_EQ(nq_File_copy(N(dir, "src").c_str(), N(dir, "no\\dst").c_str()), 1);
    EXPECT_EQ(nq_File_copy(N(dir, "src").c_str(), N(dir, "ro").c_str()), 1);
    EXPECT_EQ(read_file(dir.file("ro")), "old");
    EXPECT_EQ(nq_File_copy(L(dir.path()).c_str(), N(dir, "dst").c_str()), 1);
    EXPECT_EQ(nq_File_copy(nullptr, N(dir, "dst").c_str()), 1);
    EXPECT_EQ(nq_File_copy(N(dir, "src").c_str(), nullptr), 1);
}

TEST(FileCopy, OverwritesAnExistingDestination) {
    TempDir dir;
    write_file(dir.file("src"), "new");
    write_file(dir.file("dst"), "a much longer old content");
    EXPECT_EQ(nq_File_copy(N(dir, "src").c_str(), N(dir, "dst").c_str()), 0);
    EXPECT_EQ(read_file(dir.file("dst")), "new");
}

TEST(FileCopyRest, CopiesFromTheCurrentPositionAcrossBufferSizes) {
    TempDir dir;
    for (std::size_t size : kStraddling) {
        const std::string content = bytes(size + 10, unsigned(size));
        write_file(dir.file("src"), content);
        std::FILE *in = std::fopen(dir.file("src").c_str(), "rb");
        std::FILE *out = std::fopen(dir.file("dst").c_str(), "wb");
        ASSERT_TRUE(in && out);
        std::fseek(in, 10, SEEK_SET);
        EXPECT_EQ(nq_File_copyRest(out, in), 0);
        std::fclose(in);
        std::fclose(out);
        EXPECT_EQ(read_file(dir.file("dst")), content.substr(10)) << size;
    }
}

TEST(FileCopyRest, WhatTheDestinationHoldsComesFirst) {
    TempDir dir;
    write_file(dir.file("src"), "tail");
    std::FILE *in = std::fopen(dir.file("src").c_str(), "rb");
    std::FILE *out = std::fopen(dir.file("dst").c_str(), "wb");
    std::fputs("head:", out);
    EXPECT_EQ(nq_File_copyRest(out, in), 0);
    std::fclose(in);
    std::fclose(out);
    EXPECT_EQ(read_file(dir.file("dst")), "head:tail");
    EXPECT_EQ(nq_File_copyRest(nullptr, nullptr), 0);
}

TEST(FileCopyRest, ShortReadsStillCarryEverything) {
    TempDir dir;
    int fds[2];
    ASSERT_EQ(::pipe(fds), 0);
    const std::string first = bytes(100, 1), second = bytes(50000, 2);
    std::thread writer([&] {
        EXPECT_EQ(::write(fds[1], first.data(), first.size()), ssize_t(first.size()));
        ::usleep(20000);
        std::size_t done = 0;
        while (done < second.size()) {
            const ssize_t n = ::write(fds[1], second.data() + done, second.size() - done);
            if (n <= 0) break;
            done += std::size_t(n);
        }
        ::close(fds[1]);
    });
    std::FILE *in = ::fdopen(fds[0], "rb");
    std::FILE *out = std::fopen(dir.file("dst").c_str(), "wb");
    EXPECT_EQ(nq_File_copyRest(out, in), 0);
    writer.join();
    std::fclose(in);
    std::fclose(out);
    EXPECT_EQ(read_file(dir.file("dst")), first + second);
}

TEST(FileAppend, AppendsAcrossBufferSizes) {
    TempDir dir;
    for (std::size_t size : kStraddling) {
        const std::string head = "head\r\n", tail = bytes(size, unsigned(size));
        write_file(dir.file("dst"), head);
        write_file(dir.file("src"), tail);
        EXPECT_EQ(nq_File_append(N(dir, "dst").c_str(), N(dir, "src").c_str()), 0);
        EXPECT_EQ(read_file(dir.file("dst")), head + tail) << size;
    }
}

TEST(FileAppend, ToAMissingFileMakesIt) {
    TempDir dir;
    write_file(dir.file("src"), "abc");
    EXPECT_EQ(nq_File_append(N(dir, "new").c_str(), N(dir, "src").c_str()), 0);
    EXPECT_EQ(read_file(dir.file("new")), "abc");
}

TEST(FileAppend, FailuresYieldOne) {
    TempDir dir;
    write_file(dir.file("dst"), "keep");
    write_file(dir.file("src"), "abc");
    EXPECT_EQ(nq_File_append(N(dir, "dst").c_str(), N(dir, "missing").c_str()), 1);
    EXPECT_EQ(read_file(dir.file("dst")), "keep");
    EXPECT_EQ(nq_File_append(N(dir, "no\\dst").c_str(), N(dir, "src").c_str()), 1);
    ::chmod(dir.file("dst").c_str(), 0444);
    EXPECT_EQ(nq_File_append(N(dir, "dst").c_str(), N(dir, "src").c_str()), 1);
    EXPECT_EQ(read_file(dir.file("dst")), "keep");
    EXPECT_EQ(nq_File_append(nullptr, N(dir, "src").c_str()), 1);
    EXPECT_EQ(nq_File_append(N(dir, "dst").c_str(), nullptr), 1);
}

// ---- Moving and deleting ----

TEST(FileMove, RenamesOverAnExistingDestination) {
    TempDir dir;
    write_file(dir.file("a"), "moved");
    write_file(dir.file("b"), "old");
    EXPECT_EQ(nq_File_move(N(dir, "a").c_str(), N(dir, "b").c_str()), 0);
    EXPECT_FALSE(file_exists(dir.file("a")));
    EXPECT_EQ(read_file(dir.file("b")), "moved");
}

TEST(FileMove, TheDestinationGoesEvenWhenTheRenameFails) {
    TempDir dir;
    write_file(dir.file("b"), "old");
    EXPECT_EQ(nq_File_move(N(dir, "missing").c_str(), N(dir, "b").c_str()), -1);
    EXPECT_FALSE(file_exists(dir.file("b")));
}

TEST(FileMove, ANewSpellingOfTheSameName) {
    TempDir dir;
    write_file(dir.file("lower.txt"), "x");
    EXPECT_EQ(nq_File_move(N(dir, "lower.txt").c_str(), N(dir, "LOWER.TXT").c_str()), 0);
    EXPECT_TRUE(file_exists(dir.file("LOWER.TXT")));
    EXPECT_FALSE(file_exists(dir.file("lower.txt")));
    EXPECT_EQ(nq_File_move(nullptr, N(dir, "x").c_str()), -1);
    EXPECT_EQ(nq_File_move(N(dir, "x").c_str(), u""), -1);
}

TEST(FileDelete, DeleteSingleRemovesOneFile) {
    TempDir dir;
    write_file(dir.file("f"), "x");
    write_file(dir.file("ro"), "x");
    ::chmod(dir.file("ro").c_str(), 0444);
    EXPECT_EQ(nq_File_deleteSingle(N(dir, "F").c_str()), 1);
    EXPECT_FALSE(file_exists(dir.file("f")));
    EXPECT_EQ(nq_File_deleteSingle(N(dir, "f").c_str()), 0);
    EXPECT_EQ(nq_File_deleteSingle(N(dir, "ro").c_str()), 0);  // read-only stays
    EXPECT_TRUE(file_exists(dir.file("ro")));
    EXPECT_EQ(nq_File_deleteSingle(L(dir.path()).c_str()), 0);
    EXPECT_TRUE(file_exists(dir.path()));
    EXPECT_EQ(nq_File_deleteSingle(nullptr), 0);
}

TEST(FileDelete, ByPatternCountsTheFilesRemoved) {
    TempDir dir;
    for (const char *name : {"a.txt", "B.TXT", "c.dat", "noext"}) write_file(dir.file(name), "x");
    ::mkdir(dir.file("sub.txt").c_str(), 0777);
    EXPECT_EQ(nq_File_delete(N(dir, "*.txt").c_str(), 0), 2);
    EXPECT_FALSE(file_exists(dir.file("a.txt")));
    EXPECT_FALSE(file_exists(dir.file("B.TXT")));
    EXPECT_TRUE(file_exists(dir.file("sub.txt")));
    EXPECT_EQ(nq_File_delete(N(dir, "*.*").c_str(), 0), 2);  // "noext" too
    EXPECT_FALSE(file_exists(dir.file("noext")));
    EXPECT_EQ(nq_File_delete(N(dir, "*").c_str(), 0), 0);
    EXPECT_EQ(nq_File_delete(N(dir, "missing\\*").c_str(), 0), 0);
    EXPECT_EQ(nq_File_delete(nullptr, 0), 0);
}

TEST(FileDelete, ByListRemovesTheNamedFiles) {
    TempDir dir;
    write_file(dir.file("one"), "x");
    write_file(dir.file("two"), "x");
    write_file(dir.file("keep"), "x");
    const std::string too_long = std::string(600, 'z');
    std::u16string list16 = N(dir, "one") + u"\r\n\n" + N(dir, "missing") + u"\n" +
                            nqtt::W(dir.file(too_long)) + u"\n" + N(dir, "TWO");
    std::string list;
    for (char16_t c : list16) list.push_back(char(c));
    write_file(dir.file("list.txt"), list);
    EXPECT_EQ(nq_File_delete(N(dir, "list.txt").c_str(), 1), 2);
    EXPECT_FALSE(file_exists(dir.file("one")));
    EXPECT_FALSE(file_exists(dir.file("two")));
    EXPECT_TRUE(file_exists(dir.file("keep")));
    EXPECT_TRUE(file_exists(dir.file("list.txt")));
    EXPECT_EQ(nq_File_delete(N(dir, "missing.txt").c_str(), 1), 0);
}

// ---- Searching ----

TEST(FileFind, DotsFirstThenNamesInOrderIgnoringCase) {
    TempDir dir;
    for (const char *name : {"b.txt", "A.txt", "c.dat"}) write_file(dir.file(name), "x");
    ::mkdir(dir.file("Sub").c_str(), 0777);
    nq_wchar name[260];
    Strings found;
    for (int r = nq_File_findFirst(N(dir, "*").c_str(), name); r == 0; r = nq_File_findNext(name)) {
        found.push_back(name);
    }
    EXPECT_EQ(found, Strings({u".", u"..", u"A.txt", u"b.txt", u"c.dat", u"Sub"}));
    EXPECT_NE(nq_File_findNext(name), 0);  // the search is closed
}

TEST(FileFind, PatternsFollowWindowsRules) {
    TempDir dir;
    for (const char *name : {"a.txt", "ab.txt", "abc.txt", "noext", "x.tar.gz", "README"}) {
        write_file(dir.file(name), "x");
    }
    auto find = [&](const std::string &pattern) {
        Strings found;
        nq_wchar name[260];
        for (int r = nq_File_findFirst(N(dir, pattern).c_str(), name); r == 0; r = nq_File_findNext(name)) {
            if (name[0] != u'.') found.push_back(name);
        }
        return found;
    };
    EXPECT_EQ(find("*.TXT"), Strings({u"a.txt", u"ab.txt", u"abc.txt"}));
    EXPECT_EQ(find("a?.txt"), Strings({u"ab.txt"}));
    EXPECT_EQ(find("ab?.txt"), Strings({u"abc.txt"}));
    EXPECT_EQ(find("*.*"), Strings({u"a.txt", u"ab.txt", u"abc.txt", u"noext", u"README", u"x.tar.gz"}));
    EXPECT_EQ(find("noext.*"), Strings({u"noext"}));
    EXPECT_EQ(find("readme"), Strings({u"README"}));
    EXPECT_EQ(find("*.gz"), Strings({u"x.tar.gz"}));
    EXPECT_EQ(find("README?"), Strings({u"README"}));
    EXPECT_EQ(find("*z*"), Strings({u"x.tar.gz"}));
}

TEST(FileFind, NothingMatchingYieldsMinusOne) {
    TempDir dir;
    nq_wchar name[260] = u"old";
    EXPECT_EQ(nq_File_findFirst(N(dir, "*.none").c_str(), name), -1);
    EXPECT_EQ(nq_File_findFirst(N(dir, "missing\\*").c_str(), name), -1);
    EXPECT_EQ(nq_File_findFirst(N(dir, "").c_str(), name), -1);
    EXPECT_EQ(nq_File_findFirst(nullptr, name), -1);
    EXPECT_EQ(nq_File_findNext(name), -1);
    EXPECT_EQ(S(name), u"old");
}

TEST(FileFind, ANewSearchReplacesAnOpenOne) {
    TempDir a, b;
    write_file(a.file("in_a"), "x");
    write_file(b.file("in_b"), "x");
    nq_wchar name[260];
    ASSERT_EQ(nq_File_findFirst(N(a, "in_*").c_str(), name), 0);
    EXPECT_EQ(S(name), u"in_a");
    ASSERT_EQ(nq_File_findFirst(N(b, "in_*").c_str(), name), 0);
    EXPECT_EQ(S(name), u"in_b");
    EXPECT_EQ(nq_File_findNext(name), -1);
}

TEST(FileFind, TheRootHasNoDots) {
    nq_wchar name[260];
    Strings found;
    for (int r = nq_File_findFirst(u"C:\\*", name); r == 0; r = nq_File_findNext(name)) found.push_back(name);
    ASSERT_FALSE(found.empty());
    for (const auto &n : found) {
        EXPECT_NE(n, u".");
        EXPECT_NE(n, u"..");
    }
}

TEST(FileFind, NamesComeBackAsUtf16) {
    TempDir dir;
    write_file(dir.file("caf\xC3\xA9.txt"), "x");
    nq_wchar name[260];
    ASSERT_EQ(nq_File_findFirst(N(dir, "caf*").c_str(), name), 0);
    EXPECT_EQ(S(name), u"caf\u00e9.txt");
    EXPECT_EQ(nq_File_findNext(name), -1);
    EXPECT_EQ(nq_File_exists((L(dir.path()) + u"\\caf\u00e9.txt").c_str()), 1);
}

TEST(DirList, GivesFolderAndNameInLowerCase) {
    TempDir dir;
    write_file(dir.file("One.TXT"), "x");
    write_file(dir.file("two.txt"), "x");
    write_file(dir.file("three.dat"), "x");
    const std::u16string folder = L(dir.path()) + u"\\";
    std::u16string lower = folder;
    for (char16_t &c : lower) c = (c >= u'A' && c <= u'Z') ? char16_t(c + 32) : c;
    EXPECT_EQ(lines_of(nq_Dir_list((folder + u"*.txt").c_str())), Strings({lower + u"one.txt", lower + u"two.txt"}));
    const Strings all = lines_of(nq_Dir_list((folder + u"*").c_str()));
    ASSERT_EQ(all.size(), 5u);
    EXPECT_EQ(all[0], lower + u".");
    EXPECT_EQ(all[1], lower + u"..");
    EXPECT_EQ(nq_Dir_list((folder + u"*.none").c_str()), nullptr);
    EXPECT_EQ(nq_Dir_list(nullptr), nullptr);
}

// ---- Reading text ----

TEST(FileReadLine, ALineAsLongAsTheLimitDropsTheRestAndTheNextReadStartsOnTheNextLine) {
    TempDir dir;
    write_file(dir.file("t"), "abcde\nfghijkl\nxy\n");
    LineReader r(dir.file("t"));
    nq_wchar buffer[8];
    EXPECT_EQ(nq_File_readLine(r.stream, buffer, 5), 1);
    EXPECT_EQ(S(buffer), u"abcde");
    EXPECT_EQ(nq_File_readLine(r.stream, buffer, 5), 1);
    EXPECT_EQ(S(buffer), u"fghij");
    EXPECT_EQ(nq_File_readLine(r.stream, buffer, 5), 1);
    EXPECT_EQ(S(buffer), u"xy");
    EXPECT_EQ(nq_File_readLine(r.stream, buffer, 5), 0);
    EXPECT_EQ(S(buffer), u"");
    EXPECT_EQ(nq_File_readLine(r.stream, buffer, 5), 0);
}

TEST(FileReadLine, ALastLineWithoutLineFeed) {
    TempDir dir;
    write_file(dir.file("t"), "one\ntwo");
    LineReader r(dir.file("t"));
    nq_wchar buffer[16];
    EXPECT_EQ(nq_File_readLine(r.stream, buffer, 15), 1);
    EXPECT_EQ(nq_File_readLine(r.stream, buffer, 15), 1);
    EXPECT_EQ(S(buffer), u"two");
    EXPECT_EQ(nq_File_readLine(r.stream, buffer, 15), 0);
}

TEST(FileReadLine, EmptyFileAndEmptyLines) {
    TempDir dir;
    write_file(dir.file("empty"), "");
    write_file(dir.file("blank"), "\n\n");
    nq_wchar buffer[4] = u"x";
    LineReader e(dir.file("empty"));
    EXPECT_EQ(nq_File_readLine(e.stream, buffer, 3), 0);
    LineReader b(dir.file("blank"));
    EXPECT_EQ(nq_File_readLine(b.stream, buffer, 3), 1);
    EXPECT_EQ(S(buffer), u"");
    EXPECT_EQ(nq_File_readLine(b.stream, buffer, 3), 1);
    EXPECT_EQ(nq_File_readLine(b.stream, buffer, 3), 0);
}

TEST(FileReadLine, Utf8Latin1AndCarriageReturns) {
    TempDir dir;
    write_file(dir.file("t"),
               "h\xC3\xA9llo \xE2\x82\xAC\r\n"  // UTF-8: e acute, euro sign; CR LF
               "caf\xE9\n"                      // Latin-1 e acute
               "\xF0\x9F\x98\x80!\n"            // beyond the first plane
               "\xE2\x82x\n"                    // a broken sequence
               "a\rb\n");                       // a lone carriage return stays
    LineReader r(dir.file("t"));
    nq_wchar buffer[32];
    ASSERT_EQ(nq_File_readLine(r.stream, buffer, 31), 1);
    EXPECT_EQ(S(buffer), u"h\u00e9llo \u20ac");
    ASSERT_EQ(nq_File_readLine(r.stream, buffer, 31), 1);
    EXPECT_EQ(S(buffer), u"caf\u00e9");
    ASSERT_EQ(nq_File_readLine(r.stream, buffer, 31), 1);
    EXPECT_EQ(S(buffer), u"\U0001F600!");
    ASSERT_EQ(nq_File_readLine(r.stream, buffer, 31), 1);
    EXPECT_EQ(S(buffer), u"\u00e2\u0082x");
    ASSERT_EQ(nq_File_readLine(r.stream, buffer, 31), 1);
    EXPECT_EQ(S(buffer), u"a\rb");
    EXPECT_EQ(nq_File_readLine(r.stream, buffer, 31), 0);
}

TEST(FileReadLine, TheValue65535EndsTheRead) {
    TempDir dir;
    write_file(dir.file("t"), "ab\xEF\xBF\xBF" "cd\nef\n");
    LineReader r(dir.file("t"));
    nq_wchar buffer[16];
    EXPECT_EQ(nq_File_readLine(r.stream, buffer, 15), 1);
    EXPECT_EQ(S(buffer), u"ab");
    EXPECT_EQ(nq_File_readLine(r.stream, buffer, 15), 1);
    EXPECT_EQ(S(buffer), u"cd");
}

TEST(FileReadLine, ACutSurrogatePairDropsWithTheRestOfTheLine) {
    TempDir dir;
    write_file(dir.file("t"), "a\xF0\x9F\x98\x80z\nnext\n");
    LineReader r(dir.file("t"));
    nq_wchar buffer[8];
    EXPECT_EQ(nq_File_readLine(r.stream, buffer, 2), 1);
    EXPECT_EQ(buffer[0], u'a');
    EXPECT_EQ(buffer[1], 0xD83D);
    EXPECT_EQ(nq_File_readLine(r.stream, buffer, 7), 1);
    EXPECT_EQ(S(buffer), u"next");
}

TEST(FileReadLine, LimitZeroAndNulls) {
    TempDir dir;
    write_file(dir.file("t"), "abc\nd\n");
    LineReader r(dir.file("t"));
    nq_wchar buffer[4] = u"zz";
    EXPECT_EQ(nq_File_readLine(r.stream, buffer, 0), 1);
    EXPECT_EQ(S(buffer), u"");
    EXPECT_EQ(nq_File_readLine(r.stream, buffer, 3), 1);
    EXPECT_EQ(S(buffer), u"d");
    EXPECT_EQ(nq_File_readLine(nullptr, buffer, 3), 0);
    EXPECT_EQ(nq_File_readLine(r.stream, nullptr, 3), 0);
}

TEST(FileReadFile, SkipsEmptyLinesKeepsTabsAndDropsALastLineWithoutLineFeed) {
    TempDir dir;
    write_file(dir.file("t"), "one\n\n\ttwo\tx\r\n\r\nthree\nlast");
    EXPECT_EQ(lines_of(nq_File_readFile(N(dir, "t").c_str())), Strings({u"one", u"\ttwo\tx", u"three"}));
}

TEST(FileReadFile, NullForAMissingOrEmptyFile) {
    TempDir dir;
    write_file(dir.file("empty"), "");
    write_file(dir.file("blank"), "\n\n\n");
    write_file(dir.file("nolf"), "only");
    EXPECT_EQ(nq_File_readFile(N(dir, "missing").c_str()), nullptr);
    EXPECT_EQ(nq_File_readFile(N(dir, "empty").c_str()), nullptr);
    EXPECT_EQ(nq_File_readFile(N(dir, "blank").c_str()), nullptr);
    EXPECT_EQ(nq_File_readFile(N(dir, "nolf").c_str()), nullptr);
    EXPECT_EQ(nq_File_readFile(L(dir.path()).c_str()), nullptr);
    EXPECT_EQ(nq_File_readFile(nullptr), nullptr);
    EXPECT_EQ(nq_File_readFileExactly(N(dir, "empty").c_str()), nullptr);
    EXPECT_EQ(nq_File_readFileExactly(nullptr), nullptr);
}

TEST(FileReadFile, LongLinesComeInPiecesOf511) {
    TempDir dir;
    const std::string longLine(1200, 'L');
    write_file(dir.file("t"), longLine + "\nshort\n");
    EXPECT_EQ(lines_of(nq_File_readFile(N(dir, "t").c_str())),
              Strings({std::u16string(511, u'L'), std::u16string(511, u'L'), std::u16string(178, u'L'), u"short"}));
}

TEST(FileReadFile, Latin1AndUtf8Lines) {
    TempDir dir;
    write_file(dir.file("t"), "Stra\xC3\x9F" "e\nGr\xF6\xDF" "e\n");
    EXPECT_EQ(lines_of(nq_File_readFile(N(dir, "t").c_str())), Strings({u"Stra\u00dfe", u"Gr\u00f6\u00dfe"}));
}

TEST(FileReadFileExactly, KeepsLineFeedsAndEmptyLines) {
    TempDir dir;
    write_file(dir.file("t"), "one\n\n\ttwo\r\nlast");
    EXPECT_EQ(lines_of(nq_File_readFileExactly(N(dir, "t").c_str())), Strings({u"one\n", u"\n", u"\ttwo\n"}));
    const std::string longLine(600, 'q');
    write_file(dir.file("long"), longLine + "\n");
    EXPECT_EQ(lines_of(nq_File_readFileExactly(N(dir, "long").c_str())),
              Strings({std::u16string(511, u'q'), std::u16string(89, u'q') + u"\n"}));
}

// ---- Pieces ----

TEST(FileSlice, PiecesAcrossBufferSizes) {
    for (std::size_t size : {std::size_t(16383), std::size_t(16384), std::size_t(65535), std::size_t(65536),
                             std::size_t(131072), std::size_t(200000)}) {
        for (long piece : {16384L, 65535L, 65536L, 100000L}) {
            TempDir dir;
            const std::string content = bytes(size, unsigned(size + piece));
            write_file(dir.file("data.dbf"), content);
            const int last = nq_File_slice(N(dir, "data.dbf").c_str(), piece);
            const int expected = int(size / std::size_t(piece)) + 1;  // an exact multiple leaves an empty piece
            ASSERT_EQ(last, expected) << size << " " << piece;
            std::string joined;
            for (int k = 1; k <= last; ++k) {
                const std::string part = read_file(dir.file("data." + std::to_string(k)));
                EXPECT_LE(part.size(), std::size_t(piece));
                if (k < last) {
                    EXPECT_EQ(part.size(), std::size_t(piece));
                }
                joined += part;
            }
            EXPECT_EQ(joined, content);
            EXPECT_FALSE(file_exists(dir.file("data." + std::to_string(last + 1))));
            EXPECT_EQ(read_file(dir.file("data.dbf")), content);  // the source remains
            ::unlink(dir.file("data.dbf").c_str());
            EXPECT_EQ(nq_File_mend(N(dir, "data.dbf").c_str()), last + 1);
            EXPECT_EQ(read_file(dir.file("data.dbf")), content);
            EXPECT_FALSE(file_exists(dir.file("data.1")));
        }
    }
}

TEST(FileSlice, AnEmptyFileGivesOneEmptyPiece) {
    TempDir dir;
    write_file(dir.file("e.dat"), "");
    EXPECT_EQ(nq_File_slice(N(dir, "e.dat").c_str(), 10), 1);
    EXPECT_TRUE(file_exists(dir.file("e.1")));
    EXPECT_EQ(read_file(dir.file("e.1")), "");
    EXPECT_FALSE(file_exists(dir.file("e.2")));
}

TEST(FileSlice, AnExactMultipleLeavesAnEmptyLastPiece) {
    TempDir dir;
    write_file(dir.file("f.bin"), "0123456789");
    EXPECT_EQ(nq_File_slice(N(dir, "f.bin").c_str(), 5), 3);
    EXPECT_EQ(read_file(dir.file("f.1")), "01234");
    EXPECT_EQ(read_file(dir.file("f.2")), "56789");
    EXPECT_EQ(read_file(dir.file("f.3")), "");
}

TEST(FileSlice, FailuresYieldZero) {
    TempDir dir;
    write_file(dir.file("f.bin"), "abc");
    EXPECT_EQ(nq_File_slice(N(dir, "missing").c_str(), 5), 0);
    EXPECT_EQ(nq_File_slice(N(dir, "f.bin").c_str(), 0), 0);
    EXPECT_EQ(nq_File_slice(N(dir, "f.bin").c_str(), -3), 0);
    EXPECT_EQ(nq_File_slice(nullptr, 5), 0);
    EXPECT_FALSE(file_exists(dir.file("f.1")));
}

TEST(FileSlice, NeverWritesAPieceOverItsSource) {
    TempDir dir;
    write_file(dir.file("p.1"), "source");
    EXPECT_EQ(nq_File_slice(N(dir, "p.1").c_str(), 3), 0);
    EXPECT_EQ(read_file(dir.file("p.1")), "source");
}

TEST(FileMend, WithoutAFirstPieceEmptiesTheDestination) {
    TempDir dir;
    write_file(dir.file("d.txt"), "old content");
    EXPECT_EQ(nq_File_mend(N(dir, "d.txt").c_str()), 1);
    EXPECT_TRUE(file_exists(dir.file("d.txt")));
    EXPECT_EQ(read_file(dir.file("d.txt")), "");
}

TEST(FileMend, StopsAtTheFirstMissingNumber) {
    TempDir dir;
    write_file(dir.file("d.1"), "a");
    write_file(dir.file("d.2"), "b");
    write_file(dir.file("d.4"), "d");
    EXPECT_EQ(nq_File_mend(N(dir, "d.out").c_str()), 3);
    EXPECT_EQ(read_file(dir.file("d.out")), "ab");
    EXPECT_FALSE(file_exists(dir.file("d.1")));
    EXPECT_TRUE(file_exists(dir.file("d.4")));  // not reached
    EXPECT_EQ(nq_File_mend(N(dir, "no\\d.out").c_str()), 0);
    EXPECT_EQ(nq_File_mend(nullptr), 0);
}

// ---- The byte transformation ----

TEST(FileCipher, DecryptGivesTheInputBack) {
    TempDir dir;
    for (std::size_t size : {std::size_t(0), std::size_t(1), std::size_t(511), std::size_t(512),
                             std::size_t(513), std::size_t(5000), std::size_t(70000)}) {
        const std::string content = bytes(size, unsigned(size));
        write_file(dir.file("plain"), content);
        EXPECT_EQ(nq_File_encrypt(N(dir, "coded").c_str(), N(dir, "plain").c_str()), 1);
        const std::string coded = read_file(dir.file("coded"));
        EXPECT_EQ(coded.size(), size);
        if (size > 16) {
            EXPECT_NE(coded, content);
        }
        EXPECT_EQ(nq_File_decrypt(N(dir, "back").c_str(), N(dir, "coded").c_str()), 1);
        EXPECT_EQ(read_file(dir.file("back")), content) << size;
        EXPECT_EQ(nq_File_encrypt(N(dir, "back2").c_str(), N(dir, "coded").c_str()), 1);
        EXPECT_EQ(read_file(dir.file("back2")), content);
    }
}

TEST(FileCipher, Byte512UsesKeyEntryZeroAgain) {
    TempDir dir;
    const std::string content = bytes(513, 99);
    write_file(dir.file("plain"), content);
    ASSERT_EQ(nq_File_encrypt(N(dir, "coded").c_str(), N(dir, "plain").c_str()), 1);
    const std::string coded = read_file(dir.file("coded"));
    ASSERT_EQ(coded.size(), 513u);
    EXPECT_EQ(coded[512] ^ content[512], coded[0] ^ content[0]);
}

TEST(FileCipher, TheKeyIsTheFixedTable) {
    TempDir dir;
    write_file(dir.file("zeros"), std::string(1024, '\0'));
    ASSERT_EQ(nq_File_encrypt(N(dir, "key").c_str(), N(dir, "zeros").c_str()), 1);
    const std::string key = read_file(dir.file("key"));
    ASSERT_EQ(key.size(), 1024u);
    EXPECT_EQ(key.substr(0, 512), key.substr(512));
    // The first and last entries of the table, fixed with the file format.
    const unsigned char first[] = {0x35, 0xB7, 0x7B, 0xA5};
    for (int i = 0; i < 4; ++i) EXPECT_EQ(static_cast<unsigned char>(key[i]), first[i]);
    std::size_t zeros = 0;
    for (std::size_t i = 0; i < 512; ++i) zeros += key[i] == '\0';
    EXPECT_LT(zeros, 16u);
}

TEST(FileCipher, AMissingInputLeavesAnEmptyOutput) {
    TempDir dir;
    write_file(dir.file("out"), "previous");
    EXPECT_EQ(nq_File_encrypt(N(dir, "out").c_str(), N(dir, "missing").c_str()), 0);
    EXPECT_TRUE(file_exists(dir.file("out")));
    EXPECT_EQ(read_file(dir.file("out")), "");
    write_file(dir.file("in"), "x");
    EXPECT_EQ(nq_File_decrypt(N(dir, "no\\out").c_str(), N(dir, "in").c_str()), 0);
    EXPECT_EQ(nq_File_encrypt(nullptr, N(dir, "in").c_str()), 0);
    EXPECT_EQ(nq_File_decrypt(N(dir, "out").c_str(), nullptr), 0);
}

// ---- Names ----

TEST(FileRelative, ChildrenLoseTheBase) {
    EXPECT_EQ(S(nq_File_getRelativeFilename(u"C:\\a\\b", u"C:\\a\\b\\c\\f.txt")), u"c\\f.txt");
    EXPECT_EQ(S(nq_File_getRelativeFilename(u"C:\\a\\b\\", u"C:\\a\\b\\f.txt")), u"f.txt");
    EXPECT_EQ(S(nq_File_getRelativeFilename(u"c:\\a\\b", u"C:\\a\\b\\f.txt")), u"f.txt");
}

TEST(FileRelative, OtherFoldersGoUpByLevels) {
    EXPECT_EQ(S(nq_File_getRelativeFilename(u"C:\\a\\b", u"C:\\a\\c\\f.txt")), u"..\\c\\f.txt");
    EXPECT_EQ(S(nq_File_getRelativeFilename(u"C:\\a\\b\\c", u"C:\\a\\x\\f")), u"..\\..\\x\\f");
    EXPECT_EQ(S(nq_File_getRelativeFilename(u"C:\\a\\b\\", u"C:\\a\\c")), u"..\\c");
    EXPECT_EQ(S(nq_File_getRelativeFilename(u"C:\\ab", u"C:\\abc\\x")), u"..\\abc\\x");
    EXPECT_EQ(S(nq_File_getRelativeFilename(u"C:\\A", u"C:\\a\\f")), u"..\\a\\f");
}

TEST(FileRelative, AnotherDriveKeepsTheWholeName) {
    EXPECT_EQ(S(nq_File_getRelativeFilename(u"C:\\a\\b", u"D:\\a\\b\\f")), u"D:\\a\\b\\f");
}

TEST(FileRelative, LengthsOutsideFourTo512YieldNull) {
    EXPECT_EQ(nq_File_getRelativeFilename(u"C:\\", u"C:\\a\\f"), nullptr);
    EXPECT_EQ(nq_File_getRelativeFilename(u"C:\\a", u"C:\\"), nullptr);
    const std::u16string over = u"C:\\" + std::u16string(510, u'x');
    EXPECT_EQ(nq_File_getRelativeFilename(over.c_str(), u"C:\\a\\f"), nullptr);
    EXPECT_EQ(nq_File_getRelativeFilename(u"C:\\a", over.c_str()), nullptr);
    const std::u16string most = u"C:\\" + std::u16string(509, u'x');
    EXPECT_EQ(S(nq_File_getRelativeFilename(u"C:\\y", most.c_str())), u"..\\" + most.substr(3));
    EXPECT_EQ(nq_File_getRelativeFilename(nullptr, u"C:\\a\\f"), nullptr);
    EXPECT_EQ(nq_File_getRelativeFilename(u"C:\\a", nullptr), nullptr);
}

TEST(FileRelative, AResultOver512YieldsNull) {
    std::u16string base = u"C:\\x";
    for (int i = 0; i < 100; ++i) base += u"\\y";
    const std::u16string target = u"C:\\z\\" + std::u16string(250, u't');
    EXPECT_EQ(nq_File_getRelativeFilename(base.c_str(), target.c_str()), nullptr);
}

TEST(FileUnc, NamesStayAsTheyCame) {
    EXPECT_EQ(S(nq_File_getUNCPathName(u"C:\\data\\f.dbf")), u"C:\\data\\f.dbf");
    EXPECT_EQ(S(nq_File_getUNCPathName(u"\\\\srv\\share\\f")), u"\\\\srv\\share\\f");
    EXPECT_EQ(S(nq_File_getUNCPathName(u"plain")), u"plain");
    EXPECT_EQ(S(nq_File_getUNCPathName(nullptr)), u"");
    const std::u16string longName = u"C:\\" + std::u16string(700, u'u');
    EXPECT_EQ(S(nq_File_getUNCPathName(longName.c_str())), longName.substr(0, 511));
}
