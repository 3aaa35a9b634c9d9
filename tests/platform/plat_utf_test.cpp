// UTF-8 <-> UTF-16 conversion of the platform layer.
#include <gtest/gtest.h>

#include <string>

#include "plat_utf.h"

namespace {

using nqplat::utf16_to_utf8;
using nqplat::utf8_to_utf16;

TEST(PlatUtf, EncodesAtEachLengthBoundary) {
    EXPECT_EQ(utf16_to_utf8(u"\u007f"), "\x7f");
    EXPECT_EQ(utf16_to_utf8(u"\u0080"), "\xc2\x80");
    EXPECT_EQ(utf16_to_utf8(u"\u07ff"), "\xdf\xbf");
    EXPECT_EQ(utf16_to_utf8(u"\u0800"), "\xe0\xa0\x80");
    EXPECT_EQ(utf16_to_utf8(u"\uffff"), "\xef\xbf\xbf");
    EXPECT_EQ(utf16_to_utf8(u"\U00010000"), "\xf0\x90\x80\x80");
    EXPECT_EQ(utf16_to_utf8(u"\U0010ffff"), "\xf4\x8f\xbf\xbf");
}

TEST(PlatUtf, DecodesAtEachLengthBoundary) {
    EXPECT_EQ(utf8_to_utf16("\x7f"), u"\u007f");
    EXPECT_EQ(utf8_to_utf16("\xc2\x80"), u"\u0080");
    EXPECT_EQ(utf8_to_utf16("\xdf\xbf"), u"\u07ff");
    EXPECT_EQ(utf8_to_utf16("\xe0\xa0\x80"), u"\u0800");
    EXPECT_EQ(utf8_to_utf16("\xef\xbf\xbf"), u"\uffff");
    EXPECT_EQ(utf8_to_utf16("\xf0\x90\x80\x80"), u"\U00010000");
    EXPECT_EQ(utf8_to_utf16("\xf4\x8f\xbf\xbf"), u"\U0010ffff");
}

TEST(PlatUtf, NullTextGivesEmpty) {
    EXPECT_EQ(utf16_to_utf8(nullptr), "");
    EXPECT_EQ(utf16_to_utf8(nullptr, 5), "");
    EXPECT_EQ(utf16_to_utf8(u"", 0), "");
}

TEST(PlatUtf, CountedFormStopsAtItsLengthAndKeepsNul) {
    const char16_t text[] = {u'a', 0, u'b', u'c'};
    EXPECT_EQ(utf16_to_utf8(text, 3), std::string("a\0b", 3));
    // A pair cut by the length is a lone high surrogate.
    const char16_t pair[] = {0xD83D, 0xDE00};
    EXPECT_EQ(utf16_to_utf8(pair, 1), "\xed\xa0\xbd");
    EXPECT_EQ(utf16_to_utf8(pair, 2), "\xf0\x9f\x98\x80");
}

TEST(PlatUtf, OverlongFormsAreBytes) {
    EXPECT_EQ(utf8_to_utf16("\xc1\xbf"), (std::u16string{0xC1, 0xBF}));
    EXPECT_EQ(utf8_to_utf16("\xe0\x80\x80"), (std::u16string{0xE0, 0x80, 0x80}));
    EXPECT_EQ(utf8_to_utf16("\xf0\x8f\xbf\xbf"), (std::u16string{0xF0, 0x8F, 0xBF, 0xBF}));
}

TEST(PlatUtf, LeadBytesThatBeginNothingAreBytes) {
    EXPECT_EQ(utf8_to_utf16("\xf8\x88\x80\x80\x80"), (std::u16string{0xF8, 0x88, 0x80, 0x80, 0x80}));
    EXPECT_EQ(utf8_to_utf16("\xfe\xff"), (std::u16string{0xFE, 0xFF}));
    EXPECT_EQ(utf8_to_utf16("\xf5\x80\x80\x80"), (std::u16string{0xF5, 0x80, 0x80, 0x80}));
}

TEST(PlatUtf, SequenceCutByTheEndOrByAnotherByteIsBytes) {
    EXPECT_EQ(utf8_to_utf16("\xc3"), (std::u16string{0xC3}));
    EXPECT_EQ(utf8_to_utf16("\xe2\x82x"), (std::u16string{0xE2, 0x82, u'x'}));
    EXPECT_EQ(utf8_to_utf16("\xf0\x9f\x98"), (std::u16string{0xF0, 0x9F, 0x98}));
    // The byte after a broken lead starts afresh: here it begins a valid sequence.
    EXPECT_EQ(utf8_to_utf16("\xe2\xc3\xa9"), (std::u16string{0xE2, 0xE9}));
}

TEST(PlatUtf, EncodedSurrogatesComeBackAsUnits) {
    EXPECT_EQ(utf8_to_utf16("\xed\xa0\x80"), (std::u16string{0xD800}));
    EXPECT_EQ(utf8_to_utf16("\xed\xbf\xbf"), (std::u16string{0xDFFF}));
    // A pair written as two three-byte forms reads as the pair, and is written back as four bytes.
    const std::u16string pair = utf8_to_utf16("\xed\xa0\xbd\xed\xb8\x80");
    EXPECT_EQ(pair, u"\U0001F600");
    EXPECT_EQ(utf16_to_utf8(pair.c_str()), "\xf0\x9f\x98\x80");
}

TEST(PlatUtf, EveryUnitSurvivesTheRoundTrip) {
    std::u16string all;
    for (char32_t u = 1; u <= 0xFFFF; ++u) all.push_back(static_cast<char16_t>(u));
    EXPECT_EQ(utf8_to_utf16(utf16_to_utf8(all.data(), all.size())), all);
}

}  // namespace
