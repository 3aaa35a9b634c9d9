// Number text in fixed widths, and the string helpers.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include "engine_test_support.h"

namespace {

std::string ltoa(int32_t value, int width) {
    char out[40];
    std::memset(out, '#', sizeof(out));
    c4ltoa(value, out, width);
    const int w = width < 0 ? -width : width;
    EXPECT_EQ(out[w], '#') << "wrote past the width";
    return std::string(out, static_cast<size_t>(w));
}

std::string dtoa(double value, int width, int decimals) {
    char out[80];
    std::memset(out, '#', sizeof(out));
    c4dtoa(value, out, width, decimals);
    EXPECT_EQ(out[width > 0 ? width : 0], '#') << "wrote past the width";
    return std::string(out, static_cast<size_t>(width > 0 ? width : 0));
}

TEST(C4ltoa, PositiveWidthIsRightJustifiedWithBlanks) {
    EXPECT_EQ(ltoa(7, 3), "  7");
    EXPECT_EQ(ltoa(0, 3), "  0");
    EXPECT_EQ(ltoa(100, 5), "  100");
    EXPECT_EQ(ltoa(123, 3), "123");
    EXPECT_EQ(ltoa(-920, 4), "-920");
    EXPECT_EQ(ltoa(-20, 4), " -20");
}

TEST(C4ltoa, NegativeWidthIsZeroFilled) {
    EXPECT_EQ(ltoa(7, -3), "007");
    EXPECT_EQ(ltoa(0, -2), "00");
    EXPECT_EQ(ltoa(1998, -4), "1998");
}

TEST(C4ltoa, DigitsThatDoNotFitGiveAsterisks) {
    EXPECT_EQ(ltoa(12345, 4), "****");
    EXPECT_EQ(ltoa(12345, -4), "****");
    EXPECT_EQ(ltoa(-1020, 4), "****");
}

TEST(C4ltoa, ANegativeValueNeedsABlankForItsSign) {
    EXPECT_EQ(ltoa(-12, 2), "**");
    EXPECT_EQ(ltoa(-12, 4), " -12");
    EXPECT_EQ(ltoa(-12, 3), "-12");
    // With a negative width there is never a blank: always asterisks.
    EXPECT_EQ(ltoa(-12, -4), "****");
    EXPECT_EQ(ltoa(-1, -5), "*****");
}

TEST(C4ltoa, ExtremesAndZeroWidth) {
    EXPECT_EQ(ltoa(std::numeric_limits<int32_t>::min(), 11), "-2147483648");
    EXPECT_EQ(ltoa(std::numeric_limits<int32_t>::max(), 10), "2147483647");
    EXPECT_EQ(ltoa(std::numeric_limits<int32_t>::min(), 10), "**********");
    char out[2] = {'#', '#'};
    c4ltoa(5, out, 0);
    EXPECT_EQ(out[0], '#');
    c4ltoa(5, nullptr, 3);
}

TEST(C4dtoa, FixedWidthWithDecimals) {
    EXPECT_EQ(dtoa(3.14159, 8, 3), "   3.142");
    EXPECT_EQ(dtoa(-3.14159, 8, 3), "  -3.142");
    EXPECT_EQ(dtoa(123.456, 8, 2), "  123.46");
    EXPECT_EQ(dtoa(0.0, 5, 2), " 0.00");
    EXPECT_EQ(dtoa(0.05, 4, 2), "0.05");
    EXPECT_EQ(dtoa(-0.05, 5, 2), "-0.05");
    EXPECT_EQ(dtoa(0.001, 6, 2), "  0.00");
    EXPECT_EQ(dtoa(9.96, 5, 1), " 10.0");
}

TEST(C4dtoa, WithoutDecimals) {
    EXPECT_EQ(dtoa(1234, 4, 0), "1234");
    EXPECT_EQ(dtoa(-123, 4, 0), "-123");
    EXPECT_EQ(dtoa(42, 6, -3), "    42");
    EXPECT_EQ(dtoa(0, 3, 0), "  0");
    EXPECT_EQ(dtoa(0.4, 3, 0), "  0");
}

TEST(C4dtoa, AMinusHalfKeepsItsZeroLeftOfThePointAndTheSignLeftOfIt) {
    EXPECT_EQ(dtoa(-0.5, 4, 1), "-0.5");
    EXPECT_EQ(dtoa(0.5, 4, 1), " 0.5");
    EXPECT_EQ(dtoa(-0.5, 6, 1), "  -0.5");
}

TEST(C4dtoa, WithOneIntegerColumnTheSignTakesItsPlace) {
    EXPECT_EQ(dtoa(-0.05, 4, 2), "-.05");
    EXPECT_EQ(dtoa(0.05, 4, 2), "0.05");
}

TEST(C4dtoa, OverflowFillsWithAsterisks) {
    EXPECT_EQ(dtoa(123.4, 3, 2), "***");  // decimals cut to 2: no room for the integer part
    EXPECT_EQ(dtoa(12345, 4, 0), "****");
    EXPECT_EQ(dtoa(-1234, 4, 0), "****");
    EXPECT_EQ(dtoa(-1.5, 4, 2), "****");  // the sign would stand left of the start
    EXPECT_EQ(dtoa(1e30, 10, 2), "**********");
    EXPECT_EQ(dtoa(std::numeric_limits<double>::infinity(), 5, 1), "*****");
    EXPECT_EQ(dtoa(std::nan(""), 5, 1), "*****");
}

TEST(C4dtoa, DecimalsAreCutToFifteenAndToTheWidth) {
    EXPECT_EQ(dtoa(0.25, 20, 18), "   0.250000000000000");
    EXPECT_EQ(dtoa(1.0 / 3.0, 20, 15), "   0.333333333333333");
    EXPECT_EQ(dtoa(0.5, 2, 5), ".5");
}

TEST(C4dtoa, LargeValuesAndZeroWidth) {
    EXPECT_EQ(dtoa(1e20, 25, 2), " 100000000000000000000.00");
    EXPECT_EQ(dtoa(-2.5e-7, 12, 8), " -0.00000025");
    char out[2] = {'#', '#'};
    c4dtoa(5, out, 0, 2);
    EXPECT_EQ(out[0], '#');
    c4dtoa(5, nullptr, 3, 0);
}

TEST(C4atod, ReadsAtMost49Characters) {
    EXPECT_DOUBLE_EQ(c4atod("123.45", 6), 123.45);
    EXPECT_DOUBLE_EQ(c4atod("123.45", 3), 123.0);
    EXPECT_DOUBLE_EQ(c4atod("  -7.5xyz", 9), -7.5);
    const std::string sixty(60, '1');
    EXPECT_DOUBLE_EQ(c4atod(sixty.c_str(), 60), std::atof(sixty.substr(0, 49).c_str()));
    const std::string tail = std::string(49, ' ') + "5";
    EXPECT_EQ(c4atod(tail.c_str(), 50), 0.0);  // the 5 lies past the 49th character
    EXPECT_EQ(c4atod("12", -1), 0.0);
    EXPECT_EQ(c4atod(nullptr, 5), 0.0);
    double out = 0;
    c4atod_to("2.5", 3, &out);
    EXPECT_EQ(out, 2.5);
    c4atod_to("2.5", 3, nullptr);
}

TEST(C4atoi, ReadsAtMost127Characters) {
    EXPECT_EQ(c4atoi(" 42abc", 3), 42);
    EXPECT_EQ(c4atoi("1998", 4), 1998);
    EXPECT_EQ(c4atoi("19980304", 4), 1998);
    EXPECT_EQ(c4atoi("-15", 3), -15);
    EXPECT_EQ(c4atoi("  ", 2), 0);
    const std::string long_text = std::string(127, '0') + "7";
    EXPECT_EQ(c4atoi(long_text.c_str(), 128), 0);
    EXPECT_EQ(c4atol(long_text.c_str(), 128), 0);
    EXPECT_EQ(c4atol("0304", 2), 3);
    EXPECT_EQ(c4atoi(nullptr, 3), 0);
}

TEST(C4atoi, OverflowIsHeldToTheLimits) {
    EXPECT_EQ(c4atoi("99999999999", 11), std::numeric_limits<int32_t>::max());
    EXPECT_EQ(c4atol("-99999999999", 12), std::numeric_limits<int32_t>::min());
}

TEST(C4trimLen, CutsTrailingBlanksAndNuls) {
    char text[16] = "AB  ";
    EXPECT_EQ(c4trim_len(text, sizeof(text)), 2);
    EXPECT_STREQ(text, "AB");
    char mixed[8] = {'A', ' ', '\0', ' ', '\0', 'x', 'y', 'z'};
    EXPECT_EQ(c4trim_len(mixed, 8), 1);
    EXPECT_STREQ(mixed, "A");
}

TEST(C4trimLen, WithoutANulTheLastPlaceBecomesOne) {
    char text[3] = {'A', 'B', 'C'};
    EXPECT_EQ(c4trim_len(text, 3), 2);
    EXPECT_EQ(text[2], '\0');
    char blanks[4] = {'A', ' ', ' ', ' '};
    EXPECT_EQ(c4trim_len(blanks, 4), 1);
    EXPECT_EQ(std::string(blanks), "A");
}

TEST(C4trimLen, OneCharacterAlwaysRemains) {
    char text[8] = "    ";
    EXPECT_EQ(c4trim_len(text, sizeof(text)), 1);
    EXPECT_STREQ(text, " ");
    char empty[4] = "";
    EXPECT_EQ(c4trim_len(empty, 4), 0);
    EXPECT_EQ(c4trim_len(text, 0), 0);
    EXPECT_EQ(c4trim_len(nullptr, 4), 0);
}

TEST(C4case, UpperAndLowerInPlace) {
    char text[] = "Pipe_42.dbf";
    c4upper(text);
    EXPECT_STREQ(text, "PIPE_42.DBF");
    c4lower(text);
    EXPECT_STREQ(text, "pipe_42.dbf");
    c4upper(nullptr);
    c4lower(nullptr);
}

TEST(C4strcpy, CopiesAtMostSizeLessOne) {
    char out[10];
    std::memset(out, '#', sizeof(out));
    EXPECT_EQ(c4strcpy(out, "abc", 10), 3);
    EXPECT_STREQ(out, "abc");
    EXPECT_EQ(out[4], '#');  // the copy ends with the source's NUL
    std::memset(out, '#', sizeof(out));
    EXPECT_EQ(c4strcpy(out, "abcdef", 4), 3);
    EXPECT_STREQ(out, "abc");
    EXPECT_EQ(out[4], '#');
    EXPECT_EQ(c4strcpy(out, "abc", 1), 0);
    EXPECT_STREQ(out, "");
    out[0] = '#';
    EXPECT_EQ(c4strcpy(out, "abc", 0), 0);
    EXPECT_EQ(out[0], '#');
    EXPECT_EQ(c4strcpy(out, nullptr, 5), 0);
    EXPECT_STREQ(out, "");
    EXPECT_EQ(c4strcpy(nullptr, "abc", 5), 0);
}

std::string picture_map(const char *from, const char *to_picture, const char *from_picture) {
    char to[32];
    std::memset(to, '#', sizeof(to));
    c4picture_map(to, from, to_picture, from_picture);
    return to;
}

TEST(C4pictureMap, PlacesEachRunAtItsFirstPlace) {
    EXPECT_EQ(picture_map("1234", "XX-YY", "XXYY"), "12-34");
    EXPECT_EQ(picture_map("1234", "YY-XX", "XXYY"), "34-12");
    // Characters of from_picture missing in to_picture skip a character of from.
    EXPECT_EQ(picture_map("1234", "YY", "XXYY"), "34");
    // A run longer than its place keeps its first characters.
    EXPECT_EQ(picture_map("98", "Y/M", "YY"), "9/M");
    // Only the first run of the character is filled.
    EXPECT_EQ(picture_map("12", "YY-YY", "YY"), "12-YY");
    EXPECT_EQ(picture_map("12", "", "YY"), "");
    c4picture_map(nullptr, "1", "X", "X");
}

TEST(U4nameChar, LettersDigitsAndUnderscore) {
    for (int c = 0; c < 256; ++c) {
        const bool expected = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                              (c >= '0' && c <= '9') || c == '_';
        EXPECT_EQ(u4name_char(c) != 0, expected) << c;
    }
}

TEST(U4log2, CountsTheHalvings) {
    EXPECT_EQ(u4log2(0), 0u);
    EXPECT_EQ(u4log2(1), 0u);
    EXPECT_EQ(u4log2(2), 1u);
    EXPECT_EQ(u4log2(8), 3u);
    EXPECT_EQ(u4log2(9), 3u);
    EXPECT_EQ(u4log2(1024), 10u);
    EXPECT_EQ(u4log2(1023), 9u);
}

}  // namespace
