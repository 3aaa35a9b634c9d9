// Sequential readers and writers on 1024-byte boundaries.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "engine_test_support.h"
#include "plat_file.h"

namespace {

using enginetest::BoxCapture;
using enginetest::Engine;
using nqtest::TempDir;

std::string pattern(size_t length, unsigned seed) {
    std::string text(length, '\0');
    for (size_t i = 0; i < length; ++i) text[i] = static_cast<char>((i * 13 + seed) % 251);
    return text;
}

class Seq4 : public ::testing::Test {
protected:
    TempDir dir;
    Engine engine;
    std::string name = dir.file("SEQ.DBF");
    file4 file;
    void open_with(const std::string &content) {
        nqtest::write_file(name, content);
        ASSERT_EQ(file4_open(&file, engine, name.c_str(), 0), 0);
    }
    void TearDown() override { file4_close(&file); }
};

TEST_F(Seq4, TheReadersFirstTransferEndsOnAKilobyteBoundary) {
    open_with(pattern(10000, 1));
    std::vector<char> buffer(70000);
    seq_reader reader;
    ASSERT_EQ(file4_seq_read_init(&reader, &file, 100, buffer.data(), 4096), 0);
    EXPECT_EQ(reader.full_size, 4096u);
    EXPECT_EQ(reader.next_read, 4096u - 100u);
    EXPECT_EQ(reader.position, 100u);
    ASSERT_EQ(file4_seq_read_init(&reader, &file, 2048, buffer.data(), 4096), 0);
    EXPECT_EQ(reader.next_read, 4096u);  // on a boundary already
    ASSERT_EQ(file4_seq_read_init(&reader, &file, 0, buffer.data(), 5000), 0);
    EXPECT_EQ(reader.full_size, 4096u);  // whole kilobytes
    ASSERT_EQ(file4_seq_read_init(&reader, &file, 0, buffer.data(), 70000), 0);
    EXPECT_EQ(reader.full_size, 70000u & 0xFC00u);
    ASSERT_EQ(file4_seq_read_init(&reader, &file, 0, buffer.data(), 1000), 0);
    EXPECT_EQ(reader.buffer, nullptr);  // less than a kilobyte: unbuffered
}

TEST_F(Seq4, TheReaderHandsOutTheFileInAnyPieces) {
    const std::string content = pattern(10000, 2);
    open_with(content);
    char buffer[2048];
    seq_reader reader;
    ASSERT_EQ(file4_seq_read_init(&reader, &file, 100, buffer, sizeof(buffer)), 0);
    std::string got;
    const uint32_t pieces[] = {1, 7, 300, 1500, 2048, 5000, 3};
    const auto reads = nqplat::file_call_counts().reads;
    for (uint32_t piece : pieces) {
        std::string part(piece, '\0');
        const uint32_t n = file4_seq_read(&reader, part.data(), piece);
        got += part.substr(0, n);
    }
    EXPECT_EQ(got, content.substr(100, got.size()));
    EXPECT_EQ(got.size(), std::min<size_t>(8859, content.size() - 100));
    // Transfers of the buffer's size: 1948, then 2048 each.
    EXPECT_LE(nqplat::file_call_counts().reads - reads, 6u);
    std::string rest(5000, '\0');
    EXPECT_EQ(file4_seq_read(&reader, rest.data(), 5000), content.size() - 100 - got.size());
    EXPECT_EQ(file4_seq_read(&reader, rest.data(), 10), 0u);
}

TEST_F(Seq4, ReadAllIsMinus70ForAShortRead) {
    open_with(pattern(3000, 3));
    BoxCapture boxes;
    char buffer[1024];
    seq_reader reader;
    ASSERT_EQ(file4_seq_read_init(&reader, &file, 0, buffer, sizeof(buffer)), 0);
    char out[2000];
    EXPECT_EQ(file4_seq_read_all(&reader, out, 2000), 0);
    EXPECT_EQ(file4_seq_read_all(&reader, out, 2000), -70);
    EXPECT_EQ(boxes.last().text, "Error #:  -70\nReading File\nFile Name:\n" + name + "\n");
    engine->error_code = 0;
}

TEST_F(Seq4, WithoutABufferTheReaderReadsThroughTheFile) {
    const std::string content = pattern(3000, 4);
    open_with(content);
    seq_reader reader;
    ASSERT_EQ(file4_seq_read_init(&reader, &file, 10, nullptr, 0), 0);
    char out[100];
    EXPECT_EQ(file4_seq_read(&reader, out, 100), 100u);
    EXPECT_EQ(std::string(out, 100), content.substr(10, 100));
    EXPECT_EQ(reader.position, 110u);
}

TEST_F(Seq4, TheReaderSeesWhatTheCacheHeld) {
    open_with("");
    ASSERT_EQ(engine4_cache_start(engine), 0);
    file.is_exclusive = 1;
    ASSERT_EQ(file4_cache_type(&file, 1, 1), 0);
    const std::string content = pattern(5000, 5);
    ASSERT_EQ(file4_write(&file, 0, content.data(), 5000), 0);
    EXPECT_EQ(nqtest::read_file(name), "");
    char buffer[2048];
    seq_reader reader;
    ASSERT_EQ(file4_seq_read_init(&reader, &file, 0, buffer, sizeof(buffer)), 0);
    EXPECT_EQ(engine->cache.data_blocks.count, 0u);  // flushed and dropped
    std::string out(5000, '\0');
    EXPECT_EQ(file4_seq_read_all(&reader, out.data(), 5000), 0);
    EXPECT_EQ(out, content);
}

TEST_F(Seq4, TheWriterWritesInWindowsAndFlushesTheRest) {
    open_with("");
    char buffer[2048];
    seq_writer writer;
    ASSERT_EQ(file4_seq_write_init(&writer, &file, 100, buffer, sizeof(buffer)), 0);
    EXPECT_EQ(writer.full_size, 2048u);
    EXPECT_EQ(writer.write_size, 2048u - 100u);
    EXPECT_EQ(writer.room, 2048u - 100u);
    const std::string content = pattern(7000, 6);
    size_t at = 0;
    for (uint32_t piece : {1u, 999u, 3000u, 5u, 2995u}) {
        ASSERT_EQ(file4_seq_write(&writer, content.data() + at, piece), 0);
        at += piece;
    }
    EXPECT_EQ(writer.position, 100u + 1948u + 2048u + 2048u);  // three windows went out
    ASSERT_EQ(file4_seq_write_flush(&writer), 0);
    EXPECT_EQ(writer.position, 7100u);
    EXPECT_EQ(writer.room, 2048u);
    EXPECT_EQ(nqtest::read_file(name), std::string(100, '\0') + content);
    ASSERT_EQ(file4_seq_fill(&writer, 1500, 'z'), 0);
    ASSERT_EQ(file4_seq_write_flush(&writer), 0);
    EXPECT_EQ(nqtest::read_file(name), std::string(100, '\0') + content + std::string(1500, 'z'));
    EXPECT_EQ(file4_seq_write_flush(&writer), 0);  // nothing left
}

TEST_F(Seq4, WithoutABufferTheWriterWritesThroughTheFile) {
    open_with("");
    seq_writer writer;
    ASSERT_EQ(file4_seq_write_init(&writer, &file, 0, nullptr, 0), 0);
    ASSERT_EQ(file4_seq_write(&writer, "abc", 3), 0);
    ASSERT_EQ(file4_seq_fill(&writer, 2, '.'), 0);
    EXPECT_EQ(writer.position, 5u);
    EXPECT_EQ(file4_seq_write_flush(&writer), 0);
    EXPECT_EQ(nqtest::read_file(name), "abc..");
}

TEST_F(Seq4, ABufferedDelayedFileTakesTheWindowsIntoTheCache) {
    open_with("");
    ASSERT_EQ(engine4_cache_start(engine), 0);
    file.is_exclusive = 1;
    ASSERT_EQ(file4_cache_type(&file, 1, 2), 0);
    char buffer[1024];
    seq_writer writer;
    ASSERT_EQ(file4_seq_write_init(&writer, &file, 0, buffer, sizeof(buffer)), 0);
    const std::string content = pattern(3000, 7);
    ASSERT_EQ(file4_seq_write(&writer, content.data(), 3000), 0);
    ASSERT_EQ(file4_seq_write_flush(&writer), 0);
    EXPECT_EQ(nqtest::read_file(name), "");
    EXPECT_EQ(file4_length(&file), 3000);
    ASSERT_EQ(file4_flush(&file, 0), 0);
    EXPECT_EQ(nqtest::read_file(name), content);
}

TEST_F(Seq4, FailuresOfTheWriter) {
    open_with("");
    BoxCapture boxes;
    char buffer[1024];
    seq_writer writer;
    ASSERT_EQ(file4_seq_write_init(&writer, &file, 0, buffer, sizeof(buffer)), 0);
    ASSERT_EQ(file4_seq_write(&writer, "abc", 3), 0);
    const int32_t handle = file.handle;
    file.handle = 565656;
    EXPECT_EQ(file4_seq_write_flush(&writer), -120);
    EXPECT_EQ(boxes.last().text, "Error #: -120\nWriting to File\n" + name + "\n");
    file.handle = handle;
    engine->error_code = -1;
    EXPECT_EQ(file4_seq_write(&writer, "abc", 3), -1);
    EXPECT_EQ(file4_seq_write_flush(&writer), -1);
    EXPECT_EQ(file4_seq_fill(&writer, 3, 'x'), -1);
    char out[4];
    seq_reader reader;
    std::memset(&reader, 0, sizeof(reader));
    reader.file = &file;
    EXPECT_EQ(file4_seq_read(&reader, out, 3), 0u);
    EXPECT_EQ(file4_seq_read_all(&reader, out, 3), -1);
    engine->error_code = 0;
    EXPECT_EQ(file4_seq_write_init(nullptr, &file, 0, buffer, 1024), -1);
    EXPECT_EQ(file4_seq_read_init(nullptr, &file, 0, buffer, 1024), -1);
    EXPECT_EQ(file4_seq_write_init(&writer, nullptr, 0, buffer, 1024), -1);
    EXPECT_EQ(file4_seq_read(nullptr, out, 3), 0u);
    EXPECT_EQ(file4_seq_write(nullptr, "a", 1), -1);
}

TEST_F(Seq4, AReadOnlyFileRefusesTheWritersFlush) {
    nqtest::write_file(name, "abc");
    engine->read_only = 1;
    ASSERT_EQ(file4_open(&file, engine, name.c_str(), 0), 0);
    BoxCapture boxes;
    char buffer[1024];
    seq_writer writer;
    ASSERT_EQ(file4_seq_write_init(&writer, &file, 0, buffer, sizeof(buffer)), 0);
    ASSERT_EQ(file4_seq_write(&writer, "x", 1), 0);
    EXPECT_EQ(file4_seq_write_flush(&writer), -930);
    engine->error_code = 0;
    EXPECT_EQ(nqtest::read_file(name), "abc");
}

TEST_F(Seq4, AReadBeyondTwoGigabytesIsMinus70) {
    open_with("abc");
    BoxCapture boxes;
    char buffer[1024];
    seq_reader reader;
    ASSERT_EQ(file4_seq_read_init(&reader, &file, 0x80000000u, buffer, sizeof(buffer)), 0);
    char out[4];
    EXPECT_EQ(file4_seq_read(&reader, out, 4), 0u);
    EXPECT_EQ(engine->error_code, -70);
    engine->error_code = 0;
}

}  // namespace
