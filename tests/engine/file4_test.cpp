// The file layer without the cache: open and create with their rules, read, write, length,
// flush, close, replace, and the entry test of every operation.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstring>
#include <string>

#include "engine_test_support.h"
#include "plat_file.h"

namespace {

using enginetest::BoxCapture;
using enginetest::Engine;
using nqtest::TempDir;

class File4 : public ::testing::Test {
protected:
    TempDir dir;
    Engine engine;
    BoxCapture boxes;
    std::string path(const char *name) const { return dir.file(name); }
};

TEST_F(File4, CreateMakesAnEmptyFileAndKeepsTheNameByReference) {
    const std::string name = path("NEW.DBF");
    file4 file;
    ASSERT_EQ(file4_create(&file, engine, name.c_str(), 0), 0);
    EXPECT_TRUE(nqtest::file_exists(name));
    EXPECT_EQ(nqtest::read_file(name), "");
    EXPECT_GE(file.handle, 0);
    EXPECT_EQ(file.name, name.c_str());
    EXPECT_EQ(file.owns_name, 0);
    EXPECT_EQ(file.engine, engine.get());
    EXPECT_EQ(file.on_disk, 1);
    EXPECT_EQ(file.is_exclusive, 0);
    EXPECT_EQ(file.is_read_only, 0);
    EXPECT_EQ(file.is_temp, 0);
    EXPECT_EQ(file.do_buffer, 0);
    EXPECT_EQ(file.cache_type, 0);
    EXPECT_EQ(file4_close(&file), 0);
    EXPECT_EQ(file.handle, -1);
    EXPECT_EQ(file.name, nullptr);
}

TEST_F(File4, CopyNameKeepsACopyThatTheCloseFrees) {
    std::string name = path("COPY.DBF");
    file4 file;
    ASSERT_EQ(file4_create(&file, engine, name.c_str(), 1), 0);
    EXPECT_NE(file.name, name.c_str());
    EXPECT_STREQ(file.name, name.c_str());
    EXPECT_EQ(file.owns_name, 1);
    file4_close(&file);
}

TEST_F(File4, CreateWithSafetyRefusesAnExistingFile) {
    const std::string name = path("OLD.DBF");
    nqtest::write_file(name, "keep me");
    file4 file;
    EXPECT_EQ(file4_create(&file, engine, name.c_str(), 0), -20);
    EXPECT_EQ(engine->error_code, -20);
    EXPECT_EQ(file.handle, -1);
    ASSERT_EQ(boxes.count(), 1u);
    EXPECT_EQ(boxes.last().title, "TABELLIX ERROR");
    EXPECT_EQ(boxes.last().text, "Error #:  -20\nCreating File\nFile Name:\n" + name + "\n");
    EXPECT_EQ(nqtest::read_file(name), "keep me");
}

TEST_F(File4, CreateWithCreateErrorsOffOnlySets60) {
    const std::string name = path("OLD.DBF");
    nqtest::write_file(name, "keep me");
    engine->err_create = 0;
    file4 file;
    EXPECT_EQ(file4_create(&file, engine, name.c_str(), 0), 60);
    EXPECT_EQ(engine->error_code, 60);
    EXPECT_EQ(boxes.count(), 0u);
}

TEST_F(File4, CreateWithoutSafetyTruncates) {
    const std::string name = path("OLD.DBF");
    nqtest::write_file(name, "old content");
    engine->safety = 0;
    file4 file;
    ASSERT_EQ(file4_create(&file, engine, name.c_str(), 0), 0);
    EXPECT_EQ(nqtest::read_file(name), "");
    file4_close(&file);
}

TEST_F(File4, CreateInAMissingFolderFails) {
    const std::string name = path("NO/SUCH/FOLDER.DBF");
    file4 file;
    EXPECT_EQ(file4_create(&file, engine, name.c_str(), 0), -20);
}

TEST_F(File4, OpenFindsTheFileAndReportsAMissingOne) {
    const std::string name = path("DATA.DBF");
    nqtest::write_file(name, "abc");
    file4 file;
    ASSERT_EQ(file4_open(&file, engine, name.c_str(), 0), 0);
    EXPECT_EQ(file4_length(&file), 3);
    file4_close(&file);
    const std::string missing = path("MISSING.DBF");
    EXPECT_EQ(file4_open(&file, engine, missing.c_str(), 0), -60);
    EXPECT_EQ(boxes.last().text, "Error #:  -60\nOpening File\nFile Name:\n" + missing + "\n");
    EXPECT_EQ(file.handle, -1);
    EXPECT_EQ(engine->error_code, -60);
}

TEST_F(File4, OpenWithOpenErrorsOffOnlySets70) {
    engine->err_open = 0;
    file4 file;
    EXPECT_EQ(file4_open(&file, engine, path("MISSING.DBF").c_str(), 1), 70);
    EXPECT_EQ(engine->error_code, 70);
    EXPECT_EQ(boxes.count(), 0u);
}

TEST_F(File4, OpenAndCreateClearAPositiveResultFirst) {
    const std::string name = path("DATA.DBF");
    nqtest::write_file(name, "abc");
    engine->error_code = 50;
    file4 file;
    ASSERT_EQ(file4_open(&file, engine, name.c_str(), 0), 0);
    EXPECT_EQ(engine->error_code, 0);
    file4_close(&file);
}

TEST_F(File4, NamesGoThroughThePathBridge) {
    nqtest::write_file(path("lower.dbf"), "xyz");
    std::string library_name = "C:" + dir.path() + "/LOWER.DBF";
    for (char &c : library_name) {
        if (c == '/') c = '\\';
    }
    file4 file;
    ASSERT_EQ(file4_open(&file, engine, library_name.c_str(), 1), 0);
    char buffer[4] = {};
    EXPECT_EQ(file4_read(&file, 0, buffer, 3), 3u);
    EXPECT_STREQ(buffer, "xyz");
    file4_close(&file);
}

TEST_F(File4, ReadOnlyEngineOpensForReadingAndRefusesChanges) {
    const std::string name = path("RO.DBF");
    nqtest::write_file(name, "abcdef");
    engine->read_only = 1;
    file4 file;
    ASSERT_EQ(file4_open(&file, engine, name.c_str(), 0), 0);
    EXPECT_EQ(file.is_read_only, 1);
    char buffer[7] = {};
    EXPECT_EQ(file4_read(&file, 0, buffer, 6), 6u);
    EXPECT_EQ(file4_write(&file, 0, "x", 1), -930);
    EXPECT_EQ(boxes.last().text,
              "Error #: -930\nUnexpected Parameter\nAttempt to write to a read-only file\n");
    engine->error_code = 0;
    EXPECT_EQ(file4_set_length(&file, 2), -930);
    EXPECT_EQ(boxes.last().text,
              "Error #: -930\nUnexpected Parameter\n"
              "Attempt to change file length of a read-only file\n");
    engine->error_code = 0;
    EXPECT_EQ(file4_flush(&file, 0), 0);
    EXPECT_EQ(nqtest::read_file(name), "abcdef");
    file4_close(&file);
}

TEST_F(File4, ExclusiveTakesTheLowByteOfTheSetting) {
    const std::string name = path("X.DBF");
    nqtest::write_file(name, "");
    file4 file;
    engine->exclusive = 1;
    ASSERT_EQ(file4_open(&file, engine, name.c_str(), 0), 0);
    EXPECT_EQ(file.is_exclusive, 1);
    file4_close(&file);
    engine->exclusive = 0x100;  // share mode 0, yet the low byte is 0
    ASSERT_EQ(file4_open(&file, engine, name.c_str(), 0), 0);
    EXPECT_EQ(file.is_exclusive, 0);
    file4_close(&file);
}

TEST_F(File4, WriteThenReadGivesTheBytesBack) {
    file4 file;
    ASSERT_EQ(file4_create(&file, engine, path("RW.DBF").c_str(), 1), 0);
    ASSERT_EQ(file4_write(&file, 0, "hello world", 11), 0);
    ASSERT_EQ(file4_write(&file, 6, "WORLD", 5), 0);
    char buffer[32] = {};
    EXPECT_EQ(file4_read(&file, 0, buffer, 11), 11u);
    EXPECT_STREQ(buffer, "hello WORLD");
    EXPECT_EQ(file4_length(&file), 11);
    // Past the end: a short count, no failure.
    std::memset(buffer, 0, sizeof(buffer));
    EXPECT_EQ(file4_read(&file, 8, buffer, 10), 3u);
    EXPECT_STREQ(buffer, "RLD");
    EXPECT_EQ(file4_read(&file, 100, buffer, 10), 0u);
    EXPECT_EQ(engine->error_code, 0);
    EXPECT_EQ(boxes.count(), 0u);
    // A write past the end leaves zeros in the gap.
    ASSERT_EQ(file4_write(&file, 20, "!", 1), 0);
    EXPECT_EQ(nqtest::read_file(path("RW.DBF")), std::string("hello WORLD") + std::string(9, '\0') + "!");
    EXPECT_EQ(file4_write(&file, 0, "", 0), 0);
    file4_close(&file);
}

TEST_F(File4, ReadAllIsMinus70ForAShortRead) {
    file4 file;
    ASSERT_EQ(file4_create(&file, engine, path("R.DBF").c_str(), 1), 0);
    ASSERT_EQ(file4_write(&file, 0, "12345", 5), 0);
    char buffer[8];
    EXPECT_EQ(file4_read_all(&file, 0, buffer, 5), 0);
    EXPECT_EQ(file4_read_all(&file, 1, buffer, 5), -70);
    EXPECT_EQ(engine->error_code, -70);
    ASSERT_EQ(boxes.count(), 1u);
    EXPECT_EQ(boxes.last().text,
              "Error #:  -70\nReading File\nFile Name:\n" + path("R.DBF") + "\n");
    engine->error_code = 0;
    file4_close(&file);
}

TEST_F(File4, APositionBeyondTwoGigabytesFailsTheSeek) {
    file4 file;
    ASSERT_EQ(file4_create(&file, engine, path("S.DBF").c_str(), 1), 0);
    char buffer[4];
    EXPECT_EQ(file4_read(&file, 0x80000000u, buffer, 4), 0u);
    EXPECT_EQ(engine->error_code, -70);
    EXPECT_EQ(boxes.last().text,
              "Error #:  -70\nReading File\nFile Name:\n" + path("S.DBF") + "\n");
    engine->error_code = 0;
    EXPECT_EQ(file4_write(&file, 0x80000000u, "x", 1), -120);
    EXPECT_EQ(boxes.last().text, "Error #: -120\nWriting to File\n" + path("S.DBF") + "\n");
    engine->error_code = 0;
    EXPECT_EQ(file4_set_length(&file, 0x80000000u), -40);
    EXPECT_EQ(boxes.last().text, "Error #:  -40\nSetting File Length\n" + path("S.DBF") + "\n");
    engine->error_code = 0;
    file4_close(&file);
}

TEST_F(File4, SetLengthCutsAndExtendsWithZeros) {
    file4 file;
    ASSERT_EQ(file4_create(&file, engine, path("L.DBF").c_str(), 1), 0);
    ASSERT_EQ(file4_write(&file, 0, "abcdef", 6), 0);
    EXPECT_EQ(file4_set_length(&file, 3), 0);
    EXPECT_EQ(file4_length(&file), 3);
    EXPECT_EQ(file4_set_length(&file, 5), 0);
    EXPECT_EQ(nqtest::read_file(path("L.DBF")), std::string("abc\0\0", 5));
    file4_close(&file);
}

TEST_F(File4, APositiveResultLeftInTheEngineBlocksSetLength) {
    file4 file;
    ASSERT_EQ(file4_create(&file, engine, path("L.DBF").c_str(), 1), 0);
    ASSERT_EQ(file4_write(&file, 0, "abcdef", 6), 0);
    engine->error_code = 50;
    EXPECT_EQ(file4_set_length(&file, 2), -1);
    EXPECT_EQ(file4_length(&file), 6);
    // The other operations go on.
    EXPECT_EQ(file4_write(&file, 0, "X", 1), 0);
    engine->error_code = 199;
    EXPECT_EQ(file4_set_length(&file, 2), -1);
    engine->error_code = 200;
    EXPECT_EQ(file4_set_length(&file, 2), 0);
    EXPECT_EQ(file4_length(&file), 2);
    engine->error_code = 0;
    file4_close(&file);
}

TEST_F(File4, FlushAndFlushKeepError) {
    file4 file;
    ASSERT_EQ(file4_create(&file, engine, path("F.DBF").c_str(), 1), 0);
    ASSERT_EQ(file4_write(&file, 0, "abc", 3), 0);
    EXPECT_EQ(file4_flush(&file, 0), 0);
    EXPECT_EQ(file4_flush(&file, 1), 0);
    engine->error_code = -5;
    EXPECT_EQ(file4_flush(&file, 0), -1);
    EXPECT_EQ(file4_flush_keep_error(&file), 0);
    EXPECT_EQ(engine->error_code, -5);
    engine->error_code = 20;
    EXPECT_EQ(file4_flush_keep_error(&file), 0);
    EXPECT_EQ(engine->error_code, 20);
    engine->error_code = 0;
    EXPECT_EQ(file4_flush_keep_error(&file), 0);
    EXPECT_EQ(engine->error_code, 0);
    file4_close(&file);
}

TEST_F(File4, FlushOnWriteStillWritesEverything) {
    engine->flush_on_write = 1;
    file4 file;
    ASSERT_EQ(file4_create(&file, engine, path("F.DBF").c_str(), 1), 0);
    ASSERT_EQ(file4_write(&file, 0, "abc", 3), 0);
    EXPECT_EQ(nqtest::read_file(path("F.DBF")), "abc");
    file4_close(&file);
}

TEST_F(File4, RefreshWithoutTheCacheDoesNothing) {
    file4 file;
    ASSERT_EQ(file4_create(&file, engine, path("F.DBF").c_str(), 1), 0);
    EXPECT_EQ(file4_refresh(&file), 0);
    file4_close(&file);
}

TEST_F(File4, CloseRemovesATemporaryFileAndReportsALatchedError) {
    const std::string name = path("T.TMP");
    file4 file;
    ASSERT_EQ(file4_create(&file, engine, name.c_str(), 1), 0);
    file.is_temp = 1;
    engine->error_code = -9;
    EXPECT_EQ(file4_close(&file), -1);
    EXPECT_FALSE(nqtest::file_exists(name));
    EXPECT_EQ(file.handle, -1);
    EXPECT_EQ(engine->error_code, -9);
    engine->error_code = 0;
    EXPECT_EQ(file4_close(nullptr), 0);
    file4 cleared;
    std::memset(&cleared, 0, sizeof(cleared));
    cleared.handle = -1;
    EXPECT_EQ(file4_close(&cleared), 0);
}

TEST_F(File4, ANegativeErrorCodeStopsEveryOperationAtEntry) {
    const std::string name = path("E.DBF");
    file4 file;
    ASSERT_EQ(file4_create(&file, engine, name.c_str(), 0), 0);
    ASSERT_EQ(file4_write(&file, 0, "content", 7), 0);
    engine->error_code = -70;
    const auto before = nqplat::file_call_counts();
    char buffer[8] = {};
    EXPECT_EQ(file4_read(&file, 0, buffer, 7), 0u);
    EXPECT_EQ(buffer[0], 0);
    EXPECT_EQ(file4_read_all(&file, 0, buffer, 7), -1);
    EXPECT_EQ(file4_write(&file, 0, "XXXXXXX", 7), -1);
    EXPECT_EQ(file4_length(&file), -1);
    EXPECT_EQ(file4_set_length(&file, 1), -1);
    EXPECT_EQ(file4_flush(&file, 1), -1);
    EXPECT_EQ(file4_refresh(&file), -1);
    EXPECT_EQ(file4_lock(&file, 0, 1), -1);
    EXPECT_EQ(file4_cache_type(&file, 1, 1), -1);
    EXPECT_EQ(file4_write_mode(&file, 1), -1);
    file4 other;
    char temp_name[16];
    EXPECT_EQ(file4_temp(&other, engine, temp_name, 1), -1);
    EXPECT_EQ(file4_create(&other, engine, path("NEVER.DBF").c_str(), 1), -1);
    EXPECT_FALSE(nqtest::file_exists(path("NEVER.DBF")));
    EXPECT_EQ(file4_open(&other, engine, name.c_str(), 0), -1);
    EXPECT_EQ(file4_replace(&file, &file), -1);
    seq_reader reader;
    seq_writer writer;
    char work[1024];
    EXPECT_EQ(file4_seq_read_init(&reader, &file, 0, work, sizeof(work)), -1);
    EXPECT_EQ(file4_seq_write_init(&writer, &file, 0, work, sizeof(work)), -1);
    EXPECT_EQ(engine4_cache_start(engine), -1);
    const auto after = nqplat::file_call_counts();
    EXPECT_EQ(after.reads, before.reads);
    EXPECT_EQ(after.writes, before.writes);
    EXPECT_EQ(after.locks, before.locks);
    EXPECT_EQ(after.unlocks, before.unlocks);
    EXPECT_EQ(engine->error_code, -70);
    EXPECT_EQ(boxes.count(), 0u);
    engine->error_code = 0;
    EXPECT_EQ(nqtest::read_file(name), "content");
    file4_close(&file);
}

TEST_F(File4, NullArguments) {
    file4 file;
    EXPECT_EQ(file4_open(nullptr, engine, "x", 0), -1);
    EXPECT_EQ(file4_open(&file, nullptr, "x", 0), -1);
    EXPECT_EQ(file4_create(nullptr, engine, "x", 0), -1);
    EXPECT_EQ(file4_open(&file, engine, nullptr, 1), -60);
    engine->error_code = 0;
    EXPECT_EQ(file4_read(nullptr, 0, nullptr, 1), 0u);
    EXPECT_EQ(file4_read_all(nullptr, 0, nullptr, 1), -1);
    EXPECT_EQ(file4_write(nullptr, 0, "x", 1), -1);
    EXPECT_EQ(file4_length(nullptr), -1);
    EXPECT_EQ(file4_set_length(nullptr, 0), -1);
    EXPECT_EQ(file4_flush(nullptr, 0), -1);
    EXPECT_EQ(file4_flush_keep_error(nullptr), -1);
    EXPECT_EQ(file4_refresh(nullptr), -1);
    EXPECT_EQ(file4_lock(nullptr, 0, 1), -1);
    EXPECT_EQ(file4_unlock(nullptr, 0, 1), -1);
    EXPECT_EQ(file4_temp(nullptr, engine, nullptr, 1), -1);
    EXPECT_EQ(file4_replace(nullptr, nullptr), -1);
    EXPECT_EQ(file4_cache_type(nullptr, 1, 1), -1);
    EXPECT_EQ(file4_write_mode(nullptr, 1), -1);
    file4_write_delay(nullptr, 1);
    ASSERT_EQ(file4_create(&file, engine, path("N.DBF").c_str(), 1), 0);
    EXPECT_EQ(file4_read(&file, 0, nullptr, 4), 0u);
    EXPECT_EQ(file4_write(&file, 0, nullptr, 4), -930);
    engine->error_code = 0;
    file4_close(&file);
}

TEST_F(File4, ReplaceCopiesTheContentAndEndsTheSource) {
    const std::string keep_name = path("KEEP.DBF"), from_name = path("FROM.TMP");
    nqtest::write_file(keep_name, "a long old content that goes");
    nqtest::write_file(from_name, "new");
    file4 keep, from;
    ASSERT_EQ(file4_open(&keep, engine, keep_name.c_str(), 0), 0);
    ASSERT_EQ(file4_open(&from, engine, from_name.c_str(), 0), 0);
    EXPECT_EQ(file4_replace(&keep, &from), 0);
    EXPECT_EQ(nqtest::read_file(keep_name), "new");
    EXPECT_FALSE(nqtest::file_exists(from_name));
    EXPECT_EQ(from.handle, -1);
    char buffer[4] = {};
    EXPECT_EQ(file4_read(&keep, 0, buffer, 3), 3u);
    EXPECT_STREQ(buffer, "new");
    file4_close(&keep);
}

TEST_F(File4, ReplaceCopiesInSmallerPiecesWhenMemoryIsShort) {
    const std::string keep_name = path("KEEP.DBF"), from_name = path("FROM.TMP");
    std::string content;
    for (int i = 0; i < 5000; ++i) content += static_cast<char>('a' + i % 26);
    nqtest::write_file(keep_name, "old");
    nqtest::write_file(from_name, content);
    file4 keep, from;
    ASSERT_EQ(file4_open(&keep, engine, keep_name.c_str(), 0), 0);
    ASSERT_EQ(file4_open(&from, engine, from_name.c_str(), 0), 0);
    // Every buffer of 2048 bytes or more is refused: the last try of 100 bytes does it.
    mem4_set_fail_hook([](size_t size) { return size >= 2048 ? 1 : 0; });
    EXPECT_EQ(file4_replace(&keep, &from), 0);
    mem4_set_fail_hook(nullptr);
    EXPECT_EQ(nqtest::read_file(keep_name), content);
    file4_close(&keep);
}

TEST_F(File4, ReplaceWithoutAnyBufferReportsMinus920) {
    nqtest::write_file(path("K"), "old");
    nqtest::write_file(path("F"), "new");
    file4 keep, from;
    ASSERT_EQ(file4_open(&keep, engine, path("K").c_str(), 1), 0);
    ASSERT_EQ(file4_open(&from, engine, path("F").c_str(), 1), 0);
    mem4_set_fail_hook([](size_t) { return 1; });
    EXPECT_EQ(file4_replace(&keep, &from), -920);
    mem4_set_fail_hook(nullptr);
    engine->error_code = 0;
    file4_close(&keep);
    file4_close(&from);
}

TEST_F(File4, ReplaceOfAnExclusiveFileMovesTheSourceOntoItsName) {
    const std::string keep_name = path("KEEP.DBF"), from_name = path("FROM.TMP");
    nqtest::write_file(keep_name, "old content");
    nqtest::write_file(from_name, "replacement");
    engine->exclusive = 1;
    file4 keep, from;
    ASSERT_EQ(file4_open(&keep, engine, keep_name.c_str(), 1), 0);
    ASSERT_EQ(file4_open(&from, engine, from_name.c_str(), 1), 0);
    engine->exclusive = 0;
    EXPECT_EQ(file4_replace(&keep, &from), 0);
    EXPECT_EQ(nqtest::read_file(keep_name), "replacement");
    EXPECT_FALSE(nqtest::file_exists(from_name));
    EXPECT_EQ(from.handle, -1);
    EXPECT_GE(keep.handle, 0);
    EXPECT_EQ(keep.is_exclusive, 1);
    EXPECT_EQ(keep.owns_name, 1);
    EXPECT_STREQ(keep.name, keep_name.c_str());
    EXPECT_EQ(engine->exclusive, 0);
    // keep is still exclusive: another open is refused.
    Engine other;
    other->err_open = 0;
    file4 second;
    EXPECT_EQ(file4_open(&second, other, keep_name.c_str(), 0), 70);
    char buffer[12] = {};
    EXPECT_EQ(file4_read(&keep, 0, buffer, 11), 11u);
    EXPECT_STREQ(buffer, "replacement");
    file4_close(&keep);
}

TEST_F(File4, ReplaceRefusesReadOnlyFiles) {
    nqtest::write_file(path("K"), "old");
    nqtest::write_file(path("F"), "new");
    file4 keep, from;
    ASSERT_EQ(file4_open(&keep, engine, path("K").c_str(), 1), 0);
    engine->read_only = 1;
    ASSERT_EQ(file4_open(&from, engine, path("F").c_str(), 1), 0);
    engine->read_only = 0;
    EXPECT_EQ(file4_replace(&keep, &from), -930);
    EXPECT_EQ(boxes.last().text,
              "Error #: -930\nUnexpected Parameter\nAttempt to replace to a read-only file\n");
    engine->error_code = 0;
    EXPECT_EQ(nqtest::read_file(path("K")), "old");
    file4_close(&keep);
    file4_close(&from);
}

TEST(File4Death, ALengthThatCannotBeHadIsTheSevereMinus950) {
    EXPECT_EXIT(
        {
            engine4 *engine = engine4_new(1);
            file4 file;
            std::memset(&file, 0, sizeof(file));
            file.engine = engine;
            file.handle = 987654;  // no such handle
            file.on_disk = 1;
            file4_length(&file);
        },
        ::testing::ExitedWithCode(1), "Severe Error Number #: -950\nUnexpected Result\nu4filelength\\(\\)");
}

TEST(File4Death, AFileOfFourGigabytesLessOneHasNoLength) {
    TempDir dir;
    const std::string name = dir.file("HUGE.DBF");
    nqtest::write_file(name, "");
    ASSERT_EQ(::truncate(name.c_str(), 0xFFFFFFFFll), 0);  // sparse
    EXPECT_EXIT(
        {
            engine4 *engine = engine4_new(1);
            file4 file;
            file4_open(&file, engine, name.c_str(), 0);
            file4_length(&file);
        },
        ::testing::ExitedWithCode(1), "u4filelength");
}

TEST_F(File4, LengthsFromTwoGigabytesOnAreMinus30) {
    const std::string name = path("BIG.DBF");
    nqtest::write_file(name, "");
    ASSERT_EQ(::truncate(name.c_str(), 0x80000000ll), 0);  // sparse
    file4 file;
    ASSERT_EQ(file4_open(&file, engine, name.c_str(), 0), 0);
    EXPECT_EQ(file4_length(&file), -30);
    EXPECT_EQ(boxes.last().text, "Error #:  -30\nDetermining File Length\n" + name + "\n");
    engine->error_code = 0;
    file4_close(&file);
}

}  // namespace
