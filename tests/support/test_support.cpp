#include "test_support.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace nqtest {

TempDir::TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "nqtest-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
    path_ = pattern;
}

TempDir::~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
}

std::string read_file(const std::string &path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

void write_file(const std::string &path, const std::string &content) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << content;
}

bool file_exists(const std::string &path) {
    std::error_code ec;
    return std::filesystem::exists(path, ec);
}

CaptureFd::CaptureFd(int fd) : fd_(fd) {
    std::fflush(nullptr);
    char name[] = "/tmp/nqcapture-XXXXXX";
    int tmp = ::mkstemp(name);
    if (tmp < 0) throw std::runtime_error("mkstemp failed");
    file_ = name;
    saved_ = ::dup(fd_);
    ::dup2(tmp, fd_);
    ::close(tmp);
}

std::string CaptureFd::stop() {
    if (stopped_) return {};
    std::fflush(nullptr);
    ::dup2(saved_, fd_);
    ::close(saved_);
    stopped_ = true;
    std::string content = read_file(file_);
    ::unlink(file_.c_str());
    return content;
}

CaptureFd::~CaptureFd() { stop(); }

}  // namespace nqtest
