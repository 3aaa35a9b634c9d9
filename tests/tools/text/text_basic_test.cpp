// Length, copy, compare, search, tokens, case and reverse of the text kit.
#include <gtest/gtest.h>

#include <algorithm>
#include <clocale>
#include <iterator>
#include <string>
#include <thread>

#include "text/nq_text.h"

namespace {

using nqt::wchar;

// Switches LC_CTYPE to a UTF-8 locale for one test and back to "C" afterwards.
class Utf8Locale {
public:
    Utf8Locale() { ok_ = std::setlocale(LC_CTYPE, "C.UTF-8") != nullptr; }
    ~Utf8Locale() { std::setlocale(LC_CTYPE, "C"); }
    bool ok() const { return ok_; }

private:
    bool ok_ = false;
};

constexpr wchar kCanary = 0xABCD;

// A token as a string, so that a missing one fails the comparison instead of the test.
std::u16string text_of(const wchar *token) { return token ? std::u16string(token) : u"<null>"; }

TEST(TextLen, CountsUnitsUpToTheTerminator) {
    EXPECT_EQ(nqt::len(u""), 0u);
    EXPECT_EQ(nqt::len(u"abc"), 3u);
    EXPECT_EQ(nqt::len(u"a\U0001F600b"), 4u);  // a surrogate pair is two units
    const wchar embedded[] = {u'a', 0, u'b', 0};
    EXPECT_EQ(nqt::len(embedded), 1u);
}

TEST(TextLen, NullHasLengthZero) { EXPECT_EQ(nqt::len(nullptr), 0u); }

TEST(TextCopy, CopiesWithTerminatorAndReturnsDest) {
    wchar buf[8];
    std::fill(std::begin(buf), std::end(buf), kCanary);
    EXPECT_EQ(nqt::copy(buf, u"abc"), buf);
    EXPECT_EQ(std::u16string(buf), u"abc");
    EXPECT_EQ(buf[4], kCanary);
}

TEST(TextCopy, NullSourceCopiesEmptyAndNullDestDoesNothing) {
    wchar buf[4] = {u'x', u'y', 0, 0};
    EXPECT_EQ(nqt::copy(buf, nullptr), buf);
    EXPECT_EQ(buf[0], 0);
    EXPECT_EQ(nqt::copy(nullptr, u"abc"), nullptr);
}

TEST(TextNcopy, PadsShortSourceWithZeros) {
    wchar buf[8];
    std::fill(std::begin(buf), std::end(buf), kCanary);
    EXPECT_EQ(nqt::ncopy(buf, u"ab", 6), buf);
    EXPECT_EQ(buf[0], u'a');
    EXPECT_EQ(buf[1], u'b');
    for (int i = 2; i < 6; ++i) EXPECT_EQ(buf[i], 0) << i;
    EXPECT_EQ(buf[6], kCanary);
}

TEST(TextNcopy, LongSourceLeavesDestUnterminated) {
    wchar buf[6];
    std::fill(std::begin(buf), std::end(buf), kCanary);
    nqt::ncopy(buf, u"abcdef", 3);
    EXPECT_EQ(buf[0], u'a');
    EXPECT_EQ(buf[2], u'c');
    EXPECT_EQ(buf[3], kCanary);
}

TEST(TextNcopy, ZeroCountWritesNothingAndNullsAreSafe) {
    wchar buf[2] = {kCanary, kCanary};
    nqt::ncopy(buf, u"abc", 0);
    EXPECT_EQ(buf[0], kCanary);
    nqt::ncopy(buf, nullptr, 2);
    EXPECT_EQ(buf[0], 0);
    EXPECT_EQ(buf[1], 0);
    EXPECT_EQ(nqt::ncopy(nullptr, u"abc", 3), nullptr);
}

TEST(TextCopyBounded, CutsAtEveryCapacityAndAlwaysTerminates) {
    const std::u16string src = u"hello";
    for (std::size_t capacity = 0; capacity <= src.size() + 2; ++capacity) {
        wchar buf[16];
        std::fill(std::begin(buf), std::end(buf), kCanary);
        const std::size_t n = nqt::copy_bounded(buf, capacity, src.c_str());
        const std::size_t expected = capacity == 0 ? 0 : std::min(capacity - 1, src.size());
        EXPECT_EQ(n, expected) << capacity;
        if (capacity > 0) {
            EXPECT_EQ(std::u16string(buf), src.substr(0, expected)) << capacity;
        }
        for (std::size_t i = capacity; i < 16; ++i) EXPECT_EQ(buf[i], kCanary) << capacity << " " << i;
    }
}

TEST(TextCopyBounded, NullDestOrSourceIsSafe) {
    EXPECT_EQ(nqt::copy_bounded(nullptr, 10, u"abc"), 0u);
    wchar buf[4] = {u'x', u'x', u'x', u'x'};
    EXPECT_EQ(nqt::copy_bounded(buf, 4, nullptr), 0u);
    EXPECT_EQ(buf[0], 0);
}

TEST(TextCat, AppendsAndReturnsDest) {
    wchar buf[16] = u"abc";
    EXPECT_EQ(nqt::cat(buf, u"def"), buf);
    EXPECT_EQ(std::u16string(buf), u"abcdef");
    nqt::cat(buf, u"");
    nqt::cat(buf, nullptr);
    EXPECT_EQ(std::u16string(buf), u"abcdef");
    EXPECT_EQ(nqt::cat(nullptr, u"x"), nullptr);
}

TEST(TextCmp, OrdersByUnsignedCodeUnit) {
    EXPECT_EQ(nqt::cmp(u"abc", u"abc"), 0);
    EXPECT_LT(nqt::cmp(u"abc", u"abd"), 0);
    EXPECT_GT(nqt::cmp(u"abd", u"abc"), 0);
    EXPECT_LT(nqt::cmp(u"ab", u"abc"), 0);
    EXPECT_GT(nqt::cmp(u"abc", u"ab"), 0);
    EXPECT_LT(nqt::cmp(u"B", u"a"), 0);            // case matters
    EXPECT_GT(nqt::cmp(u"\uFFFF", u"\xD800"), 0);  // units above 0x7FFF are not negative
    EXPECT_LT(nqt::cmp(u"z", u"\u00E9"), 0);
}

TEST(TextCmp, NullComparesAsEmpty) {
    EXPECT_EQ(nqt::cmp(nullptr, nullptr), 0);
    EXPECT_EQ(nqt::cmp(nullptr, u""), 0);
    EXPECT_LT(nqt::cmp(nullptr, u"a"), 0);
    EXPECT_GT(nqt::cmp(u"a", nullptr), 0);
}

TEST(TextNcmp, ComparesAtMostNUnits) {
    EXPECT_EQ(nqt::ncmp(u"abcX", u"abcY", 3), 0);
    EXPECT_LT(nqt::ncmp(u"abcX", u"abcY", 4), 0);
    EXPECT_EQ(nqt::ncmp(u"ab", u"ab", 10), 0);  // stops at the terminators
    EXPECT_LT(nqt::ncmp(u"ab", u"abc", 10), 0);
    EXPECT_EQ(nqt::ncmp(u"x", u"y", 0), 0);
}

TEST(TextIcmp, IgnoresAsciiCase) {
    EXPECT_EQ(nqt::icmp(u"Pipe.DBF", u"pipe.dbf"), 0);
    EXPECT_LT(nqt::icmp(u"ABC", u"abd"), 0);
    EXPECT_GT(nqt::icmp(u"abd", u"ABC"), 0);
    EXPECT_LT(nqt::icmp(u"ab", u"ABC"), 0);
    EXPECT_GT(nqt::icmp(u"ABC", u"ab"), 0);
}

TEST(TextIcmp, LowerCasesSoUnderscoreSortsBeforeLetters) {
    // '_' is 0x5F, between 'Z' (0x5A) and 'a' (0x61): lower-casing puts it before every letter.
    EXPECT_GT(nqt::icmp(u"A", u"_"), 0);
    EXPECT_GT(nqt::icmp(u"a", u"_"), 0);
    EXPECT_LT(nqt::icmp(u"_", u"Z"), 0);
    EXPECT_LT(nqt::icmp(u"[", u"a"), 0);
    EXPECT_LT(nqt::icmp(u"[", u"A"), 0);  // '[' 0x5B against 'a' 0x61
}

TEST(TextIcmp, CLocaleFoldsAsciiOnly) {
    EXPECT_NE(nqt::icmp(u"\u00C9", u"\u00E9"), 0);
}

TEST(TextIcmp, Utf8LocaleFoldsLatinLetters) {
    Utf8Locale locale;
    if (!locale.ok()) GTEST_SKIP() << "no C.UTF-8 locale";
    EXPECT_EQ(nqt::icmp(u"CAF\u00C9", u"caf\u00E9"), 0);
}

TEST(TextIcmp, NullComparesAsEmpty) {
    EXPECT_EQ(nqt::icmp(nullptr, nullptr), 0);
    EXPECT_LT(nqt::icmp(nullptr, u"a"), 0);
    EXPECT_GT(nqt::icmp(u"a", nullptr), 0);
}

TEST(TextNicmp, ComparesAtMostNUnitsIgnoringCase) {
    EXPECT_EQ(nqt::nicmp(u"ABCx", u"abcY", 3), 0);
    EXPECT_LT(nqt::nicmp(u"ABCx", u"abcY", 4), 0);
    EXPECT_EQ(nqt::nicmp(u"AB", u"ab", 99), 0);
    EXPECT_EQ(nqt::nicmp(u"x", u"y", 0), 0);
}

TEST(TextChr, FindsFirstUnitOrTerminator) {
    const wchar *s = u"abcabc";
    EXPECT_EQ(nqt::chr(s, u'b'), s + 1);
    EXPECT_EQ(nqt::chr(s, u'z'), nullptr);
    EXPECT_EQ(nqt::chr(s, 0), s + 6);
    EXPECT_EQ(nqt::chr(static_cast<const wchar *>(nullptr), u'a'), nullptr);
    wchar buf[] = u"xyz";
    wchar *found = nqt::chr(buf, u'y');
    ASSERT_EQ(found, buf + 1);
    *found = u'Y';  // the non-const overload hands out a writable pointer
    EXPECT_EQ(std::u16string(buf), u"xYz");
}

TEST(TextRchr, FindsLastUnitOrTerminator) {
    const wchar *s = u"abcabc";
    EXPECT_EQ(nqt::rchr(s, u'b'), s + 4);
    EXPECT_EQ(nqt::rchr(s, u'z'), nullptr);
    EXPECT_EQ(nqt::rchr(s, 0), s + 6);
    EXPECT_EQ(nqt::rchr(static_cast<const wchar *>(nullptr), u'a'), nullptr);
    wchar buf[] = u"a\\b\\c";
    EXPECT_EQ(nqt::rchr(buf, u'\\'), buf + 3);
}

TEST(TextStr, FindsFirstOccurrence) {
    const wchar *s = u"aaab";
    EXPECT_EQ(nqt::str(s, u"aab"), s + 1);
    EXPECT_EQ(nqt::str(s, u"b"), s + 3);
    EXPECT_EQ(nqt::str(s, u"aaab"), s);
    EXPECT_EQ(nqt::str(s, u"aaabb"), nullptr);
    EXPECT_EQ(nqt::str(s, u"c"), nullptr);
    EXPECT_EQ(nqt::str(u"", u"a"), nullptr);
    wchar buf[] = u"hello";
    EXPECT_EQ(nqt::str(buf, u"ll"), buf + 2);
}

TEST(TextStr, EmptyOrNullNeedleGivesHaystackAndNullHaystackGivesNull) {
    const wchar *s = u"abc";
    EXPECT_EQ(nqt::str(s, u""), s);
    EXPECT_EQ(nqt::str(s, nullptr), s);
    EXPECT_EQ(nqt::str(static_cast<const wchar *>(nullptr), u"a"), nullptr);
}

TEST(TextSpn, CountsLeadingUnitsInOrOutOfTheSet) {
    EXPECT_EQ(nqt::spn(u"  \tabc", u" \t"), 3u);
    EXPECT_EQ(nqt::spn(u"abc", u"xyz"), 0u);
    EXPECT_EQ(nqt::spn(u"aaa", u"a"), 3u);
    EXPECT_EQ(nqt::spn(u"abc", u""), 0u);
    EXPECT_EQ(nqt::cspn(u"abc,def", u",;"), 3u);
    EXPECT_EQ(nqt::cspn(u"abc", u",;"), 3u);
    EXPECT_EQ(nqt::cspn(u",abc", u","), 0u);
    EXPECT_EQ(nqt::cspn(u"abc", u""), 3u);
}

TEST(TextSpn, NullsCountAsEmpty) {
    EXPECT_EQ(nqt::spn(nullptr, u"a"), 0u);
    EXPECT_EQ(nqt::spn(u"abc", nullptr), 0u);
    EXPECT_EQ(nqt::cspn(nullptr, u"a"), 0u);
    EXPECT_EQ(nqt::cspn(u"abc", nullptr), 3u);
}

TEST(TextTok, KeepsHiddenStateAcrossCalls) {
    wchar buf[] = u",, a,,b c ,";
    wchar *t = nqt::tok(buf, u", ");
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(std::u16string(t), u"a");
    t = nqt::tok(nullptr, u", ");
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(std::u16string(t), u"b");
    t = nqt::tok(nullptr, u", ");
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(std::u16string(t), u"c");
    EXPECT_EQ(nqt::tok(nullptr, u", "), nullptr);
    EXPECT_EQ(nqt::tok(nullptr, u", "), nullptr);  // stays at the end
}

TEST(TextTok, WritesTerminatorsIntoTheText) {
    wchar buf[] = u"ab;cd";
    wchar *first = nqt::tok(buf, u";");
    EXPECT_EQ(first, buf);
    EXPECT_EQ(buf[2], 0);
    EXPECT_EQ(nqt::tok(nullptr, u";"), buf + 3);
}

TEST(TextTok, DelimitersMayChangeBetweenCalls) {
    wchar buf[] = u"a,b;c,d";
    EXPECT_EQ(text_of(nqt::tok(buf, u",")), u"a");
    EXPECT_EQ(text_of(nqt::tok(nullptr, u";")), u"b");
    EXPECT_EQ(text_of(nqt::tok(nullptr, u"")), u"c,d");
    EXPECT_EQ(nqt::tok(nullptr, u","), nullptr);
}

TEST(TextTok, OnlyDelimitersOrEmptyTextGiveNoToken) {
    wchar delims_only[] = u" ,, ";
    EXPECT_EQ(nqt::tok(delims_only, u", "), nullptr);
    wchar empty[] = u"";
    EXPECT_EQ(nqt::tok(empty, u", "), nullptr);
    EXPECT_EQ(nqt::tok(nullptr, u", "), nullptr);
}

TEST(TextTok, NewTextRestartsAndNullDelimitersTakeTheWholeText) {
    wchar first[] = u"a b c";
    EXPECT_EQ(text_of(nqt::tok(first, u" ")), u"a");
    wchar second[] = u"x y";
    EXPECT_EQ(text_of(nqt::tok(second, u" ")), u"x");
    EXPECT_EQ(text_of(nqt::tok(nullptr, u" ")), u"y");
    wchar whole[] = u"p q";
    EXPECT_EQ(text_of(nqt::tok(whole, nullptr)), u"p q");
    EXPECT_EQ(nqt::tok(nullptr, nullptr), nullptr);
}

TEST(TextTok, EachThreadHasItsOwnState) {
    wchar buf[] = u"one two three";
    EXPECT_EQ(text_of(nqt::tok(buf, u" ")), u"one");
    bool fresh_state_was_empty = false;
    std::u16string second_in_thread;
    std::thread worker([&] {
        fresh_state_was_empty = nqt::tok(nullptr, u" ") == nullptr;  // nothing started here yet
        wchar local[] = u"x y";
        nqt::tok(local, u" ");
        second_in_thread = text_of(nqt::tok(nullptr, u" "));
    });
    worker.join();
    EXPECT_TRUE(fresh_state_was_empty);
    EXPECT_EQ(second_in_thread, u"y");
    EXPECT_EQ(text_of(nqt::tok(nullptr, u" ")), u"two");
    EXPECT_EQ(text_of(nqt::tok(nullptr, u" ")), u"three");
    EXPECT_EQ(nqt::tok(nullptr, u" "), nullptr);
}

TEST(TextTokR, InterleavedSplitsKeepSeparateStates) {
    wchar a[] = u"1,2,3";
    wchar b[] = u"x;y";
    wchar *sa = nullptr;
    wchar *sb = nullptr;
    EXPECT_EQ(text_of(nqt::tok_r(a, u",", &sa)), u"1");
    EXPECT_EQ(text_of(nqt::tok_r(b, u";", &sb)), u"x");
    EXPECT_EQ(text_of(nqt::tok_r(nullptr, u",", &sa)), u"2");
    EXPECT_EQ(text_of(nqt::tok_r(nullptr, u";", &sb)), u"y");
    EXPECT_EQ(text_of(nqt::tok_r(nullptr, u",", &sa)), u"3");
    EXPECT_EQ(nqt::tok_r(nullptr, u";", &sb), nullptr);
    EXPECT_EQ(nqt::tok_r(nullptr, u",", &sa), nullptr);
}

TEST(TextTokR, DoesNotTouchTheHiddenState) {
    wchar hidden[] = u"h1 h2";
    EXPECT_EQ(text_of(nqt::tok(hidden, u" ")), u"h1");
    wchar mine[] = u"m1 m2";
    wchar *state = nullptr;
    nqt::tok_r(mine, u" ", &state);
    EXPECT_EQ(text_of(nqt::tok(nullptr, u" ")), u"h2");
}

TEST(TextTokR, NullStateOrNoTextGivesNull) {
    wchar buf[] = u"a b";
    EXPECT_EQ(nqt::tok_r(buf, u" ", nullptr), nullptr);
    wchar *state = nullptr;
    EXPECT_EQ(nqt::tok_r(nullptr, u" ", &state), nullptr);
}

TEST(TextRev, ReversesEmptyOddAndEvenLengths) {
    wchar empty[] = u"";
    EXPECT_EQ(nqt::rev(empty), empty);
    EXPECT_EQ(empty[0], 0);
    wchar one[] = u"a";
    EXPECT_EQ(std::u16string(nqt::rev(one)), u"a");
    wchar even[] = u"abcd";
    EXPECT_EQ(std::u16string(nqt::rev(even)), u"dcba");
    wchar odd[] = u"abcde";
    EXPECT_EQ(std::u16string(nqt::rev(odd)), u"edcba");
    wchar two[] = u"ab";
    EXPECT_EQ(std::u16string(nqt::rev(two)), u"ba");
    EXPECT_EQ(nqt::rev(nullptr), nullptr);
}

TEST(TextRev, SwapsCodeUnitsNotCharacters) {
    wchar pair[] = u"a\U0001F600";  // a, high, low
    nqt::rev(pair);
    EXPECT_EQ(pair[0], 0xDE00);
    EXPECT_EQ(pair[1], 0xD83D);
    EXPECT_EQ(pair[2], u'a');
}

TEST(TextCase, UprAndLwrMapAsciiInPlaceInTheCLocale) {
    wchar buf[] = u"Pipe_1.dbf \u00e9";
    EXPECT_EQ(nqt::upr(buf), buf);
    EXPECT_EQ(std::u16string(buf), u"PIPE_1.DBF \u00e9");
    EXPECT_EQ(nqt::lwr(buf), buf);
    EXPECT_EQ(std::u16string(buf), u"pipe_1.dbf \u00e9");
    EXPECT_EQ(nqt::upr(nullptr), nullptr);
    EXPECT_EQ(nqt::lwr(nullptr), nullptr);
}

TEST(TextCase, Utf8LocaleMapsLatinLetters) {
    Utf8Locale locale;
    if (!locale.ok()) GTEST_SKIP() << "no C.UTF-8 locale";
    wchar buf[] = u"caf\u00e9";
    nqt::upr(buf);
    EXPECT_EQ(std::u16string(buf), u"CAF\u00c9");
    EXPECT_EQ(nqt::tolower(0x00C9), 0x00E9);
    EXPECT_EQ(nqt::toupper(0x03B1), 0x0391);  // Greek alpha
}

TEST(TextCase, SingleUnits) {
    EXPECT_EQ(nqt::toupper(u'a'), u'A');
    EXPECT_EQ(nqt::toupper(u'A'), u'A');
    EXPECT_EQ(nqt::toupper(u'1'), u'1');
    EXPECT_EQ(nqt::tolower(u'Z'), u'z');
    EXPECT_EQ(nqt::tolower(u'_'), u'_');
    EXPECT_EQ(nqt::toupper(0xD800), 0xD800);  // surrogates stay
    EXPECT_EQ(nqt::tolower(0), 0);
}

TEST(TextClass, ClassifiesUnits) {
    EXPECT_TRUE(nqt::isspace(u' '));
    EXPECT_TRUE(nqt::isspace(u'\t'));
    EXPECT_TRUE(nqt::isspace(u'\n'));
    EXPECT_TRUE(nqt::isspace(u'\r'));
    EXPECT_TRUE(nqt::isspace(u'\v'));
    EXPECT_TRUE(nqt::isspace(u'\f'));
    EXPECT_FALSE(nqt::isspace(u'x'));
    EXPECT_FALSE(nqt::isspace(0));
    EXPECT_TRUE(nqt::isdigit(u'0'));
    EXPECT_TRUE(nqt::isdigit(u'9'));
    EXPECT_FALSE(nqt::isdigit(u'a'));
    EXPECT_TRUE(nqt::isalpha(u'q'));
    EXPECT_TRUE(nqt::isalpha(u'Q'));
    EXPECT_FALSE(nqt::isalpha(u'5'));
    EXPECT_FALSE(nqt::isalpha(u'_'));
    EXPECT_TRUE(nqt::isalnum(u'5'));
    EXPECT_TRUE(nqt::isalnum(u'x'));
    EXPECT_FALSE(nqt::isalnum(u'-'));
}

}  // namespace
