// Diagnostics: level, mask, targets, the log file's rules and the trace frame.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>

#include "nq_tls20an.h"
#include "test_support.h"

namespace {

std::u16string W(const std::string &s) { return std::u16string(s.begin(), s.end()); }

class Diag : public ::testing::Test {
protected:
    void SetUp() override {
        nq_Diag_disable();
        nq_Diag_setOutput(1, nullptr);
    }
    void TearDown() override {
        nq_Diag_disable();
        nq_Diag_setOutput(1, nullptr);
    }
    // Sends the log to a file of the temporary folder.
    std::string logTo(int target = 2) {
        std::string path = dir.file("trace.log");
        EXPECT_EQ(nq_Diag_setOutput(static_cast<int16_t>(target), W(path).c_str()), 1);
        return path;
    }
    nqtest::TempDir dir;
};

}  // namespace

TEST_F(Diag, StartValues) {
    // A fresh process is checked by the death-free reads below after disable.
    EXPECT_EQ(nq_Diag_getLevel(), 0);
    EXPECT_EQ(nq_Diag_getCondition(), 0u);
    EXPECT_EQ(nq_Diag_getDiagOutput(), 1);
    EXPECT_EQ(nq_Diag_getDiagMsgBuf(), NQ_DiagMsgBuf);
}

TEST_F(Diag, SetLevelReturnsPreviousAndRefusesOutOfRange) {
    EXPECT_EQ(nq_Diag_setLevel(2), 0);
    EXPECT_EQ(nq_Diag_setLevel(3), 2);
    EXPECT_EQ(nq_Diag_setLevel(4), 3);
    EXPECT_EQ(nq_Diag_getLevel(), 3);
    EXPECT_EQ(nq_Diag_setLevel(-1), 3);
    EXPECT_EQ(NQ_DiagCurrentLevel, 3);
}

TEST_F(Diag, SetConditionAcceptsEveryValue) {
    EXPECT_EQ(nq_Diag_setCondition(0xFFFFFFFFu), 0u);
    EXPECT_EQ(nq_Diag_setCondition(5u), 0xFFFFFFFFu);
    EXPECT_EQ(NQ_DiagCurrentCondition, 5u);
}

TEST_F(Diag, DisableClearsLevelAndMaskButKeepsTarget) {
    nq_Diag_setLevel(3);
    nq_Diag_setCondition(7);
    nq_Diag_setDiagOutput(0);
    nq_Diag_disable();
    EXPECT_EQ(nq_Diag_getLevel(), 0);
    EXPECT_EQ(nq_Diag_getCondition(), 0u);
    EXPECT_EQ(nq_Diag_getDiagOutput(), 0);
}

TEST_F(Diag, SetDiagOutputStoresWithoutCheck) {
    EXPECT_EQ(nq_Diag_setDiagOutput(9), 9);
    EXPECT_EQ(nq_Diag_getDiagOutput(), 9);
    EXPECT_EQ(NQ_DiagCurrentOutput, 9);
}

TEST_F(Diag, SetOutputConsoleAndNoneKeepFileName) {
    std::string path = logTo();
    EXPECT_EQ(nq_Diag_setOutput(0, nullptr), 1);
    EXPECT_EQ(nq_Diag_getDiagOutput(), 0);
    EXPECT_EQ(std::u16string(nq_Diag_getFileName()), W(path));
    EXPECT_EQ(nq_Diag_setOutput(1, u"other"), 1);
    EXPECT_EQ(std::u16string(nq_Diag_getFileName()), W(path));
}

TEST_F(Diag, SetOutputUnknownTargetFallsToConsole) {
    nq_Diag_setDiagOutput(0);
    EXPECT_EQ(nq_Diag_setOutput(5, u"x.log"), 0);
    EXPECT_EQ(nq_Diag_getDiagOutput(), 1);
}

TEST_F(Diag, SetOutputEmptiesTheLogEachTime) {
    std::string path = dir.file("trace.log");
    nqtest::write_file(path, "old content\n");
    EXPECT_EQ(nq_Diag_setOutput(2, W(path).c_str()), 1);
    EXPECT_EQ(nqtest::read_file(path), "");
    nqtest::write_file(path, "again\n");
    EXPECT_EQ(nq_Diag_setOutput(2, W(path).c_str()), 1);
    EXPECT_EQ(nqtest::read_file(path), "");
    EXPECT_EQ(nq_Diag_getDiagOutput(), 2);
}

TEST_F(Diag, SetOutputWithEmptyNameDefaultsAndNotifies) {
    char cwd[4096];
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    ASSERT_EQ(chdir(dir.path().c_str()), 0);
    nqtest::write_file(dir.file("NQ_DIAG.LOG"), "stale");
    nqtest::CaptureFd out(1);
    EXPECT_EQ(nq_Diag_setOutput(2, u""), 1);
    std::string printed = out.stop();
    EXPECT_EQ(printed,
              "\nnq_Diag_setOutput: Diagnostics log file name specified is invalid.\n"
              "Defaulting to log file: NQ_DIAG.LOG\n");
    EXPECT_EQ(std::u16string(nq_Diag_getFileName()), u"NQ_DIAG.LOG");
    EXPECT_EQ(nqtest::read_file(dir.file("NQ_DIAG.LOG")), "");
    ASSERT_EQ(chdir(cwd), 0);
}

TEST_F(Diag, SetOutputNullNameDefaultsToo) {
    char cwd[4096];
    ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
    ASSERT_EQ(chdir(dir.path().c_str()), 0);
    nqtest::CaptureFd out(1);
    EXPECT_EQ(nq_Diag_setOutput(3, nullptr), 1);
    out.stop();
    EXPECT_TRUE(nqtest::file_exists(dir.file("NQ_DIAG.LOG")));
    EXPECT_EQ(nq_Diag_getDiagOutput(), 3);
    ASSERT_EQ(chdir(cwd), 0);
}

TEST_F(Diag, SetOutputThatCannotOpenFallsToConsole) {
    std::string bad = dir.file("missing-folder/trace.log");
    nqtest::CaptureFd err(2);
    EXPECT_EQ(nq_Diag_setOutput(2, W(bad).c_str()), 0);
    std::string said = err.stop();
    EXPECT_EQ(said.rfind("Failed to open the diagnostics output file\n: ", 0), 0u) << said;
    EXPECT_EQ(nq_Diag_getDiagOutput(), 1);
}

TEST_F(Diag, GetOutputGivesFileNameOnlyForFileTargets) {
    std::string path = logTo(3);
    nq_wchar buffer[600] = u"junk";
    EXPECT_EQ(nq_Diag_getOutput(buffer), 3);
    EXPECT_EQ(std::u16string(buffer), W(path));
    nq_Diag_setOutput(1, nullptr);
    EXPECT_EQ(nq_Diag_getOutput(buffer), 1);
    EXPECT_EQ(buffer[0], 0);
    EXPECT_EQ(nq_Diag_getOutput(nullptr), 1);
}

TEST_F(Diag, SetFileNameReplacesAndClears) {
    nq_Diag_setFileName(u"a.log");
    EXPECT_EQ(std::u16string(nq_Diag_getFileName()), u"a.log");
    nq_Diag_setFileName(u"");
    EXPECT_EQ(nq_Diag_getFileName(), nullptr);
    nq_Diag_setFileName(u"b.log");
    EXPECT_EQ(std::u16string(NQ_DiagCurrentFileName), u"b.log");
    nq_Diag_setFileName(nullptr);
    EXPECT_EQ(nq_Diag_getFileName(), nullptr);
}

TEST_F(Diag, OutputStreamIsStoredAndYielded) {
    EXPECT_EQ(nq_Diag_setOutputStream(stderr), stderr);
    EXPECT_EQ(nq_Diag_getOutputStream(), stderr);
    EXPECT_EQ(NQ_DiagOutputStream, stderr);
    nq_Diag_setOutputStream(nullptr);
}

TEST_F(Diag, PutOutputMsgWritesLowerCasedFileLineAndMessage) {
    std::string path = logTo();
    nq_Diag_putOutputMsg(u"Hello there.", u"C:\\Src\\NQ_TOOLS\\LNKLIST.CPP", 42);
    EXPECT_EQ(nqtest::read_file(path), "lnklist.cpp (42) Hello there.\n");
    EXPECT_EQ(std::u16string(NQ_DiagMsgBuf), u"Hello there.");
}

TEST_F(Diag, EachMessageAppendsToTheLog) {
    std::string path = logTo();
    nq_Diag_putOutputMsg(u"one", u"a.c", 1);
    nq_Diag_putOutputMsg(u"two", u"dir:b.C", 2);
    EXPECT_EQ(nqtest::read_file(path), "a.c (1) one\nb.c (2) two\n");
}

TEST_F(Diag, EmptyOrNullMessageWritesNothing) {
    std::string path = logTo(3);
    nqtest::CaptureFd out(1);
    nq_Diag_putOutputMsg(u"", u"a.c", 1);
    nq_Diag_putOutputMsg(nullptr, u"a.c", 1);
    EXPECT_EQ(out.stop(), "");
    EXPECT_EQ(nqtest::read_file(path), "");
}

TEST_F(Diag, MessageEndingInLineFeedGivesBlankLine) {
    std::string path = logTo();
    nq_Diag_putOutputMsg(u"text\n", u"x.cpp", 3);
    EXPECT_EQ(nqtest::read_file(path), "x.cpp (3) text\n\n");
}

TEST_F(Diag, ConsoleTargetPrintsTheSameLine) {
    nqtest::CaptureFd out(1);
    nq_Diag_putOutputMsg(u"to console", u"\\p\\Q.CPP", 7);
    EXPECT_EQ(out.stop(), "q.cpp (7) to console\n");
}

TEST_F(Diag, BothTargetWritesConsoleAndLog) {
    std::string path = logTo(3);
    nqtest::CaptureFd out(1);
    nq_Diag_putOutputMsg(u"both", u"f.cpp", 9);
    EXPECT_EQ(out.stop(), "f.cpp (9) both\n");
    EXPECT_EQ(nqtest::read_file(path), "f.cpp (9) both\n");
}

TEST_F(Diag, NoneTargetWritesNothing) {
    nq_Diag_setOutput(0, nullptr);
    nqtest::CaptureFd out(1);
    nq_Diag_putOutputMsg(u"quiet", u"f.cpp", 9);
    EXPECT_EQ(out.stop(), "");
}

TEST_F(Diag, PutOutputPrintsTheBufferNotTheMessage) {
    std::string path = logTo();
    nq_wchar *buffer = nq_Diag_getDiagMsgBuf();
    buffer[0] = u'B';
    buffer[1] = 0;
    nq_Diag_putOutput(1, u"ignored", u"m.cpp", 5);
    EXPECT_EQ(nqtest::read_file(path), "m.cpp (5) B\n");
}

TEST_F(Diag, NullSourcePathGivesEmptyName) {
    std::string path = logTo();
    nq_Diag_putOutputMsg(u"x", nullptr, 5);
    EXPECT_EQ(nqtest::read_file(path), " (5) x\n");
}

TEST_F(Diag, LogThatCannotBeOpenedDegradesToConsoleForGood) {
    std::string path = logTo();
    ::chmod(path.c_str(), 0400);
    ::unlink(path.c_str());
    ::mkdir(path.c_str(), 0700);  // a folder where the log should be
    nqtest::CaptureFd err(2);
    nqtest::CaptureFd out(1);
    nq_Diag_putOutputMsg(u"lost", u"f.cpp", 1);
    std::string printed = out.stop();
    std::string said = err.stop();
    EXPECT_EQ(printed, "");
    EXPECT_NE(said.find("Failed to open the diagnostics output file"), std::string::npos);
    EXPECT_EQ(nq_Diag_getDiagOutput(), 1);
    nqtest::CaptureFd out2(1);
    nq_Diag_putOutputMsg(u"later", u"f.cpp", 2);
    EXPECT_EQ(out2.stop(), "f.cpp (2) later\n");
}

TEST_F(Diag, OverlongMessageIsReportedAtLevelThreeWithAnyBit) {
    std::string path = logTo();
    nq_Diag_setLevel(3);
    nq_Diag_setCondition(0x80000000u);
    std::u16string big(5000, u'x');
    nq_Diag_putOutputMsg(big.c_str(), u"big.cpp", 11);
    std::string log = nqtest::read_file(path);
    // The report, then the buffer as it now stands (the report again) for the message's line.
    const std::string report = "Buffer size 5000 too big for diagnostics in big.cpp at 11\n";
    EXPECT_EQ(log.find("diag.cpp ("), 0u) << log;
    EXPECT_NE(log.find(") " + report + "\n"), std::string::npos) << log;
    EXPECT_NE(log.find("big.cpp (11) " + report + "\n"), std::string::npos) << log;
}

TEST_F(Diag, OverlongMessageWithoutTracingIsCutNotReported) {
    std::string path = logTo();
    std::u16string big(5000, u'y');
    nq_Diag_putOutputMsg(big.c_str(), u"big.cpp", 11);
    std::string log = nqtest::read_file(path);
    EXPECT_EQ(log, "big.cpp (11) " + std::string(4095, 'y') + "\n");
}

// The trace frame, seen through the linked list's and the array's functions.
TEST_F(Diag, TraceFrameWritesEnteringAndExitingAtLevelThree) {
    std::string path = logTo();
    nq_Diag_setLevel(3);
    nq_Diag_setCondition(NQ_DIAG_LNKLIST);
    nq_LnkList_length(nullptr);
    EXPECT_EQ(nqtest::read_file(path).find("lnklist.cpp ("), 0u);
    std::string log = nqtest::read_file(path);
    EXPECT_NE(log.find(") Entering nq_LnkList_length.\n"), std::string::npos);
    EXPECT_NE(log.find(") Exiting nq_LnkList_length.\n"), std::string::npos);
}

TEST_F(Diag, NoTraceAtLevelTwo) {
    std::string path = logTo();
    nq_Diag_setLevel(2);
    nq_Diag_setCondition(0xFFFFFFFFu);
    nq_LnkList_length(nullptr);
    EXPECT_EQ(nqtest::read_file(path), "");
}

TEST_F(Diag, NoTraceWithoutTheFamilyBit) {
    std::string path = logTo();
    nq_Diag_setLevel(3);
    nq_Diag_setCondition(NQ_DIAG_ARRAY);
    nq_LnkList_length(nullptr);
    EXPECT_EQ(nqtest::read_file(path), "");
    nq_Array_size(nullptr);
    EXPECT_NE(nqtest::read_file(path).find("array.cpp"), std::string::npos);
}

namespace {
int lowerLevelWhileDestroying(void *) {
    nq_Diag_setLevel(0);
    return 1;
}
}  // namespace

TEST_F(Diag, ExitTestIsMadeAfresh) {
    std::string path = logTo();
    nq_Diag_setLevel(3);
    nq_Diag_setCondition(NQ_DIAG_LNKLIST);
    LnkList *list = nq_LnkList_create(reinterpret_cast<void *>(1), nullptr);
    nq_Diag_setOutput(2, W(path).c_str());  // empty it
    nq_LnkList_delCurr(list, lowerLevelWhileDestroying);
    std::string log = nqtest::read_file(path);
    EXPECT_NE(log.find("Entering nq_LnkList_delCurr."), std::string::npos);
    EXPECT_EQ(log.find("Exiting nq_LnkList_delCurr."), std::string::npos);
    nq_LnkList_destroy(list, nullptr);
}

TEST_F(Diag, MessageIsComposedInTheSharedBuffer) {
    std::string path = logTo();
    nq_Diag_setLevel(3);
    nq_Diag_setCondition(NQ_DIAG_ARRAY);
    nq_Array_size(nullptr);
    EXPECT_EQ(std::u16string(NQ_DiagMsgBuf), u"Exiting nq_Array_size.");
}
