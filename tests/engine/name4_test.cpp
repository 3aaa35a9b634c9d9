// File names as the engine builds them.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "engine_test_support.h"

namespace {

std::string ext(const char *name, const char *extension, int force, int size = 64,
                int *result = nullptr) {
    char buffer[64];
    std::memset(buffer, '#', sizeof(buffer));
    std::strcpy(buffer, name);
    const int r = u4name_ext(buffer, size, extension, force);
    if (result) *result = r;
    return buffer;
}

TEST(U4nameExt, AddsTheExtensionWhenThereIsNone) {
    EXPECT_EQ(ext("pipe", "dbf", 0), "PIPE.DBF");
    EXPECT_EQ(ext("pipe", ".cdx", 0), "PIPE.CDX");
    EXPECT_EQ(ext("c:\\data\\pipe", "dbf", 0), "C:\\DATA\\PIPE.DBF");
}

TEST(U4nameExt, KeepsAnExtensionUnlessForced) {
    EXPECT_EQ(ext("pipe.txt", "dbf", 0), "PIPE.TXT");
    EXPECT_EQ(ext("pipe.txt", "dbf", 1), "PIPE.DBF");
    EXPECT_EQ(ext("a.b.c", "fpt", 1), "A.B.FPT");
    EXPECT_EQ(ext("pipe.txt", "", 1), "PIPE");
}

TEST(U4nameExt, OnlyTheLastComponentIsSearchedForAPoint) {
    EXPECT_EQ(ext("c:\\data.v1\\pipe", "dbf", 0), "C:\\DATA.V1\\PIPE.DBF");
    EXPECT_EQ(ext("d.x:pipe", "dbf", 0), "D.X:PIPE.DBF");
}

TEST(U4nameExt, CutsTrailingBlanks) {
    EXPECT_EQ(ext("pipe   ", "dbf", 0), "PIPE.DBF");
    EXPECT_EQ(ext("pipe.dbf  ", "dbf", 0), "PIPE.DBF");
}

TEST(U4nameExt, ANameThatWouldNotFitIsRefused) {
    int result = 0;
    EXPECT_EQ(ext("pipe", "dbf", 0, 8, &result), "PIPE");
    EXPECT_EQ(result, -1);
    EXPECT_EQ(ext("pipe", "dbf", 0, 9, &result), "PIPE.DBF");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(u4name_ext(nullptr, 10, "dbf", 0), -1);
    char name[4] = {'a', 'b', 'c', 'd'};  // no NUL within the size
    EXPECT_EQ(u4name_ext(name, 4, "x", 0), -1);
    EXPECT_STREQ(name, "ABC");
}

std::string piece(const char *name, int keep_path, int keep_extension, int size = 64) {
    char out[64];
    std::memset(out, '#', sizeof(out));
    u4name_piece(out, size, name, keep_path, keep_extension);
    return out;
}

TEST(U4namePiece, CutsANameToAPieceInUpperCase) {
    EXPECT_EQ(piece("c:\\data\\pipe.dbf", 0, 0), "PIPE");
    EXPECT_EQ(piece("c:\\data\\pipe.dbf", 0, 1), "PIPE.DBF");
    EXPECT_EQ(piece("c:\\data\\pipe.dbf", 1, 0), "C:\\DATA\\PIPE");
    EXPECT_EQ(piece("c:\\data\\pipe.dbf", 1, 1), "C:\\DATA\\PIPE.DBF");
    EXPECT_EQ(piece("c:pipe", 0, 0), "PIPE");
    EXPECT_EQ(piece("c:\\data.v1\\pipe", 0, 0), "PIPE");
    EXPECT_EQ(piece("pipeline_long_name.dbf", 0, 0, 11), "PIPELINE_L");
    EXPECT_EQ(piece("", 0, 0), "");
    char out[4];
    EXPECT_EQ(u4name_piece(out, 4, nullptr, 0, 0), -1);
    EXPECT_STREQ(out, "");
    EXPECT_EQ(u4name_piece(nullptr, 4, "x", 0, 0), -1);
}

TEST(U4namePath, GivesThePathWithItsLastSeparator) {
    char out[64];
    u4name_path(out, sizeof(out), "c:\\data\\pipe.dbf");
    EXPECT_STREQ(out, "c:\\data\\");
    u4name_path(out, sizeof(out), "c:pipe.dbf");
    EXPECT_STREQ(out, "c:");
    u4name_path(out, sizeof(out), "pipe.dbf");
    EXPECT_STREQ(out, "");
    u4name_path(out, 4, "c:\\data\\pipe.dbf");
    EXPECT_STREQ(out, "c:\\");
}

TEST(U4nameRetExt, GivesTheExtensionWithoutThePoint) {
    char out[16];
    EXPECT_EQ(u4name_ret_ext(out, sizeof(out), "c:\\data\\pipe.dbf"), 3);
    EXPECT_STREQ(out, "DBF");
    EXPECT_EQ(u4name_ret_ext(out, sizeof(out), "pipe"), 0);
    EXPECT_STREQ(out, "");
    // The piece is read with 13 as its limit: a longer name loses its extension.
    EXPECT_EQ(u4name_ret_ext(out, sizeof(out), "longfilename1.dbf"), 0);
    EXPECT_STREQ(out, "");
    EXPECT_EQ(u4name_ret_ext(out, sizeof(out), "longname.dbf"), 3);
    EXPECT_EQ(u4name_ret_ext(out, 2, "pipe.dbf"), 1);
    EXPECT_STREQ(out, "D");
}

std::string make(const char *drive, const char *path, const char *file, int size = 64) {
    char out[64];
    std::memset(out, '#', sizeof(out));
    u4name_make(out, size, drive, path, file);
    return out;
}

TEST(U4nameMake, JoinsDrivePathAndFile) {
    EXPECT_EQ(make("C:", "\\DATA", "PIPE.DBF"), "C:\\DATA\\PIPE.DBF");
    EXPECT_EQ(make("C:", "\\DATA\\", "PIPE.DBF"), "C:\\DATA\\PIPE.DBF");
    EXPECT_EQ(make("C:", "", "PIPE.DBF"), "C:PIPE.DBF");
    EXPECT_EQ(make(nullptr, "DATA", "PIPE.DBF"), "DATA\\PIPE.DBF");
    EXPECT_EQ(make(nullptr, nullptr, "PIPE.DBF"), "PIPE.DBF");
}

TEST(U4nameMake, TheDriveCountsOnlyWithTwoCharactersAndAFileWithoutDrive) {
    EXPECT_EQ(make("C:\\", "DATA", "PIPE.DBF"), "DATA\\PIPE.DBF");
    EXPECT_EQ(make("C", "DATA", "PIPE.DBF"), "DATA\\PIPE.DBF");
    EXPECT_EQ(make("C:", "", "D:PIPE.DBF"), "D:PIPE.DBF");
}

TEST(U4nameMake, TheResultIsCutToTheSize) {
    EXPECT_EQ(make("C:", "\\DATA", "PIPE.DBF", 6), "C:\\DA");
    EXPECT_EQ(u4name_make(nullptr, 5, "C:", "x", "y"), -1);
}

}  // namespace
