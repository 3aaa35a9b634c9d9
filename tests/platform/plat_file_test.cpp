// The engine's files on Linux: dispositions, share modes, positioned transfers, lengths and
// byte-range locks with the engine's rules.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "plat_file.h"
#include "test_support.h"

namespace {

using namespace nqplat;
using nqtest::TempDir;

constexpr uint32_t kReadWrite = kFileRead | kFileWrite;

TEST(PlatFile, DispositionsCreateAndOpen) {
    TempDir dir;
    const std::string name = dir.file("a.dat");
    EXPECT_EQ(file_open(name.c_str(), kReadWrite, kShareReadWrite, kOpenExisting), -1);
    EXPECT_EQ(file_last_error(), kErrorFileNotFound);
    const int created = file_open(name.c_str(), kReadWrite, kShareReadWrite, kCreateNew);
    ASSERT_GE(created, 0);
    EXPECT_EQ(file_last_error(), kErrorNone);
    EXPECT_EQ(file_open(name.c_str(), kReadWrite, kShareReadWrite, kCreateNew), -1);
    EXPECT_EQ(file_last_error(), kErrorFileExists);
    uint32_t written = 0;
    ASSERT_TRUE(file_write(created, 0, "hello", 5, &written));
    EXPECT_EQ(written, 5u);
    EXPECT_TRUE(file_close(created));
    const int again = file_open(name.c_str(), kReadWrite, kShareReadWrite, kCreateAlways);
    ASSERT_GE(again, 0);
    EXPECT_EQ(file_size(again), 0u);  // truncated
    EXPECT_TRUE(file_close(again));
    EXPECT_FALSE(file_close(again));
    EXPECT_EQ(file_last_error(), kErrorInvalidHandle);
    EXPECT_EQ(file_open(dir.file("no/such/b.dat").c_str(), kReadWrite, kShareReadWrite, kCreateNew), -1);
    EXPECT_EQ(file_last_error(), kErrorPathNotFound);
    EXPECT_EQ(file_open(name.c_str(), kReadWrite, kShareReadWrite, 9), -1);
    EXPECT_EQ(file_last_error(), kErrorInvalidParameter);
    EXPECT_EQ(file_open(nullptr, kReadWrite, kShareReadWrite, kOpenExisting), -1);
    EXPECT_EQ(file_open("", kReadWrite, kShareReadWrite, kOpenExisting), -1);
}

TEST(PlatFile, AFolderIsNotAFile) {
    TempDir dir;
    EXPECT_EQ(file_open(dir.path().c_str(), kFileRead, kShareReadWrite, kOpenExisting), -1);
    EXPECT_EQ(file_last_error(), kErrorAccessDenied);
}

TEST(PlatFile, ShareModesBetweenOpensOfThisProcess) {
    TempDir dir;
    const std::string name = dir.file("s.dat");
    nqtest::write_file(name, "content");
    const int shared1 = file_open(name.c_str(), kReadWrite, kShareReadWrite, kOpenExisting);
    const int shared2 = file_open(name.c_str(), kFileRead, kShareReadWrite, kOpenExisting);
    ASSERT_GE(shared1, 0);
    ASSERT_GE(shared2, 0);
    EXPECT_EQ(file_open(name.c_str(), kReadWrite, kShareNone, kOpenExisting), -1);
    EXPECT_EQ(file_last_error(), kErrorSharingViolation);
    // A refused truncating create leaves the file as it was.
    EXPECT_EQ(file_open(name.c_str(), kReadWrite, kShareNone, kCreateAlways), -1);
    EXPECT_EQ(nqtest::read_file(name), "content");
    file_close(shared1);
    file_close(shared2);
    const int alone = file_open(name.c_str(), kReadWrite, kShareNone, kOpenExisting);
    ASSERT_GE(alone, 0);
    EXPECT_EQ(file_open(name.c_str(), kFileRead, kShareReadWrite, kOpenExisting), -1);
    EXPECT_EQ(file_last_error(), kErrorSharingViolation);
    EXPECT_EQ(file_open(name.c_str(), kReadWrite, kShareNone, kOpenExisting), -1);
    file_close(alone);
    const int after = file_open(name.c_str(), kFileRead, kShareReadWrite, kOpenExisting);
    EXPECT_GE(after, 0);
    file_close(after);
}

TEST(PlatFile, PositionedTransfers) {
    TempDir dir;
    const int h = file_open(dir.file("t.dat").c_str(), kReadWrite, kShareReadWrite, kCreateNew);
    ASSERT_GE(h, 0);
    uint32_t n = 0;
    ASSERT_TRUE(file_write(h, 10, "xyz", 3, &n));
    EXPECT_EQ(file_size(h), 13u);
    char buffer[20] = {};
    ASSERT_TRUE(file_read(h, 8, buffer, 10, &n));
    EXPECT_EQ(n, 5u);
    EXPECT_EQ(std::string(buffer, 5), std::string("\0\0xyz", 5));
    ASSERT_TRUE(file_read(h, 100, buffer, 10, &n));
    EXPECT_EQ(n, 0u);
    EXPECT_TRUE(file_seek(h, 0x7FFFFFFFu));
    EXPECT_FALSE(file_seek(h, 0x80000000u));
    EXPECT_EQ(file_last_error(), kErrorNegativeSeek);
    EXPECT_FALSE(file_seek(-1, 0));
    EXPECT_EQ(file_last_error(), kErrorInvalidHandle);
    ASSERT_TRUE(file_set_length(h, 4));
    EXPECT_EQ(file_size(h), 4u);
    ASSERT_TRUE(file_set_length(h, 6));
    ASSERT_TRUE(file_read(h, 0, buffer, 10, &n));
    EXPECT_EQ(n, 6u);
    EXPECT_TRUE(file_flush(h));
    EXPECT_FALSE(file_read(h, 0, nullptr, 3, &n));
    file_close(h);
    EXPECT_FALSE(file_read(h, 0, buffer, 3, &n));
    EXPECT_FALSE(file_write(h, 0, buffer, 3, &n));
    EXPECT_EQ(file_size(h), kInvalidFileSize);
    EXPECT_FALSE(file_flush(h));
    EXPECT_FALSE(file_set_length(h, 0));
}

TEST(PlatFile, AReadOnlyHandleRefusesWritesEvenWhenOpenedExclusively) {
    TempDir dir;
    const std::string name = dir.file("r.dat");
    nqtest::write_file(name, "abc");
    const int h = file_open(name.c_str(), kFileRead, kShareNone, kOpenExisting);
    ASSERT_GE(h, 0);
    uint32_t n = 0;
    EXPECT_FALSE(file_write(h, 0, "x", 1, &n));
    EXPECT_EQ(file_last_error(), kErrorAccessDenied);
    EXPECT_FALSE(file_set_length(h, 0));
    EXPECT_EQ(file_open(name.c_str(), kFileRead, kShareReadWrite, kOpenExisting), -1);
    file_close(h);
    EXPECT_EQ(nqtest::read_file(name), "abc");
}

TEST(PlatFile, LocksFollowTheEnginesRules) {
    TempDir dir;
    const std::string name = dir.file("l.dat");
    nqtest::write_file(name, "");
    const int a = file_open(name.c_str(), kReadWrite, kShareReadWrite, kOpenExisting);
    const int b = file_open(name.c_str(), kReadWrite, kShareReadWrite, kOpenExisting);
    ASSERT_GE(a, 0);
    ASSERT_GE(b, 0);
    EXPECT_TRUE(file_lock(a, 100, 10));
    EXPECT_FALSE(file_lock(b, 105, 1));
    EXPECT_EQ(file_last_error(), kErrorLockViolation);
    EXPECT_FALSE(file_lock(a, 109, 5));  // overlapping a range this handle holds
    EXPECT_EQ(file_last_error(), kErrorLockViolation);
    EXPECT_TRUE(file_lock(b, 110, 1));   // just behind it
    EXPECT_FALSE(file_unlock(a, 100, 5));
    EXPECT_EQ(file_last_error(), kErrorNotLocked);
    EXPECT_FALSE(file_unlock(b, 100, 10));  // another handle's range
    EXPECT_TRUE(file_unlock(a, 100, 10));
    EXPECT_TRUE(file_lock(b, 105, 1));
    EXPECT_TRUE(file_lock(a, 0, 0));     // no bytes: nothing to lock
    EXPECT_TRUE(file_unlock(a, 0, 0));
    EXPECT_TRUE(file_lock(a, 0x40000000u, 0x3FFFFFFFu));
    EXPECT_FALSE(file_lock(a, 0x7FFFFFFEu, 1));  // the whole-file range covers the append byte
    // Closing a handle lets go of its ranges.
    file_close(b);
    const int c = file_open(name.c_str(), kReadWrite, kShareReadWrite, kOpenExisting);
    EXPECT_TRUE(file_lock(c, 105, 1));
    EXPECT_FALSE(file_lock(c, 0x7FFFFFFEu, 1));
    file_close(a);
    EXPECT_TRUE(file_lock(c, 0x7FFFFFFEu, 1));
    file_close(c);
    EXPECT_FALSE(file_lock(c, 1, 1));
    EXPECT_EQ(file_last_error(), kErrorInvalidHandle);
}

TEST(PlatFile, RemoveAndRename) {
    TempDir dir;
    nqtest::write_file(dir.file("one"), "1");
    nqtest::write_file(dir.file("two"), "2");
    EXPECT_TRUE(file_rename(dir.file("one").c_str(), dir.file("two").c_str()));
    EXPECT_EQ(nqtest::read_file(dir.file("two")), "1");
    EXPECT_FALSE(nqtest::file_exists(dir.file("one")));
    EXPECT_FALSE(file_rename(dir.file("one").c_str(), dir.file("three").c_str()));
    EXPECT_TRUE(file_remove(dir.file("two").c_str()));
    EXPECT_FALSE(file_remove(dir.file("two").c_str()));
    EXPECT_EQ(file_last_error(), kErrorFileNotFound);
    EXPECT_FALSE(file_remove(nullptr));
    EXPECT_FALSE(file_rename(nullptr, "x"));
}

TEST(PlatFile, NamesGoThroughThePathBridge) {
    TempDir dir;
    nqtest::write_file(dir.file("lower.dat"), "bridge");
    std::string library = "C:" + dir.path() + "\\LOWER.DAT";
    for (char &c : library) {
        if (c == '/') c = '\\';
    }
    const int h = file_open(library.c_str(), kFileRead, kShareReadWrite, kOpenExisting);
    ASSERT_GE(h, 0);
    EXPECT_EQ(file_size(h), 6u);
    file_close(h);
}

TEST(PlatFile, CallsAreCounted) {
    TempDir dir;
    const int h = file_open(dir.file("c.dat").c_str(), kReadWrite, kShareReadWrite, kCreateNew);
    const FileCallCounts before = file_call_counts();
    char byte = 'x';
    uint32_t n = 0;
    file_write(h, 0, &byte, 1, &n);
    file_read(h, 0, &byte, 1, &n);
    file_lock(h, 0, 1);
    file_unlock(h, 0, 1);
    const FileCallCounts after = file_call_counts();
    EXPECT_EQ(after.writes - before.writes, 1u);
    EXPECT_EQ(after.reads - before.reads, 1u);
    EXPECT_EQ(after.locks - before.locks, 1u);
    EXPECT_EQ(after.unlocks - before.unlocks, 1u);
    file_close(h);
}

}  // namespace
