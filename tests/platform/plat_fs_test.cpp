// The file and folder stand-ins: Windows name matching, folder searches, the read-only
// attribute as the owner's write bit, Win32 error codes and file times.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "plat_find.h"
#include "plat_fs.h"
#include "plat_utf.h"
#include "test_support.h"

namespace {

std::u16string lib(const std::string &linux_path) {
    std::u16string out = u"C:" + nqplat::utf8_to_utf16(linux_path);
    for (char16_t &c : out) {
        if (c == u'/') c = u'\\';
    }
    return out;
}

}  // namespace

TEST(PlatFind, MatchPatternIgnoresCaseAndKnowsTheDotRules) {
    using nqplat::match_pattern;
    EXPECT_TRUE(match_pattern(u"File.TXT", u"*.txt"));
    EXPECT_TRUE(match_pattern(u"noext", u"*.*"));
    EXPECT_TRUE(match_pattern(u"noext", u"noext.*"));
    EXPECT_TRUE(match_pattern(u"a.b.c", u"*.c"));
    EXPECT_TRUE(match_pattern(u"abcabd", u"*abd"));  // backtracking, unlike nq_Str_matchWildcard
    EXPECT_TRUE(match_pattern(u"ab", u"ab?"));       // a trailing "?" may stand for nothing
    EXPECT_FALSE(match_pattern(u"abc", u"a?"));
    EXPECT_FALSE(match_pattern(u"ab", u"a?c"));
    EXPECT_FALSE(match_pattern(u"abc", u""));
    EXPECT_FALSE(match_pattern(u"abcd", u"abc.*"));
}

TEST(PlatFind, EntriesCarryAttributesAndTimes) {
    nqtest::TempDir dir;
    nqtest::write_file(dir.file("ro.txt"), "12345");
    ::chmod(dir.file("ro.txt").c_str(), 0444);
    ::mkdir(dir.file("sub").c_str(), 0777);
    const auto entries = nqplat::find_entries((lib(dir.path()) + u"\\*").c_str());
    ASSERT_EQ(entries.size(), 4u);
    EXPECT_EQ(entries[0].name, u".");
    EXPECT_EQ(entries[1].name, u"..");
    EXPECT_EQ(entries[2].name, u"ro.txt");
    EXPECT_EQ(entries[2].attributes, nqplat::kAttrReadOnly);
    EXPECT_EQ(entries[2].size, 5u);
    EXPECT_EQ(entries[3].attributes, nqplat::kAttrDirectory);
    const int64_t now = nqplat::system_time_as_file_time();
    EXPECT_GT(entries[3].creation_time, nqplat::to_file_time(0, 0));
    EXPECT_LE(entries[3].creation_time, now);
}

TEST(PlatFs, FileTimesCountFrom1601) {
    EXPECT_EQ(nqplat::to_file_time(0, 0), 116444736000000000LL);
    EXPECT_EQ(nqplat::to_file_time(1, 500), 116444736000000000LL + 10000000LL + 5);
}

TEST(PlatFs, TheReadOnlyAttributeIsTheOwnersWriteBit) {
    nqtest::TempDir dir;
    nqtest::write_file(dir.file("f"), "x");
    const std::u16string f = lib(dir.file("f"));
    EXPECT_EQ(nqplat::file_attributes(f.c_str()), nqplat::kAttrNormal);
    EXPECT_TRUE(nqplat::set_file_attributes(f.c_str(), nqplat::kAttrReadOnly));
    EXPECT_EQ(nqplat::file_attributes(f.c_str()), nqplat::kAttrReadOnly);
    EXPECT_EQ(nqplat::fopen(f.c_str(), "ab"), nullptr);
    uint32_t error = 0;
    EXPECT_FALSE(nqplat::delete_file(f.c_str(), &error));
    EXPECT_EQ(error, nqplat::kErrorAccessDenied);
    EXPECT_TRUE(nqplat::set_file_attributes(f.c_str(), nqplat::kAttrNormal));
    EXPECT_TRUE(nqplat::delete_file(f.c_str(), &error));
    EXPECT_EQ(nqplat::file_attributes(f.c_str()), nqplat::kInvalidAttributes);
}

TEST(PlatFs, RemoveDirectoryGivesWin32Errors) {
    nqtest::TempDir dir;
    ::mkdir(dir.file("full").c_str(), 0777);
    nqtest::write_file(dir.file("full/f"), "x");
    nqtest::write_file(dir.file("file"), "x");
    uint32_t error = 0;
    EXPECT_FALSE(nqplat::remove_directory(lib(dir.file("full")).c_str(), &error));
    EXPECT_EQ(error, nqplat::kErrorDirNotEmpty);
    EXPECT_FALSE(nqplat::remove_directory(lib(dir.file("missing")).c_str(), &error));
    EXPECT_EQ(error, nqplat::kErrorFileNotFound);
    EXPECT_FALSE(nqplat::remove_directory(lib(dir.file("file")).c_str(), &error));
    EXPECT_EQ(error, 267u);
}

TEST(PlatFs, RenameNeverReplacesButMayRespell) {
    nqtest::TempDir dir;
    nqtest::write_file(dir.file("a"), "a");
    nqtest::write_file(dir.file("b"), "b");
    EXPECT_EQ(nqplat::rename(lib(dir.file("a")).c_str(), lib(dir.file("b")).c_str()), -1);
    EXPECT_EQ(nqtest::read_file(dir.file("b")), "b");
    EXPECT_EQ(nqplat::rename(lib(dir.file("a")).c_str(), lib(dir.file("A")).c_str()), 0);
    EXPECT_TRUE(nqtest::file_exists(dir.file("A")));
    EXPECT_TRUE(nqplat::same_file(lib(dir.file("A")).c_str(), lib(dir.file("a")).c_str()));
    EXPECT_FALSE(nqplat::same_file(lib(dir.file("A")).c_str(), lib(dir.file("b")).c_str()));
}

TEST(PlatFs, ABareDriveMarkIsTheCurrentFolder) {
    EXPECT_EQ(nqplat::fs_path(u"C:"), ".");
    EXPECT_EQ(nqplat::access(u"C:", 0), 0);
    EXPECT_EQ(nqplat::fs_path(u""), "");
    EXPECT_EQ(nqplat::current_drive(), 3);
    EXPECT_EQ(nqplat::change_drive(3), 0);
    EXPECT_EQ(nqplat::change_drive(4), -1);
}
