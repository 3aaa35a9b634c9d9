// The Str family: copies, comparisons, wildcards, case, blanks, justification, words,
// tokens, keywords, versions and word wrap.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "nq_tls20an.h"
#include "text_test_util.h"

using nqtt::B;
using nqtt::S;
using nqtt::Strings;

namespace {

Strings lines_of(StrList *list) {
    Strings out = nqtt::entries(list);
    nq_StrList_destroy(list);
    return out;
}

}  // namespace

// ---- Copying ----

TEST(StrCopy, CpyWritesASecondTerminator) {
    std::vector<nq_wchar> dest(6, u'x');
    EXPECT_EQ(nq_Str_cpy(dest.data(), u"ab"), dest.data());
    EXPECT_EQ(dest[0], u'a');
    EXPECT_EQ(dest[1], u'b');
    EXPECT_EQ(dest[2], 0);
    EXPECT_EQ(dest[3], 0);
    EXPECT_EQ(dest[4], u'x');
}

TEST(StrCopy, CpyOfNullEmptiesDestAndYieldsNull) {
    std::vector<nq_wchar> dest(4, u'x');
    EXPECT_EQ(nq_Str_cpy(dest.data(), nullptr), nullptr);
    EXPECT_EQ(dest[0], 0);
    EXPECT_EQ(dest[1], u'x');
    EXPECT_EQ(nq_Str_cpy(nullptr, u"a"), nullptr);
}

TEST(StrCopy, NcpyTellsWhetherTheLimitWasReached) {
    std::vector<nq_wchar> dest(8, u'x');
    EXPECT_EQ(nq_Str_ncpy(dest.data(), u"abc", 3), 1);
    EXPECT_EQ(S(dest.data()), u"abc");
    EXPECT_EQ(nq_Str_ncpy(dest.data(), u"abc", 4), 0);
    EXPECT_EQ(S(dest.data()), u"abc");
    std::vector<nq_wchar> fresh(8, u'x');
    EXPECT_EQ(nq_Str_ncpy(fresh.data(), u"abcdef", 2), 1);
    EXPECT_EQ(S(fresh.data()), u"ab");
    EXPECT_EQ(fresh[3], u'x');  // n + 1 characters written at most
}

TEST(StrCopy, NcpyOfNullGivesAnEmptyDest) {
    std::vector<nq_wchar> dest(4, u'x');
    EXPECT_EQ(nq_Str_ncpy(dest.data(), nullptr, 3), 0);
    EXPECT_EQ(dest[0], 0);
    EXPECT_EQ(nq_Str_ncpy(dest.data(), u"abc", 0), 1);  // exactly 0 copied
    EXPECT_EQ(dest[0], 0);
    EXPECT_EQ(nq_Str_ncpy(dest.data(), u"abc", -2), 0);
    EXPECT_EQ(dest[0], 0);
    EXPECT_EQ(nq_Str_ncpy(nullptr, u"abc", 3), 0);
}

TEST(StrCopy, CatAppendsWithItsSecondTerminator) {
    std::vector<nq_wchar> dest(10, u'x');
    nq_Str_cpy(dest.data(), u"ab");
    EXPECT_EQ(nq_Str_cat(dest.data(), u"cd"), dest.data());
    EXPECT_EQ(S(dest.data()), u"abcd");
    EXPECT_EQ(dest[5], 0);
    EXPECT_EQ(nq_Str_cat(dest.data(), nullptr), nullptr);
    EXPECT_EQ(nq_Str_cat(nullptr, u"a"), nullptr);
    EXPECT_EQ(S(dest.data()), u"abcd");
}

TEST(StrCopy, SubstrCountsFromOneAndStopsAtTheEnd) {
    nq_wchar dest[16];
    EXPECT_EQ(S(nq_Str_substr(dest, u"abcdef", 2, 3)), u"bcd");
    EXPECT_EQ(S(nq_Str_substr(dest, u"abcdef", 0, 2)), u"ab");
    EXPECT_EQ(S(nq_Str_substr(dest, u"abcdef", -5, 2)), u"ab");
    EXPECT_EQ(S(nq_Str_substr(dest, u"abcdef", 5, 10)), u"ef");
    EXPECT_EQ(S(nq_Str_substr(dest, u"abc", 9, 2)), u"");
    EXPECT_EQ(S(nq_Str_substr(dest, u"abc", 1, -1)), u"");
    EXPECT_EQ(S(nq_Str_substr(dest, nullptr, 1, 2)), u"");
}

TEST(StrCopy, DupAndDupWCopyIntoNewBlocks) {
    nq_wchar *a = nq_Str_dup(u"text");
    nq_wchar *b = nq_Str_dupW(u"text");
    EXPECT_EQ(S(a), u"text");
    EXPECT_EQ(S(b), u"text");
    EXPECT_NE(a, b);
    nq_Free(a);
    nq_Free(b);
    EXPECT_EQ(nq_Str_dup(nullptr), nullptr);
}

// ---- Comparing ----

TEST(StrCompare, CmpiNullRules) {
    EXPECT_EQ(nq_Str_cmpi(nullptr, u""), 0);
    EXPECT_EQ(nq_Str_cmpi(u"", nullptr), 0);
    EXPECT_EQ(nq_Str_cmpi(nullptr, nullptr), 0);
    EXPECT_EQ(nq_Str_cmpi(nullptr, u"a"), 1);
    EXPECT_EQ(nq_Str_cmpi(u"a", nullptr), -1);
}

TEST(StrCompare, CmpiIgnoresCaseAndOrdersByUpperCase) {
    EXPECT_EQ(nq_Str_cmpi(u"Hello", u"hELLO"), 0);
    EXPECT_EQ(nq_Str_cmpi(u"ab", u"abc"), -1);
    EXPECT_EQ(nq_Str_cmpi(u"abc", u"AB"), 1);
    EXPECT_EQ(nq_Str_cmpi(u"a", u"B"), -1);
    // Upper-case order: "_" (0x5F) stands after "A" (0x41).
    EXPECT_EQ(nq_Str_cmpi(u"_", u"a"), 1);
    EXPECT_EQ(nq_Str_cmpi(u"", u""), 0);
}

TEST(StrCompare, NcmpiComparesAtMostN) {
    EXPECT_EQ(nq_Str_ncmpi(u"abcX", u"ABCy", 3), 0);
    EXPECT_EQ(nq_Str_ncmpi(u"abcX", u"ABCy", 4), -1);
    EXPECT_EQ(nq_Str_ncmpi(u"ab", u"abc", 3), -1);
    EXPECT_EQ(nq_Str_ncmpi(u"abd", u"ABC", 3), 1);
    EXPECT_EQ(nq_Str_ncmpi(u"x", u"y", 0), 0);
    EXPECT_EQ(nq_Str_ncmpi(nullptr, u"", 2), 0);
    EXPECT_EQ(nq_Str_ncmpi(nullptr, u"a", 2), -1);
}

TEST(StrCompare, AffirmativeAndNegativeWords) {
    for (const nq_wchar *w : {u"1", u"true", u"TRUE", u"Yes", u"on", u"ON"}) {
        EXPECT_EQ(nq_Str_isAffirmative(w), 1);
        EXPECT_EQ(nq_Str_isNegative(w), 0);
    }
    for (const nq_wchar *w : {u"0", u"false", u"No", u"off", u"OFF"}) {
        EXPECT_EQ(nq_Str_isNegative(w), 1);
        EXPECT_EQ(nq_Str_isAffirmative(w), 0);
    }
    EXPECT_EQ(nq_Str_isNegative(u""), 0);
    EXPECT_EQ(nq_Str_isAffirmative(u""), 0);
    EXPECT_EQ(nq_Str_isAffirmative(u"yes "), 0);
    EXPECT_EQ(nq_Str_isAffirmative(nullptr), 0);
    EXPECT_EQ(nq_Str_isNegative(nullptr), 0);
}

TEST(StrCompare, IndexFindsTheFirstOccurrence) {
    EXPECT_EQ(nq_Str_index(u"abcabc", u"ca", 0), 2);
    EXPECT_EQ(nq_Str_index(u"abcabc", u"abc", 0), 0);
    EXPECT_EQ(nq_Str_index(u"abcabc", u"bc", 0), 1);
    EXPECT_EQ(nq_Str_index(u"abcabc", u"CA", 0), -1);
    EXPECT_EQ(nq_Str_index(u"abcabc", u"CA", 1), 2);
    EXPECT_EQ(nq_Str_index(u"abc", u"abc", 0), 0);
    EXPECT_EQ(nq_Str_index(u"abc", u"", 0), 0);
    EXPECT_EQ(nq_Str_index(u"", u"", 1), 0);
    EXPECT_EQ(nq_Str_index(u"ab", u"abc", 0), -1);
    EXPECT_EQ(nq_Str_index(u"abc", u"x", 1), -1);
    EXPECT_EQ(nq_Str_index(nullptr, u"a", 0), -1);
    EXPECT_EQ(nq_Str_index(u"a", nullptr, 0), -1);
}

// ---- Wildcards ----

TEST(StrWildcard, EmptyCases) {
    EXPECT_EQ(nq_Str_matchWildcard(u"", u"*"), 1);
    EXPECT_EQ(nq_Str_matchWildcard(u"a", u""), 0);
    EXPECT_EQ(nq_Str_matchWildcard(u"", u""), 1);
    EXPECT_EQ(nq_Str_matchWildcard(nullptr, u"*"), 0);
    EXPECT_EQ(nq_Str_matchWildcard(u"a", nullptr), 0);
}

TEST(StrWildcard, StarBindsToTheFirstOccurrenceWithoutBacktracking) {
    EXPECT_EQ(nq_Str_matchWildcard(u"abcabd", u"*abd"), 0);
    EXPECT_EQ(nq_Str_matchWildcard(u"xabd", u"*abd"), 1);
    EXPECT_EQ(nq_Str_matchWildcard(u"abc", u"a*"), 1);
    EXPECT_EQ(nq_Str_matchWildcard(u"abc", u"*c"), 1);
    EXPECT_EQ(nq_Str_matchWildcard(u"xaby", u"*a*y"), 1);
    EXPECT_EQ(nq_Str_matchWildcard(u"abc", u"**c"), 1);
    EXPECT_EQ(nq_Str_matchWildcard(u"abc", u"*x"), 0);
    // "*c" takes the first "c"; the text left after it makes the match fail.
    EXPECT_EQ(nq_Str_matchWildcard(u"acbc", u"*c"), 0);
}

TEST(StrWildcard, QuestionMarkAfterAStarIsLiteral) {
    EXPECT_EQ(nq_Str_matchWildcard(u"a?c", u"*?c"), 1);
    EXPECT_EQ(nq_Str_matchWildcard(u"abc", u"*?c"), 0);
}

TEST(StrWildcard, QuestionMarkMatchesTheTerminator) {
    EXPECT_EQ(nq_Str_matchWildcard(u"ab", u"ab?"), 1);
    EXPECT_EQ(nq_Str_matchWildcard(u"abc", u"a?c"), 1);
    EXPECT_EQ(nq_Str_matchWildcard(u"ab", u"ab??"), 1);
    EXPECT_EQ(nq_Str_matchWildcard(u"ab", u"ab?c"), 0);
    EXPECT_EQ(nq_Str_matchWildcard(u"ab", u"ab?*c"), 0);
    EXPECT_EQ(nq_Str_matchWildcard(u"abc", u"ab"), 0);
}

TEST(StrWildcard, CaseMattersUnlessFolded) {
    EXPECT_EQ(nq_Str_matchWildcard(u"ABC", u"a*"), 0);
    EXPECT_EQ(nq_Str_matchWildcardi(u"ABC", u"a*"), 1);
    EXPECT_EQ(nq_Str_matchWildcardi(u"file.TXT", u"*.txt"), 1);
    EXPECT_EQ(nq_Str_matchWildcardi(nullptr, u"*"), 0);
    EXPECT_EQ(nq_Str_matchWildcardi(u"a", nullptr), 0);
}

// ---- Case ----

TEST(StrCase, ToUpperAndToLowerIntoAnotherBufferOrInPlace) {
    nq_wchar dest[16];
    EXPECT_EQ(S(nq_Str_toUpper(dest, u"abc-1Z")), u"ABC-1Z");
    EXPECT_EQ(S(nq_Str_toLower(dest, u"ABC-1z")), u"abc-1z");
    std::vector<nq_wchar> same = B(u"MiXeD");
    EXPECT_EQ(S(nq_Str_toUpper(same.data(), same.data())), u"MIXED");
    EXPECT_EQ(S(nq_Str_toLower(same.data(), same.data())), u"mixed");
    EXPECT_EQ(S(nq_Str_toUpper(dest, nullptr)), u"");
    EXPECT_EQ(nq_Str_toLower(nullptr, u"a"), nullptr);
}

// ---- Blanks, padding, justifying ----

TEST(StrBlanks, RemoveLeadingTrailingAndBoth) {
    std::vector<nq_wchar> s = B(u" \t a b \n");
    EXPECT_EQ(S(nq_Str_rlb(s.data())), u"a b \n");
    EXPECT_EQ(S(nq_Str_rtb(s.data())), u"a b");
    std::vector<nq_wchar> t = B(u"  x  ");
    EXPECT_EQ(S(nq_Str_delBlks(t.data())), u"x");
    std::vector<nq_wchar> blanks = B(u" \t\r\n ");
    EXPECT_EQ(S(nq_Str_delBlks(blanks.data())), u"");
    EXPECT_EQ(nq_Str_rlb(nullptr), nullptr);
    EXPECT_EQ(nq_Str_rtb(nullptr), nullptr);
    EXPECT_EQ(nq_Str_delBlks(nullptr), nullptr);
}

TEST(StrBlanks, StripRemovesEveryOccurrence) {
    std::vector<nq_wchar> s = B(u"a-b--c-");
    EXPECT_EQ(S(nq_Str_stripChar(s.data(), u'-')), u"abc");
    std::vector<nq_wchar> t = B(u" a b  c ");
    EXPECT_EQ(S(nq_Str_strip(t.data())), u"abc");
    EXPECT_EQ(nq_Str_strip(nullptr), nullptr);
}

TEST(StrBlanks, StripCharsAllOrLeadingOnly) {
    std::vector<nq_wchar> s = B(u"xyaxbyc");
    EXPECT_EQ(S(nq_Str_stripChars(s.data(), u"xy", 0)), u"abc");
    std::vector<nq_wchar> t = B(u"xyaxbyc");
    EXPECT_EQ(S(nq_Str_stripChars(t.data(), u"xy", 1)), u"axbyc");
    std::vector<nq_wchar> all = B(u"xyx");
    EXPECT_EQ(S(nq_Str_stripChars(all.data(), u"xy", 1)), u"");
    std::vector<nq_wchar> u = B(u"abc");
    EXPECT_EQ(nq_Str_stripChars(u.data(), nullptr, 0), u.data());
    EXPECT_EQ(S(u.data()), u"abc");
    EXPECT_EQ(nq_Str_stripChars(nullptr, u"a", 0), nullptr);
}

TEST(StrJustify, PadAppendsSpacesAndKeepsALongerString) {
    std::vector<nq_wchar> s = B(u"ab");
    nq_Str_pad(s.data(), 5);
    EXPECT_EQ(S(s.data()), u"ab   ");
    std::vector<nq_wchar> t = B(u"abcdef");
    nq_Str_pad(t.data(), 3);
    EXPECT_EQ(S(t.data()), u"abcdef");
    nq_Str_pad(nullptr, 3);
}

TEST(StrJustify, LeftJustifyPadsAndCuts) {
    std::vector<nq_wchar> s = B(u"abc");
    nq_Str_lj(s.data(), 5);
    EXPECT_EQ(S(s.data()), u"abc  ");
    nq_Str_lj(s.data(), 2);
    EXPECT_EQ(S(s.data()), u"ab");
    nq_Str_lj(s.data(), -3);
    EXPECT_EQ(S(s.data()), u"");
}

TEST(StrJustify, RightJustifyMovesTheText) {
    std::vector<nq_wchar> s = B(u"abc");
    nq_Str_rj(s.data(), 6);
    EXPECT_EQ(S(s.data()), u"   abc");
    std::vector<nq_wchar> t = B(u"abcdef");
    nq_Str_rj(t.data(), 3);
    EXPECT_EQ(S(t.data()), u"abc");
    std::vector<nq_wchar> u = B(u"abc");
    nq_Str_rj(u.data(), 3);
    EXPECT_EQ(S(u.data()), u"abc");
}

TEST(StrJustify, RightJustifyWithANegativeWidthEmptiesTheString) {
    std::vector<nq_wchar> s = B(u"abc");
    nq_Str_rj(s.data(), -1);
    EXPECT_EQ(S(s.data()), u"");
}

TEST(StrJustify, CentreJustifyPutsTheOddSpaceOnTheRight) {
    std::vector<nq_wchar> s = B(u"abc");
    nq_Str_cj(s.data(), 6);
    EXPECT_EQ(S(s.data()), u" abc  ");
    std::vector<nq_wchar> t = B(u"abc");
    nq_Str_cj(t.data(), 7);
    EXPECT_EQ(S(t.data()), u"  abc  ");
    std::vector<nq_wchar> u = B(u"abcdef");
    nq_Str_cj(u.data(), 4);
    EXPECT_EQ(S(u.data()), u"abcd");
    std::vector<nq_wchar> v = B(u"abc");
    nq_Str_cj(v.data(), -2);
    EXPECT_EQ(S(v.data()), u"");
    std::vector<nq_wchar> w = B(u"");
    nq_Str_cj(w.data(), 3);
    EXPECT_EQ(S(w.data()), u"   ");
}

// ---- Words and tokens ----

TEST(StrWords, CdlWordsWalkToTheEndAndStayThere) {
    const nq_wchar *src = u"a;;b";
    nq_wchar word[8];
    int pos = 0;
    EXPECT_EQ(S(nq_Str_nextCDLWord(word, src, &pos)), u"a");
    EXPECT_EQ(pos, 1);
    EXPECT_EQ(S(nq_Str_nextCDLWord(word, src, &pos)), u"");
    EXPECT_EQ(pos, 2);
    EXPECT_EQ(S(nq_Str_nextCDLWord(word, src, &pos)), u"b");
    EXPECT_EQ(pos, 4);
    EXPECT_EQ(S(nq_Str_nextCDLWord(word, src, &pos)), u"");
    EXPECT_EQ(pos, 4);
    EXPECT_EQ(S(nq_Str_nextCDLWord(word, src, &pos)), u"");
    EXPECT_EQ(pos, 4);
}

TEST(StrWords, CdlWordBeyondTheEndLeavesPos) {
    nq_wchar word[8] = u"old";
    int pos = 9;
    EXPECT_EQ(S(nq_Str_nextCDLWord(word, u"ab", &pos)), u"");
    EXPECT_EQ(pos, 9);
    pos = -1;
    EXPECT_EQ(S(nq_Str_nextCDLWord(word, u"ab", &pos)), u"");
    EXPECT_EQ(pos, -1);
    EXPECT_EQ(S(nq_Str_nextCDLWord(word, nullptr, &pos)), u"");
    EXPECT_EQ(S(nq_Str_nextCDLWord(word, u"a", nullptr)), u"");
}

TEST(StrWords, CdlSkipsOnlyOneSemicolon) {
    nq_wchar word[8];
    int pos = 0;
    EXPECT_EQ(S(nq_Str_nextCDLWord(word, u";;a", &pos)), u"");
    EXPECT_EQ(pos, 1);
    EXPECT_EQ(S(nq_Str_nextCDLWord(word, u";;a", &pos)), u"a");
    EXPECT_EQ(pos, 3);
}

TEST(StrWords, SdlWordsSkipRunsOfSpaces) {
    const nq_wchar *src = u"  hello   world ";
    nq_wchar word[16];
    int pos = 0;
    EXPECT_EQ(S(nq_Str_nextSDLWord(word, src, &pos)), u"hello");
    EXPECT_EQ(pos, 7);
    EXPECT_EQ(S(nq_Str_nextSDLWord(word, src, &pos)), u"world");
    EXPECT_EQ(pos, 15);
    EXPECT_EQ(S(nq_Str_nextSDLWord(word, src, &pos)), u"");
    EXPECT_EQ(pos, 16);
}

TEST(StrTokens, NthTokenFromTheLeft) {
    int pos = 99;
    EXPECT_EQ(S(nq_Str_getNthToken(u",,a,,b,c", u",", 0, &pos)), u"a");
    EXPECT_EQ(pos, 2);
    EXPECT_EQ(S(nq_Str_getNthToken(u",,a,,b,c", u",", 1, &pos)), u"b");
    EXPECT_EQ(pos, 5);
    EXPECT_EQ(S(nq_Str_getNthToken(u"a b;c", u" ;", 2, &pos)), u"c");
    EXPECT_EQ(pos, 4);
    EXPECT_EQ(nq_Str_getNthToken(u"a,b", u",", 2, &pos), nullptr);
    EXPECT_EQ(S(nq_Str_getNthToken(u"a,b", u",", 1, nullptr)), u"b");
}

TEST(StrTokens, NthTokenRefusesTextsOver512) {
    const std::u16string longest(512, u'a');
    int pos = 0;
    EXPECT_EQ(S(nq_Str_getNthToken(longest.c_str(), u",", 0, &pos)), longest);
    EXPECT_EQ(pos, 0);
    const std::u16string over(513, u'a');
    pos = 7;
    EXPECT_EQ(nq_Str_getNthToken(over.c_str(), u",", 0, &pos), nullptr);
    EXPECT_EQ(pos, -1);
    pos = 7;
    EXPECT_EQ(nq_Str_getNthToken(nullptr, u",", 0, &pos), nullptr);
    EXPECT_EQ(pos, -1);
    EXPECT_EQ(nq_Str_getNthToken(u"a", nullptr, 0, &pos), nullptr);
    EXPECT_EQ(nq_Str_getNthToken(u"a", u",", -1, &pos), nullptr);
}

TEST(StrTokens, NthTokenFromTheRight) {
    const nq_wchar *text = u"a\\bb\\ccc";
    int pos = 99;
    EXPECT_EQ(S(nq_Str_getRightNthToken(text, u"\\", 0, &pos)), u"ccc");
    EXPECT_EQ(pos, 5);
    EXPECT_EQ(S(nq_Str_getRightNthToken(text, u"\\", 1, &pos)), u"bb");
    EXPECT_EQ(pos, 2);
    EXPECT_EQ(S(nq_Str_getRightNthToken(text, u"\\", 2, &pos)), u"a");
    EXPECT_EQ(pos, 0);
    pos = 99;
    EXPECT_EQ(nq_Str_getRightNthToken(text, u"\\", 3, &pos), nullptr);
    EXPECT_EQ(pos, -1);
    EXPECT_EQ(S(nq_Str_getRightNthToken(u"\\a\\bc\\\\", u"\\", 0, &pos)), u"bc");
    EXPECT_EQ(pos, 3);
}

TEST(StrTokens, RightTokenRefusesTextsOver512) {
    const std::u16string over = std::u16string(510, u'a') + u"\\bc";
    int pos = 5;
    EXPECT_EQ(nq_Str_getRightNthToken(over.c_str(), u"\\", 0, &pos), nullptr);
    EXPECT_EQ(pos, -1);
    EXPECT_EQ(nq_Str_getRightNthToken(nullptr, u"\\", 0, &pos), nullptr);
    const std::u16string fits = std::u16string(509, u'a') + u"\\bc";
    EXPECT_EQ(S(nq_Str_getRightNthToken(fits.c_str(), u"\\", 0, &pos)), u"bc");
    EXPECT_EQ(pos, 510);
}

TEST(StrTokens, LeftAndRightTokensHaveBuffersOfTheirOwn) {
    const nq_wchar *left = nq_Str_getNthToken(u"x,y", u",", 0, nullptr);
    const nq_wchar *right = nq_Str_getRightNthToken(u"p,q", u",", 0, nullptr);
    EXPECT_EQ(S(left), u"x");
    EXPECT_EQ(S(right), u"q");
}

// ---- Keywords ----

TEST(StrKeyword, LocateGivesWhatLiesBetweenTheFirstTwoDelimiters) {
    EXPECT_EQ(S(nq_Str_locateKeyword(u"x%NAME%y%Z%", u"%")), u"NAME");
    EXPECT_EQ(S(nq_Str_locateKeyword(u"a<<key<<b", u"<<")), u"key");
    EXPECT_EQ(S(nq_Str_locateKeyword(u"%%", u"%")), u"");
    EXPECT_EQ(nq_Str_locateKeyword(u"x%NAME", u"%"), nullptr);
    EXPECT_EQ(nq_Str_locateKeyword(u"none", u"%"), nullptr);
    EXPECT_EQ(nq_Str_locateKeyword(nullptr, u"%"), nullptr);
    EXPECT_EQ(nq_Str_locateKeyword(u"%a%", nullptr), nullptr);
}

TEST(StrKeyword, LocateCutsTo256) {
    const std::u16string span(300, u'k');
    const std::u16string text = u"%" + span + u"%";
    EXPECT_EQ(S(nq_Str_locateKeyword(text.c_str(), u"%")), std::u16string(256, u'k'));
    const std::u16string exact = u"%" + std::u16string(256, u'k') + u"%";
    EXPECT_EQ(S(nq_Str_locateKeyword(exact.c_str(), u"%")), std::u16string(256, u'k'));
}

TEST(StrKeyword, ReplaceOnlyTheFirstOccurrence) {
    std::vector<nq_wchar> text = B(u"Hello %NAME%, %NAME%");
    EXPECT_EQ(nq_Str_replaceKeyword(text.data(), u"NAME", u"%", u"Bob", 100), text.data());
    EXPECT_EQ(S(text.data()), u"Hello Bob, %NAME%");
}

TEST(StrKeyword, ReplaceCutsToMaxLengthEvenWhenNothingIsFound) {
    std::vector<nq_wchar> text = B(u"abcdefgh");
    nq_Str_replaceKeyword(text.data(), u"K", u"$", u"x", 5);
    EXPECT_EQ(S(text.data()), u"abcde");
    std::vector<nq_wchar> grow = B(u"[$K$]");
    nq_Str_replaceKeyword(grow.data(), u"K", u"$", u"0123456789", 6);
    EXPECT_EQ(S(grow.data()), u"[01234");
    EXPECT_EQ(nq_Str_replaceKeyword(nullptr, u"K", u"$", u"x", 5), nullptr);
    EXPECT_EQ(nq_Str_replaceKeyword(grow.data(), nullptr, u"$", u"x", 5), nullptr);
}

TEST(StrKeyword, ReplaceDynamicLeavesTheTextAlone) {
    const nq_wchar *text = u"a #X# b #X#";
    nq_wchar *out = nq_Str_replaceKeywordDynamic(text, u"X", u"#", u"a much longer value");
    EXPECT_EQ(S(out), u"a a much longer value b #X#");
    nq_Free(out);
    out = nq_Str_replaceKeywordDynamic(text, u"Y", u"#", u"v");
    EXPECT_EQ(S(out), u"a #X# b #X#");
    EXPECT_NE(out, text);
    nq_Free(out);
    EXPECT_EQ(nq_Str_replaceKeywordDynamic(nullptr, u"X", u"#", u"v"), nullptr);
    EXPECT_EQ(nq_Str_replaceKeywordDynamic(text, u"X", u"#", nullptr), nullptr);
}

TEST(StrKeyword, ReplaceCharReplacesEveryOccurrenceOfAString) {
    EXPECT_EQ(S(nq_Str_replaceChar(u"a--b--c", u"--", u"+")), u"a+b+c");
    EXPECT_EQ(S(nq_Str_replaceChar(u"a\tb\tc", u"\t", u" ")), u"a b c");
    EXPECT_EQ(S(nq_Str_replaceChar(u"aaa", u"aa", u"b")), u"ba");
    EXPECT_EQ(S(nq_Str_replaceChar(u"abc", u"b", u"")), u"ac");
    EXPECT_EQ(S(nq_Str_replaceChar(u"abc", u"x", u"y")), u"abc");
}

TEST(StrKeyword, ReplaceCharOfNullGivesTheEmptyBuffer) {
    const nq_wchar *first = nq_Str_replaceChar(u"abc", u"b", u"x");
    const nq_wchar *empty = nq_Str_replaceChar(nullptr, u"b", u"x");
    EXPECT_EQ(first, empty);
    EXPECT_EQ(S(empty), u"");
}

TEST(StrKeyword, ReplaceCharWithAnEmptyFromCopiesTheText) {
    EXPECT_EQ(S(nq_Str_replaceChar(u"abc", u"", u"x")), u"abc");
    EXPECT_EQ(S(nq_Str_replaceChar(u"abc", nullptr, u"x")), u"abc");
}

TEST(StrKeyword, ReplaceCharIsCutAtItsBuffer) {
    const std::u16string text(400, u'a');
    EXPECT_EQ(S(nq_Str_replaceChar(text.c_str(), u"a", u"bb")), std::u16string(511, u'b'));
    const std::u16string longer(600, u'c');
    EXPECT_EQ(S(nq_Str_replaceChar(longer.c_str(), u"x", u"y")), std::u16string(511, u'c'));
}

// ---- Versions ----

TEST(StrVersion, NullsAndEquality) {
    EXPECT_EQ(nq_Str_compareVersion(nullptr, nullptr), 0);
    EXPECT_EQ(nq_Str_compareVersion(nullptr, u"1"), -1);
    EXPECT_EQ(nq_Str_compareVersion(u"1", nullptr), 1);
    EXPECT_EQ(nq_Str_compareVersion(u"1.2a", u"1.2A"), 0);
}

TEST(StrVersion, ComponentsCompareAsNumbers) {
    EXPECT_EQ(nq_Str_compareVersion(u"1.10", u"1.9"), 1);
    EXPECT_EQ(nq_Str_compareVersion(u"2", u"10"), -1);
    EXPECT_EQ(nq_Str_compareVersion(u"1.2.3", u"1.2.4"), -1);
    EXPECT_EQ(nq_Str_compareVersion(u"1.x", u"1.0"), 0);
    EXPECT_EQ(nq_Str_compareVersion(u"1. 5", u"1.5"), 0);
}

TEST(StrVersion, TheWalkFollowsTheFirstVersionOnly) {
    EXPECT_EQ(nq_Str_compareVersion(u"1.2.1", u"1.2"), 1);
    EXPECT_EQ(nq_Str_compareVersion(u"1.2", u"1.2.1"), 0);
    EXPECT_EQ(nq_Str_compareVersion(u"1.2.0", u"1.2"), 0);
}

// ---- Word wrap ----

TEST(StrWrap, ClosestWordBoundaryCountsBackFromN) {
    EXPECT_EQ(nq_Str_findClosestWordBoundary(u"hello world", 8), 3);
    EXPECT_EQ(nq_Str_findClosestWordBoundary(u"hello world", 6), 1);
    EXPECT_EQ(nq_Str_findClosestWordBoundary(u"abcdef", 4), 0);
    EXPECT_EQ(nq_Str_findClosestWordBoundary(u" abc", 4), 4);
    EXPECT_EQ(nq_Str_findClosestWordBoundary(u"ab cd", 100), 98);
    EXPECT_EQ(nq_Str_findClosestWordBoundary(nullptr, 4), 0);
    EXPECT_EQ(nq_Str_findClosestWordBoundary(u"a b", 0), 0);
}

TEST(StrWrap, ATextNotLongerThanTheWidthIsOneLine) {
    EXPECT_EQ(lines_of(nq_Str_wrapText(u"abc", 10)), Strings({u"abc"}));
    EXPECT_EQ(lines_of(nq_Str_wrapText(u" abc ", 5)), Strings({u" abc "}));
    EXPECT_EQ(lines_of(nq_Str_wrapText(u"", 5)), Strings({u""}));
}

TEST(StrWrap, LinesBreakAtSpacesAndTheLastKeepsItsLeadingSpace) {
    EXPECT_EQ(lines_of(nq_Str_wrapText(u"the quick brown fox", 10)),
              Strings({u"the quick", u" brown fox"}));
    EXPECT_EQ(lines_of(nq_Str_wrapText(u"aaaa bbbb cccc", 4)),
              Strings({u"aaaa", u"bbbb", u"cccc"}));
}

TEST(StrWrap, AWordFillingTheWidthIsCut) {
    EXPECT_EQ(lines_of(nq_Str_wrapText(u"abcdefghij", 4)), Strings({u"abcd", u"efgh", u"ij"}));
    EXPECT_EQ(lines_of(nq_Str_wrapText(u"abcdefgh", 4)), Strings({u"abcd", u"efgh"}));
}

TEST(StrWrap, LinesLongerThan512AreKeptWhole) {
    const std::u16string word(700, u'w');
    const std::u16string text = word + u" x";
    EXPECT_EQ(lines_of(nq_Str_wrapText(text.c_str(), 800)), Strings({text}));
}

TEST(StrWrap, NullTextOrWidthBelowOneYieldsNull) {
    EXPECT_EQ(nq_Str_wrapText(nullptr, 10), nullptr);
    EXPECT_EQ(nq_Str_wrapText(u"abc", 0), nullptr);
    EXPECT_EQ(nq_Str_wrapText(u"abc", -4), nullptr);
}
