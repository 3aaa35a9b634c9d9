// Messages in English: translation without a translator, decoration, escapes, splitting and
// the trace frame. The translated path runs in processes of its own (test_msg_translator.cpp).
#include <algorithm>
#include <cstdlib>
#include <string>

#include "msg_test.h"

using nqmt::S;

namespace {

// Whatever environment this program was started from, its first message finds no translator,
// so every test here sees English (a language other than English would only add one box).
const bool g_no_translator = [] {
    ::unsetenv("NQ_TRANSLATOR");
    return true;
}();

class Msg : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        (void)g_no_translator;
        // Settles the language of this process, if nothing has yet, from an empty nq.ini.
        nqmt::Scene settle;
        nq_Msg_translate(u"", u"", 0);
    }
    nqmt::Scene scene;
};

std::u16string escaped(std::u16string text) { return S(nq_Msg_scanEsc(text.data())); }

}  // namespace

// Translation without a translator: the decorated English.

TEST_F(Msg, TranslateWithoutLanguageGivesTextAndOneBlankForFormat2) {
    EXPECT_EQ(S(nq_Msg_translate(u"Open file", u"MENU", 2)), u"Open file ");
    EXPECT_TRUE(nqmt::boxes().empty());
}

TEST_F(Msg, TranslateDecoratesByEveryFormatCode) {
    const char16_t *expected[] = {u"x", u"x", u"x ", u"\nx", u"\nx ", u"x\n", u"x \n", u"\nx\n", u"\nx \n", u"x"};
    for (int code = 0; code <= 9; ++code) {
        EXPECT_EQ(S(nq_Msg_translate(u"x", u"C", code)), expected[code]) << code;
    }
    EXPECT_EQ(S(nq_Msg_translate(u"x", u"C", -1)), u"x");
    EXPECT_EQ(S(nq_Msg_translate(u"x", u"C", 0x10003)), u"x");
}

TEST_F(Msg, TranslateResolvesEscapesOfTheEnglish) {
    EXPECT_EQ(S(nq_Msg_translate(u"Line\\none", u"C", 5)), u"Line\none\n");
}

TEST_F(Msg, TranslateOfNullTextIsTheDecoratedEmptyText) {
    EXPECT_EQ(S(nq_Msg_translate(nullptr, u"C", 7)), u"\n\n");
    EXPECT_EQ(S(nq_Msg_translate(nullptr, nullptr, 1)), u"");
    EXPECT_EQ(S(nq_Msg_translate(u"a", nullptr, 2)), u"a ");
}

TEST_F(Msg, TranslateResultIsOneStaticBuffer) {
    nq_wchar *first = nq_Msg_translate(u"one", u"C", 1);
    nq_wchar *second = nq_Msg_translate(u"two", u"C", 1);
    EXPECT_EQ(first, second);
    EXPECT_EQ(S(first), u"two");
}

TEST_F(Msg, TranslateCutsAtTheTranslationBuffer) {
    const std::u16string longText(300, u'y');
    const std::u16string result = S(nq_Msg_translate(longText.c_str(), u"C", 2));
    EXPECT_EQ(result, std::u16string(255, u'y'));
}

TEST_F(Msg, MsgTakesNarrowUtf8TextAndContext) {
    EXPECT_EQ(S(nq_Msg("Gr\xc3\xb6\xc3\x9f" "e", "TOOL", 2)), u"Größe ");
    EXPECT_EQ(S(nq_Msg("plain", "TOOL", 3)), u"\nplain");
}

TEST_F(Msg, MsgOfNullTextIsEmpty) {
    EXPECT_EQ(S(nq_Msg(nullptr, "TOOL", 1)), u"");
    EXPECT_EQ(S(nq_Msg("x", nullptr, 2)), u"x ");
}

TEST_F(Msg, MsgSharesTheTranslationBuffer) {
    EXPECT_EQ(nq_Msg("a", "C", 1), nq_Msg_translate(u"b", u"C", 1));
}

TEST_F(Msg, MsgDBColsTranslatesWideText) {
    EXPECT_EQ(S(nq_MsgDBCols(u"Diameter", 2)), u"Diameter ");
    EXPECT_EQ(S(nq_MsgDBCols(nullptr, 1)), u"");
}

// Padding.

TEST_F(Msg, PadFillsWithBlanksToTheWidth) {
    EXPECT_EQ(S(nq_Msg_pad(u"Name", u"C", 1, 8)), u"Name    ");
}

TEST_F(Msg, PadPadsTheDecoratedText) {
    EXPECT_EQ(S(nq_Msg_pad(u"ab", u"C", 3, 5)), u"\nab  ");
}

TEST_F(Msg, PadKeepsALongerTextWhole) {
    EXPECT_EQ(S(nq_Msg_pad(u"Description", u"C", 1, 4)), u"Description");
}

TEST_F(Msg, PadWithWidthZeroOrBelowDoesNotPad) {
    EXPECT_EQ(S(nq_Msg_pad(u"ab", u"C", 1, 0)), u"ab");
    EXPECT_EQ(S(nq_Msg_pad(u"ab", u"C", 1, -3)), u"ab");
}

TEST_F(Msg, PadStopsAtItsBuffer) {
    const std::u16string result = S(nq_Msg_pad(u"ab", u"C", 1, 100000));
    EXPECT_EQ(result.size(), 511u);
    EXPECT_EQ(result.substr(0, 3), u"ab ");
}

TEST_F(Msg, PadOfNullTextPadsTheEmptyText) {
    EXPECT_EQ(S(nq_Msg_pad(nullptr, nullptr, 0, 3)), u"   ");
}

// Decoration.

TEST_F(Msg, FormatDecoratesByTheTable) {
    EXPECT_EQ(S(nq_Msg_format(u"t", 2)), u"t ");
    EXPECT_EQ(S(nq_Msg_format(u"t", 3)), u"\nt");
    EXPECT_EQ(S(nq_Msg_format(u"t", 4)), u"\nt ");
    EXPECT_EQ(S(nq_Msg_format(u"t", 5)), u"t\n");
    EXPECT_EQ(S(nq_Msg_format(u"t", 6)), u"t \n");
    EXPECT_EQ(S(nq_Msg_format(u"t", 7)), u"\nt\n");
    EXPECT_EQ(S(nq_Msg_format(u"t", 8)), u"\nt \n");
}

TEST_F(Msg, FormatLeavesTextAsItIsForOtherCodes) {
    for (int code : {0, 1, 9, 100, -2}) EXPECT_EQ(S(nq_Msg_format(u"t %s %d", code)), u"t %s %d") << code;
}

TEST_F(Msg, FormatTurnsBackslashNIntoALineBreak) {
    EXPECT_EQ(S(nq_Msg_format(u"first\\nsecond", 1)), u"first\nsecond");
}

TEST_F(Msg, FormatOfBackslashBBetweenLettersJoinsThem) {
    EXPECT_EQ(S(nq_Msg_format(u"a\\bc", 1)), u"ac");
}

TEST_F(Msg, FormatDoesNotChangeItsArgument) {
    const nq_wchar text[] = u"a\\tb";
    EXPECT_EQ(S(nq_Msg_format(text, 1)), u"a\tb");
    EXPECT_EQ(S(text), u"a\\tb");
}

TEST_F(Msg, FormatOfNullIsTheDecoratedEmptyText) {
    EXPECT_EQ(S(nq_Msg_format(nullptr, 8)), u"\n \n");
}

TEST_F(Msg, FormatResultIsOneStaticBuffer) {
    nq_wchar *first = nq_Msg_format(u"one", 1);
    nq_wchar *second = nq_Msg_format(u"two", 1);
    EXPECT_EQ(first, second);
    EXPECT_EQ(S(first), u"two");
}

TEST_F(Msg, FormatCutsLongTextAtItsBuffers) {
    const std::u16string longText(600, u'z');
    EXPECT_EQ(S(nq_Msg_format(longText.c_str(), 2)), std::u16string(511, u'z'));
    EXPECT_EQ(S(nq_Msg_format(longText.c_str(), 3)), u"\n" + std::u16string(510, u'z'));
}

TEST_F(Msg, SetFormatMapsOneToSevenOntoTwoToEight) {
    for (int flags = 1; flags <= 7; ++flags) EXPECT_EQ(nq_Msg_setFormat(flags), flags + 1);
}

TEST_F(Msg, SetFormatOfZeroOrEightGivesOne) {
    EXPECT_EQ(nq_Msg_setFormat(0), 1);
    EXPECT_EQ(nq_Msg_setFormat(8), 1);
    EXPECT_EQ(nq_Msg_setFormat(-1), 1);
    EXPECT_EQ(nq_Msg_setFormat(1000), 1);
}

TEST_F(Msg, SetFormatFlagsReadAsBlankAndLineBreaks) {
    EXPECT_EQ(S(nq_Msg_format(u"m", nq_Msg_setFormat(1))), u"m ");
    EXPECT_EQ(S(nq_Msg_format(u"m", nq_Msg_setFormat(2))), u"\nm");
    EXPECT_EQ(S(nq_Msg_format(u"m", nq_Msg_setFormat(4))), u"m\n");
    EXPECT_EQ(S(nq_Msg_format(u"m", nq_Msg_setFormat(7))), u"\nm \n");
    EXPECT_EQ(S(nq_Msg_format(u"m", nq_Msg_setFormat(0))), u"m");
}

// Escapes, row by row.

TEST_F(Msg, EscapeQuotesAndBackslashStandForThemselves) {
    EXPECT_EQ(escaped(u"say \\\"hi\\\""), u"say \"hi\"");
    EXPECT_EQ(escaped(u"it\\'s"), u"it's");
    EXPECT_EQ(escaped(u"a\\\\b"), u"a\\b");
}

TEST_F(Msg, EscapeLettersGiveTheirControlCharacters) {
    EXPECT_EQ(escaped(u"\\a"), std::u16string(1, u'\x07'));
    EXPECT_EQ(escaped(u"\\f"), std::u16string(1, u'\x0c'));
    EXPECT_EQ(escaped(u"\\n"), u"\n");
    EXPECT_EQ(escaped(u"\\r"), u"\r");
    EXPECT_EQ(escaped(u"\\t"), u"\t");
}

TEST_F(Msg, EscapeBIsOverwrittenByTheNextCharacter) {
    EXPECT_EQ(escaped(u"ab\\bcd"), u"abcd");
    EXPECT_EQ(escaped(u"x\\b\\b\\by"), u"xy");
}

TEST_F(Msg, EscapeBAtTheEndIsOverwrittenByTheEnd) {
    EXPECT_EQ(escaped(u"ab\\b"), u"ab");
}

TEST_F(Msg, EscapeBIsStoredAtTheOutputPosition) {
    // Followed by a numeric escape, the number takes the place the 8 held.
    EXPECT_EQ(escaped(u"a\\b\\101"), u"aA");
}

TEST_F(Msg, FirstNumericEscapeReadsAsOctal) {
    EXPECT_EQ(escaped(u"\\101BC"), u"ABC");
    EXPECT_EQ(escaped(u"\\60"), u"0");
    EXPECT_EQ(escaped(u"x\\7y"), u"x\x07y");
}

TEST_F(Msg, NumericEscapeTakesAtMostThreeDigits) {
    EXPECT_EQ(escaped(u"\\1012"), u"A2");
}

TEST_F(Msg, NumericEscapeCarriesItsValueToTheNext) {
    // The second starts from 65: rotated by 3 and added for each of 1, 0, 1.
    const char16_t second = static_cast<char16_t>(((((65u << 3) + 1u) << 3) << 3) + 1u);
    EXPECT_EQ(escaped(u"\\101\\101"), std::u16string({u'A', second}));
    // Three in a row: 1, then 9, then 73.
    EXPECT_EQ(escaped(u"\\1\\1\\1"), std::u16string({u'\x01', u'\x09', u'\x49'}));
}

TEST_F(Msg, NumericEscapeStartsAfreshInEachText) {
    EXPECT_EQ(escaped(u"\\101"), u"A");
    EXPECT_EQ(escaped(u"\\101"), u"A");
}

TEST_F(Msg, NumericEscapeTakesEightAndNineAsDigits) {
    EXPECT_EQ(escaped(u"\\18"), std::u16string(1, char16_t(8 + 8)));
    EXPECT_EQ(escaped(u"\\9"), std::u16string(1, char16_t(9)));
}

TEST_F(Msg, NumericEscapeRotatesIn32BitsAndStoresTheLow16) {
    // Each "\1" multiplies the carried value by 8 and adds 1: 0x1, 0x9, 0x49 ... Its eleventh
    // is 0x49249249; the twelfth brings the top bits round to the bottom (0x4924924B, where a
    // shift would give 0x49249249), and the thirteenth goes on from there.
    std::u16string text;
    for (int i = 0; i < 13; ++i) text += u"\\1";
    const std::u16string result = escaped(text);
    ASSERT_EQ(result.size(), 13u);
    EXPECT_EQ(result[0], 0x1);
    EXPECT_EQ(result[5], 0x9249);
    EXPECT_EQ(result[10], 0x9249);
    EXPECT_EQ(result[11], 0x924B);
    EXPECT_EQ(result[12], 0x925B);
}

TEST_F(Msg, UnknownEscapeDropsBackslashAndCharacter) {
    EXPECT_EQ(escaped(u"a\\qb\\zc"), u"abc");
    EXPECT_EQ(escaped(u"\\%d"), u"d");
}

TEST_F(Msg, BackslashEndingTheTextIsDropped) {
    EXPECT_EQ(escaped(u"end\\"), u"end");
}

TEST_F(Msg, EscapeOfNumberZeroEndsTheText) {
    EXPECT_EQ(escaped(u"ab\\0cd"), u"ab");
}

TEST_F(Msg, ScanEscWorksInPlaceAndYieldsItsArgument) {
    nq_wchar text[] = u"x\\ty";
    EXPECT_EQ(nq_Msg_scanEsc(text), text);
    EXPECT_EQ(S(text), u"x\ty");
}

TEST_F(Msg, ScanEscOfNullYieldsNull) { EXPECT_EQ(nq_Msg_scanEsc(nullptr), nullptr); }

TEST_F(Msg, ScanEscLeavesPlainTextAlone) {
    EXPECT_EQ(escaped(u""), u"");
    EXPECT_EQ(escaped(u"no escapes here"), u"no escapes here");
}

TEST_F(Msg, ScanEscKeepsAtMost511Characters) {
    std::u16string text(700, u'q');
    text[0] = u'\\';
    text[1] = u'n';
    const std::u16string result = escaped(text);
    EXPECT_EQ(result.size(), 511u);
    EXPECT_EQ(result[0], u'\n');
}

// Splitting.

TEST_F(Msg, BreakStrSplitsTwoWordsJoinedByUnderscore) {
    nq_wchar first[32], second[32];
    EXPECT_EQ(nq_Msg_breakStr(u"PIPE_SIZE", first, second), 1);
    EXPECT_EQ(S(first), u"PIPE");
    EXPECT_EQ(S(second), u"SIZE");
}

TEST_F(Msg, BreakStrSplitsOnBlanksAndRunsOfDelimiters) {
    nq_wchar first[32], second[32];
    EXPECT_EQ(nq_Msg_breakStr(u"  Left __ Right  ", first, second), 1);
    EXPECT_EQ(S(first), u"Left");
    EXPECT_EQ(S(second), u"Right");
}

TEST_F(Msg, BreakStrOfOneWordGivesZero) {
    nq_wchar first[32], second[32];
    EXPECT_EQ(nq_Msg_breakStr(u"ALONE", first, second), 0);
    EXPECT_EQ(S(first), u"ALONE");
    EXPECT_EQ(S(second), u"");
}

TEST_F(Msg, BreakStrTakesOnlyTheFirstTwoTokens) {
    nq_wchar first[32], second[32];
    EXPECT_EQ(nq_Msg_breakStr(u"a_b_c", first, second), 1);
    EXPECT_EQ(S(first), u"a");
    EXPECT_EQ(S(second), u"b");
}

TEST_F(Msg, BreakStrOfNothingButDelimitersGivesZero) {
    nq_wchar first[8] = u"old", second[8] = u"old";
    EXPECT_EQ(nq_Msg_breakStr(u" _ _", first, second), 0);
    EXPECT_EQ(S(first), u"");
    EXPECT_EQ(S(second), u"");
    EXPECT_EQ(nq_Msg_breakStr(u"", first, second), 0);
}

TEST_F(Msg, BreakStrStripsOtherBlanksOfATokenAndAnEmptyFirstEndsIt) {
    nq_wchar first[8], second[8];
    // A tab is no delimiter, so the first token is a tab alone, empty once stripped.
    EXPECT_EQ(nq_Msg_breakStr(u"\t b", first, second), 0);
    EXPECT_EQ(S(first), u"");
    EXPECT_EQ(S(second), u"");
}

TEST_F(Msg, BreakStrLeavesItsTextAlone) {
    const nq_wchar text[] = u"x_y";
    nq_wchar first[8], second[8];
    nq_Msg_breakStr(text, first, second);
    EXPECT_EQ(S(text), u"x_y");
}

TEST_F(Msg, BreakStrWithANullArgumentGivesZero) {
    nq_wchar first[8], second[8];
    EXPECT_EQ(nq_Msg_breakStr(nullptr, first, second), 0);
    EXPECT_EQ(nq_Msg_breakStr(u"a b", nullptr, second), 0);
    EXPECT_EQ(nq_Msg_breakStr(u"a b", first, nullptr), 0);
}

// Tracing: "Leaving X." at level 3 with bit 1024, no entry message.

TEST_F(Msg, TracesOnlyTheWayOutAtLevelThree) {
    nqmt::TraceLog log(scene.dir(), 3);
    nq_Msg_setFormat(1);
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"msg.cpp Leaving nq_Msg_setFormat."}));
}

TEST_F(Msg, TracesNestedCallsEachOnItsWayOut) {
    nqmt::TraceLog log(scene.dir(), 3);
    nq_Msg("x", "C", 1);
    EXPECT_EQ(log.lines(), (std::vector<std::string>{
                               "msg.cpp Leaving nq_Msg_scanEsc.",
                               "msg.cpp Leaving nq_Msg_format.",
                               "msg.cpp Leaving nq_Msg_translate.",
                               "msg.cpp Leaving nq_Msg.",
                           }));
}

TEST_F(Msg, TracesNothingAtLevelTwoOrWithoutTheBit) {
    {
        nqmt::TraceLog log(scene.dir(), 2);
        nq_Msg_format(u"a", 1);
        EXPECT_TRUE(log.lines().empty());
    }
    nqmt::TraceLog log(scene.dir(), 3, 0xFFFFFFFFu & ~1024u);
    nq_Msg_format(u"a", 1);
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(Msg, EveryFunctionOfTheFamilyTracesItsName) {
    nqmt::TraceLog log(scene.dir(), 3);
    nq_MsgDBCols(u"a", 1);
    nq_Msg_pad(u"a", u"C", 1, 2);
    nq_wchar first[4], second[4];
    nq_Msg_breakStr(u"a", first, second);
    const std::vector<std::string> lines = log.lines();
    auto has = [&](const std::string &line) { return std::find(lines.begin(), lines.end(), line) != lines.end(); };
    EXPECT_TRUE(has("msg.cpp Leaving nq_MsgDBCols."));
    EXPECT_TRUE(has("msg.cpp Leaving nq_Msg_pad."));
    EXPECT_TRUE(has("msg.cpp Leaving nq_Msg_breakStr."));
    for (const std::string &line : lines) EXPECT_EQ(line.find("Entering"), std::string::npos) << line;
}
