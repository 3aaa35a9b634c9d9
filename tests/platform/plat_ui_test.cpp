// The message-box and fatal-exit handlers.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <string>

#include "nq_platform.h"
#include "plat_ui.h"
#include "test_support.h"

namespace {

struct BoxCall {
    std::string title;
    std::string text;
    unsigned int style = 0;
    int calls = 0;
};

BoxCall g_box;

int recording_box(const char *title, const char *text, unsigned int style) {
    g_box.title = title ? title : "<null>";
    g_box.text = text ? text : "<null>";
    g_box.style = style;
    ++g_box.calls;
    return 7;
}

int refusing_box(const char *, const char *, unsigned int) { return 0; }

// Puts the default handlers back whatever a test did.
class PlatformUi : public ::testing::Test {
protected:
    void SetUp() override { g_box = BoxCall(); }
    void TearDown() override {
        nq_Platform_setMessageBoxHandler(nullptr);
        nq_Platform_setFatalExitHandler(nullptr);
    }
};

TEST_F(PlatformUi, DefaultMessageBoxWritesTitleAndTextToStandardErrorAndReportsShown) {
    nqtest::CaptureFd capture(2);
    const int shown = nqplat::message_box("Engine Error", "File not found: PIPE.DBF", NQ_MB_OK);
    EXPECT_EQ(capture.stop(), "Engine Error: File not found: PIPE.DBF\n");
    EXPECT_EQ(shown, 1);
}

TEST_F(PlatformUi, DefaultMessageBoxTakesNullTexts) {
    nqtest::CaptureFd capture(2);
    EXPECT_EQ(nqplat::message_box(nullptr, nullptr, 0), 1);
    EXPECT_EQ(capture.stop(), ": \n");
}

TEST_F(PlatformUi, DefaultMessageBoxWritesStandardErrorOnly) {
    nqtest::CaptureFd out(1);
    nqtest::CaptureFd err(2);
    nqplat::message_box("T", "x", 0);
    EXPECT_EQ(err.stop(), "T: x\n");
    EXPECT_EQ(out.stop(), "");
}

TEST_F(PlatformUi, SetMessageBoxHandlerReturnsThePreviousOne) {
    const nq_MessageBoxHandler original = nq_Platform_setMessageBoxHandler(recording_box);
    ASSERT_NE(original, nullptr);  // the default is a real function
    EXPECT_EQ(nq_Platform_setMessageBoxHandler(refusing_box), recording_box);
    EXPECT_EQ(nq_Platform_setMessageBoxHandler(nullptr), refusing_box);
    EXPECT_EQ(nq_Platform_setMessageBoxHandler(nullptr), original);  // null restored the default
}

TEST_F(PlatformUi, ReturnedDefaultHandlerBehavesAsTheDefault) {
    const nq_MessageBoxHandler original = nq_Platform_setMessageBoxHandler(recording_box);
    nqtest::CaptureFd capture(2);
    EXPECT_EQ(original("A", "b", 0), 1);
    EXPECT_EQ(capture.stop(), "A: b\n");
}

TEST_F(PlatformUi, MessageBoxGoesToTheHandlerWithItsArgumentsAndResult) {
    nq_Platform_setMessageBoxHandler(recording_box);
    nqtest::CaptureFd capture(2);
    const unsigned int style = NQ_MB_ICONHAND | NQ_MB_TASKMODAL;
    EXPECT_EQ(nqplat::message_box("Title \xc3\xa9", "Text", style), 7);
    EXPECT_EQ(capture.stop(), "");  // the default wrote nothing
    EXPECT_EQ(g_box.calls, 1);
    EXPECT_EQ(g_box.title, "Title \xc3\xa9");
    EXPECT_EQ(g_box.text, "Text");
    EXPECT_EQ(g_box.style, style);
}

TEST_F(PlatformUi, HandlerThatCannotShowTheBoxReportsZero) {
    nq_Platform_setMessageBoxHandler(refusing_box);
    EXPECT_EQ(nqplat::message_box("t", "x", 0), 0);
}

TEST_F(PlatformUi, NullHandlerRestoresTheDefaultBox) {
    nq_Platform_setMessageBoxHandler(recording_box);
    nq_Platform_setMessageBoxHandler(nullptr);
    nqtest::CaptureFd capture(2);
    EXPECT_EQ(nqplat::message_box("t", "x", 0), 1);
    EXPECT_EQ(capture.stop(), "t: x\n");
    EXPECT_EQ(g_box.calls, 0);
}

void noisy_fatal(const char *text) { std::fprintf(stderr, "handler saw: %s\n", text ? text : "<null>"); }

void exiting_fatal(const char *) { _exit(7); }

TEST_F(PlatformUi, SetFatalExitHandlerReturnsThePreviousOne) {
    const nq_FatalExitHandler original = nq_Platform_setFatalExitHandler(noisy_fatal);
    ASSERT_NE(original, nullptr);
    EXPECT_EQ(nq_Platform_setFatalExitHandler(exiting_fatal), noisy_fatal);
    EXPECT_EQ(nq_Platform_setFatalExitHandler(nullptr), exiting_fatal);
    EXPECT_EQ(nq_Platform_setFatalExitHandler(nullptr), original);
}

using PlatformUiDeathTest = PlatformUi;

TEST_F(PlatformUiDeathTest, DefaultFatalExitWritesTheTextAndEndsWithCodeOne) {
    EXPECT_EXIT(nqplat::fatal_exit("table is corrupt"), ::testing::ExitedWithCode(1), "^table is corrupt\n$");
}

TEST_F(PlatformUiDeathTest, DefaultFatalExitTakesANullText) {
    EXPECT_EXIT(nqplat::fatal_exit(nullptr), ::testing::ExitedWithCode(1), "^\n$");
}

TEST_F(PlatformUiDeathTest, HandlerThatReturnsIsCalledAndTheProcessStillEnds) {
    EXPECT_EXIT(
        {
            nq_Platform_setFatalExitHandler(noisy_fatal);
            nqplat::fatal_exit("boom");
        },
        ::testing::ExitedWithCode(1), "^handler saw: boom\n$");
}

TEST_F(PlatformUiDeathTest, HandlerMayEndTheProcessItself) {
    EXPECT_EXIT(
        {
            nq_Platform_setFatalExitHandler(exiting_fatal);
            nqplat::fatal_exit("boom");
        },
        ::testing::ExitedWithCode(7), "");
}

TEST_F(PlatformUiDeathTest, FatalExitFlushesOpenStreamsFirst) {
    nqtest::TempDir dir;
    const std::string path = dir.file("pending.txt");
    EXPECT_EXIT(
        {
            std::FILE *f = std::fopen(path.c_str(), "w");
            if (!f) _exit(3);
            static char buffer[256];
            std::setvbuf(f, buffer, _IOFBF, sizeof buffer);
            std::fputs("pending", f);
            nqplat::fatal_exit("x");
        },
        ::testing::ExitedWithCode(1), "x");
    EXPECT_EQ(nqtest::read_file(path), "pending");
}

TEST_F(PlatformUiDeathTest, DefaultIsRestoredByNull) {
    EXPECT_EXIT(
        {
            nq_Platform_setFatalExitHandler(exiting_fatal);
            nq_Platform_setFatalExitHandler(nullptr);
            nqplat::fatal_exit("back to default");
        },
        ::testing::ExitedWithCode(1), "^back to default\n$");
}

}  // namespace
