// What the tests of the configuration families share: a private environment for each test
// (configuration folder, registry file, home, no session, no cache), and small helpers.
#pragma once

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "../platform/scoped_env.h"
#include "nq_tls20an.h"
#include "test_support.h"
#include "text_test_util.h"

namespace nqct {

using nqtest::ScopedEnv;
using nqtt::L;
using nqtt::S;
using nqtt::W;

// The fields of a list as name and value text, from head to tail.
inline std::vector<std::pair<std::u16string, std::u16string>> fields(FldList *list) {
    std::vector<std::pair<std::u16string, std::u16string>> out;
    for (LnkListNode *n = list ? list->head : nullptr; n; n = n->next) {
        const FldNode *node = static_cast<const FldNode *>(n->data);
        const bool text = node->type == NQ_FLD_CHAR || node->type == NQ_FLD_HANDLE;
        out.emplace_back(node->name ? node->name : u"<null>",
                         text && node->value.str ? node->value.str : u"<none>");
    }
    return out;
}

using Fields = std::vector<std::pair<std::u16string, std::u16string>>;

// Runs one test of this program, named "DISABLED_..." so that it runs nowhere else, in a
// process of its own where nothing has been made yet (the session list, the alias table, the
// system's version). The process inherits the environment. True when the test ran and passed.
inline bool passes_in_fresh_process(const std::string &test) {
    char self[4096];
    const ssize_t n = ::readlink("/proc/self/exe", self, sizeof self - 1);
    if (n <= 0) return false;
    const std::string command = "'" + std::string(self, static_cast<std::size_t>(n)) +
                                "' --gtest_also_run_disabled_tests --gtest_filter='" + test + "' 2>&1";
    std::fflush(nullptr);
    FILE *pipe = ::popen(command.c_str(), "r");
    if (!pipe) return false;
    std::string output;
    char buffer[4096];
    while (std::size_t got = std::fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, got);
    const int status = ::pclose(pipe);
    const bool passed = status == 0 && output.find("[  PASSED  ] 1 test.") != std::string::npos;
    if (!passed) ADD_FAILURE() << output;
    return passed;
}

// Runs a check where file permissions apply: here, or, for the superuser (whom permissions do
// not stop), in a child process that has given up its rights for those of "nobody". The
// folders the check uses must let everyone in. True when the check holds.
inline bool as_unprivileged(const std::function<bool()> &check) {
    if (::geteuid() != 0) return check();
    std::fflush(nullptr);
    const pid_t pid = ::fork();
    if (pid == 0) {
        const bool dropped = ::setgid(65534) == 0 && ::setuid(65534) == 0;
        ::_exit(dropped && check() ? 0 : 1);
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

class ConfigTest : public ::testing::Test {
protected:
    ConfigTest()
        : cfg_dir_(make_dir(dir_.file("cfg"))),
          cfg_("NQ_CFG_DIR", cfg_dir_),
          registry_("NQ_REGISTRY", dir_.file("registry.reg")),
          home_("HOME", dir_.path()),
          base_section_("NQ_BASE_SECTION", nullptr) {}

    void SetUp() override {
        nq_Env_resetSes();
        nq_Global_destroyData();
    }
    void TearDown() override {
        nq_Env_resetSes();
        nq_Global_destroyData();
    }

    static std::string make_dir(const std::string &path) {
        ::mkdir(path.c_str(), 0755);
        return path;
    }

    // A file of the temporary folder: its Linux path, and its library name.
    std::string path(const std::string &name) const { return dir_.file(name); }
    std::u16string lib(const std::string &name) const { return L(dir_.file(name)); }
    void write(const std::string &name, const std::string &content) const {
        nqtest::write_file(dir_.file(name), content);
    }
    std::string read(const std::string &name) const { return nqtest::read_file(dir_.file(name)); }
    // nq.ini of the configuration folder.
    std::string ini_path() const { return cfg_dir_ + "/nq.ini"; }
    void write_ini(const std::string &content) const { nqtest::write_file(ini_path(), content); }

    nqtest::TempDir dir_;
    std::string cfg_dir_;
    ScopedEnv cfg_;
    ScopedEnv registry_;
    ScopedEnv home_;
    ScopedEnv base_section_;
};

}  // namespace nqct
