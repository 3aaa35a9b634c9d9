// Temporary files: names from the clock, collisions, and files that live in the cache until
// it overflows.
#include <gtest/gtest.h>

#include <dirent.h>

#include <cstring>
#include <set>
#include <string>

#include "engine_test_support.h"

namespace {

using enginetest::BoxCapture;
using enginetest::Engine;
using enginetest::FakeClock;
using enginetest::InFolder;
using nqtest::TempDir;

std::set<std::string> files_in(const std::string &folder) {
    std::set<std::string> names;
    if (DIR *dir = ::opendir(folder.c_str())) {
        while (const dirent *entry = ::readdir(dir)) {
            const std::string name = entry->d_name;
            if (name != "." && name != "..") names.insert(name);
        }
        ::closedir(dir);
    }
    return names;
}

std::string pattern(size_t length, unsigned seed) {
    std::string text(length, '\0');
    for (size_t i = 0; i < length; ++i) text[i] = static_cast<char>('a' + (i * 11 + seed) % 26);
    return text;
}

class Temp4 : public ::testing::Test {
protected:
    FakeClock never_sleep{900, 1};  // tests that set their own clock replace it
    TempDir dir;
    InFolder here{dir.path()};
    Engine engine;
};

TEST_F(Temp4, TheNameComesFromTheClockAfterAOneSecondWait) {
    FakeClock clock(123456, 1);
    char name[16] = {};
    file4 file;
    ASSERT_EQ(file4_temp(&file, engine, name, 1), 0);
    EXPECT_EQ(FakeClock::pauses(), 1);
    EXPECT_STREQ(name, "TEMP3457.TMP");
    EXPECT_EQ(file.name, name);
    EXPECT_EQ(file.owns_name, 0);
    EXPECT_EQ(file.is_temp, 1);
    EXPECT_EQ(file.is_exclusive, 1);
    EXPECT_EQ(file.on_disk, 1);
    EXPECT_GE(file.handle, 0);
    EXPECT_EQ(files_in(dir.path()), std::set<std::string>{"TEMP3457.TMP"});
    // The settings changed for the create are back.
    EXPECT_EQ(engine->err_create, 1);
    EXPECT_EQ(engine->exclusive, 0);
    EXPECT_EQ(engine->safety, 1);
    ASSERT_EQ(file4_write(&file, 0, "scratch", 7), 0);
    EXPECT_EQ(file4_close(&file), 0);
    EXPECT_TRUE(files_in(dir.path()).empty());
}

TEST_F(Temp4, WithoutANameBufferTheNameIsCopied) {
    FakeClock clock(20, 1);
    file4 file;
    ASSERT_EQ(file4_temp(&file, engine, nullptr, 1), 0);
    EXPECT_STREQ(file.name, "TEMP0021.TMP");
    EXPECT_EQ(file.owns_name, 1);
    file4_close(&file);
    EXPECT_TRUE(files_in(dir.path()).empty());
}

TEST_F(Temp4, WithoutAutoRemoveTheFileStays) {
    FakeClock clock(77, 1);
    char name[16];
    file4 file;
    ASSERT_EQ(file4_temp(&file, engine, name, 0), 0);
    EXPECT_EQ(file.is_temp, 0);
    file4_close(&file);
    EXPECT_EQ(files_in(dir.path()), std::set<std::string>{"TEMP0078.TMP"});
}

TEST_F(Temp4, ANameInUseWaitsForTheNextSecond) {
    nqtest::write_file(dir.file("TEMP1001.TMP"), "someone else's");
    FakeClock clock(1000, 1);
    char name[16];
    file4 file;
    ASSERT_EQ(file4_temp(&file, engine, name, 1), 0);
    EXPECT_STREQ(name, "TEMP1002.TMP");
    EXPECT_EQ(FakeClock::pauses(), 2);
    EXPECT_EQ(engine->error_code, 0);
    file4_close(&file);
    EXPECT_EQ(nqtest::read_file(dir.file("TEMP1001.TMP")), "someone else's");
}

TEST_F(Temp4, AHundredCollisionsAreMinus20AndLeaveNoHandle) {
    BoxCapture boxes;
    nqtest::write_file(dir.file("TEMP5000.TMP"), "taken");
    FakeClock clock(5000, 10000);  // every second of the clock gives the same name
    char name[16];
    file4 file;
    EXPECT_EQ(file4_temp(&file, engine, name, 1), -20);
    EXPECT_EQ(FakeClock::pauses(), 100);
    EXPECT_EQ(file.handle, -1);
    EXPECT_EQ(engine->error_code, -20);
    ASSERT_EQ(boxes.count(), 1u);
    EXPECT_EQ(boxes.last().text, "Error #:  -20\nCreating File\nTemporary Working File\n");
    EXPECT_EQ(engine->err_create, 1);
    EXPECT_EQ(engine->exclusive, 0);
    EXPECT_EQ(nqtest::read_file(dir.file("TEMP5000.TMP")), "taken");
    engine->error_code = 0;
}

TEST_F(Temp4, WithTheCacheRunningTheDataLivesInTheCache) {
    ASSERT_EQ(engine4_cache_start(engine), 0);
    char name[16] = "unchanged";
    file4 file;
    const auto pauses = FakeClock::pauses();
    ASSERT_EQ(file4_temp(&file, engine, name, 1), 0);
    EXPECT_EQ(FakeClock::pauses(), pauses);  // no wait, no name
    EXPECT_STREQ(name, "unchanged");
    EXPECT_EQ(file.name, name);
    EXPECT_EQ(file.on_disk, 0);
    EXPECT_EQ(file.handle, -1);
    EXPECT_EQ(file.is_temp, 1);
    EXPECT_EQ(file.is_exclusive, 1);
    EXPECT_EQ(file.cache_type, 3);
    EXPECT_EQ(file.write_mode, 1);
    EXPECT_EQ(file.write_delay, 1);
    EXPECT_EQ(file.do_buffer, 1);
    EXPECT_EQ(file4_length(&file), 0);
    const std::string content = pattern(3000, 1);
    ASSERT_EQ(file4_write(&file, 0, content.data(), 3000), 0);
    char buffer[3000];
    ASSERT_EQ(file4_read(&file, 0, buffer, 3000), 3000u);
    EXPECT_EQ(std::string(buffer, 3000), content);
    EXPECT_EQ(file4_length(&file), 3000);
    ASSERT_EQ(file4_set_length(&file, 5000), 0);
    EXPECT_EQ(file4_length(&file), 5000);
    ASSERT_EQ(file4_read(&file, 2900, buffer, 200), 200u);
    EXPECT_EQ(std::string(buffer + 100, 100), std::string(100, '\0'));
    EXPECT_TRUE(files_in(dir.path()).empty());
    // Closing it sets its length to 0 and touches nothing.
    EXPECT_EQ(file4_close(&file), 0);
    EXPECT_TRUE(files_in(dir.path()).empty());
    EXPECT_EQ(engine->cache_files.count, 0u);
    EXPECT_EQ(engine->cache.free_blocks.count, engine->cache.block_count);
}

TEST_F(Temp4, ATemporaryFileGetsItsFileWhenTheCacheOverflows) {
    FakeClock clock(4242, 1);
    engine->cache_block_size = 1024;
    engine->big_buffer_size = 4096;
    engine->cache_memory = 6 * 4096;  // sixteen blocks
    ASSERT_EQ(engine4_cache_start(engine), 0);
    char name[16] = {};
    file4 file;
    ASSERT_EQ(file4_temp(&file, engine, name, 1), 0);
    const std::string content = pattern(64 * 1024, 2);
    ASSERT_EQ(file4_write(&file, 0, content.data(), 8 * 1024), 0);
    EXPECT_TRUE(files_in(dir.path()).empty());
    ASSERT_EQ(file4_write(&file, 8 * 1024, content.data() + 8 * 1024, 56 * 1024), 0);
    EXPECT_EQ(file.on_disk, 1);
    EXPECT_STREQ(name, "TEMP4243.TMP");
    EXPECT_EQ(files_in(dir.path()), std::set<std::string>{"TEMP4243.TMP"});
    // It is still the cache's file, with its fields as they were.
    EXPECT_EQ(file.cache_type, 3);
    EXPECT_EQ(file.do_buffer, 1);
    EXPECT_EQ(file.write_delay, 1);
    EXPECT_EQ(file.is_temp, 1);
    EXPECT_EQ(l4_contains(&engine->cache_files, &file), 1);
    EXPECT_EQ(file4_length(&file), 64 * 1024);
    std::string back(64 * 1024, '\0');
    ASSERT_EQ(file4_read(&file, 0, back.data(), 64 * 1024), 64u * 1024u);
    EXPECT_EQ(back, content);
    EXPECT_EQ(file4_close(&file), 0);
    EXPECT_TRUE(files_in(dir.path()).empty());
}

TEST_F(Temp4, AFlushWritesTheChangedBlocksAndSoMakesTheFile) {
    FakeClock clock(60, 1);
    ASSERT_EQ(engine4_cache_start(engine), 0);
    file4 file;
    ASSERT_EQ(file4_temp(&file, engine, nullptr, 1), 0);
    EXPECT_EQ(file4_flush(&file, 0), 0);  // nothing changed: still no file
    EXPECT_TRUE(files_in(dir.path()).empty());
    ASSERT_EQ(file4_write(&file, 0, "data", 4), 0);
    EXPECT_EQ(file4_flush(&file, 0), 0);
    EXPECT_EQ(files_in(dir.path()), std::set<std::string>{"TEMP0061.TMP"});
    EXPECT_EQ(nqtest::read_file(dir.file("TEMP0061.TMP")), "data");
    file4_close(&file);
    EXPECT_TRUE(files_in(dir.path()).empty());
}

TEST_F(Temp4, StoppingTheCacheGivesATemporaryFileItsFile) {
    FakeClock clock(10, 1);
    ASSERT_EQ(engine4_cache_start(engine), 0);
    file4 file;
    ASSERT_EQ(file4_temp(&file, engine, nullptr, 1), 0);
    ASSERT_EQ(file4_write(&file, 0, "spooled", 7), 0);
    ASSERT_EQ(engine4_cache_stop(engine), 0);
    EXPECT_EQ(file.on_disk, 1);
    EXPECT_EQ(files_in(dir.path()), std::set<std::string>{"TEMP0011.TMP"});
    char buffer[8] = {};
    ASSERT_EQ(file4_read(&file, 0, buffer, 7), 7u);
    EXPECT_STREQ(buffer, "spooled");
    file4_close(&file);
    EXPECT_TRUE(files_in(dir.path()).empty());
}

TEST_F(Temp4, ReplacingWithACacheOnlyTemporaryFile) {
    FakeClock clock(300, 1);
    ASSERT_EQ(engine4_cache_start(engine), 0);
    nqtest::write_file(dir.file("KEEP.DBF"), "old content");
    engine->exclusive = 1;
    file4 keep;
    ASSERT_EQ(file4_open(&keep, engine, "KEEP.DBF", 1), 0);
    engine->exclusive = 0;
    ASSERT_EQ(file4_cache_type(&keep, 1, 1), 0);
    // A temporary file with data: it gets its file on the way and moves onto keep's name.
    file4 from;
    ASSERT_EQ(file4_temp(&from, engine, nullptr, 1), 0);
    ASSERT_EQ(file4_write(&from, 0, "new content!", 12), 0);
    ASSERT_EQ(file4_replace(&keep, &from), 0);
    EXPECT_EQ(nqtest::read_file(dir.file("KEEP.DBF")), "new content!");
    EXPECT_EQ(files_in(dir.path()), std::set<std::string>{"KEEP.DBF"});
    EXPECT_EQ(keep.cache_type, 1);
    EXPECT_EQ(file4_length(&keep), 12);
    // One that never had data empties keep.
    file4 empty;
    ASSERT_EQ(file4_temp(&empty, engine, nullptr, 1), 0);
    ASSERT_EQ(file4_replace(&keep, &empty), 0);
    EXPECT_EQ(file4_length(&keep), 0);
    EXPECT_EQ(files_in(dir.path()), std::set<std::string>{"KEEP.DBF"});
    file4_close(&keep);
    EXPECT_EQ(nqtest::read_file(dir.file("KEEP.DBF")), "");
}

}  // namespace
