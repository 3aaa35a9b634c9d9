// Processes through the Sys family: started without a shell, waited for, asked about and
// ended; the product path for a child; the launcher; the desktop viewer.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "config_test.h"

namespace {

using nqct::S;

class Process : public nqct::ConfigTest {
protected:
    // An executable script in the temporary folder.
    std::string script(const std::string &name, const std::string &body) const {
        const std::string file = path(name);
        nqtest::write_file(file, "#!/bin/sh\n" + body);
        ::chmod(file.c_str(), 0755);
        return file;
    }
    // A script that writes its arguments after the first, each in brackets, to the file
    // named by the first.
    std::string echo_script(const std::string &name) const {
        return script(name, "out=\"$1\"; shift; for a in \"$@\"; do printf '[%s]' \"$a\"; done > \"$out\"\n");
    }
    // Waits for a file written by a process that runs on its own (bounded, never a timing).
    bool appears(const std::string &file) const {
        for (int i = 0; i < 3000; ++i) {
            if (nqtest::file_exists(file) && !nqtest::read_file(file).empty()) return true;
            ::usleep(10000);
        }
        return false;
    }
    static bool ends(int pid) {
        for (int i = 0; i < 3000; ++i) {
            if (!nq_Sys_processRunning(pid)) return true;
            ::usleep(10000);
        }
        return false;
    }
};

// A Linux path in the library's form, as UTF-8.
std::string win(std::string path) {
    for (char &c : path) c = c == '/' ? '\\' : c;
    return "C:" + path;
}

}  // namespace

TEST_F(Process, TrueStartsAndIsWaitedFor) {
    nq_wchar error[256] = u"junk";
    EXPECT_EQ(nq_Sys_createProcess(u"/bin/true", nullptr, 1, error, 256), 1);
    EXPECT_EQ(S(error), u"");
}

TEST_F(Process, ExitCodeOfTheChildDoesNotChangeTheResult) {
    nq_wchar error[256];
    EXPECT_EQ(nq_Sys_createProcess(u"sh", u"-c \"exit 3\"", 1, error, 256), 1);
    EXPECT_EQ(S(error), u"");
}

TEST_F(Process, NullArgumentsRunTheCommandAlone) {
    script("alone", "printf '%s' \"$#\" > \"" + path("count.txt") + "\"\n");
    EXPECT_EQ(nq_Sys_createProcess(lib("alone").c_str(), nullptr, 1, nullptr, 0), 1);
    EXPECT_EQ(read("count.txt"), "0");
    EXPECT_EQ(nq_Sys_createProcess(lib("alone").c_str(), u"", 1, nullptr, 0), 1);
    EXPECT_EQ(read("count.txt"), "0");  // "%s %s" with an empty text adds only a blank
}

TEST_F(Process, ArgumentsAreSplitTheWindowsWayWithoutAShell) {
    echo_script("echo");
    const std::u16string args = nqtt::W(path("out.txt")) + u" a\\\"b \"c d\" e\\\\f \"\" $HOME|x>y `z`;w";
    EXPECT_EQ(nq_Sys_createProcess(lib("echo").c_str(), args.c_str(), 1, nullptr, 0), 1);
    EXPECT_EQ(read("out.txt"), "[a\"b][c d][e\\\\f][][$HOME|x>y][`z`;w]");
}

TEST_F(Process, MissingProgramGivesTheFailureText) {
    nq_wchar error[512];
    EXPECT_EQ(nq_Sys_createProcess(u"nq-no-such-program", u"x y", 1, error, 512), 0);
    const std::u16string text = S(error);
    const std::u16string head = u"Unable to start the new process:\nnq-no-such-program x y\n";
    ASSERT_EQ(text.substr(0, head.size()), head);
    EXPECT_GT(text.size(), head.size());  // the system's text follows
}

TEST_F(Process, FailureTextIsCutToTheBuffer) {
    nq_wchar error[12];
    for (auto &c : error) c = u'#';
    EXPECT_EQ(nq_Sys_createProcess(u"nq-no-such-program", nullptr, 0, error, 10), 0);
    EXPECT_EQ(S(error), u"Unable to");
    EXPECT_EQ(error[10], u'#');
    nq_wchar untouched[4] = u"abc";
    EXPECT_EQ(nq_Sys_createProcess(u"nq-no-such-program", nullptr, 0, untouched, 0), 0);
    EXPECT_EQ(S(untouched), u"abc");
    EXPECT_EQ(nq_Sys_createProcess(u"nq-no-such-program", nullptr, 0, nullptr, 100), 0);
    EXPECT_EQ(nq_Sys_createProcess(nullptr, nullptr, 0, nullptr, 0), 0);
}

TEST_F(Process, WorkingDirRunsThereAndGivesTheProcessId) {
    ASSERT_EQ(::mkdir(path("work").c_str(), 0755), 0);
    int pid = 0;
    EXPECT_EQ(nq_Sys_createProcessWorkingDir(u"sh", lib("work").c_str(), u"-c \"pwd > here.txt\"", 1, nullptr, 0,
                                             &pid),
              1);
    EXPECT_GT(pid, 0);
    EXPECT_TRUE(nqtest::file_exists(path("work/here.txt")));
    EXPECT_EQ(nq_Sys_processRunning(pid), 0);

    nq_wchar error[256];
    EXPECT_EQ(nq_Sys_createProcessWorkingDir(u"/bin/true", lib("missing").c_str(), nullptr, 1, error, 256, &pid), 0);
    EXPECT_EQ(pid, -1);
    EXPECT_EQ(S(error).rfind(u"Unable to start the new process:\n/bin/true\n", 0), 0u);
    EXPECT_EQ(nq_Sys_createProcessWorkingDir(u"/bin/true", nullptr, nullptr, 1, nullptr, 0, nullptr), 1);
}

TEST_F(Process, RunningProcessIsTerminatedWithItsCode) {
    int pid = 0;
    ASSERT_EQ(nq_Sys_createProcessWorkingDir(u"sleep", nullptr, u"30", 0, nullptr, 0, &pid), 1);
    EXPECT_EQ(nq_Sys_processRunning(pid), 1);
    unsigned int code = 5;
    EXPECT_EQ(nq_Sys_terminateProcess(pid, nullptr), 0);
    EXPECT_EQ(nq_Sys_processRunning(pid), 1);
    EXPECT_EQ(nq_Sys_terminateProcess(pid, &code), 1);
    EXPECT_TRUE(ends(pid));
    EXPECT_EQ(nq_Sys_terminateProcess(pid, &code), 0);
}

TEST_F(Process, ProcessThatEndedIsNotRunning) {
    int pid = 0;
    ASSERT_EQ(nq_Sys_createProcessWorkingDir(u"sh", nullptr, u"-c \"exit 3\"", 0, nullptr, 0, &pid), 1);
    EXPECT_TRUE(ends(pid));
}

TEST_F(Process, NoProcessOrAGroupOfThemIsNeverRunning) {
    unsigned int code = 0;
    for (int pid : {0, -1, -4242}) {
        EXPECT_EQ(nq_Sys_processRunning(pid), 0);
        EXPECT_EQ(nq_Sys_terminateProcess(pid, &code), 0);
    }
    EXPECT_EQ(nq_Sys_processRunning(static_cast<int>(::getpid())), 1);
}

TEST_F(Process, AddLDPathPutsTheProductBinFolderFirstForTheChildOnly) {
    ASSERT_EQ(::mkdir(path("product").c_str(), 0755), 0);
    ASSERT_EQ(::mkdir(path("product/bin").c_str(), 0755), 0);
    script("product/bin/nq-product-tool", "printf '%s' \"$PATH\" > \"" + path("path.txt") + "\"\n");
    write("registry.reg",
          "[HKLM\\SOFTWARE\\Zelmar\\DocumentManagement]\nPath=" + win(path("product")) + "\\\n");
    nqct::ScopedEnv path_env("PATH", "/usr/bin:/bin");

    EXPECT_EQ(nq_Sys_createProcess(u"nq-product-tool", nullptr, 1, nullptr, 0), 0);
    EXPECT_EQ(nq_Sys_createProcess_addLDPath(u"nq-product-tool", nullptr, 1, nullptr, 0), 1);
    EXPECT_EQ(read("path.txt"), path("product") + "/bin:/usr/bin:/bin");
    EXPECT_STREQ(std::getenv("PATH"), "/usr/bin:/bin");
}

TEST_F(Process, AddLDPathWithoutTheProductIsAPlainStart) {
    nq_wchar error[256];
    EXPECT_EQ(nq_Sys_createProcess_addLDPath(u"/bin/true", nullptr, 1, error, 256), 1);
    EXPECT_EQ(nq_Sys_createProcess_addLDPath(u"nq-no-such-program", nullptr, 1, error, 256), 0);
    EXPECT_EQ(S(error).rfind(u"Unable to start the new process:\n", 0), 0u);
}

TEST_F(Process, AddLDPathJoinsBinToThePathAsItIsWritten) {
    ASSERT_EQ(::mkdir(path("product").c_str(), 0755), 0);
    ASSERT_EQ(::mkdir(path("product/bin").c_str(), 0755), 0);
    script("product/bin/nq-product-tool", "exit 0\n");
    // Without its trailing separator the path names the folder "productbin".
    write("registry.reg", "[HKLM\\SOFTWARE\\Zelmar\\DocumentManagement]\nPath=" + win(path("product")) + "\n");
    nqct::ScopedEnv path_env("PATH", "/usr/bin:/bin");
    EXPECT_EQ(nq_Sys_createProcess_addLDPath(u"nq-product-tool", nullptr, 1, nullptr, 0), 0);
}

TEST_F(Process, LaunchViaShortcutWritesTheLauncherAndStartsIt) {
    nq_Env_setSes(u"WKTMP", lib("tmp").c_str());
    echo_script("launched");
    const std::u16string args = nqtt::W(path("launched.txt")) + u" one \"two three\"";
    EXPECT_EQ(nq_Sys_launchProcessViaShortcut(lib("launched").c_str(), args.c_str()), 1);
    ASSERT_TRUE(appears(path("launched.txt")));
    EXPECT_EQ(read("launched.txt"), "[one][two three]");
    EXPECT_EQ(read("tmp/1/Halvane.lnk"), "[Shortcut]\nDescription=Orvane Halvane.\nPath=" + win(path("launched")) +
                                             "\nArguments=" + path("launched.txt") + " one \"two three\"\n");
}

TEST_F(Process, LaunchViaShortcutOfNothingOrAMissingProgramFails) {
    nq_Env_setSes(u"WKTMP", lib("tmp").c_str());
    EXPECT_EQ(nq_Sys_launchProcessViaShortcut(nullptr, nullptr), 0);
    EXPECT_EQ(nq_Sys_launchProcessViaShortcut(u"", nullptr), 0);
    EXPECT_EQ(nq_Sys_launchProcessViaShortcut(u"nq-no-such-program", nullptr), 0);
    EXPECT_EQ(nq_Sys_launchProcessViaShortcut(u"/bin/true", u"a\nb"), 0);
}

TEST_F(Process, OpenFileInNotepadHandsTheFileToXdgOpen) {
    ASSERT_EQ(::mkdir(path("bin").c_str(), 0755), 0);
    script("bin/xdg-open", "printf '%s' \"$1\" > \"" + path("opened.txt") + "\"\n");
    nqct::ScopedEnv path_env("PATH", path("bin") + ":/usr/bin:/bin");
    write("Report File.txt", "text");
    void *result = nq_Global_openFileinNotepad(lib("report file.TXT").c_str());
    EXPECT_GT(reinterpret_cast<intptr_t>(result), 32);
    ASSERT_TRUE(appears(path("opened.txt")));
    EXPECT_EQ(read("opened.txt"), path("Report File.txt"));
}

TEST_F(Process, OpenFileInNotepadOfAMissingFileIsNullAndWithoutViewerFails) {
    EXPECT_EQ(nq_Global_openFileinNotepad(lib("missing.txt").c_str()), nullptr);
    EXPECT_EQ(nq_Global_openFileinNotepad(nullptr), nullptr);
    write("here.txt", "text");
    nqct::ScopedEnv path_env("PATH", path("nothing-here"));
    void *result = nq_Global_openFileinNotepad(lib("here.txt").c_str());
    EXPECT_EQ(reinterpret_cast<intptr_t>(result), 2);
}
