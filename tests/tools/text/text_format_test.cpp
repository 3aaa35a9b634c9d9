// The printf-style formatter, conversion by conversion against the C library's snprintf.
#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "text/nq_text.h"

namespace {

using nqt::wchar;

std::u16string widen(const std::string &s) { return nqt::from_bytes(s); }

template <typename... Args>
std::string c_format(const char *fmt, Args... args) {
    const int n = std::snprintf(nullptr, 0, fmt, args...);
    if (n < 0) return "<error>";
    std::string out(static_cast<std::size_t>(n) + 1, '\0');
    std::snprintf(out.data(), out.size(), fmt, args...);
    out.resize(static_cast<std::size_t>(n));
    return out;
}

// The wide format wide_fmt with args gives what the narrow c_fmt gives with c_args, widened,
// both as a string and into a buffer that holds it.
template <typename... Args>
void expect_format(const std::u16string &expected, const char *wide_fmt, Args... args) {
    const std::u16string wfmt = widen(wide_fmt);
    SCOPED_TRACE(wide_fmt);
    EXPECT_EQ(nqt::format_string(wfmt.c_str(), args...), expected);
    std::vector<wchar> buf(expected.size() + 1, 0xABCD);
    EXPECT_EQ(nqt::format(buf.data(), buf.size(), wfmt.c_str(), args...), static_cast<int>(expected.size()));
    EXPECT_EQ(std::u16string(buf.data(), expected.size()), expected);
    EXPECT_EQ(buf[expected.size()], 0);
}

template <typename... Args>
void expect_like_c(const char *c_fmt, const char *wide_fmt, Args... args) {
    SCOPED_TRACE(c_fmt);
    expect_format(widen(c_format(c_fmt, args...)), wide_fmt, args...);
}

template <typename... Args>
void expect_same_as_c(const char *fmt, Args... args) {
    expect_like_c(fmt, fmt, args...);
}

// A variadic front for vformat, as the families write their own.
int call_vformat(wchar *dest, std::size_t capacity, const wchar *fmt, ...) {
    va_list args;
    va_start(args, fmt);
    const int n = nqt::vformat(dest, capacity, fmt, args);
    va_end(args);
    return n;
}

std::u16string call_vformat_string(const wchar *fmt, ...) {
    va_list args;
    va_start(args, fmt);
    std::u16string s = nqt::vformat_string(fmt, args);
    va_end(args);
    return s;
}

// ---- integers -------------------------------------------------------------------------

const char *const kIntFormats[] = {
    "%d",    "%i",     "%5d",    "%-5d|",   "%05d",    "%+d",     "% d",      "%+ d",    "%.3d",
    "%8.3d", "%-8.3d|", "%08.3d", "%.0d",   "%+.0d",   "%5.0d|",  "%-+08d|",  "% 05d",   "%+05d",
    "%u",    "%10u",   "%x",     "%X",     "%#x",     "%#X",     "%#08x",    "%-#10x|", "%#.0x",
    "%.5x",  "%o",     "%#o",    "%#.0o",  "%#5o",    "%.4o",    "%#.4o",    "%hd",     "%hhd",
    "%hu",   "%hhu",   "%hx",    "%hhX",   "%hi",     "%+hhd",   "%1d",      "%00d",    "%-0d|",
};

const int kInts[] = {0, 1, -1, 7, 42, -42, 255, 256, 300, -300, 70000, -70000, INT_MAX, INT_MIN};

TEST(TextFormat, IntConversionsMatchTheCLibrary) {
    for (const char *fmt : kIntFormats) {
        for (const int v : kInts) expect_same_as_c(fmt, v);
    }
}

TEST(TextFormat, LongConversionsMatchTheCLibrary) {
    const char *const formats[] = {"%ld", "%li", "%lu", "%lx", "%lX", "%lo", "%+ld", "%22ld",
                                   "%-22ld|", "%022ld", "%#lx", "%.25ld"};
    const long values[] = {0L, 1L, -1L, LONG_MAX, LONG_MIN, 1234567890123L};
    for (const char *fmt : formats) {
        for (const long v : values) expect_same_as_c(fmt, v);
    }
}

TEST(TextFormat, LongLongConversionsMatchTheCLibrary) {
    const char *const formats[] = {"%lld", "%lli", "%llu", "%llx", "%llX", "%#llo", "%+lld", "%25lld", "%-+25lld|"};
    const long long values[] = {0LL, -1LL, LLONG_MAX, LLONG_MIN, 9876543210LL};
    for (const char *fmt : formats) {
        for (const long long v : values) expect_same_as_c(fmt, v);
    }
}

TEST(TextFormat, I64IsLongLong) {
    const long long values[] = {0LL, -1LL, LLONG_MAX, LLONG_MIN};
    for (const long long v : values) {
        expect_like_c("%lld", "%I64d", v);
        expect_like_c("%llu", "%I64u", v);
        expect_like_c("%llx", "%I64x", v);
        expect_like_c("%020lld", "%020I64d", v);
    }
}

TEST(TextFormat, I32IsInt) {
    for (const int v : kInts) {
        expect_like_c("%d", "%I32d", v);
        expect_like_c("%x", "%I32x", v);
    }
}

TEST(TextFormat, SizeConversionsMatchTheCLibrary) {
    const std::size_t sizes[] = {0, 1, SIZE_MAX, SIZE_MAX / 2};
    for (const std::size_t v : sizes) {
        expect_same_as_c("%zu", v);
        expect_same_as_c("%zx", v);
        expect_like_c("%zu", "%Iu", v);
    }
    const std::ptrdiff_t diffs[] = {0, -1, PTRDIFF_MAX, PTRDIFF_MIN};
    for (const std::ptrdiff_t v : diffs) {
        expect_same_as_c("%zd", v);
        expect_same_as_c("%td", v);
        expect_same_as_c("%+12td", v);
        expect_like_c("%zd", "%Id", v);
    }
    const std::intmax_t maxes[] = {0, INTMAX_MAX, INTMAX_MIN};
    for (const std::intmax_t v : maxes) {
        expect_same_as_c("%jd", v);
        expect_same_as_c("%jx", v);
    }
}

TEST(TextFormat, ShortSizesTruncateThePromotedInt) {
    expect_format(u"44", "%hhd", 300);
    expect_format(u"-1", "%hhd", 255);
    expect_format(u"4464", "%hd", 70000);
    expect_format(u"255", "%hhu", -1);
    expect_format(u"65535", "%hu", -1);
}

TEST(TextFormat, PointerConversionsMatchTheCLibrary) {
    int local = 0;
    const void *const pointers[] = {nullptr, reinterpret_cast<void *>(0x1234), &local};
    const char *const formats[] = {"%p", "%20p", "%-20p|", "%020p", "%+p", "% p", "%.20p", "%#p"};
    for (const char *fmt : formats) {
        for (const void *p : pointers) expect_same_as_c(fmt, p);
    }
}

// ---- floating numbers -------------------------------------------------------------------

const char *const kDoubleFormats[] = {
    "%f",     "%F",      "%e",      "%E",       "%g",      "%G",       "%a",       "%A",
    "%.0f",   "%.3f",    "%10.3f",  "%-10.3f|", "%010.3f", "%+f",      "% f",      "%#.0f",
    "%#g",    "%.10g",   "%lf",     "%le",      "%lg",     "%+010.2e", "%-+12.4g|", "%012a",
    "%.2a",   "%#.0e",   "%020f",   "%-020f|",  "%+020.3f", "% 020.3e", "%.0e",     "%.20f",
    "%30.15E", "%-12G|", "%#012.3g", "%.0g",
};

const double kDoubles[] = {0.0,     -0.0,      1.5,       -1.5,     3.14159265358979, 1e300,  -1e-300,
                           123456789.0, 0.5,   2.5,       1e-5,     123456.0,         1e15,   4.9e-324,
                           DBL_MAX, HUGE_VAL,  -HUGE_VAL, NAN,      -NAN};

TEST(TextFormat, DoubleConversionsMatchTheCLibrary) {
    for (const char *fmt : kDoubleFormats) {
        for (const double v : kDoubles) expect_same_as_c(fmt, v);
    }
    expect_same_as_c("%#x %f %d", 255, 2.5, 7);  // floats read between other arguments
}

TEST(TextFormat, LongDoubleConversionsMatchTheCLibrary) {
    const char *const formats[] = {"%Lf", "%.20Le", "%Lg", "%20.5Lf", "%-20.5Lf|", "%020.5Lf", "%La", "%LE", "%+LG"};
    const long double values[] = {0.0L, -1.25L, 3.141592653589793238462643383279L, 1e4000L, -1e-4000L,
                                  LDBL_MAX, static_cast<long double>(HUGE_VAL), static_cast<long double>(NAN)};
    for (const char *fmt : formats) {
        for (const long double v : values) expect_same_as_c(fmt, v);
    }
}

TEST(TextFormat, ZeroFlagDoesNotPadInfinityOrNanWithZeros) {
    expect_format(u"  inf", "%05f", HUGE_VAL);
    expect_format(u" -inf", "%05f", -HUGE_VAL);
    expect_format(u"  nan", "%05f", static_cast<double>(NAN));
    expect_format(u"-0001.50", "%08.2f", -1.5);
    expect_format(u"0x001.8p+0", "%010a", 1.5);
    expect_format(u"-0x01.8p+0", "%010a", -1.5);
}

TEST(TextFormat, FloatWidthsBeyondTheBufferAreCountedNotStored) {
    wchar buf[8];
    EXPECT_EQ(nqt::format(buf, 8, u"%1000000f", 1.0), 1000000);
    EXPECT_EQ(std::u16string(buf), u"       ");
    EXPECT_EQ(nqt::format(buf, 8, u"%-1000000f", 1.0), 1000000);
    EXPECT_EQ(std::u16string(buf), u"1.00000");
}

TEST(TextFormat, PrecisionsBeyondTheExactDigitsMatchTheCLibrary) {
    const char *const formats[] = {"%.20005f", "%.20005e", "%.20005E", "%#.20005g", "%.20005g",
                                   "%.20005a", "%+.20010f", "%20020.20005f", "%020020.20005e",
                                   "%-20020.20005f|", "%#.20005G", "%020020.20005A"};
    const double values[] = {1.5, -2.0 / 3.0, 4.9e-324, 1e300, 0.0, 1e-7, HUGE_VAL, NAN};
    for (const char *fmt : formats) {
        for (const double v : values) expect_same_as_c(fmt, v);
    }
    const long double tiny = std::numeric_limits<long double>::denorm_min();
    for (const char *fmt : {"%.20005Le", "%.20005Lf", "%#.20005Lg", "%.20005La", "%.20003Lg"}) {
        expect_same_as_c(fmt, tiny);
        expect_same_as_c(fmt, -LDBL_MAX);
    }
}

TEST(TextFormat, HugeFloatPrecisionIsCountedNotStored) {
    wchar buf[8];
    EXPECT_EQ(nqt::format(buf, 8, u"%.100000000f", 1.0), 100000002);
    EXPECT_EQ(std::u16string(buf), u"1.00000");
    EXPECT_EQ(nqt::format(buf, 8, u"%.100000000e", -1.0), 100000007);
    EXPECT_EQ(std::u16string(buf), u"-1.0000");
    EXPECT_EQ(nqt::format(buf, 8, u"%.2147483647f", 1.0), -1);
    EXPECT_EQ(nqt::format(buf, 8, u"%.2147483647Lf", 1.0L), -1);
    EXPECT_EQ(nqt::format(buf, 8, u"%.2147483647g", 0.5), 3);  // %g drops the zeros
    EXPECT_EQ(std::u16string(buf), u"0.5");
}

// ---- strings and characters ------------------------------------------------------------

// Flags, width and precision of the string conversions, before the conversion letter.
const char *const kTextSpecs[] = {"%", "%10", "%-10", "%.2", "%10.2", "%-10.2", "%.0", "%.10", "%0", "%3", "%1"};

TEST(TextFormat, WideStringConversionsMatchTheNarrowCLibrary) {
    const char *const narrow[] = {"", "abc", "hello world"};
    for (const char *conv : kTextSpecs) {
        for (const char *text : narrow) {
            const std::u16string wide = widen(text);
            const std::string c_fmt = std::string(conv) + "s|";
            const std::u16string expected = widen(c_format(c_fmt.c_str(), text));
            for (const char *letters : {"s|", "ls|", "ws|", "lS|"}) {
                const std::string w_fmt = std::string(conv) + letters;
                expect_format(expected, w_fmt.c_str(), wide.c_str());
            }
        }
    }
}

TEST(TextFormat, NarrowStringConversionsMatchTheCLibrary) {
    const char *const narrow[] = {"", "abc", "hello world"};
    for (const char *conv : kTextSpecs) {
        for (const char *text : narrow) {
            const std::string c_fmt = std::string(conv) + "s|";
            const std::string hs = std::string(conv) + "hs|";
            const std::string S = std::string(conv) + "S|";
            const std::string hS = std::string(conv) + "hS|";
            expect_like_c(c_fmt.c_str(), hs.c_str(), text);
            expect_like_c(c_fmt.c_str(), S.c_str(), text);
            expect_like_c(c_fmt.c_str(), hS.c_str(), text);
        }
    }
}

TEST(TextFormat, NarrowStringBytesBecomeUnitsOfTheSameValue) {
    expect_format(u"caf\u00e9", "%hs", "caf\xe9");
    expect_format(u"\u00c3\u00a9", "%S", "\xc3\xa9");  // no UTF-8 decoding
    expect_format(u"  \u00ff", "%3hs", "\xff");
}

TEST(TextFormat, WideStringsKeepTheirUnitsAndWidthsCountUnits) {
    expect_format(u"  \u00e9t\u00e9", "%5s", u"\u00e9t\u00e9");
    expect_format(u"\U0001F600 |", "%-3s|", u"\U0001F600");  // a surrogate pair is two units
    expect_format(u"\u00e9t", "%.2s", u"\u00e9t\u00e9");
    expect_format(u"\xD800", "%s", u"\xD800");
}

TEST(TextFormat, PrecisionStopsReadingAnUnterminatedString) {
    const wchar wide[3] = {u'a', u'b', u'c'};  // no terminator
    expect_format(u"ab", "%.2s", wide);
    const char narrow[3] = {'x', 'y', 'z'};
    expect_format(u"xyz", "%.3hs", narrow);
}

// A null string prints "(null)"; a precision cuts it like any other text (the narrow C
// library here would print nothing below a precision of 6 instead).
TEST(TextFormat, NullStringPrintsNullCutByPrecision) {
    const wchar *no_wide = nullptr;
    const char *no_narrow = nullptr;
    expect_format(u"(null)", "%s", no_wide);
    expect_format(u"(null)", "%ls", no_wide);
    expect_format(u"    (null)", "%10s", no_wide);
    expect_format(u"(null)    |", "%-10s|", no_wide);
    expect_format(u"(nu", "%.3s", no_wide);
    expect_format(u"", "%.0s", no_wide);
    expect_format(u"(null)", "%hs", no_narrow);
    expect_format(u"(null)", "%S", no_narrow);
    expect_format(u"  (n", "%4.2hs", no_narrow);
}

TEST(TextFormat, CharacterConversionsMatchTheCLibrary) {
    const char *const specs[] = {"%", "%5", "%-5", "%1", "%05"};
    for (const char *conv : specs) {
        const std::string c_fmt = std::string(conv) + "c|";
        for (const char *letters : {"c|", "lc|", "wc|", "hc|", "C|", "hC|", "lC|"}) {
            const std::string w_fmt = std::string(conv) + letters;
            expect_like_c(c_fmt.c_str(), w_fmt.c_str(), 'A');
        }
    }
}

TEST(TextFormat, WideCharacterTakesTheUnitAndNarrowOneTheByte) {
    expect_format(u"\u263A", "%c", 0x263A);
    expect_format(u"\u263A", "%lc", 0x263A);
    expect_format(u"\u263A", "%lC", 0x263A);
    expect_format(u"\u003A", "%hc", 0x263A);  // only the low byte of a narrow character
    expect_format(u"\u003A", "%C", 0x263A);
    expect_format(u"\u00e9", "%hc", static_cast<char>(0xE9));  // a negative char is its byte
    expect_format(u"\u00e9", "%C", '\xe9');
}

TEST(TextFormat, NulCharacterIsWrittenAndCounted) {
    wchar buf[8];
    std::fill(std::begin(buf), std::end(buf), 0xABCD);
    EXPECT_EQ(nqt::format(buf, 8, u"a%cb", 0), 3);
    EXPECT_EQ(buf[0], u'a');
    EXPECT_EQ(buf[1], 0);
    EXPECT_EQ(buf[2], u'b');
    EXPECT_EQ(buf[3], 0);
    EXPECT_EQ(nqt::format_string(u"a%cb", 0), std::u16string(u"a\0b", 3));
}

// ---- width and precision from the arguments -----------------------------------------------

TEST(TextFormat, StarWidthAndPrecisionMatchTheCLibrary) {
    expect_same_as_c("%*d|", 5, 42);
    expect_same_as_c("%*d|", -5, 42);  // a negative width means '-'
    expect_same_as_c("%-*d|", -5, 42);
    expect_same_as_c("%0*d|", 6, -42);
    expect_same_as_c("%*d|", 0, 42);
    expect_same_as_c("%.*d|", 4, 42);
    expect_same_as_c("%.*d|", -4, 42);  // a negative precision counts as none
    expect_same_as_c("%0.*d|", -4, 42);
    expect_same_as_c("%*.*f|", 10, 2, 3.14159);
    expect_same_as_c("%*.*f|", -10, -1, 3.14159);
    expect_same_as_c("%.*e|", 0, 12345.678);
    expect_same_as_c("%*.*x|", 8, 6, 0xBEEF);
    expect_same_as_c("%*c|", 3, 'z');
    expect_format(widen(c_format("%*.*s|", 8, 3, "abcdef")), "%*.*s|", 8, 3, u"abcdef");
    expect_format(widen(c_format("%*.*s|", -8, 3, "abcdef")), "%*.*s|", -8, 3, u"abcdef");
}

TEST(TextFormat, StarArgumentsAreConsumedInOrder) {
    EXPECT_EQ(nqt::format_string(u"[%*d][%.*s][%d]", 4, 7, 2, u"xyz", 9), u"[   7][xy][9]");
}

// ---- the rest of the conversions ----------------------------------------------------------

TEST(TextFormat, PercentSignAndCountAreHandled) {
    expect_same_as_c("100%% sure %d", 1);
    expect_format(u"%", "%5%", 0);
    int count = -7;
    expect_format(u"abcd", "ab%ncd", &count);
    EXPECT_EQ(count, -7);  // %n stores nothing
    long long big = -9;
    expect_format(u"ab5", "ab%lln%d", &big, 5);  // the pointer is consumed whatever its size
    EXPECT_EQ(big, -9);
}

TEST(TextFormat, UnknownConversionIsCopiedThroughWithItsPercent) {
    expect_format(u"%y", "%y", 0);
    expect_format(u"a%k1", "a%k%d", 1);
    expect_format(u"%-5.2y!", "%-5.2y!", 0);
    expect_format(u"%ly", "%ly", 0);
    expect_format(u"%I6d", "%I6d", 0);
    EXPECT_EQ(nqt::format_string(u"%\u00e9x", 0), u"%\u00e9x");
}

TEST(TextFormat, FormatEndingInsideAConversionKeepsItsText) {
    EXPECT_EQ(nqt::format_string(u"abc%"), u"abc%");
    EXPECT_EQ(nqt::format_string(u"abc%-5"), u"abc%-5");
    EXPECT_EQ(nqt::format_string(u"abc%l"), u"abc%l");
    EXPECT_EQ(nqt::format_string(u"%.3"), u"%.3");
}

TEST(TextFormat, PlainTextAndMixedConversions) {
    EXPECT_EQ(nqt::format_string(u""), u"");
    EXPECT_EQ(nqt::format_string(u"no conversions \u00e9"), u"no conversions \u00e9");
    EXPECT_EQ(nqt::format_string(u"%s (%d) %s\n", u"pipe.cpp", 120, u"done"), u"pipe.cpp (120) done\n");
    EXPECT_EQ(nqt::format_string(u"TAG%03d", 7), u"TAG007");
    EXPECT_EQ(nqt::format_string(u"%ld|%hd|%.3f|%lf|%-6s|%%", 123456L, 12, 2.0 / 3.0, 1.5, u"ab"),
              u"123456|12|0.667|1.500000|ab    |%");
}

// ---- buffers ------------------------------------------------------------------------------

TEST(TextFormat, TruncatesAtEveryCapacityWithoutWritingPast) {
    const std::u16string result = u"x=  42 caf\u00e9 -1.50 end";
    for (std::size_t capacity = 0; capacity <= result.size() + 1; ++capacity) {
        SCOPED_TRACE(capacity);
        std::vector<wchar> buf(capacity + 8, 0xABCD);
        const int n = nqt::format(buf.data(), capacity, u"x=%4d %s %.2f %hs", 42, u"caf\u00e9", -1.5, "end");
        EXPECT_EQ(n, static_cast<int>(result.size()));
        if (capacity > 0) {
            const std::size_t kept = std::min(capacity - 1, result.size());
            EXPECT_EQ(std::u16string(buf.data(), kept), result.substr(0, kept));
            EXPECT_EQ(buf[kept], 0);
        }
        for (std::size_t i = capacity; i < buf.size(); ++i) EXPECT_EQ(buf[i], 0xABCD) << i;
    }
}

TEST(TextFormat, TruncationCutsPaddingAndFloatsToo) {
    const std::u16string result = u"     -3.250|1e+02";
    for (std::size_t capacity = 0; capacity <= result.size() + 1; ++capacity) {
        std::vector<wchar> buf(capacity + 4, 0xABCD);
        EXPECT_EQ(nqt::format(buf.data(), capacity, u"%11.3f|%.0e", -3.25, 100.0), static_cast<int>(result.size()));
        if (capacity > 0) {
            const std::size_t kept = std::min(capacity - 1, result.size());
            EXPECT_EQ(std::u16string(buf.data(), kept), result.substr(0, kept)) << capacity;
        }
        for (std::size_t i = capacity; i < buf.size(); ++i) EXPECT_EQ(buf[i], 0xABCD) << capacity;
    }
}

TEST(TextFormat, CapacityZeroWritesNothingAndAcceptsNullDest) {
    wchar canary = 0xABCD;
    EXPECT_EQ(nqt::format(&canary, 0, u"%d", 12345), 5);
    EXPECT_EQ(canary, 0xABCD);
    EXPECT_EQ(nqt::format(nullptr, 0, u"%s-%d", u"ab", 1), 4);
    EXPECT_EQ(nqt::format(nullptr, 10, u"%s-%d", u"ab", 1), 4);  // no buffer: only counted
}

TEST(TextFormat, CapacityOneHoldsOnlyTheTerminator) {
    wchar buf[2] = {0xABCD, 0xABCD};
    EXPECT_EQ(nqt::format(buf, 1, u"abc"), 3);
    EXPECT_EQ(buf[0], 0);
    EXPECT_EQ(buf[1], 0xABCD);
}

TEST(TextFormat, NullFormatFails) {
    wchar buf[4] = {u'x', u'x', u'x', u'x'};
    EXPECT_EQ(nqt::format(buf, 4, nullptr), -1);
    EXPECT_EQ(buf[0], 0);
    EXPECT_EQ(nqt::format_string(nullptr), u"");
    EXPECT_EQ(nqt::format(nullptr, 0, nullptr), -1);
}

TEST(TextFormat, ResultPastIntMaxFails) {
    wchar buf[8];
    EXPECT_EQ(nqt::format(buf, 8, u"%2147483647d", 1), INT_MAX);
    EXPECT_EQ(std::u16string(buf), u"       ");
    EXPECT_EQ(nqt::format(buf, 8, u"%2147483647d%d", 1, 2), -1);
    EXPECT_EQ(std::u16string(buf), u"       ");  // what fitted stays, terminated
    EXPECT_EQ(nqt::format(buf, 8, u"%99999999999d", 1), INT_MAX);  // widths stop at INT_MAX
    EXPECT_EQ(nqt::format(buf, 8, u"%*d|", INT_MIN, 1), -1);      // width 2^31, left-justified
    EXPECT_EQ(std::u16string(buf), u"1      ");
}

TEST(TextFormat, HugePrecisionOfIntegersIsCountedNotStored) {
    wchar buf[6];
    EXPECT_EQ(nqt::format(buf, 6, u"%.100000000d", 7), 100000000);
    EXPECT_EQ(std::u16string(buf), u"00000");
}

TEST(TextFormat, VformatTakesTheCallersList) {
    wchar buf[16];
    EXPECT_EQ(call_vformat(buf, 16, u"%s:%d", u"ab", 12), 5);
    EXPECT_EQ(std::u16string(buf), u"ab:12");
    EXPECT_EQ(call_vformat(buf, 3, u"%s:%d", u"ab", 12), 5);
    EXPECT_EQ(std::u16string(buf), u"ab");
    EXPECT_EQ(call_vformat_string(u"%5.1f|%c", 2.25, u'Z'), u"  2.2|Z");
    EXPECT_EQ(call_vformat_string(nullptr), u"");
}

TEST(TextFormat, LongResultsComeWhole) {
    std::u16string big(5000, u'q');
    const std::u16string out = nqt::format_string(u"<%s>%3000d", big.c_str(), 1);
    EXPECT_EQ(out.size(), 5002u + 3000u);
    EXPECT_EQ(out.substr(0, 3), u"<qq");
    EXPECT_EQ(out.back(), u'1');
}

}  // namespace
