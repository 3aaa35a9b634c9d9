// Numbers read from UTF-16 text: toi, tol, tof, tol_end, tod_end.
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cmath>

#include "text/nq_text.h"

namespace {

using nqt::wchar;

TEST(TextToi, ReadsBlanksSignAndDigits) {
    EXPECT_EQ(nqt::toi(u"42"), 42);
    EXPECT_EQ(nqt::toi(u"  42"), 42);
    EXPECT_EQ(nqt::toi(u"\t\n\v\f\r 42"), 42);
    EXPECT_EQ(nqt::toi(u"+7"), 7);
    EXPECT_EQ(nqt::toi(u"-7"), -7);
    EXPECT_EQ(nqt::toi(u"007"), 7);
}

TEST(TextToi, StopsAtTheFirstNonDigit) {
    EXPECT_EQ(nqt::toi(u"12abc"), 12);
    EXPECT_EQ(nqt::toi(u"12 34"), 12);
    EXPECT_EQ(nqt::toi(u"1e3"), 1);
    EXPECT_EQ(nqt::toi(u"3.9"), 3);
    EXPECT_EQ(nqt::toi(u"0x10"), 0);
}

TEST(TextToi, NoDigitsGiveZero) {
    EXPECT_EQ(nqt::toi(u""), 0);
    EXPECT_EQ(nqt::toi(u"   "), 0);
    EXPECT_EQ(nqt::toi(u"abc"), 0);
    EXPECT_EQ(nqt::toi(u"-"), 0);
    EXPECT_EQ(nqt::toi(u"- 5"), 0);   // no blank between sign and digits
    EXPECT_EQ(nqt::toi(u"+-5"), 0);   // one sign only
    EXPECT_EQ(nqt::toi(u"  -0"), 0);
    EXPECT_EQ(nqt::toi(nullptr), 0);
}

TEST(TextToi, FullWidthDigitsAreNotDigits) {
    EXPECT_EQ(nqt::toi(u"\uFF11\uFF12"), 0);
    EXPECT_EQ(nqt::toi(u"5\uFF11"), 5);
}

// The runtime's long is 32 bits: past that range both saturate, and toi is tol's value.
TEST(TextToi, OverflowSaturatesAtTheIntLimits) {
    EXPECT_EQ(nqt::toi(u"2147483647"), INT_MAX);
    EXPECT_EQ(nqt::toi(u"-2147483648"), INT_MIN);
    EXPECT_EQ(nqt::toi(u"2147483648"), INT_MAX);
    EXPECT_EQ(nqt::toi(u"4294967297"), INT_MAX);
    EXPECT_EQ(nqt::toi(u"-2147483649"), INT_MIN);
    EXPECT_EQ(nqt::toi(u"99999999999999999999"), INT_MAX);
}

TEST(TextTol, ReadsThe32BitRange) {
    EXPECT_EQ(nqt::tol(u" -123xyz"), -123L);
    EXPECT_EQ(nqt::tol(u"2147483647"), 2147483647L);
    EXPECT_EQ(nqt::tol(u"-2147483648"), -2147483648L);
    EXPECT_EQ(nqt::tol(u""), 0L);
    EXPECT_EQ(nqt::tol(nullptr), 0L);
}

TEST(TextTol, OverflowSaturatesAndSetsErange) {
    errno = 0;
    EXPECT_EQ(nqt::tol(u"2147483648"), 2147483647L);
    EXPECT_EQ(errno, ERANGE);
    errno = 0;
    EXPECT_EQ(nqt::tol(u"-2147483649"), -2147483648L);
    EXPECT_EQ(errno, ERANGE);
    EXPECT_EQ(nqt::tol(u"123456789012345678901234567890abc"), 2147483647L);
    errno = 0;
    EXPECT_EQ(nqt::tol(u"-000000000000000000000000000012"), -12L);
    EXPECT_EQ(errno, 0);
}

TEST(TextTof, ReadsDecimalAndExponent) {
    EXPECT_DOUBLE_EQ(nqt::tof(u"3.5"), 3.5);
    EXPECT_DOUBLE_EQ(nqt::tof(u"  -2.25xyz"), -2.25);
    EXPECT_DOUBLE_EQ(nqt::tof(u"1e3"), 1000.0);
    EXPECT_DOUBLE_EQ(nqt::tof(u"1.5E-2"), 0.015);
    EXPECT_DOUBLE_EQ(nqt::tof(u".5"), 0.5);
    EXPECT_DOUBLE_EQ(nqt::tof(u"5."), 5.0);
    EXPECT_DOUBLE_EQ(nqt::tof(u"+12"), 12.0);
    EXPECT_DOUBLE_EQ(nqt::tof(u"1e"), 1.0);  // an exponent without digits is not read
}

TEST(TextTof, NothingReadableGivesZero) {
    EXPECT_EQ(nqt::tof(u""), 0.0);
    EXPECT_EQ(nqt::tof(u"abc"), 0.0);
    EXPECT_EQ(nqt::tof(u"  "), 0.0);
    EXPECT_EQ(nqt::tof(u"-"), 0.0);
    EXPECT_EQ(nqt::tof(nullptr), 0.0);
    const double negative_zero = nqt::tof(u"  -0");
    EXPECT_EQ(negative_zero, 0.0);
    EXPECT_TRUE(std::signbit(negative_zero));
}

// Like strtod, tof reads hexadecimal numbers.
TEST(TextTof, ReadsHexadecimalLikeStrtod) {
    EXPECT_DOUBLE_EQ(nqt::tof(u"0x10"), 16.0);
    EXPECT_DOUBLE_EQ(nqt::tof(u"0x1p4"), 16.0);
}

TEST(TextTof, ReadsInfinityAndNan) {
    EXPECT_EQ(nqt::tof(u"inf"), HUGE_VAL);
    EXPECT_EQ(nqt::tof(u"-INFINITY"), -HUGE_VAL);
    EXPECT_TRUE(std::isnan(nqt::tof(u"nan")));
    EXPECT_EQ(nqt::tof(u"1e999"), HUGE_VAL);
}

TEST(TextTof, StopsAtNonAsciiUnits) {
    EXPECT_DOUBLE_EQ(nqt::tof(u"1.5\u00e9"), 1.5);
    EXPECT_DOUBLE_EQ(nqt::tof(u"2\uFF10"), 2.0);
    EXPECT_EQ(nqt::tof(u"\u00a0 7"), 0.0);  // a no-break space is not a blank in the C locale
}

TEST(TextTolEnd, SetsEndAfterTheLastDigit) {
    const wchar *s = u"  123xyz";
    const wchar *end = nullptr;
    EXPECT_EQ(nqt::tol_end(s, &end, 10), 123L);
    EXPECT_EQ(end, s + 5);
    s = u"-42";
    EXPECT_EQ(nqt::tol_end(s, &end, 10), -42L);
    EXPECT_EQ(end, s + 3);
}

TEST(TextTolEnd, NoDigitsLeaveEndAtTheStart) {
    const wchar *s = u"   abc";
    const wchar *end = nullptr;
    EXPECT_EQ(nqt::tol_end(s, &end, 10), 0L);
    EXPECT_EQ(end, s);  // not after the blanks
    s = u"";
    EXPECT_EQ(nqt::tol_end(s, &end, 10), 0L);
    EXPECT_EQ(end, s);
    s = u"+";
    EXPECT_EQ(nqt::tol_end(s, &end, 10), 0L);
    EXPECT_EQ(end, s);
}

TEST(TextTolEnd, HonoursTheBase) {
    const wchar *end = nullptr;
    const wchar *s = u"0x1Fg";
    EXPECT_EQ(nqt::tol_end(s, &end, 16), 31L);
    EXPECT_EQ(end, s + 4);
    EXPECT_EQ(nqt::tol_end(u"ff", nullptr, 16), 255L);
    EXPECT_EQ(nqt::tol_end(u"010", nullptr, 0), 8L);
    EXPECT_EQ(nqt::tol_end(u"0x10", nullptr, 0), 16L);
    EXPECT_EQ(nqt::tol_end(u"10", nullptr, 0), 10L);
    s = u"1012";
    EXPECT_EQ(nqt::tol_end(s, &end, 2), 5L);
    EXPECT_EQ(end, s + 3);
    EXPECT_EQ(nqt::tol_end(u"zz", nullptr, 36), 35L * 36 + 35);
    s = u"0x";
    EXPECT_EQ(nqt::tol_end(s, &end, 16), 0L);
    EXPECT_EQ(end, s + 1);  // the "0" is the number, the "x" is left
}

TEST(TextTolEnd, OverflowSaturatesWithErange) {
    errno = 0;
    const wchar *s = u"99999999999999999999 rest";
    const wchar *end = nullptr;
    EXPECT_EQ(nqt::tol_end(s, &end, 10), LONG_MAX);
    EXPECT_EQ(errno, ERANGE);
    EXPECT_EQ(end, s + 20);
    EXPECT_EQ(nqt::tol_end(u"-99999999999999999999", nullptr, 10), LONG_MIN);
}

TEST(TextTolEnd, BadBaseAndNullTextGiveZero) {
    const wchar *s = u"123";
    const wchar *end = nullptr;
    errno = 0;
    EXPECT_EQ(nqt::tol_end(s, &end, 1), 0L);
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(end, s);
    EXPECT_EQ(nqt::tol_end(s, &end, 37), 0L);
    EXPECT_EQ(nqt::tol_end(nullptr, &end, 10), 0L);
    EXPECT_EQ(end, nullptr);
}

TEST(TextTolEnd, StopsAtNonAsciiUnits) {
    const wchar *s = u"12\u0663";  // an Arabic-Indic digit is not read
    const wchar *end = nullptr;
    EXPECT_EQ(nqt::tol_end(s, &end, 10), 12L);
    EXPECT_EQ(end, s + 2);
}

TEST(TextTodEnd, SetsEndAfterTheNumber) {
    const wchar *s = u"  1.5e2rest";
    const wchar *end = nullptr;
    EXPECT_DOUBLE_EQ(nqt::tod_end(s, &end), 150.0);
    EXPECT_EQ(end, s + 7);
    s = u"1e+";
    EXPECT_DOUBLE_EQ(nqt::tod_end(s, &end), 1.0);
    EXPECT_EQ(end, s + 1);
    s = u"-inf!";
    EXPECT_EQ(nqt::tod_end(s, &end), -HUGE_VAL);
    EXPECT_EQ(end, s + 4);
}

TEST(TextTodEnd, NoNumberLeavesEndAtTheStart) {
    const wchar *s = u"  x1";
    const wchar *end = nullptr;
    EXPECT_EQ(nqt::tod_end(s, &end), 0.0);
    EXPECT_EQ(end, s);
    EXPECT_EQ(nqt::tod_end(nullptr, &end), 0.0);
    EXPECT_EQ(end, nullptr);
    EXPECT_EQ(nqt::tod_end(u"7", nullptr), 7.0);
}

}  // namespace
