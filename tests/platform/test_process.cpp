// Processes: command lines split as Windows splits them, started without a shell, waited for,
// asked about while running, and terminated.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <vector>

#include "plat_process.h"
#include "scoped_env.h"
#include "test_support.h"

namespace {

using Words = std::vector<std::u16string>;
using nqplat::split_command_line;

std::u16string u(const std::string &s) { return std::u16string(s.begin(), s.end()); }

// A script that writes each of its arguments in brackets to the file named by OUTFILE.
std::string write_echo_script(const nqtest::TempDir &dir, const std::string &name) {
    const std::string path = dir.file(name);
    nqtest::write_file(path, "#!/bin/sh\nfor a in \"$@\"; do printf '[%s]' \"$a\"; done > \"$OUTFILE\"\n");
    ::chmod(path.c_str(), 0755);
    return path;
}

// Asks until the process has ended; a generous bound keeps a broken test from hanging.
uint32_t exit_code_when_ended(pid_t pid) {
    uint32_t code = nqplat::kStillActive;
    for (int i = 0; i < 3000; ++i) {
        if (!nqplat::process_exit_code(pid, &code) || code != nqplat::kStillActive) break;
        ::usleep(10000);
    }
    return code;
}

}  // namespace

TEST(CommandLine, ProgramWordKeepsBackslashesAndDropsQuotes) {
    EXPECT_EQ(split_command_line(u"C:\\a\\b.exe x"), (Words{u"C:\\a\\b.exe", u"x"}));
    EXPECT_EQ(split_command_line(u"\"C:\\Program Files\\x.exe\" arg"),
              (Words{u"C:\\Program Files\\x.exe", u"arg"}));
    EXPECT_EQ(split_command_line(u"a\\\"b c"), (Words{u"a\\b c"}));  // the quote opens, not escapes
    EXPECT_EQ(split_command_line(u"  \t prog"), (Words{u"prog"}));
}

TEST(CommandLine, ArgumentsFollowTheRuntimeRules) {
    EXPECT_EQ(split_command_line(u"p \"abc\" d e"), (Words{u"p", u"abc", u"d", u"e"}));
    EXPECT_EQ(split_command_line(u"p a\\\\b d\"e f\"g h"), (Words{u"p", u"a\\\\b", u"de fg", u"h"}));
    EXPECT_EQ(split_command_line(u"p a\\\\\\\"b c d"), (Words{u"p", u"a\\\"b", u"c", u"d"}));
    EXPECT_EQ(split_command_line(u"p a\\\\\\\\\"b c\" d e"), (Words{u"p", u"a\\\\b c", u"d", u"e"}));
    EXPECT_EQ(split_command_line(u"p a\"b\"\" c d"), (Words{u"p", u"ab\" c d"}));
    EXPECT_EQ(split_command_line(u"p \\\"x\\\""), (Words{u"p", u"\"x\""}));
}

TEST(CommandLine, EmptyQuotesAreAnEmptyWordAndBlanksSeparate) {
    EXPECT_EQ(split_command_line(u"p \"\" x"), (Words{u"p", u"", u"x"}));
    EXPECT_EQ(split_command_line(u"p\ta  \t b "), (Words{u"p", u"a", u"b"}));
    EXPECT_EQ(split_command_line(u"p \"open to the end"), (Words{u"p", u"open to the end"}));
    EXPECT_EQ(split_command_line(u"p trailing\\"), (Words{u"p", u"trailing\\"}));
    EXPECT_TRUE(split_command_line(u"").empty());
    EXPECT_TRUE(split_command_line(u"   ").empty());
}

TEST(CommandLine, ShellCharactersAreOrdinary) {
    EXPECT_EQ(split_command_line(u"p a|b >c $HOME `x` ;"),
              (Words{u"p", u"a|b", u">c", u"$HOME", u"`x`", u";"}));
}

TEST(Spawn, TrueEndsWithZeroAndShellExitCodeIsKept) {
    pid_t pid = 0;
    ASSERT_EQ(nqplat::spawn_process(u"/bin/true", nullptr, nullptr, &pid), 0);
    EXPECT_GT(pid, 0);
    uint32_t code = 99;
    EXPECT_TRUE(nqplat::wait_process(pid, &code));
    EXPECT_EQ(code, 0u);

    ASSERT_EQ(nqplat::spawn_process(u"sh -c \"exit 3\"", nullptr, nullptr, &pid), 0);
    EXPECT_TRUE(nqplat::wait_process(pid, &code));
    EXPECT_EQ(code, 3u);
    // The code stays to be asked for after the wait.
    EXPECT_TRUE(nqplat::process_exit_code(pid, &code));
    EXPECT_EQ(code, 3u);
    EXPECT_FALSE(nqplat::open_process(pid));
}

TEST(Spawn, MissingProgramGivesEnoentAndNoProcess) {
    pid_t pid = 0;
    EXPECT_EQ(nqplat::spawn_process(u"nq-no-such-program-xyz a b", nullptr, nullptr, &pid), ENOENT);
    EXPECT_EQ(pid, -1);
    EXPECT_EQ(nqplat::spawn_process(u"", nullptr, nullptr, &pid), ENOENT);
    EXPECT_EQ(nqplat::spawn_process(u"\"\" x", nullptr, nullptr, &pid), ENOENT);
    EXPECT_FALSE(nqplat::system_error_text(ENOENT).empty());
}

TEST(Spawn, ArgumentsReachTheProgramAsSplitWithoutAShell) {
    nqtest::TempDir dir;
    const std::string script = write_echo_script(dir, "echoargs");
    nqtest::ScopedEnv out("OUTFILE", dir.file("out.txt"));
    pid_t pid = 0;
    const std::u16string line = u(script) + u" a\\\"b \"c d\" e\\\\f \"\" $HOME;x|y";
    ASSERT_EQ(nqplat::spawn_process(line, nullptr, nullptr, &pid), 0);
    uint32_t code = 1;
    ASSERT_TRUE(nqplat::wait_process(pid, &code));
    EXPECT_EQ(code, 0u);
    EXPECT_EQ(nqtest::read_file(dir.file("out.txt")), "[a\"b][c d][e\\\\f][][$HOME;x|y]");
}

TEST(Spawn, LibraryNameOfTheProgramCrossesThePathBridge) {
    nqtest::TempDir dir;
    const std::string script = write_echo_script(dir, "EchoArgs");
    nqtest::ScopedEnv out("OUTFILE", dir.file("out.txt"));
    std::u16string name = u"C:" + u(dir.path()) + u"\\echoargs";
    for (char16_t &c : name) {
        if (c == u'/') c = u'\\';
    }
    pid_t pid = 0;
    ASSERT_EQ(nqplat::spawn_process(u"\"" + name + u"\" one", nullptr, nullptr, &pid), 0);
    uint32_t code = 1;
    ASSERT_TRUE(nqplat::wait_process(pid, &code));
    EXPECT_EQ(nqtest::read_file(dir.file("out.txt")), "[one]");
}

TEST(Spawn, WorkingFolderIsTheChildsCurrentFolder) {
    nqtest::TempDir dir;
    pid_t pid = 0;
    const std::u16string folder = u(dir.path());
    ASSERT_EQ(nqplat::spawn_process(u"sh -c \"pwd > here.txt\"", folder.c_str(), nullptr, &pid), 0);
    uint32_t code = 1;
    ASSERT_TRUE(nqplat::wait_process(pid, &code));
    EXPECT_EQ(code, 0u);
    char real[4096];
    ASSERT_TRUE(::realpath(dir.path().c_str(), real));
    EXPECT_EQ(nqtest::read_file(dir.file("here.txt")), std::string(real) + "\n");

    const std::u16string missing = u(dir.file("missing"));
    EXPECT_NE(nqplat::spawn_process(u"/bin/true", missing.c_str(), nullptr, &pid), 0);
    EXPECT_EQ(pid, -1);
}

TEST(Spawn, PathValueIsTheChildsAndTheParentKeepsItsOwn) {
    nqtest::TempDir dir;
    write_echo_script(dir, "nq-find-me");
    nqtest::ScopedEnv out("OUTFILE", dir.file("out.txt"));
    nqtest::ScopedEnv path("PATH", "/usr/bin:/bin");
    const std::string longer = dir.path() + ":/usr/bin:/bin";
    pid_t pid = 0;
    EXPECT_EQ(nqplat::spawn_process(u"nq-find-me x", nullptr, nullptr, &pid), ENOENT);
    ASSERT_EQ(nqplat::spawn_process(u"nq-find-me x", nullptr, &longer, &pid), 0);
    uint32_t code = 1;
    ASSERT_TRUE(nqplat::wait_process(pid, &code));
    EXPECT_EQ(nqtest::read_file(dir.file("out.txt")), "[x]");
    EXPECT_STREQ(std::getenv("PATH"), "/usr/bin:/bin");
}

TEST(Spawn, ChildDoesNotInheritOpenFiles) {
    nqtest::TempDir dir;
    const int fd = ::open(dir.file("held").c_str(), O_CREAT | O_WRONLY, 0644);  // no O_CLOEXEC
    ASSERT_GE(fd, 3);
    const std::string line = "sh -c \"if [ -e /proc/self/fd/" + std::to_string(fd) +
                              " ]; then echo open; else echo closed; fi > " + dir.file("fd.txt") + "\"";
    pid_t pid = 0;
    ASSERT_EQ(nqplat::spawn_process(u(line), nullptr, nullptr, &pid), 0);
    uint32_t code = 1;
    ASSERT_TRUE(nqplat::wait_process(pid, &code));
    ::close(fd);
    EXPECT_EQ(nqtest::read_file(dir.file("fd.txt")), "closed\n");
}

TEST(Spawn, RunningChildReports259AndTerminateSetsItsCode) {
    pid_t pid = 0;
    ASSERT_EQ(nqplat::spawn_process(u"sleep 30", nullptr, nullptr, &pid), 0);
    uint32_t code = 0;
    EXPECT_TRUE(nqplat::process_exit_code(pid, &code));
    EXPECT_EQ(code, nqplat::kStillActive);
    EXPECT_TRUE(nqplat::open_process(pid));
    EXPECT_TRUE(nqplat::terminate_process(pid, 7));
    EXPECT_EQ(exit_code_when_ended(pid), 7u);
    EXPECT_FALSE(nqplat::open_process(pid));
    EXPECT_FALSE(nqplat::terminate_process(pid, 1));
}

TEST(Spawn, ChildEndedBySignalReports128PlusItsNumber) {
    pid_t pid = 0;
    ASSERT_EQ(nqplat::spawn_process(u"sh -c \"kill -9 $$\"", nullptr, nullptr, &pid), 0);
    uint32_t code = 0;
    ASSERT_TRUE(nqplat::wait_process(pid, &code));
    EXPECT_EQ(code, 128u + 9u);
}

TEST(Spawn, ProcessIdsThatNameGroupsOrNothingAreRefused) {
    uint32_t code = 0;
    for (pid_t pid : {0, -1, -12345}) {
        EXPECT_FALSE(nqplat::open_process(pid));
        EXPECT_FALSE(nqplat::process_exit_code(pid, &code));
        EXPECT_FALSE(nqplat::terminate_process(pid, 1));
        EXPECT_FALSE(nqplat::wait_process(pid, &code));
    }
    // Our own process is running but is no child of ours.
    EXPECT_TRUE(nqplat::process_exit_code(::getpid(), &code));
    EXPECT_EQ(code, nqplat::kStillActive);
    EXPECT_FALSE(nqplat::wait_process(::getpid(), &code));
}

TEST(Spawn, ProgramPathConvertsOnlyLibraryNames) {
    EXPECT_EQ(nqplat::program_path(u"sleep"), "sleep");
    EXPECT_EQ(nqplat::program_path(u"/bin/true"), "/bin/true");
    EXPECT_EQ(nqplat::program_path(u"C:\\bin\\true"), "/bin/true");
    EXPECT_EQ(nqplat::program_path(u"bin\\x"), "bin/x");
}
