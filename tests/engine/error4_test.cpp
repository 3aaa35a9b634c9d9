// Engine errors: the table, the latch, the normal report's text and box, the severe report
// and the ends of the process.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstring>
#include <string>

#include "engine_test_support.h"

namespace {

using enginetest::BoxCapture;
using enginetest::Engine;

const error4data kExpected[] = {
    {-20, "Creating File"},
    {-60, "Opening File"},
    {-70, "Reading File"},
    {-100, "Seeking to File Position"},
    {-120, "Writing to File"},
    {-10, "Closing File"},
    {-80, "Removing File"},
    {-50, "Locking File"},
    {-110, "Unlocking File"},
    {-30, "Determining File Length"},
    {-40, "Setting File Length"},
    {-90, "Renaming File"},
    {-200, "File is not a Data File"},
    {-230, "Record Length is too Large"},
    {-210, "Unrecognized Field Name"},
    {-220, "Unrecognized Field Type"},
    {-310, "Not a Correct Index File"},
    {-300, "Tag Entry Missing"},
    {-340, "Unique Key Error"},
    {-330, "Tag Name not Found"},
    {-400, "Comma or Bracket Expected"},
    {-410, "Expression not Complete"},
    {-420, "Data File Name not Located"},
    {-422, "IIF() Needs Parameters of Same Length"},
    {-425, "SUBSTR() and STR() need Constant Parameters"},
    {-430, "Number of Parameters is Wrong"},
    {-440, "Overflow while Evaluating Expression"},
    {-450, "Right Bracket Missing"},
    {-460, "Sub-expression Type is Wrong"},
    {-470, "Unrecognized Function"},
    {-480, "Unrecognized Operator"},
    {-490, "Unrecognized Value"},
    {-500, "Unterminated String"},
    {-610, "Optimization Error"},
    {-620, "Optimization Removal Failure"},
    {-630, "Optimization File Flushing Failure"},
    {-720, "Relation Error"},
    {-710, "Matching Slave Record Not Located"},
    {-810, "Report Error"},
    {-811, "Error Creating Style"},
    {-812, "Error Selecting Style"},
    {-813, "Error Finding Style"},
    {-814, "Error Creating Area"},
    {-815, "Error Creating Group"},
    {-816, "Error Setting Group Reset-Expression"},
    {-817, "Error Creating Total"},
    {-818, "Error Creating Object"},
    {-819, "Error In Windows Output"},
    {-820, "Error In Report Output"},
    {-821, "Error Saving Report"},
    {-822, "Error Retrieving Report"},
    {-823, "Error In Sending Report to Data File"},
    {-920, "Out of Memory"},
    {-910, "Unexpected Information"},
    {-930, "Unexpected Parameter"},
    {-940, "Exceeded Maximum Record Number for Demonstration"},
    {-950, "Unexpected Result"},
    {-1020, "Function unsupported: library compiled with S4OFF_MEMO"},
    {-1040, "Function unsupported: library compiled with S4OFF_WRITE"},
    {-1010, "Function unsupported: library compiled with S4OFF_INDEX"},
    {-1030, "Function unsupported: library compiled with S4NO_RENAME"},
    {-1050, "Function unsupported: library not compiled with S4CLIPPER"},
    {-1060, "Function unsupported: library not compiled with S4LOCK_HOOK"},
    {-1070, "Function unsupported: library not compiled with S4ERROR_HOOK"},
};

TEST(Err4Table, HoldsTheSixtyFourRowsInTheirOrderAndAnEndRow) {
    ASSERT_EQ(sizeof(kExpected) / sizeof(kExpected[0]), 64u);
    for (int i = 0; i < 64; ++i) {
        EXPECT_EQ(err4table[i].error_number, kExpected[i].error_number) << i;
        EXPECT_STREQ(err4table[i].error_data, kExpected[i].error_data) << i;
    }
    EXPECT_EQ(err4table[64].error_number, 0);
    EXPECT_EQ(err4table[64].error_data, nullptr);
    EXPECT_EQ(err4table_rows, 64);
}

TEST(Err4Text, GivesTheTextOfEveryRow) {
    for (const error4data &row : kExpected) {
        EXPECT_STREQ(err4text(row.error_number), row.error_data) << row.error_number;
    }
}

TEST(Err4Text, ZeroAndUnknownNumbersGiveNull) {
    EXPECT_EQ(err4text(0), nullptr);  // the end row is never a match
    EXPECT_EQ(err4text(-1), nullptr);
    EXPECT_EQ(err4text(-921), nullptr);
    EXPECT_EQ(err4text(20), nullptr);
    EXPECT_EQ(err4text(50), nullptr);
}

TEST(Err4Latch, CodeReadsAndSetReturnsThePreviousCode) {
    Engine engine;
    EXPECT_EQ(err4code(engine), 0);
    EXPECT_EQ(err4set(engine, -70), 0);
    EXPECT_EQ(err4code(engine), -70);
    EXPECT_EQ(err4set(engine, 50), -70);
    EXPECT_EQ(err4set(engine, 0), 50);
    EXPECT_EQ(err4code(engine), 0);
    EXPECT_EQ(err4code(nullptr), -1);
    EXPECT_EQ(err4set(nullptr, 3), -1);
}

TEST(Err4Report, WithOffErrorSetsTheCodeAndShowsNothing) {
    Engine engine;
    BoxCapture boxes;
    engine->off_error = 1;
    EXPECT_EQ(err4describe(engine, -60, "File Name:", "X.DBF", nullptr), -60);
    EXPECT_EQ(engine->error_code, -60);
    EXPECT_EQ(err4report(engine, -920, nullptr), -920);
    EXPECT_EQ(engine->error_code, -920);
    EXPECT_EQ(boxes.count(), 0u);
}

TEST(Err4Report, ShowsTheCodeTheTextAndEveryString) {
    Engine engine;
    BoxCapture boxes;
    EXPECT_EQ(err4describe(engine, -60, "File Name:", "C:\\DATA\\PIPE.DBF", nullptr), -60);
    EXPECT_EQ(engine->error_code, -60);
    ASSERT_EQ(boxes.count(), 1u);
    EXPECT_EQ(boxes.last().title, "TABELLIX ERROR");
    EXPECT_EQ(boxes.last().text, "Error #:  -60\nOpening File\nFile Name:\nC:\\DATA\\PIPE.DBF\n");
    EXPECT_EQ(boxes.last().style, 16u);
    err4describe(engine, -410, "A+", "B", "C");
    EXPECT_EQ(boxes.last().text, "Error #: -410\nExpression not Complete\nA+\nB\nC\n");
}

TEST(Err4Report, WithANullStringShowsTwoLinesOnly) {
    Engine engine;
    BoxCapture boxes;
    EXPECT_EQ(err4report(engine, -70, nullptr), -70);
    EXPECT_EQ(boxes.last().text, "Error #:  -70\nReading File\n");
    // The strings stop at the first null one.
    err4describe(engine, -70, nullptr, "never", "shown");
    EXPECT_EQ(boxes.last().text, "Error #:  -70\nReading File\n");
    err4describe(engine, -70, "one", nullptr, "never");
    EXPECT_EQ(boxes.last().text, "Error #:  -70\nReading File\none\n");
}

TEST(Err4Report, AnUnknownNumberStillShowsItsFirstLineAndTheStrings) {
    Engine engine;
    BoxCapture boxes;
    EXPECT_EQ(err4describe(engine, -77, "where", nullptr, nullptr), -77);
    EXPECT_EQ(boxes.last().text, "Error #:  -77\nwhere\n");
    EXPECT_EQ(engine->error_code, -77);
    err4report(engine, 5, nullptr);
    EXPECT_EQ(boxes.last().text, "Error #:    5\n");
}

TEST(Err4Report, MemoryErrorsAreSystemModal) {
    Engine engine;
    BoxCapture boxes;
    err4report(engine, -920, "Sorting");
    EXPECT_EQ(boxes.last().text, "Error #: -920\nOut of Memory\nSorting\n");
    EXPECT_EQ(boxes.last().style, 16u | 4096u);
    err4report(engine, -910, nullptr);
    EXPECT_EQ(boxes.last().style, 16u);
}

TEST(Err4Report, FiveDigitNumbersPrintAsFourAsterisks) {
    Engine engine;
    BoxCapture boxes;
    for (int code : {-1010, -1020, -1030, -1040, -1050, -1060, -1070}) {
        err4report(engine, code, nullptr);
        EXPECT_EQ(boxes.last().text,
                  std::string("Error #: ****\n") + err4text(code) + "\n");
    }
}

TEST(Err4Report, TheRoomTestMeasuresTheFirstStringForEveryString) {
    Engine engine;
    BoxCapture boxes;
    // First line 14 and table text 13 + 1: 28. With s1 of 120: 28 + 120 + 3 < 257 takes s1
    // (length 149); then 149 + 120 + 3 reaches 257 and the short s2 is refused.
    const std::string s1(120, 'a');
    err4describe(engine, -920, s1.c_str(), "b", "c");
    EXPECT_EQ(boxes.last().text, "Error #: -920\nOut of Memory\n" + s1 + "\n");
    // An s1 of 240 does not fit at all, and nothing behind it is tried.
    const std::string s240(240, 'z');
    err4describe(engine, -920, s240.c_str(), "b", nullptr);
    EXPECT_EQ(boxes.last().text, "Error #: -920\nOut of Memory\n");
    // A short s1 lets a long s2 through, cut to the buffer.
    const std::string long2(1000, 'L');
    err4describe(engine, -60, "File Name:", long2.c_str(), "after");
    const std::string text = boxes.last().text;
    EXPECT_EQ(text.size(), 267u);
    EXPECT_EQ(text.substr(0, 39), "Error #:  -60\nOpening File\nFile Name:\nL");
    EXPECT_EQ(text.back(), '\n');
}

TEST(Err4Report, ExactlyAtTheLimitTheStringIsRefused) {
    Engine engine;
    BoxCapture boxes;
    // Unknown code: the text is the first line alone (14 characters).
    const std::string fits(239, 'f');  // 14 + 239 + 3 = 256: taken
    err4describe(engine, -77, fits.c_str(), nullptr, nullptr);
    EXPECT_EQ(boxes.last().text, "Error #:  -77\n" + fits + "\n");
    const std::string reaches(240, 'r');  // 14 + 240 + 3 = 257: refused
    err4describe(engine, -77, reaches.c_str(), nullptr, nullptr);
    EXPECT_EQ(boxes.last().text, "Error #:  -77\n");
}

TEST(Err4Report, ReportsDoNotTestTheLatch) {
    Engine engine;
    BoxCapture boxes;
    err4report(engine, -60, nullptr);
    err4report(engine, -70, nullptr);
    EXPECT_EQ(boxes.count(), 2u);
    EXPECT_EQ(engine->error_code, -70);
}

TEST(Err4Report, WithoutAnEngineTheBoxIsStillShown) {
    BoxCapture boxes;
    EXPECT_EQ(err4report(nullptr, -920, nullptr), -920);
    EXPECT_EQ(boxes.count(), 1u);
}

TEST(Err4ReportDeath, ABoxThatCannotBeShownEndsTheProcessWithMemoryError) {
    EXPECT_EXIT(
        {
            nq_Platform_setMessageBoxHandler([](const char *, const char *, unsigned) { return 0; });
            engine4 *engine = engine4_new(1);
            err4report(engine, -70, nullptr);
        },
        ::testing::ExitedWithCode(1), "^Memory Error\n$");
}

// The severe report: the box's text, its title, then the fatal exit with the same text.
// The child checks both and tells the outcome by its exit code.
std::string g_box_title, g_box_text;
unsigned g_box_style = 0;
std::string g_expected;

int remember_box(const char *title, const char *text, unsigned style) {
    g_box_title = title;
    g_box_text = text;
    g_box_style = style;
    return 1;
}

void check_fatal(const char *text) {
    const bool good = g_box_title == "TABELLIX SEVERE ERROR" && g_box_style == 16 &&
                      g_box_text == g_expected && std::string(text) == g_expected;
    _exit(good ? 42 : 43);
}

void severe_in_child(int code, const char *s1, std::string expected) {
    g_expected = std::move(expected);
    nq_Platform_setMessageBoxHandler(remember_box);
    nq_Platform_setFatalExitHandler(check_fatal);
    err4severe(code, s1);
}

TEST(Err4SevereDeath, ShowsTheSevereTextAndEndsTheProcessWithIt) {
    EXPECT_EXIT(severe_in_child(-950, "u4filelength()",
                                "\r\n\r\nSevere Error Number #: -950\nUnexpected Result\n"
                                "u4filelength()\n"),
                ::testing::ExitedWithCode(42), "");
    EXPECT_EXIT(severe_in_child(-910, "const4less()",
                                "\r\n\r\nSevere Error Number #: -910\nUnexpected Information\n"
                                "const4less()\n"),
                ::testing::ExitedWithCode(42), "");
    EXPECT_EXIT(severe_in_child(-1020, nullptr,
                                "\r\n\r\nSevere Error Number #: ****\n"
                                "Function unsupported: library compiled with S4OFF_MEMO\n"),
                ::testing::ExitedWithCode(42), "");
    EXPECT_EXIT(severe_in_child(-5, "x", "\r\n\r\nSevere Error Number #:   -5\nx\n"),
                ::testing::ExitedWithCode(42), "");
}

TEST(Err4SevereDeath, AStringThatDoesNotFitIsLeftOut) {
    // 31 + 1 + 17 + 1 = 50 before the string; 50 + 203 + 4 = 257 is not below 257.
    const std::string too_long(203, 's');
    EXPECT_EXIT(severe_in_child(-950, too_long.c_str(),
                                "\r\n\r\nSevere Error Number #: -950\nUnexpected Result\n"),
                ::testing::ExitedWithCode(42), "");
    const std::string fits(202, 's');
    EXPECT_EXIT(severe_in_child(-950, fits.c_str(),
                                "\r\n\r\nSevere Error Number #: -950\nUnexpected Result\n" + fits +
                                    "\n"),
                ::testing::ExitedWithCode(42), "");
}

TEST(Err4SevereDeath, TheDefaultHandlersWriteToStandardErrorAndExit) {
    EXPECT_EXIT(err4severe(-950, "u4filelength()"), ::testing::ExitedWithCode(1),
                "TABELLIX SEVERE ERROR: \r\n\r\nSevere Error Number #: -950\nUnexpected Result\n"
                "u4filelength\\(\\)");
}

TEST(Err4ExitDeath, ExitEndsTheProcessWithExitingApplication) {
    EXPECT_EXIT(err4exit(nullptr), ::testing::ExitedWithCode(1), "^EXITING APPLICATION\n$");
}

TEST(Err4ExitDeath, ExitTestEndsTheProcessOnlyForANegativeCode) {
    Engine engine;
    err4exit_test(engine);
    engine->error_code = 50;
    err4exit_test(engine);
    err4exit_test(nullptr);
    engine->error_code = -60;
    EXPECT_EXIT(err4exit_test(engine), ::testing::ExitedWithCode(1), "EXITING APPLICATION");
    engine->error_code = 0;
}

}  // namespace
