// Encoding conversions and UTF-8 output of the text kit.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cwchar>
#include <string>

#include "test_support.h"
#include "text/nq_text.h"

namespace {

using nqt::wchar;

int call_vprint(const wchar *fmt, ...) {
    va_list args;
    va_start(args, fmt);
    const int n = nqt::vprint(fmt, args);
    va_end(args);
    return n;
}

int call_vfprint(std::FILE *stream, const wchar *fmt, ...) {
    va_list args;
    va_start(args, fmt);
    const int n = nqt::vfprint(stream, fmt, args);
    va_end(args);
    return n;
}

// ---- UTF-8 ---------------------------------------------------------------------------------

TEST(TextUtf8, EncodesEachRangeOfCodePoints) {
    EXPECT_EQ(nqt::to_utf8(u"abc"), "abc");
    EXPECT_EQ(nqt::to_utf8(u"\u00e9"), "\xc3\xa9");
    EXPECT_EQ(nqt::to_utf8(u"\u20ac"), "\xe2\x82\xac");
    EXPECT_EQ(nqt::to_utf8(u"\uFFFF"), "\xef\xbf\xbf");
    EXPECT_EQ(nqt::to_utf8(u"\U0001F600"), "\xf0\x9f\x98\x80");
    EXPECT_EQ(nqt::to_utf8(u"\U0010FFFF"), "\xf4\x8f\xbf\xbf");
}

TEST(TextUtf8, NullAndEmptyGiveEmpty) {
    EXPECT_EQ(nqt::to_utf8(static_cast<const wchar *>(nullptr)), "");
    EXPECT_EQ(nqt::to_utf8(u""), "");
    EXPECT_EQ(nqt::to_utf8(std::u16string_view()), "");
    EXPECT_EQ(nqt::from_utf8(""), u"");
}

TEST(TextUtf8, ViewKeepsEmbeddedNul) {
    const std::u16string s(u"a\0b", 3);
    EXPECT_EQ(nqt::to_utf8(std::u16string_view(s)), std::string("a\0b", 3));
    EXPECT_EQ(nqt::from_utf8(std::string_view("a\0b", 3)), s);
}

TEST(TextUtf8, RoundTripsIncludingSurrogatePairs) {
    const std::u16string texts[] = {u"plain", u"caf\u00e9 \u20ac", u"\U0001F600\U0001F601x", u"\U00010000",
                                    u"\U0010FFFF", u"\u0080\u07FF\u0800"};
    for (const auto &t : texts) {
        EXPECT_EQ(nqt::from_utf8(nqt::to_utf8(t)), t);
        EXPECT_EQ(nqt::from_utf8(nqt::to_utf8(t.c_str())), t);
    }
}

TEST(TextUtf8, UnpairedSurrogatesAreWrittenAndReadBackUnchanged) {
    const std::u16string lone_high(1, 0xD800);
    EXPECT_EQ(nqt::to_utf8(lone_high), "\xed\xa0\x80");
    EXPECT_EQ(nqt::from_utf8("\xed\xa0\x80"), lone_high);
    const std::u16string lone_low(1, 0xDC00);
    EXPECT_EQ(nqt::to_utf8(lone_low), "\xed\xb0\x80");
    const std::u16string cases[] = {
        lone_high, lone_low,
        std::u16string{u'a', 0xD83D, u'b'},            // high in the middle
        std::u16string{u'a', 0xD83D},                  // high at the end
        std::u16string{0xDE00, 0xD83D},                // low before high is no pair
        std::u16string{0xD83D, 0xD83D, 0xDE00},        // a high, then a pair
    };
    for (const auto &t : cases) EXPECT_EQ(nqt::from_utf8(nqt::to_utf8(t)), t);
}

TEST(TextUtf8, InvalidBytesBecomeUnitsOfTheSameValue) {
    EXPECT_EQ(nqt::from_utf8("caf\xe9"), u"caf\u00e9");  // Latin-1 reads sensibly
    EXPECT_EQ(nqt::from_utf8("\xff\xfe"), (std::u16string{0xFF, 0xFE}));
    EXPECT_EQ(nqt::from_utf8("\xc0\xaf"), (std::u16string{0xC0, 0xAF}));               // overlong
    EXPECT_EQ(nqt::from_utf8("\xe2\x82"), (std::u16string{0xE2, 0x82}));               // cut short
    EXPECT_EQ(nqt::from_utf8("\xf4\x90\x80\x80"), (std::u16string{0xF4, 0x90, 0x80, 0x80}));  // past U+10FFFF
    EXPECT_EQ(nqt::from_utf8("\x80x"), (std::u16string{0x80, u'x'}));                 // lone continuation
    EXPECT_EQ(nqt::from_utf8("\xe9t\xc3\xa9"), u"\u00e9t\u00e9");                   // mixed
}

TEST(TextBytes, EachByteBecomesTheUnitOfTheSameValue) {
    EXPECT_EQ(nqt::from_bytes("abc"), u"abc");
    EXPECT_EQ(nqt::from_bytes("\xc3\xa9"), (std::u16string{0xC3, 0xA9}));  // no UTF-8 decoding
    EXPECT_EQ(nqt::from_bytes(std::string_view("\0\xff", 2)), (std::u16string{0, 0xFF}));
    EXPECT_EQ(nqt::from_bytes(""), u"");
}

TEST(TextBytes, UnitsAboveFfBecomeQuestionMarks) {
    EXPECT_EQ(nqt::to_bytes(u"abc"), "abc");
    EXPECT_EQ(nqt::to_bytes(u"a\u00ff\u0100\u20ac"), "a\xff??");
    EXPECT_EQ(nqt::to_bytes(u"\U0001F600"), "??");
    EXPECT_EQ(nqt::to_bytes(nullptr), "");
    std::string all;
    for (int b = 1; b < 256; ++b) all.push_back(static_cast<char>(b));
    EXPECT_EQ(nqt::to_bytes(nqt::from_bytes(all).c_str()), all);
}

// ---- output --------------------------------------------------------------------------------

TEST(TextPrint, WritesUtf8ToStandardOutputAndCountsUnits) {
    nqtest::CaptureFd capture(1);
    const int n = nqt::print(u"%s=%d \U0001F600\n", u"caf\u00e9", 5);
    const std::string out = capture.stop();
    EXPECT_EQ(out, "caf\xc3\xa9=5 \xf0\x9f\x98\x80\n");
    EXPECT_EQ(n, 10);
}

TEST(TextPrint, LeavesStandardOutputByteOriented) {
    nqtest::CaptureFd capture(1);
    nqt::print(u"wide ");
    std::printf("narrow\n");
    const std::string out = capture.stop();
    EXPECT_EQ(out, "wide narrow\n");
    EXPECT_LT(std::fwide(stdout, 0), 0);
}

TEST(TextPrint, VprintTakesTheCallersList) {
    nqtest::CaptureFd capture(1);
    EXPECT_EQ(call_vprint(u"[%5.2f]", 3.14159), 7);
    EXPECT_EQ(capture.stop(), "[ 3.14]");
}

TEST(TextPrint, NullFormatWritesNothingAndFails) {
    nqtest::CaptureFd capture(1);
    EXPECT_EQ(nqt::print(nullptr), -1);
    EXPECT_EQ(capture.stop(), "");
}

TEST(TextPrint, EmptyResultWritesNothing) {
    nqtest::CaptureFd capture(1);
    EXPECT_EQ(nqt::print(u""), 0);
    EXPECT_EQ(capture.stop(), "");
}

TEST(TextFprint, WritesUtf8ToTheStream) {
    nqtest::TempDir dir;
    const std::string path = dir.file("out.txt");
    std::FILE *f = std::fopen(path.c_str(), "wb");
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(nqt::fprint(f, u"%s (%d) %s\n", u"a.cpp", 12, u"\u00e9"), 13);
    EXPECT_EQ(call_vfprint(f, u"%hs|%c", "x", 0x20AC), 3);
    std::fclose(f);
    EXPECT_EQ(nqtest::read_file(path), "a.cpp (12) \xc3\xa9\nx|\xe2\x82\xac");
}

TEST(TextFprint, StandardErrorIsAStreamLikeAnother) {
    nqtest::CaptureFd capture(2);
    EXPECT_EQ(nqt::fprint(stderr, u"err %d", 1), 5);
    EXPECT_EQ(capture.stop(), "err 1");
}

TEST(TextFprint, NullStreamOrFormatFails) {
    EXPECT_EQ(nqt::fprint(nullptr, u"x"), -1);
    nqtest::TempDir dir;
    std::FILE *f = std::fopen(dir.file("o").c_str(), "wb");
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(nqt::fprint(f, nullptr), -1);
    std::fclose(f);
}

TEST(TextFprint, StreamThatRefusesWritesFails) {
    nqtest::TempDir dir;
    const std::string path = dir.file("ro.txt");
    nqtest::write_file(path, "keep");
    std::FILE *f = std::fopen(path.c_str(), "rb");
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(nqt::fprint(f, u"more"), -1);
    EXPECT_EQ(nqt::put(u"more", f), -1);
    std::fclose(f);
    EXPECT_EQ(nqtest::read_file(path), "keep");
}

TEST(TextPut, WritesTheTextAsUtf8AndCountsUnits) {
    nqtest::TempDir dir;
    const std::string path = dir.file("put.txt");
    std::FILE *f = std::fopen(path.c_str(), "wb");
    ASSERT_NE(f, nullptr);
    EXPECT_EQ(nqt::put(u"x\U0001F600%d", f), 5);  // no formatting
    EXPECT_EQ(nqt::put(u"", f), 0);
    std::fclose(f);
    EXPECT_EQ(nqtest::read_file(path), "x\xf0\x9f\x98\x80%d");
}

TEST(TextPut, NullTextOrStreamFails) {
    EXPECT_EQ(nqt::put(u"x", nullptr), -1);
    nqtest::CaptureFd capture(1);
    EXPECT_EQ(nqt::put(nullptr, stdout), -1);
    EXPECT_EQ(nqt::put(u"ok", stdout), 2);
    EXPECT_EQ(capture.stop(), "ok");
}

}  // namespace
